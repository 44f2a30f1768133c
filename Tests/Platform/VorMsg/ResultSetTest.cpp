#include "VorMsg/ResultSet.h"

#include "Tests/Support/Faults.h"
#include "VorApi/Object.h"
#include "VorMsg/VvMeasureMsg.h"

#include <array>
#include <memory_resource>
#include <string>

#include <gtest/gtest.h>

namespace {

/// Counts what a set allocates.
class CountingResource : public std::pmr::memory_resource {
public:
    int allocations = 0;
    int alive = 0;

private:
    void* do_allocate(std::size_t size, std::size_t alignment) override {
        ++allocations;
        ++alive;
        return std::pmr::new_delete_resource()->allocate(size, alignment);
    }
    void do_deallocate(void* memory, std::size_t size, std::size_t alignment) override {
        --alive;
        std::pmr::new_delete_resource()->deallocate(memory, size, alignment);
    }
    bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }
};

} // namespace

class ResultSetTest : public testing::Test {
protected:
    void SetUp() override {
        liveBefore = yObject_LiveCount();
        void* msg = nullptr;
        ASSERT_EQ(VvMeasureMsg_Construct(&msg, 1.5, 1), yOK);
        ASSERT_EQ(yMsgInfo_Construct(msgInfo.Out(), msg, 0, 0), yOK);
        ASSERT_EQ(ResultInfo_Construct(resultInfo.Out(), ResultInfo_TypeMeasurement, "profile/max"), yOK);
        ASSERT_EQ(ResultSet_Construct(set.Out()), yOK);
    }

    void TearDown() override {
        set = {};
        msgInfo = {};
        resultInfo = {};
        EXPECT_EQ(yObject_LiveCount(), liveBefore);
    }

    void Add(void* to) {
        ASSERT_EQ(ResultSet_Add(to, yObject_Share(msgInfo.Get()), yObject_Share(resultInfo.Get()), 0), yOK);
    }

    Tests::Faults faults;
    std::int64_t liveBefore = 0;
    Vor::Object msgInfo;
    Vor::Object resultInfo;
    Vor::Object set;
};

TEST_F(ResultSetTest, IsEmptyAndReal) {
    EXPECT_TRUE(yObject_Is(set.Get(), yType_ResultSet));
    EXPECT_EQ(ResultSet_Count(set.Get()), 0U);
    EXPECT_EQ(ResultSet_At(set.Get(), 0), nullptr);
    EXPECT_FALSE(ResultSet_FromSimulation(set.Get()));
    ResultSet_SetFromSimulation(set.Get(), true);
    EXPECT_TRUE(ResultSet_FromSimulation(set.Get()));
}

TEST_F(ResultSetTest, AddTakesOverOneShareEach) {
    Add(set.Get());
    EXPECT_EQ(yObject_ShareCount(msgInfo.Get()), 2);
    EXPECT_EQ(yObject_ShareCount(resultInfo.Get()), 2);
    const ResultItem item = ResultSet_At(set.Get(), 0);
    EXPECT_TRUE(yObject_Is(item, yType_ResultItem));
    EXPECT_EQ(ResultItem_MsgInfo(item), msgInfo.Get());
    EXPECT_EQ(ResultItem_ResultInfo(item), resultInfo.Get());
    set = {};
    EXPECT_EQ(yObject_ShareCount(msgInfo.Get()), 1);
    EXPECT_EQ(yObject_ShareCount(resultInfo.Get()), 1);
}

TEST_F(ResultSetTest, FailedAddLeavesTheSharesWithTheCaller) {
    faults.Set("ResultSet_Add", -5);
    EXPECT_EQ(ResultSet_Add(set.Get(), msgInfo.Get(), resultInfo.Get(), 0), -5);
    EXPECT_EQ(ResultSet_Add(set.Get(), msgInfo.Get(), nullptr, 0), yERROR_PARAMETER);
    EXPECT_EQ(yObject_ShareCount(msgInfo.Get()), 1);
    EXPECT_EQ(yObject_ShareCount(resultInfo.Get()), 1);
    EXPECT_EQ(ResultSet_Count(set.Get()), 0U);
}

TEST_F(ResultSetTest, KeepsTheOrderOverManyItemsWhichNeverMove) {
    Add(set.Get());
    const ResultItem first = ResultSet_At(set.Get(), 0);
    for (int i = 1; i < 1000; ++i) {
        void* info = nullptr;
        ASSERT_EQ(ResultInfo_Construct(&info, ResultInfo_TypeString, std::to_string(i)), yOK);
        ASSERT_EQ(ResultSet_Add(set.Get(), nullptr, info, 0), yOK);
    }
    EXPECT_EQ(ResultSet_Count(set.Get()), 1000U);
    EXPECT_EQ(ResultSet_At(set.Get(), 0), first);
    for (std::size_t i = 1; i < 1000; ++i) {
        EXPECT_EQ(ResultInfo_Source(ResultItem_ResultInfo(ResultSet_At(set.Get(), i))), std::to_string(i));
    }
    EXPECT_EQ(ResultSet_At(set.Get(), 1000), nullptr);
}

TEST_F(ResultSetTest, CostsFewAllocationsHoweverManyItems) {
    CountingResource resource;
    {
        Vor::Object counted;
        ASSERT_EQ(ResultSet_Construct(counted.Out(), static_cast<std::pmr::memory_resource*>(&resource)), yOK);
        for (int i = 0; i < 16; ++i) {
            Add(counted.Get());
        }
        EXPECT_EQ(resource.allocations, 1);
        for (int i = 16; i < 64; ++i) {
            Add(counted.Get());
        }
        EXPECT_EQ(resource.allocations, 2);
    }
    EXPECT_EQ(resource.alive, 0);
}

TEST_F(ResultSetTest, ASetWithRoomForItsItemsIsOneAllocation) {
    for (const int capacity : {0, 1, 2, 3, 63, 64, 65, 1000}) {
        SCOPED_TRACE(capacity);
        CountingResource resource;
        {
            Vor::Object counted;
            ASSERT_EQ(ResultSet_Construct(counted.Out(), static_cast<std::pmr::memory_resource*>(&resource),
                                          static_cast<std::size_t>(capacity)),
                      yOK);
            for (int i = 0; i < capacity; ++i) {
                Add(counted.Get());
            }
            EXPECT_EQ(resource.allocations, 1);
            for (int i = 0; i < 2000; ++i) {
                Add(counted.Get());
            }
            ASSERT_EQ(ResultSet_Count(counted.Get()), static_cast<std::size_t>(capacity) + 2000);
            EXPECT_LE(resource.allocations, 8);
            for (std::size_t i = 0; i < ResultSet_Count(counted.Get()); ++i) {
                ASSERT_EQ(ResultItem_MsgInfo(ResultSet_At(counted.Get(), i)), msgInfo.Get());
            }
        }
        EXPECT_EQ(resource.alive, 0);
    }
}

TEST_F(ResultSetTest, ShareOfAnItemKeepsItsSet) {
    Add(set.Get());
    const Vor::Object item = Vor::Object::Share(ResultSet_At(set.Get(), 0));
    EXPECT_EQ(yObject_ShareCount(set.Get()), 2);
    EXPECT_EQ(yObject_ShareCount(item.Get()), 2);
    set = {};
    EXPECT_EQ(ResultItem_MsgInfo(item.Get()), msgInfo.Get());
}

TEST_F(ResultSetTest, NullSetIsEmpty) {
    EXPECT_EQ(ResultSet_Count(nullptr), 0U);
    EXPECT_EQ(ResultSet_At(nullptr, 0), nullptr);
    EXPECT_FALSE(ResultSet_FromSimulation(nullptr));
    EXPECT_EQ(ResultSet_Add(nullptr, nullptr, resultInfo.Get(), 0), yERROR_PARAMETER);
}

TEST_F(ResultSetTest, FreeItemTakesOverTheSharesAndReleasesThem) {
    Vor::Object item;
    ASSERT_EQ(ResultItem_Construct(item.Out(), yObject_Share(msgInfo.Get()), yObject_Share(resultInfo.Get())), yOK);
    EXPECT_EQ(yObject_ShareCount(item.Get()), 1);
    EXPECT_EQ(ResultItem_MsgInfo(item.Get()), msgInfo.Get());
    EXPECT_EQ(ResultItem_ResultInfo(item.Get()), resultInfo.Get());
    item = {};
    EXPECT_EQ(yObject_ShareCount(msgInfo.Get()), 1);
    EXPECT_EQ(yObject_ShareCount(resultInfo.Get()), 1);
}

TEST_F(ResultSetTest, ConstructsCanBeMadeToFail) {
    Vor::Object made;
    faults.Set("ResultSet_Construct", -1);
    EXPECT_EQ(ResultSet_Construct(made.Out()), -1);
    faults.Set("ResultItem_Construct", -2);
    EXPECT_EQ(ResultItem_Construct(made.Out(), msgInfo.Get(), resultInfo.Get()), -2);
    faults.Set("yMsgInfo_Construct", -3);
    EXPECT_EQ(yMsgInfo_Construct(made.Out(), nullptr, 0, 0), -3);
    EXPECT_EQ(made.Get(), nullptr);
    EXPECT_EQ(yObject_ShareCount(msgInfo.Get()), 1);
}

TEST(ResultItem, NullHasNoParts) {
    EXPECT_EQ(ResultItem_MsgInfo(nullptr), nullptr);
    EXPECT_EQ(ResultItem_ResultInfo(nullptr), nullptr);
}
