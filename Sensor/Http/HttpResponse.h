#pragma once

#include "Sensor/Http/HttpRequest.h"

#include <memory>
#include <string>

namespace Sensor::Http {

/// A body that is sent as it comes to be, such as server-sent events. It is destroyed when it has been sent, or when
/// the client has gone.
class IBodyStream {
public:
    virtual ~IBodyStream() = default;
    /// Appends what is to be sent next to `out`; nothing when there is nothing at present. Called on the network
    /// thread when what was read before is sent, so that what waits is kept here and can be replaced by something
    /// newer.
    virtual void Read(std::string& out) = 0;
    /// Whether the body ends here: the connection is closed after what was read. Called on the network thread.
    virtual bool Ended() const = 0;
    /// Whether the client has left too much unread: what waits is dropped, and the connection is reset. Called on the
    /// network thread.
    virtual bool IsCut() const { return false; }
};

/// The answer to a request. Date, Content-Length and Connection are added by the server.
struct HttpResponse {
    unsigned status = 200;
    HttpFields fields = {};
    /// Null for none. Sent without being copied; for the answer to HEAD only its length is sent.
    std::shared_ptr<const std::string> body = nullptr;
    /// Instead of a body.
    std::shared_ptr<IBodyStream> stream = nullptr;
};

} // namespace Sensor::Http
