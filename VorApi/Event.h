#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace Vor {

/// A list of callbacks, called in order of adding. Any thread may add, remove and raise at any time, also from within a
/// callback: a raise calls those that were there at its begin and haven't been removed when their turn comes. Removal
/// doesn't wait for a call that is running on another thread.
template <class... Args>
class Event {
    struct Entry {
        explicit Entry(std::function<void(Args...)> function)
            : function(std::move(function)) {}

        const std::function<void(Args...)> function;
        std::atomic<bool> removed{false};
    };
    using Entries = std::vector<std::shared_ptr<Entry>>;

public:
    /// A place in the list and a flag that it is set. A copy whose callback was removed meanwhile is harmless.
    class CallbackId {
    public:
        bool IsSet() const { return set; }

    private:
        friend class Event;

        std::weak_ptr<Entry> entry;
        bool set = false;
    };

    Event() = default;
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    /// An empty function isn't added and gives an id that isn't set.
    CallbackId Add(std::function<void(Args...)> function) {
        CallbackId id;
        if (!function) {
            return id;
        }
        auto entry = std::make_shared<Entry>(std::move(function));
        id.entry = entry;
        id.set = true;
        const std::lock_guard guard(mutex);
        auto changed = Copy(1);
        changed->push_back(std::move(entry));
        entries = std::move(changed);
        return id;
    }

    /// Clears the id. An id that isn't set does nothing.
    void Remove(CallbackId& id) {
        const auto entry = id.entry.lock();
        id = CallbackId();
        if (!entry) {
            return;
        }
        std::shared_ptr<const Entries> former;
        const std::lock_guard guard(mutex);
        auto changed = Copy(0);
        if (std::erase(*changed, entry) == 0) {
            return;
        }
        entry->removed.store(true, std::memory_order_relaxed);
        former = std::exchange(entries, std::move(changed));
    }

    void Remove(CallbackId&& id) { Remove(id); }

    /// An exception of a callback ends the walk and passes on.
    void Raise(Args... args) const {
        const auto called = Snapshot();
        if (!called) {
            return;
        }
        for (const auto& entry : *called) {
            if (!entry->removed.load(std::memory_order_relaxed)) {
                entry->function(args...);
            }
        }
    }

    void operator()(Args... args) const { Raise(args...); }

    std::size_t Count() const {
        const auto current = Snapshot();
        return current ? current->size() : 0;
    }

private:
    /// Guards `entries`. Innermost: nothing else is locked and no callback runs while it is held.
    mutable std::mutex mutex;
    std::shared_ptr<const Entries> entries; ///< replaced at each change, so that a raise walks an unchanging list

    std::shared_ptr<Entries> Copy(std::size_t room) const {
        auto copy = std::make_shared<Entries>();
        if (entries) {
            copy->reserve(entries->size() + room);
            *copy = *entries;
        }
        return copy;
    }

    std::shared_ptr<const Entries> Snapshot() const {
        const std::lock_guard guard(mutex);
        return entries;
    }
};

} // namespace Vor
