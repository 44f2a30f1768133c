// The costs of the document of an assembly with 60,000 blocks: the memory of its data tree, and the time of making and
// dumping it, against nlohmann/json that is given the same values by hand.

#include "Bench/Measure.h"
#include "Vor/LogOutput.h"
#include "Vor/VorDataTreeSerializer.h"
#include "VorApi/VorDataTree.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"

#include <algorithm>
#include <malloc.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

using namespace VorControl::ControlProtocol;
using Json = nlohmann::ordered_json;
using Vor::Properties::VorDataTreeSerializer;
using VorApi::VorDataTree;

namespace {

constexpr std::size_t BlockCount = 60000;
constexpr double Kilobyte = 1024;
constexpr double Megabyte = 1024 * Kilobyte;
constexpr double ToMilliseconds = 1e3;

double UsedMemory() {
    const auto info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

std::unique_ptr<ProtocolRegisterAssemblyBase> MakeAssembly() {
    auto assembly = std::make_unique<ProtocolRegisterAssemblyBase>(true, 0, 65534, "assembly", "assembly");
    assembly->AddSupportedBlockType(std::make_unique<DefaultMeasurementDecisionRegisterBlockInfo>());
    AddBlockParams request;
    request.blocks.Resize(BlockCount);
    for (std::size_t i = 0; i < BlockCount; ++i) {
        auto& params = request.blocks.At(i);
        params.type = "MeasurementDecision";
        params.dataSource = "profile/" + std::to_string(i);
        params.displayName = "block";
        params.outputId = static_cast<unsigned short>(i);
    }
    assembly->Add(request);
    return assembly;
}

VorDataTree MakeTree(const ProtocolRegisterAssemblyBase& assembly, bool withSchema) {
    VorDataTree tree;
    VorDataTree blocks = tree["blocks"];
    blocks.MakeArray();
    for (const auto& block : assembly.AddedRegisterBlocks()) {
        VorDataTree element = blocks.Append();
        VorDataTreeSerializer::Serialize(*block, element);
        if (withSchema) {
            VorDataTreeSerializer::SerializeSchema(*block, element["_schema"]);
        }
    }
    return tree;
}

/// The values of a block, as code without the parameter classes would have them.
struct PlainBlock {
    std::string version;
    std::string type;
    std::string displayName;
    unsigned short registerCount;
    unsigned short outputId;
    std::string dataSource;
};

std::vector<PlainBlock> MakePlainBlocks(const ProtocolRegisterAssemblyBase& assembly) {
    std::vector<PlainBlock> blocks;
    for (const auto& block : assembly.AddedRegisterBlocks()) {
        blocks.push_back({"1.2", block->Type(), block->DisplayName(), block->RegisterCount(), block->OutputId(),
                          block->DataSource()});
    }
    return blocks;
}

/// With the schema, if there is one, that all blocks have.
Json MakeJson(const std::vector<PlainBlock>& blocks, const Json* schema) {
    Json document = Json::object();
    Json& array = document["blocks"];
    array = Json::array();
    for (const PlainBlock& block : blocks) {
        Json element = {{"version", block.version},         {"type", block.type},
                        {"displayName", block.displayName}, {"registerCount", block.registerCount},
                        {"outputId", block.outputId},       {"dataSource", block.dataSource}};
        if (schema != nullptr) {
            element["_schema"] = *schema;
        }
        array.push_back(std::move(element));
    }
    return document;
}

void Measure(Bench::Report& report, const ProtocolRegisterAssemblyBase& assembly,
             const std::vector<PlainBlock>& plainBlocks, const Json* schema, int pairs, double mostBytes) {
    const std::string label = schema != nullptr ? "60,000 blocks with schema" : "60,000 blocks without schema";
    const auto makeTree = [&] { return MakeTree(assembly, schema != nullptr); };
    const auto makeJson = [&] { return MakeJson(plainBlocks, schema); };
    malloc_trim(0);
    const double before = UsedMemory();
    {
        const VorDataTree tree = makeTree();
        report.Note(label + ", memory of a block", (UsedMemory() - before) / BlockCount, "B", mostBytes);
        const std::string text = tree.Dump(false);
        if (text != makeJson().dump()) {
            throw std::runtime_error(label + ": the two texts differ");
        }
        report.Note(label + ", text", static_cast<double>(text.size()) / Megabyte, "MiB");
    }
    double longest = 0;
    const auto comparison = Bench::Compare(
        pairs,
        [&] {
            const double start = Bench::ProcessCpuSeconds();
            const VorDataTree tree = makeTree();
            longest = std::max(longest, Bench::ProcessCpuSeconds() - start);
            Bench::Keep(tree.Dump(false).size());
            return Bench::ProcessCpuSeconds() - start;
        },
        [&] {
            const double start = Bench::ProcessCpuSeconds();
            const Json json = makeJson();
            Bench::Keep(json.dump().size());
            return Bench::ProcessCpuSeconds() - start;
        });
    report.Add(label + ", made and dumped", comparison, "ms", 2.0, ToMilliseconds);
    report.Note(label + ", longest making", longest * ToMilliseconds, "ms");
}

} // namespace

int main(int argc, char** argv) {
    Vor::LogOutput::Set([](const Vor::LogRecord&) {});
    Bench::Report report("tree", argc, argv);
    const int pairs = report.Has("--quick") ? 3 : 9;
    const auto assembly = MakeAssembly();
    const AssemblyLock lock(*assembly);
    const auto plainBlocks = MakePlainBlocks(*assembly);
    VorDataTree schemaTree;
    VorDataTreeSerializer::SerializeSchema(*assembly->AddedRegisterBlocks().front(), schemaTree);
    const Json schema = Json::parse(schemaTree.Dump(false));
    Measure(report, *assembly, plainBlocks, nullptr, pairs, Kilobyte / 2);
    Measure(report, *assembly, plainBlocks, &schema, pairs, 3 * Kilobyte);
    return report.Finish();
}
