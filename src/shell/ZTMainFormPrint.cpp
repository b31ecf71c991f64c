// The main window's printing of the active view: the print form, then the view prints on the
// printer that the form shows.
#include "ZTMainForm.h"

#include <QGuiApplication>
#include <QStackedWidget>
#include <stdexcept>

#include "ZTPrintForm.h"
#include "ZTPromptService.h"

namespace zentrail {

void TFrmViewer::PrintMessages() {
  IZTMessageView* view = ActiveView();
  if (!FActivePrint || !view) return;
  TfrmPrint form(this);
  form.SetTitle(view->GetName());
  bool selection = false;
  for (int32_t row = 0; row < view->GetCount() && !selection; ++row) selection = view->GetSelected(row);
  form.SetSelectionAvailable(selection);
  form.SetPrintSelected(PrintSelection);
  form.SetFontSize(PrintFontSize);
  form.SetColumns(FHideExtraColumns ? 0 : FColumnOptions);
  if (PromptService().RunDialog(form) != QDialog::Accepted) return;
  // The choices stay for the next print, and in the settings file.
  if (selection) PrintSelection = form.PrintSelected();
  PrintFontSize = form.FontSize();
  QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  QString failure;
  try {
    FActivePrint->Print(form.Title(), form.PrintSelected(), form.FontSize(), form.Columns());
  } catch (const std::exception& e) {
    failure = QString::fromUtf8(e.what());
  }
  QGuiApplication::restoreOverrideCursor();
  if (!failure.isEmpty()) PromptService().ShowMessage(nbkViews, failure, TZTPromptKind::Error);
}

}  // namespace zentrail
