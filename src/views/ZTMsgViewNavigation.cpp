#include "ZTMsgView.h"

#include <QString>
#include <algorithm>

#include "ZTMsgViewPrivate.h"
#include "ZTPromptService.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

// ---- navigation --------------------------------------------------------------------------------

void TZTMessageView::JumpToItem(int32_t row) {
  if (NumItems() <= 0) return;
  row = std::clamp(row, 0, NumItems() - 1);
  RemoveAllSelections();
  SelectItem(row, true);
  SetItemIndex(row);
  SetAnchorIndex(row);
  SetTopIndex(std::max(0, row - VisibleRows() / 2 + 1));
}

void TZTMessageView::JumpToMsgRecNo(int32_t recNo) {
  for (int32_t row = 0; row < NumItems(); ++row) {
    if (GetMsgRecNo(row) >= recNo) {
      JumpToItem(row);
      return;
    }
    // A target hidden in a collapsed method is uncovered by opening each one on the way.
    if (FItems.GetItems(FRows.GetItems(row)).Collapsed && IsCollapsed(row)) ExpandMethod(row);
  }
}

bool TZTMessageView::RowMatchesNavigator(int32_t row, int32_t msgType, int32_t msgContent) {
  SelectRecord(row);
  const int32_t type = MessageSet.GetMsgType();
  const int32_t content = MessageSet.GetMsgContent();
  if (msgType >= 100) return type >= 100;
  if (msgType == -1 && msgContent == -1) return false;
  if (msgType == -1) return content == msgContent;
  if (msgContent == -1) return type == msgType;
  return type == msgType && content == msgContent;
}

namespace {

// The first and last row of a walk and its step, for the four directions of the navigator.
bool WalkBounds(int32_t direction, int32_t focus, int32_t count, int32_t& start, int32_t& step) {
  switch (direction) {
    case ztJumpFirst: start = 0; step = 1; return true;
    case ztJumpPrevious:
      start = focus < 0 ? count - 1 : (focus == 0 ? 0 : focus - 1);
      step = -1;
      return true;
    case ztJumpNext:
      start = focus + 1 > count ? 0 : focus + 1;
      step = 1;
      return true;
    case ztJumpLast: start = count - 1; step = -1; return true;
    default: return false;
  }
}

}  // namespace

void TZTMessageView::JumpToMessage(int32_t direction, int32_t msgType, int32_t msgContent) {
  if (NumItems() <= 0) return;
  RemoveAllSelections();
  int32_t start, step;
  if (!WalkBounds(direction, ItemIndex(), NumItems(), start, step)) return;
  for (int32_t row = start; row >= 0 && row < NumItems(); row += step) {
    if (RowMatchesNavigator(row, msgType, msgContent)) {
      JumpToItem(row);
      return;
    }
  }
}

void TZTMessageView::JumpToTimeDiff(int32_t direction, int32_t threshold) {
  if (NumItems() < 2) return;
  RemoveAllSelections();
  int32_t start, step;
  if (!WalkBounds(direction, ItemIndex(), NumItems(), start, step)) return;
  TZentrailMessageSet& ms = MessageSet;
  for (int32_t row = start; row >= 0 && row < NumItems(); row += step) {
    if (row == 0) continue;
    SelectRecord(row);
    const int32_t time = ms.GetTimeStamp().Time;
    SelectRecord(row - 1);
    if (time - ms.GetTimeStamp().Time > threshold) {
      JumpToItem(row);
      return;
    }
  }
}

void TZTMessageView::UpdateNavigation(int32_t msgType, int32_t msgContent, bool& hasNext, bool& hasPrevious) {
  hasNext = hasPrevious = false;
  const int32_t focus = ItemIndex();
  if (NumItems() <= 0 || focus < 0) return;
  for (int32_t row = focus + 1; row < NumItems(); ++row)
    if (RowMatchesNavigator(row, msgType, msgContent)) {
      hasNext = true;
      break;
    }
  for (int32_t row = focus - 1; row >= 0; --row)
    if (RowMatchesNavigator(row, msgType, msgContent)) {
      hasPrevious = true;
      break;
    }
}

void TZTMessageView::FindNext(bool newSearch, const std::string& text, bool inDetails, bool fromCursor, bool forward,
                              const TZTRegEx& regex) {
  if (NumItems() <= 0 || text.empty()) return;
  const int32_t focus = ItemIndex();
  int32_t start;
  if (!newSearch)
    start = forward ? focus + 1 : focus - 1;
  else if (fromCursor)
    start = focus;
  else
    start = forward ? 0 : NumItems() - 1;
  start = std::clamp(start, 0, NumItems() - 1);
  TZentrailMessageSet& ms = MessageSet;
  // A walk over a large view: the lists are read directly, as every row is known to exist. The
  // vectors are fetched afresh after each expansion, which inserts rows.
  // Most messages carry no Details: whether the pattern matches an empty text is asked once.
  const bool emptyDetailsMatch = inDetails && regex.Match(std::string_view());
  auto matches = [&](int32_t row) {
    const auto& rows = FRows.Raw();
    ms.GotoRec(FItems.Raw()[static_cast<size_t>(rows[static_cast<size_t>(row)])].RecNo);
    if (regex.Match(ms.GetMsgText())) return true;
    if (!inDetails) return false;
    const std::string_view details = ms.GetDetails();
    return details.empty() ? emptyDetailsMatch : regex.Match(details);
  };
  // The store already stands on the row's record: only an Enter can be a collapsed method.
  auto collapsedEnter = [&](int32_t row) {
    return FItems.Raw()[static_cast<size_t>(FRows.Raw()[static_cast<size_t>(row)])].Collapsed &&
           ms.GetMsgType() == ztmEnterMethod;
  };
  if (forward) {
    for (int32_t row = start; row < NumItems(); ++row) {
      if (matches(row)) {
        JumpToItem(row);
        return;
      }
      // The walk goes on through what a collapsed method holds.
      if (collapsedEnter(row)) ExpandMethod(row);
    }
  } else {
    for (int32_t row = start; row >= 0; --row) {
      if (matches(row)) {
        JumpToItem(row);
        return;
      }
      if (collapsedEnter(row)) {
        // Opened from its Enter, the method's content lies below it: the walk jumps down to the
        // Exit and climbs through the content from the row above that.
        ExpandMethod(row);
        const int32_t exitRow = SearchSameLevel(row, true, ztmExitMethod);
        if (exitRow >= 0) row = exitRow;
      }
    }
  }
  PromptService().ShowMessage(this, QStringLiteral("Search string '%1' not found.").arg(QString::fromStdString(text)),
                              TZTPromptKind::Information);
}

// ---- bookmarks ---------------------------------------------------------------------------------

void TZTMessageView::ClearBookmarks() {
  FBookmarks.fill(-1);
  viewport()->update();
}

void TZTMessageView::ToggleBookmark(int32_t index) {
  if (index < 0 || index > 9) IndexFailure(index);
  if (ItemIndex() < 0) return;
  const int32_t recNo = GetMsgRecNo(ItemIndex());
  int32_t& mark = FBookmarks[static_cast<size_t>(index)];
  mark = mark == recNo ? -1 : recNo;
  viewport()->update();
}

void TZTMessageView::JumpToBookmark(int32_t index) {
  const int32_t recNo = GetBookmark(index);
  if (recNo >= 0) JumpToMsgRecNo(recNo);
}

int32_t TZTMessageView::GetBookmark(int32_t index) {
  if (index < 0 || index > 9) IndexFailure(index);
  return FBookmarks[static_cast<size_t>(index)];
}

int32_t TZTMessageView::FindBookmark(int32_t recNo) const {
  for (size_t i = 0; i < FBookmarks.size(); ++i)
    if (FBookmarks[i] == recNo) return static_cast<int32_t>(i);
  return -1;
}

}  // namespace zentrail
