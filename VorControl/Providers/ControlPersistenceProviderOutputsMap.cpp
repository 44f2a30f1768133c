#include "Vor/Exception.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/IOutputMapCheck.h"
#include "VorControl/ControlProtocol/IProtocol.h"
#include "VorControl/Persistence/PersistFields.h"
#include "VorControl/Persistence/PersistLog.h"
#include "VorControl/Providers/ControlPersistenceProvider.h"
#include "VorControl/Providers/OutputMapLock.h"
#include "VorControl/Providers/RunUpdate.h"
#include "yApi/yStatus.h"

#include <nlohmann/json.hpp>

namespace VorControl::Providers {

using ControlProtocol::IProtocolOutput;
using nlohmann::json;
using Persistence::LogThrown;
using Persistence::PERSISTENCE_FIELD_NAME_OUTPUTS;
using Persistence::PersistLoadResult;
using Vor::Properties::JsonSerializer;
using VorCommon::PersistDomain_Name;

namespace {

/// Output maps have no version.
constexpr const char* NoVersion = "";

} // namespace

void ControlPersistenceProvider::InitOutputsMap(PersistDomain domain) {
    try {
        protocol.OutputsMapReset(domain);
    } catch (const std::exception&) {
        Vor::LogError("%s encountered an error while initializing outputs map for domain %s", Name(),
                      PersistDomain_Name(domain));
        throw;
    }
}

void ControlPersistenceProvider::SaveOutputsMap(PersistDomain domain, json& section) {
    const auto outputs = protocol.Outputs(domain);
    if (outputs == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    bool isLocking = true; // the failure is of the lock then, and not of the content
    try {
        OutputMapLock outputsLock(*outputs);
        isLocking = false;
        section[PERSISTENCE_FIELD_NAME_OUTPUTS] = JsonSerializer::Serialize(outputs->OutputMap());
        isLocking = true;
        outputsLock.End();
    } catch (const std::exception&) {
        if (isLocking) {
            Vor::LogError("%s encountered an error locking/unlocking outputs map for persisting into domain %s", Name(),
                          PersistDomain_Name(domain));
        } else {
            Vor::LogError("%s encountered an error while persisting outputs map for domain %s", Name(),
                          PersistDomain_Name(domain));
        }
        throw;
    }
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
        LogThrown(e, "%s encountered an error while loading outputs map for domain %s", Name(), domainName);
        ResetAfterFailure([&] { InitOutputsMap(domain); });
        return PersistLoadResult::Failed;
    }
}

PersistLoadResult ControlPersistenceProvider::UpdateOutputsMap(PersistDomain domain, IProtocolOutput& outputs,
                                                               const json& document) {
    try {
        InitOutputsMap(domain);
        OutputMapLock outputsLock(outputs);
        JsonSerializer::Deserialize(outputs.OutputMap(), document);
        if (auto* const check = dynamic_cast<ControlProtocol::IOutputMapCheck*>(&outputs)) {
            check->CheckLoaded();
        }
        outputsLock.End();
        return PersistLoadResult::None;
    } catch (const std::exception& e) {
        LogThrown(e, "%s encountered error updating outputs map for domain %s", Name(), PersistDomain_Name(domain));
        return PersistLoadResult::Failed;
    }
}

} // namespace VorControl::Providers
