// The default prompts of the inspectors: messages go through the viewer's one prompt service, and
// the print question is a small dialog of its own that the shell may replace.

#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>

#include "ZTInspectorIntf.h"
#include "ZTPromptService.h"

namespace zentrail {

namespace {

class TDefaultInspectorPrompts : public IZTInspectorPrompts {
 public:
  void ShowMessage(QWidget* parent, const QString& caption, const QString& text) override {
    PromptService().ShowMessage(parent, text, TZTPromptKind::Error, caption);
  }

  bool ChoosePrinter(QWidget* parent, const QString& caption, QString& title, QPrinter& printer) override {
    QDialog dialog(parent);
    dialog.setWindowTitle(caption);
    auto* form = new QFormLayout(&dialog);
    auto* titleEdit = new QLineEdit(title, &dialog);
    titleEdit->setMinimumWidth(320);
    auto* printerName = new QLabel(printer.printerName().isEmpty() ? QStringLiteral("(default printer)")
                                                                  : printer.printerName(),
                                   &dialog);
    form->addRow(QStringLiteral("&Title:"), titleEdit);
    form->addRow(QStringLiteral("Printer:"), printerName);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    QPushButton* setup = buttons->addButton(QStringLiteral("&Printer..."), QDialogButtonBox::ActionRole);
    form->addRow(buttons);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    QObject::connect(setup, &QPushButton::clicked, &dialog, [&] {
      QPrintDialog printDialog(&printer, &dialog);
      printDialog.setOption(QAbstractPrintDialog::PrintPageRange, false);
      printDialog.setOption(QAbstractPrintDialog::PrintSelection, false);
      if (printDialog.exec() == QDialog::Accepted) {
        printerName->setText(printer.outputFileName().isEmpty() ? printer.printerName() : printer.outputFileName());
      }
    });
    if (dialog.exec() != QDialog::Accepted) return false;
    title = titleEdit->text();
    return true;
  }
};

TDefaultInspectorPrompts gDefaultPrompts;
IZTInspectorPrompts* gPrompts = nullptr;

}  // namespace

IZTInspectorPrompts& InspectorPrompts() { return gPrompts ? *gPrompts : gDefaultPrompts; }

void SetInspectorPrompts(IZTInspectorPrompts* prompts) { gPrompts = prompts; }

}  // namespace zentrail
