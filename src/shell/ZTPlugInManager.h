#pragma once
// The viewer's plug-in manager: it finds the modules in the folder "PlugIns" beside the program,
// loads each and lets it register, keeps the inspectors and view classes registered, answers which
// inspector takes a content code, hands out its control, and unloads the modules at the end.
// Made once at start, before the main window, and freed after it.

#include <QPointer>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "ZTCustomViewIntf.h"
#include "ZTInspectorIntf.h"
#include "ZentrailPlugIns.h"

class QDialog;
class QPlainTextEdit;
class QWidget;

namespace zentrail {

// The custom view classes by key. Plug-ins register theirs first, the viewer its own under
// "Default" afterwards.
class TZTViewClassList {
 public:
  void Register(const QString& key, TZTViewFactory factory);
  // The class under key, else "Default", else the first registered; empty when there is none.
  TZTViewFactory Find(const QString& key) const;
  bool Empty() const { return FClasses.empty(); }
  void Clear() { FClasses.clear(); }
  QStringList Keys() const;

 private:
  std::vector<std::pair<QString, TZTViewFactory>> FClasses;
};
// The one list of the process, which the plug-in manager fills.
TZTViewClassList& ViewClasses();

// The module files by name, each with its handle once loaded (null for one that failed).
class TZTPackageList {
 public:
  int Count() const { return static_cast<int>(FEntries.size()); }
  const QString& Name(int i) const { return FEntries[static_cast<size_t>(i)].first; }
  void* HModule(int i) const { return FEntries[static_cast<size_t>(i)].second; }
  void SetHModule(int i, void* handle) { FEntries[static_cast<size_t>(i)].second = handle; }
  void Add(const QString& name) { FEntries.emplace_back(name, nullptr); }
  void Clear() { FEntries.clear(); }
  void UnloadPackage(const QString& name);
  // From the last to the first, so that a module goes before those it may lean on.
  void UnloadAllModules();

 private:
  std::vector<std::pair<QString, void*>> FEntries;
};

class TInternalPlugInManager : public TBasePlugInManager, public IZTCustomInspectorSource {
 public:
  // Becomes the global PlugInManager until it is freed.
  TInternalPlugInManager();
  ~TInternalPlugInManager() override;

  void RegisterInspector(TZentrailCustomInspector* inspector) override;
  void RegisterCustomView(const QString& name, TZTViewFactory factory) override;
  using TBasePlugInManager::RegisterCustomView;
  bool GetPackageFiles(const QString& path, QStringList* list) override;
  TZentrailCustomInspector* GetInspector(int32_t msgContent) override;
  // The folder "PlugIns" beside the executable.
  void LoadPlugIns() override;
  void ShowPlugInDetails() override;
  QWidget* GetInspectorControl(int32_t msgContent) override;

  // Loads every module of folder in name order; a module that fails gets one message box (title
  // "Error") and the next is tried.
  void LoadPlugInsFrom(const QString& folder);
  bool CanHandleMsgContent(int selectedCount, int32_t msgContent) override;
  TZentrailCustomInspector* GetInspectorByName(const QString& name);
  // With a list, appends the inspectors' names; the count of inspectors either way.
  int GetListOfInspectors(QStringList* list);
  const TZTPackageList& Packages() const { return FPackages; }
  // How the details dialog is run; tests answer it without waiting.
  std::function<int(QDialog&)> RunDialog;

 private:
  QPlainTextEdit* MessageMemo();

  QPointer<QPlainTextEdit> FMessageMemo;
  TZTPackageList FPackages;
  std::vector<std::unique_ptr<TZentrailCustomInspector>> FInspectors;
};

}  // namespace zentrail
