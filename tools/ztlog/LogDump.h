#pragma once
// Printing of log files for people at a terminal and for scripts.

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

#include "TransportPacket.h"

namespace zentrail::ztlog {

enum class Format { Lines, Json };

// "yyyy-mm-dd hh:nn:ss.zzz" (or with 'T' between date and time for ISO 8601). A date below 1 gives
// the zero date, as the viewer shows it.
std::string FormatTimeStamp(const TZentrailTimeStamp& stamp, char separator = ' ');

// Control characters as \t, \n, \r or \xNN, and the backslash doubled, so a line stays a line.
void AppendEscapedText(std::string& out, std::string_view text);
void AppendJsonString(std::string& out, std::string_view text);

// One output line (with its newline) for a decoded record.
void FormatRecord(std::string& out, Format format, uint64_t recordNumber,
                  const TZentrailPacketView& record);

struct DumpResult {
  uint64_t Records = 0;   // good records printed
  uint64_t Problems = 0;  // bad records, unsupported tags, unreadable files
};

// Prints every good record of the file to out and every problem, with its byte offset, to err.
// Memory stays bounded whatever the file's size.
DumpResult DumpFile(const std::string& path, Format format, std::ostream& out, std::ostream& err);

}  // namespace zentrail::ztlog
