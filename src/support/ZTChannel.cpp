#include "ZTChannel.h"

#include "ZentrailMessage.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace zentrail {

namespace {

std::string ErrnoText(int err) { return std::strerror(err); }

void PutBE32(unsigned char* p, uint32_t v) {
  p[0] = static_cast<unsigned char>(v >> 24);
  p[1] = static_cast<unsigned char>(v >> 16);
  p[2] = static_cast<unsigned char>(v >> 8);
  p[3] = static_cast<unsigned char>(v);
}

uint32_t GetBE32(const unsigned char* p) {
  return (uint32_t{p[0]} << 24) | (uint32_t{p[1]} << 16) | (uint32_t{p[2]} << 8) | uint32_t{p[3]};
}

std::string EnvOrEmpty(const char* name) {
  const char* v = std::getenv(name);
  return v ? std::string(v) : std::string();
}

std::string FormatMode(mode_t mode) {
  char buf[8];
  std::snprintf(buf, sizeof buf, "%04o", static_cast<unsigned>(mode & 07777));
  return buf;
}

// A peer that stops reading must not hold a writer forever on a non-blocking socket.
constexpr int kWriteWaitMs = 10000;
constexpr const char* kTimedOutText = "timed out waiting on the connection";

// Milliseconds left until the deadline for poll: -1 for none, 0 when it has passed.
int MsLeft(TZTDeadline deadline) {
  if (deadline == ztNoDeadline) return -1;
  auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
  if (left.count() <= 0) return 0;
  // Rounded up, so that poll does not wake a moment before the deadline and spin.
  return left.count() > 0x7FFFFFF ? 0x7FFFFFF : static_cast<int>(left.count()) + 1;
}

bool WaitUntil(int fd, short events, TZTDeadline deadline, std::string& error) {
  pollfd p{fd, events, 0};
  for (;;) {
    int r = ::poll(&p, 1, MsLeft(deadline));
    if (r > 0) return true;
    if (r == 0) {
      if (deadline != ztNoDeadline && std::chrono::steady_clock::now() < deadline) continue;
      error = kTimedOutText;
      return false;
    }
    if (errno != EINTR) {
      error = "poll failed: " + ErrnoText(errno);
      return false;
    }
  }
}

bool WaitFor(int fd, short events, int timeoutMs, std::string& error) {
  return WaitUntil(fd, events, timeoutMs < 0 ? ztNoDeadline : DeadlineIn(timeoutMs), error);
}

bool FillSockAddr(const std::string& path, sockaddr_un& addr, std::string& error) {
  std::memset(&addr, 0, sizeof addr);
  addr.sun_family = AF_UNIX;
  if (path.empty()) {
    error = "empty socket path";
    return false;
  }
  if (path.size() >= sizeof addr.sun_path) {
    error = "socket path too long (" + std::to_string(path.size()) + " bytes, at most " +
            std::to_string(sizeof addr.sun_path - 1) + "): " + path;
    return false;
  }
  std::memcpy(addr.sun_path, path.data(), path.size());
  return true;
}

// Writes the iovec array completely, coping with partial writes, EINTR and EAGAIN. With a
// deadline, a socket is written without blocking and waited on only until then.
bool WriteVec(int fd, iovec* iov, int count, std::string& error, TZTDeadline deadline = ztNoDeadline) {
  bool notSocket = false;
  const bool bounded = deadline != ztNoDeadline;
  while (count > 0) {
    ssize_t n;
    if (!notSocket) {
      msghdr msg{};
      msg.msg_iov = iov;
      msg.msg_iovlen = static_cast<std::size_t>(count);
      n = ::sendmsg(fd, &msg, MSG_NOSIGNAL | (bounded ? MSG_DONTWAIT : 0));
      if (n < 0 && errno == ENOTSOCK) {
        notSocket = true;
        continue;
      }
    } else {
      n = ::writev(fd, iov, count);
    }
    if (n < 0) {
      if (errno == EINTR) continue;
      if (errno == EAGAIN || errno == EWOULDBLOCK) {
        if (!(bounded ? WaitUntil(fd, POLLOUT, deadline, error) : WaitFor(fd, POLLOUT, kWriteWaitMs, error)))
          return false;
        continue;
      }
      error = "write failed: " + ErrnoText(errno);
      return false;
    }
    std::size_t done = static_cast<std::size_t>(n);
    while (count > 0 && done >= iov->iov_len) {
      done -= iov->iov_len;
      ++iov;
      --count;
    }
    if (count > 0) {
      iov->iov_base = static_cast<char*>(iov->iov_base) + done;
      iov->iov_len -= done;
    }
  }
  return true;
}

bool IsLiveSocket(const std::string& path, bool& live, std::string& error) {
  sockaddr_un addr;
  if (!FillSockAddr(path, addr, error)) return false;
  int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) {
    error = "cannot create a socket: " + ErrnoText(errno);
    return false;
  }
  int r;
  do {
    r = ::connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr);
  } while (r < 0 && errno == EINTR);
  int err = errno;
  ::close(fd);
  // A busy server (full backlog) answers EAGAIN: it is alive all the same.
  live = r == 0 || err == EAGAIN || err == EINPROGRESS;
  return true;
}

}  // namespace

bool EnsurePrivateFolder(const std::string& folder, std::string& error) {
  if (folder.empty()) {
    error = "the runtime folder name is empty";
    return false;
  }
  struct stat st {};
  if (::stat(folder.c_str(), &st) != 0) {
    if (errno != ENOENT) {
      error = "cannot use the runtime folder " + folder + ": " + ErrnoText(errno);
      return false;
    }
    // Make the missing parents with ordinary permissions; only the last folder is private.
    std::string::size_type pos = 0;
    while ((pos = folder.find('/', pos + 1)) != std::string::npos) {
      std::string part = folder.substr(0, pos);
      if (::mkdir(part.c_str(), 0755) != 0 && errno != EEXIST) {
        error = "cannot create the folder " + part + " for the runtime folder " + folder + ": " +
                ErrnoText(errno);
        return false;
      }
    }
    if (::mkdir(folder.c_str(), 0700) != 0) {
      if (errno != EEXIST) {
        error = "cannot create the runtime folder " + folder + ": " + ErrnoText(errno);
        return false;
      }
    } else {
      // The umask may have taken bits away from the owner; put exactly 0700 in place.
      ::chmod(folder.c_str(), 0700);
    }
    if (::stat(folder.c_str(), &st) != 0) {
      error = "cannot use the runtime folder " + folder + ": " + ErrnoText(errno);
      return false;
    }
  }
  if (!S_ISDIR(st.st_mode)) {
    error = "the runtime folder " + folder + " is not a folder";
    return false;
  }
  if (st.st_uid != ::geteuid()) {
    error = "the runtime folder " + folder + " belongs to another user (uid " +
            std::to_string(st.st_uid) + "); refusing to use it";
    return false;
  }
  if ((st.st_mode & 077) != 0) {
    error = "the runtime folder " + folder + " is open to group or other users (mode " +
            FormatMode(st.st_mode) + "); refusing to use it (chmod 700 would make it private)";
    return false;
  }
  return true;
}

std::string GetRuntimeFolder(std::string& error) {
  std::string folder = EnvOrEmpty("ZENTRAIL_RUNTIME_DIR");
  if (folder.empty()) {
    std::string xdg = EnvOrEmpty("XDG_RUNTIME_DIR");
    if (!xdg.empty()) {
      while (xdg.size() > 1 && xdg.back() == '/') xdg.pop_back();
      folder = xdg + "/zentrail";
    } else {
      folder = "/tmp/zentrail-" + std::to_string(::geteuid());
    }
  }
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  if (!EnsurePrivateFolder(folder, error)) return std::string();
  return folder;
}

std::string ViewerSocketPath(std::string& error) {
  std::string folder = GetRuntimeFolder(error);
  return folder.empty() ? folder : folder + "/viewer";
}

std::string DispatcherSocketPath(std::string& error) {
  std::string folder = GetRuntimeFolder(error);
  return folder.empty() ? folder : folder + "/dispatcher";
}

// A stream socket and the address for path, or -1 with the reason.
static int NewUnixSocket(const std::string& path, sockaddr_un& addr, std::string& error) {
  if (!FillSockAddr(path, addr, error)) return -1;
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) error = "cannot create a socket: " + ErrnoText(errno);
  return fd;
}

int ConnectUnixSocket(const std::string& path, std::string& error) {
  sockaddr_un addr;
  const int fd = NewUnixSocket(path, addr, error);
  if (fd < 0) return -1;
  if (::connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0) {
    int err = errno;
    if (err == EINTR) {
      // The connection goes on in the background; wait for its outcome.
      std::string waitError;
      int soErr = 0;
      socklen_t len = sizeof soErr;
      if (WaitFor(fd, POLLOUT, -1, waitError) &&
          ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &soErr, &len) == 0 && soErr == 0)
        return fd;
      err = soErr ? soErr : EINTR;
    }
    ::close(fd);
    error = "cannot connect to " + path + ": " + ErrnoText(err);
    return -1;
  }
  return fd;
}

int ConnectUnixSocket(const std::string& path, TZTDeadline deadline, std::string& error) {
  if (deadline == ztNoDeadline) return ConnectUnixSocket(path, error);
  sockaddr_un addr;
  if (!FillSockAddr(path, addr, error)) return -1;
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) {
    error = "cannot create a socket: " + ErrnoText(errno);
    return -1;
  }
  for (auto pause = std::chrono::microseconds(200);;) {
    if (::connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0) break;
    const int err = errno;
    if (err == EINTR) continue;
    // A full backlog: the server lives but does not accept; try again until the deadline.
    if (err == EAGAIN && std::chrono::steady_clock::now() + pause < deadline) {
      std::this_thread::sleep_for(pause);
      if (pause < std::chrono::milliseconds(20)) pause *= 2;
      continue;
    }
    ::close(fd);
    error = err == EAGAIN ? "cannot connect to " + path + ": " + kTimedOutText
                          : "cannot connect to " + path + ": " + ErrnoText(err);
    return -1;
  }
  ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
  return fd;
}

int ConnectTcp(const std::string& host, uint16_t port, int timeoutMs, std::string& error) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* list = nullptr;
  std::string service = std::to_string(port);
  int gai = ::getaddrinfo(host.c_str(), service.c_str(), &hints, &list);
  if (gai != 0) {
    error = "cannot resolve " + host + ": " + ::gai_strerror(gai);
    return -1;
  }
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs > 0 ? timeoutMs : 0);
  std::string lastError = "no address for " + host;
  int result = -1;
  for (addrinfo* ai = list; ai && result < 0; ai = ai->ai_next) {
    int fd = ::socket(ai->ai_family, ai->ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, ai->ai_protocol);
    if (fd < 0) {
      lastError = "cannot create a socket: " + ErrnoText(errno);
      continue;
    }
    int r = ::connect(fd, ai->ai_addr, ai->ai_addrlen);
    int err = r == 0 ? 0 : errno;
    if (r != 0 && (err == EINPROGRESS || err == EINTR)) {
      pollfd p{fd, POLLOUT, 0};
      for (;;) {
        int wait = -1;
        if (timeoutMs > 0) {
          auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
          wait = left.count() > 0 ? static_cast<int>(left.count()) : 0;
        }
        int pr = ::poll(&p, 1, wait);
        if (pr < 0 && errno == EINTR) continue;
        if (pr <= 0) {
          err = pr == 0 ? ETIMEDOUT : errno;
          break;
        }
        socklen_t len = sizeof err;
        if (::getsockopt(fd, SOL_SOCKET, SO_ERROR, &err, &len) != 0) err = errno;
        break;
      }
    }
    if (err != 0) {
      lastError = "cannot connect to " + host + ":" + service + ": " + ErrnoText(err);
      ::close(fd);
      continue;
    }
    int flags = ::fcntl(fd, F_GETFL);
    ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
    int one = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    result = fd;
  }
  ::freeaddrinfo(list);
  if (result < 0) error = lastError;
  return result;
}

bool WriteAll(int fd, const void* data, std::size_t n, std::string& error) {
  if (n == 0) return true;
  iovec iov{const_cast<void*>(data), n};
  return WriteVec(fd, &iov, 1, error);
}

bool WriteReply(int fd, uint32_t reply, std::string& error) {
  unsigned char buf[4];
  PutBE32(buf, reply);
  return WriteAll(fd, buf, sizeof buf, error);
}

bool WriteReplyNow(int fd, uint32_t reply, std::string& error) {
  unsigned char buf[4];
  PutBE32(buf, reply);
  for (;;) {
    const ssize_t n = ::send(fd, buf, sizeof buf, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (n == static_cast<ssize_t>(sizeof buf)) return true;
    if (n < 0 && errno == EINTR) continue;
    error = n < 0 ? "reply failed: " + ErrnoText(errno) : "reply failed: the client reads no replies";
    return false;
  }
}

namespace {

// Reads exactly n bytes; with a deadline, nothing is read before poll says there is something, so
// a blocking descriptor never blocks past it.
bool ReadAllUntil(int fd, void* data, std::size_t n, TZTDeadline deadline, std::string& error) {
  char* p = static_cast<char*>(data);
  std::size_t got = 0;
  while (got < n) {
    if (deadline != ztNoDeadline && !WaitUntil(fd, POLLIN, deadline, error)) return false;
    ssize_t r = ::read(fd, p + got, n - got);
    if (r > 0) {
      got += static_cast<std::size_t>(r);
      continue;
    }
    if (r == 0) {
      error = got == 0 ? "connection closed" : "connection closed in the middle of a frame";
      return false;
    }
    if (errno == EINTR) continue;
    if (errno == EAGAIN || errno == EWOULDBLOCK) {
      if (!WaitUntil(fd, POLLIN, deadline, error)) return false;
      continue;
    }
    error = "read failed: " + ErrnoText(errno);
    return false;
  }
  return true;
}

}  // namespace

TZTDeadline DeadlineIn(int timeoutMs) {
  if (timeoutMs <= 0) return ztNoDeadline;
  return std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
}

bool ReadAll(int fd, void* data, std::size_t n, std::string& error) {
  return ReadAllUntil(fd, data, n, ztNoDeadline, error);
}

bool ReadReply(int fd, uint32_t& reply, std::string& error) {
  unsigned char buf[4];
  if (!ReadAll(fd, buf, sizeof buf, error)) return false;
  reply = GetBE32(buf);
  return true;
}

bool ReadFrame(int fd, uint32_t& tag, std::string& payload, std::string& error) {
  unsigned char header[ztFrameHeaderSize];
  if (!ReadAll(fd, header, sizeof header, error)) return false;
  tag = GetBE32(header);
  uint32_t length = GetBE32(header + 4);
  if (length > ztMaxFrameSize) {
    error = "frame of " + std::to_string(length) + " bytes exceeds the limit of " +
            std::to_string(ztMaxFrameSize) + " bytes";
    return false;
  }
  payload.resize(length);
  if (length == 0) return true;
  if (!ReadAll(fd, payload.data(), length, error)) {
    if (error == "connection closed") error = "connection closed in the middle of a frame";
    return false;
  }
  return true;
}

void AppendFrame(std::string& out, uint32_t tag, std::string_view payload) {
  unsigned char header[ztFrameHeaderSize];
  PutBE32(header, tag);
  PutBE32(header + 4, static_cast<uint32_t>(payload.size()));
  out.append(reinterpret_cast<const char*>(header), sizeof header);
  out.append(payload);
}

int SendFrameAndWaitReply(int fd, uint32_t tag, std::string_view payload, std::string& error) {
  return SendFrameAndWaitReply(fd, tag, payload, ztNoDeadline, error);
}

namespace {

// Writes one frame and reads the raw 32-bit answer: 0 with the answer in reply, -1 on a failure,
// ztTimedOut when the deadline passed.
int Exchange(int fd, uint32_t tag, std::string_view payload, TZTDeadline deadline, uint32_t& reply,
             std::string& error) {
  unsigned char header[ztFrameHeaderSize];
  PutBE32(header, tag);
  PutBE32(header + 4, static_cast<uint32_t>(payload.size()));
  iovec iov[2] = {{header, sizeof header},
                  {const_cast<char*>(payload.data()), payload.size()}};
  if (!WriteVec(fd, iov, payload.empty() ? 1 : 2, error, deadline)) return error == kTimedOutText ? ztTimedOut : -1;
  unsigned char buf[4];
  if (!ReadAllUntil(fd, buf, sizeof buf, deadline, error)) {
    if (error == kTimedOutText) return ztTimedOut;
    if (error == "connection closed") error = "connection closed before the reply";
    return -1;
  }
  reply = GetBE32(buf);
  return 0;
}

std::string TooLarge(std::size_t size) {
  return "frame of " + std::to_string(size) + " bytes exceeds the limit of " + std::to_string(ztMaxFrameSize) +
         " bytes; not sent";
}

}  // namespace

int SendFrameAndWaitReply(int fd, uint32_t tag, std::string_view payload, TZTDeadline deadline,
                          std::string& error) {
  if (payload.size() > ztMaxFrameSize) {
    error = TooLarge(payload.size());
    return 0;
  }
  uint32_t reply = 0;
  if (int r = Exchange(fd, tag, payload, deadline, reply, error); r < 0) return r;
  if (reply > 1) {
    error = "unexpected reply " + std::to_string(reply);
    return -1;
  }
  return static_cast<int>(reply);
}

int64_t SendBatchAndWaitCount(int fd, std::string_view batch, TZTDeadline deadline, std::string& error) {
  if (batch.size() > ztMaxFrameSize) {
    error = TooLarge(batch.size());
    return 0;
  }
  uint32_t reply = 0;
  if (int r = Exchange(fd, ztBatchTag, batch, deadline, reply, error); r < 0) return r;
  return reply;
}

void TZTFrameDecoder::Feed(const char* data, std::size_t n) {
  if (FFailed || n == 0) return;
  if (FStart > 0) {
    // Popped frames are dropped here rather than in Pop, so that a view handed out by Next
    // stays valid until the caller feeds again.
    FBuffer.erase(0, FStart);
    FStart = 0;
  }
  FBuffer.append(data, n);
  CheckHeader();
}

void TZTFrameDecoder::CheckHeader() {
  if (FBuffer.size() - FStart < ztFrameHeaderSize) return;
  const auto* p = reinterpret_cast<const unsigned char*>(FBuffer.data() + FStart);
  uint32_t length = GetBE32(p + 4);
  if (length > ztMaxFrameSize) {
    FFailed = true;
    FBuffer.clear();
    FBuffer.shrink_to_fit();
    FStart = 0;
  }
}

bool TZTFrameDecoder::Next(uint32_t& tag, std::string_view& payload) {
  if (FFailed) return false;
  std::size_t avail = FBuffer.size() - FStart;
  if (avail < ztFrameHeaderSize) return false;
  const auto* p = reinterpret_cast<const unsigned char*>(FBuffer.data() + FStart);
  uint32_t length = GetBE32(p + 4);
  if (avail - ztFrameHeaderSize < length) return false;
  tag = GetBE32(p);
  payload = std::string_view(FBuffer.data() + FStart + ztFrameHeaderSize, length);
  return true;
}

void TZTFrameDecoder::Pop() {
  if (FFailed) return;
  std::size_t avail = FBuffer.size() - FStart;
  if (avail < ztFrameHeaderSize) return;
  const auto* p = reinterpret_cast<const unsigned char*>(FBuffer.data() + FStart);
  uint32_t length = GetBE32(p + 4);
  if (avail - ztFrameHeaderSize < length) return;
  FStart += ztFrameHeaderSize + length;
  if (FStart == FBuffer.size()) {
    FBuffer.clear();
    FStart = 0;
  }
  CheckHeader();
}

bool TZTFrameDecoder::Failed() const { return FFailed; }

std::size_t TZTFrameDecoder::Buffered() const { return FBuffer.size() - FStart; }

void TZTFrameDecoder::Reset() {
  FBuffer.clear();
  FStart = 0;
  FFailed = false;
}

TZTBatchReader::TZTBatchReader(std::string_view payload, std::size_t offset)
    : FPayload(payload), FOffset(offset > payload.size() ? payload.size() : offset) {}

TZTBatchReader::TStep TZTBatchReader::Next(uint32_t& tag, std::string_view& bytes) {
  if (!FError.empty()) return TStep::Malformed;
  const std::size_t left = FPayload.size() - FOffset;
  if (left == 0) return TStep::End;
  if (left < ztFrameHeaderSize) {
    FError = "batch record header cut off after " + std::to_string(left) + " bytes";
    return TStep::Malformed;
  }
  const auto* p = reinterpret_cast<const unsigned char*>(FPayload.data() + FOffset);
  const uint32_t recordTag = GetBE32(p);
  const uint32_t length = GetBE32(p + 4);
  // Only the two packet tags: a batch inside a batch, or anything else, is not a record.
  if (recordTag != ztPacketTag && recordTag != ztCompressedPacketTag) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "%08X", recordTag);
    FError = std::string("batch record with tag $") + buf + ", which is not a packet's";
    return TStep::Malformed;
  }
  if (length > left - ztFrameHeaderSize) {
    FError = "batch record of " + std::to_string(length) + " bytes runs past the end of the batch";
    return TStep::Malformed;
  }
  tag = recordTag;
  bytes = FPayload.substr(FOffset + ztFrameHeaderSize, length);
  FOffset += ztFrameHeaderSize + length;
  return TStep::Record;
}

void AppendBatchRecord(std::string& batch, uint32_t tag, std::string_view bytes) { AppendFrame(batch, tag, bytes); }

bool PeerIsSameUser(int fd) {
  ucred cred{};
  socklen_t len = sizeof cred;
  if (::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &cred, &len) != 0 || len != sizeof cred) return false;
  return cred.uid == ::geteuid();
}

int ListenUnixSocket(const std::string& path, std::string& error) {
  sockaddr_un addr;
  const int fd = NewUnixSocket(path, addr, error);
  if (fd < 0) return -1;
  for (int attempt = 0;; ++attempt) {
    if (::bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0) break;
    int err = errno;
    if (err != EADDRINUSE || attempt >= 2) {
      error = "cannot listen on " + path + ": " + ErrnoText(err);
      ::close(fd);
      return -1;
    }
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0) continue;  // gone meanwhile: try again
    if (!S_ISSOCK(st.st_mode)) {
      error = "cannot listen on " + path + ": something other than a socket lies there";
      ::close(fd);
      return -1;
    }
    bool live = false;
    if (!IsLiveSocket(path, live, error)) {
      ::close(fd);
      return -1;
    }
    if (live) {
      error = "another server is already listening on " + path;
      ::close(fd);
      return -1;
    }
    // Left behind by a server that ended without cleaning up.
    if (::unlink(path.c_str()) != 0 && errno != ENOENT) {
      error = "cannot remove the stale socket " + path + ": " + ErrnoText(errno);
      ::close(fd);
      return -1;
    }
  }
  ::chmod(path.c_str(), 0600);
  if (::listen(fd, SOMAXCONN) != 0) {
    error = "cannot listen on " + path + ": " + ErrnoText(errno);
    ::close(fd);
    ::unlink(path.c_str());
    return -1;
  }
  return fd;
}

int AcceptConnection(int listenFd, bool nonBlocking, std::string& error) {
  int flags = SOCK_CLOEXEC | (nonBlocking ? SOCK_NONBLOCK : 0);
  for (;;) {
    int fd = ::accept4(listenFd, nullptr, nullptr, flags);
    if (fd >= 0) return fd;
    if (errno == EINTR || errno == ECONNABORTED) continue;
    if (errno == EAGAIN || errno == EWOULDBLOCK) {
      error.clear();
      return -1;
    }
    error = "accept failed: " + ErrnoText(errno);
    return -1;
  }
}

}  // namespace zentrail
