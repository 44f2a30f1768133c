#pragma once

#include <string_view>

namespace Sensor::Http {

/// A resource whose documents are bytes of another type than application/octet-stream.
class IMediaResource {
public:
    /// The field Content-Type.
    virtual std::string_view MediaType() const = 0;

protected:
    ~IMediaResource() = default;
};

} // namespace Sensor::Http
