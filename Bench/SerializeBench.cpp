// The costs of writing a result item to the bytes of a block: each default type, through its virtual Serialize, against
// code written by hand for that layout, which reads the item through the same calls of the platform.

#include "Bench/Measure.h"
#include "Vor/Exception.h"
#include "VorApi/Object.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueAndDecisionRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStringRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "VorMsg/VvDataMsg.h"
#include "VorMsg/VvMeasureMsg.h"
#include "VorMsg/VvNullMsg.h"
#include "VorMsg/VvStampMsg.h"
#include "VorMsg/VvStringMsg.h"

#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using namespace VorControl::ControlProtocol;

namespace {

constexpr std::size_t ItemCount = 64;
constexpr int Rounds = 4000;
constexpr int Pairs = 15;
constexpr double Calls = static_cast<double>(ItemCount) * Rounds;

using Items = std::vector<Vor::Object>;
using Buffer = std::array<unsigned char, 64>;

Vor::Object Item(unsigned short type, Vor::Object msg) {
    Vor::Object msgInfo;
    Vor::ThrowIfFailed(yMsgInfo_Construct(msgInfo.Out(), msg.Get(), 0, 0));
    msg.Release();
    Vor::Object resultInfo;
    Vor::ThrowIfFailed(ResultInfo_Construct(resultInfo.Out(), type, "source"));
    Vor::Object item;
    Vor::ThrowIfFailed(ResultItem_Construct(item.Out(), msgInfo.Get(), resultInfo.Get()));
    msgInfo.Release();
    resultInfo.Release();
    return item;
}

template <class Make>
Items MakeItems(unsigned short type, Make&& make) {
    Items items;
    for (std::size_t i = 0; i < ItemCount; ++i) {
        Vor::Object msg;
        Vor::ThrowIfFailed(make(msg.Out(), i));
        items.push_back(Item(type, std::move(msg)));
    }
    return items;
}

template <class T>
void StoreBigEndian(unsigned char* out, T value) {
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        out[i] = static_cast<unsigned char>(value >> 8 * (sizeof(T) - 1 - i));
    }
}

/// The message of an item of this type; null for a null message.
void* MessageOf(ResultItem item, std::uint16_t type) {
    void* const msg = yMsgInfo_Message(ResultItem_MsgInfo(item));
    if (yObject_Is(msg, yType_VvNullMsg)) {
        return nullptr;
    }
    if (ResultInfo_Type(ResultItem_ResultInfo(item)) != type) {
        Vor::Throw(yERROR_UNIMPLEMENTED);
    }
    return msg;
}

bool Thousandths(void* msg, int& result) {
    int first = 0;
    int second = 0;
    result = VvMeasureMsg_Convert64fTo32s(VvMeasureMsg_Value(msg), 1000.0, first, second);
    return first == 0 && second == 0;
}

[[gnu::noinline]] void WriteValue(unsigned char* out, ResultItem item) {
    void* const msg = MessageOf(item, ResultInfo_TypeMeasurement);
    int value = 0;
    StoreBigEndian(out, msg != nullptr && Thousandths(msg, value) ? static_cast<unsigned int>(value) : 0x80000000U);
}

[[gnu::noinline]] void WriteDecision(unsigned char* out, ResultItem item) {
    void* const msg = MessageOf(item, ResultInfo_TypeMeasurement);
    out[0] = msg != nullptr ? VvMeasureMsg_Decision(msg) : 2;
}

[[gnu::noinline]] void WriteMeasurement(unsigned char* out, ResultItem item) {
    void* const msg = MessageOf(item, ResultInfo_TypeMeasurement);
    int value = 0;
    if (msg != nullptr && Thousandths(msg, value)) {
        StoreBigEndian(out, static_cast<unsigned int>(value));
        out[4] = VvMeasureMsg_Decision(msg);
    } else {
        StoreBigEndian(out, 0x80000000U);
        out[4] = 2;
    }
}

[[gnu::noinline]] void WriteStamp(unsigned char* out, ResultItem item) {
    void* const msg = MessageOf(item, ResultInfo_TypeStamp);
    const yStamp* const stamp = VvMsg_StampAt(msg, 0);
    const bool isData = yObject_Is(msg, yType_VvDataMsg);
    StoreBigEndian(out, static_cast<std::uint64_t>(stamp->encoderAtZ));
    StoreBigEndian(out + 8, static_cast<std::uint64_t>(isData ? VvDataMsg_Encoder(msg) : stamp->encoder));
    StoreBigEndian(out + 16, isData ? VvDataMsg_Time(msg) : stamp->time);
    StoreBigEndian(out + 24, stamp->frameIndex);
    out[32] = static_cast<unsigned char>((stamp->inputs | stamp->inputs >> 4) & 3);
    out[33] = out[34] = out[35] = 0;
}

[[gnu::noinline]] void WriteString(unsigned char* out, ResultItem item) {
    void* const msg = MessageOf(item, ResultInfo_TypeString);
    const std::size_t length = msg != nullptr ? std::min<std::size_t>(VvStringMsg_Length(msg), 8) : 0;
    std::memset(out, 0, 8);
    if (length != 0) {
        std::memcpy(out, VvStringMsg_Value(msg), length);
    }
}

[[gnu::noinline]] void StoreOnly(unsigned char* out, const unsigned char* bytes) {
    std::memcpy(out, bytes, 5);
}

template <class Write>
double Seconds(const Items& items, Write&& write) {
    const double start = Bench::ProcessCpuSeconds();
    for (int round = 0; round < Rounds; ++round) {
        for (const auto& item : items) {
            write(item.Get());
        }
    }
    return Bench::ProcessCpuSeconds() - start;
}

class Bencher {
public:
    explicit Bencher(Bench::Report& report)
        : report(report) {}

    void Run(const std::string& label, ProtocolRegisterBlockInfo& info, const Items& items,
             void (*byHand)(unsigned char*, ResultItem), std::optional<double> limit = std::nullopt) {
        RegisterBlockParams params;
        params.dataSource = "source";
        const auto block = info.ConstructBlock(params);
        const std::size_t size = block->SerializedOutputSize();
        Buffer buffer{};
        Buffer expected{};
        const auto serialize = [&](void* item) {
            const ProtocolScanOutputRegisterBlock::DefaultScanOutputInputData input{item, 0};
            block->Serialize(buffer.data(), size, &input, sizeof(input));
            Bench::Keep(buffer);
        };
        const auto write = [&](void* item) {
            byHand(expected.data(), item);
            Bench::Keep(expected);
        };
        for (const auto& item : items) {
            serialize(item.Get());
            write(item.Get());
            if (buffer != expected) {
                report.Note(label + ": bytes differ from those written by hand", 1, "items", 0);
                return;
            }
        }
        const auto before = Bench::Allocations();
        Seconds(items, serialize);
        report.Note(label + ": allocations", static_cast<double>(Bench::Allocations() - before), "", 0);
        report.Add(label,
                   Bench::Compare(
                       Pairs, [&] { return Seconds(items, serialize); }, [&] { return Seconds(items, write); }),
                   "ns", limit, 1e9 / Calls);
    }

    void StoreAlone(const Items& items) {
        Buffer buffer{};
        const Buffer bytes{};
        const double seconds = Bench::Median([&] {
            std::vector<double> costs;
            for (int pair = 0; pair < Pairs; ++pair) {
                costs.push_back(Seconds(items, [&](void*) {
                    StoreOnly(buffer.data(), bytes.data());
                    Bench::Keep(buffer);
                }));
            }
            return costs;
        }());
        report.Note("Measurement: the bare store of its bytes", seconds * 1e9 / Calls, "ns");
    }

private:
    Bench::Report& report;
};

Items Measurements() {
    return MakeItems(ResultInfo_TypeMeasurement, [](void** msg, std::size_t i) {
        return VvMeasureMsg_Construct(msg, 0.5 + 0.37 * static_cast<double>(i), i % 2);
    });
}

Items MeasurementsWithGaps() {
    return MakeItems(ResultInfo_TypeMeasurement, [](void** msg, std::size_t i) {
        return i % 4 == 3 ? VvNullMsg_Construct(msg) : VvMeasureMsg_Construct(msg, static_cast<double>(i), 1);
    });
}

Items Stamps() {
    return MakeItems(ResultInfo_TypeStamp, [](void** msg, std::size_t i) {
        yStamp stamp;
        stamp.frameIndex = i;
        stamp.time = 1000 * i;
        return VvStampMsg_Construct(msg, stamp);
    });
}

Items Texts() {
    return MakeItems(ResultInfo_TypeString,
                     [](void** msg, std::size_t i) { return VvStringMsg_Construct(msg, std::string(i % 12, 'x')); });
}

} // namespace

int main(int argc, char** argv) {
    Bench::Report report("Serialising result items", argc, argv);
    Bencher bencher(report);

    DefaultMeasurementValueAndDecisionRegisterBlockInfo measurement;
    bencher.Run("Measurement", measurement, Measurements(), &WriteMeasurement, 4.0);
    bencher.StoreAlone(Measurements());
    bencher.Run("Measurement, every fourth missing", measurement, MeasurementsWithGaps(), &WriteMeasurement);
    DefaultMeasurementValueRegisterBlockInfo value;
    bencher.Run("MeasurementValue", value, Measurements(), &WriteValue);
    DefaultMeasurementDecisionRegisterBlockInfo decision;
    bencher.Run("MeasurementDecision", decision, Measurements(), &WriteDecision);
    DefaultStampRegisterBlockInfo stamp;
    bencher.Run("Stamp", stamp, Stamps(), &WriteStamp);
    DefaultStringRegisterBlockInfo text(1);
    bencher.Run("String", text, Texts(), &WriteString);
    return report.Finish();
}
