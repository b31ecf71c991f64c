// Collapse All and Expand All on a view of 1,000,000 methods: runs of calls nested up to six deep,
// each method holding a line of text, so 3,000,000 rows when all are open. Prints "figure:" lines.
//
// collapse_all_ms: Collapse All on the view with every method open (the median of five runs, each
// after Expand All); expand_all_ms: Expand All on the view with every method collapsed.

#include <QApplication>
#include <QElapsedTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "ZTMsgView.h"
#include "ZentrailMessageSet.h"

using namespace zentrail;

namespace {

void Append(TZTMessageView& view, TZentrailMessage& m, int32_t type, const std::string& text, int32_t& id) {
  m.MsgType = type;
  m.MsgText = text;
  m.TimeStamp.Time += 3;
  MessageSet.AppendMessage(m, id++);
  view.AddMessage(false);
}

// methods in runs of nested calls: Enter, a line, the inner calls, Exit. The number of runs, each
// one row when collapsed.
int32_t Fill(TZTMessageView& view, int32_t methods) {
  TZentrailMessage m;
  m.AppName = "OrderService";
  m.ComputerName = "build-host";
  m.ThreadName = "worker-1";
  m.ProcessID = 3188;
  m.TimeStamp = {8 * 3600 * 1000, ztDateOf2000 + 9000};
  int32_t id = 0;
  int32_t made = 0;
  std::vector<int32_t> open;
  int32_t runs = 0;
  while (made < methods) {
    ++runs;
    const int32_t depth = 1 + made % 6;
    for (int32_t d = 0; d < depth && made < methods; ++d, ++made) {
      Append(view, m, ztmEnterMethod, "OrderController.Handle(#" + std::to_string(made) + ")", id);
      Append(view, m, ztmInfo, "Processing line item " + std::to_string(made % 97), id);
      open.push_back(made);
    }
    while (!open.empty()) {
      Append(view, m, ztmExitMethod, "OrderController.Handle", id);
      open.pop_back();
    }
  }
  return runs;
}

double Ms(QElapsedTimer& timer) { return static_cast<double>(timer.nsecsElapsed()) / 1e6; }

}  // namespace

int main(int argc, char** argv) {
  if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QApplication app(argc, argv);
  // A smaller count may be given for profiling; the figures are for the default.
  const int32_t methods = argc > 1 ? std::max(1000, std::atoi(argv[1])) : 1000000;
  MessageSet.Close();
  MessageSet.Open();
  TZTMessageView view;
  view.resize(1280, 1024);
  view.AutoScroll = false;
  view.AutoCollapse = false;
  view.BeginUpdate();
  const int32_t runs = Fill(view, methods);
  view.EndUpdate();
  const int32_t open = view.GetCount();

  std::vector<double> collapse, expand;
  int32_t collapsed = 0;
  for (int run = 0; run < 5; ++run) {
    view.SetFocusedMsgIndex(0);
    QElapsedTimer timer;
    timer.start();
    view.CollapseAllMethods();
    collapse.push_back(Ms(timer));
    collapsed = view.GetCount();
    timer.start();
    view.ExpandAllMethods(true);
    expand.push_back(Ms(timer));
    if (view.GetCount() != open) {
      std::fprintf(stderr, "Expand All left %d of %d rows\n", view.GetCount(), open);
      return 1;
    }
  }
  std::sort(collapse.begin(), collapse.end());
  std::sort(expand.begin(), expand.end());
  std::printf("view: %d rows open, %d collapsed (%d methods)\n", open, collapsed, methods);
  if (collapsed != runs) {
    std::fprintf(stderr, "Collapse All left %d rows for %d runs of calls\n", collapsed, runs);
    return 1;
  }
  std::printf("figure: collapse_all_ms %.1f ms\n", collapse[collapse.size() / 2]);
  std::printf("figure: expand_all_ms %.1f ms\n", expand[expand.size() / 2]);
  return 0;
}
