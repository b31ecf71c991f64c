// The table inspector and the name/value family against their payloads.

#include <gtest/gtest.h>

#include <QHeaderView>
#include <QListWidget>
#include <QTableView>
#include <memory>

#include "InspectorTestSupport.h"
#include "IxItemListEditor.h"
#include "ZTInspect.h"

namespace zentrail {
namespace {

template <class T>
std::unique_ptr<T> Make() {
  return std::unique_ptr<T>(TZTStockInspector::Create<T>(nullptr, nullptr));
}

QStringList RowsOf(TZTTableInspector& t) {
  QStringList rows;
  t.GetContents(rows);
  return rows;
}

TEST(TabularInspectors, TableFillsCellsAndKeepsTheLastWideLinesColumnCount) {
  auto t = Make<TZTTableInspector>();
  test::PutMessage(ztmCustomTable, "Name\tSize\tKind\r\nalpha.txt\t12\tfile\r\nbin\t\tfolder\r\n");
  t->InspectMessage();
  EXPECT_EQ(t->RowCount(), 3);
  EXPECT_EQ(t->ColCount(), 3);
  EXPECT_EQ(t->Grid()->model()->headerData(1, Qt::Horizontal).toString(), QStringLiteral("Size"));
  EXPECT_EQ(t->Grid()->model()->rowCount(), 2);
  EXPECT_EQ(t->Cell(0, 2), QStringLiteral("bin"));
  EXPECT_EQ(RowsOf(*t), (QStringList{"Name\tSize\tKind", "alpha.txt\t12\tfile", "bin\t\tfolder"}));
  // Each column is as wide as its widest text plus 20; an empty column is 20 wide.
  const QFontMetrics fm(t->Grid()->font());
  EXPECT_EQ(t->ColumnWidth(0), fm.horizontalAdvance(QStringLiteral("alpha.txt")) + 20);

  test::PutMessage(ztmCustomTable, "a\tb\tc\r\n1\t2\t3\r\nx\ty");
  t->InspectMessage();
  EXPECT_EQ(t->ColCount(), 2);
  EXPECT_EQ(RowsOf(*t), (QStringList{"a\tb", "1\t2", "x\ty"}));

  test::PutMessage(ztmCustomTable, "a\tb\r\n1\t2\r\nx");
  t->InspectMessage();
  EXPECT_EQ(t->ColCount(), 2);
  EXPECT_EQ(RowsOf(*t), (QStringList{"a\tb", "1\t2", "x\t"}));

  // No lines: a header row and one data row, both empty.
  test::PutMessage(ztmCustomTable, "");
  t->InspectMessage();
  EXPECT_EQ(t->RowCount(), 2);
  EXPECT_FALSE(t->Grid()->horizontalHeader()->isHidden());
  EXPECT_EQ(t->ColumnWidth(0), 20);

  // One line cannot be a fixed row, so it shows as data without a header.
  test::PutMessage(ztmCustomTable, "only\tline");
  t->InspectMessage();
  EXPECT_EQ(t->Grid()->model()->rowCount(), 1);
  EXPECT_TRUE(t->Grid()->horizontalHeader()->isHidden());
}

TEST(TabularInspectors, TableCopyCommands) {
  auto t = Make<TZTTableInspector>();
  test::PutMessage(ztmCustomTable, "Block Size\t# Live Pointers\tEfficiency\r\n16\t1,024\t87.5 %\r\n32\t12\tN/A");
  t->InspectMessage();
  t->Grid()->selectRow(1);
  t->CopySelectedRowValues();
  EXPECT_EQ(test::ClipboardText(), "32\t12\tN/A");
  t->CopySelectedRowValuesAsProperties();
  EXPECT_EQ(test::ClipboardText(), "Block Size=32\r\n# Live Pointers=12\r\nEfficiency=N/A");
  t->CopyToClipboard();
  EXPECT_EQ(test::ClipboardText(), "Block Size\t# Live Pointers\tEfficiency\r\n16\t1,024\t87.5 %\r\n32\t12\tN/A\r\n");
}

TEST(TabularInspectors, PropertiesNestByIndentationAndKeepTheSelectedPath) {
  auto p = Make<TZTPropertiesInspector>();
  test::PutMessage(ztmCustomProperties, "a=1\r\n  b=2\r\n    c=3\r\nd=4\r\n");
  p->InspectMessage();
  TIxItemProps& props = p->Grid()->Props();
  ASSERT_EQ(props.Count(), 2);
  EXPECT_EQ(props.Item(0)->Name, QStringLiteral("a"));
  EXPECT_EQ(props.Item(1)->Name, QStringLiteral("d"));
  ASSERT_NE(props.FindItemByFullPathName(QStringLiteral("a.b.c")), nullptr);
  EXPECT_EQ(props.FindItemByFullPathName(QStringLiteral("a.b.c"))->Value(), QStringLiteral("3"));
  QStringList lines;
  p->GetContents(lines);
  EXPECT_EQ(lines, (QStringList{"a=1", "a.b=2", "a.b.c=3", "d=4"}));
  EXPECT_EQ(p->Grid()->headerItem()->text(0), QStringLiteral("Field"));

  // Clicking a row remembers its path; the next message with that path selects it again.
  test::PutMessage(ztmCustomProperties, "Font=(TFont)\r\nFont.Size=8\r\nFont.Name=Tahoma");
  p->InspectMessage();
  p->Grid()->setCurrentItem(p->Grid()->Props().FindItemByFullPathName(QStringLiteral("Font.Size"))->Row);
  EXPECT_EQ(p->SelectedPath(), QStringLiteral("Font.Size"));
  test::PutMessage(ztmCustomProperties, "Caption=Next\r\nFont=(TFont)\r\nFont.Size=10");
  p->InspectMessage();
  ASSERT_NE(p->Grid()->SelectedItem(), nullptr);
  EXPECT_EQ(p->Grid()->SelectedItem()->FullPathName(), QStringLiteral("Font.Size"));
  EXPECT_EQ(p->Grid()->SelectedItem()->Value(), QStringLiteral("10"));
  p->CopySelectedPropertyValue();
  EXPECT_EQ(test::ClipboardText(), "10");
  p->CopyToClipboard();
  EXPECT_EQ(test::ClipboardText(), "Caption=Next\r\nFont=(TFont)\r\nFont.Size=10\r\n");
  // A message without the path selects nothing anew.
  test::PutMessage(ztmCustomProperties, "Other=1");
  p->InspectMessage();
  EXPECT_EQ(p->Grid()->SelectedItem(), nullptr);
}

TEST(TabularInspectors, ObjectHeaderNamesClassAndName) {
  auto o = Make<TZTObjectInspector>();
  test::PutMessage(ztmObject, "Caption='OK'\r\nName='Button1'\r\nFont=(TFont)\r\nFont.Size=8", "TButton");
  o->InspectMessage();
  EXPECT_EQ(o->GetHeader(), QStringLiteral("TButton: Button1"));
  EXPECT_EQ(o->Grid()->headerItem()->text(0), QStringLiteral("Property"));
  test::PutMessage(ztmObject, "Name=\r\nTag=0", "TForm");
  o->InspectMessage();
  EXPECT_EQ(o->GetHeader(), QStringLiteral("TForm: "));
  test::PutMessage(ztmObject, "Tag=0", "TTimer");
  o->InspectMessage();
  EXPECT_EQ(o->GetHeader(), QStringLiteral("TTimer"));
}

TEST(TabularInspectors, MemoryStatusRightAlignsValues) {
  auto m = Make<TZTMemoryStatusInspector>();
  m->resize(400, 300);
  test::PutMessage(ztmMemoryStatus, "Memory Load=41%\r\nTotal Physical Memory=16,678,453,248\r\nAvail Physical Memory=9,801,234,432");
  m->InspectMessage();
  EXPECT_EQ(m->Grid()->headerItem()->text(0), QStringLiteral("Statistic"));
  ASSERT_EQ(m->Grid()->topLevelItemCount(), 3);
  EXPECT_TRUE(m->Grid()->topLevelItem(1)->textAlignment(1) & Qt::AlignRight);
  EXPECT_EQ(m->Grid()->topLevelItem(1)->text(1), QStringLiteral("16,678,453,248"));
}

TEST(TabularInspectors, CollectionListsItemsAndShowsTheirProperties) {
  auto c = Make<TZTCollectionInspector>();
  test::PutMessage(ztmCollection,
                   "0 - Status|Width=120;Text=Ready;\"Hint=Shows \"\"the\"\" state\"\r\n"
                   "no bar here\r\n"
                   "1 - Clock|Width=60;Text=12:00\r\n",
                   "TStatusPanels");
  c->InspectMessage();
  EXPECT_EQ(c->GetHeader(), QStringLiteral("TStatusPanels Collection Items"));
  ASSERT_EQ(c->ItemList()->count(), 2);
  EXPECT_EQ(c->ItemList()->currentRow(), 0);
  EXPECT_EQ(c->Grid()->Strings(), (QStringList{"Width=120", "Text=Ready", "Hint=Shows \"the\" state"}));
  c->ItemList()->setCurrentRow(1);
  EXPECT_EQ(c->Grid()->Strings(), (QStringList{"Width=60", "Text=12:00"}));
  QStringList lines;
  c->GetContents(lines);
  EXPECT_EQ(lines.first(), QStringLiteral("0 - Status"));
  EXPECT_EQ(lines.at(1), QStringLiteral("        Width=120"));
  c->CopyToClipboard();
  EXPECT_EQ(test::ClipboardText(),
            "0 - Status\r\n\tWidth\t120\r\n\tText\tReady\r\n\tHint\tShows \"the\" state\r\n1 - Clock\r\n\tWidth\t60\r\n\tText\t12:00\r\n");
  // Wide and low: the list stands at the left; tall: on top.
  c->show();
  c->resize(900, 300);
  EXPECT_TRUE(c->SideBySide());
  c->resize(400, 600);
  EXPECT_FALSE(c->SideBySide());
}

}  // namespace
}  // namespace zentrail
