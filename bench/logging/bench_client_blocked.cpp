// The longest that one logging call blocks its thread while the dispatcher is stopped
// (SIGSTOP), with the client's default time limit: calls on sockets already open, on a new
// connection, and with a message too large for the socket buffer, all at once.
#include <signal.h>

#include <algorithm>
#include <cstdio>
#include <thread>

#include "BenchSupport.h"
#include "ZentrailLogging.h"

using namespace zentrail;
using namespace zentrail::bench;

int main() {
  std::string root = IsolateEnvironment();
  Dispatcher dispatcher;
  TZentrailDestination destination("File[Path=" + root + "/blocked.ztl]");
  constexpr int kWarm = 4;
  TZentrailLogger warm[kWarm], fresh, large;
  for (auto& l : warm) {
    l.SetDestination(&destination);
    l.Send("before the stop");
  }
  fresh.ConnectUsingCopyData();
  large.SetDestination(&destination);
  large.Send("before the stop");
  kill(dispatcher.Pid(), SIGSTOP);

  std::atomic<int64_t> longest{0};
  std::atomic<int> taken{0};
  auto timed = [&](TZentrailLogger& log, std::string text) {
    auto start = std::chrono::steady_clock::now();
    taken += log.Send(text);
    int64_t us = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start).count();
    for (int64_t seen = longest.load(); us > seen && !longest.compare_exchange_weak(seen, us);) {
    }
  };
  std::vector<std::thread> threads;
  for (auto& l : warm) threads.emplace_back([&] { timed(l, "while stopped"); });
  threads.emplace_back([&] { timed(fresh, "on a new connection"); });
  threads.emplace_back([&] { timed(large, std::string(16 << 20, 'x')); });
  for (auto& t : threads) t.join();
  kill(dispatcher.Pid(), SIGCONT);
  if (taken != 0) std::fprintf(stderr, "%d messages were taken by a stopped dispatcher\n", taken.load());
  std::fprintf(stderr, "time limit %d ms\n", ZentrailManager.TimeoutMs());
  std::printf("figure: client_blocked_max_ms %.1f ms\n", longest.load() / 1000.0);
  for (auto& l : warm) l.SetDestination(nullptr);
  large.SetDestination(nullptr);
  std::filesystem::remove_all(root);
  return 0;
}
