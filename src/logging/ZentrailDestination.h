#pragma once
// Where the messages of a logger go: a set of six typed parts that travels to the dispatcher only
// as text, for example "File[Path=/home/me/Logs/app.ztl;MaxSize=1024],Viewer".

#include <cstdint>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zentrail {

class TZentrailDestination;
class TZentrailLogger;

// The one exception an application sees from the logging client.
class EZentrailInvalidDestination : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class TBaseDestination {
 public:
  explicit TBaseDestination(TZentrailDestination* owner, std::string destName)
      : FOwner(owner), FDestName(std::move(destName)) {}
  virtual ~TBaseDestination() = default;
  TBaseDestination(const TBaseDestination&) = delete;
  TBaseDestination& operator=(const TBaseDestination&) = delete;

  // Copies the settings of a part of the same class; a part of another class is ignored.
  virtual void Assign(const TBaseDestination& source);
  // Throws EZentrailInvalidDestination when an active part lacks what it needs.
  virtual void Validate() {}
  virtual void Clear() { SetActive(false); }
  virtual void Changed();
  // Throws EZentrailInvalidDestination for a name that the part does not know.
  virtual void SetOption(std::string_view name, std::string_view value);
  // Empty for an inactive part.
  virtual std::string AsString() const { return {}; }

  bool Active() const { return FActive; }
  void SetActive(bool value);
  const std::string& DestName() const { return FDestName; }

 protected:
  [[noreturn]] void RaiseUnknownOption(std::string_view name) const;
  [[noreturn]] void RaiseMissing(std::string_view parameter) const;
  template <class T>
  void Set(T& field, const T& value) {
    if (field != value) {
      field = value;
      Changed();
    }
  }

  TZentrailDestination* FOwner;
  bool FActive = false;
  std::string FDestName;
};

class TViewerDestination : public TBaseDestination {
 public:
  explicit TViewerDestination(TZentrailDestination* owner) : TBaseDestination(owner, "Viewer") {}
  std::string AsString() const override;
};

class TLogFileDestination : public TBaseDestination {
 public:
  explicit TLogFileDestination(TZentrailDestination* owner) : TBaseDestination(owner, "File") {}
  void Assign(const TBaseDestination& source) override;
  void Validate() override;
  void Clear() override;
  void SetOption(std::string_view name, std::string_view value) override;
  std::string AsString() const override;

  const std::string& FilePath() const { return FFilePath; }
  const std::string& FileName() const { return FFileName; }
  int32_t MaxSize() const { return FMaxSize; }
  int32_t MaxParts() const { return FMaxParts; }
  bool LogByDate() const { return FLogByDate; }
  const std::string& LogByDateFormat() const { return FLogByDateFormat; }
  bool Compressed() const { return FCompressed; }
  void SetFilePath(const std::string& v) { Set(FFilePath, v); }
  void SetFileName(const std::string& v) { Set(FFileName, v); }
  // Splits a full path at its last delimiter into FilePath and FileName.
  void SetPath(std::string_view path);
  void SetMaxSize(int32_t v) { Set(FMaxSize, v); }
  void SetMaxParts(int32_t v) { Set(FMaxParts, v); }
  void SetLogByDate(bool v) { Set(FLogByDate, v); }
  void SetLogByDateFormat(const std::string& v) { Set(FLogByDateFormat, v); }
  void SetCompressed(bool v) { Set(FCompressed, v); }

  // FilePath with its macro expanded and a trailing "/"; throws EZentrailInvalidDestination for an
  // unterminated "$(".
  std::string ExpandedFilePath() const;

 private:
  std::string FFilePath, FFileName;
  int32_t FMaxSize = 0, FMaxParts = 0;
  bool FLogByDate = false;
  std::string FLogByDateFormat = "yyyymmdd";
  bool FCompressed = false;
};

class TNetworkDestination : public TBaseDestination {
 public:
  TNetworkDestination(TZentrailDestination* owner, std::string destName, int32_t defaultPort)
      : TBaseDestination(owner, std::move(destName)), FDefaultPort(defaultPort), FPort(defaultPort) {}
  void Assign(const TBaseDestination& source) override;
  void Validate() override;
  void Clear() override;
  void SetOption(std::string_view name, std::string_view value) override;
  std::string AsString() const override;

  const std::string& Host() const { return FHost; }
  int32_t Port() const { return FPort; }
  const std::string& RemoteDestinationString() const { return FRemoteDestinationString; }
  bool Compressed() const { return FCompressed; }
  void SetHost(const std::string& v) { Set(FHost, v); }
  void SetPort(int32_t v) { Set(FPort, v); }
  void SetRemoteDestinationString(const std::string& v) { Set(FRemoteDestinationString, v); }
  void SetCompressed(bool v) { Set(FCompressed, v); }

 private:
  int32_t FDefaultPort;
  std::string FHost = "localhost";
  int32_t FPort;
  std::string FRemoteDestinationString = "Viewer";
  bool FCompressed = false;
};

class TTcpDestination : public TNetworkDestination {
 public:
  explicit TTcpDestination(TZentrailDestination* owner) : TNetworkDestination(owner, "TCP", 3434) {}
};

class TUdpDestination : public TNetworkDestination {
 public:
  explicit TUdpDestination(TZentrailDestination* owner) : TNetworkDestination(owner, "UDP", 3435) {}
};

class THttpDestination : public TBaseDestination {
 public:
  explicit THttpDestination(TZentrailDestination* owner) : TBaseDestination(owner, "HTTP") {}
  void Assign(const TBaseDestination& source) override;
  void Validate() override;
  void Clear() override;
  void SetOption(std::string_view name, std::string_view value) override;
  std::string AsString() const override;

  const std::string& URL() const { return FURL; }
  const std::string& Alias() const { return FAlias; }
  const std::string& ProxyServer() const { return FProxyServer; }
  int32_t ProxyPort() const { return FProxyPort; }
  const std::string& ProxyUsername() const { return FProxyUsername; }
  const std::string& ProxyPassword() const { return FProxyPassword; }
  void SetURL(const std::string& v) { Set(FURL, v); }
  void SetAlias(const std::string& v) { Set(FAlias, v); }
  void SetProxyServer(const std::string& v) { Set(FProxyServer, v); }
  void SetProxyPort(int32_t v) { Set(FProxyPort, v); }
  void SetProxyUsername(const std::string& v) { Set(FProxyUsername, v); }
  void SetProxyPassword(const std::string& v) { Set(FProxyPassword, v); }

 private:
  std::string FURL, FAlias, FProxyServer;
  int32_t FProxyPort = 0;
  std::string FProxyUsername, FProxyPassword;
};

class TAliasDestination : public TBaseDestination {
 public:
  explicit TAliasDestination(TZentrailDestination* owner) : TBaseDestination(owner, "Alias") {}
  void Assign(const TBaseDestination& source) override;
  void Validate() override;
  void Clear() override;
  void SetOption(std::string_view name, std::string_view value) override;
  std::string AsString() const override;

  const std::string& Name() const { return FName; }
  void SetName(const std::string& v) { Set(FName, v); }

 private:
  std::string FName;
};

class TZentrailDestination {
 public:
  TZentrailDestination();
  explicit TZentrailDestination(std::string_view text);
  ~TZentrailDestination();
  TZentrailDestination(const TZentrailDestination&) = delete;
  TZentrailDestination& operator=(const TZentrailDestination&) = delete;

  TViewerDestination& Viewer() { return FViewer; }
  TLogFileDestination& LogFile() { return FLogFile; }
  TTcpDestination& TCP() { return FTcp; }
  TUdpDestination& UDP() { return FUdp; }
  THttpDestination& HTTP() { return FHttp; }
  TAliasDestination& Alias() { return FAlias; }
  const TViewerDestination& Viewer() const { return FViewer; }
  const TLogFileDestination& LogFile() const { return FLogFile; }
  const TTcpDestination& TCP() const { return FTcp; }
  const TUdpDestination& UDP() const { return FUdp; }
  const THttpDestination& HTTP() const { return FHttp; }
  const TAliasDestination& Alias() const { return FAlias; }

  const std::string& Additional() const { return FAdditional; }
  void SetAdditional(const std::string& value);

  void Clear();
  void BeginUpdate() { ++FUpdateCount; }
  void EndUpdate();
  void Changed();
  void Assign(const TZentrailDestination& source);
  void Validate();

  // The hash of AsString(), kept up to date by Changed().
  int32_t DestinationCode() const { return FDestinationCode; }

  std::string AsString() const;
  // Parses the text form; throws EZentrailInvalidDestination on an unknown type or option. After a
  // failure the object keeps what was parsed and must be cleared or given new text before use.
  void SetAsString(std::string_view text);

 private:
  friend class TZentrailLogger;
  TBaseDestination* Parts(int index);
  void ParseText(std::string_view text);
  void Link(TZentrailLogger* logger);
  void Unlink(TZentrailLogger* logger);

  TViewerDestination FViewer{this};
  TLogFileDestination FLogFile{this};
  TTcpDestination FTcp{this};
  TUdpDestination FUdp{this};
  THttpDestination FHttp{this};
  TAliasDestination FAlias{this};
  std::string FAdditional;
  int32_t FUpdateCount = 0;
  int32_t FDestinationCode = 0;
  // Told when this object goes away. Loggers of several threads may share one destination and
  // link or unlink at any time.
  std::mutex FLinkLock;
  std::vector<TZentrailLogger*> FLinkedLoggers;
};

// Bob Jenkins's lookup3 hash ("hashlittle") of the bytes with the given initial value.
uint32_t BobJenkinsHash(const void* data, std::size_t length, uint32_t initval);
// The hash of a text over its UTF-16 little-endian bytes, 0 for an empty text.
int32_t DestinationTextHash(std::string_view utf8);

}  // namespace zentrail
