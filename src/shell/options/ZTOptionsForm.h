#pragma once
// TfrmOptions, the options dialog: a page control over a copy of the viewer's settings. It holds
// no settings of its own; the window hands it its state and takes the result back on OK.

#include <QDialog>

#include "ZTSettingsModel.h"

class QPushButton;
class QTabWidget;

namespace zentrail {

class TZTColumnsPage;
class TZTOptionsFontsPage;
class TZTOptionsGeneralPage;
class TZTOptionsLayoutPage;
class TZTOptionsSeparatorsPage;
class TZTOptionsStylesPage;

class TfrmOptions : public QDialog {
  Q_OBJECT
 public:
  explicit TfrmOptions(QWidget* parent = nullptr);
  void SetOptions(const TZTViewerOptions& options);
  // The copy with the controls' values.
  TZTViewerOptions Options() const;
  static QString HelpKeyword() { return QStringLiteral("Viewer_Commands_Tools_Options"); }

  QTabWidget* pgcOptions;
  TZTOptionsGeneralPage* tabGeneral;
  TZTColumnsPage* tabMsgDetails;
  TZTOptionsLayoutPage* tabLayout;
  TZTOptionsSeparatorsPage* tabSeparators;
  TZTOptionsFontsPage* tabFonts;
  TZTOptionsStylesPage* tabColorsStyles;
  QPushButton *btnOK, *btnCancel, *btnHelp;

 private:
  TZTViewerOptions FOptions;
};

}  // namespace zentrail
