// Grabs the user guide's pictures from the real main window and its dialogs: the window with its
// panes, each menu opened, each options page, the column, toolbar and view dialogs, and the
// guide's first page in the help window. scripts/grab-help-screenshots runs it offscreen in a
// folder of its own, so that no setting of the user is read or written.
//   zentrail-help-shots OUTPUT-FOLDER HELP-FOLDER
#include <QApplication>
#include <QDir>
#include <QFontDatabase>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QTabWidget>
#include <QTextBrowser>
#include <QTimer>
#include <cstdio>

#include "ZTColumnsForm.h"
#include "ZTColumnsPage.h"
#include "ZTCommandBar.h"
#include "ZTDateTime.h"
#include "ZTHelpBrowser.h"
#include "ZTMainForm.h"
#include "ZTMsgView.h"
#include "ZTOptionsForm.h"
#include "ZTPlugInManager.h"
#include "ZTSettingsStore.h"
#include "ZTToolbarsForm.h"
#include "ZTViewFilterForm.h"
#include "ZentrailMessageSet.h"

using namespace zentrail;

namespace {

QString GOut;
int GFailures = 0;

void Settle(int ms = 150) {
  QEventLoop loop;
  QTimer::singleShot(ms, &loop, &QEventLoop::quit);
  loop.exec();
}

void Save(const QImage& image, const QString& name) {
  const QString path = QDir(GOut).filePath(name);
  if (image.isNull() || !image.save(path)) {
    std::fprintf(stderr, "zentrail-help-shots: could not write %s\n", qPrintable(path));
    ++GFailures;
    return;
  }
  std::printf("%s\n", qPrintable(path));
}

void Shot(QWidget& widget, const QString& name) {
  widget.show();
  Settle();
  Save(widget.grab().toImage(), name);
}

// A run of an order service: nested methods, a collapsed call, warnings, errors, check points,
// a table and an XML document, from two processes.
void FillScene(TFrmViewer& viewer) {
  // A run that starts a moment after the viewer's own separator, which takes the viewer's clock.
  const TZentrailTimeStamp now = NowTimeStamp();
  const int32_t date = now.Date;
  int32_t t = std::min(now.Time + 1000, 86400000 - 60000);
  auto send = [&](int32_t type, const std::string& text, uint32_t pid = 4242, int32_t content = ztmText,
                  const std::string& details = std::string(), const std::string& category = std::string()) {
    TZentrailMessage m;
    m.MsgType = type;
    m.MsgContent = content;
    m.MsgText = text;
    m.Details = details;
    m.ProcessID = pid;
    m.ThreadName = pid == 4242 ? "main" : "report-worker";
    m.AppName = pid == 4242 ? "order-service" : "report-writer";
    m.ComputerName = "build-07";
    m.Category = category;
    m.TypeName = content == ztmCustomTable ? "TOrderTable" : "";
    m.TimeStamp = {t, date};
    t += 3 + static_cast<int32_t>(text.size() % 11);
    viewer.ProcessMessage(m);
  };
  viewer.InsertSeparatorOnAppStart = true;
  send(ztmInfo, "Order service 2.4.1 started, 4 worker threads");
  send(ztmCheckPoint, "Configuration loaded from /etc/orders/service.conf");
  for (int batch = 0; batch < 60; ++batch) {
    const std::string b = std::to_string(batch);
    send(ztmEnterMethod, "TOrderService.ProcessBatch(" + b + ")");
    send(ztmInfo, "Reading " + std::to_string(batch * 13 % 97 + 3) + " order lines");
    send(ztmEnterMethod, "TOrderLine.Validate");
    send(ztmEnterMethod, "TPriceTable.Lookup");
    send(ztmExitMethodCollapse, "TPriceTable.Lookup");
    if (batch % 7 == 3)
      send(ztmWarning, "Price of article " + std::to_string(4000 + batch) + " is older than 30 days", 4242, ztmText, "",
           "Database");
    if (batch % 11 == 5) send(ztmError, "Customer 77" + b + " has no delivery address", 4242, ztmText, "", "Database");
    send(ztmExitMethod, "TOrderLine.Validate");
    send(ztmCheckPoint, "Batch " + b + " committed");
    send(ztmExitMethod, "TOrderService.ProcessBatch(" + b + ")");
  }
  send(ztmInfo, "Report writer says hello", 5151);
  send(ztmEnterMethod, "TReportWriter.Run", 5151);
  send(ztmEnterMethod, "TReportWriter.WriteSummary", 5151);
  send(ztmInfo, "Open orders by customer", 5151, ztmCustomTable,
       "Customer\tOrders\tValue\r\nHoffmann & Partner\t17\t12,480.00\r\nChen Li Trading\t9\t3,915.50\r\n"
       "Eva Novak s.r.o.\t4\t880.20\r\nNordlicht GmbH\t12\t7,302.75\r\nSantos Importadora\t6\t2,140.00\r\n");
  send(ztmInfo, "Summary as XML", 5151, ztmXmlData,
       "<summary date=\"today\">\r\n  <orders open=\"48\" value=\"26718.45\"/>\r\n  <customers>5</customers>\r\n</summary>\r\n");
  viewer.SetScratchPadLine(QStringLiteral("Orders"), QStringLiteral("3,000"));
  viewer.SetScratchPadLine(QStringLiteral("Queue length"), QStringLiteral("17"));
  viewer.SetScratchPadLine(QStringLiteral("Last customer"), QStringLiteral("Hoffmann & Partner"));
  viewer.SetScratchPadLine(QStringLiteral("Memory"), QStringLiteral("212 MB"));
}

// The window with one menu of the menu bar open, the menu drawn where it drops down.
void MenuShot(TFrmViewer& viewer, QMenu* menu, const QString& name) {
  QMenuBar* bar = viewer.menuBar();
  bar->setActiveAction(menu->menuAction());
  Settle(250);
  QImage image = viewer.grab().toImage();
  const QPoint at = viewer.mapFromGlobal(menu->mapToGlobal(QPoint(0, 0)));
  {
    QPainter p(&image);
    p.drawPixmap(at, menu->grab());
  }
  // Only the part of the window that shows the menu.
  const int bottom = std::min(image.height(), at.y() + menu->height() + 24);
  const int right = std::min(image.width(), std::max(at.x() + menu->width() + 160, 520));
  Save(image.copy(0, 0, right, bottom), name);
  menu->close();
  bar->setActiveAction(nullptr);
  Settle(50);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: zentrail-help-shots OUTPUT-FOLDER HELP-FOLDER\n");
    return 2;
  }
  ViewerSettings().Clear();
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Zentrail Live Viewer"));
  GOut = QString::fromLocal8Bit(argv[1]);
  const QString helpFolder = QString::fromLocal8Bit(argv[2]);
  QDir().mkpath(GOut);

  TInternalPlugInManager plugIns;
  plugIns.RegisterCustomView<TZTMessageView>(QString::fromLatin1(TZTMessageView::ViewClassKey));

  TFrmViewer viewer;
  viewer.setGeometry(40, 40, 1280, 800);
  FillScene(viewer);
  TZTFilterCriteria warnings;
  warnings.CheckMsgTypes = true;
  warnings.MsgTypeSet.set(ztmWarning);
  warnings.MsgTypeSet.set(ztmError);
  viewer.CreateView(QStringLiteral("Warnings and Errors"), warnings, false, false, QStringLiteral("Default"));
  TZTFilterCriteria reports;
  reports.CheckProcessID = true;
  reports.ProcessID = 5151;
  viewer.CreateView(QStringLiteral("Report Writer"), reports, false, false, QStringLiteral("Default"));
  viewer.show();
  Settle();

  // First as a new user meets it: no panes.
  Shot(viewer, QStringLiteral("main-window-first-run.png"));

  // Every pane on, a few columns, the focus on the table inside two methods.
  viewer.SetColumnOptions(ztcoAppName | ztcoThreadName | ztcoTimeStamp);
  viewer.SetDetailPanelVisible(true);
  viewer.SetPaneVisible(TZTPane::Inspector, true);
  viewer.SetPaneVisible(TZTPane::CallStack, true);
  viewer.SetPaneVisible(TZTPane::ScratchPad, true);
  IZTMessageView* all = viewer.GetView(0);
  auto* list = dynamic_cast<IZTMessageViewList*>(all);
  list->JumpToItem(all->GetCount() - 2);
  viewer.UpdateMessageDetails();
  Shot(viewer, QStringLiteral("main-window.png"));
  viewer.SetInspectorOnBottom(true);
  list->JumpToItem(all->GetCount() - 1);
  viewer.UpdateMessageDetails();
  Shot(viewer, QStringLiteral("main-window-bottom.png"));
  viewer.SetInspectorOnBottom(false);
  list->SetFocusedMsgIndex(all->GetCount() - 2);
  viewer.UpdateMessageDetails();
  Settle();

  for (QAction* item : viewer.menuBar()->actions()) {
    if (!item->menu()) continue;
    const QString name = item->menu()->objectName().mid(3).toLower();
    MenuShot(viewer, item->menu(), QStringLiteral("menu-%1.png").arg(name));
  }

  {
    TfrmOptions options(&viewer);
    options.SetOptions(viewer.CurrentOptions());
    const char* const pages[] = {"general", "columns", "layout", "separators", "fonts", "styles"};
    for (int i = 0; i < options.pgcOptions->count(); ++i) {
      options.pgcOptions->setCurrentIndex(i);
      Shot(options, QStringLiteral("options-%1.png").arg(QString::fromLatin1(pages[i])));
    }
  }
  {
    TfrmColumns columns(&viewer);
    columns.Page()->SetColumns(viewer.GetColumnOptions());
    Shot(columns, QStringLiteral("columns-dialog.png"));
  }
  {
    TfrmCustomizeToolbars toolbars({viewer.findChild<TZTCommandBar*>(QStringLiteral("tbrMain")),
                                    viewer.findChild<TZTCommandBar*>(QStringLiteral("tbrView"))},
                                   &viewer);
    Shot(toolbars, QStringLiteral("toolbars-dialog.png"));
  }
  {
    TfrmViewFilter filter(&viewer);
    filter.setWindowTitle(QStringLiteral("Create a New View"));
    filter.SetCriteria(warnings, QStringLiteral("Warnings and Errors"));
    Shot(filter, QStringLiteral("view-filter.png"));
  }
  {
    TZTHelpBrowser help;
    help.resize(900, 700);
    help.ShowPage(QUrl::fromLocalFile(QDir(helpFolder).absoluteFilePath(QStringLiteral("viewer.htm"))));
    Shot(help, QStringLiteral("help-first-page.png"));
  }
  viewer.close();
  return GFailures == 0 ? 0 : 1;
}
