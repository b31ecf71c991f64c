#pragma once
// The message detail panel: eight labelled fields of the focused message, arranged by the panel's
// width in one column, two columns or one band of two rows.

#include <QWidget>
#include <array>

class QLabel;

namespace zentrail {

class TZTDetailPanel : public QWidget {
  Q_OBJECT
 public:
  enum Field { Category, TypeName, AppName, Computer, PID, ThreadName, Date, TimeStamp, FieldCount };
  explicit TZTDetailPanel(QWidget* parent = nullptr);

  void SetField(Field field, const QString& text);
  QString FieldText(Field field) const;
  void Clear();
  void SetValueColor(const QColor& color);
  // Height that the arrangement for a width needs.
  static int HeightForPanelWidth(int width);

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void Arrange();
  std::array<QLabel*, FieldCount> FLabels{};
  std::array<QLabel*, FieldCount> FFields{};
  int FLabelWidth = 60;
};

// pnlMsgType: the glyph of the focused message's content on a slanted plate, with the message's
// identity as its hint.
class TZTMsgTypePanel : public QWidget {
  Q_OBJECT
 public:
  explicit TZTMsgTypePanel(QWidget* parent = nullptr);
  void SetContent(const QPixmap& glyph, const QString& hint);
  void Clear();
  QSize sizeHint() const override;
  // The plate's outline for a panel of height h.
  static QPolygon Plate(int height);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QPixmap FGlyph;
};

}  // namespace zentrail
