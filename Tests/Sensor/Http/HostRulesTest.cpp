#include "Sensor/Http/HostRules.h"

#include <gtest/gtest.h>

namespace Sensor::Http {
namespace {

unsigned StatusOf(const HttpRequest& request, const std::optional<std::string>& authority = std::nullopt) {
    const auto refusal = HostRules({"Sensor.local:8080", "10.0.0.7", "[fe80::1]"}).Check(request, authority);
    return refusal ? refusal->status : 200;
}

unsigned StatusOfHost(const char* host) {
    return StatusOf({.method = "GET", .target = "/", .fields = {{"Host", host}}});
}

unsigned StatusOfOrigin(const char* method, const char* host, const char* origin) {
    return StatusOf({.method = method, .target = "/", .fields = {{"Host", host}, {"Origin", origin}}});
}

TEST(HostRulesTest, LoopbackAndTheGivenNamesAreThisHost) {
    for (const char* const host :
         {"localhost", "LOCALHOST:8080", "127.0.0.1", "127.1.2.3:1", "127.0.0.1:", "[::1]", "[::1]:8080", "[0:0::1]",
          "sensor.local", "SENSOR.local:1", "10.0.0.7:80", "[FE80::1]"}) {
        EXPECT_EQ(StatusOfHost(host), 200U) << host;
    }
}

TEST(HostRulesTest, AnotherHostIsNotThisOne) {
    for (const char* const host : {"sensor",
                                   "evil.example",
                                   "localhost.evil.example",
                                   "127.0.0.1.evil.example",
                                   "10.0.0.8",
                                   "[::2]",
                                   "[::]",
                                   "[1::1]",
                                   "[::127.0.0.1]",
                                   "127",
                                   "1.127.0.0",
                                   "0.0.0.0",
                                   "2130706433",
                                   "0x7f.0.0.1",
                                   "0177.0.0.1",
                                   "localhost.",
                                   "sensor.local.",
                                   "127.0.0.1@evil.example",
                                   "[::1%25lo]",
                                   "null",
                                   "localhost, localhost"}) {
        EXPECT_EQ(StatusOfHost(host), 421U) << host;
    }
}

TEST(HostRulesTest, AHostIsANameWithAPort) {
    for (const char* const host : {"", ":80", "localhost:http", "[::1]x", "localhost:1:2", "[::1"}) {
        EXPECT_NE(StatusOfHost(host), 200U) << host;
    }
    EXPECT_EQ(StatusOf({.method = "GET", .target = "/"}), 400U);
    EXPECT_EQ(StatusOf({.method = "GET", .target = "/", .fields = {{"Host", "localhost"}, {"Host", "localhost"}}}),
              421U);
}

TEST(HostRulesTest, TheHostOfTheTargetCountsInsteadOfTheField) {
    const auto status = [](const char* method, const char* host, const char* authority) {
        return StatusOf(
            {.method = method, .target = "/", .fields = {{"Host", host}, {"Origin", "http://localhost:8080"}}},
            authority);
    };
    EXPECT_EQ(status("GET", "evil.example", "localhost"), 200U);
    EXPECT_EQ(status("GET", "localhost", "evil.example"), 421U);
    EXPECT_EQ(status("GET", "localhost", "user@localhost"), 421U);
    EXPECT_EQ(status("GET", "localhost", "localhost:8080@evil.example"), 400U);
    EXPECT_EQ(status("GET", "localhost", ""), 400U);
    EXPECT_EQ(status("POST", "localhost", "localhost:8080"), 200U);
    EXPECT_EQ(status("POST", "localhost:8080", "localhost"), 403U);
}

TEST(HostRulesTest, APageOfAnotherHostChangesNothing) {
    for (const char* const method : {"POST", "PATCH", "PUT", "DELETE", "OTHER"}) {
        EXPECT_EQ(StatusOfOrigin(method, "localhost:8080", "http://localhost:8080"), 200U) << method;
        for (const char* const origin : {"http://evil.example", "null", "", "http://localhost", "http://localhost:8081",
                                         "localhost:8080", "ftp://localhost:8080", "http://localhost:8080, http://evil",
                                         "http://localhost:8080/", "http://127.0.0.1:8080"}) {
            EXPECT_EQ(StatusOfOrigin(method, "localhost:8080", origin), 403U) << method << ' ' << origin;
        }
    }
    for (const char* const method : {"GET", "HEAD", "OPTIONS"}) {
        EXPECT_EQ(StatusOfOrigin(method, "localhost:8080", "http://evil.example"), 200U) << method;
    }
}

TEST(HostRulesTest, TheSchemesOwnPortNeedNotBeWritten) {
    EXPECT_EQ(StatusOfOrigin("POST", "localhost", "http://LOCALHOST:80"), 200U);
    EXPECT_EQ(StatusOfOrigin("POST", "localhost:80", "http://localhost"), 200U);
    EXPECT_EQ(StatusOfOrigin("POST", "sensor.local", "https://sensor.local"), 200U);
    EXPECT_EQ(StatusOfOrigin("POST", "sensor.local:443", "https://sensor.local"), 200U);
    EXPECT_EQ(StatusOfOrigin("POST", "localhost:80", "https://localhost"), 403U);
}

} // namespace
} // namespace Sensor::Http
