// The cost of a traced function with logging off and on, and the rate of object messages (a
// 20-property object each) from the client into the dispatcher.
#include <cstdio>
#include <memory>

#include "BenchSupport.h"
#include "ZentrailLogging.h"

using namespace zentrail;
using namespace zentrail::bench;

namespace {

// An empty function with one line of tracing; kept out of line so that the call is measured too.
__attribute__((noinline)) int Traced(TZentrailLogger& log, int i) {
  auto trace = log.TraceMethod("TOrders.Load");
  return i & 1;
}

struct TTwentyProperties : IZentrailPublished {
  std::string ZentrailClassName() const override { return "TCustomer"; }
  std::string ZentrailObjectName() const override { return "Customer1"; }
  void ZentrailProperties(TZentrailProperties& p) const override {
    p.AddString("Name", "Chen Li");
    p.AddString("Street", "12 Harbour Road");
    p.AddString("City", "Portsmouth");
    p.AddString("Country", "United Kingdom");
    p.AddString("Email", "chen.li@example.com");
    p.AddString("Phone", "+44 23 9200 0000");
    p.AddInteger("Id", 10442);
    p.AddInteger("Orders", 37);
    p.AddInt64("Revenue", 1284400);
    p.AddFloat("Discount", 0.075);
    p.AddBoolean("Active", true);
    p.AddBoolean("Blocked", false);
    p.AddEnum("Tier", "ctGold");
    p.AddColor("Color", 0x00FF8040);
    p.AddDateTime("Since", 43831.5);
    p.AddDate("Birthday", 30000);
    p.AddChar("Initial", U'C');
    p.AddSet("Channels", "TChannels", {{"chMail", true}, {"chPhone", false}, {"chPost", true}});
    p.AddCursor("Cursor", -21);
    p.AddString("Notes", "prefers morning delivery");
  }
};

}  // namespace

int main() {
  std::string root = IsolateEnvironment();

  {
    TZentrailLogger log;
    log.SetEnabled(false);
    constexpr long kCalls = 200'000'000;
    long sum = 0;
    for (long i = 0; i < 1'000'000; ++i) sum += Traced(log, static_cast<int>(i));
    auto start = std::chrono::steady_clock::now();
    for (long i = 0; i < kCalls; ++i) sum += Traced(log, static_cast<int>(i));
    const double ns = Seconds(start) * 1e9 / kCalls;
    if (sum < 0) std::printf("%ld\n", sum);
    std::printf("figure: trace_method_ns %.3f ns\n", ns);
  }

  // The viewer and the dispatcher end before their folders are removed.
  {
    auto real = std::make_unique<RealViewer>();
    std::unique_ptr<FakeViewer> fake;
    if (!real->Running()) {
      real.reset();
      fake = std::make_unique<FakeViewer>();
      std::fprintf(stderr, "the viewer is not built here: sending into a stand-in viewer\n");
    }
    Dispatcher dispatcher;
    {
      TZentrailLogger log;
      log.SetCategory("bench");
      for (int i = 0; i < 1000; ++i) Traced(log, i);
      constexpr int kCalls = 50'000;
      auto start = std::chrono::steady_clock::now();
      for (int i = 0; i < kCalls; ++i) Traced(log, i);
      const double ns = Seconds(start) * 1e9 / kCalls;
      if (!log.Enabled()) std::fprintf(stderr, "the logger switched itself off: the figure is not meaningful\n");
      // Two messages (enter and exit) per call, each answered by the dispatcher.
      std::printf("figure: trace_method_enabled_ns %.0f ns\n", ns);
    }
    {
      TZentrailLogger log;
      TTwentyProperties customer;
      for (int i = 0; i < 500; ++i) log.Send("Customer", &customer);
      constexpr int kObjects = 50'000;
      int ok = 0;
      auto start = std::chrono::steady_clock::now();
      for (int i = 0; i < kObjects; ++i) ok += log.Send("Customer", &customer);
      const double rate = ok / Seconds(start);
      if (ok != kObjects) std::fprintf(stderr, "only %d of %d objects taken\n", ok, kObjects);
      std::printf("figure: send_object_rate %.0f objects/s\n", rate);
    }
  }
  std::filesystem::remove_all(root);
  return 0;
}
