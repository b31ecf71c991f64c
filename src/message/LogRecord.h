#pragma once
// Log records: a log file is a plain sequence of records, each a 32-bit little-endian tag followed
// by its body. The same decoder serves files, memory buffers and socket frames through a byte source.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "TransportPacket.h"
#include "ZentrailMessage.h"

namespace zentrail {

inline constexpr std::size_t ztLegacyHeaderSize = 201;

class IZentrailByteSource {
 public:
  virtual ~IZentrailByteSource() = default;
  // Reads up to n bytes into dst; fewer than n only at the end of the data (or on a read error).
  virtual std::size_t Read(void* dst, std::size_t n) = 0;
  // Exactly n bytes as one view: into the source's own buffer when it can, else into scratch.
  // Returns fewer than n bytes only at the end of the data. The view lasts until the next call.
  virtual std::string_view ReadView(std::size_t n, std::string& scratch);
  // Bytes consumed so far.
  virtual uint64_t Position() const = 0;
  // False when the source knows that fewer than n bytes are left: a record that claims more is
  // truncated, and is refused before anything is allocated for it.
  virtual bool CanRead(uint64_t n) const {
    (void)n;
    return true;
  }
};

class TZentrailBufferSource final : public IZentrailByteSource {
 public:
  explicit TZentrailBufferSource(std::string_view data) : FData(data) {}
  std::size_t Read(void* dst, std::size_t n) override;
  std::string_view ReadView(std::size_t n, std::string& scratch) override;
  uint64_t Position() const override { return FPos; }
  bool CanRead(uint64_t n) const override { return n <= FData.size() - FPos; }

 private:
  std::string_view FData;
  std::size_t FPos = 0;
};

// Reads a file through a buffer of fixed size, so memory does not grow with the file. The file is
// opened read-only and shared, since a logging client may still be writing to it.
class TZentrailFileSource final : public IZentrailByteSource {
 public:
  TZentrailFileSource() = default;
  ~TZentrailFileSource() override;
  TZentrailFileSource(const TZentrailFileSource&) = delete;
  TZentrailFileSource& operator=(const TZentrailFileSource&) = delete;

  // Returns false and fills error with the system's reason when the file cannot be opened.
  bool Open(const std::string& path, std::string& error);
  void Close();
  uint64_t Size() const;  // size at the time of the call
  std::size_t Read(void* dst, std::size_t n) override;
  std::string_view ReadView(std::size_t n, std::string& scratch) override;
  uint64_t Position() const override { return FConsumed; }
  bool CanRead(uint64_t n) const override;

 private:
  bool Fill();
  int FFd = -1;
  std::string FBuf;
  std::size_t FBegin = 0, FEnd = 0;
  uint64_t FConsumed = 0;
  mutable uint64_t FKnownSize = 0;
};

// Reads the body of one record after its tag into message (which the caller cleared). Returns
// false on an unsupported tag or an invalid record: a short read, a length below 1, a legacy header
// outside the date and time bounds, a packet that does not parse or a stream that does not inflate.
bool ReadLogRecord(uint32_t tag, IZentrailByteSource& source, TZentrailMessage& message);

enum class TZentrailRecordResult {
  Ok,           // a record was decoded
  Unsupported,  // the four bytes read were not a known tag; reading may go on after them
  Invalid,      // a known tag whose record is bad; see Resumable()
  End,          // no bytes left
};

// The record loop shared by the viewer's log loading, the log tool and the fuzzers.
class TZentrailLogReader {
 public:
  explicit TZentrailLogReader(IZentrailByteSource& source) : FSource(source) {}

  // Reads the next record. On Ok, view refers to buffers of this reader and of view itself and is
  // valid until the next call.
  TZentrailRecordResult Next(TZentrailPacketView& view);
  // Convenience: the same, copied into a message (cleared first).
  TZentrailRecordResult Next(TZentrailMessage& message);

  uint64_t RecordOffset() const { return FRecordOffset; }  // where the last tag began
  uint32_t Tag() const { return FTag; }
  const std::string& Error() const { return FError; }
  // After Invalid: true when the record's full length was consumed, so the next record can be read.
  bool Resumable() const { return FResumable; }
  // The packet text of the last Ok record (inflated for compressed ones); empty for legacy records.
  std::string_view Packet() const { return FPacket; }

 private:
  TZentrailRecordResult Fail(std::string error, bool resumable);
  TZentrailRecordResult ReadLegacy(TZentrailPacketView& view);
  IZentrailByteSource& FSource;
  std::string FScratch, FInflated, FLegacy;
  std::string_view FPacket;
  uint64_t FRecordOffset = 0;
  uint32_t FTag = 0;
  std::string FError;
  bool FResumable = false;
};

// Appends one $7F000004 record (tag, length, packet) for the message.
void AppendLogRecord(const TZentrailMessage& message, std::string& out);
// The same from a packet that is already encoded.
void AppendLogRecordFromPacket(std::string_view packet, std::string& out);

void PutLE32(std::string& out, uint32_t value);
uint32_t GetLE32(const void* bytes);

}  // namespace zentrail
