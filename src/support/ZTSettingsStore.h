#pragma once
// The viewer's settings file: one in-memory ini object for the whole run, read once at start and
// written back to disk at the end; the find history alone goes to disk as soon as it changes.

#include <cstdint>
#include <span>
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

// Writes the whole object to its file at once, naming the file first if nothing did. False with
// error filled when that fails; the file on disk is then unchanged.
bool FlushViewerSettings(std::string& error);

// ---- Font styles as the file stores them: one number, the sum of these.
enum : int32_t { ztStyleStrikeOut = 1, ztStyleUnderline = 2, ztStyleItalic = 4, ztStyleBold = 8 };

// The message types with keys in section "FontStyles" and the prefix of their three keys
// (<Prefix>UseDefault, <Prefix>Color, <Prefix>Style).
struct TZTMsgStyleKey {
  const char* Prefix;
  int32_t MsgType;
};
std::span<const TZTMsgStyleKey> MsgStyleKeys();

// ---- The find dialog's history, section "MRULists".
inline constexpr int ztFindHistoryLimit = 20;

// The stored texts in order: reading stops at FindText_Count, skips empty items and repeats.
std::vector<std::string> ReadFindHistory(const TZTIniFile& ini);
// Writes at most ztFindHistoryLimit texts with their count and deletes the items beyond the count,
// in memory only.
void WriteFindHistory(TZTIniFile& ini, const std::vector<std::string>& texts);
// WriteFindHistory into ViewerSettings(), then the whole object to disk at once, so that the
// history survives a run that never ends normally.
bool StoreFindHistory(const std::vector<std::string>& texts, std::string& error);

}  // namespace zentrail
