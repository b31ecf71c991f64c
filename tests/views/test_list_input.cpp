// The list control under a view: mouse and keyboard selection through real input events on the
// offscreen widget, the wheel, the update counter, row bookkeeping and what screen readers see.

#include <QAccessible>
#include <QApplication>
#include <QMouseEvent>
#include <QTest>
#include <QWheelEvent>
#include <algorithm>

#include "ViewTestSupport.h"

namespace zentrail::test {
namespace {

using Ints = std::vector<int32_t>;

class ListInput : public TViewTest {
 protected:
  void Fill(TZTMessageView& view, int count) {
    for (int i = 0; i < count; ++i) Store(ztmInfo, "row " + std::to_string(i), {&view});
  }
  static QPoint RowPoint(TZTMessageView& view, int32_t row) {
    const QRect r = view.ItemRect(row);
    return QPoint(60, r.center().y());
  }
  static void Click(TZTMessageView& view, int32_t row, Qt::KeyboardModifiers mods = Qt::NoModifier) {
    QTest::mouseClick(view.viewport(), Qt::LeftButton, mods, RowPoint(view, row));
  }
  static void MoveHeld(TZTMessageView& view, const QPoint& pos) {
    QMouseEvent move(QEvent::MouseMove, QPointF(pos), QPointF(view.viewport()->mapToGlobal(pos)), Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.viewport(), &move);
  }
};

TEST_F(ListInput, MouseSelectsWithShiftCtrlAndDrag) {
  TFakeApplication app;
  TZTMessageView view(nullptr, &app);
  view.resize(500, 400);
  view.show();
  Fill(view, 30);

  Click(view, 2);
  EXPECT_EQ(SelectedRows(view), Ints{2});
  EXPECT_EQ(view.GetFocusedMsgIndex(), 2);
  Click(view, 5, Qt::ShiftModifier);
  EXPECT_EQ(SelectedRows(view), (Ints{2, 3, 4, 5}));
  EXPECT_EQ(view.GetFocusedMsgIndex(), 5);
  Click(view, 3, Qt::ControlModifier);
  EXPECT_EQ(SelectedRows(view), (Ints{2, 4, 5}));
  Click(view, 8, Qt::ControlModifier);
  EXPECT_EQ(SelectedRows(view), (Ints{2, 4, 5, 8}));
  // Shift range from the anchor, which the Ctrl click moved to row 8.
  Click(view, 6, Qt::ShiftModifier);
  EXPECT_EQ(SelectedRows(view), (Ints{6, 7, 8}));

  // A drag extends from the pressed row and shrinks again when the pointer comes back.
  QTest::mousePress(view.viewport(), Qt::LeftButton, Qt::NoModifier, RowPoint(view, 1));
  MoveHeld(view, RowPoint(view, 6));
  EXPECT_EQ(SelectedRows(view), (Ints{1, 2, 3, 4, 5, 6}));
  MoveHeld(view, RowPoint(view, 3));
  EXPECT_EQ(SelectedRows(view), (Ints{1, 2, 3}));
  QTest::mouseRelease(view.viewport(), Qt::LeftButton, Qt::NoModifier, RowPoint(view, 3));
  EXPECT_EQ(view.GetFocusedMsgIndex(), 3);

  // A press in the header reports the click and leaves the selection alone.
  int headerX = -1;
  view.OnClickHeader = [&](int x) { headerX = x; };
  QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(40, view.HeaderHeight() / 2));
  EXPECT_EQ(headerX, 40);
  EXPECT_EQ(SelectedRows(view), (Ints{1, 2, 3}));

  // The details follow once input settles, and a burst of changes brings one update only.
  QTRY_VERIFY_WITH_TIMEOUT(app.DetailsUpdates >= 1, 2000);
  const int before = app.DetailsUpdates;
  view.SelectAll();
  QTest::keyClick(&view, Qt::Key_Down);
  QTest::keyClick(&view, Qt::Key_Down);
  QCoreApplication::processEvents();
  EXPECT_EQ(app.DetailsUpdates, before + 1);
}

TEST_F(ListInput, DragBelowTheRowsScrollsAndExtends) {
  TZTMessageView view;
  view.resize(500, 200);
  view.show();
  Fill(view, 100);
  QTest::mousePress(view.viewport(), Qt::LeftButton, Qt::NoModifier, RowPoint(view, 0));
  MoveHeld(view, QPoint(60, view.viewport()->height() + 20));
  EXPECT_EQ(view.TopIndex(), 1);
  const int32_t focus = view.GetFocusedMsgIndex();
  EXPECT_EQ(focus, view.VisibleRows());
  EXPECT_EQ(static_cast<int32_t>(SelectedRows(view).size()), focus + 1);
  QTRY_VERIFY_WITH_TIMEOUT(view.TopIndex() > 2, 3000);
  QTest::mouseRelease(view.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(60, 10));
}

TEST_F(ListInput, KeyboardMovesAndExtends) {
  TZTMessageView view;
  view.resize(500, 300);
  view.show();
  Fill(view, 50);
  const int32_t page = view.VisibleRows() - 1;

  QTest::keyClick(&view, Qt::Key_Down);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 0);
  EXPECT_EQ(SelectedRows(view), Ints{0});
  QTest::keyClick(&view, Qt::Key_Down);
  QTest::keyClick(&view, Qt::Key_Down);
  EXPECT_EQ(SelectedRows(view), Ints{2});
  QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
  QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_EQ(SelectedRows(view), (Ints{2, 3, 4}));
  QTest::keyClick(&view, Qt::Key_Up, Qt::ShiftModifier);
  EXPECT_EQ(SelectedRows(view), (Ints{2, 3}));

  QTest::keyClick(&view, Qt::Key_PageDown);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 3 + page);
  EXPECT_EQ(SelectedRows(view), Ints{3 + page});
  QTest::keyClick(&view, Qt::Key_End);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 49);
  EXPECT_EQ(view.TopIndex(), 50 - view.VisibleRows());
  QTest::keyClick(&view, Qt::Key_Down);  // never past the last row
  EXPECT_EQ(view.GetFocusedMsgIndex(), 49);
  QTest::keyClick(&view, Qt::Key_Home, Qt::ShiftModifier);
  EXPECT_EQ(SelectedRows(view).size(), 50u);
  QTest::keyClick(&view, Qt::Key_Home);
  EXPECT_EQ(SelectedRows(view), Ints{0});
  EXPECT_EQ(view.TopIndex(), 0);

  // With a horizontal bar Left and Right scroll sideways and the focus stays.
  QTest::keyClick(&view, Qt::Key_Right);
  QTest::keyClick(&view, Qt::Key_Right);
  EXPECT_EQ(view.HorzPosition(), 2);
  QTest::keyClick(&view, Qt::Key_Left);
  EXPECT_EQ(view.HorzPosition(), 1);
  EXPECT_EQ(view.GetFocusedMsgIndex(), 0);

  // An empty list ignores every key but the sideways ones.
  TZTMessageView empty;
  empty.resize(300, 200);
  empty.show();
  QTest::keyClick(&empty, Qt::Key_Down);
  QTest::keyClick(&empty, Qt::Key_End);
  EXPECT_EQ(empty.GetFocusedMsgIndex(), -1);
}

TEST_F(ListInput, WheelMovesTheTopRow) {
  TZTMessageView view;
  view.resize(400, 200);
  view.show();
  Fill(view, 100);
  const QPoint pos(50, 50);
  QWheelEvent down(QPointF(pos), QPointF(view.viewport()->mapToGlobal(pos)), QPoint(), QPoint(0, -120), Qt::NoButton,
                   Qt::NoModifier, Qt::NoScrollPhase, false);
  QApplication::sendEvent(view.viewport(), &down);
  const int32_t lines = QApplication::wheelScrollLines();
  EXPECT_EQ(view.TopIndex(), lines);
  QWheelEvent up(QPointF(pos), QPointF(view.viewport()->mapToGlobal(pos)), QPoint(), QPoint(0, 240), Qt::NoButton,
                 Qt::NoModifier, Qt::NoScrollPhase, false);
  QApplication::sendEvent(view.viewport(), &up);
  EXPECT_EQ(view.TopIndex(), 0);
}

TEST_F(ListInput, UpdateCounterAndSelectionHandlerFailures) {
  TZTCustomVirtualListBox list;
  list.resize(300, 200);
  list.SetNumItems(10);
  list.BeginUpdate();
  list.BeginUpdate();
  EXPECT_EQ(list.UpdateCount(), 2);
  list.SetNumItems(40);
  list.EndUpdate();
  EXPECT_TRUE(list.Updating());
  list.EndUpdate();
  EXPECT_EQ(list.UpdateCount(), 0);
  try {
    list.EndUpdate();
    FAIL() << "an unmatched EndUpdate must fail";
  } catch (const EZTListBoxError& e) {
    EXPECT_STREQ(e.what(), "Mismatched BeginUpdate/EndUpdate");
  }
  EXPECT_EQ(list.UpdateCount(), 0);

  // Multi-select without a handler is a programming error; single-select just ignores it.
  try {
    list.SelectItem(1, true);
    FAIL() << "selecting without OnSelect must fail";
  } catch (const EZTListBoxError& e) {
    EXPECT_STREQ(e.what(), "EOnSelectNotAssigned");
  }
  list.SetMultiSelect(false);
  EXPECT_NO_THROW(list.SelectItem(1, true));

  // A request for a row already selected does not reach the handler.
  std::vector<std::pair<int32_t, bool>> calls;
  std::vector<bool> flags(40, false);
  list.SetMultiSelect(true);
  list.OnIsSelected = [&](int32_t row, bool& s) { s = row >= 0 && flags[static_cast<size_t>(row)]; };
  list.OnSelect = [&](int32_t row, bool s) {
    calls.emplace_back(row, s);
    if (row >= 0) flags[static_cast<size_t>(row)] = s;
  };
  list.SelectItem(4, true);
  list.SelectItem(4, true);
  EXPECT_EQ(calls.size(), 1u);
  list.DeselectAll();
  EXPECT_EQ(calls.back(), std::make_pair(-1, false));
}

TEST_F(ListInput, RowBookkeepingOfTheControl) {
  TZTCustomVirtualListBox list;
  list.resize(300, 10 * 17 + 40);
  list.show();
  list.SetAutoRowHeight(false);
  list.SetRowHeight(17);
  list.SetNumItems(100);
  EXPECT_EQ(list.ItemIndex(), -1);

  // A shorter list pulls the top row back so the last row is at the bottom.
  list.SetTopIndex(80);
  EXPECT_EQ(list.TopIndex(), 80);
  list.SetNumItems(50);
  EXPECT_EQ(list.TopIndex(), 50 - list.VisibleRows());

  // Deleting the focused row gives the focus to the row that takes its place.
  list.SetItemIndex(20);
  list.DeleteItemsAt(3, 19);
  EXPECT_EQ(list.NumItems(), 47);
  EXPECT_EQ(list.ItemIndex(), 19);
  list.SetItemIndex(30);
  list.InsertItemsAt(5, 10);
  EXPECT_EQ(list.ItemIndex(), 35);

  // Points to rows: above the rows and below the last row.
  list.SetTopIndex(0);
  EXPECT_EQ(list.ItemAtPos(QPoint(5, 17 * 3 + 2), true), 3);
  list.SetShowHeader(true);
  EXPECT_EQ(list.ItemAtPos(QPoint(5, 5), true), -1);
  EXPECT_EQ(list.ItemAtPos(QPoint(5, 5), false), 0);
  list.SetNumItems(2);
  EXPECT_EQ(list.ItemAtPos(QPoint(5, 150), true), -1);
  EXPECT_EQ(list.ItemAtPos(QPoint(5, 150), false), 1);
  EXPECT_EQ(list.ItemString(0), QStringLiteral("- OnGetItem -"));
  list.SetRowHeight(0);
  EXPECT_EQ(list.RowHeight(), 1);
}

TEST_F(ListInput, ScreenReadersSeeAList) {
  TZTMessageView view;
  view.resize(400, 300);
  view.show();
  Fill(view, 12);
  view.Select(3, true);
  view.SetFocusedMsgIndex(3);
  QAccessibleInterface* list = QAccessible::queryAccessibleInterface(&view);
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->role(), QAccessible::List);
  EXPECT_EQ(list->childCount(), 12);
  QAccessibleInterface* row = list->child(3);
  ASSERT_NE(row, nullptr);
  EXPECT_EQ(row->role(), QAccessible::ListItem);
  EXPECT_EQ(row->text(QAccessible::Name), QStringLiteral("row 3"));
  EXPECT_TRUE(row->state().selected);
  EXPECT_FALSE(list->child(4)->state().selected);
  EXPECT_EQ(list->indexOfChild(row), 3);
  EXPECT_EQ(list->child(3), row);  // made once, then kept
  EXPECT_EQ(list->child(12), nullptr);
  const QPoint inRow = view.viewport()->mapToGlobal(view.ItemRect(5).center());
  QAccessibleInterface* hit = list->childAt(inRow.x(), inRow.y());
  ASSERT_NE(hit, nullptr);
  EXPECT_EQ(hit->text(QAccessible::Name), QStringLiteral("row 5"));

  // The table side that readers use for counts and the selection.
  QAccessibleTableInterface* table = list->tableInterface();
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->rowCount(), 12);
  EXPECT_EQ(table->columnCount(), 1);
  EXPECT_TRUE(table->isRowSelected(3));
  EXPECT_EQ(table->selectedRows(), QList<int>{3});
  EXPECT_TRUE(table->selectRow(7));
  EXPECT_EQ(SelectedRows(view), (Ints{3, 7}));
  ASSERT_NE(row->tableCellInterface(), nullptr);
  EXPECT_EQ(row->tableCellInterface()->rowIndex(), 3);
  EXPECT_TRUE(row->tableCellInterface()->isSelected());
}

}  // namespace
}  // namespace zentrail::test

namespace zentrail::test {
namespace {

TEST(ListBoxOwnerData, RowsAskTheOwnerForTextColoursStatusAndTypedKeys) {
  TZTCustomVirtualListBox list;
  list.SetAutoRowHeight(false);
  list.SetRowHeight(20);
  list.resize(300, 6 * 20 + 10);
  list.show();
  list.SetNumItems(1000);
  std::vector<bool> flags(1000, false);
  std::vector<int32_t> asked;
  list.OnGetItem = [&](int32_t row, QString& text, void*&) {
    asked.push_back(row);
    text = QStringLiteral("item\t%1").arg(row);
  };
  list.OnIsSelected = [&](int32_t row, bool& s) { s = row >= 0 && flags[static_cast<size_t>(row)]; };
  list.OnSelect = [&](int32_t row, bool s) {
    if (row < 0)
      std::fill(flags.begin(), flags.end(), s);
    else
      flags[static_cast<size_t>(row)] = s;
  };
  list.OnGetItemColor = [](int32_t row, TColor& text, TColor& back) {
    text = 0x00000000;
    back = row % 2 ? 0x0000FF00 : 0x00FFFFFF;  // green on odd rows
  };
  list.OnGetItemStatus = [](int32_t row) { return row == 2 ? TZTItemStatus::Protected : TZTItemStatus::Normal; };
  list.SetSelectBackColor(0x00FF0000);  // blue
  flags[3] = true;

  const QImage image = list.grab().toImage();
  auto at = [&](int32_t row) {
    const QPoint p = list.viewport()->mapTo(&list, QPoint(150, list.ItemRect(row).center().y()));
    return QColor(image.pixel(p * image.devicePixelRatio()));
  };
  EXPECT_EQ(at(0), QColor(255, 255, 255));
  EXPECT_EQ(at(1), QColor(0, 255, 0));
  EXPECT_EQ(at(2), QColor(255, 0, 0));  // protected: the default $000000FF ground
  EXPECT_EQ(at(3), QColor(0, 0, 255));  // selected wins over the owner's colour
  // Only rows on screen were asked for their text.
  ASSERT_FALSE(asked.empty());
  EXPECT_LE(*std::max_element(asked.begin(), asked.end()), list.VisibleRows());
  EXPECT_EQ(list.ItemString(42), QStringLiteral("item\t42"));

  // A typed character goes to the owner, who names the row to move to.
  QChar typed;
  list.OnCharToItem = [&](QChar key, int32_t& row) {
    typed = key;
    row = 500;
  };
  QTest::keyClick(&list, Qt::Key_K);
  EXPECT_EQ(typed, QLatin1Char('k'));
  EXPECT_EQ(list.ItemIndex(), 500);
  EXPECT_TRUE(flags[500]);
  EXPECT_FALSE(flags[3]);
  EXPECT_GE(500, list.TopIndex());
  EXPECT_LT(500, list.TopIndex() + list.VisibleRows());
}

}  // namespace
}  // namespace zentrail::test
