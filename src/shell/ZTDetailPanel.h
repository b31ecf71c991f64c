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

}  // namespace zentrail
