// The main window's commands, menus and toolbars, and the one routine that brings their states up
// to date.
#include "ZTMainForm.h"

#include <QAction>
#include <QGuiApplication>
#include <QMenu>
#include <QMenuBar>
#include <QStackedWidget>
#include <QTabBar>
#include <QToolBar>
#include <functional>
#include <stdexcept>

#include "ZTGlyphs.h"
#include "ZTInspectorPane.h"
#include "ZTNavigator.h"
#include "ZTPromptService.h"
#include "ZTViewFilterForm.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

QAction* TFrmViewer::Action(const QString& name) const {
  auto it = FActions.find(name);
  return it == FActions.end() ? nullptr : it->second;
}

QAction* TFrmViewer::AddCommand(const char* name, const QString& caption, const QString& hint,
                                const QKeySequence& key, const char* glyph, std::function<void()> handler,
                                bool checkable) {
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
}

void TFrmViewer::CreateCommands() {
  auto add = [this](const char* name, const QString& caption, const QString& hint, const QKeySequence& key,
                    const char* glyph, std::function<void()> handler, bool checkable = false) {
    return AddCommand(name, caption, hint, key, glyph, std::move(handler), checkable);
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
  CreateFileCommands();
  CreateEditCommands();
  CreateViewCommands();
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
  addAll(bar->addMenu(QStringLiteral("&File")), {"actNewProject", "actOpenProject", "actSaveProject", "actSaveProjectAs",
                                                 "actCloseProject", "-", "actOpen", "actAppend", "actSave", "actExport",
                                                 "actFollowLog", "-", "actPrint", "actPrintInspectorContents", "-",
                                                 "actExit"});
  addAll(bar->addMenu(QStringLiteral("&Edit")), {"actEditMessage", "actCopyMessageText", "actCopyInspectorContents", "-",
                                                 "actAddNote", "actAddCheckPoint", "actAddSeparator", "actAddResetSeparator",
                                                 "-", "actDelete", "actCropToSelection", "actClear", "actClearAll", "-",
                                                 "actSelectAll"});
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
  addAll(bar->addMenu(QStringLiteral("&Organize")), {"actOrganizeMessages", "actAutoOrganize", "actAutoOrganizeSettings",
                                                     "-", "actViewNew", "actViewModify", "-", "actViewRemove",
                                                     "actViewRemoveAll"});
  addAll(bar->addMenu(QStringLiteral("&Tools")), {"actBlockMessages", "-", "actPlugIns"});
  addAll(bar->addMenu(QStringLiteral("&Help")), {"actHelpAbout"});

  mnuMessageList = new QMenu(this);
  mnuMessageList->setObjectName(QStringLiteral("mnuMessageList"));
  addAll(mnuMessageList, {"actCopyMessageText", "-", "actAddSeparator", "actAddResetSeparator", "-", "actToggleMethod",
                          "actMethodMatch", "actCurrentMethod", "-", "actFind", "actFindNext", "actJumpToMsg", "-"});
  FNavigator->AddBookmarkMenus(mnuMessageList);
  addAll(mnuMessageList, {"-", "actEditMessage", "actDelete", "actCropToSelection", "actClear", "actSelectAll"});
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
  addAll(tbrMain, {"actOpen", "actAppend", "actSave", "actPrint", "-", "actClearAll", "-", "actViewDetailPanel", "actViewInspector", "actViewScratchPad",
                   "actViewCallStack", "-", "actAutoScroll", "actRefresh", "-", "actAutoCollapse", "-",
                   "actFlattenStructure", "-", "actBlockMessages"});
  addToolBar(Qt::TopToolBarArea, tbrMain);

  addAll(tbrView, {"actAddNote", "actAddCheckPoint", "actAddSeparator", "actAddResetSeparator", "-", "actClear", "actDelete", "-"});
  FNavigator->AddNavigatorButtons(tbrView);
  addAll(tbrView, {"-", "actMethodMatch", "actCurrentMethod", "actToggleMethod", "-"});
  FNavigator->AddSearchButtons(tbrView);
  tbrView->addSeparator();
  FNavigator->AddBookmarkButtons(tbrView);
  addAll(tbrView, {"-", "actSyncMsgMode", "-", "actCopyMessageText"});
}


void TFrmViewer::UpdateCommandStates() {
  if (FLoadingFile || FActions.empty() || !tabViews) return;
  IZTMessageView* view = ActiveView();
  bool hasRows = view && view->GetCount() > 0;
  FCommandsSawRows = hasRows;
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

  UpdateFileCommandStates(hasRows);
  UpdateEditCommandStates(hasRows, hasFocus, hasSelection, focusedType);
  FNavigator->UpdateCommandStates(hasRows, hasFocus);
  UpdateViewCommandStates();
  UpdateStatusCounts();
}

}  // namespace zentrail
