// Figures of `ztlog dump` on damaged logs, read from a file as the tool reads it:
//   ztlog_salvage_mbps        100 MB of random bytes, where every position is a search position
//   ztlog_salvage_zeros_mbps  100 MB of zeros
//   ztlog_salvage_log_mbps    a log of about 100 MB with damage every few thousand records,
//                             printed to a stream that discards it
// MB are 10^6 bytes; the best of three runs counts, so the file is in the page cache for each.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <random>
#include <string>

#include "LogDump.h"
#include "LogRecord.h"
#include "Zlib.h"

using namespace zentrail;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

namespace {

constexpr std::size_t kSize = 100'000'000;

void Figure(const char* name, double value, const char* unit) {
  std::printf("figure: %s %.6g %s\n", name, value, unit);
  std::fflush(stdout);
}

class NullBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
  std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

std::string Field(const std::string& v) { return std::to_string(v.size()) + ":" + v; }

std::string Packet(int i, std::mt19937& rng) {
  const std::string text = "request " + std::to_string(i) + " handled in " +
                           std::to_string(rng() % 1000) + " ms by the order service";
  const std::string details = i % 20 == 0 ? std::string(2000 + rng() % 3000, 'd') : "";
  return "ZTP1" + Field(std::to_string(i % 3)) + Field("7") + Field("") + Field(text) +
         Field(details) + Field(std::to_string(i % 86400000)) + Field("739000") + Field("4242") +
         Field("worker-1") + Field("OrderService") + Field("devbox") + Field("") + Field("db") +
         Field("16777215") + Field("0");
}

// Records as another program writes them, every tenth compressed, with a byte flipped, a record
// cut short or a stretch of zeros every 5,000 records.
std::string DamagedLog(std::mt19937& rng) {
  std::string out;
  out.reserve(kSize + (1 << 20));
  for (int i = 0; out.size() < kSize; ++i) {
    const std::size_t at = out.size();
    std::string packet = Packet(i, rng);
    if (i % 10 == 9) {
      packet = ZlibDeflate(packet);
      PutLE32(out, ztCompressedPacketTag);
    } else {
      PutLE32(out, ztPacketTag);
    }
    PutLE32(out, static_cast<uint32_t>(packet.size()));
    out += packet;
    switch (i % 5000) {
      case 1000: out[at + 1 + rng() % 6] ^= static_cast<char>(1 + rng() % 255); break;
      case 2000: out.resize(at + (out.size() - at) / 2); break;
      case 3000: out.append(4096 + rng() % 65536, '\0'); break;
      default: break;
    }
  }
  return out;
}

double Mbps(const fs::path& file, std::size_t bytes) {
  NullBuffer sink;
  std::ostream out(&sink), err(&sink);
  double best = 1e9;
  for (int round = 0; round < 3; ++round) {
    const auto t0 = Clock::now();
    ztlog::DumpFile(file.string(), ztlog::Format::Lines, out, err);
    best = std::min(best, std::chrono::duration<double>(Clock::now() - t0).count());
  }
  return static_cast<double>(bytes) / 1e6 / best;
}

}  // namespace

int main() {
  char folder[] = "/tmp/zentrail-bench-XXXXXX";
  if (!mkdtemp(folder)) return 1;
  const fs::path file = fs::path(folder) / "damaged.ztl";
  std::mt19937 rng(19);
  auto write = [&](const std::string& bytes) {
    std::ofstream(file, std::ios::binary | std::ios::trunc).write(
        bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes.size();
  };

  std::string bytes(kSize, '\0');
  write(bytes);
  const double zeros = Mbps(file, kSize);
  std::mt19937_64 wide(19);
  for (std::size_t i = 0; i + 8 <= kSize; i += 8) {
    const uint64_t v = wide();
    std::memcpy(bytes.data() + i, &v, 8);
  }
  write(bytes);
  Figure("ztlog_salvage_mbps", Mbps(file, kSize), "MB/s");
  Figure("ztlog_salvage_zeros_mbps", zeros, "MB/s");
  const std::size_t logSize = write(DamagedLog(rng));
  Figure("ztlog_salvage_log_mbps", Mbps(file, logSize), "MB/s");
  fs::remove_all(folder);
  return 0;
}
