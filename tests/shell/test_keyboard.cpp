// The window from the keyboard: shortcuts reach their commands wherever the focus is in the
// window, the menus open by their access keys, every dialog of the window walks its controls with
// Tab, and the list, panes and toolbar buttons carry names for screen readers.
#include <QAbstractSpinBox>
#include <QApplication>
#include <QFormLayout>
#include <QTabBar>
#include <QTabWidget>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QTableWidget>
#include <QTest>
#include <QToolButton>

#include "ShellFixture.h"
#include "ZTColumnsForm.h"
#include "ZTCommandBar.h"
#include "ZTOptionsForm.h"
#include "ZTToolbarsForm.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

class KeyboardTest : public ShellFixture {
 protected:
  void ShowActive() {
    Viewer->show();
    QApplication::setActiveWindow(Viewer.get());
    ASSERT_TRUE(SpinUntil([&] { return Viewer->isActiveWindow(); }, 5000));
  }
  QWidget* List() { return AllMessages().GetWidget(); }
};

// The widgets that Tab visits from the first one, in order, until it comes round.
std::vector<QWidget*> TabChain(QWidget& dialog) {
  std::vector<QWidget*> chain;
  QWidget* w = dialog.nextInFocusChain();
  for (int guard = 0; guard < 500 && w != &dialog; ++guard, w = w->nextInFocusChain())
    if ((w->focusPolicy() & Qt::TabFocus) && w->isVisibleTo(&dialog) && w->isEnabled()) chain.push_back(w);
  return chain;
}

}  // namespace

TEST_F(KeyboardTest, ShortcutsAndAccessKeysReachTheCommands) {
  for (int i = 0; i < 5; ++i) Viewer->ProcessMessage(MakeMessage(ztmInfo, "row " + std::to_string(i)));
  ShowActive();
  List()->setFocus();
  auto* list = dynamic_cast<IZTMessageViewList*>(&AllMessages());
  list->SetFocusedMsgIndex(2);
  Viewer->UpdateMessageDetails();

  QTest::keyClick(List(), Qt::Key_B, Qt::ControlModifier);
  EXPECT_TRUE(Viewer->MessagesBlocked());
  QTest::keyClick(List(), Qt::Key_F11);
  EXPECT_TRUE(Viewer->PaneVisible(TZTPane::Inspector));
  QTest::keyClick(List(), Qt::Key_F12, Qt::ControlModifier);
  EXPECT_TRUE(Viewer->PaneVisible(TZTPane::CallStack));
  // A bookmark by Shift+Ctrl+digit, and back to it by Ctrl+digit, from the call stack.
  QTest::keyClick(List(), Qt::Key_3, Qt::ShiftModifier | Qt::ControlModifier);
  EXPECT_EQ(list->GetBookmark(3), AllMessages().GetMsgRecNo(2));
  list->SetFocusedMsgIndex(4);
  Viewer->CallStackList()->setFocus();
  QTest::keyClick(Viewer->CallStackList(), Qt::Key_3, Qt::ControlModifier);
  EXPECT_EQ(list->GetFocusedMsgIndex(), 2);
  // Del takes rows out only where the rows have the focus.
  Viewer->ScratchPadGrid()->setFocus();
  QTest::keyClick(Viewer->ScratchPadGrid(), Qt::Key_Delete);
  EXPECT_EQ(AllMessages().GetCount(), 5);
  List()->setFocus();
  QTest::keyClick(List(), Qt::Key_Delete);
  EXPECT_EQ(AllMessages().GetCount(), 4);

  // Alt and a menu's letter open it.
  QMenu* tools = Viewer->menuBar()->findChild<QMenu*>(QStringLiteral("mnuTools"));
  ASSERT_NE(tools, nullptr);
  QTest::keyClick(List(), Qt::Key_T, Qt::AltModifier);
  ASSERT_TRUE(SpinUntil([&] { return tools->isVisible(); }, 3000));
  EXPECT_EQ(tools->actions().front()->objectName(), "actOptions");
  tools->close();
}

TEST_F(KeyboardTest, EveryDialogWalksItsControlsWithTabAndEveryControlHasAName) {
  TfrmOptions options(Viewer.get());
  options.SetOptions(Viewer->CurrentOptions());
  TfrmColumns columns(Viewer.get());
  TfrmCustomizeToolbars toolbars({Viewer->findChild<TZTCommandBar*>(QStringLiteral("tbrMain")),
                                  Viewer->findChild<TZTCommandBar*>(QStringLiteral("tbrView"))},
                                 Viewer.get());
  for (QDialog* dialog : {static_cast<QDialog*>(&options), static_cast<QDialog*>(&columns),
                          static_cast<QDialog*>(&toolbars)}) {
    SCOPED_TRACE(dialog->objectName().toStdString());
    dialog->show();
    const std::vector<QWidget*> chain = TabChain(*dialog);
    ASSERT_GE(chain.size(), 3u);
    // OK and Cancel come after the controls, in that order.
    auto okAt = std::find(chain.begin(), chain.end(), dialog->findChild<QWidget*>(QStringLiteral("btnOK")));
    auto cancelAt = std::find(chain.begin(), chain.end(), dialog->findChild<QWidget*>(QStringLiteral("btnCancel")));
    ASSERT_NE(okAt, chain.end());
    ASSERT_NE(cancelAt, chain.end());
    EXPECT_EQ(cancelAt - okAt, 1);
    // Each control is reached by Tab and says what it is: its own text, a label's or a name.
    auto labelled = [dialog](QWidget* w) {
      for (QLabel* label : dialog->findChildren<QLabel*>())
        if (label->buddy() == w) return true;
      for (QWidget* field : {w, w->parentWidget()}) {
        auto* form = field && field->parentWidget() ? qobject_cast<QFormLayout*>(field->parentWidget()->layout()) : nullptr;
        if (form && qobject_cast<QLabel*>(form->labelForField(field))) return true;
      }
      return false;
    };
    for (QWidget* w : chain) {
      // The page control and its tabs carry the pages' captions.
      if (qobject_cast<QTabBar*>(w) || qobject_cast<QTabWidget*>(w) || qobject_cast<QAbstractSpinBox*>(w->parentWidget()))
        continue;
      auto* button = qobject_cast<QAbstractButton*>(w);
      const bool named = !w->accessibleName().isEmpty() || (button && !button->text().isEmpty()) || labelled(w);
      EXPECT_TRUE(named) << w->metaObject()->className() << " " << w->objectName().toStdString();
    }
    dialog->hide();
  }

  // The main window: the list, the panes and every toolbar button.
  EXPECT_FALSE(AllMessages().GetWidget()->accessibleName().isEmpty());
  for (const char* name : {"tabViews", "grdScratchPad", "lstCallStack", "pnlMsgDetails", "stsMsgNum", "stsMsgCount",
                           "stsSelCount", "stsTimeDiff", "stsCategory", "stsTimeStamp"}) {
    QWidget* w = Viewer->findChild<QWidget*>(QString::fromLatin1(name));
    ASSERT_NE(w, nullptr) << name;
    EXPECT_FALSE(w->accessibleName().isEmpty()) << name;
  }
  for (const char* bar : {"tbrMain", "tbrView", "tbrScratchPad"}) {
    QWidget* toolbar = Viewer->findChild<QWidget*>(QString::fromLatin1(bar));
    ASSERT_NE(toolbar, nullptr) << bar;
    for (QToolButton* button : toolbar->findChildren<QToolButton*>()) {
      const QString name = button->accessibleName().isEmpty() ? button->text() : button->accessibleName();
      EXPECT_FALSE(name.isEmpty()) << bar << " " << button->objectName().toStdString();
    }
  }
}
