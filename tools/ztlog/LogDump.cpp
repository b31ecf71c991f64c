#include "LogDump.h"

#include <charconv>
#include <cstdio>

#include "LogRecord.h"
#include "LogSalvage.h"
#include "ZTDateTime.h"

namespace zentrail::ztlog {

namespace {

void AppendNumber(std::string& out, int64_t value) {
  char buf[24];
  auto [ptr, ec] = std::to_chars(buf, buf + sizeof buf, value);
  (void)ec;
  out.append(buf, ptr);
}

}  // namespace

std::string FormatTimeStamp(const TZentrailTimeStamp& stamp, char separator) {
  return ::zentrail::FormatTimeStamp(separator == 'T' ? "yyyy-mm-dd\"T\"hh:nn:ss.zzz"
                                                      : "yyyy-mm-dd hh:nn:ss.zzz",
                                     stamp);
}

void AppendEscapedText(std::string& out, std::string_view text) {
  static const char kHex[] = "0123456789ABCDEF";
  for (const char ch : text) {
    const auto c = static_cast<unsigned char>(ch);
    switch (c) {
      case '\t': out += "\\t"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\\': out += "\\\\"; break;
      default:
        if (c < 0x20 || c == 0x7F) {
          out += "\\x";
          out += kHex[c >> 4];
          out += kHex[c & 15];
        } else {
          out += ch;
        }
    }
  }
}

void AppendJsonString(std::string& out, std::string_view text) {
  static const char kHex[] = "0123456789abcdef";
  out += '"';
  for (const char ch : text) {
    const auto c = static_cast<unsigned char>(ch);
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      default:
        if (c < 0x20) {
          out += "\\u00";
          out += kHex[c >> 4];
          out += kHex[c & 15];
        } else {
          out += ch;  // text in records is valid UTF-8 already
        }
    }
  }
  out += '"';
}

void FormatRecord(std::string& out, Format format, uint64_t n, const TZentrailPacketView& r) {
  if (format == Format::Lines) {
    AppendNumber(out, static_cast<int64_t>(n));
    out += '\t';
    out += FormatTimeStamp(r.TimeStamp);
    out += '\t';
    out += MsgTypeShortName(r.MsgType);
    out += '\t';
    out += MsgTypeShortName(r.MsgContent);
    out += '\t';
    AppendNumber(out, r.ProcessID);
    for (std::string_view field : {r.ThreadName, r.AppName, r.Category, r.MsgText}) {
      out += '\t';
      AppendEscapedText(out, field);
    }
    out += '\n';
    return;
  }
  auto key = [&](const char* name) {
    out += out.back() == '{' ? "\"" : ",\"";
    out += name;
    out += "\":";
  };
  auto text = [&](const char* name, std::string_view value) {
    key(name);
    AppendJsonString(out, value);
  };
  auto number = [&](const char* name, int64_t value) {
    key(name);
    AppendNumber(out, value);
  };
  out += '{';
  number("record", static_cast<int64_t>(n));
  text("time", FormatTimeStamp(r.TimeStamp, 'T'));
  number("date", r.TimeStamp.Date);
  number("milliseconds", r.TimeStamp.Time);
  number("msgType", r.MsgType);
  text("msgTypeName", MsgTypeShortName(r.MsgType));
  number("msgContent", r.MsgContent);
  text("msgContentName", MsgTypeShortName(r.MsgContent));
  number("processId", r.ProcessID);
  text("threadName", r.ThreadName);
  text("appName", r.AppName);
  text("computerName", r.ComputerName);
  text("typeName", r.TypeName);
  text("category", r.Category);
  number("categoryColor", r.CategoryColor);
  number("categoryFontColor", r.CategoryFontColor);
  text("msgText", r.MsgText);
  text("details", r.Details);
  out += "}\n";
}

namespace {

void WriteRecord(std::ostream& out, std::string& line, Format format, uint64_t number,
                 const TZentrailPacketView& record) {
  line.clear();
  FormatRecord(line, format, number, record);
  out.write(line.data(), static_cast<std::streamsize>(line.size()));
}

// Reads through a fixed buffer, so memory stays bounded whatever the file's size.
DumpResult DumpStrict(const std::string& path, Format format, std::ostream& out,
                      std::ostream& err) {
  DumpResult result;
  TZentrailFileSource source;
  std::string error;
  if (!source.Open(path, error)) {
    err << "ztlog: " << error << '\n';
    ++result.Problems;
    return result;
  }
  TZentrailLogReader reader(source);
  TZentrailPacketView record;
  std::string line;
  for (;;) {
    const TZentrailRecordResult r = reader.Next(record);
    if (r == TZentrailRecordResult::End) break;
    if (r == TZentrailRecordResult::Ok) {
      WriteRecord(out, line, format, ++result.Records, record);
      continue;
    }
    ++result.Problems;
    char tag[16];
    std::snprintf(tag, sizeof tag, "$%X", reader.Tag());
    err << path << ": offset " << reader.RecordOffset() << ": ";
    if (r == TZentrailRecordResult::Unsupported) {
      err << "unsupported record tag " << tag << '\n';
      continue;  // reading goes on at the following four bytes
    }
    err << "invalid record (tag " << tag << "): " << reader.Error();
    if (!reader.Resumable()) {
      err << "; the rest of the file cannot be read\n";
      break;
    }
    err << '\n';
  }
  return result;
}

DumpResult DumpSalvage(const std::string& path, Format format, std::ostream& out,
                       std::ostream& err) {
  DumpResult result;
  TZentrailMappedFile file;
  std::string error;
  if (!file.Open(path, error)) {
    err << "ztlog: " << error << '\n';
    ++result.Problems;
    return result;
  }
  TZentrailLogSalvager salvager(file.Data());
  TZentrailPacketView record;
  std::string line;
  for (;;) {
    const TZentrailSalvageResult r = salvager.Next(record);
    if (r == TZentrailSalvageResult::End) break;
    if (r == TZentrailSalvageResult::Record) {
      WriteRecord(out, line, format, ++result.Records, record);
      continue;
    }
    err << path << ": offset " << salvager.Start() << " to " << salvager.End() << ": skipped "
        << salvager.End() - salvager.Start() << " bytes: " << salvager.Reason() << '\n';
  }
  result.Stretches = salvager.Stretches();
  result.SkippedBytes = salvager.SkippedBytes();
  result.Problems = result.Stretches;
  if (result.Stretches)
    err << path << ": " << result.Records << " records read, " << result.Stretches
        << (result.Stretches == 1 ? " damaged stretch" : " damaged stretches") << " skipped, "
        << result.SkippedBytes << " bytes skipped\n";
  return result;
}

}  // namespace

DumpResult DumpFile(const std::string& path, Format format, std::ostream& out, std::ostream& err,
                    Reading reading) {
  return reading == Reading::Strict ? DumpStrict(path, format, out, err)
                                    : DumpSalvage(path, format, out, err);
}

}  // namespace zentrail::ztlog
