// The values of the fields of a request.

#include "Sensor/Http/EntityTags.h"
#include "Sensor/Http/FieldList.h"
#include "Sensor/Http/MediaTypes.h"

#include <gtest/gtest.h>

namespace Sensor::Http {
namespace {

TEST(FieldListTest, SplitsOutsideOfQuotes) {
    EXPECT_EQ(SplitList(" a ,\t\"b,c\" ,,d", ','), (std::vector<std::string_view>{"a", "\"b,c\"", "d"}));
    EXPECT_TRUE(SplitList(" , ", ',').empty());
    EXPECT_EQ(Trim(" \t"), "");
    EXPECT_EQ(LowerCase("Ab-Z"), "ab-z");
}

TEST(EntityTagsTest, OneOfTheListIsEnough) {
    const std::string tag = "\"boot-3\"";
    EXPECT_TRUE(IfMatchAdmits("\"boot-3\"", tag));
    EXPECT_TRUE(IfMatchAdmits("\"boot-2\" , \"boot-3\"", tag));
    EXPECT_FALSE(IfMatchAdmits("\"boot-2\", \"a, \"boot-3", tag));
    for (const char* const stale : {"\"boot-2\"", "boot-3", "\"boot-3", "\"BOOT-3\"", "", "\"\"", "\"a,\"boot-3\"\""}) {
        EXPECT_FALSE(IfMatchAdmits(stale, tag)) << stale;
    }
}

TEST(EntityTagsTest, AWeakTagIsNeverEqual) {
    EXPECT_FALSE(IfMatchAdmits("W/\"boot-3\"", "\"boot-3\""));
    EXPECT_TRUE(IfMatchAdmits("W/\"boot-3\", \"boot-3\"", "\"boot-3\""));
}

TEST(EntityTagsTest, AnAsteriskAdmitsEverything) {
    EXPECT_TRUE(IfMatchAdmits(" * ", "\"boot-3\""));
    EXPECT_TRUE(IfMatchAdmits("*", std::nullopt));
    EXPECT_FALSE(IfMatchAdmits("\"boot-3\"", std::nullopt));
    EXPECT_FALSE(IfMatchAdmits("\"*\"", "\"boot-3\""));
}

TEST(MediaTypesTest, ABodyIsOfOneOfTheTypesInUtf8) {
    const auto isJson = [](const char* type) {
        return IsContentType({{"Content-Type", type}}, {"application/json", "application/merge-patch+json"});
    };
    for (const char* const type : {"application/json", "APPLICATION/JSON", "application/json; charset=utf-8",
                                   "application/json ;charset=\"UTF-8\"", "application/merge-patch+json; a=b"}) {
        EXPECT_TRUE(isJson(type)) << type;
    }
    for (const char* const type : {"", "text/plain", "application/jsonx", "application/json; charset=latin1",
                                   "text/plain; a=application/json", "application/json, text/plain"}) {
        EXPECT_FALSE(isJson(type)) << type;
    }
    EXPECT_FALSE(IsContentType({}, {"application/json"}));
}

TEST(MediaTypesTest, AStreamIsAskedForByItsName) {
    const auto wants = [](const char* accept) { return AcceptsExplicitly({{"Accept", accept}}, EventStream); };
    for (const char* const accept :
         {"text/event-stream", "text/html, Text/Event-Stream;q=0.1", "text/event-stream; q=1"}) {
        EXPECT_TRUE(wants(accept)) << accept;
    }
    for (const char* const accept : {"*/*", "text/*", "", "text/event-stream;q=0", "text/event-stream; Q=0.000"}) {
        EXPECT_FALSE(wants(accept)) << accept;
    }
    EXPECT_FALSE(AcceptsExplicitly({}, EventStream));
}

} // namespace
} // namespace Sensor::Http
