// The payload readers on their own: line splitting, hexadecimal pictures, PNG decoding, colour
// values, delimited text, nesting by indentation, the name/value tree and the XML reading.

#include <gtest/gtest.h>

#include "InspectorTestSupport.h"
#include "IxItemListEditor.h"
#include "ZTInspect.h"
#include "ZTInspectorUtils.h"
#include "ZTPictureDecode.h"
#include "ZTXmlViewFrame.h"

namespace zentrail {
namespace {

TEST(PayloadFormats, LinesSplitAsAStringListReadsThem) {
  EXPECT_EQ(SplitLines(QString()), QStringList{});
  EXPECT_EQ(SplitLines(QStringLiteral("a\r\nb\r\n")), (QStringList{"a", "b"}));
  EXPECT_EQ(SplitLines(QStringLiteral("a\r\n\r\nb")), (QStringList{"a", "", "b"}));
  EXPECT_EQ(SplitLines(QStringLiteral("a\nb\rc")), (QStringList{"a", "b", "c"}));
  EXPECT_EQ(SplitLines(QStringLiteral("\r\n")), QStringList{""});
  EXPECT_EQ(CountLines(""), 0u);
  EXPECT_EQ(CountLines("one"), 1u);
  EXPECT_EQ(CountLines("one\r\ntwo\r\n"), 2u);
  EXPECT_EQ(CountLines("one\r\n\r\n"), 2u);
}

TEST(PayloadFormats, HexadecimalTextLosesAnOddDigitAndStopsAtABadPair) {
  std::ptrdiff_t stop = 0;
  EXPECT_EQ(HexToBytes("48656C6C6F", &stop), "Hello");
  EXPECT_EQ(stop, -1);
  EXPECT_EQ(HexToBytes("4865a", &stop), "He");  // lower case accepted, odd digit lost
  EXPECT_EQ(stop, -1);
  EXPECT_EQ(HexToBytes("4865ZZ6C", &stop), "He");
  EXPECT_EQ(stop, 4);
  EXPECT_EQ(HexToBytes("", &stop), "");
}

TEST(PayloadFormats, PngDecodesWholeDamagedOrNotAtAll) {
  const QImage source = test::SamplePicture(64, 40);
  const QByteArray png = test::PngBytes(source);

  const TZTDecodedPicture good = DecodePng(png.toStdString());
  ASSERT_TRUE(good.Error.isEmpty()) << good.Error.toStdString();
  ASSERT_EQ(good.Image.size(), QSize(64, 40));
  EXPECT_EQ(good.Image.pixelColor(5, 10).rgb(), source.pixelColor(5, 10).rgb());
  EXPECT_EQ(good.Image.pixelColor(32, 20).rgb(), source.pixelColor(32, 20).rgb());

  // Cut in the middle of the picture data: the rows before the cut remain.
  const TZTDecodedPicture cut = DecodePng(png.left(png.size() * 2 / 3).toStdString());
  EXPECT_FALSE(cut.Error.isEmpty());
  EXPECT_LT(cut.RowsDecoded, 40);

  // Not a PNG at all, and nothing at all.
  EXPECT_TRUE(DecodePng("GIF89a....").Image.isNull());
  EXPECT_NE(DecodePng("GIF89a....").Error.indexOf(QStringLiteral("not a PNG")), -1);
  EXPECT_TRUE(DecodePng("").Image.isNull());
  EXPECT_FALSE(DecodePng("").Error.isEmpty());

  // A damaged header chunk.
  QByteArray broken = png;
  broken[20] = static_cast<char>(broken[20] ^ 0x5A);
  const TZTDecodedPicture bad = DecodePng(broken.toStdString());
  EXPECT_FALSE(bad.Error.isEmpty());

  // Garbage after a valid signature never reads outside the buffer.
  std::string garbage = png.left(8).toStdString() + std::string(300, '\x7f');
  EXPECT_FALSE(DecodePng(garbage).Error.isEmpty());
}

TEST(PayloadFormats, ColourValuesOnTheHslScale) {
  auto hsl = [](int r, int g, int b) {
    const THslValues v = RgbToHsl(r, g, b);
    return std::vector<int>{v.H, v.S, v.L};
  };
  EXPECT_EQ(hsl(128, 128, 128), (std::vector<int>{0, 0, 120}));
  EXPECT_EQ(hsl(255, 0, 0), (std::vector<int>{0, 240, 120}));
  EXPECT_EQ(hsl(0, 0, 255), (std::vector<int>{160, 240, 120}));
  EXPECT_EQ(hsl(0, 255, 0), (std::vector<int>{80, 240, 120}));
  EXPECT_EQ(hsl(255, 0, 255), (std::vector<int>{200, 240, 120}));
  EXPECT_EQ(hsl(255, 255, 255), (std::vector<int>{0, 0, 240}));
  EXPECT_EQ(ColorFromZentrail(0x00FF8040), QColor(0x40, 0x80, 0xFF));
}

TEST(PayloadFormats, DelimitedTextQuotesWhatWouldBreakIt) {
  const QStringList entries{"Caption=OK", "Hint=say \"hi\"", "Tag=a;b", "Width=75"};
  const QString text = DelimitedText(entries, u';');
  EXPECT_EQ(text, QStringLiteral("Caption=OK;\"Hint=say \"\"hi\"\"\";\"Tag=a;b\";Width=75"));
  EXPECT_EQ(ParseDelimitedText(text, u';'), entries);
  EXPECT_EQ(ParseDelimitedText(QString(), u';'), QStringList{});
  EXPECT_EQ(ParseDelimitedText(QStringLiteral("a;"), u';'), (QStringList{"a", ""}));
  EXPECT_EQ(FormatLineNumber5(7), QStringLiteral("    7"));
  EXPECT_EQ(FormatLineNumber5(123456), QStringLiteral("12345"));
  EXPECT_EQ(PadCut(QStringLiteral("abcdef"), 3), QStringLiteral("abc"));
  EXPECT_EQ(PadCut(QStringLiteral("ab"), 4), QStringLiteral("ab  "));
}

TEST(PayloadFormats, IndentationBecomesDottedPaths) {
  using P = TZTPropertiesInspector;
  EXPECT_EQ(P::IndentationToPaths({"a=1", "  b=2", "    c=3", "d=4"}),
            (QStringList{"a=1", "a.b=2", "a.b.c=3", "d=4"}));
  // One name is pushed per rise, however many levels the rise spans.
  EXPECT_EQ(P::IndentationToPaths({"a=1", "      b=2"}), (QStringList{"a=1", "a.b=2"}));
  // A name that needs quoting is quoted in the path; a line without "=" has an empty value.
  EXPECT_EQ(P::IndentationToPaths({"Main Form=x", "  Caption=Hi", "Bare"}),
            (QStringList{"Main Form=x", "\"Main Form\".Caption=Hi", "Bare="}));
  // Falling further than the stack holds does not underflow.
  EXPECT_EQ(P::IndentationToPaths({"    deep=1", "top=2"}), (QStringList{".deep=1", "top=2"}));
}

TEST(PayloadFormats, NameValueTreeBuildsFromPaths) {
  TIxItemListEditor editor;
  editor.SetStrings({"Font=(TFont)", "Font.Size=8", "Font.Name=Tahoma", "Caption=OK", "Anchors.akLeft=True",
                     "Memo=line1\r\nline2  ", "NoValue"});
  TIxItemProps& props = editor.Props();
  ASSERT_EQ(props.Count(), 5);
  EXPECT_EQ(props.Item(0)->Name, QStringLiteral("Font"));
  EXPECT_EQ(props.Item(0)->Value(), QStringLiteral("(TFont)"));
  EXPECT_EQ(props.Item(0)->Items.Count(), 2);
  // A parent made on the way has an empty value.
  TIxItemProp* anchors = props.FindItemByFullPathName(QStringLiteral("Anchors"));
  ASSERT_NE(anchors, nullptr);
  EXPECT_EQ(anchors->Value(), QString());
  TIxItemProp* size = props.FindItemByFullPathName(QStringLiteral("Font.Size"));
  ASSERT_NE(size, nullptr);
  EXPECT_EQ(size->FullPathName(), QStringLiteral("Font.Size"));
  EXPECT_EQ(props.FindItemByFullPathName(QStringLiteral("Font.Color")), nullptr);
  const QStringList lines = editor.Strings();
  EXPECT_EQ(lines.first(), QStringLiteral("Font=(TFont)"));
  EXPECT_TRUE(lines.contains(QStringLiteral("Memo=line1\r\nline2")));  // right end trimmed
  EXPECT_TRUE(lines.contains(QStringLiteral("NoValue=")));
  EXPECT_EQ(editor.IndexOfName(QStringLiteral("Font.Name")), 2);
  // Quotes are part of a name, and a "." inside them still cuts the path.
  editor.SetStrings({"\"a.b\".c=1"});
  ASSERT_EQ(editor.Props().Count(), 1);
  EXPECT_EQ(editor.Props().Item(0)->Name, QStringLiteral("\"a"));
  // New rows start collapsed; selecting one opens its parents.
  editor.SetStrings({"Font=x", "Font.Size=8"});
  EXPECT_FALSE(editor.topLevelItem(0)->isExpanded());
  editor.SelectItem(editor.Props().FindItemByFullPathName(QStringLiteral("Font.Size")));
  EXPECT_TRUE(editor.topLevelItem(0)->isExpanded());
  EXPECT_EQ(editor.SelectedItem()->Name, QStringLiteral("Size"));
}

TEST(PayloadFormats, XmlRendersInItsNormalisedForm) {
  auto render = [](const char* xml) { return RenderXmlDocument(*ParseXmlDocument(QString::fromUtf8(xml)).Root); };
  EXPECT_EQ(render("<a><b/></a>"), QStringLiteral("<a>\r  <b/>\r</a>\r"));
  EXPECT_EQ(render("<a>\n   <b/>\n</a>"), QStringLiteral("<a>\r  <b/>\r</a>\r"));
  EXPECT_EQ(render("<?xml version='1.0'?><r/>"), QStringLiteral("<?xml version=\"1.0\"?>\r<r/>\r"));
  EXPECT_EQ(render("<a x='say \"hi\"'/>"), QStringLiteral("<a x='say \"hi\"'/>\r"));
  EXPECT_EQ(render("<a>x &amp; y</a>"), QStringLiteral("<a>x &amp; y</a>\r"));
  EXPECT_EQ(render("<a><!--note--><![CDATA[raw <data>]]></a>"),
            QStringLiteral("<a>\r  <!-- note-->\r  <![CDATA[raw <data>]]></a>\r"));

  const TZTXmlDocument doc = ParseXmlDocument(QStringLiteral("<r a=\"1\" b='two'><c>text</c></r>"));
  ASSERT_EQ(doc.Root->Children.size(), 1u);
  const TZTXmlNode& r = *doc.Root->Children[0];
  EXPECT_EQ(r.FParams, (QStringList{"a=1", "b=two"}));
  EXPECT_EQ(r.Children[0]->Children[0]->FKind, TZTXmlNode::Text);
  EXPECT_EQ(r.Children[0]->Children[0]->Caption(), QStringLiteral("text"));
  EXPECT_TRUE(doc.Errors.isEmpty());

  EXPECT_EQ(CleanXmlText(QStringLiteral("a\t\tb\r\n  c")), QStringLiteral("a b c"));
}

TEST(PayloadFormats, MalformedXmlKeepsWhatCameBeforeTheError) {
  const TZTXmlDocument stray = ParseXmlDocument(QStringLiteral("</a>"));
  EXPECT_TRUE(stray.Root->Children.empty());
  ASSERT_FALSE(stray.Errors.isEmpty());
  EXPECT_NE(stray.Errors.first().indexOf(QStringLiteral("Col: 0000")), -1);
  EXPECT_NE(stray.Errors.first().indexOf(QStringLiteral("Row: 00001")), -1);

  // Unclosed tags are closed by the rendering.
  const TZTXmlDocument open = ParseXmlDocument(QStringLiteral("<a><b>text"));
  EXPECT_FALSE(open.Errors.isEmpty());
  EXPECT_EQ(RenderXmlDocument(*open.Root), QStringLiteral("<a>\r  <b>text</b>\r</a>\r"));

  const TZTXmlDocument mismatch = ParseXmlDocument(QStringLiteral("<a><b>1</b><c>2</d></a>"));
  ASSERT_FALSE(mismatch.Errors.isEmpty());
  EXPECT_EQ(mismatch.Root->Children[0]->Children.size(), 2u);  // b and the open c
}

}  // namespace
}  // namespace zentrail
