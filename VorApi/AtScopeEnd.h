#pragma once

#include "VorApi/LogThrown.h"

#include <source_location>
#include <utility>

namespace Vor {

/// Runs `work` at `End`, which throws what `work` throws. Without that it runs when the scope ends, also when that is
/// by an exception, and what it throws is logged.
template <typename Work>
class [[nodiscard]] AtScopeEnd {
public:
    explicit AtScopeEnd(Work work, const std::source_location& where = std::source_location::current())
        : work(std::move(work))
        , where(where) {}
    AtScopeEnd(const AtScopeEnd&) = delete;
    AtScopeEnd& operator=(const AtScopeEnd&) = delete;
    ~AtScopeEnd() {
        if (pending) {
            CleanUp(work, where);
        }
    }

    void End() {
        pending = false;
        work();
    }

private:
    Work work;
    std::source_location where;
    bool pending = true;
};

} // namespace Vor
