#include "ZTProjectFile.h"

#include <algorithm>

namespace zentrail {

TZTProjectViews ReadProjectViews(const TZTIniFile& ini, int maxViews) {
  TZTProjectViews out;
  out.ViewCount = ini.ReadInteger(ztProjectViewsSection, ztProjectViewCount, 0);
  const int32_t count = std::min<int32_t>(out.ViewCount, std::max(0, maxViews));
  for (int32_t i = 1; i <= count; ++i) {
    TZTProjectView view;
    view.Name = ini.ReadString(ztProjectViewsSection, ProjectKey(i, "ViewName"), "All Messages");
    view.ViewClass = ini.ReadString(ztProjectViewsSection, ProjectKey(i, "ViewClass"), "Default");
    view.Section = std::to_string(i) + "_" + view.Name;
    out.Views.push_back(std::move(view));
  }
  return out;
}

}  // namespace zentrail
