#pragma once
// A project file (".ztp"): the set of additional views with their names, classes and criteria.
// The ini class with a current section: a view reads and writes its settings through the two view
// interfaces, and every key lands in its own section, so a view never reaches beyond it.

#include <string>
#include <string_view>

#include "ZTCustomViewIntf.h"
#include "ZTIniFile.h"
#include "ZTProjectFile.h"

namespace zentrail {

class TZTProjectIniFile : public TZTIniFile, public ICustomViewReadSettings, public ICustomViewWriteSettings {
 public:
  using TZTIniFile::TZTIniFile;
  using TZTIniFile::ReadBinary;
  using TZTIniFile::ReadBool;
  using TZTIniFile::ReadDateTime;
  using TZTIniFile::ReadFloat;
  using TZTIniFile::ReadInteger;
  using TZTIniFile::ReadString;
  using TZTIniFile::WriteBinary;
  using TZTIniFile::WriteBool;
  using TZTIniFile::WriteDateTime;
  using TZTIniFile::WriteFloat;
  using TZTIniFile::WriteInteger;
  using TZTIniFile::WriteString;

  // ---- ICustomViewReadSettings, in the current section
  std::string ReadString(const std::string& key, const std::string& defaultValue) override {
    return ReadString(CurrentSection(), key, defaultValue);
  }
  int32_t ReadInteger(const std::string& key, int32_t defaultValue) override {
    return ReadInteger(CurrentSection(), key, defaultValue);
  }
  bool ReadBool(const std::string& key, bool defaultValue) override { return ReadBool(CurrentSection(), key, defaultValue); }
  double ReadFloat(const std::string& key, double defaultValue) override {
    return ReadFloat(CurrentSection(), key, defaultValue);
  }
  double ReadDateTime(const std::string& key, double defaultValue) override {
    return ReadDateTime(CurrentSection(), key, defaultValue);
  }
  std::string ReadBinary(const std::string& key) override { return ReadBinary(CurrentSection(), key); }

  // ---- ICustomViewWriteSettings, in the current section
  void WriteString(const std::string& key, const std::string& value) override { WriteString(CurrentSection(), key, value); }
  void WriteInteger(const std::string& key, int32_t value) override { WriteInteger(CurrentSection(), key, value); }
  void WriteBool(const std::string& key, bool value) override { WriteBool(CurrentSection(), key, value); }
  void WriteFloat(const std::string& key, double value) override { WriteFloat(CurrentSection(), key, value); }
  void WriteDateTime(const std::string& key, double value) override { WriteDateTime(CurrentSection(), key, value); }
  void WriteBinary(const std::string& key, std::string_view bytes) override { WriteBinary(CurrentSection(), key, bytes); }
};

}  // namespace zentrail
