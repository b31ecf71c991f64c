#include "ZTNavigator.h"

#include <QAction>
#include <QGuiApplication>
#include <QMenu>
#include <QStackedWidget>
#include <QToolBar>
#include <QToolButton>
#include <exception>

#include "ZTGlyphs.h"
#include "ZTImageList.h"
#include "ZTMainForm.h"
#include "ZTMsgView.h"
#include "ZTNavForms.h"
#include "ZTPromptService.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

const std::vector<TZTNavChoice>& NavMsgTypeChoices() {
  static const std::vector<TZTNavChoice> choices = {
      {"actNavInfo", "Info Messages", 0, ztmInfo},
      {"actNavNotes", "Notes", 1, ztmNote},
      {"actNavWarning", "Warning Messages", 2, ztmWarning},
      {"actNavError", "Error Messages", 3, ztmError},
      {"actNavException", "Exceptions", 4, ztmException},
      {"actNavReminders", "Reminders", 5, ztmReminder},
      {"actNavCheckPoints", "Check Points", 6, ztmCheckPoint},
      {"actNavRed", "Level 1 - Red", 7, ztmLevel1},
      {"actNavOrange", "Level 2 - Orange", 8, ztmLevel2},
      {"actNavYellow", "Level 3 - Yellow", 9, ztmLevel3},
      {"actNavGreen", "Level 4 - Green", 10, ztmLevel4},
      {"actNavBlue", "Level 5 - Blue", 11, ztmLevel5},
      {"actNavIndigo", "Level 6 - Indigo", 12, ztmLevel6},
      {"actNavViolet", "Level 7 - Violet", 13, ztmLevel7},
      {"actNavEnterMethod", "Enter Method", 14, ztmEnterMethod},
      {"actNavExitMethod", "Exit Method", 15, ztmExitMethod},
      {"actNavTimings", "Timings", 16, ztmTiming},
      {"actNavSeparator", "Separator", 17, ztmSeparator},
      {"actNavAppStartSeparator", "Application Start Separator", 18, ztmAppStartSeparator},
      // The caption stands as the form has always had it.
      {"actNavInactiveSeparator", "ActNavSeparator", 19, ztmInactiveSeparator},
      {"actNavResetSeparator", "Reset Indent Separator", 20, ztmResetSeparator},
      {"actNavCustom", "Custom Messages", 21, ztmReserved},
      {"actNavMatchAnyType", "Match Any Message Type", -1, -1},
  };
  return choices;
}

const std::vector<TZTNavChoice>& NavMsgContentChoices() {
  static const std::vector<TZTNavChoice> choices = {
      {"actNavText", "Text", 0, ztmText},
      {"actNavStringLists", "String Lists", 1, ztmStringList},
      {"actNavObjects", "Objects", 2, ztmObject},
      {"actNavCollection", "Collections", 3, ztmCollection},
      {"actNavCompAsText", "Components (as Text)", 4, ztmComponentAsText},
      {"actNavColor", "Colors", 5, ztmColor},
      {"actNavBitmaps", "Bitmaps", 6, ztmBitmap},
      {"actNavTextFiles", "Text Files", 7, ztmTextFile},
      {"actNavXML", "XML Data", 8, ztmXmlData},
      {"actNavMemory", "Memory", 9, ztmMemory},
      {"actNavMemoryStatus", "Memory Status", 10, ztmMemoryStatus},
      {"actNavWindows", "Windows", 11, ztmWindow},
      {"actNavRegistry", "Registry Messages", 12, ztmRegistry},
      {"actNavSystemInfo", "System Information", 13, ztmSystemInfo},
      {"actNavVersionInfo", "Version Information", 14, ztmVersionInfo},
      {"actNavStackTrace", "Stack Traces", 15, ztmStackTrace},
      {"actNavCustomText", "Custom Format (Text)", 16, ztmCustomText},
      {"actNavCustomProperties", "Custom Format (Properties)", 17, ztmCustomProperties},
      {"actNavCustomTable", "Custom Format (Table)", 18, ztmCustomTable},
      {"actNavCustomHierarchy", "Custom Format (Hierarchy)", 19, ztmCustomHierarchy},
      {"actNavMatchAnyContent", "Match Any Message Content", -1, -1},
  };
  return choices;
}

namespace {

QString Plain(const QString& caption) { return QString(caption).remove(QLatin1Char('&')); }

}  // namespace

TZTNavigator::TZTNavigator(TFrmViewer& window) : FWindow(window) {
  RunDialog = [](QDialog& dialog) { return dialog.exec(); };
  AltHeld = [] { return (QGuiApplication::queryKeyboardModifiers() & Qt::AltModifier) != 0; };
}

TZTNavigator::~TZTNavigator() = default;

QAction* TZTNavigator::Act(const char* name) const { return FWindow.Action(QString::fromLatin1(name)); }

QAction* TZTNavigator::AddAction(const char* name, const QString& caption, const QString& hint,
                                 const QKeySequence& key, const char* glyph, std::function<void()> handler, bool checkable) {
  auto* action = new QAction(caption, &FWindow);
  action->setObjectName(QString::fromLatin1(name));
  action->setToolTip(hint.isEmpty() ? Plain(caption) : hint);
  action->setStatusTip(hint);
  if (!key.isEmpty()) action->setShortcut(key);
  if (glyph) action->setIcon(ShellGlyph(glyph));
  action->setCheckable(checkable);
  connect(action, &QAction::triggered, this, [this, handler = std::move(handler)] { Guarded(handler); });
  FWindow.addAction(action);
  FWindow.FActions[QString::fromLatin1(name)] = action;
  return action;
}

void TZTNavigator::Guarded(const std::function<void()>& command) {
  // Qt's loop must never see an exception: a failed command is told to the user and ends there.
  try {
    command();
  } catch (const std::exception& e) {
    PromptService().ShowMessage(FWindow.nbkViews, QString::fromUtf8(e.what()), TZTPromptKind::Error);
    FWindow.UpdateCommandStates();
  }
}

void TZTNavigator::CreateCommands() {
  FMessageImages = CreateMessageImageList(this);
  FBookmarkImages = CreateBookmarkImageList(this);
  FNavMsgTypeImages = new TZTImageList(16, 16, this);
  FNavMsgContentImages = new TZTImageList(16, 16, this);
  const QPixmap anyGlyph = ShellGlyph("navany").pixmap(16, 16);

  AddAction("actFind", "&Find...", "Find", QKeySequence(Qt::CTRL | Qt::Key_F), "find", [this] { Find(); });
  AddAction("actFindNext", "Find &Next", "Find Next", QKeySequence(Qt::Key_F3), "findnext", [this] { FindNext(); });
  AddAction("actJumpToMsg", "&Jump to Message...", "Jump to Message", QKeySequence(Qt::CTRL | Qt::Key_J), "jumpto",
            [this] { JumpToMsg(); });
  AddAction("actClearBookmarks", "&Clear Bookmarks", "Clear All Bookmarks", {}, "bookmarkclear",
            [this] { ClearBookmarks(); });
  AddAction("actSyncMsgMode", "&Synchronize Message Mode", "Synchronize selected message when changing views",
            QKeySequence(Qt::Key_F9), "syncmsg", [this] { FlipSyncMsgMode(); }, true);
  AddAction("actUpdateSyncMsg", "&Update Synchronized Message", "Change the message currently being synchronized", {},
            "syncupdate", [this] {
              UpdateSyncMsg();
              FWindow.UpdateCommandStates();
            });
  AddAction("actSelectNavMsg", "Select Navigation &Message...", "Select Navigation Message", {}, "navselect",
            [this] { SelectNavMsg(); });
  AddAction("actNavFirst", "&First", "First Message", QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_Home), "navfirst",
            [this] { Navigate(ztJumpFirst); });
  AddAction("actNavPrevious", "&Previous", "Previous Message", QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_Up), "navprev",
            [this] { Navigate(ztJumpPrevious); });
  AddAction("actNavNext", "&Next", "Next Message", QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_Down), "navnext",
            [this] { Navigate(ztJumpNext); });
  AddAction("actNavLast", "&Last", "Last Message", QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_End), "navlast",
            [this] { Navigate(ztJumpLast); });
  AddAction("actNavAutomatic", "&Automatic", QString(), {}, "navauto", [this] {
    SetNavigatorAutomatic(!FNavigatorAutomatic);
    FWindow.UpdateCommandStates();
  }, true);
  AddAction("actNavTimeDiff", "&Time Difference", QString(), {}, "timediff", [this] { TimeDiffCommand(); }, true);

  for (const TZTNavChoice& choice : NavMsgTypeChoices()) {
    const int32_t code = choice.Code;
    QAction* a = AddAction(choice.Name, QString::fromLatin1(choice.Caption), QString(), {}, nullptr, [this, code] {
      SetNavigatorMsgType(code);
      UpdateNavigationCommands();
    }, true);
    a->setData(choice.Tag);
    QPixmap glyph = code < 0 ? anyGlyph : NavigatorGlyph(FMessageImages, code);
    a->setIcon(QIcon(glyph));
    FNavMsgTypeImages->SetImage(choice.Tag < 0 ? static_cast<int>(NavMsgTypeChoices().size()) - 1 : choice.Tag,
                                glyph);
    aclNavMsgType.push_back(a);
  }
  for (const TZTNavChoice& choice : NavMsgContentChoices()) {
    const int32_t code = choice.Code;
    QAction* a = AddAction(choice.Name, QString::fromLatin1(choice.Caption), QString(), {}, nullptr, [this, code] {
      SetNavigatorMsgContent(code);
      UpdateNavigationCommands();
    }, true);
    a->setData(choice.Tag);
    QPixmap glyph = code < 0 ? anyGlyph : NavigatorGlyph(FMessageImages, code);
    a->setIcon(QIcon(glyph));
    FNavMsgContentImages->SetImage(
        choice.Tag < 0 ? static_cast<int>(NavMsgContentChoices().size()) - 1 : choice.Tag, glyph);
    aclNavMsgContent.push_back(a);
  }

  static const char* const toggleNames[] = {"actToggleBookmark0", "actToggleBookmark1", "actToggleBookmark2",
                                            "actToggleBookmark3", "actToggleBookmark4", "actToggleBookmark5",
                                            "actToggleBookmark6", "actToggleBookmark7", "actToggleBookmark8",
                                            "actToggleBookmark9"};
  static const char* const jumpNames[] = {"actJumpToBookmark0", "actJumpToBookmark1", "actJumpToBookmark2",
                                          "actJumpToBookmark3", "actJumpToBookmark4", "actJumpToBookmark5",
                                          "actJumpToBookmark6", "actJumpToBookmark7", "actJumpToBookmark8",
                                          "actJumpToBookmark9"};
  for (int32_t i = 0; i < 10; ++i) {
    QAction* a = AddAction(toggleNames[i], QStringLiteral("Toggle Bookmark &%1").arg(i), QString(),
                           QKeySequence(QKeyCombination(Qt::ShiftModifier | Qt::ControlModifier, Qt::Key(Qt::Key_0 + i))), nullptr, [this, i] { ToggleBookmark(i); }, true);
    a->setData(i);
    a->setIcon(QIcon(FBookmarkImages->Image(i)));
    aclBookmarks.push_back(a);
  }
  for (int32_t i = 0; i < 10; ++i) {
    QAction* a = AddAction(jumpNames[i], QStringLiteral("Jump To Bookmark &%1").arg(i), QString(),
                           QKeySequence(QKeyCombination(Qt::ControlModifier, Qt::Key(Qt::Key_0 + i))), nullptr, [this, i] { JumpToBookmark(i); });
    a->setData(i);
    a->setIcon(QIcon(FBookmarkImages->Image(i)));
    aclBookmarks.push_back(a);
  }

  // The navigator's two buttons carry the current choice and open its list.
  mnuNavMsgType = new QMenu(&FWindow);
  mnuNavMsgType->setObjectName(QStringLiteral("mnuNavMsgType"));
  for (QAction* a : aclNavMsgType) {
    if (a->data().toInt() < 0) mnuNavMsgType->addSeparator();
    mnuNavMsgType->addAction(a);
  }
  mnuNavMsgType->addSeparator();
  mnuNavMsgType->addAction(Act("actNavTimeDiff"));
  mnuNavMsgType->addAction(Act("actNavAutomatic"));
  mnuNavMsgType->addSeparator();
  mnuNavMsgType->addAction(Act("actSelectNavMsg"));
  mnuNavMsgContent = new QMenu(&FWindow);
  mnuNavMsgContent->setObjectName(QStringLiteral("mnuNavMsgContent"));
  for (QAction* a : aclNavMsgContent) {
    if (a->data().toInt() < 0) mnuNavMsgContent->addSeparator();
    mnuNavMsgContent->addAction(a);
  }
  mnuNavMsgContent->addSeparator();
  mnuNavMsgContent->addAction(Act("actNavAutomatic"));
  mnuNavMsgContent->addSeparator();
  mnuNavMsgContent->addAction(Act("actSelectNavMsg"));
  auto navButton = [this](const char* name, QMenu* menu) {
    auto* b = new QToolButton(&FWindow);
    b->setObjectName(QString::fromLatin1(name));
    b->setMenu(menu);
    b->setPopupMode(QToolButton::InstantPopup);
    b->setAutoRaise(true);
    b->setIconSize(QSize(16, 16));
    return b;
  };
  btnNavMsgTypeSelect = navButton("btnNavMsgTypeSelect", mnuNavMsgType);
  btnNavMsgContentSelect = navButton("btnNavMsgContentSelect", mnuNavMsgContent);

  mnuBtnToggleBookmarks = new QMenu(QStringLiteral("Toggle &Bookmarks"), &FWindow);
  mnuBtnToggleBookmarks->setObjectName(QStringLiteral("mnuBtnToggleBookmarks"));
  mnuBtnToggleBookmarks->setIcon(ShellGlyph("bookmarktoggle"));
  mnuBtnJumpToBookmarks = new QMenu(QStringLiteral("&Jump to Bookmarks"), &FWindow);
  mnuBtnJumpToBookmarks->setObjectName(QStringLiteral("mnuBtnJumpToBookmarks"));
  mnuBtnJumpToBookmarks->setIcon(ShellGlyph("bookmarkjump"));
  for (int i = 0; i < 10; ++i) {
    mnuBtnToggleBookmarks->addAction(aclBookmarks[static_cast<size_t>(i)]);
    mnuBtnJumpToBookmarks->addAction(aclBookmarks[static_cast<size_t>(10 + i)]);
  }

  // The settings read later overwrite these; until then the buttons show the defaults.
  SetNavigatorAutomatic(FNavigatorAutomatic);
  SetNavigatorTimeDiff(FNavigatorTimeDiff);
  SetNavigatorMsgType(FNavigatorMsgType);
  SetNavigatorMsgContent(FNavigatorMsgContent);
}

void TZTNavigator::FillSearchMenu(QMenu* menu) {
  menu->addAction(Act("actFind"));
  menu->addAction(Act("actFindNext"));
  menu->addAction(Act("actJumpToMsg"));
  menu->addSeparator();
  // Own copies of the bookmark submenus: a QMenu shown inside another keeps that parent.
  QMenu* toggles = menu->addMenu(QStringLiteral("Toggle &Bookmarks"));
  toggles->setObjectName(QStringLiteral("mnuToggleBookmarks"));
  QMenu* jumps = menu->addMenu(QStringLiteral("&Jump to Bookmarks"));
  jumps->setObjectName(QStringLiteral("mnuJumpToBookmarks"));
  for (int i = 0; i < 10; ++i) {
    toggles->addAction(aclBookmarks[static_cast<size_t>(i)]);
    jumps->addAction(aclBookmarks[static_cast<size_t>(10 + i)]);
  }
  menu->addAction(Act("actClearBookmarks"));
  menu->addSeparator();
  menu->addAction(Act("actSyncMsgMode"));
  menu->addAction(Act("actUpdateSyncMsg"));
  menu->addSeparator();
  menu->addAction(Act("actSelectNavMsg"));
  menu->addAction(Act("actNavFirst"));
  menu->addAction(Act("actNavPrevious"));
  menu->addAction(Act("actNavNext"));
  menu->addAction(Act("actNavLast"));
}

void TZTNavigator::AddNavigatorButtons(QToolBar* bar) {
  bar->addAction(Act("actNavFirst"));
  bar->addAction(Act("actNavPrevious"));
  bar->addWidget(btnNavMsgTypeSelect);
  bar->addWidget(btnNavMsgContentSelect);
  bar->addAction(Act("actNavNext"));
  bar->addAction(Act("actNavLast"));
}

void TZTNavigator::AddSearchButtons(QToolBar* bar) {
  bar->addAction(Act("actFind"));
  bar->addAction(Act("actFindNext"));
}

void TZTNavigator::AddBookmarkButtons(QToolBar* bar) {
  auto menuButton = [this, bar](const char* name, QMenu* menu, const QString& hint) {
    auto* b = new QToolButton(bar);
    b->setObjectName(QString::fromLatin1(name));
    b->setMenu(menu);
    b->setIcon(menu->icon());
    b->setToolTip(hint);
    b->setPopupMode(QToolButton::InstantPopup);
    b->setAutoRaise(true);
    bar->addWidget(b);
  };
  menuButton("btnToggleBookmarks", mnuBtnToggleBookmarks, QStringLiteral("Toggle Bookmarks"));
  menuButton("btnJumpToBookmarks", mnuBtnJumpToBookmarks, QStringLiteral("Jump to Bookmarks"));
  bar->addAction(Act("actClearBookmarks"));
}

void TZTNavigator::AddBookmarkMenus(QMenu* menu) {
  menu->addMenu(mnuBtnToggleBookmarks);
  menu->addMenu(mnuBtnJumpToBookmarks);
}

// ---------------------------------------------------------------------------------------------------
// The choice

void TZTNavigator::ShowChoiceOnButton(QToolButton* button, QAction* action, int32_t code, bool content) {
  if (!button) return;
  if (action) {
    button->setIcon(action->icon());
    button->setToolTip(QStringLiteral("Browse for ") + Plain(action->text()));
    return;
  }
  // A code that no command stands for still shows what is chosen.
  button->setIcon(QIcon(NavigatorGlyph(FMessageImages, code)));
  button->setToolTip(QStringLiteral("Browse for %1 %2").arg(content ? QStringLiteral("Message Content")
                                                                    : QStringLiteral("Message Type"))
                         .arg(code));
}

void TZTNavigator::SetNavigatorMsgType(int32_t code) {
  if (FNavigatorTimeDiff) {
    QAction* mode = Act("actNavTimeDiff");
    if (btnNavMsgTypeSelect && mode) {
      btnNavMsgTypeSelect->setIcon(mode->icon());
      btnNavMsgTypeSelect->setToolTip(Plain(mode->text()));
    }
    return;
  }
  FNavigatorMsgType = code;
  QAction* chosen = nullptr;
  for (QAction* a : aclNavMsgType) {
    a->setChecked(false);
    const int tag = a->data().toInt();
    const int32_t actionCode = tag < 0 ? -1 : NavMsgTypeChoices()[static_cast<size_t>(tag)].Code;
    if (actionCode == code || (actionCode == ztmReserved && code >= ztmReserved)) chosen = a;
  }
  if (chosen) chosen->setChecked(true);
  ShowChoiceOnButton(btnNavMsgTypeSelect, chosen, code, false);
}

void TZTNavigator::SetNavigatorMsgContent(int32_t code) {
  FNavigatorMsgContent = code;
  QAction* chosen = nullptr;
  for (QAction* a : aclNavMsgContent) {
    a->setChecked(false);
    const int tag = a->data().toInt();
    const int32_t actionCode = tag < 0 ? -1 : NavMsgContentChoices()[static_cast<size_t>(tag)].Code;
    if (actionCode == code) chosen = a;
  }
  if (chosen) chosen->setChecked(true);
  ShowChoiceOnButton(btnNavMsgContentSelect, chosen, code, true);
}

void TZTNavigator::SetNavigatorAutomatic(bool on) {
  FNavigatorAutomatic = on;
  if (QAction* a = Act("actNavAutomatic")) a->setChecked(on);
}

void TZTNavigator::SetTimeDiffNavThreshold(int32_t ms) {
  FTimeDiffNavThreshold = ms;
  if (QAction* a = Act("actNavTimeDiff"); a && FNavigatorTimeDiff) {
    a->setText(QStringLiteral("Time Difference (%1 ms)").arg(ms));
    if (btnNavMsgTypeSelect) btnNavMsgTypeSelect->setToolTip(a->text());
  }
}

void TZTNavigator::SetNavigatorTimeDiff(bool on) {
  FNavigatorTimeDiff = on;
  QAction* mode = Act("actNavTimeDiff");
  if (mode) {
    mode->setChecked(on);
    mode->setText(QStringLiteral("Time Difference (%1 ms)").arg(FTimeDiffNavThreshold));
  }
  // On, the type button shows the mode; off, the stored choice comes back on both buttons.
  SetNavigatorMsgType(FNavigatorMsgType);
  if (!on) SetNavigatorMsgContent(FNavigatorMsgContent);
  for (QAction* a : aclNavMsgType) a->setEnabled(!on);
  for (QAction* a : aclNavMsgContent) a->setEnabled(!on);
  UpdateNavigationCommands();
}

void TZTNavigator::TimeDiffCommand() {
  if (FNavigatorTimeDiff) {
    SetNavigatorTimeDiff(false);
  } else {
    TfrmTimeDiffNav dialog(&FWindow);
    dialog.SetThreshold(FTimeDiffNavThreshold);
    if (RunDialog(dialog) == QDialog::Accepted) {
      SetTimeDiffNavThreshold(dialog.Threshold());
      SetNavigatorTimeDiff(true);
    } else if (QAction* mode = Act("actNavTimeDiff")) {
      mode->setChecked(false);  // the trigger ticked it already
    }
  }
  FWindow.UpdateCommandStates();
}

void TZTNavigator::SelectNavMsg() {
  TfrmSelectNavMsg dialog(&FWindow);
  dialog.SetChoice(FNavigatorMsgType, FNavigatorMsgContent, FNavigatorAutomatic);
  if (RunDialog(dialog) != QDialog::Accepted) return;
  int32_t type = 0, content = 0;
  bool automatic = false;
  dialog.GetChoice(type, content, automatic);
  SetNavigatorAutomatic(automatic);
  SetNavigatorMsgType(type);
  SetNavigatorMsgContent(content);
  FWindow.UpdateCommandStates();
}

// ---------------------------------------------------------------------------------------------------
// Walks

void TZTNavigator::Navigate(int32_t direction) {
  IZTMessageViewList* list = FWindow.FActiveList;
  if (!list) return;
  if (FNavigatorTimeDiff) {
    list->JumpToTimeDiff(direction, FTimeDiffNavThreshold);
  } else {
    list->JumpToMessage(direction, FNavigatorMsgType, FNavigatorMsgContent);
  }
  FWindow.UpdateCommandStates();
}

void TZTNavigator::Find() {
  IZTMessageViewSearch* search = FWindow.FActiveSearch;
  if (!search) return;
  try {
    search->Find(FindText, FindRegEx, FindInDetails, FindFromCursor, FindForward);
  } catch (const EZTRegExError& e) {
    // The text is kept, so the dialog offers it again for correction.
    PromptService().ShowMessage(FWindow.nbkViews,
                                QStringLiteral("The search text is not a valid pattern:\n%1").arg(QString::fromUtf8(e.what())),
                                TZTPromptKind::Error);
  }
  FWindow.UpdateCommandStates();
}

void TZTNavigator::FindNext() {
  IZTMessageViewSearch* search = FWindow.FActiveSearch;
  if (!search) return;
  search->FindNext(false, FindText, FindInDetails, FindFromCursor, FindForward, FindRegEx);
  FWindow.UpdateCommandStates();
}

void TZTNavigator::JumpToMsg() {
  if (!FWindow.FActiveList || !FWindow.FActiveSearch) return;
  FWindow.FActiveList->JumpToMsgDlg();
  FWindow.UpdateCommandStates();
}

void TZTNavigator::ToggleBookmark(int32_t index) {
  if (FWindow.FActiveList) FWindow.FActiveList->ToggleBookmark(index);
  FWindow.UpdateCommandStates();
}

void TZTNavigator::JumpToBookmark(int32_t index) {
  if (FWindow.FActiveList) FWindow.FActiveList->JumpToBookmark(index);
  FWindow.UpdateCommandStates();
}

void TZTNavigator::ClearBookmarks() {
  IZTMessageViewList* list = FWindow.FActiveList;
  if (!list) return;
  if (ConfirmOnClearBookmarks &&
      !PromptService().AskYesNo(FWindow.nbkViews, QStringLiteral("Clear all bookmarks of this view?")))
    return;
  list->ClearBookmarks();
  FWindow.UpdateCommandStates();
}

// ---------------------------------------------------------------------------------------------------
// The synchronised message

void TZTNavigator::UpdateSyncMsg() {
  IZTMessageViewList* list = FWindow.FActiveList;
  IZTMessageView* view = FWindow.ActiveView();
  const int32_t focused = list ? list->GetFocusedMsgIndex() : -1;
  FSyncRecNo = FSyncMsgMode && view && focused >= 0 && focused < view->GetCount() ? view->GetMsgRecNo(focused) : -1;
  for (IZTMessageView* v : FWindow.FViews) v->SetSyncMsgRecNo(FSyncRecNo);
}

void TZTNavigator::StoreEmptied() {
  FSyncRecNo = -1;
  for (IZTMessageView* v : FWindow.FViews) v->SetSyncMsgRecNo(-1);
}

void TZTNavigator::FlipSyncMsgMode() {
  FSyncMsgMode = !FSyncMsgMode;
  UpdateSyncMsg();
  FWindow.UpdateCommandStates();
}

void TZTNavigator::ActiveViewChanged() {
  if (FWindow.FActiveList && FSyncRecNo >= 0) FWindow.FActiveList->JumpToMsgRecNo(FSyncRecNo);
}

void TZTNavigator::MessageSelected() {
  if (FNavigatorAutomatic) {
    const int32_t type = MessageSet.GetMsgType();
    const int32_t content = MessageSet.GetMsgContent();
    SetNavigatorMsgType(type);
    SetNavigatorMsgContent(content);
  }
  if (FSyncMsgMode && AltHeld()) UpdateSyncMsg();
}

// ---------------------------------------------------------------------------------------------------
// Command states

void TZTNavigator::EnableNextAndLast() {
  FNextLastEnabled = true;
  Act("actNavNext")->setEnabled(true);
  Act("actNavLast")->setEnabled(true);
}

void TZTNavigator::UpdateNavigationCommands() {
  // While the settings are read there is no view to ask yet.
  if (FWindow.FLoadingSettings || FWindow.FActions.empty()) return;
  bool hasNext = true, hasPrevious = true;
  if (!FNavigatorTimeDiff) {
    hasNext = hasPrevious = false;
    if (FWindow.FActiveList) FWindow.FActiveList->UpdateNavigation(FNavigatorMsgType, FNavigatorMsgContent, hasNext, hasPrevious);
  }
  Act("actNavFirst")->setEnabled(hasPrevious);
  Act("actNavPrevious")->setEnabled(hasPrevious);
  Act("actNavNext")->setEnabled(hasNext);
  Act("actNavLast")->setEnabled(hasNext);
  FNextLastEnabled = hasNext;
}

void TZTNavigator::UpdateCommandStates(bool hasRows, bool hasFocus) {
  IZTMessageViewList* list = FWindow.FActiveList;
  const bool search = FWindow.FActiveSearch != nullptr;
  const bool manyViews = FWindow.ViewCount() > 1;
  Act("actFind")->setEnabled(hasRows && search);
  Act("actFindNext")->setEnabled(hasRows && search);
  Act("actJumpToMsg")->setEnabled(hasRows && search && list);
  Act("actSyncMsgMode")->setEnabled((hasFocus || FSyncMsgMode) && manyViews);
  Act("actSyncMsgMode")->setChecked(FSyncMsgMode);
  Act("actUpdateSyncMsg")->setEnabled(FSyncMsgMode && manyViews);

  bool anyBookmark = false;
  for (int32_t i = 0; i < 10; ++i) {
    const bool set = hasFocus && list && list->GetBookmark(i) >= 0;
    anyBookmark = anyBookmark || set;
    QAction* toggle = aclBookmarks[static_cast<size_t>(i)];
    toggle->setEnabled(hasFocus && list);
    toggle->setChecked(set);
    aclBookmarks[static_cast<size_t>(10 + i)]->setEnabled(set);
  }
  Act("actClearBookmarks")->setEnabled(hasFocus && anyBookmark);
  UpdateNavigationCommands();
}

}  // namespace zentrail
