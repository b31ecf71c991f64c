#pragma once
// The XML view of the XML inspector: a syntax-coloured rendering of the document and its structure
// as a tree with a grid of the selected tag's attributes. A document that does not parse shows the
// part before the error and the error itself.

#include <QColor>
#include <QFont>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <memory>
#include <vector>

class QPlainTextEdit;
class QStackedWidget;
class QTableWidget;
class QTreeWidget;
class QTreeWidgetItem;
class QsciScintilla;
class QsciLexerXML;

namespace zentrail {

// Elements nest at most this deep; a document beyond it is read up to there. The tree and the
// rendering recurse over the nodes, so the limit also bounds their stack.
inline constexpr int ztMaxXmlDepth = 500;

struct TZTXmlNode {
  enum Kind { Root = 0, Tag = 1, Text = 2, Comment = 3, Declaration = 4, CData = 5, ProcessingInstruction = 6 };
  int FKind = Root;
  QString FName;
  QString FText;
  QStringList FParams;  // "name=value" or a bare word
  bool FSelfClosing = false;
  std::vector<std::unique_ptr<TZTXmlNode>> Children;
  TZTXmlNode* Parent = nullptr;

  TZTXmlNode* AddChild(int kind, const QString& name);
  // What the structure tree shows for the node.
  QString Caption() const;
};

// The parsed document: its root and the errors met on the way (each with column and row).
struct TZTXmlDocument {
  std::unique_ptr<TZTXmlNode> Root;
  QStringList Errors;
};

TZTXmlDocument ParseXmlDocument(const QString& text);
// The normalised form of the document, lines ending in CR alone.
QString RenderXmlDocument(const TZTXmlNode& root);
// TAB, LF and CR become blanks, then double blanks are reduced until none is left.
QString CleanXmlText(const QString& text);

class TZTXmlView : public QWidget {
  Q_OBJECT
 public:
  explicit TZTXmlView(QWidget* parent = nullptr);
  ~TZTXmlView() override;

  void Clear();
  void SetHighlightColors(const QColor& color, const QColor& fontColor);
  void InspectMessage(const QString& xmlText);

  // 0 syntax page, 1 structure page.
  void ShowPage(int page);
  int CurrentPage() const;
  void CollapseAll();
  void ExpandAll();

  void SetSyntaxFont(const QFont& font);
  void SetTreeFont(const QFont& font);

  QString Rendering() const { return FRendering; }
  QString SelectedSyntaxText() const;
  QStringList Errors() const { return FErrorLines; }
  bool ErrorsShown() const;

  QsciScintilla* SyntaxView() const { return synXmlData; }
  QTreeWidget* StructureTree() const { return tvwXmlStructure; }
  QTableWidget* ParameterGrid() const { return grdParameters; }
  const TZTXmlNode* NodeOf(QTreeWidgetItem* item) const;

 private:
  void BuildTree();
  void AddTreeChildren(QTreeWidgetItem* item, const TZTXmlNode& node);
  void PopulateLazily(QTreeWidgetItem* item);
  void ShowParams(QTreeWidgetItem* item);
  void ApplySyntaxStyles();

  QStackedWidget* pgcViews = nullptr;
  QsciScintilla* synXmlData = nullptr;
  QsciLexerXML* syaXmlData = nullptr;
  QTreeWidget* tvwXmlStructure = nullptr;
  QTableWidget* grdParameters = nullptr;
  QPlainTextEdit* edtErrors = nullptr;
  QWidget* pnlErrors = nullptr;
  TZTXmlDocument FDocument;
  QString FRendering;
  QStringList FErrorLines;
  QFont FSyntaxFont;
};

}  // namespace zentrail
