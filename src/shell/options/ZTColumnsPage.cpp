#include "ZTColumnsPage.h"

#include <QBoxLayout>
#include <QButtonGroup>
#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>

#include "ZTMsgView.h"

namespace zentrail {

namespace {

QCheckBox* Box(const char* name, const char* caption, QWidget* parent) {
  auto* box = new QCheckBox(QString::fromUtf8(caption), parent);
  box->setObjectName(QString::fromLatin1(name));
  return box;
}

QRadioButton* Option(const char* name, const char* caption, QWidget* parent) {
  auto* option = new QRadioButton(QString::fromUtf8(caption), parent);
  option->setObjectName(QString::fromLatin1(name));
  return option;
}

constexpr uint16_t kOwnBits[] = {ztcoCategory, ztcoAppName, ztcoComputerName, ztcoProcessID, ztcoThreadName, ztcoDate};

}  // namespace

TZTColumnsPage::TZTColumnsPage(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("tabMsgDetails"));
  auto* group = new QGroupBox(QStringLiteral("Message Columns"), this);
  chkCategory = Box("chkCategory", "&Category", group);
  chkAppName = Box("chkAppName", "&Application Name", group);
  chkComputerName = Box("chkComputerName", "Computer &Name", group);
  chkProcessID = Box("chkProcessID", "&Process ID", group);
  chkThreadName = Box("chkThreadName", "Th&read", group);
  chkDate = Box("chkDate", "&Date", group);
  chkTime = Box("chkTime", "&Time", group);
  optTimeStamp = Option("optTimeStamp", "Time &Stamp", group);
  optTimeDiff = Option("optTimeDiff", "Time Di&fference", group);
  optTimeOffset = Option("optTimeOffset", "Time &Offset", group);
  // Not exclusive by themselves: with no time column none of the three is chosen.
  auto* kinds = new QButtonGroup(this);
  kinds->setExclusive(false);
  for (QRadioButton* o : {optTimeStamp, optTimeDiff, optTimeOffset}) {
    o->setAutoExclusive(false);
    kinds->addButton(o);
  }
  connect(kinds, &QButtonGroup::buttonToggled, this, [this](QAbstractButton* button, bool on) {
    if (!on) return;
    for (QRadioButton* o : {optTimeStamp, optTimeDiff, optTimeOffset})
      if (o != button) o->setChecked(false);
  });

  auto* grid = new QGridLayout(group);
  grid->setColumnMinimumWidth(0, 16);
  QCheckBox* left[] = {chkCategory, chkAppName, chkComputerName, chkProcessID};
  for (int i = 0; i < 4; ++i) grid->addWidget(left[i], i, 0, 1, 2);
  grid->addWidget(chkThreadName, 0, 2, 1, 2);
  grid->addWidget(chkDate, 1, 2, 1, 2);
  grid->addWidget(chkTime, 2, 2, 1, 2);
  auto* timeKinds = new QVBoxLayout;
  timeKinds->setContentsMargins(20, 0, 0, 0);
  for (QRadioButton* o : {optTimeStamp, optTimeDiff, optTimeOffset}) timeKinds->addWidget(o);
  grid->addLayout(timeKinds, 3, 2, 3, 2);
  grid->setColumnStretch(1, 1);
  grid->setColumnStretch(3, 1);

  btnAllColumns = new QPushButton(QStringLiteral("All Columns"), this);
  btnAllColumns->setObjectName(QStringLiteral("btnAllColumns"));
  btnAllColumns->setAutoDefault(false);
  btnMessageTextOnly = new QPushButton(QStringLiteral("Message Text Only"), this);
  btnMessageTextOnly->setObjectName(QStringLiteral("btnMessageTextOnly"));
  btnMessageTextOnly->setAutoDefault(false);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(btnAllColumns);
  buttons->addWidget(btnMessageTextOnly);
  buttons->addStretch(1);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(group);
  layout->addLayout(buttons);
  layout->addStretch(1);

  connect(chkTime, &QCheckBox::toggled, this, [this] { TimeChanged(); });
  connect(btnAllColumns, &QPushButton::clicked, this, [this] {
    for (QCheckBox* box : Boxes()) box->setChecked(true);
  });
  connect(btnMessageTextOnly, &QPushButton::clicked, this, [this] {
    for (QCheckBox* box : Boxes()) box->setChecked(false);
  });
  // Keys walk the boxes in reading order, then the time kinds, then the buttons.
  QWidget* order[] = {chkCategory, chkAppName,    chkComputerName, chkProcessID,  chkThreadName,     chkDate,
                      chkTime,     optTimeStamp,  optTimeDiff,     optTimeOffset, btnAllColumns, btnMessageTextOnly};
  for (size_t i = 1; i < std::size(order); ++i) setTabOrder(order[i - 1], order[i]);
  TimeChanged();
}

void TZTColumnsPage::TimeChanged() {
  const bool on = chkTime->isChecked();
  for (QRadioButton* o : {optTimeStamp, optTimeDiff, optTimeOffset}) o->setEnabled(on);
  if (on && !optTimeStamp->isChecked() && !optTimeDiff->isChecked() && !optTimeOffset->isChecked())
    optTimeStamp->setChecked(true);
}

void TZTColumnsPage::SetColumns(uint16_t bits) {
  for (size_t i = 0; i < 6; ++i) Boxes()[i]->setChecked((bits & kOwnBits[i]) != 0);
  optTimeStamp->setChecked((bits & ztcoTimeStamp) != 0);
  optTimeDiff->setChecked((bits & ztcoTimeDiff) != 0 && !(bits & ztcoTimeStamp));
  optTimeOffset->setChecked((bits & ztcoTimeOffset) != 0 && !(bits & (ztcoTimeStamp | ztcoTimeDiff)));
  chkTime->setChecked((bits & ztcoTimeColumn) != 0);
  TimeChanged();
}

uint16_t TZTColumnsPage::Columns() const {
  uint16_t bits = 0;
  for (size_t i = 0; i < 6; ++i)
    if (Boxes()[i]->isChecked()) bits |= kOwnBits[i];
  if (chkTime->isChecked()) {
    if (optTimeStamp->isChecked()) bits |= ztcoTimeStamp;
    if (optTimeDiff->isChecked()) bits |= ztcoTimeDiff;
    if (optTimeOffset->isChecked()) bits |= ztcoTimeOffset;
  }
  return bits;
}

}  // namespace zentrail
