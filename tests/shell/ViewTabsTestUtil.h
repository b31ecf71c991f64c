#pragma once
// Helpers of the view tab, project and organizer tests: views made through the filter dialog as a
// user makes them, and the state of the three parallel collections.

#include <QAction>
#include <QStackedWidget>
#include <QStringList>
#include <QTabBar>

#include "ShellFixture.h"
#include "ZTNavigator.h"
#include "ZTViewFilterForm.h"

namespace zentrail::test {

using Texts = std::vector<std::string>;

class ViewTabsFixture : public ShellFixture {
 protected:
  // actViewNew with the dialog filled in as given and OK pressed.
  IZTMessageView* NewViewThroughDialog(const QString& name, const TZTFilterCriteria& criteria) {
    const int before = Viewer->ViewCount();
    Viewer->Navigator().RunDialog = [&](QDialog& dialog) {
      auto* filter = dynamic_cast<TfrmViewFilter*>(&dialog);
      EXPECT_NE(filter, nullptr);
      if (!filter) return int(QDialog::Rejected);
      EXPECT_EQ(filter->windowTitle(), "Create a New View");
      filter->SetCriteria(criteria, name);
      return int(QDialog::Accepted);
    };
    Trigger("actViewNew");
    EXPECT_EQ(Viewer->ViewCount(), before + 1);
    return Viewer->GetViewIntf(Viewer->ViewCount() - 1);
  }

  void Trigger(const char* action) {
    QAction* a = Viewer->Action(QString::fromLatin1(action));
    ASSERT_NE(a, nullptr) << action;
    a->trigger();
  }
  bool Enabled(const char* action) { return Viewer->Action(QString::fromLatin1(action))->isEnabled(); }

  // The names of the views; checks on the way that tabs, pages and views agree.
  std::vector<std::string> Names() {
    std::vector<std::string> names;
    QTabBar* tabs = Viewer->TabBar();
    auto* pages = Viewer->findChild<QStackedWidget*>(QStringLiteral("nbkViews"));
    EXPECT_EQ(tabs->count(), Viewer->ViewCount());
    EXPECT_EQ(pages->count(), Viewer->ViewCount());
    for (int i = 0; i < Viewer->ViewCount(); ++i) {
      IZTMessageView* view = Viewer->GetViewIntf(i);
      EXPECT_EQ(tabs->tabText(i), view->GetName()) << i;
      EXPECT_EQ(view->GetWidget()->parentWidget(), pages->widget(i)) << "view " << i << " sits on its own page";
      names.push_back(view->GetName().toStdString());
    }
    EXPECT_EQ(pages->currentIndex(), tabs->currentIndex());
    return names;
  }

  bool TabStripShown() { return !Viewer->PaneWidget(QStringLiteral("pnlTabSet"))->isHidden(); }

  static TZTFilterCriteria AppFilter(const std::string& app) {
    TZTFilterCriteria c;
    c.CheckAppName = true;
    c.AppName = app;
    return c;
  }

  void Store(const std::string& app, const std::string& text, const std::string& thread = "main", uint32_t pid = 10) {
    TZentrailMessage m = MakeMessage(ztmInfo, text, pid);
    m.AppName = app;
    m.ThreadName = thread;
    Viewer->ProcessMessage(m);
  }
};

}  // namespace zentrail::test


// Readable texts in failure messages.
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }
