// The presentation of a message view: settings from the application, column layout and measure,
// the header strip and the drawing of one row.

#include <QDate>
#include <QLocale>
#include <QPainter>
#include <QPixmap>
#include <iterator>

#include "ZTMsgView.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

namespace {

// Indices into the column widths.
enum { cwDate = 0, cwTime = 1, cwCategory = 2, cwAppName = 3, cwComputer = 4, cwProcessID = 5, cwThread = 6 };

struct TColumnCell {
  int Width = 0;        // index into the column widths
  uint16_t Bit = 0;     // the ColumnOptions bit that shows it
  const char* Heading;  // header text (the time heading is chosen apart)
  bool RightAligned;
};

// Left to right after the message column.
constexpr TColumnCell ztColumns[] = {
    {cwCategory, ztcoCategory, "Category", false}, {cwAppName, ztcoAppName, "AppName", false},
    {cwComputer, ztcoComputerName, "Computer", false}, {cwProcessID, ztcoProcessID, "PID", true},
    {cwThread, ztcoThreadName, "Thread", true}, {cwDate, ztcoDate, "Date", true},
    {cwTime, ztcoTimeColumn, "Time", true},
};

bool Shown(uint16_t options, const TColumnCell& cell) { return (options & cell.Bit) != 0; }

QString FromUtf8(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString TimeHeading(uint16_t options) {
  if (options & ztcoTimeStamp) return QStringLiteral("Time Stamp");
  if (options & ztcoTimeDiff) return QStringLiteral("Time Diff");
  return QStringLiteral("Time Offset");
}

QString FormatDate(const TZentrailTimeStamp& stamp) {
  const int32_t date = stamp.Date < 1 ? 0 : stamp.Date;
  const QDate day = QDate(1899, 12, 30).addDays(date - 693594);
  return QLocale().toString(day, QLocale::ShortFormat);
}

QString FormatTime(const TZentrailTimeStamp& stamp) {
  const int32_t ms = stamp.Date < 1 ? 0 : std::max(stamp.Time, 0);
  return QStringLiteral("%1:%2:%3.%4")
      .arg(ms / 3600000)
      .arg((ms / 60000) % 60, 2, 10, QLatin1Char('0'))
      .arg((ms / 1000) % 60, 2, 10, QLatin1Char('0'))
      .arg(ms % 1000, 3, 10, QLatin1Char('0'));
}

void ApplyStyle(QFont& font, uint8_t style) {
  font.setBold(style & fsBold);
  font.setItalic(style & fsItalic);
  font.setUnderline(style & fsUnderline);
  font.setStrikeOut(style & fsStrikeOut);
}

bool HasTypeIcon(int32_t type) {
  return (type >= 0 && type <= 10) || (type >= 16 && type <= 38) || (type >= 41 && type <= 45) || type >= 100;
}

void RaisedBox(QPainter& painter, const QRect& rect, const QPalette& pal, bool rightEdge) {
  painter.fillRect(rect, ColorToQColor(clBtnFace, pal));
  painter.setPen(pal.color(QPalette::Light));
  painter.drawLine(rect.topLeft(), rect.topRight());
  painter.drawLine(rect.topLeft(), rect.bottomLeft());
  painter.setPen(pal.color(QPalette::Mid));
  painter.drawLine(rect.bottomLeft(), rect.bottomRight());
  if (rightEdge) painter.drawLine(rect.topRight(), rect.bottomRight());
}

}  // namespace

// ---- settings ----------------------------------------------------------------------------------

void TZTMessageView::InitView() { UpdateSettings(); }

void TZTMessageView::UpdateSettings() {
  IZentrailApplication* app = App();
  if (!app) {
    viewport()->update();
    return;
  }
  FlattenStructure = app->GetFlattenStructure();
  // Flattening changes the drawing only; levels stay, so it can be turned off again.
  FIndentWidth = FlattenStructure ? 0 : 24;
  AutoScroll = app->GetAutoScroll();
  AutoCollapse = app->GetAutoCollapse();
  SetSelectBackColor(app->GetHighlightColor());
  FHighlightFontColor = app->GetHighlightFontColor();
  SetSelectTextColor(FHighlightFontColor);
  SetColumnOptions(app->GetHideExtraColumns() ? 0 : app->GetColumnOptions());
  const QFont messageFont = app->GetFont(ztFontMessage);
  if (messageFont != font()) {
    setFont(messageFont);
    UpdateColumnWidths();
  }
  if (FHintWindow) FHintWindow->setFont(font());
  SetPopupMenu(app->GetPopupMenu());
  auto follow = [this](TZTImageList*& slot, TZTImageList* list) {
    if (slot == list) return;
    if (slot) disconnect(slot, nullptr, this, nullptr);
    slot = list;
    if (slot) connect(slot, &TZTImageList::Changed, this, [this] { viewport()->update(); });
  };
  follow(FAppMessageImages, app->GetImageList(ztImlMsgIcons));
  follow(FAppBookmarkImages, app->GetImageList(ztImlBookmarkIcons));
  FMarkerColor = app->GetMarkerColor();
  FRowShading = app->GetRowShading();
  FRowShadingColor = app->GetRowShadingColor();
  FSyncMsgColor = app->GetSyncMsgColor();
  FSeparatorColor = app->GetSeparatorColor();
  FInactiveSeparatorColor = app->GetInactiveSeparatorColor();
  FAppStartSeparatorColor = app->GetAppStartSeparatorColor();
  for (size_t type = 0; type < FTypeStyles.size(); ++type)
    FTypeStyles[type] = app->GetMsgTypeStyle(static_cast<int32_t>(type));
  FDefaultStyle = FTypeStyles[0];
  viewport()->update();
}

TZTImageList* TZTMessageView::MessageImages() const {
  return FAppMessageImages ? FAppMessageImages : FOwnMessageImages;
}

TZTImageList* TZTMessageView::BookmarkImages() const {
  return FAppBookmarkImages ? FAppBookmarkImages : FOwnBookmarkImages;
}

// ---- columns -----------------------------------------------------------------------------------

void TZTMessageView::SetColumnOptions(uint16_t value) {
  if (value == FColumnOptions) return;
  FColumnOptions = value;
  MeasureColumn(cwDate, "00/00/0000");
  MeasureColumn(cwTime, "00:00:00.000");
  viewport()->update();
}

bool TZTMessageView::MeasureColumn(int index, std::string_view text) {
  std::string& last = FLastMeasured[static_cast<size_t>(index)];
  if (text == last && FColumnWidths[static_cast<size_t>(index)] > 0) return false;
  last.assign(text);
  const int width = fontMetrics().horizontalAdvance(FromUtf8(text)) + 4;
  int32_t& stored = FColumnWidths[static_cast<size_t>(index)];
  if (width <= stored) return false;
  stored = width + 4;
  return true;
}

void TZTMessageView::UpdateColumnWidths() {
  // Widths start again from nothing: what fitted before must be measured again.
  ++FFitEpoch;
  FColumnWidths.fill(0);
  for (auto& last : FLastMeasured) last.clear();
  MeasureColumn(cwDate, "00/00/0000");
  MeasureColumn(cwTime, "00:00:00.000");
  const QFontMetrics metrics = fontMetrics();
  struct TWidest {
    std::string Text;
    int Width;
  };
  auto start = [&](const char* text) { return TWidest{text, metrics.horizontalAdvance(QString::fromLatin1(text))}; };
  TWidest category = start("Category"), app = start("ZTLiveViewer"), computer = start("Computer"),
          thread = start("Thread");
  // Identity fields repeat from row to row; a text equal to the previous row's costs no measure.
  std::array<std::string, 4> previous;
  auto consider = [&](TWidest& widest, std::string_view text, std::string& prev) {
    if (text == prev) return;
    prev.assign(text);
    const int width = metrics.horizontalAdvance(FromUtf8(text));
    if (width > widest.Width) widest = {std::string(text), width};
  };
  TZentrailMessageSet& ms = MessageSet;
  for (int32_t row = 0; row < FRows.Count(); ++row) {
    SelectRecord(row);
    consider(category, ms.GetCategory(), previous[0]);
    consider(app, ms.GetAppName(), previous[1]);
    consider(computer, ms.GetComputerName(), previous[2]);
    consider(thread, ms.GetThreadName(), previous[3]);
  }
  MeasureColumn(cwCategory, category.Text);
  MeasureColumn(cwAppName, app.Text);
  MeasureColumn(cwComputer, computer.Text);
  MeasureColumn(cwThread, thread.Text);
  MeasureColumn(cwProcessID, "000000");
  viewport()->update();
}

QRect TZTMessageView::MessageRect(const QRect& rowRect, int32_t indent, int32_t msgType) const {
  int left = rowRect.left() + FIndentWidth * indent + 48;
  int right = rowRect.right() + 1;
  for (const TColumnCell& cell : ztColumns)
    if (Shown(FColumnOptions, cell)) right -= FColumnWidths[static_cast<size_t>(cell.Width)];
  // Enter and Exit rows have no content icon, so their text moves into its place.
  if (msgType == ztmEnterMethod || msgType == ztmExitMethod) left -= 24;
  return QRect(QPoint(left, rowRect.top()), QPoint(right - 1, rowRect.bottom()));
}

QString TZTMessageView::CutText(const QString& text, int width, const QFontMetrics& metrics) {
  static const QString ellipsis = QStringLiteral("...");
  QString result = text;
  bool multiLine = false;
  qsizetype lineEnd = result.indexOf(QLatin1Char('\r'));
  const qsizetype newLine = result.indexOf(QLatin1Char('\n'));
  if (newLine >= 0 && (lineEnd < 0 || newLine < lineEnd)) lineEnd = newLine;
  if (lineEnd >= 0) {
    result.truncate(lineEnd);
    multiLine = true;
  }
  if (result.size() > 255) result.truncate(255);
  const int ellipsisWidth = metrics.horizontalAdvance(ellipsis);
  // The test always counts the ellipsis, so a text that would only just fit alone is cut too.
  if (metrics.horizontalAdvance(result) + ellipsisWidth > width) {
    qsizetype low = 0, high = result.size();
    while (low < high) {
      const qsizetype mid = (low + high + 1) / 2;
      if (metrics.horizontalAdvance(result.left(mid)) + ellipsisWidth <= width)
        low = mid;
      else
        high = mid - 1;
    }
    return result.left(low) + ellipsis;
  }
  return multiLine ? result + ellipsis : result;
}

QString TZTMessageView::FormatTimeDiff(int64_t milliseconds) {
  int64_t hours = milliseconds / 3600000;
  if (hours >= 24) hours %= 24;
  return QString::asprintf("%d:%.2d:%.2d.%.3d", static_cast<int>(hours), static_cast<int>((milliseconds % 3600000) / 60000),
                           static_cast<int>((milliseconds % 60000) / 1000), static_cast<int>(milliseconds % 1000));
}

QString TZTMessageView::GetTimeDifference(int32_t row, const TZentrailTimeStamp& stamp) {
  TZentrailMessageSet& ms = MessageSet;
  TZentrailTimeStamp previous = stamp;
  if (row > 0) {
    int32_t before = row - 1;
    SelectRecord(before);
    // A pause marker isn't a moment of its own: measure against the message before it.
    if (ms.GetMsgType() == ztmInactiveSeparator && row >= 2) SelectRecord(--before);
    previous = ms.GetTimeStamp();
  }
  const int64_t ms64 = static_cast<int64_t>(stamp.Date - previous.Date) * 86400000 + (stamp.Time - previous.Time);
  return ms64 < 0 ? QStringLiteral("xx:xx:xx.xxx") : FormatTimeDiff(ms64);
}

QString TZTMessageView::GetTimeOffset(const TZentrailTimeStamp& stamp) {
  if (NumItems() <= 0) return FormatTimeDiff(0);
  SelectRecord(0);
  const TZentrailTimeStamp first = MessageSet.GetTimeStamp();
  const int64_t ms64 = static_cast<int64_t>(stamp.Date - first.Date) * 86400000 + (stamp.Time - first.Time);
  return ms64 < 0 ? QStringLiteral("xx:xx:xx.xxx") : FormatTimeDiff(ms64);
}

// ---- icons -------------------------------------------------------------------------------------

int32_t TZTMessageView::GetMsgTypeIcon(int32_t row) {
  SelectRecord(row);
  const int32_t type = MessageSet.GetMsgType();
  if (type == ztmEnterMethod && FItems.GetItems(FRows.GetItems(row)).Collapsed) return ztmCollapsedMethod;
  return type;
}

int32_t TZTMessageView::GetMsgContentIcon(int32_t row) {
  SelectRecord(row);
  if (MessageSet.GetMsgType() == ztmEnterMethod && FItems.GetItems(FRows.GetItems(row)).Collapsed) return -1;
  return MessageSet.GetMsgContent();
}

QString TZTMessageView::GetItemText(int32_t row) {
  if (row < 0 || row >= FRows.Count()) return QString();
  SelectRecord(row);
  return FromUtf8(MessageSet.GetMsgText());
}

// ---- header ------------------------------------------------------------------------------------

void TZTMessageView::DrawHeader(QPainter& painter, const QRect& rect) {
  const QPalette& pal = palette();
  painter.fillRect(rect, ColorToQColor(HeaderBackColor(), pal));
  painter.setFont(font());
  const QFontMetrics metrics(font());
  const int textTop = rect.top() + (rect.height() - metrics.boundingRect(QStringLiteral("Yy")).height()) / 2;
  const QRect row = QRect(0, rect.top(), viewport()->width(), rect.height());
  const QRect message = MessageRect(row, 0, ztmInfo);
  const QColor textColor = ColorToQColor(HeaderTextColor(), pal);

  int lastShown = -1;
  for (int i = 0; i < static_cast<int>(std::size(ztColumns)); ++i)
    if (Shown(FColumnOptions, ztColumns[i])) lastShown = i;

  const QRect messageCell(QPoint(row.left(), rect.top()), QPoint(message.right(), rect.bottom()));
  if (messageCell.width() >= 2) RaisedBox(painter, messageCell, pal, lastShown >= 0);
  painter.setPen(textColor);
  painter.drawText(QRect(messageCell.left() + 4, textTop, std::max(0, messageCell.width() - 4), metrics.height()),
                   Qt::AlignLeft | Qt::AlignTop, QStringLiteral("Message"));

  int left = message.right() + 1;
  for (int i = 0; i < static_cast<int>(std::size(ztColumns)); ++i) {
    const TColumnCell& cell = ztColumns[i];
    if (!Shown(FColumnOptions, cell)) continue;
    const int width = FColumnWidths[static_cast<size_t>(cell.Width)];
    if (width == 0 && (cell.Width == cwCategory || cell.Width == cwAppName)) continue;
    const QRect box(left, rect.top(), width, rect.height());
    RaisedBox(painter, box, pal, i != lastShown);
    const QString heading = cell.Width == cwTime ? TimeHeading(FColumnOptions) : QString::fromLatin1(cell.Heading);
    painter.setPen(textColor);
    if (cell.RightAligned)
      painter.drawText(QRect(box.left(), textTop, std::max(0, box.width() - 4), metrics.height()),
                       Qt::AlignRight | Qt::AlignTop, heading);
    else
      painter.drawText(QRect(box.left() + 4, textTop, std::max(0, box.width() - 4), metrics.height()),
                       Qt::AlignLeft | Qt::AlignTop, heading);
    left += width;
  }
}

// ---- one row -----------------------------------------------------------------------------------

void TZTMessageView::DrawMarks(QPainter& painter, int32_t type, int32_t indent, const QRect& rect, int32_t bookmark,
                               bool sync, int32_t row, bool separator) {
  TZTImageList* images = MessageImages();
  TZTImageList* marks = BookmarkImages();
  const int spotX = rect.left() + 4 + FIndentWidth * indent;
  auto centredY = [&](const TZTImageList* list) { return rect.top() + (rect.height() - list->Height()) / 2; };
  if (sync) {
    if (marks) marks->Draw(painter, spotX, centredY(marks), 10);
  } else if (bookmark >= 0) {
    if (marks) marks->Draw(painter, spotX, centredY(marks), bookmark);
  } else if (!separator && images && HasTypeIcon(type)) {
    const bool collapsed = type == ztmEnterMethod && FItems.GetItems(FRows.GetItems(row)).Collapsed;
    images->Draw(painter, spotX, centredY(images), type >= 100 ? 46 : (collapsed ? ztmCollapsedMethod : type));
  }
  if (separator || !images || type == ztmEnterMethod || type == ztmExitMethod) return;
  // The content icon; a collapsed Enter has none, and content codes index the same images.
  SelectRecord(row);
  const int32_t content = MessageSet.GetMsgContent();
  if (content >= 0) images->Draw(painter, spotX + 22, centredY(images), content);
}

void TZTMessageView::DrawSeparator(QPainter& painter, int32_t type, int32_t indent, const QRect& rect, bool selected,
                                   int32_t bookmark, bool sync) {
  const QPalette& pal = palette();
  const QColor highlightFont = ColorToQColor(FHighlightFontColor, pal);
  const int mid = rect.top() + rect.height() / 2;
  switch (type) {
    case ztmSeparator: {
      painter.fillRect(rect, painter.brush());
      const QColor pen = selected ? highlightFont : ColorToQColor(FSeparatorColor, pal);
      const int left = rect.left() + 4 + FIndentWidth * indent;
      painter.fillRect(QRect(QPoint(left, mid - 1), QPoint(rect.right() - 2, mid)), pen);
      break;
    }
    case ztmResetSeparator: {
      painter.fillRect(rect, painter.brush());
      const QColor pen = selected ? highlightFont : ColorToQColor(FSeparatorColor, pal);
      painter.fillRect(QRect(QPoint(rect.left() + 2, mid - 2), QPoint(rect.right() - 2, mid - 1)), pen);
      painter.fillRect(QRect(QPoint(rect.left() + 2, mid + 2), QPoint(rect.right() - 2, mid + 3)), pen);
      break;
    }
    case ztmInactiveSeparator: {
      const QColor ground = selected ? ColorToQColor(SelectBackColor(), pal) : ColorToQColor(clWindow, pal);
      const QColor figure = selected ? highlightFont : ColorToQColor(FInactiveSeparatorColor, pal);
      painter.fillRect(rect, ground);
      const QRect inner = rect.adjusted(2, 2, -2, -2);
      painter.fillRect(inner, QBrush(figure, Qt::BDiagPattern));
      painter.setPen(figure);
      painter.setBrush(Qt::NoBrush);
      painter.drawRect(inner.adjusted(0, 0, -1, -1));
      break;
    }
    case ztmAppStartSeparator: {
      const QColor ground = selected ? ColorToQColor(SelectBackColor(), pal) : ColorToQColor(clWindow, pal);
      const QColor figure = selected ? highlightFont : ColorToQColor(FAppStartSeparatorColor, pal);
      painter.fillRect(rect, ground);
      // A checker of 2-pixel cells: the ground with eight 2 by 2 squares per 8 by 8 tile.
      QPixmap tile(8, 8);
      tile.fill(ground);
      {
        QPainter tilePainter(&tile);
        static constexpr int spots[8][2] = {{0, 0}, {4, 0}, {2, 2}, {6, 2}, {0, 4}, {4, 4}, {2, 6}, {6, 6}};
        for (const auto& spot : spots) tilePainter.fillRect(spot[0], spot[1], 2, 2, figure);
      }
      const QRect inner = rect.adjusted(2, 2, -2, -2);
      painter.fillRect(inner, QBrush(tile));
      painter.setPen(figure);
      painter.setBrush(Qt::NoBrush);
      painter.drawRect(inner.adjusted(0, 0, -1, -1));
      break;
    }
    default: break;
  }
  DrawMarks(painter, type, indent, rect, bookmark, sync, -1, true);
}

void TZTMessageView::DrawItem(QPainter& painter, int32_t row, const QRect& rect, bool selected) {
  if (OnDrawItem) OnDrawItem(painter, row, rect, selected);
  if (row < 0 || row >= FRows.Count()) return;
  const QPalette& pal = palette();
  TZentrailMessageSet& ms = MessageSet;
  const int32_t item = FRows.GetItems(row);
  const TZTViewItem& viewItem = FItems.GetItems(item);
  const int32_t indent = FIndents.GetItems(item);
  ms.GotoRec(viewItem.RecNo);

  // Read what the row shows at once: later steps move the cursor.
  const int32_t type = ms.GetMsgType();
  const TZentrailTimeStamp stamp = ms.GetTimeStamp();
  const TColor categoryColor = ms.GetCategoryColor();
  const TColor categoryFontColor = ms.GetCategoryFontColor();
  const int32_t bookmark = FindBookmark(viewItem.RecNo);
  const bool sync = viewItem.RecNo == FSyncMsgRecNo;
  const bool focused = row == ItemIndex();

  QColor back;
  if (!focused && sync)
    back = ColorToQColor(FSyncMsgColor, pal);
  else if (!focused && bookmark >= 0)
    back = ColorToQColor(FMarkerColor, pal);
  else if (selected)
    back = painter.brush().color();
  else
    back = ColorToQColor(FRowShading && (row % 2) == 1 ? BlendColors(categoryColor, FRowShadingColor, 40.0 / 255.0)
                                                      : categoryColor,
                         pal);
  painter.setBrush(back);

  if (type == ztmSeparator || type == ztmInactiveSeparator || type == ztmResetSeparator ||
      type == ztmAppStartSeparator) {
    DrawSeparator(painter, type, indent, rect, selected, bookmark, sync);
    return;
  }

  painter.fillRect(rect, back);
  QFont rowFont = font();
  ApplyStyle(rowFont, FDefaultStyle.Style);
  QColor textColor = ColorToQColor(selected ? FHighlightFontColor : categoryFontColor, pal);
  if (type >= 0 && type <= 45 && !FTypeStyles[static_cast<size_t>(type)].UseDefault) {
    // A type's own format wins, on purpose also on a selected row.
    ApplyStyle(rowFont, FTypeStyles[static_cast<size_t>(type)].Style);
    textColor = ColorToQColor(FTypeStyles[static_cast<size_t>(type)].Color, pal);
  }
  const QRect message = MessageRect(rect, indent, type);
  const QString rawText = FromUtf8(ms.GetMsgText());
  const QString category = FromUtf8(ms.GetCategory()), appName = FromUtf8(ms.GetAppName()),
                computer = FromUtf8(ms.GetComputerName()), thread = FromUtf8(ms.GetThreadName());
  const uint32_t processID = ms.GetProcessID();

  painter.setFont(rowFont);
  const QFontMetrics metrics(rowFont);
  const int textY = rect.top() + (rect.height() - metrics.height()) / 2;
  TZTImageList* images = MessageImages();
  const int imageWidth = images ? images->Width() : 16;
  QString text = CutText(rawText, message.width(), metrics);
  if (type == ztmEnterMethod && viewItem.Collapsed) {
    const int32_t end = FindMethodEnd(item);
    text = QStringLiteral("%1  [%2]").arg(text).arg(end < 0 ? 0 : end - item - 1);
  }
  const int textWidth = metrics.horizontalAdvance(text);
  // Icons and text of a deep row stay inside the message column and never run into the columns.
  painter.save();
  painter.setClipRect(QRect(QPoint(std::min(0, rect.left()), rect.top()), QPoint(message.right(), rect.bottom())),
                      Qt::IntersectClip);
  const bool noRoom = message.left() > message.right() + imageWidth + 4;
  // Where the text has no room at all, the marker alone stands in the strip.
  if (!noRoom) DrawMarks(painter, type, indent, rect, bookmark, sync, row, false);
  if (message.left() < 0 && message.left() + textWidth < 0) {
    // Scrolled so far that the text lies wholly to the left: a marker says where it went.
    if (images) images->Draw(painter, 4, rect.top() + (rect.height() - images->Height()) / 2, 12);
  } else if (noRoom) {
    // Indented beyond its room: the text is off to the right.
    if (images) images->Draw(painter, message.right() - 20, rect.top() + (rect.height() - images->Height()) / 2, 11);
  } else {
    painter.setFont(rowFont);
    painter.setPen(textColor);
    painter.drawText(QRect(message.left(), textY, std::max(0, message.width()), metrics.height()),
                     Qt::AlignLeft | Qt::AlignTop, text);
  }
  painter.restore();

  // The further columns never take a type's format.
  QFont plain = font();
  ApplyStyle(plain, 0);
  painter.setFont(plain);
  painter.setPen(ColorToQColor(selected ? FHighlightFontColor : categoryFontColor, pal));
  const QFontMetrics plainMetrics(plain);
  const int columnY = rect.top() + (rect.height() - plainMetrics.height()) / 2;
  int left = message.right() + 1;
  for (const TColumnCell& cell : ztColumns) {
    if (!Shown(FColumnOptions, cell)) continue;
    const int width = FColumnWidths[static_cast<size_t>(cell.Width)];
    QString value;
    switch (cell.Width) {
      case cwCategory: value = category; break;
      case cwAppName: value = appName; break;
      case cwComputer: value = computer; break;
      case cwProcessID: value = QString::asprintf("%6d", static_cast<int>(processID)); break;
      case cwThread: value = thread; break;
      case cwDate: value = FormatDate(stamp); break;
      case cwTime:
        if (FColumnOptions & ztcoTimeStamp)
          value = FormatTime(stamp);
        else if (FColumnOptions & ztcoTimeDiff)
          value = GetTimeDifference(row, stamp);
        else
          value = GetTimeOffset(stamp);
        break;
      default: break;
    }
    const QRect box(left, columnY, width, plainMetrics.height());
    painter.save();
    painter.setClipRect(QRect(left, rect.top(), width, rect.height()), Qt::IntersectClip);
    if (cell.RightAligned)
      painter.drawText(box.adjusted(0, 0, -2, 0), Qt::AlignRight | Qt::AlignTop, value);
    else
      painter.drawText(box.adjusted(4, 0, 0, 0), Qt::AlignLeft | Qt::AlignTop, value);
    painter.restore();
    left += width;
  }
}

}  // namespace zentrail
