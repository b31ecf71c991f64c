// Throughput past one round trip per message, measured against a running zentrail-viewer that has
// five filtered views open besides "All Messages" (offscreen, in a temporary folder standing in for
// home and the runtime folder).
//
// viewer_batch_intake_rate: batch frames of 4,096 typical messages written straight to the viewer's
// socket, each waiting for its count, as the dispatcher forwards them.
// intake_rate_5views: the same messages from one synchronous client, one frame and reply each,
// in rounds before and after the asynchronous run.
// e2e_async_rate: one client process, four threads sending through the asynchronous client and
// the dispatcher into the same viewer, from the first call until the viewer has taken the last
// message; e2e_async_ratio is that over intake_rate_5views, both measured in this run.
//
// "bench_throughput quick" divides the sizes by ten.

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "ZTChannel.h"
#include "ZentrailLogging.h"

extern char** environ;

using namespace zentrail;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

namespace {

int kBatchMessages = 2000000;
int kSyncMessages = 200000;
int kAsyncMessages = 2000000;

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "bench_throughput: %s\n", what.c_str());
  std::exit(1);
}

double Seconds(Clock::time_point since) { return std::chrono::duration<double>(Clock::now() - since).count(); }

const char* const kApps[] = {"OrderService", "Billing", "Shipping", "Inventory", "Gateway"};

// A few hundred typical messages of five applications and twenty threads: short texts with
// numbers, method pairs, the odd warning.
std::vector<TZentrailMessage> Traffic() {
  std::vector<TZentrailMessage> out;
  for (int i = 0; i < 600; ++i) {
    TZentrailMessage m;
    const int kind = i % 10;
    m.MsgType = kind == 0 ? ztmEnterMethod : kind == 5 ? ztmExitMethod : kind == 7 ? ztmWarning : ztmInfo;
    m.MsgContent = ztmText;
    m.MsgText = kind == 0 || kind == 5 ? "TOrderProcessor.ValidateLine"
                                      : "Processed order line " + std::to_string(i * 37) + ", total 1234.56 EUR";
    m.TimeStamp = {36000000 + i * 3, ztDateOf2000 + 9000};
    m.AppName = kApps[i % 5];
    m.ProcessID = 31000 + static_cast<uint32_t>(i % 5);
    m.ThreadName = "worker-" + std::to_string((i / 5) % 20);
    m.ComputerName = "build-host";
    m.Category = i % 3 == 0 ? "Database" : i % 3 == 1 ? "Network" : "";
    out.push_back(m);
  }
  return out;
}

// Five filters of the kinds users make: an application, a thread, a process, warnings, a category.
const char* const kViews[] = {
    "CheckAppName=1\nAppName=OrderService\n",
    "CheckThreadName=1\nThreadName=worker-3\n",
    "CheckProcessID=1\nProcessID=31002\n",
    "CheckMsgTypes=1\nMsgTypeSet=01000000000000000000000000000000000000000000000\n"
    "MsgContentSet=00000000000000000000000000000000000000000000000\n",
    "CheckCategory=1\nCategory=Database\n",
};

struct TViewer {
  pid_t Pid = 0;
  std::string Socket;
};

void Isolate(const fs::path& root) {
  for (const char* sub : {"home", "config", "data", "cache", "runtime", "xdg-runtime"}) fs::create_directories(root / sub);
  fs::permissions(root / "runtime", fs::perms::owner_all, fs::perm_options::replace);
  fs::permissions(root / "xdg-runtime", fs::perms::owner_all, fs::perm_options::replace);
  setenv("HOME", (root / "home").c_str(), 1);
  setenv("XDG_CONFIG_HOME", (root / "config").c_str(), 1);
  setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
  setenv("XDG_CACHE_HOME", (root / "cache").c_str(), 1);
  setenv("XDG_RUNTIME_DIR", (root / "xdg-runtime").c_str(), 1);
  setenv("ZENTRAIL_RUNTIME_DIR", (root / "runtime").c_str(), 1);
  setenv("ZENTRAIL_REGISTRY", (root / "registry.ini").c_str(), 1);
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  std::ofstream registry(root / "registry.ini");
  registry << "[Software\\Orvan\\Zentrail\\5.0]\nDispatcher=" << ZENTRAIL_DISPATCHER_PATH << "\n";
}

void WaitForSocket(const std::string& path, const char* who) {
  const auto deadline = Clock::now() + std::chrono::seconds(30);
  std::string error;
  for (;;) {
    const int fd = ConnectUnixSocket(path, error);
    if (fd >= 0) {
      ::close(fd);
      return;
    }
    if (Clock::now() > deadline) Fail(std::string(who) + " did not answer within 30 s");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

pid_t Spawn(const char* program) {
  pid_t pid = 0;
  char* argv[] = {const_cast<char*>(program), nullptr};
  if (::posix_spawn(&pid, program, nullptr, nullptr, argv, environ) != 0) Fail(std::string("cannot start ") + program);
  return pid;
}

TViewer StartViewer(const fs::path& root) {
  const fs::path project = root / "five.ztp";
  std::ofstream out(project);
  out << "[Views]\nViewCount=5\n";
  for (int i = 1; i <= 5; ++i) out << i << "_ViewName=V" << i << "\n" << i << "_ViewClass=Default\n";
  for (int i = 1; i <= 5; ++i) out << "[" << i << "_V" << i << "]\n" << kViews[i - 1];
  out.close();
  const fs::path settings = root / "data" / "Orvan" / "Zentrail" / "5.0";
  fs::create_directories(settings);
  std::ofstream(settings / "ZTLiveViewer.ini") << "[General]\nLastProject=" << project.string() << "\n";
  TViewer v;
  std::string error;
  v.Socket = ViewerSocketPath(error);
  if (v.Socket.empty()) Fail(error);
  v.Pid = Spawn(ZENTRAIL_VIEWER_PATH);
  WaitForSocket(v.Socket, "the viewer");
  return v;
}

void Stop(pid_t pid) {
  ::kill(pid, SIGTERM);
  int status = 0;
  ::waitpid(pid, &status, 0);
}

int Connect(const std::string& path) {
  std::string error;
  const int fd = ConnectUnixSocket(path, error);
  if (fd < 0) Fail("cannot connect to " + path + ": " + error);
  return fd;
}

// Batches of 4,096 records, each waiting for its count; seconds taken for n messages.
double SendBatches(const std::string& socket, const std::vector<std::string>& packets, int n) {
  constexpr int kPerBatch = 4096;
  std::vector<std::string> batches;
  for (std::size_t first = 0; batches.size() < 16; first += kPerBatch) {
    std::string batch;
    for (int i = 0; i < kPerBatch; ++i) AppendBatchRecord(batch, ztPacketTag, packets[(first + i) % packets.size()]);
    batches.push_back(std::move(batch));
  }
  const int fd = Connect(socket);
  std::string error;
  const auto start = Clock::now();
  for (int sent = 0, b = 0; sent < n; sent += kPerBatch, ++b) {
    const int64_t taken = SendBatchAndWaitCount(fd, batches[static_cast<size_t>(b) % batches.size()], ztNoDeadline, error);
    if (taken != kPerBatch) Fail("a batch was answered " + std::to_string(taken) + " " + error);
  }
  const double seconds = Seconds(start);
  ::close(fd);
  return seconds;
}

double SendSingles(const std::string& socket, const std::vector<std::string>& packets, int n) {
  const int fd = Connect(socket);
  std::string error;
  const auto start = Clock::now();
  for (int i = 0; i < n; ++i)
    if (SendFrameAndWaitReply(fd, ztPacketTag, packets[static_cast<size_t>(i) % packets.size()], error) != 1)
      Fail("a message was refused: " + error);
  const double seconds = Seconds(start);
  ::close(fd);
  return seconds;
}

// Nanoseconds the process's main thread has run so far; the viewer's intake runs there.
uint64_t RunNs(pid_t pid) {
  std::ifstream in("/proc/" + std::to_string(pid) + "/schedstat");
  uint64_t ns = 0;
  in >> ns;
  return ns;
}

// The moment the viewer last worked before it fell quiet for 100 ms: when it has taken the last
// message of a stream that the dispatcher still forwards after the client is done.
Clock::time_point ViewerQuietSince(pid_t viewer) {
  uint64_t last = RunNs(viewer);
  Clock::time_point changed = Clock::now();
  while (Clock::now() - changed < std::chrono::milliseconds(100)) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const uint64_t now = RunNs(viewer);
    if (now != last) {
      last = now;
      changed = Clock::now();
    }
  }
  return changed;
}

// Four threads of this process through the asynchronous client, the dispatcher and the viewer;
// messages per second from the first call until the viewer has taken the last one.
double AsyncRate(pid_t viewer, const std::vector<TZentrailMessage>& traffic, int n) {
  ZentrailManager.SetAsync(true);
  constexpr int kThreads = 4;
  auto send = [&](int count) {
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
      threads.emplace_back([&, t] {
        TZentrailLogger log;
        log.SetCategory(t % 2 == 0 ? "Database" : "Network");
        ZentrailManager.SetCurrentThreadName("worker-" + std::to_string(t));
        for (int i = 0; i < count / kThreads; ++i) {
          const TZentrailMessage& m = traffic[static_cast<size_t>(i * kThreads + t) % traffic.size()];
          log.Send(m.MsgType, m.MsgText);
        }
      });
    for (auto& t : threads) t.join();
  };
  send(40000);  // warm-up: routes, the dispatcher's queues, the viewer's arenas
  ZentrailManager.Flush(0);
  ViewerQuietSince(viewer);
  const TZentrailAsyncStatistics before = ZentrailManager.AsyncStatistics();
  const auto start = Clock::now();
  send(n);
  ZentrailManager.Flush(0);
  const double seconds = std::chrono::duration<double>(ViewerQuietSince(viewer) - start).count();
  const TZentrailAsyncStatistics after = ZentrailManager.AsyncStatistics();
  if (after.Accepted - before.Accepted != static_cast<uint64_t>(n / kThreads * kThreads))
    Fail("the dispatcher took " + std::to_string(after.Accepted - before.Accepted) + " of the messages");
  ZentrailManager.SetAsync(false);
  return n / kThreads * kThreads / seconds;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && std::string(argv[1]) == "quick") {
    kBatchMessages /= 10;
    kSyncMessages /= 10;
    kAsyncMessages /= 10;
  }
  char tmpl[] = "/tmp/zentrail-bench-throughput-XXXXXX";
  if (!::mkdtemp(tmpl)) Fail("cannot make a temporary folder");
  const fs::path root = tmpl;
  Isolate(root);

  std::vector<std::string> packets;
  for (const TZentrailMessage& m : Traffic()) packets.push_back(m.GetAsTransportPacket());

  // "bench_throughput quick e2e" skips to the asynchronous client, for profiling.
  const bool e2eOnly = argc > 2 && std::string(argv[2]) == "e2e";
  TViewer viewer = StartViewer(root);
  if (e2eOnly) kBatchMessages = kSyncMessages = 0;
  SendBatches(viewer.Socket, packets, 20000);  // warm-up: first paints, arenas, caches
  SendSingles(viewer.Socket, packets, 2000);
  // Batches and single frames take turns in rounds, so that the machine's load weighs on both.
  constexpr int kRounds = 5;
  double batchSeconds = 0, syncSeconds = 0;
  for (int round = 0; round < kRounds; ++round) {
    batchSeconds += SendBatches(viewer.Socket, packets, kBatchMessages / kRounds);
    syncSeconds += SendSingles(viewer.Socket, packets, kSyncMessages / kRounds);
  }
  const double batchRate = e2eOnly ? 0 : kBatchMessages / batchSeconds;
  std::printf("figure: viewer_batch_intake_rate %.0f msg/s\n", batchRate);
  std::fflush(stdout);

  std::string error;
  const pid_t dispatcher = Spawn(ZENTRAIL_DISPATCHER_PATH);
  WaitForSocket(DispatcherSocketPath(error), "the dispatcher");
  const double asyncRate = AsyncRate(viewer.Pid, Traffic(), kAsyncMessages);
  // The synchronous client again, right after: a change of the machine's load during the run
  // weighs on both sides of the ratio.
  for (int round = 0; round < kRounds; ++round) syncSeconds += SendSingles(viewer.Socket, packets, kSyncMessages / kRounds);
  const double syncRate = e2eOnly ? 1 : 2.0 * kSyncMessages / syncSeconds;
  std::printf("figure: intake_rate_5views %.0f msg/s\n", syncRate);
  std::printf("figure: e2e_async_rate %.0f msg/s\n", asyncRate);
  std::printf("figure: e2e_async_ratio %.2f ratio\n", asyncRate / syncRate);
  std::fflush(stdout);

  Stop(dispatcher);
  Stop(viewer.Pid);
  fs::remove_all(root);
  return 0;
}
