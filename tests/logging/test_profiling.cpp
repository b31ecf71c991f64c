// Tracers, timers, their pools and the trace stack; and the promise that a traced call costs no
// allocation while logging is off, counted by replacing the global allocator of this program.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <regex>

#include "ZentrailLogging.h"

namespace {
thread_local long tAllocations = 0;
}

// The replacements pair malloc with free themselves; the compiler cannot see that they belong together.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(std::size_t size) {
  ++tAllocations;
  if (void* p = std::malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}
// The library's temporary buffers use the form that does not throw; it must pair with ours.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  ++tAllocations;
  return std::malloc(size ? size : 1);
}
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
#pragma GCC diagnostic pop

using namespace zentrail;

namespace {

class TRecorder : public TZentrailConnection {
 public:
  int InternalSend(const TZentrailMessage& message) override {
    if (message.MsgType != ztmOpenRoute && message.MsgType != ztmCloseRoute) Sent.push_back(message);
    return 1;
  }
  std::vector<TZentrailMessage> Sent;
  std::vector<std::pair<int32_t, std::string>> Types() const {
    std::vector<std::pair<int32_t, std::string>> out;
    for (const auto& m : Sent) out.emplace_back(m.MsgType, m.MsgText);
    return out;
  }
};

struct TButton : IZentrailObjectInfo {
  std::string ZentrailClassName() const override { return "TButton"; }
  std::string ZentrailObjectName() const override { return "btnOk"; }
};

using TTypes = std::vector<std::pair<int32_t, std::string>>;

}  // namespace

TEST(Profiling, DisabledTracesAndTimersAllocateNothing) {
  TZentrailLogger log;
  log.SetEnabled(false);
  TButton button;
  {
    // The counter sees this thread's allocations; without that this test would prove nothing.
    const long start = tAllocations;
    std::string* probe = new std::string(200, 'x');
    delete probe;
    ASSERT_GE(tAllocations - start, 2);
  }
  const long before = tAllocations;
  for (int i = 0; i < 1000; ++i) {
    auto trace = log.TraceMethod("TOrders.Load");
    auto traceOf = log.TraceMethod(&button, "Click", tmoTiming);
    auto collapse = log.TraceMethodCollapse("Tiny");
    auto timer = log.Timer("parse");
    EXPECT_FALSE(trace);
  }
  EXPECT_EQ(tAllocations - before, 0);
  // A manager switched off does the same for an enabled logger.
  log.SetEnabled(true);
  ZentrailManager.SetEnabled(false);
  const long before2 = tAllocations;
  { auto trace = log.TraceMethod("TOrders.Load"); }
  EXPECT_EQ(tAllocations - before2, 0);
  ZentrailManager.SetEnabled(true);
}

TEST(Profiling, TracesSendEnterAndExitByEveryWayOut) {
  auto connection = std::make_shared<TRecorder>();
  TZentrailLogger log;
  log.SetConnection(connection);
  TButton button;
  const std::size_t stackBefore = ZentrailStack().Count();
  {
    auto outer = log.TraceMethod("Outer");
    EXPECT_EQ(ZentrailStack().Count(), stackBefore + 1);
    auto inner = log.TraceMethod(&button, "Click");
    auto folded = log.TraceMethodCollapse("Tiny");
  }
  try {
    auto trace = log.TraceMethod("Throws");
    throw std::runtime_error("out");
  } catch (const std::runtime_error&) {
  }
  EXPECT_EQ(connection->Types(), (TTypes{{ztmEnterMethod, "Outer"},
                                         {ztmEnterMethod, "TButton( btnOk ).Click"},
                                         {ztmEnterMethod, "Tiny"},
                                         {ztmExitMethodCollapse, "Tiny"},
                                         {ztmExitMethod, "TButton( btnOk ).Click"},
                                         {ztmExitMethod, "Outer"},
                                         {ztmEnterMethod, "Throws"},
                                         {ztmExitMethod, "Throws"}}));
  EXPECT_EQ(ZentrailStack().Count(), stackBefore);

  // A timed trace sends its time just before the exit.
  connection->Sent.clear();
  { auto trace = log.TraceMethod("Timed", tmoTiming, tfMicroseconds); }
  ASSERT_EQ(connection->Sent.size(), 3u);
  EXPECT_EQ(connection->Sent[1].MsgType, ztmTiming);
  EXPECT_TRUE(std::regex_match(connection->Sent[1].MsgText, std::regex("\\d{1,3}(,\\d{3})*\\.\\d\\d \u00b5s - Timed")))
      << connection->Sent[1].MsgText;
  EXPECT_EQ(connection->Sent[2].MsgType, ztmExitMethod);

  // Ended early by hand: nothing more at scope end.
  connection->Sent.clear();
  {
    auto trace = log.TraceMethod("Early");
    trace.Release();
    EXPECT_EQ(connection->Sent.size(), 2u);
  }
  EXPECT_EQ(connection->Sent.size(), 2u);
}

TEST(Profiling, PoolsGrowWhenNestedDeeperThanTheyHold) {
  TZentrailLogger log;
  log.SetConnection(std::make_shared<TRecorder>());
  auto& pool = MethodTracerPool();
  const std::size_t inUseBefore = pool.TotalInUse();
  {
    std::vector<IZentrailMethodTracer> traces;
    for (int i = 0; i < 12; ++i) traces.push_back(log.TraceMethod("Level" + std::to_string(i)));
    EXPECT_EQ(pool.TotalInUse(), inUseBefore + 12);
    EXPECT_GE(pool.Count(), 12u);
  }
  EXPECT_EQ(pool.TotalInUse(), inUseBefore);
  // Requested and never referenced: ready, not started, nothing sent.
  TZentrailMethodTracer* idle = pool.Request(&log);
  EXPECT_EQ(idle->State(), psReadyToUse);
  EXPECT_EQ(pool.TotalInUse(), inUseBefore + 1);
  pool.ReturnProfiler(idle);
  EXPECT_EQ(idle->State(), psAvailable);
  EXPECT_EQ(idle->Logger(), nullptr);
}

TEST(Profiling, ALoggerDestroyedWithinATraceCollapsesAtTheExit) {
  const std::size_t stackBefore = ZentrailStack().Count();
  auto run = [] {
    auto log = std::make_unique<TZentrailLogger>();
    log->SetConnection(std::make_shared<TRecorder>());
    auto trace = log->TraceMethod("Doomed");
    log.reset();
  };
  try {
    run();
    ADD_FAILURE() << "no collapse";
  } catch (const EZentrailProfilingException& e) {
    EXPECT_STREQ(e.what(),
                 "Zentrail Tracing has collapsed. This is caused when a TZentrailLogger instance (or descendent) is "
                 "freed when it is still being used by the Tracing system. (TZentrailMethodTracer.Leave)");
  }
  EXPECT_EQ(ZentrailStack().Count(), stackBefore);
  EXPECT_EQ(MethodTracerPool().TotalInUse(), 0u);

  // Leaving by another exception keeps that exception.
  try {
    auto log = std::make_unique<TZentrailLogger>();
    log->SetConnection(std::make_shared<TRecorder>());
    auto trace = log->TraceMethod("Doomed");
    log.reset();
    throw std::logic_error("first");
  } catch (const std::logic_error& e) {
    EXPECT_STREQ(e.what(), "first");
  }
}

TEST(Profiling, TimersSendTheirTimeOnlyWhenStarted) {
  auto connection = std::make_shared<TRecorder>();
  TZentrailLogger log;
  log.SetConnection(connection);
  {
    auto timer = log.Timer("manual", false, true);
    timer.Stop();  // never started
  }
  EXPECT_TRUE(connection->Sent.empty());
  {
    auto timer = log.Timer("manual", false, false, tfClockCycles);
    timer.Start();
    timer.Stop();
    timer.Stop();
  }
  ASSERT_EQ(connection->Sent.size(), 1u);
  EXPECT_EQ(connection->Sent[0].MsgType, ztmTiming);
  EXPECT_TRUE(std::regex_match(connection->Sent[0].MsgText, std::regex("\\d+ counts - manual")));
  { auto timer = log.Timer("scope", true, true, tfStopwatch); }
  ASSERT_EQ(connection->Sent.size(), 2u);
  EXPECT_TRUE(std::regex_match(connection->Sent[1].MsgText, std::regex("00:00:00\\.\\d{6} - scope")))
      << connection->Sent[1].MsgText;
  EXPECT_EQ(TimerPool().TotalInUse(), 0u);
}

TEST(Profiling, TimingFormatsAndStackErrors) {
  const int64_t hms = ((3600LL + 2 * 60 + 3) * 1000000 + 4005) * 1000;  // 1:02:03.004005 in ns
  EXPECT_EQ(FormatTiming(hms, tfStopwatch), "01:02:03.004005");
  EXPECT_EQ(FormatTiming(30LL * 3600 * 1000000000, tfStopwatch), "30:00:00.000000");
  EXPECT_EQ(FormatTiming(42, tfClockCycles), "42 counts");
  EXPECT_EQ(FormatTiming(1234567, tfMilliseconds), "1.23 ms");
  EXPECT_EQ(FormatTiming(1234567890, tfMilliseconds), "1,234.57 ms");
  EXPECT_EQ(FormatTiming(1500, tfMicroseconds), "1.50 \u00b5s");
  EXPECT_EQ(FormatTiming(2500, tfMilliseconds, 1000), "2,500.00 ms");

  TZentrailStack stack;
  try {
    stack.Pop();
    ADD_FAILURE();
  } catch (const EZentrailStackException& e) {
    EXPECT_STREQ(e.what(), "Zentrail Logger Stack is Empty. (TZentrailStack.Pop)");
  }
  EXPECT_THROW(stack.Peek(), EZentrailStackException);
  {
    TZentrailLogger a, b;
    stack.Push(&a);
    stack.Push(&b);
    stack.Push(&a);
    EXPECT_EQ(stack.Peek(), &a);
    EXPECT_EQ(stack.Pop(), &a);
    EXPECT_EQ(stack.Count(), 2u);
  }
  // Both loggers went away: their entries went with them.
  EXPECT_TRUE(stack.IsEmpty());
}
