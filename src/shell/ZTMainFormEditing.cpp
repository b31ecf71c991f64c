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

void TFrmViewer::CreateEditCommands() {
  AddCommand("actEditMessage", QStringLiteral("&Edit Message"), QStringLiteral("Edit Message"), QKeySequence(Qt::Key_F2),
             nullptr, [this] {
               if (!FActiveList) return;
               const int32_t row = FActiveList->GetFocusedMsgIndex();
               if (row >= 0) FActiveList->EditMessage(row);
               UpdateCommandStates();
             });
  AddCommand("actAddNote", QStringLiteral("Add &Note"), QStringLiteral("Add Note"), {}, "note", [this] { AddNote(); });
  AddCommand("actAddCheckPoint", QStringLiteral("Add Check&Point"), QStringLiteral("Add CheckPoint"), {}, "checkpoint",
             [this] { AddCheckPoint(); });
  QAction* remove = AddCommand("actDelete", QStringLiteral("&Delete"), QStringLiteral("Delete Selected Messages"),
                               QKeySequence(Qt::Key_Delete), "delete", [this] {
                                 if (IZTMessageView* view = ActiveView()) view->DeleteSelection();
                                 UpdateMessageDetails();
                                 UpdateCommandStates();
                               });
  // Del takes rows out only where the rows have the focus; in the scratch pad or an editor the
  // key keeps its own meaning. The views' notebook is made after the commands, so the key is
  // bound to it at the first update of the states.
  removeAction(remove);
  remove->setShortcutContext(Qt::WidgetWithChildrenShortcut);
  AddCommand("actCropToSelection", QStringLiteral("C&rop to Selection"), QString(), {}, nullptr, [this] {
    if (IZTMessageView* view = ActiveView()) view->CropToSelection();
    UpdateMessageDetails();
    UpdateCommandStates();
  });
}

void TFrmViewer::UpdateEditCommandStates(bool hasRows, bool hasFocus, bool hasSelection, int32_t focusedType) {
  auto set = [this](const char* name, bool enabled) {
    if (QAction* a = Action(QString::fromLatin1(name))) a->setEnabled(enabled);
  };
  if (QAction* remove = Action(QStringLiteral("actDelete")); remove && nbkViews && !nbkViews->actions().contains(remove))
    nbkViews->addAction(remove);
  set("actEditMessage", hasFocus && FActiveList && focusedType != ztmSeparator && focusedType != ztmInactiveSeparator);
  set("actDelete", hasRows && hasSelection);
  set("actCropToSelection", hasRows && hasSelection);
}

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
