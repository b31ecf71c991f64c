#pragma once
// The process-wide settings object: sections and keys without regard to case, values as text.
// It lives from process start to process end; the window reads it once at start and writes it
// back at close. Reading and writing the file behind it is the settings store's own work and is
// not done here yet: until then every run starts from the defaults.

#include <QString>
#include <map>

namespace zentrail {

class TZTSettings {
 public:
  QString ReadString(const QString& section, const QString& key, const QString& def) const;
  int ReadInteger(const QString& section, const QString& key, int def) const;
  bool ReadBool(const QString& section, const QString& key, bool def) const;
  void WriteString(const QString& section, const QString& key, const QString& value);
  void WriteInteger(const QString& section, const QString& key, int value);
  void WriteBool(const QString& section, const QString& key, bool value);
  bool ValueExists(const QString& section, const QString& key) const;
  void Clear() { FValues.clear(); }

 private:
  std::map<QString, std::map<QString, QString>> FValues;  // lower-case section -> lower-case key
};

TZTSettings& ViewerSettings();

}  // namespace zentrail
