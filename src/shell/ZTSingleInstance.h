#pragma once
// One viewer per user: an exclusive lock on "<runtime>/Zentrail Live Viewer Mutex", taken without
// waiting and held for the whole run. The lock goes with the process, so a crashed viewer never
// blocks the next start.

#include <string>

namespace zentrail {

inline constexpr const char* ztViewerMutexName = "Zentrail Live Viewer Mutex";

class TZTSingleInstance {
 public:
  TZTSingleInstance() = default;
  ~TZTSingleInstance();
  TZTSingleInstance(const TZTSingleInstance&) = delete;
  TZTSingleInstance& operator=(const TZTSingleInstance&) = delete;

  enum class Result { Acquired, AlreadyRunning, Failed };
  // Takes the lock in the runtime folder. Failed fills error (refused runtime folder, no file).
  Result Acquire(std::string& error);
  void Release();
  bool Held() const { return FFd >= 0; }

 private:
  int FFd = -1;
};

}  // namespace zentrail
