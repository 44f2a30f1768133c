#pragma once

#include "VorApi/Event.h"
#include "VorApi/Notification.h"

#include <string>

namespace VorApi {

/// What can be registered in a ResourceRouter. What a resource can do follows from its further bases:
/// DocumentResourceBase (read, update), IParentResource (create, delete), ICallableResource (invoke) and
/// StreamResourceBase (streams). All of it is called on the main loop, the listeners of its event aside.
class IResource {
public:
    /// Arguments: the resource, the path that it is about.
    using ResourceEvent = Vor::Event<Notification, IResource&, const std::string&>;

    virtual ~IResource() = default;
    /// Raised on any thread, perhaps with locks held: a listener waits for no other thread and calls no resource.
    virtual ResourceEvent& NotificationEvent() = 0;
};

} // namespace VorApi
