#include "ZTPromptService.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <algorithm>

namespace zentrail {

namespace {

TZTPromptService& DefaultService() {
  static TZTPromptService service;
  return service;
}

TZTPromptService* gService = nullptr;

QString CaptionOrDefault(const QString& caption) {
  if (!caption.isEmpty()) return caption;
  const QString name = QApplication::applicationDisplayName();
  return name.isEmpty() ? QStringLiteral("Zentrail Viewer") : name;
}

QWidget* ParentOrActive(QWidget* parent) { return parent ? parent : QApplication::activeWindow(); }

}  // namespace

TZTPromptService::~TZTPromptService() = default;

void TZTPromptService::ShowMessage(QWidget* parent, const QString& text, TZTPromptKind kind,
                                   const QString& caption) {
  QMessageBox::Icon icon = QMessageBox::Information;
  if (kind == TZTPromptKind::Warning) icon = QMessageBox::Warning;
  if (kind == TZTPromptKind::Error) icon = QMessageBox::Critical;
  QMessageBox box(icon, CaptionOrDefault(caption), text, QMessageBox::Ok, ParentOrActive(parent));
  box.exec();
}

bool TZTPromptService::AskYesNo(QWidget* parent, const QString& text, const QString& caption) {
  QMessageBox box(QMessageBox::Question, CaptionOrDefault(caption), text, QMessageBox::Yes | QMessageBox::No,
                  ParentOrActive(parent));
  return box.exec() == QMessageBox::Yes;
}

void TZTPromptService::Beep() { QApplication::beep(); }

QString TZTPromptService::ChooseFile(QWidget* parent, const TZTFileDialogRequest& request, int& filterIndex) {
  QFileDialog dialog(ParentOrActive(parent), request.Title, request.Folder);
  dialog.setAcceptMode(request.Save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dialog.setFileMode(request.Save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  dialog.setNameFilters(request.Filters);
  dialog.setDefaultSuffix(request.DefaultSuffix);
  dialog.setSizeGripEnabled(true);
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return QString();
  filterIndex = std::max<int>(0, static_cast<int>(request.Filters.indexOf(dialog.selectedNameFilter())));
  return dialog.selectedFiles().front();
}

TZTAnswer TZTPromptService::AskYesNoCancel(QWidget* parent, const QString& text, const QString& caption) {
  QMessageBox box(QMessageBox::Question, CaptionOrDefault(caption), text,
                  QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, ParentOrActive(parent));
  box.setEscapeButton(QMessageBox::Cancel);
  switch (box.exec()) {
    case QMessageBox::Yes:
      return TZTAnswer::Yes;
    case QMessageBox::No:
      return TZTAnswer::No;
    default:
      return TZTAnswer::Cancel;
  }
}

int TZTPromptService::RunDialog(QDialog& dialog) { return dialog.exec(); }

TZTPromptService& PromptService() { return gService ? *gService : DefaultService(); }

void SetPromptService(TZTPromptService* service) { gService = service; }

void TZTRecordingPromptService::ShowMessage(QWidget*, const QString& text, TZTPromptKind kind,
                                            const QString& caption) {
  Prompts.push_back({text, caption, kind, false});
}

bool TZTRecordingPromptService::AskYesNo(QWidget*, const QString& text, const QString& caption) {
  Prompts.push_back({text, caption, TZTPromptKind::Information, true});
  if (Answers.empty()) return false;
  const bool answer = Answers.front();
  Answers.pop_front();
  return answer;
}

QString TZTRecordingPromptService::ChooseFile(QWidget*, const TZTFileDialogRequest& request, int& filterIndex) {
  FileDialogs.push_back(request);
  if (FileAnswers.empty()) return QString();
  TFileAnswer answer = FileAnswers.front();
  FileAnswers.pop_front();
  filterIndex = answer.Filter;
  return answer.Name;
}

TZTAnswer TZTRecordingPromptService::AskYesNoCancel(QWidget*, const QString& text, const QString& caption) {
  Prompts.push_back({text, caption, TZTPromptKind::Information, true});
  if (ThreeWayAnswers.empty()) return TZTAnswer::Cancel;
  const TZTAnswer answer = ThreeWayAnswers.front();
  ThreeWayAnswers.pop_front();
  return answer;
}

int TZTRecordingPromptService::RunDialog(QDialog& dialog) {
  Dialogs.push_back(dialog.objectName());
  return DialogHandler ? DialogHandler(dialog) : QDialog::Rejected;
}

TZTPromptServiceGuard::TZTPromptServiceGuard(TZTPromptService* service) : FPrevious(gService) {
  SetPromptService(service);
}

TZTPromptServiceGuard::~TZTPromptServiceGuard() { SetPromptService(FPrevious); }

}  // namespace zentrail
