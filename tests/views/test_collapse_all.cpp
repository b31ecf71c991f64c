// Collapse All in one pass must leave a view exactly as the row-by-row walk does (open each
// collapsed method once, collapse at every Exit, continue after the Enter): the same rows, the same
// collapsed methods, the same focus. Compared on many random structures, nested, unclosed, with
// Exits whose Enter the filter refused and methods collapsed beforehand.
#include <gtest/gtest.h>

#include <random>

#include "ViewTestSupport.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

// The walk as the rules tell it, through the view's own operations; false if it did not end.
bool CollapseAllStepByStep(TZTMessageView& view) {
  int32_t row = 0;
  for (int steps = 0; row < view.NumItems(); ++steps) {
    if (steps > 20000) return false;
    view.SelectRecord(row);
    const int32_t type = MessageSet.GetMsgType();
    const bool collapsed = view.Item(view.ItemOfRow(row)).Collapsed;
    if (collapsed && type == ztmEnterMethod) {
      view.ExpandMethod(row);
    } else if (!collapsed && type == ztmExitMethod && view.CollapseAtExit(row)) {
      row = view.GetFocusedMsgIndex() + 1;
      continue;
    }
    ++row;
  }
  view.RemoveAllSelections();
  if (view.GetFocusedMsgIndex() >= 0) view.SelectItem(view.GetFocusedMsgIndex(), true);
  return true;
}

struct TShape {
  std::vector<int32_t> Rows;  // record numbers, top to bottom
  std::vector<bool> Collapsed;
  int32_t Focus;
  std::vector<int32_t> Selected;
  bool operator==(const TShape&) const = default;
};

TShape ShapeOf(TZTMessageView& view) {
  TShape s;
  for (int32_t row = 0; row < view.GetCount(); ++row) s.Rows.push_back(view.GetMsgRecNo(row));
  for (int32_t item = 0; item < view.ItemCount(); ++item) s.Collapsed.push_back(view.Item(item).Collapsed);
  s.Focus = view.GetFocusedMsgIndex();
  for (int32_t row = 0; row < view.GetCount(); ++row)
    if (view.GetSelected(row)) s.Selected.push_back(row);
  return s;
}

}  // namespace

class CollapseAll : public TViewTest {};

TEST_F(CollapseAll, OnePassLeavesTheViewAsTheStepByStepWalkDoes) {
  std::mt19937 random(20240607);
  TFakeApplication app;
  int compared = 0;
  for (int round = 0; round < 200; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    MessageSet.Close();
    MessageSet.Open();
    app.AutoCollapse = round % 3 == 0;
    TZTMessageView stepwise(nullptr, &app), onePass(nullptr, &app);
    stepwise.InitView();
    onePass.InitView();
    // Every other round the views show one of two threads, so that some Exits and Enters of the
    // stream are missing from them.
    if (round % 2 == 1) {
      TZTFilterCriteria c;
      c.CheckThreadName = true;
      c.ThreadName = "a";
      stepwise.SetFilterCriteria(c);
      onePass.SetFilterCriteria(c);
    }
    const int count = 20 + static_cast<int>(random() % 200);
    int depth = 0;
    for (int i = 0; i < count; ++i) {
      const unsigned pick = random() % 10;
      // Deep nesting as often as flat runs; Exits at depth 0 are strays.
      const int32_t type = pick < 4 ? ztmEnterMethod : pick < 7 || depth > 6 ? ztmExitMethod : ztmInfo;
      depth = std::max(0, depth + (type == ztmEnterMethod ? 1 : type == ztmExitMethod ? -1 : 0));
      Store(type, std::to_string(i), {&stepwise, &onePass}, ztmText, random() % 4 == 0 ? "b" : "a");
      // Now and then a reset separator makes levels disagree with the pairs.
      if (round % 4 == 3 && random() % 20 == 0) {
        stepwise.ResetIndentLevel();
        onePass.ResetIndentLevel();
      }
    }
    // Some methods collapsed beforehand, the same in both.
    for (int k = 0; k < 8 && stepwise.GetCount() > 0; ++k) {
      const int32_t row = static_cast<int32_t>(random() % static_cast<unsigned>(stepwise.GetCount()));
      for (TZTMessageView* v : {&stepwise, &onePass}) {
        v->SetFocusedMsgIndex(row);
        v->ToggleCurrentMethod();
      }
    }
    const int32_t focus = stepwise.GetCount() > 0 ? static_cast<int32_t>(random() % static_cast<unsigned>(stepwise.GetCount())) : -1;
    stepwise.SetFocusedMsgIndex(focus);
    onePass.SetFocusedMsgIndex(focus);
    ASSERT_EQ(ShapeOf(stepwise), ShapeOf(onePass)) << "the same view before";

    const bool ended = CollapseAllStepByStep(stepwise);
    onePass.CollapseAllMethods();
    // Only disagreeing levels can keep the walk going for ever; the one pass ends regardless.
    if (round % 4 != 3) {
      ASSERT_TRUE(ended);
    }
    if (!ended) continue;
    ++compared;
    const TShape expected = ShapeOf(stepwise), actual = ShapeOf(onePass);
    ASSERT_EQ(actual.Rows, expected.Rows);
    ASSERT_EQ(actual.Collapsed, expected.Collapsed);
    ASSERT_EQ(actual.Focus, expected.Focus);
    ASSERT_EQ(actual.Selected, expected.Selected);
  }
  EXPECT_GT(compared, 180);
}

TEST_F(CollapseAll, EndsWhereLevelsAndPairsDisagree) {
  // A reset of the indent level inside a method makes the level of its Exit disagree with the
  // counting that pairs it: the Exit at level 0 finds the inner Enter, whose method by counting
  // ends before it. The walk must not find that Enter again and again.
  TFakeApplication app;
  TZTMessageView view(nullptr, &app);
  view.InitView();
  Store(ztmEnterMethod, "outer", {&view});
  Store(ztmInfo, "reset", {&view});
  view.ResetIndentLevel();
  Store(ztmEnterMethod, "inner", {&view});
  Store(ztmExitMethod, "inner", {&view});
  Store(ztmExitMethod, "outer", {&view});
  EXPECT_EQ(RowIndents(view), (std::vector<int32_t>{0, 1, 0, 0, 0}));
  view.CollapseAllMethods();
  // The outer Exit finds the collapsed inner Enter too and goes with it; the outer method stays open.
  EXPECT_EQ(RowTexts(view), (std::vector<std::string>{"outer", "reset", "inner"}));
  EXPECT_TRUE(view.IsCollapsed(2));
  EXPECT_EQ(view.GetFocusedMsgIndex(), 2);
}
