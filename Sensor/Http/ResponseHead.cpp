#include "Sensor/Http/ResponseHead.h"

#include <array>
#include <cstdio>
#include <string_view>

#include <boost/beast/http/status.hpp>

namespace Sensor::Http {

namespace {

void AppendField(std::string& out, std::string_view name, std::string_view value) {
    out.append(name).append(": ");
    for (const char character : value) {
        out.push_back((character >= '\0' && character < ' ') || character == '\x7F' ? ' ' : character);
    }
    out.append("\r\n");
}

} // namespace

std::string HttpDate(std::time_t time) {
    static constexpr std::array Days{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr std::array Months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::tm parts{};
    gmtime_r(&time, &parts);
    std::array<char, 64> text{};
    const int size = std::snprintf(text.data(), text.size(), "%s, %02d %s %04d %02d:%02d:%02d GMT", Days[parts.tm_wday],
                                   parts.tm_mday, Months[parts.tm_mon], parts.tm_year + 1900, parts.tm_hour,
                                   parts.tm_min, parts.tm_sec);
    return {text.data(), static_cast<std::size_t>(size)};
}

void AppendHead(std::string& out, const HttpResponse& response, const ResponseFraming& framing) {
    const auto reason = boost::beast::http::obsolete_reason(static_cast<boost::beast::http::status>(response.status));
    out.append("HTTP/1.1 ").append(std::to_string(response.status)).append(" ");
    out.append(reason.data(), reason.size()).append("\r\n");
    for (const auto& [name, value] : response.fields) {
        AppendField(out, name, value);
    }
    AppendField(out, "Date", HttpDate(std::time(nullptr)));
    if (response.stream) {
        if (framing.isHttp11) {
            AppendField(out, "Transfer-Encoding", "chunked");
        }
    } else if (response.status != 204 && response.status != 304) { // RFC 9110, 8.6
        AppendField(out, "Content-Length", std::to_string(response.body ? response.body->size() : 0));
    }
    if (framing.closes) {
        AppendField(out, "Connection", "close");
    } else if (!framing.isHttp11) {
        AppendField(out, "Connection", "keep-alive");
    }
    out.append("\r\n");
}

} // namespace Sensor::Http
