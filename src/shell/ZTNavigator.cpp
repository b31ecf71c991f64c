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

void TZTNavigator::CreateImages() {
  FMessageImages = CreateMessageImageList(this);
  FBookmarkImages = CreateBookmarkImageList(this);
  FNavMsgTypeImages = new TZTImageList(16, 16, this);
  FNavMsgContentImages = new TZTImageList(16, 16, this);
  const QPixmap anyGlyph = ShellGlyph("navany").pixmap(16, 16);
  const int lastType = static_cast<int>(NavMsgTypeChoices().size()) - 1;
  for (const TZTNavChoice& choice : NavMsgTypeChoices())
    FNavMsgTypeImages->SetImage(choice.Tag < 0 ? lastType : choice.Tag,
                                choice.Code < 0 ? anyGlyph : NavigatorGlyph(FMessageImages, choice.Code));
  const int lastContent = static_cast<int>(NavMsgContentChoices().size()) - 1;
  for (const TZTNavChoice& choice : NavMsgContentChoices())
    FNavMsgContentImages->SetImage(choice.Tag < 0 ? lastContent : choice.Tag,
                                   choice.Code < 0 ? anyGlyph : NavigatorGlyph(FMessageImages, choice.Code));
}

void TZTNavigator::BindCommands(std::vector<QAction*> types, std::vector<QAction*> contents,
                                std::vector<QAction*> bookmarks, QMenu* typeMenu, QMenu* contentMenu) {
  aclNavMsgType = std::move(types);
  aclNavMsgContent = std::move(contents);
  aclBookmarks = std::move(bookmarks);
  mnuNavMsgType = typeMenu;
  mnuNavMsgContent = contentMenu;
  // The navigator's two buttons carry the current choice and open its list.
  auto navButton = [this](const char* name, QMenu* menu, const QString& accessible) {
    auto* b = new QToolButton(&FWindow);
    b->setObjectName(QString::fromLatin1(name));
    b->setMenu(menu);
    b->setPopupMode(QToolButton::InstantPopup);
    b->setAutoRaise(true);
    b->setIconSize(QSize(16, 16));
    b->setAccessibleName(accessible);
    return b;
  };
  btnNavMsgTypeSelect = navButton("btnNavMsgTypeSelect", mnuNavMsgType, QStringLiteral("Navigator Message Type"));
  btnNavMsgContentSelect =
      navButton("btnNavMsgContentSelect", mnuNavMsgContent, QStringLiteral("Navigator Message Content"));

  // The settings read later overwrite these; until then the buttons show the defaults.
  SetNavigatorAutomatic(FNavigatorAutomatic);
  SetNavigatorTimeDiff(FNavigatorTimeDiff);
  SetNavigatorMsgType(FNavigatorMsgType);
  SetNavigatorMsgContent(FNavigatorMsgContent);
}

void TZTNavigator::ChooseMsgType(int32_t code) {
  SetNavigatorMsgType(code);
  FWindow.UpdateCommandStates();
}

void TZTNavigator::ChooseMsgContent(int32_t code) {
  SetNavigatorMsgContent(code);
  FWindow.UpdateCommandStates();
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
  if (!FWindow.FLoadingSettings) FWindow.UpdateCommandStates();
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

void TZTNavigator::GatherFacts(TZTCommandFacts& facts) {
  IZTMessageViewList* list = FWindow.FActiveList;
  facts.SyncMode = FSyncMsgMode;
  facts.NavTimeDiff = FNavigatorTimeDiff;
  facts.AnyBookmark = false;
  for (int32_t i = 0; i < 10; ++i) {
    const bool set = facts.Focus && list && list->GetBookmark(i) >= 0;
    facts.Bookmarks[static_cast<size_t>(i)] = set;
    facts.AnyBookmark = facts.AnyBookmark || set;
  }
  // In time-difference mode every step is offered; otherwise the walks stop at the first match on
  // each side of the focus.
  bool hasNext = true, hasPrevious = true;
  if (!FNavigatorTimeDiff) {
    hasNext = hasPrevious = false;
    if (list) list->UpdateNavigation(FNavigatorMsgType, FNavigatorMsgContent, hasNext, hasPrevious);
  }
  facts.NavHasNext = hasNext;
  facts.NavHasPrevious = hasPrevious;
  FNextLastEnabled = hasNext;
}

}  // namespace zentrail
