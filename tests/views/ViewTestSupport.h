#pragma once
// Shared pieces of the view tests: a store filled through the same road as live intake, and an
// application object that records what a view asks of the shell.

#include <gtest/gtest.h>

#include <QFont>
#include <initializer_list>
#include <string>
#include <vector>

#include "ZTMsgView.h"
#include "ZentrailMessageSet.h"

namespace zentrail::test {

class TFakeApplication : public IZentrailApplication {
 public:
  int32_t GetRowHeight() override { return 17; }
  QFont GetFont(int) override { return Font; }
  TZTMsgTypeStyle GetMsgTypeStyle(int32_t type) override {
    return type >= 0 && type < static_cast<int32_t>(Styles.size()) ? Styles[static_cast<size_t>(type)] : TZTMsgTypeStyle{};
  }
  bool GetAutoScroll() override { return AutoScroll; }
  bool GetAutoCollapse() override { return AutoCollapse; }
  bool GetFlattenStructure() override { return Flatten; }
  uint16_t GetColumnOptions() override { return Columns; }
  bool GetHideExtraColumns() override { return HideExtraColumns; }
  QMenu* GetPopupMenu() override { return nullptr; }
  TZTImageList* GetImageList(int) override { return nullptr; }
  TColor GetHighlightColor() override { return 0x00F0CDAA; }
  TColor GetHighlightFontColor() override { return 0x00502805; }
  TColor GetMarkerColor() override { return 0x00E6D8AD; }
  bool GetRowShading() override { return RowShading; }
  TColor GetRowShadingColor() override { return 0x00A0A0A0; }
  TColor GetSyncMsgColor() override { return 0x00AFEBFF; }
  TColor GetSeparatorColor() override { return 0x00E4AD89; }
  TColor GetInactiveSeparatorColor() override { return 0x00A0CDDE; }
  TColor GetAppStartSeparatorColor() override { return 0x00E4AD89; }
  void UpdateMessageDetails() override { ++DetailsUpdates; }
  void UpdateCommandStates() override { ++CommandUpdates; }
  void SetStatusText(const QString&) override {}
  void SetProgressMax(int32_t) override {}
  void SetProgress(int32_t) override {}
  void StepProgress() override {}

  QFont Font;
  std::vector<TZTMsgTypeStyle> Styles = std::vector<TZTMsgTypeStyle>(46);
  bool AutoScroll = false;
  bool AutoCollapse = false;
  bool Flatten = false;
  bool HideExtraColumns = false;
  bool RowShading = false;
  uint16_t Columns = 103;
  int DetailsUpdates = 0;
  int CommandUpdates = 0;
};

// Starts every test with an empty store.
class TViewTest : public ::testing::Test {
 protected:
  void SetUp() override {
    MessageSet.Close();
    MessageSet.Open();
    FNextID = 0;
    FTime = 8 * 3600 * 1000;
  }

  // Stores one message and offers it to the views in order, as the intake does.
  int32_t Store(int32_t type, const std::string& text, std::initializer_list<TZTMessageView*> views,
                int32_t content = ztmText, const std::string& thread = "main") {
    TZentrailMessage message;
    message.MsgType = type;
    message.MsgContent = content;
    message.MsgText = text;
    message.AppName = "demo";
    message.ComputerName = "build-host";
    message.ThreadName = thread;
    message.Category = "General";
    message.ProcessID = 4242;
    message.TimeStamp = {FTime, ztDateOf2000};
    FTime += 7;
    MessageSet.AppendMessage(message, FNextID++);
    const int32_t recNo = MessageSet.RecNo;
    for (TZTMessageView* view : views) {
      MessageSet.GotoRec(recNo);
      view->AddMessage(false);
    }
    return recNo;
  }

  // The message texts of the rows, top to bottom.
  static std::vector<std::string> RowTexts(TZTMessageView& view) {
    std::vector<std::string> texts;
    for (int32_t row = 0; row < view.GetCount(); ++row) {
      view.SelectRecord(row);
      texts.emplace_back(MessageSet.GetMsgText());
    }
    return texts;
  }

  static std::vector<int32_t> RowIndents(TZTMessageView& view) {
    std::vector<int32_t> indents;
    for (int32_t row = 0; row < view.GetCount(); ++row) indents.push_back(view.GetIndentLevel(row));
    return indents;
  }

  static std::vector<int32_t> SelectedRows(TZTMessageView& view) {
    std::vector<int32_t> rows;
    for (int32_t row = 0; row < view.GetCount(); ++row)
      if (view.GetSelected(row)) rows.push_back(row);
    return rows;
  }

  int32_t FNextID = 0;
  int32_t FTime = 0;
};

}  // namespace zentrail::test
