// Each inspector in the pane with data as a traced program sends it, grabbed to PNG files in the
// build tree (test-screens/inspectors) for a look by eye. The checks make sure that each grab shows
// its data: the view area is not blank and the expected inspector is the one on screen.

#include <gtest/gtest.h>

#include <QSet>
#include <QToolButton>
#include <QTableWidget>
#include <QTreeWidget>

#include "IxItemListEditor.h"
#include "ZTXmlViewFrame.h"

#include "InspectorTestSupport.h"
#include "ZTInspectorPane.h"

namespace zentrail {
namespace {

// Distinct colours in the middle of the picture: a blank or unfilled view has very few.
int ColourCount(const QImage& image) {
  QSet<QRgb> colours;
  const QRect area = image.rect().adjusted(4, 28, -4, -4);
  for (int y = area.top(); y < area.bottom(); y += 2) {
    for (int x = area.left(); x < area.right(); x += 2) colours.insert(image.pixel(x, y));
  }
  return static_cast<int>(colours.size());
}

class Screenshots : public ::testing::Test {
 protected:
  void SetUp() override {
    pane.resize(720, 460);
    pane.show();
  }
  QImage Shoot(const std::string& name, int expectedPanel) {
    EXPECT_EQ(pane.ShowCurrentMessage(1), expectedPanel);
    QApplication::processEvents();
    test::SaveScreenshot(&pane, name);
    return pane.grab().toImage();
  }
  TZTInspectorPane pane;
};

std::string SampleXml() {
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- deployment description -->\n<deployment name=\"orders\" version=\"4.2\">\n";
  int lines = 3;
  for (int s = 1; lines < 196; ++s) {
    xml += "  <service id=\"svc" + std::to_string(s) + "\" port=\"" + std::to_string(8000 + s) + "\" enabled=\"true\">\n";
    xml += "    <endpoint path=\"/api/v1/orders/" + std::to_string(s) + "\" method=\"GET\"/>\n";
    xml += "    <timeout unit=\"ms\">" + std::to_string(250 * s) + "</timeout>\n";
    xml += "    <!-- retries for service " + std::to_string(s) + " -->\n";
    xml += "    <retries>3</retries>\n";
    xml += "  </service>\n";
    lines += 6;
  }
  xml += "  <notes><![CDATA[Deployed by <ci> & checked]]></notes>\n</deployment>\n";
  return xml;
}

TEST_F(Screenshots, EveryInspectorWithRealLookingData) {
  test::PutMessage(ztmText, "", "", "Connection pool resized: min = 4, max = 32, idle timeout = 30 s");
  EXPECT_GT(ColourCount(Shoot("01-string", TZTInspectorPane::pnString)), 3);

  std::string trace;
  for (int i = 0; i < 30; ++i) {
    trace += "  at Orders.Service.ProcessBatch(Batch batch) in /src/orders/service.cpp:line " + std::to_string(120 + i * 7) + "\r\n";
  }
  pane.TextInspector()->SetLineNumbers(true);
  test::PutMessage(ztmStackTrace, "EAccessViolation: read of address 00000000\r\n" + trace, "", "Stack trace");
  EXPECT_GT(ColourCount(Shoot("02-text-stack-trace", TZTInspectorPane::pnText)), 3);

  std::string list;
  for (const char* city : {"Amsterdam", "Berlin", "Copenhagen", "Dublin", "Edinburgh", "Frankfurt", "Geneva", "Helsinki"}) {
    list += std::string(city) + "\r\n";
  }
  test::PutMessage(ztmStringList, list, "TStringList", "Cities");
  EXPECT_GT(ColourCount(Shoot("03-string-list", TZTInspectorPane::pnStringList)), 3);
  EXPECT_EQ(pane.StringListInspector()->GetFooter(), QStringLiteral("8 Items"));

  test::PutMessage(ztmObject,
                   "Name='btnSubmit'\r\nCaption='&Submit'\r\nEnabled=True\r\nLeft=312\r\nTop=408\r\nWidth=96\r\nHeight=28\r\n"
                   "Anchors=[akRight,akBottom]\r\nAnchors.akLeft=False\r\nAnchors.akTop=False\r\nAnchors.akRight=True\r\n"
                   "Anchors.akBottom=True\r\nFont=(TFont)\r\nFont.Charset=DEFAULT_CHARSET\r\nFont.Color=clWindowText\r\n"
                   "Font.Height=-12\r\nFont.Name='Segoe UI'\r\nFont.Style=[fsBold]\r\nFont.Style.fsBold=True\r\n"
                   "Font.Style.fsItalic=False\r\nHint='Sends the order'\r\nTabOrder=7\r\nVisible=True",
                   "TButton", "btnSubmit");
  pane.ObjectInspector()->Grid()->expandAll();
  QImage object = Shoot("04-object-nested", TZTInspectorPane::pnObject);
  pane.ObjectInspector()->Grid()->expandAll();
  test::SaveScreenshot(&pane, "04-object-nested-expanded");
  EXPECT_GT(ColourCount(object), 3);

  test::PutMessage(ztmComponentAsText,
                   "object frmMain: TfrmMain\r\n  Left = 0\r\n  Top = 0\r\n  Caption = 'Orders'\r\n  ClientHeight = 480\r\n"
                   "  object pnlTop: TPanel\r\n    Align = alTop\r\n    Height = 41\r\n  end\r\nend",
                   "", "frmMain");
  pane.MonospaceTextInspector()->SetLineNumbers(true);
  EXPECT_GT(ColourCount(Shoot("05-monospace", TZTInspectorPane::pnMonospaceText)), 3);

  test::PutMessage(ztmBitmap, test::ToHex(test::PngBytes(test::SamplePicture(320, 200))), "PngImage", "Chart");
  EXPECT_GT(ColourCount(Shoot("06-bitmap-full-size", TZTInspectorPane::pnBitmap)), 50);
  EXPECT_EQ(pane.BitmapInspector()->GetFooter(), QStringLiteral("320 x 200"));
  pane.BitmapInspector()->FBtnScale->click();
  test::PutMessage(ztmBitmap, test::ToHex(test::PngBytes(test::SamplePicture(1600, 900))), "PngImage", "Screen");
  EXPECT_GT(ColourCount(Shoot("06-bitmap-scaled", TZTInspectorPane::pnBitmap)), 50);
  pane.BitmapInspector()->FBtnFullSize->click();

  test::PutMessage(ztmCustomProperties,
                   "Host=db-primary.internal\r\nPort=5432\r\nPool\r\n  Min=4\r\n  Max=32\r\n  Idle Timeout=30 s\r\nTLS=True\r\n"
                   "Started=2026-11-22 03:14:15",
                   "", "Database settings");
  EXPECT_GT(ColourCount(Shoot("07-properties", TZTInspectorPane::pnProperties)), 3);

  std::string table = "Order\tCustomer\tItems\tTotal\tStatus\r\n";
  const char* names[] = {"Anna Berg", "Chen Li", "Diego Ruiz", "Eva Novak", "Farah Khan"};
  const char* states[] = {"paid", "shipped", "open", "cancelled"};
  for (int i = 1; i <= 40; ++i) {
    table += "A-" + std::to_string(10400 + i) + "\t" + names[i % 5] + "\t" + std::to_string(1 + i % 7) + "\t" +
             std::to_string(19 + i * 13 % 400) + ".90\t" + states[i % 4] + "\r\n";
  }
  test::PutMessage(ztmCustomTable, table, "", "Orders");
  EXPECT_GT(ColourCount(Shoot("08-table-40-rows", TZTInspectorPane::pnTable)), 3);
  EXPECT_EQ(pane.TableInspector()->RowCount(), 41);

  test::PutMessage(ztmCustomHierarchy,
                   "frmMain: TfrmMain\r\n\tpnlTop: TPanel\r\n\t\tbtnNew: TButton\r\n\t\tbtnOpen: TButton\r\n\t\tedtSearch: TEdit\r\n"
                   "\tpnlClient: TPanel\r\n\t\tgrdOrders: TDBGrid\r\n\t\tsplMain: TSplitter\r\n\t\tpnlDetails: TPanel\r\n"
                   "\tstbMain: TStatusBar",
                   "Controls", "Controls of frmMain");
  EXPECT_GT(ColourCount(Shoot("09-hierarchy-3-levels", TZTInspectorPane::pnHierarchy)), 3);

  test::PutMessage(ztmMemoryStatus,
                   "Memory Load=41%\r\nTotal Physical Memory=16,678,453,248\r\nAvail Physical Memory=9,801,234,432\r\n"
                   "Total Page File=2,147,479,552\r\nAvail Page File=2,147,479,552\r\nTotal Virtual Memory=140,737,488,351,232\r\n"
                   "Avail Virtual Memory=140,737,021,222,912\r\nAvail Ext Virtual Memory=0",
                   "", "Memory status");
  EXPECT_GT(ColourCount(Shoot("10-memory-status", TZTInspectorPane::pnMemoryStatus)), 3);

  test::PutMessage(ztmColor, "46\r\n139\r\n87", "TColor", "Accent: clSeaGreen = RGB( 46, 139, 87 )");
  QImage colour = Shoot("11-colour", TZTInspectorPane::pnColor);
  EXPECT_EQ(pane.ColorInspector()->SwatchColor(), QColor(46, 139, 87));
  EXPECT_EQ(colour.pixelColor(colour.width() / 2, colour.height() - 40), QColor(46, 139, 87));

  test::PutMessage(ztmCollection,
                   "0 - Status|Width=220;Text=Ready;Alignment=taLeftJustify;Style=psText\r\n"
                   "1 - Records|Width=120;Text=\"1,204 orders\";Alignment=taCenter;Style=psText\r\n"
                   "2 - Clock|Width=80;Text=03:14;Alignment=taRightJustify;Style=psOwnerDraw",
                   "TStatusPanels", "Panels");
  EXPECT_GT(ColourCount(Shoot("12-collection", TZTInspectorPane::pnCollection)), 3);

  test::PutMessage(ztmXmlData, SampleXml(), "Xml Data", "deployment.xml");
  pane.XmlDataInspector()->SetViewType(0);
  EXPECT_GT(ColourCount(Shoot("13-xml-syntax", TZTInspectorPane::pnXmlData)), 10);
  pane.XmlDataInspector()->SetViewType(1);
  QTreeWidget* tree = pane.XmlDataInspector()->XmlView()->StructureTree();
  QTreeWidgetItem* deployment = tree->topLevelItem(0)->child(2);
  ASSERT_NE(deployment, nullptr);
  EXPECT_EQ(deployment->text(0), QStringLiteral("deployment"));
  deployment->setExpanded(true);
  deployment->child(0)->setExpanded(true);
  tree->setCurrentItem(deployment->child(0));
  EXPECT_EQ(pane.XmlDataInspector()->XmlView()->ParameterGrid()->rowCount(), 3);
  QApplication::processEvents();
  test::SaveScreenshot(&pane, "13-xml-structure");
}

}  // namespace
}  // namespace zentrail
