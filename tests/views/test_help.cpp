// Context help opens pages below the install folder, never a real browser in tests.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "TestEnvironment.h"
#include "ZTHelp.h"
#include "ZTPromptService.h"

using namespace zentrail;
namespace fs = std::filesystem;

TEST(Help, OpensTheLowerCaseTopicPageOrSaysTheHelpIsMissing) {
  const fs::path registry = std::getenv("ZENTRAIL_REGISTRY");
  const fs::path install = test::MakeTempDir("install");
  std::vector<QUrl> opened;
  SetHelpOpener([&](const QUrl& url) {
    opened.push_back(url);
    return true;
  });
  TZTRecordingPromptService prompts;
  TZTPromptServiceGuard guard(&prompts);

  // Without an install path nothing happens at all.
  fs::remove(registry);
  ShowHelpTopic(QStringLiteral("Filters"));
  EXPECT_TRUE(opened.empty());
  EXPECT_TRUE(prompts.Prompts.empty());

  test::WriteFile(registry, "[Software\\Orvan\\Zentrail\\5.0]\nInstallPath=" + install.string() + "/\n");
  ShowHelpTopic(QStringLiteral("Filters"));
  EXPECT_TRUE(opened.empty());
  ASSERT_EQ(prompts.Prompts.size(), 1u);
  EXPECT_EQ(prompts.Prompts[0].Text, QStringLiteral("Zentrail Help File (Zentrail5.chm) could not be found."));
  EXPECT_EQ(prompts.Prompts[0].Caption, QStringLiteral("Zentrail"));
  EXPECT_EQ(prompts.Prompts[0].Kind, TZTPromptKind::Error);

  fs::create_directories(install / "Help");
  test::WriteFile(install / "Help" / "filters.htm", "<html></html>");
  ShowHelpTopic(QStringLiteral("Filters"));
  ASSERT_EQ(opened.size(), 1u);
  EXPECT_EQ(fs::path(opened[0].toLocalFile().toStdString()), install / "Help" / "filters.htm");
  EXPECT_EQ(prompts.Prompts.size(), 1u);
  CloseHelp();

  SetHelpOpener({});
  fs::remove(registry);
}
