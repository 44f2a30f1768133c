// The costs of loading the map of a service from a job's file and of saving it there, against a plain array of
// structures that is read from and written to the same file.

#include "Bench/Measure.h"
#include "Bench/TempFolder.h"
#include "Sensor/Jobs/JobFormat.h"
#include "Sensor/Jobs/JobService.h"
#include "Sensor/Jobs/OfflineServices.h"
#include "Vor/LogOutput.h"
#include "VorCommon/ArchiveStore.h"
#include "VorPlugin/PluginManager.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

using nlohmann::json;
using Sensor::Jobs::JobService;

namespace {

constexpr const char* ConfigPath = "/controls/modbus/config.json";

/// A block in a plain structure.
struct Block {
    std::string version;
    std::string type;
    std::string displayName;
    std::string dataSource;
    unsigned short registerCount;
    unsigned short outputId;
};

json Assembly(json blocks) {
    return {
        {"attributes",
         {{"isGlobalAddressSpaceUsed", true}, {"outputIdMin", 0}, {"outputIdMax", 65534}, {"outputIdReadOnly", false}}},
        {"properties", {{"version", "1.2"}, {"displayName", "Register Assembly 0"}, {"id", "registerAssembly-0"}}},
        {"blocks", std::move(blocks)}};
}

json Document(json blocks) {
    return {{"version", "1"},
            {"vor:control",
             {{"enabled", true},
              {"parameters", {{"port", 1502}}},
              {"parametersVersion", "1"},
              {"registerAssemblyList", json::array({Assembly(std::move(blocks))})},
              {"registerAssemblyVersionList", json::array({{{"id", "registerAssembly-0"}, {"version", "1"}}})}}}};
}

json BlocksOf(const std::vector<Block>& blocks) {
    json list = json::array();
    for (const Block& block : blocks) {
        list.push_back({{"version", block.version},
                        {"type", block.type},
                        {"displayName", block.displayName},
                        {"dataSource", block.dataSource},
                        {"registerCount", block.registerCount},
                        {"outputId", block.outputId}});
    }
    return list;
}

void Write(const std::string& file, const json& document) {
    VorCommon::ArchiveStore store(file);
    store.Open();
    const std::string text = document.dump(-1, ' ');
    store.Write(ConfigPath, text.data(), text.size());
    store.Commit();
}

std::vector<Block> Read(const std::string& file) {
    VorCommon::ArchiveStore store(file);
    store.Open();
    const VorCommon::PersistBuffer buffer = store.Read(ConfigPath);
    const auto* text = buffer.pointer + buffer.offset;
    const json document = json::parse(text, text + buffer.size);
    std::vector<Block> blocks;
    for (const json& block : document.at("vor:control").at("registerAssemblyList").at(0).at("blocks")) {
        blocks.push_back({block.at("version"), block.at("type"), block.at("displayName"), block.at("dataSource"),
                          block.at("registerCount"), block.at("outputId")});
    }
    return blocks;
}

/// A job with `count` blocks.
class Job {
public:
    explicit Job(const std::filesystem::path& folder, std::size_t count)
        : file((folder / (std::to_string(count) + ".vrjob")).string()) {
        std::vector<Block> blocks;
        for (std::size_t i = 0; i < count; ++i) {
            blocks.push_back({"1.2", "MeasurementDecision", "Decision " + std::to_string(i),
                              "tool/" + std::to_string(i), 1, static_cast<unsigned short>(i)});
        }
        Write(file, Document(BlocksOf(blocks)));
    }

    double Load(Sensor::Jobs::OfflineServices& services) const {
        const double start = Bench::ProcessCpuSeconds();
        VorCommon::ArchiveStore store = Sensor::Jobs::JobFormat::Open(file);
        JobService job(services, store, "modbus", JobService::Missing::Refuse);
        job.Load();
        const double seconds = Bench::ProcessCpuSeconds() - start;
        if (!job.Notes().empty()) {
            throw std::runtime_error(job.Notes().front());
        }
        return seconds;
    }
    double LoadPlainly() const {
        const double start = Bench::ProcessCpuSeconds();
        Bench::Keep(Read(file));
        return Bench::ProcessCpuSeconds() - start;
    }
    double Save(Sensor::Jobs::OfflineServices& services) const {
        VorCommon::ArchiveStore store = Sensor::Jobs::JobFormat::Open(file);
        JobService job(services, store, "modbus", JobService::Missing::Refuse);
        job.Load();
        const double start = Bench::ProcessCpuSeconds();
        job.Save();
        store.Commit();
        return Bench::ProcessCpuSeconds() - start;
    }
    double SavePlainly() const {
        const std::vector<Block> blocks = Read(file);
        const double start = Bench::ProcessCpuSeconds();
        Write(file, Document(BlocksOf(blocks)));
        return Bench::ProcessCpuSeconds() - start;
    }

private:
    const std::string file;
};

} // namespace

int main(int argc, char** argv) {
    Vor::LogOutput::Set([](const Vor::LogRecord&) {});
    Bench::Report report("Loading and saving a job", argc, argv);
    const int runs = report.Has("--quick") ? 1 : 5;
    const Bench::TempFolder folder;
    VorPlugin::PluginManager plugins;
    plugins.LoadFolder(std::filesystem::canonical("/proc/self/exe").parent_path() / "plugins");
    Sensor::Jobs::OfflineServices services(plugins);
    const Job small(folder.Path(), 1000);
    const Job middle(folder.Path(), 10000);
    const Job large(folder.Path(), 60000);
    report.Note("load, 1,000 blocks", small.Load(services) * 1e3, "ms");
    report.Note("save, 1,000 blocks", small.Save(services) * 1e3, "ms");
    report.Add("load, 60,000 blocks against plain structures",
               Bench::Compare(
                   runs, [&] { return large.Load(services); }, [&] { return large.LoadPlainly(); }),
               "ms", std::nullopt, 1e3);
    report.Add("save, 60,000 blocks against plain structures",
               Bench::Compare(
                   runs, [&] { return large.Save(services); }, [&] { return large.SavePlainly(); }),
               "ms", std::nullopt, 1e3);
    // n log n makes it 7.2 times as much.
    report.Add("load, 60,000 blocks against 10,000",
               Bench::Compare(
                   runs, [&] { return large.Load(services); }, [&] { return middle.Load(services); }),
               "ms", 9.0, 1e3);
    report.Add("save, 60,000 blocks against 10,000",
               Bench::Compare(
                   runs, [&] { return large.Save(services); }, [&] { return middle.Save(services); }),
               "ms", 9.0, 1e3);
    return report.Finish();
}
