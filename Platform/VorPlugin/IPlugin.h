#pragma once

namespace VorPlugin {

/// What a plug-in library publishes.
class IPlugin {
public:
    virtual ~IPlugin() = default;
    /// The contract by which GetObject is to be read. The text lives as long as the library.
    virtual const char* Type() const = 0;
    /// The object of that type, which lives as long as this one.
    virtual void* GetObject() const = 0;
};

} // namespace VorPlugin
