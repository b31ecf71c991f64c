#include "ZTSingleInstance.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "ZTChannel.h"

namespace zentrail {

TZTSingleInstance::~TZTSingleInstance() { Release(); }

TZTSingleInstance::Result TZTSingleInstance::Acquire(std::string& error) {
  Release();
  std::string folder = GetRuntimeFolder(error);
  if (folder.empty()) return Result::Failed;
  std::string path = folder + "/" + ztViewerMutexName;
  int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (fd < 0) {
    error = "cannot open " + path + ": " + std::strerror(errno);
    return Result::Failed;
  }
  for (;;) {
    if (::flock(fd, LOCK_EX | LOCK_NB) == 0) break;
    if (errno == EINTR) continue;
    int err = errno;
    ::close(fd);
    if (err == EWOULDBLOCK) return Result::AlreadyRunning;
    error = "cannot lock " + path + ": " + std::strerror(err);
    return Result::Failed;
  }
  FFd = fd;
  return Result::Acquired;
}

void TZTSingleInstance::Release() {
  if (FFd < 0) return;
  ::flock(FFd, LOCK_UN);
  ::close(FFd);
  FFd = -1;
}

}  // namespace zentrail
