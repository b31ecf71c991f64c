#include "ZTPlugInManager.h"

#include <QDialog>
#include <QDir>
#include <QFileInfo>
#include <QPlainTextEdit>
#include <dlfcn.h>
#include <exception>

#include "ZTAboutPlugInsForm.h"
#include "ZTCommonUtils.h"
#include "ZTPromptService.h"
#include "ZentrailMessage.h"

namespace zentrail {

// ---------------------------------------------------------------------------------------------------
// View classes

void TZTViewClassList::Register(const QString& key, TZTViewFactory factory) {
  for (auto& entry : FClasses) {
    if (entry.first.compare(key, Qt::CaseInsensitive) == 0) {
      entry.second = std::move(factory);
      return;
    }
  }
  FClasses.emplace_back(key, std::move(factory));
}

TZTViewFactory TZTViewClassList::Find(const QString& key) const {
  for (const auto& entry : FClasses)
    if (entry.first.compare(key, Qt::CaseInsensitive) == 0) return entry.second;
  for (const auto& entry : FClasses)
    if (entry.first.compare(QLatin1String("Default"), Qt::CaseInsensitive) == 0) return entry.second;
  return FClasses.empty() ? TZTViewFactory() : FClasses.front().second;
}

QStringList TZTViewClassList::Keys() const {
  QStringList keys;
  for (const auto& entry : FClasses) keys << entry.first;
  return keys;
}

TZTViewClassList& ViewClasses() {
  static TZTViewClassList list;
  return list;
}

// ---------------------------------------------------------------------------------------------------
// Modules

void TZTPackageList::UnloadPackage(const QString& name) {
  for (auto it = FEntries.begin(); it != FEntries.end(); ++it) {
    if (it->first == name) {
      if (it->second) ::dlclose(it->second);
      FEntries.erase(it);
      return;
    }
  }
}

void TZTPackageList::UnloadAllModules() {
  for (auto it = FEntries.rbegin(); it != FEntries.rend(); ++it) {
    if (it->second) ::dlclose(it->second);
    it->second = nullptr;
  }
}

// ---------------------------------------------------------------------------------------------------
// The manager

TInternalPlugInManager::TInternalPlugInManager() {
  RunDialog = [](QDialog& dialog) { return dialog.exec(); };
  PlugInManager = this;
}

TInternalPlugInManager::~TInternalPlugInManager() {
  // Inspectors, their controls and the view classes go while their code is still loaded.
  FInspectors.clear();
  ViewClasses().Clear();
  FPackages.UnloadAllModules();
  FPackages.Clear();
  delete FMessageMemo.data();
  if (PlugInManager == this) PlugInManager = nullptr;
}

void TInternalPlugInManager::RegisterInspector(TZentrailCustomInspector* inspector) {
  if (inspector) FInspectors.emplace_back(inspector);
}

void TInternalPlugInManager::RegisterCustomView(const QString& name, TZTViewFactory factory) {
  if (factory) ViewClasses().Register(name, std::move(factory));
}

bool TInternalPlugInManager::GetPackageFiles(const QString& path, QStringList* list) {
  if (path.isEmpty() || !list) return false;
  list->clear();
  // Name order, so that which of two modules for one code wins does not depend on the file system.
  const QDir dir(path);
  *list = dir.entryList({QStringLiteral("*.so")}, QDir::Files | QDir::Hidden, QDir::Name);
  return !list->isEmpty();
}

TZentrailCustomInspector* TInternalPlugInManager::GetInspector(int32_t msgContent) {
  for (const auto& inspector : FInspectors)
    if (inspector->GetMsgContent() == msgContent) return inspector.get();
  return nullptr;
}

TZentrailCustomInspector* TInternalPlugInManager::GetInspectorByName(const QString& name) {
  for (const auto& inspector : FInspectors)
    if (inspector->GetName() == name) return inspector.get();
  return nullptr;
}

int TInternalPlugInManager::GetListOfInspectors(QStringList* list) {
  if (list)
    for (const auto& inspector : FInspectors) list->append(inspector->GetName());
  return static_cast<int>(FInspectors.size());
}

void TInternalPlugInManager::LoadPlugIns() {
  LoadPlugInsFrom(QString::fromStdString(GetExecutableFolder()) + QStringLiteral("/PlugIns/"));
}

void TInternalPlugInManager::LoadPlugInsFrom(const QString& folder) {
  QStringList names;
  if (!GetPackageFiles(folder, &names)) return;
  for (const QString& name : names) FPackages.Add(name);
  for (int i = 0; i < FPackages.Count(); ++i) {
    const QString path = QDir(folder).filePath(FPackages.Name(i));
    QString failure;
    void* handle = ::dlopen(QFile::encodeName(path).constData(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
      const char* reason = ::dlerror();
      failure = reason ? QString::fromLocal8Bit(reason) : QStringLiteral("Unable to load package %1").arg(path);
    } else {
      // A module without the entry point registers nothing and stays loaded like any other.
      auto* entry = reinterpret_cast<TZentrailRegisterProc>(::dlsym(handle, "ZentrailRegister"));
      try {
        if (entry) entry();
      } catch (const std::exception& e) {
        failure = QString::fromUtf8(e.what());
      } catch (...) {
        failure = QStringLiteral("The plug-in %1 failed while it registered.").arg(FPackages.Name(i));
      }
      FPackages.SetHModule(i, handle);
    }
    if (!failure.isEmpty()) PromptService().ShowMessage(nullptr, failure, TZTPromptKind::Warning, QStringLiteral("Error"));
  }
}

bool TInternalPlugInManager::CanHandleMsgContent(int selectedCount, int32_t msgContent) {
  TZentrailCustomInspector* inspector = GetInspector(msgContent);
  if (!inspector) return false;
  QWidget* control = inspector->GetInspectorControl();
  if (selectedCount == 1) return dynamic_cast<IInspectorSingleMessage*>(control) != nullptr;
  if (selectedCount == 2) return dynamic_cast<IInspectorMessagePair*>(control) != nullptr;
  return false;
}

QPlainTextEdit* TInternalPlugInManager::MessageMemo() {
  if (!FMessageMemo) {
    FMessageMemo = new QPlainTextEdit;
    FMessageMemo->setObjectName(QStringLiteral("FMessageMemo"));
    FMessageMemo->setReadOnly(true);
    FMessageMemo->setFrameShape(QFrame::NoFrame);
  }
  return FMessageMemo;
}

QWidget* TInternalPlugInManager::GetInspectorControl(int32_t msgContent) {
  TZentrailCustomInspector* inspector = GetInspector(msgContent);
  if (!inspector) {
    MessageMemo()->setPlainText(
        QStringLiteral("Custom inspector for message type (%1) not found.\r\n\r\nYou may be missing a custom inspector plug-in.")
            .arg(QString::fromStdString(MsgTypeReadableName(msgContent))));
    return FMessageMemo;
  }
  if (QWidget* control = inspector->GetInspectorControl()) return control;
  MessageMemo()->setPlainText(
      QStringLiteral("The \"%1\" custom inspector does not define an inspector control.\r\n\r\nPlease contact the author of the plug-in.")
          .arg(inspector->GetName()));
  return FMessageMemo;
}

void TInternalPlugInManager::ShowPlugInDetails() {
  TfrmAboutPlugIns form(nullptr, *this);
  form.ShowPlugInDetails(RunDialog);
}

}  // namespace zentrail
