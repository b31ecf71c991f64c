#include "ZTCustomViewIntf.h"

namespace zentrail {

namespace {
IZentrailApplication* gApplication = nullptr;
}

IZentrailApplication* ZentrailApplication() { return gApplication; }

void SetZentrailApplication(IZentrailApplication* application) { gApplication = application; }

}  // namespace zentrail
