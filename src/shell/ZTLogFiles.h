#pragma once
// The parts of the log file commands that stand apart from the main window: their texts, their
// file dialogs, the invalid-log form with its shortened path, and the gate that keeps the user's
// input away from a window that is reading a log while it still repaints and hears Esc.

#include <QDialog>
#include <QString>
#include <cstdint>

#include "ZTPromptService.h"

class QFontMetrics;
class QLabel;

namespace zentrail {

// The texts as the program keeps them, "\r" for a line break.
QString LoadQuestionText();                                     // 65259
QString InvalidLogText(const QString& path);                    // 65274
QString UnsupportedFormatText(uint32_t tag);
// "\r" line breaks as a label shows them.
QString DisplayText(QString text);

enum class TZTLogDialog { Open, Append, Save, Export, Follow };
// What each command's file dialog is; all start in folder.
TZTFileDialogRequest LogFileDialogSpec(TZTLogDialog kind, const QString& folder);
// The folder part of a chosen file, with a trailing "/", as the dialogs start there next time.
QString FolderOfFile(const QString& fileName);

// The path made to fit width: the root stays, and the folders after it give way to ".../" one by
// one from the left until it fits; a name that alone is too wide is cut in the middle.
QString ShortenPathToWidth(const QString& path, const QFontMetrics& metrics, int width);

// "Zentrail Viewer" with the text of 65274, the path shortened to the width of its label, and an
// OK button. note, when given, follows as a paragraph of its own.
class TfrmInvalidLog : public QDialog {
  Q_OBJECT
 public:
  TfrmInvalidLog(QWidget* parent, const QString& path, const QString& note = QString());
  QLabel* TextLabel() const { return lblText; }
  static constexpr int LabelWidth = 440;

 private:
  QLabel* lblText;
};

// Installed on the application while a log is read. The window goes on painting, but nothing the
// user does reaches it: a command could otherwise change the store or the views in the middle of
// the load. Esc cancels the load, and so does closing the window, which then closes after it.
class TZTLoadInputGate : public QObject {
  Q_OBJECT
 public:
  explicit TZTLoadInputGate(QWidget* window);
  ~TZTLoadInputGate() override;
  bool Cancelled() const { return FCancelled; }
  bool CloseWanted() const { return FCloseWanted; }
  void Cancel() { FCancelled = true; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QWidget* FWindow;
  bool FCancelled = false;
  bool FCloseWanted = false;
};

}  // namespace zentrail
