#include "yApi/yObject.h"

#include "VorMsg/ResultSet.h"
#include "VorMsg/VvMeasureMsg.h"
#include "VorMsg/VvNullMsg.h"
#include "yApi/PointerWrapper.h"
#include "yApi/yMsgInfo.h"

#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

void* MakeNull() {
    void* msg = nullptr;
    EXPECT_EQ(VvNullMsg_Construct(&msg), yOK);
    return msg;
}

} // namespace

TEST(yObject, LivesUntilTheLastShareIsReleased) {
    const auto before = yObject_LiveCount();
    void* msg = MakeNull();
    EXPECT_EQ(yObject_LiveCount(), before + 1);
    EXPECT_EQ(yObject_ShareCount(msg), 1);
    EXPECT_EQ(yObject_Share(msg), msg);
    EXPECT_EQ(yObject_ShareCount(msg), 2);
    yObject_Release(msg);
    EXPECT_EQ(yObject_ShareCount(msg), 1);
    yObject_Release(msg);
    EXPECT_EQ(yObject_LiveCount(), before);
}

TEST(yObject, NullIsHarmless) {
    EXPECT_EQ(yObject_Share(nullptr), nullptr);
    yObject_Release(nullptr);
    EXPECT_EQ(yObject_ShareCount(nullptr), 0);
    EXPECT_FALSE(yObject_Is(nullptr, yType_VvNullMsg));
}

TEST(yObject, IsAnInstanceOfItsClassAndOfItsBases) {
    void* msg = MakeNull();
    EXPECT_TRUE(yObject_Is(msg, yType_VvNullMsg));
    EXPECT_TRUE(yObject_Is(msg, yType_VvMsg));
    EXPECT_FALSE(yObject_Is(msg, yType_VvMeasureMsg));
    EXPECT_EQ(&yObject_Type(msg), &yType_VvNullMsg);
    EXPECT_EQ(yType_Allocator(yObject_Type(msg)), nullptr);
    yObject_Release(msg);
}

TEST(yObject, BaseIsNoInstanceOfTheDerivedClass) {
    void* info = nullptr;
    ASSERT_EQ(yMsgInfo_Construct(&info, nullptr, 0, 0), yOK);
    EXPECT_FALSE(yObject_Is(info, yType_VvMsg));
    yObject_Release(info);
}

TEST(yObject, ShareCountChangesAtomically) {
    void* msg = MakeNull();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([msg] {
            for (int n = 0; n < 10000; ++n) {
                yObject_Share(msg);
                yObject_Release(msg);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(yObject_ShareCount(msg), 1);
    yObject_Release(msg);
}

TEST(PointerWrapper, CarriesThePointerAndNeverFreesIt) {
    int value = 5;
    void* wrapper = nullptr;
    ASSERT_EQ(PointerWrapper_Construct(&wrapper, &value, 0), yOK);
    EXPECT_EQ(PointerWrapper_Pointer(wrapper), &value);
    EXPECT_EQ(yObject_ShareCount(wrapper), 1);
    yObject_Release(wrapper);
    EXPECT_EQ(value, 5);
    EXPECT_EQ(PointerWrapper_Pointer(nullptr), nullptr);
}

TEST(yMsgInfo, TakesOverTheMessageAndKeepsTheFieldsUnchanged) {
    const auto before = yObject_LiveCount();
    void* msg = MakeNull();
    void* info = nullptr;
    ASSERT_EQ(yMsgInfo_Construct(&info, msg, 0x8877665544332211U, 42), yOK);
    EXPECT_EQ(yMsgInfo_Message(info), msg);
    EXPECT_EQ(yMsgInfo_Origin(info), 0x8877665544332211U);
    EXPECT_EQ(yMsgInfo_Published(info), 42U);
    EXPECT_EQ(yObject_ShareCount(msg), 1);
    yObject_Release(info);
    EXPECT_EQ(yObject_LiveCount(), before);
    EXPECT_EQ(yMsgInfo_Message(nullptr), nullptr);
    EXPECT_EQ(yMsgInfo_Published(nullptr), 0U);
}

TEST(yMsgInfo, FailedConstructLeavesTheShareWithTheCaller) {
    void* msg = MakeNull();
    EXPECT_EQ(yMsgInfo_Construct(nullptr, msg, 0, 0), yERROR_PARAMETER);
    EXPECT_EQ(yObject_ShareCount(msg), 1);
    yObject_Release(msg);
}
