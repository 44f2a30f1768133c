#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace Sensor::Http {

/// How much memory documents and their texts may occupy together, from their making until they are sent. From any
/// thread.
class Budget {
public:
    /// A part of the budget, given back when it ends. It isn't refused: who makes something asks HasRoom before.
    class Share {
    public:
        explicit Share(std::shared_ptr<Budget> budget)
            : budget(std::move(budget)) {}
        ~Share() { Change(0); }
        Share(const Share&) = delete;
        Share& operator=(const Share&) = delete;

        /// Makes it a part of that many bytes.
        void Change(std::size_t bytes);

    private:
        const std::shared_ptr<Budget> budget;
        std::size_t size = 0;
    };

    /// Bytes.
    explicit Budget(std::size_t limit)
        : limit(limit) {}

    /// Whether so much is left, or nothing is in use at all.
    bool HasRoom(std::size_t bytes) const;
    /// As HasRoom; if not, `whenFreed` is called once, as soon as something is given back, on that thread and under a
    /// lock: it must use nothing of this. It replaces the one of the last call.
    bool HasRoom(std::size_t bytes, std::function<void()> whenFreed);
    /// Afterwards no `whenFreed` is called.
    void StopWaiting();

    std::size_t Used() const;

    /// The text, with the share that it has until it is released.
    static std::shared_ptr<const std::string> Hold(std::string text, std::shared_ptr<Share> share);

private:
    bool Fits(std::size_t bytes) const { return used == 0 || (used < limit && bytes <= limit - used); }

    const std::size_t limit;
    mutable std::mutex mutex; ///< guards what follows
    std::size_t used = 0;
    std::function<void()> whenFreed;
};

} // namespace Sensor::Http
