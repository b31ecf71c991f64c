#include "ZTCommandMenus.h"

#include <QAction>
#include <QMenu>
#include <cstring>

#include "ZTGlyphs.h"

namespace zentrail {

const std::vector<TZTMenuDef>& MainMenuDefs() {
  static const std::vector<TZTMenuDef> menus = {
      {"mnuFile", "&File",
       {"actOpen", "actAppend", "actSave", "actExport", "actFollowLog", "-", "actNewProject", "actOpenProject",
        "actSaveProject", "actSaveProjectAs", "actCloseProject", "-", "actPrint", "actPrintInspectorContents", "-",
        "actExit"}},
      {"mnuEdit", "&Edit",
       {"actEditMessage", "actCopyMessageText", "actCopyInspectorContents", "-", "actAddNote", "actAddCheckPoint",
        "actAddSeparator", "actAddResetSeparator", "-", "actDelete", "actCropToSelection", "actClear", "actClearAll",
        "-", "actSelectAll"}},
      {"mnuSearch", "&Search",
       {"actFind", "actFindNext", "actJumpToMsg", "-", "menu:mnuToggleBookmarks", "menu:mnuJumpToBookmarks",
        "actClearBookmarks", "-", "actSyncMsgMode", "actUpdateSyncMsg", "-", "actSelectNavMsg", "actNavFirst",
        "actNavPrevious", "actNavNext", "actNavLast"}},
      {"mnuView", "&View",
       {"actSelectColumns", "actHideExtraColumns", "-", "actViewDetailPanel", "actViewInspector",
        "actFullSizeInspector", "actInspectorOnBottom", "-", "actViewScratchPad", "actViewCallStack", "-",
        "actAutoScroll", "actFlattenStructure", "-", "actRefresh", "actAlwaysOnTop", "menu:mnuPositionViewer"}},
      {"mnuMethods", "&Methods",
       {"actAutoCollapse", "-", "actMethodMatch", "actCurrentMethod", "-", "actToggleMethod", "-", "actExpandAll",
        "actExpandToEnd", "actCollapseAll"}},
      {"mnuOrganize", "&Organize",
       {"actOrganizeMessages", "actAutoOrganize", "actAutoOrganizeSettings", "-", "actViewNew", "actViewModify", "-",
        "actViewRemove", "actViewRemoveAll"}},
      {"mnuTools", "&Tools", {"actOptions", "-", "actBlockMessages", "-", "actPlugIns"}},
      {"mnuHelp", "&Help", {"actHelpProduct", "actHelpZentrail", "-", "actHelpAbout"}},
  };
  return menus;
}

namespace {

const std::vector<TZTMenuDef>& PopupDefs() {
  static const std::vector<TZTMenuDef> popups = {
      {"mnuToggleBookmarks", "Toggle &Bookmarks",
       {"actToggleBookmark0", "actToggleBookmark1", "actToggleBookmark2", "actToggleBookmark3", "actToggleBookmark4",
        "actToggleBookmark5", "actToggleBookmark6", "actToggleBookmark7", "actToggleBookmark8",
        "actToggleBookmark9"}},
      {"mnuJumpToBookmarks", "&Jump to Bookmarks",
       {"actJumpToBookmark0", "actJumpToBookmark1", "actJumpToBookmark2", "actJumpToBookmark3", "actJumpToBookmark4",
        "actJumpToBookmark5", "actJumpToBookmark6", "actJumpToBookmark7", "actJumpToBookmark8",
        "actJumpToBookmark9"}},
      // The bookmark buttons' own copies.
      {"mnuBtnToggleBookmarks", "Toggle &Bookmarks",
       {"actToggleBookmark0", "actToggleBookmark1", "actToggleBookmark2", "actToggleBookmark3", "actToggleBookmark4",
        "actToggleBookmark5", "actToggleBookmark6", "actToggleBookmark7", "actToggleBookmark8",
        "actToggleBookmark9"}},
      {"mnuBtnJumpToBookmarks", "&Jump to Bookmarks",
       {"actJumpToBookmark0", "actJumpToBookmark1", "actJumpToBookmark2", "actJumpToBookmark3", "actJumpToBookmark4",
        "actJumpToBookmark5", "actJumpToBookmark6", "actJumpToBookmark7", "actJumpToBookmark8",
        "actJumpToBookmark9"}},
      {"mnuPositionViewer", "Position &Viewer",
       {"actPosUpperLeft", "actPosUpperRight", "actPosLowerRight", "actPosLowerLeft", "actPosLeft", "actPosTop",
        "actPosRight", "actPosBottom"}},
      {"mnuColumns", "Co&lumns",
       {"actViewMsgOnly", "actAllDetails", "-", "actViewCategory", "actViewAppName", "actViewComputerName",
        "actViewProcessID", "actViewThread", "actViewDate", "-", "actViewTimeStamp", "actViewTimeDiff",
        "actViewTimeOffset", "-", "actSelectColumns", "actHideExtraColumns"}},
      {"mnuMessageList", "",
       {"actCopyMessageText", "-", "actAddSeparator", "actAddResetSeparator", "-", "actToggleMethod",
        "actMethodMatch", "actCurrentMethod", "-", "actFind", "actFindNext", "actJumpToMsg", "-",
        "menu:mnuBtnToggleBookmarks", "menu:mnuBtnJumpToBookmarks", "-", "menu:mnuColumns", "-", "actEditMessage",
        "actDelete", "actCropToSelection", "actClear", "actSelectAll"}},
      {"mnuMsgDetailsPopup", "",
       {"actViewMsgOnly", "actAllDetails", "-", "actViewCategory", "actViewAppName", "actViewComputerName",
        "actViewProcessID", "actViewThread", "actViewDate", "-", "actViewTimeStamp", "actViewTimeDiff",
        "actViewTimeOffset", "-", "actSelectColumns", "-", "actViewDetailPanel"}},
      {"mnuViews", "",
       {"menu:mnuSwitchToView", "-", "actViewNew", "actViewModify", "actViewRename", "-", "actViewMoveLeft",
        "actViewMoveRight", "actViewPrior", "actViewNext", "-", "actViewRemove", "actViewRemoveOthers",
        "actViewRemoveAll"}},
      // Filled with the tabs each time it opens.
      {"mnuSwitchToView", "&Switch To View", {}},
      {"mnuNavMsgType", "",
       {"actNavInfo", "actNavNotes", "actNavWarning", "actNavError", "actNavException", "actNavReminders",
        "actNavCheckPoints", "actNavRed", "actNavOrange", "actNavYellow", "actNavGreen", "actNavBlue", "actNavIndigo",
        "actNavViolet", "actNavEnterMethod", "actNavExitMethod", "actNavTimings", "actNavSeparator",
        "actNavAppStartSeparator", "actNavInactiveSeparator", "actNavResetSeparator", "actNavCustom", "-",
        "actNavMatchAnyType", "-", "actNavTimeDiff", "actNavAutomatic", "-", "actSelectNavMsg"}},
      {"mnuNavMsgContent", "",
       {"actNavText", "actNavStringLists", "actNavObjects", "actNavCollection", "actNavCompAsText", "actNavColor",
        "actNavBitmaps", "actNavTextFiles", "actNavXML", "actNavMemory", "actNavMemoryStatus", "actNavWindows",
        "actNavRegistry", "actNavSystemInfo", "actNavVersionInfo", "actNavStackTrace", "actNavCustomText",
        "actNavCustomProperties", "actNavCustomTable", "actNavCustomHierarchy", "-", "actNavMatchAnyContent", "-",
        "actNavAutomatic", "-", "actSelectNavMsg"}},
      {"mnuToolbars", "", {"actWrapButtons", "actCustomizeToolbars"}},
  };
  return popups;
}

}  // namespace

const TZTMenuDef* PopupDef(const QString& name) {
  for (const TZTMenuDef& def : PopupDefs())
    if (name == QLatin1String(def.Name)) return &def;
  return nullptr;
}

const std::vector<TZTMenuDef>& ToolbarDefs() {
  static const std::vector<TZTMenuDef> bars = {
      {"tbrMain", "Main",
       {"actOpen", "actAppend", "actSave", "actPrint", "-", "actNewProject", "actOpenProject", "actSaveProject", "-",
        "actClearAll", "-", "actViewNew", "actViewModify", "actViewRemove", "-", "actOrganizeMessages",
        "actAutoOrganize", "actAutoOrganizeSettings", "-", "actSelectColumns", "actHideExtraColumns", "-",
        "actViewDetailPanel", "actViewInspector", "actViewScratchPad", "actViewCallStack", "-", "actAutoScroll",
        "actRefresh", "-", "actAutoCollapse", "-", "actFlattenStructure", "-", "actBlockMessages", "-",
        "actOptions"}},
      {"tbrView", "View",
       {"actAddNote", "actAddCheckPoint", "actAddSeparator", "actAddResetSeparator", "-", "actClear", "actDelete",
        "-", "actNavFirst", "actNavPrevious", "widget:btnNavMsgTypeSelect", "widget:btnNavMsgContentSelect",
        "actNavNext", "actNavLast", "-", "actMethodMatch", "actCurrentMethod", "actToggleMethod", "-", "actFind",
        "actFindNext", "-", "menu:mnuBtnToggleBookmarks", "menu:mnuBtnJumpToBookmarks", "actClearBookmarks", "-",
        "actSyncMsgMode"}},
  };
  return bars;
}

void FillMenu(QMenu* menu, const TZTMenuDef& def, const std::function<QAction*(const QString&)>& action) {
  for (const char* item : def.Items) {
    if (std::strcmp(item, "-") == 0) {
      menu->addSeparator();
    } else if (std::strncmp(item, "menu:", 5) == 0) {
      const QString name = QString::fromLatin1(item + 5);
      if (const TZTMenuDef* sub = PopupDef(name)) {
        QMenu* child = menu->addMenu(QString::fromUtf8(sub->Caption));
        child->setObjectName(name);
        if (name.contains(QLatin1String("ToggleBookmarks"))) child->setIcon(ShellGlyph("bookmarktoggle"));
        if (name.contains(QLatin1String("JumpToBookmarks"))) child->setIcon(ShellGlyph("bookmarkjump"));
        FillMenu(child, *sub, action);
      }
    } else if (QAction* a = action(QString::fromLatin1(item))) {
      menu->addAction(a);
    }
  }
}

QMenu* MakePopup(const QString& name, QWidget* parent, const std::function<QAction*(const QString&)>& action) {
  auto* menu = new QMenu(parent);
  menu->setObjectName(name);
  if (const TZTMenuDef* def = PopupDef(name)) {
    menu->setTitle(QString::fromUtf8(def->Caption));
    FillMenu(menu, *def, action);
  }
  return menu;
}

}  // namespace zentrail
