#include "Sensor/Jobs/ToolsEntry.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/MemoryStore.h"

#include <initializer_list>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Jobs {
namespace {

using nlohmann::json;

class ToolsEntryTest : public testing::Test {
protected:
    /// The entry of a job with this text.
    ToolsEntry Read(const std::string& text) {
        store.files[ToolsEntry::Path] = text;
        return ToolsEntry::Read(store);
    }
    ToolsEntry Read(const json& tools) { return Read(json{{"version", "1"}, {"tools", tools}}.dump()); }

    Tests::MemoryStore store;
};

TEST_F(ToolsEntryTest, AJobWithoutItHasNoLimits) {
    const ToolsEntry entry = ToolsEntry::Read(store);
    EXPECT_EQ(entry.Tools(), json::object());
    EXPECT_EQ(entry.LimitsOf("profile-max"), ToolLimits());
    entry.Write(store);
    EXPECT_TRUE(store.files.empty());
}

TEST_F(ToolsEntryTest, HasTheLimits) {
    const ToolsEntry entry =
        Read(json{{"a", {{"low", -1}, {"high", 2.5}}}, {"b", {{"high", 7}}}, {"c", json::object()}});
    EXPECT_EQ(entry.LimitsOf("a"), (ToolLimits{-1, 2.5}));
    EXPECT_EQ(entry.LimitsOf("b"), (ToolLimits{.high = 7}));
    EXPECT_EQ(entry.LimitsOf("c"), ToolLimits());
    EXPECT_EQ(entry.LimitsOf("d"), ToolLimits());
}

TEST_F(ToolsEntryTest, NamesThePlaceOfWhatIsWrong) {
    for (const auto& [text, reason] : std::initializer_list<std::pair<const char*, const char*>>{
             {"{", "Line 1, column 2: syntax error while parsing object key - unexpected end of input; expected string "
                   "literal."},
             {"[]", "expected an object with a version and tools."},
             {"{}", "version: expected the text \"1\"."},
             {R"({"version":1,"tools":{}})", "version: expected the text \"1\"."},
             {R"({"version":"2","tools":{}})", "version: expected the text \"1\"."},
             {R"({"version":"1"})", "tools: expected an object with the tools that have limits."},
             {R"({"version":"1","tools":[]})", "tools: expected an object with the tools that have limits."}}) {
        EXPECT_FAILURE(Read(std::string(text)), yERROR_FORMAT, "Entry 'sensor/tools.json': " + std::string(reason));
    }
}

TEST_F(ToolsEntryTest, NamesThePlaceOfWrongLimits) {
    const std::string range = "expected a number from -1000000000 to 1000000000 but got ";
    for (const auto& [limits, reason] : std::initializer_list<std::pair<json, std::string>>{
             {7, ": expected an object but got 7."},
             {json::array(), ": expected an object but got an array."},
             {{{"low", "1"}}, "/low: " + range + "a string."},
             {{{"low", nullptr}}, "/low: " + range + "null."},
             {{{"high", 1000000001}}, "/high: " + range + "1000000001."},
             {{{"low", -1e300}}, "/low: " + range + "-1e+300."},
             {{{"low", 2}, {"high", 1}}, "/low: expected at most 1.0, which is high, but got 2.0."},
             {{{"low", 2}, {"middle", 3}}, "/middle: expected no other member than low and high."}}) {
        EXPECT_FAILURE(Read(json{{"a/b", limits}}).LimitsOf("a/b"), yERROR_FORMAT,
                       "Entry 'sensor/tools.json': tools/a~1b" + reason);
        EXPECT_EQ(Read(json{{"a/b", limits}}).LimitsOf("c"), ToolLimits()) << "another tool isn't concerned";
    }
}

TEST_F(ToolsEntryTest, ChangesWhatDiffersOnly) {
    const json before = {{"a", {{"low", -1e9}, {"high", 2}}}, {"new", {{"threshold", 3}}}, {"c", json::object()}};
    ToolsEntry entry = Read(before);
    entry.SetLimits("a", {.high = 2});
    entry.SetLimits("b", {});
    entry.SetLimits("c", {});
    EXPECT_EQ(entry.Tools(), before);
    entry.SetLimits("a", {.high = 3});
    entry.SetLimits("b", {.low = 4});
    EXPECT_EQ(entry.Tools().at("a"), (json{{"low", -1e9}, {"high", 3}}));
    EXPECT_EQ(entry.Tools().at("b"), (json{{"low", 4}}));
    entry.SetLimits("b", {.low = 4, .high = 5});
    entry.SetLimits("b", {.high = 5});
    EXPECT_EQ(entry.Tools().at("b"), (json{{"high", 5}}));
    entry.SetLimits("b", {});
    EXPECT_FALSE(entry.Tools().contains("b"));
    EXPECT_EQ(entry.Tools().at("new"), before.at("new"));
}

TEST_F(ToolsEntryTest, ReplacesWrongLimits) {
    ToolsEntry entry = Read(json{{"a", {{"low", "x"}, {"high", 2}}}, {"b", 7}, {"c", 8}});
    entry.SetLimits("a", {.low = 1});
    entry.SetLimits("b", {});
    EXPECT_EQ(entry.Tools(), (json{{"a", {{"low", 1}}}, {"c", 8}}));
}

TEST_F(ToolsEntryTest, IsReadAsItWasWritten) {
    ToolsEntry entry;
    entry.SetLimits("a", {-0.1, 1e-300});
    entry.Write(store);
    EXPECT_EQ(ToolsEntry::Read(store).LimitsOf("a"), (ToolLimits{-0.1, 1e-300}));
    entry.SetLimits("a", {});
    entry.Write(store);
    EXPECT_EQ(json::parse(store.files.at(ToolsEntry::Path)), (json{{"version", "1"}, {"tools", json::object()}}));
}

} // namespace
} // namespace Sensor::Jobs
