#include "VorControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/ResultItems.h"
#include "Tests/Support/Translations.h"
#include "Tests/VorControl/ControlProtocol/TestBlocks.h"
#include "Vor/JsonSerializer.h"
#include "yApi/yFault.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace Tests;
using Input = ProtocolScanOutputRegisterBlock::DefaultScanOutputInputData;

namespace {

/// Records which writer is called with which arguments, and can fail in it.
class NotingBlock : public BareScanBlock {
public:
    using BareScanBlock::BareScanBlock;

    void SerializeMeasurementMsg(unsigned char* buffer, unsigned long offset, const Input* data) override {
        Note("measurement", buffer, offset, data);
    }
    void SerializeStampMsg(unsigned char* buffer, unsigned long offset, const Input* data) override {
        Note("stamp", buffer, offset, data);
    }
    void SerializeStringMsg(unsigned char* buffer, unsigned long offset, const Input* data) override {
        Note("string", buffer, offset, data);
    }
    void SerializeNullMsg(unsigned char* buffer, unsigned long offset) override {
        Note("null", buffer, offset, nullptr);
    }

    void Note(const char* writer, unsigned char* buffer, unsigned long offset, const Input* data) {
        calls.emplace_back(writer);
        this->buffer = buffer;
        this->offset = offset;
        if (data != nullptr) {
            item = data->item;
            outputMode = data->outputMode;
            const auto msgInfo = ResultItem_MsgInfo(item);
            origin = yMsgInfo_Origin(msgInfo);
            published = yMsgInfo_Published(msgInfo);
            if (yObject_Is(yMsgInfo_Message(msgInfo), yType_VvMeasureMsg)) {
                value = VvMeasureMsg_Value(yMsgInfo_Message(msgInfo));
            }
        }
        if (failing) {
            Vor::Throw(yERROR_STATE);
        }
    }

    bool failing = false;
    std::vector<std::string> calls;
    const unsigned char* buffer = nullptr;
    unsigned long offset = 99;
    void* item = nullptr;
    unsigned int outputMode = 99;
    double value = 0;
    std::uint64_t origin = 0;
    std::uint64_t published = 0;
};

struct Source : RegisterBlockParams {
    explicit Source(const std::string& source) { dataSource = source; }
};

class ProtocolScanOutputRegisterBlockTest : public testing::Test {
protected:
    void TearDown() override {
        yFault_Clear();
        item = Vor::Object();
        EXPECT_EQ(yObject_LiveCount(), liveObjects);
    }

    void Serialize(Vor::Object newItem, unsigned int outputMode = 0) {
        item = std::move(newItem);
        const Input input{item.Get(), outputMode};
        block.Serialize(buffer.data(), 4, &input, sizeof(input));
    }

    const std::int64_t liveObjects = yObject_LiveCount();
    ProtocolRegisterBlockInfo info{ScanTypeParams<NotingBlock>("kind", 4)};
    NotingBlock block{Source("source"), info};
    Bytes buffer = Canary(8);
    Vor::Object item;
};

} // namespace

TEST_F(ProtocolScanOutputRegisterBlockTest, DataSourceIsTheSixthField) {
    VorGetText::GetInstance().ForgetCalls();
    const NotingBlock other(Source("profile/max"), info);
    EXPECT_EQ(other.DataSource(), "profile/max");
    EXPECT_EQ(other.Members().back().Text(), "dataSource");
    EXPECT_EQ(Vor::Properties::JsonSerializer::Serialize(other)["dataSource"], "profile/max");
    const auto field = Vor::Properties::JsonSerializer::SerializeSchema(other)["properties"]["dataSource"];
    EXPECT_EQ(field["title"], "Scan Output Data Source");
    EXPECT_EQ(field["sortOrder"], 500);
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "Scan Output Data Source"));
}

TEST_F(ProtocolScanOutputRegisterBlockTest, DataSourceCanBeSet) {
    block.SetDataSource("other");
    EXPECT_EQ(block.DataSource(), "other");
}

TEST_F(ProtocolScanOutputRegisterBlockTest, TypeWithoutADataSourceIsRefused) {
    VorGetText::GetInstance().ForgetCalls();
    ProtocolRegisterBlockInfo plain(TypeParams<NotingBlock>("kind"));
    EXPECT_FAILURE(plain.ConstructBlock(Source("source")), yERROR_CONFLICT,
                   "Register block type kind must support scan output data sources");
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "Register block type %1$s must support scan output data sources"));
}

TEST_F(ProtocolScanOutputRegisterBlockTest, BaseWritersAreNotImplemented) {
    BareScanBlock bare(Source("source"), info);
    EXPECT_TEXTLESS_FAILURE(bare.SerializeMeasurementMsg(buffer.data(), 0, nullptr), yERROR_UNIMPLEMENTED);
    EXPECT_TEXTLESS_FAILURE(bare.SerializeStampMsg(buffer.data(), 0, nullptr), yERROR_UNIMPLEMENTED);
    EXPECT_TEXTLESS_FAILURE(bare.SerializeStringMsg(buffer.data(), 0, nullptr), yERROR_UNIMPLEMENTED);
    EXPECT_TEXTLESS_FAILURE(bare.SerializeNullMsg(buffer.data(), 0), yERROR_UNIMPLEMENTED);
}

TEST_F(ProtocolScanOutputRegisterBlockTest, SourceOfAnotherSizeIsRefusedFirst) {
    VorGetText::GetInstance().ForgetCalls();
    const Input input;
    constexpr const char* Text = "Insufficient source buffer size available for data serialization.";
    EXPECT_FAILURE(block.SerializeScanData(buffer.data(), 5, &input, 15), yERROR_SIZE, Text);
    EXPECT_FAILURE(block.SerializeScanData(buffer.data(), 4, &input, 17), yERROR_SIZE, Text);
    EXPECT_TRUE(WasTranslated("beApp.ctrl", Text));
    EXPECT_EQ(sizeof(Input), 16U);
}

TEST_F(ProtocolScanOutputRegisterBlockTest, DestinationMustHaveExactlyTheSizeOfTheBlock) {
    VorGetText::GetInstance().ForgetCalls();
    const Input input;
    constexpr const char* Text = "Insufficient destination buffer size available for data serialization output.";
    EXPECT_FAILURE(block.SerializeScanData(buffer.data(), 5, &input, 16), yERROR_SIZE, Text);
    EXPECT_FAILURE(block.SerializeScanData(buffer.data(), 3, &input, 16), yERROR_SIZE, Text);
    EXPECT_FAILURE(block.SerializeScanData(buffer.data(), 65540, &input, 16), yERROR_SIZE, Text);
    EXPECT_TRUE(WasTranslated("beApp.ctrl", Text));
}

TEST_F(ProtocolScanOutputRegisterBlockTest, TypeCodeChoosesTheWriter) {
    Serialize(MeasureItem(1, 1));
    Serialize(Item(20, Text("text")));
    Serialize(Item(11, Stamp(yStamp())), 1);
    EXPECT_EQ(block.calls, (std::vector<std::string>{"measurement", "string", "stamp"}));
    EXPECT_EQ(block.item, item.Get());
    EXPECT_EQ(block.outputMode, 1U);
    EXPECT_EQ(block.buffer, buffer.data());
    EXPECT_EQ(block.offset, 0U);
}

TEST_F(ProtocolScanOutputRegisterBlockTest, OffsetIsHandedToTheWriter) {
    const auto measurement = MeasureItem(1, 1);
    const Input input{measurement.Get(), 0};
    block.SerializeData(buffer.data(), 3, &input);
    EXPECT_EQ(block.offset, 3U);
}

TEST_F(ProtocolScanOutputRegisterBlockTest, AnotherTypeCodeIsUnsupported) {
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_FAILURE(Serialize(Item(12, Measure(1, 1))), yERROR_UNIMPLEMENTED, "Unsupported message type 12");
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "Unsupported message type %1$u"));
    EXPECT_TRUE(block.calls.empty());
}

TEST_F(ProtocolScanOutputRegisterBlockTest, NullMessageGoesBeforeTheTypeCode) {
    Serialize(Item(19, Null()));
    Serialize(Item(12, Null()));
    EXPECT_EQ(block.calls, (std::vector<std::string>{"null", "null"}));
}

TEST_F(ProtocolScanOutputRegisterBlockTest, MissingMessageIsNoNullMessage) {
    Serialize(Item(19, Vor::Object()));
    EXPECT_EQ(block.calls, (std::vector<std::string>{"measurement"}));
    EXPECT_FALSE(ProtocolScanOutputRegisterBlock::IsMsgSetNullMsg(nullptr));
}

TEST_F(ProtocolScanOutputRegisterBlockTest, NullMessagesAreTold) {
    const auto nullMsg = Null();
    const auto measure = Measure(1, 1);
    EXPECT_TRUE(ProtocolScanOutputRegisterBlock::IsMsgSetNullMsg(nullMsg.Get()));
    EXPECT_FALSE(ProtocolScanOutputRegisterBlock::IsMsgSetNullMsg(measure.Get()));
    EXPECT_TRUE(ProtocolScanOutputRegisterBlock::IsResultItemNullMsg(Item(19, Null()).Get()));
    EXPECT_FALSE(ProtocolScanOutputRegisterBlock::IsResultItemNullMsg(MeasureItem(1, 1).Get()));
}

TEST_F(ProtocolScanOutputRegisterBlockTest, OnlyTheFirstElementOfAnArrayIsWritten) {
    Serialize(Item(19, ArrayOf(Measure(3, 1), Measure(4, 1), Measure(5, 1)), 71, 72), 5);
    EXPECT_EQ(block.calls, (std::vector<std::string>{"measurement"}));
    EXPECT_EQ(block.value, 3);
    EXPECT_NE(block.item, item.Get());
    EXPECT_EQ(block.origin, 71U);
    EXPECT_EQ(block.published, 72U);
    EXPECT_EQ(block.outputMode, 5U);
}

TEST_F(ProtocolScanOutputRegisterBlockTest, NullElementOfAnArrayIsANullMessage) {
    Serialize(Item(19, ArrayOf(Null(), Measure(4, 1))));
    EXPECT_EQ(block.calls, (std::vector<std::string>{"null"}));
}

TEST_F(ProtocolScanOutputRegisterBlockTest, EmptyArrayIsRefused) {
    EXPECT_TEXTLESS_FAILURE(Serialize(Item(19, ArrayOf())), yERROR_SIZE);
    EXPECT_TRUE(block.calls.empty());
}

TEST_F(ProtocolScanOutputRegisterBlockTest, ItemOfAnArrayElementIsFreedWhenTheWriterThrows) {
    block.failing = true;
    EXPECT_TEXTLESS_FAILURE(Serialize(Item(19, ArrayOf(Measure(3, 1)))), yERROR_STATE);
    EXPECT_EQ(block.calls.size(), 1U);
}

TEST_F(ProtocolScanOutputRegisterBlockTest, FailureToBuildTheElementsItemIsThrown) {
    const auto array = Item(19, ArrayOf(Measure(3, 1)));
    for (const char* step : {"yMsgInfo_Construct", "ResultItem_Construct"}) {
        yFault_Set(step, -1234);
        EXPECT_TEXTLESS_FAILURE(Serialize(array), -1234);
        yFault_Clear();
    }
    EXPECT_TRUE(block.calls.empty());
}

TEST_F(ProtocolScanOutputRegisterBlockTest, CallersRecordStaysAsItIs) {
    const auto array = Item(19, ArrayOf(Measure(3, 1)));
    const Input input{array.Get(), 6};
    block.Serialize(buffer.data(), 4, &input, sizeof(input));
    EXPECT_EQ(input.item, array.Get());
    EXPECT_EQ(input.outputMode, 6U);
}
