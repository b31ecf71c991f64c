#include <QBoxLayout>
#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QToolButton>

#include "ZTColorEdit.h"
#include "ZTGlyphs.h"
#include "ZTOptionsPages.h"
#include "ZTPromptService.h"
#include "ZTSound.h"

namespace zentrail {

namespace {

QCheckBox* Check(const char* name, const char* caption, QWidget* parent) {
  auto* box = new QCheckBox(QString::fromUtf8(caption), parent);
  box->setObjectName(QString::fromLatin1(name));
  return box;
}

}  // namespace

TZTOptionsSeparatorsPage::TZTOptionsSeparatorsPage(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("tabSeparators"));
  auto* wake = new QGroupBox(QStringLiteral("Wake-Up"), this);
  spnIdleTime = new QSpinBox(wake);
  spnIdleTime->setObjectName(QStringLiteral("spnIdleTime"));
  spnIdleTime->setRange(0, 600);
  spnIdleTime->setAccessibleName(QStringLiteral("Seconds of inactivity"));
  auto* before = new QLabel(QStringLiteral("If a new message &arrives after"), wake);
  before->setBuddy(spnIdleTime);
  auto* after = new QLabel(QStringLiteral("seconds of inactivity:"), wake);
  auto* idleRow = new QHBoxLayout;
  idleRow->addWidget(before);
  idleRow->addWidget(spnIdleTime);
  idleRow->addWidget(after);
  idleRow->addStretch(1);
  chkInsertSeparatorOnWakeUp = Check("chkInsertSeparatorOnWakeUp", "&Insert Separator", wake);
  chkSoundEffect = Check("chkSoundEffect", "&Play a Sound Effect", wake);
  edtSoundEffect = new QLineEdit(wake);
  edtSoundEffect->setObjectName(QStringLiteral("edtSoundEffect"));
  edtSoundEffect->setAccessibleName(QStringLiteral("Sound Effect File"));
  edtSoundEffect->setPlaceholderText(QStringLiteral("a WAV file"));
  // Disabled, the field shows the button face, so that it reads as off.
  QPalette fieldPalette = edtSoundEffect->palette();
  fieldPalette.setColor(QPalette::Disabled, QPalette::Base, fieldPalette.color(QPalette::Button));
  edtSoundEffect->setPalette(fieldPalette);
  btnBrowseSound = new QToolButton(wake);
  btnBrowseSound->setObjectName(QStringLiteral("btnBrowseSound"));
  btnBrowseSound->setIcon(ShellGlyph("open"));
  btnBrowseSound->setToolTip(QStringLiteral("Choose a Sound File"));
  btnBrowseSound->setAccessibleName(btnBrowseSound->toolTip());
  btnPlaySound = new QToolButton(wake);
  btnPlaySound->setObjectName(QStringLiteral("btnPlaySound"));
  btnPlaySound->setText(QStringLiteral("\u25B6"));
  btnPlaySound->setToolTip(QStringLiteral("Play the Sound"));
  btnPlaySound->setAccessibleName(btnPlaySound->toolTip());
  auto* soundRow = new QHBoxLayout;
  soundRow->setContentsMargins(22, 0, 0, 0);
  soundRow->addWidget(edtSoundEffect, 1);
  soundRow->addWidget(btnBrowseSound);
  soundRow->addWidget(btnPlaySound);
  auto* wakeLayout = new QVBoxLayout(wake);
  wakeLayout->addLayout(idleRow);
  wakeLayout->addWidget(chkInsertSeparatorOnWakeUp);
  wakeLayout->addWidget(chkSoundEffect);
  wakeLayout->addLayout(soundRow);

  auto* start = new QGroupBox(QStringLiteral("Application Start"), this);
  chkInsertSeparatorOnAppStart = Check("chkInsertSeparatorOnAppStart", "Insert Separator on Application &Start", start);
  auto* startLayout = new QVBoxLayout(start);
  startLayout->addWidget(chkInsertSeparatorOnAppStart);

  auto* colours = new QGroupBox(QStringLiteral("Colors"), this);
  auto* form = new QFormLayout(colours);
  auto colour = [&](const char* name, const char* caption) {
    auto* edit = new TZTColorEdit(QString::fromLatin1(name), QString::fromUtf8(caption).remove(QLatin1Char('&')), colours);
    form->addRow(QString::fromUtf8(caption), edit);
    return edit;
  };
  edtSeparatorColor = colour("edtSeparatorColor", "S&eparator Color");
  edtInactiveSeparatorColor = colour("edtInactiveSeparatorColor", "&Wake-Up Separator Color");
  edtAppStartSeparatorColor = colour("edtAppStartSeparatorColor", "Application S&tart Separator Color");

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(wake);
  layout->addWidget(start);
  layout->addWidget(colours);
  layout->addStretch(1);

  connect(chkInsertSeparatorOnWakeUp, &QCheckBox::toggled, this, [this] { UpdateRules(); });
  connect(chkSoundEffect, &QCheckBox::toggled, this, [this] { UpdateRules(); });
  connect(btnBrowseSound, &QToolButton::clicked, this, [this] {
    int filter = 0;
    TZTFileDialogRequest request;
    request.Title = QStringLiteral("Choose a Sound Effect");
    request.Filters = {QStringLiteral("Sound Files (*.wav)"), QStringLiteral("All Files (*)")};
    request.Folder = edtSoundEffect->text();
    const QString file = PromptService().ChooseFile(this, request, filter);
    if (!file.isEmpty()) edtSoundEffect->setText(file);
  });
  connect(btnPlaySound, &QToolButton::clicked, this, [this] {
    static TZTSoundPlayer player;
    player.Play(edtSoundEffect->text());
  });
  QWidget* order[] = {spnIdleTime, chkInsertSeparatorOnWakeUp, chkSoundEffect, edtSoundEffect, btnBrowseSound,
                      btnPlaySound, chkInsertSeparatorOnAppStart, edtSeparatorColor, edtInactiveSeparatorColor,
                      edtAppStartSeparatorColor};
  for (size_t i = 1; i < std::size(order); ++i) setTabOrder(order[i - 1], order[i]);
  UpdateRules();
}

void TZTOptionsSeparatorsPage::UpdateRules() {
  // The idle time matters only while something happens after it.
  spnIdleTime->setEnabled(chkInsertSeparatorOnWakeUp->isChecked() || chkSoundEffect->isChecked());
  const bool sound = chkSoundEffect->isChecked();
  for (QWidget* w : {static_cast<QWidget*>(edtSoundEffect), static_cast<QWidget*>(btnBrowseSound),
                     static_cast<QWidget*>(btnPlaySound)})
    w->setEnabled(sound);
}

void TZTOptionsSeparatorsPage::Load(const TZTViewerOptions& o) {
  spnIdleTime->setValue(o.General.IdleTime);
  chkInsertSeparatorOnWakeUp->setChecked(o.General.InsertSeparatorOnWakeUp);
  chkSoundEffect->setChecked(o.General.SoundEffectOnWakeUp);
  edtSoundEffect->setText(o.General.SoundEffectFile);
  chkInsertSeparatorOnAppStart->setChecked(o.General.InsertSeparatorOnAppStart);
  edtSeparatorColor->SetColor(o.Display.SeparatorColor);
  edtInactiveSeparatorColor->SetColor(o.Display.InactiveSeparatorColor);
  edtAppStartSeparatorColor->SetColor(o.Display.AppStartSeparatorColor);
  UpdateRules();
}

void TZTOptionsSeparatorsPage::Store(TZTViewerOptions& o) const {
  o.General.IdleTime = spnIdleTime->value();
  o.General.InsertSeparatorOnWakeUp = chkInsertSeparatorOnWakeUp->isChecked();
  o.General.SoundEffectOnWakeUp = chkSoundEffect->isChecked();
  o.General.SoundEffectFile = edtSoundEffect->text();
  o.General.InsertSeparatorOnAppStart = chkInsertSeparatorOnAppStart->isChecked();
  o.Display.SeparatorColor = edtSeparatorColor->Color();
  o.Display.InactiveSeparatorColor = edtInactiveSeparatorColor->Color();
  o.Display.AppStartSeparatorColor = edtAppStartSeparatorColor->Color();
}

}  // namespace zentrail
