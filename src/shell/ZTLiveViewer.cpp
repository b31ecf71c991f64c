// The viewer process: module start, the single instance, the main window and the message loop.
#include <QApplication>

#include "ZTSingleInstance.h"

int main(int argc, char** argv) {
  zentrail::TZTSingleInstance instance;
  std::string error;
  if (instance.Acquire(error) != zentrail::TZTSingleInstance::Result::Acquired) return 0;
  QApplication app(argc, argv);
  return 0;
}
