#pragma once
// Finding and starting the dispatcher program. Internal to the client library.

#include <chrono>
#include <string>

namespace zentrail {

// The dispatcher program: the registry value "Dispatcher", else "zentrail-dispatcher" beside the
// running executable, else in the folders of PATH. Empty when no such file exists.
std::string FindDispatcherExecutable();

// Starts the dispatcher if a program is found and waits until socketPath answers: at most 10 s,
// and not past the deadline.
bool StartDispatcher(const std::string& socketPath,
                     std::chrono::steady_clock::time_point deadline = std::chrono::steady_clock::time_point::max());

// The folder of the running executable, without a trailing "/".
std::string RunningExecutableFolder();

}  // namespace zentrail
