#include "ZTPrintForm.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "ZTMsgView.h"
#include "ZTMsgViewPrint.h"
#include "ZTPromptService.h"

namespace zentrail {

TfrmPrint::TfrmPrint(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmPrint"));
  setWindowTitle(QStringLiteral("Print Zentrail Messages"));
  auto* layout = new QVBoxLayout(this);
  auto* form = new QFormLayout;
  edtTitle = new QLineEdit(this);
  edtTitle->setObjectName(QStringLiteral("edtTitle"));
  edtTitle->setMinimumWidth(320);
  form->addRow(QStringLiteral("&Title:"), edtTitle);

  auto* printerRow = new QHBoxLayout;
  stsPrinter = new QLabel(this);
  stsPrinter->setObjectName(QStringLiteral("stsPrinter"));
  stsPrinter->setFrameShape(QFrame::StyledPanel);
  printerRow->addWidget(stsPrinter, 1);
  btnChangePrinter = new QPushButton(QStringLiteral("Change Printer..."), this);
  btnChangePrinter->setObjectName(QStringLiteral("btnChangePrinter"));
  btnChangePrinter->setAutoDefault(false);
  printerRow->addWidget(btnChangePrinter);
  btnPrintToPdf = new QPushButton(QStringLiteral("Print to PDF File..."), this);
  btnPrintToPdf->setObjectName(QStringLiteral("btnPrintToPdf"));
  btnPrintToPdf->setAutoDefault(false);
  printerRow->addWidget(btnPrintToPdf);
  form->addRow(QStringLiteral("Printer:"), printerRow);
  layout->addLayout(form);

  chkPrintSelectedMsgs = new QCheckBox(QStringLiteral("Print Selected Messages"), this);
  chkPrintSelectedMsgs->setObjectName(QStringLiteral("chkPrintSelectedMsgs"));
  layout->addWidget(chkPrintSelectedMsgs);
  lblNoSelection = new QLabel(QStringLiteral("No messages selected in view"), this);
  lblNoSelection->setObjectName(QStringLiteral("lblNoSelection"));
  lblNoSelection->setStyleSheet(QStringLiteral("color: #800000;"));
  lblNoSelection->hide();
  layout->addWidget(lblNoSelection);

  auto* sizeRow = new QHBoxLayout;
  spnFontSize = new QSpinBox(this);
  spnFontSize->setObjectName(QStringLiteral("spnFontSize"));
  spnFontSize->setRange(6, 36);
  spnFontSize->setValue(8);
  auto* sizeLabel = new QLabel(QStringLiteral("&Font Size:"), this);
  sizeLabel->setBuddy(spnFontSize);
  sizeRow->addWidget(sizeLabel);
  sizeRow->addWidget(spnFontSize);
  sizeRow->addStretch(1);
  layout->addLayout(sizeRow);

  grpColumns = new QGroupBox(QStringLiteral("Columns"), this);
  grpColumns->setObjectName(QStringLiteral("grpColumns"));
  auto* grid = new QGridLayout(grpColumns);
  auto check = [this](const char* name, const QString& caption) {
    auto* box = new QCheckBox(caption, grpColumns);
    box->setObjectName(QString::fromLatin1(name));
    return box;
  };
  chkCategory = check("chkCategory", QStringLiteral("&Category"));
  chkAppName = check("chkAppName", QStringLiteral("&Application Name"));
  chkComputerName = check("chkComputerName", QStringLiteral("Computer &Name"));
  chkProcessID = check("chkProcessID", QStringLiteral("&Process ID"));
  chkThreadName = check("chkThreadName", QStringLiteral("Th&read"));
  chkDate = check("chkDate", QStringLiteral("&Date"));
  chkTime = check("chkTime", QStringLiteral("&Time"));
  optTimeStamp = new QRadioButton(QStringLiteral("Time &Stamp"), grpColumns);
  optTimeStamp->setObjectName(QStringLiteral("optTimeStamp"));
  optTimeDiff = new QRadioButton(QStringLiteral("Time Di&fference"), grpColumns);
  optTimeDiff->setObjectName(QStringLiteral("optTimeDiff"));
  optTimeOffset = new QRadioButton(QStringLiteral("Time &Offset"), grpColumns);
  optTimeOffset->setObjectName(QStringLiteral("optTimeOffset"));
  btnAllColumns = new QPushButton(QStringLiteral("All Columns"), grpColumns);
  btnAllColumns->setObjectName(QStringLiteral("btnAllColumns"));
  btnAllColumns->setAutoDefault(false);
  grid->addWidget(chkCategory, 0, 0);
  grid->addWidget(chkAppName, 1, 0);
  grid->addWidget(chkComputerName, 2, 0);
  grid->addWidget(chkProcessID, 3, 0);
  grid->addWidget(chkThreadName, 0, 1);
  grid->addWidget(chkDate, 1, 1);
  grid->addWidget(chkTime, 2, 1);
  grid->addWidget(optTimeStamp, 0, 2);
  grid->addWidget(optTimeDiff, 1, 2);
  grid->addWidget(optTimeOffset, 2, 2);
  grid->addWidget(btnAllColumns, 3, 2);
  layout->addWidget(grpColumns);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  btnOK = buttons->button(QDialogButtonBox::Ok);
  btnOK->setObjectName(QStringLiteral("btnOK"));
  layout->addWidget(buttons);

  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(chkTime, &QCheckBox::toggled, this, [this] { TimeRule(); });
  connect(btnAllColumns, &QPushButton::clicked, this, [this] {
    for (QCheckBox* box : {chkCategory, chkAppName, chkComputerName, chkProcessID, chkThreadName, chkDate, chkTime})
      box->setChecked(true);
  });
  connect(btnChangePrinter, &QPushButton::clicked, this, [this] { ChangePrinter(); });
  connect(btnPrintToPdf, &QPushButton::clicked, this, [this] { PrintToPdf(); });
  TimeRule();
  ShowPrinter();
}

void TfrmPrint::SetTitle(const QString& title) { edtTitle->setText(title); }
QString TfrmPrint::Title() const { return edtTitle->text(); }

void TfrmPrint::SetSelectionAvailable(bool available) {
  chkPrintSelectedMsgs->setEnabled(available);
  lblNoSelection->setVisible(!available);
}

void TfrmPrint::SetPrintSelected(bool selected) { chkPrintSelectedMsgs->setChecked(selected); }
bool TfrmPrint::PrintSelected() const { return chkPrintSelectedMsgs->isEnabled() && chkPrintSelectedMsgs->isChecked(); }

void TfrmPrint::SetFontSize(int32_t size) { spnFontSize->setValue(size); }
int32_t TfrmPrint::FontSize() const { return spnFontSize->value(); }

void TfrmPrint::SetColumns(uint16_t columns) {
  chkCategory->setChecked(columns & ztcoCategory);
  chkAppName->setChecked(columns & ztcoAppName);
  chkComputerName->setChecked(columns & ztcoComputerName);
  chkProcessID->setChecked(columns & ztcoProcessID);
  chkThreadName->setChecked(columns & ztcoThreadName);
  chkDate->setChecked(columns & ztcoDate);
  optTimeStamp->setChecked(columns & ztcoTimeStamp);
  optTimeDiff->setChecked(!(columns & ztcoTimeStamp) && (columns & ztcoTimeDiff));
  optTimeOffset->setChecked(!(columns & (ztcoTimeStamp | ztcoTimeDiff)) && (columns & ztcoTimeOffset));
  chkTime->setChecked(columns & ztcoTimeColumn);
  TimeRule();
}

uint16_t TfrmPrint::Columns() const {
  uint16_t columns = 0;
  if (chkCategory->isChecked()) columns |= ztcoCategory;
  if (chkAppName->isChecked()) columns |= ztcoAppName;
  if (chkComputerName->isChecked()) columns |= ztcoComputerName;
  if (chkProcessID->isChecked()) columns |= ztcoProcessID;
  if (chkThreadName->isChecked()) columns |= ztcoThreadName;
  if (chkDate->isChecked()) columns |= ztcoDate;
  if (chkTime->isChecked()) {
    if (optTimeStamp->isChecked()) columns |= ztcoTimeStamp;
    if (optTimeDiff->isChecked()) columns |= ztcoTimeDiff;
    if (optTimeOffset->isChecked()) columns |= ztcoTimeOffset;
  }
  return columns;
}

void TfrmPrint::TimeRule() {
  const bool on = chkTime->isChecked();
  for (QRadioButton* option : {optTimeStamp, optTimeDiff, optTimeOffset}) option->setEnabled(on);
  if (on && !optTimeStamp->isChecked() && !optTimeDiff->isChecked() && !optTimeOffset->isChecked())
    optTimeStamp->setChecked(true);
}

void TfrmPrint::ShowPrinter() { stsPrinter->setText(ViewPrinterName()); }

void TfrmPrint::ChangePrinter() {
  QPrintDialog dialog(&ViewPrinter(), this);
  dialog.setOption(QAbstractPrintDialog::PrintPageRange, false);
  dialog.setOption(QAbstractPrintDialog::PrintSelection, false);
  PromptService().RunDialog(dialog);
  ShowPrinter();
}

void TfrmPrint::PrintToPdf() {
  TZTFileDialogRequest request;
  request.Save = true;
  request.Title = QStringLiteral("Print to PDF File");
  request.Filters = {QStringLiteral("PDF Files (*.pdf)")};
  request.DefaultSuffix = QStringLiteral("pdf");
  QPrinter& printer = ViewPrinter();
  request.Folder = printer.outputFileName().isEmpty() ? QDir::homePath() : QFileInfo(printer.outputFileName()).absolutePath();
  int filter = 0;
  const QString file = PromptService().ChooseFile(this, request, filter);
  if (file.isEmpty()) return;
  printer.setOutputFormat(QPrinter::PdfFormat);
  printer.setOutputFileName(file);
  ShowPrinter();
}

}  // namespace zentrail
