// The zentrail-send command, run as a user would run it.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "DispatcherFixture.h"
#include "TestEnvironment.h"

using namespace zentrail;
using namespace zentrail::test;
namespace fs = std::filesystem;

namespace {

struct SendTest : ::testing::Test {
  TChildProcess dispatcher;
  fs::path dir;
  std::string socket;

  void SetUp() override {
    std::string error;
    socket = DispatcherSocketPath(error);
    dir = MakeTempDir("send");
    RegisterDispatcher("/nonexistent/zentrail-dispatcher");
  }
  void StartDispatcher() {
    ASSERT_TRUE(dispatcher.Start(BinaryPath("src/dispatcher/zentrail-dispatcher"), {}));
    ASSERT_TRUE(WaitUntil([&] { return SocketAnswers(socket); }));
  }
  // Runs zentrail-send with the arguments (already quoted for the shell); its exit status.
  int Send(const std::string& args, const std::string& input = "", std::string* output = nullptr) {
    fs::path in = dir / "stdin.txt", out = dir / "out.txt";
    WriteFile(in, input);
    std::string command = "timeout 20 '" + BinaryPath("tools/zentrail-send/zentrail-send") + "' " + args + " <'" +
                          in.string() + "' >'" + out.string() + "' 2>&1";
    int rc = std::system(command.c_str());
    if (output) *output = ReadFile(out);
    return WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
  }
};

}  // namespace

TEST_F(SendTest, SendsOneMessageOrEachLineAndSaysWhetherItWasTaken) {
  StartDispatcher();
  std::string log = (dir / "send.ztl").string();
  WriteFile(dir / "details.txt", "key=value\r\nother=1");
  std::string dest = "--dest 'File[Path=" + log + "]' ";
  EXPECT_EQ(Send(dest + "--type warning --category Build --app ci-job --details-file '" + (dir / "details.txt").string() +
                 "' 'disk almost full'"),
            0);
  EXPECT_EQ(Send(dest + "--type 24 -- '--looks like an option'"), 0);
  EXPECT_EQ(Send(dest + "--lines --type error", "first line\nsecond line\r\n\nlast"), 0);
  EXPECT_EQ(dispatcher.Signal(SIGTERM), 0);

  auto messages = ReadLog(log);
  ASSERT_EQ(messages.size(), 6u);
  EXPECT_EQ(messages[0].MsgType, ztmWarning);
  EXPECT_EQ(messages[0].MsgText, "disk almost full");
  EXPECT_EQ(messages[0].Category, "Build");
  EXPECT_EQ(messages[0].AppName, "ci-job");
  EXPECT_EQ(messages[0].Details, "key=value\r\nother=1");
  EXPECT_EQ(messages[0].MsgContent, ztmTextFile);
  EXPECT_EQ(messages[1].MsgContent, ztmText);
  EXPECT_EQ(messages[1].MsgType, ztmLevel1);
  EXPECT_EQ(messages[1].MsgText, "--looks like an option");
  EXPECT_EQ(messages[1].AppName, "zentrail-send");
  std::vector<std::string> lines{"first line", "second line", "", "last"};
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(messages[2 + i].MsgType, ztmError);
    EXPECT_EQ(messages[2 + i].MsgText, lines[i]);
  }
}

TEST_F(SendTest, StampIsTheSystemClockInTheStoresDayCount) {
  StartDispatcher();
  std::string log = (dir / "stamp.ztl").string();
  // The expected day comes from the C library's calendar and the one fixed point of the format,
  // 1 January 2000 = day 730,120, so that no constant of the client takes part.
  auto expected = [] {
    time_t now = time(nullptr);
    tm local{};
    localtime_r(&now, &local);
    tm day{};
    day.tm_year = local.tm_year;
    day.tm_mon = local.tm_mon;
    day.tm_mday = local.tm_mday;
    tm y2k{};
    y2k.tm_year = 100;
    y2k.tm_mday = 1;
    int64_t ms = (local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec) * 1000LL;
    return std::pair<int64_t, int64_t>(730120 + (timegm(&day) - timegm(&y2k)) / 86400, ms);
  };
  auto before = expected();
  EXPECT_EQ(Send("--dest 'File[Path=" + log + "]' 'what day is it'"), 0);
  auto after = expected();
  EXPECT_EQ(dispatcher.Signal(SIGTERM), 0);
  auto messages = ReadLog(log);
  ASSERT_EQ(messages.size(), 1u);
  const TZentrailTimeStamp& t = messages[0].TimeStamp;
  int64_t stamp = t.Date * 86400000LL + t.Time;
  // Whole seconds from the C library against milliseconds in the stamp.
  EXPECT_GE(stamp, before.first * 86400000LL + before.second) << "date " << t.Date << " time " << t.Time;
  EXPECT_LE(stamp, after.first * 86400000LL + after.second + 1000) << "date " << t.Date << " time " << t.Time;
}

TEST_F(SendTest, SendsOverTcpWhenAsked) {
  std::string error;
  fs::path portFile = fs::path(GetRuntimeFolder(error)) / "dispatcher-tcp-port";
  fs::remove(portFile);  // a killed dispatcher leaves its file behind
  ASSERT_TRUE(dispatcher.Start(BinaryPath("src/dispatcher/zentrail-dispatcher"), {"--tcp-port", "0"}));
  int port = 0;
  ASSERT_TRUE(WaitUntil([&] {
    std::ifstream in(portFile);
    return static_cast<bool>(in >> port);
  }));
  std::string log = (dir / "tcp.ztl").string();
  EXPECT_EQ(Send("--tcp 127.0.0.1:" + std::to_string(port) + " --dest 'File[Path=" + log + "]' 'by tcp'"), 0);
  EXPECT_EQ(dispatcher.Signal(SIGTERM), 0);
  auto messages = ReadLog(log);
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].MsgText, "by tcp");
  std::string out;
  EXPECT_EQ(Send("--tcp 127.0.0.1:" + std::to_string(port) + " 'nobody there now'", "", &out), 1) << out;
}

TEST_F(SendTest, ReportsFailuresAndWrongArguments) {
  std::string out;
  // No dispatcher runs and none can be started.
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Send("'hello'", "", &out), 1);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_NE(out.find("not taken"), std::string::npos) << out;

  EXPECT_EQ(Send("--help", "", &out), 0);
  EXPECT_NE(out.find("Usage: zentrail-send"), std::string::npos);
  EXPECT_EQ(Send("--type bogus 'x'", "", &out), 2);
  EXPECT_NE(out.find("unknown message type: bogus"), std::string::npos) << out;
  EXPECT_EQ(Send("--type 91 'x'", "", &out), 2) << "route control types are not for users";
  EXPECT_EQ(Send("", "", &out), 2);
  EXPECT_EQ(Send("--lines 'text too'", "", &out), 2);
  EXPECT_EQ(Send("--dest 'Printer[a=b]' 'x'", "", &out), 2);
  EXPECT_NE(out.find("Invalid Destination Type -- Printer is not recognized"), std::string::npos) << out;
  EXPECT_EQ(Send("--details-file /nonexistent/file 'x'", "", &out), 2);
}

namespace {

// Writes lines "line FIRST" up to "line LAST - 1" into the pipe.
void WriteLines(int fd, int first, int last) {
  std::string text;
  for (int i = first; i < last; ++i) text += "line " + std::to_string(i) + "\n";
  ASSERT_EQ(write(fd, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

}  // namespace

TEST_F(SendTest, LinesReportWhereTheyStoppedAndRetryWaitsForTheDispatcher) {
  for (bool retry : {false, true}) {
    SCOPED_TRACE(retry ? "with --retry" : "without --retry");
    StartDispatcher();
    std::string log = (dir / (retry ? "retry.ztl" : "stop.ztl")).string();
    fs::path out = dir / "lines.txt";
    int pipeFds[2];
    ASSERT_EQ(pipe2(pipeFds, O_CLOEXEC), 0);
    TChildProcess sender;
    std::vector<std::string> args{"--lines", "--dest", "File[Path=" + log + "]"};
    if (retry) args.insert(args.end(), {"--retry", "30"});
    StartSender(sender, args, pipeFds[0], out);
    close(pipeFds[0]);
    // The sender has taken exactly these lines, and waits for more, when the dispatcher dies.
    WriteLines(pipeFds[1], 0, 1000);
    ASSERT_TRUE(WaitUntil([&] { return ReadLog(log).size() == 1000; }, 10000));
    dispatcher.Signal(SIGKILL);
    WriteLines(pipeFds[1], 1000, 2000);
    if (retry) StartDispatcher();
    close(pipeFds[1]);
    int status = sender.Wait(20000);
    std::string said = ReadFile(out);
    if (retry) {
      EXPECT_EQ(status, 0) << said;
      EXPECT_NE(said.find("line 1001 was not taken; trying again"), std::string::npos) << said;
      EXPECT_EQ(dispatcher.Signal(SIGTERM), 0);
    } else {
      EXPECT_EQ(status, 1) << said;
      EXPECT_NE(said.find("1000 lines taken; first line not taken: line 1001: line 1000\n"), std::string::npos) << said;
    }
    auto messages = ReadLog(log);
    ASSERT_EQ(messages.size(), retry ? 2000u : 1000u);
    for (std::size_t i = 0; i < messages.size(); ++i) ASSERT_EQ(messages[i].MsgText, "line " + std::to_string(i));
  }
}
