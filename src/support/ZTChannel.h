#pragma once
// The local message channel: a Unix-domain stream socket per user, carrying frames of a 32-bit
// tag, a 32-bit length and that many bytes (both integers big-endian), each answered by one
// big-endian 32-bit reply (1 taken, 0 refused). The same framing runs over TCP to a dispatcher.
// Qt-free, so the logging client, the dispatcher and the tools can use it as well as the viewer.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zentrail {

// Runtime folder: $ZENTRAIL_RUNTIME_DIR, else $XDG_RUNTIME_DIR/zentrail, else /tmp/zentrail-<uid>;
// created with mode 0700; a folder owned by another user or open to group/others is refused.
// Returns empty and fills error with a clear text on refusal.
std::string GetRuntimeFolder(std::string& error);
std::string ViewerSocketPath(std::string& error);      // <runtime>/viewer
std::string DispatcherSocketPath(std::string& error);  // <runtime>/dispatcher

// Makes the folder (and missing parents) if needed and checks that it is a private folder of the
// effective user: a directory, owned by geteuid(), with no group or other permission bits.
// On refusal returns false with an error that names the folder.
bool EnsurePrivateFolder(const std::string& folder, std::string& error);

inline constexpr uint32_t ztMaxFrameSize = 64u * 1024 * 1024;
inline constexpr uint16_t ztDispatcherTcpPort = 3434;
inline constexpr std::size_t ztFrameHeaderSize = 8;

// The moment a bounded call gives up. TZTDeadline::max() is no limit.
using TZTDeadline = std::chrono::steady_clock::time_point;
inline constexpr TZTDeadline ztNoDeadline = TZTDeadline::max();
// A deadline timeoutMs from now; 0 or less gives no limit.
TZTDeadline DeadlineIn(int timeoutMs);
// What a call bounded by a deadline returns when the deadline passed first.
inline constexpr int ztTimedOut = -2;

// Blocking client side (used by the logging client, zentrail-send, benchmarks, tests):
int ConnectUnixSocket(const std::string& path, std::string& error);  // -1 on failure, CLOEXEC
// The same, given up at the deadline (a server that is stopped can leave its backlog full).
int ConnectUnixSocket(const std::string& path, TZTDeadline deadline, std::string& error);
// Connects within timeoutMs (0 or less: no limit) and returns a blocking socket with TCP_NODELAY.
int ConnectTcp(const std::string& host, uint16_t port, int timeoutMs, std::string& error);

// Writes tag, length (both big-endian) and bytes, then waits for the 32-bit big-endian reply.
// Returns 1 or 0 as answered, or -1 on a transport failure (error filled). Handles EINTR and
// partial writes; never raises SIGPIPE (MSG_NOSIGNAL). A payload above ztMaxFrameSize is not sent
// at all: the receiver would refuse it, so the call answers 0 itself and the connection stays
// usable. A reply other than 0 or 1 is a protocol failure (-1).
int SendFrameAndWaitReply(int fd, uint32_t tag, std::string_view payload, std::string& error);
// The same, bounded: ztTimedOut when the frame could not be written or the reply did not come
// before the deadline. The connection is then in the middle of an exchange and must be closed.
int SendFrameAndWaitReply(int fd, uint32_t tag, std::string_view payload, TZTDeadline deadline,
                          std::string& error);
bool WriteAll(int fd, const void* data, std::size_t n, std::string& error);
bool WriteReply(int fd, uint32_t reply, std::string& error);
// The same without ever waiting: a server must not stall on a client that sends frames without
// reading its replies. False (and the caller drops the client) when the reply does not fit now.
bool WriteReplyNow(int fd, uint32_t reply, std::string& error);

// Reads exactly n bytes (blocking; a non-blocking socket is waited on). False on end of stream or
// error; an end of stream before the first byte gives the error text "connection closed".
bool ReadAll(int fd, void* data, std::size_t n, std::string& error);
bool ReadReply(int fd, uint32_t& reply, std::string& error);
// Reads one whole frame, blocking. A length above ztMaxFrameSize fails before any payload is read.
bool ReadFrame(int fd, uint32_t& tag, std::string& payload, std::string& error);

// Appends a frame (header and payload) to out, for senders that batch their writes.
void AppendFrame(std::string& out, uint32_t tag, std::string_view payload);

// Server side: incremental decoder for non-blocking reads. Feed whatever bytes arrived; take
// every complete frame. A frame whose length exceeds ztMaxFrameSize puts the decoder into an
// error state (the caller answers 0 and closes the connection).
class TZTFrameDecoder {
 public:
  void Feed(const char* data, std::size_t n);
  // True when a whole frame is available; tag and payload refer to the decoder's buffer and stay
  // valid until the next Feed/Pop.
  bool Next(uint32_t& tag, std::string_view& payload);
  void Pop();                    // discard the frame returned by Next
  bool Failed() const;           // oversize frame seen
  std::size_t Buffered() const;  // bytes held (a client that disconnects mid-frame loses these)
  void Reset();                  // back to the empty state, for a reused decoder

 private:
  void CheckHeader();

  std::string FBuffer;
  std::size_t FStart = 0;  // first byte not yet popped
  bool FFailed = false;
};

// Batch frame: tag "ZTB1"; its payload is records one after another, each a 32-bit tag (a packet
// tag, 0x7F000004 or 0x7F000005), a 32-bit length and that many bytes, both integers big-endian.
// The receiver takes each record as if it had come in a frame of its own and answers once with the
// number of records taken. A malformed record ends the batch: the answer counts the records
// before it, and the connection is closed.
inline constexpr uint32_t ztBatchTag = 0x5A544231;

// Walks the records of a batch payload without copying. Pure: no I/O, no allocation per record.
class TZTBatchReader {
 public:
  enum class TStep { Record, End, Malformed };
  // Starts at offset, a value that Offset() returned before (0 for the first record).
  explicit TZTBatchReader(std::string_view payload, std::size_t offset = 0);
  // Record: tag and bytes (a view into the payload) of the next record. End: nothing is left.
  // Malformed: a cut-off header, a length that runs past the end, or a tag that is not a packet's;
  // the reader stays there and Error() says why.
  TStep Next(uint32_t& tag, std::string_view& bytes);
  // Where the next record begins.
  std::size_t Offset() const { return FOffset; }
  const std::string& Error() const { return FError; }

 private:
  std::string_view FPayload;
  std::size_t FOffset;
  std::string FError;
};

// Sends a batch frame and waits for its answer: the number of records taken, 0 for a batch above
// ztMaxFrameSize (not sent), -1 on a transport failure, ztTimedOut when the deadline passed. When
// the answer is short of the records sent, the receiver has closed the connection if a record was
// malformed.
int64_t SendBatchAndWaitCount(int fd, std::string_view batch, TZTDeadline deadline, std::string& error);

// Appends one record to a batch payload.
void AppendBatchRecord(std::string& batch, uint32_t tag, std::string_view bytes);

bool PeerIsSameUser(int fd);  // SO_PEERCRED uid == geteuid()

// Listening socket at path (unlinks a stale socket file that nobody answers on first; refuses
// with an error if a live server answers there, or if something other than a socket lies there).
// The socket file is made private to the user (0600). Returns -1 on failure.
int ListenUnixSocket(const std::string& path, std::string& error);

// Accepts one connection; the new socket is CLOEXEC and, if asked, non-blocking. Returns -1 with
// error on failure; EINTR is retried, and EAGAIN on a non-blocking listener returns -1 with an
// empty error.
int AcceptConnection(int listenFd, bool nonBlocking, std::string& error);

}  // namespace zentrail
