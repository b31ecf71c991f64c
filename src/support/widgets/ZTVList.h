#pragma once
// An owner-data list control: it stores no items. It knows a number of rows, a row height, a top row
// and a focused row, and asks its owner, only for rows on screen, for text, colours, selection state
// and drawing. That is what lets one view show hundreds of thousands of messages.
//
// Selection lives with the owner: the control asks OnIsSelected and tells OnSelect (row -1 = all).

#include <QAbstractScrollArea>
#include <QString>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <vector>

#include "ZTColors.h"

class QTimer;

namespace zentrail {

// Programming errors of the control: mismatched update brackets, selecting without a handler.
class EZTListBoxError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

enum class TZTScrollBars { None, Horizontal, Vertical, Both };
enum class TZTBorderStyle { None, Single };
enum class TZTItemStatus { Normal, Protected };

class TZTCustomVirtualListBox : public QAbstractScrollArea {
  Q_OBJECT

 public:
  static constexpr int32_t ztMaxTabStops = 128;
  // Pixels per horizontal scroll step; Columns counts these steps.
  static constexpr int ztHorzScrollStep = 8;

  explicit TZTCustomVirtualListBox(QWidget* parent = nullptr);
  ~TZTCustomVirtualListBox() override;

  // Properties, in the order of their declaration.
  int32_t ItemIndex() const { return FItemIndex; }
  void SetItemIndex(int32_t row);
  int32_t NumItems() const { return FNumItems; }
  void SetNumItems(int32_t count);
  int32_t TopIndex() const { return FTopIndex; }
  void SetTopIndex(int32_t row);
  int32_t RowHeight() const { return FRowHeight; }
  void SetRowHeight(int32_t height);
  bool AutoRowHeight() const { return FAutoRowHeight; }
  void SetAutoRowHeight(bool value);
  // With IntegralHeight the visible-row count and the page size count whole rows only.
  bool IntegralHeight() const { return FIntegralHeight; }
  void SetIntegralHeight(bool value);
  TZTScrollBars ScrollBars() const { return FScrollBars; }
  void SetScrollBars(TZTScrollBars value);
  bool SmoothScroll() const { return FSmoothScroll; }
  void SetSmoothScroll(bool value) { FSmoothScroll = value; }
  bool MultiSelect() const { return FMultiSelect; }
  void SetMultiSelect(bool value) { FMultiSelect = value; }
  uint16_t Columns() const { return FColumns; }
  void SetColumns(uint16_t value);
  QString Header() const { return FHeader; }
  void SetHeader(const QString& text);
  bool ShowHeader() const { return FShowHeader; }
  void SetShowHeader(bool value);
  bool UseTabStops() const { return FUseTabStops; }
  void SetUseTabStops(bool value);
  const std::vector<int>& Tabs() const { return FTabs; }
  bool OwnerDraw() const { return FOwnerDraw; }
  void SetOwnerDraw(bool value);
  TColor HeaderTextColor() const { return FHeaderTextColor; }
  void SetHeaderTextColor(TColor c);
  TColor HeaderBackColor() const { return FHeaderBackColor; }
  void SetHeaderBackColor(TColor c);
  TColor SelectTextColor() const { return FSelectTextColor; }
  void SetSelectTextColor(TColor c);
  TColor SelectBackColor() const { return FSelectBackColor; }
  void SetSelectBackColor(TColor c);
  TColor ProtectTextColor() const { return FProtectTextColor; }
  void SetProtectTextColor(TColor c);
  TColor ProtectBackColor() const { return FProtectBackColor; }
  void SetProtectBackColor(TColor c);
  TZTBorderStyle BorderStyle() const { return FBorderStyle; }
  void SetBorderStyle(TZTBorderStyle value);
  TColor Color() const { return FColor; }
  void SetColor(TColor c);

  // Derived state.
  int32_t VisibleRows() const;  // whole rows on screen, at least 1
  int32_t RowsForHeight(int viewportHeight) const;  // the same for a viewport of that height
  int32_t HeaderHeight() const { return FShowHeader ? FRowHeight : 0; }
  int32_t HorzPosition() const { return FHorzPosition; }
  void SetHorzPosition(int32_t position);
  int32_t AnchorIndex() const { return FAnchor; }
  // The row a Shift range starts from; programs that move the focus set it with the focus.
  void SetAnchorIndex(int32_t row) { FAnchor = row < FNumItems ? row : FNumItems - 1; }
  int32_t UpdateCount() const { return FUpdateCount; }
  bool Updating() const { return FUpdateCount > 0; }

  // While the count is above zero, inserts, deletes and count changes neither scroll nor repaint.
  virtual void BeginUpdate();
  // Raises "Mismatched BeginUpdate/EndUpdate" below zero; at zero refreshes scroll bars and repaints.
  virtual void EndUpdate();

  void InsertItemsAt(int32_t count, int32_t position);
  void DeleteItemsAt(int32_t count, int32_t position);
  void InvalidateItem(int32_t row);
  // The row's rectangle in viewport coordinates; shifted left by the horizontal position.
  QRect ItemRect(int32_t row) const;
  int32_t ItemAtPos(const QPoint& point, bool existing) const;
  void CenterLine(int32_t row);
  void CenterCurrentLine();
  void Scroll(int32_t columns, int32_t rows);
  void SelectAll();
  void DeselectAll();
  void SetTabStops(const std::vector<int>& stops);
  QString ItemString(int32_t row);

  // Asks OnIsSelected (false without one).
  bool IsItemSelected(int32_t row);
  // Tells OnSelect, unless the row already has the requested selected state. With MultiSelect and
  // no handler this raises "EOnSelectNotAssigned".
  void SelectItem(int32_t row, bool selected);

  // Events, each optional.
  std::function<void(int32_t row, QString& text, void*& object)> OnGetItem;
  std::function<void(QPainter& painter, int32_t row, const QRect& rect, bool selected)> OnDrawItem;
  std::function<void(int32_t row, TColor& textColor, TColor& backColor)> OnGetItemColor;
  std::function<TZTItemStatus(int32_t row)> OnGetItemStatus;
  std::function<void(int32_t row, bool& selected)> OnIsSelected;
  std::function<void(int32_t row, bool selected)> OnSelect;
  std::function<void()> OnTopIndexChanged;
  std::function<void(int x)> OnClickHeader;
  std::function<void(QChar key, int32_t& row)> OnCharToItem;

  // A live change bracket: rows added and scrolls inside it only record the new state, and one
  // coalesced refresh brings the screen up to date a moment later. A stream of arriving rows thus
  // costs no paint, no pixel scroll and no scroll bar work per row. Brackets nest.
  void BeginLiveChange() { ++FLiveCount; }
  void EndLiveChange() { if (FLiveCount > 0) --FLiveCount; }
  // Milliseconds between coalesced refreshes (default 20).
  void SetLiveRefreshInterval(int milliseconds);
  // Runs a pending coalesced refresh at once.
  void FlushLiveRefresh();

  // Counts DrawItem calls since the last reset; lets tests and benchmarks see what a paint touched.
  int64_t RowsPainted() const { return FRowsPainted; }
  void ResetRowsPainted() { FRowsPainted = 0; }

 signals:
  // The focused row changed (by keyboard, mouse or program).
  void ItemIndexChanged(int32_t row);
  // The selection changed through user input (keyboard, mouse, select all).
  void SelectionChangedByUser();

 protected:
  // Hooks a descendant overrides, in the order of their slots.
  virtual void DrawHeader(QPainter& painter, const QRect& rect);
  virtual void DrawItem(QPainter& painter, int32_t row, const QRect& rect, bool selected);
  virtual QString GetItemText(int32_t row);
  // (BeginUpdate and EndUpdate above are the last two.)

  // The brush and pen that painting gives a row before DrawItem.
  void RowColors(int32_t row, bool selected, QColor& text, QColor& back);
  // Text at the rectangle with the tab stops.
  void DrawTabbedText(QPainter& painter, const QRect& rect, const QString& text);

  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void changeEvent(QEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  bool viewportEvent(QEvent* event) override;

  // Moves the focus as the keyboard does: clears the others and makes the row the anchor, or with
  // extend selects the range from the anchor.
  void MoveFocusTo(int32_t row, bool extend);
  void UpdateScrollBars();

 private:
  void SetTopIndexInternal(int32_t row, bool fromScrollBar);
  void SelectRange(int32_t from, int32_t to, bool selected);
  void DragTo(int32_t row);
  void DragScrollTick();
  void ApplyAutoRowHeight();
  void NotifyFocus();
  int32_t MaxTopIndex() const;
  int32_t PageRows() const;

  int32_t FItemIndex = -1;
  int32_t FNumItems = 2147483647;
  int32_t FTopIndex = 0;
  int32_t FRowHeight = 17;
  bool FAutoRowHeight = true;
  bool FIntegralHeight = true;
  TZTScrollBars FScrollBars = TZTScrollBars::Vertical;
  bool FSmoothScroll = true;
  bool FMultiSelect = true;
  uint16_t FColumns = 1024;
  QString FHeader;
  bool FShowHeader = false;
  bool FUseTabStops = true;
  std::vector<int> FTabs;
  bool FOwnerDraw = false;
  TColor FHeaderTextColor = clBtnText;
  TColor FHeaderBackColor = clBtnFace;
  TColor FSelectTextColor = clHighlightText;
  TColor FSelectBackColor = clHighlight;
  TColor FProtectTextColor = 0x00FFFFFF;
  TColor FProtectBackColor = 0x000000FF;
  TZTBorderStyle FBorderStyle = TZTBorderStyle::Single;
  TColor FColor = clWindow;

  int32_t FHorzPosition = 0;
  int32_t FAnchor = -1;
  int32_t FUpdateCount = 0;
  bool FSettingScrollBars = false;
  QString FLastItemText;  // text of the last row fetched
  int64_t FRowsPainted = 0;

  // Drag selection state.
  bool FDragging = false;
  int32_t FDragEnd = -1;
  QPoint FDragPoint;
  QTimer* FDragTimer = nullptr;

  // Coalesced refresh of live changes.
  void ScheduleLiveRefresh(bool full, int32_t fromRow);
  int32_t FLiveCount = 0;
  // A list on a notebook page that isn't shown leaves its scroll bars until the page is.
  bool OnHiddenPage() const;
  bool FScrollBarsStale = false;
  QTimer* FRefreshTimer = nullptr;
  bool FRefreshFull = false;
  int32_t FRefreshFromRow = -1;
};

// The published form that views derive from.
class TZTVirtualListBox : public TZTCustomVirtualListBox {
  Q_OBJECT
 public:
  explicit TZTVirtualListBox(QWidget* parent = nullptr) : TZTCustomVirtualListBox(parent) {}
};

// Installs the accessibility factory that lets screen readers see the control as a list; called by
// the constructor, harmless to call more than once.
void InstallVirtualListBoxAccessibility();

}  // namespace zentrail
