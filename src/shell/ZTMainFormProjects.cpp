// The main window's project files: new, open, save, save as and close, the questions they ask, the
// project opened at start, and the silent save at exit.
#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QStackedWidget>
#include <QWidget>
#include <algorithm>
#include <fstream>

#include "ZTCommonUtils.h"
#include "ZTMainForm.h"
#include "ZTProject.h"
#include "ZTPromptService.h"

namespace zentrail {

namespace {

std::string Utf8Path(const QString& path) { return QFile::encodeName(path).toStdString(); }

}  // namespace

QString TFrmViewer::ProjectFolder() const {
  if (!FProjectFolder.isEmpty()) return FProjectFolder;
  if (!LastProjectDir.isEmpty()) return LastProjectDir;
  return QString::fromStdString(GetProjectsFolder());
}

void TFrmViewer::RefreshProjectStatus() {
  stsProject->setText(LastProject.isEmpty() ? QString() : QFileInfo(LastProject).completeBaseName());
  stsProject->setToolTip(LastProject);
}

void TFrmViewer::LoadProject(const QString& fileName) {
  const QString shortName = QFileInfo(fileName).fileName();
  TZTProjectIniFile ini;
  ini.SetFileName(Utf8Path(fileName));
  // A file that is there but can't be read (a folder, no permission) is not opened at all: taking
  // it as a project without views would overwrite it at the next save.
  const QFileInfo info(fileName);
  if (info.exists() && (!info.isFile() || !info.isReadable() || !ini.Reload())) {
    PromptService().ShowMessage(nbkViews, QStringLiteral("Project File (%1) cannot be read.").arg(shortName),
                                TZTPromptKind::Error);
    return;
  }
  const TZTProjectViews project = ReadProjectViews(ini);
  if (project.ViewCount < 1) {
    PromptService().ShowMessage(nbkViews, QStringLiteral("Project File (") + shortName + QStringLiteral(") ") +
                                              QStringLiteral("does not contain any views.\r\r") +
                                              QStringLiteral("The project will still be loaded. Any new views ") +
                                              QStringLiteral("that you add will be included with the project ") +
                                              QStringLiteral("file the next time the project is saved."));
  } else if (project.ViewCount > ztProjectMaxViews) {
    PromptService().ShowMessage(
        nbkViews,
        QStringLiteral("Project File (%1) names %2 views. Only the first %3 are opened.")
            .arg(shortName)
            .arg(project.ViewCount)
            .arg(ztProjectMaxViews),
        TZTPromptKind::Warning);
  }
  QStringList badPatterns;
  for (const TZTProjectView& entry : project.Views) {
    if (entry.ViewClass.empty()) continue;
    IZTMessageView* view = CreateView(QString::fromStdString(entry.Name), TZTFilterCriteria{}, false, true,
                                      QString::fromStdString(entry.ViewClass));
    if (!view) continue;
    ini.SetCurrentSection(entry.Section);
    try {
      view->ReadSettings(ini);
    } catch (const EZTRegExError&) {
      // The view keeps the criteria it read; its text test takes nothing until the user corrects it.
      badPatterns << QString::fromStdString(entry.Name);
    }
  }
  if (!badPatterns.isEmpty()) {
    PromptService().ShowMessage(
        nbkViews,
        QStringLiteral("The message text filter of these views in Project File (%1) is not a valid regular "
                       "expression, so they show no new messages until it is corrected with Modify View:\n%2")
            .arg(shortName, badPatterns.mid(0, 10).join(QStringLiteral(", ")) +
                                (badPatterns.size() > 10 ? QStringLiteral(", ...") : QString())),
        TZTPromptKind::Warning);
  }
  LastProject = fileName;
  FViewsModified = false;
  RefreshProjectStatus();
  UpdateCommandStates();
}

void TFrmViewer::SaveProject(const QString& fileName) {
  TZTProjectIniFile ini;
  ini.SetFileName(Utf8Path(fileName));
  // Nothing of an older project, or of other software, stays in the file.
  ini.Clear();
  ini.WriteInteger(ztProjectViewsSection, ztProjectViewCount, ViewCount() - 1);
  for (int i = 1; i < ViewCount(); ++i) {
    IZTMessageView* view = GetViewIntf(i);
    const std::string name = view->GetName().toStdString();
    ini.WriteString(ztProjectViewsSection, ProjectKey(i, "ViewName"), name);
    ini.WriteString(ztProjectViewsSection, ProjectKey(i, "ViewClassName"), view->GetViewClassName().toStdString());
    ini.SetCurrentSection(std::to_string(i) + "_" + name);
    view->WriteSettings(ini);
  }
  std::string error;
  if (!ini.TryUpdateFile(error)) {
    PromptService().ShowMessage(nbkViews, QString::fromStdString(error), TZTPromptKind::Error);
    return;
  }
  FViewsModified = false;
  UpdateCommandStates();
  LastProject = fileName;
  RefreshProjectStatus();
}

void TFrmViewer::SaveProjectAs() {
  TZTFileDialogRequest dialog;
  dialog.Save = true;
  dialog.Title = QStringLiteral("Save Zentrail Project");
  dialog.Folder = ProjectFolder();
  dialog.Filters = QStringList{QStringLiteral("Zentrail Projects (*.ztp)")};
  dialog.DefaultSuffix = QStringLiteral("ztp");
  int filter = 0;
  QString file = PromptService().ChooseFile(nbkViews, dialog, filter);
  if (file.isEmpty()) return;
  if (QFileInfo(file).suffix().isEmpty()) file += QStringLiteral(".ztp");
  FProjectFolder = QFileInfo(file).absolutePath();
  LastProjectDir = FProjectFolder;
  SaveProject(file);
}

bool TFrmViewer::SaveProjectIfModified(bool prompt) {
  if (!FViewsModified) return true;
  if (prompt) {
    const QString text =
        LastProject.isEmpty()
            ? QStringLiteral("You have created additional views with filter criteria.\r\rWould you like to save these "
                             "settings in a Zentrail Project File?")
            : QStringLiteral("You have modified the views and/or filter criteria for the current project.\r\rWould "
                             "you like to save these changes?");
    switch (PromptService().AskYesNoCancel(nbkViews, text)) {
      case TZTAnswer::Cancel: return false;
      case TZTAnswer::No: return true;
      case TZTAnswer::Yes: break;
    }
  }
  if (LastProject.isEmpty()) {
    SaveProjectAs();
  } else {
    SaveProject(LastProject);
  }
  return true;
}

void TFrmViewer::NewProject() {
  if (!SaveProjectIfModified(true)) return;
  RemoveAllViews();
  LastProject.clear();
  RefreshProjectStatus();
  FViewsModified = false;
  UpdateCommandStates();
}

void TFrmViewer::OpenProject() {
  TZTFileDialogRequest dialog;
  dialog.Title = QStringLiteral("Open Zentrail Project");
  dialog.Folder = ProjectFolder();
  dialog.Filters = QStringList{QStringLiteral("Zentrail Project Files ( *.ztp ) (*.ztp)")};
  dialog.DefaultSuffix = QStringLiteral("ztp");
  int filter = 0;
  const QString file = PromptService().ChooseFile(nbkViews, dialog, filter);
  if (file.isEmpty()) return;
  if (!SaveProjectIfModified(true)) return;
  FProjectFolder = QFileInfo(file).absolutePath();
  LastProjectDir = FProjectFolder;
  RemoveAllViews();
  LoadProject(file);
  SetActiveViewIndex(0);
  if (ViewCount() == 1) pnlTabSet->hide();
}

void TFrmViewer::LoadLastProject() {
  RefreshProjectStatus();
  // A project that no longer exists opens as one without views.
  if (!LastProject.isEmpty()) LoadProject(LastProject);
}

bool TFrmViewer::CloseQuery() {
  // Only an open project is saved at exit, silently; nothing is ever asked.
  if (!LastProject.isEmpty() && AutoSaveProject && FViewsModified) SaveProject(LastProject);
  return true;
}

}  // namespace zentrail
