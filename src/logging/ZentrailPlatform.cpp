#include "ZentrailPlatform.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "ZTChannel.h"
#include "ZTCommonUtils.h"
#include "ZTRegistry.h"

extern char** environ;

namespace zentrail {

namespace {

bool IsExecutableFile(const std::string& path) {
  struct stat st{};
  return !path.empty() && stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode) && access(path.c_str(), X_OK) == 0;
}

std::string RegistryDispatcherValue() {
  std::string value;
  // The policies key is only asked when the main key cannot be opened at all.
  if (RegistryKeyExists(ztRegistryKeyPath)) ReadRegistryString(ztRegistryKeyPath, "Dispatcher", value);
  else if (RegistryKeyExists(ztRegistryPolicyKeyPath)) ReadRegistryString(ztRegistryPolicyKeyPath, "Dispatcher", value);
  return value;
}

}  // namespace

std::string RunningExecutableFolder() {
  std::string folder = GetExecutableFolder();
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  return folder;
}

std::string FindDispatcherExecutable() {
  std::string registered = RegistryDispatcherValue();
  if (!registered.empty()) {
    // A registered path is taken as it stands: when it names a missing file there is no start,
    // rather than a surprise start of some other copy.
    return IsExecutableFile(registered) ? registered : std::string();
  }
  const std::string name = "zentrail-dispatcher";
  std::string beside = RunningExecutableFolder() + "/" + name;
  if (IsExecutableFile(beside)) return beside;
  if (const char* path = std::getenv("PATH")) {
    std::string_view rest(path);
    while (!rest.empty()) {
      auto colon = rest.find(':');
      std::string dir(rest.substr(0, colon));
      rest = colon == std::string_view::npos ? std::string_view() : rest.substr(colon + 1);
      if (dir.empty()) continue;
      std::string candidate = dir + "/" + name;
      if (IsExecutableFile(candidate)) return candidate;
    }
  }
  return {};
}

namespace {

// True while the process exists and has not ended: a dispatcher that ended is no longer our child,
// so it cannot be waited for, only looked at.
bool ProcessAlive(pid_t pid) {
  char path[64];
  std::snprintf(path, sizeof path, "/proc/%d/stat", static_cast<int>(pid));
  FILE* f = std::fopen(path, "r");
  if (!f) return false;
  char line[512] = {};
  bool alive = std::fgets(line, sizeof line, f) != nullptr;
  std::fclose(f);
  // The state follows the closing bracket of the command name: Z and X are the dead.
  if (const char* close = std::strrchr(line, ')'); alive && close && close[1] == ' ')
    alive = close[2] != 'Z' && close[2] != 'X';
  return alive;
}

// Runs the program in a session of its own, as a grandchild: the intermediate process ends at once
// and is reaped here, so the dispatcher is nobody's child in this program and never its zombie,
// and a terminal's signals to the program do not reach it. Standard streams go to /dev/null.
pid_t SpawnDetached(const std::string& program) {
  // Everything the children need is made before the fork: after it only async-signal-safe calls.
  char* argv[] = {const_cast<char*>(program.c_str()), nullptr};
  int pipeFds[2];
  if (pipe2(pipeFds, O_CLOEXEC) != 0) return -1;
  pid_t child = fork();
  if (child < 0) {
    close(pipeFds[0]);
    close(pipeFds[1]);
    return -1;
  }
  if (child == 0) {
    setsid();
    pid_t grandchild = fork();
    if (grandchild == 0) {
      sigset_t none;
      sigemptyset(&none);
      sigprocmask(SIG_SETMASK, &none, nullptr);
      struct sigaction standard {};
      standard.sa_handler = SIG_DFL;
      for (int sig = 1; sig < NSIG; ++sig) sigaction(sig, &standard, nullptr);
      int null = open("/dev/null", O_RDWR);
      if (null >= 0) {
        dup2(null, 0);
        dup2(null, 1);
        dup2(null, 2);
      }
      // The program's own descriptors are no business of the dispatcher.
      syscall(SYS_close_range, 3u, ~0u, 0u);
      execve(program.c_str(), argv, environ);
      _exit(127);
    }
    ssize_t n = write(pipeFds[1], &grandchild, sizeof grandchild);
    _exit(n == static_cast<ssize_t>(sizeof grandchild) ? 0 : 1);
  }
  close(pipeFds[1]);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  pid_t pid = -1;
  if (read(pipeFds[0], &pid, sizeof pid) != static_cast<ssize_t>(sizeof pid)) pid = -1;
  close(pipeFds[0]);
  return pid;
}

bool Answers(const std::string& socketPath, std::chrono::steady_clock::time_point deadline) {
  std::string error;
  int fd = ConnectUnixSocket(socketPath, deadline, error);
  if (fd < 0) return false;
  close(fd);
  return true;
}

}  // namespace

bool StartDispatcher(const std::string& socketPath, std::chrono::steady_clock::time_point limit) {
  std::string program = FindDispatcherExecutable();
  if (program.empty()) return false;
  using Clock = std::chrono::steady_clock;
  auto deadline = std::min(limit, Clock::now() + std::chrono::seconds(10));

  // Many programs that start at the same moment all find no dispatcher; the start lock lets one of
  // them start it while the others wait and then find it running.
  std::string folder = socketPath.substr(0, socketPath.rfind('/'));
  int lockFd = open((folder + "/dispatcher.start").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (lockFd < 0) return false;
  auto pause = std::chrono::milliseconds(1);
  while (flock(lockFd, LOCK_EX | LOCK_NB) != 0) {
    if (Clock::now() >= deadline) {
      close(lockFd);
      return false;
    }
    std::this_thread::sleep_for(pause);
    if (pause < std::chrono::milliseconds(20)) pause *= 2;
  }
  bool running = Answers(socketPath, deadline);
  if (!running) {
    pid_t pid = SpawnDetached(program);
    pause = std::chrono::milliseconds(1);
    bool exited = pid <= 0;
    while (!running && Clock::now() < deadline) {
      std::this_thread::sleep_for(pause);
      if (pause < std::chrono::milliseconds(50)) pause *= 2;
      running = Answers(socketPath, deadline);
      if (!running && !exited && !ProcessAlive(pid)) {
        // It ended without serving: another dispatcher (started by hand) may be taking over.
        exited = true;
        deadline = std::min(deadline, Clock::now() + std::chrono::seconds(1));
      }
    }
  }
  close(lockFd);
  return running;
}

}  // namespace zentrail
