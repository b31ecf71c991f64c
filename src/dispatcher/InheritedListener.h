#pragma once
// A listening socket handed over by a service manager (systemd's socket activation and the
// LISTEN_PID / LISTEN_FDS convention it shares with other managers), so that the dispatcher can be
// started by the first client that connects rather than beforehand.

#include <string>

namespace zentrail {

// The socket passed to this process, checked to be a listening Unix stream socket bound to
// expectedPath, the path clients connect to. handedOver is false when no socket was passed to this
// process; then the result is -1 and the caller makes its own. When one was passed but cannot be
// used, the result is -1 and error says why. The variables are removed from the environment either
// way, so that nothing this process starts takes them as its own.
int TakeInheritedListener(const std::string& expectedPath, bool& handedOver, std::string& error);

}  // namespace zentrail
