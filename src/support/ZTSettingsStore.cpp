#include "ZTSettingsStore.h"

#include "ZTCommonUtils.h"

namespace zentrail {

std::string ViewerSettingsFileName() { return GetAppDataFolder() + "ZTLiveViewer.ini"; }

TZTIniFile& ViewerSettings() {
  static TZTIniFile settings;
  return settings;
}

void LoadViewerSettings() {
  TZTIniFile& ini = ViewerSettings();
  ini.Clear();
  ini.SetFileName(ViewerSettingsFileName());
  ini.Reload();
}

bool FlushViewerSettings(std::string& error) {
  TZTIniFile& ini = ViewerSettings();
  if (ini.FileName().empty()) ini.SetFileName(ViewerSettingsFileName());
  return ini.TryUpdateFile(error);
}

}  // namespace zentrail
