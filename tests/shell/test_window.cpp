// The main window: pane rules, layout modes, position commands, status panes, keys, files and
// what it looks like with a real load of messages.
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QKeyEvent>
#include <QLabel>
#include <QMimeData>
#include <QListWidget>
#include <QScreen>
#include <QSplitter>
#include <QTableWidget>
#include <set>

#include "ShellFixture.h"
#include "ZTInspectorPane.h"
#include "TestEnvironment.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

class TViewerWithLoader : public TFrmViewer {
 public:
  using TFrmViewer::TFrmViewer;
  void LoadLogFile(const QString& fileName, bool append) override { Loaded.append({fileName, append}); }
  QList<QPair<QString, bool>> Loaded;
};

}  // namespace

class WindowTest : public ShellFixture {
 protected:
  bool Shown(const char* name) {
    QWidget* w = Viewer->PaneWidget(QString::fromLatin1(name));
    EXPECT_NE(w, nullptr) << name;
    return w && !w->isHidden();
  }
  bool Checked(const char* action) { return Viewer->Action(QString::fromLatin1(action))->isChecked(); }
  bool Enabled(const char* action) { return Viewer->Action(QString::fromLatin1(action))->isEnabled(); }
};

TEST_F(WindowTest, PaneRulesKeepTheRightColumnExactlyWhileItShowsSomething) {
  // The window is the application that views ask, for exactly its own lifetime.
  EXPECT_EQ(ZentrailApplication(), static_cast<IZentrailApplication*>(Viewer.get()));
  EXPECT_EQ(Viewer->windowTitle(), "Zentrail Live Viewer");
  EXPECT_EQ(AllMessages().GetName(), "All Messages");
  // A first run shows no inspector, no call stack and no scratch pad.
  EXPECT_FALSE(Shown("splRight"));
  EXPECT_FALSE(Shown("pnlLeftLower"));
  EXPECT_FALSE(Shown("pnlTabSet")) << "the tab strip is hidden while only one view exists";
  EXPECT_FALSE(Shown("pnlMsgDetails"));

  Viewer->SetPaneVisible(TZTPane::Inspector, true);
  EXPECT_TRUE(Shown("splRight"));
  EXPECT_TRUE(Shown("pnlRightUpper"));
  EXPECT_TRUE(Checked("actViewInspector"));
  Viewer->SetPaneVisible(TZTPane::CallStack, true);
  Viewer->SetPaneVisible(TZTPane::Inspector, false);
  EXPECT_TRUE(Shown("splRight")) << "the call stack keeps the column";
  Viewer->SetPaneVisible(TZTPane::CallStack, false);
  EXPECT_FALSE(Shown("splRight")) << "inspector and call stack off: the whole column goes";
  Viewer->SetPaneVisible(TZTPane::ScratchPad, true);
  EXPECT_TRUE(Shown("pnlLeftLower"));
  EXPECT_FALSE(Shown("splRight"));
  EXPECT_EQ(Viewer->PaneWidget("pnlScratchPad")->parentWidget(), Viewer->PaneWidget("pnlLeftLower"));

  // Inspector on bottom: the inspector goes under the views, the scratch pad to the right.
  Viewer->SetPaneVisible(TZTPane::Inspector, true);
  Viewer->SetInspectorOnBottom(true);
  EXPECT_EQ(Viewer->PaneWidget("pnlInspector")->parentWidget(), Viewer->PaneWidget("pnlLeftLower"));
  EXPECT_EQ(Viewer->PaneWidget("pnlScratchPad")->parentWidget(), Viewer->PaneWidget("pnlRightUpper"));
  EXPECT_TRUE(Shown("pnlLeftLower"));
  EXPECT_TRUE(Shown("splRight")) << "the scratch pad is on";
  Viewer->SetPaneVisible(TZTPane::ScratchPad, false);
  EXPECT_FALSE(Shown("splRight")) << "scratch pad and call stack off in bottom mode: the column goes";
  Viewer->SetPaneVisible(TZTPane::CallStack, true);
  EXPECT_TRUE(Shown("splRight"));
  Viewer->SetPaneVisible(TZTPane::CallStack, false);
  EXPECT_FALSE(Shown("splRight"));
  Viewer->SetInspectorOnBottom(false);
  EXPECT_EQ(Viewer->PaneWidget("pnlInspector")->parentWidget(), Viewer->PaneWidget("pnlRightUpper"));
  EXPECT_TRUE(Shown("splRight"));
  EXPECT_FALSE(Shown("pnlLeftLower"));
}

TEST_F(WindowTest, FullSizeInspectorRestoresThePanesAsTheyWere) {
  EXPECT_FALSE(Enabled("actFullSizeInspector")) << "only while the inspector is on";
  Viewer->SetPaneVisible(TZTPane::Inspector, true);
  Viewer->SetPaneVisible(TZTPane::CallStack, true);
  Viewer->SetPaneVisible(TZTPane::ScratchPad, false);
  ASSERT_TRUE(Enabled("actFullSizeInspector"));
  Viewer->Action("actFullSizeInspector")->trigger();
  EXPECT_TRUE(Viewer->FullSizeInspector());
  EXPECT_FALSE(Shown("pnlCallStack"));
  EXPECT_FALSE(Shown("splLeft")) << "the views give their room to the inspector";
  for (const char* a : {"actViewInspector", "actViewCallStack", "actViewScratchPad", "actInspectorOnBottom"})
    EXPECT_FALSE(Enabled(a)) << a;
  // Leaving restores what was on before, not what the settings say.
  Viewer->Action("actFullSizeInspector")->trigger();
  EXPECT_FALSE(Viewer->FullSizeInspector());
  EXPECT_TRUE(Shown("pnlCallStack"));
  EXPECT_FALSE(Viewer->PaneVisible(TZTPane::ScratchPad));
  EXPECT_TRUE(Shown("splLeft"));
  EXPECT_TRUE(Enabled("actViewCallStack"));

  // In bottom mode only the upper left pane (the views) is hidden.
  Viewer->SetInspectorOnBottom(true);
  Viewer->SetPaneVisible(TZTPane::ScratchPad, true);
  Viewer->SetFullSizeInspector(true);
  EXPECT_FALSE(Shown("pnlViews"));
  EXPECT_TRUE(Shown("splLeft"));
  EXPECT_FALSE(Viewer->PaneVisible(TZTPane::ScratchPad));
  Viewer->SetFullSizeInspector(false);
  EXPECT_TRUE(Shown("pnlViews"));
  EXPECT_TRUE(Viewer->PaneVisible(TZTPane::ScratchPad));
  EXPECT_TRUE(Viewer->PaneVisible(TZTPane::CallStack));
}

TEST_F(WindowTest, PositionCommandsUseTheWorkArea) {
  Viewer->show();
  QRect area = Viewer->screen()->availableGeometry();
  Viewer->resize(500, 300);
  const QSize size = Viewer->frameGeometry().size();
  Viewer->Action("actPosUpperRight")->trigger();
  QRect frame = Viewer->frameGeometry();
  EXPECT_EQ(frame.right() + 1, area.right() + 1);
  EXPECT_EQ(frame.top(), area.top());
  EXPECT_EQ(frame.size(), size);
  Viewer->Action("actPosLowerLeft")->trigger();
  frame = Viewer->frameGeometry();
  EXPECT_EQ(frame.left(), area.left());
  EXPECT_EQ(frame.bottom() + 1, area.bottom() + 1);
  // The edge commands take the raw coordinate as the new size.
  Viewer->Action("actPosLeft")->trigger();
  frame = Viewer->frameGeometry();
  EXPECT_EQ(frame.topLeft(), area.topLeft());
  EXPECT_EQ(frame.height(), area.bottom() + 1);
  EXPECT_EQ(frame.width(), size.width());
  Viewer->Action("actPosBottom")->trigger();
  frame = Viewer->frameGeometry();
  EXPECT_EQ(frame.width(), area.right() + 1);
  EXPECT_EQ(frame.left(), area.left());

  Viewer->Action("actAlwaysOnTop")->trigger();
  EXPECT_TRUE(Viewer->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
  EXPECT_TRUE(ztAlwaysOnTop);
  EXPECT_TRUE(Checked("actAlwaysOnTop"));
  Viewer->Action("actAlwaysOnTop")->trigger();
  EXPECT_FALSE(Viewer->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
  EXPECT_FALSE(ztAlwaysOnTop);
}

TEST_F(WindowTest, StatusPanesAndCommandStates) {
  EXPECT_EQ(Viewer->StatusText("stsMsgNum"), "#0");
  EXPECT_EQ(Viewer->StatusText("stsMsgCount"), "0 out of 0 Messages");
  EXPECT_FALSE(Enabled("actClear"));
  for (int i = 0; i < 1500; ++i) Viewer->ProcessMessage(MakeMessage(ztmInfo, "m" + std::to_string(i)));
  // The live road leaves command states alone; the next explicit update brings them.
  EXPECT_EQ(Viewer->StatusText("stsMsgCount"), "0 out of 0 Messages");
  Viewer->UpdateCommandStates();
  EXPECT_EQ(Viewer->StatusText("stsMsgCount"), "1,500 out of 1,500 Messages");
  EXPECT_TRUE(Enabled("actClear"));
  auto* pane = Viewer->findChild<QLabel*>("stsMsgCount");
  ASSERT_NE(pane, nullptr);
  int textWidth = pane->fontMetrics().horizontalAdvance(pane->text());
  EXPECT_GE(pane->width(), textWidth + 10);
  EXPECT_LE(pane->width(), textWidth + 20);

  // Blocking is a checked command with Ctrl+B.
  QAction* block = Viewer->Action("actBlockMessages");
  EXPECT_EQ(block->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_B));
  block->trigger();
  EXPECT_TRUE(Viewer->MessagesBlocked());
  EXPECT_TRUE(block->isChecked());
  block->trigger();
  EXPECT_FALSE(Viewer->MessagesBlocked());
  EXPECT_EQ(Viewer->Action("actRefresh")->shortcut(), QKeySequence(Qt::Key_F5));

  // A focused message fills the detail panel and the time difference.
  auto* list = dynamic_cast<IZTMessageViewList*>(&AllMessages());
  ASSERT_NE(list, nullptr);
  list->SetFocusedMsgIndex(10);
  Viewer->UpdateMessageDetails();
  EXPECT_EQ(Viewer->StatusText("stsMsgNum"), "#11");
  EXPECT_EQ(Viewer->StatusText("stsTimeDiff"), "0:00:00.000");
}

TEST_F(WindowTest, CtrlTabWrapsAcrossViewsAndDropsLoadOneFile) {
  TZTFilterCriteria all;
  Viewer->CreateView("Second", all, false, true, "Default");
  Viewer->CreateView("Third", all, false, false, "Default");
  EXPECT_TRUE(Shown("pnlTabSet"));
  EXPECT_EQ(Viewer->ActiveViewIndex(), 1);
  Viewer->show();
  QApplication::setActiveWindow(Viewer.get());
  ASSERT_TRUE(SpinUntil([&] { return Viewer->isActiveWindow(); }, 5000));
  auto press = [&](Qt::Key key, Qt::KeyboardModifiers mods) {
    QKeyEvent event(QEvent::KeyPress, key, mods);
    QApplication::sendEvent(Viewer->GetViewIntf(Viewer->ActiveViewIndex())->GetWidget(), &event);
  };
  press(Qt::Key_Tab, Qt::ControlModifier);
  EXPECT_EQ(Viewer->ActiveViewIndex(), 2);
  press(Qt::Key_Tab, Qt::ControlModifier);
  EXPECT_EQ(Viewer->ActiveViewIndex(), 0) << "wraps around";
  press(Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(Viewer->ActiveViewIndex(), 2);

  // A command-line file opens in the loop; two arguments open nothing.
  std::filesystem::path log = MakeTempDir("cmdline") / "run.ztl";
  WriteFile(log, "x");
  QString name = QString::fromStdString(log.string());
  Viewer.reset();
  EXPECT_EQ(ZentrailApplication(), nullptr);
  MessageSet.Close();
  MessageSet.Open();
  auto one = std::make_unique<TViewerWithLoader>(QStringList{name});
  EXPECT_TRUE(one->Loaded.isEmpty()) << "loaded only once the loop runs";
  ASSERT_TRUE(SpinUntil([&] { return !one->Loaded.isEmpty(); }, 5000));
  EXPECT_EQ(one->Loaded.front().first, name);
  EXPECT_FALSE(one->Loaded.front().second);
  one.reset();
  auto two = std::make_unique<TViewerWithLoader>(QStringList{name, name});
  auto missing = std::make_unique<TViewerWithLoader>(QStringList{name + ".gone"});
  QCoreApplication::processEvents();
  QCoreApplication::processEvents();
  EXPECT_TRUE(two->Loaded.isEmpty());
  EXPECT_TRUE(missing->Loaded.isEmpty());

  // Dropping one file loads it; two dropped files do nothing.
  auto drop = [&](TViewerWithLoader& viewer, const QList<QUrl>& urls) {
    QMimeData data;
    data.setUrls(urls);
    QDropEvent event(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    // Straight to the window: a synthetic drop has no drag behind it for QApplication to route.
    static_cast<QObject&>(viewer).event(&event);
  };
  drop(*two, {QUrl::fromLocalFile(name), QUrl::fromLocalFile(name)});
  EXPECT_TRUE(two->Loaded.isEmpty());
  drop(*two, {QUrl::fromLocalFile(name)});
  ASSERT_EQ(two->Loaded.size(), 1);
  EXPECT_EQ(two->Loaded.front().first, name);
}

TEST_F(WindowTest, ScreenshotWithNestedMethodsCollapsedMethodAndSeparators) {
  Viewer->InsertSeparatorOnAppStart = true;
  int32_t t = 36000000;
  auto send = [&](int32_t type, const std::string& text, uint32_t pid = 4242) {
    TZentrailMessage m = MakeMessage(type, text, pid, t);
    t += 7;
    if (type == ztmWarning) m.Category = "Database";
    Viewer->ProcessMessage(m);
  };
  for (int batch = 0; batch < 300; ++batch) {
    send(ztmEnterMethod, "TOrderService.ProcessBatch(" + std::to_string(batch) + ")");
    send(ztmInfo, "Reading " + std::to_string(batch * 13 % 97) + " order lines");
    send(ztmEnterMethod, "TOrderLine.Validate");
    send(ztmEnterMethod, "TPriceTable.Lookup");
    send(ztmExitMethodCollapse, "TPriceTable.Lookup");
    if (batch % 7 == 3) send(ztmWarning, "Price of article " + std::to_string(4000 + batch) + " is older than 30 days");
    if (batch % 11 == 5) send(ztmError, "Customer 77" + std::to_string(batch) + " has no delivery address");
    send(ztmExitMethod, "TOrderLine.Validate");
    send(ztmEnterMethod, "TStock.Reserve");
    send(ztmExitMethod, "TStock.Reserve");
    send(ztmCheckPoint, "Batch " + std::to_string(batch) + " committed");
    send(ztmExitMethod, "TOrderService.ProcessBatch(" + std::to_string(batch) + ")");
    if (batch % 50 == 49) Viewer->AddSeparator(nullptr);
  }
  send(ztmInfo, "Second process says hello", 5151);
  send(ztmEnterMethod, "TReportWriter.Run", 5151);
  send(ztmEnterMethod, "TReportWriter.WriteHeader", 5151);
  send(ztmInfo, "Header written", 5151);
  Viewer->SetScratchPadLine("Orders", "3000");
  Viewer->SetScratchPadLine("Queue length", "17");
  Viewer->SetScratchPadLine("Last customer", "Hoffmann & Partner");
  ASSERT_GT(MessageSet.GetRecordCount(), 3000);
  QByteArray dir = qgetenv("ZENTRAIL_SCREENSHOT_DIR");

  // As a first run shows it: no panes.
  Viewer->resize(1100, 720);
  Viewer->show();
  SpinUntil([] { return false; }, 200);
  if (!dir.isEmpty()) Viewer->grab().save(QDir(QString::fromUtf8(dir)).filePath("main-window-plain.png"));

  Viewer->SetPaneVisible(TZTPane::ScratchPad, true);
  Viewer->SetPaneVisible(TZTPane::CallStack, true);
  Viewer->SetDetailPanelVisible(true);
  auto* list = dynamic_cast<IZTMessageViewList*>(&AllMessages());
  list->SetFocusedMsgIndex(AllMessages().GetCount() - 1);
  Viewer->UpdateMessageDetails();
  SpinUntil([] { return false; }, 300);  // let layout and the coalesced paint settle

  // The call stack of the focused message lists its two enclosing methods.
  EXPECT_EQ(Viewer->CallStackList()->count(), 2);
  EXPECT_EQ(Viewer->StatusText("stsMsgNum"), QStringLiteral("#") + QLocale(QLocale::English).toString(MessageSet.GetRecordCount()));

  QImage shot = Viewer->grab().toImage();
  ASSERT_FALSE(shot.isNull());
  EXPECT_EQ(shot.size(), Viewer->size() * shot.devicePixelRatio());
  std::set<QRgb> colours;
  for (int y = 0; y < shot.height(); y += 3)
    for (int x = 0; x < shot.width(); x += 3) colours.insert(shot.pixel(x, y));
  EXPECT_GT(colours.size(), 20u) << "a window with rows, panes and glyphs is not a flat picture";
  QString out = dir.isEmpty() ? QString::fromStdString((TempRoot() / "main-window.png").string())
                              : QDir(QString::fromUtf8(dir)).filePath("main-window.png");
  EXPECT_TRUE(shot.save(out));

  Viewer->SetInspectorOnBottom(true);
  Viewer->SetPaneVisible(TZTPane::Inspector, true);
  SpinUntil([] { return false; }, 200);
  QImage bottom = Viewer->grab().toImage();
  if (!dir.isEmpty()) bottom.save(QDir(QString::fromUtf8(dir)).filePath("main-window-bottom.png"));
}

TEST_F(WindowTest, TheInspectorFollowsTheFocusedMessage) {
  TZentrailMessage table = MakeMessage(ztmInfo, "Open orders");
  table.MsgContent = ztmCustomTable;
  table.Details = "Order\tCustomer\r\nA-1\tChen Li\r\nA-2\tEva Novak\r\n";
  Viewer->ProcessMessage(table);
  TZentrailMessage xml = MakeMessage(ztmInfo, "Deployment");
  xml.MsgContent = ztmXmlData;
  xml.Details = "<deployment><service id=\"svc1\" port=\"8001\"/></deployment>";
  Viewer->ProcessMessage(xml);
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "plain text"));
  TZentrailMessage custom = MakeMessage(ztmInfo, "Custom payload");
  custom.MsgContent = ztmUser + 5;
  Viewer->ProcessMessage(custom);

  Viewer->resize(1100, 720);
  Viewer->show();
  Viewer->SetPaneVisible(TZTPane::Inspector, true);
  auto* list = dynamic_cast<IZTMessageViewList*>(&AllMessages());
  TZTInspectorPane* pane = Viewer->InspectorPane();
  ASSERT_NE(pane, nullptr);
  auto focus = [&](int row) {
    list->SetFocusedMsgIndex(row);
    Viewer->UpdateMessageDetails();
    return pane->CurrentPanel();
  };
  EXPECT_EQ(focus(0), TZTInspectorPane::pnTable);
  EXPECT_TRUE(Enabled("actCopyInspectorContents"));
  Viewer->Action(QStringLiteral("actCopyInspectorContents"))->trigger();
  const QString copied = QApplication::clipboard()->text();
  EXPECT_TRUE(copied.contains(QStringLiteral("Chen Li"))) << copied.toStdString();
  EXPECT_TRUE(copied.contains(QStringLiteral("A-2"))) << copied.toStdString();

  EXPECT_EQ(focus(1), TZTInspectorPane::pnXmlData);
  EXPECT_EQ(focus(2), TZTInspectorPane::pnString);
  // A custom content with no plug-in says so in the pane instead of failing.
  EXPECT_EQ(focus(3), TZTInspectorPane::pnCustom);

  focus(0);
  SpinUntil([] { return false; }, 200);
  QByteArray dir = qgetenv("ZENTRAIL_SCREENSHOT_DIR");
  QImage shot = Viewer->grab().toImage();
  ASSERT_FALSE(shot.isNull());
  if (!dir.isEmpty()) shot.save(QDir(QString::fromUtf8(dir)).filePath("main-window-inspector.png"));
}
