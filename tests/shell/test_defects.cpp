// What a new user meets first, through the real main window: the panes follow the focused message
// wherever it stands in a call, the counts and the scroll range catch up with a burst on their own,
// the selection count follows the keys, the focused row stays in view, and every dialog answers
// Enter and Esc.
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QMouseEvent>
#include <QPrinter>
#include <QScrollBar>
#include <QSpinBox>
#include <QTimer>
#include <QToolButton>

#include "ShellFixture.h"
#include "ZTDetailPanel.h"
#include "ZTInspectorIntf.h"
#include "ZTInspectorPane.h"
#include "ZTMsgViewForms.h"
#include "ZTNavForms.h"
#include "ZTNavigator.h"
#include "ZTViewFilterForm.h"

// Readable failures: gtest finds this for QString by argument lookup.
inline void PrintTo(const QString& text, std::ostream* os) { *os << '"' << text.toStdString() << '"'; }

using namespace zentrail;
using namespace zentrail::test;

namespace {

// Answers the print question without a dialog and remembers the title it was offered.
class TTitleRecorder : public IZTInspectorPrompts {
 public:
  void ShowMessage(QWidget*, const QString&, const QString&) override {}
  bool ChoosePrinter(QWidget*, const QString&, QString& title, QPrinter&) override {
    Offered.push_back(title);
    return false;
  }
  QStringList Offered;
};

class TTitleRecorderGuard {
 public:
  explicit TTitleRecorderGuard(TTitleRecorder& recorder) { SetInspectorPrompts(&recorder); }
  ~TTitleRecorderGuard() { SetInspectorPrompts(nullptr); }
};

// Lets queued work (the view's details notice, deferred refreshes) run without any input.
void Pump() {
  for (int i = 0; i < 3; ++i) QCoreApplication::processEvents();
}

void Key(QWidget* target, int key, Qt::KeyboardModifiers mods = Qt::NoModifier) {
  QKeyEvent press(QEvent::KeyPress, key, mods);
  QApplication::sendEvent(target, &press);
  QKeyEvent release(QEvent::KeyRelease, key, mods);
  QApplication::sendEvent(target, &release);
}

void Click(TZTMessageView& view, int32_t row, Qt::KeyboardModifiers mods = Qt::NoModifier) {
  const QPoint at = view.ItemRect(row).center() + QPoint(view.HorzPosition() * TZTCustomVirtualListBox::ztHorzScrollStep, 0);
  QMouseEvent press(QEvent::MouseButtonPress, at, view.viewport()->mapToGlobal(at), Qt::LeftButton, Qt::LeftButton,
                    mods);
  QApplication::sendEvent(view.viewport(), &press);
  QMouseEvent release(QEvent::MouseButtonRelease, at, view.viewport()->mapToGlobal(at), Qt::LeftButton,
                      Qt::NoButton, mods);
  QApplication::sendEvent(view.viewport(), &release);
}

QString Count(qint64 n) { return QLocale(QLocale::English).toString(n); }

void SaveShot(QWidget& window, const char* name) {
  const QByteArray dir = qgetenv("ZENTRAIL_SCREENSHOT_DIR");
  if (!dir.isEmpty()) window.grab().save(QDir(QString::fromUtf8(dir)).filePath(QString::fromLatin1(name)));
}

}  // namespace

class DefectTest : public ShellFixture {
 protected:
  TZTMessageView& View() { return *dynamic_cast<TZTMessageView*>(Viewer->GetViewIntf(0)->GetWidget()); }
  void ShowWindow() {
    Viewer->resize(1100, 720);
    Viewer->show();
    Pump();
  }
  // The row whose focus the status bar shows, once the view's notice has run.
  bool Settled(int32_t row) {
    return SpinUntil([&] {
      return View().ItemIndex() == row &&
             Viewer->StatusText("stsMsgNum") == QStringLiteral("#") + Count(View().GetMsgRecNo(row));
    }, 5000);
  }
  QString DetailField(TZTDetailPanel::Field field) {
    auto* panel = Viewer->findChild<TZTDetailPanel*>();
    return panel ? panel->FieldText(field) : QString();
  }
};

TEST_F(DefectTest, InspectorDetailsAndPrintTitleFollowTheFocusedMessageInsideMethods) {
  struct Sent {
    int32_t Type;
    int32_t Content;
    std::string Text;
    std::string Details;
    std::string Category;
  };
  const std::vector<Sent> sent = {
      {ztmEnterMethod, ztmText, "OrderBook::Load", "", "Books"},
      {ztmInfo, ztmText, "read 1,284 orders in 12 ms", "", "Reading"},
      {ztmWarning, ztmText, "3 orders without customer", "", "Checks"},
      {ztmCheckPoint, ztmText, "orders loaded", "", "Marks"},
      {ztmInfo, ztmCustomText, "order dump", "A-1\tChen Li\r\n\r\nA-2\tEva Novak", "Dump"},
      {ztmEnterMethod, ztmText, "OrderBook::Index", "", "Books"},
      {ztmError, ztmText, "duplicate key A-2", "", "Index"},
      {ztmExitMethod, ztmText, "OrderBook::Index", "", "Books"},
      {ztmExitMethod, ztmText, "OrderBook::Load", "", "Books"},
      {ztmInfo, ztmText, "done", "", "Top"},
  };
  int32_t time = 36000000;
  for (const Sent& s : sent) {
    TZentrailMessage m = MakeMessage(s.Type, s.Text, 4242, time += 5);
    m.MsgContent = s.Content;
    m.Details = s.Details;
    m.Category = s.Category;
    Viewer->ProcessMessage(m);
  }
  ShowWindow();
  Viewer->SetPaneVisible(TZTPane::Inspector, true);
  Viewer->SetPaneVisible(TZTPane::CallStack, true);
  Viewer->SetDetailPanelVisible(true);
  TZTInspectorPane* pane = Viewer->InspectorPane();
  ASSERT_NE(pane, nullptr);
  ASSERT_EQ(View().GetCount(), static_cast<int32_t>(sent.size()));
  TTitleRecorder titles;
  TTitleRecorderGuard guard(titles);

  Click(View(), 0);
  ASSERT_TRUE(Settled(0));
  // Down through the method, as a user does: each message shows itself in every pane.
  for (int32_t row = 1; row < static_cast<int32_t>(sent.size()); ++row) {
    Key(View().viewport(), Qt::Key_Down);
    ASSERT_TRUE(Settled(row)) << row;
    const Sent& s = sent[static_cast<size_t>(row)];
    const QString text = QString::fromStdString(s.Text);
    if (s.Content == ztmCustomText) {
      EXPECT_EQ(pane->CurrentPanel(), TZTInspectorPane::pnText) << row;
      EXPECT_EQ(pane->TextInspector()->Text().toStdString(), s.Details)
          << "the details of row " << row;
    } else {
      EXPECT_EQ(pane->CurrentPanel(), TZTInspectorPane::pnString) << row;
      EXPECT_EQ(pane->StringInspector()->Text().toStdString(), s.Text) << "row " << row;
    }
    EXPECT_EQ(DetailField(TZTDetailPanel::Category), QString::fromStdString(s.Category)) << row;
    EXPECT_EQ(Viewer->Navigator().NavigatorMsgType(), s.Type) << row;
    // The printed title names the message that the pane shows.
    Viewer->Action("actPrintInspectorContents")->trigger();
    ASSERT_FALSE(titles.Offered.isEmpty()) << row;
    EXPECT_EQ(titles.Offered.back(), text + " (Details)") << row;
    if (row == 6) {
      QListWidget* stack = Viewer->CallStackList();
      ASSERT_EQ(stack->count(), 2);
      EXPECT_EQ(stack->item(0)->text(), "OrderBook::Index");
      EXPECT_EQ(stack->item(1)->text(), "OrderBook::Load");
    }
    if (row == 4) SaveShot(*Viewer, "defects-nested-details.png");
  }
  // The store's cursor left anywhere changes nothing for the next refresh.
  MessageSet.GotoRec(1);
  Viewer->UpdateMessageDetails();
  EXPECT_EQ(pane->StringInspector()->Text(), "done");
  EXPECT_EQ(DetailField(TZTDetailPanel::Category), "Top");
}

TEST_F(DefectTest, CountsAndScrollRangeCatchUpAfterABurstWithoutInput) {
  ShowWindow();
  TZTMessageView& view = View();
  std::string path = Listen();
  auto burst = [&](int count, const std::string& prefix) {
    TChannelClient client(path);
    EXPECT_TRUE(client.Connected());
    std::vector<TChannelClient::Frame> frames;
    for (int i = 0; i < count; ++i) {
      // A nested trace, so that rows arrive at several levels and collapse on the way.
      const int32_t type = i % 6 == 0 ? ztmEnterMethod : i % 6 == 5 ? ztmExitMethod : ztmInfo;
      frames.push_back({ztPacketTag, Packet(MakeMessage(type, prefix + std::to_string(i)))});
    }
    client.Send(frames);
    EXPECT_TRUE(SpinUntil([&] { return client.Done(); }, 60000));
    client.Join();
  };
  auto settled = [&](int32_t rows, int32_t stored) {
    const QString want = Count(rows) + " out of " + Count(stored) + " Messages";
    QScrollBar* bar = view.verticalScrollBar();
    return SpinUntil([&] {
      return Viewer->StatusText("stsMsgCount") == want && bar->maximum() == rows - view.VisibleRows() &&
             bar->value() == view.TopIndex();
    }, 5000);
  };

  burst(10, "first ");
  Click(view, 2);
  ASSERT_TRUE(Settled(2));
  ASSERT_EQ(Viewer->StatusText("stsMsgCount"), "10 out of 10 Messages");
  Viewer->SetPaneVisible(TZTPane::CallStack, true);

  burst(2016, "burst ");
  const int32_t stored = MessageSet.GetRecordCount();
  ASSERT_EQ(stored, 2026);
  ASSERT_GT(view.GetCount(), 1000);
  EXPECT_TRUE(settled(view.GetCount(), stored))
      << Viewer->StatusText("stsMsgCount").toStdString() << ", scroll range " << view.verticalScrollBar()->maximum()
      << " for " << view.GetCount() << " rows, " << view.VisibleRows() << " in view";
  // Auto-scroll keeps the newest row in view.
  EXPECT_EQ(view.TopIndex(), view.GetCount() - view.VisibleRows());
  SaveShot(*Viewer, "defects-after-burst.png");

  burst(516, "more ");
  EXPECT_TRUE(settled(view.GetCount(), 2542)) << Viewer->StatusText("stsMsgCount").toStdString();

  Viewer->ConfirmOnClear = false;
  Viewer->ConfirmAndClear(true);
  EXPECT_EQ(Viewer->StatusText("stsMsgCount"), "0 out of 0 Messages");
  EXPECT_FALSE(Viewer->Action("actClear")->isEnabled());
  burst(117, "after clear ");
  EXPECT_TRUE(settled(view.GetCount(), 117)) << Viewer->StatusText("stsMsgCount").toStdString();
  // The commands that need rows come on with the first rows, also without input.
  EXPECT_TRUE(Viewer->Action("actClear")->isEnabled());
}

TEST_F(DefectTest, SelectionCountAndTimeFollowTheKeysAndTheFocusStaysInView) {
  // Two clocks: rows 0 to 39 from one machine, rows 40 on from one whose clock is three hours behind.
  for (int i = 0; i < 80; ++i) {
    const int32_t time = i < 40 ? 36000000 + i * 1000 : 25200000 + i * 1000;
    TZentrailMessage m = MakeMessage(ztmInfo, "row " + std::to_string(i), 4242, time);
    m.ComputerName = i < 40 ? "east" : "west";
    Viewer->ProcessMessage(m);
  }
  ShowWindow();
  TZTMessageView& view = View();
  view.SetTopIndex(0);
  view.setFocus();

  // A range across the two clocks runs backwards in time.
  Click(view, 3);
  ASSERT_TRUE(Settled(3));
  EXPECT_EQ(Viewer->StatusText("stsTimeDiff"), "0:00:03.000");
  Click(view, 41, Qt::ShiftModifier);
  ASSERT_TRUE(Settled(41));
  EXPECT_EQ(Viewer->StatusText("stsSelCount"), "39 Selected");
  EXPECT_EQ(Viewer->StatusText("stsTimeDiff"), "xx:xx:xx.xxx");

  // Ctrl+Home moves the focus alone, and the focused row counts as selected.
  Key(view.viewport(), Qt::Key_Home, Qt::ControlModifier);
  ASSERT_TRUE(Settled(0));
  EXPECT_EQ(Viewer->StatusText("stsSelCount"), "40 Selected");
  // Home on the focused row leaves it the only selection, and the status says so.
  Key(view.viewport(), Qt::Key_Home);
  Pump();
  int highlighted = 0;
  for (int32_t row = 0; row < view.GetCount(); ++row) highlighted += view.GetSelected(row) ? 1 : 0;
  EXPECT_EQ(highlighted, 1);
  EXPECT_TRUE(view.GetSelected(0));
  EXPECT_TRUE(SpinUntil([&] { return Viewer->StatusText("stsSelCount") == "1 Selected"; }, 2000))
      << Viewer->StatusText("stsSelCount").toStdString();
  EXPECT_EQ(Viewer->StatusText("stsTimeDiff").toStdString(), "0:00:00.000");

  // The focus on the last row in view stays in view when the detail panel takes room below it.
  const int32_t bottom = view.TopIndex() + view.VisibleRows() - 1;
  Click(view, bottom);
  ASSERT_TRUE(Settled(bottom));
  const int32_t rowsBefore = view.VisibleRows();
  Viewer->SetDetailPanelVisible(true);
  ASSERT_TRUE(SpinUntil([&] { return view.VisibleRows() < rowsBefore; }, 2000));
  EXPECT_GE(bottom, view.TopIndex());
  EXPECT_LT(bottom, view.TopIndex() + view.VisibleRows()) << "the focused row went out of view";
  EXPECT_EQ(view.verticalScrollBar()->value(), view.TopIndex());
  SaveShot(*Viewer, "defects-detail-panel.png");
}

TEST_F(DefectTest, EveryDialogTakesEnterAsOkAndEscAsCancel) {
  for (int i = 0; i < 30; ++i) Viewer->ProcessMessage(MakeMessage(ztmInfo, "m" + std::to_string(i)));
  ShowWindow();
  // Each dialog shown as the user gets it, its first field focused, then one key.
  auto answer = [](QDialog& dialog, QWidget* field, int key) {
    dialog.setResult(-1);
    dialog.show();
    dialog.activateWindow();
    field->setFocus();
    Pump();
    Key(field, key);
    Pump();
    const int result = dialog.isVisible() ? -1 : dialog.result();
    dialog.hide();
    return result;
  };
  auto check = [&](const char* name, QDialog& dialog, QWidget* field) {
    EXPECT_EQ(answer(dialog, field, Qt::Key_Return), QDialog::Accepted) << name << ": Enter";
    EXPECT_EQ(answer(dialog, field, Qt::Key_Enter), QDialog::Accepted) << name << ": keypad Enter";
    EXPECT_EQ(answer(dialog, field, Qt::Key_Escape), QDialog::Rejected) << name << ": Esc";
  };

  TfrmJumpToMsg jump(Viewer.get());
  jump.JumpTo()->setCurrentText("12");
  check("Jump to message", jump, jump.JumpTo()->lineEdit());
  EXPECT_EQ(FPrompts->Beeps, 0) << "Enter confirms, it is not a wrong key";

  TfrmFind find(Viewer.get());
  find.FindText()->setCurrentText("m1");
  check("Find", find, find.FindText()->lineEdit());

  TfrmViewFilter filter(Viewer.get());
  filter.ViewName()->setText("Errors");
  check("View Filter", filter, filter.ViewName());

  TfrmSelectNavMsg navigation(Viewer.get());
  check("Select Navigation Message", navigation, static_cast<QWidget*>(navigation.TypeButton(ztmWarning)));

  TfrmTimeDiffNav threshold(Viewer.get());
  check("Time Difference", threshold, static_cast<QWidget*>(threshold.findChild<QSpinBox*>("spnThreshold")));

  // The print question of the inspectors, as the pane asks it.
  // A dialog that ignores the key is closed the other way, so the answer shows it.
  auto printQuestion = [&](int key) {
    QTimer::singleShot(0, Viewer.get(), [key] {
      QWidget* open = QApplication::activeModalWidget();
      ASSERT_NE(open, nullptr);
      QWidget* title = open->findChild<QLineEdit*>();
      ASSERT_NE(title, nullptr);
      title->setFocus();
      Key(title, key);
      if (open->isVisible())
        static_cast<QDialog*>(open)->done(key == Qt::Key_Escape ? QDialog::Accepted : QDialog::Rejected);
    });
    QString title = "Orders (Details)";
    QPrinter printer;
    return InspectorPrompts().ChoosePrinter(Viewer.get(), "Print Inspector Contents", title, printer);
  };
  EXPECT_TRUE(printQuestion(Qt::Key_Return)) << "Print Inspector Contents: Enter";
  EXPECT_FALSE(printQuestion(Qt::Key_Escape)) << "Print Inspector Contents: Esc";

  // Through the command, as Ctrl+J runs it: Enter jumps.
  Click(View(), 2);
  ASSERT_TRUE(Settled(2));
  ASSERT_TRUE(Viewer->Action("actJumpToMsg")->isEnabled());
  QTimer::singleShot(0, Viewer.get(), [&] {
    auto* open = qobject_cast<TfrmJumpToMsg*>(QApplication::activeModalWidget());
    ASSERT_NE(open, nullptr);
    open->JumpTo()->setCurrentText("21");
    open->JumpTo()->lineEdit()->setFocus();
    Key(open->JumpTo()->lineEdit(), Qt::Key_Return);
    // A dialog that ignored Enter must not hang the test.
    if (open->isVisible()) open->reject();
  });
  Viewer->Action("actJumpToMsg")->trigger();
  EXPECT_EQ(View().ItemIndex(), 20);
}
