#include "ZTToolbarsForm.h"

#include <QBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>

#include "ZTCommandBar.h"

namespace zentrail {

TfrmCustomizeToolbars::TfrmCustomizeToolbars(const std::vector<TZTCommandBar*>& bars, QWidget* parent)
    : QDialog(parent) {
  setObjectName(QStringLiteral("frmCustomizeToolbars"));
  setWindowTitle(QStringLiteral("Customize Toolbars"));
  auto* lists = new QHBoxLayout;
  QWidget* previous = nullptr;
  for (TZTCommandBar* bar : bars) {
    auto* column = new QVBoxLayout;
    auto* list = new QListWidget(this);
    list->setObjectName(QStringLiteral("lst") + bar->objectName());
    auto* label = new QLabel(QStringLiteral("&%1 Toolbar").arg(bar->Title()), this);
    label->setBuddy(list);
    list->setAccessibleName(label->text().remove(QLatin1Char('&')));
    for (const TZTCommandBar::TZTBarItem& item : bar->Items()) {
      auto* row = new QListWidgetItem(item.Icon, item.Caption, list);
      row->setData(Qt::UserRole, item.Name);
      row->setFlags(row->flags() | Qt::ItemIsUserCheckable);
      row->setCheckState(bar->HiddenItems().contains(item.Name) ? Qt::Unchecked : Qt::Checked);
    }
    list->setMinimumSize(230, 360);
    column->addWidget(label);
    column->addWidget(list);
    lists->addLayout(column);
    if (previous) setTabOrder(previous, list);
    previous = list;
    FLists.push_back(list);
  }
  btnReset = new QPushButton(QStringLiteral("Show &All"), this);
  btnReset->setObjectName(QStringLiteral("btnReset"));
  btnReset->setAutoDefault(false);
  connect(btnReset, &QPushButton::clicked, this, [this] {
    for (QListWidget* list : FLists)
      for (int i = 0; i < list->count(); ++i) list->item(i)->setCheckState(Qt::Checked);
  });
  btnOK = new QPushButton(QStringLiteral("OK"), this);
  btnOK->setObjectName(QStringLiteral("btnOK"));
  btnOK->setDefault(true);
  btnCancel = new QPushButton(QStringLiteral("Cancel"), this);
  btnCancel->setObjectName(QStringLiteral("btnCancel"));
  connect(btnOK, &QPushButton::clicked, this, &QDialog::accept);
  connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(btnReset);
  buttons->addStretch(1);
  buttons->addWidget(btnOK);
  buttons->addWidget(btnCancel);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(new QLabel(QStringLiteral("Tick the buttons each toolbar shows."), this));
  layout->addLayout(lists, 1);
  layout->addLayout(buttons);
  if (previous) setTabOrder(previous, btnReset);
  setTabOrder(btnReset, btnOK);
  setTabOrder(btnOK, btnCancel);
}

QSet<QString> TfrmCustomizeToolbars::HiddenItems(size_t bar) const {
  QSet<QString> hidden;
  const QListWidget* list = FLists[bar];
  for (int i = 0; i < list->count(); ++i)
    if (list->item(i)->checkState() != Qt::Checked) hidden.insert(list->item(i)->data(Qt::UserRole).toString());
  return hidden;
}

}  // namespace zentrail
