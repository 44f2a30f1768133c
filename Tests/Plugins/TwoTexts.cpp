#include "FixturePlugin.h"

#include <memory>

extern "C" {

yStatus yPlugin_ConstructAssembly(yAssembly* assembly) {
    return Fixture::ConstructAssembly(assembly);
}

const char* yPlugin_AssemblyVersion() {
    return "1.0.0.0";
}

const char* yPlugin_PlatformVersion() {
    return VOR_PLATFORM_VERSION;
}

yStatus yPlugin_Publish(VorPlugin::PluginLib& lib) {
    lib.Add(std::make_shared<Fixture::TextPlugin>("Test.Text", "first"));
    lib.Add(std::make_shared<Fixture::TextPlugin>("Test.Other", "other"));
    lib.Add(std::make_shared<Fixture::TextPlugin>("Test.Text", "second"));
    return yOK;
}
}
