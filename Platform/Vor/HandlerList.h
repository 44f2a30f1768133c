#pragma once

#include <cassert>
#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace Vor::Properties {

/// Names one handler of a list; 0 names none.
using HandlerId = unsigned long long;

namespace Internal {

/// Callables run in the order in which they were added. An empty one is kept, and running it throws
/// `std::bad_function_call`. A handler may add and remove handlers, itself too: an added one runs at the end of the
/// same round, a removed one doesn't run any more. It must not destroy the list, which is to say the node that has it.
/// A list without handlers has the size of a pointer. No lock: the owner serialises.
template <class... Args>
class HandlerList {
public:
    using Handler = std::function<void(Args...)>;

    HandlerList() = default;
    HandlerList(const HandlerList&) = delete;
    HandlerList& operator=(const HandlerList&) = delete;
    ~HandlerList() { assert(!IsRunning()); }

    HandlerId Add(Handler handler) {
        if (!state) {
            state = std::make_unique<State>();
        }
        state->entries.push_back(std::make_unique<Entry>(Entry{++state->lastId, std::move(handler), false}));
        return state->lastId;
    }

    /// An id that names no handler is ignored. Clears the id.
    void Remove(HandlerId& id) {
        const HandlerId wanted = std::exchange(id, 0);
        if (!state) {
            return;
        }
        for (auto& entry : state->entries) {
            if (entry->id == wanted) {
                entry->removed = true;
            }
        }
        Sweep();
    }

    std::size_t Count() const {
        std::size_t count = 0;
        if (state) {
            for (const auto& entry : state->entries) {
                count += entry->removed ? 0 : 1;
            }
        }
        return count;
    }

    bool IsRunning() const { return state && state->rounds != 0; }

    void Run(Args... args) const {
        if (!state) {
            return;
        }
        const Round round(*this);
        for (std::size_t i = 0; i < state->entries.size(); ++i) {
            Entry& entry = *state->entries[i];
            if (!entry.removed) {
                entry.handler(args...);
            }
        }
    }

private:
    struct Entry {
        HandlerId id;
        Handler handler;
        bool removed;
    };

    struct State {
        std::vector<std::unique_ptr<Entry>> entries;
        HandlerId lastId = 0;
        unsigned int rounds = 0; ///< that are running, one inside the other
    };

    /// Entries stay in place while a round runs.
    struct Round {
        explicit Round(const HandlerList& list)
            : list(list) {
            ++list.state->rounds;
        }
        ~Round() {
            --list.state->rounds;
            list.Sweep();
        }
        Round(const Round&) = delete;
        Round& operator=(const Round&) = delete;
        const HandlerList& list;
    };

    void Sweep() const {
        if (state->rounds == 0) {
            std::erase_if(state->entries, [](const auto& entry) { return entry->removed; });
        }
    }

    std::unique_ptr<State> state;
};

} // namespace Internal
} // namespace Vor::Properties
