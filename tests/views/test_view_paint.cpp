// Painting: only rows on screen are drawn, a live message off screen costs no paint, and a grabbed
// view of a realistic run shows the structure, separators and marks where they belong.

#include <QCoreApplication>
#include <QApplication>
#include <QImage>
#include <QMouseEvent>
#include <QPixmap>
#include <QSet>
#include <QTest>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <QPainter>

#include "TestEnvironment.h"
#include "ViewTestSupport.h"

namespace zentrail::test {
namespace {

class ViewPaint : public TViewTest {
 protected:
  // Stores a message with more fields than the plain helper, for a lifelike picture.
  int32_t StoreFull(int32_t type, const std::string& text, TZTMessageView& view, const std::string& thread,
                    const std::string& category, int32_t content = ztmText, const std::string& details = {}) {
    TZentrailMessage message;
    message.MsgType = type;
    message.MsgContent = content;
    message.MsgText = text;
    message.Details = details;
    message.AppName = thread == "ui" ? "OrderDesk" : "OrderService";
    message.ComputerName = "build-host";
    message.ThreadName = thread;
    message.Category = category;
    message.ProcessID = thread == "ui" ? 3120 : 3188;
    message.TimeStamp = {FTime, ztDateOf2000 + 9000};
    FTime += 13 + (FNextID % 7) * 3;
    MessageSet.AppendMessage(message, FNextID++);
    view.AddMessage(false);
    return MessageSet.RecNo;
  }
};

TEST_F(ViewPaint, OnlyRowsOnScreenArePainted) {
  TZTMessageView view;
  view.resize(600, 300);
  view.show();
  for (int i = 0; i < 10000; ++i) Store(i % 50 == 0 ? ztmEnterMethod : ztmInfo, "message " + std::to_string(i), {&view});
  QSet<int32_t> painted;
  view.OnDrawItem = [&](QPainter&, int32_t row, const QRect&, bool) { painted.insert(row); };

  auto check = [&](int32_t top) {
    view.SetTopIndex(top);
    painted.clear();
    view.ResetRowsPainted();
    (void)view.grab();
    ASSERT_FALSE(painted.isEmpty());
    EXPECT_LE(painted.size(), view.VisibleRows() + 1);
    EXPECT_EQ(view.RowsPainted(), painted.size());  // each row once
    for (int32_t row : painted) {
      EXPECT_GE(row, view.TopIndex());
      EXPECT_LE(row, view.TopIndex() + view.VisibleRows());
    }
  };
  check(0);
  check(5000);
  check(9999);

  // A live message below the visible rows costs no paint at all, while a changed row on screen is
  // painted alone.
  // Activation repaints a window once; let that pass before counting.
  view.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
  view.SetTopIndex(0);
  view.FlushLiveRefresh();  // the refresh still pending from the fill above
  QCoreApplication::processEvents();
  view.ResetRowsPainted();
  view.InvalidateItem(2);
  QTRY_VERIFY_WITH_TIMEOUT(view.RowsPainted() > 0, 2000);
  EXPECT_LE(view.RowsPainted(), 2);
  view.ResetRowsPainted();
  for (int i = 0; i < 100; ++i) Store(ztmInfo, "arrives off screen", {&view});
  view.FlushLiveRefresh();
  QCoreApplication::processEvents();
  EXPECT_EQ(view.RowsPainted(), 0);

  // In a short view the new row is on screen: it is painted, and nothing else is.
  TZTMessageView shortView;
  shortView.resize(600, 300);
  shortView.show();
  shortView.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&shortView));
  Store(ztmInfo, "one", {&shortView});
  Store(ztmInfo, "two", {&shortView});
  shortView.FlushLiveRefresh();
  QCoreApplication::processEvents();
  shortView.ResetRowsPainted();
  Store(ztmInfo, "three", {&shortView});
  QTRY_VERIFY_WITH_TIMEOUT(shortView.RowsPainted() > 0, 2000);
  EXPECT_EQ(shortView.RowsPainted(), 1);

  // An empty view paints only its background.
  TZTMessageView empty;
  empty.resize(300, 200);
  empty.show();
  empty.ResetRowsPainted();
  (void)empty.grab();
  EXPECT_EQ(empty.RowsPainted(), 0);
  EXPECT_EQ(empty.GetFocusedMsgIndex(), -1);
}

TEST_F(ViewPaint, RowTextIsCutToItsRoom) {
  const QFont font;
  const QFontMetrics metrics(font);
  const QString longText = QString(300, QLatin1Char('w'));
  const QString cut = TZTMessageView::CutText(longText, 200, metrics);
  EXPECT_TRUE(cut.endsWith(QStringLiteral("...")));
  EXPECT_LE(metrics.horizontalAdvance(cut), 200);
  EXPECT_EQ(TZTMessageView::CutText(QStringLiteral("first\r\nsecond"), 1000, metrics), QStringLiteral("first..."));
  EXPECT_EQ(TZTMessageView::CutText(QStringLiteral("short"), 1000, metrics), QStringLiteral("short"));
  EXPECT_EQ(TZTMessageView::CutText(QString(400, QLatin1Char('i')), 100000, metrics).size(), 255);
  EXPECT_EQ(TZTMessageView::FormatTimeDiff(0), QStringLiteral("0:00:00.000"));
  EXPECT_EQ(TZTMessageView::FormatTimeDiff(86400000), QStringLiteral("0:00:00.000"));
  EXPECT_EQ(TZTMessageView::FormatTimeDiff(3723004), QStringLiteral("1:02:03.004"));
}

TEST_F(ViewPaint, GrabOfARunShowsStructureSeparatorsAndMarks) {
  TFakeApplication app;
  app.AutoScroll = true;
  app.Columns = ztcoCategory | ztcoAppName | ztcoThreadName | ztcoTimeStamp;
  app.Styles[ztmError] = {false, 0x000000C0, fsBold};
  app.Styles[ztmWarning] = {false, 0x00006090, 0};
  TZTMessageView view(nullptr, &app);
  view.InitView();
  view.resize(980, 620);
  view.show();

  for (int request = 0; request < 490; ++request) {
    const std::string id = std::to_string(1000 + request);
    StoreFull(ztmEnterMethod, "OrderController.Handle(#" + id + ")", view, "worker-2", "Orders");
    StoreFull(ztmInfo, "Received order " + id + " for 3 items", view, "worker-2", "Orders");
    StoreFull(ztmEnterMethod, "Inventory.Reserve", view, "worker-2", "Stock");
    StoreFull(ztmInfo, "Reserved SKU-" + std::to_string(request % 37) + " x 2", view, "worker-2", "Stock", ztmObject,
              "  Sku=SKU-1\r\n  Count=2\r\n");
    StoreFull(ztmExitMethod, "Inventory.Reserve", view, "worker-2", "Stock");
    if (request % 9 == 0) StoreFull(ztmWarning, "Slow payment gateway answer (840 ms)", view, "worker-2", "Payments");
    StoreFull(ztmExitMethod, "OrderController.Handle(#" + id + ")", view, "worker-2", "Orders");
    if (request % 25 == 0) StoreFull(ztmSeparator, "-", view, "ui", "General");
  }
  StoreFull(ztmAppStartSeparator, "", view, "ui", "General");
  StoreFull(ztmInfo, "OrderDesk 4.2 started", view, "ui", "General");
  StoreFull(ztmEnterMethod, "MainForm.Load", view, "ui", "UI");
  StoreFull(ztmInfo, "Settings read from OrderDesk.ini", view, "ui", "UI", ztmStringList);
  StoreFull(ztmEnterMethod, "Grid.Populate", view, "ui", "UI");
  for (int i = 0; i < 5; ++i) StoreFull(ztmInfo, "Row " + std::to_string(i) + " bound", view, "ui", "UI");
  StoreFull(ztmExitMethodCollapse, "Grid.Populate", view, "ui", "UI");
  StoreFull(ztmEnterMethod, "Toolbar.Build", view, "ui", "UI");
  StoreFull(ztmInfo, "12 buttons", view, "ui", "UI");
  StoreFull(ztmExitMethod, "Toolbar.Build", view, "ui", "UI");
  StoreFull(ztmExitMethod, "MainForm.Load", view, "ui", "UI");
  StoreFull(ztmInactiveSeparator, "", view, "ui", "General");
  StoreFull(ztmCheckPoint, "Check point 1", view, "ui", "General");
  StoreFull(ztmNote, "Customer called about order 1399", view, "ui", "General");
  StoreFull(ztmInfo, "Order 1399 shipped", view, "ui", "Orders", ztmXmlData, "<order id=\"1399\"/>");
  const int32_t bookmarked = StoreFull(ztmLevel2, "Stock below threshold for SKU-12", view, "ui", "Stock");
  StoreFull(ztmError, "Payment declined for order 1400: card expired", view, "ui", "Payments");
  StoreFull(ztmResetSeparator, "=", view, "ui", "General");
  StoreFull(ztmException, "EAccessViolation in Report.Render at address 0x0045AF10", view, "ui", "Reports");
  StoreFull(ztmInfo,
            "A very long message text that goes on and on to show how a row that does not fit is cut at its end "
            "with an ellipsis, while the columns on the right keep their place and stay readable",
            view, "ui", "General");
  StoreFull(1000, "Custom message type 1000", view, "ui", "General", ztmCustomText);
  const int32_t synced = StoreFull(ztmColor, "Brand colour", view, "ui", "UI", ztmColor, "255\r\n128\r\n0\r\n");
  StoreFull(ztmTiming, "Report.Render took 1.2 s", view, "ui", "Reports");
  StoreFull(ztmInfo, "Idle", view, "ui", "General");

  ASSERT_GT(MessageSet.GetRecordCount(), 2900);
  const int32_t last = view.GetCount() - 1;
  EXPECT_EQ(view.TopIndex(), view.GetCount() - view.VisibleRows());

  int32_t bookmarkRow = -1, syncRow = -1;
  for (int32_t row = last; row >= 0 && (bookmarkRow < 0 || syncRow < 0); --row) {
    if (view.GetMsgRecNo(row) == bookmarked) bookmarkRow = row;
    if (view.GetMsgRecNo(row) == synced) syncRow = row;
  }
  ASSERT_GE(bookmarkRow, 0);
  ASSERT_GE(syncRow, 0);

  // Marks: a bookmark, the synchronised row, a two-row selection and the focus.
  view.SetFocusedMsgIndex(bookmarkRow);
  view.ToggleBookmark(2);
  view.SetSyncMsgRecNo(synced);
  view.Select(last - 1, true);
  view.Select(last, true);
  view.SetFocusedMsgIndex(last - 1);
  view.SetTopIndex(view.GetCount() - view.VisibleRows());

  const QImage image = view.grab().toImage();
  ASSERT_FALSE(image.isNull());
  EXPECT_EQ(image.size(), view.size() * image.devicePixelRatio());
  const std::filesystem::path out = MakeTempDir("grab") / "message-view.png";
  EXPECT_TRUE(image.save(QString::fromStdString(out.string())));
  if (const char* dir = std::getenv("ZENTRAIL_GRAB_DIR")) image.save(QString::fromLatin1(dir) + "/message-view.png");

  auto pixelAtRow = [&](int32_t row, int x) {
    const QPoint p = view.viewport()->mapTo(&view, QPoint(x, view.ItemRect(row).center().y()));
    return QColor(image.pixel(p * image.devicePixelRatio()));
  };
  EXPECT_EQ(pixelAtRow(bookmarkRow, 1), ColorToQColor(0x00E6D8AD));
  EXPECT_EQ(pixelAtRow(syncRow, 1), ColorToQColor(0x00AFEBFF));
  EXPECT_EQ(pixelAtRow(last, 1), ColorToQColor(0x00F0CDAA));
  EXPECT_EQ(pixelAtRow(last - 3, 1), ColorToQColor(0x00FFFFFF));
}

}  // namespace
}  // namespace zentrail::test

namespace zentrail::test {
namespace {

class ViewHint : public TViewTest {};

TEST_F(ViewHint, CutTextShowsInAHintUntilPressOrScroll) {
  TZTMessageView view;
  view.resize(500, 200);
  view.show();
  view.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
  const std::string longText =
      "This message is far too long for the room that the message column has in a narrow view, so it is cut";
  Store(ztmInfo, "short", {&view});
  Store(ztmInfo, longText, {&view});
  for (int i = 0; i < 40; ++i) Store(ztmInfo, "filler", {&view});

  auto moveTo = [&](int32_t row, int x) {
    const QPoint pos(x, view.ItemRect(row).center().y());
    QMouseEvent move(QEvent::MouseMove, QPointF(pos), QPointF(view.viewport()->mapToGlobal(pos)), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(view.viewport(), &move);
  };
  moveTo(0, 80);
  EXPECT_TRUE(view.HintWindow() == nullptr || !view.HintWindow()->isVisible());
  moveTo(1, 80);
  ASSERT_NE(view.HintWindow(), nullptr);
  EXPECT_TRUE(view.HintWindow()->isVisible());
  EXPECT_EQ(view.HintWindow()->Text(), QString::fromStdString(longText));
  EXPECT_LE(view.HintWindow()->height(), 40);
  const QRect message = view.MessageRect(view.ItemRect(1), 0, ztmInfo);
  EXPECT_EQ(view.HintWindow()->geometry().top(), view.viewport()->mapToGlobal(view.ItemRect(1).topLeft()).y() - 2);
  EXPECT_EQ(view.HintWindow()->geometry().left(), view.viewport()->mapToGlobal(message.topLeft()).x() - 3);

  QTest::mousePress(view.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(80, view.ItemRect(1).center().y()));
  QTest::mouseRelease(view.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(80, view.ItemRect(1).center().y()));
  EXPECT_FALSE(view.HintWindow()->isVisible());
  moveTo(1, 80);
  EXPECT_TRUE(view.HintWindow()->isVisible());
  view.SetTopIndex(5);
  EXPECT_FALSE(view.HintWindow()->isVisible());
  moveTo(0, 80);  // now row 5: short text
  EXPECT_FALSE(view.HintWindow()->isVisible());
  view.SetTopIndex(0);
  moveTo(1, 80);
  view.Deactivated();
  EXPECT_FALSE(view.HintWindow()->isVisible());
}

}  // namespace
}  // namespace zentrail::test

namespace zentrail::test {
namespace {

class ViewRows : public TViewTest {
 protected:
  // Stores a message at a given time of day, offered to the view.
  int32_t StoreAt(TZTMessageView& view, int32_t type, int32_t msOfDay, int32_t date = ztDateOf2000,
                  const std::string& appName = "demo") {
    TZentrailMessage message;
    message.MsgType = type;
    message.MsgContent = ztmText;
    message.MsgText = "at " + std::to_string(msOfDay);
    message.AppName = appName;
    message.ThreadName = "main";
    message.TimeStamp = {msOfDay, date};
    MessageSet.AppendMessage(message, FNextID++);
    view.AddMessage(false);
    return MessageSet.RecNo;
  }

  static QColor PixelAt(const QImage& image, const TZTMessageView& view, const QPoint& viewportPos) {
    const QPoint p = view.viewport()->mapTo(&view, viewportPos);
    return QColor(image.pixel(p * image.devicePixelRatio()));
  }
};

TEST_F(ViewRows, TimeColumnTextsFollowTheRowAbove) {
  TFakeApplication app;
  app.Columns = ztcoTimeDiff;
  TZTMessageView view(nullptr, &app);
  view.InitView();
  StoreAt(view, ztmInfo, 1000);
  StoreAt(view, ztmInfo, 1250);
  StoreAt(view, ztmInactiveSeparator, 9000);
  StoreAt(view, ztmInfo, 1500);    // measured past the pause marker, against 1250
  StoreAt(view, ztmInfo, 1400);    // older than the row above: a clock change
  StoreAt(view, ztmInfo, 500, ztDateOf2000 + 1);  // next day, 86,399,100 ms later
  auto diff = [&](int32_t row) {
    view.SelectRecord(row);
    return view.GetTimeDifference(row, MessageSet.GetTimeStamp());
  };
  EXPECT_EQ(diff(0), QStringLiteral("0:00:00.000"));
  EXPECT_EQ(diff(1), QStringLiteral("0:00:00.250"));
  EXPECT_EQ(diff(3), QStringLiteral("0:00:00.250"));
  EXPECT_EQ(diff(4), QStringLiteral("xx:xx:xx.xxx"));
  EXPECT_EQ(diff(5), QStringLiteral("23:59:59.100"));
  view.SelectRecord(4);
  EXPECT_EQ(view.GetTimeOffset(MessageSet.GetTimeStamp()), QStringLiteral("0:00:00.400"));
  // The offset leaves the store on the first row.
  EXPECT_EQ(MessageSet.RecNo, view.GetMsgRecNo(0));
  view.SelectRecord(5);
  EXPECT_EQ(view.GetTimeOffset(MessageSet.GetTimeStamp()), QStringLiteral("23:59:59.500"));
}

TEST_F(ViewRows, ColumnsTakeTheirRoomFromTheMessageAndOnlyGrow) {
  TFakeApplication app;
  app.Columns = 0;
  TZTMessageView view(nullptr, &app);
  view.InitView();
  view.resize(900, 300);
  view.show();
  StoreAt(view, ztmInfo, 1000);
  const QRect row = view.ItemRect(0);
  // Without extra columns the message runs to the right edge, 48 pixels in for the two icons.
  QRect message = view.MessageRect(row, 0, ztmInfo);
  EXPECT_EQ(message.right(), row.right());
  EXPECT_EQ(message.left(), row.left() + 48);
  EXPECT_EQ(view.MessageRect(row, 2, ztmEnterMethod).left(), row.left() + 48 + 2 * 24 - 24);

  app.Columns = 511;
  view.InitView();
  view.UpdateColumnWidths();
  int sum = 0;
  for (int i = 0; i < 7; ++i) {
    EXPECT_GT(view.ColumnWidth(i), 0) << i;
    sum += view.ColumnWidth(i);
  }
  message = view.MessageRect(row, 0, ztmInfo);
  EXPECT_EQ(message.right(), row.right() - sum);

  // A longer name widens its column at once; a shorter one later leaves it as it is, and only the
  // full measure narrows it again.
  const int appWidth = view.ColumnWidth(3);
  StoreAt(view, ztmInfo, 1100, ztDateOf2000, "A much longer application name than any before it");
  const int grown = view.ColumnWidth(3);
  EXPECT_GT(grown, appWidth);
  StoreAt(view, ztmInfo, 1200, ztDateOf2000, "x");
  EXPECT_EQ(view.ColumnWidth(3), grown);
  view.ClearView();
  StoreAt(view, ztmInfo, 1300, ztDateOf2000, "x");
  view.UpdateColumnWidths();
  EXPECT_EQ(view.ColumnWidth(3), appWidth);

  // Hiding the extra columns keeps the chosen set for later.
  app.HideExtraColumns = true;
  view.InitView();
  EXPECT_EQ(view.ColumnOptions(), 0);
  app.HideExtraColumns = false;
  view.InitView();
  EXPECT_EQ(view.ColumnOptions(), 511);
}

TEST_F(ViewRows, SeparatorsShadingAndOverflowPaintWhereTheyBelong) {
  TFakeApplication app;
  app.Columns = 0;
  app.RowShading = true;
  TZTMessageView view(nullptr, &app);
  view.InitView();
  view.resize(640, 400);
  view.show();
  StoreAt(view, ztmInfo, 1000);
  StoreAt(view, ztmInfo, 1001);
  StoreAt(view, ztmSeparator, 1002);
  StoreAt(view, ztmResetSeparator, 1003);
  StoreAt(view, ztmInactiveSeparator, 1004);
  StoreAt(view, ztmAppStartSeparator, 1005);
  StoreAt(view, 13, 1006);  // a type without an icon
  view.SetFocusedMsgIndex(-1);
  const QImage image = view.grab().toImage();
  if (const char* dir = std::getenv("ZENTRAIL_GRAB_DIR")) image.save(QString::fromLatin1(dir) + "/separators.png");

  const QColor separator = ColorToQColor(0x00E4AD89), inactive = ColorToQColor(0x00A0CDDE);
  auto rowRect = [&](int32_t row) { return view.ItemRect(row); };
  // Shading: odd rows blend the category colour (white) with the shading colour ($A0A0A0) at 40/255.
  EXPECT_EQ(PixelAt(image, view, QPoint(200, rowRect(0).center().y())), QColor(255, 255, 255));
  EXPECT_EQ(PixelAt(image, view, QPoint(200, rowRect(1).center().y())), QColor(240, 240, 240));

  // A plain separator: a 2-pixel bar through the middle, the row's brush above and below it.
  QRect r = rowRect(2);
  int mid = r.top() + r.height() / 2;
  EXPECT_EQ(PixelAt(image, view, QPoint(300, mid)), separator);
  EXPECT_EQ(PixelAt(image, view, QPoint(300, mid - 1)), separator);
  EXPECT_EQ(PixelAt(image, view, QPoint(300, mid - 3)), QColor(255, 255, 255));
  EXPECT_EQ(PixelAt(image, view, QPoint(r.left() + 2, mid)), QColor(255, 255, 255));  // starts at the icon spot

  // The reset separator: two bars, a gap between them, from 2 pixels in.
  r = rowRect(3);
  mid = r.top() + r.height() / 2;
  EXPECT_EQ(PixelAt(image, view, QPoint(r.left() + 2, mid - 2)), separator);
  EXPECT_EQ(PixelAt(image, view, QPoint(300, mid + 2)), separator);
  EXPECT_EQ(PixelAt(image, view, QPoint(300, mid)), QColor(240, 240, 240));

  // The inactive separator: an outline 2 pixels in, hatched inside, on the window colour.
  r = rowRect(4);
  EXPECT_EQ(PixelAt(image, view, QPoint(300, r.top() + 2)), inactive);
  EXPECT_EQ(PixelAt(image, view, QPoint(300, r.top())), QColor(255, 255, 255));
  int hatch = 0;
  for (int x = 100; x < 140; ++x)
    if (PixelAt(image, view, QPoint(x, r.top() + r.height() / 2)) == inactive) ++hatch;
  EXPECT_GT(hatch, 2);
  EXPECT_LT(hatch, 38);

  // The application start: outlined, filled with a checker of 2-pixel cells.
  r = rowRect(5);
  EXPECT_EQ(PixelAt(image, view, QPoint(300, r.bottom() - 2)), separator);
  int cells = 0;
  for (int x = 100; x < 132; ++x)
    if (PixelAt(image, view, QPoint(x, r.top() + 4)) == separator) ++cells;
  EXPECT_EQ(cells, 16);

  // A type without an icon leaves the icon spot empty; Info has one there.
  auto spotIsEmpty = [&](int32_t row) {
    const QRect spot(rowRect(row).left() + 4, rowRect(row).top() + 1, 16, rowRect(row).height() - 2);
    const QColor ground = PixelAt(image, view, QPoint(spot.left() + 30, spot.top()));
    for (int y = spot.top(); y <= spot.bottom(); ++y)
      for (int x = spot.left(); x <= spot.right(); ++x)
        if (PixelAt(image, view, QPoint(x, y)) != ground) return false;
    return true;
  };
  EXPECT_FALSE(spotIsEmpty(0));
  EXPECT_TRUE(spotIsEmpty(6));
}

TEST_F(ViewRows, ImagesDrawnForTheScreensResolution) {
  // Plain red for 1x and blue for 2x: each device gets the one drawn for it, never a resampled copy.
  TZTImageList list(16, 16);
  QPixmap plain(16, 16), twice(32, 32);
  plain.fill(Qt::red);
  twice.setDevicePixelRatio(2);
  twice.fill(Qt::blue);
  list.SetImage(3, plain, twice);
  list.SetImage(5, plain);
  for (int scale : {1, 2}) {
    QImage target(64 * scale, 16 * scale, QImage::Format_RGB32);
    target.setDevicePixelRatio(scale);
    target.fill(Qt::white);
    {
      QPainter painter(&target);
      EXPECT_TRUE(list.Draw(painter, 0, 0, 3));
      EXPECT_TRUE(list.Draw(painter, 20, 0, 5));
      EXPECT_FALSE(list.Draw(painter, 40, 0, 4));
    }
    EXPECT_EQ(QColor(target.pixel(8 * scale, 8 * scale)), scale == 1 ? QColor(Qt::red) : QColor(Qt::blue));
    EXPECT_EQ(QColor(target.pixel(31 * scale, 15 * scale)), QColor(Qt::red));  // no 2x image: the plain one
    EXPECT_EQ(QColor(target.pixel(50 * scale, 8 * scale)), QColor(Qt::white));
  }
  // The viewer's own icons come in both resolutions.
  std::unique_ptr<TZTImageList> icons(CreateMessageImageList(nullptr));
  EXPECT_TRUE(icons->HasImage(ztmInfo));
  EXPECT_TRUE(icons->HasImage(ztmCollapsedMethod));
  EXPECT_TRUE(icons->HasImage(46));
  EXPECT_TRUE(icons->HasImage(11));
  EXPECT_TRUE(icons->HasImage(12));
  EXPECT_FALSE(icons->HasImage(13));
}

TEST_F(ViewRows, ScreenshotsWithEveryColumnAtTwoFontSizes) {
  // Not a pixel test: the pictures are for a person to judge. It checks only that the larger
  // font gives taller rows and wider columns.
  int32_t rowHeight[2] = {0, 0};
  int32_t appWidth[2] = {0, 0};
  for (int pass = 0; pass < 2; ++pass) {
    MessageSet.Close();
    MessageSet.Open();
    TFakeApplication app;
    app.Columns = 511 & ~(ztcoTimeDiff | ztcoTimeOffset);
    app.RowShading = true;
    app.AutoCollapse = true;
    app.Styles[ztmError] = {false, 0x000000C0, fsBold};
    app.Styles[ztmWarning] = {false, 0x00006090, fsItalic};
    app.Styles[ztmCheckPoint] = {false, 0x00008000, fsUnderline};
    if (pass == 1) app.Font.setPointSize(16);
    TZTMessageView view(nullptr, &app);
    view.InitView();
    view.resize(1200, 700);
    view.show();
    StoreAt(view, ztmAppStartSeparator, 1000);
    StoreAt(view, ztmInfo, 1010);
    StoreAt(view, ztmEnterMethod, 1020);
    StoreAt(view, ztmEnterMethod, 1030);
    StoreAt(view, ztmWarning, 1040);
    StoreAt(view, ztmExitMethod, 1050);
    StoreAt(view, ztmEnterMethod, 1060);
    StoreAt(view, ztmExitMethod, 1070);  // collapsed at once: an empty pair
    StoreAt(view, ztmError, 1080);
    StoreAt(view, ztmExitMethod, 1090);
    StoreAt(view, ztmSeparator, 1100);
    StoreAt(view, ztmCheckPoint, 1110);
    StoreAt(view, ztmInactiveSeparator, 1120);
    const int32_t marked = StoreAt(view, ztmNote, 1130);
    StoreAt(view, ztmResetSeparator, 1140);
    StoreAt(view, 1000, 1150);
    for (int i = 0; i < 6; ++i) StoreAt(view, ztmInfo, 1200 + i * 35);
    view.UpdateColumnWidths();
    // The empty pair took one row away.
    ASSERT_EQ(view.GetCount(), MessageSet.GetRecordCount() - 1);
    view.SetFocusedMsgIndex(12);
    ASSERT_EQ(view.GetMsgRecNo(12), marked);
    view.ToggleBookmark(4);
    view.SetFocusedMsgIndex(view.GetCount() - 1);
    const QImage image = view.grab().toImage();
    ASSERT_FALSE(image.isNull());
    if (const char* dir = std::getenv("ZENTRAIL_GRAB_DIR"))
      image.save(QString::fromLatin1(dir) + (pass == 0 ? "/all-columns.png" : "/all-columns-large.png"));
    rowHeight[pass] = view.ItemRect(0).height();
    appWidth[pass] = view.ColumnWidth(3);
  }
  EXPECT_GT(rowHeight[1], rowHeight[0]);
  EXPECT_GT(appWidth[1], appWidth[0]);
}

}  // namespace
}  // namespace zentrail::test
