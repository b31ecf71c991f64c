// Printing a view to a PDF file and reading the pages back: the header band and heading line on
// every page, the padded columns, every message in order, text broken to the message width, page
// breaks at the line the page size gives, and a print of the selected rows only.
#include <QFontDatabase>
#include <QFontMetrics>
#include <QPrinter>
#include <filesystem>

#include "PdfText.h"
#include "TestEnvironment.h"
#include "ViewTestSupport.h"
#include "ZTMsgViewPrint.h"

namespace zentrail::test {
namespace {

std::string Pad(const std::string& text, int width) {
  return text + std::string(static_cast<std::size_t>(std::max(0, width - static_cast<int>(text.size()))), ' ');
}

class ViewPrint : public TViewTest {
 protected:
  std::filesystem::path PrintTo(TZTMessageView& view, const std::string& name, bool selected, uint16_t columns) {
    const auto pdf = MakeTempDir("view-print") / (name + ".pdf");
    ViewPrinter().setOutputFormat(QPrinter::PdfFormat);
    ViewPrinter().setOutputFileName(QString::fromStdString(pdf.string()));
    view.Print(QStringLiteral("Night run"), selected, 8, columns);
    return pdf;
  }
  // The rows a full page holds, by the rule: lines per page from the page and the font's cell,
  // the last line left free, seven lines for the header band and the heading.
  static int RowsPerPage() {
    QFont font = QFontDatabase::hasFamily("Courier New") ? QFont("Courier New")
                                                         : QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSize(8);
    const QFontMetrics metrics(font, &ViewPrinter());
    const int linesPerPage = ViewPrinter().pageRect(QPrinter::DevicePixel).toRect().height() / metrics.height();
    return linesPerPage - 1 - 7;
  }
};

TEST_F(ViewPrint, ThreeHundredRowsOnPagesWithHeaderColumnsAndBreaks) {
  TFakeApplication app;
  TZTMessageView view(nullptr, &app);
  std::vector<std::string> texts;
  for (int i = 0; i < 300; ++i) {
    const std::string text = "message " + std::to_string(1000 + i);
    texts.push_back(text);
    Store(i % 9 == 4 ? ztmWarning : ztmInfo, text, {&view}, ztmText, i % 2 ? "worker-thread" : "main");
  }
  // The last row is longer than any line: it is broken into pieces of the message width, and at
  // its CR LF.
  std::string longText;
  for (int i = 0; i < 40; ++i) longText += "word" + std::to_string(i) + "_";
  Store(ztmError, longText + "\r\nsecond line", {&view});
  const uint16_t columns = ztcoCategory | ztcoAppName | ztcoProcessID | ztcoThreadName | ztcoTimeStamp;
  const auto pdf = PrintTo(view, "all", false, columns);
  // Kept in the build tree for a look at the pages by eye.
  const auto keep = std::filesystem::path(ZENTRAIL_BINARY_DIR) / "test-screens" / "views";
  std::filesystem::create_directories(keep);
  std::filesystem::copy_file(pdf, keep / "print-300-rows.pdf", std::filesystem::copy_options::overwrite_existing);
  const TPdfDocument doc = ReadPdfText(pdf);
  ASSERT_EQ(doc.Error, "");
  ASSERT_GE(doc.Pages.size(), 2u);

  const int perPage = RowsPerPage();
  int width = 0;
  std::vector<std::string> printed;
  for (std::size_t p = 0; p < doc.Pages.size(); ++p) {
    const TPdfPage& page = doc.Pages[p];
    ASSERT_GE(page.Lines.size(), 3u) << "page " << p + 1;
    const std::string header = page.Lines[0].Text();
    EXPECT_EQ(header.rfind("Night run", 0), 0u) << header;
    EXPECT_NE(header.find("Page: " + std::to_string(p + 1)), std::string::npos) << header;
    const TPdfLine& heading = page.Lines[1];
    const std::string headingText = heading.Text();
    // Nine blanks (the left margin and the icon's place), "Message" padded to the message width,
    // then each column padded to its widest value plus two.
    width = static_cast<int>(headingText.find("Category")) - 9;
    ASSERT_GT(width, 20);
    EXPECT_EQ(headingText, std::string(9, ' ') + Pad("Message", width) + "Category  AppName     PID  " +
                               Pad("Thread", 15) + "    Time Stamp  ");
    const int rows = static_cast<int>(page.Lines.size()) - 2;
    if (p + 1 < doc.Pages.size()) {
      EXPECT_EQ(rows, perPage) << "page " << p + 1;
    }
    for (std::size_t l = 2; l < page.Lines.size(); ++l) printed.push_back(page.Lines[l].Text());
  }
  ASSERT_GE(printed.size(), 302u);
  for (int i = 0; i < 300; ++i) {
    const std::string stamp = "8:00:" + (i * 7 / 1000 < 10 ? std::string("0") : std::string()) +
                              std::to_string(i * 7 / 1000) + "." + std::to_string(1000 + i * 7 % 1000).substr(1);
    EXPECT_EQ(printed[static_cast<std::size_t>(i)], std::string(9, ' ') + Pad(texts[static_cast<std::size_t>(i)], width) +
                                                        "General   demo       4242  " +
                                                        Pad(i % 2 ? "worker-thread" : "main", 15) + "   " + stamp + "  ");
  }
  // The long text: pieces of the message width, then the part after the line break.
  std::string joined;
  std::size_t l = 300;
  for (; l < printed.size() && printed[l].find("second line") == std::string::npos; ++l) {
    // Each piece stands where the text of a row begins, padded to the message width.
    ASSERT_EQ(printed[l].substr(0, 9), std::string(9, ' '));
    const std::string piece = printed[l].substr(9, static_cast<std::size_t>(width));
    EXPECT_EQ(piece.size(), static_cast<std::size_t>(width));
    joined += piece;
  }
  while (!joined.empty() && joined.back() == ' ') joined.pop_back();
  EXPECT_EQ(joined, longText);
  EXPECT_GT(l, 301u) << "the long text took more than one line";
  ASSERT_LT(l, printed.size());
  EXPECT_EQ(printed.back(), std::string(9, ' ') + Pad("second line", width));
}

TEST_F(ViewPrint, SelectedRowsOnlyWithACollapsedMethodWhole) {
  TFakeApplication app;
  TZTMessageView view(nullptr, &app);
  Store(ztmInfo, "before", {&view});
  Store(ztmEnterMethod, "Method", {&view});
  Store(ztmInfo, "hidden inside", {&view});
  Store(ztmExitMethod, "Method", {&view});
  Store(ztmSeparator, "-", {&view});
  Store(ztmInfo, "after", {&view});
  Store(ztmInfo, "not selected", {&view});
  view.CollapseMethod(1);
  view.SetSelected(1, true);
  view.SetSelected(2, true);
  view.SetSelected(3, true);
  const TPdfDocument doc = ReadPdfText(PrintTo(view, "selected", true, 0));
  ASSERT_EQ(doc.Error, "");
  ASSERT_EQ(doc.Pages.size(), 1u);
  std::vector<std::string> rows;
  for (std::size_t l = 2; l < doc.Pages[0].Lines.size(); ++l) {
    std::string text = doc.Pages[0].Lines[l].Text();
    while (!text.empty() && text.back() == ' ') text.pop_back();
    rows.push_back(text);
  }
  // Without columns the message takes the line; the inner row of the method stands two deeper.
  // The separator prints as a blank line with a rule across it.
  EXPECT_EQ(rows, (std::vector<std::string>{std::string(9, ' ') + "Method", std::string(11, ' ') + "hidden inside",
                                            std::string(9, ' ') + "Method", "", std::string(9, ' ') + "after"}));
  EXPECT_EQ(doc.Pages[0].Lines[1].Text().substr(0, 16), std::string(9, ' ') + "Message");

  // Without a selection the flag does not count: everything prints.
  view.RemoveAllSelections();
  const TPdfDocument all = ReadPdfText(PrintTo(view, "unselected", true, 0));
  ASSERT_EQ(all.Pages.size(), 1u);
  EXPECT_EQ(all.Pages[0].Lines.size(), 2u + 7u);
}

}  // namespace
}  // namespace zentrail::test
