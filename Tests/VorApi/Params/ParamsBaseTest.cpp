#include "VorApi/Params/ParamsBase.h"

#include "Tests/Support/Failure.h"
#include "Vor/JsonSerializer.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using Vor::Properties::JsonSerializer;

namespace {

struct Probe : Vor::Params::Value<bool> {
    void MarkUsedEnabled() { usedEnabled = true; }
    void MarkVisibilityEnabled() { visibilityEnabled = true; }
};

template <class P>
class ParamsBaseTest : public testing::Test {
public:
    P params;
};

using Kinds = testing::Types<Vor::Params::Value<bool>, Vor::Params::Group>;
TYPED_TEST_SUITE(ParamsBaseTest, Kinds);

} // namespace

TYPED_TEST(ParamsBaseTest, StartsWithDefaults) {
    const auto& params = this->params;
    EXPECT_EQ(params.GetTitle(), "");
    EXPECT_EQ(params.GetSortOrder(), 0U);
    EXPECT_FALSE(params.GetReadOnly());
    EXPECT_TRUE(params.GetUsed());
    EXPECT_FALSE(params.IsReadOnlyEnabled());
    EXPECT_FALSE(params.IsUsedEnabled());
    EXPECT_FALSE(params.IsVisibilityEnabled());
    EXPECT_FALSE(params.IsMetaEnabled());
    EXPECT_FALSE(params.IsDescriptionEnabled());
}

TYPED_TEST(ParamsBaseTest, KeywordsStartWithTheirDefaultsInTheSchema) {
    auto& params = this->params;
    params.EnableReadOnly();
    params.EnableUsed();
    params.EnableMeta(true);
    params.EnableDescription(true);
    const auto schema = JsonSerializer::SerializeSchema(params);
    EXPECT_EQ(schema.at("title"), "");
    EXPECT_EQ(schema.at("sortOrder"), 0);
    EXPECT_EQ(schema.at("readOnly"), false);
    EXPECT_EQ(schema.at("used"), true);
    EXPECT_EQ(schema.at("x-meta"), "");
    EXPECT_EQ(schema.at("description"), "");
    EXPECT_FALSE(schema.contains("visibility"));
}

TYPED_TEST(ParamsBaseTest, VisibilityStartsAtZeroAndLeavesTheSchemaWhenDisabled) {
    auto& params = this->params;
    params.EnableVisibility(true);
    EXPECT_EQ(JsonSerializer::SerializeSchema(params).at("visibility"), 0);
    params.SetVisibility(4);
    EXPECT_EQ(params.GetVisibility(), 4U);
    params.EnableVisibility(false);
    EXPECT_FALSE(JsonSerializer::SerializeSchema(params).contains("visibility"));
    params.EnableVisibility(true);
    EXPECT_EQ(params.GetVisibility(), 0U);
}

TYPED_TEST(ParamsBaseTest, UsedAndVisibilityExcludeEachOther) {
    auto& params = this->params;
    params.EnableVisibility(true);
    EXPECT_FAILURE(params.EnableUsed(), yERROR_PARAMETER, "Visibility is already enabled, cannot enable used.");
    EXPECT_FALSE(JsonSerializer::SerializeSchema(params).contains("used"));
    params.EnableVisibility(false);
    params.EnableUsed();
    EXPECT_FAILURE(params.EnableVisibility(true), yERROR_PARAMETER,
                   "Used is already enabled, cannot enable visibility.");
    EXPECT_FALSE(params.IsVisibilityEnabled());
    EXPECT_FALSE(JsonSerializer::SerializeSchema(params).contains("visibility"));
    params.EnableVisibility(false);
}

TYPED_TEST(ParamsBaseTest, AValueSetBeforeItsKeywordIsEnabledIsKept) {
    auto& params = this->params;
    params.SetReadOnly(true);
    params.SetUsed(false);
    EXPECT_TRUE(params.GetReadOnly());
    EXPECT_FALSE(params.GetUsed());
    EXPECT_FALSE(JsonSerializer::SerializeSchema(params).contains("readOnly"));
    params.EnableReadOnly();
    params.EnableUsed();
    EXPECT_EQ(JsonSerializer::SerializeSchema(params).at("readOnly"), true);
    EXPECT_EQ(JsonSerializer::SerializeSchema(params).at("used"), false);
}

TEST(ParamsBaseStateTest, EnablingAPresentVisibilityIsAcceptedEvenWithUsedEnabled) {
    Probe params;
    params.EnableVisibility(true);
    params.MarkUsedEnabled();
    EXPECT_NO_THROW(params.EnableVisibility(true));
    EXPECT_TRUE(params.IsVisibilityEnabled());
}

TEST(ParamsBaseStateTest, CopyOfBothUsedAndVisibilityFails) {
    Probe source;
    source.EnableVisibility(true);
    source.MarkUsedEnabled();
    Vor::Params::Value<bool> target;
    EXPECT_FAILURE(target.CopyValues(source), yERROR_PARAMETER, "Visibility is already enabled, cannot enable used.");
}
