#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <regex>
#include <syslog.h>
#include <set>
#include <stdexcept>
#include <thread>

#include "ZentrailLogging.h"

using namespace zentrail;

namespace {

// Records what a logger hands to its connection; answers with Result.
class TRecordingConnection : public TZentrailConnection {
 public:
  int InternalSend(const TZentrailMessage& message) override {
    std::lock_guard lock(FLock);
    Sent.push_back(message);
    return Result;
  }
  std::vector<TZentrailMessage> Sent;
  int Result = 1;
  std::mutex FLock;
};

struct TLoggerFixture : ::testing::Test {
  std::shared_ptr<TRecordingConnection> connection = std::make_shared<TRecordingConnection>();
  TZentrailLogger log;
  void SetUp() override { log.SetConnection(connection); }
  const TZentrailMessage& Last() { return connection->Sent.back(); }
};

// An exception that counts how often its text is read.
struct TCountingError : std::exception {
  mutable int* reads;
  explicit TCountingError(int* r) : reads(r) {}
  const char* what() const noexcept override {
    ++*reads;
    return "counted";
  }
};

struct TNamed : IZentrailObjectInfo {
  std::string name;
  mutable int asked = 0;
  std::string ZentrailClassName() const override {
    ++asked;
    return "TWidget";
  }
  std::string ZentrailObjectName() const override { return name; }
};

}  // namespace

TEST_F(TLoggerFixture, FirstSendAnnouncesRouteAndChangesOfDestinationReplaceIt) {
  log.SetCategory("Net");
  ASSERT_EQ(log.Send("one"), 1);
  ASSERT_EQ(connection->Sent.size(), 2u);
  const TZentrailMessage open = connection->Sent[0];
  EXPECT_EQ(open.MsgType, ztmOpenRoute);
  EXPECT_EQ(open.MsgText, "Viewer");
  EXPECT_EQ(open.Category, "Net");
  EXPECT_EQ(open.AppName, ZentrailManager.AppName());
  EXPECT_EQ(open.ProcessID, ZentrailManager.ProcessID());
  EXPECT_TRUE(std::regex_match(open.RouteKey, std::regex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")))
      << open.RouteKey;
  EXPECT_EQ(connection->Sent[1].RouteKey, open.RouteKey);
  EXPECT_EQ(connection->Sent[1].MsgText, "one");

  log.Send("two");  // same route, no new announcement
  ASSERT_EQ(connection->Sent.size(), 3u);
  EXPECT_EQ(Last().RouteKey, open.RouteKey);

  TZentrailDestination file("File[Path=/tmp/x/app.ztl]");
  log.SetDestination(&file);
  log.Send("three");
  ASSERT_EQ(connection->Sent.size(), 6u);
  EXPECT_EQ(connection->Sent[3].MsgType, ztmCloseRoute);
  EXPECT_EQ(connection->Sent[3].RouteKey, open.RouteKey);
  EXPECT_EQ(connection->Sent[4].MsgType, ztmOpenRoute);
  EXPECT_EQ(connection->Sent[4].MsgText, "File[Path=/tmp/x/app.ztl]");
  EXPECT_NE(connection->Sent[4].RouteKey, open.RouteKey);
  EXPECT_EQ(connection->Sent[5].RouteKey, connection->Sent[4].RouteKey);

  // A change inside the same destination object is a change of route as well.
  file.LogFile().SetMaxSize(10);
  log.Send("four");
  ASSERT_EQ(connection->Sent.size(), 9u);
  EXPECT_EQ(connection->Sent[7].MsgText, "File[Path=/tmp/x/app.ztl;MaxSize=10]");

  // A second logger on the same connection has a route of its own.
  TZentrailLogger other;
  other.SetConnection(connection);
  other.Send("five");
  ASSERT_EQ(connection->Sent.size(), 11u);
  EXPECT_EQ(connection->Sent[9].MsgType, ztmOpenRoute);
  EXPECT_EQ(connection->Sent[9].MsgText, "Viewer");
  std::set<std::string> routes{connection->Sent[8].RouteKey, connection->Sent[10].RouteKey};
  EXPECT_EQ(routes.size(), 2u);
}

TEST_F(TLoggerFixture, LoggerThatGoesAwayClosesItsRoute) {
  std::string id;
  {
    TZentrailLogger shortLived;
    shortLived.SetConnection(connection);
    shortLived.SetCategory("Temp");
    shortLived.Send("brief");
    id = shortLived.DispatchID();
  }
  ASSERT_EQ(connection->Sent.size(), 3u);
  EXPECT_EQ(Last().MsgType, ztmCloseRoute);
  EXPECT_EQ(Last().RouteKey, id);
  EXPECT_EQ(Last().Category, "Temp");
  {
    TZentrailLogger silent;  // never sent: nothing to close
    silent.SetConnection(connection);
  }
  EXPECT_EQ(connection->Sent.size(), 3u);
}

TEST_F(TLoggerFixture, RouteIsRenewedAfterADayAndMadeForAnEmptyId) {
  TZentrailMessage message;
  std::string id;
  int32_t date = 0;
  ASSERT_EQ(connection->SendZentrailMessage(log, message, id, date), 1);
  EXPECT_FALSE(id.empty()) << "an empty id gets a route at the first message";
  EXPECT_EQ(date, ZentrailManager.GetTimeStamp().Date);
  ASSERT_EQ(connection->Sent.size(), 2u);
  std::string first = id;

  date -= 1;  // yesterday's route still serves
  ASSERT_EQ(connection->SendZentrailMessage(log, message, id, date), 1);
  EXPECT_EQ(id, first);
  EXPECT_EQ(connection->Sent.size(), 3u);

  date -= 1;  // more than a day old: a new route, announced before the message
  ASSERT_EQ(connection->SendZentrailMessage(log, message, id, date), 1);
  EXPECT_NE(id, first);
  EXPECT_EQ(date, ZentrailManager.GetTimeStamp().Date);
  ASSERT_EQ(connection->Sent.size(), 5u);
  EXPECT_EQ(connection->Sent[3].MsgType, ztmOpenRoute);
  EXPECT_EQ(connection->Sent[3].RouteKey, id);
  EXPECT_EQ(connection->Sent[4].RouteKey, id);

  id = "not-a-known-route";
  ASSERT_EQ(connection->SendZentrailMessage(log, message, id, date), 1);
  EXPECT_NE(id, "not-a-known-route");
  EXPECT_EQ(connection->Sent[5].MsgType, ztmOpenRoute);
}

TEST_F(TLoggerFixture, DestroyedDestinationFallsBackToTheDefault) {
  {
    TZentrailDestination own("File[Path=/tmp/a.ztl]");
    log.SetDestination(&own);
    log.Send("a");
  }
  EXPECT_EQ(log.Destination(), nullptr);
  log.Send("b");
  EXPECT_EQ(connection->Sent[connection->Sent.size() - 2].MsgText, "Viewer");
}

TEST_F(TLoggerFixture, LoggersOfManyThreadsShareOneDestination) {
  // Each thread links and unlinks its own loggers while the others do the same: the destination's
  // list of loggers is shared between them.
  std::vector<TZentrailLogger> kept(4);
  {
    TZentrailDestination shared("File[Path=/tmp/a.ztl]");
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
      threads.emplace_back([&, t] {
        ++ready;
        while (ready.load() < 4) std::this_thread::yield();
        for (int i = 0; i < 50000; ++i) {
          TZentrailLogger passing[3];
          for (auto& p : passing) p.SetDestination(&shared);
          kept[t].SetDestination(i % 2 ? &shared : nullptr);
        }
        kept[t].SetDestination(&shared);
      });
    for (auto& thread : threads) thread.join();
    for (auto& logger : kept) EXPECT_EQ(logger.Destination(), &shared);
  }
  for (auto& logger : kept) EXPECT_EQ(logger.Destination(), nullptr) << "each was told the destination went away";
}

TEST_F(TLoggerFixture, InvalidDestinationIsTheOneExceptionTheApplicationSees) {
  TZentrailDestination broken("File[MaxSize=4]");
  log.SetDestination(&broken);
  EXPECT_THROW(log.Send("x"), EZentrailInvalidDestination);
  EXPECT_TRUE(connection->Sent.empty());
  log.SetDestination(nullptr);
}

TEST_F(TLoggerFixture, FailedSendSwitchesOffOnlyThatLogger) {
  connection->Result = 0;
  EXPECT_EQ(log.Send("lost"), 0);
  EXPECT_FALSE(log.Enabled());
  EXPECT_TRUE(ZentrailManager.Enabled());
  std::size_t attempts = connection->Sent.size();
  EXPECT_EQ(log.SendError("also lost"), 0);
  EXPECT_EQ(connection->Sent.size(), attempts) << "a switched-off logger makes no further attempt";

  connection->Result = 1;
  TZentrailLogger other;
  other.SetConnection(connection);
  EXPECT_TRUE(other.Enabled());
  EXPECT_EQ(other.Send("fine"), 1);

  log.SetEnabled(true);  // the application may switch it on again
  EXPECT_EQ(log.Send("back"), 1);
}

TEST_F(TLoggerFixture, DisabledLoggerFormatsNothing) {
  int reads = 0;
  TNamed named;
  log.SetEnabled(false);
  EXPECT_EQ(log.SendException(TCountingError(&reads)), 0);
  EXPECT_EQ(log.EnterMethod(&named, "Paint"), 0);
  EXPECT_EQ(log.Assert(false, "x"), 0);
  EXPECT_EQ(reads, 0);
  EXPECT_EQ(named.asked, 0);

  log.SetEnabled(true);
  ZentrailManager.SetEnabled(false);  // the master switch alone also stops everything
  EXPECT_EQ(log.SendException(TCountingError(&reads)), 0);
  ZentrailManager.SetEnabled(true);
  EXPECT_EQ(reads, 0);
  EXPECT_TRUE(connection->Sent.empty());
  EXPECT_TRUE(log.Enabled());
}

TEST_F(TLoggerFixture, OnSendMsgCanTakeOrPassMessages) {
  std::vector<TZentrailMsgData> seen;
  bool take = true;
  log.SetCategory("UI");
  log.SetOnSendMsg([&](TZentrailLogger& sender, TZentrailMsgData& data, bool& handled) {
    EXPECT_EQ(&sender, &log);
    seen.push_back(data);
    data.MsgText = "changed";
    handled = take;
  });
  EXPECT_EQ(log.SendWarning("taken"), 0);
  EXPECT_TRUE(log.Enabled()) << "a handled message is no failure";
  EXPECT_TRUE(connection->Sent.empty());
  ASSERT_EQ(seen.size(), 1u);
  EXPECT_EQ(seen[0].MsgType, ztmWarning);
  EXPECT_EQ(seen[0].MsgText, "taken");
  EXPECT_EQ(seen[0].Category, "UI");
  EXPECT_EQ(seen[0].ThreadName, ZentrailManager.GetCurrentThreadName());

  take = false;
  EXPECT_EQ(log.InternalSend(ztmInfo, ztmText, "T", "a=1\r\nb=2", "passed"), 1);
  ASSERT_EQ(seen.size(), 2u) << "the route announcement does not reach the handler";
  EXPECT_EQ(seen[1].Details, (std::vector<std::string>{"a=1", "b=2"}));
  EXPECT_EQ(Last().MsgText, "passed") << "changes in the record do not reach the message";
  EXPECT_EQ(Last().Details, "a=1\r\nb=2");
}

TEST_F(TLoggerFixture, SendersFillTypeTextAndIdentity) {
  log.SetCategory("Core");
  log.SetCategoryColor(0x00FF00);
  log.SetCategoryFontColor(0x0000FF);
  struct {
    std::function<int()> call;
    int32_t type;
    std::string text;
  } cases[] = {
      {[&] { return log.Send("plain"); }, ztmInfo, "plain"},
      {[&] { return log.SendWarning("w"); }, ztmWarning, "w"},
      {[&] { return log.SendError("e"); }, ztmError, "e"},
      {[&] { return log.SendNote("n"); }, ztmNote, "n"},
      {[&] { return log.SendReminder("r"); }, ztmReminder, "r"},
      {[&] { return log.SendFmtMsg("%d%% of %s", 50, "disk"); }, ztmInfo, "50% of disk"},
      {[&] { return log.SendErrorFmt("code %04x", 42); }, ztmError, "code 002a"},
      {[&] { return log.SendFmtMsg(ztmLevel3, "%s", std::string(600, 'z').c_str()); }, ztmLevel3, std::string(600, 'z')},
      {[&] { return log.EnterMethod("Load"); }, ztmEnterMethod, "Load"},
      {[&] { return log.ExitMethod("Load"); }, ztmExitMethod, "Load"},
      {[&] { return log.ExitMethod("Count", 42); }, ztmExitMethod, "Count = 42"},
      {[&] { return log.ExitMethod("Ok", true); }, ztmExitMethod, "Ok = True"},
      {[&] { return log.ExitMethodCollapse("Quick"); }, ztmExitMethodCollapse, "Quick"},
      {[&] { return log.AddCheckPoint(); }, ztmCheckPoint, "Core: Check Point #1"},
      {[&] { return log.AddCheckPoint(); }, ztmCheckPoint, "Core: Check Point #2"},
      {[&] { return log.Write("Speed", "12 km/h"); }, ztmScratchPad, "Speed@12 km/h"},
      {[&] { return log.Write("Speed", "now", "13"); }, ztmScratchPad, "Speed@now = 13"},
      {[&] { return log.Assert(false, "bad state"); }, ztmError, "bad state"},
      {[&] { return log.Clear(); }, ztmClear, ""},
      {[&] { return log.AddSeparator(); }, ztmSeparator, ""},
      {[&] { return log.AddResetSeparator(); }, ztmResetSeparator, ""},
  };
  TZentrailTimeStamp before = ZentrailManager.GetTimeStamp();
  for (auto& c : cases) {
    ASSERT_EQ(c.call(), 1) << c.text;
    EXPECT_EQ(Last().MsgType, c.type) << c.text;
    EXPECT_EQ(Last().MsgContent, ztmText) << c.text;
    EXPECT_EQ(Last().MsgText, c.text);
  }
  EXPECT_EQ(log.Assert(true, "fine"), 0);
  const TZentrailMessage& m = Last();
  EXPECT_EQ(m.Category, "Core");
  EXPECT_EQ(m.CategoryColor, 0x00FF00);
  EXPECT_EQ(m.CategoryFontColor, 0x0000FF);
  EXPECT_EQ(m.AppName, "test_logging");
  EXPECT_EQ(m.ProcessID, static_cast<uint32_t>(getpid()));
  EXPECT_EQ(m.ThreadName, ZentrailManager.GetCurrentThreadName());
  EXPECT_GE(m.TimeStamp.Date, before.Date);
  EXPECT_TRUE(m.TimeStamp.Date > before.Date || m.TimeStamp.Time >= before.Time);

  log.ResetCheckPoint();
  log.SetCategory("");
  log.AddCheckPoint();
  EXPECT_EQ(Last().MsgText, "test_logging: Check Point #1");
}

TEST_F(TLoggerFixture, MethodsOfObjectsAndExceptionsCarryTheClassName) {
  TNamed named;
  log.EnterMethod(&named, "Paint");
  EXPECT_EQ(Last().MsgText, "TWidget.Paint");
  EXPECT_EQ(Last().TypeName, "TWidget");
  named.name = "btnOk";
  log.ExitMethod(&named, "Paint");
  EXPECT_EQ(Last().MsgText, "TWidget( btnOk ).Paint");
  EXPECT_EQ(Last().MsgType, ztmExitMethod);
  log.EnterMethod(static_cast<const IZentrailObjectInfo*>(nullptr), "Free");
  EXPECT_EQ(Last().MsgText, "Free");
  EXPECT_EQ(Last().TypeName, "");

  std::runtime_error plain("boom");
  const std::exception& asBase = plain;
  log.SendException("While loading", asBase);
  EXPECT_EQ(Last().MsgType, ztmException);
  EXPECT_EQ(Last().MsgText, "While loading: boom");
  EXPECT_EQ(Last().TypeName, "std::runtime_error") << "the dynamic class, not the static one";
  log.SendException(std::out_of_range(std::string(3000, 'x')));
  EXPECT_EQ(Last().MsgText, std::string(1024, 'x'));
  EXPECT_EQ(Last().TypeName, "std::out_of_range");

  std::logic_error poly("p");
  log.EnterMethod(&poly, "Run");
  EXPECT_EQ(Last().MsgText, "std::logic_error.Run");
}

TEST_F(TLoggerFixture, NonvisibleCharactersAreSpelledOutWhenAsked) {
  ZentrailManager.SetEncodeNonvisibleCharacters(true);
  log.Send(std::string_view("a\tb\nc\rd\x01" "e", 9));
  ZentrailManager.SetEncodeNonvisibleCharacters(false);
  EXPECT_EQ(Last().MsgText, "a[TAB]b[LF]c[CR]d[#1]e");
  log.Send("a\tb");
  EXPECT_EQ(Last().MsgText, "a\tb");
}

TEST(Manager, ThreadNamesAndClock) {
  std::string mine = ZentrailManager.GetCurrentThreadName();
  EXPECT_EQ(mine, std::to_string(gettid())) << "a thread is its id until it is named";
  std::string other;
  std::thread([&] {
    ZentrailManager.SetCurrentThreadName("worker");
    other = ZentrailManager.GetCurrentThreadName();
  }).join();
  EXPECT_EQ(other, "worker");
  EXPECT_EQ(ZentrailManager.GetCurrentThreadName(), mine);
  ZentrailManager.SetCurrentThreadName("main");
  EXPECT_EQ(ZentrailManager.GetCurrentThreadName(), "main");

  // The stamp is the local wall clock: compare with what the C library says now.
  time_t now = time(nullptr);
  tm local{};
  localtime_r(&now, &local);
  TZentrailTimeStamp t = ZentrailManager.GetTimeStamp();
  int64_t wallMs = (local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec) * 1000LL;
  tm d{};
  d.tm_year = local.tm_year;
  d.tm_mon = local.tm_mon;
  d.tm_mday = local.tm_mday;
  int32_t day = static_cast<int32_t>(timegm(&d) / 86400) + 25569 + 693594;
  int64_t diff = (int64_t(t.Date) - day) * 86400000 + t.Time - wallMs;
  EXPECT_LT(std::llabs(diff), 3000) << "stamp " << t.Date << "/" << t.Time;
  TZentrailTimeStamp prev = t;
  for (int i = 0; i < 1000; ++i) {
    TZentrailTimeStamp n = ZentrailManager.GetTimeStamp();
    ASSERT_TRUE(n.Date > prev.Date || (n.Date == prev.Date && n.Time >= prev.Time)) << "the clock never runs back";
    prev = n;
  }
}

TEST(Logger, NotifiersAreToldInReverseOrderBeforeTheLoggerGoesAway) {
  struct TNote : IZentrailLoggerNotifier {
    std::vector<int>* order;
    int id;
    TNote(std::vector<int>* o, int i) : order(o), id(i) {}
    void FreeNotify(TZentrailLogger&) override { order->push_back(id); }
  };
  std::vector<int> order;
  TNote a(&order, 1), b(&order, 2), c(&order, 3);
  {
    TZentrailLogger log;
    log.AddNotifier(&a);
    log.AddNotifier(&b);
    log.AddNotifier(&b);  // once only
    log.AddNotifier(&c);
    log.RemoveNotifier(&c);
  }
  EXPECT_EQ(order, (std::vector<int>{2, 1}));
}

TEST(Logger, EventLogEntriesCarryTheSourceAndKind) {
  struct TEntry {
    std::string source;
    int priority;
    std::string text;
  };
  std::vector<TEntry> entries;
  TZentrailLogger log;
  log.SetEventLogSink([&](const std::string& s, int p, const std::string& t) { entries.push_back({s, p, t}); });
  log.LogEvent("started");
  log.SetCategory("Db");
  log.LogWarning("slow query", 3, 17);
  log.LogError("lost connection");
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(entries[0].source, "test_logging");
  EXPECT_EQ(entries[0].priority, LOG_INFO);
  EXPECT_EQ(entries[0].text, "started");
  EXPECT_EQ(entries[1].source, "test_logging:Db");
  EXPECT_EQ(entries[1].priority, LOG_WARNING);
  EXPECT_EQ(entries[2].priority, LOG_ERR);
  EXPECT_EQ(entries[2].text, "lost connection");
}

TEST(Logger, AssertHookReportsThroughTheGlobalLoggerOrAborts) {
  auto connection = std::make_shared<TRecordingConnection>();
  ZentrailLog.SetConnection(connection);
  ZentrailManager.SetLogAsserts(laZentrail);
  int line = __LINE__ + 1;
  ZENTRAIL_ASSERT(1 + 1 == 3);
  ZENTRAIL_ASSERT(1 + 1 == 2);
  ASSERT_EQ(connection->Sent.size(), 2u) << "route and one error; execution goes on";
  const TZentrailMessage& error = connection->Sent.back();
  EXPECT_EQ(error.MsgType, ztmError);
  EXPECT_TRUE(error.MsgText.starts_with("Assertion Failed: 1 + 1 == 3\rFile: ")) << error.MsgText;
  EXPECT_NE(error.MsgText.find("test_logger.cpp\rLine: " + std::to_string(line) + "\rAddress: 0x"), std::string::npos)
      << error.MsgText;

  ZentrailManager.SetLogAsserts(laBoth);
  EXPECT_DEATH(ZENTRAIL_ASSERT(false), "Assertion `false' failed");
  ZentrailManager.SetLogAsserts(laNormal);
  EXPECT_DEATH(ZENTRAIL_ASSERT(2 < 1), "Assertion `2 < 1' failed");
  ZentrailLog.UseZentrailManagerConnection();
}
