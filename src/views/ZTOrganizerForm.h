#pragma once
// The organizer's settings dialog: which of the five fields make views, and (except when it is
// shown for the one-off Organize Messages) whether the organizer runs on every arriving message.

#include <QDialog>

#include "ZTOrganizer.h"

class QCheckBox;
class QGroupBox;
class QLabel;
class QPushButton;

namespace zentrail {

class TfrmOrganizerSettings : public QDialog {
  Q_OBJECT
 public:
  explicit TfrmOrganizerSettings(QWidget* parent);

  // The form of the command Organize Messages: no Auto-Organize box, other caption and text.
  void InitForOrganizeMessages();
  bool AutoOrganize() const;
  void SetAutoOrganize(bool on);
  TZTOrganizeBy OrganizeBy() const;
  void SetOrganizeBy(TZTOrganizeBy set);

  QLabel* Instructions() const { return lblInstructions; }
  QCheckBox* AutoOrganizeCheck() const { return chkAutoOrganize; }
  // The box of a field (ozAppName ... ozComputerName).
  QCheckBox* FieldCheck(TZTOrganizeField field) const;
  QPushButton* OkButton() const { return btnOk; }
  QPushButton* CancelButton() const { return btnCancel; }

 private:
  void FieldsChanged();
  void OkClicked();

  QLabel* lblInstructions;
  QCheckBox* chkAutoOrganize;
  QGroupBox* grpOrganize;
  QCheckBox* chkComputerName;
  QCheckBox* chkAppName;
  QCheckBox* chkCategory;
  QCheckBox* chkProcessID;
  QCheckBox* chkThreadName;
  QPushButton* btnOk;
  QPushButton* btnCancel;
};

}  // namespace zentrail
