// The view model over the real store: items, rows, indents, the type-43 rewrite, clearing, the
// indent reset, filtering at the door and the selection flags.


#include "ViewTestSupport.h"

namespace zentrail::test {
namespace {

using Texts = std::vector<std::string>;
using Ints = std::vector<int32_t>;

class ViewModel : public TViewTest {};

TEST_F(ViewModel, IndentsFollowNestingAndExitsPairWithTheirEnter) {
  TZTMessageView view;
  Store(ztmEnterMethod, "A", {&view});
  Store(ztmInfo, "a1", {&view});
  Store(ztmEnterMethod, "B", {&view});
  Store(ztmInfo, "b1", {&view});
  Store(ztmExitMethod, "B", {&view});
  Store(ztmExitMethod, "A", {&view});
  Store(ztmInfo, "x", {&view});
  Store(ztmExitMethod, "stray", {&view});
  Store(ztmInfo, "y", {&view});

  EXPECT_EQ(view.GetCount(), 9);
  EXPECT_EQ(view.ItemCount(), 9);
  EXPECT_EQ(RowIndents(view), (Ints{0, 1, 1, 2, 1, 0, 0, 0, 0}));
  EXPECT_EQ(view.IndentLevel(), 0);
  for (int32_t row = 0; row < view.GetCount(); ++row) EXPECT_EQ(view.GetMsgRecNo(row), row + 1);

  EXPECT_EQ(view.FindMethodEnd(0), 5);
  EXPECT_EQ(view.FindMethodEnd(2), 4);
  EXPECT_EQ(view.FindEnterRow(5), 0);
  EXPECT_EQ(view.FindEnterRow(4), 2);
  // An Exit with no Enter stays at the left edge and finds no partner: the sibling Exit above stops the walk.
  EXPECT_EQ(view.FindEnterRow(7), -1);
  EXPECT_THROW(view.GetMsgRecNo(9), std::out_of_range);
}

TEST_F(ViewModel, ExitCollapseIsRewrittenByTheFirstAcceptingViewOnly) {
  TFakeApplication app;
  TZTMessageView first(nullptr, &app), second(nullptr, &app);
  Store(ztmInfo, "before", {&first, &second});
  Store(ztmEnterMethod, "M", {&first, &second});
  Store(ztmInfo, "inside", {&first, &second});
  const int32_t exitRec = Store(ztmExitMethodCollapse, "M", {&first, &second});

  MessageSet.GotoRec(exitRec);
  EXPECT_EQ(MessageSet.GetMsgType(), ztmExitMethod);

  EXPECT_EQ(RowTexts(first), (Texts{"before", "M"}));
  EXPECT_TRUE(first.Item(1).Collapsed);
  EXPECT_EQ(first.GetFocusedMsgIndex(), 1);
  EXPECT_EQ(first.ItemCount(), 4);
  EXPECT_EQ(app.CommandUpdates, 1);

  EXPECT_EQ(RowTexts(second), (Texts{"before", "M", "inside", "M"}));
  EXPECT_FALSE(second.Item(1).Collapsed);
  EXPECT_EQ(second.GetFocusedMsgIndex(), -1);
}

TEST_F(ViewModel, AutoCollapseFoldsOnlyAdjacentPairs) {
  TFakeApplication app;
  app.AutoCollapse = true;
  TZTMessageView view(nullptr, &app);
  view.InitView();
  Store(ztmEnterMethod, "Pair", {&view});
  Store(ztmExitMethod, "Pair", {&view});
  EXPECT_EQ(RowTexts(view), (Texts{"Pair"}));
  EXPECT_TRUE(view.Item(0).Collapsed);

  // Three nested methods in one burst: only the innermost pair is adjacent.
  Store(ztmEnterMethod, "A", {&view});
  Store(ztmEnterMethod, "B", {&view});
  Store(ztmEnterMethod, "C", {&view});
  Store(ztmExitMethod, "C", {&view});
  Store(ztmExitMethod, "B", {&view});
  Store(ztmExitMethod, "A", {&view});
  EXPECT_EQ(RowTexts(view), (Texts{"Pair", "A", "B", "C", "B", "A"}));
  EXPECT_FALSE(view.Item(2).Collapsed);
  EXPECT_FALSE(view.Item(3).Collapsed);
  EXPECT_TRUE(view.Item(4).Collapsed);

  // A view that takes only the Exit has nothing to fold.
  TZTMessageView exitsOnly(nullptr, &app);
  exitsOnly.InitView();
  TZTFilterCriteria criteria;
  criteria.CheckMsgTypes = true;
  criteria.MsgTypeSet.set(ztmExitMethod);
  exitsOnly.SetFilterCriteria(criteria);
  Store(ztmEnterMethod, "Q", {&view, &exitsOnly});
  Store(ztmExitMethod, "Q", {&view, &exitsOnly});
  EXPECT_EQ(RowTexts(exitsOnly), (Texts{"Q"}));
  EXPECT_EQ(exitsOnly.GetIndentLevel(0), 0);
  EXPECT_FALSE(exitsOnly.Item(0).Collapsed);
}

TEST_F(ViewModel, ClearViewEmptiesOneViewAndResetsItsLevel) {
  TZTMessageView view, other;
  Store(ztmEnterMethod, "A", {&view, &other});
  Store(ztmEnterMethod, "B", {&view, &other});
  Store(ztmInfo, "deep", {&view, &other});
  view.SetFocusedMsgIndex(2);
  view.ToggleBookmark(3);
  view.SetSyncMsgRecNo(2);
  TZTFilterCriteria criteria;
  criteria.CheckAppName = true;
  criteria.AppName = "DEMO";
  view.SetFilterCriteria(criteria);
  ASSERT_EQ(view.GetBookmark(3), 3);

  view.ClearView();
  EXPECT_EQ(view.GetCount(), 0);
  EXPECT_EQ(view.ItemCount(), 0);
  EXPECT_EQ(view.IndentLevel(), 0);
  EXPECT_EQ(view.GetFocusedMsgIndex(), -1);
  EXPECT_EQ(view.GetBookmark(3), -1);
  EXPECT_EQ(view.UpdateCount(), 0);
  // The filter and the synchronised record stay.
  TZTFilterCriteria kept;
  view.GetFilterCriteria(kept);
  EXPECT_EQ(kept, criteria);
  EXPECT_EQ(view.SyncMsgRecNo(), 2);
  EXPECT_EQ(other.GetCount(), 3);
  EXPECT_EQ(MessageSet.GetRecordCount(), 3);

  // A later Exit stays at level 0.
  Store(ztmExitMethod, "B", {&view, &other});
  EXPECT_EQ(view.GetIndentLevel(0), 0);
  EXPECT_EQ(other.GetIndentLevel(3), 1);
}

TEST_F(ViewModel, ResetIndentLevelKeepsRowsAndPairing) {
  TZTMessageView view;
  Store(ztmEnterMethod, "A", {&view});
  Store(ztmInfo, "a", {&view});
  view.ResetIndentLevel();
  Store(ztmInfo, "after reset", {&view});
  Store(ztmExitMethod, "A", {&view});
  EXPECT_EQ(RowIndents(view), (Ints{0, 1, 0, 0}));
  // The pairing counts Enter and Exit messages and ignores levels.
  EXPECT_EQ(view.FindMethodEnd(0), 3);
  view.CollapseMethod(0);
  EXPECT_EQ(RowTexts(view), (Texts{"A"}));
}

TEST_F(ViewModel, FilterDecidesAtTheDoorAndAutoScrollFollowsOnlyTakers) {
  TFakeApplication app;
  app.AutoScroll = true;
  TZTMessageView all(nullptr, &app), errors(nullptr, &app), nothing(nullptr, &app);
  for (auto* v : {&all, &errors, &nothing}) {
    v->InitView();
    v->resize(400, 200);
    v->show();
  }
  TZTFilterCriteria onlyErrors;
  onlyErrors.CheckMsgTypes = true;
  onlyErrors.MsgTypeSet.set(ztmError);
  errors.SetFilterCriteria(onlyErrors);
  TZTFilterCriteria none;
  none.CheckMsgTypes = true;  // both sets empty: nothing passes, separators neither
  nothing.SetFilterCriteria(none);

  Store(ztmError, "first error", {&all, &errors, &nothing});
  for (int i = 0; i < 100; ++i) Store(ztmInfo, "info " + std::to_string(i), {&all, &errors, &nothing});
  Store(ztmSeparator, "-", {&all, &errors, &nothing});
  Store(ztmEnterMethod, "refused enter", {&all, &errors, &nothing});

  EXPECT_EQ(nothing.GetCount(), 0);
  EXPECT_EQ(nothing.IndentLevel(), 0);
  EXPECT_EQ(errors.GetCount(), 1);
  EXPECT_EQ(errors.IndentLevel(), 0);  // the refused Enter left no trace
  EXPECT_EQ(all.GetCount(), 103);
  EXPECT_EQ(all.TopIndex(), all.GetCount() - all.VisibleRows());
  EXPECT_EQ(errors.TopIndex(), 0);
}

TEST_F(ViewModel, ColumnsFitEverySenderWhenSendersTakeTurns) {
  TZTMessageView view;
  view.resize(600, 200);
  const std::string longName = "An application with a name much longer than the column header";
  const int needed = view.fontMetrics().horizontalAdvance(QString::fromStdString(longName)) + 4;
  auto arrive = [&](const std::string& app) {
    TZentrailMessage m;
    m.MsgText = "x";
    m.AppName = app;
    MessageSet.AppendMessage(m, FNextID++);
    view.AddMessage(false);
  };
  for (int i = 0; i < 6; ++i) arrive(i % 2 ? longName : "a");
  EXPECT_GE(view.ColumnWidth(3), needed);

  // Without the long name's rows the full measure narrows the column; the name's next arrival must
  // widen it again, though the same text was measured before.
  for (int row = 0; row < view.GetCount(); ++row) view.SetSelected(row, row % 2 == 1);
  view.DeleteSelection();
  view.UpdateColumnWidths();
  ASSERT_LT(view.ColumnWidth(3), needed);
  arrive("a");
  arrive(longName);
  EXPECT_GE(view.ColumnWidth(3), needed);

  // After a change of font the widths measured before tell nothing: a name a little longer than
  // the header fitted the old column, and twice as large it no longer fits the new header's width.
  TZTMessageView fresh;
  const std::string midName = "OrderServiceHost-01";
  auto arriveFresh = [&] {
    TZentrailMessage m;
    m.MsgText = "x";
    m.AppName = midName;
    MessageSet.AppendMessage(m, FNextID++);
    fresh.AddMessage(false);
  };
  arriveFresh();
  QFont larger = fresh.font();
  if (larger.pointSizeF() > 0)
    larger.setPointSizeF(larger.pointSizeF() * 2);
  else
    larger.setPixelSize(larger.pixelSize() * 2);
  fresh.setFont(larger);
  fresh.ClearView();
  const int neededLarger = fresh.fontMetrics().horizontalAdvance(QString::fromStdString(midName)) + 4;
  ASSERT_LT(fresh.ColumnWidth(3), neededLarger);
  arriveFresh();
  EXPECT_GE(fresh.ColumnWidth(3), neededLarger);
}

TEST_F(ViewModel, SelectionFlagsFollowItemsAndCollapsedRows) {
  TZTMessageView view;
  Store(ztmInfo, "zero", {&view});
  Store(ztmEnterMethod, "M", {&view});
  Store(ztmInfo, "m1", {&view});
  Store(ztmExitMethod, "M", {&view});
  Store(ztmInfo, "four", {&view});
  Store(ztmEnterMethod, "Open", {&view});
  view.CollapseMethod(1);
  ASSERT_EQ(RowTexts(view), (Texts{"zero", "M", "four", "Open"}));

  // Selecting a collapsed row selects its whole method, hidden items included.
  view.Select(1, true);
  EXPECT_TRUE(view.ItemSelected(1));
  EXPECT_TRUE(view.ItemSelected(2));
  EXPECT_TRUE(view.ItemSelected(3));
  EXPECT_FALSE(view.ItemSelected(4));
  // GetSelected and SetSelected look at the row's own item only.
  view.SetSelected(1, false);
  EXPECT_FALSE(view.ItemSelected(1));
  EXPECT_TRUE(view.ItemSelected(2));
  view.RemoveAllSelections();

  // A focused row counts as selected.
  view.Select(0, true);
  view.SetFocusedMsgIndex(2);
  EXPECT_EQ(view.GetSelCount(), 2);
  view.SetFocusedMsgIndex(0);
  EXPECT_EQ(view.GetSelCount(), 1);

  int32_t first = 0, last = 0;
  view.Select(2, true);
  view.GetFirstLastSelections(first, last);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(last, 5);

  // Row -1 means every item, visible or not.
  view.Select(-1, true);
  for (int32_t item = 0; item < view.ItemCount(); ++item) EXPECT_TRUE(view.ItemSelected(item));
  view.Select(-1, false);
  EXPECT_EQ(SelectedRows(view), Ints{});
  EXPECT_THROW(view.GetFirstLastSelections(first, last), std::out_of_range);

  // IsSelected answers false outside the rows instead of failing.
  EXPECT_FALSE(view.IsSelected(-1));
  EXPECT_FALSE(view.IsSelected(99));
}

}  // namespace
}  // namespace zentrail::test

#include <QApplication>
#include <QClipboard>

namespace zentrail::test {
namespace {

using Texts = std::vector<std::string>;
using Ints = std::vector<int32_t>;

class ViewEditing : public TViewTest {};

TEST_F(ViewEditing, DeleteAndCropTakeRowsOutOfOneViewOnly) {
  TZTMessageView view, other;
  Store(ztmInfo, "zero", {&view, &other});
  Store(ztmEnterMethod, "M>", {&view, &other});
  Store(ztmInfo, "m1", {&view, &other});
  Store(ztmExitMethod, "M<", {&view, &other});
  Store(ztmInfo, "four", {&view, &other});
  const int32_t fiveRec = Store(ztmInfo, "five", {&view, &other});
  Store(ztmInfo, "six", {&view, &other});
  view.CollapseMethod(1);
  ASSERT_EQ(RowTexts(view), (Texts{"zero", "M>", "four", "five", "six"}));
  view.SetFocusedMsgIndex(3);
  view.ToggleBookmark(0);
  view.Select(1, true);
  view.Select(3, true);
  view.SetFocusedMsgIndex(4);

  view.DeleteSelection();
  EXPECT_EQ(RowTexts(view), (Texts{"zero", "four", "six"}));
  EXPECT_EQ(view.ItemCount(), 3);
  EXPECT_EQ(view.GetCount(), 3);
  EXPECT_EQ(RowIndents(view), (Ints{0, 0, 0}));
  EXPECT_EQ(view.GetFocusedMsgIndex(), 1);
  EXPECT_EQ(SelectedRows(view), Ints{});
  EXPECT_EQ(view.UpdateCount(), 0);
  EXPECT_EQ(other.GetCount(), 7);
  EXPECT_EQ(MessageSet.GetRecordCount(), 7);
  // The bookmark still names the record; jumping finds the next later row.
  EXPECT_EQ(view.GetBookmark(0), fiveRec);
  view.JumpToBookmark(0);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 2);
  // New messages go on at the end as before.
  Store(ztmInfo, "seven", {&view, &other});
  EXPECT_EQ(RowTexts(view), (Texts{"zero", "four", "six", "seven"}));

  // Crop keeps what was selected.
  other.Select(2, true);
  other.Select(5, true);
  other.SetFocusedMsgIndex(2);
  other.CropToSelection();
  EXPECT_EQ(RowTexts(other), (Texts{"m1", "five"}));
  EXPECT_EQ(other.GetIndentLevel(0), 1);
  // With nothing but the focused row selected, that row alone remains.
  other.RemoveAllSelections();
  other.Select(1, true);
  other.SetFocusedMsgIndex(1);
  other.CropToSelection();
  EXPECT_EQ(RowTexts(other), (Texts{"five"}));
}

TEST_F(ViewEditing, CopyTakesSelectedItemsWithTheirIndent) {
  TZTMessageView view;
  Store(ztmEnterMethod, "A>", {&view});
  Store(ztmEnterMethod, "B>", {&view});
  Store(ztmInfo, "  deep text  ", {&view});
  Store(ztmExitMethod, "B<", {&view});
  QApplication::clipboard()->setText(QStringLiteral("untouched"));
  view.CopyToClipboard();
  EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("untouched"));
  view.Select(2, true);
  view.CopyToClipboard();
  EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("deep text"));
  view.CollapseMethod(1);
  view.RemoveAllSelections();
  view.Select(1, true);  // the collapsed method copies whole
  view.CopyToClipboard();
  EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("  B>\r\n      deep text  \r\n  B<\r\n"));
}

}  // namespace
}  // namespace zentrail::test
