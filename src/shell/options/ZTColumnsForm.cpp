#include "ZTColumnsForm.h"

#include <QBoxLayout>
#include <QPushButton>

#include "ZTColumnsPage.h"

namespace zentrail {

TfrmColumns::TfrmColumns(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmColumns"));
  setWindowTitle(QStringLiteral("Select Message Columns"));
  FPage = new TZTColumnsPage(this);
  btnOK = new QPushButton(QStringLiteral("OK"), this);
  btnOK->setObjectName(QStringLiteral("btnOK"));
  btnOK->setDefault(true);
  btnCancel = new QPushButton(QStringLiteral("Cancel"), this);
  btnCancel->setObjectName(QStringLiteral("btnCancel"));
  connect(btnOK, &QPushButton::clicked, this, &QDialog::accept);
  connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(btnOK);
  buttons->addWidget(btnCancel);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(FPage);
  layout->addLayout(buttons);
  setTabOrder(FPage->btnMessageTextOnly, btnOK);
  setTabOrder(btnOK, btnCancel);
}

}  // namespace zentrail
