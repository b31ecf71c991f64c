#pragma once
// SIGTERM and SIGINT close the main window by the ordinary close path, so that a viewer stopped
// from a terminal or by the session manager writes its settings as at a normal exit. The handler
// only writes a byte to a pipe; the event loop reads it and closes the window.

#include <QObject>
#include <QPointer>

class QSocketNotifier;
class QWidget;

namespace zentrail {

class TZTSignalCloser : public QObject {
  Q_OBJECT
 public:
  explicit TZTSignalCloser(QWidget* window);
  ~TZTSignalCloser() override;
  bool Installed() const { return FNotifier != nullptr; }

 signals:
  void SignalReceived(int signalNumber);

 private:
  void PipeReadable();
  QPointer<QWidget> FWindow;
  QSocketNotifier* FNotifier = nullptr;
  bool FHandlesInterrupt = false;
};

}  // namespace zentrail
