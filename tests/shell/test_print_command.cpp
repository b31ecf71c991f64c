// The Print command: the print form as the window fills it, its column and selection rules, the
// choices kept for the next print, and a printer that cannot be written to.
#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <filesystem>

#include "ShellFixture.h"
#include "TestEnvironment.h"
#include "ZTMsgViewPrint.h"
#include "ZTPrintForm.h"

using namespace zentrail;
using namespace zentrail::test;
namespace fs = std::filesystem;

TEST_F(ShellFixture, ThePrintFormFilledFromTheWindowPrintsTheActiveView) {
  for (int i = 0; i < 30; ++i) Viewer->ProcessMessage(MakeMessage(ztmInfo, "row " + std::to_string(i)));
  Viewer->SetColumnOptions(ztcoAppName | ztcoTimeDiff);
  Viewer->UpdateCommandStates();
  ASSERT_TRUE(Viewer->Action("actPrint")->isEnabled());
  const fs::path pdf = MakeTempDir("print-command") / "view.pdf";

  TfrmPrint* seen = nullptr;
  FPrompts->DialogHandler = [&](QDialog& dialog) {
    seen = qobject_cast<TfrmPrint*>(&dialog);
    if (!seen) return int(QDialog::Rejected);
    EXPECT_EQ(seen->windowTitle(), "Print Zentrail Messages");
    EXPECT_EQ(seen->Title(), "All Messages");
    // Nothing is selected: the box is greyed and the label says why.
    EXPECT_FALSE(seen->chkPrintSelectedMsgs->isEnabled());
    EXPECT_FALSE(seen->lblNoSelection->isHidden());
    EXPECT_EQ(seen->FontSize(), 8);
    EXPECT_EQ(seen->spnFontSize->minimum(), 6);
    EXPECT_EQ(seen->spnFontSize->maximum(), 36);
    EXPECT_EQ(seen->Columns(), ztcoAppName | ztcoTimeDiff);
    EXPECT_TRUE(seen->optTimeDiff->isChecked());
    // The time rule: off greys the three choices; on again with none chosen takes the time stamp.
    seen->chkTime->setChecked(false);
    EXPECT_FALSE(seen->optTimeStamp->isEnabled());
    EXPECT_EQ(seen->Columns(), ztcoAppName);
    seen->optTimeDiff->setAutoExclusive(false);
    seen->optTimeDiff->setChecked(false);
    seen->optTimeDiff->setAutoExclusive(true);
    seen->chkTime->setChecked(true);
    EXPECT_TRUE(seen->optTimeStamp->isChecked());
    seen->btnAllColumns->click();
    EXPECT_EQ(seen->Columns(), ztcoCategory | ztcoAppName | ztcoComputerName | ztcoProcessID | ztcoThreadName |
                                   ztcoDate | ztcoTimeStamp);
    seen->spnFontSize->setValue(11);
    seen->edtTitle->setText("Tonight");
    // Print to PDF File: the file dialog of the prompt service, then the printer shows the file.
    FPrompts->FileAnswers = {{QString::fromStdString(pdf.string()), 0}};
    seen->btnPrintToPdf->click();
    EXPECT_TRUE(seen->stsPrinter->text().contains(QString::fromStdString(pdf.string())));
    // Kept in the build tree for a look by eye.
    const fs::path screens = fs::path(ZENTRAIL_BINARY_DIR) / "test-screens" / "shell";
    fs::create_directories(screens);
    seen->grab().save(QString::fromStdString((screens / "print-form.png").string()));
    return int(QDialog::Accepted);
  };
  Viewer->Action("actPrint")->trigger();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(fs::exists(pdf));
  EXPECT_EQ(ReadFile(pdf).rfind("%PDF", 0), 0u);
  EXPECT_EQ(Viewer->PrintFontSize, 11);
  EXPECT_TRUE(FPrompts->Prompts.empty());

  // With a selection the box can be ticked; what was chosen is kept for the next print.
  AllMessages().SetSelected(3, true);
  FPrompts->DialogHandler = [&](QDialog& dialog) {
    auto* form = qobject_cast<TfrmPrint*>(&dialog);
    EXPECT_TRUE(form->chkPrintSelectedMsgs->isEnabled());
    EXPECT_TRUE(form->lblNoSelection->isHidden());
    EXPECT_EQ(form->FontSize(), 11);
    form->chkPrintSelectedMsgs->setChecked(false);
    // A PDF file in a folder that is not there cannot be written: the print says so.
    ViewPrinter().setOutputFileName(QString::fromStdString((pdf.parent_path() / "none" / "x.pdf").string()));
    return int(QDialog::Accepted);
  };
  Viewer->Action("actPrint")->trigger();
  EXPECT_FALSE(Viewer->PrintSelection);
  ASSERT_EQ(FPrompts->Prompts.size(), 1u);
  EXPECT_TRUE(FPrompts->Prompts.back().Text.contains("cannot be written")) << FPrompts->Prompts.back().Text.toStdString();
}
