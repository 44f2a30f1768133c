#include "Tests/Support/Faults.h"
#include "VorApi/Object.h"
#include "VorMsg/VvArrayMsg.h"
#include "VorMsg/VvDataMsg.h"
#include "VorMsg/VvMeasureMsg.h"
#include "VorMsg/VvNullMsg.h"
#include "VorMsg/VvStampMsg.h"
#include "VorMsg/VvStringMsg.h"

#include <string_view>

#include <gtest/gtest.h>

TEST(VvMsg, EveryMessageIsOfItsClassAndAMessage) {
    const auto before = yObject_LiveCount();
    {
        Vor::Object null, measure, text, data, stamp, array;
        ASSERT_EQ(VvNullMsg_Construct(null.Out()), yOK);
        ASSERT_EQ(VvMeasureMsg_Construct(measure.Out(), 1, 0), yOK);
        ASSERT_EQ(VvStringMsg_Construct(text.Out(), "a"), yOK);
        ASSERT_EQ(VvDataMsg_Construct(data.Out(), 1, 2), yOK);
        ASSERT_EQ(VvStampMsg_Construct(stamp.Out(), yStamp()), yOK);
        ASSERT_EQ(VvArrayMsg_Construct(array.Out()), yOK);
        EXPECT_TRUE(yObject_Is(null.Get(), yType_VvNullMsg));
        EXPECT_TRUE(yObject_Is(measure.Get(), yType_VvMeasureMsg));
        EXPECT_TRUE(yObject_Is(text.Get(), yType_VvStringMsg));
        EXPECT_TRUE(yObject_Is(data.Get(), yType_VvDataMsg));
        EXPECT_TRUE(yObject_Is(stamp.Get(), yType_VvStampMsg));
        EXPECT_TRUE(yObject_Is(array.Get(), yType_VvArrayMsg));
        for (void* msg : {null.Get(), measure.Get(), text.Get(), data.Get(), stamp.Get(), array.Get()}) {
            EXPECT_TRUE(yObject_Is(msg, yType_VvMsg));
            EXPECT_EQ(yObject_ShareCount(msg), 1);
        }
    }
    EXPECT_EQ(yObject_LiveCount(), before);
}

TEST(VvMsg, CarriesStampsInOrder) {
    Vor::Object msg;
    ASSERT_EQ(VvStampMsg_Construct(msg.Out(), yStamp{.frameIndex = 1}), yOK);
    ASSERT_EQ(VvMsg_AddStamp(msg.Get(), yStamp{.frameIndex = 2}), yOK);
    ASSERT_EQ(VvMsg_StampCount(msg.Get()), 2U);
    EXPECT_EQ(VvMsg_StampAt(msg.Get(), 0)->frameIndex, 1U);
    EXPECT_EQ(VvMsg_StampAt(msg.Get(), 1)->frameIndex, 2U);
    EXPECT_EQ(VvMsg_StampAt(msg.Get(), 2), nullptr);
}

TEST(VvMsg, WithoutStampsHasNoFirstOne) {
    Vor::Object msg;
    ASSERT_EQ(VvMeasureMsg_Construct(msg.Out(), 1, 1), yOK);
    EXPECT_EQ(VvMsg_StampCount(msg.Get()), 0U);
    EXPECT_EQ(VvMsg_StampAt(msg.Get(), 0), nullptr);
    EXPECT_EQ(VvMsg_StampCount(nullptr), 0U);
    EXPECT_EQ(VvMsg_StampAt(nullptr, 0), nullptr);
    EXPECT_EQ(VvMsg_AddStamp(nullptr, yStamp()), yERROR_PARAMETER);
}

TEST(VvMeasureMsg, CarriesValueAndDecision) {
    Vor::Object msg;
    ASSERT_EQ(VvMeasureMsg_Construct(msg.Out(), -2.25, 255), yOK);
    EXPECT_EQ(VvMeasureMsg_Value(msg.Get()), -2.25);
    EXPECT_EQ(VvMeasureMsg_Decision(msg.Get()), 255);
}

TEST(VvDataMsg, CarriesTimeAndEncoderBesideItsStamps) {
    Vor::Object msg;
    ASSERT_EQ(VvDataMsg_Construct(msg.Out(), UINT64_MAX, -5), yOK);
    ASSERT_EQ(VvMsg_AddStamp(msg.Get(), yStamp{.inputs = 0x21}), yOK);
    EXPECT_EQ(VvDataMsg_Time(msg.Get()), UINT64_MAX);
    EXPECT_EQ(VvDataMsg_Encoder(msg.Get()), -5);
    EXPECT_EQ(VvMsg_StampAt(msg.Get(), 0)->inputs, 0x21);
}

TEST(VvStringMsg, LengthLeavesTheTerminatorOut) {
    Vor::Object msg;
    ASSERT_EQ(VvStringMsg_Construct(msg.Out(), std::string_view("ab\0c", 4)), yOK);
    EXPECT_EQ(VvStringMsg_Length(msg.Get()), 4U);
    EXPECT_EQ(std::string_view(VvStringMsg_Value(msg.Get()), 5), std::string_view("ab\0c\0", 5));
}

TEST(VvArrayMsg, TakesOverItsElements) {
    const auto before = yObject_LiveCount();
    {
        Vor::Object array;
        ASSERT_EQ(VvArrayMsg_Construct(array.Out()), yOK);
        EXPECT_EQ(VvArrayMsg_Count(array.Get()), 0U);
        EXPECT_EQ(VvArrayMsg_At(array.Get(), 0), nullptr);
        void* first = nullptr;
        void* second = nullptr;
        ASSERT_EQ(VvMeasureMsg_Construct(&first, 1, 1), yOK);
        ASSERT_EQ(VvNullMsg_Construct(&second), yOK);
        ASSERT_EQ(VvArrayMsg_Add(array.Get(), first), yOK);
        ASSERT_EQ(VvArrayMsg_Add(array.Get(), second), yOK);
        EXPECT_EQ(VvArrayMsg_Count(array.Get()), 2U);
        EXPECT_EQ(VvArrayMsg_At(array.Get(), 0), first);
        EXPECT_EQ(VvArrayMsg_At(array.Get(), 1), second);
        EXPECT_EQ(yObject_ShareCount(first), 1);
        EXPECT_EQ(VvArrayMsg_Add(array.Get(), nullptr), yERROR_PARAMETER);
        EXPECT_EQ(VvArrayMsg_Add(first, second), yERROR_PARAMETER);
    }
    EXPECT_EQ(yObject_LiveCount(), before);
}

TEST(VvMsg, ConstructsCanBeMadeToFail) {
    Tests::Faults faults;
    Vor::Object msg;
    faults.Set("VvMeasureMsg_Construct", -1);
    EXPECT_EQ(VvMeasureMsg_Construct(msg.Out(), 1, 1), -1);
    faults.Set("VvNullMsg_Construct", -2);
    EXPECT_EQ(VvNullMsg_Construct(msg.Out()), -2);
    EXPECT_EQ(msg.Get(), nullptr);
    EXPECT_EQ(VvNullMsg_Construct(nullptr), yERROR_PARAMETER);
}
