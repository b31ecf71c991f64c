// The cost of one send in asynchronous mode: an enabled logger, a 40-byte text, one thread, while
// the background thread ships to a stand-in dispatcher that answers every batch at once. Bursts
// that fit the queue are timed, each followed by a flush that is not, so that the figure is the
// sender's own cost and not the pace of the receiver.
//
// Figures: async_call_ns (median of the bursts), async_call_ns_best.
#include <poll.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

#include "BenchSupport.h"
#include "ZentrailLogging.h"

using namespace zentrail;
using namespace zentrail::bench;

namespace {

// Reads frames and batches and takes them all, as fast as a socket allows.
class TFakeDispatcher {
 public:
  TFakeDispatcher() {
    std::string error;
    FListen = ListenUnixSocket(DispatcherSocketPath(error), error);
    if (FListen < 0) {
      std::fprintf(stderr, "bench_async_call: %s\n", error.c_str());
      std::exit(1);
    }
    FThread = std::thread([this] {
      while (!FStop) {
        pollfd p{FListen, POLLIN, 0};
        if (poll(&p, 1, 20) <= 0) continue;
        std::string e;
        int fd = AcceptConnection(FListen, false, e);
        if (fd < 0) continue;
        FServe.emplace_back([fd] {
          uint32_t tag;
          std::string payload, err;
          while (ReadFrame(fd, tag, payload, err)) {
            uint32_t reply = 1;
            if (tag == ztBatchTag) {
              reply = 0;
              TZTBatchReader reader(payload);
              uint32_t t;
              std::string_view record;
              while (reader.Next(t, record) == TZTBatchReader::TStep::Record) ++reply;
            }
            if (!WriteReply(fd, reply, err)) break;
          }
          close(fd);
        });
      }
    });
  }
  ~TFakeDispatcher() {
    FStop = true;
    FThread.join();
    close(FListen);
    for (auto& t : FServe) t.detach();
  }

 private:
  int FListen = -1;
  std::atomic<bool> FStop{false};
  std::thread FThread;
  std::vector<std::thread> FServe;
};

}  // namespace

int main(int argc, char** argv) {
  const bool quick = argc > 1 && std::string(argv[1]) == "quick";
  std::string root = IsolateEnvironment();
  {
    TFakeDispatcher dispatcher;
    ZentrailManager.SetAsync(true);
    TZentrailLogger log;
    log.SetCategory("bench");
    const std::string_view text = "Processed order line 4711 of batch 0815.";  // 40 bytes
    static_assert(std::string_view("Processed order line 4711 of batch 0815.").size() == 40);
    for (int i = 0; i < 20000; ++i) log.Send(text);  // warm-up: the route, the caches, the pages
    ZentrailManager.Flush(0);
    const int rounds = quick ? 5 : 30;
    constexpr int kBurst = 100000;  // well inside the 16 MiB queue
    std::vector<double> perCall;
    long queued = 0;
    for (int r = 0; r < rounds; ++r) {
      const auto start = std::chrono::steady_clock::now();
      for (int i = 0; i < kBurst; ++i) queued += log.Send(text);
      perCall.push_back(Seconds(start) * 1e9 / kBurst);
      ZentrailManager.Flush(0);
    }
    if (queued != static_cast<long>(rounds) * kBurst) std::fprintf(stderr, "only %ld messages queued\n", queued);
    const TZentrailAsyncStatistics stats = ZentrailManager.AsyncStatistics();
    if (stats.Refused + stats.Dropped > 0) std::fprintf(stderr, "%llu messages were not taken\n",
                                                        static_cast<unsigned long long>(stats.Refused + stats.Dropped));
    std::sort(perCall.begin(), perCall.end());
    std::printf("figure: async_call_ns %.1f ns\n", perCall[perCall.size() / 2]);
    std::printf("figure: async_call_ns_best %.1f ns\n", perCall.front());
    ZentrailManager.SetAsync(false);
  }
  std::filesystem::remove_all(root);
  return 0;
}
