// The main window's settings over a real file in the test's data folder: what a start reads, what a
// close writes, and that the next start gets back exactly that.
#include <gtest/gtest.h>

#include <QFontDatabase>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QProcess>
#include <QScreen>
#include <QSplitter>
#include <QTabBar>
#include <QTableWidget>
#include <QHeaderView>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "ShellFixture.h"
#include "TestEnvironment.h"
#include "ZTInspectorPane.h"
#include "ZTMsgViewForms.h"
#include "ZTNavigator.h"
#include "ZTSettingsStore.h"

namespace fs = std::filesystem;
using namespace zentrail;
using namespace zentrail::test;
using Strings = std::vector<std::string>;

namespace {

const char* const kViewer = ZENTRAIL_BINARY_DIR "/src/shell/zentrail-viewer";

fs::path SettingsFile() { return fs::path(std::getenv("XDG_DATA_HOME")) / "Orvan/Zentrail/5.0/ZTLiveViewer.ini"; }

// Without a stored position the window takes a good share of the screen, in its middle.
bool FirstRunPlacement(const QRect& rect) {
  const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
  return area.contains(rect) && rect.width() >= area.width() * 3 / 4 && rect.height() >= area.height() * 3 / 4 &&
         (rect.center() - area.center()).manhattanLength() <= 2;
}

// Starts and closes windows the way the program does: the object is read from the file before
// the window exists and goes to disk after the window is gone.
class SettingsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ViewClasses().Register(QString::fromLatin1(TZTMessageView::ViewClassKey), &TZTMessageView::Create);
    MessageSet.Close();
    MessageSet.Open();
    FPrompts = std::make_unique<TZTRecordingPromptService>();
    FGuard = std::make_unique<TZTPromptServiceGuard>(FPrompts.get());
    std::error_code ec;
    fs::remove(SettingsFile(), ec);
  }
  void TearDown() override {
    Viewer.reset();
    FGuard.reset();
    ViewerSettings().Clear();
  }

  // A start over the file as it is (or with this text as the file).
  void Start() {
    LoadViewerSettings();
    Viewer = std::make_unique<TFrmViewer>();
  }
  void Start(const std::string& fileText) {
    fs::create_directories(SettingsFile().parent_path());
    WriteFile(SettingsFile(), fileText);
    Start();
  }
  void Close() {
    Viewer.reset();
    std::string error;
    ASSERT_TRUE(FlushViewerSettings(error)) << error;
  }
  QSplitter* Splitter(const char* name) { return Viewer->findChild<QSplitter*>(QString::fromLatin1(name)); }
  TZTIniFile OnDisk() { return TZTIniFile(SettingsFile().string()); }

  std::unique_ptr<TZTRecordingPromptService> FPrompts;
  std::unique_ptr<TZTPromptServiceGuard> FGuard;
  std::unique_ptr<TFrmViewer> Viewer;
};

}  // namespace

TEST_F(SettingsTest, FirstRunHasTheDefaultsAndWritesEverySection) {
  Start();
  EXPECT_TRUE(FirstRunPlacement(Viewer->geometry()));
  const QRect firstRun = Viewer->geometry();
  EXPECT_FALSE(Viewer->PaneVisible(TZTPane::Inspector));
  EXPECT_FALSE(Viewer->PaneVisible(TZTPane::CallStack));
  EXPECT_FALSE(Viewer->PaneVisible(TZTPane::ScratchPad));
  EXPECT_EQ(Viewer->GetColumnOptions(), 0);
  EXPECT_TRUE(Viewer->GetAutoScroll());
  EXPECT_TRUE(Viewer->GetRowShading());
  EXPECT_EQ(Viewer->GetRowShadingColor(), clBtnShadow);
  EXPECT_EQ(Viewer->GetMarkerColor(), 0x00E6D8AD);
  EXPECT_EQ(Viewer->Navigator().NavigatorMsgType(), 3);
  EXPECT_EQ(Viewer->Navigator().NavigatorMsgContent(), 7);
  EXPECT_TRUE(Viewer->Navigator().FindInDetails);
  EXPECT_EQ(Viewer->MessageFontSetting(), (TZTFontSetting{QStringLiteral("Verdana"), 8, 0, 0}));
  EXPECT_GE(Viewer->GetRowHeight(), 15);
  const TZTMsgTypeStyle warning = Viewer->GetMsgTypeStyle(1);
  EXPECT_TRUE(warning.UseDefault);
  EXPECT_EQ(warning.Color, clWindowText);
  Close();

  ASSERT_TRUE(fs::exists(SettingsFile()));
  TZTIniFile disk = OnDisk();
  EXPECT_EQ(disk.ReadSections(), (Strings{"Position", "Organizer", "Display", "General", "MessageFont",
                                          "InspectorFont", "InspectorFixedFont", "FontStyles", "Find"}));
  EXPECT_EQ(disk.ReadString("Position", "Right", ""), std::to_string(firstRun.right() + 1));
  // Colours are signed decimal: a system colour is negative.
  EXPECT_EQ(disk.ReadString("Display", "RowShadingColor", ""), "-16777200");
  EXPECT_EQ(disk.ReadString("Display", "MarkerColor", ""), "15128749");
  EXPECT_EQ(disk.ReadString("FontStyles", "WarningColor", ""), "-16777208");
  EXPECT_EQ(disk.ReadSection("MessageFont"), (Strings{"Name", "Size", "Color", "Style"}));
  EXPECT_EQ(disk.ReadSection("FontStyles").size(), 35u * 3u);
  EXPECT_EQ(disk.ReadString("General", "PrintFontSize", ""), "8");
}

TEST_F(SettingsTest, ASecondStartReadsBackWhatTheFirstWrote) {
  // Keys this version has no feature for come back as they were.
  Start("[Organizer]\nCategory=1\nThreadName=1\nAutoOrganize=1\n"
        "[General]\nLastProject=/home/u/p.ztp\nLastLogDir=/logs\nPrintSelection=0\nPrintFontSize=11\n");
  Viewer->show();
  Viewer->setGeometry(QRect(60, 50, 1000, 700));
  Viewer->SetPaneVisible(TZTPane::Inspector, true);
  Viewer->SetPaneVisible(TZTPane::CallStack, true);
  Viewer->SetPaneVisible(TZTPane::ScratchPad, true);
  Viewer->SetDetailPanelVisible(true);
  ASSERT_TRUE(SpinUntil([&] { return Splitter("splMain")->width() > 900; }));
  Splitter("splMain")->setSizes({700, 295});
  Splitter("splRight")->setSizes({400, 200});
  Viewer->SetColumnOptions(1 | 4 | 16 | 128);
  Viewer->SetHideExtraColumns(true);
  Viewer->SetAutoCollapse(false);
  Viewer->SetFlattenStructure(true);
  Viewer->IdleTime = 42;
  Viewer->SoundEffectFile = QStringLiteral("/usr/share/sounds/zoë.wav");
  Viewer->SetMessageFont({QStringLiteral("No Such Face Anywhere"), 11, 0x000000FF, ztStyleBold | ztStyleItalic});
  Viewer->SetInspectorFixedFont({QStringLiteral("Monospace"), 13, 0, ztStyleUnderline});
  TFrmViewer::TZTDisplayColors colors = Viewer->DisplayColors();
  colors.Marker = 0x00123456;
  colors.RowShading = false;
  colors.Highlight = static_cast<TColor>(0xFF00000D);
  Viewer->SetDisplayColors(colors);
  Viewer->MsgTypeStyles[2] = TZTMsgTypeStyle{false, 0x000000C0, fsBold | fsStrikeOut};
  Viewer->MsgTypeStyles[44] = TZTMsgTypeStyle{false, 0x00FF0000, fsUnderline};
  Viewer->MsgTypeStylesChanged();
  Viewer->Navigator().SetNavigatorMsgType(2);
  Viewer->Navigator().SetTimeDiffNavThreshold(250);
  Viewer->Navigator().FindForward = false;
  Viewer->Navigator().ConfirmOnClearBookmarks = false;
  TZTInspectorDisplaySettings inspectors = Viewer->InspectorPane()->GetDisplaySettings();
  inspectors.TextWordWrap = true;
  inspectors.DisplayType = 2;
  Viewer->InspectorPane()->SetDisplaySettings(inspectors);
  const QList<int> mainSizes = Splitter("splMain")->sizes(), rightSizes = Splitter("splRight")->sizes();
  Close();
  const std::string firstFile = ReadFile(SettingsFile());

  Start();
  Viewer->show();
  EXPECT_EQ(Viewer->geometry(), QRect(60, 50, 1000, 700));
  EXPECT_TRUE(Viewer->PaneVisible(TZTPane::Inspector));
  EXPECT_TRUE(Viewer->PaneVisible(TZTPane::CallStack));
  EXPECT_TRUE(Viewer->PaneVisible(TZTPane::ScratchPad));
  ASSERT_TRUE(SpinUntil([&] { return Splitter("splMain")->width() > 900; }));
  EXPECT_EQ(Splitter("splMain")->sizes().value(1), mainSizes.value(1));
  EXPECT_EQ(Splitter("splRight")->sizes().value(1), rightSizes.value(1));
  EXPECT_EQ(Viewer->GetColumnOptions(), 1 | 4 | 16 | 128);
  EXPECT_TRUE(Viewer->GetHideExtraColumns());
  EXPECT_FALSE(Viewer->GetAutoCollapse());
  EXPECT_TRUE(Viewer->GetFlattenStructure());
  EXPECT_EQ(Viewer->IdleTime, 42);
  EXPECT_EQ(Viewer->SoundEffectFile, QStringLiteral("/usr/share/sounds/zoë.wav"));
  EXPECT_EQ(Viewer->MessageFontSetting(),
            (TZTFontSetting{QStringLiteral("No Such Face Anywhere"), 11, 0x000000FF, ztStyleBold | ztStyleItalic}));
  // The missing face falls back to the system's font, with the size and style asked for.
  const QFont messageFont = Viewer->GetFont(ztFontMessage);
  EXPECT_EQ(messageFont.family(), QFontDatabase::systemFont(QFontDatabase::GeneralFont).family());
  EXPECT_EQ(messageFont.pointSize(), 11);
  EXPECT_TRUE(messageFont.bold() && messageFont.italic() && !messageFont.underline());
  EXPECT_EQ(Viewer->InspectorFixedFontSetting().Style, ztStyleUnderline);
  EXPECT_TRUE(Viewer->GetFont(ztFontInspectorFixed).underline());
  EXPECT_EQ(Viewer->GetMarkerColor(), 0x00123456);
  EXPECT_FALSE(Viewer->GetRowShading());
  EXPECT_EQ(Viewer->GetHighlightColor(), static_cast<TColor>(0xFF00000D));
  const TZTMsgTypeStyle error = Viewer->GetMsgTypeStyle(2), hierarchy = Viewer->GetMsgTypeStyle(44);
  EXPECT_FALSE(error.UseDefault);
  EXPECT_EQ(error.Color, 0x000000C0);
  EXPECT_EQ(error.Style, fsBold | fsStrikeOut);
  EXPECT_EQ(hierarchy.Style, fsUnderline);
  // Entry 0 follows the message font.
  EXPECT_EQ(Viewer->GetMsgTypeStyle(0).Color, 0x000000FF);
  EXPECT_EQ(Viewer->GetMsgTypeStyle(0).Style, fsBold | fsItalic);
  EXPECT_EQ(Viewer->Navigator().NavigatorMsgType(), 2);
  EXPECT_EQ(Viewer->Navigator().TimeDiffNavThreshold(), 250);
  EXPECT_FALSE(Viewer->Navigator().FindForward);
  EXPECT_FALSE(Viewer->Navigator().ConfirmOnClearBookmarks);
  EXPECT_TRUE(Viewer->InspectorPane()->GetDisplaySettings().TextWordWrap);
  EXPECT_EQ(Viewer->InspectorPane()->GetDisplaySettings().DisplayType, 2);
  EXPECT_EQ(Viewer->OrganizeBy, 2 | 8);
  EXPECT_TRUE(Viewer->AutoOrganize);
  EXPECT_EQ(Viewer->LastProject, QStringLiteral("/home/u/p.ztp"));
  EXPECT_FALSE(Viewer->PrintSelection);
  // The views take the hidden columns as none (the set itself stays), and they follow a change.
  auto* view = dynamic_cast<TZTMessageView*>(Viewer->GetViewIntf(0));
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(view->ColumnOptions(), 0);
  Viewer->SetHideExtraColumns(false);
  EXPECT_EQ(view->ColumnOptions(), 1 | 4 | 16 | 128);
  Viewer->SetHideExtraColumns(true);
  Close();

  // Nothing changed in the second run, so nothing changed in the file.
  EXPECT_EQ(ReadFile(SettingsFile()), firstFile);
  TZTIniFile disk = OnDisk();
  EXPECT_EQ(disk.ReadString("MessageFont", "Style", ""), "12");
  EXPECT_EQ(disk.ReadString("FontStyles", "ErrorStyle", ""), "9");
  EXPECT_EQ(disk.ReadString("General", "LastLogDir", ""), "/logs");
  EXPECT_EQ(disk.ReadString("General", "PrintFontSize", ""), "11");
}

TEST_F(SettingsTest, PositionOnNoMonitorMovesToTheOriginAndMaximizedKeepsTheRestoredRectangle) {
  const QRect screen = QGuiApplication::primaryScreen()->geometry();
  Start("[Position]\nLeft=-5000\nTop=-4000\nRight=-4200\nBottom=-3400\n");
  EXPECT_EQ(Viewer->geometry(), QRect(0, 0, 800, 600));
  Viewer.reset();

  // A corner on the monitor stays, even where the rest of the window is off it.
  const int x = screen.right() - 100, y = screen.top() + 30;
  Start("[Position]\nLeft=" + std::to_string(x) + "\nTop=" + std::to_string(y) + "\nRight=" +
        std::to_string(x + 640) + "\nBottom=" + std::to_string(y + 480) + "\nMaximized=1\n");
  Viewer->show();
  EXPECT_TRUE(Viewer->isMaximized());
  Close();
  TZTIniFile disk = OnDisk();
  EXPECT_EQ(disk.ReadInteger("Position", "Left", 0), x);
  EXPECT_EQ(disk.ReadInteger("Position", "Top", 0), y);
  EXPECT_EQ(disk.ReadInteger("Position", "Right", 0), x + 640);
  EXPECT_EQ(disk.ReadInteger("Position", "Bottom", 0), y + 480);
  EXPECT_TRUE(disk.ReadBool("Position", "Maximized", false));
}

TEST_F(SettingsTest, OnlyTheFirstTimeColumnCounts) {
  struct Case {
    const char* Keys;
    uint16_t Columns;
  };
  const Case cases[] = {
      {"TimeStamp=1\nTimeDiff=1\n", 64},
      {"TimeDiff=1\nTimeOffset=1\n", 128},
      {"TimeStamp=0\nTimeDiff=0\nTimeOffset=1\nDate=1\n", 256 | 32},
      {"TimeStamp=yes\nTimeDiff=1\n", 128},  // not a bool: the default, false
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.Keys);
    Start(std::string("[Display]\n") + c.Keys);
    EXPECT_EQ(Viewer->GetColumnOptions(), c.Columns);
    Close();
    TZTIniFile disk = OnDisk();
    EXPECT_EQ(disk.ReadBool("Display", "TimeStamp", true), (c.Columns & 64) != 0);
    EXPECT_EQ(disk.ReadBool("Display", "TimeDiff", true), (c.Columns & 128) != 0);
    EXPECT_EQ(disk.ReadBool("Display", "TimeOffset", true), (c.Columns & 256) != 0);
  }
}

TEST_F(SettingsTest, DamagedFilesAndWrongTypesGiveDefaults) {
  // A cut file still gives what it holds before the cut.
  const std::pair<std::string, QRect> files[] = {
      {std::string(), QRect()},
      {std::string("\x01\x02\xFF\xFE\n[[[\n=x\n\0\0", 16), QRect()},
      {"[Position]\nLeft=30\nTop=40\nRig", QRect(30, 40, 760, 380)},
  };
  for (const auto& [text, rect] : files) {
    SCOPED_TRACE(testing::PrintToString(text));
    Start(text);
    // A null rectangle: no position in the file, so the first run's placement.
    if (rect.isNull()) {
      EXPECT_TRUE(FirstRunPlacement(Viewer->geometry()));
    } else {
      EXPECT_EQ(Viewer->geometry(), rect);
    }
    EXPECT_EQ(Viewer->GetColumnOptions(), 0);
    Viewer.reset();
  }
  Start("[Position]\nLeft=abc\nTop=1e3\nRight=\nMaximized=2x\n"
        "[Display]\nMarkerColor=blue\nRowShading=maybe\nCategory=1\nAppName=true\nInspector=ja\n"
        "[General]\nIdleTime=10s\nNavigatorMsgType=three\nAutoScroll=0\n"
        "[MessageFont]\nSize=big\nStyle=bold\n[FontStyles]\nWarningUseDefault=no\nWarningColor=red\n");
  EXPECT_EQ(Viewer->geometry(), QRect(20, 20, 770, 400));
  EXPECT_FALSE(Viewer->isMaximized());
  EXPECT_EQ(Viewer->GetMarkerColor(), 0x00E6D8AD);
  EXPECT_TRUE(Viewer->GetRowShading());
  EXPECT_EQ(Viewer->GetColumnOptions(), 1 | 2);
  EXPECT_FALSE(Viewer->PaneVisible(TZTPane::Inspector));
  EXPECT_EQ(Viewer->IdleTime, 10);
  EXPECT_EQ(Viewer->Navigator().NavigatorMsgType(), 3);
  EXPECT_FALSE(Viewer->GetAutoScroll());  // the well-typed neighbour still counts
  EXPECT_EQ(Viewer->MessageFontSetting().Size, 8);
  EXPECT_EQ(Viewer->MessageFontSetting().Style, 0);
  EXPECT_TRUE(Viewer->GetMsgTypeStyle(1).UseDefault);
  EXPECT_EQ(Viewer->GetMsgTypeStyle(1).Color, clWindowText);
}

TEST_F(SettingsTest, AFarPaneKeepsItsSizeInAWiderWindow) {
  Start("[Position]\nLeft=10\nTop=10\nRight=910\nBottom=610\n[Display]\nInspector=1\nCallStack=1\n");
  Viewer->show();
  ASSERT_TRUE(SpinUntil([&] { return Splitter("splMain")->width() > 800; }));
  Splitter("splMain")->setSizes({Splitter("splMain")->width() - 200 - Splitter("splMain")->handleWidth(), 200});
  ASSERT_EQ(Splitter("splMain")->sizes().value(1), 200);
  const int designRight = Splitter("splRight")->sizes().value(1);
  Close();
  TZTIniFile disk = OnDisk();
  EXPECT_EQ(disk.ReadInteger("Display", "MainSplitFixed", 0), 200);

  // Wider and taller: the right-hand pane is 200 wide again, the views took the rest.
  disk.WriteInteger("Position", "Right", 1510);
  disk.WriteInteger("Position", "Bottom", 910);
  disk.UpdateFile();
  Start();
  Viewer->show();
  ASSERT_TRUE(SpinUntil([&] { return Splitter("splMain")->width() > 1400; }));
  EXPECT_EQ(Splitter("splMain")->sizes().value(1), 200);
  EXPECT_GT(Splitter("splMain")->sizes().value(0), 1100);
  // The call stack, stored as it was, keeps its height too.
  EXPECT_EQ(Splitter("splRight")->sizes().value(1), designRight);

  // A full-size inspector fills the window only for the moment.
  Viewer->SetFullSizeInspector(true);
  ASSERT_TRUE(Viewer->FullSizeInspector());
  ASSERT_TRUE(SpinUntil([&] { return Splitter("splMain")->sizes().value(0) == 0; }));
  Viewer->SaveSettings();
  EXPECT_EQ(ViewerSettings().ReadInteger("Display", "MainSplitFixed", 0), 200);
  Viewer->SetFullSizeInspector(false);

  // A pane hidden at exit keeps the size it was last seen with, and has it when it is shown.
  Viewer->SetPaneVisible(TZTPane::Inspector, false);
  Viewer->SetPaneVisible(TZTPane::CallStack, false);
  Close();
  EXPECT_EQ(OnDisk().ReadInteger("Display", "MainSplitFixed", 0), 200);
  Start();
  Viewer->show();
  ASSERT_TRUE(SpinUntil([&] { return Viewer->PaneWidget(QStringLiteral("nbkViews"))->width() > 1400; }));
  Viewer->SetPaneVisible(TZTPane::Inspector, true);
  ASSERT_TRUE(SpinUntil([&] { return Splitter("splMain")->sizes().value(1) > 0; }));
  EXPECT_EQ(Splitter("splMain")->sizes().value(1), 200);
}

TEST_F(SettingsTest, MessageFontSetsTheRowHeightsAndInspectorsTakeTheirFonts) {
  Start("[MessageFont]\nSize=30\n[InspectorFont]\nSize=14\nStyle=4\n");
  const int big = QFontMetrics(Viewer->GetFont(ztFontMessage)).height();
  ASSERT_GT(big, 15);
  EXPECT_EQ(Viewer->GetRowHeight(), big);
  EXPECT_EQ(Viewer->PaneWidget(QStringLiteral("pnlTabSet"))->maximumHeight(), big + 10);
  EXPECT_EQ(Viewer->PaneWidget(QStringLiteral("tabViews"))->maximumHeight(), big + 6);
  EXPECT_EQ(Viewer->ScratchPadGrid()->verticalHeader()->defaultSectionSize(), big + 1);
  EXPECT_EQ(Viewer->PaneWidget(QStringLiteral("pnlCallStackHeader"))->maximumHeight(), big + 1);
  EXPECT_EQ(Viewer->GetFont(ztFontInspector).pointSize(), 14);
  EXPECT_TRUE(Viewer->GetFont(ztFontInspector).italic());
  Viewer.reset();

  // A tiny font still gives rows of 15.
  Start("[MessageFont]\nSize=3\n");
  EXPECT_EQ(Viewer->GetRowHeight(), 15);

  // The scratch pad's name column fits the widest name when the font changes.
  const QString name = QStringLiteral("a rather long scratch pad line name");
  Viewer->SetScratchPadLine(name, QStringLiteral("1"));
  Viewer->SetMessageFont({QStringLiteral("Verdana"), 20, 0, 0});
  EXPECT_GE(Viewer->ScratchPadGrid()->columnWidth(1),
            QFontMetrics(Viewer->ScratchPadGrid()->font()).horizontalAdvance(name) + 10);
}

TEST_F(SettingsTest, FindHistoryReachesTheDiskAtOnceWithTheSettingsAsTheyWereAtStart) {
  Start("[Position]\nLeft=33\nTop=44\nRight=833\nBottom=644\n[Find]\nFindFromCursor=1\n");
  EXPECT_TRUE(Viewer->Navigator().FindFromCursor);
  Viewer->setGeometry(QRect(100, 100, 500, 500));  // the window's state goes to the object only at close
  QString error;
  ASSERT_TRUE(StoreFindTextHistory({QStringLiteral("needle"), QStringLiteral("hay")}, error))
      << error.toStdString();
  TZTIniFile disk = OnDisk();
  EXPECT_EQ(disk.ReadInteger("Position", "Left", 0), 33);
  EXPECT_TRUE(disk.ReadBool("Find", "FindFromCursor", false));
  EXPECT_EQ(ReadFindHistory(disk), (Strings{"needle", "hay"}));
  Close();
  EXPECT_EQ(ReadFindHistory(OnDisk()), (Strings{"needle", "hay"}));
  EXPECT_EQ(OnDisk().ReadInteger("Position", "Left", 0), 100);
}

// The built program: a SIGTERM closes it by the ordinary path, which writes the file, and the next
// run writes back exactly what it read.
TEST(SettingsProcess, ViewerEndedBySigtermWritesItsSettings) {
  ASSERT_TRUE(fs::exists(kViewer)) << kViewer;
  fs::path home = MakeTempDir("settings-home");
  fs::path runtime = home / "run";
  fs::create_directories(runtime);
  fs::permissions(runtime, fs::perms::owner_all, fs::perm_options::replace);
  fs::path file = home / "data/Orvan/Zentrail/5.0/ZTLiveViewer.ini";
  fs::create_directories(file.parent_path());
  TZTIniFile start;
  start.LoadFromString("[Organizer]\nComputerName=1\n[General]\nLastProjectDir=/somewhere/projects\n"
                       "[Display]\nTimeStamp=1\nTimeDiff=1\n[Unknown]\nKept=yes\n");
  WriteFile(file, start.ToString());
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert(QStringLiteral("HOME"), QString::fromStdString(home.string()));
  env.insert(QStringLiteral("XDG_DATA_HOME"), QString::fromStdString((home / "data").string()));
  env.insert(QStringLiteral("ZENTRAIL_RUNTIME_DIR"), QString::fromStdString(runtime.string()));
  env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
  const std::string socket = (runtime / "viewer").string();
  auto answers = [&] {
    std::string error;
    int fd = ConnectUnixSocket(socket, error);
    if (fd >= 0) ::close(fd);
    return fd >= 0;
  };
  auto startViewer = [&](QProcess& viewer) {
    viewer.setProcessEnvironment(env);
    viewer.start(QString::fromLatin1(kViewer), {});
    return viewer.waitForStarted(10000) && SpinUntil(answers, 20000);
  };
  QProcess viewer;
  ASSERT_TRUE(startViewer(viewer)) << "the viewer never listened";
  // A second instance ends at once and leaves the file as it found it.
  QProcess second;
  second.setProcessEnvironment(env);
  second.start(QString::fromLatin1(kViewer), {});
  ASSERT_TRUE(second.waitForFinished(10000));
  EXPECT_EQ(second.exitCode(), 0);
  EXPECT_EQ(ReadFile(file), start.ToString());

  viewer.terminate();
  ASSERT_TRUE(viewer.waitForFinished(10000));
  EXPECT_EQ(viewer.exitCode(), 0);
  const std::string written = ReadFile(file);
  TZTIniFile disk(file.string());
  EXPECT_TRUE(disk.ReadBool("Organizer", "ComputerName", false));
  EXPECT_EQ(disk.ReadString("General", "LastProjectDir", ""), "/somewhere/projects");
  EXPECT_EQ(disk.ReadString("Unknown", "Kept", ""), "yes");
  EXPECT_EQ(disk.ReadString("Display", "TimeDiff", ""), "0");
  EXPECT_TRUE(disk.SectionExists("FontStyles"));
  EXPECT_TRUE(disk.ValueExists("Position", "Maximized"));

  QProcess again;
  ASSERT_TRUE(startViewer(again)) << "the second run never listened";
  again.terminate();
  ASSERT_TRUE(again.waitForFinished(10000));
  EXPECT_EQ(ReadFile(file), written);
}
