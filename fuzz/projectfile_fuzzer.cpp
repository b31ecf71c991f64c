// Project files as they come from disk: any bytes through the ini reader and the reading of the
// views, then each view's section as the message view reads it, and the text written back.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "ZTIniFile.h"
#include "ZTProjectFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace zentrail;
  TZTIniFile ini;
  ini.LoadFromString(std::string_view(reinterpret_cast<const char*>(data), size));
  const TZTProjectViews project = ReadProjectViews(ini, 64);
  for (const TZTProjectView& view : project.Views) {
    for (const char* key : {"CheckAppName", "CheckCategory", "CheckProcessID", "CheckThreadName",
                            "CheckComputerName", "CheckMessageText", "CheckMsgTypes"})
      (void)ini.ReadBool(view.Section, key, false);
    (void)ini.ReadInteger(view.Section, "ProcessID", 0);
    for (const char* key : {"AppName", "Category", "ThreadName", "ComputerName", "MessageText", "MsgTypeSet",
                            "MsgContentSet"})
      (void)ini.ReadString(view.Section, key, "");
    (void)ini.ReadBinary(view.Section, "Data");
    (void)ini.ReadDateTime(view.Section, "When", 0);
  }
  // What the reader kept must write back and read again the same.
  TZTIniFile again;
  again.LoadFromString(ini.ToString());
  if (ReadProjectViews(again, 64).Views.size() != project.Views.size()) __builtin_trap();
  return 0;
}
