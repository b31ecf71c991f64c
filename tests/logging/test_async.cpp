// The asynchronous client against a stand-in dispatcher: what it promises about order, routes,
// a full queue, Flush and the end of the process. No timing is asserted.
#include <gtest/gtest.h>

#include <map>
#include <thread>

#include "ZentrailLogging.h"
#include "TestEnvironment.h"
#include "ZentrailTestServers.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

std::string DispatcherPath() {
  std::string error;
  return DispatcherSocketPath(error);
}

// Every test leaves the process-wide manager as it found it: synchronous, default limits.
class AsyncTest : public ::testing::Test {
 protected:
  void SetUp() override { RegisterDispatcher("/nonexistent/zentrail-dispatcher"); }
  void TearDown() override {
    ZentrailManager.SetAsync(false);
    ZentrailManager.SetDropWhenFull(false);
    ZentrailManager.SetAsyncQueueSize(16u * 1024 * 1024);
    ZentrailManager.SetTimeoutMs(5000);
  }
  static TZentrailAsyncStatistics Since(const TZentrailAsyncStatistics& before) {
    TZentrailAsyncStatistics now = ZentrailManager.AsyncStatistics();
    return {0, now.Accepted - before.Accepted, now.Refused - before.Refused, now.Dropped - before.Dropped};
  }
};

// Per thread name, the numbers of "<thread> #<n>" texts in arrival order.
std::map<std::string, std::vector<int>> Sequences(const std::vector<TZentrailMessage>& messages) {
  std::map<std::string, std::vector<int>> out;
  for (const TZentrailMessage& m : messages) {
    auto hash = m.MsgText.find(" #");
    if (hash == std::string::npos) continue;
    out[m.ThreadName].push_back(std::stoi(m.MsgText.substr(hash + 2)));
  }
  return out;
}

bool Consecutive(const std::vector<int>& numbers, int count) {
  if (static_cast<int>(numbers.size()) != count) return false;
  for (int i = 0; i < count; ++i)
    if (numbers[static_cast<size_t>(i)] != i) return false;
  return true;
}

}  // namespace

TEST_F(AsyncTest, ThreadsKeepTheirOrderInBatchesAndFlushWaitsForTheAnswers) {
  TFakeFrameServer dispatcher(DispatcherPath());
  ZentrailManager.SetAsync(true);
  const auto before = ZentrailManager.AsyncStatistics();
  constexpr int kThreads = 4, kEach = 20000;
  TZentrailLogger log;
  log.SetCategory("Async");
  std::vector<std::thread> threads;
  std::atomic<int> queued{0};
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      const std::string name = "sender-" + std::to_string(t);
      ZentrailManager.SetCurrentThreadName(name);
      for (int i = 0; i < kEach; ++i) queued += log.Send(name + " #" + std::to_string(i));
    });
  for (auto& t : threads) t.join();
  EXPECT_EQ(queued, kThreads * kEach);
  ASSERT_TRUE(ZentrailManager.Flush(0));
  // Flush returned: every message has been answered, nothing is on its way any more.
  const std::size_t received = dispatcher.Messages().size();
  EXPECT_EQ(received, static_cast<size_t>(kThreads * kEach));
  const auto stats = Since(before);
  EXPECT_EQ(stats.Accepted, static_cast<uint64_t>(kThreads * kEach));
  EXPECT_EQ(stats.Refused + stats.Dropped, 0u);
  EXPECT_GT(dispatcher.Batches, 0) << "the messages went in batch frames";

  auto sequences = Sequences(dispatcher.Messages());
  ASSERT_EQ(sequences.size(), static_cast<size_t>(kThreads));
  for (auto& [thread, numbers] : sequences) EXPECT_TRUE(Consecutive(numbers, kEach)) << thread;
  // The route was announced once, before the first message on it, and every message carries it.
  auto frames = dispatcher.Frames();
  ASSERT_EQ(frames.front().Message.MsgType, ztmOpenRoute);
  EXPECT_EQ(frames.front().Message.MsgText, "Viewer");
  for (const TZentrailMessage& m : dispatcher.Messages()) {
    ASSERT_EQ(m.RouteKey, frames.front().Message.RouteKey);
    ASSERT_EQ(m.Category, "Async");
    ASSERT_EQ(m.ProcessID, ZentrailManager.ProcessID());
  }
}

TEST_F(AsyncTest, RoutesOpenBeforeTheirMessagesAndCloseBehindThem) {
  TFakeFrameServer dispatcher(DispatcherPath());
  ZentrailManager.SetAsync(true);
  const std::string path = (MakeTempDir("async") / "a.ztl").string();
  TZentrailDestination file("File[Path=" + path + "]");
  {
    TZentrailLogger log;
    log.Send("first #0");
    log.SetDestination(&file);
    log.Send("second #1");
    log.Send("third #2");
  }
  // An invalid destination raises to the caller, as a synchronous send does.
  TZentrailDestination invalid;
  invalid.SetAsString("File[MaxSize=3]");
  TZentrailLogger other;
  other.SetDestination(&invalid);
  EXPECT_THROW(other.Send("never"), EZentrailInvalidDestination);
  other.SetDestination(nullptr);
  ASSERT_TRUE(ZentrailManager.Flush(0));

  std::vector<std::pair<int32_t, std::string>> seen;
  std::vector<std::string> routes;
  for (const TReceivedFrame& f : dispatcher.Frames()) {
    seen.emplace_back(f.Message.MsgType, f.Message.MsgType == ztmOpenRoute ? f.Message.MsgText : f.Message.MsgText.substr(0, 2));
    routes.push_back(f.Message.RouteKey);
  }
  using Seen = std::vector<std::pair<int32_t, std::string>>;
  ASSERT_EQ(seen, (Seen{{ztmOpenRoute, "Viewer"},
                        {ztmInfo, "fi"},
                        {ztmCloseRoute, ""},
                        {ztmOpenRoute, file.AsString()},
                        {ztmInfo, "se"},
                        {ztmInfo, "th"},
                        {ztmCloseRoute, ""}}));
  EXPECT_EQ(routes[0], routes[1]);
  EXPECT_EQ(routes[1], routes[2]) << "the old route closes after its message";
  EXPECT_NE(routes[3], routes[0]) << "a new destination takes a new route";
  EXPECT_EQ(routes[3], routes[5]);
  EXPECT_EQ(routes[6], routes[3]) << "the route of a logger that went away closes behind its messages";
}

TEST_F(AsyncTest, AFullQueueMakesTheSenderWaitOrDropsAndCountsWhenAsked) {
  TFakeFrameServer dispatcher(DispatcherPath());
  ZentrailManager.SetAsyncQueueSize(64 * 1024);
  ZentrailManager.SetAsync(true);
  ZentrailManager.SetTimeoutMs(0);  // a waiting sender waits for as long as it takes
  const auto before = ZentrailManager.AsyncStatistics();
  TZentrailLogger log;
  ZentrailManager.SetCurrentThreadName("waiting");
  log.Send("waiting #0");
  ASSERT_TRUE(ZentrailManager.Flush(0));

  // The dispatcher holds its answer: the queue fills, and the sender waits for room.
  dispatcher.Stall = true;
  constexpr int kMany = 3000;
  std::atomic<bool> done{false};
  std::thread sender([&] {
    ZentrailManager.SetCurrentThreadName("waiting");
    for (int i = 1; i <= kMany; ++i) EXPECT_EQ(log.Send("waiting #" + std::to_string(i)), 1);
    done = true;
  });
  ASSERT_TRUE(WaitUntil([&] { return dispatcher.Count() >= 3; }));
  EXPECT_FALSE(done) << "64 KiB cannot hold all of them while nothing is answered";
  dispatcher.Stall = false;
  sender.join();
  ASSERT_TRUE(ZentrailManager.Flush(0));
  EXPECT_TRUE(Consecutive(Sequences(dispatcher.Messages())["waiting"], kMany + 1));
  EXPECT_EQ(Since(before).Dropped, 0u);

  // With DropWhenFull the sender goes on at once; what did not fit is counted and reported by a
  // warning once there is room again, ahead of the next message.
  ZentrailManager.SetDropWhenFull(true);
  dispatcher.Stall = true;
  ZentrailManager.SetCurrentThreadName("dropping");
  int taken = 0, dropped = 0;
  for (int i = 0; i < kMany; ++i) (log.Send("dropping #" + std::to_string(i)) == 1 ? taken : dropped)++;
  EXPECT_GT(dropped, 0);
  dispatcher.Stall = false;
  ASSERT_TRUE(ZentrailManager.Flush(0));
  EXPECT_EQ(log.Send("after"), 1);
  ASSERT_TRUE(ZentrailManager.Flush(0));
  EXPECT_EQ(Since(before).Dropped, static_cast<uint64_t>(dropped));
  auto messages = dispatcher.Messages();
  ASSERT_GE(messages.size(), 2u);
  const TZentrailMessage& warning = messages[messages.size() - 2];
  EXPECT_EQ(warning.MsgType, ztmWarning);
  EXPECT_EQ(warning.MsgText, std::to_string(dropped) + " message(s) were dropped because the send queue was full");
  EXPECT_EQ(messages.back().MsgText, "after");
  // What was taken arrived in order, with gaps only where messages were dropped.
  auto numbers = Sequences(messages)["dropping"];
  EXPECT_EQ(static_cast<int>(numbers.size()), taken);
  EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
}

TEST_F(AsyncTest, LargeMessagesAndCompressedConnectionsKeepTheirPlace) {
  TFakeFrameServer dispatcher(DispatcherPath());
  ZentrailManager.SetAsyncQueueSize(64 * 1024);
  ZentrailManager.SetAsync(true);
  TZentrailLogger log;
  log.ConnectUsingCopyData(mfCompressed);
  ZentrailManager.SetCurrentThreadName("mixed");
  const std::string large(40000, 'x');  // more than a quarter of the queue
  for (int i = 0; i < 30; ++i) {
    if (i % 10 == 5)
      log.InternalSend(ztmInfo, ztmStringList, {}, large, "mixed #" + std::to_string(i));
    else
      log.Send("mixed #" + std::to_string(i));
  }
  ASSERT_TRUE(ZentrailManager.Flush(0));
  auto messages = dispatcher.Messages();
  EXPECT_TRUE(Consecutive(Sequences(messages)["mixed"], 30));
  for (const TReceivedFrame& f : dispatcher.Frames()) EXPECT_EQ(f.Tag, ztCompressedPacketTag);
  EXPECT_EQ(messages[5].Details, large);
}

TEST_F(AsyncTest, WithoutADispatcherSendsGoOnAndTheLossIsCounted) {
  // Nothing listens and nothing can be started: the senders are not held up, Flush comes back, and
  // every message is counted as refused.
  ZentrailManager.SetAsync(true);
  const auto before = ZentrailManager.AsyncStatistics();
  TZentrailLogger log;
  constexpr int kCount = 30000;
  int queued = 0;
  for (int i = 0; i < kCount; ++i) queued += log.Send("lost #" + std::to_string(i));
  EXPECT_EQ(queued, kCount);
  EXPECT_TRUE(log.Enabled()) << "a send that was queued does not switch the logger off";
  ASSERT_TRUE(ZentrailManager.Flush(0));
  const auto stats = Since(before);
  EXPECT_EQ(stats.Accepted, 0u);
  EXPECT_EQ(stats.Refused + stats.Dropped, static_cast<uint64_t>(kCount));

  // A dispatcher that comes later gets what is sent then.
  TFakeFrameServer dispatcher(DispatcherPath());
  ZentrailManager.SetCurrentThreadName("later");
  ASSERT_TRUE(WaitUntil([&] {
    log.Send("later #0");
    ZentrailManager.Flush(0);
    return !dispatcher.Messages().empty();
  }));
  EXPECT_EQ(dispatcher.Frames().front().Message.MsgType, ztmOpenRoute);
}

// The test runs itself again as the sending process, which sends and ends without a Flush.
static void SendAndEndAsTheChild(const char* count) {
  // The test environment gave this process folders of its own; the parent's dispatcher is there.
  setenv("ZENTRAIL_RUNTIME_DIR", std::getenv("ZENTRAIL_TEST_ASYNC_RUNTIME"), 1);
  ZentrailManager.SetCurrentThreadName("child");
  for (int i = 0; i < std::atoi(count); ++i) ZentrailLog.Send("child #" + std::to_string(i));
  std::exit(0);  // static destructors run: the manager ships the queue first
}

TEST_F(AsyncTest, EndOfTheProcessShipsWhatIsQueued) {
  if (const char* count = std::getenv("ZENTRAIL_TEST_ASYNC_CHILD")) SendAndEndAsTheChild(count);
  TFakeFrameServer dispatcher(DispatcherPath());
  constexpr int kCount = 20000;
  TChildProcess child;
  ASSERT_TRUE(child.Start("/proc/self/exe", {"--gtest_filter=AsyncTest.EndOfTheProcessShipsWhatIsQueued"},
                          {"ZENTRAIL_ASYNC=1", "ZENTRAIL_TEST_ASYNC_CHILD=" + std::to_string(kCount),
                           std::string("ZENTRAIL_TEST_ASYNC_RUNTIME=") + std::getenv("ZENTRAIL_RUNTIME_DIR")}));
  EXPECT_EQ(child.Wait(20000), 0);
  auto messages = dispatcher.Messages();
  EXPECT_TRUE(Consecutive(Sequences(messages)["child"], kCount)) << messages.size() << " arrived";
  // The global logger went away before the manager: its route closed behind its messages.
  ASSERT_FALSE(dispatcher.Frames().empty());
  EXPECT_EQ(dispatcher.Frames().back().Message.MsgType, ztmCloseRoute);
}
