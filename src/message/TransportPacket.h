#pragma once
// The text form of a message on the wire and in log records:
//   "ZTP1" then 15 fields, each "<decimal byte length>:<value>", in the order
//   MsgType, MsgContent, RouteKey, MsgText, Details, Time, Date, ProcessID, ThreadName, AppName,
//   ComputerName, TypeName, Category, CategoryColor, CategoryFontColor.
// Bytes after the fifteenth field are ignored, leaving room for a later version.

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "ZentrailMessage.h"

namespace zentrail {

class EZentrailPacketError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

inline constexpr std::string_view ztPacketMagic = "ZTP1";

// A decoded packet whose text fields point into the packet bytes, or into repair buffers when a
// field was not valid UTF-8. Valid until the packet bytes or this object change. Lets the intake
// store a message without building a TZentrailMessage first.
struct TZentrailPacketView {
  int32_t MsgType = 0;
  int32_t MsgContent = 0;
  std::string_view RouteKey;
  std::string_view MsgText;
  std::string_view Details;
  TZentrailTimeStamp TimeStamp;
  uint32_t ProcessID = 0;
  std::string_view ThreadName;
  std::string_view AppName;
  std::string_view ComputerName;
  std::string_view TypeName;
  std::string_view Category;
  int32_t CategoryColor = 0;
  int32_t CategoryFontColor = 0;

  // Storage for fields that had to be repaired (ill-formed UTF-8 replaced by U+FFFD).
  std::array<std::string, 8> Repaired;

  void CopyTo(TZentrailMessage& out) const;
};

// Throws EZentrailPacketError naming what is wrong: a missing magic or field, a length that runs
// past the end, or text where a number belongs.
void ParseTransportPacket(std::string_view packet, TZentrailPacketView& out);

void AppendTransportPacket(const TZentrailMessage& message, std::string& out);

}  // namespace zentrail
