#pragma once

#include <atomic>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace Vor {

/// A list of callbacks, called in order of adding. Any thread may add, remove and raise at any time, also in a
/// callback. A raise calls the callbacks that were in the list when it began, except those that were removed meanwhile.
/// Removal doesn't wait for a call that is running on another thread.
template <class... Args>
class Event {
    struct Entry {
        explicit Entry(std::function<void(Args...)> function)
            : function(std::move(function)) {}

        const std::function<void(Args...)> function;
        std::atomic<bool> removed{false};
    };
    struct Entries {
        std::vector<std::shared_ptr<Entry>> list;
        mutable std::atomic<std::size_t> walks{0}; ///< number of raises that walk the list; if any, it must not change
    };

public:
    /// A callback in the list, or none. The id of a callback that was removed through a copy of it does nothing.
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

    /// An empty function isn't added; its id isn't set.
    CallbackId Add(std::function<void(Args...)> function) {
        CallbackId id;
        if (!function) {
            return id;
        }
        auto entry = std::make_shared<Entry>(std::move(function));
        id.entry = entry;
        id.set = true;
        const std::lock_guard guard(mutex);
        if (!entries || entries->walks.load(std::memory_order_acquire) != 0) {
            entries = Copy();
        }
        entries->list.push_back(std::move(entry));
        return id;
    }

    /// Clears the id. Does nothing for an id that isn't set.
    void Remove(CallbackId& id) {
        const auto entry = id.entry.lock();
        id = CallbackId();
        if (!entry) {
            return;
        }
        std::shared_ptr<const Entries> former;
        const std::lock_guard guard(mutex);
        auto changed = Copy();
        if (std::erase(changed->list, entry) == 0) {
            return;
        }
        entry->removed.store(true, std::memory_order_relaxed);
        former = std::exchange(entries, std::move(changed));
    }

    void Remove(CallbackId&& id) { Remove(id); }

    /// Throws what a callback throws; the callbacks after it aren't called then.
    void Raise(Args... args) const {
        Each([&](const auto& function) { function(args...); });
    }

    /// Calls every callback, also after one has thrown. Throws what the first of these threw when all were called.
    void RaiseToAll(Args... args) const {
        std::exception_ptr first;
        Each([&](const auto& function) {
            try {
                function(args...);
            } catch (...) {
                first = first == nullptr ? std::current_exception() : first;
            }
        });
        if (first != nullptr) {
            std::rethrow_exception(first);
        }
    }

    void operator()(Args... args) const { Raise(args...); }

    std::size_t Count() const {
        const std::lock_guard guard(mutex);
        return entries ? entries->list.size() : 0;
    }

private:
    /// Keeps the list unchanged as long as it exists, even if the event is destroyed before.
    struct Walk {
        explicit Walk(const Event& event) {
            const std::lock_guard guard(event.mutex);
            called = event.entries;
            if (called) {
                called->walks.fetch_add(1, std::memory_order_relaxed);
            }
        }
        ~Walk() {
            if (called) {
                called->walks.fetch_sub(1, std::memory_order_release);
            }
        }
        Walk(const Walk&) = delete;
        Walk& operator=(const Walk&) = delete;

        std::shared_ptr<const Entries> called;
    };

    /// Guards `entries`. No other lock is entered and no callback runs while it is held.
    mutable std::mutex mutex;
    std::shared_ptr<Entries> entries; ///< replaced, not changed, while a raise walks it

    template <class Call>
    void Each(const Call& call) const {
        const Walk walk(*this);
        if (!walk.called) {
            return;
        }
        for (const auto& entry : walk.called->list) {
            if (!entry->removed.load(std::memory_order_relaxed)) {
                call(entry->function);
            }
        }
    }

    std::shared_ptr<Entries> Copy() const {
        auto copy = std::make_shared<Entries>();
        if (entries) {
            copy->list = entries->list;
        }
        return copy;
    }
};

} // namespace Vor
