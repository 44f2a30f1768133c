#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace Vor {

/// For an object whose handlers are called on other threads while it goes: a member behind all that they use, so that
/// it goes before.
class CallGuard {
public:
    CallGuard() = default;
    /// Waits for calls that run on other threads.
    ~CallGuard() {
        const std::lock_guard guard(state->mutex);
        state->ended = true;
    }
    CallGuard(const CallGuard&) = delete;
    CallGuard& operator=(const CallGuard&) = delete;

    /// A handler that calls the function as long as this exists, on one thread at a time. It must not wait for another
    /// thread, nor enter a lock with which others call the handler.
    template <class Function>
    auto Guarded(Function function) const {
        return [state = state, function = std::move(function)](const auto&... arguments) {
            const std::lock_guard guard(state->mutex);
            if (!state->ended) {
                function(arguments...);
            }
        };
    }

private:
    struct State {
        /// Guards `ended`, and is held during each call. Entered after the locks of those who call. Reentrant, since
        /// what a handler does may cause its own call.
        std::recursive_mutex mutex;
        bool ended = false;
    };

    const std::shared_ptr<State> state = std::make_shared<State>();
};

} // namespace Vor
