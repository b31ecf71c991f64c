// One client of the soak test: sends COUNT messages "c<ID> <n>" to the destination, each until it
// is taken (a refusal or a time-out switches the logger off; it is switched on again and the same
// message tried once more). Prints what it saw: messages taken, attempts that failed, and the
// longest single call.
//   soak_client ID COUNT DESTINATION
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "ZentrailLogging.h"

using namespace zentrail;

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: soak_client ID COUNT DESTINATION\n");
    return 2;
  }
  const std::string id = argv[1];
  const long count = std::atol(argv[2]);
  TZentrailDestination destination(argv[3]);
  TZentrailLogger log;
  log.SetDestination(&destination);
  log.SetCategory("soak " + id);
  long taken = 0, failed = 0;
  double longestMs = 0;
  std::string text;
  for (long n = 0; n < count; ++n) {
    text = "c" + id + " " + std::to_string(n);
    for (;;) {
      auto start = std::chrono::steady_clock::now();
      int result = log.Send(text);
      double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
      if (ms > longestMs) longestMs = ms;
      if (result == 1) break;
      ++failed;
      log.SetEnabled(true);
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    ++taken;
  }
  log.SetDestination(nullptr);
  std::printf("client %s taken %ld failed %ld longest_call_ms %.1f\n", id.c_str(), taken, failed, longestMs);
  return 0;
}
