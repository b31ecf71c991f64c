#include "ZTInspectorUtils.h"

#include <QApplication>
#include <QFontDatabase>
#include <QPalette>
#include <cmath>

namespace zentrail {

namespace {

bool FaceInstalled(const QString& family) {
  static const QStringList families = QFontDatabase::families();
  return families.contains(family, Qt::CaseInsensitive);
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

}  // namespace

QFont InspectorInterfaceFont() {
  if (FaceInstalled(QStringLiteral("Segoe UI"))) return QFont(QStringLiteral("Segoe UI"), 9);
  if (FaceInstalled(QStringLiteral("Tahoma"))) return QFont(QStringLiteral("Tahoma"), 8);
  QFont f = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
  if (f.pointSize() <= 0) f.setPointSize(9);
  return f;
}

QFont InspectorFixedFont(int pointSize) {
  QFont f;
  if (FaceInstalled(QStringLiteral("Consolas"))) {
    f = QFont(QStringLiteral("Consolas"));
  } else if (FaceInstalled(QStringLiteral("Courier New"))) {
    f = QFont(QStringLiteral("Courier New"));
  } else {
    f = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  }
  f.setStyleHint(QFont::Monospace);
  f.setFixedPitch(true);
  f.setPointSize(pointSize);
  f.setBold(false);
  f.setItalic(false);
  return f;
}

QFont InspectorLineNumberFont() {
  QFont f = InspectorInterfaceFont();
  f.setPointSize(7);
  return f;
}

QStringList SplitLines(const QString& text) {
  QStringList lines;
  const qsizetype n = text.size();
  qsizetype start = 0;
  for (qsizetype i = 0; i < n; ++i) {
    const QChar c = text.at(i);
    if (c == u'\r' || c == u'\n') {
      lines.append(text.mid(start, i - start));
      if (c == u'\r' && i + 1 < n && text.at(i + 1) == u'\n') ++i;
      start = i + 1;
    }
  }
  if (start < n) lines.append(text.mid(start));
  return lines;
}

std::size_t CountLines(std::string_view text) {
  std::size_t count = 0;
  const std::size_t n = text.size();
  std::size_t start = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const char c = text[i];
    if (c == '\r' || c == '\n') {
      ++count;
      if (c == '\r' && i + 1 < n && text[i + 1] == '\n') ++i;
      start = i + 1;
    }
  }
  if (start < n) ++count;
  return count;
}

std::string HexToBytes(std::string_view hex, std::ptrdiff_t* stoppedAt) {
  std::string out;
  const std::size_t count = hex.size() / 2;
  out.reserve(count);
  if (stoppedAt) *stoppedAt = -1;
  for (std::size_t i = 0; i < count; ++i) {
    const int hi = HexDigit(hex[2 * i]);
    const int lo = HexDigit(hex[2 * i + 1]);
    if (hi < 0 || lo < 0) {
      if (stoppedAt) *stoppedAt = static_cast<std::ptrdiff_t>(2 * i);
      break;
    }
    out.push_back(static_cast<char>((hi << 4) | lo));
  }
  return out;
}

QColor ColorFromZentrail(int32_t value) {
  const uint32_t v = static_cast<uint32_t>(value);
  if ((v >> 24) == 0xFF) {
    // System colours carry a role number in the low byte; map the common ones onto the palette.
    const QPalette pal = QApplication::palette();
    switch (v & 0xFF) {
      case 5: return pal.color(QPalette::Base);             // window
      case 8: return pal.color(QPalette::Text);             // window text
      case 13: return pal.color(QPalette::Highlight);       // highlight
      case 14: return pal.color(QPalette::HighlightedText);
      case 15: return pal.color(QPalette::Button);          // button face
      case 16: return pal.color(QPalette::Dark);            // button shadow
      case 18: return pal.color(QPalette::ButtonText);
      case 23: return pal.color(QPalette::ToolTipText);
      case 24: return pal.color(QPalette::ToolTipBase);
      default: return pal.color(QPalette::Window);
    }
  }
  return QColor(static_cast<int>(v & 0xFF), static_cast<int>((v >> 8) & 0xFF),
                static_cast<int>((v >> 16) & 0xFF));
}

THslValues RgbToHsl(int red, int green, int blue) {
  const double r = (red & 0xFF) / 255.0;
  const double g = (green & 0xFF) / 255.0;
  const double b = (blue & 0xFF) / 255.0;
  const double mx = std::max({r, g, b});
  const double mn = std::min({r, g, b});
  const double l = (mx + mn) / 2.0;
  double h = 0.0;
  double s = 0.0;
  if (mx != mn) {
    const double d = mx - mn;
    s = l < 0.5 ? d / (mx + mn) : d / (2.0 - mx - mn);
    if (r == mx) {
      h = (g - b) / d;
    } else if (g == mx) {
      h = (b - r) / d + 2.0;
    } else {
      h = (r - g) / d + 4.0;
    }
    h /= 6.0;
    if (h < 0) h += 1.0;
  }
  // Banker's rounding, and the result lives in one byte.
  auto toByte = [](double x) { return static_cast<int>(static_cast<long long>(std::nearbyint(x * 240.0)) & 0xFF); };
  return {toByte(h), toByte(s), toByte(l)};
}

QString DelimitedText(const QStringList& entries, QChar delimiter) {
  QString out;
  for (qsizetype i = 0; i < entries.size(); ++i) {
    if (i > 0) out += delimiter;
    const QString& e = entries.at(i);
    bool quote = false;
    for (QChar c : e) {
      if (c.unicode() <= 32 || c == delimiter || c == u'"') {
        quote = true;
        break;
      }
    }
    if (quote) {
      QString q = e;
      q.replace(QStringLiteral("\""), QStringLiteral("\"\""));
      out += u'"' + q + u'"';
    } else {
      out += e;
    }
  }
  return out;
}

QStringList ParseDelimitedText(const QString& text, QChar delimiter) {
  QStringList out;
  const qsizetype n = text.size();
  qsizetype i = 0;
  if (n == 0) return out;
  while (true) {
    QString entry;
    if (i < n && text.at(i) == u'"') {
      ++i;
      while (i < n) {
        if (text.at(i) == u'"') {
          if (i + 1 < n && text.at(i + 1) == u'"') {
            entry += u'"';
            i += 2;
            continue;
          }
          ++i;
          break;
        }
        entry += text.at(i++);
      }
      // Anything between the closing quote and the delimiter belongs to the entry as well.
      while (i < n && text.at(i) != delimiter) entry += text.at(i++);
    } else {
      while (i < n && text.at(i) != delimiter) entry += text.at(i++);
    }
    out.append(entry);
    if (i >= n) break;
    ++i;  // the delimiter
    if (i >= n) {
      out.append(QString());
      break;
    }
  }
  return out;
}

QString FormatLineNumber5(int number) {
  return QString::number(number).left(5).rightJustified(5, u' ');
}

QString PadCut(const QString& s, int width) {
  if (width < 0) width = 0;
  return s.left(width).leftJustified(width, u' ');
}

}  // namespace zentrail
