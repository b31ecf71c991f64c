// `cmake --install` into a temporary prefix, used from there as a user would: the programs run with
// the build tree out of their reach, and the desktop files, manual pages and pkg-config file are
// put to the tools that read them on a desktop.
#include <gtest/gtest.h>

#include <QMimeDatabase>
#include <cstdint>
#include <regex>

#include "InstallTestSupport.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

const std::string kBuild = ZENTRAIL_BINARY_DIR;
const std::string kVersion = ZENTRAIL_VERSION_TEXT;
const char* const kPrograms[] = {"zentrail-viewer", "zentrail-dispatcher", "zentrail-send", "ztlog", "zentrail-demo"};

fs::path Install(const std::string& hint) {
  const fs::path prefix = MakeTempDir(hint) / "prefix";
  TRun run = Shell("cmake --install " + Q(kBuild) + " --prefix " + Q(prefix));
  EXPECT_EQ(run.Status, 0) << run.Output;
  return prefix;
}

// A log record as the format lays it down, built here byte by byte: the tag $7F000004 and the
// length, both little-endian, then the transport packet in its text form.
std::string Field(const std::string& value) { return std::to_string(value.size()) + ":" + value; }
std::string HandMadeRecord(const std::string& text, const std::string& app) {
  std::string packet = "ZTP1";
  for (const std::string& f : {std::string("0"), std::string("1"), std::string(), text, std::string(),
                               std::string("36000000"), std::string("730120"), std::string("4242"),
                               std::string("main"), app, std::string("desk"), std::string(), std::string(),
                               std::string("16777215"), std::string("0")})
    packet += Field(f);
  std::string record;
  for (uint32_t v : {0x7F000004u, static_cast<uint32_t>(packet.size())})
    for (int i = 0; i < 4; ++i) record += static_cast<char>((v >> (8 * i)) & 0xFF);
  return record + packet;
}

// Ends a process that is no child of this one (a dispatcher the client started) and waits until it
// has ended: dead, or a zombie that whoever is its parent reaps. Its socket goes before its queues
// are empty, so the socket alone does not say that it is done.
bool EndForeign(pid_t pid) {
  ::kill(pid, SIGTERM);
  return WaitUntil(
      [&] {
        std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
        std::string stat;
        if (!std::getline(in, stat)) return true;
        const auto close = stat.rfind(')');
        return close != std::string::npos && close + 2 < stat.size() && (stat[close + 2] == 'Z' || stat[close + 2] == 'X');
      },
      10000);
}

}  // namespace

TEST(InstalledTree, RunsFromAnyPrefixWithoutTheBuildTree) {
  const fs::path stage = Install("stage");
  const fs::path prefix = stage.parent_path().parent_path() / "moved";

  // The registry file names the installed dispatcher and install folder.
  const std::string registry = ReadFile(stage / "etc/zentrail/registry.ini");
  EXPECT_TRUE(Contains(registry, "[Software\\Orvan\\Zentrail\\5.0]\n")) << registry;
  EXPECT_TRUE(Contains(registry, "\nInstallPath=" + (stage / "share/zentrail/").string() + "\n")) << registry;
  EXPECT_TRUE(Contains(registry, "\nDispatcher=" + (stage / "bin/zentrail-dispatcher").string() + "\n")) << registry;

  // Installed again over a file an administrator has added to, it keeps the other sections.
  const std::string aliases = "[Software\\Orvan\\Zentrail\\5.0\\Aliases]\nShared=File[Path=/srv/shared.ztl]\n";
  const std::string policies = "[Software\\Policies\\Orvan\\Zentrail\\5.0]\nDispatcher=/opt/other\n";
  WriteFile(stage / "etc/zentrail/registry.ini",
            aliases + "[Software\\Orvan\\Zentrail\\5.0]\nInstallPath=/old/\nDispatcher=/old/zd\n" + policies);
  TRun again = Shell("cmake --install " + Q(kBuild) + " --prefix " + Q(stage));
  ASSERT_EQ(again.Status, 0) << again.Output;
  EXPECT_EQ(ReadFile(stage / "etc/zentrail/registry.ini"), registry + aliases + policies);

  // Moved elsewhere, the tree must still work: everything it needs is found relative to itself.
  fs::rename(stage, prefix);
  const std::vector<fs::path> elves = ElfFiles(prefix);
  EXPECT_GE(elves.size(), 9u);  // four programs, three libraries, two plug-ins
  for (const fs::path& elf : elves) {
    TRun ldd = Shell("ldd " + Q(elf));
    EXPECT_EQ(ldd.Status, 0) << elf;
    EXPECT_FALSE(Contains(ldd.Output, "not found")) << elf << "\n" << ldd.Output;
    EXPECT_FALSE(Contains(ldd.Output, kBuild)) << elf << " reaches into the build tree:\n" << ldd.Output;
    TRun dynamic = Shell("readelf -d " + Q(elf));
    std::smatch m;
    if (std::regex_search(dynamic.Output, m, std::regex(R"(R(UN)?PATH\)\s+Library r?u?n?path: \[([^\]]*)\])"))) {
      EXPECT_EQ(m[2].str().rfind("$ORIGIN", 0), 0u) << elf << " has a fixed run path: " << m[2];
    }
  }

  // Every program answers --version and --help without a display or a running anything.
  for (const char* program : kPrograms) {
    SCOPED_TRACE(program);
    const std::string exe = (prefix / "bin" / program).string();
    TRun version = Shell("env -i " + Q(exe) + " --version");
    EXPECT_EQ(version.Status, 0);
    EXPECT_EQ(version.Output, std::string(program) + " (Zentrail) " + kVersion + "\n");
    TRun help = Shell("env -i " + Q(exe) + " --help");
    EXPECT_EQ(help.Status, 0);
    EXPECT_TRUE(Contains(help.Output, std::string("sage: ") + program)) << help.Output;
  }

  // Help pages: those of the project where it has them, else a folder standing in for them.
  const fs::path help = prefix / "share/zentrail/Help";
  if (fs::exists(fs::path(ZENTRAIL_SOURCE_DIR) / "help"))
    EXPECT_FALSE(fs::is_empty(help)) << "the help pages were not installed";
  else
    fs::create_directories(help);

  // The viewer starts with a log on its command line; a message goes through the installed
  // dispatcher, which the installed zentrail-send starts, to the viewer and a log file that the
  // installed ztlog reads back.
  const fs::path work = MakeTempDir("e2e");
  const fs::path runtime = work / "runtime";
  fs::create_directory(runtime);
  fs::permissions(runtime, fs::perms::owner_all, fs::perm_options::replace);
  const fs::path handMade = work / "hand made.ztl";
  WriteFile(handMade, HandMadeRecord("first from the command line", "handmade") +
                          HandMadeRecord("second from the command line", "handmade"));
  const std::vector<std::string> env = CleanEnvironment(
      {"ZENTRAIL_RUNTIME_DIR=" + runtime.string(), "ZENTRAIL_REGISTRY=" + (work / "no-registry.ini").string(),
       "QT_QPA_PLATFORM=offscreen", "QT_LOGGING_RULES=zentrail.viewer.info=true"});
  TChildProcess viewer;
  const fs::path viewerOutput = work / "viewer.txt";
  ASSERT_TRUE(StartCapturing(viewer, (prefix / "bin/zentrail-viewer").string(), {handMade.string()}, env,
                             viewerOutput));
  ASSERT_TRUE(WaitUntil([&] { return SocketAnswers((runtime / "viewer").string()); }, 20000))
      << ReadFile(viewerOutput);

  const fs::path live = work / "live.ztl";
  TChildProcess sender;
  const fs::path senderOutput = work / "send.txt";
  ASSERT_TRUE(StartCapturing(sender, (prefix / "bin/zentrail-send").string(),
                             {"--dest", "File[Path=" + live.string() + "],Viewer", "--app", "installed",
                              "live through the installed dispatcher"},
                             env, senderOutput));
  EXPECT_EQ(sender.Wait(20000), 0) << ReadFile(senderOutput);
  const std::string dispatcherSocket = (runtime / "dispatcher").string();
  const pid_t dispatcher = SocketServerPid(dispatcherSocket);
  ASSERT_GT(dispatcher, 0) << "no dispatcher was started";
  std::error_code ec;
  EXPECT_EQ(fs::read_symlink("/proc/" + std::to_string(dispatcher) + "/exe", ec), prefix / "bin/zentrail-dispatcher");
  // Ending the dispatcher lets its queue into the viewer first.
  EXPECT_TRUE(EndForeign(dispatcher));
  EXPECT_FALSE(fs::exists(dispatcherSocket));
  EXPECT_EQ(viewer.Signal(SIGTERM, 20000), 0);

  const std::string said = ReadFile(viewerOutput);
  const std::string plugIns = (prefix / "lib/zentrail/PlugIns/").string();
  EXPECT_TRUE(Contains(said, "plug-in folder " + plugIns + "\n")) << said;
  EXPECT_TRUE(Contains(said, "plug-in module ZTHexDump.so loaded\n")) << said;
  EXPECT_TRUE(Contains(said, "plug-in module ZTPrefixView.so loaded\n")) << said;
  EXPECT_TRUE(Contains(said, "plug-in inspectors: Hex Dump\n")) << said;
  EXPECT_TRUE(Contains(said, "help pages: " + help.string() + "/\n")) << said;
  std::smatch closed;
  ASSERT_TRUE(std::regex_search(said, closed, std::regex(R"(closed with (\d+) messages; the last log read gave (\d+) records)")))
      << said;
  EXPECT_EQ(closed[2].str(), "2") << said;
  // The two of the log, the live one, and whatever separator the viewer put before a new sender.
  EXPECT_GE(std::stoi(closed[1].str()), 3);
  EXPECT_LE(std::stoi(closed[1].str()), 4);

  TRun dump = Shell(Q(prefix / "bin/ztlog") + " dump " + Q(live) + " " + Q(handMade));
  EXPECT_EQ(dump.Status, 0) << dump.Output;
  EXPECT_TRUE(std::regex_search(dump.Output, std::regex("\\binstalled\\t[^\\n]*live through the installed dispatcher\\n")))
      << dump.Output;
  EXPECT_TRUE(Contains(dump.Output, "\thandmade\t\tfirst from the command line\n")) << dump.Output;
  EXPECT_TRUE(Contains(dump.Output, "\thandmade\t\tsecond from the command line\n")) << dump.Output;
}

TEST(InstalledTree, DesktopFilesManualPagesAndPkgConfigPassTheToolsThatReadThem) {
  const fs::path prefix = Install("desktop");
  const fs::path share = prefix / "share";

  TRun desktop = Shell("desktop-file-validate " + Q(share / "applications/com.orvan.Zentrail.desktop"));
  EXPECT_EQ(desktop.Status, 0) << desktop.Output;
  EXPECT_EQ(desktop.Output, "");
  TRun metainfo = Shell("appstreamcli validate --no-net " + Q(share / "metainfo/com.orvan.Zentrail.metainfo.xml"));
  EXPECT_EQ(metainfo.Status, 0) << metainfo.Output;
  // The tree form checks the metainfo together with the desktop entry and icons it names.
  TRun appstream = Shell("appstreamcli validate-tree --no-net " + Q(prefix));
  EXPECT_EQ(appstream.Status, 0) << appstream.Output;
  EXPECT_TRUE(Contains(appstream.Output, "com.orvan.Zentrail.metainfo.xml")) << appstream.Output;
  for (const char* size : {"16x16", "32x32", "48x48", "64x64", "128x128", "256x256"}) {
    TRun file = Shell("file -b " + Q(share / "icons/hicolor" / size / "apps/com.orvan.Zentrail.png"));
    const std::string edge = std::string(size).substr(0, std::string(size).find('x'));
    EXPECT_TRUE(Contains(file.Output, "PNG image data, " + edge + " x " + edge)) << size << ": " << file.Output;
  }

  // The file types, compiled by shared-mime-info and looked up the way Qt programs do.
  const fs::path mime = MakeTempDir("mime") / "share";
  fs::create_directories(mime / "mime/packages");
  fs::copy(share / "mime/packages", mime / "mime/packages");
  fs::copy("/usr/share/mime/packages/freedesktop.org.xml", mime / "mime/packages/freedesktop.org.xml");
  TRun update = Shell("update-mime-database " + Q(mime / "mime"));
  ASSERT_EQ(update.Status, 0) << update.Output;
  fs::create_directories(mime / "applications");
  fs::copy(share / "applications/com.orvan.Zentrail.desktop", mime / "applications");
  TRun associate = Shell("update-desktop-database " + Q(mime / "applications"));
  EXPECT_EQ(associate.Status, 0) << associate.Output;
  EXPECT_TRUE(Contains(ReadFile(mime / "applications/mimeinfo.cache"),
                       "application/x-zentrail-log=com.orvan.Zentrail.desktop;"));
  const char* dataDirs = std::getenv("XDG_DATA_DIRS");
  const std::string savedDataDirs = dataDirs ? dataDirs : "";
  ::setenv("XDG_DATA_DIRS", mime.c_str(), 1);
  const fs::path samples = MakeTempDir("samples");
  WriteFile(samples / "run.ztl", "");
  WriteFile(samples / "views.ztp", "[Views]\nCount=0\n");
  WriteFile(samples / "renamed", HandMadeRecord("a log without its extension", "app"));
  WriteFile(samples / "squeezed", std::string("\x05\x00\x00\x7f\x10\x00\x00\x00", 8) + "compressed bytes");
  QMimeDatabase types;
  EXPECT_EQ(types.mimeTypeForFile(QString::fromStdString((samples / "run.ztl").string())).name(),
            QStringLiteral("application/x-zentrail-log"));
  const QMimeType project = types.mimeTypeForFile(QString::fromStdString((samples / "views.ztp").string()));
  EXPECT_EQ(project.name(), QStringLiteral("application/x-zentrail-project"));
  EXPECT_TRUE(project.inherits(QStringLiteral("text/plain")));
  for (const char* name : {"renamed", "squeezed"})
    EXPECT_EQ(types.mimeTypeForFile(QString::fromStdString((samples / name).string())).name(),
              QStringLiteral("application/x-zentrail-log"))
        << name;
  if (savedDataDirs.empty())
    ::unsetenv("XDG_DATA_DIRS");
  else
    ::setenv("XDG_DATA_DIRS", savedDataDirs.c_str(), 1);

  // The manual pages render without a warning from the formatter.
  for (const char* program : kPrograms) {
    SCOPED_TRACE(program);
    TRun page = Shell("MANPATH=" + Q(share / "man") + " MANWIDTH=80 man --warnings -P cat " + program + " 2>&1");
    EXPECT_EQ(page.Status, 0) << page.Output;
    EXPECT_TRUE(Contains(page.Output, "NAME\n       " + std::string(program) + " - ")) << page.Output;
    EXPECT_TRUE(Contains(page.Output, "SYNOPSIS")) << page.Output;
    EXPECT_FALSE(Contains(page.Output, "warning:")) << page.Output;
  }

  // The systemd user units point at the installed dispatcher and pass systemd's own check.
  const fs::path units = prefix / "lib/systemd/user";
  EXPECT_TRUE(Contains(ReadFile(units / "zentrail-dispatcher.service"),
                       "\nExecStart=" + (prefix / "bin/zentrail-dispatcher").string() + "\n"));
  EXPECT_TRUE(Contains(ReadFile(units / "zentrail-dispatcher.socket"), "\nListenStream=%t/zentrail/dispatcher\n"));
  if (fs::exists("/usr/bin/systemd-analyze")) {
    const fs::path runtime = MakeTempDir("units");
    TRun verify = Shell("MANPATH=" + Q(share / "man") + " XDG_RUNTIME_DIR=" + Q(runtime) + " systemd-analyze --user verify " +
                      Q(units / "zentrail-dispatcher.socket") + " " + Q(units / "zentrail-dispatcher.service"));
    EXPECT_EQ(verify.Status, 0) << verify.Output;
  }

  // pkg-config alone is enough to build a client: the compiler's default standard is older than
  // the headers need, so the flag has to come from the .pc file.
  const std::string pc = "PKG_CONFIG_PATH=" + Q(prefix / "lib/pkgconfig") + " pkg-config";
  TRun cflags = Shell(pc + " --cflags zentrail");
  EXPECT_EQ(cflags.Status, 0) << cflags.Output;
  EXPECT_TRUE(Contains(cflags.Output, "-std=c++20")) << cflags.Output;
  const fs::path user = MakeTempDir("pcuser");
  WriteFile(user / "main.cpp",
            "#include <zentrail/ZentrailLogging.h>\n"
            "int main() { zentrail::ZentrailLog.SetCategory(\"pc\"); return zentrail::ZentrailLog.Enabled() ? 0 : 1; }\n");
  TRun build = Shell("c++ " + Q(user / "main.cpp") + " -o " + Q(user / "main") + " $(" + pc + " --cflags --libs zentrail)");
  EXPECT_EQ(build.Status, 0) << build.Output;
  TRun ran = Shell("LD_LIBRARY_PATH=" + Q(prefix / "lib") + " " + Q(user / "main"));
  EXPECT_EQ(ran.Status, 0) << ran.Output;
}
