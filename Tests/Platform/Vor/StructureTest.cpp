#include "Vor/Structure.h"

#include "Tests/Support/Failure.h"
#include "VorApi/Params/PropertyValue.h"
#include "VorApi/Params/Value.h"

#include <memory>
#include <typeinfo>

#include <gtest/gtest.h>

using Vor::Properties::Node;
using Vor::Properties::Structure;
using Vor::Properties::Value;

namespace {

std::vector<std::string> NamesOf(const Structure& structure) {
    std::vector<std::string> names;
    for (const auto& member : structure.Members()) {
        names.push_back(member.Text());
    }
    return names;
}

/// Many values under the names "m0", "m1" and so on.
struct Many {
    explicit Many(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            values.push_back(std::make_unique<Value<unsigned int>>(static_cast<unsigned int>(i)));
            structure.Register("m" + std::to_string(i), *values.back());
        }
    }
    std::vector<std::unique_ptr<Value<unsigned int>>> values;
    Structure structure{true};
};

} // namespace

TEST(StructureTest, KeepsTheOrderOfRegistrationAndFindsByName) {
    Structure structure(true);
    Value<bool> z;
    Value<bool> a;
    structure.Register("z", z);
    structure.Register("a", a, false);
    EXPECT_EQ(NamesOf(structure), (std::vector<std::string>{"z", "a"}));
    EXPECT_EQ(&structure.At("a"), &a);
    EXPECT_EQ(structure.Find("z"), &z);
    EXPECT_EQ(structure.Find("y"), nullptr);
}

TEST(StructureTest, AtOfAnUnknownNameFails) {
    const Structure structure(true);
    EXPECT_FAILURE(structure.At("a"), yERROR_NOT_FOUND, "There is no member 'a'.");
}

TEST(StructureTest, RegisteringANameAgainReplacesItsNodeInPlace) {
    Structure structure(true);
    Value<bool> first;
    Value<bool> second;
    Value<bool> other;
    structure.Register("a", first);
    structure.Register("b", other);
    structure.Register("a", second);
    EXPECT_EQ(NamesOf(structure), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(&structure.At("a"), &second);
}

TEST(StructureTest, DeregisteredChildrenAreGoneAndUnknownOnesIgnored) {
    Structure structure(true);
    Value<bool> a;
    Value<bool> b;
    structure.Register("a", a);
    structure.Register("b", b);
    structure.Deregister("c");
    structure.Deregister("a");
    EXPECT_EQ(NamesOf(structure), (std::vector<std::string>{"b"}));
    EXPECT_EQ(structure.Find("a"), nullptr);
}

TEST(StructureTest, OneNodeMayStandInTwoStructures) {
    Value<bool> live;
    Structure keeper(true);
    keeper.Register("params", live);
    {
        Structure temporary(true);
        temporary.Register("parameters", live);
    }
    EXPECT_EQ(&keeper.At("params"), &live);
}

TEST(StructureTest, ManyChildrenAreFoundThroughAddingReplacingAndRemoving) {
    Many many(1000);
    for (std::size_t i = 0; i < 1000; ++i) {
        ASSERT_EQ(many.structure.Find("m" + std::to_string(i)), many.values[i].get());
    }
    EXPECT_EQ(many.structure.Find("m1000"), nullptr);
    Value<unsigned int> replacement;
    many.structure.Register("m500", replacement);
    EXPECT_EQ(many.structure.Find("m500"), &replacement);
    many.structure.Deregister("m0");
    EXPECT_EQ(many.structure.Find("m0"), nullptr);
    EXPECT_EQ(many.structure.Find("m999"), many.values[999].get());
    EXPECT_EQ(many.structure.Members().size(), 999U);
    for (std::size_t i = 1; i < 1000; ++i) {
        many.structure.Deregister("m" + std::to_string(i));
    }
    EXPECT_TRUE(many.structure.Members().empty());
    EXPECT_EQ(many.structure.Find("m999"), nullptr);
}

TEST(StructureTest, CopyMatchesChildrenByName) {
    Structure target(true);
    Structure source(true);
    Value<unsigned int> a(1);
    Value<unsigned int> b(1);
    Value<unsigned int> onlyHere(1);
    Value<unsigned int> sourceA(2);
    Value<unsigned int> sourceB(3);
    Value<unsigned int> onlyThere(4);
    target.Register("a", a);
    target.Register("b", b);
    target.Register("onlyHere", onlyHere);
    source.Register("onlyThere", onlyThere);
    source.Register("b", sourceB);
    source.Register("a", sourceA);
    target.CopyValues(source);
    EXPECT_EQ(a.Get(), 2U);
    EXPECT_EQ(b.Get(), 3U);
    EXPECT_EQ(onlyHere.Get(), 1U);
}

TEST(StructureTest, ChildrenRegisteredAsNotCopiedKeepTheirValue) {
    Structure target(true);
    Structure none(false);
    Structure source(true);
    Value<unsigned int> kept(1);
    Value<unsigned int> alsoKept(1);
    Value<unsigned int> copied(1);
    Value<unsigned int> two(2);
    target.Register("a", kept, false);
    none.Register("a", alsoKept);
    none.Register("b", copied, true);
    source.Register("a", two);
    source.Register("b", two);
    target.CopyValues(source);
    none.CopyValues(source);
    EXPECT_EQ(kept.Get(), 1U);
    EXPECT_EQ(alsoKept.Get(), 1U);
    EXPECT_EQ(copied.Get(), 2U);
}

TEST(StructureTest, CopyOfManyChildrenInAnotherOrder) {
    Many target(500);
    Structure source(true);
    std::vector<std::unique_ptr<Value<unsigned int>>> values;
    for (std::size_t i = 500; i-- > 0;) {
        values.push_back(std::make_unique<Value<unsigned int>>(static_cast<unsigned int>(i + 7)));
        source.Register("m" + std::to_string(i), *values.back());
    }
    target.structure.CopyValues(source);
    for (std::size_t i = 0; i < 500; ++i) {
        ASSERT_EQ(target.values[i]->Get(), i + 7);
    }
}

TEST(StructureTest, CopyFromAnotherKindOfNodeOrChildIsABadCast) {
    Structure target(true);
    Value<unsigned int> number;
    target.Register("a", number);
    const Value<unsigned int> other;
    EXPECT_THROW(target.CopyValues(other), std::bad_cast);
    Structure source(true);
    Value<std::string> text;
    source.Register("a", text);
    EXPECT_THROW(target.CopyValues(source), std::bad_cast);
}

TEST(StructureTest, ValidationAndChangesGoThroughTheWholeTreeInOrder) {
    Structure outer(true);
    Structure inner(true);
    Vor::Params::Value<long long> first;
    Vor::Params::Value<long long> nested;
    Vor::Params::Value<long long> last;
    outer.Register("first", first);
    outer.Register("inner", inner);
    outer.Register("last", last);
    inner.Register("nested", nested);
    for (auto* const value : {&first, &nested, &last}) {
        value->EnableMaximum(true);
        value->SetMaximum(0);
    }
    first.SetTitle("first");
    nested.SetTitle("nested");
    first = 1;
    nested = 1;
    std::vector<std::string> errors;
    outer.CheckValidationAndCollect(errors, 3);
    EXPECT_EQ(errors, (std::vector<std::string>{"first is set to be greater than its maximum.",
                                                "nested is set to be greater than its maximum."}));
    std::vector<Node*> changed;
    outer.RetrieveChangedParameters(changed);
    EXPECT_EQ(changed, (std::vector<Node*>{&first, &nested}));
    outer.ResetChangedParameters();
    changed.clear();
    outer.RetrieveChangedParameters(changed);
    EXPECT_TRUE(changed.empty());
}

TEST(StructureTest, TheNumberGivenToTheValidationIsHandedDown) {
    struct Child : Value<bool> {
        void CheckValidationAndCollect(std::vector<std::string>&, unsigned long context) override { given = context; }
        unsigned long given = 0;
    } child;
    Structure outer(true);
    Structure inner(true);
    outer.Register("inner", inner);
    inner.Register("child", child);
    std::vector<std::string> errors;
    outer.CheckValidationAndCollect(errors, 42);
    EXPECT_EQ(child.given, 42U);
}
