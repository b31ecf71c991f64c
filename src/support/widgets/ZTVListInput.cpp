#include "ZTVList.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTimer>
#include <QWheelEvent>
#include <algorithm>

namespace zentrail {

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

}  // namespace zentrail
