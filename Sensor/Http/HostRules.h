#pragma once

#include "Sensor/Http/HttpRequest.h"
#include "Sensor/Http/HttpResponse.h"

#include <optional>
#include <string>
#include <vector>

namespace Sensor::Http {

/// Whether a request changes something, judging by its method.
bool IsChanging(const HttpRequest& request);

/// Keeps pages of the web from driving the sensor through the browser of somebody who can reach it: a page's own name
/// may lead to the sensor's address, and a page may send requests to another host than its own.
class HostRules {
public:
    /// `names`: further names by which clients may call this host, with a port or without.
    explicit HostRules(const std::vector<std::string>& names);

    /// The refusal of a request that names another host than this one, or that changes something on behalf of a page
    /// of another one. `authority` is the host of the request's target, if it has one; otherwise the field Host counts.
    std::optional<HttpResponse> Check(const HttpRequest& request, const std::optional<std::string>& authority) const;

private:
    bool IsThisHost(const std::string& name) const;

    std::vector<std::string> names;
};

} // namespace Sensor::Http
