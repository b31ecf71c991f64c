#include "ZTImageList.h"

#include <QPainter>

namespace zentrail {

TZTImageList::TZTImageList(int width, int height, QObject* parent)
    : QObject(parent), FWidth(width > 0 ? width : 16), FHeight(height > 0 ? height : 16) {}

bool TZTImageList::HasImage(int index) const {
  return index >= 0 && index < Count() && !FImages[static_cast<size_t>(index)].isNull();
}

void TZTImageList::SetImage(int index, const QPixmap& image) {
  if (index < 0) return;
  if (index >= Count()) FImages.resize(static_cast<size_t>(index) + 1);
  FImages[static_cast<size_t>(index)] = image;
  emit Changed();
}

int TZTImageList::Add(const QPixmap& image) {
  FImages.push_back(image);
  emit Changed();
  return Count() - 1;
}

const QPixmap& TZTImageList::Image(int index) const {
  static const QPixmap empty;
  return HasImage(index) ? FImages[static_cast<size_t>(index)] : empty;
}

void TZTImageList::Clear() {
  FImages.clear();
  emit Changed();
}

bool TZTImageList::Draw(QPainter& painter, int x, int y, int index) const {
  if (!HasImage(index)) return false;
  painter.drawPixmap(QRect(x, y, FWidth, FHeight), FImages[static_cast<size_t>(index)]);
  return true;
}

}  // namespace zentrail
