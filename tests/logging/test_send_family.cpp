// The send family: what each member writes, checked against texts and payloads built by hand or
// by other programs (libpng, the kernel, readelf), never against the client's own helpers.
#include <gtest/gtest.h>
#include <png.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <regex>
#include <sstream>

#include "TestEnvironment.h"
#include "ZentrailLogging.h"

using namespace zentrail;
using namespace zentrail::test;

namespace {

class TRecorder : public TZentrailConnection {
 public:
  int InternalSend(const TZentrailMessage& message) override {
    if (message.MsgType != ztmOpenRoute && message.MsgType != ztmCloseRoute) Sent.push_back(message);
    return 1;
  }
  std::vector<TZentrailMessage> Sent;
};

struct SendFamily : ::testing::Test {
  std::shared_ptr<TRecorder> connection = std::make_shared<TRecorder>();
  TZentrailLogger log;
  void SetUp() override { log.SetConnection(connection); }
  const TZentrailMessage& Last() { return connection->Sent.back(); }
  std::size_t Count() const { return connection->Sent.size(); }
};

// A small object graph: a panel with a font, a set, a sub-object and child controls.
struct TNode : IZentrailPublished {
  std::string Class = "TPanel";
  std::string Name;
  std::vector<const IZentrailPublished*> Children;
  const IZentrailPublished* ParentNode = nullptr;
  const IZentrailPublished* Link = nullptr;  // an object property
  mutable int Asked = 0;
  std::string ZentrailClassName() const override { return Class; }
  std::string ZentrailObjectName() const override { return Name; }
  void ZentrailProperties(TZentrailProperties& p) const override {
    ++Asked;
    p.AddString("Name", Name);
    p.AddInteger("Width", 120);
    p.AddColor("Color", 0x0000FF);
    p.AddBoolean("Visible", true);
    p.AddSet("Anchors", "TAnchors", {{"akLeft", true}, {"akTop", false}});
    p.AddFont("Font", TZentrailFont{"Tahoma", 8, 0, true, false, false, false});
    p.AddObject("Link", Link);
    p.AddChar("Tab", U'\t');
    p.AddCursor("Cursor", -21);
  }
  void ZentrailControls(std::vector<const IZentrailPublished*>& out) const override { out = Children; }
  const IZentrailPublished* ZentrailParent() const override { return ParentNode; }
};

std::vector<std::string> Lines(const std::string& details) {
  std::vector<std::string> out;
  std::size_t start = 0;
  while (start < details.size()) {
    auto end = details.find("\r\n", start);
    EXPECT_NE(end, std::string::npos) << "every line ends in CR LF";
    if (end == std::string::npos) break;
    out.push_back(details.substr(start, end - start));
    start = end + 2;
  }
  return out;
}

std::string HexToBytes(const std::string& hex) {
  std::string out;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) out += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  return out;
}

std::string CommandOutput(const std::string& command) {
  std::string out;
  if (FILE* p = popen(command.c_str(), "r")) {
    char buffer[4096];
    std::size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, p)) > 0) out.append(buffer, n);
    pclose(p);
  }
  return out;
}

}  // namespace

TEST_F(SendFamily, ValueSendersWriteTheirTextWithAndWithoutAType) {
  log.Send("count", 42);
  EXPECT_EQ(Last().MsgText, "count = 42");
  EXPECT_EQ(Last().MsgType, ztmInfo);
  EXPECT_EQ(Last().MsgContent, ztmText);
  log.Send(ztmWarning, "big", int64_t{-9000000000});
  EXPECT_EQ(Last().MsgText, "big = -9000000000");
  EXPECT_EQ(Last().MsgType, ztmWarning);
  log.Send("flags", 0x1Fu, true);
  EXPECT_EQ(Last().MsgText, "flags = $1f");
  log.Send("flags", 31u, false);
  EXPECT_EQ(Last().MsgText, "flags = 31");
  log.Send("ratio", 1234567.891, 2);
  EXPECT_EQ(Last().MsgText, "ratio = 1,234,567.89");
  log.Send("neg", -0.004);
  EXPECT_EQ(Last().MsgText, "neg = 0.00");
  log.Send("ok", true);
  EXPECT_EQ(Last().MsgText, "ok = True");
  log.Send(ztmError, "ok", false);
  EXPECT_EQ(Last().MsgText, "ok = False");
  EXPECT_EQ(Last().MsgType, ztmError);
  log.Send("user", "Eva");
  EXPECT_EQ(Last().MsgText, "user = Eva");
  // A wide text from UTF-16 with a surrogate pair becomes one UTF-8 character.
  log.Send("clef", std::wstring_view(L"a\xD834\xDD1E"));
  EXPECT_EQ(Last().MsgText, "clef = a\xF0\x9D\x84\x9E");
  log.Send("at", TZentrailPoint{3, -4});
  EXPECT_EQ(Last().MsgText, "at = ( 3, -4 )");
  log.Send("box", TZentrailRect{1, 2, 30, 40});
  EXPECT_EQ(Last().MsgText, "box = ( 1, 2, 30, 40 )");
  log.SendAssigned("buffer", nullptr);
  EXPECT_EQ(Last().MsgText, "buffer is *NOT* Assigned.");
  int x = 0;
  log.SendAssigned(ztmNote, "buffer", &x);
  EXPECT_EQ(Last().MsgText, "buffer is Assigned.");
  EXPECT_EQ(Last().MsgType, ztmNote);
  log.SendPointer("p", reinterpret_cast<void*>(0xbeef));
  EXPECT_EQ(Last().MsgText, "p = $beef");
  log.SendKey("key", 0x0D, ssShift | ssCtrl);
  EXPECT_EQ(Last().MsgText, "key = VK_RETURN ($0D, [ssShift, ssCtrl])");
  log.SendKey("key", 'A', 0);
  EXPECT_EQ(Last().MsgText, "key = VK_A ($41, [])");
  log.SendKey("key", 0x75, ssAlt);
  EXPECT_EQ(Last().MsgText, "key = VK_F6 ($75, [ssAlt])");
  log.SendMouseButton("click", mbMiddle, 0);
  EXPECT_EQ(Last().MsgText, "click = VK_MBUTTON ($04, [])");
  const std::string_view days[] = {"dMon", "dTue", "dWed"};
  log.SendEnum("day", 2, days);
  EXPECT_EQ(Last().MsgText, "day = dWed");
  log.SendSet("open", 0b101, days);
  EXPECT_EQ(Last().MsgText, "open: [dMon, dWed]");
  log.SendSet("open", 0, days);
  EXPECT_EQ(Last().MsgText, "open: [ ]");
  log.SendSet("open", 0b1000, days);
  EXPECT_EQ(Last().MsgText, "SendSet Error: Value is not a set");
  EXPECT_EQ(Last().MsgType, ztmError);
  log.SendCurrency("total", -1234.5);
  EXPECT_EQ(Last().MsgText, "total = -1,234.50");
  log.SendWinError("open", ENOENT);
  EXPECT_EQ(Last().MsgText, "open: No such file or directory");
  EXPECT_EQ(Last().MsgType, ztmError);
  log.SendIf(false, "skipped", 1);
  EXPECT_NE(Last().MsgText, "skipped = 1");
  log.SendIf(true, "taken", 1);
  EXPECT_EQ(Last().MsgText, "taken = 1");
  log.WriteColor("Pen", 0x00FF00);
  EXPECT_EQ(Last().MsgText, "Pen@clLime");
  EXPECT_EQ(Last().MsgType, ztmScratchPad);
}

TEST_F(SendFamily, DatesFollowTheLocalClockAndTheLoggersFormat) {
  const auto now = std::chrono::system_clock::now();
  const std::time_t t = std::chrono::system_clock::to_time_t(now);
  std::tm local{};
  localtime_r(&t, &local);
  char expected[64];
  std::strftime(expected, sizeof expected, "%Y-%m-%d %H:%M:%S", &local);
  log.SendDateTime("at", now);
  EXPECT_EQ(Last().MsgText, std::string("at = ") + expected);
  log.SetDateTimeFormat("dd.mm.yyyy");
  std::strftime(expected, sizeof expected, "%d.%m.%Y", &local);
  log.SendDateTime("at", now);
  EXPECT_EQ(Last().MsgText, std::string("at = ") + expected);
  std::strftime(expected, sizeof expected, "%H", &local);
  log.SendDateTime("at", now, "hh");
  EXPECT_EQ(Last().MsgText, std::string("at = ") + expected);
}

TEST_F(SendFamily, ColoursCarryTheirChannelsAndName) {
  log.SendColor("Fill", 0x00FF8040);  // $00BBGGRR: red 64, green 128, blue 255
  EXPECT_EQ(Last().MsgText, "Fill: $00FF8040 = RGB( 64, 128, 255 )");
  EXPECT_EQ(Last().MsgContent, ztmColor);
  EXPECT_EQ(Last().TypeName, "TColor");
  EXPECT_EQ(Last().Details, "64\r\n128\r\n255\r\n");
  log.SendColor("Face", static_cast<int32_t>(0xFF00000F));
  EXPECT_EQ(Last().MsgText, "Face: clBtnFace = RGB( 240, 240, 240 )");
  log.SendColorARGB("Glass", 0x80FF0000);
  EXPECT_EQ(Last().MsgText, "Glass: clRed = RGB( 255, 0, 0 )  Alpha( 128 )");
  EXPECT_EQ(Last().TypeName, "ARGB_Color");
  EXPECT_EQ(Last().Details, "255\r\n0\r\n0\r\n128\r\n");
}

TEST_F(SendFamily, ListsArraysAndVariantsAreOneLineAnElement) {
  log.SendDynArray("ids", std::vector<int32_t>{3, -1});
  EXPECT_EQ(Last().TypeName, "TIntegerDynArray");
  EXPECT_EQ(Last().MsgContent, ztmStringList);
  EXPECT_EQ(Last().Details, "3\r\n-1\r\n");
  log.SendDynArray("w", std::vector<double>{1234.5, 0.125}, 1);
  EXPECT_EQ(Last().TypeName, "TDoubleDynArray");
  EXPECT_EQ(Last().Details, "1,234.5\r\n0.1\r\n");
  log.SendDynArray("b", std::vector<bool>{true, false});
  EXPECT_EQ(Last().Details, "True\r\nFalse\r\n");
  log.SendDynArray("u8", std::vector<uint8_t>{255});
  EXPECT_EQ(Last().TypeName, "TByteDynArray");
  EXPECT_EQ(Last().Details, "255\r\n");
  log.Send("lines", std::vector<std::string>{"a", "", "c"});
  EXPECT_EQ(Last().Details, "a\r\n\r\nc\r\n");
  EXPECT_EQ(Last().MsgText, "lines");

  log.SendVariant("v", TZentrailVariant(std::vector<TZentrailVariant>{1, "x", true, TZentrailVariant::Null()}));
  EXPECT_EQ(Last().TypeName, "varArray");
  EXPECT_EQ(Last().Details, "1\r\nx\r\nTrue\r\nNull\r\n");
  log.SendVariant("v", TZentrailVariant(2.5));
  EXPECT_EQ(Last().MsgText, "v = 2.5");
  log.SendVariant("v", TZentrailVariant());
  EXPECT_EQ(Last().MsgText, "v: Variant is Not Assigned");
  log.SendVariant("v", TZentrailVariant::Null());
  EXPECT_EQ(Last().MsgText, "v: Variant is Null");
  log.SendVariant("v", TZentrailVariant(std::vector<TZentrailVariant>{TZentrailVariant(std::vector<TZentrailVariant>{1})}));
  EXPECT_EQ(Last().MsgText, "SendVariant Error: Multi-dimensional variant arrays not supported");
}

TEST_F(SendFamily, HexDumpsStartAtTheStreamPositionAndRestoreIt) {
  std::string bytes = "ABCDEFGHIJ\x01KLMNOPQ";
  std::istringstream stream(bytes);
  stream.seekg(3);
  log.SendStreamAsHex("blob", stream);
  EXPECT_EQ(stream.tellg(), std::streampos(3));
  EXPECT_EQ(Last().MsgContent, ztmMemory);
  EXPECT_EQ(Last().TypeName, "Stream");
  auto rows = Lines(Last().Details);
  ASSERT_EQ(rows.size(), 3u);
  // Three empty slots before "D"; the characters of a first row that starts inside the eight come
  // from the start of the row, so they stand shifted behind blanks.
  const std::string blanks(18, ' ');
  EXPECT_EQ(rows[0], "00000000: " + std::string(9, ' ') + "44 45 46 47 48  | " + "   " + "   DE");
  EXPECT_EQ(rows[1], "00000008: 49 4A 01 4B 4C 4D 4E 4F  | IJ.KLMNO");
  EXPECT_EQ(rows[2], "00000010: 50 51 " + blanks + " | PQ");

  const std::byte memory[] = {std::byte{0x00}, std::byte{0x41}};
  log.SendMemoryAsHex("mem", memory);
  EXPECT_EQ(Last().Details, "00000000: 00 41 " + blanks + " | .A\r\n");

  std::istringstream text("one\r\ntwo\nthree");
  log.SendStreamAsText("text", text);
  EXPECT_EQ(Last().Details, "one\r\ntwo\r\nthree\r\n");
  EXPECT_EQ(text.tellg(), std::streampos(0));
}

TEST_F(SendFamily, PixelsArriveAsAPngThatLibpngReadsBack) {
  // 3 x 2 RGBA: red, green, blue / white, black, half-transparent grey.
  const uint8_t pixels[] = {255, 0,   0, 255, 0, 255, 0, 255, 0,   0,   255, 255,
                            255, 255, 255, 255, 0, 0, 0, 255, 128, 128, 128, 128};
  log.Send("icon", TZentrailImage{3, 2, pfRGBA32, pixels, 0});
  ASSERT_EQ(Last().MsgContent, ztmBitmap);
  EXPECT_EQ(Last().TypeName, "PngImage");
  EXPECT_EQ(Last().MsgText, "icon");
  EXPECT_TRUE(std::regex_match(Last().Details, std::regex("[0-9A-F]+")));
  const std::string png = HexToBytes(Last().Details);
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  ASSERT_TRUE(png_image_begin_read_from_memory(&image, png.data(), png.size())) << image.message;
  EXPECT_EQ(image.width, 3u);
  EXPECT_EQ(image.height, 2u);
  image.format = PNG_FORMAT_RGBA;
  std::vector<uint8_t> back(PNG_IMAGE_SIZE(image));
  ASSERT_TRUE(png_image_finish_read(&image, nullptr, back.data(), 0, nullptr)) << image.message;
  EXPECT_EQ(std::vector<uint8_t>(std::begin(pixels), std::end(pixels)), back);

  // BGRA with a padded stride reads as the same colours.
  const uint8_t bgra[] = {0, 0, 255, 255, 9, 9, 9, 9};  // one red pixel, then padding
  log.Send("one", TZentrailImage{1, 1, pfBGRA32, bgra, 8});
  const std::string png2 = HexToBytes(Last().Details);
  png_image image2{};
  image2.version = PNG_IMAGE_VERSION;
  ASSERT_TRUE(png_image_begin_read_from_memory(&image2, png2.data(), png2.size()));
  image2.format = PNG_FORMAT_RGBA;
  uint8_t rgba[4];
  ASSERT_TRUE(png_image_finish_read(&image2, nullptr, rgba, 0, nullptr));
  EXPECT_EQ(rgba[0], 255);
  EXPECT_EQ(rgba[2], 0);

  log.Send("none", TZentrailImage{});
  EXPECT_EQ(Last().MsgText, "Send Data Error: Bitmap is Not Assigned");
  EXPECT_EQ(Last().MsgType, ztmError);
  log.SendPngImage("none", {});
  EXPECT_EQ(Last().MsgText, "Send Data Error: PngImage is Not Assigned");
}

TEST_F(SendFamily, ObjectsAreWalkedSortedWithSetsFontsAndSubObjects) {
  TNode child;
  child.Class = "TButton";
  child.Name = "btnOk";
  TNode panel;
  panel.Name = "pnlMain";
  panel.Link = &child;
  log.Send("Panel", &panel);
  ASSERT_EQ(Last().MsgContent, ztmObject);
  EXPECT_EQ(Last().TypeName, "TPanel");
  const auto lines = Lines(Last().Details);
  const std::vector<std::string> top = {"Anchors=[TAnchors]", "Anchors.akLeft=True", "Anchors.akTop=False",
                                        "Color=clRed",        "Cursor=crHandPoint",  "Font=Tahoma, 8 Bold"};
  ASSERT_GE(lines.size(), top.size());
  EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 6), top);
  auto has = [&](const std::string& l) { return std::find(lines.begin(), lines.end(), l) != lines.end(); };
  EXPECT_TRUE(has("Font.Name=Tahoma"));
  EXPECT_TRUE(has("Font.Style.fsBold=True"));
  EXPECT_TRUE(has("Link=(TButton)"));
  EXPECT_TRUE(has("Link.Name=btnOk"));
  EXPECT_TRUE(has("Link.Link=nil"));
  EXPECT_TRUE(has("Name=pnlMain"));
  EXPECT_TRUE(has("Tab=#9"));
  EXPECT_TRUE(has("Visible=True"));

  // The same panel as form text and as trees.
  panel.Children = {&child};
  child.ParentNode = &panel;
  log.SendComponentAsText("Form", &panel);
  EXPECT_EQ(Last().MsgContent, ztmComponentAsText);
  const auto form = Lines(Last().Details);
  EXPECT_EQ(form.front(), "object pnlMain: TPanel");
  EXPECT_EQ(form.back(), "end");
  EXPECT_NE(std::find(form.begin(), form.end(), "  Name = 'pnlMain'"), form.end());
  EXPECT_NE(std::find(form.begin(), form.end(), "  object btnOk: TButton"), form.end());
  log.SendControls("Tree", &panel);
  EXPECT_EQ(Last().MsgContent, ztmCustomHierarchy);
  EXPECT_EQ(Last().TypeName, "Controls");
  EXPECT_EQ(Last().Details, "TPanel: pnlMain\r\n\tTButton: btnOk\r\n");
  log.SendParents("Up", &child);
  EXPECT_EQ(Last().TypeName, "Parents");
  EXPECT_EQ(Last().Details, "TPanel: pnlMain\r\n\tTButton: btnOk\r\n");
  log.SendProperty("Panel", &panel, "anchors");
  EXPECT_EQ(Last().MsgText, "Panel: [akLeft]");

  log.Send("Nothing", static_cast<const IZentrailPublished*>(nullptr));
  EXPECT_EQ(Last().MsgText, "Send Data Error:  Nothing: Object is nil");
  std::string plain = "no properties here";
  log.Send("Plain", &plain);
  EXPECT_EQ(Last().MsgText, "Send Data Error:  Plain: Object has no RTTI");
}

TEST_F(SendFamily, CollectionsListItemsWithDelimitedProperties) {
  struct TItem : IZentrailPublished {
    std::string Title;
    std::string ZentrailClassName() const override { return "TOrderItem"; }
    std::string ZentrailObjectName() const override { return Title; }
    void ZentrailProperties(TZentrailProperties& p) const override {
      p.AddString("Title", Title);
      p.AddInteger("Qty", 2);
    }
  };
  struct TItems : IZentrailCollection {
    std::vector<TItem> Items;
    std::string ZentrailClassName() const override { return "TOrderItems"; }
    std::size_t Count() const override { return Items.size(); }
    const IZentrailPublished* Item(std::size_t i) const override { return &Items[i]; }
  };
  TItems items;
  items.Items.resize(2);
  items.Items[0].Title = "Tea";
  items.Items[1].Title = "Green \"tea\"; loose";
  log.Send("Order", items);
  EXPECT_EQ(Last().MsgContent, ztmCollection);
  EXPECT_EQ(Last().TypeName, "TOrderItems");
  EXPECT_EQ(Last().Details,
            "0 - Tea|Qty=2;Title=Tea\r\n"
            "1 - Green \"tea\"; loose|Qty=2;\"Title=Green \"\"tea\"\"; loose\"\r\n");
}

TEST_F(SendFamily, FilesXmlAndRegistryKeys) {
  const auto dir = MakeTempDir("files");
  WriteFile(dir / "notes.txt", "first\r\n\r\nthird");
  log.SendTextFile("Notes", dir / "notes.txt");
  EXPECT_EQ(Last().MsgContent, ztmTextFile);
  EXPECT_EQ(Last().TypeName, "Text File");
  EXPECT_EQ(Last().Details, "first\r\n\r\nthird");
  log.SendTextFile("Missing", dir / "gone.txt");
  EXPECT_EQ(Last().MsgType, ztmError);
  EXPECT_NE(Last().MsgText.find("No such file or directory"), std::string::npos) << Last().MsgText;
  WriteFile(dir / "cfg.xml", "<a x='1'/>");
  log.SendXmlFile(dir / "cfg.xml");
  EXPECT_EQ(Last().MsgText, "Xml Data");
  EXPECT_EQ(Last().TypeName, "Xml File");
  EXPECT_EQ(Last().Details, "<a x='1'/>");
  log.SendXmlData("Order", "<order/>");
  EXPECT_EQ(Last().MsgContent, ztmXmlData);
  EXPECT_EQ(Last().TypeName, "Xml Data");
  WriteFile(dir / "bin", std::string("\x7F" "ELF", 4));
  log.SendFileAsHex("Head", dir / "bin");
  EXPECT_EQ(Last().Details, "00000000: 7F 45 4C 46 " + std::string(12, ' ') + " | \x7F" "ELF\r\n");

  const std::string registry = std::getenv("ZENTRAIL_REGISTRY");
  WriteFile(registry,
            "[Software\\Orvan\\Zentrail\\5.0]\nInstallPath=/opt/zentrail\n@=main\n"
            "[Software\\Orvan\\Zentrail\\5.0\\Viewer]\nFont=Tahoma\n[Software\\Other]\nX=1\n");
  log.SendRegistry("\\Software\\Orvan\\Zentrail\\5.0");
  EXPECT_EQ(Last().MsgContent, ztmRegistry);
  EXPECT_EQ(Last().TypeName, "Registry Key");
  EXPECT_EQ(Last().MsgText, "Software\\Orvan\\Zentrail\\5.0");
  EXPECT_EQ(Last().Details,
            "[Software\\Orvan\\Zentrail\\5.0]\r\nInstallPath = /opt/zentrail\r\nDefault     = main\r\n\r\n"
            "[Software\\Orvan\\Zentrail\\5.0\\Viewer]\r\nFont = Tahoma\r\n");
  log.SendRegistry("Software\\Nowhere");
  EXPECT_EQ(Last().MsgType, ztmError);
  std::filesystem::remove(registry);
}

TEST_F(SendFamily, SystemFactsComeFromTheKernelAndTheFile) {
  log.SendMemoryStatus();
  EXPECT_EQ(Last().MsgContent, ztmMemoryStatus);
  auto mem = Lines(Last().Details);
  ASSERT_EQ(mem.size(), 8u);
  struct sysinfo si {};
  ASSERT_EQ(sysinfo(&si), 0);
  std::string total = mem[1].substr(mem[1].find('=') + 1);
  total.erase(std::remove(total.begin(), total.end(), ','), total.end());
  // /proc/meminfo counts in kB, sysinfo in bytes: they agree to the kilobyte.
  EXPECT_NEAR(std::stod(total), static_cast<double>(si.totalram) * si.mem_unit, 1024.0);
  EXPECT_TRUE(std::regex_match(mem[0], std::regex("Memory Load=\\d+%")));
  EXPECT_TRUE(std::regex_match(mem[2], std::regex("Avail Physical Memory=\\d{1,3}(,\\d{3})*")));

  log.SendSystemInfo();
  EXPECT_EQ(Last().MsgContent, ztmSystemInfo);
  auto sys = Lines(Last().Details);
  ASSERT_EQ(sys.size(), 13u);
  EXPECT_EQ(sys[0], "Platform=Linux");
  std::string release = CommandOutput("uname -r");
  EXPECT_EQ(sys[1], "Major Version=" + release.substr(0, release.find('.')));
  char host[256] = {};
  gethostname(host, sizeof host - 1);
  EXPECT_EQ(sys[5], std::string("Computer Name=") + host);
  EXPECT_EQ(sys[8], "Primary Screen=0 x 0");
  TZentrailScreenInfo screens{2, 1920, 1080, {0, 0, 3840, 1080}, 120, 24};
  log.SendSystemInfo(ztmInfo, &screens);
  sys = Lines(Last().Details);
  EXPECT_EQ(sys[8], "Primary Screen=1920 x 1080");
  EXPECT_EQ(sys[9], "Virtual Screen=(0, 0, 3840, 1080)");
  EXPECT_EQ(sys[11], "Small Fonts=False");
  EXPECT_EQ(sys[12], "Color Depth=True Color (24-bit)");

  log.SendVersionInfo();
  EXPECT_EQ(Last().MsgContent, ztmVersionInfo);
  auto ver = Lines(Last().Details);
  ASSERT_EQ(ver.size(), 14u);
  EXPECT_EQ(ver[1], "FileName=test_logging");
  // The build id as readelf reads it from the same file.
  std::string notes = CommandOutput("readelf -n /proc/" + std::to_string(getpid()) + "/exe 2>/dev/null");
  std::smatch m;
  if (std::regex_search(notes, m, std::regex("Build ID: ([0-9a-f]+)"))) {
    std::string id = m[1];
    std::transform(id.begin(), id.end(), id.begin(), ::toupper);
    EXPECT_EQ(ver[13], "Comments=Build ID " + id);
  }
  log.SendFileVersionInfo("/no/such/file");
  EXPECT_EQ(Last().MsgType, ztmError);

  log.SendMemoryManagerStatus();
  EXPECT_EQ(Last().MsgContent, ztmCustomTable);
  auto table = Lines(Last().Details);
  ASSERT_EQ(table.size(), 4u);
  EXPECT_EQ(table[0], "Block Size\t# Live Pointers\tLive Size\tReserved Mem\tEfficiency");
  EXPECT_EQ(table[3].rfind("Overall\t\t", 0), 0u);

  TZentrailWindowInfo window;
  log.SendWindowHandle("Main", &window);
  EXPECT_EQ(Last().MsgText, "SendWindowHandle Error: Not a valid HWND (Main)");
  window = {0x3a00007, "Orders", 10, 20, 640, 480, "QMainWindow", "frmOrders", {"Window"}, {}};
  log.SendWindowHandle("Main", &window);
  EXPECT_EQ(Last().MsgContent, ztmWindow);
  EXPECT_EQ(Last().Details,
            "Caption = Orders\r\nTop = 10\r\nLeft = 20\r\nWidth = 640\r\nHeight = 480\r\nClass Name = QMainWindow\r\n"
            "User Data = frmOrders\r\nStyles:\r\n  Window\r\nExStyles:\r\n");

  log.SendStackTrace("Here");
  EXPECT_EQ(Last().MsgContent, ztmStackTrace);
  const auto frames = Lines(Last().Details);
  ASSERT_GT(frames.size(), 3u);
  EXPECT_EQ(frames[0].rfind("#0  ", 0), 0u) << frames[0];
  // Names of the executable's own functions need -rdynamic; the C library's are always there.
  EXPECT_NE(Last().Details.find("libc.so.6(__libc_start_main"), std::string::npos) << Last().Details;
}

namespace {

struct TOrder {
  std::string Id;
  double Total = 0;
};

int gFormatted = 0;

class TOrderFormatter : public TZentrailFormatter {
 public:
  TZentrailInspectorType InspectorType() const override { return itStockProperties; }
  std::string TypeName() const override { return "TOrder"; }
  void FormatData(const std::any& data) override {
    ++gFormatted;
    const auto* order = std::any_cast<TOrder*>(data);
    AddNameValuePair("Id", order->Id);
    AddNameValuePair("Total", order->Total, 2);
    AddNameValuePair("Lines", int32_t{3});
    AddNameValuePair("Mask", 255u, true);
    AddNameValuePair("Where", TZentrailPoint{1, 2});
  }
};

class TThrowingFormatter : public TZentrailFormatter {
 public:
  void FormatData(const std::any&) override { throw std::runtime_error("bad order"); }
};

}  // namespace

TEST_F(SendFamily, CustomDataGoesThroughRegisteredFormatters) {
  ZentrailFormatters().Clear();
  auto globalConnection = std::make_shared<TRecorder>();
  ZentrailLog.SetConnection(globalConnection);
  const bool wasEnabled = ZentrailLog.Enabled();
  ZentrailLog.SetEnabled(true);

  RegisterCustomFormatter<TOrderFormatter>(ztmUser + 1);
  RegisterCustomFormatter<TThrowingFormatter>(ztmUser + 1);  // the first stays
  ASSERT_EQ(globalConnection->Sent.size(), 1u);
  EXPECT_EQ(globalConnection->Sent[0].MsgType, ztmWarning);
  EXPECT_EQ(globalConnection->Sent[0].MsgText,
            "(anonymous namespace)::TOrderFormatter warning: (anonymous namespace)::TThrowingFormatter is already "
            "registered for MsgType 1001");
  RegisterCustomFormatter<TThrowingFormatter>(99);  // reported, and registered all the same
  EXPECT_EQ(globalConnection->Sent.back().MsgText,
            "(anonymous namespace)::TThrowingFormatter Error: MsgType 99 is less than ztmUser");
  EXPECT_EQ(ZentrailFormatters().Count(), 2u);
  ZentrailLog.UseZentrailManagerConnection();
  ZentrailLog.SetEnabled(wasEnabled);

  TOrder order{"A-7", 1499.5};
  log.SendCustomData("Order", ztmUser + 1, &order);
  EXPECT_EQ(Last().MsgContent, ztmCustomProperties) << Last().MsgText;
  EXPECT_EQ(Last().TypeName, "TOrder");
  EXPECT_EQ(Last().Details, "Id=A-7\r\nTotal=1,499.50\r\nLines=3\r\nMask=$ff\r\nWhere=( 1, 2 )\r\n");

  const std::size_t before = Count();
  log.SendCustomData("Broken", 99, &order);
  ASSERT_EQ(Count(), before + 1) << "a formatter that throws is reported once";
  EXPECT_EQ(Last().MsgType, ztmError);
  EXPECT_EQ(Last().MsgText, "SendCustomData Error: (anonymous namespace)::TThrowingFormatter: bad order");
  EXPECT_TRUE(log.Enabled());

  log.SendCustomData("None", 100, &order);
  EXPECT_EQ(Last().MsgText, "SendCustomData Error: MsgType (ztmReserved + 0) has no registered formatter");
  log.SendCustomData(ztmUser, "None", 1005, &order);
  EXPECT_EQ(Last().MsgText, "SendCustomData Error: MsgType (ztmUser + 5) has no registered formatter");
  log.SendCustomData("None", 1005, &order);  // the wording follows the call's type, not the custom one
  EXPECT_EQ(Last().MsgText, "SendCustomData Error: MsgType (ztmReserved + 905) has no registered formatter");
  log.SendCustomData("None", ztmPublic + 2, &order);
  EXPECT_EQ(Last().MsgText, "SendCustomData Error: MsgType (ztmPublic + 2) has no registered formatter");

  struct TSelf : IZentrailCustomData {
    void FormatData(std::vector<std::string>& lines) const override { lines = {"a\tb", "1\t2"}; }
    TZentrailInspectorType InspectorType() const override { return itCustom; }
    int32_t MsgType() const override { return ztmUser + 40; }
    std::string TypeName() const override { return "TGrid"; }
  } self;
  log.SendCustomData("Grid", &self);
  EXPECT_EQ(Last().MsgContent, ztmUser + 40);
  EXPECT_EQ(Last().Details, "a\tb\r\n1\t2\r\n");
  const std::size_t n = Count();
  log.SendCustomData("Nil", static_cast<const IZentrailCustomData*>(nullptr));
  EXPECT_EQ(Count(), n);

  // Nothing of the above is formatted while the logger is off.
  gFormatted = 0;
  log.SetEnabled(false);
  log.SendCustomData("Order", ztmUser + 1, &order);
  EXPECT_EQ(gFormatted, 0);
  TNode panel;
  log.Send("Panel", &panel);
  log.SendControls("Panel", &panel);
  EXPECT_EQ(panel.Asked, 0);
  EXPECT_EQ(Count(), n);
  ZentrailFormatters().Clear();
}

TEST_F(SendFamily, BadInputsAreReportedOnceAndTheLoggerGoesOn) {
  // A recursive graph: a node whose object property leads back to itself through another.
  TNode a, b;
  a.Name = "a";
  b.Name = "b";
  a.Link = &b;
  b.Link = &a;
  a.Children = {&b};
  b.Children = {&a};
  std::size_t before = Count();
  log.Send("Loop", &a);
  ASSERT_EQ(Count(), before + 2);
  const auto lines = Lines(connection->Sent[before].Details);
  EXPECT_NE(std::find(lines.begin(), lines.end(), "Link.Link=(TPanel)"), lines.end());
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(), [](auto& l) { return l.rfind("Link.Link.", 0) == 0; }), 0);
  EXPECT_EQ(Last().MsgType, ztmWarning);
  EXPECT_NE(Last().MsgText.find("Link.Link"), std::string::npos) << Last().MsgText;
  log.SendControls("Loop", &a);
  EXPECT_EQ(Last().Details, "TPanel: a\r\n\tTPanel: b\r\n");
  log.SendComponentAsText("Loop", &a);
  EXPECT_EQ(Last().MsgContent, ztmComponentAsText);

  // 100 MB of text: not sent, said so, and the logger stays on.
  std::string huge(100u * 1024 * 1024, 'x');
  before = Count();
  EXPECT_EQ(log.Send("blob", huge), 1);
  ASSERT_EQ(Count(), before + 1);
  EXPECT_EQ(Last().MsgType, ztmError);
  EXPECT_EQ(Last().MsgText.rfind("Send Data Error: a message of 104857607 bytes is larger than", 0), 0u)
      << Last().MsgText.substr(0, 200);
  EXPECT_LT(Last().MsgText.size(), 300u);
  EXPECT_TRUE(log.Enabled());
  log.Send("after", 1);
  EXPECT_EQ(Last().MsgText, "after = 1");
}
