#include <QBoxLayout>
#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>

#include "ZTColorEdit.h"
#include "ZTOptionsPages.h"

namespace zentrail {

namespace {

QCheckBox* Check(const char* name, const char* caption, QWidget* parent) {
  auto* box = new QCheckBox(QString::fromUtf8(caption), parent);
  box->setObjectName(QString::fromLatin1(name));
  return box;
}

}  // namespace

TZTOptionsGeneralPage::TZTOptionsGeneralPage(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("tabGeneral"));
  auto* behaviour = new QGroupBox(QStringLiteral("Behaviour"), this);
  chkConfirmOnClear = Check("chkConfirmOnClear", "&Show Clear Views Confirmation", behaviour);
  chkConfirmOnClearBookmarks = Check("chkConfirmOnClearBookmarks", "Show &Clear Bookmarks Confirmation", behaviour);
  chkAutoScroll = Check("chkAutoScroll", "&Auto-Scroll New Messages", behaviour);
  chkAutoSaveProject = Check("chkAutoSaveProject", "Auto-Save Project Changes on E&xit", behaviour);
  chkAutoCollapse = Check("chkAutoCollapse", "Auto-Collapse &Empty Methods", behaviour);
  chkFlattenStructure = Check("chkFlattenStructure", "&Flatten Structure", behaviour);
  chkRowShading = Check("chkRowShading", "Shade Alternate &Rows", behaviour);
  edtRowShadingColor = new TZTColorEdit(QStringLiteral("edtRowShadingColor"), QStringLiteral("Blending Color"), behaviour);
  auto* checks = new QVBoxLayout(behaviour);
  for (QCheckBox* box : {chkConfirmOnClear, chkConfirmOnClearBookmarks, chkAutoScroll, chkAutoSaveProject,
                         chkAutoCollapse, chkFlattenStructure, chkRowShading})
    checks->addWidget(box);
  auto* blending = new QHBoxLayout;
  blending->setContentsMargins(22, 0, 0, 0);
  auto* blendingLabel = new QLabel(QStringLiteral("Blendin&g Color"), behaviour);
  blendingLabel->setBuddy(edtRowShadingColor);
  blending->addWidget(blendingLabel);
  blending->addWidget(edtRowShadingColor, 1);
  checks->addLayout(blending);
  checks->addStretch(1);
  connect(chkRowShading, &QCheckBox::toggled, edtRowShadingColor, &QWidget::setEnabled);

  auto* colours = new QGroupBox(QStringLiteral("Colors"), this);
  auto* form = new QFormLayout(colours);
  auto colour = [&](const char* name, const char* caption) {
    const QString plain = QString::fromUtf8(caption).remove(QLatin1Char('&'));
    auto* edit = new TZTColorEdit(QString::fromLatin1(name), plain, colours);
    form->addRow(QString::fromUtf8(caption), edit);
    return edit;
  };
  edtValueColor = colour("edtValueColor", "&Value Color");
  edtMarkerColor = colour("edtMarkerColor", "&Bookmark Color");
  edtSyncMsgColor = colour("edtSyncMsgColor", "Sync &Msg Color");
  edtHighlightColor = colour("edtHighlightColor", "&Highlight Color");
  edtHighlightFontColor = colour("edtHighlightFontColor", "Highlight F&ont Color");

  auto* layout = new QHBoxLayout(this);
  layout->addWidget(behaviour, 3);
  layout->addWidget(colours, 2);
  QWidget* order[] = {chkConfirmOnClear, chkConfirmOnClearBookmarks, chkAutoScroll, chkAutoSaveProject,
                      chkAutoCollapse,   chkFlattenStructure,        chkRowShading, edtRowShadingColor,
                      edtValueColor,     edtMarkerColor,             edtSyncMsgColor, edtHighlightColor,
                      edtHighlightFontColor};
  for (size_t i = 1; i < std::size(order); ++i) setTabOrder(order[i - 1], order[i]);
}

void TZTOptionsGeneralPage::Load(const TZTViewerOptions& o) {
  chkConfirmOnClear->setChecked(o.General.ConfirmOnClear);
  chkConfirmOnClearBookmarks->setChecked(o.General.ConfirmOnClearBookmarks);
  chkAutoScroll->setChecked(o.General.AutoScroll);
  chkAutoSaveProject->setChecked(o.General.AutoSaveProject);
  chkAutoCollapse->setChecked(o.General.AutoCollapse);
  chkFlattenStructure->setChecked(o.General.FlattenStructure);
  chkRowShading->setChecked(o.Display.RowShading);
  edtRowShadingColor->setEnabled(o.Display.RowShading);
  edtRowShadingColor->SetColor(o.Display.RowShadingColor);
  edtValueColor->SetColor(o.Display.ValueColor);
  edtMarkerColor->SetColor(o.Display.MarkerColor);
  edtSyncMsgColor->SetColor(o.Display.SyncMsgColor);
  edtHighlightColor->SetColor(o.Display.HighlightColor);
  edtHighlightFontColor->SetColor(o.Display.HighlightFontColor);
}

void TZTOptionsGeneralPage::Store(TZTViewerOptions& o) const {
  o.General.ConfirmOnClear = chkConfirmOnClear->isChecked();
  o.General.ConfirmOnClearBookmarks = chkConfirmOnClearBookmarks->isChecked();
  o.General.AutoScroll = chkAutoScroll->isChecked();
  o.General.AutoSaveProject = chkAutoSaveProject->isChecked();
  o.General.AutoCollapse = chkAutoCollapse->isChecked();
  o.General.FlattenStructure = chkFlattenStructure->isChecked();
  o.Display.RowShading = chkRowShading->isChecked();
  o.Display.RowShadingColor = edtRowShadingColor->Color();
  o.Display.ValueColor = edtValueColor->Color();
  o.Display.MarkerColor = edtMarkerColor->Color();
  o.Display.SyncMsgColor = edtSyncMsgColor->Color();
  o.Display.HighlightColor = edtHighlightColor->Color();
  o.Display.HighlightFontColor = edtHighlightFontColor->Color();
}

}  // namespace zentrail
