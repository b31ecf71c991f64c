// The main window's side of the command table: making the commands, menus and toolbars from their
// data, and UpdateCommandStates, the one routine that brings every command's state up to date.
#include "ZTMainForm.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QStackedWidget>
#include <QTabBar>
#include <QToolButton>

#include "ZTCommandBar.h"
#include "ZTCommandMenus.h"
#include "ZTDetailPanel.h"
#include "ZTGlyphs.h"
#include "ZTInspectorPane.h"
#include "ZTNavigator.h"
#include "ZTPromptService.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

QAction* TFrmViewer::Action(const QString& name) const { return FCommands ? FCommands->Action(name) : nullptr; }

void TFrmViewer::CreateCommands() {
  // The navigator's choices and the bookmarks carry glyphs from its image lists.
  FNavigator->CreateImages();
  FCommands = std::make_unique<TZTCommandRegistry>(*this, [this](const QString& failure) {
    // Qt's loop must never see an exception: a failed command is told to the user and ends there.
    PromptService().ShowMessage(nbkViews ? static_cast<QWidget*>(nbkViews) : this, failure, TZTPromptKind::Error);
    UpdateCommandStates();
  });
  AddFileCommands();
  AddEditCommands();
  AddSearchCommands();
  AddViewCommands();
  AddMethodCommands();
  AddOrganizeCommands();
  AddToolsCommands();
  AddHelpCommands();
  SetUpOrganizer();
}

QMenu* TFrmViewer::MakeMenu(const QString& name) {
  return MakePopup(name, this, [this](const QString& n) { return Action(n); });
}

void TFrmViewer::CreateMenus() {
  const auto lookup = [this](const QString& n) { return Action(n); };
  QMenuBar* bar = menuBar();
  bar->setAccessibleName(QStringLiteral("Main Menu"));
  for (const TZTMenuDef& def : MainMenuDefs()) {
    QMenu* menu = bar->addMenu(QString::fromUtf8(def.Caption));
    menu->setObjectName(QString::fromLatin1(def.Name));
    FillMenu(menu, def, lookup);
  }
  mnuMessageList = MakeMenu(QStringLiteral("mnuMessageList"));
  mnuMsgDetailsPopup = MakeMenu(QStringLiteral("mnuMsgDetailsPopup"));
  pnlMsgDetails->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(pnlMsgDetails, &QWidget::customContextMenuRequested, this,
          [this](const QPoint& pos) { mnuMsgDetailsPopup->popup(pnlMsgDetails->mapToGlobal(pos)); });
  mnuToolbars = MakeMenu(QStringLiteral("mnuToolbars"));
  FNavigator->BindCommands(FCommands->List(TZTCommandList::NavMsgType), FCommands->List(TZTCommandList::NavMsgContent),
                           FCommands->List(TZTCommandList::Bookmarks), MakeMenu(QStringLiteral("mnuNavMsgType")),
                           MakeMenu(QStringLiteral("mnuNavMsgContent")));
  // Del belongs to the rows: the views' notebook hears it, not the whole window.
  nbkViews->addAction(Action(QStringLiteral("actDelete")));
}

void TFrmViewer::CreateToolbars() {
  for (const TZTMenuDef& def : ToolbarDefs()) {
    TZTCommandBar* bar = Toolbar(QString::fromLatin1(def.Name));
    if (!bar) continue;
    for (const char* item : def.Items) {
      const QString name = QString::fromLatin1(item);
      if (name == QLatin1String("-")) {
        bar->AddSeparator();
      } else if (name.startsWith(QLatin1String("widget:"))) {
        if (auto* w = findChild<QWidget*>(name.mid(7))) bar->AddWidget(w->objectName(), w);
      } else if (name.startsWith(QLatin1String("menu:"))) {
        // A drop-down button: mnuBtnToggleBookmarks gives btnToggleBookmarks.
        const QString menuName = name.mid(5);
        QMenu* menu = MakeMenu(menuName);
        menu->setIcon(ShellGlyph(menuName.contains(QLatin1String("Toggle")) ? "bookmarktoggle" : "bookmarkjump"));
        QString buttonName = menuName;
        buttonName.replace(QLatin1String("mnuBtn"), QLatin1String("btn"));
        bar->AddMenuButton(buttonName, menu, menu->title().remove(QLatin1Char('&')));
      } else if (QAction* a = Action(name)) {
        bar->AddAction(a);
      }
    }
    bar->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(bar, &QWidget::customContextMenuRequested, this,
            [this, bar](const QPoint& pos) { ShowToolbarsMenu(bar->mapToGlobal(pos)); });
  }
}

void TFrmViewer::ShowToolbarsMenu(const QPoint& globalPos) { mnuToolbars->popup(globalPos); }

TZTCommandBar* TFrmViewer::Toolbar(const QString& name) const {
  if (name == QLatin1String("tbrMain")) return tbrMain;
  if (name == QLatin1String("tbrView")) return tbrView;
  return nullptr;
}

// ---------------------------------------------------------------------------------------------------
// States

TZTCommandFacts TFrmViewer::GatherCommandFacts() {
  TZTCommandFacts f;
  IZTMessageView* view = ActiveView();
  f.Rows = view && view->GetCount() > 0;
  const int32_t focused = FActiveList ? FActiveList->GetFocusedMsgIndex() : -1;
  f.Focus = f.Rows && focused >= 0;
  f.SelCount = view ? view->GetSelCount() : 0;
  f.Selection = f.SelCount > 0;
  f.List = FActiveList != nullptr;
  f.Search = FActiveSearch != nullptr;
  f.Methods = FActiveMethods != nullptr;
  f.Print = FActivePrint != nullptr;
  f.Save = FActiveSave != nullptr;
  f.Export = FActiveExport != nullptr;
  f.Views = ViewCount();
  f.ActiveTab = ActiveViewIndex();
  f.ViewsModified = FViewsModified;
  f.StoreEmpty = MessageSet.GetRecordCount() == 0;
  f.InspectorVisible = FInspectorVisible;
  f.FullSize = FFullSizeInspector;
  f.Columns = FColumnOptions;
  if (f.Focus) {
    // The rules of the focused message read it from the store.
    FActiveList->SelectCurrentRecord();
    f.FocusedType = MessageSet.GetMsgType();
    if (FActiveMethods) f.FocusedCollapsed = FActiveMethods->IsCurrentMethodCollapsed();
    f.FocusedIndent = FActiveList->GetIndentLevel(focused);
    f.InspectorCanCopy = FInspectorVisible && FInspectorPane && FInspectorPane->CanCopyContents();
    f.InspectorCanPrint = FInspectorVisible && FInspectorPane && FInspectorPane->CanPrintContents();
  }
  FNavigator->GatherFacts(f);
  return f;
}

void TFrmViewer::UpdateToggleMethodCommand(const TZTCommandFacts& f) {
  QAction* toggle = Action(QStringLiteral("actToggleMethod"));
  static const QIcon expand = ShellGlyph("expandmethod");
  static const QIcon collapse = ShellGlyph("collapsemethod");
  toggle->setText(f.FocusedCollapsed ? QStringLiteral("&Expand Method") : QStringLiteral("&Collapse Method"));
  toggle->setToolTip(f.FocusedCollapsed ? QStringLiteral("Expand Selected Method")
                                        : QStringLiteral("Collapse Selected Method"));
  toggle->setStatusTip(toggle->toolTip());
  toggle->setIcon(f.FocusedCollapsed ? expand : collapse);
}

void TFrmViewer::UpdateCommandStates() {
  // While a log is read every state stands still; the end of the load brings them up to date.
  if (FLoadingFile || !FCommands || FCommands->Empty() || !tabViews || !stsMsgNum) return;
  const TZTCommandFacts facts = GatherCommandFacts();
  FCommandsSawRows = facts.Rows;
  FCommands->ApplyStates(facts);
  UpdateToggleMethodCommand(facts);
  UpdateTabCloseButtons();
  UpdateStatusCounts(facts.SelCount);
}

}  // namespace zentrail
