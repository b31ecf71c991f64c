#pragma once
// What the shell sees of a message view, and what a view asks of the shell.
//
// The view interfaces form one chain, each extending the one before, so that a view class that
// offers IZTMessageView offers them all; the shell finds each with dynamic_cast and treats a null
// result as "this view class lacks it". Operations stand in the order of their slots.

#include <QFont>
#include <QString>
#include <bitset>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "ZTColors.h"
#include "ZTImageList.h"
#include "ZTRegEx.h"

class QMenu;
class QWidget;

namespace zentrail {

// ---------------------------------------------------------------------------------------------------
// Filter criteria of a view.

// Codes 0 to 255; bit n for code n.
using TZTFilterMsgTypeSet = std::bitset<256>;

struct TZTFilterCriteria {
  bool CheckAppName = false;
  std::string AppName;
  bool CheckCategory = false;
  std::string Category;
  bool CheckProcessID = false;
  uint32_t ProcessID = 0;
  bool CheckThreadName = false;
  std::string ThreadName;
  bool CheckComputerName = false;
  std::string ComputerName;
  bool CheckMessageText = false;
  std::string MessageText;  // a regular expression
  bool CheckMsgTypes = false;
  TZTFilterMsgTypeSet MsgTypeSet;
  TZTFilterMsgTypeSet MsgContentSet;

  bool operator==(const TZTFilterCriteria&) const = default;
};

// ---------------------------------------------------------------------------------------------------
// A view's own section of a project file; every operation goes to the current section.

class ICustomViewReadSettings {
 public:
  virtual ~ICustomViewReadSettings() = default;
  virtual std::string ReadString(const std::string& key, const std::string& defaultValue) = 0;
  virtual int32_t ReadInteger(const std::string& key, int32_t defaultValue) = 0;
  virtual bool ReadBool(const std::string& key, bool defaultValue) = 0;
  virtual double ReadFloat(const std::string& key, double defaultValue) = 0;
  // Days since 30 December 1899 plus the fraction of the day. By default a plain number.
  virtual double ReadDateTime(const std::string& key, double defaultValue) { return ReadFloat(key, defaultValue); }
  // Bytes; by default from hexadecimal pairs, empty when the value is not that.
  virtual std::string ReadBinary(const std::string& key) {
    const std::string text = ReadString(key, std::string());
    auto nibble = [](char c) -> int {
      if (c >= '0' && c <= '9') return c - '0';
      if (c >= 'A' && c <= 'F') return c - 'A' + 10;
      if (c >= 'a' && c <= 'f') return c - 'a' + 10;
      return -1;
    };
    std::string bytes;
    if (text.size() % 2 != 0) return bytes;
    for (size_t i = 0; i < text.size(); i += 2) {
      const int hi = nibble(text[i]), lo = nibble(text[i + 1]);
      if (hi < 0 || lo < 0) return std::string();
      bytes.push_back(static_cast<char>(hi * 16 + lo));
    }
    return bytes;
  }
};

class ICustomViewWriteSettings {
 public:
  virtual ~ICustomViewWriteSettings() = default;
  virtual void WriteString(const std::string& key, const std::string& value) = 0;
  virtual void WriteInteger(const std::string& key, int32_t value) = 0;
  virtual void WriteBool(const std::string& key, bool value) = 0;
  virtual void WriteFloat(const std::string& key, double value) = 0;
  virtual void WriteDateTime(const std::string& key, double value) { WriteFloat(key, value); }
  virtual void WriteBinary(const std::string& key, std::string_view bytes) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (unsigned char b : bytes) {
      text.push_back(kDigits[b >> 4]);
      text.push_back(kDigits[b & 15]);
    }
    WriteString(key, text);
  }
};

// ---------------------------------------------------------------------------------------------------
// The shell side, implemented by the main window.

// Font style bits of a message-type format.
enum : uint8_t { fsBold = 1, fsItalic = 2, fsUnderline = 4, fsStrikeOut = 8 };

struct TZTMsgTypeStyle {
  bool UseDefault = true;
  TColor Color = clWindowText;
  uint8_t Style = 0;  // fsBold | fsItalic | ...
};

// Kinds of GetFont.
enum : int { ztFontMessage = 0, ztFontInspectorFixed = 1, ztFontInspector = 2 };
// Kinds of GetImageList.
enum : int {
  ztImlZentrail = 0,
  ztImlMsgIcons = 1,
  ztImlNavMsgType = 2,
  ztImlNavMsgContent = 3,
  ztImlScratchPad = 4,
  ztImlBookmarkIcons = 5
};

class IZentrailApplication {
 public:
  virtual ~IZentrailApplication() = default;
  virtual int32_t GetRowHeight() = 0;
  virtual QFont GetFont(int kind) = 0;
  virtual TZTMsgTypeStyle GetMsgTypeStyle(int32_t msgType) = 0;
  virtual bool GetAutoScroll() = 0;
  virtual bool GetAutoCollapse() = 0;
  virtual bool GetFlattenStructure() = 0;
  virtual uint16_t GetColumnOptions() = 0;
  virtual bool GetHideExtraColumns() = 0;
  virtual QMenu* GetPopupMenu() = 0;
  // nullptr for a kind above 5 or a list the shell doesn't have; views then use their own glyphs.
  virtual TZTImageList* GetImageList(int kind) = 0;
  virtual TColor GetHighlightColor() = 0;
  virtual TColor GetHighlightFontColor() = 0;
  virtual TColor GetMarkerColor() = 0;
  virtual bool GetRowShading() = 0;
  virtual TColor GetRowShadingColor() = 0;
  virtual TColor GetSyncMsgColor() = 0;
  virtual TColor GetSeparatorColor() = 0;
  virtual TColor GetInactiveSeparatorColor() = 0;
  virtual TColor GetAppStartSeparatorColor() = 0;
  virtual void UpdateMessageDetails() = 0;
  virtual void UpdateCommandStates() = 0;
  virtual void SetStatusText(const QString& text) = 0;
  virtual void SetProgressMax(int32_t maximum) = 0;  // position back to 0
  virtual void SetProgress(int32_t position) = 0;
  virtual void StepProgress() = 0;
};

// The process-wide reference: the main window publishes itself at the start of its creation and
// clears it at the very end of its destruction. Null outside that time.
IZentrailApplication* ZentrailApplication();
void SetZentrailApplication(IZentrailApplication* application);

// ---------------------------------------------------------------------------------------------------
// The view interfaces.

// One line of a call stack: the Enter message's text and the row it stands on.
struct TZTCallStackEntry {
  std::string Text;
  int32_t Row = -1;
};
using TZTCallStackList = std::vector<TZTCallStackEntry>;

// Directions of JumpToMessage and JumpToTimeDiff.
enum : int32_t { ztJumpFirst = 0, ztJumpPrevious = 1, ztJumpNext = 2, ztJumpLast = 3 };

class IZTMessageViewMethods {
 public:
  virtual ~IZTMessageViewMethods() = default;
  virtual void FindMatchingMethod() = 0;
  virtual void FindCurrentMethod() = 0;
  virtual void ToggleCurrentMethod() = 0;
  // The caller has moved the store to the focused row first.
  virtual bool IsCurrentMethodCollapsed() = 0;
  virtual bool IsCollapsed(int32_t row) = 0;
  virtual void CollapseMethod(int32_t row) = 0;
  virtual void ExpandMethod(int32_t row) = 0;
  virtual void ExpandAllMethods(bool fromStart) = 0;
  virtual void CollapseAllMethods() = 0;
};

class IZTMessageViewExport : public IZTMessageViewMethods {
 public:
  virtual void ExportAsXML(const QString& fileName) = 0;
  virtual void ExportAsText(const QString& fileName) = 0;
};

class IZTMessageViewSave : public IZTMessageViewExport {
 public:
  virtual void Save(const QString& fileName) = 0;
};

class IZTMessageViewPrint : public IZTMessageViewSave {
 public:
  virtual void Print(const QString& title, bool selectedOnly, int32_t fontSize, uint16_t columns) = 0;
};

class IZTActivation : public IZTMessageViewPrint {
 public:
  virtual void Activated() = 0;
  virtual void Deactivated() = 0;
};

class IZTMessageViewSearch : public IZTActivation {
 public:
  // The find dialog, then a search; the arguments are filled from and written back by the dialog.
  virtual bool Find(std::string& text, TZTRegEx& regex, bool& inDetails, bool& fromCursor, bool& forward) = 0;
  virtual void FindNext(bool newSearch, const std::string& text, bool inDetails, bool fromCursor, bool forward,
                        const TZTRegEx& regex) = 0;
};

class IZTMessageViewList : public IZTMessageViewSearch {
 public:
  virtual int32_t GetFocusedMsgIndex() = 0;
  virtual void SetFocusedMsgIndex(int32_t row) = 0;
  virtual void GetFilterCriteria(TZTFilterCriteria& criteria) = 0;
  virtual void SetFilterCriteria(const TZTFilterCriteria& criteria) = 0;
  virtual void UpdateNavigation(int32_t msgType, int32_t msgContent, bool& hasNext, bool& hasPrevious) = 0;
  virtual bool SelectCurrentRecord() = 0;
  virtual void SelectRecord(int32_t row) = 0;
  virtual void JumpToItem(int32_t row) = 0;
  virtual void JumpToMsgDlg() = 0;
  virtual void JumpToMessage(int32_t direction, int32_t msgType, int32_t msgContent) = 0;
  virtual void JumpToTimeDiff(int32_t direction, int32_t threshold) = 0;
  virtual void JumpToMsgRecNo(int32_t recNo) = 0;
  virtual void ClearBookmarks() = 0;
  virtual void ToggleBookmark(int32_t index) = 0;
  virtual void JumpToBookmark(int32_t index) = 0;
  virtual int32_t GetBookmark(int32_t index) = 0;
  virtual int32_t GetIndentLevel(int32_t row) = 0;
  virtual void ResetIndentLevel() = 0;
  virtual void BeginUpdate() = 0;
  virtual void EndUpdate() = 0;
  virtual void EditMessage(int32_t row) = 0;
  virtual void TraverseCallStack(TZTCallStackList& strings) = 0;
};

class IZTMessageView : public IZTMessageViewList {
 public:
  virtual QString GetName() = 0;
  virtual void SetName(const QString& name) = 0;
  virtual bool GetSelected(int32_t row) = 0;
  virtual void SetSelected(int32_t row, bool value) = 0;
  virtual int32_t GetCount() = 0;
  virtual int32_t GetSelCount() = 0;
  virtual int32_t GetMsgRecNo(int32_t row) = 0;
  virtual QString GetViewClassName() = 0;
  virtual bool Focused() = 0;
  virtual void DeleteSelection() = 0;
  virtual void CropToSelection() = 0;
  virtual void SelectAll() = 0;
  virtual void CopyToClipboard() = 0;
  virtual void AddMessage(bool force) = 0;
  virtual void SetPopupMenu(QMenu* menu) = 0;
  virtual void InitView() = 0;
  virtual void ClearView() = 0;
  virtual void Invalidate() = 0;
  virtual void UpdateSettings() = 0;
  virtual void UpdateColumnWidths() = 0;
  virtual void SetSyncMsgRecNo(int32_t recNo) = 0;
  virtual void ReadSettings(ICustomViewReadSettings& settings) = 0;
  virtual void WriteSettings(ICustomViewWriteSettings& settings) = 0;
  // Assumes at least one selected row.
  virtual void GetFirstLastSelections(int32_t& first, int32_t& last) = 0;
  // The widget to place in a tab page.
  virtual QWidget* GetWidget() = 0;
};

// ---------------------------------------------------------------------------------------------------
// A view class's factory: creates one view given its owner (the parent widget).

using TZTViewFactory = std::function<IZTMessageView*(QWidget* owner)>;

}  // namespace zentrail
