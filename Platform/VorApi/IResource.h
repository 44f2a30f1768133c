#pragma once

#include "VorApi/Event.h"
#include "VorApi/Notification.h"

#include <string>

namespace VorApi {

/// What can be registered in a ResourceRouter. What a resource can do follows from its further bases:
/// DocumentResourceBase (read, update), IParentResource (create, delete), ICallableResource (invoke) and
/// StreamResourceBase (streams). All of it is called on the main loop.
class IResource {
public:
    /// Arguments: the resource, the path that it is about.
    using ResourceEvent = Vor::Event<Notification, IResource&, const std::string&>;

    virtual ~IResource() = default;
    /// Raised on the main loop, or on the persistence thread while the main loop waits for it.
    virtual ResourceEvent& NotificationEvent() = 0;
};

} // namespace VorApi
