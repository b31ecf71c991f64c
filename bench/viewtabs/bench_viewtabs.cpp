// Views at scale.
//
// organize_rate: messages per second through the viewer's adding path (store, organizer, every
// view) with all five organizer fields on and the views it made open: 5 applications, 20 threads,
// their processes, categories and one computer, so about thirty views besides "All Messages".
//
// intake_views_ratio: two zentrail-viewer processes run side by side, each in a folder of its own
// standing in for home and the runtime folder; one has only "All Messages", the other opens a
// project of twenty filtered views at start. A client sends typical messages to each in turns,
// waiting for every reply, and the ratio is the rate with twenty views over the rate with one.
//
// Figures: organize_rate, organize_views, intake_rate_1view, intake_rate_20views, intake_views_ratio.

#include <QApplication>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "ZTChannel.h"
#include "ZTMainForm.h"
#include "ZTMsgView.h"
#include "ZTOrganizer.h"
#include "ZTPromptService.h"
#include "ZentrailMessageSet.h"

using namespace zentrail;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

namespace {

int kOrganizeMessages = 1000000;
int kIntakeMessages = 100000;

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "bench_viewtabs: %s\n", what.c_str());
  std::exit(1);
}

double Seconds(Clock::time_point since) { return std::chrono::duration<double>(Clock::now() - since).count(); }

// A few hundred typical messages of 5 applications and 20 threads.
std::vector<TZentrailMessage> Traffic() {
  std::vector<TZentrailMessage> out;
  const char* apps[] = {"OrderService", "Billing", "Shipping", "Inventory", "Gateway"};
  for (int i = 0; i < 600; ++i) {
    TZentrailMessage m;
    const int kind = i % 10;
    m.MsgType = kind == 0 ? ztmEnterMethod : kind == 5 ? ztmExitMethod : kind == 7 ? ztmWarning : ztmInfo;
    m.MsgContent = ztmText;
    m.MsgText = kind == 0 || kind == 5 ? "TOrderProcessor.ValidateLine"
                                      : "Processed order line " + std::to_string(i * 37) + ", total 1234.56 EUR";
    m.TimeStamp = {36000000 + i * 3, ztDateOf2000 + 9000};
    const int app = i % 5;
    m.AppName = apps[app];
    m.ProcessID = 31000 + static_cast<uint32_t>(app);
    m.ThreadName = "worker-" + std::to_string((i / 5) % 20);
    m.ComputerName = "build-host";
    m.Category = i % 3 == 0 ? "Database" : i % 3 == 1 ? "Network" : "";
    out.push_back(m);
  }
  return out;
}

void OrganizeRate() {
  ViewClasses().Register(QString::fromLatin1(TZTMessageView::ViewClassKey), &TZTMessageView::Create);
  TZTRecordingPromptService prompts;
  TZTPromptServiceGuard guard(&prompts);
  MessageSet.Close();
  MessageSet.Open();
  TFrmViewer viewer;
  viewer.OrganizeBy = ztOrganizeAll;
  viewer.AutoOrganize = true;
  const std::vector<TZentrailMessage> traffic = Traffic();
  // The first pass makes the views; the measured passes go through them all.
  for (const TZentrailMessage& m : traffic) viewer.ProcessMessage(m);
  const int views = viewer.ViewCount();
  const auto start = Clock::now();
  viewer.BeginMessageBatch();
  for (int i = 0; i < kOrganizeMessages; ++i) viewer.ProcessMessage(traffic[static_cast<size_t>(i) % traffic.size()]);
  viewer.EndMessageBatch();
  const double seconds = Seconds(start);
  if (viewer.ViewCount() != views) Fail("the measured messages made new views");
  std::printf("figure: organize_rate %.0f msg/s\n", kOrganizeMessages / seconds);
  std::printf("figure: organize_views %d views\n", views - 1);
  std::fflush(stdout);
}

// ---- Two viewers over the socket

struct TViewerProcess {
  fs::path Root;
  std::vector<std::string> Env;
  std::string Socket;
  pid_t Pid = 0;
};

std::string Criteria(int i) {
  // Twenty filters of the kinds users make: applications, threads, types, a text pattern.
  const char* apps[] = {"OrderService", "Billing", "Shipping", "Inventory", "Gateway"};
  if (i < 5) return std::string("CheckAppName=1\nAppName=") + apps[i] + "\n";
  if (i < 13) return "CheckThreadName=1\nThreadName=worker-" + std::to_string(i - 5) + "\n";
  if (i < 16) return "CheckProcessID=1\nProcessID=" + std::to_string(31000 + i - 13) + "\n";
  if (i < 18) {
    std::string types(47, '0');
    types[static_cast<size_t>(i == 16 ? ztmWarning : ztmError)] = '1';
    return "CheckMsgTypes=1\nMsgTypeSet=" + types + "\nMsgContentSet=" + std::string(47, '0') + "\n";
  }
  if (i == 18) return "CheckCategory=1\nCategory=Database\n";
  return "CheckMessageText=1\nMessageText=total \\d+\\.\\d+ EUR\n";
}

TViewerProcess StartViewer(const fs::path& root, int views) {
  TViewerProcess p;
  p.Root = root;
  for (const char* sub : {"home", "config", "data", "cache", "runtime", "xdg-runtime"}) fs::create_directories(root / sub);
  fs::permissions(root / "runtime", fs::perms::owner_all, fs::perm_options::replace);
  fs::permissions(root / "xdg-runtime", fs::perms::owner_all, fs::perm_options::replace);
  if (views > 0) {
    const fs::path project = root / "twenty.ztp";
    std::ofstream out(project);
    out << "[Views]\nViewCount=" << views << "\n";
    for (int i = 1; i <= views; ++i) out << i << "_ViewName=V" << i << "\n" << i << "_ViewClass=Default\n";
    for (int i = 1; i <= views; ++i) out << "[" << i << "_V" << i << "]\n" << Criteria(i - 1);
    out.close();
    const fs::path settings = root / "data" / "Orvan" / "Zentrail" / "5.0";
    fs::create_directories(settings);
    std::ofstream ini(settings / "ZTLiveViewer.ini");
    ini << "[General]\nLastProject=" << project.string() << "\n";
  }
  p.Env = {"HOME=" + (root / "home").string(),
           "XDG_CONFIG_HOME=" + (root / "config").string(),
           "XDG_DATA_HOME=" + (root / "data").string(),
           "XDG_CACHE_HOME=" + (root / "cache").string(),
           "XDG_RUNTIME_DIR=" + (root / "xdg-runtime").string(),
           "ZENTRAIL_RUNTIME_DIR=" + (root / "runtime").string(),
           "ZENTRAIL_REGISTRY=" + (root / "registry.ini").string(),
           "QT_QPA_PLATFORM=offscreen"};
  if (const char* path = std::getenv("PATH")) p.Env.push_back(std::string("PATH=") + path);
  std::vector<char*> envp;
  for (std::string& e : p.Env) envp.push_back(e.data());
  envp.push_back(nullptr);
  char* argv[] = {const_cast<char*>(ZENTRAIL_VIEWER_PATH), nullptr};
  if (::posix_spawn(&p.Pid, ZENTRAIL_VIEWER_PATH, nullptr, nullptr, argv, envp.data()) != 0)
    Fail("cannot start " ZENTRAIL_VIEWER_PATH);
  p.Socket = (root / "runtime" / "viewer").string();
  const auto deadline = Clock::now() + std::chrono::seconds(30);
  std::string error;
  for (;;) {
    const int fd = ConnectUnixSocket(p.Socket, error);
    if (fd >= 0) {
      ::close(fd);
      break;
    }
    if (Clock::now() > deadline) Fail("a viewer did not answer within 30 s");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return p;
}

double Send(const std::string& socket, const std::vector<std::string>& packets, int n) {
  std::string error;
  const int fd = ConnectUnixSocket(socket, error);
  if (fd < 0) Fail("cannot connect: " + error);
  const auto start = Clock::now();
  for (int i = 0; i < n; ++i)
    if (SendFrameAndWaitReply(fd, ztPacketTag, packets[static_cast<size_t>(i) % packets.size()], error) != 1)
      Fail("a message was refused: " + error);
  const double seconds = Seconds(start);
  ::close(fd);
  return seconds;
}

void IntakeViewsRatio() {
  char tmpl[] = "/tmp/zentrail-bench-viewtabs-XXXXXX";
  if (!::mkdtemp(tmpl)) Fail("cannot make a temporary folder");
  const fs::path root = tmpl;
  TViewerProcess one = StartViewer(root / "one", 0);
  TViewerProcess twenty = StartViewer(root / "twenty", 20);
  std::vector<std::string> packets;
  for (const TZentrailMessage& m : Traffic()) packets.push_back(m.GetAsTransportPacket());
  Send(one.Socket, packets, 2000);  // warm-up: first paints, arenas, caches
  Send(twenty.Socket, packets, 2000);
  // The two take turns in rounds, so that the machine's load weighs on both alike.
  constexpr int kRounds = 10;
  double oneSeconds = 0, twentySeconds = 0;
  for (int round = 0; round < kRounds; ++round) {
    oneSeconds += Send(one.Socket, packets, kIntakeMessages / kRounds);
    twentySeconds += Send(twenty.Socket, packets, kIntakeMessages / kRounds);
  }
  const double oneRate = kIntakeMessages / oneSeconds, twentyRate = kIntakeMessages / twentySeconds;
  std::printf("figure: intake_rate_1view %.0f msg/s\n", oneRate);
  std::printf("figure: intake_rate_20views %.0f msg/s\n", twentyRate);
  std::printf("figure: intake_views_ratio %.3f ratio\n", twentyRate / oneRate);
  std::fflush(stdout);
  for (TViewerProcess* p : {&one, &twenty}) {
    ::kill(p->Pid, SIGTERM);
    int status = 0;
    ::waitpid(p->Pid, &status, 0);
  }
  fs::remove_all(root);
}

}  // namespace

int main(int argc, char** argv) {
  const bool quick = argc > 1 && std::string(argv[1]) == "quick";
  if (quick) {
    kOrganizeMessages /= 10;
    kIntakeMessages /= 10;
  }
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  // The in-process window reads and writes no settings of the user's: its folders are temporary.
  char tmpl[] = "/tmp/zentrail-bench-organize-XXXXXX";
  if (!::mkdtemp(tmpl)) Fail("cannot make a temporary folder");
  const fs::path home = tmpl;
  setenv("HOME", home.c_str(), 1);
  setenv("XDG_DATA_HOME", (home / "data").c_str(), 1);
  setenv("XDG_CONFIG_HOME", (home / "config").c_str(), 1);
  setenv("ZENTRAIL_RUNTIME_DIR", (home / "runtime").c_str(), 1);
  setenv("ZENTRAIL_REGISTRY", (home / "registry.ini").c_str(), 1);
  const std::string only = argc > 2 ? argv[2] : "";
  if (only != "intake") {
    QApplication app(argc, argv);
    OrganizeRate();
  }
  fs::remove_all(home);
  if (only == "organize") return 0;
  IntakeViewsRatio();
  return 0;
}
