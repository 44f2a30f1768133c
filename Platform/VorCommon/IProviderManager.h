#pragma once

#include <map>
#include <memory>
#include <string>

namespace VorCommon {

class IDigitalOutputProvider;

/// The providers of one kind that a scan engine offers. An engine's registry holds it under the address of this very
/// class's type information, of which the process must have one: it has default visibility, and each kind in use is
/// instantiated in the platform library alone.
template <class T>
class __attribute__((visibility("default"))) IProviderManager {
public:
    virtual ~IProviderManager() = default;

    /// By provider id. A pointer is empty when its provider no longer exists.
    virtual std::map<std::string, std::weak_ptr<T>> Providers() const = 0;
};

extern template class IProviderManager<IDigitalOutputProvider>;

} // namespace VorCommon
