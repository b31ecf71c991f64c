#include "ZTColors.h"

#include <QApplication>
#include <cmath>

namespace zentrail {

namespace {

bool PaletteRole(int index, QPalette::ColorGroup& group, QPalette::ColorRole& role) {
  group = QPalette::Active;
  switch (index) {
    case 0: role = QPalette::Button; return true;          // scroll bar
    case 1: role = QPalette::Window; return true;          // desktop
    case 5: role = QPalette::Base; return true;            // window
    case 6: role = QPalette::Shadow; return true;          // window frame
    case 8: role = QPalette::Text; return true;            // window text
    case 13: role = QPalette::Highlight; return true;
    case 14: role = QPalette::HighlightedText; return true;
    case 15: role = QPalette::Button; return true;         // button face
    case 16: role = QPalette::Mid; return true;            // button shadow
    case 17: group = QPalette::Disabled; role = QPalette::Text; return true;  // grey text
    case 18: role = QPalette::ButtonText; return true;
    case 20: role = QPalette::Light; return true;          // button highlight
    case 21: role = QPalette::Shadow; return true;
    case 22: role = QPalette::Midlight; return true;
    case 23: role = QPalette::ToolTipText; return true;
    case 24: role = QPalette::ToolTipBase; return true;
    default: return false;
  }
}

}  // namespace

QColor ColorToQColor(TColor color) { return ColorToQColor(color, QApplication::palette()); }

QColor ColorToQColor(TColor color, const QPalette& palette) {
  const auto value = static_cast<uint32_t>(color);
  if (IsSystemColor(color)) {
    QPalette::ColorGroup group;
    QPalette::ColorRole role;
    if (PaletteRole(static_cast<int>(value & 0xFFu), group, role)) return palette.color(group, role);
    return palette.color(QPalette::Active, QPalette::Base);
  }
  return QColor(static_cast<int>(value & 0xFFu), static_cast<int>((value >> 8) & 0xFFu),
                static_cast<int>((value >> 16) & 0xFFu));
}

TColor QColorToColor(const QColor& color) {
  const QColor rgb = color.toRgb();
  return static_cast<TColor>(static_cast<uint32_t>(rgb.red()) | (static_cast<uint32_t>(rgb.green()) << 8) |
                             (static_cast<uint32_t>(rgb.blue()) << 16));
}

TColor ColorToRGB(TColor color) { return IsSystemColor(color) ? QColorToColor(ColorToQColor(color)) : color; }

TColor BlendColors(TColor a, TColor b, double weightOfB) {
  const auto ua = static_cast<uint32_t>(ColorToRGB(a));
  const auto ub = static_cast<uint32_t>(ColorToRGB(b));
  uint32_t result = 0;
  for (int shift = 0; shift <= 16; shift += 8) {
    const double ca = static_cast<double>((ua >> shift) & 0xFFu);
    const double cb = static_cast<double>((ub >> shift) & 0xFFu);
    const auto c = static_cast<uint32_t>(std::lround(weightOfB * cb + (1.0 - weightOfB) * ca));
    result |= (c & 0xFFu) << shift;
  }
  return static_cast<TColor>(result);
}

}  // namespace zentrail
