// The main window's view tabs as the user handles them: the view commands, the tab popup menu with
// its switch submenu, renaming a tab in place, closing it, and dragging a tab to another place.
#include <QAction>
#include <QApplication>
#include <QBoxLayout>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QStackedWidget>
#include <QPainter>
#include <QTabBar>
#include <QToolButton>
#include <functional>

#include "ZTMainForm.h"
#include "ZTNavigator.h"
#include "ZTPromptService.h"
#include "ZTViewFilterForm.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

namespace {

// Drags a tab to another place. Tab 0 stays where it is: it can't be dragged, nor can another tab
// be dropped on it.
class TZTTabDragFilter : public QObject {
 public:
  explicit TZTTabDragFilter(TFrmViewer& window) : QObject(window.TabBar()), FWindow(window) {}

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    QTabBar* tabs = FWindow.TabBar();
    switch (event->type()) {
      case QEvent::MouseButtonPress: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        FFrom = mouse->button() == Qt::LeftButton ? tabs->tabAt(mouse->position().toPoint()) : -1;
        FStart = mouse->position().toPoint();
        FDragging = false;
        return false;
      }
      case QEvent::MouseMove: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (FFrom <= 0 || !(mouse->buttons() & Qt::LeftButton)) return false;
        const QPoint pos = mouse->position().toPoint();
        if (!FDragging && (pos - FStart).manhattanLength() < QApplication::startDragDistance()) return false;
        if (!FDragging) {
          FDragging = true;
          QApplication::setOverrideCursor(Qt::ClosedHandCursor);
        }
        const int over = tabs->tabAt(pos);
        QApplication::changeOverrideCursor(over == 0 ? Qt::ForbiddenCursor : Qt::ClosedHandCursor);
        return true;
      }
      case QEvent::MouseButtonRelease: {
        if (!FDragging) {
          FFrom = -1;
          return false;
        }
        auto* mouse = static_cast<QMouseEvent*>(event);
        QApplication::restoreOverrideCursor();
        FDragging = false;
        const int from = FFrom;
        FFrom = -1;
        int to = tabs->tabAt(mouse->position().toPoint());
        // Beyond the last tab means the end of the row.
        if (to < 0 && mouse->position().x() > tabs->tabRect(tabs->count() - 1).right()) to = tabs->count() - 1;
        if (to > 0 && to != from) FWindow.MoveView(from, to);
        return true;
      }
      default:
        return false;
    }
  }

 private:
  TFrmViewer& FWindow;
  int FFrom = -1;
  QPoint FStart;
  bool FDragging = false;
};

// A cross, as on the close button of a tab.
QIcon CloseGlyph() {
  QIcon icon;
  for (int scale : {1, 2}) {
    QPixmap pixmap(10 * scale, 10 * scale);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.scale(scale, scale);
    p.setRenderHint(QPainter::Antialiasing, true);
    p.setPen(QPen(QColor(0x35, 0x4a, 0x6b), 1.6, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(2, 2), QPointF(8, 8));
    p.drawLine(QPointF(8, 2), QPointF(2, 8));
    p.end();
    pixmap.setDevicePixelRatio(scale);
    icon.addPixmap(pixmap);
  }
  return icon;
}

// The field in which a tab's name is edited: Escape gives up the edit.
class TZTTabNameEditor : public QLineEdit {
 public:
  using QLineEdit::QLineEdit;
  std::function<void()> OnEscape;

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    if (event->key() == Qt::Key_Escape && OnEscape) {
      OnEscape();
      return;
    }
    QLineEdit::keyPressEvent(event);
  }
};

}  // namespace

void TFrmViewer::SetUpTabStrip() {
  // A popup on every tab, the close button on the active one, and dragging. The strip takes the
  // whole width, so that tabs scroll only when they really don't fit.
  tabViews->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  if (auto* row = qobject_cast<QBoxLayout*>(pnlTabSet->layout()))
    for (int i = 0; i < row->count(); ++i) row->setStretch(i, row->itemAt(i)->widget() == tabViews ? 1 : 0);
  tabViews->setSelectionBehaviorOnRemove(QTabBar::SelectLeftTab);
  tabViews->setUsesScrollButtons(true);
  tabViews->setElideMode(Qt::ElideNone);
  connect(tabViews, &QTabBar::tabCloseRequested, this, [this](int index) {
    QAction* remove = Action(QStringLiteral("actViewRemove"));
    if (index == ActiveViewIndex() && remove && remove->isEnabled()) RemoveView(index);
  });
  connect(tabViews, &QTabBar::currentChanged, this, [this] { UpdateTabCloseButtons(); });
  tabViews->installEventFilter(new TZTTabDragFilter(*this));
  tabViews->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(tabViews, &QTabBar::customContextMenuRequested, this,
          [this](const QPoint& pos) { ShowViewsMenu(tabViews->mapToGlobal(pos), tabViews->tabAt(pos)); });

  // The tab list: every view by name, for when the strip scrolls.
  auto* tabList = new QToolButton(pnlTabSet);
  tabList->setObjectName(QStringLiteral("btnTabList"));
  tabList->setAutoRaise(true);
  tabList->setArrowType(Qt::DownArrow);
  tabList->setPopupMode(QToolButton::InstantPopup);
  tabList->setToolTip(QStringLiteral("Switch To View"));
  tabList->setAccessibleName(tabList->toolTip());
  tabList->setFocusPolicy(Qt::NoFocus);
  auto* tabMenu = new QMenu(tabList);
  connect(tabMenu, &QMenu::aboutToShow, this, [this, tabMenu] {
    tabMenu->clear();
    const int active = ActiveViewIndex();
    for (int i = 0; i < tabViews->count(); ++i) {
      QAction* item = tabMenu->addAction(tabViews->tabText(i));
      item->setCheckable(true);
      item->setChecked(i == active);
      connect(item, &QAction::triggered, this, [this, i] { SetActiveViewIndex(i); });
    }
  });
  tabList->setMenu(tabMenu);
  if (auto* row = qobject_cast<QBoxLayout*>(pnlTabSet->layout())) row->addWidget(tabList);

  mnuViews = MakeMenu(QStringLiteral("mnuViews"));
  mnuSwitchToView = mnuViews->findChild<QMenu*>(QStringLiteral("mnuSwitchToView"));
  connect(mnuViews, &QMenu::aboutToShow, this, [this] { RebuildSwitchToView(); });
}

void TFrmViewer::UpdateTabCloseButtons() {
  const int active = ActiveViewIndex();
  QAction* remove = Action(QStringLiteral("actViewRemove"));
  const bool enabled = remove && remove->isEnabled();
  for (int i = 1; i < tabViews->count(); ++i) {
    QWidget* button = tabViews->tabButton(i, QTabBar::RightSide);
    if (!button) {
      // A small button of our own: the style's close button makes the tabs taller than the strip.
      auto* close = new QToolButton(tabViews);
      close->setObjectName(QStringLiteral("btnCloseView"));
      close->setAutoRaise(true);
      close->setFixedSize(16, 16);
      close->setIconSize(QSize(10, 10));
      close->setIcon(CloseGlyph());
      close->setToolTip(QStringLiteral("Remove View"));
      connect(close, &QToolButton::clicked, this, [this, close] {
        for (int t = 0; t < tabViews->count(); ++t)
          if (tabViews->tabButton(t, QTabBar::RightSide) == close) emit tabViews->tabCloseRequested(t);
      });
      tabViews->setTabButton(i, QTabBar::RightSide, close);
      button = close;
    }
    button->setVisible(i == active && enabled);
  }
  if (auto* tabList = pnlTabSet->findChild<QWidget*>(QStringLiteral("btnTabList")))
    tabList->setVisible(tabViews->count() > 1);
  // The strip is as high as its tabs need, however small the message font makes the rows.
  const int needed = tabViews->sizeHint().height();
  if (tabViews->count() > 1 && tabViews->height() < needed) {
    tabViews->setFixedHeight(needed);
    pnlTabSet->setFixedHeight(needed + 4);
  }
}

void TFrmViewer::RebuildSwitchToView() {
  mnuSwitchToView->clear();
  const int active = ActiveViewIndex();
  for (int i = 0; i < tabViews->count(); ++i) {
    QAction* item = mnuSwitchToView->addAction(tabViews->tabText(i));
    item->setCheckable(true);
    item->setChecked(i == active);
    connect(item, &QAction::triggered, this, [this, i] { SetActiveViewIndex(i); });
  }
}

void TFrmViewer::ShowViewsMenu(const QPoint& globalPos, int tabIndex) {
  // The commands of the popup act on the active view, so the tab under the mouse becomes it.
  if (tabIndex >= 0 && tabIndex != ActiveViewIndex()) SetActiveViewIndex(tabIndex);
  mnuViews->popup(globalPos);
}

void TFrmViewer::StartRenameView(int index) {
  if (index <= 0 || index >= ViewCount()) return;
  // The name is edited where it stands: Enter or leaving the field keeps it, Escape drops it.
  auto* editor = new TZTTabNameEditor(tabViews);
  editor->setObjectName(QStringLiteral("edtRenameView"));
  editor->setText(tabViews->tabText(index));
  editor->selectAll();
  editor->setGeometry(tabViews->tabRect(index).adjusted(2, 2, -2, -2));
  IZTMessageView* view = GetViewIntf(index);
  auto finish = [this, editor, view](bool keep) {
    if (editor->property("done").toBool()) return;
    editor->setProperty("done", true);
    const auto it = std::find(FViews.begin(), FViews.end(), view);
    const QString name = editor->text().trimmed();
    if (keep && it != FViews.end() && !name.isEmpty()) RenameView(static_cast<int>(it - FViews.begin()), name);
    editor->deleteLater();
    if (IZTMessageView* active = ActiveView()) active->GetWidget()->setFocus();
  };
  connect(editor, &QLineEdit::editingFinished, this, [finish] { finish(true); });
  editor->OnEscape = [finish] { finish(false); };
  editor->show();
  editor->setFocus();
}

void TFrmViewer::NewView() {
  TfrmViewFilter dialog(nbkViews);
  dialog.setWindowTitle(QStringLiteral("Create a New View"));
  dialog.SetHelpKeyword(QStringLiteral("Viewer_Commands_Organize_NewView"));
  dialog.SetCriteria(TZTFilterCriteria{}, QString());
  IZTMessageView* active = ActiveView();
  if (active && active->GetCount() > 0 && FActiveList && FActiveList->SelectCurrentRecord()) {
    TZentrailMessageSet& ms = MessageSet;
    dialog.SetProposals(QString::fromUtf8(ms.GetCategory()), QString::fromUtf8(ms.GetComputerName()),
                        QString::fromUtf8(ms.GetAppName()), QString::number(ms.GetProcessID()),
                        QString::fromUtf8(ms.GetThreadName()), QString::fromUtf8(ms.GetMsgText()));
  }
  // With plug-in view classes about, the user picks the class of the new view.
  QComboBox* classes = nullptr;
  const QStringList keys = ViewClasses().Keys();
  if (keys.size() > 1) {
    if (auto* layout = qobject_cast<QBoxLayout*>(dialog.layout())) {
      auto* line = new QHBoxLayout;
      auto* label = new QLabel(QStringLiteral("View &Class"), &dialog);
      classes = new QComboBox(&dialog);
      classes->setObjectName(QStringLiteral("cbxViewClass"));
      classes->addItems(keys);
      classes->setCurrentIndex(std::max<qsizetype>(0, keys.indexOf(QStringLiteral("Default"))));
      label->setBuddy(classes);
      line->addWidget(label);
      line->addWidget(classes, 1);
      layout->insertLayout(1, line);
    }
  }
  if (FNavigator->RunDialog(dialog) != QDialog::Accepted) return;
  TZTFilterCriteria criteria;
  QString name;
  try {
    dialog.GetCriteria(criteria, name);
  } catch (const std::exception&) {
    PromptService().ShowMessage(nbkViews, QStringLiteral("The process ID must be a number."), TZTPromptKind::Error);
    return;
  }
  if (!CreateView(name, criteria, false, true, classes ? classes->currentText() : QString())) return;
  FViewsModified = true;
  UpdateCommandStates();
}

}  // namespace zentrail
