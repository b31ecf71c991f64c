// The batch frame's records come from any local process (and from the network through a
// dispatcher). The reader must stop at the first malformed record, never look outside the batch,
// and hand out exactly the records that a writer put in.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "ZTChannel.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace zentrail;
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  TZTBatchReader reader(bytes);
  std::vector<std::pair<uint32_t, std::string_view>> records;
  uint32_t tag = 0;
  std::string_view record;
  TZTBatchReader::TStep step;
  std::size_t last = 0;
  while ((step = reader.Next(tag, record)) == TZTBatchReader::TStep::Record) {
    if (record.data() < bytes.data() || record.data() + record.size() > bytes.data() + bytes.size()) std::abort();
    if (reader.Offset() <= last || reader.Offset() > size) std::abort();
    last = reader.Offset();
    records.emplace_back(tag, record);
  }
  if (step == TZTBatchReader::TStep::End && reader.Offset() != size) std::abort();
  if (step == TZTBatchReader::TStep::Malformed) {
    if (reader.Error().empty()) std::abort();
    // It stays where it stopped.
    if (reader.Next(tag, record) != TZTBatchReader::TStep::Malformed) std::abort();
  }
  // What was read, written again, is exactly the well-formed front of the input.
  std::string again;
  for (auto& [t, r] : records) AppendBatchRecord(again, t, r);
  if (again != bytes.substr(0, last)) std::abort();
  // Resuming in the middle, as a receiver does after waiting for room, gives the same rest.
  if (records.size() > 1) {
    std::size_t middle = 0;
    for (std::size_t i = 0; i < records.size() / 2; ++i) middle += 8 + records[i].second.size();
    TZTBatchReader resumed(bytes, middle);
    for (std::size_t i = records.size() / 2; i < records.size(); ++i)
      if (resumed.Next(tag, record) != TZTBatchReader::TStep::Record || record != records[i].second) std::abort();
  }
  return 0;
}
