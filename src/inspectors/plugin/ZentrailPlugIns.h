#pragma once
// What a plug-in module of the Zentrail viewer builds against. The module is a shared library in the
// folder "PlugIns" beside the viewer, linked to libZentrailPlugIns250 (which also holds the message
// store, so that the viewer and every plug-in read the one MessageSet), and it exports
//
//   extern "C" void ZentrailRegister();
//
// which the viewer calls once, after loading the module and before its main window exists. There it
// registers what it offers through the global PlugInManager:
//
//   - inspectors, derived from TZentrailCustomInspector, for a message content code: the viewer shows
//     the inspector's control in its inspector pane when a message with that code is selected. The
//     control may implement the interfaces of ZTInspectorIntf.h (IInspectorSingleMessage and the
//     others), which the pane finds on it with dynamic_cast;
//   - view classes under a key, each a factory that makes one view component implementing
//     IZTMessageView (ZTCustomViewIntf.h) given its owner.
//
// Everything here runs on the viewer's user-interface thread.

#include <QPointer>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <cstdint>
#include <type_traits>

#include "ZTCustomViewIntf.h"

namespace zentrail {

// The base of a plug-in's inspector. The manager owns registered inspectors and deletes them before
// their module is unloaded.
class TZentrailCustomInspector {
 public:
  TZentrailCustomInspector();
  virtual ~TZentrailCustomInspector();
  TZentrailCustomInspector(const TZentrailCustomInspector&) = delete;
  TZentrailCustomInspector& operator=(const TZentrailCustomInspector&) = delete;

  // The content code the inspector shows; codes from ztmUser (1000) on are free for plug-ins.
  virtual int32_t GetMsgContent() = 0;
  virtual QString GetName() = 0;
  virtual QString GetVersion() = 0;
  virtual QString GetDescription() = 0;
  virtual QString GetEmail() = 0;
  virtual QString GetWebSite() = 0;

  // The control shown in the inspector pane, or null. The viewer gives it its parent, places it and
  // shows it; it stays owned by the inspector (SetInspectorControl), which deletes it unless the
  // viewer's pane already took it down with itself.
  virtual QWidget* GetInspectorControl();

 protected:
  void SetInspectorControl(QWidget* control);

 private:
  QPointer<QWidget> FInspectorControl;
};

// The manager as a plug-in sees it. The viewer's own manager implements it.
class TBasePlugInManager {
 public:
  TBasePlugInManager();
  virtual ~TBasePlugInManager();
  TBasePlugInManager(const TBasePlugInManager&) = delete;
  TBasePlugInManager& operator=(const TBasePlugInManager&) = delete;

  // Takes ownership. Two inspectors for one code: the first registered is used.
  virtual void RegisterInspector(TZentrailCustomInspector* inspector) = 0;
  // A view class under a key (compared without regard to case); a later class under the same key
  // replaces the earlier one. A null factory is ignored.
  virtual void RegisterCustomView(const QString& name, TZTViewFactory factory) = 0;
  // Fills list with the names of the plug-in modules in path; false when either is missing or no
  // module is there.
  virtual bool GetPackageFiles(const QString& path, QStringList* list) = 0;
  virtual TZentrailCustomInspector* GetInspector(int32_t msgContent) = 0;
  virtual void LoadPlugIns() = 0;
  virtual void ShowPlugInDetails() = 0;
  // Never null: without an inspector, or without a control, a read-only text that says so.
  virtual QWidget* GetInspectorControl(int32_t msgContent) = 0;

  // A view class given as a type: a class that is no IZTMessageView is ignored, as a class that
  // does not declare the interface must be.
  template <typename TView>
  void RegisterCustomView(const QString& name) {
    if constexpr (std::is_base_of_v<IZTMessageView, TView>) {
      RegisterCustomView(name, [](QWidget* owner) -> IZTMessageView* { return new TView(owner); });
    }
  }
};

// The process's manager from its creation at start until the main window closes; null otherwise.
extern TBasePlugInManager* PlugInManager;

// The type of the entry point "ZentrailRegister" that every module exports with C linkage.
using TZentrailRegisterProc = void (*)();

}  // namespace zentrail
