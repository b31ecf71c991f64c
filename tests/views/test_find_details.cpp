// A search in Details asks the pattern once about empty Details instead of once per message; what
// it finds must not change for that.
#include "ViewTestSupport.h"
#include "ZTPromptService.h"

using namespace zentrail;
using namespace zentrail::test;

class FindInDetails : public TViewTest {};

TEST_F(FindInDetails, EmptyDetailsMatchExactlyWhenThePatternMatchesNothing) {
  TZTRecordingPromptService prompts;
  TZTPromptServiceGuard guard(&prompts);
  TZTMessageView view;
  Store(ztmInfo, "first", {&view});
  // Details of their own on the second record only; the store keeps none for the others.
  TZentrailMessage m;
  m.MsgText = "second";
  m.Details = "Customer=4711\r\n";
  MessageSet.AppendMessage(m, FNextID++);
  view.AddMessage(false);
  Store(ztmInfo, "third", {&view});

  auto find = [&](const char* pattern, bool inDetails) {
    TZTRegEx regex;
    regex.Compile(pattern);
    view.SetFocusedMsgIndex(-1);
    view.FindNext(true, pattern, inDetails, false, true, regex);
    return view.GetFocusedMsgIndex();
  };
  EXPECT_EQ(find("4711", true), 1) << "found in the Details that exist";
  EXPECT_EQ(find("4711", false), -1) << "and only there";
  EXPECT_EQ(prompts.Prompts.size(), 1u) << "the search that found nothing said so";
  // A pattern that matches an empty text finds the first message without Details.
  EXPECT_EQ(find("^$", true), 0);
  EXPECT_EQ(find("^$", false), -1);
}
