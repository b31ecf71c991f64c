#include "ZentrailConnection.h"

#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <random>

#include "TransportPacket.h"
#include "ZTChannel.h"
#include "ZentrailLogger.h"
#include "ZentrailManager.h"
#include "ZentrailPlatform.h"

namespace zentrail {

namespace {

// Set by a transport when a connection that had served before turned out dead: the dispatcher
// ended or was replaced since, and the message may be tried once more on a fresh connection.
thread_local bool tPeerLost = false;

// When the send under way on this thread must give up; the outermost scope sets it.
thread_local TZTDeadline tDeadline = ztNoDeadline;

class TDeadlineScope {
 public:
  TDeadlineScope() : FOuter(tDeadline) {
    if (FOuter == ztNoDeadline) tDeadline = DeadlineIn(ZentrailManager.TimeoutMs());
  }
  ~TDeadlineScope() { tDeadline = FOuter; }
  TDeadlineScope(const TDeadlineScope&) = delete;
  TDeadlineScope& operator=(const TDeadlineScope&) = delete;

 private:
  TZTDeadline FOuter;
};

// Takes a lock that another sender may hold while it waits on a stopped dispatcher; the wait
// counts against this call's own limit.
template <class TMutex>
bool LockBefore(std::unique_lock<TMutex>& lock, TZTDeadline deadline) {
  if (deadline == ztNoDeadline) {
    lock.lock();
    return true;
  }
  return lock.try_lock_until(deadline);
}

bool Expired(TZTDeadline deadline) {
  return deadline != ztNoDeadline && std::chrono::steady_clock::now() >= deadline;
}

int MsLeft(TZTDeadline deadline) {
  if (deadline == ztNoDeadline) return 0;
  auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
  return left.count() > 0 ? static_cast<int>(left.count()) : 1;
}

int32_t Today() {
  TZentrailTimeStamp t;
  ZentrailManager.GetTimeStamp(t);
  return t.Date;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Compression

TZentrailDeflater::TZentrailDeflater() : FStream(nullptr) {
  auto* z = new z_stream{};
  if (deflateInit(z, Z_DEFAULT_COMPRESSION) != Z_OK) {
    delete z;
    return;
  }
  FStream = z;
}

TZentrailDeflater::~TZentrailDeflater() {
  if (auto* z = static_cast<z_stream*>(FStream)) {
    deflateEnd(z);
    delete z;
  }
}

bool TZentrailDeflater::Compress(std::string_view data, std::string& out) {
  auto* z = static_cast<z_stream*>(FStream);
  if (!z || deflateReset(z) != Z_OK) return false;
  out.resize(deflateBound(z, static_cast<uLong>(data.size())));
  z->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
  z->avail_in = static_cast<uInt>(data.size());
  z->next_out = reinterpret_cast<Bytef*>(out.data());
  z->avail_out = static_cast<uInt>(out.size());
  if (deflate(z, Z_FINISH) != Z_STREAM_END) return false;
  out.resize(z->total_out);
  return true;
}

// ---------------------------------------------------------------------------------------------
// Routes

TZentrailConnection::TZentrailConnection(TZentrailMessageFormat format) : FCompression(format) {
  if (FCompression == mfCompressed) FDeflater = std::make_unique<TZentrailDeflater>();
}

TZentrailConnection::~TZentrailConnection() = default;

std::string TZentrailConnection::NewDispatchID() {
  thread_local std::mt19937_64 rng([] {
    std::random_device rd;
    std::seed_seq seq{rd(), rd(), rd(), rd(), static_cast<unsigned>(getpid()),
                      static_cast<unsigned>(time(nullptr))};
    return std::mt19937_64(seq);
  }());
  uint64_t hi = rng(), lo = rng();
  // Version 4, variant 1, as a random GUID has them.
  hi = (hi & 0xFFFFFFFFFFFF0FFFull) | 0x0000000000004000ull;
  lo = (lo & 0x3FFFFFFFFFFFFFFFull) | 0x8000000000000000ull;
  char buf[40];
  std::snprintf(buf, sizeof buf, "%08X-%04X-%04X-%04X-%012llX", static_cast<unsigned>(hi >> 32),
                static_cast<unsigned>((hi >> 16) & 0xFFFF), static_cast<unsigned>(hi & 0xFFFF),
                static_cast<unsigned>(lo >> 48), static_cast<unsigned long long>(lo & 0xFFFFFFFFFFFFull));
  return buf;
}

TZentrailConnection::TRoute* TZentrailConnection::FindRoute(const std::string& id) {
  if (id.empty()) return nullptr;
  for (auto& r : FDispatchIDs)
    if (r.ID == id) return &r;
  return nullptr;
}

TZentrailConnection::TRoute& TZentrailConnection::NewRoute(std::string& dispatchID, int32_t& dispatchIDDate) {
  dispatchID = NewDispatchID();
  dispatchIDDate = Today();
  FDispatchIDs.push_back({dispatchID, std::nullopt});
  return FDispatchIDs.back();
}

void TZentrailConnection::FillControl(TZentrailMessage& control, int32_t type, const std::string& id,
                                      const std::string& category) {
  control.SetMsgType(type);
  control.SetMsgContent(ztmText);
  control.RouteKey = id;
  control.AppName = ZentrailManager.AppName();
  control.ComputerName = ZentrailManager.ComputerName();
  control.ProcessID = ZentrailManager.ProcessID();
  control.Category = category;
  ZentrailManager.GetTimeStamp(control.TimeStamp);
}

void TZentrailConnection::CloseRoute(TRoute& route, const std::string& category) {
  if (!route.Code) return;
  TZentrailMessage control;
  FillControl(control, ztmCloseRoute, route.ID, category);
  try {
    InternalSend(control);
  } catch (...) {
  }
  route.Code.reset();
}

std::chrono::steady_clock::time_point TZentrailConnection::CurrentDeadline() { return tDeadline; }

TZentrailSendDeadline::TZentrailSendDeadline(std::chrono::steady_clock::time_point deadline) : FOuter(tDeadline) {
  tDeadline = std::min(deadline, FOuter);
}

TZentrailSendDeadline::~TZentrailSendDeadline() { tDeadline = FOuter; }

void TZentrailConnection::ReleaseRoute(const std::string& dispatchID, const std::string& category) {
  // A route of the asynchronous client closes behind the messages queued on it.
  if (ZentrailManager.ReleaseAsyncRoute(*this, dispatchID, category)) return;
  TDeadlineScope scope;
  std::unique_lock lock(FMonitor, std::defer_lock);
  if (!LockBefore(lock, tDeadline)) return;
  TRoute* route = FindRoute(dispatchID);
  if (!route) return;
  CloseRoute(*route, category);
  std::erase_if(FDispatchIDs, [&](const TRoute& r) { return r.ID == dispatchID; });
}

void TZentrailConnection::CloseAllRoutes() {
  // One limit for all of them: a stopped dispatcher must not hold a program at its exit once per
  // route.
  TDeadlineScope scope;
  std::unique_lock lock(FMonitor, std::defer_lock);
  if (!LockBefore(lock, tDeadline)) return;
  for (auto& route : FDispatchIDs)
    if (!Expired(tDeadline)) CloseRoute(route, {});
  FDispatchIDs.clear();
}

void TZentrailConnection::ForgetAnnouncedRoutes() {
  // Called from the transport, which may run under the monitor: the routes are forgotten at the
  // start of the next send.
  FRoutesLost.store(true);
}

int TZentrailConnection::SendZentrailMessage(TZentrailLogger& logger, TZentrailMessage& message,
                                             std::string& dispatchID, int32_t& dispatchIDDate) {
  TDeadlineScope scope;
  // A second round only when the first found its dispatcher gone: the route is then announced
  // to whichever dispatcher answers now.
  for (int round = 0; round < 2; ++round) {
    tPeerLost = false;
    {
      std::unique_lock lock(FMonitor, std::defer_lock);
      if (!LockBefore(lock, tDeadline)) return 0;
      bool connected = Connect();
      if (FRoutesLost.exchange(false))
        for (auto& r : FDispatchIDs) r.Code.reset();
      if (!connected) return 0;
      TRoute* route = FindRoute(dispatchID);
      if (!route || Today() - 1 > dispatchIDDate) route = &NewRoute(dispatchID, dispatchIDDate);
      TZentrailDestination& destination = logger.EffectiveDestination();
      int32_t code = destination.DestinationCode();
      if (!route->Code || *route->Code != code) {
        if (route->Code) {
          CloseRoute(*route, logger.Category());
          std::string old = route->ID;
          std::erase_if(FDispatchIDs, [&](const TRoute& r) { return r.ID == old; });
          route = &NewRoute(dispatchID, dispatchIDDate);
        }
        destination.Validate();  // an invalid destination raises to the application
        TZentrailMessage control;
        FillControl(control, ztmOpenRoute, route->ID, logger.Category());
        control.MsgText = destination.AsString();
        int announced = 0;
        try {
          announced = InternalSend(control);
        } catch (...) {
          announced = 0;
        }
        if (announced == 0) {
          if (tPeerLost && !Expired(tDeadline)) continue;
          return 0;
        }
        route->Code = code;
      }
      message.RouteKey = route->ID;
    }
    int result = 0;
    try {
      result = InternalSend(message);
    } catch (...) {
      result = 0;
    }
    if (result == 0 && tPeerLost && !Expired(tDeadline)) continue;
    return result;
  }
  return 0;
}

bool TZentrailConnection::AnnounceRoute(const std::string& dispatchID, int32_t code,
                                        const std::string& destinationText, const std::string& category) {
  TDeadlineScope scope;
  for (int round = 0; round < 2; ++round) {
    tPeerLost = false;
    std::unique_lock lock(FMonitor, std::defer_lock);
    if (!LockBefore(lock, tDeadline)) return false;
    bool connected = Connect();
    if (FRoutesLost.exchange(false))
      for (auto& r : FDispatchIDs) r.Code.reset();
    if (!connected) return false;
    TRoute* route = FindRoute(dispatchID);
    if (!route) {
      FDispatchIDs.push_back({dispatchID, std::nullopt});
      route = &FDispatchIDs.back();
    }
    if (route->Code && *route->Code == code) return true;
    if (route->Code) CloseRoute(*route, category);
    TZentrailMessage control;
    FillControl(control, ztmOpenRoute, dispatchID, category);
    control.MsgText = destinationText;
    int announced = 0;
    try {
      announced = InternalSend(control);
    } catch (...) {
      announced = 0;
    }
    if (announced == 0) {
      if (tPeerLost && !Expired(tDeadline)) continue;
      return false;
    }
    route->Code = code;
    return true;
  }
  return false;
}

int64_t TZentrailConnection::InternalSendBatch(std::string_view) { return -1; }

uint32_t TZentrailConnection::EncodePacket(std::string_view packet, std::string& payload) {
  if (FCompression == mfCompressed && FDeflater) {
    std::lock_guard lock(FDeflateLock);
    if (FDeflater->Compress(packet, payload)) return ztCompressedPacketTag;
  }
  payload.assign(packet);
  return ztPacketTag;
}

uint32_t TZentrailConnection::EncodeFrame(const TZentrailMessage& message, std::string& payload) {
  payload.clear();
  message.AppendTransportPacket(payload);
  if (FCompression == mfCompressed && FDeflater) {
    std::string compressed;
    std::lock_guard lock(FDeflateLock);
    if (FDeflater->Compress(payload, compressed)) {
      payload.swap(compressed);
      return ztCompressedPacketTag;
    }
  }
  return ztPacketTag;
}

// ---------------------------------------------------------------------------------------------
// The local socket

TZentrailCopyDataConnection::TZentrailCopyDataConnection(TZentrailMessageFormat format)
    : TZentrailConnection(format) {}

TZentrailCopyDataConnection::~TZentrailCopyDataConnection() {
  // Closing the routes never starts a dispatcher: InternalSend only connects to a running one.
  CloseAllRoutes();
  DropIdleSockets();
}

int TZentrailCopyDataConnection::TakeSocket(bool& reused) {
  {
    std::lock_guard lock(FPoolLock);
    if (!FIdle.empty()) {
      int fd = FIdle.back().Fd;
      FIdle.pop_back();
      reused = true;
      return fd;
    }
  }
  reused = false;
  std::string error;
  std::string path = DispatcherSocketPath(error);
  if (path.empty()) return -1;
  return ConnectUnixSocket(path, tDeadline, error);
}

void TZentrailCopyDataConnection::ReturnSocket(int fd) {
  auto now = std::chrono::steady_clock::now();
  std::lock_guard lock(FPoolLock);
  FIdle.push_back({fd, now});
}

void TZentrailCopyDataConnection::DropIdleSockets() {
  std::lock_guard lock(FPoolLock);
  for (const TIdle& i : FIdle) close(i.Fd);
  FIdle.clear();
}

bool TZentrailCopyDataConnection::Connect() {
  TDeadlineScope scope;
  {
    std::lock_guard lock(FPoolLock);
    // A dead idle socket is found by the send that uses it, which then tries once more.
    if (!FIdle.empty()) return true;
  }
  std::string error;
  std::string path = DispatcherSocketPath(error);
  if (path.empty()) return false;
  int fd = ConnectUnixSocket(path, tDeadline, error);
  if (fd < 0) {
    if (Expired(tDeadline) || !StartDispatcher(path, tDeadline)) return false;
    fd = ConnectUnixSocket(path, tDeadline, error);
    if (fd < 0) return false;
  }
  ReturnSocket(fd);
  return true;
}

int TZentrailCopyDataConnection::InternalSend(const TZentrailMessage& message) {
  TDeadlineScope scope;
  // A local buffer: this also runs from static destructors at exit, after thread-local ones.
  std::string payload;
  uint32_t tag = EncodeFrame(message, payload);
  bool reused = false;
  int fd = TakeSocket(reused);
  if (fd < 0) return 0;
  std::string error;
  int result = SendFrameAndWaitReply(fd, tag, payload, tDeadline, error);
  if (result == ztTimedOut) {
    // The dispatcher lives but does not answer (stopped, or swamped). This socket stands in the
    // middle of an exchange and is useless; the routes are still known over there.
    close(fd);
    return 0;
  }
  if (result < 0) {
    // The dispatcher is gone: its sockets are useless, and a new one must hear of the routes again.
    close(fd);
    DropIdleSockets();
    ForgetAnnouncedRoutes();
    if (reused) tPeerLost = true;
    return 0;
  }
  ReturnSocket(fd);
  return result;
}

int64_t TZentrailCopyDataConnection::InternalSendBatch(std::string_view batch) {
  TDeadlineScope scope;
  bool reused = false;
  int fd = TakeSocket(reused);
  if (fd < 0) return -1;
  std::string error;
  int64_t result = SendBatchAndWaitCount(fd, batch, tDeadline, error);
  if (result == ztTimedOut) {
    close(fd);
    return -1;
  }
  if (result < 0) {
    close(fd);
    DropIdleSockets();
    ForgetAnnouncedRoutes();
    return reused ? ztBatchPeerLost : -1;
  }
  ReturnSocket(fd);
  return result;
}

void TZentrailCopyDataConnection::CloseDispatcher() {
  std::string error;
  std::string path = DispatcherSocketPath(error);
  if (path.empty()) return;
  int fd = ConnectUnixSocket(path, error);
  if (fd < 0) return;
  ucred cred{};
  socklen_t len = sizeof cred;
  if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &cred, &len) == 0 && cred.pid > 0 && cred.uid == geteuid())
    kill(cred.pid, SIGTERM);
  close(fd);
  DropIdleSockets();
}

// ---------------------------------------------------------------------------------------------
// TCP

TZentrailTcpConnection::TZentrailTcpConnection(std::string host, uint16_t port, TZentrailMessageFormat format)
    : TZentrailConnection(format), FHost(std::move(host)), FPort(port) {}

TZentrailTcpConnection::~TZentrailTcpConnection() {
  bool connected;
  {
    std::lock_guard lock(FTcpLock);
    connected = FFd >= 0;
  }
  if (connected) CloseAllRoutes();
  std::lock_guard lock(FTcpLock);
  if (FFd >= 0) close(FFd);
  FFd = -1;
}

int TZentrailTcpConnection::InternalSend(const TZentrailMessage& message) {
  TDeadlineScope scope;
  // A local buffer: this also runs from static destructors at exit, after thread-local ones.
  std::string payload;
  uint32_t tag = EncodeFrame(message, payload);
  const TZTDeadline deadline = tDeadline;
  std::unique_lock lock(FTcpLock, std::defer_lock);
  if (!LockBefore(lock, deadline) || Expired(deadline)) return 0;
  std::string error;
  bool reused = FFd >= 0;
  if (FFd < 0) {
    // Without a limit of its own, an unreachable host still must not hold the program for minutes.
    FFd = ConnectTcp(FHost, FPort, deadline == ztNoDeadline ? 5000 : MsLeft(deadline), error);
    if (FFd < 0) return 0;
  }
  int result = SendFrameAndWaitReply(FFd, tag, payload, deadline, error);
  if (result == ztTimedOut) {
    close(FFd);
    FFd = -1;
    return 0;
  }
  if (result < 0) {
    close(FFd);
    FFd = -1;
    ForgetAnnouncedRoutes();
    if (reused) tPeerLost = true;
    return 0;
  }
  return result;
}

int64_t TZentrailTcpConnection::InternalSendBatch(std::string_view batch) {
  TDeadlineScope scope;
  const TZTDeadline deadline = tDeadline;
  std::unique_lock lock(FTcpLock, std::defer_lock);
  if (!LockBefore(lock, deadline) || Expired(deadline)) return -1;
  std::string error;
  bool reused = FFd >= 0;
  if (FFd < 0) {
    FFd = ConnectTcp(FHost, FPort, deadline == ztNoDeadline ? 5000 : MsLeft(deadline), error);
    if (FFd < 0) return -1;
  }
  int64_t result = SendBatchAndWaitCount(FFd, batch, deadline, error);
  if (result < 0) {
    close(FFd);
    FFd = -1;
    if (result == ztTimedOut) return -1;
    ForgetAnnouncedRoutes();
    return reused ? ztBatchPeerLost : -1;
  }
  return result;
}

}  // namespace zentrail
