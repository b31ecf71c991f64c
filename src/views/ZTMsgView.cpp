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

#include "ZTMsgViewPrivate.h"
#include "ZTOrganizer.h"
#include "ZTPromptService.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

namespace {

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
