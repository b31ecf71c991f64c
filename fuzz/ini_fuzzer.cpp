// Settings and project files are read with the ini class; a damaged or hostile file must load to
// something, and what is written from it must read back to the same sections and values.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "ZTIniFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace zentrail;
  std::string_view text(reinterpret_cast<const char*>(data), size);
  TZTIniFile ini;
  ini.LoadFromString(text);
  const std::string written = ini.ToString();
  TZTIniFile again;
  again.LoadFromString(written);
  if (again.ToString() != written) std::abort();
  for (const std::string& section : ini.ReadSections()) {
    if (!again.SectionExists(section)) std::abort();
    for (const std::string& key : ini.ReadSection(section)) {
      if (ini.ReadString(section, key, "\x01") != again.ReadString(section, key, "\x02")) std::abort();
      // The typed readers take any text without harm.
      (void)ini.ReadInteger(section, key, 0);
      (void)ini.ReadBool(section, key, false);
      (void)ini.ReadFloat(section, key, 0.0);
      (void)ini.ReadDateTime(section, key, 0.0);
      (void)ini.ReadBinary(section, key);
    }
  }
  return 0;
}
