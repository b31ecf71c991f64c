// The glyphs of message types, contents and bookmarks, drawn for this viewer at 16 by 16, and once
// more at twice the resolution, so that they are sharp on plain and on scaled screens alike.

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <cmath>
#include <functional>

#include "ZTMsgView.h"

namespace zentrail {

namespace {

constexpr int ztIconSize = 16;

// The same drawing in 16 by 16 logical pixels at 1x and at 2x.
struct TGlyph {
  QPixmap Plain;
  QPixmap Double;
};

QPixmap RenderGlyph(const std::function<void(QPainter&)>& paint, int scale) {
  QPixmap pixmap(ztIconSize * scale, ztIconSize * scale);
  pixmap.setDevicePixelRatio(scale);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setRenderHint(QPainter::TextAntialiasing);
  paint(painter);
  return pixmap;
}

TGlyph Glyph(const std::function<void(QPainter&)>& paint) { return {RenderGlyph(paint, 1), RenderGlyph(paint, 2)}; }

void Letter(QPainter& p, const QRectF& rect, const QString& text, const QColor& color, qreal size, bool bold = true) {
  QFont font(QStringLiteral("DejaVu Sans"));
  font.setPixelSize(static_cast<int>(size));
  font.setBold(bold);
  p.setFont(font);
  p.setPen(color);
  p.drawText(rect, Qt::AlignCenter, text);
}

void Disc(QPainter& p, const QColor& fill, const QString& text = QString(), const QColor& ink = Qt::white) {
  p.setPen(QPen(fill.darker(140), 1));
  p.setBrush(fill);
  p.drawEllipse(QRectF(1.5, 1.5, 13, 13));
  if (!text.isEmpty()) Letter(p, QRectF(1.5, 1.5, 13, 13), text, ink, 10);
}

void Page(QPainter& p, const QColor& paper = QColor(0xFA, 0xFA, 0xF7)) {
  QPainterPath path;
  path.moveTo(3.5, 1.5);
  path.lineTo(10, 1.5);
  path.lineTo(12.5, 4);
  path.lineTo(12.5, 14.5);
  path.lineTo(3.5, 14.5);
  path.closeSubpath();
  p.setPen(QPen(QColor(0x70, 0x78, 0x80), 1));
  p.setBrush(paper);
  p.drawPath(path);
}

void Lines(QPainter& p, const QColor& ink, int count, qreal top = 5, qreal left = 5.5, qreal right = 10.5) {
  p.setPen(QPen(ink, 1));
  for (int i = 0; i < count; ++i) p.drawLine(QPointF(left, top + i * 2.2), QPointF(right, top + i * 2.2));
}

void Arrow(QPainter& p, bool right, const QColor& color) {
  QPainterPath path;
  if (right) {
    path.moveTo(2, 6);
    path.lineTo(8, 6);
    path.lineTo(8, 3);
    path.lineTo(14, 8);
    path.lineTo(8, 13);
    path.lineTo(8, 10);
    path.lineTo(2, 10);
  } else {
    path.moveTo(14, 6);
    path.lineTo(8, 6);
    path.lineTo(8, 3);
    path.lineTo(2, 8);
    path.lineTo(8, 13);
    path.lineTo(8, 10);
    path.lineTo(14, 10);
  }
  path.closeSubpath();
  p.setPen(QPen(color.darker(140), 1));
  p.setBrush(color);
  p.drawPath(path);
}

TGlyph MessageGlyph(int code) {
  return Glyph([code](QPainter& p) {
    switch (code) {
      case ztmInfo: Disc(p, QColor(0x2F, 0x7C, 0xD8), QStringLiteral("i")); break;
      case ztmWarning: {
        QPainterPath tri;
        tri.moveTo(8, 1.5);
        tri.lineTo(15, 14.5);
        tri.lineTo(1, 14.5);
        tri.closeSubpath();
        p.setPen(QPen(QColor(0xB0, 0x80, 0x00), 1));
        p.setBrush(QColor(0xFF, 0xC8, 0x2E));
        p.drawPath(tri);
        Letter(p, QRectF(1, 4, 14, 11), QStringLiteral("!"), QColor(0x40, 0x30, 0x00), 10);
        break;
      }
      case ztmError: Disc(p, QColor(0xD9, 0x36, 0x36), QStringLiteral("\u00D7")); break;
      case ztmCheckPoint: {
        p.setPen(QPen(QColor(0x55, 0x55, 0x55), 1.2));
        p.drawLine(QPointF(3.5, 1.5), QPointF(3.5, 14.5));
        p.setPen(QPen(QColor(0x1E, 0x8E, 0x3E).darker(130), 1));
        p.setBrush(QColor(0x2E, 0xB8, 0x55));
        p.drawRect(QRectF(4, 2, 9.5, 6.5));
        break;
      }
      case ztmObject: {
        p.setPen(QPen(QColor(0xA8, 0x5A, 0x10), 1));
        p.setBrush(QColor(0xF2, 0x9B, 0x3A));
        p.drawRoundedRect(QRectF(2.5, 2.5, 11, 11), 2, 2);
        Letter(p, QRectF(2.5, 2.5, 11, 11), QStringLiteral("{}"), Qt::white, 8);
        break;
      }
      case ztmComponentAsText: {
        p.setPen(QPen(QColor(0x60, 0x60, 0x70), 1));
        p.setBrush(QColor(0xC8, 0xCC, 0xD8));
        p.drawRoundedRect(QRectF(2.5, 2.5, 11, 11), 2, 2);
        Letter(p, QRectF(2.5, 2.5, 11, 11), QStringLiteral("C"), QColor(0x30, 0x30, 0x40), 9);
        break;
      }
      case ztmStringList: Page(p); Lines(p, QColor(0x2F, 0x7C, 0xD8), 4); break;
      case ztmText: Page(p); Lines(p, QColor(0x80, 0x88, 0x90), 4); break;
      case ztmNote: {
        p.setPen(QPen(QColor(0xC0, 0xA0, 0x20), 1));
        p.setBrush(QColor(0xFF, 0xE8, 0x70));
        QPainterPath note;
        note.moveTo(2.5, 2.5);
        note.lineTo(13.5, 2.5);
        note.lineTo(13.5, 10);
        note.lineTo(10, 13.5);
        note.lineTo(2.5, 13.5);
        note.closeSubpath();
        p.drawPath(note);
        Lines(p, QColor(0xA0, 0x80, 0x10), 3, 5.5, 4.5, 11.5);
        break;
      }
      case ztmEnterMethod: Arrow(p, true, QColor(0x3C, 0xA4, 0x4C)); break;
      case ztmExitMethod:
      case ztmExitMethodCollapse: Arrow(p, false, QColor(0xD0, 0x6A, 0x2C)); break;
      case ztmSeparator: {
        // Text lies to the right of the visible part.
        p.setPen(QPen(QColor(0x50, 0x50, 0x60), 1.6));
        p.drawLine(QPointF(4, 4), QPointF(9, 8));
        p.drawLine(QPointF(9, 8), QPointF(4, 12));
        p.drawLine(QPointF(8, 4), QPointF(13, 8));
        p.drawLine(QPointF(13, 8), QPointF(8, 12));
        break;
      }
      case ztmInactiveSeparator: {
        // Text lies to the left of the visible part.
        p.setPen(QPen(QColor(0x50, 0x50, 0x60), 1.6));
        p.drawLine(QPointF(12, 4), QPointF(7, 8));
        p.drawLine(QPointF(7, 8), QPointF(12, 12));
        p.drawLine(QPointF(8, 4), QPointF(3, 8));
        p.drawLine(QPointF(3, 8), QPointF(8, 12));
        break;
      }
      case ztmBitmap: {
        p.setPen(QPen(QColor(0x50, 0x60, 0x70), 1));
        p.setBrush(QColor(0xBF, 0xE3, 0xFF));
        p.drawRect(QRectF(1.5, 2.5, 13, 11));
        QPainterPath hill;
        hill.moveTo(2, 13);
        hill.lineTo(6, 7);
        hill.lineTo(9, 11);
        hill.lineTo(11, 9);
        hill.lineTo(14, 13);
        hill.closeSubpath();
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0x3C, 0xA4, 0x4C));
        p.drawPath(hill);
        p.setBrush(QColor(0xFF, 0xC8, 0x2E));
        p.drawEllipse(QRectF(10, 4, 3, 3));
        break;
      }
      case ztmTextFile: Page(p); Lines(p, QColor(0x40, 0x40, 0x40), 4); break;
      case ztmWindow: {
        p.setPen(QPen(QColor(0x30, 0x50, 0x80), 1));
        p.setBrush(Qt::white);
        p.drawRect(QRectF(1.5, 2.5, 13, 11));
        p.fillRect(QRectF(2, 3, 12, 3), QColor(0x2F, 0x7C, 0xD8));
        break;
      }
      case ztmMemory: {
        p.setPen(QPen(QColor(0x30, 0x30, 0x30), 1));
        p.setBrush(QColor(0x3A, 0x7A, 0x50));
        p.drawRect(QRectF(2.5, 4.5, 11, 7));
        for (int i = 0; i < 4; ++i) {
          p.drawLine(QPointF(4 + i * 2.7, 2), QPointF(4 + i * 2.7, 4.5));
          p.drawLine(QPointF(4 + i * 2.7, 11.5), QPointF(4 + i * 2.7, 14));
        }
        break;
      }
      case ztmMemoryStatus: {
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0x2F, 0x7C, 0xD8));
        p.drawRect(QRectF(2, 8, 3, 6));
        p.setBrush(QColor(0x3C, 0xA4, 0x4C));
        p.drawRect(QRectF(6.5, 4, 3, 10));
        p.setBrush(QColor(0xD9, 0x36, 0x36));
        p.drawRect(QRectF(11, 6, 3, 8));
        break;
      }
      case ztmCustomText: Page(p); Letter(p, QRectF(3.5, 4, 9, 10), QStringLiteral("Aa"), QColor(0x80, 0x40, 0xA0), 6); break;
      case ztmCustomProperties: {
        Page(p);
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0x80, 0x40, 0xA0));
        for (int i = 0; i < 3; ++i) p.drawEllipse(QRectF(5, 4.5 + i * 3, 1.8, 1.8));
        Lines(p, QColor(0x80, 0x88, 0x90), 3, 5.4, 7.5, 11);
        break;
      }
      case ztmReminder: {
        p.setPen(QPen(QColor(0x90, 0x60, 0x10), 1));
        p.setBrush(QColor(0xFF, 0xB3, 0x2E));
        QPainterPath bell;
        bell.moveTo(3, 12);
        bell.cubicTo(4.5, 10, 3.5, 3, 8, 3);
        bell.cubicTo(12.5, 3, 11.5, 10, 13, 12);
        bell.closeSubpath();
        p.drawPath(bell);
        p.drawEllipse(QRectF(6.8, 12, 2.4, 2.4));
        break;
      }
      case ztmLevel1: Disc(p, QColor(0xE0, 0x30, 0x30), QStringLiteral("1")); break;
      case ztmLevel2: Disc(p, QColor(0xF0, 0x88, 0x20), QStringLiteral("2")); break;
      case ztmLevel3: Disc(p, QColor(0xF2, 0xCC, 0x1A), QStringLiteral("3"), QColor(0x50, 0x40, 0x00)); break;
      case ztmLevel4: Disc(p, QColor(0x2E, 0xA8, 0x48), QStringLiteral("4")); break;
      case ztmLevel5: Disc(p, QColor(0x2F, 0x6C, 0xD8), QStringLiteral("5")); break;
      case ztmLevel6: Disc(p, QColor(0x4B, 0x2C, 0xA0), QStringLiteral("6")); break;
      case ztmLevel7: Disc(p, QColor(0x9A, 0x3C, 0xC8), QStringLiteral("7")); break;
      case ztmColor: {
        p.setPen(Qt::NoPen);
        p.fillRect(QRectF(2, 2, 6, 6), QColor(0xE0, 0x30, 0x30));
        p.fillRect(QRectF(8, 2, 6, 6), QColor(0x3C, 0xA4, 0x4C));
        p.fillRect(QRectF(2, 8, 6, 6), QColor(0x2F, 0x6C, 0xD8));
        p.fillRect(QRectF(8, 8, 6, 6), QColor(0xF2, 0xCC, 0x1A));
        p.setPen(QPen(QColor(0x50, 0x50, 0x50), 1));
        p.setBrush(Qt::NoBrush);
        p.drawRect(QRectF(1.5, 1.5, 13, 13));
        break;
      }
      case ztmRegistry: {
        p.setPen(QPen(QColor(0x30, 0x50, 0x90), 1));
        p.setBrush(QColor(0x7F, 0xB0, 0xF0));
        p.drawRect(QRectF(1.5, 7.5, 6, 6));
        p.drawRect(QRectF(8.5, 7.5, 6, 6));
        p.drawRect(QRectF(5, 1.5, 6, 6));
        break;
      }
      case ztmSystemInfo: {
        p.setPen(QPen(QColor(0x40, 0x40, 0x50), 1));
        p.setBrush(QColor(0x9F, 0xD0, 0xFF));
        p.drawRect(QRectF(1.5, 2.5, 13, 8.5));
        p.drawLine(QPointF(8, 11), QPointF(8, 13.5));
        p.drawLine(QPointF(4.5, 13.5), QPointF(11.5, 13.5));
        break;
      }
      case ztmVersionInfo: Disc(p, QColor(0x60, 0x70, 0x80), QStringLiteral("v")); break;
      case ztmXmlData: {
        p.setPen(QPen(QColor(0x20, 0x80, 0x80), 1));
        p.setBrush(QColor(0xE0, 0xF6, 0xF6));
        p.drawRoundedRect(QRectF(1.5, 3.5, 13, 9), 2, 2);
        Letter(p, QRectF(1.5, 3.5, 13, 9), QStringLiteral("</>"), QColor(0x10, 0x60, 0x60), 6.5);
        break;
      }
      case ztmStackTrace: {
        p.setPen(QPen(QColor(0x50, 0x40, 0x70), 1));
        for (int i = 0; i < 4; ++i) {
          p.setBrush(QColor(0xB0 - i * 18, 0xA0 - i * 14, 0xE0));
          p.drawRect(QRectF(2.5 + i, 2.5 + i * 3, 11 - i, 2.5));
        }
        break;
      }
      case ztmException: {
        QPolygonF octagon;
        for (int i = 0; i < 8; ++i) {
          const qreal a = (22.5 + 45.0 * i) * 3.14159265 / 180.0;
          octagon << QPointF(8 + 6.8 * std::cos(a), 8 + 6.8 * std::sin(a));
        }
        p.setPen(QPen(QColor(0x90, 0x10, 0x10), 1));
        p.setBrush(QColor(0xC8, 0x1E, 0x1E));
        p.drawPolygon(octagon);
        Letter(p, QRectF(1, 1, 14, 14), QStringLiteral("!"), Qt::white, 10);
        break;
      }
      case ztmCustomTable:
      case ztmCollection: {
        p.setPen(QPen(QColor(0x50, 0x60, 0x70), 1));
        p.setBrush(Qt::white);
        p.drawRect(QRectF(1.5, 2.5, 13, 11));
        p.fillRect(QRectF(2, 3, 12, 2.5), code == ztmCustomTable ? QColor(0x80, 0x40, 0xA0) : QColor(0x2F, 0x7C, 0xD8));
        p.drawLine(QPointF(2, 9), QPointF(14, 9));
        if (code == ztmCustomTable) p.drawLine(QPointF(8, 5.5), QPointF(8, 13.5));
        break;
      }
      case ztmCollapsedMethod: {
        p.setPen(QPen(QColor(0x2A, 0x7A, 0x38), 1));
        p.setBrush(QColor(0x3C, 0xA4, 0x4C));
        p.drawRoundedRect(QRectF(2.5, 2.5, 11, 11), 2, 2);
        p.setPen(QPen(Qt::white, 1.8));
        p.drawLine(QPointF(8, 5), QPointF(8, 11));
        p.drawLine(QPointF(5, 8), QPointF(11, 8));
        break;
      }
      case ztmCustomHierarchy: {
        p.setPen(QPen(QColor(0x50, 0x60, 0x70), 1));
        p.drawLine(QPointF(4, 4), QPointF(4, 12));
        p.drawLine(QPointF(4, 8), QPointF(9, 8));
        p.drawLine(QPointF(4, 12), QPointF(9, 12));
        p.setBrush(QColor(0x80, 0x40, 0xA0));
        p.drawRect(QRectF(2, 2, 4, 4));
        p.setBrush(QColor(0x2F, 0x7C, 0xD8));
        p.drawRect(QRectF(9, 6.5, 4, 3));
        p.drawRect(QRectF(9, 10.5, 4, 3));
        break;
      }
      case ztmTiming: {
        p.setPen(QPen(QColor(0x30, 0x40, 0x50), 1.2));
        p.setBrush(Qt::white);
        p.drawEllipse(QRectF(2.5, 3.5, 11, 11));
        p.drawLine(QPointF(8, 9), QPointF(8, 5.5));
        p.drawLine(QPointF(8, 9), QPointF(10.5, 10.5));
        p.drawLine(QPointF(6.5, 1.5), QPointF(9.5, 1.5));
        break;
      }
      case 46: {
        // User-defined types.
        QPolygonF star;
        for (int i = 0; i < 10; ++i) {
          const qreal r = i % 2 == 0 ? 6.8 : 3.0;
          const qreal a = (-90.0 + 36.0 * i) * 3.14159265 / 180.0;
          star << QPointF(8 + r * std::cos(a), 8.5 + r * std::sin(a));
        }
        p.setPen(QPen(QColor(0x30, 0x50, 0x90), 1));
        p.setBrush(QColor(0x7F, 0xB0, 0xF0));
        p.drawPolygon(star);
        break;
      }
      default: break;
    }
  });
}

TGlyph BookmarkGlyph(int index) {
  return Glyph([index](QPainter& p) {
    if (index == 10) {
      // The synchronised message: two arrows in a ring.
      p.setPen(QPen(QColor(0xC0, 0x70, 0x00), 1));
      p.setBrush(QColor(0xFF, 0xA5, 0x1E));
      p.drawEllipse(QRectF(1.5, 1.5, 13, 13));
      p.setPen(QPen(Qt::white, 1.6));
      p.drawLine(QPointF(4.5, 6.5), QPointF(11.5, 6.5));
      p.drawLine(QPointF(9.5, 4.5), QPointF(11.5, 6.5));
      p.drawLine(QPointF(11.5, 9.5), QPointF(4.5, 9.5));
      p.drawLine(QPointF(6.5, 11.5), QPointF(4.5, 9.5));
      return;
    }
    QPainterPath flag;
    flag.moveTo(3, 1.5);
    flag.lineTo(13, 1.5);
    flag.lineTo(13, 14.5);
    flag.lineTo(8, 11);
    flag.lineTo(3, 14.5);
    flag.closeSubpath();
    p.setPen(QPen(QColor(0x1F, 0x4F, 0xA0), 1));
    p.setBrush(QColor(0x2F, 0x6C, 0xD8));
    p.drawPath(flag);
    Letter(p, QRectF(3, 1, 10, 10), QString::number(index), Qt::white, 9);
  });
}

}  // namespace

TZTImageList* CreateMessageImageList(QObject* parent) {
  auto* list = new TZTImageList(ztIconSize, ztIconSize, parent);
  for (int code = 0; code <= 46; ++code) {
    // 13 to 15, 39 and 40 are never drawn as type icons; they stay empty.
    if ((code >= ztmClear && code <= ztmSaveLog) || code == ztmResetSeparator || code == ztmAppStartSeparator) continue;
    const TGlyph glyph = MessageGlyph(code);
    list->SetImage(code, glyph.Plain, glyph.Double);
  }
  return list;
}

TZTImageList* CreateBookmarkImageList(QObject* parent) {
  auto* list = new TZTImageList(ztIconSize, ztIconSize, parent);
  for (int index = 0; index <= 10; ++index) {
    const TGlyph glyph = BookmarkGlyph(index);
    list->SetImage(index, glyph.Plain, glyph.Double);
  }
  return list;
}

}  // namespace zentrail
