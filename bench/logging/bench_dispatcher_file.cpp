// Messages per second into a log file through the dispatcher.
#include <cstdio>

#include "BenchSupport.h"
#include "ZentrailLogging.h"

using namespace zentrail;
using namespace zentrail::bench;

int main() {
  std::string root = IsolateEnvironment();
  Dispatcher dispatcher;
  TZentrailDestination destination("File[Path=" + root + "/bench.ztl]");
  TZentrailLogger log;
  log.SetDestination(&destination);
  for (int i = 0; i < 1000; ++i) log.Send("warm-up");
  constexpr int kMessages = 200'000;
  auto start = std::chrono::steady_clock::now();
  int ok = 0;
  for (int i = 0; i < kMessages; ++i) ok += log.Send("a message of ordinary length, number " + std::to_string(i));
  double rate = ok / Seconds(start);
  if (ok != kMessages) std::fprintf(stderr, "only %d of %d messages taken\n", ok, kMessages);
  std::printf("figure: dispatcher_file_rate %.0f messages/s\n", rate);
  log.SetDestination(nullptr);
  std::filesystem::remove_all(root);
  return 0;
}
