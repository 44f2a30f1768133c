#include "Tests/Support/Failure.h"
#include "Vor/JsonSerializer.h"
#include "VorApi/Params/Value.h"

#include <typeinfo>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Vor::Params::ScaleOption;
using Vor::Params::Value;
using Vor::Properties::JsonSerializer;

TEST(ValueCopyTest, CopyMakesValueAndSchemaEqual) {
    Value<unsigned short> source(5);
    source.SetTitle("Gain");
    source.SetSortOrder(300);
    source.EnableReadOnly();
    source.SetReadOnly(true);
    source.EnableUsed();
    source.SetUsed(false);
    source.EnableMeta(true);
    source.SetMeta("m");
    source.EnableDescription(true);
    source.SetDescription("d");
    source.EnableUnits(true);
    source.SetUnits("mm");
    source.EnableMaximum(true);
    source.SetMaximum(9);
    source.EnableExclusiveMaximum(true);
    source.SetExclusiveMaximum(10);
    source.EnableScale(true);
    source.SetScale(static_cast<ScaleOption>(3));
    source.EnableFormat(true);
    source.SetFormat("f");
    source.SetExtendedType("e");
    source.EnableActual(true);
    source.SetActual(7);
    source.EnableMinimum(false);

    Value<unsigned short> target(1);
    target.EnableExclusiveMinimum(true);
    target.EnableUnits(true);
    target.SetUnits("inch");
    target.CopyValues(source);
    EXPECT_EQ(JsonSerializer::SerializeSchema(target), JsonSerializer::SerializeSchema(source));
    EXPECT_EQ(target.GetStored(), 5);
    EXPECT_EQ(target.Get(), 7);
    EXPECT_FALSE(target.IsMinimumEnabled());
    EXPECT_TRUE(target.GetReadOnly());
    EXPECT_FALSE(target.GetUsed());

    const Value<unsigned short> bare(2);
    target.CopyValues(bare);
    EXPECT_EQ(JsonSerializer::SerializeSchema(target), JsonSerializer::SerializeSchema(bare));
    EXPECT_EQ(target.Get(), 2);
}

TEST(ValueCopyTest, ACopyIsIndependentOfItsSource) {
    Value<long long> target;
    {
        Value<long long> source(5);
        source.EnableMaximum(true);
        source.SetMaximum(9);
        target.CopyValues(source);
        source.SetMaximum(4);
    }
    EXPECT_EQ(target.GetMaximum(), 9);
    EXPECT_EQ(JsonSerializer::SerializeSchema(target).at("maximum"), 9);
}

TEST(ValueCopyTest, ACopyOntoItselfChangesNothing) {
    Value<long long> value(5);
    value.EnableMaximum(true);
    value.SetMaximum(9);
    const json schema = JsonSerializer::SerializeSchema(value);
    value.CopyValues(value);
    EXPECT_EQ(JsonSerializer::SerializeSchema(value), schema);
    EXPECT_EQ(value.Get(), 5);
}

TEST(ValueCopyTest, CopyOfAPlainValueTakesTheValueOnly) {
    Value<long long> target(1);
    target.SetTitle("kept");
    target.EnableUnits(true);
    const Vor::Properties::Value<long long> source(4);
    target.CopyValues(source);
    EXPECT_EQ(target.Get(), 4);
    EXPECT_EQ(target.GetTitle(), "kept");
    EXPECT_TRUE(target.IsUnitsEnabled());
}

TEST(ValueCopyTest, CopyFromAnotherTypeIsABadCast) {
    Value<long long> target(1);
    const Value<unsigned int> source(4);
    EXPECT_THROW(target.CopyValues(source), std::bad_cast);
    EXPECT_EQ(target.Get(), 1);
}

TEST(ValueCopyTest, AValueThatSkipsCopiesStaysAsItIs) {
    Value<long long> target(1);
    target.SetSkipCopy(true);
    Value<long long> source(4);
    source.SetTitle("other");
    target.CopyValues(source);
    EXPECT_EQ(target.Get(), 1);
    EXPECT_EQ(target.GetTitle(), "");
}

TEST(ValueCopyTest, CopyOfAVisibilityOntoAUsedValueFailsAfterTheValueWasTaken) {
    Value<long long> target(1);
    target.EnableUsed();
    Value<long long> source(4);
    source.SetTitle("source");
    source.EnableVisibility(true);
    EXPECT_FAILURE(target.CopyValues(source), yERROR_PARAMETER, "Used is already enabled, cannot enable visibility.");
    EXPECT_EQ(target.Get(), 4);
    EXPECT_EQ(target.GetTitle(), "source");
    EXPECT_FALSE(target.IsVisibilityEnabled());
    EXPECT_TRUE(target.IsUsedEnabled());
}

TEST(ValueCopyTest, CopyOfAUsedValueReplacesVisibility) {
    Value<long long> target;
    target.EnableVisibility(true);
    Value<long long> source;
    source.EnableUsed();
    target.CopyValues(source);
    EXPECT_EQ(JsonSerializer::SerializeSchema(target), JsonSerializer::SerializeSchema(source));
}
