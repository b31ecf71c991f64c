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
