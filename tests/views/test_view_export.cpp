// A view written out: the log file of its rows, XML and tab-separated text.

#include <filesystem>

#include "LogRecord.h"
#include "TestEnvironment.h"
#include "TransportPacket.h"
#include "ZTPromptService.h"
#include "ViewTestSupport.h"

namespace zentrail::test {
namespace {

class ViewExport : public TViewTest {
 protected:
  // Rows: hello | M> collapsed (m1, M< hidden) | app start separator | after
  void Fill(TZTMessageView& view) {
    TZentrailMessage message;
    message.MsgType = ztmWarning;
    message.MsgText = "hello \"you\" & <them>";
    message.Details = "a=1\r\nb=<2>\n\nc";
    message.AppName = "demo";
    message.ThreadName = "main";
    message.Category = "Net";
    message.CategoryColor = 0x00FFFFFF;
    message.CategoryFontColor = 0x00123456;
    message.ProcessID = 77;
    message.TimeStamp = {(13 * 3600 + 5 * 60 + 9) * 1000 + 42, ztDateOf2000 + 31};
    MessageSet.AppendMessage(message, FNextID++);
    view.AddMessage(false);
    Store(ztmEnterMethod, "M>", {&view});
    Store(ztmInfo, "m1", {&view});
    Store(ztmExitMethod, "M<", {&view});
    Store(ztmAppStartSeparator, "", {&view});
    Store(ztmInfo, "after", {&view});
    view.CollapseMethod(1);
  }
};

std::vector<TZentrailMessage> ReadLog(const std::string& bytes) {
  std::vector<TZentrailMessage> messages;
  size_t at = 0;
  while (at + 8 <= bytes.size()) {
    EXPECT_EQ(GetLE32(bytes.data() + at), ztPacketTag);
    const uint32_t length = GetLE32(bytes.data() + at + 4);
    TZentrailMessage message;
    message.SetAsTransportPacket(std::string_view(bytes).substr(at + 8, length));
    messages.push_back(message);
    at += 8 + length;
  }
  EXPECT_EQ(at, bytes.size());
  return messages;
}

TEST_F(ViewExport, SaveWritesTheRowsWithCollapsedMethodsWhole) {
  TFakeApplication app;
  TZTMessageView view(nullptr, &app);
  Fill(view);
  ASSERT_EQ(view.GetCount(), 4);
  const auto dir = MakeTempDir("save");
  view.Save(QString::fromStdString((dir / "view.ztl").string()));
  const auto messages = ReadLog(ReadFile(dir / "view.ztl"));
  std::vector<std::string> texts;
  for (const auto& m : messages) texts.push_back(m.MsgText);
  EXPECT_EQ(texts, (std::vector<std::string>{"hello \"you\" & <them>", "M>", "m1", "M<", "after"}));
  EXPECT_EQ(messages[0].Details, "a=1\r\nb=<2>\n\nc");
  EXPECT_EQ(messages[0].ProcessID, 77u);

  TZTMessageView empty;
  empty.Save(QString::fromStdString((dir / "empty.ztl").string()));
  EXPECT_EQ(ReadFile(dir / "empty.ztl").size(), 0u);

  EXPECT_THROW(view.Save(QString::fromStdString((dir / "no such folder" / "x.ztl").string())), std::runtime_error);

  // A write that fails ends the save with the failure message and no exception.
  if (std::filesystem::exists("/dev/full")) {
    TZTRecordingPromptService prompts;
    TZTPromptServiceGuard guard(&prompts);
    EXPECT_NO_THROW(view.Save(QStringLiteral("/dev/full")));
    ASSERT_EQ(prompts.Prompts.size(), 1u);
    EXPECT_TRUE(prompts.Prompts.front().Text.startsWith(QStringLiteral("Message #1 could not be saved to the log file:\r/dev/full\r")));
  }
}

TEST_F(ViewExport, XmlEscapesTextAndListsDetails) {
  TZTMessageView view;
  Fill(view);
  const auto dir = MakeTempDir("xml");
  view.ExportAsXML(QString::fromStdString((dir / "view.xml").string()));
  const std::string xml = ReadFile(dir / "view.xml");
  EXPECT_EQ(xml.rfind("<!--Zentrail Log File-->\r\n<!--Created on ", 0), 0u);
  EXPECT_NE(xml.find("<ZentrailLog xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
                     "xsi:noNamespaceSchemaLocation=\"ZentrailLogFile.xsd\">\r\n"),
            std::string::npos);
  EXPECT_NE(xml.find("  <Message MsgType=\"Warning\" MsgText=\"hello &quot;you&quot; &amp; &lt;them&gt;\">\r\n"
                     "    <TimeStamp Date=\"2000-02-01\" Time=\"13:05:09.042\" TimeBias=\""),
            std::string::npos);
  EXPECT_NE(xml.find("    <ProcessID>77</ProcessID>\r\n    <ThreadName>main</ThreadName>\r\n"), std::string::npos);
  EXPECT_NE(xml.find("    <Category Color=\"clWhite\" FontColor=\"$123456\">Net</Category>\r\n"), std::string::npos);
  EXPECT_NE(xml.find("    <Details>\r\n      <Item>a=1</Item>\r\n      <Item>b=&lt;2&gt;</Item>\r\n      <Item></Item>\r\n"
                     "      <Item>c</Item>\r\n    </Details>\r\n"),
            std::string::npos);
  // Hidden method content is written, the start separator never, and empty details give no element.
  EXPECT_NE(xml.find("MsgText=\"m1\""), std::string::npos);
  EXPECT_EQ(xml.find("AppStrtSep"), std::string::npos);
  const size_t after = xml.find("MsgText=\"after\"");
  ASSERT_NE(after, std::string::npos);
  EXPECT_EQ(xml.find("<Details>", after), std::string::npos);
  EXPECT_EQ(xml.substr(xml.size() - 16), "</ZentrailLog>\r\n");

  // Text beyond ASCII: the file carries a byte order mark.
  TZTMessageView wide;
  Store(ztmInfo, "Gr\xC3\xBC\xC3\x9F" "e", {&wide});
  wide.ExportAsXML(QString::fromStdString((dir / "wide.xml").string()));
  const std::string wideXml = ReadFile(dir / "wide.xml");
  EXPECT_EQ(wideXml.rfind("\xEF\xBB\xBF<!--Zentrail Log File-->", 0), 0u);
  EXPECT_NE(wideXml.find("MsgText=\"Gr\xC3\xBC\xC3\x9F" "e\""), std::string::npos);

  TZTMessageView empty;
  empty.ExportAsXML(QString::fromStdString((dir / "empty.xml").string()));
  const std::string none = ReadFile(dir / "empty.xml");
  EXPECT_EQ(std::count(none.begin(), none.end(), '\n'), 4);
}

TEST_F(ViewExport, TextExportKeepsItsOwnLevelsAndWallTime) {
  TFakeApplication app;
  app.Columns = ztcoCategory | ztcoProcessID | ztcoTimeDiff;
  TZTMessageView view(nullptr, &app);
  view.InitView();
  Fill(view);
  const auto dir = MakeTempDir("text");
  view.ExportAsText(QString::fromStdString((dir / "view.txt").string()));
  const std::string text = ReadFile(dir / "view.txt");
  const std::string expectedStart =
      "MsgType\tMessage\tCategory\tPID\tTime Diff\r\n"
      "Warning\thello \"you\" & <them>\tNet\t77\t13:05:09.042\r\n"
      "Enter\tM>\tGeneral\t4242\t";
  EXPECT_EQ(text.substr(0, expectedStart.size()), expectedStart);
  EXPECT_NE(text.find("\r\n  Info\tm1\t"), std::string::npos);
  EXPECT_NE(text.find("\r\nExit\tM<\t"), std::string::npos);
  EXPECT_NE(text.find("\r\nInfo\tafter\t"), std::string::npos);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 6);

  // Flattened: no indentation at all.
  app.Flatten = true;
  view.UpdateSettings();
  view.ExportAsText(QString::fromStdString((dir / "flat.txt").string()));
  EXPECT_NE(ReadFile(dir / "flat.txt").find("\r\nInfo\tm1\t"), std::string::npos);
}

}  // namespace
}  // namespace zentrail::test
