// The viewer process: the settings object, the single instance, the application, the main window
// and the message loop, in that order; the settings go to disk once the window is gone.
#include <QApplication>
#include <QFontDatabase>
#include <QIcon>
#include <QLoggingCategory>
#include <cstdio>
#include <cstring>

#include "ZTCommonUtils.h"
#include "ZTMainForm.h"
#include "ZTMsgView.h"
#include "ZTPlugInManager.h"
#include "ZTPromptService.h"
#include "ZTSettingsStore.h"
#include "ZTSignalCloser.h"
#include "ZTSingleInstance.h"
#include "ZentrailMessageSet.h"

using namespace zentrail;

// What the viewer found at start and held at its end, for a user who asks why a plug-in or the help
// is missing: silent unless switched on with QT_LOGGING_RULES="zentrail.viewer.info=true".
Q_LOGGING_CATEGORY(ztViewerLog, "zentrail.viewer", QtWarningMsg)

namespace {

// "Segoe UI" 9 where it is installed, else "Tahoma" 8, else the desktop's own font.
QFont InterfaceFont() {
  if (QFontDatabase::hasFamily(QStringLiteral("Segoe UI"))) return QFont(QStringLiteral("Segoe UI"), 9);
  if (QFontDatabase::hasFamily(QStringLiteral("Tahoma"))) return QFont(QStringLiteral("Tahoma"), 8);
  return QFontDatabase::systemFont(QFontDatabase::GeneralFont);
}

constexpr const char* kUsage =
    "Usage: zentrail-viewer [FILE]\n"
    "\n"
    "Shows the messages that programs send through the Zentrail logging client, live as they\n"
    "arrive, and Zentrail log files (.ztl).\n"
    "\n"
    "  FILE        a log file, opened once the window is up; with more than one argument, or a\n"
    "              name that is not a file, nothing is opened\n"
    "  --help      this text\n"
    "  --version   the version\n"
    "\n"
    "One viewer runs per user. A second start ends at once and silently; it does not open its\n"
    "FILE in the viewer that runs (use File > Open there). Live messages arrive on the socket\n"
    "<runtime>/viewer; the runtime folder is $ZENTRAIL_RUNTIME_DIR, else $XDG_RUNTIME_DIR/zentrail,\n"
    "else /tmp/zentrail-<uid>. Plug-in modules are loaded from the folder PlugIns beside the\n"
    "program. Settings: $XDG_DATA_HOME/Orvan/Zentrail/5.0/ZTLiveViewer.ini.\n";

// --help and --version are answered before anything else, without a display and without the lock,
// so that they work in a terminal beside a running viewer.
bool AnsweredInformation(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (!std::strcmp(argv[i], "--help") || !std::strcmp(argv[i], "-h")) {
      std::fputs(kUsage, stdout);
      return true;
    }
    if (!std::strcmp(argv[i], "--version")) {
      std::puts("zentrail-viewer (Zentrail) " ZENTRAIL_VERSION_TEXT);
      return true;
    }
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (AnsweredInformation(argc, argv)) return 0;

  // The process-wide settings object comes first; everything after may read it.
  LoadViewerSettings();

  // The lock is tried before the display is opened, so that a second viewer ends at once and
  // silently even where it could not open a display; it never hands on its command line.
  TZTSingleInstance instance;
  std::string error;
  TZTSingleInstance::Result lock = instance.Acquire(error);
  if (lock == TZTSingleInstance::Result::AlreadyRunning) {
    // It read the file like any start and writes it back as it found it, as any end does.
    FlushViewerSettings(error);
    return 0;
  }

  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Zentrail Live Viewer"));
  QApplication::setApplicationDisplayName(QStringLiteral("Zentrail Live Viewer"));
  QApplication::setFont(InterfaceFont());
  // The desktop entry's name ties the windows to the menu entry and its icon (on Wayland the
  // application id); the icon of the installed theme is preferred to the one built in.
  QGuiApplication::setDesktopFileName(QStringLiteral("com.orvan.Zentrail"));
  QIcon builtIn;
  for (int size : {16, 32, 48, 64, 128, 256})
    builtIn.addFile(QStringLiteral(":/zentrail/icons/com.orvan.Zentrail-%1.png").arg(size), QSize(size, size));
  QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("com.orvan.Zentrail"), builtIn));

  // Plug-ins register first, the viewer's own view class after them; the manager outlives the window,
  // whose views and inspectors may be plug-in code.
  TInternalPlugInManager plugIns;
  plugIns.LoadPlugIns();
  plugIns.RegisterCustomView<TZTMessageView>(QString::fromLatin1(TZTMessageView::ViewClassKey));
  if (ztViewerLog().isInfoEnabled()) {
    qCInfo(ztViewerLog, "plug-in folder %sPlugIns/", GetExecutableFolder().c_str());
    for (int i = 0; i < plugIns.Packages().Count(); ++i)
      qCInfo(ztViewerLog, "plug-in module %s %s", qUtf8Printable(plugIns.Packages().Name(i)),
             plugIns.Packages().HModule(i) ? "loaded" : "not loaded");
    QStringList inspectors;
    plugIns.GetListOfInspectors(&inspectors);
    qCInfo(ztViewerLog, "plug-in inspectors: %s", qUtf8Printable(inspectors.join(QStringLiteral(", "))));
    const std::string help = HelpFolder();
    qCInfo(ztViewerLog, "help pages: %s", help.empty() ? "none" : help.c_str());
  }

  if (lock == TZTSingleInstance::Result::Failed) {
    PromptService().ShowMessage(nullptr, QString::fromStdString(error), TZTPromptKind::Error);
    return 1;
  }

  QStringList arguments = QApplication::arguments();
  arguments.removeFirst();
  int status = 0;
  {
    TFrmViewer viewer(arguments);
    TZTSignalCloser closer(&viewer);
    if (!viewer.StartChannel(error)) {
      // The window still serves log files; only live messages cannot arrive.
      PromptService().ShowMessage(&viewer,
                                  QStringLiteral("Live messages cannot be received: %1").arg(QString::fromStdString(error)),
                                  TZTPromptKind::Warning);
    }
    viewer.show();
    status = QApplication::exec();
    qCInfo(ztViewerLog, "closed with %d messages; the last log read gave %d records", MessageSet.GetRecordCount(),
           viewer.LastLoad().Records);
  }
  // The window wrote its state into the object as it closed, also when a signal closed it.
  // A failure here costs this run's settings and nothing else, so it is only reported.
  if (!FlushViewerSettings(error)) std::fprintf(stderr, "zentrail-viewer: settings not saved: %s\n", error.c_str());
  instance.Release();
  return status;
}
