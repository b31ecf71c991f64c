// One source, five test modules: each variant does one thing a real plug-in might get wrong or
// right, chosen by the definition its target sets.

#include <QLabel>
#include <stdexcept>

#include "ZTInspectorIntf.h"
#include "ZentrailMessageSet.h"
#include "ZentrailPlugIns.h"

namespace {

using namespace zentrail;

// A control that shows the text of the message it was given, so that a test sees what it read.
class TTestControl : public QLabel, public IInspectorSingleMessage {
 public:
  TTestControl() { setObjectName(QStringLiteral("TestControl")); }
  void InspectMessage() override { setText(QString::fromUtf8(MessageSet.GetMsgText())); }
};

class TTestInspector : public TZentrailCustomInspector {
 public:
  TTestInspector(int32_t content, QString name, bool withControl)
      : FContent(content), FName(std::move(name)), FWithControl(withControl) {}
  int32_t GetMsgContent() override { return FContent; }
  QString GetName() override { return FName; }
  QString GetVersion() override { return QStringLiteral("0.1"); }
  QString GetDescription() override { return QStringLiteral("A module of the plug-in tests."); }
  QString GetEmail() override { return QString(); }
  QString GetWebSite() override { return QString(); }
  QWidget* GetInspectorControl() override {
    if (FWithControl && !TZentrailCustomInspector::GetInspectorControl()) SetInspectorControl(new TTestControl);
    return TZentrailCustomInspector::GetInspectorControl();
  }

 private:
  int32_t FContent;
  QString FName;
  bool FWithControl;
};

}  // namespace

#ifndef ZT_TEST_MODULE_NoEntry
extern "C" __attribute__((visibility("default"))) void ZentrailRegister() {
#if defined(ZT_TEST_MODULE_StockBitmap)
  PlugInManager->RegisterInspector(new TTestInspector(ztmBitmap, QStringLiteral("Bitmap Text"), true));
#elif defined(ZT_TEST_MODULE_NoControl)
  PlugInManager->RegisterInspector(new TTestInspector(ztmUser + 7, QStringLiteral("No Control"), false));
#elif defined(ZT_TEST_MODULE_SecondHexDump)
  PlugInManager->RegisterInspector(new TTestInspector(ztmUser + 1, QStringLiteral("Second Hex Dump"), true));
#elif defined(ZT_TEST_MODULE_Throwing)
  throw std::runtime_error("The test module refuses to register.");
#endif
}
#endif
