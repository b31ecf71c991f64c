#pragma once
// Context help: HTML pages below the install folder, opened in the desktop's browser.

#include <QString>
#include <QUrl>
#include <functional>

namespace zentrail {

// Shows <InstallPath>/Help/<lower-case topic>.htm. Does nothing without an install path; a missing
// page is answered with the help-file-missing message through the prompt service.
void ShowHelpTopic(const QString& topicName);

// A browser window belongs to the desktop and cannot be closed from here; kept for the callers
// that close help at exit.
void CloseHelp();

// Who opens a help page. Tests put a recorder here so that no browser is started; an empty
// function restores the desktop's opener.
using TZTHelpOpener = std::function<bool(const QUrl&)>;
void SetHelpOpener(TZTHelpOpener opener);
// The program's own way to show a page when no opener is set (the viewer's help window); empty
// leaves it to the desktop's browser.
void SetDefaultHelpOpener(TZTHelpOpener opener);

}  // namespace zentrail
