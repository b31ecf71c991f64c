#include <gtest/gtest.h>

#include "TransportPacket.h"
#include "Utf8.h"
#include "ZentrailMessage.h"
#include "Zlib.h"

using namespace zentrail;

namespace {

TZentrailMessage Sample() {
  TZentrailMessage m;
  m.SetMsgType(ztmWarning);
  m.SetMsgContent(ztmXmlData);
  m.MsgText = "line one\r\nline two\n@name@value\t\x01";
  m.Details = "<a x=\"1\">\xF0\x9F\x98\x80 \xE2\x82\xAC \xC3\xA9</a>\r\n";
  m.TimeStamp = {86400000, ztDateOf2000};
  m.ProcessID = 4294967295u;
  m.ThreadName = "worker 7";
  m.AppName = "demo:app";
  m.ComputerName = "host-1";
  m.TypeName = "TWidget";
  m.Category = "10:cat";
  m.CategoryColor = static_cast<int32_t>(0xFF00000Fu);  // a system colour, negative as signed
  m.CategoryFontColor = 0x00123456;
  m.RouteKey = "route";
  return m;
}

}  // namespace

TEST(TransportPacket, EncodesTheDocumentedExampleExactly) {
  TZentrailMessage m;
  m.SetMsgType(1);
  m.SetMsgContent(7);
  m.MsgText = "hi";
  m.TimeStamp = {1000, 730120};
  m.ProcessID = 42;
  m.ThreadName = "main";
  m.AppName = "demo";
  m.CategoryColor = 16777215;
  m.CategoryFontColor = 0;
  EXPECT_EQ(m.GetAsTransportPacket(),
            "ZTP11:11:70:2:hi0:4:10006:7301202:424:main4:demo0:0:0:8:167772151:0");
  TZentrailMessage back;
  back.SetAsTransportPacket("ZTP11:11:70:2:hi0:4:10006:7301202:424:main4:demo0:0:0:8:167772151:0");
  EXPECT_EQ(back, m);
}

TEST(TransportPacket, RoundTripsEveryFieldWhateverTheText) {
  TZentrailMessage m = Sample();
  TZentrailMessage back;
  back.SetAsTransportPacket(m.GetAsTransportPacket());
  EXPECT_EQ(back, m);

  // Several megabytes of Details containing every byte value that is valid UTF-8 text, and digits
  // and colons that look like field lengths.
  std::string big;
  for (int i = 0; i < 300000; ++i) big += "12:34:\r\n\x7F@";
  m.Details = big;
  m.MsgText.clear();
  m.ThreadName.clear();
  back.Clear();
  back.SetAsTransportPacket(m.GetAsTransportPacket());
  EXPECT_EQ(back, m);
  EXPECT_EQ(back.Details.size(), big.size());

  // Extreme numbers.
  m.SetMsgType(INT32_MIN);
  m.SetMsgContent(INT32_MAX);
  m.TimeStamp = {-1, INT32_MIN};
  m.ProcessID = 0;
  back.SetAsTransportPacket(m.GetAsTransportPacket());
  EXPECT_EQ(back, m);
}

TEST(TransportPacket, RefusesBrokenPacketsWithClearErrors) {
  const std::string good = Sample().GetAsTransportPacket();
  auto error = [](std::string_view packet) -> std::string {
    TZentrailMessage m;
    try {
      m.SetAsTransportPacket(packet);
    } catch (const EZentrailPacketError& e) {
      return e.what();
    }
    return "";
  };
  EXPECT_NE(error(""), "");
  EXPECT_NE(error("ZTP"), "");
  EXPECT_NE(error("XTP11:1"), "");
  EXPECT_NE(error("ZTP1"), "");
  EXPECT_NE(error(good.substr(0, good.size() - 1)), "");  // last field runs past the end
  EXPECT_NE(error("ZTP11:x1:70:2:hi0:4:10006:7301202:424:main4:demo0:0:0:8:167772151:0"), "");
  EXPECT_NE(error("ZTP10:1:70:2:hi0:4:10006:7301202:424:main4:demo0:0:0:8:167772151:0"), "");
  EXPECT_NE(error("ZTP11:11:70:2:hi0:4:10006:7301202:4-1:main4:demo0:0:0:8:167772151:0"), "");
  EXPECT_NE(error("ZTP1999999999999:1"), "");
  EXPECT_NE(error("ZTP111:999999999991:7"), "");  // number out of 32-bit range
  EXPECT_NE(error("ZTP12:+11:7"), "");            // only plain decimal digits
  EXPECT_NE(error("ZTP11:1:7"), "");              // "1:7" has no colon after its length digit
  // The message names the field that is wrong.
  EXPECT_NE(error("ZTP11:11:70:2:hi0:4:10006:7301202:424:main4:demo0:0:0:8:167772151:x").find(
                "CategoryFontColor"),
            std::string::npos);
  // Bytes after the fifteenth field are room for a later version.
  TZentrailMessage m;
  m.SetAsTransportPacket(good + "5:extra");
  EXPECT_EQ(m, Sample());
}

TEST(TransportPacket, RepairsIllFormedTextAndTakesUnsignedColours) {
  TZentrailMessage m;
  m.SetAsTransportPacket("ZTP11:11:70:3:a\xFF" "b0:4:10006:7301202:420:0:0:0:0:10:42949672951:0");
  EXPECT_EQ(m.MsgText, "a\xEF\xBF\xBD" "b");
  EXPECT_EQ(m.CategoryColor, -1);
}

TEST(Utf8, ReplacesEachIllFormedSubpart) {
  EXPECT_TRUE(IsValidUtf8("plain \xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"));
  EXPECT_FALSE(IsValidUtf8("\xC0\x80"));          // overlong NUL
  EXPECT_FALSE(IsValidUtf8("\xED\xA0\x80"));      // surrogate
  EXPECT_FALSE(IsValidUtf8("\xF4\x90\x80\x80"));  // above U+10FFFF
  EXPECT_FALSE(IsValidUtf8("\xE2\x82"));          // truncated at the end
  const std::string r = "\xEF\xBF\xBD";
  EXPECT_EQ(SanitizedUtf8("a\xE2\x82z"), "a" + r + "z");  // one replacement for the subpart
  EXPECT_EQ(SanitizedUtf8("\xC0\x80"), r + r);
  EXPECT_EQ(SanitizedUtf8("\xF0\x9F\x98"), r);
  EXPECT_EQ(SanitizedUtf8("12345678\x80" "abcdefgh"), "12345678" + r + "abcdefgh");
  EXPECT_EQ(SanitizedUtf8("ok \xF0\x9F\x98\x80"), "ok \xF0\x9F\x98\x80");
}

TEST(Zlib, InflatesWithinItsBoundAndRefusesTheRest) {
  const std::string text(100000, 'a');
  const std::string packed = ZlibDeflate(text);
  EXPECT_LT(packed.size(), 1000u);
  EXPECT_EQ(ZlibInflate(packed), text);
  EXPECT_THROW(ZlibInflate(packed, 99999), EZentrailZlibSizeError);
  EXPECT_EQ(ZlibInflate(packed, 100000), text);
  EXPECT_THROW(ZlibInflate(packed.substr(0, packed.size() / 2)), EZentrailZlibError);
  EXPECT_THROW(ZlibInflate("not zlib at all"), EZentrailZlibError);
  EXPECT_THROW(ZlibInflate(""), EZentrailZlibError);
  EXPECT_EQ(ZlibInflate(ZlibDeflate("")), "");
}

TEST(CodeTable, NamesFollowTheTableAndItsOddities) {
  EXPECT_STREQ(MsgTypeNames[ztmInfo], "Info");
  EXPECT_STREQ(MsgTypeNames[ztmComponentAsText], "CompAsText");
  EXPECT_STREQ(MsgTypeNames[ztmCustomText], "Text");  // repeats code 7 on purpose
  EXPECT_STREQ(MsgTypeNames[ztmAppStartSeparator], "AppStrtSep");
  EXPECT_STREQ(MsgTypeNames[ztmTiming], "Timing");
  EXPECT_EQ(MsgTypeShortName(1005), "1005");
  EXPECT_EQ(MsgTypeShortName(-3), "-3");
  EXPECT_EQ(ztmViolet, 30);
  EXPECT_EQ(ztmRed, ztmLevel1);

  EXPECT_EQ(MsgTypeReadableName(ztmInfo), "ztmInfo");
  EXPECT_EQ(MsgTypeReadableName(26), "ztmLevel3 / ztmYellow");
  EXPECT_EQ(MsgTypeReadableName(ztmCustomHierarchy), "ztmCustomHierarchy");
  EXPECT_EQ(MsgTypeReadableName(7), "ztmReserved + -93");
  EXPECT_EQ(MsgTypeReadableName(15), "ztmReserved + -85");
  EXPECT_EQ(MsgTypeReadableName(43), "ztmReserved + -57");
  EXPECT_EQ(MsgTypeReadableName(45), "ztmReserved + -55");
  EXPECT_EQ(MsgTypeReadableName(150), "ztmReserved + 50");
  EXPECT_EQ(MsgTypeReadableName(1005), "ztmUser + 5");
  EXPECT_EQ(MsgTypeReadableName(32999), "ztmUser + 31999");
  EXPECT_EQ(MsgTypeReadableName(33000), "ztmPublic + 0");
  EXPECT_EQ(MsgTypeReadableName(-1), "ztmReserved + -101");
}
