#include "InheritedListener.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace zentrail {

namespace {

// The first descriptor a manager passes; the ones before it are standard input, output and error.
constexpr int kFirstPassedFd = 3;

bool ParseCount(const char* text, long& value) {
  if (!text || !*text) return false;
  char* end = nullptr;
  errno = 0;
  value = std::strtol(text, &end, 10);
  return errno == 0 && end && *end == '\0';
}

int SocketOption(int fd, int option) {
  int value = -1;
  socklen_t length = sizeof value;
  return ::getsockopt(fd, SOL_SOCKET, option, &value, &length) == 0 ? value : -1;
}

bool SameFile(const std::string& a, const std::string& b) {
  struct stat sa {}, sb {};
  return ::stat(a.c_str(), &sa) == 0 && ::stat(b.c_str(), &sb) == 0 && sa.st_dev == sb.st_dev &&
         sa.st_ino == sb.st_ino;
}

}  // namespace

int TakeInheritedListener(const std::string& expectedPath, bool& handedOver, std::string& error) {
  handedOver = false;
  long pid = 0, count = 0;
  const bool forUs = ParseCount(std::getenv("LISTEN_PID"), pid) && pid == static_cast<long>(::getpid()) &&
                     ParseCount(std::getenv("LISTEN_FDS"), count) && count > 0;
  ::unsetenv("LISTEN_PID");
  ::unsetenv("LISTEN_FDS");
  ::unsetenv("LISTEN_FDNAMES");
  if (!forUs) return -1;
  handedOver = true;
  for (int fd = kFirstPassedFd; fd < kFirstPassedFd + count; ++fd) ::fcntl(fd, F_SETFD, FD_CLOEXEC);
  if (count != 1) {
    error = "the service manager passed " + std::to_string(count) +
            " sockets; the dispatcher takes exactly one, the socket " + expectedPath;
    return -1;
  }
  const int fd = kFirstPassedFd;
  if (SocketOption(fd, SO_DOMAIN) != AF_UNIX || SocketOption(fd, SO_TYPE) != SOCK_STREAM ||
      SocketOption(fd, SO_ACCEPTCONN) != 1) {
    error = "the socket passed by the service manager is not a listening Unix stream socket "
            "(ListenStream= of a path in the socket unit)";
    return -1;
  }
  sockaddr_un address{};
  socklen_t length = sizeof address;
  std::string bound;
  if (::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0 &&
      length > offsetof(sockaddr_un, sun_path) && address.sun_path[0] != '\0')
    bound.assign(address.sun_path, strnlen(address.sun_path, sizeof address.sun_path));
  if (bound.empty() || !SameFile(bound, expectedPath)) {
    // Clients would knock at a door nobody answers: better to say so at once.
    error = "the socket passed by the service manager listens on " + (bound.empty() ? "no path" : bound) +
            ", but clients look for the dispatcher on " + expectedPath;
    return -1;
  }
  return fd;
}

}  // namespace zentrail
