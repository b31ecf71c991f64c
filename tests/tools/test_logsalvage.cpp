#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <set>

#include "HandLog.h"
#include "TestEnvironment.h"
#include "LogSalvage.h"

using namespace zentrail;
using test::HandLog;

namespace {

struct Stretch {
  uint64_t Start, End;
  std::string Reason;
};

struct Salvaged {
  std::vector<std::string> Texts;
  std::vector<int32_t> Contents;
  std::vector<Stretch> Stretches;
  uint64_t Effort = 0;
};

// Reads everything and checks what must hold for any input: records and stretches follow each
// other without gap or overlap and cover the whole span, and the totals add up.
Salvaged Salvage(std::string_view bytes) {
  Salvaged s;
  TZentrailLogSalvager salvager(bytes);
  uint64_t at = 0, skipped = 0;
  for (int guard = 0; guard < 1'000'000; ++guard) {
    TZentrailMessage m;
    m.MsgContent = -5;  // a legacy record must leave it alone
    const auto r = salvager.Next(m);
    if (r == TZentrailSalvageResult::End) break;
    EXPECT_EQ(salvager.Start(), at);
    EXPECT_GT(salvager.End(), salvager.Start());
    at = salvager.End();
    if (r == TZentrailSalvageResult::Record) {
      s.Texts.push_back(m.MsgText);
      s.Contents.push_back(m.MsgContent);
    } else {
      s.Stretches.push_back({salvager.Start(), salvager.End(), salvager.Reason()});
      skipped += salvager.End() - salvager.Start();
    }
  }
  EXPECT_EQ(at, bytes.size());
  EXPECT_EQ(salvager.Records(), s.Texts.size());
  EXPECT_EQ(salvager.Stretches(), s.Stretches.size());
  EXPECT_EQ(salvager.SkippedBytes(), skipped);
  s.Effort = salvager.Effort();
  return s;
}

std::vector<std::string> Without(const HandLog& log, std::set<int> lost) {
  std::vector<std::string> texts;
  for (int i = 0; i < static_cast<int>(log.Texts.size()); ++i)
    if (!lost.count(i)) texts.push_back(log.Texts[i]);
  return texts;
}

}  // namespace

TEST(LogSalvage, ASoundLogReadsAsThePlainLoopReadsIt) {
  const HandLog log(60);
  const Salvaged s = Salvage(log.Bytes);
  EXPECT_EQ(s.Texts, log.Texts);
  EXPECT_TRUE(s.Stretches.empty());
  for (int i = 0; i < 60; ++i) EXPECT_EQ(s.Contents[i], i % 7 == 6 ? -5 : 7) << i;

  // A packet with bytes after its fifteenth field is a later version's, and is taken whole.
  const std::string later = test::Record(
      ztPacketTag, test::Packet(0, 7, "later", "", 0, 730120, "m") + "5:extra");
  const Salvaged ext = Salvage(later + log.Bytes.substr(0, log.End(2)));
  EXPECT_EQ(ext.Texts, (std::vector<std::string>{"later", "record 0", "record 1", "record 2"}));
  EXPECT_TRUE(ext.Stretches.empty());

  EXPECT_TRUE(Salvage("").Texts.empty());
  EXPECT_TRUE(Salvage("").Stretches.empty());
}

// Each kind of damage, on a record whose predecessor is not a legacy record: only the damaged
// record is lost, every other comes back once and in order, and the damage is one stretch that
// starts where the damaged record started.
TEST(LogSalvage, EveryIntactRecordSurvivesEachKindOfDamage) {
  const HandLog log(60);
  const int plain = 22, packed = 24, legacy = 34;
  ASSERT_EQ(log.Bytes.substr(log.Offsets[plain], 4), std::string("\x04\x00\x00\x7F", 4));
  ASSERT_EQ(log.Bytes.substr(log.Offsets[packed], 4), std::string("\x05\x00\x00\x7F", 4));
  ASSERT_EQ(log.Bytes.substr(log.Offsets[legacy], 4), std::string("\x00\x00\x00\x7F", 4));
  const std::string zeros(1 << 20, '\0');

  struct Case {
    const char* Name;
    int Damaged;  // the record that is lost
    std::function<std::string(std::string)> Apply;
    const char* Reason;  // part of the stretch's reason
  };
  auto flip = [&](int rec, std::size_t at, unsigned char mask) {
    return [&log, rec, at, mask](std::string b) {
      b[log.Offsets[rec] + at] = static_cast<char>(b[log.Offsets[rec] + at] ^ mask);
      return b;
    };
  };
  auto cut = [&](int rec, std::size_t keep) {
    return [&log, rec, keep](std::string b) {
      return b.erase(log.Offsets[rec] + keep, log.End(rec) - log.Offsets[rec] - keep);
    };
  };
  const Case cases[] = {
      {"length shorter", plain, flip(plain, 4, 0x40), "runs past the end of the packet"},
      {"length longer", plain, flip(plain, 5, 0x02), "into a record at offset"},
      {"length past the end", plain, flip(plain, 6, 0x10), "the file ends inside a record of"},
      {"length negative", plain, flip(plain, 7, 0x80), "is below 1"},
      {"compressed length shorter", packed, flip(packed, 4, 0x08), "zlib"},
      {"compressed length longer", packed, flip(packed, 5, 0x02), "into a record at offset"},
      {"legacy text longer", legacy, flip(legacy, 4 + 17, 0x01), "where no record starts"},
      {"legacy text shorter", legacy, flip(legacy, 4 + 16, 0x08), "where no record starts"},
      {"tag unknown", plain, flip(plain, 0, 0x02), "unsupported record tag $7F000006"},
      {"tag high byte", plain, flip(plain, 3, 0x01), "unsupported record tag $7E000004"},
      {"tag says compressed", plain, flip(plain, 0, 0x01), "zlib: incorrect header check"},
      {"tag says legacy", plain, flip(plain, 0, 0x04), "date out of range"},
      {"compressed tag says plain", packed, flip(packed, 0, 0x01), "ZTP1"},
      {"truncated in the tag", plain, cut(plain, 2), "unsupported record tag"},
      {"truncated in the packet", plain, cut(plain, 40), ""},
      {"truncated compressed", packed, cut(packed, 30), ""},
      {"truncated legacy", legacy, cut(legacy, 120), ""},
      {"zeros inside a record", plain,
       [&](std::string b) { return b.insert(log.Offsets[plain] + 11, zeros); }, "ZTP1"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.Name);
    const Salvaged s = Salvage(c.Apply(log.Bytes));
    EXPECT_EQ(s.Texts, Without(log, {c.Damaged}));
    ASSERT_EQ(s.Stretches.size(), 1u);
    EXPECT_EQ(s.Stretches[0].Start, log.Offsets[c.Damaged]);
    EXPECT_NE(s.Stretches[0].Reason.find(c.Reason), std::string::npos) << s.Stretches[0].Reason;
  }

  // Zeros between two records cost nothing but themselves.
  std::string b = log.Bytes;
  b.insert(log.Offsets[plain], zeros);
  Salvaged s = Salvage(b);
  EXPECT_EQ(s.Texts, log.Texts);
  ASSERT_EQ(s.Stretches.size(), 1u);
  EXPECT_EQ(s.Stretches[0].Start, log.Offsets[plain]);
  EXPECT_EQ(s.Stretches[0].End, log.Offsets[plain] + zeros.size());

  // All of it in one file: four stretches, four records lost.
  b = log.Bytes;
  b.erase(log.Offsets[48] + 25, log.End(48) - log.Offsets[48] - 25);
  b.insert(log.Offsets[40] + 11, zeros);
  b[log.Offsets[packed] + 2] ^= 0x20;
  b[log.Offsets[plain] + 5] ^= 0x01;
  s = Salvage(b);
  EXPECT_EQ(s.Texts, Without(log, {plain, packed, 40, 48}));
  EXPECT_EQ(s.Stretches.size(), 4u);

  // Damage at the very start and a record cut short at the very end.
  b = "\x01\x02\x03" + log.Bytes.substr(0, log.Offsets[10] + 30);
  s = Salvage(b);
  EXPECT_EQ(s.Texts, std::vector<std::string>(log.Texts.begin(), log.Texts.begin() + 10));
  ASSERT_EQ(s.Stretches.size(), 2u);
  EXPECT_EQ(s.Stretches[0].End, 3u);
  EXPECT_EQ(s.Stretches[1].End, b.size());
}

// A legacy record has no check of its own: it is taken only where its lengths lead to another
// record or to the end of the file.
TEST(LogSalvage, ALegacyRecordDirectlyBeforeDamageGoesWithTheDamage) {
  const HandLog log(60);
  std::string b = log.Bytes;
  b[log.Offsets[21]] = 0x0C;  // record 20 is a legacy record
  const Salvaged s = Salvage(b);
  EXPECT_EQ(s.Texts, Without(log, {20, 21}));
  ASSERT_EQ(s.Stretches.size(), 1u);
  EXPECT_EQ(s.Stretches[0].Start, log.Offsets[20]);

  const std::string last = test::LegacyRecord(1, 5, "last");
  EXPECT_EQ(Salvage(log.Bytes.substr(0, log.End(5)) + last).Texts.back(), "last");
}

// Nothing that is not a whole record comes back: noise, zeros, and byte strings that look like the
// start of a record but do not decode. A record kept inside another record's text stays text.
TEST(LogSalvage, RecordsAreNeverMadeUpFromDamage) {
  std::mt19937 rng(19);
  std::string noise(1 << 20, '\0');
  for (auto& ch : noise) ch = static_cast<char>(rng());
  for (const std::string& bytes : {noise, std::string(1 << 20, '\0')}) {
    const Salvaged s = Salvage(bytes);
    EXPECT_TRUE(s.Texts.empty());
    ASSERT_EQ(s.Stretches.size(), 1u);
    EXPECT_EQ(s.Stretches[0].End, bytes.size());
  }

  const std::string good = test::Record(ztPacketTag, test::Packet(0, 7, "good", "", 0, 730120, "m"));
  std::string packet = test::Packet(0, 7, "bad", "", 0, 730120, "m");
  const std::string lookalikes[] = {
      test::Record(ztPacketTag, "ZTP1" + std::string(40, '1')),
      test::Record(ztPacketTag, packet.substr(0, packet.size() - 1)),
      test::Record(ztPacketTag, test::Packet(0, 7, "bad", "", 0, 730120, "m").replace(4, 3, "1:x")),
      test::Record(ztCompressedPacketTag, "\x78\x9C" + std::string(30, 'z')),
      test::Record(ztCompressedPacketTag, ZlibDeflate(packet).substr(0, 20)),
      test::Record(ztCompressedPacketTag, ZlibDeflate("XXXX" + packet)),
      test::LegacyRecord(1, 86400001, "too late"),
  };
  for (const std::string& fake : lookalikes) {
    const Salvaged s = Salvage("junk" + fake + good);
    EXPECT_EQ(s.Texts, std::vector<std::string>{"good"});
    EXPECT_EQ(s.Stretches.size(), 1u);
  }
  // A compressed record whose checksum is wrong inflates to a whole packet, and is still refused.
  std::string packed = ZlibDeflate(packet);
  packed.back() = static_cast<char>(packed.back() ^ 1);
  EXPECT_EQ(Salvage(test::Record(ztCompressedPacketTag, packed) + good).Texts,
            std::vector<std::string>{"good"});

  const std::string outer =
      test::Record(ztPacketTag, test::Packet(0, 7, "outer", good, 0, 730120, "m"));
  EXPECT_EQ(Salvage(outer).Texts, std::vector<std::string>{"outer"});
}

// The search must not examine a stretch once per candidate in it. Compressed lookalikes nested in
// each other, each a zlib stream of one stored block that holds the rest of the stretch and ends in
// a wrong checksum, would cost the square of the stretch; the salvager's work stays within a fixed
// multiple of it.
TEST(LogSalvage, WorkStaysLinearOnNestedCompressedLookalikes) {
  const std::size_t kHeader = 19, kRegion = 65000, kPerRegion = kRegion / kHeader;
  std::string bytes;
  for (int region = 0; region < 20; ++region) {
    const std::size_t end = bytes.size() + kPerRegion * kHeader;  // where every stored block ends
    for (std::size_t i = 0; i < kPerRegion; ++i) {
      const std::size_t stored = end - (bytes.size() + 15);
      std::string h(8, '\0');
      test::PutLE(h, 0, ztCompressedPacketTag);
      test::PutLE(h, 4, static_cast<uint32_t>(2 + 5 + stored + 4));
      h += "\x78\x01\x01";
      h += static_cast<char>(stored & 0xFF);
      h += static_cast<char>(stored >> 8);
      h += static_cast<char>(~stored & 0xFF);
      h += static_cast<char>((~stored >> 8) & 0xFF);
      bytes += h + "ZTP1";
    }
    bytes += "\xDE\xAD\xBE\xEF";  // not the checksum of any of them
  }
  const std::size_t stretch = bytes.size();
  bytes += test::Record(ztPacketTag, test::Packet(0, 7, "after", "", 0, 730120, "m"));
  const Salvaged s = Salvage(bytes);
  EXPECT_EQ(s.Texts, std::vector<std::string>{"after"});
  ASSERT_EQ(s.Stretches.size(), 1u);
  EXPECT_EQ(s.Stretches[0].End, stretch);
  EXPECT_LT(s.Effort, 64 * bytes.size() + (200u << 20));
}

TEST(LogSalvage, PacketExtentRefusesExactlyWhatTheParserRefuses) {
  const std::string good = test::Packet(-3, 7, "text", "d\r\n", 86400000, 730120, "main");
  std::vector<std::string> packets = {good, good + "trailing", "", "ZTP", "ZTP2", "ZTP1"};
  // Every field of the good packet spoilt in each way the framing or a number can be.
  const std::string spoil[] = {"", ":", "x:", "1x", "00000000001:", "12345678901:", "99:"};
  std::size_t at = 4;
  for (int field = 0; field < 15; ++field) {
    const std::size_t colon = good.find(':', at);
    const std::size_t len = std::stoul(good.substr(at, colon - at));
    for (const std::string& s : spoil) packets.push_back(good.substr(0, at) + s + good.substr(at));
    packets.push_back(good.substr(0, at));  // cut before the field
    packets.push_back(good.substr(0, colon + 1 + len / 2));
    for (const char* value : {"+1", "-0", "2147483648", "-2147483649", "4294967295",
                                     "4294967296", "-1", "000000000007", "0000000000007", " 1"})
      packets.push_back(good.substr(0, at) + test::Field(value) + good.substr(colon + 1 + len));
    at = colon + 1 + len;
  }
  for (const std::string& p : packets) {
    SCOPED_TRACE(p);
    std::string extentError, parseError;
    const std::size_t extent = TransportPacketExtent(p, &extentError);
    TZentrailPacketView view;
    try {
      ParseTransportPacket(p, view);
    } catch (const EZentrailPacketError& e) {
      parseError = e.what();
    }
    EXPECT_EQ(extent == 0, !parseError.empty());
    EXPECT_EQ(extentError, parseError);
    if (extent) {
      EXPECT_LE(extent, p.size());
      ParseTransportPacket(p.substr(0, extent), view);  // the extent alone is a whole packet
    }
  }
  EXPECT_EQ(TransportPacketExtent(good + "trailing"), good.size());
}

TEST(LogSalvage, AMappedFileHoldsWhatTheFileHolds) {
  const auto dir = test::MakeTempDir("mapped");
  const HandLog log(30);
  test::WriteFile(dir / "log.ztl", log.Bytes);
  test::WriteFile(dir / "empty.ztl", "");
  TZentrailMappedFile file;
  std::string error;
  ASSERT_TRUE(file.Open((dir / "log.ztl").string(), error)) << error;
  EXPECT_EQ(file.Data(), log.Bytes);
  ASSERT_TRUE(file.Open((dir / "empty.ztl").string(), error)) << error;
  EXPECT_TRUE(file.Data().empty());
  // Files of the proc file system claim a size of 0 and must be read, not mapped.
  ASSERT_TRUE(file.Open("/proc/self/status", error)) << error;
  EXPECT_NE(file.Data().find("Pid:"), std::string::npos);

  EXPECT_FALSE(file.Open((dir / "missing.ztl").string(), error));
  EXPECT_NE(error.find("missing.ztl: No such file"), std::string::npos) << error;
  EXPECT_FALSE(file.Open(dir.string(), error));
  EXPECT_NE(error.find("is a folder"), std::string::npos) << error;
  EXPECT_TRUE(file.Data().empty());
}
