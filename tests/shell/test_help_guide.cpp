// The user guide: a page for every topic the program asks for, no link or picture that leads
// nowhere, and the Help menu and the dialogs' help buttons opening their pages, in the viewer's own
// help window when nothing else is set.
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QPushButton>
#include <QRegularExpression>
#include <QTextBrowser>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "ShellFixture.h"
#include "TestEnvironment.h"
#include "ZTHelp.h"
#include "ZTHelpBrowser.h"
#include "ZTOptionsForm.h"
#include "ZTViewFilterForm.h"

using namespace zentrail;
using namespace zentrail::test;
namespace fs = std::filesystem;

namespace {

// The repository's help folder, two up from the test data (which need not exist itself).
const QString kGuide = QDir::cleanPath(QStringLiteral(ZENTRAIL_TEST_DATA_DIR "/../../help"));

// Every help key the program passes to ShowHelpTopic.
QStringList ProgramTopics() {
  TfrmViewFilter filter(nullptr);
  return {QStringLiteral("Viewer"), QStringLiteral("ZentrailLoggingSystem"), TfrmOptions::HelpKeyword(),
          filter.HelpKeyword(), QStringLiteral("Viewer_Commands_Organize_ModifyView")};
}

class HelpGuideTest : public ShellFixture {
 protected:
  // An installed layout whose Help folder is the repository's guide.
  fs::path Install() {
    const fs::path install = MakeTempDir("install");
    fs::create_directory_symlink(fs::path(kGuide.toStdString()), install / "Help");
    WriteFile(std::getenv("ZENTRAIL_REGISTRY"), "[Software\\Orvan\\Zentrail\\5.0]\nInstallPath=" + install.string() + "/\n");
    return install;
  }
  void TearDown() override {
    SetHelpOpener({});
    fs::remove(std::getenv("ZENTRAIL_REGISTRY"));
    ShellFixture::TearDown();
  }
};

}  // namespace

TEST(HelpGuide, EveryTopicHasAPageAndNoLinkOrPictureLeadsNowhere) {
  const QDir guide(kGuide);
  ASSERT_TRUE(guide.exists()) << kGuide.toStdString();
  for (const QString& topic : ProgramTopics())
    EXPECT_TRUE(guide.exists(topic.toLower() + QStringLiteral(".htm"))) << topic.toStdString();

  static const QRegularExpression reference(QStringLiteral(R"((?:href|src)="([^"#:]+)(?:#[^"]*)?")"));
  static const QRegularExpression title(QStringLiteral("<title>([^<]+)</title>"));
  std::set<QString> pictures;
  int pages = 0;
  for (const QString& name : guide.entryList({QStringLiteral("*.htm")})) {
    ++pages;
    QFile file(guide.filePath(name));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString html = QString::fromUtf8(file.readAll());
    EXPECT_TRUE(title.match(html).hasMatch()) << name.toStdString() << " has no title";
    EXPECT_TRUE(html.contains(QStringLiteral("href=\"style.css\""))) << name.toStdString();
    for (auto it = reference.globalMatch(html); it.hasNext();) {
      const QString target = it.next().captured(1);
      EXPECT_TRUE(guide.exists(target)) << name.toStdString() << " refers to the missing " << target.toStdString();
      if (target.endsWith(QLatin1String(".png"))) pictures.insert(target);
    }
  }
  EXPECT_GE(pages, 12);
  // The pictures are real ones of a finished window, not empty files.
  EXPECT_TRUE(pictures.count(QStringLiteral("images/main-window.png")));
  EXPECT_TRUE(pictures.count(QStringLiteral("images/options-general.png")));
  for (const QString& picture : pictures) {
    const QImage image(guide.filePath(picture));
    EXPECT_FALSE(image.isNull()) << picture.toStdString();
    EXPECT_GT(image.width(), 200) << picture.toStdString();
  }
}

TEST_F(HelpGuideTest, TheHelpMenuAndTheOptionsHelpButtonOpenTheirPages) {
  const fs::path install = Install();
  std::vector<fs::path> opened;
  SetHelpOpener([&](const QUrl& url) {
    opened.push_back(fs::path(url.toLocalFile().toStdString()));
    return true;
  });
  Viewer->Action(QStringLiteral("actHelpProduct"))->trigger();
  Viewer->Action(QStringLiteral("actHelpZentrail"))->trigger();
  FPrompts->DialogHandler = [](QDialog& dialog) {
    if (auto* options = dynamic_cast<TfrmOptions*>(&dialog)) options->btnHelp->click();
    return int(QDialog::Rejected);
  };
  Viewer->Action(QStringLiteral("actOptions"))->trigger();
  ASSERT_EQ(opened.size(), 3u);
  EXPECT_EQ(opened[0], install / "Help" / "viewer.htm");
  EXPECT_EQ(opened[1], install / "Help" / "zentrailloggingsystem.htm");
  EXPECT_EQ(opened[2], install / "Help" / "viewer_commands_tools_options.htm");
  EXPECT_TRUE(FPrompts->Prompts.empty());

  // Without an opener of its own the page shows in the viewer's help window, which follows links.
  SetHelpOpener({});
  Viewer->Action(QStringLiteral("actHelpProduct"))->trigger();
  TZTHelpBrowser* help = Viewer->HelpBrowser();
  ASSERT_NE(help, nullptr);
  EXPECT_TRUE(help->isVisible());
  EXPECT_EQ(help->Browser()->documentTitle(), "Zentrail Viewer Help");
  EXPECT_TRUE(help->Browser()->toPlainText().contains("Getting started"));
  help->Browser()->setSource(QUrl(QStringLiteral("viewer_commands_tools_options.htm")));
  EXPECT_EQ(help->Browser()->documentTitle(), "Options");
  EXPECT_TRUE(help->Browser()->isBackwardAvailable());
}
