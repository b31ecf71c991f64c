#pragma once
// What instrumented code calls. Every sender checks the two switches first and returns before any
// formatting when logging is off; everything else ends in InternalSend.

#include <any>
#include <atomic>
#include <chrono>
#include <concepts>
#include <cstdarg>
#include <filesystem>
#include <istream>
#include <span>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "ZentrailConnection.h"
#include "ZentrailDestination.h"
#include "ZentrailFormatters.h"
#include "ZentrailManager.h"
#include "ZentrailMessage.h"
#include "ZentrailProfiling.h"
#include "ZentrailSendTypes.h"

namespace zentrail {

class TZentrailLogger;
class TZTEventLog;

// Receives the system-log entries of a logger instead of syslog: source name, syslog priority, text.
using TZentrailEventLogSink = std::function<void(const std::string& source, int priority, const std::string& text)>;

// What an OnSendMsg handler sees of a message before it is sent.
struct TZentrailMsgData {
  int32_t MsgType = 0;
  int32_t MsgContent = 0;
  std::string MsgText;
  std::vector<std::string> Details;  // the lines of the details
  uint32_t ProcessID = 0;
  std::string ThreadName;
  std::string ComputerName;
  std::string AppName;
  std::string TypeName;
  std::string Category;
  int32_t CategoryColor = 0;
  int32_t CategoryFontColor = 0;
  TZentrailTimeStamp TimeStamp;
};

// Leaving handled true takes the message: nothing is sent.
using TZentrailSendMsgEvent = std::function<void(TZentrailLogger& sender, TZentrailMsgData& data, bool& handled)>;

// The largest message text, details and type name together that a logger sends; what a frame
// can carry, less room for the identity fields.
inline constexpr std::size_t ztMaxMessageBytes = 64u * 1024 * 1024 - 64u * 1024;

class TZentrailLogger {
 public:
  TZentrailLogger();
  virtual ~TZentrailLogger();
  TZentrailLogger(const TZentrailLogger&) = delete;
  TZentrailLogger& operator=(const TZentrailLogger&) = delete;

  // ---- Properties
  bool Enabled() const { return FEnabled.load(std::memory_order_relaxed); }
  void SetEnabled(bool value) { FEnabled.store(value, std::memory_order_relaxed); }
  // True when this logger and the manager are both on: the test every sender makes first.
  bool IsOn() const { return Enabled() && ZentrailManager.Enabled(); }

  const std::string& Category() const { return FCategory; }
  void SetCategory(std::string value) { FCategory = std::move(value); }
  int32_t CategoryColor() const { return FCategoryColor; }
  void SetCategoryColor(int32_t value) { FCategoryColor = value; }
  int32_t CategoryFontColor() const { return FCategoryFontColor; }
  void SetCategoryFontColor(int32_t value) { FCategoryFontColor = value; }
  const std::string& DateTimeFormat() const { return FDateTimeFormat; }
  void SetDateTimeFormat(std::string value) { FDateTimeFormat = std::move(value); }

  // A destination of this logger's own (not owned; the link is cleared when it is destroyed), or
  // null for the manager's default destination.
  TZentrailDestination* Destination() const { return FDestination; }
  void SetDestination(TZentrailDestination* destination);
  // The destination that messages of this logger go to now.
  TZentrailDestination& EffectiveDestination();

  const TZentrailSendMsgEvent& OnSendMsg() const { return FOnSendMsg; }
  void SetOnSendMsg(TZentrailSendMsgEvent handler) { FOnSendMsg = std::move(handler); }

  const std::string& DispatchID() const { return FDispatchID; }

  // ---- Connections
  void ConnectUsingCopyData(TZentrailMessageFormat format = mfDefault);
  void ConnectUsingTcp(const std::string& host, uint16_t port, TZentrailMessageFormat format = mfDefault);
  void ConnectUsingTcp(const std::string& host, TZentrailMessageFormat format = mfDefault);
  void ConnectUsingTcp(TZentrailMessageFormat format = mfDefault);
  void SetConnection(std::shared_ptr<TZentrailConnection> connection) { FConnection = std::move(connection); }
  void UseZentrailManagerConnection() { FConnection.reset(); }
  std::shared_ptr<TZentrailConnection> Connection() const;
  void CloseDispatcher();
  // True when a dispatcher program is found where the client would start it from.
  static bool Installed();

  // ---- The one send path
  // Builds, stamps and sends a message; the dispatcher's answer, or 0. A result of 0 from the
  // transport switches this logger off.
  virtual int InternalSend(int32_t msgType, int32_t msgContent, std::string_view typeName,
                           std::string_view details, std::string_view text);
  int SendMsgRaw(int32_t msgType, std::string_view text, std::string_view typeName = {}) {
    return IsOn() ? InternalSend(msgType, ztmText, typeName, {}, text) : 0;
  }

  // ---- Text senders
  int Send(std::string_view text) { return IsOn() ? InternalSend(ztmInfo, ztmText, {}, {}, text) : 0; }
  int Send(int32_t msgType, std::string_view text) {
    return IsOn() ? InternalSend(msgType, ztmText, {}, {}, text) : 0;
  }
  int SendMsg(std::string_view text) { return Send(text); }
  int SendMsg(int32_t msgType, std::string_view text) { return Send(msgType, text); }
  // printf-style formatting, done only when the logger is on.
  int SendFmtMsg(const char* format, ...) __attribute__((format(printf, 2, 3)));
  int SendFmtMsg(int32_t msgType, const char* format, ...) __attribute__((format(printf, 3, 4)));
  int SendNote(std::string_view text) { return Send(ztmNote, text); }
  int SendWarning(std::string_view text) { return Send(ztmWarning, text); }
  int SendError(std::string_view text) { return Send(ztmError, text); }
  int SendReminder(std::string_view text) { return Send(ztmReminder, text); }
  int SendNoteFmt(const char* format, ...) __attribute__((format(printf, 2, 3)));
  int SendWarningFmt(const char* format, ...) __attribute__((format(printf, 2, 3)));
  int SendErrorFmt(const char* format, ...) __attribute__((format(printf, 2, 3)));
  int SendReminderFmt(const char* format, ...) __attribute__((format(printf, 2, 3)));

  // A scratch-pad line: the viewer shows value in the line named lineId, replacing what was there.
  int Write(std::string_view lineId, std::string_view value) {
    return IsOn() ? WriteLine(lineId, value) : 0;
  }
  int Write(std::string_view lineId, std::string_view name, std::string_view value) {
    return IsOn() ? WriteLine(lineId, std::string(name) + " = " + std::string(value)) : 0;
  }

  // ---- Structure
  virtual int EnterMethod(std::string_view name);
  virtual int EnterMethod(const IZentrailObjectInfo* obj, std::string_view name);
  virtual int ExitMethod(std::string_view name);
  virtual int ExitMethod(const IZentrailObjectInfo* obj, std::string_view name);
  virtual int ExitMethod(std::string_view name, std::string_view value);
  virtual int ExitMethodCollapse(std::string_view name);
  virtual int ExitMethodCollapse(const IZentrailObjectInfo* obj, std::string_view name);
  virtual int ExitMethodCollapse(std::string_view name, std::string_view value);
  // Any other object: named by its dynamic C++ class.
  template <class T>
    requires(std::is_class_v<T> && !std::is_base_of_v<IZentrailObjectInfo, T>)
  int EnterMethod(const T* obj, std::string_view name) {
    return IsOn() ? MethodOfObject(ztmEnterMethod, obj ? ZentrailDemangle(typeid(*obj).name()) : std::string(),
                                   obj != nullptr, {}, name)
                  : 0;
  }
  template <class T>
    requires(std::is_class_v<T> && !std::is_base_of_v<IZentrailObjectInfo, T>)
  int ExitMethod(const T* obj, std::string_view name) {
    return IsOn() ? MethodOfObject(ztmExitMethod, obj ? ZentrailDemangle(typeid(*obj).name()) : std::string(),
                                   obj != nullptr, {}, name)
                  : 0;
  }
  // Exit with a value of any arithmetic type.
  template <class T>
    requires std::is_arithmetic_v<T>
  int ExitMethod(std::string_view name, T value) {
    return IsOn() ? ExitMethod(name, std::string_view(ValueText(value))) : 0;
  }

  int Clear() { return SendMsgRaw(ztmClear, {}); }
  int AddSeparator() { return SendMsgRaw(ztmSeparator, {}); }
  int AddResetSeparator() { return SendMsgRaw(ztmResetSeparator, {}); }
  int AddCheckPoint();
  void ResetCheckPoint() { FCheckPointCounter = 0; }

  int Assert(bool condition, std::string_view text) {
    return (IsOn() && !condition) ? SendError(text) : 0;
  }

  // The exception's what(), at most 1024 characters, behind the text and ": " when one is given;
  // type 37 with the exception's class as TypeName.
  int SendException(const std::exception& e) { return IsOn() ? ExceptionMessage({}, e) : 0; }
  int SendException(std::string_view text, const std::exception& e) {
    return IsOn() ? ExceptionMessage(text, e) : 0;
  }

  // ---- The send family. Every member exists without a message type (ztmInfo) and with a leading
  // one; every member returns at once, formatting nothing, when the logger is off. Wrong or missing
  // arguments send an error message in place of the data; nothing here throws at the caller except
  // an invalid destination.

  // Details of any content: the lines joined with CR LF. Nothing is sent when the logger is off.
  int SendMsgDetails(int32_t msgType, int32_t msgContent, std::string_view typeName,
                     const std::vector<std::string>& lines, std::string_view text);
  int SendMsgDetails(int32_t msgContent, std::string_view typeName, const std::vector<std::string>& lines,
                     std::string_view text) {
    return SendMsgDetails(ztmInfo, msgContent, typeName, lines, text);
  }

  // name = value
  int Send(int32_t msgType, std::string_view name, std::string_view value) {
    return IsOn() ? NameValue(msgType, name, value) : 0;
  }
  int Send(std::string_view name, std::string_view value) { return Send(ztmInfo, name, value); }
  int Send(int32_t msgType, std::string_view name, const char* value) {
    return Send(msgType, name, std::string_view(value ? value : ""));
  }
  int Send(std::string_view name, const char* value) { return Send(ztmInfo, name, value); }
  int Send(int32_t msgType, std::string_view name, std::wstring_view value);
  int Send(std::string_view name, std::wstring_view value) { return Send(ztmInfo, name, value); }
  template <std::integral T>
    requires(!std::same_as<T, bool> && !std::same_as<T, char>)
  int Send(int32_t msgType, std::string_view name, T value) {
    return IsOn() ? NameValue(msgType, name, std::to_string(value)) : 0;
  }
  template <std::integral T>
    requires(!std::same_as<T, bool> && !std::same_as<T, char>)
  int Send(std::string_view name, T value) {
    return Send(ztmInfo, name, value);
  }
  // "name = $1f" when asHex, else decimal.
  int Send(int32_t msgType, std::string_view name, uint32_t value, bool asHex);
  int Send(std::string_view name, uint32_t value, bool asHex) { return Send(ztmInfo, name, value, asHex); }
  // "%.*n": thousands separated, `precision` decimals.
  template <std::floating_point T>
  int Send(int32_t msgType, std::string_view name, T value, int precision = 2) {
    return IsOn() ? NameValue(msgType, name, FormatFloatN(static_cast<double>(value), precision)) : 0;
  }
  template <std::floating_point T>
  int Send(std::string_view name, T value, int precision = 2) {
    return Send(ztmInfo, name, value, precision);
  }
  // "name = True" or "name = False".
  template <std::same_as<bool> T>
  int Send(int32_t msgType, std::string_view name, T value) {
    return IsOn() ? SendText(msgType, std::string(name) + (value ? " = True" : " = False")) : 0;
  }
  template <std::same_as<bool> T>
  int Send(std::string_view name, T value) {
    return Send(ztmInfo, name, value);
  }
  int Send(int32_t msgType, std::string_view name, TZentrailPoint value);
  int Send(std::string_view name, TZentrailPoint value) { return Send(ztmInfo, name, value); }
  int Send(int32_t msgType, std::string_view name, TZentrailSize value);
  int Send(std::string_view name, TZentrailSize value) { return Send(ztmInfo, name, value); }
  int Send(int32_t msgType, std::string_view name, TZentrailRect value);
  int Send(std::string_view name, TZentrailRect value) { return Send(ztmInfo, name, value); }

  int SendAssigned(int32_t msgType, std::string_view name, const void* pointer);
  int SendAssigned(std::string_view name, const void* pointer) { return SendAssigned(ztmInfo, name, pointer); }
  int SendPointer(int32_t msgType, std::string_view name, const void* pointer);
  int SendPointer(std::string_view name, const void* pointer) { return SendPointer(ztmInfo, name, pointer); }
  // A colour $00BBGGRR; a system colour is shown by its name and its usual channels.
  int SendColor(int32_t msgType, std::string_view name, int32_t color);
  int SendColor(std::string_view name, int32_t color) { return SendColor(ztmInfo, name, color); }
  // A colour $AARRGGBB.
  int SendColorARGB(int32_t msgType, std::string_view name, uint32_t argb);
  int SendColorARGB(std::string_view name, uint32_t argb) { return SendColorARGB(ztmInfo, name, argb); }
  int SendCurrency(int32_t msgType, std::string_view name, double value);
  int SendCurrency(std::string_view name, double value) { return SendCurrency(ztmInfo, name, value); }
  // Local date and time in `format` (yyyy mm dd hh nn ss zzz letters); without one, the logger's
  // DateTimeFormat, and without that "yyyy-mm-dd hh:nn:ss".
  int SendDateTime(int32_t msgType, std::string_view name, std::chrono::system_clock::time_point value,
                   std::string_view format = {});
  int SendDateTime(std::string_view name, std::chrono::system_clock::time_point value, std::string_view format = {}) {
    return SendDateTime(ztmInfo, name, value, format);
  }

  // Lines, shown as a list.
  int Send(int32_t msgType, std::string_view name, const std::vector<std::string>& lines);
  int Send(std::string_view name, const std::vector<std::string>& lines) { return Send(ztmInfo, name, lines); }
  // One entry per item: index, display name and the item's properties.
  int Send(int32_t msgType, std::string_view name, const IZentrailCollection& collection);
  int Send(std::string_view name, const IZentrailCollection& collection) { return Send(ztmInfo, name, collection); }
  // Pixels, sent as a PNG picture.
  int Send(int32_t msgType, std::string_view name, const TZentrailImage& image);
  int Send(std::string_view name, const TZentrailImage& image) { return Send(ztmInfo, name, image); }
  // A PNG file's bytes as they are.
  int SendPngImage(int32_t msgType, std::string_view name, std::span<const std::byte> png);
  int SendPngImage(std::string_view name, std::span<const std::byte> png) { return SendPngImage(ztmInfo, name, png); }

  // One line an element; floats with `precision` decimals.
  template <class T>
    requires(DynArrayTypeName<T>() != nullptr)
  int SendDynArray(int32_t msgType, std::string_view name, const std::vector<T>& values, int precision = 2) {
    if (!IsOn()) return 0;
    std::vector<std::string> lines;
    lines.reserve(values.size());
    for (const T& v : values) {
      if constexpr (std::is_same_v<T, bool>) lines.emplace_back(v ? "True" : "False");
      else if constexpr (std::is_floating_point_v<T>) lines.push_back(FormatFloatN(v, precision));
      else if constexpr (std::is_same_v<T, std::string>) lines.push_back(v);
      else lines.push_back(std::to_string(v));
    }
    return SendMsgDetails(msgType, ztmStringList, DynArrayTypeName<T>(), lines, name);
  }
  template <class T>
    requires(DynArrayTypeName<T>() != nullptr)
  int SendDynArray(std::string_view name, const std::vector<T>& values, int precision = 2) {
    return SendDynArray(ztmInfo, name, values, precision);
  }

  // An enumeration value by its name in `names`; a value outside the table shows its number.
  int SendEnum(int32_t msgType, std::string_view name, int value, std::span<const std::string_view> names);
  int SendEnum(std::string_view name, int value, std::span<const std::string_view> names) {
    return SendEnum(ztmInfo, name, value, names);
  }
  // A set as bits: bit i stands for names[i]. "name: [a, c]", "name: [ ]" when empty.
  int SendSet(int32_t msgType, std::string_view name, uint64_t bits, std::span<const std::string_view> names);
  int SendSet(std::string_view name, uint64_t bits, std::span<const std::string_view> names) {
    return SendSet(ztmInfo, name, bits, names);
  }

  // An object's published properties, for the object inspector.
  int Send(int32_t msgType, std::string_view name, const IZentrailPublished* object);
  int Send(std::string_view name, const IZentrailPublished* object) { return Send(ztmInfo, name, object); }
  // An object that publishes nothing: said so in an error message.
  template <class T>
    requires(std::is_class_v<T> && !std::is_base_of_v<IZentrailPublished, T>)
  int Send(int32_t msgType, std::string_view name, const T* object) {
    (void)msgType;
    return IsOn() ? ObjectWithoutProperties(name, object != nullptr) : 0;
  }
  template <class T>
    requires(std::is_class_v<T> && !std::is_base_of_v<IZentrailPublished, T>)
  int Send(std::string_view name, const T* object) {
    return Send(ztmInfo, name, object);
  }
  // The object in the text form of a form file: "object Name: TClass", its properties, its owned
  // objects, "end".
  int SendComponentAsText(int32_t msgType, std::string_view name, const IZentrailPublished* component);
  int SendComponentAsText(std::string_view name, const IZentrailPublished* component) {
    return SendComponentAsText(ztmInfo, name, component);
  }
  // "name: value" of one property.
  int SendProperty(int32_t msgType, std::string_view name, const IZentrailPublished* object,
                   std::string_view propertyName);
  int SendProperty(std::string_view name, const IZentrailPublished* object, std::string_view propertyName) {
    return SendProperty(ztmInfo, name, object, propertyName);
  }
  // Trees of an object's controls, its owned objects, and the chain of its parents.
  int SendControls(int32_t msgType, std::string_view name, const IZentrailPublished* object);
  int SendControls(std::string_view name, const IZentrailPublished* object) { return SendControls(ztmInfo, name, object); }
  int SendComponents(int32_t msgType, std::string_view name, const IZentrailPublished* object);
  int SendComponents(std::string_view name, const IZentrailPublished* object) {
    return SendComponents(ztmInfo, name, object);
  }
  int SendParents(int32_t msgType, std::string_view name, const IZentrailPublished* object);
  int SendParents(std::string_view name, const IZentrailPublished* object) { return SendParents(ztmInfo, name, object); }

  // "name = VK_RETURN ($0D, [ssShift])".
  int SendKey(int32_t msgType, std::string_view name, uint16_t key, TZentrailShiftState shift);
  int SendKey(std::string_view name, uint16_t key, TZentrailShiftState shift) { return SendKey(ztmInfo, name, key, shift); }
  int SendMouseButton(int32_t msgType, std::string_view name, TZentrailMouseButton button, TZentrailShiftState shift);
  int SendMouseButton(std::string_view name, TZentrailMouseButton button, TZentrailShiftState shift) {
    return SendMouseButton(ztmInfo, name, button, shift);
  }
  // An error: "text: " and the system's message for errno value `code`.
  int SendWinError(std::string_view text, int code);
  int SendOSError(std::string_view text, int code) { return SendWinError(text, code); }

  // The heap of the C library as a table.
  int SendHeapStatus(int32_t msgType = ztmInfo) { return SendMemoryManagerStatus(msgType); }
  int SendMemoryManagerStatus(int32_t msgType = ztmInfo);
  // Physical memory, commit limit and the address space of the process.
  int SendMemoryStatus(int32_t msgType = ztmInfo);
  // A key of the registry file with its values and the keys below it.
  int SendRegistry(int32_t msgType, std::string_view keyPath);
  int SendRegistry(std::string_view keyPath) { return SendRegistry(ztmInfo, keyPath); }
  // Kernel, distribution, computer and user; the screens when the caller knows them.
  int SendSystemInfo(int32_t msgType = ztmInfo, const TZentrailScreenInfo* screens = nullptr);
  // What an ELF file tells of itself: its build id, its library name and version, and the Debian
  // package it belongs to.
  int SendFileVersionInfo(int32_t msgType, const std::filesystem::path& file);
  int SendFileVersionInfo(const std::filesystem::path& file) { return SendFileVersionInfo(ztmInfo, file); }
  int SendVersionInfo(int32_t msgType = ztmInfo);
  int SendWindowHandle(int32_t msgType, std::string_view name, const TZentrailWindowInfo* window);
  int SendWindowHandle(std::string_view name, const TZentrailWindowInfo* window) {
    return SendWindowHandle(ztmInfo, name, window);
  }
  // The current call stack.
  int SendStackTrace(int32_t msgType, std::string_view name);
  int SendStackTrace(std::string_view name) { return SendStackTrace(ztmInfo, name); }

  int SendVariant(int32_t msgType, std::string_view name, const TZentrailVariant& value);
  int SendVariant(std::string_view name, const TZentrailVariant& value) { return SendVariant(ztmInfo, name, value); }

  int SendTextFile(int32_t msgType, std::string_view name, const std::filesystem::path& file);
  int SendTextFile(std::string_view name, const std::filesystem::path& file) { return SendTextFile(ztmInfo, name, file); }
  // Streams from their current position, which is restored afterwards.
  int SendStreamAsText(int32_t msgType, std::string_view name, std::istream& stream);
  int SendStreamAsText(std::string_view name, std::istream& stream) { return SendStreamAsText(ztmInfo, name, stream); }
  int SendStreamAsHex(int32_t msgType, std::string_view name, std::istream& stream);
  int SendStreamAsHex(std::string_view name, std::istream& stream) { return SendStreamAsHex(ztmInfo, name, stream); }
  int SendMemoryAsHex(int32_t msgType, std::string_view name, std::span<const std::byte> memory);
  int SendMemoryAsHex(std::string_view name, std::span<const std::byte> memory) {
    return SendMemoryAsHex(ztmInfo, name, memory);
  }
  int SendFileAsHex(int32_t msgType, std::string_view name, const std::filesystem::path& file);
  int SendFileAsHex(std::string_view name, const std::filesystem::path& file) { return SendFileAsHex(ztmInfo, name, file); }
  int SendXmlData(int32_t msgType, std::string_view name, std::string_view xml);
  int SendXmlData(std::string_view name, std::string_view xml) { return SendXmlData(ztmInfo, name, xml); }
  int SendXmlData(std::string_view xml) { return SendXmlData(ztmInfo, "Xml Data", xml); }
  int SendXmlFile(int32_t msgType, std::string_view name, const std::filesystem::path& file);
  int SendXmlFile(std::string_view name, const std::filesystem::path& file) { return SendXmlFile(ztmInfo, name, file); }
  int SendXmlFile(const std::filesystem::path& file) { return SendXmlFile(ztmInfo, "Xml Data", file); }

  // Data of the application's own types: through the formatter registered for customType, or
  // through the object itself. A formatter that throws is reported in an error message.
  int SendCustomData(int32_t msgType, std::string_view name, int32_t customType, const std::any& data);
  int SendCustomData(std::string_view name, int32_t customType, const std::any& data) {
    return SendCustomData(ztmInfo, name, customType, data);
  }
  int SendCustomData(int32_t msgType, std::string_view name, const IZentrailCustomData* data);
  int SendCustomData(std::string_view name, const IZentrailCustomData* data) {
    return SendCustomData(ztmInfo, name, data);
  }

  // The same as Send with the same arguments, when the condition holds.
  template <class... A>
  int SendIf(bool condition, A&&... args) {
    return (condition && IsOn()) ? Send(std::forward<A>(args)...) : 0;
  }
  template <class... A>
  int SendDateTimeIf(bool condition, A&&... args) {
    return (condition && IsOn()) ? SendDateTime(std::forward<A>(args)...) : 0;
  }

  // Scratch-pad lines of values: "lineId@value".
  int WriteColor(std::string_view lineId, int32_t color);
  int WriteCurrency(std::string_view lineId, double value);
  int WriteDateTime(std::string_view lineId, std::chrono::system_clock::time_point value, std::string_view format = {});

  // ---- Tracers and timers: see ZentrailProfiling.h.
  IZentrailMethodTracer TraceMethod(std::string_view methodName, TZentrailTraceMethodOption option = tmoTraceOnly,
                                    TZentrailTimingFormat timingFormat = tfMilliseconds) {
    return IsOn() ? StartTrace({}, {}, methodName, option, timingFormat, false) : IZentrailMethodTracer();
  }
  IZentrailMethodTracer TraceMethod(const IZentrailObjectInfo* obj, std::string_view methodName,
                                    TZentrailTraceMethodOption option = tmoTraceOnly,
                                    TZentrailTimingFormat timingFormat = tfMilliseconds) {
    return IsOn() ? StartTraceOf(obj, methodName, option, timingFormat, false) : IZentrailMethodTracer();
  }
  IZentrailMethodTracer TraceMethodCollapse(std::string_view methodName,
                                            TZentrailTraceMethodOption option = tmoTraceOnly,
                                            TZentrailTimingFormat timingFormat = tfMilliseconds) {
    return IsOn() ? StartTrace({}, {}, methodName, option, timingFormat, true) : IZentrailMethodTracer();
  }
  IZentrailMethodTracer TraceMethodCollapse(const IZentrailObjectInfo* obj, std::string_view methodName,
                                            TZentrailTraceMethodOption option = tmoTraceOnly,
                                            TZentrailTimingFormat timingFormat = tfMilliseconds) {
    return IsOn() ? StartTraceOf(obj, methodName, option, timingFormat, true) : IZentrailMethodTracer();
  }
  IZentrailTimer Timer(std::string_view description, bool autoStart = true, bool autoStop = true,
                       TZentrailTimingFormat timingFormat = tfMilliseconds) {
    return IsOn() ? StartTimer(description, autoStart, autoStop, timingFormat) : IZentrailTimer();
  }

  // ---- Notifiers and the system log
  void AddNotifier(IZentrailLoggerNotifier* notifier);
  void RemoveNotifier(IZentrailLoggerNotifier* notifier);
  // Write to the system log (syslog) under the application name, plus ":" and the category.
  void LogEvent(std::string_view text, int category = 0, int eventId = 0) { WriteEvent(text, 0, category, eventId); }
  void LogWarning(std::string_view text, int category = 0, int eventId = 0) { WriteEvent(text, 1, category, eventId); }
  void LogError(std::string_view text, int category = 0, int eventId = 0) { WriteEvent(text, 2, category, eventId); }
  // Sends the entries elsewhere (for example into a test); an empty sink means syslog again.
  void SetEventLogSink(TZentrailEventLogSink sink);

 protected:
  int SendText(int32_t msgType, std::string_view text) { return InternalSend(msgType, ztmText, {}, {}, text); }
  int NameValue(int32_t msgType, std::string_view name, std::string_view value);
  int ObjectWithoutProperties(std::string_view name, bool assigned);
  int TreeOf(int32_t msgType, std::string_view name, const IZentrailPublished* object, int which);
  IZentrailMethodTracer StartTrace(std::string_view className, std::string_view objectName,
                                   std::string_view methodName, TZentrailTraceMethodOption option,
                                   TZentrailTimingFormat timingFormat, bool collapse);
  IZentrailMethodTracer StartTraceOf(const IZentrailObjectInfo* obj, std::string_view methodName,
                                     TZentrailTraceMethodOption option, TZentrailTimingFormat timingFormat,
                                     bool collapse);
  IZentrailTimer StartTimer(std::string_view description, bool autoStart, bool autoStop,
                            TZentrailTimingFormat timingFormat);
  int MethodOfObject(int32_t msgType, const std::string& className, bool hasObject, std::string_view objectName,
                     std::string_view name);
  int WriteLine(std::string_view lineId, std::string_view value);
  int ExceptionMessage(std::string_view text, const std::exception& e);
  int SendFormattedV(int32_t msgType, const char* format, va_list args);
  void WriteEvent(std::string_view text, int kind, int category, int eventId);
  static std::string ValueText(bool value) { return value ? "True" : "False"; }
  template <class T>
  static std::string ValueText(T value) {
    return std::to_string(value);
  }

 private:
  friend class TZentrailDestination;
  void DestinationDestroyed(TZentrailDestination* destination);

  std::string FDispatchID;
  int32_t FDispatchIDDate = 0;
  std::atomic<bool> FEnabled;
  std::string FDateTimeFormat;
  std::string FCategory;
  int32_t FCategoryColor = 0x00FFFFFF;
  int32_t FCategoryFontColor = 0;
  int32_t FCheckPointCounter = 0;
  TZentrailSendMsgEvent FOnSendMsg;
  std::shared_ptr<TZentrailConnection> FConnection;
  TZentrailDestination* FDestination = nullptr;
  std::vector<IZentrailLoggerNotifier*> FNotifiers;
  std::unique_ptr<TZTEventLog> FEventLog;  // made at first use
  TZentrailEventLogSink FEventLogSink;
};

// The global logger.
extern TZentrailLogger& ZentrailLog;

// An assertion that reports through ZentrailLog as the manager's LogAsserts says: laZentrail sends
// an error and goes on, laNormal aborts as assert() does, laBoth does both.
void ZentrailAssertFailed(const char* expression, const char* file, int line, const void* address);
#define ZENTRAIL_ASSERT(cond) \
  ((cond) ? (void)0 : ::zentrail::ZentrailAssertFailed(#cond, __FILE__, __LINE__, __builtin_return_address(0)))

}  // namespace zentrail
