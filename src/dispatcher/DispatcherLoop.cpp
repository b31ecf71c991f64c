#include "Dispatcher.h"
#include "InheritedListener.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "NetworkSinks.h"
#include "ZTChannel.h"
#include "ZTRegistry.h"
#include "Zlib.h"
#include "ZentrailDestination.h"

namespace zentrail {

// ---------------------------------------------------------------------------------------------
// The event loop

struct TDispatcher::TClient {
  int Fd = -1;
  bool Tcp = false;
  // A peer outside the allow list: its frames are read past and answered 0, never decoded.
  bool Refused = false;
  unsigned char Header[ztFrameHeaderSize] = {};
  std::size_t HeaderGot = 0;
  uint64_t SkipLeft = 0;
  bool EverSent = false;
  std::chrono::steady_clock::time_point LastData = std::chrono::steady_clock::now();
  bool Waiting = false;  // a frame waits for room in a queue; reading is paused
  TZTFrameDecoder Decoder;
  // A batch that waits for room goes on from here when it is retried.
  std::size_t BatchOffset = 0;
  uint32_t BatchTaken = 0;
};

TDispatcher::TDispatcher(TDispatcherOptions options) : FOptions(std::move(options)) {}

TDispatcher::~TDispatcher() {
  for (auto& [fd, client] : FClients) close(fd);
  for (int fd : {FEpoll, FUnixListen, FTcpListen, FUdpListen, FSignalFd, FWakeFd, FLockFd})
    if (fd >= 0) close(fd);
}

void TDispatcher::Log(const std::string& text) const {
  std::fprintf(stderr, "zentrail-dispatcher: %s\n", text.c_str());
}

bool TDispatcher::Setup() {
  // Before any thread starts: the HTTP library's global set-up is not safe alongside threads.
  InitHttpClient();
  std::string error;
  FSocketPath = DispatcherSocketPath(error);
  if (FSocketPath.empty()) {
    Log(error);
    return false;
  }
  sigset_t mask;
  sigemptyset(&mask);
  sigaddset(&mask, SIGTERM);
  sigaddset(&mask, SIGINT);
  sigaddset(&mask, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &mask, nullptr);  // before any thread starts, so all inherit it
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);  // an over-large file is a write error, not the end
  FSignalFd = signalfd(-1, &mask, SFD_CLOEXEC | SFD_NONBLOCK);
  FWakeFd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  FEpoll = epoll_create1(EPOLL_CLOEXEC);

  // One dispatcher per user: the lock is held for the whole run, so that two started at the same
  // moment cannot both take the socket (the later one would remove the earlier one's file).
  std::string lockPath = GetRuntimeFolder(error) + "/dispatcher.lock";
  FLockFd = open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (FLockFd < 0 || flock(FLockFd, LOCK_EX | LOCK_NB) != 0) {
    FAlreadyRunning = true;
    if (FOptions.Verbose) Log("another dispatcher is running");
    return false;
  }
  // A socket from the service manager is the manager's: it stays when the dispatcher ends.
  bool inherited = false;
  FUnixListen = TakeInheritedListener(FSocketPath, inherited, error);
  if (!inherited) FUnixListen = ListenUnixSocket(FSocketPath, error);
  if (FUnixListen < 0) {
    Log(error);
    return false;
  }
  fcntl(FUnixListen, F_SETFL, fcntl(FUnixListen, F_GETFL) | O_NONBLOCK);
  struct stat st {};
  if (!inherited && stat(FSocketPath.c_str(), &st) == 0) FSocketInode = st.st_ino;

  if (FOptions.Tcp && !OpenNetworkListener(SOCK_STREAM, FOptions.TcpPort, "dispatcher-tcp-port", FTcpListen, FPortFile))
    return false;
  if (FOptions.Udp &&
      !OpenNetworkListener(SOCK_DGRAM, FOptions.UdpPort, "dispatcher-udp-port", FUdpListen, FUdpPortFile))
    return false;

  auto add = [&](int fd) {
    epoll_event ev{};
    ev.events = EPOLLIN;
    ev.data.fd = fd;
    epoll_ctl(FEpoll, EPOLL_CTL_ADD, fd, &ev);
  };
  add(FUnixListen);
  if (FTcpListen >= 0) add(FTcpListen);
  if (FUdpListen >= 0) add(FUdpListen);
  add(FSignalFd);
  add(FWakeFd);

  std::string viewerPath = ViewerSocketPath(error);
  auto viewer = std::make_unique<TViewerSink>(FWakeFd, viewerPath);
  FViewer = viewer.get();
  FViewerOnly = {FViewer};
  FSinks["Viewer"] = std::move(viewer);
  return true;
}

int TDispatcher::Run() {
  if (!Setup()) return FAlreadyRunning ? 0 : 1;
  if (FOptions.Verbose) Log("listening on " + FSocketPath);
  bool running = true;
  std::vector<epoll_event> events(64);
  while (running) {
    // With clients connected, wake now and then to let go of those that stalled; with none, now
    // and then to see whether the socket file it made is still there.
    const int timeout = !FClients.empty() ? 1000 : FSocketInode != 0 ? 2000 : -1;
    int n = epoll_wait(FEpoll, events.data(), static_cast<int>(events.size()), timeout);
    if (n < 0) {
      if (errno == EINTR) continue;
      Log(std::string("epoll failed: ") + std::strerror(errno));
      break;
    }
    for (int i = 0; i < n; ++i) {
      int fd = events[i].data.fd;
      if (fd == FSignalFd) {
        signalfd_siginfo info{};
        while (read(FSignalFd, &info, sizeof info) == sizeof info) running = false;
      } else if (fd == FWakeFd) {
        uint64_t count;
        while (read(FWakeFd, &count, sizeof count) == sizeof count) {
        }
        RetryWaiting();
      } else if (fd == FUnixListen) {
        Accept(fd, false);
      } else if (fd == FTcpListen) {
        Accept(fd, true);
      } else if (fd == FUdpListen) {
        ReadDatagrams();
      } else if (auto it = FClients.find(fd); it != FClients.end()) {
        ReadClient(*it->second);
      }
    }
    DropIdleClients();
    if (FClients.empty() && SocketFileGone()) {
      // No new client can find this dispatcher, and while it holds the lock none can start
      // another one: ending is the only useful thing left to do.
      Log("the socket " + FSocketPath + " was removed; ending");
      running = false;
    }
  }
  Shutdown();
  return 0;
}

void TDispatcher::Accept(int listenFd, bool tcp) {
  for (;;) {
    std::string error;
    int fd = AcceptConnection(listenFd, true, error);
    if (fd < 0) {
      if (!error.empty()) Log(error);
      return;
    }
    if (!tcp && !PeerIsSameUser(fd)) {
      close(fd);
      continue;
    }
    auto client = std::make_unique<TClient>();
    client->Fd = fd;
    client->Tcp = tcp;
    if (tcp) {
      sockaddr_storage peer{};
      socklen_t len = sizeof peer;
      getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &len);
      if (!AddressAllowed(FOptions.Allow, reinterpret_cast<sockaddr*>(&peer))) {
        client->Refused = true;
        Log("frames from " + AddressText(reinterpret_cast<sockaddr*>(&peer)) +
            " are refused: the address is not in the allow list");
      }
    }
    epoll_event ev{};
    ev.events = EPOLLIN | EPOLLRDHUP;
    ev.data.fd = fd;
    epoll_ctl(FEpoll, EPOLL_CTL_ADD, fd, &ev);
    FClients[fd] = std::move(client);
  }
}

void TDispatcher::CloseClient(int fd) {
  epoll_ctl(FEpoll, EPOLL_CTL_DEL, fd, nullptr);
  close(fd);
  FClients.erase(fd);
}

void TDispatcher::ReadClient(TClient& client) {
  if (client.Waiting) return;
  char buf[65536];
  for (;;) {
    ssize_t n = read(client.Fd, buf, sizeof buf);
    if (n > 0) {
      client.LastData = std::chrono::steady_clock::now();
      client.EverSent = true;
      if (client.Refused) {
        int fd = client.Fd;
        DiscardFrames(client, buf, static_cast<std::size_t>(n));
        if (!FClients.count(fd)) return;
        continue;
      }
      client.Decoder.Feed(buf, static_cast<std::size_t>(n));
      if (static_cast<std::size_t>(n) < sizeof buf) break;
      continue;
    }
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) break;
    // End of stream or error: whatever frame was cut off is lost with the connection.
    int fd = client.Fd;
    ProcessFrames(client);
    if (FClients.count(fd) && !FClients[fd]->Waiting) CloseClient(fd);
    return;
  }
  ProcessFrames(client);
}

void TDispatcher::DiscardFrames(TClient& client, const char* data, std::size_t n) {
  std::string error;
  for (;;) {
    if (client.HeaderGot < ztFrameHeaderSize) {
      if (n == 0) return;
      std::size_t take = std::min(n, ztFrameHeaderSize - client.HeaderGot);
      std::memcpy(client.Header + client.HeaderGot, data, take);
      client.HeaderGot += take;
      data += take;
      n -= take;
      if (client.HeaderGot < ztFrameHeaderSize) return;
      client.SkipLeft = (uint64_t{client.Header[4]} << 24) | (uint64_t{client.Header[5]} << 16) |
                        (uint64_t{client.Header[6]} << 8) | uint64_t{client.Header[7]};
    }
    std::size_t skip = static_cast<std::size_t>(std::min<uint64_t>(client.SkipLeft, n));
    client.SkipLeft -= skip;
    data += skip;
    n -= skip;
    if (client.SkipLeft > 0) return;
    ++FRefusedFrames;
    client.HeaderGot = 0;
    if (!WriteReplyNow(client.Fd, 0, error)) {
      CloseClient(client.Fd);
      return;
    }
  }
}

void TDispatcher::DropIdleClients() {
  const auto now = std::chrono::steady_clock::now();
  const auto limit = std::chrono::milliseconds(FOptions.IdleTimeoutMs);
  std::vector<int> idle;
  for (auto& [fd, client] : FClients) {
    // Waiting for room is this side's doing, not the peer's; a peer between frames is fine.
    bool midFrame = client->Decoder.Buffered() > 0 || client->HeaderGot > 0 || client->SkipLeft > 0;
    bool silent = client->Tcp && !client->EverSent;
    if (!client->Waiting && (midFrame || silent) && now - client->LastData > limit) idle.push_back(fd);
  }
  for (int fd : idle) {
    if (FOptions.Verbose) Log("a peer that stalled was let go");
    CloseClient(fd);
  }
}

void TDispatcher::ProcessFrames(TClient& client) {
  uint32_t tag = 0;
  std::string_view payload;
  std::string error;
  auto pause = [&] {
    if (!client.Waiting) {
      client.Waiting = true;
      epoll_event ev{};
      ev.events = 0;
      ev.data.fd = client.Fd;
      epoll_ctl(FEpoll, EPOLL_CTL_MOD, client.Fd, &ev);
    }
  };
  while (client.Decoder.Next(tag, payload)) {
    uint32_t reply = 0;
    bool malformed = false;
    if (tag == ztBatchTag) {
      TZTBatchReader reader(payload, client.BatchOffset);
      uint32_t recordTag = 0;
      std::string_view record;
      TZTBatchReader::TStep step;
      while ((step = reader.Next(recordTag, record)) == TZTBatchReader::TStep::Record) {
        TResult result = HandleFrame(recordTag, record);
        if (result == TResult::Wait) {
          // Taken up again at this record when there is room.
          client.BatchOffset = reader.Offset() - ztFrameHeaderSize - record.size();
          pause();
          return;
        }
        if (result == TResult::Taken) ++client.BatchTaken;
      }
      malformed = step == TZTBatchReader::TStep::Malformed;
      if (malformed && FOptions.Verbose) Log(reader.Error());
      reply = client.BatchTaken;
      client.BatchOffset = 0;
      client.BatchTaken = 0;
    } else {
      TResult result = HandleFrame(tag, payload);
      if (result == TResult::Wait) {
        pause();
        return;
      }
      reply = result == TResult::Taken ? 1 : 0;
    }
    client.Decoder.Pop();
    // Never waits: a client that sends without reading its answers is dropped, not waited for.
    if (!WriteReplyNow(client.Fd, reply, error) || malformed) {
      CloseClient(client.Fd);
      return;
    }
  }
  if (client.Decoder.Failed()) {
    WriteReplyNow(client.Fd, 0, error);
    CloseClient(client.Fd);
  }
}

void TDispatcher::RetryWaiting() {
  std::vector<int> waiting;
  for (auto& [fd, client] : FClients)
    if (client->Waiting) waiting.push_back(fd);
  for (int fd : waiting) {
    auto it = FClients.find(fd);
    if (it == FClients.end()) continue;
    TClient& client = *it->second;
    client.Waiting = false;
    client.LastData = std::chrono::steady_clock::now();
    ProcessFrames(client);
    if (FClients.count(fd) && !client.Waiting) {
      epoll_event ev{};
      ev.events = EPOLLIN | EPOLLRDHUP;
      ev.data.fd = fd;
      epoll_ctl(FEpoll, EPOLL_CTL_MOD, fd, &ev);
      // Bytes that arrived meanwhile are announced again by the level-triggered poll.
    }
  }
}

TDispatcher::TResult TDispatcher::HandleFrame(uint32_t tag, std::string_view payload) {
  std::string_view packet;
  if (tag == ztPacketTag) {
    packet = payload;
  } else if (tag == ztCompressedPacketTag) {
    try {
      ZlibInflateInto(payload, FPacket);
    } catch (const std::exception&) {
      return TResult::Refused;
    }
    packet = FPacket;
  } else {
    return TResult::Refused;
  }
  TZentrailPacketView view;
  try {
    ParseTransportPacket(packet, view);
  } catch (const std::exception&) {
    return TResult::Refused;
  }
  if (view.MsgType == ztmOpenRoute) return OpenRoute(view);
  if (view.MsgType == ztmCloseRoute) {
    CloseRoute(std::string(view.RouteKey));
    return TResult::Taken;
  }

  // A message on a route that this dispatcher never heard of (it was restarted, say) goes to the
  // viewer rather than nowhere.
  const std::vector<TSink*>* sinks = &FViewerOnly;
  if (view.RouteKey == FLastRouteKey && FLastRoute) {
    sinks = FLastRoute;
  } else if (auto route = FRoutes.find(view.RouteKey); route != FRoutes.end()) {
    // Messages come in runs of one route; the next one is found without a search.
    sinks = &route->second;
    FLastRouteKey.assign(view.RouteKey);
    FLastRoute = sinks;
  }
  for (TSink* sink : *sinks)
    if (!sink->HasRoom(packet.size())) return TResult::Wait;
  bool all = true;
  for (TSink* sink : *sinks) {
    TSink::TPush pushed = sink->Push(packet);
    if (pushed != TSink::TPush::Taken) all = false;
  }
  return all ? TResult::Taken : TResult::Refused;
}

TDispatcher::TResult TDispatcher::OpenRoute(const TZentrailPacketView& view) {
  std::vector<TSink*> sinks = SinksFor(std::string(view.MsgText));
  if (sinks.empty()) return TResult::Refused;
  FLastRoute = nullptr;
  FRoutes[std::string(view.RouteKey)] = std::move(sinks);
  return TResult::Taken;
}

void TDispatcher::CloseRoute(const std::string& routeKey) {
  auto route = FRoutes.find(routeKey);
  if (route == FRoutes.end()) return;
  FLastRoute = nullptr;
  std::vector<TSink*> sinks = std::move(route->second);
  FRoutes.erase(route);
  // A log file that no route names any more is closed, so that a long-running dispatcher does
  // not keep every file it ever wrote open; the next route that names it opens it again.
  for (TSink* sink : sinks) {
    if (!dynamic_cast<TFileSink*>(sink)) continue;
    bool used = false;
    for (auto& [key, others] : FRoutes)
      used = used || std::find(others.begin(), others.end(), sink) != others.end();
    if (used) continue;
    for (auto it = FSinks.begin(); it != FSinks.end(); ++it)
      if (it->second.get() == sink) {
        sink->Stop(0);
        FSinks.erase(it);
        break;
      }
  }
}

std::vector<TSink*> TDispatcher::SinksFor(const std::string& destinationText, int depth) {
  std::vector<TSink*> sinks;
  auto add = [&](TSink* s) {
    if (std::find(sinks.begin(), sinks.end(), s) == sinks.end()) sinks.push_back(s);
  };
  std::string text = destinationText;
  // Each round takes the first entry of each kind; further ones come back in Additional.
  for (int round = 0; round < 64 && !text.empty(); ++round) {
    TZentrailDestination destination;
    try {
      destination.SetAsString(text);
    } catch (const std::exception& e) {
      Log(std::string("route refused: ") + e.what());
      return {};
    }
    if (destination.Viewer().Active()) add(FViewer);
    const TLogFileDestination& file = destination.LogFile();
    if (file.Active() && !file.FileName().empty()) {
      TFileOptions o;
      std::string folder = file.FilePath();
      if (!folder.empty() && folder.back() != '/') folder += '/';
      o.Path = folder + file.FileName();
      o.MaxSize = file.MaxSize();
      o.MaxParts = file.MaxParts();
      o.LogByDate = file.LogByDate();
      o.LogByDateFormat = file.LogByDateFormat();
      o.Compressed = file.Compressed();
      // One writer per file, whoever names it.
      std::string key = "File:" + o.Path;
      auto& sink = FSinks[key];
      if (!sink) sink = std::make_unique<TFileSink>(o);
      add(sink.get());
    }
    const TTcpDestination& tcp = destination.TCP();
    if (tcp.Active() && !tcp.Host().empty() && tcp.Port() > 0 && tcp.Port() < 65536) {
      std::string key = "TCP:" + tcp.Host() + ":" + std::to_string(tcp.Port()) + ":" + (tcp.Compressed() ? "z:" : ":") +
                        tcp.RemoteDestinationString();
      auto& sink = FSinks[key];
      if (!sink)
        sink = std::make_unique<TTcpSink>(FWakeFd, tcp.Host(), static_cast<uint16_t>(tcp.Port()),
                                          tcp.RemoteDestinationString(), tcp.Compressed());
      add(sink.get());
    }
    const TUdpDestination& udp = destination.UDP();
    if (udp.Active() && !udp.Host().empty() && udp.Port() > 0 && udp.Port() < 65536) {
      std::string key = "UDP:" + udp.Host() + ":" + std::to_string(udp.Port()) + ":" + (udp.Compressed() ? "z:" : ":") +
                        udp.RemoteDestinationString();
      auto& sink = FSinks[key];
      if (!sink)
        sink = std::make_unique<TUdpSink>(FWakeFd, udp.Host(), static_cast<uint16_t>(udp.Port()),
                                          udp.RemoteDestinationString(), udp.Compressed());
      add(sink.get());
    }
    const THttpDestination& http = destination.HTTP();
    if (http.Active() && !http.URL().empty()) {
      THttpOptions o;
      o.URL = http.URL();
      if (!http.Alias().empty()) o.Alias = http.Alias();
      o.ProxyServer = http.ProxyServer();
      o.ProxyPort = http.ProxyPort();
      o.ProxyUsername = http.ProxyUsername();
      o.ProxyPassword = http.ProxyPassword();
      std::string key = "HTTP:" + o.URL + "\n" + o.Alias + "\n" + o.ProxyServer + ":" + std::to_string(o.ProxyPort) +
                        "\n" + o.ProxyUsername;
      auto& sink = FSinks[key];
      if (!sink) sink = std::make_unique<THttpSink>(FWakeFd, o);
      add(sink.get());
    }
    if (destination.Alias().Active()) {
      // A named destination of this machine: its text stands in the registry file, under
      // [Software\Orvan\Zentrail\5.0\Aliases]. An alias may name others, but not endlessly.
      const std::string& name = destination.Alias().Name();
      std::string aliased;
      if (depth >= 8) {
        Log("route refused: alias " + name + " leads through more than 8 aliases");
        return {};
      }
      if (name.empty() || !ReadRegistryString(std::string(ztRegistryKeyPath) + "\\Aliases", name, aliased) ||
          aliased.empty()) {
        Log("route refused: no alias " + name + " in " + RegistryFilePath());
        return {};
      }
      std::vector<TSink*> named = SinksFor(aliased, depth + 1);
      if (named.empty()) return {};
      for (TSink* s : named) add(s);
    }
    text = destination.Additional();
  }
  return sinks;
}

bool TDispatcher::SocketFileGone() const {
  if (FSocketInode == 0) return false;  // the service manager's socket is its own business
  struct stat st {};
  return stat(FSocketPath.c_str(), &st) != 0 || st.st_ino != FSocketInode;
}

void TDispatcher::Shutdown() {
  if (FUnixListen >= 0) {
    close(FUnixListen);
    FUnixListen = -1;
    // Only remove the socket file if it is still ours, not one a newer dispatcher made.
    struct stat st {};
    if (stat(FSocketPath.c_str(), &st) == 0 && st.st_ino == FSocketInode) unlink(FSocketPath.c_str());
  }
  if (FTcpListen >= 0) {
    close(FTcpListen);
    FTcpListen = -1;
    if (!FPortFile.empty()) unlink(FPortFile.c_str());
  }
  if (FUdpListen >= 0) {
    close(FUdpListen);
    FUdpListen = -1;
    if (!FUdpPortFile.empty()) unlink(FUdpPortFile.c_str());
  }
  if (FRefusedFrames > 0)
    Log(std::to_string(FRefusedFrames) + " frames were refused from peers outside the allow list");
  std::vector<int> fds;
  for (auto& [fd, c] : FClients) fds.push_back(fd);
  for (int fd : fds) CloseClient(fd);
  // Queues get a little time to empty into a live viewer or remote dispatcher; files are closed
  // and synced.
  for (auto& [key, sink] : FSinks) sink->Stop(2000);
}

}  // namespace zentrail
