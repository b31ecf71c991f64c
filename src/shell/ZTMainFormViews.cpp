// The main window's views: the view classes, the pages of the notebook, the active view and the
// refilling of a view from the store.
#include "ZTMainForm.h"

#include <QGuiApplication>
#include <QProgressBar>
#include <QStackedWidget>
#include <QTabBar>
#include <QVBoxLayout>
#include <QWidget>
#include <algorithm>
#include <stdexcept>

#include "ZTInspectorPane.h"
#include "ZTNavigator.h"
#include "ZTPromptService.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

namespace {

const QString kAllMessages = QStringLiteral("All Messages");

}  // namespace

// A view made by its class's factory, placed on a page of its own in the views notebook.
IZTMessageView* TFrmViewer::CreateViewPage(const TZTViewFactory& factory) {
  IZTMessageView* view = factory ? factory(this) : nullptr;
  if (!view) throw std::runtime_error("Invalid CustomView registered");
  view->GetWidget()->setAccessibleName(QStringLiteral("Message List"));
  auto* page = new QWidget(nbkViews);
  auto* layout = new QVBoxLayout(page);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(view->GetWidget());
  nbkViews->addWidget(page);
  return view;
}

void TFrmViewer::CreateFixedView() {
  SetUpTabStrip();
  // Plug-in inspectors take the content codes they registered for, once the pane exists.
  if (auto* source = dynamic_cast<IZTCustomInspectorSource*>(PlugInManager))
    FInspectorPane->SetCustomInspectorSource(source);
  IZTMessageView* view = CreateViewPage(ViewClasses().Find(QStringLiteral("Default")));
  tabViews->blockSignals(true);
  tabViews->addTab(kAllMessages);
  tabViews->setCurrentIndex(0);
  tabViews->blockSignals(false);
  view->SetName(kAllMessages);
  FViews.push_back(view);
  ActivateView(view);
  BindActiveView();
}

// ---------------------------------------------------------------------------------------------------
// Views

IZTMessageView* TFrmViewer::GetViewIntf(int index) const {
  return index >= 0 && index < ViewCount() ? FViews[static_cast<size_t>(index)] : nullptr;
}

int TFrmViewer::ActiveViewIndex() const { return FViews.empty() ? -1 : tabViews->currentIndex(); }

IZTMessageView* TFrmViewer::ActiveView() const { return GetViewIntf(ActiveViewIndex()); }

void TFrmViewer::SetActiveViewIndex(int index) {
  if (index < 0 || index >= ViewCount()) return;
  if (tabViews->currentIndex() == index) {
    nbkViews->setCurrentIndex(index);
    return;
  }
  tabViews->setCurrentIndex(index);  // tabViewsChange follows
}

void TFrmViewer::UnbindActiveView() {
  FActiveList = nullptr;
  FActiveMethods = nullptr;
  FActiveSearch = nullptr;
  FActivePrint = nullptr;
  FActiveSave = nullptr;
  FActiveExport = nullptr;
}

void TFrmViewer::BindActiveView() {
  UnbindActiveView();
  IZTMessageView* view = ActiveView();
  if (!view) return;
  FActiveList = dynamic_cast<IZTMessageViewList*>(view);
  FActiveSearch = dynamic_cast<IZTMessageViewSearch*>(view);
  FActiveMethods = dynamic_cast<IZTMessageViewMethods*>(view);
  FActivePrint = dynamic_cast<IZTMessageViewPrint*>(view);
  FActiveSave = dynamic_cast<IZTMessageViewSave*>(view);
  FActiveExport = dynamic_cast<IZTMessageViewExport*>(view);
}

void TFrmViewer::ActivateView(IZTMessageView* view) {
  view->InitView();
  HideInspectors();
  ClearCallStack();
  ClearDetails();
  UpdateCommandStates();
}

void TFrmViewer::PopulateView(IZTMessageView* view) {
  // Auto-scroll off and one update bracket while every stored record is offered once; both come
  // back on every way out, and so does the progress bar.
  struct TRestore {
    TFrmViewer& Window;
    IZTMessageView* View;
    bool AutoScroll;
    ~TRestore() {
      Window.FAutoScroll = AutoScroll;
      Window.FPopulating = false;
      View->EndUpdate();
      View->UpdateSettings();
      Window.SetProgress(0);
    }
  };
  view->BeginUpdate();
  TRestore restore{*this, view, FAutoScroll};
  FAutoScroll = false;
  FPopulating = true;
  view->UpdateSettings();
  const int32_t count = MessageSet.GetRecordCount();
  // The bar moves in hundredths, so that a large store costs one repaint per percent and a
  // message costs a counter.
  SetProgressMax(100);
  const int32_t stride = std::max<int32_t>(1, (count + 99) / 100);
  int32_t untilStep = stride;
  for (int32_t rec = 1; rec <= count; ++rec) {
    MessageSet.GotoRec(rec);
    view->AddMessage(false);
    if (--untilStep == 0) {
      untilStep = stride;
      StepProgress();
      pbrComplete->repaint();
    }
  }
}

bool TFrmViewer::ModifyView(IZTMessageView* view, const QString& name, const TZTFilterCriteria& criteria) {
  const auto found = std::find(FViews.begin(), FViews.end(), view);
  if (found == FViews.end()) return false;
  const int index = static_cast<int>(found - FViews.begin());
  TZTFilterCriteria previous;
  view->GetFilterCriteria(previous);
  const QString previousName = view->GetName();
  view->SetName(name);
  tabViews->setTabText(index, name);
  try {
    view->SetFilterCriteria(criteria);
  } catch (const EZTRegExError& e) {
    // The rows still answer to the old filter, so the old filter, name and caption stay with them.
    view->SetName(previousName);
    tabViews->setTabText(index, previousName);
    try {
      view->SetFilterCriteria(previous);
    } catch (const EZTRegExError&) {
    }
    PromptService().ShowMessage(
        nbkViews,
        QStringLiteral("The message text \"%1\" is not a valid regular expression:\n%2")
            .arg(QString::fromStdString(criteria.MessageText), QString::fromUtf8(e.what())),
        TZTPromptKind::Error);
    UpdateCommandStates();
    return false;
  }
  {
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    struct TRestore {
      IZTMessageView* View;
      ~TRestore() {
        View->EndUpdate();
        QGuiApplication::restoreOverrideCursor();
      }
    };
    view->BeginUpdate();
    TRestore restore{view};
    view->ClearView();
    PopulateView(view);
  }
  FViewsModified = true;
  UpdateCommandStates();
  return true;
}

IZTMessageView* TFrmViewer::CreateView(const QString& name, const TZTFilterCriteria& filter, bool modified,
                                       bool activate, const QString& viewClass) {
  TZTViewFactory factory = ViewClasses().Find(viewClass);
  if (!factory) {
    PromptService().ShowMessage(nbkViews,
                                QStringLiteral("Unable to create a view. ViewClass (%1) not found.").arg(viewClass),
                                TZTPromptKind::Error);
    return nullptr;
  }
  // The busy cursor and the frozen screen come back on every way out.
  QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  pnlViews->setUpdatesEnabled(false);
  struct TRestore {
    QWidget* Views;
    ~TRestore() {
      Views->setUpdatesEnabled(true);
      QGuiApplication::restoreOverrideCursor();
    }
  } restore{pnlViews};
  const int previous = ActiveViewIndex();
  IZTMessageView* view = CreateViewPage(factory);
  tabViews->blockSignals(true);
  tabViews->addTab(name);
  tabViews->blockSignals(false);
  nbkViews->setCurrentIndex(previous);
  view->SetName(name);
  if (auto* list = dynamic_cast<IZTMessageViewList*>(view)) {
    try {
      list->SetFilterCriteria(filter);
    } catch (const EZTRegExError& e) {
      // The view still comes, so that a project keeps its views; its text test takes nothing
      // until the user corrects the pattern with Modify View.
      PromptService().ShowMessage(
          nbkViews,
          QStringLiteral("The message text \"%1\" of view \"%2\" is not a valid regular expression:\n%3")
              .arg(QString::fromStdString(filter.MessageText), name, QString::fromUtf8(e.what())),
          TZTPromptKind::Error);
    }
  }
  // A view made while a message is synchronised marks it like the others.
  view->SetSyncMsgRecNo(FNavigator->SyncRecNo());
  FViews.push_back(view);
  // A view made inside a bracket joins it, so that the bracket's end refreshes it too.
  if (FBatchDepth > 0) {
    view->BeginUpdate();
    FBatchViews.push_back(view);
  }
  if (activate) PopulateView(view);
  ActivateView(view);
  if (activate) SetActiveViewIndex(ViewCount() - 1);
  pnlTabSet->show();
  if (modified) {
    FViewsModified = true;
    UpdateCommandStates();
  }
  return view;
}

// Takes one additional view out of the three collections and frees it; the caller rebinds.
void TFrmViewer::RemoveViewAt(int index) {
  IZTMessageView* view = FViews[static_cast<size_t>(index)];
  std::erase(FBatchViews, view);
  FViews.erase(FViews.begin() + index);
  QWidget* page = nbkViews->widget(index);
  nbkViews->removeWidget(page);
  delete page;  // and the view on it
  tabViews->blockSignals(true);
  tabViews->removeTab(index);
  tabViews->blockSignals(false);
}

void TFrmViewer::RemoveView(int index) {
  if (index <= 0 || index >= ViewCount()) return;
  UnbindActiveView();
  RemoveViewAt(index);
  if (ViewCount() == 1) pnlTabSet->hide();
  FViewsModified = true;
  // The tab strip has moved the active tab left where the removed one stood at or below it.
  tabViewsChange(tabViews->currentIndex());
}

void TFrmViewer::RemoveAllViews() {
  UnbindActiveView();
  while (ViewCount() > 1) RemoveViewAt(ViewCount() - 1);
  pnlTabSet->hide();
  FViewsModified = true;
  tabViewsChange(0);
}

void TFrmViewer::RemoveOtherViews(int index) {
  if (index <= 0 || index >= ViewCount()) {
    RemoveAllViews();
    return;
  }
  UnbindActiveView();
  for (int i = ViewCount() - 1; i >= 1; --i)
    if (i != index) RemoveViewAt(i);
  FViewsModified = true;
  tabViews->setCurrentIndex(1);
  tabViewsChange(1);
}

void TFrmViewer::MoveView(int from, int to) {
  const int last = ViewCount() - 1;
  if (from == to || from < 1 || to < 1 || from > last || to > last) return;
  tabViews->blockSignals(true);
  tabViews->moveTab(from, to);
  tabViews->blockSignals(false);
  tabViewsTabOrderChange(from, to);
}

void TFrmViewer::tabViewsTabOrderChange(int from, int to) {
  UnbindActiveView();
  QWidget* page = nbkViews->widget(from);
  nbkViews->removeWidget(page);
  nbkViews->insertWidget(to, page);
  IZTMessageView* view = FViews[static_cast<size_t>(from)];
  FViews.erase(FViews.begin() + from);
  FViews.insert(FViews.begin() + to, view);
  nbkViews->setCurrentIndex(tabViews->currentIndex());
  FViewsModified = true;
  UpdateCommandStates();
  BindActiveView();
}

void TFrmViewer::RenameView(int index, const QString& name) {
  IZTMessageView* view = GetViewIntf(index);
  if (!view || index == 0 || name.isEmpty() || name == view->GetName()) return;
  view->SetName(name);
  tabViews->setTabText(index, name);
  FViewsModified = true;
  UpdateCommandStates();
}

// ---------------------------------------------------------------------------------------------------
// One bracket for a run of messages

void TFrmViewer::BeginMessageBatch() {
  if (FBatchDepth++ > 0) return;
  FBatchViews = FViews;
  for (IZTMessageView* view : FBatchViews) view->BeginUpdate();
}

void TFrmViewer::EndMessageBatch() {
  if (FBatchDepth <= 0 || --FBatchDepth > 0) return;
  std::vector<IZTMessageView*> views;
  views.swap(FBatchViews);
  for (IZTMessageView* view : views) view->EndUpdate();
}

void TFrmViewer::tabViewsChange(int index) {
  if (index < 0 || index >= ViewCount()) return;
  nbkViews->setCurrentIndex(index);
  BindActiveView();
  // The user sees the same moment in each view.
  FNavigator->ActiveViewChanged();
  UpdateMessageDetails();
  UpdateCommandStates();
}

void TFrmViewer::NextView(bool backwards) {
  int n = ViewCount();
  if (n < 2) return;
  int i = ActiveViewIndex();
  SetActiveViewIndex(backwards ? (i + n - 1) % n : (i + 1) % n);
}

}  // namespace zentrail
