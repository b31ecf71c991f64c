#pragma once
// Reading a log file that another process is still writing, such as the File destination of a
// dispatcher. Only whole records are taken: a record cut off in the middle of a write stays in the
// buffer until its last byte is there, and is never taken for damage. When the writer rotates the
// file (renames it to a numbered part and starts a new one under the same name), the old file is
// read to its end and reading goes on at the start of the next one, through the numbered parts
// that several rotations may have left meanwhile. Qt-free; the window drives it from a timer and a
// file watcher.

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "TransportPacket.h"

namespace zentrail {

class TZTLogTail {
 public:
  enum class TStatus {
    Reading,  // all is well; call Read again when the file changes
    Shrunk,   // the file became shorter than what was read of it
    Damaged,  // a record that is complete but cannot be read, or an unsupported tag
    Failed,   // the file cannot be read any more
  };
  struct TResult {
    TStatus Status = TStatus::Reading;
    int Records = 0;    // records handed on by this call
    bool More = false;  // stopped at maxRecords: more whole records may be waiting
  };

  TZTLogTail() = default;
  ~TZTLogTail();
  TZTLogTail(const TZTLogTail&) = delete;
  TZTLogTail& operator=(const TZTLogTail&) = delete;

  // Opens the file and starts reading at its beginning. False with error filled when it cannot be
  // opened or is not a regular file.
  bool Open(const std::string& path, std::string& error);
  void Close();
  bool IsOpen() const { return FFd >= 0; }

  // Hands every whole record that is there now to add, at most maxRecords of them. The record
  // view is valid during the call only. After a status other than Reading, Error() says why and
  // further calls return the same status without reading.
  TResult Read(const std::function<void(const TZentrailPacketView&)>& add, int maxRecords);

  const std::string& Path() const { return FPath; }
  const std::string& Error() const { return FError; }
  // Bytes taken as whole records from the file now being read; a part that rotated away counts no more.
  uint64_t Offset() const { return FOffset; }
  // Bytes of a record that waits for its end.
  std::size_t Pending() const { return FBuffer.size() - FStart; }
  // Rotations followed so far.
  int Rotations() const { return FRotations; }

  // How many bytes the record at the start of bytes takes, when all of them are there: 0 while it
  // is still incomplete. A record that can be judged bad from its first bytes gives the length
  // up to the point where it went wrong, so that the record reader reports it. SIZE_MAX marks a
  // length beyond anything a writer of this system produces.
  static std::size_t CompleteRecordSize(std::string_view bytes);
  // The name a writer gives part n of a rotated file: "app.ztl" becomes "app.n.ztl".
  static std::string PartFileName(const std::string& path, int n);

 private:
  TResult Fail(TResult result, TStatus status, std::string error);
  bool ReadNewBytes(bool& atEnd);
  bool SwitchToRotatedFile(bool& switched);

  std::string FPath;
  int FFd = -1;
  dev_t FDevice = 0;
  ino_t FInode = 0;
  uint64_t FFileRead = 0;  // bytes read from the file into the buffer
  uint64_t FOffset = 0;
  std::string FBuffer;
  std::size_t FStart = 0;
  std::string FError;
  TStatus FStatus = TStatus::Reading;
  int FRotations = 0;
};

}  // namespace zentrail
