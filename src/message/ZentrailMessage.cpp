#include "ZentrailMessage.h"

#include "TransportPacket.h"

namespace zentrail {

const char* const MsgTypeNames[ztmTableCount] = {
    "Info",       "Warning",    "Error",      "CheckPoint", "Object",     "CompAsText",
    "StringList", "Text",       "Note",       "Enter",      "Exit",       "Separator",
    "InactSep",   "Clear",      "ScratchPad", "SaveLog",    "Bitmap",     "TextFile",
    "Window",     "Memory",     "MemStatus",  "Text",       "Properties", "Reminder",
    "Level1",     "Level2",     "Level3",     "Level4",     "Level5",     "Level6",
    "Level7",     "Color",      "Registry",   "SysInfo",    "VerInfo",    "XmlData",
    "StackTrace", "Exception",  "Table",      "ResetSep",   "AppStrtSep", "Collection",
    "CollapsedMethod", "ExitMethodCollapse", "Hierarchy", "Timing",
};

std::string MsgTypeShortName(int32_t code) {
  if (code >= 0 && code < ztmTableCount) return MsgTypeNames[code];
  return std::to_string(code);
}

std::string MsgTypeReadableName(int32_t code) {
  // Constant names; nullptr where the table lists none (those fall to the range rule below).
  static const char* const kNames[ztmTableCount] = {
      "ztmInfo", "ztmWarning", "ztmError", "ztmCheckPoint", "ztmObject", "ztmComponentAsText",
      "ztmStringList", nullptr, "ztmNote", "ztmEnterMethod", "ztmExitMethod", "ztmSeparator",
      "ztmInactiveSeparator", "ztmClear", "ztmScratchPad", nullptr, "ztmBitmap", "ztmTextFile",
      "ztmWindow", "ztmMemory", "ztmMemoryStatus", "ztmCustomText", "ztmCustomProperties",
      "ztmReminder", "ztmLevel1 / ztmRed", "ztmLevel2 / ztmOrange", "ztmLevel3 / ztmYellow",
      "ztmLevel4 / ztmGreen", "ztmLevel5 / ztmBlue", "ztmLevel6 / ztmIndigo",
      "ztmLevel7 / ztmViolet", "ztmColor", "ztmRegistry", "ztmSystemInfo", "ztmVersionInfo",
      "ztmXmlData", "ztmStackTrace", "ztmException", "ztmCustomTable", "ztmResetSeparator",
      "ztmAppStartSeparator", "ztmCollection", "ztmCollapsedMethod", nullptr,
      "ztmCustomHierarchy", nullptr,
  };
  if (code >= 0 && code < ztmTableCount && kNames[code]) return kNames[code];
  // The range rule asks only these two questions, so small codes read as negative offsets.
  if (code >= ztmPublic) return "ztmPublic + " + std::to_string(code - ztmPublic);
  if (code < ztmUser) return "ztmReserved + " + std::to_string(code - ztmReserved);
  return "ztmUser + " + std::to_string(code - ztmUser);
}

void TZentrailMessage::Clear() {
  MsgType = ztmInfo;
  MsgContent = ztmText;
  RouteKey.clear();
  MsgText.clear();
  Details.clear();
  TimeStamp = {};
  ProcessID = 0;
  ThreadName.clear();
  AppName.clear();
  ComputerName.clear();
  TypeName.clear();
  Category.clear();
  CategoryColor = 0x00FFFFFF;
  CategoryFontColor = 0;
}

std::string TZentrailMessage::GetAsTransportPacket() const {
  std::string out;
  AppendTransportPacket(out);
  return out;
}

void TZentrailMessage::AppendTransportPacket(std::string& out) const {
  ::zentrail::AppendTransportPacket(*this, out);
}

void TZentrailMessage::SetAsTransportPacket(std::string_view packet) {
  TZentrailPacketView view;
  ParseTransportPacket(packet, view);
  view.CopyTo(*this);
}

}  // namespace zentrail
