#pragma once
// The dispatcher: takes frames from logging clients on the local socket (and on TCP when asked),
// keeps their routes and hands each message to the destinations of its route.

#include <sys/socket.h>
#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "TransportPacket.h"
#include "ZentrailConnection.h"

namespace zentrail {

// Bound on what one queued destination holds; beyond it clients wait for their answer.
inline constexpr std::size_t ztSinkQueueLimit = 64u * 1024 * 1024;

class TSink {
 public:
  enum class TPush { Taken, Full, Refused };
  virtual ~TSink() = default;
  // Main thread: hands one packet over (the sink keeps a copy if it needs one). Full means "try
  // again when told".
  virtual TPush Push(std::string_view packet) = 0;
  virtual bool HasRoom(std::size_t) const { return true; }
  // Finishes the work already taken, within the time given, and stops.
  virtual void Stop(int waitMs) { (void)waitMs; }
};

// A destination served by a thread of its own from a bounded queue. The queue holds packets as the
// records of batch frames, in chunks: what arrives while the thread delivers goes into the open
// chunk, and the thread takes a whole chunk at a time, so that a packet is copied once and a
// flood costs no allocation per message.
class TQueuedSink : public TSink {
 public:
  explicit TQueuedSink(int wakeFd);
  ~TQueuedSink() override;
  TPush Push(std::string_view packet) override;
  bool HasRoom(std::size_t bytes) const override;
  void Stop(int waitMs) override;
  std::size_t QueuedBytes() const;

 protected:
  void Start();
  // Worker thread: deliver one packet; whatever happens, the packet is done afterwards.
  virtual void Deliver(const std::string& packet) = 0;
  // A destination that gains from batches takes up to BatchLimit() packets at once, as many as are
  // queued at that moment; by default one at a time through Deliver.
  virtual std::size_t BatchLimit() const { return 1; }
  // A batch is bounded in bytes too (records with their headers), so that one request never
  // carries the whole queue.
  virtual std::size_t BatchBytes() const { return 4u * 1024 * 1024; }
  // records: count packets as the payload of a batch frame (each a tag, a length and the packet).
  virtual void DeliverBatch(std::string_view records, std::size_t count);
  // Worker thread: waits for the time given, cut short when the destination is given up; false
  // then.
  bool PauseUnlessAbandoned(std::chrono::milliseconds pause);
  virtual void Finish() {}
  // Another thread: cut off a delivery that waits on its peer.
  virtual void Interrupt() {}
  bool Abandoned() const { return FAbandon.load(); }

 private:
  void Run();
  int FWakeFd;
  mutable std::mutex FLock;
  std::condition_variable FCv;
  struct TChunk {
    std::string Records;
    std::size_t Count = 0;
    std::size_t Bytes = 0;  // of the packets alone, as the bound counts them
    bool Taken = false;     // being delivered: nothing more goes in
  };
  std::deque<TChunk> FQueue;
  std::vector<std::string> FSpare;  // emptied chunks, kept for their capacity
  std::size_t FBytes = 0;
  std::atomic<bool> FStopping{false};
  std::atomic<bool> FAbandon{false};
  std::atomic<bool> FSomeoneWaits{false};
  std::atomic<bool> FFinished{false};
  std::thread FThread;
};

// Forwards to the viewer's socket; drops messages while no viewer runs and finds one that
// starts later. What has queued up while the viewer answered the last request goes in one batch
// frame, never waiting for more: a lone message leaves at once, a flood in large batches.
class TViewerSink : public TQueuedSink {
 public:
  TViewerSink(int wakeFd, std::string socketPath);
  ~TViewerSink() override;
  static constexpr std::size_t kBatchRecords = 4096;
  static constexpr std::size_t kBatchBytes = 1024u * 1024;

 protected:
  void Deliver(const std::string& packet) override;
  std::size_t BatchLimit() const override { return kBatchRecords; }
  std::size_t BatchBytes() const override { return kBatchBytes; }
  void DeliverBatch(std::string_view records, std::size_t count) override;
  void Finish() override;
  void Interrupt() override;

 private:
  // Sends one frame (a packet or a batch) on the connection, once more on a fresh one when the
  // viewer went away or was replaced.
  void Forward(uint32_t tag, std::string_view payload);
  std::string FPath;
  std::atomic<int> FFd{-1};
};

// Forwards to a remote dispatcher over TCP, on a route of its own.
class TTcpSink : public TQueuedSink {
 public:
  TTcpSink(int wakeFd, std::string host, uint16_t port, std::string remoteDestination, bool compressed);
  ~TTcpSink() override;

 protected:
  void Deliver(const std::string& packet) override;
  void Finish() override;
  void Interrupt() override;

 private:
  bool EnsureConnected();
  std::string FHost;
  uint16_t FPort;
  std::string FRemote;
  std::string FRouteID;
  bool FCompressed;
  TZentrailDeflater FDeflater;
  std::atomic<int> FFd{-1};
  std::chrono::steady_clock::time_point FRetryAfter{};
};

struct TFileOptions {
  std::string Path;  // folder + file name
  int64_t MaxSize = 0;  // KiB; 0: no limit
  int32_t MaxParts = 0;  // rotated parts kept; 0: all
  bool LogByDate = false;
  std::string LogByDateFormat = "yyyymmdd";
  bool Compressed = false;  // rotated parts are gzip-compressed
};

// Appends log records before the client is answered, so that an answered message is in the file
// even if the dispatcher is killed right after. A failed write answers 0 and leaves the file as
// it was before that record.
class TFileSink : public TSink {
 public:
  explicit TFileSink(TFileOptions options);
  ~TFileSink() override;
  TPush Push(std::string_view packet) override;
  void Stop(int waitMs) override;
  const TFileOptions& Options() const { return FOptions; }

 private:
  std::string CurrentName(int32_t day) const;
  bool OpenFor(int32_t day);
  void Rotate();
  void CloseFile();
  void CompressLater(std::string path);

  TFileOptions FOptions;
  int FFd = -1;
  std::string FOpenName;
  int32_t FOpenDay = -1;
  int64_t FSize = 0;
  std::string FRecord;
  struct TCompressor {
    std::thread Thread;
    std::shared_ptr<std::atomic<bool>> Done;
  };
  std::vector<TCompressor> FCompressors;
};

// Names the dated file: yyyy, yy, mm, dd, hh, nn, ss in the format are replaced; the result goes
// before the extension of the file name, after a "-".
std::string DatedFileName(const std::string& path, const std::string& format, int32_t day, const struct tm& now);
// The name of rotated part n of path: "app.ztl" -> "app.3.ztl".
std::string PartFileName(const std::string& path, int n);

// A network of an allow list: an address and how many of its leading bits a peer must share.
struct TNetworkRange {
  int Family = 0;  // AF_INET or AF_INET6
  unsigned char Address[16] = {};
  int Bits = 0;
};
// "10.0.0.0/8", "192.168.1.7" (one host), "::1", "fd00::/8"; false for anything else.
bool ParseNetworkRange(const std::string& text, TNetworkRange& range);
// An IPv4 peer seen through an IPv6 socket (::ffff:a.b.c.d) is judged by its IPv4 address.
bool AddressAllowed(const std::vector<TNetworkRange>& allow, const sockaddr* address);
bool IsLoopbackAddress(const std::string& text);
std::string AddressText(const sockaddr* address);

struct TDispatcherOptions {
  bool Tcp = false;
  bool Udp = false;
  // The address the TCP and UDP listeners bind to. Another than a loopback address needs an allow
  // list, so that a dispatcher is never opened to a network by accident.
  std::string Listen = "127.0.0.1";
  int TcpPort = 3434;  // 0: any free port, written to <runtime>/dispatcher-tcp-port
  int UdpPort = 3435;  // 0: any free port, written to <runtime>/dispatcher-udp-port
  // Peers whose frames are taken over TCP and UDP; empty means the loopback networks only.
  std::vector<TNetworkRange> Allow;
  // A peer that stops in the middle of a frame, or connects over TCP and sends nothing, is let go
  // after this long.
  int IdleTimeoutMs = 30000;
  bool Verbose = false;
};

class TDispatcher {
 public:
  explicit TDispatcher(TDispatcherOptions options);
  ~TDispatcher();
  // Runs until SIGTERM or SIGINT; the exit status.
  int Run();

 private:
  struct TClient;
  enum class TResult { Refused, Taken, Wait };
  bool Setup();
  bool OpenNetworkListener(int type, int port, const char* portFileName, int& fd, std::string& portFile);
  void Accept(int listenFd, bool tcp);
  void ReadClient(TClient& client);
  void DiscardFrames(TClient& client, const char* data, std::size_t n);
  void ReadDatagrams();
  void DropIdleClients();
  void ProcessFrames(TClient& client);
  TResult HandleFrame(uint32_t tag, std::string_view payload);
  TResult OpenRoute(const TZentrailPacketView& view);
  void CloseRoute(const std::string& routeKey);
  std::vector<TSink*> SinksFor(const std::string& destinationText, int depth = 0);
  void CloseClient(int fd);
  void RetryWaiting();
  void Shutdown();
  bool SocketFileGone() const;
  void Log(const std::string& text) const;

  TDispatcherOptions FOptions;
  int FEpoll = -1, FUnixListen = -1, FTcpListen = -1, FUdpListen = -1, FSignalFd = -1, FWakeFd = -1, FLockFd = -1;
  bool FAlreadyRunning = false;
  std::string FSocketPath, FPortFile, FUdpPortFile;
  uint64_t FRefusedFrames = 0;  // from peers outside the allow list
  ino_t FSocketInode = 0;
  std::map<int, std::unique_ptr<TClient>> FClients;
  std::map<std::string, std::vector<TSink*>, std::less<>> FRoutes;
  std::string FLastRouteKey;                        // the route of the last message and its sinks
  const std::vector<TSink*>* FLastRoute = nullptr;  // null when routes changed since
  std::vector<TSink*> FViewerOnly;
  std::map<std::string, std::unique_ptr<TSink>> FSinks;  // by destination entry text
  TSink* FViewer = nullptr;
  std::string FPacket;  // inflated packet of the frame being handled
};

}  // namespace zentrail
