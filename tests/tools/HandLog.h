#pragma once
// Logs built byte by byte from the record format, not by the project's own writer, as another
// program would write them.

#include <cstdint>
#include <string>
#include <vector>

#include "LogRecord.h"
#include "Zlib.h"

namespace zentrail::test {

inline std::string Field(const std::string& v) { return std::to_string(v.size()) + ":" + v; }

inline std::string Packet(int type, int content, const std::string& text,
                          const std::string& details, int time, int date,
                          const std::string& thread) {
  return "ZTP1" + Field(std::to_string(type)) + Field(std::to_string(content)) + Field("") +
         Field(text) + Field(details) + Field(std::to_string(time)) + Field(std::to_string(date)) +
         Field("31337") + Field(thread) + Field("other-app") + Field("box") + Field("") +
         Field("io") + Field("16777215") + Field("0");
}

inline void PutLE(std::string& out, std::size_t at, uint32_t v) {
  for (int i = 0; i < 4; ++i) out[at + i] = static_cast<char>(v >> (8 * i));
}

inline std::string Record(uint32_t tag, const std::string& body) {
  std::string out(8, '\0');
  PutLE(out, 0, tag);
  PutLE(out, 4, static_cast<uint32_t>(body.size()));
  return out + body;
}

inline std::string LegacyRecord(int type, int time, const std::string& text,
                                const std::string& details = "") {
  std::string out(4 + ztLegacyHeaderSize, '\0');
  PutLE(out, 0, ztLegacyTag0);
  PutLE(out, 4 + 0, static_cast<uint32_t>(type));
  PutLE(out, 4 + 4, static_cast<uint32_t>(time));
  PutLE(out, 4 + 8, 730120);
  PutLE(out, 4 + 16, static_cast<uint32_t>(text.size()));
  PutLE(out, 4 + 20, static_cast<uint32_t>(details.size()));
  PutLE(out, 4 + 24, 7);
  out.replace(4 + 28, 2, "T1");
  out.replace(4 + 70, 6, "oldapp");
  return out + text + details + '\0';
}

// A log of n records, "record 0" to "record n-1": every fifth one compressed, every seventh a
// legacy record, the rest current; Details of varying length so the records differ in size.
struct HandLog {
  std::string Bytes;
  std::vector<std::size_t> Offsets;  // where each record starts
  std::vector<std::string> Texts;

  explicit HandLog(int n) {
    for (int i = 0; i < n; ++i) {
      const std::string text = "record " + std::to_string(i);
      const std::string details(static_cast<std::size_t>(i * 53 % 400), static_cast<char>('a' + i % 26));
      Offsets.push_back(Bytes.size());
      Texts.push_back(text);
      if (i % 7 == 6)
        Bytes += LegacyRecord(i % 3, i * 1000, text, details);
      else if (i % 5 == 4)
        Bytes += Record(ztCompressedPacketTag,
                        ZlibDeflate(Packet(i % 3, 7, text, details, i * 1000, 730120, "w")));
      else
        Bytes += Record(ztPacketTag, Packet(i % 3, 7, text, details, i * 1000, 730120, "main"));
    }
  }
  std::size_t End(int i) const {
    return i + 1 < static_cast<int>(Offsets.size()) ? Offsets[i + 1] : Bytes.size();
  }
};

}  // namespace zentrail::test
