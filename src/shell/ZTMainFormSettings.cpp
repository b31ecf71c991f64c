#include <QFontDatabase>
#include <QGuiApplication>
#include <QScreen>
#include <QSplitter>
#include <algorithm>

#include "ZTMainForm.h"
#include "ZTSettings.h"

namespace zentrail {

// A face by name, or the system's font of that kind where the face is missing.
QFont TFrmViewer::ChooseFont(const QString& family, int pointSize, bool fixed) {
  QFont font;
  if (QFontDatabase::hasFamily(family)) {
    font = QFont(family);
  } else {
    font = QFontDatabase::systemFont(fixed ? QFontDatabase::FixedFont : QFontDatabase::GeneralFont);
  }
  if (pointSize > 0) font.setPointSize(pointSize);
  return font;
}

// ---------------------------------------------------------------------------------------------------
// Settings

QFont TFrmViewer::GetFont(int kind) {
  switch (kind) {
    case ztFontMessage:
      return FMessageFont;
    case ztFontInspectorFixed:
      return FInspectorFixedFont;
    default:
      return FInspectorFont;
  }
}

TZTMsgTypeStyle TFrmViewer::GetMsgTypeStyle(int32_t) {
  // Every type follows the message font until the font styles are read from the settings.
  return TZTMsgTypeStyle{};
}


void TFrmViewer::LoadSettings() {
  FLoadingSettings = true;
  TZTSettings& ini = ViewerSettings();
  const QString pos = QStringLiteral("Position"), display = QStringLiteral("Display"),
                general = QStringLiteral("General");
  QRect rect(QPoint(ini.ReadInteger(pos, QStringLiteral("Left"), 20), ini.ReadInteger(pos, QStringLiteral("Top"), 20)),
             QPoint(ini.ReadInteger(pos, QStringLiteral("Right"), 790) - 1,
                    ini.ReadInteger(pos, QStringLiteral("Bottom"), 420) - 1));
  bool onScreen = false;
  for (QScreen* s : QGuiApplication::screens())
    if (s->geometry().contains(rect.topLeft())) onScreen = true;
  if (!onScreen) rect.moveTopLeft(QPoint(0, 0));
  setGeometry(rect);
  if (ini.ReadBool(pos, QStringLiteral("Maximized"), false)) setWindowState(windowState() | Qt::WindowMaximized);

  SetAlwaysOnTop(ini.ReadBool(display, QStringLiteral("AlwaysOnTop"), false));
  SetInspectorOnBottom(ini.ReadBool(display, QStringLiteral("InspectorOnBottom"), false));
  SetPaneVisible(TZTPane::Inspector, ini.ReadBool(display, QStringLiteral("Inspector"), false));
  SetPaneVisible(TZTPane::CallStack, ini.ReadBool(display, QStringLiteral("CallStack"), false));
  SetPaneVisible(TZTPane::ScratchPad, ini.ReadBool(display, QStringLiteral("ScratchPad"), false));
  FScratchPadLightColor = ini.ReadInteger(display, QStringLiteral("ScratchPadLightColor"), 0);
  SetDetailPanelVisible(ini.ReadBool(display, QStringLiteral("DetailPanel"), false));
  // A stored splitter keeps the far pane's size.
  auto applySplit = [](QSplitter* s, int fixed) {
    if (fixed <= -1) return;
    QList<int> sizes = s->sizes();
    int total = sizes.value(0) + sizes.value(1);
    s->setSizes({std::max(0, total - fixed), fixed});
  };
  applySplit(splMain, ini.ReadInteger(display, QStringLiteral("MainSplitFixed"), -1));
  applySplit(splLeft, ini.ReadInteger(display, QStringLiteral("LeftSplitFixed"), -1));
  applySplit(splRight, ini.ReadInteger(display, QStringLiteral("RightSplitFixed"), -1));

  ConfirmOnClear = ini.ReadBool(general, QStringLiteral("ConfirmOnClear"), true);
  AutoSaveProject = ini.ReadBool(general, QStringLiteral("AutoSaveProject"), true);
  SetAutoScroll(ini.ReadBool(general, QStringLiteral("AutoScroll"), true));
  SetAutoCollapse(ini.ReadBool(general, QStringLiteral("AutoCollapse"), true));
  SetFlattenStructure(ini.ReadBool(general, QStringLiteral("FlattenStructure"), false));
  SoundEffectOnWakeUp = ini.ReadBool(general, QStringLiteral("SoundEffectOnWakeUp"), false);
  SoundEffectFile = ini.ReadString(general, QStringLiteral("SoundEffectFile"), QString());
  InsertSeparatorOnWakeUp = ini.ReadBool(general, QStringLiteral("InsertSeparatorOnWakeUp"), false);
  IdleTime = ini.ReadInteger(general, QStringLiteral("IdleTime"), 10);
  InsertSeparatorOnAppStart = ini.ReadBool(general, QStringLiteral("InsertSeparatorOnAppStart"), false);
  FLoadingSettings = false;
}

void TFrmViewer::SaveSettings() {
  TZTSettings& ini = ViewerSettings();
  const QString pos = QStringLiteral("Position"), display = QStringLiteral("Display"),
                general = QStringLiteral("General");
  // The restored rectangle, also while maximised.
  QRect rect = normalGeometry().isValid() ? normalGeometry() : geometry();
  ini.WriteInteger(pos, QStringLiteral("Left"), rect.left());
  ini.WriteInteger(pos, QStringLiteral("Top"), rect.top());
  ini.WriteInteger(pos, QStringLiteral("Right"), rect.right() + 1);
  ini.WriteInteger(pos, QStringLiteral("Bottom"), rect.bottom() + 1);
  ini.WriteBool(pos, QStringLiteral("Maximized"), isMaximized());

  ini.WriteBool(display, QStringLiteral("AlwaysOnTop"), ztAlwaysOnTop);
  ini.WriteBool(display, QStringLiteral("Inspector"), FInspectorVisible);
  ini.WriteBool(display, QStringLiteral("CallStack"), FFullSizeInspector ? (FFullSizeRestore & 2) != 0 : FCallStackVisible);
  ini.WriteBool(display, QStringLiteral("ScratchPad"), FFullSizeInspector ? (FFullSizeRestore & 4) != 0 : FScratchPadVisible);
  ini.WriteInteger(display, QStringLiteral("ScratchPadLightColor"), FScratchPadLightColor);
  ini.WriteBool(display, QStringLiteral("InspectorOnBottom"), FInspectorOnBottom);
  ini.WriteBool(display, QStringLiteral("DetailPanel"), FDetailPanelVisible);
  auto farPane = [](QSplitter* s) { return s->sizes().value(1, -1); };
  ini.WriteInteger(display, QStringLiteral("MainSplitFixed"), splRight->isVisible() ? farPane(splMain) : -1);
  ini.WriteInteger(display, QStringLiteral("LeftSplitFixed"), pnlLeftLower->isVisible() ? farPane(splLeft) : -1);
  ini.WriteInteger(display, QStringLiteral("RightSplitFixed"), pnlCallStack->isVisible() ? farPane(splRight) : -1);

  ini.WriteBool(general, QStringLiteral("ConfirmOnClear"), ConfirmOnClear);
  ini.WriteBool(general, QStringLiteral("AutoSaveProject"), AutoSaveProject);
  ini.WriteBool(general, QStringLiteral("AutoScroll"), FAutoScroll);
  ini.WriteBool(general, QStringLiteral("AutoCollapse"), FAutoCollapse);
  ini.WriteBool(general, QStringLiteral("FlattenStructure"), FFlattenStructure);
  ini.WriteBool(general, QStringLiteral("SoundEffectOnWakeUp"), SoundEffectOnWakeUp);
  ini.WriteString(general, QStringLiteral("SoundEffectFile"), SoundEffectFile);
  ini.WriteBool(general, QStringLiteral("InsertSeparatorOnWakeUp"), InsertSeparatorOnWakeUp);
  ini.WriteInteger(general, QStringLiteral("IdleTime"), IdleTime);
  ini.WriteBool(general, QStringLiteral("InsertSeparatorOnAppStart"), InsertSeparatorOnAppStart);
}

}  // namespace zentrail
