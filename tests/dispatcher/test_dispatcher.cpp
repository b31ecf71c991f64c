#include <gtest/gtest.h>

#include <sys/resource.h>
#include <zlib.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "DispatcherFixture.h"

using namespace zentrail;
using namespace zentrail::test;
namespace fs = std::filesystem;

TEST_F(DispatcherTest, MessagesReachTheFileFieldForFieldAndTheViewerAlike) {
  TFakeFrameServer viewer(viewerSocket);
  StartDispatcher();
  std::string path = (dir / "logs/e2e.ztl").string();
  TZentrailDestination destination("File[Path=" + path + "],Viewer");
  TZentrailLogger log;
  log.SetDestination(&destination);
  log.SetCategory("E2E");
  log.SetCategoryColor(0x0000FF);
  ZentrailManager.SetCurrentThreadName("tester");

  ASSERT_EQ(log.Send("plain text"), 1);
  ASSERT_EQ(log.SendWarning("a warning"), 1);
  ASSERT_EQ(log.SendError("an error"), 1);
  ASSERT_EQ(log.EnterMethod("Outer"), 1);
  ASSERT_EQ(log.EnterMethod("Inner"), 1);
  ASSERT_EQ(log.ExitMethod("Inner", 7), 1);
  ASSERT_EQ(log.ExitMethod("Outer"), 1);
  ASSERT_EQ(log.AddCheckPoint(), 1);
  ASSERT_EQ(log.Write("Progress", "50 %"), 1);
  ASSERT_EQ(log.InternalSend(ztmInfo, ztmStringList, "TStrings", "line 1\r\nline 2 \xc3\xa9", "with details"), 1);
  log.SetDestination(nullptr);

  struct {
    int32_t type;
    std::string text;
  } expected[] = {{ztmInfo, "plain text"},      {ztmWarning, "a warning"},
                  {ztmError, "an error"},       {ztmEnterMethod, "Outer"},
                  {ztmEnterMethod, "Inner"},    {ztmExitMethod, "Inner = 7"},
                  {ztmExitMethod, "Outer"},     {ztmCheckPoint, "E2E: Check Point #1"},
                  {ztmScratchPad, "Progress@50 %"}, {ztmInfo, "with details"}};
  ASSERT_TRUE(WaitUntil([&] { return viewer.Messages().size() == std::size(expected); }));
  EXPECT_EQ(dispatcher.Signal(SIGTERM), 0) << "a clean exit on SIGTERM";
  EXPECT_FALSE(fs::exists(socket)) << "the socket is removed at exit";

  std::string problem;
  auto logged = ReadLog(path, &problem);
  EXPECT_EQ(problem, "");
  auto shown = viewer.Messages();
  ASSERT_EQ(logged.size(), std::size(expected));
  for (std::size_t i = 0; i < logged.size(); ++i) {
    SCOPED_TRACE(expected[i].text);
    EXPECT_EQ(logged[i].MsgType, expected[i].type);
    EXPECT_EQ(logged[i].MsgText, expected[i].text);
    EXPECT_EQ(logged[i].Category, "E2E");
    EXPECT_EQ(logged[i].CategoryColor, 0x0000FF);
    EXPECT_EQ(logged[i].ThreadName, "tester");
    EXPECT_EQ(logged[i].AppName, "test_dispatcher");
    EXPECT_EQ(logged[i].ProcessID, static_cast<uint32_t>(getpid()));
    EXPECT_EQ(logged[i], shown[i]) << "file and viewer get the same record";
  }
  EXPECT_EQ(logged[9].MsgContent, ztmStringList);
  EXPECT_EQ(logged[9].TypeName, "TStrings");
  EXPECT_EQ(logged[9].Details, "line 1\r\nline 2 \xc3\xa9");
}

TEST_F(DispatcherTest, ViewerThatStartsLateOrDiesIsHandled) {
  StartDispatcher();
  TZentrailLogger log;
  ASSERT_EQ(log.Send("nobody watches"), 1) << "taken by the dispatcher, dropped for want of a viewer";
  {
    TFakeFrameServer viewer(viewerSocket);
    ASSERT_EQ(log.Send("first seen"), 1);
    // The first message may still have been waiting in the queue when this viewer came up.
    ASSERT_TRUE(WaitUntil([&] {
      auto m = viewer.Messages();
      return !m.empty() && m.back().MsgText == "first seen";
    }));
    viewer.Stop();  // the viewer dies
  }
  ASSERT_EQ(log.Send("while the viewer is gone"), 1);
  TFakeFrameServer again(viewerSocket);
  ASSERT_EQ(log.Send("second viewer"), 1);
  ASSERT_TRUE(WaitUntil([&] {
    auto m = again.Messages();
    return !m.empty() && m.back().MsgText == "second viewer";
  }));
  EXPECT_TRUE(log.Enabled());
  EXPECT_TRUE(dispatcher.Running());
  EXPECT_TRUE(SocketAnswers(socket));
}

TEST_F(DispatcherTest, ClientStartsTheDispatcherFromRegistryOrBesideOrPath) {
  for (int way = 0; way < 2; ++way) {
    SCOPED_TRACE(way == 0 ? "registry" : "PATH");
    std::string savedPath = std::getenv("PATH");
    if (way == 0) {
      RegisterDispatcher(Program());
    } else {
      RegisterDispatcher("");
      setenv("PATH", ("/nonexistent:" + fs::path(Program()).parent_path().string()).c_str(), 1);
    }
    std::string path = (dir / ("started" + std::to_string(way) + ".ztl")).string();
    TZentrailDestination destination("File[Path=" + path + "]");
    TZentrailLogger log;
    log.ConnectUsingCopyData();
    log.SetDestination(&destination);
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(log.Send("started on demand"), 1);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    setenv("PATH", savedPath.c_str(), 1);
    pid_t pid = SocketServerPid(socket);
    ASSERT_GT(pid, 0);
    log.SetDestination(nullptr);
    log.UseZentrailManagerConnection();
    EndForeignDispatcher(pid, socket);
    auto messages = ReadLog(path);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].MsgText, "started on demand");
  }
}

TEST_F(DispatcherTest, KilledDispatcherLosesNothingItAnsweredAndClientsGoOn) {
  StartDispatcher();
  std::string path = (dir / "kill.ztl").string();
  TZentrailDestination destination("File[Path=" + path + "]");
  TZentrailLogger log;
  log.ConnectUsingCopyData();
  log.SetDestination(&destination);
  for (int i = 0; i < 200; ++i) ASSERT_EQ(log.Send("m" + std::to_string(i)), 1);
  dispatcher.Signal(SIGKILL);
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(log.Send("into the void"), 0);
  EXPECT_FALSE(log.Enabled());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));

  auto messages = ReadLog(path);
  ASSERT_EQ(messages.size(), 200u) << "every answered message is in the file";
  for (int i = 0; i < 200; ++i) EXPECT_EQ(messages[i].MsgText, "m" + std::to_string(i));

  StartDispatcher();  // a new dispatcher hears the route again and appends
  log.SetEnabled(true);
  EXPECT_EQ(log.Send("after restart"), 1);
  log.SetDestination(nullptr);
  EXPECT_EQ(dispatcher.Signal(SIGTERM), 0);
  messages = ReadLog(path);
  ASSERT_EQ(messages.size(), 201u);
  EXPECT_EQ(messages.back().MsgText, "after restart");
}

TEST_F(DispatcherTest, FullDiskRefusesWithoutHarmToOthers) {
  TFakeFrameServer viewer(viewerSocket);
  StartDispatcher();
  TZentrailDestination full("File[Path=/dev/full]");
  TZentrailLogger doomed, fine;
  doomed.ConnectUsingCopyData();
  doomed.SetDestination(&full);
  EXPECT_EQ(doomed.Send("no room"), 0);
  EXPECT_FALSE(doomed.Enabled());
  EXPECT_EQ(fine.Send("still here"), 1);
  ASSERT_TRUE(WaitUntil([&] { return viewer.Messages().size() == 1; }));
  EXPECT_TRUE(dispatcher.Running());
  doomed.SetDestination(nullptr);
}

TEST_F(DispatcherTest, FileSizeLimitKeepsWholeRecordsAndResumesWhenLifted) {
  StartDispatcher();
  rlimit limit{8192, RLIM_INFINITY};
  ASSERT_EQ(prlimit(dispatcher.Pid(), RLIMIT_FSIZE, &limit, nullptr), 0);
  std::string path = (dir / "limited.ztl").string();
  TZentrailDestination destination("File[Path=" + path + "]");
  TZentrailLogger log;
  log.ConnectUsingCopyData();
  log.SetDestination(&destination);
  int accepted = 0;
  while (accepted < 1000 && log.Send("record " + std::to_string(accepted) + std::string(150, '.')) == 1) ++accepted;
  EXPECT_GT(accepted, 10);
  EXPECT_LT(accepted, 1000) << "the limit was never reached";
  EXPECT_FALSE(log.Enabled());
  EXPECT_LE(fs::file_size(path), 8192u);

  std::string problem;
  auto messages = ReadLog(path, &problem);
  EXPECT_EQ(problem, "") << "no half record at the end";
  ASSERT_EQ(messages.size(), static_cast<std::size_t>(accepted));
  for (int i = 0; i < accepted; ++i) EXPECT_EQ(messages[i].MsgText.substr(0, 7 + std::to_string(i).size()), "record " + std::to_string(i));

  rlimit none{RLIM_INFINITY, RLIM_INFINITY};
  ASSERT_EQ(prlimit(dispatcher.Pid(), RLIMIT_FSIZE, &none, nullptr), 0);
  log.SetEnabled(true);
  EXPECT_EQ(log.Send("room again"), 1);
  log.SetDestination(nullptr);
  EXPECT_EQ(dispatcher.Signal(SIGTERM), 0);
  messages = ReadLog(path, &problem);
  ASSERT_EQ(messages.size(), static_cast<std::size_t>(accepted + 1));
  EXPECT_EQ(messages.back().MsgText, "room again");
}

TEST_F(DispatcherTest, GarbageFramesOnSocketAndTcpAreRefusedAndServiceGoesOn) {
  TFakeFrameServer viewer(viewerSocket);
  std::string runtimeError;
  fs::remove(fs::path(GetRuntimeFolder(runtimeError)) / "dispatcher-tcp-port");  // left by a killed one
  StartDispatcher({"--tcp-port", "0"});
  int port = ReadPortFile();
  ASSERT_GT(port, 0);
  std::string error;
  for (bool tcp : {false, true}) {
    SCOPED_TRACE(tcp ? "tcp" : "socket");
    int fd = tcp ? ConnectTcp("127.0.0.1", static_cast<uint16_t>(port), 2000, error) : ConnectUnixSocket(socket, error);
    ASSERT_GE(fd, 0) << error;
    std::string route = tcp ? "R-TCP" : "R-UNIX";
    EXPECT_EQ(RawSend(fd, 0x12345678, "what is this"), 0);
    EXPECT_EQ(RawSend(fd, ztPacketTag, "ZTP1garbage"), 0);
    EXPECT_EQ(RawSend(fd, ztPacketTag, ""), 0);
    EXPECT_EQ(RawSend(fd, ztCompressedPacketTag, "not zlib at all"), 0);
    EXPECT_EQ(RawSend(fd, ztPacketTag, Open(route, "Printer[x=1]")), 0) << "an unknown destination is refused";
    // The same connection still serves good frames.
    EXPECT_EQ(RawSend(fd, ztPacketTag, Open(route, "Viewer")), 1);
    EXPECT_EQ(RawSend(fd, ztPacketTag, Text(route, "good after garbage")), 1);
    EXPECT_EQ(RawSend(fd, ztCompressedPacketTag, ZlibDeflate(Text(route, "compressed too"))), 1);
    // A header that announces more than the limit: answered 0 and closed.
    unsigned char header[8] = {0x7F, 0, 0, 4, 0xFF, 0xFF, 0xFF, 0xFF};
    ASSERT_TRUE(WriteAll(fd, header, sizeof header, error));
    uint32_t reply = 9;
    EXPECT_TRUE(ReadReply(fd, reply, error));
    EXPECT_EQ(reply, 0u);
    char byte;
    EXPECT_EQ(read(fd, &byte, 1), 0) << "the connection is closed after an oversize frame";
    close(fd);
    // A client that goes away in the middle of a frame loses that frame only.
    fd = tcp ? ConnectTcp("127.0.0.1", static_cast<uint16_t>(port), 2000, error) : ConnectUnixSocket(socket, error);
    unsigned char partial[12] = {0x7F, 0, 0, 4, 0, 0, 1, 0, 'Z', 'T', 'P', '1'};
    ASSERT_TRUE(WriteAll(fd, partial, sizeof partial, error));
    close(fd);
  }
  ASSERT_TRUE(WaitUntil([&] { return viewer.Messages().size() == 4; }));
  auto shown = viewer.Messages();
  EXPECT_EQ(shown[0].MsgText, "good after garbage");
  EXPECT_EQ(shown[1].MsgText, "compressed too");
  EXPECT_EQ(shown[3].RouteKey, "R-TCP");
  TZentrailLogger log;
  EXPECT_EQ(log.Send("still serving"), 1);
  EXPECT_TRUE(dispatcher.Running());
}

TEST_F(DispatcherTest, SlowViewerPushesBackWithoutUnboundedGrowth) {
  TFakeFrameServer viewer(viewerSocket);
  viewer.Stall = true;  // takes a frame and then does not answer
  StartDispatcher();
  std::atomic<int> answered{0};
  constexpr int kMessages = 80;
  std::thread client([&] {
    TZentrailLogger log;
    std::string big(1024 * 1024, 'x');
    for (int i = 0; i < kMessages; ++i)
      if (log.Send(big) == 1) ++answered;
  });
  // The queue holds 64 MiB; the client waits for its answer beyond that.
  EXPECT_TRUE(WaitUntil([&] { return answered.load() >= 60; }, 10000));
  EXPECT_FALSE(WaitUntil([&] { return answered.load() >= 70; }, 500)) << "answered " << answered.load();
  std::string status = ReadFile("/proc/" + std::to_string(dispatcher.Pid()) + "/status");
  auto rss = status.find("VmRSS:");
  ASSERT_NE(rss, std::string::npos);
  long kb = std::stol(status.substr(rss + 6));
  EXPECT_LT(kb, 200 * 1024) << "dispatcher memory stays bounded";
  viewer.Stall = false;
  client.join();
  EXPECT_EQ(answered.load(), kMessages);
  EXPECT_TRUE(WaitUntil([&] { return viewer.Messages().size() == static_cast<std::size_t>(kMessages); }, 10000));
}

TEST_F(DispatcherTest, TcpClientsAndForwardingToARemoteDispatcher) {
  // The remote side: a second dispatcher with a runtime folder of its own.
  fs::path remoteRuntime = dir / "remote-runtime";
  fs::create_directories(remoteRuntime);
  fs::permissions(remoteRuntime, fs::perms::owner_all, fs::perm_options::replace);
  TChildProcess remote;
  ASSERT_TRUE(remote.Start(Program(), {"--tcp-port", "0"}, {"ZENTRAIL_RUNTIME_DIR=" + remoteRuntime.string()}));
  int port = 0;
  ASSERT_TRUE(WaitUntil([&] {
    std::ifstream in(remoteRuntime / "dispatcher-tcp-port");
    return static_cast<bool>(in >> port);
  }));
  StartDispatcher();

  // Straight to the remote one over TCP.
  std::string direct = (dir / "direct.ztl").string();
  TZentrailDestination d1("File[Path=" + direct + "]");
  TZentrailLogger tcpLog;
  tcpLog.ConnectUsingTcp("127.0.0.1", static_cast<uint16_t>(port), mfCompressed);
  tcpLog.SetDestination(&d1);
  ASSERT_EQ(tcpLog.Send("over tcp"), 1);

  // Through the local dispatcher, which forwards to the remote one.
  std::string forwarded = (dir / "forwarded.ztl").string();
  TZentrailDestination d2("TCP[Host=127.0.0.1;Port=" + std::to_string(port) + ";RemoteDestinationDetails=File[Path=" +
                          forwarded + "];Compressed=true]");
  TZentrailLogger local;
  local.SetDestination(&d2);
  for (int i = 0; i < 20; ++i) ASSERT_EQ(local.Send("hop " + std::to_string(i)), 1);
  tcpLog.SetDestination(nullptr);
  local.SetDestination(nullptr);

  EXPECT_EQ(dispatcher.Signal(SIGTERM), 0);  // drains its queue into the remote dispatcher
  EXPECT_EQ(remote.Signal(SIGTERM), 0);
  auto a = ReadLog(direct);
  ASSERT_EQ(a.size(), 1u);
  EXPECT_EQ(a[0].MsgText, "over tcp");
  auto b = ReadLog(forwarded);
  ASSERT_EQ(b.size(), 20u);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(b[i].MsgText, "hop " + std::to_string(i));
  EXPECT_EQ(b[0].AppName, "test_dispatcher") << "the sender's identity travels along";
}

TEST_F(DispatcherTest, FileRotationKeepsPartsWholeAndNamesDatedFiles) {
  StartDispatcher();
  std::string path = (dir / "rot/app.ztl").string();
  TZentrailDestination destination("File[Path=" + path + ";MaxSize=1;MaxParts=2]");
  TZentrailLogger log;
  log.SetDestination(&destination);
  for (int i = 0; i < 60; ++i) ASSERT_EQ(log.Send("rotating " + std::to_string(i) + std::string(100, '-')), 1);

  destination.SetAsString("File[Path=" + (dir / "dated/day.ztl").string() + ";LogByDate=true;LogByDateFormat=yyyy_mm_dd]");
  ASSERT_EQ(log.Send("dated"), 1);
  destination.SetAsString("File[Path=" + (dir / "gz/z.ztl").string() + ";MaxSize=1;Compressed=true]");
  for (int i = 0; i < 30; ++i) ASSERT_EQ(log.Send("zipped " + std::string(100, '+')), 1);
  log.SetDestination(nullptr);
  EXPECT_EQ(dispatcher.Signal(SIGTERM), 0);

  EXPECT_TRUE(fs::exists(dir / "rot/app.1.ztl"));
  EXPECT_TRUE(fs::exists(dir / "rot/app.2.ztl"));
  EXPECT_FALSE(fs::exists(dir / "rot/app.3.ztl")) << "only MaxParts old parts are kept";
  std::vector<TZentrailMessage> all;
  for (const char* name : {"rot/app.2.ztl", "rot/app.1.ztl", "rot/app.ztl"}) {
    std::string problem;
    auto part = ReadLog((dir / name).string(), &problem);
    EXPECT_EQ(problem, "") << name;
    EXPECT_LE(fs::file_size(dir / name), 1024u) << name;
    all.insert(all.end(), part.begin(), part.end());
  }
  ASSERT_FALSE(all.empty());
  EXPECT_EQ(all.back().MsgText.substr(0, 11), "rotating 59");
  int first = std::stoi(all.front().MsgText.substr(9));
  for (std::size_t i = 0; i < all.size(); ++i)
    EXPECT_EQ(std::stoi(all[i].MsgText.substr(9)), first + static_cast<int>(i)) << "no gap between parts";

  time_t now = time(nullptr);
  tm local{};
  localtime_r(&now, &local);
  char dated[64];
  std::snprintf(dated, sizeof dated, "dated/day-%04d_%02d_%02d.ztl", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
  EXPECT_EQ(ReadLog((dir / dated).string()).size(), 1u) << dated;

  EXPECT_TRUE(fs::exists(dir / "gz/z.1.ztl.gz"));
  EXPECT_FALSE(fs::exists(dir / "gz/z.1.ztl"));
  std::string unpacked;
  gzFile in = gzopen((dir / "gz/z.1.ztl.gz").c_str(), "rb");
  ASSERT_NE(in, nullptr);
  char buf[4096];
  int n;
  while ((n = gzread(in, buf, sizeof buf)) > 0) unpacked.append(buf, static_cast<std::size_t>(n));
  gzclose(in);
  TZentrailBufferSource source(unpacked);
  TZentrailLogReader reader(source);
  TZentrailMessage m;
  int count = 0;
  while (reader.Next(m) == TZentrailRecordResult::Ok) ++count;
  EXPECT_GT(count, 0);
  EXPECT_EQ(source.Position(), unpacked.size()) << "a compressed part holds whole records";
}

TEST_F(DispatcherTest, RealViewerTakesMessagesThroughTheDispatcher) {
  std::string viewerProgram = BinaryPath("src/shell/zentrail-viewer");
  if (!fs::exists(viewerProgram)) GTEST_SKIP() << "the viewer is not built in this tree: " << viewerProgram;
  TChildProcess viewer;
  ASSERT_TRUE(viewer.Start(viewerProgram, {}, {"QT_QPA_PLATFORM=offscreen"}));
  ASSERT_TRUE(WaitUntil([&] { return SocketAnswers(viewerSocket); }, 10000)) << "viewer socket did not appear";
  StartDispatcher();
  TZentrailLogger log;
  for (int i = 0; i < 100; ++i) ASSERT_EQ(log.Send("to the real viewer " + std::to_string(i)), 1);
  // After the traffic the viewer still answers frames of its own accord.
  std::string error;
  int fd = ConnectUnixSocket(viewerSocket, error);
  ASSERT_GE(fd, 0) << error;
  EXPECT_EQ(RawSend(fd, ztPacketTag, Text("", "direct")), 1);
  close(fd);
  EXPECT_EQ(dispatcher.Signal(SIGTERM), 0);
  viewer.Signal(SIGTERM);
}

TEST_F(DispatcherTest, CloseDispatcherAsksTheRunningOneToFinish) {
  StartDispatcher();
  std::string path = (dir / "closing.ztl").string();
  TZentrailDestination destination("File[Path=" + path + "]");
  TZentrailLogger log;
  log.ConnectUsingCopyData();
  log.SetDestination(&destination);
  ASSERT_EQ(log.Send("last words"), 1);
  log.CloseDispatcher();
  EXPECT_EQ(dispatcher.Wait(5000), 0) << "a clean exit";
  EXPECT_FALSE(SocketAnswers(socket));
  EXPECT_EQ(ReadLog(path).size(), 1u);
  EXPECT_EQ(log.Send("nobody left"), 0) << "and no new one is started: none is registered";
  log.SetDestination(nullptr);
}

TEST_F(DispatcherTest, LogFileIsClosedWhenNoRouteNamesItAnyMore) {
  StartDispatcher();
  std::string path = (dir / "closed-after.ztl").string();
  auto openInDispatcher = [&] {
    for (auto& fd : fs::directory_iterator("/proc/" + std::to_string(dispatcher.Pid()) + "/fd")) {
      std::error_code ec;
      if (fs::read_symlink(fd.path(), ec).string() == path) return true;
    }
    return false;
  };
  TZentrailDestination destination("File[Path=" + path + "]");
  TZentrailLogger a, b;
  a.SetDestination(&destination);
  b.SetDestination(&destination);
  ASSERT_EQ(a.Send("from a"), 1);
  ASSERT_EQ(b.Send("from b"), 1);
  EXPECT_TRUE(openInDispatcher());
  a.SetDestination(nullptr);
  ASSERT_EQ(a.Send("a to the viewer"), 1);  // closes a's file route
  EXPECT_TRUE(openInDispatcher()) << "b still writes there";
  b.SetDestination(nullptr);
  ASSERT_EQ(b.Send("b to the viewer"), 1);
  EXPECT_FALSE(openInDispatcher());
  b.SetDestination(&destination);
  ASSERT_EQ(b.Send("b again"), 1);
  b.SetDestination(nullptr);
  auto messages = ReadLog(path);
  ASSERT_EQ(messages.size(), 3u);
  EXPECT_EQ(messages[2].MsgText, "b again");
}

TEST_F(DispatcherTest, OnlyOneDispatcherRunsWhenSeveralStartAtOnce) {
  constexpr int kCount = 4;
  TChildProcess starters[kCount];
  for (auto& s : starters) ASSERT_TRUE(s.Start(Program(), {}));
  ASSERT_TRUE(WaitUntil([&] { return SocketAnswers(socket); }));
  pid_t serving = SocketServerPid(socket);
  int exited = 0;
  for (auto& s : starters) {
    if (s.Pid() == serving) continue;
    EXPECT_EQ(s.Wait(5000), 0) << "a second dispatcher leaves quietly";
    ++exited;
  }
  EXPECT_EQ(exited, kCount - 1);
  TZentrailLogger log;
  log.ConnectUsingCopyData();
  EXPECT_EQ(log.Send("served by the one"), 1);
  for (auto& s : starters) {
    if (s.Running()) {
      EXPECT_EQ(s.Signal(SIGTERM), 0);
    }
  }
}

TEST_F(DispatcherTest, TermEndsTheDispatcherEvenWhileTheViewerHangs) {
  TFakeFrameServer viewer(viewerSocket);
  viewer.Stall = true;
  StartDispatcher();
  TZentrailLogger log;
  log.ConnectUsingCopyData();
  for (int i = 0; i < 5; ++i) ASSERT_EQ(log.Send("queued " + std::to_string(i)), 1);
  ASSERT_TRUE(WaitUntil([&] { return viewer.Count() >= 1; }));
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(dispatcher.Signal(SIGTERM, 8000), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}
