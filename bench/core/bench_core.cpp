// Figures of the message core on a store of 1,000,000 typical messages: texts of 40 to 120
// characters, short identity fields, Details empty for most and a few kilobytes for 5%.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "LogRecord.h"
#include "TransportPacket.h"
#include "ZentrailMessageSet.h"

using namespace zentrail;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int kMessages = 1'000'000;

double Seconds(Clock::time_point since) {
  return std::chrono::duration<double>(Clock::now() - since).count();
}

void Figure(const char* name, double value, const char* unit) {
  std::printf("figure: %s %.6g %s\n", name, value, unit);
  std::fflush(stdout);
}

long ResidentBytes() {
  std::ifstream statm("/proc/self/statm");
  long size = 0, resident = 0;
  statm >> size >> resident;
  return resident * sysconf(_SC_PAGESIZE);
}

std::vector<TZentrailMessage> MakeMessages(std::mt19937& rng) {
  static const char* kApps[] = {"OrderService", "billing", "ui-shell", "importer"};
  static const char* kThreads[] = {"main", "worker-1", "worker-2", "io", "timer", "1234"};
  static const char* kCategories[] = {"", "db", "net", "ui"};
  static const char kWords[] =
      "lorem ipsum dolor sit amet consectetur adipiscing elit sed do eiusmod tempor incididunt ut "
      "labore et dolore magna aliqua ut enim ad minim veniam quis nostrud exercitation ullamco "
      "laboris nisi ut aliquip ex ea commodo consequat duis aute irure dolor in reprehenderit";
  std::uniform_int_distribution<int> len(40, 120), pick(0, 1 << 20);
  std::vector<TZentrailMessage> messages(kMessages);
  for (int i = 0; i < kMessages; ++i) {
    TZentrailMessage& m = messages[i];
    const int r = pick(rng);
    m.SetMsgType(i % 10 == 0 ? ztmEnterMethod : i % 10 == 1 ? ztmExitMethod : r % 3);
    m.SetMsgContent(ztmText);
    const int n = len(rng);
    const int at = r % (sizeof kWords - 121);
    m.MsgText.assign(kWords + at, static_cast<std::size_t>(n));
    if (r % 20 == 0) m.Details.assign(static_cast<std::size_t>(2000 + r % 3000), 'd');
    m.TimeStamp = {i * 7 % 86400000, ztDateOf2000 + 9000};
    m.ProcessID = static_cast<uint32_t>(1000 + r % 4);
    m.ThreadName = kThreads[r % 6];
    m.AppName = kApps[r % 4];
    m.ComputerName = "devbox";
    m.Category = kCategories[(r >> 3) % 4];
  }
  return messages;
}

std::size_t RawBytes(const TZentrailMessage& m) {
  // Text fields as UTF-8 plus four bytes for each of the eight numbers a stored record carries.
  return m.MsgText.size() + m.Details.size() + m.ThreadName.size() + m.AppName.size() +
         m.ComputerName.size() + m.TypeName.size() + m.Category.size() + 8 * 4;
}

}  // namespace

int main() {
  std::mt19937 rng(20261122);
  std::vector<TZentrailMessage> messages = MakeMessages(rng);
  double raw = 0;
  for (const auto& m : messages) raw += static_cast<double>(RawBytes(m));

  // Encoding.
  std::vector<std::string> packets(kMessages);
  double best = 1e9;
  for (int round = 0; round < 3; ++round) {
    const auto t0 = Clock::now();
    for (int i = 0; i < kMessages; ++i) {
      packets[i].clear();
      messages[i].AppendTransportPacket(packets[i]);
    }
    best = std::min(best, Seconds(t0));
  }
  Figure("packet_encode_rate", kMessages / best, "messages/s");

  // Decoding into a reused view, as the intake does.
  best = 1e9;
  long checksum = 0;
  TZentrailPacketView view;
  for (int round = 0; round < 3; ++round) {
    const auto t0 = Clock::now();
    for (int i = 0; i < kMessages; ++i) {
      ParseTransportPacket(packets[i], view);
      checksum += static_cast<long>(view.MsgText.size());
    }
    best = std::min(best, Seconds(t0));
  }
  Figure("packet_decode_rate", kMessages / best, "messages/s");

  // Appending to the store, measured with its resident growth.
  {
    const long before = ResidentBytes();
    TZentrailMessageSet set;
    const auto t0 = Clock::now();
    for (int i = 0; i < kMessages; ++i) {
      ParseTransportPacket(packets[i], view);
      set.AppendMessage(view, i);
    }
    const double secs = Seconds(t0);
    const long after = ResidentBytes();
    Figure("store_append_rate", kMessages / secs, "messages/s");
    Figure("store_bytes_per_message", static_cast<double>(after - before) / kMessages, "bytes");
    Figure("raw_bytes_per_message", raw / kMessages, "bytes");

    // Random GotoRec and GetMsgText, as rows do when they paint.
    std::uniform_int_distribution<int32_t> rec(1, kMessages);
    std::vector<int32_t> order(4'000'000);
    for (auto& r : order) r = rec(rng);
    best = 1e9;
    for (int round = 0; round < 3; ++round) {
      const auto t0b = Clock::now();
      for (const int32_t r : order) {
        set.GotoRec(r);
        const std::string_view text = set.GetMsgText();
        checksum += static_cast<long>(text.size()) + text[0];
      }
      best = std::min(best, Seconds(t0b));
    }
    Figure("gotorec_text_ns", best * 1e9 / static_cast<double>(order.size()), "ns");
  }

  // A log file of 1,000,000 records read into a store.
  namespace fs = std::filesystem;
  char folder[] = "/tmp/zentrail-bench-XXXXXX";
  if (!mkdtemp(folder)) return 1;
  const fs::path path = fs::path(folder) / "bench.ztl";
  {
    std::ofstream out(path, std::ios::binary);
    std::string buffer;
    for (int i = 0; i < kMessages; ++i) {
      AppendLogRecordFromPacket(packets[i], buffer);
      if (buffer.size() > (4u << 20)) {
        out.write(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        buffer.clear();
      }
    }
    out.write(buffer.data(), static_cast<std::streamsize>(buffer.size()));
  }
  packets.clear();
  packets.shrink_to_fit();
  const double fileBytes = static_cast<double>(fs::file_size(path));
  best = 1e9;
  for (int round = 0; round < 3; ++round) {
    TZentrailMessageSet set;
    const auto t0 = Clock::now();
    TZentrailFileSource source;
    std::string error;
    if (!source.Open(path.string(), error)) {
      std::fprintf(stderr, "%s\n", error.c_str());
      return 1;
    }
    TZentrailLogReader reader(source);
    int32_t id = 0;
    while (reader.Next(view) == TZentrailRecordResult::Ok) set.AppendMessage(view, id++);
    best = std::min(best, Seconds(t0));
    if (id != kMessages) {
      std::fprintf(stderr, "read %d of %d records\n", id, kMessages);
      return 1;
    }
  }
  Figure("log_read_rate", kMessages / best, "messages/s");
  Figure("log_read_mbps", fileBytes / best / 1e6, "MB/s");
  fs::remove_all(folder);
  return checksum == 42 ? 2 : 0;  // keeps the measured work from being optimised away
}
