#include "ZTSignalCloser.h"

#include <QSocketNotifier>
#include <QWidget>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace zentrail {
namespace {

int SignalPipe[2] = {-1, -1};

extern "C" void OnCloseSignal(int signalNumber) {
  int saved = errno;
  unsigned char byte = static_cast<unsigned char>(signalNumber);
  // Async-signal-safe; a full pipe already holds a request to close.
  [[maybe_unused]] ssize_t n = ::write(SignalPipe[1], &byte, 1);
  errno = saved;
}

}  // namespace

TZTSignalCloser::TZTSignalCloser(QWidget* window) : QObject(window), FWindow(window) {
  if (SignalPipe[0] >= 0) return;  // one closer per process
  if (::pipe2(SignalPipe, O_CLOEXEC | O_NONBLOCK) != 0) {
    SignalPipe[0] = SignalPipe[1] = -1;
    return;
  }
  FNotifier = new QSocketNotifier(SignalPipe[0], QSocketNotifier::Read, this);
  connect(FNotifier, &QSocketNotifier::activated, this, [this] { PipeReadable(); });
  struct sigaction action {};
  action.sa_handler = OnCloseSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGTERM, &action, nullptr);
  // A viewer started in the background of a shell inherits an ignored SIGINT; the terminal's
  // Ctrl+C is not meant for it then, so that stays as it is.
  struct sigaction previous {};
  ::sigaction(SIGINT, nullptr, &previous);
  FHandlesInterrupt = previous.sa_handler != SIG_IGN;
  if (FHandlesInterrupt) ::sigaction(SIGINT, &action, nullptr);
}

TZTSignalCloser::~TZTSignalCloser() {
  if (!FNotifier) return;
  struct sigaction action {};
  action.sa_handler = SIG_DFL;
  sigemptyset(&action.sa_mask);
  ::sigaction(SIGTERM, &action, nullptr);
  if (FHandlesInterrupt) ::sigaction(SIGINT, &action, nullptr);
  FNotifier->setEnabled(false);
  ::close(SignalPipe[0]);
  ::close(SignalPipe[1]);
  SignalPipe[0] = SignalPipe[1] = -1;
}

void TZTSignalCloser::PipeReadable() {
  unsigned char bytes[16];
  int last = 0;
  ssize_t n;
  while ((n = ::read(SignalPipe[0], bytes, sizeof bytes)) > 0) last = bytes[n - 1];
  if (last == 0) return;
  emit SignalReceived(last);
  if (FWindow) FWindow->close();
}

}  // namespace zentrail
