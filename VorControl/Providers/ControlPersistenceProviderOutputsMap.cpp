#include "Vor/Exception.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/IOutputMapCheck.h"
#include "VorControl/ControlProtocol/IProtocol.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "VorControl/Persistence/PersistFields.h"
#include "VorControl/Persistence/RunUpdate.h"
#include "VorControl/Providers/ControlPersistenceProvider.h"
#include "VorControl/Providers/ProviderLog.h"
#include "yApi/yStatus.h"

#include <nlohmann/json.hpp>

namespace VorControl::Providers {

using ControlProtocol::IProtocolOutput;
using ControlProtocol::OutputMapLock;
using nlohmann::json;
using Persistence::PERSISTENCE_FIELD_NAME_OUTPUTS;
using Persistence::PersistLoadResult;
using Persistence::RunUpdate;
using Vor::Properties::JsonSerializer;
using VorCommon::PersistDomain_Name;

namespace {

/// Output maps have no version.
constexpr const char* NoVersion = "";

} // namespace

void ControlPersistenceProvider::InitOutputsMap(PersistDomain domain) {
    RunLogged([&] { protocol.OutputsMapReset(domain); },
              "%s encountered an error while initializing outputs map for domain %s", Name(),
              PersistDomain_Name(domain));
}

void ControlPersistenceProvider::SaveOutputsMap(PersistDomain domain, json& section) {
    const auto outputs = protocol.Outputs(domain);
    if (outputs == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    const auto runLocking = [&](const auto& step) {
        return RunLogged(step, "%s encountered an error locking/unlocking outputs map for persisting into domain %s",
                         Name(), PersistDomain_Name(domain));
    };
    OutputMapLock lock = runLocking([&] { return OutputMapLock(*outputs); });
    RunLogged([&] { section[PERSISTENCE_FIELD_NAME_OUTPUTS] = JsonSerializer::Serialize(outputs->OutputMap()); },
              "%s encountered an error while persisting outputs map for domain %s", Name(), PersistDomain_Name(domain));
    runLocking([&] { lock.Unlock(); });
}

PersistLoadResult ControlPersistenceProvider::LoadOutputsMap(PersistDomain domain, const json& section) {
    const char* const domainName = PersistDomain_Name(domain);
    if (!section.contains(PERSISTENCE_FIELD_NAME_OUTPUTS) || section.at(PERSISTENCE_FIELD_NAME_OUTPUTS).empty()) {
        Vor::LogInfo("%s has no outputs map section in persistence file to load for domain %s", Name(), domainName);
        return PersistLoadResult::None;
    }
    try {
        const auto outputs = protocol.BeginUpdateOutputsMap(domain, NoVersion);
        if (outputs == nullptr) {
            Vor::Throw(yERROR_NOT_FOUND);
        }
        return RunUpdate([&] { return UpdateOutputsMap(domain, *outputs, section.at(PERSISTENCE_FIELD_NAME_OUTPUTS)); },
                         [&] { protocol.EndUpdateOutputsMap(domain, NoVersion); });
    } catch (const std::exception& e) {
        ReportThrown(e, "%s encountered an error while loading outputs map for domain %s", Name(), domainName);
        ResetAfterFailure([&] { InitOutputsMap(domain); });
        return PersistLoadResult::Failed;
    }
}

PersistLoadResult ControlPersistenceProvider::UpdateOutputsMap(PersistDomain domain, IProtocolOutput& outputs,
                                                               const json& document) {
    try {
        InitOutputsMap(domain);
        OutputMapLock lock(outputs);
        JsonSerializer::Deserialize(outputs.OutputMap(), document);
        if (auto* const check = dynamic_cast<ControlProtocol::IOutputMapCheck*>(&outputs)) {
            check->CheckLoaded();
        }
        lock.Unlock();
        return PersistLoadResult::None;
    } catch (const std::exception& e) {
        ReportThrown(e, "%s encountered error updating outputs map for domain %s", Name(), PersistDomain_Name(domain));
        return PersistLoadResult::Failed;
    }
}

} // namespace VorControl::Providers
