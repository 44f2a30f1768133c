#include "yApi/yAssembly.h"

#include "Tests/Support/Faults.h"
#include "yApi/yPlatformLibs.h"

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr yVersion Version{1, 2, 3, 4};
constexpr yVersion Platform{5, 6, 7, 8};

yAssembly global = nullptr;

using Libs = std::vector<std::pair<std::string, yAssemblyConstruct>>;
const Libs& PlatformLibs() {
    static const Libs All{{"yApiLib", &yApiLib_Construct},
                          {"yTsLib", &yTsLib_Construct},
                          {"VcLib", &VcLib_Construct},
                          {"VorCoreLib", &VorCoreLib_Construct},
                          {"VorApiLib", &VorApiLib_Construct}};
    return All;
}

} // namespace

class yAssemblyTest : public testing::Test {
protected:
    void TearDown() override {
        xyAssembly_VRelease(global);
        EXPECT_EQ(global, nullptr);
    }

    void Construct() { ASSERT_EQ(xyAssembly_ConstructInternal(&global, "Lib", Version, Platform), yOK); }

    Tests::Faults faults;
};

TEST_F(yAssemblyTest, ConstructSetsTheGlobalWithOneReference) {
    Construct();
    ASSERT_NE(global, nullptr);
    EXPECT_STREQ(yAssembly_Name(global), "Lib");
    EXPECT_EQ(yAssembly_Version(global), Version);
    EXPECT_EQ(yAssembly_PlatformVersion(global), Platform);
    EXPECT_EQ(yAssembly_ReferenceCount(global), 1);
    EXPECT_FALSE(yAssembly_IsFinalized(global));
    EXPECT_EQ(xyAssembly_Finalize(global), yOK);
    EXPECT_TRUE(yAssembly_IsFinalized(global));
    EXPECT_EQ(xyAssembly_Finalize(global), yERROR_STATE);
}

TEST_F(yAssemblyTest, LastReleaseNullsTheGlobal) {
    Construct();
    yAssembly_AddReference(global);
    EXPECT_EQ(yAssembly_ReferenceCount(global), 2);
    EXPECT_EQ(xyAssembly_VRelease(global), yOK);
    ASSERT_NE(global, nullptr);
    EXPECT_EQ(yAssembly_ReferenceCount(global), 1);
    EXPECT_EQ(xyAssembly_VRelease(global), yOK);
    EXPECT_EQ(global, nullptr);
    Construct();
}

TEST_F(yAssemblyTest, KeepsDependenciesInOrderAndReleasesThem) {
    Construct();
    for (const auto& [name, construct] : PlatformLibs()) {
        ASSERT_EQ(xyAssembly_AddDependency(global, construct), yOK);
    }
    ASSERT_EQ(yAssembly_DependencyCount(global), 5U);
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(yAssembly_Name(yAssembly_DependencyAt(global, i)), PlatformLibs()[i].first);
    }
    EXPECT_EQ(yAssembly_DependencyAt(global, 5), nullptr);
    yAssembly apiLib = nullptr;
    ASSERT_EQ(yApiLib_Construct(&apiLib), yOK);
    EXPECT_EQ(apiLib, yAssembly_DependencyAt(global, 0));
    const auto references = yAssembly_ReferenceCount(apiLib);
    EXPECT_EQ(xyAssembly_VRelease(global), yOK);
    EXPECT_EQ(yAssembly_ReferenceCount(apiLib), references - 1);
    xyAssembly_VRelease(apiLib);
}

TEST_F(yAssemblyTest, RefusesADependencyOnceFinalized) {
    Construct();
    ASSERT_EQ(xyAssembly_Finalize(global), yOK);
    EXPECT_EQ(xyAssembly_AddDependency(global, &yApiLib_Construct), yERROR_STATE);
}

TEST_F(yAssemblyTest, GlobalThatExistsIsNotReplaced) {
    Construct();
    yAssembly former = global;
    EXPECT_EQ(xyAssembly_ConstructInternal(&global, "Lib", Version, Platform), yERROR_ALREADY_EXISTS);
    EXPECT_EQ(global, former);
}

TEST_F(yAssemblyTest, ReferencesAreAddedAtomically) {
    Construct();
    const auto add = [] {
        for (int i = 0; i < 10000; ++i) {
            yAssembly_AddReference(global);
        }
    };
    std::thread other(add);
    add();
    other.join();
    EXPECT_EQ(yAssembly_ReferenceCount(global), 20001);
    while (global != nullptr) {
        xyAssembly_VRelease(global);
    }
}

TEST_F(yAssemblyTest, StepsCanBeMadeToFail) {
    faults.Set("xyAssembly_ConstructInternal", -1);
    EXPECT_EQ(xyAssembly_ConstructInternal(&global, "Lib", Version, Platform), -1);
    EXPECT_EQ(global, nullptr);
    Construct();
    faults.Set("xyAssembly_AddDependency", -2);
    EXPECT_EQ(xyAssembly_AddDependency(global, &yApiLib_Construct), -2);
    faults.Set("xyAssembly_Finalize", -3);
    EXPECT_EQ(xyAssembly_Finalize(global), -3);
    EXPECT_FALSE(yAssembly_IsFinalized(global));
}

TEST_F(yAssemblyTest, EachPlatformLibraryCanBeMadeToFail) {
    Construct();
    for (const auto& [name, construct] : PlatformLibs()) {
        faults.Set((name + "_Construct").c_str(), -7);
        EXPECT_EQ(xyAssembly_AddDependency(global, construct), -7) << name;
    }
    EXPECT_EQ(yAssembly_DependencyCount(global), 0U);
}

TEST(yAssembly, SecondConstructOfAPlatformLibraryHandsOutTheSameObject) {
    for (const auto& [name, construct] : PlatformLibs()) {
        yAssembly first = nullptr;
        yAssembly second = nullptr;
        ASSERT_EQ(construct(&first), yOK);
        const auto references = yAssembly_ReferenceCount(first);
        ASSERT_EQ(construct(&second), yOK);
        EXPECT_EQ(first, second);
        EXPECT_EQ(yAssembly_ReferenceCount(first), references + 1);
        EXPECT_TRUE(yAssembly_IsFinalized(first));
        xyAssembly_VRelease(second);
        xyAssembly_VRelease(first);
    }
}

TEST(yAssembly, NullIsHarmless) {
    EXPECT_EQ(xyAssembly_VRelease(nullptr), yOK);
    EXPECT_EQ(yAssembly_ReferenceCount(nullptr), 0);
    EXPECT_EQ(xyAssembly_AddDependency(nullptr, &yApiLib_Construct), yERROR_PARAMETER);
    EXPECT_EQ(xyAssembly_Finalize(nullptr), yERROR_PARAMETER);
}
