// Search, the navigator's walks, bookmarks and the synchronised message, over views whose methods
// are collapsed and expanded in between.

#include "ZTPromptService.h"
#include "ViewTestSupport.h"

namespace zentrail::test {
namespace {

using Texts = std::vector<std::string>;
using Ints = std::vector<int32_t>;

class ViewNavigation : public TViewTest {
 protected:
  // Rows when open: 0 start | 1 M> | 2 w1 | 3 N> | 4 e1 | 5 N< | 6 w2 | 7 M< | 8 w3 | 9 end
  // (w = warning, e = error; records 1 to 10 in this order).
  void Fill(TZTMessageView& view) {
    Store(ztmInfo, "start", {&view});
    Store(ztmEnterMethod, "M", {&view});
    Store(ztmWarning, "w1 inside", {&view});
    Store(ztmEnterMethod, "N", {&view});
    Store(ztmError, "e1 deep", {&view}, ztmBitmap);
    Store(ztmExitMethod, "N", {&view});
    Store(ztmWarning, "w2 inside", {&view});
    Store(ztmExitMethod, "M", {&view});
    Store(ztmWarning, "w3 outside", {&view});
    Store(ztmInfo, "end", {&view});
  }
  static std::string FocusedText(TZTMessageView& view) {
    if (view.GetFocusedMsgIndex() < 0) return "<none>";
    view.SelectRecord(view.GetFocusedMsgIndex());
    return std::string(MessageSet.GetMsgText());
  }
};

TEST_F(ViewNavigation, BookmarksFindTheirRecordsThroughCollapseExpandAndDeletion) {
  TZTMessageView view;
  Fill(view);
  view.SetFocusedMsgIndex(4);  // e1 deep, record 5
  view.ToggleBookmark(3);
  view.ToggleBookmark(7);      // two bookmarks on one record: the painter shows the lower one
  EXPECT_EQ(view.FindBookmark(5), 3);
  view.SetFocusedMsgIndex(8);
  view.ToggleBookmark(7);      // moves bookmark 7 to w3
  EXPECT_EQ(view.GetBookmark(7), 9);

  // Collapsing the outer method hides the bookmarked row; the jump opens every collapsed method
  // that stands before its target.
  view.CollapseMethod(3);
  view.CollapseMethod(1);
  ASSERT_EQ(RowTexts(view), (Texts{"start", "M", "w3 outside", "end"}));
  view.SetFocusedMsgIndex(0);
  view.JumpToBookmark(7);
  EXPECT_EQ(FocusedText(view), "w3 outside");
  EXPECT_EQ(view.GetFocusedMsgIndex(), 8);
  EXPECT_EQ(view.GetCount(), 10);
  view.CollapseMethod(3);
  view.CollapseMethod(1);
  view.SetFocusedMsgIndex(3);
  view.JumpToBookmark(3);
  EXPECT_EQ(FocusedText(view), "e1 deep");
  EXPECT_EQ(RowTexts(view), (Texts{"start", "M", "w1 inside", "N", "e1 deep", "N", "w2 inside", "M", "w3 outside", "end"}));
  EXPECT_EQ(SelectedRows(view), Ints{4});
  // A bookmark that holds nothing does nothing; there are ten.
  view.JumpToBookmark(0);
  EXPECT_EQ(FocusedText(view), "e1 deep");
  EXPECT_THROW(view.ToggleBookmark(10), std::out_of_range);
  EXPECT_THROW(view.GetBookmark(-1), std::out_of_range);

  // A bookmarked row that was deleted: the jump lands on the next later row of the view.
  view.RemoveAllSelections();
  view.Select(4, true);
  view.SetFocusedMsgIndex(4);
  view.DeleteSelection();
  ASSERT_EQ(view.GetCount(), 9);
  view.SetFocusedMsgIndex(0);
  view.JumpToBookmark(3);
  EXPECT_EQ(FocusedText(view), "N");
  EXPECT_EQ(view.GetFocusedMsgIndex(), 4);

  // A record beyond everything the view holds: nothing happens.
  view.SetFocusedMsgIndex(2);
  view.JumpToMsgRecNo(MessageSet.GetRecordCount() + 5);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 2);

  // Clearing the view clears its bookmarks; the synchronised record stays.
  view.SetSyncMsgRecNo(6);
  view.ClearView();
  for (int i = 0; i < 10; ++i) EXPECT_EQ(view.GetBookmark(i), -1);
  EXPECT_EQ(view.SyncMsgRecNo(), 6);
}

TEST_F(ViewNavigation, NavigatorWalksRowsOnShowOnly) {
  TZTRecordingPromptService prompts;
  TZTPromptServiceGuard guard(&prompts);
  TZTMessageView view;
  Fill(view);
  Store(100, "custom 100", {&view});
  Store(1000, "custom 1000", {&view});
  view.CollapseMethod(1);
  ASSERT_EQ(RowTexts(view), (Texts{"start", "M", "w3 outside", "end", "custom 100", "custom 1000"}));

  view.JumpToMessage(ztJumpFirst, ztmWarning, -1);
  EXPECT_EQ(FocusedText(view), "w3 outside");  // the warnings inside the method are passed over
  view.JumpToMessage(ztJumpPrevious, ztmWarning, -1);
  EXPECT_EQ(SelectedRows(view), Ints{});       // none above on show: the selection goes, no beep
  EXPECT_EQ(prompts.Beeps, 0);
  // After the method opens, the same walks see its rows.
  view.ExpandMethod(1);
  view.SetFocusedMsgIndex(8);
  view.JumpToMessage(ztJumpPrevious, ztmWarning, -1);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 6);
  view.JumpToMessage(ztJumpPrevious, ztmWarning, -1);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 2);
  view.JumpToMessage(ztJumpNext, -1, ztmBitmap);
  EXPECT_EQ(FocusedText(view), "e1 deep");
  view.JumpToMessage(ztJumpLast, ztmError, ztmBitmap);
  EXPECT_EQ(FocusedText(view), "e1 deep");
  view.JumpToMessage(ztJumpFirst, ztmError, ztmText);  // both must match
  EXPECT_EQ(SelectedRows(view), Ints{});
  // Any type of 100 or above matches any custom type.
  view.JumpToMessage(ztJumpLast, 150, -1);
  EXPECT_EQ(FocusedText(view), "custom 1000");
  view.JumpToMessage(ztJumpPrevious, 100, ztmError);
  EXPECT_EQ(FocusedText(view), "custom 100");
  // Any type and any content find nothing.
  view.JumpToMessage(ztJumpFirst, -1, -1);
  EXPECT_EQ(SelectedRows(view), Ints{});
  // Previous with no focus starts at the last row.
  view.SetFocusedMsgIndex(-1);
  view.JumpToMessage(ztJumpPrevious, 1000, -1);
  EXPECT_EQ(FocusedText(view), "custom 1000");

  // The enabling of the commands: the nearest match on each side of the focus.
  bool hasNext = true, hasPrevious = true;
  view.SetFocusedMsgIndex(-1);
  view.UpdateNavigation(ztmWarning, -1, hasNext, hasPrevious);
  EXPECT_FALSE(hasNext || hasPrevious);
  view.SetFocusedMsgIndex(4);
  view.UpdateNavigation(ztmWarning, -1, hasNext, hasPrevious);
  EXPECT_TRUE(hasNext && hasPrevious);
  view.CollapseMethod(1);
  view.SetFocusedMsgIndex(1);
  view.UpdateNavigation(ztmWarning, -1, hasNext, hasPrevious);
  EXPECT_TRUE(hasNext);
  EXPECT_FALSE(hasPrevious);
}

TEST_F(ViewNavigation, TimeDifferencesCompareNeighbouringRows) {
  TZTMessageView view;
  // Times in ms: 0, 100, 2000 (inside the method), 2100, 2200, 5000.
  const int32_t base = FTime;
  const int32_t times[] = {0, 100, 2000, 2100, 2200, 5000};
  const int32_t types[] = {ztmInfo, ztmEnterMethod, ztmInfo, ztmExitMethod, ztmInfo, ztmInfo};
  for (int i = 0; i < 6; ++i) {
    FTime = base + times[i];
    Store(types[i], "t" + std::to_string(times[i]), {&view});
  }
  view.JumpToTimeDiff(ztJumpFirst, 1000);
  EXPECT_EQ(FocusedText(view), "t2000");
  view.JumpToTimeDiff(ztJumpNext, 1000);
  EXPECT_EQ(FocusedText(view), "t5000");
  view.JumpToTimeDiff(ztJumpNext, 1000);
  EXPECT_EQ(SelectedRows(view), Ints{});
  // The gap must be greater than the threshold, not equal.
  view.JumpToTimeDiff(ztJumpLast, 2800);
  EXPECT_EQ(SelectedRows(view), Ints{});
  view.JumpToTimeDiff(ztJumpLast, 2799);
  EXPECT_EQ(FocusedText(view), "t5000");

  // Collapsed, the gap lies between the Enter's row and the one after the method.
  view.CollapseMethod(1);
  ASSERT_EQ(RowTexts(view), (Texts{"t0", "t100", "t2200", "t5000"}));
  view.JumpToTimeDiff(ztJumpFirst, 1000);
  EXPECT_EQ(FocusedText(view), "t2200");
  view.JumpToTimeDiff(ztJumpPrevious, 1000);
  EXPECT_EQ(SelectedRows(view), Ints{});  // row 0 never matches

  // A single row: nothing happens, not even a change of selection.
  TZTMessageView one;
  MessageSet.GotoRec(1);
  one.AddMessage(false);
  one.Select(0, true);
  one.JumpToTimeDiff(ztJumpFirst, 0);
  EXPECT_EQ(SelectedRows(one), Ints{0});
}

TEST_F(ViewNavigation, SearchStartsClampsOpensAndStops) {
  TZTRecordingPromptService prompts;
  TZTPromptServiceGuard guard(&prompts);
  TZTMessageView view;
  view.resize(400, 120);
  view.show();
  Fill(view);
  TZTRegEx regex;
  regex.Compile("W\\d");

  // Forward repeats from the last row: the start clamps to it, so it can match again.
  view.SetFocusedMsgIndex(9);
  regex.Compile("END");
  view.FindNext(false, "END", false, false, true, regex);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 9);
  EXPECT_TRUE(prompts.Prompts.empty());

  // Backward through collapsed methods: each is opened and climbed from its end, so the nearest
  // match above comes first.
  view.CollapseMethod(3);
  view.CollapseMethod(1);
  ASSERT_EQ(view.GetCount(), 4);
  regex.Compile("INSIDE|DEEP");
  view.SetFocusedMsgIndex(3);
  view.FindNext(false, "INSIDE|DEEP", false, false, false, regex);
  EXPECT_EQ(FocusedText(view), "w2 inside");
  view.FindNext(false, "INSIDE|DEEP", false, false, false, regex);
  EXPECT_EQ(FocusedText(view), "e1 deep");
  view.FindNext(false, "INSIDE|DEEP", false, false, false, regex);
  EXPECT_EQ(FocusedText(view), "w1 inside");
  view.FindNext(false, "INSIDE|DEEP", false, false, false, regex);
  ASSERT_EQ(prompts.Prompts.size(), 1u);
  EXPECT_EQ(prompts.Prompts.front().Kind, TZTPromptKind::Information);
  EXPECT_EQ(view.GetCount(), 10);  // opened methods stay open after a failed search

  // A new search from the cursor looks at the focused row first; from the entire scope backward
  // it starts at the last row.
  view.CollapseMethod(1);
  view.SetFocusedMsgIndex(1);
  regex.Compile("^M$");
  view.FindNext(true, "^M$", false, true, true, regex);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 1);
  EXPECT_EQ(view.GetCount(), 4);
  view.ExpandAllMethods(true);
  view.FindNext(true, "^M$", false, false, false, regex);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 7);

  // Details count only when asked; an empty text or an empty view does nothing.
  TZentrailMessage m;
  m.MsgText = "plain";
  m.Details = "Key=Needle\r\n";
  MessageSet.AppendMessage(m, FNextID++);
  view.AddMessage(false);
  regex.Compile("needle");
  view.SetFocusedMsgIndex(0);
  view.FindNext(true, "needle", false, false, true, regex);
  EXPECT_EQ(prompts.Prompts.size(), 2u);
  view.FindNext(true, "needle", true, false, true, regex);
  EXPECT_EQ(FocusedText(view), "plain");
  view.FindNext(true, "", true, false, true, regex);
  TZTMessageView empty;
  empty.FindNext(true, "needle", true, false, true, regex);
  EXPECT_EQ(prompts.Prompts.size(), 2u);
}

TEST_F(ViewNavigation, SynchronisedRecordUncoversItselfOrLeavesTheFocus) {
  TZTMessageView all, early;
  TZTFilterCriteria c;
  c.CheckMessageText = true;
  c.MessageText = "^(start|M)$";
  early.SetFilterCriteria(c);
  Fill(all);
  for (int32_t rec = 1; rec <= MessageSet.GetRecordCount(); ++rec) {
    MessageSet.GotoRec(rec);
    early.AddMessage(false);
  }
  ASSERT_EQ(RowTexts(early), (Texts{"start", "M", "M"}));
  all.CollapseMethod(1);
  all.SetFocusedMsgIndex(0);
  // The record of "w2 inside" (7) hidden in a collapsed method: opened and focused.
  all.SetSyncMsgRecNo(7);
  all.JumpToMsgRecNo(all.SyncMsgRecNo());
  EXPECT_EQ(FocusedText(all), "w2 inside");
  // A view that holds only earlier messages: no jump, the focus stays.
  early.SetFocusedMsgIndex(1);
  early.JumpToMsgRecNo(9);
  EXPECT_EQ(early.GetFocusedMsgIndex(), 1);
  early.JumpToMsgRecNo(3);  // not held: the next later message it holds, the Exit M
  EXPECT_EQ(early.GetFocusedMsgIndex(), 2);
}

}  // namespace
}  // namespace zentrail::test
