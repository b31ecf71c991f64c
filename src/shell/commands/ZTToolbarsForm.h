#pragma once
// The toolbar customising dialog: a list per toolbar in which each button is ticked to be shown.

#include <QDialog>
#include <QSet>
#include <vector>

class QListWidget;
class QPushButton;

namespace zentrail {

class TZTCommandBar;

class TfrmCustomizeToolbars : public QDialog {
  Q_OBJECT
 public:
  TfrmCustomizeToolbars(const std::vector<TZTCommandBar*>& bars, QWidget* parent = nullptr);
  // The buttons left unticked in the list of the bar at that place.
  QSet<QString> HiddenItems(size_t bar) const;
  QListWidget* List(size_t bar) const { return FLists[bar]; }
  QPushButton* btnOK = nullptr;
  QPushButton* btnCancel = nullptr;
  QPushButton* btnReset = nullptr;

 private:
  std::vector<QListWidget*> FLists;
};

}  // namespace zentrail
