// The dispatcher's destinations beyond the machine (UDP, HTTP, aliases) against real receivers on
// the loopback address, and the safety of its network listeners.
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>

#include <map>
#include <thread>

#include "DispatcherFixture.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

// A UDP socket on 127.0.0.1 with a free port.
struct TUdpReceiver {
  int Fd = -1;
  int Port = 0;
  TUdpReceiver() {
    Fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(Fd, reinterpret_cast<sockaddr*>(&a), sizeof a);
    socklen_t len = sizeof a;
    getsockname(Fd, reinterpret_cast<sockaddr*>(&a), &len);
    Port = ntohs(a.sin_port);
  }
  ~TUdpReceiver() { close(Fd); }
  // The next datagram decoded as one frame, or false after timeoutMs.
  bool Next(TZentrailMessage& m, int timeoutMs = 5000) {
    pollfd p{Fd, POLLIN, 0};
    if (poll(&p, 1, timeoutMs) <= 0) return false;
    std::string buf(70000, '\0');
    ssize_t n = recv(Fd, buf.data(), buf.size(), 0);
    if (n < 8) return false;
    buf.resize(static_cast<std::size_t>(n));
    TZTFrameDecoder decoder;
    decoder.Feed(buf.data(), buf.size());
    uint32_t tag = 0;
    std::string_view payload;
    if (!decoder.Next(tag, payload) || payload.size() + 8 != buf.size()) return false;
    m.SetAsTransportPacket(tag == ztCompressedPacketTag ? ZlibInflate(payload) : std::string(payload));
    return true;
  }
};

// A plain HTTP/1.1 server on 127.0.0.1: answers each request with the next status of a script
// (200 once the script is used up) and keeps what it was sent.
class THttpReceiver {
 public:
  struct TRequest {
    std::string Head, Body;
    int Status = 0;
  };
  explicit THttpReceiver(std::vector<int> script) : FScript(std::move(script)) {
    FListen = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(FListen, reinterpret_cast<sockaddr*>(&a), sizeof a);
    listen(FListen, 16);
    socklen_t len = sizeof a;
    getsockname(FListen, reinterpret_cast<sockaddr*>(&a), &len);
    Port = ntohs(a.sin_port);
    FThread = std::thread([this] { Run(); });
  }
  ~THttpReceiver() {
    FStop = true;
    FThread.join();
    close(FListen);
  }
  std::vector<TRequest> Requests() {
    std::lock_guard lock(FLock);
    return FRequests;
  }
  int Port = 0;

 private:
  void Run() {
    std::vector<int> open;
    while (!FStop) {
      std::vector<pollfd> fds{{FListen, POLLIN, 0}};
      for (int fd : open) fds.push_back({fd, POLLIN, 0});
      if (poll(fds.data(), fds.size(), 20) <= 0) continue;
      if (fds[0].revents & POLLIN) open.push_back(accept4(FListen, nullptr, nullptr, SOCK_CLOEXEC));
      for (std::size_t i = 1; i < fds.size(); ++i)
        if (fds[i].revents && !Serve(fds[i].fd)) {
          close(fds[i].fd);
          std::erase(open, fds[i].fd);
        }
    }
    for (int fd : open) close(fd);
  }
  bool ReadSome(int fd, std::string& into) {
    char buf[65536];
    ssize_t n = read(fd, buf, sizeof buf);
    if (n <= 0) return false;
    into.append(buf, static_cast<std::size_t>(n));
    return true;
  }
  bool Serve(int fd) {
    std::string data;
    std::size_t end;
    while ((end = data.find("\r\n\r\n")) == std::string::npos)
      if (!ReadSome(fd, data)) return false;
    TRequest r;
    r.Head = data.substr(0, end);
    std::string lower = r.Head;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    std::size_t at = lower.find("content-length:");
    std::size_t length = at == std::string::npos ? 0 : std::stoul(r.Head.substr(at + 15));
    r.Body = data.substr(end + 4);
    while (r.Body.size() < length)
      if (!ReadSome(fd, r.Body)) return false;
    {
      std::lock_guard lock(FLock);
      r.Status = FRequests.size() < FScript.size() ? FScript[FRequests.size()] : 200;
      FRequests.push_back(r);
    }
    std::string reply = "HTTP/1.1 " + std::to_string(r.Status) + " Scripted\r\nContent-Length: 2\r\n\r\nok";
    return write(fd, reply.data(), reply.size()) == static_cast<ssize_t>(reply.size());
  }
  std::vector<int> FScript;
  int FListen = -1;
  std::atomic<bool> FStop{false};
  std::thread FThread;
  std::mutex FLock;
  std::vector<TRequest> FRequests;
};

std::vector<TZentrailMessage> RecordsOf(const std::string& body) {
  std::vector<TZentrailMessage> out;
  TZentrailBufferSource source(body);
  TZentrailLogReader reader(source);
  TZentrailMessage m;
  while (reader.Next(m) == TZentrailRecordResult::Ok) out.push_back(m);
  EXPECT_EQ(source.Position(), body.size()) << "a body is whole records";
  return out;
}

void WriteRegistry(const std::string& text) { WriteFile(std::getenv("ZENTRAIL_REGISTRY"), text); }

}  // namespace

TEST_F(DispatcherTest, UdpSendsOneFramePerDatagramToAReceiverAndToAnotherDispatcher) {
  StartDispatcher();
  TUdpReceiver receiver;
  TZentrailDestination destination("Udp[Host=127.0.0.1;Port=" + std::to_string(receiver.Port) +
                                   ";RemoteDestinationDetails=File[Path=/remote/a.ztl]]");
  TZentrailLogger log;
  log.SetDestination(&destination);
  std::string large(30000, 'L');
  for (const std::string& text : {std::string("one"), std::string("two"), large}) ASSERT_EQ(log.Send(text), 1);
  TZentrailMessage m;
  ASSERT_TRUE(receiver.Next(m));
  EXPECT_EQ(m.MsgType, ztmOpenRoute) << "the route comes first";
  EXPECT_EQ(m.MsgText, "File[Path=/remote/a.ztl]");
  std::string route = m.RouteKey;
  for (const std::string& text : {std::string("one"), std::string("two"), large}) {
    ASSERT_TRUE(receiver.Next(m));
    EXPECT_EQ(m.MsgText, text);
    EXPECT_EQ(m.RouteKey, route);
    EXPECT_EQ(m.ProcessID, static_cast<uint32_t>(getpid()));
  }

  // A second dispatcher, with a runtime folder of its own, takes them on its UDP port.
  fs::path remoteRuntime = dir / "remote-run";
  fs::create_directories(remoteRuntime);
  fs::permissions(remoteRuntime, fs::perms::owner_all, fs::perm_options::replace);
  TChildProcess remote;
  ASSERT_TRUE(remote.Start(Program(), {"--udp-port", "0"}, {"ZENTRAIL_RUNTIME_DIR=" + remoteRuntime.string()}));
  fs::path portFile = remoteRuntime / "dispatcher-udp-port";
  int port = 0;
  ASSERT_TRUE(WaitUntil([&] {
    std::ifstream in(portFile);
    return static_cast<bool>(in >> port);
  }));
  std::string remoteLog = (dir / "udp-remote.ztl").string();
  destination.SetAsString("UDP[Host=localhost;Port=" + std::to_string(port) + ";RemoteDestinationDetails=File[Path=" +
                          remoteLog + "]]");
  for (int i = 0; i < 20; ++i) ASSERT_EQ(log.Send("over udp " + std::to_string(i)), 1);
  // Datagrams on the loopback are not lost unless a buffer overflows, which 20 do not.
  ASSERT_TRUE(WaitUntil([&] { return ReadLog(remoteLog).size() == 20; }));
  auto messages = ReadLog(remoteLog);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(messages[i].MsgText, "over udp " + std::to_string(i));
  log.SetDestination(nullptr);
  EXPECT_EQ(remote.Signal(SIGTERM), 0);
}

TEST_F(DispatcherTest, HttpPostsBatchesOfRecordsAndRetriesUntilTheEndpointTakesThem) {
  // The endpoint is down for the first two posts.
  THttpReceiver receiver({503, 503});
  StartDispatcher();
  TZentrailDestination destination("Http[URL=http://127.0.0.1:" + std::to_string(receiver.Port) +
                                   "/ingest;Alias=Team]");
  TZentrailLogger log;
  log.SetDestination(&destination);
  constexpr int kCount = 300;
  for (int i = 0; i < kCount; ++i) ASSERT_EQ(log.Send("posted " + std::to_string(i)), 1);
  auto delivered = [&] {
    std::vector<TZentrailMessage> all;
    for (auto& r : receiver.Requests())
      if (r.Status == 200)
        for (auto& m : RecordsOf(r.Body)) all.push_back(m);
    return all;
  };
  ASSERT_TRUE(WaitUntil([&] { return delivered().size() >= static_cast<std::size_t>(kCount); }, 15000));
  auto all = delivered();
  ASSERT_EQ(all.size(), static_cast<std::size_t>(kCount)) << "each message exactly once";
  for (int i = 0; i < kCount; ++i) EXPECT_EQ(all[i].MsgText, "posted " + std::to_string(i));
  auto requests = receiver.Requests();
  ASSERT_GE(requests.size(), 3u);
  EXPECT_EQ(requests[0].Body, requests[1].Body) << "a failed batch is posted again as it was";
  EXPECT_EQ(requests[1].Body, requests[2].Body);
  EXPECT_LT(requests.size(), static_cast<std::size_t>(kCount)) << "messages travel in batches";
  for (auto& r : requests) {
    EXPECT_EQ(r.Head.rfind("POST /ingest HTTP/1.1\r\n", 0), 0u) << r.Head;
    EXPECT_NE(r.Head.find("X-Zentrail-Alias: Team\r\n"), std::string::npos) << r.Head;
  }
  log.SetDestination(nullptr);
}

TEST_F(DispatcherTest, AliasesComeFromTheRegistryFileAndAnUnknownOneIsRefused) {
  TUdpReceiver receiver;
  std::string path = (dir / "alias.ztl").string();
  WriteRegistry("[Software\\Orvan\\Zentrail\\5.0]\nDispatcher=/nonexistent/zentrail-dispatcher\n"
                "[Software\\Orvan\\Zentrail\\5.0\\Aliases]\n"
                "Audit=File[Path=" + path + "],Alias[Name=Wire]\n"
                "Wire=Udp[Host=127.0.0.1;Port=" + std::to_string(receiver.Port) + "]\n"
                "Loop=Alias[Name=Loop]\n");
  StartDispatcher();
  TZentrailDestination destination("Alias[Name=audit]");
  TZentrailLogger log;
  log.SetDestination(&destination);
  ASSERT_EQ(log.Send("through an alias"), 1);
  TZentrailMessage m;
  ASSERT_TRUE(receiver.Next(m));
  EXPECT_EQ(m.MsgType, ztmOpenRoute);
  ASSERT_TRUE(receiver.Next(m));
  EXPECT_EQ(m.MsgText, "through an alias");
  ASSERT_EQ(ReadLog(path).size(), 1u);

  for (std::string name : {"Nobody", "Loop"}) {
    SCOPED_TRACE(name);
    destination.SetAsString("Alias[Name=" + name + "]");
    log.SetEnabled(true);
    EXPECT_EQ(log.Send("nowhere to go"), 0) << "the route is refused, so the logger stops";
    EXPECT_FALSE(log.Enabled());
  }
  log.SetDestination(nullptr);
  EXPECT_TRUE(dispatcher.Running());
}

namespace {

// A TCP connection to 127.0.0.1:port made from the given local address.
int ConnectFrom(const char* local, int port) {
  int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in a{};
  a.sin_family = AF_INET;
  inet_pton(AF_INET, local, &a.sin_addr);
  if (bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) return -1;
  a.sin_port = htons(static_cast<uint16_t>(port));
  inet_pton(AF_INET, "127.0.0.1", &a.sin_addr);
  if (connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) {
    close(fd);
    return -1;
  }
  return fd;
}

// True when the peer closes the connection within timeoutMs.
bool ClosedByPeer(int fd, int timeoutMs) {
  pollfd p{fd, POLLIN, 0};
  if (poll(&p, 1, timeoutMs) <= 0) return false;
  char c;
  return read(fd, &c, 1) <= 0;
}

}  // namespace

TEST_F(DispatcherTest, TcpListenerTakesOnlyAllowedPeersAndLetsStalledOnesGo) {
  std::string error;
  fs::remove(fs::path(GetRuntimeFolder(error)) / "dispatcher-tcp-port");
  fs::path said = dir / "dispatcher-stderr.txt";
  // The shell only routes standard error into a file; exec leaves the dispatcher with its pid.
  ASSERT_TRUE(dispatcher.Start("/bin/sh", {"-c", "exec '" + Program() +
                                                     "' --tcp-port 0 --allow 127.0.0.1/32,10.0.0.0/8 "
                                                     "--idle-timeout-ms 300 2>'" + said.string() + "'"}));
  int port = ReadPortFile();
  ASSERT_GT(port, 0);
  std::string path = (dir / "allowed.ztl").string();

  int allowed = ConnectFrom("127.0.0.1", port);
  ASSERT_GE(allowed, 0);
  EXPECT_EQ(RawSend(allowed, ztPacketTag, Open("R", "File[Path=" + path + "]")), 1);
  EXPECT_EQ(RawSend(allowed, ztPacketTag, Text("R", "from an allowed peer")), 1);

  // 127.0.0.2 is this machine too, but not in the list.
  int outsider = ConnectFrom("127.0.0.2", port);
  ASSERT_GE(outsider, 0);
  EXPECT_EQ(RawSend(outsider, ztPacketTag, Open("X", "File[Path=" + path + "]")), 0);
  EXPECT_EQ(RawSend(outsider, ztPacketTag, Text("R", "on a known route, still not taken")), 0);
  EXPECT_EQ(RawSend(outsider, ztPacketTag, std::string(100000, 'z')), 0);
  EXPECT_EQ(RawSend(outsider, ztPacketTag, ""), 0);
  close(outsider);

  // A peer that says nothing, and one that stops within a frame, are let go; the rest goes on.
  int silent = ConnectFrom("127.0.0.1", port);
  int stalled = ConnectFrom("127.0.0.1", port);
  ASSERT_EQ(write(stalled, "\x7F\x00\x00\x04\x00", 5), 5);
  EXPECT_TRUE(ClosedByPeer(silent, 10000));
  EXPECT_TRUE(ClosedByPeer(stalled, 10000));
  close(silent);
  close(stalled);
  EXPECT_EQ(RawSend(allowed, ztPacketTag, Text("R", "still served")), 1);
  close(allowed);

  EXPECT_EQ(dispatcher.Signal(SIGTERM), 0);
  std::vector<std::string> texts;
  for (auto& m : ReadLog(path)) texts.push_back(m.MsgText);
  EXPECT_EQ(texts, (std::vector<std::string>{"from an allowed peer", "still served"}));
  std::string log = ReadFile(said);
  EXPECT_NE(log.find("frames from 127.0.0.2 are refused"), std::string::npos) << log;
  EXPECT_NE(log.find("4 frames were refused from peers outside the allow list"), std::string::npos) << log;

  // Another address than loopback is only taken with an allow list; the default is loopback.
  TChildProcess wide;
  ASSERT_TRUE(wide.Start(Program(), {"--tcp-port", "0", "--listen", "0.0.0.0"}));
  EXPECT_EQ(wide.Wait(), 2);
  ASSERT_TRUE(wide.Start(Program(), {"--tcp", "--allow", "10.0.0.0/33"}));
  EXPECT_EQ(wide.Wait(), 2);
}
