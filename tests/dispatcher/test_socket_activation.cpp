// The dispatcher started by a service manager with its listening socket: systemd's own
// systemd-socket-activate plays the manager, so the hand-over is checked against the convention as
// systemd implements it rather than as the dispatcher reads it.
#include <fcntl.h>
#include <spawn.h>

#include <sstream>

#include "DispatcherFixture.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

const char* const kActivator = "/usr/bin/systemd-socket-activate";

// systemd-socket-activate passes only the variables named with -E; the runtime folder and the
// registry file of the test must reach the dispatcher.
std::vector<std::string> ActivatorArgs(const std::vector<std::string>& sockets) {
  std::vector<std::string> args{"-E", "ZENTRAIL_RUNTIME_DIR", "-E", "ZENTRAIL_REGISTRY"};
  for (const auto& s : sockets) {
    args.push_back("-l");
    args.push_back(s);
  }
  args.push_back(Program());
  return args;
}

// Starts program with both outputs into the file output; the guard reaps it.
void StartCapturing(TChildProcess& guard, const std::string& program, const std::vector<std::string>& args,
                    const fs::path& output) {
  std::vector<std::string> argStrings{program};
  argStrings.insert(argStrings.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (auto& a : argStrings) argv.push_back(a.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawn_file_actions_adddup2(&actions, 1, 2);
  pid_t pid = -1;
  int rc = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  ASSERT_EQ(rc, 0);
  guard.Adopt(pid);
}

// Whether a socket listens on path, read from the kernel's table so that asking does not knock
// (a knock would start the dispatcher): the socket file appears at bind, before listen.
bool Listening(const std::string& path) {
  std::ifstream table("/proc/net/unix");
  std::string line;
  while (std::getline(table, line)) {
    std::istringstream fields(line);
    std::string num, refs, protocol, flags, type, state, inode, name;
    if (fields >> num >> refs >> protocol >> flags >> type >> state >> inode >> name && name == path &&
        flags == "00010000")
      return true;
  }
  return false;
}

bool SendToFile(const fs::path& log, const std::string& text) {
  TZentrailDestination destination("File[Path=" + log.string() + "]");
  TZentrailLogger logger;
  logger.SetDestination(&destination);
  bool taken = logger.Send(text) != 0;
  logger.SetDestination(nullptr);
  return taken;
}

}  // namespace

TEST_F(DispatcherTest, TakesTheSocketOfAServiceManagerAndLeavesItToTheManager) {
  if (!fs::exists(kActivator)) GTEST_SKIP() << kActivator << " is missing (package systemd)";
  const fs::path log = dir / "activated.ztl";
  TChildProcess manager;
  StartCapturing(manager, kActivator, ActivatorArgs({socket}), dir / "manager.txt");
  ASSERT_TRUE(WaitUntil([&] { return Listening(socket); })) << ReadFile(dir / "manager.txt");

  // The first client's connection starts the dispatcher, which then answers on the manager's socket.
  EXPECT_TRUE(SendToFile(log, "first through the manager's socket"));
  EXPECT_TRUE(SendToFile(log, "second"));
  EXPECT_EQ(SocketServerPid(socket), manager.Pid()) << "the dispatcher made a socket of its own";

  // It ends as usual on SIGTERM, but the socket is the manager's and stays for the next start.
  EXPECT_EQ(manager.Signal(SIGTERM), 0) << ReadFile(dir / "manager.txt");
  EXPECT_TRUE(fs::exists(socket));
  auto messages = ReadLog(log.string());
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0].MsgText, "first through the manager's socket");
  EXPECT_EQ(messages[1].MsgText, "second");

  // Without a manager the dispatcher makes its own socket in place of the one left behind; passed
  // variables meant for another process are not taken as its own.
  StartDispatcher({}, {"LISTEN_PID=1", "LISTEN_FDS=1"});
  EXPECT_EQ(SocketServerPid(socket), dispatcher.Pid());
  EXPECT_TRUE(SendToFile(log, "third, on demand"));
  EXPECT_EQ(dispatcher.Signal(SIGTERM), 0);
  EXPECT_FALSE(fs::exists(socket));
  EXPECT_EQ(ReadLog(log.string()).size(), 3u);
}

TEST_F(DispatcherTest, RefusesSocketsThatClientsWouldNotFind) {
  if (!fs::exists(kActivator)) GTEST_SKIP() << kActivator << " is missing (package systemd)";
  const std::string elsewhere = (dir / "elsewhere").string();
  const std::string second = (dir / "second").string();
  struct {
    std::vector<std::string> Sockets;
    std::string Says;
  } cases[] = {
      {{elsewhere}, "listens on " + elsewhere + ", but clients look for the dispatcher on " + socket},
      {{socket, second}, "passed 2 sockets"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Says);
    TChildProcess manager;
    const fs::path output = dir / "refused.txt";
    StartCapturing(manager, kActivator, ActivatorArgs(c.Sockets), output);
    ASSERT_TRUE(WaitUntil([&] { return Listening(c.Sockets.front()); })) << ReadFile(output);
    // A knock on the socket makes the manager start the dispatcher, which ends at once and says why.
    SocketAnswers(c.Sockets.front());
    EXPECT_EQ(manager.Wait(8000), 1);
    EXPECT_NE(ReadFile(output).find(c.Says), std::string::npos) << ReadFile(output);
    for (const auto& s : c.Sockets) fs::remove(s);
  }
}
