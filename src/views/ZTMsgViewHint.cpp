// The hint that shows a message text cut off in its row.

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>

#include "ZTMsgView.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

namespace {
constexpr int ztHintMaxHeight = 40;
constexpr int ztHintTextFlags = Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap;
}  // namespace

TZTMessageViewHintWindow::TZTMessageViewHintWindow(QWidget* owner)
    : QWidget(owner, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus) {
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setForegroundRole(QPalette::ToolTipText);
  setBackgroundRole(QPalette::ToolTipBase);
  setAutoFillBackground(true);
  setPalette(QApplication::palette("QToolTip"));
}

QRect TZTMessageViewHintWindow::CalcHintRect(int maxWidth, const QString& text) const {
  const QFontMetrics metrics(font());
  const QRect measure = metrics.boundingRect(QRect(0, 0, std::max(1, maxWidth), 100000), ztHintTextFlags, text);
  const int width = measure.width() + 4 <= maxWidth ? measure.width() + 4 : maxWidth;
  const int height = measure.height() + 2 <= ztHintMaxHeight ? measure.height() + 2 : ztHintMaxHeight;
  return QRect(-2, 0, std::max(1, width), height);
}

void TZTMessageViewHintWindow::ActivateHint(const QRect& rect, const QString& text) {
  FText = text;
  setGeometry(rect);
  show();
  update();
}

void TZTMessageViewHintWindow::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setPen(palette().color(QPalette::ToolTipText));
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
  painter.drawText(rect().adjusted(2, 1, -1, -1), ztHintTextFlags, FText);
}

void TZTMessageView::UpdateHint(const QPoint& pos) {
  const int32_t row = ItemAtPos(pos, true);
  if (row < 0 || QGuiApplication::applicationState() != Qt::ApplicationActive) {
    ReleaseHint();
    return;
  }
  TZentrailMessageSet& ms = MessageSet;
  SelectRecord(row);
  const int32_t type = ms.GetMsgType();
  if (type == ztmSeparator || type == ztmInactiveSeparator || type == ztmResetSeparator ||
      type == ztmAppStartSeparator) {
    ReleaseHint();
    return;
  }
  const QRect message = MessageRect(ItemRect(row), GetIndentLevel(row), type);
  const std::string_view raw = ms.GetMsgText();
  const QString text = QString::fromUtf8(raw.data(), static_cast<qsizetype>(raw.size()));
  if (pos.x() >= message.right() || fontMetrics().horizontalAdvance(text) + 2 <= message.width()) {
    ReleaseHint();
    return;
  }
  if (!FHintWindow) {
    FHintWindow = new TZTMessageViewHintWindow(this);
    FHintWindow->setFont(font());
  }
  const int imageWidth = MessageImages() ? MessageImages()->Width() : 16;
  const int maxWidth = viewport()->width() - message.left() - imageWidth - 4;
  QRect hint = FHintWindow->CalcHintRect(std::max(40, maxWidth), text);
  const QPoint place = viewport()->mapToGlobal(QPoint(message.left(), ItemRect(row).top())) + QPoint(-1, -2);
  hint.moveTopLeft(place + QPoint(hint.left(), 0));
  if (FHintWindow->isVisible() && FHintWindow->geometry() == hint && FHintWindow->Text() == text) return;
  FHintWindow->ActivateHint(hint, text);
}

void TZTMessageView::ReleaseHint() {
  if (FHintWindow && FHintWindow->isVisible()) FHintWindow->hide();
}

void TZTMessageView::mouseMoveEvent(QMouseEvent* event) {
  TZTVirtualListBox::mouseMoveEvent(event);
  if (!(event->buttons() & Qt::LeftButton)) UpdateHint(event->position().toPoint());
}

void TZTMessageView::mousePressEvent(QMouseEvent* event) {
  ReleaseHint();
  TZTVirtualListBox::mousePressEvent(event);
}

void TZTMessageView::leaveEvent(QEvent* event) {
  ReleaseHint();
  TZTVirtualListBox::leaveEvent(event);
}

void TZTMessageView::focusOutEvent(QFocusEvent* event) {
  ReleaseHint();
  TZTVirtualListBox::focusOutEvent(event);
}

}  // namespace zentrail
