// The built zentrail-viewer as a child process: single instance, live channel and SIGTERM.
#include <gtest/gtest.h>

#include <QProcess>
#include <csignal>
#include <filesystem>

#include "ShellTestUtil.h"
#include "TestEnvironment.h"
#include "ZentrailMessage.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

const char* const kViewer = ZENTRAIL_BINARY_DIR "/src/shell/zentrail-viewer";

bool Answers(const std::string& path) {
  std::string error;
  int fd = ConnectUnixSocket(path, error);
  if (fd < 0) return false;
  ::close(fd);
  return true;
}

int SendOne(const std::string& path, const std::string& text) {
  std::string error;
  int fd = ConnectUnixSocket(path, error);
  if (fd < 0) return -1;
  TZentrailMessage m;
  m.MsgText = text;
  m.TimeStamp = {1000, ztDateOf2000};
  int reply = SendFrameAndWaitReply(fd, ztPacketTag, m.GetAsTransportPacket(), error);
  ::close(fd);
  return reply;
}

}  // namespace

TEST(ViewerProcess, SecondInstanceEndsAtOnceAndTheFirstGoesOn) {
  ASSERT_TRUE(std::filesystem::exists(kViewer)) << kViewer;
  std::filesystem::path runtime = MakeTempDir("viewer-runtime");
  std::filesystem::permissions(runtime, std::filesystem::perms::owner_all, std::filesystem::perm_options::replace);
  std::string socket = (runtime / "viewer").string();
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert(QStringLiteral("ZENTRAIL_RUNTIME_DIR"), QString::fromStdString(runtime.string()));
  env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));

  QProcess first;
  first.setProcessEnvironment(env);
  first.start(QString::fromLatin1(kViewer), {});
  ASSERT_TRUE(first.waitForStarted(10000));
  ASSERT_TRUE(SpinUntil([&] { return Answers(socket); }, 20000)) << "the first viewer never listened";
  EXPECT_TRUE(std::filesystem::exists(runtime / "Zentrail Live Viewer Mutex"));
  EXPECT_EQ(SendOne(socket, "to the first"), 1);

  // The second instance ends at once, silently, with status 0; its file is not handed on.
  std::filesystem::path log = MakeTempDir("logs") / "some.ztl";
  WriteFile(log, "not opened");
  QProcess second;
  second.setProcessEnvironment(env);
  second.start(QString::fromLatin1(kViewer), {QString::fromStdString(log.string())});
  ASSERT_TRUE(second.waitForFinished(10000));
  EXPECT_EQ(second.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(second.exitCode(), 0);
  EXPECT_TRUE(second.readAllStandardOutput().isEmpty());

  // The first is untouched and still takes messages.
  EXPECT_EQ(first.state(), QProcess::Running);
  EXPECT_EQ(SendOne(socket, "still there"), 1);

  // SIGTERM closes the window by the ordinary path: a clean exit that removes the socket.
  first.terminate();
  ASSERT_TRUE(first.waitForFinished(10000));
  EXPECT_EQ(first.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(first.exitCode(), 0);
  EXPECT_FALSE(std::filesystem::exists(socket));

  // With the first gone, a new viewer starts normally.
  QProcess third;
  third.setProcessEnvironment(env);
  third.start(QString::fromLatin1(kViewer), {});
  ASSERT_TRUE(third.waitForStarted(10000));
  EXPECT_TRUE(SpinUntil([&] { return Answers(socket); }, 20000));
  third.kill();  // SIGKILL: the lock goes with the process
  third.waitForFinished(10000);
  QProcess fourth;
  fourth.setProcessEnvironment(env);
  fourth.start(QString::fromLatin1(kViewer), {});
  ASSERT_TRUE(fourth.waitForStarted(10000));
  EXPECT_TRUE(SpinUntil([&] { return Answers(socket); }, 20000)) << "a killed viewer left a stale lock or socket";
  // Ctrl+C in a terminal takes the same path as SIGTERM.
  ::kill(static_cast<pid_t>(fourth.processId()), SIGINT);
  ASSERT_TRUE(fourth.waitForFinished(10000));
  EXPECT_EQ(fourth.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(fourth.exitCode(), 0);
}
