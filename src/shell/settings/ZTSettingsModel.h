#pragma once
// The viewer's settings as values: one struct per section of the settings file, each with its
// defaults written here once, and its reading and writing. The main window applies them through
// its setters; the options dialog edits a copy of them.

#include <QFont>
#include <QString>
#include <array>
#include <cstdint>

#include "ZTCustomViewIntf.h"
#include "ZTInspectorPane.h"

namespace zentrail {

class TZTIniFile;

// A font as the settings file keeps it. Name is the face asked for, kept even where this machine
// lacks it (the font in use then falls back to the system's), so that a user's choice survives a
// run on another desktop. Style is the file's style number (ztStyleBold and the others).
struct TZTFontSetting {
  QString Name;
  int32_t Size = 8;
  TColor Color = 0;
  int32_t Style = 0;
  bool operator==(const TZTFontSetting&) const = default;
};

// Message types 0 to 45 have an entry in the table of type styles; entry 0 is the default.
inline constexpr int ztMsgTypeStyleCount = 46;
using TZTMsgTypeStyles = std::array<TZTMsgTypeStyle, ztMsgTypeStyleCount>;

// Section "Position": the restored rectangle of the main window.
struct TZTPositionSection {
  int32_t Left = 20, Top = 20, Right = 790, Bottom = 420;
  bool Maximized = false;
  // Whether the file held the rectangle at all: a first run places the window itself.
  bool Stored = false;
  void Read(const TZTIniFile& ini);
  void Write(TZTIniFile& ini) const;
};

// Section "Organizer".
struct TZTOrganizerSection {
  uint8_t OrganizeBy = 0;  // 1 AppName, 2 Category, 4 ProcessID, 8 ThreadName, 16 ComputerName
  bool AutoOrganize = false;
  void Read(const TZTIniFile& ini);
  void Write(TZTIniFile& ini) const;
};

// Section "Display": panes, columns, toolbars, colours and the inspectors' own choices.
struct TZTDisplaySection {
  bool AlwaysOnTop = false;
  bool Inspector = false;
  bool CallStack = false;
  bool ScratchPad = false;
  int32_t ScratchPadLightColor = 0;
  bool InspectorOnBottom = false;
  int32_t MainSplitFixed = -1, LeftSplitFixed = -1, RightSplitFixed = -1;
  bool WrapButtons = false;
  bool DetailPanel = false;
  // Column bits: 1 Category, 2 AppName, 4 ComputerName, 8 ProcessID, 16 ThreadName, 32 Date,
  // 64 TimeStamp, 128 TimeDiff, 256 TimeOffset. Of the three time bits the file gives one at most.
  uint16_t Columns = 0;
  bool HideExtraColumns = false;
  TColor MarkerColor = 0x00E6D8AD;
  TColor SyncMsgColor = 0x00AFEBFF;
  TColor SeparatorColor = 0x00E4AD89;
  TColor InactiveSeparatorColor = 0x00A0CDDE;
  TColor AppStartSeparatorColor = 0x00E4AD89;
  TColor ValueColor = 0x008E3300;
  TColor HighlightColor = 0x00F0CDAA;
  TColor HighlightFontColor = 0x00502805;
  bool RowShading = true;
  TColor RowShadingColor = clBtnShadow;
  TZTInspectorDisplaySettings Inspectors;
  void Read(const TZTIniFile& ini);
  void Write(TZTIniFile& ini) const;
};

// Section "General".
struct TZTGeneralSection {
  bool ConfirmOnClear = true;
  bool ConfirmOnClearBookmarks = true;
  bool AutoSaveProject = true;
  bool AutoScroll = true;
  bool AutoCollapse = true;
  bool FlattenStructure = false;
  bool SoundEffectOnWakeUp = false;
  QString SoundEffectFile;
  bool InsertSeparatorOnWakeUp = false;
  int32_t IdleTime = 10;  // seconds
  bool InsertSeparatorOnAppStart = false;
  QString LastProject;
  QString LastLogDir;
  QString LastProjectDir;
  int32_t NavigatorMsgType = 3;
  int32_t NavigatorMsgContent = 7;
  bool NavigatorAutomatic = true;
  bool NavigatorTimeDiff = false;
  int32_t TimeDiffNavThreshold = 1000;  // ms
  bool PrintSelection = true;
  int32_t PrintFontSize = 8;
  void Read(const TZTIniFile& ini);
  void Write(TZTIniFile& ini) const;
};

// The three font sections.
struct TZTFontsSection {
  TZTFontSetting Message, Inspector, InspectorFixed;
  // The default faces: the message font's is fixed, the inspector fonts take the first of two
  // faces that is installed.
  static QString MessageDefaultName();
  static QString InspectorDefaultName();
  static QString InspectorFixedDefaultName();
  static void ReadFont(const TZTIniFile& ini, const char* section, TZTFontSetting& font, const QString& defaultName);
  static void WriteFont(TZTIniFile& ini, const char* section, const TZTFontSetting& font);
  void Read(const TZTIniFile& ini);
  void Write(TZTIniFile& ini) const;
};

// Section "FontStyles": the types with keys; the others keep an empty entry.
struct TZTFontStylesSection {
  TZTMsgTypeStyles Styles{};
  static void ReadMsgStyle(const TZTIniFile& ini, const char* keyPrefix, TZTMsgTypeStyle& entry);
  static void WriteMsgStyle(TZTIniFile& ini, const char* keyPrefix, const TZTMsgTypeStyle& entry);
  void Read(const TZTIniFile& ini);
  void Write(TZTIniFile& ini) const;
};

// Section "Find".
struct TZTFindSection {
  bool FindForward = true;
  bool FindFromCursor = false;
  bool FindInDetails = true;
  void Read(const TZTIniFile& ini);
  void Write(TZTIniFile& ini) const;
};

// What the options dialog edits: the sections it has controls for.
struct TZTViewerOptions {
  TZTDisplaySection Display;
  TZTGeneralSection General;
  TZTFontsSection Fonts;
  TZTMsgTypeStyles Styles{};
};

// A face by name, or the system's font of that kind where the face is missing.
QFont ChooseFontFace(const QString& family, int pointSize, bool fixed);
// The font a setting names, with its size and style.
QFont RealizeFontSetting(const TZTFontSetting& font, bool fixed);

// The file's style number (8 bold, 4 italic, 2 underline, 1 strike-out) and the bits the views
// draw with run in opposite orders.
uint8_t StyleBitsFromNumber(int32_t number);
int32_t StyleNumberFromBits(uint8_t bits);

}  // namespace zentrail
