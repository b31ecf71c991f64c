#pragma once
// The asynchronous client: a send copies the message into a bounded in-process queue and returns;
// one background thread ships what has queued up to the dispatcher in batch frames.
//
// The queue is one ring of bytes. A sender reserves its record by moving the write position with
// one atomic step, copies the message in and marks it ready; the records lie in the order of
// their reservations, so each thread's messages keep their order. The ring is given back only
// when the dispatcher has answered the batch that held a record, so Flush knows what is done, and
// a process that crashes loses at most what was queued.
//
// A logger's route (connection, destination) is looked up once per thread and kept in a small
// cache; the background thread announces a route before the first batch that uses it.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

#include "ZentrailMessage.h"

namespace zentrail {

class TZentrailConnection;
class TZentrailLogger;

// What became of the messages sent asynchronously since the start.
struct TZentrailAsyncStatistics {
  uint64_t Queued = 0;    // taken into the queue
  uint64_t Accepted = 0;  // answered as taken by the dispatcher
  uint64_t Refused = 0;   // refused by the dispatcher, or lost with a dispatcher that could not be reached
  uint64_t Dropped = 0;   // not queued: the queue was full
};

class TZentrailAsyncQueue {
 public:
  // capacity in bytes, rounded up to a power of two of at least 64 KiB.
  explicit TZentrailAsyncQueue(std::size_t capacity);
  ~TZentrailAsyncQueue();
  TZentrailAsyncQueue(const TZentrailAsyncQueue&) = delete;
  TZentrailAsyncQueue& operator=(const TZentrailAsyncQueue&) = delete;

  // Starts the background thread (again, after Stop).
  void Start();
  // Ships what is queued, waiting at most until the deadline, then ends the background thread.
  // Whatever is left then is given up. Sends that come afterwards are dropped until Start.
  void Stop(std::chrono::steady_clock::time_point deadline);
  bool Running() const { return FRunning.load(std::memory_order_acquire); }

  // 1 when the message was queued, 0 when it was dropped. Raises EZentrailInvalidDestination for
  // a logger whose destination is invalid, as the synchronous send does.
  int Send(TZentrailLogger& logger, const std::shared_ptr<TZentrailConnection>& own, std::string& dispatchID,
           int32_t& dispatchIDDate, int32_t msgType, int32_t msgContent, std::string_view typeName,
           std::string_view details, std::string_view text, const TZentrailTimeStamp& stamp);
  // Queues the closing of a route that this queue opened, behind the messages already on it; false
  // when the route is none of the queue's.
  bool ReleaseRoute(const TZentrailConnection& connection, const std::string& dispatchID, const std::string& category);
  // Waits until everything queued before the call has been answered; false if the deadline came first.
  bool Flush(std::chrono::steady_clock::time_point deadline);

  void SetDropWhenFull(bool value) { FDropWhenFull.store(value, std::memory_order_relaxed); }
  bool DropWhenFull() const { return FDropWhenFull.load(std::memory_order_relaxed); }
  std::size_t Capacity() const { return FCapacity; }
  TZentrailAsyncStatistics Statistics() const;

  // Messages larger than this bypass the ring: the queue is flushed and they are sent at once.
  std::size_t LargestRecord() const { return FCapacity / 4; }

 private:
  struct TRoute;
  struct TShipRoute;
  struct TCacheEntry;

  uint32_t RouteToken(TZentrailLogger& logger, const std::shared_ptr<TZentrailConnection>& own,
                      std::string& dispatchID, int32_t& dispatchIDDate, int32_t today, uint32_t& generation);
  // Reserves size bytes for a record; the ring position, or UINT64_MAX when the sender gave up.
  uint64_t Reserve(std::size_t size, bool mayWait);
  bool TryReserve(std::size_t size, uint64_t& position);
  void Commit(uint64_t position, uint32_t kind);
  void NoteDrop();
  bool QueueDropWarning(uint32_t token, uint32_t generation, const TZentrailTimeStamp& stamp, std::string_view category,
                        int32_t color, int32_t fontColor);
  char* At(uint64_t position) { return FData.get() + (position & FMask); }

  void Run();
  bool WaitForRecord();
  void ShipBatch();
  const TShipRoute* ShipRouteFor(uint32_t token, uint32_t generation);
  void GiveBack(uint64_t upTo);

  const std::size_t FCapacity;
  const uint64_t FMask;
  std::unique_ptr<char[]> FData;
  alignas(64) std::atomic<uint64_t> FHead{0};  // next position to reserve
  alignas(64) std::atomic<uint64_t> FTail{0};  // first position not yet given back
  alignas(64) std::atomic<bool> FShipperWaiting{false};
  std::atomic<int> FSpaceWaiters{0};
  std::atomic<uint64_t> FDroppedUnreported{0};
  std::atomic<bool> FDropWhenFull{false};

  std::atomic<uint64_t> FQueued{0}, FAccepted{0}, FRefused{0}, FDropped{0};

  std::mutex FWakeLock;
  std::condition_variable FWake;       // the background thread waits here for records
  std::mutex FSpaceLock;
  std::condition_variable FSpace;      // senders wait here for room, Flush for answers

  std::thread FThread;
  std::atomic<bool> FRunning{false};   // taking messages
  std::atomic<bool> FShipping{false};  // the background thread is at work
  std::atomic<bool> FStopping{false};
  std::atomic<bool> FAbandon{false};
  std::chrono::steady_clock::time_point FStopDeadline = std::chrono::steady_clock::time_point::max();

  // Routes by token; a token's generation changes when its slot is used again.
  mutable std::mutex FRouteLock;
  std::deque<TRoute> FRoutes;
  std::vector<uint32_t> FFreeRoutes;
  std::unordered_map<std::string, uint32_t> FRouteOfID;  // dispatch id -> token

  // The background thread's own state.
  std::vector<std::unique_ptr<TShipRoute>> FShipRoutes;
  std::string FBatch;
  std::string FPacket, FPayload;
  std::vector<uint32_t> FAnnounced;  // tokens announced for the batch being built
  // After a dispatcher could not be reached, messages are given up without a new attempt each
  // until then, so that a missing dispatcher costs one attempt per second, not one per batch.
  std::chrono::steady_clock::time_point FRetryAfter{};
};

}  // namespace zentrail
