// The main window's organizer: its step on the road of an arriving message, the scan over the store,
// the settings dialog and its commands; and the command that lists the loaded plug-ins.
#include <QAction>
#include <QStackedWidget>

#include "ZTMainForm.h"
#include "ZTNavigator.h"
#include "ZTOrganizer.h"
#include "ZTOrganizerForm.h"
#include "ZTPromptService.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

namespace {

// The organizer asks the window for its views.
class TZTWindowOrganizerHost : public IZTOrganizerHost {
 public:
  explicit TZTWindowOrganizerHost(TFrmViewer& window) : FWindow(window) {}
  ~TZTWindowOrganizerHost() override {
    if (Organizer().Host() == this) Organizer().SetHost(nullptr);
  }
  void CreateOrganizedView(const std::string& name, TZTOrganizeField field, const std::string& value,
                           bool activate) override {
    TZTFilterCriteria criteria;
    switch (field) {
      case ozAppName:
        criteria.CheckAppName = true;
        criteria.AppName = value;
        break;
      case ozCategory:
        criteria.CheckCategory = true;
        criteria.Category = value;
        break;
      case ozProcessID:
        criteria.CheckProcessID = true;
        criteria.ProcessID = static_cast<uint32_t>(std::stoul(value));
        break;
      case ozThreadName:
        criteria.CheckThreadName = true;
        criteria.ThreadName = value;
        break;
      case ozComputerName:
        criteria.CheckComputerName = true;
        criteria.ComputerName = value;
        break;
    }
    FWindow.CreateView(QString::fromStdString(name), criteria, true, activate, QString());
  }

 private:
  TFrmViewer& FWindow;
};

}  // namespace

void TFrmViewer::SetUpOrganizer() {
  FOrganizerHost = std::make_shared<TZTWindowOrganizerHost>(*this);
  Organizer().SetHost(FOrganizerHost.get());
}

void TFrmViewer::OrganizeArrivingMessage() {
  TZTOrganizer& organizer = Organizer();
  organizer.SetOrganizeBy(OrganizeBy);
  organizer.Organize();
}

void TFrmViewer::OrganizeAllMessages(uint8_t organizeBy) {
  // The views it makes fill themselves from the store; the arriving road is not involved.
  Organizer().OrganizeAll(organizeBy);
  UpdateCommandStates();
}

void TFrmViewer::SetAutoOrganize(bool on) {
  AutoOrganize = on;
  UpdateCommandStates();
  if (on && OrganizeBy != 0 && MessageSet.GetRecordCount() > 0) OrganizeAllMessages(OrganizeBy);
  // Organizing by nothing would do nothing: the user is asked what to organize by.
  if (on && OrganizeBy == 0) AutoOrganizeSettingsCommand();
}

void TFrmViewer::OrganizeMessagesCommand() {
  TfrmOrganizerSettings dialog(nbkViews);
  dialog.InitForOrganizeMessages();
  dialog.SetOrganizeBy(OrganizeBy);
  if (FNavigator->RunDialog(dialog) != QDialog::Accepted) return;
  OrganizeAllMessages(dialog.OrganizeBy());
}

void TFrmViewer::AutoOrganizeSettingsCommand() {
  TfrmOrganizerSettings dialog(nbkViews);
  dialog.SetOrganizeBy(OrganizeBy);
  dialog.SetAutoOrganize(AutoOrganize);
  if (FNavigator->RunDialog(dialog) == QDialog::Accepted) {
    if (dialog.OrganizeBy() != OrganizeBy) OrganizeBy = dialog.OrganizeBy();
    SetAutoOrganize(dialog.AutoOrganize());
  } else if (OrganizeBy == 0 && AutoOrganize) {
    AutoOrganize = false;
    UpdateCommandStates();
  }
}

void TFrmViewer::ShowPlugInDetails() {
  if (auto* manager = dynamic_cast<TInternalPlugInManager*>(PlugInManager)) {
    // The details dialog answers to the same seam as the window's other dialogs.
    manager->RunDialog = [this](QDialog& dialog) { return FNavigator->RunDialog(dialog); };
    manager->ShowPlugInDetails();
  } else {
    PromptService().ShowMessage(nbkViews, QStringLiteral("There are no Zentrail Inspector plug-ins loaded."));
  }
}

}  // namespace zentrail
