#include "Sensor/Jobs/ToolsEntry.h"
#include "Sensor/Scan/Recording.h"
#include "Sensor/SensorTools.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorCommon/ArchiveStore.h"
#include "VorCommon/IPersistRegistrar.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace {

using Sensor::SensorTools;
using Sensor::Jobs::ToolsEntry;
using VorCommon::PersistDomain;

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// Counts the loads after which the tools differ from the job.
class Registrar : public VorCommon::IPersistRegistrar {
public:
    unsigned long long Register(VorCommon::IPersistHandler&, const std::string&) override { return 1; }
    void Deregister(unsigned long long) override {}
    void Announce(VorCommon::IPersistHandler&, PersistDomain, int) override { ++announced; }

    int announced = 0;
};

Sensor::Scan::Recording OneProfile() {
    Sensor::Scan::Recording recording;
    recording.frames = {{.points = {{0, 1}}, .values = {}}};
    return recording;
}

std::string Content(const VorCommon::IPersistStore& store) {
    if (!store.Exists(ToolsEntry::Path)) {
        return {};
    }
    const VorCommon::PersistBuffer buffer = store.Read(ToolsEntry::Path);
    return {reinterpret_cast<const char*>(buffer.pointer) + buffer.offset, buffer.size};
}

/// The limits of tools that the sensor doesn't have, null when the entry can't be read.
nlohmann::json UnknownIn(const VorCommon::IPersistStore& store, const SensorTools& tools) {
    try {
        nlohmann::json limits = ToolsEntry::Read(store).Tools();
        for (const Sensor::Tool& tool : tools.All()) {
            limits.erase(tool.id);
        }
        return limits;
    } catch (const Vor::Exception&) {
        return nullptr;
    }
}

} // namespace

/// Any bytes as the entry "sensor/tools.json" of a job: they are applied or refused, tools that the sensor doesn't have
/// are kept, and what is saved then is loaded as it is.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Vor::Logging::SetMinimumLevel(Vor::LevelError);
    static const Sensor::Scan::Recording recording = OneProfile();
    VorCommon::ArchiveStore store("never-committed.vrjob");
    store.Write(ToolsEntry::Path, data, size);
    Registrar registrar;
    SensorTools tools(
        recording, [](const std::vector<Sensor::Scan::Limits>&) {}, registrar);
    tools.LoadPersistDomain(PersistDomain::Job, store);
    for (const Sensor::Tool& tool : tools.All()) {
        Require(tool.limits.low <= tool.limits.high && tool.limits.low >= -Sensor::ToolLimits::Range &&
                tool.limits.high <= Sensor::ToolLimits::Range);
        Require(registrar.announced == 0 || tool.limits == Sensor::ToolLimits());
    }
    const nlohmann::json unknown = UnknownIn(store, tools);
    tools.SavePersistDomain(PersistDomain::Job, store);
    Require(unknown.is_null() || UnknownIn(store, tools) == unknown);

    const std::string saved = Content(store);
    Registrar next;
    SensorTools loaded(
        recording, [](const std::vector<Sensor::Scan::Limits>&) {}, next);
    loaded.LoadPersistDomain(PersistDomain::Job, store);
    Require(next.announced == 0);
    for (std::size_t i = 0; i < tools.All().size(); ++i) {
        Require(loaded.All()[i].limits == tools.All()[i].limits);
    }
    loaded.SavePersistDomain(PersistDomain::Job, store);
    Require(Content(store) == saved);
    return 0;
}
