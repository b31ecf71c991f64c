#pragma once
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zentrail {

class EZentrailZlibError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The data is good as far as it goes but inflates beyond the bound; a channel closes the sender's
// connection for this, where a merely corrupt stream only refuses that one frame.
class EZentrailZlibSizeError : public EZentrailZlibError {
 public:
  using EZentrailZlibError::EZentrailZlibError;
};

// The bound on one inflated packet or record: nothing legitimate is larger, and it keeps a
// hostile frame from exhausting memory.
inline constexpr std::size_t ztMaxInflatedSize = 64u * 1024 * 1024;

// Inflates one whole zlib stream. Throws EZentrailZlibError when the data is not a complete zlib
// stream or would inflate beyond maxSize.
std::string ZlibInflate(std::string_view compressed, std::size_t maxSize = ztMaxInflatedSize);
void ZlibInflateInto(std::string_view compressed, std::string& out,
                     std::size_t maxSize = ztMaxInflatedSize);

// One-shot compression at the default level.
std::string ZlibDeflate(std::string_view data);

}  // namespace zentrail
