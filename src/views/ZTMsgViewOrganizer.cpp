// The view's part in the organizer's register.
#include <string>

#include "ZTCustomViewIntf.h"
#include "ZTOrganizer.h"

namespace zentrail {

TZTOrganizerCriteria OrganizerCriteria(const TZTFilterCriteria& c) {
  TZTOrganizerCriteria out;
  out.Check = {c.CheckAppName, c.CheckCategory, c.CheckProcessID, c.CheckThreadName, c.CheckComputerName};
  out.Value = {c.AppName, c.Category, std::to_string(c.ProcessID), c.ThreadName, c.ComputerName};
  return out;
}

}  // namespace zentrail
