#pragma once

#include "VorApi/IStreamReceiver.h"
#include "VorApi/RequestInfoEx.h"
#include "VorApi/ResourceBase.h"

namespace VorApi {

/// A resource that sends messages to those who open a stream.
class StreamResourceBase : public virtual ResourceBase {
public:
    /// Returns the stream's id. When it throws, there is no stream.
    virtual unsigned int StartStream(const RequestInfoEx& request, IStreamReceiver& receiver) = 0;
    /// Afterwards the receiver gets nothing more. Fails for an unknown id.
    virtual void StopStream(unsigned int id) = 0;
    /// Whose streams are meant; null when there are none at present.
    virtual StreamResourceBase* StreamableProvider() = 0;
};

} // namespace VorApi
