#include "Sensor/Http/Budget.h"

#include "VorApi/LogThrown.h"

#include <utility>

namespace Sensor::Http {

void Budget::Share::Change(std::size_t bytes) {
    const std::lock_guard guard(budget->mutex);
    const bool frees = bytes < size;
    budget->used = budget->used - size + bytes;
    size = bytes;
    if (frees && budget->whenFreed) {
        Vor::CleanUp(std::exchange(budget->whenFreed, nullptr));
    }
}

bool Budget::HasRoom(std::size_t bytes) const {
    const std::lock_guard guard(mutex);
    return Fits(bytes);
}

bool Budget::HasRoom(std::size_t bytes, std::function<void()> whenFreed) {
    const std::lock_guard guard(mutex);
    if (Fits(bytes)) {
        return true;
    }
    this->whenFreed = std::move(whenFreed);
    return false;
}

void Budget::StopWaiting() {
    const std::lock_guard guard(mutex);
    whenFreed = nullptr;
}

std::size_t Budget::Used() const {
    const std::lock_guard guard(mutex);
    return used;
}

std::shared_ptr<const std::string> Budget::Hold(std::string text, std::shared_ptr<Share> share) {
    struct Held {
        std::string text;
        std::shared_ptr<Share> share;
    };
    share->Change(text.capacity());
    const auto held = std::make_shared<const Held>(Held{std::move(text), std::move(share)});
    return {held, &held->text};
}

} // namespace Sensor::Http
