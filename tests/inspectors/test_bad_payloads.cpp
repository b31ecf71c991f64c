// Payloads that do not follow their format: each inspector shows what it can, says what it could
// not, and never takes the window down.

#include <gtest/gtest.h>

#include <Qsci/qsciscintilla.h>
#include <QTreeWidget>

#include "InspectorTestSupport.h"
#include "ZTInspectorPane.h"
#include "ZTXmlViewFrame.h"

namespace zentrail {
namespace {

class BadPayloads : public ::testing::Test {
 protected:
  TZTInspectorPane pane;
};

TEST_F(BadPayloads, PicturesWithBrokenTextOrBytes) {
  const QImage source = test::SamplePicture(80, 60);
  const std::string hex = test::ToHex(test::PngBytes(source));

  // An odd last digit is dropped and the picture still shows.
  test::PutMessage(ztmBitmap, hex + "7", "PngImage");
  pane.ShowCurrentMessage(1);
  TZTBitmapInspector* b = pane.BitmapInspector();
  EXPECT_EQ(b->GetFooter(), QStringLiteral("80 x 60"));
  EXPECT_NE(b->Notice().indexOf(QStringLiteral("odd number")), -1) << b->Notice().toStdString();

  // A non-hexadecimal pair ends the data there: the picture is cut, and both facts are told.
  std::string damaged = hex;
  damaged.replace(hex.size() / 2, 2, "ZZ");
  test::PutMessage(ztmBitmap, damaged, "PngImage");
  pane.ShowCurrentMessage(1);
  EXPECT_NE(b->Notice().indexOf(QStringLiteral("not hexadecimal at character")), -1) << b->Notice().toStdString();
  EXPECT_NE(b->Notice().indexOf(QStringLiteral("PNG")), -1) << b->Notice().toStdString();

  // A truncated picture shows its first rows.
  test::PutMessage(ztmBitmap, hex.substr(0, hex.size() * 3 / 4), "PngImage");
  pane.ShowCurrentMessage(1);
  EXPECT_NE(b->Notice().indexOf(QStringLiteral("damaged")), -1) << b->Notice().toStdString();

  // Empty data with the PNG type, plain text, and a bitmap type that is not one.
  for (const auto& [details, type] : std::vector<std::pair<std::string, std::string>>{
           {"", "PngImage"}, {"hello world", "PngImage"}, {"00FF00FF", "TBitmap"}}) {
    test::PutMessage(ztmBitmap, details, type);
    EXPECT_EQ(pane.ShowCurrentMessage(1), TZTInspectorPane::pnBitmap);
    EXPECT_EQ(b->GetFooter(), QStringLiteral("0 x 0"));
    EXPECT_FALSE(b->Notice().isEmpty()) << details;
  }

  // A good picture afterwards clears the note.
  test::PutMessage(ztmBitmap, hex, "PngImage");
  pane.ShowCurrentMessage(1);
  EXPECT_TRUE(b->Notice().isEmpty());
}

TEST_F(BadPayloads, ColoursThatAreNotNumbers) {
  TZTColorInspector* c = pane.ColorInspector();
  test::PutMessage(ztmColor, "10\r\ngreen\r\n30", "TColor");
  pane.ShowCurrentMessage(1);
  EXPECT_EQ(c->ValueText(0), QStringLiteral("10"));
  EXPECT_EQ(c->ValueText(1), QStringLiteral("green"));
  EXPECT_NE(c->Notice().indexOf(QStringLiteral("\"green\" is not a number")), -1) << c->Notice().toStdString();
  EXPECT_EQ(c->SwatchColor(), c->palette().color(QPalette::Base));

  test::PutMessage(ztmColor, "10\r\n20", "TColor");
  pane.ShowCurrentMessage(1);
  EXPECT_NE(c->Notice().indexOf(QStringLiteral("blue value is missing")), -1) << c->Notice().toStdString();

  test::PutMessage(ztmColor, "1\r\n2\r\n3\r\nopaque", "ARGB_Color");
  pane.ShowCurrentMessage(1);
  EXPECT_NE(c->Notice().indexOf(QStringLiteral("alpha")), -1);

  test::PutMessage(ztmColor, "1\r\n2\r\n3", "TColor");
  pane.ShowCurrentMessage(1);
  EXPECT_TRUE(c->Notice().isEmpty());
  EXPECT_EQ(c->SwatchColor(), QColor(1, 2, 3));
}

TEST_F(BadPayloads, MalformedXmlAndRaggedTables) {
  test::PutMessage(ztmXmlData, "<root><a>one</a><b>two</c></root>");
  pane.ShowCurrentMessage(1);
  TZTXmlView* view = pane.XmlDataInspector()->XmlView();
  EXPECT_TRUE(view->ErrorsShown());
  EXPECT_NE(view->Errors().first().indexOf(QStringLiteral("Row: 00001")), -1);
  QStringList lines;
  pane.XmlDataInspector()->GetContents(lines);
  EXPECT_EQ(lines, (QStringList{"<root>", "  <a>one</a>", "  <b>two</b>", "</root>"}));

  test::PutMessage(ztmXmlData, "this is not xml at all & never was");
  pane.ShowCurrentMessage(1);
  EXPECT_TRUE(view->ErrorsShown());
  EXPECT_EQ(view->StructureTree()->topLevelItemCount(), 1);

  // Far too deep for any screen: read to the limit, with a note.
  std::string deep;
  for (int i = 0; i < 5000; ++i) deep += "<n>";
  test::PutMessage(ztmXmlData, deep);
  pane.ShowCurrentMessage(1);
  EXPECT_NE(view->Errors().join(u' ').indexOf(QStringLiteral("deeper than")), -1);

  test::PutMessage(ztmCustomTable, "a\tb\r\n1\t2\t3\t4\t5\r\nx\ty");
  pane.ShowCurrentMessage(1);
  EXPECT_EQ(pane.TableInspector()->ColCount(), 2);
  EXPECT_EQ(pane.TableInspector()->Cell(1, 2), QStringLiteral("y"));
}

TEST_F(BadPayloads, DeepPathsAndTreesAreBounded) {
  QString path = QStringLiteral("x");
  for (int i = 0; i < 20000; ++i) path += QStringLiteral(".x");
  test::PutMessage(ztmCustomProperties, (path + QStringLiteral("=1")).toStdString());
  pane.ShowCurrentMessage(1);
  QStringList lines;
  pane.PropertiesInspector()->GetContents(lines);
  ASSERT_FALSE(lines.isEmpty());
  EXPECT_TRUE(lines.last().endsWith(QStringLiteral("x=1")));

  std::string tree;
  for (int i = 0; i < 3000; ++i) tree += std::string(static_cast<std::size_t>(i), '\t') + "n" + std::to_string(i) + "\r\n";
  test::PutMessage(ztmCustomHierarchy, tree, "Deep");
  pane.ShowCurrentMessage(1);
  EXPECT_NE(pane.HierarchyInspector()->Notice().indexOf(QStringLiteral("deeper than")), -1);
  lines.clear();
  pane.HierarchyInspector()->GetContents(lines);
  EXPECT_EQ(lines.size(), 3000);
}

TEST_F(BadPayloads, MegabytesOfTextStayWhole) {
  std::string text;
  while (text.size() < (6u << 20)) text += "0123456789 abcdefghij klmnopqrst uvwxyz\r\n";
  const std::size_t lineCount = text.size() / 41;
  test::PutMessage(ztmCustomText, text, "", "big");
  EXPECT_EQ(pane.ShowCurrentMessage(1), TZTInspectorPane::pnText);
  EXPECT_EQ(static_cast<std::size_t>(pane.TextInspector()->View()->lines()), lineCount + 1);

  // One enormous line without any break: shown in pieces, copied whole. Pieces end at whole
  // characters even in multi-byte text.
  std::string line;
  while (line.size() < (1u << 20)) line += "é€x";
  test::PutMessage(ztmCustomText, "head\r\n" + line + "\r\ntail", "", "one line");
  pane.ShowCurrentMessage(1);
  TZTTextInspector* t = pane.TextInspector();
  EXPECT_GT(t->View()->lines(), 10);
  EXPECT_FALSE(t->Notice().isEmpty());
  EXPECT_EQ(t->Text().indexOf(QChar(0xFFFD)), -1);
  QStringList lines;
  t->GetContents(lines);
  ASSERT_EQ(lines.size(), 3);
  EXPECT_EQ(lines[1].toStdString(), line);
  t->CopyToClipboard();
  EXPECT_EQ(test::ClipboardText(), "head\r\n" + line + "\r\ntail");
  test::PutMessage(ztmCustomText, "short again", "", "short");
  pane.ShowCurrentMessage(1);
  EXPECT_TRUE(t->Notice().isEmpty());
  EXPECT_EQ(t->FullText(), QStringLiteral("short again"));

  // A message text of megabytes in the String inspector, and a string list of many lines.
  test::PutMessage(ztmText, "", "", text);
  pane.ShowCurrentMessage(1);
  EXPECT_EQ(pane.StringInspector()->View()->lines(), static_cast<int>(lineCount));
  test::PutMessage(ztmStringList, text, "TStringList");
  pane.ShowCurrentMessage(1);
  EXPECT_EQ(pane.StringListInspector()->GetFooter(), QStringLiteral("%1 Items").arg(lineCount));
}

}  // namespace
}  // namespace zentrail
