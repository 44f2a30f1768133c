// What it costs to add many blocks of one register to an assembly in one request, and what a block weighs.

#include "Bench/Measure.h"
#include "VorControl/ControlProtocol/AddBlockParams.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"

#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

using namespace VorControl::ControlProtocol;

namespace {

constexpr double gigabyte = 1024.0 * 1024 * 1024;
constexpr double neededMemory = 4 * gigabyte;

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

std::unique_ptr<ProtocolRegisterAssemblyBase> NewAssembly() {
    auto assembly = std::make_unique<ProtocolRegisterAssemblyBase>(true, 0, 65534, "assembly", "assembly");
    assembly->AddSupportedBlockType(std::make_unique<DefaultMeasurementDecisionRegisterBlockInfo>());
    return assembly;
}

Cost AddAll(const std::vector<unsigned short>& ids, bool autoShift) {
    AddBlockParams request;
    request.autoShift = autoShift;
    request.blocks.Resize(ids.size());
    for (std::size_t i = 0; i < ids.size(); ++i) {
        auto& params = request.blocks.At(i);
        params.type = "MeasurementDecision";
        params.dataSource = "source";
        params.displayName = "block";
        params.outputId = ids[i];
    }
    const auto assembly = NewAssembly();
    // What earlier runs have left goes back to the system: it would do for few blocks and not for many.
    malloc_trim(0);
    const double memory = UsedMemory();
    const double start = Bench::ProcessCpuSeconds();
    assembly->Add(request);
    const double seconds = Bench::ProcessCpuSeconds() - start;
    return {seconds, (UsedMemory() - memory) / static_cast<double>(ids.size())};
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
    report.Add("60,000 blocks against 10,000, " + order, comparison, "ms", 9.0, 1e3);
    report.Note("memory of a block, " + order, bytesPerBlock, "bytes", 16.0 * 1024);
}

/// Each block asks for the place of the first, which moves all others.
void AddShifting(Bench::Report& report, std::size_t count) {
    const auto label = std::to_string(count) + " blocks, each shifting all before it";
    report.Note(label, AddAll(std::vector<unsigned short>(count, 0), true).seconds * 1e3, "ms");
}

} // namespace

int main(int argc, char** argv) {
    Bench::Report report("Adding blocks to an assembly", argc, argv);
    if (const double memory = FreeMemory(); memory < neededMemory) {
        char reason[96];
        std::snprintf(reason, sizeof(reason), "%.1f GB of memory are free, 4 are needed", memory / gigabyte);
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
    return report.Finish();
}
