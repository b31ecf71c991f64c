#pragma once
// What instrumented code calls. Every sender checks the two switches first and returns before any
// formatting when logging is off; everything else ends in InternalSend.

#include <atomic>
#include <cstdarg>
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
#include "ZentrailManager.h"
#include "ZentrailMessage.h"

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

// Told before a logger goes away.
class IZentrailLoggerNotifier {
 public:
  virtual ~IZentrailLoggerNotifier() = default;
  virtual void FreeNotify(TZentrailLogger& logger) = 0;
};

// Lets an object name itself in method messages: "Class.Method", or "Class( Name ).Method" when
// it has a name.
class IZentrailObjectInfo {
 public:
  virtual ~IZentrailObjectInfo() = default;
  virtual std::string ZentrailClassName() const = 0;
  virtual std::string ZentrailObjectName() const { return {}; }
};

// The readable class name of a C++ type.
std::string ZentrailDemangle(const char* mangledName);

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
