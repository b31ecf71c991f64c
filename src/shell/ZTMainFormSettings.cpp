// The main window's side of the settings file: what each key does when it is read, and what is
// written back. The object behind it lives for the whole run (ZTSettingsStore.h); the program
// writes it to disk when it ends.
#include <QFontDatabase>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QHeaderView>
#include <QScreen>
#include <QSplitter>
#include <QTabBar>
#include <QTableWidget>
#include <algorithm>

#include "ZTCommandBar.h"
#include "ZTInspectorPane.h"
#include "ZTMainForm.h"
#include "ZTNavigator.h"
#include "ZTSettingsStore.h"

namespace zentrail {

namespace {

constexpr const char* kPosition = "Position";
constexpr const char* kOrganizer = "Organizer";
constexpr const char* kDisplay = "Display";
constexpr const char* kGeneral = "General";
constexpr const char* kMessageFont = "MessageFont";
constexpr const char* kInspectorFont = "InspectorFont";
constexpr const char* kInspectorFixedFont = "InspectorFixedFont";
constexpr const char* kFontStyles = "FontStyles";
constexpr const char* kFind = "Find";
constexpr const char* kToolbars = "Toolbars";

// The column bits in the order of their keys; the three time bits share one column and follow.
struct TColumnKey {
  const char* Key;
  uint16_t Bit;
  const char* Action;
};
constexpr TColumnKey kColumnKeys[] = {
    {"Category", 1, "actViewCategory"},   {"AppName", 2, "actViewAppName"},
    {"ComputerName", 4, "actViewComputerName"}, {"ProcessID", 8, "actViewProcessID"},
    {"ThreadName", 16, "actViewThread"},  {"Date", 32, "actViewDate"},
};
constexpr TColumnKey kTimeColumnKeys[] = {
    {"TimeStamp", 64, nullptr}, {"TimeDiff", 128, nullptr}, {"TimeOffset", 256, nullptr}};

// Organizer bits by key.
constexpr std::pair<const char*, uint8_t> kOrganizerKeys[] = {
    {"AppName", 1}, {"Category", 2}, {"ProcessID", 4}, {"ThreadName", 8}, {"ComputerName", 16}};

std::string Utf8(const QString& s) { return s.toStdString(); }
QString FromUtf8(const std::string& s) { return QString::fromStdString(s); }

// The file's style number (8 bold, 4 italic, 2 underline, 1 strike-out) and the bits the views
// draw with run in opposite orders.
uint8_t StyleBitsFromNumber(int32_t number) {
  return static_cast<uint8_t>(((number & ztStyleBold) ? fsBold : 0) | ((number & ztStyleItalic) ? fsItalic : 0) |
                              ((number & ztStyleUnderline) ? fsUnderline : 0) |
                              ((number & ztStyleStrikeOut) ? fsStrikeOut : 0));
}

int32_t StyleNumberFromBits(uint8_t bits) {
  return ((bits & fsBold) ? ztStyleBold : 0) | ((bits & fsItalic) ? ztStyleItalic : 0) |
         ((bits & fsUnderline) ? ztStyleUnderline : 0) | ((bits & fsStrikeOut) ? ztStyleStrikeOut : 0);
}

int TextHeight(const QFont& font) { return QFontMetrics(font).height(); }

}  // namespace

// ---------------------------------------------------------------------------------------------------
// Fonts

// A face by name, or the system's font of that kind where the face is missing.
QFont TFrmViewer::ChooseFont(const QString& family, int pointSize, bool fixed) {
  QFont font;
  if (!family.isEmpty() && QFontDatabase::hasFamily(family)) {
    font = QFont(family);
  } else {
    font = QFontDatabase::systemFont(fixed ? QFontDatabase::FixedFont : QFontDatabase::GeneralFont);
  }
  if (pointSize > 0) font.setPointSize(pointSize);
  return font;
}

QFont TFrmViewer::RealizeFont(const TZTFontSetting& setting, bool fixed) {
  QFont font = ChooseFont(setting.Name, setting.Size, fixed);
  font.setBold((setting.Style & ztStyleBold) != 0);
  font.setItalic((setting.Style & ztStyleItalic) != 0);
  font.setUnderline((setting.Style & ztStyleUnderline) != 0);
  font.setStrikeOut((setting.Style & ztStyleStrikeOut) != 0);
  return font;
}

QString TFrmViewer::InspectorFontDefaultName() {
  return QFontDatabase::hasFamily(QStringLiteral("Segoe UI")) ? QStringLiteral("Segoe UI") : QStringLiteral("Verdana");
}

QString TFrmViewer::InspectorFixedFontDefaultName() {
  return QFontDatabase::hasFamily(QStringLiteral("Consolas")) ? QStringLiteral("Consolas")
                                                              : QStringLiteral("Courier New");
}

void TFrmViewer::ReadFont(const TZTIniFile& ini, const char* section, TZTFontSetting& font,
                          const QString& defaultName) {
  font.Name = FromUtf8(ini.ReadString(section, "Name", Utf8(defaultName)));
  font.Size = ini.ReadInteger(section, "Size", 8);
  font.Color = ini.ReadInteger(section, "Color", 0);
  font.Style = ini.ReadInteger(section, "Style", 0);
}

void TFrmViewer::WriteFont(TZTIniFile& ini, const char* section, const TZTFontSetting& font) {
  ini.WriteString(section, "Name", Utf8(font.Name));
  ini.WriteInteger(section, "Size", font.Size);
  ini.WriteInteger(section, "Color", font.Color);
  ini.WriteInteger(section, "Style", font.Style);
}

void TFrmViewer::SetMessageFont(const TZTFontSetting& setting) {
  FMessageFontSetting = setting;
  FMessageFont = RealizeFont(setting, false);
  for (IZTMessageView* v : FViews) v->UpdateSettings();
  FRowHeight = std::max(15, TextHeight(FMessageFont));
  pnlTabSet->setFixedHeight(FRowHeight + 10);
  tabViews->setFixedHeight(FRowHeight + 6);
  grdScratchPad->verticalHeader()->setDefaultSectionSize(FRowHeight + 1);
  if (auto* header = findChild<QWidget*>(QStringLiteral("pnlCallStackHeader"))) header->setFixedHeight(FRowHeight + 1);
  // The name column fits the widest name written so far.
  const QFontMetrics names(grdScratchPad->font());
  int widest = 0;
  for (const QString& name : FScratchPadNames) widest = std::max(widest, names.horizontalAdvance(name));
  FScratchPadNameWidth = std::max(FScratchPadNameWidth, widest + 10);
  grdScratchPad->setColumnWidth(1, FScratchPadNameWidth);
  if (FInspectorPane) FInspectorPane->SetHeaderFont(FMessageFont, FRowHeight);
  MsgTypeStyles[0] = TZTMsgTypeStyle{true, setting.Color, StyleBitsFromNumber(setting.Style)};
}

void TFrmViewer::SetInspectorFont(const TZTFontSetting& setting) {
  FInspectorFontSetting = setting;
  FInspectorFont = RealizeFont(setting, false);
  if (FInspectorPane) FInspectorPane->SetInspectorFont(FInspectorFont);
}

void TFrmViewer::SetInspectorFixedFont(const TZTFontSetting& setting) {
  FInspectorFixedFontSetting = setting;
  FInspectorFixedFont = RealizeFont(setting, true);
  if (FInspectorPane) FInspectorPane->SetInspectorFixedFont(FInspectorFixedFont);
}

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

// ---------------------------------------------------------------------------------------------------
// Message-type styles

void TFrmViewer::ReadMsgStyle(const TZTIniFile& ini, const char* keyPrefix, TZTMsgTypeStyle& entry) {
  const std::string prefix(keyPrefix);
  entry.UseDefault = ini.ReadBool(kFontStyles, prefix + "UseDefault", true);
  entry.Color = ini.ReadInteger(kFontStyles, prefix + "Color", clWindowText);
  entry.Style = StyleBitsFromNumber(ini.ReadInteger(kFontStyles, prefix + "Style", 0));
}

void TFrmViewer::WriteMsgStyle(TZTIniFile& ini, const char* keyPrefix, const TZTMsgTypeStyle& entry) {
  const std::string prefix(keyPrefix);
  ini.WriteBool(kFontStyles, prefix + "UseDefault", entry.UseDefault);
  ini.WriteInteger(kFontStyles, prefix + "Color", entry.Color);
  ini.WriteInteger(kFontStyles, prefix + "Style", StyleNumberFromBits(entry.Style));
}

TZTMsgTypeStyle TFrmViewer::GetMsgTypeStyle(int32_t msgType) {
  if (msgType < 0 || msgType >= ztMsgTypeStyleCount) return MsgTypeStyles[0];
  return MsgTypeStyles[static_cast<size_t>(msgType)];
}

void TFrmViewer::MsgTypeStylesChanged() {
  for (IZTMessageView* v : FViews) v->UpdateSettings();
}

// ---------------------------------------------------------------------------------------------------
// Columns, toolbars, colours

void TFrmViewer::SetColumnOptions(uint16_t options) {
  FColumnOptions = options;
  for (IZTMessageView* v : FViews) v->UpdateSettings();
  if (!FLoadingSettings) UpdateCommandStates();
}

void TFrmViewer::SetHideExtraColumns(bool hide) {
  FHideExtraColumns = hide;
  for (IZTMessageView* v : FViews) v->UpdateSettings();
  if (!FLoadingSettings) UpdateCommandStates();
}

void TFrmViewer::SetWrapButtons(bool wrap) {
  FWrapButtons = wrap;
  if (tbrMain) tbrMain->SetWrap(wrap);
  if (tbrView) tbrView->SetWrap(wrap);
  if (!FLoadingSettings) UpdateCommandStates();
}

void TFrmViewer::SetHiddenToolbarItems(const QString& toolbar, const QSet<QString>& names) {
  if (TZTCommandBar* bar = Toolbar(toolbar)) bar->SetHiddenItems(names);
}

TFrmViewer::TZTDisplayColors TFrmViewer::DisplayColors() const {
  return {FMarkerColor,    FSyncMsgColor, FSeparatorColor,         FInactiveSeparatorColor, FAppStartSeparatorColor,
          FValueColor,     FHighlightColor, FHighlightFontColor, FRowShading,             FRowShadingColor};
}

void TFrmViewer::SetDisplayColors(const TZTDisplayColors& c) {
  FMarkerColor = c.Marker;
  FSyncMsgColor = c.SyncMsg;
  FSeparatorColor = c.Separator;
  FInactiveSeparatorColor = c.InactiveSeparator;
  FAppStartSeparatorColor = c.AppStartSeparator;
  FValueColor = c.Value;
  FHighlightColor = c.Highlight;
  FHighlightFontColor = c.HighlightFont;
  FRowShading = c.RowShading;
  FRowShadingColor = c.RowShadingColor;
  ApplyChromeColours();
  if (FInspectorPane) {
    FInspectorPane->SetValueColor(ColorToQColor(FValueColor, palette()));
    FInspectorPane->SetHighlightColors(ColorToQColor(FHighlightColor, palette()),
                                       ColorToQColor(FHighlightFontColor, palette()));
  }
  if (grdScratchPad) grdScratchPad->viewport()->update();
  for (IZTMessageView* v : FViews) v->UpdateSettings();
}

// ---------------------------------------------------------------------------------------------------
// Splitters: each keeps the size of its far pane (right or lower), so that pane keeps its size
// when the window has another size in the next run.

namespace {

int SplitterExtent(QSplitter* s) { return s->orientation() == Qt::Horizontal ? s->width() : s->height(); }

// The far pane's size, or -1 while either pane is hidden: the size then means nothing (a
// full-size inspector hides the views and fills the whole splitter for the moment).
int FarPaneSize(QSplitter* s) {
  QWidget* near = s->widget(0);
  QWidget* far = s->widget(1);
  if (!near || !far || near->isHidden() || far->isHidden()) return -1;
  const QList<int> sizes = s->sizes();
  return sizes.size() < 2 ? -1 : sizes[1];
}

void ApplyFarPane(QSplitter* s, int fixed) {
  if (fixed <= -1) return;
  QList<int> sizes = s->sizes();
  if (sizes.size() < 2) return;
  // Laid out or not, the splitter's own extent is what the two panes share; before the first
  // layout its sizes are the design sizes, whose sum stands for it.
  const int total = s->isVisible() ? SplitterExtent(s) - s->handleWidth() : sizes[0] + sizes[1];
  s->setSizes({std::max(0, total - fixed), fixed});
}

}  // namespace

void TFrmViewer::ApplySplitterSizes() {
  ApplyFarPane(splMain, FMainSplitFixed);
  ApplyFarPane(splLeft, FLeftSplitFixed);
  ApplyFarPane(splRight, FRightSplitFixed);
}

void TFrmViewer::ReadSplitterSizes() {
  if (int v = FarPaneSize(splMain); v >= 0) FMainSplitFixed = v;
  if (int v = FarPaneSize(splLeft); v >= 0) FLeftSplitFixed = v;
  if (int v = FarPaneSize(splRight); v >= 0) FRightSplitFixed = v;
}

// ---------------------------------------------------------------------------------------------------
// Load and save

void TFrmViewer::LoadSettings() {
  FLoadingSettings = true;
  const TZTIniFile& ini = ViewerSettings();

  // ---- Position: the restored rectangle; a corner on no monitor moves to (0, 0), size kept.
  QRect rect(QPoint(ini.ReadInteger(kPosition, "Left", 20), ini.ReadInteger(kPosition, "Top", 20)),
             QPoint(ini.ReadInteger(kPosition, "Right", 790) - 1, ini.ReadInteger(kPosition, "Bottom", 420) - 1));
  const QList<QScreen*> screens = QGuiApplication::screens();
  const bool onScreen =
      std::any_of(screens.begin(), screens.end(), [&](QScreen* s) { return s->geometry().contains(rect.topLeft()); });
  if (!onScreen) rect.moveTopLeft(QPoint(0, 0));
  setGeometry(rect);
  if (ini.ReadBool(kPosition, "Maximized", false)) setWindowState(windowState() | Qt::WindowMaximized);

  // ---- Organizer
  OrganizeBy = 0;
  for (const auto& [key, bit] : kOrganizerKeys)
    if (ini.ReadBool(kOrganizer, key, false)) OrganizeBy |= bit;
  AutoOrganize = ini.ReadBool(kOrganizer, "AutoOrganize", false);

  // ---- Display
  SetAlwaysOnTop(ini.ReadBool(kDisplay, "AlwaysOnTop", false));
  SetPaneVisible(TZTPane::Inspector, ini.ReadBool(kDisplay, "Inspector", false));
  SetPaneVisible(TZTPane::CallStack, ini.ReadBool(kDisplay, "CallStack", false));
  SetPaneVisible(TZTPane::ScratchPad, ini.ReadBool(kDisplay, "ScratchPad", false));
  FScratchPadLightColor = ini.ReadInteger(kDisplay, "ScratchPadLightColor", 0);
  SetInspectorOnBottom(ini.ReadBool(kDisplay, "InspectorOnBottom", false));
  FMainSplitFixed = ini.ReadInteger(kDisplay, "MainSplitFixed", -1);
  FLeftSplitFixed = ini.ReadInteger(kDisplay, "LeftSplitFixed", -1);
  FRightSplitFixed = ini.ReadInteger(kDisplay, "RightSplitFixed", -1);
  ApplySplitterSizes();
  SetWrapButtons(ini.ReadBool(kDisplay, "WrapButtons", false));
  SetDetailPanelVisible(ini.ReadBool(kDisplay, "DetailPanel", false));
  uint16_t columns = 0;
  for (const TColumnKey& c : kColumnKeys)
    if (ini.ReadBool(kDisplay, c.Key, false)) columns |= c.Bit;
  // One time column at most: the first of the three that is on wins and the rest are not read.
  for (const TColumnKey& c : kTimeColumnKeys) {
    if (ini.ReadBool(kDisplay, c.Key, false)) {
      columns |= c.Bit;
      break;
    }
  }
  SetColumnOptions(columns);
  SetHideExtraColumns(ini.ReadBool(kDisplay, "HideExtraColumns", false));
  TZTDisplayColors colors;
  colors.Marker = ini.ReadInteger(kDisplay, "MarkerColor", 0x00E6D8AD);
  colors.SyncMsg = ini.ReadInteger(kDisplay, "SyncMsgColor", 0x00AFEBFF);
  colors.Separator = ini.ReadInteger(kDisplay, "SeparatorColor", 0x00E4AD89);
  colors.InactiveSeparator = ini.ReadInteger(kDisplay, "InactiveSeparatorColor", 0x00A0CDDE);
  colors.AppStartSeparator = ini.ReadInteger(kDisplay, "AppStartSeparatorColor", 0x00E4AD89);
  colors.Value = ini.ReadInteger(kDisplay, "ValueColor", 0x008E3300);
  colors.Highlight = ini.ReadInteger(kDisplay, "HighlightColor", 0x00F0CDAA);
  colors.HighlightFont = ini.ReadInteger(kDisplay, "HighlightFontColor", 0x00502805);
  colors.RowShading = ini.ReadBool(kDisplay, "RowShading", true);
  colors.RowShadingColor = ini.ReadInteger(kDisplay, "RowShadingColor", clBtnShadow);
  SetDisplayColors(colors);
  if (FInspectorPane) {
    TZTInspectorDisplaySettings d;
    d.StringWordWrap = ini.ReadBool(kDisplay, "StringWordWrap", true);
    d.StringLineNumbers = ini.ReadBool(kDisplay, "StringLineNumbers", false);
    d.TextWordWrap = ini.ReadBool(kDisplay, "TextWordWrap", false);
    d.TextJumpToEnd = ini.ReadBool(kDisplay, "TextJumpToEnd", false);
    d.TextLineNumbers = ini.ReadBool(kDisplay, "TextLineNumbers", false);
    d.StrListJumpToEnd = ini.ReadBool(kDisplay, "StrListJumpToEnd", false);
    d.MonospaceTextLineNumbers = ini.ReadBool(kDisplay, "MonospaceTextLineNumbers", false);
    d.DisplayType = ini.ReadInteger(kDisplay, "DisplayType", 1);
    d.XmlViewType = ini.ReadInteger(kDisplay, "XmlViewType", 0);
    FInspectorPane->SetDisplaySettings(d);
  }

  // ---- General
  ConfirmOnClear = ini.ReadBool(kGeneral, "ConfirmOnClear", true);
  Navigator().ConfirmOnClearBookmarks = ini.ReadBool(kGeneral, "ConfirmOnClearBookmarks", true);
  AutoSaveProject = ini.ReadBool(kGeneral, "AutoSaveProject", true);
  SetAutoScroll(ini.ReadBool(kGeneral, "AutoScroll", true));
  SetAutoCollapse(ini.ReadBool(kGeneral, "AutoCollapse", true));
  SetFlattenStructure(ini.ReadBool(kGeneral, "FlattenStructure", false));
  SoundEffectOnWakeUp = ini.ReadBool(kGeneral, "SoundEffectOnWakeUp", false);
  SoundEffectFile = FromUtf8(ini.ReadString(kGeneral, "SoundEffectFile", ""));
  InsertSeparatorOnWakeUp = ini.ReadBool(kGeneral, "InsertSeparatorOnWakeUp", false);
  IdleTime = ini.ReadInteger(kGeneral, "IdleTime", 10);
  InsertSeparatorOnAppStart = ini.ReadBool(kGeneral, "InsertSeparatorOnAppStart", false);
  LastProject = FromUtf8(ini.ReadString(kGeneral, "LastProject", ""));
  LastLogDir = FromUtf8(ini.ReadString(kGeneral, "LastLogDir", ""));
  LastProjectDir = FromUtf8(ini.ReadString(kGeneral, "LastProjectDir", ""));
  TZTNavigator& nav = Navigator();
  nav.SetNavigatorMsgType(ini.ReadInteger(kGeneral, "NavigatorMsgType", 3));
  nav.SetNavigatorMsgContent(ini.ReadInteger(kGeneral, "NavigatorMsgContent", 7));
  nav.SetNavigatorAutomatic(ini.ReadBool(kGeneral, "NavigatorAutomatic", true));
  nav.SetNavigatorTimeDiff(ini.ReadBool(kGeneral, "NavigatorTimeDiff", false));
  nav.SetTimeDiffNavThreshold(ini.ReadInteger(kGeneral, "TimeDiffNavThreshold", 1000));
  PrintSelection = ini.ReadBool(kGeneral, "PrintSelection", true);
  PrintFontSize = ini.ReadInteger(kGeneral, "PrintFontSize", 8);

  // ---- Fonts, each applied as soon as it is read
  TZTFontSetting font;
  ReadFont(ini, kMessageFont, font, QStringLiteral("Verdana"));
  SetMessageFont(font);
  ReadFont(ini, kInspectorFont, font, InspectorFontDefaultName());
  SetInspectorFont(font);
  ReadFont(ini, kInspectorFixedFont, font, InspectorFixedFontDefaultName());
  SetInspectorFixedFont(font);

  // ---- FontStyles: the types without keys keep an empty entry
  for (size_t i = 1; i < MsgTypeStyles.size(); ++i) MsgTypeStyles[i] = TZTMsgTypeStyle{};
  for (const TZTMsgStyleKey& k : MsgStyleKeys())
    if (k.MsgType > 0 && k.MsgType < ztMsgTypeStyleCount) ReadMsgStyle(ini, k.Prefix, MsgTypeStyles[k.MsgType]);
  MsgTypeStylesChanged();

  // ---- Find (the find dialog reads its texts from section MRULists itself, when it opens)
  nav.FindForward = ini.ReadBool(kFind, "FindForward", true);
  nav.FindFromCursor = ini.ReadBool(kFind, "FindFromCursor", false);
  nav.FindInDetails = ini.ReadBool(kFind, "FindInDetails", true);

  // ---- Toolbars: the buttons the user chose not to see
  for (const char* bar : {"tbrMain", "tbrView"}) {
    const QString hidden = FromUtf8(ini.ReadString(kToolbars, std::string(bar) + "Hidden", ""));
    const QStringList names = hidden.split(QLatin1Char(','), Qt::SkipEmptyParts);
    SetHiddenToolbarItems(QString::fromLatin1(bar), QSet<QString>(names.begin(), names.end()));
  }

  FLoadingSettings = false;
}

void TFrmViewer::SaveSettings() {
  TZTIniFile& ini = ViewerSettings();

  // ---- Position: the restored rectangle, also while maximised.
  const QRect rect = normalGeometry().isValid() ? normalGeometry() : geometry();
  ini.WriteInteger(kPosition, "Left", rect.left());
  ini.WriteInteger(kPosition, "Top", rect.top());
  ini.WriteInteger(kPosition, "Right", rect.right() + 1);
  ini.WriteInteger(kPosition, "Bottom", rect.bottom() + 1);
  ini.WriteBool(kPosition, "Maximized", isMaximized());

  // ---- Organizer
  for (const auto& [key, bit] : kOrganizerKeys) ini.WriteBool(kOrganizer, key, (OrganizeBy & bit) != 0);
  ini.WriteBool(kOrganizer, "AutoOrganize", AutoOrganize);

  // ---- Display
  ini.WriteBool(kDisplay, "AlwaysOnTop", ztAlwaysOnTop);
  // A full-size inspector has hidden the other panes only for the moment.
  ini.WriteBool(kDisplay, "Inspector", FInspectorVisible);
  ini.WriteBool(kDisplay, "CallStack", FFullSizeInspector ? (FFullSizeRestore & 2) != 0 : FCallStackVisible);
  ini.WriteBool(kDisplay, "ScratchPad", FFullSizeInspector ? (FFullSizeRestore & 4) != 0 : FScratchPadVisible);
  ini.WriteInteger(kDisplay, "ScratchPadLightColor", FScratchPadLightColor);
  ini.WriteBool(kDisplay, "InspectorOnBottom", FInspectorOnBottom);
  ReadSplitterSizes();
  ini.WriteInteger(kDisplay, "MainSplitFixed", FMainSplitFixed);
  ini.WriteInteger(kDisplay, "LeftSplitFixed", FLeftSplitFixed);
  ini.WriteInteger(kDisplay, "RightSplitFixed", FRightSplitFixed);
  ini.WriteBool(kDisplay, "WrapButtons", FWrapButtons);
  ini.WriteBool(kDisplay, "DetailPanel", FDetailPanelVisible);
  for (const TColumnKey& c : kColumnKeys) ini.WriteBool(kDisplay, c.Key, (FColumnOptions & c.Bit) != 0);
  for (const TColumnKey& c : kTimeColumnKeys) ini.WriteBool(kDisplay, c.Key, (FColumnOptions & c.Bit) != 0);
  ini.WriteBool(kDisplay, "HideExtraColumns", FHideExtraColumns);
  ini.WriteInteger(kDisplay, "MarkerColor", FMarkerColor);
  ini.WriteInteger(kDisplay, "SyncMsgColor", FSyncMsgColor);
  ini.WriteInteger(kDisplay, "SeparatorColor", FSeparatorColor);
  ini.WriteInteger(kDisplay, "InactiveSeparatorColor", FInactiveSeparatorColor);
  ini.WriteInteger(kDisplay, "AppStartSeparatorColor", FAppStartSeparatorColor);
  ini.WriteInteger(kDisplay, "ValueColor", FValueColor);
  ini.WriteInteger(kDisplay, "HighlightColor", FHighlightColor);
  ini.WriteInteger(kDisplay, "HighlightFontColor", FHighlightFontColor);
  ini.WriteBool(kDisplay, "RowShading", FRowShading);
  ini.WriteInteger(kDisplay, "RowShadingColor", FRowShadingColor);
  if (FInspectorPane) {
    const TZTInspectorDisplaySettings d = FInspectorPane->GetDisplaySettings();
    ini.WriteBool(kDisplay, "StringWordWrap", d.StringWordWrap);
    ini.WriteBool(kDisplay, "StringLineNumbers", d.StringLineNumbers);
    ini.WriteBool(kDisplay, "TextWordWrap", d.TextWordWrap);
    ini.WriteBool(kDisplay, "TextJumpToEnd", d.TextJumpToEnd);
    ini.WriteBool(kDisplay, "TextLineNumbers", d.TextLineNumbers);
    ini.WriteBool(kDisplay, "StrListJumpToEnd", d.StrListJumpToEnd);
    ini.WriteBool(kDisplay, "MonospaceTextLineNumbers", d.MonospaceTextLineNumbers);
    ini.WriteInteger(kDisplay, "DisplayType", d.DisplayType);
    ini.WriteInteger(kDisplay, "XmlViewType", d.XmlViewType);
  }

  // ---- General
  const TZTNavigator& nav = Navigator();
  ini.WriteBool(kGeneral, "ConfirmOnClear", ConfirmOnClear);
  ini.WriteBool(kGeneral, "ConfirmOnClearBookmarks", nav.ConfirmOnClearBookmarks);
  ini.WriteBool(kGeneral, "AutoSaveProject", AutoSaveProject);
  ini.WriteBool(kGeneral, "AutoScroll", FAutoScroll);
  ini.WriteBool(kGeneral, "AutoCollapse", FAutoCollapse);
  ini.WriteBool(kGeneral, "FlattenStructure", FFlattenStructure);
  ini.WriteBool(kGeneral, "SoundEffectOnWakeUp", SoundEffectOnWakeUp);
  ini.WriteString(kGeneral, "SoundEffectFile", Utf8(SoundEffectFile));
  ini.WriteBool(kGeneral, "InsertSeparatorOnWakeUp", InsertSeparatorOnWakeUp);
  ini.WriteInteger(kGeneral, "IdleTime", IdleTime);
  ini.WriteBool(kGeneral, "InsertSeparatorOnAppStart", InsertSeparatorOnAppStart);
  ini.WriteString(kGeneral, "LastProject", Utf8(LastProject));
  ini.WriteString(kGeneral, "LastLogDir", Utf8(LastLogDir));
  ini.WriteString(kGeneral, "LastProjectDir", Utf8(LastProjectDir));
  ini.WriteInteger(kGeneral, "NavigatorMsgType", nav.NavigatorMsgType());
  ini.WriteInteger(kGeneral, "NavigatorMsgContent", nav.NavigatorMsgContent());
  ini.WriteBool(kGeneral, "NavigatorAutomatic", nav.NavigatorAutomatic());
  ini.WriteBool(kGeneral, "NavigatorTimeDiff", nav.NavigatorTimeDiff());
  ini.WriteInteger(kGeneral, "TimeDiffNavThreshold", nav.TimeDiffNavThreshold());
  ini.WriteBool(kGeneral, "PrintSelection", PrintSelection);
  ini.WriteInteger(kGeneral, "PrintFontSize", PrintFontSize);

  // ---- Fonts
  WriteFont(ini, kMessageFont, FMessageFontSetting);
  WriteFont(ini, kInspectorFont, FInspectorFontSetting);
  WriteFont(ini, kInspectorFixedFont, FInspectorFixedFontSetting);

  // ---- FontStyles
  for (const TZTMsgStyleKey& k : MsgStyleKeys())
    if (k.MsgType > 0 && k.MsgType < ztMsgTypeStyleCount) WriteMsgStyle(ini, k.Prefix, MsgTypeStyles[k.MsgType]);

  // ---- Find
  ini.WriteBool(kFind, "FindForward", nav.FindForward);
  ini.WriteBool(kFind, "FindFromCursor", nav.FindFromCursor);
  ini.WriteBool(kFind, "FindInDetails", nav.FindInDetails);

  // ---- Toolbars: a section only while some button is hidden
  ini.EraseSection(kToolbars);
  for (const char* bar : {"tbrMain", "tbrView"}) {
    QStringList names = Toolbar(QString::fromLatin1(bar))->HiddenItems().values();
    names.sort();
    if (!names.isEmpty()) ini.WriteString(kToolbars, std::string(bar) + "Hidden", Utf8(names.join(QLatin1Char(','))));
  }
}

}  // namespace zentrail
