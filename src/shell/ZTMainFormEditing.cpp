// The main window's editing commands: editing a message's text, deleting and cropping rows, and
// the notes, check points and clears that the user makes. Messages made here go down the live
// road, so every view filters and structures them as it would a sender's.
#include "ZTMainForm.h"

#include <QAction>
#include <QDialog>
#include <QStackedWidget>

#include "ZTDateTime.h"
#include "ZTEditForms.h"
#include "ZTPromptService.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

void TFrmViewer::AddNote() {
  IZTMessageView* view = ActiveView();
  if (!view) return;
  TZentrailMessage note;
  note.MsgType = ztmNote;
  note.MsgContent = ztmText;
  note.MsgText = "New Note";
  note.TimeStamp = NowTimeStamp();
  StampWithViewerIdentity(note);
  ProcessMessage(note);
  // The user writes at once. A view that did not take the note opens its last row instead.
  if (FActiveList && view->GetCount() > 0) {
    const int32_t last = view->GetCount() - 1;
    FActiveList->SetFocusedMsgIndex(last);
    FActiveList->EditMessage(last);
  }
  UpdateCommandStates();
}

void TFrmViewer::AddCheckPoint() {
  // Counted for the whole run: a clear does not start the numbers again.
  ++FCheckPointCount;
  TZentrailMessage point;
  point.MsgType = ztmCheckPoint;
  point.MsgContent = ztmText;
  point.MsgText = QStringLiteral("%1: Check Point #%2").arg(FAppName).arg(FCheckPointCount).toStdString();
  point.TimeStamp = NowTimeStamp();
  StampWithViewerIdentity(point);
  ProcessMessage(point);
  UpdateCommandStates();
}

bool TFrmViewer::AskConfirmClear(bool& clearAll) {
  const bool offerClearAll = !clearAll && ViewCount() > 1;
  if (!offerClearAll) {
    return PromptService().AskYesNo(nbkViews, clearAll ? QStringLiteral("Clear All Messages from ALL Views?")
                                                       : QStringLiteral("Clear All Messages from the Current View?"));
  }
  TfrmConfirmClearView form(nbkViews, clearAll, true);
  if (PromptService().RunDialog(form) != QDialog::Accepted) return false;
  clearAll = form.ClearAll();
  return true;
}

}  // namespace zentrail
