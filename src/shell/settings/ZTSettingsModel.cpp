#include "ZTSettingsModel.h"

#include <QFontDatabase>
#include <string>

#include "ZTSettingsStore.h"

namespace zentrail {

namespace {

constexpr const char* kPosition = "Position";
constexpr const char* kOrganizer = "Organizer";
constexpr const char* kDisplay = "Display";
constexpr const char* kGeneral = "General";
constexpr const char* kFontStyles = "FontStyles";
constexpr const char* kFind = "Find";

std::string Utf8(const QString& s) { return s.toStdString(); }
QString FromUtf8(const std::string& s) { return QString::fromStdString(s); }

// The column bits in the order of their keys; the three time bits share one column and follow.
constexpr std::pair<const char*, uint16_t> kColumnKeys[] = {{"Category", 1},   {"AppName", 2},     {"ComputerName", 4},
                                                            {"ProcessID", 8},  {"ThreadName", 16}, {"Date", 32}};
constexpr std::pair<const char*, uint16_t> kTimeColumnKeys[] = {{"TimeStamp", 64}, {"TimeDiff", 128}, {"TimeOffset", 256}};

constexpr std::pair<const char*, uint8_t> kOrganizerKeys[] = {
    {"AppName", 1}, {"Category", 2}, {"ProcessID", 4}, {"ThreadName", 8}, {"ComputerName", 16}};

}  // namespace

uint8_t StyleBitsFromNumber(int32_t number) {
  return static_cast<uint8_t>(((number & ztStyleBold) ? fsBold : 0) | ((number & ztStyleItalic) ? fsItalic : 0) |
                              ((number & ztStyleUnderline) ? fsUnderline : 0) |
                              ((number & ztStyleStrikeOut) ? fsStrikeOut : 0));
}

int32_t StyleNumberFromBits(uint8_t bits) {
  return ((bits & fsBold) ? ztStyleBold : 0) | ((bits & fsItalic) ? ztStyleItalic : 0) |
         ((bits & fsUnderline) ? ztStyleUnderline : 0) | ((bits & fsStrikeOut) ? ztStyleStrikeOut : 0);
}

QFont ChooseFontFace(const QString& family, int pointSize, bool fixed) {
  QFont font;
  if (!family.isEmpty() && QFontDatabase::hasFamily(family)) {
    font = QFont(family);
  } else {
    font = QFontDatabase::systemFont(fixed ? QFontDatabase::FixedFont : QFontDatabase::GeneralFont);
  }
  if (pointSize > 0) font.setPointSize(pointSize);
  return font;
}

QFont RealizeFontSetting(const TZTFontSetting& setting, bool fixed) {
  QFont font = ChooseFontFace(setting.Name, setting.Size, fixed);
  font.setBold((setting.Style & ztStyleBold) != 0);
  font.setItalic((setting.Style & ztStyleItalic) != 0);
  font.setUnderline((setting.Style & ztStyleUnderline) != 0);
  font.setStrikeOut((setting.Style & ztStyleStrikeOut) != 0);
  return font;
}

// ---- Position

void TZTPositionSection::Read(const TZTIniFile& ini) {
  const TZTPositionSection d;
  Stored = ini.ValueExists(kPosition, "Left") || ini.ValueExists(kPosition, "Right");
  Left = ini.ReadInteger(kPosition, "Left", d.Left);
  Top = ini.ReadInteger(kPosition, "Top", d.Top);
  Right = ini.ReadInteger(kPosition, "Right", d.Right);
  Bottom = ini.ReadInteger(kPosition, "Bottom", d.Bottom);
  Maximized = ini.ReadBool(kPosition, "Maximized", d.Maximized);
}

void TZTPositionSection::Write(TZTIniFile& ini) const {
  ini.WriteInteger(kPosition, "Left", Left);
  ini.WriteInteger(kPosition, "Top", Top);
  ini.WriteInteger(kPosition, "Right", Right);
  ini.WriteInteger(kPosition, "Bottom", Bottom);
  ini.WriteBool(kPosition, "Maximized", Maximized);
}

// ---- Organizer

void TZTOrganizerSection::Read(const TZTIniFile& ini) {
  OrganizeBy = 0;
  for (const auto& [key, bit] : kOrganizerKeys)
    if (ini.ReadBool(kOrganizer, key, false)) OrganizeBy |= bit;
  AutoOrganize = ini.ReadBool(kOrganizer, "AutoOrganize", TZTOrganizerSection{}.AutoOrganize);
}

void TZTOrganizerSection::Write(TZTIniFile& ini) const {
  for (const auto& [key, bit] : kOrganizerKeys) ini.WriteBool(kOrganizer, key, (OrganizeBy & bit) != 0);
  ini.WriteBool(kOrganizer, "AutoOrganize", AutoOrganize);
}

// ---- Display

void TZTDisplaySection::Read(const TZTIniFile& ini) {
  const TZTDisplaySection d;
  AlwaysOnTop = ini.ReadBool(kDisplay, "AlwaysOnTop", d.AlwaysOnTop);
  Inspector = ini.ReadBool(kDisplay, "Inspector", d.Inspector);
  CallStack = ini.ReadBool(kDisplay, "CallStack", d.CallStack);
  ScratchPad = ini.ReadBool(kDisplay, "ScratchPad", d.ScratchPad);
  ScratchPadLightColor = ini.ReadInteger(kDisplay, "ScratchPadLightColor", d.ScratchPadLightColor);
  InspectorOnBottom = ini.ReadBool(kDisplay, "InspectorOnBottom", d.InspectorOnBottom);
  MainSplitFixed = ini.ReadInteger(kDisplay, "MainSplitFixed", d.MainSplitFixed);
  LeftSplitFixed = ini.ReadInteger(kDisplay, "LeftSplitFixed", d.LeftSplitFixed);
  RightSplitFixed = ini.ReadInteger(kDisplay, "RightSplitFixed", d.RightSplitFixed);
  WrapButtons = ini.ReadBool(kDisplay, "WrapButtons", d.WrapButtons);
  DetailPanel = ini.ReadBool(kDisplay, "DetailPanel", d.DetailPanel);
  Columns = 0;
  for (const auto& [key, bit] : kColumnKeys)
    if (ini.ReadBool(kDisplay, key, false)) Columns |= bit;
  // One time column at most: the first of the three that is on wins and the rest are not read.
  for (const auto& [key, bit] : kTimeColumnKeys) {
    if (ini.ReadBool(kDisplay, key, false)) {
      Columns |= bit;
      break;
    }
  }
  HideExtraColumns = ini.ReadBool(kDisplay, "HideExtraColumns", d.HideExtraColumns);
  MarkerColor = ini.ReadInteger(kDisplay, "MarkerColor", d.MarkerColor);
  SyncMsgColor = ini.ReadInteger(kDisplay, "SyncMsgColor", d.SyncMsgColor);
  SeparatorColor = ini.ReadInteger(kDisplay, "SeparatorColor", d.SeparatorColor);
  InactiveSeparatorColor = ini.ReadInteger(kDisplay, "InactiveSeparatorColor", d.InactiveSeparatorColor);
  AppStartSeparatorColor = ini.ReadInteger(kDisplay, "AppStartSeparatorColor", d.AppStartSeparatorColor);
  ValueColor = ini.ReadInteger(kDisplay, "ValueColor", d.ValueColor);
  HighlightColor = ini.ReadInteger(kDisplay, "HighlightColor", d.HighlightColor);
  HighlightFontColor = ini.ReadInteger(kDisplay, "HighlightFontColor", d.HighlightFontColor);
  RowShading = ini.ReadBool(kDisplay, "RowShading", d.RowShading);
  RowShadingColor = ini.ReadInteger(kDisplay, "RowShadingColor", d.RowShadingColor);
  const TZTInspectorDisplaySettings& i = d.Inspectors;
  Inspectors.StringWordWrap = ini.ReadBool(kDisplay, "StringWordWrap", i.StringWordWrap);
  Inspectors.StringLineNumbers = ini.ReadBool(kDisplay, "StringLineNumbers", i.StringLineNumbers);
  Inspectors.TextWordWrap = ini.ReadBool(kDisplay, "TextWordWrap", i.TextWordWrap);
  Inspectors.TextJumpToEnd = ini.ReadBool(kDisplay, "TextJumpToEnd", i.TextJumpToEnd);
  Inspectors.TextLineNumbers = ini.ReadBool(kDisplay, "TextLineNumbers", i.TextLineNumbers);
  Inspectors.StrListJumpToEnd = ini.ReadBool(kDisplay, "StrListJumpToEnd", i.StrListJumpToEnd);
  Inspectors.MonospaceTextLineNumbers = ini.ReadBool(kDisplay, "MonospaceTextLineNumbers", i.MonospaceTextLineNumbers);
  Inspectors.DisplayType = ini.ReadInteger(kDisplay, "DisplayType", i.DisplayType);
  Inspectors.XmlViewType = ini.ReadInteger(kDisplay, "XmlViewType", i.XmlViewType);
}

void TZTDisplaySection::Write(TZTIniFile& ini) const {
  ini.WriteBool(kDisplay, "AlwaysOnTop", AlwaysOnTop);
  ini.WriteBool(kDisplay, "Inspector", Inspector);
  ini.WriteBool(kDisplay, "CallStack", CallStack);
  ini.WriteBool(kDisplay, "ScratchPad", ScratchPad);
  ini.WriteInteger(kDisplay, "ScratchPadLightColor", ScratchPadLightColor);
  ini.WriteBool(kDisplay, "InspectorOnBottom", InspectorOnBottom);
  ini.WriteInteger(kDisplay, "MainSplitFixed", MainSplitFixed);
  ini.WriteInteger(kDisplay, "LeftSplitFixed", LeftSplitFixed);
  ini.WriteInteger(kDisplay, "RightSplitFixed", RightSplitFixed);
  ini.WriteBool(kDisplay, "WrapButtons", WrapButtons);
  ini.WriteBool(kDisplay, "DetailPanel", DetailPanel);
  for (const auto& [key, bit] : kColumnKeys) ini.WriteBool(kDisplay, key, (Columns & bit) != 0);
  for (const auto& [key, bit] : kTimeColumnKeys) ini.WriteBool(kDisplay, key, (Columns & bit) != 0);
  ini.WriteBool(kDisplay, "HideExtraColumns", HideExtraColumns);
  ini.WriteInteger(kDisplay, "MarkerColor", MarkerColor);
  ini.WriteInteger(kDisplay, "SyncMsgColor", SyncMsgColor);
  ini.WriteInteger(kDisplay, "SeparatorColor", SeparatorColor);
  ini.WriteInteger(kDisplay, "InactiveSeparatorColor", InactiveSeparatorColor);
  ini.WriteInteger(kDisplay, "AppStartSeparatorColor", AppStartSeparatorColor);
  ini.WriteInteger(kDisplay, "ValueColor", ValueColor);
  ini.WriteInteger(kDisplay, "HighlightColor", HighlightColor);
  ini.WriteInteger(kDisplay, "HighlightFontColor", HighlightFontColor);
  ini.WriteBool(kDisplay, "RowShading", RowShading);
  ini.WriteInteger(kDisplay, "RowShadingColor", RowShadingColor);
  ini.WriteBool(kDisplay, "StringWordWrap", Inspectors.StringWordWrap);
  ini.WriteBool(kDisplay, "StringLineNumbers", Inspectors.StringLineNumbers);
  ini.WriteBool(kDisplay, "TextWordWrap", Inspectors.TextWordWrap);
  ini.WriteBool(kDisplay, "TextJumpToEnd", Inspectors.TextJumpToEnd);
  ini.WriteBool(kDisplay, "TextLineNumbers", Inspectors.TextLineNumbers);
  ini.WriteBool(kDisplay, "StrListJumpToEnd", Inspectors.StrListJumpToEnd);
  ini.WriteBool(kDisplay, "MonospaceTextLineNumbers", Inspectors.MonospaceTextLineNumbers);
  ini.WriteInteger(kDisplay, "DisplayType", Inspectors.DisplayType);
  ini.WriteInteger(kDisplay, "XmlViewType", Inspectors.XmlViewType);
}

// ---- General

void TZTGeneralSection::Read(const TZTIniFile& ini) {
  const TZTGeneralSection d;
  ConfirmOnClear = ini.ReadBool(kGeneral, "ConfirmOnClear", d.ConfirmOnClear);
  ConfirmOnClearBookmarks = ini.ReadBool(kGeneral, "ConfirmOnClearBookmarks", d.ConfirmOnClearBookmarks);
  AutoSaveProject = ini.ReadBool(kGeneral, "AutoSaveProject", d.AutoSaveProject);
  AutoScroll = ini.ReadBool(kGeneral, "AutoScroll", d.AutoScroll);
  AutoCollapse = ini.ReadBool(kGeneral, "AutoCollapse", d.AutoCollapse);
  FlattenStructure = ini.ReadBool(kGeneral, "FlattenStructure", d.FlattenStructure);
  SoundEffectOnWakeUp = ini.ReadBool(kGeneral, "SoundEffectOnWakeUp", d.SoundEffectOnWakeUp);
  SoundEffectFile = FromUtf8(ini.ReadString(kGeneral, "SoundEffectFile", Utf8(d.SoundEffectFile)));
  InsertSeparatorOnWakeUp = ini.ReadBool(kGeneral, "InsertSeparatorOnWakeUp", d.InsertSeparatorOnWakeUp);
  IdleTime = ini.ReadInteger(kGeneral, "IdleTime", d.IdleTime);
  InsertSeparatorOnAppStart = ini.ReadBool(kGeneral, "InsertSeparatorOnAppStart", d.InsertSeparatorOnAppStart);
  LastProject = FromUtf8(ini.ReadString(kGeneral, "LastProject", ""));
  LastLogDir = FromUtf8(ini.ReadString(kGeneral, "LastLogDir", ""));
  LastProjectDir = FromUtf8(ini.ReadString(kGeneral, "LastProjectDir", ""));
  NavigatorMsgType = ini.ReadInteger(kGeneral, "NavigatorMsgType", d.NavigatorMsgType);
  NavigatorMsgContent = ini.ReadInteger(kGeneral, "NavigatorMsgContent", d.NavigatorMsgContent);
  NavigatorAutomatic = ini.ReadBool(kGeneral, "NavigatorAutomatic", d.NavigatorAutomatic);
  NavigatorTimeDiff = ini.ReadBool(kGeneral, "NavigatorTimeDiff", d.NavigatorTimeDiff);
  TimeDiffNavThreshold = ini.ReadInteger(kGeneral, "TimeDiffNavThreshold", d.TimeDiffNavThreshold);
  PrintSelection = ini.ReadBool(kGeneral, "PrintSelection", d.PrintSelection);
  PrintFontSize = ini.ReadInteger(kGeneral, "PrintFontSize", d.PrintFontSize);
}

void TZTGeneralSection::Write(TZTIniFile& ini) const {
  ini.WriteBool(kGeneral, "ConfirmOnClear", ConfirmOnClear);
  ini.WriteBool(kGeneral, "ConfirmOnClearBookmarks", ConfirmOnClearBookmarks);
  ini.WriteBool(kGeneral, "AutoSaveProject", AutoSaveProject);
  ini.WriteBool(kGeneral, "AutoScroll", AutoScroll);
  ini.WriteBool(kGeneral, "AutoCollapse", AutoCollapse);
  ini.WriteBool(kGeneral, "FlattenStructure", FlattenStructure);
  ini.WriteBool(kGeneral, "SoundEffectOnWakeUp", SoundEffectOnWakeUp);
  ini.WriteString(kGeneral, "SoundEffectFile", Utf8(SoundEffectFile));
  ini.WriteBool(kGeneral, "InsertSeparatorOnWakeUp", InsertSeparatorOnWakeUp);
  ini.WriteInteger(kGeneral, "IdleTime", IdleTime);
  ini.WriteBool(kGeneral, "InsertSeparatorOnAppStart", InsertSeparatorOnAppStart);
  ini.WriteString(kGeneral, "LastProject", Utf8(LastProject));
  ini.WriteString(kGeneral, "LastLogDir", Utf8(LastLogDir));
  ini.WriteString(kGeneral, "LastProjectDir", Utf8(LastProjectDir));
  ini.WriteInteger(kGeneral, "NavigatorMsgType", NavigatorMsgType);
  ini.WriteInteger(kGeneral, "NavigatorMsgContent", NavigatorMsgContent);
  ini.WriteBool(kGeneral, "NavigatorAutomatic", NavigatorAutomatic);
  ini.WriteBool(kGeneral, "NavigatorTimeDiff", NavigatorTimeDiff);
  ini.WriteInteger(kGeneral, "TimeDiffNavThreshold", TimeDiffNavThreshold);
  ini.WriteBool(kGeneral, "PrintSelection", PrintSelection);
  ini.WriteInteger(kGeneral, "PrintFontSize", PrintFontSize);
}

// ---- Fonts

QString TZTFontsSection::MessageDefaultName() { return QStringLiteral("Verdana"); }

QString TZTFontsSection::InspectorDefaultName() {
  return QFontDatabase::hasFamily(QStringLiteral("Segoe UI")) ? QStringLiteral("Segoe UI") : QStringLiteral("Verdana");
}

QString TZTFontsSection::InspectorFixedDefaultName() {
  return QFontDatabase::hasFamily(QStringLiteral("Consolas")) ? QStringLiteral("Consolas")
                                                              : QStringLiteral("Courier New");
}

void TZTFontsSection::ReadFont(const TZTIniFile& ini, const char* section, TZTFontSetting& font,
                               const QString& defaultName) {
  const TZTFontSetting d;
  font.Name = FromUtf8(ini.ReadString(section, "Name", Utf8(defaultName)));
  font.Size = ini.ReadInteger(section, "Size", d.Size);
  font.Color = ini.ReadInteger(section, "Color", d.Color);
  font.Style = ini.ReadInteger(section, "Style", d.Style);
}

void TZTFontsSection::WriteFont(TZTIniFile& ini, const char* section, const TZTFontSetting& font) {
  ini.WriteString(section, "Name", Utf8(font.Name));
  ini.WriteInteger(section, "Size", font.Size);
  ini.WriteInteger(section, "Color", font.Color);
  ini.WriteInteger(section, "Style", font.Style);
}

void TZTFontsSection::Read(const TZTIniFile& ini) {
  ReadFont(ini, "MessageFont", Message, MessageDefaultName());
  ReadFont(ini, "InspectorFont", Inspector, InspectorDefaultName());
  ReadFont(ini, "InspectorFixedFont", InspectorFixed, InspectorFixedDefaultName());
}

void TZTFontsSection::Write(TZTIniFile& ini) const {
  WriteFont(ini, "MessageFont", Message);
  WriteFont(ini, "InspectorFont", Inspector);
  WriteFont(ini, "InspectorFixedFont", InspectorFixed);
}

// ---- FontStyles

void TZTFontStylesSection::ReadMsgStyle(const TZTIniFile& ini, const char* keyPrefix, TZTMsgTypeStyle& entry) {
  const std::string prefix(keyPrefix);
  entry.UseDefault = ini.ReadBool(kFontStyles, prefix + "UseDefault", true);
  entry.Color = ini.ReadInteger(kFontStyles, prefix + "Color", clWindowText);
  entry.Style = StyleBitsFromNumber(ini.ReadInteger(kFontStyles, prefix + "Style", 0));
}

void TZTFontStylesSection::WriteMsgStyle(TZTIniFile& ini, const char* keyPrefix, const TZTMsgTypeStyle& entry) {
  const std::string prefix(keyPrefix);
  ini.WriteBool(kFontStyles, prefix + "UseDefault", entry.UseDefault);
  ini.WriteInteger(kFontStyles, prefix + "Color", entry.Color);
  ini.WriteInteger(kFontStyles, prefix + "Style", StyleNumberFromBits(entry.Style));
}

void TZTFontStylesSection::Read(const TZTIniFile& ini) {
  for (size_t i = 1; i < Styles.size(); ++i) Styles[i] = TZTMsgTypeStyle{};
  for (const TZTMsgStyleKey& k : MsgStyleKeys())
    if (k.MsgType > 0 && k.MsgType < ztMsgTypeStyleCount) ReadMsgStyle(ini, k.Prefix, Styles[k.MsgType]);
}

void TZTFontStylesSection::Write(TZTIniFile& ini) const {
  for (const TZTMsgStyleKey& k : MsgStyleKeys())
    if (k.MsgType > 0 && k.MsgType < ztMsgTypeStyleCount) WriteMsgStyle(ini, k.Prefix, Styles[k.MsgType]);
}

// ---- Find

void TZTFindSection::Read(const TZTIniFile& ini) {
  const TZTFindSection d;
  FindForward = ini.ReadBool(kFind, "FindForward", d.FindForward);
  FindFromCursor = ini.ReadBool(kFind, "FindFromCursor", d.FindFromCursor);
  FindInDetails = ini.ReadBool(kFind, "FindInDetails", d.FindInDetails);
}

void TZTFindSection::Write(TZTIniFile& ini) const {
  ini.WriteBool(kFind, "FindForward", FindForward);
  ini.WriteBool(kFind, "FindFromCursor", FindFromCursor);
  ini.WriteBool(kFind, "FindInDetails", FindInDetails);
}

}  // namespace zentrail
