// The tabular inspectors: a grid with a header row, and the name/value family.

#include <QAbstractTableModel>
#include <QApplication>
#include <QHeaderView>
#include <QListWidget>
#include <QMenu>
#include <QResizeEvent>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>

#include "IxItemListEditor.h"
#include "ZTInspect.h"
#include "ZTInspectorUtils.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

// Cells of the table inspector. Row 0 is the header row when there are at least two rows; a grid
// of one row cannot keep a fixed row, so that row is shown as data.
class TZTTableModel : public QAbstractTableModel {
 public:
  using QAbstractTableModel::QAbstractTableModel;

  void SetCells(std::vector<QStringList> rows, int colCount) {
    beginResetModel();
    FRows = std::move(rows);
    FColCount = colCount;
    endResetModel();
  }
  bool HasHeaderRow() const { return FRows.size() >= 2; }
  int GridRowCount() const { return static_cast<int>(FRows.size()); }
  int GridColCount() const { return FColCount; }
  qsizetype CellLength(int col, int row) const {
    const QStringList& r = FRows[static_cast<std::size_t>(row)];
    return col < r.size() ? r.at(col).size() : 0;
  }
  QString Cell(int col, int row) const {
    if (row < 0 || row >= GridRowCount() || col < 0) return {};
    const QStringList& r = FRows[static_cast<std::size_t>(row)];
    return col < r.size() ? r.at(col) : QString();
  }

  int rowCount(const QModelIndex& parent = {}) const override {
    if (parent.isValid()) return 0;
    return HasHeaderRow() ? GridRowCount() - 1 : GridRowCount();
  }
  int columnCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : FColCount; }
  QVariant data(const QModelIndex& index, int role) const override {
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole) {
      const QString text = Cell(index.column(), index.row() + (HasHeaderRow() ? 1 : 0));
      if (role == Qt::ToolTipRole && text.size() < 80) return {};
      return text;
    }
    return {};
  }
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole) {
      return HasHeaderRow() ? Cell(section, 0) : QString();
    }
    if (orientation == Qt::Horizontal && role == Qt::TextAlignmentRole) {
      return static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter);
    }
    return QAbstractTableModel::headerData(section, orientation, role);
  }

 private:
  std::vector<QStringList> FRows;
  int FColCount = 1;
};

namespace {

const char* kHeaderStyle =
    "QHeaderView::section { background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #ffffff, "
    "stop:1 #e4e7ec); border: none; border-right: 1px solid #c5cad3; border-bottom: 1px solid #c5cad3; "
    "padding: 1px 4px; color: #1f2d3d; } QHeaderView { background: #eef0f3; }";

}  // namespace

// ---------------------------------------------------------------------------------------------
// Table

TZTTableInspector::~TZTTableInspector() = default;

void TZTTableInspector::CreateView() {
  FModel = new TZTTableModel(this);
  FGrid = new QTableView(ViewArea());
  FGrid->setModel(FModel);
  FGrid->setFrameShape(QFrame::NoFrame);
  FGrid->setSelectionBehavior(QAbstractItemView::SelectRows);
  FGrid->setSelectionMode(QAbstractItemView::SingleSelection);
  FGrid->setEditTriggers(QAbstractItemView::NoEditTriggers);
  FGrid->setShowGrid(true);
  FGrid->setGridStyle(Qt::SolidLine);
  FGrid->setWordWrap(false);
  FGrid->setTextElideMode(Qt::ElideRight);
  FGrid->verticalHeader()->hide();
  FGrid->verticalHeader()->setDefaultSectionSize(16);
  FGrid->verticalHeader()->setMinimumSectionSize(12);
  FGrid->horizontalHeader()->setDefaultSectionSize(64);
  FGrid->horizontalHeader()->setMinimumSectionSize(8);
  FGrid->horizontalHeader()->setHighlightSections(false);
  FGrid->horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
  FGrid->horizontalHeader()->setStyleSheet(QString::fromLatin1(kHeaderStyle));
  FGrid->setStyleSheet(QStringLiteral("QTableView { gridline-color: #dfe3e8; }"));
  ViewLayout()->addWidget(FGrid);
  connect(FGrid, &QWidget::customContextMenuRequested, this, [this](const QPoint& pos) {
    if (FPopupMenu) FPopupMenu->exec(FGrid->viewport()->mapToGlobal(pos));
  });

  auto* menu = new QMenu(this);
  connect(menu->addAction(QStringLiteral("Copy Selected Row Values")), &QAction::triggered, this,
          [this] { CopySelectedRowValues(); });
  connect(menu->addAction(QStringLiteral("Copy Selected Row Values (as Properties)")), &QAction::triggered,
          this, [this] { CopySelectedRowValuesAsProperties(); });
  connect(menu->addAction(QStringLiteral("Copy All Rows")), &QAction::triggered, this, [this] { CopyAllRows(); });
  SetPopupMenu(menu);
  SetViewFont(InspectorInterfaceFont());
  Clear();
}

void TZTTableInspector::SetPopupMenu(QMenu* menu) {
  FPopupMenu = menu;
  FGrid->setContextMenuPolicy(menu ? Qt::CustomContextMenu : Qt::DefaultContextMenu);
}

void TZTTableInspector::SetHighlightColors(const QColor& color, const QColor& fontColor) {
  TZTStockInspector::SetHighlightColors(color, fontColor);
  ApplyHighlightPalette(FGrid);
}

void TZTTableInspector::SetViewFont(const QFont& font) {
  FGrid->setFont(font);
  FGrid->horizontalHeader()->setFont(font);
  FGrid->verticalHeader()->setDefaultSectionSize(QFontMetrics(font).height() + 4);
  FGrid->horizontalHeader()->setFixedHeight(QFontMetrics(font).height() + 6);
}

void TZTTableInspector::Clear() {
  TZTStockInspector::Clear();
  // An empty table still shows a header row and one data row.
  FModel->SetCells({QStringList{QString()}, QStringList{QString()}}, 1);
  FGrid->horizontalHeader()->show();
}

int TZTTableInspector::RowCount() const { return FModel->GridRowCount(); }
int TZTTableInspector::ColCount() const { return FModel->GridColCount(); }
QString TZTTableInspector::Cell(int col, int row) const { return FModel->Cell(col, row); }
int TZTTableInspector::ColumnWidth(int col) const { return FGrid->columnWidth(col); }

void TZTTableInspector::InspectMessage() {
  const QStringList lines = SplitLines(ToQString(MessageSet.GetDetails()));
  Clear();
  std::vector<QStringList> rows;
  rows.reserve(static_cast<std::size_t>(std::max<qsizetype>(lines.size(), 2)));
  std::vector<int> fieldCounts;
  fieldCounts.reserve(static_cast<std::size_t>(lines.size()));
  int colCount = 1;
  for (const QString& line : lines) {
    rows.push_back(line.split(u'\t'));
    const int n = static_cast<int>(rows.back().size());
    fieldCounts.push_back(n);
    if (n > 1) colCount = n;  // set, not raised: the last line with two or more fields decides
  }
  // A later line with fewer fields (but at least two) drops the cells to the right of it in the
  // rows above; cells survive only left of every later shrink.
  int limit = std::numeric_limits<int>::max();
  for (std::size_t r = rows.size(); r-- > 0;) {
    if (fieldCounts[r] > 1) limit = std::min(limit, fieldCounts[r]);
    if (rows[r].size() > limit) rows[r].resize(limit);
  }
  while (rows.size() < 2) rows.push_back(QStringList{QString()});
  FModel->SetCells(std::move(rows), colCount);
  // One line cannot be kept as a fixed row, so it has no header look.
  FGrid->horizontalHeader()->setVisible(lines.size() != 1);
  SizeColumns();
}

void TZTTableInspector::SizeColumns() {
  // Every cell counts, but only the longest texts of a column can be its widest, so only those
  // are measured in the font: a table of many thousand rows sizes at once.
  const QFontMetrics fm(FGrid->font());
  const int rows = FModel->GridRowCount();
  const int cols = FModel->GridColCount();
  constexpr std::size_t kCandidates = 24;
  for (int c = 0; c < cols; ++c) {
    std::vector<std::pair<qsizetype, int>> longest;  // (length, row), a min-heap on length
    longest.reserve(kCandidates + 1);
    auto greater = [](const auto& a, const auto& b) { return a.first > b.first; };
    for (int r = 0; r < rows; ++r) {
      const qsizetype len = FModel->CellLength(c, r);
      if (len == 0) continue;
      if (longest.size() < kCandidates) {
        longest.emplace_back(len, r);
        std::push_heap(longest.begin(), longest.end(), greater);
      } else if (len > longest.front().first) {
        std::pop_heap(longest.begin(), longest.end(), greater);
        longest.back() = {len, r};
        std::push_heap(longest.begin(), longest.end(), greater);
      }
    }
    int width = 0;
    for (const auto& [len, r] : longest) width = std::max(width, fm.horizontalAdvance(FModel->Cell(c, r)));
    FGrid->setColumnWidth(c, std::min(width + 20, 2000));
  }
}

void TZTTableInspector::GetContents(QStringList& lines) {
  const int cols = FModel->GridColCount();
  for (int r = 0; r < FModel->GridRowCount(); ++r) {
    QStringList cells;
    for (int c = 0; c < cols; ++c) cells.append(FModel->Cell(c, r));
    lines.append(cells.join(u'\t'));
  }
}

void TZTTableInspector::PrintContents(const QStringList& lines) {
  if (lines.isEmpty()) return;
  const int columns = static_cast<int>(lines.first().split(u'\t').size());
  std::vector<int> widths(static_cast<std::size_t>(columns), 0);
  std::vector<QStringList> split;
  split.reserve(static_cast<std::size_t>(lines.size()));
  for (const QString& line : lines) {
    split.push_back(line.split(u'\t'));
    const QStringList& fields = split.back();
    // Fields beyond the first line's columns have no width; they print as they stand.
    for (int i = 0; i < fields.size() && i < columns; ++i) {
      widths[static_cast<std::size_t>(i)] = std::max(widths[static_cast<std::size_t>(i)], static_cast<int>(fields.at(i).size()));
    }
  }
  for (const QStringList& fields : split) {
    for (int i = 0; i + 1 < fields.size(); ++i) {
      if (i < columns) {
        PrintText(PadCut(fields.at(i), widths[static_cast<std::size_t>(i)]) + QStringLiteral("  "));
      } else {
        PrintText(fields.at(i) + QStringLiteral("  "));
      }
    }
    PrintLine(fields.isEmpty() ? QString() : fields.last());
  }
}

int TZTTableInspector::SelectedRow() const {
  const QModelIndex current = FGrid->currentIndex();
  const QModelIndexList selected = FGrid->selectionModel()->selectedRows();
  int row = selected.isEmpty() ? (current.isValid() ? current.row() : -1) : selected.first().row();
  if (row < 0) return -1;
  return row + (FModel->HasHeaderRow() ? 1 : 0);
}

void TZTTableInspector::CopySelectedRowValues() {
  const int row = SelectedRow();
  if (row < 0) return;
  QStringList cells;
  for (int c = 0; c < FModel->GridColCount(); ++c) cells.append(FModel->Cell(c, row));
  PutTextOnClipboard(cells.join(u'\t'));
}

void TZTTableInspector::CopySelectedRowValuesAsProperties() {
  const int row = SelectedRow();
  if (row < 0) return;
  QStringList lines;
  for (int c = 0; c < FModel->GridColCount(); ++c) lines.append(FModel->Cell(c, 0) + u'=' + FModel->Cell(c, row));
  PutTextOnClipboard(lines.join(QStringLiteral("\r\n")));
}

void TZTTableInspector::CopyAllRows() {
  QStringList lines;
  GetContents(lines);
  PutTextOnClipboard(LinesAsText(lines));
}

void TZTTableInspector::CopyToClipboard() { CopyAllRows(); }

// ---------------------------------------------------------------------------------------------
// Properties family

void TZTPropertiesInspector::CreateView() {
  FGrid = new TIxItemListEditor(ViewArea());
  ViewLayout()->addWidget(FGrid);
  connect(FGrid, &QWidget::customContextMenuRequested, this, [this](const QPoint& pos) {
    if (FPopupMenu) FPopupMenu->exec(FGrid->viewport()->mapToGlobal(pos));
  });
  FValueColor = QColor(0, 0, 128);
  FGrid->SetValueColor(FValueColor);
  connect(FGrid, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* current) {
    if (FUpdating || !current) return;
    if (TIxItemProp* item = TIxItemListEditor::PropOf(current)) FSelectedPath = item->FullPathName();
  });
  auto* menu = new QMenu(this);
  connect(menu->addAction(QStringLiteral("Copy Selected Property Value")), &QAction::triggered, this,
          [this] { CopySelectedPropertyValue(); });
  connect(menu->addAction(QStringLiteral("Copy All Properties && Values")), &QAction::triggered, this,
          [this] { CopyToClipboard(); });
  SetPopupMenu(menu);
  SetHeadings();
  if (FBtnCopyValue) connect(FBtnCopyValue, &QToolButton::clicked, this, [this] { CopySelectedPropertyValue(); });
}

void TZTPropertiesInspector::CreateToolbarButtons(QWidget* toolbar) {
  (void)toolbar;
  FBtnCopyValue = AddToolButton(QStringLiteral("Copy Value to Clipboard"), 8, false);
}

QString TZTPropertiesInspector::GetColumnHeading(int col) const {
  if (col == 0) return QStringLiteral("Field");
  if (col == 1) return QStringLiteral("Value");
  return {};
}

void TZTPropertiesInspector::SetHeadings() {
  FGrid->SetTitleCaptions({GetColumnHeading(0), GetColumnHeading(1)});
  FGrid->SetValuesRightAligned(RightAlignValues());
}

void TZTPropertiesInspector::SetValueColor(const QColor& color) {
  FValueColor = color;
  if (FGrid) FGrid->SetValueColor(color);
}

void TZTPropertiesInspector::SetHighlightColors(const QColor& color, const QColor& fontColor) {
  TZTStockInspector::SetHighlightColors(color, fontColor);
  ApplyHighlightPalette(FGrid);
}

void TZTPropertiesInspector::SetViewFont(const QFont& font) {
  FGrid->setFont(font);
  FGrid->header()->setFont(font);
}

void TZTPropertiesInspector::SetPopupMenu(QMenu* menu) {
  FPopupMenu = menu;
  FGrid->setContextMenuPolicy(menu ? Qt::CustomContextMenu : Qt::DefaultContextMenu);
}

QStringList TZTPropertiesInspector::IndentationToPaths(const QStringList& lines) {
  QStringList out;
  out.reserve(lines.size());
  QStringList stack;
  int previousLevel = 0;
  QString previousName;
  for (const QString& line : lines) {
    const qsizetype eq = line.indexOf(u'=');
    QString name = eq < 0 ? line : line.left(eq);
    const QString value = eq < 0 ? QString() : line.mid(eq + 1);
    int level = 0;
    while (name.size() >= 2 * (level + 1) && name.at(2 * level) == u' ' && name.at(2 * level + 1) == u' ') ++level;
    name = name.mid(2 * level);
    if (level > previousLevel) {
      stack.append(previousName);  // once, however great the rise
    } else if (level < previousLevel) {
      for (int pops = 0; pops < previousLevel - level && !stack.isEmpty(); ++pops) stack.removeLast();
    }
    if (stack.isEmpty()) {
      out.append(name + u'=' + value);
    } else {
      out.append(DelimitedText(stack, u'.') + u'.' + name + u'=' + value);
    }
    previousName = name;
    previousLevel = level;
  }
  return out;
}

void TZTPropertiesInspector::FillGrid(const QStringList& lines) {
  FGrid->SetStrings(lines);
  SetHeadings();
}

void TZTPropertiesInspector::Clear() {
  TZTStockInspector::Clear();
  if (FGrid) FGrid->SetStrings({});
}

void TZTPropertiesInspector::InspectMessage() {
  FUpdating = true;
  struct Done {
    bool& flag;
    ~Done() { flag = false; }
  } done{FUpdating};
  TZTStockInspector::Clear();
  const QStringList lines = SplitLines(ToQString(MessageSet.GetDetails()));
  FillGrid(IndentationToPaths(lines));
  if (!FSelectedPath.isEmpty()) {
    if (TIxItemProp* item = FGrid->Props().FindItemByFullPathName(FSelectedPath)) FGrid->SelectItem(item);
  }
}

void TZTPropertiesInspector::GetContents(QStringList& lines) { lines.append(FGrid->Strings()); }

void TZTPropertiesInspector::PrintContents(const QStringList& lines) {
  if (lines.isEmpty()) return;
  int width = 0;
  for (const QString& line : lines) width = std::max(width, static_cast<int>(line.indexOf(u'=')));
  for (const QString& line : lines) {
    const qsizetype eq = line.indexOf(u'=');
    if (eq >= 0) {
      PrintText(PadCut(line.left(eq), width) + QStringLiteral("  "));
      PrintLine(line.mid(eq + 1));
    } else {
      PrintLine(line);
    }
  }
}

void TZTPropertiesInspector::CopyToClipboard() {
  QStringList lines;
  GetContents(lines);
  PutTextOnClipboard(LinesAsText(lines));
}

void TZTPropertiesInspector::CopySelectedPropertyValue() {
  if (TIxItemProp* item = FGrid->SelectedItem()) PutTextOnClipboard(item->Value());
}

// ---------------------------------------------------------------------------------------------

QString TZTObjectInspector::GetColumnHeading(int col) const {
  return col == 0 ? QStringLiteral("Property") : TZTPropertiesInspector::GetColumnHeading(col);
}

void TZTObjectInspector::InspectMessage() {
  TZTPropertiesInspector::InspectMessage();
  QString header = ToQString(MessageSet.GetTypeName());
  const QStringList lines = SplitLines(ToQString(MessageSet.GetDetails()));
  for (const QString& line : lines) {
    if (line.startsWith(QStringLiteral("Name=")) || line == QStringLiteral("Name")) {
      QString value = line.mid(5);
      if (value.startsWith(u'\'')) value.remove(0, 1);
      if (value.endsWith(u'\'')) value.chop(1);
      header += QStringLiteral(": ") + value;
      break;
    }
  }
  SetHeader(header);
}

QString TZTMemoryStatusInspector::GetColumnHeading(int col) const {
  return col == 0 ? QStringLiteral("Statistic") : TZTPropertiesInspector::GetColumnHeading(col);
}

void TZTMemoryStatusInspector::InspectMessage() {
  TZTPropertiesInspector::InspectMessage();
  SizeNameColumn();
}

void TZTMemoryStatusInspector::SizeNameColumn() {
  if (!FGrid) return;
  // Room for the widest value (at least a number in the billions), the rest for the names.
  const QFontMetrics fm(FGrid->font());
  int valueWidth = fm.horizontalAdvance(QStringLiteral("0,000,000,000"));
  for (int i = 0; i < FGrid->topLevelItemCount(); ++i) {
    valueWidth = std::max(valueWidth, fm.horizontalAdvance(FGrid->topLevelItem(i)->text(1)));
  }
  FGrid->header()->resizeSection(0, std::max(120, FGrid->viewport()->width() - valueWidth - 16));
}

void TZTMemoryStatusInspector::resizeEvent(QResizeEvent* event) {
  TZTPropertiesInspector::resizeEvent(event);
  SizeNameColumn();
}

// ---------------------------------------------------------------------------------------------
// Collection

TZTCollectionInspector::~TZTCollectionInspector() = default;

void TZTCollectionInspector::CreateView() {
  TZTPropertiesInspector::CreateView();
  // The grid moves into a split layout with the list of items beside or above it.
  ViewLayout()->removeWidget(FGrid);
  auto* holder = new QWidget(ViewArea());
  FSplitLayout = new QBoxLayout(QBoxLayout::TopToBottom, holder);
  FSplitLayout->setContentsMargins(0, 0, 0, 0);
  FSplitLayout->setSpacing(0);
  FSidePanel = new QFrame(holder);
  FSidePanel->setObjectName(QStringLiteral("CollectionSide"));
  auto* sideLayout = new QVBoxLayout(FSidePanel);
  sideLayout->setContentsMargins(0, 0, 0, 0);
  FItemList = new QListWidget(FSidePanel);
  FItemList->setFrameShape(QFrame::NoFrame);
  FItemList->setUniformItemSizes(true);
  sideLayout->addWidget(FItemList);
  FSidePanel->setMinimumHeight(88);
  FSplitLayout->addWidget(FSidePanel);
  FSplitLayout->addWidget(FGrid, 1);
  ViewLayout()->addWidget(holder);
  connect(FItemList, &QListWidget::currentRowChanged, this, [this](int row) { SelectEntry(row); });
  connect(FItemList, &QWidget::customContextMenuRequested, this, [this](const QPoint& pos) {
    if (FPopupMenu) FPopupMenu->exec(FItemList->viewport()->mapToGlobal(pos));
  });
  SetPopupMenu(FPopupMenu);
  Redock();
}

void TZTCollectionInspector::Redock() {
  if (!FSplitLayout) return;
  const bool sideBySide = height() * 2 <= width();
  FSideBySide = sideBySide;
  if (sideBySide) {
    FSplitLayout->setDirection(QBoxLayout::LeftToRight);
    FSidePanel->setMinimumHeight(0);
    FSidePanel->setMaximumHeight(QWIDGETSIZE_MAX);
    FSidePanel->setFixedWidth(std::max(80, width() / 3));
    FSidePanel->setStyleSheet(QStringLiteral("QFrame#CollectionSide { border-right: 1px solid #c5cad3; }"));
  } else {
    FSplitLayout->setDirection(QBoxLayout::TopToBottom);
    FSidePanel->setMinimumWidth(0);
    FSidePanel->setMaximumWidth(QWIDGETSIZE_MAX);
    FSidePanel->setFixedHeight(std::max(88, height() / 3));
    FSidePanel->setStyleSheet(QStringLiteral("QFrame#CollectionSide { border-bottom: 1px solid #c5cad3; }"));
  }
}

void TZTCollectionInspector::resizeEvent(QResizeEvent* event) {
  TZTObjectInspector::resizeEvent(event);
  Redock();
}

void TZTCollectionInspector::Clear() {
  TZTPropertiesInspector::Clear();
  FEntries.clear();
  if (FItemList) {
    const QSignalBlocker block(FItemList);
    FItemList->clear();
  }
}

void TZTCollectionInspector::InspectMessage() {
  const QStringList lines = SplitLines(ToQString(MessageSet.GetDetails()));
  Clear();
  QStringList captions;
  for (const QString& line : lines) {
    const qsizetype bar = line.indexOf(u'|');
    if (bar < 0) continue;
    captions.append(line.left(bar));
    FEntries.push_back(ParseDelimitedText(line.mid(bar + 1), u';'));
  }
  {
    const QSignalBlocker block(FItemList);
    FItemList->addItems(captions);
  }
  SetHeader(ToQString(MessageSet.GetTypeName()) + QStringLiteral(" Collection Items"));
  if (!FEntries.empty()) {
    FItemList->setCurrentRow(0);
    SelectEntry(0);
  }
}

void TZTCollectionInspector::SelectEntry(int index) {
  if (index < 0 || index >= static_cast<int>(FEntries.size())) return;
  FGrid->SetStrings(FEntries[static_cast<std::size_t>(index)]);
  SetHeadings();
  if (FItemList->currentRow() != index) {
    const QSignalBlocker block(FItemList);
    FItemList->setCurrentRow(index);
  }
}

void TZTCollectionInspector::SetHighlightColors(const QColor& color, const QColor& fontColor) {
  TZTPropertiesInspector::SetHighlightColors(color, fontColor);
  ApplyHighlightPalette(FItemList);
}

void TZTCollectionInspector::SetViewFont(const QFont& font) {
  TZTPropertiesInspector::SetViewFont(font);
  if (FItemList) FItemList->setFont(font);
}

void TZTCollectionInspector::SetPopupMenu(QMenu* menu) {
  TZTPropertiesInspector::SetPopupMenu(menu);
  if (!FItemList) return;
  FItemList->setContextMenuPolicy(menu ? Qt::CustomContextMenu : Qt::DefaultContextMenu);
}

void TZTCollectionInspector::GetContents(QStringList& lines) {
  for (std::size_t i = 0; i < FEntries.size(); ++i) {
    lines.append(FItemList->item(static_cast<int>(i))->text());
    for (const QString& prop : FEntries[i]) lines.append(QStringLiteral("        ") + prop);
  }
}

void TZTCollectionInspector::CopyToClipboard() {
  QStringList lines;
  for (std::size_t i = 0; i < FEntries.size(); ++i) {
    lines.append(FItemList->item(static_cast<int>(i))->text());
    for (const QString& prop : FEntries[i]) {
      const qsizetype eq = prop.indexOf(u'=');
      const QString name = eq < 0 ? prop : prop.left(eq);
      const QString value = eq < 0 ? QString() : prop.mid(eq + 1);
      lines.append(u'\t' + name + u'\t' + value);
    }
  }
  PutTextOnClipboard(LinesAsText(lines));
}

}  // namespace zentrail
