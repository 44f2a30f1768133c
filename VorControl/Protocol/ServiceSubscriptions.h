#pragma once

#include "Vor/Exception.h"
#include "VorApi/LogThrown.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Control/IControlManager.h"
#include "yApi/yStatus.h"

#include <exception>
#include <map>
#include <string>
#include <utility>

namespace VorControl::Protocol {

/// A handler of one event of the services that exist at the construction.
template <class CallbackId>
class ServiceSubscriptions {
public:
    using Remove = void (IControlInstance::*)(CallbackId&);

    /// Of all services. `add(instance)` adds the handler and returns its id. `failureText` is logged when one can't be
    /// removed. Fails with yERROR_ALREADY_EXISTS when two services have the same type name.
    template <class Add>
    ServiceSubscriptions(IControlManager& manager, const Add& add, Remove remove, const char* failureText)
        : remove(remove)
        , failureText(failureText) {
        try {
            for (const std::string& id : manager.List()) {
                AddTo(manager.GetInstance(id), add);
            }
        } catch (...) {
            RemoveAll();
            throw;
        }
    }
    /// Of the services that use devices. `addFailureText` is logged when one can't be added; then the rest has none.
    template <class Add>
    ServiceSubscriptions(IControlManager& manager, const Add& add, const char* addFailureText, Remove remove,
                         const char* failureText)
        : remove(remove)
        , failureText(failureText) {
        try {
            for (const std::string& id : manager.List()) {
                IControlInstance& instance = manager.GetInstance(id);
                if (instance.HasDeviceManager()) {
                    AddTo(instance, add);
                }
            }
        } catch (const std::exception& e) {
            Vor::LogThrown(e, addFailureText);
        }
    }
    ~ServiceSubscriptions() { RemoveAll(); }
    ServiceSubscriptions(const ServiceSubscriptions&) = delete;
    ServiceSubscriptions& operator=(const ServiceSubscriptions&) = delete;

private:
    struct Handle {
        IControlInstance* instance;
        CallbackId id;
    };

    template <class Add>
    void AddTo(IControlInstance& instance, const Add& add) {
        if (handles.contains(instance.TypeName())) {
            Vor::Throw(yERROR_ALREADY_EXISTS);
        }
        handles.emplace(instance.TypeName(), Handle{&instance, add(instance)});
    }

    void RemoveAll() {
        try {
            for (auto& [typeName, handle] : handles) {
                (handle.instance->*remove)(handle.id);
            }
        } catch (const std::exception& e) {
            Vor::LogThrown(e, failureText);
        }
    }

    Remove remove;
    const char* failureText;
    std::map<std::string, Handle> handles; ///< by type name
};

} // namespace VorControl::Protocol
