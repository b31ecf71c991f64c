#pragma once
// Small pieces the inspectors share: the font faces, payload splitting and the pure conversions
// (hexadecimal pictures, colours, delimited text) kept apart from the widgets so they can be
// checked on their own.

#include <QColor>
#include <QFont>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <string>
#include <string_view>

namespace zentrail {

// The interface face: "Segoe UI" 9 if installed, else "Tahoma" 8, else the system's general font.
QFont InspectorInterfaceFont();
// The fixed face: "Consolas", else "Courier New", else the system's fixed font; size as given.
QFont InspectorFixedFont(int pointSize = 9);
// Line numbers of text views: the interface face at size 7.
QFont InspectorLineNumberFont();

// UTF-8 from the store to a QString for display.
inline QString ToQString(std::string_view s) {
  return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

// Lines as a string list reads them: CR LF, LF or CR end a line, and a break at the very end does
// not start another (empty) line. An empty text has no lines.
QStringList SplitLines(const QString& text);
std::size_t CountLines(std::string_view text);

// Hexadecimal text to bytes: the number of bytes is the length / 2, so an odd last digit is lost,
// and a pair that is not hexadecimal ends the conversion there. `stoppedAt` receives the index
// of the bad pair's first character, or -1 when all went through.
std::string HexToBytes(std::string_view hex, std::ptrdiff_t* stoppedAt = nullptr);

// A colour value $00BBGGRR to QColor; a high byte of $FF names a system colour (palette role).
QColor ColorFromZentrail(int32_t value);

// Hue, saturation and luminance on the 0..240 scale, each rounded half to even into one byte.
struct THslValues {
  int H = 0;
  int S = 0;
  int L = 0;
};
THslValues RgbToHsl(int red, int green, int blue);

// Delimited text: entries joined by the delimiter; an entry holding a blank, a control character,
// the delimiter or a double quote is wrapped in double quotes with inner ones doubled.
QString DelimitedText(const QStringList& entries, QChar delimiter);
// The reverse, for reading such text back (unquoted entries end at the delimiter).
QStringList ParseDelimitedText(const QString& text, QChar delimiter);

// "%5.5s": right-aligned in five places and cut to five characters.
QString FormatLineNumber5(int number);
// "%-w.ws": padded to w and cut to w.
QString PadCut(const QString& s, int width);

}  // namespace zentrail
