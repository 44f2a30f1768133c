#include "VorMsg/ResultInfo.h"

#include "VorApi/Object.h"

#include <functional>
#include <string>

#include <gtest/gtest.h>

TEST(ResultInfo, NumericIdIsTheHashOfTheText) {
    EXPECT_EQ(ResultInfo_IdOfText(""), 0x553e93901e462a6eUL);
    EXPECT_EQ(ResultInfo_IdOfText("a"), 0x454ddee488c1ed6bUL);
    EXPECT_EQ(ResultInfo_IdOfText("abc"), 0x32d82bf8ed3dba39UL);
    const std::string text = "profile/max";
    EXPECT_EQ(ResultInfo_IdOfText(text), std::hash<std::string>()(text));
}

TEST(ResultInfo, KeepsTypeAndSource) {
    EXPECT_EQ(ResultInfo_TypeStamp, 11);
    EXPECT_EQ(ResultInfo_TypeMeasurement, 19);
    EXPECT_EQ(ResultInfo_TypeString, 20);
    Vor::Object info;
    ASSERT_EQ(ResultInfo_Construct(info.Out(), 65535, "profile/max"), yOK);
    EXPECT_EQ(ResultInfo_Type(info.Get()), 65535);
    EXPECT_STREQ(ResultInfo_Source(info.Get()), "profile/max");
    EXPECT_EQ(ResultInfo_NumericId(info.Get()), ResultInfo_IdOfText("profile/max"));
}
