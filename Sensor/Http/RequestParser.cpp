#include "Sensor/Http/RequestParser.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <boost/beast/core/string.hpp>
#include <boost/beast/http/basic_parser.hpp>
#include <boost/beast/http/error.hpp>

namespace Sensor::Http {

namespace http = boost::beast::http;
using boost::beast::error_code;

namespace {

/// An empty chunk and the end of the trailers.
constexpr std::string_view ShortestBodyEnd = "0\r\n\r\n";

bool IsRefusedInHeader(char character) {
    return (character >= '\0' && character < ' ' && character != '\r' && character != '\t') || character == '\x7F';
}

/// Whether a version is where the request line must have it.
bool HasVersion(std::string_view header) {
    const std::string_view line = header.substr(0, header.find('\r'));
    const std::size_t target = line.find(' ') + 1;
    const std::string_view version = line.substr(std::min(line.size(), line.find(' ', target))).substr(0, 10);
    const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
    return version.size() == 9 && version.starts_with(" HTTP/") && isDigit(version[6]) && version[7] == '.' &&
           isDigit(version[8]);
}

} // namespace

/// Looks for the end of a header, and for what mustn't be in one whatever its fields are.
class RequestParser::HeaderScan {
public:
    explicit HeaderScan(const RequestLimits& limits)
        : limits(limits) {}

    /// `bytes` begin with those of the last call. Returns why the header is refused.
    std::optional<Refusal> Scan(std::string_view bytes);
    /// With the empty line at the end; 0 when the end wasn't found.
    std::size_t Size() const { return size; }
    /// Whether there is an empty line instead of a request line.
    bool IsEmptyLine() const { return size > 0 && lines == 0; }

private:
    RequestLimits limits;
    std::size_t at = 0;
    std::size_t lineBegin = 0;
    std::size_t lines = 0; ///< that have ended
    std::size_t size = 0;
};

std::optional<Refusal> RequestParser::HeaderScan::Scan(std::string_view bytes) {
    for (; at < bytes.size() && size == 0; ++at) {
        const char character = bytes[at];
        if (lines == 0 && at >= limits.requestLine) {
            return Refusal{WireProblems::TargetTooLong,
                           "The request line has more than " + std::to_string(limits.requestLine) + " bytes."};
        }
        if (at >= limits.header) {
            return Refusal{WireProblems::HeaderTooLarge,
                           "The header has more than " + std::to_string(limits.header) + " bytes."};
        }
        if ((character == '\n') != (at > 0 && bytes[at - 1] == '\r')) {
            return Refusal{WireProblems::Malformed,
                           "Line " + std::to_string(lines + 1) + " of the header doesn't end in CR LF."};
        }
        if (character == '\n') {
            if (at == lineBegin + 1) {
                size = at + 1;
            } else if (++lines > limits.fields + 1) {
                return Refusal{WireProblems::HeaderTooLarge,
                               "The header has more than " + std::to_string(limits.fields) + " fields."};
            }
            lineBegin = at + 1;
        } else if (IsRefusedInHeader(character)) {
            return Refusal{WireProblems::Malformed,
                           "Line " + std::to_string(lines + 1) + " of the header has a control character in it."};
        } else if (at == lineBegin && lines > 0 && (character == ' ' || character == '\t')) {
            return Refusal{WireProblems::Malformed, "Line " + std::to_string(lines + 1) +
                                                        " of the header begins with a space: a field is one line."};
        }
    }
    return std::nullopt;
}

class RequestParser::Impl : public http::basic_parser<true> {
public:
    Impl(const RequestLimits& limits, std::function<bool(const HttpRequest& request)> inPieces)
        : limits(limits)
        , inPieces(std::move(inPieces))
        , bodyLimit(limits.body)
        , scan(limits) {
        header_limit(std::numeric_limits<std::uint32_t>::max());
        body_limit(std::numeric_limits<std::uint64_t>::max());
    }

    std::size_t ReadHeader(std::string_view bytes);
    std::size_t ReadBody(std::string_view bytes);

    const RequestLimits limits;
    const std::function<bool(const HttpRequest& request)> inPieces;
    bool isInPieces = false;
    std::size_t bodyLimit; ///< bytes
    std::size_t bodySize = 0;
    HeaderScan scan;
    State state = State::Header;
    Refusal refusal{};
    HttpRequest request;
    bool isHead = false;
    bool isHttp11 = false;
    bool expectsContinue = false;

private:
    void Refuse(const ProblemType& type, std::string detail) {
        refusal = {type, std::move(detail)};
        state = State::Refused;
    }
    void RefuseSyntax(std::string_view header, const error_code& error);
    void CheckFields();
    void RefuseBodySize() {
        Refuse(WireProblems::BodyTooLarge, "The body has more than " + std::to_string(bodyLimit) + " bytes.");
    }
    void CheckFraming();
    void CheckExpectation();

    void on_request_impl(http::verb, boost::beast::string_view method, boost::beast::string_view target, int version,
                         error_code&) override {
        request.method = std::string(method);
        request.target = std::string(target);
        isHttp11 = version == 11;
    }
    void on_response_impl(int, boost::beast::string_view, int, error_code&) override {}
    void on_field_impl(http::field, boost::beast::string_view name, boost::beast::string_view value,
                       error_code&) override {
        if (!is_header_done()) { // trailers are dropped
            request.fields.Add(std::string(name), std::string(value));
        }
    }
    void on_header_impl(error_code&) override {}
    void on_body_init_impl(const boost::optional<std::uint64_t>&, error_code&) override {}
    std::size_t on_body_impl(boost::beast::string_view bytes, error_code&) override {
        request.body.append(bytes.data(), bytes.size());
        bodySize += bytes.size();
        return bytes.size();
    }
    void on_chunk_header_impl(std::uint64_t size, boost::beast::string_view extensions, error_code& error) override {
        framing += extensions.size();
        if (framing > MaxFraming) {
            error = http::error::bad_chunk_extension;
        } else if (size > bodyLimit - bodySize) {
            error = http::error::body_limit;
        }
    }
    std::size_t on_chunk_body_impl(std::uint64_t, boost::beast::string_view bytes, error_code& error) override {
        return on_body_impl(bytes, error);
    }
    void on_finish_impl(error_code&) override {}

    std::size_t framing = 0; ///< bytes of the extensions of chunks
};

std::size_t RequestParser::Impl::ReadHeader(std::string_view bytes) {
    isHead = bytes.starts_with("HEAD ");
    if (auto bad = scan.Scan(bytes)) {
        Refuse(bad->type, std::move(bad->detail));
        return 0;
    }
    const std::size_t size = scan.Size();
    if (scan.IsEmptyLine()) {
        scan = HeaderScan(limits);
    } else if (size > 0) {
        error_code error;
        put(boost::asio::buffer(bytes.data(), size), error);
        state = is_done() ? State::Done : State::Body;
        if (error) {
            RefuseSyntax(bytes, error);
        } else {
            CheckFields();
        }
    }
    return size;
}

void RequestParser::Impl::RefuseSyntax(std::string_view header, const error_code& error) {
    if (error == http::error::bad_version && HasVersion(header)) {
        Refuse(WireProblems::Version, "The version is neither HTTP/1.1 nor HTTP/1.0.");
    } else if (error == http::error::bad_method || error == http::error::bad_target ||
               error == http::error::bad_version) {
        Refuse(WireProblems::Malformed,
               "The first line isn't a method, a target and a version with one space between them.");
    } else if (error == http::error::bad_content_length) {
        Refuse(WireProblems::Malformed, "Content-Length isn't one decimal number, the only length of the body.");
    } else if (error == http::error::bad_transfer_encoding) {
        Refuse(WireProblems::Malformed, "Transfer-Encoding isn't the only field that says where the body ends.");
    } else {
        Refuse(WireProblems::Malformed, "A field of the header isn't a name, a colon and a value.");
    }
}

void RequestParser::Impl::CheckFields() {
    if (request.fields.Count("Host") > 1) {
        Refuse(WireProblems::Malformed, "There are several fields Host.");
    } else if (isHttp11 && request.fields.Count("Host") == 0) {
        Refuse(WireProblems::Malformed, "The field Host is missing.");
    } else if (std::ranges::find(HandledMethods, request.method) == HandledMethods.end()) {
        Refuse(WireProblems::NotImplemented, "The method is none of GET, HEAD, POST, PUT, PATCH, DELETE and OPTIONS.");
    } else {
        CheckFraming();
    }
}

// The parser accepts equal lengths, and treats a request with another coding than "chunked" as one without a body.
void RequestParser::Impl::CheckFraming() {
    isInPieces = inPieces && inPieces(request);
    bodyLimit = isInPieces ? limits.pieces : limits.body;
    const auto coding = request.fields.Find("Transfer-Encoding");
    const auto length = request.fields.Find("Content-Length");
    if (length && (coding || length->find(',') != std::string::npos)) {
        Refuse(WireProblems::Malformed, "Content-Length isn't the only field that says where the body ends.");
    } else if (coding && !isHttp11) {
        Refuse(WireProblems::Malformed, "HTTP/1.0 has no Transfer-Encoding.");
    } else if (coding && !boost::beast::iequals(*coding, "chunked")) {
        Refuse(WireProblems::NotImplemented, "Transfer-Encoding isn't \"chunked\".");
    } else if (length && content_length().value_or(0) > bodyLimit) {
        RefuseBodySize();
    } else {
        CheckExpectation();
    }
}

void RequestParser::Impl::CheckExpectation() {
    const auto expectation = request.fields.Find("Expect");
    if (!expectation || !isHttp11) {
        return;
    }
    if (!boost::beast::iequals(*expectation, "100-continue")) {
        Refuse(WireProblems::Expectation, "Expect isn't \"100-continue\".");
    } else {
        expectsContinue = state == State::Body;
    }
}

std::size_t RequestParser::Impl::ReadBody(std::string_view bytes) {
    error_code error;
    std::size_t used = 0;
    // One line or piece of a chunk at a time. With less than the shortest end of chunks there is nothing to decide, and
    // the parser mustn't be called again with less when it has seen the last chunk.
    const std::size_t least = chunked() ? ShortestBodyEnd.size() : 1;
    while (!is_done() && !error && bytes.size() - used >= least) {
        used += put(boost::asio::buffer(bytes.data() + used, bytes.size() - used), error);
    }
    if (error == http::error::body_limit) {
        RefuseBodySize();
    } else if (error && error != http::error::need_more) {
        Refuse(WireProblems::Malformed, "The body isn't in correct chunks.");
    } else if (is_done()) {
        state = State::Done;
    } else if (bytes.size() - used >= MaxFraming) {
        Refuse(WireProblems::Malformed, "There are more than " + std::to_string(MaxFraming) +
                                            " bytes between the chunks of the body, or behind them.");
    }
    return used;
}

RequestParser::RequestParser(const RequestLimits& limits, std::function<bool(const HttpRequest& request)> inPieces)
    : impl(std::make_unique<Impl>(limits, std::move(inPieces))) {}

RequestParser::~RequestParser() = default;

std::size_t RequestParser::Read(std::span<const unsigned char> bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return impl->state == State::Header ? impl->ReadHeader(text) : impl->ReadBody(text);
}

RequestParser::State RequestParser::GetState() const {
    return impl->state;
}

const Refusal& RequestParser::GetRefusal() const {
    return impl->refusal;
}

HttpRequest& RequestParser::Request() {
    return impl->request;
}

std::string RequestParser::TakeBody() {
    return std::exchange(impl->request.body, "");
}

bool RequestParser::IsHead() const {
    return impl->isHead;
}

bool RequestParser::IsHttp11() const {
    return impl->isHttp11;
}

bool RequestParser::KeepsAlive() const {
    return impl->keep_alive();
}

bool RequestParser::ExpectsContinue() const {
    return impl->expectsContinue;
}

bool RequestParser::IsInPieces() const {
    return impl->isInPieces;
}

std::size_t RequestParser::BodySize() const {
    return impl->bodySize;
}

} // namespace Sensor::Http
