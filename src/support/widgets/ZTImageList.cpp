#include "ZTImageList.h"

#include <QPainter>

namespace zentrail {

TZTImageList::TZTImageList(int width, int height, QObject* parent)
    : QObject(parent), FWidth(width > 0 ? width : 16), FHeight(height > 0 ? height : 16) {}

bool TZTImageList::HasImage(int index) const {
  return index >= 0 && index < Count() && !FImages[static_cast<size_t>(index)].isNull();
}

void TZTImageList::SetImage(int index, const QPixmap& image, const QPixmap& image2x) {
  if (index < 0) return;
  if (index >= Count()) {
    FImages.resize(static_cast<size_t>(index) + 1);
    FImages2x.resize(FImages.size());
  }
  FImages[static_cast<size_t>(index)] = image;
  FImages2x[static_cast<size_t>(index)] = image2x;
  emit Changed();
}

int TZTImageList::Add(const QPixmap& image) {
  FImages.push_back(image);
  FImages2x.emplace_back();
  emit Changed();
  return Count() - 1;
}

const QPixmap& TZTImageList::Image(int index) const {
  static const QPixmap empty;
  return HasImage(index) ? FImages[static_cast<size_t>(index)] : empty;
}

void TZTImageList::Clear() {
  FImages.clear();
  FImages2x.clear();
  emit Changed();
}

bool TZTImageList::Draw(QPainter& painter, int x, int y, int index) const {
  if (!HasImage(index)) return false;
  const QPixmap& hiRes = FImages2x[static_cast<size_t>(index)];
  const bool scaled = painter.device() && painter.device()->devicePixelRatioF() > 1.0;
  painter.drawPixmap(QRect(x, y, FWidth, FHeight),
                     scaled && !hiRes.isNull() ? hiRes : FImages[static_cast<size_t>(index)]);
  return true;
}

}  // namespace zentrail
