// The log record loop reads files that may be truncated, damaged or not logs at all. Whatever the
// bytes, it must end, never read out of bounds, and make progress on every step.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "LogRecord.h"
#include "Utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace zentrail;
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  TZentrailBufferSource source(bytes);
  TZentrailLogReader reader(source);
  TZentrailPacketView view;
  uint64_t last = 0;
  for (int guard = 0; guard < 1'000'000; ++guard) {
    const auto r = reader.Next(view);
    if (source.Position() > size) std::abort();
    if (r == TZentrailRecordResult::End) break;
    if (r == TZentrailRecordResult::Ok && !IsValidUtf8(view.MsgText)) std::abort();
    if (r == TZentrailRecordResult::Invalid && !reader.Resumable()) break;
    if (source.Position() <= last) std::abort();  // no progress would loop forever
    last = source.Position();
  }
  return 0;
}
