// The hierarchy and XML inspectors.

#include <Qsci/qsciscintilla.h>

#include <QButtonGroup>
#include <QHeaderView>
#include <QMenu>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "ZTInspect.h"
#include "ZTInspectorUtils.h"
#include "ZTXmlViewFrame.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

namespace {
// Deeper trees cannot be read on screen, and the tree widget deletes its items recursively.
constexpr int ztMaxHierarchyDepth = 500;
}  // namespace

void TZTHierarchyInspector::CreateToolbarButtons(QWidget* toolbar) {
  (void)toolbar;
  QToolButton* collapse = AddToolButton(QStringLiteral("Collapse All"), 6, false);
  QToolButton* expand = AddToolButton(QStringLiteral("Expand All"), 7, false);
  connect(collapse, &QToolButton::clicked, this, [this] { CollapseAll(); });
  connect(expand, &QToolButton::clicked, this, [this] { ExpandAll(); });
}

void TZTHierarchyInspector::CreateView() {
  FTree = new QTreeWidget(ViewArea());
  FTree->setFrameShape(QFrame::NoFrame);
  FTree->setHeaderHidden(true);
  FTree->setUniformRowHeights(true);
  FTree->setIndentation(18);
  FTree->setAnimated(false);
  FTree->setSelectionMode(QAbstractItemView::SingleSelection);
  ViewLayout()->addWidget(FTree);
}

void TZTHierarchyInspector::Clear() {
  TZTStockInspector::Clear();
  FTree->clear();
}

void TZTHierarchyInspector::InspectMessage() {
  const QStringList lines = SplitLines(ToQString(MessageSet.GetDetails()));
  Clear();
  const QString typeName = ToQString(MessageSet.GetTypeName());
  if (!typeName.isEmpty()) SetHeader(typeName);
  if (lines.isEmpty()) return;
  FTree->setUpdatesEnabled(false);
  FTree->clear();
  QList<QTreeWidgetItem*> roots;
  QTreeWidgetItem* current = nullptr;
  int currentLevel = -1;
  auto addChild = [&roots](QTreeWidgetItem* parent, const QString& text) {
    auto* item = new QTreeWidgetItem(QStringList{text});
    if (parent) {
      parent->addChild(item);
    } else {
      roots.append(item);
    }
    return item;
  };
  bool tooDeep = false;
  for (const QString& line : lines) {
    if (line.trimmed().isEmpty()) continue;
    int level = 0;
    while (level < line.size() && line.at(level) == u'\t') ++level;
    const QString text = line.mid(level);
    QTreeWidgetItem* added = nullptr;
    if (level > currentLevel && currentLevel + 1 >= ztMaxHierarchyDepth) {
      tooDeep = true;
      level = currentLevel;  // kept at the deepest level as a sibling
    }
    // The new node's real depth, not its tabs: a jump of several levels goes one level down only,
    // and the next line is measured from there.
    int depth = 0;
    if (level > currentLevel) {
      added = addChild(current, text);
      depth = currentLevel + 1;
    } else if (level == currentLevel) {
      added = addChild(current->parent(), text);
      depth = currentLevel;
    } else {
      QTreeWidgetItem* node = current;
      depth = currentLevel;
      for (int up = 0; up < currentLevel - level && node->parent(); ++up) {
        node = node->parent();
        --depth;
      }
      added = addChild(node->parent(), text);
    }
    current = added;
    currentLevel = depth;
  }
  FTree->addTopLevelItems(roots);
  if (tooDeep) {
    SetNotice(QStringLiteral("The tree nests deeper than %1 levels; deeper entries are shown at level %1.").arg(ztMaxHierarchyDepth));
  }
  FTree->expandAll();
  FTree->setUpdatesEnabled(true);
  if (FTree->topLevelItemCount() > 0) FTree->scrollToItem(FTree->topLevelItem(0), QAbstractItemView::PositionAtTop);
}

void TZTHierarchyInspector::CollapseAll() { FTree->collapseAll(); }

void TZTHierarchyInspector::ExpandAll() {
  FTree->expandAll();
  if (FTree->topLevelItemCount() > 0) FTree->scrollToItem(FTree->topLevelItem(0), QAbstractItemView::PositionAtTop);
}

void TZTHierarchyInspector::GetContents(QStringList& lines) {
  struct Walker {
    QStringList& lines;
    void Walk(QTreeWidgetItem* item, int depth) {
      lines.append(QString(depth, u'\t') + item->text(0));
      for (int i = 0; i < item->childCount(); ++i) Walk(item->child(i), depth + 1);
    }
  } walker{lines};
  for (int i = 0; i < FTree->topLevelItemCount(); ++i) walker.Walk(FTree->topLevelItem(i), 0);
}

void TZTHierarchyInspector::CopyToClipboard() {
  QStringList lines;
  GetContents(lines);
  PutTextOnClipboard(LinesAsText(lines));
}

void TZTHierarchyInspector::SetHighlightColors(const QColor& color, const QColor& fontColor) {
  TZTStockInspector::SetHighlightColors(color, fontColor);
  ApplyHighlightPalette(FTree);
}

void TZTHierarchyInspector::SetViewFont(const QFont& font) { FTree->setFont(font); }

void TZTHierarchyInspector::SetPopupMenu(QMenu* menu) {
  FTree->setContextMenuPolicy(menu ? Qt::CustomContextMenu : Qt::DefaultContextMenu);
  FTree->disconnect(SIGNAL(customContextMenuRequested(QPoint)));
  if (menu) {
    connect(FTree, &QWidget::customContextMenuRequested, menu,
            [this, menu](const QPoint& pos) { menu->exec(FTree->viewport()->mapToGlobal(pos)); });
  }
}

// ---------------------------------------------------------------------------------------------

void TZTXmlDataInspector::CreateToolbarButtons(QWidget* toolbar) {
  auto* group = new QButtonGroup(toolbar);
  group->setExclusive(true);
  FBtnSyntax = AddToolButton(QStringLiteral("Syntax View"), 10, true);
  FBtnStructure = AddToolButton(QStringLiteral("Structure View"), 9, true);
  group->addButton(FBtnSyntax);
  group->addButton(FBtnStructure);
  FBtnSyntax->setChecked(true);
  AddToolSpacer();
  FBtnCollapse = AddToolButton(QStringLiteral("Collapse All"), 6, false);
  FBtnExpand = AddToolButton(QStringLiteral("Expand All"), 7, false);
  AddToolSpacer();
}

void TZTXmlDataInspector::CreateView() {
  FXmlView = new TZTXmlView(ViewArea());
  ViewLayout()->addWidget(FXmlView);
  connect(FBtnSyntax, &QToolButton::clicked, this, [this] { FXmlView->ShowPage(0); });
  connect(FBtnStructure, &QToolButton::clicked, this, [this] { FXmlView->ShowPage(1); });
  connect(FBtnCollapse, &QToolButton::clicked, this, [this] { CollapseAll(); });
  connect(FBtnExpand, &QToolButton::clicked, this, [this] { ExpandAll(); });
}

int TZTXmlDataInspector::GetViewType() const { return FBtnSyntax->isChecked() ? 0 : 1; }

void TZTXmlDataInspector::SetViewType(int value) {
  QToolButton* button = value == 0 ? FBtnSyntax : FBtnStructure;
  button->setChecked(true);
  button->click();
}

void TZTXmlDataInspector::CollapseAll() { FXmlView->CollapseAll(); }
void TZTXmlDataInspector::ExpandAll() { FXmlView->ExpandAll(); }

void TZTXmlDataInspector::Clear() {
  TZTStockInspector::Clear();
  FXmlView->Clear();
}

void TZTXmlDataInspector::InspectMessage() {
  Clear();
  FXmlView->InspectMessage(ToQString(MessageSet.GetDetails()));
  SetHeader(QStringLiteral("XML Data"));
}

void TZTXmlDataInspector::GetContents(QStringList& lines) { lines.append(SplitLines(FXmlView->Rendering())); }

void TZTXmlDataInspector::CopyToClipboard() {
  if (FXmlView->CurrentPage() == 0 && !FXmlView->SelectedSyntaxText().isEmpty()) {
    PutTextOnClipboard(FXmlView->SelectedSyntaxText());
    return;
  }
  // The rendering ends lines in CR alone; the clipboard gets the line ends other programs expect.
  QString text = FXmlView->Rendering();
  text.replace(u'\r', QStringLiteral("\r\n"));
  PutTextOnClipboard(text);
}

void TZTXmlDataInspector::SetHighlightColors(const QColor& color, const QColor& fontColor) {
  TZTStockInspector::SetHighlightColors(color, fontColor);
  FXmlView->SetHighlightColors(color, fontColor);
}

void TZTXmlDataInspector::SetViewFont(const QFont& font) { FXmlView->SetTreeFont(font); }
void TZTXmlDataInspector::SetViewFixedFont(const QFont& font) { FXmlView->SetSyntaxFont(font); }

void TZTXmlDataInspector::SetPopupMenu(QMenu* menu) {
  QTreeWidget* tree = FXmlView->StructureTree();
  tree->setContextMenuPolicy(menu ? Qt::CustomContextMenu : Qt::DefaultContextMenu);
  tree->disconnect(SIGNAL(customContextMenuRequested(QPoint)));
  if (menu) {
    connect(tree, &QWidget::customContextMenuRequested, menu,
            [tree, menu](const QPoint& pos) { menu->exec(tree->viewport()->mapToGlobal(pos)); });
  }
}

}  // namespace zentrail
