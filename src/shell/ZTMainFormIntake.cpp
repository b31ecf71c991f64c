// The live road of TFrmViewer: from a frame of the channel to every view. The sender waits for the
// whole road, so it stays short: no command states, no selection, no inspectors for a plain message.

#include <QAbstractEventDispatcher>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QTableWidget>
#include <QStackedWidget>
#include <QTimer>
#include <cstring>

#include "ZTDateTime.h"
#include "ZTMainForm.h"
#include "ZTNavigator.h"
#include "ZTPromptService.h"
#include "ZTSound.h"
#include "ZentrailMessageSet.h"
#include "Zlib.h"

namespace zentrail {
namespace {

TZentrailTimeStamp LocalNow() { return NowTimeStamp(); }

// Separators, control types and custom types bring on no automatic separator.
bool TriggersAutoSeparator(int32_t msgType) {
  return !((msgType >= ztmSeparator && msgType <= ztmSaveLog) || msgType == ztmResetSeparator ||
           msgType == ztmAppStartSeparator || msgType >= 46);
}

bool IsSizeLimitFailure(const EZentrailZlibError& e) {
  return dynamic_cast<const EZentrailZlibSizeError*>(&e) != nullptr;
}

void CopyMessage(const TZentrailMessage& from, TZentrailMessage& to) { to = from; }
void CopyMessage(const TZentrailPacketView& from, TZentrailMessage& to) { from.CopyTo(to); }

// RAII for ClearMessages: the clear note and the wait cursor go on every way out.
class TClearGuard {
 public:
  explicit TClearGuard(bool& flag) : FFlag(flag) {
    FFlag = true;
    if (qGuiApp) QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  }
  ~TClearGuard() {
    if (qGuiApp) QGuiApplication::restoreOverrideCursor();
    FFlag = false;
  }

 private:
  bool& FFlag;
};

}  // namespace

uint32_t TFrmViewer::WMCopyData(uint32_t tag, std::string_view data) {
  // Lost on purpose: while blocked, nothing is read or kept, a clear included.
  if (FMessagesBlocked) return 0;

  std::string_view packet;
  if (tag == ztPacketTag) {
    packet = data;
  } else if (tag == ztCompressedPacketTag) {
    try {
      ZlibInflateInto(data, FInflated);
    } catch (const EZentrailZlibError& e) {
      if (IsSizeLimitFailure(e)) throw EZTChannelAbort(e.what());
      throw;
    }
    packet = FInflated;
  } else {
    return 0;
  }

  ParseTransportPacket(packet, FPacket);
  // A batch has its bracket already; a lone frame finds out whether it is part of a burst.
  if (!FInCopyDataBatch) NoteLiveFrame();
  switch (FPacket.MsgType) {
    case ztmSeparator: {
      TZentrailMessage message;
      FPacket.CopyTo(message);
      AddSeparator(&message);
      break;
    }
    case ztmClear:
      // A client may empty all views and the store; it is not asked.
      ClearMessages(true);
      break;
    case ztmResetSeparator: {
      TZentrailMessage message;
      FPacket.CopyTo(message);
      AddResetSeparator(&message);
      break;
    }
    case ztmScratchPad:
      ScratchPadMessage(FPacket.MsgText);
      break;
    default:
      ProcessMessageT(FPacket);
      break;
  }
  return 1;
}

void TFrmViewer::BeginCopyDataBatch() {
  FInCopyDataBatch = true;
  BeginMessageBatch();
}

void TFrmViewer::EndCopyDataBatch() {
  FInCopyDataBatch = false;
  EndMessageBatch();
  MessagesArrived();
}

void TFrmViewer::CopyDataFailed(const std::string& text) {
  // The sender already has its 0. One report at a time reaches the user, after the road is free,
  // so that a burst of bad packets does not stack dialogs or hold the sender.
  if (!FPendingFailures.empty()) {
    ++FDroppedFailures;
    return;
  }
  FPendingFailures.push_back(text);
  QTimer::singleShot(0, this, [this] { ReportIntakeFailures(); });
}

void TFrmViewer::ReportIntakeFailures() {
  if (FPendingFailures.empty()) return;
  QString text = QString::fromStdString(FPendingFailures.front());
  PromptService().ShowMessage(nbkViews, text, TZTPromptKind::Error);
  FPendingFailures.clear();
  // Failures that came while the dialog was open are summed up in one more report.
  if (FDroppedFailures > 0) {
    FPendingFailures.push_back(std::to_string(FDroppedFailures) +
                               " further message(s) could not be read while the last error was shown.");
    FDroppedFailures = 0;
    QTimer::singleShot(0, this, [this] { ReportIntakeFailures(); });
  }
}

void TFrmViewer::ProcessMessage(const TZentrailMessage& message) { ProcessMessageT(message); }
void TFrmViewer::ProcessMessage(const TZentrailPacketView& message) { ProcessMessageT(message); }

template <typename TMessage>
void TFrmViewer::ProcessMessageT(const TMessage& message) {
  MessageSet.Last();
  if (TriggersAutoSeparator(message.MsgType)) {
    if (InsertSeparatorOnAppStart && message.ProcessID != FProcessID &&
        !FSeenProcessIDs.contains(message.ProcessID)) {
      // The start separator stands in for the inactivity test of this message.
      StoreSeparatorCopy(message, ztmAppStartSeparator);
      FSeenProcessIDs.insert(message.ProcessID);
    } else if (MessageSet.RecNo > 0 && (InsertSeparatorOnWakeUp || SoundEffectOnWakeUp)) {
      // Milliseconds of the day only: a pause over midnight gives a negative gap and no separator.
      int64_t gap = int64_t(message.TimeStamp.Time) - MessageSet.GetTimeStamp().Time;
      if (gap > int64_t(IdleTime) * 1000) {
        if (InsertSeparatorOnWakeUp) StoreSeparatorCopy(message, ztmInactiveSeparator);
        if (SoundEffectOnWakeUp) {
          ++FWakeUpSounds;
          if (!FSound) FSound = std::make_unique<TZTSoundPlayer>();
          FSound->Play(SoundEffectFile);
        }
      }
    }
  }
  StoreMessageT(message);
}

template <typename TMessage>
void TFrmViewer::StoreSeparatorCopy(const TMessage& message, int32_t msgType) {
  // The copy keeps the sender's identity, so it passes the views' name filters.
  TZentrailMessage copy;
  CopyMessage(message, copy);
  copy.MsgType = msgType;
  copy.MsgText.clear();
  copy.TypeName.clear();
  copy.Details.clear();
  copy.TimeStamp = LocalNow();
  StoreMessageT(copy);
}

void TFrmViewer::StoreMessage(const TZentrailMessage& message) { StoreMessageT(message); }

template <typename TMessage>
void TFrmViewer::StoreMessageT(const TMessage& message) {
  MessageSet.AppendMessage(message, FNextMessageID);
  ++FNextMessageID;
  FNavigator->MessageStored(message.MsgType, message.MsgContent);
  // Before the views see it, so that a view made for the message takes it in at once.
  if (AutoOrganize) OrganizeArrivingMessage();
  FanOut();
  // A batch reports its arrival once, when it ends.
  if (!FInCopyDataBatch) MessagesArrived();
}

void TFrmViewer::NoteLiveFrame() {
  // Frames that one wake-up of the loop brings (several senders, or a sender that doesn't wait) go
  // to the views inside one bracket, which ends before the loop sleeps or wakes again. A lone frame,
  // as a waiting sender sends, costs no bracket at all: the views already coalesce its refresh.
  if (!FWakeWatch) {
    FWakeWatch = true;
    if (QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance()) {
      auto endBurst = [this] {
        ++FWakeUps;
        if (FBurstOpen) {
          FBurstOpen = false;
          EndMessageBatch();
        }
      };
      connect(dispatcher, &QAbstractEventDispatcher::awake, this, endBurst);
      connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, endBurst);
    }
  }
  if (FWakeUps != FLastFrameWake) {
    FLastFrameWake = FWakeUps;
  } else if (!FBurstOpen) {
    FBurstOpen = true;
    BeginMessageBatch();
  }
}

void TFrmViewer::FanOut() {
  // Tab order: the first view sees the message first, which decides who rewrites an
  // exit-and-collapse message. Each view leaves the store on the new record for the next.
  for (IZTMessageView* view : FViews) view->AddMessage(false);
}

void TFrmViewer::StampWithViewerIdentity(TZentrailMessage& message) {
  message.AppName = FAppName.toStdString();
  message.ComputerName = FComputerName.toStdString();
  message.Category.clear();
  message.ProcessID = FProcessID;
  message.ThreadName = FThreadName.toStdString();
  if (!FActiveList) return;
  // Take the active view's name filters, so that the user sees what he added there.
  TZTFilterCriteria criteria;
  FActiveList->GetFilterCriteria(criteria);
  if (criteria.CheckAppName) message.AppName = criteria.AppName;
  if (criteria.CheckComputerName) message.ComputerName = criteria.ComputerName;
  if (criteria.CheckCategory) message.Category = criteria.Category;
  if (criteria.CheckProcessID) message.ProcessID = criteria.ProcessID;
  if (criteria.CheckThreadName) message.ThreadName = criteria.ThreadName;
}

void TFrmViewer::AddSeparator(const TZentrailMessage* source) {
  TZentrailMessage message;
  if (source) {
    message = *source;
  } else {
    StampWithViewerIdentity(message);
  }
  message.MsgType = ztmSeparator;
  message.MsgText = "-";
  message.TypeName.clear();
  message.Details.clear();
  // A separator from a client shows the viewer's clock, not the client's.
  message.TimeStamp = LocalNow();
  ProcessMessage(message);
  UpdateCommandStates();
}

void TFrmViewer::AddResetSeparator(const TZentrailMessage* source) {
  TZentrailMessage message;
  if (source) {
    message = *source;
  } else {
    StampWithViewerIdentity(message);
  }
  message.MsgType = ztmResetSeparator;
  message.MsgText = "=";
  message.TypeName.clear();
  message.Details.clear();
  message.TimeStamp = LocalNow();
  ProcessMessage(message);
  // Only the active view starts again at level 0; the others keep their structure on purpose.
  if (FActiveList) FActiveList->ResetIndentLevel();
  UpdateCommandStates();
}

void TFrmViewer::ClearMessages(bool clearAll) {
  TClearGuard guard(FClearing);
  if (FViews.size() == 1) clearAll = true;
  if (clearAll) {
    FNextMessageID = 0;
    MessageSet.Close();
    MessageSet.Open();
    FSeenProcessIDs.clear();
    for (IZTMessageView* view : FViews) view->ClearView();
    FNavigator->StoreEmptied();
  } else if (IZTMessageView* view = ActiveView()) {
    view->ClearView();
  }
  HideInspectors();
  ClearCallStack();
  ClearDetails();
  FClearing = false;  // so that the command states see the cleared views
  UpdateCommandStates();
}

void TFrmViewer::ConfirmAndClear(bool clearAll) {
  if (clearAll) {
    if (MessageSet.GetRecordCount() == 0) return;
  } else {
    IZTMessageView* view = ActiveView();
    if (!view || view->GetCount() == 0) return;
  }
  if (ConfirmOnClear && !AskConfirmClear(clearAll)) return;
  ClearMessages(clearAll);
}

// ---- Scratch pad

void TFrmViewer::ScratchPadMessage(std::string_view text) {
  // "name@value", split at the first "@"; without one the whole text is the value of the
  // line without a name.
  std::size_t at = text.find('@');
  QString name, value;
  if (at == std::string_view::npos) {
    value = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  } else {
    name = QString::fromUtf8(text.data(), static_cast<qsizetype>(at));
    std::string_view rest = text.substr(at + 1);
    value = QString::fromUtf8(rest.data(), static_cast<qsizetype>(rest.size()));
  }
  SetScratchPadLine(name, value);
}

namespace {
QTableWidgetItem* CellOf(QTableWidget* grid, int row, int column) {
  QTableWidgetItem* item = grid->item(row, column);
  if (!item) {
    item = new QTableWidgetItem;
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    grid->setItem(row, column, item);
  }
  return item;
}
}  // namespace

void TFrmViewer::SetScratchPadLine(const QString& name, const QString& value) {
  int row = -1;
  for (int i = 0; i < FScratchPadNames.size(); ++i) {
    if (FScratchPadNames[i].compare(name, Qt::CaseInsensitive) == 0) {
      row = i;
      break;
    }
  }
  if (row < 0) {
    FScratchPadNames.append(name);
    row = static_cast<int>(FScratchPadNames.size()) - 1;
    if (FScratchPadNames.size() > 50) grdScratchPad->setRowCount(static_cast<int>(FScratchPadNames.size()));
  }
  CellOf(grdScratchPad, row, 1)->setText(name);
  int width = QFontMetrics(grdScratchPad->font()).horizontalAdvance(name) + 10;
  if (width > FScratchPadNameWidth) {
    FScratchPadNameWidth = width;
    grdScratchPad->setColumnWidth(1, width);
  }
  // A blank in the flag cell lights the line until the timer puts all lights out at once.
  CellOf(grdScratchPad, row, 0)->setText(QStringLiteral(" "));
  tmrScratchPad->start();
  CellOf(grdScratchPad, row, 2)->setText(value);
}

void TFrmViewer::ClearScratchPad() {
  grdScratchPad->clearContents();
  grdScratchPad->setRowCount(50);
  FScratchPadNames.clear();
  FScratchPadNameWidth = 50;
  grdScratchPad->setColumnWidth(1, 50);
  grdScratchPad->setCurrentCell(0, 2);
  grdScratchPad->scrollToTop();
}

void TFrmViewer::DeleteScratchPadLine() {
  int row = grdScratchPad->currentRow();
  if (row < 0 || row >= FScratchPadNames.size()) return;
  FScratchPadNames.removeAt(row);
  int rows = grdScratchPad->rowCount();
  for (int r = row; r < rows - 1; ++r) {
    for (int c = 0; c < 3; ++c) {
      QTableWidgetItem* below = grdScratchPad->item(r + 1, c);
      CellOf(grdScratchPad, r, c)->setText(below ? below->text() : QString());
    }
  }
  for (int c = 0; c < 3; ++c) delete grdScratchPad->takeItem(rows - 1, c);
}

}  // namespace zentrail
