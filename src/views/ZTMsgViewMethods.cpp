#include "ZTMsgView.h"

#include <algorithm>
#include <vector>

#include "ZTMsgViewPrivate.h"
#include "ZTPromptService.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

// ---- method structure --------------------------------------------------------------------------

int32_t TZTMessageView::FindMethodEnd(int32_t item) {
  TZentrailMessageSet& ms = MessageSet;
  int32_t depth = 1;
  const int32_t count = FItems.Count();
  for (int32_t i = item + 1; i < count; ++i) {
    ms.GotoRec(FItems.GetItems(i).RecNo);
    const int32_t type = ms.GetMsgType();
    if (type == ztmEnterMethod) {
      ++depth;
    } else if (type == ztmExitMethod || type == ztmExitMethodCollapse) {
      if (--depth == 0) return i;
    }
  }
  return -1;
}

int32_t TZTMessageView::FindEnterRow(int32_t row) {
  if (row < 0 || row >= FRows.Count()) return -1;
  TZentrailMessageSet& ms = MessageSet;
  const int32_t level = GetIndentLevel(row);
  for (int32_t r = row; r >= 0; --r) {
    if (GetIndentLevel(r) != level) continue;
    SelectRecord(r);
    const int32_t type = ms.GetMsgType();
    // A sibling Exit of the same level means this Exit's Enter isn't on show.
    if (r != row && type == ztmExitMethod) return -1;
    if (type == ztmEnterMethod) return r;
  }
  return -1;
}

void TZTMessageView::CollapseMethod(int32_t row) {
  if (row < 0 || row >= FRows.Count()) return;
  const int32_t item = FRows.GetItems(row);
  const int32_t end = FindMethodEnd(item);
  if (end < 0) return;
  TUpdateGuard guard(*this);
  // Rows hold ascending item indices, so the rows to go are one contiguous run after the Enter.
  auto& rows = FRows.Raw();
  const auto first = rows.begin() + row + 1;
  auto stop = std::upper_bound(first, rows.end(), end);
  // At least one row goes: for an Enter collapsed already, the Exit below that found it, which
  // otherwise would find it again and again.
  if (stop == first && first != rows.end()) ++stop;
  const int32_t removed = static_cast<int32_t>(stop - first);
  const int32_t focus = ItemIndex();
  rows.erase(first, stop);
  SetNumItems(FRows.Count());
  FItems.GetItems(item).Collapsed = true;
  // The focus stays on the message it was on; inside the method it goes to the Enter.
  if (focus > row) SetItemIndex(focus <= row + removed ? row : focus - removed);
}

void TZTMessageView::ExpandMethod(int32_t row) {
  if (row < 0 || row >= FRows.Count()) return;
  RemoveAllSelections();
  const int32_t item = FRows.GetItems(row);
  FItems.GetItems(item).Collapsed = false;
  int32_t end = FindMethodEnd(item);
  if (end < 0) end = FItems.Count() - 1;
  TUpdateGuard guard(*this);
  std::vector<int32_t> inserted;
  int32_t cursor = item + 1;
  while (cursor <= end) {
    inserted.push_back(cursor);
    if (FItems.GetItems(cursor).Collapsed) {
      // A nested collapsed method stays collapsed: skip to after its own Exit.
      const int32_t innerEnd = FindMethodEnd(cursor);
      cursor = (innerEnd < 0 ? end : innerEnd) + 1;
    } else {
      ++cursor;
    }
  }
  const int32_t focus = ItemIndex();
  auto& rows = FRows.Raw();
  rows.insert(rows.begin() + row + 1, inserted.begin(), inserted.end());
  SetNumItems(NumItems() + static_cast<int32_t>(inserted.size()));
  if (focus > row) SetItemIndex(focus + static_cast<int32_t>(inserted.size()));
  SelectItem(row, true);
}

bool TZTMessageView::CollapseAtExit(int32_t row) { return CollapseAtExitInternal(row, true); }

bool TZTMessageView::CollapseAtExitInternal(int32_t row, bool notify) {
  int32_t enter;
  {
    TUpdateGuard guard(*this);
    enter = FindEnterRow(row);
    if (enter >= 0) {
      // The focus follows the collapse on purpose, also for a collapse that a message asked for.
      SetItemIndex(enter);
      SetAnchorIndex(enter);
      CollapseMethod(enter);
    }
  }
  if (notify)
    if (IZentrailApplication* app = App()) app->UpdateCommandStates();
  return enter >= 0;
}

bool TZTMessageView::IsCurrentMethodCollapsed() {
  const int32_t focus = ItemIndex();
  if (focus < 0 || focus >= FRows.Count()) return false;
  return IsCollapsed(focus);
}

bool TZTMessageView::IsCollapsed(int32_t row) {
  SelectRecord(row);
  return FItems.GetItems(FRows.GetItems(row)).Collapsed && MessageSet.GetMsgType() == ztmEnterMethod;
}

void TZTMessageView::ToggleCurrentMethod() {
  ReleaseHint();
  if (!SelectCurrentRecord()) return;
  const int32_t row = ItemIndex();
  const int32_t type = MessageSet.GetMsgType();
  if (type == ztmEnterMethod || type == ztmCollapsedMethod) {
    {
      TUpdateGuard guard(*this);
      if (FItems.GetItems(FRows.GetItems(row)).Collapsed)
        ExpandMethod(row);
      else
        CollapseMethod(row);
    }
    if (IZentrailApplication* app = App()) app->UpdateCommandStates();
  } else if (type == ztmExitMethod) {
    CollapseAtExit(row);
  }
}

void TZTMessageView::ExpandAllMethods(bool fromStart) {
  {
    TUpdateGuard guard(*this);
    const int32_t startRow = fromStart ? 0 : std::max(ItemIndex(), 0);
    if (startRow < FRows.Count()) {
      // Opening every collapsed method from a row on, nested ones included, leaves every item from
      // that row's item to the end on a row of its own: the rows are rebuilt in one pass instead of
      // one insertion per method. Methods above the start row stay as they are.
      const int32_t firstItem = FRows.GetItems(startRow);
      auto& rows = FRows.Raw();
      rows.resize(static_cast<size_t>(startRow));
      rows.reserve(static_cast<size_t>(startRow) + static_cast<size_t>(FItems.Count() - firstItem));
      for (int32_t item = firstItem; item < FItems.Count(); ++item) {
        FItems.GetItems(item).Collapsed = false;
        rows.push_back(item);
      }
      SetNumItems(FRows.Count());
    }
    RemoveAllSelections();
    if (ItemIndex() >= 0) SelectItem(ItemIndex(), true);
  }
  if (IZentrailApplication* app = App()) app->UpdateCommandStates();
}

void TZTMessageView::CollapseAllMethods() {
  {
    TUpdateGuard guard(*this);
    // The walk over the rows that opens each collapsed method once and collapses every method at
    // its Exit, inner ones first, done in one pass: the rows behind the walk are a stack that a
    // collapse pops, the rows ahead of it a stack that an expansion pushes. Each item's type and
    // each method's end are read once, so the cost is linear in the number of items.
    const int32_t itemCount = FItems.Count();
    enum : uint8_t { kOther, kEnter, kExit, kOtherExit };
    std::vector<uint8_t> kind(static_cast<size_t>(itemCount));
    std::vector<int32_t> ends(static_cast<size_t>(itemCount), -1);
    {
      TZentrailMessageSet& ms = MessageSet;
      std::vector<int32_t> open;
      for (int32_t i = 0; i < itemCount; ++i) {
        ms.GotoRec(FItems.Raw()[static_cast<size_t>(i)].RecNo);
        const int32_t type = ms.GetMsgType();
        uint8_t k = type == ztmEnterMethod ? kEnter
                    : type == ztmExitMethod ? kExit
                    : type == ztmExitMethodCollapse ? kOtherExit
                                                    : kOther;
        kind[static_cast<size_t>(i)] = k;
        // An Exit closes the innermost open Enter: the end that counting from the Enter finds.
        if (k == kEnter) {
          open.push_back(i);
        } else if ((k == kExit || k == kOtherExit) && !open.empty()) {
          ends[static_cast<size_t>(open.back())] = i;
          open.pop_back();
        }
      }
    }
    auto& items = FItems.Raw();
    const auto& indents = FIndents.Raw();
    std::vector<int32_t> done;
    done.reserve(FRows.Raw().size());
    std::vector<int32_t> ahead(FRows.Raw().rbegin(), FRows.Raw().rend());
    std::vector<int32_t> content;
    const int32_t focusItem = ItemIndex() >= 0 && ItemIndex() < FRows.Count() ? FRows.GetItems(ItemIndex()) : -1;
    int32_t focusRow = -1;  // where the last collapse put the focus
    int64_t collapses = 0;
    while (!ahead.empty()) {
      const int32_t item = ahead.back();
      ahead.pop_back();
      done.push_back(item);
      const uint8_t k = kind[static_cast<size_t>(item)];
      TZTViewItem& entry = items[static_cast<size_t>(item)];
      if (k == kEnter && entry.Collapsed) {
        // Opened, so that what it holds is walked; a nested collapsed method comes as one row and
        // is opened when the walk reaches it.
        entry.Collapsed = false;
        const int32_t end = ends[static_cast<size_t>(item)] >= 0 ? ends[static_cast<size_t>(item)] : itemCount - 1;
        content.clear();
        for (int32_t i = item + 1; i <= end;) {
          content.push_back(i);
          const int32_t inner = ends[static_cast<size_t>(i)];
          i = items[static_cast<size_t>(i)].Collapsed && kind[static_cast<size_t>(i)] == kEnter ? (inner < 0 ? end : inner) + 1
                                                                                              : i + 1;
        }
        ahead.insert(ahead.end(), content.rbegin(), content.rend());
        continue;
      }
      if (k != kExit || entry.Collapsed) continue;
      // The Enter of the same level above this Exit; a sibling Exit of that level first means none.
      const int32_t level = indents[static_cast<size_t>(item)];
      const int32_t exitRow = static_cast<int32_t>(done.size()) - 1;
      int32_t enterRow = -1;
      for (int32_t r = exitRow; r >= 0; --r) {
        const int32_t other = done[static_cast<size_t>(r)];
        if (indents[static_cast<size_t>(other)] != level) continue;
        if (r != exitRow && kind[static_cast<size_t>(other)] == kExit) break;
        if (kind[static_cast<size_t>(other)] == kEnter) {
          enterRow = r;
          break;
        }
      }
      if (enterRow < 0) continue;
      // A bound for structures that no walk settles (levels that disagree with the pairs).
      if (++collapses > 4 * static_cast<int64_t>(itemCount) + 16) break;
      focusRow = enterRow;
      const int32_t enterItem = done[static_cast<size_t>(enterRow)];
      const int32_t end = ends[static_cast<size_t>(enterItem)];
      if (end < 0) {
        // Nothing to collapse: the walk goes on after the Enter, over rows it has walked.
        for (std::size_t r = done.size(); r > static_cast<size_t>(enterRow) + 1; --r) ahead.push_back(done[r - 1]);
        done.resize(static_cast<size_t>(enterRow) + 1);
        continue;
      }
      // The rows of the method go, up to its end as counting finds it, and at least one. Where a
      // reset indent level makes levels disagree with the counting, rows after the end remain
      // behind the walk; like the walk row by row, it takes them again after the Enter.
      std::size_t first = static_cast<size_t>(enterRow) + 1;
      std::size_t stop = first;
      while (stop < done.size() && done[stop] <= end) ++stop;
      bool removed = stop > first;
      if (stop == done.size())
        while (!ahead.empty() && ahead.back() <= end) {
          ahead.pop_back();
          removed = true;
        }
      if (!removed) {
        if (stop < done.size())
          ++stop;
        else if (!ahead.empty())
          ahead.pop_back();
      }
      for (std::size_t r = done.size(); r > stop; --r) ahead.push_back(done[r - 1]);
      done.resize(first);
      items[static_cast<size_t>(enterItem)].Collapsed = true;
    }
    // Rows the walk did not reach when it was cut short stay as they were.
    done.insert(done.end(), ahead.rbegin(), ahead.rend());
    FRows.Raw().swap(done);
    SetNumItems(FRows.Count());
    if (focusRow < 0 && focusItem >= 0) {
      // No collapse moved the focus: it stays on its message, which the openings shifted.
      const auto& rows = FRows.Raw();
      focusRow = static_cast<int32_t>(std::upper_bound(rows.begin(), rows.end(), focusItem) - rows.begin()) - 1;
    }
    if (focusRow >= 0) {
      SetItemIndex(focusRow);
      SetAnchorIndex(focusRow);
    }
    RemoveAllSelections();
    if (ItemIndex() >= 0) SelectItem(ItemIndex(), true);
  }
  if (IZentrailApplication* app = App()) app->UpdateCommandStates();
}

int32_t TZTMessageView::SearchSameLevel(int32_t fromRow, bool forward, int32_t wantType) {
  const int32_t level = GetIndentLevel(fromRow);
  const int32_t step = forward ? 1 : -1;
  for (int32_t r = fromRow + step; r >= 0 && r < NumItems(); r += step) {
    if (GetIndentLevel(r) != level) continue;
    SelectRecord(r);
    if (MessageSet.GetMsgType() == wantType) return r;
  }
  return -1;
}

void TZTMessageView::FindMatchingMethod() {
  const int32_t focus = ItemIndex();
  if (NumItems() == 0 || focus < 0) return;
  if (FItems.GetItems(FRows.GetItems(focus)).Collapsed) return;
  RemoveAllSelections();
  SelectRecord(focus);
  const bool enter = MessageSet.GetMsgType() == ztmEnterMethod;
  const int32_t target = enter ? SearchSameLevel(focus, true, ztmExitMethod) : SearchSameLevel(focus, false, ztmEnterMethod);
  if (target >= 0)
    JumpToItem(target);
  else
    PromptService().Beep();
}

void TZTMessageView::TraverseCallStack(TZTCallStackList& strings) {
  const int32_t focus = ItemIndex();
  // Row 0 has nothing above it: the list keeps what it had, as the pane empties itself.
  if (focus <= 0 || NumItems() < 2) return;
  strings.clear();
  TZentrailMessageSet& ms = MessageSet;
  int32_t level = GetIndentLevel(focus);
  for (int32_t row = focus; row >= 0; --row) {
    const int32_t indent = GetIndentLevel(row);
    if (indent >= level) continue;
    SelectRecord(row);
    if (ms.GetMsgType() != ztmEnterMethod) continue;
    strings.push_back({std::string(ms.GetMsgText()), row});
    --level;
    if (indent == 0) break;
  }
}

void TZTMessageView::FindCurrentMethod() {
  TZTCallStackList stack;
  TraverseCallStack(stack);
  if (!stack.empty()) JumpToItem(stack.front().Row);
}

}  // namespace zentrail
