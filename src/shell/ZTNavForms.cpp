#include "ZTNavForms.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>

#include "ZTGlyphs.h"
#include "ZTImageList.h"
#include "ZTMsgView.h"
#include "ZentrailMessage.h"

namespace zentrail {
namespace {

struct TButtonDef {
  const char* Name;
  const char* Hint;
  int32_t Code;
};

// The filter dialog's type buttons and the four separators, which a view without a type filter
// shows and the user may well want to step between.
const TButtonDef kTypeButtons[] = {
    {"btnInfo", "Info Messages", ztmInfo},
    {"btnNote", "Notes", ztmNote},
    {"btnWarning", "Warning Messages", ztmWarning},
    {"btnError", "Error Messages", ztmError},
    {"btnException", "Exceptions", ztmException},
    {"btnReminder", "Reminders", ztmReminder},
    {"btnCheckPoint", "Check Points", ztmCheckPoint},
    {"btnRed", "Level 1 - Red", ztmLevel1},
    {"btnOrange", "Level 2 - Orange", ztmLevel2},
    {"btnYellow", "Level 3 - Yellow", ztmLevel3},
    {"btnGreen", "Level 4 - Green", ztmLevel4},
    {"btnBlue", "Level 5 - Blue", ztmLevel5},
    {"btnIndigo", "Level 6 - Indigo", ztmLevel6},
    {"btnViolet", "Level 7 - Violet", ztmLevel7},
    {"btnEnterMethod", "Enter Methods", ztmEnterMethod},
    {"btnExitMethod", "Exit Methods", ztmExitMethod},
    {"btnTiming", "Timings", ztmTiming},
    {"btnCustom", "Custom Messages", ztmReserved},
    {"btnSeparator", "Separators", ztmSeparator},
    {"btnInactiveSeparator", "Inactive Separators", ztmInactiveSeparator},
    {"btnResetSeparator", "Reset Indent Separators", ztmResetSeparator},
    {"btnAppStartSeparator", "Application Start Separators", ztmAppStartSeparator},
};

const TButtonDef kContentButtons[] = {
    {"btnText", "Text", ztmText},
    {"btnStringList", "String Lists", ztmStringList},
    {"btnObject", "Objects", ztmObject},
    {"btnCollection", "Collections", ztmCollection},
    {"btnCompAsText", "Components (as Text)", ztmComponentAsText},
    {"btnColor", "Colors", ztmColor},
    {"btnBitmap", "Bitmaps", ztmBitmap},
    {"btnTextFile", "Text Files", ztmTextFile},
    {"btnXML", "XML Data", ztmXmlData},
    {"btnMemory", "Memory", ztmMemory},
    {"btnMemoryStatus", "Memory Status", ztmMemoryStatus},
    {"btnWindow", "Windows", ztmWindow},
    {"btnRegistry", "Registry Entries", ztmRegistry},
    {"btnSystemInfo", "System Information", ztmSystemInfo},
    {"btnVersionInfo", "Version Information", ztmVersionInfo},
    {"btnStackTrace", "Stack Traces", ztmStackTrace},
    {"btnCustomText", "Custom Formats (Text)", ztmCustomText},
    {"btnCustomProperties", "Custom Format (Properties)", ztmCustomProperties},
    {"btnCustomTable", "Custom Format (Table)", ztmCustomTable},
    {"btnCustomHierarchy", "Custom Format (Hierarchy)", ztmCustomHierarchy},
};

constexpr int kButtonsPerRow = 11;

}  // namespace

TfrmSelectNavMsg::TfrmSelectNavMsg(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmSelectNavMsg"));
  setWindowTitle(QStringLiteral("Select Navigation Message"));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(MakeGroup(QStringLiteral("Message Types"), "grpMsgTypes", FTypeButtons, true, chkMatchAnyType,
                              QStringLiteral("Match Any Message Type"), "chkMatchAnyType"));
  grpMsgTypes = findChild<QGroupBox*>(QStringLiteral("grpMsgTypes"));
  layout->addWidget(MakeGroup(QStringLiteral("Message Content"), "grpMsgContent", FContentButtons, false,
                              chkMatchAnyContent, QStringLiteral("Match Any Message Content"), "chkMatchAnyContent"));
  grpMsgContent = findChild<QGroupBox*>(QStringLiteral("grpMsgContent"));

  auto* bottom = new QHBoxLayout;
  chkAutomatic = new QCheckBox(QStringLiteral("Automatic Mode"), this);
  chkAutomatic->setObjectName(QStringLiteral("chkAutomatic"));
  chkAutomatic->setToolTip(QStringLiteral("Take the type and content from each message you select"));
  bottom->addWidget(chkAutomatic);
  bottom->addStretch(1);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  btnOK = buttons->button(QDialogButtonBox::Ok);
  btnOK->setObjectName(QStringLiteral("btnOK"));
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("btnCancel"));
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  bottom->addWidget(buttons);
  layout->addLayout(bottom);
  setFixedSize(sizeHint());
}

QGroupBox* TfrmSelectNavMsg::MakeGroup(const QString& caption, const char* name, std::vector<TButton>& buttons,
                                       bool types, QCheckBox*& matchAny, const QString& matchAnyCaption,
                                       const char* matchAnyName) {
  // The glyphs are the rows' own, so the choice looks like what it finds.
  TZTImageList* images = CreateMessageImageList(this);
  auto* group = new QGroupBox(caption, this);
  group->setObjectName(QString::fromLatin1(name));
  auto* outer = new QVBoxLayout(group);
  auto* grid = new QGridLayout;
  grid->setSpacing(2);
  auto add = [&](const TButtonDef& def) {
    auto* b = new QToolButton(group);
    b->setObjectName(QString::fromLatin1(def.Name));
    b->setToolTip(QString::fromLatin1(def.Hint));
    b->setCheckable(true);
    b->setAutoRaise(false);
    b->setIconSize(QSize(16, 16));
    b->setFixedSize(28, 28);
    b->setIcon(QIcon(NavigatorGlyph(images, def.Code)));
    int index = static_cast<int>(buttons.size());
    grid->addWidget(b, index / kButtonsPerRow, index % kButtonsPerRow);
    buttons.push_back({b, def.Code});
    // One choice per group: pressing a button releases the others; pressing it again leaves none.
    connect(b, &QToolButton::clicked, this, [&buttons, b](bool checked) {
      if (!checked) return;
      for (const TButton& other : buttons)
        if (other.Button != b) other.Button->setChecked(false);
    });
  };
  if (types) {
    for (const TButtonDef& def : kTypeButtons) add(def);
  } else {
    for (const TButtonDef& def : kContentButtons) add(def);
  }
  outer->addLayout(grid);
  matchAny = new QCheckBox(matchAnyCaption, group);
  matchAny->setObjectName(QString::fromLatin1(matchAnyName));
  outer->addWidget(matchAny);
  connect(matchAny, &QCheckBox::toggled, this, [&buttons](bool on) {
    for (const TButton& b : buttons) b.Button->setEnabled(!on);
  });
  return group;
}

void TfrmSelectNavMsg::Press(std::vector<TButton>& buttons, int32_t code) {
  for (const TButton& b : buttons)
    b.Button->setChecked(b.Code == code || (b.Code == ztmReserved && code >= ztmReserved));
}

int32_t TfrmSelectNavMsg::Pressed(const std::vector<TButton>& buttons, int32_t none) {
  for (const TButton& b : buttons)
    if (b.Button->isChecked()) return b.Code;
  return none;
}

void TfrmSelectNavMsg::SetChoice(int32_t msgType, int32_t msgContent, bool automatic) {
  chkMatchAnyType->setChecked(msgType == -1);
  chkMatchAnyContent->setChecked(msgContent == -1);
  Press(FTypeButtons, msgType);
  Press(FContentButtons, msgContent);
  chkAutomatic->setChecked(automatic);
}

void TfrmSelectNavMsg::GetChoice(int32_t& msgType, int32_t& msgContent, bool& automatic) const {
  msgType = chkMatchAnyType->isChecked() ? -1 : Pressed(FTypeButtons, ztmInfo);
  msgContent = chkMatchAnyContent->isChecked() ? -1 : Pressed(FContentButtons, ztmText);
  automatic = chkAutomatic->isChecked();
}

QToolButton* TfrmSelectNavMsg::TypeButton(int32_t code) const {
  for (const TButton& b : FTypeButtons)
    if (b.Code == code) return b.Button;
  return nullptr;
}

QToolButton* TfrmSelectNavMsg::ContentButton(int32_t code) const {
  for (const TButton& b : FContentButtons)
    if (b.Code == code) return b.Button;
  return nullptr;
}

TfrmTimeDiffNav::TfrmTimeDiffNav(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmTimeDiffNav"));
  setWindowTitle(QStringLiteral("Time Difference"));
  auto* layout = new QVBoxLayout(this);
  auto* row = new QHBoxLayout;
  auto* label = new QLabel(QStringLiteral("Time Difference Threshold"), this);
  label->setObjectName(QStringLiteral("lblThreshold"));
  spnThreshold = new QSpinBox(this);
  spnThreshold->setObjectName(QStringLiteral("spnThreshold"));
  spnThreshold->setRange(1000, 60000);
  spnThreshold->setSingleStep(100);
  spnThreshold->setValue(1000);
  label->setBuddy(spnThreshold);
  auto* unit = new QLabel(QStringLiteral("ms"), this);
  unit->setObjectName(QStringLiteral("lblUnit"));
  row->addWidget(label);
  row->addWidget(spnThreshold);
  row->addWidget(unit);
  layout->addLayout(row);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  btnOK = buttons->button(QDialogButtonBox::Ok);
  btnOK->setObjectName(QStringLiteral("btnOK"));
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  layout->addWidget(buttons);
  setFixedSize(sizeHint());
}

void TfrmTimeDiffNav::SetThreshold(int32_t ms) { spnThreshold->setValue(ms); }

int32_t TfrmTimeDiffNav::Threshold() const { return spnThreshold->value(); }

}  // namespace zentrail
