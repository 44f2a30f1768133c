#include "VorApi/Object.h"

#include "VorMsg/VvNullMsg.h"

#include <utility>

#include <gtest/gtest.h>

class ObjectTest : public testing::Test {
protected:
    void SetUp() override {
        before = yObject_LiveCount();
        ASSERT_EQ(VvNullMsg_Construct(&handle), yOK);
    }
    void TearDown() override { EXPECT_EQ(yObject_LiveCount(), before); }

    std::int64_t before = 0;
    void* handle = nullptr;
};

TEST_F(ObjectTest, TakeAdoptsTheShareAndGivesItUpAtTheEnd) {
    const auto object = Vor::Object::Adopt(handle);
    EXPECT_EQ(object.Get(), handle);
    EXPECT_TRUE(object);
    EXPECT_EQ(yObject_ShareCount(handle), 1);
}

TEST_F(ObjectTest, ShareAddsOne) {
    {
        const auto object = Vor::Object::Share(handle);
        EXPECT_EQ(yObject_ShareCount(handle), 2);
    }
    EXPECT_EQ(yObject_ShareCount(handle), 1);
    yObject_Release(handle);
}

TEST_F(ObjectTest, CopiesShareAndMovesDoNot) {
    auto object = Vor::Object::Adopt(handle);
    auto copy = object;
    EXPECT_EQ(yObject_ShareCount(handle), 2);
    const auto moved = std::move(copy);
    EXPECT_EQ(yObject_ShareCount(handle), 2);
    object = moved;
    EXPECT_EQ(yObject_ShareCount(handle), 2);
    object = Vor::Object();
    EXPECT_EQ(yObject_ShareCount(handle), 1);
}

TEST_F(ObjectTest, ReleaseHandsTheShareToTheCaller) {
    auto object = Vor::Object::Adopt(handle);
    EXPECT_EQ(object.Release(), handle);
    EXPECT_FALSE(object);
    EXPECT_EQ(yObject_ShareCount(handle), 1);
    yObject_Release(handle);
}

TEST_F(ObjectTest, OutGivesUpWhatWasHeld) {
    auto object = Vor::Object::Adopt(handle);
    EXPECT_EQ(VvNullMsg_Construct(object.Out()), yOK);
    EXPECT_EQ(yObject_LiveCount(), before + 1);
}
