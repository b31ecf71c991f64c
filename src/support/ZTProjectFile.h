#pragma once
// The part of a project file (".ztp") that the viewer itself reads: the list of views in section
// "Views" with their names and classes, and where each view's own settings lie. No Qt here, so that
// the reader is fuzzed and sanitized like the other decoders of outside input.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ZTIniFile.h"

namespace zentrail {

inline constexpr const char* ztProjectViewsSection = "Views";
inline constexpr const char* ztProjectViewCount = "ViewCount";
// A project that names more views than this opens this many and says so: each view is a widget
// with a list of its own, and a damaged file must not make the viewer build them by the thousand.
inline constexpr int ztProjectMaxViews = 200;

// "<i>_" and the rest of the key.
inline std::string ProjectKey(int index, std::string_view key) { return std::to_string(index) + "_" + std::string(key); }

struct TZTProjectView {
  std::string Name;       // "<i>_ViewName", "All Messages" when missing
  std::string ViewClass;  // "<i>_ViewClass", "Default" when missing; empty means no view
  std::string Section;    // "<i>_<name>", the view's own settings
};

struct TZTProjectViews {
  int32_t ViewCount = 0;  // as the file says, 0 when missing or not a number
  std::vector<TZTProjectView> Views;  // at most maxViews, in file order
};

// Reads the views of a project. Saving writes "<i>_ViewClassName" but this reads "<i>_ViewClass",
// so a project that this program wrote always reopens its views with the class "Default".
TZTProjectViews ReadProjectViews(const TZTIniFile& ini, int maxViews = ztProjectMaxViews);

}  // namespace zentrail
