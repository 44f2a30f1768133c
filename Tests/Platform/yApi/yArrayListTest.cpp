#include "yApi/yArrayList.h"

#include "Tests/Support/Faults.h"
#include "VorMsg/ResultSet.h"
#include "VorMsg/VvNullMsg.h"

#include <gtest/gtest.h>

class yArrayListTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(yArrayList_Construct(&list, yType_ResultSet, 2), yOK);
        ASSERT_EQ(ResultSet_Construct(&set), yOK);
    }

    void TearDown() override {
        EXPECT_EQ(yArrayList_Destroy(list), yOK);
        yObject_Release(set);
    }

    Tests::Faults faults;
    yArrayList list = nullptr;
    void* set = nullptr;
};

TEST_F(yArrayListTest, AddStoresTheHandleWithoutTakingAShare) {
    EXPECT_EQ(yArrayList_Add(list, set), yOK);
    EXPECT_EQ(yObject_ShareCount(set), 1);
    yObject_Share(set);
    EXPECT_EQ(yArrayList_Count(list), 1U);
    EXPECT_EQ(yArrayList_At(list, 0), set);
    EXPECT_EQ(yArrayList_At(list, 1), nullptr);
}

TEST_F(yArrayListTest, PurgeReleasesOneSharePerEntry) {
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(yArrayList_Add(list, set), yOK);
        yObject_Share(set);
    }
    EXPECT_EQ(yObject_ShareCount(set), 4);
    EXPECT_EQ(yArrayList_Purge(list), yOK);
    EXPECT_EQ(yObject_ShareCount(set), 1);
    EXPECT_EQ(yArrayList_Count(list), 0U);
}

TEST_F(yArrayListTest, GrowsBeyondItsCapacity) {
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(yArrayList_Add(list, yObject_Share(set)), yOK);
    }
    EXPECT_EQ(yArrayList_Count(list), 1000U);
    EXPECT_EQ(yArrayList_At(list, 999), set);
}

TEST_F(yArrayListTest, DestroyReleasesTheRemainingShares) {
    ASSERT_EQ(yArrayList_Add(list, yObject_Share(set)), yOK);
    EXPECT_EQ(yArrayList_Destroy(list), yOK);
    list = nullptr;
    EXPECT_EQ(yObject_ShareCount(set), 1);
}

TEST_F(yArrayListTest, RefusesNullAndObjectsOfAnotherClass) {
    EXPECT_EQ(yArrayList_Add(list, nullptr), yERROR_PARAMETER);
    void* msg = nullptr;
    ASSERT_EQ(VvNullMsg_Construct(&msg), yOK);
    EXPECT_EQ(yArrayList_Add(list, msg), yERROR_PARAMETER);
    yObject_Release(msg);
    EXPECT_EQ(yArrayList_Count(list), 0U);
}

TEST_F(yArrayListTest, CanBeMadeToFail) {
    faults.Set("yArrayList_Construct", -1);
    yArrayList other = nullptr;
    EXPECT_EQ(yArrayList_Construct(&other, yType_ResultSet, 1), -1);
    faults.Set("yArrayList_Add", -2);
    EXPECT_EQ(yArrayList_Add(list, set), -2);
    EXPECT_EQ(yArrayList_Count(list), 0U);
}

TEST(yArrayList, NullIsHarmless) {
    EXPECT_EQ(yArrayList_Count(nullptr), 0U);
    EXPECT_EQ(yArrayList_At(nullptr, 0), nullptr);
    EXPECT_EQ(yArrayList_Purge(nullptr), yERROR_PARAMETER);
    EXPECT_EQ(yArrayList_Destroy(nullptr), yOK);
}
