#include "ZentrailFormatters.h"

#include <cxxabi.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <strings.h>

#include "ZTDateTime.h"
#include "ZentrailLogger.h"

namespace zentrail {

std::string ZentrailDemangle(const char* mangledName) {
  int status = 0;
  char* readable = abi::__cxa_demangle(mangledName, nullptr, nullptr, &status);
  std::string name = (status == 0 && readable) ? readable : mangledName;
  std::free(readable);
  return name;
}

// ---------------------------------------------------------------------------------------------
// Text forms

namespace {

std::string GroupThousands(const std::string& digits) {
  std::string out;
  out.reserve(digits.size() + digits.size() / 3);
  const std::size_t n = digits.size();
  for (std::size_t i = 0; i < n; ++i) {
    out += digits[i];
    if (i + 1 < n && (n - i - 1) % 3 == 0) out += ',';
  }
  return out;
}

}  // namespace

std::string FormatFloatN(double value, int precision) {
  if (std::isnan(value)) return "NAN";
  if (std::isinf(value)) return value < 0 ? "-INF" : "INF";
  precision = std::clamp(precision, 0, 18);
  char buffer[400];
  std::snprintf(buffer, sizeof buffer, "%.*f", precision, std::fabs(value));
  std::string text = buffer;
  const auto point = text.find('.');
  std::string whole = text.substr(0, point);
  std::string out;
  // A value that rounds to zero shows no sign.
  const bool negative = value < 0 && text.find_first_not_of("0.") != std::string::npos;
  if (negative) out += '-';
  out += GroupThousands(whole);
  if (point != std::string::npos) out += text.substr(point);
  return out;
}

std::string FormatThousands(uint64_t value) { return GroupThousands(std::to_string(value)); }

std::string FormatThousands(int64_t value) {
  if (value >= 0) return FormatThousands(static_cast<uint64_t>(value));
  return "-" + FormatThousands(static_cast<uint64_t>(0) - static_cast<uint64_t>(value));
}

namespace {

struct TColorName {
  int32_t Value;
  const char* Name;
};

constexpr TColorName kColorNames[] = {
    {0x000000, "clBlack"},   {0x000080, "clMaroon"},     {0x008000, "clGreen"},   {0x008080, "clOlive"},
    {0x800000, "clNavy"},    {0x800080, "clPurple"},     {0x808000, "clTeal"},    {0x808080, "clGray"},
    {0xC0C0C0, "clSilver"},  {0x0000FF, "clRed"},        {0x00FF00, "clLime"},    {0x00FFFF, "clYellow"},
    {0xFF0000, "clBlue"},    {0xFF00FF, "clFuchsia"},    {0xFFFF00, "clAqua"},    {0xFFFFFF, "clWhite"},
    {0xC0DCC0, "clMoneyGreen"}, {0xF0CAA6, "clSkyBlue"}, {0xF0FBFF, "clCream"},   {0xA4A0A0, "clMedGray"},
    {0x1FFFFFFF, "clNone"},  {0x20000000, "clDefault"},
};

// System colours by element number, with the value each has on a light desktop ($00RRGGBB here
// for reading; converted where used).
struct TSystemColor {
  const char* Name;
  uint32_t Rgb;
};
constexpr TSystemColor kSystemColors[] = {
    {"clScrollBar", 0xC8C8C8},         {"clBackground", 0x000000},        {"clActiveCaption", 0x99B4D1},
    {"clInactiveCaption", 0xBFCDDB},   {"clMenu", 0xF0F0F0},              {"clWindow", 0xFFFFFF},
    {"clWindowFrame", 0x646464},       {"clMenuText", 0x000000},          {"clWindowText", 0x000000},
    {"clCaptionText", 0x000000},       {"clActiveBorder", 0xB4B4B4},      {"clInactiveBorder", 0xF4F7FC},
    {"clAppWorkSpace", 0xABABAB},      {"clHighlight", 0x3399FF},         {"clHighlightText", 0xFFFFFF},
    {"clBtnFace", 0xF0F0F0},           {"clBtnShadow", 0xA0A0A0},         {"clGrayText", 0x6D6D6D},
    {"clBtnText", 0x000000},           {"clInactiveCaptionText", 0x000000}, {"clBtnHighlight", 0xFFFFFF},
    {"cl3DDkShadow", 0x696969},        {"cl3DLight", 0xE3E3E3},           {"clInfoText", 0x000000},
    {"clInfoBk", 0xFFFFE1},            {nullptr, 0x000000},               {"clHotLight", 0x0066CC},
    {"clGradientActiveCaption", 0xB9D1EA}, {"clGradientInactiveCaption", 0xD7E4F2},
    {"clMenuHighlight", 0x3399FF},     {"clMenuBar", 0xF0F0F0},
};

bool IsSystemColor(int32_t color) { return (static_cast<uint32_t>(color) & 0xFF000000u) == 0xFF000000u; }

}  // namespace

std::string ColorToString(int32_t color) {
  if (IsSystemColor(color)) {
    const uint32_t index = static_cast<uint32_t>(color) & 0xFFFFFFu;
    if (index < std::size(kSystemColors) && kSystemColors[index].Name) return kSystemColors[index].Name;
  } else {
    for (const auto& c : kColorNames)
      if (c.Value == color) return c.Name;
  }
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "$%.8X", static_cast<uint32_t>(color));
  return buffer;
}

void ColorToRGB(int32_t color, int& red, int& green, int& blue) {
  uint32_t value = static_cast<uint32_t>(color);
  if (IsSystemColor(color)) {
    const uint32_t index = value & 0xFFFFFFu;
    const uint32_t rgb = index < std::size(kSystemColors) ? kSystemColors[index].Rgb : 0;
    red = static_cast<int>((rgb >> 16) & 0xFF);
    green = static_cast<int>((rgb >> 8) & 0xFF);
    blue = static_cast<int>(rgb & 0xFF);
    return;
  }
  red = static_cast<int>(value & 0xFF);
  green = static_cast<int>((value >> 8) & 0xFF);
  blue = static_cast<int>((value >> 16) & 0xFF);
}

std::string CursorToString(int32_t cursor) {
  static constexpr const char* kNames[] = {
      "crDefault",  "crNone",      "crArrow",   "crCross",    "crIBeam",     "crSize",     "crSizeNESW",
      "crSizeNS",   "crSizeNWSE",  "crSizeWE",  "crUpArrow",  "crHourGlass", "crDrag",     "crNoDrop",
      "crHSplit",   "crVSplit",    "crMultiDrag", "crSQLWait", "crNo",       "crAppStart", "crHelp",
      "crHandPoint", "crSizeAll"};
  if (cursor <= 0 && -cursor < static_cast<int32_t>(std::size(kNames))) return kNames[-cursor];
  return std::to_string(cursor);
}

std::string BytesToHex(std::span<const std::byte> bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string out(bytes.size() * 2, '0');
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto b = static_cast<unsigned>(bytes[i]);
    out[2 * i] = kDigits[b >> 4];
    out[2 * i + 1] = kDigits[b & 15];
  }
  return out;
}

std::string JoinLines(const std::vector<std::string>& lines) {
  std::size_t size = 0;
  for (const auto& l : lines) size += l.size() + 2;
  std::string out;
  out.reserve(size);
  for (const auto& l : lines) {
    out += l;
    out += "\r\n";
  }
  return out;
}

std::string DelimitedText(const std::vector<std::string>& entries, char delimiter) {
  std::string out;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (i) out += delimiter;
    const std::string& e = entries[i];
    const bool quote = std::any_of(e.begin(), e.end(), [&](char ch) {
      auto c = static_cast<unsigned char>(ch);
      return c <= 32 || ch == delimiter || ch == '"';
    });
    if (!quote) {
      out += e;
      continue;
    }
    out += '"';
    for (char ch : e) {
      if (ch == '"') out += '"';
      out += ch;
    }
    out += '"';
  }
  return out;
}

std::string HexDump(std::span<const std::byte> bytes, uint64_t streamOffset) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string out;
  out.reserve(bytes.size() / 8 * 44 + 64);
  uint64_t rowStart = streamOffset & ~uint64_t{7};
  std::size_t skip = static_cast<std::size_t>(streamOffset - rowStart);
  std::size_t next = 0;
  while (next < bytes.size()) {
    const std::size_t count = std::min<std::size_t>(8 - skip, bytes.size() - next);
    // The row as eight slots, the bytes standing at their place in the row.
    unsigned char row[8];
    std::fill(std::begin(row), std::end(row), static_cast<unsigned char>(' '));
    for (std::size_t k = 0; k < count; ++k) row[skip + k] = static_cast<unsigned char>(bytes[next + k]);

    char offset[16];
    std::snprintf(offset, sizeof offset, "%.8llX: ", static_cast<unsigned long long>(rowStart & 0xFFFFFFFFull));
    out += offset;
    out.append(3 * skip, ' ');
    for (std::size_t k = 0; k < count; ++k) {
      out += kDigits[row[skip + k] >> 4];
      out += kDigits[row[skip + k] & 15];
      out += ' ';
    }
    out.append(3 * (8 - skip - count), ' ');
    out += " | ";
    out.append(skip, ' ');
    // The test reads the byte at its place, but the character comes from the start of the row;
    // on a first row that does not begin at a multiple of eight the characters are therefore
    // shifted. Readers of these dumps know the habit, so it stays.
    for (std::size_t k = 0; k < count; ++k) out += row[skip + k] < 32 ? '.' : static_cast<char>(row[k]);
    out += "\r\n";
    next += count;
    rowStart += 8;
    skip = 0;
  }
  return out;
}

std::string HexDump(std::istream& stream) {
  stream.clear();
  const std::streampos start = stream.tellg();
  if (start == std::streampos(-1)) return {};
  std::string data((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  stream.clear();
  stream.seekg(start);
  return HexDump(std::as_bytes(std::span(data.data(), data.size())), static_cast<uint64_t>(std::streamoff(start)));
}

// ---------------------------------------------------------------------------------------------
// Variants and properties

std::string TZentrailVariant::Text() const {
  switch (Kind) {
    case vkBoolean: return Boolean ? "True" : "False";
    case vkInteger: return std::to_string(Integer);
    case vkFloat: {
      char buffer[64];
      std::snprintf(buffer, sizeof buffer, "%.15g", Float);
      return buffer;
    }
    case vkString: return String;
    case vkDateTime: return FormatDateTime(ztDefaultDateTimeFormat, Float);
    default: return {};
  }
}

TZentrailProperties::TProperty& TZentrailProperties::Add(TKind kind, std::string_view name) {
  auto& p = FItems.emplace_back();
  p.Kind = kind;
  p.Name.assign(name);
  return p;
}

void TZentrailProperties::AddString(std::string_view name, std::string_view value) {
  Add(pkString, name).Value.assign(value);
}
void TZentrailProperties::AddInteger(std::string_view name, int32_t value) {
  Add(pkInteger, name).Value = std::to_string(value);
}
void TZentrailProperties::AddInt64(std::string_view name, int64_t value) {
  Add(pkInt64, name).Value = std::to_string(value);
}
void TZentrailProperties::AddBoolean(std::string_view name, bool value) {
  Add(pkEnum, name).Value = value ? "True" : "False";
}
void TZentrailProperties::AddEnum(std::string_view name, std::string_view elementName) {
  Add(pkEnum, name).Value.assign(elementName);
}
void TZentrailProperties::AddFloat(std::string_view name, double value) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.15g", value);
  Add(pkFloat, name).Value = buffer;
}
void TZentrailProperties::AddDateTime(std::string_view name, double value) {
  Add(pkFloat, name).Value = FormatDateTime("yyyy-mm-dd hh:nn:ss", value);
}
void TZentrailProperties::AddDate(std::string_view name, double value) {
  Add(pkFloat, name).Value = FormatDateTime("yyyy-mm-dd", value);
}
void TZentrailProperties::AddTime(std::string_view name, double value) {
  Add(pkFloat, name).Value = FormatDateTime("hh:nn:ss", value);
}
void TZentrailProperties::AddColor(std::string_view name, int32_t color) {
  Add(pkInteger, name).Value = ColorToString(color);
}
void TZentrailProperties::AddCursor(std::string_view name, int32_t cursor) {
  Add(pkInteger, name).Value = CursorToString(cursor);
}
void TZentrailProperties::AddChar(std::string_view name, char32_t value) {
  auto& p = Add(pkChar, name);
  if (value < 32) {
    p.Value = "#" + std::to_string(static_cast<uint32_t>(value));
    return;
  }
  // UTF-8 of the code point.
  std::string& s = p.Value;
  const uint32_t c = value > 0x10FFFF ? 0xFFFD : static_cast<uint32_t>(value);
  if (c < 0x80) {
    s += static_cast<char>(c);
  } else if (c < 0x800) {
    s += static_cast<char>(0xC0 | (c >> 6));
    s += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    s += static_cast<char>(0xE0 | (c >> 12));
    s += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    s += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    s += static_cast<char>(0xF0 | (c >> 18));
    s += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    s += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    s += static_cast<char>(0x80 | (c & 0x3F));
  }
}
void TZentrailProperties::AddSet(std::string_view name, std::string_view setTypeName,
                                 std::vector<std::pair<std::string, bool>> elements) {
  auto& p = Add(pkSet, name);
  p.SetTypeName.assign(setTypeName);
  p.Elements = std::move(elements);
}
void TZentrailProperties::AddObject(std::string_view name, const IZentrailPublished* object) {
  auto& p = Add(pkObject, name);
  p.Object = object;
  p.Value = object ? "(" + object->ZentrailClassName() + ")" : "nil";
}

void TZentrailProperties::AddObject(std::string_view name, std::shared_ptr<const IZentrailPublished> object) {
  AddObject(name, object.get());
  FItems.back().Owned = std::move(object);
}

namespace {

// A font as the walk sees it: an object of class TFont with its own properties.
class TFontObject : public IZentrailPublished {
 public:
  explicit TFontObject(const TZentrailFont& font) : FFont(font) {}
  std::string ZentrailClassName() const override { return "TFont"; }
  void ZentrailProperties(TZentrailProperties& p) const override {
    p.AddColor("Color", FFont.Color);
    p.AddString("Name", FFont.Name);
    p.AddInteger("Size", FFont.Size);
    p.AddSet("Style", "TFontStyles",
             {{"fsBold", FFont.Bold}, {"fsItalic", FFont.Italic}, {"fsUnderline", FFont.Underline},
              {"fsStrikeOut", FFont.StrikeOut}});
  }

 private:
  TZentrailFont FFont;
};

}  // namespace

std::string FontText(const TZentrailFont& font) {
  std::string style;
  if (font.Bold) style += ", Bold";
  if (font.Italic) style += ", Italic";
  if (font.Underline) style += ", Underline";
  if (font.StrikeOut) style += ", StrikeOut";
  if (style.empty()) style = ", Normal";
  return font.Name + ", " + std::to_string(font.Size) + " " + style.substr(2);
}

void TZentrailProperties::AddFont(std::string_view name, const TZentrailFont& font) {
  auto& p = Add(pkObject, name);
  p.Owned = std::make_shared<TFontObject>(font);
  p.Object = p.Owned.get();
  p.Value = FontText(font);
}
void TZentrailProperties::AddVariant(std::string_view name, const TZentrailVariant& value) {
  Add(pkVariant, name).Value = value.Kind == TZentrailVariant::vkNull ? "Null" : value.Text();
}
void TZentrailProperties::AddOther(std::string_view name) { Add(pkOther, name).Value = "<<Not Implemented Yet>>"; }

const TZentrailProperties::TProperty* TZentrailProperties::Find(std::string_view name) const {
  for (const auto& p : FItems)
    if (p.Name.size() == name.size() && strncasecmp(p.Name.data(), name.data(), name.size()) == 0) return &p;
  return nullptr;
}

namespace {

// Deep enough for any real object tree; a deeper one is a graph that does not end.
constexpr int kMaxWalkDepth = 32;

struct TWalk {
  std::vector<std::string>& Lines;
  std::set<const void*> Path;  // objects being walked now, from the top down
  std::string* Recursion;

  void Object(const IZentrailPublished& object, const std::string& prefix, int depth) {
    TZentrailProperties properties;
    object.ZentrailProperties(properties);
    std::vector<const TZentrailProperties::TProperty*> sorted;
    for (const auto& p : properties.Items()) sorted.push_back(&p);
    std::stable_sort(sorted.begin(), sorted.end(), [](auto* a, auto* b) {
      return strcasecmp(a->Name.c_str(), b->Name.c_str()) < 0;
    });
    for (const auto* p : sorted) {
      const std::string name = prefix + p->Name;
      if (p->Kind == TZentrailProperties::pkSet) {
        Lines.push_back(name + "=[" + p->SetTypeName + "]");
        for (const auto& [element, on] : p->Elements)
          Lines.push_back(name + "." + element + (on ? "=True" : "=False"));
        continue;
      }
      Lines.push_back(name + "=" + p->Value);
      if (p->Kind != TZentrailProperties::pkObject || !p->Object) continue;
      const void* key = p->Object->ZentrailIdentity();
      if (Path.count(key) || depth >= kMaxWalkDepth) {
        if (Recursion && Recursion->empty()) *Recursion = name;
        continue;
      }
      Path.insert(key);
      Object(*p->Object, name + ".", depth + 1);
      Path.erase(key);
    }
  }
};

}  // namespace

std::vector<std::string> PropertyLines(const IZentrailPublished& object, std::string* recursion) {
  std::vector<std::string> lines;
  TWalk walk{lines, {}, recursion};
  walk.Path.insert(object.ZentrailIdentity());
  walk.Object(object, {}, 0);
  return lines;
}

// ---------------------------------------------------------------------------------------------
// Formatters

void TZentrailFormatter::AddNameValuePair(std::string_view name, std::string_view value) {
  std::string line(name);
  line += '=';
  line += value;
  FStringList.push_back(std::move(line));
}
void TZentrailFormatter::AddNameValuePair(std::string_view name, bool value) {
  AddNameValuePair(name, std::string_view(value ? "True" : "False"));
}
void TZentrailFormatter::AddNameValuePair(std::string_view name, char value) {
  AddNameValuePair(name, std::string_view(&value, 1));
}
void TZentrailFormatter::AddNameValuePairDateTime(std::string_view name, double value) {
  AddNameValuePair(name, std::string_view(FormatDateTime(ztDefaultDateTimeFormat, value)));
}
void TZentrailFormatter::AddNameValuePair(std::string_view name, uint32_t value, bool asHex) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, asHex ? "$%x" : "%u", value);
  AddNameValuePair(name, std::string_view(buffer));
}
void TZentrailFormatter::AddNameValuePair(std::string_view name, double value, int precision) {
  AddNameValuePair(name, std::string_view(FormatFloatN(value, precision)));
}
void TZentrailFormatter::AddNameValuePair(std::string_view name, int32_t value) {
  AddNameValuePair(name, std::string_view(std::to_string(value)));
}
void TZentrailFormatter::AddNameValuePair(std::string_view name, int64_t value) {
  AddNameValuePair(name, std::string_view(std::to_string(value)));
}
void TZentrailFormatter::AddNameValuePair(std::string_view name, TZentrailPoint value) {
  AddNameValuePair(name, std::string_view("( " + std::to_string(value.X) + ", " + std::to_string(value.Y) + " )"));
}
void TZentrailFormatter::AddNameValuePair(std::string_view name, TZentrailSize value) {
  AddNameValuePair(name,
                   std::string_view("( " + std::to_string(value.Width) + ", " + std::to_string(value.Height) + " )"));
}
void TZentrailFormatter::AddNameValuePair(std::string_view name, TZentrailRect value) {
  AddNameValuePair(name, std::string_view("( " + std::to_string(value.Left) + ", " + std::to_string(value.Top) + ", " +
                                          std::to_string(value.Right) + ", " + std::to_string(value.Bottom) + " )"));
}

void TZentrailFormatterList::Add(int32_t msgType, std::string className, TZentrailFormatterFactory factory) {
  std::lock_guard lock(FLock);
  FItems.push_back({msgType, std::move(className), std::move(factory)});
}

void TZentrailFormatterList::Delete(std::size_t index) {
  std::lock_guard lock(FLock);
  if (index < FItems.size()) FItems.erase(FItems.begin() + static_cast<std::ptrdiff_t>(index));
}

void TZentrailFormatterList::Clear() {
  std::lock_guard lock(FLock);
  FItems.clear();
}

std::size_t TZentrailFormatterList::Count() const {
  std::lock_guard lock(FLock);
  return FItems.size();
}

TZentrailFormatterItem TZentrailFormatterList::FindFormatterClass(int32_t msgType) const {
  std::lock_guard lock(FLock);
  for (const auto& item : FItems)
    if (item.MsgType == msgType) return item;
  return {};
}

std::vector<TZentrailFormatterItem> TZentrailFormatterList::Items() const {
  std::lock_guard lock(FLock);
  return FItems;
}

TZentrailFormatterList& ZentrailFormatters() {
  static TZentrailFormatterList list;
  return list;
}

void RegisterCustomFormatter(int32_t msgType, std::string className, TZentrailFormatterFactory factory) {
  // The types below 100 are the system's own; the registration still goes through, so that an
  // application that chose a wrong number sees its data and the reason together.
  if (msgType < ztmReserved)
    ZentrailLog.SendErrorFmt("%s Error: MsgType %d is less than ztmUser", className.c_str(), msgType);
  TZentrailFormatterItem existing = ZentrailFormatters().FindFormatterClass(msgType);
  if (existing.FormatterClass) {
    ZentrailLog.SendWarningFmt("%s warning: %s is already registered for MsgType %d", existing.ClassName.c_str(),
                               className.c_str(), msgType);
    return;
  }
  ZentrailFormatters().Add(msgType, std::move(className), std::move(factory));
}

int32_t ContentForInspectorType(TZentrailInspectorType type, int32_t customType) {
  switch (type) {
    case itStockText: return ztmCustomText;
    case itStockProperties: return ztmCustomProperties;
    case itStockTable: return ztmCustomTable;
    case itStockHierarchy: return ztmCustomHierarchy;
    case itCustom: return customType;
  }
  return ztmCustomText;
}

}  // namespace zentrail
