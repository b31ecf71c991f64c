// The organizer's register and its decisions, with a host that makes views the way the main window
// does (a real message view whose criteria register it), and with the settings file.
#include <gtest/gtest.h>

#include <memory>

#include "TestEnvironment.h"
#include "ViewTestSupport.h"
#include "ZTIniFile.h"
#include "ZTOrganizer.h"
#include "ZTOrganizerForm.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>

using namespace zentrail;
using namespace zentrail::test;

namespace {

// Makes a real view for each request and moves the store's cursor as the window does.
class TRecordingHost : public IZTOrganizerHost {
 public:
  void CreateOrganizedView(const std::string& name, TZTOrganizeField field, const std::string& value,
                           bool activate) override {
    Made.push_back(name);
    Activated.push_back(activate);
    TZTFilterCriteria c;
    switch (field) {
      case ozAppName: c.CheckAppName = true; c.AppName = value; break;
      case ozCategory: c.CheckCategory = true; c.Category = value; break;
      case ozProcessID: c.CheckProcessID = true; c.ProcessID = static_cast<uint32_t>(std::stoul(value)); break;
      case ozThreadName: c.CheckThreadName = true; c.ThreadName = value; break;
      case ozComputerName: c.CheckComputerName = true; c.ComputerName = value; break;
    }
    auto view = std::make_unique<TZTMessageView>(nullptr, &App);
    view->SetFilterCriteria(c);
    Views.push_back(std::move(view));
    if (MessageSet.GetRecordCount() > 0) MessageSet.GotoRec(1);
  }
  TFakeApplication App;
  std::vector<std::string> Made;
  std::vector<bool> Activated;
  std::vector<std::unique_ptr<TZTMessageView>> Views;
};

class OrganizerTest : public TViewTest {
 protected:
  void SetUp() override {
    TViewTest::SetUp();
    Organizer().SetHost(&FHost);
  }
  void TearDown() override {
    FHost.Views.clear();
    Organizer().SetHost(nullptr);
  }
  int32_t Add(const std::string& app, const std::string& thread, uint32_t pid, const std::string& category,
              const std::string& computer = "box") {
    TZentrailMessage m;
    m.MsgText = "x";
    m.AppName = app;
    m.ThreadName = thread;
    m.ProcessID = pid;
    m.Category = category;
    m.ComputerName = computer;
    MessageSet.AppendMessage(m, FNextID++);
    return MessageSet.RecNo;
  }
  TRecordingHost FHost;
};

}  // namespace

TEST_F(OrganizerTest, EachNewValueMakesOneViewInFieldOrderAndTheCursorStays) {
  Organizer().SetOrganizeBy(4 | 8);  // ProcessID, ThreadName
  const int32_t rec = Add("demo", "Main", 12, "");
  Organizer().Organize();
  EXPECT_EQ(FHost.Made, (std::vector<std::string>{"PID 12", "Thread Main"}));
  EXPECT_EQ(FHost.Activated, (std::vector<bool>{false, false})) << "arriving messages make silent views";
  EXPECT_EQ(MessageSet.RecNo, rec) << "the host moved the cursor; the organizer put it back";
  Add("demo", "MAIN", 12, "");
  Organizer().Organize();
  EXPECT_EQ(FHost.Made.size(), 2u) << "the same process and thread, in another case, make nothing";

  // Category and computer: an empty value makes no view; an empty application name does.
  FHost.Made.clear();
  Add("", "Main", 12, "", "");
  Organizer().Organize(ztOrganizeAll);
  EXPECT_EQ(FHost.Made, (std::vector<std::string>{""})) << "the application view only: no category, no computer";
  EXPECT_TRUE(FHost.Activated.back()) << "an explicit call activates its views";
  FHost.Made.clear();
  Add("", "T2", 12, "");
  Organizer().Organize(8);
  EXPECT_EQ(FHost.Made, (std::vector<std::string>{"Thread T2"}));
}

TEST_F(OrganizerTest, TheRegisterFollowsTheViewsAndTheirCriteria) {
  TZTMessageView a(nullptr, &FHost.App), b(nullptr, &FHost.App);
  TZTFilterCriteria app;
  app.CheckAppName = true;
  app.AppName = "Billing";
  a.SetFilterCriteria(app);
  EXPECT_TRUE(Organizer().Covered(ozAppName, "billing"));
  // Widened to two fields, the view covers nothing; the next message of the value gets a view.
  TZTFilterCriteria two = app;
  two.CheckThreadName = true;
  two.ThreadName = "main";
  a.SetFilterCriteria(two);
  EXPECT_FALSE(Organizer().Covered(ozAppName, "Billing"));
  EXPECT_FALSE(Organizer().Covered(ozThreadName, "main"));
  Add("Billing", "main", 1, "");
  Organizer().Organize(1);
  EXPECT_EQ(FHost.Made, (std::vector<std::string>{"Billing"}));

  // Two views of one value: removing one uncovers it although the other remains.
  a.SetFilterCriteria(app);
  b.SetFilterCriteria(app);
  FHost.Views.clear();
  {
    TZTMessageView gone(nullptr, &FHost.App);
    gone.SetFilterCriteria(app);
  }
  EXPECT_FALSE(Organizer().Covered(ozAppName, "Billing"));
  // Building the lists anew from the registered views covers it again.
  Organizer().ClearFilterCriteria();
  EXPECT_TRUE(Organizer().Covered(ozAppName, "Billing"));
  const int registered = Organizer().ViewCount();
  Organizer().ClearFilterCriteria();
  EXPECT_EQ(Organizer().ViewCount(), registered);

  // A process id is covered by its decimal text.
  TZTFilterCriteria pid;
  pid.CheckProcessID = true;
  pid.ProcessID = 4000000000u;
  b.SetFilterCriteria(pid);
  EXPECT_TRUE(Organizer().Covered(ozProcessID, "4000000000"));
}

TEST_F(OrganizerTest, SettingsSectionAndDialog) {
  const auto file = MakeTempDir("organizer") / "settings.ini";
  WriteFile(file, "[Organizer]\nAppName=1\nThreadName=1\nAutoOrganize=1\nStray=x\n[Other]\nKeep=1\n");
  Organizer().ReadOrganizerSettings(file.string());
  EXPECT_EQ(Organizer().OrganizeBy(), 1 | 8);
  Organizer().SetOrganizeBy(2 | 16);
  Organizer().WriteOrganizerSettings(file.string());
  TZTIniFile ini(file.string());
  EXPECT_EQ(ini.ReadSectionValues("Organizer"),
            (std::vector<std::string>{"AppName=0", "Category=1", "ProcessID=0", "ThreadName=0", "ComputerName=1"}))
      << "the section is written whole, AutoOrganize and strays gone";
  EXPECT_EQ(ini.ReadString("Other", "Keep", ""), "1");

  TfrmOrganizerSettings dialog(nullptr);
  EXPECT_EQ(dialog.windowTitle(), "Message Organizer Settings");
  EXPECT_FALSE(dialog.AutoOrganizeCheck()->isEnabled()) << "greyed with no field chosen";
  dialog.FieldCheck(ozThreadName)->setChecked(true);
  EXPECT_TRUE(dialog.AutoOrganizeCheck()->isEnabled());
  EXPECT_EQ(dialog.OrganizeBy(), 8);
  dialog.SetAutoOrganize(true);
  dialog.SetOrganizeBy(0);
  EXPECT_FALSE(dialog.AutoOrganizeCheck()->isEnabled());
  dialog.OkButton()->click();
  EXPECT_FALSE(dialog.AutoOrganize()) << "OK with nothing chosen leaves Auto-Organize off";
  dialog.InitForOrganizeMessages();
  EXPECT_EQ(dialog.windowTitle(), "Organize Messages");
  EXPECT_TRUE(dialog.AutoOrganizeCheck()->isHidden());
  EXPECT_TRUE(dialog.Instructions()->text().startsWith("The Zentrail Message Organizer will now scan"));
}
