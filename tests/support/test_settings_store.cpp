// The viewer's settings object over its real file in the test's data folder.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "TestEnvironment.h"
#include "ZTSettingsStore.h"

namespace fs = std::filesystem;
using namespace zentrail;
using Strings = std::vector<std::string>;

namespace {

fs::path ExpectedFile() {
  const char* data = std::getenv("XDG_DATA_HOME");
  return fs::path(data ? data : "") / "Orvan/Zentrail/5.0/ZTLiveViewer.ini";
}

// Starts every test from a fresh object over a file that is not there.
void StartAfresh() {
  std::error_code ec;
  fs::remove(ExpectedFile(), ec);
  LoadViewerSettings();
}

}  // namespace

TEST(SettingsStore, FileLiesInTheDataFolderAndAFlushWritesTheWholeObject) {
  ASSERT_NE(std::getenv("XDG_DATA_HOME"), nullptr);
  ASSERT_EQ(fs::path(std::getenv("XDG_DATA_HOME")).string().rfind(test::TempRoot().string(), 0), 0u)
      << "the test must not reach the real data folder";
  StartAfresh();
  EXPECT_EQ(ViewerSettingsFileName(), ExpectedFile().string());
  EXPECT_TRUE(fs::is_directory(ExpectedFile().parent_path()));
  EXPECT_EQ(ViewerSettings().FileName(), ExpectedFile().string());
  EXPECT_TRUE(ViewerSettings().ReadSections().empty());
  EXPECT_FALSE(fs::exists(ExpectedFile()));  // loading never creates the file

  TZTIniFile& ini = ViewerSettings();
  ini.WriteInteger("Position", "Left", -1200);
  ini.WriteBool("Display", "RowShading", false);
  ini.WriteInteger("Display", "RowShadingColor", static_cast<int32_t>(0xFF000010u));
  ini.WriteString("MessageFont", "Name", "DejaVu Sans");
  std::string error;
  ASSERT_TRUE(FlushViewerSettings(error)) << error;
  EXPECT_EQ(test::ReadFile(ExpectedFile()),
            "[Position]\nLeft=-1200\n\n[Display]\nRowShading=0\nRowShadingColor=-16777200\n\n"
            "[MessageFont]\nName=DejaVu Sans\n");

  // The next run reads it back; an object whose name was never set still flushes to its place.
  ini.Clear();
  ini.SetFileName("");
  ini.WriteString("General", "LastProject", "/p/one.ztp");
  ASSERT_TRUE(FlushViewerSettings(error)) << error;
  EXPECT_EQ(ini.FileName(), ExpectedFile().string());
  LoadViewerSettings();
  EXPECT_EQ(ViewerSettings().ReadString("General", "LastProject", ""), "/p/one.ztp");
  EXPECT_EQ(ViewerSettings().ReadSections(), Strings{"General"});
}

TEST(SettingsStore, DamagedFilesLoadSilentlyAndGiveDefaults) {
  const std::vector<std::string> files = {
      "",
      std::string("\x00\xFF\xFE garbage \x01\n\n=\n[\n", 17),
      "[Position]\nLeft=12\nTop=",       // cut short in the middle of a line
      "[Position\nLeft=12\n",             // a section line without its bracket
      "[Position]\nLeft=twelve\nMaximized=maybe\nRight=99999999999\n",
  };
  for (const std::string& text : files) {
    SCOPED_TRACE(testing::PrintToString(text));
    StartAfresh();
    test::WriteFile(ExpectedFile(), text);
    LoadViewerSettings();
    const TZTIniFile& ini = ViewerSettings();
    EXPECT_EQ(ini.ReadInteger("Position", "Top", 20), 20);
    EXPECT_FALSE(ini.ReadBool("Position", "Maximized", false));
    EXPECT_EQ(ini.ReadInteger("Position", "Right", 790), 790);
  }
  // What can be read of a cut file still counts.
  test::WriteFile(ExpectedFile(), "[Position]\nLeft=12\nTop=");
  LoadViewerSettings();
  EXPECT_EQ(ViewerSettings().ReadInteger("Position", "Left", 20), 12);
}

TEST(SettingsStore, FindHistoryReadsToItsCountAndStoresAtOnce) {
  StartAfresh();
  test::WriteFile(ExpectedFile(),
                  "[MRULists]\nFindText_Count=5\nFindText_Item0=alpha\nFindText_Item1=\n"
                  "FindText_Item2=beta\nFindText_Item3=alpha\nFindText_Item4=gamma\nFindText_Item5=beyond\n");
  LoadViewerSettings();
  EXPECT_EQ(ReadFindHistory(ViewerSettings()), (Strings{"alpha", "beta", "gamma"}));

  // A damaged count reads nothing, or no more than the dialog keeps.
  TZTIniFile odd;
  odd.LoadFromString("[MRULists]\nFindText_Count=x\nFindText_Item0=a\n");
  EXPECT_TRUE(ReadFindHistory(odd).empty());
  odd.LoadFromString("[MRULists]\nFindText_Count=2000000000\nFindText_Item0=a\nFindText_Item25=z\n");
  EXPECT_EQ(ReadFindHistory(odd), Strings{"a"});

  // Something else changed in memory during the run reaches the disk with the history.
  ViewerSettings().WriteInteger("Position", "Left", 300);
  Strings many;
  for (int i = 0; i < 25; ++i) many.push_back("text " + std::to_string(i));
  std::string error;
  ASSERT_TRUE(StoreFindHistory(many, error)) << error;
  TZTIniFile disk(ExpectedFile().string());
  EXPECT_EQ(disk.ReadInteger("Position", "Left", 0), 300);
  EXPECT_EQ(disk.ReadInteger("MRULists", "FindText_Count", 0), 20);
  EXPECT_EQ(ReadFindHistory(disk), Strings(many.begin(), many.begin() + 20));
  EXPECT_FALSE(disk.ValueExists("MRULists", "FindText_Item20"));

  // A shorter history deletes the old items past its count.
  ASSERT_TRUE(StoreFindHistory({"only"}, error)) << error;
  disk.Reload();
  EXPECT_EQ(disk.ReadSection("MRULists"), (Strings{"FindText_Count", "FindText_Item0"}));
  EXPECT_EQ(ReadFindHistory(disk), Strings{"only"});
}

TEST(SettingsStore, MsgStyleKeysNameEachTypeOnce) {
  std::vector<int32_t> types;
  std::vector<std::string> prefixes;
  for (const TZTMsgStyleKey& k : MsgStyleKeys()) {
    types.push_back(k.MsgType);
    prefixes.emplace_back(k.Prefix);
  }
  EXPECT_EQ(types.size(), 35u);
  std::sort(types.begin(), types.end());
  EXPECT_EQ(std::adjacent_find(types.begin(), types.end()), types.end());
  std::sort(prefixes.begin(), prefixes.end());
  EXPECT_EQ(std::adjacent_find(prefixes.begin(), prefixes.end()), prefixes.end());
  // The types without keys: 0, 7, 11 to 15, 39, 40, 43.
  for (int32_t none : {0, 7, 11, 12, 13, 14, 15, 39, 40, 43})
    EXPECT_FALSE(std::binary_search(types.begin(), types.end(), none)) << none;
}

// A process that dies while it rewrites the file leaves the previous file whole.
TEST(SettingsStore, AWriterKilledMidWriteLeavesThePreviousFile) {
  StartAfresh();
  ViewerSettings().WriteString("General", "LastProject", "before");
  std::string error;
  ASSERT_TRUE(FlushViewerSettings(error)) << error;
  const std::string before = test::ReadFile(ExpectedFile());

  // Killed at the worst moment: the new text complete in its temporary file, not yet renamed.
  pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    detail::AtomicWriteBeforeRenameHook = [](const std::string&) {
      ::raise(SIGKILL);
      return true;
    };
    ViewerSettings().WriteString("General", "LastProject", "after");
    std::string e;
    FlushViewerSettings(e);
    ::_exit(0);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
  EXPECT_EQ(test::ReadFile(ExpectedFile()), before);

  // Killed at an unknown moment while it rewrites a large object again and again: whatever it
  // reached, the file is one whole version, never a mix.
  std::string big;
  for (int i = 0; i < 20000; ++i) big += "0123456789";
  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::close(ready[0]);
    for (int round = 0;; ++round) {
      ViewerSettings().WriteString("General", "SoundEffectFile", big + std::to_string(round % 2));
      std::string e;
      FlushViewerSettings(e);
      if (round == 0) {
        [[maybe_unused]] ssize_t n = ::write(ready[1], "x", 1);
      }
    }
  }
  ::close(ready[1]);
  char byte = 0;
  ASSERT_EQ(::read(ready[0], &byte, 1), 1);
  ::close(ready[0]);
  ::kill(child, SIGKILL);
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  TZTIniFile disk(ExpectedFile().string());
  const std::string sound = disk.ReadString("General", "SoundEffectFile", "");
  EXPECT_TRUE(sound == big + "0" || sound == big + "1") << sound.size();
  EXPECT_EQ(disk.ReadString("General", "LastProject", ""), "before");

  // The viewer of the next run writes over whatever temporary file the dead one left.
  ViewerSettings().WriteString("General", "LastProject", "later");
  ASSERT_TRUE(FlushViewerSettings(error)) << error;
  disk.Reload();
  EXPECT_EQ(disk.ReadString("General", "LastProject", ""), "later");
}

TEST(SettingsStore, AFileThatCannotBeReadIsNeverOverwritten) {
  StartAfresh();
  const std::string kept = "[Position]\nLeft=300\n";
  test::WriteFile(ExpectedFile(), kept);
  fs::permissions(ExpectedFile(), fs::perms::none);
  // Root reads any file, so the run happens in a child that is an ordinary user; the folders on the
  // way are opened up for it, the file itself stays closed.
  std::vector<std::pair<fs::path, fs::perms>> opened;
  if (geteuid() == 0) {
    for (fs::path dir = ExpectedFile().parent_path(); dir.string().rfind(test::TempRoot().string(), 0) == 0;
         dir = dir.parent_path()) {
      opened.emplace_back(dir, fs::status(dir).permissions());
      fs::permissions(dir, fs::perms::all);
      if (dir == test::TempRoot()) break;
    }
  }
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) _exit(3);
    LoadViewerSettings();
    ViewerSettings().WriteInteger("Position", "Left", 20);
    std::string error;
    const bool written = FlushViewerSettings(error);
    const bool named = error.find("ZTLiveViewer.ini") != std::string::npos;
    _exit(written ? 1 : named ? 0 : 2);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  for (const auto& [dir, perms] : opened) fs::permissions(dir, perms);
  fs::permissions(ExpectedFile(), fs::perms::owner_read | fs::perms::owner_write);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0) << "1: the unread file was overwritten; 2: the error didn't name it";
  EXPECT_EQ(test::ReadFile(ExpectedFile()), kept);

  // Once the file can be read again, the next run writes it as usual.
  LoadViewerSettings();
  EXPECT_EQ(ViewerSettings().ReadInteger("Position", "Left", 0), 300);
  std::string error;
  EXPECT_TRUE(FlushViewerSettings(error)) << error;
}
