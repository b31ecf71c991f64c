#include "ZTCommandTable.h"

#include <QAction>
#include <QKeySequence>
#include <QWidget>
#include <exception>
#include <stdexcept>

#include "ZTGlyphs.h"

namespace zentrail {

TZTCommandRegistry::TZTCommandRegistry(QWidget& owner, std::function<void(const QString&)> onFailure)
    : FOwner(owner), FOnFailure(std::move(onFailure)) {}

void TZTCommandRegistry::Add(const char* category, TZTCommandList list, std::vector<TZTCommandDef> rows) {
  for (TZTCommandDef& row : rows) {
    const QString name = QString::fromLatin1(row.Name);
    if (FByName.count(name)) throw std::logic_error("command defined twice: " + name.toStdString());
    auto* action = new QAction(QString::fromUtf8(row.Caption), &FOwner);
    action->setObjectName(name);
    const QString hint = QString::fromUtf8(row.Hint);
    action->setToolTip(hint.isEmpty() ? QString::fromUtf8(row.Caption).remove(QLatin1Char('&')) : hint);
    action->setStatusTip(hint);
    if (row.Shortcut[0]) action->setShortcut(QKeySequence(QString::fromLatin1(row.Shortcut), QKeySequence::PortableText));
    action->setData(row.Tag);
    if (!row.Icon.isNull()) {
      action->setIcon(row.Icon);
    } else if (row.Image) {
      action->setIcon(ShellGlyph(row.Image));
    }
    action->setCheckable(row.Checkable || static_cast<bool>(row.Checked));
    action->setProperty("category", QString::fromLatin1(category));
    QObject::connect(action, &QAction::triggered, &FOwner,
                     [execute = std::move(row.Execute), onFailure = FOnFailure] {
                       if (!execute) return;
                       try {
                         execute();
                       } catch (const std::exception& e) {
                         if (onFailure) onFailure(QString::fromUtf8(e.what()));
                       }
                     });
    FOwner.addAction(action);
    FByName[name] = action;
    FCommands.push_back(TZTCommand{name, QString::fromLatin1(category), list, action, std::move(row.Enabled),
                                   std::move(row.Checked)});
  }
}

QAction* TZTCommandRegistry::Action(const QString& name) const {
  auto it = FByName.find(name);
  return it == FByName.end() ? nullptr : it->second;
}

std::vector<QAction*> TZTCommandRegistry::List(TZTCommandList list) const {
  std::vector<QAction*> out;
  for (const TZTCommand& c : FCommands)
    if (c.List == list) out.push_back(c.Action);
  return out;
}

void TZTCommandRegistry::ApplyStates(const TZTCommandFacts& facts) const {
  for (const TZTCommand& c : FCommands) {
    if (c.Enabled) c.Action->setEnabled(c.Enabled(facts));
    if (c.Checked) c.Action->setChecked(c.Checked(facts));
  }
}

}  // namespace zentrail
