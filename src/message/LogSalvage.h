#pragma once
// Reading what a damaged log still holds.
//
// The plain record loop (TZentrailLogReader) stops where a record cannot be decoded, as the viewer's
// loading must. A log damaged by a crash, a full disk or a bad copy usually holds many intact
// records after that point. The salvager returns the same records as the plain loop on a sound
// file; after a damaged stretch it searches forward for the next position where a record decodes
// completely and goes on from there. Every intact record comes back once, in file order; a record
// is returned only if it decodes completely, and every byte of the file lies in exactly one returned
// record or one reported stretch.
//
// How it stays trustworthy and fast:
// - It works on the whole file as one byte span (TZentrailMappedFile maps it), because
//   resynchronising means looking ahead and coming back, which a forward-only stream cannot do.
// - A search position must first pass checks that cost a few bytes: a known tag (found by memchr
//   on its 0x7F byte), a length that fits the file, then fields that frame a packet, a zlib header or
//   a legacy header within bounds. Only then is anything decoded, so random bytes and runs of zeros
//   are crossed at memory speed.
// - A record found by searching must be exact: its packet fills its length (for a compressed record
//   the zlib stream fills it and the packet fills what it inflates to). Garbage practically never
//   passes that, so no record is made up out of damage.
// - A legacy record carries no check of its own, so it is taken only where its lengths lead to the
//   end of the file or to the start of another plausible record. The cost: an intact legacy record
//   directly before damage is skipped with the damage.
// - A record whose length runs past the end of its packet over the start of a record that
//   decodes has a damaged length: it is reported and skipped, and reading goes on at that record,
//   so a neighbour's wrong length never swallows intact records. Without such a record the extra
//   bytes are taken as a later version's extension, as the plain loop takes them.
// - Compressed records are the only ones that can fail after much work (a stream that breaks near
//   its end). The total work spent on compressed records that fail is bounded by a constant plus a
//   multiple of the bytes read so far; past that bound a compressed record is given up unchecked.
//   Only input built to be quadratic reaches the bound, and the search then stays linear.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "TransportPacket.h"
#include "ZentrailMessage.h"

namespace zentrail {

// The length of the packet as its fifteen fields frame it: the offset just past the fifteenth field,
// or 0 when ParseTransportPacket would refuse the bytes (why goes to error, when given, in the
// parser's words). Costs a few bytes per field, whatever the length of the texts.
std::size_t TransportPacketExtent(std::string_view packet, std::string* error = nullptr);

enum class TZentrailSalvageResult {
  Record,   // a record was decoded; Start() and End() give its bytes
  Damaged,  // a damaged stretch was skipped; Start(), End() and Reason() describe it
  End,      // the whole span has been read
};

class TZentrailLogSalvager {
 public:
  // data must stay valid and unchanged while the salvager is used.
  explicit TZentrailLogSalvager(std::string_view data);
  ~TZentrailLogSalvager();
  TZentrailLogSalvager(const TZentrailLogSalvager&) = delete;
  TZentrailLogSalvager& operator=(const TZentrailLogSalvager&) = delete;

  // The next record or damaged stretch. On Record, view refers to the data and to buffers of the
  // salvager and is valid until the next call.
  TZentrailSalvageResult Next(TZentrailPacketView& view);
  // Convenience: the same, copied into a message (cleared first). A legacy record leaves
  // MsgContent as the message had it, as the plain loop does.
  TZentrailSalvageResult Next(TZentrailMessage& message);

  uint64_t Start() const { return FStart; }  // first byte of the last record or stretch
  uint64_t End() const { return FEnd; }      // one past its last byte: where reading went on
  uint32_t Tag() const { return FTag; }      // tag of the last record
  // Why the first byte of the last stretch could not start a record.
  const std::string& Reason() const { return FReason; }

  uint64_t Records() const { return FRecords; }
  uint64_t Stretches() const { return FStretches; }
  uint64_t SkippedBytes() const { return FSkipped; }
  // Bytes examined so far, counting failed decompression in full but not what intact compressed
  // records inflate to. Grows linearly with the size of the data; the fuzzer holds it to that.
  uint64_t Effort() const { return FEffort; }

 private:
  struct Impl;
  enum class Mode { Aligned, Search };
  bool Decode(uint64_t at, Mode mode, TZentrailPacketView* view, uint64_t& end,
              uint64_t& contentEnd, std::string* reason);
  bool DecodeCompressed(uint64_t at, uint32_t len, Mode mode, std::size_t& consumed,
                        std::string_view& packet, std::string* reason);
  bool LegacyBounds(uint64_t at, uint64_t& end, std::string* reason, bool chain) const;
  bool Plausible(uint64_t at) const;
  uint64_t Search(uint64_t from, uint64_t limit);
  TZentrailSalvageResult Damage(uint64_t end, std::string reason);

  std::unique_ptr<Impl> F;
  std::string_view FData;
  uint64_t FPos = 0;
  uint64_t FStart = 0, FEnd = 0;
  uint32_t FTag = 0;
  std::string FReason;
  uint64_t FRecords = 0, FStretches = 0, FSkipped = 0;
  uint64_t FEffort = 0, FWasted = 0, FInflateWork = 0;
};

// A file as one read-only byte span: mapped when it is a regular file, else read into memory (a
// pipe, a device). Pages of a mapping are read on demand and dropped under memory pressure, so a
// large log costs address space rather than memory. A file cut shorter by another process while it
// is mapped makes reads past the new end fault; logs are only ever appended to.
class TZentrailMappedFile {
 public:
  TZentrailMappedFile() = default;
  ~TZentrailMappedFile();
  TZentrailMappedFile(const TZentrailMappedFile&) = delete;
  TZentrailMappedFile& operator=(const TZentrailMappedFile&) = delete;

  // Returns false and fills error with the path and the system's reason when it cannot be read.
  bool Open(const std::string& path, std::string& error);
  void Close();
  std::string_view Data() const { return FData; }

 private:
  void* FMap = nullptr;
  std::size_t FMapSize = 0;
  std::string FCopy;
  std::string_view FData;
};

}  // namespace zentrail
