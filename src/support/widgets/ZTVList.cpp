#include "ZTVList.h"

#include <QAccessible>
#include <QFocusEvent>
#include <QPainter>
#include <QPaintEvent>
#include <QResizeEvent>
#include <QScrollBar>
#include <QStyleOptionFocusRect>
#include <QTimer>
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

}  // namespace zentrail
