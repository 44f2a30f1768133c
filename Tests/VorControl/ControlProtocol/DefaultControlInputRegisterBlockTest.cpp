#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputRegisterBlock.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Faults.h"
#include "Tests/Support/Translations.h"
#include "Tests/VorControl/ControlProtocol/TestBlocks.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputLargeRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputLargeRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputRegisterBlockInfo.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <string>

#include <gtest/gtest.h>

using namespace Tests;

namespace {

constexpr const char* SourceText = "Insufficient source buffer size available for data deserialization.";
constexpr const char* DestinationText = "Insufficient destination buffer available for data deserialization output.";
constexpr const char* NoJobText = "Unable to load job file because no job file name was given.";

/// A command input of the given width, which reads up to 65 registers.
template <class Block = DefaultControlInputRegisterBlock>
ProtocolRegisterBlockInfo Type(unsigned char width, bool bigEndian, unsigned short inputSize) {
    auto params = TypeParams<Block>("input", 65);
    params.deserializedInputSize = inputSize;
    params.bytesPerRegister = width;
    params.isProtocolBigEndian = bigEndian;
    return ProtocolRegisterBlockInfo(std::move(params));
}

/// A record that has other contents before.
ControlRegisterCommandData Used() {
    ControlRegisterCommandData data;
    std::memset(static_cast<void*>(&data), 0xA5, sizeof(data));
    return data;
}

ControlRegisterCommandData Read(ProtocolRegisterBlockInfo& info, const Bytes& source) {
    auto data = Used();
    info.ConstructBlock(RegisterBlockParams())->Deserialize(&data, sizeof(data), source.data(), source.size());
    return data;
}

/// The head, then the text with one character in a register; the rest is filled with 'x'.
Bytes Command(const Bytes& head, const std::string& text, std::size_t size, std::size_t width = 1, bool big = true) {
    Bytes source(size, 'x');
    std::copy(head.begin(), head.end(), source.begin());
    for (std::size_t i = 0; i < text.size(); ++i) {
        source[4 + width * i + (width == 2 && big ? 1 : 0)] = static_cast<unsigned char>(text[i]);
    }
    return source;
}

std::string Text(const ControlRegisterCommandData& data) {
    return std::string(data.commandArgs.begin(), std::find(data.commandArgs.begin(), data.commandArgs.end(), '\0'));
}

bool AllZero(const ControlRegisterCommandData& data, std::size_t from = 0) {
    return std::all_of(data.commandArgs.begin() + static_cast<std::ptrdiff_t>(from), data.commandArgs.end(),
                       [](char c) { return c == '\0'; });
}

} // namespace

TEST(DefaultControlInputRegisterBlock, ReadsAStartInEitherByteOrder) {
    DefaultControlInputRegisterBlockInfo info;
    const auto source = Command({0x12, 0x34, 1, 0xFF}, "", 67);
    auto data = Read(info, source);
    EXPECT_EQ(data.requestWord, 0x1234);
    EXPECT_EQ(data.commandId, ControlRegisterCommandData::Start);
    EXPECT_EQ(data.reserved, 0);
    EXPECT_EQ(data.commandArgsSize, 0U);
    EXPECT_TRUE(AllZero(data));
    info.SetIsProtocolBigEndian(false);
    data = Read(info, source);
    EXPECT_EQ(data.requestWord, 0x3412);
    EXPECT_EQ(data.commandId, ControlRegisterCommandData::Start);
}

TEST(DefaultControlInputRegisterBlock, TheCommandIdIsTheLowByteOfAWideRegister) {
    const auto source = Command({0x12, 0x34, 0x01, 0x02}, "", 130, 2);
    auto big = Type(2, true, 130);
    EXPECT_EQ(Read(big, source).requestWord, 0x1234);
    EXPECT_EQ(Read(big, source).commandId, ControlRegisterCommandData::Stop);
    auto little = Type(2, false, 130);
    EXPECT_EQ(Read(little, source).requestWord, 0x3412);
    EXPECT_EQ(Read(little, source).commandId, ControlRegisterCommandData::Start);
}

TEST(DefaultControlInputRegisterBlock, ArgumentsOfOtherCommandsStayZero) {
    DefaultControlInputRegisterBlockInfo info;
    for (const unsigned char id : {0, 1, 2, 3, 4, 6, 7, 8, 10, 255}) {
        SCOPED_TRACE(static_cast<int>(id));
        const auto data = Read(info, Command({0, 0, id, 0}, "scanner", 67));
        EXPECT_EQ(data.commandId, id);
        EXPECT_EQ(data.commandArgsSize, 0U);
        EXPECT_TRUE(AllZero(data));
    }
}

TEST(DefaultControlInputRegisterBlock, ReadsAJobNameAsItWasWritten) {
    DefaultControlInputRegisterBlockInfo info;
    const auto data = Read(info, Command({0, 1, 5, 0}, std::string("shelf", 6), 67));
    EXPECT_EQ(data.commandId, ControlRegisterCommandData::LoadJob);
    EXPECT_EQ(Text(data), "shelf");
    EXPECT_TRUE(AllZero(data, 5));
    EXPECT_EQ(data.commandArgsSize, 0U);
}

TEST(DefaultControlInputRegisterBlock, ReadsAJobNameFromTheLowBytesOfWideRegisters) {
    for (const bool bigEndian : {true, false}) {
        SCOPED_TRACE(bigEndian);
        auto info = Type(2, bigEndian, 130);
        const Bytes head = bigEndian ? Bytes{0, 1, 0, 5} : Bytes{1, 0, 5, 0};
        const auto data = Read(info, Command(head, std::string("shelf", 6), 130, 2, bigEndian));
        EXPECT_EQ(data.commandId, ControlRegisterCommandData::LoadJob);
        EXPECT_EQ(Text(data), "shelf");
        EXPECT_TRUE(AllZero(data, 5));
    }
}

TEST(DefaultControlInputRegisterBlock, AJobNameIsCutTo62Characters) {
    std::string name(63, '\0');
    std::iota(name.begin(), name.end(), '0');
    DefaultControlInputRegisterBlockInfo info;
    auto data = Read(info, Command({0, 0, 5, 0}, name, 67));
    EXPECT_EQ(Text(data), name.substr(0, 62));
    EXPECT_TRUE(AllZero(data, 62));

    auto wide = Type(2, true, 130);
    data = Read(wide, Command({0, 0, 0, 5}, name, 130, 2));
    EXPECT_EQ(Text(data), name.substr(0, 62));
    EXPECT_TRUE(AllZero(data, 62));

    DefaultControlInputLargeRegisterBlockInfo large;
    data = Read(large, Command({0, 0, 5, 0}, name + name, 496));
    EXPECT_EQ(Text(data), name.substr(0, 62));
    EXPECT_TRUE(AllZero(data, 62));
}

TEST(DefaultControlInputRegisterBlock, AJobNameOf62CharactersIsWhole) {
    DefaultControlInputRegisterBlockInfo info;
    const std::string name(62, 'n');
    EXPECT_EQ(Text(Read(info, Command({0, 0, 5, 0}, name + std::string(1, '\0'), 67))), name);
}

TEST(DefaultControlInputRegisterBlock, ALoadWithoutAJobNameIsRefusedAndTold) {
    for (const unsigned char width : {1, 2}) {
        Vor::LogCapture log;
        VorGetText::GetInstance().ForgetCalls();
        auto info = Type(width, true, static_cast<unsigned short>(65 * width));
        const Bytes head = width == 1 ? Bytes{0, 0, 5, 0} : Bytes{0, 0, 0, 5};
        EXPECT_TEXTLESS_FAILURE(Read(info, Command(head, std::string(1, '\0'), 130, width)), yERROR_PARAMETER);
        ASSERT_EQ(log.Count(0x8000000100000002, NoJobText), 1U);
        EXPECT_EQ(log.Records().front().title, "Jobs");
        EXPECT_TRUE(WasTranslated("beApp.ctrl", NoJobText));
    }
}

TEST(DefaultControlInputRegisterBlock, TakesAllBytesOfUserData) {
    Bytes source(496);
    std::iota(source.begin(), source.end(), static_cast<unsigned char>(0));
    source[2] = 9;
    DefaultControlInputRegisterBlockInfo info;
    auto data = Read(info, Bytes(source.begin(), source.begin() + 67));
    EXPECT_EQ(data.requestWord, 0x0001);
    EXPECT_EQ(data.commandId, ControlRegisterCommandData::SetUserData);
    EXPECT_EQ(data.commandArgsSize, 63U);
    EXPECT_EQ(std::memcmp(data.commandArgs.data(), source.data() + 4, 63), 0);
    EXPECT_TRUE(AllZero(data, 63));

    DefaultControlInputLargeRegisterBlockInfo large;
    data = Read(large, source);
    EXPECT_EQ(data.commandArgsSize, 492U);
    EXPECT_EQ(std::memcmp(data.commandArgs.data(), source.data() + 4, 492), 0);
}

TEST(DefaultControlInputRegisterBlock, UserDataNeedRegistersOfOneByte) {
    auto info = Type(2, true, 130);
    EXPECT_FAILURE(Read(info, Command({0, 0, 0, 9}, "", 130)), yERROR_CONFLICT,
                   "This block only supports 1 byte per register.");
}

TEST(DefaultControlInputRegisterBlock, ARegisterWidthOfThreeIsRefused) {
    auto info = Type(3, true, 67);
    EXPECT_FAILURE(Read(info, Command({0, 0, 1, 0}, "", 67)), yERROR_PARAMETER, "Invalid bytes per register found (3)");
}

TEST(DefaultControlInputRegisterBlock, ASourceThatIsCutIsRefusedAtEveryLengthAndALongerOneTaken) {
    DefaultControlInputRegisterBlockInfo info;
    DefaultControlInputLargeRegisterBlockInfo large;
    const auto source = Command({0, 0, 1, 0}, "", 500);
    for (std::size_t size = 0; size < 67; ++size) {
        EXPECT_FAILURE(Read(info, Bytes(source.begin(), source.begin() + static_cast<std::ptrdiff_t>(size))),
                       yERROR_SIZE, SourceText);
    }
    for (std::size_t size = 0; size < 496; ++size) {
        EXPECT_FAILURE(Read(large, Bytes(source.begin(), source.begin() + static_cast<std::ptrdiff_t>(size))),
                       yERROR_SIZE, SourceText);
    }
    EXPECT_EQ(Read(info, Bytes(source.begin(), source.begin() + 67)).commandId, 1);
    EXPECT_EQ(Read(info, Bytes(source.begin(), source.begin() + 68)).commandId, 1);
    EXPECT_EQ(Read(large, Bytes(source.begin(), source.begin() + 496)).commandId, 1);
    EXPECT_EQ(Read(large, source).commandId, 1);
}

TEST(DefaultControlInputRegisterBlock, TheSourceIsMeasuredInBytesWhateverTheWidth) {
    auto info = Type(2, true, 67);
    EXPECT_EQ(Read(info, Command({0, 0, 0, 1}, "", 67)).commandId, 1);
    EXPECT_FAILURE(Read(info, Command({0, 0, 0, 1}, "", 66)), yERROR_SIZE, SourceText);
}

TEST(DefaultControlInputRegisterBlock, AJobNameInWideRegistersEndsWithTheSource) {
    auto info = Type(2, true, 67);
    const std::string name(62, 'n');
    for (std::size_t size = 67; size < 130; ++size) {
        auto source = Command({0, 0, 0, 5}, name, 130, 2);
        source.resize(size);
        source.shrink_to_fit();
        EXPECT_EQ(Text(Read(info, source)), name.substr(0, std::min<std::size_t>(62, (size - 4) / 2)));
    }
}

TEST(DefaultControlInputRegisterBlock, ATypeThatAsksForLessThanItsBlockReadsDoesntReadBeyondTheSource) {
    auto info = Type(1, true, 0);
    for (std::size_t size = 0; size < 4; ++size) {
        EXPECT_FAILURE(Read(info, Bytes(size, 1)), yERROR_SIZE, SourceText);
    }
    EXPECT_EQ(Read(info, Bytes{0, 0, 1, 0}).commandId, 1);
    EXPECT_FAILURE(Read(info, Command({0, 0, 9, 0}, "", 66)), yERROR_SIZE, SourceText);
    EXPECT_EQ(Read(info, Command({0, 0, 9, 0}, "", 67)).commandArgsSize, 63U);
    EXPECT_EQ(Text(Read(info, Bytes{0, 0, 5, 0, 'a', 'b'})), "ab");
    EXPECT_TEXTLESS_FAILURE(Read(info, Bytes{0, 0, 5, 0}), yERROR_PARAMETER);
}

TEST(DefaultControlInputRegisterBlock, ADestinationOfAnotherSizeIsRefusedAndUntouched) {
    DefaultControlInputRegisterBlockInfo info;
    const auto block = info.ConstructBlock(RegisterBlockParams());
    const auto source = Command({0, 0, 1, 0}, "", 67);
    auto destination = Canary(505);
    for (const std::size_t size : {0, 503, 505}) {
        EXPECT_FAILURE(block->Deserialize(destination.data(), size, source.data(), source.size()), yERROR_SIZE,
                       DestinationText);
    }
    EXPECT_EQ(destination, Canary(505));
    EXPECT_FAILURE(block->Deserialize(destination.data(), 0, source.data(), 66), yERROR_SIZE, SourceText);
}

TEST(DefaultControlInputRegisterBlock, AFailureToClearOrToCopyIsThrown) {
    Faults faults;
    DefaultControlInputRegisterBlockInfo info;
    faults.SetHere("yMemSet", -41);
    EXPECT_TEXTLESS_FAILURE(Read(info, Command({0, 0, 1, 0}, "", 67)), -41);
    faults.SetHere("yMemCopy", -42);
    EXPECT_TEXTLESS_FAILURE(Read(info, Command({0, 0, 9, 0}, "", 67)), -42);
}

TEST(DefaultControlInputRegisterBlock, UserDataBeyondTheRecordIsRefused) {
    class Huge : public DefaultControlInputRegisterBlock {
    public:
        Huge(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info)
            : DefaultControlInputRegisterBlock(params, info, 493) {}
    };
    auto info = Type<Huge>(1, true, 497);
    EXPECT_TEXTLESS_FAILURE(Read(info, Command({0, 0, 9, 0}, "", 497)), yERROR_PARAMETER);
}

TEST(DefaultControlInputRegisterBlock, ItReadsOnly) {
    DefaultControlInputRegisterBlockInfo info;
    EXPECT_TEXTLESS_FAILURE(info.ConstructBlock(RegisterBlockParams())->Serialize(nullptr, 0, nullptr, 0),
                            yERROR_UNIMPLEMENTED);
}
