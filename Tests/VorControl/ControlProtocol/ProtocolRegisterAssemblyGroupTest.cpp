#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Translations.h"
#include "Tests/VorControl/ControlProtocol/TestAssembly.h"
#include "yApi/yFault.h"

#include <stdexcept>

#include <gtest/gtest.h>

using namespace Tests;

namespace {

std::shared_ptr<TestAssembly> Assembly(const char* id, const std::vector<std::string>& sources = {}) {
    auto assembly = std::make_shared<TestAssembly>(false, 0, 65534, id);
    assembly->WithTypes();
    for (const auto& source : sources) {
        assembly->AddEntries({{"scan", {}, {}, source}});
    }
    return assembly;
}

} // namespace

TEST(RegisterAssemblyGroup, ListsIdsInAscendingOrder) {
    ProtocolRegisterAssemblyGroup group;
    EXPECT_TRUE(group.Empty());
    EXPECT_TRUE(group.List().empty());
    group.Add(Assembly("b"));
    group.Add(Assembly("c"));
    group.Add(Assembly("a"));
    EXPECT_FALSE(group.Empty());
    EXPECT_EQ(group.List(), (std::vector<std::string>{"a", "b", "c"}));
}

TEST(RegisterAssemblyGroup, FindsAssembliesById) {
    ProtocolRegisterAssemblyGroup group;
    EXPECT_FALSE(group.HasRegisterAssembly("a"));
    EXPECT_FALSE(group.HasRegisterAssembly(nullptr));
    const auto assembly = Assembly("a");
    group.Add(assembly);
    EXPECT_TRUE(group.HasRegisterAssembly("a"));
    EXPECT_FALSE(group.HasRegisterAssembly("b"));
    EXPECT_FALSE(group.HasRegisterAssembly(nullptr));
    EXPECT_EQ(group.RegisterAssembly("a"), assembly);
}

TEST(RegisterAssemblyGroup, SecondAssemblyOfOneIdIsRefused) {
    ProtocolRegisterAssemblyGroup group;
    const auto first = Assembly("a");
    group.Add(first);
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_FAILURE(group.Add(Assembly("a")), yERROR_PARAMETER,
                   "Failed to insert register assembly a. Check if it is a duplicate");
    EXPECT_TRUE(
        WasTranslated("com.vorlab.ctrl", "Failed to insert register assembly %1$s. Check if it is a duplicate"));
    EXPECT_EQ(group.RegisterAssembly("a"), first);
}

TEST(RegisterAssemblyGroup, FailedLookupsTellWhy) {
    ProtocolRegisterAssemblyGroup group;
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_FAILURE(group.RegisterAssembly(nullptr), yERROR_PARAMETER, "No register assembly identifier provided");
    EXPECT_FAILURE(group.CommandTarget(nullptr), yERROR_PARAMETER, "No register assembly identifier provided");
    EXPECT_FAILURE(group.RegisterAssembly("a"), yERROR_NOT_FOUND,
                   "No register assembly has been added to the register assembly group");
    EXPECT_FAILURE(group.CommandTarget("a"), yERROR_NOT_FOUND,
                   "No register assembly has been added to the register assembly group");
    group.Add(Assembly("a"));
    EXPECT_FAILURE(group.RegisterAssembly("b"), yERROR_NOT_FOUND, "No register assembly with identifier b was found");
    EXPECT_FAILURE(group.CommandTarget("b"), yERROR_NOT_FOUND, "No register assembly with identifier b was found");
    for (const char* text : {"No register assembly identifier provided",
                             "No register assembly has been added to the register assembly group",
                             "No register assembly with identifier %1$s was found"}) {
        EXPECT_TRUE(WasTranslated("com.vorlab.ctrl", text)) << text;
    }
}

TEST(RegisterAssemblyGroup, CommandTargetIsThatOfTheAssembly) {
    ProtocolRegisterAssemblyGroup group;
    group.Add(Assembly("a"));
    const auto assembly = Assembly("b");
    group.Add(assembly);
    EXPECT_EQ(&group.CommandTarget("b"), &assembly->CommandTarget());
    EXPECT_NE(&group.CommandTarget("a"), &assembly->CommandTarget());
}

TEST(RegisterAssemblyGroup, DisplayNameOfAnUnknownIdIsEmpty) {
    ProtocolRegisterAssemblyGroup group;
    EXPECT_STREQ(group.DisplayName("a"), "");
    group.Add(Assembly("a"));
    EXPECT_STREQ(group.DisplayName("a"), "shown");
    EXPECT_STREQ(group.DisplayName("b"), "");
    EXPECT_THROW(group.DisplayName(nullptr), std::logic_error);
}

TEST(RegisterAssemblyGroup, SharedDataSourceStandsOnceAtItsFirstUse) {
    ProtocolRegisterAssemblyGroup group;
    EXPECT_TRUE(group.DataSourceList().empty());
    group.Add(Assembly("b", {"x", "z"}));
    group.Add(Assembly("a", {"y", "x", "y"}));
    EXPECT_EQ(group.DataSourceList(), (std::vector<std::string>{"y", "x", "z"}));
}

TEST(RegisterAssemblyGroup, LockThatCantBeMadeOrEnteredIsThrown) {
    yFault_Set("yLock_Construct", -81);
    EXPECT_TEXTLESS_FAILURE(ProtocolRegisterAssemblyGroup(), -81);
    yFault_Clear();
    ProtocolRegisterAssemblyGroup group;
    EXPECT_FALSE(group.HasRegisterAssembly("a"));
    group.Add(Assembly("a"));
    yFault_Set("yLock_Enter", -82);
    EXPECT_TEXTLESS_FAILURE(group.List(), -82);
    yFault_Clear();
}

TEST(RegisterAssemblyGroup, EmptyGroupAnswersWithoutItsLock) {
    const ProtocolRegisterAssemblyGroup group;
    yFault_Set("yLock_Enter", -83, 0, 100);
    EXPECT_TRUE(group.Empty());
    EXPECT_TRUE(group.List().empty());
    EXPECT_TRUE(group.DataSourceList().empty());
    EXPECT_FALSE(group.HasRegisterAssembly("a"));
    yFault_Clear();
}
