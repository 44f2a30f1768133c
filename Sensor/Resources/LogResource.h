#pragma once

#include "VorApi/DocumentResourceBase.h"

namespace Sensor {
class LogHistory;
}

namespace Sensor::Resources {

/// The entries of the user's log, the latest first. A client asks for "n" entries, "before" a number, of a "level" or a
/// more serious one, and with a text "q" in them.
class LogResource : public VorApi::DocumentResourceBase {
public:
    /// The history outlives this.
    explicit LogResource(const LogHistory& history)
        : history(history) {}

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;

protected:
    void RequireDocument(const VorApi::RequestInfoEx&) override {}

private:
    const LogHistory& history;
};

} // namespace Sensor::Resources
