#include "VorApi/Params/Enum.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Translations.h"
#include "Vor/Exception.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Logging.h"
#include "VorApi/Params/Group.h"

#include <cstdint>
#include <typeinfo>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Vor::Params::Enum;
using Vor::Properties::JsonSerializer;

namespace {

enum class Mode { Unknown = -1, Off = 0, On = 1, Automatic = 2 };

} // namespace

TEST(EnumTest, SchemaListsOptionsAndTheirTexts) {
    Enum<Mode> mode(Mode::Off);
    EXPECT_EQ(JsonSerializer::SerializeSchema(mode),
              json::parse(R"({"type":"integer","title":"","sortOrder":0,"enum":[],"enumText":[]})"));
    mode.AddOption(Mode::Unknown, "Unknown");
    mode.AddOption(Mode::On, "On");
    EXPECT_EQ(JsonSerializer::SerializeSchema(mode).at("enum"), json::parse("[-1, 1]"));
    EXPECT_EQ(JsonSerializer::SerializeSchema(mode).at("enumText"), json::parse(R"(["Unknown", "On"])"));
    EXPECT_EQ(JsonSerializer::Serialize(mode), 0);
}

TEST(EnumTest, TheListsAreArraysOfIntegersAndOfTexts) {
    Enum<Mode> mode;
    EXPECT_EQ(JsonSerializer::SerializeSchema(mode.Schema().At("enum")),
              json::parse(R"({"type": "array", "items": {"type": "integer"}})"));
    EXPECT_EQ(JsonSerializer::SerializeSchema(mode.Schema().At("enumText")),
              json::parse(R"({"type": "array", "items": {"type": "string"}})"));
}

TEST(EnumTest, WithoutOptionsAnyValueWithinTheLimitsIsAccepted) {
    Enum<Mode> mode;
    mode.CheckValidation(Mode::Unknown, true);
    mode.CheckValidation(static_cast<Mode>(99), true);
    mode.EnableMaximum(true);
    mode.SetMaximum(Mode::On);
    EXPECT_FAILURE(mode.CheckValidation(Mode::Automatic, true), yERROR_PARAMETER,
                   "<unnamed> is set to be greater than its maximum.");
}

TEST(EnumTest, WithOptionsOnlyTheyAreAccepted) {
    Enum<Mode> mode;
    mode.SetTitle("Mode");
    mode.AddOption(Mode::Off, "Off");
    mode.AddOption(Mode::Automatic, "Automatic");
    mode.CheckValidation(Mode::Off, true);
    mode.CheckValidation(Mode::Automatic, true);
    VorGetText::GetInstance().ForgetCalls();
    const Vor::LogCapture log;
    EXPECT_FAILURE(mode.CheckValidation(Mode::On, true), yERROR_PARAMETER,
                   "Mode is set to a value outside of the enum.");
    const auto records = log.Records();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].level, 0x8000000100000002U);
    EXPECT_EQ(records[0].title, "Params validation");
    EXPECT_EQ(records[0].text, "Mode is set to a value outside of the enum.");
    EXPECT_TRUE(Tests::WasTranslated("beApp", "%1$s is set to a value outside of the enum."));
}

TEST(EnumTest, LimitsComeBeforeTheOptions) {
    Enum<Mode> mode;
    mode.AddOption(Mode::Off, "Off");
    mode.EnableMaximum(true);
    mode.SetMaximum(Mode::Off);
    EXPECT_FAILURE(mode.CheckValidation(Mode::On, false), yERROR_PARAMETER,
                   "<unnamed> is set to be greater than its maximum.");
}

TEST(EnumTest, CollectedErrorsIncludeTheOptions) {
    Enum<Mode> mode(Mode::On);
    mode.AddOption(Mode::Off, "Off");
    std::vector<std::string> errors;
    mode.CheckValidationAndCollect(errors, 0);
    EXPECT_EQ(errors, (std::vector<std::string>{"<unnamed> is set to a value outside of the enum."}));
}

TEST(EnumTest, AnOptionAddedTwiceIsListedTwice) {
    Enum<Mode> mode;
    mode.AddOption(Mode::Off, "Off");
    mode.AddOption(Mode::Off, "Off");
    EXPECT_EQ(mode.Options(), (std::vector<Mode>{Mode::Off, Mode::Off}));
    EXPECT_EQ(mode.OptionTexts(), (std::vector<std::string>{"Off", "Off"}));
}

TEST(EnumTest, AddingAnOptionNotifies) {
    Enum<Mode> mode;
    int options = 0;
    int texts = 0;
    mode.Schema().At("enum").AddChangeHandler([&](Vor::Properties::Node&) { ++options; });
    mode.Schema().At("enumText").AddChangeHandler([&](Vor::Properties::Node&) { ++texts; });
    mode.AddOption(Mode::Off, "Off");
    EXPECT_EQ(options, 1);
    EXPECT_EQ(texts, 1);
}

TEST(EnumTest, AssignsLikeAValue) {
    Enum<Mode> mode;
    mode = Mode::On;
    EXPECT_EQ(mode.Get(), Mode::On);
    EXPECT_TRUE(mode.IsChanged());
    mode = Mode::On;
    EXPECT_FALSE(mode.IsChanged());
}

TEST(EnumTest, CopyTakesTheOptions) {
    Enum<Mode> source(Mode::On);
    source.SetTitle("source");
    source.AddOption(Mode::On, "On");
    Enum<Mode> target;
    target.AddOption(Mode::Off, "Off");
    target.AddOption(Mode::Automatic, "Automatic");
    int notified = 0;
    target.Schema().At("enum").AddChangeHandler([&](Vor::Properties::Node&) { ++notified; });
    target.CopyValues(source);
    EXPECT_EQ(target.Get(), Mode::On);
    EXPECT_EQ(JsonSerializer::SerializeSchema(target), JsonSerializer::SerializeSchema(source));
    EXPECT_EQ(notified, 1);
}

TEST(EnumTest, CopyFromAValueThatIsNoEnumIsABadCastAfterTheValueWasTaken) {
    Enum<Mode> target;
    const Vor::Params::Value<Mode> source(Mode::On);
    EXPECT_THROW(target.CopyValues(source), std::bad_cast);
    EXPECT_EQ(target.Get(), Mode::On);
}

TEST(EnumTest, NegativeValuesSurviveADocument) {
    Enum<Mode> mode;
    JsonSerializer::Deserialize(mode, -1);
    EXPECT_EQ(mode.Get(), Mode::Unknown);
    EXPECT_EQ(JsonSerializer::Serialize(mode), -1);
}

TEST(EnumTest, NarrowEnumerationTakesTheNumbersThatFitIt) {
    enum class Narrow : std::uint16_t { First = 0, Last = 65535 };
    Enum<Narrow> value;
    value.AddOption(Narrow::First, "First");
    value.AddOption(Narrow::Last, "Last");
    JsonSerializer::Deserialize(value, 65535);
    EXPECT_EQ(value.Get(), Narrow::Last);
    EXPECT_EQ(JsonSerializer::Serialize(value), 65535);
    EXPECT_EQ(JsonSerializer::SerializeSchema(value)["enum"], nlohmann::json({0, 65535}));
    EXPECT_FAILURE(JsonSerializer::Deserialize(value, 65536), yERROR_PARAMETER,
                   "The number 65536 is outside of the enumeration.");
    EXPECT_FAILURE(JsonSerializer::Deserialize(value, -1), yERROR_PARAMETER,
                   "The number -1 is outside of the enumeration.");
    EXPECT_EQ(value.Get(), Narrow::Last);
}

TEST(EnumTest, SignedNarrowEnumerationKeepsItsSign) {
    enum class Narrow : std::int8_t { Least = -128 };
    Enum<Narrow> value{Narrow()};
    JsonSerializer::Deserialize(value, -128);
    EXPECT_EQ(value.Get(), Narrow::Least);
    EXPECT_EQ(JsonSerializer::Serialize(value), -128);
    EXPECT_FAILURE(JsonSerializer::Deserialize(value, 128), yERROR_PARAMETER,
                   "The number 128 is outside of the enumeration.");
}

TEST(EnumTest, DocumentWithANumberOutsideOfANarrowEnumerationAssignsNothing) {
    enum class Narrow : unsigned char { First = 0 };
    struct Document : Vor::Params::Group {
        Document() {
            Register("before", before);
            Register("narrow", narrow);
            Register("list", list);
        }
        Vor::Params::Value<unsigned int> before;
        Enum<Narrow> narrow;
        Vor::Params::Value<std::vector<Narrow>> list;
    };
    Document document;
    for (const json& refused : {json{{"before", 5}, {"narrow", 256}}, json{{"before", 5}, {"list", {0, -1}}}}) {
        EXPECT_THROW(JsonSerializer::Deserialize(document, refused), Vor::Exception);
        EXPECT_EQ(document.before.Get(), 0U);
    }
    JsonSerializer::Deserialize(document, {{"before", 5}, {"narrow", 255}, {"list", {0, 255}}});
    EXPECT_EQ(document.before.Get(), 5U);
}
