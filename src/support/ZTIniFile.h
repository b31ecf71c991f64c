#pragma once
// In-memory ini file for the settings file and project files.
//
// Lines of "[Section]" and "Key=Value" in UTF-8. Section and key names are compared without
// regard to ASCII case; sections and keys keep the order in which they were read or added.
// Values are stored and written exactly as they stand: no quoting and no escaping, because other
// tools and older versions read these files as plain text. Reading trims blanks around names and
// values, so a value with leading or trailing blanks does not survive a round trip, and a value
// holding a line break comes back as two lines; both are properties of the format.
//
// Reads and writes go to memory. UpdateFile rewrites the whole file at once through a temporary
// file in the same folder that is synced and then renamed over the old one, so that a crash or a
// full disk leaves either the old file or the new one, never half of either.

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zentrail {

class EZTIniFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class TZTIniFile {
 public:
  TZTIniFile() = default;
  // Loads the file if it exists; a missing or unreadable file gives an empty object that will be
  // written to that name by UpdateFile.
  explicit TZTIniFile(std::string fileName);

  const std::string& FileName() const { return FFileName; }
  void SetFileName(std::string fileName) { FFileName = std::move(fileName); }

  // Replaces the contents with the text of an ini file. Bad lines are skipped: lines before the
  // first section, lines without "=", comments (";" or "#" first), a section line without its
  // closing bracket. A UTF-8 byte order mark and CR LF, LF or CR line ends are accepted.
  void LoadFromString(std::string_view text);
  // Re-reads the file; a missing file leaves the object empty. False if it exists but can't be read.
  bool Reload();
  // The text UpdateFile writes: LF line ends, a blank line between sections.
  std::string ToString() const;

  std::string ReadString(std::string_view section, std::string_view ident,
                         std::string_view defaultValue) const;
  void WriteString(std::string_view section, std::string_view ident, std::string_view value);

  // Decimal with an optional sign, or hexadecimal with "$" or "0x" (hex wraps to a signed 32-bit
  // value, so "$FF000010" reads as the system colour it names). Anything else, including a value
  // out of the 32-bit range or with trailing characters, gives the default.
  int32_t ReadInteger(std::string_view section, std::string_view ident, int32_t defaultValue) const;
  void WriteInteger(std::string_view section, std::string_view ident, int32_t value);

  // An integer value is true when it is not 0; "true" and "false" in any case are accepted too.
  // Anything else gives the default. Written as "1" and "0".
  bool ReadBool(std::string_view section, std::string_view ident, bool defaultValue) const;
  void WriteBool(std::string_view section, std::string_view ident, bool value);

  // Always with "." as the decimal point, whatever the locale; written in the shortest form that
  // reads back to the same double.
  double ReadFloat(std::string_view section, std::string_view ident, double defaultValue) const;
  void WriteFloat(std::string_view section, std::string_view ident, double value);

  // A date-time as days since 30 December 1899 plus the fraction of the day, written as
  // "yyyy-mm-dd hh:nn:ss.zzz". ReadDateTime also takes "yyyy-mm-dd" and a plain number.
  double ReadDateTime(std::string_view section, std::string_view ident, double defaultValue) const;
  void WriteDateTime(std::string_view section, std::string_view ident, double value);

  // Bytes as upper-case hexadecimal pairs. A value that is not whole hex pairs reads as empty.
  std::string ReadBinary(std::string_view section, std::string_view ident) const;
  void WriteBinary(std::string_view section, std::string_view ident, std::string_view bytes);

  bool SectionExists(std::string_view section) const;
  bool ValueExists(std::string_view section, std::string_view ident) const;
  std::vector<std::string> ReadSection(std::string_view section) const;  // key names in order
  std::vector<std::string> ReadSections() const;
  std::vector<std::string> ReadSectionValues(std::string_view section) const;  // "Key=Value" lines
  std::vector<std::pair<std::string, std::string>> ReadSectionPairs(std::string_view section) const;
  void EraseSection(std::string_view section);
  void DeleteKey(std::string_view section, std::string_view ident);
  void Clear();

  // Writes the whole file atomically. Throws EZTIniFileError naming the file when it can't; the
  // file on disk is then unchanged. The folder must exist.
  void UpdateFile() const;
  // The same without an exception: false with error filled.
  bool TryUpdateFile(std::string& error) const;

  // The current section, through which a view reads and writes only its own keys.
  const std::string& CurrentSection() const { return FCurrentSection; }
  void SetCurrentSection(std::string section) { FCurrentSection = std::move(section); }

 private:
  struct TEntry {
    std::string Key;
    std::string Value;
  };
  struct TSection {
    std::string Name;
    std::vector<TEntry> Entries;
  };

  const TSection* FindSection(std::string_view name) const;
  TSection* FindSection(std::string_view name);
  TSection& AddSection(std::string_view name);
  const std::string* FindValue(std::string_view section, std::string_view ident) const;

  std::string FFileName;
  std::string FCurrentSection;
  std::vector<TSection> FSections;
};

// Atomically replaces the file at path with bytes: temporary file in the same folder, fsync,
// rename, then a sync of the folder. An existing file keeps its permission bits. On failure the
// old file is untouched, the temporary file is removed and error says what went wrong.
bool WriteFileAtomically(const std::string& path, std::string_view bytes, std::string& error);

namespace detail {
// Test seam: when set, called after the temporary file is complete and synced, just before the
// rename. Returning false stops the write there, as a crash at that moment would.
extern bool (*AtomicWriteBeforeRenameHook)(const std::string& tempPath);
}  // namespace detail

}  // namespace zentrail
