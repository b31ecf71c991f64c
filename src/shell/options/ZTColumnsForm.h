#pragma once
// TfrmColumns, the dialog of Select Columns: the column choice of the options dialog on its own.

#include <QDialog>
#include <cstdint>

class QPushButton;

namespace zentrail {

class TZTColumnsPage;

class TfrmColumns : public QDialog {
  Q_OBJECT
 public:
  explicit TfrmColumns(QWidget* parent = nullptr);
  TZTColumnsPage* Page() const { return FPage; }
  QPushButton* btnOK = nullptr;
  QPushButton* btnCancel = nullptr;

 private:
  TZTColumnsPage* FPage;
};

}  // namespace zentrail
