#include "FixturePlugin.h"

#include <memory>

extern "C" {

yStatus yPlugin_ConstructAssembly(yAssembly* assembly) {
    return Fixture::ConstructAssembly(assembly);
}

const char* yPlugin_AssemblyVersion() {
    return "2.3.4.5";
}

const char* yPlugin_PlatformVersion() {
    return VOR_PLATFORM_VERSION;
}

yStatus yPlugin_Publish(VorPlugin::PluginLib& lib) {
    lib.Add(std::make_shared<Fixture::TextPlugin>("Test.Text", "of another file"));
    return yOK;
}
}
