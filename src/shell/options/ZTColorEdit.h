#pragma once
// A colour field of the options dialog: a swatch with the colour's name that opens the colour
// chooser. It holds the settings' colour value, so a system colour stays one until the user picks
// another.

#include <QWidget>

#include "ZTColors.h"

class QLabel;
class QToolButton;

namespace zentrail {

class TZTColorEdit : public QWidget {
  Q_OBJECT
 public:
  TZTColorEdit(const QString& name, const QString& accessibleName, QWidget* parent = nullptr);
  TColor Color() const { return FColor; }
  void SetColor(TColor color);
  QToolButton* Button() const { return FButton; }

 signals:
  void ColorChanged(TColor color);

 private:
  void Choose();
  TColor FColor = 0;
  QToolButton* FButton;
};

}  // namespace zentrail
