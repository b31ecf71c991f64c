// The view's small modal forms, driven from inside their own event loop.

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QRadioButton>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <functional>

#include "ZTMsgViewForms.h"
#include "ZTPromptService.h"
#include "ViewTestSupport.h"

namespace zentrail::test {
namespace {

// Runs action on the next modal dialog of type T once its event loop is up. A guard rejects any
// dialog still open after a bounded time, so a failing test can never hang.
template <typename T>
class TModalDriver {
 public:
  explicit TModalDriver(std::function<void(T&)> action) {
    QTimer::singleShot(0, &FContext, [this, action] {
      if (auto* dialog = qobject_cast<T*>(QApplication::activeModalWidget())) {
        ++Runs;
        action(*dialog);
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

class ViewForms : public TViewTest {};

TEST_F(ViewForms, EditorChangesOnlyTheTextAndOnlyOnAccept) {
  TFakeApplication app;
  TZTMessageView view(nullptr, &app);
  view.resize(500, 300);
  view.show();
  const int32_t rec = Store(ztmInfo, "line one\r\n\r\n\r\nline two\r\n", {&view});
  Store(ztmSeparator, "-", {&view});

  EXPECT_EQ(TfrmEditMessage::UniformLineEnds(QStringLiteral("a\r\n\r\nb\n\nc\r\n")), QStringLiteral("a\r\nb\r\nc"));

  {
    TModalDriver<TfrmEditMessage> driver([](TfrmEditMessage& form) {
      EXPECT_EQ(form.Editor()->toPlainText(), QStringLiteral("line one\nline two"));
      EXPECT_TRUE(form.Editor()->textCursor().hasSelection());
      QTest::keyClick(form.Editor(), Qt::Key_Escape);
    });
    view.EditMessage(0);
    EXPECT_EQ(driver.Runs, 1);
  }
  MessageSet.GotoRec(rec);
  EXPECT_EQ(MessageSet.GetMsgText(), "line one\r\n\r\n\r\nline two\r\n");
  EXPECT_EQ(app.DetailsUpdates, 0);

  {
    TModalDriver<TfrmEditMessage> driver([](TfrmEditMessage& form) {
      form.Editor()->setPlainText(QStringLiteral("changed\nsecond line"));
      QTest::keyClick(form.Editor(), Qt::Key_Return);  // accepts; no line break is typed
    });
    view.EditMessage(0);
    EXPECT_EQ(driver.Runs, 1);
  }
  MessageSet.GotoRec(rec);
  EXPECT_EQ(MessageSet.GetMsgText(), "changed\r\nsecond line");
  EXPECT_EQ(MessageSet.GetMsgType(), ztmInfo);
  EXPECT_EQ(app.DetailsUpdates, 1);

  // A separator isn't edited: no form opens.
  {
    TModalDriver<TfrmEditMessage> driver([](TfrmEditMessage& form) { form.reject(); });
    view.EditMessage(1);
    QCoreApplication::processEvents();
    EXPECT_EQ(driver.Runs, 0);
  }
}

TEST_F(ViewForms, JumpDialogTakesDigitsOnlyAndCountsRowsFromOne) {
  TZTRecordingPromptService prompts;
  TZTPromptServiceGuard guard(&prompts);
  TZTMessageView view;
  view.resize(400, 200);
  view.show();
  for (int i = 0; i < 20; ++i) Store(ztmInfo, "m" + std::to_string(i), {&view});

  auto jump = [&](const QString& typed) {
    TModalDriver<TfrmJumpToMsg> driver([&](TfrmJumpToMsg& form) {
      QTest::keyClicks(form.JumpTo()->lineEdit(), typed);
      QTest::keyClick(form.JumpTo()->lineEdit(), Qt::Key_Return);
      form.OkButton()->click();
    });
    view.JumpToMsgDlg();
    EXPECT_EQ(driver.Runs, 1);
  };
  jump(QStringLiteral("1x2"));
  EXPECT_EQ(view.GetFocusedMsgIndex(), 11);  // "12": the letter was dropped
  EXPECT_EQ(prompts.Beeps, 2);               // the letter and the Enter key
  jump(QStringLiteral("0"));
  EXPECT_EQ(view.GetFocusedMsgIndex(), 0);
  jump(QStringLiteral("500"));
  EXPECT_EQ(view.GetFocusedMsgIndex(), 19);
  EXPECT_TRUE(prompts.Prompts.empty());
  jump(QStringLiteral("99999999999"));
  ASSERT_EQ(prompts.Prompts.size(), 1u);
  EXPECT_EQ(prompts.Prompts.front().Text, QStringLiteral("'99999999999' is not a valid integer value."));
  EXPECT_EQ(view.GetFocusedMsgIndex(), 19);
}

TEST_F(ViewForms, FindDialogSearchesAndKeepsTheTextsUsedLast) {
  TZTRecordingPromptService prompts;
  TZTPromptServiceGuard guard(&prompts);
  FindTextHistory().clear();
  TZTMessageView view;
  view.resize(400, 200);
  view.show();
  for (int i = 0; i < 10; ++i) Store(ztmInfo, "order " + std::to_string(i), {&view});
  view.SetFocusedMsgIndex(6);

  std::string text = "old";
  TZTRegEx regex;
  bool inDetails = true, fromCursor = false, forward = true;
  {
    TModalDriver<TfrmFind> driver([](TfrmFind& form) {
      EXPECT_EQ(form.FindText()->currentText(), QStringLiteral("old"));
      EXPECT_TRUE(form.Forward()->isChecked());
      EXPECT_TRUE(form.EntireScope()->isChecked());
      EXPECT_TRUE(form.FindInDetails()->isChecked());
      form.FindText()->setCurrentText(QStringLiteral("ORDER [2-4]"));
      form.Backward()->setChecked(true);
      form.FromCursor()->setChecked(true);
      form.OkButton()->click();
    });
    EXPECT_TRUE(view.Find(text, regex, inDetails, fromCursor, forward));
    EXPECT_EQ(driver.Runs, 1);
  }
  EXPECT_EQ(text, "ORDER [2-4]");
  EXPECT_FALSE(forward);
  EXPECT_TRUE(fromCursor);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 4);  // backward from the cursor, case ignored
  view.FindNext(false, text, inDetails, fromCursor, forward, regex);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 3);
  EXPECT_EQ(FindTextHistory(), QStringList{QStringLiteral("ORDER [2-4]")});

  // Cancel changes nothing.
  {
    TModalDriver<TfrmFind> driver([](TfrmFind& form) {
      EXPECT_EQ(form.FindText()->count(), 1);
      form.FindText()->setCurrentText(QStringLiteral("other"));
      form.reject();
    });
    EXPECT_FALSE(view.Find(text, regex, inDetails, fromCursor, forward));
  }
  EXPECT_EQ(text, "ORDER [2-4]");
  EXPECT_EQ(view.GetFocusedMsgIndex(), 3);

  // A pattern that can't compile fails after the dialog closed.
  {
    TModalDriver<TfrmFind> driver([](TfrmFind& form) {
      form.FindText()->setCurrentText(QStringLiteral("(unclosed"));
      form.OkButton()->click();
    });
    EXPECT_THROW(view.Find(text, regex, inDetails, fromCursor, forward), EZTRegExError);
  }
  EXPECT_EQ(FindTextHistory().front(), QStringLiteral("(unclosed"));
  EXPECT_EQ(FindTextHistory().size(), 2);
}

}  // namespace
}  // namespace zentrail::test
