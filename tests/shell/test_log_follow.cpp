// Following a log that another process appends to: whole records only, rotations, a file that
// shrinks or goes bad, and a real dispatcher writing through its File destination.
#include <QAction>
#include <QDialog>
#include <QLabel>
#include <cstdlib>
#include <filesystem>

#include "LogFileTestSupport.h"
#include "ShellFixture.h"
#include "TestEnvironment.h"
#include "ZTLogTail.h"
#include "ZentrailLogger.h"

using namespace zentrail;
using namespace zentrail::test;
namespace fs = std::filesystem;

namespace {

class LogFollowTest : public ShellFixture {
 protected:
  void SetUp() override {
    ShellFixture::SetUp();
    FDir = MakeTempDir("follow");
    FPrompts->DialogHandler = [this](QDialog& dialog) {
      if (auto* label = dialog.findChild<QLabel*>(QStringLiteral("lblText"))) FFormTexts << label->text();
      return int(QDialog::Accepted);
    };
  }
  std::vector<std::string> Texts() {
    std::vector<std::string> out;
    for (const auto& [type, text] : Stored()) out.push_back(text);
    return out;
  }
  fs::path FDir;
  QStringList FFormTexts;
};

std::string Info(const std::string& text) { return HandRecordText(ztmInfo, text); }

}  // namespace

TEST_F(LogFollowTest, WholeRecordsOnlyThroughRotationsUntilTheFileShrinks) {
  const fs::path log = FDir / "app.ztl";
  WriteFile(log, Info("one") + Info("two"));
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "live before"));
  FPrompts->ThreeWayAnswers = {TZTAnswer::No};
  ASSERT_TRUE(Viewer->StartFollowing(QString::fromStdString(log.string())));
  EXPECT_TRUE(Viewer->Following());
  EXPECT_TRUE(Viewer->Action("actFollowLog")->isChecked());
  EXPECT_EQ(Viewer->StatusText("stsMessage"), "Following app.ztl");
  EXPECT_EQ(Texts(), (std::vector<std::string>{"one", "two"}));

  // A record cut off mid-write waits for its end; it is no damage.
  const std::string three = Info("three");
  AppendToFile(log, three.substr(0, 3));
  Viewer->FollowTick();
  AppendToFile(log, three.substr(3, 20));
  Viewer->FollowTick();
  EXPECT_EQ(AllMessages().GetCount(), 2);
  EXPECT_EQ(Viewer->FollowedLog()->Pending(), 23u);
  AppendToFile(log, three.substr(23) + Info("four"));
  // The file watcher or the timer brings it in without being asked.
  ASSERT_TRUE(SpinUntil([&] { return AllMessages().GetCount() == 4; }));
  EXPECT_EQ(Texts(), (std::vector<std::string>{"one", "two", "three", "four"}));

  // Rotation as a dispatcher does it: the last record lands in the old file, which is renamed to
  // part 1; a new file takes the name. Then two more rotations before the next look.
  AppendToFile(log, Info("five"));
  fs::rename(log, FDir / "app.1.ztl");
  WriteFile(log, Info("six"));
  Viewer->FollowTick();
  EXPECT_EQ(Viewer->FollowedLog()->Rotations(), 1);
  AppendToFile(log, Info("seven"));
  fs::rename(FDir / "app.1.ztl", FDir / "app.2.ztl");
  fs::rename(log, FDir / "app.1.ztl");
  WriteFile(log, Info("eight"));
  fs::rename(FDir / "app.2.ztl", FDir / "app.3.ztl");
  fs::rename(FDir / "app.1.ztl", FDir / "app.2.ztl");
  fs::rename(log, FDir / "app.1.ztl");
  WriteFile(log, Info("nine"));
  Viewer->FollowTick();
  EXPECT_EQ(Texts(), (std::vector<std::string>{"one", "two", "three", "four", "five", "six", "seven", "eight", "nine"}));
  EXPECT_TRUE(FPrompts->Prompts.size() == 1u && FPrompts->Prompts.front().Question);

  // A separator read while following is made anew, like one from a live sender.
  AppendToFile(log, HandRecordText(ztmSeparator, "sep"));
  Viewer->FollowTick();
  EXPECT_EQ(Stored().back(), (std::pair<int32_t, std::string>{ztmSeparator, "-"}));

  // A file that becomes shorter was not appended to: one message, following ends, rows stay.
  fs::resize_file(log, 5);
  Viewer->FollowTick();
  EXPECT_FALSE(Viewer->Following());
  EXPECT_FALSE(Viewer->Action("actFollowLog")->isChecked());
  EXPECT_EQ(Viewer->StatusText("stsMessage"), "");
  ASSERT_EQ(FPrompts->Prompts.size(), 2u);
  EXPECT_TRUE(FPrompts->Prompts.back().Text.contains("became shorter")) << FPrompts->Prompts.back().Text.toStdString();
  EXPECT_EQ(AllMessages().GetCount(), 10);
  AppendToFile(log, Info("not read"));
  Viewer->FollowTick();
  EXPECT_EQ(AllMessages().GetCount(), 10);
}

TEST_F(LogFollowTest, ADamagedRecordStopsFollowingWithTheInvalidLogForm) {
  const fs::path log = FDir / "bad.ztl";
  WriteFile(log, Info("good"));
  FPrompts->FileAnswers = {{QString::fromStdString(log.string()), 0}};
  Viewer->Action("actFollowLog")->trigger();
  ASSERT_EQ(FPrompts->FileDialogs.size(), 1u);
  EXPECT_EQ(FPrompts->FileDialogs.front().Title, "Follow Zentrail Log File");
  EXPECT_FALSE(FPrompts->FileDialogs.front().Save);
  ASSERT_TRUE(Viewer->Following());

  AppendToFile(log, LE32(0x7F000002) + Info("after"));
  Viewer->FollowTick();
  EXPECT_FALSE(Viewer->Following());
  ASSERT_EQ(FFormTexts.size(), 1);
  EXPECT_TRUE(FFormTexts.front().contains("Unsupported message format ($7F000002)") ||
              FFormTexts.front().contains("unsupported message format ($7F000002)"))
      << FFormTexts.front().toStdString();
  EXPECT_EQ(Texts(), std::vector<std::string>{"good"});

  // Triggered again while following, the command stops it; a missing file is refused.
  FPrompts->FileAnswers = {{QString::fromStdString((FDir / "none.ztl").string()), 0}};
  FPrompts->ThreeWayAnswers = {TZTAnswer::No};
  Viewer->Action("actFollowLog")->trigger();
  EXPECT_FALSE(Viewer->Following());
  EXPECT_TRUE(FPrompts->Prompts.back().Text.contains("No such file")) << FPrompts->Prompts.back().Text.toStdString();
}

TEST_F(LogFollowTest, TheRecordsThatADispatcherFileDestinationWritesAcrossItsParts) {
  const fs::path dispatcher = fs::path(ZENTRAIL_BINARY_DIR) / "src/dispatcher/zentrail-dispatcher";
  ASSERT_TRUE(fs::exists(dispatcher)) << dispatcher;
  const fs::path registry = std::getenv("ZENTRAIL_REGISTRY");
  WriteFile(registry, "[Software\\Orvan\\Zentrail\\5.0]\nDispatcher=" + dispatcher.string() + "\n");
  const fs::path log = FDir / "service.ztl";
  {
    // Parts of 1 KiB, at most three kept.
    TZentrailDestination destination("File[Path=" + log.string() + ";MaxSize=1;MaxParts=3]");
    TZentrailLogger logger;
    logger.SetDestination(&destination);
    ASSERT_EQ(logger.Send("message 0"), 1);
    ASSERT_TRUE(fs::exists(log));
    ASSERT_TRUE(Viewer->StartFollowing(QString::fromStdString(log.string())));
    for (int i = 1; i < 60; ++i) {
      ASSERT_EQ(logger.Send("message " + std::to_string(i)), 1);
      ASSERT_TRUE(SpinUntil([&] { return AllMessages().GetCount() == i + 1; })) << "message " << i;
    }
    logger.CloseDispatcher();
  }
  EXPECT_TRUE(fs::exists(FDir / "service.3.ztl"));
  EXPECT_FALSE(fs::exists(FDir / "service.4.ztl"));
  EXPECT_GE(Viewer->FollowedLog()->Rotations(), 3);
  const std::vector<std::string> texts = Texts();
  ASSERT_EQ(texts.size(), 60u);
  for (int i = 0; i < 60; ++i) EXPECT_EQ(texts[static_cast<size_t>(i)], "message " + std::to_string(i));
  EXPECT_TRUE(FPrompts->Prompts.empty());

  // The dispatcher's file opens like any other log: its records, in order, field for field as
  // they were followed.
  const int32_t followedCount = MessageSet.GetRecordCount();
  std::vector<TZentrailMessage> followed(static_cast<size_t>(followedCount));
  for (int32_t r = 1; r <= followedCount; ++r) MessageSet.GetMessage(r, followed[static_cast<size_t>(r - 1)]);
  FPrompts->ThreeWayAnswers = {TZTAnswer::No};
  Viewer->LoadLogFile(QString::fromStdString(log.string()), false);
  EXPECT_FALSE(Viewer->Following());
  const int32_t loaded = MessageSet.GetRecordCount();
  ASSERT_GT(loaded, 0);
  ASSERT_LT(loaded, followedCount);
  for (int32_t r = 1; r <= loaded; ++r) {
    TZentrailMessage m;
    MessageSet.GetMessage(r, m);
    EXPECT_EQ(m, followed[static_cast<size_t>(followedCount - loaded + r - 1)]) << "record " << r;
  }
  fs::remove(registry);
}

TEST(LogTail, ARecordIsCompleteOnlyWithItsLastByte) {
  const std::string record = Info("text");
  for (std::size_t n = 0; n < record.size(); ++n)
    EXPECT_EQ(TZTLogTail::CompleteRecordSize(std::string_view(record).substr(0, n)), 0u) << n;
  EXPECT_EQ(TZTLogTail::CompleteRecordSize(record + "more"), record.size());
  // A length that no writer produces is damage at once, not a wait for 2 GiB.
  EXPECT_EQ(TZTLogTail::CompleteRecordSize(LE32(0x7F000004) + LE32(0x7FFFFFFF)), SIZE_MAX);
  EXPECT_EQ(TZTLogTail::CompleteRecordSize(LE32(0x7F000004) + LE32(0xFFFFFFFF)), 8u);
  EXPECT_EQ(TZTLogTail::CompleteRecordSize(LE32(0x12345678)), 4u);
  const std::string legacy = HandLegacyRecord(0, 1, ztDateOf2000, "abc", "de", "t", "a");
  EXPECT_EQ(TZTLogTail::CompleteRecordSize(legacy.substr(0, legacy.size() - 1)), 0u);
  EXPECT_EQ(TZTLogTail::CompleteRecordSize(legacy), legacy.size());
  EXPECT_EQ(TZTLogTail::PartFileName("/a/b.c/app.ztl", 2), "/a/b.c/app.2.ztl");
  EXPECT_EQ(TZTLogTail::PartFileName("/a/b.c/app", 2), "/a/b.c/app.2");
}
