// The Tools and Help menus' commands.
#include "ZTMainForm.h"

#include <QAction>
#include <QStackedWidget>

#include "ZTHelp.h"
#include "ZTPromptService.h"

namespace zentrail {

void TFrmViewer::AddToolsCommands() {
  FCommands->Add("Tools", TZTCommandList::Main, {
      {"actOptions", "&Options", "Change Options", "", "options", [this] { ShowOptions(); }},
      {"actBlockMessages", "&Block Incoming Messages", "Block Incoming Messages", "Ctrl+B", "block",
       [this] { SetMessagesBlocked(!FMessagesBlocked); }, {},
       [this](const TZTCommandFacts&) { return FMessagesBlocked; }},
      {"actPlugIns", "&Plug-Ins", "Display Loaded PlugIns", "", "plugins", [this] { ShowPlugInDetails(); }},
  });
}

void TFrmViewer::AddHelpCommands() {
  FCommands->Add("Help", TZTCommandList::Main, {
      {"actHelpProduct", "Zentrail &Viewer Help", "", "F1", "help", [] { ShowHelpTopic(QStringLiteral("Viewer")); }},
      {"actHelpZentrail", "Zentrail &Help", "", "", nullptr,
       [] { ShowHelpTopic(QStringLiteral("ZentrailLoggingSystem")); }},
      {"actHelpAbout", "&About", "About Zentrail", "", "about",
       [this] {
         PromptService().ShowMessage(
             this,
             QStringLiteral("Zentrail Live Viewer 5.0\n\nShows the messages of traced programs as they run: "
                            "filtered views, the call structure, inspectors for every kind of data, "
                            "log files, projects and plug-ins."),
             TZTPromptKind::Information, QStringLiteral("About Zentrail"));
       }},
  });
}

}  // namespace zentrail
