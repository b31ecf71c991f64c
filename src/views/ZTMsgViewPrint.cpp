// Printing a view: a character grid in a fixed-pitch font, page by page, each page under a grey
// header band and a heading line, each row padded into columns and broken into lines where its
// text is too long. The rows are those of the view in order (or its selected ones), a collapsed
// method whole.

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QLocale>
#include <QPainter>
#include <QPrinter>
#include <QPrinterInfo>
#include <cmath>
#include <functional>
#include <stdexcept>

#include "ZTDateTime.h"
#include "ZTMsgView.h"
#include "ZTMsgViewPrint.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

QPrinter& ViewPrinter() {
  static QPrinter printer(QPrinter::HighResolution);
  return printer;
}

QString ViewPrinterName() {
  QPrinter& printer = ViewPrinter();
  if (printer.outputFormat() == QPrinter::PdfFormat)
    return QStringLiteral("PDF file %1").arg(printer.outputFileName());
  return printer.printerName().isEmpty() ? QStringLiteral("(no printer)") : printer.printerName();
}

namespace {

constexpr int kLeftMargin = 6;  // characters
constexpr int kRightMargin = 6;

bool HasTypeIcon(int32_t type) {
  return (type >= 0 && type <= 10) || (type >= 16 && type <= 38) || (type >= 41 && type <= 45) || type >= 100;
}

QFont FaceOrSystem(const QString& family, QFontDatabase::SystemFont fallback, int pointSize) {
  QFont font = QFontDatabase::hasFamily(family) ? QFont(family) : QFontDatabase::systemFont(fallback);
  font.setPointSize(pointSize);
  return font;
}

QString Text(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

// The grid: characters go out one by one at (column, line); a CR ends the line, and the line that
// reaches the lines per page starts a new page, which begins with its header.
class TPrintGrid {
 public:
  TPrintGrid(QPrinter& printer, QPainter& painter, const QFont& font, const QString& title)
      : FPrinter(printer), FPainter(painter), FFont(font), FTitle(title) {
    const QFontMetrics metrics(FFont, &FPrinter);
    const QRect page = FPrinter.pageRect(QPrinter::DevicePixel).toRect();
    PageWidth = page.width();
    PageHeight = page.height();
    LineHeight = std::max(1, metrics.height());
    FAscent = metrics.ascent();
    LinesPerPage = PageHeight / LineHeight;
    const int average = std::max(1, metrics.averageCharWidth());
    CharsPerLine = std::max(1, static_cast<int>(std::lround(double(PageWidth) / average)));
    CharWidth = PageWidth / CharsPerLine;
    IconHeight = static_cast<int>(std::lround(LineHeight - 0.2 * LineHeight));
    IconWidth = static_cast<int>(std::lround(IconHeight * 14.0 / 11.0));
    IconOffset = (LineHeight - IconHeight) / 2;
    CharsPerLine -= kLeftMargin + 2;
    FDateText = QLocale().toString(QDate::currentDate(), QLocale::ShortFormat) + QStringLiteral("  ") +
                QLocale().toString(QTime::currentTime(), QLocale::ShortFormat);
    FPainter.setFont(FFont);
    SetColors(Qt::white, Qt::black);
  }

  void SetColors(const QColor& brush, const QColor& text) {
    FBrush = brush;
    FText = text;
  }
  void SetBold(bool bold) {
    FFont.setBold(bold);
    FPainter.setFont(FFont);
  }
  // Called before the first character of each page.
  std::function<void()> HeadingLine;

  void Put(QChar c) {
    if (c == QLatin1Char('\r')) {
      EndLine();
      return;
    }
    if (c == QLatin1Char('\n')) return;
    if (c.unicode() < 32 && c != QLatin1Char('\t')) return;
    Begin();
    const QRect cell(Column * CharWidth, Line * LineHeight, CharWidth, LineHeight);
    FPainter.fillRect(cell, FBrush);
    // Blanks go out as characters too, so that the text read back from the page keeps its words.
    FPainter.setPen(FText);
    FPainter.drawText(cell.left(), cell.top() + FAscent, c == QLatin1Char('\t') ? QStringLiteral(" ") : QString(c));
    ++Column;
  }
  void Put(const QString& text) {
    for (const QChar c : text) Put(c);
  }
  // The line about to be written: its page begins now, with its header, if it has not yet.
  void Begin() {
    if (FPagePending) {
      FPrinter.newPage();
      FPagePending = false;
    }
    if (Line == 1 && Column == 1) PageHeader();
  }

  int PageWidth = 0, PageHeight = 0, LineHeight = 1, LinesPerPage = 0, CharsPerLine = 0, CharWidth = 1;
  int IconHeight = 0, IconWidth = 0, IconOffset = 0;
  int Page = 1, Line = 1, Column = 1;

 private:
  void EndLine() {
    ++Line;
    Column = 1;
    if (Line >= LinesPerPage) {
      // The next page is begun only when something is written on it, so a print never ends on an
      // empty page.
      ++Page;
      Line = 1;
      FPagePending = true;
    }
  }

  void PageHeader() {
    FPainter.save();
    QFont header = FaceOrSystem(QStringLiteral("Tahoma"), QFontDatabase::GeneralFont, FFont.pointSize());
    header.setBold(true);
    FPainter.setFont(QFont(header, &FPrinter));
    QPen pen(Qt::black);
    pen.setWidth(std::max(1, FPrinter.resolution() / 100));
    FPainter.setPen(pen);
    FPainter.setBrush(QColor(204, 204, 204));
    const int left = kLeftMargin * CharWidth;
    const int right = PageWidth - kRightMargin * CharWidth;
    FPainter.drawRect(QRect(QPoint(left, 2 * LineHeight), QPoint(right, 5 * LineHeight)));
    const int baseline = 3 * LineHeight + QFontMetrics(FPainter.font(), &FPrinter).ascent();
    FPainter.drawText(left + 20, baseline, FTitle);
    FPainter.drawText(PageWidth / 2, baseline, FDateText);
    const QString page = QStringLiteral("Page: %1").arg(Page);
    FPainter.drawText(right - static_cast<int>(page.size()) * CharWidth, baseline, page);
    FPainter.restore();
    FPainter.setFont(FFont);
    Line += 6;
    if (HeadingLine) HeadingLine();
  }

  QPrinter& FPrinter;
  QPainter& FPainter;
  QFont FFont;
  QString FTitle;
  QString FDateText;
  QColor FBrush, FText;
  int FAscent = 0;
  bool FPagePending = false;
};

QString PadRight(const QString& text, int width) { return text.leftJustified(width, QLatin1Char(' '), false); }
QString PadLeft(const QString& text, int width) { return text.rightJustified(width, QLatin1Char(' '), false); }

}  // namespace

void TZTMessageView::Print(const QString& title, bool selectedOnly, int32_t fontSize, uint16_t columns) {
  TZentrailMessageSet& ms = MessageSet;
  // What prints: every row, or the selected ones if there are any; a collapsed method whole, one
  // without an end not at all.
  bool anySelected = false;
  for (int32_t row = 0; row < FRows.Count() && !anySelected; ++row) anySelected = IsSelected(row);
  selectedOnly = selectedOnly && anySelected;
  struct TEntry {
    int32_t RecNo;
    int32_t Indent;
    int32_t Row;
    bool Collapsed;
  };
  std::vector<TEntry> entries;
  int32_t rowsToPrint = 0;
  for (int32_t row = 0; row < FRows.Count(); ++row) {
    if (selectedOnly && !IsSelected(row)) continue;
    ++rowsToPrint;
    const int32_t item = FRows.GetItems(row);
    if (FItems.GetItems(item).Collapsed) {
      const int32_t end = FindMethodEnd(item);
      for (int32_t i = item; end >= 0 && i <= end; ++i)
        entries.push_back({FItems.GetItems(i).RecNo, FIndents.GetItems(i), row, i == item});
    } else {
      entries.push_back({FItems.GetItems(item).RecNo, FIndents.GetItems(item), row, false});
    }
  }

  // Column widths in characters, from their least to the longest value that prints.
  int categoryWidth = 8, appWidth = 7, computerWidth = 8, threadWidth = 6;
  for (const TEntry& entry : entries) {
    ms.GotoRec(entry.RecNo);
    categoryWidth = std::max<int>(categoryWidth, static_cast<int>(Text(ms.GetCategory()).size()));
    appWidth = std::max<int>(appWidth, static_cast<int>(Text(ms.GetAppName()).size()));
    computerWidth = std::max<int>(computerWidth, static_cast<int>(Text(ms.GetComputerName()).size()));
    threadWidth = std::max<int>(threadWidth, static_cast<int>(Text(ms.GetThreadName()).size()));
  }
  IZentrailApplication* app = App();
  if (app) app->SetProgressMax(rowsToPrint);

  QPrinter& printer = ViewPrinter();
  QPainter painter;
  if (!painter.begin(&printer)) {
    if (app) app->SetProgress(0);
    throw std::runtime_error(printer.outputFormat() == QPrinter::PdfFormat
                                 ? "The PDF file \"" + printer.outputFileName().toStdString() + "\" cannot be written."
                                 : "There is no printer to print on. Choose a printer, or print to a PDF file.");
  }
  const QFont font(FaceOrSystem(QStringLiteral("Courier New"), QFontDatabase::FixedFont, fontSize), &printer);
  TPrintGrid grid(printer, painter, font, title);
  TZTImageList* images = MessageImages();

  auto columnValues = [&](const QString& category, const QString& appName, const QString& computer, const QString& pid,
                          const QString& thread, const QString& date, const QString& time) {
    QString values;
    if (columns & ztcoCategory) values += PadRight(category, categoryWidth + 2);
    if (columns & ztcoAppName) values += PadRight(appName, appWidth + 2);
    if (columns & ztcoComputerName) values += PadRight(computer, computerWidth + 2);
    if (columns & ztcoProcessID) values += pid;
    if (columns & ztcoThreadName) values += PadRight(thread, threadWidth + 2);
    if (columns & ztcoDate) values += date;
    if (columns & ztcoTimeColumn) values += time;
    return values;
  };
  auto messageWidth = [&](int padLength, int valuesLength) {
    const int width = grid.CharsPerLine - 2 - padLength - valuesLength;
    return width < 1 ? 2 : width;
  };
  const QString headingPad(kLeftMargin + 3, QLatin1Char(' '));
  const QString timeHeading = (columns & ztcoTimeStamp)  ? QStringLiteral("    Time Stamp")
                              : (columns & ztcoTimeDiff) ? QStringLiteral("     Time Diff")
                                                         : QStringLiteral("   Time Offset");
  const QString headingValues =
      columnValues(QStringLiteral("Category"), QStringLiteral("AppName"), QStringLiteral("Computer"),
                   PadRight(QStringLiteral("   PID"), 8), QStringLiteral("Thread"),
                   PadRight(QStringLiteral("        Date"), 14), PadRight(timeHeading, 16));
  grid.HeadingLine = [&] {
    grid.SetBold(true);
    grid.Put(headingPad + PadRight(QStringLiteral("Message"), messageWidth(int(headingPad.size()), int(headingValues.size()))) +
             headingValues + QStringLiteral("\r\n"));
    grid.SetBold(false);
  };

  QElapsedTimer clock;
  clock.start();
  int32_t lastRow = -1;
  for (const TEntry& entry : entries) {
    // A clear of the store while the print lets the window work ends the print with what it has.
    if (entry.RecNo > ms.GetRecordCount()) break;
    ms.GotoRec(entry.RecNo);
    const int32_t type = ms.GetMsgType();
    const QColor brush = ColorToQColor(ms.GetCategoryColor());
    const QColor text = ColorToQColor(ms.GetCategoryFontColor());
    grid.SetColors(brush, text);
    if (type == ztmSeparator || type == ztmInactiveSeparator || type == ztmAppStartSeparator) {
      grid.Put(QLatin1Char(' '));
      // The rule across the line, in the row's colours.
      const int y = grid.Line * grid.LineHeight + grid.LineHeight / 2;
      painter.fillRect(QRect(grid.CharWidth, grid.Line * grid.LineHeight, (grid.CharsPerLine + kLeftMargin) * grid.CharWidth,
                             grid.LineHeight),
                       brush);
      QPen rule(text);
      rule.setWidth(std::max(1, grid.LineHeight / 10));
      painter.setPen(rule);
      painter.drawLine(kLeftMargin * grid.CharWidth, y, (grid.CharsPerLine + kLeftMargin + 1) * grid.CharWidth, y);
      grid.Put(QStringLiteral("\r\n"));
    } else {
      const TZentrailTimeStamp stamp = ms.GetTimeStamp();
      const QString category = Text(ms.GetCategory());
      const QString appName = Text(ms.GetAppName());
      const QString computer = Text(ms.GetComputerName());
      const QString thread = Text(ms.GetThreadName());
      const QString pid = QString::asprintf("%6d", static_cast<int32_t>(ms.GetProcessID())) + QStringLiteral("  ");
      const QString date =
          PadLeft(QLocale().toString(QDate(1899, 12, 30).addDays(stamp.Date < 1 ? 0 : stamp.Date - ztDateDelta),
                                    QLocale::ShortFormat),
                  12) +
          QStringLiteral("  ");
      const QString message = Text(ms.GetMsgText());
      QString time;
      if (columns & ztcoTimeStamp) {
        time = QString::fromStdString(FormatTimeStamp("h:nn:ss.zzz", stamp));
      } else if (columns & ztcoTimeDiff) {
        time = GetTimeDifference(entry.Row, stamp);
      } else if (columns & ztcoTimeOffset) {
        time = GetTimeOffset(stamp);
      }
      time = PadLeft(time, 14) + QStringLiteral("  ");
      const QString values = columnValues(category, appName, computer, pid, thread, date, time);
      const QString pad(2 * entry.Indent + kLeftMargin + 3, QLatin1Char(' '));
      const int width = messageWidth(int(pad.size()), int(values.size()));
      // Broken at each CR (a LF after it goes with it) and wherever a piece reaches the width.
      QStringList pieces;
      QString piece;
      for (qsizetype i = 0; i < message.size(); ++i) {
        const QChar c = message.at(i);
        if (c == QLatin1Char('\r')) {
          pieces << piece;
          piece.clear();
          if (i + 1 < message.size() && message.at(i + 1) == QLatin1Char('\n')) ++i;
          continue;
        }
        piece += c;
        if (piece.size() >= width) {
          pieces << piece;
          piece.clear();
        }
      }
      if (!piece.isEmpty() || pieces.isEmpty()) pieces << piece;
      grid.Put(pad);
      // The type icon stands in the three blanks before the text, at the row's indent.
      if (images && HasTypeIcon(type)) {
        const int image = type >= 100 ? 46 : (type == ztmEnterMethod && entry.Collapsed ? ztmCollapsedMethod : type);
        if (images->HasImage(image))
          painter.drawPixmap(QRect((grid.Column - 3) * grid.CharWidth, grid.Line * grid.LineHeight + grid.IconOffset,
                                   grid.IconWidth, grid.IconHeight),
                             images->Image(image));
      }
      grid.Put(PadRight(pieces.front(), width) + values + QStringLiteral("\r\n"));
      // Only the first line takes the row's shading.
      grid.SetColors(Qt::white, text);
      for (qsizetype i = 1; i < pieces.size(); ++i) grid.Put(pad + PadRight(pieces.at(i), width) + QStringLiteral("\r\n"));
    }
    if (entry.Row != lastRow) {
      lastRow = entry.Row;
      if (app) app->StepProgress();
    }
    // The window goes on working while a long print runs; the user's input waits.
    if (clock.elapsed() >= 50) {
      QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
      clock.restart();
    }
  }
  painter.end();
  if (app) app->SetProgress(0);
}

}  // namespace zentrail
