#include "ZTCommonUtils.h"

#include <pwd.h>
#include <sys/types.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include "ZTRegistry.h"

namespace zentrail {

namespace fs = std::filesystem;

namespace {

std::string Env(const char* name) {
  const char* v = std::getenv(name);
  return v ? std::string(v) : std::string();
}

std::string WithSlash(std::string path) {
  if (!path.empty() && path.back() != '/') path += '/';
  return path;
}

std::string WithoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

// Cuts at most maxChars characters of UTF-8 text, never inside a character.
std::string LimitChars(std::string text, std::size_t maxChars) {
  std::size_t chars = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if ((static_cast<unsigned char>(text[i]) & 0xC0) == 0x80) continue;
    if (chars == maxChars) {
      text.resize(i);
      break;
    }
    ++chars;
  }
  return text;
}

// "$HOME/x", "${HOME}/x" and relative names (which the user-dirs format takes as below home).
std::string ExpandHome(std::string value, const std::string& home) {
  for (const char* prefix : {"$HOME", "${HOME}"}) {
    std::string p = prefix;
    if (value.compare(0, p.size(), p) == 0 && (value.size() == p.size() || value[p.size()] == '/'))
      return home + value.substr(p.size());
  }
  if (!value.empty() && value[0] != '/') return home.empty() ? std::string() : home + "/" + value;
  return value;
}

std::string DocumentsFromUserDirs(const std::string& home) {
  std::string config = Env("XDG_CONFIG_HOME");
  if (config.empty()) {
    if (home.empty()) return std::string();
    config = home + "/.config";
  }
  std::ifstream in(config + "/user-dirs.dirs");
  std::string line;
  std::string found;
  while (std::getline(in, line)) {
    std::size_t start = line.find_first_not_of(" \t");
    if (start == std::string::npos || line[start] == '#') continue;
    const std::string key = "XDG_DOCUMENTS_DIR=";
    if (line.compare(start, key.size(), key) != 0) continue;
    std::string value = line.substr(start + key.size());
    while (!value.empty() && (value.back() == '\r' || value.back() == ' ' || value.back() == '\t'))
      value.pop_back();
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
      value = value.substr(1, value.size() - 2);
    found = ExpandHome(value, home);
  }
  return found;
}

std::string DocumentsFolder() {
  std::string home = WithoutTrailingSlashes(GetHomeFolder());
  std::string docs = Env("XDG_DOCUMENTS_DIR");
  if (!docs.empty()) docs = ExpandHome(docs, home);
  if (docs.empty()) docs = DocumentsFromUserDirs(home);
  if (docs.empty() && !home.empty()) {
    std::error_code ec;
    docs = fs::is_directory(home + "/Documents", ec) ? home + "/Documents" : home;
  }
  return docs.empty() ? docs : WithSlash(WithoutTrailingSlashes(docs));
}

std::string XdgFolder(const char* variable, const char* belowHome) {
  std::string folder = Env(variable);
  if (folder.empty() || folder[0] != '/') {
    std::string home = WithoutTrailingSlashes(GetHomeFolder());
    if (home.empty()) return std::string();
    folder = home + belowHome;
  }
  return WithSlash(WithoutTrailingSlashes(folder));
}

bool MakeFolders(const std::string& folder) {
  std::error_code ec;
  fs::create_directories(folder, ec);
  return fs::is_directory(folder, ec);
}

std::string SubPathOf(std::string_view subPath) {
  std::string sub = ToSlashPath(subPath);
  std::size_t start = sub.find_first_not_of('/');
  return start == std::string::npos ? std::string() : WithSlash(sub.substr(start));
}

}  // namespace

std::string GetHomeFolder() {
  std::string home = Env("HOME");
  if (!home.empty()) return home;
  std::vector<char> buf(16384);
  passwd pw{};
  passwd* result = nullptr;
  if (::getpwuid_r(::geteuid(), &pw, buf.data(), buf.size(), &result) == 0 && result &&
      result->pw_dir)
    return result->pw_dir;
  return std::string();
}

std::string ToSlashPath(std::string_view path) {
  std::string out(path);
  for (char& c : out)
    if (c == '\\') c = '/';
  return out;
}

std::string GetInstallPath() {
  std::string value;
  if (!ReadRegistryString(ztRegistryKeyPath, "InstallPath", value) || value.empty())
    return std::string();
  return WithSlash(ToSlashPath(value));
}

std::string GetSpecialFolder(int folderId) {
  switch (folderId) {
    case ztFolderPersonal:
      return DocumentsFolder();
    case ztFolderLocalAppData:
      return XdgFolder("XDG_DATA_HOME", "/.local/share");
    case ztFolderAppData:
      return XdgFolder("XDG_CONFIG_HOME", "/.config");
    default:
      return std::string();
  }
}

std::string GetUserFilesFolder(std::string_view subPath) {
  std::string sub = SubPathOf(subPath);
  std::string docs = GetSpecialFolder(ztFolderPersonal);
  if (!docs.empty() && MakeFolders(docs + sub)) return docs + sub;
  std::string install = GetInstallPath();
  if (!install.empty()) {
    MakeFolders(install + sub);
    return install + sub;
  }
  return docs.empty() ? std::string() : docs + sub;
}

std::string GetAppDataFolder() {
  std::string local = GetSpecialFolder(ztFolderLocalAppData);
  if (!local.empty()) {
    std::string folder = local + "Orvan/Zentrail/5.0/";
    if (MakeFolders(folder)) return folder;
  }
  return GetExecutableFolder();
}

std::string GetLogFilesFolder() { return GetUserFilesFolder("My Zentrail Files/Logs"); }

std::string GetProjectsFolder() { return GetUserFilesFolder("My Zentrail Files/Projects"); }

std::string GetExecutableFolder() {
  std::error_code ec;
  fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  if (ec || exe.empty()) return std::string();
  return WithSlash(exe.parent_path().string());
}

std::string GetComputerName() {
  char buf[256] = {};
  if (::gethostname(buf, sizeof buf - 1) != 0) return std::string();
  return LimitChars(buf, 32);
}

std::string GetUserName() {
  std::vector<char> buf(16384);
  passwd pw{};
  passwd* result = nullptr;
  std::string name;
  if (::getpwuid_r(::geteuid(), &pw, buf.data(), buf.size(), &result) == 0 && result &&
      result->pw_name)
    name = result->pw_name;
  if (name.empty()) name = Env("USER");
  if (name.empty()) name = Env("LOGNAME");
  return LimitChars(name, 162);
}

std::string XmlEscape(std::string_view text) {
  // One pass gives what the five replacements in turn give, because only the first of them
  // brings in characters that a later one would look at, and that is "&" itself.
  std::string out;
  out.reserve(text.size() + text.size() / 8);
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&apos;"; break;
      default: out += c; break;
    }
  }
  return out;
}

std::string NormalizeLineEnds(std::string_view text) {
  std::string out;
  out.reserve(text.size() + 16);
  std::size_t i = 0;
  while (i < text.size()) {
    char c = text[i];
    if (c != '\r' && c != '\n') {
      out += c;
      ++i;
      continue;
    }
    while (i < text.size() && (text[i] == '\r' || text[i] == '\n')) ++i;
    if (i < text.size()) out += "\r\n";
  }
  return out;
}

std::string HelpFolder() {
  std::string install = GetInstallPath();
  if (!install.empty()) return install + "Help/";
#ifdef ZENTRAIL_HELP_BESIDE_PROGRAM
  // Without a registered install, the pages installed with the program itself, so that an install
  // under any prefix has its help without the machine-wide registry file.
  const std::string exe = GetExecutableFolder();
  std::error_code ec;
  if (!exe.empty()) {
    const fs::path folder = (fs::path(exe) / ZENTRAIL_HELP_BESIDE_PROGRAM).lexically_normal();
    if (fs::is_directory(folder, ec)) return WithSlash(folder.string());
  }
#endif
  return std::string();
}

std::string HelpTopicFile(std::string_view topicName) {
  std::string folder = HelpFolder();
  if (folder.empty()) return folder;
  std::string topic(topicName);
  for (char& c : topic)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return folder + topic + ".htm";
}

TZTEventLog::TZTEventLog(std::string sourceName, TSink sink)
    : FSourceName(std::move(sourceName)), FSink(std::move(sink)) {}

TZTEventLog::~TZTEventLog() {
  if (FHandle && !FSink) ::closelog();
}

void TZTEventLog::SetSourceName(std::string name) {
  if (name == FSourceName) return;
  if (FHandle && !FSink) ::closelog();
  FHandle = false;
  FSourceName = std::move(name);
}

int TZTEventLog::PriorityOfKind(int kind) {
  switch (kind) {
    case ztEventWarning: return LOG_WARNING;
    case ztEventError: return LOG_ERR;
    default: return LOG_INFO;
  }
}

void TZTEventLog::Register() {
  if (FSourceName.empty()) throw EZTEventLogException("Event log source name not specified");
  // The system log keeps the ident pointer, so it must stay valid while the log is open:
  // FSourceName only changes through SetSourceName, which closes the log first.
  if (!FSink) ::openlog(FSourceName.c_str(), LOG_PID, LOG_USER);
  FHandle = true;
}

void TZTEventLog::WriteEntry(const std::string& text, int kind, int /*category*/,
                             int /*eventId*/) {
  if (!FHandle) Register();
  int priority = PriorityOfKind(kind);
  if (FSink)
    FSink(FSourceName, priority, text);
  else
    ::syslog(priority, "%s", text.c_str());
}

}  // namespace zentrail
