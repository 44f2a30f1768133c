#include "FixturePlugin.h"
#include "VorControl/Control/VorCnLib.h"

/// The other entry points are missing here, but a library that this one depends on exports them, so a look-up finds
/// them.
extern "C" yStatus yPlugin_Publish(VorPlugin::PluginLib&) {
    yAssembly assembly = nullptr;
    return VorCnLib_Construct(&assembly);
}
