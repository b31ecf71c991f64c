#include "Utf8.h"

#include <cstdint>
#include <cstring>

namespace zentrail {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// Length of the well-formed sequence starting at p (1..4), or 0 when the bytes at p begin an
// ill-formed sequence; in that case 'skip' is the length of its maximal ill-formed subpart.
inline std::size_t SequenceLength(const unsigned char* p, std::size_t avail, std::size_t& skip) {
  const unsigned char c = p[0];
  skip = 1;
  if (c < 0x80) return 1;
  std::size_t need;
  unsigned char lo = 0x80, hi = 0xBF;
  if (c >= 0xC2 && c <= 0xDF) {
    need = 2;
  } else if (c >= 0xE0 && c <= 0xEF) {
    need = 3;
    if (c == 0xE0) lo = 0xA0;
    if (c == 0xED) hi = 0x9F;  // no surrogates
  } else if (c >= 0xF0 && c <= 0xF4) {
    need = 4;
    if (c == 0xF0) lo = 0x90;
    if (c == 0xF4) hi = 0x8F;
  } else {
    return 0;
  }
  for (std::size_t i = 1; i < need; ++i) {
    if (i >= avail) return 0;
    const unsigned char b = p[i];
    if (i == 1 ? (b < lo || b > hi) : (b < 0x80 || b > 0xBF)) return 0;
    skip = i + 1;
  }
  return need;
}

// Skips a run of ASCII eight bytes at a time; most text is ASCII.
inline std::size_t AsciiPrefix(const unsigned char* p, std::size_t n) {
  std::size_t i = 0;
  while (i + 8 <= n) {
    uint64_t w;
    std::memcpy(&w, p + i, 8);
    if (w & 0x8080808080808080ull) break;
    i += 8;
  }
  while (i < n && p[i] < 0x80) ++i;
  return i;
}

}  // namespace

bool IsValidUtf8(std::string_view text) noexcept {
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t n = text.size();
  std::size_t i = 0;
  while (i < n) {
    i += AsciiPrefix(p + i, n - i);
    if (i >= n) break;
    std::size_t skip;
    const std::size_t len = SequenceLength(p + i, n - i, skip);
    if (len == 0) return false;
    i += len;
  }
  return true;
}

void AppendSanitizedUtf8(std::string& out, std::string_view text) {
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t n = text.size();
  std::size_t i = 0;
  out.reserve(out.size() + n);
  while (i < n) {
    const std::size_t run = AsciiPrefix(p + i, n - i);
    std::size_t j = i + run;
    // Extend the run over well-formed multi-byte sequences too, then copy it in one go.
    while (j < n) {
      if (p[j] < 0x80) {
        ++j;
        continue;
      }
      std::size_t skip;
      const std::size_t len = SequenceLength(p + j, n - j, skip);
      if (len == 0) break;
      j += len;
    }
    out.append(text.data() + i, j - i);
    i = j;
    if (i < n) {
      std::size_t skip;
      SequenceLength(p + i, n - i, skip);
      out.append(kReplacement);
      i += skip;
    }
  }
}

}  // namespace zentrail
