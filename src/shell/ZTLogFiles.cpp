#include "ZTLogFiles.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFileInfo>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace zentrail {

QString LoadQuestionText() {
  return QStringLiteral(
      "The Message List is currently populated with messages.\r\rWould you like to save these existing messages "
      "before loading the log file?\r\rTo cancel loading the log file, click the Cancel button.");
}

QString InvalidLogText(const QString& path) {
  return QStringLiteral(
             "The following log file contains invalid messages:\r%1\r\rThis may be the result of one of the "
             "following:\r  - The file is not a valid Zentrail log file\r  - The file is corrupt\r  - The file was "
             "saved using Zentrail 1")
      .arg(path);
}

QString UnsupportedFormatText(uint32_t tag) {
  return QStringLiteral("Unsupported message format ($%1)").arg(QString::number(tag, 16).toUpper());
}

QString DisplayText(QString text) {
  text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
  return text;
}

TZTFileDialogRequest LogFileDialogSpec(TZTLogDialog kind, const QString& folder) {
  TZTFileDialogRequest request;
  request.Folder = folder;
  const QString logs = QStringLiteral("Zentrail Log Files (*.ztl)");
  switch (kind) {
    case TZTLogDialog::Open:
      request.Title = QStringLiteral("Open Zentrail Log File");
      request.Filters = {logs};
      request.DefaultSuffix = QStringLiteral("ztl");
      break;
    case TZTLogDialog::Append:
      request.Title = QStringLiteral("Append Zentrail Log File");
      request.Filters = {logs};
      request.DefaultSuffix = QStringLiteral("ztl");
      break;
    case TZTLogDialog::Follow:
      request.Title = QStringLiteral("Follow Zentrail Log File");
      request.Filters = {logs};
      request.DefaultSuffix = QStringLiteral("ztl");
      break;
    case TZTLogDialog::Save:
      request.Save = true;
      request.Title = QStringLiteral("Save Zentrail Messages");
      request.Filters = {QStringLiteral("Zentrail Log Files ( *.ztl )")};
      request.DefaultSuffix = QStringLiteral("ztl");
      break;
    case TZTLogDialog::Export:
      request.Save = true;
      request.Title = QStringLiteral("Export Zentrail Messages");
      request.Filters = {QStringLiteral("XML Files (*.xml)"), QStringLiteral("Text Files (*.txt)")};
      request.DefaultSuffix = QStringLiteral("xml");
      break;
  }
  return request;
}

QString FolderOfFile(const QString& fileName) {
  QString folder = QFileInfo(fileName).absolutePath();
  if (!folder.endsWith(QLatin1Char('/'))) folder += QLatin1Char('/');
  return folder;
}

QString ShortenPathToWidth(const QString& path, const QFontMetrics& metrics, int width) {
  if (metrics.horizontalAdvance(path) <= width) return path;
  const int lastSlash = static_cast<int>(path.lastIndexOf(QLatin1Char('/')));
  if (lastSlash < 0) return metrics.elidedText(path, Qt::ElideMiddle, width);
  const QString name = path.mid(lastSlash + 1);
  // The root (or the first part of a relative path) stays in front of the "...".
  const int rootEnd = path.startsWith(QLatin1Char('/')) ? 0 : static_cast<int>(path.indexOf(QLatin1Char('/')));
  const QString root = path.left(rootEnd + 1);
  QStringList folders = path.mid(rootEnd + 1, lastSlash - rootEnd - 1).split(QLatin1Char('/'), Qt::SkipEmptyParts);
  while (!folders.isEmpty()) {
    folders.removeFirst();
    QString candidate = root + QStringLiteral(".../");
    for (const QString& folder : folders) candidate += folder + QLatin1Char('/');
    candidate += name;
    if (metrics.horizontalAdvance(candidate) <= width) return candidate;
  }
  return metrics.elidedText(name, Qt::ElideMiddle, width);
}

TfrmInvalidLog::TfrmInvalidLog(QWidget* parent, const QString& path, const QString& note) : QDialog(parent) {
  setObjectName(QStringLiteral("frmInvalidLog"));
  setWindowTitle(QStringLiteral("Zentrail Viewer"));
  auto* layout = new QVBoxLayout(this);
  lblText = new QLabel(this);
  lblText->setObjectName(QStringLiteral("lblText"));
  lblText->setFixedWidth(LabelWidth);
  lblText->setWordWrap(true);
  lblText->setTextFormat(Qt::PlainText);
  lblText->setTextInteractionFlags(Qt::TextSelectableByMouse);
  QString text = DisplayText(InvalidLogText(ShortenPathToWidth(path, lblText->fontMetrics(), LabelWidth)));
  if (!note.isEmpty()) text += QStringLiteral("\n\n") + DisplayText(note);
  lblText->setText(text);
  lblText->setToolTip(path);
  layout->addWidget(lblText);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("btnOK"));
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

TZTLoadInputGate::TZTLoadInputGate(QWidget* window) : FWindow(window) { qApp->installEventFilter(this); }

TZTLoadInputGate::~TZTLoadInputGate() { qApp->removeEventFilter(this); }

bool TZTLoadInputGate::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::KeyPress:
      if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) FCancelled = true;
      return true;
    case QEvent::Close:
      if (watched != FWindow) return false;
      FCancelled = true;
      FCloseWanted = true;
      event->ignore();
      return true;
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::Shortcut:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TabletPress:
    case QEvent::TabletRelease:
    case QEvent::NativeGesture:
    case QEvent::InputMethod:
      return true;
    default:
      return false;
  }
}

}  // namespace zentrail
