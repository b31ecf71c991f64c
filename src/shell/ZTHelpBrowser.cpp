#include "ZTHelpBrowser.h"

#include <QBoxLayout>
#include <QFileInfo>
#include <QKeyEvent>
#include <QTextBrowser>
#include <QTextDocument>
#include <QToolButton>

namespace zentrail {

TZTHelpBrowser::TZTHelpBrowser(QWidget* parent) : QWidget(parent, Qt::Window) {
  setObjectName(QStringLiteral("frmHelp"));
  setWindowTitle(QStringLiteral("Zentrail Help"));
  FBrowser = new QTextBrowser(this);
  FBrowser->setObjectName(QStringLiteral("brwHelp"));
  FBrowser->setAccessibleName(QStringLiteral("Help Page"));
  FBrowser->setOpenLinks(true);
  FBrowser->setOpenExternalLinks(true);
  FBrowser->setFrameShape(QFrame::NoFrame);
  FBrowser->document()->setDocumentMargin(18);
  auto button = [this](const char* name, const QString& text, const QString& hint, QKeySequence key) {
    auto* b = new QToolButton(this);
    b->setObjectName(QString::fromLatin1(name));
    b->setText(text);
    b->setToolTip(hint + QStringLiteral(" (") + key.toString(QKeySequence::NativeText) + QLatin1Char(')'));
    b->setAccessibleName(hint);
    b->setShortcut(key);
    b->setAutoRaise(true);
    b->setToolButtonStyle(Qt::ToolButtonTextOnly);
    return b;
  };
  FBack = button("btnHelpBack", QStringLiteral("\u2190 Back"), QStringLiteral("Back"), QKeySequence::Back);
  FForward = button("btnHelpForward", QStringLiteral("Forward \u2192"), QStringLiteral("Forward"), QKeySequence::Forward);
  FHome = button("btnHelpContents", QStringLiteral("Contents"), QStringLiteral("Contents"), QKeySequence(Qt::ALT | Qt::Key_Home));
  connect(FBack, &QToolButton::clicked, FBrowser, &QTextBrowser::backward);
  connect(FForward, &QToolButton::clicked, FBrowser, &QTextBrowser::forward);
  connect(FHome, &QToolButton::clicked, this, [this] {
    if (FHomeUrl.isValid()) FBrowser->setSource(FHomeUrl);
  });
  connect(FBrowser, &QTextBrowser::backwardAvailable, FBack, &QWidget::setEnabled);
  connect(FBrowser, &QTextBrowser::forwardAvailable, FForward, &QWidget::setEnabled);
  connect(FBrowser, &QTextBrowser::sourceChanged, this, [this] {
    const QString title = FBrowser->documentTitle();
    setWindowTitle(title.isEmpty() ? QStringLiteral("Zentrail Help") : title + QStringLiteral(" - Zentrail Help"));
  });
  FBack->setEnabled(false);
  FForward->setEnabled(false);
  auto* bar = new QHBoxLayout;
  bar->setContentsMargins(6, 4, 6, 4);
  bar->addWidget(FBack);
  bar->addWidget(FForward);
  bar->addWidget(FHome);
  bar->addStretch(1);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addLayout(bar);
  layout->addWidget(FBrowser, 1);
  FBrowser->installEventFilter(this);
  resize(860, 680);
}

void TZTHelpBrowser::ShowPage(const QUrl& url) {
  // Every page of the guide lies in one folder; its contents page is the viewer's topic.
  FHomeUrl = QUrl::fromLocalFile(QFileInfo(url.toLocalFile()).absolutePath() + QStringLiteral("/viewer.htm"));
  FBrowser->setSearchPaths({QFileInfo(url.toLocalFile()).absolutePath()});
  FBrowser->setSource(url);
  show();
  raise();
  activateWindow();
}

bool TZTHelpBrowser::eventFilter(QObject* watched, QEvent* event) {
  // Esc closes help, as it closes a dialog.
  if (watched == FBrowser && event->type() == QEvent::KeyPress &&
      static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
    close();
    return true;
  }
  return QWidget::eventFilter(watched, event);
}

}  // namespace zentrail
