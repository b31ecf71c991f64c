#pragma once
// The machine-wide registry keys of the product, kept in one ini file: $ZENTRAIL_REGISTRY if set,
// else /etc/zentrail/registry.ini. A section is a key path without its leading backslash, for
// example [Software\Orvan\Zentrail\5.0]. A missing file or section is a key that cannot be opened.

#include <string>

namespace zentrail {

inline constexpr const char* ztRegistryKeyPath = "Software\\Orvan\\Zentrail\\5.0";
inline constexpr const char* ztRegistryPolicyKeyPath = "Software\\Policies\\Orvan\\Zentrail\\5.0";

// The path of the registry file in use.
std::string RegistryFilePath();

// Reads a value of a key. A leading backslash of keyPath is ignored, and so is the case of key and
// value names. False, with value cleared, when the key cannot be opened or has no such value.
// The file is read on every call, so a test or the install step may change it at any time.
bool ReadRegistryString(const std::string& keyPath, const std::string& name, std::string& value);
bool RegistryKeyExists(const std::string& keyPath);

}  // namespace zentrail
