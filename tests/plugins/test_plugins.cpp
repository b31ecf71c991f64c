// Plug-in modules loaded for real: the two samples, a file that is no shared library, a module
// without the entry point, one that throws while it registers, one that takes a stock content code,
// one without a control and a second inspector for a code already taken. Then the viewer shows what
// they registered, and the plug-ins dialog lists it.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <filesystem>

#include "ShellFixture.h"
#include "TestEnvironment.h"
#include "ZTAboutPlugInsForm.h"
#include "ZTInspectorPane.h"
#include "ZTNavigator.h"
#include "ZTPlugInManager.h"

using namespace zentrail;
using namespace zentrail::test;
namespace fs = std::filesystem;

namespace {

// The modules of one run in a folder of their own, as the folder PlugIns beside the viewer.
fs::path PlugInFolder() {
  const fs::path folder = MakeTempDir("PlugIns");
  for (const char* name : {"ZTHexDump.so", "ZTPrefixView.so"})
    fs::copy_file(fs::path(ZENTRAIL_PLUGIN_DIR) / name, folder / name);
  for (const auto& entry : fs::directory_iterator(ZENTRAIL_TEST_MODULES))
    if (entry.path().extension() == ".so") fs::copy_file(entry.path(), folder / entry.path().filename());
  WriteFile(folder / "Broken.so", "this is a text file, not a shared library\n");
  WriteFile(folder / "readme.txt", "not a module at all");
  fs::create_directory(folder / "folder.so");
  return folder;
}

class PlugInTest : public ShellFixture {
 protected:
  void SetUp() override {
    // The manager comes before the window and its modules register before the viewer's own class.
    FLoadPrompts = std::make_unique<TZTRecordingPromptService>();
    {
      TZTPromptServiceGuard guard(FLoadPrompts.get());
      Manager = std::make_unique<TInternalPlugInManager>();
      Manager->LoadPlugInsFrom(QString::fromStdString(PlugInFolder().string()));
    }
    ShellFixture::SetUp();
  }
  void TearDown() override {
    ShellFixture::TearDown();
    Manager.reset();
    EXPECT_EQ(PlugInManager, nullptr);
  }
  int Show(int32_t content, const std::string& text, const std::string& details = {}, int selectSecond = -1) {
    TZentrailMessage m = MakeMessage(ztmInfo, text);
    m.MsgContent = content;
    m.Details = details;
    Viewer->ProcessMessage(m);
    auto* view = dynamic_cast<IZTMessageViewList*>(&AllMessages());
    const int row = AllMessages().GetCount() - 1;
    for (int r = 0; r < row; ++r) AllMessages().SetSelected(r, false);
    view->SetFocusedMsgIndex(row);
    if (selectSecond >= 0) AllMessages().SetSelected(selectSecond, true);
    Viewer->UpdateMessageDetails();
    return Viewer->InspectorPane()->CurrentPanel();
  }
  QWidget* Visible() { return Viewer->InspectorPane()->VisibleControl(); }
  QString VisibleText() {
    if (auto* memo = dynamic_cast<QPlainTextEdit*>(Visible())) return memo->toPlainText();
    if (auto* label = dynamic_cast<QLabel*>(Visible())) return label->text();
    return QString();
  }

  std::unique_ptr<TZTRecordingPromptService> FLoadPrompts;
  std::unique_ptr<TInternalPlugInManager> Manager;
};

}  // namespace

TEST_F(PlugInTest, EveryModuleIsTriedAndEachFailureGivesOneMessage) {
  // Broken.so and the throwing module: one message each, titled "Error"; nothing for the rest.
  ASSERT_EQ(FLoadPrompts->Prompts.size(), 2u);
  EXPECT_EQ(FLoadPrompts->Prompts[0].Caption, "Error");
  EXPECT_TRUE(FLoadPrompts->Prompts[0].Text.contains("Broken.so")) << FLoadPrompts->Prompts[0].Text.toStdString();
  EXPECT_EQ(FLoadPrompts->Prompts[1].Text, "The test module refuses to register.");
  EXPECT_EQ(FLoadPrompts->Prompts[1].Kind, TZTPromptKind::Warning);

  // Every module file is listed by name, the folder and the text file are not; only Broken.so has
  // no handle.
  QStringList names;
  for (int i = 0; i < Manager->Packages().Count(); ++i) {
    names << Manager->Packages().Name(i);
    EXPECT_EQ(Manager->Packages().HModule(i) == nullptr, Manager->Packages().Name(i) == "Broken.so");
  }
  EXPECT_EQ(names, (QStringList{"Broken.so", "ZTHexDump.so", "ZTPrefixView.so", "ZTTestNoControl.so",
                                "ZTTestNoEntry.so", "ZTTestSecondHexDump.so", "ZTTestStockBitmap.so",
                                "ZTTestThrowing.so"}));
  QStringList inspectors;
  EXPECT_EQ(Manager->GetListOfInspectors(&inspectors), 4);
  EXPECT_EQ(inspectors, (QStringList{"Hex Dump", "No Control", "Second Hex Dump", "Bitmap Text"}));
  // Two plug-ins for one code: the one loaded first answers.
  EXPECT_EQ(Manager->GetInspector(ztmUser + 1)->GetName(), "Hex Dump");
  EXPECT_EQ(Manager->GetInspectorByName("Second Hex Dump")->GetMsgContent(), ztmUser + 1);
  EXPECT_EQ(Manager->GetInspectorByName("hex dump"), nullptr) << "names compare exactly";
  EXPECT_TRUE(ViewClasses().Keys().contains("Audit Trail"));
  QStringList none;
  EXPECT_FALSE(Manager->GetPackageFiles(QString(), &none));
  EXPECT_FALSE(Manager->GetPackageFiles(QStringLiteral("/no/such/folder"), &none));
}

TEST_F(PlugInTest, InspectorsShowTheirCodesAndTheStoreIsShared) {
  Viewer->resize(1000, 700);
  Viewer->show();
  Viewer->SetPaneVisible(TZTPane::Inspector, true);

  // The sample's dump of the selected message's payload: the module reads the viewer's store.
  EXPECT_EQ(Show(ztmUser + 1, "payload", "48656C6C6F2C20776F726C640001FF7E"), TZTInspectorPane::pnCustom);
  ASSERT_NE(Visible(), nullptr);
  EXPECT_EQ(Visible()->objectName(), "ZTHexDumpControl");
  EXPECT_EQ(VisibleText().toStdString(),
            "00000000  48 65 6C 6C 6F 2C 20 77  6F 72 6C 64 00 01 FF 7E  Hello, world...~\n");
  EXPECT_TRUE(Viewer->Action("actCopyInspectorContents")->isEnabled()) << "its control can copy";

  // A plug-in for a stock code takes one selected message, and leaves a pair to the stock inspector
  // as its control can't compare two.
  EXPECT_EQ(Show(ztmBitmap, "bitmap as text"), TZTInspectorPane::pnCustom);
  EXPECT_EQ(VisibleText(), "bitmap as text");
  EXPECT_EQ(Show(ztmBitmap, "two bitmaps", {}, AllMessages().GetCount() - 2), TZTInspectorPane::pnBitmap);

  // The two memo texts: an inspector without a control, and a code without an inspector.
  EXPECT_EQ(Show(ztmUser + 7, "no control"), TZTInspectorPane::pnCustom);
  EXPECT_EQ(VisibleText(), "The \"No Control\" custom inspector does not define an inspector control.\n\nPlease "
                           "contact the author of the plug-in.");
  EXPECT_EQ(Show(ztmUser + 5, "nobody"), TZTInspectorPane::pnCustom);
  EXPECT_EQ(VisibleText(), "Custom inspector for message type (ztmUser + 5) not found.\n\nYou may be missing a "
                           "custom inspector plug-in.");

  const QByteArray dir = qgetenv("ZENTRAIL_SCREENSHOT_DIR");
  Show(ztmUser + 1, "payload", "5A454E545241494C2D504C55472D494E0A09000102030405060708090A0B0C0D0E0F");
  SpinUntil([] { return false; }, 150);
  if (!dir.isEmpty()) Viewer->grab().save(QDir(QString::fromUtf8(dir)).filePath("plugin-hexdump.png"));
}

TEST_F(PlugInTest, AViewClassFromAModuleFiltersByItsPrefix) {
  IZTMessageView* audit = Viewer->CreateView("Audit", {}, true, true, "Audit Trail");
  ASSERT_NE(audit, nullptr);
  EXPECT_EQ(audit->GetViewClassName(), "Audit Trail");
  for (const char* text : {"[audit] user root logged in", "plain line", "[AUDIT] password changed", "[aud"}) {
    Viewer->ProcessMessage(MakeMessage(ztmInfo, text));
  }
  EXPECT_EQ(audit->GetCount(), 2);
  EXPECT_EQ(AllMessages().GetCount(), 4);
  // Its own filter still applies on top.
  TZTFilterCriteria errors;
  errors.CheckMsgTypes = true;
  errors.MsgTypeSet.set(ztmError);
  Viewer->ModifyView(audit, "Audit errors", errors);
  EXPECT_EQ(audit->GetCount(), 0);
  Viewer->ProcessMessage(MakeMessage(ztmError, "[audit] denied"));
  EXPECT_EQ(audit->GetCount(), 1);
}

TEST_F(PlugInTest, AboutPlugInsListsWhatLoaded) {
  Viewer->show();
  bool shown = false;
  Viewer->Navigator().RunDialog = [&](QDialog& dialog) {
    shown = true;
    auto& about = dynamic_cast<TfrmAboutPlugIns&>(dialog);
    EXPECT_EQ(about.windowTitle(), "Zentrail Viewer Plug-Ins");
    QStringList items;
    for (int i = 0; i < about.PlugInList()->count(); ++i) items << about.PlugInList()->item(i)->text();
    EXPECT_EQ(items, (QStringList{"Bitmap Text", "Hex Dump", "No Control", "Second Hex Dump"})) << "sorted";
    EXPECT_EQ(about.PlugInList()->currentRow(), 0);
    EXPECT_EQ(about.MsgType()->text(), "ztmBitmap");
    EXPECT_TRUE(about.Email()->text().isEmpty());
    about.PlugInList()->setCurrentRow(1);
    EXPECT_EQ(about.MsgType()->text(), "ztmUser + 1");
    EXPECT_EQ(about.Version()->text(), "1.0");
    EXPECT_TRUE(about.LongDescription()->text().startsWith("Shows the binary payload"));
    EXPECT_TRUE(about.Email()->text().contains("mailto:plugins@zentrail.example"));
    EXPECT_TRUE(about.WebSite()->text().contains("https://zentrail.example/plugins/hexdump"));
    about.show();
    SpinUntil([] { return false; }, 100);
    const QByteArray dir = qgetenv("ZENTRAIL_SCREENSHOT_DIR");
    if (!dir.isEmpty()) about.grab().save(QDir(QString::fromUtf8(dir)).filePath("about-plugins.png"));
    return int(QDialog::Accepted);
  };
  Viewer->Action("actPlugIns")->trigger();
  EXPECT_TRUE(shown);

  // Without inspectors, only the message.
  Viewer.reset();
  Manager.reset();
  Manager = std::make_unique<TInternalPlugInManager>();
  ViewClasses().Register(QString::fromLatin1(TZTMessageView::ViewClassKey), &TZTMessageView::Create);
  Viewer = std::make_unique<TFrmViewer>();
  shown = false;
  Viewer->Action("actPlugIns")->trigger();
  EXPECT_FALSE(shown);
  ASSERT_FALSE(FPrompts->Prompts.empty());
  EXPECT_EQ(FPrompts->Prompts.back().Text, "There are no Zentrail Inspector plug-ins loaded.");
}
