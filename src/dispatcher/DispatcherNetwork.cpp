// The dispatcher's network side: listeners on TCP and UDP, and who may use them.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "Dispatcher.h"
#include "ZTChannel.h"

namespace zentrail {

bool ParseNetworkRange(const std::string& text, TNetworkRange& range) {
  std::string address = text;
  int bits = -1;
  if (auto slash = text.find('/'); slash != std::string::npos) {
    address = text.substr(0, slash);
    std::string count = text.substr(slash + 1);
    if (count.empty() || count.size() > 3 || count.find_first_not_of("0123456789") != std::string::npos) return false;
    bits = std::stoi(count);
  }
  TNetworkRange r;
  if (inet_pton(AF_INET, address.c_str(), r.Address) == 1) {
    r.Family = AF_INET;
    r.Bits = bits < 0 ? 32 : bits;
    if (r.Bits > 32) return false;
  } else if (inet_pton(AF_INET6, address.c_str(), r.Address) == 1) {
    r.Family = AF_INET6;
    r.Bits = bits < 0 ? 128 : bits;
    if (r.Bits > 128) return false;
  } else {
    return false;
  }
  range = r;
  return true;
}

namespace {

bool Matches(const TNetworkRange& range, const unsigned char* address) {
  int whole = range.Bits / 8, rest = range.Bits % 8;
  if (std::memcmp(range.Address, address, static_cast<std::size_t>(whole)) != 0) return false;
  if (rest == 0) return true;
  unsigned char mask = static_cast<unsigned char>(0xFF << (8 - rest));
  return (range.Address[whole] & mask) == (address[whole] & mask);
}

const std::vector<TNetworkRange>& LoopbackNetworks() {
  static const std::vector<TNetworkRange> loopback = [] {
    std::vector<TNetworkRange> v(2);
    ParseNetworkRange("127.0.0.0/8", v[0]);
    ParseNetworkRange("::1", v[1]);
    return v;
  }();
  return loopback;
}

}  // namespace

bool AddressAllowed(const std::vector<TNetworkRange>& allow, const sockaddr* address) {
  const auto& networks = allow.empty() ? LoopbackNetworks() : allow;
  int family = address->sa_family;
  const unsigned char* bytes = nullptr;
  if (family == AF_INET) {
    bytes = reinterpret_cast<const unsigned char*>(&reinterpret_cast<const sockaddr_in*>(address)->sin_addr);
  } else if (family == AF_INET6) {
    const auto* a6 = &reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr;
    bytes = reinterpret_cast<const unsigned char*>(a6);
    if (IN6_IS_ADDR_V4MAPPED(a6)) {
      family = AF_INET;
      bytes += 12;
    }
  } else {
    return false;
  }
  for (const TNetworkRange& range : networks)
    if (range.Family == family && Matches(range, bytes)) return true;
  return false;
}

bool IsLoopbackAddress(const std::string& text) {
  TNetworkRange host;
  if (!ParseNetworkRange(text, host) || text.find('/') != std::string::npos) return false;
  for (const TNetworkRange& range : LoopbackNetworks())
    if (range.Family == host.Family && Matches(range, host.Address)) return true;
  return false;
}

std::string AddressText(const sockaddr* address) {
  char buf[INET6_ADDRSTRLEN] = "?";
  if (address->sa_family == AF_INET)
    inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(address)->sin_addr, buf, sizeof buf);
  else if (address->sa_family == AF_INET6)
    inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr, buf, sizeof buf);
  return buf;
}

bool TDispatcher::OpenNetworkListener(int type, int port, const char* portFileName, int& fd, std::string& portFile) {
  const char* kind = type == SOCK_STREAM ? "TCP" : "UDP";
  sockaddr_storage address{};
  socklen_t length = 0;
  auto* a4 = reinterpret_cast<sockaddr_in*>(&address);
  auto* a6 = reinterpret_cast<sockaddr_in6*>(&address);
  if (inet_pton(AF_INET, FOptions.Listen.c_str(), &a4->sin_addr) == 1) {
    a4->sin_family = AF_INET;
    a4->sin_port = htons(static_cast<uint16_t>(port));
    length = sizeof *a4;
  } else if (inet_pton(AF_INET6, FOptions.Listen.c_str(), &a6->sin6_addr) == 1) {
    a6->sin6_family = AF_INET6;
    a6->sin6_port = htons(static_cast<uint16_t>(port));
    length = sizeof *a6;
  } else {
    Log("not an IP address to listen on: " + FOptions.Listen);
    return false;
  }
  fd = socket(address.ss_family, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  int one = 1;
  setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
  if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
      (type == SOCK_STREAM && listen(fd, SOMAXCONN) != 0)) {
    Log(std::string("cannot listen on ") + kind + " " + FOptions.Listen + " port " + std::to_string(port) + ": " +
        std::strerror(errno));
    return false;
  }
  getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
  int bound = ntohs(address.ss_family == AF_INET ? a4->sin_port : a6->sin6_port);
  std::string error;
  portFile = GetRuntimeFolder(error) + "/" + portFileName;
  std::string tmp = portFile + ".tmp";
  if (FILE* f = std::fopen(tmp.c_str(), "w")) {
    std::fprintf(f, "%d\n", bound);
    std::fclose(f);
    rename(tmp.c_str(), portFile.c_str());
  }
  if (FOptions.Verbose) Log(std::string("listening on ") + kind + " " + FOptions.Listen + " port " + std::to_string(bound));
  return true;
}

void TDispatcher::ReadDatagrams() {
  // One datagram is one frame. Nothing is answered: a datagram that cannot be taken is lost, as
  // UDP allows, and a datagram from outside the allow list is counted and dropped.
  static thread_local std::string buffer(65536, '\0');
  for (int round = 0; round < 256; ++round) {
    sockaddr_storage peer{};
    socklen_t length = sizeof peer;
    ssize_t n = recvfrom(FUdpListen, buffer.data(), buffer.size(), MSG_DONTWAIT, reinterpret_cast<sockaddr*>(&peer),
                         &length);
    if (n < 0) return;
    if (!AddressAllowed(FOptions.Allow, reinterpret_cast<sockaddr*>(&peer))) {
      ++FRefusedFrames;
      continue;
    }
    if (static_cast<std::size_t>(n) < ztFrameHeaderSize) continue;
    const auto* p = reinterpret_cast<const unsigned char*>(buffer.data());
    uint32_t tag = (uint32_t{p[0]} << 24) | (uint32_t{p[1]} << 16) | (uint32_t{p[2]} << 8) | p[3];
    uint32_t size = (uint32_t{p[4]} << 24) | (uint32_t{p[5]} << 16) | (uint32_t{p[6]} << 8) | p[7];
    if (size != static_cast<std::size_t>(n) - ztFrameHeaderSize) continue;
    HandleFrame(tag, std::string_view(buffer.data() + ztFrameHeaderSize, size));
  }
}

}  // namespace zentrail
