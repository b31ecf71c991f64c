#pragma once
// The navigator's two small dialogs: the choice of message type and content to step between, and
// the smallest time gap for stepping over pauses.

#include <QDialog>
#include <cstdint>
#include <vector>

class QCheckBox;
class QGroupBox;
class QPushButton;
class QSpinBox;
class QToolButton;

namespace zentrail {

class TfrmSelectNavMsg : public QDialog {
  Q_OBJECT
 public:
  explicit TfrmSelectNavMsg(QWidget* parent);

  // A code of 100 or more presses the custom button; -1 ticks the group's Match Any box.
  void SetChoice(int32_t msgType, int32_t msgContent, bool automatic);
  // -1 for a group with Match Any ticked; with no button pressed, type 0 and content 7.
  void GetChoice(int32_t& msgType, int32_t& msgContent, bool& automatic) const;

  // The toggle button of a code, or null.
  QToolButton* TypeButton(int32_t code) const;
  QToolButton* ContentButton(int32_t code) const;
  QCheckBox* MatchAnyType() const { return chkMatchAnyType; }
  QCheckBox* MatchAnyContent() const { return chkMatchAnyContent; }
  QCheckBox* Automatic() const { return chkAutomatic; }
  QPushButton* OkButton() const { return btnOK; }

 private:
  struct TButton {
    QToolButton* Button;
    int32_t Code;
  };
  QGroupBox* MakeGroup(const QString& caption, const char* name, std::vector<TButton>& buttons, bool types,
                       QCheckBox*& matchAny, const QString& matchAnyCaption, const char* matchAnyName);
  static void Press(std::vector<TButton>& buttons, int32_t code);
  static int32_t Pressed(const std::vector<TButton>& buttons, int32_t none);

  std::vector<TButton> FTypeButtons;
  std::vector<TButton> FContentButtons;
  QGroupBox* grpMsgTypes = nullptr;
  QGroupBox* grpMsgContent = nullptr;
  QCheckBox* chkMatchAnyType = nullptr;
  QCheckBox* chkMatchAnyContent = nullptr;
  QCheckBox* chkAutomatic = nullptr;
  QPushButton* btnOK = nullptr;
};

class TfrmTimeDiffNav : public QDialog {
  Q_OBJECT
 public:
  explicit TfrmTimeDiffNav(QWidget* parent);
  void SetThreshold(int32_t ms);
  int32_t Threshold() const;
  QSpinBox* ThresholdBox() const { return spnThreshold; }
  QPushButton* OkButton() const { return btnOK; }

 private:
  QSpinBox* spnThreshold = nullptr;
  QPushButton* btnOK = nullptr;
};

}  // namespace zentrail
