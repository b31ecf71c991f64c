#pragma once
// A grid of name and value rows in which a name may have child rows, shown as a tree in the first
// column. The inspectors use it read-only: rows come from "path=value" lines, where the path's
// parts are joined by the path delimiter.

#include <QColor>
#include <QHash>
#include <QStringList>
#include <QTreeWidget>
#include <memory>
#include <vector>

namespace zentrail {

class TIxItemProp;

// Rows nest at most this deep; the rest of a longer path is kept as the last row's name.
inline constexpr int ztMaxItemDepth = 256;

class TIxItemProps {
 public:
  explicit TIxItemProps(TIxItemProp* owner = nullptr) : FOwner(owner) {}
  TIxItemProps(const TIxItemProps&) = delete;
  TIxItemProps& operator=(const TIxItemProps&) = delete;

  int Count() const { return static_cast<int>(FItems.size()); }
  TIxItemProp* Item(int index) const { return FItems.at(static_cast<std::size_t>(index)).get(); }
  TIxItemProp* Add(const QString& name);
  void Clear();

  TIxItemProp* AddFullPath(const QString& path, const QString& value, bool unique,
                           QChar delimiter = u'.');
  TIxItemProp* FindItemByFullPathName(const QString& path, QChar delimiter = u'.') const;

 private:
  TIxItemProp* FOwner;
  std::vector<std::unique_ptr<TIxItemProp>> FItems;
  QHash<QString, TIxItemProp*> FFirstByName;  // rows keep the order of their first appearance
};

class TIxItemProp {
 public:
  explicit TIxItemProp(TIxItemProp* parent) : Items(this), FParent(parent) {}
  QString Name;
  QStringList Values;
  TIxItemProps Items;
  bool Expanded = false;

  TIxItemProp* Parent() const { return FParent; }
  QString Value() const { return Values.join(QStringLiteral("\r\n")); }
  QString FullPathName(QChar delimiter = u'.') const;
  int Level() const;
  QTreeWidgetItem* Row = nullptr;

 private:
  TIxItemProp* FParent;
};

class TIxItemListEditor : public QTreeWidget {
  Q_OBJECT
 public:
  explicit TIxItemListEditor(QWidget* parent = nullptr);

  // Strings := list: every row replaced by the lines, in order; all rows start collapsed.
  void SetStrings(const QStringList& lines);
  // Every row in tree order as full path "=" value, right-trimmed.
  QStringList Strings() const;
  int IndexOfName(const QString& path) const;

  TIxItemProps& Props() { return FProps; }
  TIxItemProp* SelectedItem() const;
  void SelectItem(TIxItemProp* item);
  void FullExpand();
  void FullCollapse();
  // Rebuilds the rows on screen from the items.
  void Refresh();

  void SetTitleCaptions(const QStringList& captions);
  QStringList TitleCaptions() const { return FTitleCaptions; }
  void SetValueColor(const QColor& color);
  QColor ValueColor() const { return FValueColor; }
  void SetValueFont(const QFont& font);
  void SetValuesRightAligned(bool value);
  QChar PathDelimiter() const { return FPathDelimiter; }

  static TIxItemProp* PropOf(const QTreeWidgetItem* row);

 private:
  void AddRows(TIxItemProps& props, QTreeWidgetItem* parentRow, QList<QTreeWidgetItem*>* topRows);
  void StyleRow(QTreeWidgetItem* row) const;
  void RestyleRows(QTreeWidgetItem* row);

  TIxItemProps FProps;
  QStringList FTitleCaptions;
  QColor FValueColor = QColor(0, 0, 128);
  QFont FValueFont;
  bool FValueFontSet = false;
  bool FRightAligned = false;
  QChar FPathDelimiter = u'.';
};

}  // namespace zentrail
