#include "ZTViewFilterForm.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <unordered_set>

#include "ZTHelp.h"
#include "ZTImageList.h"
#include "ZTMsgView.h"
#include "ZTPromptService.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

namespace {

// Buttons per line of the type panel; both parts of the panel break at the same width.
constexpr int ztButtonsPerLine = 10;
// The custom-type glyph of the message image list stands for code 100.
constexpr int ztCustomImage = 46;

QString FromUtf8(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::string ToUtf8(const QString& text) { return text.toStdString(); }

// Sorted as the user reads them: case ignored, then exact order so that the list is stable.
QStringList SortedTexts(const std::unordered_set<std::string_view>& texts) {
  QStringList list;
  list.reserve(static_cast<qsizetype>(texts.size()));
  for (std::string_view text : texts)
    if (!text.empty()) list.push_back(FromUtf8(text));
  std::sort(list.begin(), list.end(), [](const QString& a, const QString& b) {
    const int c = a.compare(b, Qt::CaseInsensitive);
    return c != 0 ? c < 0 : a < b;
  });
  return list;
}

// The first count characters, never ending inside a surrogate pair.
QString LeftCharacters(const QString& text, qsizetype count) {
  if (text.size() <= count) return text;
  if (text.at(count - 1).isHighSurrogate()) --count;
  return text.left(count);
}

uint32_t ParseProcessID(const QString& text) {
  const QString trimmed = text.trimmed();
  if (trimmed.isEmpty()) return 0;
  bool ok = false;
  const qlonglong value = trimmed.toLongLong(&ok);
  // Both readings of 32 bits are taken: an id above 2^31 may come back from a project as negative.
  if (!ok || value < INT32_MIN || value > UINT32_MAX)
    throw std::invalid_argument("'" + text.toStdString() + "' is not a valid integer value.");
  return static_cast<uint32_t>(value);
}

}  // namespace

const std::vector<TfrmViewFilter::TTypeButton>& TfrmViewFilter::TypeButtons() {
  static const std::vector<TTypeButton> buttons = {
      {"btnInfo", "Info Messages", ztmInfo, false, "Info"},
      {"btnNote", "Notes", ztmNote, false, "Notes"},
      {"btnWarning", "Warning Messages", ztmWarning, false, "Warnings"},
      {"btnError", "Error Messages", ztmError, false, "Errors"},
      {"btnException", "Exceptions", ztmException, false, "Exceptions"},
      {"btnReminder", "Reminders", ztmReminder, false, "Reminders"},
      {"btnCheckPoint", "Check Points", ztmCheckPoint, false, "CheckPoints"},
      {"btnRed", "Level 1 - Red", ztmLevel1, false, "Red"},
      {"btnOrange", "Level 2 - Orange", ztmLevel2, false, "Orange"},
      {"btnYellow", "Level 3 - Yellow", ztmLevel3, false, "Yellow"},
      {"btnGreen", "Level 4 - Green", ztmLevel4, false, "Green"},
      {"btnBlue", "Level 5 - Blue", ztmLevel5, false, "Blue"},
      {"btnIndigo", "Level 6 - Indigo", ztmLevel6, false, "Indigo"},
      {"btnViolet", "Level 7 - Violet", ztmLevel7, false, "Violet"},
      {"btnEnterMethod", "Enter Methods", ztmEnterMethod, false, "EnterMethod"},
      {"btnExitMethod", "Exit Methods", ztmExitMethod, false, "ExitMethod"},
      {"btnTiming", "Timings", ztmTiming, false, "Timings"},
      {"btnCustom", "Custom Messages", ztmReserved, false, "Custom"},
      {"btnText", "Text", ztmText, true, "Text"},
      {"btnStringList", "String Lists", ztmStringList, true, "StringLists"},
      {"btnObject", "Objects", ztmObject, true, "Objects"},
      {"btnCollection", "Collections", ztmCollection, true, "Collections"},
      {"btnCompAsText", "Components (as Text)", ztmComponentAsText, true, "ComponentAsText"},
      {"btnColor", "Colors", ztmColor, true, "Colors"},
      {"btnBitmap", "Bitmaps", ztmBitmap, true, "Bitmaps"},
      {"btnTextFile", "Text Files", ztmTextFile, true, "TextFiles"},
      {"btnXML", "XML Data", ztmXmlData, true, "XmlData"},
      {"btnMemory", "Memory", ztmMemory, true, "Memory"},
      {"btnMemoryStatus", "Memory Status", ztmMemoryStatus, true, "MemoryStatus"},
      {"btnWindow", "Windows", ztmWindow, true, "Window"},
      {"btnRegistry", "Registry Entries", ztmRegistry, true, "Registry"},
      {"btnSystemInfo", "System Information", ztmSystemInfo, true, "SystemInfo"},
      {"btnVersionInfo", "Version Information", ztmVersionInfo, true, "VersionInfo"},
      {"btnStackTrace", "Stack Traces", ztmStackTrace, true, "StackTrace"},
      {"btnCustomText", "Custom Formats (Text)", ztmCustomText, true, "CustomText"},
      {"btnCustomProperties", "Custom Format (Properties)", ztmCustomProperties, true, "CustomProperties"},
      {"btnCustomTable", "Custom Format (Table)", ztmCustomTable, true, "CustomTable"},
      {"btnCustomHierarchy", "Custom Format (Hierarchy)", ztmCustomHierarchy, true, "CustomHierarchy"},
  };
  return buttons;
}

TfrmViewFilter::TfrmViewFilter(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmViewFilter"));
  setWindowTitle(tr("View Filter"));
  FImages = CreateMessageImageList(this);
  auto* layout = new QVBoxLayout(this);

  auto* nameLine = new QHBoxLayout;
  lblViewName = new QLabel(tr("&View Name"), this);
  lblViewName->setObjectName(QStringLiteral("lblViewName"));
  edtViewName = new QLineEdit(this);
  edtViewName->setObjectName(QStringLiteral("edtViewName"));
  lblViewName->setBuddy(edtViewName);
  chkAutoName = new QCheckBox(tr("A&uto Name"), this);
  chkAutoName->setObjectName(QStringLiteral("chkAutoName"));
  nameLine->addWidget(lblViewName);
  nameLine->addWidget(edtViewName, 1);
  nameLine->addWidget(chkAutoName);
  layout->addLayout(nameLine);

  grpDetails = new QGroupBox(tr("Filter Details"), this);
  grpDetails->setObjectName(QStringLiteral("grpDetails"));
  auto* details = new QHBoxLayout(grpDetails);

  // Left: one check box per criterion, its control beside it.
  auto* criteria = new QGridLayout;
  criteria->setColumnStretch(1, 1);
  auto addRow = [&](QCheckBox*& check, const char* name, const QString& caption, QWidget* control, int row) {
    check = new QCheckBox(caption, grpDetails);
    check->setObjectName(QString::fromLatin1(name));
    criteria->addWidget(check, row, 0);
    criteria->addWidget(control, row, 1);
    connect(check, &QCheckBox::toggled, this, [this, check, control] { CriterionClicked(check, control); });
    FCriteria.push_back({check, control});
  };
  cbxAppName = MakeCombo("cbxAppName");
  addRow(chkAppName, "chkAppName", tr("&Application Name"), cbxAppName, 0);
  cbxCategory = MakeCombo("cbxCategory");
  addRow(chkCategory, "chkCategory", tr("&Category"), cbxCategory, 1);
  cbxComputerName = MakeCombo("cbxComputerName");
  addRow(chkComputerName, "chkComputerName", tr("Computer &Name"), cbxComputerName, 2);
  cbxProcessID = MakeCombo("cbxProcessID");
  addRow(chkProcessID, "chkProcessID", tr("&Process ID"), cbxProcessID, 3);
  cbxThreadName = MakeCombo("cbxThreadName");
  addRow(chkThreadName, "chkThreadName", tr("&Thread"), cbxThreadName, 4);
  edtMessageText = new QLineEdit(grpDetails);
  edtMessageText->setObjectName(QStringLiteral("edtMessageText"));
  connect(edtMessageText, &QLineEdit::textChanged, this, [this] { UpdateAutoName(); });
  addRow(chkMessageText, "chkMessageText", tr("&Message Text"), edtMessageText, 5);
  lblMessageText = new QLabel(tr("Enter text or regular expression"), grpDetails);
  lblMessageText->setObjectName(QStringLiteral("lblMessageText"));
  criteria->addWidget(lblMessageText, 6, 1);
  criteria->setRowStretch(7, 1);
  details->addLayout(criteria, 1);

  auto* rule = new QFrame(grpDetails);
  rule->setFrameShape(QFrame::VLine);
  rule->setFrameShadow(QFrame::Sunken);
  details->addWidget(rule);

  // Right: the message types above the panel's rule, the contents below it.
  auto* types = new QVBoxLayout;
  chkMsgType = new QCheckBox(tr("&Message Types and Contents"), grpDetails);
  chkMsgType->setObjectName(QStringLiteral("chkMsgType"));
  connect(chkMsgType, &QCheckBox::toggled, this, [this] { MsgTypeClicked(); });
  types->addWidget(chkMsgType);
  pnlMsgType = new QWidget(grpDetails);
  pnlMsgType->setObjectName(QStringLiteral("pnlMsgType"));
  auto* panel = new QVBoxLayout(pnlMsgType);
  panel->setContentsMargins(0, 0, 0, 0);
  auto* typeGrid = new QGridLayout;
  auto* contentGrid = new QGridLayout;
  typeGrid->setSpacing(2);
  contentGrid->setSpacing(2);
  int typeCount = 0, contentCount = 0;
  for (const TTypeButton& def : TypeButtons()) {
    auto* button = new QToolButton(pnlMsgType);
    button->setObjectName(QString::fromLatin1(def.Name));
    button->setCheckable(true);
    button->setAutoRaise(false);
    button->setToolTip(tr(def.Hint));
    button->setAccessibleName(tr(def.Hint));
    // The buttons keep the focus where it was, so a click never takes it from the name.
    button->setFocusPolicy(Qt::NoFocus);
    const int image = def.Code == ztmReserved ? ztCustomImage : def.Code;
    if (FImages->HasImage(image)) button->setIcon(QIcon(FImages->Image(image)));
    button->setIconSize(QSize(16, 16));
    button->setFixedSize(26, 26);
    connect(button, &QToolButton::toggled, this, [this] { UpdateAutoName(); });
    int& count = def.Content ? contentCount : typeCount;
    (def.Content ? contentGrid : typeGrid)->addWidget(button, count / ztButtonsPerLine, count % ztButtonsPerLine);
    ++count;
    FTypeButtons.push_back(button);
  }
  panel->addLayout(typeGrid);
  auto* panelRule = new QFrame(pnlMsgType);
  panelRule->setFrameShape(QFrame::HLine);
  panelRule->setFrameShadow(QFrame::Sunken);
  panel->addWidget(panelRule);
  panel->addLayout(contentGrid);
  types->addWidget(pnlMsgType);
  auto* selectLine = new QHBoxLayout;
  btnSelectAll = new QPushButton(tr("&Select All"), grpDetails);
  btnSelectAll->setObjectName(QStringLiteral("btnSelectAll"));
  btnUnselectAll = new QPushButton(tr("&Unselect All"), grpDetails);
  btnUnselectAll->setObjectName(QStringLiteral("btnUnselectAll"));
  btnSelectAll->setAutoDefault(false);
  btnUnselectAll->setAutoDefault(false);
  connect(btnSelectAll, &QPushButton::clicked, this, [this] { SetAllButtons(true); });
  connect(btnUnselectAll, &QPushButton::clicked, this, [this] { SetAllButtons(false); });
  selectLine->addWidget(btnSelectAll);
  selectLine->addWidget(btnUnselectAll);
  selectLine->addStretch(1);
  types->addLayout(selectLine);
  types->addStretch(1);
  details->addLayout(types);
  layout->addWidget(grpDetails, 1);

  auto* buttons = new QHBoxLayout;
  btnNoFilter = new QPushButton(tr("No Filter"), this);
  btnNoFilter->setObjectName(QStringLiteral("btnNoFilter"));
  btnNoFilter->setAutoDefault(false);
  connect(btnNoFilter, &QPushButton::clicked, this, [this] {
    for (QCheckBox* check :
         {chkAppName, chkCategory, chkComputerName, chkProcessID, chkThreadName, chkMessageText, chkMsgType})
      check->setChecked(false);
  });
  buttons->addWidget(btnNoFilter);
  buttons->addStretch(1);
  btnOK = new QPushButton(tr("OK"), this);
  btnOK->setObjectName(QStringLiteral("btnOK"));
  btnOK->setDefault(true);
  connect(btnOK, &QPushButton::clicked, this, [this] { OkClicked(); });
  btnCancel = new QPushButton(tr("Cancel"), this);
  btnCancel->setObjectName(QStringLiteral("btnCancel"));
  btnCancel->setAutoDefault(false);
  connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
  btnHelp = new QPushButton(tr("Help"), this);
  btnHelp->setObjectName(QStringLiteral("btnHelp"));
  btnHelp->setAutoDefault(false);
  connect(btnHelp, &QPushButton::clicked, this, [this] { ShowHelpTopic(FHelpKeyword); });
  buttons->addWidget(btnOK);
  buttons->addWidget(btnCancel);
  buttons->addWidget(btnHelp);
  layout->addLayout(buttons);

  // Only the user's own typing gives up the automatic name; the name the dialog writes doesn't.
  connect(edtViewName, &QLineEdit::textEdited, this, [this] {
    if (edtViewName->hasFocus()) chkAutoName->setChecked(false);
  });
  connect(edtViewName, &QLineEdit::textChanged, this, [this] { UpdateOkButton(); });
  connect(chkAutoName, &QCheckBox::toggled, this, [this](bool on) {
    if (!on) edtViewName->setFocus();
    UpdateAutoName();
  });

  // A new dialog shows an empty filter: every control follows its box.
  FLoading = true;
  for (const auto& [check, control] : FCriteria) CriterionClicked(check, control);
  MsgTypeClicked();
  FLoading = false;
  UpdateOkButton();
}

QComboBox* TfrmViewFilter::MakeCombo(const char* name) {
  auto* combo = new QComboBox(grpDetails);
  combo->setObjectName(QString::fromLatin1(name));
  combo->setEditable(true);
  combo->setInsertPolicy(QComboBox::NoInsert);
  combo->setMinimumWidth(180);
  combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  connect(combo, &QComboBox::editTextChanged, this, [this] { UpdateAutoName(); });
  return combo;
}

QToolButton* TfrmViewFilter::TypeButton(int32_t code, bool content) const {
  const auto& defs = TypeButtons();
  for (size_t i = 0; i < defs.size(); ++i)
    if (defs[i].Code == code && defs[i].Content == content) return FTypeButtons[i];
  return nullptr;
}

void TfrmViewFilter::CriterionClicked(QCheckBox* check, QWidget* control) {
  const bool on = check->isChecked();
  control->setEnabled(on);
  if (control == edtMessageText) lblMessageText->setEnabled(on);
  // While the caller hands over criteria, the focus stays where the dialog put it.
  if (on && !FLoading) control->setFocus();
  UpdateAutoName();
}

void TfrmViewFilter::MsgTypeClicked() {
  const bool on = chkMsgType->isChecked();
  pnlMsgType->setEnabled(on);
  btnSelectAll->setEnabled(on);
  btnUnselectAll->setEnabled(on);
  if (!on) SetAllButtons(false);
  UpdateAutoName();
}

void TfrmViewFilter::SetAllButtons(bool pressed) {
  for (QToolButton* button : FTypeButtons) {
    const QSignalBlocker blocker(button);
    button->setChecked(pressed);
  }
  UpdateAutoName();
}

QString TfrmViewFilter::BuildAutoName() const {
  QStringList parts;
  if (chkAppName->isChecked()) parts << cbxAppName->currentText();
  if (chkCategory->isChecked()) parts << cbxCategory->currentText();
  if (chkComputerName->isChecked()) parts << cbxComputerName->currentText();
  if (chkProcessID->isChecked()) parts << QStringLiteral("PID=") + cbxProcessID->currentText();
  if (chkThreadName->isChecked()) parts << QStringLiteral("Thread=") + cbxThreadName->currentText();
  if (chkMessageText->isChecked()) parts << QStringLiteral("Text=") + LeftCharacters(edtMessageText->text(), 40);
  if (chkMsgType->isChecked()) {
    QStringList words;
    const auto& defs = TypeButtons();
    for (size_t i = 0; i < defs.size(); ++i)
      if (FTypeButtons[i]->isChecked()) words << QString::fromLatin1(defs[i].Word);
    if (!words.isEmpty()) parts << QStringLiteral("MsgTypes=") + words.join(QLatin1Char(','));
  }
  return parts.join(QStringLiteral(" | "));
}

void TfrmViewFilter::UpdateAutoName() {
  if (!chkAutoName->isChecked()) return;
  const QString name = BuildAutoName();
  if (edtViewName->text() != name) edtViewName->setText(name);
}

void TfrmViewFilter::InitAutoName() {
  const QSignalBlocker blocker(chkAutoName);
  chkAutoName->setChecked(edtViewName->text() == BuildAutoName());
}

void TfrmViewFilter::UpdateOkButton() { btnOK->setEnabled(!edtViewName->text().isEmpty()); }

void TfrmViewFilter::FillFromStore() {
  QApplication::setOverrideCursor(Qt::WaitCursor);
  struct TCursorGuard {
    ~TCursorGuard() { QApplication::restoreOverrideCursor(); }
  } cursorGuard;
  // The store interns its identity texts, so the views stay valid and few distinct values exist.
  std::unordered_set<std::string_view> categories, computers, apps, threads;
  std::unordered_set<uint32_t> pids;
  TZentrailMessageSet& ms = MessageSet;
  const int32_t saved = ms.RecNo;
  const int32_t count = ms.GetRecordCount();
  // Neighbouring records mostly come from one sender, whose interned texts are the very same
  // bytes: those skip the hashing.
  struct TLast {
    const char* Data = nullptr;
    size_t Size = 0;
  };
  std::array<TLast, 4> last{};
  uint32_t lastPid = 0;
  bool anyPid = false;
  auto note = [](std::unordered_set<std::string_view>& set, TLast& prev, std::string_view text) {
    if (text.data() == prev.Data && text.size() == prev.Size) return;
    prev = {text.data(), text.size()};
    set.insert(text);
  };
  for (int32_t rec = 1; rec <= count; ++rec) {
    ms.GotoRec(rec);
    note(categories, last[0], ms.GetCategory());
    note(computers, last[1], ms.GetComputerName());
    note(apps, last[2], ms.GetAppName());
    note(threads, last[3], ms.GetThreadName());
    const uint32_t pid = ms.GetProcessID();
    if (!anyPid || pid != lastPid) pids.insert(pid);
    lastPid = pid;
    anyPid = true;
  }
  if (saved >= 1 && saved <= count) ms.GotoRec(saved);
  std::vector<std::string> pidTexts;
  pidTexts.reserve(pids.size());
  for (uint32_t pid : pids) pidTexts.push_back(std::to_string(pid));
  std::unordered_set<std::string_view> pidViews(pidTexts.begin(), pidTexts.end());
  auto fill = [](QComboBox* combo, const QStringList& items) {
    const QString text = combo->currentText();
    combo->clear();
    combo->addItems(items);
    combo->setCurrentText(text);
  };
  fill(cbxCategory, SortedTexts(categories));
  fill(cbxComputerName, SortedTexts(computers));
  fill(cbxAppName, SortedTexts(apps));
  fill(cbxProcessID, SortedTexts(pidViews));
  fill(cbxThreadName, SortedTexts(threads));
}

void TfrmViewFilter::SetCriteria(const TZTFilterCriteria& criteria, const QString& name) {
  FillFromStore();
  FLoading = true;
  struct TLoadingGuard {
    bool& Flag;
    ~TLoadingGuard() { Flag = false; }
  } loadingGuard{FLoading};
  // The name first and Auto Name off, so that filling the controls leaves the given name alone.
  {
    const QSignalBlocker blocker(chkAutoName);
    chkAutoName->setChecked(false);
  }
  edtViewName->setText(name);
  cbxAppName->setCurrentText(FromUtf8(criteria.AppName));
  cbxCategory->setCurrentText(FromUtf8(criteria.Category));
  cbxComputerName->setCurrentText(FromUtf8(criteria.ComputerName));
  cbxProcessID->setCurrentText(criteria.ProcessID == 0 ? QString() : QString::number(criteria.ProcessID));
  cbxThreadName->setCurrentText(FromUtf8(criteria.ThreadName));
  edtMessageText->setText(FromUtf8(criteria.MessageText));
  // The controls follow their boxes also where a box didn't change.
  const std::array<bool, 6> checks = {criteria.CheckAppName,    criteria.CheckCategory,   criteria.CheckComputerName,
                                      criteria.CheckProcessID,  criteria.CheckThreadName, criteria.CheckMessageText};
  for (size_t i = 0; i < FCriteria.size(); ++i) {
    const auto& [check, control] = FCriteria[i];
    {
      const QSignalBlocker blocker(check);
      check->setChecked(checks[i]);
    }
    CriterionClicked(check, control);
  }
  {
    const QSignalBlocker blocker(chkMsgType);
    chkMsgType->setChecked(criteria.CheckMsgTypes);
  }
  MsgTypeClicked();
  if (criteria.CheckMsgTypes) {
    const auto& defs = TypeButtons();
    for (size_t i = 0; i < defs.size(); ++i) {
      const TZTFilterMsgTypeSet& set = defs[i].Content ? criteria.MsgContentSet : criteria.MsgTypeSet;
      const QSignalBlocker blocker(FTypeButtons[i]);
      FTypeButtons[i]->setChecked(set.test(static_cast<size_t>(defs[i].Code)));
    }
  }
  InitAutoName();
  UpdateOkButton();
}

void TfrmViewFilter::GetCriteria(TZTFilterCriteria& criteria, QString& name) const {
  TZTFilterCriteria c;
  c.CheckAppName = chkAppName->isChecked();
  c.AppName = ToUtf8(cbxAppName->currentText());
  c.CheckCategory = chkCategory->isChecked();
  c.Category = ToUtf8(cbxCategory->currentText());
  c.CheckProcessID = chkProcessID->isChecked();
  c.ProcessID = ParseProcessID(cbxProcessID->currentText());
  c.CheckThreadName = chkThreadName->isChecked();
  c.ThreadName = ToUtf8(cbxThreadName->currentText());
  c.CheckComputerName = chkComputerName->isChecked();
  c.ComputerName = ToUtf8(cbxComputerName->currentText());
  c.CheckMessageText = chkMessageText->isChecked();
  c.MessageText = ToUtf8(edtMessageText->text());
  c.CheckMsgTypes = chkMsgType->isChecked();
  const auto& defs = TypeButtons();
  for (size_t i = 0; i < defs.size(); ++i)
    if (FTypeButtons[i]->isChecked())
      (defs[i].Content ? c.MsgContentSet : c.MsgTypeSet).set(static_cast<size_t>(defs[i].Code));
  criteria = std::move(c);
  name = edtViewName->text();
}

void TfrmViewFilter::SetProposals(const QString& category, const QString& computerName, const QString& appName,
                                  const QString& processIdText, const QString& threadName, const QString& msgText) {
  cbxCategory->setCurrentText(category);
  cbxComputerName->setCurrentText(computerName);
  cbxAppName->setCurrentText(appName);
  cbxProcessID->setCurrentText(processIdText);
  cbxThreadName->setCurrentText(threadName);
  edtMessageText->setText(msgText);
}

void TfrmViewFilter::DisableFilterCriteria() { grpDetails->setEnabled(false); }

void TfrmViewFilter::OkClicked() {
  // An edit control commits its text when it loses the focus.
  btnOK->setFocus();
  QString message = tr("Incomplete Filter:");
  QWidget* focusTarget = nullptr;
  auto check = [&](QCheckBox* box, const QString& text, QWidget* control, const QString& line) {
    if (!box->isChecked() || !text.isEmpty()) return;
    message += QLatin1Char('\r') + line;
    focusTarget = control;
  };
  check(chkMessageText, edtMessageText->text(), edtMessageText, tr("Please specify a message sub-string."));
  check(chkThreadName, cbxThreadName->currentText(), cbxThreadName, tr("Please specify a Thread Name or ID."));
  check(chkProcessID, cbxProcessID->currentText(), cbxProcessID, tr("Please specify a Process ID."));
  check(chkComputerName, cbxComputerName->currentText(), cbxComputerName, tr("Please specify a Computer Name."));
  check(chkCategory, cbxCategory->currentText(), cbxCategory, tr("Please specify a Category."));
  check(chkAppName, cbxAppName->currentText(), cbxAppName, tr("Please specify an Application Name."));
  if (focusTarget) {
    PromptService().ShowMessage(grpDetails, message, TZTPromptKind::Warning);
    focusTarget->setFocus();
    return;
  }
  accept();
}

}  // namespace zentrail
