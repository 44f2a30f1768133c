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

/// A handler of one event of each service that exists at the construction.
template <class CallbackId>
class ServiceSubscriptions {
public:
    using Remove = void (IControlInstance::*)(CallbackId&);

    /// `add(instance)` adds the handler and returns its id. `failureText` is logged when one can't be removed. Fails
    /// with yERROR_ALREADY_EXISTS when two services have the same type name.
    template <class Add>
    ServiceSubscriptions(IControlManager& manager, const Add& add, Remove remove, const char* failureText)
        : remove(remove)
        , failureText(failureText) {
        try {
            for (const std::string& id : manager.List()) {
                IControlInstance& instance = manager.GetInstance(id);
                if (handles.contains(instance.TypeName())) {
                    Vor::Throw(yERROR_ALREADY_EXISTS);
                }
                handles.emplace(instance.TypeName(), Handle{&instance, add(instance)});
            }
        } catch (...) {
            RemoveAll();
            throw;
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
