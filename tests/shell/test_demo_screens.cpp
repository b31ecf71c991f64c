// The demo program against the real viewer: it must feed every stock inspector, and the window is
// saved once per inspector (to $ZENTRAIL_SCREENSHOT_DIR when set) so that a person can look at it.
#include <QDir>
#include <QImage>
#include <QProcess>
#include <QSplitter>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "ShellFixture.h"
#include "TestEnvironment.h"
#include "ZTInspectorPane.h"

using namespace zentrail;
using namespace zentrail::test;
namespace fs = std::filesystem;

class DemoScreens : public ShellFixture {};

TEST_F(DemoScreens, DemoFeedsEveryInspector) {
  const fs::path bin = ZENTRAIL_BINARY_DIR;
  const fs::path demo = bin / "tools/zentrail-demo/zentrail-demo";
  ASSERT_TRUE(fs::exists(demo)) << demo;
  const fs::path registry = std::getenv("ZENTRAIL_REGISTRY");
  WriteFile(registry, "[Software\\Orvan\\Zentrail\\5.0]\nDispatcher=" +
                          (bin / "src/dispatcher/zentrail-dispatcher").string() +
                          "\nInstallPath=/opt/zentrail\n");
  Listen();

  QProcess process;
  process.start(QString::fromStdString(demo.string()), {});
  ASSERT_TRUE(process.waitForStarted());
  // The demo waits for each answer, and the viewer answers from this loop: spin until it ends.
  ASSERT_TRUE(SpinUntil([&] { return process.state() == QProcess::NotRunning; }, 60000));
  EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
  const QString out = QString::fromUtf8(process.readAllStandardOutput());
  EXPECT_TRUE(out.contains(QStringLiteral("messages sent"))) << out.toStdString();
  // Every counted message but the four scratch-pad lines is stored (traces add more); some may still
  // be on their way from the
  // dispatcher.
  const int sent = out.section(QLatin1Char(' '), 1, 1).toInt();
  ASSERT_GT(sent, 40) << out.toStdString();
  ASSERT_TRUE(SpinUntil([&] { return MessageSet.GetRecordCount() >= sent - 4; }))
      << MessageSet.GetRecordCount() << " of " << sent;

  Viewer->resize(1280, 800);
  Viewer->show();
  Viewer->SetPaneVisible(TZTPane::Inspector, true);
  // Room for the inspectors, as a user looking at data would make it.
  if (auto* split = Viewer->findChild<QSplitter*>(QStringLiteral("splMain"))) split->setSizes({700, 580});
  IZTMessageView& view = AllMessages();
  TZTInspectorPane* pane = Viewer->InspectorPane();
  const QByteArray dir = qgetenv("ZENTRAIL_SCREENSHOT_DIR");
  std::set<int> shown;
  auto* list = dynamic_cast<IZTMessageViewList*>(&view);
  ASSERT_NE(list, nullptr);
  for (int32_t row = 0; row < view.GetCount(); ++row) {
    list->SetFocusedMsgIndex(row);
    ASSERT_TRUE(list->SelectCurrentRecord());
    const int panel = TZTInspectorPane::PanelForContent(MessageSet.GetMsgContent());
    const std::string text(MessageSet.GetMsgText());
    if (panel == TZTInspectorPane::pnNone || panel == TZTInspectorPane::pnCustom || shown.count(panel)) continue;
    list->JumpToItem(row);
    QCoreApplication::processEvents();
    Viewer->UpdateMessageDetails();
    ASSERT_EQ(pane->CurrentPanel(), panel) << "row " << row << ": " << text;
    EXPECT_TRUE(pane->Inspector(panel)->Notice().isEmpty())
        << "row " << row << ": " << pane->Inspector(panel)->Notice().toStdString();
    shown.insert(panel);
    if (!dir.isEmpty()) {
      const QImage shot = Viewer->grab().toImage();
      ASSERT_FALSE(shot.isNull());
      shot.save(QDir(QString::fromUtf8(dir)).filePath(QStringLiteral("demo-inspector-%1.png").arg(panel, 2, 10, QChar('0'))));
    }
  }
  for (int panel = TZTInspectorPane::pnString; panel <= TZTInspectorPane::pnXmlData; ++panel)
    EXPECT_TRUE(shown.count(panel)) << "no message of the demo shows inspector " << panel;
  fs::remove(registry);
}
