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

// A peer that stops answering holds its destination's worker no longer than this; the message in
// hand is then dropped and the connection made anew for the next one.
constexpr int kViewerAnswerMs = 30000;
constexpr int kRemoteAnswerMs = 10000;

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

TSink::TPush TQueuedSink::Push(std::string_view packet) {
  {
    std::lock_guard lock(FLock);
    // An empty queue takes any packet, so that a single large one cannot wait forever.
    if (FBytes > 0 && FBytes + packet.size() > ztSinkQueueLimit) {
      FSomeoneWaits.store(true);
      return TPush::Full;
    }
    if (FQueue.empty() || FQueue.back().Taken || FQueue.back().Count >= BatchLimit() ||
        FQueue.back().Records.size() + ztFrameHeaderSize + packet.size() > BatchBytes()) {
      FQueue.emplace_back();
      if (!FSpare.empty()) {
        FQueue.back().Records.swap(FSpare.back());
        FSpare.pop_back();
      }
    }
    TChunk& chunk = FQueue.back();
    AppendBatchRecord(chunk.Records, ztPacketTag, packet);
    ++chunk.Count;
    chunk.Bytes += packet.size();
    FBytes += packet.size();
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

void TQueuedSink::DeliverBatch(std::string_view records, std::size_t) {
  TZTBatchReader reader(records);
  uint32_t tag = 0;
  std::string_view packet;
  while (reader.Next(tag, packet) == TZTBatchReader::TStep::Record) Deliver(std::string(packet));
}

void TQueuedSink::Run() {
  for (;;) {
    TChunk* chunk = nullptr;
    {
      std::unique_lock lock(FLock);
      FCv.wait(lock, [&] { return !FQueue.empty() || FStopping.load(); });
      if (FQueue.empty() || FAbandon.load()) break;
      // Whatever queued up meanwhile goes now, never waiting for more. Chunks stay in place while
      // others are added behind them (a deque does not move its elements), and the packets stay
      // counted against the bound until they are delivered.
      chunk = &FQueue.front();
      chunk->Taken = true;
    }
    DeliverBatch(chunk->Records, chunk->Count);
    {
      std::lock_guard lock(FLock);
      FBytes -= chunk->Bytes;
      chunk->Records.clear();
      // A chunk of a flood once in a while must not be kept at its largest for the rest of the run.
      if (FSpare.size() < 4 && chunk->Records.capacity() <= 2 * BatchBytes()) FSpare.push_back(std::move(chunk->Records));
      FQueue.pop_front();
    }
    if (FSomeoneWaits.exchange(false)) Wake(FWakeFd);
  }
  Finish();
  FFinished.store(true);
}

bool TQueuedSink::PauseUnlessAbandoned(std::chrono::milliseconds pause) {
  std::unique_lock lock(FLock);
  FCv.wait_for(lock, pause, [&] { return FAbandon.load(); });
  return !FAbandon.load();
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

void TViewerSink::Deliver(const std::string& packet) { Forward(ztPacketTag, packet); }

void TViewerSink::DeliverBatch(std::string_view records, std::size_t count) {
  if (count == 1) {
    // A lone message goes as the frame it came in.
    TZTBatchReader reader(records);
    uint32_t tag = 0;
    std::string_view packet;
    if (reader.Next(tag, packet) == TZTBatchReader::TStep::Record) Forward(ztPacketTag, packet);
    return;
  }
  Forward(ztBatchTag, records);
}

void TViewerSink::Forward(uint32_t tag, std::string_view payload) {
  std::string error;
  for (int attempt = 0; attempt < 2 && !Abandoned(); ++attempt) {
    if (FFd < 0) {
      FFd = ConnectUnixSocket(FPath, error);
      if (FFd < 0) return;  // no viewer runs: the messages are dropped
    }
    // A batch answers how many records the viewer took; what it refused it refused for good
    // (messages blocked, a packet it cannot read), as with a single frame answered 0.
    int64_t result = tag == ztBatchTag ? SendBatchAndWaitCount(FFd, payload, DeadlineIn(kViewerAnswerMs), error)
                                       : SendFrameAndWaitReply(FFd, tag, payload, DeadlineIn(kViewerAnswerMs), error);
    if (result >= 0) return;
    if (result == ztTimedOut) {
      close(FFd.exchange(-1));
      return;
    }
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
  if (SendFrameAndWaitReply(FFd, ztPacketTag, open.GetAsTransportPacket(), DeadlineIn(kRemoteAnswerMs), error) != 1) {
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
    int result = SendFrameAndWaitReply(FFd, tag, payload, DeadlineIn(kRemoteAnswerMs), error);
    if (result >= 0) return;
    close(FFd.exchange(-1));
    if (result == ztTimedOut) return;
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
  if (!Abandoned()) SendFrameAndWaitReply(FFd, ztPacketTag, close92.GetAsTransportPacket(), DeadlineIn(kRemoteAnswerMs), error);
  close(FFd.exchange(-1));
}

// ---------------------------------------------------------------------------------------------
// Files

// Names are built piece by piece: GCC 12 warns falsely (-Wrestrict) about "." + std::string.
std::string PartFileName(const std::string& path, int n) {
  auto slash = path.rfind('/');
  auto dot = path.rfind('.');
  std::string suffix(1, '.');
  suffix += std::to_string(n);
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return path + suffix;
  std::string name(path, 0, dot);
  name += suffix;
  name.append(path, dot, std::string::npos);
  return name;
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
  std::string name(path, 0, dot);
  name += '-';
  name += stamp;
  name.append(path, dot, std::string::npos);
  return name;
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

TSink::TPush TFileSink::Push(std::string_view packet) {
  struct tm local {};
  int32_t day = LocalDay(local);
  if (!OpenFor(day)) return TPush::Refused;
  FRecord.clear();
  AppendLogRecordFromPacket(packet, FRecord);
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

}  // namespace zentrail
