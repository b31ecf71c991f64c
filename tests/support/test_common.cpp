#include <gtest/gtest.h>

#include <pwd.h>
#include <syslog.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

#include "EnvGuard.h"
#include "TestEnvironment.h"
#include "ZTCommonUtils.h"
#include "ZTRegistry.h"

namespace fs = std::filesystem;
using namespace zentrail;
using zentrail::test::EnvGuard;

namespace {

// A registry file for one test, removed again at scope end.
struct RegistryFile {
  explicit RegistryFile(const std::string& text) {
    path = std::getenv("ZENTRAIL_REGISTRY");
    zentrail::test::WriteFile(path, text);
  }
  ~RegistryFile() { fs::remove(path); }
  std::string path;
};

}  // namespace

TEST(CommonUtils, XmlEscapeReplacesTheFiveCharactersOnly) {
  EXPECT_EQ(XmlEscape(""), "");
  EXPECT_EQ(XmlEscape("plain text 123"), "plain text 123");
  EXPECT_EQ(XmlEscape("a<b>&\"'c"), "a&lt;b&gt;&amp;&quot;&apos;c");
  // "&" goes first, so an entity already in the text is escaped once more, never twice.
  EXPECT_EQ(XmlEscape("&lt;"), "&amp;lt;");
  EXPECT_EQ(XmlEscape("&&"), "&amp;&amp;");
  EXPECT_EQ(XmlEscape("<<>>"), "&lt;&lt;&gt;&gt;");
  EXPECT_EQ(XmlEscape("''\"\""), "&apos;&apos;&quot;&quot;");
  EXPECT_EQ(XmlEscape("Zoë\t\r\n日本"), "Zoë\t\r\n日本");
  EXPECT_EQ(XmlEscape(std::string("a\0<", 3)), std::string("a\0&lt;", 6));
}

TEST(CommonUtils, NormalizeLineEndsCollapsesRunsAndDropsTheTail) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", ""},
      {"abc", "abc"},
      {"a\nb", "a\r\nb"},
      {"a\rb", "a\r\nb"},
      {"a\r\nb", "a\r\nb"},
      {"a\n\rb", "a\r\nb"},
      {"a\n\nb", "a\r\nb"},  // an empty line is a run like any other
      {"a\r\n\r\n\r\nb", "a\r\nb"},
      {"a\r\r\n\n\rb\nc", "a\r\nb\r\nc"},
      {"\nabc", "\r\nabc"},
      {"\r\n\r\nabc", "\r\nabc"},
      {"abc\n", "abc"},
      {"abc\r\n\r\n", "abc"},
      {"abc\r", "abc"},
      {"\n", ""},
      {"\r\n\n\r", ""},
      {" \n ", " \r\n "},
      {"x\ty\n\tz", "x\ty\r\n\tz"},
  };
  for (const auto& [in, out] : cases) {
    std::string shown;
    for (char c : in) shown += c == '\r' ? "\\r" : c == '\n' ? "\\n" : std::string(1, c);
    EXPECT_EQ(NormalizeLineEnds(in), out) << "input: " << shown;
  }
}

TEST(CommonUtils, RegistryFileStandsForTheMachineKeys) {
  std::string value = "stale";
  // No file at all: the key can't be opened.
  EXPECT_FALSE(ReadRegistryString(ztRegistryKeyPath, "InstallPath", value));
  EXPECT_EQ(value, "");
  EXPECT_FALSE(RegistryKeyExists(ztRegistryKeyPath));
  EXPECT_EQ(GetInstallPath(), "");
  EXPECT_EQ(HelpTopicFile("MainWindow"), "");
  EXPECT_EQ(HelpFolder(), "");

  fs::path install = zentrail::test::MakeTempDir("install");
  RegistryFile reg("[Software\\Orvan\\Zentrail\\5.0]\r\n"
                   "InstallPath=" + install.string() + "\\\r\n"
                   "Dispatcher=/opt/zentrail/bin/zentrail-dispatcher\r\n"
                   "[Software\\Policies\\Orvan\\Zentrail\\5.0]\r\n"
                   "Empty=\r\n");
  EXPECT_EQ(RegistryFilePath(), reg.path);
  EXPECT_TRUE(RegistryKeyExists("\\Software\\Orvan\\Zentrail\\5.0"));
  EXPECT_TRUE(RegistryKeyExists("software\\orvan\\zentrail\\5.0"));
  EXPECT_TRUE(RegistryKeyExists(ztRegistryPolicyKeyPath));
  EXPECT_FALSE(RegistryKeyExists("Software\\Orvan\\Zentrail\\4.0"));
  EXPECT_TRUE(ReadRegistryString("\\Software\\Orvan\\Zentrail\\5.0", "dispatcher", value));
  EXPECT_EQ(value, "/opt/zentrail/bin/zentrail-dispatcher");
  EXPECT_FALSE(ReadRegistryString(ztRegistryPolicyKeyPath, "Dispatcher", value));
  EXPECT_EQ(value, "");
  EXPECT_TRUE(ReadRegistryString(ztRegistryPolicyKeyPath, "Empty", value));
  EXPECT_EQ(value, "");

  // The Windows form of the stored path comes back with "/" and one trailing "/".
  EXPECT_EQ(GetInstallPath(), install.string() + "/");
  EXPECT_EQ(HelpFolder(), install.string() + "/Help/");
  EXPECT_EQ(HelpTopicFile("Main_Window"), install.string() + "/Help/main_window.htm");
  EXPECT_EQ(HelpTopicFile("FILTER"), install.string() + "/Help/filter.htm");
  EXPECT_STREQ(ztHelpFileMissingText, "Zentrail Help File (Zentrail5.chm) could not be found.");

  EnvGuard env;
  env.Set("ZENTRAIL_REGISTRY", (install / "nothing.ini").string());
  EXPECT_EQ(GetInstallPath(), "");
}

TEST(CommonUtils, DocumentsFolderFallsBackInTheXdgOrder) {
  EnvGuard env;
  fs::path root = zentrail::test::MakeTempDir("docs");
  fs::path home = root / "home";
  fs::create_directories(home);
  env.Set("HOME", home.string());
  env.Set("XDG_CONFIG_HOME", (root / "config").string());

  // 1. The environment variable wins, and trailing slashes are made one.
  env.Set("XDG_DOCUMENTS_DIR", (root / "EnvDocs//").string());
  EXPECT_EQ(GetSpecialFolder(ztFolderPersonal), (root / "EnvDocs").string() + "/");
  env.Set("XDG_DOCUMENTS_DIR", "$HOME/FromEnv");
  EXPECT_EQ(GetSpecialFolder(ztFolderPersonal), home.string() + "/FromEnv/");

  // 2. The user-dirs file, with $HOME expanded; its last line for the key counts.
  env.Unset("XDG_DOCUMENTS_DIR");
  fs::create_directories(root / "config");
  zentrail::test::WriteFile(root / "config/user-dirs.dirs",
                            "# written by xdg-user-dirs-update\n"
                            "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n"
                            "XDG_DOCUMENTS_DIR=\"$HOME/Old\"\n"
                            "XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n");
  EXPECT_EQ(GetSpecialFolder(ztFolderPersonal), home.string() + "/Dokumente/");
  zentrail::test::WriteFile(root / "config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"/abs/docs\"\r\n");
  EXPECT_EQ(GetSpecialFolder(ztFolderPersonal), "/abs/docs/");

  // 3. ~/Documents if it exists, 4. else the home folder.
  fs::remove(root / "config/user-dirs.dirs");
  EXPECT_EQ(GetSpecialFolder(ztFolderPersonal), home.string() + "/");
  fs::create_directory(home / "Documents");
  EXPECT_EQ(GetSpecialFolder(ztFolderPersonal), home.string() + "/Documents/");

  // The files folders are made below it.
  EXPECT_EQ(GetLogFilesFolder(), home.string() + "/Documents/My Zentrail Files/Logs/");
  EXPECT_EQ(GetProjectsFolder(), home.string() + "/Documents/My Zentrail Files/Projects/");
  EXPECT_TRUE(fs::is_directory(home / "Documents/My Zentrail Files/Logs"));
  EXPECT_TRUE(fs::is_directory(home / "Documents/My Zentrail Files/Projects"));
  EXPECT_EQ(GetUserFilesFolder("\\A\\B"), home.string() + "/Documents/A/B/");
  EXPECT_TRUE(fs::is_directory(home / "Documents/A/B"));

  // A documents folder that can't hold folders falls back to the install path.
  zentrail::test::WriteFile(root / "afile", "x");
  env.Set("XDG_DOCUMENTS_DIR", (root / "afile").string());
  // Without an install path the intended path is still the answer; using it reports the error.
  EXPECT_EQ(GetUserFilesFolder("My Zentrail Files\\Logs"),
            (root / "afile").string() + "/My Zentrail Files/Logs/");
  fs::path install = root / "inst";
  RegistryFile reg("[Software\\Orvan\\Zentrail\\5.0]\nInstallPath=" + install.string() + "\n");
  EXPECT_EQ(GetLogFilesFolder(), install.string() + "/My Zentrail Files/Logs/");
  EXPECT_TRUE(fs::is_directory(install / "My Zentrail Files/Logs"));

  EXPECT_EQ(GetSpecialFolder(12345), "");
}

TEST(CommonUtils, AppDataFolderLiesBelowTheXdgDataFolder) {
  EnvGuard env;
  fs::path root = zentrail::test::MakeTempDir("appdata");
  env.Set("HOME", (root / "home").string());
  env.Set("XDG_DATA_HOME", (root / "data").string());
  EXPECT_EQ(GetSpecialFolder(ztFolderLocalAppData), (root / "data").string() + "/");
  EXPECT_EQ(GetAppDataFolder(), (root / "data").string() + "/Orvan/Zentrail/5.0/");
  EXPECT_TRUE(fs::is_directory(root / "data/Orvan/Zentrail/5.0"));

  env.Unset("XDG_DATA_HOME");
  EXPECT_EQ(GetAppDataFolder(), (root / "home").string() + "/.local/share/Orvan/Zentrail/5.0/");
  env.Set("XDG_CONFIG_HOME", (root / "cfg").string());
  EXPECT_EQ(GetSpecialFolder(ztFolderAppData), (root / "cfg").string() + "/");

  // Nowhere to make the folder: beside the executable.
  zentrail::test::WriteFile(root / "blocked", "x");
  env.Set("XDG_DATA_HOME", (root / "blocked").string());
  std::string exeFolder = GetExecutableFolder();
  ASSERT_FALSE(exeFolder.empty());
  EXPECT_TRUE(fs::exists(exeFolder + "test_support"));
  EXPECT_EQ(GetAppDataFolder(), exeFolder);
}

TEST(CommonUtils, MachineAndUserNames) {
  char host[256] = {};
  ASSERT_EQ(::gethostname(host, sizeof host - 1), 0);
  std::string computer = GetComputerName();
  EXPECT_FALSE(computer.empty());
  EXPECT_LE(computer.size(), 32u);
  EXPECT_EQ(computer, std::string(host).substr(0, 32));

  std::string user = GetUserName();
  EXPECT_FALSE(user.empty());
  const passwd* pw = ::getpwuid(::geteuid());
  ASSERT_NE(pw, nullptr);
  EXPECT_EQ(user, pw->pw_name);
}

TEST(CommonUtils, EventLogNeedsASourceAndMapsTheKinds) {
  std::vector<std::tuple<std::string, int, std::string>> written;
  auto sink = [&](const std::string& ident, int priority, const std::string& text) {
    written.emplace_back(ident, priority, text);
  };
  TZTEventLog nameless("", sink);
  try {
    nameless.WriteEntry("x");
    ADD_FAILURE() << "no exception";
  } catch (const EZTEventLogException& e) {
    EXPECT_STREQ(e.what(), "Event log source name not specified");
  }
  EXPECT_TRUE(written.empty());

  TZTEventLog log("Zentrail Dispatcher", sink);
  log.WriteEntry("started", 0);
  log.WriteEntry("slow", 1, 3, 1001);
  log.WriteEntry("failed", 2);
  log.WriteEntry("odd kind", 9);
  log.SetSourceName("Other");
  log.WriteEntry("renamed", ztEventError);
  using Entry = std::tuple<std::string, int, std::string>;
  EXPECT_EQ(written, (std::vector<Entry>{Entry{"Zentrail Dispatcher", LOG_INFO, "started"},
                                         Entry{"Zentrail Dispatcher", LOG_WARNING, "slow"},
                                         Entry{"Zentrail Dispatcher", LOG_ERR, "failed"},
                                         Entry{"Zentrail Dispatcher", LOG_INFO, "odd kind"},
                                         Entry{"Other", LOG_ERR, "renamed"}}));
  log.SetSourceName("");
  EXPECT_THROW(log.WriteEntry("again"), EZTEventLogException);
}
