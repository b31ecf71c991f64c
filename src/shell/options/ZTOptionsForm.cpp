#include "ZTOptionsForm.h"

#include <QBoxLayout>
#include <QPushButton>
#include <QTabWidget>

#include "ZTColumnsPage.h"
#include "ZTHelp.h"
#include "ZTOptionsPages.h"

namespace zentrail {

TfrmOptions::TfrmOptions(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmOptions"));
  setWindowTitle(QStringLiteral("Zentrail Viewer Options"));
  pgcOptions = new QTabWidget(this);
  pgcOptions->setObjectName(QStringLiteral("pgcOptions"));
  tabGeneral = new TZTOptionsGeneralPage(pgcOptions);
  tabMsgDetails = new TZTColumnsPage(pgcOptions);
  tabLayout = new TZTOptionsLayoutPage(pgcOptions);
  tabSeparators = new TZTOptionsSeparatorsPage(pgcOptions);
  tabFonts = new TZTOptionsFontsPage(pgcOptions);
  tabColorsStyles = new TZTOptionsStylesPage(pgcOptions);
  pgcOptions->addTab(tabGeneral, QStringLiteral("General"));
  pgcOptions->addTab(tabMsgDetails, QStringLiteral("Columns"));
  pgcOptions->addTab(tabLayout, QStringLiteral("Layout"));
  pgcOptions->addTab(tabSeparators, QStringLiteral("Separators"));
  pgcOptions->addTab(tabFonts, QStringLiteral("Fonts"));
  pgcOptions->addTab(tabColorsStyles, QStringLiteral("Colors && Styles"));

  btnOK = new QPushButton(QStringLiteral("OK"), this);
  btnOK->setObjectName(QStringLiteral("btnOK"));
  btnOK->setDefault(true);
  btnCancel = new QPushButton(QStringLiteral("Cancel"), this);
  btnCancel->setObjectName(QStringLiteral("btnCancel"));
  btnHelp = new QPushButton(QStringLiteral("&Help"), this);
  btnHelp->setObjectName(QStringLiteral("btnHelp"));
  btnHelp->setAutoDefault(false);
  connect(btnOK, &QPushButton::clicked, this, &QDialog::accept);
  connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
  connect(btnHelp, &QPushButton::clicked, this, [] { ShowHelpTopic(HelpKeyword()); });
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(btnHelp);
  buttons->addStretch(1);
  buttons->addWidget(btnOK);
  buttons->addWidget(btnCancel);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(pgcOptions, 1);
  layout->addLayout(buttons);
  setTabOrder(pgcOptions, btnOK);
  setTabOrder(btnOK, btnCancel);
  setTabOrder(btnCancel, btnHelp);
  resize(620, 500);
}

void TfrmOptions::SetOptions(const TZTViewerOptions& options) {
  FOptions = options;
  tabGeneral->Load(options);
  tabMsgDetails->SetColumns(options.Display.Columns);
  tabLayout->Load(options);
  tabSeparators->Load(options);
  tabFonts->Load(options);
  tabColorsStyles->Load(options);
}

TZTViewerOptions TfrmOptions::Options() const {
  TZTViewerOptions o = FOptions;
  tabGeneral->Store(o);
  o.Display.Columns = tabMsgDetails->Columns();
  tabLayout->Store(o);
  tabSeparators->Store(o);
  tabFonts->Store(o);
  tabColorsStyles->Store(o);
  return o;
}

}  // namespace zentrail
