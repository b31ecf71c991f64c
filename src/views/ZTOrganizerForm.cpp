#include "ZTOrganizerForm.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace zentrail {

TfrmOrganizerSettings::TfrmOrganizerSettings(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmOrganizerSettings"));
  setWindowTitle(QStringLiteral("Message Organizer Settings"));
  setWindowFlags(windowFlags() & ~Qt::WindowContextHelpButtonHint);

  lblInstructions = new QLabel(
      QStringLiteral("The Zentrail Message Organizer automatically creates new views whenever an incoming message "
                     "contains a new value for the selected fields below."),
      this);
  lblInstructions->setObjectName(QStringLiteral("lblInstructions"));
  lblInstructions->setWordWrap(true);
  chkAutoOrganize = new QCheckBox(QStringLiteral("Auto-&Organize"), this);
  chkAutoOrganize->setObjectName(QStringLiteral("chkAutoOrganize"));

  grpOrganize = new QGroupBox(QStringLiteral("Organize by"), this);
  grpOrganize->setObjectName(QStringLiteral("grpOrganize"));
  auto* group = new QVBoxLayout(grpOrganize);
  auto box = [&](const char* name, const QString& caption) {
    auto* check = new QCheckBox(caption, grpOrganize);
    check->setObjectName(QString::fromLatin1(name));
    group->addWidget(check);
    connect(check, &QCheckBox::toggled, this, [this] { FieldsChanged(); });
    return check;
  };
  chkComputerName = box("chkComputerName", QStringLiteral("Computer &Name"));
  chkAppName = box("chkAppName", QStringLiteral("&Application Name"));
  chkCategory = box("chkCategory", QStringLiteral("&Category"));
  chkProcessID = box("chkProcessID", QStringLiteral("&Process ID"));
  chkThreadName = box("chkThreadName", QStringLiteral("&Thread"));

  auto* buttons = new QDialogButtonBox(this);
  btnOk = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
  btnOk->setObjectName(QStringLiteral("btnOk"));
  btnOk->setDefault(true);
  btnCancel = buttons->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
  btnCancel->setObjectName(QStringLiteral("btnCancel"));
  connect(btnOk, &QPushButton::clicked, this, [this] { OkClicked(); });
  connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(lblInstructions);
  layout->addSpacing(4);
  layout->addWidget(chkAutoOrganize);
  layout->addWidget(grpOrganize);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  lblInstructions->setFixedWidth(300);
  FieldsChanged();
}

QCheckBox* TfrmOrganizerSettings::FieldCheck(TZTOrganizeField field) const {
  switch (field) {
    case ozAppName: return chkAppName;
    case ozCategory: return chkCategory;
    case ozProcessID: return chkProcessID;
    case ozThreadName: return chkThreadName;
    case ozComputerName: return chkComputerName;
  }
  return nullptr;
}

void TfrmOrganizerSettings::InitForOrganizeMessages() {
  chkAutoOrganize->hide();
  setWindowTitle(QStringLiteral("Organize Messages"));
  lblInstructions->setText(
      QStringLiteral("The Zentrail Message Organizer will now scan the message list and create new views based on "
                     "the criteria specified below."));
}

bool TfrmOrganizerSettings::AutoOrganize() const { return chkAutoOrganize->isChecked(); }

void TfrmOrganizerSettings::SetAutoOrganize(bool on) { chkAutoOrganize->setChecked(on); }

TZTOrganizeBy TfrmOrganizerSettings::OrganizeBy() const {
  TZTOrganizeBy set = 0;
  for (int f = 0; f < ztOrganizeFieldCount; ++f)
    if (FieldCheck(static_cast<TZTOrganizeField>(f))->isChecked()) set |= static_cast<TZTOrganizeBy>(1u << f);
  return set;
}

void TfrmOrganizerSettings::SetOrganizeBy(TZTOrganizeBy set) {
  for (int f = 0; f < ztOrganizeFieldCount; ++f)
    FieldCheck(static_cast<TZTOrganizeField>(f))->setChecked((set & (1u << f)) != 0);
  FieldsChanged();
}

void TfrmOrganizerSettings::FieldsChanged() {
  // Organizing automatically by nothing would do nothing.
  chkAutoOrganize->setEnabled(OrganizeBy() != 0);
}

void TfrmOrganizerSettings::OkClicked() {
  if (OrganizeBy() == 0) chkAutoOrganize->setChecked(false);
  accept();
}

}  // namespace zentrail
