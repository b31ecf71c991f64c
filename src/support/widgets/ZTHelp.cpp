#include "ZTHelp.h"

#include <QDesktopServices>
#include <QFileInfo>

#include "ZTCommonUtils.h"
#include "ZTPromptService.h"

namespace zentrail {
namespace {
TZTHelpOpener& Opener() {
  static TZTHelpOpener opener;
  return opener;
}
}  // namespace

static TZTHelpOpener& DefaultOpener() {
  static TZTHelpOpener opener;
  return opener;
}

void SetHelpOpener(TZTHelpOpener opener) { Opener() = std::move(opener); }

void SetDefaultHelpOpener(TZTHelpOpener opener) { DefaultOpener() = std::move(opener); }

void ShowHelpTopic(const QString& topicName) {
  const std::string file = HelpTopicFile(topicName.toStdString());
  if (file.empty()) return;
  const QString path = QString::fromStdString(file);
  if (!QFileInfo(path).isFile()) {
    PromptService().ShowMessage(nullptr, QString::fromLatin1(ztHelpFileMissingText),
                                TZTPromptKind::Error, QString::fromLatin1(ztHelpMessageTitle));
    return;
  }
  const QUrl url = QUrl::fromLocalFile(path);
  if (Opener()) {
    Opener()(url);
  } else if (DefaultOpener()) {
    DefaultOpener()(url);
  } else {
    QDesktopServices::openUrl(url);
  }
}

void CloseHelp() {}

}  // namespace zentrail
