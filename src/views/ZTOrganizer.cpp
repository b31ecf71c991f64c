#include "ZTOrganizer.h"

#include <algorithm>
#include <charconv>

#include "ZTIniFile.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

namespace {

constexpr const char* kSection = "Organizer";
constexpr const char* kKeys[ztOrganizeFieldCount] = {"AppName", "Category", "ProcessID", "ThreadName",
                                                      "ComputerName"};

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// The process id as the register keeps it, without allocating.
struct TPidText {
  char Buffer[16];
  std::string_view Text;
  explicit TPidText(uint32_t pid) {
    auto result = std::to_chars(Buffer, Buffer + sizeof Buffer, pid);
    Text = std::string_view(Buffer, static_cast<size_t>(result.ptr - Buffer));
  }
};

}  // namespace

bool TZTOrganizer::TLess::operator()(std::string_view a, std::string_view b) const {
  const size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    const char x = Lower(a[i]), y = Lower(b[i]);
    if (x != y) return static_cast<unsigned char>(x) < static_cast<unsigned char>(y);
  }
  return a.size() < b.size();
}

TZTOrganizer::TZTOrganizer() = default;

TZTOrganizer& Organizer() {
  static TZTOrganizer organizer;
  return organizer;
}

void TZTOrganizer::SetOrganizeBy(TZTOrganizeBy value) { FOrganizeBy = value & ztOrganizeAll; }

std::string TZTOrganizer::ViewName(TZTOrganizeField field, std::string_view value) {
  switch (field) {
    case ozProcessID:
      return "PID " + std::string(value);
    case ozThreadName:
      return "Thread " + std::string(value);
    default:
      return std::string(value);
  }
}

bool TZTOrganizer::Covered(TZTOrganizeField field, std::string_view value) const {
  const auto& values = FValues[static_cast<size_t>(field)];
  return values.find(value) != values.end();
}

bool TZTOrganizer::CoveredCached(TZTOrganizeField field, std::string_view value) {
  TCoveredCache& cache = FCovered[static_cast<size_t>(field)];
  if (cache.Generation == FGeneration && cache.Value == value) return true;
  if (!Covered(field, value)) return false;
  cache.Value.assign(value);
  cache.Generation = FGeneration;
  return true;
}

void TZTOrganizer::Organize() {
  FAutoOrganizing = true;
  try {
    Organize(FOrganizeBy);
  } catch (...) {
    FAutoOrganizing = false;
    throw;
  }
  FAutoOrganizing = false;
}

void TZTOrganizer::Organize(TZTOrganizeBy organizeBy) {
  TZentrailMessageSet& ms = MessageSet;
  const int32_t recNo = ms.RecNo;
  if (recNo <= 0 || !FHost || (organizeBy & ztOrganizeAll) == 0) return;
  const uint32_t sender = ms.GetIdentity();
  if (ms.Generation() != FSenderStore) {
    FSenderStore = ms.Generation();
    FSenderCovered.clear();
  }
  // The register's generation changes with every view that comes or goes, so a stale note never
  // matches; the fields asked for are part of the note.
  const uint64_t note = FGeneration * 32 + (organizeBy & ztOrganizeAll);
  if (sender < FSenderCovered.size() && FSenderCovered[sender] == note) return;
  bool made = false;
  for (int f = 0; f < ztOrganizeFieldCount; ++f) {
    if ((organizeBy & (1u << f)) == 0) continue;
    const auto field = static_cast<TZTOrganizeField>(f);
    std::string_view value;
    TPidText pid(ms.GetProcessID());
    switch (field) {
      case ozAppName: value = ms.GetAppName(); break;
      case ozCategory: value = ms.GetCategory(); break;
      case ozProcessID: value = pid.Text; break;
      case ozThreadName: value = ms.GetThreadName(); break;
      case ozComputerName: value = ms.GetComputerName(); break;
    }
    // A message without category or computer has nothing to be organized by; an empty application
    // or thread name still gets its view.
    if ((field == ozCategory || field == ozComputerName) && value.empty()) continue;
    if (CoveredCached(field, value)) continue;
    const std::string text(value);
    FHost->CreateOrganizedView(ViewName(field, text), field, text, !FAutoOrganizing);
    ms.GotoRec(recNo);
    made = true;
  }
  if (!made && sender != UINT32_MAX) {
    if (sender >= FSenderCovered.size()) FSenderCovered.resize(std::max<size_t>(sender + 1, FSenderCovered.size() * 2));
    FSenderCovered[sender] = note;
  }
}

void TZTOrganizer::OrganizeAll(TZTOrganizeBy organizeBy) {
  TZentrailMessageSet& ms = MessageSet;
  const int32_t count = ms.GetRecordCount();
  if (count == 0) return;
  ms.First();
  for (int32_t i = 0; i < count; ++i) {
    // Making a view moves the cursor; the scan goes on from where it was.
    const int32_t recNo = ms.RecNo;
    Organize(organizeBy);
    ms.GotoRec(recNo);
    if (i + 1 < count) ms.Next();
  }
}

int TZTOrganizer::CoveredField(const TZTOrganizerCriteria& criteria) {
  int field = -1;
  for (int f = 0; f < ztOrganizeFieldCount; ++f) {
    if (!criteria.Check[static_cast<size_t>(f)]) continue;
    if (field >= 0) return -1;
    field = f;
  }
  return field;
}

void TZTOrganizer::AddValues(const TZTOrganizerCriteria& criteria) {
  ++FGeneration;
  const int field = CoveredField(criteria);
  if (field >= 0) FValues[static_cast<size_t>(field)].insert(criteria.Value[static_cast<size_t>(field)]);
}

void TZTOrganizer::RegisterFilterCriteria(const void* view, const TZTOrganizerCriteria& criteria) {
  if (!view) return;
  UnregisterFilterCriteria(view);
  FViews.push_back({view, criteria});
  AddValues(criteria);
}

void TZTOrganizer::UnregisterFilterCriteria(const void* view) {
  if (!view) return;
  auto it = std::find_if(FViews.begin(), FViews.end(), [view](const TEntry& e) { return e.View == view; });
  if (it == FViews.end()) return;
  ++FGeneration;
  // One value stands for all views of that value: the first of them to go uncovers it.
  const int field = CoveredField(it->Criteria);
  if (field >= 0) FValues[static_cast<size_t>(field)].erase(it->Criteria.Value[static_cast<size_t>(field)]);
  FViews.erase(it);
}

void TZTOrganizer::ClearFilterCriteria() {
  ++FGeneration;
  for (auto& values : FValues) values.clear();
  for (const TEntry& entry : FViews) AddValues(entry.Criteria);
}

const void* TZTOrganizer::GetView(int index) const {
  return index >= 0 && index < ViewCount() ? FViews[static_cast<size_t>(index)].View : nullptr;
}

void TZTOrganizer::ReadOrganizerSettings(const TZTIniFile& ini) {
  TZTOrganizeBy set = 0;
  for (int f = 0; f < ztOrganizeFieldCount; ++f)
    if (ini.ReadBool(kSection, kKeys[f], false)) set |= static_cast<TZTOrganizeBy>(1u << f);
  SetOrganizeBy(set);
}

void TZTOrganizer::WriteOrganizerSettings(TZTIniFile& ini) const {
  ini.EraseSection(kSection);
  for (int f = 0; f < ztOrganizeFieldCount; ++f) ini.WriteBool(kSection, kKeys[f], (FOrganizeBy & (1u << f)) != 0);
}

void TZTOrganizer::ReadOrganizerSettings(const std::string& fileName) { ReadOrganizerSettings(TZTIniFile(fileName)); }

void TZTOrganizer::WriteOrganizerSettings(const std::string& fileName) const {
  TZTIniFile ini(fileName);
  WriteOrganizerSettings(ini);
  ini.UpdateFile();
}

}  // namespace zentrail
