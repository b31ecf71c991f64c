#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QPainter>

#include "ZTColorEdit.h"
#include "ZTOptionsPages.h"

namespace zentrail {

namespace {

const char* const kItems[] = {"Notes",          "Warnings",         "Errors",          "Exceptions",
                              "Level 1 - Red",  "Level 2 - Orange", "Level 3 - Yellow", "Level 4 - Green",
                              "Level 5 - Blue", "Level 6 - Indigo", "Level 7 - Violet", "Reminders",
                              "Check Points",   "Enter Methods",    "Exit Methods",     "Timings"};

}  // namespace

// The sample: a row as the list draws the type, and the same row selected.
class TZTStyleSample : public QWidget {
 public:
  explicit TZTStyleSample(TZTOptionsStylesPage& page) : QWidget(&page), FPage(page) {
    setObjectName(QStringLiteral("pnlSample"));
    setMinimumHeight(64);
    setAccessibleName(QStringLiteral("Sample Zentrail Message"));
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter p(this);
    const QPalette& pal = palette();
    p.fillRect(rect(), pal.color(QPalette::Base));
    p.setPen(pal.color(QPalette::Mid));
    p.drawRect(rect().adjusted(0, 0, -1, -1));
    const int type = TZTOptionsStylesPage::ItemTypes()[static_cast<size_t>(std::max(0, FPage.cbxMsgType->currentIndex()))];
    const TZTMsgTypeStyle& style = FPage.FStyles[static_cast<size_t>(type)];
    QFont font = RealizeFontSetting(FPage.FMessageFont, false);
    QColor ink = ColorToQColor(FPage.FMessageFont.Color, pal);
    if (!style.UseDefault) {
      font.setBold(style.Style & fsBold);
      font.setItalic(style.Style & fsItalic);
      font.setUnderline(style.Style & fsUnderline);
      font.setStrikeOut(style.Style & fsStrikeOut);
      ink = ColorToQColor(style.Color, pal);
    }
    p.setFont(font);
    const int h = std::max(20, QFontMetrics(font).height() + 6);
    const QRect plain(8, (height() - 2 * h) / 2, width() - 16, h);
    const QRect selected = plain.translated(0, h);
    const QString text = QStringLiteral("Sample Zentrail Message");
    p.setPen(ink);
    p.drawText(plain.adjusted(6, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, text);
    p.fillRect(selected, ColorToQColor(FPage.FHighlight, pal));
    p.setPen(ColorToQColor(FPage.FHighlightFont, pal));
    p.drawText(selected.adjusted(6, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, text);
  }

 private:
  TZTOptionsStylesPage& FPage;
};

const std::array<int32_t, 16>& TZTOptionsStylesPage::ItemTypes() {
  static const std::array<int32_t, 16> types = {8, 1, 2, 37, 24, 25, 26, 27, 28, 29, 30, 23, 3, 9, 10, 45};
  return types;
}

TZTOptionsStylesPage::TZTOptionsStylesPage(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("tabColorsStyles"));
  auto* group = new QGroupBox(QStringLiteral("Message Type Style"), this);
  cbxMsgType = new QComboBox(group);
  cbxMsgType->setObjectName(QStringLiteral("cbxMsgType"));
  for (const char* item : kItems) cbxMsgType->addItem(QString::fromLatin1(item));
  auto check = [group](const char* name, const char* caption) {
    auto* box = new QCheckBox(QString::fromUtf8(caption), group);
    box->setObjectName(QString::fromLatin1(name));
    return box;
  };
  chkUseDefault = check("chkUseDefault", "Use &Default");
  edtColor = new TZTColorEdit(QStringLiteral("edtColor"), QStringLiteral("Message Type Color"), group);
  chkBold = check("chkBold", "&Bold");
  chkItalic = check("chkItalic", "&Italic");
  chkUnderline = check("chkUnderline", "&Underline");
  chkStrikeout = check("chkStrikeout", "&Strikeout");
  auto* styles = new QHBoxLayout;
  for (QCheckBox* box : {chkBold, chkItalic, chkUnderline, chkStrikeout}) styles->addWidget(box);
  styles->addStretch(1);
  auto* form = new QFormLayout(group);
  form->addRow(QStringLiteral("Message &Type"), cbxMsgType);
  form->addRow(QString(), chkUseDefault);
  form->addRow(QStringLiteral("&Color"), edtColor);
  form->addRow(QStringLiteral("Style"), styles);
  pnlSample = new TZTStyleSample(*this);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(group);
  layout->addWidget(pnlSample, 1);

  connect(cbxMsgType, &QComboBox::currentIndexChanged, this, [this] { ShowType(); });
  for (QCheckBox* box : {chkUseDefault, chkBold, chkItalic, chkUnderline, chkStrikeout})
    connect(box, &QCheckBox::toggled, this, [this] { Changed(); });
  connect(edtColor, &TZTColorEdit::ColorChanged, this, [this] { Changed(); });
  QWidget* order[] = {cbxMsgType, chkUseDefault, edtColor, chkBold, chkItalic, chkUnderline, chkStrikeout};
  for (size_t i = 1; i < std::size(order); ++i) setTabOrder(order[i - 1], order[i]);
}

void TZTOptionsStylesPage::ShowType() {
  const int type = ItemTypes()[static_cast<size_t>(std::max(0, cbxMsgType->currentIndex()))];
  const TZTMsgTypeStyle& style = FStyles[static_cast<size_t>(type)];
  FLoading = true;
  chkUseDefault->setChecked(style.UseDefault);
  edtColor->SetColor(style.Color);
  chkBold->setChecked(style.Style & fsBold);
  chkItalic->setChecked(style.Style & fsItalic);
  chkUnderline->setChecked(style.Style & fsUnderline);
  chkStrikeout->setChecked(style.Style & fsStrikeOut);
  FLoading = false;
  Changed();
}

void TZTOptionsStylesPage::Changed() {
  // The default style leaves nothing to choose.
  const bool own = !chkUseDefault->isChecked();
  for (QWidget* w : {static_cast<QWidget*>(edtColor), static_cast<QWidget*>(chkBold), static_cast<QWidget*>(chkItalic),
                     static_cast<QWidget*>(chkUnderline), static_cast<QWidget*>(chkStrikeout)})
    w->setEnabled(own);
  if (!FLoading) {
    const int type = ItemTypes()[static_cast<size_t>(std::max(0, cbxMsgType->currentIndex()))];
    TZTMsgTypeStyle& style = FStyles[static_cast<size_t>(type)];
    style.UseDefault = chkUseDefault->isChecked();
    style.Color = edtColor->Color();
    style.Style = static_cast<uint8_t>((chkBold->isChecked() ? fsBold : 0) | (chkItalic->isChecked() ? fsItalic : 0) |
                                       (chkUnderline->isChecked() ? fsUnderline : 0) |
                                       (chkStrikeout->isChecked() ? fsStrikeOut : 0));
  }
  pnlSample->update();
}

void TZTOptionsStylesPage::Load(const TZTViewerOptions& o) {
  FStyles = o.Styles;
  FMessageFont = o.Fonts.Message;
  FHighlight = o.Display.HighlightColor;
  FHighlightFont = o.Display.HighlightFontColor;
  cbxMsgType->setCurrentIndex(0);
  ShowType();
}

void TZTOptionsStylesPage::Store(TZTViewerOptions& o) const { o.Styles = FStyles; }

}  // namespace zentrail
