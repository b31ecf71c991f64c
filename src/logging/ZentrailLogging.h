#pragma once
// The Zentrail logging client: include this one header.
//
//   #include <zentrail/ZentrailLogging.h>
//   zentrail::ZentrailLog.Send("hello");
//   zentrail::ZentrailLog.SendWarningFmt("disk at %d%%", 93);
//
// Messages go through a dispatcher process (started on demand) to the viewer or a log file, as
// the logger's destination says. A failed send never throws: the logger switches itself off.

#include "ZentrailConnection.h"
#include "ZentrailDestination.h"
#include "ZentrailLogger.h"
#include "ZentrailManager.h"
#include "ZentrailMessage.h"
