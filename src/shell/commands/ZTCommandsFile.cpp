// The File menu's commands: log files, projects, printing and leaving.
#include "ZTMainForm.h"

#include <QAction>

namespace zentrail {

void TFrmViewer::AddFileCommands() {
  FCommands->Add("File", TZTCommandList::Main, {
      {"actOpen", "&Open...", "Open Log File", "Ctrl+O", "open", [this] { OpenLogFile(false); }},
      {"actAppend", "&Append...", "Append Log File", "", "append", [this] { OpenLogFile(true); }},
      {"actSave", "&Save...", "Save Messages to Log File", "Ctrl+S", "save", [this] { SaveLogFile(); },
       [](const TZTCommandFacts& f) { return f.Rows && f.Save; }},
      {"actExport", "&Export...", "", "", "export", [this] { ExportMessages(); },
       [](const TZTCommandFacts& f) { return f.Rows && f.Export; }},
      {"actFollowLog", "&Follow Log File...", "Open a Log File and Keep Reading What Is Appended to It", "", "follow",
       [this] {
         if (Following()) {
           StopFollowing();
         } else {
           FollowLogFile();
         }
         UpdateCommandStates();
       },
       {}, [this](const TZTCommandFacts&) { return Following(); }},
      {"actNewProject", "&New Project", "Create New Project", "", "newproject", [this] { NewProject(); }},
      {"actOpenProject", "Open Pro&ject ...", "Open Project", "", "openproject", [this] { OpenProject(); }},
      {"actSaveProject", "Sa&ve Project", "Save Project", "", "saveproject", [this] { SaveProjectIfModified(false); },
       [](const TZTCommandFacts& f) { return f.ViewsModified && f.Views > 1; }},
      {"actSaveProjectAs", "Save Projec&t As ...", "Save Project As", "", nullptr, [this] { SaveProjectAs(); },
       [](const TZTCommandFacts& f) { return f.Views > 1; }},
      {"actCloseProject", "&Close Project", "", "", nullptr, [this] { NewProject(); }},
      {"actPrint", "&Print...", "Print Messages", "Ctrl+P", "print", [this] { PrintMessages(); },
       [](const TZTCommandFacts& f) { return f.Rows && f.Print; }},
      {"actPrintInspectorContents", "Print &Inspector Contents...", "Print Inspector Pane Contents", "Shift+Ctrl+P",
       "printinspector", [this] { PrintInspectorContents(); },
       [](const TZTCommandFacts& f) { return f.Focus && f.InspectorCanPrint; }},
      {"actExit", "E&xit", "Exit Zentrail", "Alt+F4", "exit", [this] { close(); }},
  });
}

}  // namespace zentrail
