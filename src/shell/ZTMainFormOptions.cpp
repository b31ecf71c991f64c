// The main window's dialogs of choices: the columns, the toolbars' buttons and the options. Each
// dialog gets the window's state, and on OK the window takes the values back through the setters
// that commands and settings use.
#include "ZTMainForm.h"

#include <QDialog>
#include <algorithm>

#include "ZTColumnsForm.h"
#include "ZTColumnsPage.h"
#include "ZTCommandBar.h"
#include "ZTNavigator.h"
#include "ZTOptionsForm.h"
#include "ZTPromptService.h"
#include "ZTToolbarsForm.h"

namespace zentrail {

void TFrmViewer::SelectColumns() {
  TfrmColumns dialog(this);
  dialog.Page()->SetColumns(FColumnOptions);
  if (PromptService().RunDialog(dialog) != QDialog::Accepted) return;
  const uint16_t columns = dialog.Page()->Columns();
  if (columns == FColumnOptions) return;
  SetColumnOptions(columns);
  if (IZTMessageView* view = ActiveView()) view->Invalidate();
}

void TFrmViewer::CustomizeToolbars() {
  TfrmCustomizeToolbars dialog({tbrMain, tbrView}, this);
  if (PromptService().RunDialog(dialog) != QDialog::Accepted) return;
  SetHiddenToolbarItems(QStringLiteral("tbrMain"), dialog.HiddenItems(0));
  SetHiddenToolbarItems(QStringLiteral("tbrView"), dialog.HiddenItems(1));
}

void TFrmViewer::ShowOptions() {
  TfrmOptions dialog(this);
  dialog.SetOptions(CurrentOptions());
  if (PromptService().RunDialog(dialog) != QDialog::Accepted) return;
  ApplyOptions(dialog.Options());
}

void TFrmViewer::ApplyOptions(const TZTViewerOptions& o) {
  const TZTDisplaySection& d = o.Display;
  const TZTGeneralSection& g = o.General;

  // Colours, row shading and the questions.
  TZTDisplayColors colors = DisplayColors();
  colors.Separator = d.SeparatorColor;
  colors.InactiveSeparator = d.InactiveSeparatorColor;
  colors.AppStartSeparator = d.AppStartSeparatorColor;
  colors.Marker = d.MarkerColor;
  colors.SyncMsg = d.SyncMsgColor;
  colors.Value = d.ValueColor;
  colors.Highlight = d.HighlightColor;
  colors.HighlightFont = d.HighlightFontColor;
  colors.RowShading = d.RowShading;
  colors.RowShadingColor = d.RowShadingColor;
  SetDisplayColors(colors);
  ConfirmOnClear = g.ConfirmOnClear;
  FNavigator->ConfirmOnClearBookmarks = g.ConfirmOnClearBookmarks;
  AutoSaveProject = g.AutoSaveProject;

  // Structure and scrolling: each setter tells every view, so only what changed.
  if (g.AutoCollapse != FAutoCollapse) SetAutoCollapse(g.AutoCollapse);
  if (g.FlattenStructure != FFlattenStructure) SetFlattenStructure(g.FlattenStructure);
  if (g.AutoScroll != FAutoScroll) SetAutoScroll(g.AutoScroll);

  // What idle time and a new application bring.
  SoundEffectOnWakeUp = g.SoundEffectOnWakeUp;
  SoundEffectFile = g.SoundEffectFile;
  InsertSeparatorOnWakeUp = g.InsertSeparatorOnWakeUp;
  IdleTime = g.IdleTime;
  InsertSeparatorOnAppStart = g.InsertSeparatorOnAppStart;

  // Panes and window. A full-size inspector gives way when the inspector goes; otherwise the
  // panes it hides for the moment take the new choice when it ends.
  if (FFullSizeInspector && !d.Inspector) SetFullSizeInspector(false);
  const bool inspectorWasOn = FInspectorVisible;
  if (FFullSizeInspector) {
    FFullSizeRestore = static_cast<uint8_t>(1 | (d.CallStack ? 2 : 0) | (d.ScratchPad ? 4 : 0));
  } else {
    if (d.Inspector != FInspectorVisible) SetPaneVisible(TZTPane::Inspector, d.Inspector);
    if (d.CallStack != FCallStackVisible) SetPaneVisible(TZTPane::CallStack, d.CallStack);
    if (d.ScratchPad != FScratchPadVisible) SetPaneVisible(TZTPane::ScratchPad, d.ScratchPad);
  }
  SetScratchPadLightColor(d.ScratchPadLightColor);
  if (d.InspectorOnBottom != FInspectorOnBottom) SetInspectorOnBottom(d.InspectorOnBottom);
  if (d.DetailPanel != FDetailPanelVisible) SetDetailPanelVisible(d.DetailPanel);
  if (d.WrapButtons != FWrapButtons) SetWrapButtons(d.WrapButtons);
  if (d.AlwaysOnTop != ztAlwaysOnTop) SetAlwaysOnTop(d.AlwaysOnTop);

  // Type styles and fonts, where they differ.
  const bool stylesChanged = !std::equal(o.Styles.begin(), o.Styles.end(), MsgTypeStyles.begin(),
                                         [](const TZTMsgTypeStyle& a, const TZTMsgTypeStyle& b) {
                                           return a.UseDefault == b.UseDefault && a.Color == b.Color &&
                                                  a.Style == b.Style;
                                         });
  if (stylesChanged) {
    MsgTypeStyles = o.Styles;
    MsgTypeStylesChanged();
  }
  if (!(o.Fonts.Message == FMessageFontSetting)) SetMessageFont(o.Fonts.Message);
  if (!(o.Fonts.Inspector == FInspectorFontSetting)) SetInspectorFont(o.Fonts.Inspector);
  if (!(o.Fonts.InspectorFixed == FInspectorFixedFontSetting)) SetInspectorFixedFont(o.Fonts.InspectorFixed);

  const bool columnsChanged = d.Columns != FColumnOptions;
  if (columnsChanged) SetColumnOptions(d.Columns);
  if (columnsChanged || stylesChanged)
    if (IZTMessageView* view = ActiveView()) view->Invalidate();

  SaveSettings();
  // An inspector that has just come shows the focused message at once.
  if (FInspectorVisible && !inspectorWasOn) {
    UpdateMessageDetails();
  } else {
    UpdateCommandStates();
  }
}

}  // namespace zentrail
