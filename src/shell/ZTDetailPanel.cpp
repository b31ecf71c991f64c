#include "ZTDetailPanel.h"

#include <QLabel>
#include <QPainter>
#include <QResizeEvent>
#include <algorithm>

namespace zentrail {
namespace {
const char* const kCaptions[] = {"Category", "Type Name", "App Name", "Computer",
                                 "PID",      "Thread",    "Date",     "TimeStamp"};
const char* const kFieldNames[] = {"stsCategory", "stsTypeName", "stsAppName", "stsComputer",
                                   "stsPID",      "stsThreadName", "stsDate",  "stsTimeStamp"};
constexpr int kLabelWidth = 60;
constexpr int kLabelHeight = 13;
constexpr int kFieldHeight = 17;
}  // namespace

TZTDetailPanel::TZTDetailPanel(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("pnlMsgDetails"));
  for (int i = 0; i < FieldCount; ++i) {
    FLabels[i] = new QLabel(QString::fromLatin1(kCaptions[i]), this);
    FLabels[i]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    FFields[i] = new QLabel(this);
    FFields[i]->setTextInteractionFlags(Qt::TextSelectableByMouse);
    FFields[i]->setFrameShape(QFrame::StyledPanel);
    FFields[i]->setAutoFillBackground(true);
    FFields[i]->setBackgroundRole(QPalette::Base);
    FFields[i]->setContentsMargins(3, 0, 3, 0);
    FFields[i]->setAccessibleName(QString::fromLatin1(kCaptions[i]));
    FFields[i]->setObjectName(QString::fromLatin1(kFieldNames[i]));
  }
  // The panel's own small face, so that the eight fields fit in one band.
  QFont small = font();
  small.setPointSizeF(std::max(7.0, small.pointSizeF() - 1));
  setFont(small);
  int widest = 0;
  for (QLabel* label : FLabels) widest = std::max(widest, label->fontMetrics().horizontalAdvance(label->text()));
  FLabelWidth = std::max(kLabelWidth, widest + 4);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  setFixedHeight(HeightForPanelWidth(600));
}

void TZTDetailPanel::SetField(Field field, const QString& text) { FFields[field]->setText(text); }
QString TZTDetailPanel::FieldText(Field field) const { return FFields[field]->text(); }

void TZTDetailPanel::Clear() {
  for (QLabel* f : FFields) f->clear();
}

void TZTDetailPanel::SetValueColor(const QColor& color) {
  for (QLabel* f : FFields) {
    QPalette p = f->palette();
    p.setColor(QPalette::WindowText, color);
    p.setColor(QPalette::Text, color);
    f->setPalette(p);
  }
}

int TZTDetailPanel::HeightForPanelWidth(int width) {
  if (width < 300) return 136;
  if (width < 550) return 71;
  return 39;
}

void TZTDetailPanel::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  int h = HeightForPanelWidth(width());
  if (height() != h) setFixedHeight(h);
  Arrange();
}

void TZTDetailPanel::Arrange() {
  const int w = width();
  auto place = [&](int i, int x, int y, int fieldOffset, int fieldWidth) {
    FLabels[i]->setGeometry(x, y + (kFieldHeight - kLabelHeight) / 2 - 1, FLabelWidth, kLabelHeight + 2);
    FFields[i]->setGeometry(x + fieldOffset + (FLabelWidth - kLabelWidth), y, fieldWidth - (FLabelWidth - kLabelWidth), kFieldHeight);
  };
  if (w < 300) {
    // One column, 16-pixel steps; each field stretches with the width.
    for (int i = 0; i < FieldCount; ++i) place(i, 2, 2 + i * 16, 65, 80 + (w - 150));
  } else if (w < 550) {
    // Two columns of four; the surplus is shared between them.
    int surplus = (w - 300) / 2;
    int fieldWidth = 80 + surplus;
    int column = 65 + fieldWidth + 10;
    for (int i = 0; i < FieldCount; ++i) place(i, 2 + (i / 4) * column, 2 + (i % 4) * 17, 65, fieldWidth - 5);
  } else {
    // One band of two rows, four fields a row; the surplus goes to the fields.
    int surplus = (w - 550) / 4;
    int fieldWidth = 70 + surplus;
    int column = 63 + fieldWidth + 4;
    for (int i = 0; i < FieldCount; ++i) place(i, 2 + (i % 4) * column, 2 + (i / 4) * 18, 63, fieldWidth);
  }
}

void TZTDetailPanel::paintEvent(QPaintEvent*) {
  QPainter p(this);
  QColor base = palette().color(QPalette::Window);
  QLinearGradient g(0, 0, 0, height());
  g.setColorAt(0, base.lighter(108));
  g.setColorAt(1, base.darker(104));
  p.fillRect(rect(), g);
  p.setPen(palette().color(QPalette::Mid));
  p.drawLine(0, height() - 1, width(), height() - 1);
}

TZTMsgTypePanel::TZTMsgTypePanel(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("pnlMsgType"));
  setAccessibleName(QStringLiteral("Message Content"));
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
}

QSize TZTMsgTypePanel::sizeHint() const { return {26 + 11 + 2, 22}; }

QPolygon TZTMsgTypePanel::Plate(int h) { return QPolygon({{0, 0}, {26, 0}, {26 + h / 2, h / 2}, {26, h}, {0, h}}); }

void TZTMsgTypePanel::SetContent(const QPixmap& glyph, const QString& hint) {
  FGlyph = glyph;
  setToolTip(hint);
  update();
}

void TZTMsgTypePanel::Clear() {
  FGlyph = QPixmap();
  setToolTip(QString());
  update();
}

void TZTMsgTypePanel::paintEvent(QPaintEvent*) {
  QPainter p(this);
  p.setRenderHint(QPainter::Antialiasing, true);
  const int h = height() - 1;
  // The two chrome colours of the window, light to dark.
  const QColor base = palette().color(QPalette::Window);
  QLinearGradient g(0, 0, 0, h);
  g.setColorAt(0, base.lighter(112));
  g.setColorAt(1, base.darker(112));
  p.setBrush(g);
  p.setPen(palette().color(QPalette::Mid));
  p.drawPolygon(Plate(h));
  if (!FGlyph.isNull()) {
    const QSize size = FGlyph.deviceIndependentSize().toSize();
    p.drawPixmap((26 - size.width()) / 2 + 2, (h - size.height()) / 2 + 1, FGlyph);
  }
}

}  // namespace zentrail
