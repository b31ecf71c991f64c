#pragma once
#include <string>
#include <string_view>

namespace zentrail {

// True when the bytes are well-formed UTF-8 (no overlongs, no surrogates, nothing above U+10FFFF).
bool IsValidUtf8(std::string_view text) noexcept;

// Appends text to out with every ill-formed sequence replaced by U+FFFD, one replacement per
// maximal ill-formed subpart, as most decoders do.
void AppendSanitizedUtf8(std::string& out, std::string_view text);

// Text is checked once where it enters the system; everything downstream may assume valid UTF-8.
inline std::string SanitizedUtf8(std::string_view text) {
  std::string out;
  AppendSanitizedUtf8(out, text);
  return out;
}

}  // namespace zentrail
