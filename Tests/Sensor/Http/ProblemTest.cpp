#include "Sensor/Http/Problem.h"

#include <gtest/gtest.h>

namespace Sensor::Http {
namespace {

TEST(ProblemTest, SaysWhatIsWrong) {
    const HttpResponse response = ProblemResponse(404, "not-found", "Not found", "There is no \"/x\".");
    EXPECT_EQ(response.status, 404U);
    EXPECT_EQ(response.fields.Find("Content-Type"), "application/problem+json");
    EXPECT_EQ(*response.body, R"({"type":"/problems/not-found","title":"Not found","status":404,)"
                              R"("detail":"There is no \"/x\"."})");
}

TEST(ProblemTest, ReplacesWhatIsNoUtf8) {
    EXPECT_EQ(*ProblemResponse(400, "bad-request", "Bad request", "a\xFFz\r").body,
              "{\"type\":\"/problems/bad-request\",\"title\":\"Bad request\",\"status\":400,"
              "\"detail\":\"a\xEF\xBF\xBDz\\r\"}");
}

} // namespace
} // namespace Sensor::Http
