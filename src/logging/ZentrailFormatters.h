#pragma once
// How the logger turns data into the payloads the viewer's inspectors read.
//
// - The text forms the payloads share: numbers with thousands separators, colour names, the
//   hexadecimal picture text, the hex dump of memory, delimited text.
// - The reflection interface of this client. C++ has no run-time list of an object's properties,
//   so an object that wants to be sent as an object, a collection item or a tree node says what it
//   publishes through IZentrailPublished. The property walk turns that into name=value lines.
// - Formatters: an application teaches the logger a data type of its own by registering a
//   formatter for a message type from 1000 on, or by implementing IZentrailCustomData.

#include <any>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>
#include <vector>

namespace zentrail {

// The readable class name of a C++ type.
std::string ZentrailDemangle(const char* mangledName);

enum TZentrailInspectorType { itStockText, itStockProperties, itStockTable, itStockHierarchy, itCustom };

struct TZentrailPoint {
  int32_t X = 0;
  int32_t Y = 0;
};
struct TZentrailSize {
  int32_t Width = 0;
  int32_t Height = 0;
};
struct TZentrailRect {
  int32_t Left = 0;
  int32_t Top = 0;
  int32_t Right = 0;
  int32_t Bottom = 0;
};

// ---- Shared text forms

// "%.*n": thousands separated by ",", "." before the decimals: 1234.5 with 2 gives "1,234.50".
std::string FormatFloatN(double value, int precision);
// "#,#0": 1234567 gives "1,234,567".
std::string FormatThousands(int64_t value);
std::string FormatThousands(uint64_t value);
// The date and time form used when no format is given.
inline constexpr const char* ztDefaultDateTimeFormat = "yyyy-mm-dd hh:nn:ss";

// A colour $00BBGGRR by its symbolic name ("clRed", "clBtnFace") or else "$00BBGGRR".
std::string ColorToString(int32_t color);
// Red, green and blue of a colour; a system colour ($FF in the high byte) resolves to the usual
// value of that element on a light desktop.
void ColorToRGB(int32_t color, int& red, int& green, int& blue);
// A cursor number by its symbolic name ("crHandPoint"), else the number.
std::string CursorToString(int32_t cursor);

// Bytes as upper-case hexadecimal pairs, no separators: the text of a picture payload.
std::string BytesToHex(std::span<const std::byte> bytes);
// Lines joined as a string list's text reads: CR LF after each line.
std::string JoinLines(const std::vector<std::string>& lines);
// Entries joined by the delimiter; an entry holding a blank, a control character, the delimiter
// or a double quote is wrapped in double quotes with inner ones doubled.
std::string DelimitedText(const std::vector<std::string>& entries, char delimiter);

// The hex dump of bytes that stand at streamOffset in their stream: rows of eight bytes aligned to
// multiples of eight, each "OFFSET: " + hex + " | " + characters, lines ended by CR LF.
std::string HexDump(std::span<const std::byte> bytes, uint64_t streamOffset = 0);
// The hex dump of a stream from its current position to the end; the position is restored.
std::string HexDump(std::istream& stream);

// ---- Reflection

class TZentrailProperties;

// Lets an object name itself in method messages: "Class.Method", or "Class( Name ).Method" when
// it has a name.
class IZentrailObjectInfo {
 public:
  virtual ~IZentrailObjectInfo() = default;
  virtual std::string ZentrailClassName() const = 0;
  virtual std::string ZentrailObjectName() const { return {}; }
};

// What an object publishes: its properties for object messages and collections, and its place in
// a tree for the control, component and parent messages.
class IZentrailPublished : public IZentrailObjectInfo {
 public:
  virtual void ZentrailProperties(TZentrailProperties& properties) const = 0;
  // Children in the visual tree (the controls of a window).
  virtual void ZentrailControls(std::vector<const IZentrailPublished*>& children) const { (void)children; }
  // Owned objects; the visual children unless an object says otherwise.
  virtual void ZentrailComponents(std::vector<const IZentrailPublished*>& children) const {
    ZentrailControls(children);
  }
  virtual const IZentrailPublished* ZentrailParent() const { return nullptr; }
  // What makes two objects the same one in a walk; a wrapper gives the object it wraps, so that a
  // graph seen through fresh wrappers is still known to come back on itself.
  virtual const void* ZentrailIdentity() const { return this; }
};

struct TZentrailFont {
  std::string Name = "Segoe UI";
  int Size = 9;
  int32_t Color = 0;
  bool Bold = false;
  bool Italic = false;
  bool Underline = false;
  bool StrikeOut = false;
};

// A value that carries its own type, as a variant does. Arrays hold their elements; an element
// that is itself an array makes a multi-dimensional array, which the sender refuses.
struct TZentrailVariant {
  enum TKind { vkUnassigned, vkNull, vkBoolean, vkInteger, vkFloat, vkString, vkDateTime, vkArray, vkError };
  TKind Kind = vkUnassigned;
  bool Boolean = false;
  int64_t Integer = 0;
  double Float = 0;  // also the date-time as days since 30 December 1899
  std::string String;
  std::vector<TZentrailVariant> Elements;

  TZentrailVariant() = default;
  static TZentrailVariant Null() { return Make(vkNull); }
  TZentrailVariant(bool v) : Kind(vkBoolean), Boolean(v) {}
  TZentrailVariant(int v) : Kind(vkInteger), Integer(v) {}
  TZentrailVariant(int64_t v) : Kind(vkInteger), Integer(v) {}
  TZentrailVariant(double v) : Kind(vkFloat), Float(v) {}
  TZentrailVariant(std::string v) : Kind(vkString), String(std::move(v)) {}
  TZentrailVariant(const char* v) : Kind(vkString), String(v ? v : "") {}
  TZentrailVariant(std::vector<TZentrailVariant> elements) : Kind(vkArray), Elements(std::move(elements)) {}
  static TZentrailVariant Make(TKind kind) {
    TZentrailVariant v;
    v.Kind = kind;
    return v;
  }
  // The text form of a scalar ("True", "12", "1.5", the string, the date and time); empty for the
  // kinds without one.
  std::string Text() const;
};

// The properties an object publishes, collected by kind so that the walk can print each as its
// kind demands. Names are the property names; the walk sorts them.
class TZentrailProperties {
 public:
  enum TKind { pkString, pkInteger, pkInt64, pkEnum, pkFloat, pkObject, pkSet, pkChar, pkVariant, pkOther };
  struct TProperty {
    TKind Kind = pkOther;
    std::string Name;
    std::string Value;                         // the value's text
    std::string SetTypeName;                   // sets: the set type's name
    std::vector<std::pair<std::string, bool>> Elements;  // sets: every element of the base type
    const IZentrailPublished* Object = nullptr;  // objects: walked after their line
    std::shared_ptr<const IZentrailPublished> Owned;  // objects made for the walk (a font)
  };

  void AddString(std::string_view name, std::string_view value);
  void AddInteger(std::string_view name, int32_t value);
  void AddInt64(std::string_view name, int64_t value);
  void AddBoolean(std::string_view name, bool value);  // an enumeration of False and True
  void AddEnum(std::string_view name, std::string_view elementName);
  void AddFloat(std::string_view name, double value);
  // Days since 30 December 1899 plus the fraction of the day, as date and time, date or time.
  void AddDateTime(std::string_view name, double value);
  void AddDate(std::string_view name, double value);
  void AddTime(std::string_view name, double value);
  void AddColor(std::string_view name, int32_t color);
  void AddCursor(std::string_view name, int32_t cursor);
  void AddChar(std::string_view name, char32_t value);
  // `elements` lists every element of the set's base type with whether it is in the set.
  void AddSet(std::string_view name, std::string_view setTypeName, std::vector<std::pair<std::string, bool>> elements);
  // A sub-object, walked after its line with this property's name as prefix; null reads "nil".
  void AddObject(std::string_view name, const IZentrailPublished* object);
  // The same for an object made only to be walked; the list keeps it alive.
  void AddObject(std::string_view name, std::shared_ptr<const IZentrailPublished> object);
  void AddFont(std::string_view name, const TZentrailFont& font);
  void AddVariant(std::string_view name, const TZentrailVariant& value);
  // A property of a kind the walk cannot show.
  void AddOther(std::string_view name);

  const std::vector<TProperty>& Items() const { return FItems; }
  // The property of that name (case ignored), or null.
  const TProperty* Find(std::string_view name) const;

 private:
  TProperty& Add(TKind kind, std::string_view name);
  std::vector<TProperty> FItems;
};

// The published properties of an object as name=value lines, sorted by name, sub-objects walked
// under their dotted names. An object met again on the way down is not walked a second time, which
// is what keeps a recursive graph finite; `recursion` then names the first such path.
std::vector<std::string> PropertyLines(const IZentrailPublished& object, std::string* recursion = nullptr);
// A font's value text: "Name, Size, Bold" or "Name, Size, Normal".
std::string FontText(const TZentrailFont& font);

// ---- Formatters

// Turns an application's data into lines for a stock inspector (or a plug-in one, with itCustom).
class TZentrailFormatter {
 public:
  TZentrailFormatter() = default;
  virtual ~TZentrailFormatter() = default;
  TZentrailFormatter(const TZentrailFormatter&) = delete;
  TZentrailFormatter& operator=(const TZentrailFormatter&) = delete;

  virtual const std::vector<std::string>& FormattedData() const { return FStringList; }
  // Fills the lines from the data; `data` holds what the application passed to SendCustomData.
  virtual void FormatData(const std::any& data) { (void)data; }
  virtual TZentrailInspectorType InspectorType() const { return itStockText; }
  virtual std::string TypeName() const { return FTypeName; }

  void AddLine(std::string_view text) { FStringList.emplace_back(text); }
  void AddNameValuePair(std::string_view name, std::string_view value);
  void AddNameValuePair(std::string_view name, const char* value) { AddNameValuePair(name, std::string_view(value ? value : "")); }
  void AddNameValuePair(std::string_view name, const std::string& value) { AddNameValuePair(name, std::string_view(value)); }
  virtual void AddNameValuePair(std::string_view name, bool value);
  virtual void AddNameValuePair(std::string_view name, char value);
  // A date and time as days since 30 December 1899, in the default text form.
  virtual void AddNameValuePairDateTime(std::string_view name, double value);
  virtual void AddNameValuePair(std::string_view name, uint32_t value, bool asHex);
  virtual void AddNameValuePair(std::string_view name, double value, int precision);
  virtual void AddNameValuePair(std::string_view name, int32_t value);
  virtual void AddNameValuePair(std::string_view name, int64_t value);
  virtual void AddNameValuePair(std::string_view name, TZentrailPoint value);
  virtual void AddNameValuePair(std::string_view name, TZentrailSize value);
  virtual void AddNameValuePair(std::string_view name, TZentrailRect value);

 protected:
  std::vector<std::string> FStringList;
  std::string FTypeName;
};

// An object that formats itself for SendCustomData.
class IZentrailCustomData {
 public:
  virtual ~IZentrailCustomData() = default;
  virtual void FormatData(std::vector<std::string>& lines) const = 0;
  virtual TZentrailInspectorType InspectorType() const = 0;
  virtual int32_t MsgType() const = 0;
  virtual std::string TypeName() const = 0;
};

using TZentrailFormatterFactory = std::function<std::unique_ptr<TZentrailFormatter>()>;

struct TZentrailFormatterItem {
  int32_t MsgType = 0;
  std::string ClassName;
  TZentrailFormatterFactory FormatterClass;
};

// The registered formatters, looked up by message type. Safe to use from several threads.
class TZentrailFormatterList {
 public:
  void Add(int32_t msgType, std::string className, TZentrailFormatterFactory factory);
  void Delete(std::size_t index);
  void Clear();
  std::size_t Count() const;
  // The first item for msgType, or an empty item (no factory) when there is none.
  TZentrailFormatterItem FindFormatterClass(int32_t msgType) const;
  std::vector<TZentrailFormatterItem> Items() const;

 private:
  mutable std::mutex FLock;
  std::vector<TZentrailFormatterItem> FItems;
};

TZentrailFormatterList& ZentrailFormatters();

// Registers a formatter for msgType. A type below 100 is reported through ZentrailLog and
// registered all the same; a type that already has one keeps the first, with a warning.
void RegisterCustomFormatter(int32_t msgType, std::string className, TZentrailFormatterFactory factory);
template <class TFormatter>
void RegisterCustomFormatter(int32_t msgType) {
  RegisterCustomFormatter(msgType, ZentrailDemangle(typeid(TFormatter).name()),
                          [] { return std::unique_ptr<TZentrailFormatter>(new TFormatter()); });
}

// The content code a formatter's inspector type asks for (itCustom: the custom type itself).
int32_t ContentForInspectorType(TZentrailInspectorType type, int32_t customType);

}  // namespace zentrail
