#include "FixturePlugin.h"

// The other functions that a plug-in exports are missing here, though a library that it needs may export them.
extern "C" yStatus yPlugin_Publish(VorPlugin::PluginLib&) {
    return yOK;
}
