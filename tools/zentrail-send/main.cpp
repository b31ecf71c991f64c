// zentrail-send: sends a message to the Zentrail viewer (or any destination) from a shell.
#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>

#include "ZentrailLogging.h"

namespace {

void Usage(FILE* out) {
  std::fputs(
      "Usage: zentrail-send [options] TEXT\n"
      "       zentrail-send [options] --lines       (each line of standard input is a message)\n"
      "\n"
      "  --type T           info (default), warning, error, note, reminder, checkpoint,\n"
      "                     enter, exit, separator, clear, scratchpad, level1..level7, or a number\n"
      "  --category C       category of the message\n"
      "  --app NAME         application name shown for the message (default: zentrail-send)\n"
      "  --details-file F   the file's contents become the message's details\n"
      "  --dest TEXT        destination, e.g. 'Viewer' or 'File[Path=/tmp/app.ztl]' (default Viewer)\n"
      "  --tcp HOST[:PORT]  send to a dispatcher over TCP instead of the local one\n"
      "  --retry SECONDS    when a message is not taken, try it again for up to SECONDS (for a\n"
      "                     dispatcher that is being restarted) before giving up\n"
      "  --help             this text\n"
      "  --version          the version\n"
      "\n"
      "Each message waits at most ZENTRAIL_TIMEOUT_MS milliseconds (default 5000) for its answer.\n"
      "Exit status: 0 when every message was taken, 1 when one was not, 2 for wrong arguments.\n"
      "With --lines, a failure names how many lines were taken and the first line that was not,\n"
      "so that `tail -n +N` can resume; that line may still have reached the log if it timed out.\n",
      out);
}

bool ParseType(std::string name, int32_t& type) {
  for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  static const struct {
    const char* Name;
    int32_t Code;
  } kTypes[] = {{"info", zentrail::ztmInfo},         {"text", zentrail::ztmInfo},
                {"warning", zentrail::ztmWarning},   {"error", zentrail::ztmError},
                {"checkpoint", zentrail::ztmCheckPoint}, {"note", zentrail::ztmNote},
                {"enter", zentrail::ztmEnterMethod}, {"exit", zentrail::ztmExitMethod},
                {"separator", zentrail::ztmSeparator}, {"clear", zentrail::ztmClear},
                {"scratchpad", zentrail::ztmScratchPad}, {"reminder", zentrail::ztmReminder},
                {"level1", zentrail::ztmLevel1},     {"level2", zentrail::ztmLevel2},
                {"level3", zentrail::ztmLevel3},     {"level4", zentrail::ztmLevel4},
                {"level5", zentrail::ztmLevel5},     {"level6", zentrail::ztmLevel6},
                {"level7", zentrail::ztmLevel7},     {"exception", zentrail::ztmException},
                {"resetseparator", zentrail::ztmResetSeparator}};
  for (const auto& t : kTypes)
    if (name == t.Name) {
      type = t.Code;
      return true;
    }
  char* end = nullptr;
  long n = std::strtol(name.c_str(), &end, 10);
  if (!name.empty() && end && *end == '\0' && n >= 0 && n <= 0x7FFFFFFF && !(n >= 90 && n <= 99)) {
    type = static_cast<int32_t>(n);
    return true;
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  using namespace zentrail;
  int32_t type = ztmInfo;
  std::string category, app = "zentrail-send", detailsFile, dest, tcp, text;
  bool lines = false, haveText = false;
  double retrySeconds = 0;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    auto value = [&]() -> std::string {
      if (i + 1 >= argc) {
        std::fprintf(stderr, "zentrail-send: %s needs a value\n", arg.c_str());
        std::exit(2);
      }
      return argv[++i];
    };
    if (arg == "--help" || arg == "-h") {
      Usage(stdout);
      return 0;
    } else if (arg == "--version") {
      std::puts("zentrail-send (Zentrail) " ZENTRAIL_VERSION_TEXT);
      return 0;
    } else if (arg == "--type") {
      std::string t = value();
      if (!ParseType(t, type)) {
        std::fprintf(stderr, "zentrail-send: unknown message type: %s\n", t.c_str());
        return 2;
      }
    } else if (arg == "--category") {
      category = value();
    } else if (arg == "--app") {
      app = value();
    } else if (arg == "--details-file") {
      detailsFile = value();
    } else if (arg == "--dest") {
      dest = value();
    } else if (arg == "--tcp") {
      tcp = value();
    } else if (arg == "--retry") {
      std::string v = value();
      char* end = nullptr;
      retrySeconds = std::strtod(v.c_str(), &end);
      if (v.empty() || !end || *end || !(retrySeconds >= 0) || retrySeconds > 1e6) {
        std::fprintf(stderr, "zentrail-send: not a number of seconds: %s\n", v.c_str());
        return 2;
      }
    } else if (arg == "--lines") {
      lines = true;
    } else if (arg == "--") {
      if (i + 1 < argc) {
        text = argv[++i];
        haveText = true;
      }
    } else if (arg.size() > 1 && arg[0] == '-') {
      std::fprintf(stderr, "zentrail-send: unknown option %s\n", arg.c_str());
      Usage(stderr);
      return 2;
    } else if (!haveText) {
      text = arg;
      haveText = true;
    } else {
      std::fprintf(stderr, "zentrail-send: more than one text given; quote the message\n");
      return 2;
    }
  }
  if (lines == haveText) {
    std::fprintf(stderr, lines ? "zentrail-send: --lines takes no TEXT\n" : "zentrail-send: no TEXT given\n");
    Usage(stderr);
    return 2;
  }

  std::string details;
  if (!detailsFile.empty()) {
    std::ifstream in(detailsFile, std::ios::binary);
    if (!in) {
      std::fprintf(stderr, "zentrail-send: cannot read %s: %s\n", detailsFile.c_str(), std::strerror(errno));
      return 2;
    }
    std::ostringstream s;
    s << in.rdbuf();
    details = s.str();
  }

  ZentrailManager.SetAppName(app);
  TZentrailDestination destination;
  TZentrailLogger& log = ZentrailLog;
  log.SetCategory(category);
  if (!dest.empty()) {
    try {
      destination.SetAsString(dest);
      destination.Validate();
    } catch (const EZentrailInvalidDestination& e) {
      std::fprintf(stderr, "zentrail-send: %s\n", e.what());
      return 2;
    }
    log.SetDestination(&destination);
  }
  if (!tcp.empty()) {
    std::string host = tcp;
    uint16_t port = 3434;
    if (auto colon = tcp.rfind(':'); colon != std::string::npos) {
      host = tcp.substr(0, colon);
      char* end = nullptr;
      long n = std::strtol(tcp.c_str() + colon + 1, &end, 10);
      if (!end || *end || n < 1 || n > 65535) {
        std::fprintf(stderr, "zentrail-send: not a port: %s\n", tcp.c_str() + colon + 1);
        return 2;
      }
      port = static_cast<uint16_t>(n);
    }
    log.ConnectUsingTcp(host, port);
  }

  // A failure switches the logger off; a retry switches it on again for the next attempt.
  // Details of a plain text message are never shown; as a text file they get the Text inspector.
  const int32_t content = details.empty() ? ztmText : ztmTextFile;
  auto sendOne = [&](const std::string& t, unsigned long lineNumber) {
    if (log.Enabled() && log.InternalSend(type, content, {}, details, t) != 0) return true;
    if (retrySeconds <= 0) return false;
    using Clock = std::chrono::steady_clock;
    const auto giveUp = Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(retrySeconds));
    if (lineNumber > 0)
      std::fprintf(stderr, "zentrail-send: line %lu was not taken; trying again for up to %g s\n", lineNumber, retrySeconds);
    else
      std::fprintf(stderr, "zentrail-send: the message was not taken; trying again for up to %g s\n", retrySeconds);
    auto pause = std::chrono::milliseconds(50);
    while (Clock::now() < giveUp) {
      std::this_thread::sleep_for(std::min<Clock::duration>(pause, giveUp - Clock::now()));
      pause = std::min(pause * 2, std::chrono::milliseconds(1000));
      log.SetEnabled(true);
      if (log.InternalSend(type, content, {}, details, t) != 0) return true;
    }
    return false;
  };
  int status = 0;
  if (lines) {
    std::string line;
    unsigned long taken = 0;
    while (std::getline(std::cin, line)) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      if (!sendOne(line, taken + 1)) {
        status = 1;
        // Fixed wording, so that a script can read where to resume.
        std::fprintf(stderr, "zentrail-send: %lu lines taken; first line not taken: line %lu: %s\n", taken,
                     taken + 1, line.c_str());
        break;
      }
      ++taken;
    }
  } else if (!sendOne(text, 0)) {
    status = 1;
  }
  if (status != 0) std::fprintf(stderr, "zentrail-send: the message was not taken (is a dispatcher available?)\n");
  log.SetDestination(nullptr);
  return status;
}
