#pragma once

#include "Sensor/Http/Problem.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace VorApi {
class RequestInfoEx;
}

namespace Sensor::Http {

/// The body of a PUT on its way to a resource. Called on the network thread; none of it waits for anything. It may be
/// destroyed on any thread, and when that is before End nothing is changed.
class IUpload {
public:
    virtual ~IUpload() = default;
    /// Whether a piece can be taken.
    virtual bool HasRoom() const = 0;
    virtual void Take(std::string piece) = 0;
    /// The body is whole.
    virtual void End() = 0;
};

struct UploadOutcome {
    std::optional<Problem> refusal = std::nullopt; ///< nothing for a success, and then the rest is valid
    std::string path = std::string();              ///< of what was replaced or created
    bool isNew = false;
};

struct UploadTerms {
    bool onlyNew; ///< what exists isn't replaced
    /// From any thread: there is room again.
    std::function<void()> wake;
    /// Called on the main loop with the outcome, at most once; a refusal may come before the body is whole. It need
    /// not be called when the upload is destroyed before End.
    std::function<void(const UploadOutcome& outcome)> ended;
};

/// A resource whose content clients replace or create, with a body that isn't kept in memory. Main loop only.
class IUploadResource {
public:
    /// Throws a Vor::Exception when the upload is refused whatever its body is.
    virtual std::unique_ptr<IUpload> BeginUpload(const VorApi::RequestInfoEx& request, UploadTerms terms) = 0;

protected:
    ~IUploadResource() = default;
};

} // namespace Sensor::Http
