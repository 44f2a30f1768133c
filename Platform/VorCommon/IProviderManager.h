#pragma once

#include "VorApi/Event.h"

#include <functional>
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
    /// Arguments: engine id, provider id, provider.
    using ProviderAddedEvent = Vor::Event<const std::string&, const std::string&, const std::shared_ptr<T>&>;
    /// Arguments: engine id, provider id.
    using ProviderRemovedEvent = Vor::Event<const std::string&, const std::string&>;

    virtual ~IProviderManager() = default;

    /// By provider id. A pointer is empty when its provider no longer exists.
    virtual std::map<std::string, std::weak_ptr<T>> Providers() const = 0;

    /// The handlers are called after a provider was added or removed, not for those that are there already, on any
    /// thread. No lock of the manager or of a provider is held meanwhile. A removal clears the id, doesn't wait for a
    /// handler that runs, and does nothing for an id that isn't set.
    virtual typename ProviderAddedEvent::CallbackId AddProviderAddedHandler(
        std::function<void(const std::string&, const std::string&, const std::shared_ptr<T>&)> handler) = 0;
    virtual void RemoveProviderAddedHandler(typename ProviderAddedEvent::CallbackId& id) = 0;
    virtual typename ProviderRemovedEvent::CallbackId
    AddProviderRemovedHandler(std::function<void(const std::string&, const std::string&)> handler) = 0;
    virtual void RemoveProviderRemovedHandler(typename ProviderRemovedEvent::CallbackId& id) = 0;
};

extern template class IProviderManager<IDigitalOutputProvider>;

} // namespace VorCommon
