#include <QBoxLayout>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QPainter>
#include <QRadioButton>
#include <QToolButton>

#include "ZTGlyphs.h"
#include "ZTOptionsPages.h"

namespace zentrail {

namespace {

QCheckBox* Check(const char* name, const char* caption, QWidget* parent) {
  auto* box = new QCheckBox(QString::fromUtf8(caption), parent);
  box->setObjectName(QString::fromLatin1(name));
  return box;
}

// A small picture of the window with the inspector on the right or at the bottom.
QPixmap LayoutPicture(bool onBottom) {
  QPixmap pixmap(72, 52);
  pixmap.fill(Qt::transparent);
  QPainter p(&pixmap);
  const QColor frame(0x5a, 0x6b, 0x85), list(0xfb, 0xfc, 0xfe), inspector(0xc8, 0xdc, 0xf5);
  p.setPen(frame);
  p.setBrush(list);
  p.drawRect(0, 0, 71, 51);
  p.fillRect(1, 1, 70, 6, QColor(0x2f, 0x7f, 0xd0));
  p.setPen(QColor(0xc0, 0xc8, 0xd4));
  const QRect inspectorRect = onBottom ? QRect(2, 33, 68, 17) : QRect(46, 9, 24, 41);
  for (int y = 11; y < (onBottom ? 31 : 50); y += 4) p.drawLine(4, y, onBottom ? 67 : 42, y);
  p.setPen(frame);
  p.setBrush(inspector);
  p.drawRect(inspectorRect);
  return pixmap;
}

}  // namespace

TZTOptionsLayoutPage::TZTOptionsLayoutPage(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("tabLayout"));
  auto* panes = new QGroupBox(QStringLiteral("Panes and Window"), this);
  chkInspector = Check("chkInspector", "Show the &Inspector", panes);
  chkScratchPad = Check("chkScratchPad", "Show the Scratch &Pad", panes);
  chkCallStack = Check("chkCallStack", "Show the &Call Stack", panes);
  chkDetailPanel = Check("chkDetailPanel", "Sho&w Message Detail Panel", panes);
  chkWrapButtons = Check("chkWrapButtons", "&Wrap Toolbar Buttons", panes);
  chkAlwaysOnTop = Check("chkAlwaysOnTop", "Always On &Top", panes);
  auto* checks = new QVBoxLayout(panes);
  for (QCheckBox* box : {chkInspector, chkScratchPad, chkCallStack, chkDetailPanel, chkWrapButtons, chkAlwaysOnTop})
    checks->addWidget(box);
  checks->addStretch(1);

  auto* position = new QGroupBox(QStringLiteral("Inspector Position"), this);
  optInspectorOnRight = new QRadioButton(QStringLiteral("On the &Right"), position);
  optInspectorOnRight->setObjectName(QStringLiteral("optInspectorOnRight"));
  optInspectorOnBottom = new QRadioButton(QStringLiteral("At the &Bottom"), position);
  optInspectorOnBottom->setObjectName(QStringLiteral("optInspectorOnBottom"));
  auto picture = [position](const char* name, bool onBottom, const QString& caption) {
    auto* b = new QToolButton(position);
    b->setObjectName(QString::fromLatin1(name));
    b->setIcon(QIcon(LayoutPicture(onBottom)));
    b->setIconSize(QSize(72, 52));
    b->setAutoRaise(true);
    b->setFocusPolicy(Qt::NoFocus);
    b->setAccessibleName(caption);
    return b;
  };
  imgInspectorOnRight = picture("imgInspectorOnRight", false, QStringLiteral("Inspector on the Right"));
  imgInspectorOnBottom = picture("imgInspectorOnBottom", true, QStringLiteral("Inspector at the Bottom"));
  connect(imgInspectorOnRight, &QToolButton::clicked, optInspectorOnRight, [this] { optInspectorOnRight->setChecked(true); });
  connect(imgInspectorOnBottom, &QToolButton::clicked, optInspectorOnBottom,
          [this] { optInspectorOnBottom->setChecked(true); });
  auto* grid = new QGridLayout(position);
  grid->addWidget(imgInspectorOnRight, 0, 0, Qt::AlignCenter);
  grid->addWidget(imgInspectorOnBottom, 0, 1, Qt::AlignCenter);
  grid->addWidget(optInspectorOnRight, 1, 0, Qt::AlignCenter);
  grid->addWidget(optInspectorOnBottom, 1, 1, Qt::AlignCenter);

  auto* pad = new QGroupBox(QStringLiteral("Scratch Pad"), this);
  cbxPadLight = new QComboBox(pad);
  cbxPadLight->setObjectName(QStringLiteral("cbxPadLight"));
  int index = 0;
  for (const char* colour : {"Red", "Orange", "Yellow", "Green", "Blue", "Indigo", "Violet"})
    cbxPadLight->addItem(QIcon(ScratchPadLight(index++, 14)), QString::fromLatin1(colour));
  auto* padLabel = new QLabel(QStringLiteral("Pad &Light Color"), pad);
  padLabel->setBuddy(cbxPadLight);
  auto* padRow = new QHBoxLayout(pad);
  padRow->addWidget(padLabel);
  padRow->addWidget(cbxPadLight, 1);

  auto* right = new QVBoxLayout;
  right->addWidget(position);
  right->addWidget(pad);
  right->addStretch(1);
  auto* layout = new QHBoxLayout(this);
  layout->addWidget(panes, 1);
  layout->addLayout(right, 1);
  QWidget* order[] = {chkInspector,   chkScratchPad,       chkCallStack,         chkDetailPanel, chkWrapButtons,
                      chkAlwaysOnTop, optInspectorOnRight, optInspectorOnBottom, cbxPadLight};
  for (size_t i = 1; i < std::size(order); ++i) setTabOrder(order[i - 1], order[i]);
}

void TZTOptionsLayoutPage::Load(const TZTViewerOptions& o) {
  chkInspector->setChecked(o.Display.Inspector);
  chkScratchPad->setChecked(o.Display.ScratchPad);
  chkCallStack->setChecked(o.Display.CallStack);
  chkDetailPanel->setChecked(o.Display.DetailPanel);
  chkWrapButtons->setChecked(o.Display.WrapButtons);
  chkAlwaysOnTop->setChecked(o.Display.AlwaysOnTop);
  (o.Display.InspectorOnBottom ? optInspectorOnBottom : optInspectorOnRight)->setChecked(true);
  cbxPadLight->setCurrentIndex(std::clamp(o.Display.ScratchPadLightColor, 0, cbxPadLight->count() - 1));
}

void TZTOptionsLayoutPage::Store(TZTViewerOptions& o) const {
  o.Display.Inspector = chkInspector->isChecked();
  o.Display.ScratchPad = chkScratchPad->isChecked();
  o.Display.CallStack = chkCallStack->isChecked();
  o.Display.DetailPanel = chkDetailPanel->isChecked();
  o.Display.WrapButtons = chkWrapButtons->isChecked();
  o.Display.AlwaysOnTop = chkAlwaysOnTop->isChecked();
  o.Display.InspectorOnBottom = optInspectorOnBottom->isChecked();
  o.Display.ScratchPadLightColor = cbxPadLight->currentIndex();
}

}  // namespace zentrail
