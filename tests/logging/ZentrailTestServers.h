#pragma once
// Helpers shared by the logging and dispatcher tests: a fake frame server (standing in for the
// viewer or a dispatcher), starting and stopping child processes, and bounded waiting.

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "LogRecord.h"
#include "TransportPacket.h"
#include "ZTChannel.h"
#include "Zlib.h"
#include "ZentrailMessage.h"

extern char** environ;

namespace zentrail::test {

// Waits until pred() holds, at most timeoutMs; the final value of pred().
inline bool WaitUntil(const std::function<bool()>& pred, int timeoutMs = 5000) {
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  while (!pred()) {
    if (std::chrono::steady_clock::now() >= deadline) return pred();
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

struct TReceivedFrame {
  uint32_t Tag = 0;
  std::string Payload;
  TZentrailMessage Message;  // decoded when the frame was a packet
  bool Decoded = false;
};

// A socket server that reads frames and answers each with Reply (1 by default). With Stall set,
// it reads a frame and holds the answer until Stall is cleared.
class TFakeFrameServer {
 public:
  explicit TFakeFrameServer(std::string path) : FPath(std::move(path)) {
    std::string error;
    FListen = ListenUnixSocket(FPath, error);
    if (FListen < 0) throw std::runtime_error("fake server: " + error);
    FThread = std::thread([this] { Run(); });
  }
  ~TFakeFrameServer() { Stop(); }

  void Stop() {
    if (!FThread.joinable()) return;
    FStop = true;
    Stall = false;
    FThread.join();
    close(FListen);
    unlink(FPath.c_str());
    for (auto& t : FConnections) t.join();
  }

  std::vector<TReceivedFrame> Frames() {
    std::lock_guard lock(FLock);
    return FFrames;
  }
  std::size_t Count() {
    std::lock_guard lock(FLock);
    return FFrames.size();
  }
  // Messages other than route control.
  std::vector<TZentrailMessage> Messages() {
    std::vector<TZentrailMessage> out;
    for (auto& f : Frames())
      if (f.Decoded && f.Message.MsgType != 91 && f.Message.MsgType != 92) out.push_back(f.Message);
    return out;
  }

  std::atomic<uint32_t> Reply{1};
  std::atomic<bool> Stall{false};
  std::atomic<int> Accepted{0};
  std::atomic<int> Batches{0};  // batch frames received
  // Per batch frame received: its number of records and its payload's size in bytes.
  std::vector<std::pair<uint32_t, std::size_t>> BatchShapes() {
    std::lock_guard lock(FLock);
    return FBatchShapes;
  }

 private:
  void Keep(uint32_t tag, std::string payload) {
    TReceivedFrame frame;
    frame.Tag = tag;
    frame.Payload = std::move(payload);
    try {
      std::string packet = tag == ztCompressedPacketTag ? ZlibInflate(frame.Payload) : frame.Payload;
      frame.Message.SetAsTransportPacket(packet);
      frame.Decoded = true;
    } catch (const std::exception&) {
    }
    std::lock_guard lock(FLock);
    FFrames.push_back(std::move(frame));
  }

  void Run() {
    while (!FStop) {
      pollfd p{FListen, POLLIN, 0};
      if (poll(&p, 1, 20) <= 0) continue;
      std::string error;
      int fd = AcceptConnection(FListen, false, error);
      if (fd < 0) continue;
      ++Accepted;
      FConnections.emplace_back([this, fd] { Serve(fd); });
    }
  }

  void Serve(int fd) {
    for (;;) {
      // Wait for data with a stop check, then read one frame.
      pollfd p{fd, POLLIN, 0};
      int r = poll(&p, 1, 20);
      if (FStop) break;
      if (r <= 0) continue;
      uint32_t tag = 0;
      std::string payload, error;
      if (!ReadFrame(fd, tag, payload, error)) break;
      // A batch frame's records are kept as the frames they stand for; the answer counts them.
      uint32_t records = 0;
      if (tag == ztBatchTag) {
        ++Batches;
        TZTBatchReader reader(payload);
        uint32_t recordTag = 0;
        std::string_view record;
        while (reader.Next(recordTag, record) == TZTBatchReader::TStep::Record) {
          Keep(recordTag, std::string(record));
          ++records;
        }
        std::lock_guard lock(FLock);
        FBatchShapes.push_back({records, payload.size()});
      } else {
        Keep(tag, payload);
      }
      while (Stall && !FStop) std::this_thread::sleep_for(std::chrono::milliseconds(1));
      if (FStop) break;
      if (!WriteReply(fd, tag == ztBatchTag ? records * Reply.load() : Reply.load(), error)) break;
    }
    close(fd);
  }

  std::string FPath;
  int FListen = -1;
  std::atomic<bool> FStop{false};
  std::thread FThread;
  std::vector<std::thread> FConnections;
  std::mutex FLock;
  std::vector<TReceivedFrame> FFrames;
  std::vector<std::pair<uint32_t, std::size_t>> FBatchShapes;
};

// A child process that is ended with SIGKILL (if still running) and reaped when this goes away.
class TChildProcess {
 public:
  TChildProcess() = default;
  TChildProcess(const TChildProcess&) = delete;
  ~TChildProcess() { Kill(); }

  // Starts program with args; extraEnv entries "NAME=value" override the environment.
  bool Start(const std::string& program, const std::vector<std::string>& args,
             const std::vector<std::string>& extraEnv = {}, bool quiet = true) {
    std::vector<std::string> argStrings{program};
    argStrings.insert(argStrings.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (auto& a : argStrings) argv.push_back(a.data());
    argv.push_back(nullptr);
    std::vector<std::string> envStrings;
    for (char** e = environ; *e; ++e) {
      std::string entry = *e;
      bool overridden = false;
      for (auto& x : extraEnv)
        if (entry.substr(0, entry.find('=') + 1) == x.substr(0, x.find('=') + 1)) overridden = true;
      if (!overridden) envStrings.push_back(entry);
    }
    envStrings.insert(envStrings.end(), extraEnv.begin(), extraEnv.end());
    std::vector<char*> envp;
    for (auto& e : envStrings) envp.push_back(e.data());
    envp.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    // Neither output may stay tied to the test's own: a child outliving a test that died would
    // hold the test runner's pipe open and stall it until its time limit.
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    if (quiet) posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    int rc = posix_spawn(&FPid, program.c_str(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0) FPid = -1;
    return FPid > 0;
  }

  // Takes a process started elsewhere (a child of this test process) into this guard.
  void Adopt(pid_t pid) { FPid = pid; }
  pid_t Pid() const { return FPid; }
  bool Running() const { return FPid > 0; }

  // Sends sig and waits at most timeoutMs for the exit; the exit status, or -1.
  int Signal(int sig, int timeoutMs = 5000) {
    if (FPid <= 0) return -1;
    kill(FPid, sig);
    return Wait(timeoutMs);
  }
  int Wait(int timeoutMs = 5000) {
    if (FPid <= 0) return FStatus;
    int status = 0;
    bool done = WaitUntil([&] { return waitpid(FPid, &status, WNOHANG) == FPid; }, timeoutMs);
    if (!done) return -1;
    FPid = -1;
    FStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return FStatus;
  }
  void Kill() {
    if (FPid > 0) {
      kill(FPid, SIGKILL);
      int status = 0;
      waitpid(FPid, &status, 0);
      FPid = -1;
    }
  }

 private:
  pid_t FPid = -1;
  int FStatus = -1;
};

// The process id of whatever serves the socket at path, or -1.
inline pid_t SocketServerPid(const std::string& path) {
  std::string error;
  int fd = ConnectUnixSocket(path, error);
  if (fd < 0) return -1;
  ucred cred{};
  socklen_t len = sizeof cred;
  pid_t pid = getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &cred, &len) == 0 ? cred.pid : -1;
  close(fd);
  return pid;
}

inline bool SocketAnswers(const std::string& path) {
  std::string error;
  int fd = ConnectUnixSocket(path, error);
  if (fd < 0) return false;
  close(fd);
  return true;
}

// Every message of a log file, decoded; stops at the first record that does not decode.
inline std::vector<TZentrailMessage> ReadLog(const std::string& path, std::string* problem = nullptr) {
  std::vector<TZentrailMessage> out;
  TZentrailFileSource source;
  std::string error;
  if (!source.Open(path, error)) {
    if (problem) *problem = error;
    return out;
  }
  TZentrailLogReader reader(source);
  TZentrailMessage m;
  for (;;) {
    auto r = reader.Next(m);
    if (r == TZentrailRecordResult::Ok) {
      out.push_back(m);
      continue;
    }
    if (r != TZentrailRecordResult::End && problem) *problem = reader.Error().empty() ? "bad record" : reader.Error();
    break;
  }
  return out;
}

inline std::string BinaryPath(const std::string& relative) {
  return std::string(ZENTRAIL_BINARY_DIR) + "/" + relative;
}

// Points the registry file at the given dispatcher program (or a missing one).
inline void RegisterDispatcher(const std::string& program) {
  const char* reg = std::getenv("ZENTRAIL_REGISTRY");
  FILE* f = std::fopen(reg, "w");
  std::fprintf(f, "[Software\\Orvan\\Zentrail\\5.0]\nDispatcher=%s\n", program.c_str());
  std::fclose(f);
}

}  // namespace zentrail::test
