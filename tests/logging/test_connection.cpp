#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <thread>

#include "ZentrailLogging.h"
#include "ZentrailTestServers.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

std::string DispatcherPath() {
  std::string error;
  return DispatcherSocketPath(error);
}

}  // namespace

TEST(CopyDataConnection, FramesReachTheDispatcherSocketPlainAndCompressed) {
  TFakeFrameServer dispatcher(DispatcherPath());
  TZentrailLogger log;
  log.ConnectUsingCopyData();
  log.SetCategory("Frames");
  ASSERT_EQ(log.SendWarning("plain one"), 1);
  ASSERT_EQ(log.Send("plain two"), 1);

  TZentrailLogger packed;
  packed.ConnectUsingCopyData(mfCompressed);
  std::string big(20000, 'a');
  ASSERT_EQ(packed.Send(big), 1);

  auto frames = dispatcher.Frames();
  ASSERT_EQ(frames.size(), 5u);
  EXPECT_EQ(frames[0].Tag, ztPacketTag);
  EXPECT_EQ(frames[0].Message.MsgType, ztmOpenRoute);
  EXPECT_EQ(frames[0].Message.MsgText, "Viewer");
  EXPECT_EQ(frames[1].Message.MsgType, ztmWarning);
  EXPECT_EQ(frames[1].Message.MsgText, "plain one");
  EXPECT_EQ(frames[1].Message.Category, "Frames");
  EXPECT_EQ(frames[1].Payload, frames[1].Message.GetAsTransportPacket()) << "plain frames carry the packet as it is";
  EXPECT_EQ(frames[2].Message.RouteKey, frames[1].Message.RouteKey);
  EXPECT_EQ(frames[4].Tag, ztCompressedPacketTag);
  EXPECT_TRUE(frames[4].Decoded);
  EXPECT_EQ(frames[4].Message.MsgText, big);
  EXPECT_LT(frames[4].Payload.size(), 1000u);

  // The kept compressor gives exactly what zlib gives for each packet, again and again.
  TZentrailDeflater deflater;
  std::string out;
  for (std::string text : {std::string("short"), big, std::string("")}) {
    ASSERT_TRUE(deflater.Compress(text, out));
    EXPECT_EQ(ZlibInflate(out), text);
  }
}

TEST(CopyDataConnection, ThreadsSendAtOnceAndEachKeepsItsOrder) {
  TFakeFrameServer dispatcher(DispatcherPath());
  auto connection = std::make_shared<TZentrailCopyDataConnection>();
  TZentrailLogger log;
  log.SetConnection(connection);
  constexpr int kThreads = 4, kEach = 250;
  std::vector<std::thread> threads;
  std::atomic<int> failures{0};
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      ZentrailManager.SetCurrentThreadName("T" + std::to_string(t));
      for (int i = 0; i < kEach; ++i)
        if (log.Send(std::to_string(i)) != 1) ++failures;
    });
  for (auto& t : threads) t.join();
  EXPECT_EQ(failures.load(), 0);
  auto messages = dispatcher.Messages();
  ASSERT_EQ(messages.size(), static_cast<std::size_t>(kThreads * kEach));
  std::map<std::string, int> next;
  for (auto& m : messages) {
    EXPECT_EQ(std::stoi(m.MsgText), next[m.ThreadName]++) << "thread " << m.ThreadName;
    EXPECT_EQ(m.RouteKey, log.DispatchID());
  }
  EXPECT_EQ(next.size(), static_cast<std::size_t>(kThreads));
  int opens = 0;
  for (auto& f : dispatcher.Frames()) opens += f.Message.MsgType == ztmOpenRoute;
  EXPECT_EQ(opens, 1) << "one route for the logger, however many threads";
}

TEST(CopyDataConnection, LostDispatcherDisablesTheLoggerAndANewOneHearsTheRouteAgain) {
  auto connection = std::make_shared<TZentrailCopyDataConnection>();
  TZentrailLogger log;
  log.SetConnection(connection);
  RegisterDispatcher("/nonexistent/zentrail-dispatcher");
  {
    TFakeFrameServer first(DispatcherPath());
    ASSERT_EQ(log.Send("before"), 1);
    first.Stop();
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(log.Send("while gone"), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    EXPECT_FALSE(log.Enabled());
    EXPECT_EQ(first.Messages().size(), 1u);
  }
  TFakeFrameServer second(DispatcherPath());
  log.SetEnabled(true);
  ASSERT_EQ(log.Send("after"), 1);
  auto frames = second.Frames();
  ASSERT_EQ(frames.size(), 2u);
  EXPECT_EQ(frames[0].Message.MsgType, ztmOpenRoute) << "a new dispatcher does not know the old route";
  EXPECT_EQ(frames[1].Message.MsgText, "after");

  // A refusal (answer 0) also switches the logger off.
  second.Reply = 0;
  EXPECT_EQ(log.Send("refused"), 0);
  EXPECT_FALSE(log.Enabled());
}

TEST(CopyDataConnection, NoDispatcherAnywhereCostsOneQuickAttemptPerLogger) {
  std::string savedPath = std::getenv("PATH") ? std::getenv("PATH") : "";
  for (std::string registered : {std::string("/nonexistent/zentrail-dispatcher"), std::string()}) {
    SCOPED_TRACE("registered: " + registered);
    // An empty value falls back to the program beside this test and on PATH, where there is none.
    RegisterDispatcher(registered);
    setenv("PATH", "/nonexistent-bin", 1);
    EXPECT_FALSE(TZentrailLogger::Installed());
    auto connection = std::make_shared<TZentrailCopyDataConnection>();
    TZentrailLogger a, b;
    a.SetConnection(connection);
    b.SetConnection(connection);
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(a.Send("nobody listens"), 0);
    EXPECT_FALSE(a.Enabled());
    EXPECT_TRUE(b.Enabled()) << "only the logger that failed is switched off";
    EXPECT_TRUE(ZentrailManager.Enabled());
    EXPECT_EQ(b.SendError("nor here"), 0);
    EXPECT_EQ(a.Send("not even tried"), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  }
  setenv("PATH", savedPath.c_str(), 1);
  RegisterDispatcher(BinaryPath("src/dispatcher/zentrail-dispatcher"));
  EXPECT_TRUE(TZentrailLogger::Installed());
  RegisterDispatcher("/nonexistent/zentrail-dispatcher");  // no later test starts one by accident
}
