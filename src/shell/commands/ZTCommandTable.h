#pragma once
// The main window's commands as data. Each command is one row: its name, caption, hint, shortcut,
// tag, glyph, handler and the rules for its enabled and checked states. The registry makes one
// QAction per row through one factory, and one loop sets every state from a set of facts that the
// window gathers once per update. Menus, popups and toolbars name the rows; they are data too
// (ZTCommandMenus.h).

#include <QIcon>
#include <QString>
#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

class QAction;
class QWidget;

namespace zentrail {

// What the rules of the commands look at, gathered once per UpdateCommandStates. Nothing here
// grows with the store beyond what the view's own counters cost.
struct TZTCommandFacts {
  bool Rows = false;       // the active view has rows
  bool Focus = false;      // ... and a focused row
  bool Selection = false;  // ... and at least one selected row
  int32_t SelCount = 0;
  int32_t FocusedType = -1;
  int32_t FocusedIndent = 0;
  bool FocusedCollapsed = false;
  // The cached interfaces of the active view.
  bool List = false, Search = false, Methods = false, Print = false, Save = false, Export = false;
  int Views = 0;
  int ActiveTab = -1;
  bool ViewsModified = false;
  bool StoreEmpty = true;
  bool InspectorVisible = false;
  bool FullSize = false;
  bool InspectorCanCopy = false;
  bool InspectorCanPrint = false;
  uint16_t Columns = 0;
  bool SyncMode = false;
  bool NavTimeDiff = false;
  bool NavHasNext = false, NavHasPrevious = false;
  std::array<bool, 10> Bookmarks{};
  bool AnyBookmark = false;
};

// The lists the commands are grouped in.
enum class TZTCommandList { Main, Position, NavMsgType, NavMsgContent, Bookmarks };

using TZTEnabledRule = std::function<bool(const TZTCommandFacts&)>;
using TZTCheckedRule = std::function<bool(const TZTCommandFacts&)>;

struct TZTCommandDef {
  TZTCommandDef(const char* name, const char* caption, const char* hint = "", const char* shortcut = "",
                const char* image = nullptr, std::function<void()> execute = {}, TZTEnabledRule enabled = {},
                TZTCheckedRule checked = {})
      : Name(name),
        Caption(caption),
        Hint(hint),
        Shortcut(shortcut),
        Image(image),
        Execute(std::move(execute)),
        Enabled(std::move(enabled)),
        Checked(std::move(checked)) {}

  const char* Name;
  const char* Caption;      // "&" marks the access key
  const char* Hint;         // empty: the caption stands in for it as tooltip
  const char* Shortcut;     // portable text, "Shift+Ctrl+P"
  const char* Image;        // a shell glyph; rows with images of their own set Icon
  std::function<void()> Execute;
  TZTEnabledRule Enabled;   // empty: always enabled
  TZTCheckedRule Checked;   // empty: no rule (a checkable row may still be checked by its owner)
  int32_t Tag = 0;
  bool Checkable = false;   // implied by a checked rule
  QIcon Icon;
};

// One created command with its row's rules.
struct TZTCommand {
  QString Name;
  QString Category;
  TZTCommandList List;
  QAction* Action;
  TZTEnabledRule Enabled;
  TZTCheckedRule Checked;
};

class TZTCommandRegistry {
 public:
  // owner: the window that owns the actions and hears their shortcuts. onFailure: what a handler
  // raised; the command ends there and the loop never sees an exception.
  TZTCommandRegistry(QWidget& owner, std::function<void(const QString&)> onFailure);

  // The one factory: a QAction per row, named, owned by the window, reachable by its shortcut.
  void Add(const char* category, TZTCommandList list, std::vector<TZTCommandDef> rows);
  QAction* Action(const QString& name) const;
  const std::vector<TZTCommand>& Commands() const { return FCommands; }
  std::vector<QAction*> List(TZTCommandList list) const;
  // Every enabled and checked state from the facts.
  void ApplyStates(const TZTCommandFacts& facts) const;
  bool Empty() const { return FCommands.empty(); }

 private:
  QWidget& FOwner;
  std::function<void(const QString&)> FOnFailure;
  std::vector<TZTCommand> FCommands;
  std::map<QString, QAction*> FByName;
};

}  // namespace zentrail
