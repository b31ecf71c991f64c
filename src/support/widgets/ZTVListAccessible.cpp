#include "ZTVList.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHash>
#include <QPointer>

namespace zentrail {

// ---- accessibility -----------------------------------------------------------------------------

namespace {

class TRowAccessible;

// The list as screen readers see it: a list whose children are made on demand for the rows asked
// about, so that a list of a million rows costs nothing until a reader walks it.
class TListAccessible : public QAccessibleWidget, public QAccessibleTableInterface {
 public:
  explicit TListAccessible(TZTCustomVirtualListBox* list) : QAccessibleWidget(list, QAccessible::List) {}
  ~TListAccessible() override { ForgetRows(); }

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::TableInterface) return static_cast<QAccessibleTableInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
  }

  // The list as a table of one column: the count, the selection and the row texts that readers ask.
  QAccessibleInterface* caption() const override { return nullptr; }
  QAccessibleInterface* summary() const override { return nullptr; }
  QAccessibleInterface* cellAt(int row, int column) const override { return column == 0 ? child(row) : nullptr; }
  int columnCount() const override { return 1; }
  int rowCount() const override { return List()->NumItems(); }
  QString columnDescription(int) const override { return List()->Header(); }
  QString rowDescription(int) const override { return QString(); }
  bool isColumnSelected(int) const override { return false; }
  bool isRowSelected(int row) const override { return List()->IsItemSelected(row); }
  int selectedColumnCount() const override { return 0; }
  QList<int> selectedColumns() const override { return {}; }
  QList<int> selectedRows() const override {
    QList<int> rows;
    for (int32_t row = 0; row < List()->NumItems(); ++row)
      if (List()->IsItemSelected(row)) rows.push_back(row);
    return rows;
  }
  int selectedRowCount() const override { return static_cast<int>(selectedRows().size()); }
  int selectedCellCount() const override { return selectedRowCount(); }
  QList<QAccessibleInterface*> selectedCells() const override {
    QList<QAccessibleInterface*> cells;
    for (int row : selectedRows()) cells.push_back(child(row));
    return cells;
  }
  bool selectColumn(int) override { return false; }
  bool unselectColumn(int) override { return false; }
  bool selectRow(int row) override {
    if (row < 0 || row >= List()->NumItems() || !List()->OnSelect) return false;
    List()->SelectItem(row, true);
    return true;
  }
  bool unselectRow(int row) override {
    if (row < 0 || row >= List()->NumItems() || !List()->OnSelect) return false;
    List()->SelectItem(row, false);
    return true;
  }
  void modelChange(QAccessibleTableModelChangeEvent*) override { ForgetRows(); }

  TZTCustomVirtualListBox* List() const { return static_cast<TZTCustomVirtualListBox*>(widget()); }

  int childCount() const override { return List()->NumItems(); }
  QAccessibleInterface* child(int index) const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  QAccessibleInterface* childAt(int x, int y) const override {
    const QPoint local = List()->viewport()->mapFromGlobal(QPoint(x, y));
    const int32_t row = List()->ItemAtPos(local, true);
    return row >= 0 ? child(row) : nullptr;
  }
  QAccessibleInterface* focusChild() const override {
    return List()->ItemIndex() >= 0 ? child(List()->ItemIndex()) : nullptr;
  }
  QString text(QAccessible::Text t) const override {
    if (t == QAccessible::Name && List()->accessibleName().isEmpty()) return List()->Header();
    return QAccessibleWidget::text(t);
  }
  void ForgetRows() const {
    for (auto id : std::as_const(FRows)) QAccessible::deleteAccessibleInterface(id);
    FRows.clear();
  }

 private:
  mutable QHash<int, QAccessible::Id> FRows;
};

class TRowAccessible : public QAccessibleInterface, public QAccessibleTableCellInterface {
 public:
  TRowAccessible(TZTCustomVirtualListBox* list, int row) : FList(list), FRow(row) {}
  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::TableCellInterface) return static_cast<QAccessibleTableCellInterface*>(this);
    return nullptr;
  }
  bool isSelected() const override { return isValid() && FList->IsItemSelected(FRow); }
  QList<QAccessibleInterface*> columnHeaderCells() const override { return {}; }
  QList<QAccessibleInterface*> rowHeaderCells() const override { return {}; }
  int columnIndex() const override { return 0; }
  int rowIndex() const override { return FRow; }
  int columnExtent() const override { return 1; }
  int rowExtent() const override { return 1; }
  QAccessibleInterface* table() const override { return parent(); }
  bool isValid() const override { return FList && FRow < FList->NumItems(); }
  QObject* object() const override { return nullptr; }
  QWindow* window() const override { return FList ? FList->window()->windowHandle() : nullptr; }
  QAccessibleInterface* parent() const override { return FList ? QAccessible::queryAccessibleInterface(FList) : nullptr; }
  QAccessibleInterface* child(int) const override { return nullptr; }
  int childCount() const override { return 0; }
  int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  QAccessibleInterface* childAt(int, int) const override { return nullptr; }
  QString text(QAccessible::Text t) const override {
    if (!isValid() || t != QAccessible::Name) return QString();
    return FList->ItemString(FRow).replace(QLatin1Char('\t'), QLatin1Char(' '));
  }
  void setText(QAccessible::Text, const QString&) override {}
  QRect rect() const override {
    if (!isValid()) return QRect();
    const QRect local = FList->ItemRect(FRow);
    return QRect(FList->viewport()->mapToGlobal(QPoint(0, local.top())), QSize(FList->viewport()->width(), local.height()));
  }
  QAccessible::Role role() const override { return QAccessible::ListItem; }
  QAccessible::State state() const override {
    QAccessible::State s;
    if (!isValid()) {
      s.invalid = true;
      return s;
    }
    s.selectable = true;
    s.focusable = true;
    s.multiSelectable = FList->MultiSelect();
    s.selected = FList->IsItemSelected(FRow);
    s.focused = FList->hasFocus() && FList->ItemIndex() == FRow;
    const int32_t top = FList->TopIndex();
    s.invisible = FRow < top || FRow >= top + FList->VisibleRows();
    s.offscreen = s.invisible;
    return s;
  }
  int Row() const { return FRow; }

 private:
  QPointer<TZTCustomVirtualListBox> FList;
  int FRow;
};

QAccessibleInterface* TListAccessible::child(int index) const {
  if (index < 0 || index >= childCount()) return nullptr;
  auto it = FRows.constFind(index);
  if (it != FRows.constEnd()) return QAccessible::accessibleInterface(*it);
  auto* row = new TRowAccessible(List(), index);
  FRows.insert(index, QAccessible::registerAccessibleInterface(row));
  return row;
}

int TListAccessible::indexOfChild(const QAccessibleInterface* child) const {
  auto* row = dynamic_cast<const TRowAccessible*>(child);
  return row && row->isValid() ? row->Row() : -1;
}

QAccessibleInterface* ListBoxFactory(const QString&, QObject* object) {
  if (auto* list = qobject_cast<TZTCustomVirtualListBox*>(object)) return new TListAccessible(list);
  return nullptr;
}

}  // namespace

void TZTCustomVirtualListBox::NotifyFocus() {
  if (!QAccessible::isActive() || FItemIndex < 0 || !hasFocus()) return;
  QAccessibleEvent event(this, QAccessible::Focus);
  event.setChild(FItemIndex);
  QAccessible::updateAccessibility(&event);
}

void InstallVirtualListBoxAccessibility() {
  // A plug-in module that carries its own copy of the list box takes its factory away when it is
  // unloaded, so that Qt never calls into code that is gone.
  static struct TFactory {
    TFactory() { QAccessible::installFactory(ListBoxFactory); }
    ~TFactory() { QAccessible::removeFactory(ListBoxFactory); }
  } factory;
}

}  // namespace zentrail
