// Editing from the main window: notes and check points made by the user, the editor over a row,
// deleting and cropping rows in one view, the question before a clear, and copying rows out.
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>

#include "ShellFixture.h"
#include "ZTEditForms.h"
#include "ZTMsgViewForms.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

// Acts on the next modal editor once its loop runs; rejects whatever is still open after a while,
// so that a failing test never hangs.
class TEditorDriver {
 public:
  explicit TEditorDriver(std::function<void(TfrmEditMessage&)> action) {
    QTimer::singleShot(0, &FContext, [this, action] {
      if (auto* form = qobject_cast<TfrmEditMessage*>(QApplication::activeModalWidget())) {
        ++Runs;
        action(*form);
      }
    });
    FGuard.setSingleShot(true);
    QObject::connect(&FGuard, &QTimer::timeout, [] {
      if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) dialog->reject();
    });
    FGuard.start(5000);
  }
  int Runs = 0;

 private:
  QObject FContext;
  QTimer FGuard;
};

class EditingTest : public ShellFixture {
 protected:
  IZTMessageViewList& List(IZTMessageView& view) { return *dynamic_cast<IZTMessageViewList*>(&view); }
  std::string RowText(IZTMessageView& view, int32_t row) {
    MessageSet.GotoRec(view.GetMsgRecNo(row));
    return std::string(MessageSet.GetMsgText());
  }
};

}  // namespace

TEST_F(EditingTest, NotesAndCheckPointsPassTheActiveViewsNameFilters) {
  Viewer->show();
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "from 777", 777));
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "from 5", 5));
  TZTFilterCriteria criteria;
  criteria.CheckProcessID = true;
  criteria.ProcessID = 777;
  criteria.CheckAppName = true;
  criteria.AppName = "demo";
  IZTMessageView* view = Viewer->CreateView("pid 777", criteria, false, true, "Default");
  ASSERT_EQ(view->GetCount(), 1);

  // The note opens in the editor at once; what is written there is its text.
  {
    TEditorDriver driver([](TfrmEditMessage& form) {
      EXPECT_EQ(form.Editor()->toPlainText(), "New Note");
      form.Editor()->setPlainText("what I saw");
      form.AcceptButton()->click();
    });
    Viewer->Action("actAddNote")->trigger();
    EXPECT_EQ(driver.Runs, 1);
  }
  ASSERT_EQ(view->GetCount(), 2);
  EXPECT_EQ(List(*view).GetFocusedMsgIndex(), 1);
  MessageSet.GotoRec(view->GetMsgRecNo(1));
  EXPECT_EQ(MessageSet.GetMsgType(), ztmNote);
  EXPECT_EQ(MessageSet.GetMsgText(), "what I saw");
  EXPECT_EQ(MessageSet.GetProcessID(), 777u);
  EXPECT_EQ(MessageSet.GetAppName(), "demo");
  EXPECT_EQ(MessageSet.GetThreadName(), std::to_string(::gettid()));
  EXPECT_EQ(AllMessages().GetCount(), 3);

  // Check points count on over a clear of everything.
  Viewer->Action("actAddCheckPoint")->trigger();
  Viewer->AddCheckPoint();
  Viewer->ConfirmOnClear = false;
  Viewer->ConfirmAndClear(true);
  EXPECT_EQ(MessageSet.GetRecordCount(), 0);
  Viewer->AddCheckPoint();
  const auto stored = Stored();
  ASSERT_EQ(stored.size(), 1u);
  EXPECT_EQ(stored[0].first, ztmCheckPoint);
  const std::string app = QFileInfo(QCoreApplication::applicationFilePath()).completeBaseName().toStdString();
  EXPECT_EQ(stored[0].second, app + ": Check Point #3");
  EXPECT_EQ(view->GetCount(), 1);
  EXPECT_EQ(Viewer->CheckPointCount(), 3);

  // In a view that takes no notes, the last row opens instead; nothing is changed on Esc.
  TZTFilterCriteria errors;
  errors.CheckMsgTypes = true;
  errors.MsgTypeSet.set(ztmError);
  IZTMessageView* errorView = Viewer->CreateView("errors", errors, false, true, "Default");
  Viewer->ProcessMessage(MakeMessage(ztmError, "the last error"));
  {
    TEditorDriver driver([](TfrmEditMessage& form) {
      EXPECT_EQ(form.Editor()->toPlainText(), "the last error");
      form.RejectButton()->click();
    });
    Viewer->AddNote();
    EXPECT_EQ(driver.Runs, 1);
  }
  EXPECT_EQ(errorView->GetCount(), 1);
  EXPECT_EQ(Stored().back(), (std::pair<int32_t, std::string>{ztmNote, "New Note"}));
}

TEST_F(EditingTest, EditDeleteAndCropActOnOneViewAndItsCommandsFollowTheRows) {
  Viewer->show();
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "zero"));
  Viewer->ProcessMessage(MakeMessage(ztmEnterMethod, "Method"));
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "inside"));
  Viewer->ProcessMessage(MakeMessage(ztmExitMethod, "Method"));
  Viewer->AddSeparator(nullptr);
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "five"));
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "six"));
  TZTFilterCriteria all;
  IZTMessageView* second = Viewer->CreateView("second", all, false, true, "Default");
  ASSERT_EQ(second->GetCount(), 7);
  Viewer->SetActiveViewIndex(0);
  IZTMessageView& view = AllMessages();
  IZTMessageViewList& list = List(view);
  auto enabled = [this](const char* name) { return Viewer->Action(name)->isEnabled(); };

  // Edit Message: not on a separator; on a row, the editor.
  list.SetFocusedMsgIndex(4);
  Viewer->UpdateCommandStates();
  EXPECT_FALSE(enabled("actEditMessage"));
  list.SetFocusedMsgIndex(0);
  Viewer->UpdateCommandStates();
  EXPECT_TRUE(enabled("actEditMessage"));
  {
    TEditorDriver driver([](TfrmEditMessage& form) {
      form.Editor()->setPlainText("nought");
      form.AcceptButton()->click();
    });
    Viewer->Action("actEditMessage")->trigger();
    EXPECT_EQ(driver.Runs, 1);
  }
  EXPECT_EQ(RowText(*second, 0), "nought");

  // Delete: the collapsed method goes whole from this view; the store and the other view keep all.
  dynamic_cast<IZTMessageViewMethods&>(view).CollapseMethod(1);
  ASSERT_EQ(view.GetCount(), 5);
  list.SetFocusedMsgIndex(1);
  view.SetSelected(1, true);
  Viewer->UpdateCommandStates();
  EXPECT_TRUE(enabled("actDelete"));
  EXPECT_TRUE(enabled("actCropToSelection"));
  Viewer->Action("actDelete")->trigger();
  ASSERT_EQ(view.GetCount(), 4);
  EXPECT_EQ(RowText(view, 0), "nought");
  EXPECT_EQ(RowText(view, 1), "-");
  EXPECT_EQ(RowText(view, 2), "five");
  EXPECT_EQ(MessageSet.GetRecordCount(), 7);
  EXPECT_EQ(second->GetCount(), 7);

  // Crop: only the selection stays.
  view.SetSelected(2, true);
  view.SetSelected(3, true);
  list.SetFocusedMsgIndex(3);
  Viewer->Action("actCropToSelection")->trigger();
  ASSERT_EQ(view.GetCount(), 2);
  EXPECT_EQ(RowText(view, 0), "five");
  EXPECT_EQ(RowText(view, 1), "six");
  EXPECT_EQ(second->GetCount(), 7);

  // The clear question offers to widen a clear of the current view when there is more than one.
  TfrmConfirmClearView* shown = nullptr;
  FPrompts->DialogHandler = [&](QDialog& dialog) {
    shown = qobject_cast<TfrmConfirmClearView*>(&dialog);
    if (!shown) return int(QDialog::Rejected);
    EXPECT_EQ(shown->Question()->text(), "Clear All Messages from the Current View?");
    EXPECT_FALSE(shown->ClearAllBox()->isHidden());
    shown->ClearAllBox()->setChecked(true);
    return int(QDialog::Accepted);
  };
  Viewer->SetActiveViewIndex(1);
  Viewer->ConfirmAndClear(false);
  ASSERT_NE(shown, nullptr);
  EXPECT_EQ(MessageSet.GetRecordCount(), 0);
  EXPECT_EQ(view.GetCount(), 0);
  EXPECT_EQ(second->GetCount(), 0);
  Viewer->UpdateCommandStates();
  EXPECT_FALSE(enabled("actDelete"));
  EXPECT_FALSE(enabled("actEditMessage"));
  // A clear of all views asks without the box, through the plain question.
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "again"));
  FPrompts->Answers = {false};
  Viewer->ConfirmAndClear(true);
  EXPECT_EQ(FPrompts->Prompts.back().Text, "Clear All Messages from ALL Views?");
  EXPECT_EQ(MessageSet.GetRecordCount(), 1);
}

TEST_F(EditingTest, CopiedRowsCarryTextAndHtml) {
  Viewer->ProcessMessage(MakeMessage(ztmEnterMethod, "Outer"));
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "a < b & c"));
  Viewer->ProcessMessage(MakeMessage(ztmExitMethod, "Outer"));
  IZTMessageView& view = AllMessages();
  view.SetSelected(1, true);
  List(view).SetFocusedMsgIndex(1);
  Viewer->UpdateCommandStates();
  ASSERT_TRUE(Viewer->Action("actCopyMessageText")->isEnabled());
  Viewer->Action("actCopyMessageText")->trigger();
  const QMimeData* one = QApplication::clipboard()->mimeData();
  EXPECT_EQ(one->text(), "a < b & c");
  EXPECT_EQ(one->html(), "<pre>a &lt; b &amp; c</pre>");
  Viewer->Action("actSelectAll")->trigger();
  Viewer->UpdateCommandStates();
  Viewer->Action("actCopyMessageText")->trigger();
  const QMimeData* all = QApplication::clipboard()->mimeData();
  EXPECT_EQ(all->text(), "Outer\r\n  a < b & c\r\nOuter\r\n");
  EXPECT_TRUE(all->html().contains("\r\n  a &lt; b &amp; c\r\n"));
}
