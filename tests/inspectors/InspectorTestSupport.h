#pragma once
// Shared helpers of the inspector tests: messages in the store, pictures as hexadecimal text,
// printing to PDF and reading the text back, and screenshots for a look by eye.

#include <gtest/gtest.h>

#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QDir>
#include <QImage>
#include <QPrinter>
#include <QProcess>
#include <QStandardPaths>
#include <QWidget>
#include <filesystem>
#include <string>

#include "TestEnvironment.h"
#include "ZTInspectorIntf.h"
#include "ZentrailMessageSet.h"

namespace zentrail::test {

// Appends a message to the store; the cursor stands on it afterwards, as the main window leaves it.
inline int32_t PutMessage(int32_t content, std::string_view details, std::string_view typeName = {},
                          std::string_view text = "message", int32_t type = ztmInfo) {
  TZentrailMessage m;
  m.MsgType = type;
  m.MsgContent = content;
  m.MsgText = std::string(text);
  m.Details = std::string(details);
  m.TypeName = std::string(typeName);
  m.AppName = "demo";
  m.ThreadName = "main";
  static int32_t id = 0;
  MessageSet.AppendMessage(m, ++id);
  MessageSet.Last();
  return MessageSet.RecNo;
}

inline std::string ToHex(const QByteArray& bytes) { return bytes.toHex().toUpper().toStdString(); }

inline QByteArray PngBytes(const QImage& image) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  image.save(&buffer, "PNG");
  return bytes;
}

// A picture with a gradient, a frame and a disc, so that a scaled copy can be told apart.
inline QImage SamplePicture(int w = 160, int h = 100);

inline std::string ClipboardText() { return QGuiApplication::clipboard()->text().toStdString(); }

// Answers the print dialog without showing it: the printer writes a PDF file.
class TPdfPrompts : public IZTInspectorPrompts {
 public:
  explicit TPdfPrompts(std::filesystem::path pdf) : FPdf(std::move(pdf)) {}
  void ShowMessage(QWidget*, const QString& caption, const QString& text) override {
    Messages.push_back((caption + u'|' + text).toStdString());
  }
  bool ChoosePrinter(QWidget*, const QString& caption, QString& title, QPrinter& printer) override {
    Caption = caption.toStdString();
    ProposedTitle = title.toStdString();
    if (!Accept) return false;
    if (!EditedTitle.empty()) title = QString::fromStdString(EditedTitle);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(QString::fromStdString(FPdf.string()));
    return true;
  }
  std::filesystem::path FPdf;
  std::vector<std::string> Messages;
  std::string Caption;
  std::string ProposedTitle;
  std::string EditedTitle;
  bool Accept = true;
};

// Installs a prompt service for one test and restores the default afterwards.
class TScopedPrompts {
 public:
  explicit TScopedPrompts(IZTInspectorPrompts* p) { SetInspectorPrompts(p); }
  ~TScopedPrompts() { SetInspectorPrompts(nullptr); }
};

inline void PreparePdfPrinter(QPrinter& printer, const std::filesystem::path& pdf) {
  printer.setOutputFormat(QPrinter::PdfFormat);
  printer.setOutputFileName(QString::fromStdString(pdf.string()));
}

// Text of a PDF by pdftotext with the layout kept; pages are separated by form feeds. Empty with
// `available` false when the tool is not installed.
inline std::string PdfText(const std::filesystem::path& pdf, bool& available) {
  const QString tool = QStandardPaths::findExecutable(QStringLiteral("pdftotext"));
  available = !tool.isEmpty();
  if (!available) return {};
  QProcess p;
  p.start(tool, {QStringLiteral("-layout"), QString::fromStdString(pdf.string()), QStringLiteral("-")});
  if (!p.waitForFinished(30000)) return {};
  return p.readAllStandardOutput().toStdString();
}

#define ZT_PDF_TEXT(var, pdf)                                                                   \
  bool var##_available = false;                                                                 \
  const std::string var = ::zentrail::test::PdfText(pdf, var##_available);                     \
  if (!var##_available) GTEST_SKIP() << "pdftotext is not installed (package poppler-utils); " \
                                        "the PDF was written but its text cannot be checked"

inline std::vector<std::string> PdfPages(const std::string& text) {
  std::vector<std::string> pages;
  std::string current;
  for (char c : text) {
    if (c == '\f') {
      pages.push_back(current);
      current.clear();
    } else {
      current += c;
    }
  }
  if (!current.empty()) pages.push_back(current);
  return pages;
}

// Saves a grab of the widget for a look by eye; the folder lies in the build tree.
inline std::filesystem::path SaveScreenshot(QWidget* w, const std::string& name) {
  const std::filesystem::path dir = std::filesystem::path(ZENTRAIL_BINARY_DIR) / "test-screens" / "inspectors";
  std::filesystem::create_directories(dir);
  const std::filesystem::path file = dir / (name + ".png");
  w->grab().save(QString::fromStdString(file.string()), "PNG");
  return file;
}

inline QImage SamplePicture(int w, int h) {
  QImage img(w, h, QImage::Format_ARGB32);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) img.setPixel(x, y, qRgb(x * 255 / w, y * 255 / h, 160));
  }
  for (int x = 0; x < w; ++x) {
    img.setPixel(x, 0, qRgb(0, 0, 0));
    img.setPixel(x, h - 1, qRgb(0, 0, 0));
  }
  const int cx = w / 2, cy = h / 2, r = std::min(w, h) / 4;
  for (int y = cy - r; y <= cy + r; ++y) {
    for (int x = cx - r; x <= cx + r; ++x) {
      if ((x - cx) * (x - cx) + (y - cy) * (y - cy) <= r * r) img.setPixel(x, y, qRgb(255, 255, 255));
    }
  }
  return img;
}

}  // namespace zentrail::test
