#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <sstream>

#include "LogDump.h"
#include "LogRecord.h"
#include "TestEnvironment.h"
#include "Zlib.h"

using namespace zentrail;
namespace fs = std::filesystem;

namespace {

// Records built by hand from the format, not by the project's own writer, as another program would.
std::string Field(const std::string& v) { return std::to_string(v.size()) + ":" + v; }

std::string Packet(int type, int content, const std::string& text, const std::string& details,
                   int time, int date, const std::string& thread) {
  return "ZTP1" + Field(std::to_string(type)) + Field(std::to_string(content)) + Field("") +
         Field(text) + Field(details) + Field(std::to_string(time)) + Field(std::to_string(date)) +
         Field("31337") + Field(thread) + Field("other-app") + Field("box") + Field("") +
         Field("io") + Field("16777215") + Field("0");
}

std::string Record(uint32_t tag, const std::string& body) {
  std::string out;
  PutLE32(out, tag);
  PutLE32(out, static_cast<uint32_t>(body.size()));
  return out + body;
}

std::string LegacyRecord() {
  std::string h(ztLegacyHeaderSize, '\0');
  auto put = [&](std::size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i) h[at + i] = static_cast<char>(v >> (8 * i));
  };
  put(0, ztmError);
  put(4, 3723004);  // 01:02:03.004
  put(8, 730120);
  put(16, 6);
  put(20, 0);
  put(24, 7);
  h.replace(28, 2, "T1");
  h.replace(70, 6, "oldapp");
  std::string out;
  PutLE32(out, ztLegacyTag0);
  return out + h + "legacy" + '\0';
}

struct DumpRun {
  std::string out, err;
  ztlog::DumpResult result;
};

DumpRun Dump(const fs::path& file, ztlog::Format format = ztlog::Format::Lines) {
  std::ostringstream out, err;
  DumpRun run;
  run.result = ztlog::DumpFile(file.string(), format, out, err);
  run.out = out.str();
  run.err = err.str();
  return run;
}

}  // namespace

TEST(Ztlog, PrintsLegacyAndCurrentRecordsOfAForeignLog) {
  const fs::path dir = test::MakeTempDir("ztlog");
  const std::string text = "tab\there\r\nnew \x01 \\ end";
  std::string file = Record(ztPacketTag, Packet(ztmWarning, ztmText, text, "", 1000, 730120, "main"));
  file += LegacyRecord();
  file += Record(ztCompressedPacketTag,
                 ZlibDeflate(Packet(1005, 38, "custom", "a\tb\r\n", 86399999, 766000, "w")));
  test::WriteFile(dir / "foreign.ztl", file);

  DumpRun run = Dump(dir / "foreign.ztl");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.result.Records, 3u);
  EXPECT_EQ(run.result.Problems, 0u);
  std::istringstream lines(run.out);
  std::string l1, l2, l3;
  std::getline(lines, l1);
  std::getline(lines, l2);
  std::getline(lines, l3);
  EXPECT_EQ(l1,
            "1\t2000-01-01 00:00:01.000\tWarning\tText\t31337\tmain\tother-app\tio\t"
            "tab\\there\\r\\nnew \\x01 \\\\ end");
  EXPECT_EQ(l2, "2\t2000-01-01 01:02:03.004\tError\tText\t7\tT1\toldapp\t\tlegacy");
  EXPECT_EQ(l3, "3\t2098-03-27 23:59:59.999\t1005\tTable\t31337\tw\tother-app\tio\tcustom");

  DumpRun json = Dump(dir / "foreign.ztl", ztlog::Format::Json);
  EXPECT_NE(json.out.find("\"msgText\":\"tab\\there\\r\\nnew \\u0001 \\\\ end\""), std::string::npos);
  EXPECT_NE(json.out.find("\"time\":\"2000-01-01T01:02:03.004\""), std::string::npos);
  EXPECT_NE(json.out.find("\"details\":\"a\\tb\\r\\n\""), std::string::npos);
  EXPECT_NE(json.out.find("\"computerName\":\"box\""), std::string::npos);
  EXPECT_NE(json.out.find("\"msgType\":1005"), std::string::npos);
}

TEST(Ztlog, ReportsDamageWithOffsetsAndKeepsEveryGoodRecord) {
  const fs::path dir = test::MakeTempDir("ztlog");
  const std::string good = Record(ztPacketTag, Packet(0, 7, "good", "", 0, 730120, "m"));
  // Unknown words, then a good record, then one whose packet is broken, then a good one, then a
  // record that claims two gigabytes.
  std::string file = std::string("\x02\x00\x00\x7F" "junk", 8) + good + Record(ztPacketTag, "ZTP1x") + good;
  const std::size_t hugeAt = file.size();
  PutLE32(file, ztPacketTag);
  PutLE32(file, 0x7FFFFFF0);
  file += "short";
  test::WriteFile(dir / "damaged.ztl", file);

  DumpRun run = Dump(dir / "damaged.ztl");
  EXPECT_EQ(run.result.Records, 2u);
  EXPECT_EQ(run.result.Problems, 4u);
  EXPECT_NE(run.err.find("offset 0: unsupported record tag $7F000002"), std::string::npos);
  EXPECT_NE(run.err.find("offset 4: unsupported record tag"), std::string::npos);
  EXPECT_NE(run.err.find("offset " + std::to_string(8 + good.size()) + ": invalid record"),
            std::string::npos);
  EXPECT_NE(run.err.find("offset " + std::to_string(hugeAt) + ": invalid record"), std::string::npos);

  test::WriteFile(dir / "empty.ztl", "");
  run = Dump(dir / "empty.ztl");
  EXPECT_EQ(run.result.Records + run.result.Problems, 0u);
  EXPECT_EQ(run.out + run.err, "");

  run = Dump(dir / "missing.ztl");
  EXPECT_EQ(run.result.Problems, 1u);
  EXPECT_NE(run.err.find("missing.ztl"), std::string::npos);

  run = Dump(dir);  // a folder is not a log
  EXPECT_EQ(run.result.Problems, 1u);
}

TEST(Ztlog, TheProgramExitsWithTheStatusOfWhatItRead) {
  const fs::path dir = test::MakeTempDir("ztlog");
  const std::string good = Record(ztPacketTag, Packet(0, 7, "good", "", 0, 730120, "m"));
  test::WriteFile(dir / "good.ztl", good);
  test::WriteFile(dir / "bad.ztl", good + "xy");
  const std::string exe = std::string(ZENTRAIL_BINARY_DIR) + "/tools/ztlog/ztlog";
  auto status = [&](const std::string& args) {
    const std::string cmd = exe + " " + args + " >" + (dir / "out").string() + " 2>" +
                            (dir / "err").string();
    const int rc = std::system(cmd.c_str());
    return WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
  };
  EXPECT_EQ(status("dump " + (dir / "good.ztl").string()), 0);
  EXPECT_EQ(test::ReadFile(dir / "out").substr(0, 2), "1\t");
  EXPECT_EQ(status("dump --json " + (dir / "good.ztl").string() + " " + (dir / "bad.ztl").string()),
            1);
  const std::string out = test::ReadFile(dir / "out");
  EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 2);
  EXPECT_NE(test::ReadFile(dir / "err").find("bad.ztl: offset"), std::string::npos);
  EXPECT_EQ(status("dump"), 2);
  EXPECT_EQ(status("frobnicate x"), 2);
}
