// The main window: its creation and destruction, its layout of panes and splitters, and the keys and
// events the window itself handles. Views, panes, commands, files, intake and settings have files of
// their own.
#include "ZTMainForm.h"

#include "ZTInspectorPane.h"

#include <QAction>
#include <QApplication>
#include <QBoxLayout>
#include <QCloseEvent>
#include <QFileInfo>
#include <QFontDatabase>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QScreen>
#include <QSplitter>
#include <QStackedWidget>
#include <QStyledItemDelegate>
#include <QTabBar>
#include <QTableWidget>
#include <QThread>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <algorithm>
#include <stdexcept>
#include <unistd.h>

#include "ZTChannel.h"
#include "ZTCommandBar.h"
#include "ZTDetailPanel.h"
#include "ZTGlyphs.h"
#include "ZTHelp.h"
#include "ZTHelpBrowser.h"
#include "ZTNavigator.h"
#include "ZTPromptService.h"
#include "ZTSound.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

bool ztAlwaysOnTop = false;

namespace {

QColor Colour(TColor c, const QPalette& palette) { return ColorToQColor(c, palette); }

// Draws the scratch pad as a tool window does: lights and names on the fixed colour, values on the
// window colour in the value colour.
class TScratchPadDelegate : public QStyledItemDelegate {
 public:
  TScratchPadDelegate(QObject* parent, const int& lightIndex, const TColor& valueColor,
                      const TColor& highlight, const TColor& highlightFont)
      : QStyledItemDelegate(parent),
        FLight(lightIndex),
        FValue(valueColor),
        FHighlight(highlight),
        FHighlightFont(highlightFont) {}

  void paint(QPainter* p, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const QRect r = option.rect;
    const QPalette& pal = option.palette;
    QColor fixed = pal.color(QPalette::Button);
    QString text = index.data().toString();
    p->save();
    if (index.column() == 0) {
      p->fillRect(r, fixed);
      int image = text == QLatin1String(" ") ? FLight : 7;
      p->drawPixmap(r.left() + 2 + (r.width() - 16) / 2, r.top() + (r.height() - 12) / 2,
                    ScratchPadLight(image, 12));
    } else if (index.column() == 1) {
      p->fillRect(r, fixed);
      p->setPen(pal.color(QPalette::ButtonText));
      p->drawText(r.adjusted(4, 0, -2, 0), Qt::AlignVCenter | Qt::AlignLeft, text);
      p->setPen(pal.color(QPalette::Mid));
      p->drawLine(r.topRight(), r.bottomRight());
    } else {
      bool selected = option.state & QStyle::State_Selected;
      p->fillRect(r, selected ? Colour(FHighlight, pal) : pal.color(QPalette::Base));
      p->setPen(selected ? Colour(FHighlightFont, pal) : Colour(FValue, pal));
      p->drawText(r.adjusted(4, 0, -2, 0), Qt::AlignVCenter | Qt::AlignLeft, text);
      if (option.state & QStyle::State_HasFocus) {
        p->setPen(Colour(0x00CEA27D, pal));
        p->drawRect(r.adjusted(0, 0, -1, -1));
      }
    }
    p->restore();
  }

 private:
  const int& FLight;
  const TColor& FValue;
  const TColor& FHighlight;
  const TColor& FHighlightFont;
};

// A header strip with a caption, as over the call stack.
QWidget* MakeHeader(const QString& caption, QWidget* parent) {
  auto* header = new QLabel(caption, parent);
  header->setObjectName(QStringLiteral("pnlCallStackHeader"));
  header->setContentsMargins(6, 2, 6, 2);
  header->setAutoFillBackground(true);
  QPalette p = header->palette();
  QColor base = p.color(QPalette::Window);
  p.setColor(QPalette::Window, base.darker(108));
  header->setPalette(p);
  QFont f = header->font();
  f.setBold(true);
  header->setFont(f);
  return header;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------
// Creation

TFrmViewer::TFrmViewer(const QStringList& arguments, QWidget* parent) : QMainWindow(parent) {
  FormCreate(arguments);
}

TFrmViewer::~TFrmViewer() { FormDestroy(); }

void TFrmViewer::FormCreate(const QStringList& arguments) {
  // Qt's loop already waits for the next event when idle, and commands are never updated there:
  // only explicit UpdateCommandStates calls change them.
  SetZentrailApplication(this);
  setWindowTitle(QStringLiteral("Zentrail Live Viewer"));
  setObjectName(QStringLiteral("frmViewer"));

  // Identity of the messages that the viewer makes itself.
  FAppName = QFileInfo(QCoreApplication::applicationFilePath()).completeBaseName();
  if (FAppName.isEmpty()) FAppName = QStringLiteral("zentrail-viewer");
  char host[33] = {};
  FComputerName = ::gethostname(host, sizeof host - 1) == 0 ? QString::fromLocal8Bit(host) : QString();
  FProcessID = static_cast<uint32_t>(::getpid());
  FThreadName = QString::number(static_cast<qulonglong>(::gettid()));
  FTimeBias = -QDateTime::currentDateTime().offsetFromUtc() / 60;
  FViews.clear();
  FNextMessageID = 0;

  // Fonts, with the system's where a face is missing.
  FMessageFont = ChooseFont(QStringLiteral("Verdana"), 0, false);
  FInspectorFont = ChooseFont(QStringLiteral("Segoe UI"), 0, false);
  FInspectorFixedFont = ChooseFont(QStringLiteral("Consolas"), 0, true);

  FSeenProcessIDs.clear();
  FScratchPadNames.clear();

  FChannel = new TZTChannelServer(*this, this);
  FNavigator = std::make_unique<TZTNavigator>(*this);
  FPaintClock.start();
  FPaintTimer = new QTimer(this);
  FPaintTimer->setSingleShot(true);
  connect(FPaintTimer, &QTimer::timeout, this, [this] {
    QCoreApplication::postEvent(this, new QEvent(QEvent::UpdateRequest), Qt::LowEventPriority);
  });
  CreateCommands();
  CreateLayout();
  CreateMenus();
  CreateToolbars();
  CreateStatusBar();
  ApplyChromeColours();

  FRowHeight = 17;
  LoadSettings();
  CreateFixedView();
  LoadLastProject();
  SetActiveViewIndex(0);
  setAcceptDrops(true);

  // Help pages show in the viewer's own help window.
  SetDefaultHelpOpener([this](const QUrl& url) {
    if (!FHelpBrowser) FHelpBrowser = new TZTHelpBrowser(this);
    FHelpBrowser->ShowPage(url);
    return true;
  });

  qApp->installEventFilter(this);
  connect(qApp, &QGuiApplication::applicationStateChanged, this,
          [this](Qt::ApplicationState state) { ApplicationStateChanged(state); });

  // One existing file named on the command line is loaded once the loop runs and the window shows.
  if (arguments.size() == 1 && QFileInfo(arguments.front()).isFile()) {
    QString file = arguments.front();
    QMetaObject::invokeMethod(this, [this, file] { LoadLogFile(file, false); }, Qt::QueuedConnection);
  }
  UpdateCommandStates();
}

TZTHelpBrowser* TFrmViewer::HelpBrowser() const { return FHelpBrowser.data(); }

void TFrmViewer::FormDestroy() {
  // No message may reach views that are going away.
  if (FChannel) FChannel->Close();
  qApp->removeEventFilter(this);
  SetDefaultHelpOpener({});
  SaveSettings();
  UnbindActiveView();
  FViews.clear();
  FScratchPadNames.clear();
  FSeenProcessIDs.clear();
  if (ZentrailApplication() == this) SetZentrailApplication(nullptr);
}

bool TFrmViewer::StartChannel(std::string& error) {
  std::string path = ViewerSocketPath(error);
  if (path.empty()) return false;
  return FChannel->Listen(path, error);
}

void TFrmViewer::CreateLayout() {
  pnlSeparator = new QWidget(this);
  pnlSeparator->setObjectName(QStringLiteral("pnlSeparator"));
  auto* outer = new QVBoxLayout(pnlSeparator);
  outer->setContentsMargins(2, 0, 2, 0);
  outer->setSpacing(2);
  tbrMain = new TZTCommandBar(QStringLiteral("tbrMain"), QStringLiteral("Main"), pnlSeparator);
  outer->addWidget(tbrMain);
  splMain = new QSplitter(Qt::Horizontal, pnlSeparator);
  splMain->setObjectName(QStringLiteral("splMain"));
  splMain->setChildrenCollapsible(false);
  outer->addWidget(splMain);
  splLeft = new QSplitter(Qt::Vertical, splMain);
  splLeft->setObjectName(QStringLiteral("splLeft"));
  splLeft->setChildrenCollapsible(false);
  splRight = new QSplitter(Qt::Vertical, splMain);
  splRight->setObjectName(QStringLiteral("splRight"));
  splRight->setChildrenCollapsible(false);

  // Upper left: the view toolbar, the tab strip, the notebook and the detail panel.
  pnlViews = new QWidget(splLeft);
  pnlViews->setObjectName(QStringLiteral("pnlViews"));
  auto* views = new QVBoxLayout(pnlViews);
  views->setContentsMargins(0, 0, 0, 0);
  views->setSpacing(0);
  tbrView = new TZTCommandBar(QStringLiteral("tbrView"), QStringLiteral("View"), pnlViews);
  views->addWidget(tbrView);
  pnlTabSet = new QWidget(pnlViews);
  pnlTabSet->setObjectName(QStringLiteral("pnlTabSet"));
  auto* tabs = new QHBoxLayout(pnlTabSet);
  tabs->setContentsMargins(2, 2, 2, 0);
  tabViews = new QTabBar(pnlTabSet);
  tabViews->setObjectName(QStringLiteral("tabViews"));
  tabViews->setExpanding(false);
  tabViews->setDocumentMode(true);
  tabs->addWidget(tabViews);
  tabs->addStretch(1);
  views->addWidget(pnlTabSet);
  pnlTabSet->hide();  // shown from the second view on
  pnlMsgDetails = new TZTDetailPanel(pnlViews);
  views->addWidget(pnlMsgDetails);
  pnlMsgDetails->hide();
  nbkViews = new QStackedWidget(pnlViews);
  nbkViews->setObjectName(QStringLiteral("nbkViews"));
  nbkViews->setFrameShape(QFrame::StyledPanel);
  views->addWidget(nbkViews, 1);
  connect(tabViews, &QTabBar::currentChanged, this, [this](int index) { tabViewsChange(index); });

  pnlLeftLower = new QWidget(splLeft);
  pnlLeftLower->setObjectName(QStringLiteral("pnlLeftLower"));
  auto* leftLower = new QVBoxLayout(pnlLeftLower);
  leftLower->setContentsMargins(0, 0, 0, 0);
  pnlRightUpper = new QWidget(splRight);
  pnlRightUpper->setObjectName(QStringLiteral("pnlRightUpper"));
  auto* rightUpper = new QVBoxLayout(pnlRightUpper);
  rightUpper->setContentsMargins(0, 0, 0, 0);

  // The inspector pane: its toolbar strip on top, the stock inspectors below, and on the right of
  // the strip the four buttons that belong to the main window.
  FInspectorPane = new TZTInspectorPane(pnlRightUpper);
  pnlInspector = FInspectorPane;
  if (QHBoxLayout* buttons = qobject_cast<QHBoxLayout*>(FInspectorPane->StandardButtonsPanel()->layout())) {
    auto button = [&](const char* name, const char* action) {
      auto* b = new QToolButton(FInspectorPane->StandardButtonsPanel());
      b->setObjectName(QString::fromLatin1(name));
      b->setAutoRaise(true);
      b->setDefaultAction(Action(QString::fromLatin1(action)));
      b->setToolButtonStyle(Qt::ToolButtonIconOnly);
      buttons->addWidget(b);
    };
    button("btnCopyInspectorContents", "actCopyInspectorContents");
    button("btnPrintInspectorContents", "actPrintInspectorContents");
    button("btnInspectorOnBottom", "actInspectorOnBottom");
    button("btnFullSizeInspector", "actFullSizeInspector");
  }
  FInspectorPane->SetInspectorFont(FInspectorFont);
  FInspectorPane->SetInspectorFixedFont(FInspectorFixedFont);
  rightUpper->addWidget(pnlInspector);

  // The scratch pad: its grid and, beside or above it, its toolbar.
  pnlScratchPad = new QWidget(pnlLeftLower);
  pnlScratchPad->setObjectName(QStringLiteral("pnlScratchPad"));
  FScratchPadLayout = new QBoxLayout(QBoxLayout::LeftToRight, pnlScratchPad);
  FScratchPadLayout->setContentsMargins(0, 0, 0, 0);
  FScratchPadLayout->setSpacing(0);
  grdScratchPad = new QTableWidget(50, 3, pnlScratchPad);
  grdScratchPad->setObjectName(QStringLiteral("grdScratchPad"));
  grdScratchPad->horizontalHeader()->hide();
  grdScratchPad->verticalHeader()->hide();
  grdScratchPad->setColumnWidth(0, 20);
  grdScratchPad->setColumnWidth(1, 50);
  grdScratchPad->setColumnWidth(2, 1024);
  grdScratchPad->verticalHeader()->setDefaultSectionSize(FRowHeight + 1);
  grdScratchPad->setShowGrid(true);
  grdScratchPad->setSelectionMode(QAbstractItemView::SingleSelection);
  grdScratchPad->setEditTriggers(QAbstractItemView::NoEditTriggers);
  grdScratchPad->setItemDelegate(new TScratchPadDelegate(grdScratchPad, FScratchPadLightColor, FValueColor,
                                                         FHighlightColor, FHighlightFontColor));
  tbrScratchPad = new QToolBar(pnlScratchPad);
  tbrScratchPad->setObjectName(QStringLiteral("tbrScratchPad"));
  tbrScratchPad->setIconSize(QSize(16, 16));
  QAction* clearPad = tbrScratchPad->addAction(ShellGlyph("clear"), QStringLiteral("Clear Scratch Pad"));
  clearPad->setObjectName(QStringLiteral("btnClearScratchPad"));
  connect(clearPad, &QAction::triggered, this, [this] { ClearScratchPad(); });
  QAction* deleteLine = tbrScratchPad->addAction(ShellGlyph("exit"), QStringLiteral("Delete Scratch Pad Line"));
  deleteLine->setObjectName(QStringLiteral("btnDeleteScratchPadItem"));
  connect(deleteLine, &QAction::triggered, this, [this] { DeleteScratchPadLine(); });
  tmrScratchPad = new QTimer(this);
  tmrScratchPad->setSingleShot(true);
  tmrScratchPad->setInterval(400);
  connect(tmrScratchPad, &QTimer::timeout, this, [this] {
    for (int r = 0; r < grdScratchPad->rowCount(); ++r)
      if (QTableWidgetItem* item = grdScratchPad->item(r, 0)) item->setText(QString());
  });
  FScratchPadImages = std::make_unique<TZTImageList>(12, 12);
  for (int i = 0; i < 8; ++i) FScratchPadImages->SetImage(i, ScratchPadLight(i, 12));
  leftLower->addWidget(pnlScratchPad);
  ArrangeScratchPad();

  pnlCallStack = new QFrame(splRight);
  pnlCallStack->setObjectName(QStringLiteral("pnlCallStack"));
  static_cast<QFrame*>(pnlCallStack)->setFrameShape(QFrame::StyledPanel);
  auto* callStack = new QVBoxLayout(pnlCallStack);
  callStack->setContentsMargins(0, 0, 0, 0);
  callStack->setSpacing(0);
  callStack->addWidget(MakeHeader(QStringLiteral("Call Stack"), pnlCallStack));
  lstCallStack = new QListWidget(pnlCallStack);
  lstCallStack->setObjectName(QStringLiteral("lstCallStack"));
  lstCallStack->setFrameShape(QFrame::NoFrame);
  callStack->addWidget(lstCallStack, 1);
  connect(lstCallStack, &QListWidget::itemDoubleClicked, this, [this](QListWidgetItem* item) {
    if (item && FActiveList) FActiveList->SetFocusedMsgIndex(item->data(Qt::UserRole).toInt());
  });

  splMain->addWidget(splLeft);
  splMain->addWidget(splRight);
  splLeft->addWidget(pnlViews);
  splLeft->addWidget(pnlLeftLower);
  splRight->addWidget(pnlRightUpper);
  splRight->addWidget(pnlCallStack);
  splMain->setStretchFactor(0, 1);
  splMain->setStretchFactor(1, 0);
  splLeft->setStretchFactor(0, 1);
  splLeft->setStretchFactor(1, 0);
  splRight->setStretchFactor(0, 1);
  splRight->setStretchFactor(1, 0);
  // Design positions: 674 of 888, 646 of 724, 590 of 724.
  splMain->setSizes({674, 214});
  splLeft->setSizes({646, 78});
  splRight->setSizes({590, 134});
  pnlLeftLower->hide();
  pnlRightUpper->hide();
  pnlCallStack->hide();
  splRight->hide();

  // Names for screen readers and keyboard users, where the widget shows no caption of its own.
  tabViews->setAccessibleName(QStringLiteral("Views"));
  grdScratchPad->setAccessibleName(QStringLiteral("Scratch Pad"));
  tbrScratchPad->setAccessibleName(QStringLiteral("Scratch Pad Toolbar"));
  lstCallStack->setAccessibleName(QStringLiteral("Call Stack"));
  pnlMsgDetails->setAccessibleName(QStringLiteral("Message Details"));
  FInspectorPane->setAccessibleName(QStringLiteral("Inspector"));
  for (QAction* a : tbrScratchPad->actions())
    if (QWidget* w = tbrScratchPad->widgetForAction(a)) w->setAccessibleName(a->text());
  if (auto* more = tbrScratchPad->findChild<QWidget*>(QStringLiteral("qt_toolbar_ext_button")))
    more->setAccessibleName(QStringLiteral("More Buttons"));
  setCentralWidget(pnlSeparator);
  resize(896, 780);
}

void TFrmViewer::ApplyChromeColours() {
  // Splitter handles a shade darker than the window, so that the panes read as panes.
  QString handle = palette().color(QPalette::Window).darker(112).name();
  for (QSplitter* s : {splMain, splLeft, splRight}) {
    s->setHandleWidth(5);
    s->setStyleSheet(QStringLiteral("QSplitter::handle { background: %1; }").arg(handle));
  }
  pnlMsgDetails->SetValueColor(Colour(FValueColor, palette()));
}

void TFrmViewer::ApplicationStateChanged(Qt::ApplicationState state) {
  if (state == Qt::ApplicationActive) {
    UpdateCommandStates();
    for (IZTMessageView* v : FViews)
      if (auto* a = dynamic_cast<IZTActivation*>(v)) a->Activated();
  } else if (state == Qt::ApplicationInactive) {
    for (IZTMessageView* v : FViews)
      if (auto* a = dynamic_cast<IZTActivation*>(v)) a->Deactivated();
  }
}

// ---------------------------------------------------------------------------------------------------
// Panes

bool TFrmViewer::PaneVisible(TZTPane pane) const {
  switch (pane) {
    case TZTPane::Inspector:
      return FInspectorVisible;
    case TZTPane::CallStack:
      return FCallStackVisible;
    case TZTPane::ScratchPad:
      return FScratchPadVisible;
  }
  return false;
}

void TFrmViewer::SetPaneVisible(TZTPane pane, bool visible) {
  // The right column of splMain is there exactly while something in it is visible.
  switch (pane) {
    case TZTPane::Inspector:
      FInspectorVisible = visible;
      if (FInspectorOnBottom) {
        pnlLeftLower->setVisible(visible);
      } else {
        pnlRightUpper->setVisible(visible);
        if (!FCallStackVisible) splRight->setVisible(visible);
      }
      break;
    case TZTPane::CallStack:
      FCallStackVisible = visible;
      pnlCallStack->setVisible(visible);
      if ((!FInspectorOnBottom && !FInspectorVisible) || (FInspectorOnBottom && !FScratchPadVisible))
        splRight->setVisible(visible);
      break;
    case TZTPane::ScratchPad:
      FScratchPadVisible = visible;
      if (FInspectorOnBottom) {
        pnlRightUpper->setVisible(visible);
        if (!FCallStackVisible) splRight->setVisible(visible);
      } else {
        pnlLeftLower->setVisible(visible);
      }
      break;
  }
  if (!FLoadingSettings) UpdateCommandStates();
}

void TFrmViewer::ArrangeScratchPad() {
  // Beside the grid at its right edge when the pad lies under the views; above it on the right.
  FScratchPadLayout->removeWidget(grdScratchPad);
  FScratchPadLayout->removeWidget(tbrScratchPad);
  if (FInspectorOnBottom) {
    FScratchPadLayout->setDirection(QBoxLayout::TopToBottom);
    tbrScratchPad->setOrientation(Qt::Horizontal);
    FScratchPadLayout->addWidget(tbrScratchPad);
    FScratchPadLayout->addWidget(grdScratchPad, 1);
  } else {
    FScratchPadLayout->setDirection(QBoxLayout::LeftToRight);
    tbrScratchPad->setOrientation(Qt::Vertical);
    FScratchPadLayout->addWidget(grdScratchPad, 1);
    FScratchPadLayout->addWidget(tbrScratchPad);
  }
}

void TFrmViewer::SetInspectorOnBottom(bool onBottom) {
  if (FFullSizeInspector) return;
  FInspectorOnBottom = onBottom;
  QWidget* lower = onBottom ? pnlInspector : pnlScratchPad;
  QWidget* upper = onBottom ? pnlScratchPad : pnlInspector;
  pnlLeftLower->layout()->addWidget(lower);
  pnlRightUpper->layout()->addWidget(upper);
  lower->show();
  upper->show();
  ArrangeScratchPad();
  // Reapply both with their states: the holders now carry the other pane.
  bool inspector = FInspectorVisible, scratch = FScratchPadVisible;
  pnlLeftLower->hide();
  pnlRightUpper->hide();
  FInspectorVisible = FScratchPadVisible = false;
  if (!FCallStackVisible) splRight->hide();
  SetPaneVisible(TZTPane::Inspector, inspector);
  SetPaneVisible(TZTPane::ScratchPad, scratch);
  UpdateCommandStates();
}

void TFrmViewer::SetFullSizeInspector(bool fullSize) {
  if (fullSize == FFullSizeInspector) return;
  if (fullSize && !FInspectorVisible) return;
  QWidget* viewsPane = FInspectorOnBottom ? static_cast<QWidget*>(pnlViews) : static_cast<QWidget*>(splLeft);
  if (fullSize) {
    FFullSizeRestore = 1 | (FCallStackVisible ? 2 : 0) | (FScratchPadVisible ? 4 : 0);
    SetPaneVisible(TZTPane::CallStack, false);
    SetPaneVisible(TZTPane::ScratchPad, false);
    FFullSizeInspector = true;
    viewsPane->hide();
  } else {
    FFullSizeInspector = false;
    SetPaneVisible(TZTPane::CallStack, (FFullSizeRestore & 2) != 0);
    SetPaneVisible(TZTPane::ScratchPad, (FFullSizeRestore & 4) != 0);
    viewsPane->show();
    if (IZTMessageView* v = ActiveView()) v->GetWidget()->setFocus();
  }
  UpdateCommandStates();
}

void TFrmViewer::SetDetailPanelVisible(bool visible) {
  FDetailPanelVisible = visible;
  pnlMsgDetails->setVisible(visible);
  if (!FLoadingSettings) UpdateCommandStates();
}

void TFrmViewer::SetAlwaysOnTop(bool onTop) {
  ztAlwaysOnTop = onTop;
  bool shown = isVisible();
  setWindowFlag(Qt::WindowStaysOnTopHint, onTop);
  if (shown) show();  // changing the flags hides a shown window
  if (!FLoadingSettings) UpdateCommandStates();
}

void TFrmViewer::SetMessagesBlocked(bool blocked) {
  FMessagesBlocked = blocked;
  UpdateCommandStates();
}

void TFrmViewer::SetAutoScroll(bool on) {
  FAutoScroll = on;
  for (IZTMessageView* v : FViews) v->UpdateSettings();
  if (!FLoadingSettings) UpdateCommandStates();
}

void TFrmViewer::SetAutoCollapse(bool on) {
  FAutoCollapse = on;
  for (IZTMessageView* v : FViews) v->UpdateSettings();
  if (!FLoadingSettings) UpdateCommandStates();
}

void TFrmViewer::SetFlattenStructure(bool on) {
  FFlattenStructure = on;
  for (IZTMessageView* v : FViews) v->UpdateSettings();
  if (!FLoadingSettings) UpdateCommandStates();
}

void TFrmViewer::PositionWindow(int tag) {
  QScreen* screen = this->screen();
  if (!screen) return;
  // Raw work-area coordinates on purpose: for the edge commands the width or height becomes the
  // work area's right or bottom coordinate, which overshoots on a monitor that does not start at 0.
  QRect area = screen->availableGeometry();
  const int left = area.left(), top = area.top(), right = area.right() + 1, bottom = area.bottom() + 1;
  QRect frame = frameGeometry();
  QSize margins = frame.size() - geometry().size();
  int w = frame.width(), h = frame.height();
  int x = frame.left(), y = frame.top();
  switch (tag) {
    case 1: x = left; y = top; break;
    case 2: x = right - w; y = top; break;
    case 3: x = right - w; y = bottom - h; break;
    case 4: x = left; y = bottom - h; break;
    case 5: x = left; y = top; h = bottom; break;
    case 6: x = left; y = top; w = right; break;
    case 7: x = right - w; y = top; h = bottom; break;
    case 8: x = left; y = bottom - h; w = right; break;
    default: return;
  }
  if (isMaximized()) showNormal();
  resize(QSize(w, h) - margins);
  move(x, y);
}

// ---------------------------------------------------------------------------------------------------
// Keys, close

bool TFrmViewer::eventFilter(QObject* watched, QEvent* event) {
  // The message number in the status bar is the way to the jump dialog.
  if (watched == stsMsgNum && event->type() == QEvent::MouseButtonRelease) {
    if (QAction* jump = Action(QStringLiteral("actJumpToMsg")); jump && jump->isEnabled()) jump->trigger();
    return true;
  }
  // The window sees Ctrl+Tab before any of its controls.
  if (event->type() == QEvent::KeyPress && isActiveWindow()) {
    auto* key = static_cast<QKeyEvent*>(event);
    if ((key->modifiers() & Qt::ControlModifier) && (key->key() == Qt::Key_Tab || key->key() == Qt::Key_Backtab)) {
      NextView(key->key() == Qt::Key_Backtab || (key->modifiers() & Qt::ShiftModifier));
      return true;
    }
  }
  return QMainWindow::eventFilter(watched, event);
}

bool TFrmViewer::event(QEvent* event) {
  // Every live message marks a row dirty, and the loop would repaint the window after each one.
  // The screen cannot show more than a few dozen frames a second anyway, so while messages stream
  // in, painting runs at most once per interval and the rest of the time goes to the messages.
  // A window that has been quiet for the interval paints at once.
  if (event->type() == QEvent::UpdateRequest) {
    constexpr qint64 kMinPaintIntervalMs = 40;
    qint64 now = FPaintClock.elapsed();
    qint64 since = now - FLastPaint;
    if (since < kMinPaintIntervalMs) {
      if (!FPaintTimer->isActive()) FPaintTimer->start(static_cast<int>(kMinPaintIntervalMs - since));
      return true;
    }
    FLastPaint = now;
  }
  return QMainWindow::event(event);
}

void TFrmViewer::closeEvent(QCloseEvent* event) {
  // Nothing is asked at exit: unsaved messages and views without a project close silently.
  CloseQuery();
  event->accept();
}

}  // namespace zentrail

