// The costs of editing an assembly of many blocks of one register, and the memory of a block.

#include "Bench/Measure.h"
#include "Vor/Exception.h"
#include "Vor/LogOutput.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <malloc.h>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace VorControl::ControlProtocol;

namespace {

constexpr double Gigabyte = 1024.0 * 1024 * 1024;
constexpr double NeededMemory = 4 * Gigabyte;
/// Six times the blocks, and the logarithm's share on top.
constexpr double Sixfold = 9.0;

double FreeMemory() {
    std::ifstream file("/proc/meminfo");
    std::string key;
    std::string unit;
    for (double kilobytes = 0; file >> key >> kilobytes; std::getline(file, unit)) {
        if (key == "MemAvailable:") {
            return kilobytes * 1024;
        }
    }
    return 0;
}

double UsedMemory() {
    const auto info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

std::vector<unsigned short> Ids(std::size_t count, bool shuffled) {
    std::vector<unsigned short> ids(count);
    std::iota(ids.begin(), ids.end(), static_cast<unsigned short>(0));
    if (shuffled) {
        std::shuffle(ids.begin(), ids.end(), std::mt19937(7));
    }
    return ids;
}

struct Cost {
    double seconds;
    double bytesPerBlock;
};

using Assembly = ProtocolRegisterAssemblyBase;

std::unique_ptr<Assembly> NewAssembly(unsigned short most = 65534) {
    auto assembly = std::make_unique<Assembly>(true, 0, most, "assembly", "assembly");
    assembly->AddSupportedBlockType(std::make_unique<DefaultMeasurementDecisionRegisterBlockInfo>());
    return assembly;
}

std::unique_ptr<AddBlockParams> AddRequest(const std::vector<unsigned short>& ids, bool autoShift) {
    auto request = std::make_unique<AddBlockParams>();
    request->autoShift = autoShift;
    request->blocks.Resize(ids.size());
    for (std::size_t i = 0; i < ids.size(); ++i) {
        auto& params = request->blocks.At(i);
        params.type = "MeasurementDecision";
        params.dataSource = "profile/" + std::to_string(ids[i]);
        params.displayName = "block";
        params.outputId = ids[i];
    }
    return request;
}

template <class Call>
double Seconds(const Call& call) {
    const double start = Bench::ProcessCpuSeconds();
    call();
    return Bench::ProcessCpuSeconds() - start;
}

Cost AddAll(const std::vector<unsigned short>& ids, bool autoShift) {
    const auto request = AddRequest(ids, autoShift);
    const auto assembly = NewAssembly();
    // Returns the memory of earlier runs to the system; it would be enough for few blocks and not for many.
    malloc_trim(0);
    const double memory = UsedMemory();
    const double seconds = Seconds([&] { assembly->Add(*request); });
    return {seconds, (UsedMemory() - memory) / static_cast<double>(ids.size())};
}

std::unique_ptr<Assembly> Filled(std::size_t count, unsigned short most = 65534) {
    auto assembly = NewAssembly(most);
    assembly->Add(*AddRequest(Ids(count, false), false));
    return assembly;
}

void FillRemoveRequest(RemoveBlockParams& request, const std::vector<unsigned short>& ids) {
    request.outputIdList.Resize(ids.size());
    for (std::size_t i = 0; i < ids.size(); ++i) {
        request.outputIdList.At(i).outputId = ids[i];
    }
}

double RemoveByList(std::size_t count) {
    const auto assembly = Filled(count);
    RemoveBlockParams request;
    FillRemoveRequest(request, Ids(count, true));
    return Seconds([&] { assembly->Remove(request); });
}

double RemoveAll(std::size_t count) {
    const auto assembly = Filled(count);
    return Seconds([&] { assembly->RemoveAll(); });
}

double Compact(std::size_t count) {
    const auto assembly = Filled(count);
    CompactBlocksParams request;
    request.startingOutputId = 3;
    return Seconds([&] { assembly->Compact(request); });
}

double Copy(std::size_t count) {
    const auto source = Filled(count);
    const auto assembly = NewAssembly();
    return Seconds([&] { assembly->CopySupportedRegisterBlocks(*source); });
}

/// The last block moves to the first place, and all others one place up.
double UpdateThatShiftsAll(std::size_t count) {
    const auto assembly = Filled(count);
    UpdateBlockParams request;
    request.outputId = static_cast<unsigned short>(count - 1);
    request.autoShift = true;
    request.newParams.outputId = 0;
    return Seconds([&] { assembly->Update(request); });
}

/// Half of `count` blocks, with gaps of one register. Each block of the request shifts one block into its gap.
double AddShiftingOne(std::size_t count) {
    auto ids = Ids(count / 2, true);
    for (auto& id : ids) {
        id = static_cast<unsigned short>(2 * id);
    }
    const auto assembly = NewAssembly();
    assembly->Add(*AddRequest(ids, false));
    const auto request = AddRequest(ids, true);
    return Seconds([&] { assembly->Add(*request); });
}

/// A full range, without room for any entry of the request.
double AddWithoutRoom(std::size_t count) {
    const auto assembly = Filled(count, static_cast<unsigned short>(count - 1));
    const auto request = AddRequest(Ids(count, true), true);
    return Seconds([&] {
        try {
            assembly->Add(*request);
        } catch (const Vor::Exception&) {
            Bench::Keep(assembly);
        }
    });
}

/// Without a global address space, to which a block without registers makes no difference.
double AddToPlain(std::size_t count) {
    Assembly assembly(false, 0, 65534, "assembly", "assembly");
    RegisterBlockInfoParams type;
    type.type = "empty";
    type.displayName = "empty";
    type.maxInstanceCount = 65534;
    type.factory = std::make_shared<ProtocolRegisterBlockFactory<ProtocolRegisterBlock>>();
    assembly.AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(std::move(type)));
    assembly.AddSupportedBlockType(std::make_unique<DefaultMeasurementDecisionRegisterBlockInfo>());
    const auto request = AddRequest(Ids(count, true), false);
    request->blocks.At(0).type = "empty";
    return Seconds([&] { assembly.Add(*request); });
}

double SortByDataSource(std::size_t count) {
    const auto assembly = Filled(count);
    return Seconds([&] { Bench::Keep(assembly->FindAddedScanOutputBlocksSortedByDataSource().size()); });
}

double FindOfType(std::size_t count) {
    const auto assembly = Filled(count);
    return Seconds([&] { Bench::Keep(assembly->FindAddedBlocksOfTypes({"MeasurementDecision"}).size()); });
}

void CompareRequests(Bench::Report& report, int runs) {
    const std::pair<const char*, double (*)(std::size_t)> requests[] = {
        {"remove all by list, shuffled", RemoveByList},
        {"remove all", RemoveAll},
        {"compact", Compact},
        {"copy", Copy},
        {"update that shifts all", UpdateThatShiftsAll},
        {"add, each shifting one", AddShiftingOne},
        {"add, each without room", AddWithoutRoom},
        {"add to a plain assembly, one without registers", AddToPlain},
        {"blocks by data source", SortByDataSource},
        {"blocks of a type", FindOfType},
    };
    for (const auto& [label, measure] : requests) {
        const auto comparison = Bench::Compare(
            runs, [&] { return measure(60000); }, [&] { return measure(10000); });
        report.Note(std::string(label) + ", 1,000", measure(1000) * 1e3, "ms");
        report.Add(std::string(label) + ", 60,000 against 10,000", comparison, "ms", Sixfold, 1e3);
    }
}

/// Single requests on an assembly that has `count` blocks.
void EditOne(Bench::Report& report, std::size_t count) {
    const auto assembly = Filled(count);
    const auto asked = Ids(count, true);
    const std::size_t requests = 200;
    const auto note = [&](const char* request, const auto& call) {
        const double seconds = Seconds([&] {
            for (std::size_t i = 0; i < requests; ++i) {
                call(i);
            }
        });
        report.Note(std::string(request) + " among " + std::to_string(count),
                    seconds * 1e6 / static_cast<double>(requests), "us");
    };

    UpdateBlockParams rename;
    rename.newParams.displayName = "found";
    note("find and rename", [&](std::size_t i) {
        rename.outputId = asked[i];
        assembly->Update(rename);
    });
    RemoveBlockParams remove;
    remove.outputIdList.Resize(1);
    note("remove", [&](std::size_t i) {
        remove.outputIdList.At(0).outputId = asked[i];
        assembly->Remove(remove);
    });
    const auto add = AddRequest({0}, false);
    note("add", [&](std::size_t i) {
        add->blocks.At(0).outputId = asked[i];
        assembly->Add(*add);
    });
    UpdateBlockParams update;
    note("update to another place", [&](std::size_t i) {
        update.outputId = asked[i];
        update.newParams.outputId = static_cast<unsigned short>(count + i);
        assembly->Update(update);
    });
    // The blocks up to the next gap make room.
    UpdateBlockParams shift;
    shift.autoShift = true;
    note("update that shifts some", [&](std::size_t i) {
        shift.outputId = static_cast<unsigned short>(count + i);
        shift.newParams.outputId = static_cast<unsigned short>(asked[i] + 1);
        assembly->Update(shift);
    });
}

void Compare(Bench::Report& report, const std::string& order, bool shuffled, int runs) {
    const auto few = Ids(10000, shuffled);
    const auto many = Ids(60000, shuffled);
    double bytesPerBlock = 0;
    const auto comparison = Bench::Compare(
        runs,
        [&] {
            const auto cost = AddAll(many, false);
            bytesPerBlock = cost.bytesPerBlock;
            return cost.seconds;
        },
        [&] { return AddAll(few, false).seconds; });
    report.Note("1,000 blocks, " + order, AddAll(Ids(1000, shuffled), false).seconds * 1e3, "ms");
    report.Add("60,000 blocks against 10,000, " + order, comparison, "ms", Sixfold, 1e3);
    report.Note("memory of a block, " + order, bytesPerBlock, "bytes", 4096.0);
}

/// Adds each block at the place of the first one, which moves all others.
void AddShifting(Bench::Report& report, std::size_t count) {
    const auto label = std::to_string(count) + " blocks, each shifting all before it";
    report.Note(label, AddAll(std::vector<unsigned short>(count, 0), true).seconds * 1e3, "ms");
}

} // namespace

int main(int argc, char** argv) {
    Vor::LogOutput::Set([](const Vor::LogRecord&) {});
    Bench::Report report("Editing assemblies", argc, argv);
    if (const double memory = FreeMemory(); memory < NeededMemory) {
        char reason[96];
        std::snprintf(reason, sizeof(reason), "%.1f GB of memory are free, 4 are needed", memory / Gigabyte);
        report.Skip("60,000 blocks against 10,000", reason);
        return report.Finish();
    }
    const int runs = report.Has("--quick") ? 1 : 5;
    Compare(report, "ascending", false, runs);
    Compare(report, "shuffled", true, runs);
    report.Note("1,000 blocks with room to shift, shuffled", AddAll(Ids(1000, true), true).seconds * 1e3, "ms");
    report.Note("10,000 blocks with room to shift, shuffled", AddAll(Ids(10000, true), true).seconds * 1e3, "ms");
    AddShifting(report, 1000);
    if (!report.Has("--quick")) {
        AddShifting(report, 10000);
    }
    CompareRequests(report, runs);
    for (const std::size_t count : {1000, 10000, 60000}) {
        EditOne(report, count);
    }
    return report.Finish();
}
