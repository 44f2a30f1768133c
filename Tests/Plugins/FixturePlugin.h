#pragma once

#include "VorPlugin/PluginLib.h"
#include "yApi/yAssembly.h"
#include "yApi/yVersion.h"

/// Shared by the plug-in libraries of the tests. Each library's own file exports the entry points.
namespace Fixture {

/// Each library has its own, although all have the same name.
static yAssembly assembly = nullptr;

[[maybe_unused]] static yStatus ConstructAssembly(yAssembly* out) {
    if (assembly != nullptr) {
        yAssembly_AddReference(assembly);
    } else {
        yVersion version;
        yVersion_Parse(&version, "1.0.0.0");
        if (const yStatus status = xyAssembly_ConstructInternal(&assembly, "Fixture", version, version);
            status != yOK) {
            return status;
        }
        xyAssembly_Finalize(assembly);
    }
    *out = assembly;
    return yOK;
}

/// A plug-in whose object is a text.
class TextPlugin : public VorPlugin::IPlugin {
public:
    TextPlugin(const char* type, const char* text)
        : type(type)
        , text(text) {}

    const char* Type() const override { return type; }
    void* GetObject() const override { return const_cast<char*>(text); }

private:
    const char* type;
    const char* text;
};

} // namespace Fixture
