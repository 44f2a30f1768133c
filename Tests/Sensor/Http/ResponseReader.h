#pragma once

#include "Sensor/Http/HttpRequest.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Sensor::Http {

struct ReceivedResponse {
    unsigned status = 0;
    HttpFields fields;
    std::string body;
    bool isChunked = false;
    bool closes = false;
};

/// Reads responses from the bytes of a connection. Throws with the reason when they aren't exactly what RFC 9112
/// prescribes and this server promises.
class ResponseReader {
public:
    explicit ResponseReader(std::string_view bytes)
        : left(bytes) {}

    bool AtEnd() const { return left.empty(); }
    std::string_view Left() const { return left; }

    /// `isHead`: the response to HEAD, without a body. `untilClose`: with a body that ends with the connection.
    ReceivedResponse Next(bool isHead = false, bool untilClose = false) {
        ReceivedResponse response;
        ReadStatusLine(response);
        for (std::string_view line = Line(); !line.empty(); line = Line()) {
            ReadField(response, line);
        }
        Check(response, isHead, untilClose);
        if (response.isChunked && !isHead) {
            ReadChunks(response);
        } else if (untilClose) {
            response.body = std::exchange(left, {});
        } else if (const auto length = response.fields.Find("Content-Length"); length && !isHead) {
            response.body = Bytes(Number(*length, 10));
        }
        Require(!response.closes || left.empty(), "something comes behind the last response");
        return response;
    }

private:
    static void Require(bool condition, const std::string& text) {
        if (!condition) {
            throw std::runtime_error(text);
        }
    }

    std::string_view Line() {
        const std::size_t end = left.find("\r\n");
        Require(end != std::string_view::npos, "a line is cut");
        const std::string_view line = left.substr(0, end);
        left.remove_prefix(end + 2);
        Require(std::ranges::all_of(line, [](char each) { return each >= ' ' && each < '\x7F'; }),
                "a line has a control character");
        return line;
    }
    std::string_view Bytes(std::size_t size) {
        Require(left.size() >= size, "the body is cut");
        const std::string_view bytes = left.substr(0, size);
        left.remove_prefix(size);
        return bytes;
    }
    static std::size_t Number(std::string_view text, int base) {
        std::size_t value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
        Require(error == std::errc() && end == text.data() + text.size(), "no number: " + std::string(text));
        return value;
    }

    void ReadStatusLine(ReceivedResponse& response) {
        const std::string_view line = Line();
        Require(line.starts_with("HTTP/1.1 ") && line.size() > 13 && line[12] == ' ',
                "no status line: " + std::string(line));
        response.status = static_cast<unsigned>(Number(line.substr(9, 3), 10));
        Require(response.status >= 100 && response.status < 600 && line.find('<') == std::string_view::npos,
                "no status: " + std::string(line));
    }
    static void ReadField(ReceivedResponse& response, std::string_view line) {
        const std::size_t colon = line.find(": ");
        Require(colon != std::string_view::npos && colon > 0 && line.size() > colon + 2,
                "no field: " + std::string(line));
        const std::string_view name = line.substr(0, colon);
        Require(std::ranges::all_of(
                    name, [](char each) { return std::isalnum(static_cast<unsigned char>(each)) != 0 || each == '-'; }),
                "no name: " + std::string(line));
        response.fields.Add(std::string(name), std::string(line.substr(colon + 2)));
    }
    static void Check(ReceivedResponse& response, bool isHead, bool untilClose) {
        const HttpFields& fields = response.fields;
        for (const char* once : {"Date", "Content-Length", "Transfer-Encoding", "Connection", "Content-Type"}) {
            Require(fields.Count(once) <= 1, std::string("several ") + once);
        }
        const bool isInterim = response.status < 200;
        Require(isInterim || IsDate(fields.Find("Date").value_or("")), "no date");
        response.isChunked = fields.Find("Transfer-Encoding") == "chunked";
        response.closes = fields.Find("Connection") == "close";
        const bool hasLength = fields.Count("Content-Length") > 0;
        if (isInterim || response.status == 204 || response.status == 304) {
            Require(!hasLength && !response.isChunked, "a length where there is no body");
        } else if (!isHead) {
            Require(hasLength + response.isChunked + untilClose == 1, "not one way to find the end of the body");
        }
        Require(!(response.isChunked || untilClose) || isHead || response.closes, "a stream that doesn't close");
    }
    /// "Sun, 06 Nov 1994 08:49:37 GMT"
    static bool IsDate(const std::string& text) {
        const std::string_view pattern = "Aaa, 00 Aaa 0000 00:00:00 GMT";
        return std::ranges::equal(text, pattern, [](char each, char kind) {
            const auto code = static_cast<unsigned char>(each);
            switch (kind) {
            case '0':
                return std::isdigit(code) != 0;
            case 'A':
                return std::isupper(code) != 0;
            case 'a':
                return std::islower(code) != 0;
            default:
                return each == kind;
            }
        });
    }
    void ReadChunks(ReceivedResponse& response) {
        for (std::size_t size = Number(Line(), 16); size > 0; size = Number(Line(), 16)) {
            response.body += Bytes(size);
            Require(Line().empty(), "a chunk is longer than it says");
        }
        Require(Line().empty(), "trailers");
    }

    std::string_view left;
};

/// The statuses of all responses, in their order.
inline std::vector<unsigned> StatusesOf(std::string_view bytes) {
    std::vector<unsigned> statuses;
    for (ResponseReader reader(bytes); !reader.AtEnd();) {
        statuses.push_back(reader.Next().status);
    }
    return statuses;
}

} // namespace Sensor::Http
