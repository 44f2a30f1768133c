#include "VorApi/Threads/MsgQueue.h"

#include "Tests/Support/Faults.h"

#include <memory>
#include <vector>

#include <gtest/gtest.h>

namespace {

struct Counted {
    explicit Counted(int number)
        : number(number) {
        ++alive;
    }
    ~Counted() { --alive; }

    static inline int alive = 0;
    int number;
};

} // namespace

class MsgQueueTest : public testing::Test {
protected:
    void SetUp() override {
        Counted::alive = 0;
        liveBefore = yObject_LiveCount();
    }
    void TearDown() override {
        EXPECT_EQ(Counted::alive, 0);
        EXPECT_EQ(yObject_LiveCount(), liveBefore);
    }

    Tests::Faults faults;
    std::int64_t liveBefore = 0;
};

TEST_F(MsgQueueTest, GivesObjectsBackInOrder) {
    Vor::MsgQueue<Counted> queue;
    queue.Add(std::make_unique<Counted>(1));
    queue.Add(std::make_unique<Counted>(2));
    EXPECT_EQ(queue.Count(), 2U);
    std::unique_ptr<Counted> object;
    ASSERT_EQ(queue.Remove(object, 0), yOK);
    EXPECT_EQ(object->number, 1);
    ASSERT_EQ(queue.Remove(object, 0), yOK);
    EXPECT_EQ(object->number, 2);
    EXPECT_EQ(queue.Remove(object, 0), yERROR_TIMEOUT);
    EXPECT_EQ(object->number, 2);
}

TEST_F(MsgQueueTest, ItemOfTheHandleHasOneShareOnceRemoved) {
    Vor::MsgQueue<Counted> queue;
    queue.Add(std::make_unique<Counted>(1));
    void* item = nullptr;
    ASSERT_EQ(yMsgQueue_Remove(queue.Handle(), &item, 0), yOK);
    EXPECT_EQ(yObject_ShareCount(item), 1);
    delete static_cast<Counted*>(PointerWrapper_Pointer(item));
    yObject_Release(item);
}

TEST_F(MsgQueueTest, ClearAndDestructionDeleteWhatIsLeft) {
    Vor::MsgQueue<Counted> queue;
    queue.Add(std::make_unique<Counted>(1));
    queue.Clear();
    EXPECT_EQ(Counted::alive, 0);
    EXPECT_EQ(queue.Count(), 0U);
    queue.Add(std::make_unique<Counted>(2));
    queue.Add(std::make_unique<Counted>(3));
}

TEST_F(MsgQueueTest, DropFunctionSeesEachDroppedObjectBeforeItIsDeleted) {
    std::vector<int> dropped;
    {
        Vor::MsgQueue<Counted> queue([&](Counted* object) { dropped.push_back(object->number); });
        queue.SetMaxCount(1);
        queue.Add(std::make_unique<Counted>(1));
        queue.Add(std::make_unique<Counted>(2));
        EXPECT_EQ(dropped, std::vector<int>{1});
        EXPECT_EQ(Counted::alive, 1);
        std::unique_ptr<Counted> removed;
        ASSERT_EQ(queue.Remove(removed, 0), yOK);
        queue.Add(std::make_unique<Counted>(3));
    }
    EXPECT_EQ(dropped, (std::vector<int>{1, 3}));
}

TEST_F(MsgQueueTest, FailedAddThrowsItsStatusAndDeletesTheObject) {
    Vor::MsgQueue<Counted> queue;
    for (const char* step : {"yMsgQueue_AddEx", "PointerWrapper_Construct"}) {
        faults.Set(step, -31);
        try {
            queue.Add(std::make_unique<Counted>(1));
            FAIL() << "nothing was thrown at " << step;
        } catch (const Vor::Exception& exception) {
            EXPECT_EQ(exception.Status(), -31) << step;
        }
        EXPECT_EQ(Counted::alive, 0) << step;
        EXPECT_EQ(yObject_LiveCount(), liveBefore) << step;
    }
}

TEST_F(MsgQueueTest, FailingStepsAreThrownWithTheirStatus) {
    for (const char* step : {"yMsgQueue_Construct", "yMsgQueue_SetDropHandler"}) {
        faults.Set(step, -32);
        EXPECT_THROW(Vor::MsgQueue<Counted>(), Vor::Exception) << step;
    }
    Vor::MsgQueue<Counted> queue;
    faults.Set("yMsgQueue_SetMaxCount", -33);
    EXPECT_THROW(queue.SetMaxCount(1), Vor::Exception);
    faults.Set("yMsgQueue_PurgeEx", -34);
    EXPECT_THROW(queue.Clear(), Vor::Exception);
    faults.Set("yMsgQueue_Remove", -35);
    std::unique_ptr<Counted> object;
    EXPECT_EQ(queue.Remove(object, 0), -35);
}
