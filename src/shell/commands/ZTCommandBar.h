#pragma once
// A toolbar that can wrap: its buttons stand in one row, and either break into further rows where
// the row is too narrow, or, unwrapped, hide what does not fit behind a button at the row's end
// that lists the rest. The user may hide single buttons; what is hidden is kept by name.

#include <QSet>
#include <QString>
#include <QWidget>
#include <vector>

class QAction;
class QMenu;
class QToolButton;

namespace zentrail {

class TZTCommandBar : public QWidget {
  Q_OBJECT
 public:
  TZTCommandBar(const QString& name, const QString& title, QWidget* parent = nullptr);

  // A button for the action, named after it.
  QToolButton* AddAction(QAction* action);
  // A button that drops down the menu; name and tooltip are the button's own.
  QToolButton* AddMenuButton(const QString& name, QMenu* menu, const QString& hint);
  void AddWidget(const QString& name, QWidget* widget);
  void AddSeparator();

  void SetWrap(bool wrap);
  bool Wrap() const { return FWrap; }
  // Names of the items the user chose not to see.
  void SetHiddenItems(const QSet<QString>& names);
  const QSet<QString>& HiddenItems() const { return FHidden; }
  // Each item that is not a separator: its name and the caption the customising dialog shows.
  struct TZTBarItem {
    QString Name;
    QString Caption;
    QIcon Icon;
  };
  std::vector<TZTBarItem> Items() const;
  QString Title() const { return FTitle; }
  // Items that did not fit into an unwrapped row, in order.
  std::vector<QWidget*> OverflowItems() const { return FOverflow; }

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
  bool hasHeightForWidth() const override { return FWrap; }
  int heightForWidth(int width) const override;

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  struct TItem {
    QString Name;
    QWidget* Widget;  // null for a separator
  };
  // Places the items in the width; with apply false only measures. Returns the height used.
  int Arrange(int width, bool apply);
  void FillOverflowMenu();
  int ItemWidth(const TItem& item) const;
  int RowHeight() const;

  QString FTitle;
  std::vector<TItem> FItems;
  QSet<QString> FHidden;
  bool FWrap = false;
  QToolButton* FMore = nullptr;
  QMenu* FMoreMenu = nullptr;
  std::vector<QWidget*> FOverflow;
};

}  // namespace zentrail
