// Selecting messages with large payloads: the time from the pane being asked to show the current
// record until the inspector has filled in and painted once. Prints "figure:" lines.

#include <QApplication>
#include <QBuffer>
#include <QElapsedTimer>
#include <QImage>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "ZTInspectorPane.h"
#include "ZentrailMessageSet.h"

using namespace zentrail;

namespace {

int32_t Put(int32_t content, std::string details, std::string typeName, std::string text) {
  TZentrailMessage m;
  m.MsgContent = content;
  m.Details = std::move(details);
  m.TypeName = std::move(typeName);
  m.MsgText = std::move(text);
  static int32_t id = 0;
  MessageSet.AppendMessage(m, ++id);
  return MessageSet.GetRecordCount();
}

// Median of several selections of `big`, each after a selection of `small`, so that every run
// switches panels as a user moving through the list would.
double MedianSelectMs(TZTInspectorPane& pane, int32_t small, int32_t big, int runs = 5) {
  std::vector<double> times;
  for (int i = 0; i < runs; ++i) {
    MessageSet.GotoRec(small);
    pane.ShowCurrentMessage(1);
    pane.repaint();
    QApplication::processEvents();
    QElapsedTimer timer;
    timer.start();
    MessageSet.GotoRec(big);
    pane.ShowCurrentMessage(1);
    pane.repaint();
    QApplication::processEvents();
    times.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
  }
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QApplication app(argc, argv);
  TZTInspectorPane pane;
  pane.resize(1000, 700);
  pane.show();

  const int32_t small = Put(ztmInfo, "", "", "a short message");

  std::string text;
  text.reserve(10u << 20);
  for (int line = 1; text.size() < (10u << 20); ++line) {
    text += "2026-11-22 03:14:15.926 worker-" + std::to_string(line % 8) + " request " + std::to_string(line) +
            " served in " + std::to_string(line % 997) + " us, status 200, bytes " + std::to_string(line * 37 % 100000) +
            "\r\n";
  }
  const int32_t bigText = Put(ztmTextFile, text, "Text File", "access.log");
  std::printf("figure: inspect_10mb_text_ms %.1f ms\n", MedianSelectMs(pane, small, bigText));

  const int32_t longLine = Put(ztmCustomText, std::string(2u << 20, 'x'), "", "one long line");
  std::printf("figure: inspect_2mb_single_line_ms %.1f ms\n", MedianSelectMs(pane, small, longLine));

  const int32_t bigList = Put(ztmStringList, text.substr(0, 2u << 20), "TStringList", "lines");
  std::printf("figure: inspect_2mb_string_list_ms %.1f ms\n", MedianSelectMs(pane, small, bigList));

  std::string table = "Time\tThread\tRequest\tMicroseconds\tStatus\r\n";
  for (int row = 1; row <= 50000; ++row) {
    table += "03:14:" + std::to_string(row % 60) + "\tworker-" + std::to_string(row % 8) + "\t/api/items/" +
             std::to_string(row) + "\t" + std::to_string(row % 997) + "\t200\r\n";
  }
  const int32_t bigTable = Put(ztmCustomTable, table, "", "table");
  std::printf("figure: inspect_50k_row_table_ms %.1f ms\n", MedianSelectMs(pane, small, bigTable));

  std::string xml = "<?xml version=\"1.0\"?>\n<log>\n";
  for (int i = 1; xml.size() < (2u << 20); ++i) {
    xml += "  <entry id=\"" + std::to_string(i) + "\" level=\"info\"><time>03:14:15</time><text>request " +
           std::to_string(i) + " served</text></entry>\n";
  }
  xml += "</log>\n";
  const int32_t bigXml = Put(ztmXmlData, xml, "Xml Data", "log.xml");
  std::printf("figure: inspect_2mb_xml_ms %.1f ms\n", MedianSelectMs(pane, small, bigXml));

  QImage picture(1920, 1080, QImage::Format_RGB32);
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) picture.setPixel(x, y, qRgb(x % 256, y % 256, (x * y) % 256));
  }
  QByteArray png;
  QBuffer buffer(&png);
  buffer.open(QIODevice::WriteOnly);
  picture.save(&buffer, "PNG");
  const int32_t bigPng = Put(ztmBitmap, png.toHex().toUpper().toStdString(), "PngImage", "screen");
  std::printf("figure: inspect_1080p_png_ms %.1f ms\n", MedianSelectMs(pane, small, bigPng));
  return 0;
}
