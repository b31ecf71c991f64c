// The client library and the plug-in library loaded into one program, as a plug-in that logs or a
// viewer that links the client does it.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <string>

#include "ZentrailTestServers.h"

using namespace zentrail::test;

TEST(Library, ClientAndPlugInLibraryShareOneMessageCore) {
  void* client = dlopen(BinaryPath("src/logging/libzentrail.so").c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(client, nullptr) << dlerror();
  // The client itself must not need Qt: it is what any C++ program links.
  for (const char* qt : {"libQt6Core.so.6", "libQt6Widgets.so.6"}) {
    void* loaded = dlopen(qt, RTLD_NOW | RTLD_NOLOAD);
    EXPECT_EQ(loaded, nullptr) << "the client brought in " << qt;
    if (loaded) dlclose(loaded);
  }
  // Without a viewer build there is no plug-in library; the core then is the shared core itself.
  const std::string pluginPath = BinaryPath("src/message/libZentrailPlugIns250.so");
  void* plugins = dlopen(pluginPath.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!plugins) plugins = dlopen(BinaryPath("src/message/libzentrail-core.so").c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(plugins, nullptr) << dlerror();
  // Functions of the record and the store, and the store itself: each must be one object, or a
  // message made through one library and read through the other meets two different stores.
  for (const char* symbol : {"_ZN8zentrail16TZentrailMessage20SetAsTransportPacketESt17basic_string_viewIcSt11char_traitsIcEE",
                             "_ZN8zentrail10MessageSetE"}) {
    SCOPED_TRACE(symbol);
    void* viaPlugins = dlsym(plugins, symbol);
    ASSERT_NE(viaPlugins, nullptr) << "the plug-in library holds the core";
    void* viaClient = dlsym(client, symbol);
    ASSERT_NE(viaClient, nullptr) << "the client reaches the core";
    Dl_info info{};
    dladdr(viaClient, &info);
    EXPECT_EQ(viaClient, viaPlugins) << "the client brings a second copy, in " << (info.dli_fname ? info.dli_fname : "?");
    ASSERT_NE(info.dli_fname, nullptr);
    EXPECT_NE(std::string(info.dli_fname).find("libzentrail-core.so"), std::string::npos) << info.dli_fname;
  }
  // What the client offers of its own stays reachable.
  EXPECT_NE(dlsym(client, "_ZN8zentrail15ZentrailManagerE"), nullptr);
  dlclose(client);
  dlclose(plugins);
}
