#include "NetworkSinks.h"

#include <curl/curl.h>
#include <netdb.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "LogRecord.h"
#include "ZTChannel.h"

namespace zentrail {

namespace {

void Say(const std::string& text) { std::fprintf(stderr, "zentrail-dispatcher: %s\n", text.c_str()); }

// A receiver that starts late, or a datagram that was lost, learns the route within this time.
constexpr auto kAnnounceEvery = std::chrono::seconds(2);

}  // namespace

// ---------------------------------------------------------------------------------------------
// UDP

TUdpSink::TUdpSink(int wakeFd, std::string host, uint16_t port, std::string remoteDestination, bool compressed)
    : TQueuedSink(wakeFd),
      FHost(std::move(host)),
      FPort(port),
      FRemote(std::move(remoteDestination)),
      FRouteID(TZentrailConnection::NewDispatchID()),
      FCompressed(compressed) {
  Start();
}

TUdpSink::~TUdpSink() {
  Stop(0);
  if (FFd >= 0) close(FFd);
}

bool TUdpSink::EnsureSocket() {
  if (FFd >= 0) return true;
  auto now = std::chrono::steady_clock::now();
  if (now < FRetryAfter) return false;
  // A name that does not resolve is not asked again for every message.
  FRetryAfter = now + std::chrono::seconds(2);
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_DGRAM;
  addrinfo* list = nullptr;
  std::string service = std::to_string(FPort);
  if (getaddrinfo(FHost.c_str(), service.c_str(), &hints, &list) != 0 || !list) {
    Say("UDP destination " + FHost + ":" + service + " cannot be resolved; its messages are dropped");
    return false;
  }
  FFd = socket(list->ai_family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (FFd >= 0) {
    std::memcpy(&FAddress, list->ai_addr, list->ai_addrlen);
    FAddressLength = list->ai_addrlen;
  }
  freeaddrinfo(list);
  return FFd >= 0;
}

void TUdpSink::SendMessage(const TZentrailMessage& message) {
  std::string payload = message.GetAsTransportPacket();
  uint32_t tag = ztPacketTag;
  std::string compressed;
  if ((FCompressed || payload.size() + ztFrameHeaderSize > kMaxDatagram) && FDeflater.Compress(payload, compressed)) {
    payload.swap(compressed);
    tag = ztCompressedPacketTag;
  }
  if (payload.size() + ztFrameHeaderSize > kMaxDatagram) {
    Say("a message of " + std::to_string(payload.size()) + " bytes does not fit a UDP datagram; dropped");
    return;
  }
  std::string datagram;
  AppendFrame(datagram, tag, payload);
  // A full send buffer or an unreachable port loses this datagram, which UDP allows.
  ssize_t sent = sendto(FFd, datagram.data(), datagram.size(), MSG_NOSIGNAL,
                        reinterpret_cast<const sockaddr*>(&FAddress), FAddressLength);
  (void)sent;
}

void TUdpSink::Deliver(const std::string& packet) {
  TZentrailMessage message;
  try {
    message.SetAsTransportPacket(packet);
  } catch (const std::exception&) {
    return;
  }
  if (!EnsureSocket()) return;
  auto now = std::chrono::steady_clock::now();
  if (!FEverAnnounced || now - FAnnounced >= kAnnounceEvery) {
    TZentrailMessage open;
    open.MsgType = ztmOpenRoute;
    open.RouteKey = FRouteID;
    open.MsgText = FRemote.empty() ? "Viewer" : FRemote;
    SendMessage(open);
    FAnnounced = now;
    FEverAnnounced = true;
  }
  message.RouteKey = FRouteID;
  SendMessage(message);
}

void TUdpSink::Finish() {
  if (FFd < 0 || !FEverAnnounced) return;
  TZentrailMessage close92;
  close92.MsgType = ztmCloseRoute;
  close92.RouteKey = FRouteID;
  SendMessage(close92);
}

// ---------------------------------------------------------------------------------------------
// HTTP

void InitHttpClient() { curl_global_init(CURL_GLOBAL_DEFAULT); }

THttpSink::THttpSink(int wakeFd, THttpOptions options) : TQueuedSink(wakeFd), FOptions(std::move(options)) {
  FCurl = curl_easy_init();
  Start();
}

THttpSink::~THttpSink() {
  Stop(0);
  if (FCurl) curl_easy_cleanup(static_cast<CURL*>(FCurl));
}

int THttpSink::Progress(void* self, long long, long long, long long, long long) {
  // Giving the destination up (the dispatcher ends) cuts a post that hangs on its server.
  return static_cast<THttpSink*>(self)->Abandoned() ? 1 : 0;
}

void THttpSink::Deliver(const std::string& packet) {
  std::string records;
  AppendBatchRecord(records, ztPacketTag, packet);
  DeliverBatch(records, 1);
}

THttpSink::TOutcome THttpSink::Post(const std::string& body, std::size_t records, std::string& why) {
  CURL* curl = static_cast<CURL*>(FCurl);
  if (!curl) {
    why = "the HTTP client could not be set up";
    return TOutcome::Refused;
  }
  curl_easy_reset(curl);
  curl_slist* headers = nullptr;
  headers = curl_slist_append(headers, "Content-Type: application/x-zentrail-log");
  headers = curl_slist_append(headers, ("X-Zentrail-Alias: " + FOptions.Alias).c_str());
  headers = curl_slist_append(headers, ("X-Zentrail-Records: " + std::to_string(records)).c_str());
  // A body is sent at once, without asking the server first.
  headers = curl_slist_append(headers, "Expect:");
  curl_easy_setopt(curl, CURLOPT_URL, FOptions.URL.c_str());
  curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
  curl_easy_setopt(curl, CURLOPT_POST, 1L);
  curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.data());
  curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT_MS, 10000L);
  curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, 60000L);
  curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, &THttpSink::Progress);
  curl_easy_setopt(curl, CURLOPT_XFERINFODATA, this);
  // The answer's body is of no interest; without a writer curl would print it.
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, +[](char*, size_t size, size_t n, void*) { return size * n; });
  if (!FOptions.ProxyServer.empty()) {
    curl_easy_setopt(curl, CURLOPT_PROXY, FOptions.ProxyServer.c_str());
    curl_easy_setopt(curl, CURLOPT_PROXYPORT, static_cast<long>(FOptions.ProxyPort));
    if (!FOptions.ProxyUsername.empty()) curl_easy_setopt(curl, CURLOPT_PROXYUSERNAME, FOptions.ProxyUsername.c_str());
    if (!FOptions.ProxyPassword.empty()) curl_easy_setopt(curl, CURLOPT_PROXYPASSWORD, FOptions.ProxyPassword.c_str());
  }
  CURLcode rc = curl_easy_perform(curl);
  long status = 0;
  curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
  curl_slist_free_all(headers);
  if (rc != CURLE_OK) {
    why = curl_easy_strerror(rc);
    return TOutcome::Retry;
  }
  if (status >= 200 && status < 300) return TOutcome::Done;
  why = "status " + std::to_string(status);
  if (status == 408 || status == 429 || status >= 500) return TOutcome::Retry;
  return TOutcome::Refused;
}

void THttpSink::DeliverBatch(std::string_view records, std::size_t count) {
  std::string body;
  TZTBatchReader reader(records);
  uint32_t tag = 0;
  std::string_view packet;
  while (reader.Next(tag, packet) == TZTBatchReader::TStep::Record) AppendLogRecordFromPacket(packet, body);
  const std::size_t packets = count;
  auto pause = std::chrono::milliseconds(250);
  bool complained = false;
  for (;;) {
    std::string why;
    TOutcome outcome = Post(body, packets, why);
    if (outcome == TOutcome::Done) {
      if (complained) Say("HTTP destination " + FOptions.URL + " takes messages again");
      return;
    }
    if (outcome == TOutcome::Refused) {
      Say("HTTP destination " + FOptions.URL + " refused " + std::to_string(packets) + " messages: " + why);
      return;
    }
    if (!complained) Say("HTTP destination " + FOptions.URL + " failed (" + why + "); trying again");
    complained = true;
    if (!PauseUnlessAbandoned(pause)) return;
    pause = std::min(pause * 2, std::chrono::milliseconds(30000));
  }
}

}  // namespace zentrail
