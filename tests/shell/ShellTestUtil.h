#pragma once
// Helpers shared by the shell tests: waiting on a condition while the event loop runs, and a
// blocking channel client on its own thread.

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include "ZTChannel.h"

namespace zentrail::test {

// Runs the event loop until cond holds or the deadline passes; returns cond's last value.
inline bool SpinUntil(const std::function<bool()>& cond, int deadlineMs = 10000) {
  QElapsedTimer timer;
  timer.start();
  while (!cond()) {
    if (timer.elapsed() > deadlineMs) return cond();
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
  }
  return true;
}

// A client that sends frames from a thread of its own and records each reply (1, 0 or -1).
class TChannelClient {
 public:
  struct Frame {
    uint32_t Tag;
    std::string Bytes;
  };
  // Connects at once (on the calling thread) so that a failure shows before the thread starts.
  explicit TChannelClient(const std::string& path) { FFd = ConnectUnixSocket(path, FError); }
  ~TChannelClient() {
    Join();
    if (FFd >= 0) ::close(FFd);
  }
  bool Connected() const { return FFd >= 0; }
  int Fd() const { return FFd; }

  void Send(std::vector<Frame> frames) {
    FThread = std::thread([this, frames = std::move(frames)] {
      for (const Frame& f : frames) {
        std::string error;
        int reply = SendFrameAndWaitReply(FFd, f.Tag, f.Bytes, error);
        FReplies.push_back(reply);
        if (reply < 0) break;
      }
      FDone = true;
    });
  }
  bool Done() const { return FDone; }
  void Join() {
    if (FThread.joinable()) FThread.join();
  }
  // Valid once Done().
  const std::vector<int>& Replies() const { return FReplies; }

 private:
  int FFd = -1;
  std::string FError;
  std::thread FThread;
  std::vector<int> FReplies;
  std::atomic<bool> FDone{false};
};

}  // namespace zentrail::test
