// The members of the send family that describe the system: memory, heap, registry file, kernel and
// distribution, the version of an ELF file, a window.
#include <elf.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/sysinfo.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <strings.h>

#include "ZTCommonUtils.h"
#include "ZTIniFile.h"
#include "ZTRegistry.h"
#include "ZentrailLogger.h"

namespace zentrail {

namespace {

constexpr const char* kNotAvailable = "Not Available";

// "name: value kB" lines of a /proc file, in bytes.
std::map<std::string, uint64_t> ProcKilobytes(const char* path) {
  std::map<std::string, uint64_t> values;
  std::ifstream in(path);
  std::string line;
  while (std::getline(in, line)) {
    const auto colon = line.find(':');
    if (colon == std::string::npos) continue;
    unsigned long long number = 0;
    if (std::sscanf(line.c_str() + colon + 1, "%llu", &number) != 1) continue;
    values[line.substr(0, colon)] = line.find("kB") != std::string::npos ? number * 1024 : number;
  }
  return values;
}

std::string Percent(double part, double whole) {
  if (whole <= 0) return "N/A";
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.2f", 100.0 * part / whole);
  std::string text = buffer;
  // "0.##": no trailing zeros, no lone point.
  while (!text.empty() && text.back() == '0') text.pop_back();
  if (!text.empty() && text.back() == '.') text.pop_back();
  return text + " %";
}

}  // namespace

int TZentrailLogger::SendMemoryManagerStatus(int32_t msgType) {
  if (!IsOn()) return 0;
  const struct mallinfo2 info = mallinfo2();
  const uint64_t heapLive = info.uordblks;
  const uint64_t heapReserved = info.arena;
  const uint64_t mappedLive = info.hblkhd;
  std::vector<std::string> lines;
  lines.push_back("Block Size\t# Live Pointers\tLive Size\tReserved Mem\tEfficiency");
  // The C library counts the pointers of mapped blocks only; the heap's own are not kept.
  lines.push_back("Medium Blocks\tN/A\t" + FormatThousands(heapLive) + "\t" + FormatThousands(heapReserved) + "\t" +
                  Percent(static_cast<double>(heapLive), static_cast<double>(heapReserved)));
  lines.push_back("Large Blocks\t" + FormatThousands(static_cast<uint64_t>(info.hblks)) + "\t" +
                  FormatThousands(mappedLive) + "\t" + FormatThousands(mappedLive) + "\t" +
                  Percent(static_cast<double>(mappedLive), static_cast<double>(mappedLive)));
  lines.push_back("Overall\t\t" + FormatThousands(heapLive + mappedLive) + "\t" +
                  FormatThousands(heapReserved + mappedLive) + "\t" +
                  Percent(static_cast<double>(heapLive + mappedLive), static_cast<double>(heapReserved + mappedLive)));
  return SendMsgDetails(msgType, ztmCustomTable, {}, lines, "Memory Manager Status");
}

int TZentrailLogger::SendMemoryStatus(int32_t msgType) {
  if (!IsOn()) return 0;
  auto mem = ProcKilobytes("/proc/meminfo");
  struct sysinfo si {};
  sysinfo(&si);
  const uint64_t unit = si.mem_unit ? si.mem_unit : 1;
  const uint64_t total = mem.count("MemTotal") ? mem["MemTotal"] : si.totalram * unit;
  const uint64_t avail = mem.count("MemAvailable") ? mem["MemAvailable"] : (si.freeram + si.bufferram) * unit;
  const uint64_t commitLimit = mem.count("CommitLimit") ? mem["CommitLimit"] : (si.totalram + si.totalswap) * unit;
  const uint64_t committed = mem.count("Committed_AS") ? mem["Committed_AS"] : 0;
  // The address space of this process: its limit if one is set, else the 47 bits of user space.
  uint64_t virtualTotal = uint64_t{1} << 47;
  struct rlimit limit {};
  if (getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY) virtualTotal = limit.rlim_cur;
  auto self = ProcKilobytes("/proc/self/status");
  const uint64_t virtualUsed = self.count("VmSize") ? self["VmSize"] : 0;
  const uint64_t load = total ? (100 * (total - std::min(avail, total)) + total / 2) / total : 0;

  std::vector<std::string> lines = {
      "Memory Load=" + std::to_string(load) + "%",
      "Total Physical Memory=" + FormatThousands(total),
      "Avail Physical Memory=" + FormatThousands(avail),
      "Total Page File=" + FormatThousands(commitLimit),
      "Avail Page File=" + FormatThousands(commitLimit > committed ? commitLimit - committed : 0),
      "Total Virtual Memory=" + FormatThousands(virtualTotal),
      "Avail Virtual Memory=" + FormatThousands(virtualTotal > virtualUsed ? virtualTotal - virtualUsed : 0),
      "Avail Ext Virtual Memory=0",
  };
  return SendMsgDetails(msgType, ztmMemoryStatus, {}, lines, "Memory Status");
}

// ---------------------------------------------------------------------------------------------
// Registry file

int TZentrailLogger::SendRegistry(int32_t msgType, std::string_view keyPath) {
  if (!IsOn()) return 0;
  std::string key(keyPath);
  while (!key.empty() && key.front() == '\\') key.erase(0, 1);
  TZTIniFile registry(RegistryFilePath());
  // The key and the keys below it, each as a block of its values.
  std::vector<std::string> blocks;
  const std::string below = key + "\\";
  for (const auto& section : registry.ReadSections()) {
    if (section.size() < key.size()) continue;
    if (strcasecmp(section.c_str(), key.c_str()) == 0 ||
        (section.size() > below.size() && strncasecmp(section.c_str(), below.c_str(), below.size()) == 0))
      blocks.push_back(section);
  }
  if (blocks.empty())
    return SendText(ztmError, "SendRegistry Error: the key " + key + " cannot be opened (" + RegistryFilePath() + ")");
  std::vector<std::string> lines;
  for (const auto& section : blocks) {
    if (!lines.empty()) lines.emplace_back();
    lines.push_back("[" + section + "]");
    auto pairs = registry.ReadSectionPairs(section);
    std::size_t width = 0;
    for (auto& [name, value] : pairs) {
      if (name.empty() || name == "@") name = "Default";
      width = std::max(width, name.size());
    }
    for (const auto& [name, value] : pairs) {
      std::string padded = name;
      padded.resize(width, ' ');
      lines.push_back(padded + " = " + value);
    }
  }
  return SendMsgDetails(msgType, ztmRegistry, "Registry Key", lines, key);
}

// ---------------------------------------------------------------------------------------------
// System and version information

namespace {

std::string OsReleaseValue(const std::string& name) {
  std::ifstream in("/etc/os-release");
  std::string line;
  while (std::getline(in, line)) {
    if (line.compare(0, name.size() + 1, name + "=") != 0) continue;
    std::string value = line.substr(name.size() + 1);
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front())
      value = value.substr(1, value.size() - 2);
    return value;
  }
  return {};
}

std::string ColorDepthText(int bits) {
  switch (bits) {
    case 8: return "256 Colors";
    case 16: return "High Color (16-bit)";
    case 24: return "True Color (24-bit)";
    case 32: return "True Color (32-bit)";
    default: return "Unknown";
  }
}

}  // namespace

int TZentrailLogger::SendSystemInfo(int32_t msgType, const TZentrailScreenInfo* screens) {
  if (!IsOn()) return 0;
  struct utsname uts {};
  uname(&uts);
  int major = 0, minor = 0, build = 0;
  std::sscanf(uts.release, "%d.%d.%d", &major, &minor, &build);
  std::string distribution = OsReleaseValue("PRETTY_NAME");
  std::string other = distribution.empty() ? std::string(uts.version) : distribution + ", " + uts.version;
  other += std::string(", ") + uts.release + ", " + uts.machine;
  const TZentrailScreenInfo none;
  const TZentrailScreenInfo& s = screens ? *screens : none;
  char primary[64], virtualScreen[96];
  std::snprintf(primary, sizeof primary, "%d x %d", s.PrimaryWidth, s.PrimaryHeight);
  std::snprintf(virtualScreen, sizeof virtualScreen, "(%d, %d, %d, %d)", s.VirtualScreen.Left, s.VirtualScreen.Top,
                s.VirtualScreen.Right, s.VirtualScreen.Bottom);
  std::vector<std::string> lines = {
      std::string("Platform=") + uts.sysname,
      "Major Version=" + std::to_string(major),
      "Minor Version=" + std::to_string(minor),
      "Build Number=" + std::to_string(build),
      "Other Info=" + other,
      "Computer Name=" + GetComputerName(),
      "User Name=" + GetUserName(),
      "Monitors=" + std::to_string(s.Monitors),
      std::string("Primary Screen=") + primary,
      std::string("Virtual Screen=") + virtualScreen,
      "Pixels Per Inch=" + std::to_string(s.PixelsPerInch),
      std::string("Small Fonts=") + (s.PixelsPerInch <= 96 ? "True" : "False"),
      "Color Depth=" + ColorDepthText(s.ColorDepth),
  };
  return SendMsgDetails(msgType, ztmSystemInfo, {}, lines, "System Information");
}

namespace {

struct TElfFacts {
  bool Valid = false;
  std::string Description;
  std::string SoName;
  std::string BuildId;
};

template <class Ehdr, class Shdr, class Dyn>
void ReadElfSections(const std::string& bytes, TElfFacts& facts) {
  Ehdr eh;
  std::memcpy(&eh, bytes.data(), sizeof eh);
  const uint64_t tableEnd = static_cast<uint64_t>(eh.e_shoff) + uint64_t{eh.e_shnum} * sizeof(Shdr);
  if (eh.e_shentsize != sizeof(Shdr) || tableEnd > bytes.size()) return;
  std::vector<Shdr> sections(eh.e_shnum);
  if (eh.e_shnum) std::memcpy(sections.data(), bytes.data() + eh.e_shoff, eh.e_shnum * sizeof(Shdr));
  auto inFile = [&](uint64_t offset, uint64_t size) { return offset <= bytes.size() && size <= bytes.size() - offset; };
  for (const Shdr& sh : sections) {
    if (sh.sh_type == SHT_NOTE && inFile(sh.sh_offset, sh.sh_size)) {
      uint64_t at = sh.sh_offset;
      const uint64_t end = sh.sh_offset + sh.sh_size;
      while (at + 12 <= end) {
        uint32_t nameSize, descSize, type;
        std::memcpy(&nameSize, bytes.data() + at, 4);
        std::memcpy(&descSize, bytes.data() + at + 4, 4);
        std::memcpy(&type, bytes.data() + at + 8, 4);
        const uint64_t name = at + 12;
        const uint64_t desc = name + ((uint64_t{nameSize} + 3) & ~uint64_t{3});
        const uint64_t next = desc + ((uint64_t{descSize} + 3) & ~uint64_t{3});
        if (next > end) break;
        if (type == NT_GNU_BUILD_ID && nameSize == 4 && std::memcmp(bytes.data() + name, "GNU", 4) == 0)
          facts.BuildId = BytesToHex(std::as_bytes(std::span(bytes.data() + desc, descSize)));
        at = next;
      }
    }
    if (sh.sh_type == SHT_DYNAMIC && sh.sh_link < sections.size() && inFile(sh.sh_offset, sh.sh_size)) {
      const Shdr& strings = sections[sh.sh_link];
      if (!inFile(strings.sh_offset, strings.sh_size)) continue;
      for (uint64_t at = sh.sh_offset; at + sizeof(Dyn) <= sh.sh_offset + sh.sh_size; at += sizeof(Dyn)) {
        Dyn d;
        std::memcpy(&d, bytes.data() + at, sizeof d);
        if (d.d_tag == DT_NULL) break;
        if (d.d_tag != DT_SONAME || d.d_un.d_val >= strings.sh_size) continue;
        const char* s = bytes.data() + strings.sh_offset + d.d_un.d_val;
        facts.SoName.assign(s, strnlen(s, strings.sh_size - d.d_un.d_val));
      }
    }
  }
}

TElfFacts ReadElf(const std::string& bytes) {
  TElfFacts facts;
  if (bytes.size() < EI_NIDENT || std::memcmp(bytes.data(), ELFMAG, SELFMAG) != 0) return facts;
  const bool is64 = bytes[EI_CLASS] == ELFCLASS64;
  if (bytes.size() < (is64 ? sizeof(Elf64_Ehdr) : sizeof(Elf32_Ehdr))) return facts;
  facts.Valid = true;
  uint16_t type = 0, machine = 0;
  std::memcpy(&type, bytes.data() + 16, 2);
  std::memcpy(&machine, bytes.data() + 18, 2);
  const char* kind = type == ET_EXEC ? "executable" : type == ET_DYN ? "shared object" : type == ET_REL ? "relocatable"
                                                                                                         : "file";
  const char* arch = machine == EM_X86_64 ? "x86-64" : machine == EM_386 ? "i386" : machine == EM_AARCH64 ? "AArch64"
                                                                                                          : "other";
  facts.Description = std::string("ELF ") + (is64 ? "64" : "32") + "-bit " + kind + ", " + arch;
  if (is64) ReadElfSections<Elf64_Ehdr, Elf64_Shdr, Elf64_Dyn>(bytes, facts);
  else ReadElfSections<Elf32_Ehdr, Elf32_Shdr, Elf32_Dyn>(bytes, facts);
  return facts;
}

// The version a library's name carries: "libz.so.1.2.13" gives "1.2.13".
std::string VersionFromSoName(const std::string& name) {
  const auto so = name.find(".so.");
  return so == std::string::npos ? std::string() : name.substr(so + 4);
}

struct TPackageFacts {
  std::string Name;
  std::string Version;
  std::string Maintainer;
};

// The Debian package that installed a file, from dpkg's own lists.
TPackageFacts PackageOf(const std::filesystem::path& file) {
  TPackageFacts facts;
  std::error_code ec;
  std::set<std::string> names = {file.string()};
  auto canonical = std::filesystem::canonical(file, ec);
  if (!ec) {
    names.insert(canonical.string());
    // Debian's merged /usr lists many files under their old place.
    const std::string c = canonical.string();
    if (c.rfind("/usr/", 0) == 0) names.insert(c.substr(4));
  }
  const std::filesystem::path info = "/var/lib/dpkg/info";
  for (std::filesystem::directory_iterator it(info, ec), end; !ec && it != end; it.increment(ec)) {
    if (it->path().extension() != ".list") continue;
    std::ifstream in(it->path());
    std::string line;
    bool found = false;
    while (!found && std::getline(in, line)) found = names.count(line) > 0;
    if (!found) continue;
    facts.Name = it->path().stem().string();
    facts.Name = facts.Name.substr(0, facts.Name.find(':'));
    break;
  }
  if (facts.Name.empty()) return facts;
  std::ifstream status("/var/lib/dpkg/status");
  std::string line;
  bool inPackage = false;
  while (std::getline(status, line)) {
    if (line.rfind("Package: ", 0) == 0) {
      if (inPackage && !facts.Version.empty()) break;
      inPackage = line.substr(9) == facts.Name;
    } else if (inPackage && line.rfind("Version: ", 0) == 0) {
      facts.Version = line.substr(9);
    } else if (inPackage && line.rfind("Maintainer: ", 0) == 0) {
      facts.Maintainer = line.substr(12);
    }
  }
  return facts;
}

}  // namespace

int TZentrailLogger::SendFileVersionInfo(int32_t msgType, const std::filesystem::path& file) {
  if (!IsOn()) return 0;
  const std::string text = "Version Information: " + file.string();
  std::string bytes;
  {
    std::ifstream in(file, std::ios::binary);
    if (!in) return SendText(ztmError, "SendFileVersionInfo Error: " + file.string() + ": " + std::strerror(errno));
    std::ostringstream buffer;
    buffer << in.rdbuf();
    bytes = std::move(buffer).str();
  }
  const TElfFacts elf = ReadElf(bytes);
  const TPackageFacts package = PackageOf(file);
  std::error_code ec;
  auto canonical = std::filesystem::canonical(file, ec);
  auto value = [](const std::string& v) { return v.empty() ? std::string(kNotAvailable) : v; };
  std::string fileVersion = VersionFromSoName(canonical.filename().string());
  if (fileVersion.empty()) fileVersion = VersionFromSoName(elf.SoName);
  if (fileVersion.empty()) fileVersion = package.Version;
  std::vector<std::string> lines = {
      "FilePath=" + file.parent_path().string(),
      "FileName=" + file.filename().string(),
      std::string("LanguageID=") + kNotAvailable,
      std::string("CodePage=") + kNotAvailable,
      "Company Name=" + value(package.Maintainer),
      "File Description=" + value(elf.Valid ? elf.Description : std::string()),
      "File Version=" + value(fileVersion),
      "Internal Name=" + value(elf.SoName.empty() ? file.filename().string() : elf.SoName),
      std::string("Legal Copyright=") + kNotAvailable,
      std::string("Legal Trademarks=") + kNotAvailable,
      "Original Filename=" + value(ec ? std::string() : canonical.filename().string()),
      "Product Name=" + value(package.Name),
      "Product Version=" + value(package.Version),
      "Comments=" + value(elf.BuildId.empty() ? std::string() : "Build ID " + elf.BuildId),
  };
  return SendMsgDetails(msgType, ztmVersionInfo, {}, lines, text);
}

int TZentrailLogger::SendVersionInfo(int32_t msgType) {
  if (!IsOn()) return 0;
  std::error_code ec;
  auto self = std::filesystem::read_symlink("/proc/self/exe", ec);
  return SendFileVersionInfo(msgType, ec ? std::filesystem::path("/proc/self/exe") : self);
}

int TZentrailLogger::SendWindowHandle(int32_t msgType, std::string_view name, const TZentrailWindowInfo* window) {
  if (!IsOn()) return 0;
  if (!window || window->Handle == 0)
    return SendText(ztmError, "SendWindowHandle Error: Not a valid HWND (" + std::string(name) + ")");
  std::vector<std::string> lines = {
      "Caption = " + window->Caption,
      "Top = " + std::to_string(window->Top),
      "Left = " + std::to_string(window->Left),
      "Width = " + std::to_string(window->Width),
      "Height = " + std::to_string(window->Height),
      "Class Name = " + window->ClassName,
      "User Data = " + window->UserData,
      "Styles:",
  };
  for (const auto& s : window->Styles) lines.push_back("  " + s);
  lines.emplace_back("ExStyles:");
  for (const auto& s : window->ExStyles) lines.push_back("  " + s);
  return SendMsgDetails(msgType, ztmWindow, "Window Handle", lines, name);
}

}  // namespace zentrail
