#pragma once
// Shared parts of the logging benchmarks: a private runtime folder, the dispatcher as a child
// process, and a minimal stand-in for the viewer that answers 1 to every frame.

#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "ZTChannel.h"

extern char** environ;

namespace zentrail::bench {

// Points every folder the client and dispatcher use at a fresh temporary folder.
inline std::string IsolateEnvironment() {
  char templ[] = "/tmp/zentrail-bench-XXXXXX";
  std::string root = mkdtemp(templ);
  std::filesystem::create_directories(root + "/run");
  std::filesystem::permissions(root + "/run", std::filesystem::perms::owner_all,
                               std::filesystem::perm_options::replace);
  setenv("HOME", root.c_str(), 1);
  setenv("ZENTRAIL_RUNTIME_DIR", (root + "/run").c_str(), 1);
  setenv("ZENTRAIL_REGISTRY", (root + "/registry.ini").c_str(), 1);
  if (FILE* f = std::fopen((root + "/registry.ini").c_str(), "w")) {
    std::fprintf(f, "[Software\\Orvan\\Zentrail\\5.0]\nDispatcher=%s/src/dispatcher/zentrail-dispatcher\n",
                 ZENTRAIL_BINARY_DIR);
    std::fclose(f);
  }
  return root;
}

class Dispatcher {
 public:
  Dispatcher() {
    std::string program = std::string(ZENTRAIL_BINARY_DIR) + "/src/dispatcher/zentrail-dispatcher";
    char* argv[] = {program.data(), nullptr};
    if (posix_spawn(&FPid, program.c_str(), nullptr, nullptr, argv, environ) != 0) FPid = -1;
    std::string error;
    std::string path = DispatcherSocketPath(error);
    for (int i = 0; i < 5000; ++i) {
      int fd = ConnectUnixSocket(path, error);
      if (fd >= 0) {
        close(fd);
        return;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    std::fprintf(stderr, "dispatcher did not start\n");
    std::exit(1);
  }
  ~Dispatcher() {
    if (FPid > 0) {
      kill(FPid, SIGCONT);
      kill(FPid, SIGTERM);
      int status;
      waitpid(FPid, &status, 0);
    }
  }
  pid_t Pid() const { return FPid; }

 private:
  pid_t FPid = -1;
};

// The viewer's part of the channel and nothing else: read a frame, answer 1.
class FakeViewer {
 public:
  FakeViewer() {
    std::string error;
    FListen = ListenUnixSocket(ViewerSocketPath(error), error);
    FThread = std::thread([this] {
      while (!FStop) {
        pollfd p{FListen, POLLIN, 0};
        if (poll(&p, 1, 20) <= 0) continue;
        std::string e;
        int fd = AcceptConnection(FListen, false, e);
        if (fd < 0) continue;
        FServe.emplace_back([this, fd] {
          uint32_t tag;
          std::string payload, err;
          while (ReadFrame(fd, tag, payload, err) && WriteReply(fd, 1, err)) ++Frames;
          close(fd);
        });
      }
    });
  }
  ~FakeViewer() {
    FStop = true;
    FThread.join();
    close(FListen);
    for (auto& t : FServe) t.detach();  // they end when the dispatcher closes its side
  }
  std::atomic<long> Frames{0};

 private:
  int FListen = -1;
  std::atomic<bool> FStop{false};
  std::thread FThread;
  std::vector<std::thread> FServe;
};

// The real viewer, started offscreen in the benchmark's folders; Running() is false when it is not
// built in this tree or did not come up.
class RealViewer {
 public:
  RealViewer() {
    std::string program = std::string(ZENTRAIL_BINARY_DIR) + "/src/shell/zentrail-viewer";
    if (!std::filesystem::exists(program)) return;
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    char* argv[] = {program.data(), nullptr};
    if (posix_spawn(&FPid, program.c_str(), nullptr, nullptr, argv, environ) != 0) {
      FPid = -1;
      return;
    }
    std::string error;
    std::string path = ViewerSocketPath(error);
    for (int i = 0; i < 5000; ++i) {
      int fd = ConnectUnixSocket(path, error);
      if (fd >= 0) {
        close(fd);
        FRunning = true;
        return;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
  }
  ~RealViewer() {
    if (FPid > 0) {
      kill(FPid, SIGTERM);
      int status;
      waitpid(FPid, &status, 0);
    }
  }
  bool Running() const { return FRunning; }

 private:
  pid_t FPid = -1;
  bool FRunning = false;
};

inline double Seconds(std::chrono::steady_clock::time_point since) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

}  // namespace zentrail::bench
