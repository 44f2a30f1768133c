#include "FixturePlugin.h"

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
    (void)lib;
    return yOK;
}
}
