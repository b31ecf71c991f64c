// The channel server against a recording target, over real sockets in the test's runtime folder.
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/wait.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "ShellTestUtil.h"
#include "TestEnvironment.h"
#include "ZTChannelServer.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

class TRecordingTarget : public IZTCopyDataTarget {
 public:
  std::vector<std::pair<uint32_t, std::string>> Frames;
  std::vector<std::string> Failures;
  uint32_t WMCopyData(uint32_t tag, std::string_view data) override {
    if (data == "throw") throw std::runtime_error("cannot read the packet");
    if (data == "abort") throw EZTChannelAbort("inflated size exceeds the bound");
    Frames.emplace_back(tag, std::string(data));
    return tag == 0x7F000004 ? 1 : 0;
  }
  void CopyDataFailed(const std::string& text) override { Failures.push_back(text); }
};

std::string SocketPath(const char* name) { return (MakeTempDir("chan") / name).string(); }

// Writes raw bytes on a fresh connection, for frames that a well-behaved client never sends.
int RawConnect(const std::string& path) {
  std::string error;
  return ConnectUnixSocket(path, error);
}

std::string Header(uint32_t tag, uint32_t length) {
  uint32_t be[2] = {htonl(tag), htonl(length)};
  return std::string(reinterpret_cast<const char*>(be), 8);
}

}  // namespace

TEST(ChannelServer, AnswersEachFrameAfterTheTargetAndServesClientsInTurn) {
  TRecordingTarget target;
  TZTChannelServer server(target);
  std::string path = SocketPath("viewer");
  std::string error;
  ASSERT_TRUE(server.Listen(path, error)) << error;

  // A second server on the same path is refused while the first answers.
  TRecordingTarget other;
  TZTChannelServer second(other);
  EXPECT_FALSE(second.Listen(path, error));
  EXPECT_FALSE(error.empty());

  const int kEach = 300;
  std::vector<TChannelClient::Frame> a, b;
  for (int i = 0; i < kEach; ++i) {
    a.push_back({0x7F000004, "A" + std::to_string(i) + std::string(100 + i % 50, 'a')});
    b.push_back({0x7F000004, "B" + std::to_string(i) + std::string(3000 + i, 'b')});
  }
  a.push_back({0x7F000006, "unknown tag"});
  TChannelClient ca(path), cb(path);
  ASSERT_TRUE(ca.Connected() && cb.Connected());
  ca.Send(a);
  cb.Send(b);
  ASSERT_TRUE(SpinUntil([&] { return ca.Done() && cb.Done(); }));
  ca.Join();
  cb.Join();

  ASSERT_EQ(ca.Replies().size(), static_cast<size_t>(kEach + 1));
  for (int i = 0; i < kEach; ++i) EXPECT_EQ(ca.Replies()[i], 1);
  EXPECT_EQ(ca.Replies().back(), 0);
  ASSERT_EQ(cb.Replies().size(), static_cast<size_t>(kEach));

  // Every frame arrived whole, and each client's frames in their order.
  ASSERT_EQ(target.Frames.size(), static_cast<size_t>(2 * kEach + 1));
  int nextA = 0, nextB = 0;
  for (const auto& [tag, bytes] : target.Frames) {
    if (bytes[0] == 'A') {
      EXPECT_EQ(bytes, a[nextA].Bytes);
      ++nextA;
    } else if (bytes[0] == 'B') {
      EXPECT_EQ(bytes, b[nextB].Bytes);
      ++nextB;
    } else {
      EXPECT_EQ(tag, 0x7F000006u);
    }
  }
  EXPECT_EQ(nextA, kEach);
  EXPECT_EQ(nextB, kEach);
  EXPECT_EQ(server.FramesServed(), static_cast<uint64_t>(2 * kEach + 1));
}

TEST(ChannelServer, MisbehavingClientsHarmNobodyElse) {
  TRecordingTarget target;
  TZTChannelServer server(target);
  std::string path = SocketPath("viewer");
  std::string error;
  ASSERT_TRUE(server.Listen(path, error)) << error;

  // Half a frame, then gone: that frame is lost and nothing else.
  int half = RawConnect(path);
  ASSERT_GE(half, 0);
  std::string partial = Header(0x7F000004, 1000) + std::string(400, 'h');
  ASSERT_TRUE(WriteAll(half, partial.data(), partial.size(), error));

  // A frame whose length is above the bound: answered 0, connection closed, payload never read.
  int huge = RawConnect(path);
  ASSERT_GE(huge, 0);
  std::string big = Header(0x7F000004, ztMaxFrameSize + 1);
  ASSERT_TRUE(WriteAll(huge, big.data(), big.size(), error));

  // Frames that make the target fail: reply 0, the failure reported, the connection goes on;
  // an abort closes the connection after its reply.
  TChannelClient failing(path);
  failing.Send({{0x7F000004, "throw"}, {0x7F000004, "after throw"}, {0x7F000004, "abort"},
                {0x7F000004, "never"}});

  TChannelClient good(path);
  std::vector<TChannelClient::Frame> frames;
  for (int i = 0; i < 50; ++i) frames.push_back({0x7F000004, "good " + std::to_string(i)});
  good.Send(frames);

  ASSERT_TRUE(SpinUntil([&] { return failing.Done() && good.Done(); }));
  uint32_t reply = 99;
  ASSERT_TRUE(ReadReply(huge, reply, error)) << error;
  EXPECT_EQ(reply, 0u);
  char byte;
  EXPECT_EQ(::read(huge, &byte, 1), 0) << "the connection of an oversize frame is closed";
  ::close(huge);
  ::close(half);

  EXPECT_EQ(failing.Replies(), (std::vector<int>{0, 1, 0, -1}));
  EXPECT_EQ(target.Failures,
            (std::vector<std::string>{"cannot read the packet", "inflated size exceeds the bound"}));
  EXPECT_EQ(good.Replies(), std::vector<int>(50, 1));

  ASSERT_TRUE(SpinUntil([&] { return server.ClientCount() == 1; }))
      << "only the well-behaved client stays connected, have " << server.ClientCount();
  int stored = 0;
  for (const auto& f : target.Frames) {
    EXPECT_NE(f.second, "never");
    EXPECT_NE(f.second.substr(0, 1), "h");
    if (f.second.rfind("good ", 0) == 0) ++stored;
  }
  EXPECT_EQ(stored, 50);
}

TEST(ChannelServer, SeveralFramesInOneWriteAreAllAnswered) {
  TRecordingTarget target;
  TZTChannelServer server(target);
  std::string path = SocketPath("viewer");
  std::string error;
  ASSERT_TRUE(server.Listen(path, error)) << error;

  int fd = RawConnect(path);
  ASSERT_GE(fd, 0);
  std::string burst;
  for (int i = 0; i < 20; ++i) AppendFrame(burst, 0x7F000004, "burst " + std::to_string(i));
  ASSERT_TRUE(WriteAll(fd, burst.data(), burst.size(), error));
  ASSERT_TRUE(SpinUntil([&] { return target.Frames.size() == 20; }));
  for (int i = 0; i < 20; ++i) {
    uint32_t reply = 0;
    ASSERT_TRUE(ReadReply(fd, reply, error)) << error;
    EXPECT_EQ(reply, 1u);
    EXPECT_EQ(target.Frames[i].second, "burst " + std::to_string(i));
  }
  ::close(fd);

  server.Close();
  EXPECT_FALSE(std::filesystem::exists(path)) << "the socket file goes with the server";
}

TEST(ChannelServer, PeersOfAnotherUserAreClosedUnanswered) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root to connect as another user";
  TRecordingTarget target;
  TZTChannelServer server(target);
  // A folder and socket that the other user may reach, so that only the peer check stands between.
  std::filesystem::path dir = MakeTempDir("shared");
  std::filesystem::permissions(dir, std::filesystem::perms::all, std::filesystem::perm_options::replace);
  for (auto p = dir.parent_path(); p != p.root_path(); p = p.parent_path())
    std::filesystem::permissions(p, std::filesystem::perms::others_exec, std::filesystem::perm_options::add);
  std::string path = (dir / "viewer").string();
  std::string error;
  ASSERT_TRUE(server.Listen(path, error)) << error;
  std::filesystem::permissions(path, std::filesystem::perms::all, std::filesystem::perm_options::replace);

  int result[2];
  ASSERT_EQ(::pipe(result), 0);
  pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    // nobody: connect, send one frame, report the reply (or -1 for a closed connection).
    char code = 'e';
    if (::setgid(65534) == 0 && ::setuid(65534) == 0) {
      std::string err;
      int fd = ConnectUnixSocket(path, err);
      if (fd < 0) {
        code = 'c';
      } else {
        int reply = SendFrameAndWaitReply(fd, 0x7F000004, "from another user", err);
        code = reply < 0 ? 'x' : static_cast<char>('0' + reply);
      }
    }
    [[maybe_unused]] ssize_t n = ::write(result[1], &code, 1);
    _exit(0);
  }
  ::close(result[1]);
  char code = 0;
  // The child blocks until the server has looked at it; keep the loop running meanwhile.
  ASSERT_TRUE(SpinUntil([&] {
    pollfd p{result[0], POLLIN, 0};
    return ::poll(&p, 1, 0) == 1;
  }));
  ASSERT_EQ(::read(result[0], &code, 1), 1);
  ::close(result[0]);
  ::waitpid(child, nullptr, 0);
  EXPECT_EQ(code, 'x') << "closed without an answer";
  EXPECT_TRUE(target.Frames.empty());
}
