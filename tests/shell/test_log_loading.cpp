// A long load stays a window: it repaints as it goes, Esc stops it keeping what was read, the live
// channel waits until it ends, and a file handed in meanwhile is loaded after it. A second start
// of the viewer hands its file to the running one.
#include <QKeyEvent>
#include <QLocale>
#include <QProcess>
#include <QProgressBar>
#include <filesystem>

#include "LogFileTestSupport.h"
#include "ShellFixture.h"
#include "TestEnvironment.h"
#include "ZTSingleInstance.h"

using namespace zentrail;
using namespace zentrail::test;
namespace fs = std::filesystem;

namespace {

const char* const kViewer = ZENTRAIL_BINARY_DIR "/src/shell/zentrail-viewer";

class LogLoadingTest : public ShellFixture {
 protected:
  fs::path MakeLog(const std::string& name, int records, const std::string& prefix) {
    std::string bytes;
    for (int i = 0; i < records; ++i) bytes += HandRecordText(i % 7 == 3 ? ztmWarning : ztmInfo, prefix + std::to_string(i));
    const fs::path path = MakeTempDir("loading") / name;
    WriteFile(path, bytes);
    return path;
  }
};

}  // namespace

TEST_F(LogLoadingTest, EscStopsALoadThatKeepsTheWindowPaintingAndTheChannelWaiting) {
  const fs::path log = MakeLog("long.ztl", 20000, "log ");
  const fs::path later = MakeLog("later.ztl", 3, "later ");
  const std::string socket = Listen();
  TZTFilterCriteria warnings;
  warnings.CheckMsgTypes = true;
  warnings.MsgTypeSet.set(ztmWarning);
  IZTMessageView* filtered = Viewer->CreateView("Warnings", warnings, false, false, "Default");
  Viewer->show();

  // Every 64 records the window gets its turn.
  Viewer->LoadSliceMs = 0;
  auto* progress = Viewer->findChild<QProgressBar*>(QStringLiteral("pbrComplete"));
  ASSERT_NE(progress, nullptr);
  std::vector<int> progressSeen;
  std::vector<int32_t> rowsSeen;
  std::unique_ptr<TChannelClient> client;
  int slice = 0;
  Viewer->OnLoadSlice = [&] {
    ++slice;
    progressSeen.push_back(progress->value());
    rowsSeen.push_back(AllMessages().GetCount());
    if (slice == 2) {
      // A live message and a second file arrive during the load; both must wait for its end.
      client = std::make_unique<TChannelClient>(socket);
      client->Send({{ztPacketTag, Packet(MakeMessage(ztmInfo, "live"))}});
      Viewer->LoadLogFile(QString::fromStdString(later.string()), true);
    }
    if (slice == 40) {
      QCoreApplication::postEvent(AllMessages().GetWidget(), new QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier));
    }
  };
  Viewer->LoadLogFile(QString::fromStdString(log.string()), false);
  Viewer->OnLoadSlice = nullptr;

  EXPECT_TRUE(Viewer->LastLoad().Cancelled);
  EXPECT_EQ(Viewer->LastLoad().Slices, 40);
  const int read = Viewer->LastLoad().Records;
  EXPECT_GE(read, 40 * 64);
  EXPECT_LT(read, 20000);
  // What was read is kept, in every view.
  EXPECT_EQ(MessageSet.GetRecordCount(), read);
  EXPECT_EQ(AllMessages().GetCount(), read);
  int warningsRead = 0;
  for (int i = 0; i < read; ++i) warningsRead += i % 7 == 3 ? 1 : 0;
  EXPECT_EQ(filtered->GetCount(), warningsRead);
  // The rows and the progress bar moved while it ran.
  ASSERT_GE(progressSeen.size(), 40u);
  EXPECT_GT(progressSeen.back(), progressSeen.front());
  EXPECT_GT(rowsSeen.back(), rowsSeen.front());
  EXPECT_TRUE(std::is_sorted(progressSeen.begin(), progressSeen.end()));
  EXPECT_EQ(progress->value(), 0);
  EXPECT_EQ(Viewer->StatusText("stsMessage"), "");
  EXPECT_TRUE(Viewer->GetAutoScroll());
  EXPECT_FALSE(Viewer->LoadingFile());
  EXPECT_EQ(Viewer->StatusText("stsMsgCount"), QStringLiteral("%1 out of %1 Messages").arg(QLocale().toString(read)));

  // After the load come the live message (it waited in the channel) and the second file, whole.
  // The client records its reply after the viewer has stored the message.
  ASSERT_TRUE(SpinUntil([&] { return MessageSet.GetRecordCount() == read + 4 && client->Done(); }));
  EXPECT_EQ(client->Replies(), std::vector<int>{1});
  std::vector<std::string> tail;
  for (size_t i = static_cast<size_t>(read) - 1; i < Stored().size(); ++i) tail.push_back(Stored()[i].second);
  const std::vector<std::string> liveFirst = {"log " + std::to_string(read - 1), "live", "later 0", "later 1", "later 2"};
  const std::vector<std::string> liveLast = {"log " + std::to_string(read - 1), "later 0", "later 1", "later 2", "live"};
  EXPECT_TRUE(tail == liveFirst || tail == liveLast) << tail[1] << " " << tail[2];
  EXPECT_TRUE(FPrompts->Prompts.empty());
}
