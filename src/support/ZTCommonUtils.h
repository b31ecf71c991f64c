#pragma once
// Small services that several parts of the program share: the install path and standard folders,
// machine and user names, the XML escape, line-end normalisation, help topic files and the event
// log writer. Date and time helpers live in ZTDateTime.h, included here for convenience.
// Every folder returned here uses "/" and ends with "/".

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "ZTDateTime.h"

namespace zentrail {

// Folder ids for GetSpecialFolder; the numbers are those the settings and older callers use.
inline constexpr int ztFolderPersonal = 0x0005;      // the documents folder
inline constexpr int ztFolderAppData = 0x001A;       // per-user configuration
inline constexpr int ztFolderLocalAppData = 0x001C;  // per-user local application data

// The value "InstallPath" of the product key in the registry file, in "/" form with a trailing
// "/"; empty when the key cannot be opened or the value is empty.
std::string GetInstallPath();

// The folder for an id with a trailing "/"; empty for an id without a counterpart or when the
// folder can't be determined. Documents: $XDG_DOCUMENTS_DIR, else the XDG_DOCUMENTS_DIR line of
// $XDG_CONFIG_HOME/user-dirs.dirs (or ~/.config/user-dirs.dirs), else ~/Documents if it exists,
// else the home folder. Local application data: $XDG_DATA_HOME, else ~/.local/share.
// Configuration: $XDG_CONFIG_HOME, else ~/.config. The folder itself is not made here.
std::string GetSpecialFolder(int folderId);

// The documents folder + subPath (a "\" in subPath counts as "/"), the folders made; if they
// can't be made there, GetInstallPath() + subPath (made as well). Without an install path the
// documents path is returned all the same; empty only if there is no home folder either.
std::string GetUserFilesFolder(std::string_view subPath);
// Local application data + "Orvan/Zentrail/5.0/" (made); the executable's folder if that fails.
std::string GetAppDataFolder();
std::string GetLogFilesFolder();  // GetUserFilesFolder("My Zentrail Files/Logs")
std::string GetProjectsFolder();  // GetUserFilesFolder("My Zentrail Files/Projects")
// The folder of the running executable, from /proc/self/exe; empty if unknown.
std::string GetExecutableFolder();
// The user's home folder: $HOME, else the password database; empty if neither gives one.
std::string GetHomeFolder();

// Host name (at most 32 characters) and login name (at most 162 characters); empty on failure.
std::string GetComputerName();
std::string GetUserName();

// Replaces, in this order and every time, "&", "<", ">", the double quote and the apostrophe by
// their XML entities. Case matters; nothing else is touched.
std::string XmlEscape(std::string_view text);

// Copies the text, taking CR and LF as line ends: every run of them that has a further character
// after it becomes one CR LF, also at the very start; a run at the end is dropped.
std::string NormalizeLineEnds(std::string_view text);

// The Windows form of a path in a text becomes its "/" form.
std::string ToSlashPath(std::string_view path);

// Help pages: <help folder>/<lower-case topic>.htm, or empty without a help folder.
std::string HelpTopicFile(std::string_view topicName);
// The help folder: <InstallPath>/Help/; without an install path, the help installed with the
// running program (share/zentrail/Help of its prefix) if it is there; else empty.
std::string HelpFolder();
inline constexpr const char* ztHelpFileMissingText =
    "Zentrail Help File (Zentrail5.chm) could not be found.";
inline constexpr const char* ztHelpMessageTitle = "Zentrail";

class EZTEventLogException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Event kinds for TZTEventLog::WriteEntry.
inline constexpr int ztEventInformation = 0;
inline constexpr int ztEventWarning = 1;
inline constexpr int ztEventError = 2;

// Writes entries to the system log with the source name as the ident. The first entry opens the
// log; an empty source name raises EZTEventLogException then. Kinds 0, 1, 2 become LOG_INFO,
// LOG_WARNING and LOG_ERR; any other kind is written as LOG_INFO. Category and event id are
// accepted for the callers' sake and not written: an entry carries its one text.
// The system log has one ident per process, so the last log object to write sets it.
class TZTEventLog {
 public:
  // Where entries go: the source name, the priority (LOG_INFO, ...) and the text. Tests replace
  // it; without one, entries go to syslog.
  using TSink = std::function<void(const std::string& ident, int priority, const std::string& text)>;

  TZTEventLog() = default;
  explicit TZTEventLog(std::string sourceName, TSink sink = nullptr);
  ~TZTEventLog();
  TZTEventLog(const TZTEventLog&) = delete;
  TZTEventLog& operator=(const TZTEventLog&) = delete;

  const std::string& SourceName() const { return FSourceName; }
  void SetSourceName(std::string name);

  void WriteEntry(const std::string& text, int kind = ztEventInformation, int category = 0,
                  int eventId = 0);

  static int PriorityOfKind(int kind);

 private:
  void Register();

  std::string FSourceName;
  TSink FSink;
  bool FHandle = false;  // the log is open under FSourceName
};

}  // namespace zentrail
