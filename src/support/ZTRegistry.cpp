#include "ZTRegistry.h"

#include <cstdlib>

#include "ZTIniFile.h"

namespace zentrail {

namespace {

std::string SectionOf(const std::string& keyPath) {
  std::string::size_type start = 0;
  while (start < keyPath.size() && keyPath[start] == '\\') ++start;
  return keyPath.substr(start);
}

}  // namespace

std::string RegistryFilePath() {
  const char* env = std::getenv("ZENTRAIL_REGISTRY");
  return env && *env ? std::string(env) : std::string("/etc/zentrail/registry.ini");
}

bool ReadRegistryString(const std::string& keyPath, const std::string& name, std::string& value) {
  value.clear();
  TZTIniFile file(RegistryFilePath());
  std::string section = SectionOf(keyPath);
  if (!file.ValueExists(section, name)) return false;
  value = file.ReadString(section, name, "");
  return true;
}

bool RegistryKeyExists(const std::string& keyPath) {
  TZTIniFile file(RegistryFilePath());
  return file.SectionExists(SectionOf(keyPath));
}

}  // namespace zentrail
