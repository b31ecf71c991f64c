// What a view writes out: a log file of its rows, XML and tab-separated text. All walk the rows in
// order; a collapsed method is written whole, and one that never closed not at all.

#include <QDate>
#include <QDateTime>
#include <QFile>
#include <QLocale>
#include <QStringList>
#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "LogRecord.h"
#include "ZTCommonUtils.h"
#include "ZTDateTime.h"
#include "ZTMsgView.h"
#include "ZTPromptService.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

namespace {

std::string TypeName(int32_t type) {
  return type >= 0 && type < ztmTableCount ? std::string(MsgTypeNames[type]) : std::to_string(type);
}

// The symbolic name of a colour where it has one, else "$" and its value in hexadecimal.
std::string ColorName(TColor color) {
  struct TNamed {
    uint32_t Value;
    const char* Name;
  };
  static constexpr TNamed names[] = {
      {0x000000, "clBlack"},      {0x000080, "clMaroon"},      {0x008000, "clGreen"},
      {0x008080, "clOlive"},      {0x800000, "clNavy"},        {0x800080, "clPurple"},
      {0x808000, "clTeal"},       {0x808080, "clGray"},        {0xC0C0C0, "clSilver"},
      {0x0000FF, "clRed"},        {0x00FF00, "clLime"},        {0x00FFFF, "clYellow"},
      {0xFF0000, "clBlue"},       {0xFF00FF, "clFuchsia"},     {0xFFFF00, "clAqua"},
      {0xFFFFFF, "clWhite"},      {0xC0DCC0, "clMoneyGreen"},  {0xF0CAA6, "clSkyBlue"},
      {0xF0FBFF, "clCream"},      {0xA4A0A0, "clMedGray"},     {0x1FFFFFFF, "clNone"},
      {0x20000000, "clDefault"},  {0xFF000000, "clScrollBar"}, {0xFF000001, "clBackground"},
      {0xFF000002, "clActiveCaption"}, {0xFF000003, "clInactiveCaption"}, {0xFF000004, "clMenu"},
      {0xFF000005, "clWindow"},   {0xFF000006, "clWindowFrame"}, {0xFF000007, "clMenuText"},
      {0xFF000008, "clWindowText"}, {0xFF000009, "clCaptionText"}, {0xFF00000A, "clActiveBorder"},
      {0xFF00000B, "clInactiveBorder"}, {0xFF00000C, "clAppWorkSpace"}, {0xFF00000D, "clHighlight"},
      {0xFF00000E, "clHighlightText"}, {0xFF00000F, "clBtnFace"}, {0xFF000010, "clBtnShadow"},
      {0xFF000011, "clGrayText"}, {0xFF000012, "clBtnText"},   {0xFF000013, "clInactiveCaptionText"},
      {0xFF000014, "clBtnHighlight"}, {0xFF000015, "cl3DDkShadow"}, {0xFF000016, "cl3DLight"},
      {0xFF000017, "clInfoText"}, {0xFF000018, "clInfoBk"},
  };
  const auto value = static_cast<uint32_t>(color);
  for (const TNamed& named : names)
    if (named.Value == value) return named.Name;
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "$%X", value);
  return buffer;
}

QString ShortDate(const TZentrailTimeStamp& stamp) {
  const int32_t date = stamp.Date < 1 ? 0 : stamp.Date;
  return QLocale().toString(QDate(1899, 12, 30).addDays(date - ztDateDelta), QLocale::ShortFormat);
}

// Splits as a string list does: CR, LF or CR LF end a line.
std::vector<std::string_view> SplitLines(std::string_view text) {
  std::vector<std::string_view> lines;
  size_t start = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r' && text[i] != '\n') continue;
    lines.push_back(text.substr(start, i - start));
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
    start = i + 1;
  }
  if (start < text.size()) lines.push_back(text.substr(start));
  return lines;
}

bool WriteWhole(QFile& file, const std::string& bytes) {
  return file.write(bytes.data(), static_cast<qint64>(bytes.size())) == static_cast<qint64>(bytes.size());
}

[[noreturn]] void CannotCreate(const QString& fileName, const QFile& file) {
  throw std::runtime_error("Cannot create file \"" + fileName.toStdString() + "\". " + file.errorString().toStdString());
}

}  // namespace

void TZTMessageView::ForEachWrittenItem(const std::function<void(int32_t item)>& write) {
  for (int32_t row = 0; row < FRows.Count(); ++row) {
    const int32_t item = FRows.GetItems(row);
    if (FItems.GetItems(item).Collapsed) {
      const int32_t end = FindMethodEnd(item);
      for (int32_t i = item; end >= 0 && i <= end; ++i) write(i);
    } else {
      write(item);
    }
  }
}

void TZTMessageView::Save(const QString& fileName) {
  QFile file(fileName);
  // Unbuffered, so that a record cut off by a failed write can be taken back out.
  if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) CannotCreate(fileName, file);
  IZentrailApplication* app = App();
  if (app) app->SetProgressMax(NumItems());
  TZentrailMessageSet& ms = MessageSet;
  TZentrailMessage message;
  std::string record;
  bool failed = false;
  int32_t failedRecNo = 0;
  qint64 written = 0;
  ForEachWrittenItem([&](int32_t item) {
    if (failed) return;
    const int32_t recNo = FItems.GetItems(item).RecNo;
    ms.GotoRec(recNo);
    if (ms.GetMsgType() == ztmAppStartSeparator) return;
    ms.GetCurrentMessage(message);
    record.clear();
    AppendLogRecord(message, record);
    if (!WriteWhole(file, record) || !file.flush()) {
      failed = true;
      failedRecNo = recNo;
      // A record cut off by the failed write is taken back out, so the file stays readable.
      file.resize(written);
      return;
    }
    written += static_cast<qint64>(record.size());
    if (app) app->StepProgress();
  });
  file.close();
  if (app) app->SetProgress(0);
  if (failed) {
    // What was written stays; the rest isn't saved, and the save ends without a further error.
    PromptService().ShowMessage(
        this,
        QStringLiteral("Message #%1 could not be saved to the log file:\r%2\r\rThis may be the result of one of the "
                       "following:\r  - The file path is no longer accessible\r  - There is no more room on the "
                       "disk\rThe remaining messages have not been saved.")
            .arg(failedRecNo)
            .arg(fileName),
        TZTPromptKind::Error);
  }
}

void TZTMessageView::ExportAsXML(const QString& fileName) {
  IZentrailApplication* app = App();
  if (app) app->SetProgressMax(NumItems());
  TZentrailMessageSet& ms = MessageSet;
  std::string out;
  auto line = [&out](const std::string& text) {
    out += text;
    out += "\r\n";
  };
  line("<!--Zentrail Log File-->");
  const QDateTime now = QDateTime::currentDateTime();
  line("<!--Created on " +
       (QLocale().toString(now.date(), QLocale::ShortFormat) + QLatin1Char(' ') +
        QLocale().toString(now.time(), QLocale::LongFormat))
           .toStdString() +
       " -->");
  line("<ZentrailLog xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
       "xsi:noNamespaceSchemaLocation=\"ZentrailLogFile.xsd\">");
  ForEachWrittenItem([&](int32_t item) {
    ms.GotoRec(FItems.GetItems(item).RecNo);
    const int32_t type = ms.GetMsgType();
    if (type == ztmAppStartSeparator) return;
    const TZentrailTimeStamp stamp = ms.GetTimeStamp();
    line("  <Message MsgType=\"" + TypeName(type) + "\" MsgText=\"" + XmlEscape(ms.GetMsgText()) + "\">");
    line("    <TimeStamp Date=\"" + FormatTimeStamp("yyyy-mm-dd", stamp) + "\" Time=\"" +
         FormatTimeStamp("hh:nn:ss.zzz", stamp) + "\" TimeBias=\"" + std::to_string(ms.GetTimeBias()) + "\"/>");
    line("    <ProcessID>" + std::to_string(static_cast<int32_t>(ms.GetProcessID())) + "</ProcessID>");
    // These fields go out as they stand: readers of the format expect them plain.
    line("    <ThreadName>" + std::string(ms.GetThreadName()) + "</ThreadName>");
    line("    <AppName>" + std::string(ms.GetAppName()) + "</AppName>");
    line("    <ComputerName>" + std::string(ms.GetComputerName()) + "</ComputerName>");
    line("    <Category Color=\"" + ColorName(ms.GetCategoryColor()) + "\" FontColor=\"" +
         ColorName(ms.GetCategoryFontColor()) + "\">" + std::string(ms.GetCategory()) + "</Category>");
    line("    <TypeName>" + std::string(ms.GetTypeName()) + "</TypeName>");
    const std::string_view details = ms.GetDetails();
    if (!details.empty()) {
      line("    <Details>");
      for (std::string_view detail : SplitLines(details)) line("      <Item>" + XmlEscape(detail) + "</Item>");
      line("    </Details>");
    }
    line("  </Message>");
  });
  line("</ZentrailLog>");
  if (app) app->SetProgress(0);
  QFile file(fileName);
  if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) CannotCreate(fileName, file);
  // The system code page here is UTF-8: text beyond ASCII is written with a byte order mark.
  const bool wide = std::any_of(out.begin(), out.end(), [](char c) { return static_cast<unsigned char>(c) >= 128; });
  if (wide) out.insert(0, "\xEF\xBB\xBF");
  if (!WriteWhole(file, out)) CannotCreate(fileName, file);
}

void TZTMessageView::ExportAsText(const QString& fileName) {
  IZentrailApplication* app = App();
  if (app) app->SetProgressMax(NumItems());
  TZentrailMessageSet& ms = MessageSet;
  const uint16_t columns = FColumnOptions;
  std::string out = "MsgType\tMessage";
  if (columns & ztcoCategory) out += "\tCategory";
  if (columns & ztcoAppName) out += "\tAppName";
  if (columns & ztcoComputerName) out += "\tComputer";
  if (columns & ztcoProcessID) out += "\tPID";
  if (columns & ztcoThreadName) out += "\tThread";
  if (columns & ztcoDate) out += "\tDate";
  if (columns & ztcoTimeColumn)
    out += (columns & ztcoTimeStamp) ? "\tTime Stamp" : (columns & ztcoTimeDiff) ? "\tTime Diff" : "\tTime Offset";
  out += "\r\n";
  // The export keeps its own level counter rather than the view's indents.
  int32_t level = 0;
  ForEachWrittenItem([&](int32_t item) {
    ms.GotoRec(FItems.GetItems(item).RecNo);
    const int32_t type = ms.GetMsgType();
    if (type == ztmAppStartSeparator) return;
    int32_t indent = 0;
    if (!FlattenStructure) {
      if (type == ztmEnterMethod) {
        indent = level++;
      } else if (type == ztmExitMethod) {
        if (level > 0) --level;
        indent = level;
      } else {
        indent = level;
      }
    }
    out.append(static_cast<size_t>(indent) * 2, ' ');
    out += TypeName(type);
    out += '\t';
    out += ms.GetMsgText();
    const TZentrailTimeStamp stamp = ms.GetTimeStamp();
    if (columns & ztcoCategory) (out += '\t') += ms.GetCategory();
    if (columns & ztcoAppName) (out += '\t') += ms.GetAppName();
    if (columns & ztcoComputerName) (out += '\t') += ms.GetComputerName();
    if (columns & ztcoProcessID) (out += '\t') += std::to_string(static_cast<int32_t>(ms.GetProcessID()));
    if (columns & ztcoThreadName) (out += '\t') += ms.GetThreadName();
    if (columns & ztcoDate) (out += '\t') += ShortDate(stamp).toStdString();
    // Always the wall time here, whatever the screen shows in that column.
    if (columns & ztcoTimeColumn) (out += '\t') += FormatTimeStamp("h:nn:ss.zzz", stamp);
    out += "\r\n";
  });
  if (app) app->SetProgress(0);
  QFile file(fileName);
  if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) CannotCreate(fileName, file);
  if (!WriteWhole(file, out)) CannotCreate(fileName, file);
}

}  // namespace zentrail
