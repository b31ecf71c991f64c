#include "LogSalvage.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <limits>

#include "LogRecord.h"
#include "Zlib.h"

namespace zentrail {

namespace {

constexpr uint64_t kNone = std::numeric_limits<uint64_t>::max();

// Work that failed compressed records may cost: enough for a few of the largest legitimate records
// at the start, then growing with every byte read.
constexpr uint64_t kWasteBase = 160u << 20;
constexpr uint64_t kWastePerByte = 16;

// Input and output are handed to zlib in slices of this size, so the work bound is checked often.
constexpr std::size_t kInflateSlice = 256u << 10;

// What a candidate position costs to look at before any decoding.
constexpr uint64_t kProbeCost = 16;

enum class FieldKind { Text, Signed, Unsigned, Colour };

struct FieldRule {
  const char* Name;
  FieldKind Kind;
};

// The fields and the words of ParseTransportPacket, so that a refusal reads the same from both.
constexpr FieldRule kFields[15] = {
    {"MsgType", FieldKind::Signed},       {"MsgContent", FieldKind::Signed},
    {"RouteKey", FieldKind::Text},        {"MsgText", FieldKind::Text},
    {"Details", FieldKind::Text},         {"Time", FieldKind::Signed},
    {"Date", FieldKind::Signed},          {"ProcessID", FieldKind::Unsigned},
    {"ThreadName", FieldKind::Text},      {"AppName", FieldKind::Text},
    {"ComputerName", FieldKind::Text},    {"TypeName", FieldKind::Text},
    {"Category", FieldKind::Text},        {"CategoryColor", FieldKind::Colour},
    {"CategoryFontColor", FieldKind::Colour},
};

bool ParseInt(std::string_view text, int64_t& value) {
  if (text.empty() || text.size() > 12) return false;
  const char* last = text.data() + text.size();
  auto [ptr, ec] = std::from_chars(text.data(), last, value);
  return ec == std::errc() && ptr == last;
}

bool NumberFits(FieldKind kind, std::string_view text, const char*& what) {
  int64_t v = 0;
  const bool parsed = ParseInt(text, v);
  switch (kind) {
    case FieldKind::Signed:
      what = "is not a 32-bit number";
      return parsed && v >= INT32_MIN && v <= INT32_MAX;
    case FieldKind::Unsigned:
      what = "is not an unsigned 32-bit number";
      return parsed && v >= 0 && v <= UINT32_MAX;
    case FieldKind::Colour:
      what = "is not a 32-bit colour";
      return parsed && v >= INT32_MIN && v <= UINT32_MAX;
    case FieldKind::Text:
      break;
  }
  return true;
}

bool ZlibHeaderOk(std::string_view b) {
  if (b.size() < 2) return false;
  const unsigned c0 = static_cast<unsigned char>(b[0]);
  const unsigned c1 = static_cast<unsigned char>(b[1]);
  // Deflate with a window zlib accepts, no preset dictionary, and the header's own check.
  return (c0 & 0x0F) == 8 && (c0 >> 4) <= 7 && ((c0 << 8) | c1) % 31 == 0 && !(c1 & 0x20);
}

std::string TagText(uint32_t tag) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "$%X", tag);
  return buf;
}

// The whole span as a byte source that can be positioned, so the plain loop decodes legacy records.
class TSpanSource final : public IZentrailByteSource {
 public:
  explicit TSpanSource(std::string_view data) : FData(data) {}
  void Seek(std::size_t pos) { FPos = pos; }
  std::size_t Read(void* dst, std::size_t n) override {
    const std::size_t take = std::min(n, FData.size() - FPos);
    if (take) std::memcpy(dst, FData.data() + FPos, take);
    FPos += take;
    return take;
  }
  std::string_view ReadView(std::size_t n, std::string&) override {
    const std::size_t take = std::min(n, FData.size() - FPos);
    std::string_view view = FData.substr(FPos, take);
    FPos += take;
    return view;
  }
  uint64_t Position() const override { return FPos; }
  bool CanRead(uint64_t n) const override { return n <= FData.size() - FPos; }

 private:
  std::string_view FData;
  std::size_t FPos = 0;
};

}  // namespace

std::size_t TransportPacketExtent(std::string_view p, std::string* error) {
  auto fail = [&](int index, const char* what) -> std::size_t {
    if (error) *error = std::string("transport packet: field ") + kFields[index].Name + " " + what;
    return 0;
  };
  if (p.size() < ztPacketMagic.size() || p.substr(0, ztPacketMagic.size()) != ztPacketMagic) {
    if (error) *error = "transport packet: does not start with \"ZTP1\"";
    return 0;
  }
  std::size_t pos = ztPacketMagic.size();
  for (int i = 0; i < 15; ++i) {
    std::size_t len = 0, digits = 0;
    while (pos < p.size() && p[pos] >= '0' && p[pos] <= '9') {
      if (++digits > 10) return fail(i, "has a length that is too long");
      len = len * 10 + static_cast<std::size_t>(p[pos] - '0');
      ++pos;
    }
    if (digits == 0) return fail(i, pos >= p.size() ? "is missing" : "does not start with a length");
    if (pos >= p.size() || p[pos] != ':') return fail(i, "has no ':' after its length");
    ++pos;
    if (len > p.size() - pos) return fail(i, "runs past the end of the packet");
    const char* what = nullptr;
    if (!NumberFits(kFields[i].Kind, p.substr(pos, len), what)) return fail(i, what);
    pos += len;
  }
  return pos;
}

// ---------------------------------------------------------------------------------------------

struct TZentrailLogSalvager::Impl {
  explicit Impl(std::string_view data) : Source(data), Reader(Source) {
    Ready = inflateInit(&Stream) == Z_OK;
  }
  ~Impl() {
    if (Ready) inflateEnd(&Stream);
  }

  // Inflates one zlib stream from the front of in into Out[slot]. Gives up once input read plus
  // output made exceed cap. consumed is what the stream used of in; work is what was spent.
  bool Inflate(std::string_view in, int slot, uint64_t cap, std::size_t& consumed, uint64_t& work,
               std::string* reason);

  TSpanSource Source;
  TZentrailLogReader Reader;
  z_stream Stream{};
  bool Ready = false;
  // One buffer for the record being returned and one for candidates of a search, which runs while
  // the caller may still hold a view of the first.
  std::string Out[2];
  std::size_t OutSize[2] = {0, 0};
};

bool TZentrailLogSalvager::Impl::Inflate(std::string_view in, int slot, uint64_t cap,
                                         std::size_t& consumed, uint64_t& work,
                                         std::string* reason) {
  auto fail = [&](std::string why) {
    if (reason) *reason = std::move(why);
    work = Stream.total_in + Stream.total_out;
    return false;
  };
  work = 0;
  if (!Ready) return fail("zlib: cannot start inflating");
  inflateReset(&Stream);
  std::string& out = Out[slot];
  std::size_t fed = 0;
  bool magicSeen = false;
  Stream.avail_in = 0;
  for (;;) {
    // No call may spend more than what is left of cap, so the bound holds to within one slice.
    const uint64_t spent = Stream.total_in + Stream.total_out;
    if (spent >= cap)
      return fail("compressed record given up: the damage before it has cost too much to check");
    const std::size_t slice = static_cast<std::size_t>(std::min<uint64_t>(kInflateSlice, cap - spent));
    if (Stream.avail_in == 0 && fed < in.size()) {
      const std::size_t n = std::min(slice, in.size() - fed);
      Stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in.data() + fed));
      Stream.avail_in = static_cast<uInt>(n);
      fed += n;
    }
    const std::size_t produced = Stream.total_out;
    if (produced == out.size()) {
      if (produced > ztMaxInflatedSize) return fail("zlib: the data inflates beyond the size limit");
      out.resize(std::min(std::max<std::size_t>(out.size() * 2, 4096), ztMaxInflatedSize + 1));
    }
    Stream.next_out = reinterpret_cast<Bytef*>(out.data() + produced);
    Stream.avail_out = static_cast<uInt>(std::min(slice, out.size() - produced));
    const int rc = inflate(&Stream, Z_NO_FLUSH);
    // A packet announces itself in its first bytes; most streams that are not ours stop here.
    if (!magicSeen && Stream.total_out >= ztPacketMagic.size()) {
      if (std::string_view(out.data(), ztPacketMagic.size()) != ztPacketMagic)
        return fail("transport packet: does not start with \"ZTP1\"");
      magicSeen = true;
    }
    if (rc == Z_STREAM_END) break;
    if (rc == Z_NEED_DICT) return fail("zlib: the stream needs a preset dictionary");
    if (rc == Z_BUF_ERROR) {
      if (Stream.avail_in == 0 && fed == in.size())
        return fail("zlib: the compressed data ends before the stream does");
    } else if (rc != Z_OK) {
      return fail(std::string("zlib: ") + (Stream.msg ? Stream.msg : "invalid data"));
    }
  }
  work = Stream.total_in + Stream.total_out;
  if (Stream.total_out > ztMaxInflatedSize)
    return fail("zlib: the data inflates beyond the size limit");
  if (!magicSeen) return fail("transport packet: does not start with \"ZTP1\"");
  consumed = Stream.total_in;
  OutSize[slot] = Stream.total_out;
  return true;
}

TZentrailLogSalvager::TZentrailLogSalvager(std::string_view data)
    : F(std::make_unique<Impl>(data)), FData(data) {}

TZentrailLogSalvager::~TZentrailLogSalvager() = default;

TZentrailSalvageResult TZentrailLogSalvager::Damage(uint64_t end, std::string reason) {
  FStart = FPos;
  FEnd = end;
  FReason = std::move(reason);
  ++FStretches;
  FSkipped += end - FPos;
  FPos = end;
  return TZentrailSalvageResult::Damaged;
}

TZentrailSalvageResult TZentrailLogSalvager::Next(TZentrailPacketView& view) {
  const uint64_t size = FData.size();
  if (FPos >= size) {
    FStart = FEnd = size;
    return TZentrailSalvageResult::End;
  }
  uint64_t end = 0, contentEnd = 0;
  std::string reason;
  FInflateWork = 0;
  if (Decode(FPos, Mode::Aligned, &view, end, contentEnd, &reason)) {
    if (contentEnd < end) {
      // A length made longer by damage leaves the packet whole and the next record right after
      // it, so the search begins where the packet ends: what the packet's texts hold stays text.
      const uint64_t inner = Search(contentEnd, end);
      if (inner != kNone) {
        FWasted += FInflateWork;  // decoded for nothing
        return Damage(inner, "record length " + std::to_string(end - FPos - 8) +
                                 " runs past its content of " +
                                 std::to_string(contentEnd - FPos - 8) +
                                 " bytes into a record at offset " + std::to_string(inner));
      }
    }
    FStart = FPos;
    FEnd = end;
    FTag = GetLE32(FData.data() + FPos);
    ++FRecords;
    FPos = end;
    return TZentrailSalvageResult::Record;
  }
  const uint64_t next = Search(FPos + 1, size);
  return Damage(next == kNone ? size : next, std::move(reason));
}

TZentrailSalvageResult TZentrailLogSalvager::Next(TZentrailMessage& message) {
  TZentrailPacketView view;
  const TZentrailSalvageResult r = Next(view);
  if (r == TZentrailSalvageResult::Record) {
    const int32_t content = message.MsgContent;
    message.Clear();
    view.CopyTo(message);
    if (FTag == ztLegacyTag0 || FTag == ztLegacyTag1) message.MsgContent = content;
  }
  return r;
}

uint64_t TZentrailLogSalvager::Search(uint64_t from, uint64_t limit) {
  const uint64_t size = FData.size();
  const char* d = FData.data();
  if (size < 4) return kNone;
  // Candidates start below last; the last byte of a tag, 0x7F, is what memchr looks for.
  const uint64_t last = std::min(limit, size - 3);
  uint64_t q = from;
  while (q < last) {
    const void* hit = std::memchr(d + q + 3, 0x7F, last - q);
    if (!hit) {
      FEffort += last - q;
      break;
    }
    const uint64_t c = static_cast<uint64_t>(static_cast<const char*>(hit) - d) - 3;
    FEffort += c - q + 1;
    const auto low = static_cast<unsigned char>(d[c]);
    if (d[c + 1] == 0 && d[c + 2] == 0 && (low | 5u) == 5u) {
      uint64_t end = 0, contentEnd = 0;
      if (Decode(c, Mode::Search, nullptr, end, contentEnd, nullptr)) return c;
    }
    q = c + 1;
  }
  return kNone;
}

bool TZentrailLogSalvager::LegacyBounds(uint64_t at, uint64_t& end, std::string* reason,
                                        bool chain) const {
  auto fail = [&](std::string why) {
    if (reason) *reason = std::move(why);
    return false;
  };
  const uint64_t size = FData.size();
  if (size - at - 4 < ztLegacyHeaderSize) return fail("the file ends inside a record header");
  const char* h = FData.data() + at + 4;
  const auto date = static_cast<int32_t>(GetLE32(h + 8));
  const auto time = static_cast<int32_t>(GetLE32(h + 4));
  const auto textLen = static_cast<int32_t>(GetLE32(h + 16));
  const auto detailsLen = static_cast<int32_t>(GetLE32(h + 20));
  if (!(date > 730000 && date < 766500)) return fail("date out of range");
  if (!(time >= 0 && time < 86400001)) return fail("time out of range");
  if (textLen < 0 || detailsLen < 0) return fail("negative text length");
  const uint64_t body = static_cast<uint64_t>(textLen) + static_cast<uint64_t>(detailsLen) + 1;
  if (body > size - at - 4 - ztLegacyHeaderSize) return fail("the file ends inside a record");
  end = at + 4 + ztLegacyHeaderSize + body;
  if (chain && !Plausible(end))
    return fail("the legacy record's lengths end at offset " + std::to_string(end) +
                ", where no record starts");
  return true;
}

bool TZentrailLogSalvager::Plausible(uint64_t at) const {
  const uint64_t size = FData.size();
  if (at == size) return true;
  if (size - at < 8) return false;
  const char* d = FData.data() + at;
  const uint32_t tag = GetLE32(d);
  if (tag == ztLegacyTag0 || tag == ztLegacyTag1) {
    uint64_t end = 0;
    return LegacyBounds(at, end, nullptr, false);
  }
  if (tag != ztPacketTag && tag != ztCompressedPacketTag) return false;
  const auto len = static_cast<int32_t>(GetLE32(d + 4));
  if (len < 1 || static_cast<uint64_t>(len) > size - at - 8) return false;
  const std::string_view body(d + 8, static_cast<std::size_t>(len));
  return tag == ztPacketTag ? TransportPacketExtent(body) != 0 : ZlibHeaderOk(body);
}

bool TZentrailLogSalvager::Decode(uint64_t at, Mode mode, TZentrailPacketView* view, uint64_t& end,
                                  uint64_t& contentEnd, std::string* reason) {
  auto fail = [&](std::string why) {
    if (reason) *reason = std::move(why);
    return false;
  };
  const uint64_t size = FData.size();
  FEffort += kProbeCost;
  if (size - at < 4) return fail("the file ends inside a record tag");
  const char* d = FData.data() + at;
  const uint32_t tag = GetLE32(d);
  if (tag == ztLegacyTag0 || tag == ztLegacyTag1) {
    if (!LegacyBounds(at, end, reason, true)) return false;
    contentEnd = end;
    if (!view) return true;  // the bounds are all the plain loop checks
    F->Source.Seek(at);
    if (F->Reader.Next(*view) != TZentrailRecordResult::Ok) return fail(F->Reader.Error());
    FEffort += end - at;
    return true;
  }
  if (tag != ztPacketTag && tag != ztCompressedPacketTag)
    return fail("unsupported record tag " + TagText(tag));
  if (size - at < 8) return fail("the file ends inside a record length");
  const auto len = static_cast<int32_t>(GetLE32(d + 4));
  if (len < 1) return fail("record length " + std::to_string(len) + " is below 1");
  if (static_cast<uint64_t>(len) > size - at - 8)
    return fail("the file ends inside a record of " + std::to_string(len) + " bytes");
  end = at + 8 + static_cast<uint64_t>(len);
  if (tag == ztCompressedPacketTag) {
    std::size_t consumed = 0;
    std::string_view packet;
    if (!DecodeCompressed(at, static_cast<uint32_t>(len), mode, consumed, packet, reason))
      return false;
    contentEnd = at + 8 + consumed;
    if (view) {
      try {
        ParseTransportPacket(packet, *view);
      } catch (const EZentrailPacketError& e) {
        return fail(e.what());
      }
    }
    return true;
  }
  const std::string_view body(d + 8, static_cast<std::size_t>(len));
  const std::size_t extent = TransportPacketExtent(body, reason);
  if (extent == 0) return false;
  if (mode == Mode::Search && extent != body.size()) return false;
  contentEnd = at + 8 + extent;
  if (!view) return true;  // the framing is all the parser can refuse
  try {
    ParseTransportPacket(body, *view);
  } catch (const EZentrailPacketError& e) {
    return fail(e.what());
  }
  FEffort += body.size();
  return true;
}

bool TZentrailLogSalvager::DecodeCompressed(uint64_t at, uint32_t len, Mode mode,
                                            std::size_t& consumed, std::string_view& packet,
                                            std::string* reason) {
  const std::string_view body(FData.data() + at + 8, len);
  if (mode == Mode::Search && !ZlibHeaderOk(body)) return false;
  const uint64_t allowed = kWasteBase + kWastePerByte * at;
  const uint64_t cap = allowed > FWasted ? allowed - FWasted : 0;
  const int slot = mode == Mode::Search ? 1 : 0;
  uint64_t work = 0;
  bool ok = F->Inflate(body, slot, cap, consumed, work, reason);
  if (ok) {
    packet = std::string_view(F->Out[slot].data(), F->OutSize[slot]);
    const std::size_t extent = TransportPacketExtent(packet, reason);
    ok = extent != 0 &&
         (mode == Mode::Aligned || (consumed == body.size() && extent == packet.size()));
  }
  if (!ok) {
    FWasted += work;
    FEffort += work;
    return false;
  }
  // What an intact record inflates to is the caller's data, not search effort.
  FEffort += consumed;
  FInflateWork = work;
  return true;
}

// ---------------------------------------------------------------------------------------------

TZentrailMappedFile::~TZentrailMappedFile() { Close(); }

void TZentrailMappedFile::Close() {
  if (FMap) ::munmap(FMap, FMapSize);
  FMap = nullptr;
  FMapSize = 0;
  FCopy.clear();
  FCopy.shrink_to_fit();
  FData = {};
}

bool TZentrailMappedFile::Open(const std::string& path, std::string& error) {
  Close();
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    error = path + ": " + std::strerror(errno);
    return false;
  }
  struct stat st{};
  if (::fstat(fd, &st) != 0) {
    error = path + ": " + std::strerror(errno);
    ::close(fd);
    return false;
  }
  if (S_ISDIR(st.st_mode)) {
    error = path + ": is a folder";
    ::close(fd);
    return false;
  }
  if (S_ISREG(st.st_mode) && st.st_size > 0) {
    void* map = ::mmap(nullptr, static_cast<std::size_t>(st.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
    if (map != MAP_FAILED) {
      ::madvise(map, static_cast<std::size_t>(st.st_size), MADV_SEQUENTIAL);
      FMap = map;
      FMapSize = static_cast<std::size_t>(st.st_size);
      FData = std::string_view(static_cast<const char*>(map), FMapSize);
      ::close(fd);
      return true;
    }
  }
  // Pipes, devices and files that cannot be mapped are read whole.
  char buf[1 << 16];
  for (;;) {
    const ssize_t got = ::read(fd, buf, sizeof buf);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      error = path + ": " + std::strerror(errno);
      ::close(fd);
      FCopy.clear();
      return false;
    }
    if (got == 0) break;
    FCopy.append(buf, static_cast<std::size_t>(got));
  }
  ::close(fd);
  FData = FCopy;
  return true;
}

}  // namespace zentrail
