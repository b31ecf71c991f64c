// The view's small modal forms, driven from inside their own event loop.

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QRadioButton>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QRegularExpression>
#include <QTimer>
#include <functional>

#include "ZTMsgViewForms.h"
#include "ZTPromptService.h"
#include "ZTSettingsStore.h"
#include "TestEnvironment.h"
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
      if (form.isVisible()) form.OkButton()->click();
    });
    view.JumpToMsgDlg();
    EXPECT_EQ(driver.Runs, 1);
  };
  jump(QStringLiteral("1x2"));
  EXPECT_EQ(view.GetFocusedMsgIndex(), 11);  // "12": the letter was dropped
  EXPECT_EQ(prompts.Beeps, 1);               // the letter; Enter confirms
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
  // The history lives in the settings object and goes to its file at once.
  const auto iniPath = MakeTempDir("find") / "ZTLiveViewer.ini";
  TZTIniFile& ini = ViewerSettings();
  ini.Clear();
  ini.SetFileName(iniPath.string());
  ini.WriteString("Position", "Left", "99");  // written to memory before: reaches the disk with the history
  ini.WriteInteger("MRULists", "FindText_Count", 4);
  ini.WriteString("MRULists", "FindText_Item0", "alpha");
  ini.WriteString("MRULists", "FindText_Item1", "");
  ini.WriteString("MRULists", "FindText_Item2", "alpha");
  ini.WriteString("MRULists", "FindText_Item3", "beta");
  ini.WriteString("MRULists", "FindText_Item4", "beyond the count");
  EXPECT_EQ(ReadFindTextHistory(), (QStringList{QStringLiteral("alpha"), QStringLiteral("beta")}));

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
      EXPECT_EQ(form.FindText()->count(), 2);
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
  view.FindNext(false, text, inDetails, fromCursor, forward, regex);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 2);
  view.FindNext(false, text, inDetails, fromCursor, forward, regex);  // no wrap at the top
  EXPECT_EQ(view.GetFocusedMsgIndex(), 2);
  ASSERT_EQ(prompts.Prompts.size(), 1u);
  EXPECT_EQ(prompts.Prompts.back().Text, QStringLiteral("Search string 'ORDER [2-4]' not found."));

  // On disk at once: the new text on top, keys above the count gone, other sections as in memory.
  TZTIniFile disk(iniPath.string());
  EXPECT_EQ(disk.ReadInteger("MRULists", "FindText_Count", 0), 3);
  EXPECT_EQ(disk.ReadString("MRULists", "FindText_Item0", ""), "ORDER [2-4]");
  EXPECT_EQ(disk.ReadString("MRULists", "FindText_Item1", ""), "alpha");
  EXPECT_EQ(disk.ReadString("MRULists", "FindText_Item2", ""), "beta");
  EXPECT_FALSE(disk.ValueExists("MRULists", "FindText_Item3"));
  EXPECT_FALSE(disk.ValueExists("MRULists", "FindText_Item4"));
  EXPECT_EQ(disk.ReadString("Position", "Left", ""), "99");

  // Cancel changes nothing.
  {
    TModalDriver<TfrmFind> driver([](TfrmFind& form) {
      EXPECT_EQ(form.FindText()->itemText(0), QStringLiteral("ORDER [2-4]"));
      form.FindText()->setCurrentText(QStringLiteral("other"));
      form.reject();
    });
    EXPECT_FALSE(view.Find(text, regex, inDetails, fromCursor, forward));
  }
  EXPECT_EQ(text, "ORDER [2-4]");
  EXPECT_EQ(view.GetFocusedMsgIndex(), 2);
  EXPECT_EQ(ReadFindTextHistory().size(), 3);

  // A pattern that can't compile fails after the dialog closed and leaves nothing compiled, so a
  // repeat can't search for the previous text under the new one's name.
  {
    TModalDriver<TfrmFind> driver([](TfrmFind& form) {
      form.FindText()->setCurrentText(QStringLiteral("(unclosed"));
      form.OkButton()->click();
    });
    EXPECT_THROW(view.Find(text, regex, inDetails, fromCursor, forward), EZTRegExError);
  }
  EXPECT_FALSE(regex.IsCompiled());
  EXPECT_EQ(ReadFindTextHistory().front(), QStringLiteral("(unclosed"));

  // Storing cuts to 20; a used text moves up instead of standing twice.
  QStringList many;
  for (int i = 0; i < 25; ++i) many << QStringLiteral("t%1").arg(i);
  QString error;
  ASSERT_TRUE(StoreFindTextHistory(PushFindText(many, QStringLiteral("T7")), error)) << error.toStdString();
  const QStringList stored = ReadFindTextHistory();
  ASSERT_EQ(stored.size(), ztFindHistoryMax);
  EXPECT_EQ(stored.front(), QStringLiteral("T7"));
  EXPECT_EQ(stored.filter(QRegularExpression(QStringLiteral("^t7$"), QRegularExpression::CaseInsensitiveOption)).size(), 1);
  EXPECT_EQ(stored.back(), QStringLiteral("t19"));
  TZTIniFile disk2(iniPath.string());
  EXPECT_EQ(disk2.ReadInteger("MRULists", "FindText_Count", 0), 20);

  // A file that can't be written is said, and the search still runs.
  ini.SetFileName((iniPath.parent_path() / "missing" / "folder" / "x.ini").string());
  {
    TModalDriver<TfrmFind> driver([](TfrmFind& form) {
      form.FindText()->setCurrentText(QStringLiteral("order 9"));
      form.Forward()->setChecked(true);
      form.OkButton()->click();
    });
    EXPECT_TRUE(view.Find(text, regex, inDetails, fromCursor, forward));
  }
  EXPECT_EQ(view.GetFocusedMsgIndex(), 9);
  ASSERT_EQ(prompts.Prompts.size(), 2u);
  EXPECT_EQ(prompts.Prompts.back().Kind, TZTPromptKind::Warning);
  ini.Clear();
  ini.SetFileName(std::string());
}

}  // namespace
}  // namespace zentrail::test
