// The command table as the running window has it: every command of the design once, with its
// caption, hint and shortcut; the menus' access keys; and the enabling rules in the states that
// matter (no rows, one view, several views, a selection, a full-size inspector, a load).
#include <QKeySequence>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QToolButton>
#include <filesystem>
#include <map>
#include <set>

#include "LogFileTestSupport.h"
#include "TestEnvironment.h"
#include "ViewTabsTestUtil.h"
#include "ZTCommandBar.h"
#include "ZTToolbarsForm.h"

using namespace zentrail;
using namespace zentrail::test;
namespace fs = std::filesystem;

namespace {

struct TExpected {
  const char* Name;
  const char* Caption;
  const char* Hint;
  const char* Shortcut;
};

// The design's table, as written there (captions without access keys, which the menus add).
const TExpected kCommands[] = {
    {"actOpen", "Open...", "Open Log File", "Ctrl+O"},
    {"actAppend", "Append...", "Append Log File", ""},
    {"actSave", "Save...", "Save Messages to Log File", "Ctrl+S"},
    {"actExport", "Export...", "", ""},
    {"actNewProject", "New Project", "Create New Project", ""},
    {"actOpenProject", "Open Project ...", "Open Project", ""},
    {"actSaveProject", "Save Project", "Save Project", ""},
    {"actSaveProjectAs", "Save Project As ...", "Save Project As", ""},
    {"actCloseProject", "Close Project", "", ""},
    {"actPrint", "Print...", "Print Messages", "Ctrl+P"},
    {"actPrintInspectorContents", "Print Inspector Contents...", "Print Inspector Pane Contents", "Shift+Ctrl+P"},
    {"actExit", "Exit", "Exit Zentrail", "Alt+F4"},
    {"actEditMessage", "Edit Message", "Edit Message", "F2"},
    {"actCopyMessageText", "Copy Selected Messages", "Copy Selected Message Text to Clipboard", "Ctrl+C"},
    {"actCopyInspectorContents", "Copy Inspector Contents", "Copy Inspector Pane Contents to Clipboard", "Shift+Ctrl+C"},
    {"actAddNote", "Add Note", "Add Note", ""},
    {"actAddCheckPoint", "Add CheckPoint", "Add CheckPoint", ""},
    {"actAddSeparator", "Add Separator", "Add Separator", ""},
    {"actAddResetSeparator", "Add Reset Separator", "Add Reset Indent Level Separator", ""},
    {"actDelete", "Delete", "Delete Selected Messages", "Del"},
    {"actCropToSelection", "Crop to Selection", "", ""},
    {"actClear", "Clear", "Clear", "Ctrl+Del"},
    {"actClearAll", "Clear All Views", "Clear All Views", "Shift+Ctrl+Del"},
    {"actSelectAll", "Select All", "Select All Messages", "Ctrl+A"},
    {"actFind", "Find...", "Find", "Ctrl+F"},
    {"actFindNext", "Find Next", "Find Next", "F3"},
    {"actJumpToMsg", "Jump to Message...", "Jump to Message", "Ctrl+J"},
    {"actClearBookmarks", "Clear Bookmarks", "Clear All Bookmarks", ""},
    {"actSyncMsgMode", "Synchronize Message Mode", "Synchronize selected message when changing views", "F9"},
    {"actUpdateSyncMsg", "Update Synchronized Message", "Change the message currently being synchronized", ""},
    {"actSelectNavMsg", "Select Navigation Message...", "Select Navigation Message", ""},
    {"actNavFirst", "First", "First Message", "Ctrl+Alt+Home"},
    {"actNavPrevious", "Previous", "Previous Message", "Ctrl+Alt+Up"},
    {"actNavNext", "Next", "Next Message", "Ctrl+Alt+Down"},
    {"actNavLast", "Last", "Last Message", "Ctrl+Alt+End"},
    {"actNavAutomatic", "Automatic", "", ""},
    {"actNavTimeDiff", "Time Difference", "", ""},
    {"actMethodMatch", "Method Match", "Jump to Matching Method", "Ctrl+PgUp"},
    {"actCurrentMethod", "Current Method", "Jump to Current Method", "Ctrl+Left"},
    {"actToggleMethod", "Toggle Method", "Collapse or Expand the Selected Method", "Ctrl+Up"},
    {"actExpandAll", "Expand All", "", ""},
    {"actExpandToEnd", "Expand To End", "Expand Methods Starting from the Current Position", ""},
    {"actCollapseAll", "Collapse All", "", ""},
    {"actAutoCollapse", "Auto-Collapse", "Automatically Collapse Empty Enter/Exit Method Pairs", ""},
    {"actViewNew", "New View...", "Create New View", "Ctrl+N"},
    {"actViewModify", "Modify View...", "Modify View Criteria", "Ctrl+M"},
    {"actViewRemove", "Remove View", "Remove Current View", "Ctrl+R"},
    {"actViewRemoveAll", "Remove All Views", "Remove All Views", "Shift+Ctrl+R"},
    {"actViewMoveLeft", "Move Left", "", "Shift+Ctrl+Left"},
    {"actViewMoveRight", "Move Right", "", "Shift+Ctrl+Right"},
    {"actViewPrior", "Previous View", "", "Ctrl+Left"},
    {"actViewNext", "Next View", "", "Ctrl+Right"},
    {"actOrganizeMessages", "Organize Messages...", "Organize Messages", "F8"},
    {"actAutoOrganize", "Auto-Organize", "Automatically Organize Incoming Messages", ""},
    {"actAutoOrganizeSettings", "Auto-Organize Settings...", "AutoOrganize Settings", ""},
    {"actSelectColumns", "Select Columns...", "Select Columns", "Ctrl+F4"},
    {"actHideExtraColumns", "Hide Extra Columns", "Hide Extra Columns", "F4"},
    {"actViewDetailPanel", "Message Detail Panel", "Show/Hide Message Detail Panel", ""},
    {"actViewScratchPad", "Scratch Pad", "Show/Hide Scratch Pad", "F12"},
    {"actViewCallStack", "Call Stack", "Show/Hide Call Stack", "Ctrl+F12"},
    {"actViewInspector", "Inspector", "Show/Hide Inspector Pane", "F11"},
    {"actFullSizeInspector", "Full Size Inspector", "Resize Inspector Pane to occupy the full size of the Viewer", "Ctrl+F11"},
    {"actInspectorOnBottom", "Inspector on Bottom", "Position Inspector Pane Below Message List", ""},
    {"actAutoScroll", "Auto-Scroll", "Automatically Scroll View to Keep New Messages Visible", "F6"},
    {"actFlattenStructure", "Flatten Structure", "Hides indenting in message structure", "F7"},
    {"actRefresh", "Refresh", "Refresh the message list by reloading the log file", "F5"},
    {"actAlwaysOnTop", "Always on Top", "Always On Top", ""},
    {"actViewMsgOnly", "Message Only", "View Message Only", ""},
    {"actAllDetails", "All Details", "Show All Details", ""},
    {"actViewCategory", "Category", "Show/Hide Category", ""},
    {"actViewAppName", "Application Name", "Show/Hide Application Name", ""},
    {"actViewComputerName", "Computer Name", "Show/Hide Computer Name", ""},
    {"actViewProcessID", "Process ID", "Show/Hide Process ID", ""},
    {"actViewThread", "Thread", "Show/Hide Thread", ""},
    {"actViewDate", "Date", "Show/Hide Date", ""},
    {"actViewTimeStamp", "Time Stamp", "Show Time Stamp", ""},
    {"actViewTimeDiff", "Time Difference", "Show Time-Difference from previous message", ""},
    {"actViewTimeOffset", "Time Offset", "Show Time-Offset from beginning of log", ""},
    {"actWrapButtons", "Wrap Buttons", "Wrap Toolbar Buttons", ""},
    {"actOptions", "Options", "Change Options", ""},
    {"actBlockMessages", "Block Incoming Messages", "Block Incoming Messages", "Ctrl+B"},
    {"actPlugIns", "Plug-Ins", "Display Loaded PlugIns", ""},
    {"actHelpProduct", "Zentrail Viewer Help", "", "F1"},
    {"actHelpZentrail", "Zentrail Help", "", ""},
    {"actHelpAbout", "About", "About Zentrail", ""},
    {"actNavInfo", "Info Messages", "", ""},
    {"actNavNotes", "Notes", "", ""},
    {"actNavWarning", "Warning Messages", "", ""},
    {"actNavError", "Error Messages", "", ""},
    {"actNavException", "Exceptions", "", ""},
    {"actNavReminders", "Reminders", "", ""},
    {"actNavCheckPoints", "Check Points", "", ""},
    {"actNavRed", "Level 1 - Red", "", ""},
    {"actNavOrange", "Level 2 - Orange", "", ""},
    {"actNavYellow", "Level 3 - Yellow", "", ""},
    {"actNavGreen", "Level 4 - Green", "", ""},
    {"actNavBlue", "Level 5 - Blue", "", ""},
    {"actNavIndigo", "Level 6 - Indigo", "", ""},
    {"actNavViolet", "Level 7 - Violet", "", ""},
    {"actNavEnterMethod", "Enter Method", "", ""},
    {"actNavExitMethod", "Exit Method", "", ""},
    {"actNavTimings", "Timings", "", ""},
    {"actNavSeparator", "Separator", "", ""},
    {"actNavAppStartSeparator", "Application Start Separator", "", ""},
    {"actNavInactiveSeparator", "ActNavSeparator", "", ""},
    {"actNavResetSeparator", "Reset Indent Separator", "", ""},
    {"actNavCustom", "Custom Messages", "", ""},
    {"actNavMatchAnyType", "Match Any Message Type", "", ""},
    {"actNavText", "Text", "", ""},
    {"actNavStringLists", "String Lists", "", ""},
    {"actNavObjects", "Objects", "", ""},
    {"actNavCollection", "Collections", "", ""},
    {"actNavCompAsText", "Components (as Text)", "", ""},
    {"actNavColor", "Colors", "", ""},
    {"actNavBitmaps", "Bitmaps", "", ""},
    {"actNavTextFiles", "Text Files", "", ""},
    {"actNavXML", "XML Data", "", ""},
    {"actNavMemory", "Memory", "", ""},
    {"actNavMemoryStatus", "Memory Status", "", ""},
    {"actNavWindows", "Windows", "", ""},
    {"actNavRegistry", "Registry Messages", "", ""},
    {"actNavSystemInfo", "System Information", "", ""},
    {"actNavVersionInfo", "Version Information", "", ""},
    {"actNavStackTrace", "Stack Traces", "", ""},
    {"actNavCustomText", "Custom Format (Text)", "", ""},
    {"actNavCustomProperties", "Custom Format (Properties)", "", ""},
    {"actNavCustomTable", "Custom Format (Table)", "", ""},
    {"actNavCustomHierarchy", "Custom Format (Hierarchy)", "", ""},
    {"actNavMatchAnyContent", "Match Any Message Content", "", ""},
};

class CommandTableTest : public ViewTabsFixture {
 protected:
  QAction* A(const char* name) { return Viewer->Action(QString::fromLatin1(name)); }
  bool Checked(const char* name) { return A(name)->isChecked(); }
  IZTMessageViewList& List() { return *dynamic_cast<IZTMessageViewList*>(&AllMessages()); }
  void FocusRow(int row) {
    List().SetFocusedMsgIndex(row);
    Viewer->UpdateMessageDetails();
  }
  // Access keys of the items of a menu, recursively; fails on an item without one or a key twice.
  void CheckAccessKeys(QMenu* menu) {
    std::map<QChar, QString> keys;
    for (QAction* a : menu->actions()) {
      if (a->isSeparator() || !a->isVisible()) continue;
      const QString text = a->text();
      const qsizetype amp = text.indexOf(QLatin1Char('&'));
      ASSERT_GE(amp, 0) << menu->title().toStdString() << ": " << text.toStdString() << " has no access key";
      const QChar key = text.at(amp + 1).toLower();
      EXPECT_FALSE(keys.count(key)) << menu->title().toStdString() << ": " << text.toStdString() << " and "
                                    << keys[key].toStdString() << " share " << QString(key).toStdString();
      keys[key] = text;
      if (a->menu()) CheckAccessKeys(a->menu());
    }
  }
};

QString Plain(QString s) { return s.remove(QLatin1Char('&')); }

}  // namespace

TEST_F(CommandTableTest, EveryCommandOnceWithItsCaptionHintAndShortcut) {
  std::set<QString> names;
  for (const TExpected& e : kCommands) names.insert(QString::fromLatin1(e.Name));
  for (int i = 0; i < 10; ++i) {
    names.insert(QStringLiteral("actToggleBookmark%1").arg(i));
    names.insert(QStringLiteral("actJumpToBookmark%1").arg(i));
  }
  for (const char* p : {"actPosUpperLeft", "actPosUpperRight", "actPosLowerRight", "actPosLowerLeft", "actPosLeft",
                        "actPosTop", "actPosRight", "actPosBottom"})
    names.insert(QString::fromLatin1(p));
  EXPECT_EQ(names.size(), 157u);
  for (const QString& name : names)
    EXPECT_EQ(Viewer->findChildren<QAction*>(name).size(), 1) << name.toStdString() << " is not there exactly once";

  for (const TExpected& e : kCommands) {
    QAction* a = A(e.Name);
    ASSERT_NE(a, nullptr) << e.Name;
    const QString caption = Plain(a->text());
    // Two captions tell a state: the method's, and the navigator's threshold.
    if (std::string(e.Name) == "actToggleMethod") {
      EXPECT_TRUE(caption == "Collapse Method" || caption == "Expand Method") << caption.toStdString();
    } else if (std::string(e.Name) == "actNavTimeDiff") {
      EXPECT_TRUE(caption.startsWith(QString::fromUtf8(e.Caption))) << caption.toStdString();
    } else {
      EXPECT_EQ(caption, QString::fromUtf8(e.Caption)) << e.Name;
    }
    if (e.Hint[0] && std::string(e.Name) != "actToggleMethod") {
      EXPECT_EQ(a->toolTip(), QString::fromUtf8(e.Hint)) << e.Name;
    }
    // Ctrl+Left belongs to Previous View, which comes first; Current Method is reached by menu.
    const QKeySequence expected = std::string(e.Name) == "actCurrentMethod"
                                      ? QKeySequence()
                                      : QKeySequence(QString::fromLatin1(e.Shortcut), QKeySequence::PortableText);
    EXPECT_EQ(a->shortcut(), expected) << e.Name << " has " << a->shortcut().toString().toStdString();
  }
  for (int i = 0; i < 10; ++i) {
    QAction* toggle = A(QStringLiteral("actToggleBookmark%1").arg(i).toLatin1());
    QAction* jump = A(QStringLiteral("actJumpToBookmark%1").arg(i).toLatin1());
    EXPECT_EQ(toggle->text(), QStringLiteral("Toggle Bookmark &%1").arg(i));
    EXPECT_EQ(jump->text(), QStringLiteral("Jump To Bookmark &%1").arg(i));
    EXPECT_EQ(toggle->shortcut(), QKeySequence(Qt::SHIFT | Qt::CTRL | Qt::Key(Qt::Key_0 + i)));
    EXPECT_EQ(jump->shortcut(), QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_0 + i)));
    EXPECT_EQ(toggle->data().toInt(), i);
  }

  // No key stands for two commands: Qt would run neither.
  std::map<QString, QString> byKey;
  for (QAction* a : Viewer->findChildren<QAction*>()) {
    if (a->shortcut().isEmpty()) continue;
    const QString key = a->shortcut().toString(QKeySequence::PortableText);
    EXPECT_FALSE(byKey.count(key)) << key.toStdString() << ": " << a->objectName().toStdString() << " and "
                                   << byKey[key].toStdString();
    byKey[key] = a->objectName();
  }

  // The menu bar has the eight menus in order; in each, every item has its own access key.
  QStringList titles;
  for (QAction* m : Viewer->menuBar()->actions()) titles << m->text();
  EXPECT_EQ(titles, QStringList({"&File", "&Edit", "&Search", "&View", "&Methods", "&Organize", "&Tools", "&Help"}));
  for (QAction* m : Viewer->menuBar()->actions()) CheckAccessKeys(m->menu());
  // Every command the table lists stands in a menu or a popup, or is reached by its key.
  std::set<QString> inMenus;
  std::function<void(QMenu*)> collect = [&](QMenu* menu) {
    for (QAction* a : menu->actions()) {
      inMenus.insert(a->objectName());
      if (a->menu()) collect(a->menu());
    }
  };
  for (QMenu* menu : Viewer->findChildren<QMenu*>()) collect(menu);
  for (const QString& name : names)
    EXPECT_TRUE(inMenus.count(name) || !A(name.toLatin1())->shortcut().isEmpty()) << name.toStdString();
}

TEST_F(CommandTableTest, EnablingRulesWithoutRowsWithOneViewAndWithSeveral) {
  // No rows: nothing that needs one, and no bookmark command.
  for (const char* name : {"actSave", "actExport", "actPrint", "actClear", "actSelectAll", "actFind", "actFindNext",
                           "actJumpToMsg", "actDelete", "actCropToSelection", "actCopyMessageText", "actEditMessage",
                           "actMethodMatch", "actToggleMethod", "actCurrentMethod", "actExpandAll", "actClearBookmarks",
                           "actOrganizeMessages", "actPrintInspectorContents", "actCopyInspectorContents",
                           "actHideExtraColumns", "actToggleBookmark0", "actJumpToBookmark9", "actFullSizeInspector"})
    EXPECT_FALSE(Enabled(name)) << name;
  for (const char* name : {"actOpen", "actAppend", "actClearAll", "actAddNote", "actAddCheckPoint", "actViewNew",
                           "actOptions", "actSelectColumns", "actRefresh", "actHelpProduct", "actViewInspector"})
    EXPECT_TRUE(Enabled(name)) << name;
  // One view: nothing about projects, other views or synchronising.
  for (const char* name : {"actSaveProject", "actSaveProjectAs", "actViewRemoveAll", "actSyncMsgMode",
                           "actUpdateSyncMsg", "actViewModify", "actViewRemove", "actViewMoveLeft", "actViewMoveRight"})
    EXPECT_FALSE(Enabled(name)) << name;

  // Rows arrive; a method pair and a separator among them.
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "first"));
  Viewer->ProcessMessage(MakeMessage(ztmEnterMethod, "Run"));
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "inside"));
  Viewer->ProcessMessage(MakeMessage(ztmExitMethod, "Run"));
  Viewer->AddSeparator(nullptr);
  Viewer->UpdateCommandStates();
  for (const char* name : {"actSave", "actExport", "actPrint", "actClear", "actSelectAll", "actFind",
                           "actJumpToMsg", "actOrganizeMessages"})
    EXPECT_TRUE(Enabled(name)) << name;

  // A focused, selected method: its commands, the editing ones and the bookmark toggles.
  FocusRow(1);
  for (const char* name : {"actDelete", "actCropToSelection", "actCopyMessageText", "actEditMessage", "actMethodMatch",
                           "actToggleMethod", "actExpandAll", "actCollapseAll", "actToggleBookmark3"})
    EXPECT_TRUE(Enabled(name)) << name;
  EXPECT_FALSE(Enabled("actCurrentMethod")) << "the method itself stands at indent 0";
  EXPECT_FALSE(Enabled("actJumpToBookmark3"));
  EXPECT_FALSE(Enabled("actClearBookmarks"));
  EXPECT_EQ(Plain(A("actToggleMethod")->text()), "Collapse Method");
  Trigger("actToggleBookmark3");
  EXPECT_TRUE(Checked("actToggleBookmark3"));
  EXPECT_TRUE(Enabled("actJumpToBookmark3"));
  EXPECT_FALSE(Enabled("actJumpToBookmark4"));
  EXPECT_TRUE(Enabled("actClearBookmarks"));
  Trigger("actToggleMethod");
  EXPECT_EQ(Plain(A("actToggleMethod")->text()), "Expand Method");
  EXPECT_EQ(A("actToggleMethod")->toolTip(), "Expand Selected Method");
  Trigger("actToggleMethod");
  FocusRow(2);
  EXPECT_TRUE(Enabled("actCurrentMethod"));
  EXPECT_FALSE(Enabled("actMethodMatch"));
  // A separator cannot be edited.
  FocusRow(AllMessages().GetCount() - 1);
  EXPECT_FALSE(Enabled("actEditMessage"));

  // Several views: project saving and view commands by the active tab's place.
  TZTFilterCriteria all;
  NewViewThroughDialog("Second", all);
  NewViewThroughDialog("Third", all);
  Viewer->SetActiveViewIndex(1);
  for (const char* name : {"actSaveProject", "actSaveProjectAs", "actViewRemoveAll", "actViewModify", "actViewRemove",
                           "actViewMoveRight", "actViewPrior", "actViewNext"})
    EXPECT_TRUE(Enabled(name)) << name;
  EXPECT_FALSE(Enabled("actViewMoveLeft"));
  Viewer->SetActiveViewIndex(2);
  EXPECT_TRUE(Enabled("actViewMoveLeft"));
  EXPECT_FALSE(Enabled("actViewMoveRight"));
  EXPECT_FALSE(Enabled("actViewNext"));
  EXPECT_FALSE(Enabled("actUpdateSyncMsg"));
  dynamic_cast<IZTMessageViewList*>(Viewer->GetView(2))->SetFocusedMsgIndex(0);
  Viewer->UpdateMessageDetails();
  EXPECT_TRUE(Enabled("actSyncMsgMode"));
  Trigger("actSyncMsgMode");
  EXPECT_TRUE(Checked("actSyncMsgMode"));
  EXPECT_TRUE(Enabled("actUpdateSyncMsg"));
  Viewer->SetActiveViewIndex(0);
  EXPECT_FALSE(Enabled("actViewModify"));
  EXPECT_FALSE(Enabled("actViewPrior"));
}

TEST_F(CommandTableTest, PaneAndColumnCommandsWithAFullSizeInspector) {
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "first"));
  FocusRow(0);
  EXPECT_FALSE(Enabled("actFullSizeInspector"));
  Trigger("actViewInspector");
  EXPECT_TRUE(Checked("actViewInspector"));
  EXPECT_TRUE(Enabled("actFullSizeInspector"));
  EXPECT_TRUE(Enabled("actCopyInspectorContents"));
  Trigger("actViewScratchPad");
  Trigger("actFullSizeInspector");
  EXPECT_TRUE(Checked("actFullSizeInspector"));
  for (const char* name : {"actViewInspector", "actViewScratchPad", "actViewCallStack", "actInspectorOnBottom"})
    EXPECT_FALSE(Enabled(name)) << name;
  EXPECT_FALSE(Checked("actViewScratchPad")) << "the full-size inspector hides the pad for the moment";
  Trigger("actFullSizeInspector");
  EXPECT_TRUE(Checked("actViewScratchPad"));
  EXPECT_TRUE(Enabled("actViewCallStack"));

  // Columns: the checks follow the bits, and the three time columns exclude each other.
  EXPECT_FALSE(Enabled("actHideExtraColumns"));
  Trigger("actViewTimeDiff");
  EXPECT_EQ(Viewer->GetColumnOptions(), 128);
  EXPECT_TRUE(Checked("actViewTimeDiff"));
  EXPECT_TRUE(Enabled("actHideExtraColumns"));
  Trigger("actViewTimeStamp");
  EXPECT_EQ(Viewer->GetColumnOptions(), 64);
  EXPECT_FALSE(Checked("actViewTimeDiff"));
  Trigger("actViewTimeStamp");
  EXPECT_EQ(Viewer->GetColumnOptions(), 0);
  Trigger("actViewThread");
  Trigger("actViewTimeOffset");
  EXPECT_EQ(Viewer->GetColumnOptions(), 16 | 256);
  // All details adds the first seven bits and keeps a time offset that is on.
  Trigger("actAllDetails");
  EXPECT_EQ(Viewer->GetColumnOptions(), 0x7F | 256);
  for (const char* name : {"actViewCategory", "actViewAppName", "actViewDate", "actViewTimeStamp", "actViewTimeOffset"})
    EXPECT_TRUE(Checked(name)) << name;
  Trigger("actHideExtraColumns");
  EXPECT_TRUE(Viewer->GetHideExtraColumns());
  EXPECT_TRUE(Checked("actHideExtraColumns"));
  Trigger("actViewMsgOnly");
  EXPECT_EQ(Viewer->GetColumnOptions(), 0);
  EXPECT_FALSE(Enabled("actHideExtraColumns"));
  EXPECT_FALSE(Checked("actViewCategory"));
}

TEST_F(CommandTableTest, StatesStandStillWhileALogIsRead) {
  std::string bytes;
  for (int i = 0; i < 3000; ++i) bytes += HandRecordText(ztmInfo, "record " + std::to_string(i));
  const fs::path log = MakeTempDir("commands") / "load.ztl";
  WriteFile(log, bytes);
  Viewer->LoadSliceMs = 0;
  int slices = 0;
  bool clearSeenOn = false;
  Viewer->OnLoadSlice = [&] {
    ++slices;
    // Rows are there now, but the commands that need rows keep the state they had before.
    Viewer->UpdateCommandStates();
    clearSeenOn = clearSeenOn || Enabled("actClear") || Enabled("actSave") || Enabled("actFind");
  };
  Viewer->LoadLogFile(QString::fromStdString(log.string()), false);
  Viewer->OnLoadSlice = nullptr;
  EXPECT_GT(slices, 1);
  EXPECT_GT(AllMessages().GetCount(), 0);
  EXPECT_FALSE(clearSeenOn);
  // The end of the load brings them up to date.
  EXPECT_TRUE(Enabled("actClear"));
  EXPECT_TRUE(Enabled("actSave"));
}

TEST_F(CommandTableTest, ToolbarsWrapAndKeepTheButtonsTheUserHid) {
  Viewer->resize(900, 600);
  Viewer->show();
  auto* bar = Viewer->findChild<TZTCommandBar*>(QStringLiteral("tbrMain"));
  ASSERT_NE(bar, nullptr);
  auto* open = bar->findChild<QToolButton*>(QStringLiteral("actOpen"));
  ASSERT_NE(open, nullptr);
  EXPECT_EQ(open->defaultAction(), A("actOpen"));
  // Unwrapped, a narrow bar keeps one row and hides what does not fit behind its last button.
  const int oneRow = bar->sizeHint().height();
  bar->resize(200, oneRow);
  EXPECT_FALSE(bar->OverflowItems().empty());
  EXPECT_EQ(bar->heightForWidth(200), oneRow);
  Trigger("actWrapButtons");
  EXPECT_TRUE(Checked("actWrapButtons"));
  EXPECT_TRUE(bar->hasHeightForWidth());
  EXPECT_GT(bar->heightForWidth(200), 2 * oneRow - 8);
  EXPECT_EQ(bar->heightForWidth(bar->sizeHint().width()), oneRow);

  // The customising dialog: unticking a button hides it, and the choice goes into the settings.
  FPrompts->DialogHandler = [](QDialog& dialog) {
    auto* form = dynamic_cast<TfrmCustomizeToolbars*>(&dialog);
    EXPECT_NE(form, nullptr);
    if (!form) return int(QDialog::Rejected);
    QListWidget* mainList = form->List(0);
    for (int i = 0; i < mainList->count(); ++i)
      if (mainList->item(i)->data(Qt::UserRole).toString() == "actRefresh") mainList->item(i)->setCheckState(Qt::Unchecked);
    return int(QDialog::Accepted);
  };
  Trigger("actCustomizeToolbars");
  EXPECT_TRUE(bar->HiddenItems().contains("actRefresh"));
  EXPECT_TRUE(bar->findChild<QToolButton*>("actRefresh")->isHidden());
  EXPECT_TRUE(A("actRefresh")->isVisible()) << "the command itself stays in its menu";

  // A restart: the window writes its settings and the next one reads them.
  Viewer.reset();
  EXPECT_EQ(ViewerSettings().ReadString("Toolbars", "tbrMainHidden", ""), "actRefresh");
  EXPECT_TRUE(ViewerSettings().ReadBool("Display", "WrapButtons", false));
  Viewer = std::make_unique<TFrmViewer>();
  auto* again = Viewer->findChild<TZTCommandBar*>(QStringLiteral("tbrMain"));
  EXPECT_TRUE(again->HiddenItems().contains("actRefresh"));
  EXPECT_TRUE(again->Wrap());
  EXPECT_TRUE(Checked("actWrapButtons"));
}
