#include "ZTPictureDecode.h"

#include <png.h>

#include <csetjmp>
#include <cstring>
#include <memory>

namespace zentrail {

namespace {

// Everything the decoder touches after setjmp lives here, behind a pointer that never changes, so
// that its state is well defined after libpng jumps back on an error.
struct TPngContext {
  const unsigned char* Data = nullptr;
  std::size_t Size = 0;
  std::size_t Pos = 0;
  char Error[256] = {};
  QImage Image;
  int Height = 0;
  int RowsDone = 0;
  bool RowsComplete = false;
};

void ReadData(png_structp png, png_bytep out, png_size_t length) {
  auto* ctx = static_cast<TPngContext*>(png_get_io_ptr(png));
  if (length > ctx->Size - ctx->Pos) png_error(png, "the data ends before the picture does");
  std::memcpy(out, ctx->Data + ctx->Pos, length);
  ctx->Pos += length;
}

void OnError(png_structp png, png_const_charp message) {
  auto* ctx = static_cast<TPngContext*>(png_get_error_ptr(png));
  std::snprintf(ctx->Error, sizeof ctx->Error, "%s", message ? message : "unknown error");
  png_longjmp(png, 1);
}

void OnWarning(png_structp, png_const_charp) {}

}  // namespace

TZTDecodedPicture DecodePng(const std::string& bytes) {
  TZTDecodedPicture result;
  if (bytes.size() < 8 || png_sig_cmp(reinterpret_cast<png_const_bytep>(bytes.data()), 0, 8) != 0) {
    result.Error = bytes.empty() ? QStringLiteral("The picture data is empty.")
                                 : QStringLiteral("The data is not a PNG picture (its signature is missing).");
    return result;
  }
  auto ctx = std::make_unique<TPngContext>();
  ctx->Data = reinterpret_cast<const unsigned char*>(bytes.data());
  ctx->Size = bytes.size();
  TPngContext* const c = ctx.get();

  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, c, OnError, OnWarning);
  if (!png) {
    result.Error = QStringLiteral("The PNG decoder could not be started.");
    return result;
  }
  png_infop info = png_create_info_struct(png);
  if (!info) {
    png_destroy_read_struct(&png, nullptr, nullptr);
    result.Error = QStringLiteral("The PNG decoder could not be started.");
    return result;
  }

  if (setjmp(png_jmpbuf(png)) == 0) {
    png_set_read_fn(png, c, ReadData);
    png_set_user_limits(png, ztMaxPictureSide, ztMaxPictureSide);
    png_set_chunk_malloc_max(png, 64u * 1024 * 1024);
    png_read_info(png, info);
    const png_uint_32 width = png_get_image_width(png, info);
    const png_uint_32 height = png_get_image_height(png, info);
    const int colorType = png_get_color_type(png, info);
    png_set_expand(png);
    png_set_strip_16(png);
    if (colorType == PNG_COLOR_TYPE_GRAY || colorType == PNG_COLOR_TYPE_GRAY_ALPHA) png_set_gray_to_rgb(png);
    if (!(colorType & PNG_COLOR_MASK_ALPHA) && !png_get_valid(png, info, PNG_INFO_tRNS)) {
      png_set_filler(png, 0xFF, PNG_FILLER_AFTER);
    }
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    c->Image = QImage(static_cast<int>(width), static_cast<int>(height), QImage::Format_RGBA8888);
    if (c->Image.isNull()) png_error(png, "not enough memory for the picture");
    c->Image.fill(Qt::transparent);
    c->Height = static_cast<int>(height);
    for (int pass = 0; pass < passes; ++pass) {
      for (int y = 0; y < c->Height; ++y) {
        png_read_row(png, c->Image.scanLine(y), nullptr);
        if (pass == passes - 1) c->RowsDone = y + 1;
      }
    }
    c->RowsComplete = true;
    png_read_end(png, nullptr);
  }
  png_destroy_read_struct(&png, &info, nullptr);

  result.Image = std::move(c->Image);
  result.RowsDecoded = c->RowsDone;
  if (c->Error[0] != '\0') {
    const QString reason = QString::fromUtf8(c->Error);
    if (c->RowsComplete) {
      // The pixels are all there; only what follows them is damaged.
      result.Error = QStringLiteral("The end of the PNG data is damaged (%1); the picture itself is complete.").arg(reason);
    } else if (result.Image.isNull()) {
      result.Error = QStringLiteral("The PNG picture cannot be decoded: %1.").arg(reason);
    } else {
      result.Error = QStringLiteral("The PNG picture is damaged: %1. %2 of %3 rows could be shown.")
                         .arg(reason)
                         .arg(c->RowsDone)
                         .arg(c->Height);
      if (c->RowsDone == 0) result.Image = QImage();
    }
  }
  return result;
}

TZTDecodedPicture DecodeBitmap(const std::string& bytes) {
  TZTDecodedPicture result;
  if (bytes.empty()) {
    result.Error = QStringLiteral("The picture data is empty.");
    return result;
  }
  result.Image = QImage::fromData(reinterpret_cast<const uchar*>(bytes.data()), static_cast<int>(bytes.size()), "BMP");
  if (result.Image.isNull()) {
    result.Error = QStringLiteral("The data is not a readable Windows bitmap.");
  } else {
    result.RowsDecoded = result.Image.height();
  }
  return result;
}

}  // namespace zentrail
