// The destination text arrives in the dispatcher from any client (and from a remote dispatcher over
// TCP). Whatever it holds, parsing ends in a destination or EZentrailInvalidDestination, and so
// does parsing the text that destination writes. The text form has no escapes: a value that holds
// a ";" (a path may), or one whose brackets lose their partner when a macro is expanded, writes a
// text that the dispatcher refuses with that exception. A refusal is the right answer; anything
// else is not.
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
  TZentrailDestination reread;
  try {
    reread.SetAsString(written);
    (void)reread.AsString();
  } catch (const EZentrailInvalidDestination&) {
  }
  return 0;
}
