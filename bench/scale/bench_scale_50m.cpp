// Fifty million messages: appended to the store and to one unfiltered view as the live road does
// (in update brackets of 4,096, as batches arrive), then refiltered, searched and painted. The
// texts add up to more than 2^31 bytes, and the figures check that rows, selection and bookmarks
// at the end of the view still name the right records.
//
// Figures: scale_50m_store_bytes_per_message (the store's own count), scale_50m_rss_per_message
// (what the process grew by, store and view), scale_50m_append_rate, scale_50m_refilter_s (a
// second view refilled with an application, a thread and a text pattern), scale_50m_find_s
// (FindNext from row 0 to the only match in the last row), scale_50m_paint_frame_us_top and
// scale_50m_paint_frame_us_end (a full repaint at row 0 and at row 49,999,000).
//
// "bench_scale_50m N" uses N messages instead, for a quick look.

#include <QApplication>
#include <QElapsedTimer>
#include <QPixmap>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "ZTMsgView.h"
#include "ZTPromptService.h"
#include "ZentrailMessageSet.h"

using namespace zentrail;

namespace {

constexpr const char* kApps[] = {"OrderService", "Billing", "Gateway", "Scheduler"};
constexpr const char* kThreads[] = {"main", "worker-1", "worker-2", "timer"};

long RssKiB() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line))
    if (line.rfind("VmRSS:", 0) == 0) return std::atol(line.c_str() + 6);
  return -1;
}

double Seconds(QElapsedTimer& timer) { return static_cast<double>(timer.nsecsElapsed()) / 1e9; }

// Texts of 30 to 70 bytes, numbered so that they differ; the last one holds the needle.
void MakeText(int64_t i, int64_t count, std::string& text) {
  text.clear();
  switch (i % 6) {
    case 0: text = "OrderController.Handle(#"; break;
    case 1: text = "Slow payment gateway answer (840 ms) for order "; break;
    case 2: text = "Zahlung für Auftrag abgelehnt, Kartenprüfung fehlgeschlagen: "; break;
    default: text = "Processing line item of order "; break;
  }
  text += std::to_string(i);
  if (i == count - 1) text = "The last message holds the needle-4711 that the search looks for";
}

struct TFrames {
  double Top = 0, End = 0;
};

double MedianFrameUs(TZTMessageView& view, QPixmap& target, int32_t top) {
  view.SetTopIndex(top);
  std::vector<double> times;
  for (int run = 0; run < 15; ++run) {
    QElapsedTimer timer;
    timer.start();
    target.fill(Qt::white);
    view.render(&target);
    times.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e3);
  }
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "bench_scale_50m: %s\n", what.c_str());
  std::exit(1);
}

}  // namespace

int main(int argc, char** argv) {
  if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QApplication app(argc, argv);
  const int32_t count = argc > 1 ? std::max(100000, std::atoi(argv[1])) : 50000000;
  TZTRecordingPromptService prompts;
  TZTPromptServiceGuard guard(&prompts);
  MessageSet.Close();
  MessageSet.Open();

  TZTMessageView view;
  view.resize(1280, 1024);
  view.AutoScroll = true;
  view.show();
  QApplication::processEvents();
  const long rssBefore = RssKiB();

  TZentrailMessage m;
  m.ComputerName = "build-host";
  m.Category = "Orders";
  int32_t time = 8 * 3600 * 1000;
  std::string text;
  int64_t textBytes = 0;
  QElapsedTimer timer;
  timer.start();
  constexpr int32_t kBatch = 4096;
  for (int32_t i = 0; i < count;) {
    view.BeginUpdate();
    for (int32_t end = std::min(count, i + kBatch); i < end; ++i) {
      m.AppName = kApps[(i / 12) % 4];
      m.ThreadName = kThreads[(i / 48) % 4];
      m.ProcessID = 3000 + static_cast<uint32_t>((i / 12) % 4);
      m.MsgType = i % 6 == 1 ? ztmWarning : i % 6 == 2 ? ztmError : ztmInfo;
      MakeText(i, count, text);
      m.MsgText = text;
      textBytes += static_cast<int64_t>(text.size());
      m.TimeStamp = {time + i % 86400, ztDateOf2000};
      MessageSet.AppendMessage(m, i);
      view.AddMessage(false);
    }
    view.EndUpdate();
  }
  const double appendSeconds = Seconds(timer);
  QApplication::processEvents();
  const long rssAfter = RssKiB();
  if (view.GetCount() != count) Fail("the view holds " + std::to_string(view.GetCount()) + " rows");
  const double storePerMessage = static_cast<double>(MessageSet.MemoryUsed()) / count;
  const double rssPerMessage = static_cast<double>(rssAfter - rssBefore) * 1024.0 / count;

  // Paint at the top and at row 49,999,000 (or as far from the end for a smaller count).
  view.UpdateColumnWidths();
  QPixmap target(view.size());
  (void)MedianFrameUs(view, target, 0);
  TFrames frames;
  frames.Top = MedianFrameUs(view, target, 0);
  const int32_t endRow = std::max(0, count - 1000);
  frames.End = MedianFrameUs(view, target, endRow);
  if (view.TopIndex() != endRow) Fail("the view did not scroll to row " + std::to_string(endRow));

  // Rows, selection and bookmarks at the end name their records.
  const int32_t last = count - 1;
  view.SetFocusedMsgIndex(last);
  view.SetSelected(last, true);
  view.ToggleBookmark(3);
  if (view.GetMsgRecNo(last) != count || !view.GetSelected(last) || view.GetBookmark(3) != count)
    Fail("the last row does not name the last record");
  view.SelectRecord(last);
  if (MessageSet.GetMsgText().find("needle-4711") == std::string_view::npos) Fail("the last record's text is wrong");
  view.SetFocusedMsgIndex(0);
  view.JumpToBookmark(3);
  if (view.GetFocusedMsgIndex() != last) Fail("the bookmark does not lead to the last row");
  view.RemoveAllSelections();

  // The search runs over every row of the unfiltered view; the only match is the last row.
  TZTRegEx regex;
  regex.Compile("NEEDLE-\\d+");
  view.SetFocusedMsgIndex(0);
  timer.start();
  view.FindNext(true, "NEEDLE-\\d+", true, false, true, regex);
  const double findSeconds = Seconds(timer);
  if (view.GetFocusedMsgIndex() != last || !prompts.Prompts.empty()) Fail("the search did not find the last row");

  // A second view refilled after a change of filter, as the shell does it.
  TZTMessageView filtered;
  filtered.AutoScroll = false;
  TZTFilterCriteria criteria;
  criteria.CheckAppName = true;
  criteria.AppName = "gateway";
  criteria.CheckThreadName = true;
  criteria.ThreadName = "Worker-2";
  criteria.CheckMessageText = true;
  criteria.MessageText = "(payment|prüfung).*\\d+";
  timer.start();
  filtered.SetFilterCriteria(criteria);
  filtered.ClearView();
  filtered.BeginUpdate();
  for (int32_t rec = 1; rec <= count; ++rec) {
    MessageSet.GotoRec(rec);
    filtered.AddMessage(false);
  }
  filtered.EndUpdate();
  const double refilterSeconds = Seconds(timer);
  if (filtered.GetCount() == 0) Fail("the filtered view is empty");

  std::printf("store: %d messages, %lld bytes of text; filtered view %d rows\n", count,
              static_cast<long long>(textBytes), filtered.GetCount());
  std::printf("figure: scale_50m_store_bytes_per_message %.1f bytes\n", storePerMessage);
  std::printf("figure: scale_50m_rss_per_message %.1f bytes\n", rssPerMessage);
  std::printf("figure: scale_50m_append_rate %.0f msg/s\n", count / appendSeconds);
  std::printf("figure: scale_50m_refilter_s %.2f s\n", refilterSeconds);
  std::printf("figure: scale_50m_find_s %.2f s\n", findSeconds);
  std::printf("figure: scale_50m_paint_frame_us_top %.0f us\n", frames.Top);
  std::printf("figure: scale_50m_paint_frame_us_end %.0f us\n", frames.End);
  return 0;
}
