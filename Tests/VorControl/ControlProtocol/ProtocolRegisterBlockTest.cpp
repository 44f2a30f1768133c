#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Translations.h"
#include "Tests/VorControl/ControlProtocol/TestBlocks.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Logging.h"

#include <limits>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace Tests;
using nlohmann::json;

namespace {

/// One block of a type with the given register width and byte order, in a plain address space.
struct Fixture {
    explicit Fixture(RegisterBlockInfoParams infoParams, bool isGlobal = false, unsigned short outputId = 0,
                     unsigned short registerCount = 65535)
        : info(std::move(infoParams)) {
        info.SetIsGlobalAddressSpaceUsed(isGlobal);
        params.outputId = outputId;
        params.registerCount = registerCount;
        block = std::make_unique<OpenBlock>(params, info);
    }
    Fixture(unsigned char width, bool bigEndian)
        : Fixture([&] {
            auto typeParams = TypeParams("type", 8);
            typeParams.bytesPerRegister = width;
            typeParams.isProtocolBigEndian = bigEndian;
            return typeParams;
        }()) {}

    ProtocolRegisterBlockInfo info;
    RegisterBlockParams params;
    std::unique_ptr<OpenBlock> block;
};

Fixture Global(unsigned short outputId, unsigned short registerCount) {
    auto params = TypeParams("type", 8);
    params.configurableRegisterCount = true;
    return Fixture(std::move(params), true, outputId, registerCount);
}

template <class T>
Bytes Value(unsigned char width, bool bigEndian, T value, bool isSigned, std::size_t size) {
    const Fixture fixture(width, bigEndian);
    auto buffer = Canary(size);
    fixture.block->SerializeValue(buffer.data(), 1, value, isSigned);
    return buffer;
}

Bytes Invalid(unsigned char width, bool bigEndian, unsigned long long numOfBytes, bool isSigned, std::size_t size) {
    const Fixture fixture(width, bigEndian);
    auto buffer = Canary(size);
    fixture.block->SerializeInvalidValue(buffer.data(), 1, numOfBytes, isSigned);
    return buffer;
}

constexpr const char* WidthText = "Invalid bytes per register found (3)";
constexpr const char* WidthFormat = "Invalid bytes per register found (%1$u)";

} // namespace

TEST(ProtocolRegisterBlock, DocumentHasFiveFieldsInOrder) {
    auto typeParams = TypeParams("kind", 8);
    typeParams.configurableRegisterCount = true;
    ProtocolRegisterBlockInfo info(std::move(typeParams));
    RegisterBlockParams params;
    params.displayName = "shown";
    params.outputId = 7;
    params.registerCount = 3;
    const OpenBlock block(params, info);

    EXPECT_EQ(
        Vor::Properties::JsonSerializer::Serialize(block),
        (json{{"version", "1.2"}, {"type", "kind"}, {"displayName", "shown"}, {"registerCount", 3}, {"outputId", 7}}));
    std::vector<std::string> names;
    for (const auto& member : block.Members()) {
        names.push_back(member.Text());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"version", "type", "displayName", "registerCount", "outputId"}));

    const auto fields = Vor::Properties::JsonSerializer::SerializeSchema(block).at("properties");
    const auto expect = [&](const char* key, const char* title, int order, const json& readOnly) {
        EXPECT_EQ(fields.at(key).at("title"), title);
        EXPECT_EQ(fields.at(key).at("sortOrder"), order);
        EXPECT_EQ(fields.at(key).value("readOnly", json()), readOnly) << key;
    };
    expect("version", "Version", 0, true);
    expect("type", "Type", 100, true);
    expect("displayName", "Display Name", 200, json());
    expect("registerCount", "Number of Registers", 300, false);
    expect("outputId", "Output Id", 400, false);
}

TEST(ProtocolRegisterBlock, TitlesPassThroughTheCatalogue) {
    VorGetText::GetInstance().ForgetCalls();
    const Fixture fixture(1, true);
    for (const char* title : {"Version", "Type", "Display Name", "Number of Registers", "Output Id"}) {
        EXPECT_TRUE(WasTranslated("beApp.ctrl", title)) << title;
    }
}

TEST(ProtocolRegisterBlock, CountOfAFixedTypeIsReadOnlyAndTheDefault) {
    const Fixture fixture(TypeParams("type", 8), false, 0, 3);
    EXPECT_EQ(fixture.block->RegisterCount(), 8);
    EXPECT_EQ(
        Vor::Properties::JsonSerializer::SerializeSchema(*fixture.block)["properties"]["registerCount"]["readOnly"],
        true);
    EXPECT_FALSE(fixture.block->IsRegisterCountConfigurable());
}

TEST(ProtocolRegisterBlock, ConfigurableCountTakesTheRequestOrTheDefault) {
    EXPECT_EQ(Global(0, 3).block->RegisterCount(), 3);
    EXPECT_EQ(Global(0, 0).block->RegisterCount(), 0);
    EXPECT_EQ(Global(0, 65535).block->RegisterCount(), 8);
}

TEST(ProtocolRegisterBlock, GlobalAddressSpaceNeedsAnOutputId) {
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_FAILURE(Global(65535, 1), yERROR_PARAMETER, "An output id must be specified.");
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "An output id must be specified."));
    EXPECT_EQ(Fixture(TypeParams("type"), false, 65535).block->OutputId(), 65535);
}

TEST(ProtocolRegisterBlock, TypeFactsAreReadThroughTheInformationAtTheMomentOfUse) {
    auto typeParams = TypeParams("kind", 8);
    typeParams.category = RegisterBlockCategory::Scanner;
    typeParams.bytesPerRegister = 2;
    Fixture fixture(std::move(typeParams));
    const auto& block = *fixture.block;
    EXPECT_EQ(block.Type(), "kind");
    EXPECT_EQ(block.Category(), RegisterBlockCategory::Scanner);
    EXPECT_EQ(block.BytesPerRegister(), 2);
    EXPECT_FALSE(block.HasDataSource());
    EXPECT_TRUE(block.IsProtocolBigEndian());

    auto buffer = Canary(4);
    block.SerializeValue(buffer.data(), 0, 0x11223344, true);
    EXPECT_EQ(buffer, (Bytes{0x22, 0x11, 0x44, 0x33}));
    fixture.info.SetIsProtocolBigEndian(false);
    EXPECT_FALSE(block.IsProtocolBigEndian());
    block.SerializeValue(buffer.data(), 0, 0x11223344, true);
    EXPECT_EQ(buffer, (Bytes{0x44, 0x33, 0x22, 0x11}));
}

TEST(ProtocolRegisterBlock, InstancesAreCountedOnTheInformation) {
    auto typeParams = TypeParams("type");
    typeParams.minInstanceCount = 1;
    typeParams.maxInstanceCount = 2;
    const Fixture fixture(std::move(typeParams));
    fixture.block->IncrementInstanceCount();
    EXPECT_TRUE(fixture.info.AtMinInstance());
    EXPECT_TRUE(fixture.block->AtMinInstance());
    fixture.block->IncrementInstanceCount();
    EXPECT_TRUE(fixture.block->AtMaxInstance());
    fixture.block->DecrementInstanceCount();
    EXPECT_FALSE(fixture.block->AtMaxInstance());
}

TEST(ProtocolRegisterBlock, SettersStoreThroughTheValue) {
    const Fixture fixture(1, true);
    auto& block = *fixture.block;
    block.ResetChangedParameters();
    std::vector<Vor::Properties::Node*> changed;
    block.SetDisplayName("name");
    block.SetOutputId(5);
    block.SetRegisterCount(6);
    block.RetrieveChangedParameters(changed);
    EXPECT_EQ(changed.size(), 3U);
    EXPECT_EQ(block.DisplayName(), "name");
    EXPECT_EQ(block.OutputId(), 5);
    EXPECT_EQ(block.RegisterCount(), 6);
    block.SetDisplayName("name");
    block.SetOutputId(5);
    block.SetRegisterCount(6);
    changed.clear();
    block.RetrieveChangedParameters(changed);
    EXPECT_TRUE(changed.empty());
}

TEST(ProtocolRegisterBlock, GettersFollowAnEnabledActualValue) {
    const Fixture fixture(1, true);
    auto& id = dynamic_cast<Vor::Params::Value<unsigned short>&>(fixture.block->At("outputId"));
    id.EnableActual(true);
    id.SetActual(77);
    EXPECT_EQ(fixture.block->OutputId(), 77);
}

TEST(ProtocolRegisterBlock, OutputIdIsConfigurableUnlessItsSchemaIsReadOnly) {
    const Fixture fixture(1, true);
    EXPECT_TRUE(fixture.block->IsOutputIdConfigurable());
    dynamic_cast<Vor::Params::Value<unsigned short>&>(fixture.block->At("outputId")).SetReadOnly(true);
    EXPECT_FALSE(fixture.block->IsOutputIdConfigurable());
}

TEST(ProtocolRegisterBlock, BaseOperationsAreNotImplemented) {
    const Fixture fixture(TypeParams("kind"));
    auto& block = *fixture.block;
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_TEXTLESS_FAILURE(block.Serialize(nullptr, 0, nullptr, 0), yERROR_UNIMPLEMENTED);
    EXPECT_TEXTLESS_FAILURE(block.Deserialize(nullptr, 0, nullptr, 0), yERROR_UNIMPLEMENTED);
    EXPECT_FAILURE(block.SetDataSource("x"), yERROR_UNIMPLEMENTED,
                   "Register block type kind does not support a data source");
    EXPECT_FAILURE(block.DataSource(), yERROR_UNIMPLEMENTED, "Register block type kind does not have a data source");
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "Register block type %1$s does not support a data source"));
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "Register block type %1$s does not have a data source"));
}

TEST(ProtocolRegisterBlock, EndAddressIsInclusiveInAGlobalAddressSpace) {
    EXPECT_EQ(Global(100, 4).block->EndAddress(), 103);
    EXPECT_EQ(Global(100, 0).block->EndAddress(), 99);
    EXPECT_EQ(Global(0, 0).block->EndAddress(), 65535);
    EXPECT_EQ(Global(65534, 4).block->EndAddress(), 1);
}

TEST(ProtocolRegisterBlock, EndAddressIsTheIdWithoutAGlobalAddressSpace) {
    EXPECT_EQ(Fixture(TypeParams("type", 4), false, 100).block->EndAddress(), 100);
    EXPECT_EQ(Fixture(TypeParams("type", 0), false, 0).block->EndAddress(), 0);
}

TEST(ProtocolRegisterBlock, OutputSizeIsCutToSixteenBits) {
    auto typeParams = TypeParams("type", 40000);
    typeParams.bytesPerRegister = 2;
    EXPECT_EQ(Fixture(typeParams).block->SerializedOutputSize(), 14464);
    EXPECT_EQ(Fixture(TypeParams("type", 7)).block->SerializedOutputSize(), 7);
}

TEST(ProtocolRegisterBlock, BigEndianValuesRunFromTheMostSignificantRegister) {
    EXPECT_EQ(Value<unsigned short>(1, true, 0x1122, false, 4), (Bytes{0xA5, 0x11, 0x22, 0xA5}));
    EXPECT_EQ(Value<short>(2, true, 0x1122, true, 4), (Bytes{0xA5, 0x22, 0x11, 0xA5}));
    EXPECT_EQ(Value<int>(1, true, 0x11223344, true, 6), (Bytes{0xA5, 0x11, 0x22, 0x33, 0x44, 0xA5}));
    EXPECT_EQ(Value<unsigned int>(2, true, 0x11223344, false, 6), (Bytes{0xA5, 0x22, 0x11, 0x44, 0x33, 0xA5}));
    EXPECT_EQ(Value<unsigned long long>(1, true, 0x1122334455667788, false, 10),
              (Bytes{0xA5, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0xA5}));
    EXPECT_EQ(Value<long long>(2, true, 0x1122334455667788, true, 10),
              (Bytes{0xA5, 0x22, 0x11, 0x44, 0x33, 0x66, 0x55, 0x88, 0x77, 0xA5}));
    EXPECT_EQ(Value<long>(2, true, -2, true, 10), (Bytes{0xA5, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0xA5}));
}

TEST(ProtocolRegisterBlock, LittleEndianValuesIgnoreTheRegisterWidth) {
    for (const unsigned char width : {1, 2}) {
        EXPECT_EQ(Value<unsigned short>(width, false, 0x1122, false, 4), (Bytes{0xA5, 0x22, 0x11, 0xA5}));
        EXPECT_EQ(Value<int>(width, false, 0x11223344, true, 6), (Bytes{0xA5, 0x44, 0x33, 0x22, 0x11, 0xA5}));
        EXPECT_EQ(Value<unsigned long long>(width, false, 0x1122334455667788, false, 10),
                  (Bytes{0xA5, 0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11, 0xA5}));
    }
}

TEST(ProtocolRegisterBlock, OneByteFillsARegisterOfTwo) {
    EXPECT_EQ(Value<unsigned char>(1, true, 0x12, false, 3), (Bytes{0xA5, 0x12, 0xA5}));
    EXPECT_EQ(Value<unsigned char>(2, true, 0x12, false, 4), (Bytes{0xA5, 0x12, 0x00, 0xA5}));
    EXPECT_EQ(Value<unsigned char>(1, false, 0x12, false, 3), (Bytes{0xA5, 0x12, 0xA5}));
    EXPECT_EQ(Value<unsigned char>(2, false, 0x12, false, 4), (Bytes{0xA5, 0x12, 0x00, 0xA5}));
    EXPECT_EQ(Value<signed char>(2, true, -1, true, 4), (Bytes{0xA5, 0xFF, 0x00, 0xA5}));
}

TEST(ProtocolRegisterBlock, SignChangesNoByte) {
    for (const bool bigEndian : {false, true}) {
        for (const unsigned char width : {1, 2}) {
            EXPECT_EQ(Value<int>(width, bigEndian, -3, true, 6), Value<int>(width, bigEndian, -3, false, 6));
            EXPECT_EQ(Value<unsigned char>(width, bigEndian, 0xFE, true, 4),
                      Value<unsigned char>(width, bigEndian, 0xFE, false, 4));
        }
    }
}

TEST(ProtocolRegisterBlock, PrimitivesOfOneByteOrderDontAskForTheProtocols) {
    const Fixture fixture(2, false);
    auto buffer = Canary(4);
    fixture.block->Serialize_BE(buffer.data(), 0, 0x11223344);
    EXPECT_EQ(buffer, (Bytes{0x22, 0x11, 0x44, 0x33}));
    const Fixture other(2, true);
    other.block->Serialize_LE(buffer.data(), 0, 0x11223344);
    EXPECT_EQ(buffer, (Bytes{0x44, 0x33, 0x22, 0x11}));
}

TEST(ProtocolRegisterBlock, ValueOfAnotherSizeIsLoggedAndNotWritten) {
    const Vor::LogCapture log;
    EXPECT_EQ(Value<long double>(1, true, 1, true, 4), Canary(4));
    ASSERT_EQ(log.Records().size(), 1U);
    EXPECT_EQ(log.Records()[0].level, 0x8000000000000001);
    EXPECT_EQ(log.Records()[0].title, "SerializeValue");
    EXPECT_EQ(log.Records()[0].format, "numOfBytes (%u) specified is not valid");
    EXPECT_EQ(log.Records()[0].text, "numOfBytes (16) specified is not valid");
}

TEST(ProtocolRegisterBlock, StringIsCutOrFollowedByZeros) {
    for (const bool bigEndian : {false, true}) {
        const Fixture fixture(2, bigEndian);
        const auto field = [&](const std::string& text, unsigned long long length) {
            auto buffer = Canary(length + 2);
            fixture.block->SerializeString(buffer.data(), 1, text.data(), text.size(), length);
            return buffer;
        };
        EXPECT_EQ(field("abc", 5), (Bytes{0xA5, 'a', 'b', 'c', 0, 0, 0xA5}));
        EXPECT_EQ(field("abcd", 4), (Bytes{0xA5, 'a', 'b', 'c', 'd', 0xA5}));
        EXPECT_EQ(field("abcdef", 4), (Bytes{0xA5, 'a', 'b', 'c', 'd', 0xA5}));
        EXPECT_EQ(field("", 3), (Bytes{0xA5, 0, 0, 0, 0xA5}));
        EXPECT_EQ(field("abc", 0), (Bytes{0xA5, 0xA5}));
    }
}

TEST(ProtocolRegisterBlock, InvalidValueOfOneByte) {
    EXPECT_EQ(Invalid(1, true, 1, true, 3), (Bytes{0xA5, 0x80, 0xA5}));
    EXPECT_EQ(Invalid(1, true, 1, false, 3), (Bytes{0xA5, 0xFF, 0xA5}));
    EXPECT_EQ(Invalid(1, false, 1, true, 3), (Bytes{0xA5, 0x80, 0xA5}));
    EXPECT_EQ(Invalid(2, false, 1, true, 3), (Bytes{0xA5, 0x80, 0xA5}));
    EXPECT_EQ(Invalid(2, false, 1, false, 3), (Bytes{0xA5, 0xFF, 0xA5}));
}

TEST(ProtocolRegisterBlock, InvalidValueOfOneByteInBigEndianRegistersOfTwoIsNotWritten) {
    EXPECT_EQ(Invalid(2, true, 1, true, 4), Canary(4));
    EXPECT_EQ(Invalid(2, true, 1, false, 4), Canary(4));
}

TEST(ProtocolRegisterBlock, InvalidValueOfSeveralBytes) {
    EXPECT_EQ(Invalid(1, true, 2, true, 4), (Bytes{0xA5, 0x80, 0x00, 0xA5}));
    EXPECT_EQ(Invalid(2, true, 2, true, 4), (Bytes{0xA5, 0x00, 0x80, 0xA5}));
    EXPECT_EQ(Invalid(1, true, 4, true, 6), (Bytes{0xA5, 0x80, 0x00, 0x00, 0x00, 0xA5}));
    EXPECT_EQ(Invalid(2, true, 4, true, 6), (Bytes{0xA5, 0x00, 0x80, 0x00, 0x00, 0xA5}));
    EXPECT_EQ(Invalid(1, true, 8, true, 10), (Bytes{0xA5, 0x80, 0, 0, 0, 0, 0, 0, 0, 0xA5}));
    EXPECT_EQ(Invalid(2, true, 8, true, 10), (Bytes{0xA5, 0, 0x80, 0, 0, 0, 0, 0, 0, 0xA5}));
    for (const unsigned char width : {1, 2}) {
        EXPECT_EQ(Invalid(width, false, 2, true, 4), (Bytes{0xA5, 0x00, 0x80, 0xA5}));
        EXPECT_EQ(Invalid(width, false, 4, true, 6), (Bytes{0xA5, 0x00, 0x00, 0x00, 0x80, 0xA5}));
        EXPECT_EQ(Invalid(width, false, 8, true, 10), (Bytes{0xA5, 0, 0, 0, 0, 0, 0, 0, 0x80, 0xA5}));
        for (const bool bigEndian : {false, true}) {
            EXPECT_EQ(Invalid(width, bigEndian, 2, false, 4), (Bytes{0xA5, 0xFF, 0xFF, 0xA5}));
            EXPECT_EQ(Invalid(width, bigEndian, 4, false, 6), (Bytes{0xA5, 0xFF, 0xFF, 0xFF, 0xFF, 0xA5}));
            EXPECT_EQ(Invalid(width, bigEndian, 8, false, 10),
                      (Bytes{0xA5, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xA5}));
        }
    }
}

TEST(ProtocolRegisterBlock, InvalidValueOfAnotherSizeIsLoggedWithTheRegisterWidth) {
    for (const unsigned long long size : {0, 3, 16}) {
        const Vor::LogCapture log;
        EXPECT_EQ(Invalid(2, true, size, true, 4), Canary(4));
        ASSERT_EQ(log.Records().size(), 1U);
        EXPECT_EQ(log.Records()[0].level, 0x8000000000000001);
        EXPECT_EQ(log.Records()[0].title, "SerializeInvalidValue");
        EXPECT_EQ(log.Records()[0].format, "BytesPerRegister (%u) specified is not valid");
        EXPECT_EQ(log.Records()[0].text, "BytesPerRegister (2) specified is not valid");
    }
}

TEST(ProtocolRegisterBlock, SixteenBitsAreReadInPlainByteOrder) {
    const Bytes source{0x99, 0x11, 0x22};
    for (const unsigned char width : {1, 2}) {
        unsigned short value = 0;
        Fixture(width, true).block->Deserialize16(value, source.data(), 1);
        EXPECT_EQ(value, 0x1122);
        Fixture(width, false).block->Deserialize16(value, source.data(), 1);
        EXPECT_EQ(value, 0x2211);
        Fixture(width, false).block->Deserialize16_BE(value, source.data(), 1);
        EXPECT_EQ(value, 0x1122);
        Fixture(width, true).block->Deserialize16_LE(value, source.data(), 1);
        EXPECT_EQ(value, 0x2211);
    }
}

TEST(ProtocolRegisterBlock, EachPrimitiveRefusesARegisterOfThreeBytes) {
    const Fixture fixture(3, true);
    const auto& block = *fixture.block;
    Bytes buffer = Canary(8);
    unsigned short value = 0;
    const auto expect = [&](const char* function, const char* catalogue, const auto& call) {
        VorGetText::GetInstance().ForgetCalls();
        const auto failure = FailureOf(call);
        ASSERT_TRUE(failure.has_value()) << function;
        EXPECT_EQ(failure->status, yERROR_PARAMETER);
        EXPECT_EQ(failure->text, WidthText);
        EXPECT_EQ(failure->function, function);
        EXPECT_TRUE(WasTranslated(catalogue, WidthFormat)) << function;
        EXPECT_EQ(buffer, Canary(8));
    };
    expect("SerializeValue", "beApp.ctrl", [&] { block.SerializeValue(buffer.data(), 0, 1, true); });
    expect("Serialize_BE", "beApp.ctrl", [&] { block.Serialize_BE(buffer.data(), 0, 1); });
    expect("Serialize_LE", "beApp.ctrl", [&] { block.Serialize_LE(buffer.data(), 0, 1); });
    expect("SerializeString", "control", [&] { block.SerializeString(buffer.data(), 0, "a", 1, 2); });
    expect("SerializeInvalidValue", "beApp.ctrl", [&] { block.SerializeInvalidValue(buffer.data(), 0, 4, true); });
    expect("Deserialize16", "beApp.ctrl", [&] { block.Deserialize16(value, buffer.data(), 0); });
    expect("Deserialize16_BE", "beApp.ctrl", [&] { block.Deserialize16_BE(value, buffer.data(), 0); });
    expect("Deserialize16_LE", "beApp.ctrl", [&] { block.Deserialize16_LE(value, buffer.data(), 0); });
    EXPECT_THROW(Fixture(0, true).block->Serialize_LE(buffer.data(), 0, 1), Vor::Exception);
}

TEST(ProtocolRegisterBlock, ConversionGoesThroughTheMessageLibrary) {
    int result = 0;
    int first = 7;
    int second = 7;
    OpenBlock::Convert64fTo32s(1.5, 1000.0, result, first, second);
    EXPECT_EQ(result, 1500);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 0);
    OpenBlock::Convert64fTo32s(std::numeric_limits<double>::quiet_NaN(), 1000.0, result, first, second);
    EXPECT_TRUE(first != 0 || second != 0);
}

TEST(ProtocolRegisterBlock, JobFileNameIsCompleted) {
    const auto complete = [](const char* name, std::size_t capacity = 32) {
        char buffer[32] = "";
        std::snprintf(buffer, sizeof(buffer), "%s", name);
        OpenBlock::FormatFullJobFileName(buffer, capacity);
        return std::string(buffer);
    };
    EXPECT_EQ(complete("job.vrjob"), "job.vrjob");
    EXPECT_EQ(complete("job"), "job.vrjob");
    EXPECT_EQ(complete("a.vrjob.b"), "a.vrjob.b.vrjob");
    EXPECT_EQ(complete("a.vrjob.b.vrjob"), "a.vrjob.b.vrjob.vrjob");
    EXPECT_EQ(complete(".vrjob"), ".vrjob");
    EXPECT_EQ(complete("job", 10), "job.vrjob");
    EXPECT_TEXTLESS_FAILURE(complete(""), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(complete("job", 9), yERROR_SIZE);
}
