#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "EnvGuard.h"
#include "TestEnvironment.h"
#include "ZTChannel.h"
#include "ZentrailMessage.h"

namespace fs = std::filesystem;
using namespace zentrail;
using zentrail::test::EnvGuard;

namespace {

mode_t ModeOf(const std::string& path) {
  struct stat st {};
  EXPECT_EQ(::stat(path.c_str(), &st), 0) << path;
  return st.st_mode & 07777;
}

std::string Bytes(std::initializer_list<int> values) {
  std::string s;
  for (int v : values) s.push_back(static_cast<char>(v));
  return s;
}

struct Frame {
  uint32_t tag;
  std::string payload;
};

// Reads frames through the decoder in small uneven chunks, as a non-blocking server sees them,
// and answers 1 for packets and 0 for anything else.
std::vector<Frame> ServeUntilClosed(int fd) {
  std::vector<Frame> frames;
  TZTFrameDecoder decoder;
  char buf[7];
  std::string error;
  for (;;) {
    ssize_t n = ::read(fd, buf, sizeof buf);
    if (n <= 0) break;
    decoder.Feed(buf, static_cast<std::size_t>(n));
    uint32_t tag;
    std::string_view payload;
    while (decoder.Next(tag, payload)) {
      frames.push_back({tag, std::string(payload)});
      decoder.Pop();
      if (!WriteReply(fd, tag == ztPacketTag ? 1 : 0, error)) return frames;
    }
  }
  return frames;
}

}  // namespace

TEST(Channel, RuntimeFolderIsMadePrivateAndCheckedForAccess) {
  EnvGuard env;
  fs::path base = zentrail::test::MakeTempDir("rt");
  std::string wanted = (base / "deep/er/runtime").string();
  env.Set("ZENTRAIL_RUNTIME_DIR", wanted + "/");
  std::string error;
  EXPECT_EQ(GetRuntimeFolder(error), wanted) << error;
  EXPECT_EQ(ModeOf(wanted), 0700u);
  EXPECT_EQ(ViewerSocketPath(error), wanted + "/viewer");
  EXPECT_EQ(DispatcherSocketPath(error), wanted + "/dispatcher");

  // A folder that group or others can enter is refused, and the message names it.
  ::chmod(wanted.c_str(), 0755);
  error.clear();
  EXPECT_EQ(GetRuntimeFolder(error), "");
  EXPECT_NE(error.find(wanted), std::string::npos) << error;
  EXPECT_NE(error.find("0755"), std::string::npos) << error;
  EXPECT_EQ(ViewerSocketPath(error), "");
  ::chmod(wanted.c_str(), 0710);
  EXPECT_EQ(GetRuntimeFolder(error), "");
  ::chmod(wanted.c_str(), 0701);
  EXPECT_EQ(GetRuntimeFolder(error), "");
  ::chmod(wanted.c_str(), 0700);
  EXPECT_EQ(GetRuntimeFolder(error), wanted);

  // A file where the folder should be.
  std::string file = (base / "plainfile").string();
  zentrail::test::WriteFile(file, "x");
  env.Set("ZENTRAIL_RUNTIME_DIR", file);
  error.clear();
  EXPECT_EQ(GetRuntimeFolder(error), "");
  EXPECT_NE(error.find(file), std::string::npos) << error;
  EXPECT_TRUE(fs::is_regular_file(file));

  // A folder of another user.
  std::string foreign;
  if (::geteuid() == 0) {
    foreign = (base / "foreign").string();
    fs::create_directory(foreign);
    ::chmod(foreign.c_str(), 0700);
    ASSERT_EQ(::chown(foreign.c_str(), 65534, 65534), 0);
  } else {
    foreign = "/";
  }
  env.Set("ZENTRAIL_RUNTIME_DIR", foreign);
  error.clear();
  EXPECT_EQ(GetRuntimeFolder(error), "");
  EXPECT_NE(error.find("another user"), std::string::npos) << error;

  // Without the override the XDG runtime folder gets a private subfolder.
  env.Unset("ZENTRAIL_RUNTIME_DIR");
  fs::path xdg = base / "xdg";
  fs::create_directory(xdg);
  env.Set("XDG_RUNTIME_DIR", xdg.string());
  error.clear();
  EXPECT_EQ(GetRuntimeFolder(error), (xdg / "zentrail").string()) << error;
  EXPECT_EQ(ModeOf((xdg / "zentrail").string()), 0700u);
}

TEST(Channel, FramesTravelThroughTheListeningSocketAndAreAnswered) {
  std::string error;
  std::string path = ViewerSocketPath(error);
  ASSERT_FALSE(path.empty()) << error;
  int listener = ListenUnixSocket(path, error);
  ASSERT_GE(listener, 0) << error;
  EXPECT_EQ(ModeOf(path) & 077, 0u);

  bool sameUser = false;
  std::vector<Frame> received;
  std::thread server([&] {
    std::string acceptError;
    int fd = AcceptConnection(listener, false, acceptError);
    if (fd < 0) return;
    sameUser = PeerIsSameUser(fd);
    received = ServeUntilClosed(fd);
    ::close(fd);
  });

  int fd = ConnectUnixSocket(path, error);
  ASSERT_GE(fd, 0) << error;
  std::string big(1 << 20, '\0');
  for (std::size_t i = 0; i < big.size(); ++i) big[i] = static_cast<char>(i * 7 + i / 251);
  EXPECT_EQ(SendFrameAndWaitReply(fd, ztPacketTag, "hello", error), 1) << error;
  EXPECT_EQ(SendFrameAndWaitReply(fd, 0x12345678, "", error), 0) << error;
  EXPECT_EQ(SendFrameAndWaitReply(fd, ztPacketTag, big, error), 1) << error;
  ::close(fd);
  server.join();
  ::close(listener);

  EXPECT_TRUE(sameUser);
  ASSERT_EQ(received.size(), 3u);
  EXPECT_EQ(received[0].tag, ztPacketTag);
  EXPECT_EQ(received[0].payload, "hello");
  EXPECT_EQ(received[1].tag, 0x12345678u);
  EXPECT_EQ(received[1].payload, "");
  EXPECT_EQ(received[2].payload, big);
}

TEST(Channel, DecoderAssemblesFramesFedByteByByte) {
  std::string stream;
  AppendFrame(stream, ztPacketTag, "abcde");
  AppendFrame(stream, 0x01020304, "");
  AppendFrame(stream, ztCompressedPacketTag, std::string("x\0y", 3));
  // Network byte order on the wire.
  EXPECT_EQ(stream.substr(0, 8), Bytes({0x7F, 0, 0, 4, 0, 0, 0, 5}));
  ASSERT_EQ(stream.size(), 8u + 5 + 8 + 0 + 8 + 3);

  TZTFrameDecoder decoder;
  std::vector<Frame> got;
  std::vector<std::size_t> completedAt;
  for (std::size_t i = 0; i < stream.size(); ++i) {
    decoder.Feed(&stream[i], 1);
    uint32_t tag;
    std::string_view payload;
    while (decoder.Next(tag, payload)) {
      // Asking again without Pop gives the same frame.
      uint32_t tag2;
      std::string_view payload2;
      ASSERT_TRUE(decoder.Next(tag2, payload2));
      EXPECT_EQ(tag2, tag);
      EXPECT_EQ(payload2.data(), payload.data());
      got.push_back({tag, std::string(payload)});
      completedAt.push_back(i + 1);
      decoder.Pop();
    }
  }
  EXPECT_FALSE(decoder.Failed());
  EXPECT_EQ(decoder.Buffered(), 0u);
  ASSERT_EQ(got.size(), 3u);
  EXPECT_EQ(completedAt, (std::vector<std::size_t>{13, 21, 32}));
  EXPECT_EQ(got[0].tag, ztPacketTag);
  EXPECT_EQ(got[0].payload, "abcde");
  EXPECT_EQ(got[1].tag, 0x01020304u);
  EXPECT_EQ(got[1].payload, "");
  EXPECT_EQ(got[2].tag, ztCompressedPacketTag);
  EXPECT_EQ(got[2].payload, std::string("x\0y", 3));

  // Everything at once plus the start of a fourth frame: three frames, the rest stays buffered.
  TZTFrameDecoder all;
  std::string more = stream + Bytes({0x7F, 0, 0, 4, 0, 0});
  all.Feed(more.data(), more.size());
  int count = 0;
  uint32_t tag;
  std::string_view payload;
  while (all.Next(tag, payload)) {
    ++count;
    all.Pop();
  }
  EXPECT_EQ(count, 3);
  EXPECT_EQ(all.Buffered(), 6u);
  all.Pop();  // nothing complete: no effect
  EXPECT_EQ(all.Buffered(), 6u);
  std::string rest = Bytes({0, 2, 'o', 'k'});
  all.Feed(rest.data(), rest.size());
  ASSERT_TRUE(all.Next(tag, payload));
  EXPECT_EQ(payload, "ok");
}

TEST(Channel, OversizeFramesPutTheDecoderIntoItsErrorState) {
  auto header = [](uint32_t tag, uint32_t len) {
    std::string h;
    AppendFrame(h, tag, "");
    h[4] = static_cast<char>(len >> 24);
    h[5] = static_cast<char>(len >> 16);
    h[6] = static_cast<char>(len >> 8);
    h[7] = static_cast<char>(len);
    return h;
  };
  uint32_t tag;
  std::string_view payload;

  TZTFrameDecoder atLimit;
  std::string h = header(ztPacketTag, ztMaxFrameSize);
  atLimit.Feed(h.data(), h.size());
  EXPECT_FALSE(atLimit.Failed());
  EXPECT_FALSE(atLimit.Next(tag, payload));
  EXPECT_EQ(atLimit.Buffered(), 8u);

  // The length is judged as soon as it is complete, not when the payload would be.
  TZTFrameDecoder over;
  h = header(ztPacketTag, ztMaxFrameSize + 1);
  over.Feed(h.data(), 7);
  EXPECT_FALSE(over.Failed());
  over.Feed(h.data() + 7, 1);
  EXPECT_TRUE(over.Failed());
  EXPECT_FALSE(over.Next(tag, payload));
  EXPECT_EQ(over.Buffered(), 0u);
  over.Feed("abc", 3);
  EXPECT_EQ(over.Buffered(), 0u);
  over.Reset();
  EXPECT_FALSE(over.Failed());

  // A good frame before the oversize one is still delivered; the failure shows after it.
  TZTFrameDecoder mixed;
  std::string stream;
  AppendFrame(stream, ztPacketTag, "first");
  stream += header(ztPacketTag, 0xFFFFFFFFu);
  mixed.Feed(stream.data(), stream.size());
  EXPECT_FALSE(mixed.Failed());
  ASSERT_TRUE(mixed.Next(tag, payload));
  EXPECT_EQ(payload, "first");
  mixed.Pop();
  EXPECT_TRUE(mixed.Failed());

  // The blocking reader refuses the same frame before reading its payload.
  int sv[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, sv), 0);
  std::string error;
  h = header(ztPacketTag, ztMaxFrameSize + 1);
  ASSERT_TRUE(WriteAll(sv[0], h.data(), h.size(), error));
  std::string body;
  EXPECT_FALSE(ReadFrame(sv[1], tag, body, error));
  EXPECT_NE(error.find("exceeds"), std::string::npos) << error;
  ::close(sv[0]);
  ::close(sv[1]);

  // A sender does not put an oversize frame on the wire at all.
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, sv), 0);
  std::string huge(std::size_t{ztMaxFrameSize} + 1, 'z');
  error.clear();
  EXPECT_EQ(SendFrameAndWaitReply(sv[0], ztPacketTag, huge, error), 0);
  EXPECT_FALSE(error.empty());
  ::close(sv[0]);
  char c;
  EXPECT_EQ(::read(sv[1], &c, 1), 0);
  ::close(sv[1]);
}

TEST(Channel, SenderReadsRepliesInNetworkOrderAndSurvivesAVanishingPeer) {
  int sv[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sv), 0);
  EXPECT_TRUE(PeerIsSameUser(sv[0]));
  std::vector<std::string> seen;
  std::thread peer([&] {
    std::string e;
    const std::string replies[] = {Bytes({0, 0, 0, 1}), Bytes({0, 0, 0, 0}), Bytes({0, 0, 0, 7})};
    for (const std::string& reply : replies) {
      std::string raw(10, '\0');
      if (!ReadAll(sv[1], raw.data(), raw.size(), e)) return;
      seen.push_back(raw);
      WriteAll(sv[1], reply.data(), reply.size(), e);
    }
    // Fourth frame: take it, answer only half of the reply, and go away.
    std::string raw(10, '\0');
    if (ReadAll(sv[1], raw.data(), raw.size(), e)) WriteAll(sv[1], "\0\0", 2, e);
    ::close(sv[1]);
  });
  std::string error;
  EXPECT_EQ(SendFrameAndWaitReply(sv[0], ztPacketTag, "hi", error), 1) << error;
  EXPECT_EQ(SendFrameAndWaitReply(sv[0], ztPacketTag, "hi", error), 0) << error;
  EXPECT_EQ(SendFrameAndWaitReply(sv[0], ztPacketTag, "hi", error), -1);
  EXPECT_NE(error.find("unexpected reply 7"), std::string::npos) << error;
  error.clear();
  EXPECT_EQ(SendFrameAndWaitReply(sv[0], ztPacketTag, "hi", error), -1);
  EXPECT_FALSE(error.empty());
  peer.join();
  ASSERT_EQ(seen.size(), 3u);
  EXPECT_EQ(seen[0], Bytes({0x7F, 0, 0, 4, 0, 0, 0, 2, 'h', 'i'}));

  // Writing to a closed peer fails with an error, not with SIGPIPE ending the process.
  error.clear();
  std::string payload(256 * 1024, 'p');
  EXPECT_EQ(SendFrameAndWaitReply(sv[0], ztPacketTag, payload, error), -1);
  EXPECT_FALSE(error.empty());
  ::close(sv[0]);

  int pipeFds[2];
  ASSERT_EQ(::pipe(pipeFds), 0);
  EXPECT_FALSE(PeerIsSameUser(pipeFds[0]));
  // Plain file descriptors work for writing too.
  EXPECT_TRUE(WriteReply(pipeFds[1], 0x01020304, error)) << error;
  uint32_t reply = 0;
  EXPECT_TRUE(ReadReply(pipeFds[0], reply, error)) << error;
  EXPECT_EQ(reply, 0x01020304u);
  ::close(pipeFds[0]);
  ::close(pipeFds[1]);
}

TEST(Channel, ListenReplacesAStaleSocketButNotALiveServerOrAFile) {
  std::string error;
  std::string folder = GetRuntimeFolder(error);
  ASSERT_FALSE(folder.empty()) << error;
  std::string path = folder + "/stale-test";

  int first = ListenUnixSocket(path, error);
  ASSERT_GE(first, 0) << error;
  error.clear();
  EXPECT_EQ(ListenUnixSocket(path, error), -1);
  EXPECT_NE(error.find("already listening"), std::string::npos) << error;

  // The server goes away without removing its socket file.
  ::close(first);
  ASSERT_TRUE(fs::exists(path));
  int second = ListenUnixSocket(path, error);
  ASSERT_GE(second, 0) << error;
  int client = ConnectUnixSocket(path, error);
  ASSERT_GE(client, 0) << error;
  int served = AcceptConnection(second, true, error);
  EXPECT_GE(served, 0) << error;
  // Nothing more is waiting: a non-blocking listener reports that without an error text.
  ::fcntl(second, F_SETFL, ::fcntl(second, F_GETFL) | O_NONBLOCK);
  error = "x";
  EXPECT_EQ(AcceptConnection(second, true, error), -1);
  EXPECT_EQ(error, "");
  ::close(served);
  ::close(client);
  ::close(second);

  std::string file = folder + "/not-a-socket";
  zentrail::test::WriteFile(file, "keep me");
  EXPECT_EQ(ListenUnixSocket(file, error), -1);
  EXPECT_NE(error.find("other than a socket"), std::string::npos) << error;
  EXPECT_EQ(zentrail::test::ReadFile(file), "keep me");

  EXPECT_EQ(ListenUnixSocket(folder + "/" + std::string(200, 'n'), error), -1);
  EXPECT_NE(error.find("too long"), std::string::npos) << error;

  error.clear();
  EXPECT_EQ(ConnectUnixSocket(folder + "/nobody-here", error), -1);
  EXPECT_NE(error.find(folder + "/nobody-here"), std::string::npos) << error;
}

TEST(Channel, TcpCarriesTheSameFrames) {
  int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_GE(listener, 0);
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  addr.sin_port = 0;
  ASSERT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
  ASSERT_EQ(::listen(listener, 4), 0);
  socklen_t len = sizeof addr;
  ASSERT_EQ(::getsockname(listener, reinterpret_cast<sockaddr*>(&addr), &len), 0);
  uint16_t port = ntohs(addr.sin_port);

  Frame got{0, ""};
  std::thread server([&] {
    std::string e;
    int fd = AcceptConnection(listener, false, e);
    if (fd < 0) return;
    if (ReadFrame(fd, got.tag, got.payload, e)) WriteReply(fd, 1, e);
    ::close(fd);
  });
  std::string error;
  int fd = ConnectTcp("127.0.0.1", port, 5000, error);
  ASSERT_GE(fd, 0) << error;
  EXPECT_EQ(SendFrameAndWaitReply(fd, ztPacketTag, "over tcp", error), 1) << error;
  ::close(fd);
  server.join();
  ::close(listener);
  EXPECT_EQ(got.tag, ztPacketTag);
  EXPECT_EQ(got.payload, "over tcp");

  // The port is closed now: refused, with the address in the message.
  error.clear();
  EXPECT_EQ(ConnectTcp("127.0.0.1", port, 2000, error), -1);
  EXPECT_NE(error.find("127.0.0.1"), std::string::npos) << error;
}

TEST(Channel, ImmediateRepliesNeverWaitOnAClientThatReadsNone) {
  int fds[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds), 0);
  std::string error;
  int written = 0;
  // The peer never reads: replies fill its buffer, and then the writer must give up at once.
  while (zentrail::WriteReplyNow(fds[0], 1, error)) {
    ++written;
    ASSERT_LT(written, 10'000'000) << "the socket buffer never filled";
  }
  EXPECT_GT(written, 0);
  EXPECT_NE(error.find("reply failed"), std::string::npos);
  // What was written is whole replies in network order.
  uint32_t first = 0;
  ASSERT_EQ(::read(fds[1], &first, 4), 4);
  EXPECT_EQ(ntohl(first), 1u);
  ::close(fds[1]);
  EXPECT_FALSE(zentrail::WriteReplyNow(fds[0], 0, error));  // a closed peer raises no SIGPIPE
  ::close(fds[0]);
}

TEST(Channel, BatchRecordsAreReadInOrderAndAMalformedOneStopsTheReader) {
  // Written by hand, byte for byte: two records, then one whose length runs past the end.
  std::string batch = Bytes({0x7F, 0, 0, 4, 0, 0, 0, 2, 'h', 'i', 0x7F, 0, 0, 5, 0, 0, 0, 0,
                             0x7F, 0, 0, 4, 0, 0, 0, 9, 'x'});
  TZTBatchReader reader(batch);
  uint32_t tag = 0;
  std::string_view bytes;
  ASSERT_EQ(reader.Next(tag, bytes), TZTBatchReader::TStep::Record);
  EXPECT_EQ(tag, 0x7F000004u);
  EXPECT_EQ(bytes, "hi");
  ASSERT_EQ(reader.Next(tag, bytes), TZTBatchReader::TStep::Record);
  EXPECT_EQ(tag, 0x7F000005u);
  EXPECT_EQ(bytes, "");
  const std::size_t beforeBad = reader.Offset();
  EXPECT_EQ(beforeBad, 18u);
  EXPECT_EQ(reader.Next(tag, bytes), TZTBatchReader::TStep::Malformed);
  EXPECT_NE(reader.Error().find("runs past the end"), std::string::npos) << reader.Error();
  EXPECT_EQ(reader.Next(tag, bytes), TZTBatchReader::TStep::Malformed) << "it stays stopped";
  EXPECT_EQ(reader.Offset(), beforeBad);

  // A batch inside a batch, or any tag but a packet's, is malformed; so is a cut-off header.
  EXPECT_EQ(TZTBatchReader(Bytes({0x5A, 0x54, 0x42, 0x31, 0, 0, 0, 0})).Next(tag, bytes),
            TZTBatchReader::TStep::Malformed);
  EXPECT_EQ(TZTBatchReader(Bytes({0x7F, 0, 0, 4, 0, 0})).Next(tag, bytes), TZTBatchReader::TStep::Malformed);
  EXPECT_EQ(TZTBatchReader("").Next(tag, bytes), TZTBatchReader::TStep::End);

  // The writer's bytes are the same as the hand-made ones, and reading resumes at an offset.
  std::string written;
  AppendBatchRecord(written, ztPacketTag, "hi");
  AppendBatchRecord(written, ztCompressedPacketTag, "");
  EXPECT_EQ(written, batch.substr(0, beforeBad));
  TZTBatchReader resumed(written, 10);
  ASSERT_EQ(resumed.Next(tag, bytes), TZTBatchReader::TStep::Record);
  EXPECT_EQ(tag, ztCompressedPacketTag);
  EXPECT_EQ(resumed.Next(tag, bytes), TZTBatchReader::TStep::End);
}

TEST(Channel, BoundedSendGivesUpOnAPeerThatNeitherReadsNorAnswers) {
  int pair[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair), 0);
  std::string error;
  // The peer reads the frame but never answers.
  std::thread reader([&] {
    uint32_t tag;
    std::string payload, e;
    ReadFrame(pair[1], tag, payload, e);
  });
  EXPECT_EQ(SendFrameAndWaitReply(pair[0], ztPacketTag, "unanswered", DeadlineIn(50), error), ztTimedOut);
  reader.join();
  // The peer reads nothing at all, and the frame is larger than the socket's buffers.
  EXPECT_EQ(SendFrameAndWaitReply(pair[0], ztPacketTag, std::string(8 << 20, 'x'), DeadlineIn(50), error), ztTimedOut);
  close(pair[0]);
  close(pair[1]);

  // An answer in time is an answer; no deadline waits as long as it takes.
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair), 0);
  std::thread answering([&] {
    uint32_t tag;
    std::string payload, e;
    for (int i = 0; i < 2 && ReadFrame(pair[1], tag, payload, e); ++i) WriteReply(pair[1], 1, e);
  });
  EXPECT_EQ(SendFrameAndWaitReply(pair[0], ztPacketTag, "answered", DeadlineIn(5000), error), 1) << error;
  EXPECT_EQ(SendFrameAndWaitReply(pair[0], ztPacketTag, "answered", ztNoDeadline, error), 1) << error;
  answering.join();
  close(pair[0]);
  close(pair[1]);
}
