#pragma once
// The small forms of a message view: the in-place editor of a message text, the jump to a row
// number and the search.

#include <QDialog>
#include <QString>
#include <QStringList>

class QCheckBox;
class QComboBox;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;

namespace zentrail {

// A borderless editor placed over a row. Enter accepts and Esc rejects; neither reaches the editor,
// so a line break can only be pasted, never typed.
class TfrmEditMessage : public QDialog {
  Q_OBJECT
 public:
  explicit TfrmEditMessage(QWidget* parent);
  QPlainTextEdit* Editor() const { return FEditor; }
  QPushButton* AcceptButton() const { return btnAccept; }
  QPushButton* RejectButton() const { return btnReject; }
  // The editor's text with CR LF line ends, as the store keeps texts.
  QString Text() const;
  void SetText(const QString& text);

  // Drops every CR and LF and puts one CR LF before the next other character wherever any was
  // dropped: blank lines collapse to one line end and trailing line ends vanish.
  static QString UniformLineEnds(const QString& text);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QPlainTextEdit* FEditor;
  QPushButton* btnAccept;
  QPushButton* btnReject;
  QWidget* stsMove;
  QPoint FDragOffset;
  bool FDragging = false;
};

// "Jump to message #": digits only; any other printable key beeps and is dropped. Enter never
// reaches the box: it confirms the dialog. Numbers typed are kept in the box's list while the
// dialog lives.
class TfrmJumpToMsg : public QDialog {
  Q_OBJECT
 public:
  explicit TfrmJumpToMsg(QWidget* parent);
  QComboBox* JumpTo() const { return cbxJumpTo; }
  QPushButton* OkButton() const { return btnOK; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QComboBox* cbxJumpTo;
  QPushButton* btnOK;
};

// The search texts used last, newest first, kept in the settings file's section "MRULists" so
// that every Find dialog of the run and the next run offer them.
inline constexpr int ztFindHistoryMax = 20;
// Reads "FindText_Count" items; empty items and repeats are skipped.
QStringList ReadFindTextHistory();
// Cuts the list to ztFindHistoryMax, writes count and items, deletes the items above the count and
// writes the settings file at once. False with error filled when the file can't be written; the
// settings object holds the new history either way.
bool StoreFindTextHistory(const QStringList& history, QString& error);
// The text moved to the top of history, or put there; the same text in another case counts as
// the same search, as a search ignores case.
QStringList PushFindText(QStringList history, const QString& text);

// "Find": the text (a case-insensitive pattern), the direction, the origin and whether Details
// count too.
class TfrmFind : public QDialog {
  Q_OBJECT
 public:
  explicit TfrmFind(QWidget* parent);
  QComboBox* FindText() const { return cbxFindText; }
  QRadioButton* Forward() const { return optForward; }
  QRadioButton* Backward() const { return optBackward; }
  QRadioButton* FromCursor() const { return optFromCursor; }
  QRadioButton* EntireScope() const { return optEntireScope; }
  QCheckBox* FindInDetails() const { return chkFindInDetails; }
  QPushButton* OkButton() const { return btnOK; }

 private:
  QComboBox* cbxFindText;
  QRadioButton* optForward;
  QRadioButton* optBackward;
  QRadioButton* optFromCursor;
  QRadioButton* optEntireScope;
  QCheckBox* chkFindInDetails;
  QPushButton* btnOK;
};

}  // namespace zentrail
