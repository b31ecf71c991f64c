// The String, Text, Monospace and String List inspectors against their payloads.

#include <Qsci/qsciscintilla.h>
#include <gtest/gtest.h>

#include <QToolButton>
#include <memory>

#include "InspectorTestSupport.h"
#include "ZTInspect.h"

namespace zentrail {
namespace {

template <class T>
std::unique_ptr<T> Make() {
  return std::unique_ptr<T>(TZTStockInspector::Create<T>(nullptr, nullptr));
}

TEST(TextInspectors, StringInspectorShowsTheMessageTextWithBreaksNormalised) {
  auto insp = Make<TZTStringInspector>();
  test::PutMessage(ztmText, "details are not read", "", "a\r\n\r\n\r\nb\r\n");
  insp->InspectMessage();
  EXPECT_EQ(insp->Text(), QStringLiteral("a\r\nb"));
  QStringList lines;
  insp->GetContents(lines);
  EXPECT_EQ(lines, (QStringList{"a", "b"}));

  test::PutMessage(ztmText, "", "", "\nx");
  insp->InspectMessage();
  EXPECT_EQ(insp->Text(), QStringLiteral("\r\nx"));

  test::PutMessage(ztmText, "", "", "Größe = 12 µm");
  insp->InspectMessage();
  EXPECT_EQ(insp->Text(), QStringLiteral("Größe = 12 µm"));

  // Separators leave the view empty; the test is on the type, not the content.
  test::PutMessage(ztmText, "", "", "---- separator ----", ztmResetSeparator);
  insp->InspectMessage();
  EXPECT_EQ(insp->Text(), QString());
}

TEST(TextInspectors, ButtonsPerKindAndTheirStates) {
  auto str = Make<TZTStringInspector>();
  auto text = Make<TZTTextInspector>();
  auto mono = Make<TZTMonospaceTextInspector>();
  auto list = Make<TZTStringListInspector>();
  EXPECT_FALSE(str->FBtnWordWrap->isHidden());
  EXPECT_TRUE(str->FBtnJumpToEnd->isHidden());
  EXPECT_FALSE(str->FBtnCopyValue->isHidden());
  EXPECT_TRUE(str->GetWordWrap());
  EXPECT_FALSE(text->GetWordWrap());
  EXPECT_FALSE(text->FBtnJumpToEnd->isHidden());
  EXPECT_TRUE(text->FBtnCopyValue->isHidden());
  EXPECT_TRUE(mono->FBtnWordWrap->isHidden());
  EXPECT_FALSE(mono->FBtnLineNumbers->isHidden());
  EXPECT_EQ(list->FBtnWordWrap, nullptr);
  EXPECT_EQ(list->FBtnCopyValue, nullptr);
  EXPECT_FALSE(list->FBtnJumpToEnd->isHidden());
  EXPECT_EQ(str->FBtnWordWrap->toolTip(), QStringLiteral("Word Wrap"));
  EXPECT_EQ(text->FBtnJumpToEnd->toolTip(), QStringLiteral("Jump to End on Inspect"));

  // Wrap on means no horizontal bar; line numbers show a gutter exactly when on.
  str->SetWordWrap(false);
  EXPECT_EQ(str->View()->wrapMode(), QsciScintilla::WrapNone);
  EXPECT_EQ(str->View()->SendScintilla(QsciScintilla::SCI_GETHSCROLLBAR), 1);
  str->FBtnWordWrap->click();
  EXPECT_EQ(str->View()->wrapMode(), QsciScintilla::WrapWord);
  EXPECT_EQ(str->View()->SendScintilla(QsciScintilla::SCI_GETHSCROLLBAR), 0);
  EXPECT_EQ(text->View()->marginWidth(0), 0);
  text->SetLineNumbers(true);
  EXPECT_GT(text->View()->marginWidth(0), 0);
  EXPECT_TRUE(text->FBtnLineNumbers->isChecked());
  text->FBtnLineNumbers->click();
  EXPECT_EQ(text->View()->marginWidth(0), 0);
}

TEST(TextInspectors, TextInspectorKeepsDetailsAsTheyStandAndCanJumpToTheEnd) {
  auto insp = Make<TZTTextInspector>();
  std::string details;
  for (int i = 1; i <= 300; ++i) details += "line " + std::to_string(i) + "\r\n\r\n";
  test::PutMessage(ztmTextFile, details, "Text File", "readme.txt");
  insp->InspectMessage();
  QStringList lines;
  insp->GetContents(lines);
  ASSERT_EQ(lines.size(), 600);  // blank lines kept: only MsgText is normalised
  EXPECT_EQ(lines[2], QStringLiteral("line 2"));
  int line = -1, col = -1;
  insp->View()->getCursorPosition(&line, &col);
  EXPECT_EQ(line, 0);

  insp->SetJumpToEnd(true);
  insp->InspectMessage();
  insp->View()->getCursorPosition(&line, &col);
  EXPECT_EQ(line, insp->View()->lines() - 1);
  EXPECT_EQ(col, 0);
}

TEST(TextInspectors, MonospaceShowsDetailsForComponentsMemoryAndRegistry) {
  auto insp = Make<TZTMonospaceTextInspector>();
  const std::string dump =
      "00000000: 48 65 6C 6C 6F 20 77 6F  | Hello wo\r\n"
      "00000008: 72 6C 64 0A             | rld.\r\n";
  test::PutMessage(ztmMemory, dump, "Stream", "buffer");
  insp->InspectMessage();
  EXPECT_EQ(insp->Text().toStdString(), dump);
  EXPECT_TRUE(insp->View()->font().fixedPitch() || QFontInfo(insp->View()->font()).fixedPitch());
}

TEST(TextInspectors, StringListCountsItemsInTheFooter) {
  auto insp = Make<TZTStringListInspector>();
  test::PutMessage(ztmStringList, "", "TStringList");
  insp->InspectMessage();
  EXPECT_EQ(insp->GetFooter(), QStringLiteral("0 Items"));
  test::PutMessage(ztmStringList, "alpha", "TStringList");
  insp->InspectMessage();
  EXPECT_EQ(insp->GetFooter(), QStringLiteral("1 Item"));
  test::PutMessage(ztmStringList, "1\r\n2\r\n3\r\n", "TIntegerDynArray");
  insp->InspectMessage();
  EXPECT_EQ(insp->GetFooter(), QStringLiteral("3 Items"));
  QStringList lines;
  insp->GetContents(lines);
  EXPECT_EQ(lines, (QStringList{"1", "2", "3"}));
}

TEST(TextInspectors, CopyTakesSelectionOrEverythingAndCopyValueTakesTheValue) {
  auto insp = Make<TZTStringInspector>();
  test::PutMessage(ztmText, "", "", "Count = 42");
  insp->InspectMessage();
  insp->CopyValueToClipboard();
  EXPECT_EQ(test::ClipboardText(), "42");
  insp->FBtnCopyValue->click();
  EXPECT_EQ(test::ClipboardText(), "42");

  test::PutMessage(ztmText, "", "", "no equals sign here");
  insp->InspectMessage();
  insp->CopyValueToClipboard();
  EXPECT_EQ(test::ClipboardText(), "no equals sign here");

  // On several lines the first " = " of the whole text counts.
  test::PutMessage(ztmText, "", "", "a = 1\nb = 2");
  insp->InspectMessage();
  insp->CopyValueToClipboard();
  EXPECT_EQ(test::ClipboardText(), "1\r\nb = 2");

  insp->CopyToClipboard();
  EXPECT_EQ(test::ClipboardText(), "a = 1\r\nb = 2");
  insp->View()->setSelection(1, 0, 1, 1);
  insp->CopyToClipboard();
  EXPECT_EQ(test::ClipboardText(), "b");
}

}  // namespace
}  // namespace zentrail
