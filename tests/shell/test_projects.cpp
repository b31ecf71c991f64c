// Project files through the main window: the round trip through a real file and a restart, the
// file's keys as a hand-built reader sees them, the questions, and damaged files of every kind.
#include <QDir>
#include <QElapsedTimer>
#include <QPointer>
#include <QLabel>
#include <filesystem>

#include "TestEnvironment.h"
#include "ViewTabsTestUtil.h"
#include "ZTIniFile.h"
#include "ZTProject.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

class ProjectTest : public ViewTabsFixture {
 protected:
  // Ends the window as the program does and starts a new one on the settings it left.
  void Restart() {
    Viewer->close();
    Viewer.reset();
    Viewer = std::make_unique<TFrmViewer>();
  }
  QString Path(const std::filesystem::path& p) { return QString::fromStdString(p.string()); }
  // The file dialogs (by title) and then the prompts recorded since the last call; in these
  // commands a file dialog always comes before any question.
  std::vector<QString> NewPrompts() {
    std::vector<QString> out;
    for (; FSeenDialogs < FPrompts->FileDialogs.size(); ++FSeenDialogs)
      out.push_back(FPrompts->FileDialogs[FSeenDialogs].Title);
    for (; FSeen < FPrompts->Prompts.size(); ++FSeen) out.push_back(FPrompts->Prompts[FSeen].Text);
    return out;
  }
  size_t FSeen = 0;
  size_t FSeenDialogs = 0;
};

const QString kNoViewsTail = QStringLiteral(
    ") does not contain any views.\r\rThe project will still be loaded. Any new views that you add will be "
    "included with the project file the next time the project is saved.");

}  // namespace

TEST_F(ProjectTest, ViewsComeBackAfterARestartExactlyAsTheyWereSaved) {
  const std::filesystem::path folder = MakeTempDir("projects");
  const QString file = Path(folder / "orders.ztp");
  TZTFilterCriteria errors;
  errors.CheckMsgTypes = true;
  errors.MsgTypeSet.set(ztmError);
  errors.CheckMessageText = true;
  errors.MessageText = "fail(ed|ure)";
  NewViewThroughDialog("Billing", AppFilter("Billing"));
  NewViewThroughDialog("Errors", errors);
  NewViewThroughDialog("Shipping", AppFilter("Shipping"));
  NewViewThroughDialog("Scratch", AppFilter("x"));
  // Reorder, rename, remove; then save as.
  Viewer->SetActiveViewIndex(3);
  Trigger("actViewMoveLeft");
  Viewer->RenameView(1, "Invoices [EUR]");
  Viewer->SetActiveViewIndex(4);
  Trigger("actViewRemove");
  EXPECT_EQ(Names(), (Texts{"All Messages", "Invoices [EUR]", "Shipping", "Errors"}));
  EXPECT_TRUE(Enabled("actSaveProject"));
  FPrompts->FileAnswers = {{file}};
  Trigger("actSaveProject");  // no project yet: it saves as
  EXPECT_FALSE(Viewer->ViewsModified());
  EXPECT_FALSE(Enabled("actSaveProject"));
  EXPECT_EQ(Viewer->ProjectFile(), file);
  EXPECT_EQ(Viewer->StatusText("stsProject"), "orders");

  // The file as an independent reader sees it: the counts and names in [Views], the class under
  // the key that saving writes, and each view's filter in its own section only.
  TZTIniFile ini((folder / "orders.ztp").string());
  EXPECT_EQ(ini.ReadSections(), (std::vector<std::string>{"Views", "1_Invoices [EUR]", "2_Shipping", "3_Errors"}));
  EXPECT_EQ(ini.ReadSectionValues("Views"),
            (std::vector<std::string>{"ViewCount=3", "1_ViewName=Invoices [EUR]", "1_ViewClassName=Default",
                                      "2_ViewName=Shipping", "2_ViewClassName=Default", "3_ViewName=Errors",
                                      "3_ViewClassName=Default"}));
  EXPECT_EQ(ini.ReadString("3_Errors", "MessageText", ""), "fail(ed|ure)");
  EXPECT_TRUE(ini.ReadBool("3_Errors", "CheckMsgTypes", false));
  EXPECT_EQ(ini.ReadString("2_Shipping", "AppName", ""), "Shipping");
  EXPECT_FALSE(ini.ValueExists("Views", "AppName"));

  // Quit and start again: LastProject brings back exactly these views, names, criteria and order.
  Restart();
  EXPECT_EQ(Names(), (Texts{"All Messages", "Invoices [EUR]", "Shipping", "Errors"}));
  EXPECT_EQ(Viewer->ProjectFile(), file);
  EXPECT_FALSE(Viewer->ViewsModified());
  TZTFilterCriteria got;
  Viewer->GetViewIntf(2)->GetFilterCriteria(got);
  EXPECT_EQ(got, AppFilter("Shipping"));
  Viewer->GetViewIntf(3)->GetFilterCriteria(got);
  EXPECT_EQ(got, errors);
  // Brackets in a name stay inside the section's name.
  Viewer->GetViewIntf(1)->GetFilterCriteria(got);
  EXPECT_EQ(got, AppFilter("Billing"));
  Store("Shipping", "parcel gone");
  Store("Billing", "invoice failed");
  EXPECT_EQ(Viewer->GetViewIntf(2)->GetCount(), 1);
  EXPECT_EQ(Viewer->GetViewIntf(3)->GetCount(), 0) << "an info message is no error";

  // A changed project is saved at exit without a question while AutoSaveProject is on.
  Viewer->SetActiveViewIndex(3);
  Trigger("actViewRemove");
  Restart();
  EXPECT_EQ(Names(), (Texts{"All Messages", "Invoices [EUR]", "Shipping"}));
  Viewer->AutoSaveProject = false;
  Viewer->RemoveView(2);
  Restart();
  EXPECT_EQ(Names(), (Texts{"All Messages", "Invoices [EUR]", "Shipping"})) << "with it off, changes are lost";
  for (const QString& text : NewPrompts()) EXPECT_FALSE(text.contains("modified")) << "nothing is asked at exit";
}

TEST_F(ProjectTest, QuestionsBeforeAProjectIsReplaced) {
  const std::filesystem::path folder = MakeTempDir("questions");
  const QString first = Path(folder / "first.ztp"), second = Path(folder / "second.ztp");
  WriteFile(folder / "second.ztp", "[Views]\nViewCount=1\n1_ViewName=From File\n1_ViewClass=Default\n");

  // Views without a project: "created additional views"; Cancel stops the open, No goes on.
  NewViewThroughDialog("Mine", AppFilter("a"));
  NewPrompts();
  FPrompts->FileAnswers = {{second}};
  FPrompts->ThreeWayAnswers = {TZTAnswer::Cancel};
  Trigger("actOpenProject");
  auto asked = NewPrompts();
  ASSERT_EQ(asked.size(), 2u);
  EXPECT_EQ(asked[0], "Open Zentrail Project");
  EXPECT_EQ(asked[1], "You have created additional views with filter criteria.\r\rWould you like to save these "
                      "settings in a Zentrail Project File?");
  EXPECT_EQ(Names(), (Texts{"All Messages", "Mine"}));
  // A cancelled file dialog asks nothing.
  Trigger("actOpenProject");
  EXPECT_EQ(NewPrompts().size(), 1u);
  // Yes with no project saves as first, then opens.
  FPrompts->FileAnswers = {{second}, {first}};
  FPrompts->ThreeWayAnswers = {TZTAnswer::Yes};
  Trigger("actOpenProject");
  EXPECT_EQ(Names(), (Texts{"All Messages", "From File"}));
  EXPECT_EQ(Viewer->ActiveViewIndex(), 0);
  EXPECT_EQ(TZTIniFile((folder / "first.ztp").string()).ReadString("Views", "1_ViewName", ""), "Mine");

  // With a project open, the other text; No drops the changes.
  NewViewThroughDialog("Extra", AppFilter("b"));
  NewPrompts();
  FPrompts->ThreeWayAnswers = {TZTAnswer::No};
  Trigger("actNewProject");
  asked = NewPrompts();
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_EQ(asked[0], "You have modified the views and/or filter criteria for the current project.\r\rWould you "
                      "like to save these changes?");
  EXPECT_EQ(Names(), (Texts{"All Messages"}));
  EXPECT_TRUE(Viewer->ProjectFile().isEmpty());
  EXPECT_EQ(Viewer->StatusText("stsProject"), "");
  EXPECT_EQ(TZTIniFile((folder / "second.ztp").string()).ReadInteger("Views", "ViewCount", 0), 1);
  // Nothing changed: no question at all, and both save commands are off with one view.
  Trigger("actCloseProject");
  EXPECT_TRUE(NewPrompts().empty());
  EXPECT_FALSE(Enabled("actSaveProject"));
  EXPECT_FALSE(Enabled("actSaveProjectAs"));

  // Opening the current project again removes and recreates its views.
  FPrompts->FileAnswers = {{second}};
  Trigger("actOpenProject");
  QPointer<QWidget> before = Viewer->GetViewIntf(1)->GetWidget();
  FPrompts->FileAnswers = {{second}};
  Trigger("actOpenProject");
  EXPECT_EQ(Names(), (Texts{"All Messages", "From File"}));
  EXPECT_TRUE(before.isNull());
  // A project saved with no additional views greets with the "no views" text when opened.
  Viewer->RemoveView(1);
  EXPECT_FALSE(Enabled("actSaveProject")) << "not from the commands";
  Viewer->SaveProjectIfModified(false);  // as at exit
  FPrompts->FileAnswers = {{second}};
  NewPrompts();
  Trigger("actOpenProject");
  asked = NewPrompts();
  ASSERT_EQ(asked.size(), 2u);
  EXPECT_EQ(asked[1], "Project File (second.ztp" + kNoViewsTail);
}

TEST_F(ProjectTest, DamagedFilesOpenWithOneClearMessageAndNeverHang) {
  const std::filesystem::path folder = MakeTempDir("damaged");
  std::string garbage;
  for (int i = 0; i < 70000; ++i) garbage.push_back(static_cast<char>((i * 7919 + (i >> 3)) & 0xFF));
  std::string many = "[Views]\r\nViewCount=10000\r\n";
  for (int i = 1; i <= 10000; ++i) many += std::to_string(i) + "_ViewName=View " + std::to_string(i) + "\r\n";
  const std::string good = "[Views]\nViewCount=2\n1_ViewName=A\n1_ViewClass=Default\n2_ViewName=B\n2_ViewClass=Default\n"
                           "[1_A]\nCheckAppName=1\nAppName=alpha\n[2_B]\nCheckAppName=1\nAppName=beta\n";
  struct TCase {
    const char* Name;
    std::string Bytes;
    int Views;           // additional views afterwards
    const char* Prompt;  // what the one message says, in part
  };
  const std::vector<TCase> cases = {
      {"empty.ztp", "", 0, "does not contain any views"},
      {"garbage.ztp", garbage, 0, "does not contain any views"},
      {"truncated.ztp", good.substr(0, good.find("AppName=beta") + 9), 2, nullptr},
      {"nulls.ztp", std::string("[Views]\0ViewCount=3\n", 20) + std::string(300, '\0'), 0, "does not contain any views"},
      {"negative.ztp", "[Views]\nViewCount=-5\n", 0, "does not contain any views"},
      {"huge-count.ztp", "[Views]\nViewCount=2147483647\n", ztProjectMaxViews, "Only the first 200 are opened"},
      {"many.ztp", many, ztProjectMaxViews, "names 10000 views"},
      {"bad-pattern.ztp",
       "[Views]\nViewCount=1\n1_ViewName=P\n1_ViewClass=Default\n[1_P]\nCheckMessageText=1\nMessageText=(unclosed\n", 1,
       "not a valid regular expression"},
      {"classless.ztp", "[Views]\nViewCount=2\n1_ViewName=NoClass\n1_ViewClass=\n2_ViewName=Odd\n2_ViewClass=Elsewhere\n", 1,
       nullptr},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.Name);
    WriteFile(folder / c.Name, c.Bytes);
    Viewer->RemoveAllViews();
    NewPrompts();
    QElapsedTimer clock;
    clock.start();
    Viewer->LoadProject(Path(folder / c.Name));
    const auto asked = NewPrompts();
    EXPECT_EQ(Viewer->ViewCount() - 1, c.Views);
    EXPECT_EQ(asked.size(), c.Prompt ? 1u : 0u);
    if (c.Prompt && !asked.empty()) {
      EXPECT_TRUE(asked[0].contains(QString::fromLatin1(c.Prompt))) << asked[0].toStdString();
    }
    EXPECT_EQ(Viewer->ProjectFile(), Path(folder / c.Name)) << "it becomes the open project all the same";
  }
  // The truncated file keeps what it has: both views, the second with the part of its value.
  Viewer->RemoveAllViews();
  Viewer->LoadProject(Path(folder / "truncated.ztp"));
  TZTFilterCriteria got;
  Viewer->GetViewIntf(1)->GetFilterCriteria(got);
  EXPECT_EQ(got, AppFilter("alpha"));
  Viewer->GetViewIntf(2)->GetFilterCriteria(got);
  EXPECT_EQ(got, AppFilter("b"));
  // A hand-edited class that isn't registered falls back to the default view class.
  Viewer->RemoveAllViews();
  Viewer->LoadProject(Path(folder / "classless.ztp"));
  EXPECT_EQ(Names(), (Texts{"All Messages", "Odd"}));
  EXPECT_EQ(Viewer->GetViewIntf(1)->GetViewClassName(), "Default");

  // A missing file opens as a project without views; a folder in its place is not a project.
  NewPrompts();
  Viewer->LoadProject(Path(folder / "missing.ztp"));
  auto asked = NewPrompts();
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_EQ(asked[0], "Project File (missing.ztp" + kNoViewsTail);
  std::filesystem::create_directory(folder / "dir.ztp");
  Viewer->LoadProject(Path(folder / "dir.ztp"));
  asked = NewPrompts();
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_EQ(asked[0], "Project File (dir.ztp) cannot be read.");
  EXPECT_EQ(Viewer->ProjectFile(), Path(folder / "missing.ztp")) << "the open project stays";

  // A save that can't be written says why and leaves the views marked as changed.
  NewViewThroughDialog("Kept", AppFilter("k"));
  Viewer->SaveProject(Path(folder / "no-such-folder" / "x.ztp"));
  asked = NewPrompts();
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_TRUE(asked[0].contains("x.ztp")) << asked[0].toStdString();
  EXPECT_TRUE(Viewer->ViewsModified());
}
