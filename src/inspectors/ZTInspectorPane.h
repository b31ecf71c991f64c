#pragma once
// The inspector pane (pnlInspector of the main window): its toolbar strip, the thirteen stock
// inspectors made once and kept, the choice of panel for the current record, and the commands
// Copy Inspector Contents and Print Inspector Contents. The main window positions MessageSet on the
// focused record and then calls ShowCurrentMessage; the pane never moves the cursor except to
// compare the two records of a pair for a plug-in.

#include <QColor>
#include <QFont>
#include <QPointer>
#include <QString>
#include <QWidget>
#include <cstdint>
#include <span>
#include <string_view>

#include "ZTInspect.h"
#include "ZTInspectorIntf.h"

class QHBoxLayout;
class QPlainTextEdit;

namespace zentrail {

// The persisted choices of the inspectors (section "Display" of the settings file).
struct TZTInspectorDisplaySettings {
  bool StringWordWrap = true;
  bool StringLineNumbers = false;
  bool TextWordWrap = false;
  bool TextJumpToEnd = false;
  bool TextLineNumbers = false;
  bool StrListJumpToEnd = false;
  bool MonospaceTextLineNumbers = false;
  int DisplayType = 1;  // 0 Scale, 1 Full Size, 2 Stretch
  int XmlViewType = 0;  // 0 Syntax View, 1 Structure View
};

class TZTInspectorPane : public QWidget {
  Q_OBJECT
 public:
  enum Panel {
    pnNone = 0,
    pnString = 1,
    pnText = 2,
    pnStringList = 3,
    pnObject = 4,
    pnMonospaceText = 5,
    pnBitmap = 6,
    pnProperties = 7,
    pnTable = 8,
    pnHierarchy = 9,
    pnMemoryStatus = 10,
    pnColor = 11,
    pnCollection = 12,
    pnXmlData = 13,
    pnCustom = 14,
  };

  explicit TZTInspectorPane(QWidget* parent = nullptr);
  ~TZTInspectorPane() override;

  // The stock panel for a content code (0 none ... 13; 14 for codes of 100 and above).
  static int PanelForContent(int32_t msgContent);
  // Title proposed for printing: the focused message's text cut at 40 characters with "...",
  // then " (Details)"; without a focused row "Inspector Pane Details".
  static QString ProposedPrintTitle(bool hasFocusedRow, std::string_view msgText);

  // Shows the current record of MessageSet. `selectedRecNos` are the selected records in the
  // order the view gives them (only read for a pair); `paneVisible` false means the pane is hidden
  // and the String inspector takes the message. Returns the panel shown.
  int ShowCurrentMessage(int selectedCount, std::span<const int32_t> selectedRecNos = {},
                         bool paneVisible = true);
  // No focused message: every inspector hidden.
  void HideAllInspectors();

  int CurrentPanel() const { return FCurrentPanel; }
  TZTStockInspector* Inspector(int panel) const;
  // The first visible stock inspector or plug-in control, or null.
  QWidget* VisibleControl() const;

  // Command states (the shell also requires a focused message).
  bool CanCopyContents() const;
  bool CanPrintContents() const;
  // Copy Inspector Contents.
  void CopyInspectorContents();
  // Print Inspector Contents: asks the prompt service for printer and title, then prints with a
  // busy cursor. Returns true if something was printed.
  bool PrintInspectorContents(const QString& proposedTitle);

  // Settings, applied to all inspectors as the main window does at start and on every change.
  void SetHighlightColors(const QColor& color, const QColor& fontColor);
  void SetHeaderFont(const QFont& font, int height);
  void SetInspectorFont(const QFont& font);
  void SetInspectorFixedFont(const QFont& font);
  void SetValueColor(const QColor& color);
  void SetImages(TZTInspectorImageList* images);
  TZTInspectorImageList* Images() const { return FImages; }

  TZTInspectorDisplaySettings GetDisplaySettings() const;
  void SetDisplaySettings(const TZTInspectorDisplaySettings& settings);

  void SetCustomInspectorSource(IZTCustomInspectorSource* source) { FCustomSource = source; }

  // The toolbar strip (pnlInspectorToolbar): the message-type glyph slot at its left, the visible
  // inspector's buttons, and the slot for the main window's standard buttons at its right.
  QWidget* ToolbarPanel() const { return FToolbarPanel; }
  QWidget* MsgTypePanel() const { return FMsgTypePanel; }
  QWidget* StandardButtonsPanel() const { return FStandardButtons; }

  TZTStringInspector* StringInspector() const { return FStringInspector; }
  TZTTextInspector* TextInspector() const { return FTextInspector; }
  TZTStringListInspector* StringListInspector() const { return FStringListInspector; }
  TZTObjectInspector* ObjectInspector() const { return FObjectInspector; }
  TZTMonospaceTextInspector* MonospaceTextInspector() const { return FMonospaceTextInspector; }
  TZTBitmapInspector* BitmapInspector() const { return FBitmapInspector; }
  TZTPropertiesInspector* PropertiesInspector() const { return FPropertiesInspector; }
  TZTTableInspector* TableInspector() const { return FTableInspector; }
  TZTHierarchyInspector* HierarchyInspector() const { return FHierarchyInspector; }
  TZTMemoryStatusInspector* MemoryStatusInspector() const { return FMemoryStatusInspector; }
  TZTColorInspector* ColorInspector() const { return FColorInspector; }
  TZTCollectionInspector* CollectionInspector() const { return FCollectionInspector; }
  TZTXmlDataInspector* XmlDataInspector() const { return FXmlDataInspector; }

 signals:
  // After a panel was chosen and filled; the shell updates its glyph and command states.
  void PanelShown(int panel);

 private:
  void ShowPanel(int panel);
  void ShowCustomPanel(int selectedCount, std::span<const int32_t> selectedRecNos);
  void HideAllControls();
  void InspectSafely(TZTStockInspector* inspector);
  QWidget* NotFoundControl(int32_t msgContent);

  QWidget* FToolbarPanel = nullptr;
  QWidget* FMsgTypePanel = nullptr;
  QWidget* FToolbarsSlot = nullptr;
  QWidget* FStandardButtons = nullptr;
  QWidget* FInspectorArea = nullptr;
  QPointer<TZTInspectorImageList> FImages;
  IZTCustomInspectorSource* FCustomSource = nullptr;
  QPointer<QWidget> FCustomControl;
  QPlainTextEdit* FNotFoundMemo = nullptr;
  int FCurrentPanel = pnNone;

  TZTStringInspector* FStringInspector = nullptr;
  TZTTextInspector* FTextInspector = nullptr;
  TZTStringListInspector* FStringListInspector = nullptr;
  TZTObjectInspector* FObjectInspector = nullptr;
  TZTMonospaceTextInspector* FMonospaceTextInspector = nullptr;
  TZTBitmapInspector* FBitmapInspector = nullptr;
  TZTPropertiesInspector* FPropertiesInspector = nullptr;
  TZTTableInspector* FTableInspector = nullptr;
  TZTHierarchyInspector* FHierarchyInspector = nullptr;
  TZTMemoryStatusInspector* FMemoryStatusInspector = nullptr;
  TZTColorInspector* FColorInspector = nullptr;
  TZTCollectionInspector* FCollectionInspector = nullptr;
  TZTXmlDataInspector* FXmlDataInspector = nullptr;
};

}  // namespace zentrail
