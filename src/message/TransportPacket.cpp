#include "TransportPacket.h"

#include <charconv>
#include <cstring>

#include "Utf8.h"

namespace zentrail {
namespace {

const char* const kFieldNames[15] = {
    "MsgType",  "MsgContent",   "RouteKey",     "MsgText",  "Details",
    "Time",     "Date",         "ProcessID",    "ThreadName", "AppName",
    "ComputerName", "TypeName", "Category",     "CategoryColor", "CategoryFontColor",
};

class Cursor {
 public:
  explicit Cursor(std::string_view packet) : FData(packet) {}

  std::string_view Field(int index) {
    // Lengths are plain decimal digits; at most 10 of them fit a 32-bit size.
    std::size_t len = 0;
    std::size_t digits = 0;
    while (FPos < FData.size() && FData[FPos] >= '0' && FData[FPos] <= '9') {
      if (++digits > 10) Fail(index, "has a length that is too long");
      len = len * 10 + static_cast<std::size_t>(FData[FPos] - '0');
      ++FPos;
    }
    if (digits == 0) {
      if (FPos >= FData.size()) Fail(index, "is missing");
      Fail(index, "does not start with a length");
    }
    if (FPos >= FData.size() || FData[FPos] != ':') Fail(index, "has no ':' after its length");
    ++FPos;
    if (len > FData.size() - FPos) Fail(index, "runs past the end of the packet");
    std::string_view value = FData.substr(FPos, len);
    FPos += len;
    return value;
  }

  int32_t Signed(int index) {
    std::string_view text = Field(index);
    int64_t value = 0;
    if (!ParseInt(text, value) || value < INT32_MIN || value > INT32_MAX)
      Fail(index, "is not a 32-bit number");
    return static_cast<int32_t>(value);
  }

  uint32_t Unsigned(int index) {
    std::string_view text = Field(index);
    int64_t value = 0;
    if (!ParseInt(text, value) || value < 0 || value > UINT32_MAX)
      Fail(index, "is not an unsigned 32-bit number");
    return static_cast<uint32_t>(value);
  }

  // A colour is a 32-bit value; writers send it signed, but an unsigned spelling is taken too.
  int32_t Colour(int index) {
    std::string_view text = Field(index);
    int64_t value = 0;
    if (!ParseInt(text, value) || value < INT32_MIN || value > UINT32_MAX)
      Fail(index, "is not a 32-bit colour");
    return static_cast<int32_t>(static_cast<uint32_t>(value));
  }

  [[noreturn]] static void Fail(int index, const char* what) {
    throw EZentrailPacketError(std::string("transport packet: field ") + kFieldNames[index] + " " +
                               what);
  }

 private:
  static bool ParseInt(std::string_view text, int64_t& value) {
    if (text.empty() || text.size() > 12) return false;
    const char* first = text.data();
    const char* last = first + text.size();
    auto [ptr, ec] = std::from_chars(first, last, value);
    return ec == std::errc() && ptr == last;
  }

  std::string_view FData;
  std::size_t FPos = ztPacketMagic.size();
};

// Text is checked once where it enters the system; ill-formed bytes become U+FFFD.
inline std::string_view Checked(std::string_view text, std::string& repair) {
  if (IsValidUtf8(text)) return text;
  repair.clear();
  AppendSanitizedUtf8(repair, text);
  return repair;
}

inline void PutField(std::string& out, std::string_view value) {
  char buf[24];
  auto [ptr, ec] = std::to_chars(buf, buf + sizeof buf, value.size());
  (void)ec;
  out.append(buf, ptr);
  out.push_back(':');
  out.append(value);
}

inline void PutNumber(std::string& out, int64_t value) {
  char buf[24];
  auto [ptr, ec] = std::to_chars(buf, buf + sizeof buf, value);
  (void)ec;
  const std::size_t len = static_cast<std::size_t>(ptr - buf);
  char lenbuf[4];
  auto [lptr, lec] = std::to_chars(lenbuf, lenbuf + sizeof lenbuf, len);
  (void)lec;
  out.append(lenbuf, lptr);
  out.push_back(':');
  out.append(buf, len);
}

}  // namespace

void ParseTransportPacket(std::string_view packet, TZentrailPacketView& out) {
  if (packet.size() < ztPacketMagic.size() ||
      std::memcmp(packet.data(), ztPacketMagic.data(), ztPacketMagic.size()) != 0)
    throw EZentrailPacketError("transport packet: does not start with \"ZTP1\"");
  Cursor c(packet);
  out.MsgType = c.Signed(0);
  out.MsgContent = c.Signed(1);
  out.RouteKey = Checked(c.Field(2), out.Repaired[0]);
  out.MsgText = Checked(c.Field(3), out.Repaired[1]);
  out.Details = Checked(c.Field(4), out.Repaired[2]);
  out.TimeStamp.Time = c.Signed(5);
  out.TimeStamp.Date = c.Signed(6);
  out.ProcessID = c.Unsigned(7);
  out.ThreadName = Checked(c.Field(8), out.Repaired[3]);
  out.AppName = Checked(c.Field(9), out.Repaired[4]);
  out.ComputerName = Checked(c.Field(10), out.Repaired[5]);
  out.TypeName = Checked(c.Field(11), out.Repaired[6]);
  out.Category = Checked(c.Field(12), out.Repaired[7]);
  out.CategoryColor = c.Colour(13);
  out.CategoryFontColor = c.Colour(14);
}

void TZentrailPacketView::CopyTo(TZentrailMessage& out) const {
  out.MsgType = MsgType;
  out.MsgContent = MsgContent;
  out.RouteKey.assign(RouteKey);
  out.MsgText.assign(MsgText);
  out.Details.assign(Details);
  out.TimeStamp = TimeStamp;
  out.ProcessID = ProcessID;
  out.ThreadName.assign(ThreadName);
  out.AppName.assign(AppName);
  out.ComputerName.assign(ComputerName);
  out.TypeName.assign(TypeName);
  out.Category.assign(Category);
  out.CategoryColor = CategoryColor;
  out.CategoryFontColor = CategoryFontColor;
}

void AppendTransportPacket(const TZentrailMessage& m, std::string& out) {
  out.reserve(out.size() + 64 + m.MsgText.size() + m.Details.size() + m.ThreadName.size() +
              m.AppName.size() + m.ComputerName.size() + m.TypeName.size() + m.Category.size() +
              m.RouteKey.size());
  out.append(ztPacketMagic);
  PutNumber(out, m.MsgType);
  PutNumber(out, m.MsgContent);
  PutField(out, m.RouteKey);
  PutField(out, m.MsgText);
  PutField(out, m.Details);
  PutNumber(out, m.TimeStamp.Time);
  PutNumber(out, m.TimeStamp.Date);
  PutNumber(out, m.ProcessID);
  PutField(out, m.ThreadName);
  PutField(out, m.AppName);
  PutField(out, m.ComputerName);
  PutField(out, m.TypeName);
  PutField(out, m.Category);
  PutNumber(out, m.CategoryColor);
  PutNumber(out, m.CategoryFontColor);
}

}  // namespace zentrail
