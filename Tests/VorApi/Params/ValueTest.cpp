#include "VorApi/Params/Value.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Translations.h"
#include "Vor/JsonReader.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Logging.h"

#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Vor::Params::ScaleOption;
using Vor::Params::Value;
using Vor::Properties::ByteVector;
using Vor::Properties::JsonSerializer;
using Vor::Properties::Node;

namespace {

enum class Mode { A, B, C, D, E };

/// Four values in ascending order of one type.
template <class T>
struct Ascending;
template <>
struct Ascending<bool> {};
template <class T>
    requires(std::is_integral_v<T>)
struct Ascending<T> {
    static std::vector<T> Values() { return {10, 20, 30, 40, 50}; }
};
template <>
struct Ascending<std::string> {
    static std::vector<std::string> Values() { return {"", "a", "aa", "b", "ba"}; }
};
template <>
struct Ascending<ByteVector> {
    static std::vector<ByteVector> Values() {
        return {ByteVector(), ByteVector("a", 1), ByteVector("aa", 2), ByteVector("b", 1), ByteVector("\xff", 1)};
    }
};
template <>
struct Ascending<std::vector<std::string>> {
    static std::vector<std::vector<std::string>> Values() { return {{}, {"a"}, {"a", "b"}, {"b"}, {"b", "a"}}; }
};
template <>
struct Ascending<std::vector<unsigned short>> {
    static std::vector<std::vector<unsigned short>> Values() { return {{}, {1}, {1, 2}, {2}, {2, 0}}; }
};
template <>
struct Ascending<Mode> {
    static std::vector<Mode> Values() { return {Mode::A, Mode::B, Mode::C, Mode::D, Mode::E}; }
};

template <class T>
class ValueLimitTest : public testing::Test {};

using Types = testing::Types<unsigned short, unsigned int, unsigned long long, long long, std::string, ByteVector,
                             std::vector<std::string>, std::vector<unsigned short>, Mode>;
TYPED_TEST_SUITE(ValueLimitTest, Types);

std::vector<std::string> KeywordsOf(Node& node) {
    std::vector<std::string> keys;
    for (const auto& member : node.Schema().Members()) {
        keys.push_back(member.Text());
    }
    return keys;
}

template <class T>
void Read(Value<T>& value, const json& source) {
    const Vor::Properties::Internal::JsonPath path;
    Vor::Properties::Internal::JsonReader reader(source, path);
    Vor::Event<> updateEnd;
    value.ReadValue(reader, updateEnd);
}

} // namespace

TYPED_TEST(ValueLimitTest, MinimumRefusesLessOnly) {
    const auto values = Ascending<TypeParam>::Values();
    Value<TypeParam> value;
    value.SetTitle("Gain");
    value.EnableMinimum(true);
    value.SetMinimum(values[2]);
    EXPECT_EQ(value.GetMinimum(), values[2]);
    EXPECT_FAILURE(value.CheckValidation(values[1], true), yERROR_PARAMETER,
                   "Gain is set to be less than its minimum.");
    value.CheckValidation(values[2], true);
    value.CheckValidation(values[3], true);
}

TYPED_TEST(ValueLimitTest, MaximumRefusesMoreOnly) {
    const auto values = Ascending<TypeParam>::Values();
    Value<TypeParam> value;
    value.SetTitle("Gain");
    value.EnableMaximum(true);
    value.SetMaximum(values[2]);
    EXPECT_EQ(value.GetMaximum(), values[2]);
    EXPECT_FAILURE(value.CheckValidation(values[3], true), yERROR_PARAMETER,
                   "Gain is set to be greater than its maximum.");
    value.CheckValidation(values[2], true);
    value.CheckValidation(values[1], true);
}

TYPED_TEST(ValueLimitTest, ExclusiveMinimumRefusesLessAndEqual) {
    const auto values = Ascending<TypeParam>::Values();
    Value<TypeParam> value;
    value.SetTitle("Gain");
    value.EnableExclusiveMinimum(true);
    value.SetExclusiveMinimum(values[2]);
    EXPECT_EQ(value.GetExclusiveMinimum(), values[2]);
    const char* const text = "Gain is set to be less than or equal to its exclusive minimum.";
    EXPECT_FAILURE(value.CheckValidation(values[1], true), yERROR_PARAMETER, text);
    EXPECT_FAILURE(value.CheckValidation(values[2], true), yERROR_PARAMETER, text);
    value.CheckValidation(values[3], true);
}

TYPED_TEST(ValueLimitTest, ExclusiveMaximumRefusesMoreAndEqual) {
    const auto values = Ascending<TypeParam>::Values();
    Value<TypeParam> value;
    value.SetTitle("Gain");
    value.EnableExclusiveMaximum(true);
    value.SetExclusiveMaximum(values[2]);
    EXPECT_EQ(value.GetExclusiveMaximum(), values[2]);
    const char* const text = "Gain is set to be greater than or equal to its exclusive maximum.";
    EXPECT_FAILURE(value.CheckValidation(values[3], true), yERROR_PARAMETER, text);
    EXPECT_FAILURE(value.CheckValidation(values[2], true), yERROR_PARAMETER, text);
    value.CheckValidation(values[1], true);
}

TEST(ValueTest, LimitsHoldForBooleansToo) {
    Value<bool> value;
    value.EnableMaximum(true);
    EXPECT_FAILURE(value.CheckValidation(true, false), yERROR_PARAMETER,
                   "<unnamed> is set to be greater than its maximum.");
}

TEST(ValueTest, LimitsAreCheckedInTheirOrder) {
    Value<long long> value;
    value.SetTitle("v");
    value.EnableMinimum(true);
    value.EnableMaximum(true);
    value.EnableExclusiveMinimum(true);
    value.EnableExclusiveMaximum(true);
    value.SetMinimum(10);
    value.SetMaximum(-10);
    value.SetExclusiveMinimum(20);
    value.SetExclusiveMaximum(-20);
    EXPECT_FAILURE(value.CheckValidation(0, false), yERROR_PARAMETER, "v is set to be less than its minimum.");
    value.EnableMinimum(false);
    EXPECT_FAILURE(value.CheckValidation(0, false), yERROR_PARAMETER, "v is set to be greater than its maximum.");
    value.EnableMaximum(false);
    EXPECT_FAILURE(value.CheckValidation(0, false), yERROR_PARAMETER,
                   "v is set to be less than or equal to its exclusive minimum.");
    value.EnableExclusiveMinimum(false);
    EXPECT_FAILURE(value.CheckValidation(0, false), yERROR_PARAMETER,
                   "v is set to be greater than or equal to its exclusive maximum.");
    value.EnableExclusiveMaximum(false);
    value.CheckValidation(0, false);
}

TEST(ValueTest, SchemaHasTypeTitleAndSortOrder) {
    Value<long long> value;
    EXPECT_EQ(KeywordsOf(value), (std::vector<std::string>{"type", "title", "sortOrder"}));
    EXPECT_EQ(JsonSerializer::SerializeSchema(value), (json{{"type", "integer"}, {"title", ""}, {"sortOrder", 0}}));
}

TEST(ValueTest, UnsignedParametersHaveAMinimumOfZeroAndSignedOnesNone) {
    EXPECT_EQ(JsonSerializer::SerializeSchema(Value<unsigned short>()).at("minimum"), 0);
    EXPECT_EQ(JsonSerializer::SerializeSchema(Value<unsigned int>()).at("minimum"), 0);
    EXPECT_EQ(JsonSerializer::SerializeSchema(Value<unsigned long long>()).at("minimum"), 0);
    EXPECT_FALSE(JsonSerializer::SerializeSchema(Value<long long>()).contains("minimum"));
    EXPECT_FALSE(JsonSerializer::SerializeSchema(Value<bool>()).contains("minimum"));
    EXPECT_FALSE(JsonSerializer::SerializeSchema(Value<std::vector<unsigned short>>()).contains("minimum"));
    const Value<unsigned short> value;
    value.CheckValidation(0, true);
    value.CheckValidation(65535, true);
}

TEST(ValueTest, EachKeywordShowsInTheSchemaWhileEnabled) {
    Value<unsigned short> value(5);
    value.SetTitle("Gain");
    value.SetSortOrder(300);
    value.EnableReadOnly();
    value.EnableVisibility(true);
    value.SetVisibility(2);
    value.EnableMeta(true);
    value.SetMeta("m");
    value.EnableDescription(true);
    value.SetDescription("d");
    value.EnableUnits(true);
    value.SetUnits("mm");
    value.EnableActual(true);
    value.SetActual(6);
    value.SetMinimum(1);
    value.EnableMaximum(true);
    value.SetMaximum(9);
    value.EnableExclusiveMinimum(true);
    value.EnableExclusiveMaximum(true);
    value.SetExclusiveMaximum(10);
    value.EnableScale(true);
    value.SetExtendedType("e");
    value.EnableFormat(true);
    value.SetFormat("f");
    const json expected = {{"type", "integer"},      {"title", "Gain"}, {"sortOrder", 300},
                           {"readOnly", false},      {"visibility", 2}, {"x-meta", "m"},
                           {"description", "d"},     {"units", "mm"},   {"actual", 6},
                           {"minimum", 1},           {"maximum", 9},    {"exclusiveMinimum", 0},
                           {"exclusiveMaximum", 10}, {"scale", 1},      {"extendedType", "e"},
                           {"format", "f"}};
    EXPECT_EQ(JsonSerializer::SerializeSchema(value), expected);
    EXPECT_EQ(JsonSerializer::Serialize(value), 5);

    value.EnableVisibility(false);
    value.EnableMeta(false);
    value.EnableDescription(false);
    value.EnableUnits(false);
    value.EnableActual(false);
    value.EnableMinimum(false);
    value.EnableMaximum(false);
    value.EnableExclusiveMinimum(false);
    value.EnableExclusiveMaximum(false);
    value.EnableScale(false);
    value.SetExtendedType("");
    value.EnableFormat(false);
    EXPECT_EQ(KeywordsOf(value), (std::vector<std::string>{"type", "title", "sortOrder", "readOnly"}));
}

TEST(ValueTest, EnablingAgainKeepsTheKeywordAndItsValue) {
    Value<std::string> value;
    value.EnableUnits(true);
    value.SetUnits("mm");
    value.EnableUnits(true);
    EXPECT_EQ(value.GetUnits(), "mm");
    value.EnableScale(true);
    value.SetScale(static_cast<ScaleOption>(4));
    value.EnableScale(true);
    EXPECT_EQ(value.GetScale(), static_cast<ScaleOption>(4));
    value.EnableScale(false);
    value.EnableScale(true);
    EXPECT_EQ(value.GetScale(), ScaleOption::Default);
}

TEST(ValueTest, EnablingMetaAgainEmptiesIt) {
    Value<bool> value;
    value.EnableMeta(true);
    EXPECT_EQ(value.GetMeta(), "");
    value.SetMeta("m");
    value.EnableMeta(true);
    EXPECT_EQ(value.GetMeta(), "");
}

TEST(ValueTest, DisablingWhatIsNotEnabledDoesNothing) {
    Value<long long> value;
    value.EnableMinimum(false);
    value.EnableUnits(false);
    value.EnableVisibility(false);
    value.EnableMeta(false);
    value.EnableDescription(false);
    EXPECT_EQ(KeywordsOf(value), (std::vector<std::string>{"type", "title", "sortOrder"}));
}

TEST(ValueTest, AccessToADisabledKeywordFails) {
    Value<long long> value;
    const yStatus status = yERROR_PARAMETER;
    EXPECT_FAILURE(value.GetUnits(), status, "Must enable 'units' before using it.");
    EXPECT_FAILURE(value.GetActual(), status, "Must enable 'actual' before using it.");
    EXPECT_FAILURE(value.GetMinimum(), status, "Must enable 'minimum' before using it.");
    EXPECT_FAILURE(value.GetMaximum(), status, "Must enable 'maximum' before using it.");
    EXPECT_FAILURE(value.GetExclusiveMinimum(), status, "Must enable 'exclusiveMinimum' before using it.");
    EXPECT_FAILURE(value.GetExclusiveMaximum(), status, "Must enable 'exclusiveMaximum' before using it.");
    EXPECT_FAILURE(value.GetScale(), status, "Must enable 'scale' before using it.");
    EXPECT_FAILURE(value.GetFormat(), status, "Must enable 'format' before using it.");
    EXPECT_FAILURE(value.SetUnits("x"), status, "Must enable 'units' before setting the value.");
    EXPECT_FAILURE(value.SetActual(1), status, "Must enable 'actual' before setting the value.");
    EXPECT_FAILURE(value.SetMinimum(1), status, "Must enable 'minimum' before setting the value.");
    EXPECT_FAILURE(value.SetMaximum(1), status, "Must enable 'maximum' before setting the value.");
    EXPECT_FAILURE(value.SetExclusiveMinimum(1), status, "Must enable 'exclusiveMinimum' before setting the value.");
    EXPECT_FAILURE(value.SetExclusiveMaximum(1), status, "Must enable 'exclusiveMaximum' before setting the value.");
    EXPECT_FAILURE(value.SetScale(ScaleOption::Default), status, "Must enable 'scale' before setting the value.");
    EXPECT_FAILURE(value.SetFormat("x"), status, "Must enable 'format' before setting the value.");
    EXPECT_FAILURE(value.GetVisibility(), status, "Must enable 'visibility' before using it.");
    EXPECT_FAILURE(value.SetVisibility(1), status, "Must enable 'visibility' before setting the value.");
    EXPECT_FAILURE(value.GetMeta(), status, "Must enable 'x-meta' before using it.");
    EXPECT_FAILURE(value.SetMeta("x"), status, "Must enable 'x-meta' before setting the value.");
    EXPECT_FAILURE(value.GetDescription(), status, "Must enable 'description' before using it.");
    EXPECT_FAILURE(value.SetDescription("x"), status, "Must enable 'description' before setting the value.");
}

TEST(ValueTest, ExtendedTypeComesAndGoesWithItsText) {
    Value<bool> value;
    value.SetExtendedType("");
    EXPECT_EQ(KeywordsOf(value), (std::vector<std::string>{"type", "title", "sortOrder"}));
    value.SetExtendedType("a");
    value.SetExtendedType("b");
    EXPECT_EQ(JsonSerializer::SerializeSchema(value).at("extendedType"), "b");
    EXPECT_TRUE(value.IsExtendedTypeEnabled());
    value.SetExtendedType("");
    EXPECT_FALSE(value.IsExtendedTypeEnabled());
    EXPECT_FALSE(JsonSerializer::SerializeSchema(value).contains("extendedType"));
}

TEST(ValueTest, ActualIsReadButNotWritten) {
    Value<unsigned int> value(1);
    value.EnableActual(true);
    value.SetActual(8);
    EXPECT_EQ(value.Get(), 8U);
    EXPECT_EQ(static_cast<const unsigned int&>(value), 8U);
    EXPECT_TRUE(value == 8U);
    EXPECT_EQ(value.GetStored(), 1U);
    EXPECT_EQ(JsonSerializer::Serialize(value), 1);
    value.EnableActual(false);
    EXPECT_EQ(value.Get(), 1U);
}

TEST(ValueTest, AChangeIsJudgedByTheStoredValueNotTheActualOne) {
    Value<unsigned int> value(1);
    value.EnableActual(true);
    value.SetActual(8);
    value = 8;
    EXPECT_TRUE(value.IsChanged());
    EXPECT_EQ(value.GetStored(), 8U);
}

TEST(ValueTest, AFailureIsLoggedForTheUserInTranslationWhenToldTo) {
    const Tests::Translation translated("beApp", "%1$s is set to be less than its minimum.", "zu klein: %1$s");
    Value<long long> value;
    value.SetTitle("Gain");
    value.EnableMinimum(true);
    VorGetText::GetInstance().ForgetCalls();
    const Vor::LogCapture log;
    EXPECT_FAILURE(value.CheckValidation(-1, true), yERROR_PARAMETER, "zu klein: Gain");
    const auto records = log.Records();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].level, 0x8000000100000002U);
    EXPECT_EQ(records[0].title, "Params validation");
    EXPECT_EQ(records[0].format, "zu klein: %1$s");
    EXPECT_EQ(records[0].text, "zu klein: Gain");
    EXPECT_TRUE(Tests::WasTranslated("beApp", "Params validation"));
    EXPECT_TRUE(Tests::WasTranslated("beApp", "%1$s is set to be less than its minimum."));
}

TEST(ValueTest, AFailureIsNotLoggedWhenNotToldTo) {
    Value<long long> value;
    value.EnableMinimum(true);
    const Vor::LogCapture log;
    EXPECT_FAILURE(value.CheckValidation(-1, false), yERROR_PARAMETER, "<unnamed> is set to be less than its minimum.");
    EXPECT_TRUE(log.Records().empty());
}

TEST(ValueTest, ADocumentThatRepeatsAStoredValueOutsideItsLimitsIsAccepted) {
    Value<long long> value(50);
    value.EnableMaximum(true);
    value.SetMaximum(10);
    JsonSerializer::Validate(value, 50);
    EXPECT_FAILURE(JsonSerializer::Validate(value, 51), yERROR_PARAMETER,
                   "<unnamed> is set to be greater than its maximum.");
    EXPECT_EQ(value.Get(), 50);
}

TEST(ValueTest, AReadOnlyValueIsValidatedWithAWarningAndTheNextReadOfItIsPassedOver) {
    Value<long long> value(1);
    value.SetTitle("Gain");
    value.EnableReadOnly();
    value.SetReadOnly(true);
    {
        const Vor::LogCapture log;
        JsonSerializer::Validate(value, 2);
        const auto records = log.Records();
        ASSERT_EQ(records.size(), 1U);
        EXPECT_EQ(records[0].level, 0x8000000000000001U);
        EXPECT_EQ(records[0].text, "Gain is read-only and will not fail validation.");
        EXPECT_EQ(records[0].format, "%s is read-only and will not fail validation.");
    }
    Read(value, 2);
    EXPECT_EQ(value.Get(), 1);
    EXPECT_FALSE(value.IsChanged());
    Read(value, 2);
    EXPECT_EQ(value.Get(), 2);
}

TEST(ValueTest, AReadOnlyValueStillFailsItsLimits) {
    Value<long long> value(1);
    value.EnableReadOnly();
    value.SetReadOnly(true);
    value.EnableMaximum(true);
    value.SetMaximum(5);
    EXPECT_FAILURE(value.CheckValidation(6, false), yERROR_PARAMETER,
                   "<unnamed> is set to be greater than its maximum.");
    Read(value, 6);
    EXPECT_EQ(value.Get(), 1);
}

TEST(ValueTest, AnotherValueThanTheOneValidatedIsRead) {
    Value<long long> value(1);
    value.EnableReadOnly();
    value.SetReadOnly(true);
    value.CheckValidation(2, false);
    Read(value, 3);
    EXPECT_EQ(value.Get(), 3);
}

TEST(ValueTest, AFailedReadUsesUpThePendingValue) {
    Value<long long> value(1);
    value.EnableReadOnly();
    value.SetReadOnly(true);
    value.CheckValidation(2, false);
    EXPECT_THROW(Read(value, "text"), Vor::Exception);
    Read(value, 2);
    EXPECT_EQ(value.Get(), 2);
}

TEST(ValueTest, ValidatingWithoutReadOnlyForgetsThePendingValue) {
    Value<long long> value(1);
    value.EnableReadOnly();
    value.SetReadOnly(true);
    value.CheckValidation(2, false);
    value.SetReadOnly(false);
    value.CheckValidation(2, false);
    Read(value, 2);
    EXPECT_EQ(value.Get(), 2);
}

TEST(ValueTest, ReadOnlyThatIsNotEnabledHasNoEffect) {
    Value<long long> value(1);
    value.SetReadOnly(true);
    const Vor::LogCapture log;
    value.CheckValidation(2, true);
    EXPECT_TRUE(log.Records().empty());
    Read(value, 2);
    EXPECT_EQ(value.Get(), 2);
}

TEST(ValueTest, CollectedErrorsAreThoseOfTheActualValueAndAreNotLogged) {
    Value<long long> value(1);
    value.SetTitle("Gain");
    value.EnableMaximum(true);
    value.SetMaximum(5);
    std::vector<std::string> errors;
    const Vor::LogCapture log;
    value.CheckValidationAndCollect(errors, 0);
    EXPECT_TRUE(errors.empty());
    value.EnableActual(true);
    value.SetActual(6);
    value.CheckValidationAndCollect(errors, 0);
    EXPECT_EQ(errors, (std::vector<std::string>{"Gain is set to be greater than its maximum."}));
    EXPECT_TRUE(log.Records().empty());
}

TEST(ValueTest, OtherFailuresOfAValidationAreLoggedNotCollectedAndForeignOnesPass) {
    struct Failing : Value<long long> {
        void CheckValidation(const long long&, bool) const override {
            if (foreign) {
                throw std::runtime_error("foreign");
            }
            Vor::Throw(yERROR_STATE, "no state");
        }
        bool foreign = false;
    } value;
    std::vector<std::string> errors;
    const Vor::LogCapture log;
    value.CheckValidationAndCollect(errors, 0);
    EXPECT_TRUE(errors.empty());
    const auto records = log.Records();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].level, 0x8000000000000002U);
    EXPECT_EQ(records[0].text, "Non-yERROR_PARAMETER exception 'no state' caught during validation.");
    value.foreign = true;
    EXPECT_THROW(value.CheckValidationAndCollect(errors, 0), std::runtime_error);
}

TEST(ValueTest, KeywordHandlersRunWhenAKeywordChanges) {
    Value<long long> value;
    value.EnableMaximum(true);
    int calls = 0;
    value.Schema().At("maximum").AddChangeHandler([&](Node&) { ++calls; });
    value.SetMaximum(4);
    value.SetMaximum(4);
    EXPECT_EQ(calls, 1);
}

TEST(ValueTest, UsualKeywordsNeedNoSchema) {
    Value<unsigned short> value;
    value.SetTitle("Title");
    value.SetSortOrder(7);
    value.EnableReadOnly();
    value.SetReadOnly(true);
    Value<unsigned short> copy;
    copy.CopyValues(value);
    EXPECT_EQ(copy.GetTitle(), "Title");
    EXPECT_EQ(copy.GetMinimum(), 0);
    const auto schema = JsonSerializer::SerializeSchema(value);
    EXPECT_EQ(schema, json::parse(
                          R"({"type": "integer", "title": "Title", "sortOrder": 7, "minimum": 0,
                                      "readOnly": true})"));
    EXPECT_EQ(JsonSerializer::SerializeSchema(copy), schema);
    EXPECT_EQ(value.SchemaIfBuilt(), nullptr);
    EXPECT_EQ(copy.SchemaIfBuilt(), nullptr);
    EXPECT_LE(sizeof(value), 320U);
}

TEST(ValueTest, KeywordsKeepTheirOrderWhenTheSchemaIsBuilt) {
    const auto keysOf = [](const Value<unsigned short>& value) {
        std::vector<std::string> keys;
        for (const auto& member : value.Schema().Members()) {
            keys.push_back(member.Text());
        }
        return keys;
    };
    Value<unsigned short> value;
    value.EnableReadOnly();
    value.EnableMaximum(true);
    EXPECT_EQ(keysOf(value),
              (std::vector<std::string>{"type", "title", "sortOrder", "minimum", "readOnly", "maximum"}));
    Value<unsigned short> other;
    other.EnableReadOnly();
    other.EnableMinimum(false);
    other.EnableMinimum(true);
    EXPECT_EQ(keysOf(other), (std::vector<std::string>{"type", "title", "sortOrder", "readOnly", "minimum"}));
}

TEST(ValueTest, KeywordsOfTheSchemaAreThoseOfTheParameter) {
    Value<unsigned short> value;
    value.SetTitle("before");
    auto& schema = value.Schema();
    EXPECT_EQ(dynamic_cast<Vor::Properties::Value<std::string>&>(schema.At("title")).Get(), "before");
    dynamic_cast<Vor::Properties::Value<std::string>&>(schema.At("title")) = "after";
    dynamic_cast<Vor::Properties::Value<unsigned short>&>(schema.At("minimum")) = 3;
    EXPECT_EQ(value.GetTitle(), "after");
    EXPECT_EQ(value.GetMinimum(), 3);
    value.SetTitle("last");
    EXPECT_EQ(JsonSerializer::SerializeSchema(value).at("title"), "last");
    Value<unsigned short> copy;
    copy.CopyValues(value);
    EXPECT_EQ(copy.GetTitle(), "last");
    EXPECT_EQ(copy.GetMinimum(), 3);
    value.CopyValues(Value<unsigned short>());
    EXPECT_EQ(value.GetTitle(), "");
    EXPECT_EQ(value.GetMinimum(), 0);
}

TEST(ValueTest, CopyTakesOverWhetherThereIsAMinimum) {
    for (const bool built : {false, true}) {
        Value<unsigned short> without;
        without.EnableMinimum(false);
        Value<unsigned short> copy;
        if (built) {
            copy.Schema();
        }
        copy.CopyValues(without);
        EXPECT_FALSE(copy.IsMinimumEnabled());
        EXPECT_FALSE(JsonSerializer::SerializeSchema(copy).contains("minimum"));
        copy.CopyValues(Value<unsigned short>());
        EXPECT_EQ(copy.GetMinimum(), 0);
        EXPECT_EQ(JsonSerializer::SerializeSchema(copy).at("minimum"), 0);
    }
}

TEST(ValueTest, CopyOfAPlainValueCopiesTheKeywordsThatBothHave) {
    Vor::Properties::Value<unsigned short> plain(4);
    Vor::Properties::Value<std::string> title("plain");
    plain.RegisterSchema("title", title);
    Value<unsigned short> copy;
    copy.SetTitle("copy");
    copy.CopyValues(plain);
    EXPECT_EQ(copy.Get(), 4);
    EXPECT_EQ(copy.GetTitle(), "plain");
}
