#pragma once
// The viewer's settings file: one in-memory ini object for the whole run, read once at start and
// written back to disk at the end; the find history alone goes to disk as soon as it changes.

#include <string>
#include <vector>

#include "ZTIniFile.h"

namespace zentrail {

// "ZTLiveViewer.ini" in the application-data folder (or beside the executable without one).
std::string ViewerSettingsFileName();

// The process-wide object. Its file name is set and its contents read by LoadViewerSettings; until
// then it is empty and every read gives the default.
TZTIniFile& ViewerSettings();

// Reads the file into the object. A missing, unreadable or garbled file leaves what can be read
// (possibly nothing), silently.
void LoadViewerSettings();

// Writes the object to its file at once. False with error filled when that fails; the file on disk
// is then unchanged.
bool FlushViewerSettings(std::string& error);

}  // namespace zentrail
