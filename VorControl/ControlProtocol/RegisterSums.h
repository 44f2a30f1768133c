#pragma once

#include <cstddef>
#include <vector>

namespace VorControl::ControlProtocol {

/// Register counts by output id, with their sums in logarithmic time (a binary indexed tree). All in 16 bits.
class RegisterSums {
public:
    void Add(unsigned short outputId, unsigned short count) {
        for (std::size_t i = Reversed(outputId); i < sums.size(); i += i & (~i + 1)) {
            sums[i] = static_cast<unsigned short>(sums[i] + count);
        }
    }

    void Subtract(unsigned short outputId, unsigned short count) {
        Add(outputId, static_cast<unsigned short>(0x10000 - count));
    }

    /// The sum for this output id and all greater ones.
    unsigned short From(unsigned short outputId) const {
        unsigned short sum = 0;
        for (std::size_t i = Reversed(outputId); i != 0; i &= i - 1) {
            sum = static_cast<unsigned short>(sum + sums[i]);
        }
        return sum;
    }

private:
    /// The tree has indices from 1 and sums up to an index.
    static std::size_t Reversed(unsigned short outputId) { return std::size_t{0x10000} - outputId; }

    std::vector<unsigned short> sums = std::vector<unsigned short>(0x10001);
};

} // namespace VorControl::ControlProtocol
