#pragma once
// Colours as the settings, projects and messages carry them: 32-bit $00BBGGRR values. A high byte of
// $FF names a system colour whose low byte is the index; those follow the widget palette.

#include <QColor>
#include <QPalette>
#include <cstdint>

namespace zentrail {

using TColor = int32_t;

inline constexpr TColor ztSystemColorFlag = static_cast<TColor>(0xFF000000u);
constexpr TColor SystemColor(int index) { return static_cast<TColor>(0xFF000000u | static_cast<uint32_t>(index)); }

inline constexpr TColor clScrollBar = SystemColor(0);
inline constexpr TColor clBackground = SystemColor(1);
inline constexpr TColor clWindow = SystemColor(5);
inline constexpr TColor clWindowFrame = SystemColor(6);
inline constexpr TColor clWindowText = SystemColor(8);
inline constexpr TColor clHighlight = SystemColor(13);
inline constexpr TColor clHighlightText = SystemColor(14);
inline constexpr TColor clBtnFace = SystemColor(15);
inline constexpr TColor clBtnShadow = SystemColor(16);
inline constexpr TColor clGrayText = SystemColor(17);
inline constexpr TColor clBtnText = SystemColor(18);
inline constexpr TColor clBtnHighlight = SystemColor(20);
inline constexpr TColor cl3DDkShadow = SystemColor(21);
inline constexpr TColor cl3DLight = SystemColor(22);
inline constexpr TColor clInfoText = SystemColor(23);
inline constexpr TColor clInfoBk = SystemColor(24);

inline constexpr TColor clBlack = 0x000000;
inline constexpr TColor clWhite = 0xFFFFFF;
inline constexpr TColor clRed = 0x0000FF;
inline constexpr TColor clNone = 0x1FFFFFFF;

constexpr bool IsSystemColor(TColor c) { return (static_cast<uint32_t>(c) & 0xFF000000u) == 0xFF000000u; }

// $00BBGGRR to QColor; a system colour is looked up in the palette (the application's by default).
QColor ColorToQColor(TColor color);
QColor ColorToQColor(TColor color, const QPalette& palette);
// QColor to $00BBGGRR (alpha dropped).
TColor QColorToColor(const QColor& color);
// A system colour turned into its RGB value; other colours unchanged.
TColor ColorToRGB(TColor color);

// Each of red, green and blue = round(weight * b + (1 - weight) * a); system colours first become RGB.
TColor BlendColors(TColor a, TColor b, double weightOfB);

}  // namespace zentrail
