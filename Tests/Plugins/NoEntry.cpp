#include "FixturePlugin.h"
#include "VorControl/Control/VorCnLib.h"

/// The other functions that a plug-in exports are missing here, but the library that this one needs exports them, so a
/// look-up finds them.
extern "C" yStatus yPlugin_Publish(VorPlugin::PluginLib&) {
    yAssembly assembly = nullptr;
    return VorCnLib_Construct(&assembly);
}
