#include "VorApi/Params/PropertyArray.h"

#include "Tests/Support/Failure.h"
#include "Vor/JsonSerializer.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <typeinfo>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Vor::Properties::HandlerId;
using Vor::Properties::JsonSerializer;
using Vor::Properties::Node;

namespace Properties = Vor::Properties;

namespace {

struct CountedItem : Vor::Params::Group {
    CountedItem() { Register("n", n); }
    ~CountedItem() override { ++destroyed; }
    Vor::Params::Value<unsigned int> n;

    static inline int destroyed = 0;
};

struct OtherItem : Vor::Params::Group {};

/// Records the arguments of the handlers of an array.
struct Journal {
    explicit Journal(Properties::Array<CountedItem>& array) {
        array.AddItemAddedHandler([this](Properties::Array<CountedItem>& where, CountedItem&) {
            text += "+" + std::to_string(where.Count()) + " ";
        });
        array.AddItemRemovedHandler([this](Properties::Array<CountedItem>& where, CountedItem& item) {
            text += "-" + std::to_string(item.n.Get()) + "of" + std::to_string(where.Count()) + " ";
        });
    }
    std::string text;
};

void Number(Properties::Array<CountedItem>& array) {
    for (unsigned long i = 0; i < array.Count(); ++i) {
        array.At(i).n = static_cast<unsigned int>(i);
    }
}

std::size_t SchemaItems(const Properties::Array<CountedItem>& array) {
    return JsonSerializer::SerializeSchema(array).at("items").size();
}

} // namespace

TEST(PropertyArrayTest, StartsEmptyWithEmptyItems) {
    const Properties::Array<CountedItem> array;
    EXPECT_EQ(array.Count(), 0U);
    EXPECT_EQ(JsonSerializer::Serialize(array), json::array());
    EXPECT_EQ(JsonSerializer::SerializeSchema(array), json::parse(R"({"type": "array", "items": []})"));
}

TEST(PropertyArrayTest, GrowingAddsElementsAndTheirSchemasAndRunsTheHandlersAfterEach) {
    Properties::Array<CountedItem> array;
    Journal journal(array);
    array.Resize(3);
    EXPECT_EQ(journal.text, "+1 +2 +3 ");
    EXPECT_EQ(array.Count(), 3U);
    EXPECT_EQ(SchemaItems(array), 3U);
    EXPECT_EQ(JsonSerializer::SerializeSchema(array).at("items")[2].at("properties").at("n").at("title"), "n");
}

TEST(PropertyArrayTest, ResizeToTheCurrentCountRunsNoHandler) {
    Properties::Array<CountedItem> array;
    array.Resize(2);
    Journal journal(array);
    array.Resize(2);
    EXPECT_EQ(journal.text, "");
}

TEST(PropertyArrayTest, ShrinkingRunsTheHandlersUpwardBeforeAnythingGoes) {
    Properties::Array<CountedItem> array;
    array.Resize(4);
    Number(array);
    CountedItem::destroyed = 0;
    bool early = false;
    array.AddItemRemovedHandler(
        [&](Properties::Array<CountedItem>&, CountedItem&) { early = early || CountedItem::destroyed != 0; });
    Journal journal(array);
    array.Resize(1);
    EXPECT_EQ(journal.text, "-1of4 -2of4 -3of4 ");
    EXPECT_FALSE(early);
    EXPECT_EQ(CountedItem::destroyed, 3);
    EXPECT_EQ(array.Count(), 1U);
    EXPECT_EQ(SchemaItems(array), 1U);
}

TEST(PropertyArrayTest, RemoveShiftsTheLaterOnes) {
    Properties::Array<CountedItem> array;
    array.Resize(3);
    Number(array);
    Journal journal(array);
    array.Remove(1);
    EXPECT_EQ(journal.text, "-1of3 ");
    ASSERT_EQ(array.Count(), 2U);
    EXPECT_EQ(array.At(0).n.Get(), 0U);
    EXPECT_EQ(array.At(1).n.Get(), 2U);
    EXPECT_EQ(SchemaItems(array), 2U);
}

TEST(PropertyArrayTest, RemoveMarkedKeepsTheOthersInTheirOrder) {
    Properties::Array<CountedItem> array;
    for (unsigned int i = 0; i < 5; ++i) {
        array.Emplace().n = i;
    }
    array.At(4).n.SetTitle("last");
    array.RemoveMarked({true, false, true});
    EXPECT_EQ(JsonSerializer::Serialize(array), json::parse(R"([{"n": 1}, {"n": 3}, {"n": 4}])"));
    const auto items = JsonSerializer::SerializeSchema(array)["items"];
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[2]["properties"]["n"]["title"], "last");
    array.RemoveMarked({true, true, true, true});
    EXPECT_EQ(array.Count(), 0U);
    EXPECT_EQ(JsonSerializer::SerializeSchema(array)["items"], json::array());
}

TEST(PropertyArrayTest, RemoveMarkedTellsOfAllBeforeTheFirstGoes) {
    Properties::Array<CountedItem> array;
    for (unsigned int i = 0; i < 3; ++i) {
        array.Emplace().n = i;
    }
    EXPECT_FALSE(array.HasItemRemovedHandlers());
    const Journal journal(array);
    EXPECT_TRUE(array.HasItemRemovedHandlers());
    array.RemoveMarked({false, true, true});
    EXPECT_EQ(journal.text, "-1of3 -2of3 ");
    EXPECT_EQ(array.Count(), 1U);
}

TEST(PropertyArrayTest, RemoveOfTheLastElementLeavesItemsEmpty) {
    Properties::Array<CountedItem> array;
    array.Resize(1);
    array.Remove(0);
    EXPECT_EQ(JsonSerializer::SerializeSchema(array).at("items"), json::array());
}

TEST(PropertyArrayTest, AnIndexAtOrPastTheCountIsNotFound) {
    Properties::Array<CountedItem> array;
    array.Resize(1);
    Journal journal(array);
    EXPECT_TEXTLESS_FAILURE(array.At(1), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(static_cast<const Properties::Array<CountedItem>&>(array).At(2), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(array.Remove(1), yERROR_NOT_FOUND);
    EXPECT_EQ(journal.text, "");
    EXPECT_EQ(array.Count(), 1U);
}

TEST(PropertyArrayTest, ClearRunsTheHandlersInOrderThenDestroysAll) {
    Properties::Array<CountedItem> array;
    array.Resize(3);
    Number(array);
    Journal journal(array);
    CountedItem::destroyed = 0;
    array.Clear();
    EXPECT_EQ(journal.text, "-0of3 -1of3 -2of3 ");
    EXPECT_EQ(CountedItem::destroyed, 3);
    EXPECT_EQ(array.Count(), 0U);
    EXPECT_EQ(SchemaItems(array), 0U);
}

TEST(PropertyArrayTest, EmplaceAppendsOneElement) {
    Properties::Array<CountedItem> array;
    Journal journal(array);
    CountedItem& item = array.Emplace();
    EXPECT_EQ(&item, &array.At(0));
    EXPECT_EQ(journal.text, "+1 ");
    EXPECT_EQ(SchemaItems(array), 1U);
}

TEST(PropertyArrayTest, ElementsComeFromTheFactoryAndStayInPlace) {
    unsigned int made = 0;
    Properties::Array<CountedItem> array([&] {
        auto item = std::make_unique<CountedItem>();
        item->n = ++made;
        return item;
    });
    array.Resize(1);
    const CountedItem* const first = &array.At(0);
    array.Resize(100);
    EXPECT_EQ(made, 100U);
    EXPECT_EQ(&array.At(0), first);
    EXPECT_EQ(array.At(99).n.Get(), 100U);
}

TEST(PropertyArrayTest, RemovedHandlersDoNotRun) {
    Properties::Array<CountedItem> array;
    HandlerId added =
        array.AddItemAddedHandler([](Properties::Array<CountedItem>&, CountedItem&) { FAIL() << "a handler ran"; });
    HandlerId removed =
        array.AddItemRemovedHandler([](Properties::Array<CountedItem>&, CountedItem&) { FAIL() << "a handler ran"; });
    array.RemoveItemAddedHandler(added);
    array.RemoveItemRemovedHandler(removed);
    array.Resize(1);
    array.Clear();
}

TEST(PropertyArrayTest, AChangeInAnyElementIsOneChangeOfTheArray) {
    Properties::Array<CountedItem> array;
    array.Resize(3);
    std::vector<Node*> changed;
    array.RetrieveChangedParameters(changed);
    EXPECT_TRUE(changed.empty());
    array.At(0).n = 4;
    array.At(2).n = 5;
    array.RetrieveChangedParameters(changed);
    EXPECT_EQ(changed, (std::vector<Node*>{&array}));
    array.ResetChangedParameters();
    changed.clear();
    array.RetrieveChangedParameters(changed);
    EXPECT_TRUE(changed.empty());
}

TEST(PropertyArrayTest, ValidationGoesThroughTheElements) {
    Properties::Array<CountedItem> array;
    array.Resize(2);
    for (unsigned long i = 0; i < 2; ++i) {
        array.At(i).n.EnableMaximum(true);
    }
    array.At(1).n = 1;
    std::vector<std::string> errors;
    array.CheckValidationAndCollect(errors, 0);
    EXPECT_EQ(errors, (std::vector<std::string>{"n is set to be greater than its maximum."}));
}

TEST(PropertyArrayTest, CopyResizesWithTheHandlersThenCopiesTheElements) {
    Properties::Array<CountedItem> target;
    target.Resize(5);
    Number(target);
    Properties::Array<CountedItem> source;
    source.Resize(3);
    for (unsigned long i = 0; i < 3; ++i) {
        source.At(i).n = static_cast<unsigned int>(10 + i);
    }
    std::vector<unsigned int> firstSeen;
    target.AddItemRemovedHandler(
        [&](Properties::Array<CountedItem>& array, CountedItem&) { firstSeen.push_back(array.At(0).n.Get()); });
    Journal journal(target);
    target.CopyValues(source);
    EXPECT_EQ(journal.text, "-3of5 -4of5 ");
    EXPECT_EQ(firstSeen, (std::vector<unsigned int>{0, 0}));
    ASSERT_EQ(target.Count(), 3U);
    EXPECT_EQ(target.At(2).n.Get(), 12U);
    EXPECT_EQ(SchemaItems(target), 3U);
}

TEST(PropertyArrayTest, CopyFromAnotherTypeIsABadCast) {
    Properties::Array<CountedItem> target;
    target.Resize(2);
    const Properties::Array<OtherItem> source;
    EXPECT_THROW(target.CopyValues(source), std::bad_cast);
    EXPECT_EQ(target.Count(), 2U);
}
