#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "ZentrailLogging.h"

using namespace zentrail;

namespace {

std::string ErrorOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const EZentrailInvalidDestination& e) {
    return e.what();
  }
  return "(no failure)";
}

}  // namespace

TEST(Destination, TextFormParsesEachKindAndWritesItBackInPartOrder) {
  TZentrailDestination d("File[Path=/var/log/z/app.ztl;MaxSize=1024;MaxParts=3],Viewer");
  EXPECT_TRUE(d.Viewer().Active());
  ASSERT_TRUE(d.LogFile().Active());
  EXPECT_EQ(d.LogFile().FilePath(), "/var/log/z/");
  EXPECT_EQ(d.LogFile().FileName(), "app.ztl");
  EXPECT_EQ(d.LogFile().MaxSize(), 1024);
  EXPECT_EQ(d.LogFile().MaxParts(), 3);
  EXPECT_EQ(d.AsString(), "Viewer,File[Path=/var/log/z/app.ztl;MaxSize=1024;MaxParts=3]");

  d.SetAsString(" tcp [Host=example.org;Port=4000;RemoteDestinationDetails=File[Path=/a/b.ztl;MaxSize=1];"
                "Compressed=true], udp[Host=h], Http[URL=http://x/;ProxyServer=p;ProxyPort=8080;"
                "ProxyUsername=u;ProxyPassword=pw], ALIAS[Name=team]");
  EXPECT_FALSE(d.Viewer().Active());
  EXPECT_EQ(d.TCP().Host(), "example.org");
  EXPECT_EQ(d.TCP().Port(), 4000);
  EXPECT_EQ(d.TCP().RemoteDestinationString(), "File[Path=/a/b.ztl;MaxSize=1]");
  EXPECT_TRUE(d.TCP().Compressed());
  EXPECT_EQ(d.UDP().Port(), 3435);
  EXPECT_EQ(d.HTTP().ProxyPort(), 8080);
  EXPECT_EQ(d.Alias().Name(), "team");
  EXPECT_EQ(d.AsString(),
            "TCP[Host=example.org;Port=4000;RemoteDestinationDetails=File[Path=/a/b.ztl;MaxSize=1];"
            "Compressed=true],UDP[Host=h;Port=3435;RemoteDestinationDetails=Viewer],"
            "HTTP[URL=http://x/;Alias=;ProxyServer=p;ProxyPort=8080;ProxyUsername=u;ProxyPassword=pw],"
            "Alias[Name=team]");

  // Reading the text back gives the same text: what the dispatcher parses is what was meant.
  TZentrailDestination again(d.AsString());
  EXPECT_EQ(again.AsString(), d.AsString());
  EXPECT_EQ(again.DestinationCode(), d.DestinationCode());
}

TEST(Destination, EdgeCasesOfTheTextForm) {
  TZentrailDestination d("VIEWER");
  EXPECT_TRUE(d.Viewer().Active());
  d.SetAsString("viewer,Viewer,");  // repeats and a trailing comma add nothing
  EXPECT_EQ(d.AsString(), "Viewer");

  d.SetAsString("");
  for (auto* part : {static_cast<const TBaseDestination*>(&d.Viewer()), static_cast<const TBaseDestination*>(&d.LogFile()),
                     static_cast<const TBaseDestination*>(&d.TCP()), static_cast<const TBaseDestination*>(&d.Alias())})
    EXPECT_FALSE(part->Active());
  EXPECT_EQ(d.AsString(), "");
  EXPECT_EQ(d.DestinationCode(), 0);

  d.SetAsString("File[Path=/a/one.ztl],File[Path=/b/two.ztl;MaxSize=5]");
  EXPECT_EQ(d.LogFile().FileName(), "one.ztl");
  EXPECT_EQ(d.Additional(), "File[Path=/b/two.ztl;MaxSize=5]");
  EXPECT_EQ(d.AsString(), "File[Path=/a/one.ztl],File[Path=/b/two.ztl;MaxSize=5]");

  d.SetAsString("Tcp[Host=h;Port=34x4]");
  EXPECT_EQ(d.TCP().Port(), 0);

  // MaxParts without MaxSize is dropped from the text on purpose; the date format is written
  // only when it is not the default.
  d.SetAsString("File[Path=/l/a.ztl;MaxParts=4;LogByDate=true;LogByDateFormat=yyyy-mm;Compressed=yes]");
  EXPECT_EQ(d.AsString(), "File[Path=/l/a.ztl;LogByDate=true;LogByDateFormat=yyyy-mm;Compressed=true]");
  d.SetAsString("File[Path=/l/a.ztl;LogByDate=maybe;LogByDateFormat=YYYYMMDD]");
  EXPECT_FALSE(d.LogFile().LogByDate());
  d.LogFile().SetLogByDate(true);
  EXPECT_EQ(d.AsString(), "File[Path=/l/a.ztl;LogByDate=true]");

  // A Windows path becomes its "/" form.
  d.SetAsString("File[Path=C:\\Logs\\app.ztl]");
  EXPECT_EQ(d.LogFile().FileName(), "app.ztl");
}

TEST(Destination, FailuresNameTheProblem) {
  TZentrailDestination d;
  EXPECT_EQ(ErrorOf([&] { d.SetAsString("Viewer,Printer[x=1]"); }),
            "Invalid Destination Type -- Printer is not recognized");
  EXPECT_EQ(ErrorOf([&] { d.SetAsString("File[Path=/a.ztl;Colour=red]"); }),
            "Invalid File Destination Option -- unknown Colour parameter");
  EXPECT_EQ(ErrorOf([&] { d.SetAsString("Alias[Nome=x]"); }),
            "Invalid Alias Destination Option -- unknown Nome parameter");

  // A new text is the way out after a failure.
  d.SetAsString("Viewer");
  EXPECT_EQ(d.AsString(), "Viewer");
  EXPECT_EQ(d.DestinationCode(), DestinationTextHash("Viewer"));

  d.SetAsString("File[MaxSize=3]");
  EXPECT_EQ(ErrorOf([&] { d.Validate(); }), "Invalid File Destination -- missing or incorrect FileName parameter");
  d.SetAsString("Tcp[Host=]");
  EXPECT_EQ(ErrorOf([&] { d.Validate(); }), "Invalid TCP Destination -- missing or incorrect Host parameter");
  d.SetAsString("Http[Alias=a]");
  EXPECT_EQ(ErrorOf([&] { d.Validate(); }), "Invalid HTTP Destination -- missing or incorrect URL parameter");
  d.SetAsString("Http[URL=u;ProxyServer=p]");
  EXPECT_EQ(ErrorOf([&] { d.Validate(); }), "Invalid HTTP Destination -- missing or incorrect ProxyPort parameter");
  d.SetAsString("Http[URL=u]");
  d.Validate();
  EXPECT_EQ(d.HTTP().Alias(), "Default");
  d.SetAsString("Alias[Name=]");
  EXPECT_EQ(ErrorOf([&] { d.Validate(); }), "Invalid Alias Destination -- missing or incorrect Name parameter");

  // An unterminated macro is found when the text is made, not when it is parsed.
  d.SetAsString("File[Path=$(MyDocs/app.ztl]");
  EXPECT_EQ(ErrorOf([&] { (void)d.AsString(); }),
            "Invalid File Destination -- missing or incorrect FilePath parameter");
  EXPECT_EQ(ErrorOf([&] { d.Validate(); }), "Invalid File Destination -- missing or incorrect FilePath parameter");
}

TEST(Destination, PathMacrosExpandWhenTheTextIsMade) {
  std::string docs = std::getenv("XDG_DOCUMENTS_DIR");
  TZentrailDestination d("File[Path=$(MyDocs)\\Logs\\app.ztl]");
  EXPECT_EQ(d.LogFile().FilePath(), "$(MyDocs)/Logs/");
  EXPECT_EQ(d.AsString(), "File[Path=" + docs + "/Logs/app.ztl]");

  setenv("ZT_TEST_LOGS", "/srv/zt", 1);
  d.SetAsString("File[Path=$(%ZT_TEST_LOGS%)/a.ztl]");
  EXPECT_EQ(d.AsString(), "File[Path=/srv/zt/a.ztl]");
  d.SetAsString("File[Path=$(mydocs)/]");  // case does not matter, and the folder keeps its delimiter
  EXPECT_EQ(d.LogFile().ExpandedFilePath(), docs + "/");
  d.SetAsString("File[Path=app.ztl]");  // no folder: the user's log folder, as the dispatcher runs elsewhere
  EXPECT_EQ(d.AsString(), "File[Path=" + docs + "/My Zentrail Files/Logs/app.ztl]");
  d.SetAsString("File[Path=/x/$(Other)/a.ztl]");  // an unknown word stays as it is
  EXPECT_EQ(d.AsString(), "File[Path=/x/$(Other)/a.ztl]");
  d.SetAsString("File[Path=$(AppExeDir)/a.ztl]");
  EXPECT_NE(d.AsString().find("/tests/logging/a.ztl]"), std::string::npos) << d.AsString();
}

TEST(Destination, CodeIsJenkinsHashOfUtf16TextAndFollowsChanges) {
  // Reference values of lookup3's hashlittle.
  EXPECT_EQ(BobJenkinsHash("", 0, 0), 0xdeadbeefu);
  EXPECT_EQ(BobJenkinsHash("Four score and seven years ago", 30, 0), 0x17770551u);
  EXPECT_EQ(BobJenkinsHash("Four score and seven years ago", 30, 1), 0xcd628161u);

  const char16_t text[] = u"Viewer";
  EXPECT_EQ(DestinationTextHash("Viewer"), static_cast<int32_t>(BobJenkinsHash(text, 12, 0)));
  const char16_t accented[] = u"File[Path=/tmp/\u00e9t\u00e9.ztl]";
  EXPECT_EQ(DestinationTextHash("File[Path=/tmp/\xc3\xa9t\xc3\xa9.ztl]"),
            static_cast<int32_t>(BobJenkinsHash(accented, sizeof accented - 2, 0)));
  EXPECT_EQ(DestinationTextHash(""), 0);

  TZentrailDestination d;
  d.Viewer().SetActive(true);
  EXPECT_EQ(d.DestinationCode(), DestinationTextHash("Viewer"));
  d.BeginUpdate();
  d.TCP().SetActive(true);
  d.TCP().SetHost("h");
  EXPECT_EQ(d.DestinationCode(), DestinationTextHash("Viewer")) << "no update while the bracket is open";
  d.EndUpdate();
  EXPECT_EQ(d.DestinationCode(), DestinationTextHash(d.AsString()));

  TZentrailDestination copy;
  copy.Assign(d);
  EXPECT_EQ(copy.AsString(), d.AsString());
  EXPECT_EQ(copy.DestinationCode(), d.DestinationCode());
  copy.Clear();
  EXPECT_EQ(copy.AsString(), "");
  EXPECT_EQ(copy.TCP().Port(), 3434);
}
