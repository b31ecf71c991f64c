// The main window's ways in for log files: the command line, dropped files and the open commands.
#include "ZTMainForm.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QStackedWidget>
#include <QUrl>

#include "ZTPromptService.h"

namespace zentrail {

void TFrmViewer::LoadLogFile(const QString& fileName, bool) {
  PromptService().ShowMessage(
      nbkViews, QStringLiteral("Cannot open \"%1\": reading log files is not yet available in this viewer.").arg(fileName),
      TZTPromptKind::Warning);
}

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
