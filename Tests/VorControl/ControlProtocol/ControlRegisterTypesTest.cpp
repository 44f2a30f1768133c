#include "VorControl/ControlProtocol/ControlRegisterTypes.h"

#include "Tests/Support/Failure.h"
#include "yApi/yStatus.h"

#include <cstddef>

#include <gtest/gtest.h>

using namespace VorControl::ControlProtocol;

namespace {

TEST(ControlRegisterTypes, RecordsHaveTheirFixedPlacesAndSizes) {
    EXPECT_EQ(sizeof(ControlRegisterCommandData), 504U);
    EXPECT_EQ(offsetof(ControlRegisterCommandData, requestWord), 0U);
    EXPECT_EQ(offsetof(ControlRegisterCommandData, commandId), 2U);
    EXPECT_EQ(offsetof(ControlRegisterCommandData, commandArgs), 4U);
    EXPECT_EQ(sizeof(ControlRegisterCommandData::commandArgs), 492U);
    EXPECT_EQ(offsetof(ControlRegisterCommandData, commandArgsSize), 496U);
    EXPECT_EQ(sizeof(DefaultCommandResultData), 4U);
    EXPECT_EQ(offsetof(DefaultCommandResultData, commandResult), 2U);
    EXPECT_EQ(sizeof(DefaultUserDataInputData), 468U);
    EXPECT_EQ(sizeof(DefaultSystemStateData), 80U);
    EXPECT_EQ(offsetof(DefaultSystemStateData, jobFileNameLength), 1U);
    EXPECT_EQ(offsetof(DefaultSystemStateData, secondStateByte), 2U);
    EXPECT_EQ(offsetof(DefaultSystemStateData, thirdStateByte), 3U);
    EXPECT_EQ(offsetof(DefaultSystemStateData, stateValue), 8U);
    EXPECT_EQ(offsetof(DefaultSystemStateData, jobFileName), 16U);
    EXPECT_EQ(sizeof(DefaultScannerStateData), 24U);
    EXPECT_EQ(offsetof(DefaultScannerStateData, secondScannerByte), 1U);
    EXPECT_EQ(offsetof(DefaultScannerStateData, signedScannerValue), 8U);
    EXPECT_EQ(offsetof(DefaultScannerStateData, unsignedScannerValue), 16U);
}

TEST(ControlRegisterTypes, TheArgumentsSizeIsStoredUpToTheSizeOfTheArguments) {
    ControlRegisterCommandData data;
    EXPECT_EQ(data.commandArgsSize, 0U);
    data.SetCommandArgsSize(492);
    EXPECT_EQ(data.commandArgsSize, 492U);
    EXPECT_TEXTLESS_FAILURE(data.SetCommandArgsSize(493), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(data.SetCommandArgsSize(~0ULL), yERROR_PARAMETER);
    EXPECT_EQ(data.commandArgsSize, 492U);
    data.SetCommandArgsSize(0);
    EXPECT_EQ(data.commandArgsSize, 0U);
}

} // namespace
