#include "Dispatcher.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/file.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>

#include "LogRecord.h"
#include "ZTChannel.h"
#include "ZTDateTime.h"
#include "Zlib.h"
#include "ZentrailDestination.h"

namespace zentrail {

namespace {

int32_t LocalDay(struct tm& local) {
  // The calendar is asked once a second at most: localtime may look at the zone file each time.
  thread_local time_t lastSecond = -1;
  thread_local struct tm lastLocal {};
  time_t now = time(nullptr);
  if (now != lastSecond) {
    localtime_r(&now, &lastLocal);
    lastSecond = now;
  }
  local = lastLocal;
  return EncodeDayNumber(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
}

void Wake(int fd) {
  uint64_t one = 1;
  ssize_t r = write(fd, &one, sizeof one);
  (void)r;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Queued destinations

TQueuedSink::TQueuedSink(int wakeFd) : FWakeFd(wakeFd) {}

TQueuedSink::~TQueuedSink() { Stop(0); }

void TQueuedSink::Start() { FThread = std::thread([this] { Run(); }); }

TSink::TPush TQueuedSink::Push(const TPacket& packet, const TZentrailPacketView&) {
  {
    std::lock_guard lock(FLock);
    // An empty queue takes any packet, so that a single large one cannot wait forever.
    if (FBytes > 0 && FBytes + packet->size() > ztSinkQueueLimit) {
      FSomeoneWaits.store(true);
      return TPush::Full;
    }
    FQueue.push_back(packet);
    FBytes += packet->size();
  }
  FCv.notify_one();
  return TPush::Taken;
}

bool TQueuedSink::HasRoom(std::size_t bytes) const {
  std::lock_guard lock(FLock);
  bool room = FBytes == 0 || FBytes + bytes <= ztSinkQueueLimit;
  if (!room) const_cast<std::atomic<bool>&>(FSomeoneWaits).store(true);
  return room;
}

std::size_t TQueuedSink::QueuedBytes() const {
  std::lock_guard lock(FLock);
  return FBytes;
}

void TQueuedSink::Run() {
  for (;;) {
    TPacket packet;
    {
      std::unique_lock lock(FLock);
      FCv.wait(lock, [&] { return !FQueue.empty() || FStopping.load(); });
      if (FQueue.empty() || FAbandon.load()) break;
      packet = FQueue.front();
    }
    Deliver(*packet);
    {
      std::lock_guard lock(FLock);
      FQueue.pop_front();
      FBytes -= packet->size();
    }
    if (FSomeoneWaits.exchange(false)) Wake(FWakeFd);
  }
  Finish();
  FFinished.store(true);
}

void TQueuedSink::Stop(int waitMs) {
  if (!FThread.joinable()) return;
  FStopping.store(true);
  FCv.notify_all();
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(waitMs);
  while (std::chrono::steady_clock::now() < deadline && QueuedBytes() > 0)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  // What is left after the wait is given up, and a delivery that hangs on its peer is cut off.
  FAbandon.store(true);
  FCv.notify_all();
  // Cut off again until the thread is out: it may have opened a new connection meanwhile.
  while (!FFinished.load()) {
    Interrupt();
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  FThread.join();
}

TViewerSink::TViewerSink(int wakeFd, std::string socketPath) : TQueuedSink(wakeFd), FPath(std::move(socketPath)) {
  Start();
}

TViewerSink::~TViewerSink() { Stop(0); }

void TViewerSink::Deliver(const std::string& packet) {
  std::string error;
  for (int attempt = 0; attempt < 2 && !Abandoned(); ++attempt) {
    if (FFd < 0) {
      FFd = ConnectUnixSocket(FPath, error);
      if (FFd < 0) return;  // no viewer runs: the message is dropped
    }
    int result = SendFrameAndWaitReply(FFd, ztPacketTag, packet, error);
    if (result >= 0) return;
    // The viewer went away (or a new one replaced it): one more try on a fresh connection.
    close(FFd.exchange(-1));
  }
}

void TViewerSink::Interrupt() {
  int fd = FFd.load();
  if (fd >= 0) shutdown(fd, SHUT_RDWR);
}

void TViewerSink::Finish() {
  int fd = FFd.exchange(-1);
  if (fd >= 0) close(fd);
}

TTcpSink::TTcpSink(int wakeFd, std::string host, uint16_t port, std::string remoteDestination, bool compressed)
    : TQueuedSink(wakeFd),
      FHost(std::move(host)),
      FPort(port),
      FRemote(std::move(remoteDestination)),
      FRouteID(TZentrailConnection::NewDispatchID()),
      FCompressed(compressed) {
  Start();
}

TTcpSink::~TTcpSink() { Stop(0); }

bool TTcpSink::EnsureConnected() {
  if (FFd >= 0) return true;
  auto now = std::chrono::steady_clock::now();
  if (now < FRetryAfter) return false;
  std::string error;
  FFd = ConnectTcp(FHost, FPort, 3000, error);
  if (FFd < 0) {
    // While the remote side is down, messages are dropped without a connect attempt each.
    FRetryAfter = now + std::chrono::seconds(2);
    return false;
  }
  TZentrailMessage open;
  open.MsgType = ztmOpenRoute;
  open.RouteKey = FRouteID;
  open.MsgText = FRemote.empty() ? "Viewer" : FRemote;
  if (SendFrameAndWaitReply(FFd, ztPacketTag, open.GetAsTransportPacket(), error) != 1) {
    close(FFd.exchange(-1));
    FRetryAfter = now + std::chrono::seconds(2);
    return false;
  }
  return true;
}

void TTcpSink::Deliver(const std::string& packet) {
  TZentrailMessage message;
  try {
    message.SetAsTransportPacket(packet);
  } catch (const std::exception&) {
    return;
  }
  message.RouteKey = FRouteID;
  std::string payload = message.GetAsTransportPacket();
  uint32_t tag = ztPacketTag;
  std::string compressed;
  if (FCompressed && FDeflater.Compress(payload, compressed)) {
    payload.swap(compressed);
    tag = ztCompressedPacketTag;
  }
  for (int attempt = 0; attempt < 2 && !Abandoned(); ++attempt) {
    if (!EnsureConnected()) return;
    std::string error;
    if (SendFrameAndWaitReply(FFd, tag, payload, error) >= 0) return;
    close(FFd.exchange(-1));
  }
}

void TTcpSink::Interrupt() {
  int fd = FFd.load();
  if (fd >= 0) shutdown(fd, SHUT_RDWR);
}

void TTcpSink::Finish() {
  if (FFd < 0) return;
  TZentrailMessage close92;
  close92.MsgType = ztmCloseRoute;
  close92.RouteKey = FRouteID;
  std::string error;
  if (!Abandoned()) SendFrameAndWaitReply(FFd, ztPacketTag, close92.GetAsTransportPacket(), error);
  close(FFd.exchange(-1));
}

// ---------------------------------------------------------------------------------------------
// Files

std::string PartFileName(const std::string& path, int n) {
  auto slash = path.rfind('/');
  auto dot = path.rfind('.');
  std::string suffix = "." + std::to_string(n);
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return path + suffix;
  return path.substr(0, dot) + suffix + path.substr(dot);
}

std::string DatedFileName(const std::string& path, const std::string& format, int32_t, const struct tm& now) {
  std::string stamp;
  for (std::size_t i = 0; i < format.size();) {
    auto match = [&](const char* token) {
      std::size_t n = std::strlen(token);
      if (i + n > format.size()) return false;
      for (std::size_t j = 0; j < n; ++j)
        if (std::tolower(static_cast<unsigned char>(format[i + j])) != token[j]) return false;
      return true;
    };
    char buf[16];
    if (match("yyyy")) { std::snprintf(buf, sizeof buf, "%04d", now.tm_year + 1900); i += 4; }
    else if (match("yy")) { std::snprintf(buf, sizeof buf, "%02d", now.tm_year % 100); i += 2; }
    else if (match("mm")) { std::snprintf(buf, sizeof buf, "%02d", now.tm_mon + 1); i += 2; }
    else if (match("dd")) { std::snprintf(buf, sizeof buf, "%02d", now.tm_mday); i += 2; }
    else if (match("hh")) { std::snprintf(buf, sizeof buf, "%02d", now.tm_hour); i += 2; }
    else if (match("nn")) { std::snprintf(buf, sizeof buf, "%02d", now.tm_min); i += 2; }
    else if (match("ss")) { std::snprintf(buf, sizeof buf, "%02d", now.tm_sec); i += 2; }
    else {
      char c = format[i++];
      // A format must not be able to leave the folder.
      buf[0] = (c == '/' || c == '\\') ? '-' : c;
      buf[1] = '\0';
    }
    stamp += buf;
  }
  auto slash = path.rfind('/');
  auto dot = path.rfind('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return path + "-" + stamp;
  return path.substr(0, dot) + "-" + stamp + path.substr(dot);
}

namespace {
void CompressFile(const std::string& path);
}  // namespace

TFileSink::TFileSink(TFileOptions options) : FOptions(std::move(options)) {}

TFileSink::~TFileSink() { Stop(0); }

std::string TFileSink::CurrentName(int32_t day) const {
  if (!FOptions.LogByDate) return FOptions.Path;
  struct tm local {};
  LocalDay(local);
  return DatedFileName(FOptions.Path, FOptions.LogByDateFormat, day, local);
}

bool TFileSink::OpenFor(int32_t day) {
  std::string name = CurrentName(day);
  if (FFd >= 0 && name == FOpenName) return true;
  std::string previous = FOpenName;
  bool wasOpen = FFd >= 0;
  CloseFile();
  // Yesterday's file is complete now.
  if (wasOpen && FOptions.Compressed && previous != name) CompressLater(previous);
  auto slash = name.rfind('/');
  if (slash != std::string::npos && slash > 0) {
    std::error_code ec;
    std::filesystem::create_directories(name.substr(0, slash), ec);
  }
  FFd = open(name.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (FFd < 0) return false;
  struct stat st {};
  FSize = fstat(FFd, &st) == 0 ? st.st_size : 0;
  FOpenName = name;
  FOpenDay = day;
  return true;
}

void TFileSink::CloseFile() {
  if (FFd >= 0) {
    fsync(FFd);
    close(FFd);
  }
  FFd = -1;
}

void TFileSink::CompressLater(std::string path) {
  // Compressing a closed part can take a while; it must not hold up the clients. Finished
  // compressors are joined here, so a long run does not pile them up.
  for (auto it = FCompressors.begin(); it != FCompressors.end();) {
    if (it->Done->load()) {
      it->Thread.join();
      it = FCompressors.erase(it);
    } else {
      ++it;
    }
  }
  auto done = std::make_shared<std::atomic<bool>>(false);
  FCompressors.push_back({std::thread([path, done] {
    CompressFile(path);
    done->store(true);
  }), done});
}

namespace {

void CompressFile(const std::string& path) {
  int in = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (in < 0) return;
  std::string target = path + ".gz";
  gzFile out = gzopen(target.c_str(), "wb");
  bool ok = out != nullptr;
  char buf[65536];
  ssize_t n;
  while (ok && (n = read(in, buf, sizeof buf)) > 0) ok = gzwrite(out, buf, static_cast<unsigned>(n)) == n;
  close(in);
  if (out && gzclose(out) != Z_OK) ok = false;
  if (ok) unlink(path.c_str());
  else unlink(target.c_str());
}

}  // namespace

void TFileSink::Rotate() {
  // Parts are renamed below; a compressor still at work on one must finish first, or it would
  // remove a file that has taken the name of the one it read.
  for (auto& c : FCompressors) c.Thread.join();
  FCompressors.clear();
  std::string current = FOpenName;
  CloseFile();
  std::string gz = FOptions.Compressed ? ".gz" : "";
  int count = 0;
  while (access((PartFileName(current, count + 1)).c_str(), F_OK) == 0 ||
         access((PartFileName(current, count + 1) + gz).c_str(), F_OK) == 0)
    ++count;
  if (FOptions.MaxParts > 0) {
    for (int n = FOptions.MaxParts; n <= count; ++n) {
      unlink(PartFileName(current, n).c_str());
      unlink((PartFileName(current, n) + ".gz").c_str());
    }
    count = std::min(count, FOptions.MaxParts - 1);
  }
  for (int n = count; n >= 1; --n) {
    rename(PartFileName(current, n).c_str(), PartFileName(current, n + 1).c_str());
    rename((PartFileName(current, n) + ".gz").c_str(), (PartFileName(current, n + 1) + ".gz").c_str());
  }
  rename(current.c_str(), PartFileName(current, 1).c_str());
  if (FOptions.Compressed) CompressLater(PartFileName(current, 1));
  FOpenName.clear();
}

TSink::TPush TFileSink::Push(const TPacket& packet, const TZentrailPacketView&) {
  struct tm local {};
  int32_t day = LocalDay(local);
  if (!OpenFor(day)) return TPush::Refused;
  FRecord.clear();
  AppendLogRecordFromPacket(*packet, FRecord);
  if (FOptions.MaxSize > 0 && FSize > 0 && FSize + static_cast<int64_t>(FRecord.size()) > FOptions.MaxSize * 1024) {
    Rotate();
    if (!OpenFor(day)) return TPush::Refused;
  }
  std::size_t done = 0;
  while (done < FRecord.size()) {
    ssize_t n = write(FFd, FRecord.data() + done, FRecord.size() - done);
    if (n > 0) {
      done += static_cast<std::size_t>(n);
      continue;
    }
    if (n < 0 && errno == EINTR) continue;
    // Disk full or file too large: take the partial record back out, so the file stays a
    // sequence of whole records, and refuse the message.
    if (done > 0 && ftruncate(FFd, FSize) != 0) {
      // The file cannot be repaired; start over on the next message.
      CloseFile();
      FOpenName.clear();
    }
    return TPush::Refused;
  }
  FSize += static_cast<int64_t>(FRecord.size());
  return TPush::Taken;
}

void TFileSink::Stop(int) {
  CloseFile();
  for (auto& c : FCompressors) c.Thread.join();
  FCompressors.clear();
}

// ---------------------------------------------------------------------------------------------
// The event loop

struct TDispatcher::TClient {
  int Fd = -1;
  bool Tcp = false;
  bool Waiting = false;  // a frame waits for room in a queue; reading is paused
  TZTFrameDecoder Decoder;
  // A batch that waits for room goes on from here when it is retried.
  std::size_t BatchOffset = 0;
  uint32_t BatchTaken = 0;
};

TDispatcher::TDispatcher(TDispatcherOptions options) : FOptions(std::move(options)) {}

TDispatcher::~TDispatcher() {
  for (auto& [fd, client] : FClients) close(fd);
  for (int fd : {FEpoll, FUnixListen, FTcpListen, FSignalFd, FWakeFd, FLockFd})
    if (fd >= 0) close(fd);
}

void TDispatcher::Log(const std::string& text) const {
  std::fprintf(stderr, "zentrail-dispatcher: %s\n", text.c_str());
}

bool TDispatcher::Setup() {
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
  FUnixListen = ListenUnixSocket(FSocketPath, error);
  if (FUnixListen < 0) {
    Log(error);
    return false;
  }
  fcntl(FUnixListen, F_SETFL, fcntl(FUnixListen, F_GETFL) | O_NONBLOCK);
  struct stat st {};
  if (stat(FSocketPath.c_str(), &st) == 0) FSocketInode = st.st_ino;

  if (FOptions.Tcp) {
    FTcpListen = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    int one = 1;
    setsockopt(FTcpListen, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(static_cast<uint16_t>(FOptions.TcpPort));
    if (inet_pton(AF_INET, FOptions.TcpBind.c_str(), &addr.sin_addr) != 1) {
      Log("not an IPv4 address: " + FOptions.TcpBind);
      return false;
    }
    if (bind(FTcpListen, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 || listen(FTcpListen, SOMAXCONN) != 0) {
      Log("cannot listen on TCP port " + std::to_string(FOptions.TcpPort) + ": " + std::strerror(errno));
      return false;
    }
    socklen_t len = sizeof addr;
    getsockname(FTcpListen, reinterpret_cast<sockaddr*>(&addr), &len);
    std::string folder = GetRuntimeFolder(error);
    FPortFile = folder + "/dispatcher-tcp-port";
    std::string tmp = FPortFile + ".tmp";
    if (FILE* f = std::fopen(tmp.c_str(), "w")) {
      std::fprintf(f, "%d\n", ntohs(addr.sin_port));
      std::fclose(f);
      rename(tmp.c_str(), FPortFile.c_str());
    }
  }

  auto add = [&](int fd) {
    epoll_event ev{};
    ev.events = EPOLLIN;
    ev.data.fd = fd;
    epoll_ctl(FEpoll, EPOLL_CTL_ADD, fd, &ev);
  };
  add(FUnixListen);
  if (FTcpListen >= 0) add(FTcpListen);
  add(FSignalFd);
  add(FWakeFd);

  std::string viewerPath = ViewerSocketPath(error);
  auto viewer = std::make_unique<TViewerSink>(FWakeFd, viewerPath);
  FViewer = viewer.get();
  FSinks["Viewer"] = std::move(viewer);
  return true;
}

int TDispatcher::Run() {
  if (!Setup()) return FAlreadyRunning ? 0 : 1;
  if (FOptions.Verbose) Log("listening on " + FSocketPath);
  bool running = true;
  std::vector<epoll_event> events(64);
  while (running) {
    int n = epoll_wait(FEpoll, events.data(), static_cast<int>(events.size()), -1);
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
      } else if (auto it = FClients.find(fd); it != FClients.end()) {
        ReadClient(*it->second);
      }
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
  std::vector<TSink*> fallback{FViewer};
  auto route = FRoutes.find(std::string(view.RouteKey));
  const std::vector<TSink*>& sinks = route != FRoutes.end() ? route->second : fallback;
  for (TSink* sink : sinks)
    if (!sink->HasRoom(packet.size())) return TResult::Wait;
  auto shared = std::make_shared<const std::string>(packet);
  bool all = true;
  for (TSink* sink : sinks) {
    TSink::TPush pushed = sink->Push(shared, view);
    if (pushed != TSink::TPush::Taken) all = false;
  }
  return all ? TResult::Taken : TResult::Refused;
}

TDispatcher::TResult TDispatcher::OpenRoute(const TZentrailPacketView& view) {
  std::vector<TSink*> sinks = SinksFor(std::string(view.MsgText));
  if (sinks.empty()) return TResult::Refused;
  FRoutes[std::string(view.RouteKey)] = std::move(sinks);
  return TResult::Taken;
}

void TDispatcher::CloseRoute(const std::string& routeKey) {
  auto route = FRoutes.find(routeKey);
  if (route == FRoutes.end()) return;
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

std::vector<TSink*> TDispatcher::SinksFor(const std::string& destinationText) {
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
    if (destination.UDP().Active() || destination.HTTP().Active() || destination.Alias().Active())
      Log("UDP, HTTP and Alias destinations are not served by this dispatcher");
    text = destination.Additional();
  }
  return sinks;
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
  std::vector<int> fds;
  for (auto& [fd, c] : FClients) fds.push_back(fd);
  for (int fd : fds) CloseClient(fd);
  // Queues get a little time to empty into a live viewer or remote dispatcher; files are closed
  // and synced.
  for (auto& [key, sink] : FSinks) sink->Stop(2000);
}

}  // namespace zentrail
