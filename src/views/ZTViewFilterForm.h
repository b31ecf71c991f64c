#pragma once
// The dialog that edits a view's name and filter. The caller hands over the criteria and the name,
// runs the dialog, and on OK reads both back; the dialog itself changes no view.

#include <QDialog>
#include <QString>
#include <QStringList>
#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "ZTCustomViewIntf.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;
class QWidget;

namespace zentrail {

class TZTImageList;

class TfrmViewFilter : public QDialog {
  Q_OBJECT
 public:
  // One toggle button of the message-type panel: the code it stands for, whether it goes to the
  // content set (the buttons below the panel's rule) rather than the type set, its hint and the word
  // it adds to an automatic name.
  struct TTypeButton {
    const char* Name;
    const char* Hint;
    int32_t Code;
    bool Content;
    const char* Word;
  };
  static const std::vector<TTypeButton>& TypeButtons();

  explicit TfrmViewFilter(QWidget* parent);

  // Fills the five combo boxes from the store first (every record), then the controls from the
  // criteria and the name, and offers the automatic name when the name already is that.
  void SetCriteria(const TZTFilterCriteria& criteria, const QString& name);
  // Values of unchecked fields are read back as they stand. A process id that isn't a number throws
  // std::invalid_argument, as the dialog doesn't check it.
  void GetCriteria(TZTFilterCriteria& criteria, QString& name) const;
  // Texts taken from the focused message when a new view is made; no check box changes.
  void SetProposals(const QString& category, const QString& computerName, const QString& appName,
                    const QString& processIdText, const QString& threadName, const QString& msgText);
  // The fixed view's criteria can't be edited: the whole group goes grey.
  void DisableFilterCriteria();
  // The topic that the Help button opens.
  void SetHelpKeyword(const QString& keyword) { FHelpKeyword = keyword; }
  const QString& HelpKeyword() const { return FHelpKeyword; }

  // The name built from the checked criteria, whether or not Auto Name is on.
  QString BuildAutoName() const;

  // Controls, for the caller's finishing touches and for tests. Every control also carries the
  // object name it has here (chkAppName, cbxAppName, btnInfo, ...).
  QLineEdit* ViewName() const { return edtViewName; }
  QCheckBox* AutoName() const { return chkAutoName; }
  QGroupBox* Details() const { return grpDetails; }
  QCheckBox* AppNameCheck() const { return chkAppName; }
  QComboBox* AppNameCombo() const { return cbxAppName; }
  QCheckBox* CategoryCheck() const { return chkCategory; }
  QComboBox* CategoryCombo() const { return cbxCategory; }
  QCheckBox* ComputerNameCheck() const { return chkComputerName; }
  QComboBox* ComputerNameCombo() const { return cbxComputerName; }
  QCheckBox* ProcessIDCheck() const { return chkProcessID; }
  QComboBox* ProcessIDCombo() const { return cbxProcessID; }
  QCheckBox* ThreadNameCheck() const { return chkThreadName; }
  QComboBox* ThreadNameCombo() const { return cbxThreadName; }
  QCheckBox* MessageTextCheck() const { return chkMessageText; }
  QLineEdit* MessageTextEdit() const { return edtMessageText; }
  QLabel* MessageTextLabel() const { return lblMessageText; }
  QCheckBox* MsgTypeCheck() const { return chkMsgType; }
  // The toggle button of a code; content picks the lower part of the panel. Null if none.
  QToolButton* TypeButton(int32_t code, bool content) const;
  QPushButton* SelectAllButton() const { return btnSelectAll; }
  QPushButton* UnselectAllButton() const { return btnUnselectAll; }
  QPushButton* NoFilterButton() const { return btnNoFilter; }
  QPushButton* OkButton() const { return btnOK; }
  QPushButton* CancelButton() const { return btnCancel; }
  QPushButton* HelpButton() const { return btnHelp; }

 private:
  QComboBox* MakeCombo(const char* name);
  void CriterionClicked(QCheckBox* check, QWidget* control);
  void MsgTypeClicked();
  void SetAllButtons(bool pressed);
  void UpdateAutoName();
  void InitAutoName();
  void UpdateOkButton();
  void FillFromStore();
  void OkClicked();

  QLineEdit* edtViewName;
  QLabel* lblViewName;
  QCheckBox* chkAutoName;
  QGroupBox* grpDetails;
  QCheckBox* chkAppName;
  QComboBox* cbxAppName;
  QCheckBox* chkCategory;
  QComboBox* cbxCategory;
  QCheckBox* chkComputerName;
  QComboBox* cbxComputerName;
  QCheckBox* chkProcessID;
  QComboBox* cbxProcessID;
  QCheckBox* chkThreadName;
  QComboBox* cbxThreadName;
  QCheckBox* chkMessageText;
  QLineEdit* edtMessageText;
  QLabel* lblMessageText;
  QCheckBox* chkMsgType;
  QWidget* pnlMsgType;
  std::vector<std::pair<QCheckBox*, QWidget*>> FCriteria;  // in the order of the dialog, top down
  std::vector<QToolButton*> FTypeButtons;  // in the order of TypeButtons()
  QPushButton* btnSelectAll;
  QPushButton* btnUnselectAll;
  QPushButton* btnNoFilter;
  QPushButton* btnOK;
  QPushButton* btnCancel;
  QPushButton* btnHelp;
  TZTImageList* FImages;
  QString FHelpKeyword = QStringLiteral("Viewer_Commands_Organize_NewView");
  bool FLoading = false;
};

}  // namespace zentrail
