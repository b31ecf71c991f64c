// Logging from a plain C++ program: values, an object, a traced function, a timer, a table of
// the program's own type. With a file name as argument the messages go to that log file instead
// of the viewer.
#include <zentrail/ZentrailLogging.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

using namespace zentrail;

// An object publishes its properties so that the viewer can list them.
struct TInvoice : IZentrailPublished {
  std::string Number = "INV-1001";
  double Total = 249.9;
  bool Paid = false;
  std::string ZentrailClassName() const override { return "TInvoice"; }
  std::string ZentrailObjectName() const override { return Number; }
  void ZentrailProperties(TZentrailProperties& p) const override {
    p.AddString("Number", Number);
    p.AddFloat("Total", Total);
    p.AddBoolean("Paid", Paid);
  }
};

// The program's own data type, shown as a table through a registered formatter.
struct TStock {
  std::vector<std::pair<std::string, int>> Items;
};
class TStockFormatter : public TZentrailFormatter {
 public:
  TZentrailInspectorType InspectorType() const override { return itStockTable; }
  void FormatData(const std::any& data) override {
    const TStock* stock = std::any_cast<const TStock*>(data);
    AddLine("Item\tOn hand");
    for (const auto& [name, count] : stock->Items) AddLine(name + "\t" + std::to_string(count));
  }
};

static int Total(const std::vector<int>& values) {
  auto trace = ZentrailLog.TraceMethod("Total");  // enter now, exit when the function returns
  int sum = 0;
  for (int v : values) sum += v;
  ZentrailLog.Send("sum", sum);
  return sum;
}

int main(int argc, char** argv) {
  // Messages go to the viewer unless a log file is named.
  std::unique_ptr<TZentrailDestination> file;
  if (argc > 1) {
    file = std::make_unique<TZentrailDestination>(std::string("File[Path=") + argv[1] + "]");
    ZentrailLog.SetDestination(file.get());
  }
  ZentrailLog.SetCategory("example");
  RegisterCustomFormatter<TStockFormatter>(ztmUser + 1);

  ZentrailLog.Send("plain example started");
  ZentrailLog.Send("answer", 42);
  ZentrailLog.Send("ratio", 0.75, 2);
  TInvoice invoice;
  ZentrailLog.Send("Invoice", &invoice);
  ZentrailLog.SendDynArray("Readings", std::vector<double>{20.5, 21.25, 19.75});
  {
    auto timer = ZentrailLog.Timer("adding up");
    Total({1, 2, 3, 4});
  }
  const TStock stock{{{"Tea", 12}, {"Cups", 40}}};
  ZentrailLog.SendCustomData("Stock", ztmUser + 1, &stock);
  const bool ok = ZentrailLog.Enabled();
  ZentrailLog.SetDestination(nullptr);
  std::printf("%s\n", ok ? "sent" : "not sent: is the viewer running?");
  return ok ? 0 : 1;
}
