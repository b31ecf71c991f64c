#include "ZTSettingsStore.h"

#include <algorithm>

#include "ZTCommonUtils.h"

namespace zentrail {

namespace {

constexpr TZTMsgStyleKey kMsgStyleKeys[] = {
    {"Warning", 1},          {"Error", 2},
    {"CheckPoint", 3},       {"Object", 4},
    {"ComponentAsText", 5},  {"StringList", 6},
    {"Note", 8},             {"EnterMethod", 9},
    {"ExitMethod", 10},      {"Bitmap", 16},
    {"TextFile", 17},        {"Window", 18},
    {"Memory", 19},          {"MemoryStatus", 20},
    {"CustomText", 21},      {"CustomProperties", 22},
    {"Reminder", 23},        {"Red", 24},
    {"Orange", 25},          {"Yellow", 26},
    {"Green", 27},           {"Blue", 28},
    {"Indigo", 29},          {"Violet", 30},
    {"Color", 31},           {"Registry", 32},
    {"SystemInfo", 33},      {"VersionInfo", 34},
    {"XmlData", 35},         {"StackTrace", 36},
    {"Exception", 37},       {"CustomTable", 38},
    {"Collection", 41},      {"CollapsedMethod", 42},
    {"CustomHierarchy", 44},
};

constexpr const char* kMRULists = "MRULists";
constexpr const char* kFindTextCount = "FindText_Count";

std::string FindTextItem(int index) { return "FindText_Item" + std::to_string(index); }

// A file that is there but could not be read is the user's, not ours: writing the defaults over it
// would lose every setting in it. Empty while the file was read or was missing.
std::string& UnreadFile() {
  static std::string name;
  return name;
}

}  // namespace

std::string ViewerSettingsFileName() { return GetAppDataFolder() + "ZTLiveViewer.ini"; }

TZTIniFile& ViewerSettings() {
  static TZTIniFile settings;
  return settings;
}

void LoadViewerSettings() {
  TZTIniFile& ini = ViewerSettings();
  ini.Clear();
  ini.SetFileName(ViewerSettingsFileName());
  UnreadFile() = ini.Reload() ? std::string() : ini.FileName();
}

bool FlushViewerSettings(std::string& error) {
  TZTIniFile& ini = ViewerSettings();
  if (ini.FileName().empty()) ini.SetFileName(ViewerSettingsFileName());
  if (!UnreadFile().empty() && UnreadFile() == ini.FileName()) {
    error = "\"" + ini.FileName() + "\" could not be read at start, so it is not overwritten";
    return false;
  }
  return ini.TryUpdateFile(error);
}

std::span<const TZTMsgStyleKey> MsgStyleKeys() { return kMsgStyleKeys; }

std::vector<std::string> ReadFindHistory(const TZTIniFile& ini) {
  std::vector<std::string> texts;
  // No more than the dialog keeps: a damaged count must not turn into a long walk.
  const int32_t count = std::min<int32_t>(ini.ReadInteger(kMRULists, kFindTextCount, 0), ztFindHistoryLimit);
  for (int32_t i = 0; i < count; ++i) {
    std::string text = ini.ReadString(kMRULists, FindTextItem(i), "");
    if (text.empty() || std::find(texts.begin(), texts.end(), text) != texts.end()) continue;
    texts.push_back(std::move(text));
  }
  return texts;
}

void WriteFindHistory(TZTIniFile& ini, const std::vector<std::string>& texts) {
  const int count = static_cast<int>(std::min<std::size_t>(texts.size(), ztFindHistoryLimit));
  ini.WriteInteger(kMRULists, kFindTextCount, count);
  for (int i = 0; i < count; ++i) ini.WriteString(kMRULists, FindTextItem(i), texts[static_cast<std::size_t>(i)]);
  for (int i = count; i < ztFindHistoryLimit; ++i) ini.DeleteKey(kMRULists, FindTextItem(i));
}

bool StoreFindHistory(const std::vector<std::string>& texts, std::string& error) {
  WriteFindHistory(ViewerSettings(), texts);
  return FlushViewerSettings(error);
}

}  // namespace zentrail
