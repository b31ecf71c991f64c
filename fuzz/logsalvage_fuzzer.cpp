// The salvaging reader meets whatever a damaged disk holds. Whatever the bytes, it must end, never
// read out of bounds, account for every byte exactly once, return only records that the plain loop
// decodes on their own to the same message, and keep its work linear in the size of the input.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "LogRecord.h"
#include "LogSalvage.h"
#include "Utf8.h"

namespace {

bool SameRecord(const zentrail::TZentrailPacketView& a, const zentrail::TZentrailPacketView& b) {
  return a.MsgType == b.MsgType && a.MsgText == b.MsgText && a.Details == b.Details &&
         a.TimeStamp.Time == b.TimeStamp.Time && a.TimeStamp.Date == b.TimeStamp.Date &&
         a.ProcessID == b.ProcessID && a.ThreadName == b.ThreadName && a.AppName == b.AppName &&
         a.Category == b.Category && a.CategoryColor == b.CategoryColor;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace zentrail;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);

  // The quick check of a packet must refuse exactly what the parser refuses, in the same words:
  // a stricter check would lose records, a looser one would cost a full parse per candidate.
  std::string quickError, parseError;
  const std::size_t extent = TransportPacketExtent(bytes, &quickError);
  TZentrailPacketView parsed;
  try {
    ParseTransportPacket(bytes, parsed);
  } catch (const EZentrailPacketError& e) {
    parseError = e.what();
  }
  if ((extent == 0) != !parseError.empty() || quickError != parseError || extent > size)
    std::abort();

  TZentrailLogSalvager salvager(bytes);
  TZentrailPacketView view, alone;
  uint64_t at = 0;
  for (;;) {
    const TZentrailSalvageResult r = salvager.Next(view);
    if (r == TZentrailSalvageResult::End) break;
    // Each step covers new bytes right after the last, so the loop ends.
    if (salvager.Start() != at || salvager.End() <= at || salvager.End() > size) std::abort();
    if (r == TZentrailSalvageResult::Record) {
      if (!IsValidUtf8(view.MsgText) || !IsValidUtf8(view.Details) || !IsValidUtf8(view.AppName))
        std::abort();
      const std::string_view span = bytes.substr(at, salvager.End() - at);
      TZentrailBufferSource source(span);
      TZentrailLogReader plain(source);
      if (plain.Next(alone) != TZentrailRecordResult::Ok || source.Position() != span.size() ||
          !SameRecord(view, alone))
        std::abort();
    } else if (salvager.Reason().empty()) {
      std::abort();
    }
    at = salvager.End();
  }
  if (at != size) std::abort();
  if (salvager.Records() + salvager.Stretches() == 0 && size > 0) std::abort();
  if (salvager.Effort() > 64 * static_cast<uint64_t>(size) + (200u << 20)) std::abort();
  return 0;
}
