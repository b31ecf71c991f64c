// The dispatcher's road to the viewer in batches: what queues up while the viewer answers goes in
// batch frames of bounded size, in order, and a lone message never waits for company.
#include <gtest/gtest.h>

#include "DispatcherFixture.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

// The bounds of one batch to the viewer.
constexpr uint32_t kBatchRecords = 4096;
constexpr std::size_t kBatchBytes = 1024 * 1024;

std::string Numbered(const std::string& route, int i, std::size_t padding = 0) {
  return DispatcherTest::Text(route, "m" + std::to_string(i) + std::string(padding, '.'));
}

}  // namespace

TEST_F(DispatcherTest, TheViewerGetsWhatQueuedInBoundedBatchesInOrder) {
  TFakeFrameServer viewer(viewerSocket);
  StartDispatcher();
  std::string error;
  int fd = ConnectUnixSocket(socket, error);
  ASSERT_GE(fd, 0) << error;
  ASSERT_EQ(RawSend(fd, ztPacketTag, Open("R", "Viewer")), 1);

  // Alone in the queue, a message leaves at once as a frame of its own; the viewer then holds
  // its answer, and everything that comes meanwhile queues up in the dispatcher.
  viewer.Stall = true;
  ASSERT_EQ(RawSend(fd, ztPacketTag, Numbered("R", 0)), 1);
  ASSERT_TRUE(WaitUntil([&] { return viewer.Count() == 1; }));
  EXPECT_EQ(viewer.Frames()[0].Tag, ztPacketTag);

  constexpr int kSmall = 10000;
  std::string batch;
  for (int i = 1; i <= kSmall; ++i) AppendBatchRecord(batch, ztPacketTag, Numbered("R", i));
  EXPECT_EQ(SendBatchAndWaitCount(fd, batch, ztNoDeadline, error), kSmall) << error;
  // Large ones, and single frames between batches, on the same connection.
  constexpr int kLarge = 5;
  batch.clear();
  for (int i = kSmall + 1; i <= kSmall + kLarge; ++i) AppendBatchRecord(batch, ztPacketTag, Numbered("R", i, 300000));
  EXPECT_EQ(SendBatchAndWaitCount(fd, batch, ztNoDeadline, error), kLarge) << error;
  ASSERT_EQ(RawSend(fd, ztPacketTag, Numbered("R", kSmall + kLarge + 1)), 1);
  viewer.Stall = false;

  const std::size_t total = kSmall + kLarge + 2;
  ASSERT_TRUE(WaitUntil([&] { return viewer.Messages().size() == total; }, 20000)) << viewer.Messages().size();
  auto messages = viewer.Messages();
  for (std::size_t i = 0; i < total; ++i) {
    const std::string& text = messages[i].MsgText;
    ASSERT_EQ(text.substr(0, text.find('.')), "m" + std::to_string(i)) << "in arrival order";
  }

  // The queue went in batches of at most 4,096 records and 1 MiB, the first one full.
  auto shapes = viewer.BatchShapes();
  ASSERT_GE(shapes.size(), 3u);
  EXPECT_EQ(shapes[0].first, kBatchRecords);
  std::size_t inBatches = 0;
  for (auto [records, bytes] : shapes) {
    EXPECT_LE(records, kBatchRecords);
    EXPECT_LE(bytes, kBatchBytes);
    inBatches += records;
  }
  // Only what had nothing queued behind it went alone.
  EXPECT_GE(inBatches, total - 2);
  close(fd);
}

TEST_F(DispatcherTest, ABatchToAViewerThatWentAwayGoesToTheNextOne) {
  auto first = std::make_unique<TFakeFrameServer>(viewerSocket);
  StartDispatcher();
  std::string error;
  int fd = ConnectUnixSocket(socket, error);
  ASSERT_GE(fd, 0) << error;
  ASSERT_EQ(RawSend(fd, ztPacketTag, Open("R", "Viewer")), 1);
  ASSERT_EQ(RawSend(fd, ztPacketTag, Numbered("R", 0)), 1);
  ASSERT_TRUE(WaitUntil([&] { return first->Count() == 1; }));
  first.reset();

  // A new viewer at the same place: the dispatcher's old connection is dead, the batch is sent
  // again on a fresh one.
  TFakeFrameServer second(viewerSocket);
  std::string batch;
  for (int i = 1; i <= 50; ++i) AppendBatchRecord(batch, ztPacketTag, Numbered("R", i));
  EXPECT_EQ(SendBatchAndWaitCount(fd, batch, ztNoDeadline, error), 50) << error;
  ASSERT_TRUE(WaitUntil([&] { return second.Messages().size() == 50; }));
  EXPECT_EQ(second.Messages().front().MsgText, "m1");
  EXPECT_EQ(second.Messages().back().MsgText, "m50");
  close(fd);
}
