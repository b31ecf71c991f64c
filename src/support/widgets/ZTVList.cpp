#include "ZTVList.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QFocusEvent>
#include <QHash>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPaintEvent>
#include <QResizeEvent>
#include <QPointer>
#include <QScrollBar>
#include <QStyleOptionFocusRect>
#include <QTimer>
#include <QWheelEvent>
#include <algorithm>

namespace zentrail {

namespace {

int32_t Clamp(int64_t value, int64_t low, int64_t high) {
  if (high < low) high = low;
  return static_cast<int32_t>(std::clamp(value, low, high));
}

}  // namespace

TZTCustomVirtualListBox::TZTCustomVirtualListBox(QWidget* parent) : QAbstractScrollArea(parent) {
  InstallVirtualListBoxAccessibility();
  setFocusPolicy(Qt::StrongFocus);
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
  viewport()->setAutoFillBackground(false);
  setFrameShape(QFrame::StyledPanel);
  FDragTimer = new QTimer(this);
  FDragTimer->setInterval(50);
  connect(FDragTimer, &QTimer::timeout, this, [this] { DragScrollTick(); });
  FRefreshTimer = new QTimer(this);
  FRefreshTimer->setSingleShot(true);
  FRefreshTimer->setInterval(20);
  connect(FRefreshTimer, &QTimer::timeout, this, [this] { FlushLiveRefresh(); });
  SetScrollBars(FScrollBars);
  ApplyAutoRowHeight();
  UpdateScrollBars();
}

TZTCustomVirtualListBox::~TZTCustomVirtualListBox() = default;

// ---- properties --------------------------------------------------------------------------------

void TZTCustomVirtualListBox::SetItemIndex(int32_t row) {
  if (row < -1) row = -1;
  if (row >= FNumItems) row = FNumItems - 1;
  if (row == FItemIndex) return;
  const int32_t old = FItemIndex;
  FItemIndex = row;
  if (!Updating()) {
    InvalidateItem(old);
    InvalidateItem(row);
  }
  NotifyFocus();
  emit ItemIndexChanged(row);
}

void TZTCustomVirtualListBox::SetNumItems(int32_t count) {
  if (count < 0) count = 0;
  if (count == FNumItems) return;
  const int32_t old = FNumItems;
  const int32_t oldTop = FTopIndex;
  FNumItems = count;
  if (FItemIndex >= count) {
    FItemIndex = count - 1;
    emit ItemIndexChanged(FItemIndex);
  }
  if (FAnchor >= count) FAnchor = count - 1;
  if (FDragEnd >= count) FDragEnd = count - 1;
  // A shorter list pulls the top row back so that the last row stands at the bottom.
  if (count < old && FTopIndex > MaxTopIndex()) FTopIndex = MaxTopIndex();
  if (Updating()) return;
  if (FLiveCount > 0) {
    ScheduleLiveRefresh(FTopIndex != oldTop || count < old, std::min(old, count));
    return;
  }
  UpdateScrollBars();
  if (FTopIndex != oldTop || count < old) {
    viewport()->update();
  } else {
    // Only rows that came into existence on screen need paint; the rest of the list is unchanged.
    const int32_t last = std::min<int64_t>(static_cast<int64_t>(FTopIndex) + VisibleRows() + 1, count) - 1;
    if (old <= last) {
      const QRect first = ItemRect(std::max(old, FTopIndex));
      const QRect end = ItemRect(last);
      viewport()->update(QRect(0, first.top(), viewport()->width(), end.bottom() - first.top() + 1));
    }
  }
  if (QAccessible::isActive()) {
    QAccessibleTableModelChangeEvent event(this, QAccessibleTableModelChangeEvent::ModelReset);
    QAccessible::updateAccessibility(&event);
  }
}

void TZTCustomVirtualListBox::SetTopIndex(int32_t row) { SetTopIndexInternal(row, false); }

void TZTCustomVirtualListBox::SetTopIndexInternal(int32_t row, bool fromScrollBar) {
  row = Clamp(row, 0, MaxTopIndex());
  if (row == FTopIndex) return;
  const int32_t delta = row - FTopIndex;
  FTopIndex = row;
  if (FLiveCount > 0 && !Updating()) {
    ScheduleLiveRefresh(true, -1);
  } else if (!Updating()) {
    const int32_t rowsArea = viewport()->height() - HeaderHeight();
    if (FSmoothScroll && std::abs(static_cast<int64_t>(delta)) * FRowHeight < rowsArea) {
      viewport()->scroll(0, -delta * FRowHeight,
                         QRect(0, HeaderHeight(), viewport()->width(), std::max(0, rowsArea)));
    } else {
      viewport()->update();
    }
    if (!fromScrollBar) {
      FSettingScrollBars = true;
      verticalScrollBar()->setValue(FTopIndex);
      FSettingScrollBars = false;
    }
  }
  if (OnTopIndexChanged) OnTopIndexChanged();
}

void TZTCustomVirtualListBox::SetRowHeight(int32_t height) {
  if (height < 1) height = 1;  // a row height of zero would divide by zero everywhere
  if (height == FRowHeight) return;
  FRowHeight = height;
  if (!Updating()) {
    UpdateScrollBars();
    viewport()->update();
  }
}

void TZTCustomVirtualListBox::SetAutoRowHeight(bool value) {
  FAutoRowHeight = value;
  ApplyAutoRowHeight();
}

void TZTCustomVirtualListBox::ApplyAutoRowHeight() {
  if (!FAutoRowHeight) return;
  const QFontMetrics metrics(font());
  SetRowHeight(metrics.boundingRect(QStringLiteral("Yy")).height() + 4);
}

void TZTCustomVirtualListBox::SetIntegralHeight(bool value) {
  FIntegralHeight = value;
  UpdateScrollBars();
}

void TZTCustomVirtualListBox::SetScrollBars(TZTScrollBars value) {
  FScrollBars = value;
  const bool horz = value == TZTScrollBars::Horizontal || value == TZTScrollBars::Both;
  const bool vert = value == TZTScrollBars::Vertical || value == TZTScrollBars::Both;
  setHorizontalScrollBarPolicy(horz ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
  setVerticalScrollBarPolicy(vert ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
  UpdateScrollBars();
}

void TZTCustomVirtualListBox::SetColumns(uint16_t value) {
  FColumns = value;
  if (FHorzPosition > FColumns) SetHorzPosition(FColumns);
  UpdateScrollBars();
}

void TZTCustomVirtualListBox::SetHeader(const QString& text) {
  FHeader = text;
  if (FShowHeader) viewport()->update(0, 0, viewport()->width(), HeaderHeight());
}

void TZTCustomVirtualListBox::SetShowHeader(bool value) {
  if (value == FShowHeader) return;
  FShowHeader = value;
  UpdateScrollBars();
  viewport()->update();
}

void TZTCustomVirtualListBox::SetUseTabStops(bool value) {
  FUseTabStops = value;
  viewport()->update();
}

void TZTCustomVirtualListBox::SetOwnerDraw(bool value) {
  FOwnerDraw = value;
  viewport()->update();
}

void TZTCustomVirtualListBox::SetHeaderTextColor(TColor c) { FHeaderTextColor = c; viewport()->update(); }
void TZTCustomVirtualListBox::SetHeaderBackColor(TColor c) { FHeaderBackColor = c; viewport()->update(); }
void TZTCustomVirtualListBox::SetSelectTextColor(TColor c) { FSelectTextColor = c; viewport()->update(); }
void TZTCustomVirtualListBox::SetSelectBackColor(TColor c) { FSelectBackColor = c; viewport()->update(); }
void TZTCustomVirtualListBox::SetProtectTextColor(TColor c) { FProtectTextColor = c; viewport()->update(); }
void TZTCustomVirtualListBox::SetProtectBackColor(TColor c) { FProtectBackColor = c; viewport()->update(); }
void TZTCustomVirtualListBox::SetColor(TColor c) { FColor = c; viewport()->update(); }

void TZTCustomVirtualListBox::SetBorderStyle(TZTBorderStyle value) {
  FBorderStyle = value;
  setFrameShape(value == TZTBorderStyle::None ? QFrame::NoFrame : QFrame::StyledPanel);
}

void TZTCustomVirtualListBox::SetTabStops(const std::vector<int>& stops) {
  FTabs.assign(stops.begin(), stops.begin() + std::min<size_t>(stops.size(), ztMaxTabStops));
  viewport()->update();
}

// ---- geometry ----------------------------------------------------------------------------------

int32_t TZTCustomVirtualListBox::VisibleRows() const { return RowsForHeight(viewport()->height()); }

int32_t TZTCustomVirtualListBox::RowsForHeight(int height) const {
  const int32_t area = height - HeaderHeight();
  if (area <= 0) return 1;
  const int32_t rows = FIntegralHeight ? area / FRowHeight : (area + FRowHeight - 1) / FRowHeight;
  return std::max(1, rows);
}

int32_t TZTCustomVirtualListBox::PageRows() const { return std::max(1, VisibleRows() - 1); }

int32_t TZTCustomVirtualListBox::MaxTopIndex() const {
  return std::max<int64_t>(0, static_cast<int64_t>(FNumItems) - VisibleRows());
}

void TZTCustomVirtualListBox::SetHorzPosition(int32_t position) {
  position = Clamp(position, 0, FColumns);
  if (position == FHorzPosition) return;
  FHorzPosition = position;
  if (!Updating()) {
    viewport()->update();
    FSettingScrollBars = true;
    horizontalScrollBar()->setValue(position);
    FSettingScrollBars = false;
  }
}

QRect TZTCustomVirtualListBox::ItemRect(int32_t row) const {
  const int64_t top = HeaderHeight() + (static_cast<int64_t>(row) - FTopIndex) * FRowHeight;
  const int offset = FHorzPosition * ztHorzScrollStep;
  // The right edge stays at the client's right, so that horizontal scrolling uncovers deep indents
  // and long texts while the columns on the right stay in place.
  const int64_t clampedTop = std::clamp<int64_t>(top, -1000000, 1000000);
  return QRect(-offset, static_cast<int>(clampedTop), viewport()->width() + offset, FRowHeight);
}

int32_t TZTCustomVirtualListBox::ItemAtPos(const QPoint& point, bool existing) const {
  const int y = point.y() - HeaderHeight();
  if (y < 0) return existing ? -1 : 0;
  const int64_t row = static_cast<int64_t>(FTopIndex) + y / FRowHeight;
  if (row >= FNumItems) return existing ? -1 : FNumItems - 1;
  return static_cast<int32_t>(row);
}

void TZTCustomVirtualListBox::InvalidateItem(int32_t row) {
  if (row < FTopIndex || row >= FNumItems || Updating()) return;
  if (static_cast<int64_t>(row) - FTopIndex > VisibleRows() + 1) return;
  QRect rect = ItemRect(row);
  rect.setLeft(0);
  viewport()->update(rect);
}

void TZTCustomVirtualListBox::CenterLine(int32_t row) { SetTopIndex(row - VisibleRows() / 2); }

void TZTCustomVirtualListBox::CenterCurrentLine() { CenterLine(FItemIndex); }

void TZTCustomVirtualListBox::Scroll(int32_t columns, int32_t rows) {
  if (columns != 0) SetHorzPosition(FHorzPosition + columns);
  if (rows != 0) SetTopIndex(static_cast<int32_t>(std::clamp<int64_t>(static_cast<int64_t>(FTopIndex) + rows, 0, INT32_MAX)));
}

bool TZTCustomVirtualListBox::OnHiddenPage() const {
  const QWidget* page = parentWidget();
  return page && page->isHidden();
}

void TZTCustomVirtualListBox::showEvent(QShowEvent* event) {
  QAbstractScrollArea::showEvent(event);
  if (FScrollBarsStale) {
    FScrollBarsStale = false;
    UpdateScrollBars();
    viewport()->update();
  }
}

void TZTCustomVirtualListBox::UpdateScrollBars() {
  if (Updating()) return;
  if (OnHiddenPage()) {
    FScrollBarsStale = true;
    return;
  }
  FSettingScrollBars = true;
  QScrollBar* vert = verticalScrollBar();
  vert->setRange(0, MaxTopIndex());
  vert->setPageStep(VisibleRows());
  vert->setSingleStep(1);
  vert->setValue(FTopIndex);
  QScrollBar* horz = horizontalScrollBar();
  horz->setRange(0, FColumns);
  horz->setPageStep(std::max(1, viewport()->width() / ztHorzScrollStep));
  horz->setSingleStep(1);
  horz->setValue(FHorzPosition);
  FSettingScrollBars = false;
}

void TZTCustomVirtualListBox::scrollContentsBy(int, int) {
  if (FSettingScrollBars) return;
  SetTopIndexInternal(verticalScrollBar()->value(), true);
  const int32_t horz = horizontalScrollBar()->value();
  if (horz != FHorzPosition) {
    FHorzPosition = Clamp(horz, 0, FColumns);
    viewport()->update();
  }
}

// ---- live changes ------------------------------------------------------------------------------

void TZTCustomVirtualListBox::SetLiveRefreshInterval(int milliseconds) {
  FRefreshTimer->setInterval(std::max(0, milliseconds));
}

void TZTCustomVirtualListBox::ScheduleLiveRefresh(bool full, int32_t fromRow) {
  // Nothing of a hidden page reaches the screen; it catches up when shown.
  if (OnHiddenPage()) {
    FScrollBarsStale = true;
    return;
  }
  if (full) FRefreshFull = true;
  if (fromRow >= 0 && (FRefreshFromRow < 0 || fromRow < FRefreshFromRow)) FRefreshFromRow = fromRow;
  if (!FRefreshTimer->isActive()) FRefreshTimer->start();
}

void TZTCustomVirtualListBox::FlushLiveRefresh() {
  FRefreshTimer->stop();
  const bool full = FRefreshFull;
  const int32_t from = FRefreshFromRow;
  FRefreshFull = false;
  FRefreshFromRow = -1;
  if (Updating()) return;  // EndUpdate refreshes everything anyway
  UpdateScrollBars();
  if (QAccessible::isActive()) {
    QAccessibleTableModelChangeEvent event(this, QAccessibleTableModelChangeEvent::ModelReset);
    QAccessible::updateAccessibility(&event);
  }
  if (full) {
    viewport()->update();
    return;
  }
  if (from < 0) return;
  // Only rows that came into existence on screen need paint.
  const int32_t last = std::min<int64_t>(static_cast<int64_t>(FTopIndex) + VisibleRows() + 1, FNumItems) - 1;
  const int32_t first = std::max(from, FTopIndex);
  if (first <= last) {
    const QRect top = ItemRect(first);
    const QRect bottom = ItemRect(last);
    viewport()->update(QRect(0, top.top(), viewport()->width(), bottom.bottom() - top.top() + 1));
  }
}

// ---- update bracket ----------------------------------------------------------------------------

void TZTCustomVirtualListBox::BeginUpdate() { ++FUpdateCount; }

void TZTCustomVirtualListBox::EndUpdate() {
  if (FUpdateCount <= 0) {
    FUpdateCount = 0;
    throw EZTListBoxError("Mismatched BeginUpdate/EndUpdate");
  }
  if (--FUpdateCount > 0) return;
  if (FTopIndex > MaxTopIndex()) FTopIndex = MaxTopIndex();
  UpdateScrollBars();
  viewport()->update();
}

void TZTCustomVirtualListBox::InsertItemsAt(int32_t count, int32_t position) {
  if (count <= 0) return;
  int32_t focus = FItemIndex;
  FItemIndex = -1;
  const int64_t total = static_cast<int64_t>(FNumItems) + count;
  FNumItems = static_cast<int32_t>(std::min<int64_t>(total, INT32_MAX));
  if (!Updating()) {
    UpdateScrollBars();
    if (position >= FTopIndex && position - static_cast<int64_t>(FTopIndex) <= VisibleRows()) {
      const QRect at = ItemRect(position);
      const QRect below(0, at.top(), viewport()->width(), std::max(0, viewport()->height() - at.top()));
      if (FSmoothScroll)
        viewport()->scroll(0, count * FRowHeight, below);
      else
        viewport()->update(below);
    }
  }
  if (focus >= position) focus += count;
  if (FAnchor >= position) FAnchor += count;
  FItemIndex = std::min(focus, FNumItems - 1);
  if (FItemIndex != focus) emit ItemIndexChanged(FItemIndex);
}

void TZTCustomVirtualListBox::DeleteItemsAt(int32_t count, int32_t position) {
  if (count <= 0 || position < 0 || position >= FNumItems) return;
  count = std::min(count, FNumItems - position);
  int32_t focus = FItemIndex;
  FItemIndex = -1;
  FNumItems -= count;
  if (focus >= position + count)
    focus -= count;
  else if (focus >= position)
    focus = position;  // the row that takes the deleted one's place
  if (focus >= FNumItems) focus = FNumItems - 1;
  if (FAnchor >= position + count)
    FAnchor -= count;
  else if (FAnchor >= position)
    FAnchor = std::min(position, FNumItems - 1);
  if (FTopIndex > MaxTopIndex()) FTopIndex = MaxTopIndex();
  FItemIndex = focus;
  if (!Updating()) {
    UpdateScrollBars();
    viewport()->update();
  }
  emit ItemIndexChanged(FItemIndex);
}

// ---- selection ---------------------------------------------------------------------------------

bool TZTCustomVirtualListBox::IsItemSelected(int32_t row) {
  bool selected = false;
  if (OnIsSelected) OnIsSelected(row, selected);
  return selected;
}

void TZTCustomVirtualListBox::SelectItem(int32_t row, bool selected) {
  if (!OnSelect) {
    if (FMultiSelect) throw EZTListBoxError("EOnSelectNotAssigned");
    return;
  }
  if (row >= 0 && IsItemSelected(row) == selected) return;
  OnSelect(row, selected);
  if (row >= 0) InvalidateItem(row);
}

void TZTCustomVirtualListBox::SelectAll() {
  if (!OnSelect) {
    if (FMultiSelect) throw EZTListBoxError("EOnSelectNotAssigned");
    return;
  }
  const int32_t last = std::min<int64_t>(static_cast<int64_t>(FTopIndex) + VisibleRows() + 1, FNumItems) - 1;
  for (int32_t row = FTopIndex; row <= last; ++row)
    if (!IsItemSelected(row)) InvalidateItem(row);
  OnSelect(-1, true);
}

void TZTCustomVirtualListBox::DeselectAll() {
  if (!OnSelect) {
    if (FMultiSelect) throw EZTListBoxError("EOnSelectNotAssigned");
    return;
  }
  const int32_t last = std::min<int64_t>(static_cast<int64_t>(FTopIndex) + VisibleRows() + 1, FNumItems) - 1;
  for (int32_t row = FTopIndex; row <= last; ++row)
    if (IsItemSelected(row)) InvalidateItem(row);
  OnSelect(-1, false);
}

void TZTCustomVirtualListBox::SelectRange(int32_t from, int32_t to, bool selected) {
  if (from > to) std::swap(from, to);
  from = std::max(from, 0);
  to = std::min(to, FNumItems - 1);
  for (int32_t row = from; row <= to; ++row) SelectItem(row, selected);
}

void TZTCustomVirtualListBox::MoveFocusTo(int32_t row, bool extend) {
  if (FNumItems <= 0) return;
  row = Clamp(row, 0, FNumItems - 1);
  if (row == FItemIndex && !extend) {
    // No change of focus, but a plain key still leaves the focused row as the only selection,
    // and whoever counts the selection must hear of it.
    DeselectAll();
    SelectItem(row, true);
    FAnchor = row;
    emit SelectionChangedByUser();
    return;
  }
  if (extend && FMultiSelect) {
    if (FAnchor < 0) FAnchor = FItemIndex >= 0 ? FItemIndex : row;
    DeselectAll();
    SelectRange(FAnchor, row, true);
  } else {
    DeselectAll();
    SelectItem(row, true);
    FAnchor = row;
  }
  SetItemIndex(row);
  if (row < FTopIndex)
    SetTopIndex(row);
  else if (row >= static_cast<int64_t>(FTopIndex) + VisibleRows())
    SetTopIndex(row - VisibleRows() + 1);
  emit SelectionChangedByUser();
}

// ---- text --------------------------------------------------------------------------------------

QString TZTCustomVirtualListBox::GetItemText(int32_t) { return QStringLiteral("- OnGetItem -"); }

QString TZTCustomVirtualListBox::ItemString(int32_t row) {
  if (OnGetItem) {
    QString text;
    void* object = nullptr;
    OnGetItem(row, text, object);
    FLastItemText = text;
  } else {
    FLastItemText = GetItemText(row);
  }
  return FLastItemText;
}

void TZTCustomVirtualListBox::DrawTabbedText(QPainter& painter, const QRect& rect, const QString& text) {
  const QFontMetrics metrics(painter.font());
  const int baseline = rect.top() + (rect.height() - metrics.height()) / 2 + metrics.ascent();
  if (!FUseTabStops || !text.contains(QLatin1Char('\t'))) {
    painter.drawText(rect.left() + 2, baseline, text);
    return;
  }
  const int defaultStop = std::max(1, metrics.horizontalAdvance(QLatin1Char('x')) * 8);
  int x = rect.left() + 2;
  size_t stopIndex = 0;
  const QStringList parts = text.split(QLatin1Char('\t'));
  for (int i = 0; i < parts.size(); ++i) {
    if (i > 0) {
      const int offset = x - rect.left();
      while (stopIndex < FTabs.size() && FTabs[stopIndex] <= offset) ++stopIndex;
      x = stopIndex < FTabs.size() ? rect.left() + FTabs[stopIndex++]
                                   : rect.left() + (offset / defaultStop + 1) * defaultStop;
    }
    painter.drawText(x, baseline, parts[i]);
    x += metrics.horizontalAdvance(parts[i]);
  }
}

// ---- painting ----------------------------------------------------------------------------------

void TZTCustomVirtualListBox::RowColors(int32_t row, bool selected, QColor& text, QColor& back) {
  const QPalette& pal = palette();
  text = pal.color(QPalette::Text);
  back = ColorToQColor(FColor, pal);
  if (OnGetItemColor) {
    TColor t = clWindowText;
    TColor b = FColor;
    OnGetItemColor(row, t, b);
    text = ColorToQColor(t, pal);
    back = ColorToQColor(b, pal);
  }
  if (selected) {
    text = ColorToQColor(FSelectTextColor, pal);
    back = ColorToQColor(FSelectBackColor, pal);
  } else if (OnGetItemStatus && OnGetItemStatus(row) == TZTItemStatus::Protected) {
    text = ColorToQColor(FProtectTextColor, pal);
    back = ColorToQColor(FProtectBackColor, pal);
  }
}

void TZTCustomVirtualListBox::DrawHeader(QPainter& painter, const QRect& rect) {
  const QPalette& pal = palette();
  painter.fillRect(rect, ColorToQColor(FHeaderBackColor, pal));
  painter.setPen(pal.color(QPalette::Mid));
  painter.drawLine(rect.bottomLeft(), rect.bottomRight());
  painter.setPen(ColorToQColor(FHeaderTextColor, pal));
  DrawTabbedText(painter, rect.adjusted(2, 0, 0, 0), FHeader);
}

void TZTCustomVirtualListBox::DrawItem(QPainter& painter, int32_t row, const QRect& rect, bool selected) {
  if (OnDrawItem) {
    OnDrawItem(painter, row, rect, selected);
    return;
  }
  painter.fillRect(rect, painter.brush());
  DrawTabbedText(painter, rect, ItemString(row));
}

void TZTCustomVirtualListBox::paintEvent(QPaintEvent* event) {
  QPainter painter(viewport());
  const QRect dirty = event->rect();
  const QRect client = viewport()->rect();
  const int header = HeaderHeight();
  if (header > 0 && dirty.top() < header) {
    painter.save();
    DrawHeader(painter, QRect(0, 0, client.width(), header));
    painter.restore();
  }
  int bottom = header;
  if (FNumItems > 0 && FRowHeight > 0) {
    // Only rows that meet the dirty rectangle are visited, each once.
    const int firstY = std::max(dirty.top(), header);
    const int32_t first = FTopIndex + (firstY - header) / FRowHeight;
    const int64_t lastOnScreen = static_cast<int64_t>(FTopIndex) + (dirty.bottom() - header) / FRowHeight;
    const int32_t last = static_cast<int32_t>(std::min<int64_t>(lastOnScreen, static_cast<int64_t>(FNumItems) - 1));
    for (int32_t row = first; row <= last; ++row) {
      const QRect rect = ItemRect(row);
      const bool selected = IsItemSelected(row);
      QColor text, back;
      RowColors(row, selected, text, back);
      painter.save();
      painter.setClipRect(QRect(0, rect.top(), client.width(), rect.height()).intersected(dirty));
      painter.setBrush(back);
      painter.setPen(text);
      DrawItem(painter, row, rect, selected);
      ++FRowsPainted;
      if (row == FItemIndex && hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        option.rect = QRect(0, rect.top(), client.width(), rect.height());
        option.backgroundColor = back;
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
      }
      painter.restore();
    }
    const int64_t lastBottom = header + (static_cast<int64_t>(FNumItems) - FTopIndex) * FRowHeight;
    bottom = static_cast<int>(std::clamp<int64_t>(lastBottom, header, client.height()));
  }
  if (bottom < client.height()) {
    painter.fillRect(QRect(0, bottom, client.width(), client.height() - bottom).intersected(dirty),
                     ColorToQColor(FColor, palette()));
  }
}

void TZTCustomVirtualListBox::resizeEvent(QResizeEvent* event) {
  QAbstractScrollArea::resizeEvent(event);
  if (FTopIndex > MaxTopIndex()) FTopIndex = MaxTopIndex();
  UpdateScrollBars();
}

void TZTCustomVirtualListBox::changeEvent(QEvent* event) {
  if (event->type() == QEvent::FontChange) ApplyAutoRowHeight();
  QAbstractScrollArea::changeEvent(event);
}

bool TZTCustomVirtualListBox::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::Resize) {
    // A pane that takes room from the list (a detail panel below it, a scroll bar appearing) must
    // not push the focused row out of view: the row the user looks at stays on screen.
    const int oldHeight = static_cast<QResizeEvent*>(event)->oldSize().height();
    const int32_t oldRows = oldHeight > HeaderHeight() ? RowsForHeight(oldHeight) : 0;
    const int32_t rows = VisibleRows();
    if (FItemIndex >= FTopIndex && FItemIndex < static_cast<int64_t>(FTopIndex) + oldRows &&
        FItemIndex >= static_cast<int64_t>(FTopIndex) + rows)
      SetTopIndex(FItemIndex - rows + 1);
  }
  return QAbstractScrollArea::viewportEvent(event);
}

void TZTCustomVirtualListBox::focusInEvent(QFocusEvent* event) {
  QAbstractScrollArea::focusInEvent(event);
  InvalidateItem(FItemIndex);
  NotifyFocus();
}

void TZTCustomVirtualListBox::focusOutEvent(QFocusEvent* event) {
  QAbstractScrollArea::focusOutEvent(event);
  InvalidateItem(FItemIndex);
}

// ---- keyboard ----------------------------------------------------------------------------------

void TZTCustomVirtualListBox::keyPressEvent(QKeyEvent* event) {
  const bool shift = event->modifiers() & Qt::ShiftModifier;
  const bool ctrl = event->modifiers() & Qt::ControlModifier;
  const bool horzBar = FScrollBars == TZTScrollBars::Horizontal || FScrollBars == TZTScrollBars::Both;
  int key = event->key();
  if ((key == Qt::Key_Left || key == Qt::Key_Right) && horzBar) {
    SetHorzPosition(FHorzPosition + (key == Qt::Key_Left ? -1 : 1));
    event->accept();
    return;
  }
  if (key == Qt::Key_Left) key = Qt::Key_Up;
  if (key == Qt::Key_Right) key = Qt::Key_Down;
  if (FNumItems <= 0) {
    event->ignore();
    return;
  }
  const int32_t focus = FItemIndex;
  int64_t target;
  switch (key) {
    case Qt::Key_Up: target = static_cast<int64_t>(focus) - 1; break;
    case Qt::Key_Down: target = static_cast<int64_t>(focus) + 1; break;
    case Qt::Key_PageUp: target = static_cast<int64_t>(focus) - PageRows(); break;
    case Qt::Key_PageDown: target = static_cast<int64_t>(focus) + PageRows(); break;
    case Qt::Key_Home: target = 0; break;
    case Qt::Key_End: target = FNumItems - 1; break;
    case Qt::Key_Space:
      if (ctrl && FMultiSelect && focus >= 0) {
        SelectItem(focus, !IsItemSelected(focus));
        FAnchor = focus;
        emit SelectionChangedByUser();
        event->accept();
        return;
      }
      [[fallthrough]];
    default: {
      const QString text = event->text();
      if (OnCharToItem && !text.isEmpty() && text.at(0).isPrint()) {
        int32_t row = -1;
        OnCharToItem(text.at(0), row);
        if (row >= 0) MoveFocusTo(row, false);
        event->accept();
        return;
      }
      QAbstractScrollArea::keyPressEvent(event);
      return;
    }
  }
  if (focus < 0 && (key == Qt::Key_Up || key == Qt::Key_Down)) target = 0;
  target = std::clamp<int64_t>(target, 0, FNumItems - 1);
  event->accept();
  if (shift && !FMultiSelect) return;
  if (ctrl && !shift) {
    // Ctrl moves the focus alone and leaves the selection as it is.
    SetItemIndex(static_cast<int32_t>(target));
    if (target < FTopIndex)
      SetTopIndex(static_cast<int32_t>(target));
    else if (target >= static_cast<int64_t>(FTopIndex) + VisibleRows())
      SetTopIndex(static_cast<int32_t>(target - VisibleRows() + 1));
    return;
  }
  MoveFocusTo(static_cast<int32_t>(target), shift);
}

// ---- mouse -------------------------------------------------------------------------------------

void TZTCustomVirtualListBox::mousePressEvent(QMouseEvent* event) {
  const QPoint pos = event->position().toPoint();
  if (FShowHeader && pos.y() < HeaderHeight()) {
    if (OnClickHeader) OnClickHeader(pos.x());
    event->accept();
    return;
  }
  setFocus(Qt::MouseFocusReason);
  const int32_t row = ItemAtPos(pos, true);
  if (row < 0) {
    event->accept();
    return;
  }
  const bool shift = event->modifiers() & Qt::ShiftModifier;
  const bool ctrl = event->modifiers() & Qt::ControlModifier;
  if (event->button() == Qt::RightButton) {
    // A right click keeps a selection it falls into, so the context menu acts on it.
    if (!IsItemSelected(row)) {
      DeselectAll();
      SelectItem(row, true);
      FAnchor = row;
    }
    SetItemIndex(row);
    emit SelectionChangedByUser();
    event->accept();
    return;
  }
  if (event->button() != Qt::LeftButton) return;
  if (FMultiSelect && ctrl && !shift) {
    SelectItem(row, !IsItemSelected(row));
    FAnchor = row;
  } else if (FMultiSelect && shift) {
    if (FAnchor < 0) FAnchor = FItemIndex >= 0 ? FItemIndex : row;
    if (!ctrl) DeselectAll();
    SelectRange(FAnchor, row, true);
  } else {
    DeselectAll();
    SelectItem(row, true);
    FAnchor = row;
  }
  SetItemIndex(row);
  FDragging = FMultiSelect && !ctrl;
  FDragEnd = row;
  FDragPoint = pos;
  emit SelectionChangedByUser();
  event->accept();
}

void TZTCustomVirtualListBox::DragTo(int32_t row) {
  if (row < 0 || FAnchor < 0 || row == FDragEnd) return;
  const int32_t oldLo = std::min(FAnchor, FDragEnd), oldHi = std::max(FAnchor, FDragEnd);
  const int32_t newLo = std::min(FAnchor, row), newHi = std::max(FAnchor, row);
  for (int32_t r = oldLo; r <= oldHi; ++r)
    if (r < newLo || r > newHi) SelectItem(r, false);
  for (int32_t r = newLo; r <= newHi; ++r)
    if (r < oldLo || r > oldHi) SelectItem(r, true);
  FDragEnd = row;
  SetItemIndex(row);
  emit SelectionChangedByUser();
}

void TZTCustomVirtualListBox::DragScrollTick() {
  if (!FDragging) {
    FDragTimer->stop();
    return;
  }
  const int top = HeaderHeight();
  if (FDragPoint.y() < top) {
    SetTopIndex(FTopIndex - 1);
    DragTo(FTopIndex);
  } else if (FDragPoint.y() >= viewport()->height()) {
    SetTopIndex(FTopIndex + 1);
    DragTo(std::min<int64_t>(static_cast<int64_t>(FTopIndex) + VisibleRows() - 1, FNumItems - 1));
  } else {
    FDragTimer->stop();
  }
}

void TZTCustomVirtualListBox::mouseMoveEvent(QMouseEvent* event) {
  if (!FDragging || !(event->buttons() & Qt::LeftButton)) {
    QAbstractScrollArea::mouseMoveEvent(event);
    return;
  }
  FDragPoint = event->position().toPoint();
  if (FDragPoint.y() < HeaderHeight() || FDragPoint.y() >= viewport()->height()) {
    // Outside the rows the drag scrolls; the timer keeps it going while the pointer stays there.
    DragScrollTick();
    if (!FDragTimer->isActive()) FDragTimer->start();
  } else {
    DragTo(ItemAtPos(FDragPoint, false));
  }
  event->accept();
}

void TZTCustomVirtualListBox::mouseReleaseEvent(QMouseEvent* event) {
  FDragging = false;
  FDragTimer->stop();
  QAbstractScrollArea::mouseReleaseEvent(event);
}

void TZTCustomVirtualListBox::wheelEvent(QWheelEvent* event) {
  const int notches = event->angleDelta().y() / 120;
  if (notches == 0) {
    event->ignore();
    return;
  }
  const int lines = std::max(1, QApplication::wheelScrollLines());
  Scroll(0, -notches * lines);
  event->accept();
}

// ---- accessibility -----------------------------------------------------------------------------

namespace {

class TRowAccessible;

// The list as screen readers see it: a list whose children are made on demand for the rows asked
// about, so that a list of a million rows costs nothing until a reader walks it.
class TListAccessible : public QAccessibleWidget, public QAccessibleTableInterface {
 public:
  explicit TListAccessible(TZTCustomVirtualListBox* list) : QAccessibleWidget(list, QAccessible::List) {}
  ~TListAccessible() override { ForgetRows(); }

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::TableInterface) return static_cast<QAccessibleTableInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
  }

  // The list as a table of one column: the count, the selection and the row texts that readers ask.
  QAccessibleInterface* caption() const override { return nullptr; }
  QAccessibleInterface* summary() const override { return nullptr; }
  QAccessibleInterface* cellAt(int row, int column) const override { return column == 0 ? child(row) : nullptr; }
  int columnCount() const override { return 1; }
  int rowCount() const override { return List()->NumItems(); }
  QString columnDescription(int) const override { return List()->Header(); }
  QString rowDescription(int) const override { return QString(); }
  bool isColumnSelected(int) const override { return false; }
  bool isRowSelected(int row) const override { return List()->IsItemSelected(row); }
  int selectedColumnCount() const override { return 0; }
  QList<int> selectedColumns() const override { return {}; }
  QList<int> selectedRows() const override {
    QList<int> rows;
    for (int32_t row = 0; row < List()->NumItems(); ++row)
      if (List()->IsItemSelected(row)) rows.push_back(row);
    return rows;
  }
  int selectedRowCount() const override { return static_cast<int>(selectedRows().size()); }
  int selectedCellCount() const override { return selectedRowCount(); }
  QList<QAccessibleInterface*> selectedCells() const override {
    QList<QAccessibleInterface*> cells;
    for (int row : selectedRows()) cells.push_back(child(row));
    return cells;
  }
  bool selectColumn(int) override { return false; }
  bool unselectColumn(int) override { return false; }
  bool selectRow(int row) override {
    if (row < 0 || row >= List()->NumItems() || !List()->OnSelect) return false;
    List()->SelectItem(row, true);
    return true;
  }
  bool unselectRow(int row) override {
    if (row < 0 || row >= List()->NumItems() || !List()->OnSelect) return false;
    List()->SelectItem(row, false);
    return true;
  }
  void modelChange(QAccessibleTableModelChangeEvent*) override { ForgetRows(); }

  TZTCustomVirtualListBox* List() const { return static_cast<TZTCustomVirtualListBox*>(widget()); }

  int childCount() const override { return List()->NumItems(); }
  QAccessibleInterface* child(int index) const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  QAccessibleInterface* childAt(int x, int y) const override {
    const QPoint local = List()->viewport()->mapFromGlobal(QPoint(x, y));
    const int32_t row = List()->ItemAtPos(local, true);
    return row >= 0 ? child(row) : nullptr;
  }
  QAccessibleInterface* focusChild() const override {
    return List()->ItemIndex() >= 0 ? child(List()->ItemIndex()) : nullptr;
  }
  QString text(QAccessible::Text t) const override {
    if (t == QAccessible::Name && List()->accessibleName().isEmpty()) return List()->Header();
    return QAccessibleWidget::text(t);
  }
  void ForgetRows() const {
    for (auto id : std::as_const(FRows)) QAccessible::deleteAccessibleInterface(id);
    FRows.clear();
  }

 private:
  mutable QHash<int, QAccessible::Id> FRows;
};

class TRowAccessible : public QAccessibleInterface, public QAccessibleTableCellInterface {
 public:
  TRowAccessible(TZTCustomVirtualListBox* list, int row) : FList(list), FRow(row) {}
  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::TableCellInterface) return static_cast<QAccessibleTableCellInterface*>(this);
    return nullptr;
  }
  bool isSelected() const override { return isValid() && FList->IsItemSelected(FRow); }
  QList<QAccessibleInterface*> columnHeaderCells() const override { return {}; }
  QList<QAccessibleInterface*> rowHeaderCells() const override { return {}; }
  int columnIndex() const override { return 0; }
  int rowIndex() const override { return FRow; }
  int columnExtent() const override { return 1; }
  int rowExtent() const override { return 1; }
  QAccessibleInterface* table() const override { return parent(); }
  bool isValid() const override { return FList && FRow < FList->NumItems(); }
  QObject* object() const override { return nullptr; }
  QWindow* window() const override { return FList ? FList->window()->windowHandle() : nullptr; }
  QAccessibleInterface* parent() const override { return FList ? QAccessible::queryAccessibleInterface(FList) : nullptr; }
  QAccessibleInterface* child(int) const override { return nullptr; }
  int childCount() const override { return 0; }
  int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  QAccessibleInterface* childAt(int, int) const override { return nullptr; }
  QString text(QAccessible::Text t) const override {
    if (!isValid() || t != QAccessible::Name) return QString();
    return FList->ItemString(FRow).replace(QLatin1Char('\t'), QLatin1Char(' '));
  }
  void setText(QAccessible::Text, const QString&) override {}
  QRect rect() const override {
    if (!isValid()) return QRect();
    const QRect local = FList->ItemRect(FRow);
    return QRect(FList->viewport()->mapToGlobal(QPoint(0, local.top())), QSize(FList->viewport()->width(), local.height()));
  }
  QAccessible::Role role() const override { return QAccessible::ListItem; }
  QAccessible::State state() const override {
    QAccessible::State s;
    if (!isValid()) {
      s.invalid = true;
      return s;
    }
    s.selectable = true;
    s.focusable = true;
    s.multiSelectable = FList->MultiSelect();
    s.selected = FList->IsItemSelected(FRow);
    s.focused = FList->hasFocus() && FList->ItemIndex() == FRow;
    const int32_t top = FList->TopIndex();
    s.invisible = FRow < top || FRow >= top + FList->VisibleRows();
    s.offscreen = s.invisible;
    return s;
  }
  int Row() const { return FRow; }

 private:
  QPointer<TZTCustomVirtualListBox> FList;
  int FRow;
};

QAccessibleInterface* TListAccessible::child(int index) const {
  if (index < 0 || index >= childCount()) return nullptr;
  auto it = FRows.constFind(index);
  if (it != FRows.constEnd()) return QAccessible::accessibleInterface(*it);
  auto* row = new TRowAccessible(List(), index);
  FRows.insert(index, QAccessible::registerAccessibleInterface(row));
  return row;
}

int TListAccessible::indexOfChild(const QAccessibleInterface* child) const {
  auto* row = dynamic_cast<const TRowAccessible*>(child);
  return row && row->isValid() ? row->Row() : -1;
}

QAccessibleInterface* ListBoxFactory(const QString&, QObject* object) {
  if (auto* list = qobject_cast<TZTCustomVirtualListBox*>(object)) return new TListAccessible(list);
  return nullptr;
}

}  // namespace

void TZTCustomVirtualListBox::NotifyFocus() {
  if (!QAccessible::isActive() || FItemIndex < 0 || !hasFocus()) return;
  QAccessibleEvent event(this, QAccessible::Focus);
  event.setChild(FItemIndex);
  QAccessible::updateAccessibility(&event);
}

void InstallVirtualListBoxAccessibility() {
  // A plug-in module that carries its own copy of the list box takes its factory away when it is
  // unloaded, so that Qt never calls into code that is gone.
  static struct TFactory {
    TFactory() { QAccessible::installFactory(ListBoxFactory); }
    ~TFactory() { QAccessible::removeFactory(ListBoxFactory); }
  } factory;
}

}  // namespace zentrail
