#pragma once
// "Print Zentrail Messages": the title, the printer (the platform's printer choice, or a PDF file),
// whether only the selected messages print, the font size and the columns. The form keeps no
// settings of its own: the caller fills it and reads it back.

#include <QDialog>
#include <cstdint>

class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QSpinBox;

namespace zentrail {

class TfrmPrint : public QDialog {
  Q_OBJECT
 public:
  explicit TfrmPrint(QWidget* parent);

  void SetTitle(const QString& title);
  QString Title() const;
  // Without a selection in the view, "Print Selected Messages" is off and greyed, and a label
  // says why.
  void SetSelectionAvailable(bool available);
  void SetPrintSelected(bool selected);
  bool PrintSelected() const;
  void SetFontSize(int32_t size);  // 6 to 36
  int32_t FontSize() const;
  // The column bits, as the view's ColumnOptions; of the three time bits the first set counts.
  void SetColumns(uint16_t columns);
  uint16_t Columns() const;
  // Shows the printer that printing will use.
  void ShowPrinter();

  QLineEdit* edtTitle;
  QLabel* stsPrinter;
  QPushButton* btnChangePrinter;
  QPushButton* btnPrintToPdf;
  QCheckBox* chkPrintSelectedMsgs;
  QLabel* lblNoSelection;
  QSpinBox* spnFontSize;
  QGroupBox* grpColumns;
  QCheckBox *chkCategory, *chkAppName, *chkComputerName, *chkProcessID, *chkThreadName, *chkDate, *chkTime;
  QRadioButton *optTimeStamp, *optTimeDiff, *optTimeOffset;
  QPushButton* btnAllColumns;
  QPushButton* btnOK;

 private:
  void TimeRule();
  void ChangePrinter();
  void PrintToPdf();
};

}  // namespace zentrail
