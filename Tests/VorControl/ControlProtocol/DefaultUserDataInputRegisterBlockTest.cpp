#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultUserDataInputRegisterBlock.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Faults.h"
#include "Tests/VorControl/ControlProtocol/TestBlocks.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultUserDataInputRegisterBlockInfo.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <numeric>

#include <gtest/gtest.h>

using namespace Tests;

namespace {

Bytes Counting(std::size_t size) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
    return bytes;
}

void Read(ProtocolRegisterBlockInfo& info, Bytes& destination, std::size_t destinationSize, const Bytes& source) {
    info.ConstructBlock(RegisterBlockParams())
        ->Deserialize(destination.data(), destinationSize, source.data(), source.size());
}

} // namespace

TEST(DefaultUserDataInputRegisterBlock, CopiesAllBytesInEitherByteOrder) {
    DefaultUserDataInputRegisterBlockInfo info;
    for (const bool bigEndian : {true, false}) {
        info.SetIsProtocolBigEndian(bigEndian);
        auto destination = Canary(469);
        Read(info, destination, 468, Counting(469));
        auto expected = Counting(468);
        expected.push_back(0xA5);
        EXPECT_EQ(destination, expected);
    }
}

TEST(DefaultUserDataInputRegisterBlock, ASmallerInputSizeLeavesTheRestZero) {
    auto params = TypeParams<DefaultUserDataInputRegisterBlock>("small", 4);
    params.deserializedInputSize = 4;
    ProtocolRegisterBlockInfo info(std::move(params));
    auto destination = Canary(468);
    Read(info, destination, 468, Counting(6));
    auto expected = Bytes(468, 0);
    std::iota(expected.begin(), expected.begin() + 4, static_cast<unsigned char>(1));
    EXPECT_EQ(destination, expected);
}

TEST(DefaultUserDataInputRegisterBlock, AGreaterInputSizeStaysWithinTheRecord) {
    auto params = TypeParams<DefaultUserDataInputRegisterBlock>("great", 500);
    params.deserializedInputSize = 500;
    ProtocolRegisterBlockInfo info(std::move(params));
    auto destination = Canary(470);
    Read(info, destination, 468, Counting(500));
    auto expected = Counting(468);
    expected.insert(expected.end(), 2, 0xA5);
    EXPECT_EQ(destination, expected);
}

TEST(DefaultUserDataInputRegisterBlock, ASourceThatIsCutIsRefusedAtEveryLength) {
    DefaultUserDataInputRegisterBlockInfo info;
    auto destination = Canary(468);
    for (std::size_t size = 0; size < 468; ++size) {
        EXPECT_FAILURE(Read(info, destination, 468, Counting(size)), yERROR_SIZE,
                       "Insufficient source buffer size available for data deserialization.");
    }
    EXPECT_EQ(destination, Canary(468));
}

TEST(DefaultUserDataInputRegisterBlock, ADestinationOfAnotherSizeIsRefused) {
    DefaultUserDataInputRegisterBlockInfo info;
    auto destination = Canary(504);
    for (const std::size_t size : {0, 467, 469, 504}) {
        EXPECT_FAILURE(Read(info, destination, size, Counting(468)), yERROR_SIZE,
                       "Insufficient destination buffer available for data deserialization output.");
    }
    EXPECT_EQ(destination, Canary(504));
}

TEST(DefaultUserDataInputRegisterBlock, WideRegistersAreRefusedWithTheDestinationCleared) {
    auto params = TypeParams<DefaultUserDataInputRegisterBlock>("wide", 234);
    params.deserializedInputSize = 468;
    params.bytesPerRegister = 2;
    ProtocolRegisterBlockInfo info(std::move(params));
    auto destination = Canary(468);
    EXPECT_FAILURE(Read(info, destination, 468, Counting(468)), yERROR_CONFLICT,
                   "This block only supports 1 byte per register.");
    EXPECT_EQ(destination, Bytes(468, 0));
}

TEST(DefaultUserDataInputRegisterBlock, AFailureToClearOrToCopyIsThrown) {
    Faults faults;
    DefaultUserDataInputRegisterBlockInfo info;
    auto destination = Canary(468);
    faults.SetHere("yMemSet", -41);
    EXPECT_TEXTLESS_FAILURE(Read(info, destination, 468, Counting(468)), -41);
    faults.SetHere("yMemCopy", -42);
    EXPECT_TEXTLESS_FAILURE(Read(info, destination, 468, Counting(468)), -42);
}

TEST(DefaultUserDataInputRegisterBlock, ItReadsOnly) {
    DefaultUserDataInputRegisterBlockInfo info;
    EXPECT_TEXTLESS_FAILURE(info.ConstructBlock(RegisterBlockParams())->Serialize(nullptr, 0, nullptr, 0),
                            yERROR_UNIMPLEMENTED);
}
