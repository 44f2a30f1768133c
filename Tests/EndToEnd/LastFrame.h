#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace Tests {

/// The values of the last frame of a profile recording that clients must read. They are computed in whole thousandths
/// from the digits of the file, so rounding is exact.
struct LastFrame {
    std::int64_t index = -1;
    std::int64_t max = 0;
    std::int64_t min = 0;
    std::int64_t mean = 0; ///< rounded half away from zero
    std::int64_t width = 0;
    std::int64_t points = 0;
    bool hasWidth = false;

    explicit LastFrame(const std::string& file) {
        std::ifstream stream(file);
        std::string line;
        std::getline(stream, line);
        std::vector<std::int64_t> xs;
        std::vector<std::int64_t> zs;
        while (std::getline(stream, line)) {
            std::istringstream fields(line);
            std::string frame;
            std::string x;
            std::string z;
            std::getline(fields, frame, ',');
            std::getline(fields, x, ',');
            std::getline(fields, z, ',');
            if (std::stoll(frame) != index) {
                index = std::stoll(frame);
                xs.clear();
                zs.clear();
            }
            xs.push_back(std::llround(std::stod(x) * 1000));
            zs.push_back(std::llround(std::stod(z) * 1000));
        }
        Measure(xs, zs);
    }

    /// The measurements in registers: thousandths of a millimetre, or of a point.
    std::vector<std::int64_t> Values() const { return {max, min, mean, hasWidth ? width : INT32_MIN, points * 1000}; }

private:
    void Measure(const std::vector<std::int64_t>& xs, const std::vector<std::int64_t>& zs) {
        max = *std::max_element(zs.begin(), zs.end());
        min = *std::min_element(zs.begin(), zs.end());
        points = static_cast<std::int64_t>(zs.size());
        std::int64_t sum = 0;
        std::int64_t left = INT64_MAX;
        std::int64_t right = INT64_MIN;
        for (std::size_t i = 0; i < zs.size(); ++i) {
            sum += zs[i];
            if (zs[i] > 0) {
                left = std::min(left, xs[i]);
                right = std::max(right, xs[i]);
                hasWidth = true;
            }
        }
        const std::int64_t magnitude = (2 * std::abs(sum) + points) / (2 * points);
        mean = sum < 0 ? -magnitude : magnitude;
        width = right - left;
    }
};

} // namespace Tests
