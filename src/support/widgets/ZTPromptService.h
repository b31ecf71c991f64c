#pragma once
// The one road of every modal message and question of the viewer. Tests install a recording service,
// so no test ever waits on a dialog.

#include <QString>
#include <QStringList>
#include <deque>
#include <functional>
#include <vector>

class QDialog;
class QWidget;

namespace zentrail {

enum class TZTPromptKind { Information, Warning, Error };

// ---- Files, three-way questions and the viewer's own forms
enum class TZTAnswer { Yes, No, Cancel };

// What a file dialog is asked to be. Filters are in Qt's form, "Name (*.ext)".
struct TZTFileDialogRequest {
  bool Save = false;  // a save dialog asks before it overwrites; an open dialog wants an existing file
  QString Title;
  QStringList Filters;
  QString DefaultSuffix;
  QString Folder;  // where it starts
};

class TZTPromptService {
 public:
  virtual ~TZTPromptService();
  // A modal message box parented to parent (the active window when null). An empty caption means
  // the application's display name.
  virtual void ShowMessage(QWidget* parent, const QString& text, TZTPromptKind kind = TZTPromptKind::Information,
                           const QString& caption = QString());
  // A modal Yes/No question; true for Yes.
  virtual bool AskYesNo(QWidget* parent, const QString& text, const QString& caption = QString());
  // The system's short warning sound.
  virtual void Beep();

  // ---- Files, three-way questions and the viewer's own forms
  // A file dialog: the chosen file, or empty on Cancel. filterIndex receives the chosen filter
  // (0-based), as some commands act on the filter rather than the extension typed.
  virtual QString ChooseFile(QWidget* parent, const TZTFileDialogRequest& request, int& filterIndex);
  virtual TZTAnswer AskYesNoCancel(QWidget* parent, const QString& text, const QString& caption = QString());
  // Runs one of the viewer's forms modally and returns its result (QDialog::Accepted or Rejected).
  virtual int RunDialog(QDialog& dialog);
};

// The installed service; the message-box one unless SetPromptService replaced it.
TZTPromptService& PromptService();
// Installs a service (not owned); nullptr brings back the default.
void SetPromptService(TZTPromptService* service);

// For tests: keeps every prompt, answers questions from a queue (No when it runs dry) and counts beeps.
class TZTRecordingPromptService : public TZTPromptService {
 public:
  struct TPrompt {
    QString Text;
    QString Caption;
    TZTPromptKind Kind = TZTPromptKind::Information;
    bool Question = false;
  };
  void ShowMessage(QWidget* parent, const QString& text, TZTPromptKind kind, const QString& caption) override;
  bool AskYesNo(QWidget* parent, const QString& text, const QString& caption) override;
  void Beep() override { ++Beeps; }

  std::deque<bool> Answers;
  std::deque<TPrompt> Prompts;
  int Beeps = 0;

  // Files are answered from FileAnswers (Cancel when it runs dry), three-way questions from
  // ThreeWayAnswers (Cancel when dry), forms by DialogHandler (rejected when there is none).
  struct TFileAnswer {
    QString Name;
    int Filter = 0;
  };
  QString ChooseFile(QWidget* parent, const TZTFileDialogRequest& request, int& filterIndex) override;
  TZTAnswer AskYesNoCancel(QWidget* parent, const QString& text, const QString& caption) override;
  int RunDialog(QDialog& dialog) override;
  std::deque<TFileAnswer> FileAnswers;
  std::vector<TZTFileDialogRequest> FileDialogs;
  std::deque<TZTAnswer> ThreeWayAnswers;
  std::function<int(QDialog&)> DialogHandler;
  QStringList Dialogs;  // the object name of every form run
};

// Installs a service for the lifetime of the guard and restores the previous one afterwards.
class TZTPromptServiceGuard {
 public:
  explicit TZTPromptServiceGuard(TZTPromptService* service);
  ~TZTPromptServiceGuard();
  TZTPromptServiceGuard(const TZTPromptServiceGuard&) = delete;
  TZTPromptServiceGuard& operator=(const TZTPromptServiceGuard&) = delete;

 private:
  TZTPromptService* FPrevious;
};

}  // namespace zentrail
