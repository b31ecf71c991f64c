// The view filter dialog: filling from the store and the criteria, its control rules, the
// automatic name, the checks on OK, and the record it gives back.

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QToolButton>

#include "TestEnvironment.h"
#include "ZTPromptService.h"
#include "ZTMsgViewForms.h"
#include "ZTViewFilterForm.h"
#include "ViewTestSupport.h"

namespace zentrail::test {
namespace {

class ViewFilterForm : public TViewTest {
 protected:
  void StoreFrom(const std::string& app, const std::string& thread, uint32_t pid, const std::string& category,
                 const std::string& computer) {
    TZentrailMessage m;
    m.MsgText = "x";
    m.AppName = app;
    m.ThreadName = thread;
    m.ProcessID = pid;
    m.Category = category;
    m.ComputerName = computer;
    MessageSet.AppendMessage(m, FNextID++);
  }

  static QStringList Items(QComboBox* combo) {
    QStringList items;
    for (int i = 0; i < combo->count(); ++i) items << combo->itemText(i);
    return items;
  }

  static void Show(TfrmViewFilter& form) {
    form.show();
    form.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
  }
};

TEST_F(ViewFilterForm, OpensWithTheStoresValuesAndTheGivenCriteria) {
  StoreFrom("beta", "main", 10, "", "host");
  StoreFrom("Alpha", "worker", 9, "net", "host");
  StoreFrom("beta", "main", 10, "Net", "host");
  StoreFrom("alpha", "main", 100, "db", "other");
  MessageSet.GotoRec(2);

  TfrmViewFilter form(nullptr);
  EXPECT_EQ(form.windowTitle(), QStringLiteral("View Filter"));
  TZTFilterCriteria c;
  c.CheckThreadName = true;
  c.ThreadName = "worker";
  c.CheckMsgTypes = true;
  c.MsgTypeSet.set(ztmError);
  c.MsgTypeSet.set(ztmReserved);
  c.MsgContentSet.set(ztmBitmap);
  c.AppName = "unchecked but shown";
  form.SetCriteria(c, QStringLiteral("Thread=worker | MsgTypes=Errors,Custom,Bitmaps"));
  EXPECT_EQ(MessageSet.RecNo, 2);  // the walk over the store puts the cursor back

  // Sorted without regard to case, each value once, empty values left out; ids as decimal text.
  EXPECT_EQ(Items(form.AppNameCombo()), (QStringList{"Alpha", "alpha", "beta"}));
  EXPECT_EQ(Items(form.CategoryCombo()), (QStringList{"db", "Net", "net"}));
  EXPECT_EQ(Items(form.ComputerNameCombo()), (QStringList{"host", "other"}));
  EXPECT_EQ(Items(form.ProcessIDCombo()), (QStringList{"10", "100", "9"}));
  EXPECT_EQ(Items(form.ThreadNameCombo()), (QStringList{"main", "worker"}));

  // Controls follow their boxes; a process id of 0 shows as empty text.
  EXPECT_TRUE(form.ThreadNameCombo()->isEnabled());
  EXPECT_EQ(form.ThreadNameCombo()->currentText(), QStringLiteral("worker"));
  EXPECT_FALSE(form.AppNameCombo()->isEnabled());
  EXPECT_EQ(form.AppNameCombo()->currentText(), QStringLiteral("unchecked but shown"));
  EXPECT_FALSE(form.MessageTextEdit()->isEnabled());
  EXPECT_FALSE(form.MessageTextLabel()->isEnabled());
  EXPECT_EQ(form.ProcessIDCombo()->currentText(), QString());
  EXPECT_TRUE(form.TypeButton(ztmError, false)->isChecked());
  EXPECT_TRUE(form.TypeButton(ztmReserved, false)->isChecked());
  EXPECT_TRUE(form.TypeButton(ztmBitmap, true)->isChecked());
  EXPECT_FALSE(form.TypeButton(ztmWarning, false)->isChecked());
  EXPECT_EQ(form.TypeButton(ztmBitmap, true)->toolTip(), QStringLiteral("Bitmaps"));
  EXPECT_EQ(form.TypeButton(ztmBitmap, false), nullptr);
  // The name equals the automatic one, so Auto Name is on.
  EXPECT_TRUE(form.AutoName()->isChecked());

  // What the dialog gives back is what it was given.
  TZTFilterCriteria back;
  QString name;
  form.GetCriteria(back, name);
  EXPECT_EQ(back, c);
  EXPECT_EQ(name, QStringLiteral("Thread=worker | MsgTypes=Errors,Custom,Bitmaps"));

  // A name of the user's own keeps Auto Name off and stays through later changes.
  TfrmViewFilter own(nullptr);
  own.SetCriteria(c, QStringLiteral("Workers"));
  EXPECT_FALSE(own.AutoName()->isChecked());
  own.ThreadNameCombo()->setCurrentText(QStringLiteral("main"));
  EXPECT_EQ(own.ViewName()->text(), QStringLiteral("Workers"));

  // Every button of the panel: its code goes to its own set and nowhere else.
  TfrmViewFilter all(nullptr);
  TZTFilterCriteria none;
  none.CheckMsgTypes = true;
  all.SetCriteria(none, QStringLiteral("x"));
  for (const auto& def : TfrmViewFilter::TypeButtons()) {
    all.UnselectAllButton()->click();
    all.TypeButton(def.Code, def.Content)->click();
    all.GetCriteria(back, name);
    const TZTFilterMsgTypeSet& mine = def.Content ? back.MsgContentSet : back.MsgTypeSet;
    const TZTFilterMsgTypeSet& other = def.Content ? back.MsgTypeSet : back.MsgContentSet;
    EXPECT_TRUE(mine.test(static_cast<size_t>(def.Code)) && mine.count() == 1 && other.none()) << def.Name;
  }
  EXPECT_EQ(TfrmViewFilter::TypeButtons().size(), 38u);
}

TEST_F(ViewFilterForm, ControlRulesAndTheAutomaticName) {
  TZTRecordingPromptService prompts;
  TZTPromptServiceGuard guard(&prompts);
  StoreFrom("demo", "main", 77, "General", "host");
  TfrmViewFilter form(nullptr);
  form.SetCriteria(TZTFilterCriteria{}, QString());
  Show(form);
  // A new view: empty name, empty filter, so the automatic name is on and OK waits for a name.
  EXPECT_TRUE(form.AutoName()->isChecked());
  EXPECT_FALSE(form.OkButton()->isEnabled());

  // Proposals from the focused message fill texts but check nothing.
  form.SetProposals("General", "host", "demo", "77", "main", "a message text that is longer than forty characters");
  EXPECT_FALSE(form.AppNameCheck()->isChecked());
  EXPECT_EQ(form.ViewName()->text(), QString());

  // Checking a box enables its control, gives it the focus and refreshes the name.
  form.AppNameCheck()->click();
  EXPECT_TRUE(form.AppNameCombo()->isEnabled());
  EXPECT_TRUE(form.AppNameCombo()->hasFocus() || form.AppNameCombo()->lineEdit()->hasFocus());
  EXPECT_EQ(form.ViewName()->text(), QStringLiteral("demo"));
  EXPECT_TRUE(form.OkButton()->isEnabled());
  for (QCheckBox* box : {form.CategoryCheck(), form.ComputerNameCheck(), form.ProcessIDCheck(), form.ThreadNameCheck(),
                         form.MessageTextCheck(), form.MsgTypeCheck()})
    box->click();
  EXPECT_TRUE(form.MessageTextLabel()->isEnabled());
  EXPECT_EQ(form.ViewName()->text(),
            QStringLiteral("demo | General | host | PID=77 | Thread=main | Text=a message text that is longer than forty"));
  // Message types with nothing pressed add nothing; pressed ones add their words in table order.
  form.TypeButton(ztmBitmap, true)->click();
  form.TypeButton(ztmNote, false)->click();
  form.TypeButton(ztmInfo, false)->click();
  EXPECT_TRUE(form.ViewName()->text().endsWith(QStringLiteral(" | MsgTypes=Info,Notes,Bitmaps")));
  form.SelectAllButton()->click();
  for (const auto& def : TfrmViewFilter::TypeButtons()) EXPECT_TRUE(form.TypeButton(def.Code, def.Content)->isChecked());
  EXPECT_TRUE(form.ViewName()->text().endsWith(QStringLiteral("Custom,Text,StringLists,Objects,Collections,ComponentAsText,"
                                                              "Colors,Bitmaps,TextFiles,XmlData,Memory,MemoryStatus,Window,"
                                                              "Registry,SystemInfo,VersionInfo,StackTrace,CustomText,"
                                                              "CustomProperties,CustomTable,CustomHierarchy")));
  // Turning the box off releases every button.
  form.MsgTypeCheck()->click();
  EXPECT_FALSE(form.TypeButton(ztmInfo, false)->isChecked());
  EXPECT_FALSE(form.TypeButton(ztmInfo, false)->isEnabled());
  EXPECT_FALSE(form.SelectAllButton()->isEnabled());
  form.MsgTypeCheck()->click();
  EXPECT_FALSE(form.TypeButton(ztmInfo, false)->isChecked());

  // Typing in the name gives up the automatic name; a toggle click while the name has the focus doesn't.
  form.ViewName()->setFocus();
  form.TypeButton(ztmError, false)->click();
  EXPECT_TRUE(form.AutoName()->isChecked());
  EXPECT_TRUE(form.ViewName()->text().endsWith(QStringLiteral("MsgTypes=Errors")));
  QTest::keyClick(form.ViewName(), Qt::Key_End);
  QTest::keyClicks(form.ViewName(), QStringLiteral("!"));
  EXPECT_FALSE(form.AutoName()->isChecked());
  form.TypeButton(ztmWarning, false)->click();
  EXPECT_TRUE(form.ViewName()->text().endsWith(QStringLiteral("MsgTypes=Errors!")));
  // Auto Name turned on again rebuilds the name; turned off it hands the focus to the name.
  form.AutoName()->click();
  EXPECT_TRUE(form.ViewName()->text().endsWith(QStringLiteral("MsgTypes=Warnings,Errors")));
  form.AppNameCheck()->setFocus();
  form.AutoName()->click();
  EXPECT_TRUE(form.ViewName()->hasFocus());
  form.ViewName()->clear();
  EXPECT_FALSE(form.OkButton()->isEnabled());
  form.AutoName()->click();
  EXPECT_TRUE(form.OkButton()->isEnabled());

  // No Filter: all seven boxes off, their controls disabled, the name empty again.
  form.NoFilterButton()->click();
  for (QCheckBox* box : {form.AppNameCheck(), form.CategoryCheck(), form.ComputerNameCheck(), form.ProcessIDCheck(),
                         form.ThreadNameCheck(), form.MessageTextCheck(), form.MsgTypeCheck()})
    EXPECT_FALSE(box->isChecked()) << box->objectName().toStdString();
  EXPECT_FALSE(form.ThreadNameCombo()->isEnabled());
  EXPECT_EQ(form.ViewName()->text(), QString());

  // The fixed view's criteria can't be touched.
  form.DisableFilterCriteria();
  EXPECT_FALSE(form.Details()->isEnabled());
  EXPECT_TRUE(form.ViewName()->isEnabled());
  EXPECT_TRUE(prompts.Prompts.empty());
}

TEST_F(ViewFilterForm, OkNamesEveryEmptyCheckedFieldAndFocusesTheHighest) {
  TZTRecordingPromptService prompts;
  TZTPromptServiceGuard guard(&prompts);
  TfrmViewFilter form(nullptr);
  TZTFilterCriteria c;
  c.CheckCategory = true;
  c.CheckThreadName = true;
  c.CheckMessageText = true;
  c.CheckProcessID = true;
  c.CheckMsgTypes = true;  // nothing pressed isn't a failure
  form.SetCriteria(c, QStringLiteral("mine"));
  Show(form);
  form.OkButton()->click();
  ASSERT_EQ(prompts.Prompts.size(), 1u);
  EXPECT_EQ(prompts.Prompts.front().Text, QStringLiteral("Incomplete Filter:\rPlease specify a message sub-string.\r"
                                                         "Please specify a Thread Name or ID.\r"
                                                         "Please specify a Process ID.\rPlease specify a Category."));
  EXPECT_EQ(form.result(), 0);
  EXPECT_TRUE(form.isVisible());
  EXPECT_TRUE(form.CategoryCombo()->hasFocus() || form.CategoryCombo()->lineEdit()->hasFocus());

  form.CategoryCombo()->setCurrentText(QStringLiteral("net"));
  form.ThreadNameCombo()->setCurrentText(QStringLiteral("t1"));
  form.MessageTextEdit()->setText(QStringLiteral("x"));
  form.OkButton()->click();
  ASSERT_EQ(prompts.Prompts.size(), 2u);
  EXPECT_EQ(prompts.Prompts.back().Text, QStringLiteral("Incomplete Filter:\rPlease specify a Process ID."));
  EXPECT_TRUE(form.ProcessIDCombo()->hasFocus() || form.ProcessIDCombo()->lineEdit()->hasFocus());

  // A process id that isn't a number passes the dialog and fails when the record is read.
  form.ProcessIDCombo()->setCurrentText(QStringLiteral("12ab"));
  form.OkButton()->click();
  EXPECT_EQ(prompts.Prompts.size(), 2u);
  EXPECT_EQ(form.result(), QDialog::Accepted);
  TZTFilterCriteria back;
  QString name;
  try {
    form.GetCriteria(back, name);
    ADD_FAILURE() << "a non-numeric process id was read";
  } catch (const std::invalid_argument& e) {
    EXPECT_STREQ(e.what(), "'12ab' is not a valid integer value.");
  }
  form.ProcessIDCombo()->setCurrentText(QStringLiteral("4294967295"));
  form.GetCriteria(back, name);
  EXPECT_EQ(back.ProcessID, 4294967295u);
  EXPECT_TRUE(back.CheckMsgTypes);
  EXPECT_TRUE(back.MsgTypeSet.none() && back.MsgContentSet.none());
  form.ProcessIDCombo()->setCurrentText(QStringLiteral("4294967296"));
  EXPECT_THROW(form.GetCriteria(back, name), std::invalid_argument);
}

TEST_F(ViewFilterForm, Screenshot) {
  for (int i = 0; i < 3; ++i) StoreFrom("demo", "worker " + std::to_string(i), 100 + static_cast<uint32_t>(i), "net", "host");
  TfrmViewFilter form(nullptr);
  TZTFilterCriteria c;
  c.CheckAppName = true;
  c.AppName = "demo";
  c.CheckMsgTypes = true;
  c.MsgTypeSet.set(ztmError);
  c.MsgTypeSet.set(ztmWarning);
  c.MsgContentSet.set(ztmBitmap);
  form.SetCriteria(c, QString());
  form.resize(form.sizeHint());
  form.show();
  const QImage image = form.grab().toImage();
  const auto path = MakeTempDir("shot") / "view_filter.png";
  ASSERT_TRUE(image.save(QString::fromStdString(path.string())));
  if (const char* keep = std::getenv("ZENTRAIL_KEEP_SCREENSHOTS")) image.save(QString::fromLocal8Bit(keep) + "/view_filter.png");
  EXPECT_GT(image.width(), 400);
  // The pressed buttons are drawn unlike the released ones.
  QToolButton* pressed = form.TypeButton(ztmError, false);
  QToolButton* released = form.TypeButton(ztmInfo, false);
  const QImage a = pressed->grab().toImage(), b = released->grab().toImage();
  EXPECT_NE(a.pixel(2, a.height() / 2), b.pixel(2, b.height() / 2));

  // The two small search forms, for a look at their layout.
  TfrmFind find(nullptr);
  find.Forward()->setChecked(true);
  find.EntireScope()->setChecked(true);
  TfrmJumpToMsg jump(nullptr);
  for (QDialog* dialog : std::initializer_list<QDialog*>{&find, &jump}) {
    dialog->show();
    const QImage shot = dialog->grab().toImage();
    EXPECT_GT(shot.width(), 100);
    if (const char* keep = std::getenv("ZENTRAIL_KEEP_SCREENSHOTS"))
      shot.save(QString::fromLocal8Bit(keep) + "/" + dialog->objectName() + ".png");
  }
}

}  // namespace
}  // namespace zentrail::test
