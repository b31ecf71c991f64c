// The live road measured end to end: client processes send typical messages through the real
// socket into a running zentrail-viewer (offscreen, holding "All Messages"), each waiting for its
// reply, and the same client runs against a trivial server that answers 1 without reading the
// packet. Everything lives in a temporary folder that stands in for home and the runtime folder.
//
// Figures: intake_rate, raw_roundtrip_rate, intake_ratio, intake_rate_4clients,
// viewer_rss_per_message.

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "ZTChannel.h"
#include "ZentrailMessage.h"

extern char** environ;

using namespace zentrail;
using Clock = std::chrono::steady_clock;

namespace {

// Full sizes; "bench_liveroad quick" divides them by 10 for a fast look.
int kMessages = 200000;
int kPerClient4 = 100000;
int kRssTotal = 1000000;

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "bench_liveroad: %s\n", what.c_str());
  std::exit(1);
}

// A few hundred typical messages: short texts with numbers, method pairs, the odd warning.
std::vector<std::string> TypicalPackets() {
  std::vector<std::string> out;
  for (int i = 0; i < 500; ++i) {
    TZentrailMessage m;
    int kind = i % 10;
    m.MsgType = kind == 0 ? ztmEnterMethod : kind == 5 ? ztmExitMethod : kind == 7 ? ztmWarning : ztmInfo;
    m.MsgContent = ztmText;
    m.MsgText = kind == 0 || kind == 5 ? "TOrderProcessor.ValidateLine"
                                      : "Processed order line " + std::to_string(i * 37) + " of batch " +
                                            std::to_string(i / 10) + ", total 1234.56 EUR";
    m.TimeStamp = {36000000 + i * 3, ztDateOf2000 + 9000};
    m.ProcessID = 31337;
    m.ThreadName = "Main thread";
    m.AppName = "OrderService";
    m.ComputerName = "build-host";
    m.Category = i % 3 == 0 ? "Database" : "";
    out.push_back(m.GetAsTransportPacket());
  }
  return out;
}

int Connect(const std::string& path) {
  std::string error;
  int fd = ConnectUnixSocket(path, error);
  if (fd < 0) Fail("cannot connect to " + path + ": " + error);
  return fd;
}

// Sends n frames, each waiting for its reply; returns seconds taken.
double SendMessages(const std::string& path, const std::vector<std::string>& packets, int n) {
  int fd = Connect(path);
  std::string error;
  auto start = Clock::now();
  for (int i = 0; i < n; ++i) {
    int reply = SendFrameAndWaitReply(fd, ztPacketTag, packets[i % packets.size()], error);
    if (reply != 1) Fail("message " + std::to_string(i) + " refused: " + std::to_string(reply) + " " + error);
  }
  double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  ::close(fd);
  return seconds;
}

long RssKiB(pid_t pid) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  std::string line;
  while (std::getline(status, line))
    if (line.rfind("VmRSS:", 0) == 0) return std::atol(line.c_str() + 6);
  return -1;
}

// CPU seconds (user + system) that a process has used so far.
double CpuSeconds(pid_t pid) {
  std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
  std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
  std::size_t close = text.rfind(')');
  if (close == std::string::npos) return 0;
  std::istringstream fields(text.substr(close + 2));
  std::string skip;
  for (int i = 0; i < 11; ++i) fields >> skip;  // state .. cmajflt
  double utime = 0, stime = 0;
  fields >> utime >> stime;
  return (utime + stime) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

// The trivial server: reads each whole frame and answers 1, nothing else.
void RawServer(int listenFd) {
  for (;;) {
    std::string error;
    int fd = AcceptConnection(listenFd, false, error);
    if (fd < 0) return;
    std::thread([fd] {
      uint32_t tag;
      std::string payload, error;
      while (ReadFrame(fd, tag, payload, error))
        if (!WriteReply(fd, 1, error)) break;
      ::close(fd);
    }).detach();
  }
}

// Four processes at once, started together; returns the seconds from start to the last finish.
double FourClients(const std::string& path, const std::vector<std::string>& packets) {
  int go[2];
  if (::pipe(go) != 0) Fail("pipe");
  std::vector<pid_t> children;
  for (int c = 0; c < 4; ++c) {
    pid_t pid = ::fork();
    if (pid < 0) Fail("fork");
    if (pid == 0) {
      ::close(go[1]);
      char byte;
      if (::read(go[0], &byte, 1) != 0) _exit(2);  // the parent closes its end to start everybody
      SendMessages(path, packets, kPerClient4);
      _exit(0);
    }
    children.push_back(pid);
  }
  ::close(go[0]);
  std::this_thread::sleep_for(std::chrono::milliseconds(200));  // let the children reach the read
  auto start = Clock::now();
  ::close(go[1]);
  for (pid_t pid : children) {
    int status = 0;
    ::waitpid(pid, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) Fail("a client process failed");
  }
  return std::chrono::duration<double>(Clock::now() - start).count();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && std::string(argv[1]) == "quick") {
    kMessages /= 10;
    kPerClient4 /= 10;
    kRssTotal /= 10;
  }
  char tmpl[] = "/tmp/zentrail-bench-liveroad-XXXXXX";
  if (!::mkdtemp(tmpl)) Fail("cannot make a temporary folder");
  std::filesystem::path root = tmpl;
  for (const char* sub : {"home", "config", "data", "cache", "runtime", "xdg-runtime"})
    std::filesystem::create_directories(root / sub);
  std::filesystem::permissions(root / "runtime", std::filesystem::perms::owner_all,
                               std::filesystem::perm_options::replace);
  std::filesystem::permissions(root / "xdg-runtime", std::filesystem::perms::owner_all,
                               std::filesystem::perm_options::replace);
  setenv("HOME", (root / "home").c_str(), 1);
  setenv("XDG_CONFIG_HOME", (root / "config").c_str(), 1);
  setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
  setenv("XDG_CACHE_HOME", (root / "cache").c_str(), 1);
  setenv("XDG_RUNTIME_DIR", (root / "xdg-runtime").c_str(), 1);
  setenv("ZENTRAIL_RUNTIME_DIR", (root / "runtime").c_str(), 1);
  setenv("ZENTRAIL_REGISTRY", (root / "registry.ini").c_str(), 1);
  setenv("QT_QPA_PLATFORM", "offscreen", 0);

  std::string error;
  std::string viewerPath = ViewerSocketPath(error);
  if (viewerPath.empty()) Fail(error);
  std::vector<std::string> packets = TypicalPackets();

  // The viewer, as the user starts it.
  pid_t viewer = 0;
  char* viewerArgv[] = {const_cast<char*>(ZENTRAIL_VIEWER_PATH), nullptr};
  if (::posix_spawn(&viewer, ZENTRAIL_VIEWER_PATH, nullptr, nullptr, viewerArgv, environ) != 0)
    Fail("cannot start " ZENTRAIL_VIEWER_PATH);
  auto deadline = Clock::now() + std::chrono::seconds(30);
  for (;;) {
    int fd = ConnectUnixSocket(viewerPath, error);
    if (fd >= 0) {
      ::close(fd);
      break;
    }
    if (Clock::now() > deadline) Fail("the viewer did not answer within 30 s");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }

  // The trivial server, in this process.
  std::string rawPath = (root / "runtime" / "raw").string();
  int rawListen = ListenUnixSocket(rawPath, error);
  if (rawListen < 0) Fail(error);
  std::thread(RawServer, rawListen).detach();

  int sent = 0;
  SendMessages(viewerPath, packets, 2000);  // warm-up: first paints, arenas, caches
  SendMessages(rawPath, packets, 2000);
  sent += 2000;
  long rssStart = RssKiB(viewer);
  double cpuStart = CpuSeconds(viewer);
  // Viewer and trivial server take turns in ten rounds, so that a change in the machine's load
  // during the run weighs on both figures alike and the ratio stays meaningful.
  constexpr int kRounds = 10;
  double intakeSeconds = 0, rawSeconds = 0;
  for (int round = 0; round < kRounds; ++round) {
    intakeSeconds += SendMessages(viewerPath, packets, kMessages / kRounds);
    rawSeconds += SendMessages(rawPath, packets, kMessages / kRounds);
  }
  sent += kMessages;
  double intakeRate = kMessages / intakeSeconds;
  double rawRate = kMessages / rawSeconds;
  double cpuPerMessage = (CpuSeconds(viewer) - cpuStart) / kMessages * 1e6;

  double fourSeconds = FourClients(viewerPath, packets);
  sent += 4 * kPerClient4;
  double fourRate = 4.0 * kPerClient4 / fourSeconds;

  if (sent < kRssTotal) SendMessages(viewerPath, packets, kRssTotal - sent);
  sent = std::max(sent, kRssTotal);
  long rssEnd = RssKiB(viewer);
  double rssPerMessage = (rssEnd - rssStart) * 1024.0 / (sent - 2000);

  std::printf("figure: intake_rate %.0f messages/s\n", intakeRate);
  std::printf("figure: raw_roundtrip_rate %.0f messages/s\n", rawRate);
  std::printf("figure: intake_ratio %.3f ratio\n", intakeRate / rawRate);
  std::printf("figure: intake_rate_4clients %.0f messages/s\n", fourRate);
  std::printf("figure: viewer_cpu_per_message %.2f us\n", cpuPerMessage);
  std::printf("figure: viewer_rss_per_message %.1f bytes\n", rssPerMessage);
  std::fflush(stdout);

  ::kill(viewer, SIGTERM);
  int status = 0;
  ::waitpid(viewer, &status, 0);
  std::filesystem::remove_all(root);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) Fail("the viewer did not end cleanly");
  return 0;
}
