#include "ZentrailAsync.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "ZTChannel.h"
#include "ZentrailConnection.h"
#include "ZentrailLogger.h"
#include "ZentrailManager.h"

namespace zentrail {

namespace {

enum : uint32_t { kNotReady = 0, kMessage = 1, kPadding = 2, kRelease = 3 };
constexpr uint32_t kNoRoute = UINT32_MAX;

// What a record holds ahead of its texts. Kind is written last, with release order, once the rest
// is in place: a record whose kind is still 0 is being written.
struct TRecordHead {
  uint32_t Kind;
  uint32_t Size;  // the whole record, a multiple of 8
  uint32_t Token, Generation;
  int32_t MsgType, MsgContent, Time, Date, CategoryColor, CategoryFontColor;
  uint32_t TextLen, DetailsLen, TypeNameLen, CategoryLen, ThreadNameLen, Spare;
};
static_assert(sizeof(TRecordHead) == 64);

// One batch to the dispatcher: as the dispatcher forwards to the viewer, bounded so that a flood
// never turns into one huge request.
constexpr std::size_t kBatchRecords = 4096;
constexpr std::size_t kBatchBytes = 1024u * 1024;

constexpr std::size_t Align8(std::size_t n) { return (n + 7) & ~std::size_t{7}; }

std::size_t RoundCapacity(std::size_t bytes) {
  std::size_t capacity = 64 * 1024;
  while (capacity < bytes && capacity < (std::size_t{1} << 40)) capacity <<= 1;
  return capacity;
}

// One count for every queue of the process, so that a thread's cache never takes a route of a
// queue that has been replaced for one of another.
std::atomic<uint64_t>& RouteEpoch() {
  static std::atomic<uint64_t> epoch{1};
  return epoch;
}

std::atomic_ref<uint32_t> KindOf(char* record) { return std::atomic_ref<uint32_t>(*reinterpret_cast<uint32_t*>(record)); }

void PutField(std::string& out, std::string_view value) {
  char buf[24];
  auto [ptr, ec] = std::to_chars(buf, buf + sizeof buf, value.size());
  (void)ec;
  out.append(buf, ptr);
  out.push_back(':');
  out.append(value);
}

void PutNumber(std::string& out, int64_t value) {
  // "<length>:<digits>" written in one piece; a 32-bit number has at most 11 characters, so its
  // length has one or two digits.
  char buf[24];
  auto [ptr, ec] = std::to_chars(buf + 3, buf + sizeof buf, value);
  (void)ec;
  const auto len = static_cast<std::size_t>(ptr - (buf + 3));
  char* first = buf + 2;
  *first = ':';
  if (len < 10) {
    *--first = static_cast<char>('0' + len);
  } else {
    *--first = static_cast<char>('0' + len % 10);
    *--first = static_cast<char>('0' + len / 10);
  }
  out.append(first, ptr);
}

void PutBE32(std::string& out, std::size_t at, uint32_t v) {
  out[at] = static_cast<char>(v >> 24);
  out[at + 1] = static_cast<char>(v >> 16);
  out[at + 2] = static_cast<char>(v >> 8);
  out[at + 3] = static_cast<char>(v);
}

// The calling thread's name, asked of the manager only when some thread was renamed since.
std::string_view CurrentThreadName() {
  thread_local uint64_t version = 0;
  thread_local std::string name;
  const uint64_t now = ZentrailManager.ThreadNamesVersion();
  if (now != version) {
    name = ZentrailManager.GetCurrentThreadName();
    version = now;
  }
  return name;
}

}  // namespace

// A route of the queue: one logger's destination on one connection.
struct TZentrailAsyncQueue::TRoute {
  uint32_t Generation = 0;
  bool Live = false;
  std::shared_ptr<TZentrailConnection> Connection;
  std::string DispatchID;
  int32_t Date = 0;  // when the route was made; it is renewed after a day
  int32_t Code = 0;
  std::string DestinationText;
  std::string Category;
};

// The background thread's copy of a route, so that shipping takes no lock per record.
struct TZentrailAsyncQueue::TShipRoute {
  uint32_t Generation = 0;
  std::shared_ptr<TZentrailConnection> Connection;
  std::string DispatchID;
  int32_t Code = 0;
  std::string DestinationText;
  std::string Category;
};

// The last routes a thread looked up, by logger.
struct TZentrailAsyncQueue::TCacheEntry {
  const TZentrailLogger* Logger = nullptr;
  const TZentrailConnection* Connection = nullptr;
  const TZentrailDestination* Destination = nullptr;
  int32_t Code = 0;
  int32_t ValidThrough = 0;
  uint64_t Epoch = 0;
  uint32_t Token = kNoRoute;
  uint32_t Generation = 0;
};

namespace {
constexpr int kCacheWays = 4;

// An empty view may carry no pointer at all, which memcpy must never be given.
char* CopyIn(char* to, std::string_view from) {
  if (!from.empty()) std::memcpy(to, from.data(), from.size());
  return to + from.size();
}
}  // namespace

TZentrailAsyncQueue::TZentrailAsyncQueue(std::size_t capacity)
    : FCapacity(RoundCapacity(capacity)), FMask(FCapacity - 1), FData(std::make_unique<char[]>(FCapacity)) {
  RouteEpoch().fetch_add(1, std::memory_order_acq_rel);
}

TZentrailAsyncQueue::~TZentrailAsyncQueue() { Stop(std::chrono::steady_clock::now()); }

void TZentrailAsyncQueue::Start() {
  if (FThread.joinable()) return;
  FStopping.store(false);
  FAbandon.store(false);
  FStopDeadline = std::chrono::steady_clock::time_point::max();
  FRunning.store(true, std::memory_order_release);
  FShipping.store(true);
  FThread = std::thread([this] { Run(); });
}

void TZentrailAsyncQueue::Stop(std::chrono::steady_clock::time_point deadline) {
  if (!FThread.joinable()) return;
  FRunning.store(false, std::memory_order_release);
  FStopDeadline = deadline;
  FStopping.store(true);
  {
    std::lock_guard lock(FWakeLock);
    FWake.notify_all();
  }
  Flush(deadline);
  // What is left now is given up; a send under way is cut off by the deadline it was given.
  FAbandon.store(true);
  {
    std::lock_guard lock(FWakeLock);
    FWake.notify_all();
  }
  FThread.join();
  {
    std::lock_guard lock(FSpaceLock);
    FSpace.notify_all();
  }
}

TZentrailAsyncStatistics TZentrailAsyncQueue::Statistics() const {
  TZentrailAsyncStatistics s;
  s.Accepted = FAccepted.load();
  s.Refused = FRefused.load();
  s.Dropped = FDropped.load();
  return s;
}

// ---------------------------------------------------------------------------------------------
// Senders

uint32_t TZentrailAsyncQueue::RouteToken(TZentrailLogger& logger, const std::shared_ptr<TZentrailConnection>& own,
                                         std::string& dispatchID, int32_t& dispatchIDDate, int32_t today,
                                         uint32_t& generation) {
  thread_local TCacheEntry cache[kCacheWays];
  thread_local unsigned next = 0;
  const TZentrailConnection* connection = own ? own.get() : ZentrailManager.ConnectionPointer();
  const TZentrailDestination& destination = logger.EffectiveDestination();
  const int32_t code = destination.DestinationCode();
  const uint64_t epoch = RouteEpoch().load(std::memory_order_acquire);
  for (const TCacheEntry& e : cache) {
    if (e.Logger == &logger && e.Connection == connection && e.Destination == &destination && e.Code == code &&
        e.Epoch == epoch && today <= e.ValidThrough) {
      generation = e.Generation;
      return e.Token;
    }
  }

  std::shared_ptr<TZentrailConnection> shared = own ? own : ZentrailManager.Connection();
  if (!shared) return kNoRoute;
  uint32_t outdated = kNoRoute, outdatedGeneration = 0;
  std::string outdatedCategory;
  uint32_t token;
  {
    std::lock_guard lock(FRouteLock);
    auto found = FRouteOfID.find(dispatchID);
    TRoute* route = found != FRouteOfID.end() ? &FRoutes[found->second] : nullptr;
    const bool outdatedRoute =
        route && (route->Connection != shared || route->Code != code || today - 1 > route->Date);
    if (!route || outdatedRoute) logger.EffectiveDestination().Validate();  // an invalid destination raises
    if (outdatedRoute) {
      // Another destination, connection or day: the old route closes behind its messages, and the
      // logger gets a new one.
      outdated = found->second;
      outdatedGeneration = route->Generation;
      outdatedCategory = route->Category;
      FRouteOfID.erase(found);
      route = nullptr;
    }
    if (route) {
      token = found->second;
    } else {
      // An id that the logger used synchronously on this day is kept: that route may be announced.
      if (outdated != kNoRoute || dispatchID.empty() || today - 1 > dispatchIDDate) {
        dispatchID = TZentrailConnection::NewDispatchID();
        dispatchIDDate = today;
      }
      if (!FFreeRoutes.empty()) {
        token = FFreeRoutes.back();
        FFreeRoutes.pop_back();
      } else {
        token = static_cast<uint32_t>(FRoutes.size());
        FRoutes.emplace_back();
      }
      route = &FRoutes[token];
      route->Live = true;
      route->Connection = shared;
      route->DispatchID = dispatchID;
      route->Date = dispatchIDDate;
      route->Code = code;
      route->DestinationText = destination.AsString();
      route->Category = logger.Category();
      FRouteOfID[dispatchID] = token;
    }
    generation = FRoutes[token].Generation;
    TCacheEntry& e = cache[next++ % kCacheWays];
    e = {&logger, connection, &destination, code, FRoutes[token].Date + 1, epoch, token, generation};
  }
  if (outdated != kNoRoute) {
    uint64_t at = Reserve(sizeof(TRecordHead) + Align8(outdatedCategory.size()), true);
    if (at != UINT64_MAX) {
      auto* head = reinterpret_cast<TRecordHead*>(At(at));
      head->Size = static_cast<uint32_t>(sizeof(TRecordHead) + Align8(outdatedCategory.size()));
      head->Token = outdated;
      head->Generation = outdatedGeneration;
      head->CategoryLen = static_cast<uint32_t>(outdatedCategory.size());
      CopyIn(At(at) + sizeof(TRecordHead), outdatedCategory);
      Commit(at, kRelease);
    }
    RouteEpoch().fetch_add(1, std::memory_order_acq_rel);
  }
  return token;
}

bool TZentrailAsyncQueue::TryReserve(std::size_t size, uint64_t& position) {
  uint64_t head = FHead.load(std::memory_order_relaxed);
  for (;;) {
    const uint64_t offset = head & FMask;
    // A record never wraps: the rest of the ring becomes padding and it starts again at 0.
    const uint64_t pad = offset + size > FCapacity ? FCapacity - offset : 0;
    const uint64_t tail = FTail.load(std::memory_order_acquire);
    if (head + pad + size - tail > FCapacity) return false;
    if (FHead.compare_exchange_weak(head, head + pad + size, std::memory_order_acq_rel, std::memory_order_relaxed)) {
      if (pad > 0) {
        reinterpret_cast<TRecordHead*>(At(head))->Size = static_cast<uint32_t>(pad);
        Commit(head, kPadding);
      }
      position = head + pad;
      return true;
    }
  }
}

uint64_t TZentrailAsyncQueue::Reserve(std::size_t size, bool mayWait) {
  uint64_t position = 0;
  if (TryReserve(size, position)) return position;
  if (!mayWait || DropWhenFull()) return UINT64_MAX;
  // The sender waits for room, but no longer than one send may block it.
  const auto deadline = DeadlineIn(ZentrailManager.TimeoutMs());
  std::unique_lock lock(FSpaceLock);
  FSpaceWaiters.fetch_add(1);
  bool got = false;
  while (!(got = TryReserve(size, position))) {
    if (!Running() || std::chrono::steady_clock::now() >= deadline) break;
    FSpace.wait_until(lock, std::min(deadline, std::chrono::steady_clock::now() + std::chrono::milliseconds(100)));
  }
  FSpaceWaiters.fetch_sub(1);
  return got ? position : UINT64_MAX;
}

void TZentrailAsyncQueue::Commit(uint64_t position, uint32_t kind) {
  // Sequentially consistent with the background thread's note that it sleeps: either it sees
  // this record, or this sender sees the note and wakes it.
  KindOf(At(position)).store(kind, std::memory_order_seq_cst);
  if (FShipperWaiting.load(std::memory_order_seq_cst)) {
    std::lock_guard lock(FWakeLock);
    FWake.notify_one();
  }
}

void TZentrailAsyncQueue::NoteDrop() {
  FDropped.fetch_add(1, std::memory_order_relaxed);
  FDroppedUnreported.fetch_add(1, std::memory_order_relaxed);
}

bool TZentrailAsyncQueue::QueueDropWarning(uint32_t token, uint32_t generation, const TZentrailTimeStamp& stamp,
                                           std::string_view category, int32_t color, int32_t fontColor) {
  const uint64_t dropped = FDroppedUnreported.exchange(0);
  if (dropped == 0) return true;
  const std::string text = std::to_string(dropped) + " message(s) were dropped because the send queue was full";
  const std::string_view thread = CurrentThreadName();
  const std::size_t size = Align8(sizeof(TRecordHead) + text.size() + category.size() + thread.size());
  const uint64_t at = Reserve(size, false);
  if (at == UINT64_MAX) {
    FDroppedUnreported.fetch_add(dropped);
    return false;
  }
  auto* head = reinterpret_cast<TRecordHead*>(At(at));
  head->Size = static_cast<uint32_t>(size);
  head->Token = token;
  head->Generation = generation;
  head->MsgType = ztmWarning;
  head->MsgContent = ztmText;
  head->Time = stamp.Time;
  head->Date = stamp.Date;
  head->CategoryColor = color;
  head->CategoryFontColor = fontColor;
  head->TextLen = static_cast<uint32_t>(text.size());
  head->CategoryLen = static_cast<uint32_t>(category.size());
  head->ThreadNameLen = static_cast<uint32_t>(thread.size());
  char* p = At(at) + sizeof(TRecordHead);
  CopyIn(CopyIn(CopyIn(p, text), category), thread);
  Commit(at, kMessage);
  return true;
}

int TZentrailAsyncQueue::Send(TZentrailLogger& logger, const std::shared_ptr<TZentrailConnection>& own,
                              std::string& dispatchID, int32_t& dispatchIDDate, int32_t msgType, int32_t msgContent,
                              std::string_view typeName, std::string_view details, std::string_view text,
                              const TZentrailTimeStamp& stamp) {
  if (!Running()) {
    NoteDrop();
    return 0;
  }
  uint32_t generation = 0;
  const uint32_t token = RouteToken(logger, own, dispatchID, dispatchIDDate, stamp.Date, generation);
  if (token == kNoRoute) return 0;
  const std::string& category = logger.Category();
  const std::string_view thread = CurrentThreadName();
  const std::size_t size =
      Align8(sizeof(TRecordHead) + text.size() + details.size() + typeName.size() + category.size() + thread.size());

  if (size > LargestRecord()) {
    // Larger than a fair share of the ring: everything queued goes first, then this one directly.
    Flush(DeadlineIn(ZentrailManager.TimeoutMs()));
    std::shared_ptr<TZentrailConnection> connection = own ? own : ZentrailManager.Connection();
    if (!connection) return 0;
    TZentrailMessage message;
    message.MsgType = msgType;
    message.MsgContent = msgContent;
    message.MsgText.assign(text);
    message.Details.assign(details);
    message.TimeStamp = stamp;
    message.ProcessID = ZentrailManager.ProcessID();
    message.ThreadName.assign(thread);
    message.AppName = ZentrailManager.AppName();
    message.ComputerName = ZentrailManager.ComputerName();
    message.TypeName.assign(typeName);
    message.Category = category;
    message.CategoryColor = logger.CategoryColor();
    message.CategoryFontColor = logger.CategoryFontColor();
    const int result = connection->SendZentrailMessage(logger, message, dispatchID, dispatchIDDate);
    (result != 0 ? FAccepted : FRefused).fetch_add(1);
    return result;
  }

  if (FDroppedUnreported.load(std::memory_order_relaxed) != 0)
    QueueDropWarning(token, generation, stamp, category, logger.CategoryColor(), logger.CategoryFontColor());
  const uint64_t at = Reserve(size, true);
  if (at == UINT64_MAX) {
    NoteDrop();
    return 0;
  }
  char* record = At(at);
  auto* head = reinterpret_cast<TRecordHead*>(record);
  head->Size = static_cast<uint32_t>(size);
  head->Token = token;
  head->Generation = generation;
  head->MsgType = msgType;
  head->MsgContent = msgContent;
  head->Time = stamp.Time;
  head->Date = stamp.Date;
  head->CategoryColor = logger.CategoryColor();
  head->CategoryFontColor = logger.CategoryFontColor();
  head->TextLen = static_cast<uint32_t>(text.size());
  head->DetailsLen = static_cast<uint32_t>(details.size());
  head->TypeNameLen = static_cast<uint32_t>(typeName.size());
  head->CategoryLen = static_cast<uint32_t>(category.size());
  head->ThreadNameLen = static_cast<uint32_t>(thread.size());
  char* p = record + sizeof(TRecordHead);
  for (std::string_view part : {text, details, typeName, std::string_view(category), thread}) p = CopyIn(p, part);
  Commit(at, kMessage);
  return 1;
}

bool TZentrailAsyncQueue::ReleaseRoute(const TZentrailConnection& connection, const std::string& dispatchID,
                                       const std::string& category) {
  uint32_t token, generation;
  {
    std::lock_guard lock(FRouteLock);
    auto found = FRouteOfID.find(dispatchID);
    if (found == FRouteOfID.end() || FRoutes[found->second].Connection.get() != &connection) return false;
    token = found->second;
    generation = FRoutes[token].Generation;
    FRouteOfID.erase(found);
  }
  // The logger goes away: no cache may hand its route to a logger made later at the same place.
  RouteEpoch().fetch_add(1, std::memory_order_acq_rel);
  const std::size_t size = sizeof(TRecordHead) + Align8(category.size());
  const uint64_t at = Running() ? Reserve(size, true) : UINT64_MAX;
  // Without room the route stays open until its connection closes it at the end.
  if (at == UINT64_MAX) return true;
  auto* head = reinterpret_cast<TRecordHead*>(At(at));
  head->Size = static_cast<uint32_t>(size);
  head->Token = token;
  head->Generation = generation;
  head->CategoryLen = static_cast<uint32_t>(category.size());
  CopyIn(At(at) + sizeof(TRecordHead), category);
  Commit(at, kRelease);
  return true;
}

bool TZentrailAsyncQueue::Flush(std::chrono::steady_clock::time_point deadline) {
  const uint64_t target = FHead.load(std::memory_order_acquire);
  std::unique_lock lock(FSpaceLock);
  FSpaceWaiters.fetch_add(1);
  while (FTail.load(std::memory_order_acquire) < target) {
    if (!FShipping.load() || std::chrono::steady_clock::now() >= deadline) break;
    FSpace.wait_until(lock, std::min(deadline, std::chrono::steady_clock::now() + std::chrono::milliseconds(100)));
  }
  FSpaceWaiters.fetch_sub(1);
  return FTail.load(std::memory_order_acquire) >= target;
}

// ---------------------------------------------------------------------------------------------
// The background thread

void TZentrailAsyncQueue::Run() {
  while (WaitForRecord()) ShipBatch();
  FShipping.store(false);
  std::lock_guard lock(FSpaceLock);
  FSpace.notify_all();
}

bool TZentrailAsyncQueue::WaitForRecord() {
  auto ready = [&] { return KindOf(At(FTail.load(std::memory_order_relaxed))).load(std::memory_order_seq_cst) != 0; };
  // A short spin first: under load the next record is usually there by the time a batch is answered.
  for (int spin = 0; spin < 64; ++spin) {
    if (ready()) return !FAbandon.load();
    std::this_thread::yield();
  }
  std::unique_lock lock(FWakeLock);
  FShipperWaiting.store(true, std::memory_order_seq_cst);
  bool have = false;
  for (;;) {
    if (FAbandon.load()) break;
    if ((have = ready())) break;
    if (FStopping.load() && FHead.load() == FTail.load()) break;
    FWake.wait_for(lock, std::chrono::milliseconds(500));
  }
  FShipperWaiting.store(false, std::memory_order_relaxed);
  return have && !FAbandon.load();
}

const TZentrailAsyncQueue::TShipRoute* TZentrailAsyncQueue::ShipRouteFor(uint32_t token, uint32_t generation) {
  if (token >= FShipRoutes.size()) FShipRoutes.resize(token + 1);
  std::unique_ptr<TShipRoute>& slot = FShipRoutes[token];
  if (slot && slot->Generation == generation) return slot.get();
  std::lock_guard lock(FRouteLock);
  if (token >= FRoutes.size() || FRoutes[token].Generation != generation || !FRoutes[token].Live) return nullptr;
  const TRoute& r = FRoutes[token];
  slot = std::make_unique<TShipRoute>(TShipRoute{generation, r.Connection, r.DispatchID, r.Code, r.DestinationText,
                                                 r.Category});
  return slot.get();
}

void TZentrailAsyncQueue::GiveBack(uint64_t upTo) {
  const uint64_t tail = FTail.load(std::memory_order_relaxed);
  if (upTo == tail) return;
  // Zeroed before it is given back: a record's kind reads 0 until its sender marks it ready.
  const uint64_t from = tail & FMask;
  const uint64_t n = upTo - tail;
  if (from + n <= FCapacity) {
    std::memset(FData.get() + from, 0, n);
  } else {
    std::memset(FData.get() + from, 0, FCapacity - from);
    std::memset(FData.get(), 0, n - (FCapacity - from));
  }
  FTail.store(upTo, std::memory_order_release);
  if (FSpaceWaiters.load() > 0) {
    std::lock_guard lock(FSpaceLock);
    FSpace.notify_all();
  }
}

void TZentrailAsyncQueue::ShipBatch() {
  uint64_t position = FTail.load(std::memory_order_relaxed);
  FBatch.clear();
  FAnnounced.clear();
  std::size_t records = 0;
  uint64_t refused = 0;
  std::shared_ptr<TZentrailConnection> connection;
  const auto batchDeadline = std::min(DeadlineIn(ZentrailManager.TimeoutMs()), FStopDeadline);
  TZentrailSendDeadline limit(batchDeadline);
  const std::string& appName = ZentrailManager.AppName();
  const std::string& computerName = ZentrailManager.ComputerName();
  const uint32_t processID = ZentrailManager.ProcessID();

  uint64_t reserved = FHead.load(std::memory_order_acquire);
  while (records < kBatchRecords && FBatch.size() < kBatchBytes) {
    // Beyond the reserved end lie the records of this very batch, one lap back, not yet zeroed.
    if (position >= reserved && position >= (reserved = FHead.load(std::memory_order_acquire))) break;
    char* record = At(position);
    const uint32_t kind = KindOf(record).load(std::memory_order_acquire);
    if (kind == kNotReady) break;
    const auto* head = reinterpret_cast<const TRecordHead*>(record);
    if (kind == kPadding) {
      position += head->Size;
      continue;
    }
    const TShipRoute* route = ShipRouteFor(head->Token, head->Generation);
    if (kind == kRelease) {
      // The messages before it leave first; then the route is closed and its slot free again.
      if (records > 0) break;
      if (route) {
        std::shared_ptr<TZentrailConnection> owner = route->Connection;
        const std::string id = route->DispatchID;
        const std::string category(record + sizeof(TRecordHead), head->CategoryLen);
        {
          std::lock_guard lock(FRouteLock);
          TRoute& r = FRoutes[head->Token];
          r.Live = false;
          ++r.Generation;
          r.Connection.reset();
          FFreeRoutes.push_back(head->Token);
        }
        FShipRoutes[head->Token].reset();
        owner->ReleaseRoute(id, category);
      }
      position += head->Size;
      GiveBack(position);
      continue;
    }
    if (route && connection && route->Connection != connection) break;  // the next batch, on its own connection
    if (!route) {
      ++refused;  // a route that is gone: its logger was destroyed while another thread sent on it
      position += head->Size;
      continue;
    }
    if (std::find(FAnnounced.begin(), FAnnounced.end(), head->Token) == FAnnounced.end()) {
      if (std::chrono::steady_clock::now() < FRetryAfter ||
          !route->Connection->AnnounceRoute(route->DispatchID, route->Code, route->DestinationText, route->Category)) {
        // No dispatcher: the message is lost, as a synchronous send would be.
        if (std::chrono::steady_clock::now() >= FRetryAfter)
          FRetryAfter = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        ++refused;
        position += head->Size;
        continue;
      }
      FAnnounced.push_back(head->Token);
    }
    if (!connection) connection = route->Connection;

    const char* p = record + sizeof(TRecordHead);
    auto take = [&p](uint32_t n) {
      std::string_view v(p, n);
      p += n;
      return v;
    };
    const std::string_view text = take(head->TextLen), details = take(head->DetailsLen),
                           typeName = take(head->TypeNameLen), category = take(head->CategoryLen),
                           thread = take(head->ThreadNameLen);
    const bool compressed = connection->Compression() == mfCompressed;
    std::string& out = compressed ? FPacket : FBatch;
    if (compressed) FPacket.clear();
    const std::size_t at = out.size();
    if (!compressed) out.append(ztFrameHeaderSize, '\0');
    out.append("ZTP1");
    PutNumber(out, head->MsgType);
    PutNumber(out, head->MsgContent);
    PutField(out, route->DispatchID);
    PutField(out, text);
    PutField(out, details);
    PutNumber(out, head->Time);
    PutNumber(out, head->Date);
    PutNumber(out, processID);
    PutField(out, thread);
    PutField(out, appName);
    PutField(out, computerName);
    PutField(out, typeName);
    PutField(out, category);
    PutNumber(out, head->CategoryColor);
    PutNumber(out, head->CategoryFontColor);
    if (compressed) {
      const uint32_t tag = connection->EncodePacket(FPacket, FPayload);
      AppendBatchRecord(FBatch, tag, FPayload);
    } else {
      PutBE32(out, at, ztPacketTag);
      PutBE32(out, at + 4, static_cast<uint32_t>(out.size() - at - ztFrameHeaderSize));
    }
    ++records;
    position += head->Size;
  }

  if (records > 0) {
    int64_t taken = connection->InternalSendBatch(FBatch);
    if (taken == TZentrailConnection::ztBatchPeerLost) {
      // The dispatcher went away since the last batch: a new one hears of the routes again.
      bool announced = true;
      for (uint32_t token : FAnnounced) {
        const TShipRoute* r = FShipRoutes[token].get();
        announced = announced && r && r->Connection->AnnounceRoute(r->DispatchID, r->Code, r->DestinationText, r->Category);
      }
      taken = announced ? connection->InternalSendBatch(FBatch) : -1;
    }
    if (taken < 0) {
      taken = 0;
      FRetryAfter = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    }
    taken = std::min<int64_t>(taken, static_cast<int64_t>(records));
    FAccepted.fetch_add(static_cast<uint64_t>(taken));
    refused += records - static_cast<uint64_t>(taken);
  }
  if (refused > 0) FRefused.fetch_add(refused);
  if (FBatch.capacity() > 4 * kBatchBytes) std::string().swap(FBatch);
  GiveBack(position);
}

}  // namespace zentrail
