// The Methods menu's commands: the call structure of the active view.
#include "ZTMainForm.h"

#include <QAction>

namespace zentrail {

void TFrmViewer::AddMethodCommands() {
  auto onMethod = [](const TZTCommandFacts& f) {
    return f.Focus && f.Methods && (f.FocusedType == ztmEnterMethod || f.FocusedType == ztmExitMethod);
  };
  auto focusAndMethods = [](const TZTCommandFacts& f) { return f.Focus && f.Methods; };
  // Each walk moves the focus, and so the facts of the commands.
  auto methods = [this](void (IZTMessageViewMethods::*op)()) {
    return [this, op] {
      if (FActiveMethods) (FActiveMethods->*op)();
      UpdateCommandStates();
    };
  };
  FCommands->Add("Methods", TZTCommandList::Main, {
      {"actMethodMatch", "Method &Match", "Jump to Matching Method", "Ctrl+PgUp", "methodmatch",
       methods(&IZTMessageViewMethods::FindMatchingMethod), onMethod},
      // Ctrl+Left belongs to Previous View, which stands before this command in the list.
      {"actCurrentMethod", "C&urrent Method", "Jump to Current Method", "", "currentmethod",
       methods(&IZTMessageViewMethods::FindCurrentMethod),
       [](const TZTCommandFacts& f) { return f.Focus && f.Methods && f.List && f.FocusedIndent > 0; }},
      {"actToggleMethod", "Toggle Method", "Collapse or Expand the Selected Method", "Ctrl+Up", "collapsemethod",
       methods(&IZTMessageViewMethods::ToggleCurrentMethod), onMethod},
      {"actExpandAll", "E&xpand All", "", "", "expandall",
       [this] {
         if (FActiveMethods) FActiveMethods->ExpandAllMethods(true);
         UpdateCommandStates();
       },
       focusAndMethods},
      {"actExpandToEnd", "Expand &To End", "Expand Methods Starting from the Current Position", "", nullptr,
       [this] {
         if (FActiveMethods) FActiveMethods->ExpandAllMethods(false);
         UpdateCommandStates();
       },
       focusAndMethods},
      {"actCollapseAll", "C&ollapse All", "", "", "collapseall", methods(&IZTMessageViewMethods::CollapseAllMethods),
       focusAndMethods},
      {"actAutoCollapse", "&Auto-Collapse", "Automatically Collapse Empty Enter/Exit Method Pairs", "",
       "autocollapse",
       [this] {
         if (FActiveList) SetAutoCollapse(!FAutoCollapse);
       },
       {}, [this](const TZTCommandFacts&) { return FAutoCollapse; }},
  });
}

}  // namespace zentrail
