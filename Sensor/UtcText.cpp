#include "Sensor/UtcText.h"

#include "Vor/Format.h"

#include <array>
#include <ctime>

namespace Sensor {

std::string UtcText(std::chrono::system_clock::time_point time) {
    const auto whole = std::chrono::floor<std::chrono::seconds>(time);
    const std::time_t seconds = std::chrono::system_clock::to_time_t(whole);
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(time - whole).count();
    std::tm utc{};
    std::array<char, 32> text{};
    gmtime_r(&seconds, &utc);
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &utc);
    return text.data() + Vor::Format(".%03dZ", static_cast<int>(milliseconds));
}

} // namespace Sensor
