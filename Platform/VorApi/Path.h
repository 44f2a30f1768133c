#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace VorApi {

/// Paths of resources, such as "/controls/modbus/outputs": steps with a slash before each. A step is percent-coded
/// (RFC 3986, 2.1), so that it may contain any text.
class Path {
public:
    /// Puts the values, percent-coded, in place of the parameters of a pattern such as "/controls/:protocol", in order.
    /// Throws `yERROR_PARAMETER` unless there is one value for each parameter.
    static std::string Format(std::string_view pattern, const std::vector<std::string>& values);

    /// The steps as they are, without the slashes; one slash at the end is ignored. Throws `yERROR_PARAMETER` for a
    /// path that doesn't begin with a slash.
    static std::vector<std::string_view> Split(std::string_view path);

    static bool IsParameter(std::string_view step) { return step.size() > 1 && step.front() == ':'; }

    static std::string Encode(std::string_view text);
    /// Throws `yERROR_FORMAT` for a percent sign without two hexadecimal digits, and for what isn't UTF-8 or contains
    /// a control character.
    static std::string Decode(std::string_view step);
};

} // namespace VorApi
