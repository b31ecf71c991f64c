#include "ZTNavigator.h"

#include "ZTMainForm.h"

namespace zentrail {

TZTNavigator::TZTNavigator(TFrmViewer& window) : FWindow(window) {}

TZTNavigator::~TZTNavigator() = default;

void TZTNavigator::SetNavigatorMsgType(int32_t code) { FNavigatorMsgType = code; }

void TZTNavigator::SetNavigatorMsgContent(int32_t code) { FNavigatorMsgContent = code; }

void TZTNavigator::SetNavigatorAutomatic(bool on) { FNavigatorAutomatic = on; }

void TZTNavigator::SetNavigatorTimeDiff(bool on) { FNavigatorTimeDiff = on; }

void TZTNavigator::SetTimeDiffNavThreshold(int32_t ms) { FTimeDiffNavThreshold = ms; }

}  // namespace zentrail
