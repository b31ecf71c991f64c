// Batch frames into the viewer: each record as if it had come alone, the whole batch inside one
// bracket, and the answer the number of records taken.
#include <gtest/gtest.h>

#include <future>

#include "ShellFixture.h"
#include "TestEnvironment.h"
#include "ZTChannelServer.h"
#include "Zlib.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

// Records what reaches it, brackets included, so that the order of both can be checked.
class TBracketTarget : public IZTCopyDataTarget {
 public:
  std::vector<std::string> Events;
  std::vector<std::string> Failures;
  uint32_t WMCopyData(uint32_t, std::string_view data) override {
    if (data == "throw") throw std::runtime_error("cannot read the packet");
    if (data == "abort") throw EZTChannelAbort("inflated size exceeds the bound");
    Events.emplace_back(data);
    return data == "refuse" ? 0 : 1;
  }
  void CopyDataFailed(const std::string& text) override { Failures.push_back(text); }
  void BeginCopyDataBatch() override { Events.emplace_back("{"); }
  void EndCopyDataBatch() override { Events.emplace_back("}"); }
};

std::string Batch(const std::vector<std::string>& records, uint32_t tag = ztPacketTag) {
  std::string batch;
  for (const std::string& r : records) AppendBatchRecord(batch, tag, r);
  return batch;
}

// Sends frames one after another from a thread of its own, while the test spins the event loop;
// each answer as the channel gave it (a count for a batch), -1 for a broken connection.
class TBatchClient {
 public:
  struct Frame {
    uint32_t Tag;
    std::string Bytes;
  };
  explicit TBatchClient(const std::string& path) { FFd = ConnectUnixSocket(path, FError); }
  ~TBatchClient() {
    if (FThread.joinable()) FThread.join();
    if (FFd >= 0) ::close(FFd);
  }
  void Send(std::vector<Frame> frames) {
    FThread = std::thread([this, frames = std::move(frames)] {
      for (const Frame& f : frames) {
        std::string error;
        int64_t answer = f.Tag == ztBatchTag ? SendBatchAndWaitCount(FFd, f.Bytes, ztNoDeadline, error)
                                             : SendFrameAndWaitReply(FFd, f.Tag, f.Bytes, error);
        FAnswers.push_back(answer);
        if (answer < 0) break;
      }
      FDone = true;
    });
  }
  bool Done() const { return FDone; }
  std::vector<int64_t> Answers() {
    FThread.join();
    return FAnswers;
  }

 private:
  int FFd = -1;
  std::string FError;
  std::thread FThread;
  std::vector<int64_t> FAnswers;
  std::atomic<bool> FDone{false};
};

}  // namespace

TEST(ChannelServerBatch, RecordsGoToTheTargetInOneBracketAndTheirCountIsTheAnswer) {
  TBracketTarget target;
  TZTChannelServer server(target);
  const std::string path = (MakeTempDir("batch") / "viewer").string();
  std::string error;
  ASSERT_TRUE(server.Listen(path, error)) << error;

  // A record the target cannot read or refuses costs that record only; a frame of its own after
  // the batch is served as before on the same connection.
  TBatchClient client(path);
  client.Send({{ztBatchTag, Batch({"a", "b", "throw", "refuse", "c"})},
               {ztPacketTag, "single"},
               {ztBatchTag, Batch({"d", "throw", "throw"})},
               {ztBatchTag, Batch({})},
               {ztBatchTag, Batch({"e", "abort", "never"})},
               {ztPacketTag, "never either"}});
  ASSERT_TRUE(SpinUntil([&] { return client.Done(); }));
  EXPECT_EQ(client.Answers(), (std::vector<int64_t>{3, 1, 1, 0, 1, -1}));
  EXPECT_EQ(target.Events, (std::vector<std::string>{"{", "a", "b", "refuse", "c", "}", "single", "{", "d", "}", "{",
                                                     "}", "{", "e", "}"}));
  // One report per batch, however many of its records failed.
  ASSERT_EQ(target.Failures.size(), 3u);
  EXPECT_EQ(target.Failures[0], "cannot read the packet");
  EXPECT_NE(target.Failures[1].find("1 further record"), std::string::npos) << target.Failures[1];
  EXPECT_EQ(target.Failures[2], "inflated size exceeds the bound");

  // A malformed record ends the batch: the answer counts the records before it, and the
  // connection is closed.
  std::string cut = Batch({"f", "g"});
  AppendBatchRecord(cut, 0x7F000006, "not a packet tag");
  cut += Batch({"h"});
  std::string truncated = Batch({"i"}) + std::string("\x7F\x00\x00\x04\x00\x00\x01", 7);
  TBatchClient malformed(path), shortened(path);
  malformed.Send({{ztBatchTag, cut}, {ztPacketTag, "never"}});
  shortened.Send({{ztBatchTag, truncated}});
  ASSERT_TRUE(SpinUntil([&] { return malformed.Done() && shortened.Done(); }));
  EXPECT_EQ(malformed.Answers(), (std::vector<int64_t>{2, -1}));
  EXPECT_EQ(shortened.Answers(), (std::vector<int64_t>{1}));
  ASSERT_TRUE(SpinUntil([&] { return server.ClientCount() == 0; }));
  EXPECT_EQ(std::count(target.Events.begin(), target.Events.end(), "h"), 0);
  EXPECT_EQ(std::count(target.Events.begin(), target.Events.end(), "{"),
            std::count(target.Events.begin(), target.Events.end(), "}"));
}

class BatchIntakeTest : public ShellFixture {};

TEST_F(BatchIntakeTest, RecordsOfABatchTakeTheLiveRoadEachAsIfAlone) {
  const std::string path = Listen();
  std::string batch;
  AppendBatchRecord(batch, ztPacketTag, Packet(MakeMessage(ztmEnterMethod, "Outer")));
  AppendBatchRecord(batch, ztCompressedPacketTag, ZlibDeflate(Packet(MakeMessage(ztmInfo, "compressed"))));
  AppendBatchRecord(batch, ztPacketTag, "ZTP1 not a packet");
  AppendBatchRecord(batch, ztPacketTag, Packet(MakeMessage(ztmSeparator, "")));
  AppendBatchRecord(batch, ztPacketTag, Packet(MakeMessage(ztmScratchPad, "Progress@50 %")));
  AppendBatchRecord(batch, ztPacketTag, Packet(MakeMessage(ztmExitMethodCollapse, "Outer")));
  TBatchClient client(path);
  client.Send({{ztBatchTag, batch}});
  ASSERT_TRUE(SpinUntil([&] { return client.Done(); }));
  EXPECT_EQ(client.Answers(), (std::vector<int64_t>{5}));

  using Records = std::vector<std::pair<int32_t, std::string>>;
  EXPECT_EQ(Stored(), (Records{{ztmEnterMethod, "Outer"},
                               {ztmInfo, "compressed"},
                               {ztmSeparator, "-"},
                               {ztmExitMethod, "Outer"}}));
  // The structure is as if the messages had come one by one: the exit-and-collapse closed the
  // method to one row.
  IZTMessageView& view = AllMessages();
  EXPECT_EQ(view.GetCount(), 1);
  EXPECT_FALSE(Viewer->InMessageBatch()) << "the bracket is closed with the batch";
  // The one bad record is reported once, after the answer.
  ASSERT_TRUE(SpinUntil([&] { return FPrompts->Prompts.size() == 1; }));

  // A clear inside a batch empties the store there; what follows it stays.
  TBatchClient second(path);
  second.Send({{ztBatchTag, Batch({Packet(MakeMessage(ztmInfo, "gone")), Packet(MakeMessage(ztmClear, "")),
                                   Packet(MakeMessage(ztmInfo, "kept"))})}});
  ASSERT_TRUE(SpinUntil([&] { return second.Done(); }));
  EXPECT_EQ(second.Answers(), (std::vector<int64_t>{3}));
  EXPECT_EQ(Stored(), (Records{{ztmInfo, "kept"}}));
  EXPECT_EQ(AllMessages().GetCount(), 1);

  // While blocked, no record of a batch is taken.
  Viewer->SetMessagesBlocked(true);
  TBatchClient blocked(path);
  blocked.Send({{ztBatchTag, Batch({Packet(MakeMessage(ztmInfo, "x")), Packet(MakeMessage(ztmInfo, "y"))})}});
  ASSERT_TRUE(SpinUntil([&] { return blocked.Done(); }));
  EXPECT_EQ(blocked.Answers(), (std::vector<int64_t>{0}));
  EXPECT_EQ(MessageSet.GetRecordCount(), 1);
}
