#include "Sensor/Http/HttpRequest.h"

#include <gtest/gtest.h>

namespace Sensor::Http {
namespace {

TEST(HttpFieldsTest, FindsAFieldWhateverTheCaseOfItsName) {
    const HttpFields fields{{"If-Match", "\"a\""}, {"Host", "sensor"}};
    EXPECT_EQ(fields.Find("if-match"), "\"a\"");
    EXPECT_EQ(fields.Find("HOST"), "sensor");
    EXPECT_EQ(fields.Find("If-Matc"), std::nullopt);
    EXPECT_EQ(fields.Count("If-None-Match"), 0U);
}

TEST(HttpFieldsTest, JoinsTheFieldsOfOneName) {
    HttpFields fields;
    fields.Add("Accept", "text/html");
    fields.Add("Host", "sensor");
    fields.Add("accept", "*/*");
    EXPECT_EQ(fields.Find("Accept"), "text/html, */*");
    EXPECT_EQ(fields.Count("Accept"), 2U);
}

} // namespace
} // namespace Sensor::Http
