#include "ZTGlyphs.h"

#include <QPainter>
#include <QPainterPath>
#include <cstring>

#include "ZTImageList.h"
#include "ZentrailMessage.h"

namespace zentrail {
namespace {

const QColor kInk(0x35, 0x4a, 0x6b);
const QColor kAccent(0x2f, 0x7f, 0xd0);
const QColor kPaper(0xfb, 0xfc, 0xfe);

void Window(QPainter& p, const QRectF& r) {
  p.setPen(QPen(kInk, 1));
  p.setBrush(kPaper);
  p.drawRect(r);
  p.fillRect(QRectF(r.left() + 0.5, r.top() + 0.5, r.width() - 0.5, 2.5), kAccent);
}

void Lines(QPainter& p, double x, double y, double w, int n, double step) {
  p.setPen(QPen(kInk, 1));
  for (int i = 0; i < n; ++i) p.drawLine(QPointF(x, y + i * step), QPointF(x + w, y + i * step));
}

void Draw(QPainter& p, const char* name) {
  auto is = [name](const char* n) { return std::strcmp(name, n) == 0; };
  p.setRenderHint(QPainter::Antialiasing, true);
  if (is("inspector")) {
    Window(p, QRectF(1.5, 2.5, 13, 11));
    p.fillRect(QRectF(9, 5.5, 5, 7.5), kAccent.lighter(150));
    Lines(p, 3, 7.5, 4.5, 3, 2);
  } else if (is("callstack")) {
    p.setPen(QPen(kInk, 1));
    for (int i = 0; i < 4; ++i) {
      p.setBrush(i == 3 ? kAccent : kPaper);
      p.drawRect(QRectF(1.5 + i * 2, 2.5 + i * 3, 11 - i * 2, 2.5));
    }
  } else if (is("scratchpad")) {
    Window(p, QRectF(1.5, 2.5, 13, 11));
    p.setPen(QPen(kInk, 1));
    p.drawLine(QPointF(6, 5.5), QPointF(6, 13.5));
    Lines(p, 1.5, 8.5, 13, 2, 2.5);
    p.setBrush(QColor(0x3c, 0xc0, 0x4a));
    p.setPen(Qt::NoPen);
    p.drawEllipse(QPointF(3.8, 7.2), 1.2, 1.2);
  } else if (is("detailpanel")) {
    Window(p, QRectF(1.5, 2.5, 13, 11));
    p.fillRect(QRectF(2, 5.5, 12, 3), QColor(0xdd, 0xe6, 0xf3));
    Lines(p, 3, 10.5, 10, 2, 2);
  } else if (is("open") || is("append") || is("follow")) {
    // A folder; appending adds a plus, following an arrow down into it.
    p.setPen(QPen(kInk, 1));
    p.setBrush(QColor(0xf4, 0xd0, 0x6a));
    p.drawPolygon(QPolygonF({QPointF(1.5, 4.5), QPointF(6, 4.5), QPointF(7.5, 6), QPointF(14.5, 6), QPointF(14.5, 13.5),
                             QPointF(1.5, 13.5)}));
    if (is("append")) {
      p.setPen(QPen(kAccent, 2));
      p.drawLine(QPointF(11, 7.5), QPointF(11, 12.5));
      p.drawLine(QPointF(8.5, 10), QPointF(13.5, 10));
    } else if (is("follow")) {
      p.setPen(QPen(kAccent, 2));
      p.drawLine(QPointF(10, 1), QPointF(10, 9));
      p.setPen(Qt::NoPen);
      p.setBrush(kAccent);
      p.drawPolygon(QPolygonF({QPointF(7, 8), QPointF(13, 8), QPointF(10, 12)}));
    }
  } else if (is("save")) {
    p.setPen(QPen(kInk, 1));
    p.setBrush(kAccent);
    p.drawRect(QRectF(1.5, 1.5, 13, 13));
    p.setBrush(kPaper);
    p.drawRect(QRectF(4.5, 1.5, 7, 5));
    p.drawRect(QRectF(3.5, 9.5, 9, 5));
  } else if (is("note")) {
    p.setPen(QPen(kInk, 1));
    p.setBrush(QColor(0xff, 0xf0, 0x8a));
    p.drawPolygon(QPolygonF({QPointF(1.5, 1.5), QPointF(14.5, 1.5), QPointF(14.5, 10.5), QPointF(10.5, 14.5),
                             QPointF(1.5, 14.5)}));
    Lines(p, 4, 5.5, 8, 3, 2.5);
  } else if (is("checkpoint")) {
    p.setPen(QPen(kInk, 1.5));
    p.drawLine(QPointF(3.5, 1.5), QPointF(3.5, 15));
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0x3c, 0xa0, 0x4a));
    p.drawPolygon(QPolygonF({QPointF(4, 2), QPointF(14, 4.5), QPointF(4, 8)}));
  } else if (is("delete")) {
    Lines(p, 1.5, 4.5, 8, 3, 3);
    p.setPen(QPen(QColor(0xd0, 0x30, 0x30), 2));
    p.drawLine(QPointF(9.5, 7.5), QPointF(14.5, 12.5));
    p.drawLine(QPointF(14.5, 7.5), QPointF(9.5, 12.5));
  } else if (is("clearall") || is("clear")) {
    p.setPen(QPen(kInk, 1));
    p.setBrush(kPaper);
    p.drawRect(QRectF(2.5, 1.5, 9, 12));
    Lines(p, 4, 4.5, 6, 3, 2);
    p.setPen(QPen(QColor(0xd0, 0x30, 0x30), 2));
    p.drawLine(QPointF(8.5, 8.5), QPointF(14, 14));
    p.drawLine(QPointF(14, 8.5), QPointF(8.5, 14));
    if (is("clearall")) {
      p.setPen(QPen(kInk, 1));
      p.drawLine(QPointF(4.5, 0.5), QPointF(13.5, 0.5));
    }
  } else if (is("autoscroll")) {
    Lines(p, 2, 3.5, 8, 3, 2.5);
    QPainterPath arrow;
    arrow.moveTo(12, 2);
    arrow.lineTo(12, 10);
    p.setPen(QPen(kAccent, 2));
    p.drawPath(arrow);
    p.setPen(Qt::NoPen);
    p.setBrush(kAccent);
    p.drawPolygon(QPolygonF({QPointF(8.5, 9.5), QPointF(15.5, 9.5), QPointF(12, 14.5)}));
  } else if (is("refresh")) {
    p.setPen(QPen(kAccent, 2));
    p.drawArc(QRectF(2.5, 2.5, 11, 11), 30 * 16, 280 * 16);
    p.setPen(Qt::NoPen);
    p.setBrush(kAccent);
    p.drawPolygon(QPolygonF({QPointF(10.5, 1), QPointF(15, 4.5), QPointF(10, 7)}));
  } else if (is("autocollapse") || is("togglemethod")) {
    p.setPen(QPen(kInk, 1));
    p.setBrush(kPaper);
    p.drawRect(QRectF(2.5, 4.5, 8, 8));
    p.drawLine(QPointF(4.5, 8.5), QPointF(8.5, 8.5));
    if (is("togglemethod")) p.drawLine(QPointF(6.5, 6.5), QPointF(6.5, 10.5));
    p.setPen(QPen(kAccent, 1.5));
    p.drawLine(QPointF(12, 3), QPointF(12, 14));
  } else if (is("flatten")) {
    Lines(p, 2, 4.5, 12, 4, 2.5);
    p.setPen(QPen(kAccent, 1.5));
    p.drawLine(QPointF(2, 2), QPointF(2, 14));
  } else if (is("block")) {
    p.setPen(QPen(QColor(0xc8, 0x2a, 0x2a), 2));
    p.setBrush(Qt::NoBrush);
    p.drawEllipse(QRectF(2, 2, 12, 12));
    p.drawLine(QPointF(4.2, 11.8), QPointF(11.8, 4.2));
  } else if (is("appstartseparator")) {
    Lines(p, 2, 3.5, 12, 1, 0);
    Lines(p, 2, 12.5, 12, 1, 0);
    p.setPen(QPen(kAccent, 2));
    p.drawLine(QPointF(1, 8), QPointF(15, 8));
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0x3c, 0xa4, 0x4c));
    p.drawPolygon(QPolygonF({QPointF(5.5, 5), QPointF(11, 8), QPointF(5.5, 11)}));
  } else if (is("separator") || is("resetseparator")) {
    Lines(p, 2, 3.5, 12, 1, 0);
    Lines(p, 2, 12.5, 12, 1, 0);
    p.setPen(QPen(kAccent, 2));
    p.drawLine(QPointF(1, 8), QPointF(15, 8));
    if (is("resetseparator")) p.drawLine(QPointF(1, 10.5), QPointF(15, 10.5));
  } else if (is("methodmatch")) {
    p.setPen(QPen(kInk, 1));
    p.drawLine(QPointF(3, 3.5), QPointF(13, 3.5));
    p.drawLine(QPointF(3, 12.5), QPointF(13, 12.5));
    p.setPen(QPen(kAccent, 1.5));
    p.drawLine(QPointF(8, 5), QPointF(8, 11));
    p.drawLine(QPointF(6, 7), QPointF(8, 5));
    p.drawLine(QPointF(10, 7), QPointF(8, 5));
  } else if (is("currentmethod")) {
    p.setPen(QPen(kInk, 1));
    p.drawLine(QPointF(2, 3.5), QPointF(12, 3.5));
    p.drawLine(QPointF(6, 8.5), QPointF(14, 8.5));
    p.drawLine(QPointF(6, 12.5), QPointF(14, 12.5));
    p.setPen(QPen(kAccent, 1.5));
    p.drawLine(QPointF(4, 12), QPointF(4, 5));
    p.drawLine(QPointF(2, 7), QPointF(4, 5));
    p.drawLine(QPointF(6, 7), QPointF(4, 5));
  } else if (is("copy")) {
    p.setPen(QPen(kInk, 1));
    p.setBrush(kPaper);
    p.drawRect(QRectF(1.5, 1.5, 8, 10));
    p.drawRect(QRectF(6.5, 4.5, 8, 10));
    Lines(p, 8, 7.5, 5, 3, 2);
  } else if (is("ontop")) {
    p.setPen(QPen(kInk, 1));
    p.setBrush(kPaper);
    p.drawRect(QRectF(1.5, 5.5, 9, 8));
    p.setBrush(kAccent.lighter(140));
    p.drawRect(QRectF(5.5, 1.5, 9, 8));
  } else if (is("print")) {
    p.setPen(QPen(kInk, 1));
    p.setBrush(kPaper);
    p.drawRect(QRectF(4.5, 1.5, 7, 5));
    p.setBrush(QColor(0xc9, 0xd3, 0xe2));
    p.drawRoundedRect(QRectF(1.5, 6.5, 13, 6), 1.5, 1.5);
    p.setBrush(kPaper);
    p.drawRect(QRectF(4.5, 10.5, 7, 4));
    p.fillRect(QRectF(11.5, 8, 1.5, 1.5), kAccent);
  } else if (is("onbottom")) {
    Window(p, QRectF(1.5, 1.5, 13, 13));
    p.setPen(QPen(kInk, 1));
    p.drawLine(QPointF(1.5, 9.5), QPointF(14.5, 9.5));
    p.fillRect(QRectF(2, 10, 12, 4), kAccent.lighter(150));
  } else if (is("fullsize")) {
    Window(p, QRectF(1.5, 1.5, 13, 13));
    p.setPen(QPen(kAccent, 1.5));
    p.drawLine(QPointF(4.5, 11.5), QPointF(11.5, 4.5));
    p.drawLine(QPointF(8, 4.5), QPointF(11.5, 4.5));
    p.drawLine(QPointF(11.5, 4.5), QPointF(11.5, 8));
  } else if (is("about")) {
    p.setPen(QPen(kAccent, 1.5));
    p.setBrush(kPaper);
    p.drawEllipse(QRectF(1.5, 1.5, 13, 13));
    p.setPen(QPen(kAccent, 2));
    p.drawLine(QPointF(8, 7), QPointF(8, 12));
    p.drawPoint(QPointF(8, 4.5));
  } else if (is("navfirst") || is("navlast")) {
    // A bar and a triangle: up to the first, down to the last.
    const bool up = is("navfirst");
    p.setPen(QPen(kInk, 1.5));
    p.drawLine(QPointF(3, up ? 3 : 13), QPointF(13, up ? 3 : 13));
    p.setPen(Qt::NoPen);
    p.setBrush(kAccent);
    p.drawPolygon(up ? QPolygonF({QPointF(8, 5), QPointF(13.5, 12.5), QPointF(2.5, 12.5)})
                     : QPolygonF({QPointF(8, 11), QPointF(13.5, 3.5), QPointF(2.5, 3.5)}));
  } else if (is("navprev") || is("navnext")) {
    const bool up = is("navprev");
    p.setPen(Qt::NoPen);
    p.setBrush(kAccent);
    p.drawPolygon(up ? QPolygonF({QPointF(8, 3.5), QPointF(13.5, 11.5), QPointF(2.5, 11.5)})
                     : QPolygonF({QPointF(8, 12.5), QPointF(13.5, 4.5), QPointF(2.5, 4.5)}));
  } else if (is("find") || is("findnext")) {
    p.setPen(QPen(kInk, 1.5));
    p.setBrush(kPaper);
    p.drawEllipse(QRectF(2, 2, 8, 8));
    p.setPen(QPen(kInk, 2.5));
    p.drawLine(QPointF(9, 9), QPointF(13.5, 13.5));
    if (is("findnext")) {
      p.setPen(Qt::NoPen);
      p.setBrush(kAccent);
      p.drawPolygon(QPolygonF({QPointF(11, 1), QPointF(15.5, 4), QPointF(11, 7)}));
    }
  } else if (is("jumpto")) {
    Lines(p, 6, 3.5, 8, 4, 3);
    p.fillRect(QRectF(5.5, 8, 9, 2.5), kAccent.lighter(150));
    p.setPen(QPen(kAccent, 1.8));
    p.drawLine(QPointF(1, 9), QPointF(4.5, 9));
    p.drawLine(QPointF(2.5, 7), QPointF(4.5, 9));
    p.drawLine(QPointF(2.5, 11), QPointF(4.5, 9));
  } else if (is("navselect") || is("navany")) {
    // A row between two markers; "any" leaves the row open with a question mark.
    p.setPen(QPen(kInk, 1));
    p.setBrush(kPaper);
    p.drawRect(QRectF(1.5, 4.5, 13, 7));
    p.setPen(QPen(kAccent, 1.5));
    if (is("navany")) {
      QFont f = p.font();
      f.setPixelSize(8);
      f.setBold(true);
      p.setFont(f);
      p.drawText(QRectF(1.5, 4.5, 13, 7), Qt::AlignCenter, QStringLiteral("?"));
    } else {
      p.drawLine(QPointF(4, 8), QPointF(12, 8));
      p.drawLine(QPointF(8, 1), QPointF(8, 3.5));
      p.drawLine(QPointF(8, 12.5), QPointF(8, 15));
    }
  } else if (is("timediff")) {
    p.setPen(QPen(kInk, 1.2));
    p.setBrush(kPaper);
    p.drawEllipse(QRectF(1.5, 1.5, 13, 13));
    p.setPen(QPen(kAccent, 1.5));
    p.drawLine(QPointF(8, 8), QPointF(8, 4));
    p.drawLine(QPointF(8, 8), QPointF(11, 9.5));
  } else if (is("navauto")) {
    p.setPen(QPen(kAccent, 1.5));
    p.setBrush(Qt::NoBrush);
    p.drawArc(QRectF(2.5, 2.5, 11, 11), 90 * 16, 270 * 16);
    p.setPen(Qt::NoPen);
    p.setBrush(kAccent);
    p.drawPolygon(QPolygonF({QPointF(8, 0.5), QPointF(11.5, 2.8), QPointF(8, 5)}));
    p.setBrush(kInk);
    p.drawEllipse(QPointF(8, 8), 1.8, 1.8);
  } else if (is("bookmarktoggle") || is("bookmarkjump") || is("bookmarkclear")) {
    QPolygonF ribbon({QPointF(3.5, 1.5), QPointF(10.5, 1.5), QPointF(10.5, 14), QPointF(7, 10.5), QPointF(3.5, 14)});
    p.setPen(QPen(QColor(0x8a, 0x5a, 0x10), 1));
    p.setBrush(QColor(0xf2, 0xb8, 0x30));
    p.drawPolygon(ribbon);
    if (is("bookmarkjump")) {
      p.setPen(QPen(kAccent, 1.8));
      p.drawLine(QPointF(11, 8), QPointF(15.5, 8));
      p.drawLine(QPointF(13.5, 6), QPointF(15.5, 8));
      p.drawLine(QPointF(13.5, 10), QPointF(15.5, 8));
    } else if (is("bookmarkclear")) {
      p.setPen(QPen(QColor(0xd0, 0x30, 0x30), 2));
      p.drawLine(QPointF(9.5, 9.5), QPointF(14.5, 14.5));
      p.drawLine(QPointF(14.5, 9.5), QPointF(9.5, 14.5));
    } else {
      p.setPen(QPen(kInk, 1.5));
      p.drawLine(QPointF(12.5, 11), QPointF(12.5, 15.5));
      p.drawLine(QPointF(10.3, 13.2), QPointF(14.7, 13.2));
    }
  } else if (is("syncmsg") || is("syncupdate")) {
    // Two pages with the same row marked.
    p.setPen(QPen(kInk, 1));
    p.setBrush(kPaper);
    p.drawRect(QRectF(1.5, 2.5, 6, 11));
    p.drawRect(QRectF(8.5, 2.5, 6, 11));
    const QColor mark = is("syncmsg") ? QColor(0xff, 0xc8, 0x40) : kAccent.lighter(140);
    p.fillRect(QRectF(2, 7, 5, 2.5), mark);
    p.fillRect(QRectF(9, 7, 5, 2.5), mark);
    p.setPen(QPen(kAccent, 1));
    p.drawLine(QPointF(6, 8.2), QPointF(10, 8.2));
  } else if (is("modifyview")) {
    // A funnel over a page: the view's filter.
    p.setPen(QPen(kInk, 1));
    p.setBrush(kPaper);
    p.drawRect(QRectF(1.5, 5.5, 8, 9));
    Lines(p, 3, 8.5, 5, 3, 2);
    p.setBrush(kAccent);
    p.drawPolygon(QPolygonF({QPointF(7.5, 1.5), QPointF(15, 1.5), QPointF(12, 6), QPointF(12, 10), QPointF(10.5, 9),
                             QPointF(10.5, 6)}));
  } else if (is("exit")) {
    p.setPen(QPen(kInk, 1));
    p.setBrush(kPaper);
    p.drawRect(QRectF(1.5, 1.5, 8, 13));
    p.setPen(QPen(QColor(0xc8, 0x2a, 0x2a), 1.8));
    p.drawLine(QPointF(6, 8), QPointF(14.5, 8));
    p.drawLine(QPointF(12, 5.5), QPointF(14.5, 8));
    p.drawLine(QPointF(12, 10.5), QPointF(14.5, 8));
  }
}


// The glyphs of the project, view, column, organizer and window commands.
bool DrawMore(QPainter& p, const char* name) {
  auto is = [name](const char* n) { return std::strcmp(name, n) == 0; };
  p.setRenderHint(QPainter::Antialiasing, true);
  auto page = [&p](const QRectF& r) {
    p.setPen(QPen(kInk, 1));
    p.setBrush(kPaper);
    p.drawRect(r);
  };
  auto plus = [&p](double x, double y, const QColor& c) {
    p.setPen(QPen(c, 2));
    p.drawLine(QPointF(x - 2.5, y), QPointF(x + 2.5, y));
    p.drawLine(QPointF(x, y - 2.5), QPointF(x, y + 2.5));
  };
  auto minus = [&p](double x, double y, const QColor& c) {
    p.setPen(QPen(c, 2));
    p.drawLine(QPointF(x - 2.5, y), QPointF(x + 2.5, y));
  };
  auto arrow = [&p](double x1, double x2, double y) {
    p.setPen(QPen(kAccent, 2));
    p.drawLine(QPointF(x1, y), QPointF(x2, y));
    p.setPen(Qt::NoPen);
    p.setBrush(kAccent);
    const double d = x2 > x1 ? 1 : -1;
    p.drawPolygon(QPolygonF({QPointF(x2 + d * 2, y), QPointF(x2 - d * 2, y - 3.5), QPointF(x2 - d * 2, y + 3.5)}));
  };
  const QColor green(0x3c, 0xa0, 0x4a), red(0xd0, 0x30, 0x30);
  // A project: a box of stacked pages.
  auto project = [&] {
    p.setPen(QPen(kInk, 1));
    p.setBrush(QColor(0xdd, 0xe6, 0xf3));
    p.drawRect(QRectF(3.5, 1.5, 10, 9));
    p.setBrush(kPaper);
    p.drawRect(QRectF(1.5, 4.5, 10, 10));
    p.fillRect(QRectF(2, 5, 9.5, 2.5), kAccent);
  };
  // A view: a page with a tab on top.
  auto view = [&] {
    p.setPen(QPen(kInk, 1));
    p.setBrush(kAccent.lighter(150));
    p.drawRect(QRectF(1.5, 1.5, 6, 3));
    p.setBrush(kPaper);
    p.drawRect(QRectF(1.5, 4.5, 11, 10));
    Lines(p, 3.5, 7.5, 7, 3, 2);
  };
  // Columns: a grid of three columns.
  auto columns = [&] {
    p.setPen(QPen(kInk, 1));
    p.setBrush(kPaper);
    p.drawRect(QRectF(1.5, 2.5, 13, 11));
    p.fillRect(QRectF(2, 3, 12.5, 2.5), kAccent.lighter(140));
    p.drawLine(QPointF(5.5, 2.5), QPointF(5.5, 13.5));
    p.drawLine(QPointF(9.5, 2.5), QPointF(9.5, 13.5));
  };
  if (is("newproject")) {
    project();
    plus(12.5, 12.5, green);
  } else if (is("openproject")) {
    project();
    arrow(8, 14, 12.5);
  } else if (is("saveproject")) {
    project();
    p.setPen(QPen(kInk, 1));
    p.setBrush(kAccent);
    p.drawRect(QRectF(9.5, 9.5, 6, 6));
  } else if (is("newview")) {
    view();
    plus(12.5, 12, green);
  } else if (is("removeview") || is("removeallviews")) {
    view();
    minus(12.5, 12, red);
    if (is("removeallviews")) minus(12.5, 8, red);
  } else if (is("moveleft") || is("viewprior")) {
    view();
    arrow(14.5, 8.5, 12);
  } else if (is("moveright") || is("viewnext")) {
    view();
    arrow(8.5, 14.5, 12);
  } else if (is("organize") || is("autoorganize") || is("organizesettings")) {
    // Messages sorted into tabs.
    p.setPen(QPen(kInk, 1));
    for (int i = 0; i < 3; ++i) {
      p.setBrush(i == 0 ? kAccent.lighter(140) : kPaper);
      p.drawRect(QRectF(1.5 + i * 4.5, 1.5, 4, 3));
    }
    p.setBrush(kPaper);
    p.drawRect(QRectF(1.5, 4.5, 13, 10));
    Lines(p, 3.5, 7.5, 9, 3, 2);
    if (is("autoorganize")) {
      p.setPen(QPen(green, 1.6));
      p.setBrush(Qt::NoBrush);
      p.drawArc(QRectF(8, 8, 7, 7), 30 * 16, 270 * 16);
    } else if (is("organizesettings")) {
      p.setPen(QPen(kInk, 1));
      p.setBrush(QColor(0xf2, 0xc6, 0x1f));
      p.drawEllipse(QPointF(12, 12), 3, 3);
      p.setBrush(kPaper);
      p.drawEllipse(QPointF(12, 12), 1, 1);
    }
  } else if (is("selectcolumns")) {
    columns();
    p.setPen(QPen(green, 1.8));
    p.drawLine(QPointF(9, 10), QPointF(11, 12.5));
    p.drawLine(QPointF(11, 12.5), QPointF(15, 7));
  } else if (is("hidecolumns")) {
    columns();
    p.fillRect(QRectF(10, 6, 4.5, 7.5), QColor(0xc9, 0xd3, 0xe2));
  } else if (is("msgonly")) {
    page(QRectF(1.5, 2.5, 13, 11));
    Lines(p, 3.5, 5.5, 9, 4, 2);
  } else if (is("alldetails")) {
    columns();
    Lines(p, 2.5, 8, 2, 3, 2);
    Lines(p, 6.5, 8, 2, 3, 2);
    Lines(p, 10.5, 8, 3, 3, 2);
  } else if (is("options")) {
    // A cog.
    p.setPen(Qt::NoPen);
    p.setBrush(kInk);
    for (int i = 0; i < 8; ++i) {
      p.save();
      p.translate(8, 8);
      p.rotate(i * 45);
      p.drawRect(QRectF(-1.5, -7.5, 3, 3.5));
      p.restore();
    }
    p.drawEllipse(QPointF(8, 8), 5, 5);
    p.setBrush(kPaper);
    p.drawEllipse(QPointF(8, 8), 2, 2);
  } else if (is("plugins")) {
    p.setPen(QPen(kInk, 1));
    p.setBrush(kAccent.lighter(140));
    p.drawRect(QRectF(2.5, 5.5, 9, 9));
    p.drawRect(QRectF(5, 2.5, 1.5, 3));
    p.drawRect(QRectF(8, 2.5, 1.5, 3));
    p.drawRect(QRectF(11.5, 8.5, 3, 3));
  } else if (is("help")) {
    p.setPen(QPen(kAccent.darker(120), 1));
    p.setBrush(kAccent);
    p.drawEllipse(QRectF(1.5, 1.5, 13, 13));
    QFont f;
    f.setPixelSize(11);
    f.setBold(true);
    p.setFont(f);
    p.setPen(Qt::white);
    p.drawText(QRectF(1.5, 1.5, 13, 13), Qt::AlignCenter, QStringLiteral("?"));
  } else if (is("expandmethod") || is("collapsemethod") || is("expandall") || is("collapseall")) {
    p.setPen(QPen(kInk, 1));
    p.setBrush(kPaper);
    p.drawRect(QRectF(1.5, 3.5, 9, 9));
    p.drawLine(QPointF(3.5, 8), QPointF(8.5, 8));
    if (is("expandmethod") || is("expandall")) p.drawLine(QPointF(6, 5.5), QPointF(6, 10.5));
    if (is("expandall") || is("collapseall")) {
      Lines(p, 12, 3.5, 2.5, 1, 0);
      Lines(p, 12, 8, 2.5, 1, 0);
      Lines(p, 12, 12.5, 2.5, 1, 0);
    } else {
      p.setPen(QPen(kAccent, 1.5));
      p.drawLine(QPointF(13, 2), QPointF(13, 14));
    }
  } else if (is("export")) {
    page(QRectF(1.5, 1.5, 9, 13));
    Lines(p, 3.5, 4.5, 5, 3, 2);
    arrow(7, 14, 11);
  } else if (is("printinspector") || is("copyinspector")) {
    Window(p, QRectF(1.5, 1.5, 10, 9));
    p.fillRect(QRectF(6.5, 4.5, 4.5, 5.5), kAccent.lighter(150));
    p.setPen(QPen(kInk, 1));
    p.setBrush(is("printinspector") ? QColor(0xc9, 0xd3, 0xe2) : kPaper);
    p.drawRect(QRectF(7.5, 8.5, 7, 6));
  } else if (is("edit")) {
    page(QRectF(1.5, 1.5, 10, 13));
    Lines(p, 3.5, 4.5, 6, 2, 2.5);
    p.setPen(QPen(QColor(0xe0, 0x9a, 0x2a), 2.2));
    p.drawLine(QPointF(6, 13), QPointF(14, 5));
  } else if (is("crop")) {
    p.setPen(QPen(kInk, 1.6));
    p.drawLine(QPointF(4, 1), QPointF(4, 12));
    p.drawLine(QPointF(4, 12), QPointF(15, 12));
    p.drawLine(QPointF(1, 4), QPointF(12, 4));
    p.drawLine(QPointF(12, 4), QPointF(12, 15));
    p.fillRect(QRectF(5, 5, 6, 6), kAccent.lighter(150));
  } else if (is("selectall")) {
    p.fillRect(QRectF(2, 3, 12, 10), kAccent.lighter(160));
    Lines(p, 3, 5.5, 10, 3, 2.5);
    p.setPen(QPen(kAccent, 1, Qt::DashLine));
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRectF(1.5, 2.5, 13, 11));
  } else {
    return false;
  }
  return true;
}

}  // namespace

QIcon ShellGlyph(const char* name) {
  QIcon icon;
  for (int scale : {1, 2}) {
    QPixmap pixmap(16 * scale, 16 * scale);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.scale(scale, scale);
    if (!DrawMore(p, name)) Draw(p, name);
    p.end();
    pixmap.setDevicePixelRatio(scale);
    icon.addPixmap(pixmap);
  }
  return icon;
}

QPixmap NavigatorGlyph(const TZTImageList* images, int code) {
  constexpr int kCustomImage = 46;  // after the table's codes
  const int image = code >= ztmReserved ? kCustomImage : code;
  if (images && images->HasImage(image)) return images->Image(image);
  if (code == ztmResetSeparator) return ShellGlyph("resetseparator").pixmap(16, 16);
  if (code == ztmAppStartSeparator) return ShellGlyph("appstartseparator").pixmap(16, 16);
  return QPixmap();
}

QPixmap ScratchPadLight(int index, int size) {
  // In the order of the options' list: red, orange, yellow, green, blue, indigo, violet.
  static const QColor lit[] = {QColor(0xe0, 0x3c, 0x31), QColor(0xf0, 0x8c, 0x1e), QColor(0xf2, 0xc6, 0x1f),
                               QColor(0x3c, 0xc8, 0x4b), QColor(0x2f, 0x7f, 0xd0), QColor(0x4b, 0x3c, 0xb4),
                               QColor(0x9a, 0x4c, 0xc8)};
  QPixmap pixmap(size, size);
  pixmap.fill(Qt::transparent);
  QPainter p(&pixmap);
  p.setRenderHint(QPainter::Antialiasing, true);
  QColor c = (index >= 0 && index < 7) ? lit[index] : QColor(0xb8, 0xbd, 0xc4);
  QRadialGradient g(QPointF(size * 0.38, size * 0.35), size * 0.6);
  g.setColorAt(0, c.lighter(index == 7 ? 115 : 160));
  g.setColorAt(1, c);
  p.setBrush(g);
  p.setPen(QPen(c.darker(150), 1));
  p.drawEllipse(QRectF(1, 1, size - 2, size - 2));
  return pixmap;
}

}  // namespace zentrail
