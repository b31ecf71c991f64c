// The View menu's commands: columns, panes, scrolling and structure, and where the window stands.
#include "ZTMainForm.h"

#include <QAction>
#include <QGuiApplication>

#include "ZTMsgView.h"

namespace zentrail {

namespace {

constexpr uint16_t kTimeBits = ztcoTimeColumn;

}  // namespace

// A time column command turns its bit on and the other two off, or all three off if its own was on.
uint16_t TFrmViewer::FlipTimeColumn(uint16_t options, uint16_t bit) {
  const bool wasOn = (options & bit) != 0;
  options &= static_cast<uint16_t>(~kTimeBits);
  return wasOn ? options : static_cast<uint16_t>(options | bit);
}

void TFrmViewer::AddViewCommands() {
  auto notFullSize = [](const TZTCommandFacts& f) { return !f.FullSize; };
  FCommands->Add("View", TZTCommandList::Main, {
      {"actSelectColumns", "&Select Columns...", "Select Columns", "Ctrl+F4", "selectcolumns",
       [this] { SelectColumns(); }},
      {"actHideExtraColumns", "&Hide Extra Columns", "Hide Extra Columns", "F4", "hidecolumns",
       [this] { SetHideExtraColumns(!FHideExtraColumns); }, [](const TZTCommandFacts& f) { return f.Columns != 0; },
       [this](const TZTCommandFacts&) { return FHideExtraColumns; }},
      {"actViewDetailPanel", "Message &Detail Panel", "Show/Hide Message Detail Panel", "", "detailpanel",
       [this] { SetDetailPanelVisible(!FDetailPanelVisible); }, {},
       [this](const TZTCommandFacts&) { return FDetailPanelVisible; }},
      {"actViewScratchPad", "Scratch &Pad", "Show/Hide Scratch Pad", "F12", "scratchpad",
       [this] { SetPaneVisible(TZTPane::ScratchPad, !FScratchPadVisible); }, notFullSize,
       [this](const TZTCommandFacts&) { return FScratchPadVisible; }},
      {"actViewCallStack", "&Call Stack", "Show/Hide Call Stack", "Ctrl+F12", "callstack",
       [this] { SetPaneVisible(TZTPane::CallStack, !FCallStackVisible); }, notFullSize,
       [this](const TZTCommandFacts&) { return FCallStackVisible; }},
      {"actViewInspector", "&Inspector", "Show/Hide Inspector Pane", "F11", "inspector",
       [this] {
         SetPaneVisible(TZTPane::Inspector, !FInspectorVisible);
         UpdateMessageDetails();
       },
       notFullSize, [this](const TZTCommandFacts&) { return FInspectorVisible; }},
      {"actFullSizeInspector", "&Full Size Inspector", "Resize Inspector Pane to occupy the full size of the Viewer",
       "Ctrl+F11", "fullsize", [this] { SetFullSizeInspector(!FFullSizeInspector); },
       [](const TZTCommandFacts& f) { return f.InspectorVisible; },
       [](const TZTCommandFacts& f) { return f.FullSize; }},
      {"actInspectorOnBottom", "Inspector on &Bottom", "Position Inspector Pane Below Message List", "", "onbottom",
       [this] { SetInspectorOnBottom(!FInspectorOnBottom); }, notFullSize,
       [this](const TZTCommandFacts&) { return FInspectorOnBottom; }},
      {"actAutoScroll", "&Auto-Scroll", "Automatically Scroll View to Keep New Messages Visible", "F6", "autoscroll",
       [this] {
         const bool on = !FAutoScroll;
         SetAutoScroll(on);
         // Turned on with Shift held: also go to the newest message.
         if (on && (QGuiApplication::queryKeyboardModifiers() & Qt::ShiftModifier) && FActiveList) {
           if (IZTMessageView* v = ActiveView(); v && v->GetCount() > 0) FActiveList->SetFocusedMsgIndex(v->GetCount() - 1);
         }
       },
       {}, [this](const TZTCommandFacts&) { return FAutoScroll; }},
      {"actFlattenStructure", "F&latten Structure", "Hides indenting in message structure", "F7", "flatten",
       [this] {
         if (FActiveList) SetFlattenStructure(!FFlattenStructure);
       },
       {}, [this](const TZTCommandFacts&) { return FFlattenStructure; }},
      // Present with its key and does nothing: a live viewer has no file to reload.
      {"actRefresh", "&Refresh", "Refresh the message list by reloading the log file", "F5", "refresh", [] {}},
      {"actAlwaysOnTop", "Always on &Top", "Always On Top", "", "ontop", [this] { SetAlwaysOnTop(!ztAlwaysOnTop); },
       {}, [](const TZTCommandFacts&) { return ztAlwaysOnTop; }},
      {"actViewMsgOnly", "&Message Only", "View Message Only", "", "msgonly",
       [this] { SetColumnOptions(static_cast<uint16_t>(FColumnOptions & ~0x1FF)); }},
      // Adds the time stamp and keeps a time difference or offset that is on.
      {"actAllDetails", "A&ll Details", "Show All Details", "", "alldetails",
       [this] { SetColumnOptions(static_cast<uint16_t>(FColumnOptions | 0x7F)); }},
      {"actWrapButtons", "&Wrap Buttons", "Wrap Toolbar Buttons", "", nullptr, [this] { SetWrapButtons(!FWrapButtons); },
       {}, [this](const TZTCommandFacts&) { return FWrapButtons; }},
      {"actCustomizeToolbars", "&Customize Toolbars...", "Choose the Buttons of the Toolbars", "", nullptr,
       [this] { CustomizeToolbars(); }},
  });

  // One row per column bit; the three time columns exclude each other.
  struct TColumn {
    const char* Name;
    const char* Caption;
    const char* Hint;
    uint16_t Bit;
  };
  static const TColumn columns[] = {
      {"actViewCategory", "&Category", "Show/Hide Category", ztcoCategory},
      {"actViewAppName", "&Application Name", "Show/Hide Application Name", ztcoAppName},
      {"actViewComputerName", "Computer &Name", "Show/Hide Computer Name", ztcoComputerName},
      {"actViewProcessID", "&Process ID", "Show/Hide Process ID", ztcoProcessID},
      {"actViewThread", "Th&read", "Show/Hide Thread", ztcoThreadName},
      {"actViewDate", "Dat&e", "Show/Hide Date", ztcoDate},
      {"actViewTimeStamp", "&Time Stamp", "Show Time Stamp", ztcoTimeStamp},
      {"actViewTimeDiff", "Time Di&fference", "Show Time-Difference from previous message", ztcoTimeDiff},
      {"actViewTimeOffset", "Time &Offset", "Show Time-Offset from beginning of log", ztcoTimeOffset},
  };
  std::vector<TZTCommandDef> rows;
  for (const TColumn& c : columns) {
    const uint16_t bit = c.Bit;
    TZTCommandDef row{c.Name, c.Caption, c.Hint};
    row.Execute = [this, bit] {
      SetColumnOptions((bit & kTimeBits) ? FlipTimeColumn(FColumnOptions, bit)
                                         : static_cast<uint16_t>(FColumnOptions ^ bit));
    };
    row.Checked = [bit](const TZTCommandFacts& f) { return (f.Columns & bit) != 0; };
    row.Tag = bit;
    rows.push_back(std::move(row));
  }
  FCommands->Add("View", TZTCommandList::Main, std::move(rows));

  static const char* const posNames[] = {"actPosUpperLeft", "actPosUpperRight", "actPosLowerRight", "actPosLowerLeft",
                                         "actPosLeft",      "actPosTop",        "actPosRight",      "actPosBottom"};
  static const char* const posCaptions[] = {"&Upper Left", "U&pper Right", "Lo&wer Right", "L&ower Left",
                                            "&Left",       "&Top",         "&Right",       "&Bottom"};
  std::vector<TZTCommandDef> positions;
  for (int tag = 1; tag <= 8; ++tag) {
    TZTCommandDef row{posNames[tag - 1], posCaptions[tag - 1]};
    row.Execute = [this, tag] { PositionWindow(tag); };
    row.Tag = tag;
    positions.push_back(std::move(row));
  }
  FCommands->Add("View", TZTCommandList::Position, std::move(positions));
}

}  // namespace zentrail
