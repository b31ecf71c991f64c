#include "ZTMsgView.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QTimer>
#include <algorithm>
#include <stdexcept>

#include "ZTOrganizer.h"
#include "ZTPromptService.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

namespace {

// Keeps an update bracket balanced on every way out, exceptions included.
class TUpdateGuard {
 public:
  explicit TUpdateGuard(TZTMessageView& view) : FView(view) { FView.BeginUpdate(); }
  ~TUpdateGuard() noexcept(false) {
    // An exception already on its way wins over a bracket failure.
    if (std::uncaught_exceptions() > 0) {
      try {
        FView.EndUpdate();
      } catch (...) {
      }
    } else {
      FView.EndUpdate();
    }
  }
  TUpdateGuard(const TUpdateGuard&) = delete;
  TUpdateGuard& operator=(const TUpdateGuard&) = delete;

 private:
  TZTMessageView& FView;
};

bool EqualAsciiNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    char x = a[i], y = b[i];
    if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
    if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
    if (x != y) return false;
  }
  return true;
}

bool InSet(const TZTFilterMsgTypeSet& set, int32_t code) {
  return code >= 0 && code < static_cast<int32_t>(set.size()) && set.test(static_cast<size_t>(code));
}

[[noreturn]] void IndexFailure(int32_t index) {
  throw std::out_of_range("List index out of bounds (" + std::to_string(index) + ")");
}

}  // namespace

// ---- lists -------------------------------------------------------------------------------------

int32_t TZTViewItemList::Add(const TZTViewItem& item) {
  FItems.push_back(item);
  return Count() - 1;
}

void TZTViewItemList::Insert(int32_t index, const TZTViewItem& item) {
  if (index < 0 || index > Count()) IndexFailure(index);
  FItems.insert(FItems.begin() + index, item);
}

TZTViewItem& TZTViewItemList::GetItems(int32_t index) {
  if (index < 0 || index >= Count()) IndexFailure(index);
  return FItems[static_cast<size_t>(index)];
}

const TZTViewItem& TZTViewItemList::GetItems(int32_t index) const {
  if (index < 0 || index >= Count()) IndexFailure(index);
  return FItems[static_cast<size_t>(index)];
}

void TZTViewItemList::SetItems(int32_t index, const TZTViewItem& item) { GetItems(index) = item; }

void TZTViewItemList::Delete(int32_t index) {
  if (index < 0 || index >= Count()) IndexFailure(index);
  FItems.erase(FItems.begin() + index);
}

int32_t TZTIntegerList::Add(int32_t value) {
  FItems.push_back(value);
  return Count() - 1;
}

void TZTIntegerList::Insert(int32_t index, int32_t value) {
  if (index < 0 || index > Count()) IndexFailure(index);
  FItems.insert(FItems.begin() + index, value);
}

int32_t TZTIntegerList::GetItems(int32_t index) const {
  if (index < 0 || index >= Count()) IndexFailure(index);
  return FItems[static_cast<size_t>(index)];
}

void TZTIntegerList::SetItems(int32_t index, int32_t value) {
  if (index < 0 || index >= Count()) IndexFailure(index);
  FItems[static_cast<size_t>(index)] = value;
}

int32_t TZTIntegerList::IndexOf(int32_t value) const {
  const auto it = std::find(FItems.begin(), FItems.end(), value);
  return it == FItems.end() ? -1 : static_cast<int32_t>(it - FItems.begin());
}

void TZTIntegerList::Delete(int32_t index) { DeleteRange(index, 1); }

void TZTIntegerList::DeleteRange(int32_t index, int32_t count) {
  if (count <= 0) return;
  if (index < 0 || index + static_cast<int64_t>(count) > Count()) IndexFailure(index);
  FItems.erase(FItems.begin() + index, FItems.begin() + index + count);
}

// ---- creation ----------------------------------------------------------------------------------

TZTMessageView::TZTMessageView(QWidget* parent, IZentrailApplication* app) : TZTVirtualListBox(parent), FApp(app) {
  FBookmarks.fill(-1);
  SetNumItems(0);
  SetScrollBars(TZTScrollBars::Both);
  SetShowHeader(true);
  SetBorderStyle(TZTBorderStyle::None);
  SetSelectBackColor(0x00F0CDAA);
  SetSelectTextColor(0x00502805);
  OnIsSelected = [this](int32_t row, bool& selected) { selected = IsSelected(row); };
  OnSelect = [this](int32_t row, bool selected) { Select(row, selected); };
  FOwnMessageImages = CreateMessageImageList(this);
  FOwnBookmarkImages = CreateBookmarkImageList(this);
  setMouseTracking(true);
  viewport()->setMouseTracking(true);
  OnTopIndexChanged = [this] { ReleaseHint(); };

  // A held key or a drag produces many selection changes; the details follow once input settles.
  FDetailsTimer = new QTimer(this);
  FDetailsTimer->setSingleShot(true);
  FDetailsTimer->setInterval(0);
  connect(FDetailsTimer, &QTimer::timeout, this, [this] {
    if (IZentrailApplication* app = App()) app->UpdateMessageDetails();
    emit SelectionChanged();
  });
  connect(this, &TZTCustomVirtualListBox::SelectionChangedByUser, this, [this] { PostDetailsNotice(); });
  // A focus that moves by program (a jump, a collapse, a search) shows its message the same way.
  connect(this, &TZTCustomVirtualListBox::ItemIndexChanged, this, [this] { PostDetailsNotice(); });
  UpdateColumnWidths();
}

TZTMessageView::~TZTMessageView() { Organizer().UnregisterFilterCriteria(static_cast<IZTMessageView*>(this)); }

IZTMessageView* TZTMessageView::Create(QWidget* owner) { return new TZTMessageView(owner); }

IZentrailApplication* TZTMessageView::App() const { return FApp ? FApp : ZentrailApplication(); }

void TZTMessageView::PostDetailsNotice() { FDetailsTimer->start(); }

// ---- filter ------------------------------------------------------------------------------------

bool TZTMessageView::AcceptSender(const TZentrailMessageSet& ms) const {
  const TZTFilterCriteria& c = FFilterCriteria;
  if (c.CheckAppName && !EqualAsciiNoCase(ms.GetAppName(), c.AppName)) return false;
  if (c.CheckCategory && !EqualAsciiNoCase(ms.GetCategory(), c.Category)) return false;
  if (c.CheckProcessID && ms.GetProcessID() != c.ProcessID) return false;
  if (c.CheckThreadName && !EqualAsciiNoCase(ms.GetThreadName(), c.ThreadName)) return false;
  if (c.CheckComputerName && !EqualAsciiNoCase(ms.GetComputerName(), c.ComputerName)) return false;
  return true;
}

void TZTMessageView::CheckSenderCaches(const TZentrailMessageSet& ms) {
  if (ms.Generation() == FSenderGeneration) return;
  // The store was emptied: its senders are numbered anew.
  FSenderGeneration = ms.Generation();
  FSenderAccepted.clear();
  FSenderFits.clear();
}

bool TZTMessageView::AcceptMessage() {
  const TZentrailMessageSet& ms = MessageSet;
  const TZTFilterCriteria& c = FFilterCriteria;
  if (c.CheckAppName || c.CheckCategory || c.CheckProcessID || c.CheckThreadName || c.CheckComputerName) {
    const uint32_t sender = ms.GetIdentity();
    if (sender == UINT32_MAX) {
      if (!AcceptSender(ms)) return false;
    } else {
      CheckSenderCaches(ms);
      if (sender >= FSenderAccepted.size()) FSenderAccepted.resize(std::max<size_t>(sender + 1, FSenderAccepted.size() * 2));
      uint8_t& known = FSenderAccepted[sender];
      if (known == 0) known = AcceptSender(ms) ? 1 : 2;
      if (known != 1) return false;
    }
  }
  if (c.CheckMessageText && !FMessageTextRegEx.Match(ms.GetMsgText())) return false;
  if (c.CheckMsgTypes && !InSet(c.MsgTypeSet, ms.GetMsgType()) && !InSet(c.MsgContentSet, ms.GetMsgContent()))
    return false;
  return true;
}

void TZTMessageView::GetFilterCriteria(TZTFilterCriteria& criteria) { criteria = FFilterCriteria; }

void TZTMessageView::SetFilterCriteria(const TZTFilterCriteria& criteria) {
  FFilterCriteria = criteria;
  FSenderAccepted.clear();
  // The organizer's register follows the criteria, a pattern that fails included.
  Organizer().RegisterFilterCriteria(static_cast<IZTMessageView*>(this), OrganizerCriteria(criteria));
  // Built whether or not the text is checked, so a bad pattern shows when it is set. A pattern
  // that fails leaves none behind, and a text test then refuses every message rather than
  // testing the old pattern under the new criteria.
  FMessageTextRegEx.Clear();
  FMessageTextRegEx.Compile(FFilterCriteria.MessageText);
}

namespace {

std::string SetToText(const TZTFilterMsgTypeSet& set) {
  std::string text(47, '0');
  for (int i = 0; i < 46; ++i)
    if (set.test(static_cast<size_t>(i))) text[static_cast<size_t>(i)] = '1';
  if (set.test(100)) text[46] = '1';
  return text;
}

TZTFilterMsgTypeSet TextToSet(const std::string& text) {
  TZTFilterMsgTypeSet set;
  if (text.empty()) return set;
  for (size_t i = 0; i + 1 < text.size() && i < 256; ++i)
    if (text[i] == '1') set.set(i);
  if (text.back() == '1') set.set(100);
  return set;
}

}  // namespace

void TZTMessageView::ReadSettings(ICustomViewReadSettings& settings) {
  TZTFilterCriteria c;
  c.CheckAppName = settings.ReadBool("CheckAppName", false);
  c.AppName = settings.ReadString("AppName", "");
  c.CheckCategory = settings.ReadBool("CheckCategory", false);
  c.Category = settings.ReadString("Category", "");
  c.CheckProcessID = settings.ReadBool("CheckProcessID", false);
  c.ProcessID = static_cast<uint32_t>(settings.ReadInteger("ProcessID", 0));
  c.CheckThreadName = settings.ReadBool("CheckThreadName", false);
  c.ThreadName = settings.ReadString("ThreadName", "");
  c.CheckComputerName = settings.ReadBool("CheckComputerName", false);
  c.ComputerName = settings.ReadString("ComputerName", "");
  c.CheckMessageText = settings.ReadBool("CheckMessageText", false);
  c.MessageText = settings.ReadString("MessageText", "");
  c.CheckMsgTypes = settings.ReadBool("CheckMsgTypes", false);
  c.MsgTypeSet = TextToSet(settings.ReadString("MsgTypeSet", ""));
  c.MsgContentSet = TextToSet(settings.ReadString("MsgContentSet", ""));
  SetFilterCriteria(c);
}

void TZTMessageView::WriteSettings(ICustomViewWriteSettings& settings) {
  TZTFilterCriteria c;
  GetFilterCriteria(c);
  settings.WriteBool("CheckMsgTypes", c.CheckMsgTypes);
  if (c.CheckMsgTypes) {
    settings.WriteString("MsgTypeSet", SetToText(c.MsgTypeSet));
    settings.WriteString("MsgContentSet", SetToText(c.MsgContentSet));
  }
  settings.WriteBool("CheckAppName", c.CheckAppName);
  if (c.CheckAppName) settings.WriteString("AppName", c.AppName);
  settings.WriteBool("CheckCategory", c.CheckCategory);
  if (c.CheckCategory) settings.WriteString("Category", c.Category);
  settings.WriteBool("CheckProcessID", c.CheckProcessID);
  if (c.CheckProcessID) settings.WriteInteger("ProcessID", static_cast<int32_t>(c.ProcessID));
  settings.WriteBool("CheckThreadName", c.CheckThreadName);
  if (c.CheckThreadName) settings.WriteString("ThreadName", c.ThreadName);
  settings.WriteBool("CheckComputerName", c.CheckComputerName);
  if (c.CheckComputerName) settings.WriteString("ComputerName", c.ComputerName);
  settings.WriteBool("CheckMessageText", c.CheckMessageText);
  if (c.CheckMessageText) settings.WriteString("MessageText", c.MessageText);
}

// ---- adding ------------------------------------------------------------------------------------

void TZTMessageView::AddMessage(bool force) {
  if (!force && !AcceptMessage()) return;
  TZentrailMessageSet& ms = MessageSet;
  const int32_t recNo = ms.RecNo;
  // The sender waits for this: the screen catches up in one coalesced refresh, not per message.
  BeginLiveChange();
  try {
    const int32_t row = InternalAddMessage();
    // A row that a collapse took away again lies beyond the end: then nothing scrolls. Inside an
    // update bracket only the last row counts, and it is shown when the bracket ends.
    if (AutoScroll && row < NumItems()) {
      if (Updating())
        FPendingTop = row;
      else
        SetTopIndex(row);
    }
  } catch (...) {
    EndLiveChange();
    throw;
  }
  EndLiveChange();
  ms.GotoRec(recNo);
  // A sender whose texts fitted their columns once still fits: widths only grow.
  const uint32_t sender = ms.GetIdentity();
  if (sender != UINT32_MAX) {
    CheckSenderCaches(ms);
    if (sender < FSenderFits.size() && FSenderFits[sender] == FFitEpoch) return;
  }
  bool grew = MeasureArriving(0, 3, ms.GetAppName());
  grew = MeasureArriving(1, 2, ms.GetCategory()) || grew;
  grew = MeasureArriving(2, 4, ms.GetComputerName()) || grew;
  grew = MeasureArriving(3, 6, ms.GetThreadName()) || grew;
  if (grew && !Updating()) viewport()->update();
  if (sender != UINT32_MAX) {
    if (sender >= FSenderFits.size()) FSenderFits.resize(std::max<size_t>(sender + 1, FSenderFits.size() * 2));
    FSenderFits[sender] = FFitEpoch;
  }
  ms.GotoRec(recNo);
}

bool TZTMessageView::MeasureArriving(int slot, int index, std::string_view text) {
  auto& known = FFitting[static_cast<size_t>(slot)];
  TLastFitting& last = FLastFitting[static_cast<size_t>(slot)]
                                   [(reinterpret_cast<uintptr_t>(text.data()) >> 3) % kLastFittingWays];
  const int32_t width = FColumnWidths[static_cast<size_t>(index)];
  // Widths only grow between resets, so a text that fitted a column no wider than now still fits.
  if (last.Data == text.data() && last.Width >= 0 && last.Width <= width && last.Text == text) return false;
  const auto found = known.find(text);
  bool grew = false;
  if (found == known.end() || found->second < 0 || found->second > width) {
    grew = MeasureColumn(index, text);
    if (known.size() >= 4096) known.clear();
    known.insert_or_assign(std::string(text), FColumnWidths[static_cast<size_t>(index)]);
  }
  last.Data = text.data();
  last.Text.assign(text);
  last.Width = FColumnWidths[static_cast<size_t>(index)];
  return grew;
}

void TZTMessageView::changeEvent(QEvent* event) {
  if (event->type() == QEvent::FontChange) {
    ++FFitEpoch;
    for (auto& known : FFitting) known.clear();
    for (auto& ways : FLastFitting)
      for (TLastFitting& last : ways) last.Width = -1;
  }
  TZTVirtualListBox::changeEvent(event);
}

int32_t TZTMessageView::InternalAddMessage() {
  TZentrailMessageSet& ms = MessageSet;
  const int32_t type = ms.GetMsgType();
  int32_t indent;
  bool collapseDue = false;
  if (type == ztmEnterMethod) {
    // The Enter row stands at the level of its caller.
    indent = FIndentLevel++;
  } else if (type == ztmExitMethod || type == ztmExitMethodCollapse) {
    if (FIndentLevel > 0) --FIndentLevel;
    indent = FIndentLevel;
    if (type == ztmExitMethodCollapse) {
      // Only the first view that takes the message sees it as a collapse request.
      ms.SetMsgType(ztmExitMethod);
      collapseDue = true;
    }
  } else {
    indent = FIndentLevel;
  }
  const int32_t recNo = ms.RecNo;
  const int32_t item = FItems.Add(TZTViewItem(recNo));
  FRows.Add(item);
  FIndents.Add(indent);
  FSelections.Add(0);
  const int32_t row = NumItems();
  SetNumItems(row + 1);
  if (collapseDue) {
    if (FRows.Count() > 1) CollapseAtExit(row);
  } else if (AutoCollapse && type == ztmExitMethod && FRows.Count() > 1) {
    const TZTViewItem& above = FItems.GetItems(FRows.GetItems(row - 1));
    if (!above.Collapsed) {
      ms.GotoRec(above.RecNo);
      if (ms.GetMsgType() == ztmEnterMethod) CollapseMethod(row - 1);
      ms.GotoRec(recNo);
    }
  }
  return row;
}

void TZTMessageView::ClearView() {
  BeginUpdate();
  FChangingItems = true;
  try {
    SetNumItems(0);
    FItems.Clear();
    FRows.Clear();
    FIndents.Clear();
    FIndentLevel = 0;
    ClearBookmarks();
    FSelections.Clear();
    FSelectedCount = 0;
    FPendingTop = -1;
    UpdateColumnWidths();
    SetHorzPosition(0);
    UpdateScrollBars();
  } catch (...) {
    FChangingItems = false;
    EndUpdate();
    throw;
  }
  EndUpdate();
  FChangingItems = false;
}

void TZTMessageView::ResetIndentLevel() { FIndentLevel = 0; }

// ---- rows and items ----------------------------------------------------------------------------

int32_t TZTMessageView::GetMsgRecNo(int32_t row) { return FItems.GetItems(FRows.GetItems(row)).RecNo; }

int32_t TZTMessageView::GetIndentLevel(int32_t row) { return FIndents.GetItems(FRows.GetItems(row)); }

bool TZTMessageView::SelectCurrentRecord() {
  if (ItemIndex() < 0) return false;
  SelectRecord(ItemIndex());
  return true;
}

void TZTMessageView::SelectRecord(int32_t row) { MessageSet.GotoRec(GetMsgRecNo(row)); }

int32_t TZTMessageView::GetFocusedMsgIndex() { return ItemIndex(); }

void TZTMessageView::SetFocusedMsgIndex(int32_t row) {
  SetItemIndex(row);
  SetAnchorIndex(ItemIndex());
}

bool TZTMessageView::Focused() { return hasFocus(); }

void TZTMessageView::BeginUpdate() { TZTVirtualListBox::BeginUpdate(); }

void TZTMessageView::EndUpdate() {
  if (UpdateCount() == 1 && FPendingTop >= 0) {
    const int32_t row = FPendingTop;
    FPendingTop = -1;
    if (row < NumItems()) SetTopIndex(row);
  }
  TZTVirtualListBox::EndUpdate();
}

void TZTMessageView::Invalidate() { viewport()->update(); }

void TZTMessageView::SetPopupMenu(QMenu* menu) { FPopupMenu = menu; }

void TZTMessageView::SetSyncMsgRecNo(int32_t recNo) {
  FSyncMsgRecNo = recNo;
  viewport()->update();
}

// ---- selection ---------------------------------------------------------------------------------

bool TZTMessageView::IsSelected(int32_t row) const {
  if (FSelections.Count() == 0 || row < 0 || row >= FRows.Count()) return false;
  return FSelections.Raw()[static_cast<size_t>(FRows.Raw()[static_cast<size_t>(row)])] != 0;
}

void TZTMessageView::SetItemFlag(int32_t item, bool selected) {
  int32_t& flag = FSelections.Raw()[static_cast<size_t>(item)];
  if ((flag != 0) == selected) return;
  flag = selected ? 1 : 0;
  FSelectedCount += selected ? 1 : -1;
}

void TZTMessageView::Select(int32_t row, bool selected) {
  if (FChangingItems) return;
  if (row == -1) {
    if (!selected && FSelectedCount == 0) return;
    std::fill(FSelections.Raw().begin(), FSelections.Raw().end(), selected ? 1 : 0);
    FSelectedCount = selected ? FSelections.Count() : 0;
    viewport()->update();
    return;
  }
  if (row < 0 || row >= FRows.Count()) return;
  const int32_t item = FRows.GetItems(row);
  if (FItems.GetItems(item).Collapsed) {
    // A collapsed row stands for its whole method; without a closing Exit it stands for nothing.
    const int32_t end = FindMethodEnd(item);
    if (end < 0) return;
    for (int32_t i = item; i <= end; ++i) SetItemFlag(i, selected);
  } else {
    SetItemFlag(item, selected);
  }
  InvalidateItem(row);
}

void TZTMessageView::RemoveAllSelections() {
  if (FSelectedCount == 0) return;
  std::fill(FSelections.Raw().begin(), FSelections.Raw().end(), 0);
  FSelectedCount = 0;
  viewport()->update();
}

bool TZTMessageView::GetSelected(int32_t row) { return FSelections.GetItems(FRows.GetItems(row)) != 0; }

void TZTMessageView::SetSelected(int32_t row, bool value) {
  SetItemFlag(FRows.GetItems(row), value);
  InvalidateItem(row);
}

int32_t TZTMessageView::GetSelCount() {
  const int32_t focus = ItemIndex();
  int32_t count = 0;
  if (FSelectedCount > 0) {
    const auto& rows = FRows.Raw();
    const auto& flags = FSelections.Raw();
    for (int32_t item : rows) count += flags[static_cast<size_t>(item)] != 0 ? 1 : 0;
  }
  // The focused row always counts as selected.
  if (focus >= 0 && focus < FRows.Count() && !IsSelected(focus)) ++count;
  return count;
}

void TZTMessageView::GetFirstLastSelections(int32_t& first, int32_t& last) {
  int32_t firstRow = -1, lastRow = -1;
  for (int32_t row = 0; row < FRows.Count(); ++row) {
    if (!IsSelected(row)) continue;
    if (firstRow < 0) firstRow = row;
    lastRow = row;
  }
  if (firstRow < 0) IndexFailure(-1);
  first = GetMsgRecNo(firstRow);
  last = GetMsgRecNo(lastRow);
}

void TZTMessageView::SelectAll() {
  TZTVirtualListBox::SelectAll();
  PostDetailsNotice();
}

void TZTMessageView::CopyToClipboard() {
  TZentrailMessageSet& ms = MessageSet;
  QStringList lines;
  for (int32_t item = 0; item < FItems.Count(); ++item) {
    if (!FSelections.Raw()[static_cast<size_t>(item)]) continue;
    ms.GotoRec(FItems.GetItems(item).RecNo);
    const std::string_view text = ms.GetMsgText();
    lines.push_back(QString(FIndents.GetItems(item) * 2, QLatin1Char(' ')) +
                    QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
  }
  if (lines.isEmpty()) return;
  const QString text =
      lines.size() == 1 ? lines.front().trimmed() : lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n");
  // A rich editor takes the HTML flavour, which keeps the indentation in a fixed-pitch block.
  auto* data = new QMimeData;
  data->setText(text);
  data->setHtml(QStringLiteral("<pre>") + text.toHtmlEscaped() + QStringLiteral("</pre>"));
  QApplication::clipboard()->setMimeData(data);
}

// ---- deleting rows -----------------------------------------------------------------------------

void TZTMessageView::DeleteSelection() {
  QApplication::setOverrideCursor(Qt::WaitCursor);
  struct TCursorGuard {
    ~TCursorGuard() { QApplication::restoreOverrideCursor(); }
  } cursorGuard;
  const int32_t rowCount = FRows.Count();
  const int32_t itemCount = FItems.Count();
  // Marked first and compacted once, so deleting a large selection costs one pass and not one
  // list move per row. Records stay in the store; only this view's items go.
  std::vector<char> dropItem(static_cast<size_t>(itemCount), 0);
  std::vector<char> dropRow(static_cast<size_t>(rowCount), 0);
  int32_t lowestRow = -1;
  FChangingItems = true;
  BeginUpdate();
  try {
    for (int32_t row = rowCount - 1; row >= 0; --row) {
      if (!IsSelected(row)) continue;
      const int32_t item = FRows.GetItems(row);
      dropRow[static_cast<size_t>(row)] = 1;
      if (FItems.GetItems(item).Collapsed) {
        // A collapsed row goes with its whole method; without an end only the row goes.
        const int32_t end = FindMethodEnd(item);
        if (end >= 0) std::fill(dropItem.begin() + item, dropItem.begin() + end + 1, 1);
      } else {
        dropItem[static_cast<size_t>(item)] = 1;
      }
      lowestRow = row;
    }
    std::vector<int32_t> newIndex(static_cast<size_t>(itemCount), -1);
    int32_t kept = 0;
    for (int32_t item = 0; item < itemCount; ++item) {
      if (dropItem[static_cast<size_t>(item)]) continue;
      newIndex[static_cast<size_t>(item)] = kept;
      FItems.Raw()[static_cast<size_t>(kept)] = FItems.Raw()[static_cast<size_t>(item)];
      FIndents.Raw()[static_cast<size_t>(kept)] = FIndents.Raw()[static_cast<size_t>(item)];
      FSelections.Raw()[static_cast<size_t>(kept)] = FSelections.Raw()[static_cast<size_t>(item)];
      ++kept;
    }
    FItems.Raw().erase(FItems.Raw().begin() + kept, FItems.Raw().end());
    FIndents.Raw().resize(static_cast<size_t>(kept));
    FSelections.Raw().resize(static_cast<size_t>(kept));
    auto& rows = FRows.Raw();
    size_t out = 0;
    for (size_t row = 0; row < rows.size(); ++row)
      if (!dropRow[row]) rows[out++] = newIndex[static_cast<size_t>(rows[row])];
    rows.resize(out);
    FSelectedCount = static_cast<int32_t>(std::count(FSelections.Raw().begin(), FSelections.Raw().end(), 1));
    SetItemIndex(-1);
    SetNumItems(FRows.Count());
  } catch (...) {
    EndUpdate();
    FChangingItems = false;
    throw;
  }
  EndUpdate();
  FChangingItems = false;
  if (lowestRow >= 0 && NumItems() > 0) {
    const int32_t focus = std::min(lowestRow, NumItems() - 1);
    SetItemIndex(focus);
    SetAnchorIndex(focus);
  }
}

void TZTMessageView::CropToSelection() {
  // Flipping row flags leaves hidden inner items as they were; the focus is dropped so that it
  // doesn't count as selected.
  for (int32_t row = 0; row < FRows.Count(); ++row) SetItemFlag(FRows.GetItems(row), !IsSelected(row));
  SetItemIndex(-1);
  DeleteSelection();
}

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

// ---- activation and input ----------------------------------------------------------------------

void TZTMessageView::Activated() {}

void TZTMessageView::Deactivated() { ReleaseHint(); }

void TZTMessageView::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_F2 && event->modifiers() == Qt::NoModifier) {
    if (ItemIndex() >= 0) EditMessage(ItemIndex());
    event->accept();
    return;
  }
  TZTVirtualListBox::keyPressEvent(event);
}

void TZTMessageView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && ItemAtPos(event->position().toPoint(), true) >= 0) {
    ToggleCurrentMethod();
    event->accept();
    return;
  }
  TZTVirtualListBox::mouseDoubleClickEvent(event);
}

void TZTMessageView::contextMenuEvent(QContextMenuEvent* event) {
  if (FPopupMenu) {
    FPopupMenu->popup(event->globalPos());
    event->accept();
    return;
  }
  TZTVirtualListBox::contextMenuEvent(event);
}

}  // namespace zentrail
