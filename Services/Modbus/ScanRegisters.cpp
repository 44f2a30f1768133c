#include "Services/Modbus/ScanRegisters.h"

#include "Services/Modbus/SwapRegisters.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "VorMsg/ResultInfo.h"
#include "VorMsg/ResultItem.h"
#include "VorMsg/VvNullMsg.h"
#include "yApi/yMsgInfo.h"

#include <algorithm>
#include <cstring>

namespace Services::Modbus {

namespace {

using VorControl::ControlProtocol::AssemblyLock;
using VorControl::ControlProtocol::IProtocolRegisterAssembly;
using VorControl::ControlProtocol::ProtocolRegisterBlock;
using VorControl::ControlProtocol::ProtocolScanOutputRegisterBlock;
using VorControl::ControlProtocol::RegisterBlockCategory;

Vor::Object MissingItem() {
    Vor::Object message;
    Vor::ThrowIfFailed(VvNullMsg_Construct(message.Out()));
    Vor::Object msgInfo;
    Vor::ThrowIfFailed(yMsgInfo_Construct(msgInfo.Out(), message.Get(), 0, 0));
    message.Release();
    Vor::Object resultInfo;
    Vor::ThrowIfFailed(ResultInfo_Construct(resultInfo.Out(), 0, ""));
    Vor::Object item;
    Vor::ThrowIfFailed(ResultItem_Construct(item.Out(), msgInfo.Get(), resultInfo.Get()));
    msgInfo.Release();
    resultInfo.Release();
    return item;
}

void AddPlace(ControlPlaces& places, const ProtocolRegisterBlock& block) {
    switch (block.Category()) {
    case RegisterBlockCategory::ControlInput:
        places.controlInput = block.OutputId();
        break;
    case RegisterBlockCategory::ControlOutput:
        places.controlOutput = block.OutputId();
        break;
    case RegisterBlockCategory::System:
        (block.Type() == DiagnosticsType ? places.diagnostics : places.system) = block.OutputId();
        break;
    case RegisterBlockCategory::Scanner:
        places.scanner = block.OutputId();
        break;
    default:
        break;
    }
    places.isBigEndian = block.IsProtocolBigEndian();
}

} // namespace

ScanRegisters::ScanRegisters(std::shared_ptr<IProtocolRegisterAssembly> assembly, RegisterImage& image,
                             ControlRegisters& control)
    : assembly(std::move(assembly))
    , image(image)
    , control(control)
    , missing(MissingItem()) {}

void ScanRegisters::Rebuild() {
    const AssemblyLock lock(*assembly);
    Sources next;
    std::vector<RegisterRange> ranges;
    std::vector<RegisterRange> others;
    ControlPlaces places;
    bytes.clear();
    for (const auto& block : assembly->AddedRegisterBlocks()) {
        const RegisterRange range{block->OutputId(), static_cast<unsigned>(block->OutputId()) + block->RegisterCount()};
        if (range.begin == range.end) {
            continue;
        }
        if (!ranges.empty() && range.begin <= ranges.back().end) {
            ranges.back().end = std::max(ranges.back().end, range.end);
        } else {
            ranges.push_back(range);
        }
        bytes.resize(std::max<std::size_t>(bytes.size(), std::size_t{2} * range.end), 0);
        if (block->HasDataSource()) {
            AddSlot(next, block);
        } else {
            AddPlace(places, *block);
            others.push_back(range);
        }
    }
    for (auto& [id, source] : next) {
        if (const auto former = sources.find(id); former != sources.end()) {
            source.lastItem = std::move(former->second.lastItem);
        }
        for (Slot& slot : source.slots) {
            Serialize(slot, source.lastItem ? source.lastItem.Get() : missing.Get());
        }
    }
    sources = std::move(next);
    FindOwnParts(others);
    control.Replace(places, std::move(ranges), bytes);
}

// `others` ascend. The bytes between them are `own`.
void ScanRegisters::FindOwnParts(const std::vector<RegisterRange>& others) {
    own.clear();
    std::size_t begin = 0;
    const auto add = [&](std::size_t end) {
        if (begin < end) {
            own.push_back({begin, std::span(bytes).subspan(begin, end - begin)});
        }
    };
    for (const RegisterRange& range : others) {
        add(std::size_t{2} * range.begin);
        begin = std::max(begin, std::size_t{2} * range.end);
    }
    add(bytes.size());
    written.reserve(own.size());
}

void ScanRegisters::AddSlot(Sources& next, const std::shared_ptr<ProtocolRegisterBlock>& block) {
    next[ResultInfo_IdOfText(block->DataSource())].slots.push_back(
        {.block = block,
         .offset = std::size_t{2} * block->OutputId(),
         .size = block->SerializedOutputSize(),
         .isText = block->Category() == RegisterBlockCategory::String});
}

void ScanRegisters::ForgetValues() {
    const AssemblyLock lock(*assembly);
    for (auto& [id, source] : sources) {
        source.lastItem = {};
    }
    dropped.store(0, std::memory_order_relaxed);
}

void ScanRegisters::Process(ResultSet set) {
    const AssemblyLock lock(*assembly);
    std::size_t begin = bytes.size();
    std::size_t end = 0;
    const std::size_t count = ResultSet_Count(set);
    for (std::size_t i = 0; i < count; ++i) {
        const ResultItem item = ResultSet_At(set, i);
        const auto found = sources.find(ResultInfo_NumericId(ResultItem_ResultInfo(item)));
        if (found == sources.end()) {
            continue;
        }
        found->second.lastItem = Vor::Object::Share(item);
        for (Slot& slot : found->second.slots) {
            // The size of a block may have been edited; Rebuild is called at the end of the edit.
            if (slot.block->SerializedOutputSize() == slot.size) {
                Serialize(slot, item);
                begin = std::min(begin, slot.offset);
                end = std::max(end, slot.offset + slot.size);
            }
        }
    }
    Publish(begin, end);
}

void ScanRegisters::Publish(std::size_t begin, std::size_t end) {
    written.clear();
    for (const RegisterImage::Part& part : own) {
        const std::size_t from = std::max(begin, part.offset);
        const std::size_t to = std::min(end, part.offset + part.bytes.size());
        if (from < to) {
            written.push_back({from, part.bytes.subspan(from - part.offset, to - from)});
        }
    }
    if (!written.empty()) {
        image.Write(written);
    }
}

void ScanRegisters::Serialize(Slot& slot, ResultItem item) {
    try {
        WriteInto(slot, item);
    } catch (const std::exception& e) {
        SerializeMissing(slot);
        dropped.fetch_add(1, std::memory_order_relaxed);
        if (!slot.failing) {
            slot.failing = true;
            Vor::LogError("Register block at %u can't write the value of %s: %s", slot.block->OutputId(),
                          slot.block->DataSource(), e.what());
        }
        return;
    }
    if (slot.failing) {
        slot.failing = false;
        Vor::LogInfo("Register block at %u writes the value of %s again", slot.block->OutputId(),
                     slot.block->DataSource());
    }
}

void ScanRegisters::SerializeMissing(Slot& slot) {
    std::memset(&bytes[slot.offset], 0, slot.size);
    try {
        WriteInto(slot, missing.Get());
    } catch (const std::exception&) {
        std::memset(&bytes[slot.offset], 0, slot.size); // zeros where the block can't write a missing value
    }
}

// A text block writes its characters in the order of the wire.
void ScanRegisters::WriteInto(Slot& slot, ResultItem item) {
    const ProtocolScanOutputRegisterBlock::DefaultScanOutputInputData data{.item = item};
    unsigned char* const place = &bytes[slot.offset];
    slot.block->Serialize(place, slot.size, &data, sizeof data);
    if (!slot.isText) {
        SwapRegisters(std::span(place, slot.size));
    }
}

} // namespace Services::Modbus
