#pragma once
// The pages of the options dialog. Each page shows a copy of the settings the window handed the
// dialog and writes the user's changes back into that copy; nothing reaches the window before OK.

#include <QWidget>
#include <array>

#include "ZTSettingsModel.h"

class QCheckBox;
class QComboBox;
class QFontComboBox;
class QLabel;
class QLineEdit;
class QRadioButton;
class QSpinBox;
class QStackedWidget;
class QToolButton;

namespace zentrail {

class TZTColorEdit;

// Page "General": the questions, scrolling and structure, and the colours of rows and values.
class TZTOptionsGeneralPage : public QWidget {
  Q_OBJECT
 public:
  explicit TZTOptionsGeneralPage(QWidget* parent = nullptr);
  void Load(const TZTViewerOptions& options);
  void Store(TZTViewerOptions& options) const;

  QCheckBox *chkConfirmOnClear, *chkConfirmOnClearBookmarks, *chkAutoScroll, *chkAutoSaveProject, *chkAutoCollapse,
      *chkFlattenStructure, *chkRowShading;
  TZTColorEdit *edtRowShadingColor, *edtValueColor, *edtMarkerColor, *edtSyncMsgColor, *edtHighlightColor,
      *edtHighlightFontColor;
};

// Page "Layout": the panes, the toolbars, the inspector's place and the scratch pad's light.
class TZTOptionsLayoutPage : public QWidget {
  Q_OBJECT
 public:
  explicit TZTOptionsLayoutPage(QWidget* parent = nullptr);
  void Load(const TZTViewerOptions& options);
  void Store(TZTViewerOptions& options) const;

  QCheckBox *chkInspector, *chkScratchPad, *chkCallStack, *chkDetailPanel, *chkWrapButtons, *chkAlwaysOnTop;
  QRadioButton *optInspectorOnRight, *optInspectorOnBottom;
  QToolButton *imgInspectorOnRight, *imgInspectorOnBottom;
  QComboBox* cbxPadLight;
};

// Page "Separators": what a wake-up after idle time and a new application bring, and their colours.
class TZTOptionsSeparatorsPage : public QWidget {
  Q_OBJECT
 public:
  explicit TZTOptionsSeparatorsPage(QWidget* parent = nullptr);
  void Load(const TZTViewerOptions& options);
  void Store(TZTViewerOptions& options) const;

  QSpinBox* spnIdleTime;
  QCheckBox *chkInsertSeparatorOnWakeUp, *chkSoundEffect, *chkInsertSeparatorOnAppStart;
  QLineEdit* edtSoundEffect;
  QToolButton *btnBrowseSound, *btnPlaySound;
  TZTColorEdit *edtSeparatorColor, *edtInactiveSeparatorColor, *edtAppStartSeparatorColor;

 private:
  void UpdateRules();
};

// Page "Fonts": the message font and the two inspector fonts, one at a time, with a preview.
class TZTOptionsFontsPage : public QWidget {
  Q_OBJECT
 public:
  explicit TZTOptionsFontsPage(QWidget* parent = nullptr);
  void Load(const TZTViewerOptions& options);
  void Store(TZTViewerOptions& options) const;
  // The font a sample label holds: 0 message, 1 inspector, 2 inspector fixed.
  const TZTFontSetting& SampleFont(int type) const { return FFonts[static_cast<size_t>(type)]; }

  QComboBox* cbxFontType;
  QFontComboBox* cbxFontName;
  QSpinBox* spnFontSize;
  TZTColorEdit* edtFontColor;
  QStackedWidget* nbkFonts;
  QLabel *lblMessage, *lblInspector, *lblInspectorFixed;

 private:
  void ShowType(int type);
  void Changed();
  void ShowSample(int type);
  std::array<TZTFontSetting, 3> FFonts;
  bool FLoading = false;
};

// Page "Colors & Styles": colour and style of the message types that have a row of their own.
class TZTOptionsStylesPage : public QWidget {
  Q_OBJECT
 public:
  explicit TZTOptionsStylesPage(QWidget* parent = nullptr);
  void Load(const TZTViewerOptions& options);
  void Store(TZTViewerOptions& options) const;
  // The message type of each item of cbxMsgType.
  static const std::array<int32_t, 16>& ItemTypes();
  const TZTMsgTypeStyles& WorkingStyles() const { return FStyles; }

  QComboBox* cbxMsgType;
  QCheckBox *chkUseDefault, *chkBold, *chkItalic, *chkUnderline, *chkStrikeout;
  TZTColorEdit* edtColor;
  QWidget* pnlSample;

 private:
  void ShowType();
  void Changed();
  TZTMsgTypeStyles FStyles{};
  TZTFontSetting FMessageFont;
  TColor FHighlight = 0, FHighlightFont = 0;
  bool FLoading = false;
  friend class TZTStyleSample;
};

}  // namespace zentrail
