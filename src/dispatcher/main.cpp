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
      "Usage: zentrail-dispatcher [--tcp] [--tcp-port N] [--udp] [--udp-port N] [--listen ADDRESS]\n"
      "                           [--allow NETWORK[,NETWORK...]] [--idle-timeout-ms N] [--verbose]\n"
      "\n"
      "Takes messages from Zentrail logging clients on the socket <runtime>/dispatcher and hands\n"
      "each to the destinations its logger announced:\n"
      "  Viewer   forwarded to the viewer's socket <runtime>/viewer (dropped while none runs)\n"
      "  File     appended to the log file before the client is answered; MaxSize is in KiB,\n"
      "           MaxParts is the number of rotated parts kept (name.1.ztl is the newest),\n"
      "           LogByDate puts the date into the name, Compressed gzips rotated parts\n"
      "  TCP      forwarded to a remote dispatcher\n"
      "  UDP      one datagram per message to a remote dispatcher's UDP port (may be lost)\n"
      "  HTTP     posted in batches of log records to the URL, tried again while it fails\n"
      "  Alias    the destination named in the registry file under\n"
      "           [Software\\Orvan\\Zentrail\\5.0\\Aliases] as NAME=destination text\n"
      "\n"
      "  --tcp              also listen on TCP (frames as on the socket)\n"
      "  --tcp-port N       TCP port, default 3434; 0 picks a free one and writes it to\n"
      "                     <runtime>/dispatcher-tcp-port\n"
      "  --udp              also take datagrams on UDP, one frame each, unanswered\n"
      "  --udp-port N       UDP port, default 3435; 0 picks a free one (<runtime>/dispatcher-udp-port)\n"
      "  --listen ADDRESS   IPv4 or IPv6 address for TCP and UDP, default 127.0.0.1; any other\n"
      "                     than a loopback address needs --allow\n"
      "  --allow NETWORKS   peers whose frames are taken, e.g. 10.0.0.0/8,192.168.1.7,::1; frames\n"
      "                     from others are answered 0 and counted. Default: loopback only\n"
      "  --idle-timeout-ms N  let go of a peer that stops within a frame, or connects over TCP\n"
      "                     and sends nothing, after N ms (default 30000)\n"
      "  --verbose          say what happens on standard error\n"
      "  --help, --version  this text, or the version\n"
      "\n"
      "The runtime folder is $ZENTRAIL_RUNTIME_DIR, else $XDG_RUNTIME_DIR/zentrail, else\n"
      "/tmp/zentrail-<uid>. SIGTERM or SIGINT ends the dispatcher after it has flushed its files.\n"
      "Started by a service manager with a listening socket (LISTEN_FDS, as systemd's socket\n"
      "activation passes it), it takes that socket instead of making its own.\n",
      out);
}

}  // namespace

int main(int argc, char** argv) {
  zentrail::TDispatcherOptions options;
  bool listenGiven = false;
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
    } else if (arg == "--version") {
      std::puts("zentrail-dispatcher (Zentrail) " ZENTRAIL_VERSION_TEXT);
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
    } else if (arg == "--udp") {
      options.Udp = true;
    } else if (arg == "--udp-port") {
      std::string v = value();
      char* end = nullptr;
      long port = std::strtol(v.c_str(), &end, 10);
      if (!end || *end || port < 0 || port > 65535) {
        std::fprintf(stderr, "zentrail-dispatcher: not a port: %s\n", v.c_str());
        return 2;
      }
      options.Udp = true;
      options.UdpPort = static_cast<int>(port);
    } else if (arg == "--listen" || arg == "--tcp-bind") {
      options.Listen = value();
      if (arg == "--tcp-bind") options.Tcp = true;
      listenGiven = true;
    } else if (arg == "--allow") {
      std::string list = value();
      std::size_t start = 0;
      while (start <= list.size()) {
        std::size_t comma = list.find(',', start);
        std::string item = list.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        zentrail::TNetworkRange range;
        if (!zentrail::ParseNetworkRange(item, range)) {
          std::fprintf(stderr, "zentrail-dispatcher: not a network for --allow: '%s'\n", item.c_str());
          return 2;
        }
        options.Allow.push_back(range);
        if (comma == std::string::npos) break;
        start = comma + 1;
      }
    } else if (arg == "--idle-timeout-ms") {
      std::string v = value();
      char* end = nullptr;
      long ms = std::strtol(v.c_str(), &end, 10);
      if (!end || *end || ms < 1 || ms > 86400000) {
        std::fprintf(stderr, "zentrail-dispatcher: not a time in milliseconds: %s\n", v.c_str());
        return 2;
      }
      options.IdleTimeoutMs = static_cast<int>(ms);
    } else if (arg == "--verbose" || arg == "-v") {
      options.Verbose = true;
    } else {
      std::fprintf(stderr, "zentrail-dispatcher: unknown argument %s\n", arg.c_str());
      Usage(stderr);
      return 2;
    }
  }
  if (listenGiven && !zentrail::IsLoopbackAddress(options.Listen) && options.Allow.empty()) {
    std::fprintf(stderr,
                 "zentrail-dispatcher: listening on %s, which is not a loopback address, needs --allow with the\n"
                 "networks whose frames are to be taken (for example --allow 192.168.1.0/24)\n",
                 options.Listen.c_str());
    return 2;
  }
  zentrail::TDispatcher dispatcher(options);
  return dispatcher.Run();
}
