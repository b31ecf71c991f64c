// zentrail-send: sends a message to the Zentrail viewer (or any destination) from a shell.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

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
      "  --help             this text\n"
      "\n"
      "Exit status: 0 when every message was taken, 1 when one was not, 2 for wrong arguments.\n",
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

  auto sendOne = [&](const std::string& t) {
    if (!log.Enabled()) return false;
    // Details of a plain text message are never shown; as a text file they get the Text inspector.
    return log.InternalSend(type, details.empty() ? ztmText : ztmTextFile, {}, details, t) != 0;
  };
  int status = 0;
  if (lines) {
    std::string line;
    while (std::getline(std::cin, line)) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      if (!sendOne(line)) {
        status = 1;
        break;
      }
    }
  } else if (!sendOne(text)) {
    status = 1;
  }
  if (status != 0) std::fprintf(stderr, "zentrail-send: the message was not taken (is a dispatcher available?)\n");
  log.SetDestination(nullptr);
  return status;
}
