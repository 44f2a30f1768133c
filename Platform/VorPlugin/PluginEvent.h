#pragma once

namespace VorPlugin {

/// What happens to a library. Receivers ignore other values.
enum class PluginEvent { Loaded = 0, Unloading = 1 };

} // namespace VorPlugin
