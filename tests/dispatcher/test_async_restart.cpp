// The asynchronous client through the real dispatcher into a log file and a viewer that is killed
// and started again while the messages flow: every message the client counts as accepted is in
// the file, each thread's in the order it sent them.
#include <gtest/gtest.h>

#include <map>
#include <thread>

#include "DispatcherFixture.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

// The real viewer when this tree builds it, else a stand-in that takes frames and batches alike.
class TViewerUnderTest {
 public:
  explicit TViewerUnderTest(std::string socket) : FSocket(std::move(socket)) {}
  bool Start() {
    const std::string program = BinaryPath("src/shell/zentrail-viewer");
    if (fs::exists(program)) {
      if (!FProcess.Start(program, {}, {"QT_QPA_PLATFORM=offscreen"})) return false;
      return WaitUntil([&] { return SocketAnswers(FSocket); }, 30000);
    }
    FStandIn = std::make_unique<TFakeFrameServer>(FSocket);
    return true;
  }
  // Gone at once, in the middle of whatever it was taking in.
  void Kill() {
    FProcess.Kill();
    FStandIn.reset();
    ::unlink(FSocket.c_str());
  }

 private:
  std::string FSocket;
  TChildProcess FProcess;
  std::unique_ptr<TFakeFrameServer> FStandIn;
};

}  // namespace

TEST_F(DispatcherTest, AsyncMessagesAcceptedWhileTheViewerRestartsAreAllInTheFileInOrder) {
  StartDispatcher();
  TViewerUnderTest viewer(viewerSocket);
  ASSERT_TRUE(viewer.Start());
  const std::string path = (dir / "async.ztl").string();
  TZentrailDestination destination("File[Path=" + path + "],Viewer");

  ZentrailManager.SetAsync(true);
  const TZentrailAsyncStatistics before = ZentrailManager.AsyncStatistics();
  constexpr int kThreads = 4, kEach = 250000;
  std::atomic<int> progress[kThreads] = {};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      TZentrailLogger log;
      log.SetDestination(&destination);
      const std::string name = "thread-" + std::to_string(t);
      ZentrailManager.SetCurrentThreadName(name);
      for (int i = 0; i < kEach; ++i) {
        log.Send(name + " #" + std::to_string(i));
        progress[t].store(i + 1, std::memory_order_relaxed);
      }
      log.SetDestination(nullptr);
    });
  auto sent = [&] {
    int total = 0;
    for (auto& p : progress) total += p.load(std::memory_order_relaxed);
    return total;
  };
  // Killed a third of the way, started again at two thirds.
  EXPECT_TRUE(WaitUntil([&] { return sent() >= kThreads * kEach / 3; }, 60000));
  viewer.Kill();
  EXPECT_TRUE(WaitUntil([&] { return sent() >= kThreads * kEach * 2 / 3; }, 60000));
  ASSERT_TRUE(viewer.Start());
  for (auto& t : threads) t.join();
  ASSERT_TRUE(ZentrailManager.Flush(0));
  const TZentrailAsyncStatistics after = ZentrailManager.AsyncStatistics();
  ZentrailManager.SetAsync(false);
  const uint64_t accepted = after.Accepted - before.Accepted;
  EXPECT_EQ(accepted, static_cast<uint64_t>(kThreads * kEach)) << "the dispatcher took every message";
  EXPECT_EQ(after.Dropped - before.Dropped, 0u);
  ASSERT_EQ(dispatcher.Signal(SIGTERM, 30000), 0);

  std::string problem;
  const std::vector<TZentrailMessage> logged = ReadLog(path, &problem);
  EXPECT_EQ(problem, "");
  std::map<std::string, int> next;
  std::size_t mine = 0;
  for (const TZentrailMessage& m : logged) {
    const auto hash = m.MsgText.find(" #");
    if (hash == std::string::npos) continue;
    ++mine;
    const int n = std::stoi(m.MsgText.substr(hash + 2));
    int& expected = next[m.ThreadName];
    ASSERT_EQ(n, expected) << m.ThreadName << ": each thread's messages in order, none missing or twice";
    ++expected;
  }
  EXPECT_EQ(mine, accepted);
  ASSERT_EQ(next.size(), static_cast<size_t>(kThreads));
  for (auto& [thread, count] : next) EXPECT_EQ(count, kEach) << thread;
}
