#include "Sensor/Http/RequestParser.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor::Http {
namespace {

class RequestParserTest : public testing::Test {
protected:
    using State = RequestParser::State;

    static std::span<const unsigned char> BytesOf(std::string_view text) {
        return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
    }

    /// What comes of a request that is given in pieces of `step` bytes.
    struct Outcome {
        explicit Outcome(std::string_view bytes, std::size_t step = std::string_view::npos,
                         const RequestLimits& limits = {})
            : parser(limits) {
            std::size_t end = 0;
            while (IsOpen() && end < bytes.size()) {
                end += std::min(step, bytes.size() - end);
                // As long as bytes are used: the body is read after the header.
                for (std::size_t some = 1; IsOpen() && some > 0 && used < end; used += some) {
                    some = parser.Read(BytesOf(bytes.substr(used, end - used)));
                }
            }
            status = parser.GetState() == State::Refused ? parser.GetRefusal().type.status : 0;
        }

        bool IsOpen() const { return parser.GetState() == State::Header || parser.GetState() == State::Body; }

        RequestParser parser;
        std::size_t used = 0;
        unsigned status = 0; ///< 0: not refused
    };

    static std::string Get(const std::string& fields) { return "GET /a HTTP/1.1\r\n" + fields + "\r\n"; }
    static std::string Post(const std::string& fields, const std::string& body) {
        return "POST /a HTTP/1.1\r\nHost: sensor\r\n" + fields + "\r\n" + body;
    }
    static std::string Chunked(const std::string& chunks) { return Post("Transfer-Encoding: chunked\r\n", chunks); }
};

TEST_F(RequestParserTest, ReadsARequestInAnyPieces) {
    const std::string bytes =
        "PATCH /controls/x?a=%20 HTTP/1.1\r\nHost: sensor:80\r\nAccept:a\r\nX-Empty:\r\naccept: \t b \r\n"
        "Content-Length: 5\r\n\r\nhello";
    const std::string behind = "GET /";
    for (std::size_t step = 1; step <= bytes.size() + behind.size(); ++step) {
        Outcome outcome(bytes + behind, step);
        ASSERT_EQ(outcome.parser.GetState(), State::Done) << step;
        EXPECT_EQ(outcome.used, bytes.size()) << "what is behind it isn't its own";
        const HttpRequest& request = outcome.parser.Request();
        EXPECT_EQ(request.method, "PATCH");
        EXPECT_EQ(request.target, "/controls/x?a=%20");
        EXPECT_EQ(request.fields.Find("host"), "sensor:80");
        EXPECT_EQ(request.fields.Find("Accept"), "a, b");
        EXPECT_EQ(request.fields.Find("X-Empty"), "");
        EXPECT_EQ(request.body, "hello");
        EXPECT_TRUE(outcome.parser.IsHttp11());
        EXPECT_TRUE(outcome.parser.KeepsAlive());
        EXPECT_FALSE(outcome.parser.ExpectsContinue());
        EXPECT_FALSE(outcome.parser.IsHead());
    }
}

TEST_F(RequestParserTest, ReadsChunksInAnyPieces) {
    for (const std::string& chunks :
         {std::string("5\r\nhello\r\n0\r\n\r\n"), std::string("1\r\nh\r\n004\r\nello\r\n000\r\n\r\n"),
          std::string("3;a=b;c=\"d\"\r\nhel\r\n2\r\nlo\r\n0;e\r\nContent-Language: en\r\nHost: other\r\n\r\n")}) {
        const std::string bytes = Chunked(chunks);
        for (std::size_t step = 1; step <= bytes.size(); ++step) {
            Outcome outcome(bytes + "\r\n", step);
            ASSERT_EQ(outcome.parser.GetState(), State::Done) << step << " of " << chunks;
            EXPECT_EQ(outcome.used, bytes.size());
            EXPECT_EQ(outcome.parser.Request().body, "hello");
            EXPECT_EQ(outcome.parser.Request().fields.Find("Host"), "sensor") << "trailers are dropped";
        }
    }
    const std::string empty = Chunked("0\r\n\r\n");
    for (std::size_t step = 1; step <= empty.size(); ++step) {
        EXPECT_EQ(Outcome(empty, step).parser.GetState(), State::Done) << step;
    }
}

TEST_F(RequestParserTest, ReadsTheNameOfACodingInAnyCase) {
    Outcome outcome(Post("Transfer-Encoding: ChunKed\r\n", "5\r\nhello\r\n0\r\n\r\n"));
    EXPECT_EQ(outcome.parser.GetState(), State::Done);
    EXPECT_EQ(outcome.parser.Request().body, "hello");
}

TEST_F(RequestParserTest, SkipsEmptyLinesBeforeARequest) {
    for (const std::size_t step : {1U, 2U, 3U, 100U}) {
        Outcome outcome("\r\n\r\n" + Get("Host: a\r\n"), step);
        EXPECT_EQ(outcome.parser.GetState(), State::Done);
        EXPECT_EQ(outcome.parser.Request().method, "GET");
    }
}

TEST_F(RequestParserTest, KnowsWhetherTheConnectionStaysOpen) {
    const auto keepsAlive = [](const std::string& version, const std::string& fields) {
        return Outcome("GET / HTTP/" + version + "\r\nHost: a\r\n" + fields + "\r\n").parser.KeepsAlive();
    };
    EXPECT_TRUE(keepsAlive("1.1", ""));
    EXPECT_FALSE(keepsAlive("1.1", "Connection: close\r\n"));
    EXPECT_FALSE(keepsAlive("1.1", "Connection: x, Close\r\n"));
    EXPECT_FALSE(keepsAlive("1.0", ""));
    EXPECT_TRUE(keepsAlive("1.0", "Connection: Keep-Alive\r\n"));
    EXPECT_TRUE(Outcome("GET / HTTP/1.0\r\n\r\n").parser.GetState() == State::Done) << "Host isn't needed";
}

TEST_F(RequestParserTest, KnowsWhoWaitsForContinue) {
    const auto expects = [](const std::string& version, const std::string& length) {
        return Outcome("POST / HTTP/" + version + "\r\nHost: a\r\nExpect: 100-Continue\r\nContent-Length: " + length +
                       "\r\n\r\n")
            .parser.ExpectsContinue();
    };
    EXPECT_TRUE(expects("1.1", "1"));
    EXPECT_FALSE(expects("1.1", "0")) << "there is no body";
    EXPECT_FALSE(expects("1.0", "1")) << "it doesn't know that";
}

TEST_F(RequestParserTest, RefusesWhatIsNoCorrectRequest) {
    const std::string host = "Host: a\r\n";
    const std::vector<std::pair<unsigned, std::string>> refused{
        // the first line
        {400, "\x16\x03\x01\x02"},
        {400, " / HTTP/1.1\r\n" + host + "\r\n"},
        {400, "GET\r\n\r\n"},
        {400, "GET /\r\n\r\n"},
        {400, "GET  / HTTP/1.1\r\n" + host + "\r\n"},
        {400, "GET / HTTP/1.1 \r\n" + host + "\r\n"},
        {400, "GET /a b HTTP/1.1\r\n" + host + "\r\n"},
        {400, "G(T / HTTP/1.1\r\n" + host + "\r\n"},
        {400, "GET / HTCPCP/1.0\r\n" + host + "\r\n"},
        {400, "GET / http/1.1\r\n" + host + "\r\n"},
        {400, "GET / HTTP/1.1\n" + host + "\n"},
        {400, std::string("GET /\0 HTTP/1.1\r\n", 17)},
        {400, "GET /\x7F HTTP/1.1\r\n" + host + "\r\n"},
        {505, "GET / HTTP/2.0\r\n" + host + "\r\n"},
        {505, "GET / HTTP/1.2\r\n" + host + "\r\n"},
        {505, "GET / HTTP/0.9\r\n" + host + "\r\n"},
        {505, "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n"},
        {501, "TRACE / HTTP/1.1\r\n" + host + "\r\n"},
        {501, "CONNECT a:80 HTTP/1.1\r\n" + host + "\r\n"},
        {501, "get / HTTP/1.1\r\n" + host + "\r\n"},
        {501, "BREW / HTTP/1.1\r\n" + host + "\r\n"},
        // fields
        {400, Get("")},
        {400, Get("Host: a\r\nhost: a\r\n")},
        {400, Get(host + "X : b\r\n")},
        {400, Get(host + "X\r\n")},
        {400, Get(host + ": b\r\n")},
        {400, Get(host + "X: a\r\n b\r\n")},
        {400, Get(host + "X: a\r\n\tb\r\n")},
        {400, Get(" X: a\r\n" + host)},
        {400, Get(host + "X: a\nY: b\r\n")},
        {400, Get(host + "X: a\rb\r\n")},
        {400, Get(host + "X: a\r\r\n")},
        {400, Get(host + "X: a" + std::string(1, '\0') + "\r\n")},
        {400, Get(host + "X: \x1B\r\n")},
        {400, Get(host + "Connection: ,(\r\n")},
        {417, Get(host + "Expect: 200-ok\r\n")},
        {417, Get(host + "Expect: 100-continue, more\r\n")},
        // where the body ends
        {400, Post("Content-Length: 5\r\nContent-Length: 6\r\n", "hello")},
        {400, Post("Content-Length: 5\r\nContent-Length: 5\r\n", "hello")},
        {400, Post("Content-Length: 5, 5\r\n", "hello")},
        {400, Post("Content-Length: +5\r\n", "hello")},
        {400, Post("Content-Length: -5\r\n", "hello")},
        {400, Post("Content-Length: 0x5\r\n", "hello")},
        {400, Post("Content-Length: 5 5\r\n", "hello")},
        {400, Post("Content-Length:\r\n", "hello")},
        {400, Post("Content-Length: 18446744073709551617\r\n", "hello")},
        {400, Post("Content-Length: 5\r\nTransfer-Encoding: chunked\r\n", "0\r\n\r\n")},
        {400, Post("Transfer-Encoding: chunked\r\nContent-Length: 5\r\n", "0\r\n\r\n")},
        {400, Post("Transfer-Encoding: identity\r\nContent-Length: 5\r\n", "hello")},
        {400, Post("Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n", "0\r\n\r\n")},
        {400, "POST / HTTP/1.0\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n"},
        {501, Post("Transfer-Encoding: gzip\r\n", "")},
        {501, Post("Transfer-Encoding: gzip, chunked\r\n", "0\r\n\r\n")},
        {501, Post("Transfer-Encoding: chunked, gzip\r\n", "0\r\n\r\n")},
        {501, Post("Transfer-Encoding: \"chunked\"\r\n", "0\r\n\r\n")},
        {501, Post("Transfer-Encoding: xchunked\r\n", "0\r\n\r\n")},
        {413, Post("Content-Length: 1048577\r\n", "")},
        {413, Post("Content-Length: 18446744073709551615\r\n", "")},
        // chunks
        {400, Chunked("x\r\nhello\r\n0\r\n\r\n")},
        {400, Chunked("-5\r\nhello\r\n0\r\n\r\n")},
        {400, Chunked("0x5\r\nhello\r\n0\r\n\r\n")},
        {400, Chunked("5 \r\nhello\r\n0\r\n\r\n")},
        {400, Chunked("5\nhello\r\n0\r\n\r\n")},
        {400, Chunked("5\r\nhello!\r\n0\r\n\r\n")},
        {400, Chunked("5\r\nhell\r\n0\r\n\r\n")},
        {400, Chunked("\r\n0\r\n\r\n")},
        {400, Chunked("5;\r\nhello\r\n0\r\n\r\n")},
        {400, Chunked("5;a=\"b\r\nhello\"\r\n0\r\n\r\n")},
        {400, Chunked("10000000000000005\r\nhello\r\n0\r\n\r\n")},
        {400, Chunked("0\r\nX\r\n\r\n")},
        {413, Chunked("100001\r\n")},
        {413, Chunked("FFFFFFFFFFFFFFFF\r\n")},
        {413, Chunked("1\r\nx\r\n100000\r\n")},
    };
    for (const auto& [status, bytes] : refused) {
        // What follows a cut line completes it, so that each piece can be waited for.
        for (const std::size_t step : {std::string::npos, std::size_t{1}, std::size_t{7}}) {
            EXPECT_EQ(Outcome(bytes + "\r\n\r\n", step).status, status) << bytes;
        }
    }
}

TEST_F(RequestParserTest, RefusesWhatIsTooLarge) {
    const RequestLimits limits{.requestLine = 64, .header = 128, .fields = 3, .body = 10};
    const auto status = [&](const std::string& bytes) {
        const unsigned whole = Outcome(bytes, bytes.size(), limits).status;
        EXPECT_EQ(Outcome(bytes, 1, limits).status, whole) << bytes;
        return whole;
    };
    const auto line = [](std::size_t size) { return "GET /" + std::string(size - 16, 'a') + " HTTP/1.1\r\n"; };
    EXPECT_EQ(status(line(64) + "Host: a\r\n\r\n"), 0U);
    EXPECT_EQ(status(line(65)), 414U);
    EXPECT_EQ(status(std::string(65, 'a')), 414U) << "though its end isn't there";
    const std::string begin = "GET / HTTP/1.1\r\nHost: a\r\nX: ";
    EXPECT_EQ(status(begin + std::string(128 - begin.size() - 4, 'x') + "\r\n\r\n"), 0U);
    EXPECT_EQ(status(begin + std::string(129 - begin.size() - 4, 'x') + "\r\n\r\n"), 431U);
    EXPECT_EQ(status(begin + std::string(200, 'x')), 431U) << "though its end isn't there";
    EXPECT_EQ(status("GET / HTTP/1.1\r\nHost: a\r\nB:\r\nC:\r\n\r\n"), 0U);
    EXPECT_EQ(status("GET / HTTP/1.1\r\nHost: a\r\nB:\r\nC:\r\nD:\r\n"), 431U);
    EXPECT_EQ(status("POST / HTTP/1.1\r\nHost: a\r\nContent-Length: 10\r\n\r\n0123456789"), 0U);
    EXPECT_EQ(status("POST / HTTP/1.1\r\nHost: a\r\nContent-Length: 11\r\n\r\n"), 413U);
    const std::string chunked = "POST / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\n";
    EXPECT_EQ(status(chunked + "5\r\n01234\r\n5\r\n56789\r\n0\r\n\r\n"), 0U);
    EXPECT_EQ(status(chunked + "5\r\n01234\r\n6\r\n"), 413U);
}

TEST_F(RequestParserTest, RefusesMuchBetweenChunks) {
    const std::string much(RequestParser::MaxFraming, 'a');
    for (const std::string& chunks :
         {"5;" + much, "1;" + much + "\r\n", "0\r\nX: " + much, "5;a=\"" + much, "0\r\nX: a\r\n" + much}) {
        for (const std::size_t step : {std::string::npos, std::size_t{1}, std::size_t{100}}) {
            EXPECT_EQ(Outcome(Chunked(chunks), step).status, 400U) << chunks.substr(0, 10);
        }
    }
    std::string extended;
    for (int i = 0; i < 100; ++i) {
        extended += "1;" + std::string(100, 'a') + "\r\nx\r\n";
    }
    EXPECT_EQ(Outcome(Chunked(extended)).status, 400U) << "all together are too much";
}

TEST_F(RequestParserTest, KnowsHeadOfARefusedRequest) {
    EXPECT_TRUE(Outcome("HEAD / HTTP/1.1\r\n\r\n").parser.IsHead());
    EXPECT_TRUE(Outcome("HEAD /" + std::string(9000, 'a')).parser.IsHead());
    EXPECT_FALSE(Outcome("HEADS / HTTP/1.1\r\n\r\n").parser.IsHead());
}

} // namespace
} // namespace Sensor::Http
