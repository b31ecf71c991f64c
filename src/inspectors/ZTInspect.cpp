#include "ZTInspect.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPrinter>
#include <QToolButton>
#include <QVBoxLayout>
#include <stdexcept>

#include "ZTInspectorUtils.h"

namespace zentrail {

// ---------------------------------------------------------------------------------------------
// Glyphs

QIcon TZTInspectorImageList::Icon(int index) const {
  if (index < 0 || index >= FIcons.size()) return {};
  return FIcons.at(index);
}

void TZTInspectorImageList::SetIcons(QList<QIcon> icons) {
  FIcons = std::move(icons);
  emit Changed();
}

namespace {

using GlyphPainter = void (*)(QPainter&);

QIcon DrawGlyph(GlyphPainter paint) {
  QIcon icon;
  for (int scale : {1, 2}) {
    QPixmap pm(16 * scale, 16 * scale);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing, true);
    p.scale(scale, scale);
    paint(p);
    p.end();
    pm.setDevicePixelRatio(scale);
    icon.addPixmap(pm);
  }
  return icon;
}

const QColor kInk(0x33, 0x44, 0x66);
const QColor kAccent(0x2a, 0x7a, 0xd5);
const QColor kPaper(0xfa, 0xfa, 0xfa);

void Lines(QPainter& p, std::initializer_list<QLineF> lines, const QColor& c, double w = 1.4) {
  p.setPen(QPen(c, w, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  for (const QLineF& l : lines) p.drawLine(l);
}

void Arrow(QPainter& p, QPointF from, QPointF to, const QColor& c) {
  Lines(p, {QLineF(from, to)}, c, 1.5);
  const QLineF shaft(to, from);
  QLineF a = shaft;
  a.setLength(3.5);
  a.setAngle(shaft.angle() + 35);
  QLineF b = shaft;
  b.setLength(3.5);
  b.setAngle(shaft.angle() - 35);
  Lines(p, {a, b}, c, 1.5);
}

void Page(QPainter& p, QRectF r) {
  p.setPen(QPen(kInk, 1));
  p.setBrush(kPaper);
  p.drawRect(r);
  p.setBrush(Qt::NoBrush);
}

void GlyphWordWrap(QPainter& p) {
  Lines(p, {QLineF(2, 3.5, 14, 3.5), QLineF(2, 12.5, 6, 12.5)}, kInk);
  QPainterPath path;
  path.moveTo(2, 8);
  path.lineTo(11.5, 8);
  path.cubicTo(15, 8, 15, 12.5, 11.5, 12.5);
  path.lineTo(9, 12.5);
  p.setPen(QPen(kAccent, 1.5, Qt::SolidLine, Qt::RoundCap));
  p.drawPath(path);
  Lines(p, {QLineF(9, 12.5, 11, 10.5), QLineF(9, 12.5, 11, 14.5)}, kAccent, 1.5);
}

void GlyphJumpToEnd(QPainter& p) {
  Lines(p, {QLineF(2, 3, 9, 3), QLineF(2, 6, 9, 6), QLineF(2, 9, 9, 9)}, kInk);
  Lines(p, {QLineF(2, 14, 14, 14)}, kAccent, 1.8);
  Arrow(p, QPointF(12.5, 2), QPointF(12.5, 11.5), kAccent);
}

void GlyphLineNumbers(QPainter& p) {
  QFont f = p.font();
  f.setPixelSize(6);
  f.setBold(true);
  p.setFont(f);
  p.setPen(kAccent);
  p.drawText(QRectF(0, 1, 5, 5), Qt::AlignCenter, QStringLiteral("1"));
  p.drawText(QRectF(0, 6, 5, 5), Qt::AlignCenter, QStringLiteral("2"));
  p.drawText(QRectF(0, 11, 5, 5), Qt::AlignCenter, QStringLiteral("3"));
  Lines(p, {QLineF(5.5, 1, 5.5, 15)}, QColor(0x99, 0x99, 0x99), 1);
  Lines(p, {QLineF(7.5, 3.5, 14, 3.5), QLineF(7.5, 8.5, 12, 8.5), QLineF(7.5, 13.5, 14, 13.5)}, kInk);
}

void GlyphScale(QPainter& p) {
  Page(p, QRectF(1.5, 1.5, 13, 13));
  p.setPen(Qt::NoPen);
  p.setBrush(kAccent);
  p.drawRect(QRectF(4.5, 5.5, 7, 5));
}

void GlyphFullSize(QPainter& p) {
  Page(p, QRectF(1.5, 1.5, 13, 13));
  QFont f = p.font();
  f.setPixelSize(7);
  f.setBold(true);
  p.setFont(f);
  p.setPen(kAccent);
  p.drawText(QRectF(1.5, 1.5, 13, 13), Qt::AlignCenter, QStringLiteral("1:1"));
}

void GlyphStretch(QPainter& p) {
  Page(p, QRectF(1.5, 1.5, 13, 13));
  Arrow(p, QPointF(8, 8), QPointF(3.5, 3.5), kAccent);
  Arrow(p, QPointF(8, 8), QPointF(12.5, 12.5), kAccent);
}

void TreeGlyph(QPainter& p, bool expand) {
  p.setPen(QPen(kInk, 1));
  p.setBrush(kPaper);
  p.drawRect(QRectF(2.5, 2.5, 11, 11));
  Lines(p, {QLineF(5, 8, 11, 8)}, kAccent, 1.6);
  if (expand) Lines(p, {QLineF(8, 5, 8, 11)}, kAccent, 1.6);
}
void GlyphCollapseAll(QPainter& p) { TreeGlyph(p, false); }
void GlyphExpandAll(QPainter& p) { TreeGlyph(p, true); }

void GlyphCopyValue(QPainter& p) {
  Page(p, QRectF(1.5, 1.5, 8, 10));
  Page(p, QRectF(6.5, 4.5, 8, 10));
  Lines(p, {QLineF(8.5, 8, 12.5, 8), QLineF(8.5, 11, 12.5, 11)}, kAccent, 1.2);
}

void GlyphStructure(QPainter& p) {
  Lines(p, {QLineF(4, 4, 4, 12.5), QLineF(4, 8, 8, 8), QLineF(4, 12.5, 8, 12.5)}, kInk, 1.2);
  p.setPen(Qt::NoPen);
  p.setBrush(kAccent);
  p.drawRect(QRectF(1.5, 1.5, 5, 4));
  p.drawRect(QRectF(8.5, 6, 6, 4));
  p.drawRect(QRectF(8.5, 10.5, 6, 4));
}

void GlyphSyntax(QPainter& p) {
  Lines(p, {QLineF(5, 4, 1.5, 8), QLineF(1.5, 8, 5, 12)}, kAccent, 1.6);
  Lines(p, {QLineF(11, 4, 14.5, 8), QLineF(14.5, 8, 11, 12)}, kAccent, 1.6);
  Lines(p, {QLineF(9.5, 3, 6.5, 13)}, kInk, 1.4);
}

}  // namespace

TZTInspectorImageList* TZTInspectorImageList::CreateDefault(QObject* parent) {
  auto* list = new TZTInspectorImageList(parent);
  const GlyphPainter glyphs[] = {GlyphWordWrap,    GlyphJumpToEnd, GlyphLineNumbers, GlyphScale,
                                 GlyphFullSize,    GlyphStretch,   GlyphCollapseAll, GlyphExpandAll,
                                 GlyphCopyValue,   GlyphStructure, GlyphSyntax};
  QList<QIcon> icons;
  for (GlyphPainter g : glyphs) icons.append(DrawGlyph(g));
  list->FIcons = std::move(icons);
  return list;
}

// ---------------------------------------------------------------------------------------------
// Base

TZTStockInspector::TZTStockInspector(QWidget* owner) : QFrame(owner) {
  FLayout = new QVBoxLayout(this);
  FLayout->setContentsMargins(0, 0, 0, 0);
  FLayout->setSpacing(0);
  FViewArea = new QWidget(this);
  FViewLayout = new QVBoxLayout(FViewArea);
  FViewLayout->setContentsMargins(0, 0, 0, 0);
  FViewLayout->setSpacing(0);
  FLayout->addWidget(FViewArea, 1);
  FNotice = new QLabel(this);
  FNotice->setObjectName(QStringLiteral("InspectorNotice"));
  FNotice->setWordWrap(true);
  FNotice->setTextInteractionFlags(Qt::TextSelectableByMouse);
  FNotice->setContentsMargins(6, 3, 6, 3);
  FNotice->setStyleSheet(QStringLiteral(
      "QLabel#InspectorNotice { background: #fff4ce; color: #5c4400; border-top: 1px solid #e0c060; }"));
  FNotice->hide();
  FLayout->addWidget(FNotice);
  FHighlightColor = palette().color(QPalette::Highlight);
  FHighlightFontColor = palette().color(QPalette::HighlightedText);
}

TZTStockInspector::~TZTStockInspector() {
  // The toolbar lives in the pane's toolbar strip, not in the inspector.
  delete FToolbar;
}

void TZTStockInspector::Construct(QWidget* toolbarParent) {
  setFrameShape(QFrame::NoFrame);
  setAutoFillBackground(true);
  QPalette pal = palette();
  pal.setColor(QPalette::Window, pal.color(QPalette::Base));
  setPalette(pal);
  CreateToolbar(toolbarParent);
  CreateHeader();
  CreateFooter();
  CreateView();
}

void TZTStockInspector::CreateToolbar(QWidget* parent) {
  FToolbar = new QWidget(parent);
  auto* layout = new QHBoxLayout(FToolbar);
  layout->setContentsMargins(0, 2, 0, 1);
  layout->setSpacing(1);
  FToolbarLayout = layout;
  FToolbar->setUpdatesEnabled(false);
  CreateToolbarButtons(FToolbar);
  FToolbar->setUpdatesEnabled(true);
  FToolbar->hide();
  if (parent && parent->layout()) parent->layout()->addWidget(FToolbar);
}

void TZTStockInspector::CreateHeader() {
  FHeader = new QLabel(this);
  FHeader->setObjectName(QStringLiteral("InspectorHeader"));
  FHeader->setFixedHeight(17);
  FHeader->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  FHeader->setContentsMargins(4, 0, 4, 0);
  FHeader->setAutoFillBackground(true);
  FHeader->setStyleSheet(QStringLiteral(
      "QLabel#InspectorHeader { background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #f7f8fa, "
      "stop:1 #e6e9ee); border-bottom: 1px solid #c5cad3; font-weight: bold; color: #1f2d3d; }"));
  FHeader->setVisible(HasHeader());
  FLayout->insertWidget(0, FHeader);
}

void TZTStockInspector::CreateFooter() {
  FFooter = new QLabel(this);
  FFooter->setObjectName(QStringLiteral("InspectorFooter"));
  FFooter->setFixedHeight(21);
  FFooter->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  FFooter->setContentsMargins(4, 0, 4, 0);
  FFooter->setStyleSheet(QStringLiteral(
      "QLabel#InspectorFooter { background: #eef0f3; border-top: 1px solid #c5cad3; color: #33404f; }"));
  FFooter->setVisible(HasFooter());
  FLayout->addWidget(FFooter);
}

void TZTStockInspector::PrintContents(const QStringList& lines) {
  for (const QString& line : lines) PrintLine(line);
}

void TZTStockInspector::UpdateImages() {
  for (auto& [button, index] : FButtons) button->setIcon(FImages ? FImages->Icon(index) : QIcon());
}

QString TZTStockInspector::GetHeader() const { return FHeader ? FHeader->text() : QString(); }
void TZTStockInspector::SetHeader(const QString& text) {
  if (FHeader) FHeader->setText(text);
}
QString TZTStockInspector::GetFooter() const { return FFooter ? FFooter->text() : QString(); }
void TZTStockInspector::SetFooter(const QString& text) {
  if (FFooter) FFooter->setText(text);
}

void TZTStockInspector::Clear() {
  SetHeader(QString());
  SetFooter(QString());
  SetNotice(QString());
}

void TZTStockInspector::SetHighlightColors(const QColor& color, const QColor& fontColor) {
  FHighlightColor = color;
  FHighlightFontColor = fontColor;
}

void TZTStockInspector::ApplyHighlightPalette(QWidget* w) const {
  if (!w) return;
  QPalette pal = w->palette();
  for (auto group : {QPalette::Active, QPalette::Inactive}) {
    pal.setColor(group, QPalette::Highlight, FHighlightColor);
    pal.setColor(group, QPalette::HighlightedText, FHighlightFontColor);
  }
  w->setPalette(pal);
}

void TZTStockInspector::SetHeaderFont(const QFont& font, int height) {
  setFont(font);
  if (FHeader) FHeader->setFixedHeight(height + 2);
  if (FFooter) FFooter->setFixedHeight(height + 6);
}

void TZTStockInspector::SetImages(TZTInspectorImageList* images) {
  if (FImagesChangeLink) disconnect(FImagesChangeLink);
  if (FImagesFreeLink) disconnect(FImagesFreeLink);
  FImages = images;
  if (images) {
    UpdateImages();
    FImagesChangeLink = connect(images, &TZTInspectorImageList::Changed, this, [this] {
      UpdateImages();
      update();
    });
    FImagesFreeLink = connect(images, &QObject::destroyed, this, [this] { SetImages(nullptr); });
  } else {
    UpdateImages();
  }
  update();
}

void TZTStockInspector::ShowInspector() {
  if (FToolbar) {
    FToolbar->show();
    FToolbar->raise();
  }
  show();
}

void TZTStockInspector::HideInspector() {
  hide();
  if (FToolbar) FToolbar->hide();
}

void TZTStockInspector::SetNotice(const QString& text) {
  FNotice->setText(text);
  FNotice->setVisible(!text.isEmpty());
}

QString TZTStockInspector::Notice() const { return FNotice->text(); }

QToolButton* TZTStockInspector::AddToolButton(const QString& hint, int imageIndex, bool checkable) {
  auto* button = new QToolButton(FToolbar);
  button->setAutoRaise(true);
  button->setToolTip(hint);
  button->setAccessibleName(hint);
  button->setCheckable(checkable);
  button->setIconSize(QSize(16, 16));
  button->setFixedSize(24, 22);
  button->setFocusPolicy(Qt::NoFocus);
  FToolbarLayout->addWidget(button);
  FButtons.emplace_back(button, imageIndex);
  return button;
}

QWidget* TZTStockInspector::AddToolSpacer() {
  auto* line = new QFrame(FToolbar);
  line->setFrameShape(QFrame::VLine);
  line->setFrameShadow(QFrame::Sunken);
  line->setFixedWidth(6);
  FToolbarLayout->addWidget(line);
  return line;
}

// ---------------------------------------------------------------------------------------------
// Print engine

void TZTStockInspector::Print(const QString& title, QPrinter& printer) {
  QStringList list;
  GetContents(list);
  FPrintTitle = title;
  QPainter painter;
  if (!painter.begin(&printer)) throw std::runtime_error("The printer could not start the document.");
  FPrinter = &printer;
  FPrintPainter = &painter;
  struct Reset {
    TZTStockInspector* self;
    ~Reset() {
      self->FPrintPainter = nullptr;
      self->FPrinter = nullptr;
    }
  } reset{this};

  painter.setFont(InspectorFixedFont(8));
  FPrintDpi = printer.logicalDpiY();
  FPrintLeft = FPrintDpi;
  FPrintTop = FPrintDpi;
  FPrintLineHeight = std::max(1, painter.fontMetrics().height());
  FPrintLinesPerPage = std::max(1, (printer.height() - FPrintTop - FPrintTop / 2) / FPrintLineHeight);
  FPen = QPoint(FPrintLeft, FPrintTop);
  FPrintPageNo = 1;
  // FPrintLineNo carries over from the previous document of this inspector on purpose.
  PrintPageHeader();
  PrintContents(list);
  painter.end();
}

void TZTStockInspector::PrintPageHeader() {
  QPainter& p = *FPrintPainter;
  QFont headerFont = InspectorInterfaceFont();
  headerFont.setPointSize(12);
  headerFont.setBold(true);
  p.setFont(headerFont);
  const QString text = QStringLiteral("%1  --  Page %2").arg(FPrintTitle).arg(FPrintPageNo);
  p.drawText(QPoint(FPrintLeft, FPrintTop / 2 + p.fontMetrics().ascent()), text);
  FPen = QPoint(FPrintLeft, FPrintTop);
  p.setFont(InspectorFixedFont(8));
}

void TZTStockInspector::PrintText(const QString& s) {
  QPainter& p = *FPrintPainter;
  if (!s.isEmpty()) {
    p.drawText(QPoint(FPen.x(), FPen.y() + p.fontMetrics().ascent()), s);
    FPen.rx() += p.fontMetrics().horizontalAdvance(s);
  }
}

void TZTStockInspector::PrintLine(const QString& s) {
  PrintText(s);
  FPen = QPoint(FPrintLeft, FPen.y() + FPrintLineHeight);
  ++FPrintLineNo;
  if (FPrintLineNo >= FPrintLinesPerPage) {
    ++FPrintPageNo;
    FPrintLineNo = 1;
    FPrinter->newPage();
    PrintPageHeader();
    FPen = QPoint(FPrintLeft, FPrintTop);
  }
}

void TZTStockInspector::PutTextOnClipboard(const QString& text) {
  QGuiApplication::clipboard()->setText(text);
}

QString TZTStockInspector::LinesAsText(const QStringList& lines) {
  QString out;
  qsizetype size = 0;
  for (const QString& l : lines) size += l.size() + 2;
  out.reserve(size);
  for (const QString& l : lines) {
    out += l;
    out += QStringLiteral("\r\n");
  }
  return out;
}

}  // namespace zentrail
