#include "Services/Common/Registers/ScanRegisters.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "VorMsg/ResultInfo.h"
#include "VorMsg/ResultItem.h"
#include "VorMsg/VvNullMsg.h"
#include "yApi/yMsgInfo.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <string>
#include <utility>

namespace Services::Common {

namespace {

using VorControl::ControlProtocol::AssemblyLock;
using VorControl::ControlProtocol::IProtocolRegisterAssembly;
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

} // namespace

ScanRegisters::ScanRegisters(std::shared_ptr<IProtocolRegisterAssembly> assembly, RegisterImage& image,
                             CommandCells& cells, const RegisterFormat& format)
    : assembly(std::move(assembly))
    , image(image)
    , cells(cells)
    , format(format)
    , missing(MissingItem()) {}

void ScanRegisters::Rebuild() {
    const AssemblyLock lock(*assembly);
    AssemblyLayout layout(*assembly, format.bytesPerRegister);
    std::vector<std::string> dataSources;
    dataSources.reserve(layout.scanBlocks.size());
    for (const AssemblyLayout::Place& place : layout.scanBlocks) {
        dataSources.push_back(place.block->DataSource());
    }
    const std::vector<std::size_t> places = latest.Replace(dataSources);
    bytes.assign(layout.size, 0);
    slots.clear();
    slots.resize(latest.Count());
    for (std::size_t i = 0; i < places.size(); ++i) {
        Slot slot{.place = std::move(layout.scanBlocks[i]), .isText = false};
        slot.isText = slot.place.block->Category() == RegisterBlockCategory::String;
        const ResultItem item = latest.At(places[i]);
        Serialize(slot, item != nullptr ? item : missing.Get());
        slots[places[i]].push_back(std::move(slot));
    }
    own.clear();
    for (const ByteRange& range : layout.scanned) {
        own.push_back({range.begin, std::span(bytes).subspan(range.begin, range.end - range.begin)});
    }
    written.reserve(own.size());
    CellPlaces cellPlaces;
    for (const AssemblyLayout::Place& place : layout.cells) {
        cellPlaces.places.push_back({place.block->Type(), place.offset});
        cellPlaces.isBigEndian = place.block->IsProtocolBigEndian();
    }
    cells.Replace(cellPlaces, std::move(layout.ranges), bytes);
}

void ScanRegisters::ForgetValues() {
    const AssemblyLock lock(*assembly);
    latest.Forget();
}

bool ScanRegisters::Process(ResultSet set) {
    try {
        Write(set);
        failing.store(false, std::memory_order_relaxed);
        return true;
    } catch (const std::exception& e) {
        if (!failing.exchange(true, std::memory_order_relaxed)) {
            Vor::LogThrown(e, "A frame can't be written into the registers.");
        }
        return false;
    }
}

void ScanRegisters::Write(ResultSet set) {
    const AssemblyLock lock(*assembly);
    std::size_t begin = bytes.size();
    std::size_t end = 0;
    latest.Store(set, [&](std::size_t source, ResultItem item) {
        for (Slot& slot : slots[source]) {
            // The size of a block may have been edited; Rebuild is called at the end of the edit.
            const auto& [block, offset, size] = slot.place;
            if (block->SerializedOutputSize() == size) {
                Serialize(slot, item);
                begin = std::min(begin, offset);
                end = std::max(end, offset + size);
            }
        }
    });
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
    const auto& block = *slot.place.block;
    try {
        WriteInto(slot, item);
    } catch (const std::exception& e) {
        SerializeMissing(slot);
        if (!slot.failing) {
            slot.failing = true;
            Vor::LogError("Register block at %u can't write the value of %s: %s", block.OutputId(), block.DataSource(),
                          e.what());
        }
        return;
    }
    if (slot.failing) {
        slot.failing = false;
        Vor::LogInfo("Register block at %u writes the value of %s again", block.OutputId(), block.DataSource());
    }
}

void ScanRegisters::SerializeMissing(Slot& slot) {
    unsigned char* const place = &bytes[slot.place.offset];
    std::memset(place, 0, slot.place.size);
    try {
        WriteInto(slot, missing.Get());
    } catch (const std::exception&) {
        std::memset(place, 0, slot.place.size); // zeros where the block can't write a missing value
    }
}

// A text block writes its characters in the order of the protocol.
void ScanRegisters::WriteInto(Slot& slot, ResultItem item) {
    const ProtocolScanOutputRegisterBlock::DefaultScanOutputInputData data{.item = item};
    const auto& [block, offset, size] = slot.place;
    block->Serialize(&bytes[offset], size, &data, sizeof data);
    if (!slot.isText) {
        format.Order(std::span(bytes).subspan(offset, size));
    }
}

} // namespace Services::Common
