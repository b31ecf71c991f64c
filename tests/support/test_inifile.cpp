#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "TestEnvironment.h"
#include "ZTDateTime.h"
#include "ZTIniFile.h"

namespace fs = std::filesystem;
using namespace zentrail;
using Strings = std::vector<std::string>;

namespace {

// Puts the rename seam back whatever the test's outcome.
struct HookGuard {
  explicit HookGuard(bool (*hook)(const std::string&)) { detail::AtomicWriteBeforeRenameHook = hook; }
  ~HookGuard() { detail::AtomicWriteBeforeRenameHook = nullptr; }
};

std::vector<std::string> FilesIn(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& e : fs::directory_iterator(folder)) names.push_back(e.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

TEST(IniFile, ReadsWhatItWroteWithTypesAndDefaults) {
  TZTIniFile ini;
  ini.WriteString("General", "SoundEffectFile", "/usr/share/sounds/ding; \"loud\" =x");
  ini.WriteInteger("Position", "Left", -20);
  ini.WriteInteger("Display", "RowShadingColor", static_cast<int32_t>(0xFF000010u));
  ini.WriteBool("Display", "RowShading", true);
  ini.WriteBool("Display", "Inspector", false);
  ini.WriteFloat("Numbers", "Pi", 3.141592653589793);
  ini.WriteFloat("Numbers", "Tiny", 1e-300);
  ini.WriteString("Unicode", "Name", "Zoë 日本 \xF0\x9F\x98\x80");
  ini.WriteBinary("Bin", "Data", std::string("\x00\x01\xAB\xFF", 4));
  TZTDateTimeParts when{2024, 2, 29, 23, 59, 58, 999};
  ini.WriteDateTime("Dates", "When", EncodeDateTime(when));

  TZTIniFile back;
  back.LoadFromString(ini.ToString());
  EXPECT_EQ(back.ReadString("General", "SoundEffectFile", ""), "/usr/share/sounds/ding; \"loud\" =x");
  EXPECT_EQ(back.ReadInteger("Position", "Left", 0), -20);
  EXPECT_EQ(back.ReadString("Display", "RowShadingColor", ""), "-16777200");
  EXPECT_EQ(back.ReadInteger("Display", "RowShadingColor", 0), static_cast<int32_t>(0xFF000010u));
  EXPECT_EQ(back.ReadString("Display", "RowShading", ""), "1");
  EXPECT_EQ(back.ReadString("Display", "Inspector", ""), "0");
  EXPECT_TRUE(back.ReadBool("Display", "RowShading", false));
  EXPECT_FALSE(back.ReadBool("Display", "Inspector", true));
  EXPECT_DOUBLE_EQ(back.ReadFloat("Numbers", "Pi", 0), 3.141592653589793);
  EXPECT_EQ(back.ReadFloat("Numbers", "Tiny", 0), 1e-300);
  EXPECT_EQ(back.ReadString("Unicode", "Name", ""), "Zoë 日本 \xF0\x9F\x98\x80");
  EXPECT_EQ(back.ReadBinary("Bin", "Data"), std::string("\x00\x01\xAB\xFF", 4));
  EXPECT_EQ(back.ReadString("Bin", "Data", ""), "0001ABFF");
  EXPECT_EQ(back.ReadString("Dates", "When", ""), "2024-02-29 23:59:58.999");
  TZTDateTimeParts read;
  ASSERT_TRUE(DecodeDateTime(back.ReadDateTime("Dates", "When", 0), read));
  EXPECT_EQ(read, when);

  // Missing sections and keys give the defaults.
  EXPECT_EQ(back.ReadString("Nope", "Left", "dflt"), "dflt");
  EXPECT_EQ(back.ReadInteger("Position", "Nope", 790), 790);
  EXPECT_TRUE(back.ReadBool("Position", "Nope", true));
  EXPECT_EQ(back.ReadFloat("Position", "Nope", 2.5), 2.5);
  EXPECT_EQ(back.ReadBinary("Position", "Nope"), "");
}

TEST(IniFile, NumbersAndBooleansThatDoNotParseGiveTheDefault) {
  TZTIniFile ini;
  ini.LoadFromString(
      "[N]\n"
      "a=12abc\nb=\nc= 42 \nd=$FF000010\ne=0x10\nf=2147483647\ng=2147483648\nh=-2147483648\n"
      "i=-2147483649\nj=1.5\nk=+7\nl=--1\nm=$\nn=$1FFFFFFFF\no=abc\n"
      "[B]\n"
      "one=1\nzero=0\nminus=-1\nt=true\nT=TRUE\nf=False\ny=yes\nempty=\nnum=17\n"
      "[F]\n"
      "comma=1,5\nexp=2e3\nnan=nan\ninf=inf\nneg=-0.25\n"
      "[D]\n"
      "date=2000-01-01\nbad=2001-02-29 10:00:00\nnum=36526.5\ngarbage=2000-01-01 1\n");
  EXPECT_EQ(ini.ReadInteger("N", "a", 5), 5);
  EXPECT_EQ(ini.ReadInteger("N", "b", 5), 5);
  EXPECT_EQ(ini.ReadInteger("N", "c", 5), 42);
  EXPECT_EQ(ini.ReadInteger("N", "d", 5), static_cast<int32_t>(0xFF000010u));
  EXPECT_EQ(ini.ReadInteger("N", "e", 5), 16);
  EXPECT_EQ(ini.ReadInteger("N", "f", 5), 2147483647);
  EXPECT_EQ(ini.ReadInteger("N", "g", 5), 5);
  EXPECT_EQ(ini.ReadInteger("N", "h", 5), INT32_MIN);
  EXPECT_EQ(ini.ReadInteger("N", "i", 5), 5);
  EXPECT_EQ(ini.ReadInteger("N", "j", 5), 5);
  EXPECT_EQ(ini.ReadInteger("N", "k", 5), 7);
  EXPECT_EQ(ini.ReadInteger("N", "l", 5), 5);
  EXPECT_EQ(ini.ReadInteger("N", "m", 5), 5);
  EXPECT_EQ(ini.ReadInteger("N", "n", 5), 5);
  EXPECT_EQ(ini.ReadInteger("N", "o", 5), 5);

  EXPECT_TRUE(ini.ReadBool("B", "one", false));
  EXPECT_FALSE(ini.ReadBool("B", "zero", true));
  EXPECT_TRUE(ini.ReadBool("B", "minus", false));
  EXPECT_TRUE(ini.ReadBool("B", "num", false));
  EXPECT_TRUE(ini.ReadBool("B", "t", false));
  EXPECT_FALSE(ini.ReadBool("B", "f", true));
  EXPECT_TRUE(ini.ReadBool("B", "y", true));
  EXPECT_FALSE(ini.ReadBool("B", "y", false));
  EXPECT_TRUE(ini.ReadBool("B", "empty", true));
  EXPECT_FALSE(ini.ReadBool("B", "empty", false));

  EXPECT_EQ(ini.ReadFloat("F", "comma", 9), 9);
  EXPECT_EQ(ini.ReadFloat("F", "exp", 9), 2000);
  EXPECT_EQ(ini.ReadFloat("F", "nan", 9), 9);
  EXPECT_EQ(ini.ReadFloat("F", "inf", 9), 9);
  EXPECT_EQ(ini.ReadFloat("F", "neg", 9), -0.25);

  EXPECT_EQ(ini.ReadDateTime("D", "date", -1), 36526.0);
  EXPECT_EQ(ini.ReadDateTime("D", "bad", -1), -1);
  EXPECT_EQ(ini.ReadDateTime("D", "num", -1), 36526.5);
  EXPECT_EQ(ini.ReadDateTime("D", "garbage", -1), -1);
}

TEST(IniFile, NamesIgnoreCaseAndOrderIsKept) {
  TZTIniFile ini;
  ini.WriteString("Views", "ViewCount", "2");
  ini.WriteString("1_Errors", "Zeta", "z");
  ini.WriteString("1_Errors", "Alpha", "a");
  ini.WriteString("1_Errors", "Mid", "m");
  ini.WriteString("views", "VIEWCOUNT", "3");  // same section and key, new spelling of the key
  ini.WriteString("1_ERRORS", "alpha", "A2");

  EXPECT_EQ(ini.ReadSections(), (Strings{"Views", "1_Errors"}));
  EXPECT_EQ(ini.ReadSection("1_errors"), (Strings{"Zeta", "alpha", "Mid"}));
  EXPECT_EQ(ini.ReadSectionValues("1_Errors"), (Strings{"Zeta=z", "alpha=A2", "Mid=m"}));
  EXPECT_EQ(ini.ReadInteger("VIEWS", "viewcount", 0), 3);
  EXPECT_TRUE(ini.SectionExists("vIeWs"));
  EXPECT_TRUE(ini.ValueExists("1_errors", "ZETA"));
  EXPECT_FALSE(ini.ValueExists("1_errors", "Zet"));
  EXPECT_FALSE(ini.SectionExists("1_Error"));
  EXPECT_EQ(ini.ToString(), "[Views]\nVIEWCOUNT=3\n\n[1_Errors]\nZeta=z\nalpha=A2\nMid=m\n");

  ini.DeleteKey("1_ERRORS", "zeta");
  ini.DeleteKey("1_Errors", "NotThere");
  ini.DeleteKey("NoSection", "Mid");
  EXPECT_EQ(ini.ReadSection("1_Errors"), (Strings{"alpha", "Mid"}));
  ini.WriteString("1_Errors", "Zeta", "again");  // a new key goes to the end
  EXPECT_EQ(ini.ReadSection("1_Errors"), (Strings{"alpha", "Mid", "Zeta"}));

  ini.EraseSection("VIEWS");
  EXPECT_FALSE(ini.SectionExists("Views"));
  EXPECT_EQ(ini.ReadSections(), (Strings{"1_Errors"}));
  EXPECT_EQ(ini.ReadString("Views", "ViewCount", "gone"), "gone");
  ini.WriteString("Views", "ViewCount", "0");  // an erased section comes back at the end
  EXPECT_EQ(ini.ReadSections(), (Strings{"1_Errors", "Views"}));
  EXPECT_TRUE(ini.ReadSection("Nothing").empty());
  EXPECT_TRUE(ini.ReadSectionValues("Nothing").empty());

  // The current section that views read and write through is just remembered.
  ini.SetCurrentSection("2_Warnings");
  EXPECT_EQ(ini.CurrentSection(), "2_Warnings");

  ini.Clear();
  EXPECT_TRUE(ini.ReadSections().empty());
  EXPECT_EQ(ini.ToString(), "");
}

TEST(IniFile, LoadsDamagedAndForeignTextWithoutFailing) {
  TZTIniFile ini;
  // BOM, CR LF, lone CR and LF, comments, keys before any section, lines without "=", a section
  // header without its bracket, blanks around names and values, duplicate sections and keys,
  // "=" inside a value, an empty key, and a truncated last line.
  ini.LoadFromString(
      "\xEF\xBB\xBF"
      "orphan=1\r\n"
      "[ First ]\r\n"
      "  Key A  =  spaced value  \r\n"
      "; comment=1\r"
      "# other=2\n"
      "no equals sign\n"
      "=empty key\n"
      "url=http://x/?a=b\n"
      "[Broken\n"
      "lost=1\n"
      "[Second]\n"
      "k=first\n"
      "K=second\n"
      "[first]\n"
      "extra=yes\n"
      "[Third]\n"
      "trunc=abc");
  EXPECT_EQ(ini.ReadSections(), (Strings{"First", "Second", "Third"}));
  EXPECT_EQ(ini.ReadSectionValues("First"),
            (Strings{"Key A=spaced value", "url=http://x/?a=b", "extra=yes"}));
  EXPECT_EQ(ini.ReadString("Second", "k", ""), "first");
  EXPECT_EQ(ini.ReadSection("Second").size(), 1u);
  EXPECT_EQ(ini.ReadString("Third", "trunc", ""), "abc");
  EXPECT_FALSE(ini.ValueExists("First", "orphan"));
  EXPECT_FALSE(ini.ValueExists("Broken", "lost"));

  // A section line read back keeps bytes it does not understand.
  ini.LoadFromString("[S]\nbytes=\xFF\xFE\x01 tail\n");
  EXPECT_EQ(ini.ReadString("S", "bytes", ""), "\xFF\xFE\x01 tail");

  // Random bytes, and every prefix of a real file, load without harm.
  std::mt19937 rng(12345);
  std::uniform_int_distribution<int> byte(0, 255);
  for (int round = 0; round < 200; ++round) {
    std::string junk(static_cast<std::size_t>(rng() % 300), '\0');
    for (char& c : junk) {
      int b = byte(rng);
      // Bias towards the characters that matter to the parser.
      if (b < 40) b = "[]=\r\n;"[b % 6];
      c = static_cast<char>(b);
    }
    ini.LoadFromString(junk);
    for (const std::string& s : ini.ReadSections()) ini.ReadSectionValues(s);
  }
  const std::string real = "[Position]\r\nLeft=20\r\nTop=30\r\n[Display]\r\nRowShading=1\r\n";
  for (std::size_t n = 0; n <= real.size(); ++n) {
    ini.LoadFromString(real.substr(0, n));
    EXPECT_LE(ini.ReadSections().size(), 2u);
  }
  ini.LoadFromString(real.substr(0, real.find("30") + 1));
  EXPECT_EQ(ini.ReadInteger("Position", "Top", 0), 3);
}

TEST(IniFile, FileIsLoadedAndRewrittenWhole) {
  fs::path dir = zentrail::test::MakeTempDir("ini");
  fs::path file = dir / "ZTLiveViewer.ini";

  TZTIniFile missing((dir / "absent.ini").string());
  EXPECT_TRUE(missing.ReadSections().empty());
  EXPECT_FALSE(fs::exists(dir / "absent.ini"));

  zentrail::test::WriteFile(file, "[Position]\r\nLeft=5\r\nTop=6\r\n\r\n[Find]\r\nFindForward=0\r\n");
  ::chmod(file.c_str(), 0640);
  TZTIniFile ini(file.string());
  EXPECT_EQ(ini.FileName(), file.string());
  EXPECT_EQ(ini.ReadInteger("Position", "Top", 0), 6);
  ini.WriteInteger("Position", "Left", 99);
  ini.WriteString("MRULists", "FindText_Item0", "needle");
  // Memory only until UpdateFile.
  EXPECT_NE(zentrail::test::ReadFile(file).find("Left=5"), std::string::npos);
  ini.UpdateFile();
  EXPECT_EQ(zentrail::test::ReadFile(file),
            "[Position]\nLeft=99\nTop=6\n\n[Find]\nFindForward=0\n\n[MRULists]\nFindText_Item0=needle\n");
  struct stat st {};
  ASSERT_EQ(::stat(file.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0640u);  // permissions kept across the rewrite
  EXPECT_EQ(FilesIn(dir), (Strings{"ZTLiveViewer.ini"}));

  // Reload drops what is only in memory.
  ini.WriteString("Position", "Left", "memory only");
  EXPECT_TRUE(ini.Reload());
  EXPECT_EQ(ini.ReadInteger("Position", "Left", 0), 99);

  // A new file in a fresh folder.
  TZTIniFile fresh((dir / "new.ztp").string());
  fresh.WriteInteger("Views", "ViewCount", 0);
  fresh.UpdateFile();
  EXPECT_EQ(zentrail::test::ReadFile(dir / "new.ztp"), "[Views]\nViewCount=0\n");

  // Through a symbolic link the link stays and its target is replaced.
  fs::create_symlink(dir / "new.ztp", dir / "link.ztp");
  TZTIniFile viaLink((dir / "link.ztp").string());
  viaLink.WriteInteger("Views", "ViewCount", 4);
  viaLink.UpdateFile();
  EXPECT_TRUE(fs::is_symlink(dir / "link.ztp"));
  EXPECT_EQ(zentrail::test::ReadFile(dir / "new.ztp"), "[Views]\nViewCount=4\n");
}

TEST(IniFile, AFailedRewriteLeavesTheOldFileWhole) {
  fs::path dir = zentrail::test::MakeTempDir("inifail");
  fs::path file = dir / "settings.ini";
  const std::string original = "[Position]\nLeft=5\n";
  zentrail::test::WriteFile(file, original);

  TZTIniFile ini(file.string());
  ini.WriteInteger("Position", "Left", 77);
  {
    // The process dies after the temporary file is complete but before the rename.
    HookGuard guard([](const std::string&) { return false; });
    EXPECT_THROW(ini.UpdateFile(), EZTIniFileError);
    std::string error;
    EXPECT_FALSE(ini.TryUpdateFile(error));
    EXPECT_NE(error.find(file.string()), std::string::npos) << error;
  }
  EXPECT_EQ(zentrail::test::ReadFile(file), original);
  EXPECT_EQ(FilesIn(dir), (Strings{"settings.ini"}));  // no temporary file left behind

  // The temporary file really held the whole new text at that moment.
  static std::string seenInTemp;
  {
    HookGuard guard([](const std::string& temp) {
      seenInTemp = zentrail::test::ReadFile(temp);
      return true;
    });
    ini.UpdateFile();
  }
  EXPECT_EQ(seenInTemp, "[Position]\nLeft=77\n");
  EXPECT_EQ(zentrail::test::ReadFile(file), seenInTemp);

  // A folder that does not exist, and a folder where the file should be.
  TZTIniFile nowhere((dir / "missing-folder/x.ini").string());
  nowhere.WriteString("A", "b", "c");
  try {
    nowhere.UpdateFile();
    ADD_FAILURE() << "no exception";
  } catch (const EZTIniFileError& e) {
    EXPECT_NE(std::string(e.what()).find("missing-folder/x.ini"), std::string::npos) << e.what();
  }
  fs::create_directory(dir / "adir.ini");
  TZTIniFile onFolder((dir / "adir.ini").string());
  EXPECT_THROW(onFolder.UpdateFile(), EZTIniFileError);
  EXPECT_TRUE(fs::is_directory(dir / "adir.ini"));

  // A read-only folder, where permissions bind this user.
  fs::path ro = zentrail::test::MakeTempDir("readonly");
  zentrail::test::WriteFile(ro / "p.ztp", original);
  ::chmod(ro.c_str(), 0555);
  bool bound = ::access(ro.c_str(), W_OK) != 0;  // not for root
  TZTIniFile locked((ro / "p.ztp").string());
  locked.WriteString("X", "y", "z");
  std::string error;
  bool written = locked.TryUpdateFile(error);
  ::chmod(ro.c_str(), 0755);
  if (bound) {
    EXPECT_FALSE(written);
    EXPECT_EQ(zentrail::test::ReadFile(ro / "p.ztp"), original);
  }
}
