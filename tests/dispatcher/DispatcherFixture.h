#pragma once
// The dispatcher program under test: started as a child in the test's own runtime folder, with
// helpers to put frames straight on its socket.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "../logging/ZentrailTestServers.h"
#include "TestEnvironment.h"
#include "ZentrailLogging.h"

namespace zentrail::test {

namespace fs = std::filesystem;

inline std::string Program() { return BinaryPath("src/dispatcher/zentrail-dispatcher"); }

struct DispatcherTest : ::testing::Test {
  TChildProcess dispatcher;
  std::string socket, viewerSocket;
  fs::path dir;

  void SetUp() override {
    std::string error;
    socket = DispatcherSocketPath(error);
    viewerSocket = ViewerSocketPath(error);
    ASSERT_FALSE(socket.empty()) << error;
    dir = MakeTempDir("dispatch");
    // No test may start a dispatcher by accident: the client finds none unless a test says so.
    RegisterDispatcher("/nonexistent/zentrail-dispatcher");
  }
  void TearDown() override { dispatcher.Kill(); }

  void StartDispatcher(const std::vector<std::string>& args = {}, const std::vector<std::string>& env = {}) {
    ASSERT_TRUE(dispatcher.Start(Program(), args, env));
    ASSERT_TRUE(WaitUntil([&] { return SocketAnswers(socket); })) << "dispatcher did not come up";
  }
  // A frame straight on a socket; the reply, or -1.
  static int RawSend(int fd, uint32_t tag, std::string_view payload) {
    std::string error;
    return SendFrameAndWaitReply(fd, tag, payload, error);
  }
  static std::string Open(const std::string& route, const std::string& destination) {
    TZentrailMessage m;
    m.MsgType = ztmOpenRoute;
    m.RouteKey = route;
    m.MsgText = destination;
    return m.GetAsTransportPacket();
  }
  static std::string Text(const std::string& route, const std::string& text) {
    TZentrailMessage m;
    m.RouteKey = route;
    m.MsgText = text;
    return m.GetAsTransportPacket();
  }
};

inline int ReadPortFile(const char* name = "dispatcher-tcp-port") {
  std::string error;
  std::string path = GetRuntimeFolder(error) + "/" + name;
  int port = 0;
  WaitUntil([&] {
    std::ifstream in(path);
    return static_cast<bool>(in >> port);
  });
  return port;
}
// Runs zentrail-send with standard input from stdinFd and both outputs into the file output;
// the child's pid, reaped by the guard.
inline void StartSender(TChildProcess& guard, const std::vector<std::string>& args, int stdinFd,
                        const fs::path& output) {
  std::string program = BinaryPath("tools/zentrail-send/zentrail-send");
  std::vector<std::string> argStrings{program};
  argStrings.insert(argStrings.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (auto& a : argStrings) argv.push_back(a.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, stdinFd, 0);
  posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawn_file_actions_adddup2(&actions, 1, 2);
  pid_t pid = -1;
  int rc = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  ASSERT_EQ(rc, 0);
  guard.Adopt(pid);
}

// Ends a dispatcher that is no child of this process (one a client started) and waits until it
// has let go of its socket.
inline void EndForeignDispatcher(pid_t pid, const std::string& socket) {
  kill(pid, SIGTERM);
  // Ended means dead or a zombie (which has let go of its lock too); whoever its parent is reaps it.
  auto ended = [&] {
    std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
    std::string stat;
    if (!std::getline(in, stat)) return true;
    auto close = stat.rfind(')');
    return close != std::string::npos && close + 2 < stat.size() && (stat[close + 2] == 'Z' || stat[close + 2] == 'X');
  };
  EXPECT_TRUE(WaitUntil(ended, 8000)) << "the dispatcher did not end";
  EXPECT_FALSE(fs::exists(socket));
}

}  // namespace zentrail::test
