#include <QBoxLayout>
#include <QComboBox>
#include <QFontComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QSpinBox>
#include <QStackedWidget>

#include "ZTColorEdit.h"
#include "ZTOptionsPages.h"

namespace zentrail {

TZTOptionsFontsPage::TZTOptionsFontsPage(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("tabFonts"));
  auto* choice = new QGroupBox(QStringLiteral("Font"), this);
  cbxFontType = new QComboBox(choice);
  cbxFontType->setObjectName(QStringLiteral("cbxFontType"));
  cbxFontType->addItems({QStringLiteral("Message"), QStringLiteral("Inspector"), QStringLiteral("Inspector Fixed")});
  cbxFontName = new QFontComboBox(choice);
  cbxFontName->setObjectName(QStringLiteral("cbxFontName"));
  spnFontSize = new QSpinBox(choice);
  spnFontSize->setObjectName(QStringLiteral("spnFontSize"));
  spnFontSize->setRange(6, 36);
  edtFontColor = new TZTColorEdit(QStringLiteral("edtFontColor"), QStringLiteral("Font Color"), choice);
  auto* form = new QFormLayout(choice);
  form->addRow(QStringLiteral("Font &Type"), cbxFontType);
  form->addRow(QStringLiteral("Font &Name"), cbxFontName);
  form->addRow(QStringLiteral("&Size"), spnFontSize);
  form->addRow(QStringLiteral("&Color"), edtFontColor);

  auto* preview = new QGroupBox(QStringLiteral("Preview"), this);
  nbkFonts = new QStackedWidget(preview);
  nbkFonts->setObjectName(QStringLiteral("nbkFonts"));
  auto sample = [this](const char* name, const char* text) {
    auto* label = new QLabel(QString::fromUtf8(text), nbkFonts);
    label->setObjectName(QString::fromLatin1(name));
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    label->setAutoFillBackground(true);
    label->setBackgroundRole(QPalette::Base);
    label->setFrameShape(QFrame::StyledPanel);
    label->setMinimumHeight(90);
    nbkFonts->addWidget(label);
    return label;
  };
  lblMessage = sample("lblMessage", "TOrderService.ProcessBatch(42)\nPrice of article 4042 is older than 30 days");
  lblInspector = sample("lblInspector", "Customer = Hoffmann & Partner\nOrders = 17");
  lblInspectorFixed = sample("lblInspectorFixed", "00000000  5A 54 50 31 31 3A 31  ZTP11:1\n<order id=\"42\"/>");
  auto* previewLayout = new QVBoxLayout(preview);
  previewLayout->addWidget(nbkFonts);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(choice);
  layout->addWidget(preview, 1);

  connect(cbxFontType, &QComboBox::currentIndexChanged, this, [this](int type) { ShowType(type); });
  connect(cbxFontName, &QFontComboBox::currentFontChanged, this, [this](const QFont& font) {
    if (FLoading) return;
    FFonts[static_cast<size_t>(cbxFontType->currentIndex())].Name = font.family();
    Changed();
  });
  connect(spnFontSize, &QSpinBox::valueChanged, this, [this](int size) {
    if (FLoading) return;
    FFonts[static_cast<size_t>(cbxFontType->currentIndex())].Size = size;
    Changed();
  });
  connect(edtFontColor, &TZTColorEdit::ColorChanged, this, [this](TColor color) {
    if (FLoading) return;
    FFonts[static_cast<size_t>(cbxFontType->currentIndex())].Color = color;
    Changed();
  });
  setTabOrder(cbxFontType, cbxFontName);
  setTabOrder(cbxFontName, spnFontSize);
  setTabOrder(spnFontSize, edtFontColor);
}

void TZTOptionsFontsPage::ShowSample(int type) {
  QLabel* labels[] = {lblMessage, lblInspector, lblInspectorFixed};
  const TZTFontSetting& font = FFonts[static_cast<size_t>(type)];
  QLabel* label = labels[type];
  label->setFont(RealizeFontSetting(font, type == 2));
  QPalette p = label->palette();
  p.setColor(QPalette::WindowText, ColorToQColor(font.Color, p));
  label->setPalette(p);
}

void TZTOptionsFontsPage::ShowType(int type) {
  // The notebook moves to the type's sample, and the controls show its font.
  nbkFonts->setCurrentIndex(type);
  FLoading = true;
  const TZTFontSetting& font = FFonts[static_cast<size_t>(type)];
  cbxFontName->setCurrentFont(RealizeFontSetting(font, type == 2));
  spnFontSize->setValue(font.Size);
  edtFontColor->SetColor(font.Color);
  FLoading = false;
}

void TZTOptionsFontsPage::Changed() { ShowSample(cbxFontType->currentIndex()); }

void TZTOptionsFontsPage::Load(const TZTViewerOptions& o) {
  FFonts = {o.Fonts.Message, o.Fonts.Inspector, o.Fonts.InspectorFixed};
  for (int type = 0; type < 3; ++type) ShowSample(type);
  cbxFontType->setCurrentIndex(0);
  ShowType(0);
}

void TZTOptionsFontsPage::Store(TZTViewerOptions& o) const {
  o.Fonts.Message = FFonts[0];
  o.Fonts.Inspector = FFonts[1];
  o.Fonts.InspectorFixed = FFonts[2];
}

}  // namespace zentrail
