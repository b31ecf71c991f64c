// View tabs through the main window: the three collections in step, the active view after each
// change, the commands' enabling, the popup menu, renaming in place, dragging a tab, and the one
// update bracket that a burst of messages gets.
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>

#include "TestEnvironment.h"
#include "ViewTabsTestUtil.h"
#include "ZTMsgView.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

void Key(QWidget* target, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  QKeyEvent press(QEvent::KeyPress, key, modifiers);
  QApplication::sendEvent(target, &press);
}

class ViewTabsTest : public ViewTabsFixture {};

void Press(QTabBar* tabs, QEvent::Type type, const QPoint& pos, Qt::MouseButtons buttons) {
  QMouseEvent event(type, QPointF(pos), tabs->mapToGlobal(QPointF(pos)),
                    type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons, Qt::NoModifier);
  QApplication::sendEvent(tabs, &event);
}

// A left-button drag from the middle of one tab to a point.
void Drag(QTabBar* tabs, int from, const QPoint& to) {
  const QPoint start = tabs->tabRect(from).center();
  Press(tabs, QEvent::MouseButtonPress, start, Qt::LeftButton);
  Press(tabs, QEvent::MouseMove, start + QPoint(QApplication::startDragDistance() + 2, 0), Qt::LeftButton);
  Press(tabs, QEvent::MouseMove, to, Qt::LeftButton);
  Press(tabs, QEvent::MouseButtonRelease, to, Qt::NoButton);
}

}  // namespace

TEST_F(ViewTabsTest, CreateMoveRemoveKeepTabsPagesAndViewsInStep) {
  for (int i = 0; i < 40; ++i) Store(i % 2 ? "Billing" : "Shipping", "line " + std::to_string(i));
  EXPECT_FALSE(TabStripShown());
  EXPECT_FALSE(Enabled("actViewRemove"));
  EXPECT_FALSE(Enabled("actViewRemoveAll"));

  // A new view is filled from the store at once, becomes active, and shows the tab strip.
  IZTMessageView* billing = NewViewThroughDialog("Billing", AppFilter("Billing"));
  EXPECT_EQ(billing->GetCount(), 20);
  EXPECT_EQ(Viewer->ActiveViewIndex(), 1);
  EXPECT_TRUE(TabStripShown());
  EXPECT_TRUE(Viewer->ViewsModified());
  NewViewThroughDialog("Shipping", AppFilter("Shipping"));
  NewViewThroughDialog("Both", TZTFilterCriteria{});
  EXPECT_EQ(Names(), (Texts{"All Messages", "Billing", "Shipping", "Both"}));
  EXPECT_EQ(Viewer->GetViewIntf(3)->GetCount(), 40);

  // Every view takes what arrives, each by its own filter.
  Store("Billing", "late");
  EXPECT_EQ(billing->GetCount(), 21);
  EXPECT_EQ(Viewer->GetViewIntf(2)->GetCount(), 20);
  EXPECT_EQ(AllMessages().GetCount(), 41);

  // Moving: nothing goes into or out of place 0; the moved tab stays active.
  Viewer->SetActiveViewIndex(1);
  EXPECT_FALSE(Enabled("actViewMoveLeft")) << "index 1 can't move left";
  Trigger("actViewMoveLeft");
  EXPECT_EQ(Names()[1], "Billing");
  Trigger("actViewMoveRight");
  EXPECT_EQ(Names(), (Texts{"All Messages", "Shipping", "Billing", "Both"}));
  EXPECT_EQ(Viewer->ActiveView(), billing);
  Viewer->SetActiveViewIndex(3);
  EXPECT_FALSE(Enabled("actViewMoveRight"));
  Viewer->SetActiveViewIndex(0);
  EXPECT_FALSE(Enabled("actViewMoveRight")) << "index 0 never moves";
  Trigger("actViewMoveRight");
  EXPECT_EQ(Names()[0], "All Messages");

  // Removing the active tab in the middle makes the one to its left active, with its interfaces.
  Viewer->SetActiveViewIndex(2);
  Trigger("actViewRemove");
  EXPECT_EQ(Names(), (Texts{"All Messages", "Shipping", "Both"}));
  EXPECT_EQ(Viewer->ActiveViewIndex(), 1);
  EXPECT_EQ(Viewer->ActiveView()->GetName(), "Shipping");
  EXPECT_TRUE(Enabled("actViewModify")) << "the command states follow the new active view";
  // A tab to the right of the active one goes without moving the active view.
  Viewer->RemoveView(2);
  EXPECT_EQ(Viewer->ActiveView()->GetName(), "Shipping");
  // Removing the only additional view hides the tab strip and brings back "All Messages".
  Trigger("actViewRemove");
  EXPECT_EQ(Names(), (Texts{"All Messages"}));
  EXPECT_FALSE(TabStripShown());
  EXPECT_EQ(Viewer->ActiveViewIndex(), 0);
  Trigger("actViewRemove");
  EXPECT_EQ(Viewer->ViewCount(), 1) << "the fixed view is never removed";

  // Remove All asks first; No keeps the views.
  NewViewThroughDialog("A", AppFilter("A"));
  NewViewThroughDialog("B", AppFilter("B"));
  FPrompts->Answers = {false, true};
  Trigger("actViewRemoveAll");
  EXPECT_EQ(Viewer->ViewCount(), 3);
  ASSERT_FALSE(FPrompts->Prompts.empty());
  EXPECT_EQ(FPrompts->Prompts.back().Text, "Remove All Views?");
  EXPECT_EQ(FPrompts->Prompts.back().Caption, "Zentrail Viewer");
  Trigger("actViewRemoveAll");
  EXPECT_EQ(Names(), (Texts{"All Messages"}));
  EXPECT_FALSE(TabStripShown());
}

TEST_F(ViewTabsTest, NewViewProposesTheFocusedMessageAndFallsBackToTheDefaultClass) {
  TZentrailMessage m = MakeMessage(ztmInfo, "order 17 shipped", 777);
  m.AppName = "OrderService";
  m.Category = "Orders";
  m.ThreadName = "worker";
  m.ComputerName = "host-a";
  Viewer->ProcessMessage(m);
  auto* list = dynamic_cast<IZTMessageViewList*>(&AllMessages());
  list->SetFocusedMsgIndex(0);
  Viewer->Navigator().RunDialog = [](QDialog& dialog) {
    auto& filter = dynamic_cast<TfrmViewFilter&>(dialog);
    EXPECT_EQ(filter.AppNameCombo()->currentText(), "OrderService");
    EXPECT_EQ(filter.CategoryCombo()->currentText(), "Orders");
    EXPECT_EQ(filter.ProcessIDCombo()->currentText(), "777");
    EXPECT_EQ(filter.ThreadNameCombo()->currentText(), "worker");
    EXPECT_EQ(filter.ComputerNameCombo()->currentText(), "host-a");
    EXPECT_EQ(filter.MessageTextEdit()->text(), "order 17 shipped");
    EXPECT_EQ(filter.ViewName()->text(), "") << "a new view starts without a name";
    return int(QDialog::Rejected);
  };
  Trigger("actViewNew");
  EXPECT_EQ(Viewer->ViewCount(), 1) << "Cancel makes nothing";
  EXPECT_FALSE(Viewer->ViewsModified());

  // Unknown and empty class names fall back to "Default" without a word.
  const size_t prompts = FPrompts->Prompts.size();
  IZTMessageView* a = Viewer->CreateView("x", {}, false, true, "NoSuchClass");
  IZTMessageView* b = Viewer->CreateView("y", {}, false, false, "");
  ASSERT_TRUE(a && b);
  EXPECT_EQ(a->GetViewClassName(), "Default");
  EXPECT_EQ(b->GetCount(), 0) << "a view made without activation is not filled";
  EXPECT_EQ(Viewer->ActiveView(), a) << "and does not become active";
  EXPECT_EQ(FPrompts->Prompts.size(), prompts);
  EXPECT_FALSE(Viewer->ViewsModified()) << "Modified false leaves the flag alone";

  // With no class at all, one message and no tab; a factory that makes nothing is refused.
  ViewClasses().Clear();
  EXPECT_EQ(Viewer->CreateView("z", {}, true, true, "Gone"), nullptr);
  EXPECT_EQ(FPrompts->Prompts.back().Text, "Unable to create a view. ViewClass (Gone) not found.");
  EXPECT_EQ(Viewer->ViewCount(), 3);
  ViewClasses().Register("Default", [](QWidget*) -> IZTMessageView* { return nullptr; });
  EXPECT_THROW(Viewer->CreateView("z", {}, true, true, ""), std::runtime_error);
  EXPECT_EQ(Viewer->ViewCount(), 3);
  EXPECT_EQ(Viewer->TabBar()->count(), 3);
  EXPECT_EQ(QApplication::overrideCursor(), nullptr) << "the busy cursor goes on failure too";
}

TEST_F(ViewTabsTest, PopupSwitchesRenamesAndClosesOthersAndDragNeverTouchesTabZero) {
  for (const char* name : {"One", "Two", "Three", "Four"}) NewViewThroughDialog(name, AppFilter(name));
  Viewer->resize(900, 500);
  Viewer->show();
  SpinUntil([] { return false; }, 100);  // lets the layout give the tab strip its width
  QTabBar* tabs = Viewer->TabBar();
  ASSERT_GE(tabs->tabRect(0).left(), 0) << "five short tabs fit without scrolling " << tabs->width() << " hint " << tabs->sizeHint().width() << " min " << tabs->minimumSizeHint().width() << " parent " << tabs->parentWidget()->width();

  // The switch submenu is rebuilt each time the popup opens: one item per tab, the active checked.
  QMenu* popup = Viewer->ViewsMenu();
  ASSERT_NE(popup, nullptr);
  Viewer->SetActiveViewIndex(2);
  QMetaObject::invokeMethod(popup, "aboutToShow");
  QMenu* switchTo = popup->findChild<QMenu*>(QStringLiteral("mnuSwitchToView"));
  ASSERT_NE(switchTo, nullptr);
  ASSERT_EQ(switchTo->actions().size(), 5);
  Texts captions;
  for (QAction* a : switchTo->actions()) captions.push_back((a->text() + (a->isChecked() ? "*" : "")).toStdString());
  EXPECT_EQ(captions, (Texts{"All Messages", "One", "Two*", "Three", "Four"}));
  switchTo->actions()[4]->trigger();
  EXPECT_EQ(Viewer->ActiveViewIndex(), 4);

  // Renaming edits the name where the tab stands; Escape drops the edit, Enter keeps it.
  Trigger("actViewRename");
  auto* editor = tabs->findChild<QLineEdit*>(QStringLiteral("edtRenameView"));
  ASSERT_NE(editor, nullptr);
  EXPECT_EQ(editor->text(), "Four");
  editor->setText("Dropped");
  Key(editor, Qt::Key_Escape);
  EXPECT_EQ(Names()[4], "Four");
  QApplication::processEvents();
  Trigger("actViewRename");
  editor = nullptr;
  for (QLineEdit* e : tabs->findChildren<QLineEdit*>(QStringLiteral("edtRenameView")))
    if (!e->property("done").toBool()) editor = e;
  ASSERT_NE(editor, nullptr);
  editor->setText("Renamed");
  Key(editor, Qt::Key_Return);
  EXPECT_EQ(Names()[4], "Renamed");

  // Dragging: tab 0 can't be dragged, nothing is dropped on it, any other place takes the tab.
  Drag(tabs, 0, tabs->tabRect(3).center());
  EXPECT_EQ(Names()[0], "All Messages");
  Drag(tabs, 3, tabs->tabRect(0).center());
  EXPECT_EQ(Names(), (Texts{"All Messages", "One", "Two", "Three", "Renamed"}));
  Viewer->SetActiveViewIndex(3);
  Drag(tabs, 3, tabs->tabRect(1).center());
  EXPECT_EQ(Names(), (Texts{"All Messages", "Three", "One", "Two", "Renamed"}));
  EXPECT_EQ(Viewer->ActiveView()->GetName(), "Three") << "the dragged tab stays the active one";
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);

  // The close button stands on the active tab only, never on "All Messages".
  EXPECT_EQ(tabs->tabButton(0, QTabBar::RightSide), nullptr);
  ASSERT_NE(tabs->tabButton(1, QTabBar::RightSide), nullptr);
  EXPECT_FALSE(tabs->tabButton(1, QTabBar::RightSide)->isHidden());
  EXPECT_TRUE(tabs->tabButton(2, QTabBar::RightSide)->isHidden());
  emit tabs->tabCloseRequested(2);
  EXPECT_EQ(Viewer->ViewCount(), 5) << "only the active tab closes by its button";
  emit tabs->tabCloseRequested(1);
  EXPECT_EQ(Names(), (Texts{"All Messages", "One", "Two", "Renamed"}));

  // Close Others keeps the fixed view and the active one.
  Viewer->SetActiveViewIndex(2);
  Trigger("actViewRemoveOthers");
  EXPECT_EQ(Names(), (Texts{"All Messages", "Two"}));
  EXPECT_EQ(Viewer->ActiveView()->GetName(), "Two");

}

TEST_F(ViewTabsTest, ABurstOfFramesReachesEveryViewInsideOneBracket) {
  NewViewThroughDialog("demo", AppFilter("demo"));
  NewViewThroughDialog("other", AppFilter("other"));
  auto* demo = dynamic_cast<TZTMessageView*>(Viewer->GetViewIntf(1));
  auto* other = dynamic_cast<TZTMessageView*>(Viewer->GetViewIntf(2));
  ASSERT_TRUE(demo && other);

  // Frames of one wake-up: the first goes alone, the rest inside a bracket that the loop closes.
  Viewer->WMCopyData(ztPacketTag, Packet(MakeMessage(ztmInfo, "first")));
  EXPECT_FALSE(Viewer->InMessageBatch());
  Viewer->WMCopyData(ztPacketTag, Packet(MakeMessage(ztmInfo, "second")));
  EXPECT_TRUE(Viewer->InMessageBatch());
  EXPECT_TRUE(demo->Updating());
  EXPECT_TRUE(other->Updating()) << "views that take nothing are in the bracket too";
  // A view that the burst brings joins it.
  IZTMessageView* late = Viewer->CreateView("late", AppFilter("demo"), false, false, "");
  EXPECT_TRUE(dynamic_cast<TZTMessageView*>(late)->Updating());
  Viewer->WMCopyData(ztPacketTag, Packet(MakeMessage(ztmInfo, "third")));
  EXPECT_EQ(demo->GetCount(), 3);
  EXPECT_EQ(late->GetCount(), 1);
  SpinUntil([&] { return !Viewer->InMessageBatch(); }, 2000);
  EXPECT_FALSE(Viewer->InMessageBatch());
  EXPECT_FALSE(demo->Updating());
  EXPECT_FALSE(dynamic_cast<TZTMessageView*>(late)->Updating());

  // A log reader's bracket nests with it; removing a view inside it leaves the others balanced.
  Viewer->BeginMessageBatch();
  Viewer->BeginMessageBatch();
  Viewer->RemoveView(3);
  Viewer->EndMessageBatch();
  EXPECT_TRUE(demo->Updating());
  Viewer->EndMessageBatch();
  EXPECT_FALSE(demo->Updating());
  EXPECT_FALSE(other->Updating());
}

TEST_F(ViewTabsTest, ScreenshotOfSixTabsAndTheirPopup) {
  int32_t t = 36000000;
  const char* apps[] = {"OrderService", "Billing", "Shipping"};
  for (int i = 0; i < 600; ++i) {
    TZentrailMessage m = MakeMessage(i % 17 == 3 ? ztmWarning : i % 29 == 5 ? ztmError : ztmInfo,
                                     "Processed order line " + std::to_string(i * 37) + " of batch " + std::to_string(i / 10),
                                     4000 + i % 3, t += 11);
    m.AppName = apps[i % 3];
    m.ThreadName = i % 2 ? "worker-1" : "worker-2";
    Viewer->ProcessMessage(m);
  }
  TZTFilterCriteria problems;
  problems.CheckMsgTypes = true;
  problems.MsgTypeSet.set(ztmWarning);
  problems.MsgTypeSet.set(ztmError);
  TZTFilterCriteria worker;
  worker.CheckThreadName = true;
  worker.ThreadName = "worker-1";
  NewViewThroughDialog("OrderService", AppFilter("OrderService"));
  NewViewThroughDialog("Billing", AppFilter("Billing"));
  NewViewThroughDialog("Shipping", AppFilter("Shipping"));
  NewViewThroughDialog("Warnings and Errors", problems);
  NewViewThroughDialog("Thread worker-1", worker);
  ASSERT_EQ(Viewer->ViewCount(), 6);
  Viewer->SetActiveViewIndex(4);
  Viewer->resize(1100, 640);
  Viewer->show();
  SpinUntil([] { return false; }, 200);
  QTabBar* tabs = Viewer->TabBar();
  for (int i = 0; i < tabs->count(); ++i)
    EXPECT_GE(tabs->tabRect(i).left(), 0) << "six tabs fit side by side in a normal window";
  EXPECT_LE(tabs->tabRect(5).right(), tabs->width());

  const QByteArray dir = qgetenv("ZENTRAIL_SCREENSHOT_DIR");
  const QString out = dir.isEmpty() ? QString::fromStdString(MakeTempDir("shots").string()) : QString::fromUtf8(dir);
  EXPECT_TRUE(Viewer->grab().save(QDir(out).filePath("view-tabs.png")));

  // The popup over the active tab, with its switch submenu open.
  QMenu* popup = Viewer->ViewsMenu();
  popup->popup(tabs->mapToGlobal(tabs->tabRect(4).center()));
  SpinUntil([] { return false; }, 100);
  QMenu* switchTo = popup->findChild<QMenu*>(QStringLiteral("mnuSwitchToView"));
  EXPECT_EQ(switchTo->actions().size(), 6);
  EXPECT_TRUE(popup->grab().save(QDir(out).filePath("view-tabs-popup.png")));
  switchTo->popup(popup->mapToGlobal(QPoint(popup->width(), 0)));
  SpinUntil([] { return false; }, 100);
  EXPECT_TRUE(switchTo->grab().save(QDir(out).filePath("view-tabs-switch.png")));
  switchTo->close();
  popup->close();
}
