#include "ZentrailPlugIns.h"

namespace zentrail {

TBasePlugInManager* PlugInManager = nullptr;

TZentrailCustomInspector::TZentrailCustomInspector() = default;

TZentrailCustomInspector::~TZentrailCustomInspector() {
  // A control the pane still holds goes with the inspector: its code is about to be unloaded.
  delete FInspectorControl.data();
}

QWidget* TZentrailCustomInspector::GetInspectorControl() { return FInspectorControl.data(); }

void TZentrailCustomInspector::SetInspectorControl(QWidget* control) { FInspectorControl = control; }

TBasePlugInManager::TBasePlugInManager() = default;

TBasePlugInManager::~TBasePlugInManager() = default;

}  // namespace zentrail
