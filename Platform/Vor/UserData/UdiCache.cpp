#include "Vor/UserData/UdiCache.h"

#include "Vor/Exception.h"

#include <algorithm>

namespace Vor::UserData {

namespace {

void CheckRange(std::size_t offset, std::size_t size) {
    if (offset > UdiCache::Capacity || size > UdiCache::Capacity - offset) {
        Throw(yERROR_SIZE, "User data of %u bytes at %u is more than the %u bytes that there are.", size, offset,
              UdiCache::Capacity);
    }
}

} // namespace

UdiCache& UdiCache::GetInstance() {
    static UdiCache cache;
    return cache;
}

void UdiCache::Write(const void* data, std::size_t offset, std::size_t size) {
    CheckRange(offset, size);
    const auto* const from = static_cast<const unsigned char*>(data);
    const std::lock_guard guard(mutex);
    std::copy_n(from, size, bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

std::vector<unsigned char> UdiCache::Read(std::size_t offset, std::size_t size) const {
    CheckRange(offset, size);
    const std::lock_guard guard(mutex);
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
    return {begin, begin + static_cast<std::ptrdiff_t>(size)};
}

void UdiCache::Clear() {
    const std::lock_guard guard(mutex);
    bytes.fill(0);
}

} // namespace Vor::UserData
