#pragma once
// The main window's search, navigation, bookmark and synchronised-message commands and the state
// behind them. The walks themselves are operations of the active view; this side keeps what the
// user chose (the kind of message to step to, the search text and its options, the sync mode)
// and keeps the commands' enabled states in step with the focused row.

#include <QObject>
#include <cstdint>
#include <string>

#include "ZTRegEx.h"

namespace zentrail {

class TFrmViewer;

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

 private:
  TFrmViewer& FWindow;
  int32_t FNavigatorMsgType = 3;
  int32_t FNavigatorMsgContent = 7;
  bool FNavigatorAutomatic = true;
  bool FNavigatorTimeDiff = false;
  int32_t FTimeDiffNavThreshold = 1000;
};

}  // namespace zentrail
