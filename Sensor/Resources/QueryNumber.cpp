#include "Sensor/Resources/QueryNumber.h"

#include "Vor/Exception.h"
#include "VorApi/RequestInfoEx.h"

#include <charconv>
#include <string>
#include <system_error>

namespace Sensor::Resources {

std::uint64_t QueryNumber::Of(const VorApi::RequestInfoEx& request) const {
    const std::string* const text = request.FindQuery(name);
    if (text == nullptr) {
        return otherwise;
    }
    std::uint64_t number = 0;
    const char* const end = text->data() + text->size();
    const auto [last, error] = std::from_chars(text->data(), end, number);
    if (error != std::errc() || last != end || number < least || number > greatest) {
        Vor::Throw(yERROR_FORMAT, "The query has %s=%s, and a number from %s to %s was expected.", name, *text,
                   std::to_string(least), std::to_string(greatest));
    }
    return number;
}

} // namespace Sensor::Resources
