#include "ZentrailLogger.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "ZTChannel.h"
#include "ZTCommonUtils.h"
#include "ZentrailPlatform.h"

namespace zentrail {

static_assert(ztMaxMessageBytes < ztMaxFrameSize, "a message must fit a frame with its identity fields");

TZentrailLogger::TZentrailLogger() : FEnabled(ZentrailManager.Enabled()) {}

TZentrailLogger::~TZentrailLogger() {
  auto notifiers = FNotifiers;
  for (auto it = notifiers.rbegin(); it != notifiers.rend(); ++it) (*it)->FreeNotify(*this);
  FNotifiers.clear();
  if (FDestination) FDestination->Unlink(this);
  if (!FDispatchID.empty()) {
    if (auto connection = Connection()) connection->ReleaseRoute(FDispatchID, FCategory);
  }
  FConnection.reset();
}

void TZentrailLogger::SetDestination(TZentrailDestination* destination) {
  if (FDestination == destination) return;
  if (FDestination) FDestination->Unlink(this);
  FDestination = destination;
  if (FDestination) FDestination->Link(this);
}

void TZentrailLogger::DestinationDestroyed(TZentrailDestination* destination) {
  if (FDestination == destination) FDestination = nullptr;
}

TZentrailDestination& TZentrailLogger::EffectiveDestination() {
  return FDestination ? *FDestination : ZentrailManager.DefaultDestination();
}

void TZentrailLogger::ConnectUsingCopyData(TZentrailMessageFormat format) {
  FConnection = std::make_shared<TZentrailCopyDataConnection>(format);
}

void TZentrailLogger::ConnectUsingTcp(const std::string& host, uint16_t port, TZentrailMessageFormat format) {
  FConnection = std::make_shared<TZentrailTcpConnection>(host, port, format);
}

void TZentrailLogger::ConnectUsingTcp(const std::string& host, TZentrailMessageFormat format) {
  ConnectUsingTcp(host, 3434, format);
}

void TZentrailLogger::ConnectUsingTcp(TZentrailMessageFormat format) { ConnectUsingTcp("localhost", 3434, format); }

std::shared_ptr<TZentrailConnection> TZentrailLogger::Connection() const {
  return FConnection ? FConnection : ZentrailManager.Connection();
}

void TZentrailLogger::CloseDispatcher() {
  if (auto c = Connection()) c->CloseDispatcher();
}

bool TZentrailLogger::Installed() { return !FindDispatcherExecutable().empty(); }

namespace {

std::string EncodeNonvisible(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char ch : text) {
    auto c = static_cast<unsigned char>(ch);
    if (c >= 32) out += ch;
    else if (c == '\t') out += "[TAB]";
    else if (c == '\n') out += "[LF]";
    else if (c == '\r') out += "[CR]";
    else out += "[#" + std::to_string(c) + "]";
  }
  return out;
}

std::vector<std::string> DetailLines(std::string_view details) {
  std::vector<std::string> lines;
  if (details.empty()) return lines;
  std::size_t start = 0;
  while (start <= details.size()) {
    auto end = details.find('\n', start);
    if (end == std::string_view::npos) end = details.size();
    std::string_view line = details.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    lines.emplace_back(line);
    if (end == details.size()) break;
    start = end + 1;
  }
  return lines;
}

}  // namespace

int TZentrailLogger::InternalSend(int32_t msgType, int32_t msgContent, std::string_view typeName,
                                  std::string_view details, std::string_view text) {
  // A message larger than a frame may be would be refused, and the refusal would switch this
  // logger off for good. It is replaced by a short error that says what was not sent.
  const std::size_t size = text.size() + details.size() + typeName.size();
  if (size > ztMaxMessageBytes) {
    std::size_t cut = std::min<std::size_t>(text.size(), 60);
    while (cut > 0 && cut < text.size() && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
    char reason[160];
    std::snprintf(reason, sizeof reason, "Send Data Error: a message of %zu bytes is larger than the %zu bytes a viewer takes; it was not sent: ",
                  size, ztMaxMessageBytes);
    return InternalSend(ztmError, ztmText, {}, {}, std::string(reason) + std::string(text.substr(0, cut)));
  }
  TZentrailMessage message;
  ZentrailManager.GetTimeStamp(message.TimeStamp);

  if (FOnSendMsg && !(msgType >= 90 && msgType <= 99)) {
    TZentrailMsgData data;
    data.MsgType = msgType;
    data.MsgContent = msgContent;
    data.MsgText = std::string(text);
    data.Details = DetailLines(details);
    data.ProcessID = ZentrailManager.ProcessID();
    data.ThreadName = ZentrailManager.GetCurrentThreadName();
    data.ComputerName = ZentrailManager.ComputerName();
    data.AppName = ZentrailManager.AppName();
    data.TypeName = std::string(typeName);
    data.Category = FCategory;
    data.CategoryColor = FCategoryColor;
    data.CategoryFontColor = FCategoryFontColor;
    data.TimeStamp = message.TimeStamp;
    bool handled = true;
    FOnSendMsg(*this, data, handled);
    if (handled) return 0;
  }

  if (ZentrailManager.Async())
    return ZentrailManager.SendAsync(*this, FConnection, FDispatchID, FDispatchIDDate, msgType, msgContent, typeName,
                                     details, ZentrailManager.EncodeNonvisibleCharacters()
                                                  ? std::string_view(message.MsgText = EncodeNonvisible(text)) : text,
                                     message.TimeStamp);
  message.SetMsgType(msgType);
  message.SetMsgContent(msgContent);
  if (ZentrailManager.EncodeNonvisibleCharacters()) message.MsgText = EncodeNonvisible(text);
  else message.MsgText.assign(text);
  message.Details.assign(details);
  message.ProcessID = ZentrailManager.ProcessID();
  message.ThreadName = ZentrailManager.GetCurrentThreadName();
  message.AppName = ZentrailManager.AppName();
  message.ComputerName = ZentrailManager.ComputerName();
  message.TypeName.assign(typeName);
  message.Category = FCategory;
  message.CategoryColor = FCategoryColor;
  message.CategoryFontColor = FCategoryFontColor;

  int result = 0;
  if (auto connection = Connection())
    result = connection->SendZentrailMessage(*this, message, FDispatchID, FDispatchIDDate);
  // Switched off after a failure, so that a missing dispatcher costs one attempt per logger.
  if (result == 0) SetEnabled(false);
  return result;
}

int TZentrailLogger::SendFormattedV(int32_t msgType, const char* format, va_list args) {
  va_list copy;
  va_copy(copy, args);
  char small[512];
  int n = std::vsnprintf(small, sizeof small, format, copy);
  va_end(copy);
  if (n < 0) return InternalSend(ztmError, ztmText, {}, {}, std::string("Format Error: ") + format);
  if (static_cast<std::size_t>(n) < sizeof small)
    return InternalSend(msgType, ztmText, {}, {}, std::string_view(small, static_cast<std::size_t>(n)));
  std::string big(static_cast<std::size_t>(n) + 1, '\0');
  std::vsnprintf(big.data(), big.size(), format, args);
  big.resize(static_cast<std::size_t>(n));
  return InternalSend(msgType, ztmText, {}, {}, big);
}

#define ZT_FORMATTED(TYPE)                             \
  if (!IsOn()) return 0;                               \
  va_list args;                                        \
  va_start(args, format);                              \
  int result = SendFormattedV(TYPE, format, args);     \
  va_end(args);                                        \
  return result;

int TZentrailLogger::SendFmtMsg(const char* format, ...) { ZT_FORMATTED(ztmInfo) }
int TZentrailLogger::SendFmtMsg(int32_t msgType, const char* format, ...) { ZT_FORMATTED(msgType) }
int TZentrailLogger::SendNoteFmt(const char* format, ...) { ZT_FORMATTED(ztmNote) }
int TZentrailLogger::SendWarningFmt(const char* format, ...) { ZT_FORMATTED(ztmWarning) }
int TZentrailLogger::SendErrorFmt(const char* format, ...) { ZT_FORMATTED(ztmError) }
int TZentrailLogger::SendReminderFmt(const char* format, ...) { ZT_FORMATTED(ztmReminder) }
#undef ZT_FORMATTED

int TZentrailLogger::WriteLine(std::string_view lineId, std::string_view value) {
  std::string text(lineId);
  text += '@';
  text += value;
  return InternalSend(ztmScratchPad, ztmText, {}, {}, text);
}

int TZentrailLogger::MethodOfObject(int32_t msgType, const std::string& className, bool hasObject,
                                    std::string_view objectName, std::string_view name) {
  if (!hasObject) return InternalSend(msgType, ztmText, {}, {}, name);
  std::string text = className;
  if (!objectName.empty()) {
    text += "( ";
    text += objectName;
    text += " ).";
  } else {
    text += '.';
  }
  text += name;
  return InternalSend(msgType, ztmText, className, {}, text);
}

int TZentrailLogger::EnterMethod(std::string_view name) {
  return IsOn() ? InternalSend(ztmEnterMethod, ztmText, {}, {}, name) : 0;
}

int TZentrailLogger::EnterMethod(const IZentrailObjectInfo* obj, std::string_view name) {
  if (!IsOn()) return 0;
  if (!obj) return InternalSend(ztmEnterMethod, ztmText, {}, {}, name);
  return MethodOfObject(ztmEnterMethod, obj->ZentrailClassName(), true, obj->ZentrailObjectName(), name);
}

int TZentrailLogger::ExitMethod(std::string_view name) {
  return IsOn() ? InternalSend(ztmExitMethod, ztmText, {}, {}, name) : 0;
}

int TZentrailLogger::ExitMethod(const IZentrailObjectInfo* obj, std::string_view name) {
  if (!IsOn()) return 0;
  if (!obj) return InternalSend(ztmExitMethod, ztmText, {}, {}, name);
  return MethodOfObject(ztmExitMethod, obj->ZentrailClassName(), true, obj->ZentrailObjectName(), name);
}

int TZentrailLogger::ExitMethod(std::string_view name, std::string_view value) {
  if (!IsOn()) return 0;
  std::string text(name);
  text += " = ";
  text += value;
  return InternalSend(ztmExitMethod, ztmText, {}, {}, text);
}

int TZentrailLogger::ExitMethodCollapse(std::string_view name) {
  return IsOn() ? InternalSend(ztmExitMethodCollapse, ztmText, {}, {}, name) : 0;
}

int TZentrailLogger::ExitMethodCollapse(const IZentrailObjectInfo* obj, std::string_view name) {
  if (!IsOn()) return 0;
  if (!obj) return InternalSend(ztmExitMethodCollapse, ztmText, {}, {}, name);
  return MethodOfObject(ztmExitMethodCollapse, obj->ZentrailClassName(), true, obj->ZentrailObjectName(), name);
}

int TZentrailLogger::ExitMethodCollapse(std::string_view name, std::string_view value) {
  if (!IsOn()) return 0;
  std::string text(name);
  text += " = ";
  text += value;
  return InternalSend(ztmExitMethodCollapse, ztmText, {}, {}, text);
}

int TZentrailLogger::AddCheckPoint() {
  if (!IsOn()) return 0;
  ++FCheckPointCounter;
  const std::string& who = FCategory.empty() ? ZentrailManager.AppName() : FCategory;
  return InternalSend(ztmCheckPoint, ztmText, {}, {}, who + ": Check Point #" + std::to_string(FCheckPointCounter));
}

int TZentrailLogger::ExceptionMessage(std::string_view text, const std::exception& e) {
  std::string what = e.what() ? e.what() : "";
  if (what.size() > 1024) what.resize(1024);
  std::string msg;
  if (!text.empty()) {
    msg.assign(text);
    msg += ": ";
  }
  msg += what;
  return InternalSend(ztmException, ztmText, ZentrailDemangle(typeid(e).name()), {}, msg);
}

void TZentrailLogger::AddNotifier(IZentrailLoggerNotifier* notifier) {
  if (notifier && std::find(FNotifiers.begin(), FNotifiers.end(), notifier) == FNotifiers.end())
    FNotifiers.push_back(notifier);
}

void TZentrailLogger::RemoveNotifier(IZentrailLoggerNotifier* notifier) {
  FNotifiers.erase(std::remove(FNotifiers.begin(), FNotifiers.end(), notifier), FNotifiers.end());
}

void TZentrailLogger::SetEventLogSink(TZentrailEventLogSink sink) {
  FEventLogSink = std::move(sink);
  FEventLog.reset();
}

void TZentrailLogger::WriteEvent(std::string_view text, int kind, int category, int eventId) {
  std::string source = ZentrailManager.AppName();
  if (!FCategory.empty()) source += ":" + FCategory;
  if (!FEventLog || FEventLog->SourceName() != source)
    FEventLog = std::make_unique<TZTEventLog>(source, FEventLogSink);
  try {
    FEventLog->WriteEntry(std::string(text), kind, category, eventId);
  } catch (const EZTEventLogException&) {
    // No source name: nothing to write under.
  }
}

void ZentrailAssertFailed(const char* expression, const char* file, int line, const void* address) {
  TZentrailLogAsserts mode = ZentrailManager.LogAsserts();
  if (mode == laZentrail || mode == laBoth) {
    char text[2048];
    std::snprintf(text, sizeof text, "Assertion Failed: %s\rFile: %s\rLine: %d\rAddress: %p", expression, file, line,
                  address);
    ZentrailLog.SendError(text);
  }
  if (mode == laNormal || mode == laBoth) {
    std::fprintf(stderr, "%s:%d: Assertion `%s' failed.\n", file, line, expression);
    std::abort();
  }
}

}  // namespace zentrail
