#include "ZTMsgViewForms.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QRadioButton>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <string>
#include <vector>

#include "ZTMsgView.h"
#include "ZTPromptService.h"
#include "ZTSettingsStore.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

// ---- the in-place editor -----------------------------------------------------------------------

TfrmEditMessage::TfrmEditMessage(QWidget* parent) : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint) {
  setObjectName(QStringLiteral("frmEditMessage"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(1, 1, 1, 1);
  layout->setSpacing(0);
  FEditor = new QPlainTextEdit(this);
  FEditor->setLineWrapMode(QPlainTextEdit::WidgetWidth);
  FEditor->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  FEditor->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  FEditor->installEventFilter(this);
  layout->addWidget(FEditor, 1);

  auto* bar = new QHBoxLayout;
  bar->setContentsMargins(2, 2, 2, 2);
  stsMove = new QLabel(tr("Edit Message"), this);
  stsMove->setCursor(Qt::SizeAllCursor);
  stsMove->installEventFilter(this);
  bar->addWidget(stsMove, 1);
  btnAccept = new QPushButton(tr("Accept"), this);
  btnReject = new QPushButton(tr("Reject"), this);
  btnAccept->setAutoDefault(false);
  btnReject->setAutoDefault(false);
  connect(btnAccept, &QPushButton::clicked, this, &QDialog::accept);
  connect(btnReject, &QPushButton::clicked, this, &QDialog::reject);
  bar->addWidget(btnAccept);
  bar->addWidget(btnReject);
  layout->addLayout(bar);
  resize(400, 110);
}

QString TfrmEditMessage::UniformLineEnds(const QString& text) {
  QString result;
  result.reserve(text.size());
  bool dropped = false;
  for (const QChar c : text) {
    if (c == QLatin1Char('\r') || c == QLatin1Char('\n')) {
      dropped = true;
      continue;
    }
    if (dropped && !result.isEmpty()) result += QStringLiteral("\r\n");
    dropped = false;
    result += c;
  }
  return result;
}

QString TfrmEditMessage::Text() const {
  return FEditor->toPlainText().replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
}

void TfrmEditMessage::SetText(const QString& text) {
  FEditor->setPlainText(QString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
  FEditor->selectAll();
}

bool TfrmEditMessage::eventFilter(QObject* watched, QEvent* event) {
  if (watched == FEditor && event->type() == QEvent::KeyPress) {
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
      accept();
      return true;
    }
    if (key->key() == Qt::Key_Escape) {
      reject();
      return true;
    }
  }
  if (watched == stsMove) {
    // The form has no frame of its own: the small bar moves it.
    if (event->type() == QEvent::MouseButtonPress) {
      FDragging = true;
      FDragOffset = static_cast<QMouseEvent*>(event)->globalPosition().toPoint() - frameGeometry().topLeft();
      return true;
    }
    if (event->type() == QEvent::MouseMove && FDragging) {
      move(static_cast<QMouseEvent*>(event)->globalPosition().toPoint() - FDragOffset);
      return true;
    }
    if (event->type() == QEvent::MouseButtonRelease) FDragging = false;
  }
  return QDialog::eventFilter(watched, event);
}

void TZTMessageView::EditMessage(int32_t row) {
  if (row < 0 || row >= NumItems()) return;
  SelectRecord(row);
  TZentrailMessageSet& ms = MessageSet;
  const int32_t type = ms.GetMsgType();
  if (type == ztmSeparator || type == ztmInactiveSeparator || type == ztmResetSeparator ||
      type == ztmAppStartSeparator)
    return;
  const int32_t recNo = GetMsgRecNo(row);
  const std::string_view raw = ms.GetMsgText();

  TfrmEditMessage form(this);
  QPalette pal = form.Editor()->palette();
  pal.setColor(QPalette::Highlight, ColorToQColor(SelectBackColor()));
  pal.setColor(QPalette::HighlightedText, ColorToQColor(SelectTextColor()));
  form.Editor()->setPalette(pal);
  form.Editor()->setFont(font());
  form.SetText(TfrmEditMessage::UniformLineEnds(QString::fromUtf8(raw.data(), static_cast<qsizetype>(raw.size()))));

  // Over the list, just below the row; never past the view's bottom edge.
  const QRect rowRect = ItemRect(row);
  const QPoint topLeft = viewport()->mapToGlobal(QPoint(2, rowRect.bottom() + 2));
  const int height = form.height();
  const int bottom = mapToGlobal(QPoint(0, this->height())).y();
  const int top = topLeft.y() + height > bottom ? bottom - height : topLeft.y();
  form.setGeometry(topLeft.x(), top, std::max(100, viewport()->width() - 4), height);
  form.Editor()->setFocus();

  if (form.exec() != QDialog::Accepted) return;
  // The cursor may have moved while the form was up; the record is taken again by its number.
  ms.GotoRec(recNo);
  ms.Edit();
  try {
    ms.SetMsgText(form.Text().toStdString());
    ms.Post();
  } catch (...) {
    ms.Cancel();
    throw;
  }
  if (IZentrailApplication* app = App()) app->UpdateMessageDetails();
  viewport()->update();
}

// ---- jump to a row number ----------------------------------------------------------------------

TfrmJumpToMsg::TfrmJumpToMsg(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmJumpToMsg"));
  setWindowTitle(tr("Jump to message"));
  auto* layout = new QVBoxLayout(this);
  auto* label = new QLabel(tr("Jump to message #"), this);
  cbxJumpTo = new QComboBox(this);
  cbxJumpTo->setObjectName(QStringLiteral("cbxJumpTo"));
  cbxJumpTo->setEditable(true);
  cbxJumpTo->setInsertPolicy(QComboBox::NoInsert);
  cbxJumpTo->lineEdit()->installEventFilter(this);
  label->setBuddy(cbxJumpTo);
  layout->addWidget(label);
  layout->addWidget(cbxJumpTo);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  btnOK = new QPushButton(tr("OK"), this);
  auto* btnCancel = new QPushButton(tr("Cancel"), this);
  // Enter in the box is never input: it goes to OK, as in every dialog; Esc cancels.
  btnOK->setDefault(true);
  btnCancel->setAutoDefault(false);
  connect(btnOK, &QPushButton::clicked, this, [this] {
    const QString text = cbxJumpTo->currentText();
    if (!text.isEmpty() && cbxJumpTo->findText(text) < 0) cbxJumpTo->addItem(text);
    accept();
  });
  connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
  buttons->addWidget(btnOK);
  buttons->addWidget(btnCancel);
  layout->addLayout(buttons);
}

bool TfrmJumpToMsg::eventFilter(QObject* watched, QEvent* event) {
  if (watched == cbxJumpTo->lineEdit() && event->type() == QEvent::KeyPress) {
    const auto* key = static_cast<QKeyEvent*>(event);
    const QString text = key->text();
    const bool printable = !text.isEmpty() && text.at(0).isPrint();
    if (printable && !text.at(0).isDigit()) {
      PromptService().Beep();
      return true;
    }
  }
  return QDialog::eventFilter(watched, event);
}

void TZTMessageView::JumpToMsgDlg() {
  TfrmJumpToMsg form(this);
  if (form.exec() != QDialog::Accepted) return;
  const QString text = form.JumpTo()->currentText().trimmed();
  bool ok = false;
  const int32_t number = text.toInt(&ok);
  if (!ok) {
    PromptService().ShowMessage(this, QStringLiteral("'%1' is not a valid integer value.").arg(text),
                                TZTPromptKind::Error);
    return;
  }
  // The number counts rows of this view from 1; JumpToItem clamps it into the rows.
  JumpToItem(number - 1);
}

// ---- find --------------------------------------------------------------------------------------

QStringList ReadFindTextHistory() {
  QStringList history;
  for (const std::string& text : ReadFindHistory(ViewerSettings())) history.push_back(QString::fromStdString(text));
  return history;
}

bool StoreFindTextHistory(const QStringList& history, QString& error) {
  std::vector<std::string> texts;
  texts.reserve(static_cast<size_t>(history.size()));
  for (const QString& text : history) texts.push_back(text.toStdString());
  std::string reason;
  if (StoreFindHistory(texts, reason)) return true;
  error = QString::fromStdString(reason);
  return false;
}

QStringList PushFindText(QStringList history, const QString& text) {
  if (text.isEmpty()) return history;
  for (qsizetype i = history.size() - 1; i >= 0; --i)
    if (history.at(i).compare(text, Qt::CaseInsensitive) == 0) history.removeAt(i);
  history.prepend(text);
  while (history.size() > ztFindHistoryMax) history.removeLast();
  return history;
}

TfrmFind::TfrmFind(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmFind"));
  setWindowTitle(tr("Find"));
  auto* layout = new QVBoxLayout(this);
  auto* label = new QLabel(tr("&Text to find"), this);
  cbxFindText = new QComboBox(this);
  cbxFindText->setObjectName(QStringLiteral("cbxFindText"));
  cbxFindText->setEditable(true);
  cbxFindText->setInsertPolicy(QComboBox::NoInsert);
  cbxFindText->addItems(ReadFindTextHistory());
  cbxFindText->setMinimumWidth(300);
  label->setBuddy(cbxFindText);
  layout->addWidget(label);
  layout->addWidget(cbxFindText);

  auto* groups = new QHBoxLayout;
  auto* grpDirection = new QGroupBox(tr("Direction"), this);
  grpDirection->setObjectName(QStringLiteral("grpDirection"));
  auto* direction = new QVBoxLayout(grpDirection);
  optForward = new QRadioButton(tr("&Forward"), grpDirection);
  optBackward = new QRadioButton(tr("&Backward"), grpDirection);
  direction->addWidget(optForward);
  direction->addWidget(optBackward);
  auto* grpOrigin = new QGroupBox(tr("Origin"), this);
  grpOrigin->setObjectName(QStringLiteral("grpOrigin"));
  auto* origin = new QVBoxLayout(grpOrigin);
  optFromCursor = new QRadioButton(tr("From &Cursor"), grpOrigin);
  optEntireScope = new QRadioButton(tr("&Entire Scope"), grpOrigin);
  origin->addWidget(optFromCursor);
  origin->addWidget(optEntireScope);
  groups->addWidget(grpDirection);
  groups->addWidget(grpOrigin);
  layout->addLayout(groups);
  chkFindInDetails = new QCheckBox(tr("Include Message &Details in Search"), this);
  chkFindInDetails->setObjectName(QStringLiteral("chkFindInDetails"));
  layout->addWidget(chkFindInDetails);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  btnOK = new QPushButton(tr("OK"), this);
  btnOK->setDefault(true);
  auto* btnCancel = new QPushButton(tr("Cancel"), this);
  connect(btnOK, &QPushButton::clicked, this, [this] {
    // Kept at once, so that a later crash of the run doesn't lose the texts searched for.
    QString error;
    if (!StoreFindTextHistory(PushFindText(ReadFindTextHistory(), cbxFindText->currentText()), error))
      PromptService().ShowMessage(this, tr("The list of search texts could not be saved.\n%1").arg(error),
                                  TZTPromptKind::Warning);
    accept();
  });
  connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
  buttons->addWidget(btnOK);
  buttons->addWidget(btnCancel);
  layout->addLayout(buttons);
}

bool TZTMessageView::Find(std::string& text, TZTRegEx& regex, bool& inDetails, bool& fromCursor, bool& forward) {
  TfrmFind form(this);
  form.FindText()->setCurrentText(QString::fromStdString(text));
  (forward ? form.Forward() : form.Backward())->setChecked(true);
  (fromCursor ? form.FromCursor() : form.EntireScope())->setChecked(true);
  form.FindInDetails()->setChecked(inDetails);
  if (form.exec() != QDialog::Accepted) return false;
  text = form.FindText()->currentText().toStdString();
  forward = form.Forward()->isChecked();
  fromCursor = form.FromCursor()->isChecked();
  inDetails = form.FindInDetails()->isChecked();
  // A pattern that doesn't compile fails here, after the dialog has closed, and leaves nothing
  // compiled behind: a repeat then finds nothing instead of searching for the previous text.
  regex.Clear();
  regex.Compile(text);
  FindNext(true, text, inDetails, fromCursor, forward, regex);
  return true;
}

}  // namespace zentrail
