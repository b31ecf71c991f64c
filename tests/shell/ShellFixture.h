#pragma once
// A main window over an empty store, with the stock view class, a recording prompt service and
// the channel listening in the test's runtime folder.

#include <gtest/gtest.h>

#include <memory>

#include "ShellTestUtil.h"
#include "ZTMainForm.h"
#include "ZTMsgView.h"
#include "ZTPromptService.h"
#include "ZTSettingsStore.h"
#include "ZentrailMessageSet.h"

namespace zentrail::test {

inline TZentrailMessage MakeMessage(int32_t type, const std::string& text, uint32_t pid = 4242,
                                    int32_t timeMs = 36000000) {
  TZentrailMessage m;
  m.MsgType = type;
  m.MsgContent = ztmText;
  m.MsgText = text;
  m.ProcessID = pid;
  m.ThreadName = "main";
  m.AppName = "demo";
  m.ComputerName = "box";
  m.TimeStamp = {timeMs, ztDateOf2000};
  return m;
}

inline std::string Packet(const TZentrailMessage& m) { return m.GetAsTransportPacket(); }

class ShellFixture : public ::testing::Test {
 protected:
  void SetUp() override {
    ViewClasses().Register(QString::fromLatin1(TZTMessageView::ViewClassKey), &TZTMessageView::Create);
    MessageSet.Close();
    MessageSet.Open();
    // Each window starts from the defaults, not from what the previous test's window wrote back.
    ViewerSettings().Clear();
    FPrompts = std::make_unique<TZTRecordingPromptService>();
    FGuard = std::make_unique<TZTPromptServiceGuard>(FPrompts.get());
    Viewer = std::make_unique<TFrmViewer>();
    ASSERT_EQ(Viewer->ViewCount(), 1);
  }
  void TearDown() override {
    Viewer.reset();
    FGuard.reset();
    MessageSet.Close();
    MessageSet.Open();
  }

  std::string Listen() {
    std::string error;
    EXPECT_TRUE(Viewer->StartChannel(error)) << error;
    return Viewer->Channel().SocketPath();
  }

  IZTMessageView& AllMessages() { return *Viewer->GetViewIntf(0); }

  // The type and text of every stored record, in order.
  std::vector<std::pair<int32_t, std::string>> Stored() {
    std::vector<std::pair<int32_t, std::string>> out;
    for (int32_t r = 1; r <= MessageSet.GetRecordCount(); ++r) {
      MessageSet.GotoRec(r);
      out.emplace_back(MessageSet.GetMsgType(), std::string(MessageSet.GetMsgText()));
    }
    return out;
  }

  std::unique_ptr<TZTRecordingPromptService> FPrompts;
  std::unique_ptr<TZTPromptServiceGuard> FGuard;
  std::unique_ptr<TFrmViewer> Viewer;
};

}  // namespace zentrail::test
