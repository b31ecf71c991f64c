// A view's filter: which messages each criterion takes and refuses, the text pattern over the
// store's UTF-8, and the criteria kept in a project section.

#include <map>

#include "ZTIniFile.h"
#include "ViewTestSupport.h"

namespace zentrail::test {
namespace {

using Texts = std::vector<std::string>;

class ViewFilter : public TViewTest {
 protected:
  // Stores a message with the given identity and offers it to view; the row text is text.
  void Offer(TZTMessageView& view, const std::string& text, int32_t type = ztmInfo, int32_t content = ztmText,
             const std::string& app = "demo", const std::string& thread = "main", uint32_t pid = 4242,
             const std::string& category = "General", const std::string& computer = "build-host") {
    TZentrailMessage m;
    m.MsgType = type;
    m.MsgContent = content;
    m.MsgText = text;
    m.AppName = app;
    m.ThreadName = thread;
    m.ProcessID = pid;
    m.Category = category;
    m.ComputerName = computer;
    MessageSet.AppendMessage(m, FNextID++);
    view.AddMessage(false);
  }

  static TZTFilterCriteria Types(std::initializer_list<int> types, std::initializer_list<int> contents) {
    TZTFilterCriteria c;
    c.CheckMsgTypes = true;
    for (int t : types) c.MsgTypeSet.set(static_cast<size_t>(t));
    for (int t : contents) c.MsgContentSet.set(static_cast<size_t>(t));
    return c;
  }
};

TEST_F(ViewFilter, IdentityCriteriaCompareWholeValuesIgnoringAsciiCaseOnly) {
  TZTMessageView view;
  TZTFilterCriteria c;
  c.CheckAppName = true;
  c.AppName = "Demo";
  c.CheckCategory = true;
  c.Category = "net";
  c.CheckProcessID = true;
  c.ProcessID = 3000000000u;  // above the signed range: still compared as the same number
  c.CheckThreadName = true;
  c.ThreadName = "Ärger-1";
  c.CheckComputerName = true;
  c.ComputerName = "HOST";
  view.SetFilterCriteria(c);

  const uint32_t pid = 3000000000u;
  Offer(view, "all five", ztmInfo, ztmText, "DEMO", "Ärger-1", pid, "NET", "host");
  Offer(view, "app prefix", ztmInfo, ztmText, "Demo2", "Ärger-1", pid, "net", "HOST");
  Offer(view, "app shorter", ztmInfo, ztmText, "Dem", "Ärger-1", pid, "net", "HOST");
  Offer(view, "category", ztmInfo, ztmText, "demo", "Ärger-1", pid, "network", "HOST");
  Offer(view, "pid", ztmInfo, ztmText, "demo", "Ärger-1", 3000000001u, "net", "HOST");
  // Only ASCII letters fold: a thread name that differs in the case of Ä is another thread.
  Offer(view, "non-ascii case", ztmInfo, ztmText, "demo", "äRGER-1", pid, "net", "HOST");
  Offer(view, "ascii case", ztmInfo, ztmText, "demo", "ÄRGER-1", pid, "net", "HOST");
  Offer(view, "computer", ztmInfo, ztmText, "demo", "Ärger-1", pid, "net", "HOST2");
  Offer(view, "multiple values aren't split", ztmInfo, ztmText, "Demo;Other", "Ärger-1", pid, "net", "HOST");
  EXPECT_EQ(RowTexts(view), (Texts{"all five", "ascii case"}));

  // Every flag off: everything passes, whatever the values say.
  TZTMessageView open;
  c = TZTFilterCriteria{};
  c.AppName = "nobody";
  c.MessageText = "never";
  open.SetFilterCriteria(c);
  Offer(open, "anything", 1000, 999, "someone");
  Offer(open, "-", ztmSeparator, ztmText, "");
  EXPECT_EQ(open.GetCount(), 2);
}

TEST_F(ViewFilter, TypesAndContentsAreAlternativesAndCustomIsCodeHundredAlone) {
  TZTMessageView warnings, bitmaps, custom, none, text;
  warnings.SetFilterCriteria(Types({ztmWarning}, {}));
  bitmaps.SetFilterCriteria(Types({}, {ztmBitmap}));
  custom.SetFilterCriteria(Types({ztmReserved}, {}));
  none.SetFilterCriteria(Types({}, {}));
  text.SetFilterCriteria(Types({}, {ztmText}));
  auto offerAll = [&](const std::string& t, int32_t type, int32_t content) {
    const int32_t before = MessageSet.GetRecordCount();
    for (TZTMessageView* v : {&warnings, &bitmaps, &custom, &none, &text}) {
      if (MessageSet.GetRecordCount() == before) {
        Offer(*v, t, type, content);
      } else {
        MessageSet.GotoRec(before + 1);
        v->AddMessage(false);
      }
    }
  };
  offerAll("warning with bitmap", ztmWarning, ztmBitmap);
  offerAll("info with bitmap", ztmInfo, ztmBitmap);
  offerAll("warning text", ztmWarning, ztmText);
  offerAll("type 100", 100, ztmObject);
  offerAll("type 101", 101, ztmObject);
  offerAll("type 1000", 1000, ztmObject);
  offerAll("type 1000 with bitmap", 1000, ztmBitmap);
  offerAll("separator", ztmSeparator, ztmText);
  offerAll("separator no text", ztmSeparator, 0);
  offerAll("content above 255", ztmInfo, 256 + ztmBitmap);

  EXPECT_EQ(RowTexts(warnings), (Texts{"warning with bitmap", "warning text"}));
  EXPECT_EQ(RowTexts(bitmaps), (Texts{"warning with bitmap", "info with bitmap", "type 1000 with bitmap"}));
  // The narrow reading: bit 100 takes 100 and no other custom type.
  EXPECT_EQ(RowTexts(custom), (Texts{"type 100"}));
  EXPECT_EQ(none.GetCount(), 0);
  // A client's separator carries content 7, so the Text button lets it through.
  EXPECT_EQ(RowTexts(text), (Texts{"warning text", "separator"}));
}

TEST_F(ViewFilter, TextPatternMatchesUtf8AnywhereIgnoringCaseBeyondAscii) {
  TZTMessageView view;
  TZTFilterCriteria c;
  c.CheckMessageText = true;
  c.MessageText = "ÄRGER|ПРИВЕТ|σοφία|^.{3}$";
  view.SetFilterCriteria(c);
  Offer(view, "viel ärger heute");
  Offer(view, "скажи привет");
  Offer(view, "ΣΟΦΊΑ");
  Offer(view, "äöü");   // three characters of two bytes each: the dot takes a character, not a byte
  Offer(view, "äöüx");
  Offer(view, "arger");
  EXPECT_EQ(RowTexts(view), (Texts{"viel ärger heute", "скажи привет", "ΣΟΦΊΑ", "äöü"}));

  // The pattern tests MsgText only, and only while its box is on.
  TZTMessageView details;
  c.MessageText = "needle";
  details.SetFilterCriteria(c);
  TZentrailMessage m;
  m.MsgText = "hay";
  m.Details = "needle";
  MessageSet.AppendMessage(m, FNextID++);
  details.AddMessage(false);
  EXPECT_EQ(details.GetCount(), 0);

  // A pattern that can't compile is refused when set; the view stays usable and its text test
  // refuses everything instead of going on with the previous pattern.
  c.MessageText = "ärger(";
  try {
    view.SetFilterCriteria(c);
    ADD_FAILURE() << "no error for an unclosed group";
  } catch (const EZTRegExError& e) {
    EXPECT_NE(std::string(e.what()).find("ärger("), std::string::npos) << e.what();
    EXPECT_NE(std::string(e.what()).find("missing closing parenthesis"), std::string::npos) << e.what();
  }
  TZTFilterCriteria back;
  view.GetFilterCriteria(back);
  EXPECT_EQ(back.MessageText, "ärger(");
  view.ClearView();
  Offer(view, "noch mehr ärger");
  EXPECT_EQ(view.GetCount(), 0);
  // With its box off the same bad pattern is still refused when set, but no message is tested.
  c.CheckMessageText = false;
  EXPECT_THROW(view.SetFilterCriteria(c), EZTRegExError);
  Offer(view, "passes");
  EXPECT_EQ(RowTexts(view), (Texts{"passes"}));
  // A good pattern afterwards works again.
  c.CheckMessageText = true;
  c.MessageText = "MEHR";
  view.SetFilterCriteria(c);
  MessageSet.GotoRec(MessageSet.GetRecordCount() - 1);
  view.AddMessage(false);
  EXPECT_EQ(RowTexts(view), (Texts{"passes", "noch mehr ärger"}));
}

// The project file's view section, through the ini class the shell uses for projects.
class TIniSection : public ICustomViewReadSettings, public ICustomViewWriteSettings {
 public:
  TIniSection(TZTIniFile& ini, std::string section) : FIni(ini), FSection(std::move(section)) {}
  std::string ReadString(const std::string& key, const std::string& d) override { return FIni.ReadString(FSection, key, d); }
  int32_t ReadInteger(const std::string& key, int32_t d) override { return FIni.ReadInteger(FSection, key, d); }
  bool ReadBool(const std::string& key, bool d) override { return FIni.ReadBool(FSection, key, d); }
  double ReadFloat(const std::string& key, double d) override { return FIni.ReadFloat(FSection, key, d); }
  void WriteString(const std::string& key, const std::string& v) override { FIni.WriteString(FSection, key, v); }
  void WriteInteger(const std::string& key, int32_t v) override { FIni.WriteInteger(FSection, key, v); }
  void WriteBool(const std::string& key, bool v) override { FIni.WriteBool(FSection, key, v); }
  void WriteFloat(const std::string& key, double v) override { FIni.WriteFloat(FSection, key, v); }

 private:
  TZTIniFile& FIni;
  std::string FSection;
};

TEST_F(ViewFilter, CriteriaRoundTripThroughAProjectFile) {
  TZTFilterCriteria c;
  c.CheckAppName = true;
  c.AppName = "Zähler App";
  c.CheckCategory = true;
  c.Category = "a=b; c";
  c.CheckProcessID = true;
  c.ProcessID = 4000000000u;
  c.CheckThreadName = true;
  c.ThreadName = "worker 7";
  c.CheckComputerName = true;
  c.ComputerName = "host.example";
  c.CheckMessageText = true;
  c.MessageText = "^(Ärger|fail)\\s+\\d+$";
  c.CheckMsgTypes = true;
  // Every code the text form has room for: 0 to 45 and 100, spread over both sets.
  for (int code = 0; code <= 45; ++code) (code % 3 == 0 ? c.MsgTypeSet : c.MsgContentSet).set(static_cast<size_t>(code));
  c.MsgTypeSet.set(100);

  TZTIniFile ini;
  TZTMessageView view;
  view.SetFilterCriteria(c);
  TIniSection out(ini, "View1");
  view.WriteSettings(out);
  // Written as text and read back from text, as a project file is.
  TZTIniFile reread;
  reread.LoadFromString(ini.ToString());
  EXPECT_EQ(reread.ReadSection("View1"),
            (std::vector<std::string>{"CheckMsgTypes", "MsgTypeSet", "MsgContentSet", "CheckAppName", "AppName",
                                      "CheckCategory", "Category", "CheckProcessID", "ProcessID", "CheckThreadName",
                                      "ThreadName", "CheckComputerName", "ComputerName", "CheckMessageText",
                                      "MessageText"}));
  EXPECT_EQ(reread.ReadString("View1", "MsgContentSet", "").size(), 47u);
  TZTMessageView back;
  TIniSection in(reread, "View1");
  back.ReadSettings(in);
  TZTFilterCriteria got;
  back.GetFilterCriteria(got);
  EXPECT_EQ(got, c);
  // The pattern read back is compiled and in force.
  Offer(back, "ärger 12", 0, ztmText, "zähler app", "WORKER 7", 4000000000u, "A=B; C", "HOST.example");
  Offer(back, "ärger 12 more", 0, ztmText, "zähler app", "WORKER 7", 4000000000u, "A=B; C", "HOST.example");
  EXPECT_EQ(RowTexts(back), (Texts{"ärger 12"}));

  // Unchecked values aren't written, and an all-false section reads back as an empty filter.
  TZTFilterCriteria unchecked;
  unchecked.AppName = "kept in memory only";
  unchecked.MessageText = "(";
  unchecked.MsgTypeSet.set(2);
  TZTMessageView plain;
  EXPECT_THROW(plain.SetFilterCriteria(unchecked), EZTRegExError);
  TZTIniFile ini2;
  TIniSection out2(ini2, "View2");
  plain.WriteSettings(out2);
  EXPECT_EQ(ini2.ReadSection("View2"), (std::vector<std::string>{"CheckMsgTypes", "CheckAppName", "CheckCategory",
                                                                  "CheckProcessID", "CheckThreadName",
                                                                  "CheckComputerName", "CheckMessageText"}));
  TIniSection in2(ini2, "View2");
  back.ReadSettings(in2);
  back.GetFilterCriteria(got);
  EXPECT_EQ(got, TZTFilterCriteria{});

  // Set texts of older projects: shorter, longer, or a single character.
  TZTIniFile old;
  old.LoadFromString("[V]\nCheckMsgTypes=1\nMsgTypeSet=0010000000001\nMsgContentSet=1\n");
  TIniSection in3(old, "V");
  back.ReadSettings(in3);
  back.GetFilterCriteria(got);
  EXPECT_TRUE(got.MsgTypeSet.test(2));
  EXPECT_TRUE(got.MsgTypeSet.test(100));
  EXPECT_FALSE(got.MsgTypeSet.test(12));
  EXPECT_EQ(got.MsgTypeSet.count(), 2u);
  EXPECT_EQ(got.MsgContentSet.count(), 1u);
  EXPECT_TRUE(got.MsgContentSet.test(100));
}

}  // namespace
}  // namespace zentrail::test
