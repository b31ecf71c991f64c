// The whole road: a program logs through the client library, the dispatcher routes to the viewer,
// and the messages stand in "All Messages" with their structure.
#include <QTableWidget>
#include <cstdlib>
#include <filesystem>

#include "ShellFixture.h"
#include "TestEnvironment.h"
#include "ZentrailLogger.h"

using namespace zentrail;
using namespace zentrail::test;
namespace fs = std::filesystem;

class EndToEndTest : public ShellFixture {};

TEST_F(EndToEndTest, ClientMessagesReachTheViewerThroughTheDispatcher) {
  const fs::path dispatcher = fs::path(ZENTRAIL_BINARY_DIR) / "src/dispatcher/zentrail-dispatcher";
  ASSERT_TRUE(fs::exists(dispatcher)) << dispatcher;
  const fs::path registry = std::getenv("ZENTRAIL_REGISTRY");
  WriteFile(registry, "[Software\\Orvan\\Zentrail\\5.0]\nDispatcher=" + dispatcher.string() + "\n");
  Listen();

  {
    TZentrailLogger log;
    ASSERT_EQ(log.Send("hello from the client"), 1);
    EXPECT_EQ(log.SendWarning("disk almost full"), 1);
    EXPECT_EQ(log.EnterMethod("TOrders.Load"), 1);
    EXPECT_EQ(log.EnterMethod("TOrders.Parse"), 1);
    EXPECT_EQ(log.SendError("line 7 is broken"), 1);
    EXPECT_EQ(log.ExitMethod("TOrders.Parse"), 1);
    EXPECT_EQ(log.AddCheckPoint(), 1);
    EXPECT_EQ(log.ExitMethod("TOrders.Load"), 1);
    EXPECT_EQ(log.Write("Queue", "17"), 1);

    // The dispatcher answers once a message is queued; the rows come as the viewer's loop runs.
    ASSERT_TRUE(SpinUntil([&] { return AllMessages().GetCount() >= 8 && Viewer->ScratchPadNames().size() == 1; }))
        << AllMessages().GetCount() << " rows";
    log.CloseDispatcher();
  }

  const auto stored = Stored();
  ASSERT_EQ(stored.size(), 8u);
  const std::vector<int32_t> types = {ztmInfo,       ztmWarning,   ztmEnterMethod, ztmEnterMethod,
                                      ztmError,      ztmExitMethod, ztmCheckPoint,  ztmExitMethod};
  for (std::size_t i = 0; i < types.size(); ++i) EXPECT_EQ(stored[i].first, types[i]) << "record " << i + 1;
  EXPECT_EQ(stored[0].second, "hello from the client");
  EXPECT_EQ(stored[4].second, "line 7 is broken");

  auto* list = dynamic_cast<IZTMessageViewList*>(&AllMessages());
  ASSERT_NE(list, nullptr);
  const std::vector<int32_t> indents = {0, 0, 0, 1, 2, 1, 1, 0};
  for (int32_t row = 0; row < 8; ++row) EXPECT_EQ(list->GetIndentLevel(row), indents[row]) << "row " << row;

  EXPECT_EQ(Viewer->ScratchPadNames().front(), QStringLiteral("Queue"));
  EXPECT_EQ(Viewer->ScratchPadGrid()->item(0, 2)->text(), QStringLiteral("17"));
  fs::remove(registry);
}
