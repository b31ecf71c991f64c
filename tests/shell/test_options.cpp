// The options dialog and the column dialog as a user drives them: every control changed shows in
// the window at once and comes back after a restart over the file on disk; the dialogs' own rules;
// Cancel changes nothing.
#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFontComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTabWidget>
#include <QToolButton>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "ShellFixture.h"
#include "TestEnvironment.h"
#include "ZTColorEdit.h"
#include "ZTColumnsForm.h"
#include "ZTColumnsPage.h"
#include "ZTCommandBar.h"
#include "ZTInspectorPane.h"
#include "ZTNavigator.h"
#include "ZTOptionsForm.h"
#include "ZTOptionsPages.h"

namespace fs = std::filesystem;
using namespace zentrail;
using namespace zentrail::test;

namespace {

fs::path SettingsFile() { return fs::path(std::getenv("XDG_DATA_HOME")) / "Orvan/Zentrail/5.0/ZTLiveViewer.ini"; }

class OptionsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ViewClasses().Register(QString::fromLatin1(TZTMessageView::ViewClassKey), &TZTMessageView::Create);
    MessageSet.Close();
    MessageSet.Open();
    FPrompts = std::make_unique<TZTRecordingPromptService>();
    FGuard = std::make_unique<TZTPromptServiceGuard>(FPrompts.get());
    std::error_code ec;
    fs::remove(SettingsFile(), ec);
  }
  void TearDown() override {
    Viewer.reset();
    FGuard.reset();
    ViewerSettings().Clear();
  }
  // A start over the file on disk, and a close that writes it back, as the program does.
  void Start() {
    ViewerSettings().Clear();
    LoadViewerSettings();
    Viewer = std::make_unique<TFrmViewer>();
  }
  void Close() {
    Viewer.reset();
    std::string error;
    ASSERT_TRUE(FlushViewerSettings(error)) << error;
  }
  // Opens the options dialog, lets fill change it, and presses OK (or Cancel).
  void RunOptions(const std::function<void(TfrmOptions&)>& fill, bool ok = true) {
    int runs = 0;
    FPrompts->DialogHandler = [&](QDialog& dialog) {
      ++runs;
      auto* form = dynamic_cast<TfrmOptions*>(&dialog);
      EXPECT_NE(form, nullptr);
      if (!form) return int(QDialog::Rejected);
      EXPECT_EQ(form->windowTitle(), "Zentrail Viewer Options");
      fill(*form);
      return int(ok ? QDialog::Accepted : QDialog::Rejected);
    };
    Viewer->Action(QStringLiteral("actOptions"))->trigger();
    FPrompts->DialogHandler = nullptr;
    EXPECT_EQ(runs, 1);
  }
  bool Checked(const char* action) { return Viewer->Action(QString::fromLatin1(action))->isChecked(); }
  TZTMessageView* View() { return dynamic_cast<TZTMessageView*>(Viewer->GetViewIntf(0)); }

  std::unique_ptr<TZTRecordingPromptService> FPrompts;
  std::unique_ptr<TZTPromptServiceGuard> FGuard;
  std::unique_ptr<TFrmViewer> Viewer;
};

// What a user does on every page: each control away from its default.
void ChangeEverything(TfrmOptions& f) {
  TZTOptionsGeneralPage& g = *f.tabGeneral;
  g.chkConfirmOnClear->setChecked(false);
  g.chkConfirmOnClearBookmarks->setChecked(false);
  g.chkAutoScroll->setChecked(false);
  g.chkAutoSaveProject->setChecked(false);
  g.chkAutoCollapse->setChecked(false);
  g.chkFlattenStructure->setChecked(true);
  g.chkRowShading->setChecked(false);
  EXPECT_FALSE(g.edtRowShadingColor->isEnabled());
  g.edtRowShadingColor->SetColor(0x00101010);
  g.edtValueColor->SetColor(0x00202020);
  g.edtMarkerColor->SetColor(0x00303030);
  g.edtSyncMsgColor->SetColor(0x00404040);
  g.edtHighlightColor->SetColor(0x00505050);
  g.edtHighlightFontColor->SetColor(0x00606060);

  TZTColumnsPage& c = *f.tabMsgDetails;
  c.chkCategory->setChecked(true);
  c.chkThreadName->setChecked(true);
  c.chkTime->setChecked(true);
  EXPECT_TRUE(c.optTimeStamp->isChecked()) << "a ticked time box with no kind chosen gives the time stamp";
  c.optTimeOffset->setChecked(true);
  EXPECT_FALSE(c.optTimeStamp->isChecked());

  TZTOptionsLayoutPage& l = *f.tabLayout;
  l.chkInspector->setChecked(true);
  l.chkScratchPad->setChecked(true);
  l.chkCallStack->setChecked(true);
  l.chkDetailPanel->setChecked(true);
  l.chkWrapButtons->setChecked(true);
  l.imgInspectorOnBottom->click();
  EXPECT_TRUE(l.optInspectorOnBottom->isChecked());
  l.cbxPadLight->setCurrentIndex(3);

  TZTOptionsSeparatorsPage& s = *f.tabSeparators;
  EXPECT_FALSE(s.spnIdleTime->isEnabled());
  EXPECT_FALSE(s.edtSoundEffect->isEnabled());
  s.chkInsertSeparatorOnWakeUp->setChecked(true);
  EXPECT_TRUE(s.spnIdleTime->isEnabled());
  s.spnIdleTime->setValue(42);
  s.chkSoundEffect->setChecked(true);
  EXPECT_TRUE(s.edtSoundEffect->isEnabled());
  s.edtSoundEffect->setText(QStringLiteral("/sounds/wake up.wav"));
  s.chkInsertSeparatorOnAppStart->setChecked(true);
  s.edtSeparatorColor->SetColor(0x00707070);
  s.edtInactiveSeparatorColor->SetColor(0x00808080);
  s.edtAppStartSeparatorColor->SetColor(0x00909090);

  TZTOptionsFontsPage& fonts = *f.tabFonts;
  fonts.spnFontSize->setValue(12);
  fonts.edtFontColor->SetColor(0x00000080);
  fonts.cbxFontType->setCurrentIndex(1);
  EXPECT_EQ(fonts.nbkFonts->currentWidget(), fonts.lblInspector);
  fonts.spnFontSize->setValue(10);
  fonts.cbxFontType->setCurrentIndex(2);
  fonts.spnFontSize->setValue(14);

  TZTOptionsStylesPage& st = *f.tabColorsStyles;
  st.cbxMsgType->setCurrentIndex(1);  // Warnings
  EXPECT_TRUE(st.chkUseDefault->isChecked());
  EXPECT_FALSE(st.chkBold->isEnabled());
  st.chkUseDefault->setChecked(false);
  EXPECT_TRUE(st.chkBold->isEnabled());
  st.edtColor->SetColor(0x000000C0);
  st.chkBold->setChecked(true);
  st.chkUnderline->setChecked(true);
  st.cbxMsgType->setCurrentIndex(15);  // Timings: no keys in the file
  st.chkUseDefault->setChecked(false);
  st.chkItalic->setChecked(true);
  st.cbxMsgType->setCurrentIndex(1);
  EXPECT_TRUE(st.chkBold->isChecked()) << "the working table keeps the first change";
}

}  // namespace

TEST_F(OptionsTest, EveryOptionChangedInTheDialogShowsAtOnceAndSurvivesARestart) {
  Start();
  Viewer->ProcessMessage(MakeMessage(ztmWarning, "a warning"));
  RunOptions(ChangeEverything);

  // At once.
  auto check = [&](const char* when) {
    SCOPED_TRACE(when);
    EXPECT_FALSE(Viewer->ConfirmOnClear);
    EXPECT_FALSE(Viewer->Navigator().ConfirmOnClearBookmarks);
    EXPECT_FALSE(Viewer->GetAutoScroll());
    EXPECT_FALSE(Checked("actAutoScroll"));
    EXPECT_FALSE(Viewer->AutoSaveProject);
    EXPECT_FALSE(Viewer->GetAutoCollapse());
    EXPECT_TRUE(Viewer->GetFlattenStructure());
    EXPECT_TRUE(Checked("actFlattenStructure"));
    EXPECT_FALSE(Viewer->GetRowShading());
    EXPECT_EQ(Viewer->GetRowShadingColor(), 0x00101010);
    EXPECT_EQ(Viewer->GetValueColor(), 0x00202020);
    EXPECT_EQ(Viewer->GetMarkerColor(), 0x00303030);
    EXPECT_EQ(Viewer->GetSyncMsgColor(), 0x00404040);
    EXPECT_EQ(Viewer->GetHighlightColor(), 0x00505050);
    EXPECT_EQ(Viewer->GetHighlightFontColor(), 0x00606060);
    EXPECT_EQ(Viewer->GetColumnOptions(), 1 | 16 | 256);
    EXPECT_EQ(View()->ColumnOptions(), 1 | 16 | 256) << "the view shows the columns";
    EXPECT_TRUE(Checked("actViewThread"));
    EXPECT_TRUE(Checked("actViewTimeOffset"));
    EXPECT_TRUE(Viewer->PaneVisible(TZTPane::Inspector));
    EXPECT_TRUE(Viewer->PaneVisible(TZTPane::ScratchPad));
    EXPECT_TRUE(Viewer->PaneVisible(TZTPane::CallStack));
    EXPECT_TRUE(Checked("actViewInspector"));
    EXPECT_FALSE(Viewer->PaneWidget(QStringLiteral("pnlMsgDetails"))->isHidden());
    EXPECT_TRUE(Viewer->WrapButtons());
    EXPECT_TRUE(Viewer->findChild<TZTCommandBar*>(QStringLiteral("tbrView"))->Wrap());
    EXPECT_TRUE(Viewer->InspectorOnBottom());
    EXPECT_EQ(Viewer->ScratchPadLightColor(), 3);
    EXPECT_EQ(Viewer->IdleTime, 42);
    EXPECT_TRUE(Viewer->InsertSeparatorOnWakeUp);
    EXPECT_TRUE(Viewer->SoundEffectOnWakeUp);
    EXPECT_EQ(Viewer->SoundEffectFile, QStringLiteral("/sounds/wake up.wav"));
    EXPECT_TRUE(Viewer->InsertSeparatorOnAppStart);
    EXPECT_EQ(Viewer->GetSeparatorColor(), 0x00707070);
    EXPECT_EQ(Viewer->GetInactiveSeparatorColor(), 0x00808080);
    EXPECT_EQ(Viewer->GetAppStartSeparatorColor(), 0x00909090);
    EXPECT_EQ(Viewer->MessageFontSetting().Size, 12);
    EXPECT_EQ(Viewer->MessageFontSetting().Color, 0x00000080);
    EXPECT_EQ(Viewer->GetFont(ztFontMessage).pointSize(), 12);
    EXPECT_EQ(Viewer->GetMsgTypeStyle(0).Color, 0x00000080) << "entry 0 follows the message font";
    EXPECT_EQ(Viewer->InspectorFontSetting().Size, 10);
    EXPECT_EQ(Viewer->InspectorFixedFontSetting().Size, 14);
    EXPECT_EQ(Viewer->GetFont(ztFontInspectorFixed).pointSize(), 14);
    const TZTMsgTypeStyle warning = Viewer->GetMsgTypeStyle(ztmWarning);
    EXPECT_FALSE(warning.UseDefault);
    EXPECT_EQ(warning.Color, 0x000000C0);
    EXPECT_EQ(warning.Style, fsBold | fsUnderline);
  };
  check("at once");
  // The row height follows the larger message font.
  EXPECT_GE(Viewer->GetRowHeight(), QFontMetrics(Viewer->GetFont(ztFontMessage)).height());
  // A changed Timings style works for this run only: the type has no keys in the file.
  EXPECT_EQ(Viewer->GetMsgTypeStyle(ztmTiming).Style, fsItalic);

  Close();
  TZTIniFile disk(SettingsFile().string());
  EXPECT_EQ(disk.ReadString("General", "IdleTime", ""), "42");
  EXPECT_EQ(disk.ReadString("Display", "TimeOffset", ""), "1");
  EXPECT_EQ(disk.ReadString("FontStyles", "WarningStyle", ""), "10");

  Start();
  check("after a restart");
  EXPECT_TRUE(Viewer->GetMsgTypeStyle(ztmTiming).UseDefault);
  EXPECT_EQ(Viewer->GetMsgTypeStyle(ztmTiming).Style, 0);
}

TEST_F(OptionsTest, CancelChangesNothingAndTheColumnRulesHold) {
  Start();
  const TZTViewerOptions before = Viewer->CurrentOptions();
  RunOptions(ChangeEverything, false);
  EXPECT_TRUE(Viewer->GetAutoScroll());
  EXPECT_TRUE(Viewer->GetRowShading());
  EXPECT_EQ(Viewer->GetHighlightColor(), before.Display.HighlightColor);
  EXPECT_EQ(Viewer->MessageFontSetting(), before.Fonts.Message);
  EXPECT_TRUE(Viewer->GetMsgTypeStyle(ztmWarning).UseDefault);
  EXPECT_EQ(Viewer->GetColumnOptions(), 0);
  EXPECT_FALSE(Viewer->PaneVisible(TZTPane::Inspector));

  // The dialog opens on the window's state: one time kind chosen, the others off.
  Viewer->SetColumnOptions(2 | 128);
  RunOptions([](TfrmOptions& f) {
    TZTColumnsPage& c = *f.tabMsgDetails;
    EXPECT_TRUE(c.chkAppName->isChecked());
    EXPECT_TRUE(c.chkTime->isChecked());
    EXPECT_TRUE(c.optTimeDiff->isChecked());
    EXPECT_FALSE(c.optTimeStamp->isChecked());
    // Clearing the time box forgets the kind; Message Text Only clears everything.
    c.chkTime->setChecked(false);
    EXPECT_FALSE(c.optTimeDiff->isEnabled());
    c.btnAllColumns->click();
    EXPECT_TRUE(c.chkDate->isChecked());
    EXPECT_TRUE(c.optTimeDiff->isChecked()) << "ticking the box again brings the kind still chosen";
    c.btnMessageTextOnly->click();
    EXPECT_FALSE(c.chkTime->isChecked());
    EXPECT_FALSE(c.optTimeStamp->isEnabled());
    c.chkProcessID->setChecked(true);
  });
  EXPECT_EQ(Viewer->GetColumnOptions(), 8);

  // The column dialog alone: only the columns change.
  FPrompts->DialogHandler = [](QDialog& dialog) {
    auto* form = dynamic_cast<TfrmColumns*>(&dialog);
    EXPECT_NE(form, nullptr);
    if (!form) return int(QDialog::Rejected);
    EXPECT_EQ(form->windowTitle(), "Select Message Columns");
    EXPECT_TRUE(form->Page()->chkProcessID->isChecked());
    form->Page()->chkTime->setChecked(true);
    return int(QDialog::Accepted);
  };
  Viewer->Action(QStringLiteral("actSelectColumns"))->trigger();
  EXPECT_EQ(Viewer->GetColumnOptions(), 8 | 64);
  EXPECT_TRUE(Checked("actViewTimeStamp"));
  EXPECT_EQ(View()->ColumnOptions(), 8 | 64);
}
