// A sample view plug-in: the view class "Audit Trail", a message view that takes only messages whose
// text begins with "[audit]" (in any case), and among them what its own filter accepts.

#include <string_view>

#include "ZTMsgView.h"
#include "ZentrailMessageSet.h"
#include "ZentrailPlugIns.h"

namespace zentrail {

class TZTPrefixView : public TZTMessageView {
 public:
  static constexpr const char* ClassKey = "Audit Trail";
  static constexpr std::string_view Prefix = "[audit]";

  // The owner is the main window, which is the application the view asks for its settings.
  explicit TZTPrefixView(QWidget* owner) : TZTMessageView(owner, dynamic_cast<IZentrailApplication*>(owner)) {}

  void AddMessage(bool force) override {
    if (!force && !HasPrefix(MessageSet.GetMsgText())) return;
    TZTMessageView::AddMessage(force);
  }
  QString GetViewClassName() override { return QString::fromLatin1(ClassKey); }

 private:
  static bool HasPrefix(std::string_view text) {
    if (text.size() < Prefix.size()) return false;
    for (size_t i = 0; i < Prefix.size(); ++i) {
      char c = text[i];
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
      if (c != Prefix[i]) return false;
    }
    return true;
  }
};

}  // namespace zentrail

extern "C" __attribute__((visibility("default"))) void ZentrailRegister() {
  zentrail::PlugInManager->RegisterCustomView<zentrail::TZTPrefixView>(
      QString::fromLatin1(zentrail::TZTPrefixView::ClassKey));
}
