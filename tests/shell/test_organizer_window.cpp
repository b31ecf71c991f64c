// The organizer in the main window: auto-organizing as messages arrive over the socket road, the
// one-off scan, and the commands with their dialog.
#include <QCheckBox>
#include <QPushButton>
#include <algorithm>
#include <cctype>
#include <map>
#include <set>

#include "ViewTabsTestUtil.h"
#include "ZTOrganizer.h"
#include "ZTOrganizerForm.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

class OrganizerWindowTest : public ViewTabsFixture {};

std::string Lower(std::string s) {
  std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return s;
}

// 10,000 messages from 5 applications (one process each) with 20 threads among them, categories
// on some, computers in two spellings of one name.
std::vector<TZentrailMessage> Traffic() {
  std::vector<TZentrailMessage> out;
  for (int i = 0; i < 10000; ++i) {
    const int app = (i * 7) % 5;
    const int thread = (i * 13) % 20;
    TZentrailMessage m = MakeMessage(ztmInfo, "message " + std::to_string(i), 1000 + app);
    m.AppName = "Service" + std::to_string(app);
    m.ThreadName = "worker-" + std::to_string(thread);
    m.Category = i % 3 == 0 ? "" : (i % 3 == 1 ? "Database" : "Network");
    m.ComputerName = i % 2 ? "build-host" : "BUILD-HOST";
    out.push_back(m);
  }
  return out;
}

}  // namespace

TEST_F(OrganizerWindowTest, AutoOrganizeOverTenThousandMessagesMakesEachViewOnce) {
  const auto traffic = Traffic();
  // What the rules give, worked out from the messages alone: in message order, per field in its
  // order, a view for each value not seen before, none for an empty category or computer.
  std::vector<std::string> expected;
  std::map<std::string, int> expectedCount;
  std::set<std::string> seen[5];
  for (const TZentrailMessage& m : traffic) {
    const std::string values[5] = {m.AppName, m.Category, std::to_string(m.ProcessID), m.ThreadName, m.ComputerName};
    const std::string names[5] = {m.AppName, m.Category, "PID " + values[2], "Thread " + m.ThreadName, m.ComputerName};
    for (int f = 0; f < 5; ++f) {
      if ((f == 1 || f == 4) && values[f].empty()) continue;
      if (seen[f].insert(Lower(values[f])).second) expected.push_back(names[f]);
    }
  }
  ASSERT_EQ(expected.size(), 5u + 2u + 5u + 20u + 1u);

  Viewer->OrganizeBy = ztOrganizeAll;
  Viewer->AutoOrganize = true;
  // Through the socket's road, as a client sends them.
  for (const TZentrailMessage& m : traffic) ASSERT_EQ(Viewer->WMCopyData(ztPacketTag, Packet(m)), 1u);
  SpinUntil([&] { return !Viewer->InMessageBatch(); }, 2000);

  std::vector<std::string> names = Names();
  ASSERT_FALSE(names.empty());
  names.erase(names.begin());
  EXPECT_EQ(names, expected);
  // Every view holds every message of its value, the first that made it included.
  for (int i = 1; i < Viewer->ViewCount(); ++i) {
    IZTMessageView* view = Viewer->GetViewIntf(i);
    TZTFilterCriteria c;
    view->GetFilterCriteria(c);
    const int checks = c.CheckAppName + c.CheckCategory + c.CheckProcessID + c.CheckThreadName + c.CheckComputerName;
    EXPECT_EQ(checks, 1) << names[i - 1];
    const int want = static_cast<int>(std::count_if(traffic.begin(), traffic.end(), [&](const TZentrailMessage& m) {
      return (c.CheckAppName && Lower(m.AppName) == Lower(c.AppName)) ||
             (c.CheckCategory && Lower(m.Category) == Lower(c.Category)) ||
             (c.CheckProcessID && m.ProcessID == c.ProcessID) ||
             (c.CheckThreadName && Lower(m.ThreadName) == Lower(c.ThreadName)) ||
             (c.CheckComputerName && Lower(m.ComputerName) == Lower(c.ComputerName));
    }));
    EXPECT_EQ(view->GetCount(), want) << names[i - 1];
  }
  EXPECT_EQ(Viewer->ActiveViewIndex(), 0) << "silent views don't take the user away";
  EXPECT_TRUE(Viewer->ViewsModified());

  // The one-off scan over the same store finds everything covered and makes nothing.
  const int before = Viewer->ViewCount();
  Viewer->OrganizeAllMessages(ztOrganizeAll);
  EXPECT_EQ(Viewer->ViewCount(), before);
  // Removing a thread's view uncovers it: the next message of that thread brings it back, once.
  const auto it = std::find(names.begin(), names.end(), "Thread worker-3");
  ASSERT_NE(it, names.end());
  Viewer->RemoveView(static_cast<int>(it - names.begin()) + 1);
  Viewer->WMCopyData(ztPacketTag, Packet(traffic[3 * 17 % 10000]));
  for (int i = 0; i < 40; ++i) Viewer->WMCopyData(ztPacketTag, Packet(traffic[static_cast<size_t>(i)]));
  names = Names();
  EXPECT_EQ(std::count(names.begin(), names.end(), "Thread worker-3"), 1);
  EXPECT_EQ(Viewer->ViewCount(), before);
}

TEST_F(OrganizerWindowTest, CommandsAndTheirDialog) {
  for (const char* app : {"alpha", "beta", "alpha"}) {
    TZentrailMessage m = MakeMessage(ztmInfo, "hello");
    m.AppName = app;
    Viewer->ProcessMessage(m);
  }
  // Auto-Organize on with nothing chosen opens the settings; Cancel there turns it off again.
  int dialogs = 0;
  Viewer->Navigator().RunDialog = [&](QDialog& dialog) {
    ++dialogs;
    auto& settings = dynamic_cast<TfrmOrganizerSettings&>(dialog);
    EXPECT_FALSE(settings.AutoOrganizeCheck()->isHidden());
    EXPECT_TRUE(settings.AutoOrganizeCheck()->isChecked());
    return int(QDialog::Rejected);
  };
  Trigger("actAutoOrganize");
  EXPECT_EQ(dialogs, 1);
  EXPECT_FALSE(Viewer->AutoOrganize);
  EXPECT_FALSE(Viewer->Action("actAutoOrganize")->isChecked());
  EXPECT_EQ(Viewer->ViewCount(), 1);

  // The settings dialog: a field and the box checked; OK stores the set and turns it on, which
  // scans what is stored and activates each new view.
  Viewer->Navigator().RunDialog = [&](QDialog& dialog) {
    auto& settings = dynamic_cast<TfrmOrganizerSettings&>(dialog);
    settings.FieldCheck(ozAppName)->setChecked(true);
    settings.SetAutoOrganize(true);
    return int(QDialog::Accepted);
  };
  Trigger("actAutoOrganizeSettings");
  EXPECT_TRUE(Viewer->AutoOrganize);
  EXPECT_EQ(Viewer->OrganizeBy, 1);
  EXPECT_EQ(Names(), (Texts{"All Messages", "alpha", "beta"}));
  EXPECT_EQ(Viewer->GetViewIntf(1)->GetCount(), 2);
  EXPECT_EQ(Viewer->ActiveViewIndex(), 2) << "views of a scan are activated";

  // Organize Messages scans with the dialog's set and does not store it.
  Viewer->Navigator().RunDialog = [&](QDialog& dialog) {
    auto& settings = dynamic_cast<TfrmOrganizerSettings&>(dialog);
    EXPECT_TRUE(settings.AutoOrganizeCheck()->isHidden());
    EXPECT_EQ(settings.OrganizeBy(), 1);
    settings.SetOrganizeBy(4);
    return int(QDialog::Accepted);
  };
  Trigger("actOrganizeMessages");
  EXPECT_EQ(Names(), (Texts{"All Messages", "alpha", "beta", "PID 4242"}));
  EXPECT_EQ(Viewer->OrganizeBy, 1);

  // The settings go to the file with the rest when the window ends.
  Viewer.reset();
  EXPECT_TRUE(ViewerSettings().ReadBool("Organizer", "AppName", false));
  EXPECT_FALSE(ViewerSettings().ReadBool("Organizer", "ProcessID", true));
  EXPECT_TRUE(ViewerSettings().ReadBool("Organizer", "AutoOrganize", false));
}
