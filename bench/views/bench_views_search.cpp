// Refilling a filtered view from a store of 1,000,000 messages, and a search that walks 1,000,000
// rows to a match in the last one. Prints "figure:" lines.
//
// The store: four applications with four threads each, taking turns in bursts, so that a view on
// one application and one thread takes a sixteenth of the messages before its text pattern is tried; texts of
// 30 to 70 bytes, a few of them beyond ASCII; every twelfth message carries Details.
//
// refilter_rate: the refill the shell does after a change of filter (SetFilterCriteria, ClearView,
// then in one update bracket GotoRec and AddMessage(false) per record, AutoScroll off), with a
// pattern on the text plus AppName and ThreadName. refilter_rate_text_only does the same with the
// pattern alone, so that every message is matched.
// find_next_rate: FindNext from row 0 with Details included, as the find dialog starts; the only
// match is the last row. find_next_rate_text_only leaves Details out.
// filter_dialog_open_ms: the filter dialog's SetCriteria, which reads every record for its lists.

#include <QApplication>
#include <QElapsedTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "ZTMsgView.h"
#include "ZTPromptService.h"
#include "ZTViewFilterForm.h"
#include "ZentrailMessageSet.h"

using namespace zentrail;

namespace {

constexpr const char* kApps[] = {"OrderService", "Billing", "Gateway", "Scheduler"};
constexpr const char* kThreads[] = {"main", "worker-1", "worker-2", "timer"};

void FillStore(int32_t count) {
  MessageSet.Close();
  MessageSet.Open();
  TZentrailMessage m;
  m.ComputerName = "build-host";
  m.Category = "Orders";
  int32_t time = 8 * 3600 * 1000;
  std::string text;
  for (int32_t i = 0; i < count; ++i) {
    // Senders take turns in bursts of twelve, so that each sees every kind of message.
    m.AppName = kApps[(i / 12) % 4];
    m.ThreadName = kThreads[(i / 48) % 4];
    m.ProcessID = 3000 + static_cast<uint32_t>((i / 12) % 4);
    m.MsgContent = ztmText;
    m.Details.clear();
    switch (i % 12) {
      case 0:
        m.MsgType = ztmEnterMethod;
        text = "OrderController.Handle(#" + std::to_string(i) + ")";
        break;
      case 1:
        m.MsgType = ztmExitMethod;
        text = "OrderController.Handle";
        break;
      case 5:
        m.MsgType = ztmWarning;
        text = "Slow payment gateway answer (840 ms) for order " + std::to_string(i);
        break;
      case 7:
        m.MsgType = ztmInfo;
        m.MsgContent = ztmObject;
        text = "Order " + std::to_string(i) + " as object";
        m.Details = "Id=" + std::to_string(i) + "\r\nCustomer=Müller GmbH\r\nTotal=129.90\r\nState=Open\r\n";
        break;
      case 9:
        m.MsgType = ztmError;
        text = "Zahlung für Auftrag " + std::to_string(i) + " abgelehnt: Kartenprüfung fehlgeschlagen";
        break;
      default:
        m.MsgType = ztmInfo;
        text = "Processing line item " + std::to_string(i % 97) + " of order " + std::to_string(i);
        break;
    }
    if (i == count - 1) text = "The last message holds the needle-4711 that the search looks for";
    m.MsgText = text;
    m.TimeStamp = {time, ztDateOf2000};
    time += 3;
    MessageSet.AppendMessage(m, i);
  }
}

// The shell's refill after a change of filter.
void Refill(TZTMessageView& view, const TZTFilterCriteria& criteria) {
  view.SetFilterCriteria(criteria);
  view.ClearView();
  view.BeginUpdate();
  const int32_t count = MessageSet.GetRecordCount();
  for (int32_t rec = 1; rec <= count; ++rec) {
    MessageSet.GotoRec(rec);
    view.AddMessage(false);
  }
  view.EndUpdate();
}

// Best of runs: the figure of a quiet machine.
template <typename F>
double BestSeconds(int runs, F&& body) {
  double best = 1e30;
  for (int i = 0; i < runs; ++i) {
    QElapsedTimer timer;
    timer.start();
    body();
    best = std::min(best, static_cast<double>(timer.nsecsElapsed()) / 1e9);
  }
  return best;
}

}  // namespace

int main(int argc, char** argv) {
  if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QApplication app(argc, argv);
  // A smaller count may be given for profiling; the figures are for the default.
  const int32_t count = argc > 1 ? std::max(100, std::atoi(argv[1])) : 1000000;
  FillStore(count);
  // A search that found nothing would say so in a box; here it must not wait.
  TZTRecordingPromptService prompts;
  TZTPromptServiceGuard guard(&prompts);

  TZTMessageView view;
  view.resize(1280, 1024);
  view.AutoScroll = false;

  TZTFilterCriteria criteria;
  criteria.CheckAppName = true;
  criteria.AppName = "gateway";
  criteria.CheckThreadName = true;
  criteria.ThreadName = "Worker-2";
  criteria.CheckMessageText = true;
  criteria.MessageText = "(payment|prüfung).*\\d+";
  int32_t rows = 0;
  const double refill = BestSeconds(3, [&] {
    Refill(view, criteria);
    rows = view.GetCount();
  });

  TZTFilterCriteria textOnly;
  textOnly.CheckMessageText = true;
  textOnly.MessageText = "(payment|prüfung).*\\d+";
  int32_t textRows = 0;
  const double refillText = BestSeconds(3, [&] {
    Refill(view, textOnly);
    textRows = view.GetCount();
  });

  // The search runs over the whole store in one unfiltered view.
  Refill(view, TZTFilterCriteria{});
  const int32_t allRows = view.GetCount();
  TZTRegEx regex;
  regex.Compile("NEEDLE-\\d+");
  auto search = [&](bool inDetails) {
    view.SetFocusedMsgIndex(0);
    view.FindNext(true, "NEEDLE-\\d+", inDetails, false, true, regex);
  };
  const double find = BestSeconds(5, [&] { search(true); });
  const bool found = view.GetFocusedMsgIndex() == allRows - 1 && prompts.Prompts.empty();
  const double findText = BestSeconds(5, [&] { search(false); });

  // Opening the filter dialog reads every record for the lists of its combo boxes.
  const double dialog = BestSeconds(3, [&] {
    TfrmViewFilter form(nullptr);
    form.SetCriteria(criteria, QStringLiteral("x"));
  });

  std::printf("store: %d messages; filtered view %d rows, text-only view %d rows, search walks %d rows%s\n", count,
              rows, textRows, allRows, found ? "" : " (MATCH NOT FOUND: figures invalid)");
  std::printf("figure: refilter_rate %.0f msg/s\n", count / refill);
  std::printf("figure: refilter_rate_text_only %.0f msg/s\n", count / refillText);
  std::printf("figure: find_next_rate %.0f rows/s\n", allRows / find);
  std::printf("figure: find_next_rate_text_only %.0f rows/s\n", allRows / findText);
  std::printf("figure: filter_dialog_open_ms %.1f ms\n", dialog * 1000);
  return found ? 0 : 1;
}
