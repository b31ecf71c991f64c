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
#include <vector>

#include "ZentrailAsync.h"
#include "ZentrailConnection.h"
#include "ZentrailDestination.h"
#include "ZentrailMessage.h"

namespace zentrail {

class TZentrailLogger;

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
  // The shared connection without taking a share of it: for a comparison, not for use.
  const TZentrailConnection* ConnectionPointer() const { return FConnectionPointer.load(std::memory_order_acquire); }

  // ---- Asynchronous sending. Off by default; ZENTRAIL_ASYNC=1 at start switches it on. A send
  // then copies the message into a bounded queue and returns at once (1 queued, 0 dropped), and
  // one background thread ships what has queued up to the dispatcher in batches. Each thread's
  // messages keep their order, and each carries the time of its call. Switching it off, and the
  // end of the process, ship what is queued first, within the time limit; a crash loses at most
  // what was queued.
  void SetAsync(bool value);
  bool Async() const { return FAsync.load(std::memory_order_relaxed); }
  // Bytes the queue holds (16 MiB unless ZENTRAIL_ASYNC_QUEUE says otherwise at start), rounded up
  // to a power of two; a new size takes effect when asynchronous sending is next switched on.
  void SetAsyncQueueSize(std::size_t bytes);
  std::size_t AsyncQueueSize() const;
  // A full queue makes a sender wait for room, at most the time limit, after which its message is
  // dropped; with DropWhenFull on it drops at once. Dropped messages are counted, and the count is
  // sent as a warning message once there is room again.
  void SetDropWhenFull(bool value);
  bool DropWhenFull() const { return FDropWhenFull.load(std::memory_order_relaxed); }
  // Waits until every message queued before the call has been answered by the dispatcher (or given
  // up as undeliverable); false when timeoutMs (the time limit for -1, no limit for 0) passed first.
  bool Flush(int timeoutMs = -1);
  TZentrailAsyncStatistics AsyncStatistics() const;
  // The asynchronous road of a logger's send; the logger passes its own connection and route.
  int SendAsync(TZentrailLogger& logger, const std::shared_ptr<TZentrailConnection>& own, std::string& dispatchID,
                int32_t& dispatchIDDate, int32_t msgType, int32_t msgContent, std::string_view typeName,
                std::string_view details, std::string_view text, const TZentrailTimeStamp& stamp);
  // A route that the asynchronous road opened is closed behind its queued messages; false when
  // the route is none of its.
  bool ReleaseAsyncRoute(const TZentrailConnection& connection, const std::string& dispatchID,
                         const std::string& category);

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
  // Changes whenever a thread is named, so that a copy of a name can be kept until then.
  uint64_t ThreadNamesVersion() const { return FThreadNamesVersion.load(std::memory_order_acquire); }

 private:
  std::atomic<bool> FEnabled{true};
  std::string FAppName;
  std::string FComputerName;
  uint32_t FProcessID = 0;
  std::mutex FThreadMapCriticalSection;
  std::unordered_map<pid_t, std::string> FThreadMap;
  std::atomic<uint64_t> FThreadNamesVersion{1};
  std::atomic<TZentrailLogAsserts> FLogAsserts{laNormal};
  // Before the connection: its destructor still reads the limit when it closes its routes.
  std::atomic<int> FTimeoutMs{5000};
  mutable std::mutex FConnectionLock;
  std::shared_ptr<TZentrailConnection> FConnection;
  std::atomic<TZentrailConnection*> FConnectionPointer{nullptr};
  TZentrailDestination FDefaultDestination;
  std::chrono::steady_clock::time_point FBaseCount;
  int64_t FBaseMilliseconds = 0;  // local time of day at creation, in ms
  int32_t FBaseDate = 0;          // local date at creation, in days
  std::atomic<bool> FEncodeNonvisible{false};
  // Made when first switched on and kept to the end: senders reach it without a lock.
  mutable std::mutex FAsyncLock;
  std::unique_ptr<TZentrailAsyncQueue> FAsyncQueue;
  std::vector<std::unique_ptr<TZentrailAsyncQueue>> FRetiredQueues;
  std::atomic<TZentrailAsyncQueue*> FAsyncQueuePointer{nullptr};
  std::atomic<bool> FAsync{false};
  std::atomic<bool> FDropWhenFull{false};
  std::size_t FAsyncQueueSize = 16u * 1024 * 1024;
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
