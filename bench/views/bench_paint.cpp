// Painting a message view of 1,000,000 rows: one full repaint of a 1280 by 1024 view with every
// column shown, at the top, in the middle and at the end of the rows. A view that paints only the
// rows on screen costs the same in all three places. Prints "figure:" lines.

#include <QApplication>
#include <QElapsedTimer>
#include <QPainter>
#include <QPixmap>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "ZTMsgView.h"
#include "ZentrailMessageSet.h"

using namespace zentrail;

namespace {

// Every column, the time column as a difference to the row above (the dearest of the three).
class TBenchApplication : public IZentrailApplication {
 public:
  int32_t GetRowHeight() override { return 17; }
  QFont GetFont(int) override { return QFont(); }
  TZTMsgTypeStyle GetMsgTypeStyle(int32_t type) override {
    if (type == ztmError) return {false, 0x000000C0, fsBold};
    return {};
  }
  bool GetAutoScroll() override { return false; }
  bool GetAutoCollapse() override { return false; }
  bool GetFlattenStructure() override { return false; }
  uint16_t GetColumnOptions() override {
    return ztcoCategory | ztcoAppName | ztcoComputerName | ztcoProcessID | ztcoThreadName | ztcoDate | ztcoTimeDiff;
  }
  bool GetHideExtraColumns() override { return false; }
  QMenu* GetPopupMenu() override { return nullptr; }
  TZTImageList* GetImageList(int) override { return nullptr; }
  TColor GetHighlightColor() override { return 0x00F0CDAA; }
  TColor GetHighlightFontColor() override { return 0x00502805; }
  TColor GetMarkerColor() override { return 0x00E6D8AD; }
  bool GetRowShading() override { return true; }
  TColor GetRowShadingColor() override { return static_cast<TColor>(0xFF000010u); }
  TColor GetSyncMsgColor() override { return 0x00AFEBFF; }
  TColor GetSeparatorColor() override { return 0x00E4AD89; }
  TColor GetInactiveSeparatorColor() override { return 0x00A0CDDE; }
  TColor GetAppStartSeparatorColor() override { return 0x00E4AD89; }
  void UpdateMessageDetails() override {}
  void UpdateCommandStates() override {}
  void SetStatusText(const QString&) override {}
  void SetProgressMax(int32_t) override {}
  void SetProgress(int32_t) override {}
  void StepProgress() override {}
};

// A run of nested calls with text, warnings, objects and now and then a separator.
void Fill(TZTMessageView& view, int32_t count) {
  TZentrailMessage m;
  m.AppName = "OrderService";
  m.ComputerName = "build-host";
  m.Category = "Orders";
  m.ProcessID = 3188;
  int32_t time = 8 * 3600 * 1000;
  int32_t depth = 0;
  for (int32_t i = 0; i < count; ++i) {
    const int32_t phase = i % 12;
    m.MsgContent = ztmText;
    if (phase == 0 && depth < 6) {
      m.MsgType = ztmEnterMethod;
      m.MsgText = "OrderController.Handle(#" + std::to_string(i) + ")";
      ++depth;
    } else if (phase == 11 && depth > 0) {
      m.MsgType = ztmExitMethod;
      m.MsgText = "OrderController.Handle";
      --depth;
    } else if (phase == 5) {
      m.MsgType = ztmWarning;
      m.MsgText = "Slow payment gateway answer (840 ms) for order " + std::to_string(i);
    } else if (phase == 7) {
      m.MsgType = ztmInfo;
      m.MsgContent = ztmObject;
      m.MsgText = "Reserved SKU-" + std::to_string(i % 37) + " x 2";
    } else if (i % 5000 == 3) {
      m.MsgType = ztmSeparator;
      m.MsgText.clear();
    } else {
      m.MsgType = (i % 97 == 0) ? ztmError : ztmInfo;
      m.MsgText = "Received order " + std::to_string(i) + " for 3 items from a customer in the north region";
    }
    m.ThreadName = (i % 3 == 0) ? "worker-1" : "worker-2";
    m.TimeStamp = {time, ztDateOf2000 + 9000};
    time += 3 + i % 11;
    MessageSet.AppendMessage(m, i);
    view.AddMessage(false);
  }
}

// Median microseconds of full repaints of the view's rows, painted into one reused pixmap.
double MedianFrameUs(TZTMessageView& view, QPixmap& target, int32_t top) {
  view.SetTopIndex(top);
  std::vector<double> times;
  const int runs = std::getenv("ZENTRAIL_PAINT_RUNS") ? std::atoi(std::getenv("ZENTRAIL_PAINT_RUNS")) : 15;
  for (int run = 0; run < std::max(1, runs); ++run) {
    QElapsedTimer timer;
    timer.start();
    target.fill(Qt::white);
    view.render(&target);
    times.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e3);
  }
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QApplication app(argc, argv);
  TBenchApplication shell;
  TZTMessageView view(nullptr, &shell);
  view.InitView();
  view.resize(1280, 1024);
  view.show();
  QApplication::processEvents();

  // A smaller count may be given for profiling; the figures are for the default.
  const int32_t count = argc > 1 ? std::max(1000, std::atoi(argv[1])) : 1000000;
  view.BeginUpdate();
  Fill(view, count);
  view.EndUpdate();
  view.UpdateColumnWidths();
  QApplication::processEvents();
  const int32_t rows = view.GetCount();
  const int32_t visible = view.VisibleRows();
  if (rows != count || visible < 40) {
    std::fprintf(stderr, "unexpected view: %d rows, %d visible\n", rows, visible);
    return 1;
  }

  QPixmap target(view.size());
  (void)MedianFrameUs(view, target, 0);  // fonts and glyph caches warm up once
  const double top = MedianFrameUs(view, target, 0);
  const double middle = MedianFrameUs(view, target, rows / 2);
  const double end = MedianFrameUs(view, target, rows - visible);
  std::printf("figure: paint_frame_us_top %.0f us\n", top);
  std::printf("figure: paint_frame_us_middle %.0f us\n", middle);
  std::printf("figure: paint_frame_us_end %.0f us\n", end);
  std::printf("figure: paint_rows_per_frame %d rows\n", visible);
  return 0;
}
