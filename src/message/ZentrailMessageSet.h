#pragma once
// The one store of every message of a run. Views keep record numbers only and read through the
// shared cursor: go to the record, read at once, assume nothing afterwards.
//
// Records are fixed-size entries in blocks that never move; texts live in append-only arenas, and
// the identity fields (process, thread, application, computer, type name, category and its colours)
// are interned, because a run has few distinct senders. Details lie in an arena of their own so
// that reading a short field never touches them. GotoRec and every getter cost constant time, and
// the string views that getters return stay valid until Close.

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "TransportPacket.h"
#include "ZentrailMessage.h"

namespace zentrail {

class EZentrailStoreError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

class TZentrailMessageSet {
 public:
  TZentrailMessageSet();
  ~TZentrailMessageSet();
  TZentrailMessageSet(const TZentrailMessageSet&) = delete;
  TZentrailMessageSet& operator=(const TZentrailMessageSet&) = delete;

  // Close then Open empties the store; numbering restarts at 1.
  void Open();
  void Close();
  bool Active() const { return FActive; }

  void Append();  // begin a new record at the end
  void Edit();    // begin to change the current record (only MsgText changes this way)
  void Post();    // commit; the cursor stands on the record afterwards
  void Cancel();  // drop a record begun by Append or Edit

  void First();
  void Next();
  void Last();
  void GotoRec(int32_t recNo);
  void SetRecNo(int32_t recNo) { GotoRec(recNo); }
  int32_t GetRecordCount() const { return FCount; }

  // Number of the record under the cursor; 0 when there is none. Read directly, never written.
  int32_t RecNo = 0;

  void GetCurrentMessage(TZentrailMessage& out) const;
  void GetMessage(int32_t recNo, TZentrailMessage& out) const;  // leaves the cursor alone

  // Values of the current record.
  int32_t GetID() const;
  int32_t GetMsgType() const;
  int32_t GetMsgContent() const;
  uint32_t GetProcessID() const;
  int32_t GetTimeBias() const { return FTimeBias; }
  int32_t GetCategoryColor() const;
  int32_t GetCategoryFontColor() const;
  std::string_view GetMsgText() const;
  std::string_view GetDetails() const;
  std::string_view GetAppName() const;
  std::string_view GetCategory() const;
  std::string_view GetComputerName() const;
  std::string_view GetThreadName() const;
  std::string_view GetTypeName() const;
  void GetTimeStamp(TZentrailTimeStamp& out) const;
  TZentrailTimeStamp GetTimeStamp() const;

  // Setters write the record begun by Append (SetMsgText also between Edit and Post). SetMsgType
  // and SetMsgContent outside Append and Edit write the posted current record at once.
  void SetID(int32_t value);
  void SetMsgType(int32_t value);
  void SetMsgContent(int32_t value);
  void SetMsgText(std::string_view value);
  void SetDetails(std::string_view value);
  void SetDate(int32_t value);
  void SetTime(int32_t value);
  void SetProcessID(uint32_t value);
  void SetThreadName(std::string_view value);
  void SetComputerName(std::string_view value);
  void SetAppName(std::string_view value);
  void SetTypeName(std::string_view value);
  void SetCategory(std::string_view value);
  void SetCategoryColor(int32_t value);
  void SetCategoryFontColor(int32_t value);

  // Append, fill and Post in one call: the intake's and the log loader's short road.
  void AppendMessage(const TZentrailMessage& message, int32_t id);
  void AppendMessage(const TZentrailPacketView& message, int32_t id);

  // The local zone's bias in minutes (UTC = local + bias), read when the store is made.
  void SetTimeBias(int32_t minutes) { FTimeBias = minutes; }

  // The sender combination of the current record (process, thread, application, computer, type
  // name, category and its colours), numbered from 0 in order of first appearance; UINT32_MAX
  // without a current record. A run has few senders, so what a view or the organizer works out
  // about one holds for all of its messages and is kept by this number. Equal texts of different
  // senders share one copy, so their addresses compare equal too.
  uint32_t GetIdentity() const;
  uint32_t IdentityCount() const;
  // Changes whenever the store is emptied, which numbers records and senders anew.
  uint64_t Generation() const { return FGeneration; }

  // Bytes the store holds for its records, texts and identities (for the benchmarks).
  std::size_t MemoryUsed() const;
  static std::size_t RecordSize();

 private:
  struct Record;
  struct Identity;
  struct Staging;
  struct DetailsRef {
    const char* Data;
    uint32_t Len;
  };
  class Arena;
  class IdentityTable;

  const Record& Current() const;
  Record& MutableRecord(int32_t recNo);
  void CheckInsert(const char* what) const;
  void CheckAppending(const char* what) const;
  void Reset();
  Record& NewRecord();

  bool FActive = true;
  int32_t FCount = 0;
  int32_t FTimeBias = 0;
  uint64_t FGeneration = 0;
  const Record* FCurrent = nullptr;
  enum class State { Browse, Inserting, Editing } FState = State::Browse;

  std::vector<std::unique_ptr<Record[]>> FBlocks;
  std::unique_ptr<Arena> FTexts;
  std::unique_ptr<Arena> FDetails;
  std::unique_ptr<IdentityTable> FIdentities;
  std::unique_ptr<Staging> FStaging;
  std::vector<DetailsRef> FDetailsTable;
};

// The singleton store of the process, shared by the viewer and its plug-ins. Open before the first
// message arrives.
TZentrailMessageSet& GetMessageSet();
inline TZentrailMessageSet& MessageSet = GetMessageSet();

}  // namespace zentrail
