#include "IxItemListEditor.h"

#include <QHeaderView>
#include <QPainter>
#include <QStyledItemDelegate>

namespace zentrail {

namespace {

QString RightTrimmed(const QString& s) {
  qsizetype n = s.size();
  while (n > 0 && s.at(n - 1).unicode() <= 32) --n;
  return s.left(n);
}

// Thin grid lines between rows and columns, as a grid has them.
class TGridLineDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;
  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QStyledItemDelegate::paint(painter, option, index);
    painter->save();
    painter->setPen(QColor(0xe1, 0xe4, 0xe8));
    const QRect r = option.rect;
    painter->drawLine(r.bottomLeft(), r.bottomRight());
    if (index.column() == 0) painter->drawLine(r.topRight(), r.bottomRight());
    painter->restore();
  }
  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QSize s = QStyledItemDelegate::sizeHint(option, index);
    s.setHeight(std::max(16, option.fontMetrics.height() + 4));
    return s;
  }
};

}  // namespace

// ---------------------------------------------------------------------------------------------

TIxItemProp* TIxItemProps::Add(const QString& name) {
  FItems.push_back(std::make_unique<TIxItemProp>(FOwner));
  TIxItemProp* item = FItems.back().get();
  item->Name = name;
  if (!FFirstByName.contains(name)) FFirstByName.insert(name, item);
  return item;
}

void TIxItemProps::Clear() {
  FItems.clear();
  FFirstByName.clear();
}

TIxItemProp* TIxItemProps::AddFullPath(const QString& path, const QString& value, bool unique,
                                       QChar delimiter) {
  TIxItemProps* level = this;
  qsizetype start = 0;
  for (int depth = 0;; ++depth) {
    // Beyond the depth limit the rest of the path stays one name, so that a path of thousands of
    // parts cannot make a tree deeper than anything could show.
    const qsizetype cut = depth + 1 >= ztMaxItemDepth ? -1 : path.indexOf(delimiter, start);
    const bool hasTail = cut >= 0;
    const QString head = hasTail ? path.mid(start, cut - start) : path.mid(start);
    TIxItemProp* item = level->FFirstByName.value(head, nullptr);
    if (!item || (unique && !hasTail)) item = level->Add(head);
    if (!hasTail) {
      item->Values = QStringList{value};
      return item;
    }
    level = &item->Items;
    start = cut + 1;
  }
}

TIxItemProp* TIxItemProps::FindItemByFullPathName(const QString& path, QChar delimiter) const {
  const TIxItemProps* level = this;
  qsizetype start = 0;
  for (int depth = 0;; ++depth) {
    const qsizetype cut = depth + 1 >= ztMaxItemDepth ? -1 : path.indexOf(delimiter, start);
    const QString head = cut < 0 ? path.mid(start) : path.mid(start, cut - start);
    TIxItemProp* item = level->FFirstByName.value(head, nullptr);
    if (!item || cut < 0) return item;
    level = &item->Items;
    start = cut + 1;
  }
}

QString TIxItemProp::FullPathName(QChar delimiter) const {
  QString path = Name;
  for (const TIxItemProp* p = FParent; p; p = p->FParent) path = p->Name + delimiter + path;
  return path;
}

int TIxItemProp::Level() const {
  int level = 0;
  for (const TIxItemProp* p = FParent; p; p = p->Parent()) ++level;
  return level;
}

// ---------------------------------------------------------------------------------------------

TIxItemListEditor::TIxItemListEditor(QWidget* parent) : QTreeWidget(parent) {
  setColumnCount(2);
  setIndentation(16);
  setRootIsDecorated(true);
  setUniformRowHeights(true);
  setSelectionBehavior(QAbstractItemView::SelectRows);
  setSelectionMode(QAbstractItemView::SingleSelection);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setFrameShape(QFrame::NoFrame);
  setAllColumnsShowFocus(true);
  setItemDelegate(new TGridLineDelegate(this));
  header()->setStretchLastSection(true);
  header()->setSectionsMovable(false);
  header()->resizeSection(0, 120);
  header()->setStyleSheet(QStringLiteral(
      "QHeaderView::section { background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #ffffff, "
      "stop:1 #e4e7ec); border: none; border-right: 1px solid #c5cad3; border-bottom: 1px solid #c5cad3; "
      "padding: 1px 4px; color: #1f2d3d; }"));
  FTitleCaptions = {QStringLiteral("Field"), QStringLiteral("Value")};
  setHeaderLabels(FTitleCaptions);
}

void TIxItemListEditor::SetStrings(const QStringList& lines) {
  FProps.Clear();
  for (const QString& line : lines) {
    const qsizetype eq = line.indexOf(u'=');
    if (eq < 0) {
      FProps.AddFullPath(line, QString(), true, FPathDelimiter);
    } else {
      FProps.AddFullPath(line.left(eq), line.mid(eq + 1), true, FPathDelimiter);
    }
  }
  Refresh();
}

QStringList TIxItemListEditor::Strings() const {
  QStringList out;
  // Depth-first, children right after their parent.
  struct Walker {
    QStringList& out;
    QChar delim;
    void Walk(const TIxItemProps& props, const QString& prefix) {
      for (int i = 0; i < props.Count(); ++i) {
        const TIxItemProp* item = props.Item(i);
        const QString path = prefix.isEmpty() ? item->Name : prefix + delim + item->Name;
        out.append(RightTrimmed(path + u'=' + item->Value()));
        Walk(item->Items, path);
      }
    }
  } walker{out, FPathDelimiter};
  walker.Walk(FProps, QString());
  return out;
}

int TIxItemListEditor::IndexOfName(const QString& path) const {
  const QStringList lines = Strings();
  for (qsizetype i = 0; i < lines.size(); ++i) {
    const QString& l = lines.at(i);
    if (l.size() > path.size() && l.startsWith(path) && l.at(path.size()) == u'=') return static_cast<int>(i);
  }
  return -1;
}

TIxItemProp* TIxItemListEditor::PropOf(const QTreeWidgetItem* row) {
  if (!row) return nullptr;
  return reinterpret_cast<TIxItemProp*>(row->data(0, Qt::UserRole).value<quintptr>());
}

TIxItemProp* TIxItemListEditor::SelectedItem() const { return PropOf(currentItem()); }

void TIxItemListEditor::SelectItem(TIxItemProp* item) {
  if (!item) {
    setCurrentItem(nullptr);
    clearSelection();
    return;
  }
  if (item == SelectedItem()) return;
  for (TIxItemProp* p = item->Parent(); p; p = p->Parent()) {
    p->Expanded = true;
    if (p->Row) p->Row->setExpanded(true);
  }
  if (item->Row) {
    setCurrentItem(item->Row);
    scrollToItem(item->Row);
  }
}

void TIxItemListEditor::FullExpand() { expandAll(); }
void TIxItemListEditor::FullCollapse() { collapseAll(); }

void TIxItemListEditor::StyleRow(QTreeWidgetItem* row) const {
  row->setForeground(1, FValueColor);
  if (FValueFontSet) row->setFont(1, FValueFont);
  row->setTextAlignment(1, (FRightAligned ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
}

void TIxItemListEditor::AddRows(TIxItemProps& props, QTreeWidgetItem* parentRow,
                                QList<QTreeWidgetItem*>* topRows) {
  for (int i = 0; i < props.Count(); ++i) {
    TIxItemProp* item = props.Item(i);
    auto* row = new QTreeWidgetItem();
    row->setText(0, item->Name);
    // A value of several lines shows its first.
    row->setText(1, item->Values.isEmpty() ? QString() : item->Values.first().section(u'\n', 0, 0).remove(u'\r'));
    row->setToolTip(1, item->Value().size() > 60 ? item->Value().left(2000) : QString());
    row->setData(0, Qt::UserRole, QVariant::fromValue(reinterpret_cast<quintptr>(item)));
    StyleRow(row);
    item->Row = row;
    if (parentRow) {
      parentRow->addChild(row);
    } else {
      topRows->append(row);
    }
    AddRows(item->Items, row, nullptr);
  }
}

void TIxItemListEditor::Refresh() {
  setUpdatesEnabled(false);
  clear();
  QList<QTreeWidgetItem*> top;
  AddRows(FProps, nullptr, &top);
  addTopLevelItems(top);
  setUpdatesEnabled(true);
}

void TIxItemListEditor::SetTitleCaptions(const QStringList& captions) {
  FTitleCaptions = captions;
  setHeaderLabels(captions);
}

void TIxItemListEditor::RestyleRows(QTreeWidgetItem* row) {
  for (int i = 0; i < row->childCount(); ++i) {
    StyleRow(row->child(i));
    RestyleRows(row->child(i));
  }
}

void TIxItemListEditor::SetValueColor(const QColor& color) {
  FValueColor = color;
  RestyleRows(invisibleRootItem());
}

void TIxItemListEditor::SetValueFont(const QFont& font) {
  FValueFont = font;
  FValueFontSet = true;
  RestyleRows(invisibleRootItem());
}

void TIxItemListEditor::SetValuesRightAligned(bool value) {
  FRightAligned = value;
  RestyleRows(invisibleRootItem());
  headerItem()->setTextAlignment(1, (value ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
}

}  // namespace zentrail
