#include "VorApi/Params/PropertyValue.h"

#include "Vor/JsonReader.h"
#include "Vor/JsonSerializer.h"
#include "VorApi/Params/ScaleOption.h"

#include <functional>
#include <limits>
#include <stdexcept>
#include <typeinfo>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Vor::Properties::ByteVector;
using Vor::Properties::HandlerId;
using Vor::Properties::JsonSerializer;
using Vor::Properties::Node;

namespace Properties = Vor::Properties;

namespace {

enum class ScanMode { Unknown = -1, Off = 0, On = 1 };

template <class T>
void Read(Properties::Value<T>& value, const json& source, Vor::Event<>& updateEnd) {
    const Vor::Properties::Internal::JsonPath path;
    Vor::Properties::Internal::JsonReader reader(source, path);
    value.ReadValue(reader, updateEnd);
}

template <class T>
void ExpectKind(const T& initial, const T& other, const json& schema, const json& written) {
    Properties::Value<T> value;
    EXPECT_EQ(value.Get(), initial);
    EXPECT_FALSE(value.IsChanged());
    EXPECT_EQ(JsonSerializer::SerializeSchema(value), schema);
    value = other;
    EXPECT_EQ(JsonSerializer::Serialize(value), written);
    Properties::Value<T> back;
    JsonSerializer::Deserialize(back, written);
    EXPECT_EQ(back.Get(), other);
}

} // namespace

TEST(PropertyValueTest, EachKindHasItsTypeAndFormInDocuments) {
    const json integer = {{"type", "integer"}};
    ExpectKind<bool>(false, true, {{"type", "boolean"}}, true);
    ExpectKind<unsigned short>(0, 65535, integer, 65535);
    ExpectKind<unsigned int>(0, 4294967295U, integer, 4294967295U);
    ExpectKind<unsigned long long>(0, 18446744073709551615ULL, integer, 18446744073709551615ULL);
    ExpectKind<long long>(0, std::numeric_limits<long long>::min(), integer, std::numeric_limits<long long>::min());
    ExpectKind<std::string>("", "text", {{"type", "string"}}, "text");
    ExpectKind<ByteVector>(ByteVector(), ByteVector("foo", 3), {{"type", "binary"}}, "Zm9v");
    ExpectKind<std::vector<std::string>>({}, {"a", "b"}, {{"type", "array"}, {"items", {{"type", "string"}}}},
                                         {"a", "b"});
    ExpectKind<std::vector<unsigned short>>({}, {1, 65535}, {{"type", "array"}, {"items", {{"type", "integer"}}}},
                                            {1, 65535});
    ExpectKind<ScanMode>(ScanMode::Off, ScanMode::Unknown, integer, -1);
    ExpectKind<std::vector<ScanMode>>({}, {ScanMode::Unknown, ScanMode::On},
                                      {{"type", "array"}, {"items", {{"type", "integer"}}}}, {-1, 1});
    ExpectKind<Vor::Params::ScaleOption>(Vor::Params::ScaleOption(), Vor::Params::ScaleOption::Default, integer, 1);
}

TEST(PropertyValueTest, TypeIsTheOnlyKeyword) {
    Properties::Value<bool> value;
    const auto& members = value.Schema().Members();
    ASSERT_EQ(members.size(), 1U);
    EXPECT_EQ(members[0].Text(), "type");
    EXPECT_EQ(JsonSerializer::Serialize(members[0].Target()), "boolean");
}

TEST(PropertyValueTest, ListsHaveTypeBeforeItems) {
    Properties::Value<std::vector<std::string>> value;
    const auto& members = value.Schema().Members();
    ASSERT_EQ(members.size(), 2U);
    EXPECT_EQ(members[0].Text(), "type");
    EXPECT_EQ(members[1].Text(), "items");
}

TEST(PropertyValueTest, ANewValueIsStoredAndMarked) {
    Properties::Value<unsigned int> value;
    value.Set(5);
    EXPECT_EQ(value.GetStored(), 5U);
    EXPECT_TRUE(value.IsChanged());
}

TEST(PropertyValueTest, SetAssignmentAndConditionalSetBehaveAlike) {
    const std::vector<std::function<void(Properties::Value<unsigned int>&, unsigned int)>> ways = {
        [](auto& value, unsigned int next) { value.Set(next); }, [](auto& value, unsigned int next) { value = next; },
        [](auto& value, unsigned int next) { value.ConditionalSet(next); }};
    for (const auto& assign : ways) {
        Properties::Value<unsigned int> value(1);
        int calls = 0;
        value.AddChangeHandler([&](Node&) { ++calls; });
        assign(value, 2);
        EXPECT_EQ(value.Get(), 2U);
        EXPECT_TRUE(value.IsChanged());
        EXPECT_EQ(calls, 1);
        assign(value, 2);
        EXPECT_FALSE(value.IsChanged());
        EXPECT_EQ(calls, 1);
    }
}

TEST(PropertyValueTest, AssigningTheSameValueTwiceClearsTheChangedMarkAndCallsNobody) {
    Properties::Value<std::string> value;
    int calls = 0;
    value.AddChangeHandler([&](Node&) { ++calls; });
    value = "a";
    EXPECT_TRUE(value.IsChanged());
    value = "a";
    EXPECT_FALSE(value.IsChanged());
    EXPECT_EQ(calls, 1);
}

TEST(PropertyValueTest, ChangeHandlersRunInOrderWithTheNodeWhileTheOldValueIsStored) {
    Properties::Value<unsigned int> value(1);
    std::string order;
    value.AddChangeHandler([&](Node& node) {
        EXPECT_EQ(&node, &value);
        order += "a" + std::to_string(value.Get());
    });
    value.AddChangeHandler([&](Node&) { order += "b" + std::to_string(value.Get()); });
    value = 2;
    EXPECT_EQ(order, "a1b1");
    EXPECT_EQ(value.Get(), 2U);
}

TEST(PropertyValueTest, AThrowingHandlerLeavesTheOldValueAndTheMark) {
    Properties::Value<unsigned int> value(1);
    bool laterRan = false;
    HandlerId id = value.AddChangeHandler([](Node&) { throw std::runtime_error("no"); });
    value.AddChangeHandler([&](Node&) { laterRan = true; });
    EXPECT_THROW(value = 2, std::runtime_error);
    EXPECT_EQ(value.Get(), 1U);
    EXPECT_FALSE(value.IsChanged());
    EXPECT_FALSE(laterRan);
    value.RemoveChangeHandler(id);
    value = 2;
    EXPECT_EQ(value.Get(), 2U);
    EXPECT_TRUE(laterRan);
}

TEST(PropertyValueTest, AnEmptyHandlerIsABadFunctionCall) {
    Properties::Value<unsigned int> value(1);
    value.AddChangeHandler({});
    EXPECT_THROW(value = 2, std::bad_function_call);
    EXPECT_EQ(value.Get(), 1U);
    value = 1;
    EXPECT_EQ(value.Get(), 1U);
}

TEST(PropertyValueTest, ModifyTellsNobody) {
    Properties::Value<unsigned int> value(1);
    value.AddChangeHandler([](Node&) { FAIL() << "a handler ran"; });
    value.Modify() = 9;
    EXPECT_EQ(value.Get(), 9U);
    EXPECT_FALSE(value.IsChanged());
}

TEST(PropertyValueTest, ComparesAndConvertsLikeItsValue) {
    Properties::Value<unsigned short> value(7);
    Properties::Value<unsigned short> same(7);
    Properties::Value<unsigned short> other(8);
    const unsigned short converted = value;
    EXPECT_EQ(converted, 7);
    EXPECT_TRUE(value == 7);
    EXPECT_TRUE(value != 8);
    EXPECT_FALSE(value == -65529);
    EXPECT_TRUE(value == same);
    EXPECT_TRUE(value != other);
    const Properties::Value<std::string> text("a");
    EXPECT_TRUE(text == std::string("a"));
    EXPECT_TRUE(text != std::string("b"));
}

TEST(PropertyValueTest, ChangedValuesAreRetrievedUntilReset) {
    Properties::Value<unsigned int> value;
    std::vector<Node*> changed;
    value.RetrieveChangedParameters(changed);
    EXPECT_TRUE(changed.empty());
    value = 1;
    value.RetrieveChangedParameters(changed);
    ASSERT_EQ(changed.size(), 1U);
    EXPECT_EQ(changed[0], &value);
    value.ResetChangedParameters();
    value.RetrieveChangedParameters(changed);
    EXPECT_EQ(changed.size(), 1U);
    EXPECT_EQ(value.Get(), 1U);
}

TEST(PropertyValueTest, ReadingAChangeRunsChangeHandlersAtOnceAndUpdateEndLater) {
    Properties::Value<unsigned int> value(1);
    std::string order;
    value.AddChangeHandler([&](Node&) { order += "change "; });
    value.AddUpdateEndHandler([&](Properties::Value<unsigned int>& changed) {
        EXPECT_EQ(&changed, &value);
        order += "end" + std::to_string(changed.Get()) + "a ";
    });
    value.AddUpdateEndHandler([&](Properties::Value<unsigned int>&) { order += "endb"; });
    Vor::Event<> updateEnd;
    Read(value, 2, updateEnd);
    EXPECT_EQ(order, "change ");
    EXPECT_EQ(updateEnd.Count(), 1U);
    updateEnd.Raise();
    EXPECT_EQ(order, "change end2a endb");
}

TEST(PropertyValueTest, ReadingTheStoredValueAddsNoUpdateEndAndClearsTheMark) {
    Properties::Value<unsigned int> value;
    value = 2;
    Vor::Event<> updateEnd;
    Read(value, 2, updateEnd);
    EXPECT_EQ(updateEnd.Count(), 0U);
    EXPECT_FALSE(value.IsChanged());
}

TEST(PropertyValueTest, ReadingGoesThroughAnOverriddenSet) {
    struct Doubling : Properties::Value<unsigned int> {
        void Set(const unsigned int& value) override { ConditionalSet(2 * value); }
    } value;
    Vor::Event<> updateEnd;
    Read<unsigned int>(value, 4, updateEnd);
    EXPECT_EQ(value.Get(), 8U);
}

TEST(PropertyValueTest, RemovedUpdateEndHandlerDoesNotRun) {
    Properties::Value<unsigned int> value;
    HandlerId id = value.AddUpdateEndHandler([](Properties::Value<unsigned int>&) { FAIL() << "a handler ran"; });
    value.RemoveUpdateEndHandler(id);
    EXPECT_EQ(id, 0U);
    value.OnUpdateEnd();
}

TEST(PropertyValueTest, ValidationChecksOnlyAChange) {
    struct Refusing : Properties::Value<unsigned int> {
        Refusing()
            : Properties::Value<unsigned int>(3) {}
        void CheckValidation(const unsigned int& value, bool log) const override {
            checked = value;
            logged = log;
        }
        mutable unsigned int checked = 0;
        mutable bool logged = false;
    } value;
    const Vor::Properties::Internal::JsonPath path;
    const json same = 3;
    Vor::Properties::Internal::JsonReader sameReader(same, path);
    value.ValidateValue(sameReader);
    EXPECT_EQ(value.checked, 0U);
    const json other = 4;
    Vor::Properties::Internal::JsonReader otherReader(other, path);
    value.ValidateValue(otherReader);
    EXPECT_EQ(value.checked, 4U);
    EXPECT_TRUE(value.logged);
    EXPECT_EQ(value.Get(), 3U);
}

TEST(PropertyValueTest, BaseValidationAcceptsEverything) {
    const Properties::Value<unsigned int> value;
    EXPECT_NO_THROW(value.CheckValidation(4294967295U, true));
}

TEST(PropertyValueTest, CopyTakesTheValueWithNotification) {
    Properties::Value<unsigned int> target(1);
    const Properties::Value<unsigned int> source(2);
    int calls = 0;
    target.AddChangeHandler([&](Node&) { ++calls; });
    target.CopyValues(source);
    EXPECT_EQ(target.Get(), 2U);
    EXPECT_TRUE(target.IsChanged());
    EXPECT_EQ(calls, 1);
}

TEST(PropertyValueTest, CopyFromAnotherTypeIsABadCast) {
    Properties::Value<unsigned int> target(1);
    const Properties::Value<unsigned short> source(2);
    EXPECT_THROW(target.CopyValues(source), std::bad_cast);
    EXPECT_EQ(target.Get(), 1U);
}
