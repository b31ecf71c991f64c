#pragma once
// The main window's search, navigation, bookmark and synchronised-message commands and the state
// behind them. The walks themselves are operations of the active view; this side keeps what the
// user chose (the kind of message to step to, the search text and its options, the sync mode)
// and keeps the commands' enabled states in step with the focused row.

#include <QKeySequence>
#include <QObject>
#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ZTRegEx.h"

class QAction;
class QDialog;
class QMenu;
class QMenuBar;
class QToolBar;
class QToolButton;

namespace zentrail {

class TFrmViewer;
class TZTImageList;
struct TZTCommandFacts;

// One navigator choice of the type or content lists: the command's name, caption, tag and code.
struct TZTNavChoice {
  const char* Name;
  const char* Caption;
  int32_t Tag;
  int32_t Code;
};

// The navigator's message types and contents in the order of their lists; the last entry of each
// is the "match any" choice with tag and code -1.
extern const std::vector<TZTNavChoice>& NavMsgTypeChoices();
extern const std::vector<TZTNavChoice>& NavMsgContentChoices();

class TZTNavigator : public QObject {
  Q_OBJECT
 public:
  explicit TZTNavigator(TFrmViewer& window);
  ~TZTNavigator() override;

  // ---- What the navigator steps to; all of these are kept in the settings file.
  int32_t NavigatorMsgType() const { return FNavigatorMsgType; }  // -1 any
  int32_t NavigatorMsgContent() const { return FNavigatorMsgContent; }  // -1 any
  bool NavigatorAutomatic() const { return FNavigatorAutomatic; }
  bool NavigatorTimeDiff() const { return FNavigatorTimeDiff; }
  int32_t TimeDiffNavThreshold() const { return FTimeDiffNavThreshold; }  // ms
  // In time-difference mode the type is not stored: the type button shows the mode instead.
  void SetNavigatorMsgType(int32_t code);
  void SetNavigatorMsgContent(int32_t code);
  void SetNavigatorAutomatic(bool on);
  void SetNavigatorTimeDiff(bool on);
  void SetTimeDiffNavThreshold(int32_t ms);

  // ---- The search: the last text, its compiled pattern and the options of the find dialog.
  std::string FindText;
  TZTRegEx FindRegEx;
  bool FindForward = true;
  bool FindFromCursor = false;
  bool FindInDetails = true;

  // Clearing every bookmark asks first unless the user switched the question off.
  bool ConfirmOnClearBookmarks = true;

  // ---- The synchronised message: the record every view marks and jumps to on a tab change.
  bool SyncMsgMode() const { return FSyncMsgMode; }
  int32_t SyncRecNo() const { return FSyncRecNo; }
  void UpdateSyncMsg();
  // Record numbers start again at 1 in an emptied store, so the synchronised one means nothing.
  void StoreEmptied();

  // ---- What the window calls.
  // The image lists of messages, bookmarks and the navigator's choices; before the commands.
  void CreateImages();
  // Takes the commands of its lists from the window's table, and the popups of its buttons.
  void BindCommands(std::vector<QAction*> types, std::vector<QAction*> contents, std::vector<QAction*> bookmarks,
                    QMenu* typeMenu, QMenu* contentMenu);
  // What the command rules need from this side: bookmarks of the focused row, and whether the
  // navigator can step back or forth from it.
  void GatherFacts(TZTCommandFacts& facts);
  // The store stands on the newly selected message.
  void MessageSelected();
  // After the active view changed: it shows the synchronised message, if there is one.
  void ActiveViewChanged();
  // The live road: only an exact match of the choice, never a walk.
  void MessageStored(int32_t msgType, int32_t msgContent) {
    if (!FNavigatorTimeDiff && msgType == FNavigatorMsgType && msgContent == FNavigatorMsgContent &&
        !FNextLastEnabled)
      EnableNextAndLast();
  }

  // ---- The commands' handlers.
  void Navigate(int32_t direction);
  void Find();
  void FindNext();
  void JumpToMsg();
  void ToggleBookmark(int32_t index);
  void JumpToBookmark(int32_t index);
  void ClearBookmarks();
  void SelectNavMsg();
  void TimeDiffCommand();
  void FlipSyncMsgMode();
  void ChooseMsgType(int32_t code);
  void ChooseMsgContent(int32_t code);

  TZTImageList* NavMsgTypeImages() const { return FNavMsgTypeImages; }
  TZTImageList* NavMsgContentImages() const { return FNavMsgContentImages; }
  TZTImageList* MessageImages() const { return FMessageImages; }
  TZTImageList* BookmarkImages() const { return FBookmarkImages; }
  QToolButton* NavMsgTypeButton() const { return btnNavMsgTypeSelect; }
  QToolButton* NavMsgContentButton() const { return btnNavMsgContentSelect; }
  const std::vector<QAction*>& NavMsgTypeActions() const { return aclNavMsgType; }
  const std::vector<QAction*>& NavMsgContentActions() const { return aclNavMsgContent; }
  const std::vector<QAction*>& BookmarkActions() const { return aclBookmarks; }

  // Runs the navigator's own dialogs; tests put a function here that fills and closes them.
  std::function<int(QDialog&)> RunDialog;
  // Whether Alt is held as the selection changes; tests replace it.
  std::function<bool()> AltHeld;

 private:
  void EnableNextAndLast();
  void ShowChoiceOnButton(QToolButton* button, QAction* action, int32_t code, bool content);
  QAction* Act(const char* name) const;

  TFrmViewer& FWindow;
  int32_t FNavigatorMsgType = 3;
  int32_t FNavigatorMsgContent = 7;
  bool FNavigatorAutomatic = true;
  bool FNavigatorTimeDiff = false;
  int32_t FTimeDiffNavThreshold = 1000;
  bool FSyncMsgMode = false;
  int32_t FSyncRecNo = -1;
  bool FNextLastEnabled = false;

  std::vector<QAction*> aclNavMsgType;
  std::vector<QAction*> aclNavMsgContent;
  std::vector<QAction*> aclBookmarks;  // toggles 0..9, then jumps 0..9
  QMenu* mnuNavMsgType = nullptr;
  QMenu* mnuNavMsgContent = nullptr;
  QToolButton* btnNavMsgTypeSelect = nullptr;
  QToolButton* btnNavMsgContentSelect = nullptr;
  TZTImageList* FNavMsgTypeImages = nullptr;
  TZTImageList* FNavMsgContentImages = nullptr;
  TZTImageList* FMessageImages = nullptr;
  TZTImageList* FBookmarkImages = nullptr;
};

}  // namespace zentrail
