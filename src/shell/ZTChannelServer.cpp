#include "ZTChannelServer.h"

#include <QSocketNotifier>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

#include "ZTChannel.h"

namespace zentrail {

struct TZTChannelServer::Client {
  int Fd = -1;
  QSocketNotifier* Notifier = nullptr;
  TZTFrameDecoder Decoder;
  bool Busy = false;    // a frame of this client is being answered
  bool Rearm = false;   // its notifier was switched off while busy
  bool Dead = false;
};

namespace {
// One read takes what a burst of small frames brings; larger frames arrive in several reads.
constexpr std::size_t kReadChunk = 256 * 1024;
}  // namespace

TZTChannelServer::TZTChannelServer(IZTCopyDataTarget& target, QObject* parent)
    : QObject(parent), FTarget(target), FReadBuffer(kReadChunk) {}

TZTChannelServer::~TZTChannelServer() { Close(); }

bool TZTChannelServer::Listen(const std::string& path, std::string& error) {
  Close();
  int fd = ListenUnixSocket(path, error);
  if (fd < 0) return false;
  // Accepting drains the backlog until EAGAIN, which needs a non-blocking listener.
  ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
  FListenFd = fd;
  FPath = path;
  FFramesServed = 0;
  FListenNotifier = new QSocketNotifier(fd, QSocketNotifier::Read, this);
  connect(FListenNotifier, &QSocketNotifier::activated, this, [this] { AcceptClients(); });
  return true;
}

// Marks the client dead and lets go of its socket; the object itself goes at the next reap.
void TZTChannelServer::Disconnect(Client* client) {
  if (client->Notifier) {
    client->Notifier->setEnabled(false);
    client->Notifier->deleteLater();
    client->Notifier = nullptr;
  }
  if (client->Fd >= 0) ::close(client->Fd);
  client->Fd = -1;
  client->Dead = true;
}

void TZTChannelServer::Close() {
  for (auto& client : FClients) Disconnect(client.get());
  // A client being answered further up the stack still needs its object; it goes at the next reap.
  ReapClients();
  if (FListenNotifier) {
    FListenNotifier->setEnabled(false);
    delete FListenNotifier;
    FListenNotifier = nullptr;
  }
  if (FListenFd >= 0) {
    ::close(FListenFd);
    FListenFd = -1;
    ::unlink(FPath.c_str());
  }
}

int TZTChannelServer::ClientCount() const {
  int n = 0;
  for (const auto& client : FClients)
    if (!client->Dead) ++n;
  return n;
}

void TZTChannelServer::AcceptClients() {
  for (;;) {
    std::string error;
    int fd = AcceptConnection(FListenFd, true, error);
    if (fd < 0) return;  // drained, or a failed accept that leaves the listener as it was
    if (!PeerIsSameUser(fd)) {
      // Another user's process gets no answer at all.
      ::close(fd);
      continue;
    }
    auto client = std::make_unique<Client>();
    client->Fd = fd;
    client->Notifier = new QSocketNotifier(fd, QSocketNotifier::Read, this);
    client->Notifier->setEnabled(!FHeld);
    Client* raw = client.get();
    connect(client->Notifier, &QSocketNotifier::activated, this, [this, raw] { ServeClient(raw); });
    FClients.push_back(std::move(client));
  }
}

void TZTChannelServer::ServeClient(Client* client) {
  if (client->Dead) return;
  if (client->Busy) {
    // Called again from an event loop that the target runs while it answers: the socket stays
    // readable (a closed peer stays so for ever), so stop listening until the frame is done.
    client->Notifier->setEnabled(false);
    client->Rearm = true;
    return;
  }
  client->Busy = true;

  bool endOfStream = false;
  for (;;) {
    ssize_t n = ::read(client->Fd, FReadBuffer.data(), FReadBuffer.size());
    if (n > 0) {
      client->Decoder.Feed(FReadBuffer.data(), static_cast<std::size_t>(n));
      if (static_cast<std::size_t>(n) < FReadBuffer.size() || client->Decoder.Failed()) break;
      continue;
    }
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) break;
    endOfStream = true;  // peer closed, or a read error: either way the connection is over
    break;
  }

  // Every complete frame of this wake-up is answered now, one after another.
  uint32_t tag = 0;
  std::string_view payload;
  while (!client->Dead && client->Decoder.Next(tag, payload)) {
    uint32_t reply = 0;
    bool abort = false;
    std::string failure;
    if (tag == ztBatchTag) {
      reply = ServeBatch(client, payload, failure, abort);
    } else {
      reply = Deliver(tag, payload, failure, abort);
    }
    if (client->Dead) break;  // the server was closed while the target ran
    client->Decoder.Pop();
    ++FFramesServed;
    std::string error;
    if (!WriteReplyNow(client->Fd, reply, error)) endOfStream = true;
    if (abort) endOfStream = true;
    if (!failure.empty()) FTarget.CopyDataFailed(failure);
    if (endOfStream) break;
  }

  if (!client->Dead && client->Decoder.Failed()) {
    // A frame above the bound: refuse it and end the connection; its bytes are never read.
    std::string error;
    WriteReplyNow(client->Fd, 0, error);
    endOfStream = true;
  }
  client->Busy = false;
  if (client->Dead) {
    ReapClients();
    return;
  }
  if (endOfStream) {
    DropClient(client);
    return;
  }
  if (client->Rearm) {
    client->Rearm = false;
    client->Notifier->setEnabled(!FHeld);
  }
}

uint32_t TZTChannelServer::Deliver(uint32_t tag, std::string_view payload, std::string& failure, bool& abort) {
  try {
    return FTarget.WMCopyData(tag, payload);
  } catch (const EZTChannelAbort& e) {
    abort = true;
    failure = e.what();
  } catch (const std::exception& e) {
    failure = e.what();
    if (failure.empty()) failure = "unknown failure";
  } catch (...) {
    failure = "unknown failure";
  }
  return 0;
}

uint32_t TZTChannelServer::ServeBatch(Client* client, std::string_view payload, std::string& failure,
                                      bool& abort) {
  uint32_t taken = 0;
  std::vector<std::string> failures;
  FTarget.BeginCopyDataBatch();
  try {
    TZTBatchReader reader(payload);
    uint32_t tag = 0;
    std::string_view record;
    TZTBatchReader::TStep step = TZTBatchReader::TStep::End;
    while (!client->Dead && (step = reader.Next(tag, record)) == TZTBatchReader::TStep::Record) {
      std::string recordFailure;
      taken += Deliver(tag, record, recordFailure, abort);
      // A record the target could not read costs that record only, as a frame of its own would;
      // the reports wait until the bracket is closed and the batch answered.
      if (!recordFailure.empty()) failures.push_back(std::move(recordFailure));
      if (abort) break;
    }
    if (!client->Dead && step == TZTBatchReader::TStep::Malformed) abort = true;
  } catch (...) {
    FTarget.EndCopyDataBatch();
    throw;
  }
  FTarget.EndCopyDataBatch();
  // One report per batch at most reaches the target: a batch of bad records is one incident.
  if (!failures.empty()) {
    failure = failures.front();
    if (failures.size() > 1)
      failure += " (and " + std::to_string(failures.size() - 1) + " further record(s) of the same batch)";
  }
  return taken;
}

void TZTChannelServer::Hold(bool held) {
  FHeld = held;
  if (FListenNotifier) FListenNotifier->setEnabled(!held);
  for (auto& client : FClients) {
    // A client in the middle of a frame is re-armed when the frame is done.
    if (client->Dead || client->Busy || !client->Notifier) continue;
    client->Notifier->setEnabled(!held);
  }
}

void TZTChannelServer::DropClient(Client* client) {
  Disconnect(client);
  ReapClients();
}

void TZTChannelServer::ReapClients() {
  std::erase_if(FClients, [](const std::unique_ptr<Client>& c) { return c->Dead && !c->Busy; });
}

}  // namespace zentrail
