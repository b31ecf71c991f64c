// What views and the organizer keep per sender of the store must follow every change that makes it
// wrong: a new filter, a store emptied and its senders numbered anew, a view that goes away, column
// widths that start again.
#include <gtest/gtest.h>

#include <memory>

#include "ViewTestSupport.h"
#include "ZTOrganizer.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

int32_t StoreFrom(const std::string& app, const std::string& thread, const std::string& text, int32_t id) {
  TZentrailMessage m;
  m.MsgText = text;
  m.AppName = app;
  m.ThreadName = thread;
  m.ComputerName = "box";
  m.ProcessID = 7;
  MessageSet.AppendMessage(m, id);
  return MessageSet.RecNo;
}

}  // namespace

class SenderCacheTest : public TViewTest {};

TEST_F(SenderCacheTest, TheStoreNumbersSendersAndKeepsOneCopyOfEachText) {
  StoreFrom("Billing", "main", "a", 0);
  const uint32_t first = MessageSet.GetIdentity();
  const char* app = MessageSet.GetAppName().data();
  StoreFrom("Billing", "worker", "b", 1);
  const uint32_t second = MessageSet.GetIdentity();
  EXPECT_NE(first, second);
  EXPECT_EQ(MessageSet.GetAppName().data(), app) << "two senders of one application share its name";
  StoreFrom("Billing", "main", "c", 2);
  EXPECT_EQ(MessageSet.GetIdentity(), first);
  EXPECT_EQ(MessageSet.IdentityCount(), 2u);

  const uint64_t generation = MessageSet.Generation();
  MessageSet.Close();
  MessageSet.Open();
  EXPECT_NE(MessageSet.Generation(), generation);
  EXPECT_EQ(MessageSet.IdentityCount(), 0u);
  MessageSet.Last();
  EXPECT_EQ(MessageSet.GetIdentity(), UINT32_MAX) << "no record, no sender";
  StoreFrom("Shipping", "main", "d", 0);
  EXPECT_EQ(MessageSet.GetIdentity(), 0u) << "numbering starts again";
}

TEST_F(SenderCacheTest, AViewsVerdictOnASenderFollowsItsFilterAndTheStore) {
  TFakeApplication app;
  TZTMessageView view(nullptr, &app);
  TZTFilterCriteria billing;
  billing.CheckAppName = true;
  billing.AppName = "billing";  // the comparison ignores case
  view.SetFilterCriteria(billing);
  auto offer = [&](const std::string& sender, const std::string& text) {
    StoreFrom(sender, "main", text, FNextID++);
    view.AddMessage(false);
  };
  offer("Billing", "1");
  offer("Shipping", "2");
  offer("Billing", "3");
  offer("Shipping", "4");
  EXPECT_EQ(RowTexts(view), (std::vector<std::string>{"1", "3"}));

  // A new filter judges every sender again, also those it has seen.
  TZTFilterCriteria shipping = billing;
  shipping.AppName = "Shipping";
  view.SetFilterCriteria(shipping);
  offer("Shipping", "5");
  offer("Billing", "6");
  EXPECT_EQ(RowTexts(view), (std::vector<std::string>{"1", "3", "5"}));

  // Emptied, the store numbers its senders anew: Shipping is number 0 now, the number under which
  // the view had refused Billing; verdicts from the old store must not carry over.
  MessageSet.Close();
  MessageSet.Open();
  view.ClearView();
  offer("Shipping", "7");
  offer("Billing", "8");
  EXPECT_EQ(RowTexts(view), (std::vector<std::string>{"7"}));
}

TEST_F(SenderCacheTest, ColumnsGrowForSendersSeenBeforeAfterTheirWidthsStartAgain) {
  TFakeApplication app;
  TZTMessageView view(nullptr, &app);
  const std::string wide(40, 'W');
  StoreFrom(wide, "main", "1", FNextID++);
  view.AddMessage(false);
  const int32_t widened = view.ColumnWidth(3);
  StoreFrom("a", "main", "2", FNextID++);
  view.AddMessage(false);
  EXPECT_EQ(view.ColumnWidth(3), widened);

  // The widths start again from the rows there are; a sender measured before is measured anew
  // when its next message comes, and the column grows again for it.
  view.ClearView();
  const int32_t narrow = view.ColumnWidth(3);
  EXPECT_LT(narrow, widened);
  StoreFrom(wide, "main", "3", FNextID++);
  view.AddMessage(false);
  EXPECT_EQ(view.ColumnWidth(3), widened);
}

TEST_F(SenderCacheTest, TheOrganizerAsksAgainWhenAViewOfASenderGoesAway) {
  std::vector<std::unique_ptr<TZTMessageView>> views;
  TFakeApplication app;
  struct THost : IZTOrganizerHost {
    std::vector<std::unique_ptr<TZTMessageView>>* Views;
    TFakeApplication* App;
    std::vector<std::string> Made;
    void CreateOrganizedView(const std::string& name, TZTOrganizeField, const std::string& value, bool) override {
      Made.push_back(name);
      TZTFilterCriteria c;
      c.CheckAppName = true;
      c.AppName = value;
      Views->push_back(std::make_unique<TZTMessageView>(nullptr, App));
      Views->back()->SetFilterCriteria(c);
    }
  } host;
  host.Views = &views;
  host.App = &app;
  Organizer().SetHost(&host);
  Organizer().SetOrganizeBy(1);  // AppName
  StoreFrom("Billing", "main", "1", FNextID++);
  Organizer().Organize();
  StoreFrom("Billing", "main", "2", FNextID++);
  Organizer().Organize();
  EXPECT_EQ(host.Made, (std::vector<std::string>{"Billing"})) << "a covered sender makes nothing";

  // Its view goes: the same sender, noted as covered, makes a view again.
  views.clear();
  StoreFrom("Billing", "main", "3", FNextID++);
  Organizer().Organize();
  EXPECT_EQ(host.Made, (std::vector<std::string>{"Billing", "Billing"}));

  // Noted as covered once more; then another store, where the same sender number stands for
  // another application.
  StoreFrom("Billing", "main", "3b", FNextID++);
  Organizer().Organize();
  MessageSet.Close();
  MessageSet.Open();
  StoreFrom("Shipping", "main", "4", FNextID++);
  Organizer().Organize();
  EXPECT_EQ(host.Made, (std::vector<std::string>{"Billing", "Billing", "Shipping"}));
  views.clear();
  Organizer().SetHost(nullptr);
}
