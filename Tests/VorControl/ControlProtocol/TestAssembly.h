#pragma once

#include "Tests/VorControl/ControlProtocol/TestBlocks.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"

#include <optional>
#include <utility>

namespace Tests {

/// One entry of an add request. Other values keep the defaults of the document.
struct Entry {
    std::string type;
    std::optional<unsigned short> outputId = std::nullopt;
    std::optional<unsigned short> registerCount = std::nullopt;
    std::string dataSource = std::string();
    std::string displayName = std::string();
};

/// The new values of an update request. Other values keep the defaults of the document.
struct Change {
    std::optional<unsigned short> outputId = std::nullopt;
    std::optional<unsigned short> registerCount = std::nullopt;
    std::string dataSource = std::string();
    std::string displayName = std::string();
};

/// First address, last address and name of a block.
struct Placed {
    int first;
    int last;
    std::string name;
    bool operator==(const Placed&) const = default;
};

inline void PrintTo(const Placed& placed, std::ostream* out) {
    *out << "[" << placed.first << ", " << placed.last << "] " << placed.name;
}

/// An assembly with its types "one" (1 register), "four" (4 registers), "flexible" (any number, 4 by default) and
/// "scan" (2 registers, with a data source).
class TestAssembly : public ProtocolRegisterAssemblyBase {
public:
    explicit TestAssembly(bool isGlobal, unsigned short least = 0, unsigned short most = 65534,
                          const char* id = "assembly")
        : ProtocolRegisterAssemblyBase(isGlobal, least, most, id, "shown") {}

    TestAssembly& WithTypes() {
        AddType(TypeParams("one", 1));
        AddType(TypeParams("four", 4));
        auto flexible = TypeParams("flexible", 4);
        flexible.configurableRegisterCount = true;
        AddType(std::move(flexible));
        AddType(ScanTypeParams<BareScanBlock>("scan", 2));
        return *this;
    }

    void AddType(RegisterBlockInfoParams params) {
        AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(std::move(params)));
    }

    std::uint32_t AddEntries(const std::vector<Entry>& entries, bool autoShift = false) {
        AddBlockParams request;
        request.autoShift = autoShift;
        for (const auto& entry : entries) {
            request.blocks.Resize(request.blocks.Count() + 1);
            auto& params = request.blocks.At(request.blocks.Count() - 1);
            params.type = entry.type;
            params.dataSource = entry.dataSource;
            params.displayName = entry.displayName;
            params.outputId = entry.outputId.value_or(65535);
            params.registerCount = entry.registerCount.value_or(65535);
        }
        return Add(request);
    }

    std::uint32_t UpdateOne(unsigned short outputId, const Change& change, bool autoShift = false) {
        UpdateBlockParams request;
        request.outputId = outputId;
        request.autoShift = autoShift;
        request.newParams.outputId = change.outputId.value_or(65535);
        request.newParams.registerCount = change.registerCount.value_or(65535);
        request.newParams.dataSource = change.dataSource;
        request.newParams.displayName = change.displayName;
        return Update(request);
    }

    std::uint32_t RemoveIds(const std::vector<unsigned short>& outputIds) {
        RemoveBlockParams request;
        for (const unsigned short id : outputIds) {
            request.outputIdList.Emplace().outputId = id;
        }
        return Remove(request);
    }

    std::uint32_t CompactFrom(unsigned short startingOutputId) {
        CompactBlocksParams request;
        request.startingOutputId = startingOutputId;
        return Compact(request);
    }

    std::vector<Placed> Places() const {
        BeginLock();
        std::vector<Placed> places;
        for (const auto& block : AddedRegisterBlocks()) {
            places.push_back({block->OutputId(), block->EndAddress(), block->DisplayName()});
        }
        EndLock();
        return places;
    }

    std::shared_ptr<ProtocolRegisterBlock> Block(std::size_t position) const {
        BeginLock();
        auto block = *std::next(AddedRegisterBlocks().begin(), static_cast<std::ptrdiff_t>(position));
        EndLock();
        return block;
    }

    bool OutputIdReadOnly() { return Attributes().outputIdReadOnly.Get(); }
};

} // namespace Tests
