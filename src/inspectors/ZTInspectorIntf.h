#pragma once
// What a plug-in's inspector control may offer to the pane, and the few services the pane needs
// from the main window. Plug-in controls are plain QWidgets; the pane finds these interfaces on them
// with dynamic_cast, so a plug-in derives its control from QWidget and from any of the four.

#include <QString>
#include <cstdint>

class QPrinter;
class QWidget;

namespace zentrail {

// Identifiers kept from the plug-in contract, so that a plug-in written against them can say which
// contract it means.
inline constexpr const char* IID_IInspectorCopyContents = "{34B5E0C0-0480-4168-A8B9-C1CE36A1BFE0}";
inline constexpr const char* IID_IInspectorPrintContents = "{C170B2AF-07A2-41C6-8B28-FE1FB36D1375}";
inline constexpr const char* IID_IInspectorSingleMessage = "{C4E5F8D9-1898-44C3-855C-F786C9853764}";
inline constexpr const char* IID_IInspectorMessagePair = "{11534077-E29A-4FC4-B557-EA0605FABD5D}";

class IInspectorCopyContents {
 public:
  virtual ~IInspectorCopyContents() = default;
  virtual void CopyToClipboard() = 0;
};

class IInspectorPrintContents {
 public:
  virtual ~IInspectorPrintContents() = default;
  // Prints onto the printer the pane has set up (the chosen device or a PDF file).
  virtual void Print(const QString& title, QPrinter& printer) = 0;
  virtual void GetPrintTitle(QString& title) = 0;
};

class IInspectorSingleMessage {
 public:
  virtual ~IInspectorSingleMessage() = default;
  // Shows the current record of MessageSet.
  virtual void InspectMessage() = 0;
};

class IInspectorMessagePair {
 public:
  virtual ~IInspectorMessagePair() = default;
  virtual void InspectMessages(int32_t recNo1, int32_t recNo2) = 0;
};

// Where controls for content codes the stock set does not cover come from. The shell wires this
// to the plug-in manager; without a source the pane shows its own "not found" text.
class IZTCustomInspectorSource {
 public:
  virtual ~IZTCustomInspectorSource() = default;
  virtual bool CanHandleMsgContent(int selectedCount, int32_t msgContent) = 0;
  // Never null: a source that has no inspector hands out a control that says so.
  virtual QWidget* GetInspectorControl(int32_t msgContent) = 0;
};

// Every modal exchange of the inspectors goes through this service. By default messages go to the
// viewer's prompt service (ZTPromptService.h) and the print question is a small dialog; the shell
// may replace the whole service (for its own print dialog), and tests answer without a dialog.
class IZTInspectorPrompts {
 public:
  virtual ~IZTInspectorPrompts() = default;
  // An error or notice that the user must see.
  virtual void ShowMessage(QWidget* parent, const QString& caption, const QString& text) = 0;
  // The print dialog: the title may be edited and the printer set up. False means cancelled.
  virtual bool ChoosePrinter(QWidget* parent, const QString& caption, QString& title,
                             QPrinter& printer) = 0;
};

// The service in use; never null.
IZTInspectorPrompts& InspectorPrompts();
// Replaces the service (nullptr restores the default); the caller keeps ownership.
void SetInspectorPrompts(IZTInspectorPrompts* prompts);

}  // namespace zentrail
