// The bitmap, colour, hierarchy and XML inspectors against their payloads.

#include <Qsci/qsciscintilla.h>
#include <gtest/gtest.h>

#include <QScrollArea>
#include <QTableWidget>
#include <QToolButton>
#include <QTreeWidget>
#include <memory>

#include "InspectorTestSupport.h"
#include "ZTInspect.h"
#include "ZTXmlViewFrame.h"

namespace zentrail {
namespace {

template <class T>
std::unique_ptr<T> Make() {
  return std::unique_ptr<T>(TZTStockInspector::Create<T>(nullptr, nullptr));
}

TEST(PictureInspectors, BitmapDecodesThePngAndReportsItsSize) {
  auto b = Make<TZTBitmapInspector>();
  EXPECT_EQ(b->GetFooter(), QStringLiteral("0 x 0"));
  EXPECT_EQ(b->GetDisplayType(), 1);
  const QImage source = test::SamplePicture(120, 80);
  test::PutMessage(ztmBitmap, test::ToHex(test::PngBytes(source)), "PngImage", "screen shot");
  b->InspectMessage();
  EXPECT_EQ(b->GetFooter(), QStringLiteral("120 x 80"));
  EXPECT_EQ(b->Picture().pixelColor(10, 20).rgb(), source.pixelColor(10, 20).rgb());
  EXPECT_TRUE(b->Notice().isEmpty());

  b->CopyToClipboard();
  EXPECT_EQ(QGuiApplication::clipboard()->image().size(), QSize(120, 80));

  // A Windows bitmap stream when the type name says anything else.
  QByteArray bmp;
  {
    QBuffer buffer(&bmp);
    buffer.open(QIODevice::WriteOnly);
    source.save(&buffer, "BMP");
  }
  test::PutMessage(ztmBitmap, test::ToHex(bmp), "TBitmap");
  b->InspectMessage();
  EXPECT_EQ(b->GetFooter(), QStringLiteral("120 x 80"));

  b->Clear();
  EXPECT_EQ(b->GetFooter(), QStringLiteral("0 x 0"));
  EXPECT_TRUE(b->Picture().isNull());
}

TEST(PictureInspectors, BitmapModesApplyOnClickOnly) {
  auto b = Make<TZTBitmapInspector>();
  b->resize(200, 150);
  test::PutMessage(ztmBitmap, test::ToHex(test::PngBytes(test::SamplePicture(400, 100))), "PngImage");
  b->InspectMessage();
  EXPECT_FALSE(b->ScrollBox()->widgetResizable());  // full size scrolls
  b->SetDisplayType(0);
  EXPECT_EQ(b->GetDisplayType(), 0);
  EXPECT_FALSE(b->ScrollBox()->widgetResizable());  // only the button went down
  b->FBtnScale->click();
  EXPECT_TRUE(b->ScrollBox()->widgetResizable());
  b->FBtnStretch->click();
  EXPECT_EQ(b->GetDisplayType(), 2);
  b->FBtnFullSize->click();
  EXPECT_EQ(b->GetDisplayType(), 1);
  EXPECT_EQ(b->FBtnScale->toolTip(), QStringLiteral("Scale"));
}

TEST(PictureInspectors, ColourShowsValuesAndSwatch) {
  auto c = Make<TZTColorInspector>();
  auto values = [&] {
    std::vector<std::string> v;
    for (int i = 0; i < 7; ++i) v.push_back(c->ValueText(i).toStdString());
    return v;
  };
  test::PutMessage(ztmColor, "255\r\n0\r\n255", "TColor", "Fill: clFuchsia = RGB( 255, 0, 255 )");
  c->InspectMessage();
  EXPECT_EQ(values(), (std::vector<std::string>{"255", "0", "255", "0", "200", "240", "120"}));
  EXPECT_EQ(c->SwatchColor(), QColor(255, 0, 255));

  test::PutMessage(ztmColor, "10\r\n20\r\n30\r\n128", "ARGB_Color");
  c->InspectMessage();
  EXPECT_EQ(c->ValueText(3), QStringLiteral("128"));

  // A red of 300 shows as written while the swatch takes its low byte.
  test::PutMessage(ztmColor, "300\r\n0\r\n0", "TColor");
  c->InspectMessage();
  EXPECT_EQ(c->ValueText(0), QStringLiteral("300"));
  EXPECT_EQ(c->SwatchColor(), QColor(44, 0, 0));
  EXPECT_TRUE(c->Notice().isEmpty());
}

TEST(TreeInspectors, HierarchyNestsByTabsAndMeasuresFromRealDepth) {
  auto h = Make<TZTHierarchyInspector>();
  test::PutMessage(ztmCustomHierarchy, "a\r\n\t\t\tb\r\n\tc\r\n\r\nd\r\n\te\r\n\t\tf\r\ng", "Controls");
  h->InspectMessage();
  EXPECT_EQ(h->GetHeader(), QStringLiteral("Controls"));
  QTreeWidget* tree = h->Tree();
  ASSERT_EQ(tree->topLevelItemCount(), 3);
  QTreeWidgetItem* a = tree->topLevelItem(0);
  ASSERT_EQ(a->childCount(), 2);  // b one level down only, c its sibling
  EXPECT_EQ(a->child(0)->text(0), QStringLiteral("b"));
  EXPECT_EQ(a->child(1)->text(0), QStringLiteral("c"));
  EXPECT_EQ(tree->topLevelItem(1)->child(0)->child(0)->text(0), QStringLiteral("f"));
  EXPECT_TRUE(a->isExpanded());
  QStringList lines;
  h->GetContents(lines);
  EXPECT_EQ(lines, (QStringList{"a", "\tb", "\tc", "d", "\te", "\t\tf", "g"}));
  h->CopyToClipboard();
  EXPECT_EQ(test::ClipboardText(), "a\r\n\tb\r\n\tc\r\nd\r\n\te\r\n\t\tf\r\ng\r\n");
  h->CollapseAll();
  EXPECT_FALSE(a->isExpanded());
  h->ExpandAll();
  EXPECT_TRUE(tree->topLevelItem(1)->child(0)->isExpanded());

  // An empty type name keeps the empty header of Clear.
  test::PutMessage(ztmCustomHierarchy, "x", "");
  h->InspectMessage();
  EXPECT_EQ(h->GetHeader(), QString());
}

TEST(TreeInspectors, XmlShowsRenderingTreeAndAttributes) {
  auto x = Make<TZTXmlDataInspector>();
  test::PutMessage(ztmXmlData,
                   "<?xml version=\"1.0\"?>\n<config version=\"2\">\n  <!-- servers -->\n  <server name=\"a\" port=\"80\"/>\n"
                   "  <server name=\"b\">backup &amp; more</server>\n</config>\n",
                   "Xml Data");
  x->InspectMessage();
  EXPECT_EQ(x->GetHeader(), QStringLiteral("XML Data"));
  TZTXmlView* view = x->XmlView();
  EXPECT_EQ(view->SyntaxView()->text(), view->Rendering());
  QStringList lines;
  x->GetContents(lines);
  EXPECT_EQ(lines, (QStringList{"<?xml version=\"1.0\"?>", "<config version=\"2\">", "  <!-- servers-->",
                                "  <server name=\"a\" port=\"80\"/>", "  <server name=\"b\">backup &amp; more</server>",
                                "</config>"}));

  QTreeWidget* tree = view->StructureTree();
  ASSERT_EQ(tree->topLevelItemCount(), 1);
  QTreeWidgetItem* doc = tree->topLevelItem(0);
  EXPECT_EQ(doc->text(0), QStringLiteral("Document"));
  EXPECT_TRUE(doc->isExpanded());
  ASSERT_EQ(doc->childCount(), 2);  // the declaration and config; blank text makes no node
  QTreeWidgetItem* config = doc->child(1);
  EXPECT_EQ(config->text(0), QStringLiteral("config"));
  EXPECT_FALSE(config->isExpanded());
  config->setExpanded(true);
  ASSERT_EQ(config->childCount(), 3);
  EXPECT_EQ(config->child(0)->text(0), QStringLiteral(" servers "));
  tree->setCurrentItem(config->child(1));
  QTableWidget* grid = view->ParameterGrid();
  ASSERT_EQ(grid->rowCount(), 2);
  EXPECT_EQ(grid->item(1, 0)->text(), QStringLiteral("port"));
  EXPECT_EQ(grid->item(1, 1)->text(), QStringLiteral("80"));
  EXPECT_EQ(grid->horizontalHeaderItem(0)->text(), QStringLiteral("Tag Parameter"));
  config->child(2)->setExpanded(true);
  EXPECT_EQ(config->child(2)->child(0)->text(0), QStringLiteral("backup & more"));

  // View switching, and the restored setting applies at once.
  EXPECT_EQ(x->GetViewType(), 0);
  x->SetViewType(1);
  EXPECT_EQ(view->CurrentPage(), 1);
  x->ExpandAll();
  EXPECT_TRUE(config->isExpanded());
  x->CollapseAll();
  EXPECT_FALSE(doc->isExpanded());
  x->FBtnSyntax->click();
  EXPECT_EQ(view->CurrentPage(), 0);
  EXPECT_EQ(x->GetViewType(), 0);
  // On the syntax page the tags fold: collapsing hides the lines inside <config>.
  x->CollapseAll();
  EXPECT_FALSE(view->SyntaxView()->SendScintilla(QsciScintilla::SCI_GETLINEVISIBLE, 2UL));
  EXPECT_TRUE(view->SyntaxView()->SendScintilla(QsciScintilla::SCI_GETLINEVISIBLE, 1UL));
  x->ExpandAll();
  EXPECT_TRUE(view->SyntaxView()->SendScintilla(QsciScintilla::SCI_GETLINEVISIBLE, 2UL));

  // Copy: the selection on the syntax page, else the whole rendering.
  view->SyntaxView()->setSelection(1, 0, 1, 7);
  x->CopyToClipboard();
  EXPECT_EQ(test::ClipboardText(), "<config");
  view->SyntaxView()->setSelection(0, 0, 0, 0);
  x->CopyToClipboard();
  EXPECT_EQ(test::ClipboardText().substr(0, 23), "<?xml version=\"1.0\"?>\r\n");
}

TEST(TreeInspectors, XmlWithErrorsShowsTheDocumentPartAndTheErrors) {
  auto x = Make<TZTXmlDataInspector>();
  test::PutMessage(ztmXmlData, "</a>");
  x->InspectMessage();
  TZTXmlView* view = x->XmlView();
  EXPECT_EQ(view->StructureTree()->topLevelItem(0)->childCount(), 0);
  ASSERT_FALSE(view->Errors().isEmpty());
  EXPECT_TRUE(view->ErrorsShown());

  test::PutMessage(ztmXmlData, "<ok/>");
  x->InspectMessage();
  EXPECT_FALSE(view->ErrorsShown());
  EXPECT_TRUE(view->Errors().isEmpty());
}

}  // namespace
}  // namespace zentrail
