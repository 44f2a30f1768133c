#include "Sensor/Http/RequestTarget.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor::Http {
namespace {

using Query = std::vector<std::pair<std::string, std::string>>;

TEST(RequestTargetTest, HasAPathAndAQuery) {
    const auto target = RequestTarget::Parse("/controls/a%20b/?schema=1&expand=item,vor%3Acommand&x=a+b&y&=z&&x=2");
    ASSERT_TRUE(target.has_value());
    EXPECT_EQ(target->path, "/controls/a%20b/");
    EXPECT_EQ(target->query,
              (Query{{"schema", "1"}, {"expand", "item,vor:command"}, {"x", "a b"}, {"y", ""}, {"", "z"}, {"x", "2"}}));
    EXPECT_EQ(*target->FindQuery("x"), "a b");
    EXPECT_EQ(target->FindQuery("item"), nullptr);
}

TEST(RequestTargetTest, AnEmptyQueryIsNone) {
    for (const char* const text : {"/", "/?", "/?&", "/?&&"}) {
        const auto target = RequestTarget::Parse(text);
        ASSERT_TRUE(target.has_value()) << text;
        EXPECT_EQ(target->path, "/");
        EXPECT_TRUE(target->query.empty());
    }
    EXPECT_EQ(RequestTarget::Parse("/a??b=c")->query, (Query{{"?b", "c"}}));
    EXPECT_EQ(RequestTarget::Parse("/a?b=c=d")->query, (Query{{"b", "c=d"}}));
}

TEST(RequestTargetTest, MayBeAUrl) {
    const auto target = RequestTarget::Parse("http://127.0.0.1:8080/controls/a%20b?schema=1");
    ASSERT_TRUE(target.has_value());
    EXPECT_EQ(target->authority, "127.0.0.1:8080");
    EXPECT_EQ(target->path, "/controls/a%20b");
    EXPECT_EQ(target->query, (Query{{"schema", "1"}}));
    EXPECT_EQ(RequestTarget::Parse("/http://sensor/")->authority, std::nullopt);
    for (const char* const text : {"http://sensor", "HTTP://sensor/", "http://sensor?", "http://sensor/?"}) {
        const auto entry = RequestTarget::Parse(text);
        ASSERT_TRUE(entry.has_value()) << text;
        EXPECT_EQ(entry->authority, "sensor");
        EXPECT_EQ(entry->path, "/");
        EXPECT_TRUE(entry->query.empty());
    }
    EXPECT_EQ(RequestTarget::Parse("http://sensor?a=/b")->query, (Query{{"a", "/b"}}));
    EXPECT_EQ(RequestTarget::Parse("http:///a")->authority, "");
}

TEST(RequestTargetTest, RefusesWhatIsNoPath) {
    for (const std::string text :
         {"",      "*",    "a",    "https://a/", "sensor:80", "/a b",  "/a#b",  "/\xc3\xa4", "/a\tb",  "/a%", "/a%4",
          "/a%zz", "/%ff", "/%00", "/%0a",       "/a%c3/%a4", "/?a=%", "/?%=a", "/?a=%ff",   "/?a=b#c"}) {
        EXPECT_FALSE(RequestTarget::Parse(text).has_value()) << text;
    }
    EXPECT_FALSE(RequestTarget::Parse(std::string("/a\0b", 4)).has_value());
    EXPECT_TRUE(RequestTarget::Parse("/../%2e%2e//%2F%c3%a4").has_value());
}

} // namespace
} // namespace Sensor::Http
