#include "Sensor/Http/ResponseHead.h"

#include "Tests/Sensor/Http/FakeHandler.h"
#include "Tests/Sensor/Http/ResponseReader.h"

#include <gtest/gtest.h>

namespace Sensor::Http {
namespace {

class ResponseHeadTest : public testing::Test {
protected:
    static std::string HeadOf(const HttpResponse& response, const ResponseFraming& framing = {}) {
        std::string head;
        AppendHead(head, response, framing);
        const std::size_t date = head.find("Date: ");
        head.erase(date, head.find("\r\n", date) + 2 - date);
        return head;
    }
};

TEST_F(ResponseHeadTest, WritesTimesAsTheFieldDateHasThem) {
    EXPECT_EQ(HttpDate(784111777), "Sun, 06 Nov 1994 08:49:37 GMT");
    EXPECT_EQ(HttpDate(0), "Thu, 01 Jan 1970 00:00:00 GMT");
}

TEST_F(ResponseHeadTest, SaysWhereTheBodyEnds) {
    const auto body = std::make_shared<const std::string>("hello");
    const auto stream = std::make_shared<FakeStream>(std::make_shared<FakeStream::Source>());
    EXPECT_EQ(HeadOf({.status = 201, .fields = {{"Location", "/x"}}, .body = body}),
              "HTTP/1.1 201 Created\r\nLocation: /x\r\nContent-Length: 5\r\n\r\n");
    EXPECT_EQ(HeadOf({}), "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    EXPECT_EQ(HeadOf({.status = 204, .body = body}), "HTTP/1.1 204 No Content\r\n\r\n");
    EXPECT_EQ(HeadOf({.status = 304}), "HTTP/1.1 304 Not Modified\r\n\r\n");
    EXPECT_EQ(HeadOf({.stream = stream}, {.closes = true}),
              "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(HeadOf({.stream = stream}, {.isHttp11 = false, .closes = true}),
              "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
}

TEST_F(ResponseHeadTest, SaysWhetherTheConnectionStaysOpen) {
    EXPECT_EQ(HeadOf({.status = 204}, {.closes = true}), "HTTP/1.1 204 No Content\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(HeadOf({.status = 204}, {.isHttp11 = false}),
              "HTTP/1.1 204 No Content\r\nConnection: keep-alive\r\n\r\n");
}

TEST_F(ResponseHeadTest, LeavesNoControlCharacterInAValue) {
    EXPECT_EQ(HeadOf({.status = 204, .fields = {{"Location", "/a\r\nX: b\tc\x7F"}}}),
              "HTTP/1.1 204 No Content\r\nLocation: /a  X: b c \r\n\r\n");
}

} // namespace
} // namespace Sensor::Http
