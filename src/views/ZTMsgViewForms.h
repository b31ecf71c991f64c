#pragma once
// The small forms of a message view: the in-place editor of a message text and the jump to a row
// number.

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

// "Jump to message #": digits only; any other printable key, and Enter in the box, beep and are
// dropped. Numbers typed are kept in the box's list while the dialog lives.
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

// The search texts used last, newest first, at most ztFindHistoryMax; shared by the Find dialogs of
// all views for the run. The shell keeps them in the settings file (section "MRULists", keys
// "FindText_Count" and "FindText_Item<n>").
inline constexpr int ztFindHistoryMax = 20;
QStringList& FindTextHistory();

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
