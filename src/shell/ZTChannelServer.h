#pragma once
// The viewer's end of the local message channel. Frames are read on the thread that owns the views,
// straight from the raw sockets through QSocketNotifier: each frame is handed to the target, and the
// reply goes back only when the target has returned, so a sender never runs ahead of the viewer.
// A batch frame's records go to the target one by one inside one bracket and are answered with
// their count.
// Clients are served in turn; a client that misbehaves loses its own connection and nothing else.

#include <QObject>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

class QSocketNotifier;

namespace zentrail {

class TZTFrameDecoder;

// What the channel delivers frames to. The reply is 1 (taken) or 0 (refused).
class IZTCopyDataTarget {
 public:
  virtual ~IZTCopyDataTarget() = default;
  // Answers the frame. May throw; the server then answers 0 and hands the exception to
  // CopyDataFailed. Throwing EZTChannelAbort also closes the sender's connection.
  virtual uint32_t WMCopyData(uint32_t tag, std::string_view data) = 0;
  // The text of an exception that a frame raised, after its reply 0 has been sent.
  virtual void CopyDataFailed(const std::string& text) = 0;
  // Around the records of one batch frame, which the target takes as one update.
  virtual void BeginCopyDataBatch() {}
  virtual void EndCopyDataBatch() {}
};

// Raised by a target for a frame that breaks the channel's limits (an inflated size above the
// bound): the sender gets 0 and its connection is closed.
class EZTChannelAbort : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class TZTChannelServer : public QObject {
  Q_OBJECT
 public:
  explicit TZTChannelServer(IZTCopyDataTarget& target, QObject* parent = nullptr);
  ~TZTChannelServer() override;

  // Listens on the socket path (normally <runtime>/viewer). False with a readable error when the
  // runtime folder is refused or another viewer already listens there.
  bool Listen(const std::string& path, std::string& error);
  void Close();
  bool IsListening() const { return FListenFd >= 0; }
  const std::string& SocketPath() const { return FPath; }

  // While held, no client is accepted and no frame read: senders wait for their replies until the
  // hold ends. A log being read holds the channel, so that no live message comes between its records.
  void Hold(bool held);
  bool Held() const { return FHeld; }

  int ClientCount() const;
  // Frames answered since Listen, for tests and diagnostics.
  uint64_t FramesServed() const { return FFramesServed; }

 private:
  struct Client;

  void AcceptClients();
  void ServeClient(Client* client);
  // The records of a batch frame, each as if it had come alone; the number taken. abort: a record
  // broke the channel's limits or the batch is malformed, and the connection ends after the answer.
  uint32_t ServeBatch(Client* client, std::string_view payload, std::string& failure, bool& abort);
  // One frame or record to the target; a failure's text (empty if none). abort as above.
  uint32_t Deliver(uint32_t tag, std::string_view payload, std::string& failure, bool& abort);
  void DropClient(Client* client);
  void Disconnect(Client* client);
  void ReapClients();

  IZTCopyDataTarget& FTarget;
  int FListenFd = -1;
  std::string FPath;
  QSocketNotifier* FListenNotifier = nullptr;
  std::vector<std::unique_ptr<Client>> FClients;
  std::vector<char> FReadBuffer;
  uint64_t FFramesServed = 0;
  bool FReapPending = false;
  bool FHeld = false;
};

}  // namespace zentrail
