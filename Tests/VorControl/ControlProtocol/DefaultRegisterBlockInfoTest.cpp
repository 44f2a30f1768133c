#include "Tests/Support/Translations.h"
#include "Tests/VorControl/ControlProtocol/TestBlocks.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputLargeRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputLargeRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlOutputRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlOutputRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueAndDecisionRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueAndDecisionRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultPlaceholderRegisterBlocks.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStringRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStringRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultUserDataInputRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultUserDataInputRegisterBlockInfo.h"

#include <typeinfo>

#include <gtest/gtest.h>

using namespace Tests;

namespace {

template <class Block>
void ExpectRow(ProtocolRegisterBlockInfo&& info, const char* type, const char* displayName, int category,
               unsigned short registers, unsigned char width = 1, bool configurable = false) {
    SCOPED_TRACE(type);
    EXPECT_EQ(info.Type(), type);
    EXPECT_EQ(info.DisplayName(), displayName);
    EXPECT_EQ(static_cast<int>(info.Category()), category);
    EXPECT_EQ(info.DeserializedInputSize(), 0);
    EXPECT_EQ(info.DefaultRegisterCount(), registers);
    EXPECT_EQ(info.BytesPerRegister(), width);
    EXPECT_EQ(info.MinInstanceCount(), 0);
    EXPECT_EQ(info.MaxInstanceCount(), 65534);
    EXPECT_TRUE(info.HasDataSource());
    EXPECT_TRUE(info.IsProtocolBigEndian());
    EXPECT_EQ(info.IsRegisterCountConfigurable(), configurable);

    RegisterBlockParams params;
    params.dataSource = "source";
    const auto block = info.ConstructBlock(params);
    EXPECT_NE(dynamic_cast<Block*>(block.get()), nullptr);
    EXPECT_EQ(block->DataSource(), "source");
    EXPECT_EQ(block->RegisterCount(), registers);
}

template <class Block>
void ExpectControlRow(ProtocolRegisterBlockInfo&& info, const char* type, const char* displayName, int category,
                      unsigned short inputSize, unsigned short registers, unsigned short minInstances = 1) {
    SCOPED_TRACE(type);
    EXPECT_EQ(info.Type(), type);
    EXPECT_EQ(info.DisplayName(), displayName);
    EXPECT_EQ(static_cast<int>(info.Category()), category);
    EXPECT_EQ(info.DeserializedInputSize(), inputSize);
    EXPECT_EQ(info.DefaultRegisterCount(), registers);
    EXPECT_EQ(info.BytesPerRegister(), 1);
    EXPECT_EQ(info.MinInstanceCount(), minInstances);
    EXPECT_EQ(info.MaxInstanceCount(), 1);
    EXPECT_FALSE(info.HasDataSource());
    EXPECT_TRUE(info.IsProtocolBigEndian());
    EXPECT_FALSE(info.IsRegisterCountConfigurable());

    const auto block = info.ConstructBlock(RegisterBlockParams());
    const auto& made = *block;
    EXPECT_EQ(typeid(made), typeid(Block));
    EXPECT_EQ(block->RegisterCount(), registers);
    EXPECT_EQ(block->DeserializedInputSize(), inputSize);
}

} // namespace

TEST(DefaultRegisterBlockInfo, RowsOfTheCommandAndStateTypes) {
    ExpectControlRow<DefaultControlInputRegisterBlock>(DefaultControlInputRegisterBlockInfo(), "ControlInput",
                                                       "Command Input", 1, 67, 67);
    ExpectControlRow<DefaultControlInputLargeRegisterBlock>(DefaultControlInputLargeRegisterBlockInfo(),
                                                            "ControlInputLarge", "Command Input Large", 1, 496, 496);
    ExpectControlRow<DefaultControlOutputRegisterBlock>(DefaultControlOutputRegisterBlockInfo(), "ControlOutput",
                                                        "Command Output", 2, 0, 3);
    ExpectControlRow<DefaultUserDataInputRegisterBlock>(DefaultUserDataInputRegisterBlockInfo(), "UserDataInput",
                                                        "User Data Input", 14, 468, 468);
    ExpectControlRow<DefaultSystemStateRegisterBlock>(DefaultSystemStateRegisterBlockInfo(), "System", "System State",
                                                      3, 0, 76);
    ExpectControlRow<DefaultScannerStateRegisterBlock>(DefaultScannerStateRegisterBlockInfo(false), "Scanner",
                                                       "Sensor Group State", 4, 0, 18);
}

TEST(DefaultRegisterBlockInfo, AServiceMayDoWithoutAScanner) {
    ExpectControlRow<DefaultScannerStateRegisterBlock>(DefaultScannerStateRegisterBlockInfo(true), "Scanner",
                                                       "Sensor Group State", 4, 0, 18, 0);
}

TEST(DefaultRegisterBlockInfo, RowsOfTheScanDataTypes) {
    ExpectRow<DefaultStampRegisterBlock>(DefaultStampRegisterBlockInfo(), "Stamp", "Stamp", 5, 36);
    ExpectRow<DefaultMeasurementValueRegisterBlock>(DefaultMeasurementValueRegisterBlockInfo(), "MeasurementValue",
                                                    "Measurement", 6, 4);
    ExpectRow<DefaultMeasurementDecisionRegisterBlock>(DefaultMeasurementDecisionRegisterBlockInfo(),
                                                       "MeasurementDecision", "Decision", 6, 1);
    ExpectRow<DefaultMeasurementValueAndDecisionRegisterBlock>(DefaultMeasurementValueAndDecisionRegisterBlockInfo(),
                                                               "Measurement", "Measurement and Decision", 6, 5);
    ExpectRow<DefaultImageRegisterBlock>(DefaultImageRegisterBlockInfo(), "Image", "Image", 7, 0);
    ExpectRow<DefaultSpotsRegisterBlock>(DefaultSpotsRegisterBlockInfo(), "Spots", "Spots", 8, 0);
    ExpectRow<DefaultProfilePointCloudRegisterBlock>(DefaultProfilePointCloudRegisterBlockInfo(), "ProfilePointCloud",
                                                     "Profile Point Cloud", 10, 0);
    ExpectRow<DefaultUniformProfileRegisterBlock>(DefaultUniformProfileRegisterBlockInfo(), "UniformProfile",
                                                  "Uniform Profile", 11, 0);
    ExpectRow<DefaultSurfacePointCloudRegisterBlock>(DefaultSurfacePointCloudRegisterBlockInfo(), "SurfacePointCloud",
                                                     "Surface Point Cloud", 12, 0);
    ExpectRow<DefaultUniformSurfaceRegisterBlock>(DefaultUniformSurfaceRegisterBlockInfo(), "UniformSurface",
                                                  "Uniform Surface", 13, 0);
}

TEST(DefaultRegisterBlockInfo, StringHoldsEightBytesInRegistersOfEitherWidth) {
    ExpectRow<DefaultStringRegisterBlock>(DefaultStringRegisterBlockInfo(1), "String", "String", 9, 8, 1, true);
    ExpectRow<DefaultStringRegisterBlock>(DefaultStringRegisterBlockInfo(2), "String", "String", 9, 4, 2, true);
    ExpectRow<DefaultStringRegisterBlock>(DefaultStringRegisterBlockInfo(3), "String", "String", 9, 2, 3, true);
    ExpectRow<DefaultStringRegisterBlock>(DefaultStringRegisterBlockInfo(0), "String", "String", 9, 0, 0, true);
}

TEST(DefaultRegisterBlockInfo, PlaceholderTypesDontSerialise) {
    DefaultImageRegisterBlockInfo info;
    RegisterBlockParams params;
    params.dataSource = "source";
    const auto block = info.ConstructBlock(params);
    try {
        block->Serialize(nullptr, 0, nullptr, 0);
        FAIL();
    } catch (const Vor::Exception& exception) {
        EXPECT_EQ(exception.Status(), yERROR_UNIMPLEMENTED);
        EXPECT_FALSE(exception.HasText());
    }
}

TEST(DefaultRegisterBlockInfo, DisplayNamesAreTranslatedOnceAtLoad) {
    VorGetText::GetInstance().ForgetCalls();
    const Translation translation("com.vorlab.ctrl", "Stamp", "Stempel");
    EXPECT_EQ(DefaultStampRegisterBlockInfo().DisplayName(), "Stamp");
    EXPECT_STREQ(DefaultStampRegisterBlockInfo::DEFAULT_DISPLAY_NAME, "Stamp");
    EXPECT_FALSE(WasTranslated("com.vorlab.ctrl", "Measurement and Decision"));
    DefaultMeasurementValueAndDecisionRegisterBlockInfo();
    EXPECT_FALSE(WasTranslated("com.vorlab.ctrl", "Measurement and Decision"));
}
