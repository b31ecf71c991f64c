#include "ZTMainForm.h"

#include "ZTInspectorPane.h"

#include <QAction>
#include <QApplication>
#include <QBoxLayout>
#include <QCloseEvent>
#include <QDate>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QFontDatabase>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPainter>
#include <QProgressBar>
#include <QScreen>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QStyledItemDelegate>
#include <QTabBar>
#include <QTableWidget>
#include <QThread>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <algorithm>
#include <array>
#include <span>
#include <QToolButton>
#include <QUrl>
#include <stdexcept>
#include <unistd.h>

#include "ZTChannel.h"
#include "ZTDateTime.h"
#include "ZTDetailPanel.h"
#include "ZTGlyphs.h"
#include "ZTNavigator.h"
#include "ZTPromptService.h"
#include "ZTSound.h"
#include "ZTViewFilterForm.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

bool ztAlwaysOnTop = false;

// ---------------------------------------------------------------------------------------------------
// View classes

void TZTViewClassList::Register(const QString& key, TZTViewFactory factory) {
  for (auto& entry : FClasses) {
    if (entry.first.compare(key, Qt::CaseInsensitive) == 0) {
      entry.second = std::move(factory);
      return;
    }
  }
  FClasses.emplace_back(key, std::move(factory));
}

TZTViewFactory TZTViewClassList::Find(const QString& key) const {
  for (const auto& entry : FClasses)
    if (entry.first.compare(key, Qt::CaseInsensitive) == 0) return entry.second;
  for (const auto& entry : FClasses)
    if (entry.first.compare(QLatin1String("Default"), Qt::CaseInsensitive) == 0) return entry.second;
  return FClasses.empty() ? TZTViewFactory() : FClasses.front().second;
}

TZTViewClassList& ViewClasses() {
  static TZTViewClassList list;
  return list;
}

namespace {

const QString kAllMessages = QStringLiteral("All Messages");

QString FormatCount(qint64 n) { return QLocale(QLocale::English).toString(n); }

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
  FHighlightColor = 0x00F0CDAA;
  FHighlightFontColor = 0x00502805;

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
  stsProject->setText(QString());
  SetActiveViewIndex(0);
  setAcceptDrops(true);

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

void TFrmViewer::FormDestroy() {
  // No message may reach views that are going away.
  if (FChannel) FChannel->Close();
  qApp->removeEventFilter(this);
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

QAction* TFrmViewer::Action(const QString& name) const {
  auto it = FActions.find(name);
  return it == FActions.end() ? nullptr : it->second;
}

void TFrmViewer::CreateCommands() {
  auto add = [this](const char* name, const QString& caption, const QString& hint, const QKeySequence& key,
                    const char* glyph, std::function<void()> handler, bool checkable = false) {
    auto* action = new QAction(caption, this);
    action->setObjectName(QString::fromLatin1(name));
    action->setToolTip(hint.isEmpty() ? QString(caption).remove(QLatin1Char('&')) : hint);
    action->setStatusTip(hint);
    if (!key.isEmpty()) action->setShortcut(key);
    if (glyph) action->setIcon(ShellGlyph(glyph));
    action->setCheckable(checkable);
    connect(action, &QAction::triggered, this, [handler = std::move(handler)] { handler(); });
    addAction(action);
    FActions[QString::fromLatin1(name)] = action;
    return action;
  };

  add("actExit", "E&xit", "Exit Zentrail", QKeySequence(Qt::ALT | Qt::Key_F4), "exit", [this] { close(); });
  add("actCopyMessageText", "&Copy Selected Messages", "Copy Selected Message Text to Clipboard",
      QKeySequence(Qt::CTRL | Qt::Key_C), "copy", [this] {
        if (IZTMessageView* v = ActiveView()) v->CopyToClipboard();
      });
  add("actAddSeparator", "Add &Separator", "Add Separator", {}, "separator", [this] { AddSeparator(nullptr); });
  add("actAddResetSeparator", "Add &Reset Separator", "Add Reset Indent Level Separator", {}, "resetseparator",
      [this] { AddResetSeparator(nullptr); });
  add("actClear", "C&lear", "Clear", QKeySequence(Qt::CTRL | Qt::Key_Delete), "clear",
      [this] { ConfirmAndClear(false); });
  add("actClearAll", "Clear &All Views", "Clear All Views", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Delete),
      "clearall", [this] { ConfirmAndClear(true); });
  add("actSelectAll", "Select &All", "Select All Messages", QKeySequence(Qt::CTRL | Qt::Key_A), nullptr, [this] {
    if (IZTMessageView* v = ActiveView()) v->SelectAll();
    UpdateCommandStates();
  });

  add("actCopyInspectorContents", "Copy Inspector Contents", "Copy Inspector Pane Contents to Clipboard",
      QKeySequence(Qt::SHIFT | Qt::CTRL | Qt::Key_C), "copy", [this] {
        if (FInspectorPane) FInspectorPane->CopyInspectorContents();
      });
  add("actPrintInspectorContents", "Print Inspector Contents...", "Print Inspector Pane Contents",
      QKeySequence(Qt::SHIFT | Qt::CTRL | Qt::Key_P), "print", [this] { PrintInspectorContents(); });
  add("actViewDetailPanel", "Message &Detail Panel", "Show/Hide Message Detail Panel", {}, "detailpanel",
      [this] { SetDetailPanelVisible(!FDetailPanelVisible); }, true);
  add("actViewInspector", "&Inspector", "Show/Hide Inspector Pane", QKeySequence(Qt::Key_F11), "inspector", [this] {
    SetPaneVisible(TZTPane::Inspector, !FInspectorVisible);
    UpdateMessageDetails();
  }, true);
  add("actFullSizeInspector", "&Full Size Inspector", "Resize Inspector Pane to occupy the full size of the Viewer",
      QKeySequence(Qt::CTRL | Qt::Key_F11), "fullsize", [this] { SetFullSizeInspector(!FFullSizeInspector); }, true);
  add("actInspectorOnBottom", "Inspector on &Bottom", "Position Inspector Pane Below Message List", {}, "onbottom",
      [this] { SetInspectorOnBottom(!FInspectorOnBottom); }, true);
  add("actViewScratchPad", "&Scratch Pad", "Show/Hide Scratch Pad", QKeySequence(Qt::Key_F12), "scratchpad",
      [this] { SetPaneVisible(TZTPane::ScratchPad, !FScratchPadVisible); }, true);
  add("actViewCallStack", "&Call Stack", "Show/Hide Call Stack", QKeySequence(Qt::CTRL | Qt::Key_F12), "callstack",
      [this] { SetPaneVisible(TZTPane::CallStack, !FCallStackVisible); }, true);
  add("actAutoScroll", "&Auto-Scroll", "Automatically Scroll View to Keep New Messages Visible",
      QKeySequence(Qt::Key_F6), "autoscroll", [this] {
        bool on = !FAutoScroll;
        SetAutoScroll(on);
        // Turned on with Shift held: also go to the newest message.
        if (on && (QGuiApplication::queryKeyboardModifiers() & Qt::ShiftModifier) && FActiveList) {
          if (IZTMessageView* v = ActiveView(); v && v->GetCount() > 0) FActiveList->SetFocusedMsgIndex(v->GetCount() - 1);
        }
      }, true);
  add("actFlattenStructure", "F&latten Structure", "Hides indenting in message structure", QKeySequence(Qt::Key_F7),
      "flatten", [this] { if (FActiveList) SetFlattenStructure(!FFlattenStructure); }, true);
  // Present with its key and does nothing: there is no file to reload in a live viewer.
  add("actRefresh", "&Refresh", "Refresh the message list by reloading the log file", QKeySequence(Qt::Key_F5),
      "refresh", [] {});
  add("actAlwaysOnTop", "Always on &Top", "Always On Top", {}, "ontop", [this] { SetAlwaysOnTop(!ztAlwaysOnTop); },
      true);
  static const char* const posNames[] = {"actPosUpperLeft", "actPosUpperRight", "actPosLowerRight", "actPosLowerLeft",
                                         "actPosLeft",      "actPosTop",        "actPosRight",      "actPosBottom"};
  static const char* const posCaptions[] = {"Upper Left", "Upper Right", "Lower Right", "Lower Left",
                                            "Left",       "Top",         "Right",       "Bottom"};
  for (int tag = 1; tag <= 8; ++tag) {
    QAction* a = add(posNames[tag - 1], QString::fromLatin1(posCaptions[tag - 1]), QString(), {}, nullptr,
                     [this, tag] { PositionWindow(tag); });
    a->setData(tag);
  }

  add("actAutoCollapse", "Auto-&Collapse", "Automatically Collapse Empty Enter/Exit Method Pairs", {}, "autocollapse",
      [this] { if (FActiveList) SetAutoCollapse(!FAutoCollapse); }, true);
  add("actMethodMatch", "Method &Match", "Jump to Matching Method", QKeySequence(Qt::CTRL | Qt::Key_PageUp),
      "methodmatch", [this] { if (FActiveMethods) FActiveMethods->FindMatchingMethod(); UpdateCommandStates(); });
  add("actCurrentMethod", "C&urrent Method", "Jump to Current Method", QKeySequence(Qt::CTRL | Qt::Key_Left),
      "currentmethod", [this] { if (FActiveMethods) FActiveMethods->FindCurrentMethod(); UpdateCommandStates(); });
  add("actToggleMethod", "&Collapse Method", "Collapse Selected Method", QKeySequence(Qt::CTRL | Qt::Key_Up),
      "togglemethod", [this] { if (FActiveMethods) FActiveMethods->ToggleCurrentMethod(); UpdateCommandStates(); });
  add("actExpandAll", "&Expand All", QString(), {}, nullptr,
      [this] { if (FActiveMethods) FActiveMethods->ExpandAllMethods(true); UpdateCommandStates(); });
  add("actExpandToEnd", "Expand &To End", "Expand Methods Starting from the Current Position", {}, nullptr,
      [this] { if (FActiveMethods) FActiveMethods->ExpandAllMethods(false); UpdateCommandStates(); });
  add("actCollapseAll", "C&ollapse All", QString(), {}, nullptr,
      [this] { if (FActiveMethods) FActiveMethods->CollapseAllMethods(); UpdateCommandStates(); });

  add("actViewPrior", "Previous View", QString(), {}, nullptr, [this] {
    int i = ActiveViewIndex();
    if (i > 0) SetActiveViewIndex(i - 1);
  });
  add("actViewNext", "Next View", QString(), QKeySequence(Qt::CTRL | Qt::Key_Right), nullptr, [this] {
    int i = ActiveViewIndex();
    if (i + 1 < ViewCount()) SetActiveViewIndex(i + 1);
  });

  add("actBlockMessages", "&Block Incoming Messages", "Block Incoming Messages", QKeySequence(Qt::CTRL | Qt::Key_B),
      "block", [this] { SetMessagesBlocked(!FMessagesBlocked); }, true);
  add("actHelpAbout", "&About", "About Zentrail", {}, "about", [this] {
    PromptService().ShowMessage(
        this, QStringLiteral("Zentrail Live Viewer 5.0\n\nShows the messages of traced programs as they run."),
        TZTPromptKind::Information, QStringLiteral("About Zentrail"));
  });
  add("actViewModify", "&Modify View...", "Modify View Criteria", QKeySequence(Qt::CTRL | Qt::Key_M), "modifyview",
      [this] {
        IZTMessageView* view = ActiveView();
        if (!view || ActiveViewIndex() <= 0) return;
        TfrmViewFilter dialog(nbkViews);
        dialog.setWindowTitle(QStringLiteral("Modify Current View"));
        dialog.SetHelpKeyword(QStringLiteral("Viewer_Commands_Organize_ModifyView"));
        TZTFilterCriteria criteria;
        view->GetFilterCriteria(criteria);
        dialog.SetCriteria(criteria, view->GetName());
        if (!FActiveList) dialog.DisableFilterCriteria();
        if (FNavigator->RunDialog(dialog) != QDialog::Accepted) return;
        QString name;
        try {
          dialog.GetCriteria(criteria, name);
        } catch (const std::exception&) {
          PromptService().ShowMessage(nbkViews, QStringLiteral("The process ID must be a number."),
                                      TZTPromptKind::Error);
          return;
        }
        ModifyView(view, name, criteria);
      });
  FNavigator->CreateCommands();
}

void TFrmViewer::CreateMenus() {
  auto* bar = menuBar();
  auto addAll = [this](QMenu* menu, std::initializer_list<const char*> names) {
    for (const char* n : names) {
      if (n[0] == '-') {
        menu->addSeparator();
      } else {
        menu->addAction(Action(QString::fromLatin1(n)));
      }
    }
  };
  addAll(bar->addMenu(QStringLiteral("&File")), {"actPrintInspectorContents", "-", "actExit"});
  addAll(bar->addMenu(QStringLiteral("&Edit")), {"actCopyMessageText", "actCopyInspectorContents", "-", "actAddSeparator", "actAddResetSeparator",
                                                 "-", "actClear", "actClearAll", "-", "actSelectAll"});
  FNavigator->FillSearchMenu(bar->addMenu(QStringLiteral("&Search")));
  QMenu* view = bar->addMenu(QStringLiteral("&View"));
  addAll(view, {"actViewDetailPanel", "actViewInspector", "actFullSizeInspector", "actInspectorOnBottom", "-",
                "actViewScratchPad", "actViewCallStack", "-", "actAutoScroll", "actFlattenStructure", "-",
                "actRefresh", "actAlwaysOnTop"});
  addAll(view->addMenu(QStringLiteral("Position &Viewer")),
         {"actPosUpperLeft", "actPosUpperRight", "actPosLowerRight", "actPosLowerLeft", "actPosLeft", "actPosTop",
          "actPosRight", "actPosBottom"});
  addAll(bar->addMenu(QStringLiteral("&Methods")), {"actAutoCollapse", "-", "actMethodMatch", "actCurrentMethod", "-",
                                                    "actToggleMethod", "-", "actExpandAll", "actExpandToEnd",
                                                    "actCollapseAll"});
  addAll(bar->addMenu(QStringLiteral("&Organize")), {"actViewModify"});
  addAll(bar->addMenu(QStringLiteral("&Tools")), {"actBlockMessages"});
  addAll(bar->addMenu(QStringLiteral("&Help")), {"actHelpAbout"});

  mnuMessageList = new QMenu(this);
  mnuMessageList->setObjectName(QStringLiteral("mnuMessageList"));
  addAll(mnuMessageList, {"actCopyMessageText", "-", "actAddSeparator", "actAddResetSeparator", "-", "actToggleMethod",
                          "actMethodMatch", "actCurrentMethod", "-", "actFind", "actFindNext", "actJumpToMsg", "-"});
  FNavigator->AddBookmarkMenus(mnuMessageList);
  addAll(mnuMessageList, {"-", "actClear", "actSelectAll"});
}

void TFrmViewer::CreateToolbars() {
  tbrMain = new QToolBar(QStringLiteral("Main"), this);
  tbrMain->setObjectName(QStringLiteral("tbrMain"));
  tbrMain->setIconSize(QSize(16, 16));
  tbrMain->setMovable(false);
  auto addAll = [this](QToolBar* bar, std::initializer_list<const char*> names) {
    for (const char* n : names) {
      if (n[0] == '-') {
        bar->addSeparator();
      } else {
        bar->addAction(Action(QString::fromLatin1(n)));
      }
    }
  };
  addAll(tbrMain, {"actClearAll", "-", "actViewDetailPanel", "actViewInspector", "actViewScratchPad",
                   "actViewCallStack", "-", "actAutoScroll", "actRefresh", "-", "actAutoCollapse", "-",
                   "actFlattenStructure", "-", "actBlockMessages"});
  addToolBar(Qt::TopToolBarArea, tbrMain);

  addAll(tbrView, {"actAddSeparator", "actAddResetSeparator", "-", "actClear", "-"});
  FNavigator->AddNavigatorButtons(tbrView);
  addAll(tbrView, {"-", "actMethodMatch", "actCurrentMethod", "actToggleMethod", "-"});
  FNavigator->AddSearchButtons(tbrView);
  tbrView->addSeparator();
  FNavigator->AddBookmarkButtons(tbrView);
  addAll(tbrView, {"-", "actSyncMsgMode", "-", "actCopyMessageText"});
}

void TFrmViewer::CreateStatusBar() {
  QStatusBar* bar = statusBar();
  bar->setObjectName(QStringLiteral("sbrMain"));
  auto pane = [bar](const char* name) {
    auto* label = new QLabel(bar);
    label->setObjectName(QString::fromLatin1(name));
    label->setContentsMargins(4, 0, 4, 0);
    label->setAlignment(Qt::AlignCenter);
    bar->addWidget(label);
    return label;
  };
  stsTimeDiff = pane("stsTimeDiff");
  stsTimeDiff->setMinimumWidth(80);
  stsMsgNum = pane("stsMsgNum");
  stsMsgNum->setToolTip(QStringLiteral("Jump to Message"));
  stsMsgCount = pane("stsMsgCount");
  stsSelCount = pane("stsSelCount");
  stsProject = pane("stsProject");
  stsProject->setMinimumWidth(60);
  pbrComplete = new QProgressBar(bar);
  pbrComplete->setObjectName(QStringLiteral("pbrComplete"));
  pbrComplete->setFixedWidth(100);
  pbrComplete->setMaximumHeight(14);
  pbrComplete->setTextVisible(false);
  pbrComplete->setRange(0, 100);
  pbrComplete->setValue(0);
  bar->addWidget(pbrComplete);
  stsMessage = new QLabel(bar);
  stsMessage->setObjectName(QStringLiteral("stsMessage"));
  bar->addWidget(stsMessage, 1);
}

void TFrmViewer::CreateLayout() {
  pnlSeparator = new QWidget(this);
  pnlSeparator->setObjectName(QStringLiteral("pnlSeparator"));
  auto* outer = new QVBoxLayout(pnlSeparator);
  outer->setContentsMargins(2, 2, 2, 0);
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
  tbrView = new QToolBar(QStringLiteral("View"), pnlViews);
  tbrView->setObjectName(QStringLiteral("tbrView"));
  tbrView->setIconSize(QSize(16, 16));
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

// A view made by its class's factory, placed on a page of its own in the views notebook.
IZTMessageView* TFrmViewer::CreateViewPage(const TZTViewFactory& factory) {
  IZTMessageView* view = factory ? factory(this) : nullptr;
  if (!view) throw std::runtime_error("Invalid CustomView registered");
  auto* page = new QWidget(nbkViews);
  auto* layout = new QVBoxLayout(page);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(view->GetWidget());
  nbkViews->addWidget(page);
  return view;
}

void TFrmViewer::CreateFixedView() {
  IZTMessageView* view = CreateViewPage(ViewClasses().Find(QStringLiteral("Default")));
  tabViews->blockSignals(true);
  tabViews->addTab(kAllMessages);
  tabViews->setCurrentIndex(0);
  tabViews->blockSignals(false);
  view->SetName(kAllMessages);
  FViews.push_back(view);
  ActivateView(view);
  BindActiveView();
}

// ---------------------------------------------------------------------------------------------------
// Views

IZTMessageView* TFrmViewer::GetViewIntf(int index) const {
  return index >= 0 && index < ViewCount() ? FViews[static_cast<size_t>(index)] : nullptr;
}

int TFrmViewer::ActiveViewIndex() const { return FViews.empty() ? -1 : tabViews->currentIndex(); }

IZTMessageView* TFrmViewer::ActiveView() const { return GetViewIntf(ActiveViewIndex()); }

void TFrmViewer::SetActiveViewIndex(int index) {
  if (index < 0 || index >= ViewCount()) return;
  if (tabViews->currentIndex() == index) {
    nbkViews->setCurrentIndex(index);
    return;
  }
  tabViews->setCurrentIndex(index);  // tabViewsChange follows
}

void TFrmViewer::UnbindActiveView() {
  FActiveList = nullptr;
  FActiveMethods = nullptr;
  FActiveSearch = nullptr;
  FActivePrint = nullptr;
  FActiveSave = nullptr;
  FActiveExport = nullptr;
}

void TFrmViewer::BindActiveView() {
  UnbindActiveView();
  IZTMessageView* view = ActiveView();
  if (!view) return;
  FActiveList = dynamic_cast<IZTMessageViewList*>(view);
  FActiveSearch = dynamic_cast<IZTMessageViewSearch*>(view);
  FActiveMethods = dynamic_cast<IZTMessageViewMethods*>(view);
  FActivePrint = dynamic_cast<IZTMessageViewPrint*>(view);
  FActiveSave = dynamic_cast<IZTMessageViewSave*>(view);
  FActiveExport = dynamic_cast<IZTMessageViewExport*>(view);
}

void TFrmViewer::ActivateView(IZTMessageView* view) {
  view->InitView();
  HideInspectors();
  ClearCallStack();
  ClearDetails();
  UpdateCommandStates();
}

void TFrmViewer::PopulateView(IZTMessageView* view) {
  // Auto-scroll off and one update bracket while every stored record is offered once; both come
  // back on every way out, and so does the progress bar.
  struct TRestore {
    TFrmViewer& Window;
    IZTMessageView* View;
    bool AutoScroll;
    ~TRestore() {
      Window.FAutoScroll = AutoScroll;
      Window.FPopulating = false;
      View->EndUpdate();
      View->UpdateSettings();
      Window.SetProgress(0);
    }
  };
  view->BeginUpdate();
  TRestore restore{*this, view, FAutoScroll};
  FAutoScroll = false;
  FPopulating = true;
  view->UpdateSettings();
  const int32_t count = MessageSet.GetRecordCount();
  // The bar moves in hundredths, so that a large store costs one repaint per percent and a
  // message costs a counter.
  SetProgressMax(100);
  const int32_t stride = std::max<int32_t>(1, (count + 99) / 100);
  int32_t untilStep = stride;
  for (int32_t rec = 1; rec <= count; ++rec) {
    MessageSet.GotoRec(rec);
    view->AddMessage(false);
    if (--untilStep == 0) {
      untilStep = stride;
      StepProgress();
      pbrComplete->repaint();
    }
  }
}

bool TFrmViewer::ModifyView(IZTMessageView* view, const QString& name, const TZTFilterCriteria& criteria) {
  const auto found = std::find(FViews.begin(), FViews.end(), view);
  if (found == FViews.end()) return false;
  const int index = static_cast<int>(found - FViews.begin());
  TZTFilterCriteria previous;
  view->GetFilterCriteria(previous);
  const QString previousName = view->GetName();
  view->SetName(name);
  tabViews->setTabText(index, name);
  try {
    view->SetFilterCriteria(criteria);
  } catch (const EZTRegExError& e) {
    // The rows still answer to the old filter, so the old filter, name and caption stay with them.
    view->SetName(previousName);
    tabViews->setTabText(index, previousName);
    try {
      view->SetFilterCriteria(previous);
    } catch (const EZTRegExError&) {
    }
    PromptService().ShowMessage(
        nbkViews,
        QStringLiteral("The message text \"%1\" is not a valid regular expression:\n%2")
            .arg(QString::fromStdString(criteria.MessageText), QString::fromUtf8(e.what())),
        TZTPromptKind::Error);
    UpdateCommandStates();
    return false;
  }
  {
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    struct TRestore {
      IZTMessageView* View;
      ~TRestore() {
        View->EndUpdate();
        QGuiApplication::restoreOverrideCursor();
      }
    };
    view->BeginUpdate();
    TRestore restore{view};
    view->ClearView();
    PopulateView(view);
  }
  FViewsModified = true;
  UpdateCommandStates();
  return true;
}

IZTMessageView* TFrmViewer::CreateView(const QString& name, const TZTFilterCriteria& filter, bool modified,
                                       bool activate, const QString& viewClass) {
  TZTViewFactory factory = ViewClasses().Find(viewClass);
  if (!factory) {
    PromptService().ShowMessage(nbkViews,
                                QStringLiteral("Unable to create a view. ViewClass (%1) not found.").arg(viewClass),
                                TZTPromptKind::Error);
    return nullptr;
  }
  QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  struct Restore {
    ~Restore() { QGuiApplication::restoreOverrideCursor(); }
  } restore;
  const int previous = ActiveViewIndex();
  IZTMessageView* view = CreateViewPage(factory);
  tabViews->blockSignals(true);
  tabViews->addTab(name);
  tabViews->blockSignals(false);
  nbkViews->setCurrentIndex(previous);
  view->SetName(name);
  if (auto* list = dynamic_cast<IZTMessageViewList*>(view)) {
    try {
      list->SetFilterCriteria(filter);
    } catch (const EZTRegExError& e) {
      // The view still comes, so that a project keeps its views; its text test takes nothing
      // until the user corrects the pattern with Modify View.
      PromptService().ShowMessage(
          nbkViews,
          QStringLiteral("The message text \"%1\" of view \"%2\" is not a valid regular expression:\n%3")
              .arg(QString::fromStdString(filter.MessageText), name, QString::fromUtf8(e.what())),
          TZTPromptKind::Error);
    }
  }
  // A view made while a message is synchronised marks it like the others.
  view->SetSyncMsgRecNo(FNavigator->SyncRecNo());
  FViews.push_back(view);
  if (activate) PopulateView(view);
  ActivateView(view);
  if (activate) SetActiveViewIndex(ViewCount() - 1);
  pnlTabSet->show();
  if (modified) {
    FViewsModified = true;
    UpdateCommandStates();
  }
  return view;
}

void TFrmViewer::tabViewsChange(int index) {
  if (index < 0 || index >= ViewCount()) return;
  nbkViews->setCurrentIndex(index);
  BindActiveView();
  // The user sees the same moment in each view.
  FNavigator->ActiveViewChanged();
  UpdateMessageDetails();
  UpdateCommandStates();
}

void TFrmViewer::NextView(bool backwards) {
  int n = ViewCount();
  if (n < 2) return;
  int i = ActiveViewIndex();
  SetActiveViewIndex(backwards ? (i + n - 1) % n : (i + 1) % n);
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
// Details, call stack, status

void TFrmViewer::HideInspectors() {
  if (FInspectorPane) FInspectorPane->HideAllInspectors();
}

// The inspector that fits the focused message, and for two selected messages the pair that a plug-in
// may compare. The store stands on the focused record when this is called.
void TFrmViewer::ShowInspector() {
  if (!FInspectorPane) return;
  IZTMessageView* view = ActiveView();
  const int32_t selected = view ? view->GetSelCount() : 0;
  std::array<int32_t, 2> pair{0, 0};
  std::span<const int32_t> recNos;
  if (selected == 2 && view) {
    // The view answers with record numbers, not rows.
    int32_t first = -1, last = -1;
    view->GetFirstLastSelections(first, last);
    if (first > 0 && last > 0) {
      pair = {first, last};
      recNos = pair;
    }
  }
  const int32_t focusedRecNo = MessageSet.RecNo;
  const int panel = FInspectorPane->ShowCurrentMessage(selected, recNos, FInspectorVisible);
  if (MessageSet.RecNo != focusedRecNo && focusedRecNo > 0) MessageSet.GotoRec(focusedRecNo);
  // A separator has no data to inspect and no place in a call.
  if (panel == 0) ClearCallStack();
}

void TFrmViewer::ClearDetails() { pnlMsgDetails->Clear(); }

void TFrmViewer::ClearCallStack() { lstCallStack->clear(); }

void TFrmViewer::RefreshCallStack(IZTMessageView*) {
  lstCallStack->clear();
  if (!FActiveList) return;
  TZTCallStackList entries;
  FActiveList->TraverseCallStack(entries);
  for (const TZTCallStackEntry& e : entries) {
    auto* item = new QListWidgetItem(QString::fromStdString(e.Text), lstCallStack);
    item->setData(Qt::UserRole, e.Row);
  }
}

void TFrmViewer::UpdateMessageDetails() {
  if (FClearing) return;
  IZTMessageView* view = ActiveView();
  if (FActiveList && FActiveList->GetFocusedMsgIndex() < 0) {
    HideInspectors();
    ClearCallStack();
    ClearDetails();
    UpdateCommandStates();
    return;
  }
  if (!view || !FActiveList || view->GetCount() == 0) {
    HideInspectors();
    ClearCallStack();
    UpdateCommandStates();
    return;
  }
  FActiveList->SelectCurrentRecord();
  FNavigator->MessageSelected();
  TZentrailTimeStamp stamp = MessageSet.GetTimeStamp();
  TZTDateTimeParts parts;
  QDate date;
  QTime time;
  if (DecodeTimeStamp(stamp, parts)) {
    date = QDate(parts.Year, parts.Month, parts.Day);
    time = QTime(parts.Hour, parts.Minute, parts.Second, parts.MSec);
  }
  auto text = [](std::string_view s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); };
  pnlMsgDetails->SetField(TZTDetailPanel::Category, text(MessageSet.GetCategory()));
  pnlMsgDetails->SetField(TZTDetailPanel::TypeName, text(MessageSet.GetTypeName()));
  pnlMsgDetails->SetField(TZTDetailPanel::AppName, text(MessageSet.GetAppName()));
  pnlMsgDetails->SetField(TZTDetailPanel::Computer, text(MessageSet.GetComputerName()));
  pnlMsgDetails->SetField(TZTDetailPanel::PID, QString::number(MessageSet.GetProcessID()));
  pnlMsgDetails->SetField(TZTDetailPanel::ThreadName, text(MessageSet.GetThreadName()));
  pnlMsgDetails->SetField(TZTDetailPanel::Date, QLocale().toString(date, QLocale::ShortFormat));
  pnlMsgDetails->SetField(TZTDetailPanel::TimeStamp, time.toString(QStringLiteral("H:mm:ss.zzz")));
  RefreshCallStack(view);
  ShowInspector();
  UpdateCommandStates();
}

void TFrmViewer::UpdateStatusCounts() {
  IZTMessageView* view = ActiveView();
  auto fit = [](QLabel* label, const QString& text) {
    label->setText(text);
    label->setFixedWidth(label->fontMetrics().horizontalAdvance(text) + 10 + label->contentsMargins().left() +
                         label->contentsMargins().right());
  };
  int rows = view ? view->GetCount() : 0;
  int focused = FActiveList ? FActiveList->GetFocusedMsgIndex() : -1;
  int selected = view ? view->GetSelCount() : 0;
  if (focused >= 0 && focused < rows) {
    fit(stsMsgNum, QStringLiteral("#") + FormatCount(view->GetMsgRecNo(focused)));
  } else {
    fit(stsMsgNum, QStringLiteral("#0"));
  }
  fit(stsMsgCount, QStringLiteral("%1 out of %2 Messages").arg(FormatCount(rows), FormatCount(MessageSet.GetRecordCount())));
  fit(stsSelCount, QStringLiteral("%1 Selected").arg(FormatCount(selected)));

  // Time difference: first row to the focused row, or first to last selected row.
  if (!view || selected == 0 || rows == 0) {
    stsTimeDiff->setEnabled(false);
    stsTimeDiff->clear();
    return;
  }
  int32_t rec1 = 0, rec2 = 0;
  if (selected < 2) {
    if (focused < 0) {
      view->GetFirstLastSelections(rec1, rec2);
      rec2 = rec1;
    } else {
      rec1 = view->GetMsgRecNo(0);
      rec2 = view->GetMsgRecNo(focused);
    }
  } else {
    view->GetFirstLastSelections(rec1, rec2);
  }
  int32_t keep = MessageSet.RecNo;
  MessageSet.GotoRec(rec1);
  TZentrailTimeStamp t1 = MessageSet.GetTimeStamp();
  MessageSet.GotoRec(rec2);
  TZentrailTimeStamp t2 = MessageSet.GetTimeStamp();
  if (keep > 0) MessageSet.GotoRec(keep);
  int64_t diff = (int64_t(t2.Date) - t1.Date) * 86400000 + t2.Time - t1.Time;
  stsTimeDiff->setEnabled(true);
  if (diff < 0) {
    stsTimeDiff->setText(QStringLiteral("xx:xx:xx.xxx"));
  } else {
    int64_t ms = diff % 1000, s = diff / 1000 % 60, m = diff / 60000 % 60, h = diff / 3600000 % 24;
    stsTimeDiff->setText(QString::asprintf("%d:%.2d:%.2d.%.3d", int(h), int(m), int(s), int(ms)));
  }
}

void TFrmViewer::UpdateCommandStates() {
  if (FLoadingFile || FActions.empty() || !tabViews) return;
  IZTMessageView* view = ActiveView();
  bool hasRows = view && view->GetCount() > 0;
  int focused = FActiveList ? FActiveList->GetFocusedMsgIndex() : -1;
  bool hasFocus = hasRows && focused >= 0;
  bool hasSelection = view && view->GetSelCount() > 0;
  auto set = [this](const char* name, bool enabled) {
    if (QAction* a = Action(QString::fromLatin1(name))) a->setEnabled(enabled);
  };
  auto check = [this](const char* name, bool checked) {
    if (QAction* a = Action(QString::fromLatin1(name))) a->setChecked(checked);
  };
  set("actCopyMessageText", hasSelection);
  set("actCopyInspectorContents", hasFocus && FInspectorVisible && FInspectorPane && FInspectorPane->CanCopyContents());
  set("actPrintInspectorContents",
      hasFocus && FInspectorVisible && FInspectorPane && FInspectorPane->CanPrintContents());
  set("actClear", hasRows);
  set("actSelectAll", hasRows && FActiveList);

  int focusedType = -1;
  bool focusedCollapsed = false;
  int focusedIndent = 0;
  if (hasFocus) {
    FActiveList->SelectCurrentRecord();
    focusedType = MessageSet.GetMsgType();
    if (FActiveMethods) focusedCollapsed = FActiveMethods->IsCurrentMethodCollapsed();
    focusedIndent = FActiveList->GetIndentLevel(focused);
  }
  bool onMethod = FActiveMethods && (focusedType == ztmEnterMethod || focusedType == ztmExitMethod);
  set("actMethodMatch", onMethod);
  set("actToggleMethod", onMethod);
  set("actCurrentMethod", hasFocus && FActiveMethods && FActiveList && focusedIndent > 0);
  set("actExpandAll", hasFocus && FActiveMethods);
  set("actExpandToEnd", hasFocus && FActiveMethods);
  set("actCollapseAll", hasFocus && FActiveMethods);
  if (QAction* toggle = Action(QStringLiteral("actToggleMethod"))) {
    toggle->setText(focusedCollapsed ? QStringLiteral("&Expand Method") : QStringLiteral("&Collapse Method"));
    toggle->setToolTip(focusedCollapsed ? QStringLiteral("Expand Selected Method")
                                        : QStringLiteral("Collapse Selected Method"));
  }

  check("actViewInspector", FInspectorVisible);
  check("actFullSizeInspector", FFullSizeInspector);
  check("actViewScratchPad", FScratchPadVisible);
  check("actViewCallStack", FCallStackVisible);
  check("actInspectorOnBottom", FInspectorOnBottom);
  check("actViewDetailPanel", FDetailPanelVisible);
  check("actAutoScroll", FAutoScroll);
  check("actAutoCollapse", FAutoCollapse);
  check("actFlattenStructure", FFlattenStructure);
  check("actAlwaysOnTop", ztAlwaysOnTop);
  check("actBlockMessages", FMessagesBlocked);
  set("actFullSizeInspector", FInspectorVisible);
  for (const char* n : {"actViewInspector", "actViewCallStack", "actViewScratchPad", "actInspectorOnBottom"})
    set(n, !FFullSizeInspector);
  set("actViewPrior", ActiveViewIndex() > 0);
  set("actViewNext", ActiveViewIndex() + 1 < ViewCount());
  set("actViewModify", ActiveViewIndex() > 0);

  FNavigator->UpdateCommandStates(hasRows, hasFocus);
  UpdateStatusCounts();
}

QString TFrmViewer::StatusText(const QString& paneName) const {
  auto* label = statusBar()->findChild<QLabel*>(paneName);
  return label ? label->text() : QString();
}

QWidget* TFrmViewer::PaneWidget(const QString& name) const { return findChild<QWidget*>(name); }

void TFrmViewer::SetStatusText(const QString& text) { stsMessage->setText(text); }

void TFrmViewer::SetProgressMax(int32_t maximum) {
  pbrComplete->setRange(0, maximum);
  pbrComplete->setValue(0);
}

void TFrmViewer::SetProgress(int32_t position) { pbrComplete->setValue(position); }

void TFrmViewer::StepProgress() { pbrComplete->setValue(pbrComplete->value() + 1); }

TZTImageList* TFrmViewer::GetImageList(int kind) {
  switch (kind) {
    case ztImlMsgIcons:
      return FNavigator->MessageImages();
    case ztImlNavMsgType:
      return FNavigator->NavMsgTypeImages();
    case ztImlNavMsgContent:
      return FNavigator->NavMsgContentImages();
    case ztImlScratchPad:
      return FScratchPadImages.get();
    case ztImlBookmarkIcons:
      return FNavigator->BookmarkImages();
    default:
      return nullptr;
  }
}

// ---------------------------------------------------------------------------------------------------
// Files, drops, keys, close

void TFrmViewer::LoadLogFile(const QString& fileName, bool) {
  PromptService().ShowMessage(
      nbkViews, QStringLiteral("Cannot open \"%1\": reading log files is not yet available in this viewer.").arg(fileName),
      TZTPromptKind::Warning);
}

void TFrmViewer::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void TFrmViewer::dropEvent(QDropEvent* event) {
  activateWindow();
  raise();
  QStringList files;
  for (const QUrl& url : event->mimeData()->urls())
    if (url.isLocalFile()) files << url.toLocalFile();
  event->acceptProposedAction();
  // One file is loaded; two or more are ignored. The extension is not looked at.
  if (files.size() == 1) LoadLogFile(files.front().left(256), false);
}

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
  event->accept();
}

}  // namespace zentrail

namespace zentrail {

void TFrmViewer::PrintInspectorContents() {
  if (!FInspectorPane) return;
  const int focused = FActiveList ? FActiveList->GetFocusedMsgIndex() : -1;
  std::string_view text;
  if (focused >= 0 && FActiveList->SelectCurrentRecord()) text = MessageSet.GetMsgText();
  FInspectorPane->PrintInspectorContents(TZTInspectorPane::ProposedPrintTitle(focused >= 0, text));
}

}  // namespace zentrail
