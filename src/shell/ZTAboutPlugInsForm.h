#pragma once
// The dialog that lists the loaded inspector plug-ins and tells, for the chosen one, its content
// code, version, description and where its author is found.

#include <QDialog>
#include <functional>

class QLabel;
class QListWidget;
class QPushButton;

namespace zentrail {

class TInternalPlugInManager;

class TfrmAboutPlugIns : public QDialog {
  Q_OBJECT
 public:
  TfrmAboutPlugIns(QWidget* parent, TInternalPlugInManager& manager);

  // Fills the list (sorted) and runs the dialog with the first entry chosen. With no inspector,
  // only a message says so and the dialog does not open.
  void ShowPlugInDetails(const std::function<int(QDialog&)>& run);
  // Shows the details of the selected entry; blank labels when there is none.
  void lstPlugInsClick();

  QListWidget* PlugInList() const { return lstPlugIns; }
  QLabel* LongDescription() const { return lblLongDesc; }
  QLabel* MsgType() const { return lblMsgType; }
  QLabel* Version() const { return lblVersion; }
  QLabel* Email() const { return lblEmail; }
  QLabel* WebSite() const { return lblWebSite; }

 private:
  void ClearLabels();

  TInternalPlugInManager& FManager;
  QListWidget* lstPlugIns;
  QLabel* lblLongDesc;
  QLabel* lblMsgType;
  QLabel* lblVersion;
  QLabel* lblEmail;
  QLabel* lblWebSite;
  QPushButton* btnOK;
};

}  // namespace zentrail
