#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlock.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Faults.h"
#include "Tests/VorControl/ControlProtocol/TestBlocks.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlockInfo.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

using namespace Tests;

namespace {

DefaultSystemStateData State(const std::string& job) {
    DefaultSystemStateData data;
    data.stateValue = 0x1112131415161718;
    data.firstStateByte = 0x21;
    data.secondStateByte = 0x22;
    data.thirdStateByte = 0x23;
    data.jobFileNameLength = static_cast<std::uint8_t>(job.size());
    std::copy_n(job.begin(), std::min(job.size(), data.jobFileName.size()), data.jobFileName.begin());
    return data;
}

void Write(ProtocolRegisterBlockInfo& info, Bytes& buffer, const DefaultSystemStateData& data) {
    const auto block = info.ConstructBlock(RegisterBlockParams());
    block->Serialize(buffer.data(), block->SerializedOutputSize(), &data, sizeof(data));
}

Bytes Serialized(ProtocolRegisterBlockInfo& info, const DefaultSystemStateData& data) {
    auto buffer = Canary(76 * info.BytesPerRegister() + 1);
    Write(info, buffer, data);
    EXPECT_EQ(buffer.back(), 0xA5);
    buffer.pop_back();
    return buffer;
}

template <class Block = DefaultSystemStateRegisterBlock>
ProtocolRegisterBlockInfo WideSystemState(bool bigEndian) {
    auto params = TypeParams<Block>("wide", 76);
    params.bytesPerRegister = 2;
    params.isProtocolBigEndian = bigEndian;
    return ProtocolRegisterBlockInfo(std::move(params));
}

/// The parts one after the other.
Bytes Join(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const auto& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

const Bytes BigValue{0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18};
const Bytes LittleValue{0x18, 0x17, 0x16, 0x15, 0x14, 0x13, 0x12, 0x11};
const Bytes WideBigValue{0x12, 0x11, 0x14, 0x13, 0x16, 0x15, 0x18, 0x17};

} // namespace

TEST(DefaultSystemStateRegisterBlock, WritesAllFieldsInEitherByteOrder) {
    DefaultSystemStateRegisterBlockInfo info;
    const Bytes rest = Join({{0x21, 0x03, 'a', 'b', 'c'}, Bytes(61, 0), {0x22, 0x23}});
    EXPECT_EQ(Serialized(info, State("abc")), Join({BigValue, rest}));
    info.SetIsProtocolBigEndian(false);
    EXPECT_EQ(Serialized(info, State("abc")), Join({LittleValue, rest}));
}

TEST(DefaultSystemStateRegisterBlock, AStateValueOfOneInEitherByteOrder) {
    DefaultSystemStateRegisterBlockInfo info;
    DefaultSystemStateData data;
    data.stateValue = 1;
    auto expected = Bytes(76, 0);
    expected[7] = 1;
    EXPECT_EQ(Serialized(info, data), expected);
    info.SetIsProtocolBigEndian(false);
    expected[7] = 0;
    expected[0] = 1;
    EXPECT_EQ(Serialized(info, data), expected);
}

TEST(DefaultSystemStateRegisterBlock, AFileNameOf64CharactersFillsTheFieldAnd65AreRefused) {
    DefaultSystemStateRegisterBlockInfo info;
    const std::string name(64, 'n');
    EXPECT_EQ(Serialized(info, State(name)), Join({BigValue, {0x21, 64}, Bytes(64, 'n'), {0x22, 0x23}}));
    auto buffer = Canary(76);
    EXPECT_FAILURE(Write(info, buffer, State(std::string(65, 'n'))), yERROR_PARAMETER,
                   "The job filename length specified [65] is too long.");
    EXPECT_FAILURE(Write(info, buffer, State(std::string(255, 'n'))), yERROR_PARAMETER,
                   "The job filename length specified [255] is too long.");
    EXPECT_EQ(buffer, Canary(76));
    EXPECT_EQ(DefaultSystemStateRegisterBlock::JobFileNameMaxSize(), 64);
}

TEST(DefaultSystemStateRegisterBlock, AShortFileNameLeavesNoTraceOfALongOne) {
    DefaultSystemStateRegisterBlockInfo info;
    auto buffer = Canary(76);
    Write(info, buffer, State(std::string(64, 'n')));
    Write(info, buffer, State("b"));
    EXPECT_EQ(buffer, Join({BigValue, {0x21, 1, 'b'}, Bytes(63, 0), {0x22, 0x23}}));
    Write(info, buffer, State(""));
    EXPECT_EQ(buffer, Join({BigValue, {0x21, 0}, Bytes(64, 0), {0x22, 0x23}}));
}

TEST(DefaultSystemStateRegisterBlock, TheLengthDecidesWhatIsAName) {
    DefaultSystemStateRegisterBlockInfo info;
    auto data = State("abcd");
    data.jobFileNameLength = 2;
    EXPECT_EQ(Serialized(info, data), Join({BigValue, {0x21, 2, 'a', 'b'}, Bytes(62, 0), {0x22, 0x23}}));
    data.jobFileName[0] = '\0';
    data.jobFileName[1] = '\xE4';
    EXPECT_EQ(Serialized(info, data), Join({BigValue, {0x21, 2, 0, 0xE4}, Bytes(62, 0), {0x22, 0x23}}));
}

TEST(DefaultSystemStateRegisterBlock, InWideRegistersTheFileNamePrevailsOverTheFieldsThatItOverlaps) {
    for (const bool bigEndian : {true, false}) {
        SCOPED_TRACE(bigEndian);
        auto info = WideSystemState(bigEndian);
        const auto& value = bigEndian ? WideBigValue : LittleValue;
        // The second byte of the length is the first one of the name, and is cleared with it.
        EXPECT_EQ(Serialized(info, State("")), Join({value, {0x21, 0}, Bytes(128, 0), Canary(14)}));
        EXPECT_EQ(Serialized(info, State("ab")), Join({value, {0x21, 2, 'a', 0, 'b', 0}, Bytes(124, 0), Canary(14)}));
        const std::string name(34, 'n');
        Bytes characters;
        for (const char c : name) {
            characters.push_back(static_cast<unsigned char>(c));
            characters.push_back(0);
        }
        EXPECT_EQ(Serialized(info, State(name)), Join({value, {0x21, 34}, characters, Bytes(60, 0), Canary(14)}));
    }
}

TEST(DefaultSystemStateRegisterBlock, ADerivedBlockMayPlaceTheFieldsWithoutOverlap) {
    class Placed : public DefaultSystemStateRegisterBlock {
    public:
        Placed(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info)
            : DefaultSystemStateRegisterBlock(params, info,
                                              {.stateValue = 0,
                                               .firstStateByte = 8,
                                               .jobFileNameLength = 10,
                                               .jobFileName = 12,
                                               .secondStateByte = 140,
                                               .thirdStateByte = 142}) {}
    };
    auto info = WideSystemState<Placed>(false);
    EXPECT_EQ(Serialized(info, State("a")),
              Join({LittleValue, {0x21, 0, 1, 0, 'a', 0}, Bytes(126, 0), {0x22, 0, 0x23, 0}, Canary(8)}));
}

TEST(DefaultSystemStateRegisterBlock, SizesMustBeExactAndTheSourceIsAskedFirst) {
    DefaultSystemStateRegisterBlockInfo info;
    const auto block = info.ConstructBlock(RegisterBlockParams());
    const DefaultSystemStateData data[2]{};
    auto buffer = Canary(77);
    for (const std::size_t size : {0, 79, 81}) {
        EXPECT_FAILURE(block->Serialize(buffer.data(), 75, data, size), yERROR_SIZE,
                       "Insufficient source buffer size available for data serialization.");
    }
    for (const std::size_t size : {0, 75, 77}) {
        EXPECT_FAILURE(block->Serialize(buffer.data(), size, data, 80), yERROR_SIZE,
                       "Insufficient destination buffer size available for data serialization output.");
    }
    const auto tooLong = State(std::string(65, 'n'));
    EXPECT_FAILURE(block->Serialize(buffer.data(), 75, &tooLong, 80), yERROR_SIZE,
                   "Insufficient destination buffer size available for data serialization output.");
    EXPECT_EQ(buffer, Canary(77));
}

TEST(DefaultSystemStateRegisterBlock, AFailureToClearTheNameIsThrownAfterTheOtherFields) {
    Faults faults;
    DefaultSystemStateRegisterBlockInfo info;
    auto buffer = Canary(76);
    faults.SetHere("yMemSet", -41);
    EXPECT_TEXTLESS_FAILURE(Write(info, buffer, State("abc")), -41);
    EXPECT_EQ(buffer, Join({BigValue, {0x21, 3}, Canary(64), {0x22, 0x23}}));
}

TEST(DefaultSystemStateRegisterBlock, ItWritesOnly) {
    DefaultSystemStateRegisterBlockInfo info;
    EXPECT_TEXTLESS_FAILURE(info.ConstructBlock(RegisterBlockParams())->Deserialize(nullptr, 0, nullptr, 0),
                            yERROR_UNIMPLEMENTED);
}
