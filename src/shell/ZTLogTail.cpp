#include "ZTLogTail.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "LogRecord.h"
#include "ZTChannel.h"

namespace zentrail {

namespace {

constexpr std::size_t kChunk = 1u << 20;
// Numbered parts are looked for up to this number.
constexpr int kMaxParts = 1000;

std::string HexTag(uint32_t tag) {
  char text[16];
  std::snprintf(text, sizeof text, "$%X", tag);
  return text;
}

}  // namespace

std::string TZTLogTail::PartFileName(const std::string& path, int n) {
  const auto slash = path.rfind('/');
  const auto dot = path.rfind('.');
  const std::string number = std::to_string(n);
  const bool hasExtension = dot != std::string::npos && (slash == std::string::npos || dot > slash);
  const std::size_t at = hasExtension ? dot : path.size();
  std::string name;
  name.reserve(path.size() + number.size() + 1);
  name.append(path, 0, at);
  name += '.';
  name += number;
  name.append(path, at, std::string::npos);
  return name;
}

TZTLogTail::~TZTLogTail() { Close(); }

bool TZTLogTail::Open(const std::string& path, std::string& error) {
  Close();
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    error = path + ": " + std::strerror(errno);
    return false;
  }
  struct stat st {};
  if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    error = path + (S_ISDIR(st.st_mode) ? ": is a folder" : ": is not a regular file");
    ::close(fd);
    return false;
  }
  FPath = path;
  FFd = fd;
  FDevice = st.st_dev;
  FInode = st.st_ino;
  FFileRead = FOffset = 0;
  FBuffer.clear();
  FStart = 0;
  FError.clear();
  FStatus = TStatus::Reading;
  FRotations = 0;
  return true;
}

void TZTLogTail::Close() {
  if (FFd >= 0) ::close(FFd);
  FFd = -1;
}

std::size_t TZTLogTail::CompleteRecordSize(std::string_view bytes) {
  if (bytes.size() < 4) return 0;
  const uint32_t tag = GetLE32(bytes.data());
  if (tag == ztPacketTag || tag == ztCompressedPacketTag) {
    if (bytes.size() < 8) return 0;
    const auto len = static_cast<int32_t>(GetLE32(bytes.data() + 4));
    if (len < 1) return 8;
    if (static_cast<uint32_t>(len) > ztMaxFrameSize) return SIZE_MAX;
    const std::size_t total = 8 + static_cast<std::size_t>(len);
    return bytes.size() < total ? 0 : total;
  }
  if (tag == ztLegacyTag0 || tag == ztLegacyTag1) {
    constexpr std::size_t header = 4 + ztLegacyHeaderSize;
    if (bytes.size() < header) return 0;
    const auto textLen = static_cast<int32_t>(GetLE32(bytes.data() + 4 + 16));
    const auto detailsLen = static_cast<int32_t>(GetLE32(bytes.data() + 4 + 20));
    if (textLen < 0 || detailsLen < 0) return header;
    const uint64_t body = uint64_t(uint32_t(textLen)) + uint32_t(detailsLen);
    if (body > ztMaxFrameSize) return SIZE_MAX;
    const std::size_t total = header + static_cast<std::size_t>(body) + 1;
    return bytes.size() < total ? 0 : total;
  }
  return 4;
}

TZTLogTail::TResult TZTLogTail::Fail(TResult result, TStatus status, std::string error) {
  FStatus = status;
  FError = std::move(error);
  result.Status = status;
  return result;
}

bool TZTLogTail::ReadNewBytes(bool& atEnd) {
  atEnd = false;
  struct stat st {};
  if (::fstat(FFd, &st) != 0) {
    FError = FPath + ": " + std::strerror(errno);
    return false;
  }
  if (static_cast<uint64_t>(st.st_size) < FFileRead) {
    FStatus = TStatus::Shrunk;
    FError = FPath + " became shorter (" + std::to_string(st.st_size) + " bytes) than the " +
             std::to_string(FFileRead) + " bytes already read";
    return false;
  }
  // What was taken is dropped before the buffer grows, so memory stays at about one record.
  if (FStart > 0) {
    FBuffer.erase(0, FStart);
    FStart = 0;
  }
  const std::size_t old = FBuffer.size();
  FBuffer.resize(old + kChunk);
  ssize_t got;
  do {
    got = ::read(FFd, FBuffer.data() + old, kChunk);
  } while (got < 0 && errno == EINTR);
  FBuffer.resize(old + static_cast<std::size_t>(got > 0 ? got : 0));
  if (got < 0) {
    FError = FPath + ": " + std::strerror(errno);
    return false;
  }
  FFileRead += static_cast<uint64_t>(got);
  atEnd = got == 0;
  return true;
}

bool TZTLogTail::SwitchToRotatedFile(bool& switched) {
  switched = false;
  struct stat st {};
  const bool named = ::stat(FPath.c_str(), &st) == 0;
  if (named && st.st_dev == FDevice && st.st_ino == FInode) return true;
  // The writer closes a part before it renames it, so the file read so far is complete now; it was
  // read to its end just before this was called.
  if (Pending() > 0) {
    FStatus = TStatus::Damaged;
    FError = FPath + " was rotated with a record cut off at its end (byte offset " + std::to_string(FOffset) + ")";
    return false;
  }
  // Several rotations may have passed since the last look: the file read so far is now one of the
  // numbered parts, and the part just newer than it comes next. Without it among them (removed
  // already, as only so many parts are kept), reading goes on with the newest file.
  std::string next = FPath;
  for (int n = 1; n <= kMaxParts; ++n) {
    struct stat part {};
    if (::stat(PartFileName(FPath, n).c_str(), &part) != 0) break;
    if (part.st_dev == FDevice && part.st_ino == FInode) {
      if (n > 1) next = PartFileName(FPath, n - 1);
      break;
    }
  }
  // The writer has renamed the old file and not yet made the new one.
  if (next == FPath && !named) return true;
  const int fd = ::open(next.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return true;  // tried again at the next call
  struct stat opened {};
  if (::fstat(fd, &opened) != 0 || !S_ISREG(opened.st_mode)) {
    ::close(fd);
    FError = next + ": is not a regular file";
    return false;
  }
  ::close(FFd);
  FFd = fd;
  FDevice = opened.st_dev;
  FInode = opened.st_ino;
  FFileRead = FOffset = 0;
  FBuffer.clear();
  FStart = 0;
  ++FRotations;
  switched = true;
  return true;
}

TZTLogTail::TResult TZTLogTail::Read(const std::function<void(const TZentrailPacketView&)>& add, int maxRecords) {
  TResult result;
  if (FStatus != TStatus::Reading) return Fail(result, FStatus, FError);
  if (FFd < 0) return Fail(result, TStatus::Failed, "no log file is open");
  TZentrailPacketView view;
  bool rotationSeen = false;
  for (;;) {
    while (FStart < FBuffer.size()) {
      if (result.Records >= maxRecords) {
        result.More = true;
        return result;
      }
      const std::string_view rest(FBuffer.data() + FStart, FBuffer.size() - FStart);
      const std::size_t need = CompleteRecordSize(rest);
      if (need == SIZE_MAX)
        return Fail(result, TStatus::Damaged,
                    "the record at byte offset " + std::to_string(FOffset) + " claims a length beyond 64 MiB");
      if (need == 0) break;
      TZentrailBufferSource source(rest.substr(0, need));
      TZentrailLogReader reader(source);
      switch (reader.Next(view)) {
        case TZentrailRecordResult::Ok:
          add(view);
          ++result.Records;
          break;
        case TZentrailRecordResult::Unsupported:
          return Fail(result, TStatus::Damaged,
                      "unsupported message format (" + HexTag(reader.Tag()) + ") at byte offset " +
                          std::to_string(FOffset));
        case TZentrailRecordResult::Invalid:
        case TZentrailRecordResult::End:
          return Fail(result, TStatus::Damaged,
                      reader.Error() + " (byte offset " + std::to_string(FOffset) + ")");
      }
      FStart += need;
      FOffset += need;
    }
    bool atEnd = false;
    if (!ReadNewBytes(atEnd)) return Fail(result, FStatus == TStatus::Shrunk ? TStatus::Shrunk : TStatus::Failed, FError);
    if (!atEnd) continue;
    // At the end of the file: once a rotation is seen, the old file is read to its end once more
    // (a last write may have landed after the previous end), and only then left.
    struct stat st {};
    const bool renamed = ::stat(FPath.c_str(), &st) != 0 || st.st_dev != FDevice || st.st_ino != FInode;
    if (!renamed) return result;
    if (!rotationSeen) {
      rotationSeen = true;
      continue;
    }
    bool switched = false;
    if (!SwitchToRotatedFile(switched))
      return Fail(result, FStatus == TStatus::Damaged ? TStatus::Damaged : TStatus::Failed, FError);
    if (!switched) return result;
    rotationSeen = false;
  }
}

}  // namespace zentrail
