// The main window's log files: opening, appending, saving and exporting, following a log as it
// grows, and the ways a file arrives from outside (the command line, a second start, a drop).
#include "ZTMainForm.h"

#include <QAction>
#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QGuiApplication>
#include <QMimeData>
#include <QPointer>
#include <QStackedWidget>
#include <QTimer>
#include <QUrl>
#include <stdexcept>

#include "LogRecord.h"
#include "ZTCommonUtils.h"
#include "ZTLogFiles.h"
#include "ZTPromptService.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

namespace {

// A followed log is read in slices of at most this much time, so that a burst of appended
// records does not freeze the window either.
constexpr qint64 kFollowSliceMs = 40;
constexpr int kFollowPollMs = 250;
// Of the skipped words of no known format, the report names the offsets of the first few.
constexpr int kReportedOffsets = 5;

// Opens an update bracket on every view for as long as it lives, so that a burst of records
// costs each view one refresh. A view made meanwhile (by the organizer) is not in it.
class TViewsBracket {
 public:
  explicit TViewsBracket(const std::vector<IZTMessageView*>& views) {
    for (IZTMessageView* view : views) {
      view->BeginUpdate();
      FViews.emplace_back(view, view->GetWidget());
    }
  }
  ~TViewsBracket() {
    for (auto& [view, widget] : FViews)
      if (widget) view->EndUpdate();
  }
  // Lets the views show what they took so far, and opens the bracket again.
  void Refresh() {
    for (auto& [view, widget] : FViews) {
      if (!widget) continue;
      view->EndUpdate();
      view->BeginUpdate();
    }
  }
  TViewsBracket(const TViewsBracket&) = delete;
  TViewsBracket& operator=(const TViewsBracket&) = delete;

 private:
  std::vector<std::pair<IZTMessageView*, QPointer<QWidget>>> FViews;
};

QString FileNameOnly(const QString& path) { return QFileInfo(path).fileName(); }

QString OffsetList(const std::vector<uint64_t>& offsets) {
  QStringList parts;
  for (uint64_t offset : offsets) parts << QString::number(offset);
  return parts.join(QStringLiteral(", "));
}

}  // namespace

QString TFrmViewer::LogFolder() const {
  return LastLogDir.isEmpty() ? QString::fromStdString(GetLogFilesFolder()) : LastLogDir;
}

QString TFrmViewer::IdleStatusText() const {
  return FFollowed ? QStringLiteral("Following %1").arg(FileNameOnly(QString::fromStdString(FFollowed->Path())))
                   : QString();
}

// ---- Opening

void TFrmViewer::OpenLogFile(bool append) {
  int filter = 0;
  const QString file = PromptService().ChooseFile(
      this, LogFileDialogSpec(append ? TZTLogDialog::Append : TZTLogDialog::Open, LogFolder()), filter);
  if (file.isEmpty()) return;
  LastLogDir = FolderOfFile(file);
  LoadLogFile(file, append);
}

void TFrmViewer::AddLogRecord(const TZentrailPacketView& record) {
  // Separators are made anew, with the viewer's clock; a stored clear or scratch-pad line is an
  // ordinary row here.
  if (record.MsgType == ztmSeparator || record.MsgType == ztmResetSeparator) {
    TZentrailMessage message;
    record.CopyTo(message);
    if (record.MsgType == ztmSeparator) {
      AddSeparator(&message);
    } else {
      AddResetSeparator(&message);
    }
    return;
  }
  ProcessMessage(record);
}

void TFrmViewer::LoadLogFile(const QString& fileName, bool append) {
  // A file that arrives while one is read (from a second start, say) waits for it.
  if (FLoadingFile) {
    FPendingLoads.emplace_back(fileName, append);
    return;
  }
  if (!append && MessageSet.GetRecordCount() > 0) {
    IZTMessageView* view = ActiveView();
    switch (PromptService().AskYesNoCancel(view ? view->GetWidget() : nbkViews, DisplayText(LoadQuestionText()))) {
      case TZTAnswer::Cancel:
        return;
      case TZTAnswer::Yes:
        // A cancelled save dialog doesn't stop the load: the messages are then let go.
        SaveLogFile();
        break;
      case TZTAnswer::No:
        break;
    }
  }
  if (!append) StopFollowing();

  FLastLoad = {};
  const bool autoScroll = FAutoScroll;
  SetAutoScroll(false);
  // From here on the command states stand still, and a file handed in meanwhile waits.
  FLoadingFile = true;
  SetStatusText(QStringLiteral("Loading %1...").arg(FileNameOnly(fileName)));
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);

  bool normalEnd = false;
  QString failure;
  QString invalidNote;
  uint32_t firstUnsupportedTag = 0;
  std::vector<uint64_t> unsupportedOffsets;
  bool closeWanted = false;
  {
    struct TRestore {
      TFrmViewer& Window;
      bool AutoScroll;
      bool& NormalEnd;
      bool ChannelHeld;
      ~TRestore() {
        Window.FChannel->Hold(ChannelHeld);
        Window.FLoadingFile = false;
        QGuiApplication::restoreOverrideCursor();
        Window.SetProgress(0);
        Window.SetStatusText(Window.IdleStatusText());
        Window.UpdateCommandStates();
        // After a record that could not be read, Auto-Scroll stays off.
        if (NormalEnd && AutoScroll) Window.SetAutoScroll(true);
      }
    };
    if (!append) ClearMessages(true);
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    // Live frames wait in the channel until the log is read, so none comes between its records.
    TRestore restore{*this, autoScroll, normalEnd, FChannel->Held()};
    FChannel->Hold(true);
    TViewsBracket bracket(FViews);
    TZTLoadInputGate gate(this);

    TZentrailFileSource source;
    std::string error;
    if (!source.Open(fileName.toStdString(), error)) {
      failure = QString::fromStdString(error);
    } else {
      const uint64_t size = source.Size();
      SetProgressMax(1000);
      TZentrailLogReader reader(source);
      TZentrailPacketView record;
      QElapsedTimer clock;
      clock.start();
      qint64 sliceStart = 0;
      uint32_t counter = 0;
      // The size is taken once: what a writer appends meanwhile is left for the next load.
      while (source.Position() < size) {
        const TZentrailRecordResult result = reader.Next(record);
        if (result == TZentrailRecordResult::End) break;
        if (result == TZentrailRecordResult::Ok) {
          AddLogRecord(record);
          ++FLastLoad.Records;
        } else if (result == TZentrailRecordResult::Unsupported) {
          // One report at the end rather than a box per bad word.
          if (FLastLoad.Unsupported++ == 0) firstUnsupportedTag = reader.Tag();
          if (unsupportedOffsets.size() < kReportedOffsets + 1) unsupportedOffsets.push_back(reader.RecordOffset());
        } else {
          FLastLoad.Invalid = true;
          invalidNote = QStringLiteral("The record at byte offset %1 cannot be read: %2.")
                            .arg(reader.RecordOffset())
                            .arg(QString::fromStdString(reader.Error()));
          break;
        }
        if ((++counter & 63) != 0 || clock.elapsed() - sliceStart < LoadSliceMs) continue;
        // Let the window repaint: progress, and the rows read so far.
        ++FLastLoad.Slices;
        SetProgress(size ? static_cast<int32_t>(source.Position() * 1000 / size) : 0);
        bracket.Refresh();
        if (OnLoadSlice) OnLoadSlice();
        QCoreApplication::processEvents();
        // Painted now: a requested update would wait for a timer that only the next slice runs.
        repaint();
        if (gate.Cancelled()) {
          FLastLoad.Cancelled = true;
          break;
        }
        sliceStart = clock.elapsed();
      }
    }
    closeWanted = gate.CloseWanted();
    // A file that cannot be opened read nothing, and Auto-Scroll comes back as after any other
    // end; only a load that stopped at a bad record leaves it off.
    normalEnd = !FLastLoad.Invalid;
  }

  if (!failure.isEmpty()) {
    PromptService().ShowMessage(nbkViews, failure, TZTPromptKind::Error);
  } else if (FLastLoad.Unsupported > 0 || FLastLoad.Invalid) {
    QString unsupported;
    if (FLastLoad.Unsupported > 0) {
      unsupported = UnsupportedFormatText(firstUnsupportedTag);
      const int further = FLastLoad.Unsupported - 1;
      unsupported += QStringLiteral("\r\rThe word at byte offset %1 was skipped").arg(unsupportedOffsets.front());
      if (further > 0) {
        std::vector<uint64_t> rest(unsupportedOffsets.begin() + 1, unsupportedOffsets.end());
        if (rest.size() > kReportedOffsets) rest.resize(kReportedOffsets);
        unsupported += QStringLiteral(", and so were %1 further words of no known format, the first at byte offsets %2")
                           .arg(further)
                           .arg(OffsetList(rest));
      }
      unsupported += QLatin1Char('.');
    }
    if (FLastLoad.Invalid) {
      ShowInvalidLog(fileName, unsupported.isEmpty() ? invalidNote : invalidNote + QStringLiteral("\r\r") + unsupported);
    } else {
      PromptService().ShowMessage(nbkViews, DisplayText(unsupported), TZTPromptKind::Warning);
    }
  }
  if (closeWanted) QTimer::singleShot(0, this, [this] { close(); });
  if (!FPendingLoads.empty()) {
    const auto [next, nextAppend] = FPendingLoads.front();
    FPendingLoads.erase(FPendingLoads.begin());
    QTimer::singleShot(0, this, [this, next, nextAppend] { LoadLogFile(next, nextAppend); });
  }
}

void TFrmViewer::ShowInvalidLog(const QString& path, const QString& note) {
  TfrmInvalidLog form(this, QFileInfo(path).absoluteFilePath(), note);
  IZTMessageView* view = ActiveView();
  if (!ztAlwaysOnTop && view) {
    // Beside the view, so that the rows read so far stay in sight.
    const QPoint corner = view->GetWidget()->mapToGlobal(QPoint(24, 24));
    form.move(corner);
  }
  PromptService().RunDialog(form);
}

// ---- Saving and exporting

void TFrmViewer::SaveLogFile() {
  if (!FActiveSave) return;
  int filter = 0;
  const QString file = PromptService().ChooseFile(this, LogFileDialogSpec(TZTLogDialog::Save, LogFolder()), filter);
  if (file.isEmpty()) return;
  WriteLogFile(file);
}

void TFrmViewer::WriteLogFile(const QString& fileName) {
  if (!FActiveSave) return;
  LastLogDir = FolderOfFile(fileName);
  SetStatusText(QStringLiteral("Saving %1...").arg(FileNameOnly(fileName)));
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  QString failure;
  try {
    // A write that fails midway is reported by the view itself, with the record's number.
    FActiveSave->Save(fileName);
  } catch (const std::exception& e) {
    failure = QString::fromUtf8(e.what());
  }
  QGuiApplication::restoreOverrideCursor();
  SetStatusText(IdleStatusText());
  if (!failure.isEmpty()) PromptService().ShowMessage(nbkViews, failure, TZTPromptKind::Error);
  UpdateCommandStates();
}

void TFrmViewer::ExportMessages() {
  if (!FActiveExport) return;
  int filter = 0;
  const QString file = PromptService().ChooseFile(this, LogFileDialogSpec(TZTLogDialog::Export, LogFolder()), filter);
  if (file.isEmpty()) return;
  LastLogDir = FolderOfFile(file);
  SetStatusText(QStringLiteral("Exporting to %1...").arg(FileNameOnly(file)));
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  QString failure;
  try {
    // The filter decides, not the extension typed.
    if (filter == 0) {
      FActiveExport->ExportAsXML(file);
    } else {
      FActiveExport->ExportAsText(file);
    }
  } catch (const std::exception& e) {
    failure = QString::fromUtf8(e.what());
  }
  QGuiApplication::restoreOverrideCursor();
  SetStatusText(IdleStatusText());
  if (!failure.isEmpty()) PromptService().ShowMessage(nbkViews, failure, TZTPromptKind::Error);
}

// ---- Following a growing log

bool TFrmViewer::Following() const { return FFollowed != nullptr; }

void TFrmViewer::FollowLogFile() {
  int filter = 0;
  const QString file = PromptService().ChooseFile(this, LogFileDialogSpec(TZTLogDialog::Follow, LogFolder()), filter);
  if (file.isEmpty()) return;
  LastLogDir = FolderOfFile(file);
  StartFollowing(file);
}

bool TFrmViewer::StartFollowing(const QString& fileName) {
  if (FLoadingFile) return false;
  if (MessageSet.GetRecordCount() > 0) {
    IZTMessageView* view = ActiveView();
    switch (PromptService().AskYesNoCancel(view ? view->GetWidget() : nbkViews, DisplayText(LoadQuestionText()))) {
      case TZTAnswer::Cancel:
        return false;
      case TZTAnswer::Yes:
        SaveLogFile();
        break;
      case TZTAnswer::No:
        break;
    }
  }
  StopFollowing();
  auto tail = std::make_unique<TZTLogTail>();
  std::string error;
  const QString path = QFileInfo(fileName).absoluteFilePath();
  if (!tail->Open(path.toStdString(), error)) {
    PromptService().ShowMessage(nbkViews, QString::fromStdString(error), TZTPromptKind::Error);
    UpdateCommandStates();
    return false;
  }
  ClearMessages(true);
  FFollowed = std::move(tail);
  // The watcher reports writes at once; the folder is watched too, as a rotation makes a new file
  // under the old name. The timer is the fallback where no watch can be set.
  FFollowWatcher = new QFileSystemWatcher(this);
  FFollowWatcher->addPath(path);
  FFollowWatcher->addPath(QFileInfo(path).absolutePath());
  connect(FFollowWatcher, &QFileSystemWatcher::fileChanged, this, [this] { QueueFollowTick(); });
  connect(FFollowWatcher, &QFileSystemWatcher::directoryChanged, this, [this] { QueueFollowTick(); });
  FFollowTimer = new QTimer(this);
  FFollowTimer->setInterval(kFollowPollMs);
  connect(FFollowTimer, &QTimer::timeout, this, [this] { QueueFollowTick(); });
  FFollowTimer->start();
  SetStatusText(IdleStatusText());
  FollowTick();
  UpdateCommandStates();
  return true;
}

void TFrmViewer::StopFollowing() {
  if (!FFollowed) return;
  FFollowed.reset();
  delete FFollowWatcher;
  FFollowWatcher = nullptr;
  delete FFollowTimer;
  FFollowTimer = nullptr;
  FFollowTickQueued = false;
  SetStatusText(IdleStatusText());
}

void TFrmViewer::QueueFollowTick() {
  if (FFollowTickQueued || !FFollowed) return;
  FFollowTickQueued = true;
  QTimer::singleShot(0, this, [this] { FollowTick(); });
}

void TFrmViewer::FollowTick() {
  FFollowTickQueued = false;
  // A log being loaded is not interleaved with the followed one; the timer comes back.
  if (!FFollowed || FLoadingFile) return;
  const int rotations = FFollowed->Rotations();
  TZTLogTail::TResult result;
  int records = 0;
  {
    TViewsBracket bracket(FViews);
    QElapsedTimer clock;
    clock.start();
    do {
      result = FFollowed->Read([this](const TZentrailPacketView& record) { AddLogRecord(record); }, 1000);
      records += result.Records;
    } while (result.More && result.Status == TZTLogTail::TStatus::Reading && clock.elapsed() < kFollowSliceMs);
  }
  if (FFollowed->Rotations() != rotations && FFollowWatcher) {
    // The watch went with the old file; the new one takes its name.
    const QString path = QString::fromStdString(FFollowed->Path());
    if (!FFollowWatcher->files().contains(path)) FFollowWatcher->addPath(path);
  }
  if (records > 0) UpdateCommandStates();
  if (result.Status == TZTLogTail::TStatus::Reading) {
    if (result.More) QueueFollowTick();
    return;
  }
  const QString path = QString::fromStdString(FFollowed->Path());
  const QString error = QString::fromStdString(FFollowed->Error());
  const TZTLogTail::TStatus status = result.Status;
  StopFollowing();
  UpdateCommandStates();
  switch (status) {
    case TZTLogTail::TStatus::Damaged:
      ShowInvalidLog(path, QStringLiteral("Following the file has stopped at a record that cannot be read: %1.")
                               .arg(error));
      break;
    case TZTLogTail::TStatus::Shrunk:
      PromptService().ShowMessage(
          nbkViews,
          QStringLiteral("The log file %1 became shorter while it was followed, so it was not written by "
                         "appending alone. Following has stopped; the messages read so far are kept.")
              .arg(path),
          TZTPromptKind::Warning);
      break;
    default:
      PromptService().ShowMessage(
          nbkViews, QStringLiteral("The log file %1 can no longer be read, and following has stopped: %2").arg(path, error),
          TZTPromptKind::Error);
      break;
  }
}

// ---- Files from outside: a drop

void TFrmViewer::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void TFrmViewer::dropEvent(QDropEvent* event) {
  activateWindow();
  raise();
  QStringList files;
  for (const QUrl& url : event->mimeData()->urls())
    if (url.isLocalFile()) files << url.toLocalFile();
  event->acceptProposedAction();
  // One file is loaded; two or more are ignored. The extension is not looked at.
  if (files.size() == 1) LoadLogFile(files.front().left(256), false);
}

}  // namespace zentrail
