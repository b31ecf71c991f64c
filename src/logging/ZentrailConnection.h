#pragma once
// Connections carry messages from this process to a dispatcher: over the local socket of the
// dispatcher, or over TCP with the same frames. Each logger has its own route on a connection,
// announced with a control message (91) that names its destination and closed with another (92).

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ZentrailMessage.h"

namespace zentrail {

class TZentrailLogger;

enum TZentrailMessageFormat : uint8_t { mfDefault = 0, mfCompressed = 1 };

// Control message types that go to the dispatcher only.
inline constexpr int32_t ztmOpenRoute = 91;
inline constexpr int32_t ztmCloseRoute = 92;

// Compresses packets with one kept zlib stream that is reset between packets; for the small
// packets of a log this is several times faster than a fresh stream per packet. Not thread-safe.
class TZentrailDeflater {
 public:
  TZentrailDeflater();
  ~TZentrailDeflater();
  TZentrailDeflater(const TZentrailDeflater&) = delete;
  TZentrailDeflater& operator=(const TZentrailDeflater&) = delete;
  // Replaces out with the zlib stream of data at the default level; false if zlib fails.
  bool Compress(std::string_view data, std::string& out);

 private:
  void* FStream;
};

// Bounds every transport call that the calling thread makes while it lives, as the time limit of
// one send otherwise does; the asynchronous client's thread sets one per batch, and a shorter one
// for the flush at exit.
class TZentrailSendDeadline {
 public:
  explicit TZentrailSendDeadline(std::chrono::steady_clock::time_point deadline);
  ~TZentrailSendDeadline();
  TZentrailSendDeadline(const TZentrailSendDeadline&) = delete;
  TZentrailSendDeadline& operator=(const TZentrailSendDeadline&) = delete;

 private:
  std::chrono::steady_clock::time_point FOuter;
};

class TZentrailConnection {
 public:
  explicit TZentrailConnection(TZentrailMessageFormat format = mfDefault);
  virtual ~TZentrailConnection();
  TZentrailConnection(const TZentrailConnection&) = delete;
  TZentrailConnection& operator=(const TZentrailConnection&) = delete;

  // Every transport call of a send is bounded by the manager's time limit, counted once from the
  // start of SendZentrailMessage (or of closing routes); a transport asks for what is left.
  static std::chrono::steady_clock::time_point CurrentDeadline();

  // Makes sure a dispatcher can be reached; false when none can.
  virtual bool Connect() { return true; }
  // Delivers one message; the dispatcher's answer (1 taken, 0 refused), 0 on any failure.
  virtual int InternalSend(const TZentrailMessage&) { return 0; }
  virtual void CloseDispatcher() {}

  // The one entry for a logger: keeps the logger's route (dispatchID, dispatchIDDate) up to date
  // with its destination and sends the message on it. Returns the transport's result, 0 when the
  // message could not be delivered. Throws EZentrailInvalidDestination for an invalid destination.
  int SendZentrailMessage(TZentrailLogger& logger, TZentrailMessage& message, std::string& dispatchID,
                          int32_t& dispatchIDDate);

  // Closes the route of a logger that goes away, so that the dispatcher can let go of its
  // destination (a log file is closed when no route names it).
  void ReleaseRoute(const std::string& dispatchID, const std::string& category);

  uint8_t Compression() const { return FCompression; }

  // ---- For the asynchronous client, whose background thread ships batches.
  // Announces the route dispatchID for a destination (its code and text form) unless this
  // connection's dispatcher knows it already; false when no dispatcher can be reached or the
  // announcement is refused.
  bool AnnounceRoute(const std::string& dispatchID, int32_t code, const std::string& destinationText,
                     const std::string& category);
  // Sends a batch payload of records (see AppendBatchRecord); the number of records the
  // dispatcher took, ztBatchPeerLost when a connection that had served before turned out dead (the
  // dispatcher ended or was replaced, and the batch may be tried once more), -1 on another failure.
  virtual int64_t InternalSendBatch(std::string_view batch);
  static constexpr int64_t ztBatchPeerLost = -3;
  // The record payload of a packet in this connection's format, compressed when so set; its tag.
  uint32_t EncodePacket(std::string_view packet, std::string& payload);

  // A new GUID in its registry form without braces, e.g. "0F8FAD5B-D9CB-469F-A165-70867728950E".
  static std::string NewDispatchID();

 protected:
  // Sends the closing message of every announced route; derived classes call this in their
  // destructor while their transport still exists.
  void CloseAllRoutes();
  // After the transport lost its dispatcher: a new one knows none of the routes.
  void ForgetAnnouncedRoutes();
  // The frame tag and payload of a message in this connection's format.
  uint32_t EncodeFrame(const TZentrailMessage& message, std::string& payload);

 private:
  struct TRoute {
    std::string ID;
    std::optional<int32_t> Code;  // destination code of the announced route, none until announced
  };
  TRoute* FindRoute(const std::string& id);
  TRoute& NewRoute(std::string& dispatchID, int32_t& dispatchIDDate);
  void CloseRoute(TRoute& route, const std::string& category);
  void FillControl(TZentrailMessage& control, int32_t type, const std::string& id,
                   const std::string& category);

  std::timed_mutex FMonitor;
  std::vector<TRoute> FDispatchIDs;
  std::atomic<bool> FRoutesLost{false};
  uint8_t FCompression;
  std::mutex FDeflateLock;
  std::unique_ptr<TZentrailDeflater> FDeflater;
};

// The local connection to the dispatcher's socket "<runtime>/dispatcher". Starts the dispatcher
// when none answers. Threads that send at the same time use separate sockets.
class TZentrailCopyDataConnection : public TZentrailConnection {
 public:
  explicit TZentrailCopyDataConnection(TZentrailMessageFormat format = mfDefault);
  ~TZentrailCopyDataConnection() override;

  bool Connect() override;
  int InternalSend(const TZentrailMessage& message) override;
  int64_t InternalSendBatch(std::string_view batch) override;
  // Asks the running dispatcher to finish its work and exit.
  void CloseDispatcher() override;

 private:
  int TakeSocket(bool& reused);
  void ReturnSocket(int fd);
  void DropIdleSockets();

  struct TIdle {
    int Fd;
    std::chrono::steady_clock::time_point Since;
  };
  std::mutex FPoolLock;
  std::vector<TIdle> FIdle;
};

class TZentrailTcpConnection : public TZentrailConnection {
 public:
  explicit TZentrailTcpConnection(std::string host = "localhost", uint16_t port = 3434,
                                  TZentrailMessageFormat format = mfDefault);
  ~TZentrailTcpConnection() override;

  int InternalSend(const TZentrailMessage& message) override;
  int64_t InternalSendBatch(std::string_view batch) override;

  const std::string& Host() const { return FHost; }
  uint16_t Port() const { return FPort; }

 private:
  std::timed_mutex FTcpLock;  // holds a request and its reply together
  int FFd = -1;
  std::string FHost;
  uint16_t FPort;
};

}  // namespace zentrail
