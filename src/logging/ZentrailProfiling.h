#pragma once
// Method tracers and timers: one line at the top of a function sends the enter message now and the
// exit message when the function leaves, by any way out, an exception included.
//
//   void Load() {
//     auto trace = zentrail::ZentrailLog.TraceMethod("TOrders.Load");
//     auto timer = zentrail::ZentrailLog.Timer("parse");   // sends its time at scope end
//     ...
//   }
//
// The objects behind the handles live in pools, so a hot function does not allocate; a disabled
// logger gives back an empty handle without touching the pools at all. A handle is the one
// reference to its object: making it starts the object, and destroying it stops it and returns
// it to its pool.
//
// Collapse protection: a tracer and the trace stack hear of the destruction of their logger. A
// traced function whose logger was destroyed while it ran raises EZentrailProfilingException at its
// exit (unless it is leaving by an exception already, which is left to run its course).

#include <cstdint>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zentrail {

class TZentrailLogger;

// Told before a logger goes away.
class IZentrailLoggerNotifier {
 public:
  virtual ~IZentrailLoggerNotifier() = default;
  virtual void FreeNotify(TZentrailLogger& logger) = 0;
};

enum TZentrailProfilerState { psAvailable, psRequested, psReadyToUse, psInUse };
enum TZentrailTraceMethodOption { tmoTraceOnly, tmoTiming };
enum TZentrailTimingFormat { tfStopwatch, tfClockCycles, tfMilliseconds, tfMicroseconds };

class EZentrailProfilingException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};
class EZentrailStackException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The text of a collapse, raised by className.methodName.
std::string ZentrailCollapseText(std::string_view className, std::string_view methodName);

// The high-resolution clock: a count and its frequency in counts per second.
int64_t ZentrailClockCount();
inline constexpr int64_t ztClockFrequency = 1000000000;
// A measured count in a timing format: "00:00:01.250000", "1250000000 counts", "1,250.00 ms",
// "1,250,000.00 µs".
std::string FormatTiming(int64_t counts, TZentrailTimingFormat format, int64_t frequency = ztClockFrequency);

class TZentrailProfiler : public IZentrailLoggerNotifier {
 public:
  ~TZentrailProfiler() override;
  TZentrailProfilerState State() const { return FState; }
  TZentrailLogger* Logger() const { return FLogger; }
  virtual void Start() = 0;
  virtual void Stop() = 0;
  void FreeNotify(TZentrailLogger& logger) override;

 protected:
  friend class TZentrailProfilerPool;
  friend class IZentrailMethodTracer;
  friend class IZentrailTimer;
  TZentrailLogger* FLogger = nullptr;
  TZentrailProfilerState FState = psAvailable;
};

class TZentrailMethodTracer : public TZentrailProfiler {
 public:
  void Start() override;
  // Raises EZentrailProfilingException when the logger went away during the trace.
  void Stop() override;
  // What the next Start traces. The class and object name form "Class( Name ).Method" or
  // "Class.Method"; an empty class name leaves the method name alone.
  void Prepare(std::string_view className, std::string_view objectName, std::string_view methodName,
               TZentrailTraceMethodOption option, TZentrailTimingFormat format, bool collapse);
  const std::string& MethodText() const { return FMethodText; }

 private:
  bool FCollapse = false;
  std::string FMethodText;  // its capacity is kept, so a warm tracer does not allocate for it
  TZentrailTraceMethodOption FOption = tmoTraceOnly;
  int64_t FStart = 0;
  int64_t FStop = 0;
  TZentrailTimingFormat FTimingFormat = tfMilliseconds;
  TZentrailLogger* FPushed = nullptr;  // the logger this trace put on the stack
};

class TZentrailTimer : public TZentrailProfiler {
 public:
  void Start() override;
  void Stop() override;
  void Prepare(std::string_view description, bool autoStart, bool autoStop, TZentrailTimingFormat format);
  bool AutoStart() const { return FAutoStart; }
  bool AutoStop() const { return FAutoStop; }
  bool Started() const { return FStarted; }
  TZentrailTimingFormat TimingFormat() const { return FTimingFormat; }
  const std::string& Description() const { return FDescription; }
  void Clear();

 private:
  bool FAutoStart = true;
  bool FAutoStop = true;
  int64_t FStart = 0;
  bool FStarted = false;
  int64_t FStop = 0;
  TZentrailTimingFormat FTimingFormat = tfMilliseconds;
  std::string FDescription;
};

// Profilers that are handed out and come back. The pool grows when it runs out and never shrinks.
class TZentrailProfilerPool {
 public:
  explicit TZentrailProfilerPool(std::size_t initialCount);
  virtual ~TZentrailProfilerPool();
  TZentrailProfilerPool(const TZentrailProfilerPool&) = delete;
  TZentrailProfilerPool& operator=(const TZentrailProfilerPool&) = delete;

  // The first available profiler, or a new one, linked to the logger and ready to use.
  TZentrailProfiler* RequestProfiler(TZentrailLogger* logger);
  // Unlinks the logger and makes the profiler available again.
  void ReturnProfiler(TZentrailProfiler* profiler);
  std::size_t Count() const;
  std::size_t TotalInUse() const;

 protected:
  virtual std::unique_ptr<TZentrailProfiler> NewProfiler() = 0;
  // Fills the pool; called by the constructors of the derived pools.
  void Populate();

 private:
  std::size_t FInitialCount;
  std::vector<std::unique_ptr<TZentrailProfiler>> FList;
};

class TZentrailMethodTracerPool : public TZentrailProfilerPool {
 public:
  TZentrailMethodTracerPool() : TZentrailProfilerPool(10) { Populate(); }
  TZentrailMethodTracer* Request(TZentrailLogger* logger) {
    return static_cast<TZentrailMethodTracer*>(RequestProfiler(logger));
  }

 protected:
  std::unique_ptr<TZentrailProfiler> NewProfiler() override;
};

class TZentrailTimerPool : public TZentrailProfilerPool {
 public:
  TZentrailTimerPool() : TZentrailProfilerPool(5) { Populate(); }
  TZentrailTimer* Request(TZentrailLogger* logger) { return static_cast<TZentrailTimer*>(RequestProfiler(logger)); }

 protected:
  std::unique_ptr<TZentrailProfiler> NewProfiler() override;
};

TZentrailMethodTracerPool& MethodTracerPool();
TZentrailTimerPool& TimerPool();

// The loggers of the running traces, one entry per trace, duplicates allowed. It exists to notice
// a logger that goes away while traces use it, not to tell a thread's call depth.
class TZentrailStack : public IZentrailLoggerNotifier {
 public:
  void Push(TZentrailLogger* logger);
  // Raise EZentrailStackException on an empty stack.
  TZentrailLogger* Pop();
  TZentrailLogger* Peek() const;
  // Takes the latest entry of this logger out, wherever it stands; false if it has none (its
  // logger went away meanwhile).
  bool Remove(TZentrailLogger* logger);
  std::size_t Count() const;
  bool IsEmpty() const { return Count() == 0; }
  // Drops the entries of a logger that goes away. (It cannot raise here: the logger is being
  // destroyed; the traces that used it raise at their exit.)
  void FreeNotify(TZentrailLogger& logger) override;

 private:
  std::vector<TZentrailLogger*> FList;
};

TZentrailStack& ZentrailStack();

// The one lock of pools, stack and the notifier links they make, held for one operation only.
std::mutex& ZentrailProfilingLock();

// The reference to a running method trace; see the top of this file.
class [[nodiscard]] IZentrailMethodTracer {
 public:
  IZentrailMethodTracer() = default;
  // Takes a tracer in psReadyToUse and starts it.
  explicit IZentrailMethodTracer(TZentrailMethodTracer* tracer);
  IZentrailMethodTracer(IZentrailMethodTracer&& other) noexcept : FTracer(std::exchange(other.FTracer, nullptr)) {}
  IZentrailMethodTracer& operator=(IZentrailMethodTracer&& other) noexcept(false);
  IZentrailMethodTracer(const IZentrailMethodTracer&) = delete;
  IZentrailMethodTracer& operator=(const IZentrailMethodTracer&) = delete;
  ~IZentrailMethodTracer() noexcept(false) {
    if (FTracer) Release();
  }
  explicit operator bool() const { return FTracer != nullptr; }
  TZentrailMethodTracer* Tracer() const { return FTracer; }
  // Ends the trace now rather than at scope end.
  void Release();

 private:
  TZentrailMethodTracer* FTracer = nullptr;
};

// The reference to a running timer.
class [[nodiscard]] IZentrailTimer {
 public:
  IZentrailTimer() = default;
  explicit IZentrailTimer(TZentrailTimer* timer);
  IZentrailTimer(IZentrailTimer&& other) noexcept : FTimer(std::exchange(other.FTimer, nullptr)) {}
  IZentrailTimer& operator=(IZentrailTimer&& other) noexcept;
  IZentrailTimer(const IZentrailTimer&) = delete;
  IZentrailTimer& operator=(const IZentrailTimer&) = delete;
  ~IZentrailTimer() {
    if (FTimer) Release();
  }
  explicit operator bool() const { return FTimer != nullptr; }

  void Start();
  void Stop();
  bool AutoStart() const;
  bool AutoStop() const;
  TZentrailTimingFormat TimingFormat() const;
  std::string Description() const;
  void Release() noexcept;

 private:
  TZentrailTimer* FTimer = nullptr;
};

}  // namespace zentrail
