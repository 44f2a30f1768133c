#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlock.h"

#include "Tests/Support/Failure.h"
#include "Tests/VorControl/ControlProtocol/TestBlocks.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlockInfo.h"
#include "yApi/yStatus.h"

#include <limits>

#include <gtest/gtest.h>

using namespace Tests;

namespace {

DefaultScannerStateData State() {
    DefaultScannerStateData data;
    data.firstScannerByte = 0x31;
    data.secondScannerByte = 0x32;
    data.signedScannerValue = -2;
    data.unsignedScannerValue = 0x1112131415161718;
    return data;
}

Bytes Serialized(ProtocolRegisterBlockInfo& info, const DefaultScannerStateData& data) {
    const auto block = info.ConstructBlock(RegisterBlockParams());
    const std::size_t size = block->SerializedOutputSize();
    auto buffer = Canary(size + 1);
    block->Serialize(buffer.data(), size, &data, sizeof(data));
    EXPECT_EQ(buffer.back(), 0xA5);
    buffer.pop_back();
    return buffer;
}

template <class Block = DefaultScannerStateRegisterBlock>
ProtocolRegisterBlockInfo WideScannerState(bool bigEndian) {
    auto params = TypeParams<Block>("wide", 10);
    params.bytesPerRegister = 2;
    params.isProtocolBigEndian = bigEndian;
    return ProtocolRegisterBlockInfo(std::move(params));
}

} // namespace

TEST(DefaultScannerStateRegisterBlock, WritesAllFieldsInEitherByteOrder) {
    DefaultScannerStateRegisterBlockInfo info(false);
    EXPECT_EQ(Serialized(info, State()), (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0x11, 0x12, 0x13, 0x14,
                                                0x15, 0x16, 0x17, 0x18, 0x31, 0x32}));
    info.SetIsProtocolBigEndian(false);
    EXPECT_EQ(Serialized(info, State()), (Bytes{0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x18, 0x17, 0x16, 0x15,
                                                0x14, 0x13, 0x12, 0x11, 0x31, 0x32}));
}

TEST(DefaultScannerStateRegisterBlock, WritesTheGreatestAndTheLeastValues) {
    DefaultScannerStateRegisterBlockInfo info(false);
    DefaultScannerStateData data;
    data.firstScannerByte = 0xFF;
    data.signedScannerValue = std::numeric_limits<std::int64_t>::min();
    data.unsignedScannerValue = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(Serialized(info, data),
              (Bytes{0x80, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0}));
}

TEST(DefaultScannerStateRegisterBlock, InWideRegistersTheSecondByteOverlapsTheFirst) {
    auto big = WideScannerState(true);
    EXPECT_EQ(Serialized(big, State()), (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0x12, 0x11,
                                               0x14, 0x13, 0x16, 0x15, 0x18, 0x17, 0x31, 0x32, 0x00, 0xA5}));
    auto little = WideScannerState(false);
    EXPECT_EQ(Serialized(little, State()), (Bytes{0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x18, 0x17,
                                                  0x16, 0x15, 0x14, 0x13, 0x12, 0x11, 0x31, 0x32, 0x00, 0xA5}));
}

TEST(DefaultScannerStateRegisterBlock, ADerivedBlockMayPlaceTheFieldsWithoutOverlap) {
    class Placed : public DefaultScannerStateRegisterBlock {
    public:
        Placed(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info)
            : DefaultScannerStateRegisterBlock(params, info,
                                               {.signedScannerValue = 4,
                                                .unsignedScannerValue = 12,
                                                .firstScannerByte = 0,
                                                .secondScannerByte = 2}) {}
    };
    auto info = WideScannerState<Placed>(false);
    EXPECT_EQ(Serialized(info, State()), (Bytes{0x31, 0,    0x32, 0,    0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                                                0xFF, 0xFF, 0x18, 0x17, 0x16, 0x15, 0x14, 0x13, 0x12, 0x11}));
}

TEST(DefaultScannerStateRegisterBlock, SizesMustBeExactAndTheSourceIsAskedFirst) {
    DefaultScannerStateRegisterBlockInfo info(true);
    const auto block = info.ConstructBlock(RegisterBlockParams());
    const DefaultScannerStateData data[2]{};
    auto buffer = Canary(19);
    for (const std::size_t size : {0, 23, 25}) {
        EXPECT_FAILURE(block->Serialize(buffer.data(), 17, data, size), yERROR_SIZE,
                       "Insufficient source buffer size available for data serialization.");
    }
    for (const std::size_t size : {0, 17, 19}) {
        EXPECT_FAILURE(block->Serialize(buffer.data(), size, data, 24), yERROR_SIZE,
                       "Insufficient destination buffer sizes available for data serialization output.");
    }
    EXPECT_EQ(buffer, Canary(19));
}

TEST(DefaultScannerStateRegisterBlock, ItWritesOnly) {
    DefaultScannerStateRegisterBlockInfo info(false);
    EXPECT_TEXTLESS_FAILURE(info.ConstructBlock(RegisterBlockParams())->Deserialize(nullptr, 0, nullptr, 0),
                            yERROR_UNIMPLEMENTED);
}
