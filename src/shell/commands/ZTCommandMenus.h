#pragma once
// The main menu, the popups and the two toolbars as data: each names its commands in order. An
// item is a command's name, "-" for a separator line, "menu:<name>" for a submenu (in a toolbar: a
// button that drops it down) or "widget:<name>" for a control the window makes itself.

#include <QString>
#include <functional>
#include <vector>

class QAction;
class QMenu;
class QWidget;

namespace zentrail {

struct TZTMenuDef {
  const char* Name;     // object name of the menu or toolbar
  const char* Caption;  // "&" marks the access key
  std::vector<const char*> Items;
};

// The eight menus of the menu bar, in order.
const std::vector<TZTMenuDef>& MainMenuDefs();
// Submenus and popups, found by name.
const TZTMenuDef* PopupDef(const QString& name);
// tbrMain and tbrView.
const std::vector<TZTMenuDef>& ToolbarDefs();

// Fills a menu from its items; submenus are made anew from their definitions, so the same
// submenu may stand in several menus.
void FillMenu(QMenu* menu, const TZTMenuDef& def, const std::function<QAction*(const QString&)>& action);
// A menu made from a popup definition.
QMenu* MakePopup(const QString& name, QWidget* parent, const std::function<QAction*(const QString&)>& action);

}  // namespace zentrail
