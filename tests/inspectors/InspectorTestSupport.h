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
#include <QWidget>
#include <filesystem>
#include <string>

#include "PdfText.h"
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

// The text of a PDF the printer wrote, read without any tool outside the project.
inline TPdfDocument ReadPdf(const std::filesystem::path& pdf) {
  TPdfDocument doc = ReadPdfText(pdf);
  EXPECT_EQ(doc.Error, "") << pdf;
  return doc;
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
