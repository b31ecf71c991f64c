#include "ZentrailDestination.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <cstring>

#include "ZTCommonUtils.h"
#include "ZentrailLogger.h"
#include "ZentrailPlatform.h"

namespace zentrail {

namespace {

bool SameText(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
      return false;
  return true;
}

std::string_view Trim(std::string_view s) {
  while (!s.empty() && static_cast<unsigned char>(s.front()) <= ' ') s.remove_prefix(1);
  while (!s.empty() && static_cast<unsigned char>(s.back()) <= ' ') s.remove_suffix(1);
  return s;
}

int32_t ToIntDef(std::string_view s, int32_t def) {
  s = Trim(s);
  int32_t value = 0;
  auto [p, ec] = std::from_chars(s.data(), s.data() + s.size(), value);
  if (ec != std::errc() || p != s.data() + s.size() || s.empty()) return def;
  return value;
}

bool ToBoolDef(std::string_view s, bool def) {
  s = Trim(s);
  if (SameText(s, "true") || SameText(s, "yes")) return true;
  if (SameText(s, "false") || SameText(s, "no")) return false;
  int32_t n = 0;
  auto [p, ec] = std::from_chars(s.data(), s.data() + s.size(), n);
  if (ec == std::errc() && p == s.data() + s.size() && !s.empty()) return n != 0;
  return def;
}

std::string Format(const char* fmt, std::string_view a, std::string_view b) {
  std::string out;
  int arg = 0;
  for (const char* p = fmt; *p; ++p) {
    if (p[0] == '%' && p[1] == 's') {
      out += arg++ == 0 ? a : b;
      ++p;
    } else {
      out += *p;
    }
  }
  return out;
}

std::string WithSlashes(std::string_view path) {
  std::string s(path);
  std::replace(s.begin(), s.end(), '\\', '/');
  return s;
}

std::string IncludeTrailingDelimiter(std::string s) {
  if (s.empty() || s.back() != '/') s += '/';
  return s;
}


// Splits text at separators that stand outside brackets.
std::vector<std::string_view> SplitOutsideBrackets(std::string_view text, char separator) {
  std::vector<std::string_view> pieces;
  int depth = 0;
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == '[') ++depth;
    else if (c == ']') --depth;
    else if (c == separator && depth < 1) {
      pieces.push_back(text.substr(start, i - start));
      start = i + 1;
    }
  }
  pieces.push_back(text.substr(start));
  return pieces;
}

void ParseOptions(TBaseDestination& part, std::string_view parameters) {
  std::string text(parameters);
  text += ';';
  auto pieces = SplitOutsideBrackets(text, ';');
  pieces.pop_back();  // what follows the appended ";"
  for (std::string_view piece : pieces) {
    if (Trim(piece).empty()) continue;
    auto eq = piece.find('=');
    std::string_view name = eq == std::string_view::npos ? piece : piece.substr(0, eq);
    std::string_view value = eq == std::string_view::npos ? std::string_view() : piece.substr(eq + 1);
    part.SetOption(Trim(name), value);
  }
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Hash

uint32_t BobJenkinsHash(const void* data, std::size_t length, uint32_t initval) {
  auto rot = [](uint32_t x, int k) { return (x << k) | (x >> (32 - k)); };
  const auto* k = static_cast<const uint8_t*>(data);
  uint32_t a, b, c;
  a = b = c = 0xdeadbeef + static_cast<uint32_t>(length) + initval;
  auto mix = [&] {
    a -= c; a ^= rot(c, 4); c += b;
    b -= a; b ^= rot(a, 6); a += c;
    c -= b; c ^= rot(b, 8); b += a;
    a -= c; a ^= rot(c, 16); c += b;
    b -= a; b ^= rot(a, 19); a += c;
    c -= b; c ^= rot(b, 4); b += a;
  };
  auto final = [&] {
    c ^= b; c -= rot(b, 14);
    a ^= c; a -= rot(c, 11);
    b ^= a; b -= rot(a, 25);
    c ^= b; c -= rot(b, 16);
    a ^= c; a -= rot(c, 4);
    b ^= a; b -= rot(a, 14);
    c ^= b; c -= rot(b, 24);
  };
  while (length > 12) {
    a += k[0] + (uint32_t(k[1]) << 8) + (uint32_t(k[2]) << 16) + (uint32_t(k[3]) << 24);
    b += k[4] + (uint32_t(k[5]) << 8) + (uint32_t(k[6]) << 16) + (uint32_t(k[7]) << 24);
    c += k[8] + (uint32_t(k[9]) << 8) + (uint32_t(k[10]) << 16) + (uint32_t(k[11]) << 24);
    mix();
    length -= 12;
    k += 12;
  }
  switch (length) {
    case 12: c += uint32_t(k[11]) << 24; [[fallthrough]];
    case 11: c += uint32_t(k[10]) << 16; [[fallthrough]];
    case 10: c += uint32_t(k[9]) << 8; [[fallthrough]];
    case 9: c += k[8]; [[fallthrough]];
    case 8: b += uint32_t(k[7]) << 24; [[fallthrough]];
    case 7: b += uint32_t(k[6]) << 16; [[fallthrough]];
    case 6: b += uint32_t(k[5]) << 8; [[fallthrough]];
    case 5: b += k[4]; [[fallthrough]];
    case 4: a += uint32_t(k[3]) << 24; [[fallthrough]];
    case 3: a += uint32_t(k[2]) << 16; [[fallthrough]];
    case 2: a += uint32_t(k[1]) << 8; [[fallthrough]];
    case 1: a += k[0]; break;
    case 0: return c;
  }
  final();
  return c;
}

int32_t DestinationTextHash(std::string_view utf8) {
  if (utf8.empty()) return 0;
  // The code is defined over UTF-16 code units, so that it stays the same number whatever the
  // sender's own string type.
  std::string bytes;
  bytes.reserve(utf8.size() * 2);
  auto put = [&](uint32_t unit) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>((unit >> 8) & 0xFF);
  };
  std::size_t i = 0;
  while (i < utf8.size()) {
    auto c = static_cast<unsigned char>(utf8[i]);
    uint32_t cp;
    std::size_t n;
    if (c < 0x80) { cp = c; n = 1; }
    else if ((c & 0xE0) == 0xC0) { cp = c & 0x1F; n = 2; }
    else if ((c & 0xF0) == 0xE0) { cp = c & 0x0F; n = 3; }
    else if ((c & 0xF8) == 0xF0) { cp = c & 0x07; n = 4; }
    else { cp = 0xFFFD; n = 1; }
    if (n > 1) {
      if (i + n > utf8.size()) { cp = 0xFFFD; n = 1; }
      else {
        for (std::size_t j = 1; j < n; ++j) {
          auto cc = static_cast<unsigned char>(utf8[i + j]);
          if ((cc & 0xC0) != 0x80) { cp = 0xFFFD; n = 1; break; }
          cp = (cp << 6) | (cc & 0x3F);
        }
      }
    }
    i += n;
    if (cp >= 0x10000) {
      cp -= 0x10000;
      put(0xD800 + (cp >> 10));
      put(0xDC00 + (cp & 0x3FF));
    } else {
      put(cp);
    }
  }
  return static_cast<int32_t>(BobJenkinsHash(bytes.data(), bytes.size(), 0));
}

namespace {

std::string DocumentsFolder() {
  std::string folder = GetSpecialFolder(ztFolderPersonal);
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  return folder;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Parts

void TBaseDestination::Assign(const TBaseDestination& source) { SetActive(source.FActive); }

void TBaseDestination::Changed() {
  if (FOwner) FOwner->Changed();
}

void TBaseDestination::SetOption(std::string_view name, std::string_view) { RaiseUnknownOption(name); }

void TBaseDestination::SetActive(bool value) {
  if (FActive != value) {
    FActive = value;
    Changed();
  }
}

void TBaseDestination::RaiseUnknownOption(std::string_view name) const {
  throw EZentrailInvalidDestination(
      Format("Invalid %s Destination Option -- unknown %s parameter", FDestName, name));
}

void TBaseDestination::RaiseMissing(std::string_view parameter) const {
  throw EZentrailInvalidDestination(
      Format("Invalid %s Destination -- missing or incorrect %s parameter", FDestName, parameter));
}

std::string TViewerDestination::AsString() const { return FActive ? "Viewer" : ""; }

void TLogFileDestination::Assign(const TBaseDestination& source) {
  if (auto* s = dynamic_cast<const TLogFileDestination*>(&source)) {
    SetFilePath(s->FFilePath);
    SetFileName(s->FFileName);
    SetMaxSize(s->FMaxSize);
    SetMaxParts(s->FMaxParts);
    SetLogByDate(s->FLogByDate);
    SetLogByDateFormat(s->FLogByDateFormat);
    SetCompressed(s->FCompressed);
    TBaseDestination::Assign(source);
  }
}

void TLogFileDestination::Validate() {
  if (FActive && FFileName.empty()) RaiseMissing("FileName");
}

void TLogFileDestination::Clear() {
  FFilePath.clear();
  FFileName.clear();
  FMaxSize = 0;
  FMaxParts = 0;
  FLogByDate = false;
  FLogByDateFormat = "yyyymmdd";
  FCompressed = false;
  TBaseDestination::Clear();
  Changed();
}

void TLogFileDestination::SetPath(std::string_view path) {
  std::string p = WithSlashes(path);
  auto slash = p.rfind('/');
  if (slash == std::string::npos) {
    SetFilePath("");
    SetFileName(p);
  } else {
    SetFilePath(p.substr(0, slash + 1));
    SetFileName(p.substr(slash + 1));
  }
}

void TLogFileDestination::SetOption(std::string_view name, std::string_view value) {
  if (SameText(name, "Path")) SetPath(value);
  else if (SameText(name, "MaxSize")) SetMaxSize(ToIntDef(value, 0));
  else if (SameText(name, "MaxParts")) SetMaxParts(ToIntDef(value, 0));
  else if (SameText(name, "LogByDate")) SetLogByDate(ToBoolDef(value, false));
  else if (SameText(name, "LogByDateFormat")) SetLogByDateFormat(std::string(value));
  else if (SameText(name, "Compressed")) SetCompressed(ToBoolDef(value, false));
  else RaiseUnknownOption(name);
}

std::string TLogFileDestination::ExpandedFilePath() const {
  std::string path = WithSlashes(FFilePath);
  auto open = path.find("$(");
  if (open != std::string::npos) {
    auto close = path.find(')', open);
    if (close == std::string::npos) RaiseMissing("FilePath");
    std::string word = path.substr(open + 2, close - open - 2);
    std::string rest = path.substr(close + 1);
    while (!rest.empty() && rest.front() == '/') rest.erase(0, 1);
    std::string base;
    bool known = true;
    if (SameText(word, "MyDocs")) base = DocumentsFolder();
    else if (SameText(word, "AppExeDir")) base = RunningExecutableFolder();
    else if (word.size() >= 2 && word.front() == '%' && word.back() == '%') {
      const char* env = std::getenv(word.substr(1, word.size() - 2).c_str());
      base = env ? env : "";
    } else {
      known = false;
    }
    if (known) path = IncludeTrailingDelimiter(path.substr(0, open) + base) + rest;
  } else if (path.empty()) {
    // No folder given: the dispatcher runs elsewhere, so name the user's log folder explicitly
    // rather than leaving a name that each process would resolve differently.
    path = GetLogFilesFolder();
  }
  if (!path.empty() && path.front() != '/' && path.find("$(") == std::string::npos) {
    char cwd[4096];
    if (getcwd(cwd, sizeof cwd)) path = IncludeTrailingDelimiter(cwd) + path;
  }
  return IncludeTrailingDelimiter(path);
}

std::string TLogFileDestination::AsString() const {
  if (!FActive) return {};
  std::string s = "File[Path=" + ExpandedFilePath() + FFileName;
  if (FMaxSize > 0) {
    s += ";MaxSize=" + std::to_string(FMaxSize);
    if (FMaxParts > 0) s += ";MaxParts=" + std::to_string(FMaxParts);
  }
  if (FLogByDate) {
    s += ";LogByDate=true";
    std::string upper = FLogByDateFormat;
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (upper != "YYYYMMDD") s += ";LogByDateFormat=" + FLogByDateFormat;
  }
  if (FCompressed) s += ";Compressed=true";
  return s + "]";
}

void TNetworkDestination::Assign(const TBaseDestination& source) {
  if (auto* s = dynamic_cast<const TNetworkDestination*>(&source)) {
    SetHost(s->FHost);
    SetPort(s->FPort);
    SetRemoteDestinationString(s->FRemoteDestinationString);
    SetCompressed(s->FCompressed);
    TBaseDestination::Assign(source);
  }
}

void TNetworkDestination::Validate() {
  if (FActive && FHost.empty()) RaiseMissing("Host");
}

void TNetworkDestination::Clear() {
  FHost = "localhost";
  FPort = FDefaultPort;
  FRemoteDestinationString = "Viewer";
  FCompressed = false;
  TBaseDestination::Clear();
  Changed();
}

void TNetworkDestination::SetOption(std::string_view name, std::string_view value) {
  if (SameText(name, "Host")) SetHost(std::string(value));
  else if (SameText(name, "Port")) SetPort(ToIntDef(value, 0));
  else if (SameText(name, "RemoteDestinationDetails")) SetRemoteDestinationString(std::string(value));
  else if (SameText(name, "Compressed")) SetCompressed(ToBoolDef(value, false));
  else RaiseUnknownOption(name);
}

std::string TNetworkDestination::AsString() const {
  if (!FActive) return {};
  std::string s = FDestName + "[Host=" + FHost + ";Port=" + std::to_string(FPort);
  if (!FRemoteDestinationString.empty()) s += ";RemoteDestinationDetails=" + FRemoteDestinationString;
  if (FCompressed) s += ";Compressed=true";
  return s + "]";
}

void THttpDestination::Assign(const TBaseDestination& source) {
  if (auto* s = dynamic_cast<const THttpDestination*>(&source)) {
    SetURL(s->FURL);
    SetAlias(s->FAlias);
    SetProxyServer(s->FProxyServer);
    SetProxyPort(s->FProxyPort);
    SetProxyUsername(s->FProxyUsername);
    SetProxyPassword(s->FProxyPassword);
    TBaseDestination::Assign(source);
  }
}

void THttpDestination::Validate() {
  if (!FActive) return;
  if (FURL.empty()) RaiseMissing("URL");
  if (FAlias.empty()) SetAlias("Default");
  if (!FProxyServer.empty() && FProxyPort == 0) RaiseMissing("ProxyPort");
}

void THttpDestination::Clear() {
  FURL.clear();
  FAlias.clear();
  FProxyServer.clear();
  FProxyPort = 0;
  FProxyUsername.clear();
  FProxyPassword.clear();
  TBaseDestination::Clear();
  Changed();
}

void THttpDestination::SetOption(std::string_view name, std::string_view value) {
  std::string v(value);
  if (SameText(name, "URL")) SetURL(v);
  else if (SameText(name, "Alias")) SetAlias(v);
  else if (SameText(name, "ProxyServer")) SetProxyServer(v);
  else if (SameText(name, "ProxyPort")) SetProxyPort(ToIntDef(value, 0));
  else if (SameText(name, "ProxyUsername")) SetProxyUsername(v);
  else if (SameText(name, "ProxyPassword")) SetProxyPassword(v);
  else RaiseUnknownOption(name);
}

std::string THttpDestination::AsString() const {
  if (!FActive) return {};
  std::string s = "HTTP[URL=" + FURL + ";Alias=" + FAlias;
  if (!FProxyServer.empty()) {
    s += ";ProxyServer=" + FProxyServer + ";ProxyPort=" + std::to_string(FProxyPort);
    if (!FProxyUsername.empty()) s += ";ProxyUsername=" + FProxyUsername;
    if (!FProxyPassword.empty()) s += ";ProxyPassword=" + FProxyPassword;
  }
  return s + "]";
}

void TAliasDestination::Assign(const TBaseDestination& source) {
  if (auto* s = dynamic_cast<const TAliasDestination*>(&source)) {
    SetName(s->FName);
    TBaseDestination::Assign(source);
  }
}

void TAliasDestination::Validate() {
  if (FActive && FName.empty()) RaiseMissing("Name");
}

void TAliasDestination::Clear() {
  FName.clear();
  TBaseDestination::Clear();
  Changed();
}

void TAliasDestination::SetOption(std::string_view name, std::string_view value) {
  if (SameText(name, "Name")) SetName(std::string(value));
  else RaiseUnknownOption(name);
}

std::string TAliasDestination::AsString() const {
  if (!FActive) return {};
  return Format("%s[Name=%s]", FDestName, FName);
}

// ---------------------------------------------------------------------------------------------
// The whole destination

TZentrailDestination::TZentrailDestination() = default;

TZentrailDestination::TZentrailDestination(std::string_view text) { SetAsString(text); }

TZentrailDestination::~TZentrailDestination() {
  std::vector<TZentrailLogger*> loggers;
  {
    std::lock_guard lock(FLinkLock);
    loggers.swap(FLinkedLoggers);
  }
  for (TZentrailLogger* logger : loggers) logger->DestinationDestroyed(this);
}

TBaseDestination* TZentrailDestination::Parts(int index) {
  TBaseDestination* parts[] = {&FViewer, &FLogFile, &FTcp, &FUdp, &FHttp, &FAlias};
  return parts[index];
}

void TZentrailDestination::Link(TZentrailLogger* logger) {
  std::lock_guard lock(FLinkLock);
  if (std::find(FLinkedLoggers.begin(), FLinkedLoggers.end(), logger) == FLinkedLoggers.end())
    FLinkedLoggers.push_back(logger);
}

void TZentrailDestination::Unlink(TZentrailLogger* logger) {
  std::lock_guard lock(FLinkLock);
  FLinkedLoggers.erase(std::remove(FLinkedLoggers.begin(), FLinkedLoggers.end(), logger),
                       FLinkedLoggers.end());
}

void TZentrailDestination::SetAdditional(const std::string& value) {
  if (FAdditional != value) {
    FAdditional = value;
    Changed();
  }
}

void TZentrailDestination::Clear() {
  BeginUpdate();
  for (int i = 0; i < 6; ++i) Parts(i)->Clear();
  FAdditional.clear();
  EndUpdate();
}

void TZentrailDestination::EndUpdate() {
  if (FUpdateCount > 0) --FUpdateCount;
  Changed();
}

void TZentrailDestination::Changed() {
  if (FUpdateCount > 0) return;
  try {
    FDestinationCode = DestinationTextHash(AsString());
  } catch (const EZentrailInvalidDestination&) {
    // A path macro without its closing bracket: the text cannot be made until it is corrected,
    // and the failure surfaces when the destination is validated or announced.
    FDestinationCode = DestinationTextHash(FAdditional);
  }
}

void TZentrailDestination::Assign(const TZentrailDestination& source) {
  BeginUpdate();
  for (int i = 0; i < 6; ++i)
    Parts(i)->Assign(*const_cast<TZentrailDestination&>(source).Parts(i));
  FAdditional = source.FAdditional;
  EndUpdate();
}

void TZentrailDestination::Validate() {
  for (int i = 0; i < 6; ++i) Parts(i)->Validate();
  // A macro path can only fail when its text is made.
  (void)FLogFile.AsString();
}

std::string TZentrailDestination::AsString() const {
  std::string out;
  const TBaseDestination* parts[] = {&FViewer, &FLogFile, &FTcp, &FUdp, &FHttp, &FAlias};
  for (const TBaseDestination* part : parts) {
    std::string s = part->AsString();
    if (s.empty()) continue;
    if (!out.empty()) out += ',';
    out += s;
  }
  if (!FAdditional.empty()) {
    if (!out.empty()) out += ',';
    out += FAdditional;
  }
  return out;
}

void TZentrailDestination::SetAsString(std::string_view text) {
  BeginUpdate();
  Clear();
  try {
    ParseText(text);
  } catch (...) {
    // What was parsed so far stays; the code is brought up to date so that a later send does not
    // mistake the half-read object for the old one.
    EndUpdate();
    throw;
  }
  EndUpdate();
}

void TZentrailDestination::ParseText(std::string_view text) {
  static constexpr const char* kWords[] = {"Viewer", "File", "Tcp", "Udp", "Http", "Alias"};
  int counts[6] = {};
  std::size_t pos = 0;
  while (pos < text.size()) {
    std::string word, params;
    int depth = 0;
    for (; pos < text.size(); ++pos) {
      char c = text[pos];
      if (c == ',' && depth < 1) {
        ++pos;
        break;
      }
      if (c == '[') {
        ++depth;
        if (depth == 1) continue;  // the opening bracket of the parameters
      } else if (c == ']') {
        --depth;
        if (depth < 1) continue;  // the closing bracket
      }
      if (depth < 1) word += c;
      else params += c;
    }
    std::string_view type = Trim(word);
    if (type.empty() && params.empty()) continue;
    int kind = -1;
    for (int i = 0; i < 6; ++i)
      if (SameText(type, kWords[i])) kind = i;
    if (kind < 0)
      throw EZentrailInvalidDestination(
          Format("Invalid Destination Type -- %s is not recognized", type, ""));
    if (kind == 0) {
      FViewer.SetActive(true);
      continue;
    }
    if (counts[kind]++ == 0) {
      Parts(kind)->SetActive(true);
      ParseOptions(*Parts(kind), params);
    } else {
      std::string entry = std::string(type) + "[" + params + "]";
      FAdditional += FAdditional.empty() ? entry : "," + entry;
    }
  }
}

}  // namespace zentrail
