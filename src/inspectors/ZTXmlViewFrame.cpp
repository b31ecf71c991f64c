#include "ZTXmlViewFrame.h"

#include <Qsci/qscilexerxml.h>
#include <Qsci/qsciscintilla.h>

#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPainter>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QSplitter>
#include <QStackedWidget>
#include <QTableWidget>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <QXmlStreamReader>

#include "ZTInspectorUtils.h"

namespace zentrail {

// ---------------------------------------------------------------------------------------------
// Document model

TZTXmlNode* TZTXmlNode::AddChild(int kind, const QString& name) {
  auto node = std::make_unique<TZTXmlNode>();
  node->FKind = kind;
  node->FName = name;
  node->Parent = this;
  Children.push_back(std::move(node));
  return Children.back().get();
}

QString CleanXmlText(const QString& text) {
  QString s = text;
  for (QChar& c : s) {
    if (c == u'\t' || c == u'\n' || c == u'\r') c = u' ';
  }
  while (s.contains(QStringLiteral("  "))) s.replace(QStringLiteral("  "), QStringLiteral(" "));
  return s;
}

QString TZTXmlNode::Caption() const {
  switch (FKind) {
    case Tag:
    case CData:
    case ProcessingInstruction:
      return FName;
    case Text:
      return CleanXmlText(FText);
    default: {
      const QString cleaned = CleanXmlText(FText);
      return cleaned.trimmed().isEmpty() ? FName : cleaned;
    }
  }
}

namespace {

QString ErrorPosition(qint64 col, qint64 row) {
  return QStringLiteral("  Col: %1  Row: %2").arg(col, 5, 10, QChar(u'0')).arg(row, 5, 10, QChar(u'0'));
}

// Attributes of a processing instruction's data, read as a tag's would be.
QStringList ParsePseudoAttributes(const QString& data) {
  static const QRegularExpression re(
      QString::fromLatin1(R"re((?:([^\s=]+)\s*=\s*(?:"([^"]*)"|'([^']*)'|([^\s"']+)))|([^\s=]+))re"));
  QStringList out;
  auto it = re.globalMatch(data);
  while (it.hasNext()) {
    const auto m = it.next();
    if (!m.captured(1).isEmpty()) {
      QString value = m.captured(2);
      if (m.capturedStart(3) >= 0) value = m.captured(3);
      if (m.capturedStart(4) >= 0) value = m.captured(4);
      out << m.captured(1) + u'=' + value;
    } else {
      out << m.captured(5);
    }
  }
  return out;
}

QString EscapeText(const QString& s) {
  QString out;
  out.reserve(s.size());
  for (QChar c : s) {
    if (c == u'&') {
      out += QStringLiteral("&amp;");
    } else if (c == u'<') {
      out += QStringLiteral("&lt;");
    } else if (c == u'>') {
      out += QStringLiteral("&gt;");
    } else {
      out += c;
    }
  }
  return out;
}

}  // namespace

TZTXmlDocument ParseXmlDocument(const QString& text) {
  TZTXmlDocument doc;
  doc.Root = std::make_unique<TZTXmlNode>();
  TZTXmlNode* current = doc.Root.get();
  QXmlStreamReader reader(text);
  qint64 consumed = 0;  // end of the last construct read completely
  int depth = 0;
  while (!reader.atEnd()) {
    const auto token = reader.readNext();
    if (token != QXmlStreamReader::Invalid) consumed = reader.characterOffset();
    switch (token) {
      case QXmlStreamReader::StartDocument:
        if (!reader.documentVersion().isEmpty()) {
          TZTXmlNode* pi = current->AddChild(TZTXmlNode::ProcessingInstruction, QStringLiteral("xml"));
          pi->FParams << QStringLiteral("version=") + reader.documentVersion().toString();
          if (!reader.documentEncoding().isEmpty()) pi->FParams << QStringLiteral("encoding=") + reader.documentEncoding().toString();
          if (reader.isStandaloneDocument()) pi->FParams << QStringLiteral("standalone=yes");
        }
        break;
      case QXmlStreamReader::StartElement: {
        if (depth >= ztMaxXmlDepth) {
          doc.Errors << QStringLiteral("The document nests deeper than %1 levels; the deeper part is not shown.").arg(ztMaxXmlDepth) +
                            ErrorPosition(reader.columnNumber(), reader.lineNumber());
          return doc;
        }
        ++depth;
        TZTXmlNode* tag = current->AddChild(TZTXmlNode::Tag, reader.qualifiedName().toString());
        for (const auto& ns : reader.namespaceDeclarations()) {
          const QString prefix = ns.prefix().toString();
          tag->FParams << (prefix.isEmpty() ? QStringLiteral("xmlns") : QStringLiteral("xmlns:") + prefix) + u'=' +
                              ns.namespaceUri().toString();
        }
        for (const auto& attr : reader.attributes()) {
          tag->FParams << attr.qualifiedName().toString() + u'=' + attr.value().toString();
        }
        // The reader does not say whether the tag closed itself; its own text does.
        const qint64 end = reader.characterOffset();
        tag->FSelfClosing = end >= 2 && end <= text.size() && text.at(end - 1) == u'>' && text.at(end - 2) == u'/';
        current = tag;
        break;
      }
      case QXmlStreamReader::EndElement:
        if (current->Parent) current = current->Parent;
        --depth;
        break;
      case QXmlStreamReader::Characters:
        if (reader.isCDATA()) {
          current->AddChild(TZTXmlNode::CData, QStringLiteral("CDATA"))->FText = reader.text().toString();
        } else if (!current->Children.empty() && current->Children.back()->FKind == TZTXmlNode::Text) {
          current->Children.back()->FText += reader.text();
        } else {
          current->AddChild(TZTXmlNode::Text, QString())->FText = reader.text().toString();
        }
        break;
      case QXmlStreamReader::Comment:
        current->AddChild(TZTXmlNode::Comment, QStringLiteral("!--"))->FText = reader.text().toString();
        break;
      case QXmlStreamReader::DTD: {
        QString body = reader.text().toString().trimmed();
        if (body.startsWith(QStringLiteral("<!"))) body.remove(0, 2);
        if (body.endsWith(u'>')) body.chop(1);
        const qsizetype space = body.indexOf(QRegularExpression(QStringLiteral("\\s")));
        const QString word = space < 0 ? body : body.left(space);
        TZTXmlNode* decl = current->AddChild(TZTXmlNode::Declaration, u'!' + word);
        decl->FText = space < 0 ? QString() : body.mid(space + 1).trimmed();
        break;
      }
      case QXmlStreamReader::ProcessingInstruction: {
        TZTXmlNode* pi = current->AddChild(TZTXmlNode::ProcessingInstruction, reader.processingInstructionTarget().toString());
        pi->FText = reader.processingInstructionData().toString();
        pi->FParams = ParsePseudoAttributes(pi->FText);
        break;
      }
      case QXmlStreamReader::EntityReference:
        current->AddChild(TZTXmlNode::Text, QString())->FText = u'&' + reader.name().toString() + u';';
        break;
      default:
        break;
    }
  }
  if (reader.error() == QXmlStreamReader::PrematureEndOfDocumentError && consumed < text.size()) {
    // The reader holds back a text run until it sees what follows; at the end of an unfinished
    // document that text would be lost.
    const QString rest = text.mid(consumed);
    if (!rest.contains(u'<') && !rest.trimmed().isEmpty()) {
      QString decoded = rest;
      decoded.replace(QStringLiteral("&lt;"), QStringLiteral("<")).replace(QStringLiteral("&gt;"), QStringLiteral(">"));
      decoded.replace(QStringLiteral("&quot;"), QStringLiteral("\"")).replace(QStringLiteral("&apos;"), QStringLiteral("'"));
      decoded.replace(QStringLiteral("&amp;"), QStringLiteral("&"));
      current->AddChild(TZTXmlNode::Text, QString())->FText = decoded;
    }
  }
  if (reader.hasError()) {
    doc.Errors << reader.errorString() + ErrorPosition(reader.columnNumber(), reader.lineNumber());
    if (current != doc.Root.get()) {
      doc.Errors << QStringLiteral("Tags left open at the error are closed in the rendering.");
    }
  }
  return doc;
}

namespace {

struct TRenderer {
  QString out;
  int lastKind = -1;

  bool EndsInCr() const { return !out.isEmpty() && out.back() == u'\r'; }

  static QString StartTag(const TZTXmlNode& node) {
    QString s = u'<' + node.FName;
    for (const QString& entry : node.FParams) {
      const qsizetype eq = entry.indexOf(u'=');
      if (eq < 0) {
        s += u' ' + entry;
        continue;
      }
      const QString value = entry.mid(eq + 1);
      const QChar quote = value.contains(u'"') ? u'\'' : u'"';
      s += u' ' + entry.left(eq) + u'=' + quote + value + quote;
    }
    return s + u'>';
  }

  void Render(const TZTXmlNode& node, int depth) {
    if (node.FKind == TZTXmlNode::Text && node.FText.trimmed().isEmpty()) return;
    const QString indent(depth >= 1 ? 2 * (depth - 1) : 0, u' ');
    const bool ownLine = node.FKind == TZTXmlNode::Comment || node.FKind == TZTXmlNode::Declaration ||
                         node.FKind == TZTXmlNode::ProcessingInstruction;
    // A comment or declaration right behind an opening tag starts a line of its own, as tags do.
    if (ownLine && lastKind == TZTXmlNode::Tag && !out.isEmpty() && !EndsInCr()) out += u'\r';
    if (node.FKind != TZTXmlNode::Tag && node.FKind != TZTXmlNode::Text) out += indent;
    switch (node.FKind) {
      case TZTXmlNode::Tag: {
        if (lastKind == TZTXmlNode::Tag && !EndsInCr()) out += u'\r';
        out += indent;
        QString start = StartTag(node);
        if (node.FSelfClosing) {
          start.chop(1);
          out += start + QStringLiteral("/>\r");
        } else {
          out += start;
        }
        break;
      }
      case TZTXmlNode::Comment:
        out += QStringLiteral("<!-- ") + node.FText.trimmed() + QStringLiteral("-->\r");
        break;
      case TZTXmlNode::Declaration:
        out += u'<' + node.FName + u' ' + node.FText + QStringLiteral(">\r");
        break;
      case TZTXmlNode::CData:
        out += QStringLiteral("<![CDATA[") + node.FText + QStringLiteral("]]>");
        break;
      case TZTXmlNode::ProcessingInstruction: {
        const QString start = StartTag(node);
        out += QStringLiteral("<?") + start.mid(1, start.size() - 2) + QStringLiteral("?>\r");
        break;
      }
      case TZTXmlNode::Text:
        out += EscapeText(node.FText);
        break;
      default:
        out += node.FText;
        break;
    }
    lastKind = node.FKind;
    for (const auto& child : node.Children) Render(*child, depth + 1);
    if (node.FKind == TZTXmlNode::Tag && !node.FSelfClosing) {
      if (EndsInCr()) out += indent;
      out += QStringLiteral("</") + node.FName + QStringLiteral(">\r");
      lastKind = TZTXmlNode::Tag;
    }
  }
};

QIcon DrawXmlIcon(int index) {
  QPixmap pm(16, 16);
  pm.fill(Qt::transparent);
  QPainter p(&pm);
  p.setRenderHint(QPainter::Antialiasing);
  const QColor ink(0x33, 0x44, 0x66);
  switch (index) {
    case 0: {  // document
      p.setPen(QPen(ink, 1));
      p.setBrush(QColor(0xfa, 0xfa, 0xfa));
      QPolygonF page({QPointF(3.5, 1.5), QPointF(10, 1.5), QPointF(13.5, 5), QPointF(13.5, 14.5), QPointF(3.5, 14.5)});
      p.drawPolygon(page);
      p.setPen(QPen(QColor(0x2a, 0x7a, 0xd5), 1));
      for (int y : {7, 9, 11}) p.drawLine(QPointF(5.5, y + 0.5), QPointF(11.5, y + 0.5));
      break;
    }
    case 1: {  // tag
      p.setPen(QPen(QColor(0x8b, 0x1a, 0x1a), 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
      p.drawPolyline(QPolygonF({QPointF(6, 4), QPointF(2, 8), QPointF(6, 12)}));
      p.drawPolyline(QPolygonF({QPointF(10, 4), QPointF(14, 8), QPointF(10, 12)}));
      break;
    }
    case 2: {  // text
      QFont f = QApplication::font();
      f.setPixelSize(12);
      f.setBold(true);
      p.setFont(f);
      p.setPen(QColor(0x1d, 0x6b, 0x3a));
      p.drawText(QRect(0, 0, 16, 16), Qt::AlignCenter, QStringLiteral("T"));
      break;
    }
    default: {  // comment, declaration
      p.setPen(QPen(QColor(0x00, 0x80, 0x80), 1));
      p.setBrush(QColor(0xe6, 0xf4, 0xf4));
      p.drawRoundedRect(QRectF(1.5, 2.5, 13, 9), 2, 2);
      p.drawPolygon(QPolygonF({QPointF(4, 11.5), QPointF(4, 14.5), QPointF(7.5, 11.5)}));
      break;
    }
  }
  p.end();
  return QIcon(pm);
}

// imlXmlIcons: 0 document, 1 tag, 2 text, 3 comment or declaration.
const QIcon& XmlIcon(int index) {
  static const QIcon icons[4] = {DrawXmlIcon(0), DrawXmlIcon(1), DrawXmlIcon(2), DrawXmlIcon(3)};
  return icons[index < 0 || index > 3 ? 3 : index];
}

int ImageOfKind(int kind) {
  switch (kind) {
    case TZTXmlNode::Tag:
    case TZTXmlNode::CData:
    case TZTXmlNode::ProcessingInstruction:
      return 1;
    case TZTXmlNode::Text:
      return 2;
    default:
      return 3;
  }
}

constexpr int kNodeRole = Qt::UserRole;
constexpr int kPendingRole = Qt::UserRole + 1;

}  // namespace

QString RenderXmlDocument(const TZTXmlNode& root) {
  TRenderer r;
  r.Render(root, 0);
  return r.out;
}

// ---------------------------------------------------------------------------------------------
// The frame

TZTXmlView::TZTXmlView(QWidget* parent) : QWidget(parent) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  pgcViews = new QStackedWidget(this);
  layout->addWidget(pgcViews, 1);

  synXmlData = new QsciScintilla(pgcViews);
  synXmlData->setUtf8(true);
  synXmlData->setFrameShape(QFrame::NoFrame);
  synXmlData->setReadOnly(true);
  synXmlData->setTabWidth(4);
  synXmlData->setMarginWidth(0, 0);
  synXmlData->setMarginWidth(1, 0);
  synXmlData->SendScintilla(QsciScintilla::SCI_SETUNDOCOLLECTION, 0L);
  synXmlData->SendScintilla(QsciScintilla::SCI_SETSCROLLWIDTH, 1L);
  synXmlData->SendScintilla(QsciScintilla::SCI_SETSCROLLWIDTHTRACKING, 1L);
  FSyntaxFont = InspectorFixedFont(9);
  syaXmlData = new QsciLexerXML(synXmlData);
  ApplySyntaxStyles();
  synXmlData->setLexer(syaXmlData);
  synXmlData->setFolding(QsciScintilla::BoxedTreeFoldStyle, 2);
  synXmlData->setMarginWidth(2, 12);
  synXmlData->setFoldMarginColors(QColor(0xf3, 0xf4, 0xf6), QColor(0xf3, 0xf4, 0xf6));
  synXmlData->SendScintilla(QsciScintilla::SCI_SETPROPERTY, "fold", "1");
  synXmlData->SendScintilla(QsciScintilla::SCI_SETPROPERTY, "fold.html", "1");
  pgcViews->addWidget(synXmlData);

  auto* structure = new QSplitter(Qt::Vertical, pgcViews);
  structure->setHandleWidth(4);
  structure->setChildrenCollapsible(false);
  tvwXmlStructure = new QTreeWidget(structure);
  tvwXmlStructure->setFrameShape(QFrame::NoFrame);
  tvwXmlStructure->setHeaderHidden(true);
  tvwXmlStructure->setIndentation(20);
  tvwXmlStructure->setUniformRowHeights(true);
  grdParameters = new QTableWidget(0, 2, structure);
  grdParameters->setFrameShape(QFrame::NoFrame);
  grdParameters->setHorizontalHeaderLabels({QStringLiteral("Tag Parameter"), QStringLiteral("Value")});
  grdParameters->verticalHeader()->hide();
  grdParameters->verticalHeader()->setDefaultSectionSize(17);
  grdParameters->horizontalHeader()->resizeSection(0, 150);
  grdParameters->horizontalHeader()->resizeSection(1, 168);
  grdParameters->horizontalHeader()->setStretchLastSection(true);
  grdParameters->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  grdParameters->horizontalHeader()->setStyleSheet(QStringLiteral(
      "QHeaderView::section { background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #ffffff, "
      "stop:1 #e4e7ec); border: none; border-right: 1px solid #c5cad3; border-bottom: 1px solid #c5cad3; "
      "padding: 1px 4px; color: #1f2d3d; }"));
  grdParameters->setStyleSheet(QStringLiteral("QTableWidget { gridline-color: #dfe3e8; }"));
  grdParameters->setEditTriggers(QAbstractItemView::NoEditTriggers);
  grdParameters->setSelectionBehavior(QAbstractItemView::SelectRows);
  grdParameters->setWordWrap(false);
  structure->addWidget(tvwXmlStructure);
  structure->addWidget(grdParameters);
  structure->setStretchFactor(0, 1);
  structure->setSizes({300, 100});
  structure->setStyleSheet(QStringLiteral(
      "QSplitter::handle { background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #ffffff, stop:1 #c9ced6); }"));
  pgcViews->addWidget(structure);

  pnlErrors = new QWidget(this);
  auto* errLayout = new QVBoxLayout(pnlErrors);
  errLayout->setContentsMargins(0, 0, 0, 0);
  errLayout->setSpacing(0);
  auto* divider = new QFrame(pnlErrors);
  divider->setFixedHeight(4);
  divider->setStyleSheet(QStringLiteral("background: #e0c060;"));
  errLayout->addWidget(divider);
  edtErrors = new QPlainTextEdit(pnlErrors);
  edtErrors->setReadOnly(true);
  edtErrors->setFrameShape(QFrame::NoFrame);
  edtErrors->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  edtErrors->setStyleSheet(QStringLiteral("QPlainTextEdit { background: #fff4ce; color: #5c4400; }"));
  errLayout->addWidget(edtErrors);
  pnlErrors->setFixedHeight(60);
  pnlErrors->hide();
  layout->addWidget(pnlErrors);

  connect(tvwXmlStructure, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) { ShowParams(item); });
  connect(tvwXmlStructure, &QTreeWidget::itemExpanded, this, [this](QTreeWidgetItem* item) { PopulateLazily(item); });
}

TZTXmlView::~TZTXmlView() {
  // Tree items refer to document nodes; drop them first.
  tvwXmlStructure->clear();
}

void TZTXmlView::ApplySyntaxStyles() {
  QFont bold = FSyntaxFont;
  bold.setBold(true);
  syaXmlData->setDefaultFont(FSyntaxFont);
  syaXmlData->setFont(FSyntaxFont);
  syaXmlData->setDefaultPaper(Qt::white);
  syaXmlData->setPaper(Qt::white);
  syaXmlData->setColor(Qt::black);
  const QColor navy(0, 0, 128), teal(0, 128, 128), maroon(128, 0, 0), blue(0, 0, 255), red(255, 0, 0);
  syaXmlData->setColor(Qt::black, QsciLexerHTML::Default);
  syaXmlData->setFont(bold, QsciLexerHTML::Default);
  syaXmlData->setColor(maroon, QsciLexerHTML::Tag);
  syaXmlData->setColor(maroon, QsciLexerHTML::UnknownTag);
  syaXmlData->setColor(navy, QsciLexerHTML::Attribute);
  syaXmlData->setColor(navy, QsciLexerHTML::UnknownAttribute);
  syaXmlData->setColor(blue, QsciLexerHTML::HTMLDoubleQuotedString);
  syaXmlData->setColor(blue, QsciLexerHTML::HTMLSingleQuotedString);
  syaXmlData->setColor(blue, QsciLexerHTML::HTMLValue);
  syaXmlData->setColor(blue, QsciLexerHTML::HTMLNumber);
  syaXmlData->setColor(navy, QsciLexerHTML::OtherInTag);
  syaXmlData->setColor(teal, QsciLexerHTML::HTMLComment);
  syaXmlData->setColor(navy, QsciLexerHTML::Entity);
  syaXmlData->setColor(navy, QsciLexerHTML::XMLTagEnd);
  syaXmlData->setColor(navy, QsciLexerHTML::XMLStart);
  syaXmlData->setColor(navy, QsciLexerHTML::XMLEnd);
  syaXmlData->setColor(blue, QsciLexerHTML::CDATA);
  syaXmlData->setColor(navy, QsciLexerHTML::SGMLDefault);
  syaXmlData->setColor(navy, QsciLexerHTML::SGMLCommand);
  syaXmlData->setColor(blue, QsciLexerHTML::SGMLDoubleQuotedString);
  syaXmlData->setColor(teal, QsciLexerHTML::SGMLComment);
  syaXmlData->setColor(red, QsciLexerHTML::SGMLError);
  QFont errorFont = bold;
  syaXmlData->setFont(errorFont, QsciLexerHTML::SGMLError);
  for (int style = 0; style < 128; ++style) {
    if (style == QsciLexerHTML::Default || style == QsciLexerHTML::SGMLError) continue;
    syaXmlData->setFont(FSyntaxFont, style);
    syaXmlData->setPaper(Qt::white, style);
  }
  syaXmlData->setFont(bold, QsciLexerHTML::Default);
}

void TZTXmlView::SetSyntaxFont(const QFont& font) {
  FSyntaxFont = font;
  ApplySyntaxStyles();
  synXmlData->recolor();
}

void TZTXmlView::SetTreeFont(const QFont& font) {
  tvwXmlStructure->setFont(font);
  grdParameters->setFont(font);
}

void TZTXmlView::SetHighlightColors(const QColor& color, const QColor& fontColor) {
  synXmlData->setSelectionBackgroundColor(color);
  synXmlData->setSelectionForegroundColor(fontColor);
  for (QWidget* w : {static_cast<QWidget*>(tvwXmlStructure), static_cast<QWidget*>(grdParameters)}) {
    QPalette pal = w->palette();
    for (auto group : {QPalette::Active, QPalette::Inactive}) {
      pal.setColor(group, QPalette::Highlight, color);
      pal.setColor(group, QPalette::HighlightedText, fontColor);
    }
    w->setPalette(pal);
  }
}

void TZTXmlView::Clear() {
  tvwXmlStructure->clear();
  grdParameters->setRowCount(0);
  synXmlData->setReadOnly(false);
  synXmlData->SendScintilla(QsciScintilla::SCI_CLEARALL);
  synXmlData->setReadOnly(true);
  edtErrors->clear();
  pnlErrors->hide();
  FErrorLines.clear();
  FRendering.clear();
  FDocument = TZTXmlDocument();
}

void TZTXmlView::InspectMessage(const QString& xmlText) {
  Clear();
  FDocument = ParseXmlDocument(xmlText);
  BuildTree();
  FRendering = RenderXmlDocument(*FDocument.Root);
  if (!FDocument.Errors.isEmpty()) {
    FErrorLines = FDocument.Errors;
    edtErrors->setPlainText(FErrorLines.join(u'\n'));
    pnlErrors->show();
  }
  const QByteArray utf8 = FRendering.toUtf8();
  synXmlData->setReadOnly(false);
  synXmlData->SendScintilla(QsciScintilla::SCI_CLEARALL);
  synXmlData->SendScintilla(QsciScintilla::SCI_APPENDTEXT, static_cast<unsigned long>(utf8.size()), utf8.constData());
  synXmlData->SendScintilla(QsciScintilla::SCI_EMPTYUNDOBUFFER);
  synXmlData->SendScintilla(QsciScintilla::SCI_SETSCROLLWIDTH, 1L);
  synXmlData->setReadOnly(true);
  synXmlData->SendScintilla(QsciScintilla::SCI_SETEMPTYSELECTION, 0UL);
}

void TZTXmlView::BuildTree() {
  tvwXmlStructure->setUpdatesEnabled(false);
  tvwXmlStructure->clear();
  auto* top = new QTreeWidgetItem(QStringList{QStringLiteral("Document")});
  top->setIcon(0, XmlIcon(0));
  top->setData(0, kNodeRole, QVariant::fromValue(reinterpret_cast<quintptr>(FDocument.Root.get())));
  tvwXmlStructure->addTopLevelItem(top);
  AddTreeChildren(top, *FDocument.Root);
  top->setExpanded(true);
  tvwXmlStructure->setUpdatesEnabled(true);
  tvwXmlStructure->scrollToTop();
}

// Children of a node are made when the node first opens, so a large document shows at once.
void TZTXmlView::AddTreeChildren(QTreeWidgetItem* item, const TZTXmlNode& node) {
  QList<QTreeWidgetItem*> rows;
  for (const auto& child : node.Children) {
    if (child->FKind == TZTXmlNode::Text && child->FText.trimmed().isEmpty()) continue;
    auto* row = new QTreeWidgetItem(QStringList{child->Caption().left(500)});
    row->setIcon(0, XmlIcon(ImageOfKind(child->FKind)));
    row->setData(0, kNodeRole, QVariant::fromValue(reinterpret_cast<quintptr>(child.get())));
    bool hasVisibleChildren = false;
    for (const auto& grandChild : child->Children) {
      if (!(grandChild->FKind == TZTXmlNode::Text && grandChild->FText.trimmed().isEmpty())) {
        hasVisibleChildren = true;
        break;
      }
    }
    if (hasVisibleChildren) {
      row->setData(0, kPendingRole, true);
      row->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
    }
    rows.append(row);
  }
  item->addChildren(rows);
}

void TZTXmlView::PopulateLazily(QTreeWidgetItem* item) {
  if (!item->data(0, kPendingRole).toBool()) return;
  item->setData(0, kPendingRole, false);
  item->setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicatorWhenChildless);
  if (const TZTXmlNode* node = NodeOf(item)) AddTreeChildren(item, *node);
}

const TZTXmlNode* TZTXmlView::NodeOf(QTreeWidgetItem* item) const {
  if (!item) return nullptr;
  return reinterpret_cast<const TZTXmlNode*>(item->data(0, kNodeRole).value<quintptr>());
}

void TZTXmlView::ShowParams(QTreeWidgetItem* item) {
  grdParameters->setRowCount(0);
  const TZTXmlNode* node = NodeOf(item);
  if (!node) return;
  grdParameters->setRowCount(static_cast<int>(node->FParams.size()));
  for (int i = 0; i < node->FParams.size(); ++i) {
    const QString& entry = node->FParams.at(i);
    const qsizetype eq = entry.indexOf(u'=');
    auto* name = new QTableWidgetItem(eq < 0 ? entry : entry.left(eq));
    auto* value = new QTableWidgetItem(eq < 0 ? QString() : entry.mid(eq + 1));
    value->setForeground(QColor(0, 0, 128));
    value->setToolTip(value->text());
    grdParameters->setItem(i, 0, name);
    grdParameters->setItem(i, 1, value);
  }
}

void TZTXmlView::ShowPage(int page) { pgcViews->setCurrentIndex(page == 0 ? 0 : 1); }
int TZTXmlView::CurrentPage() const { return pgcViews->currentIndex(); }

void TZTXmlView::CollapseAll() {
  if (CurrentPage() == 1) {
    tvwXmlStructure->collapseAll();
    return;
  }
  synXmlData->SendScintilla(QsciScintilla::SCI_COLOURISE, 0L, -1L);
  synXmlData->SendScintilla(QsciScintilla::SCI_FOLDALL, 0L);  // contract
}

void TZTXmlView::ExpandAll() {
  if (CurrentPage() == 1) {
    tvwXmlStructure->setUpdatesEnabled(false);
    // Lazily made children appear as their parents open; walk until nothing is pending.
    QList<QTreeWidgetItem*> work;
    for (int i = 0; i < tvwXmlStructure->topLevelItemCount(); ++i) work << tvwXmlStructure->topLevelItem(i);
    while (!work.isEmpty()) {
      QTreeWidgetItem* item = work.takeLast();
      PopulateLazily(item);
      item->setExpanded(true);
      for (int i = 0; i < item->childCount(); ++i) work << item->child(i);
    }
    tvwXmlStructure->setUpdatesEnabled(true);
    tvwXmlStructure->scrollToTop();
    return;
  }
  synXmlData->SendScintilla(QsciScintilla::SCI_COLOURISE, 0L, -1L);
  synXmlData->SendScintilla(QsciScintilla::SCI_FOLDALL, 1L);  // expand
}

QString TZTXmlView::SelectedSyntaxText() const { return synXmlData->selectedText(); }

bool TZTXmlView::ErrorsShown() const { return !pnlErrors->isHidden(); }

}  // namespace zentrail
