#include "ZTColorEdit.h"

#include <QBoxLayout>
#include <QColorDialog>
#include <QPainter>
#include <QToolButton>

namespace zentrail {

TZTColorEdit::TZTColorEdit(const QString& name, const QString& accessibleName, QWidget* parent) : QWidget(parent) {
  setObjectName(name);
  FButton = new QToolButton(this);
  FButton->setObjectName(name + QStringLiteral("Button"));
  FButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  FButton->setIconSize(QSize(28, 14));
  FButton->setAccessibleName(accessibleName);
  FButton->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  setFocusProxy(FButton);
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(FButton);
  connect(FButton, &QToolButton::clicked, this, [this] { Choose(); });
  SetColor(0);
}

void TZTColorEdit::SetColor(TColor color) {
  FColor = color;
  const QColor shown = ColorToQColor(color, palette());
  QPixmap swatch(28, 14);
  swatch.fill(shown);
  QPainter p(&swatch);
  p.setPen(palette().color(QPalette::Mid));
  p.drawRect(0, 0, 27, 13);
  p.end();
  FButton->setIcon(QIcon(swatch));
  FButton->setText(IsSystemColor(color) ? QStringLiteral("System") : shown.name().toUpper());
  emit ColorChanged(color);
}

void TZTColorEdit::Choose() {
  const QColor picked = QColorDialog::getColor(ColorToQColor(FColor, palette()), this, FButton->accessibleName());
  if (picked.isValid()) SetColor(QColorToColor(picked));
}

}  // namespace zentrail
