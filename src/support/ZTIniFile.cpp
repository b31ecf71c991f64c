#include "ZTIniFile.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "ZTDateTime.h"

namespace zentrail {

namespace detail {
bool (*AtomicWriteBeforeRenameHook)(const std::string& tempPath) = nullptr;
}

namespace {

char LowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; }

bool SameText(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (LowerAscii(a[i]) != LowerAscii(b[i])) return false;
  return true;
}

// Blanks and control characters around names and values do not count.
std::string_view Trim(std::string_view s) {
  std::size_t b = 0, e = s.size();
  while (b < e && static_cast<unsigned char>(s[b]) <= ' ') ++b;
  while (e > b && static_cast<unsigned char>(s[e - 1]) <= ' ') --e;
  return s.substr(b, e - b);
}

bool ParseInt32(std::string_view s, int32_t& out) {
  s = Trim(s);
  if (s.empty()) return false;
  bool negative = false;
  std::size_t i = 0;
  if (s[0] == '+' || s[0] == '-') {
    negative = s[0] == '-';
    i = 1;
  }
  int base = 10;
  if (i < s.size() && s[i] == '$') {
    base = 16;
    i += 1;
  } else if (i + 1 < s.size() && s[i] == '0' && (s[i + 1] == 'x' || s[i + 1] == 'X')) {
    base = 16;
    i += 2;
  }
  if (i >= s.size()) return false;
  uint64_t value = 0;
  const char* first = s.data() + i;
  const char* last = s.data() + s.size();
  auto [ptr, ec] = std::from_chars(first, last, value, base);
  if (ec != std::errc() || ptr != last) return false;
  if (base == 16) {
    // Hexadecimal is a bit pattern: eight digits wrap into the signed range.
    if (value > 0xFFFFFFFFull) return false;
    uint32_t bits = static_cast<uint32_t>(value);
    if (negative) bits = 0u - bits;
    out = static_cast<int32_t>(bits);
    return true;
  }
  if (negative) {
    if (value > 2147483648ull) return false;
    out = static_cast<int32_t>(-static_cast<int64_t>(value));
  } else {
    if (value > 2147483647ull) return false;
    out = static_cast<int32_t>(value);
  }
  return true;
}

bool ParseDouble(std::string_view s, double& out) {
  s = Trim(s);
  if (!s.empty() && s[0] == '+') s.remove_prefix(1);
  if (s.empty()) return false;
  auto [ptr, ec] = std::from_chars(s.data(), s.data() + s.size(), out);
  return ec == std::errc() && ptr == s.data() + s.size() && std::isfinite(out);
}

bool ParseFixedInt(std::string_view s, std::size_t pos, std::size_t len, int& out) {
  if (pos + len > s.size()) return false;
  out = 0;
  for (std::size_t i = pos; i < pos + len; ++i) {
    if (s[i] < '0' || s[i] > '9') return false;
    out = out * 10 + (s[i] - '0');
  }
  return true;
}

bool ParseDateTimeText(std::string_view s, double& out) {
  s = Trim(s);
  TZTDateTimeParts p;
  if (s.size() >= 10 && s[4] == '-' && s[7] == '-' && ParseFixedInt(s, 0, 4, p.Year) &&
      ParseFixedInt(s, 5, 2, p.Month) && ParseFixedInt(s, 8, 2, p.Day)) {
    std::string_view rest = s.substr(10);
    if (!rest.empty()) {
      if (rest.size() < 9 || (rest[0] != ' ' && rest[0] != 'T') || rest[3] != ':' ||
          rest[6] != ':' || !ParseFixedInt(rest, 1, 2, p.Hour) ||
          !ParseFixedInt(rest, 4, 2, p.Minute) || !ParseFixedInt(rest, 7, 2, p.Second))
        return false;
      rest.remove_prefix(9);
      if (!rest.empty()) {
        if (rest.size() != 4 || rest[0] != '.' || !ParseFixedInt(rest, 1, 3, p.MSec)) return false;
      }
    }
    TZentrailTimeStamp stamp;
    if (!EncodeTimeStamp(p, stamp)) return false;
    out = TimeStampToDateTime(stamp);
    return true;
  }
  return ParseDouble(s, out);
}

std::string FormatDouble(double value) {
  char buf[64];
  auto [ptr, ec] = std::to_chars(buf, buf + sizeof buf, value);
  if (ec != std::errc()) return "0";
  return std::string(buf, ptr);
}

std::string ErrnoText(int err) { return std::strerror(err); }

// The permission bits a newly created file gets under the process's umask.
mode_t NewFileMode() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind("Umask:", 0) == 0) {
      unsigned mask = 022;
      std::sscanf(line.c_str() + 6, "%o", &mask);
      return static_cast<mode_t>(0666 & ~mask);
    }
  }
  return 0644;
}

}  // namespace

bool WriteFileAtomically(const std::string& path, std::string_view bytes, std::string& error) {
  namespace fs = std::filesystem;
  if (path.empty()) {
    error = "no file name given";
    return false;
  }
  std::string target = path;
  // Writing through a link keeps the link and replaces what it points to.
  std::error_code ec;
  if (fs::is_symlink(target, ec)) {
    fs::path resolved = fs::canonical(target, ec);
    if (!ec) target = resolved.string();
  }
  mode_t mode = NewFileMode();
  struct stat st {};
  if (::stat(target.c_str(), &st) == 0) {
    if (S_ISDIR(st.st_mode)) {
      error = "cannot write " + path + ": it is a folder";
      return false;
    }
    mode = st.st_mode & 07777;
  }
  std::string folder = fs::path(target).parent_path().string();
  if (folder.empty()) folder = ".";
  std::string temp = folder + "/." + fs::path(target).filename().string() + ".tmp-XXXXXX";
  int fd = ::mkostemp(temp.data(), O_CLOEXEC);
  if (fd < 0) {
    error = "cannot write " + path + ": cannot create a temporary file in " + folder + ": " +
            ErrnoText(errno);
    return false;
  }
  auto fail = [&](const std::string& what, int err) {
    error = "cannot write " + path + ": " + what + ": " + ErrnoText(err);
    if (fd >= 0) ::close(fd);
    ::unlink(temp.c_str());
    return false;
  };
  std::size_t done = 0;
  while (done < bytes.size()) {
    ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      return fail("write failed", errno);
    }
    done += static_cast<std::size_t>(n);
  }
  if (::fchmod(fd, mode) != 0) return fail("cannot set permissions", errno);
  if (::fsync(fd) != 0) return fail("sync failed", errno);
  int closeResult = ::close(fd);
  fd = -1;
  if (closeResult != 0) return fail("close failed", errno);
  if (detail::AtomicWriteBeforeRenameHook && !detail::AtomicWriteBeforeRenameHook(temp))
    return fail("interrupted before the rename", EINTR);
  if (::rename(temp.c_str(), target.c_str()) != 0) return fail("rename failed", errno);
  // Make the rename itself durable; a failure here does not undo the new file.
  int dirFd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (dirFd >= 0) {
    ::fsync(dirFd);
    ::close(dirFd);
  }
  return true;
}

TZTIniFile::TZTIniFile(std::string fileName) : FFileName(std::move(fileName)) { Reload(); }

bool TZTIniFile::Reload() {
  FSections.clear();
  if (FFileName.empty()) return true;
  std::error_code ec;
  if (!std::filesystem::exists(FFileName, ec)) return true;
  std::ifstream in(FFileName, std::ios::binary);
  if (!in) return false;
  std::ostringstream text;
  text << in.rdbuf();
  if (in.bad()) return false;
  LoadFromString(text.str());
  return true;
}

void TZTIniFile::LoadFromString(std::string_view text) {
  FSections.clear();
  if (text.size() >= 3 && text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
  TSection* current = nullptr;
  std::size_t pos = 0;
  while (pos < text.size()) {
    std::size_t end = text.find_first_of("\r\n", pos);
    if (end == std::string_view::npos) end = text.size();
    std::string_view line = Trim(text.substr(pos, end - pos));
    pos = end;
    if (pos < text.size())
      pos += (text[pos] == '\r' && pos + 1 < text.size() && text[pos + 1] == '\n') ? 2 : 1;
    if (line.empty() || line[0] == ';' || line[0] == '#') continue;
    if (line[0] == '[') {
      if (line.back() != ']') {
        current = nullptr;  // keys below a broken header belong nowhere
        continue;
      }
      std::string_view name = Trim(line.substr(1, line.size() - 2));
      TSection* existing = FindSection(name);
      current = existing ? existing : &AddSection(name);
      continue;
    }
    if (!current) continue;
    std::size_t eq = line.find('=');
    if (eq == std::string_view::npos) continue;
    std::string_view key = Trim(line.substr(0, eq));
    if (key.empty()) continue;
    std::string_view value = Trim(line.substr(eq + 1));
    bool duplicate = false;
    for (const TEntry& e : current->Entries)
      if (SameText(e.Key, key)) duplicate = true;
    // The first of two equal keys is the one a reader finds, so it is the one kept.
    if (!duplicate) current->Entries.push_back({std::string(key), std::string(value)});
  }
}

std::string TZTIniFile::ToString() const {
  std::string out;
  for (std::size_t i = 0; i < FSections.size(); ++i) {
    if (i > 0) out += '\n';
    out += '[';
    out += FSections[i].Name;
    out += "]\n";
    for (const TEntry& e : FSections[i].Entries) {
      out += e.Key;
      out += '=';
      out += e.Value;
      out += '\n';
    }
  }
  return out;
}

const TZTIniFile::TSection* TZTIniFile::FindSection(std::string_view name) const {
  for (const TSection& s : FSections)
    if (SameText(s.Name, name)) return &s;
  return nullptr;
}

TZTIniFile::TSection* TZTIniFile::FindSection(std::string_view name) {
  for (TSection& s : FSections)
    if (SameText(s.Name, name)) return &s;
  return nullptr;
}

TZTIniFile::TSection& TZTIniFile::AddSection(std::string_view name) {
  FSections.push_back({std::string(name), {}});
  return FSections.back();
}

const std::string* TZTIniFile::FindValue(std::string_view section, std::string_view ident) const {
  const TSection* s = FindSection(section);
  if (!s) return nullptr;
  for (const TEntry& e : s->Entries)
    if (SameText(e.Key, ident)) return &e.Value;
  return nullptr;
}

std::string TZTIniFile::ReadString(std::string_view section, std::string_view ident,
                                   std::string_view defaultValue) const {
  const std::string* v = FindValue(section, ident);
  return v ? *v : std::string(defaultValue);
}

void TZTIniFile::WriteString(std::string_view section, std::string_view ident,
                             std::string_view value) {
  TSection* s = FindSection(section);
  if (!s) s = &AddSection(section);
  for (TEntry& e : s->Entries) {
    if (SameText(e.Key, ident)) {
      e.Key = std::string(ident);
      e.Value = std::string(value);
      return;
    }
  }
  s->Entries.push_back({std::string(ident), std::string(value)});
}

int32_t TZTIniFile::ReadInteger(std::string_view section, std::string_view ident,
                                int32_t defaultValue) const {
  const std::string* v = FindValue(section, ident);
  int32_t result;
  return v && ParseInt32(*v, result) ? result : defaultValue;
}

void TZTIniFile::WriteInteger(std::string_view section, std::string_view ident, int32_t value) {
  WriteString(section, ident, std::to_string(value));
}

bool TZTIniFile::ReadBool(std::string_view section, std::string_view ident,
                          bool defaultValue) const {
  const std::string* v = FindValue(section, ident);
  if (!v) return defaultValue;
  int32_t number;
  if (ParseInt32(*v, number)) return number != 0;
  std::string_view t = Trim(*v);
  if (SameText(t, "true")) return true;
  if (SameText(t, "false")) return false;
  return defaultValue;
}

void TZTIniFile::WriteBool(std::string_view section, std::string_view ident, bool value) {
  WriteString(section, ident, value ? "1" : "0");
}

double TZTIniFile::ReadFloat(std::string_view section, std::string_view ident,
                             double defaultValue) const {
  const std::string* v = FindValue(section, ident);
  double result;
  return v && ParseDouble(*v, result) ? result : defaultValue;
}

void TZTIniFile::WriteFloat(std::string_view section, std::string_view ident, double value) {
  WriteString(section, ident, FormatDouble(value));
}

double TZTIniFile::ReadDateTime(std::string_view section, std::string_view ident,
                                double defaultValue) const {
  const std::string* v = FindValue(section, ident);
  double result;
  return v && ParseDateTimeText(*v, result) ? result : defaultValue;
}

void TZTIniFile::WriteDateTime(std::string_view section, std::string_view ident, double value) {
  WriteString(section, ident, FormatDateTime("yyyy-mm-dd hh:nn:ss.zzz", value));
}

std::string TZTIniFile::ReadBinary(std::string_view section, std::string_view ident) const {
  const std::string* v = FindValue(section, ident);
  if (!v || v->size() % 2 != 0) return std::string();
  auto nibble = [](char c) -> int {
    if (c >= '0' && c <= '9') return c - '0';
    c = LowerAscii(c);
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
  };
  std::string out;
  out.reserve(v->size() / 2);
  for (std::size_t i = 0; i < v->size(); i += 2) {
    int hi = nibble((*v)[i]), lo = nibble((*v)[i + 1]);
    if (hi < 0 || lo < 0) return std::string();
    out.push_back(static_cast<char>(hi * 16 + lo));
  }
  return out;
}

void TZTIniFile::WriteBinary(std::string_view section, std::string_view ident,
                             std::string_view bytes) {
  static const char kHex[] = "0123456789ABCDEF";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (char c : bytes) {
    unsigned char b = static_cast<unsigned char>(c);
    text.push_back(kHex[b >> 4]);
    text.push_back(kHex[b & 15]);
  }
  WriteString(section, ident, text);
}

bool TZTIniFile::SectionExists(std::string_view section) const {
  return FindSection(section) != nullptr;
}

bool TZTIniFile::ValueExists(std::string_view section, std::string_view ident) const {
  return FindValue(section, ident) != nullptr;
}

std::vector<std::string> TZTIniFile::ReadSection(std::string_view section) const {
  std::vector<std::string> keys;
  if (const TSection* s = FindSection(section))
    for (const TEntry& e : s->Entries) keys.push_back(e.Key);
  return keys;
}

std::vector<std::string> TZTIniFile::ReadSections() const {
  std::vector<std::string> names;
  names.reserve(FSections.size());
  for (const TSection& s : FSections) names.push_back(s.Name);
  return names;
}

std::vector<std::string> TZTIniFile::ReadSectionValues(std::string_view section) const {
  std::vector<std::string> lines;
  if (const TSection* s = FindSection(section))
    for (const TEntry& e : s->Entries) lines.push_back(e.Key + "=" + e.Value);
  return lines;
}

std::vector<std::pair<std::string, std::string>> TZTIniFile::ReadSectionPairs(
    std::string_view section) const {
  std::vector<std::pair<std::string, std::string>> pairs;
  if (const TSection* s = FindSection(section))
    for (const TEntry& e : s->Entries) pairs.emplace_back(e.Key, e.Value);
  return pairs;
}

void TZTIniFile::EraseSection(std::string_view section) {
  for (auto it = FSections.begin(); it != FSections.end(); ++it) {
    if (SameText(it->Name, section)) {
      FSections.erase(it);
      return;
    }
  }
}

void TZTIniFile::DeleteKey(std::string_view section, std::string_view ident) {
  TSection* s = FindSection(section);
  if (!s) return;
  for (auto it = s->Entries.begin(); it != s->Entries.end(); ++it) {
    if (SameText(it->Key, ident)) {
      s->Entries.erase(it);
      return;
    }
  }
}

void TZTIniFile::Clear() { FSections.clear(); }

bool TZTIniFile::TryUpdateFile(std::string& error) const {
  return WriteFileAtomically(FFileName, ToString(), error);
}

void TZTIniFile::UpdateFile() const {
  std::string error;
  if (!TryUpdateFile(error)) throw EZTIniFileError(error);
}

}  // namespace zentrail
