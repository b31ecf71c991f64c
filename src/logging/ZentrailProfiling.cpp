#include "ZentrailProfiling.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>

#include "ZentrailFormatters.h"
#include "ZentrailLogger.h"

namespace zentrail {

std::mutex& ZentrailProfilingLock() {
  static std::mutex lock;
  return lock;
}

std::string ZentrailCollapseText(std::string_view className, std::string_view methodName) {
  return "Zentrail Tracing has collapsed. This is caused when a TZentrailLogger instance (or descendent) is freed "
         "when it is still being used by the Tracing system. (" +
         std::string(className) + "." + std::string(methodName) + ")";
}

int64_t ZentrailClockCount() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

std::string FormatTiming(int64_t counts, TZentrailTimingFormat format, int64_t frequency) {
  if (frequency <= 0) frequency = 1000;
  const double seconds = static_cast<double>(counts) / static_cast<double>(frequency);
  switch (format) {
    case tfStopwatch: {
      const int64_t micro = static_cast<int64_t>(seconds * 1000000.0 + 0.5);
      const int64_t totalSeconds = micro / 1000000;
      char buffer[64];
      std::snprintf(buffer, sizeof buffer, "%02lld:%02lld:%02lld.%06lld", static_cast<long long>(totalSeconds / 3600),
                    static_cast<long long>(totalSeconds / 60 % 60), static_cast<long long>(totalSeconds % 60),
                    static_cast<long long>(micro % 1000000));
      return buffer;
    }
    case tfClockCycles: return std::to_string(counts) + " counts";
    case tfMilliseconds: return FormatFloatN(seconds * 1000.0, 2) + " ms";
    case tfMicroseconds: return FormatFloatN(seconds * 1000000.0, 2) + " \u00b5s";
  }
  return {};
}

// ---------------------------------------------------------------------------------------------
// Profilers

TZentrailProfiler::~TZentrailProfiler() {
  // A pool that goes away at the end of the process may still hold a linked profiler.
  if (FLogger) FLogger->RemoveNotifier(this);
}

void TZentrailProfiler::FreeNotify(TZentrailLogger& logger) {
  if (FLogger == &logger) FLogger = nullptr;
}

void TZentrailMethodTracer::Prepare(std::string_view className, std::string_view objectName,
                                    std::string_view methodName, TZentrailTraceMethodOption option,
                                    TZentrailTimingFormat format, bool collapse) {
  FMethodText.clear();
  if (!className.empty()) {
    FMethodText.append(className);
    if (!objectName.empty()) {
      FMethodText += "( ";
      FMethodText.append(objectName);
      FMethodText += " ).";
    } else {
      FMethodText += '.';
    }
  }
  FMethodText.append(methodName);
  FOption = option;
  FTimingFormat = format;
  FCollapse = collapse;
}

void TZentrailMethodTracer::Start() {
  if (FOption == tmoTiming) FStart = ZentrailClockCount();
  if (!FLogger) return;
  ZentrailStack().Push(FLogger);
  FPushed = FLogger;
  FLogger->EnterMethod(FMethodText);
}

void TZentrailMethodTracer::Stop() {
  if (FOption == tmoTiming) FStop = ZentrailClockCount();
  TZentrailLogger* logger = FLogger;
  if (FPushed) ZentrailStack().Remove(FPushed);
  FPushed = nullptr;
  if (!logger) {
    FStart = FStop = 0;
    throw EZentrailProfilingException(ZentrailCollapseText("TZentrailMethodTracer", "Leave"));
  }
  if (FOption == tmoTiming)
    logger->SendMsgRaw(ztmTiming, FormatTiming(FStop - FStart, FTimingFormat) + " - " + FMethodText);
  if (FCollapse) logger->ExitMethodCollapse(std::string_view(FMethodText));
  else logger->ExitMethod(std::string_view(FMethodText));
  FStart = FStop = 0;
}

void TZentrailTimer::Prepare(std::string_view description, bool autoStart, bool autoStop,
                             TZentrailTimingFormat format) {
  FDescription.assign(description);
  FAutoStart = autoStart;
  FAutoStop = autoStop;
  FTimingFormat = format;
}

void TZentrailTimer::Start() {
  if (FStarted) return;
  FStart = ZentrailClockCount();
  FStarted = true;
}

void TZentrailTimer::Stop() {
  if (!FStarted) return;
  FStop = ZentrailClockCount();
  FStarted = false;
  if (FLogger) FLogger->SendMsgRaw(ztmTiming, FormatTiming(FStop - FStart, FTimingFormat) + " - " + FDescription);
}

void TZentrailTimer::Clear() {
  FStart = FStop = 0;
  FStarted = false;
}

// ---------------------------------------------------------------------------------------------
// Pools

TZentrailProfilerPool::TZentrailProfilerPool(std::size_t initialCount) : FInitialCount(initialCount) {}

TZentrailProfilerPool::~TZentrailProfilerPool() = default;

void TZentrailProfilerPool::Populate() {
  std::lock_guard lock(ZentrailProfilingLock());
  FList.reserve(FInitialCount);
  for (std::size_t i = 0; i < FInitialCount; ++i) FList.push_back(NewProfiler());
}

TZentrailProfiler* TZentrailProfilerPool::RequestProfiler(TZentrailLogger* logger) {
  std::lock_guard lock(ZentrailProfilingLock());
  TZentrailProfiler* profiler = nullptr;
  for (auto& p : FList) {
    if (p->FState == psAvailable) {
      profiler = p.get();
      break;
    }
  }
  if (!profiler) {
    FList.push_back(NewProfiler());
    profiler = FList.back().get();
  }
  profiler->FState = psRequested;
  if (profiler->FLogger) profiler->FLogger->RemoveNotifier(profiler);
  profiler->FLogger = logger;
  if (logger) logger->AddNotifier(profiler);
  profiler->FState = psReadyToUse;
  return profiler;
}

void TZentrailProfilerPool::ReturnProfiler(TZentrailProfiler* profiler) {
  std::lock_guard lock(ZentrailProfilingLock());
  if (profiler->FLogger) profiler->FLogger->RemoveNotifier(profiler);
  profiler->FLogger = nullptr;
  profiler->FState = psAvailable;
}

std::size_t TZentrailProfilerPool::Count() const {
  std::lock_guard lock(ZentrailProfilingLock());
  return FList.size();
}

std::size_t TZentrailProfilerPool::TotalInUse() const {
  std::lock_guard lock(ZentrailProfilingLock());
  return static_cast<std::size_t>(
      std::count_if(FList.begin(), FList.end(), [](const auto& p) { return p->FState != psAvailable; }));
}

std::unique_ptr<TZentrailProfiler> TZentrailMethodTracerPool::NewProfiler() {
  auto tracer = std::make_unique<TZentrailMethodTracer>();
  // Room for a usual method text, so that tracing does not allocate for it.
  tracer->Prepare({}, {}, std::string(96, ' '), tmoTraceOnly, tfMilliseconds, false);
  return tracer;
}

std::unique_ptr<TZentrailProfiler> TZentrailTimerPool::NewProfiler() { return std::make_unique<TZentrailTimer>(); }

TZentrailMethodTracerPool& MethodTracerPool() {
  static TZentrailMethodTracerPool pool;
  return pool;
}

TZentrailTimerPool& TimerPool() {
  static TZentrailTimerPool pool;
  return pool;
}

// ---------------------------------------------------------------------------------------------
// Stack

namespace {
[[noreturn]] void EmptyStack(const char* method) {
  throw EZentrailStackException("Zentrail Logger Stack is Empty. (TZentrailStack." + std::string(method) + ")");
}
}  // namespace

void TZentrailStack::Push(TZentrailLogger* logger) {
  std::lock_guard lock(ZentrailProfilingLock());
  FList.push_back(logger);
  logger->AddNotifier(this);
}

TZentrailLogger* TZentrailStack::Pop() {
  std::lock_guard lock(ZentrailProfilingLock());
  if (FList.empty()) EmptyStack("Pop");
  TZentrailLogger* logger = FList.back();
  FList.pop_back();
  if (std::find(FList.begin(), FList.end(), logger) == FList.end()) logger->RemoveNotifier(this);
  return logger;
}

TZentrailLogger* TZentrailStack::Peek() const {
  std::lock_guard lock(ZentrailProfilingLock());
  if (FList.empty()) EmptyStack("Peek");
  return FList.back();
}

bool TZentrailStack::Remove(TZentrailLogger* logger) {
  std::lock_guard lock(ZentrailProfilingLock());
  auto it = std::find(FList.rbegin(), FList.rend(), logger);
  if (it == FList.rend()) return false;
  FList.erase(std::next(it).base());
  if (std::find(FList.begin(), FList.end(), logger) == FList.end()) logger->RemoveNotifier(this);
  return true;
}

std::size_t TZentrailStack::Count() const {
  std::lock_guard lock(ZentrailProfilingLock());
  return FList.size();
}

void TZentrailStack::FreeNotify(TZentrailLogger& logger) {
  std::lock_guard lock(ZentrailProfilingLock());
  FList.erase(std::remove(FList.begin(), FList.end(), &logger), FList.end());
}

TZentrailStack& ZentrailStack() {
  static TZentrailStack stack;
  return stack;
}

// ---------------------------------------------------------------------------------------------
// Handles

IZentrailMethodTracer::IZentrailMethodTracer(TZentrailMethodTracer* tracer) : FTracer(tracer) {
  if (!FTracer) return;
  FTracer->FState = psInUse;
  try {
    FTracer->Start();
  } catch (...) {
    // The enter message could not go out (an invalid destination): the tracer goes back unused.
    FTracer->FState = psReadyToUse;
    MethodTracerPool().ReturnProfiler(std::exchange(FTracer, nullptr));
    throw;
  }
}

IZentrailMethodTracer& IZentrailMethodTracer::operator=(IZentrailMethodTracer&& other) noexcept(false) {
  if (this != &other) {
    if (FTracer) Release();
    FTracer = std::exchange(other.FTracer, nullptr);
  }
  return *this;
}

void IZentrailMethodTracer::Release() {
  TZentrailMethodTracer* tracer = std::exchange(FTracer, nullptr);
  if (!tracer) return;
  std::exception_ptr failure;
  if (tracer->State() == psInUse) {
    try {
      tracer->Stop();
    } catch (...) {
      failure = std::current_exception();
    }
  }
  MethodTracerPool().ReturnProfiler(tracer);
  // A function that leaves by an exception keeps that one; a second would end the program.
  if (failure && std::uncaught_exceptions() == 0) std::rethrow_exception(failure);
}

IZentrailTimer::IZentrailTimer(TZentrailTimer* timer) : FTimer(timer) {
  if (!FTimer) return;
  FTimer->FState = psInUse;
  if (FTimer->AutoStart()) FTimer->Start();
}

IZentrailTimer& IZentrailTimer::operator=(IZentrailTimer&& other) noexcept {
  if (this != &other) {
    if (FTimer) Release();
    FTimer = std::exchange(other.FTimer, nullptr);
  }
  return *this;
}

void IZentrailTimer::Start() {
  if (FTimer) FTimer->Start();
}

void IZentrailTimer::Stop() {
  if (!FTimer) return;
  try {
    FTimer->Stop();
  } catch (const std::exception&) {
    // The logger could not send: it has switched itself off, and the measurement is lost.
  }
}

bool IZentrailTimer::AutoStart() const { return FTimer && FTimer->AutoStart(); }
bool IZentrailTimer::AutoStop() const { return FTimer && FTimer->AutoStop(); }
TZentrailTimingFormat IZentrailTimer::TimingFormat() const { return FTimer ? FTimer->TimingFormat() : tfMilliseconds; }
std::string IZentrailTimer::Description() const { return FTimer ? FTimer->Description() : std::string(); }

void IZentrailTimer::Release() noexcept {
  TZentrailTimer* timer = std::exchange(FTimer, nullptr);
  if (!timer) return;
  if (timer->State() == psInUse && timer->AutoStop()) {
    try {
      timer->Stop();
    } catch (...) {
      // Destructors do not throw; a logger that failed has switched itself off.
    }
  }
  timer->Clear();
  TimerPool().ReturnProfiler(timer);
}

// ---------------------------------------------------------------------------------------------
// The logger's side

IZentrailMethodTracer TZentrailLogger::StartTrace(std::string_view className, std::string_view objectName,
                                                  std::string_view methodName, TZentrailTraceMethodOption option,
                                                  TZentrailTimingFormat timingFormat, bool collapse) {
  TZentrailMethodTracer* tracer = MethodTracerPool().Request(this);
  tracer->Prepare(className, objectName, methodName, option, timingFormat, collapse);
  return IZentrailMethodTracer(tracer);
}

IZentrailMethodTracer TZentrailLogger::StartTraceOf(const IZentrailObjectInfo* obj, std::string_view methodName,
                                                    TZentrailTraceMethodOption option,
                                                    TZentrailTimingFormat timingFormat, bool collapse) {
  if (!obj) return StartTrace({}, {}, methodName, option, timingFormat, collapse);
  return StartTrace(obj->ZentrailClassName(), obj->ZentrailObjectName(), methodName, option, timingFormat, collapse);
}

IZentrailTimer TZentrailLogger::StartTimer(std::string_view description, bool autoStart, bool autoStop,
                                           TZentrailTimingFormat timingFormat) {
  TZentrailTimer* timer = TimerPool().Request(this);
  timer->Prepare(description, autoStart, autoStop, timingFormat);
  return IZentrailTimer(timer);
}

}  // namespace zentrail
