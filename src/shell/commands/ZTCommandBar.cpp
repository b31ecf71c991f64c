#include "ZTCommandBar.h"

#include <QAction>
#include <QMenu>
#include <QPainter>
#include <QResizeEvent>
#include <QToolButton>
#include <algorithm>

namespace zentrail {

namespace {

constexpr int kMargin = 2;
constexpr int kSeparatorWidth = 9;

QString Plain(QString text) { return text.remove(QLatin1Char('&')); }

}  // namespace

TZTCommandBar::TZTCommandBar(const QString& name, const QString& title, QWidget* parent)
    : QWidget(parent), FTitle(title) {
  setObjectName(name);
  setAccessibleName(title + QStringLiteral(" Toolbar"));
  QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  setSizePolicy(policy);
  FMoreMenu = new QMenu(this);
  FMore = new QToolButton(this);
  FMore->setObjectName(name + QStringLiteral("More"));
  FMore->setAutoRaise(true);
  FMore->setArrowType(Qt::NoArrow);
  FMore->setText(QStringLiteral("\u00bb"));
  FMore->setToolTip(QStringLiteral("More Buttons"));
  FMore->setAccessibleName(QStringLiteral("More Buttons"));
  FMore->setPopupMode(QToolButton::InstantPopup);
  FMore->setMenu(FMoreMenu);
  FMore->setFocusPolicy(Qt::NoFocus);
  FMore->hide();
  connect(FMoreMenu, &QMenu::aboutToShow, this, [this] { FillOverflowMenu(); });
}

QToolButton* TZTCommandBar::AddAction(QAction* action) {
  auto* button = new QToolButton(this);
  button->setObjectName(action->objectName());
  button->setDefaultAction(action);
  button->setAutoRaise(true);
  button->setIconSize(QSize(16, 16));
  button->setToolButtonStyle(Qt::ToolButtonIconOnly);
  // Keys reach every command through its shortcut and the menus; the buttons are for the mouse.
  button->setFocusPolicy(Qt::NoFocus);
  button->setAccessibleName(Plain(action->text()));
  AddWidget(action->objectName(), button);
  return button;
}

QToolButton* TZTCommandBar::AddMenuButton(const QString& name, QMenu* menu, const QString& hint) {
  auto* button = new QToolButton(this);
  button->setObjectName(name);
  button->setMenu(menu);
  button->setIcon(menu->icon());
  button->setToolTip(hint);
  button->setAccessibleName(hint);
  button->setPopupMode(QToolButton::InstantPopup);
  button->setAutoRaise(true);
  button->setIconSize(QSize(16, 16));
  button->setFocusPolicy(Qt::NoFocus);
  AddWidget(name, button);
  return button;
}

void TZTCommandBar::AddWidget(const QString& name, QWidget* widget) {
  widget->setParent(this);
  FItems.push_back({name, widget});
  updateGeometry();
}

void TZTCommandBar::AddSeparator() { FItems.push_back({QString(), nullptr}); }

void TZTCommandBar::SetWrap(bool wrap) {
  if (wrap == FWrap) return;
  FWrap = wrap;
  QSizePolicy policy = sizePolicy();
  policy.setHeightForWidth(wrap);
  setSizePolicy(policy);
  Arrange(width(), true);
  updateGeometry();
}

void TZTCommandBar::SetHiddenItems(const QSet<QString>& names) {
  FHidden = names;
  Arrange(width(), true);
  updateGeometry();
}

std::vector<TZTCommandBar::TZTBarItem> TZTCommandBar::Items() const {
  std::vector<TZTBarItem> out;
  for (const TItem& item : FItems) {
    if (!item.Widget) continue;
    auto* button = qobject_cast<QToolButton*>(item.Widget);
    QString caption = button && button->defaultAction() ? Plain(button->defaultAction()->text())
                                                        : item.Widget->toolTip();
    if (caption.isEmpty()) caption = item.Widget->accessibleName();
    out.push_back({item.Name, caption, button ? button->icon() : QIcon()});
  }
  return out;
}

int TZTCommandBar::RowHeight() const {
  int h = 22;
  for (const TItem& item : FItems)
    if (item.Widget) h = std::max(h, item.Widget->sizeHint().height());
  return h;
}

int TZTCommandBar::ItemWidth(const TItem& item) const {
  return item.Widget ? item.Widget->sizeHint().width() : kSeparatorWidth;
}

int TZTCommandBar::Arrange(int width, bool apply) {
  const int rowHeight = RowHeight();
  // The items the user keeps, without separators at the start, the end or next to each other.
  std::vector<const TItem*> shown;
  for (const TItem& item : FItems) {
    if (item.Widget && FHidden.contains(item.Name)) {
      if (apply) item.Widget->hide();
      continue;
    }
    if (!item.Widget && (shown.empty() || !shown.back()->Widget)) continue;
    shown.push_back(&item);
  }
  while (!shown.empty() && !shown.back()->Widget) shown.pop_back();

  int total = kMargin;
  for (const TItem* item : shown) total += ItemWidth(*item);
  const bool overflow = !FWrap && total + kMargin > width;
  const int limit = width - kMargin - (overflow ? FMore->sizeHint().width() : 0);

  if (apply) FOverflow.clear();
  int x = kMargin, y = kMargin;
  for (const TItem* item : shown) {
    const int w = ItemWidth(*item);
    if (x + w > limit && x > kMargin) {
      if (FWrap) {
        // A separator never starts a row.
        x = kMargin;
        y += rowHeight;
        if (!item->Widget) continue;
      } else {
        if (apply && item->Widget) {
          item->Widget->hide();
          FOverflow.push_back(item->Widget);
        }
        x = limit + 1;  // everything after goes too
        continue;
      }
    }
    if (apply && item->Widget) {
      item->Widget->setGeometry(x, y, w, rowHeight);
      item->Widget->show();
    }
    x += w;
  }
  if (apply) {
    FMore->setVisible(overflow && !FOverflow.empty());
    if (FMore->isVisible()) FMore->setGeometry(width - kMargin - FMore->sizeHint().width(), kMargin,
                                               FMore->sizeHint().width(), rowHeight);
    update();
  }
  return y + rowHeight + kMargin;
}

void TZTCommandBar::FillOverflowMenu() {
  FMoreMenu->clear();
  for (QWidget* w : FOverflow) {
    auto* button = qobject_cast<QToolButton*>(w);
    if (!button) continue;
    if (button->defaultAction()) {
      FMoreMenu->addAction(button->defaultAction());
    } else if (QMenu* menu = button->menu()) {
      QMenu* sub = FMoreMenu->addMenu(button->icon(), button->toolTip());
      sub->addActions(menu->actions());
    }
  }
}

QSize TZTCommandBar::sizeHint() const {
  int w = 2 * kMargin;
  for (const TItem& item : FItems)
    if (!item.Widget || !FHidden.contains(item.Name)) w += ItemWidth(item);
  return {w, RowHeight() + 2 * kMargin};
}

QSize TZTCommandBar::minimumSizeHint() const { return {0, RowHeight() + 2 * kMargin}; }

int TZTCommandBar::heightForWidth(int width) const {
  return const_cast<TZTCommandBar*>(this)->Arrange(width, false);
}

void TZTCommandBar::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  const int needed = Arrange(event->size().width(), true);
  if (FWrap && needed != height()) updateGeometry();
}

void TZTCommandBar::paintEvent(QPaintEvent*) {
  // Separators as thin etched lines between the groups.
  QPainter p(this);
  const QColor dark = palette().color(QPalette::Mid);
  const QColor light = palette().color(QPalette::Light);
  const int rowHeight = RowHeight();
  const QWidget* previous = nullptr;
  bool pending = false;
  for (const TItem& item : FItems) {
    if (!item.Widget) {
      pending = previous != nullptr;
      continue;
    }
    if (item.Widget->isHidden()) continue;
    if (pending && previous && previous->y() == item.Widget->y()) {
      const int x = (previous->geometry().right() + item.Widget->x()) / 2;
      const int top = item.Widget->y() + 4, bottom = item.Widget->y() + rowHeight - 4;
      p.setPen(dark);
      p.drawLine(x, top, x, bottom);
      p.setPen(light);
      p.drawLine(x + 1, top, x + 1, bottom);
    }
    pending = false;
    previous = item.Widget;
  }
}

}  // namespace zentrail
