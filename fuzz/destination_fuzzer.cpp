// The destination text arrives in the dispatcher from any client (and from a remote dispatcher over
// TCP). Whatever it holds, parsing ends in a destination or EZentrailInvalidDestination; a text
// that parsed reads back, and its own text parses again to the same text.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "ZentrailDestination.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace zentrail;
  std::string_view text(reinterpret_cast<const char*>(data), size);
  TZentrailDestination destination;
  try {
    destination.SetAsString(text);
  } catch (const EZentrailInvalidDestination&) {
    return 0;
  }
  std::string written;
  try {
    destination.Validate();
    written = destination.AsString();
  } catch (const EZentrailInvalidDestination&) {
    return 0;
  }
  if (destination.DestinationCode() != DestinationTextHash(written)) std::abort();
  TZentrailDestination copy;
  copy.Assign(destination);
  if (copy.AsString() != written) std::abort();
  // The text a client writes is what the dispatcher reads; it must not raise there.
  TZentrailDestination reread;
  try {
    reread.SetAsString(written);
  } catch (const EZentrailInvalidDestination&) {
    std::abort();
  }
  return 0;
}
