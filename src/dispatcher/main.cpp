// zentrail-dispatcher: forwards the messages of logging clients to the viewer, log files and
// remote dispatchers.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Dispatcher.h"

namespace {

void Usage(FILE* out) {
  std::fputs(
      "Usage: zentrail-dispatcher [--tcp] [--tcp-port N] [--tcp-bind ADDRESS] [--verbose]\n"
      "\n"
      "Takes messages from Zentrail logging clients on the socket <runtime>/dispatcher and hands\n"
      "each to the destinations its logger announced:\n"
      "  Viewer   forwarded to the viewer's socket <runtime>/viewer (dropped while none runs)\n"
      "  File     appended to the log file before the client is answered; MaxSize is in KiB,\n"
      "           MaxParts is the number of rotated parts kept (name.1.ztl is the newest),\n"
      "           LogByDate puts the date into the name, Compressed gzips rotated parts\n"
      "  TCP      forwarded to a remote dispatcher\n"
      "\n"
      "  --tcp              also listen on TCP (frames as on the socket)\n"
      "  --tcp-port N       TCP port, default 3434; 0 picks a free one and writes it to\n"
      "                     <runtime>/dispatcher-tcp-port\n"
      "  --tcp-bind ADDRESS IPv4 address to listen on, default 127.0.0.1\n"
      "  --verbose          say what happens on standard error\n"
      "\n"
      "The runtime folder is $ZENTRAIL_RUNTIME_DIR, else $XDG_RUNTIME_DIR/zentrail, else\n"
      "/tmp/zentrail-<uid>. SIGTERM or SIGINT ends the dispatcher after it has flushed its files.\n",
      out);
}

}  // namespace

int main(int argc, char** argv) {
  zentrail::TDispatcherOptions options;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    auto value = [&]() -> std::string {
      if (i + 1 >= argc) {
        std::fprintf(stderr, "zentrail-dispatcher: %s needs a value\n", arg.c_str());
        std::exit(2);
      }
      return argv[++i];
    };
    if (arg == "--help" || arg == "-h") {
      Usage(stdout);
      return 0;
    } else if (arg == "--tcp") {
      options.Tcp = true;
    } else if (arg == "--tcp-port") {
      std::string v = value();
      char* end = nullptr;
      long port = std::strtol(v.c_str(), &end, 10);
      if (!end || *end || port < 0 || port > 65535) {
        std::fprintf(stderr, "zentrail-dispatcher: not a port: %s\n", v.c_str());
        return 2;
      }
      options.Tcp = true;
      options.TcpPort = static_cast<int>(port);
    } else if (arg == "--tcp-bind") {
      options.Tcp = true;
      options.TcpBind = value();
    } else if (arg == "--verbose" || arg == "-v") {
      options.Verbose = true;
    } else {
      std::fprintf(stderr, "zentrail-dispatcher: unknown argument %s\n", arg.c_str());
      Usage(stderr);
      return 2;
    }
  }
  zentrail::TDispatcher dispatcher(options);
  return dispatcher.Run();
}
