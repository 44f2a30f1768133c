#pragma once

#include "VorApi/IResource.h"

namespace VorApi {

/// A virtual base of the others, so that a resource of several kinds has one event.
class ResourceBase : public IResource {
public:
    ResourceBase() = default;
    ResourceBase(const ResourceBase&) = delete;
    ResourceBase& operator=(const ResourceBase&) = delete;

    ResourceEvent& NotificationEvent() override { return notificationEvent; }

protected:
    void Notify(Notification code, const std::string& path) { notificationEvent.Raise(code, *this, path); }

private:
    ResourceEvent notificationEvent;
};

} // namespace VorApi
