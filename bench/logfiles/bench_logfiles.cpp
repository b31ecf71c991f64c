// Log files through the main window (offscreen, 1280 by 900, "All Messages" and three filtered
// views open).
//
// log_load_ui_ms: a log of 1,000,000 typical records loaded through LoadLogFile, median of three
// loads. log_load_paint_gap_ms: the longest time the window went without painting during those
// loads. follow_latency_ms: the median time from a record's write to a followed file until the
// row holding it has been painted.
//
// Everything lives in a temporary folder that stands in for home and the runtime folder.
// "bench_logfiles quick" loads 100,000 records instead.

#include <QAbstractScrollArea>
#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <filesystem>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include "LogRecord.h"
#include "ZTMainForm.h"
#include "ZTMsgView.h"
#include "ZTPromptService.h"
#include "ZentrailMessageSet.h"

using namespace zentrail;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "bench_logfiles: %s\n", what.c_str());
  std::exit(1);
}

fs::path IsolatedRoot() {
  char tmpl[] = "/tmp/zentrail-bench-logfiles-XXXXXX";
  if (!::mkdtemp(tmpl)) Fail("cannot make a temporary folder");
  const fs::path root = tmpl;
  for (const char* sub : {"home", "config", "data", "cache", "runtime", "xdg-runtime", "logs"})
    fs::create_directories(root / sub);
  for (const char* sub : {"runtime", "xdg-runtime"})
    fs::permissions(root / sub, fs::perms::owner_all, fs::perm_options::replace);
  setenv("HOME", (root / "home").c_str(), 1);
  setenv("XDG_CONFIG_HOME", (root / "config").c_str(), 1);
  setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
  setenv("XDG_CACHE_HOME", (root / "cache").c_str(), 1);
  setenv("XDG_RUNTIME_DIR", (root / "xdg-runtime").c_str(), 1);
  setenv("ZENTRAIL_RUNTIME_DIR", (root / "runtime").c_str(), 1);
  setenv("ZENTRAIL_REGISTRY", (root / "registry.ini").c_str(), 1);
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  return root;
}

// A service run of a few processes: nested calls, progress lines, warnings now and then.
TZentrailMessage TypicalMessage(int i) {
  TZentrailMessage m;
  const int kind = i % 10;
  m.MsgType = kind == 0 ? ztmEnterMethod : kind == 5 ? ztmExitMethod : kind == 7 ? ztmWarning : kind == 8 ? ztmError : ztmInfo;
  m.MsgContent = ztmText;
  m.MsgText = kind == 0 || kind == 5 ? "TOrderProcessor.ValidateLine"
                                    : "Processed order line " + std::to_string(i * 37 % 100000) + " of batch " +
                                          std::to_string(i / 10) + ", total 1234.56 EUR";
  m.TimeStamp = {36000000 + i % 50000000, ztDateOf2000 + 9000};
  m.ProcessID = 31337 + static_cast<uint32_t>(i / 100 % 3);
  m.ThreadName = i % 4 == 0 ? "Worker 2" : "Main thread";
  m.AppName = i / 100 % 3 == 0 ? "OrderService" : "Billing";
  m.ComputerName = "build-host";
  m.Category = i % 3 == 0 ? "Database" : "";
  return m;
}

void WriteLog(const fs::path& path, int records) {
  std::string bytes;
  bytes.reserve(static_cast<size_t>(records) * 160);
  for (int i = 0; i < records; ++i) AppendLogRecord(TypicalMessage(i), bytes);
  FILE* f = std::fopen(path.c_str(), "wb");
  if (!f || std::fwrite(bytes.data(), 1, bytes.size(), f) != bytes.size()) Fail("cannot write " + path.string());
  std::fclose(f);
}

// Records when any widget of the window paints; paints closer together than 5 ms count once.
class TPaintWatch : public QObject {
 public:
  explicit TPaintWatch(QWidget* window) : FWindow(window) { qApp->installEventFilter(this); }
  ~TPaintWatch() override { qApp->removeEventFilter(this); }
  std::vector<qint64> Paints;  // ms of the clock
  QElapsedTimer Clock;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() != QEvent::Paint || !watched->isWidgetType()) return false;
    if (static_cast<QWidget*>(watched)->window() != FWindow) return false;
    const qint64 now = Clock.elapsed();
    if (Paints.empty() || now - Paints.back() >= 5) Paints.push_back(now);
    return false;
  }

 private:
  QWidget* FWindow;
};

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values.empty() ? 0 : values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  const bool quick = argc > 1 && std::strcmp(argv[1], "quick") == 0;
  const int records = quick ? 100000 : 1000000;
  const fs::path root = IsolatedRoot();
  QApplication app(argc, argv);
  ViewClasses().Register(QString::fromLatin1(TZTMessageView::ViewClassKey), &TZTMessageView::Create);
  TZTRecordingPromptService prompts;
  TZTPromptServiceGuard guard(&prompts);

  const fs::path log = root / "logs" / "large.ztl";
  WriteLog(log, records);

  double paintGap = 0;
  std::vector<double> loads;
  {
    TFrmViewer viewer;
    viewer.resize(1280, 900);
    viewer.show();
    TZTFilterCriteria problems;
    problems.CheckMsgTypes = true;
    problems.MsgTypeSet.set(ztmWarning);
    problems.MsgTypeSet.set(ztmError);
    viewer.CreateView("Problems", problems, false, false, "Default");
    TZTFilterCriteria billing;
    billing.CheckAppName = true;
    billing.AppName = "Billing";
    viewer.CreateView("Billing", billing, false, false, "Default");
    TZTFilterCriteria batches;
    batches.CheckMessageText = true;
    batches.MessageText = "batch 1[0-9]*0,";
    viewer.CreateView("Batches", batches, false, false, "Default");
    viewer.SetActiveViewIndex(0);
    QCoreApplication::processEvents();

    for (int run = 0; run < 3; ++run) {
      prompts.ThreeWayAnswers = {TZTAnswer::No};
      TPaintWatch watch(&viewer);
      QElapsedTimer timer;
      timer.start();
      watch.Clock.start();
      std::vector<qint64> slices;
      viewer.OnLoadSlice = [&] { slices.push_back(watch.Clock.elapsed()); };
      viewer.LoadLogFile(QString::fromStdString(log.string()), false);
      viewer.OnLoadSlice = nullptr;
      if (std::getenv("BENCH_VERBOSE")) {
        std::string line = "slices:";
        // Appended piece by piece: GCC 12 warns falsely (-Wrestrict) about " " + std::string.
        for (qint64 at : slices) line.append(" ").append(std::to_string(at));
        line += "\npaints:";
        for (qint64 at : watch.Paints) line.append(" ").append(std::to_string(at));
        std::fprintf(stderr, "%s\n", line.c_str());
      }
      const double ms = static_cast<double>(timer.nsecsElapsed()) / 1e6;
      if (MessageSet.GetRecordCount() != records || viewer.LastLoad().Records != records)
        Fail("the load read " + std::to_string(viewer.LastLoad().Records) + " records");
      loads.push_back(ms);
      qint64 last = 0;
      for (qint64 at : watch.Paints) {
        paintGap = std::max(paintGap, static_cast<double>(at - last));
        last = at;
      }
      paintGap = std::max(paintGap, ms - static_cast<double>(last));
      std::fprintf(stderr, "load %d: %.0f ms, %d slices, %zu paints\n", run + 1, ms, viewer.LastLoad().Slices,
                   watch.Paints.size());
    }
  }
  std::printf("figure: log_load_ui_ms %.0f ms\n", Median(loads));
  std::printf("figure: log_load_paint_gap_ms %.0f ms\n", paintGap);
  std::fflush(stdout);

  // Following: a writer appends one record at a time; the latency runs until the row has painted.
  std::vector<double> latencies;
  {
    MessageSet.Close();
    MessageSet.Open();
    const fs::path followed = root / "logs" / "followed.ztl";
    std::string first;
    AppendLogRecord(TypicalMessage(1), first);
    FILE* f = std::fopen(followed.c_str(), "wb");
    std::fwrite(first.data(), 1, first.size(), f);
    std::fclose(f);
    TFrmViewer viewer;
    viewer.resize(1280, 900);
    viewer.show();
    QCoreApplication::processEvents();
    if (!viewer.StartFollowing(QString::fromStdString(followed.string()))) Fail("cannot follow");
    IZTMessageView* view = viewer.GetViewIntf(0);
    constexpr int kSamples = 60;
    std::vector<Clock::time_point> written(kSamples + 2);
    std::atomic<int> writtenCount{0};
    int seen = 0;
    QEventLoop loop;
    struct TRowPaint : QObject {
      std::function<void()> OnPaint;
      bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint && OnPaint) OnPaint();
        return false;
      }
    } rowPaint;
    rowPaint.OnPaint = [&] {
      // Rows 0 .. count-1 are on screen; the newest row counts once its paint has begun.
      const int rows = view->GetCount() - 1;
      while (seen < rows && seen < writtenCount.load()) {
        latencies.push_back(std::chrono::duration<double, std::milli>(Clock::now() - written[static_cast<size_t>(seen)]).count());
        ++seen;
      }
      if (seen >= kSamples) loop.quit();
    };
    qobject_cast<QAbstractScrollArea*>(view->GetWidget())->viewport()->installEventFilter(&rowPaint);
    std::thread writer([&] {
      const int fd = ::open(followed.c_str(), O_WRONLY | O_APPEND);
      for (int i = 0; i < kSamples; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(53));
        std::string record;
        AppendLogRecord(TypicalMessage(i + 2), record);
        written[static_cast<size_t>(i)] = Clock::now();
        writtenCount.store(i + 1);
        if (::write(fd, record.data(), record.size()) != static_cast<ssize_t>(record.size())) break;
      }
      ::close(fd);
    });
    QTimer::singleShot(60000, &loop, &QEventLoop::quit);
    loop.exec();
    writer.join();
    if (static_cast<int>(latencies.size()) < kSamples) Fail("only " + std::to_string(latencies.size()) + " rows arrived");
  }
  std::printf("figure: follow_latency_ms %.1f ms\n", Median(latencies));
  std::printf("figure: follow_latency_max_ms %.1f ms\n", *std::max_element(latencies.begin(), latencies.end()));
  std::error_code ec;
  fs::remove_all(root, ec);
  return 0;
}
