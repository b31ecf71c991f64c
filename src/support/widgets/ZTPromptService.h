#pragma once
// The one road of every modal message and question of the viewer. Tests install a recording service,
// so no test ever waits on a dialog.

#include <QString>
#include <QStringList>
#include <deque>

class QWidget;

namespace zentrail {

enum class TZTPromptKind { Information, Warning, Error };
enum class TZTAnswer { Yes, No, Cancel };

// What a file dialog asks for. Filter in Qt's form ("Projects (*.ztp)").
struct TZTFileDialog {
  bool Save = false;
  QString Title;
  QString Folder;
  QString Filter;
  QString DefaultSuffix;
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
  // A modal Yes/No/Cancel question.
  virtual TZTAnswer AskYesNoCancel(QWidget* parent, const QString& text, const QString& caption = QString());
  // A modal file dialog; the chosen path, or empty when cancelled. A save dialog asks before it
  // overwrites; an open dialog takes only a file that exists.
  virtual QString ChooseFile(QWidget* parent, const TZTFileDialog& dialog);
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
  // Kept as a question; answered from ThreeWayAnswers, Cancel when it runs dry.
  TZTAnswer AskYesNoCancel(QWidget* parent, const QString& text, const QString& caption) override;
  // Kept with the title as its text; answered from Files, empty (cancelled) when it runs dry.
  QString ChooseFile(QWidget* parent, const TZTFileDialog& dialog) override;

  std::deque<TZTAnswer> ThreeWayAnswers;
  std::deque<QString> Files;
  std::deque<bool> Answers;
  std::deque<TPrompt> Prompts;
  int Beeps = 0;
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
