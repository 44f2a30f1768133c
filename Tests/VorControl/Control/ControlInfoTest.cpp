#include "VorControl/Control/ControlInfo.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/TestService.h"
#include "yApi/yStatus.h"

#include <gtest/gtest.h>

using VorControl::ControlInfo;

namespace {

TEST(ControlInfoTest, DefaultHasTheMarkerTextsAndIsSupportedEverywhere) {
    const ControlInfo info;
    EXPECT_EQ(info.TypeName(), "TT-TT-TT!@#$%");
    EXPECT_EQ(info.DisplayName(), "Dun-Dun!@#$%");
    EXPECT_EQ(info.Description(), "");
    EXPECT_EQ(info.HelpHtml(), "");
    EXPECT_EQ(info.HelpUrl(), "");
    EXPECT_EQ(info.Icon().name, "");
    EXPECT_TRUE(info.Icon().bytes.empty());
    EXPECT_EQ(info.CategoryCount(), 0U);
    EXPECT_TEXTLESS_FAILURE(info.Factory(), yERROR_STATE);
    EXPECT_TRUE(info.SupportedOnPhysicalSensor());
    EXPECT_TRUE(info.SupportedOnPhysicalVorbox());
    EXPECT_TRUE(info.SupportedOnVirtualSensor());
    EXPECT_TRUE(info.SupportedOnVirtualVorbox());
    EXPECT_TRUE(info.SupportedOnVorsuiteServiceApp());
    EXPECT_TRUE(info.SupportedOnVorsuiteDaemon());
}

TEST(ControlInfoTest, SettersChainAndReplace) {
    ControlInfo info;
    info.SetTypeName("first").SetTypeName("type").SetDisplayName("display").SetDescription("description");
    info.SetHelpHtml("html").SetHelpUrl("url").SetIcon("old", {9}).SetIcon("icon", {1, 2, 0, 255}).AddCategory("a");
    EXPECT_EQ(info.TypeName(), "type");
    EXPECT_EQ(info.DisplayName(), "display");
    EXPECT_EQ(info.Description(), "description");
    EXPECT_EQ(info.HelpHtml(), "html");
    EXPECT_EQ(info.HelpUrl(), "url");
    EXPECT_EQ(info.Icon().name, "icon");
    EXPECT_EQ(info.Icon().bytes, (std::vector<unsigned char>{1, 2, 0, 255}));
}

TEST(ControlInfoTest, ANullTextIsAnEmptyOne) {
    ControlInfo info;
    info.SetTypeName(nullptr).SetDisplayName(nullptr).SetDescription(nullptr).SetHelpHtml(nullptr).SetHelpUrl(nullptr);
    info.SetIcon(nullptr, {1}).AddCategory(nullptr);
    for (const std::string& text : {info.TypeName(), info.DisplayName(), info.Description(), info.HelpHtml(),
                                    info.HelpUrl(), info.Icon().name, info.CategoryAt(0)}) {
        EXPECT_EQ(text, "");
    }
    EXPECT_FAILURE(info.AddCategory(""), yERROR_ALREADY_EXISTS, "Category  already added");
}

TEST(ControlInfoTest, CategoriesKeepTheOrderOfAddingAndAreUnique) {
    ControlInfo info;
    info.AddCategory("z").AddCategory("a");
    EXPECT_FAILURE(info.AddCategory("z"), yERROR_ALREADY_EXISTS, "Category z already added");
    ASSERT_EQ(info.CategoryCount(), 2U);
    EXPECT_EQ(info.CategoryAt(0), "z");
    EXPECT_EQ(info.CategoryAt(1), "a");
}

TEST(ControlInfoTest, CategoryAtTheCountFails) {
    ControlInfo info;
    info.AddCategory("a");
    EXPECT_FAILURE(info.CategoryAt(1), yERROR_PARAMETER, "Index 1 into the categories is out of bounds");
}

TEST(ControlInfoTest, FactoryFailsUntilOneIsSet) {
    ControlInfo info;
    EXPECT_TEXTLESS_FAILURE(info.Factory(), yERROR_STATE);
    Tests::TestFactory factory([](const auto&) { return nullptr; });
    info.SetFactory(factory);
    EXPECT_EQ(&info.Factory(), &factory);
}

TEST(ControlInfoTest, EachEnvironmentFlagHasItsAccessor) {
    ControlInfo::SupportedEnvironmentList none{false, false, false, false, false, false};
    const auto accepted = [](const ControlInfo::SupportedEnvironmentList& list) {
        ControlInfo info;
        info.SetSupportedEnvironment(list);
        return std::vector<bool>{info.SupportedOnPhysicalSensor(),     info.SupportedOnPhysicalVorbox(),
                                 info.SupportedOnVirtualSensor(),      info.SupportedOnVirtualVorbox(),
                                 info.SupportedOnVorsuiteServiceApp(), info.SupportedOnVorsuiteDaemon()};
    };
    EXPECT_EQ(accepted(none), std::vector<bool>(6, false));
    bool ControlInfo::SupportedEnvironmentList::*const flags[] = {
        &ControlInfo::SupportedEnvironmentList::physicalSensor,
        &ControlInfo::SupportedEnvironmentList::physicalVorbox,
        &ControlInfo::SupportedEnvironmentList::virtualSensor,
        &ControlInfo::SupportedEnvironmentList::virtualVorbox,
        &ControlInfo::SupportedEnvironmentList::vorsuiteServiceApp,
        &ControlInfo::SupportedEnvironmentList::vorsuiteDaemon};
    for (std::size_t i = 0; i < std::size(flags); ++i) {
        ControlInfo::SupportedEnvironmentList one = none;
        one.*flags[i] = true;
        std::vector<bool> expected(6, false);
        expected[i] = true;
        EXPECT_EQ(accepted(one), expected) << i;
    }
}

TEST(ControlInfoTest, ACopyDoesntFollowTheOriginalButSharesItsFactory) {
    Tests::TestFactory factory([](const auto&) { return nullptr; });
    ControlInfo original;
    original.SetTypeName("before").AddCategory("a").SetFactory(factory);
    const ControlInfo copy = original;
    original.SetTypeName("after").AddCategory("b");
    EXPECT_EQ(copy.TypeName(), "before");
    EXPECT_EQ(copy.CategoryCount(), 1U);
    EXPECT_EQ(&copy.Factory(), &original.Factory());
}

} // namespace
