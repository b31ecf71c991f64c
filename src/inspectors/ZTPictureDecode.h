#pragma once
// Decoding of the pictures that bitmap messages carry. A damaged PNG gives the rows that could be
// read before the damage, together with libpng's reason, so the viewer can show what there is.

#include <QImage>
#include <QString>
#include <string>

namespace zentrail {

struct TZTDecodedPicture {
  QImage Image;        // null when nothing could be read
  QString Error;       // empty when the picture was read completely
  int RowsDecoded = 0;  // rows read before an error (the full height when complete)
};

// Pictures larger than this in either direction are refused rather than allocated.
inline constexpr int ztMaxPictureSide = 20000;

TZTDecodedPicture DecodePng(const std::string& bytes);
// A Windows bitmap stream (what other type names than "PngImage" stand for).
TZTDecodedPicture DecodeBitmap(const std::string& bytes);

}  // namespace zentrail
