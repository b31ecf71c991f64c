// The Organize menu's commands and the other view tab commands: making, changing, moving and
// removing views, and the organizer.
#include "ZTMainForm.h"

#include <QAction>
#include <QStackedWidget>
#include <exception>

#include "ZTNavigator.h"
#include "ZTPromptService.h"
#include "ZTViewFilterForm.h"

namespace zentrail {

void TFrmViewer::AddOrganizeCommands() {
  auto additionalTab = [](const TZTCommandFacts& f) { return f.ActiveTab > 0; };
  FCommands->Add("Organize", TZTCommandList::Main, {
      {"actViewNew", "&New View...", "Create New View", "Ctrl+N", "newview", [this] { NewView(); }},
      {"actViewModify", "&Modify View...", "Modify View Criteria", "Ctrl+M", "modifyview",
       [this] { ModifyViewCommand(); }, additionalTab},
      {"actViewRemove", "&Remove View", "Remove Current View", "Ctrl+R", "removeview",
       [this] { RemoveView(ActiveViewIndex()); }, additionalTab},
      {"actViewRemoveAll", "Remove All &Views", "Remove All Views", "Shift+Ctrl+R", "removeallviews",
       [this] {
         if (ViewCount() < 2) return;
         if (PromptService().AskYesNo(nbkViews, QStringLiteral("Remove All Views?"), QStringLiteral("Zentrail Viewer")))
           RemoveAllViews();
       },
       [](const TZTCommandFacts& f) { return f.Views > 1; }},
      {"actViewMoveLeft", "Move &Left", "", "Shift+Ctrl+Left", "moveleft",
       [this] {
         const int i = ActiveViewIndex();
         if (i >= 2) MoveView(i, i - 1);
       },
       [](const TZTCommandFacts& f) { return f.ActiveTab >= 2; }},
      {"actViewMoveRight", "Move R&ight", "", "Shift+Ctrl+Right", "moveright",
       [this] {
         const int i = ActiveViewIndex();
         if (i >= 1 && i < ViewCount() - 1) MoveView(i, i + 1);
       },
       [](const TZTCommandFacts& f) { return f.ActiveTab >= 1 && f.ActiveTab < f.Views - 1; }},
      // Both stop at the ends, so each is off where it would do nothing.
      {"actViewPrior", "&Previous View", "", "Ctrl+Left", "viewprior",
       [this] {
         const int i = ActiveViewIndex();
         if (i > 0) SetActiveViewIndex(i - 1);
       },
       [](const TZTCommandFacts& f) { return f.ActiveTab > 0; }},
      {"actViewNext", "Ne&xt View", "", "Ctrl+Right", "viewnext",
       [this] {
         const int i = ActiveViewIndex();
         if (i + 1 < ViewCount()) SetActiveViewIndex(i + 1);
       },
       [](const TZTCommandFacts& f) { return f.ActiveTab + 1 < f.Views; }},
      {"actViewRename", "R&ename View", "Rename Current View", "", nullptr,
       [this] { StartRenameView(ActiveViewIndex()); }, additionalTab},
      {"actViewRemoveOthers", "Close &Other Views", "Remove All Views but the Current One", "", nullptr,
       [this] { RemoveOtherViews(ActiveViewIndex()); },
       [](const TZTCommandFacts& f) { return f.ActiveTab > 0 && f.Views > 2; }},
      {"actOrganizeMessages", "&Organize Messages...", "Organize Messages", "F8", "organize",
       [this] { OrganizeMessagesCommand(); }, [](const TZTCommandFacts& f) { return !f.StoreEmpty; }},
      {"actAutoOrganize", "&Auto-Organize", "Automatically Organize Incoming Messages", "", "autoorganize",
       [this] { SetAutoOrganize(!AutoOrganize); }, {}, [this](const TZTCommandFacts&) { return AutoOrganize; }},
      {"actAutoOrganizeSettings", "Auto-Organize &Settings...", "AutoOrganize Settings", "", "organizesettings",
       [this] { AutoOrganizeSettingsCommand(); }},
  });
}

void TFrmViewer::ModifyViewCommand() {
  IZTMessageView* view = ActiveView();
  if (!view || ActiveViewIndex() <= 0) return;
  TfrmViewFilter dialog(nbkViews);
  dialog.setWindowTitle(QStringLiteral("Modify Current View"));
  dialog.SetHelpKeyword(QStringLiteral("Viewer_Commands_Organize_ModifyView"));
  TZTFilterCriteria criteria;
  view->GetFilterCriteria(criteria);
  dialog.SetCriteria(criteria, view->GetName());
  if (!FActiveList) dialog.DisableFilterCriteria();
  if (FNavigator->RunDialog(dialog) != QDialog::Accepted) return;
  QString name;
  try {
    dialog.GetCriteria(criteria, name);
  } catch (const std::exception&) {
    PromptService().ShowMessage(nbkViews, QStringLiteral("The process ID must be a number."), TZTPromptKind::Error);
    return;
  }
  ModifyView(view, name, criteria);
}

}  // namespace zentrail
