// Cost of a call on a switched-off logger, and messages per second from the client through the
// dispatcher into a running viewer: the real one when it is built in this tree, else a minimal
// stand-in that answers 1 per frame.
#include <cstdio>
#include <memory>
#include <thread>

#include "BenchSupport.h"
#include "ZentrailLogging.h"

using namespace zentrail;
using namespace zentrail::bench;

int main() {
  std::string root = IsolateEnvironment();

  {
    TZentrailLogger log;
    log.SetEnabled(false);
    constexpr long kCalls = 500'000'000;
    long sum = 0;
    auto start = std::chrono::steady_clock::now();
    for (long i = 0; i < kCalls; ++i) sum += log.Send("never sent");
    double ns = Seconds(start) * 1e9 / kCalls;
    // The sum keeps the loop from being thrown away; it is 0 for a switched-off logger.
    std::printf("figure: client_disabled_call_ns %.3f ns\n", ns + (sum != 0 ? 1e9 : 0));
    start = std::chrono::steady_clock::now();
    for (long i = 0; i < kCalls / 10; ++i) sum += log.SendFmtMsg("%ld items", i);
    std::printf("figure: client_disabled_format_call_ns %.3f ns\n", Seconds(start) * 1e9 / (kCalls / 10) + (sum != 0 ? 1e9 : 0));
  }

  // The viewer and the dispatcher end before their folders are removed.
  {
    auto real = std::make_unique<RealViewer>();
    std::unique_ptr<FakeViewer> fake;
    if (!real->Running()) {
      real.reset();
      fake = std::make_unique<FakeViewer>();
      std::fprintf(stderr, "the viewer is not built here: sending into a stand-in viewer\n");
    }
    Dispatcher dispatcher;
    {
      TZentrailLogger log;
      log.SetCategory("bench");
      for (int i = 0; i < 1000; ++i) log.Send("warm-up");
      constexpr int kMessages = 200'000;
      auto start = std::chrono::steady_clock::now();
      int ok = 0;
      for (int i = 0; i < kMessages; ++i) ok += log.Send("a message of ordinary length, number " + std::to_string(i));
      double rate = ok / Seconds(start);
      if (ok != kMessages) std::fprintf(stderr, "only %d of %d messages taken\n", ok, kMessages);
      std::printf("figure: client_send_rate %.0f messages/s\n", rate);
    }
    {
      TZentrailLogger log;
      constexpr int kThreads = 4, kEach = 50'000;
      std::atomic<int> ok{0};
      std::vector<std::thread> threads;
      auto start = std::chrono::steady_clock::now();
      for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&] {
          int mine = 0;
          for (int i = 0; i < kEach; ++i) mine += log.Send("threaded message number " + std::to_string(i));
          ok += mine;
        });
      for (auto& t : threads) t.join();
      double rate = ok / Seconds(start);
      std::printf("figure: client_send_threads_rate %.0f messages/s\n", rate);
    }
  }
  std::filesystem::remove_all(root);
  return 0;
}
