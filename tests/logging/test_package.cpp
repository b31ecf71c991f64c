// Builds small programs against the installed client, as a user of the library would, and runs
// them against the dispatcher.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>

#include "TestEnvironment.h"
#include "ZentrailTestServers.h"

using namespace zentrail;
using namespace zentrail::test;
namespace fs = std::filesystem;

namespace {

int Shell(const std::string& command, const fs::path& log) {
  std::string full = "timeout 240 " + command + " >>'" + log.string() + "' 2>&1";
  int rc = std::system(full.c_str());
  return WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
}

const char* kProgram = R"(
#include <zentrail/ZentrailLogging.h>
#include <cstdio>
#include <stdexcept>
int main(int argc, char** argv) {
  if (argc < 3) return 2;
  zentrail::TZentrailDestination destination(std::string("File[Path=") + argv[1] + "]");
  zentrail::ZentrailLog.SetDestination(&destination);
  zentrail::ZentrailLog.SetCategory(argv[2]);
  int ok = zentrail::ZentrailLog.Send("hello from an installed client");
  ok &= zentrail::ZentrailLog.SendWarningFmt("%d warnings", 3);
  ok &= zentrail::ZentrailLog.EnterMethod("main");
  ok &= zentrail::ZentrailLog.SendException(std::runtime_error("caught"));
  ok &= zentrail::ZentrailLog.ExitMethod("main");
  zentrail::ZentrailLog.SetDestination(nullptr);
  std::printf("sent %d\n", ok);
  return ok == 1 ? 0 : 1;
}
)";

}  // namespace

TEST(Package, InstalledClientBuildsWithCMakeAndPkgConfigAndRuns) {
#if defined(ZENTRAIL_SANITIZED) && ZENTRAIL_SANITIZED
  GTEST_SKIP() << "a sanitizer build installs libraries that need the sanitizer runtime at link time";
#endif
  fs::path work = MakeTempDir("package");
  fs::path prefix = work / "prefix";
  fs::path log = work / "build.log";
  ASSERT_EQ(Shell("cmake --install '" + std::string(ZENTRAIL_BINARY_DIR) + "' --prefix '" +
                    prefix.string() + "'",
                log),
            0)
      << ReadFile(log);
  ASSERT_TRUE(fs::exists(prefix / "include/zentrail/ZentrailLogging.h"));
  ASSERT_TRUE(fs::exists(prefix / "include/zentrail/ZentrailMessage.h"));
  // The public headers stand on their own: nothing of the build tree, nothing of Qt, except in the
  // Qt adaptor, which is a target of its own that plain programs never include.
  for (auto& entry : fs::directory_iterator(prefix / "include/zentrail")) {
    std::string text = ReadFile(entry.path());
    if (entry.path().filename() != "ZentrailQt.h") {
      EXPECT_EQ(text.find("#include <Q"), std::string::npos) << entry.path();
    }
    EXPECT_EQ(text.find("ZTChannel.h"), std::string::npos) << entry.path();
  }

  fs::path project = work / "project";
  fs::create_directories(project);
  WriteFile(project / "main.cpp", kProgram);
  WriteFile(project / "CMakeLists.txt",
            "cmake_minimum_required(VERSION 3.16)\nproject(user CXX)\n"
            "find_package(Zentrail REQUIRED)\n"
            "add_executable(user_shared main.cpp)\ntarget_link_libraries(user_shared PRIVATE Zentrail::client)\n"
            "add_executable(user_static main.cpp)\ntarget_link_libraries(user_static PRIVATE Zentrail::client_static)\n");
  ASSERT_EQ(Shell("cmake -S '" + project.string() + "' -B '" + (project / "build").string() +
                    "' -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH='" + prefix.string() + "'",
                log),
            0)
      << ReadFile(log);
  ASSERT_EQ(Shell("cmake --build '" + (project / "build").string() + "'", log), 0) << ReadFile(log);

  // The pkg-config way, with the prefix found from where the .pc file lies.
  fs::path pcdir;
  for (auto& e : fs::recursive_directory_iterator(prefix))
    if (e.path().filename() == "zentrail.pc") pcdir = e.path().parent_path();
  ASSERT_FALSE(pcdir.empty());
  fs::path pcProgram = project / "user_pc";
  ASSERT_EQ(Shell("sh -c \"c++ -std=c++20 '" + (project / "main.cpp").string() + "' -o '" + pcProgram.string() +
                    "' $(PKG_CONFIG_PATH='" + pcdir.string() + "' pkg-config --cflags --libs zentrail)\"",
                log),
            0)
      << ReadFile(log);

  TChildProcess dispatcher;
  std::string error;
  std::string socket = DispatcherSocketPath(error);
  ASSERT_TRUE(dispatcher.Start(BinaryPath("src/dispatcher/zentrail-dispatcher"), {}));
  ASSERT_TRUE(WaitUntil([&] { return SocketAnswers(socket); }));

  fs::path logFile = work / "logs/user.ztl";
  std::string libdir = pcdir.parent_path().string();
  struct {
    fs::path exe;
    std::string category;
  } programs[] = {{project / "build/user_shared", "shared"},
                  {project / "build/user_static", "static"},
                  {pcProgram, "pkgconfig"}};
  for (auto& p : programs) {
    ASSERT_EQ(Shell("env LD_LIBRARY_PATH='" + libdir + "' '" + p.exe.string() + "' '" + logFile.string() + "' " +
                      p.category,
                  log),
              0)
        << ReadFile(log);
  }
  EXPECT_EQ(dispatcher.Signal(SIGTERM), 0);
  std::string problem;
  auto messages = ReadLog(logFile.string(), &problem);
  EXPECT_EQ(problem, "");
  ASSERT_EQ(messages.size(), 15u);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(messages[i * 5].MsgText, "hello from an installed client");
    EXPECT_EQ(messages[i * 5].Category, programs[i].category);
    EXPECT_EQ(messages[i * 5 + 1].MsgType, ztmWarning);
    EXPECT_EQ(messages[i * 5 + 1].MsgText, "3 warnings");
    EXPECT_EQ(messages[i * 5 + 3].MsgType, ztmException);
    EXPECT_EQ(messages[i * 5 + 3].TypeName, "std::runtime_error");
  }
  EXPECT_EQ(messages[0].AppName, "user_shared");
  EXPECT_EQ(messages[10].AppName, "user_pc");
}

TEST(Package, ExamplesBuildAgainstTheInstalledPackageAndLog) {
#if defined(ZENTRAIL_SANITIZED) && ZENTRAIL_SANITIZED
  GTEST_SKIP() << "a sanitizer build installs libraries that need the sanitizer runtime at link time";
#endif
  const fs::path examples = fs::path(ZENTRAIL_TEST_DATA_DIR).parent_path().parent_path() / "examples";
  ASSERT_TRUE(fs::exists(examples / "plain/main.cpp")) << examples;
  fs::path work = MakeTempDir("examples");
  fs::path prefix = work / "prefix";
  fs::path log = work / "build.log";
  ASSERT_EQ(Shell("cmake --install '" + std::string(ZENTRAIL_BINARY_DIR) + "' --prefix '" +
                    prefix.string() + "'",
                log),
            0)
      << ReadFile(log);
  // The Qt example needs the Qt adaptor, which a build without Qt does not install.
  const bool withQt = fs::exists(prefix / "include/zentrail/ZentrailQt.h");
  std::vector<std::string> names = {"plain"};
  if (withQt) names.push_back("qt");
  for (const auto& name : names) {
    const fs::path build = work / ("build-" + name);
    ASSERT_EQ(Shell("cmake -S '" + (examples / name).string() + "' -B '" + build.string() +
                      "' -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH='" + prefix.string() + "'",
                  log),
              0)
        << ReadFile(log);
    ASSERT_EQ(Shell("cmake --build '" + build.string() + "'", log), 0) << ReadFile(log);
  }

  TChildProcess dispatcher;
  std::string error;
  std::string socket = DispatcherSocketPath(error);
  ASSERT_TRUE(dispatcher.Start(BinaryPath("src/dispatcher/zentrail-dispatcher"), {}));
  ASSERT_TRUE(WaitUntil([&] { return SocketAnswers(socket); }));
  fs::path libdir;
  for (auto& e : fs::recursive_directory_iterator(prefix))
    if (e.path().filename() == "libzentrail.so") libdir = e.path().parent_path();
  const fs::path plainLog = work / "logs/plain.ztl";
  const fs::path qtLog = work / "logs/qt.ztl";
  ASSERT_EQ(Shell("env LD_LIBRARY_PATH='" + libdir.string() + "' '" + (work / "build-plain/example-plain").string() +
                    "' '" + plainLog.string() + "'",
                log),
            0)
      << ReadFile(log);
  if (withQt) {
    ASSERT_EQ(Shell("env QT_QPA_PLATFORM=offscreen LD_LIBRARY_PATH='" + libdir.string() + "' '" +
                      (work / "build-qt/example-qt").string() + "' '" + qtLog.string() + "'",
                  log),
              0)
        << ReadFile(log);
  }
  EXPECT_EQ(dispatcher.Signal(SIGTERM), 0);

  std::string problem;
  auto plain = ReadLog(plainLog.string(), &problem);
  EXPECT_EQ(problem, "");
  std::map<std::string, TZentrailMessage> byText;
  for (const auto& m : plain) byText.emplace(m.MsgText, m);
  ASSERT_TRUE(byText.count("Invoice"));
  EXPECT_EQ(byText["Invoice"].MsgContent, ztmObject);
  EXPECT_EQ(byText["Invoice"].Details, "Number=INV-1001\r\nPaid=False\r\nTotal=249.9\r\n");
  EXPECT_EQ(byText["Readings"].Details, "20.50\r\n21.25\r\n19.75\r\n");
  EXPECT_EQ(byText["Stock"].MsgContent, ztmCustomTable);
  EXPECT_EQ(byText["Stock"].Details, "Item\tOn hand\r\nTea\t12\r\nCups\t40\r\n");
  EXPECT_TRUE(byText.count("sum = 10"));
  EXPECT_EQ(byText["Total"].MsgType, ztmEnterMethod);
  EXPECT_EQ(std::count_if(plain.begin(), plain.end(), [](auto& m) { return m.MsgType == ztmTiming; }), 1);

  if (withQt) {
    auto qt = ReadLog(qtLog.string(), &problem);
    EXPECT_EQ(problem, "");
    std::map<std::string, TZentrailMessage> qtByText;
    for (const auto& m : qt) qtByText.emplace(m.MsgText, m);
    ASSERT_TRUE(qtByText.count("User name box"));
    EXPECT_EQ(qtByText["User name box"].TypeName, "QLineEdit");
    EXPECT_NE(qtByText["User name box"].Details.find("text=chen.li\r\n"), std::string::npos);
    EXPECT_EQ(qtByText["Settings form"].TypeName, "PngImage");
    EXPECT_EQ(qtByText["Settings form"].Details.rfind("89504E470D0A1A0A", 0), 0u) << "a PNG signature";
    EXPECT_EQ(qtByText["Settings widgets"].Details,
              "QWidget: frmSettings\r\n\tQLabel: <Unnamed>\r\n\tQLineEdit: edtUser\r\n\tQCheckBox: chkRemember\r\n");
    EXPECT_EQ(qtByText["Accent: $00D77800 = RGB( 0, 120, 215 )"].MsgContent, ztmColor);
    EXPECT_EQ(qtByText["Recent users"].Details, "chen.li\r\neva.novak\r\n");
  }
}
