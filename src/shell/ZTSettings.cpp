#include "ZTSettings.h"

namespace zentrail {

QString TZTSettings::ReadString(const QString& section, const QString& key, const QString& def) const {
  auto s = FValues.find(section.toLower());
  if (s == FValues.end()) return def;
  auto k = s->second.find(key.toLower());
  return k == s->second.end() ? def : k->second;
}

int TZTSettings::ReadInteger(const QString& section, const QString& key, int def) const {
  bool ok = false;
  int value = ReadString(section, key, QString()).trimmed().toInt(&ok);
  return ok ? value : def;
}

bool TZTSettings::ReadBool(const QString& section, const QString& key, bool def) const {
  return ReadInteger(section, key, def ? 1 : 0) != 0;
}

void TZTSettings::WriteString(const QString& section, const QString& key, const QString& value) {
  FValues[section.toLower()][key.toLower()] = value;
}

void TZTSettings::WriteInteger(const QString& section, const QString& key, int value) {
  WriteString(section, key, QString::number(value));
}

void TZTSettings::WriteBool(const QString& section, const QString& key, bool value) {
  WriteString(section, key, value ? QStringLiteral("1") : QStringLiteral("0"));
}

bool TZTSettings::ValueExists(const QString& section, const QString& key) const {
  auto s = FValues.find(section.toLower());
  return s != FValues.end() && s->second.count(key.toLower()) > 0;
}

TZTSettings& ViewerSettings() {
  static TZTSettings settings;
  return settings;
}

}  // namespace zentrail
