// The incremental frame decoder of every receiver takes bytes as the socket hands them over, cut
// anywhere. Whatever the bytes and however they are cut, it must give the same frames as a
// decoder fed everything at once, stop for good at an over-long frame, and never hold more than
// one frame's worth beyond what it was given.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "ZTChannel.h"

namespace {

struct TFrame {
  uint32_t Tag;
  std::string Payload;
  bool operator==(const TFrame&) const = default;
};

std::vector<TFrame> Drain(zentrail::TZTFrameDecoder& decoder) {
  std::vector<TFrame> out;
  uint32_t tag = 0;
  std::string_view payload;
  while (decoder.Next(tag, payload)) {
    out.push_back({tag, std::string(payload)});
    decoder.Pop();
  }
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace zentrail;
  if (size < 1) return 0;
  // The first byte chooses where the stream is cut.
  const std::size_t step = 1 + data[0] % 17;
  std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);

  TZTFrameDecoder whole;
  whole.Feed(bytes.data(), bytes.size());
  std::vector<TFrame> expected = Drain(whole);

  TZTFrameDecoder pieces;
  std::vector<TFrame> got;
  for (std::size_t at = 0; at < bytes.size(); at += step) {
    const std::size_t n = std::min(step, bytes.size() - at);
    pieces.Feed(bytes.data() + at, n);
    for (auto& f : Drain(pieces)) got.push_back(std::move(f));
    if (pieces.Buffered() > bytes.size()) std::abort();
  }
  if (got != expected) std::abort();
  if (pieces.Failed() != whole.Failed()) std::abort();
  if (!whole.Failed() && pieces.Buffered() != whole.Buffered()) std::abort();
  // After Reset the decoder reads a fresh stream.
  pieces.Reset();
  std::string one;
  AppendFrame(one, 0x7F000004u, "x");
  pieces.Feed(one.data(), one.size());
  if (Drain(pieces) != std::vector<TFrame>{{0x7F000004u, "x"}}) std::abort();
  return 0;
}
