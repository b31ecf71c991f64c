// The live road from a socket frame to the rows of "All Messages", and the intake rules.
#include <QTableWidget>

#include "ShellFixture.h"
#include "Zlib.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {
using Frames = std::vector<TChannelClient::Frame>;
using Records = std::vector<std::pair<int32_t, std::string>>;

TChannelClient::Frame Plain(const TZentrailMessage& m) { return {ztPacketTag, Packet(m)}; }
}  // namespace

class IntakeTest : public ShellFixture {};

TEST_F(IntakeTest, PacketsThroughTheSocketBecomeRowsAtTheirIndent) {
  std::string path = Listen();
  TChannelClient client(path);
  ASSERT_TRUE(client.Connected());
  Frames frames = {
      Plain(MakeMessage(ztmEnterMethod, "Outer")),
      Plain(MakeMessage(ztmInfo, "inside")),
      Plain(MakeMessage(ztmEnterMethod, "Inner")),
      {ztCompressedPacketTag, ZlibDeflate(Packet(MakeMessage(ztmWarning, "compressed")))},
      Plain(MakeMessage(ztmExitMethod, "Inner")),
      Plain(MakeMessage(ztmExitMethod, "Outer")),
      {0x7F000006, Packet(MakeMessage(ztmInfo, "unknown tag"))},
  };
  client.Send(frames);
  ASSERT_TRUE(SpinUntil([&] { return client.Done(); }));
  client.Join();
  EXPECT_EQ(client.Replies(), (std::vector<int>{1, 1, 1, 1, 1, 1, 0}));

  EXPECT_EQ(Stored(), (Records{{ztmEnterMethod, "Outer"},
                               {ztmInfo, "inside"},
                               {ztmEnterMethod, "Inner"},
                               {ztmWarning, "compressed"},
                               {ztmExitMethod, "Inner"},
                               {ztmExitMethod, "Outer"}}));
  IZTMessageView& view = AllMessages();
  ASSERT_EQ(view.GetCount(), 6);
  std::vector<int32_t> indents;
  for (int row = 0; row < 6; ++row) indents.push_back(view.GetIndentLevel(row));
  EXPECT_EQ(indents, (std::vector<int32_t>{0, 1, 1, 2, 1, 0}));
  EXPECT_EQ(Viewer->NextMessageID(), 6);
  // The ID counter numbers stored records from 0.
  MessageSet.GotoRec(6);
  EXPECT_EQ(MessageSet.GetID(), 5);
}

TEST_F(IntakeTest, RefusedFramesStoreNothingAndTheViewerGoesOn) {
  std::string path = Listen();
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "before"));

  // Blocked: refused unread, a clear included.
  Viewer->SetMessagesBlocked(true);
  {
    TChannelClient client(path);
    client.Send({Plain(MakeMessage(ztmInfo, "while blocked")), Plain(MakeMessage(ztmClear, ""))});
    ASSERT_TRUE(SpinUntil([&] { return client.Done(); }));
    EXPECT_EQ(client.Replies(), (std::vector<int>{0, 0}));
  }
  EXPECT_EQ(MessageSet.GetRecordCount(), 1);
  Viewer->SetMessagesBlocked(false);

  // Damaged frames: 0 for each, one report to the user, and the same connection goes on.
  std::string badZlib = ZlibDeflate(Packet(MakeMessage(ztmInfo, "x")));
  badZlib[badZlib.size() / 2] ^= 0x5A;
  badZlib.resize(badZlib.size() - 3);
  TChannelClient client(path);
  client.Send({{ztCompressedPacketTag, badZlib},
               {ztPacketTag, "ZTP11:0"},
               {ztPacketTag, "not a packet"},
               Plain(MakeMessage(ztmInfo, "after"))});
  ASSERT_TRUE(SpinUntil([&] { return client.Done(); }));
  EXPECT_EQ(client.Replies(), (std::vector<int>{0, 0, 0, 1}));
  EXPECT_EQ(Stored(), (Records{{ztmInfo, "before"}, {ztmInfo, "after"}}));
  // Each failure reaches the user after its sender has the reply.
  ASSERT_TRUE(SpinUntil([&] { return FPrompts->Prompts.size() == 3; }));
  EXPECT_EQ(FPrompts->Prompts.front().Kind, TZTPromptKind::Error);
  EXPECT_TRUE(FPrompts->Prompts.front().Text.contains(QLatin1String("zlib")))
      << FPrompts->Prompts.front().Text.toStdString();

  // A stream that inflates past the bound: 0, and that sender's connection is closed.
  std::string bomb = ZlibDeflate(std::string(ztMaxInflatedSize + 1, 'z'));
  TChannelClient bomber(path);
  bomber.Send({{ztCompressedPacketTag, bomb}, Plain(MakeMessage(ztmInfo, "never"))});
  ASSERT_TRUE(SpinUntil([&] { return bomber.Done(); }, 30000));
  EXPECT_EQ(bomber.Replies(), (std::vector<int>{0, -1}));
  EXPECT_EQ(MessageSet.GetRecordCount(), 2);

  // A clear from a client empties the store and the views.
  TChannelClient clearer(path);
  clearer.Send({Plain(MakeMessage(ztmClear, ""))});
  ASSERT_TRUE(SpinUntil([&] { return clearer.Done(); }));
  EXPECT_EQ(clearer.Replies(), std::vector<int>{1});
  EXPECT_EQ(MessageSet.GetRecordCount(), 0);
  EXPECT_EQ(AllMessages().GetCount(), 0);
}

TEST_F(IntakeTest, TwoClientsAtOnceGetEveryMessageStoredWhole) {
  std::string path = Listen();
  const int kEach = 2000;
  Frames a, b;
  for (int i = 0; i < kEach; ++i) {
    a.push_back(Plain(MakeMessage(ztmInfo, "A " + std::to_string(i) + " " + std::string(i % 300, 'a'), 1)));
    b.push_back({ztCompressedPacketTag,
                 ZlibDeflate(Packet(MakeMessage(ztmInfo, "B " + std::to_string(i) + std::string(i % 700, 'b'), 2)))});
  }
  TChannelClient ca(path), cb(path);
  ca.Send(a);
  cb.Send(b);
  ASSERT_TRUE(SpinUntil([&] { return ca.Done() && cb.Done(); }, 60000));
  EXPECT_EQ(ca.Replies(), std::vector<int>(kEach, 1));
  EXPECT_EQ(cb.Replies(), std::vector<int>(kEach, 1));
  ASSERT_EQ(MessageSet.GetRecordCount(), 2 * kEach);
  EXPECT_EQ(AllMessages().GetCount(), 2 * kEach);
  int nextA = 0, nextB = 0;
  for (int32_t r = 1; r <= MessageSet.GetRecordCount(); ++r) {
    MessageSet.GotoRec(r);
    std::string text(MessageSet.GetMsgText());
    if (MessageSet.GetProcessID() == 1) {
      EXPECT_EQ(text, "A " + std::to_string(nextA) + " " + std::string(nextA % 300, 'a'));
      ++nextA;
    } else {
      EXPECT_EQ(text, "B " + std::to_string(nextB) + std::string(nextB % 700, 'b'));
      ++nextB;
    }
  }
  EXPECT_EQ(nextA, kEach);
  EXPECT_EQ(nextB, kEach);
}

TEST_F(IntakeTest, AutomaticSeparators) {
  Viewer->InsertSeparatorOnAppStart = true;
  // First message of a process: start separator first, then the message; the second: one record.
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "one", 7));
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "two", 7));
  // The viewer's own process never gets one; custom types neither, nor do they enter the list.
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "own", Viewer->ViewerProcessID()));
  Viewer->ProcessMessage(MakeMessage(100, "custom", 8));
  Viewer->ProcessMessage(MakeMessage(ztmSeparator, "sep", 9));
  EXPECT_EQ(Stored(), (Records{{ztmAppStartSeparator, ""},
                               {ztmInfo, "one"},
                               {ztmInfo, "two"},
                               {ztmInfo, "own"},
                               {100, "custom"},
                               {ztmSeparator, "sep"}}));
  EXPECT_EQ(Viewer->SeenProcessIDs(), (std::unordered_set<uint32_t>{7}));
  // The copy keeps the sender's identity.
  MessageSet.GotoRec(1);
  EXPECT_EQ(MessageSet.GetProcessID(), 7u);
  EXPECT_EQ(MessageSet.GetAppName(), "demo");

  // Inactivity, milliseconds of the day only, strictly more than IdleTime seconds.
  Viewer->ClearMessages(true);
  Viewer->InsertSeparatorOnWakeUp = true;
  Viewer->SoundEffectOnWakeUp = true;
  Viewer->IdleTime = 10;
  const int32_t t0 = 50000000;
  // An empty store brings no separator and no sound, whatever the clock says; a new process's
  // start separator replaces the test for its first message.
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "first", 7, t0));
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "new process after a pause", 8, t0 + 60000));
  EXPECT_EQ(Viewer->WakeUpSoundsPlayed(), 0);
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "exactly idle", 7, t0 + 60000 + 10000));
  EXPECT_EQ(Viewer->WakeUpSoundsPlayed(), 0);
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "one more ms", 7, t0 + 60000 + 10000 + 10001));
  EXPECT_EQ(Viewer->WakeUpSoundsPlayed(), 1);
  // Over midnight the gap is negative: nothing.
  Viewer->ProcessMessage(MakeMessage(ztmInfo, "after midnight", 7, 5000));
  // Custom types never trigger.
  Viewer->ProcessMessage(MakeMessage(1000, "custom after a pause", 7, 80000000));
  EXPECT_EQ(Viewer->WakeUpSoundsPlayed(), 1);
  EXPECT_EQ(Stored(), (Records{{ztmAppStartSeparator, ""},
                               {ztmInfo, "first"},
                               {ztmAppStartSeparator, ""},
                               {ztmInfo, "new process after a pause"},
                               {ztmInfo, "exactly idle"},
                               {ztmInactiveSeparator, ""},
                               {ztmInfo, "one more ms"},
                               {ztmInfo, "after midnight"},
                               {1000, "custom after a pause"}}));

  // A clear from a client resets the ID counter and the seen list: a known process starts again.
  std::string path = Listen();
  TChannelClient client(path);
  client.Send({Plain(MakeMessage(ztmClear, "")), Plain(MakeMessage(ztmInfo, "again", 7))});
  ASSERT_TRUE(SpinUntil([&] { return client.Done(); }));
  EXPECT_EQ(Stored(), (Records{{ztmAppStartSeparator, ""}, {ztmInfo, "again"}}));
  MessageSet.GotoRec(1);
  EXPECT_EQ(MessageSet.GetID(), 0);
  EXPECT_EQ(Viewer->NextMessageID(), 2);
}

TEST_F(IntakeTest, SeparatorsFromClientsAndFromTheUser) {
  std::string path = Listen();
  TChannelClient client(path);
  TZentrailMessage sep = MakeMessage(ztmSeparator, "ignored text", 7, 1000);
  sep.TypeName = "T";
  sep.Details = "d";
  client.Send({Plain(MakeMessage(ztmEnterMethod, "Run", 7)), Plain(sep),
               Plain(MakeMessage(ztmResetSeparator, "also ignored", 7)), Plain(MakeMessage(ztmInfo, "after", 7))});
  ASSERT_TRUE(SpinUntil([&] { return client.Done(); }));
  EXPECT_EQ(Stored(), (Records{{ztmEnterMethod, "Run"}, {ztmSeparator, "-"}, {ztmResetSeparator, "="}, {ztmInfo, "after"}}));
  MessageSet.GotoRec(2);
  EXPECT_EQ(MessageSet.GetTypeName(), "");
  EXPECT_EQ(MessageSet.GetDetails(), "");
  EXPECT_EQ(MessageSet.GetProcessID(), 7u) << "a client's separator keeps the client's identity";
  EXPECT_NE(MessageSet.GetTimeStamp().Time, 1000) << "but shows the viewer's clock";
  // The reset separator put the active view back to level 0.
  EXPECT_EQ(AllMessages().GetIndentLevel(1), 1);
  EXPECT_EQ(AllMessages().GetIndentLevel(3), 0);

  // A separator the user adds carries the viewer's own identity.
  Viewer->AddSeparator(nullptr);
  MessageSet.Last();
  EXPECT_EQ(MessageSet.GetMsgType(), ztmSeparator);
  EXPECT_EQ(MessageSet.GetProcessID(), Viewer->ViewerProcessID());
}

TEST_F(IntakeTest, ScratchPadLines) {
  std::string path = Listen();
  TChannelClient client(path);
  auto pad = [](const std::string& text) { return Plain(MakeMessage(ztmScratchPad, text)); };
  client.Send({pad("Speed@12 km/h"), pad("Mail@a@b.example"), pad("speed@13 km/h"), pad("no at sign")});
  ASSERT_TRUE(SpinUntil([&] { return client.Done(); }));
  EXPECT_EQ(client.Replies(), std::vector<int>(4, 1));
  EXPECT_EQ(MessageSet.GetRecordCount(), 0) << "scratch pad lines are never stored";

  QTableWidget* grid = Viewer->ScratchPadGrid();
  EXPECT_EQ(Viewer->ScratchPadNames(), (QStringList{"Speed", "Mail", ""}));
  auto cell = [grid](int r, int c) { return grid->item(r, c) ? grid->item(r, c)->text() : QString(); };
  EXPECT_EQ(cell(0, 1), "speed");
  EXPECT_EQ(cell(0, 2), "13 km/h");
  EXPECT_EQ(cell(1, 2), "a@b.example");
  EXPECT_EQ(cell(2, 1), "");
  EXPECT_EQ(cell(2, 2), "no at sign");
  // Changed lines are lit, and the lights go out together a moment later.
  EXPECT_EQ(cell(0, 0), " ");
  ASSERT_TRUE(SpinUntil([&] { return cell(0, 0).isEmpty() && cell(2, 0).isEmpty(); }, 5000));

  // The grid grows past 50 lines and shrinks back on clear.
  EXPECT_EQ(grid->rowCount(), 50);
  for (int i = 0; i < 48; ++i) Viewer->SetScratchPadLine(QStringLiteral("line %1").arg(i), QStringLiteral("v"));
  EXPECT_EQ(grid->rowCount(), 51);
  EXPECT_EQ(cell(50, 1), "line 47");

  // Deleting moves the lines below up; deleting an empty row does nothing.
  grid->setCurrentCell(1, 2);
  Viewer->DeleteScratchPadLine();
  EXPECT_EQ(Viewer->ScratchPadNames().size(), 50);
  EXPECT_EQ(cell(1, 1), "");
  EXPECT_EQ(cell(1, 2), "no at sign");
  EXPECT_EQ(cell(50, 1), "");
  grid->setCurrentCell(50, 2);
  Viewer->DeleteScratchPadLine();
  EXPECT_EQ(Viewer->ScratchPadNames().size(), 50);

  Viewer->ClearScratchPad();
  EXPECT_EQ(grid->rowCount(), 50);
  EXPECT_TRUE(Viewer->ScratchPadNames().isEmpty());
  EXPECT_EQ(cell(0, 2), "");
  EXPECT_EQ(grid->columnWidth(1), 50);
}

TEST_F(IntakeTest, ClearingTheCurrentViewOrAll) {
  for (int i = 0; i < 5; ++i) Viewer->ProcessMessage(MakeMessage(ztmInfo, "m" + std::to_string(i)));
  // Asked first; No keeps everything.
  FPrompts->Answers = {false};
  Viewer->ConfirmAndClear(false);
  ASSERT_EQ(FPrompts->Prompts.size(), 1u);
  EXPECT_EQ(FPrompts->Prompts.back().Text, "Clear All Messages from the Current View?");
  EXPECT_EQ(MessageSet.GetRecordCount(), 5);
  // With one view, clearing the current view clears everything.
  FPrompts->Answers = {true};
  Viewer->ConfirmAndClear(false);
  EXPECT_EQ(MessageSet.GetRecordCount(), 0);
  EXPECT_EQ(Viewer->NextMessageID(), 0);
  EXPECT_EQ(Viewer->StatusText("stsMsgCount"), "0 out of 0 Messages");

  // With two views, only the current view is emptied and the store stays.
  TZTFilterCriteria all;
  IZTMessageView* second = Viewer->CreateView("Second", all, false, true, "Default");
  ASSERT_NE(second, nullptr);
  for (int i = 0; i < 3; ++i) Viewer->ProcessMessage(MakeMessage(ztmInfo, "n" + std::to_string(i)));
  EXPECT_EQ(second->GetCount(), 3);
  EXPECT_EQ(Viewer->ActiveViewIndex(), 1);
  Viewer->ConfirmOnClear = false;
  Viewer->ConfirmAndClear(false);
  EXPECT_EQ(second->GetCount(), 0);
  EXPECT_EQ(AllMessages().GetCount(), 3);
  EXPECT_EQ(MessageSet.GetRecordCount(), 3);
  Viewer->ConfirmAndClear(true);
  EXPECT_EQ(AllMessages().GetCount(), 0);
  EXPECT_EQ(MessageSet.GetRecordCount(), 0);
}
