// Logging from a Qt program: a widget's properties, its screenshot, its widget tree, a colour and
// a QVariant. With a file name as argument the messages go to that log file instead of the viewer.
#include <zentrail/ZentrailQt.h>

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>
#include <QWidget>
#include <cstdio>
#include <memory>

using namespace zentrail;

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  std::unique_ptr<TZentrailDestination> file;
  if (argc > 1) {
    file = std::make_unique<TZentrailDestination>(std::string("File[Path=") + argv[1] + "]");
    ZentrailLog.SetDestination(file.get());
  }
  ZentrailLog.SetCategory("qt example");

  QWidget form;
  form.setObjectName("frmSettings");
  form.setWindowTitle("Settings");
  auto* layout = new QVBoxLayout(&form);
  auto* label = new QLabel("User name", &form);
  auto* edit = new QLineEdit("chen.li", &form);
  edit->setObjectName("edtUser");
  auto* check = new QCheckBox("Remember me", &form);
  check->setObjectName("chkRemember");
  check->setChecked(true);
  layout->addWidget(label);
  layout->addWidget(edit);
  layout->addWidget(check);
  form.resize(260, 120);

  {
    auto trace = ZentrailLog.TraceMethod("TSettingsForm.Show");
    qt::Send(ZentrailLog, "User name box", edit);
    qt::SendScreenShot(ZentrailLog, "Settings form", &form);
    qt::SendControls(ZentrailLog, "Settings widgets", &form);
    qt::SendColor(ZentrailLog, "Accent", QColor(0, 120, 215));
    qt::SendVariant(ZentrailLog, "Recent users", QStringList{"chen.li", "eva.novak"});
    qt::SendSystemInfo(ZentrailLog);
  }
  const bool ok = ZentrailLog.Enabled();
  ZentrailLog.SetDestination(nullptr);
  std::printf("%s\n", ok ? "sent" : "not sent: is the viewer running?");
  return ok ? 0 : 1;
}
