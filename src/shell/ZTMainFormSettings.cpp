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

constexpr const char* kToolbars = "Toolbars";

std::string Utf8(const QString& s) { return s.toStdString(); }
QString FromUtf8(const std::string& s) { return QString::fromStdString(s); }

int TextHeight(const QFont& font) { return QFontMetrics(font).height(); }

}  // namespace

// ---------------------------------------------------------------------------------------------------
// Fonts

QFont TFrmViewer::ChooseFont(const QString& family, int pointSize, bool fixed) {
  return ChooseFontFace(family, pointSize, fixed);
}

QFont TFrmViewer::RealizeFont(const TZTFontSetting& setting, bool fixed) { return RealizeFontSetting(setting, fixed); }

QString TFrmViewer::InspectorFontDefaultName() { return TZTFontsSection::InspectorDefaultName(); }

QString TFrmViewer::InspectorFixedFontDefaultName() { return TZTFontsSection::InspectorFixedDefaultName(); }

void TFrmViewer::ReadFont(const TZTIniFile& ini, const char* section, TZTFontSetting& font,
                          const QString& defaultName) {
  TZTFontsSection::ReadFont(ini, section, font, defaultName);
}

void TFrmViewer::WriteFont(TZTIniFile& ini, const char* section, const TZTFontSetting& font) {
  TZTFontsSection::WriteFont(ini, section, font);
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
  TZTFontStylesSection::ReadMsgStyle(ini, keyPrefix, entry);
}

void TFrmViewer::WriteMsgStyle(TZTIniFile& ini, const char* keyPrefix, const TZTMsgTypeStyle& entry) {
  TZTFontStylesSection::WriteMsgStyle(ini, keyPrefix, entry);
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
// The sections as the window has them now, and their application through the setters

TZTDisplaySection TFrmViewer::CurrentDisplay() {
  TZTDisplaySection d;
  d.AlwaysOnTop = ztAlwaysOnTop;
  // A full-size inspector has hidden the other panes only for the moment.
  d.Inspector = FInspectorVisible;
  d.CallStack = FFullSizeInspector ? (FFullSizeRestore & 2) != 0 : FCallStackVisible;
  d.ScratchPad = FFullSizeInspector ? (FFullSizeRestore & 4) != 0 : FScratchPadVisible;
  d.ScratchPadLightColor = FScratchPadLightColor;
  d.InspectorOnBottom = FInspectorOnBottom;
  ReadSplitterSizes();
  d.MainSplitFixed = FMainSplitFixed;
  d.LeftSplitFixed = FLeftSplitFixed;
  d.RightSplitFixed = FRightSplitFixed;
  d.WrapButtons = FWrapButtons;
  d.DetailPanel = FDetailPanelVisible;
  d.Columns = FColumnOptions;
  d.HideExtraColumns = FHideExtraColumns;
  d.MarkerColor = FMarkerColor;
  d.SyncMsgColor = FSyncMsgColor;
  d.SeparatorColor = FSeparatorColor;
  d.InactiveSeparatorColor = FInactiveSeparatorColor;
  d.AppStartSeparatorColor = FAppStartSeparatorColor;
  d.ValueColor = FValueColor;
  d.HighlightColor = FHighlightColor;
  d.HighlightFontColor = FHighlightFontColor;
  d.RowShading = FRowShading;
  d.RowShadingColor = FRowShadingColor;
  if (FInspectorPane) d.Inspectors = FInspectorPane->GetDisplaySettings();
  return d;
}

TZTGeneralSection TFrmViewer::CurrentGeneral() const {
  const TZTNavigator& nav = *FNavigator;
  TZTGeneralSection g;
  g.ConfirmOnClear = ConfirmOnClear;
  g.ConfirmOnClearBookmarks = nav.ConfirmOnClearBookmarks;
  g.AutoSaveProject = AutoSaveProject;
  g.AutoScroll = FAutoScroll;
  g.AutoCollapse = FAutoCollapse;
  g.FlattenStructure = FFlattenStructure;
  g.SoundEffectOnWakeUp = SoundEffectOnWakeUp;
  g.SoundEffectFile = SoundEffectFile;
  g.InsertSeparatorOnWakeUp = InsertSeparatorOnWakeUp;
  g.IdleTime = IdleTime;
  g.InsertSeparatorOnAppStart = InsertSeparatorOnAppStart;
  g.LastProject = LastProject;
  g.LastLogDir = LastLogDir;
  g.LastProjectDir = LastProjectDir;
  g.NavigatorMsgType = nav.NavigatorMsgType();
  g.NavigatorMsgContent = nav.NavigatorMsgContent();
  g.NavigatorAutomatic = nav.NavigatorAutomatic();
  g.NavigatorTimeDiff = nav.NavigatorTimeDiff();
  g.TimeDiffNavThreshold = nav.TimeDiffNavThreshold();
  g.PrintSelection = PrintSelection;
  g.PrintFontSize = PrintFontSize;
  return g;
}

TZTViewerOptions TFrmViewer::CurrentOptions() {
  TZTViewerOptions o;
  o.Display = CurrentDisplay();
  o.General = CurrentGeneral();
  o.Fonts = {FMessageFontSetting, FInspectorFontSetting, FInspectorFixedFontSetting};
  o.Styles = MsgTypeStyles;
  return o;
}

void TFrmViewer::ApplyPosition(const TZTPositionSection& pos) {
  const QList<QScreen*> screens = QGuiApplication::screens();
  if (!pos.Stored) {
    // A first run: a good share of the screen, in its middle, rather than the bare minimum.
    if (QScreen* screen = QGuiApplication::primaryScreen()) {
      const QRect area = screen->availableGeometry();
      const QSize size(std::max(790, area.width() * 4 / 5), std::max(420, area.height() * 4 / 5));
      QRect rect(QPoint(0, 0), size.boundedTo(area.size()));
      rect.moveCenter(area.center());
      setGeometry(rect);
      return;
    }
  }
  // The restored rectangle; a corner on no monitor moves to (0, 0), its size kept.
  QRect rect(QPoint(pos.Left, pos.Top), QPoint(pos.Right - 1, pos.Bottom - 1));
  const bool onScreen =
      std::any_of(screens.begin(), screens.end(), [&](QScreen* s) { return s->geometry().contains(rect.topLeft()); });
  if (!onScreen) rect.moveTopLeft(QPoint(0, 0));
  setGeometry(rect);
  if (pos.Maximized) setWindowState(windowState() | Qt::WindowMaximized);
}

void TFrmViewer::ApplyDisplay(const TZTDisplaySection& d) {
  SetAlwaysOnTop(d.AlwaysOnTop);
  SetPaneVisible(TZTPane::Inspector, d.Inspector);
  SetPaneVisible(TZTPane::CallStack, d.CallStack);
  SetPaneVisible(TZTPane::ScratchPad, d.ScratchPad);
  SetScratchPadLightColor(d.ScratchPadLightColor);
  SetInspectorOnBottom(d.InspectorOnBottom);
  FMainSplitFixed = d.MainSplitFixed;
  FLeftSplitFixed = d.LeftSplitFixed;
  FRightSplitFixed = d.RightSplitFixed;
  // The design positions share the window as it opens: the inspector column takes three tenths of
  // the width, the pads below a fifth of the height.
  const int w = std::max(width(), 400), h = std::max(height(), 300);
  splMain->setSizes({w * 7 / 10, w * 3 / 10});
  splLeft->setSizes({h * 4 / 5, h / 5});
  splRight->setSizes({h * 3 / 4, h / 4});
  ApplySplitterSizes();
  SetWrapButtons(d.WrapButtons);
  SetDetailPanelVisible(d.DetailPanel);
  SetColumnOptions(d.Columns);
  SetHideExtraColumns(d.HideExtraColumns);
  TZTDisplayColors colors;
  colors.Marker = d.MarkerColor;
  colors.SyncMsg = d.SyncMsgColor;
  colors.Separator = d.SeparatorColor;
  colors.InactiveSeparator = d.InactiveSeparatorColor;
  colors.AppStartSeparator = d.AppStartSeparatorColor;
  colors.Value = d.ValueColor;
  colors.Highlight = d.HighlightColor;
  colors.HighlightFont = d.HighlightFontColor;
  colors.RowShading = d.RowShading;
  colors.RowShadingColor = d.RowShadingColor;
  SetDisplayColors(colors);
  if (FInspectorPane) FInspectorPane->SetDisplaySettings(d.Inspectors);
}

void TFrmViewer::ApplyGeneral(const TZTGeneralSection& g) {
  ConfirmOnClear = g.ConfirmOnClear;
  FNavigator->ConfirmOnClearBookmarks = g.ConfirmOnClearBookmarks;
  AutoSaveProject = g.AutoSaveProject;
  SetAutoScroll(g.AutoScroll);
  SetAutoCollapse(g.AutoCollapse);
  SetFlattenStructure(g.FlattenStructure);
  SoundEffectOnWakeUp = g.SoundEffectOnWakeUp;
  SoundEffectFile = g.SoundEffectFile;
  InsertSeparatorOnWakeUp = g.InsertSeparatorOnWakeUp;
  IdleTime = g.IdleTime;
  InsertSeparatorOnAppStart = g.InsertSeparatorOnAppStart;
  LastProject = g.LastProject;
  LastLogDir = g.LastLogDir;
  LastProjectDir = g.LastProjectDir;
  TZTNavigator& nav = *FNavigator;
  nav.SetNavigatorMsgType(g.NavigatorMsgType);
  nav.SetNavigatorMsgContent(g.NavigatorMsgContent);
  nav.SetNavigatorAutomatic(g.NavigatorAutomatic);
  nav.SetNavigatorTimeDiff(g.NavigatorTimeDiff);
  nav.SetTimeDiffNavThreshold(g.TimeDiffNavThreshold);
  PrintSelection = g.PrintSelection;
  PrintFontSize = g.PrintFontSize;
}

void TFrmViewer::SetScratchPadLightColor(int index) {
  FScratchPadLightColor = index;
  if (grdScratchPad) grdScratchPad->viewport()->update();
}

// ---------------------------------------------------------------------------------------------------
// Load and save

void TFrmViewer::LoadSettings() {
  FLoadingSettings = true;
  const TZTIniFile& ini = ViewerSettings();

  TZTPositionSection position;
  position.Read(ini);
  ApplyPosition(position);

  TZTOrganizerSection organizer;
  organizer.Read(ini);
  OrganizeBy = organizer.OrganizeBy;
  AutoOrganize = organizer.AutoOrganize;

  TZTDisplaySection display;
  display.Read(ini);
  ApplyDisplay(display);

  TZTGeneralSection general;
  general.Read(ini);
  ApplyGeneral(general);

  // Each font is applied as soon as it is read.
  TZTFontsSection fonts;
  fonts.Read(ini);
  SetMessageFont(fonts.Message);
  SetInspectorFont(fonts.Inspector);
  SetInspectorFixedFont(fonts.InspectorFixed);

  // The types without keys keep an empty entry; entry 0 is the message font's.
  TZTFontStylesSection styles;
  styles.Read(ini);
  for (size_t i = 1; i < MsgTypeStyles.size(); ++i) MsgTypeStyles[i] = styles.Styles[i];
  MsgTypeStylesChanged();

  // The find dialog reads its texts from section MRULists itself, when it opens.
  TZTFindSection find;
  find.Read(ini);
  FNavigator->FindForward = find.FindForward;
  FNavigator->FindFromCursor = find.FindFromCursor;
  FNavigator->FindInDetails = find.FindInDetails;

  // The buttons the user chose not to see.
  for (const char* bar : {"tbrMain", "tbrView"}) {
    const QString hidden = FromUtf8(ini.ReadString(kToolbars, std::string(bar) + "Hidden", ""));
    const QStringList names = hidden.split(QLatin1Char(','), Qt::SkipEmptyParts);
    SetHiddenToolbarItems(QString::fromLatin1(bar), QSet<QString>(names.begin(), names.end()));
  }

  FLoadingSettings = false;
}

void TFrmViewer::SaveSettings() {
  TZTIniFile& ini = ViewerSettings();

  // The restored rectangle, also while maximised.
  const QRect rect = normalGeometry().isValid() ? normalGeometry() : geometry();
  TZTPositionSection position;
  position.Left = rect.left();
  position.Top = rect.top();
  position.Right = rect.right() + 1;
  position.Bottom = rect.bottom() + 1;
  position.Maximized = isMaximized();
  position.Write(ini);

  TZTOrganizerSection organizer;
  organizer.OrganizeBy = OrganizeBy;
  organizer.AutoOrganize = AutoOrganize;
  organizer.Write(ini);

  CurrentDisplay().Write(ini);
  CurrentGeneral().Write(ini);
  TZTFontsSection{FMessageFontSetting, FInspectorFontSetting, FInspectorFixedFontSetting}.Write(ini);
  TZTFontStylesSection styles;
  styles.Styles = MsgTypeStyles;
  styles.Write(ini);
  TZTFindSection find;
  find.FindForward = FNavigator->FindForward;
  find.FindFromCursor = FNavigator->FindFromCursor;
  find.FindInDetails = FNavigator->FindInDetails;
  find.Write(ini);

  // A section only while some button is hidden.
  ini.EraseSection(kToolbars);
  for (const char* bar : {"tbrMain", "tbrView"}) {
    QStringList names = Toolbar(QString::fromLatin1(bar))->HiddenItems().values();
    names.sort();
    if (!names.isEmpty()) ini.WriteString(kToolbars, std::string(bar) + "Hidden", Utf8(names.join(QLatin1Char(','))));
  }
}

}  // namespace zentrail
