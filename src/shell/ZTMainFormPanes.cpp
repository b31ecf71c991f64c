// The main window's detail panel, call stack, inspector and status bar: what belongs to the focused
// message and the counts of the active view.
#include "ZTMainForm.h"

#include <QDate>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QProgressBar>
#include <QStatusBar>
#include <QTime>
#include <QTimer>
#include <array>
#include <span>

#include "ZTDateTime.h"
#include "ZTDetailPanel.h"
#include "ZTImageList.h"
#include "ZTInspectorPane.h"
#include "ZTNavigator.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

namespace {

QString FormatCount(qint64 n) { return QLocale(QLocale::English).toString(n); }

}  // namespace

void TFrmViewer::CreateStatusBar() {
  QStatusBar* bar = statusBar();
  bar->setObjectName(QStringLiteral("sbrMain"));
  auto pane = [bar](const char* name, const char* accessible) {
    auto* label = new QLabel(bar);
    label->setObjectName(QString::fromLatin1(name));
    label->setAccessibleName(QString::fromLatin1(accessible));
    label->setContentsMargins(4, 0, 4, 0);
    label->setAlignment(Qt::AlignCenter);
    bar->addWidget(label);
    return label;
  };
  pnlMsgType = new TZTMsgTypePanel(bar);
  bar->addWidget(pnlMsgType);
  stsTimeDiff = pane("stsTimeDiff", "Time Difference");
  stsTimeDiff->setMinimumWidth(80);
  stsMsgNum = pane("stsMsgNum", "Message Number");
  stsMsgNum->setToolTip(QStringLiteral("Jump to Message"));
  stsMsgCount = pane("stsMsgCount", "Message Count");
  stsSelCount = pane("stsSelCount", "Selected Messages");
  stsProject = pane("stsProject", "Project");
  stsProject->setMinimumWidth(60);
  pbrComplete = new QProgressBar(bar);
  pbrComplete->setObjectName(QStringLiteral("pbrComplete"));
  pbrComplete->setAccessibleName(QStringLiteral("Progress"));
  pbrComplete->setFixedWidth(100);
  pbrComplete->setMaximumHeight(14);
  pbrComplete->setTextVisible(false);
  pbrComplete->setRange(0, 100);
  pbrComplete->setValue(0);
  bar->addWidget(pbrComplete);
  stsMessage = new QLabel(bar);
  stsMessage->setObjectName(QStringLiteral("stsMessage"));
  stsMessage->setAccessibleName(QStringLiteral("Status"));
  bar->addWidget(stsMessage, 1);

  // A tenth of a second: soon enough to read as at once, rare enough to cost nothing in a burst.
  FCountsTimer = new QTimer(this);
  FCountsTimer->setSingleShot(true);
  FCountsTimer->setInterval(100);
  connect(FCountsTimer, &QTimer::timeout, this, [this] {
    // The first rows of a burst into an empty view enable the commands that need rows; after that
    // only the count moves.
    IZTMessageView* view = ActiveView();
    if (!FCommandsSawRows && view && view->GetCount() > 0)
      UpdateCommandStates();
    else
      UpdateMessageCount();
  });
}

// ---------------------------------------------------------------------------------------------------
// Details, call stack, status

void TFrmViewer::HideInspectors() {
  if (FInspectorPane) FInspectorPane->HideAllInspectors();
}

bool TFrmViewer::GotoFocusedRecord() { return FActiveList && FActiveList->SelectCurrentRecord(); }

// The inspector that fits the focused message, and for two selected messages the pair that a plug-in
// may compare; then the call stack of the message, as the inspector had to read the record first.
void TFrmViewer::ShowInspector() {
  if (!FInspectorPane) return;
  IZTMessageView* view = ActiveView();
  const int32_t selected = view ? view->GetSelCount() : 0;
  std::array<int32_t, 2> pair{0, 0};
  std::span<const int32_t> recNos;
  if (selected == 2 && view) {
    // The view answers with record numbers, not rows.
    int32_t first = -1, last = -1;
    view->GetFirstLastSelections(first, last);
    if (first > 0 && last > 0) {
      pair = {first, last};
      recNos = pair;
    }
  }
  if (!GotoFocusedRecord()) return;
  const int panel = FInspectorPane->ShowCurrentMessage(selected, recNos, FInspectorVisible);
  // A separator has no data to inspect and no place in a call.
  if (panel == TZTInspectorPane::pnNone)
    ClearCallStack();
  else
    RefreshCallStack(view);
}

void TFrmViewer::ClearDetails() { pnlMsgDetails->Clear(); }

void TFrmViewer::ClearCallStack() { lstCallStack->clear(); }

void TFrmViewer::RefreshCallStack(IZTMessageView*) {
  lstCallStack->clear();
  if (!FActiveList) return;
  TZTCallStackList entries;
  FActiveList->TraverseCallStack(entries);
  for (const TZTCallStackEntry& e : entries) {
    auto* item = new QListWidgetItem(QString::fromStdString(e.Text), lstCallStack);
    item->setData(Qt::UserRole, e.Row);
  }
}

void TFrmViewer::UpdateMessageDetails() {
  if (FClearing) return;
  IZTMessageView* view = ActiveView();
  if (FActiveList && FActiveList->GetFocusedMsgIndex() < 0) {
    HideInspectors();
    ClearCallStack();
    ClearDetails();
    pnlMsgType->Clear();
    UpdateCommandStates();
    return;
  }
  if (!view || !FActiveList || view->GetCount() == 0) {
    HideInspectors();
    ClearCallStack();
    pnlMsgType->Clear();
    UpdateCommandStates();
    return;
  }
  // Each step below may walk the store (the navigator's command states do), so each goes back
  // to the focused record before it reads.
  GotoFocusedRecord();
  FNavigator->MessageSelected();
  GotoFocusedRecord();
  TZentrailTimeStamp stamp = MessageSet.GetTimeStamp();
  TZTDateTimeParts parts;
  QDate date;
  QTime time;
  if (DecodeTimeStamp(stamp, parts)) {
    date = QDate(parts.Year, parts.Month, parts.Day);
    time = QTime(parts.Hour, parts.Minute, parts.Second, parts.MSec);
  }
  auto text = [](std::string_view s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); };
  pnlMsgDetails->SetField(TZTDetailPanel::Category, text(MessageSet.GetCategory()));
  pnlMsgDetails->SetField(TZTDetailPanel::TypeName, text(MessageSet.GetTypeName()));
  pnlMsgDetails->SetField(TZTDetailPanel::AppName, text(MessageSet.GetAppName()));
  pnlMsgDetails->SetField(TZTDetailPanel::Computer, text(MessageSet.GetComputerName()));
  pnlMsgDetails->SetField(TZTDetailPanel::PID, QString::number(MessageSet.GetProcessID()));
  pnlMsgDetails->SetField(TZTDetailPanel::ThreadName, text(MessageSet.GetThreadName()));
  const QString dateText = QLocale().toString(date, QLocale::ShortFormat);
  const QString timeText = time.toString(QStringLiteral("H:mm:ss.zzz"));
  pnlMsgDetails->SetField(TZTDetailPanel::Date, dateText);
  pnlMsgDetails->SetField(TZTDetailPanel::TimeStamp, timeText);
  ShowMessageContent(dateText, timeText);
  ShowInspector();
  UpdateCommandStates();
}

void TFrmViewer::ShowMessageContent(const QString& date, const QString& time) {
  // Contents of 100 and above are a plug-in's own: one glyph and one name for all of them.
  const int32_t content = MessageSet.GetMsgContent();
  const bool custom = content >= 100 || content < 0 || content >= ztmTableCount;
  const int image = custom ? 46 : content;
  const QString name = custom ? QStringLiteral("Custom") : QString::fromLatin1(MsgTypeNames[content]);
  auto text = [](std::string_view s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); };
  const QStringList lines = {name + QStringLiteral(" Message"),
                             QString(40, QLatin1Char('-')),
                             QStringLiteral("Category:\t") + text(MessageSet.GetCategory()),
                             QStringLiteral("TypeName:\t") + text(MessageSet.GetTypeName()),
                             QStringLiteral("AppName:\t") + text(MessageSet.GetAppName()),
                             QStringLiteral("Computer:\t") + text(MessageSet.GetComputerName()),
                             QStringLiteral("PID:\t\t") + QString::number(MessageSet.GetProcessID()),
                             QStringLiteral("Thread:\t\t") + text(MessageSet.GetThreadName()),
                             QStringLiteral("Date:\t\t") + date,
                             QStringLiteral("TimeStamp:\t") + time};
  TZTImageList* images = FNavigator->MessageImages();
  pnlMsgType->SetContent(images && images->HasImage(image) ? images->Image(image) : QPixmap(),
                         lines.join(QLatin1Char('\r')));
}

namespace {

// Each count pane is as wide as its text needs, with 10 pixels to spare.
void FitStatusPane(QLabel* label, const QString& text) {
  label->setText(text);
  label->setFixedWidth(label->fontMetrics().horizontalAdvance(text) + 10 + label->contentsMargins().left() +
                       label->contentsMargins().right());
}

}  // namespace

void TFrmViewer::MessagesArrived() {
  // Armed by the first message after a quiet spell and never restarted, so a long burst still
  // shows its progress, and the last message of any burst shows within one interval.
  if (!FCountsTimer->isActive()) FCountsTimer->start();
}

void TFrmViewer::UpdateMessageCount() {
  IZTMessageView* view = ActiveView();
  const int rows = view ? view->GetCount() : 0;
  FitStatusPane(stsMsgCount,
                QStringLiteral("%1 out of %2 Messages").arg(FormatCount(rows), FormatCount(MessageSet.GetRecordCount())));
}

void TFrmViewer::UpdateStatusCounts(int32_t selected) {
  IZTMessageView* view = ActiveView();
  int rows = view ? view->GetCount() : 0;
  int focused = FActiveList ? FActiveList->GetFocusedMsgIndex() : -1;
  if (selected < 0) selected = view ? view->GetSelCount() : 0;
  if (focused >= 0 && focused < rows) {
    FitStatusPane(stsMsgNum, QStringLiteral("#") + FormatCount(view->GetMsgRecNo(focused)));
  } else {
    FitStatusPane(stsMsgNum, QStringLiteral("#0"));
  }
  UpdateMessageCount();
  FitStatusPane(stsSelCount, QStringLiteral("%1 Selected").arg(FormatCount(selected)));

  // Time difference: first row to the focused row, or first to last selected row.
  if (!view || selected == 0 || rows == 0) {
    stsTimeDiff->setEnabled(false);
    stsTimeDiff->clear();
    return;
  }
  int32_t rec1 = 0, rec2 = 0;
  if (selected < 2) {
    if (focused < 0) {
      view->GetFirstLastSelections(rec1, rec2);
      rec2 = rec1;
    } else {
      rec1 = view->GetMsgRecNo(0);
      rec2 = view->GetMsgRecNo(focused);
    }
  } else {
    view->GetFirstLastSelections(rec1, rec2);
  }
  MessageSet.GotoRec(rec1);
  TZentrailTimeStamp t1 = MessageSet.GetTimeStamp();
  MessageSet.GotoRec(rec2);
  TZentrailTimeStamp t2 = MessageSet.GetTimeStamp();
  int64_t diff = (int64_t(t2.Date) - t1.Date) * 86400000 + t2.Time - t1.Time;
  stsTimeDiff->setEnabled(true);
  if (diff < 0) {
    stsTimeDiff->setText(QStringLiteral("xx:xx:xx.xxx"));
  } else {
    int64_t ms = diff % 1000, s = diff / 1000 % 60, m = diff / 60000 % 60, h = diff / 3600000 % 24;
    stsTimeDiff->setText(QString::asprintf("%d:%.2d:%.2d.%.3d", int(h), int(m), int(s), int(ms)));
  }
}

QString TFrmViewer::StatusText(const QString& paneName) const {
  auto* label = statusBar()->findChild<QLabel*>(paneName);
  return label ? label->text() : QString();
}

QWidget* TFrmViewer::PaneWidget(const QString& name) const { return findChild<QWidget*>(name); }

void TFrmViewer::SetStatusText(const QString& text) { stsMessage->setText(text); }

void TFrmViewer::SetProgressMax(int32_t maximum) {
  pbrComplete->setRange(0, maximum);
  pbrComplete->setValue(0);
}

void TFrmViewer::SetProgress(int32_t position) { pbrComplete->setValue(position); }

void TFrmViewer::StepProgress() { pbrComplete->setValue(pbrComplete->value() + 1); }

TZTImageList* TFrmViewer::GetImageList(int kind) {
  switch (kind) {
    case ztImlMsgIcons:
      return FNavigator->MessageImages();
    case ztImlNavMsgType:
      return FNavigator->NavMsgTypeImages();
    case ztImlNavMsgContent:
      return FNavigator->NavMsgContentImages();
    case ztImlScratchPad:
      return FScratchPadImages.get();
    case ztImlBookmarkIcons:
      return FNavigator->BookmarkImages();
    default:
      return nullptr;
  }
}

void TFrmViewer::PrintInspectorContents() {
  if (!FInspectorPane) return;
  const int focused = FActiveList ? FActiveList->GetFocusedMsgIndex() : -1;
  std::string_view text;
  if (focused >= 0 && GotoFocusedRecord()) text = MessageSet.GetMsgText();
  FInspectorPane->PrintInspectorContents(TZTInspectorPane::ProposedPrintTitle(focused >= 0, text));
}

}  // namespace zentrail
