// The text inspectors: the message text itself, text blocks carried in Details, and lists.

#include <Qsci/qsciscintilla.h>

#include <QApplication>
#include <QHBoxLayout>
#include <QMenu>
#include <QToolButton>
#include <QVBoxLayout>

#include "ZTInspect.h"
#include "ZTInspectorUtils.h"
#include "ZentrailMessageSet.h"

namespace zentrail {

namespace {

// Any run of CR and LF becomes one CR LF, written only when an ordinary character follows: blank
// lines disappear and a trailing break is dropped, while a leading one survives.
std::string NormaliseLineBreaks(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  bool pending = false;
  for (char c : text) {
    if (c == '\r' || c == '\n') {
      pending = true;
      continue;
    }
    if (pending) {
      out += "\r\n";
      pending = false;
    }
    out += c;
  }
  return out;
}

bool IsSeparatorType(int32_t msgType) {
  return msgType == ztmSeparator || msgType == ztmInactiveSeparator || msgType == ztmResetSeparator ||
         msgType == ztmAppStartSeparator;
}

}  // namespace

void TZTStringInspector::CreateView() {
  auto* holder = new QWidget(ViewArea());
  auto* row = new QHBoxLayout(holder);
  // A narrow strip keeps the text off the pane's edge.
  row->setContentsMargins(2, 0, 0, 0);
  row->setSpacing(0);
  FView = new QsciScintilla(holder);
  row->addWidget(FView);
  connect(FView, &QWidget::customContextMenuRequested, this, [this](const QPoint& pos) {
    if (FPopupMenu) FPopupMenu->exec(FView->mapToGlobal(pos));
  });
  ViewLayout()->addWidget(holder);

  FView->setUtf8(true);
  FView->setFrameShape(QFrame::NoFrame);
  FView->setReadOnly(true);
  FView->setFont(InspectorInterfaceFont());
  FView->setMarginWidth(1, 0);
  FView->setMarginType(0, QsciScintilla::NumberMargin);
  FView->setMarginWidth(0, 0);
  FView->setMarginsFont(InspectorLineNumberFont());
  FView->setMarginsForegroundColor(palette().color(QPalette::Dark));
  const QColor face = palette().color(QPalette::Button);
  FView->setMarginsBackgroundColor(face.lighter(104));
  FView->setCaretLineVisible(false);
  FView->SendScintilla(QsciScintilla::SCI_SETMARGINLEFT, 0UL, 3L);
  FView->SendScintilla(QsciScintilla::SCI_SETUNDOCOLLECTION, 0L);
  FView->SendScintilla(QsciScintilla::SCI_SETSCROLLWIDTH, 1L);
  FView->SendScintilla(QsciScintilla::SCI_SETSCROLLWIDTHTRACKING, 1L);
  FView->setSelectionBackgroundColor(FHighlightColor);
  FView->setSelectionForegroundColor(FHighlightFontColor);
  SetWordWrap(true);

  // The state of the toggles is the buttons' state; wire them only now that the view exists.
  if (FBtnWordWrap) connect(FBtnWordWrap, &QToolButton::toggled, this, [this](bool on) { SetWordWrap(on); });
  if (FBtnLineNumbers) {
    connect(FBtnLineNumbers, &QToolButton::toggled, this, [this](bool on) { SetLineNumbers(on); });
  }
  if (FBtnCopyValue) connect(FBtnCopyValue, &QToolButton::clicked, this, [this] { CopyValueToClipboard(); });
  FBtnJumpToEnd->hide();
}

void TZTStringInspector::CreateToolbarButtons(QWidget* toolbar) {
  (void)toolbar;
  FBtnWordWrap = AddToolButton(QStringLiteral("Word Wrap"), 0, true);
  FBtnLineNumbers = AddToolButton(QStringLiteral("Line Numbers"), 2, true);
  FBtnJumpToEnd = AddToolButton(QStringLiteral("Jump to End on Inspect"), 1, true);
  FCopyValueSpacer = AddToolSpacer();
  FBtnCopyValue = AddToolButton(QStringLiteral("Copy Value to Clipboard"), 8, false);
}

void TZTStringInspector::SetViewText(std::string_view utf8) {
  // The text view lays out a whole line at once, which takes seconds for a line of megabytes. Such
  // lines are shown in pieces; copying and printing still use the text as it came.
  FUnbrokenText.clear();
  FTextBroken = false;
  std::string pieces;
  std::size_t lineStart = 0;
  for (std::size_t i = 0; i <= utf8.size(); ++i) {
    if (i < utf8.size() && utf8[i] != '\n' && utf8[i] != '\r') continue;
    if (i - lineStart > ztMaxShownLineBytes) {
      if (!FTextBroken) {
        pieces.assign(utf8.data(), lineStart);
        FTextBroken = true;
      }
      std::size_t at = lineStart;
      while (i - at > ztMaxShownLineBytes) {
        std::size_t cut = at + ztMaxShownLineBytes;
        while (cut > at && (static_cast<unsigned char>(utf8[cut]) & 0xC0) == 0x80) --cut;  // whole characters
        pieces.append(utf8.data() + at, cut - at);
        pieces += "\r\n";
        at = cut;
      }
      pieces.append(utf8.data() + at, i - at);
    } else if (FTextBroken) {
      pieces.append(utf8.data() + lineStart, i - lineStart);
    }
    if (i < utf8.size()) {
      if (FTextBroken) pieces += utf8[i];
      lineStart = i + 1;
    }
  }
  std::string_view shown = utf8;
  if (FTextBroken) {
    FUnbrokenText = ToQString(utf8);
    shown = pieces;
  }
  FView->setReadOnly(false);
  FView->SendScintilla(QsciScintilla::SCI_CLEARALL);
  if (!shown.empty()) {
    FView->SendScintilla(QsciScintilla::SCI_APPENDTEXT, static_cast<unsigned long>(shown.size()),
                         shown.data());
  }
  FView->SendScintilla(QsciScintilla::SCI_EMPTYUNDOBUFFER);
  FView->SendScintilla(QsciScintilla::SCI_SETSCROLLWIDTH, 1L);
  FView->setReadOnly(true);
  // Placing the caret without scrolling: scrolling to it would lay out the first line now.
  FView->SendScintilla(QsciScintilla::SCI_SETEMPTYSELECTION, 0UL);
  UpdateLineNumberMargin();
  if (FTextBroken) {
    SetNotice(QStringLiteral("Lines longer than %1 bytes are shown in pieces; copying and printing use the text as sent.")
                  .arg(ztMaxShownLineBytes));
  }
}

QString TZTStringInspector::FullText() const { return FTextBroken ? FUnbrokenText : Text(); }

QString TZTStringInspector::Text() const { return FView->text(); }

void TZTStringInspector::UpdateLineNumberMargin() {
  if (!GetLineNumbers()) {
    FView->setMarginWidth(0, 0);
    return;
  }
  const int digits = QString::number(std::max(1, FView->lines())).size();
  FView->setMarginWidth(0, QString(digits + 1, u'9'));
}

void TZTStringInspector::JumpToEnd() {
  FView->SendScintilla(QsciScintilla::SCI_DOCUMENTEND);
  FView->ensureCursorVisible();
}

void TZTStringInspector::GetContents(QStringList& lines) { lines.append(SplitLines(FullText())); }

void TZTStringInspector::Clear() {
  TZTStockInspector::Clear();
  SetViewText({});
}

void TZTStringInspector::InspectMessage() {
  Clear();
  if (InspectDetails()) {
    SetViewText(MessageSet.GetDetails());
  } else if (!IsSeparatorType(MessageSet.GetMsgType())) {
    SetViewText(NormaliseLineBreaks(MessageSet.GetMsgText()));
  }
}

void TZTStringInspector::SetHighlightColors(const QColor& color, const QColor& fontColor) {
  TZTStockInspector::SetHighlightColors(color, fontColor);
  if (FView) {
    FView->setSelectionBackgroundColor(color);
    FView->setSelectionForegroundColor(fontColor);
  }
}

void TZTStringInspector::SetHeaderFont(const QFont& font, int height) {
  TZTStockInspector::SetHeaderFont(font, height);
}

void TZTStringInspector::SetViewFont(const QFont& font) {
  if (FView) FView->setFont(font);
  UpdateLineNumberMargin();
}

void TZTStringInspector::SetPopupMenu(QMenu* menu) {
  FPopupMenu = menu;
  if (!FView) return;
  if (!menu) {
    FView->setContextMenuPolicy(Qt::DefaultContextMenu);
    return;
  }
  FView->setContextMenuPolicy(Qt::CustomContextMenu);
}

void TZTStringInspector::CopyToClipboard() {
  if (FView->hasSelectedText()) {
    FView->copy();
  } else {
    PutTextOnClipboard(FullText());
  }
}

void TZTStringInspector::CopyValueToClipboard() {
  QString text = FullText();
  const qsizetype at = text.indexOf(QStringLiteral(" = "));
  if (at >= 0) text = text.mid(at + 3);
  PutTextOnClipboard(text);
}

bool TZTStringInspector::GetWordWrap() const { return FBtnWordWrap && FBtnWordWrap->isChecked(); }

void TZTStringInspector::SetWordWrap(bool value) {
  if (FBtnWordWrap && FBtnWordWrap->isChecked() != value) {
    FBtnWordWrap->setChecked(value);  // the toggled handler comes back here
    return;
  }
  if (!FView) return;
  FView->setWrapMode(value ? QsciScintilla::WrapWord : QsciScintilla::WrapNone);
  FView->SendScintilla(QsciScintilla::SCI_SETHSCROLLBAR, value ? 0L : 1L);
}

bool TZTStringInspector::GetLineNumbers() const { return FBtnLineNumbers && FBtnLineNumbers->isChecked(); }

void TZTStringInspector::SetLineNumbers(bool value) {
  if (FBtnLineNumbers && FBtnLineNumbers->isChecked() != value) {
    FBtnLineNumbers->setChecked(value);
    return;
  }
  if (FView) UpdateLineNumberMargin();
}

bool TZTStringInspector::GetJumpToEnd() const { return FBtnJumpToEnd && FBtnJumpToEnd->isChecked(); }

void TZTStringInspector::SetJumpToEnd(bool value) {
  if (FBtnJumpToEnd) FBtnJumpToEnd->setChecked(value);
}

// ---------------------------------------------------------------------------------------------

void TZTTextInspector::CreateView() {
  TZTStringInspector::CreateView();
  SetWordWrap(false);
  FBtnJumpToEnd->show();
  FBtnCopyValue->hide();
  FCopyValueSpacer->hide();
}

void TZTTextInspector::InspectMessage() {
  Clear();
  SetViewText(MessageSet.GetDetails());
  if (GetJumpToEnd()) JumpToEnd();
}

void TZTMonospaceTextInspector::CreateView() {
  TZTStringInspector::CreateView();
  SetWordWrap(false);
  FView->SendScintilla(QsciScintilla::SCI_SETHSCROLLBAR, 1L);
  FView->SendScintilla(QsciScintilla::SCI_SETVSCROLLBAR, 1L);
  FView->setFont(InspectorFixedFont(9));
  FBtnWordWrap->hide();
  FBtnJumpToEnd->hide();
  FBtnCopyValue->hide();
  FCopyValueSpacer->hide();
}

// ---------------------------------------------------------------------------------------------

void TZTStringListInspector::CreateToolbarButtons(QWidget* toolbar) {
  (void)toolbar;
  FBtnLineNumbers = AddToolButton(QStringLiteral("Line Numbers"), 2, true);
  FBtnJumpToEnd = AddToolButton(QStringLiteral("Jump to End on Inspect"), 1, true);
}

void TZTStringListInspector::CreateView() {
  TZTStringInspector::CreateView();
  SetWordWrap(false);
  FBtnJumpToEnd->show();
}

void TZTStringListInspector::InspectMessage() {
  Clear();
  const std::string_view details = MessageSet.GetDetails();
  SetViewText(details);
  if (GetJumpToEnd()) JumpToEnd();
  const std::size_t count = CountLines(details);
  SetFooter(count == 1 ? QStringLiteral("1 Item") : QStringLiteral("%1 Items").arg(count));
}

void TZTStringListInspector::PrintContents(const QStringList& lines) {
  for (qsizetype i = 0; i < lines.size(); ++i) {
    PrintLine(FormatLineNumber5(static_cast<int>(i + 1)) + QStringLiteral(":  ") + lines.at(i));
  }
}

}  // namespace zentrail
