#pragma once

#include <array>
#include <cstddef>
#include <mutex>
#include <vector>

namespace Vor::UserData {

/// The data that a machine controller passes to the sensor's tools, one area for the process. Any thread.
class UdiCache {
public:
    /// Bytes.
    static constexpr std::size_t Capacity = 1024;

    static UdiCache& GetInstance();

    /// Copies `size` bytes to `offset`. Throws yERROR_SIZE for what lies beyond the capacity and changes nothing then.
    void Write(const void* data, std::size_t offset, std::size_t size);
    /// The bytes of a range. Throws yERROR_SIZE for what lies beyond the capacity.
    std::vector<unsigned char> Read(std::size_t offset, std::size_t size) const;
    /// Sets all bytes to zero.
    void Clear();

private:
    UdiCache() = default;

    mutable std::mutex mutex; ///< guards `bytes`; no other lock is taken while it is held
    std::array<unsigned char, Capacity> bytes{};
};

} // namespace Vor::UserData
