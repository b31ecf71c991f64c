// The Edit menu's commands: editing, copying, the messages the user adds, deleting and clearing.
#include "ZTMainForm.h"

#include <QAction>

#include "ZTInspectorPane.h"

namespace zentrail {

void TFrmViewer::AddEditCommands() {
  FCommands->Add("Edit", TZTCommandList::Main, {
      {"actEditMessage", "&Edit Message", "Edit Message", "F2", "edit",
       [this] {
         if (!FActiveList) return;
         const int32_t row = FActiveList->GetFocusedMsgIndex();
         if (row >= 0) FActiveList->EditMessage(row);
         UpdateCommandStates();
       },
       [](const TZTCommandFacts& f) {
         return f.Focus && f.List && f.FocusedType != ztmSeparator && f.FocusedType != ztmInactiveSeparator;
       }},
      {"actCopyMessageText", "&Copy Selected Messages", "Copy Selected Message Text to Clipboard", "Ctrl+C", "copy",
       [this] {
         if (IZTMessageView* v = ActiveView()) v->CopyToClipboard();
       },
       [](const TZTCommandFacts& f) { return f.Selection; }},
      {"actCopyInspectorContents", "Copy &Inspector Contents", "Copy Inspector Pane Contents to Clipboard",
       "Shift+Ctrl+C", "copyinspector",
       [this] {
         if (FInspectorPane) FInspectorPane->CopyInspectorContents();
       },
       [](const TZTCommandFacts& f) { return f.Focus && f.InspectorCanCopy; }},
      {"actAddNote", "Add &Note", "Add Note", "", "note", [this] { AddNote(); }},
      {"actAddCheckPoint", "Add Check&Point", "Add CheckPoint", "", "checkpoint", [this] { AddCheckPoint(); }},
      {"actAddSeparator", "Add &Separator", "Add Separator", "", "separator", [this] { AddSeparator(nullptr); }},
      {"actAddResetSeparator", "Add &Reset Separator", "Add Reset Indent Level Separator", "", "resetseparator",
       [this] { AddResetSeparator(nullptr); }},
      {"actDelete", "&Delete", "Delete Selected Messages", "Del", "delete",
       [this] {
         if (IZTMessageView* view = ActiveView()) view->DeleteSelection();
         UpdateMessageDetails();
         UpdateCommandStates();
       },
       [](const TZTCommandFacts& f) { return f.Rows && f.Selection; }},
      {"actCropToSelection", "Cr&op to Selection", "", "", "crop",
       [this] {
         if (IZTMessageView* view = ActiveView()) view->CropToSelection();
         UpdateMessageDetails();
         UpdateCommandStates();
       },
       [](const TZTCommandFacts& f) { return f.Rows && f.Selection; }},
      {"actClear", "C&lear", "Clear", "Ctrl+Del", "clear", [this] { ConfirmAndClear(false); },
       [](const TZTCommandFacts& f) { return f.Rows; }},
      {"actClearAll", "Clear &All Views", "Clear All Views", "Shift+Ctrl+Del", "clearall",
       [this] { ConfirmAndClear(true); }},
      {"actSelectAll", "Selec&t All", "Select All Messages", "Ctrl+A", "selectall",
       [this] {
         if (IZTMessageView* v = ActiveView()) v->SelectAll();
         UpdateCommandStates();
       },
       [](const TZTCommandFacts& f) { return f.Rows && f.List; }},
  });
  // Del takes rows out only where the rows have the focus; in the scratch pad or an editor the key
  // keeps its own meaning. The views' notebook takes the action once it exists.
  QAction* remove = Action(QStringLiteral("actDelete"));
  removeAction(remove);
  remove->setShortcutContext(Qt::WidgetWithChildrenShortcut);
}

}  // namespace zentrail
