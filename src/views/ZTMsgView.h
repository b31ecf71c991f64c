#pragma once
// One tab's list of messages: a filtered, structured window on MessageSet. The view owns no message
// text, only a list of items naming records, the rows on screen, an indent level and a selection
// flag per item, and ten bookmarks. Rows read their messages through the store's cursor when they
// paint, and nothing else in the view reads a message that isn't needed for the job at hand.
//
// Rows and items are counted from 0; record numbers of the store from 1. A row is a place on screen;
// an item is the view's entry for a record. The items of a collapsed method keep their places in
// the item lists but have no rows.

#include <QString>
#include <array>
#include <functional>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ZTCustomViewIntf.h"
#include "ZentrailMessage.h"
#include "ZTVList.h"

class QMenu;
class QTimer;

namespace zentrail {

class TZentrailMessageSet;

// The small window that shows a message text cut off in its row, at the place of the row's text.
class TZTMessageViewHintWindow : public QWidget {
  Q_OBJECT
 public:
  explicit TZTMessageViewHintWindow(QWidget* owner);
  // Word-broken measure: left 2 pixels before the text, the width of the measure plus 4 within
  // maxWidth, the height of the measure plus 2 but never more than 40.
  QRect CalcHintRect(int maxWidth, const QString& text) const;
  // Shows text in the rectangle given in screen coordinates.
  void ActivateHint(const QRect& rect, const QString& text);
  const QString& Text() const { return FText; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QString FText;
};

class TZTViewItem {
 public:
  explicit TZTViewItem(int32_t recNo) : RecNo(recNo) {}
  int32_t RecNo;
  bool Collapsed = false;
};

// The items of a view. Owns its entries; appending is amortised constant time.
class TZTViewItemList {
 public:
  int32_t Count() const { return static_cast<int32_t>(FItems.size()); }
  int32_t Add(const TZTViewItem& item);
  void Insert(int32_t index, const TZTViewItem& item);
  TZTViewItem& GetItems(int32_t index);
  const TZTViewItem& GetItems(int32_t index) const;
  void SetItems(int32_t index, const TZTViewItem& item);
  void Delete(int32_t index);
  void Clear() { FItems.clear(); }
  std::vector<TZTViewItem>& Raw() { return FItems; }

 private:
  std::vector<TZTViewItem> FItems;
};

// A plain list of 32-bit integers: rows to items, indents, selection flags.
class TZTIntegerList {
 public:
  int32_t Count() const { return static_cast<int32_t>(FItems.size()); }
  int32_t Add(int32_t value);
  void Insert(int32_t index, int32_t value);
  int32_t GetItems(int32_t index) const;
  void SetItems(int32_t index, int32_t value);
  int32_t IndexOf(int32_t value) const;
  void Delete(int32_t index);
  void DeleteRange(int32_t index, int32_t count);
  void Clear() { FItems.clear(); }
  std::vector<int32_t>& Raw() { return FItems; }
  const std::vector<int32_t>& Raw() const { return FItems; }

 private:
  std::vector<int32_t> FItems;
};

// Bits of ColumnOptions.
enum : uint16_t {
  ztcoCategory = 1,
  ztcoAppName = 2,
  ztcoComputerName = 4,
  ztcoProcessID = 8,
  ztcoThreadName = 16,
  ztcoDate = 32,
  ztcoTimeStamp = 64,
  ztcoTimeDiff = 128,
  ztcoTimeOffset = 256,
  ztcoTimeColumn = 448,
};

class TZTMessageView : public TZTVirtualListBox, public IZTMessageView {
  Q_OBJECT

 public:
  // The key under which the class is registered with the shell.
  static constexpr const char* ViewClassKey = "Default";

  // app null means the process-wide ZentrailApplication() reference, read when it is needed.
  explicit TZTMessageView(QWidget* parent = nullptr, IZentrailApplication* app = nullptr);
  ~TZTMessageView() override;

  // The factory of the "Default" view class.
  static IZTMessageView* Create(QWidget* owner);

  // ---- IZTMessageViewMethods
  void FindMatchingMethod() override;
  void FindCurrentMethod() override;
  void ToggleCurrentMethod() override;
  bool IsCurrentMethodCollapsed() override;
  bool IsCollapsed(int32_t row) override;
  void CollapseMethod(int32_t row) override;
  void ExpandMethod(int32_t row) override;
  void ExpandAllMethods(bool fromStart) override;
  void CollapseAllMethods() override;

  // ---- IZTMessageViewExport, IZTMessageViewSave: the rows in order, a collapsed method whole.
  // A file that can't be created raises std::runtime_error with the system's reason. Print goes to
  // ViewPrinter() (ZTMsgViewPrint.h) and raises std::runtime_error when it cannot begin there.
  void ExportAsXML(const QString& fileName) override;
  void ExportAsText(const QString& fileName) override;
  void Save(const QString& fileName) override;
  void Print(const QString& title, bool selectedOnly, int32_t fontSize, uint16_t columns) override;

  // ---- IZTActivation
  void Activated() override;
  void Deactivated() override;

  // ---- IZTMessageViewSearch. Find shows the dialog (false on Cancel, nothing changed), then
  // searches anew; FindNext repeats with the kept arguments.
  bool Find(std::string& text, TZTRegEx& regex, bool& inDetails, bool& fromCursor, bool& forward) override;
  void FindNext(bool newSearch, const std::string& text, bool inDetails, bool fromCursor, bool forward,
                const TZTRegEx& regex) override;

  // ---- IZTMessageViewList
  int32_t GetFocusedMsgIndex() override;
  void SetFocusedMsgIndex(int32_t row) override;
  void GetFilterCriteria(TZTFilterCriteria& criteria) override;
  void SetFilterCriteria(const TZTFilterCriteria& criteria) override;
  void UpdateNavigation(int32_t msgType, int32_t msgContent, bool& hasNext, bool& hasPrevious) override;
  bool SelectCurrentRecord() override;
  void SelectRecord(int32_t row) override;
  void JumpToItem(int32_t row) override;
  // Asks for a row number (from 1) and jumps there.
  void JumpToMsgDlg() override;
  void JumpToMessage(int32_t direction, int32_t msgType, int32_t msgContent) override;
  void JumpToTimeDiff(int32_t direction, int32_t threshold) override;
  void JumpToMsgRecNo(int32_t recNo) override;
  void ClearBookmarks() override;
  void ToggleBookmark(int32_t index) override;
  void JumpToBookmark(int32_t index) override;
  int32_t GetBookmark(int32_t index) override;
  int32_t GetIndentLevel(int32_t row) override;
  void ResetIndentLevel() override;
  void BeginUpdate() override;
  // The outermost end also scrolls to the last row that arrived inside the bracket.
  void EndUpdate() override;
  // The in-place editor over the row (a modal form); separators aren't edited.
  void EditMessage(int32_t row) override;
  void TraverseCallStack(TZTCallStackList& strings) override;

  // ---- IZTMessageView
  QString GetName() override { return FViewName; }
  void SetName(const QString& name) override { FViewName = name; }
  bool GetSelected(int32_t row) override;
  void SetSelected(int32_t row, bool value) override;
  int32_t GetCount() override { return NumItems(); }
  int32_t GetSelCount() override;
  int32_t GetMsgRecNo(int32_t row) override;
  QString GetViewClassName() override { return QString::fromLatin1(ViewClassKey); }
  bool Focused() override;
  // Takes the selected rows out of this view (a collapsed row with its whole method). The rows
  // that remain keep their levels; bookmarks and the indent level stay.
  void DeleteSelection() override;
  void CropToSelection() override;
  void SelectAll() override;
  void CopyToClipboard() override;
  void AddMessage(bool force) override;
  void SetPopupMenu(QMenu* menu) override;
  void InitView() override;
  void ClearView() override;
  void Invalidate() override;
  void UpdateSettings() override;
  void UpdateColumnWidths() override;
  void SetSyncMsgRecNo(int32_t recNo) override;
  void ReadSettings(ICustomViewReadSettings& settings) override;
  void WriteSettings(ICustomViewWriteSettings& settings) override;
  void GetFirstLastSelections(int32_t& first, int32_t& last) override;
  QWidget* GetWidget() override { return this; }

  // ---- The model, for the painter, the shell's details and tests.
  // The filter's test of the current record of the store.
  bool AcceptMessage();
  // Appends the current record; returns the new row (beyond the end if a collapse took it away).
  int32_t InternalAddMessage();
  // Index of the Exit item that closes the Enter item, or -1 if the method isn't closed.
  int32_t FindMethodEnd(int32_t item);
  // Row of the Enter that belongs to the Exit on row, or -1.
  int32_t FindEnterRow(int32_t row);
  // Collapses the method whose Exit stands on row; moves the focus to its Enter. True if found.
  bool CollapseAtExit(int32_t row);
  // Lowest bookmark index that holds recNo, or -1.
  int32_t FindBookmark(int32_t recNo) const;
  // Image index of the row's type: ztmCollapsedMethod for a collapsed Enter, else the type.
  int32_t GetMsgTypeIcon(int32_t row);
  // -1 for a collapsed Enter, else the content code.
  int32_t GetMsgContentIcon(int32_t row);

  // The list box's questions and notices about selection.
  bool IsSelected(int32_t row) const;
  void Select(int32_t row, bool selected);
  void RemoveAllSelections();

  int32_t IndentLevel() const { return FIndentLevel; }
  int32_t ItemCount() const { return FItems.Count(); }
  int32_t ItemOfRow(int32_t row) const { return FRows.GetItems(row); }
  const TZTViewItem& Item(int32_t item) const { return FItems.GetItems(item); }
  int32_t ItemIndent(int32_t item) const { return FIndents.GetItems(item); }
  bool ItemSelected(int32_t item) const { return FSelections.GetItems(item) != 0; }
  int32_t SyncMsgRecNo() const { return FSyncMsgRecNo; }

  // Copied from the application by InitView.
  bool AutoScroll = false;
  bool AutoCollapse = false;
  bool FlattenStructure = false;

  // Presentation.
  uint16_t ColumnOptions() const { return FColumnOptions; }
  void SetColumnOptions(uint16_t value);
  int32_t IndentWidth() const { return FIndentWidth; }
  // Widths of date, time, category, application, computer, process id and thread columns.
  int32_t ColumnWidth(int index) const { return FColumnWidths[static_cast<size_t>(index)]; }
  // The rectangle of the message text of a row laid out in rowRect.
  QRect MessageRect(const QRect& rowRect, int32_t indent, int32_t msgType) const;

  // Texts of the time column: against the previous row, against the first row; both move the cursor.
  QString GetTimeDifference(int32_t row, const TZentrailTimeStamp& stamp);
  QString GetTimeOffset(const TZentrailTimeStamp& stamp);
  static QString FormatTimeDiff(int64_t milliseconds);

  // The text of a row as the hint and the cut step see it.
  static QString CutText(const QString& text, int width, const QFontMetrics& metrics);

 signals:
  // The focused row or the selection changed through the user; emitted once the input has settled,
  // after the application's UpdateMessageDetails.
  void SelectionChanged();

 protected:
  void DrawHeader(QPainter& painter, const QRect& rect) override;
  void DrawItem(QPainter& painter, int32_t row, const QRect& rect, bool selected) override;
  QString GetItemText(int32_t row) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void changeEvent(QEvent* event) override;

 public:
  // The hint for cut text: shown by mouse moves over a row whose text doesn't fit, released by a
  // press, a vertical scroll, leaving the control and the loss of focus. Null until first needed.
  TZTMessageViewHintWindow* HintWindow() const { return FHintWindow; }
  void UpdateHint(const QPoint& viewportPos);
  void ReleaseHint();

 protected:

 private:
  IZentrailApplication* App() const;
  void ForEachWrittenItem(const std::function<void(int32_t item)>& write);
  void SetItemFlag(int32_t item, bool selected);
  bool CollapseAtExitInternal(int32_t row, bool notify);
  void PostDetailsNotice();
  bool MeasureColumn(int index, std::string_view text);
  // The filter's test of the sender fields (application, category, process, thread, computer).
  bool AcceptSender(const TZentrailMessageSet& ms) const;
  // Keeps what is known per sender of the store in step with the store and the view.
  void CheckSenderCaches(const TZentrailMessageSet& ms);
  // MeasureColumn for an arriving message, skipped for a text already known to fit.
  bool MeasureArriving(int slot, int index, std::string_view text);
  void DrawSeparator(QPainter& painter, int32_t type, int32_t indent, const QRect& rect, bool selected,
                     int32_t bookmark, bool sync);
  void DrawMarks(QPainter& painter, int32_t type, int32_t indent, const QRect& rect, int32_t bookmark, bool sync,
                 int32_t row, bool separator);
  TZTImageList* MessageImages() const;
  TZTImageList* BookmarkImages() const;
  int32_t SearchSameLevel(int32_t fromRow, bool forward, int32_t wantType);
  bool RowMatchesNavigator(int32_t row, int32_t msgType, int32_t msgContent);

  IZentrailApplication* FApp;
  TZTIntegerList FRows;
  TZTViewItemList FItems;
  int32_t FIndentLevel = 0;
  TZTIntegerList FIndents;
  TZTIntegerList FSelections;
  int32_t FSelectedCount = 0;  // items whose flag is set; lets clearing skip an empty selection
  bool FChangingItems = false;
  std::array<int32_t, 10> FBookmarks{};
  int32_t FSyncMsgRecNo = -1;
  TZTFilterCriteria FFilterCriteria;
  TZTRegEx FMessageTextRegEx;
  QString FViewName;

  uint16_t FColumnOptions = 103;
  std::array<int32_t, 7> FColumnWidths{};
  // The last text measured per column, so a message from the same sender costs no measure.
  std::array<std::string, 7> FLastMeasured;
  // Per identity column of an arriving message: each text measured, with the column width it was
  // measured at. A run has few senders, so a sender that comes again costs no measure while the
  // column is at least that wide, however many senders take turns. Dropped when the font changes,
  // as the widths no longer tell, and when a flood of distinct texts makes it large.
  struct TTextHash {
    using is_transparent = void;
    size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
  };
  std::array<std::unordered_map<std::string, int32_t, TTextHash, std::equal_to<>>, 4> FFitting;
  // In front of it, the texts last seen per column by where they lie: the store keeps one copy of each sender's texts, so
  // the same place in memory with the same length is the same text in all but a rare case, which
  // the comparison of the bytes then settles.
  struct TLastFitting {
    const char* Data = nullptr;
    std::string Text;
    int32_t Width = -1;
  };
  static constexpr size_t kLastFittingWays = 128;
  std::array<std::array<TLastFitting, kLastFittingWays>, 4> FLastFitting;
  // What this view knows per sender of the store, by the store's sender number, so that an
  // arriving message costs no text comparison and no measure for a sender seen before: whether the
  // filter's sender fields accept it (0 not asked yet, 1 yes, 2 no), and the measure epoch at which
  // its texts were known to fit their columns (widths only grow until the epoch changes).
  std::vector<uint8_t> FSenderAccepted;
  std::vector<uint32_t> FSenderFits;
  uint64_t FSenderGeneration = 0;  // the store's, when these were made
  uint32_t FFitEpoch = 1;
  // AutoScroll inside an update bracket: the row to show when the bracket ends, -1 for none.
  int32_t FPendingTop = -1;
  int32_t FIndentWidth = 24;
  TColor FMarkerColor = 0x00E6D8AD;
  TColor FHighlightFontColor = 0x00502805;
  TColor FSyncMsgColor = 0x00AFEBFF;
  TColor FSeparatorColor = 0x00E4AD89;
  TColor FInactiveSeparatorColor = 0x00A0CDDE;
  TColor FAppStartSeparatorColor = 0x00E4AD89;
  bool FRowShading = false;
  TColor FRowShadingColor = clBtnShadow;
  TZTMsgTypeStyle FDefaultStyle;
  std::array<TZTMsgTypeStyle, 46> FTypeStyles{};
  TZTImageList* FAppMessageImages = nullptr;
  TZTImageList* FAppBookmarkImages = nullptr;
  TZTImageList* FOwnMessageImages = nullptr;
  TZTImageList* FOwnBookmarkImages = nullptr;
  QMenu* FPopupMenu = nullptr;
  QTimer* FDetailsTimer = nullptr;
  TZTMessageViewHintWindow* FHintWindow = nullptr;
};

// Image lists drawn for the viewer: message types and contents (0..46, 42 the collapsed method,
// 11 and 12 the overflow arrows), and bookmarks (0..9, 10 the sync mark).
TZTImageList* CreateMessageImageList(QObject* parent);
TZTImageList* CreateBookmarkImageList(QObject* parent);

}  // namespace zentrail
