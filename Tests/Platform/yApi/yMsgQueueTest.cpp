#include "yApi/yMsgQueue.h"

#include "Tests/Support/Faults.h"
#include "Tests/Support/Signal.h"
#include "VorMsg/VvNullMsg.h"
#include "yApi/PointerWrapper.h"
#include "yApi/yThread.h"

#include <array>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

class yMsgQueueTest : public testing::Test {
protected:
    void SetUp() override {
        liveBefore = yObject_LiveCount();
        ASSERT_EQ(yMsgQueue_Construct(&queue, yType_PointerWrapper), yOK);
    }

    void TearDown() override {
        EXPECT_EQ(yMsgQueue_Destroy(queue), yOK);
        EXPECT_EQ(yObject_LiveCount(), liveBefore);
    }

    void Add(std::size_t number) {
        void* wrapper = nullptr;
        ASSERT_EQ(PointerWrapper_Construct(&wrapper, &values.at(number), 0), yOK);
        ASSERT_EQ(yMsgQueue_AddEx(queue, &wrapper, 0), yOK);
    }

    /// The number that was added, or -1.
    std::ptrdiff_t Remove(std::uint64_t timeout = 0) {
        void* wrapper = nullptr;
        if (yMsgQueue_Remove(queue, &wrapper, timeout) != yOK) {
            return -1;
        }
        const std::ptrdiff_t number = NumberOf(wrapper);
        yObject_Release(wrapper);
        return number;
    }

    std::ptrdiff_t NumberOf(void* wrapper) {
        return static_cast<int*>(PointerWrapper_Pointer(wrapper)) - values.data();
    }

    static yStatus Drop(void* receiver, void* item) {
        auto& test = *static_cast<yMsgQueueTest*>(receiver);
        test.dropped.push_back(test.NumberOf(item));
        test.countWhileDropping = yMsgQueue_Count(test.queue);
        yObject_Release(item);
        return yOK;
    }

    Tests::Faults faults;
    std::array<int, 8> values{};
    yMsgQueue queue = nullptr;
    std::vector<std::ptrdiff_t> dropped;
    std::size_t countWhileDropping = 0;
    std::int64_t liveBefore = 0;
};

TEST_F(yMsgQueueTest, ReturnsItemsInOrderOfAdding) {
    Add(1);
    Add(2);
    EXPECT_EQ(yMsgQueue_Count(queue), 2U);
    EXPECT_EQ(Remove(), 1);
    EXPECT_EQ(Remove(), 2);
    EXPECT_EQ(yMsgQueue_Count(queue), 0U);
}

TEST_F(yMsgQueueTest, TakesOverTheShareAndPassesItToTheOneWhoRemoves) {
    void* wrapper = nullptr;
    ASSERT_EQ(PointerWrapper_Construct(&wrapper, nullptr, 0), yOK);
    ASSERT_EQ(yMsgQueue_AddEx(queue, &wrapper, 0), yOK);
    EXPECT_EQ(yObject_ShareCount(wrapper), 1);
    void* removed = nullptr;
    ASSERT_EQ(yMsgQueue_Remove(queue, &removed, 0), yOK);
    EXPECT_EQ(removed, wrapper);
    EXPECT_EQ(yObject_ShareCount(removed), 1);
    yObject_Release(removed);
}

TEST_F(yMsgQueueTest, EmptyQueueTimesOutAndLeavesTheItemAlone) {
    void* item = this;
    EXPECT_EQ(yMsgQueue_Remove(queue, &item, 0), yERROR_TIMEOUT);
    EXPECT_EQ(yMsgQueue_Remove(queue, &item, 1000), yERROR_TIMEOUT);
    EXPECT_EQ(item, this);
}

TEST_F(yMsgQueueTest, WaiterGetsTheItemThatComesLater) {
    Tests::Signal about;
    std::ptrdiff_t number = -1;
    std::thread waiter([&] {
        about.Set();
        number = Remove(yINFINITE);
    });
    EXPECT_TRUE(about.Wait());
    Add(3);
    waiter.join();
    EXPECT_EQ(number, 3);
}

TEST_F(yMsgQueueTest, FullQueueDropsTheOldestThroughTheHandlerOutsideTheLock) {
    ASSERT_EQ(yMsgQueue_SetDropHandler(queue, &yMsgQueueTest::Drop, this), yOK);
    ASSERT_EQ(yMsgQueue_SetMaxCount(queue, 2), yOK);
    Add(1);
    Add(2);
    Add(3);
    EXPECT_EQ(dropped, std::vector<std::ptrdiff_t>{1});
    EXPECT_EQ(countWhileDropping, 2U);
    EXPECT_EQ(Remove(), 2);
    EXPECT_EQ(Remove(), 3);
}

TEST_F(yMsgQueueTest, MaximumSetLaterDropsTheSurplusAtOnce) {
    ASSERT_EQ(yMsgQueue_SetDropHandler(queue, &yMsgQueueTest::Drop, this), yOK);
    Add(1);
    Add(2);
    Add(3);
    ASSERT_EQ(yMsgQueue_SetMaxCount(queue, 1), yOK);
    EXPECT_EQ(dropped, (std::vector<std::ptrdiff_t>{1, 2}));
    EXPECT_EQ(Remove(), 3);
}

TEST_F(yMsgQueueTest, UnboundedUntilAMaximumIsSet) {
    ASSERT_EQ(yMsgQueue_SetDropHandler(queue, &yMsgQueueTest::Drop, this), yOK);
    for (int i = 0; i < 5000; ++i) {
        Add(1);
    }
    EXPECT_EQ(yMsgQueue_Count(queue), 5000U);
    EXPECT_TRUE(dropped.empty());
}

TEST_F(yMsgQueueTest, PurgeRunsTheDropHandlerOnRequest) {
    ASSERT_EQ(yMsgQueue_SetDropHandler(queue, &yMsgQueueTest::Drop, this), yOK);
    Add(1);
    Add(2);
    EXPECT_EQ(yMsgQueue_PurgeEx(queue, yMSG_QUEUE_PURGE_DROP), yOK);
    EXPECT_EQ(dropped, (std::vector<std::ptrdiff_t>{1, 2}));
    EXPECT_EQ(yMsgQueue_Count(queue), 0U);
}

TEST_F(yMsgQueueTest, PurgeOtherwiseOnlyReleases) {
    ASSERT_EQ(yMsgQueue_SetDropHandler(queue, &yMsgQueueTest::Drop, this), yOK);
    Add(1);
    EXPECT_EQ(yMsgQueue_PurgeEx(queue, 0), yOK);
    EXPECT_TRUE(dropped.empty());
    EXPECT_EQ(yMsgQueue_Count(queue), 0U);
}

TEST_F(yMsgQueueTest, DestroyDropsWhatIsLeft) {
    ASSERT_EQ(yMsgQueue_SetDropHandler(queue, &yMsgQueueTest::Drop, this), yOK);
    Add(4);
    EXPECT_EQ(yMsgQueue_Destroy(queue), yOK);
    queue = nullptr;
    EXPECT_EQ(dropped, std::vector<std::ptrdiff_t>{4});
}

TEST_F(yMsgQueueTest, RefusesNullAndItemsOfAnotherClass) {
    void* item = nullptr;
    EXPECT_EQ(yMsgQueue_AddEx(queue, &item, 0), yERROR_PARAMETER);
    ASSERT_EQ(VvNullMsg_Construct(&item), yOK);
    EXPECT_EQ(yMsgQueue_AddEx(queue, &item, 0), yERROR_PARAMETER);
    EXPECT_EQ(yObject_ShareCount(item), 1);
    yObject_Release(item);
}

TEST_F(yMsgQueueTest, StepsCanBeMadeToFail) {
    yMsgQueue other = nullptr;
    faults.Set("yMsgQueue_Construct", -1);
    EXPECT_EQ(yMsgQueue_Construct(&other, yType_PointerWrapper), -1);
    faults.Set("yMsgQueue_SetDropHandler", -2);
    EXPECT_EQ(yMsgQueue_SetDropHandler(queue, nullptr, nullptr), -2);
    faults.Set("yMsgQueue_SetMaxCount", -3);
    EXPECT_EQ(yMsgQueue_SetMaxCount(queue, 1), -3);
    faults.Set("yMsgQueue_PurgeEx", -4);
    EXPECT_EQ(yMsgQueue_PurgeEx(queue, 2), -4);
    Add(1);
    faults.Set("yMsgQueue_Remove", -5);
    void* item = nullptr;
    EXPECT_EQ(yMsgQueue_Remove(queue, &item, 0), -5);
    EXPECT_EQ(yMsgQueue_Count(queue), 1U);
    ASSERT_EQ(yMsgQueue_Remove(queue, &item, 0), yOK);
    faults.Set("yMsgQueue_AddEx", -6);
    EXPECT_EQ(yMsgQueue_AddEx(queue, &item, 0), -6);
    EXPECT_EQ(yObject_ShareCount(item), 1);
    yObject_Release(item);
}
