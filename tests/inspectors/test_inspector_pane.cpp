// The pane: choice of panel by content, selection count and pane visibility, plug-in controls,
// the copy and print commands, and the persisted display choices.

#include <gtest/gtest.h>

#include <QLabel>
#include <QPainter>
#include <QPlainTextEdit>
#include <QToolButton>
#include <array>

#include "InspectorTestSupport.h"
#include "IxItemListEditor.h"
#include "ZTInspectorPane.h"
#include "ZTXmlViewFrame.h"

namespace zentrail {
namespace {

using Pane = TZTInspectorPane;

TEST(InspectorPane, EveryContentCodeMapsToItsPanel) {
  const std::vector<std::pair<int32_t, int>> table = {
      {ztmObject, Pane::pnObject},         {ztmComponentAsText, Pane::pnMonospaceText},
      {ztmMemory, Pane::pnMonospaceText},  {ztmRegistry, Pane::pnMonospaceText},
      {ztmStringList, Pane::pnStringList}, {ztmSeparator, Pane::pnNone},
      {ztmInactiveSeparator, Pane::pnNone}, {ztmAppStartSeparator, Pane::pnNone},
      {ztmBitmap, Pane::pnBitmap},         {ztmTextFile, Pane::pnText},
      {ztmWindow, Pane::pnText},           {ztmCustomText, Pane::pnText},
      {ztmStackTrace, Pane::pnText},       {ztmException, Pane::pnText},
      {ztmMemoryStatus, Pane::pnMemoryStatus}, {ztmCustomProperties, Pane::pnProperties},
      {ztmSystemInfo, Pane::pnProperties}, {ztmVersionInfo, Pane::pnProperties},
      {ztmColor, Pane::pnColor},           {ztmXmlData, Pane::pnXmlData},
      {ztmCustomTable, Pane::pnTable},     {ztmCollection, Pane::pnCollection},
      {ztmCustomHierarchy, Pane::pnHierarchy}, {ztmResetSeparator, Pane::pnString},
      {ztmInfo, Pane::pnString},           {ztmText, Pane::pnString},
      {ztmEnterMethod, Pane::pnString},    {99, Pane::pnString},
      {100, Pane::pnCustom},               {ztmUser + 5, Pane::pnCustom}};
  for (const auto& [content, panel] : table) EXPECT_EQ(Pane::PanelForContent(content), panel) << "content " << content;
}

TEST(InspectorPane, ShowsOneInspectorWithItsToolbarAndSwitchesOnlyWhenNeeded) {
  Pane pane;
  pane.resize(600, 400);
  for (int panel = 1; panel <= 13; ++panel) {
    ASSERT_NE(pane.Inspector(panel), nullptr);
    EXPECT_TRUE(pane.Inspector(panel)->isHidden());
  }
  int shownSignals = 0;
  QObject::connect(&pane, &Pane::PanelShown, [&](int) { ++shownSignals; });

  test::PutMessage(ztmCustomTable, "h1\th2\r\n1\t2");
  EXPECT_EQ(pane.ShowCurrentMessage(1), Pane::pnTable);
  EXPECT_EQ(pane.VisibleControl(), pane.TableInspector());
  EXPECT_EQ(pane.TableInspector()->Cell(1, 1), QStringLiteral("2"));
  EXPECT_FALSE(pane.TableInspector()->Toolbar()->isHidden());

  test::PutMessage(ztmCustomText, "hello\r\nworld", "", "text");
  EXPECT_EQ(pane.ShowCurrentMessage(1), Pane::pnText);
  EXPECT_TRUE(pane.TableInspector()->isHidden());
  EXPECT_TRUE(pane.TableInspector()->Toolbar()->isHidden());
  EXPECT_FALSE(pane.TextInspector()->Toolbar()->isHidden());
  EXPECT_EQ(pane.TextInspector()->Text(), QStringLiteral("hello\r\nworld"));

  // Same panel again: it stays and takes the new message.
  test::PutMessage(ztmStackTrace, "frame 1", "", "trace");
  EXPECT_EQ(pane.ShowCurrentMessage(1), Pane::pnText);
  EXPECT_EQ(pane.TextInspector()->Text(), QStringLiteral("frame 1"));

  // A separator leaves the pane empty.
  test::PutMessage(ztmSeparator, "", "", "----", ztmSeparator);
  EXPECT_EQ(pane.ShowCurrentMessage(1), Pane::pnNone);
  EXPECT_EQ(pane.VisibleControl(), nullptr);
  EXPECT_FALSE(pane.CanCopyContents());
  EXPECT_EQ(shownSignals, 4);

  // With the pane hidden the String inspector takes any message, and no picture is decoded.
  test::PutMessage(ztmBitmap, "NOT HEX AT ALL", "PngImage", "a picture");
  EXPECT_EQ(pane.ShowCurrentMessage(1, {}, false), Pane::pnString);
  EXPECT_EQ(pane.StringInspector()->Text(), QStringLiteral("a picture"));
  EXPECT_EQ(pane.BitmapInspector()->GetFooter(), QStringLiteral("0 x 0"));

  pane.HideAllInspectors();
  EXPECT_EQ(pane.VisibleControl(), nullptr);
}

// A plug-in control that takes a content code and counts what it was asked.
class TFakePluginControl : public QLabel,
                           public IInspectorSingleMessage,
                           public IInspectorMessagePair,
                           public IInspectorCopyContents {
 public:
  void InspectMessage() override {
    ++Singles;
    setText(QString::fromUtf8(MessageSet.GetMsgText().data(), static_cast<qsizetype>(MessageSet.GetMsgText().size())));
  }
  void InspectMessages(int32_t a, int32_t b) override { Pairs.emplace_back(a, b); }
  void CopyToClipboard() override { QGuiApplication::clipboard()->setText(QStringLiteral("from plug-in")); }
  int Singles = 0;
  std::vector<std::pair<int32_t, int32_t>> Pairs;
};

class TFakeSource : public IZTCustomInspectorSource {
 public:
  bool CanHandleMsgContent(int count, int32_t content) override {
    return content == Handled && (count == 1 || count == 2);
  }
  QWidget* GetInspectorControl(int32_t) override { return Control; }
  int32_t Handled = ztmUser + 1;
  TFakePluginControl* Control = nullptr;
};

TEST(InspectorPane, PluginControlsTakeTheirContentAndPairs) {
  Pane pane;
  // Without a plug-in source a custom code shows the "not found" text.
  test::PutMessage(ztmUser + 5, "", "", "custom");
  EXPECT_EQ(pane.ShowCurrentMessage(1), Pane::pnCustom);
  auto* memo = qobject_cast<QPlainTextEdit*>(pane.VisibleControl());
  ASSERT_NE(memo, nullptr);
  EXPECT_EQ(memo->toPlainText().toStdString(),
            "Custom inspector for message type (ztmUser + 5) not found.\n\nYou may be missing a custom inspector plug-in.");
  EXPECT_FALSE(pane.CanCopyContents());
  EXPECT_FALSE(pane.CanPrintContents());

  auto* control = new TFakePluginControl;
  TFakeSource source;
  source.Control = control;
  source.Handled = ztmCustomText;  // a plug-in may take over a stock content
  pane.SetCustomInspectorSource(&source);
  const int32_t first = test::PutMessage(ztmCustomText, "", "", "first");
  EXPECT_EQ(pane.ShowCurrentMessage(1), Pane::pnCustom);
  EXPECT_EQ(pane.VisibleControl(), control);
  EXPECT_EQ(control->Singles, 1);
  EXPECT_EQ(control->text(), QStringLiteral("first"));
  EXPECT_TRUE(pane.TextInspector()->isHidden());
  EXPECT_TRUE(pane.CanCopyContents());
  EXPECT_FALSE(pane.CanPrintContents());
  pane.CopyInspectorContents();
  EXPECT_EQ(test::ClipboardText(), "from plug-in");

  const int32_t second = test::PutMessage(ztmCustomText, "", "", "second");
  const std::array<int32_t, 2> pair{second, first};
  EXPECT_EQ(pane.ShowCurrentMessage(2, pair), Pane::pnCustom);
  ASSERT_EQ(control->Pairs.size(), 1u);
  EXPECT_EQ(control->Pairs[0], std::make_pair(second, first));
  EXPECT_EQ(MessageSet.RecNo, second);

  // Two selected messages of different content leave the pane empty.
  const int32_t other = test::PutMessage(ztmInfo, "", "", "other");
  MessageSet.GotoRec(second);
  const std::array<int32_t, 2> mixed{second, other};
  pane.ShowCurrentMessage(2, mixed);
  EXPECT_EQ(pane.VisibleControl(), nullptr);
  EXPECT_EQ(control->Pairs.size(), 1u);

  // Three selected: no plug-in can take it, so the stock panel shows.
  EXPECT_EQ(pane.ShowCurrentMessage(3), Pane::pnText);
  pane.SetCustomInspectorSource(nullptr);
}

// A plug-in control that prints itself.
class TPrintingPluginControl : public QLabel, public IInspectorSingleMessage, public IInspectorPrintContents {
 public:
  void InspectMessage() override { setText(QStringLiteral("plug-in view")); }
  void GetPrintTitle(QString& title) override { title = QStringLiteral("Plug-in title"); }
  void Print(const QString& title, QPrinter& printer) override {
    QPainter painter(&printer);
    painter.drawText(QPoint(600, 600), title + QStringLiteral(": printed by the plug-in"));
  }
};

class TPrintingSource : public IZTCustomInspectorSource {
 public:
  bool CanHandleMsgContent(int count, int32_t content) override { return count == 1 && content == ztmUser + 7; }
  QWidget* GetInspectorControl(int32_t) override { return Control; }
  TPrintingPluginControl* Control = new TPrintingPluginControl;
};

TEST(InspectorPane, PluginControlPrintsWithItsOwnTitle) {
  Pane pane;
  TPrintingSource source;
  pane.SetCustomInspectorSource(&source);
  test::PutMessage(ztmUser + 7, "", "", "custom data");
  ASSERT_EQ(pane.ShowCurrentMessage(1), Pane::pnCustom);
  EXPECT_FALSE(pane.CanCopyContents());
  ASSERT_TRUE(pane.CanPrintContents());
  const auto pdf = test::MakeTempDir("plugin-print") / "plugin.pdf";
  test::TPdfPrompts prompts(pdf);
  test::TScopedPrompts scoped(&prompts);
  EXPECT_TRUE(pane.PrintInspectorContents(QStringLiteral("custom data (Details)")));
  EXPECT_EQ(prompts.ProposedTitle, "Plug-in title");
  const test::TPdfDocument doc = test::ReadPdf(pdf);
  ASSERT_EQ(doc.Pages.size(), 1u);
  ASSERT_EQ(doc.Pages[0].Lines.size(), 1u);
  EXPECT_EQ(doc.Pages[0].Lines[0].Text(), "Plug-in title: printed by the plug-in");
  pane.SetCustomInspectorSource(nullptr);
}

TEST(InspectorPane, PrintTitleAndCommands) {
  EXPECT_EQ(Pane::ProposedPrintTitle(false, "x"), QStringLiteral("Inspector Pane Details"));
  EXPECT_EQ(Pane::ProposedPrintTitle(true, "short"), QStringLiteral("short (Details)"));
  const std::string forty(40, 'a');
  EXPECT_EQ(Pane::ProposedPrintTitle(true, forty), QString::fromStdString(forty) + QStringLiteral(" (Details)"));
  EXPECT_EQ(Pane::ProposedPrintTitle(true, forty + "b"), QString::fromStdString(forty) + QStringLiteral("... (Details)"));

  Pane pane;
  test::PutMessage(ztmStringList, "one\r\ntwo", "TStringList", "names");
  pane.ShowCurrentMessage(1);
  EXPECT_TRUE(pane.CanCopyContents());
  EXPECT_TRUE(pane.CanPrintContents());
  pane.CopyInspectorContents();
  EXPECT_EQ(test::ClipboardText(), "one\r\ntwo");

  const auto pdf = test::MakeTempDir("pane-print") / "list.pdf";
  test::TPdfPrompts prompts(pdf);
  test::TScopedPrompts scoped(&prompts);
  prompts.Accept = false;
  EXPECT_FALSE(pane.PrintInspectorContents(QStringLiteral("names (Details)")));
  EXPECT_FALSE(std::filesystem::exists(pdf));
  EXPECT_EQ(prompts.Caption, "Print Inspector Contents");
  EXPECT_EQ(prompts.ProposedTitle, "names (Details)");
  prompts.Accept = true;
  prompts.EditedTitle = "Edited title";
  EXPECT_TRUE(pane.PrintInspectorContents(QStringLiteral("names (Details)")));
  ASSERT_TRUE(std::filesystem::exists(pdf));
  const test::TPdfDocument doc = test::ReadPdf(pdf);
  ASSERT_EQ(doc.Pages.size(), 1u);
  ASSERT_GE(doc.Pages[0].Lines.size(), 3u);
  EXPECT_EQ(doc.Pages[0].Lines[0].Text(), "Edited title  --  Page 1");
  EXPECT_EQ(doc.Pages[0].Lines[1].Text(), "    1:  one");
  EXPECT_EQ(doc.Pages[0].Lines[2].Text(), "    2:  two");
}

TEST(InspectorPane, DisplaySettingsRoundTrip) {
  Pane pane;
  const TZTInspectorDisplaySettings defaults = pane.GetDisplaySettings();
  EXPECT_TRUE(defaults.StringWordWrap);
  EXPECT_FALSE(defaults.TextWordWrap);
  EXPECT_EQ(defaults.DisplayType, 1);
  EXPECT_EQ(defaults.XmlViewType, 0);

  TZTInspectorDisplaySettings s;
  s.StringWordWrap = false;
  s.StringLineNumbers = true;
  s.TextWordWrap = true;
  s.TextJumpToEnd = true;
  s.TextLineNumbers = true;
  s.StrListJumpToEnd = true;
  s.MonospaceTextLineNumbers = true;
  s.DisplayType = 2;
  s.XmlViewType = 1;
  pane.SetDisplaySettings(s);
  const TZTInspectorDisplaySettings back = pane.GetDisplaySettings();
  EXPECT_EQ(back.StringWordWrap, false);
  EXPECT_EQ(back.StringLineNumbers, true);
  EXPECT_EQ(back.TextWordWrap, true);
  EXPECT_EQ(back.TextJumpToEnd, true);
  EXPECT_EQ(back.TextLineNumbers, true);
  EXPECT_EQ(back.StrListJumpToEnd, true);
  EXPECT_EQ(back.MonospaceTextLineNumbers, true);
  EXPECT_EQ(back.DisplayType, 2);
  EXPECT_EQ(back.XmlViewType, 1);
  EXPECT_EQ(pane.XmlDataInspector()->XmlView()->CurrentPage(), 1);  // applied at once

  // Settings calls are safe at any time, also while an inspector is showing.
  test::PutMessage(ztmObject, "Name='Form1'", "TForm");
  pane.ShowCurrentMessage(1);
  pane.SetHighlightColors(QColor(0x33, 0x66, 0x99), Qt::white);
  pane.SetHeaderFont(QFont(QStringLiteral("DejaVu Sans"), 10), 16);
  pane.SetInspectorFont(QFont(QStringLiteral("DejaVu Sans"), 9));
  pane.SetValueColor(QColor(0x80, 0, 0));
  EXPECT_EQ(pane.ObjectInspector()->GetHeader(), QStringLiteral("TForm: Form1"));
  EXPECT_EQ(pane.ObjectInspector()->HighlightColor(), QColor(0x33, 0x66, 0x99));
  EXPECT_EQ(pane.ObjectInspector()->Grid()->ValueColor(), QColor(0x80, 0, 0));
  // Buttons carry the glyphs; removing the list takes them off.
  EXPECT_FALSE(pane.StringInspector()->FBtnWordWrap->icon().isNull());
  delete pane.Images();
  EXPECT_TRUE(pane.StringInspector()->FBtnWordWrap->icon().isNull());
}

}  // namespace
}  // namespace zentrail
