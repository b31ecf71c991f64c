#include "TestEnvironment.h"

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace zentrail::test {
namespace fs = std::filesystem;

namespace {
struct Root {
  fs::path path;
  Root() {
    std::string templ = (fs::temp_directory_path() / "zentrail-test-XXXXXX").string();
    if (!mkdtemp(templ.data())) throw std::runtime_error("cannot make a temporary folder");
    path = templ;
  }
  ~Root() {
    std::error_code ec;
    fs::remove_all(path, ec);
  }
};
}  // namespace

const fs::path& TempRoot() {
  static Root root;
  return root.path;
}

void IsolateEnvironment() {
  const fs::path& root = TempRoot();
  auto set = [&](const char* name, const fs::path& p, bool make) {
    if (make) fs::create_directories(p);
    setenv(name, p.c_str(), 1);
  };
  set("HOME", root / "home", true);
  set("XDG_DATA_HOME", root / "home/.local/share", true);
  set("XDG_CONFIG_HOME", root / "home/.config", true);
  set("XDG_CACHE_HOME", root / "home/.cache", true);
  set("XDG_STATE_HOME", root / "home/.local/state", true);
  // The runtime folder must be private (0700); it is made by the code under test when missing.
  set("XDG_RUNTIME_DIR", root / "xdg-runtime", false);
  fs::create_directories(root / "xdg-runtime");
  fs::permissions(root / "xdg-runtime", fs::perms::owner_all, fs::perm_options::replace);
  set("ZENTRAIL_RUNTIME_DIR", root / "runtime", false);
  set("ZENTRAIL_REGISTRY", root / "registry.ini", false);
  setenv("XDG_DOCUMENTS_DIR", (root / "home/Documents").c_str(), 1);
}

fs::path MakeTempDir(const std::string& hint) {
  static std::atomic<int> counter{0};
  fs::path p = TempRoot() / (hint + "-" + std::to_string(++counter));
  fs::create_directories(p);
  return p;
}

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

void WriteFile(const fs::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace zentrail::test
