// The picture and colour inspectors.

#include <QButtonGroup>
#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QPainter>
#include <QPrinter>
#include <QScrollArea>
#include <QScrollBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <cmath>

#include "ZTInspect.h"
#include "ZTInspectorUtils.h"
#include "ZTPictureDecode.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

// Paints the picture in one of the three display modes; transparent parts show a light checker.
class TZTPictureBox : public QWidget {
 public:
  enum Mode { Scale = 0, FullSize = 1, Stretch = 2 };
  explicit TZTPictureBox(QWidget* parent) : QWidget(parent) {}

  void SetImage(QImage image) {
    FImage = std::move(image);
    UpdateSize();
    update();
  }
  const QImage& Image() const { return FImage; }
  void SetMode(Mode mode) {
    FMode = mode;
    UpdateSize();
    update();
  }
  Mode GetMode() const { return FMode; }

  // The rectangle the picture takes in this widget.
  QRect PictureRect() const {
    if (FImage.isNull()) return {};
    const QSize own = FImage.size();
    switch (FMode) {
      case FullSize:
        return QRect(QPoint(0, 0), own);
      case Stretch:
        return rect();
      case Scale: {
        QSize s = own;
        if (s.width() > width() || s.height() > height()) s = own.scaled(size(), Qt::KeepAspectRatio);
        return QRect(QPoint((width() - s.width()) / 2, (height() - s.height()) / 2), s);
      }
    }
    return {};
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter p(this);
    if (FImage.isNull()) return;
    const QRect target = PictureRect();
    if (FImage.hasAlphaChannel()) {
      const int cell = 8;
      p.save();
      p.setClipRect(target);
      for (int y = target.top(); y < target.bottom(); y += cell) {
        for (int x = target.left(); x < target.right(); x += cell) {
          const bool dark = (((x - target.left()) / cell) + ((y - target.top()) / cell)) % 2;
          p.fillRect(QRect(x, y, cell, cell), dark ? QColor(0xe6, 0xe6, 0xe6) : Qt::white);
        }
      }
      p.restore();
    }
    p.setRenderHint(QPainter::SmoothPixmapTransform, FMode != FullSize);
    p.drawImage(target, FImage);
  }

 private:
  void UpdateSize() {
    if (FMode == FullSize) {
      setFixedSize(FImage.isNull() ? QSize(0, 0) : FImage.size());
    } else {
      setMinimumSize(0, 0);
      setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    }
  }

  QImage FImage;
  Mode FMode = FullSize;
};

// ---------------------------------------------------------------------------------------------

void TZTBitmapInspector::CreateToolbarButtons(QWidget* toolbar) {
  auto* group = new QButtonGroup(toolbar);
  group->setExclusive(true);
  FBtnScale = AddToolButton(QStringLiteral("Scale"), 3, true);
  AddToolSpacer();
  FBtnStretch = AddToolButton(QStringLiteral("Stretch"), 5, true);
  AddToolSpacer();
  FBtnFullSize = AddToolButton(QStringLiteral("Full Size"), 4, true);
  group->addButton(FBtnScale);
  group->addButton(FBtnStretch);
  group->addButton(FBtnFullSize);
  FBtnFullSize->setChecked(true);
}

void TZTBitmapInspector::CreateView() {
  FScrollBox = new QScrollArea(ViewArea());
  FScrollBox->setFrameShape(QFrame::NoFrame);
  FScrollBox->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  FScrollBox->setBackgroundRole(QPalette::Base);
  FImage = new TZTPictureBox(FScrollBox);
  FScrollBox->setWidget(FImage);
  FScrollBox->setWidgetResizable(false);
  ViewLayout()->addWidget(FScrollBox);
  // A click applies the mode; SetDisplayType does not.
  connect(FBtnScale, &QToolButton::clicked, this, [this] { ApplyDisplayType(0); });
  connect(FBtnFullSize, &QToolButton::clicked, this, [this] { ApplyDisplayType(1); });
  connect(FBtnStretch, &QToolButton::clicked, this, [this] { ApplyDisplayType(2); });
  ApplyDisplayType(1);
  SetFooter(QStringLiteral("0 x 0"));
}

int TZTBitmapInspector::GetDisplayType() const {
  if (FBtnScale->isChecked()) return 0;
  if (FBtnFullSize->isChecked()) return 1;
  return 2;
}

void TZTBitmapInspector::SetDisplayType(int value) {
  (value == 0 ? FBtnScale : value == 1 ? FBtnFullSize : FBtnStretch)->setChecked(true);
}

void TZTBitmapInspector::ApplyDisplayType(int value) {
  SetDisplayType(value);
  const auto mode = value == 0 ? TZTPictureBox::Scale : value == 1 ? TZTPictureBox::FullSize : TZTPictureBox::Stretch;
  FScrollBox->setWidgetResizable(mode != TZTPictureBox::FullSize);
  FImage->SetMode(mode);
  if (mode == TZTPictureBox::FullSize) FImage->adjustSize();
}

const QImage& TZTBitmapInspector::Picture() const { return FImage->Image(); }

void TZTBitmapInspector::Clear() {
  TZTStockInspector::Clear();
  FImage->SetImage(QImage());
  SetFooter(QStringLiteral("0 x 0"));
}

void TZTBitmapInspector::InspectMessage() {
  const std::string_view hex = MessageSet.GetDetails();
  std::ptrdiff_t stoppedAt = -1;
  const std::string bytes = HexToBytes(hex, &stoppedAt);
  const bool isPng = MessageSet.GetTypeName() == "PngImage";
  TZTDecodedPicture picture = isPng ? DecodePng(bytes) : DecodeBitmap(bytes);

  QStringList notes;
  if (hex.size() % 2 != 0) notes << QStringLiteral("The picture text has an odd number of hexadecimal digits; the last one was ignored.");
  if (stoppedAt >= 0) {
    notes << QStringLiteral("The picture text is not hexadecimal at character %1; the data ends there.").arg(stoppedAt + 1);
  }
  if (!picture.Error.isEmpty()) notes << picture.Error;

  Clear();
  FImage->SetImage(std::move(picture.Image));
  FScrollBox->horizontalScrollBar()->setValue(0);
  FScrollBox->verticalScrollBar()->setValue(0);
  const QImage& img = FImage->Image();
  SetFooter(QStringLiteral("%1 x %2").arg(img.width()).arg(img.height()));
  SetNotice(notes.join(u' '));
}

void TZTBitmapInspector::SetHeaderFont(const QFont& font, int height) {
  TZTStockInspector::SetHeaderFont(font, height);
}

void TZTBitmapInspector::CopyToClipboard() {
  if (!FImage->Image().isNull()) QGuiApplication::clipboard()->setImage(FImage->Image());
}

void TZTBitmapInspector::PrintContents(const QStringList& lines) {
  (void)lines;
  const QImage& img = FImage->Image();
  if (img.isNull() || !Printer()) return;
  const int pageWidth = Printer()->width();
  const int pageHeight = Printer()->height();
  const double scaleX = static_cast<double>(pageWidth) / img.width();
  const double scaleY = static_cast<double>(pageHeight) / img.height();
  const double scale = scaleX >= scaleY ? scaleY : scaleX;
  const int w = static_cast<int>(std::nearbyint(img.width() * scale));
  const int h = static_cast<int>(std::nearbyint(img.height() * scale));
  const QRect target((pageWidth - w) / 2, (pageHeight - h) / 2, w, h);
  PrintPainter()->setRenderHint(QPainter::SmoothPixmapTransform, true);
  PrintPainter()->drawImage(target, img);
}

// ---------------------------------------------------------------------------------------------
// Colour

void TZTColorInspector::CreateView() {
  FValuesPanel = new QWidget(ViewArea());
  FValuesPanel->setFixedHeight(80);
  static const char* const kCaptions[7] = {"R", "G", "B", "A", "H", "S", "L"};
  for (int i = 0; i < 7; ++i) {
    FLabels[i] = new QLabel(QString::fromLatin1(kCaptions[i]), FValuesPanel);
    FValues[i] = new QLabel(FValuesPanel);
    FValues[i]->setFrameShape(QFrame::StyledPanel);
    FValues[i]->setFrameShadow(QFrame::Sunken);
    FValues[i]->setAlignment(Qt::AlignCenter);
    FValues[i]->setAutoFillBackground(true);
    FValues[i]->setBackgroundRole(QPalette::Base);
    FValues[i]->setTextInteractionFlags(Qt::TextSelectableByMouse);
  }
  // Initial positions; the measured layout replaces them once fonts are set.
  const int lefts[4] = {8, 60, 112, 164};
  for (int i = 0; i < 7; ++i) {
    const int col = i < 4 ? i : i - 4;
    const int top = i < 4 ? 8 : 32;
    FLabels[i]->move(lefts[col], top);
    FValues[i]->setGeometry(lefts[col] + 12, top, 36, 18);
  }
  FSwatch = new QFrame(ViewArea());
  FSwatch->setObjectName(QStringLiteral("ColorSwatch"));
  ViewLayout()->addWidget(FValuesPanel);
  ViewLayout()->addWidget(FSwatch, 1);
  FValueColor = QColor(0, 0, 128);
  LayoutValues();
  Clear();
}

void TZTColorInspector::LayoutValues() {
  const QFontMetrics fm(FValuesPanel->font());
  const int W = fm.horizontalAdvance(u'G');
  const int H = fm.height();
  FValuesPanel->setFixedHeight(static_cast<int>(std::nearbyint(H * 3.5)));
  const int row2 = H + 8 + static_cast<int>(std::nearbyint(H * 0.5));
  for (int i = 0; i < 7; ++i) {
    const int col = i < 4 ? i : i - 4;
    const int top = i < 4 ? 8 : row2;
    const int left = 8 + 6 * W * col;
    FLabels[i]->adjustSize();
    FLabels[i]->move(left, top + 1);
    FValues[i]->setGeometry(left + W + 4, top, static_cast<int>(std::nearbyint(W * 3.5)), H + 2);
    FValues[i]->setStyleSheet(QStringLiteral("color: %1;").arg(FValueColor.name()));
  }
}

void TZTColorInspector::SetHeaderFont(const QFont& font, int height) {
  TZTStockInspector::SetHeaderFont(font, height);
  LayoutValues();
}

void TZTColorInspector::SetViewFont(const QFont& font) {
  FValuesPanel->setFont(font);
  LayoutValues();
}

void TZTColorInspector::SetValueColor(const QColor& color) {
  FValueColor = color;
  LayoutValues();
}

QString TZTColorInspector::ValueText(int index) const {
  return index >= 0 && index < 7 ? FValues[index]->text() : QString();
}

QColor TZTColorInspector::SwatchColor() const { return FSwatchColor; }

namespace {
QString SwatchStyle(const QColor& c) {
  return QStringLiteral("QFrame#ColorSwatch { background: %1; border: 4px solid palette(base); "
                        "outline: none; }")
      .arg(c.name());
}
}  // namespace

void TZTColorInspector::Clear() {
  TZTStockInspector::Clear();
  for (QLabel* v : FValues) v->clear();
  FSwatchColor = palette().color(QPalette::Base);
  FSwatch->setStyleSheet(SwatchStyle(FSwatchColor));
}

void TZTColorInspector::InspectMessage() {
  const QStringList lines = SplitLines(ToQString(MessageSet.GetDetails()));
  Clear();
  int values[4] = {0, 0, 0, 0};
  QStringList problems;
  static const char* const kNames[4] = {"red", "green", "blue", "alpha"};
  const int needed = lines.size() >= 4 ? 4 : 3;
  for (int i = 0; i < needed; ++i) {
    if (i >= lines.size()) {
      problems << QStringLiteral("The %1 value is missing.").arg(QString::fromLatin1(kNames[i]));
      continue;
    }
    bool ok = false;
    values[i] = lines.at(i).trimmed().toInt(&ok);
    if (i < 3) FValues[i]->setText(lines.at(i));
    if (!ok) {
      const QString shown = lines.at(i).size() > 40 ? lines.at(i).left(40) + QStringLiteral("...") : lines.at(i);
      problems << QStringLiteral("The %1 value \"%2\" is not a number.").arg(QString::fromLatin1(kNames[i]), shown);
    }
  }
  if (!problems.isEmpty()) {
    SetNotice(problems.join(u' ') + QStringLiteral(" The colour cannot be shown."));
    return;
  }
  const int r = values[0] & 0xFF;
  const int g = values[1] & 0xFF;
  const int b = values[2] & 0xFF;
  const THslValues hsl = RgbToHsl(r, g, b);
  FValues[3]->setText(QString::number(values[3]));
  FValues[4]->setText(QString::number(hsl.H));
  FValues[5]->setText(QString::number(hsl.S));
  FValues[6]->setText(QString::number(hsl.L));
  FSwatchColor = QColor(r, g, b);
  FSwatch->setStyleSheet(SwatchStyle(FSwatchColor));
}

}  // namespace zentrail
