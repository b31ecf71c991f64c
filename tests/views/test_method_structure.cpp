// Collapsing, expanding, matching and the call stack, walked over a view of real store records.

#include "ZTPromptService.h"
#include "ViewTestSupport.h"

namespace zentrail::test {
namespace {

using Texts = std::vector<std::string>;
using Ints = std::vector<int32_t>;

class MethodStructure : public TViewTest {
 protected:
  // Rows: 0 A> | 1 a1 | 2 B> | 3 b1 | 4 B< | 5 a2 | 6 A< | 7 z
  void FillNested(TZTMessageView& view) {
    Store(ztmEnterMethod, "A>", {&view});
    Store(ztmInfo, "a1", {&view});
    Store(ztmEnterMethod, "B>", {&view});
    Store(ztmInfo, "b1", {&view});
    Store(ztmExitMethod, "B<", {&view});
    Store(ztmInfo, "a2", {&view});
    Store(ztmExitMethod, "A<", {&view});
    Store(ztmInfo, "z", {&view});
  }
  const Texts FFull{"A>", "a1", "B>", "b1", "B<", "a2", "A<", "z"};
};

TEST_F(MethodStructure, CollapseAndExpandOneMethodKeepNestedState) {
  TFakeApplication app;
  TZTMessageView view(nullptr, &app);
  FillNested(view);

  view.CollapseMethod(2);
  EXPECT_EQ(RowTexts(view), (Texts{"A>", "a1", "B>", "a2", "A<", "z"}));
  EXPECT_TRUE(view.IsCollapsed(2));
  EXPECT_EQ(view.GetMsgTypeIcon(2), ztmCollapsedMethod);
  EXPECT_EQ(view.GetMsgContentIcon(2), -1);

  view.CollapseMethod(0);
  EXPECT_EQ(RowTexts(view), (Texts{"A>", "z"}));
  EXPECT_EQ(view.GetCount(), 2);
  EXPECT_EQ(view.ItemCount(), 8);

  // The inner method stays collapsed when the outer one opens.
  view.ExpandMethod(0);
  EXPECT_EQ(RowTexts(view), (Texts{"A>", "a1", "B>", "a2", "A<", "z"}));
  EXPECT_TRUE(view.Item(2).Collapsed);
  EXPECT_FALSE(view.Item(0).Collapsed);
  EXPECT_EQ(SelectedRows(view), Ints{0});

  view.ExpandMethod(2);
  EXPECT_EQ(RowTexts(view), FFull);
  EXPECT_EQ(view.UpdateCount(), 0);

  // The focus stays on its message while rows above it come and go.
  view.SetFocusedMsgIndex(7);
  view.CollapseMethod(2);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 5);
  view.ExpandMethod(2);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 7);

  // A method with no Exit yet can't collapse.
  Store(ztmEnterMethod, "Open>", {&view});
  Store(ztmInfo, "o1", {&view});
  view.CollapseMethod(8);
  EXPECT_EQ(view.GetCount(), 10);
  view.SetFocusedMsgIndex(8);
  view.ToggleCurrentMethod();
  EXPECT_EQ(view.GetCount(), 10);
  EXPECT_FALSE(view.Item(8).Collapsed);
}

TEST_F(MethodStructure, ToggleOnAnExitMovesTheFocusToItsEnter) {
  TFakeApplication app;
  TZTMessageView view(nullptr, &app);
  FillNested(view);
  view.SetFocusedMsgIndex(4);
  const int updatesBefore = app.CommandUpdates;
  view.ToggleCurrentMethod();
  EXPECT_EQ(view.GetFocusedMsgIndex(), 2);
  EXPECT_EQ(RowTexts(view), (Texts{"A>", "a1", "B>", "a2", "A<", "z"}));
  EXPECT_GT(app.CommandUpdates, updatesBefore);
  MessageSet.GotoRec(view.GetMsgRecNo(2));
  EXPECT_TRUE(view.IsCurrentMethodCollapsed());

  view.ToggleCurrentMethod();
  EXPECT_EQ(RowTexts(view), FFull);
  EXPECT_EQ(SelectedRows(view), Ints{2});
  MessageSet.GotoRec(view.GetMsgRecNo(2));
  EXPECT_FALSE(view.IsCurrentMethodCollapsed());

  // Toggling an info row does nothing.
  view.SetFocusedMsgIndex(3);
  view.ToggleCurrentMethod();
  EXPECT_EQ(RowTexts(view), FFull);
}

TEST_F(MethodStructure, ExpandAndCollapseAll) {
  TFakeApplication app;
  TZTMessageView view(nullptr, &app);
  FillNested(view);
  Store(ztmEnterMethod, "C>", {&view});
  Store(ztmInfo, "c1", {&view});
  Store(ztmExitMethod, "C<", {&view});

  view.CollapseAllMethods();
  EXPECT_EQ(RowTexts(view), (Texts{"A>", "z", "C>"}));
  EXPECT_TRUE(view.Item(0).Collapsed);
  EXPECT_TRUE(view.Item(2).Collapsed);
  EXPECT_TRUE(view.Item(8).Collapsed);
  // The focus ends on the last method collapsed.
  EXPECT_EQ(view.GetFocusedMsgIndex(), 2);
  EXPECT_EQ(SelectedRows(view), Ints{2});

  // From the focused row: methods above it stay as they are.
  view.ExpandAllMethods(false);
  EXPECT_EQ(RowTexts(view), (Texts{"A>", "z", "C>", "c1", "C<"}));
  EXPECT_TRUE(view.Item(0).Collapsed);

  // From the start, nested methods open too.
  view.ExpandAllMethods(true);
  EXPECT_EQ(RowTexts(view), (Texts{"A>", "a1", "B>", "b1", "B<", "a2", "A<", "z", "C>", "c1", "C<"}));
  for (int32_t item = 0; item < view.ItemCount(); ++item) EXPECT_FALSE(view.Item(item).Collapsed);

  // Collapsing all from a partly collapsed state opens each method once on the way.
  view.CollapseMethod(2);
  view.CollapseAllMethods();
  EXPECT_EQ(RowTexts(view), (Texts{"A>", "z", "C>"}));
  EXPECT_TRUE(view.Item(2).Collapsed);
  EXPECT_EQ(view.UpdateCount(), 0);
}

TEST_F(MethodStructure, MatchingMethodJumpsBetweenEnds) {
  TZTRecordingPromptService prompts;
  TZTPromptServiceGuard guard(&prompts);
  TZTMessageView view;
  FillNested(view);

  view.SetFocusedMsgIndex(0);
  view.FindMatchingMethod();
  EXPECT_EQ(view.GetFocusedMsgIndex(), 6);
  EXPECT_EQ(SelectedRows(view), Ints{6});
  view.FindMatchingMethod();
  EXPECT_EQ(view.GetFocusedMsgIndex(), 0);
  view.SetFocusedMsgIndex(4);
  view.FindMatchingMethod();
  EXPECT_EQ(view.GetFocusedMsgIndex(), 2);
  EXPECT_EQ(prompts.Beeps, 0);

  // On a collapsed Enter nothing happens, and the selection stays.
  view.CollapseMethod(2);
  view.RemoveAllSelections();
  view.Select(1, true);
  view.SetFocusedMsgIndex(2);
  view.FindMatchingMethod();
  EXPECT_EQ(view.GetFocusedMsgIndex(), 2);
  EXPECT_EQ(SelectedRows(view), Ints{1});

  // No partner on show: a beep, and the selection is gone.
  TZTMessageView lonely;
  Store(ztmInfo, "x", {&lonely});
  Store(ztmExitMethod, "lonely<", {&lonely});
  lonely.Select(0, true);
  lonely.SetFocusedMsgIndex(1);
  lonely.FindMatchingMethod();
  EXPECT_EQ(prompts.Beeps, 1);
  EXPECT_EQ(SelectedRows(lonely), Ints{});
  EXPECT_EQ(lonely.GetFocusedMsgIndex(), 1);
}

TEST_F(MethodStructure, CallStackWalksUpThroughOpenMethods) {
  TZTMessageView view;
  Store(ztmEnterMethod, "A>", {&view});  // 0
  Store(ztmEnterMethod, "B>", {&view});  // 1
  Store(ztmInfo, "b1", {&view});         // 2
  Store(ztmExitMethod, "B<", {&view});   // 3
  Store(ztmEnterMethod, "C>", {&view});  // 4
  Store(ztmInfo, "c1", {&view});         // 5

  TZTCallStackList stack;
  view.SetFocusedMsgIndex(5);
  view.TraverseCallStack(stack);
  ASSERT_EQ(stack.size(), 2u);
  EXPECT_EQ(stack[0].Text, "C>");
  EXPECT_EQ(stack[0].Row, 4);
  EXPECT_EQ(stack[1].Text, "A>");
  EXPECT_EQ(stack[1].Row, 0);

  // A focused Enter isn't its own caller.
  view.SetFocusedMsgIndex(4);
  view.TraverseCallStack(stack);
  ASSERT_EQ(stack.size(), 1u);
  EXPECT_EQ(stack[0].Text, "A>");

  // On row 0 and in a one-row view the list keeps its old lines.
  view.SetFocusedMsgIndex(0);
  view.TraverseCallStack(stack);
  ASSERT_EQ(stack.size(), 1u);
  TZTMessageView single;
  Store(ztmInfo, "only", {&single});
  single.SetFocusedMsgIndex(0);
  single.TraverseCallStack(stack);
  EXPECT_EQ(stack.size(), 1u);

  // The current method is the innermost Enter around the focus.
  view.SetFocusedMsgIndex(5);
  view.FindCurrentMethod();
  EXPECT_EQ(view.GetFocusedMsgIndex(), 4);
  EXPECT_EQ(SelectedRows(view), Ints{4});
}

TEST_F(MethodStructure, CallStackUnderAResetStopsAtTheFirstLevelZero) {
  TZTMessageView view;
  Store(ztmEnterMethod, "old A>", {&view});
  Store(ztmEnterMethod, "old B>", {&view});
  view.ResetIndentLevel();
  Store(ztmResetSeparator, "=", {&view});
  Store(ztmEnterMethod, "D>", {&view});
  Store(ztmEnterMethod, "E>", {&view});
  Store(ztmEnterMethod, "F>", {&view});
  Store(ztmInfo, "deep", {&view});
  ASSERT_EQ(RowIndents(view), (Ints{0, 1, 0, 0, 1, 2, 3}));
  view.SetFocusedMsgIndex(6);
  TZTCallStackList stack;
  view.TraverseCallStack(stack);
  ASSERT_EQ(stack.size(), 3u);
  EXPECT_EQ(stack[0].Text, "F>");
  EXPECT_EQ(stack[1].Text, "E>");
  EXPECT_EQ(stack[2].Text, "D>");
}

TEST_F(MethodStructure, NavigationWalksRowsAndOpensWhatASearchNeeds) {
  TZTRecordingPromptService prompts;
  TZTPromptServiceGuard guard(&prompts);
  TZTMessageView view;
  FillNested(view);
  view.CollapseMethod(0);
  ASSERT_EQ(RowTexts(view), (Texts{"A>", "z"}));

  // A search goes on through collapsed methods and leaves them open.
  TZTRegEx regex;
  regex.Compile("^B1$");
  view.FindNext(true, "^B1$", false, false, true, regex);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 3);
  EXPECT_EQ(RowTexts(view), FFull);
  view.FindNext(false, "^B1$", false, false, true, regex);
  ASSERT_EQ(prompts.Prompts.size(), 1u);
  EXPECT_EQ(prompts.Prompts.front().Text, QStringLiteral("Search string '^B1$' not found."));

  // The navigator looks at rows only; Info messages from the end backwards.
  view.JumpToMessage(ztJumpLast, ztmInfo, -1);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 7);
  view.JumpToMessage(ztJumpPrevious, ztmInfo, -1);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 5);
  bool hasNext = false, hasPrevious = false;
  view.UpdateNavigation(ztmEnterMethod, -1, hasNext, hasPrevious);
  EXPECT_FALSE(hasNext);
  EXPECT_TRUE(hasPrevious);
  // Next from the last row walks nothing and leaves no selection.
  view.SetFocusedMsgIndex(7);
  view.JumpToMessage(ztJumpNext, ztmInfo, -1);
  EXPECT_EQ(SelectedRows(view), Ints{});
}

}  // namespace
}  // namespace zentrail::test
