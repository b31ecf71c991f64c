#include <gtest/gtest.h>

#include <cstring>

#include "LogRecord.h"
#include "TestEnvironment.h"
#include "Zlib.h"

using namespace zentrail;

namespace {

std::string Legacy(int32_t type, int32_t time, int32_t date, int32_t textLen, int32_t detailsLen,
                   const std::string& text, const std::string& details, bool closingByte = true) {
  std::string h(ztLegacyHeaderSize, '\0');
  auto put = [&](std::size_t at, uint32_t v) { std::memcpy(&h[at], &v, 4); };
  put(0, static_cast<uint32_t>(type));
  put(4, static_cast<uint32_t>(time));
  put(8, static_cast<uint32_t>(date));
  put(16, static_cast<uint32_t>(textLen));
  put(20, static_cast<uint32_t>(detailsLen));
  put(24, 4242);
  std::memcpy(&h[28], "thread-1", 8);
  std::memcpy(&h[54], "0123456789abcdef", 16);  // fills the field: no terminator
  std::memcpy(&h[70], "legacy app", 10);
  std::memcpy(&h[111], "cat", 3);
  put(152, 0x00FF00);
  put(156, 0x0000FF);
  std::memcpy(&h[160], "TType", 5);
  std::string out;
  PutLE32(out, ztLegacyTag1);
  out += h + text + details;
  if (closingByte) out += '\0';
  return out;
}

TZentrailMessage Message(int i) {
  TZentrailMessage m;
  m.SetMsgType(i % 46);
  m.SetMsgContent(ztmText);
  m.MsgText = "message " + std::to_string(i);
  m.Details = i % 3 ? "" : std::string(static_cast<std::size_t>(i * 37 % 5000), 'd');
  m.TimeStamp = {i * 10, ztDateOf2000 + i};
  m.ProcessID = static_cast<uint32_t>(i);
  m.ThreadName = "t" + std::to_string(i % 4);
  m.AppName = "app";
  return m;
}

std::vector<TZentrailRecordResult> ReadAll(std::string_view bytes, std::vector<TZentrailMessage>* out,
                                           std::vector<uint64_t>* offsets = nullptr) {
  TZentrailBufferSource source(bytes);
  TZentrailLogReader reader(source);
  std::vector<TZentrailRecordResult> results;
  for (;;) {
    TZentrailMessage m;
    auto r = reader.Next(m);
    if (r == TZentrailRecordResult::End) break;
    results.push_back(r);
    if (offsets) offsets->push_back(reader.RecordOffset());
    if (r == TZentrailRecordResult::Ok && out) out->push_back(m);
    if (r == TZentrailRecordResult::Invalid && !reader.Resumable()) break;
  }
  return results;
}

}  // namespace

TEST(LogRecord, LegacyRecordsObeyTheDateAndTimeBounds) {
  using R = TZentrailRecordResult;
  struct Case {
    int32_t time, date;
    bool valid;
  } cases[] = {
      {0, 730001, true},         {86400000, 766499, true}, {0, 730000, false},
      {0, 766500, false},        {86400001, 730500, false}, {-1, 730500, false},
  };
  for (const auto& c : cases) {
    std::vector<TZentrailMessage> got;
    auto results = ReadAll(Legacy(ztmError, c.time, c.date, 2, 3, "hi", "det"), &got);
    ASSERT_EQ(results.size(), 1u);
    EXPECT_EQ(results[0] == R::Ok, c.valid) << c.time << " " << c.date;
  }
  EXPECT_EQ(ReadAll(Legacy(0, 0, 730500, -1, 0, "", ""), nullptr)[0], R::Invalid);
  EXPECT_EQ(ReadAll(Legacy(0, 0, 730500, 0, -5, "", ""), nullptr)[0], R::Invalid);
  // A missing closing byte is a short read.
  EXPECT_EQ(ReadAll(Legacy(0, 0, 730500, 2, 0, "hi", "", false), nullptr)[0], R::Invalid);
}

TEST(LogRecord, LegacyRecordFieldsAreReadAndContentIsLeftAlone) {
  const std::string bytes = Legacy(ztmWarning, 5000, 730500, 6, 4, "h\xC3\xA9llo", "\xFFxyz");
  TZentrailBufferSource source(bytes);
  char tag[4];
  ASSERT_EQ(source.Read(tag, 4), 4u);
  TZentrailMessage m;
  m.SetMsgContent(ztmBitmap);
  ASSERT_TRUE(ReadLogRecord(GetLE32(tag), source, m));
  EXPECT_EQ(m.MsgType, ztmWarning);
  EXPECT_EQ(m.MsgContent, ztmBitmap);
  EXPECT_EQ(m.TimeStamp, (TZentrailTimeStamp{5000, 730500}));
  EXPECT_EQ(m.MsgText, "h\xC3\xA9llo");
  EXPECT_EQ(m.Details, "\xEF\xBF\xBDxyz");
  EXPECT_EQ(m.ProcessID, 4242u);
  EXPECT_EQ(m.ThreadName, "thread-1");
  EXPECT_EQ(m.ComputerName, "0123456789abcdef");
  EXPECT_EQ(m.AppName, "legacy app");
  EXPECT_EQ(m.Category, "cat");
  EXPECT_EQ(m.TypeName, "TType");
  EXPECT_EQ(m.CategoryColor, 0x00FF00);
  EXPECT_EQ(m.CategoryFontColor, 0x0000FF);
  EXPECT_EQ(source.Position(), bytes.size());
}

TEST(LogRecord, CurrentRecordsRoundTripPlainAndCompressed) {
  std::string file;
  std::vector<TZentrailMessage> written;
  for (int i = 0; i < 50; ++i) {
    written.push_back(Message(i));
    if (i % 2) {
      AppendLogRecord(written.back(), file);
    } else {
      const std::string packed = ZlibDeflate(written.back().GetAsTransportPacket());
      PutLE32(file, ztCompressedPacketTag);
      PutLE32(file, static_cast<uint32_t>(packed.size()));
      file += packed;
    }
  }
  std::vector<TZentrailMessage> read;
  auto results = ReadAll(file, &read);
  EXPECT_EQ(results, std::vector<TZentrailRecordResult>(50, TZentrailRecordResult::Ok));
  EXPECT_EQ(read, written);
}

TEST(LogRecord, DamageIsReportedWhereItIsAndReadingGoesOnWhereItCan) {
  using R = TZentrailRecordResult;
  std::string file;
  AppendLogRecord(Message(1), file);
  const std::size_t garbageAt = file.size();
  PutLE32(file, 0x7F000002);  // not a format
  PutLE32(file, 0x7F000006);
  AppendLogRecord(Message(2), file);
  const std::size_t badPacketAt = file.size();
  AppendLogRecordFromPacket("ZTP1broken", file);  // known tag, whole length, bad packet
  PutLE32(file, ztCompressedPacketTag);
  PutLE32(file, 5);
  file += "nozip";  // does not inflate
  AppendLogRecord(Message(3), file);

  std::vector<TZentrailMessage> read;
  std::vector<uint64_t> offsets;
  auto results = ReadAll(file, &read, &offsets);
  EXPECT_EQ(results, (std::vector<R>{R::Ok, R::Unsupported, R::Unsupported, R::Ok, R::Invalid,
                                     R::Invalid, R::Ok}));
  EXPECT_EQ(offsets[1], garbageAt);
  EXPECT_EQ(offsets[2], garbageAt + 4);
  EXPECT_EQ(offsets[4], badPacketAt);
  ASSERT_EQ(read.size(), 3u);
  EXPECT_EQ(read[2], Message(3));

  // A zero length and a truncated record stop the reading: the format allows no resync there.
  std::string zero;
  AppendLogRecord(Message(1), zero);
  PutLE32(zero, ztPacketTag);
  PutLE32(zero, 0);
  AppendLogRecord(Message(2), zero);
  EXPECT_EQ(ReadAll(zero, nullptr), (std::vector<R>{R::Ok, R::Invalid}));

  std::string cut;
  AppendLogRecord(Message(1), cut);
  AppendLogRecord(Message(2), cut);
  for (std::size_t drop : {1u, 5u, 9u}) {
    read.clear();
    EXPECT_EQ(ReadAll(cut.substr(0, cut.size() - drop), &read), (std::vector<R>{R::Ok, R::Invalid}));
    EXPECT_EQ(read.size(), 1u);
  }
  EXPECT_TRUE(ReadAll("", nullptr).empty());
}

TEST(LogRecord, FileSourceReadsRecordsAcrossItsBufferAndLargerThanIt) {
  namespace fs = std::filesystem;
  const fs::path path = test::MakeTempDir("log") / "big.ztl";
  std::string file;
  std::vector<TZentrailMessage> written;
  for (int i = 0; i < 3000; ++i) {
    written.push_back(Message(i));
    if (i == 1500) written.back().Details = std::string(3 << 20, 'x');  // larger than the buffer
    AppendLogRecord(written.back(), file);
  }
  test::WriteFile(path, file);

  TZentrailFileSource source;
  std::string error;
  ASSERT_TRUE(source.Open(path.string(), error)) << error;
  EXPECT_EQ(source.Size(), file.size());
  TZentrailLogReader reader(source);
  TZentrailMessage m;
  std::size_t n = 0;
  while (reader.Next(m) == TZentrailRecordResult::Ok) {
    ASSERT_LT(n, written.size());
    EXPECT_EQ(m, written[n]) << "record " << n;
    ++n;
  }
  EXPECT_EQ(n, written.size());
  EXPECT_EQ(source.Position(), file.size());

  TZentrailFileSource missing;
  EXPECT_FALSE(missing.Open((path.parent_path() / "none.ztl").string(), error));
  EXPECT_NE(error.find("none.ztl"), std::string::npos);
}
