#pragma once
// TFrmViewer, the viewer's one main window: it owns the views, the panes and the commands, takes
// the live messages from the channel and hands each to every view, and implements the shell side
// that views reach through IZentrailApplication.

#include <QElapsedTimer>
#include <QMainWindow>
#include <QPointer>
#include <QSet>
#include <QStringList>
#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "TransportPacket.h"
#include "ZTChannelServer.h"
#include "ZTCommandTable.h"
#include "ZTCustomViewIntf.h"
#include "ZTLogTail.h"
#include "ZTPlugInManager.h"
#include "ZTSettingsModel.h"
#include "ZentrailMessage.h"

class QAction;
class QKeySequence;
class QActionGroup;
class QBoxLayout;
class QLabel;
class QListWidget;
class QMenu;
class QProgressBar;
class QSplitter;
class QStackedWidget;
class QTabBar;
class QTableWidget;
class QFileSystemWatcher;
class QTimer;
class QToolBar;

namespace zentrail {

class TZTSoundPlayer;
class TZTCommandBar;
class TZTDetailPanel;
class TZTMsgTypePanel;
class TZTHelpBrowser;
class TZTNavigator;
class TZTInspectorPane;
class TZTIniFile;
class IZTOrganizerHost;


// Dialogs read this to decide whether to centre on the main window (it stays on top) or not.
extern bool ztAlwaysOnTop;

enum class TZTPane { Inspector, CallStack, ScratchPad };

class TFrmViewer : public QMainWindow, public IZentrailApplication, public IZTCopyDataTarget {
  Q_OBJECT
  // Search, navigation, bookmarks and the synchronised message: their commands and state.
  friend class TZTNavigator;

 public:
  // arguments: the command line after the program name.
  explicit TFrmViewer(const QStringList& arguments = {}, QWidget* parent = nullptr);
  ~TFrmViewer() override;

  // ---- Live intake
  uint32_t WMCopyData(uint32_t tag, std::string_view data) override;
  void CopyDataFailed(const std::string& text) override;
  void ProcessMessage(const TZentrailMessage& message);
  // The same for a record read from a log, without a message object.
  void ProcessMessage(const TZentrailPacketView& message);
  void StoreMessage(const TZentrailMessage& message);
  void AddSeparator(const TZentrailMessage* source);
  void AddResetSeparator(const TZentrailMessage* source);
  void StampWithViewerIdentity(TZentrailMessage& message);
  void ClearMessages(bool clearAll);
  void ConfirmAndClear(bool clearAll);
  void SetScratchPadLine(const QString& name, const QString& value);
  void ClearScratchPad();
  void DeleteScratchPadLine();

  // Starts listening on <runtime>/viewer. False with a readable error when that is refused.
  bool StartChannel(std::string& error);
  TZTChannelServer& Channel() { return *FChannel; }

  // ---- Files
  virtual void LoadLogFile(const QString& fileName, bool append);

  // ---- Log files, following a log, printing and editing
  // The file dialog, then LoadLogFile.
  void OpenLogFile(bool append);
  // The file dialog, then WriteLogFile; needs the active view's save interface.
  void SaveLogFile();
  void WriteLogFile(const QString& fileName);
  void ExportMessages();
  // The dialog, then StartFollowing.
  void FollowLogFile();
  // Loads the file like Open and keeps reading what is appended to it, across rotations, until
  // StopFollowing, another Open or a fault in the file. False when the file cannot be opened or
  // the user cancels the question.
  bool StartFollowing(const QString& fileName);
  void StopFollowing();
  bool Following() const;
  const TZTLogTail* FollowedLog() const { return FFollowed.get(); }
  // Reads what the followed file holds now; the watcher and the timer call it.
  void FollowTick();
  // Where the log dialogs start: the last folder used, else "My Zentrail Files/Logs".
  QString LogFolder() const;
  bool LoadingFile() const { return FLoadingFile; }
  // What the last LoadLogFile did.
  struct TZTLoadOutcome {
    int Records = 0;      // records read and added
    bool Cancelled = false;
    bool Invalid = false;  // stopped at a record that could not be read
    int Unsupported = 0;   // words of no known format skipped
    int Slices = 0;        // times the window was let repaint
  };
  const TZTLoadOutcome& LastLoad() const { return FLastLoad; }
  // Called each time a load lets the window repaint, before the pending events run.
  std::function<void()> OnLoadSlice;
  // How long a load reads before it lets the window repaint and hear Esc.
  int32_t LoadSliceMs = 40;
  virtual void AddNote();
  void AddCheckPoint();
  int32_t CheckPointCount() const { return FCheckPointCount; }
  // The print form, then the active view prints.
  void PrintMessages();

  // ---- Views
  IZTMessageView* CreateView(const QString& name, const TZTFilterCriteria& filter, bool modified,
                             bool activate, const QString& viewClass);
  IZTMessageView* GetViewIntf(int index) const;
  int ViewCount() const { return static_cast<int>(FViews.size()); }
  IZTMessageView* ActiveView() const;
  int ActiveViewIndex() const;
  void SetActiveViewIndex(int index);
  void BindActiveView();
  void ActivateView(IZTMessageView* view);
  void PopulateView(IZTMessageView* view);
  // Renames the view and its tab, hands it the filter and refills it from the store. A pattern that
  // does not compile is shown to the user and the view keeps its old filter and rows; false then.
  bool ModifyView(IZTMessageView* view, const QString& name, const TZTFilterCriteria& criteria);

  // ---- View tabs, projects, the organizer and plug-ins
  IZTMessageView* GetView(int index) const { return GetViewIntf(index); }
  // Frees the view, its page and its tab; index 0, the fixed view, stays.
  void RemoveView(int index);
  void RemoveAllViews();
  // Moves a tab and its page and view from one place to another; place 0 is never involved.
  void MoveView(int from, int to);
  void RenameView(int index, const QString& name);
  // Removes every additional view but the one at index.
  void RemoveOtherViews(int index);
  // The filter dialog, then CreateView with what it gives.
  void NewView();
  bool ViewsModified() const { return FViewsModified; }
  QTabBar* TabBar() const { return tabViews; }
  QMenu* ViewsMenu() const { return mnuViews; }
  // A run of messages offered to the views in one update bracket per view: a burst of live frames,
  // a log file. Nestable; views made inside the bracket join it.
  void BeginMessageBatch();
  void EndMessageBatch();
  bool InMessageBatch() const { return FBatchDepth > 0; }

  void LoadProject(const QString& fileName);
  void SaveProject(const QString& fileName);
  void SaveProjectAs();
  void OpenProject();
  // False when the user cancels, so the caller must not go on.
  bool SaveProjectIfModified(bool prompt);
  void NewProject();
  const QString& ProjectFile() const { return LastProject; }
  QString ProjectFolder() const;

  // The organizer's scan over every stored message with the given fields.
  void OrganizeAllMessages(uint8_t organizeBy);
  // The checked state of Auto-Organize, with the scan it brings when switched on.
  void SetAutoOrganize(bool on);
  void OrganizeMessagesCommand();
  void AutoOrganizeSettingsCommand();
  void ShowPlugInDetails();

  // ---- Panes and layout
  void SetPaneVisible(TZTPane pane, bool visible);
  bool PaneVisible(TZTPane pane) const;
  void SetInspectorOnBottom(bool onBottom);
  bool InspectorOnBottom() const { return FInspectorOnBottom; }
  void SetFullSizeInspector(bool fullSize);
  bool FullSizeInspector() const { return FFullSizeInspector; }
  void SetAlwaysOnTop(bool onTop);
  void SetDetailPanelVisible(bool visible);
  void SetMessagesBlocked(bool blocked);
  bool MessagesBlocked() const { return FMessagesBlocked; }
  // tag 1..8 as the position commands
  void PositionWindow(int tag);
  void NextView(bool backwards);

  // ---- Detail panes
  // The live road's one call: the message count in the status bar catches up shortly after a
  // burst, without any input, at no cost per message.
  void MessagesArrived();

  // ---- Intake settings (the "General" section)
  bool InsertSeparatorOnAppStart = TZTGeneralSection{}.InsertSeparatorOnAppStart;
  bool InsertSeparatorOnWakeUp = TZTGeneralSection{}.InsertSeparatorOnWakeUp;
  bool SoundEffectOnWakeUp = TZTGeneralSection{}.SoundEffectOnWakeUp;
  QString SoundEffectFile;
  int32_t IdleTime = TZTGeneralSection{}.IdleTime;
  bool ConfirmOnClear = TZTGeneralSection{}.ConfirmOnClear;
  bool AutoSaveProject = TZTGeneralSection{}.AutoSaveProject;

  // ---- Settings kept for features that read them elsewhere (organizer, projects, log files,
  // printing); the file gives them back unchanged whether or not they are used in this run.
  uint8_t OrganizeBy = 0;  // 1 AppName, 2 Category, 4 ProcessID, 8 ThreadName, 16 ComputerName
  bool AutoOrganize = false;
  QString LastProject;
  QString LastLogDir;
  QString LastProjectDir;
  bool PrintSelection = TZTGeneralSection{}.PrintSelection;
  int32_t PrintFontSize = TZTGeneralSection{}.PrintFontSize;

  // ---- The settings file
  // Reads every section in its order; each value goes through the setter its command uses.
  void LoadSettings();
  // Writes every section to the settings object in memory; the disk follows at exit.
  void SaveSettings();
  static void ReadFont(const TZTIniFile& ini, const char* section, TZTFontSetting& font, const QString& defaultName);
  static void WriteFont(TZTIniFile& ini, const char* section, const TZTFontSetting& font);
  static void ReadMsgStyle(const TZTIniFile& ini, const char* keyPrefix, TZTMsgTypeStyle& entry);
  static void WriteMsgStyle(TZTIniFile& ini, const char* keyPrefix, const TZTMsgTypeStyle& entry);
  // The font a setting names, with the system's font of that kind where the face is missing.
  static QFont RealizeFont(const TZTFontSetting& font, bool fixed);
  // The face of the default inspector fonts: the first of the two that is installed.
  static QString InspectorFontDefaultName();
  static QString InspectorFixedFontDefaultName();

  void SetMessageFont(const TZTFontSetting& font);
  void SetInspectorFont(const TZTFontSetting& font);
  void SetInspectorFixedFont(const TZTFontSetting& font);
  const TZTFontSetting& MessageFontSetting() const { return FMessageFontSetting; }
  const TZTFontSetting& InspectorFontSetting() const { return FInspectorFontSetting; }
  const TZTFontSetting& InspectorFixedFontSetting() const { return FInspectorFixedFontSetting; }
  // Column bits: 1 Category, 2 AppName, 4 ComputerName, 8 ProcessID, 16 ThreadName, 32 Date,
  // 64 TimeStamp, 128 TimeDiff, 256 TimeOffset.
  void SetColumnOptions(uint16_t options);
  void SetHideExtraColumns(bool hide);
  void SetWrapButtons(bool wrap);
  bool WrapButtons() const { return FWrapButtons; }
  // Which buttons the toolbars show: the toolbar customising dialog, and its result by toolbar.
  void CustomizeToolbars();
  void SetHiddenToolbarItems(const QString& toolbar, const QSet<QString>& names);
  TZTCommandBar* Toolbar(const QString& name) const;
  // The column dialog: the column bits alone.
  void SelectColumns();
  // The options dialog.
  void ShowOptions();
  // A time column command's result: its bit on and the other two off, or all three off.
  static uint16_t FlipTimeColumn(uint16_t options, uint16_t bit);
  // The commands as the table made them, for those that list them.
  const TZTCommandRegistry& CommandTable() const { return *FCommands; }
  // The help window, once help was shown.
  TZTHelpBrowser* HelpBrowser() const;
  // Colours of the rows, the panes and the inspectors, handed to every view and pane at once.
  struct TZTDisplayColors {
    TColor Marker, SyncMsg, Separator, InactiveSeparator, AppStartSeparator, Value, Highlight, HighlightFont;
    bool RowShading;
    TColor RowShadingColor;
  };
  TZTDisplayColors DisplayColors() const;
  void SetDisplayColors(const TZTDisplayColors& colors);
  TColor GetValueColor() const { return FValueColor; }
  int ScratchPadLightColor() const { return FScratchPadLightColor; }
  void SetScratchPadLightColor(int index);
  // The settings sections as the window has them now, and their application through the setters.
  TZTDisplaySection CurrentDisplay();
  TZTGeneralSection CurrentGeneral() const;
  TZTViewerOptions CurrentOptions();
  void ApplyPosition(const TZTPositionSection& position);
  void ApplyDisplay(const TZTDisplaySection& display);
  void ApplyGeneral(const TZTGeneralSection& general);
  // What OK in the options dialog does with its values, in its order.
  void ApplyOptions(const TZTViewerOptions& options);

  // The style of each message type; views read it through GetMsgTypeStyle.
  TZTMsgTypeStyles MsgTypeStyles{};
  // Tells every view that the type styles changed.
  void MsgTypeStylesChanged();

  // ---- State that tests and the command code read
  int32_t NextMessageID() const { return FNextMessageID; }
  const std::unordered_set<uint32_t>& SeenProcessIDs() const { return FSeenProcessIDs; }
  uint32_t ViewerProcessID() const { return FProcessID; }
  const QStringList& ScratchPadNames() const { return FScratchPadNames; }
  QTableWidget* ScratchPadGrid() const { return grdScratchPad; }
  QListWidget* CallStackList() const { return lstCallStack; }
  QAction* Action(const QString& name) const;
  TZTInspectorPane* InspectorPane() const { return FInspectorPane; }
  TZTNavigator& Navigator() const { return *FNavigator; }
  int WakeUpSoundsPlayed() const { return FWakeUpSounds; }
  QString StatusText(const QString& paneName) const;
  QWidget* PaneWidget(const QString& name) const;

  // ---- IZentrailApplication
  int32_t GetRowHeight() override { return FRowHeight; }
  QFont GetFont(int kind) override;
  TZTMsgTypeStyle GetMsgTypeStyle(int32_t msgType) override;
  bool GetAutoScroll() override { return FAutoScroll; }
  bool GetAutoCollapse() override { return FAutoCollapse; }
  bool GetFlattenStructure() override { return FFlattenStructure; }
  uint16_t GetColumnOptions() override { return FColumnOptions; }
  bool GetHideExtraColumns() override { return FHideExtraColumns; }
  QMenu* GetPopupMenu() override { return mnuMessageList; }
  TZTImageList* GetImageList(int kind) override;
  TColor GetHighlightColor() override { return FHighlightColor; }
  TColor GetHighlightFontColor() override { return FHighlightFontColor; }
  TColor GetMarkerColor() override { return FMarkerColor; }
  bool GetRowShading() override { return FRowShading; }
  TColor GetRowShadingColor() override { return FRowShadingColor; }
  TColor GetSyncMsgColor() override { return FSyncMsgColor; }
  TColor GetSeparatorColor() override { return FSeparatorColor; }
  TColor GetInactiveSeparatorColor() override { return FInactiveSeparatorColor; }
  TColor GetAppStartSeparatorColor() override { return FAppStartSeparatorColor; }
  void UpdateMessageDetails() override;
  void UpdateCommandStates() override;
  void SetStatusText(const QString& text) override;
  void SetProgressMax(int32_t maximum) override;
  void SetProgress(int32_t position) override;
  void StepProgress() override;

  void SetAutoScroll(bool on);
  void SetAutoCollapse(bool on);
  void SetFlattenStructure(bool on);

 protected:
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  bool event(QEvent* event) override;

 private:
  // FormCreate in its parts, in the order they run.
  void FormCreate(const QStringList& arguments);
  void FormDestroy();
  void CreateLayout();
  void CreateCommands();
  void CreateMenus();
  void CreateToolbars();
  void CreateStatusBar();
  void CreateFixedView();
  // A face by name, or the system's font of that kind where the face is missing.
  static QFont ChooseFont(const QString& family, int pointSize, bool fixed);
  void ApplySplitterSizes();
  void ReadSplitterSizes();

  // The intake's fast road: a packet view goes to the store without a message object.
  template <typename TMessage>
  void ProcessMessageT(const TMessage& message);
  template <typename TMessage>
  void StoreMessageT(const TMessage& message);
  template <typename TMessage>
  void StoreSeparatorCopy(const TMessage& message, int32_t msgType);
  void FanOut();
  void ScratchPadMessage(std::string_view text);
  void ReportIntakeFailures();

  void ClearDetails();
  void ClearCallStack();
  void HideInspectors();
  void ShowInspector();
  IZTMessageView* CreateViewPage(const TZTViewFactory& factory);
  void UnbindActiveView();
  void PrintInspectorContents();
  // selected: the view's count of selected rows when the caller has it, else -1.
  void UpdateStatusCounts(int32_t selected = -1);
  void RefreshCallStack(IZTMessageView* view);
  void ApplyChromeColours();
  void ArrangeScratchPad();
  void tabViewsChange(int index);

  // ---- View tabs, projects, the organizer and plug-ins
  void SetUpTabStrip();
  void SetUpOrganizer();
  void UpdateTabCloseButtons();
  void RebuildSwitchToView();
  void StartRenameView(int index);
  void RemoveViewAt(int index);
  void tabViewsTabOrderChange(int from, int to);
  void ShowViewsMenu(const QPoint& globalPos, int tabIndex);
  void RefreshProjectStatus();
  void OrganizeArrivingMessage();
  void LoadLastProject();
  bool CloseQuery();
  void NoteLiveFrame();
  int FBatchDepth = 0;
  bool FWakeWatch = false;
  uint64_t FWakeUps = 0;
  uint64_t FLastFrameWake = ~uint64_t(0);
  bool FBurstOpen = false;
  std::vector<IZTMessageView*> FBatchViews;  // views inside the open bracket
  std::shared_ptr<IZTOrganizerHost> FOrganizerHost;  // shared: the type stays incomplete here
  QMenu* mnuViews = nullptr;
  QMenu* mnuSwitchToView = nullptr;
  int FPopupTab = -1;  // the tab the popup menu was opened on
  QString FProjectFolder;
  void ApplicationStateChanged(Qt::ApplicationState state);

  // ---- Commands, menus, toolbars
  void AddFileCommands();
  void AddEditCommands();
  void AddSearchCommands();
  void AddViewCommands();
  void AddMethodCommands();
  void AddOrganizeCommands();
  void AddToolsCommands();
  void AddHelpCommands();
  void ModifyViewCommand();
  TZTCommandFacts GatherCommandFacts();
  void UpdateToggleMethodCommand(const TZTCommandFacts& facts);
  QMenu* MakeMenu(const QString& name);
  void ShowToolbarsMenu(const QPoint& globalPos);
  std::unique_ptr<TZTCommandRegistry> FCommands;
  QMenu* mnuMsgDetailsPopup = nullptr;
  QPointer<TZTHelpBrowser> FHelpBrowser;
  QMenu* mnuToolbars = nullptr;

  // ---- Detail panes
  // Goes to the active view's focused record; false without one. Every reader of the focused
  // message calls it right before it reads, as any walk of the store moves the one cursor.
  bool GotoFocusedRecord();
  void UpdateMessageCount();
  // The content glyph and its hint for the focused message, from the store's current record.
  void ShowMessageContent(const QString& date, const QString& time);
  QTimer* FCountsTimer = nullptr;
  TZTMsgTypePanel* pnlMsgType = nullptr;
  // Whether the commands were last set for a view with rows: the first rows of a burst into an
  // empty view must enable them, without command updates on every message.
  bool FCommandsSawRows = false;

  // ---- Log files, following a log, printing and editing
  // The adding path of a record read from a log: separators are made anew, all else is processed.
  void AddLogRecord(const TZentrailPacketView& record);
  void ShowInvalidLog(const QString& path, const QString& note);
  void QueueFollowTick();
  // The confirmation of a clear; false when the user says No. clearAll may be widened.
  bool AskConfirmClear(bool& clearAll);
  // What stsMessage shows between operations.
  QString IdleStatusText() const;
  std::unique_ptr<TZTLogTail> FFollowed;
  QFileSystemWatcher* FFollowWatcher = nullptr;
  QTimer* FFollowTimer = nullptr;
  bool FFollowTickQueued = false;
  std::vector<std::pair<QString, bool>> FPendingLoads;
  TZTLoadOutcome FLastLoad;
  int32_t FCheckPointCount = 0;

  // ---- Identity of messages that the viewer makes itself
  QString FAppName;
  QString FComputerName;
  uint32_t FProcessID = 0;
  QString FThreadName;
  int32_t FTimeBias = 0;

  // ---- Intake state
  bool FMessagesBlocked = false;
  int32_t FNextMessageID = 0;
  std::unordered_set<uint32_t> FSeenProcessIDs;
  bool FClearing = false;
  TZentrailPacketView FPacket;     // reused for every packet
  std::string FInflated;           // reused inflate buffer
  std::vector<std::string> FPendingFailures;
  int FDroppedFailures = 0;
  int FWakeUpSounds = 0;
  std::unique_ptr<TZTSoundPlayer> FSound;
  std::unique_ptr<TZTNavigator> FNavigator;

  // ---- Views
  std::vector<IZTMessageView*> FViews;
  IZTMessageViewList* FActiveList = nullptr;
  IZTMessageViewMethods* FActiveMethods = nullptr;
  IZTMessageViewSearch* FActiveSearch = nullptr;
  IZTMessageViewPrint* FActivePrint = nullptr;
  IZTMessageViewSave* FActiveSave = nullptr;
  IZTMessageViewExport* FActiveExport = nullptr;
  bool FViewsModified = false;
  bool FPopulating = false;
  bool FLoadingFile = false;
  bool FLoadingSettings = false;

  // ---- Display state
  bool FInspectorOnBottom = false;
  bool FFullSizeInspector = false;
  uint8_t FFullSizeRestore = 0;
  bool FInspectorVisible = false;
  bool FCallStackVisible = false;
  bool FScratchPadVisible = false;
  bool FDetailPanelVisible = false;
  bool FAutoScroll = TZTGeneralSection{}.AutoScroll;
  bool FAutoCollapse = TZTGeneralSection{}.AutoCollapse;
  bool FFlattenStructure = false;
  bool FHideExtraColumns = false;
  uint16_t FColumnOptions = 0;
  int32_t FRowHeight = 17;
  QFont FMessageFont, FInspectorFont, FInspectorFixedFont;
  // The defaults of the settings sections until LoadSettings applies the file.
  TColor FHighlightColor = TZTDisplaySection{}.HighlightColor;
  TColor FHighlightFontColor = TZTDisplaySection{}.HighlightFontColor;
  TColor FMarkerColor = TZTDisplaySection{}.MarkerColor;
  TColor FSyncMsgColor = TZTDisplaySection{}.SyncMsgColor;
  TColor FSeparatorColor = TZTDisplaySection{}.SeparatorColor;
  TColor FInactiveSeparatorColor = TZTDisplaySection{}.InactiveSeparatorColor;
  TColor FAppStartSeparatorColor = TZTDisplaySection{}.AppStartSeparatorColor;
  TColor FValueColor = TZTDisplaySection{}.ValueColor;
  bool FRowShading = TZTDisplaySection{}.RowShading;
  TColor FRowShadingColor = TZTDisplaySection{}.RowShadingColor;
  int FScratchPadLightColor = 0;
  bool FWrapButtons = false;
  TZTFontSetting FMessageFontSetting, FInspectorFontSetting, FInspectorFixedFontSetting;
  // Far-pane sizes of splMain, splLeft and splRight; -1 keeps the design position. A pane that is
  // hidden at exit keeps the size it had when last seen.
  int32_t FMainSplitFixed = -1, FLeftSplitFixed = -1, FRightSplitFixed = -1;

  // ---- Scratch pad
  QStringList FScratchPadNames;
  int32_t FScratchPadNameWidth = 50;

  // ---- Painting under a stream of messages
  QElapsedTimer FPaintClock;
  qint64 FLastPaint = 0;
  QTimer* FPaintTimer = nullptr;

  // ---- Widgets
  TZTChannelServer* FChannel = nullptr;
  TZTCommandBar* tbrMain = nullptr;
  QWidget* pnlSeparator = nullptr;
  QSplitter* splMain = nullptr;
  QSplitter* splLeft = nullptr;
  QSplitter* splRight = nullptr;
  QWidget* pnlViews = nullptr;
  TZTCommandBar* tbrView = nullptr;
  QWidget* pnlTabSet = nullptr;
  QTabBar* tabViews = nullptr;
  QStackedWidget* nbkViews = nullptr;
  TZTDetailPanel* pnlMsgDetails = nullptr;
  QWidget* pnlLeftLower = nullptr;   // holder of splLeft's lower pane
  QWidget* pnlRightUpper = nullptr;  // holder of splRight's upper pane
  QWidget* pnlInspector = nullptr;
  TZTInspectorPane* FInspectorPane = nullptr;
  QWidget* pnlScratchPad = nullptr;  // grid and its toolbar
  QBoxLayout* FScratchPadLayout = nullptr;
  QTableWidget* grdScratchPad = nullptr;
  QToolBar* tbrScratchPad = nullptr;
  QTimer* tmrScratchPad = nullptr;
  QWidget* pnlCallStack = nullptr;
  QListWidget* lstCallStack = nullptr;
  QLabel* stsTimeDiff = nullptr;
  QLabel* stsMsgNum = nullptr;
  QLabel* stsMsgCount = nullptr;
  QLabel* stsSelCount = nullptr;
  QLabel* stsProject = nullptr;
  QProgressBar* pbrComplete = nullptr;
  QLabel* stsMessage = nullptr;
  QMenu* mnuMessageList = nullptr;
  std::unique_ptr<TZTImageList> FScratchPadImages;

  // ---- Throughput: the records of a batch frame go to the views inside one bracket
 public:
  void BeginCopyDataBatch() override;
  void EndCopyDataBatch() override;

 private:
  bool FInCopyDataBatch = false;
};

}  // namespace zentrail
