#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlOutputRegisterBlock.h"

#include "Tests/Support/Failure.h"
#include "Tests/VorControl/ControlProtocol/TestBlocks.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlOutputRegisterBlockInfo.h"
#include "yApi/yStatus.h"

#include <gtest/gtest.h>

using namespace Tests;

namespace {

/// The bytes that the block writes for a result, and after them bytes that must not change.
Bytes Serialized(ProtocolRegisterBlockInfo& info) {
    const auto block = info.ConstructBlock(RegisterBlockParams());
    const DefaultCommandResultData data{0x1234, 0x03};
    auto buffer = Canary(block->SerializedOutputSize() + 1);
    block->Serialize(buffer.data(), block->SerializedOutputSize(), &data, sizeof(data));
    return buffer;
}

ProtocolRegisterBlockInfo WideOutput(bool bigEndian) {
    auto params = TypeParams<DefaultControlOutputRegisterBlock>("wide", 3);
    params.bytesPerRegister = 2;
    params.isProtocolBigEndian = bigEndian;
    return ProtocolRegisterBlockInfo(std::move(params));
}

} // namespace

TEST(DefaultControlOutputRegisterBlock, WritesThreeRegistersOfOneByte) {
    DefaultControlOutputRegisterBlockInfo info;
    EXPECT_EQ(Serialized(info), (Bytes{0x12, 0x34, 0x03, 0xA5}));
    info.SetIsProtocolBigEndian(false);
    EXPECT_EQ(Serialized(info), (Bytes{0x34, 0x12, 0x03, 0xA5}));
}

TEST(DefaultControlOutputRegisterBlock, WritesTwoOfThreeRegistersOfTwoBytes) {
    auto big = WideOutput(true);
    EXPECT_EQ(Serialized(big), (Bytes{0x34, 0x12, 0x03, 0x00, 0xA5, 0xA5, 0xA5}));
    auto little = WideOutput(false);
    EXPECT_EQ(Serialized(little), (Bytes{0x34, 0x12, 0x03, 0x00, 0xA5, 0xA5, 0xA5}));
}

TEST(DefaultControlOutputRegisterBlock, SizesMustBeExactAndTheSourceIsAskedFirst) {
    DefaultControlOutputRegisterBlockInfo info;
    const auto block = info.ConstructBlock(RegisterBlockParams());
    const DefaultCommandResultData data[2]{};
    auto buffer = Canary(4);
    for (const std::size_t size : {0, 3, 5}) {
        EXPECT_FAILURE(block->Serialize(buffer.data(), 2, data, size), yERROR_SIZE,
                       "Insufficient source buffer size available for data serialization.");
    }
    for (const std::size_t size : {0, 1, 2, 4}) {
        EXPECT_FAILURE(block->Serialize(buffer.data(), size, data, 4), yERROR_SIZE,
                       "Insufficient destination buffer available for data serialization output.");
    }
    EXPECT_EQ(buffer, Canary(4));
}

TEST(DefaultControlOutputRegisterBlock, ItWritesOnly) {
    DefaultControlOutputRegisterBlockInfo info;
    EXPECT_TEXTLESS_FAILURE(info.ConstructBlock(RegisterBlockParams())->Deserialize(nullptr, 0, nullptr, 0),
                            yERROR_UNIMPLEMENTED);
}
