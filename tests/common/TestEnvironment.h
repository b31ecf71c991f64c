#pragma once
#include <filesystem>
#include <string>

namespace zentrail::test {

// The temporary folder that stands in for the user's home, XDG folders, runtime folder and the
// registry file for this test process. Made once, before the first test, and removed at exit.
const std::filesystem::path& TempRoot();

// Points HOME, the XDG variables, ZENTRAIL_RUNTIME_DIR and ZENTRAIL_REGISTRY below TempRoot().
// Called by the test mains before any test runs; safe to call again.
void IsolateEnvironment();

// A fresh empty folder below TempRoot(), unique within this process.
std::filesystem::path MakeTempDir(const std::string& hint = "t");

std::string ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, const std::string& bytes);

}  // namespace zentrail::test
