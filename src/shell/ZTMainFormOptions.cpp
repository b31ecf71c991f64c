// The main window's dialogs of choices: the columns, the toolbars' buttons and the options. Each
// dialog gets the window's state, and on OK the window takes the values back through the setters
// that commands and settings use.
#include "ZTMainForm.h"

#include <QDialog>

#include "ZTColumnsForm.h"
#include "ZTColumnsPage.h"
#include "ZTCommandBar.h"
#include "ZTPromptService.h"
#include "ZTToolbarsForm.h"

namespace zentrail {

void TFrmViewer::SelectColumns() {
  TfrmColumns dialog(this);
  dialog.Page()->SetColumns(FColumnOptions);
  if (PromptService().RunDialog(dialog) != QDialog::Accepted) return;
  const uint16_t columns = dialog.Page()->Columns();
  if (columns == FColumnOptions) return;
  SetColumnOptions(columns);
  if (IZTMessageView* view = ActiveView()) view->Invalidate();
}

void TFrmViewer::CustomizeToolbars() {
  TfrmCustomizeToolbars dialog({tbrMain, tbrView}, this);
  if (PromptService().RunDialog(dialog) != QDialog::Accepted) return;
  SetHiddenToolbarItems(QStringLiteral("tbrMain"), dialog.HiddenItems(0));
  SetHiddenToolbarItems(QStringLiteral("tbrView"), dialog.HiddenItems(1));
}

void TFrmViewer::ShowOptions() {}

}  // namespace zentrail
