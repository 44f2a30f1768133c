#pragma once

#include "VorApi/Event.h"
#include "VorCommon/IPersistHandler.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace VorControl {

class ControlRegistry;
class IControlInstance;

/// The services of the sensor, by id. The set doesn't change after construction, so any thread may read it.
class IControlManager : public VorCommon::IPersistHandler {
public:
    enum class PersistenceLoadOpState : std::uint8_t { Begin = 0, End = 1 };
    using PersistenceLoadEvent = Vor::Event<PersistenceLoadOpState>;

    /// Ascending.
    virtual std::vector<std::string> List() const = 0;
    /// Fails with yERROR_NOT_FOUND.
    virtual IControlInstance& GetInstance(const std::string& id) = 0;
    virtual const ControlRegistry& GetControlRegistry() const = 0;
    /// The handler runs on the thread that loads, before the first and after the last service is loaded. It is called
    /// at the end of each load of which it was called at the start, whatever it or another handler throws then; what a
    /// handler throws ends the load.
    virtual PersistenceLoadEvent::CallbackId
    AddPersistenceLoadEventHandler(std::function<void(PersistenceLoadOpState)> handler) = 0;
    /// An unset id is ignored.
    virtual void RemovePersistenceLoadEventHandler(PersistenceLoadEvent::CallbackId id) = 0;
};

} // namespace VorControl
