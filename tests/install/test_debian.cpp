// The Debian packages that CPack makes from the build: what each holds, what it depends on, and
// what lintian says of them. Nothing is installed on this machine: dpkg-deb reads the packages.
#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "InstallTestSupport.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

const std::string kVersion = ZENTRAIL_VERSION_TEXT;

// The files and links a package holds (not its folders), without the leading "./", and where the
// links point.
std::set<std::string> Contents(const fs::path& deb, std::map<std::string, std::string>* links = nullptr) {
  TRun list = Shell("dpkg-deb -c " + Q(deb));
  EXPECT_EQ(list.Status, 0) << list.Output;
  std::set<std::string> paths;
  std::istringstream lines(list.Output);
  std::string line;
  const std::regex entry(R"(^([-l])\S+\s+\S+\s+\d+\s+\S+\s+\S+\s+\./(\S+?)(?: -> (\S+))?$)");
  while (std::getline(lines, line)) {
    std::smatch m;
    if (!std::regex_match(line, m, entry)) continue;
    paths.insert(m[2]);
    if (links && m[3].matched) (*links)[m[2]] = m[3];
  }
  return paths;
}

std::string Field(const fs::path& deb, const std::string& name) {
  TRun f = Shell("dpkg-deb -f " + Q(deb) + " " + name);
  EXPECT_EQ(f.Status, 0) << f.Output;
  return f.Output;
}

}  // namespace

TEST(DebianPackage, RuntimeAndDevPackagesHoldTheirPartsAndLintianFindsNoError) {
  const fs::path out = MakeTempDir("deb");
  TRun cpack = Shell("cpack -G DEB -B " + Q(out) + " --config " + Q(fs::path(ZENTRAIL_BINARY_DIR) / "CPackConfig.cmake"));
  ASSERT_EQ(cpack.Status, 0) << cpack.Output;
  const fs::path runtime = out / ("zentrail_" + kVersion + "_amd64.deb");
  const fs::path dev = out / ("zentrail-dev_" + kVersion + "_amd64.deb");
  ASSERT_TRUE(fs::exists(runtime)) << cpack.Output;
  ASSERT_TRUE(fs::exists(dev)) << cpack.Output;

  // What a user runs, with the libraries it needs worked out from the programs themselves.
  std::map<std::string, std::string> links;
  const std::set<std::string> run = Contents(runtime, &links);
  for (const char* path :
       {"usr/bin/zentrail-dispatcher", "usr/bin/zentrail-send", "usr/bin/ztlog", "usr/lib/zentrail/zentrail-viewer",
        "usr/lib/zentrail/PlugIns/ZTHexDump.so", "usr/lib/zentrail/PlugIns/ZTPrefixView.so",
        "usr/lib/libZentrailPlugIns250.so", "usr/share/applications/com.orvan.Zentrail.desktop",
        "usr/share/metainfo/com.orvan.Zentrail.metainfo.xml", "usr/share/mime/packages/com.orvan.Zentrail.xml",
        "usr/share/icons/hicolor/scalable/apps/com.orvan.Zentrail.svg",
        "usr/share/icons/hicolor/48x48/apps/com.orvan.Zentrail.png", "usr/share/man/man1/zentrail-viewer.1.gz",
        "usr/share/man/man1/ztlog.1.gz", "usr/lib/systemd/user/zentrail-dispatcher.socket",
        "usr/lib/systemd/user/zentrail-dispatcher.service", "etc/zentrail/registry.ini",
        "usr/share/doc/zentrail/copyright", "usr/share/doc/zentrail/changelog.gz"})
    EXPECT_TRUE(run.count(path)) << path;
  EXPECT_EQ(links["usr/bin/zentrail-viewer"], "../lib/zentrail/zentrail-viewer");
  const std::string depends = Field(runtime, "Depends");
  for (const char* library : {"libc6", "libqt6widgets6", "libqscintilla2-qt6", "libcurl4", "zlib1g", "libpcre2-8"})
    EXPECT_TRUE(Contains(depends, library)) << library << " missing from: " << depends;
  TRun conffiles = Shell("dpkg-deb -I " + Q(runtime) + " conffiles");
  EXPECT_EQ(conffiles.Output, "/etc/zentrail/registry.ini\n");

  // What a developer builds against, and nothing of it in the other package.
  const std::set<std::string> devel = Contents(dev, &links);
  for (const char* path : {"usr/include/zentrail/ZentrailLogging.h", "usr/include/zentrail/plugins/ZentrailPlugIns.h",
                           "usr/lib/cmake/Zentrail/ZentrailConfig.cmake", "usr/lib/pkgconfig/zentrail.pc",
                           "usr/lib/libzentrail.a", "usr/lib/libzentrail.so", "usr/share/doc/zentrail-dev/copyright"})
    EXPECT_TRUE(devel.count(path)) << path;
  EXPECT_TRUE(Contains(Field(dev, "Depends"), "zentrail (= " + kVersion + ")"));
  for (const std::string& path : devel) EXPECT_FALSE(run.count(path)) << path << " is in both packages";
  for (const std::string& path : run) {
    EXPECT_NE(path.rfind("usr/include", 0), 0u) << path;
    EXPECT_FALSE(path.size() > 3 && path.substr(path.size() - 3) == ".so" && path.rfind("usr/lib/lib", 0) == 0 &&
                 path != "usr/lib/libZentrailPlugIns250.so")
        << path << ": an unversioned library link belongs to the dev package";
  }

  // Unpacked: the packaged files carry no run path, and the files that name paths name /usr.
  const fs::path tree = out / "tree";
  ASSERT_EQ(Shell("dpkg-deb -x " + Q(runtime) + " " + Q(tree)).Status, 0);
  for (const fs::path& elf : ElfFiles(tree)) {
    TRun dynamic = Shell("readelf -d " + Q(elf));
    EXPECT_FALSE(Contains(dynamic.Output, "PATH)")) << elf << "\n" << dynamic.Output;
  }
  EXPECT_EQ(ReadFile(tree / "etc/zentrail/registry.ini"),
            "[Software\\Orvan\\Zentrail\\5.0]\nInstallPath=/usr/share/zentrail/\nDispatcher=/usr/bin/zentrail-dispatcher\n");
  EXPECT_TRUE(Contains(ReadFile(tree / "usr/lib/systemd/user/zentrail-dispatcher.service"),
                       "\nExecStart=/usr/bin/zentrail-dispatcher\n"));

  // Debian's own judge, once, on both packages: warnings are allowed, errors are not.
  TRun lintian = Shell("lintian --fail-on error " + Q(runtime) + " " + Q(dev), 280);
  EXPECT_EQ(lintian.Status, 0) << lintian.Output;
  EXPECT_FALSE(std::regex_search(lintian.Output, std::regex("(^|\\n)E: "))) << lintian.Output;
}
