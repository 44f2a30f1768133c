#pragma once

#include "VorApi/LogThrown.h"

#include <utility>

namespace VorControl::Protocol {

/// The end of an update that has begun: End runs it and throws what it throws. Without that it runs at the end of the
/// scope, where a failure is logged.
template <class Call>
class [[nodiscard]] UpdateBracket {
public:
    explicit UpdateBracket(Call end)
        : end(std::move(end)) {}
    UpdateBracket(const UpdateBracket&) = delete;
    UpdateBracket& operator=(const UpdateBracket&) = delete;
    ~UpdateBracket() {
        if (open) {
            Vor::CleanUp(end);
        }
    }

    void End() {
        open = false;
        end();
    }

private:
    Call end;
    bool open = true;
};

} // namespace VorControl::Protocol
