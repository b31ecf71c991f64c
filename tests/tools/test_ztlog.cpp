#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <vector>

#include "HandLog.h"
#include "LogDump.h"
#include "TestEnvironment.h"

using namespace zentrail;
namespace fs = std::filesystem;

namespace {

using test::LegacyRecord;
using test::Packet;
using test::Record;

struct DumpRun {
  std::string out, err;
  ztlog::DumpResult result;
};

DumpRun Dump(const fs::path& file, ztlog::Format format = ztlog::Format::Lines,
             ztlog::Reading reading = ztlog::Reading::Salvage) {
  std::ostringstream out, err;
  DumpRun run;
  run.result = ztlog::DumpFile(file.string(), format, out, err, reading);
  run.out = out.str();
  run.err = err.str();
  return run;
}

}  // namespace

TEST(Ztlog, PrintsLegacyAndCurrentRecordsOfAForeignLog) {
  const fs::path dir = test::MakeTempDir("ztlog");
  const std::string text = "tab\there\r\nnew \x01 \\ end";
  std::string file = Record(ztPacketTag, Packet(ztmWarning, ztmText, text, "", 1000, 730120, "main"));
  file += LegacyRecord(ztmError, 3723004, "legacy");  // 01:02:03.004
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

TEST(Ztlog, StrictReadingReportsEachBadWordAndStopsWhereALengthIsLost) {
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

  DumpRun run = Dump(dir / "damaged.ztl", ztlog::Format::Lines, ztlog::Reading::Strict);
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
  EXPECT_EQ(status("dump --strict --frobnicate " + (dir / "good.ztl").string()), 2);

  // Damage in the middle: salvage reads past it and strict reading stops, both report it.
  test::WriteFile(dir / "mid.ztl", good + "\x05\x00\x00\x7F\xFF\xFF\xFF\x0F" + good);
  EXPECT_EQ(status("dump " + (dir / "mid.ztl").string()), 1);
  EXPECT_EQ(test::ReadFile(dir / "out"), "1\t2000-01-01 00:00:00.000\tInfo\tText\t31337\tm\t"
                                         "other-app\tio\tgood\n2\t2000-01-01 00:00:00.000\tInfo\t"
                                         "Text\t31337\tm\tother-app\tio\tgood\n");
  EXPECT_EQ(status("dump --strict " + (dir / "mid.ztl").string()), 1);
  const std::string strictOut = test::ReadFile(dir / "out");
  EXPECT_EQ(std::count(strictOut.begin(), strictOut.end(), '\n'), 1);
}

// The acceptance case: a log of 1,000 records built by hand, damaged four ways at once.
TEST(Ztlog, SalvageReportsEachDamagedStretchAndPrintsEveryIntactRecordOnce) {
  const fs::path dir = test::MakeTempDir("ztlog");
  const test::HandLog log(1000);
  const int lengthAt = 100, tagAt = 302, cutAt = 500, zerosAt = 704;  // 704 is compressed
  const std::size_t cutKeep = 37, zerosAfter = 20, zeros = 1u << 20;
  std::string b = log.Bytes;
  b.insert(log.Offsets[zerosAt] + zerosAfter, std::string(zeros, '\0'));
  const std::size_t removed = log.End(cutAt) - log.Offsets[cutAt] - cutKeep;
  b.erase(log.Offsets[cutAt] + cutKeep, removed);
  b[log.Offsets[tagAt] + 1] ^= 0x10;
  b[log.Offsets[lengthAt] + 6] ^= 0x16;  // a record of about 1.4 MB
  test::WriteFile(dir / "damaged.ztl", b);

  DumpRun run = Dump(dir / "damaged.ztl");
  std::istringstream lines(run.out);
  std::vector<std::string> texts;
  for (std::string line; std::getline(lines, line);) {
    EXPECT_EQ(line.substr(0, line.find('\t')), std::to_string(texts.size() + 1));
    texts.push_back(line.substr(line.rfind('\t') + 1));
  }
  std::vector<std::string> expected;
  for (int i = 0; i < 1000; ++i)
    if (i != lengthAt && i != tagAt && i != cutAt && i != zerosAt) expected.push_back(log.Texts[i]);
  EXPECT_EQ(texts, expected);
  EXPECT_EQ(run.result.Records, 996u);
  EXPECT_EQ(run.result.Stretches, 4u);

  struct Span {
    std::size_t Start, End;
  };
  const Span spans[] = {
      {log.Offsets[lengthAt], log.Offsets[lengthAt + 1]},
      {log.Offsets[tagAt], log.Offsets[tagAt + 1]},
      {log.Offsets[cutAt], log.Offsets[cutAt] + cutKeep},
      {log.Offsets[zerosAt] - removed, log.End(zerosAt) - removed + zeros},
  };
  // One line per stretch, in file order, then the summary.
  std::size_t skipped = 0, line = 0;
  const std::string name = (dir / "damaged.ztl").string();
  for (const Span& s : spans) {
    const std::string head = name + ": offset " + std::to_string(s.Start) + " to " +
                             std::to_string(s.End) + ": skipped " +
                             std::to_string(s.End - s.Start) + " bytes: ";
    ASSERT_EQ(run.err.compare(line, head.size(), head), 0) << head << "\n" << run.err;
    line = run.err.find('\n', line) + 1;
    skipped += s.End - s.Start;
  }
  EXPECT_EQ(run.result.SkippedBytes, skipped);
  EXPECT_EQ(run.err.substr(line), name + ": 996 records read, 4 damaged stretches skipped, " +
                                      std::to_string(skipped) + " bytes skipped\n");

  DumpRun json = Dump(dir / "damaged.ztl", ztlog::Format::Json);
  EXPECT_EQ(json.err, run.err);
  EXPECT_EQ(std::count(json.out.begin(), json.out.end(), '\n'), 996);
  EXPECT_NE(json.out.find("\"record\":996,"), std::string::npos);

  DumpRun strict = Dump(dir / "damaged.ztl", ztlog::Format::Lines, ztlog::Reading::Strict);
  EXPECT_EQ(strict.result.Records, static_cast<uint64_t>(lengthAt));
  EXPECT_NE(strict.err.find("the rest of the file cannot be read"), std::string::npos);
}
