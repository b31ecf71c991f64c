#pragma once
// The column choice that the options dialog's "Columns" page and the column dialog share: six
// columns of their own, one time column in three kinds, and buttons for all or none.

#include <QWidget>
#include <array>
#include <cstdint>

class QCheckBox;
class QPushButton;
class QRadioButton;

namespace zentrail {

class TZTColumnsPage : public QWidget {
  Q_OBJECT
 public:
  explicit TZTColumnsPage(QWidget* parent = nullptr);

  // The column bits into the controls: the time box is ticked for any time bit, with its kind.
  void SetColumns(uint16_t bits);
  // The bits the controls give: without a ticked time box no time bit is on.
  uint16_t Columns() const;

  QCheckBox *chkCategory, *chkAppName, *chkComputerName, *chkProcessID, *chkThreadName, *chkDate, *chkTime;
  QRadioButton *optTimeStamp, *optTimeDiff, *optTimeOffset;
  QPushButton *btnAllColumns, *btnMessageTextOnly;

 private:
  void TimeChanged();
  std::array<QCheckBox*, 7> Boxes() const {
    return {chkCategory, chkAppName, chkComputerName, chkProcessID, chkThreadName, chkDate, chkTime};
  }
};

}  // namespace zentrail
