// The main window's printing of the active view.
#include "ZTMainForm.h"

namespace zentrail {

void TFrmViewer::PrintMessages() {
  if (!FActivePrint) return;
  FActivePrint->Print(QString(), false, PrintFontSize, FColumnOptions);
}

}  // namespace zentrail
