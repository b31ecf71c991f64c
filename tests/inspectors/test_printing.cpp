// Printing every inspector to a PDF file and reading its text back.

#include <gtest/gtest.h>

#include <QPrinter>
#include <memory>
#include <regex>

#include "InspectorTestSupport.h"
#include "ZTInspect.h"

namespace zentrail {
namespace {

template <class T>
std::unique_ptr<T> Make() {
  return std::unique_ptr<T>(TZTStockInspector::Create<T>(nullptr, nullptr));
}

std::filesystem::path PrintToPdf(TZTStockInspector& insp, const std::string& name, const QString& title) {
  const auto pdf = test::MakeTempDir("print") / (name + ".pdf");
  QPrinter printer(QPrinter::HighResolution);
  test::PreparePdfPrinter(printer, pdf);
  insp.Print(title, printer);
  return pdf;
}

bool Contains(const std::string& text, const std::string& what) { return text.find(what) != std::string::npos; }

// Column at which `word` stands on the line that begins (after blanks) with `lineStart`, as
// pdftotext lays the page out; -1 when there is no such line.
long ColumnOf(const std::string& text, const std::string& lineStart, const std::string& word) {
  std::size_t begin = 0;
  while (begin < text.size()) {
    std::size_t end = text.find('\n', begin);
    if (end == std::string::npos) end = text.size();
    const std::string line = text.substr(begin, end - begin);
    const std::size_t first = line.find_first_not_of(' ');
    if (first != std::string::npos && line.compare(first, lineStart.size(), lineStart) == 0) {
      const std::size_t at = line.find(word, first + lineStart.size());
      return at == std::string::npos ? -1 : static_cast<long>(at);
    }
    begin = end + 1;
  }
  return -1;
}

// Collapses runs of blanks so that checks do not depend on how pdftotext spaces columns.
std::string Squeeze(const std::string& s) { return std::regex_replace(s, std::regex(" +"), " "); }

TEST(Printing, TextInspectorPrintsEveryLogicalLineAcrossPages) {
  auto insp = Make<TZTTextInspector>();
  std::string details;
  for (int i = 1; i <= 150; ++i) details += "Line number " + std::to_string(i) + " of the report\r\n";
  test::PutMessage(ztmTextFile, details, "Text File");
  insp->InspectMessage();
  const auto pdf = PrintToPdf(*insp, "text", QStringLiteral("report.txt (Details)"));
  ZT_PDF_TEXT(text, pdf);
  const auto pages = test::PdfPages(text);
  ASSERT_GE(pages.size(), 2u);
  EXPECT_EQ(static_cast<int>(pages.size()), insp->PrintPageNo());
  EXPECT_TRUE(Contains(pages[0], "report.txt (Details) -- Page 1") || Contains(pages[0], "report.txt (Details)  --  Page 1"));
  EXPECT_TRUE(Contains(Squeeze(pages[1]), "Page 2"));
  for (int i : {1, 75, 150}) EXPECT_TRUE(Contains(text, "Line number " + std::to_string(i) + " of the report")) << i;
  // The first page holds one line more than the following ones.
  const int perPage = insp->PrintLinesPerPage();
  auto line = [](int n) { return "Line number " + std::to_string(n) + " of"; };
  EXPECT_TRUE(Contains(pages[0], line(perPage)));
  EXPECT_FALSE(Contains(pages[0], line(perPage + 1)));
  EXPECT_TRUE(Contains(pages[1], line(perPage + 1)));
  if (2 * perPage <= 150) {
    EXPECT_TRUE(Contains(pages[1], line(2 * perPage - 1)));
    EXPECT_FALSE(Contains(pages[1], line(2 * perPage)));
  }
}

TEST(Printing, SecondDocumentGoesOnFromTheLineCountOfTheFirst) {
  auto insp = Make<TZTStringListInspector>();
  std::string details;
  for (int i = 1; i <= 10; ++i) details += "item " + std::to_string(i) + "\r\n";
  test::PutMessage(ztmStringList, details, "TStringList");
  insp->InspectMessage();
  PrintToPdf(*insp, "first", QStringLiteral("first"));
  EXPECT_EQ(insp->PrintLineNo(), 10);
  PrintToPdf(*insp, "second", QStringLiteral("second"));
  EXPECT_EQ(insp->PrintLineNo(), 20);
}

TEST(Printing, StringListNumbersItsLines) {
  auto insp = Make<TZTStringListInspector>();
  test::PutMessage(ztmStringList, "red\r\ngreen\r\nblue", "TStringList");
  insp->InspectMessage();
  const auto pdf = PrintToPdf(*insp, "list", QStringLiteral("Colours"));
  ZT_PDF_TEXT(text, pdf);
  EXPECT_TRUE(Contains(Squeeze(text), "1: red")) << text;
  EXPECT_TRUE(Contains(Squeeze(text), "3: blue")) << text;
  EXPECT_EQ(ColumnOf(text, "1:", "red"), ColumnOf(text, "3:", "blue")) << text;
}

TEST(Printing, TableAlignsColumnsByCharacters) {
  auto insp = Make<TZTTableInspector>();
  test::PutMessage(ztmCustomTable, "Name\tSize\tKind\r\nalpha.txt\t12\tfile\r\nb\t123456\tfolder");
  insp->InspectMessage();
  const auto pdf = PrintToPdf(*insp, "table", QStringLiteral("Files"));
  ZT_PDF_TEXT(text, pdf);
  // Fields padded to their column's width in characters, so the columns line up.
  EXPECT_TRUE(Contains(Squeeze(text), "alpha.txt 12 file")) << text;
  const long size = ColumnOf(text, "Name", "Size");
  EXPECT_GT(size, 0) << text;
  EXPECT_EQ(ColumnOf(text, "alpha.txt", "12"), size) << text;
  EXPECT_EQ(ColumnOf(text, "b ", "123456"), size) << text;
  EXPECT_EQ(ColumnOf(text, "Name", "Kind"), ColumnOf(text, "b ", "folder")) << text;
  EXPECT_GT(ColumnOf(text, "Name", "Kind"), size) << text;

  // A first line narrower than a later one must not break printing.
  test::PutMessage(ztmCustomTable, "a\tb\r\n1\t2\r\nx\ty\tz");
  insp->InspectMessage();
  const auto ragged = PrintToPdf(*insp, "ragged", QStringLiteral("Ragged"));
  EXPECT_TRUE(std::filesystem::exists(ragged));
}

TEST(Printing, PropertiesAlignAtTheEqualsSign) {
  auto insp = Make<TZTObjectInspector>();
  test::PutMessage(ztmObject, "Name='Button1'\r\nCaption='OK'\r\nFont=(TFont)\r\nFont.Size=8", "TButton");
  insp->InspectMessage();
  const auto pdf = PrintToPdf(*insp, "object", QStringLiteral("Button1"));
  ZT_PDF_TEXT(text, pdf);
  EXPECT_TRUE(Contains(Squeeze(text), "Name 'Button1'")) << text;
  EXPECT_TRUE(Contains(Squeeze(text), "Font.Size 8")) << text;
  EXPECT_EQ(ColumnOf(text, "Name", "'Button1'"), ColumnOf(text, "Font.Size", "8")) << text;

  auto coll = Make<TZTCollectionInspector>();
  test::PutMessage(ztmCollection, "0 - Status|Width=120;Text=Ready\r\n1 - Clock|Width=60", "TStatusPanels");
  coll->InspectMessage();
  const auto cpdf = PrintToPdf(*coll, "collection", QStringLiteral("Panels"));
  ZT_PDF_TEXT(ctext, cpdf);
  EXPECT_TRUE(Contains(ctext, "0 - Status")) << ctext;
  EXPECT_TRUE(Contains(Squeeze(ctext), "Width 120")) << ctext;
  EXPECT_GT(ColumnOf(ctext, "Width", "120"), ColumnOf(ctext, "0 - Status", "")) << ctext;
}

TEST(Printing, HierarchyAndXmlPrintTheirContents) {
  auto h = Make<TZTHierarchyInspector>();
  test::PutMessage(ztmCustomHierarchy, "Form1: TForm1\r\n\tPanel1: TPanel\r\n\t\tButton1: TButton", "Controls");
  h->InspectMessage();
  const auto hpdf = PrintToPdf(*h, "hierarchy", QStringLiteral("Controls"));
  ZT_PDF_TEXT(htext, hpdf);
  EXPECT_TRUE(Contains(htext, "Form1: TForm1")) << htext;
  EXPECT_TRUE(Contains(htext, "Button1: TButton")) << htext;

  auto x = Make<TZTXmlDataInspector>();
  test::PutMessage(ztmXmlData, "<root><item id=\"7\">seven</item><empty/></root>");
  x->InspectMessage();
  const auto xpdf = PrintToPdf(*x, "xml", QStringLiteral("Document"));
  ZT_PDF_TEXT(xtext, xpdf);
  EXPECT_TRUE(Contains(xtext, "<item id=\"7\">seven</item>")) << xtext;
  EXPECT_TRUE(Contains(xtext, "<empty/>")) << xtext;
}

TEST(Printing, BitmapFillsThePageAndColourPrintsTheHeaderOnly) {
  auto b = Make<TZTBitmapInspector>();
  test::PutMessage(ztmBitmap, test::ToHex(test::PngBytes(test::SamplePicture(200, 100))), "PngImage");
  b->InspectMessage();
  const auto bpdf = PrintToPdf(*b, "bitmap", QStringLiteral("Picture"));
  const std::string raw = test::ReadFile(bpdf);
  EXPECT_NE(raw.find("/Subtype /Image"), std::string::npos);
  EXPECT_NE(raw.find("/Width 200"), std::string::npos);
  ZT_PDF_TEXT(btext, bpdf);
  EXPECT_TRUE(Contains(btext, "Picture  --  Page 1") || Contains(Squeeze(btext), "Picture -- Page 1")) << btext;

  auto c = Make<TZTColorInspector>();
  test::PutMessage(ztmColor, "1\r\n2\r\n3", "TColor");
  c->InspectMessage();
  const auto cpdf = PrintToPdf(*c, "colour", QStringLiteral("Colour"));
  ZT_PDF_TEXT(ctext, cpdf);
  EXPECT_EQ(test::PdfPages(ctext).size(), 1u);
  EXPECT_TRUE(Contains(Squeeze(ctext), "Colour -- Page 1")) << ctext;
}

}  // namespace
}  // namespace zentrail
