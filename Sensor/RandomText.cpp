#include "Sensor/RandomText.h"

#include "Vor/Exception.h"

#include <sys/random.h>
#include <vector>

namespace Sensor {

std::string RandomText(std::size_t bytes) {
    std::vector<unsigned char> random(bytes);
    if (getentropy(random.data(), random.size()) != 0) {
        Vor::Throw(yERROR, "The system has no random numbers.");
    }
    constexpr const char* Digits = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : random) {
        text += Digits[byte >> 4U];
        text += Digits[byte & 15U];
    }
    return text;
}

} // namespace Sensor
