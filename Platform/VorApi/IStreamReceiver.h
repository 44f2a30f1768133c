#pragma once

#include "VorApi/VorDataTree.h"

#include <string>

namespace VorApi {

/// Who gets the messages of a stream. It lives until the stream is stopped. Called on the main loop.
class IStreamReceiver {
public:
    virtual void Send(const VorDataTree& message) = 0;
    /// Who it is, for the log.
    virtual std::string Description() const = 0;
    /// Ends the stream from the side of the resource. The receiver stops it with StopStream, perhaps inside this call.
    virtual void Abort() = 0;

protected:
    ~IStreamReceiver() = default;
};

} // namespace VorApi
