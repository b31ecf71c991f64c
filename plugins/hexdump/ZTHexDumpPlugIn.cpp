// A sample inspector plug-in: a hex and ASCII dump of the binary payload of user messages of type
// ztmUser + 1. The payload travels in the message's Details as hexadecimal text (the way pictures
// travel); Details that are not hexadecimal are dumped as the bytes of their text.

#include <QApplication>
#include <QClipboard>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QPrinter>
#include <QTextDocument>
#include <cstdio>
#include <string>
#include <string_view>

#include "ZTInspectorIntf.h"
#include "ZentrailMessageSet.h"
#include "ZentrailPlugIns.h"

namespace {

using namespace zentrail;

constexpr int32_t kHexDumpContent = ztmUser + 1;

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// The payload's bytes: hexadecimal pairs (white space between them allowed), else the text itself.
std::string PayloadBytes(std::string_view details) {
  std::string bytes;
  int high = -1;
  for (char c : details) {
    if (c == ' ' || c == '\r' || c == '\n' || c == '\t') continue;
    const int v = HexValue(c);
    if (v < 0) return std::string(details);
    if (high < 0) {
      high = v;
    } else {
      bytes.push_back(static_cast<char>(high * 16 + v));
      high = -1;
    }
  }
  if (high >= 0) return std::string(details);
  return bytes;
}

}  // namespace

namespace zentrail {

// Offset, sixteen bytes in hexadecimal, and the same bytes as ASCII with a dot for the rest.
QString HexDumpText(std::string_view bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  QString out;
  for (size_t offset = 0; offset < bytes.size(); offset += 16) {
    std::string line;
    char head[32];
    std::snprintf(head, sizeof head, "%08zX  ", offset);
    line += head;
    std::string ascii;
    for (size_t i = 0; i < 16; ++i) {
      if (offset + i < bytes.size()) {
        const auto b = static_cast<unsigned char>(bytes[offset + i]);
        line += kDigits[b >> 4];
        line += kDigits[b & 15];
        line += ' ';
        ascii += b >= 0x20 && b < 0x7F ? static_cast<char>(b) : '.';
      } else {
        line += "   ";
      }
      if (i == 7) line += ' ';
    }
    out += QString::fromLatin1(line) + QLatin1Char(' ') + QString::fromLatin1(ascii) + QLatin1Char('\n');
  }
  return out;
}

class TZTHexDumpControl : public QPlainTextEdit,
                          public IInspectorSingleMessage,
                          public IInspectorCopyContents,
                          public IInspectorPrintContents {
 public:
  TZTHexDumpControl() {
    setObjectName(QStringLiteral("ZTHexDumpControl"));
    setReadOnly(true);
    setFrameShape(QFrame::NoFrame);
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  }
  void InspectMessage() override {
    const std::string bytes = PayloadBytes(MessageSet.GetDetails());
    setPlainText(bytes.empty() ? QStringLiteral("(no payload)") : HexDumpText(bytes));
    FTitle = QString::fromUtf8(MessageSet.GetMsgText());
  }
  void CopyToClipboard() override { QApplication::clipboard()->setText(toPlainText()); }
  void GetPrintTitle(QString& title) override { title = FTitle; }
  void Print(const QString& title, QPrinter& printer) override {
    QTextDocument document;
    document.setDefaultFont(font());
    document.setPlainText(title + QStringLiteral("\n\n") + toPlainText());
    document.print(&printer);
  }

 private:
  QString FTitle;
};

class TZTHexDumpInspector : public TZentrailCustomInspector {
 public:
  int32_t GetMsgContent() override { return kHexDumpContent; }
  QString GetName() override { return QStringLiteral("Hex Dump"); }
  QString GetVersion() override { return QStringLiteral("1.0"); }
  QString GetDescription() override {
    return QStringLiteral("Shows the binary payload of a message (type ztmUser + 1) as offsets, hexadecimal bytes and "
                          "their ASCII characters, sixteen bytes to a line.");
  }
  QString GetEmail() override { return QStringLiteral("plugins@zentrail.example"); }
  QString GetWebSite() override { return QStringLiteral("https://zentrail.example/plugins/hexdump"); }
  QWidget* GetInspectorControl() override {
    // Made when first asked for, by then the application exists; the inspector owns it.
    if (!TZentrailCustomInspector::GetInspectorControl()) SetInspectorControl(new TZTHexDumpControl);
    return TZentrailCustomInspector::GetInspectorControl();
  }
};

}  // namespace zentrail

extern "C" __attribute__((visibility("default"))) void ZentrailRegister() {
  zentrail::PlugInManager->RegisterInspector(new zentrail::TZTHexDumpInspector);
}
