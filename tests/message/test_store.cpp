#include <gtest/gtest.h>

#include "ZentrailMessageSet.h"

using namespace zentrail;

namespace {

void Put(TZentrailMessageSet& set, int32_t id, const std::string& text, const std::string& thread,
         uint32_t pid = 1, const std::string& details = "") {
  set.Append();
  set.SetID(id);
  set.SetMsgType(ztmInfo);
  set.SetMsgContent(ztmText);
  set.SetMsgText(text);
  set.SetDetails(details);
  set.SetDate(ztDateOf2000);
  set.SetTime(id * 1000);
  set.SetProcessID(pid);
  set.SetThreadName(thread);
  set.SetComputerName("host");
  set.SetAppName("app");
  set.SetTypeName("");
  set.SetCategory("cat");
  set.SetCategoryColor(0x00FFFFFF);
  set.SetCategoryFontColor(0);
  set.Post();
}

}  // namespace

TEST(MessageSet, CursorAndNumberingFollowAppendPostCloseOpen) {
  TZentrailMessageSet set;
  set.Last();
  EXPECT_LE(set.RecNo, 0);
  EXPECT_EQ(set.GetRecordCount(), 0);
  EXPECT_EQ(set.GetMsgText(), "");  // getters on an empty store read nothing, safely

  Put(set, 0, "first", "main");
  EXPECT_EQ(set.RecNo, 1);
  Put(set, 1, "second", "main");
  EXPECT_EQ(set.RecNo, 2);
  set.First();
  EXPECT_EQ(set.RecNo, 1);
  EXPECT_EQ(set.GetMsgText(), "first");
  set.Next();
  EXPECT_EQ(set.GetMsgText(), "second");
  set.Next();  // stays on the last record
  EXPECT_EQ(set.RecNo, 2);
  EXPECT_THROW(set.GotoRec(3), EZentrailStoreError);
  EXPECT_THROW(set.GotoRec(0), EZentrailStoreError);

  set.Close();
  set.Open();
  EXPECT_EQ(set.GetRecordCount(), 0);
  set.Last();
  EXPECT_LE(set.RecNo, 0);
  Put(set, 0, "again", "main");
  EXPECT_EQ(set.RecNo, 1);
  EXPECT_EQ(set.GetMsgText(), "again");
}

TEST(MessageSet, KeepsEveryFieldOfManySendersApart) {
  TZentrailMessageSet set;
  for (int i = 0; i < 200000; ++i)
    Put(set, i, "text " + std::to_string(i), "thread " + std::to_string(i % 7),
        static_cast<uint32_t>(i % 5), i % 20 == 0 ? std::string(3000, 'a' + i % 26) : "");
  ASSERT_EQ(set.GetRecordCount(), 200000);
  TZentrailMessage m;
  for (int i : {0, 1, 65535, 65536, 65537, 123457, 199999}) {
    set.GotoRec(i + 1);
    EXPECT_EQ(set.GetID(), i);
    EXPECT_EQ(set.GetMsgText(), "text " + std::to_string(i));
    EXPECT_EQ(set.GetThreadName(), "thread " + std::to_string(i % 7));
    EXPECT_EQ(set.GetProcessID(), static_cast<uint32_t>(i % 5));
    EXPECT_EQ(set.GetDetails(), i % 20 == 0 ? std::string(3000, 'a' + i % 26) : "");
    EXPECT_EQ(set.GetTimeStamp(), (TZentrailTimeStamp{i * 1000, ztDateOf2000}));
    EXPECT_EQ(set.GetCategory(), "cat");
    set.GetCurrentMessage(m);
    EXPECT_EQ(m.MsgText, "text " + std::to_string(i));
    EXPECT_EQ(m.ComputerName, "host");
  }
  // Views handed out earlier stay valid while the store grows.
  set.GotoRec(5);
  const std::string_view early = set.GetMsgText();
  for (int i = 0; i < 100000; ++i) Put(set, i, "more", "main");
  EXPECT_EQ(early, "text 4");
  // Interned identities cost far less than the texts themselves.
  EXPECT_LT(set.MemoryUsed(), std::size_t{300000} * 80 + (10000u * 3000u) + (8u << 20));
}

TEST(MessageSet, EditChangesTheTextAndTypeRewritesLast) {
  TZentrailMessageSet set;
  Put(set, 0, "one", "main");
  Put(set, 1, "two", "main");
  set.GotoRec(1);
  set.Edit();
  set.SetMsgText("edited");
  set.Post();
  EXPECT_EQ(set.RecNo, 1);
  set.GotoRec(2);
  set.GotoRec(1);
  EXPECT_EQ(set.GetMsgText(), "edited");
  EXPECT_EQ(set.GetThreadName(), "main");

  // A view rewrites an arriving type 43 on the posted record without Edit.
  set.Append();
  set.SetMsgType(ztmExitMethodCollapse);
  set.SetMsgText("exit");
  set.Post();
  set.SetMsgType(ztmExitMethod);
  set.GotoRec(1);
  set.GotoRec(3);
  EXPECT_EQ(set.GetMsgType(), ztmExitMethod);

  // Text setters outside Append or Edit are a mistake of the caller.
  EXPECT_THROW(set.SetMsgText("x"), EZentrailStoreError);
  EXPECT_THROW(set.SetThreadName("x"), EZentrailStoreError);
  set.Edit();
  EXPECT_THROW(set.SetAppName("x"), EZentrailStoreError);
  set.Cancel();
  EXPECT_EQ(set.GetMsgText(), "exit");
}

TEST(MessageSet, GetMessageLeavesTheCursorAlone) {
  TZentrailMessageSet set;
  TZentrailMessage in;
  in.SetMsgType(ztmError);
  in.SetMsgContent(ztmCustomTable);
  in.MsgText = "row";
  in.Details = "a\tb\r\n";
  in.ProcessID = 99;
  in.TypeName = "TGrid";
  in.CategoryColor = 0x123456;
  set.AppendMessage(in, 7);
  Put(set, 8, "later", "main");
  set.GotoRec(2);
  TZentrailMessage out;
  set.GetMessage(1, out);
  EXPECT_EQ(set.RecNo, 2);
  EXPECT_EQ(set.GetMsgText(), "later");
  EXPECT_EQ(out, in);
  set.GotoRec(1);
  EXPECT_EQ(set.GetID(), 7);
}

TEST(MessageSet, TheGlobalStoreIsOneAndOpen) {
  EXPECT_EQ(&MessageSet, &GetMessageSet());
  EXPECT_TRUE(MessageSet.Active());
  const int32_t before = MessageSet.GetRecordCount();
  TZentrailMessage m;
  m.MsgText = "global";
  MessageSet.AppendMessage(m, 0);
  EXPECT_EQ(GetMessageSet().GetRecordCount(), before + 1);
  MessageSet.Close();
  MessageSet.Open();
  EXPECT_EQ(MessageSet.GetRecordCount(), 0);
}
