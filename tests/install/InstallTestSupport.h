#pragma once
// Running installed programs from a test: commands through the shell with their output in a file,
// and programs started with an environment that leads nowhere near the build tree.

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "../logging/ZentrailTestServers.h"
#include "TestEnvironment.h"

namespace zentrail::test {

namespace fs = std::filesystem;

// Quoted for sh.
inline std::string Q(const std::string& text) {
  std::string out = "'";
  for (char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return out + "'";
}
inline std::string Q(const fs::path& path) { return Q(path.string()); }

struct TRun {
  int Status = -1;
  std::string Output;  // standard output and error together
};

// Runs command with sh, bounded in time, both outputs into a file that is read back.
inline TRun Shell(const std::string& command, int seconds = 240) {
  static int counter = 0;
  const fs::path out = TempRoot() / ("run-" + std::to_string(::getpid()) + "-" + std::to_string(++counter) + ".txt");
  const std::string full = "timeout " + std::to_string(seconds) + " sh -c " + Q(command) + " >" + Q(out) + " 2>&1";
  const int rc = std::system(full.c_str());
  TRun result;
  result.Status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
  result.Output = ReadFile(out);
  fs::remove(out);
  return result;
}

inline bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// The environment of this test process with PATH cut to the system folders and no library path, so
// that nothing of the build tree can be found by accident; extra entries override.
inline std::vector<std::string> CleanEnvironment(const std::vector<std::string>& extra = {}) {
  std::vector<std::string> env;
  auto overridden = [&](const std::string& entry) {
    const std::string name = entry.substr(0, entry.find('=') + 1);
    if (name == "PATH=" || name == "LD_LIBRARY_PATH=" || name == "LD_PRELOAD=") return true;
    for (const auto& x : extra)
      if (x.substr(0, x.find('=') + 1) == name) return true;
    return false;
  };
  for (char** e = environ; *e; ++e)
    if (!overridden(*e)) env.push_back(*e);
  env.push_back("PATH=/usr/bin:/bin");
  env.insert(env.end(), extra.begin(), extra.end());
  return env;
}

// Starts program with args and env, both outputs into the file output; the guard reaps it.
inline bool StartCapturing(TChildProcess& guard, const std::string& program, const std::vector<std::string>& args,
                           const std::vector<std::string>& env, const fs::path& output) {
  std::vector<std::string> argStrings{program};
  argStrings.insert(argStrings.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (auto& a : argStrings) argv.push_back(a.data());
  argv.push_back(nullptr);
  std::vector<std::string> envStrings = env;
  std::vector<char*> envp;
  for (auto& e : envStrings) envp.push_back(e.data());
  envp.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawn_file_actions_adddup2(&actions, 1, 2);
  pid_t pid = -1;
  const int rc = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  if (rc != 0) return false;
  guard.Adopt(pid);
  return true;
}

// The ELF files below folder, found by their first bytes rather than by their names.
inline std::vector<fs::path> ElfFiles(const fs::path& folder) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file() || entry.is_symlink()) continue;
    char head[4] = {};
    std::ifstream in(entry.path(), std::ios::binary);
    if (in.read(head, 4) && std::string(head, 4) == "\x7f" "ELF") files.push_back(entry.path());
  }
  return files;
}

}  // namespace zentrail::test
