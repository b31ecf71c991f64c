#pragma once
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zentrail::test {

// Sets or clears environment variables for one test and puts the old values back at scope end,
// so that the isolation the test main set up holds for the next test.
class EnvGuard {
 public:
  EnvGuard() = default;
  EnvGuard(const EnvGuard&) = delete;
  EnvGuard& operator=(const EnvGuard&) = delete;
  ~EnvGuard() { Restore(); }
  void Restore() {
    for (auto it = FSaved.rbegin(); it != FSaved.rend(); ++it) {
      if (it->second)
        ::setenv(it->first.c_str(), it->second->c_str(), 1);
      else
        ::unsetenv(it->first.c_str());
    }
    FSaved.clear();
  }
  void Set(const std::string& name, const std::string& value) {
    Save(name);
    ::setenv(name.c_str(), value.c_str(), 1);
  }
  void Unset(const std::string& name) {
    Save(name);
    ::unsetenv(name.c_str());
  }

 private:
  void Save(const std::string& name) {
    const char* v = std::getenv(name.c_str());
    FSaved.emplace_back(name, v ? std::optional<std::string>(v) : std::nullopt);
  }
  std::vector<std::pair<std::string, std::optional<std::string>>> FSaved;
};

}  // namespace zentrail::test
