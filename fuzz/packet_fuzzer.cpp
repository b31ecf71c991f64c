// The transport packet decoder takes bytes from any local process; it must answer every input
// with a message or an EZentrailPacketError, and what it decodes must encode back to a packet that
// decodes to the same message.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "TransportPacket.h"
#include "Utf8.h"
#include "Zlib.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace zentrail;
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  // The first byte picks the frame form, as the channel's tag does.
  std::string inflated;
  if (!bytes.empty() && (bytes[0] & 1)) {
    try {
      inflated = ZlibInflate(bytes.substr(1), 1u << 20);
      bytes = inflated;
    } catch (const EZentrailZlibError&) {
      return 0;
    }
  }
  TZentrailMessage message;
  try {
    message.SetAsTransportPacket(bytes);
  } catch (const EZentrailPacketError&) {
    return 0;
  }
  if (!IsValidUtf8(message.MsgText) || !IsValidUtf8(message.Details) ||
      !IsValidUtf8(message.ThreadName))
    std::abort();
  TZentrailMessage again;
  again.SetAsTransportPacket(message.GetAsTransportPacket());
  if (!(again == message)) std::abort();
  return 0;
}
