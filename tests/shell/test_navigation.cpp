// The main window's search, navigator, bookmark and synchronised-message commands, and the refill
// of a view whose filter changed.
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <QTabBar>
#include <QMouseEvent>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

#include "ShellFixture.h"
#include "TestEnvironment.h"
#include "ZTNavForms.h"
#include "ZTNavigator.h"
#include "ZTViewFilterForm.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

// Acts on the next modal dialog once the loop shows it; the dialog runs as the user would see it.
void WhenModal(std::function<void(QWidget*)> act, int triesLeft = 500) {
  QTimer::singleShot(10, [act = std::move(act), triesLeft]() mutable {
    if (QWidget* modal = QApplication::activeModalWidget()) {
      act(modal);
    } else if (triesLeft > 0) {
      WhenModal(std::move(act), triesLeft - 1);
    }
  });
}

// Counts the progress steps that a refill makes.
class TCountingViewer : public TFrmViewer {
 public:
  using TFrmViewer::TFrmViewer;
  void StepProgress() override {
    ++Steps;
    TFrmViewer::StepProgress();
  }
  int Steps = 0;
};

}  // namespace

class NavigationTest : public ShellFixture {
 protected:
  QAction* Act(const char* name) {
    QAction* a = Viewer->Action(QString::fromLatin1(name));
    EXPECT_NE(a, nullptr) << name;
    return a;
  }
  TZTNavigator& Nav() { return Viewer->Navigator(); }
  IZTMessageView& View(int index) { return *Viewer->GetViewIntf(index); }
  TZTMessageView& Concrete(int index) { return dynamic_cast<TZTMessageView&>(View(index)); }
  int32_t FocusedRecNo(int index = 0) {
    int32_t row = View(index).GetFocusedMsgIndex();
    return row < 0 ? -1 : View(index).GetMsgRecNo(row);
  }
  void Focus(int32_t row, int index = 0) {
    View(index).SetFocusedMsgIndex(row);
    Viewer->UpdateMessageDetails();
  }
  int32_t RowOfRecord(int32_t recNo, int index = 0) {
    for (int32_t r = 0; r < View(index).GetCount(); ++r)
      if (View(index).GetMsgRecNo(r) == recNo) return r;
    return -1;
  }

  // Records 1..11: two methods, warnings inside and between them.
  void FillTwoMethods() {
    int32_t t = 36000000;
    auto send = [&](int32_t type, const char* text, int32_t gap = 10) {
      t += gap;
      Viewer->ProcessMessage(MakeMessage(type, text, 4242, t));
    };
    send(ztmInfo, "start");        // 1
    send(ztmEnterMethod, "A");     // 2
    send(ztmWarning, "w1 inside"); // 3
    send(ztmInfo, "inside A");     // 4
    send(ztmExitMethod, "A");      // 5
    send(ztmWarning, "w2", 5000);  // 6: five seconds after the one before
    send(ztmInfo, "x");            // 7
    send(ztmEnterMethod, "B");     // 8
    send(ztmWarning, "w3 inside"); // 9
    send(ztmExitMethod, "B");      // 10
    send(ztmInfo, "end", 2000);    // 11
    Viewer->UpdateCommandStates();
  }
};

TEST_F(NavigationTest, CommandTableListsAndTheChoiceOnTheButtons) {
  const auto& types = Nav().NavMsgTypeActions();
  ASSERT_EQ(types.size(), 23u);
  ASSERT_EQ(Nav().NavMsgContentActions().size(), 21u);
  ASSERT_EQ(Nav().BookmarkActions().size(), 20u);
  // Bookmark keys: the digit of the shortcut is the bookmark the command acts on.
  EXPECT_EQ(Act("actToggleBookmark7")->shortcut(), QKeySequence(Qt::SHIFT | Qt::CTRL | Qt::Key_7));
  EXPECT_EQ(Act("actJumpToBookmark7")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_7));
  EXPECT_EQ(Act("actJumpToBookmark7")->data().toInt(), 7);
  // The image lists that views and buttons draw from are there.
  for (int kind : {ztImlMsgIcons, ztImlNavMsgType, ztImlNavMsgContent, ztImlBookmarkIcons})
    EXPECT_NE(Viewer->GetImageList(kind), nullptr) << kind;

  // The defaults from a first run: check points and text.
  EXPECT_EQ(Nav().NavigatorMsgType(), ztmCheckPoint);
  EXPECT_TRUE(Act("actNavCheckPoints")->isChecked());
  EXPECT_EQ(Nav().NavMsgTypeButton()->toolTip(), "Browse for Check Points");
  EXPECT_EQ(Nav().NavMsgContentButton()->toolTip(), "Browse for Text");

  // A list command sets the code; exactly one of the list is checked.
  Act("actNavError")->trigger();
  EXPECT_EQ(Nav().NavigatorMsgType(), ztmError);
  EXPECT_EQ(Nav().NavMsgTypeButton()->toolTip(), "Browse for Error Messages");
  int checked = 0;
  for (QAction* a : types) checked += a->isChecked() ? 1 : 0;
  EXPECT_EQ(checked, 1);
  // Every custom type is the custom command's; a code without a command checks none.
  Nav().SetNavigatorMsgType(1000);
  EXPECT_EQ(Nav().NavigatorMsgType(), 1000);
  EXPECT_TRUE(Act("actNavCustom")->isChecked());
  Nav().SetNavigatorMsgType(ztmClear);
  for (QAction* a : types) EXPECT_FALSE(a->isChecked()) << a->objectName().toStdString();
  Act("actNavMatchAnyContent")->trigger();
  EXPECT_EQ(Nav().NavigatorMsgContent(), -1);
  EXPECT_EQ(Nav().NavMsgContentButton()->toolTip(), "Browse for Match Any Message Content");

  // Time-difference mode: the type button shows the mode, a type is not even stored, the lists
  // are off; leaving the mode brings the stored choice back.
  Nav().SetNavigatorMsgType(ztmWarning);
  Nav().SetTimeDiffNavThreshold(1500);
  Nav().SetNavigatorTimeDiff(true);
  EXPECT_TRUE(Act("actNavTimeDiff")->isChecked());
  EXPECT_EQ(Act("actNavTimeDiff")->text(), "Time Difference (1500 ms)");
  EXPECT_EQ(Nav().NavMsgTypeButton()->toolTip(), "Time Difference (1500 ms)");
  EXPECT_FALSE(Act("actNavWarning")->isEnabled());
  EXPECT_FALSE(Act("actNavText")->isEnabled());
  Nav().SetNavigatorMsgType(ztmError);
  EXPECT_EQ(Nav().NavigatorMsgType(), ztmWarning);
  Nav().SetNavigatorMsgContent(ztmBitmap);
  EXPECT_EQ(Nav().NavigatorMsgContent(), ztmBitmap) << "the content is kept in either mode";
  Act("actNavTimeDiff")->trigger();  // on: goes off at once, no dialog
  EXPECT_FALSE(Nav().NavigatorTimeDiff());
  EXPECT_FALSE(Act("actNavTimeDiff")->isChecked());
  EXPECT_TRUE(Act("actNavWarning")->isEnabled());
  EXPECT_TRUE(Act("actNavWarning")->isChecked());
  EXPECT_EQ(Nav().NavMsgTypeButton()->toolTip(), "Browse for Warning Messages");
  EXPECT_EQ(Nav().NavMsgContentButton()->toolTip(), "Browse for Bitmaps");

  // Off: the dialog asks the threshold; Cancel leaves the mode off, OK keeps the value and goes on.
  int asked = 0;
  Nav().RunDialog = [&](QDialog& dialog) {
    ++asked;
    auto& form = dynamic_cast<TfrmTimeDiffNav&>(dialog);
    EXPECT_EQ(form.Threshold(), 1500);
    EXPECT_EQ(form.ThresholdBox()->minimum(), 1000);
    EXPECT_EQ(form.ThresholdBox()->maximum(), 60000);
    form.SetThreshold(2500);
    return asked == 1 ? int(QDialog::Rejected) : int(QDialog::Accepted);
  };
  Act("actNavTimeDiff")->trigger();
  EXPECT_FALSE(Nav().NavigatorTimeDiff());
  EXPECT_FALSE(Act("actNavTimeDiff")->isChecked());
  EXPECT_EQ(Nav().TimeDiffNavThreshold(), 1500);
  Act("actNavTimeDiff")->trigger();
  EXPECT_TRUE(Nav().NavigatorTimeDiff());
  EXPECT_TRUE(Act("actNavTimeDiff")->isChecked());
  EXPECT_EQ(Nav().TimeDiffNavThreshold(), 2500);
  EXPECT_EQ(asked, 2);
}

TEST_F(NavigationTest, SelectNavigationMessageDialogGivesItsChoice) {
  TfrmSelectNavMsg form(Viewer.get());
  // A custom code presses the custom button; Match Any greys its group.
  form.SetChoice(1234, -1, true);
  EXPECT_TRUE(form.TypeButton(ztmReserved)->isChecked());
  EXPECT_TRUE(form.MatchAnyContent()->isChecked());
  EXPECT_FALSE(form.ContentButton(ztmText)->isEnabled());
  EXPECT_TRUE(form.TypeButton(ztmSeparator) && form.TypeButton(ztmInactiveSeparator) &&
              form.TypeButton(ztmResetSeparator) && form.TypeButton(ztmAppStartSeparator));
  int32_t type = 0, content = 0;
  bool automatic = false;
  form.GetChoice(type, content, automatic);
  EXPECT_EQ(type, ztmReserved);
  EXPECT_EQ(content, -1);
  EXPECT_TRUE(automatic);
  // One button per group: pressing another releases the first; none pressed gives 0 and 7.
  form.TypeButton(ztmError)->click();
  EXPECT_FALSE(form.TypeButton(ztmReserved)->isChecked());
  form.GetChoice(type, content, automatic);
  EXPECT_EQ(type, ztmError);
  form.TypeButton(ztmError)->click();
  form.MatchAnyContent()->setChecked(false);
  form.ContentButton(ztmText)->setChecked(false);
  form.GetChoice(type, content, automatic);
  EXPECT_EQ(type, ztmInfo);
  EXPECT_EQ(content, ztmText);

  // Through the command: automatic, type and content are applied on OK only.
  Nav().RunDialog = [](QDialog& dialog) {
    auto& f = dynamic_cast<TfrmSelectNavMsg&>(dialog);
    f.TypeButton(ztmException)->click();
    f.ContentButton(ztmXmlData)->click();
    f.Automatic()->setChecked(false);
    return int(QDialog::Accepted);
  };
  Act("actSelectNavMsg")->trigger();
  EXPECT_EQ(Nav().NavigatorMsgType(), ztmException);
  EXPECT_EQ(Nav().NavigatorMsgContent(), ztmXmlData);
  EXPECT_FALSE(Nav().NavigatorAutomatic());
  EXPECT_FALSE(Act("actNavAutomatic")->isChecked());
  Nav().RunDialog = [](QDialog& dialog) {
    dynamic_cast<TfrmSelectNavMsg&>(dialog).MatchAnyType()->setChecked(true);
    return int(QDialog::Rejected);
  };
  Act("actSelectNavMsg")->trigger();
  EXPECT_EQ(Nav().NavigatorMsgType(), ztmException);

  // A look at the dialog as the user gets it.
  form.SetChoice(ztmWarning, ztmText, true);
  form.show();
  QImage shot = form.grab().toImage();
  EXPECT_FALSE(shot.isNull());
  QByteArray dir = qgetenv("ZENTRAIL_SCREENSHOT_DIR");
  shot.save(dir.isEmpty() ? QString::fromStdString((TempRoot() / "select-nav-msg.png").string())
                          : QDir(QString::fromUtf8(dir)).filePath("select-nav-msg.png"));
}

TEST_F(NavigationTest, NavigatorStepsAndEnablesOverCollapsedMethods) {
  // Nothing to walk: all four off.
  Viewer->UpdateCommandStates();
  for (const char* n : {"actNavFirst", "actNavPrevious", "actNavNext", "actNavLast"}) EXPECT_FALSE(Act(n)->isEnabled());
  FillTwoMethods();
  Nav().SetNavigatorAutomatic(false);
  Act("actNavWarning")->trigger();
  Focus(0);
  EXPECT_TRUE(Act("actNavNext")->isEnabled());
  EXPECT_FALSE(Act("actNavPrevious")->isEnabled());
  Act("actNavNext")->trigger();
  EXPECT_EQ(FocusedRecNo(), 3);
  Act("actNavLast")->trigger();
  EXPECT_EQ(FocusedRecNo(), 9);
  EXPECT_FALSE(Act("actNavNext")->isEnabled());
  EXPECT_TRUE(Act("actNavFirst")->isEnabled());
  Act("actNavPrevious")->trigger();
  EXPECT_EQ(FocusedRecNo(), 6);

  // With method A collapsed its warning has no row: from w2 there is nothing before.
  Concrete(0).CollapseMethod(1);
  ASSERT_TRUE(Concrete(0).IsCollapsed(1));
  Focus(RowOfRecord(6));
  EXPECT_FALSE(Act("actNavPrevious")->isEnabled());
  Act("actNavFirst")->trigger();
  EXPECT_EQ(FocusedRecNo(), 6) << "collapsed content is not visited";
  Concrete(0).ExpandMethod(1);
  Focus(RowOfRecord(6));
  EXPECT_TRUE(Act("actNavPrevious")->isEnabled());
  Act("actNavFirst")->trigger();
  EXPECT_EQ(FocusedRecNo(), 3);

  // Time-difference mode steps over the pauses, whatever the type.
  Nav().SetTimeDiffNavThreshold(1000);
  Nav().SetNavigatorTimeDiff(true);
  Focus(0);
  for (const char* n : {"actNavFirst", "actNavPrevious", "actNavNext", "actNavLast"}) EXPECT_TRUE(Act(n)->isEnabled());
  Act("actNavNext")->trigger();
  EXPECT_EQ(FocusedRecNo(), 6);
  Act("actNavNext")->trigger();
  EXPECT_EQ(FocusedRecNo(), 11);
  Nav().SetNavigatorTimeDiff(false);

  // Automatic mode follows the selected message; the live road enables next and last at once
  // when a message of exactly that kind arrives, without a walk.
  Nav().SetNavigatorAutomatic(true);
  Focus(RowOfRecord(8));  // Enter B
  EXPECT_EQ(Nav().NavigatorMsgType(), ztmEnterMethod);
  EXPECT_TRUE(Act("actNavEnterMethod")->isChecked());
  Focus(View(0).GetCount() - 1);
  EXPECT_EQ(Nav().NavigatorMsgType(), ztmInfo);
  EXPECT_FALSE(Act("actNavNext")->isEnabled());
  Viewer->ProcessMessage(MakeMessage(ztmWarning, "not the chosen type"));
  EXPECT_FALSE(Act("actNavNext")->isEnabled());
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "the chosen type"));
  EXPECT_TRUE(Act("actNavNext")->isEnabled());
  EXPECT_TRUE(Act("actNavLast")->isEnabled());
}

TEST_F(NavigationTest, BookmarksFollowTheirRecordsThroughCollapseAndDelete) {
  FillTwoMethods();
  // Without a focused row all twenty bookmark commands are off.
  for (QAction* a : Nav().BookmarkActions()) EXPECT_FALSE(a->isEnabled()) << a->objectName().toStdString();
  EXPECT_FALSE(Act("actClearBookmarks")->isEnabled());

  Focus(RowOfRecord(3));
  Act("actToggleBookmark4")->trigger();
  EXPECT_EQ(View(0).GetBookmark(4), 3);
  EXPECT_TRUE(Act("actToggleBookmark4")->isChecked());
  EXPECT_TRUE(Act("actJumpToBookmark4")->isEnabled());
  EXPECT_FALSE(Act("actJumpToBookmark5")->isEnabled());
  EXPECT_TRUE(Act("actClearBookmarks")->isEnabled());
  Focus(RowOfRecord(9));
  Act("actToggleBookmark5")->trigger();

  // The method that holds the mark is collapsed: the jump opens it and lands on the record.
  Concrete(0).CollapseMethod(1);
  Focus(View(0).GetCount() - 1);
  ASSERT_EQ(RowOfRecord(3), -1);
  Act("actJumpToBookmark4")->trigger();
  EXPECT_EQ(FocusedRecNo(), 3);
  EXPECT_FALSE(Concrete(0).IsCollapsed(1));

  // The marked row deleted from the view: the jump goes to the next later row.
  Focus(RowOfRecord(9));
  Concrete(0).RemoveAllSelections();
  View(0).SetSelected(RowOfRecord(9), true);
  View(0).DeleteSelection();
  ASSERT_EQ(RowOfRecord(9), -1);
  Focus(0);
  Act("actJumpToBookmark5")->trigger();
  EXPECT_EQ(FocusedRecNo(), 10);

  // Toggling on the marked record clears it.
  Act("actJumpToBookmark4")->trigger();
  Act("actToggleBookmark4")->trigger();
  EXPECT_EQ(View(0).GetBookmark(4), -1);
  EXPECT_FALSE(Act("actJumpToBookmark4")->isEnabled());

  // Clearing asks first while the setting says so; No keeps the marks.
  FPrompts->Answers = {false};
  Act("actClearBookmarks")->trigger();
  ASSERT_EQ(FPrompts->Prompts.size(), 1u);
  EXPECT_TRUE(FPrompts->Prompts.back().Question);
  EXPECT_EQ(View(0).GetBookmark(5), 9);
  FPrompts->Answers = {true};
  Act("actClearBookmarks")->trigger();
  EXPECT_EQ(View(0).GetBookmark(5), -1);
  EXPECT_FALSE(Act("actClearBookmarks")->isEnabled());
  Act("actToggleBookmark1")->trigger();
  Nav().ConfirmOnClearBookmarks = false;
  FPrompts->Prompts.clear();
  Act("actClearBookmarks")->trigger();
  EXPECT_TRUE(FPrompts->Prompts.empty());
  EXPECT_EQ(View(0).GetBookmark(1), -1);
}

TEST_F(NavigationTest, FindRepeatsStopsAndReportsThroughThePromptService) {
  FillTwoMethods();
  EXPECT_TRUE(Act("actFind")->isEnabled());
  Concrete(0).CollapseMethod(RowOfRecord(8));
  Focus(0);
  // The dialog takes a pattern, case ignored, and finds the first match from the top.
  WhenModal([](QWidget* modal) {
    auto* combo = modal->findChild<QComboBox*>();
    ASSERT_NE(combo, nullptr);
    combo->setCurrentText(QStringLiteral("W\\d INSIDE"));
    QMetaObject::invokeMethod(modal, "accept");
  });
  Act("actFind")->trigger();
  EXPECT_EQ(Nav().FindText, "W\\d INSIDE");
  EXPECT_EQ(FocusedRecNo(), 3);
  // F3 goes on through the collapsed method B, which opens.
  Act("actFindNext")->trigger();
  EXPECT_EQ(FocusedRecNo(), 9);
  EXPECT_FALSE(Concrete(0).IsCollapsed(RowOfRecord(8)));
  EXPECT_TRUE(FPrompts->Prompts.empty());
  // No further match: the user is told and the focus stays; the search does not wrap.
  Act("actFindNext")->trigger();
  ASSERT_EQ(FPrompts->Prompts.size(), 1u);
  EXPECT_EQ(FPrompts->Prompts.back().Text, "Search string 'W\\d INSIDE' not found.");
  EXPECT_EQ(FocusedRecNo(), 9);

  // A search that starts from the last row going on forward can match that row again.
  Nav().FindText = "end";
  Nav().FindRegEx.Compile("end");
  Focus(View(0).GetCount() - 1);
  Act("actFindNext")->trigger();
  EXPECT_EQ(FocusedRecNo(), 11);
  EXPECT_EQ(FPrompts->Prompts.size(), 1u);

  // A text that isn't a pattern is a clear error, not an escape into the event loop.
  WhenModal([](QWidget* modal) {
    modal->findChild<QComboBox*>()->setCurrentText(QStringLiteral("(unclosed"));
    QMetaObject::invokeMethod(modal, "accept");
  });
  Act("actFind")->trigger();
  ASSERT_EQ(FPrompts->Prompts.size(), 2u);
  EXPECT_EQ(FPrompts->Prompts.back().Kind, TZTPromptKind::Error);
  EXPECT_TRUE(FPrompts->Prompts.back().Text.contains("not a valid pattern"));

  // The message number in the status bar opens the jump dialog; the number counts rows from 1.
  Viewer->UpdateCommandStates();
  WhenModal([](QWidget* modal) {
    modal->findChild<QComboBox*>()->setCurrentText(QStringLiteral("2"));
    QMetaObject::invokeMethod(modal, "accept");
  });
  auto* msgNum = Viewer->findChild<QLabel*>(QStringLiteral("stsMsgNum"));
  ASSERT_NE(msgNum, nullptr);
  for (QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
    QMouseEvent click(type, QPointF(3, 3), msgNum->mapToGlobal(QPointF(3, 3)), Qt::LeftButton,
                      type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(msgNum, &click);
  }
  EXPECT_EQ(View(0).GetFocusedMsgIndex(), 1);
}

TEST_F(NavigationTest, SynchronisedMessageFollowsTheUserAcrossViews) {
  FillTwoMethods();
  Focus(RowOfRecord(7));
  EXPECT_FALSE(Act("actSyncMsgMode")->isEnabled()) << "one view: nothing to synchronise";
  TZTFilterCriteria warnings;
  warnings.CheckMsgTypes = true;
  warnings.MsgTypeSet.set(ztmWarning);
  Viewer->CreateView("Warnings", warnings, false, false, "Default");
  Viewer->PopulateView(&View(1));
  TZTFilterCriteria early;
  early.CheckMessageText = true;
  early.MessageText = "^(start|A)$";
  Viewer->CreateView("Early", early, false, false, "Default");
  Viewer->PopulateView(&View(2));
  ASSERT_EQ(View(1).GetCount(), 3);
  ASSERT_EQ(View(2).GetCount(), 2) << "start and method A, empty here and so collapsed";
  Viewer->UpdateCommandStates();
  EXPECT_TRUE(Act("actSyncMsgMode")->isEnabled());
  EXPECT_FALSE(Act("actUpdateSyncMsg")->isEnabled());

  Act("actSyncMsgMode")->trigger();
  EXPECT_TRUE(Nav().SyncMsgMode());
  EXPECT_EQ(Nav().SyncRecNo(), 7);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Concrete(i).SyncMsgRecNo(), 7) << i;
  EXPECT_TRUE(Act("actUpdateSyncMsg")->isEnabled());

  TZTFilterCriteria all;
  Viewer->CreateView("Later", all, false, false, "Default");
  EXPECT_EQ(Concrete(3).SyncMsgRecNo(), 7) << "a view made later marks the same message";

  // The warnings view holds no record 7: the next later one it holds is chosen.
  Viewer->SetActiveViewIndex(1);
  EXPECT_EQ(FocusedRecNo(1), 9);
  // A view that holds only earlier messages keeps its focus.
  View(2).SetFocusedMsgIndex(0);
  Viewer->SetActiveViewIndex(2);
  EXPECT_EQ(FocusedRecNo(2), 1);

  // A new selection moves the mark only with Alt held, or through the command.
  Nav().AltHeld = [] { return false; };
  Viewer->SetActiveViewIndex(0);
  Focus(RowOfRecord(3));
  EXPECT_EQ(Nav().SyncRecNo(), 7);
  Nav().AltHeld = [] { return true; };
  Focus(RowOfRecord(4));
  EXPECT_EQ(Nav().SyncRecNo(), 4);
  Focus(RowOfRecord(2));
  Nav().AltHeld = [] { return false; };
  Act("actUpdateSyncMsg")->trigger();
  EXPECT_EQ(Nav().SyncRecNo(), 2);
  // Emptying the store forgets the record: its number will be a different message soon.
  Nav().AltHeld = [] { return true; };
  Focus(RowOfRecord(5));
  ASSERT_EQ(Concrete(1).SyncMsgRecNo(), 5);
  Viewer->ClearMessages(true);
  EXPECT_EQ(Nav().SyncRecNo(), -1);
  EXPECT_EQ(Concrete(1).SyncMsgRecNo(), -1);
  Act("actSyncMsgMode")->trigger();
  EXPECT_FALSE(Nav().SyncMsgMode());
}

TEST_F(NavigationTest, ModifyViewRefillsInOneBracketAndRefusesABadPattern) {
  Viewer.reset();
  auto viewer = std::make_unique<TCountingViewer>();
  for (int i = 0; i < 1000; ++i)
    viewer->ProcessMessage(MakeMessage(i % 10 == 0 ? ztmError : ztmInfo, "line " + std::to_string(i)));
  TZTFilterCriteria all;
  viewer->CreateView("Second", all, false, true, "Default");
  IZTMessageView& second = *viewer->GetViewIntf(1);
  IZTMessageView& first = *viewer->GetViewIntf(0);
  ASSERT_EQ(second.GetCount(), 1000);
  first.SetFocusedMsgIndex(500);
  first.SetSelected(500, true);
  second.SetFocusedMsgIndex(20);
  dynamic_cast<IZTMessageViewList&>(second).ToggleBookmark(0);

  TZTFilterCriteria errors;
  errors.CheckMsgTypes = true;
  errors.MsgTypeSet.set(ztmError);
  viewer->Steps = 0;
  ASSERT_TRUE(viewer->ModifyView(&second, "Errors", errors));
  EXPECT_EQ(second.GetName(), "Errors");
  EXPECT_EQ(viewer->findChild<QTabBar*>("tabViews")->tabText(1), "Errors");
  EXPECT_EQ(second.GetCount(), 100);
  EXPECT_EQ(second.GetBookmark(0), -1) << "emptied before the refill";
  EXPECT_EQ(viewer->Steps, 100) << "the bar moves in hundredths";
  EXPECT_EQ(viewer->findChild<QProgressBar*>("pbrComplete")->value(), 0);
  EXPECT_THROW(second.EndUpdate(), std::exception) << "the update bracket was closed";
  // Only the modified view was refilled.
  EXPECT_EQ(first.GetCount(), 1000);
  EXPECT_EQ(first.GetFocusedMsgIndex(), 500);
  EXPECT_TRUE(first.GetSelected(500));

  // A pattern that does not compile: the user is told, name, filter and rows stay.
  TZTRecordingPromptService prompts;
  TZTPromptServiceGuard guard(&prompts);
  TZTFilterCriteria broken;
  broken.CheckMessageText = true;
  broken.MessageText = "line (";
  EXPECT_FALSE(viewer->ModifyView(&second, "Broken", broken));
  ASSERT_EQ(prompts.Prompts.size(), 1u);
  EXPECT_EQ(prompts.Prompts.front().Kind, TZTPromptKind::Error);
  EXPECT_TRUE(prompts.Prompts.front().Text.contains("line ("));
  EXPECT_EQ(second.GetName(), "Errors");
  EXPECT_EQ(viewer->findChild<QTabBar*>("tabViews")->tabText(1), "Errors");
  EXPECT_EQ(second.GetCount(), 100);
  TZTFilterCriteria kept;
  second.GetFilterCriteria(kept);
  EXPECT_EQ(kept, errors);
  viewer->ProcessMessage(MakeMessage(ztmError, "new error"));
  EXPECT_EQ(second.GetCount(), 101) << "the old filter still takes live messages";

  // The command opens the filter dialog on the active additional view and refills on OK.
  viewer->SetActiveViewIndex(1);
  viewer->UpdateCommandStates();
  QAction* modify = viewer->Action("actViewModify");
  ASSERT_NE(modify, nullptr);
  EXPECT_TRUE(modify->isEnabled());
  viewer->Navigator().RunDialog = [](QDialog& dialog) {
    auto& form = dynamic_cast<TfrmViewFilter&>(dialog);
    EXPECT_EQ(form.windowTitle(), "Modify Current View");
    EXPECT_EQ(form.ViewName()->text(), "Errors");
    form.MsgTypeCheck()->setChecked(false);
    form.ViewName()->setText("Everything");
    return int(QDialog::Accepted);
  };
  viewer->Steps = 0;
  modify->trigger();
  EXPECT_EQ(second.GetName(), "Everything");
  EXPECT_EQ(second.GetCount(), 1001);
  EXPECT_EQ(viewer->Steps, 91) << "1,001 records in strides of 11 never run past the end of the bar";
  viewer->SetActiveViewIndex(0);
  viewer->UpdateCommandStates();
  EXPECT_FALSE(modify->isEnabled()) << "the fixed view is not modified";

  // A new view with such a pattern (a hand-edited project) still comes, and says why it shows nothing.
  prompts.Prompts.clear();
  IZTMessageView* created = viewer->CreateView("Bad", broken, false, true, "Default");
  ASSERT_NE(created, nullptr);
  EXPECT_EQ(viewer->ViewCount(), 3);
  EXPECT_EQ(created->GetCount(), 0);
  ASSERT_EQ(prompts.Prompts.size(), 1u);
  EXPECT_TRUE(prompts.Prompts.front().Text.contains("\"Bad\""));
}

TEST_F(NavigationTest, ScreenshotOfTheViewToolbarAndSearchMenu) {
  FillTwoMethods();
  Focus(RowOfRecord(3));
  Act("actToggleBookmark2")->trigger();
  Viewer->resize(1000, 420);
  Viewer->show();
  SpinUntil([] { return false; }, 200);
  // Every navigator, search and bookmark command sits on the view toolbar or its buttons.
  auto* bar = Viewer->findChild<QWidget*>("tbrView");
  ASSERT_NE(bar, nullptr);
  for (const char* name : {"actNavFirst", "actNavPrevious", "actNavNext", "actNavLast", "actFind", "actFindNext",
                           "actClearBookmarks", "actSyncMsgMode"}) {
    auto* button = bar->findChild<QToolButton*>(name);
    EXPECT_TRUE(button && button->defaultAction() == Act(name)) << name;
  }
  for (const char* name : {"btnNavMsgTypeSelect", "btnNavMsgContentSelect", "btnToggleBookmarks", "btnJumpToBookmarks"})
    EXPECT_NE(bar->findChild<QToolButton*>(name), nullptr) << name;
  QImage shot = Viewer->grab().toImage();
  ASSERT_FALSE(shot.isNull());
  QByteArray dir = qgetenv("ZENTRAIL_SCREENSHOT_DIR");
  EXPECT_TRUE(shot.save(dir.isEmpty() ? QString::fromStdString((TempRoot() / "navigation.png").string())
                                      : QDir(QString::fromUtf8(dir)).filePath("navigation.png")));
  // The toolbar's glyphs at twice their size, to judge them.
  QImage toolbar = bar->grab().toImage();
  toolbar = toolbar.scaled(toolbar.size() * 2, Qt::KeepAspectRatio, Qt::FastTransformation);
  EXPECT_TRUE(toolbar.save(dir.isEmpty() ? QString::fromStdString((TempRoot() / "view-toolbar.png").string())
                                         : QDir(QString::fromUtf8(dir)).filePath("view-toolbar.png")));
}
