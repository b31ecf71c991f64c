#pragma once
// Destinations that leave the machine without a connection of the channel's kind: UDP datagrams
// to another dispatcher, and batches of log records posted to an HTTP endpoint.

#include <chrono>
#include <cstdint>
#include <string>
#include <sys/socket.h>
#include <vector>

#include "Dispatcher.h"

namespace zentrail {

// Each message is one datagram holding one frame (tag, length, packet; big-endian, as on the
// socket), sent to a dispatcher's UDP port. The receiver learns the route from a control message
// that is sent before the first message and again every few seconds, since a datagram can be lost
// and a receiver can start later. Nothing is answered: a datagram that does not arrive is lost.
class TUdpSink : public TQueuedSink {
 public:
  TUdpSink(int wakeFd, std::string host, uint16_t port, std::string remoteDestination, bool compressed);
  ~TUdpSink() override;
  // Above this a datagram cannot be sent; a larger message goes compressed, or not at all.
  static constexpr std::size_t kMaxDatagram = 65507;

 protected:
  void Deliver(const std::string& packet) override;
  void Finish() override;

 private:
  bool EnsureSocket();
  void SendMessage(const TZentrailMessage& message);
  std::string FHost;
  uint16_t FPort;
  std::string FRemote;
  std::string FRouteID;
  bool FCompressed;
  TZentrailDeflater FDeflater;
  int FFd = -1;
  sockaddr_storage FAddress{};
  socklen_t FAddressLength = 0;
  std::chrono::steady_clock::time_point FAnnounced{}, FRetryAfter{};
  bool FEverAnnounced = false;
};

struct THttpOptions {
  std::string URL;
  std::string Alias = "Default";
  std::string ProxyServer;
  int32_t ProxyPort = 0;
  std::string ProxyUsername, ProxyPassword;
};

// Posts the queued messages in batches: the body is log records one after another, exactly as a
// log file holds them, with the header "X-Zentrail-Alias" naming the alias. A failed post (no
// connection, a time-out, status 408, 429 or 5xx) is tried again with a growing pause, so that
// nothing taken is lost while the endpoint is away; meanwhile the queue's bound makes clients wait.
// Any other status refuses the batch for good.
class THttpSink : public TQueuedSink {
 public:
  THttpSink(int wakeFd, THttpOptions options);
  ~THttpSink() override;

 protected:
  void Deliver(const std::string& packet) override;
  std::size_t BatchLimit() const override { return 1000; }
  void DeliverBatch(std::string_view records, std::size_t count) override;

 private:
  enum class TOutcome { Done, Retry, Refused };
  TOutcome Post(const std::string& body, std::size_t records, std::string& why);
  static int Progress(void* self, long long, long long, long long, long long);
  THttpOptions FOptions;
  void* FCurl = nullptr;
};

// Once per process, before any thread starts.
void InitHttpClient();

}  // namespace zentrail
