#include "ZTFileHandoff.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <sys/socket.h>
#include <unistd.h>

#include "ZTChannel.h"

namespace zentrail {

namespace {

// A path longer than this is no path; the connection that sends it is dropped.
constexpr qint64 kMaxLine = 64 * 1024;

}  // namespace

std::string HandoffSocketPath(std::string& error) {
  const std::string folder = GetRuntimeFolder(error);
  return folder.empty() ? std::string() : folder + "/" + ztHandoffSocketName;
}

bool HandFileToRunningViewer(const std::string& file, std::string& error) {
  const std::string path = HandoffSocketPath(error);
  if (path.empty()) return false;
  const int fd = ConnectUnixSocket(path, error);
  if (fd < 0) return false;
  const std::string line = file + "\n";
  const bool written = WriteAll(fd, line.data(), line.size(), error);
  ::shutdown(fd, SHUT_WR);
  ::close(fd);
  return written;
}

TZTFileHandoffServer::TZTFileHandoffServer(THandler handler, QObject* parent)
    : QObject(parent), FHandler(std::move(handler)) {}

TZTFileHandoffServer::~TZTFileHandoffServer() { Close(); }

bool TZTFileHandoffServer::Listen(const std::string& path, std::string& error) {
  Close();
  const int fd = ListenUnixSocket(path, error);
  if (fd < 0) return false;
  FServer = new QLocalServer(this);
  if (!FServer->listen(static_cast<qintptr>(fd))) {
    error = "cannot listen on " + path + ": " + FServer->errorString().toStdString();
    delete FServer;
    FServer = nullptr;
    ::close(fd);
    ::unlink(path.c_str());
    return false;
  }
  FPath = path;
  connect(FServer, &QLocalServer::newConnection, this, [this] { Accept(); });
  return true;
}

bool TZTFileHandoffServer::IsListening() const { return FServer && FServer->isListening(); }

void TZTFileHandoffServer::Close() {
  if (!FServer) return;
  FServer->close();
  delete FServer;
  FServer = nullptr;
  ::unlink(FPath.c_str());
  FPath.clear();
}

void TZTFileHandoffServer::Accept() {
  while (QLocalSocket* socket = FServer->nextPendingConnection()) {
    // The runtime folder is private already; a peer of another user is refused all the same.
    if (!PeerIsSameUser(static_cast<int>(socket->socketDescriptor()))) {
      socket->abort();
      socket->deleteLater();
      continue;
    }
    connect(socket, &QLocalSocket::readyRead, this, [this, socket] { ReadFrom(socket); });
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    ReadFrom(socket);
  }
}

void TZTFileHandoffServer::ReadFrom(QLocalSocket* socket) {
  if (!socket->canReadLine()) {
    if (socket->bytesAvailable() > kMaxLine) socket->abort();
    return;
  }
  QByteArray line = socket->readLine(kMaxLine);
  socket->disconnectFromServer();
  if (line.endsWith('\n')) line.chop(1);
  if (line.isEmpty()) return;
  // Handed on after this returns: loading may ask questions and run for a while.
  const QString file = QString::fromUtf8(line);
  QMetaObject::invokeMethod(this, [this, file] { FHandler(file); }, Qt::QueuedConnection);
}

}  // namespace zentrail
