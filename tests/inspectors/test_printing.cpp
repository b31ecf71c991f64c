// Printing every inspector to a PDF file and reading its text back line by line.

#include <gtest/gtest.h>

#include <QPrinter>
#include <memory>

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

std::vector<std::string> LinesOf(const test::TPdfPage& page) {
  std::vector<std::string> lines;
  for (const auto& l : page.Lines) lines.push_back(l.Text());
  return lines;
}

TEST(Printing, TextInspectorPrintsEveryLogicalLineAcrossPages) {
  auto insp = Make<TZTTextInspector>();
  std::string details;
  for (int i = 1; i <= 150; ++i) details += "Line number " + std::to_string(i) + " of the report\r\n";
  test::PutMessage(ztmTextFile, details, "Text File");
  insp->InspectMessage();
  const auto doc = test::ReadPdf(PrintToPdf(*insp, "text", QStringLiteral("report.txt (Details)")));
  ASSERT_GE(doc.Pages.size(), 2u);
  EXPECT_EQ(static_cast<int>(doc.Pages.size()), insp->PrintPageNo());
  // The first page holds one line more than the following ones, and every page has its header.
  const int perPage = insp->PrintLinesPerPage();
  std::vector<std::string> printed;
  for (std::size_t p = 0; p < doc.Pages.size(); ++p) {
    const auto lines = LinesOf(doc.Pages[p]);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0], "report.txt (Details)  --  Page " + std::to_string(p + 1));
    if (p + 1 < doc.Pages.size()) {
      EXPECT_EQ(static_cast<int>(lines.size()) - 1, p == 0 ? perPage : perPage - 1) << "page " << p + 1;
    }
    printed.insert(printed.end(), lines.begin() + 1, lines.end());
  }
  ASSERT_EQ(printed.size(), 150u);
  for (int i = 0; i < 150; ++i) EXPECT_EQ(printed[static_cast<std::size_t>(i)], "Line number " + std::to_string(i + 1) + " of the report");
}

TEST(Printing, SecondDocumentGoesOnFromTheLineCountOfTheFirst) {
  auto insp = Make<TZTStringListInspector>();
  std::string details;
  for (int i = 1; i <= 10; ++i) details += "item " + std::to_string(i) + "\r\n";
  test::PutMessage(ztmStringList, details, "TStringList");
  insp->InspectMessage();
  PrintToPdf(*insp, "first", QStringLiteral("first"));
  EXPECT_EQ(insp->PrintLineNo(), 10);
  const auto doc = test::ReadPdf(PrintToPdf(*insp, "second", QStringLiteral("second")));
  EXPECT_EQ(insp->PrintLineNo(), 20);
  ASSERT_EQ(doc.Pages.size(), 1u);
  EXPECT_EQ(LinesOf(doc.Pages[0]).back(), "   10:  item 10");
}

TEST(Printing, StringListNumbersItsLines) {
  auto insp = Make<TZTStringListInspector>();
  test::PutMessage(ztmStringList, "red\r\ngreen\r\nblue", "TStringList");
  insp->InspectMessage();
  const auto doc = test::ReadPdf(PrintToPdf(*insp, "list", QStringLiteral("Colours")));
  ASSERT_EQ(doc.Pages.size(), 1u);
  EXPECT_EQ(LinesOf(doc.Pages[0]),
            (std::vector<std::string>{"Colours  --  Page 1", "    1:  red", "    2:  green", "    3:  blue"}));
}

TEST(Printing, TableAlignsColumnsByCharacters) {
  auto insp = Make<TZTTableInspector>();
  test::PutMessage(ztmCustomTable, "Name\tSize\tKind\r\nalpha.txt\t12\tfile\r\nb\t123456\tfolder");
  insp->InspectMessage();
  const auto doc = test::ReadPdf(PrintToPdf(*insp, "table", QStringLiteral("Files")));
  ASSERT_EQ(doc.Pages.size(), 1u);
  // Each field but the last is padded to its column's width in characters, then two blanks.
  EXPECT_EQ(LinesOf(doc.Pages[0]), (std::vector<std::string>{"Files  --  Page 1", "Name       Size    Kind",
                                                             "alpha.txt  12      file", "b          123456  folder"}));
  const auto& lines = doc.Pages[0].Lines;
  EXPECT_DOUBLE_EQ(lines[1].XOf("Size"), lines[3].XOf("123456"));
  EXPECT_DOUBLE_EQ(lines[1].XOf("Kind"), lines[2].XOf("file"));

  // A first line narrower than a later one prints the extra fields as they stand.
  test::PutMessage(ztmCustomTable, "a\tb\r\n1\t2\r\nx\ty\tz");
  insp->InspectMessage();
  const auto ragged = test::ReadPdf(PrintToPdf(*insp, "ragged", QStringLiteral("Ragged")));
  ASSERT_EQ(ragged.Pages.size(), 1u);
  EXPECT_EQ(LinesOf(ragged.Pages[0]).back(), "x  y  z");
}

TEST(Printing, PropertiesAlignAtTheEqualsSign) {
  auto insp = Make<TZTObjectInspector>();
  test::PutMessage(ztmObject, "Name='Button1'\r\nCaption='OK'\r\nFont=(TFont)\r\nFont.Size=8", "TButton");
  insp->InspectMessage();
  const auto doc = test::ReadPdf(PrintToPdf(*insp, "object", QStringLiteral("Button1")));
  ASSERT_EQ(doc.Pages.size(), 1u);
  EXPECT_EQ(LinesOf(doc.Pages[0]), (std::vector<std::string>{"Button1  --  Page 1", "Name       'Button1'",
                                                             "Caption    'OK'", "Font       (TFont)", "Font.Size  8"}));

  auto coll = Make<TZTCollectionInspector>();
  test::PutMessage(ztmCollection, "0 - Status|Width=120;Text=Ready\r\n1 - Clock|Width=60", "TStatusPanels");
  coll->InspectMessage();
  const auto cdoc = test::ReadPdf(PrintToPdf(*coll, "collection", QStringLiteral("Panels")));
  ASSERT_EQ(cdoc.Pages.size(), 1u);
  EXPECT_EQ(LinesOf(cdoc.Pages[0]),
            (std::vector<std::string>{"Panels  --  Page 1", "0 - Status", "        Width  120", "        Text   Ready",
                                      "1 - Clock", "        Width  60"}));
}

TEST(Printing, HierarchyAndXmlPrintTheirContents) {
  auto h = Make<TZTHierarchyInspector>();
  test::PutMessage(ztmCustomHierarchy, "Form1: TForm1\r\n\tPanel1: TPanel\r\n\t\tButton1: TButton", "Controls");
  h->InspectMessage();
  const auto hdoc = test::ReadPdf(PrintToPdf(*h, "hierarchy", QStringLiteral("Controls")));
  ASSERT_EQ(hdoc.Pages.size(), 1u);
  const auto hl = LinesOf(hdoc.Pages[0]);
  ASSERT_EQ(hl.size(), 4u);
  EXPECT_EQ(hl[1], "Form1: TForm1");
  // TAB characters go to the printer as they are; the deeper line starts further right.
  EXPECT_NE(hl[3].find("Button1: TButton"), std::string::npos);
  EXPECT_GT(hdoc.Pages[0].Lines[3].XOf("Button1"), hdoc.Pages[0].Lines[1].XOf("Form1"));

  auto x = Make<TZTXmlDataInspector>();
  test::PutMessage(ztmXmlData, "<root><item id=\"7\">seven</item><empty/></root>");
  x->InspectMessage();
  const auto xdoc = test::ReadPdf(PrintToPdf(*x, "xml", QStringLiteral("Document")));
  ASSERT_EQ(xdoc.Pages.size(), 1u);
  EXPECT_EQ(LinesOf(xdoc.Pages[0]), (std::vector<std::string>{"Document  --  Page 1", "<root>",
                                                              "  <item id=\"7\">seven</item>", "  <empty/>", "</root>"}));
}

TEST(Printing, BitmapFillsThePageAndColourPrintsTheHeaderOnly) {
  auto b = Make<TZTBitmapInspector>();
  test::PutMessage(ztmBitmap, test::ToHex(test::PngBytes(test::SamplePicture(200, 100))), "PngImage");
  b->InspectMessage();
  const auto bpdf = PrintToPdf(*b, "bitmap", QStringLiteral("Picture"));
  const std::string raw = test::ReadFile(bpdf);
  EXPECT_NE(raw.find("/Subtype /Image"), std::string::npos);
  EXPECT_NE(raw.find("/Width 200"), std::string::npos);
  const auto bdoc = test::ReadPdf(bpdf);
  ASSERT_EQ(bdoc.Pages.size(), 1u);
  EXPECT_EQ(LinesOf(bdoc.Pages[0]), std::vector<std::string>{"Picture  --  Page 1"});

  auto c = Make<TZTColorInspector>();
  test::PutMessage(ztmColor, "1\r\n2\r\n3", "TColor");
  c->InspectMessage();
  const auto cdoc = test::ReadPdf(PrintToPdf(*c, "colour", QStringLiteral("Colour")));
  ASSERT_EQ(cdoc.Pages.size(), 1u);
  EXPECT_EQ(LinesOf(cdoc.Pages[0]), std::vector<std::string>{"Colour  --  Page 1"});
}

TEST(Printing, UnicodeTextSurvivesTheRoundTrip) {
  auto insp = Make<TZTTextInspector>();
  test::PutMessage(ztmCustomText, "Größe: 12 µm\r\nΔt = 3 ms", "", "units");
  insp->InspectMessage();
  const auto doc = test::ReadPdf(PrintToPdf(*insp, "unicode", QStringLiteral("Einheiten")));
  ASSERT_EQ(doc.Pages.size(), 1u);
  EXPECT_EQ(LinesOf(doc.Pages[0]), (std::vector<std::string>{"Einheiten  --  Page 1", "Größe: 12 µm", "Δt = 3 ms"}));
}

}  // namespace
}  // namespace zentrail
