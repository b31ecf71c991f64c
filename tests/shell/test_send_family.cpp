// Every kind of the send family on the whole road: sent by the client, routed by the dispatcher,
// stored by the viewer, and shown by the inspector its content asks for. The checks read what the
// viewer stored and what each inspector shows, and decode pictures with Qt's own reader.
#include <QCheckBox>
#include <QImage>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QVBoxLayout>
#include <QTreeWidget>
#include <cstdlib>
#include <filesystem>
#include <map>

#include "ShellFixture.h"
#include "TestEnvironment.h"
#include "ZTInspectorPane.h"
#include "ZTXmlViewFrame.h"
#include "ZentrailLogging.h"
#include "ZentrailQt.h"

using namespace zentrail;
using namespace zentrail::test;
namespace fs = std::filesystem;

namespace {

struct TWidget : IZentrailPublished {
  TWidget(std::string c, std::string n, std::vector<const IZentrailPublished*> children = {})
      : Class(std::move(c)), Name(std::move(n)), Children(std::move(children)) {}
  std::string Class;
  std::string Name;
  std::vector<const IZentrailPublished*> Children;
  TZentrailFont Font{"Tahoma", 8, 0, true, false, false, false};
  std::string ZentrailClassName() const override { return Class; }
  std::string ZentrailObjectName() const override { return Name; }
  void ZentrailProperties(TZentrailProperties& p) const override {
    p.AddString("Name", "'" + Name + "'");
    p.AddInteger("Width", 120);
    p.AddFont("Font", Font);
    p.AddSet("Anchors", "TAnchors", {{"akLeft", true}, {"akTop", false}});
  }
  void ZentrailControls(std::vector<const IZentrailPublished*>& out) const override { out = Children; }
};

struct TItem : IZentrailPublished {
  TItem(std::string title, int qty) : Title(std::move(title)), Qty(qty) {}
  std::string Title;
  int Qty = 0;
  std::string ZentrailClassName() const override { return "TOrderItem"; }
  std::string ZentrailObjectName() const override { return Title; }
  void ZentrailProperties(TZentrailProperties& p) const override {
    p.AddString("Title", Title);
    p.AddInteger("Qty", Qty);
  }
};

struct TItems : IZentrailCollection {
  std::vector<TItem> Items;
  std::string ZentrailClassName() const override { return "TOrderItems"; }
  std::size_t Count() const override { return Items.size(); }
  const IZentrailPublished* Item(std::size_t i) const override { return &Items[i]; }
};

class TOrderFormatter : public TZentrailFormatter {
 public:
  TZentrailInspectorType InspectorType() const override { return itStockTable; }
  void FormatData(const std::any& data) override {
    const auto* rows = std::any_cast<const std::vector<std::pair<std::string, int>>*>(data);
    AddLine("Order\tQty");
    for (const auto& [id, qty] : *rows) AddLine(id + "\t" + std::to_string(qty));
  }
};

struct TStored {
  int32_t RecNo;
  int32_t Type;
  int32_t Content;
  std::string Text;
  std::string TypeName;
  std::string Details;
};

class SendFamilyRoundTrip : public ShellFixture {
 protected:
  void SetUp() override {
    ShellFixture::SetUp();
    const fs::path dispatcher = fs::path(ZENTRAIL_BINARY_DIR) / "src/dispatcher/zentrail-dispatcher";
    ASSERT_TRUE(fs::exists(dispatcher)) << dispatcher;
    FRegistry = std::getenv("ZENTRAIL_REGISTRY");
    WriteFile(FRegistry, "[Software\\Orvan\\Zentrail\\5.0]\nDispatcher=" + dispatcher.string() +
                             "\nInstallPath=/opt/zentrail\n[Software\\Orvan\\Zentrail\\5.0\\Viewer]\nFont=Tahoma\n");
    Listen();
    Viewer->resize(1000, 700);
    Viewer->SetPaneVisible(TZTPane::Inspector, true);
  }
  void TearDown() override {
    fs::remove(FRegistry);
    ShellFixture::TearDown();
  }

  bool WaitForRecords(int32_t count) {
    return SpinUntil([&] { return MessageSet.GetRecordCount() >= count; });
  }

  // The stored records by their text; the first one of a text wins.
  std::map<std::string, TStored> StoredByText() {
    std::map<std::string, TStored> out;
    for (int32_t r = 1; r <= MessageSet.GetRecordCount(); ++r) {
      MessageSet.GotoRec(r);
      TStored s{r,
                MessageSet.GetMsgType(),
                MessageSet.GetMsgContent(),
                std::string(MessageSet.GetMsgText()),
                std::string(MessageSet.GetTypeName()),
                std::string(MessageSet.GetDetails())};
      out.emplace(s.Text, s);
    }
    return out;
  }

  // Focuses the row of a record (no method collapses here, so row = record - 1) and shows it.
  int Focus(int32_t recNo) {
    auto* list = dynamic_cast<IZTMessageViewList*>(&AllMessages());
    list->SetFocusedMsgIndex(recNo - 1);
    Viewer->UpdateMessageDetails();
    return Viewer->InspectorPane()->CurrentPanel();
  }

  static QStringList Contents(TZTStockInspector* inspector) {
    QStringList lines;
    inspector->GetContents(lines);
    return lines;
  }

  fs::path FRegistry;
};

}  // namespace

TEST_F(SendFamilyRoundTrip, EveryKindReachesItsInspector) {
  TWidget button("TButton", "btnOk");
  TWidget panel("TPanel", "pnlMain", {&button});
  TItems items;
  items.Items = {TItem("Tea", 2), TItem("Green tea; loose", 5)};
  ZentrailFormatters().Clear();
  RegisterCustomFormatter<TOrderFormatter>(ztmUser + 7);
  const std::vector<std::pair<std::string, int>> orders = {{"A-1", 3}, {"A-2", 9}};
  const uint8_t pixels[] = {255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 255, 255, 255, 255, 0, 0, 0, 255, 9, 9, 9, 255};
  const fs::path dir = MakeTempDir("family");
  WriteFile(dir / "notes.txt", "first line\r\n\r\nthird line");

  const int32_t expected = 21;
  {
    TZentrailLogger log;
    ASSERT_EQ(log.Send("count", 42), 1);
    log.SendColor("Fill", 0x00FF8040);
    log.SendDynArray("ids", std::vector<int32_t>{3, 5, 8});
    log.Send("Panel", &panel);
    log.SendComponentAsText("Form", &panel);
    log.Send("Picture", TZentrailImage{3, 2, pfRGBA32, pixels, 0});
    log.SendTextFile("Notes", dir / "notes.txt");
    log.SendMemoryAsHex("Header", std::as_bytes(std::span("ZT\x01", 3)));
    log.SendMemoryStatus();
    log.SendSystemInfo();
    log.SendVersionInfo();
    log.SendMemoryManagerStatus();
    log.SendRegistry("Software\\Orvan\\Zentrail\\5.0");
    log.SendXmlData("Order", "<order id=\"A-1\"><line qty=\"3\"/></order>");
    log.SendControls("Controls", &panel);
    log.Send("Items", items);
    log.SendCustomData("Orders", ztmUser + 7, &orders);
    TZentrailWindowInfo window{0x3a00007, "Orders", 10, 20, 640, 480, "QMainWindow", "frmOrders", {"Window"}, {}};
    log.SendWindowHandle("Main", &window);
    log.SendStackTrace("Here");
    log.SendColorARGB("Glass", 0x80102030);
    log.SendVariant("v", TZentrailVariant(std::vector<TZentrailVariant>{1, "two"}));
    ASSERT_TRUE(WaitForRecords(expected)) << MessageSet.GetRecordCount() << " of " << expected;
    log.CloseDispatcher();
  }
  ZentrailFormatters().Clear();
  auto stored = StoredByText();
  ASSERT_EQ(static_cast<int32_t>(stored.size()), expected);
  TZTInspectorPane* pane = Viewer->InspectorPane();

  // Text: the string inspector shows the line.
  EXPECT_EQ(Focus(stored.at("count = 42").RecNo), TZTInspectorPane::pnString);
  EXPECT_EQ(pane->StringInspector()->Text(), QStringLiteral("count = 42"));

  // Colour: channels, alpha and the swatch.
  const auto& fill = stored.at("Fill: $00FF8040 = RGB( 64, 128, 255 )");
  EXPECT_EQ(fill.TypeName, "TColor");
  EXPECT_EQ(Focus(fill.RecNo), TZTInspectorPane::pnColor);
  EXPECT_EQ(pane->ColorInspector()->ValueText(0), QStringLiteral("64"));
  EXPECT_EQ(pane->ColorInspector()->ValueText(2), QStringLiteral("255"));
  EXPECT_EQ(pane->ColorInspector()->SwatchColor(), QColor(64, 128, 255));
  EXPECT_EQ(Focus(stored.at("Glass: $00302010 = RGB( 16, 32, 48 )  Alpha( 128 )").RecNo), TZTInspectorPane::pnColor);
  EXPECT_EQ(pane->ColorInspector()->ValueText(3), QStringLiteral("128"));

  // Lists.
  EXPECT_EQ(Focus(stored.at("ids").RecNo), TZTInspectorPane::pnStringList);
  EXPECT_EQ(pane->StringListInspector()->GetFooter(), QStringLiteral("3 Items"));
  EXPECT_EQ(Contents(pane->StringListInspector()), (QStringList{"3", "5", "8"}));
  EXPECT_EQ(Focus(stored.at("v").RecNo), TZTInspectorPane::pnStringList);
  EXPECT_EQ(Contents(pane->StringListInspector()), (QStringList{"1", "two"}));

  // Object: the walk, with the header that names the object.
  EXPECT_EQ(Focus(stored.at("Panel").RecNo), TZTInspectorPane::pnObject);
  EXPECT_EQ(pane->ObjectInspector()->GetHeader(), QStringLiteral("TPanel: pnlMain"));
  const QStringList object = Contents(pane->ObjectInspector());
  EXPECT_TRUE(object.contains(QStringLiteral("Font.Name=Tahoma"))) << object.join('|').toStdString();
  EXPECT_TRUE(object.contains(QStringLiteral("Anchors.akLeft=True"))) << object.join('|').toStdString();
  EXPECT_TRUE(object.contains(QStringLiteral("Width=120")));

  // Component text and hex memory in the fixed-pitch view; the registry listing too.
  EXPECT_EQ(Focus(stored.at("Form").RecNo), TZTInspectorPane::pnMonospaceText);
  EXPECT_TRUE(pane->MonospaceTextInspector()->Text().startsWith(QStringLiteral("object pnlMain: TPanel")));
  EXPECT_EQ(Focus(stored.at("Header").RecNo), TZTInspectorPane::pnMonospaceText);
  EXPECT_TRUE(pane->MonospaceTextInspector()->Text().startsWith(QStringLiteral("00000000: 5A 54 01 ") +
                                                                 QString(15, ' ') + QStringLiteral(" | ZT.")))
      << pane->MonospaceTextInspector()->Text().toStdString();
  EXPECT_EQ(Focus(stored.at("Software\\Orvan\\Zentrail\\5.0").RecNo), TZTInspectorPane::pnMonospaceText);
  EXPECT_TRUE(pane->MonospaceTextInspector()->Text().contains(QStringLiteral("InstallPath = /opt/zentrail")));
  EXPECT_TRUE(pane->MonospaceTextInspector()->Text().contains(QStringLiteral("[Software\\Orvan\\Zentrail\\5.0\\Viewer]")));

  // Picture: the stored hex is a PNG that Qt reads to the same pixels, and the inspector shows it.
  const auto& picture = stored.at("Picture");
  EXPECT_EQ(picture.TypeName, "PngImage");
  const QImage decoded = QImage::fromData(QByteArray::fromHex(QByteArray::fromStdString(picture.Details)), "PNG");
  ASSERT_FALSE(decoded.isNull());
  EXPECT_EQ(decoded.pixelColor(1, 0), QColor(0, 255, 0));
  EXPECT_EQ(Focus(picture.RecNo), TZTInspectorPane::pnBitmap);
  EXPECT_EQ(pane->BitmapInspector()->GetFooter(), QStringLiteral("3 x 2"));
  EXPECT_EQ(pane->BitmapInspector()->Picture().pixelColor(2, 0), QColor(0, 0, 255));

  // Text file, window and stack trace in the text inspector.
  EXPECT_EQ(Focus(stored.at("Notes").RecNo), TZTInspectorPane::pnText);
  EXPECT_EQ(pane->TextInspector()->Text(), QStringLiteral("first line\r\n\r\nthird line"));
  EXPECT_EQ(Focus(stored.at("Main").RecNo), TZTInspectorPane::pnText);
  EXPECT_TRUE(pane->TextInspector()->Text().startsWith(QStringLiteral("Caption = Orders\r\nTop = 10")));
  EXPECT_EQ(Focus(stored.at("Here").RecNo), TZTInspectorPane::pnText);
  EXPECT_TRUE(pane->TextInspector()->Text().startsWith(QStringLiteral("#0  ")));

  // Name-value pages: memory status right-aligned, system and version information.
  EXPECT_EQ(Focus(stored.at("Memory Status").RecNo), TZTInspectorPane::pnMemoryStatus);
  const QStringList memory = Contents(pane->MemoryStatusInspector());
  ASSERT_EQ(memory.size(), 8);
  EXPECT_TRUE(memory[0].startsWith(QStringLiteral("Memory Load=")));
  EXPECT_TRUE(memory[1].startsWith(QStringLiteral("Total Physical Memory=")));
  EXPECT_EQ(Focus(stored.at("System Information").RecNo), TZTInspectorPane::pnProperties);
  EXPECT_TRUE(Contents(pane->PropertiesInspector()).contains(QStringLiteral("Platform=Linux")));
  const auto version = std::find_if(stored.begin(), stored.end(),
                                    [](auto& e) { return e.first.rfind("Version Information: ", 0) == 0; });
  ASSERT_NE(version, stored.end());
  EXPECT_EQ(Focus(version->second.RecNo), TZTInspectorPane::pnProperties);
  EXPECT_TRUE(Contents(pane->PropertiesInspector()).contains(QStringLiteral("FileName=test_shell")));

  // Tables: the heap and the custom formatter's rows.
  EXPECT_EQ(Focus(stored.at("Memory Manager Status").RecNo), TZTInspectorPane::pnTable);
  EXPECT_EQ(pane->TableInspector()->ColCount(), 5);
  EXPECT_EQ(pane->TableInspector()->Cell(0, 3), QStringLiteral("Overall"));
  const auto& custom = stored.at("Orders");
  EXPECT_EQ(custom.Content, ztmCustomTable);
  EXPECT_EQ(Focus(custom.RecNo), TZTInspectorPane::pnTable);
  EXPECT_EQ(pane->TableInspector()->Cell(1, 0), QStringLiteral("Qty"));
  EXPECT_EQ(pane->TableInspector()->Cell(0, 2), QStringLiteral("A-2"));

  // Trees: the controls of the panel, and the XML structure.
  EXPECT_EQ(Focus(stored.at("Controls").RecNo), TZTInspectorPane::pnHierarchy);
  EXPECT_EQ(pane->HierarchyInspector()->GetHeader(), QStringLiteral("Controls"));
  QTreeWidget* tree = pane->HierarchyInspector()->Tree();
  ASSERT_EQ(tree->topLevelItemCount(), 1);
  EXPECT_EQ(tree->topLevelItem(0)->text(0), QStringLiteral("TPanel: pnlMain"));
  ASSERT_EQ(tree->topLevelItem(0)->childCount(), 1);
  EXPECT_EQ(tree->topLevelItem(0)->child(0)->text(0), QStringLiteral("TButton: btnOk"));
  EXPECT_EQ(Focus(stored.at("Order").RecNo), TZTInspectorPane::pnXmlData);
  const QString rendered = Contents(pane->XmlDataInspector()).join('\n');
  EXPECT_TRUE(rendered.contains(QStringLiteral("<order id=\"A-1\">"))) << rendered.toStdString();
  EXPECT_TRUE(rendered.contains(QStringLiteral("<line qty=\"3\"/>"))) << rendered.toStdString();

  // Collection: one entry per item, the selected one's properties in the grid.
  EXPECT_EQ(Focus(stored.at("Items").RecNo), TZTInspectorPane::pnCollection);
  EXPECT_EQ(pane->CollectionInspector()->GetHeader(), QStringLiteral("TOrderItems Collection Items"));
  QListWidget* entries = pane->CollectionInspector()->ItemList();
  ASSERT_EQ(entries->count(), 2);
  EXPECT_EQ(entries->item(1)->text(), QStringLiteral("1 - Green tea; loose"));
  pane->CollectionInspector()->SelectEntry(1);
  const QStringList itemLines = Contents(pane->CollectionInspector());
  EXPECT_TRUE(itemLines.join('|').contains(QStringLiteral("Title=Green tea; loose"))) << itemLines.join('|').toStdString();
}

TEST_F(SendFamilyRoundTrip, TracesKeepTheirStructureAndBadInputDoesNotStopTheLogger) {
  {
    TZentrailLogger log;
    {
      auto outer = log.TraceMethod("TOrders.Load");
      {
        auto inner = log.TraceMethod("TOrders.Parse", tmoTiming);
        log.Send("line", 7);
      }
      auto timer = log.Timer("commit");
    }
    // Bad input: each is reported once, and the logger keeps sending.
    log.Send("none", TZentrailImage{});
    log.Send("blob", std::string(100u * 1024 * 1024, 'x'));
    EXPECT_TRUE(log.Enabled());
    EXPECT_EQ(log.Send("after", 1), 1);
    ASSERT_TRUE(WaitForRecords(10)) << MessageSet.GetRecordCount();
    log.CloseDispatcher();
  }
  const auto rows = Stored();
  ASSERT_EQ(rows.size(), 10u);
  const std::vector<int32_t> types = {ztmEnterMethod, ztmEnterMethod, ztmInfo, ztmTiming, ztmExitMethod,
                                      ztmTiming,      ztmExitMethod,  ztmError, ztmError, ztmInfo};
  for (std::size_t i = 0; i < types.size(); ++i) EXPECT_EQ(rows[i].first, types[i]) << i << ": " << rows[i].second;
  auto* list = dynamic_cast<IZTMessageViewList*>(&AllMessages());
  EXPECT_EQ(list->GetIndentLevel(2), 2);
  EXPECT_EQ(list->GetIndentLevel(6), 0);
  EXPECT_TRUE(QString::fromStdString(rows[3].second).endsWith(QStringLiteral(" ms - TOrders.Parse")));
  EXPECT_TRUE(QString::fromStdString(rows[5].second).endsWith(QStringLiteral(" ms - commit")));
  EXPECT_EQ(rows[7].second, "Send Data Error: Bitmap is Not Assigned");
  EXPECT_EQ(rows[8].second.rfind("Send Data Error: a message of 104857607 bytes", 0), 0u);
  EXPECT_EQ(rows[9].second, "after = 1");
}

TEST_F(SendFamilyRoundTrip, QtObjectsPicturesAndWidgetsThroughTheAdaptor) {
  QWidget form;
  form.setObjectName(QStringLiteral("frmOrders"));
  form.setWindowTitle(QStringLiteral("Orders"));
  auto* layout = new QVBoxLayout(&form);
  auto* label = new QLabel(QStringLiteral("Open orders: 3"), &form);
  label->setObjectName(QStringLiteral("lblCount"));
  auto* check = new QCheckBox(QStringLiteral("Only mine"), &form);
  check->setObjectName(QStringLiteral("chkMine"));
  check->setChecked(true);
  layout->addWidget(label);
  layout->addWidget(check);
  form.resize(240, 90);
  QImage image(4, 3, QImage::Format_ARGB32);
  image.fill(QColor(10, 20, 30));
  image.setPixelColor(3, 2, QColor(200, 100, 50));

  {
    TZentrailLogger log;
    ASSERT_EQ(qt::Send(log, "Check", check), 1);
    qt::Send(log, "Swatch", image);
    qt::SendColor(log, "Tint", QColor(255, 0, 0, 64));
    qt::SendVariant(log, "Row", QVariantList{7, QStringLiteral("seven"), true});
    qt::SendScreenShot(log, "Form", &form);
    qt::SendControls(log, "Widgets", &form);
    qt::SendParents(log, "Up", check);
    qt::SendWindowHandle(log, "Window", &form);
    qt::Send(log, "Null", QImage());
    qt::Send(log, "NullPixmap", QPixmap());
    qt::SendProperty(log, "Checked", check, "checked");
    ASSERT_TRUE(WaitForRecords(11)) << MessageSet.GetRecordCount();
    log.CloseDispatcher();
  }
  auto stored = StoredByText();
  TZTInspectorPane* pane = Viewer->InspectorPane();

  EXPECT_EQ(Focus(stored.at("Check").RecNo), TZTInspectorPane::pnObject);
  EXPECT_EQ(pane->ObjectInspector()->GetHeader(), QStringLiteral("QCheckBox"));
  const QStringList properties = Contents(pane->ObjectInspector());
  EXPECT_TRUE(properties.contains(QStringLiteral("checked=True"))) << properties.join('|').toStdString();
  EXPECT_TRUE(properties.contains(QStringLiteral("text=Only mine"))) << properties.join('|').toStdString();
  EXPECT_TRUE(properties.contains(QStringLiteral("objectName=chkMine")));
  EXPECT_TRUE(properties.contains(QStringLiteral("focusPolicy=StrongFocus"))) << properties.join("|").toStdString();

  EXPECT_EQ(Focus(stored.at("Swatch").RecNo), TZTInspectorPane::pnBitmap);
  EXPECT_EQ(pane->BitmapInspector()->Picture().pixelColor(3, 2), QColor(200, 100, 50));
  EXPECT_EQ(Focus(stored.at("Tint: clRed = RGB( 255, 0, 0 )  Alpha( 64 )").RecNo), TZTInspectorPane::pnColor);
  EXPECT_EQ(pane->ColorInspector()->ValueText(3), QStringLiteral("64"));
  EXPECT_EQ(Focus(stored.at("Row").RecNo), TZTInspectorPane::pnStringList);
  EXPECT_EQ(Contents(pane->StringListInspector()), (QStringList{"7", "seven", "True"}));

  // The screenshot is the form as Qt itself renders it.
  const QImage expected = form.grab().toImage().convertToFormat(QImage::Format_RGB32);
  EXPECT_EQ(Focus(stored.at("Form").RecNo), TZTInspectorPane::pnBitmap);
  const QImage shown = pane->BitmapInspector()->Picture().convertToFormat(QImage::Format_RGB32);
  EXPECT_EQ(shown.size(), expected.size());
  EXPECT_EQ(shown.pixelColor(5, 5), expected.pixelColor(5, 5));

  EXPECT_EQ(Focus(stored.at("Widgets").RecNo), TZTInspectorPane::pnHierarchy);
  QTreeWidget* tree = pane->HierarchyInspector()->Tree();
  ASSERT_EQ(tree->topLevelItemCount(), 1);
  EXPECT_EQ(tree->topLevelItem(0)->text(0), QStringLiteral("QWidget: frmOrders"));
  ASSERT_EQ(tree->topLevelItem(0)->childCount(), 2);
  EXPECT_EQ(tree->topLevelItem(0)->child(1)->text(0), QStringLiteral("QCheckBox: chkMine"));
  EXPECT_EQ(stored.at("Up").Details, "QWidget: frmOrders\r\n\tQCheckBox: chkMine\r\n");

  EXPECT_EQ(Focus(stored.at("Window").RecNo), TZTInspectorPane::pnText);
  EXPECT_TRUE(pane->TextInspector()->Text().contains(QStringLiteral("Class Name = QWidget")));
  EXPECT_TRUE(pane->TextInspector()->Text().contains(QStringLiteral("User Data = frmOrders")));
  EXPECT_EQ(stored.count("Send Data Error: Bitmap is Not Assigned"), 1u);
  EXPECT_EQ(stored.count("Send Data Error: Picture is Not Assigned"), 1u);
  EXPECT_EQ(stored.count("Checked: True"), 1u);
}
