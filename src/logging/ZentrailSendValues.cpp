// The members of the send family that carry a value in the text of the message: name = value
// lines, colours, dates, keys, enumerations, sets, variants and scratch-pad values.
#include <clocale>
#include <cstdio>
#include <cstring>
#include <string>

#include "ZTDateTime.h"
#include "ZentrailLogger.h"

namespace zentrail {

namespace {

std::string WideToUtf8(std::wstring_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    uint32_t c = static_cast<uint32_t>(text[i]);
    // wchar_t is 32 bits here, but a text that came from UTF-16 may still hold surrogate pairs.
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size()) {
      const uint32_t low = static_cast<uint32_t>(text[i + 1]);
      if (low >= 0xDC00 && low <= 0xDFFF) {
        c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
        ++i;
      }
    }
    if ((c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF) c = 0xFFFD;
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (c >> 18));
      out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}

std::string ColorText(std::string_view name, int32_t color, int red, int green, int blue) {
  char channels[64];
  std::snprintf(channels, sizeof channels, " = RGB( %d, %d, %d )", red, green, blue);
  return std::string(name) + ": " + ColorToString(color) + channels;
}

std::string CurrencyText(double value) {
  const std::lconv* conv = std::localeconv();
  std::string symbol = conv && conv->currency_symbol ? conv->currency_symbol : "";
  std::string amount = FormatFloatN(value, 2);
  if (!amount.empty() && amount[0] == '-') return "-" + symbol + amount.substr(1);
  return symbol + amount;
}

std::string DateTimeText(std::chrono::system_clock::time_point value, std::string_view format,
                         const std::string& loggerFormat) {
  std::string_view use = !format.empty() ? format : !loggerFormat.empty() ? std::string_view(loggerFormat)
                                                                          : std::string_view(ztDefaultDateTimeFormat);
  return FormatTimeStamp(use, LocalTimeStamp(value));
}

std::string HexText(uint32_t value) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "$%x", value);
  return buffer;
}

}  // namespace

int TZentrailLogger::NameValue(int32_t msgType, std::string_view name, std::string_view value) {
  std::string text;
  text.reserve(name.size() + value.size() + 3);
  text.append(name);
  text += " = ";
  text.append(value);
  return InternalSend(msgType, ztmText, {}, {}, text);
}

int TZentrailLogger::SendMsgDetails(int32_t msgType, int32_t msgContent, std::string_view typeName,
                                    const std::vector<std::string>& lines, std::string_view text) {
  return IsOn() ? InternalSend(msgType, msgContent, typeName, JoinLines(lines), text) : 0;
}

int TZentrailLogger::Send(int32_t msgType, std::string_view name, std::wstring_view value) {
  return IsOn() ? NameValue(msgType, name, WideToUtf8(value)) : 0;
}

int TZentrailLogger::Send(int32_t msgType, std::string_view name, uint32_t value, bool asHex) {
  if (!IsOn()) return 0;
  return NameValue(msgType, name, asHex ? HexText(value) : std::to_string(value));
}

int TZentrailLogger::Send(int32_t msgType, std::string_view name, TZentrailPoint value) {
  if (!IsOn()) return 0;
  return NameValue(msgType, name, "( " + std::to_string(value.X) + ", " + std::to_string(value.Y) + " )");
}

int TZentrailLogger::Send(int32_t msgType, std::string_view name, TZentrailSize value) {
  if (!IsOn()) return 0;
  return NameValue(msgType, name, "( " + std::to_string(value.Width) + ", " + std::to_string(value.Height) + " )");
}

int TZentrailLogger::Send(int32_t msgType, std::string_view name, TZentrailRect value) {
  if (!IsOn()) return 0;
  return NameValue(msgType, name,
                   "( " + std::to_string(value.Left) + ", " + std::to_string(value.Top) + ", " +
                       std::to_string(value.Right) + ", " + std::to_string(value.Bottom) + " )");
}

int TZentrailLogger::SendAssigned(int32_t msgType, std::string_view name, const void* pointer) {
  if (!IsOn()) return 0;
  return SendText(msgType, std::string(name) + (pointer ? " is Assigned." : " is *NOT* Assigned."));
}

int TZentrailLogger::SendPointer(int32_t msgType, std::string_view name, const void* pointer) {
  if (!IsOn()) return 0;
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "$%llx",
                static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(pointer)));
  return NameValue(msgType, name, buffer);
}

int TZentrailLogger::SendColor(int32_t msgType, std::string_view name, int32_t color) {
  if (!IsOn()) return 0;
  int r = 0, g = 0, b = 0;
  ColorToRGB(color, r, g, b);
  return InternalSend(msgType, ztmColor, "TColor",
                      JoinLines({std::to_string(r), std::to_string(g), std::to_string(b)}),
                      ColorText(name, color, r, g, b));
}

int TZentrailLogger::SendColorARGB(int32_t msgType, std::string_view name, uint32_t argb) {
  if (!IsOn()) return 0;
  const int a = static_cast<int>(argb >> 24);
  const int r = static_cast<int>((argb >> 16) & 0xFF);
  const int g = static_cast<int>((argb >> 8) & 0xFF);
  const int b = static_cast<int>(argb & 0xFF);
  const int32_t color = r | (g << 8) | (b << 16);
  std::string text = ColorText(name, color, r, g, b) + "  Alpha( " + std::to_string(a) + " )";
  return InternalSend(msgType, ztmColor, "ARGB_Color",
                      JoinLines({std::to_string(r), std::to_string(g), std::to_string(b), std::to_string(a)}), text);
}

int TZentrailLogger::SendCurrency(int32_t msgType, std::string_view name, double value) {
  return IsOn() ? NameValue(msgType, name, CurrencyText(value)) : 0;
}

int TZentrailLogger::SendDateTime(int32_t msgType, std::string_view name, std::chrono::system_clock::time_point value,
                                  std::string_view format) {
  return IsOn() ? NameValue(msgType, name, DateTimeText(value, format, FDateTimeFormat)) : 0;
}

int TZentrailLogger::SendEnum(int32_t msgType, std::string_view name, int value,
                              std::span<const std::string_view> names) {
  if (!IsOn()) return 0;
  if (value >= 0 && static_cast<std::size_t>(value) < names.size()) return NameValue(msgType, name, names[value]);
  return NameValue(msgType, name, std::to_string(value));
}

int TZentrailLogger::SendSet(int32_t msgType, std::string_view name, uint64_t bits,
                             std::span<const std::string_view> names) {
  if (!IsOn()) return 0;
  // A set holds at most 64 elements here, one bit each; a bit without a name is no set.
  const uint64_t known = names.size() >= 64 ? ~uint64_t{0} : ((uint64_t{1} << names.size()) - 1);
  if (names.empty() || names.size() > 64 || (bits & ~known) != 0)
    return SendText(ztmError, "SendSet Error: Value is not a set");
  std::string text(name);
  text += ": [";
  bool first = true;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (!(bits & (uint64_t{1} << i))) continue;
    if (!first) text += ", ";
    text.append(names[i]);
    first = false;
  }
  text += first ? " ]" : "]";
  return SendText(msgType, text);
}

// ---------------------------------------------------------------------------------------------
// Keys

namespace {

struct TKeyName {
  uint16_t Code;
  const char* Name;
};

constexpr TKeyName kKeyNames[] = {
    {0x01, "VK_LBUTTON"},  {0x02, "VK_RBUTTON"},    {0x03, "VK_CANCEL"},   {0x04, "VK_MBUTTON"},
    {0x08, "VK_BACK"},     {0x09, "VK_TAB"},        {0x0C, "VK_CLEAR"},    {0x0D, "VK_RETURN"},
    {0x10, "VK_SHIFT"},    {0x11, "VK_CONTROL"},    {0x12, "VK_MENU"},     {0x13, "VK_PAUSE"},
    {0x14, "VK_CAPITAL"},  {0x15, "VK_KANA or VK_HANGUL"}, {0x17, "VK_JUNJA"}, {0x18, "VK_FINAL"},
    {0x19, "VK_HANJA or VK_KANJI"}, {0x1B, "VK_ESCAPE"}, {0x1C, "VK_CONVERT"}, {0x1D, "VK_NONCONVERT"},
    {0x1E, "VK_ACCEPT"},   {0x1F, "VK_MODECHANGE"}, {0x20, "VK_SPACE"},    {0x21, "VK_PRIOR"},
    {0x22, "VK_NEXT"},     {0x23, "VK_END"},        {0x24, "VK_HOME"},     {0x25, "VK_LEFT"},
    {0x26, "VK_UP"},       {0x27, "VK_RIGHT"},      {0x28, "VK_DOWN"},     {0x29, "VK_SELECT"},
    {0x2A, "VK_PRINT"},    {0x2B, "VK_EXECUTE"},    {0x2C, "VK_SNAPSHOT"}, {0x2D, "VK_INSERT"},
    {0x2E, "VK_DELETE"},   {0x2F, "VK_HELP"},       {0x5B, "VK_LWIN"},     {0x5C, "VK_RWIN"},
    {0x5D, "VK_APPS"},     {0x6A, "VK_MULTIPLY"},   {0x6B, "VK_ADD"},      {0x6C, "VK_SEPARATOR"},
    {0x6D, "VK_SUBTRACT"}, {0x6E, "VK_DECIMAL"},    {0x6F, "VK_DIVIDE"},   {0x90, "VK_NUMLOCK"},
    {0x91, "VK_SCROLL"},   {0xA4, "VK_LMENU"},      {0xA5, "VK_RMENU"},    {0xE5, "VK_PROCESSKEY"},
    {0xF6, "VK_ATTN"},     {0xF7, "VK_CRSEL"},      {0xF8, "VK_EXSEL"},    {0xF9, "VK_EREOF"},
    {0xFA, "VK_PLAY"},     {0xFB, "VK_ZOOM"},       {0xFC, "VK_NONAME"},   {0xFD, "VK_PA1"},
    {0xFE, "VK_OEM_CLEAR"},
};

}  // namespace

std::string VirtualKeyName(uint16_t key) {
  if (key >= 0x60 && key <= 0x69) return "VK_NUMPAD" + std::to_string(key - 0x60);
  if (key >= 0x70 && key <= 0x87) return "VK_F" + std::to_string(key - 0x70 + 1);
  if (key <= 254)
    for (const auto& k : kKeyNames)
      if (k.Code == key) return k.Name;
  // Letters and digits name themselves; anything else is the character of its code.
  std::string name = "VK_";
  if (key < 0x80) name += static_cast<char>(key);
  else name += "#" + std::to_string(key);
  return name;
}

std::string ShiftStateText(TZentrailShiftState shift) {
  static constexpr const char* kNames[] = {"ssShift", "ssAlt", "ssCtrl", "ssLeft", "ssRight", "ssMiddle", "ssDouble"};
  std::string text = "[";
  bool first = true;
  for (int i = 0; i < 7; ++i) {
    if (!(shift & (1u << i))) continue;
    if (!first) text += ", ";
    text += kNames[i];
    first = false;
  }
  return text + "]";
}

int TZentrailLogger::SendKey(int32_t msgType, std::string_view name, uint16_t key, TZentrailShiftState shift) {
  if (!IsOn()) return 0;
  char code[16];
  std::snprintf(code, sizeof code, "%.2X", key);
  return NameValue(msgType, name, VirtualKeyName(key) + " ($" + code + ", " + ShiftStateText(shift) + ")");
}

int TZentrailLogger::SendMouseButton(int32_t msgType, std::string_view name, TZentrailMouseButton button,
                                     TZentrailShiftState shift) {
  if (!IsOn()) return 0;
  const uint16_t key = button == mbLeft ? 0x01 : button == mbRight ? 0x02 : 0x04;
  return SendKey(msgType, name, key, shift);
}

int TZentrailLogger::SendWinError(std::string_view text, int code) {
  if (!IsOn()) return 0;
  char buffer[2048];
  // The GNU strerror_r gives back a pointer that need not be the buffer.
  const char* message = strerror_r(code, buffer, sizeof buffer);
  std::string reason = message ? message : "";
  if (reason.size() > 2048) reason.resize(2048);
  return SendText(ztmError, std::string(text) + ": " + reason);
}

// ---------------------------------------------------------------------------------------------
// Variants

int TZentrailLogger::SendVariant(int32_t msgType, std::string_view name, const TZentrailVariant& value) {
  if (!IsOn()) return 0;
  const char* missing = nullptr;
  switch (value.Kind) {
    case TZentrailVariant::vkUnassigned: missing = ": Variant is Not Assigned"; break;
    case TZentrailVariant::vkNull: missing = ": Variant is Null"; break;
    case TZentrailVariant::vkError: missing = ": Variant is of type varError"; break;
    default: break;
  }
  if (missing) return SendText(msgType, std::string(name) + missing);
  if (value.Kind != TZentrailVariant::vkArray) return NameValue(msgType, name, value.Text());
  std::vector<std::string> lines;
  lines.reserve(value.Elements.size());
  for (const auto& e : value.Elements) {
    if (e.Kind == TZentrailVariant::vkArray)
      return SendText(ztmError, "SendVariant Error: Multi-dimensional variant arrays not supported");
    lines.push_back(e.Kind == TZentrailVariant::vkNull ? "Null" : e.Text());
  }
  return SendMsgDetails(msgType, ztmStringList, "varArray", lines, name);
}

// ---------------------------------------------------------------------------------------------
// Scratch pad

int TZentrailLogger::WriteColor(std::string_view lineId, int32_t color) {
  return IsOn() ? WriteLine(lineId, ColorToString(color)) : 0;
}

int TZentrailLogger::WriteCurrency(std::string_view lineId, double value) {
  return IsOn() ? WriteLine(lineId, CurrencyText(value)) : 0;
}

int TZentrailLogger::WriteDateTime(std::string_view lineId, std::chrono::system_clock::time_point value,
                                   std::string_view format) {
  return IsOn() ? WriteLine(lineId, DateTimeText(value, format, FDateTimeFormat)) : 0;
}

}  // namespace zentrail
