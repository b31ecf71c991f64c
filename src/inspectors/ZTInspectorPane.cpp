#include "ZTInspectorPane.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPrinter>
#include <QVBoxLayout>
#include <exception>

#include "ZTInspectorUtils.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

namespace {

struct TBusyCursor {
  TBusyCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
  ~TBusyCursor() { QApplication::restoreOverrideCursor(); }
  TBusyCursor(const TBusyCursor&) = delete;
  TBusyCursor& operator=(const TBusyCursor&) = delete;
};

}  // namespace

TZTInspectorPane::TZTInspectorPane(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("pnlInspector"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);

  FToolbarPanel = new QWidget(this);
  FToolbarPanel->setObjectName(QStringLiteral("pnlInspectorToolbar"));
  FToolbarPanel->setFixedHeight(26);
  FToolbarPanel->setAutoFillBackground(true);
  FToolbarPanel->setStyleSheet(QStringLiteral(
      "QWidget#pnlInspectorToolbar { background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #f8f9fb, "
      "stop:1 #e8ebf0); border-bottom: 1px solid #c5cad3; }"));
  auto* bar = new QHBoxLayout(FToolbarPanel);
  bar->setContentsMargins(0, 0, 2, 0);
  bar->setSpacing(2);
  FMsgTypePanel = new QWidget(FToolbarPanel);
  FMsgTypePanel->setObjectName(QStringLiteral("pnlMsgType"));
  FMsgTypePanel->setFixedWidth(40);
  bar->addWidget(FMsgTypePanel);
  FToolbarsSlot = new QWidget(FToolbarPanel);
  auto* slotLayout = new QHBoxLayout(FToolbarsSlot);
  slotLayout->setContentsMargins(0, 0, 0, 0);
  slotLayout->setSpacing(0);
  bar->addWidget(FToolbarsSlot);
  bar->addStretch(1);
  FStandardButtons = new QWidget(FToolbarPanel);
  FStandardButtons->setObjectName(QStringLiteral("pnlStandardInspectorButtons"));
  auto* standard = new QHBoxLayout(FStandardButtons);
  standard->setContentsMargins(0, 0, 0, 0);
  standard->setSpacing(1);
  bar->addWidget(FStandardButtons);
  layout->addWidget(FToolbarPanel);

  FInspectorArea = new QWidget(this);
  auto* area = new QVBoxLayout(FInspectorArea);
  area->setContentsMargins(0, 0, 0, 0);
  area->setSpacing(0);
  layout->addWidget(FInspectorArea, 1);

  // Made once, in panel order, and kept: selecting a message costs one panel switch at most.
  FStringInspector = TZTStockInspector::Create<TZTStringInspector>(FInspectorArea, FToolbarsSlot);
  FTextInspector = TZTStockInspector::Create<TZTTextInspector>(FInspectorArea, FToolbarsSlot);
  FStringListInspector = TZTStockInspector::Create<TZTStringListInspector>(FInspectorArea, FToolbarsSlot);
  FObjectInspector = TZTStockInspector::Create<TZTObjectInspector>(FInspectorArea, FToolbarsSlot);
  FMonospaceTextInspector = TZTStockInspector::Create<TZTMonospaceTextInspector>(FInspectorArea, FToolbarsSlot);
  FBitmapInspector = TZTStockInspector::Create<TZTBitmapInspector>(FInspectorArea, FToolbarsSlot);
  FPropertiesInspector = TZTStockInspector::Create<TZTPropertiesInspector>(FInspectorArea, FToolbarsSlot);
  FTableInspector = TZTStockInspector::Create<TZTTableInspector>(FInspectorArea, FToolbarsSlot);
  FHierarchyInspector = TZTStockInspector::Create<TZTHierarchyInspector>(FInspectorArea, FToolbarsSlot);
  FMemoryStatusInspector = TZTStockInspector::Create<TZTMemoryStatusInspector>(FInspectorArea, FToolbarsSlot);
  FColorInspector = TZTStockInspector::Create<TZTColorInspector>(FInspectorArea, FToolbarsSlot);
  FCollectionInspector = TZTStockInspector::Create<TZTCollectionInspector>(FInspectorArea, FToolbarsSlot);
  FXmlDataInspector = TZTStockInspector::Create<TZTXmlDataInspector>(FInspectorArea, FToolbarsSlot);
  for (int panel = pnString; panel <= pnXmlData; ++panel) {
    TZTStockInspector* inspector = Inspector(panel);
    area->addWidget(inspector, 1);
    inspector->HideInspector();
  }

  FNotFoundMemo = new QPlainTextEdit(FInspectorArea);
  FNotFoundMemo->setReadOnly(true);
  FNotFoundMemo->setFrameShape(QFrame::NoFrame);
  FNotFoundMemo->hide();
  area->addWidget(FNotFoundMemo, 1);

  SetImages(TZTInspectorImageList::CreateDefault(this));
  const QFont ui = InspectorInterfaceFont();
  SetHeaderFont(ui, QFontMetrics(ui).height());
  SetInspectorFont(ui);
  SetInspectorFixedFont(InspectorFixedFont(9));
  SetValueColor(QColor(0, 0, 128));
  SetHighlightColors(palette().color(QPalette::Highlight), palette().color(QPalette::HighlightedText));
}

TZTInspectorPane::~TZTInspectorPane() = default;

int TZTInspectorPane::PanelForContent(int32_t msgContent) {
  switch (msgContent) {
    case ztmObject: return pnObject;
    case ztmComponentAsText:
    case ztmMemory:
    case ztmRegistry: return pnMonospaceText;
    case ztmStringList: return pnStringList;
    case ztmSeparator:
    case ztmInactiveSeparator:
    case ztmAppStartSeparator: return pnNone;
    case ztmBitmap: return pnBitmap;
    case ztmTextFile:
    case ztmWindow:
    case ztmCustomText:
    case ztmStackTrace:
    case ztmException: return pnText;
    case ztmMemoryStatus: return pnMemoryStatus;
    case ztmCustomProperties:
    case ztmSystemInfo:
    case ztmVersionInfo: return pnProperties;
    case ztmColor: return pnColor;
    case ztmXmlData: return pnXmlData;
    case ztmCustomTable: return pnTable;
    case ztmCollection: return pnCollection;
    case ztmCustomHierarchy: return pnHierarchy;
    default: return msgContent >= 100 ? pnCustom : pnString;
  }
}

QString TZTInspectorPane::ProposedPrintTitle(bool hasFocusedRow, std::string_view msgText) {
  if (!hasFocusedRow) return QStringLiteral("Inspector Pane Details");
  QString title = ToQString(msgText);
  if (title.size() > 40) title = title.left(40) + QStringLiteral("...");
  return title + QStringLiteral(" (Details)");
}

TZTStockInspector* TZTInspectorPane::Inspector(int panel) const {
  switch (panel) {
    case pnString: return FStringInspector;
    case pnText: return FTextInspector;
    case pnStringList: return FStringListInspector;
    case pnObject: return FObjectInspector;
    case pnMonospaceText: return FMonospaceTextInspector;
    case pnBitmap: return FBitmapInspector;
    case pnProperties: return FPropertiesInspector;
    case pnTable: return FTableInspector;
    case pnHierarchy: return FHierarchyInspector;
    case pnMemoryStatus: return FMemoryStatusInspector;
    case pnColor: return FColorInspector;
    case pnCollection: return FCollectionInspector;
    case pnXmlData: return FXmlDataInspector;
    default: return nullptr;
  }
}

void TZTInspectorPane::HideAllControls() {
  for (int panel = pnString; panel <= pnXmlData; ++panel) Inspector(panel)->HideInspector();
  if (FCustomControl) FCustomControl->hide();
  FNotFoundMemo->hide();
}

void TZTInspectorPane::HideAllInspectors() {
  HideAllControls();
  FCurrentPanel = pnNone;
}

int TZTInspectorPane::ShowCurrentMessage(int selectedCount, std::span<const int32_t> selectedRecNos, bool paneVisible) {
  const int32_t content = MessageSet.GetMsgContent();
  int panel = paneVisible ? PanelForContent(content) : pnString;
  if (panel < pnCustom && FCustomSource && FCustomSource->CanHandleMsgContent(selectedCount, content)) {
    panel = pnCustom;
  }
  FCurrentPanel = panel;
  if (panel == pnNone) {
    HideAllControls();
  } else if (panel == pnCustom) {
    ShowCustomPanel(selectedCount, selectedRecNos);
  } else {
    ShowPanel(panel);
  }
  emit PanelShown(panel);
  return panel;
}

void TZTInspectorPane::ShowPanel(int panel) {
  TZTStockInspector* inspector = Inspector(panel);
  if (inspector->isHidden()) {
    HideAllControls();
    inspector->ShowInspector();
  }
  InspectSafely(inspector);
}

void TZTInspectorPane::InspectSafely(TZTStockInspector* inspector) {
  // A payload an inspector cannot read must not take the window down: the inspector shows what it
  // has, and the reason stands in its notice bar.
  try {
    inspector->InspectMessage();
  } catch (const std::exception& e) {
    inspector->SetNotice(QStringLiteral("The data of this message could not be shown: %1").arg(QString::fromUtf8(e.what())));
  } catch (...) {
    inspector->SetNotice(QStringLiteral("The data of this message could not be shown."));
  }
}

QWidget* TZTInspectorPane::NotFoundControl(int32_t msgContent) {
  FNotFoundMemo->setPlainText(
      QStringLiteral("Custom inspector for message type (%1) not found.\r\n\r\nYou may be missing a custom inspector plug-in.")
          .arg(QString::fromStdString(MsgTypeReadableName(msgContent))));
  return FNotFoundMemo;
}

void TZTInspectorPane::ShowCustomPanel(int selectedCount, std::span<const int32_t> selectedRecNos) {
  HideAllControls();
  const int32_t content = MessageSet.GetMsgContent();
  if (selectedCount == 2 && selectedRecNos.size() >= 2) {
    const int32_t here = MessageSet.RecNo;
    bool same = false;
    try {
      MessageSet.GotoRec(selectedRecNos[0]);
      const int32_t first = MessageSet.GetMsgContent();
      MessageSet.GotoRec(selectedRecNos[1]);
      same = first == MessageSet.GetMsgContent();
    } catch (const std::exception&) {
      same = false;  // a record that is gone: nothing to compare, so nothing to show
    }
    if (here > 0) MessageSet.GotoRec(here);
    if (!same) return;
  }
  QWidget* control = FCustomSource ? FCustomSource->GetInspectorControl(content) : NotFoundControl(content);
  if (!control) control = NotFoundControl(content);
  if (control != FNotFoundMemo) {
    if (FCustomControl && FCustomControl != control) FCustomControl->hide();
    FCustomControl = control;
    if (control->parentWidget() != FInspectorArea) {
      control->setParent(FInspectorArea);
      static_cast<QVBoxLayout*>(FInspectorArea->layout())->addWidget(control, 1);
    }
  }
  control->show();
  try {
    if (selectedCount == 1) {
      if (auto* single = dynamic_cast<IInspectorSingleMessage*>(control)) single->InspectMessage();
    } else if (selectedCount == 2 && selectedRecNos.size() >= 2) {
      if (auto* pair = dynamic_cast<IInspectorMessagePair*>(control)) pair->InspectMessages(selectedRecNos[0], selectedRecNos[1]);
    }
  } catch (const std::exception& e) {
    InspectorPrompts().ShowMessage(this, QStringLiteral("Error"), QString::fromUtf8(e.what()));
  }
}

QWidget* TZTInspectorPane::VisibleControl() const {
  for (int panel = pnString; panel <= pnXmlData; ++panel) {
    if (!Inspector(panel)->isHidden()) return Inspector(panel);
  }
  if (FCustomControl && !FCustomControl->isHidden()) return FCustomControl;
  if (!FNotFoundMemo->isHidden()) return FNotFoundMemo;
  return nullptr;
}

bool TZTInspectorPane::CanCopyContents() const {
  QWidget* control = VisibleControl();
  return dynamic_cast<TZTStockInspector*>(control) || dynamic_cast<IInspectorCopyContents*>(control);
}

bool TZTInspectorPane::CanPrintContents() const {
  QWidget* control = VisibleControl();
  return dynamic_cast<TZTStockInspector*>(control) || dynamic_cast<IInspectorPrintContents*>(control);
}

void TZTInspectorPane::CopyInspectorContents() {
  QWidget* control = VisibleControl();
  if (auto* stock = dynamic_cast<TZTStockInspector*>(control)) {
    stock->CopyToClipboard();
  } else if (auto* copy = dynamic_cast<IInspectorCopyContents*>(control)) {
    copy->CopyToClipboard();
  }
}

bool TZTInspectorPane::PrintInspectorContents(const QString& proposedTitle) {
  QWidget* control = VisibleControl();
  auto* stock = dynamic_cast<TZTStockInspector*>(control);
  auto* plugin = stock ? nullptr : dynamic_cast<IInspectorPrintContents*>(control);
  if (!stock && !plugin) return false;
  QString title = proposedTitle;
  if (plugin) plugin->GetPrintTitle(title);
  QPrinter printer(QPrinter::HighResolution);
  if (!InspectorPrompts().ChoosePrinter(this, QStringLiteral("Print Inspector Contents"), title, printer)) return false;
  try {
    TBusyCursor busy;
    if (stock) {
      stock->Print(title, printer);
    } else {
      plugin->Print(title, printer);
    }
  } catch (const std::exception& e) {
    InspectorPrompts().ShowMessage(this, QStringLiteral("Print Inspector Contents"), QString::fromUtf8(e.what()));
    return false;
  }
  return true;
}

// ---------------------------------------------------------------------------------------------
// Settings

void TZTInspectorPane::SetHighlightColors(const QColor& color, const QColor& fontColor) {
  for (int panel = pnString; panel <= pnXmlData; ++panel) Inspector(panel)->SetHighlightColors(color, fontColor);
}

void TZTInspectorPane::SetHeaderFont(const QFont& font, int height) {
  for (int panel = pnString; panel <= pnXmlData; ++panel) Inspector(panel)->SetHeaderFont(font, height);
}

void TZTInspectorPane::SetInspectorFont(const QFont& font) {
  for (int panel = pnString; panel <= pnXmlData; ++panel) {
    if (panel == pnMonospaceText || panel == pnBitmap) continue;
    Inspector(panel)->SetViewFont(font);
  }
  FNotFoundMemo->setFont(font);
}

void TZTInspectorPane::SetInspectorFixedFont(const QFont& font) {
  FMonospaceTextInspector->SetViewFont(font);
  FXmlDataInspector->SetViewFixedFont(font);
}

void TZTInspectorPane::SetValueColor(const QColor& color) {
  FObjectInspector->SetValueColor(color);
  FPropertiesInspector->SetValueColor(color);
  FMemoryStatusInspector->SetValueColor(color);
  FColorInspector->SetValueColor(color);
  FCollectionInspector->SetValueColor(color);
}

void TZTInspectorPane::SetImages(TZTInspectorImageList* images) {
  FImages = images;
  for (int panel = pnString; panel <= pnXmlData; ++panel) {
    if (panel == pnTable || panel == pnColor) continue;
    Inspector(panel)->SetImages(images);
  }
}

TZTInspectorDisplaySettings TZTInspectorPane::GetDisplaySettings() const {
  TZTInspectorDisplaySettings s;
  s.StringWordWrap = FStringInspector->GetWordWrap();
  s.StringLineNumbers = FStringInspector->GetLineNumbers();
  s.TextWordWrap = FTextInspector->GetWordWrap();
  s.TextJumpToEnd = FTextInspector->GetJumpToEnd();
  s.TextLineNumbers = FTextInspector->GetLineNumbers();
  s.StrListJumpToEnd = FStringListInspector->GetJumpToEnd();
  s.MonospaceTextLineNumbers = FMonospaceTextInspector->GetLineNumbers();
  s.DisplayType = FBitmapInspector->GetDisplayType();
  s.XmlViewType = FXmlDataInspector->GetViewType();
  return s;
}

void TZTInspectorPane::SetDisplaySettings(const TZTInspectorDisplaySettings& s) {
  FStringInspector->SetWordWrap(s.StringWordWrap);
  FStringInspector->SetLineNumbers(s.StringLineNumbers);
  FTextInspector->SetWordWrap(s.TextWordWrap);
  FTextInspector->SetJumpToEnd(s.TextJumpToEnd);
  FTextInspector->SetLineNumbers(s.TextLineNumbers);
  FStringListInspector->SetJumpToEnd(s.StrListJumpToEnd);
  FMonospaceTextInspector->SetLineNumbers(s.MonospaceTextLineNumbers);
  FBitmapInspector->SetDisplayType(std::clamp(s.DisplayType, 0, 2));
  FXmlDataInspector->SetViewType(s.XmlViewType == 0 ? 0 : 1);
}

}  // namespace zentrail
