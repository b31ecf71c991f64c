#pragma once
// The process-wide part of the logging client: identity, clock, thread names, the shared
// connection and the default destination. One instance, ZentrailManager.

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "ZentrailConnection.h"
#include "ZentrailDestination.h"
#include "ZentrailMessage.h"

namespace zentrail {

enum TZentrailLogAsserts { laNormal, laZentrail, laBoth };

class TZentrailManager {
 public:
  TZentrailManager();
  ~TZentrailManager();
  TZentrailManager(const TZentrailManager&) = delete;
  TZentrailManager& operator=(const TZentrailManager&) = delete;

  // Master switch: a logger sends only while this and its own switch are on.
  bool Enabled() const { return FEnabled.load(std::memory_order_relaxed); }
  void SetEnabled(bool value) { FEnabled.store(value, std::memory_order_relaxed); }

  // Identity. The setters are meant for start-up, before other threads send.
  const std::string& AppName() const { return FAppName; }
  void SetAppName(std::string value) { FAppName = std::move(value); }
  const std::string& ComputerName() const { return FComputerName; }
  uint32_t ProcessID() const { return FProcessID; }

  TZentrailLogAsserts LogAsserts() const { return FLogAsserts.load(std::memory_order_relaxed); }
  void SetLogAsserts(TZentrailLogAsserts value) { FLogAsserts.store(value); }

  // Control characters in message texts become "[TAB]", "[LF]", "[CR]" or "[#n]" when on.
  bool EncodeNonvisibleCharacters() const { return FEncodeNonvisible.load(std::memory_order_relaxed); }
  void SetEncodeNonvisibleCharacters(bool value) { FEncodeNonvisible.store(value); }

  // The shared connection; a logger without its own uses it. Replacing it frees the old one
  // once no send uses it any more.
  std::shared_ptr<TZentrailConnection> Connection() const;
  void ConnectUsingCopyData(TZentrailMessageFormat format = mfDefault);
  void ConnectUsingTcp(const std::string& host, uint16_t port, TZentrailMessageFormat format = mfDefault);
  void ConnectUsingTcp(const std::string& host, TZentrailMessageFormat format = mfDefault);
  void ConnectUsingTcp(TZentrailMessageFormat format = mfDefault);
  void SetConnection(std::shared_ptr<TZentrailConnection> connection);

  // The longest that one send may block the calling thread, in milliseconds: connecting (and
  // starting a dispatcher), writing and waiting for the answer together. A message that is not
  // answered in time counts as not taken. 5000 unless ZENTRAIL_TIMEOUT_MS says otherwise at start;
  // 0 or less means no limit.
  int TimeoutMs() const { return FTimeoutMs.load(std::memory_order_relaxed); }
  void SetTimeoutMs(int value) { FTimeoutMs.store(value, std::memory_order_relaxed); }

  // Only "Viewer" at start.
  TZentrailDestination& DefaultDestination() { return FDefaultDestination; }

  // One even clock for every message of the process: the wall clock at start plus a monotonic
  // count since, so a change of the system time does not make messages jump.
  void GetTimeStamp(TZentrailTimeStamp& timeStamp) const;
  TZentrailTimeStamp GetTimeStamp() const {
    TZentrailTimeStamp t;
    GetTimeStamp(t);
    return t;
  }

  // The name of the calling thread: its id in decimal until it is given a name.
  std::string GetCurrentThreadName();
  void SetCurrentThreadName(std::string_view name);

 private:
  std::atomic<bool> FEnabled{true};
  std::string FAppName;
  std::string FComputerName;
  uint32_t FProcessID = 0;
  std::mutex FThreadMapCriticalSection;
  std::unordered_map<pid_t, std::string> FThreadMap;
  std::atomic<TZentrailLogAsserts> FLogAsserts{laNormal};
  // Before the connection: its destructor still reads the limit when it closes its routes.
  std::atomic<int> FTimeoutMs{5000};
  mutable std::mutex FConnectionLock;
  std::shared_ptr<TZentrailConnection> FConnection;
  TZentrailDestination FDefaultDestination;
  std::chrono::steady_clock::time_point FBaseCount;
  int64_t FBaseMilliseconds = 0;  // local time of day at creation, in ms
  int32_t FBaseDate = 0;          // local date at creation, in days
  std::atomic<bool> FEncodeNonvisible{false};
};

// The manager and the global logger exist from before the first static constructor that includes
// this header until after the last static destructor.
extern TZentrailManager& ZentrailManager;

struct TZentrailClientInit {
  TZentrailClientInit();
  ~TZentrailClientInit();
};
static TZentrailClientInit ztClientInit;

}  // namespace zentrail
