// Two people who edit the same service.

#include "Tests/EndToEnd/HttpClient.h"
#include "Tests/EndToEnd/HttpConnection.h"
#include "Tests/EndToEnd/VirtualSensor.h"

#include <array>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Tests {
namespace {

using Json = nlohmann::json;

TEST(HttpEditors, OfTwoWithTheSameTagOneWinsEachTime) {
    constexpr int Races = 1000;
    constexpr const char* Service = "/controls/modbus";
    VirtualSensor sensor;
    const std::uint16_t port = HttpClient::Of(sensor).Port();
    ASSERT_TRUE(sensor.Process().WaitForLine("Scanning."));
    std::array<HttpConnection, 2> editors{HttpConnection(port), HttpConnection(port)};
    std::string tag = editors[0].Ask("GET", Service).Field("etag");
    for (int race = 0; race < Races; ++race) {
        // Each value is another one than those before, so each change that is made raises the revision.
        const std::array<int, 2> values{2 * race + 1, 2 * race + 2};
        for (std::size_t turn = 0; turn < 2; ++turn) {
            const std::size_t editor = (static_cast<std::size_t>(race) + turn) % 2;
            editors[editor].Send("PATCH", Service, {{"parameters", {{"idleTimeout", values[editor]}}}},
                                 {"If-Match: " + tag});
        }
        const std::array<HttpAnswer, 2> answers{editors[0].Receive(), editors[1].Receive()};
        const std::size_t winner = answers[0].status == 200 ? 0 : 1;
        const HttpAnswer& won = answers[winner];
        const HttpAnswer& lost = answers[1 - winner];
        ASSERT_EQ(won.status, 200) << race << ": " << won.body;
        ASSERT_EQ(lost.status, 412) << race << ": " << lost.body;
        ASSERT_EQ(won.body.at("parameters").at("idleTimeout"), values[winner]) << race;
        ASSERT_NE(won.Field("etag"), tag) << race;
        ASSERT_EQ(lost.Field("etag"), won.Field("etag")) << race;
        tag = won.Field("etag");
    }
    const HttpAnswer last = editors[0].Ask("GET", Service);
    EXPECT_EQ(last.Field("etag"), tag) << "who lost has changed nothing";
}

} // namespace
} // namespace Tests
