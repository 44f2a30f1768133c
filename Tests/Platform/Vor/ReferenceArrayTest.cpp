#include "Vor/ReferenceArray.h"

#include "Tests/Support/Failure.h"
#include "Vor/JsonSerializer.h"
#include "VorApi/Params/PropertyValue.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using Vor::Properties::JsonSerializer;
using Vor::Properties::Structure;
using Vor::Properties::Value;
using Vor::Properties::Internal::ReferenceArray;

TEST(ReferenceArrayTest, KeepsItsElementsInOrder) {
    Structure a(true);
    Structure b(true);
    Structure c(true);
    ReferenceArray array;
    array.Add(&a);
    array.Add(&b);
    array.Add(&c);
    array.Remove(1);
    ASSERT_EQ(array.Count(), 2U);
    EXPECT_EQ(&array.At(0), &a);
    EXPECT_EQ(&array.At(1), &c);
    array.Pop();
    EXPECT_EQ(array.Count(), 1U);
    array.Clear();
    EXPECT_EQ(array.Count(), 0U);
    array.Pop();
    EXPECT_EQ(array.Count(), 0U);
}

TEST(ReferenceArrayTest, AnElementThatIsNotThereIsNotFound) {
    ReferenceArray array;
    EXPECT_TEXTLESS_FAILURE(array.Remove(0), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(array.At(0), yERROR_NOT_FOUND);
}

TEST(ReferenceArrayTest, IsWrittenAsTheSchemasOfItsElements) {
    Value<bool> flag;
    Structure structure(true);
    structure.Register("flag", flag);
    Structure empty(true);
    ReferenceArray array;
    array.Add(&structure.Schema());
    array.Add(&empty.Schema());
    EXPECT_EQ(JsonSerializer::Serialize(array).dump(),
              R"([{"properties":{"flag":{"type":"boolean"}},"type":"object"},{"properties":{},"type":"object"}])");
}

TEST(ReferenceArrayTest, CopyLeavesItsElements) {
    Structure a(true);
    Structure b(true);
    ReferenceArray target;
    ReferenceArray source;
    target.Add(&a);
    source.Add(&b);
    source.Add(&b);
    target.CopyValues(source);
    ASSERT_EQ(target.Count(), 1U);
    EXPECT_EQ(&target.At(0), &a);
}
