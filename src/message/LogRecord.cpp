#include "LogRecord.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Utf8.h"
#include "Zlib.h"

namespace zentrail {

void PutLE32(std::string& out, uint32_t value) {
  const char bytes[4] = {static_cast<char>(value & 0xFF), static_cast<char>((value >> 8) & 0xFF),
                         static_cast<char>((value >> 16) & 0xFF),
                         static_cast<char>((value >> 24) & 0xFF)};
  out.append(bytes, 4);
}

uint32_t GetLE32(const void* bytes) {
  const auto* b = static_cast<const unsigned char*>(bytes);
  return static_cast<uint32_t>(b[0]) | (static_cast<uint32_t>(b[1]) << 8) |
         (static_cast<uint32_t>(b[2]) << 16) | (static_cast<uint32_t>(b[3]) << 24);
}

// ---------------------------------------------------------------------------------------------
// Byte sources

std::string_view IZentrailByteSource::ReadView(std::size_t n, std::string& scratch) {
  scratch.resize(n);
  const std::size_t got = Read(scratch.data(), n);
  scratch.resize(got);
  return scratch;
}

std::size_t TZentrailBufferSource::Read(void* dst, std::size_t n) {
  const std::size_t take = std::min(n, FData.size() - FPos);
  if (take) std::memcpy(dst, FData.data() + FPos, take);
  FPos += take;
  return take;
}

std::string_view TZentrailBufferSource::ReadView(std::size_t n, std::string&) {
  const std::size_t take = std::min(n, FData.size() - FPos);
  std::string_view view = FData.substr(FPos, take);
  FPos += take;
  return view;
}

namespace {
constexpr std::size_t kFileBuffer = 1u << 20;
}

TZentrailFileSource::~TZentrailFileSource() { Close(); }

bool TZentrailFileSource::Open(const std::string& path, std::string& error) {
  Close();
  FFd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (FFd < 0) {
    error = path + ": " + std::strerror(errno);
    return false;
  }
  struct stat st{};
  if (::fstat(FFd, &st) == 0 && S_ISDIR(st.st_mode)) {
    error = path + ": is a folder";
    Close();
    return false;
  }
  FBuf.resize(kFileBuffer);
  FBegin = FEnd = 0;
  FConsumed = 0;
  FKnownSize = Size();
  return true;
}

void TZentrailFileSource::Close() {
  if (FFd >= 0) ::close(FFd);
  FFd = -1;
  FBegin = FEnd = 0;
}

uint64_t TZentrailFileSource::Size() const {
  struct stat st{};
  if (FFd < 0 || ::fstat(FFd, &st) != 0) return 0;
  return static_cast<uint64_t>(st.st_size);
}

bool TZentrailFileSource::CanRead(uint64_t n) const {
  // A logging client may still be appending, so a size that looks too small is read afresh.
  if (FKnownSize >= FConsumed && FKnownSize - FConsumed >= n) return true;
  FKnownSize = Size();
  return FKnownSize >= FConsumed && FKnownSize - FConsumed >= n;
}

bool TZentrailFileSource::Fill() {
  if (FFd < 0) return false;
  if (FBegin > 0 && FBegin == FEnd) FBegin = FEnd = 0;
  if (FEnd == FBuf.size()) {
    if (FBegin == 0) return false;  // full already
    std::memmove(FBuf.data(), FBuf.data() + FBegin, FEnd - FBegin);
    FEnd -= FBegin;
    FBegin = 0;
  }
  for (;;) {
    const ssize_t got = ::read(FFd, FBuf.data() + FEnd, FBuf.size() - FEnd);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    FEnd += static_cast<std::size_t>(got);
    return true;
  }
}

std::size_t TZentrailFileSource::Read(void* dst, std::size_t n) {
  auto* out = static_cast<char*>(dst);
  std::size_t done = 0;
  while (done < n) {
    if (FBegin == FEnd) {
      // Large reads go straight to the caller's memory.
      if (n - done >= FBuf.size() && FFd >= 0) {
        const ssize_t got = ::read(FFd, out + done, n - done);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        done += static_cast<std::size_t>(got);
        continue;
      }
      if (!Fill()) break;
    }
    const std::size_t take = std::min(n - done, FEnd - FBegin);
    std::memcpy(out + done, FBuf.data() + FBegin, take);
    FBegin += take;
    done += take;
  }
  FConsumed += done;
  return done;
}

std::string_view TZentrailFileSource::ReadView(std::size_t n, std::string& scratch) {
  if (n <= FBuf.size()) {
    while (FEnd - FBegin < n) {
      if (FEnd == FBuf.size() && FBegin > 0) {
        std::memmove(FBuf.data(), FBuf.data() + FBegin, FEnd - FBegin);
        FEnd -= FBegin;
        FBegin = 0;
      }
      if (!Fill()) break;
    }
    const std::size_t take = std::min(n, FEnd - FBegin);
    std::string_view view(FBuf.data() + FBegin, take);
    FBegin += take;
    FConsumed += take;
    return view;
  }
  return IZentrailByteSource::ReadView(n, scratch);
}

// ---------------------------------------------------------------------------------------------
// Records

namespace {

inline std::string_view FixedText(const char* field, std::size_t width, std::string& repair) {
  const void* nul = std::memchr(field, 0, width);
  const std::size_t len = nul ? static_cast<std::size_t>(static_cast<const char*>(nul) - field)
                              : width;
  std::string_view text(field, len);
  if (IsValidUtf8(text)) return text;
  repair.clear();
  AppendSanitizedUtf8(repair, text);
  return repair;
}

inline int32_t GetLE32Signed(const char* p) { return static_cast<int32_t>(GetLE32(p)); }

}  // namespace

TZentrailRecordResult TZentrailLogReader::Fail(std::string error, bool resumable) {
  FError = std::move(error);
  FResumable = resumable;
  return TZentrailRecordResult::Invalid;
}

TZentrailRecordResult TZentrailLogReader::Next(TZentrailPacketView& view) {
  FError.clear();
  FResumable = false;
  FPacket = {};
  FRecordOffset = FSource.Position();
  char tagBytes[4];
  const std::size_t got = FSource.Read(tagBytes, 4);
  if (got == 0) return TZentrailRecordResult::End;
  if (got < 4) {
    FTag = 0;
    return Fail("the file ends inside a record tag", false);
  }
  FTag = GetLE32(tagBytes);
  switch (FTag) {
    case ztLegacyTag0:
    case ztLegacyTag1:
      return ReadLegacy(view);
    case ztPacketTag:
    case ztCompressedPacketTag: {
      char lenBytes[4];
      if (FSource.Read(lenBytes, 4) < 4) return Fail("the file ends inside a record length", false);
      const int32_t len = GetLE32Signed(lenBytes);
      if (len < 1) return Fail("record length " + std::to_string(len) + " is below 1", false);
      if (!FSource.CanRead(static_cast<uint64_t>(len)))
        return Fail("the file ends inside a record of " + std::to_string(len) + " bytes", false);
      std::string_view body = FSource.ReadView(static_cast<std::size_t>(len), FScratch);
      if (body.size() < static_cast<std::size_t>(len))
        return Fail("the file ends inside a record of " + std::to_string(len) + " bytes", false);
      if (FTag == ztCompressedPacketTag) {
        try {
          ZlibInflateInto(body, FInflated);
        } catch (const EZentrailZlibError& e) {
          return Fail(e.what(), true);
        }
        body = FInflated;
      }
      try {
        ParseTransportPacket(body, view);
      } catch (const EZentrailPacketError& e) {
        return Fail(e.what(), true);
      }
      FPacket = body;
      return TZentrailRecordResult::Ok;
    }
    default:
      return TZentrailRecordResult::Unsupported;
  }
}

TZentrailRecordResult TZentrailLogReader::ReadLegacy(TZentrailPacketView& view) {
  FLegacy.resize(ztLegacyHeaderSize);
  if (FSource.Read(FLegacy.data(), ztLegacyHeaderSize) < ztLegacyHeaderSize)
    return Fail("the file ends inside a record header", false);
  const char* h = FLegacy.data();
  const int32_t type = GetLE32Signed(h + 0);
  const int32_t time = GetLE32Signed(h + 4);
  const int32_t date = GetLE32Signed(h + 8);
  const int32_t textLen = GetLE32Signed(h + 16);
  const int32_t detailsLen = GetLE32Signed(h + 20);
  if (!(date > 730000 && date < 766500)) return Fail("date out of range", false);
  if (!(time >= 0 && time < 86400001)) return Fail("time out of range", false);
  if (textLen < 0 || detailsLen < 0) return Fail("negative text length", false);
  const std::size_t bodyLen =
      static_cast<std::size_t>(textLen) + static_cast<std::size_t>(detailsLen) + 1;
  if (!FSource.CanRead(bodyLen)) return Fail("the file ends inside a record", false);
  std::string_view body = FSource.ReadView(bodyLen, FScratch);
  if (body.size() < bodyLen) return Fail("the file ends inside a record", false);
  // The header's text fields must outlive the next ReadView, so they stay in FLegacy.
  view.MsgType = type;
  // A legacy record carries no content code; what the object had stays, and that is plain text.
  view.MsgContent = ztmText;
  view.RouteKey = {};
  view.TimeStamp = {time, date};
  view.ProcessID = GetLE32(h + 24);
  view.ThreadName = FixedText(h + 28, 26, view.Repaired[3]);
  view.ComputerName = FixedText(h + 54, 16, view.Repaired[5]);
  view.AppName = FixedText(h + 70, 41, view.Repaired[4]);
  view.Category = FixedText(h + 111, 41, view.Repaired[7]);
  view.CategoryColor = GetLE32Signed(h + 152);
  view.CategoryFontColor = GetLE32Signed(h + 156);
  view.TypeName = FixedText(h + 160, 41, view.Repaired[6]);
  std::string_view text = body.substr(0, static_cast<std::size_t>(textLen));
  std::string_view details = body.substr(static_cast<std::size_t>(textLen),
                                         static_cast<std::size_t>(detailsLen));
  view.MsgText = IsValidUtf8(text) ? text : (view.Repaired[1] = SanitizedUtf8(text));
  view.Details = IsValidUtf8(details) ? details : (view.Repaired[2] = SanitizedUtf8(details));
  return TZentrailRecordResult::Ok;
}

TZentrailRecordResult TZentrailLogReader::Next(TZentrailMessage& message) {
  TZentrailPacketView view;
  const TZentrailRecordResult r = Next(view);
  if (r == TZentrailRecordResult::Ok) {
    const int32_t content = message.MsgContent;
    message.Clear();
    view.CopyTo(message);
    if (FTag == ztLegacyTag0 || FTag == ztLegacyTag1) message.MsgContent = content;
  }
  return r;
}

bool ReadLogRecord(uint32_t tag, IZentrailByteSource& source, TZentrailMessage& message) {
  // Hand the tag back to the reader by prefixing it: the reader owns the record rules.
  struct Prefixed final : IZentrailByteSource {
    Prefixed(uint32_t t, IZentrailByteSource& s) : inner(s) {
      tagBytes.clear();
      PutLE32(tagBytes, t);
    }
    std::size_t Read(void* dst, std::size_t n) override {
      std::size_t done = 0;
      auto* out = static_cast<char*>(dst);
      while (done < n && pos < 4) out[done++] = tagBytes[pos++];
      if (done < n) done += inner.Read(out + done, n - done);
      return done;
    }
    std::string_view ReadView(std::size_t n, std::string& scratch) override {
      if (pos >= 4) return inner.ReadView(n, scratch);
      return IZentrailByteSource::ReadView(n, scratch);
    }
    uint64_t Position() const override { return inner.Position() + pos; }
    bool CanRead(uint64_t n) const override {
      const uint64_t buffered = 4 - pos;
      return n <= buffered || inner.CanRead(n - buffered);
    }
    IZentrailByteSource& inner;
    std::string tagBytes;
    std::size_t pos = 0;
  } prefixed(tag, source);
  TZentrailLogReader reader(prefixed);
  TZentrailPacketView view;
  if (reader.Next(view) != TZentrailRecordResult::Ok) return false;
  const int32_t content = message.MsgContent;
  view.CopyTo(message);
  if (tag == ztLegacyTag0 || tag == ztLegacyTag1) message.MsgContent = content;
  return true;
}

void AppendLogRecordFromPacket(std::string_view packet, std::string& out) {
  PutLE32(out, ztPacketTag);
  PutLE32(out, static_cast<uint32_t>(packet.size()));
  out.append(packet);
}

void AppendLogRecord(const TZentrailMessage& message, std::string& out) {
  const std::size_t start = out.size();
  PutLE32(out, ztPacketTag);
  PutLE32(out, 0);
  message.AppendTransportPacket(out);
  const uint32_t len = static_cast<uint32_t>(out.size() - start - 8);
  for (int i = 0; i < 4; ++i) out[start + 4 + i] = static_cast<char>((len >> (8 * i)) & 0xFF);
}

}  // namespace zentrail
