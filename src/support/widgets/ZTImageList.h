#pragma once
// A list of equally sized images addressed by index, the way the viewer's icon sets are used: a
// message type number, a bookmark number. Missing indices draw nothing.

#include <QObject>
#include <QPixmap>
#include <vector>

class QPainter;

namespace zentrail {

class TZTImageList : public QObject {
  Q_OBJECT
 public:
  TZTImageList(int width, int height, QObject* parent = nullptr);

  int Width() const { return FWidth; }
  int Height() const { return FHeight; }
  int Count() const { return static_cast<int>(FImages.size()); }
  bool HasImage(int index) const;

  // Puts an image at index, growing the list with empty entries as needed. An image drawn for
  // twice the resolution may come with it; it is used on scaled screens and the plain one where a
  // pixel is a pixel, so that neither is a resampled copy of the other.
  void SetImage(int index, const QPixmap& image, const QPixmap& image2x = QPixmap());
  int Add(const QPixmap& image);
  const QPixmap& Image(int index) const;
  void Clear();

  // Draws the image with its top-left corner at (x, y); false if there is none at index.
  bool Draw(QPainter& painter, int x, int y, int index) const;

 signals:
  void Changed();

 private:
  int FWidth;
  int FHeight;
  std::vector<QPixmap> FImages;
  std::vector<QPixmap> FImages2x;
};

}  // namespace zentrail
