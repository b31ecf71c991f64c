// Reads the soak test's log file and says how many of the messages the clients had sent are in it:
// records, distinct messages, duplicates, and lost (sent and answered, but not in the file).
//   soak_check FILE CLIENTS COUNT
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "LogRecord.h"

using namespace zentrail;

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: soak_check FILE CLIENTS COUNT\n");
    return 2;
  }
  const int clients = std::atoi(argv[2]);
  const long count = std::atol(argv[3]);
  std::vector<std::vector<bool>> seen(static_cast<std::size_t>(clients), std::vector<bool>(static_cast<std::size_t>(count)));
  TZentrailFileSource source;
  std::string error;
  if (!source.Open(argv[1], error)) {
    std::fprintf(stderr, "soak_check: %s\n", error.c_str());
    return 1;
  }
  TZentrailLogReader reader(source);
  TZentrailPacketView view;
  long records = 0, distinct = 0, duplicates = 0, foreign = 0, invalid = 0;
  for (;;) {
    auto r = reader.Next(view);
    if (r == TZentrailRecordResult::End) break;
    if (r != TZentrailRecordResult::Ok) {
      ++invalid;
      if (!reader.Resumable()) break;
      continue;
    }
    ++records;
    std::string text(view.MsgText);
    int client = -1;
    long n = -1;
    if (std::sscanf(text.c_str(), "c%d %ld", &client, &n) != 2 || client < 0 || client >= clients || n < 0 || n >= count) {
      ++foreign;
      continue;
    }
    std::vector<bool>::reference slot = seen[static_cast<std::size_t>(client)][static_cast<std::size_t>(n)];
    if (slot) {
      ++duplicates;
    } else {
      slot = true;
      ++distinct;
    }
  }
  long expected = static_cast<long>(clients) * count;
  std::printf("records %ld distinct %ld duplicates %ld other %ld invalid %ld lost %ld\n", records, distinct,
              duplicates, foreign, invalid, expected - distinct);
  return 0;
}
