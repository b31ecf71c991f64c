#pragma once
// The one message record of the system and the code table of MsgType and MsgContent.
// Shared by the viewer, plug-ins and the logging client; no Qt here.

#include <cstdint>
#include <string>
#include <string_view>

namespace zentrail {

// MsgType and MsgContent share one code space: the same number means the same thing in either field.
enum : int32_t {
  ztmInfo = 0,
  ztmWarning = 1,
  ztmError = 2,
  ztmCheckPoint = 3,
  ztmObject = 4,
  ztmComponentAsText = 5,
  ztmStringList = 6,
  ztmText = 7,
  ztmNote = 8,
  ztmEnterMethod = 9,
  ztmExitMethod = 10,
  ztmSeparator = 11,
  ztmInactiveSeparator = 12,
  ztmClear = 13,
  ztmScratchPad = 14,
  ztmSaveLog = 15,
  ztmBitmap = 16,
  ztmTextFile = 17,
  ztmWindow = 18,
  ztmMemory = 19,
  ztmMemoryStatus = 20,
  ztmCustomText = 21,
  ztmCustomProperties = 22,
  ztmReminder = 23,
  ztmLevel1 = 24,
  ztmLevel2 = 25,
  ztmLevel3 = 26,
  ztmLevel4 = 27,
  ztmLevel5 = 28,
  ztmLevel6 = 29,
  ztmLevel7 = 30,
  ztmRed = ztmLevel1,
  ztmOrange = ztmLevel2,
  ztmYellow = ztmLevel3,
  ztmGreen = ztmLevel4,
  ztmBlue = ztmLevel5,
  ztmIndigo = ztmLevel6,
  ztmViolet = ztmLevel7,
  ztmColor = 31,
  ztmRegistry = 32,
  ztmSystemInfo = 33,
  ztmVersionInfo = 34,
  ztmXmlData = 35,
  ztmStackTrace = 36,
  ztmException = 37,
  ztmCustomTable = 38,
  ztmResetSeparator = 39,
  ztmAppStartSeparator = 40,
  ztmCollection = 41,
  ztmCollapsedMethod = 42,
  ztmExitMethodCollapse = 43,
  ztmCustomHierarchy = 44,
  ztmTiming = 45,

  // Open ranges beyond the table.
  ztmReserved = 100,
  ztmUser = 1000,
  ztmPublic = 33000,
};

// Number of codes in the table (0..45); MsgTypeNames has exactly this many entries.
inline constexpr int32_t ztmTableCount = 46;

// Short names indexed by code, as the exports write them. Indexed without a bound check on
// purpose: callers must send custom types elsewhere (see MsgTypeShortName).
extern const char* const MsgTypeNames[ztmTableCount];

// The short name for a table code, or the code as decimal text for anything else.
std::string MsgTypeShortName(int32_t code);

// The readable name of a code: the constant's name for table codes ("ztmLevel1 / ztmRed" for the
// seven levels), else the open-range form such as "ztmUser + 5". Codes 7, 15, 43 and 45 have no
// listed name and fall to the range rule, so 7 reads "ztmReserved + -93"; that is kept as it is.
std::string MsgTypeReadableName(int32_t code);

// Tags of log records and of the copy-data channel.
inline constexpr uint32_t ztLegacyTag0 = 0x7F000000;
inline constexpr uint32_t ztLegacyTag1 = 0x7F000001;
inline constexpr uint32_t ztPacketTag = 0x7F000004;
inline constexpr uint32_t ztCompressedPacketTag = 0x7F000005;

struct TZentrailTimeStamp {
  int32_t Time = 0;  // milliseconds since midnight
  int32_t Date = 0;  // days; 693594 is 30 December 1899
  bool operator==(const TZentrailTimeStamp&) const = default;
};

// Day number of 1 January 2000 in the Date count, for tests and stamping.
inline constexpr int32_t ztDateOf2000 = 730120;

class TZentrailMessage {
 public:
  TZentrailMessage() = default;
  TZentrailMessage(const TZentrailMessage&) = default;
  TZentrailMessage& operator=(const TZentrailMessage&) = default;
  TZentrailMessage(TZentrailMessage&&) noexcept = default;
  TZentrailMessage& operator=(TZentrailMessage&&) noexcept = default;

  static TZentrailMessage Create() { return {}; }
  static TZentrailMessage Create(const TZentrailMessage& source) { return source; }

  // Back to the empty state; keeps string capacity so one object serves many records.
  void Clear();

  void SetMsgType(int32_t value) { MsgType = value; }
  void SetMsgContent(int32_t value) { MsgContent = value; }

  // The message as one UTF-8 text and back; exact inverses for every field.
  std::string GetAsTransportPacket() const;
  void AppendTransportPacket(std::string& out) const;
  // Throws EZentrailPacketError on a packet it cannot read; the message is then unspecified.
  void SetAsTransportPacket(std::string_view packet);

  bool operator==(const TZentrailMessage&) const = default;

  int32_t MsgType = ztmInfo;
  int32_t MsgContent = ztmText;
  std::string RouteKey;
  std::string MsgText;
  std::string Details;
  TZentrailTimeStamp TimeStamp;
  uint32_t ProcessID = 0;
  std::string ThreadName;
  std::string AppName;
  std::string ComputerName;
  std::string TypeName;
  std::string Category;
  int32_t CategoryColor = 0x00FFFFFF;      // $00BBGGRR, white
  int32_t CategoryFontColor = 0x00000000;  // black
};

}  // namespace zentrail
