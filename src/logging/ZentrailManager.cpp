#include "ZentrailManager.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <new>

#include "ZTChannel.h"
#include "ZTCommonUtils.h"
#include "ZTDateTime.h"
#include "ZentrailLogger.h"

namespace zentrail {

namespace {

pid_t CurrentThreadId() {
  thread_local pid_t id = static_cast<pid_t>(syscall(SYS_gettid));
  return id;
}

std::string ExecutableBaseName() {
  char buf[4096];
  ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
  std::string path = n > 0 ? std::string(buf, static_cast<std::size_t>(n)) : std::string();
  if (path.empty()) {
    std::string comm;
    if (FILE* f = std::fopen("/proc/self/comm", "r")) {
      char line[64] = {};
      if (std::fgets(line, sizeof line, f)) comm = line;
      std::fclose(f);
    }
    while (!comm.empty() && (comm.back() == '\n' || comm.back() == '\r')) comm.pop_back();
    return comm;
  }
  auto slash = path.rfind('/');
  std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  // "(deleted)" is added by the kernel when the file was replaced while running.
  if (auto d = name.find(" (deleted)"); d != std::string::npos) name.erase(d);
  if (auto dot = name.rfind('.'); dot != std::string::npos && dot > 0) name.erase(dot);
  return name;
}


}  // namespace

TZentrailManager::TZentrailManager() {
  FAppName = ExecutableBaseName();
  FComputerName = GetComputerName();
  FProcessID = static_cast<uint32_t>(getpid());
  FConnection = std::make_shared<TZentrailCopyDataConnection>(mfDefault);
  FConnectionPointer = FConnection.get();
  FDefaultDestination.Viewer().SetActive(true);
  if (const char* limit = std::getenv("ZENTRAIL_TIMEOUT_MS")) {
    char* end = nullptr;
    long value = std::strtol(limit, &end, 10);
    // A value that is not a number leaves the default rather than removing the limit.
    if (end != limit && *end == '\0' && value <= 0x7FFFFFFF && value >= -0x7FFFFFFF) FTimeoutMs = static_cast<int>(value);
  }

  // Take the wall clock and the monotonic clock as close together as possible.
  FBaseCount = std::chrono::steady_clock::now();
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  time_t seconds = now.tv_sec;
  tm local{};
  localtime_r(&seconds, &local);
  FBaseMilliseconds = (int64_t(local.tm_hour) * 3600 + local.tm_min * 60 + local.tm_sec) * 1000 +
                      now.tv_nsec / 1000000;
  // The store counts days from 1 January 0001; the one calendar routine of the project makes the
  // number, so that client, dispatcher and viewer cannot disagree on the base.
  FBaseDate = EncodeDayNumber(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);

  if (const char* size = std::getenv("ZENTRAIL_ASYNC_QUEUE")) {
    char* end = nullptr;
    unsigned long long value = std::strtoull(size, &end, 10);
    if (end != size && *end == '\0' && value > 0) FAsyncQueueSize = static_cast<std::size_t>(value);
  }
  if (const char* async = std::getenv("ZENTRAIL_ASYNC"); async && std::string_view(async) == "1") SetAsync(true);
}

TZentrailManager::~TZentrailManager() {
  // What is queued goes out before the connection that carries it closes its routes.
  if (FAsyncQueue) FAsyncQueue->Stop(DeadlineIn(TimeoutMs()));
}

std::shared_ptr<TZentrailConnection> TZentrailManager::Connection() const {
  std::lock_guard lock(FConnectionLock);
  return FConnection;
}

void TZentrailManager::SetConnection(std::shared_ptr<TZentrailConnection> connection) {
  std::shared_ptr<TZentrailConnection> old;
  {
    std::lock_guard lock(FConnectionLock);
    old = std::move(FConnection);
    FConnection = std::move(connection);
    FConnectionPointer = FConnection.get();
  }
  // The old connection closes its routes when the last send that holds it is done.
}

void TZentrailManager::SetAsync(bool value) {
  std::lock_guard lock(FAsyncLock);
  if (value) {
    if (!FAsyncQueue) {
      FAsyncQueue = std::make_unique<TZentrailAsyncQueue>(FAsyncQueueSize);
      FAsyncQueue->SetDropWhenFull(DropWhenFull());
      FAsyncQueuePointer = FAsyncQueue.get();
    }
    FAsyncQueue->Start();
    FAsync = true;
  } else {
    FAsync = false;
    if (FAsyncQueue) FAsyncQueue->Stop(DeadlineIn(TimeoutMs()));
  }
}

void TZentrailManager::SetAsyncQueueSize(std::size_t bytes) {
  std::lock_guard lock(FAsyncLock);
  FAsyncQueueSize = bytes;
  // A stopped queue is replaced at the next start; it is kept, not freed, as a sender that saw
  // it a moment ago may still look at it.
  if (FAsyncQueue && !FAsyncQueue->Running()) FRetiredQueues.push_back(std::move(FAsyncQueue));
}

std::size_t TZentrailManager::AsyncQueueSize() const {
  std::lock_guard lock(FAsyncLock);
  return FAsyncQueue ? FAsyncQueue->Capacity() : FAsyncQueueSize;
}

void TZentrailManager::SetDropWhenFull(bool value) {
  FDropWhenFull = value;
  if (TZentrailAsyncQueue* queue = FAsyncQueuePointer.load()) queue->SetDropWhenFull(value);
}

bool TZentrailManager::Flush(int timeoutMs) {
  TZentrailAsyncQueue* queue = FAsyncQueuePointer.load();
  if (!queue) return true;
  return queue->Flush(DeadlineIn(timeoutMs < 0 ? TimeoutMs() : timeoutMs));
}

TZentrailAsyncStatistics TZentrailManager::AsyncStatistics() const {
  TZentrailAsyncQueue* queue = FAsyncQueuePointer.load();
  return queue ? queue->Statistics() : TZentrailAsyncStatistics{};
}

int TZentrailManager::SendAsync(TZentrailLogger& logger, const std::shared_ptr<TZentrailConnection>& own,
                                std::string& dispatchID, int32_t& dispatchIDDate, int32_t msgType, int32_t msgContent,
                                std::string_view typeName, std::string_view details, std::string_view text,
                                const TZentrailTimeStamp& stamp) {
  TZentrailAsyncQueue* queue = FAsyncQueuePointer.load(std::memory_order_acquire);
  if (!queue) return 0;
  return queue->Send(logger, own, dispatchID, dispatchIDDate, msgType, msgContent, typeName, details, text, stamp);
}

bool TZentrailManager::ReleaseAsyncRoute(const TZentrailConnection& connection, const std::string& dispatchID,
                                         const std::string& category) {
  TZentrailAsyncQueue* queue = FAsyncQueuePointer.load(std::memory_order_acquire);
  return queue && queue->ReleaseRoute(connection, dispatchID, category);
}

void TZentrailManager::ConnectUsingCopyData(TZentrailMessageFormat format) {
  SetConnection(std::make_shared<TZentrailCopyDataConnection>(format));
}

void TZentrailManager::ConnectUsingTcp(const std::string& host, uint16_t port, TZentrailMessageFormat format) {
  SetConnection(std::make_shared<TZentrailTcpConnection>(host, port, format));
}

void TZentrailManager::ConnectUsingTcp(const std::string& host, TZentrailMessageFormat format) {
  ConnectUsingTcp(host, 3434, format);
}

void TZentrailManager::ConnectUsingTcp(TZentrailMessageFormat format) { ConnectUsingTcp("localhost", 3434, format); }

void TZentrailManager::GetTimeStamp(TZentrailTimeStamp& timeStamp) const {
  auto elapsed = std::chrono::steady_clock::now() - FBaseCount;
  int64_t ms = FBaseMilliseconds +
               (std::chrono::duration_cast<std::chrono::microseconds>(elapsed).count() + 500) / 1000;
  timeStamp.Date = FBaseDate + static_cast<int32_t>(ms / 86400000);
  timeStamp.Time = static_cast<int32_t>(ms % 86400000);
}

std::string TZentrailManager::GetCurrentThreadName() {
  pid_t id = CurrentThreadId();
  std::lock_guard lock(FThreadMapCriticalSection);
  auto [it, inserted] = FThreadMap.try_emplace(id);
  if (inserted) it->second = std::to_string(id);
  return it->second;
}

void TZentrailManager::SetCurrentThreadName(std::string_view name) {
  pid_t id = CurrentThreadId();
  std::lock_guard lock(FThreadMapCriticalSection);
  FThreadMap[id] = std::string(name);
  FThreadNamesVersion.fetch_add(1, std::memory_order_acq_rel);
}

// ---------------------------------------------------------------------------------------------
// The globals live in static storage and are built by the first initialiser object that runs,
// so that static constructors anywhere may log, and torn down by the last one.

namespace {
alignas(TZentrailManager) unsigned char gManagerStorage[sizeof(TZentrailManager)];
alignas(TZentrailLogger) unsigned char gLoggerStorage[sizeof(TZentrailLogger)];
int gInitCount = 0;
}  // namespace

TZentrailManager& ZentrailManager = *reinterpret_cast<TZentrailManager*>(gManagerStorage);
TZentrailLogger& ZentrailLog = *reinterpret_cast<TZentrailLogger*>(gLoggerStorage);

TZentrailClientInit::TZentrailClientInit() {
  if (gInitCount++ == 0) {
    new (gManagerStorage) TZentrailManager();
    new (gLoggerStorage) TZentrailLogger();
  }
}

TZentrailClientInit::~TZentrailClientInit() {
  if (--gInitCount == 0) {
    reinterpret_cast<TZentrailLogger*>(gLoggerStorage)->~TZentrailLogger();
    reinterpret_cast<TZentrailManager*>(gManagerStorage)->~TZentrailManager();
  }
}

}  // namespace zentrail
