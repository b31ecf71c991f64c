// zentrail-demo: a small order-processing run that uses every member of the send family once, so
// that a new user sees each inspector of the viewer with data that looks like a real program's.
//
//   zentrail-viewer &      # the viewer listens
//   zentrail-demo          # the dispatcher starts on demand and routes the messages to it
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "ZTRegistry.h"
#include "ZentrailLogging.h"

using namespace zentrail;

namespace {

// ---- Objects of the demo's little order system, published for the property walk.

struct TAddress : IZentrailPublished {
  std::string ZentrailClassName() const override { return "TAddress"; }
  void ZentrailProperties(TZentrailProperties& p) const override {
    p.AddString("Street", "12 Harbour Road");
    p.AddString("City", "Portsmouth");
    p.AddString("PostCode", "PO1 3LJ");
    p.AddString("Country", "United Kingdom");
  }
};

struct TCustomer : IZentrailPublished {
  TAddress Address;
  std::string ZentrailClassName() const override { return "TCustomer"; }
  std::string ZentrailObjectName() const override { return "Customer10442"; }
  void ZentrailProperties(TZentrailProperties& p) const override {
    p.AddString("Name", "'Chen Li'");
    p.AddInteger("Id", 10442);
    p.AddString("Email", "chen.li@example.com");
    p.AddBoolean("Active", true);
    p.AddEnum("Tier", "ctGold");
    p.AddFloat("Discount", 0.075);
    p.AddInt64("Revenue", 1284400);
    p.AddDateTime("Since", 43831.375);
    p.AddColor("LabelColor", 0x00D77800);
    p.AddSet("Channels", "TContactChannels", {{"ccMail", true}, {"ccPhone", false}, {"ccPost", true}});
    p.AddObject("Address", &Address);
    p.AddFont("Font", TZentrailFont{"Segoe UI", 9, 0, false, false, false, false});
  }
};

struct TOrderLine : IZentrailPublished {
  TOrderLine(std::string sku, std::string title, int qty, double price)
      : Sku(std::move(sku)), Title(std::move(title)), Qty(qty), Price(price) {}
  std::string Sku, Title;
  int Qty;
  double Price;
  std::string ZentrailClassName() const override { return "TOrderLine"; }
  std::string ZentrailObjectName() const override { return Sku; }
  void ZentrailProperties(TZentrailProperties& p) const override {
    p.AddString("Sku", Sku);
    p.AddString("Title", Title);
    p.AddInteger("Qty", Qty);
    p.AddFloat("Price", Price);
  }
};

struct TOrderLines : IZentrailCollection {
  std::vector<TOrderLine> Lines = {{"TEA-101", "Assam breakfast tea, 250 g", 2, 6.5},
                                   {"TEA-207", "Sencha green tea, loose", 1, 9.25},
                                   {"CUP-010", "Porcelain cup and saucer", 4, 12.0}};
  std::string ZentrailClassName() const override { return "TOrderLines"; }
  std::size_t Count() const override { return Lines.size(); }
  const IZentrailPublished* Item(std::size_t i) const override { return &Lines[i]; }
};

// A window of the demo's imagined user interface, for the control, component and parent trees.
struct TControl : IZentrailPublished {
  TControl(std::string cls, std::string name, TControl* parent = nullptr) : Class(std::move(cls)), Name(std::move(name)) {
    if (parent) {
      Parent = parent;
      parent->Children.push_back(this);
    }
  }
  std::string Class, Name;
  TControl* Parent = nullptr;
  std::vector<const IZentrailPublished*> Children;
  std::string ZentrailClassName() const override { return Class; }
  std::string ZentrailObjectName() const override { return Name; }
  void ZentrailProperties(TZentrailProperties& p) const override {
    p.AddString("Name", Name);
    p.AddBoolean("Visible", true);
    p.AddInteger("Left", 8);
    p.AddInteger("Top", 8);
  }
  void ZentrailControls(std::vector<const IZentrailPublished*>& out) const override { out = Children; }
  const IZentrailPublished* ZentrailParent() const override { return Parent; }
};

// Orders per weekday as a formatter-made table.
class TWeekFormatter : public TZentrailFormatter {
 public:
  TZentrailInspectorType InspectorType() const override { return itStockTable; }
  std::string TypeName() const override { return "TWeeklyOrders"; }
  void FormatData(const std::any&) override {
    AddLine("Day\tOrders\tRevenue\tReturns");
    const char* days[] = {"Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday"};
    const int orders[] = {182, 167, 201, 194, 240, 311, 129};
    for (int i = 0; i < 7; ++i)
      AddLine(std::string(days[i]) + "\t" + std::to_string(orders[i]) + "\t" + FormatFloatN(orders[i] * 23.4, 2) +
              "\t" + std::to_string(orders[i] / 40));
  }
};

// The shipping route of an order, as a tree it formats itself.
struct TRoute : IZentrailCustomData {
  void FormatData(std::vector<std::string>& lines) const override {
    lines = {"Warehouse Southampton", "\tSorting centre Eastleigh", "\t\tVan 14 (Portsmouth north)",
             "\t\t\tPO1 3LJ  Chen Li", "\t\tVan 22 (Portsmouth south)", "\tSorting centre Fareham"};
  }
  TZentrailInspectorType InspectorType() const override { return itStockHierarchy; }
  int32_t MsgType() const override { return ztmUser + 2; }
  std::string TypeName() const override { return "Shipping Route"; }
};

// A bar chart of the week, drawn into pixels: the picture the bitmap inspector shows.
std::vector<uint8_t> DrawChart(int width, int height) {
  std::vector<uint8_t> px(static_cast<std::size_t>(width) * height * 3);
  auto put = [&](int x, int y, int r, int g, int b) {
    if (x < 0 || y < 0 || x >= width || y >= height) return;
    uint8_t* p = &px[(static_cast<std::size_t>(y) * width + x) * 3];
    p[0] = static_cast<uint8_t>(r);
    p[1] = static_cast<uint8_t>(g);
    p[2] = static_cast<uint8_t>(b);
  };
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) put(x, y, 250 - y / 8, 251 - y / 10, 255);
  for (int x = 24; x < width - 8; ++x) put(x, height - 20, 90, 90, 100);
  for (int y = 10; y < height - 20; ++y) put(24, y, 90, 90, 100);
  for (int gy = height - 20 - 30; gy > 10; gy -= 30)
    for (int x = 25; x < width - 8; x += 2) put(x, gy, 200, 205, 215);
  const int orders[] = {182, 167, 201, 194, 240, 311, 129};
  const int colors[][3] = {{66, 133, 244}, {66, 133, 244}, {66, 133, 244}, {66, 133, 244},
                           {52, 168, 83},  {251, 188, 5},  {66, 133, 244}};
  const int slot = (width - 40) / 7;
  for (int i = 0; i < 7; ++i) {
    const int h = orders[i] * (height - 40) / 320;
    const int x0 = 32 + i * slot;
    for (int y = height - 21; y > height - 21 - h; --y)
      for (int x = x0; x < x0 + slot - 10; ++x) {
        const int shade = (x - x0) < 2 ? 30 : 0;
        put(x, y, colors[i][0] - shade, colors[i][1] - shade, colors[i][2] - shade);
      }
  }
  return px;
}

void Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(2)); }

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
    std::printf("usage: zentrail-demo [--help | --version]\n"
                "Sends one message of every kind to the Zentrail viewer through the dispatcher.\n"
                "Start zentrail-viewer first; the dispatcher is started when needed.\n");
    return 0;
  }
  if (argc > 1 && std::strcmp(argv[1], "--version") == 0) {
    std::printf("zentrail-demo (Zentrail) " ZENTRAIL_VERSION_TEXT "\n");
    return 0;
  }
  if (argc > 1) {
    std::fprintf(stderr, "zentrail-demo: unknown argument \"%s\"; try --help\n", argv[1]);
    return 2;
  }
  TZentrailLogger& log = ZentrailLog;
  log.SetCategory("Orders");
  int sent = 0;
  auto count = [&](int result) { sent += result; };

  count(log.AddSeparator());
  count(log.Send("Zentrail demo: processing the orders of the day"));
  if (!log.Enabled()) {
    std::fprintf(stderr,
                 "zentrail-demo: the message was not taken. Is the viewer running, and is zentrail-dispatcher "
                 "installed beside this program or on the PATH?\n");
    return 1;
  }
  count(log.SendNote("Connected to the order database orders@db-03"));
  count(log.SendReminder("Rotate the API key of the payment service before Friday"));
  count(log.SendFmtMsg("%d orders waiting, oldest from %s", 14, "07:42"));
  count(log.SendSystemInfo());
  count(log.SendVersionInfo());
  count(log.SendMemoryStatus());
  count(log.SendHeapStatus());
  count(log.SendRegistry(ztRegistryKeyPath));

  TCustomer customer;
  TOrderLines lines;
  {
    auto trace = log.TraceMethod("TOrderService.ProcessOrder", tmoTiming);
    count(log.Send("OrderId", 58231));
    count(log.Send("Customer", &customer));
    count(log.Send("Lines", lines));
    count(log.SendCurrency("Total", 73.75));
    count(log.Send("Express", true));
    count(log.Send("Weight", 1.38, 3));
    count(log.Send("Flags", 0x2Bu, true));
    count(log.SendDateTime("Ordered", std::chrono::system_clock::now() - std::chrono::minutes(42)));
    const std::string_view states[] = {"osNew", "osPaid", "osPacked", "osShipped"};
    count(log.SendEnum("State", 2, states));
    const std::string_view options[] = {"ooGiftWrap", "ooSignature", "ooInsured", "ooWeekend"};
    count(log.SendSet("Options", 0b0110, options));
    {
      auto parse = log.TraceMethod("TOrderService.ValidateAddress");
      count(log.Send("PostCode", "PO1 3LJ"));
      count(log.Send("Origin", TZentrailPoint{50, -1}));
      count(log.SendWarning("House number missing, taken from the customer record"));
    }
    {
      auto fold = log.TraceMethodCollapse("TStock.Reserve");
      count(log.SendDynArray("Reserved", std::vector<int32_t>{2, 1, 4}));
    }
    const char record[] = "ORD\x01\x00\x00\xE3\x8F" "58231 Chen Li\x00\x00";
    count(log.SendMemoryAsHex("Order record", std::as_bytes(std::span(record, sizeof record - 1))));
    count(log.SendXmlData("Invoice",
                          "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                          "<invoice number=\"INV-2024-58231\" currency=\"GBP\">\n"
                          "  <customer id=\"10442\">Chen Li</customer>\n"
                          "  <line sku=\"TEA-101\" qty=\"2\" price=\"6.50\"/>\n"
                          "  <line sku=\"TEA-207\" qty=\"1\" price=\"9.25\"/>\n"
                          "  <line sku=\"CUP-010\" qty=\"4\" price=\"12.00\"/>\n"
                          "  <!-- shipping is free above 50.00 -->\n"
                          "  <total>73.75</total>\n"
                          "</invoice>\n"));
    auto timer = log.Timer("Write invoice PDF");
    Pause();
  }

  count(log.SendColor("Brand colour", 0x00D77800));
  count(log.SendColorARGB("Overlay", 0x8033AA55));
  const std::vector<uint8_t> chart = DrawChart(320, 160);
  count(log.Send("Orders this week", TZentrailImage{320, 160, pfRGB24, chart.data(), 0}));

  TControl form("TfrmOrders", "frmOrders");
  TControl toolbar("TToolBar", "tbrMain", &form);
  TControl open("TToolButton", "btnOpen", &toolbar);
  TControl save("TToolButton", "btnSave", &toolbar);
  TControl grid("TStringGrid", "grdOrders", &form);
  TControl status("TStatusBar", "", &form);
  TControl panel("TPanel", "pnlDetails", &form);
  TControl name("TEdit", "edtCustomer", &panel);
  TControl ok("TButton", "btnOk", &panel);
  count(log.SendControls("Order window", &form));
  count(log.SendComponents("Order window components", &form));
  count(log.SendParents("OK button", &ok));
  count(log.SendComponentAsText("Details panel", &panel));
  count(log.SendProperty("Customer", &customer, "Tier"));
  TZentrailWindowInfo window{0x4a00013, "Orders - Zentrail Demo", 120, 200, 1024, 700, "TfrmOrders", "frmOrders",
                             {"Window", "Visible", "WindowTitleHint", "WindowCloseButtonHint"}, {"WA_AcceptDrops"}};
  count(log.SendWindowHandle("Order window", &window));
  count(log.SendKey("Shortcut", 0x53, ssCtrl));
  count(log.SendMouseButton("Grid click", mbLeft, ssShift));

  RegisterCustomFormatter<TWeekFormatter>(ztmUser + 1);
  count(log.SendCustomData("Orders per weekday", ztmUser + 1, std::any()));
  TRoute route;
  count(log.SendCustomData("Shipping route", &route));
  count(log.Send("Carriers", std::vector<std::string>{"Royal Mail Tracked 24", "DPD Next Day", "Evri Standard"}));
  count(log.SendVariant("Last scan", TZentrailVariant(std::vector<TZentrailVariant>{"PO1", 58231, true})));
  if (std::filesystem::exists("/etc/os-release")) count(log.SendTextFile("Server", "/etc/os-release"));
  std::istringstream label("SHIP TO\r\nChen Li\r\n12 Harbour Road\r\nPortsmouth PO1 3LJ\r\n");
  count(log.SendStreamAsText("Shipping label", label));

  try {
    throw std::runtime_error("payment service answered 503: try again in 30 s");
  } catch (const std::exception& e) {
    count(log.SendException("Capturing payment for order 58231", e));
  }
  count(log.SendError("Order 58232 rejected: card expired"));
  count(log.SendWinError("Opening the label printer /dev/usb/lp0", ENOENT));
  count(log.SendStackTrace("Where the retry was scheduled"));
  count(log.AddCheckPoint());

  count(log.Write("Queue", "13 orders"));
  count(log.WriteCurrency("Revenue today", 4211.60));
  count(log.WriteDateTime("Last order", std::chrono::system_clock::now()));
  count(log.WriteColor("Status light", 0x0000C000));
  count(log.Send("Zentrail demo: done"));

  std::printf("zentrail-demo: %d messages sent\n", sent);
  return log.Enabled() ? 0 : 1;
}
