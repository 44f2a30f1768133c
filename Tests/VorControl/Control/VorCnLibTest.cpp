#include "VorControl/Control/VorCnLib.h"

#include "yApi/yFault.h"
#include "yApi/yPlatformLibs.h"

#include <string>

#include <gtest/gtest.h>

namespace {

class VorCnLibTest : public testing::Test {
protected:
    ~VorCnLibTest() override {
        yFault_Clear();
        while (xxVorCnLib_assembly != nullptr) {
            xyAssembly_VRelease(xxVorCnLib_assembly);
        }
    }
};

TEST_F(VorCnLibTest, MakesOneAssemblyWithNameVersionsAndDependenciesInOrder) {
    yAssembly assembly = nullptr;
    ASSERT_EQ(VorCnLib_Construct(&assembly), yOK);
    ASSERT_NE(assembly, nullptr);
    EXPECT_EQ(assembly, xxVorCnLib_assembly);
    EXPECT_STREQ(yAssembly_Name(assembly), "VorCnLib");
    const yVersion version{1, 0, 0, 0};
    EXPECT_EQ(yAssembly_Version(assembly), version);
    EXPECT_EQ(yAssembly_PlatformVersion(assembly), version);
    EXPECT_TRUE(yAssembly_IsFinalized(assembly));
    EXPECT_EQ(yAssembly_ReferenceCount(assembly), 1);

    const yAssemblyConstruct constructs[] = {&yApiLib_Construct, &yTsLib_Construct, &VcLib_Construct,
                                             &VorCoreLib_Construct, &VorApiLib_Construct};
    ASSERT_EQ(yAssembly_DependencyCount(assembly), std::size(constructs));
    for (std::size_t i = 0; i < std::size(constructs); ++i) {
        yAssembly dependency = nullptr;
        ASSERT_EQ(constructs[i](&dependency), yOK);
        EXPECT_EQ(yAssembly_DependencyAt(assembly, i), dependency) << i;
        xyAssembly_VRelease(dependency);
    }
}

TEST_F(VorCnLibTest, SecondConstructHandsOutTheSameObjectWithOneMoreReference) {
    yAssembly first = nullptr;
    yAssembly second = nullptr;
    ASSERT_EQ(VorCnLib_Construct(&first), yOK);
    ASSERT_EQ(VorCnLib_Construct(&second), yOK);
    EXPECT_EQ(first, second);
    EXPECT_EQ(yAssembly_ReferenceCount(first), 2);
    xyAssembly_VRelease(second);
    EXPECT_EQ(yAssembly_ReferenceCount(first), 1);
}

TEST_F(VorCnLibTest, LoaderEntryConstructsTheAssembly) {
    yAssembly assembly = nullptr;
    EXPECT_EQ(yPlugin_ConstructAssembly(&assembly), yOK);
    EXPECT_EQ(assembly, xxVorCnLib_assembly);
    EXPECT_NE(assembly, nullptr);
}

TEST_F(VorCnLibTest, BothVersionsAreTheSameText) {
    EXPECT_STREQ(yPlugin_AssemblyVersion(), "1.0.0.0");
    EXPECT_STREQ(yPlugin_PlatformVersion(), "1.0.0.0");
}

struct FailingStep {
    const char* call;
    unsigned skip;
};

class VorCnLibFailureTest : public VorCnLibTest, public testing::WithParamInterface<FailingStep> {};

TEST_P(VorCnLibFailureTest, GivesTheStatusOfTheStepAndLeavesNoAssembly) {
    yFault_Set(GetParam().call, -17, GetParam().skip);
    yAssembly assembly = nullptr;
    EXPECT_EQ(VorCnLib_Construct(&assembly), -17);
    EXPECT_EQ(yFault_HitCount(), 1U);
    EXPECT_EQ(assembly, nullptr);
    EXPECT_EQ(xxVorCnLib_assembly, nullptr);

    yFault_Clear();
    EXPECT_EQ(VorCnLib_Construct(&assembly), yOK);
    EXPECT_EQ(yAssembly_ReferenceCount(assembly), 1);
}

INSTANTIATE_TEST_SUITE_P(EachStep, VorCnLibFailureTest,
                         testing::Values(FailingStep{"yVersion_Parse", 0}, FailingStep{"yVersion_Parse", 1},
                                         FailingStep{"xyAssembly_ConstructInternal", 0},
                                         FailingStep{"xyAssembly_AddDependency", 0},
                                         FailingStep{"xyAssembly_AddDependency", 4},
                                         FailingStep{"yApiLib_Construct", 0}, FailingStep{"VorApiLib_Construct", 0},
                                         FailingStep{"xyAssembly_Finalize", 0}),
                         [](const testing::TestParamInfo<FailingStep>& info) {
                             return std::string(info.param.call) + std::to_string(info.param.skip);
                         });

} // namespace
