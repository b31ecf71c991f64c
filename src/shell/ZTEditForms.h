#pragma once
// The question before a clear, when the user may widen it: "Clear All Messages from the Current
// View?" with a box that makes it a clear of all views.

#include <QDialog>

class QCheckBox;
class QLabel;
class QPushButton;

namespace zentrail {

class TfrmConfirmClearView : public QDialog {
  Q_OBJECT
 public:
  // showClearAll: whether the box that widens the clear is offered (more than one view, and the
  // clear is of the current view).
  TfrmConfirmClearView(QWidget* parent, bool clearAll, bool showClearAll);
  bool ClearAll() const;
  QLabel* Question() const { return lblQuestion; }
  QCheckBox* ClearAllBox() const { return chkClearAll; }
  QPushButton* YesButton() const { return btnYes; }

 private:
  QLabel* lblQuestion;
  QCheckBox* chkClearAll;
  QPushButton* btnYes;
  bool FClearAll;
};

}  // namespace zentrail
