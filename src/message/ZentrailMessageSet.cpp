#include "ZentrailMessageSet.h"

#include <atomic>
#include <cstring>
#include <ctime>
#include <unordered_set>

namespace zentrail {

namespace {
constexpr int kBlockShift = 16;
constexpr int32_t kBlockSize = 1 << kBlockShift;
constexpr std::size_t kChunkSize = 1u << 20;

inline uint64_t Mix(uint64_t h, uint64_t v) {
  h ^= v + 0x9E3779B97F4A7C15ull + (h << 6) + (h >> 2);
  return h;
}

inline uint64_t HashText(std::string_view s) {
  // FNV-1a over the short identity texts; they are a few dozen bytes at most in practice.
  uint64_t h = 1469598103934665603ull;
  for (unsigned char c : s) h = (h ^ c) * 1099511628211ull;
  return h;
}

int32_t LocalZoneBiasMinutes() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return static_cast<int32_t>(-local.tm_gmtoff / 60);
}
}  // namespace

// Append-only storage for text. Chunks never move, so views into them last until Close.
class TZentrailMessageSet::Arena {
 public:
  std::string_view Store(std::string_view text) {
    if (text.empty()) return {};
    if (text.size() > kChunkSize / 4) {
      // A large text gets a chunk of its own so that it never wastes the rest of a shared one.
      // Chunks are separate allocations, so FNext stays valid while the list grows.
      FChunks.emplace_back(std::make_unique_for_overwrite<char[]>(text.size()));
      FBytes += text.size();
      std::memcpy(FChunks.back().get(), text.data(), text.size());
      return {FChunks.back().get(), text.size()};
    }
    if (text.size() > FLeft) {
      FChunks.emplace_back(std::make_unique_for_overwrite<char[]>(kChunkSize));
      FBytes += kChunkSize;
      FNext = FChunks.back().get();
      FLeft = kChunkSize;
    }
    char* at = FNext;
    std::memcpy(at, text.data(), text.size());
    FNext += text.size();
    FLeft -= text.size();
    return {at, text.size()};
  }
  std::size_t Bytes() const { return FBytes; }

 private:
  std::vector<std::unique_ptr<char[]>> FChunks;
  char* FNext = nullptr;
  std::size_t FLeft = 0;
  std::size_t FBytes = 0;
};

struct TZentrailMessageSet::Record {
  const char* Text;
  uint32_t TextLen;
  uint32_t Identity;
  int32_t MsgType;
  int32_t MsgContent;
  int32_t Time;
  int32_t Date;
  int32_t ID;
  uint32_t Details;  // 0 for none, else index + 1 into the details table
};

std::size_t TZentrailMessageSet::RecordSize() { return sizeof(Record); }

struct TZentrailMessageSet::Identity {
  std::string_view ThreadName, AppName, ComputerName, TypeName, Category;
  uint32_t ProcessID;
  int32_t CategoryColor, CategoryFontColor;
  uint64_t Hash;
};

// Interns the sender fields: a run has few distinct senders, so each record keeps a 32-bit index.
class TZentrailMessageSet::IdentityTable {
 public:
  IdentityTable() { FSlots.assign(64, kEmpty); }

  uint32_t Intern(const Identity& key) {
    std::size_t mask = FSlots.size() - 1;
    std::size_t i = key.Hash & mask;
    for (;;) {
      const uint32_t slot = FSlots[i];
      if (slot == kEmpty) break;
      const Identity& e = FItems[slot];
      if (e.Hash == key.Hash && Same(e, key)) return slot;
      i = (i + 1) & mask;
    }
    Identity stored = key;
    stored.ThreadName = Text(key.ThreadName);
    stored.AppName = Text(key.AppName);
    stored.ComputerName = Text(key.ComputerName);
    stored.TypeName = Text(key.TypeName);
    stored.Category = Text(key.Category);
    const uint32_t index = static_cast<uint32_t>(FItems.size());
    FItems.push_back(stored);
    FSlots[i] = index;
    if (FItems.size() * 2 > FSlots.size()) Grow();
    return index;
  }

  const Identity& operator[](uint32_t index) const { return FItems[index]; }
  uint32_t Count() const { return static_cast<uint32_t>(FItems.size()); }
  std::size_t Bytes() const {
    return FTexts.Bytes() + FItems.capacity() * sizeof(Identity) + FSlots.capacity() * 4 +
           FTextSet.size() * (sizeof(std::string_view) + 16);
  }

  static uint64_t HashOf(const Identity& k) {
    uint64_t h = HashText(k.ThreadName);
    h = Mix(h, HashText(k.AppName));
    h = Mix(h, HashText(k.ComputerName));
    h = Mix(h, HashText(k.TypeName));
    h = Mix(h, HashText(k.Category));
    h = Mix(h, k.ProcessID);
    h = Mix(h, static_cast<uint32_t>(k.CategoryColor));
    h = Mix(h, static_cast<uint32_t>(k.CategoryFontColor));
    return h;
  }

 private:
  static constexpr uint32_t kEmpty = UINT32_MAX;
  static bool Same(const Identity& a, const Identity& b) {
    return a.ProcessID == b.ProcessID && a.CategoryColor == b.CategoryColor &&
           a.CategoryFontColor == b.CategoryFontColor && a.ThreadName == b.ThreadName &&
           a.AppName == b.AppName && a.ComputerName == b.ComputerName &&
           a.TypeName == b.TypeName && a.Category == b.Category;
  }
  void Grow() {
    std::vector<uint32_t> slots(FSlots.size() * 2, kEmpty);
    const std::size_t mask = slots.size() - 1;
    for (uint32_t index = 0; index < FItems.size(); ++index) {
      std::size_t i = FItems[index].Hash & mask;
      while (slots[i] != kEmpty) i = (i + 1) & mask;
      slots[i] = index;
    }
    FSlots.swap(slots);
  }

  // One copy of each distinct text: an application name that many threads share is kept once.
  std::string_view Text(std::string_view text) {
    if (text.empty()) return {};
    auto found = FTextSet.find(text);
    if (found != FTextSet.end()) return *found;
    return *FTextSet.insert(FTexts.Store(text)).first;
  }

  std::vector<uint32_t> FSlots;
  std::vector<Identity> FItems;
  Arena FTexts;
  std::unordered_set<std::string_view> FTextSet;
};

// The record being filled between Append or Edit and Post.
struct TZentrailMessageSet::Staging {
  TZentrailMessage Message;
  int32_t ID = 0;
};

TZentrailMessageSet::TZentrailMessageSet() : FTimeBias(LocalZoneBiasMinutes()) { Reset(); }

TZentrailMessageSet::~TZentrailMessageSet() = default;

void TZentrailMessageSet::Reset() {
  // Unique across stores, so that a cache keyed by it never mistakes one store for another.
  static std::atomic<uint64_t> generations{0};
  FGeneration = ++generations;
  FBlocks.clear();
  FTexts = std::make_unique<Arena>();
  FDetails = std::make_unique<Arena>();
  FIdentities = std::make_unique<IdentityTable>();
  FStaging = std::make_unique<Staging>();
  FDetailsTable.clear();
  FDetailsTable.shrink_to_fit();
  FCount = 0;
  RecNo = 0;
  FCurrent = nullptr;
  FState = State::Browse;
}

void TZentrailMessageSet::Open() {
  if (!FActive) {
    Reset();
    FActive = true;
  }
}

void TZentrailMessageSet::Close() {
  Reset();
  FActive = false;
}

TZentrailMessageSet::Record& TZentrailMessageSet::MutableRecord(int32_t recNo) {
  const int32_t i = recNo - 1;
  return FBlocks[static_cast<std::size_t>(i >> kBlockShift)][i & (kBlockSize - 1)];
}

const TZentrailMessageSet::Record& TZentrailMessageSet::Current() const {
  static const Record kEmptyRecord{nullptr, 0, UINT32_MAX, 0, ztmText, 0, 0, 0, 0};
  return FCurrent ? *FCurrent : kEmptyRecord;
}

void TZentrailMessageSet::CheckAppending(const char* what) const {
  if (FState != State::Inserting)
    throw EZentrailStoreError(std::string(what) + ": the store is not in insert mode");
}

void TZentrailMessageSet::CheckInsert(const char* what) const {
  if (!FActive) throw EZentrailStoreError(std::string(what) + ": the store is closed");
}

void TZentrailMessageSet::Append() {
  CheckInsert("Append");
  FStaging->Message.Clear();
  FStaging->ID = 0;
  FState = State::Inserting;
}

void TZentrailMessageSet::Edit() {
  CheckInsert("Edit");
  if (!FCurrent) throw EZentrailStoreError("Edit: there is no current record");
  FStaging->Message.MsgText.assign(GetMsgText());
  FState = State::Editing;
}

void TZentrailMessageSet::Cancel() { FState = State::Browse; }

TZentrailMessageSet::Record& TZentrailMessageSet::NewRecord() {
  if (FCount == INT32_MAX) throw EZentrailStoreError("Append: the store is full");
  if ((FCount & (kBlockSize - 1)) == 0)
    FBlocks.emplace_back(std::make_unique_for_overwrite<Record[]>(kBlockSize));
  ++FCount;
  return MutableRecord(FCount);
}

void TZentrailMessageSet::Post() {
  if (FState == State::Editing) {
    Record& r = MutableRecord(RecNo);
    const std::string_view text = FTexts->Store(FStaging->Message.MsgText);
    r.Text = text.data();
    r.TextLen = static_cast<uint32_t>(text.size());
    FState = State::Browse;
    return;
  }
  CheckAppending("Post");
  FState = State::Browse;
  AppendMessage(FStaging->Message, FStaging->ID);
}

void TZentrailMessageSet::AppendMessage(const TZentrailMessage& m, int32_t id) {
  TZentrailPacketView v;
  v.MsgType = m.MsgType;
  v.MsgContent = m.MsgContent;
  v.MsgText = m.MsgText;
  v.Details = m.Details;
  v.TimeStamp = m.TimeStamp;
  v.ProcessID = m.ProcessID;
  v.ThreadName = m.ThreadName;
  v.AppName = m.AppName;
  v.ComputerName = m.ComputerName;
  v.TypeName = m.TypeName;
  v.Category = m.Category;
  v.CategoryColor = m.CategoryColor;
  v.CategoryFontColor = m.CategoryFontColor;
  AppendMessage(v, id);
}

void TZentrailMessageSet::AppendMessage(const TZentrailPacketView& m, int32_t id) {
  CheckInsert("Append");
  Identity key{m.ThreadName, m.AppName,  m.ComputerName,       m.TypeName, m.Category,
               m.ProcessID,  m.CategoryColor, m.CategoryFontColor, 0};
  key.Hash = IdentityTable::HashOf(key);
  const uint32_t identity = FIdentities->Intern(key);
  const std::string_view text = FTexts->Store(m.MsgText);
  uint32_t details = 0;
  if (!m.Details.empty()) {
    const std::string_view d = FDetails->Store(m.Details);
    FDetailsTable.push_back({d.data(), static_cast<uint32_t>(d.size())});
    details = static_cast<uint32_t>(FDetailsTable.size());
  }
  Record& r = NewRecord();
  r = Record{text.data(), static_cast<uint32_t>(text.size()), identity, m.MsgType, m.MsgContent,
             m.TimeStamp.Time, m.TimeStamp.Date, id, details};
  RecNo = FCount;
  FCurrent = &r;
}

void TZentrailMessageSet::First() { GotoRec(FCount > 0 ? 1 : 0); }

void TZentrailMessageSet::Next() {
  if (RecNo < FCount) GotoRec(RecNo + 1);
}

void TZentrailMessageSet::Last() { GotoRec(FCount); }

void TZentrailMessageSet::GotoRec(int32_t recNo) {
  if (recNo == 0 && FCount == 0) {
    RecNo = 0;
    FCurrent = nullptr;
    return;
  }
  if (recNo < 1 || recNo > FCount)
    throw EZentrailStoreError("GotoRec: record " + std::to_string(recNo) + " is out of range 1.." +
                              std::to_string(FCount));
  RecNo = recNo;
  FCurrent = &MutableRecord(recNo);
}

int32_t TZentrailMessageSet::GetID() const { return Current().ID; }
int32_t TZentrailMessageSet::GetMsgType() const { return Current().MsgType; }
int32_t TZentrailMessageSet::GetMsgContent() const { return Current().MsgContent; }

#define ZT_IDENTITY_FIELD(field, empty)                                   \
  const Record& r = Current();                                            \
  if (r.Identity == UINT32_MAX) return empty;                             \
  return (*FIdentities)[r.Identity].field

uint32_t TZentrailMessageSet::GetProcessID() const { ZT_IDENTITY_FIELD(ProcessID, 0u); }
uint32_t TZentrailMessageSet::GetIdentity() const { return Current().Identity; }
uint32_t TZentrailMessageSet::IdentityCount() const { return FIdentities->Count(); }
int32_t TZentrailMessageSet::GetCategoryColor() const { ZT_IDENTITY_FIELD(CategoryColor, 0); }
int32_t TZentrailMessageSet::GetCategoryFontColor() const {
  ZT_IDENTITY_FIELD(CategoryFontColor, 0);
}
std::string_view TZentrailMessageSet::GetAppName() const { ZT_IDENTITY_FIELD(AppName, {}); }
std::string_view TZentrailMessageSet::GetCategory() const { ZT_IDENTITY_FIELD(Category, {}); }
std::string_view TZentrailMessageSet::GetComputerName() const {
  ZT_IDENTITY_FIELD(ComputerName, {});
}
std::string_view TZentrailMessageSet::GetThreadName() const { ZT_IDENTITY_FIELD(ThreadName, {}); }
std::string_view TZentrailMessageSet::GetTypeName() const { ZT_IDENTITY_FIELD(TypeName, {}); }
#undef ZT_IDENTITY_FIELD

std::string_view TZentrailMessageSet::GetMsgText() const {
  const Record& r = Current();
  return {r.Text, r.TextLen};
}

std::string_view TZentrailMessageSet::GetDetails() const {
  const Record& r = Current();
  if (r.Details == 0) return {};
  const DetailsRef& d = FDetailsTable[r.Details - 1];
  return {d.Data, d.Len};
}

void TZentrailMessageSet::GetTimeStamp(TZentrailTimeStamp& out) const {
  const Record& r = Current();
  out.Time = r.Time;
  out.Date = r.Date;
}

TZentrailTimeStamp TZentrailMessageSet::GetTimeStamp() const {
  TZentrailTimeStamp t;
  GetTimeStamp(t);
  return t;
}

void TZentrailMessageSet::GetCurrentMessage(TZentrailMessage& out) const {
  out.MsgType = GetMsgType();
  out.MsgContent = GetMsgContent();
  out.RouteKey.clear();
  out.MsgText.assign(GetMsgText());
  out.Details.assign(GetDetails());
  GetTimeStamp(out.TimeStamp);
  out.ProcessID = GetProcessID();
  out.ThreadName.assign(GetThreadName());
  out.AppName.assign(GetAppName());
  out.ComputerName.assign(GetComputerName());
  out.TypeName.assign(GetTypeName());
  out.Category.assign(GetCategory());
  out.CategoryColor = GetCategoryColor();
  out.CategoryFontColor = GetCategoryFontColor();
}

void TZentrailMessageSet::GetMessage(int32_t recNo, TZentrailMessage& out) const {
  // Reads through a temporary cursor so that the shared one stays where it is.
  auto* self = const_cast<TZentrailMessageSet*>(this);
  const int32_t savedRecNo = RecNo;
  const Record* savedCurrent = FCurrent;
  self->GotoRec(recNo);
  GetCurrentMessage(out);
  self->RecNo = savedRecNo;
  self->FCurrent = savedCurrent;
}

// Numeric setters outside Append and Edit write the posted current record in place: a view rewrites
// an arriving type 43 to 10 this way, and the change must last.
#define ZT_NUMERIC_SETTER(name, field, recordField)                      \
  void TZentrailMessageSet::name(int32_t value) {                        \
    if (FState == State::Inserting) {                                     \
      FStaging->Message.field = value;                                    \
    } else {                                                              \
      if (!FCurrent) throw EZentrailStoreError(#name ": no current record"); \
      MutableRecord(RecNo).recordField = value;                           \
    }                                                                     \
  }
ZT_NUMERIC_SETTER(SetMsgType, MsgType, MsgType)
ZT_NUMERIC_SETTER(SetMsgContent, MsgContent, MsgContent)
ZT_NUMERIC_SETTER(SetDate, TimeStamp.Date, Date)
ZT_NUMERIC_SETTER(SetTime, TimeStamp.Time, Time)
#undef ZT_NUMERIC_SETTER

void TZentrailMessageSet::SetID(int32_t value) {
  if (FState == State::Inserting) {
    FStaging->ID = value;
  } else {
    if (!FCurrent) throw EZentrailStoreError("SetID: no current record");
    MutableRecord(RecNo).ID = value;
  }
}

void TZentrailMessageSet::SetMsgText(std::string_view value) {
  if (FState == State::Browse) throw EZentrailStoreError("SetMsgText: not in edit or insert mode");
  FStaging->Message.MsgText.assign(value);
}

#define ZT_STAGED_SETTER(name, type, field)                     \
  void TZentrailMessageSet::name(type value) {                  \
    CheckAppending(#name);                                      \
    FStaging->Message.field = value;                            \
  }
ZT_STAGED_SETTER(SetDetails, std::string_view, Details)
ZT_STAGED_SETTER(SetProcessID, uint32_t, ProcessID)
ZT_STAGED_SETTER(SetThreadName, std::string_view, ThreadName)
ZT_STAGED_SETTER(SetComputerName, std::string_view, ComputerName)
ZT_STAGED_SETTER(SetAppName, std::string_view, AppName)
ZT_STAGED_SETTER(SetTypeName, std::string_view, TypeName)
ZT_STAGED_SETTER(SetCategory, std::string_view, Category)
ZT_STAGED_SETTER(SetCategoryColor, int32_t, CategoryColor)
ZT_STAGED_SETTER(SetCategoryFontColor, int32_t, CategoryFontColor)
#undef ZT_STAGED_SETTER

std::size_t TZentrailMessageSet::MemoryUsed() const {
  return FBlocks.size() * sizeof(Record) * kBlockSize + FTexts->Bytes() + FDetails->Bytes() +
         FDetailsTable.capacity() * sizeof(DetailsRef) + FIdentities->Bytes();
}

TZentrailMessageSet& GetMessageSet() {
  static TZentrailMessageSet instance;
  return instance;
}

}  // namespace zentrail
