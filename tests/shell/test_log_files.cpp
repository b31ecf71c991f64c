// Log files through the main window: opening and appending hand-made logs, the question before a
// load, bad files of every kind, saving and reopening, exporting, and a save that runs out of room.
#include <QApplication>
#include <QDateTime>
#include <QDialog>
#include <QLabel>
#include <QProcess>
#include <QTime>
#include <QTimer>
#include <csignal>
#include <filesystem>
#include <random>
#include <sys/resource.h>
#include <unistd.h>

#include "LogFileTestSupport.h"
#include "ShellFixture.h"
#include "TestEnvironment.h"
#include "ZTLogFiles.h"

using namespace zentrail;
using namespace zentrail::test;
namespace fs = std::filesystem;

namespace {

const char* const kZtlog = ZENTRAIL_BINARY_DIR "/tools/ztlog/ztlog";

class LogFilesTest : public ShellFixture {
 protected:
  fs::path Dir() {
    if (FDir.empty()) FDir = MakeTempDir("logs");
    return FDir;
  }
  fs::path Write(const std::string& name, const std::string& bytes) {
    const fs::path path = Dir() / name;
    WriteFile(path, bytes);
    return path;
  }
  void Load(const fs::path& path, bool append = false) {
    Viewer->LoadLogFile(QString::fromStdString(path.string()), append);
  }
  // Every form run answers with a look at it; the texts of invalid-log forms are kept.
  void RecordForms() {
    FPrompts->DialogHandler = [this](QDialog& dialog) {
      if (auto* label = dialog.findChild<QLabel*>(QStringLiteral("lblText"))) FFormTexts << label->text();
      return int(QDialog::Accepted);
    };
  }
  // The milliseconds of the day now, by the system clock.
  static int NowMs() { return QTime::currentTime().msecsSinceStartOfDay(); }

  fs::path FDir;
  QStringList FFormTexts;
};

}  // namespace

TEST_F(LogFilesTest, AHandMadeLogTakesTheAddingPathRecordByRecord) {
  THandFields text;
  text.MsgType = ztmWarning;
  text.MsgText = "line one\r\nline two @ \xF0\x9F\x98\x80";
  text.Details = "a=1\r\nb=2";
  text.ProcessID = 4000000000u;
  text.Category = "Db";
  text.CategoryColor = 255;
  text.CategoryFontColor = -16777211;
  text.TypeName = "TOrder";
  text.Time = 1234;
  text.Date = ztDateOf2000 + 10;
  THandFields separator;
  separator.MsgType = ztmSeparator;
  separator.MsgText = "from the sender";
  separator.Time = 5;
  THandFields enter;
  enter.MsgType = ztmEnterMethod;
  enter.MsgText = "TOrders.Load";
  THandFields reset;
  reset.MsgType = ztmResetSeparator;
  reset.MsgText = "ignored";
  reset.Time = 5;
  THandFields packed;
  packed.MsgType = ztmError;
  packed.MsgText = "packed";
  std::string bytes = HandRecord(text) + HandRecord(separator) + HandRecord(enter) + HandRecord(reset) +
                      HandRecordText(ztmInfo, "after the reset") + HandRecordText(ztmClear, "a clear is a row here") +
                      HandRecordText(ztmScratchPad, "Queue@17") + HandRecordText(ztmAppStartSeparator, "") +
                      HandCompressedRecord(HandPacket(packed)) +
                      HandLegacyRecord(ztmNote, 4321, ztDateOf2000 + 1, "old", "details", "worker", "legacy app");
  const fs::path log = Write("hand.ztl", bytes);

  // A populated list asks first. Cancel changes nothing.
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "before"));
  FPrompts->ThreeWayAnswers = {TZTAnswer::Cancel};
  Load(log);
  ASSERT_EQ(FPrompts->Prompts.size(), 1u);
  EXPECT_EQ(FPrompts->Prompts.back().Text, DisplayText(LoadQuestionText()));
  EXPECT_TRUE(FPrompts->Prompts.back().Text.startsWith("The Message List is currently populated with messages.\n\n"));
  EXPECT_EQ(MessageSet.GetRecordCount(), 1);

  // No: the list is cleared without a further question and the log is read. The status text is
  // up while the load lets the window catch up once.
  QString statusDuringLoad;
  QTimer::singleShot(0, Viewer.get(), [&] { statusDuringLoad = Viewer->StatusText("stsMessage"); });
  FPrompts->ThreeWayAnswers = {TZTAnswer::No};
  const int before = NowMs();
  Load(log);
  const int after = NowMs();
  EXPECT_EQ(statusDuringLoad, "Loading hand.ztl...");
  EXPECT_EQ(Viewer->StatusText("stsMessage"), "");
  EXPECT_EQ(FPrompts->Prompts.size(), 2u);
  EXPECT_EQ(Viewer->LastLoad().Records, 10);
  EXPECT_FALSE(Viewer->LoadingFile());
  EXPECT_TRUE(Viewer->GetAutoScroll());

  const auto stored = Stored();
  ASSERT_EQ(stored.size(), 10u);
  const std::vector<std::pair<int32_t, std::string>> expected = {
      {ztmWarning, text.MsgText},  {ztmSeparator, "-"},       {ztmEnterMethod, "TOrders.Load"},
      {ztmResetSeparator, "="},    {ztmInfo, "after the reset"}, {ztmClear, "a clear is a row here"},
      {ztmScratchPad, "Queue@17"}, {ztmAppStartSeparator, ""},   {ztmError, "packed"},
      {ztmNote, "old"}};
  EXPECT_EQ(stored, expected);
  EXPECT_TRUE(Viewer->ScratchPadNames().isEmpty());

  TZentrailMessage m;
  MessageSet.GetMessage(1, m);
  EXPECT_EQ(m.MsgText, text.MsgText);
  EXPECT_EQ(m.Details, text.Details);
  EXPECT_EQ(m.ProcessID, 4000000000u);
  EXPECT_EQ(m.Category, "Db");
  EXPECT_EQ(m.CategoryColor, 255);
  EXPECT_EQ(m.CategoryFontColor, -16777211);
  EXPECT_EQ(m.TypeName, "TOrder");
  EXPECT_EQ(m.TimeStamp, (TZentrailTimeStamp{1234, ztDateOf2000 + 10}));
  // Separators get the viewer's clock, not the sender's; their identity stays the sender's.
  MessageSet.GetMessage(2, m);
  EXPECT_GE(m.TimeStamp.Time, before - 1000);
  EXPECT_LE(m.TimeStamp.Time, after + 1000);
  EXPECT_EQ(m.TimeStamp.Date, QDate(1899, 12, 30).daysTo(QDate::currentDate()) + 693594);
  EXPECT_EQ(m.AppName, "demo");
  MessageSet.GetMessage(10, m);
  EXPECT_EQ(m.Details, "details");
  EXPECT_EQ(m.ThreadName, "worker");
  EXPECT_EQ(m.AppName, "legacy app");
  EXPECT_EQ(m.TimeStamp, (TZentrailTimeStamp{4321, ztDateOf2000 + 1}));

  // The reset separator started the active view again at level 0.
  auto* list = dynamic_cast<IZTMessageViewList*>(&AllMessages());
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->GetIndentLevel(2), 0);
  EXPECT_EQ(list->GetIndentLevel(4), 0);

  // Append never asks and never clears.
  Load(log, true);
  EXPECT_EQ(FPrompts->Prompts.size(), 2u);
  EXPECT_EQ(MessageSet.GetRecordCount(), 20);

  // Yes saves first through the save dialog; a cancelled save dialog still lets the load go on.
  const fs::path saved = Dir() / "kept.ztl";
  FPrompts->ThreeWayAnswers = {TZTAnswer::Yes, TZTAnswer::Yes};
  FPrompts->FileAnswers = {{QString::fromStdString(saved.string()), 0}};
  Load(log);
  EXPECT_EQ(MessageSet.GetRecordCount(), 10);
  ASSERT_TRUE(fs::exists(saved));
  Load(log);
  EXPECT_EQ(MessageSet.GetRecordCount(), 10);
  ASSERT_EQ(FPrompts->FileDialogs.size(), 2u);
  EXPECT_EQ(FPrompts->FileDialogs[0].Title, "Save Zentrail Messages");
  Load(saved, true);
  // The twenty rows saved by the first Yes, less their two application-start separators.
  EXPECT_EQ(MessageSet.GetRecordCount(), 10 + 18);
}

TEST_F(LogFilesTest, BadFilesKeepWhatCameBeforeAndSayOneClearThing) {
  RecordForms();
  const std::string good = HandRecordText(ztmInfo, "first") + HandRecordText(ztmInfo, "second");
  struct TCase {
    const char* Name;
    std::string Bytes;
    int Kept;
    bool Form;  // the invalid-log form, else one message
  };
  // A zlib stream that would inflate to 65 MiB of zeros.
  const std::string zeros(65u * 1024 * 1024, '\0');
  std::vector<TCase> cases = {
      {"empty.ztl", "", 0, false},
      {"truncated.ztl", good + HandRecordText(ztmInfo, "third").substr(0, 20), 2, true},
      {"huge-length.ztl", good + LE32(0x7F000004) + LE32(0xFFFFFFFF) + std::string(64, 'x'), 2, true},
      {"zero-length.ztl", good + LE32(0x7F000004) + LE32(0), 2, true},
      {"bomb.ztl", good + HandCompressedRecord(zeros) + HandRecordText(ztmInfo, "never"), 2, true},
      {"bad-packet.ztl", good + LE32(0x7F000004) + LE32(5) + "ZTP1x", 2, true},
      {"legacy-date.ztl", good + HandLegacyRecord(0, 0, 730000, "t", "", "", ""), 2, true},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.Name);
    FPrompts->Prompts.clear();
    FPrompts->Dialogs.clear();
    FFormTexts.clear();
    FPrompts->ThreeWayAnswers = {TZTAnswer::No};
    const fs::path path = Write(c.Name, c.Bytes);
    Load(path);
    EXPECT_EQ(MessageSet.GetRecordCount(), c.Kept);
    EXPECT_EQ(AllMessages().GetCount(), c.Kept);
    EXPECT_FALSE(Viewer->LoadingFile());
    int shown = static_cast<int>(FPrompts->Dialogs.size());
    for (const auto& p : FPrompts->Prompts)
      if (!p.Question) ++shown;
    if (c.Bytes.empty()) {
      EXPECT_EQ(shown, 0) << "an empty file loads nothing and says nothing";
      continue;
    }
    EXPECT_EQ(shown, 1);
    if (c.Form) {
      ASSERT_EQ(FFormTexts.size(), 1);
      EXPECT_TRUE(FFormTexts.front().startsWith("The following log file contains invalid messages:\n"));
      EXPECT_TRUE(FFormTexts.front().contains(QString::fromLatin1(c.Name)));
      EXPECT_TRUE(FFormTexts.front().contains("byte offset")) << FFormTexts.front().toStdString();
      // Auto-Scroll stays off after a load that stopped at a bad record.
      EXPECT_FALSE(Viewer->GetAutoScroll());
      Viewer->SetAutoScroll(true);
    }
  }

  // Garbage that never begins with a tag: one report for all its words, naming the first few.
  FPrompts->Prompts.clear();
  FPrompts->ThreeWayAnswers = {TZTAnswer::No};
  std::string garbage = good + LE32(0x7F000002) + LE32(0x7F000003) + LE32(0xDEADBEEF) + HandRecordText(ztmInfo, "third");
  Load(Write("garbage.ztl", garbage));
  EXPECT_EQ(MessageSet.GetRecordCount(), 3);
  ASSERT_EQ(FPrompts->Prompts.size(), 2u);  // the question, then the report
  const QString report = FPrompts->Prompts.back().Text;
  EXPECT_TRUE(report.startsWith("Unsupported message format ($7F000002)\n\n")) << report.toStdString();
  const auto offset = good.size();
  EXPECT_TRUE(report.contains(QStringLiteral("byte offset %1").arg(offset))) << report.toStdString();
  EXPECT_TRUE(report.contains(QStringLiteral("2 further words of no known format, the first at byte offsets %1, %2")
                                  .arg(offset + 4)
                                  .arg(offset + 8)))
      << report.toStdString();
  EXPECT_TRUE(Viewer->GetAutoScroll());

  // Random bytes: whatever they hold, the load ends, and with at most one report.
  std::mt19937 random(11);
  std::string noise(1 << 16, '\0');
  for (char& c : noise) c = static_cast<char>(random());
  FPrompts->Prompts.clear();
  FPrompts->Dialogs.clear();
  Load(Write("noise.ztl", noise), true);
  EXPECT_FALSE(Viewer->LoadingFile());
  EXPECT_LE(FPrompts->Prompts.size() + FPrompts->Dialogs.size(), 1u);
  EXPECT_GE(MessageSet.GetRecordCount(), 3);

  // A folder and a file that cannot be read: the reason, and the messages stay.
  const int kept = MessageSet.GetRecordCount();
  FPrompts->Prompts.clear();
  Load(Dir(), true);
  ASSERT_EQ(FPrompts->Prompts.size(), 1u);
  EXPECT_TRUE(FPrompts->Prompts.back().Text.contains("is a folder")) << FPrompts->Prompts.back().Text.toStdString();
  EXPECT_EQ(MessageSet.GetRecordCount(), kept);
  EXPECT_TRUE(Viewer->GetAutoScroll());
  if (::geteuid() != 0) {
    const fs::path locked = Write("locked.ztl", good);
    fs::permissions(locked, fs::perms::none);
    FPrompts->Prompts.clear();
    Load(locked, true);
    ASSERT_EQ(FPrompts->Prompts.size(), 1u);
    EXPECT_TRUE(FPrompts->Prompts.back().Text.contains("Permission denied"));
    EXPECT_EQ(MessageSet.GetRecordCount(), kept);
  }
}

TEST_F(LogFilesTest, TheInvalidLogFormShortensThePathToItsLabel) {
  QFontMetrics metrics(QApplication::font());
  const QString path = "/home/someone/projects/a-rather-long-folder-name/another-one/logs/today/service.ztl";
  const int width = metrics.horizontalAdvance("/.../today/service.ztl") + 2;
  EXPECT_EQ(ShortenPathToWidth(path, metrics, width), "/.../today/service.ztl");
  EXPECT_EQ(ShortenPathToWidth(path, metrics, 100000), path);
  EXPECT_EQ(ShortenPathToWidth("logs/a/b/c/x.ztl", metrics, metrics.horizontalAdvance("logs/.../c/x.ztl")),
            "logs/.../c/x.ztl");
  for (int w : {5, 40, 120, 300}) EXPECT_LE(metrics.horizontalAdvance(ShortenPathToWidth(path, metrics, w)), w) << w;

  const QString longPath = QString::fromStdString(Dir().string()) + "/" + QString(30, 'd') + "/" + QString(40, 'e') +
                           "/" + QString(50, 'f') + "/broken.ztl";
  TfrmInvalidLog form(nullptr, longPath, "The record at byte offset 8 cannot be read.");
  EXPECT_EQ(form.windowTitle(), "Zentrail Viewer");
  const QStringList lines = form.TextLabel()->text().split('\n');
  ASSERT_GE(lines.size(), 2);
  EXPECT_TRUE(lines[1].startsWith("/.../")) << lines[1].toStdString();
  EXPECT_TRUE(lines[1].endsWith("/broken.ztl"));
  EXPECT_LE(form.TextLabel()->fontMetrics().horizontalAdvance(lines[1]), TfrmInvalidLog::LabelWidth);
  EXPECT_TRUE(form.TextLabel()->text().endsWith("The record at byte offset 8 cannot be read."));
  const fs::path screens = fs::path(ZENTRAIL_BINARY_DIR) / "test-screens" / "shell";
  fs::create_directories(screens);
  form.grab().save(QString::fromStdString((screens / "invalid-log-form.png").string()));
}

TEST_F(LogFilesTest, SavedThenOpenedGivesTheSameMessagesAndAFilteredViewSavesItsRows) {
  TZentrailMessage rich = MakeMessage(ztmError, "text with \"quotes\", <tags> & line\r\nends \xE2\x82\xAC");
  rich.Details = std::string(100000, 'd') + "\r\nlast line";
  rich.TypeName = "TWidget";
  rich.Category = "Net";
  rich.CategoryColor = 0x00112233;
  rich.CategoryFontColor = static_cast<int32_t>(0xFF000008u);
  rich.ProcessID = 7;
  rich.MsgContent = ztmStringList;
  Viewer->ProcessMessage(rich);
  Viewer->ProcessMessage(MakeMessage(ztmEnterMethod, "Outer", 8));
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "inside", 8));
  Viewer->ProcessMessage(MakeMessage(ztmExitMethod, "Outer", 8));
  TZentrailMessage sep = MakeMessage(ztmSeparator, "x", 8);
  Viewer->AddSeparator(&sep);
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "last", 7));
  std::vector<TZentrailMessage> before(static_cast<size_t>(MessageSet.GetRecordCount()));
  for (int32_t r = 1; r <= MessageSet.GetRecordCount(); ++r) MessageSet.GetMessage(r, before[static_cast<size_t>(r - 1)]);

  // The save dialog: its form and where it starts; the chosen folder is kept for the next one.
  const fs::path all = Dir() / "all.ztl";
  FPrompts->FileAnswers = {{QString::fromStdString(all.string()), 0}};
  Viewer->SaveLogFile();
  ASSERT_EQ(FPrompts->FileDialogs.size(), 1u);
  const TZTFileDialogRequest& request = FPrompts->FileDialogs.front();
  EXPECT_TRUE(request.Save);
  EXPECT_EQ(request.Title, "Save Zentrail Messages");
  EXPECT_EQ(request.Filters, QStringList{"Zentrail Log Files ( *.ztl )"});
  EXPECT_EQ(request.DefaultSuffix, "ztl");
  EXPECT_TRUE(request.Folder.endsWith("/My Zentrail Files/Logs/")) << request.Folder.toStdString();
  EXPECT_TRUE(fs::is_directory(request.Folder.toStdString()));
  EXPECT_EQ(Viewer->LogFolder(), QString::fromStdString(Dir().string()) + "/");

  FPrompts->ThreeWayAnswers = {TZTAnswer::No};
  Load(all);
  ASSERT_EQ(MessageSet.GetRecordCount(), static_cast<int32_t>(before.size()));
  for (int32_t r = 1; r <= MessageSet.GetRecordCount(); ++r) {
    TZentrailMessage now;
    MessageSet.GetMessage(r, now);
    TZentrailMessage then = before[static_cast<size_t>(r - 1)];
    // Separators are made anew when read, with the time of now.
    if (then.MsgType == ztmSeparator) then.TimeStamp = now.TimeStamp;
    EXPECT_EQ(now, then) << "record " << r;
  }

  // A view of one process: its rows only.
  TZTFilterCriteria criteria;
  criteria.CheckProcessID = true;
  criteria.ProcessID = 8;
  IZTMessageView* filtered = Viewer->CreateView("pid 8", criteria, false, true, "Default");
  ASSERT_EQ(filtered->GetCount(), 4);
  const fs::path part = Dir() / "part.ztl";
  Viewer->WriteLogFile(QString::fromStdString(part.string()));
  FPrompts->ThreeWayAnswers = {TZTAnswer::No};
  Viewer->SetActiveViewIndex(0);
  Load(part);
  EXPECT_EQ(Stored(), (std::vector<std::pair<int32_t, std::string>>{
                          {ztmEnterMethod, "Outer"}, {ztmInfo, "inside"}, {ztmExitMethod, "Outer"}, {ztmSeparator, "-"}}));
}

TEST_F(LogFilesTest, ExportOfAFilteredViewWithACollapsedMethod) {
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "other process", 9));
  Viewer->ProcessMessage(MakeMessage(ztmEnterMethod, "Load", 8));
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "a <b> & \"c\"", 8));
  Viewer->ProcessMessage(MakeMessage(ztmExitMethod, "Load", 8));
  TZentrailMessage withDetails = MakeMessage(ztmWarning, "it's", 8);
  withDetails.Details = "one\r\ntwo & three";
  Viewer->ProcessMessage(withDetails);
  TZTFilterCriteria criteria;
  criteria.CheckProcessID = true;
  criteria.ProcessID = 8;
  IZTMessageView* view = Viewer->CreateView("pid 8", criteria, false, true, "Default");
  Viewer->SetColumnOptions(2 | 8 | 16 | 64);
  ASSERT_EQ(view->GetCount(), 4);
  dynamic_cast<IZTMessageViewMethods*>(view)->CollapseMethod(0);
  ASSERT_EQ(view->GetCount(), 2);

  const fs::path xml = Dir() / "out.xml";
  const fs::path txt = Dir() / "out.txt";
  // The filter decides the format, whatever the name typed.
  FPrompts->FileAnswers = {{QString::fromStdString(xml.string()), 0}, {QString::fromStdString(txt.string()), 1}};
  Viewer->ExportMessages();
  Viewer->ExportMessages();
  ASSERT_EQ(FPrompts->FileDialogs.size(), 2u);
  EXPECT_EQ(FPrompts->FileDialogs[0].Title, "Export Zentrail Messages");
  EXPECT_EQ(FPrompts->FileDialogs[0].Filters, (QStringList{"XML Files (*.xml)", "Text Files (*.txt)"}));
  EXPECT_EQ(FPrompts->FileDialogs[0].DefaultSuffix, "xml");

  // A real XML parser reads it.
  QProcess lint;
  lint.start("xmllint", {"--noout", QString::fromStdString(xml.string())});
  ASSERT_TRUE(lint.waitForFinished(20000)) << "xmllint (libxml2-utils) is needed";
  EXPECT_EQ(lint.exitCode(), 0) << lint.readAllStandardError().toStdString();
  QProcess query;
  query.start("xmllint", {"--xpath", "string(/ZentrailLog/Message[2]/@MsgText)", QString::fromStdString(xml.string())});
  ASSERT_TRUE(query.waitForFinished(20000));
  EXPECT_EQ(query.readAllStandardOutput().trimmed().toStdString(), "a <b> & \"c\"");

  const std::string x = ReadFile(xml);
  const std::string header = "<!--Zentrail Log File-->\r\n<!--Created on ";
  ASSERT_EQ(x.compare(0, header.size(), header), 0);
  const std::string body = x.substr(x.find("<ZentrailLog"));
  const std::string message4 =
      "  <Message MsgType=\"Warning\" MsgText=\"it&apos;s\">\r\n"
      "    <TimeStamp Date=\"2000-01-01\" Time=\"10:00:00.000\" TimeBias=\"" +
      std::to_string(MessageSet.GetTimeBias()) +
      "\"/>\r\n"
      "    <ProcessID>8</ProcessID>\r\n    <ThreadName>main</ThreadName>\r\n    <AppName>demo</AppName>\r\n"
      "    <ComputerName>box</ComputerName>\r\n    <Category Color=\"clWhite\" FontColor=\"clBlack\"></Category>\r\n"
      "    <TypeName></TypeName>\r\n    <Details>\r\n      <Item>one</Item>\r\n      <Item>two &amp; three</Item>\r\n"
      "    </Details>\r\n  </Message>\r\n</ZentrailLog>\r\n";
  EXPECT_NE(body.find(message4), std::string::npos) << body;
  EXPECT_EQ(body.find("other process"), std::string::npos);
  int messages = 0;
  for (size_t at = body.find("<Message "); at != std::string::npos; at = body.find("<Message ", at + 1)) ++messages;
  EXPECT_EQ(messages, 4);

  EXPECT_EQ(ReadFile(txt),
            "MsgType\tMessage\tAppName\tPID\tThread\tTime Stamp\r\n"
            "Enter\tLoad\tdemo\t8\tmain\t10:00:00.000\r\n"
            "  Info\ta <b> & \"c\"\tdemo\t8\tmain\t10:00:00.000\r\n"
            "Exit\tLoad\tdemo\t8\tmain\t10:00:00.000\r\n"
            "Warning\tit's\tdemo\t8\tmain\t10:00:00.000\r\n");
}

TEST_F(LogFilesTest, ASaveThatRunsOutOfRoomSaysSoAndLeavesWholeRecords) {
  for (int i = 0; i < 200; ++i) Viewer->ProcessMessage(MakeMessage(ztmInfo, "message number " + std::to_string(i)));
  const fs::path path = Dir() / "full.ztl";
  // The file may grow to 3000 bytes, as on a small disk that fills up: the write that passes it fails.
  rlimit old{};
  ::getrlimit(RLIMIT_FSIZE, &old);
  auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
  rlimit small = old;
  small.rlim_cur = 3000;
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  Viewer->WriteLogFile(QString::fromStdString(path.string()));
  ::setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, oldHandler);

  ASSERT_EQ(FPrompts->Prompts.size(), 1u);
  const QString text = FPrompts->Prompts.back().Text;
  EXPECT_TRUE(text.startsWith("Message #")) << text.toStdString();
  EXPECT_TRUE(text.contains(" could not be saved to the log file:\r" + QString::fromStdString(path.string()) + "\r"));
  EXPECT_TRUE(text.endsWith("The remaining messages have not been saved."));
  const int failed = text.mid(9, text.indexOf(' ', 9) - 9).toInt();
  EXPECT_GT(failed, 1);
  EXPECT_LT(failed, 200);
  EXPECT_EQ(Viewer->StatusText("stsMessage"), "");

  // What was written is whole records, up to the one that failed.
  QProcess dump;
  dump.start(QString::fromLatin1(kZtlog), {"dump", QString::fromStdString(path.string())});
  ASSERT_TRUE(dump.waitForFinished(20000));
  EXPECT_EQ(dump.exitCode(), 0) << dump.readAllStandardError().toStdString();
  const QStringList lines = QString::fromUtf8(dump.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
  EXPECT_EQ(lines.size(), failed - 1);
  EXPECT_TRUE(lines.back().endsWith("message number " + QString::number(failed - 2))) << lines.back().toStdString();
}
