#pragma once

#include "VorApi/LogThrown.h"

#include <source_location>
#include <utility>

namespace Vor {

/// Runs `work` when the scope ends, also when it ends with an exception. What `work` throws is logged.
template <typename Work>
class [[nodiscard]] AtScopeEnd {
public:
    explicit AtScopeEnd(Work work, const std::source_location& where = std::source_location::current())
        : work(std::move(work))
        , where(where) {}
    AtScopeEnd(const AtScopeEnd&) = delete;
    AtScopeEnd& operator=(const AtScopeEnd&) = delete;
    ~AtScopeEnd() { CleanUp(work, where); }

private:
    Work work;
    std::source_location where;
};

} // namespace Vor
