#include "ZTEditForms.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace zentrail {

TfrmConfirmClearView::TfrmConfirmClearView(QWidget* parent, bool clearAll, bool showClearAll)
    : QDialog(parent), FClearAll(clearAll) {
  setObjectName(QStringLiteral("frmConfirmClearView"));
  setWindowTitle(QStringLiteral("Confirm Clear"));
  auto* layout = new QVBoxLayout(this);
  auto* row = new QHBoxLayout;
  auto* icon = new QLabel(this);
  icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxQuestion).pixmap(32, 32));
  row->addWidget(icon, 0, Qt::AlignTop);
  lblQuestion = new QLabel(clearAll ? QStringLiteral("Clear All Messages from ALL Views?")
                                    : QStringLiteral("Clear All Messages from the Current View?"),
                           this);
  lblQuestion->setObjectName(QStringLiteral("lblQuestion"));
  row->addWidget(lblQuestion, 1);
  layout->addLayout(row);
  chkClearAll = new QCheckBox(QStringLiteral("&Clear ALL Views"), this);
  chkClearAll->setObjectName(QStringLiteral("chkClearAll"));
  chkClearAll->setChecked(clearAll);
  chkClearAll->setVisible(showClearAll && !clearAll);
  layout->addWidget(chkClearAll);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  btnYes = new QPushButton(QStringLiteral("&Yes"), this);
  btnYes->setObjectName(QStringLiteral("btnYes"));
  btnYes->setDefault(true);
  auto* btnNo = new QPushButton(QStringLiteral("&No"), this);
  btnNo->setObjectName(QStringLiteral("btnNo"));
  buttons->addWidget(btnYes);
  buttons->addWidget(btnNo);
  layout->addLayout(buttons);
  connect(btnYes, &QPushButton::clicked, this, &QDialog::accept);
  connect(btnNo, &QPushButton::clicked, this, &QDialog::reject);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

bool TfrmConfirmClearView::ClearAll() const { return FClearAll || chkClearAll->isChecked(); }

}  // namespace zentrail
