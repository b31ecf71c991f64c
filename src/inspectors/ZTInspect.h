#pragma once
// The stock inspectors: the common base with its toolbar slot, header, footer and print engine,
// and the thirteen panels that show a message's data. Each rebuilds its display from the current
// record of MessageSet; none keeps a message.

#include <QColor>
#include <QFont>
#include <QFrame>
#include <QIcon>
#include <QList>
#include <QPoint>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <memory>
#include <vector>

class QLabel;
class QMenu;
class QPainter;
class QPrinter;
class QToolButton;
class QVBoxLayout;
class QsciScintilla;
class QTableView;
class QTreeWidget;
class QTreeWidgetItem;
class QListWidget;
class QScrollArea;
class QBoxLayout;

namespace zentrail {

class TIxItemListEditor;
class TZTXmlView;
class TZTTableModel;
class TZTPictureBox;

// The glyphs of the inspector buttons (imlInspectorImages). Indexes: 0 word wrap, 1 jump to end,
// 2 line numbers, 3 scale, 4 full size, 5 stretch, 6 collapse all, 7 expand all, 8 copy value,
// 9 structure view, 10 syntax view.
class TZTInspectorImageList : public QObject {
  Q_OBJECT
 public:
  explicit TZTInspectorImageList(QObject* parent = nullptr) : QObject(parent) {}
  int Count() const { return static_cast<int>(FIcons.size()); }
  QIcon Icon(int index) const;
  void SetIcons(QList<QIcon> icons);
  // The glyphs drawn for this project.
  static TZTInspectorImageList* CreateDefault(QObject* parent);
 signals:
  void Changed();

 private:
  QList<QIcon> FIcons;
};

class TZTStockInspector : public QFrame {
  Q_OBJECT
 public:
  ~TZTStockInspector() override;

  // Builds an inspector in the fixed construction order. Constructors cannot run the virtual
  // creation steps, so every inspector is made through here.
  template <class T>
  static T* Create(QWidget* owner, QWidget* toolbarParent) {
    T* inspector = new T(owner);
    inspector->Construct(toolbarParent);
    return inspector;
  }

  // --- virtual operations, in slot order ---
  virtual void CreateView() {}
  virtual void CreateToolbarButtons(QWidget* toolbar) { (void)toolbar; }
  virtual void CreateToolbar(QWidget* parent);
  virtual void CreateHeader();
  virtual void CreateFooter();
  virtual void GetContents(QStringList& lines) { (void)lines; }
  virtual void PrintContents(const QStringList& lines);
  virtual bool HasHeader() const { return false; }
  virtual bool HasFooter() const { return false; }
  virtual void UpdateImages();
  virtual QString GetHeader() const;
  virtual void SetHeader(const QString& text);
  virtual QString GetFooter() const;
  virtual void SetFooter(const QString& text);
  virtual void Clear();
  virtual void InspectMessage() {}
  virtual void SetHighlightColors(const QColor& color, const QColor& fontColor);
  virtual void SetHeaderFont(const QFont& font, int height);
  virtual void SetImages(TZTInspectorImageList* images);
  virtual void SetViewFont(const QFont& font) { (void)font; }
  virtual void SetPopupMenu(QMenu* menu) { (void)menu; }
  virtual void CopyToClipboard() {}
  virtual void Print(const QString& title, QPrinter& printer);

  // --- showing in the pane ---
  void ShowInspector();
  void HideInspector();
  QWidget* Toolbar() const { return FToolbar; }

  // A note about data that could not be shown as sent; empty hides it. Clear() empties it.
  void SetNotice(const QString& text);
  QString Notice() const;

  QColor HighlightColor() const { return FHighlightColor; }
  QColor HighlightFontColor() const { return FHighlightFontColor; }
  int PrintPageNo() const { return FPrintPageNo; }
  int PrintLineNo() const { return FPrintLineNo; }
  int PrintLinesPerPage() const { return FPrintLinesPerPage; }

 protected:
  explicit TZTStockInspector(QWidget* owner);
  void Construct(QWidget* toolbarParent);

  // Where CreateView puts the view control(s).
  QVBoxLayout* ViewLayout() const { return FViewLayout; }
  QWidget* ViewArea() const { return FViewArea; }

  // A flat tool button in the toolbar; checkable ones toggle, `exclusive` ones form a radio group.
  QToolButton* AddToolButton(const QString& hint, int imageIndex, bool checkable);
  QWidget* AddToolSpacer();

  // Printing primitives for PrintContents.
  void PrintText(const QString& s);
  void PrintLine(const QString& s);
  void PrintPageHeader();
  QPainter* PrintPainter() const { return FPrintPainter; }
  QPrinter* Printer() const { return FPrinter; }

  static void PutTextOnClipboard(const QString& text);
  // Lines joined with CR LF after each, as a string list's text reads.
  static QString LinesAsText(const QStringList& lines);
  // Selected rows of a view in the highlight colours given to SetHighlightColors.
  void ApplyHighlightPalette(QWidget* w) const;

  // Print state.
  int FPrintDpi = 0;
  int FPrintLeft = 0;
  int FPrintTop = 0;
  int FPrintLineHeight = 0;
  int FPrintLinesPerPage = 0;
  int FPrintLineNo = 0;
  int FPrintPageNo = 0;
  QString FPrintTitle;

  QPointer<QWidget> FToolbar;
  QLabel* FHeader = nullptr;
  QLabel* FFooter = nullptr;
  QPointer<TZTInspectorImageList> FImages;
  QMetaObject::Connection FImagesChangeLink;
  QMetaObject::Connection FImagesFreeLink;
  QColor FHighlightColor;
  QColor FHighlightFontColor;

 private:
  QVBoxLayout* FLayout = nullptr;
  QWidget* FViewArea = nullptr;
  QVBoxLayout* FViewLayout = nullptr;
  QLabel* FNotice = nullptr;
  QBoxLayout* FToolbarLayout = nullptr;
  std::vector<std::pair<QToolButton*, int>> FButtons;
  QPainter* FPrintPainter = nullptr;
  QPrinter* FPrinter = nullptr;
  QPoint FPen;
  friend class TZTInspectorPane;
};

// ---------------------------------------------------------------------------------------------
// Text inspectors

// Lines longer than this are shown in pieces of this size.
inline constexpr std::size_t ztMaxShownLineBytes = 2000;

class TZTStringInspector : public TZTStockInspector {
  Q_OBJECT
 public:
  explicit TZTStringInspector(QWidget* owner) : TZTStockInspector(owner) {}

  void CreateView() override;
  void CreateToolbarButtons(QWidget* toolbar) override;
  void GetContents(QStringList& lines) override;
  void Clear() override;
  void InspectMessage() override;
  void SetHighlightColors(const QColor& color, const QColor& fontColor) override;
  void SetHeaderFont(const QFont& font, int height) override;
  void SetViewFont(const QFont& font) override;
  void SetPopupMenu(QMenu* menu) override;
  void CopyToClipboard() override;

  virtual bool InspectDetails() const { return false; }
  virtual bool GetWordWrap() const;
  virtual void SetWordWrap(bool value);
  virtual bool GetLineNumbers() const;
  virtual void SetLineNumbers(bool value);
  virtual bool GetJumpToEnd() const;
  virtual void SetJumpToEnd(bool value);

  // "Copy Value to Clipboard": the text behind the first " = ".
  void CopyValueToClipboard();
  QsciScintilla* View() const { return FView; }
  // The text as the view shows it, and the text as it came (they differ only when lines too long
  // for the view were shown in pieces).
  QString Text() const;
  QString FullText() const;

  QToolButton* FBtnWordWrap = nullptr;
  QToolButton* FBtnLineNumbers = nullptr;
  QToolButton* FBtnJumpToEnd = nullptr;
  QToolButton* FBtnCopyValue = nullptr;
  QWidget* FCopyValueSpacer = nullptr;

 protected:
  // Puts UTF-8 text into the view without a detour through QString.
  void SetViewText(std::string_view utf8);
  void JumpToEnd();
  void UpdateLineNumberMargin();

  QsciScintilla* FView = nullptr;
  QMenu* FPopupMenu = nullptr;
  bool FTextBroken = false;
  QString FUnbrokenText;
};

class TZTTextInspector : public TZTStringInspector {
  Q_OBJECT
 public:
  explicit TZTTextInspector(QWidget* owner) : TZTStringInspector(owner) {}
  void CreateView() override;
  void InspectMessage() override;
};

class TZTMonospaceTextInspector : public TZTStringInspector {
  Q_OBJECT
 public:
  explicit TZTMonospaceTextInspector(QWidget* owner) : TZTStringInspector(owner) {}
  void CreateView() override;
  bool InspectDetails() const override { return true; }
};

class TZTStringListInspector : public TZTStringInspector {
  Q_OBJECT
 public:
  explicit TZTStringListInspector(QWidget* owner) : TZTStringInspector(owner) {}
  void CreateView() override;
  void CreateToolbarButtons(QWidget* toolbar) override;
  bool HasFooter() const override { return true; }
  void InspectMessage() override;
  void PrintContents(const QStringList& lines) override;
};

// ---------------------------------------------------------------------------------------------
// Tabular inspectors

class TZTTableInspector : public TZTStockInspector {
  Q_OBJECT
 public:
  explicit TZTTableInspector(QWidget* owner) : TZTStockInspector(owner) {}
  ~TZTTableInspector() override;

  void CreateView() override;
  void GetContents(QStringList& lines) override;
  void PrintContents(const QStringList& lines) override;
  void Clear() override;
  void InspectMessage() override;
  void SetHighlightColors(const QColor& color, const QColor& fontColor) override;
  void SetViewFont(const QFont& font) override;
  void SetPopupMenu(QMenu* menu) override;
  void CopyToClipboard() override;

  virtual bool IsRightAligned(int col) const {
    (void)col;
    return false;
  }

  void CopySelectedRowValues();
  void CopySelectedRowValuesAsProperties();
  void CopyAllRows();

  QTableView* Grid() const { return FGrid; }
  // The cells as the grid holds them: row 0 is the header row.
  int RowCount() const;
  int ColCount() const;
  QString Cell(int col, int row) const;
  int ColumnWidth(int col) const;

 private:
  void SizeColumns();
  int SelectedRow() const;

  QTableView* FGrid = nullptr;
  TZTTableModel* FModel = nullptr;
  QMenu* FPopupMenu = nullptr;
};

class TZTPropertiesInspector : public TZTStockInspector {
  Q_OBJECT
 public:
  explicit TZTPropertiesInspector(QWidget* owner) : TZTStockInspector(owner) {}

  void CreateView() override;
  void CreateToolbarButtons(QWidget* toolbar) override;
  void GetContents(QStringList& lines) override;
  void PrintContents(const QStringList& lines) override;
  void Clear() override;
  void InspectMessage() override;
  void SetHighlightColors(const QColor& color, const QColor& fontColor) override;
  void SetViewFont(const QFont& font) override;
  void SetPopupMenu(QMenu* menu) override;
  void CopyToClipboard() override;

  virtual QString GetColumnHeading(int col) const;
  virtual bool IsColumnRightAligned(int col) const { return RightAlignValues() && col == 1; }
  virtual bool RightAlignValues() const { return false; }
  virtual void SetValueColor(const QColor& color);

  void CopySelectedPropertyValue();
  // Turns lines whose nesting is told by leading pairs of blanks into dotted paths.
  static QStringList IndentationToPaths(const QStringList& lines);

  TIxItemListEditor* Grid() const { return FGrid; }
  QString SelectedPath() const { return FSelectedPath; }

 protected:
  void FillGrid(const QStringList& lines);
  void SetHeadings();

  QMenu* FPopupMenu = nullptr;
  bool FUpdating = false;
  QString FSelectedPath;
  QColor FValueColor;
  TIxItemListEditor* FGrid = nullptr;
  QToolButton* FBtnCopyValue = nullptr;
};

class TZTObjectInspector : public TZTPropertiesInspector {
  Q_OBJECT
 public:
  explicit TZTObjectInspector(QWidget* owner) : TZTPropertiesInspector(owner) {}
  bool HasHeader() const override { return true; }
  QString GetColumnHeading(int col) const override;
  void InspectMessage() override;
};

class TZTCollectionInspector : public TZTObjectInspector {
  Q_OBJECT
 public:
  explicit TZTCollectionInspector(QWidget* owner) : TZTObjectInspector(owner) {}
  ~TZTCollectionInspector() override;

  void CreateView() override;
  void GetContents(QStringList& lines) override;
  void Clear() override;
  void InspectMessage() override;
  void SetHighlightColors(const QColor& color, const QColor& fontColor) override;
  void SetViewFont(const QFont& font) override;
  void SetPopupMenu(QMenu* menu) override;
  void CopyToClipboard() override;

  QListWidget* ItemList() const { return FItemList; }
  void SelectEntry(int index);
  bool SideBySide() const { return FSideBySide; }

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void Redock();

  QWidget* FSidePanel = nullptr;
  QListWidget* FItemList = nullptr;
  QBoxLayout* FSplitLayout = nullptr;
  std::vector<QStringList> FEntries;
  bool FSideBySide = false;
};

class TZTMemoryStatusInspector : public TZTPropertiesInspector {
  Q_OBJECT
 public:
  explicit TZTMemoryStatusInspector(QWidget* owner) : TZTPropertiesInspector(owner) {}
  QString GetColumnHeading(int col) const override;
  bool RightAlignValues() const override { return true; }
  void InspectMessage() override;

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void SizeNameColumn();
};

// ---------------------------------------------------------------------------------------------
// Image and colour

class TZTBitmapInspector : public TZTStockInspector {
  Q_OBJECT
 public:
  explicit TZTBitmapInspector(QWidget* owner) : TZTStockInspector(owner) {}

  void CreateView() override;
  void CreateToolbarButtons(QWidget* toolbar) override;
  bool HasFooter() const override { return true; }
  void PrintContents(const QStringList& lines) override;
  void Clear() override;
  void InspectMessage() override;
  void SetHeaderFont(const QFont& font, int height) override;
  void CopyToClipboard() override;

  // 0 Scale, 1 Full Size, 2 Stretch. Setting only puts the button down; the layout changes on a
  // click, so a restored setting shows at the next click.
  int GetDisplayType() const;
  void SetDisplayType(int value);
  // Applies a display mode now, as a click on its button does.
  void ApplyDisplayType(int value);

  const QImage& Picture() const;
  TZTPictureBox* PictureBox() const { return FImage; }
  QScrollArea* ScrollBox() const { return FScrollBox; }

  QToolButton* FBtnScale = nullptr;
  QToolButton* FBtnStretch = nullptr;
  QToolButton* FBtnFullSize = nullptr;

 private:
  TZTPictureBox* FImage = nullptr;
  QScrollArea* FScrollBox = nullptr;
};

class TZTColorInspector : public TZTStockInspector {
  Q_OBJECT
 public:
  explicit TZTColorInspector(QWidget* owner) : TZTStockInspector(owner) {}

  void CreateView() override;
  void Clear() override;
  void InspectMessage() override;
  void SetHeaderFont(const QFont& font, int height) override;
  void SetViewFont(const QFont& font) override;
  virtual void SetValueColor(const QColor& color);

  // Pane texts in the order R, G, B, A, H, S, L.
  QString ValueText(int index) const;
  QColor SwatchColor() const;

 private:
  void LayoutValues();

  QLabel* FLabels[7] = {};
  QLabel* FValues[7] = {};
  QWidget* FValuesPanel = nullptr;
  QFrame* FSwatch = nullptr;
  QColor FValueColor;
  QColor FSwatchColor;
};

// ---------------------------------------------------------------------------------------------
// Hierarchy and XML

class TZTHierarchyInspector : public TZTStockInspector {
  Q_OBJECT
 public:
  explicit TZTHierarchyInspector(QWidget* owner) : TZTStockInspector(owner) {}

  void CreateView() override;
  void CreateToolbarButtons(QWidget* toolbar) override;
  void GetContents(QStringList& lines) override;
  bool HasHeader() const override { return true; }
  void Clear() override;
  void InspectMessage() override;
  void SetHighlightColors(const QColor& color, const QColor& fontColor) override;
  void SetViewFont(const QFont& font) override;
  void SetPopupMenu(QMenu* menu) override;
  void CopyToClipboard() override;

  void CollapseAll();
  void ExpandAll();
  QTreeWidget* Tree() const { return FTree; }

 private:
  QTreeWidget* FTree = nullptr;
};

class TZTXmlDataInspector : public TZTStockInspector {
  Q_OBJECT
 public:
  explicit TZTXmlDataInspector(QWidget* owner) : TZTStockInspector(owner) {}

  void CreateView() override;
  void CreateToolbarButtons(QWidget* toolbar) override;
  void GetContents(QStringList& lines) override;
  bool HasHeader() const override { return true; }
  void Clear() override;
  void InspectMessage() override;
  void SetHighlightColors(const QColor& color, const QColor& fontColor) override;
  void SetViewFont(const QFont& font) override;
  void SetPopupMenu(QMenu* menu) override;
  void CopyToClipboard() override;

  void SetViewFixedFont(const QFont& font);
  // 0 Syntax View, 1 Structure View; setting clicks the button, so it shows at once.
  int GetViewType() const;
  void SetViewType(int value);
  void CollapseAll();
  void ExpandAll();

  TZTXmlView* XmlView() const { return FXmlView; }

  QToolButton* FBtnSyntax = nullptr;
  QToolButton* FBtnStructure = nullptr;
  QToolButton* FBtnCollapse = nullptr;
  QToolButton* FBtnExpand = nullptr;

 private:
  TZTXmlView* FXmlView = nullptr;
};

}  // namespace zentrail
