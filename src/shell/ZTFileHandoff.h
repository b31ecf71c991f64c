#pragma once
// A second start of the viewer hands the log file named on its command line to the viewer that
// already runs, which loads it as if the file had been dropped on its window. The running viewer
// listens on "<runtime>/viewer-open"; a start that finds the single-instance lock taken connects,
// writes the file's absolute path in UTF-8 ended by a line feed, and leaves at once without
// waiting for an answer, so that a viewer busy with a long load never holds it up.

#include <QObject>
#include <QString>
#include <functional>
#include <string>

class QLocalServer;
class QLocalSocket;

namespace zentrail {

inline constexpr const char* ztHandoffSocketName = "viewer-open";

// <runtime>/viewer-open; empty with error filled when the runtime folder is refused.
std::string HandoffSocketPath(std::string& error);

// The second start's side, Qt-free: true when the path was written to a listening viewer.
bool HandFileToRunningViewer(const std::string& file, std::string& error);

class TZTFileHandoffServer : public QObject {
  Q_OBJECT
 public:
  using THandler = std::function<void(const QString& file)>;
  TZTFileHandoffServer(THandler handler, QObject* parent = nullptr);
  ~TZTFileHandoffServer() override;

  // False with a readable error when the socket cannot be made; a socket left by a viewer that
  // ended without cleaning up is replaced.
  bool Listen(const std::string& path, std::string& error);
  void Close();
  bool IsListening() const;

 private:
  void Accept();
  void ReadFrom(QLocalSocket* socket);

  THandler FHandler;
  QLocalServer* FServer = nullptr;
  std::string FPath;
};

}  // namespace zentrail
