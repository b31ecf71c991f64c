#include "ZTAboutPlugInsForm.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "ZTPlugInManager.h"
#include "ZTPromptService.h"
#include "ZentrailMessage.h"

namespace zentrail {

namespace {

QLabel* ValueLabel(const char* name, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setObjectName(QString::fromLatin1(name));
  label->setTextFormat(Qt::PlainText);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return label;
}

// A link in the highlight colour, underlined, as a web page shows one.
QString LinkText(const QString& target, const QString& text, const QPalette& palette) {
  return QStringLiteral("<a href=\"%1\" style=\"color:%2; text-decoration:underline\">%3</a>")
      .arg(target.toHtmlEscaped(), palette.color(QPalette::Highlight).name(), text.toHtmlEscaped());
}

}  // namespace

TfrmAboutPlugIns::TfrmAboutPlugIns(QWidget* parent, TInternalPlugInManager& manager)
    : QDialog(parent ? parent : QApplication::activeWindow()), FManager(manager) {
  setObjectName(QStringLiteral("frmAboutPlugIns"));
  setWindowTitle(QStringLiteral("Zentrail Viewer Plug-Ins"));
  setWhatsThis(QStringLiteral("5040"));
  resize(496, 309);

  auto* loaded = new QGroupBox(QStringLiteral("Loaded Plug-Ins"), this);
  auto* loadedLayout = new QVBoxLayout(loaded);
  lstPlugIns = new QListWidget(loaded);
  lstPlugIns->setObjectName(QStringLiteral("lstPlugIns"));
  loadedLayout->addWidget(lstPlugIns);
  connect(lstPlugIns, &QListWidget::currentRowChanged, this, [this] { lstPlugInsClick(); });

  auto* description = new QGroupBox(QStringLiteral("Plug-In Description"), this);
  auto* descriptionLayout = new QVBoxLayout(description);
  lblLongDesc = ValueLabel("lblLongDesc", description);
  lblLongDesc->setWordWrap(true);
  lblLongDesc->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  descriptionLayout->addWidget(lblLongDesc, 1);

  auto* details = new QGroupBox(QStringLiteral("Details"), this);
  auto* form = new QFormLayout(details);
  form->setLabelAlignment(Qt::AlignLeft);
  lblMsgType = ValueLabel("lblMsgType", details);
  lblVersion = ValueLabel("lblVersion", details);
  lblEmail = ValueLabel("lblEmail", details);
  lblWebSite = ValueLabel("lblWebSite", details);
  for (QLabel* link : {lblEmail, lblWebSite}) {
    link->setTextFormat(Qt::RichText);
    link->setTextInteractionFlags(Qt::TextBrowserInteraction);
    link->setOpenExternalLinks(true);
  }
  form->addRow(QStringLiteral("Zentrail Message Content:"), lblMsgType);
  form->addRow(QStringLiteral("Plug-In Version:"), lblVersion);
  form->addRow(QStringLiteral("Support Email:"), lblEmail);
  form->addRow(QStringLiteral("Support Web Site:"), lblWebSite);

  auto* right = new QVBoxLayout;
  right->addWidget(description, 1);
  right->addWidget(details);
  auto* columns = new QHBoxLayout;
  columns->addWidget(loaded, 2);
  columns->addLayout(right, 3);

  auto* buttons = new QDialogButtonBox(this);
  btnOK = buttons->addButton(QDialogButtonBox::Ok);
  btnOK->setObjectName(QStringLiteral("btnOK"));
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

  auto* outer = new QVBoxLayout(this);
  outer->addLayout(columns, 1);
  outer->addWidget(buttons);
}

void TfrmAboutPlugIns::ClearLabels() {
  for (QLabel* label : {lblLongDesc, lblMsgType, lblVersion, lblEmail, lblWebSite}) label->clear();
}

void TfrmAboutPlugIns::ShowPlugInDetails(const std::function<int(QDialog&)>& run) {
  ClearLabels();
  QStringList names;
  FManager.GetListOfInspectors(&names);
  names.sort(Qt::CaseInsensitive);
  if (names.isEmpty()) {
    PromptService().ShowMessage(parentWidget(), QStringLiteral("There are no Zentrail Inspector plug-ins loaded."));
    return;
  }
  lstPlugIns->addItems(names);
  // Every name whole, without a horizontal scroll bar.
  lstPlugIns->setMinimumWidth(lstPlugIns->sizeHintForColumn(0) + 2 * lstPlugIns->frameWidth() + 8);
  lstPlugIns->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  lstPlugIns->setCurrentRow(0);
  lstPlugInsClick();
  run(*this);
}

void TfrmAboutPlugIns::lstPlugInsClick() {
  QListWidgetItem* item = lstPlugIns->currentItem();
  TZentrailCustomInspector* inspector = item ? FManager.GetInspectorByName(item->text()) : nullptr;
  if (!inspector) {
    ClearLabels();
    return;
  }
  lblMsgType->setText(QString::fromStdString(MsgTypeReadableName(inspector->GetMsgContent())));
  lblVersion->setText(inspector->GetVersion());
  lblLongDesc->setText(inspector->GetDescription());
  const QString email = inspector->GetEmail();
  if (email.isEmpty()) {
    lblEmail->clear();
  } else {
    lblEmail->setText(LinkText(QStringLiteral("mailto:") + email, email, palette()));
  }
  const QString web = inspector->GetWebSite();
  lblWebSite->setText(web.isEmpty() ? QString() : LinkText(web, web, palette()));
}

}  // namespace zentrail
