// Every stock inspector reads the Details of a message that any program may have sent: pictures as
// hexadecimal PNG or bitmap bytes, tables, properties, hierarchies, XML, colours, text. Each input
// becomes one message in the store, shown through the inspector pane exactly as the main window
// shows the focused message; whatever the bytes, the pane must show something and go on.
#include <sys/stat.h>

#include <QApplication>
#include <cstdint>
#include <filesystem>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "ZTInspectorPane.h"
#include "ZentrailMessageSet.h"

namespace {

// The contents that have an inspector of their own, and plain text for everything else.
constexpr int32_t kContents[] = {4, 5, 6, 7, 16, 17, 18, 19, 20, 21, 22, 31, 32, 33, 34, 35, 36, 38, 41, 44};

zentrail::TZTInspectorPane& Pane() {
  static int argc = 1;
  static char name[] = "fuzz_inspectors";
  static char* argv[] = {name, nullptr};
  static QApplication* app = [] {
    // Nothing of the real home, display or runtime folder is touched: a private folder stands in.
    static char root[] = "/tmp/zentrail-fuzz-XXXXXX";
    if (!mkdtemp(root)) std::abort();
    std::atexit([] {
      std::error_code ec;
      std::filesystem::remove_all(root, ec);
    });
    const std::string base = root;
    for (const char* dir : {"XDG_RUNTIME_DIR", "HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME",
                            "ZENTRAIL_RUNTIME_DIR"}) {
      std::string path = base + "/" + dir;
      mkdir(path.c_str(), 0700);
      setenv(dir, path.c_str(), 1);
    }
    setenv("ZENTRAIL_REGISTRY", (base + "/registry.ini").c_str(), 1);
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    return new QApplication(argc, argv);
  }();
  (void)app;
  static auto* pane = new zentrail::TZTInspectorPane();
  return *pane;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace zentrail;
  if (size < 1) return 0;
  TZTInspectorPane& pane = Pane();
  // First byte: the content; up to the first NUL: the type name (which picks PNG or bitmap for
  // pictures); the rest: the details.
  std::string_view rest(reinterpret_cast<const char*>(data + 1), size - 1);
  TZentrailMessage m;
  m.MsgType = ztmInfo;
  m.MsgContent = kContents[data[0] % std::size(kContents)];
  auto nul = rest.find('\0');
  if (nul != std::string_view::npos && nul <= 32) {
    m.TypeName = std::string(rest.substr(0, nul));
    rest.remove_prefix(nul + 1);
  }
  m.Details = std::string(rest);
  m.MsgText = "fuzz";
  // One record at a time: the store starts afresh for each input.
  MessageSet.Close();
  MessageSet.Open();
  MessageSet.AppendMessage(m, 1);
  MessageSet.Last();
  pane.ShowCurrentMessage(1);
  QCoreApplication::processEvents();
  return 0;
}
