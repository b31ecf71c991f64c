// The compiled pattern under filters and searches: case and characters beyond ASCII, copies that
// stand on their own, and long texts that outgrow the fast matcher's stack.

#include <gtest/gtest.h>

#include <string>

#include "ZTRegEx.h"

namespace zentrail::test {
namespace {

TEST(RegEx, MatchesUtf8AnywhereWithoutCaseAndSurvivesCopiesAndDeepBacktracking) {
  TZTRegEx empty;
  EXPECT_FALSE(empty.IsCompiled());
  EXPECT_FALSE(empty.Match("anything"));  // nothing compiled refuses, it doesn't accept

  TZTRegEx rx;
  rx.Compile("GRÜẞE|ÉTÉ|^ω+$");
  EXPECT_TRUE(rx.Match("viele grüße"));  // ß and ẞ are a case pair
  EXPECT_TRUE(rx.Match("un été chaud"));
  EXPECT_FALSE(rx.Match("unétè"));
  EXPECT_TRUE(rx.Match("ΩωΩ"));
  EXPECT_FALSE(rx.Match("ΩωΩ!"));
  EXPECT_FALSE(rx.Match(""));
  // Text with a zero byte inside is matched whole, not up to the zero.
  rx.Compile("after");
  EXPECT_TRUE(rx.Match(std::string("before\0after", 12)));

  // A copy compiles its own pattern; clearing or recompiling one leaves the other as it was.
  TZTRegEx copy = rx;
  rx.Compile("other");
  EXPECT_TRUE(copy.Match("xafterx"));
  EXPECT_FALSE(copy.Match("other"));
  TZTRegEx assigned;
  assigned = empty;
  EXPECT_FALSE(assigned.IsCompiled());
  assigned = copy;
  copy.Clear();
  EXPECT_TRUE(assigned.Match("AFTER"));
  EXPECT_EQ(assigned.Pattern(), "after");
  EXPECT_EQ(copy.Pattern(), "");

  // A failed compile says where and why and leaves the previous pattern in place.
  try {
    assigned.Compile("ab[c");
    ADD_FAILURE() << "no error";
  } catch (const EZTRegExError& e) {
    const std::string what = e.what();
    EXPECT_NE(what.find("ab[c"), std::string::npos) << what;
    EXPECT_NE(what.find("offset 4"), std::string::npos) << what;
    EXPECT_NE(what.find("missing terminating ]"), std::string::npos) << what;
  }
  EXPECT_TRUE(assigned.Match("after"));

  // Deep backtracking over a long text: too deep for the machine code's stack, so the answer
  // comes from the interpreter instead of a silent "no match".
  std::string longText;
  for (int i = 0; i < 50000; ++i) longText += "ab";
  TZTRegEx deep;
  deep.Compile("^(a|b)*c");
  EXPECT_FALSE(deep.Match(longText));
  deep.Compile("^(a|b)*$");
  EXPECT_TRUE(deep.Match(longText));
  deep.Compile("^(?:(a)|b)*x?$");
  EXPECT_TRUE(deep.Match(longText + "x"));
}

}  // namespace
}  // namespace zentrail::test
