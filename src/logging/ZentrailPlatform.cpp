#include "ZentrailPlatform.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
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

bool StartDispatcher(const std::string& socketPath, std::chrono::steady_clock::time_point limit) {
  std::string program = FindDispatcherExecutable();
  if (program.empty()) return false;

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  // The application's own descriptors are no business of the dispatcher.
  posix_spawn_file_actions_addclosefrom_np(&actions, 3);
  posix_spawnattr_t attr;
  posix_spawnattr_init(&attr);
  sigset_t none, all;
  sigemptyset(&none);
  sigfillset(&all);
  posix_spawnattr_setsigmask(&attr, &none);
  posix_spawnattr_setsigdefault(&attr, &all);
  // Its own session, so that the terminal's signals to the application do not stop it.
  posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  char* argv[] = {const_cast<char*>(program.c_str()), nullptr};
  pid_t pid = -1;
  int rc = posix_spawn(&pid, program.c_str(), &actions, &attr, argv, environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attr);
  if (rc != 0) return false;

  auto deadline = std::min(limit, std::chrono::steady_clock::now() + std::chrono::seconds(10));
  auto pause = std::chrono::milliseconds(1);
  bool exited = false;
  while (std::chrono::steady_clock::now() < deadline) {
    std::string error;
    int fd = ConnectUnixSocket(socketPath, error);
    if (fd >= 0) {
      close(fd);
      return true;
    }
    if (!exited) {
      int status = 0;
      // A dispatcher that lost the race to another one exits at once; the other one answers.
      if (waitpid(pid, &status, WNOHANG) == pid) {
        exited = true;
        deadline = std::min(deadline, std::chrono::steady_clock::now() + std::chrono::seconds(1));
      }
    }
    std::this_thread::sleep_for(pause);
    if (pause < std::chrono::milliseconds(50)) pause *= 2;
  }
  return false;
}

}  // namespace zentrail
