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

// Salvage: after damage, search for the next record that decodes and go on; one report per
// damaged stretch and a summary. Strict: the plain record loop with no search, as earlier versions
// read: unknown tags reported per four bytes, a bad record whose length holds reported and stepped
// over, and a stop at the first record whose length cannot be trusted.
enum class Reading { Salvage, Strict };

struct DumpResult {
  uint64_t Records = 0;       // good records printed
  uint64_t Problems = 0;      // damaged stretches or bad records, unsupported tags, unreadable files
  uint64_t Stretches = 0;     // damaged stretches skipped (salvage)
  uint64_t SkippedBytes = 0;  // bytes in them
};

// Prints every good record of the file to out and every problem, with its byte offset, to err.
DumpResult DumpFile(const std::string& path, Format format, std::ostream& out, std::ostream& err,
                    Reading reading = Reading::Salvage);

}  // namespace zentrail::ztlog
