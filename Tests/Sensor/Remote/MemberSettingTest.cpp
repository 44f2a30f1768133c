#include "Sensor/Remote/MemberSetting.h"

#include "Sensor/StartError.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Remote {
namespace {

using nlohmann::json;

const json Schema = json::parse(R"({
    "type": "object",
    "properties": {
        "enabled": {"type": "boolean"},
        "id": {"type": "string", "readOnly": true},
        "parameters": {
            "type": "object",
            "properties": {
                "port": {"type": "integer", "minimum": 0, "maximum": 65535},
                "offset": {"type": "integer"},
                "rate": {"type": "number", "minimum": 0},
                "low": {"type": "number", "maximum": 1},
                "delimiter": {"type": "string"},
                "decimalSeparator": {"type": "integer", "enum": [0, 1], "enumText": ["Point", "Comma"]},
                "firstRequest": {"type": "string", "enum": ["run", "base"], "enumText": ["Run", "Take As Base"]},
                "plain": {"type": "integer", "enum": [3, 5]},
                "networks": {"type": "array", "items": {"type": "string"}},
                "any": {}
            }
        },
        "state": {"type": "object", "readOnly": true, "properties": {"count": {"type": "integer"}}}
    }
})");

json Value(const std::string& text) {
    return MemberSetting::Parse(text).ValueFor(Schema);
}

template <class Call>
std::string RefusalOf(Call&& call) {
    try {
        call();
    } catch (const StartError& error) {
        return error.what();
    }
    return "";
}

std::string Refusal(const std::string& text) {
    return RefusalOf([&] { Value(text); });
}

TEST(MemberSetting, IsParsedAtItsFirstEqualsSign) {
    const MemberSetting setting = MemberSetting::Parse("parameters.delimiter==.");
    EXPECT_EQ(setting.steps, (std::vector<std::string>{"parameters", "delimiter"}));
    EXPECT_EQ(setting.value, "=.");
    EXPECT_EQ(setting.Member(), "parameters.delimiter");
    EXPECT_EQ(MemberSetting::Parse("a=").value, "");
    for (const std::string text : {"", "a", "=1", ".a=1", "a.=1", "a..b=1"}) {
        EXPECT_EQ(RefusalOf([&] { MemberSetting::Parse(text); }),
                  "set " + text + ": expected MEMBER=VALUE, such as enabled=true or parameters.port=502.");
    }
    EXPECT_EQ(RefusalOf([] { MemberSetting::Parse("a=\xFF"); }), "set a=\xFF: it isn't text in UTF-8.");
}

TEST(MemberSetting, HasTheTypeOfItsMember) {
    EXPECT_EQ(Value("enabled=true"), json(true));
    EXPECT_EQ(Value("enabled=false"), json(false));
    EXPECT_EQ(Value("parameters.port=502"), json(502));
    EXPECT_EQ(Value("parameters.offset=-3"), json(-3));
    EXPECT_EQ(Value("parameters.rate=0.5"), json(0.5));
    EXPECT_EQ(Value("parameters.rate=1e3"), json(1000.0));
    EXPECT_EQ(Value("parameters.rate=5"), json(5));
    EXPECT_EQ(Value("parameters.delimiter=;"), json(";"));
    EXPECT_EQ(Value("parameters.delimiter=5"), json("5"));
    EXPECT_EQ(Value("parameters.delimiter=true"), json("true"));
    EXPECT_EQ(Value("parameters.delimiter="), json(""));
    EXPECT_EQ(Value("parameters.delimiter=\"\\r\\n\""), json("\r\n"));
    EXPECT_EQ(Value("parameters.delimiter=\""), json("\""));
    EXPECT_EQ(Value("parameters.networks=[\"a\", \"b\"]"), json::array({"a", "b"}));
    EXPECT_EQ(Value("parameters={\"port\":1}"), json({{"port", 1}}));
    EXPECT_EQ(Value("parameters.any=1.5"), json(1.5));
    EXPECT_EQ(Value("parameters.any=text"), json("text"));
}

TEST(MemberSetting, TakesAnEnumerationByNameAndByValue) {
    EXPECT_EQ(Value("parameters.decimalSeparator=Comma"), json(1));
    EXPECT_EQ(Value("parameters.decimalSeparator=point"), json(0));
    EXPECT_EQ(Value("parameters.decimalSeparator=1"), json(1));
    EXPECT_EQ(Value("parameters.firstRequest=base"), json("base"));
    EXPECT_EQ(Value("parameters.firstRequest=\"run\""), json("run"));
    EXPECT_EQ(Value("parameters.firstRequest=take as base"), json("base"));
    EXPECT_EQ(Value("parameters.plain=5"), json(5));
    EXPECT_EQ(Refusal("parameters.decimalSeparator=2"),
              "set parameters.decimalSeparator=2: expected one of Point (0), Comma (1).");
    EXPECT_EQ(Refusal("parameters.decimalSeparator="),
              "set parameters.decimalSeparator=: expected one of Point (0), Comma (1).");
    EXPECT_EQ(Refusal("parameters.firstRequest=x"),
              "set parameters.firstRequest=x: expected one of Run (run), Take As Base (base).");
    EXPECT_EQ(Refusal("parameters.plain=4"), "set parameters.plain=4: expected one of 3, 5.");
}

TEST(MemberSetting, RefusesWhatIsNoValue) {
    EXPECT_EQ(Refusal("enabled=yes"), "set enabled=yes: expected true or false.");
    EXPECT_EQ(Refusal("enabled=1"), "set enabled=1: expected true or false.");
    EXPECT_EQ(Refusal("parameters.port=x"), "set parameters.port=x: expected an integer from 0 to 65535.");
    EXPECT_EQ(Refusal("parameters.port=1.5"), "set parameters.port=1.5: expected an integer from 0 to 65535.");
    EXPECT_EQ(Refusal("parameters.port="), "set parameters.port=: expected an integer from 0 to 65535.");
    EXPECT_EQ(Refusal("parameters.offset=null"), "set parameters.offset=null: expected an integer.");
    EXPECT_EQ(Refusal("parameters.rate=fast"), "set parameters.rate=fast: expected a number of 0 or more.");
    EXPECT_EQ(Refusal("parameters.low=NaN"), "set parameters.low=NaN: expected a number of 1 or less.");
    EXPECT_EQ(Refusal("parameters.delimiter=\"\\q\""),
              "set parameters.delimiter=\"\\q\": expected a text, or one in quotation marks as in JSON.");
    EXPECT_EQ(Refusal("parameters.networks=a"), "set parameters.networks=a: expected a list in JSON.");
    EXPECT_EQ(Refusal("parameters=1"), "set parameters=1: expected an object in JSON.");
    EXPECT_EQ(Refusal("parameters.networks=" + std::string(100, '[')).substr(0, 24), "set parameters.networks=");
}

TEST(MemberSetting, RefusesWhatCannotBeSet) {
    EXPECT_EQ(Refusal("id=x"), "set id=x: \"id\" can only be read.");
    EXPECT_EQ(Refusal("state.count=1"), "set state.count=1: \"state\" can only be read.");
    EXPECT_EQ(Refusal("enable=true"),
              "set enable=true: there is no member \"enable\", known: enabled, id, parameters, state.");
    EXPECT_EQ(Refusal("parameters.networks.0=a"),
              "set parameters.networks.0=a: a list can only be set as a whole, in JSON.");
    EXPECT_EQ(Refusal("enabled.x=a"), "set enabled.x=a: there is no member \"x\", known: none.");
    EXPECT_EQ(RefusalOf([] { MemberSetting::Parse("a=1").ValueFor(json::array()); }),
              "set a=1: there is no member \"a\", known: none.");
}

TEST(MemberSetting, MakesOnePatchOfSeveral) {
    const auto patch = [](const std::vector<std::string>& texts) {
        std::vector<MemberSetting> settings;
        for (const std::string& text : texts) {
            settings.push_back(MemberSetting::Parse(text));
        }
        return PatchOf(settings, Schema);
    };
    EXPECT_EQ(patch({"parameters.port=1", "enabled=true", "parameters.rate=2"}),
              json({{"enabled", true}, {"parameters", {{"port", 1}, {"rate", 2}}}}));
    EXPECT_EQ(RefusalOf([&] {
                  patch({"enabled=true", "enabled=false"});
              }),
              "set enabled=true: \"enabled\" is set twice.");
    EXPECT_EQ(RefusalOf([&] {
                  patch({"parameters.port=1", "parameters={}"});
              }),
              "set parameters.port=1: \"parameters\" is set twice.");
}

TEST(MemberSetting, FindsItsMember) {
    const MemberSetting setting = MemberSetting::Parse("a.b=1");
    const json document = {{"a", {{"b", 7}}}};
    ASSERT_NE(setting.FindIn(document), nullptr);
    EXPECT_EQ(*setting.FindIn(document), 7);
    for (const json& other : {json({{"a", 1}}), json::object(), json(), json::array({1})}) {
        EXPECT_EQ(setting.FindIn(other), nullptr);
    }
}

} // namespace
} // namespace Sensor::Remote
