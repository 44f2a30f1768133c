// A server of another library's protocol: a session that feeds a parser with the bytes it receives.

#include "Net/BufferedSession.h"
#include "Tests/Net/EchoServer.h"

#include <cstdint>
#include <memory>
#include <string>

#include <boost/beast/http.hpp>
#include <gtest/gtest.h>

namespace Net {
namespace {

namespace http = boost::beast::http;

/// HTTP/1.1. Answers each request with its body; a request that can't be parsed, or has too much in it, with 400, and
/// ends.
class HttpEchoSession : public BufferedSession {
public:
    HttpEchoSession()
        : BufferedSession(MaxHeader + 1024, MaxBody + 1024) {}

    void SetMayWrite(bool) override {}
    bool Broken() const override { return broken; }

    std::size_t Process() override {
        std::size_t answered = 0;
        while (!broken && !Input().empty() && OutputSpace().size() >= MaxBody + 1024) {
            if (!parser) {
                parser = std::make_unique<http::request_parser<http::string_body>>();
                parser->eager(true);
                parser->header_limit(MaxHeader);
                parser->body_limit(MaxBody);
            }
            boost::beast::error_code error;
            Consume(parser->put(boost::asio::buffer(Input().data(), Input().size()), error));
            if (error == http::error::need_more) {
                break;
            }
            if (error) {
                Answer(http::status::bad_request, error.message() + "\n", false);
            } else if (parser->is_done()) {
                Answer(http::status::ok, parser->get().body(), parser->keep_alive());
            } else {
                continue;
            }
            parser.reset();
            ++answered;
        }
        return answered;
    }

private:
    static constexpr std::uint32_t MaxHeader = 4096;
    static constexpr std::uint32_t MaxBody = 16384;

    void Answer(http::status status, const std::string& body, bool keepAlive) {
        std::string text = "HTTP/1.1 " + std::to_string(static_cast<unsigned>(status)) + " " +
                           std::string(http::obsolete_reason(status)) +
                           "\r\nContent-Length: " + std::to_string(body.size()) +
                           (keepAlive ? "\r\n\r\n" : "\r\nConnection: close\r\n\r\n") + body;
        Append({reinterpret_cast<const unsigned char*>(text.data()), text.size()});
        broken = !keepAlive;
    }

    std::unique_ptr<http::request_parser<http::string_body>> parser;
    bool broken = false;
};

class HttpEchoTest : public TcpServerTest {
protected:
    HttpEchoTest() {
        Open({}, [](bool) { return std::make_unique<HttpEchoSession>(); });
    }

    /// All that the server answers to the bytes.
    std::string Ask(const std::string& bytes) {
        LineClient client(port);
        client.Send(bytes);
        client.HalfClose();
        return client.Rest();
    }
};

const std::string Post = "POST / HTTP/1.1\r\nHost: sensor\r\nContent-Length: 5\r\n\r\nhello";
const std::string Hello = "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhello";

TEST_F(HttpEchoTest, AnswersARequestHoweverItIsCut) {
    for (std::size_t cut = 1; cut < Post.size(); ++cut) {
        LineClient client(port);
        client.Send(Post.substr(0, cut));
        EXPECT_EQ(Ask(Post), Hello) << "another client meanwhile";
        client.Send(Post.substr(cut));
        client.HalfClose();
        ASSERT_EQ(client.Rest(), Hello) << cut;
    }
}

TEST_F(HttpEchoTest, AnswersPipelinedRequestsInTheirOrder) {
    std::string requests;
    std::string answers;
    for (int i = 0; i < 500; ++i) {
        requests += Post;
        answers += Hello;
    }
    EXPECT_EQ(Ask(requests), answers);
}

TEST_F(HttpEchoTest, AnswersABodyInChunks) {
    EXPECT_EQ(
        Ask("PUT /x HTTP/1.1\r\nHost: sensor\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nhe\r\n3\r\nllo\r\n0\r\n\r\n"),
        Hello);
}

TEST_F(HttpEchoTest, AnswersABodyThatIsLongerThanItsBuffer) {
    const std::string body(16384, 'x');
    EXPECT_EQ(Ask("POST / HTTP/1.1\r\nHost: sensor\r\nContent-Length: 16384\r\n\r\n" + body),
              "HTTP/1.1 200 OK\r\nContent-Length: 16384\r\n\r\n" + body);
}

TEST_F(HttpEchoTest, ClosesWhenTheClientAsksForIt) {
    LineClient client(port);
    client.Send("GET / HTTP/1.1\r\nHost: sensor\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(client.Rest(), "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
}

TEST_F(HttpEchoTest, RefusesWhatIsNoRequestOrTooMuch) {
    for (const std::string& bad :
         {std::string("\x16\x03\x01 TLS\r\n\r\n"), std::string("GET / HTTP/1.1\r\nX: ") + std::string(4200, 'x'),
          std::string("POST / HTTP/1.1\r\nContent-Length: 16385\r\n\r\n")}) {
        EXPECT_EQ(Ask(Post + bad).substr(0, Hello.size() + 24), Hello + "HTTP/1.1 400 Bad Request") << bad;
    }
    EXPECT_EQ(Ask(Post), Hello);
}

} // namespace
} // namespace Net
