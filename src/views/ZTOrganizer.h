#pragma once
// The organizer makes views by itself. For each chosen field of the current message whose value no
// view stands for yet, it asks its host (the main window) for a view that filters on that value.
// It keeps a register of the views that exist and of the single-field values they cover; a view
// covers a value only while it filters on exactly one of the five fields.
//
// No Qt here: views are known by an opaque key and a copy of the criteria that matter, and the
// view is made by the host.

#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace zentrail {

class TZTIniFile;
struct TZTFilterCriteria;

// The five fields in their fixed order; a TZTOrganizeBy holds bit (1 << field) for each chosen one.
enum TZTOrganizeField : int { ozAppName = 0, ozCategory = 1, ozProcessID = 2, ozThreadName = 3, ozComputerName = 4 };
inline constexpr int ztOrganizeFieldCount = 5;
using TZTOrganizeBy = uint8_t;
inline constexpr TZTOrganizeBy ztOrganizeAll = 31;

// What a view filters on among the five fields (process ids as decimal text).
struct TZTOrganizerCriteria {
  std::array<bool, ztOrganizeFieldCount> Check{};
  std::array<std::string, ztOrganizeFieldCount> Value{};
};

class IZTOrganizerHost {
 public:
  virtual ~IZTOrganizerHost() = default;
  // Makes a view named name that filters on field == value alone. activate false: a live message
  // is on its way to the views, which offers it to the new view too; true: the view fills itself
  // from the store. The host leaves the store's cursor where it may; the organizer restores it.
  virtual void CreateOrganizedView(const std::string& name, TZTOrganizeField field, const std::string& value,
                                   bool activate) = 0;
};

class TZTOrganizer {
 public:
  TZTOrganizer();

  void SetHost(IZTOrganizerHost* host) { FHost = host; }
  IZTOrganizerHost* Host() const { return FHost; }

  TZTOrganizeBy OrganizeBy() const { return FOrganizeBy; }
  void SetOrganizeBy(TZTOrganizeBy value);

  // The arriving message: the settings' fields, views not activated.
  void Organize();
  // The current record of MessageSet with the given fields; the cursor is back on it afterwards.
  void Organize(TZTOrganizeBy organizeBy);
  // Every stored record in order, each new view activated (the command Organize Messages).
  void OrganizeAll(TZTOrganizeBy organizeBy);
  bool AutoOrganizing() const { return FAutoOrganizing; }

  // view is the view's identity; criteria what it filters on now. A view registered again replaces
  // its earlier entry.
  void RegisterFilterCriteria(const void* view, const TZTOrganizerCriteria& criteria);
  void UnregisterFilterCriteria(const void* view);
  // Builds the value lists anew from the registered views.
  void ClearFilterCriteria();
  int ViewCount() const { return static_cast<int>(FViews.size()); }
  const void* GetView(int index) const;
  // Whether a view stands for the value of field (what the covered test of a message asks).
  bool Covered(TZTOrganizeField field, std::string_view value) const;

  // The section "Organizer" of an ini file: the five booleans, default false. Writing erases the
  // section first, which takes other keys there away too.
  void ReadOrganizerSettings(const std::string& fileName);
  void WriteOrganizerSettings(const std::string& fileName) const;
  void ReadOrganizerSettings(const TZTIniFile& ini);
  void WriteOrganizerSettings(TZTIniFile& ini) const;

  // The name a new view of field gets for value: the value, "PID n" or "Thread name".
  static std::string ViewName(TZTOrganizeField field, std::string_view value);

 private:
  struct TLess {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const;
  };
  struct TEntry {
    const void* View;
    TZTOrganizerCriteria Criteria;
  };
  // The one field a view covers, or -1 when it checks none or several.
  static int CoveredField(const TZTOrganizerCriteria& criteria);
  void AddValues(const TZTOrganizerCriteria& criteria);

  // The last value of each field found covered, valid while the register is unchanged: senders
  // repeat, and a repeated value then costs one comparison instead of a search.
  struct TCoveredCache {
    std::string Value;
    uint64_t Generation = 0;
  };
  bool CoveredCached(TZTOrganizeField field, std::string_view value);

  // Per sender of the store (by its number), the register's generation and the fields at which all
  // its values were found covered: a sender seen before then costs one comparison per message.
  std::vector<uint64_t> FSenderCovered;
  uint64_t FSenderStore = 0;  // the store's generation these belong to

  IZTOrganizerHost* FHost = nullptr;
  uint64_t FGeneration = 1;
  std::array<TCoveredCache, ztOrganizeFieldCount> FCovered;
  std::vector<TEntry> FViews;
  std::array<std::set<std::string, TLess>, ztOrganizeFieldCount> FValues;
  TZTOrganizeBy FOrganizeBy = 0;
  bool FAutoOrganizing = false;
};

// The process's organizer.
TZTOrganizer& Organizer();

// The five fields of a view's filter as the register keeps them (defined beside the view, which
// registers itself whenever its criteria change).
TZTOrganizerCriteria OrganizerCriteria(const TZTFilterCriteria& criteria);

}  // namespace zentrail
