#include "Zlib.h"

#include <zlib.h>

namespace zentrail {

void ZlibInflateInto(std::string_view compressed, std::string& out, std::size_t maxSize) {
  out.clear();
  z_stream zs{};
  if (inflateInit(&zs) != Z_OK) throw EZentrailZlibError("zlib: cannot start inflating");
  zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(compressed.data()));
  zs.avail_in = static_cast<uInt>(compressed.size());
  // Guess generously for text, grow geometrically, never past maxSize + 1 (to detect excess).
  std::size_t capacity = compressed.size() * 4 + 256;
  if (capacity > maxSize + 1) capacity = maxSize + 1;
  out.resize(capacity);
  int rc = Z_OK;
  std::size_t produced = 0;
  for (;;) {
    zs.next_out = reinterpret_cast<Bytef*>(out.data() + produced);
    zs.avail_out = static_cast<uInt>(out.size() - produced);
    rc = inflate(&zs, Z_NO_FLUSH);
    produced = out.size() - zs.avail_out;
    if (rc == Z_STREAM_END) break;
    if (rc == Z_BUF_ERROR && zs.avail_in == 0) {
      inflateEnd(&zs);
      out.clear();
      throw EZentrailZlibError("zlib: the compressed data ends before the stream does");
    }
    if (rc != Z_OK && rc != Z_BUF_ERROR) {
      std::string why = zs.msg ? zs.msg : "invalid data";
      inflateEnd(&zs);
      out.clear();
      throw EZentrailZlibError("zlib: " + why);
    }
    if (zs.avail_out == 0) {
      if (out.size() > maxSize) {
        inflateEnd(&zs);
        out.clear();
        throw EZentrailZlibSizeError("zlib: the data inflates beyond the size limit");
      }
      std::size_t next = out.size() * 2;
      if (next > maxSize + 1) next = maxSize + 1;
      out.resize(next);
    }
  }
  inflateEnd(&zs);
  if (produced > maxSize) {
    out.clear();
    throw EZentrailZlibSizeError("zlib: the data inflates beyond the size limit");
  }
  out.resize(produced);
}

std::string ZlibInflate(std::string_view compressed, std::size_t maxSize) {
  std::string out;
  ZlibInflateInto(compressed, out, maxSize);
  return out;
}

std::string ZlibDeflate(std::string_view data) {
  uLongf bound = compressBound(static_cast<uLong>(data.size()));
  std::string out(bound, '\0');
  const int rc = compress2(reinterpret_cast<Bytef*>(out.data()), &bound,
                           reinterpret_cast<const Bytef*>(data.data()),
                           static_cast<uLong>(data.size()), Z_DEFAULT_COMPRESSION);
  if (rc != Z_OK) throw EZentrailZlibError("zlib: compression failed");
  out.resize(bound);
  return out;
}

}  // namespace zentrail
