// ztlog: reads Zentrail log files in a terminal or a script.
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "LogDump.h"

namespace {

constexpr const char* kUsage =
    "usage: ztlog dump [--json] [--strict] FILE...\n"
    "       ztlog --help | --version\n"
    "\n"
    "  dump          print one line per record: number, date and time, type, content,\n"
    "                process id, thread, application, category and text (tab-separated,\n"
    "                control characters escaped as \\t \\n \\r \\xNN)\n"
    "  --json        print one JSON object per record with every field\n"
    "  --strict      no search: report each unknown tag (one per four bytes) and each bad\n"
    "                record, and stop at the first record whose length cannot be trusted\n"
    "\n"
    "A damaged stretch of a log is skipped: reading goes on at the next record that decodes\n"
    "completely. Each stretch is reported on standard error with its start and end offsets,\n"
    "the bytes skipped and the reason, followed by a summary. The exit status is 1 when\n"
    "anything was skipped or a file could not be read, 2 on a usage error, else 0.\n";

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  if (argc < 2 || !std::strcmp(argv[1], "--help") || !std::strcmp(argv[1], "-h") ||
      !std::strcmp(argv[1], "help")) {
    std::cout << kUsage;
    return argc < 2 ? 2 : 0;
  }
  if (!std::strcmp(argv[1], "--version")) {
    std::cout << "ztlog (Zentrail) " ZENTRAIL_VERSION_TEXT "\n";
    return 0;
  }
  if (std::strcmp(argv[1], "dump") != 0) {
    std::cerr << "ztlog: unknown command \"" << argv[1] << "\"\n" << kUsage;
    return 2;
  }
  zentrail::ztlog::Format format = zentrail::ztlog::Format::Lines;
  zentrail::ztlog::Reading reading = zentrail::ztlog::Reading::Salvage;
  std::vector<std::string> files;
  bool options = true;
  for (int i = 2; i < argc; ++i) {
    const std::string arg = argv[i];
    if (options && arg == "--json") {
      format = zentrail::ztlog::Format::Json;
    } else if (options && arg == "--strict") {
      reading = zentrail::ztlog::Reading::Strict;
    } else if (options && arg == "--") {
      options = false;
    } else if (options && arg.size() > 1 && arg[0] == '-') {
      std::cerr << "ztlog: unknown option \"" << arg << "\"\n" << kUsage;
      return 2;
    } else {
      files.push_back(arg);
    }
  }
  if (files.empty()) {
    std::cerr << "ztlog: no log file named\n" << kUsage;
    return 2;
  }
  bool problems = false;
  for (const auto& file : files)
    problems |= zentrail::ztlog::DumpFile(file, format, std::cout, std::cerr, reading).Problems > 0;
  std::cout.flush();
  return problems ? 1 : 0;
}
