#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "Vor/UserData/UdiCache.h"
#include "VorApi/LogThrown.h"
#include "VorControl/ControlProtocol/ProtocolBase.h"
#include "VorControl/ControlProtocol/Translate.h"
#include "yApi/yStatus.h"
#include "yApi/yString.h"

#include <algorithm>
#include <exception>
#include <string>

namespace VorControl::ControlProtocol {

namespace {

constexpr std::uint8_t CommandInProgress = 1;
constexpr std::uint8_t CommandSucceeded = 2;
constexpr std::uint8_t CommandFailed = 3;

/// The text may have no terminator.
std::string ArgumentText(const ControlRegisterCommandData& data) {
    return std::string(data.commandArgs.begin(), std::ranges::find(data.commandArgs, '\0'));
}

} // namespace

void ProtocolBase::ProcessReceivedCommonCommands(const ControlRegisterCommandData& data) {
    SetOperationInProgress(true);
    try {
        RunCommand(data);
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "Failed to process the received command from %s client with command id %u", displayName,
                       static_cast<unsigned>(data.commandId));
        OperationCompleted(yERROR);
    }
}

void ProtocolBase::RunCommand(const ControlRegisterCommandData& data) {
    switch (data.commandId) {
    case ControlRegisterCommandData::NoCommand:
        Vor::LogInfo("NO COMMAND received. No processing done.");
        OperationCompleted(yOK);
        break;
    case ControlRegisterCommandData::Start:
        Vor::LogInfo("Processing START command");
        host->StartScan(id);
        break;
    case ControlRegisterCommandData::Stop:
        Vor::LogInfo("Processing STOP command");
        host->StopScan(id);
        break;
    case ControlRegisterCommandData::Align:
        Vor::LogInfo("Processing ALIGN command");
        host->StartAlignment(id, ArgumentText(data).c_str());
        break;
    case ControlRegisterCommandData::ClearAlign:
        Vor::LogInfo("Processing CLEAR ALIGN command");
        host->ClearAlignment(id, ArgumentText(data).c_str());
        break;
    case ControlRegisterCommandData::LoadJob:
        Vor::LogInfo("Processing LOAD JOB command");
        host->LoadJob(id, ArgumentText(data).c_str());
        break;
    case ControlRegisterCommandData::SoftwareTrigger:
        Vor::LogInfo("Processing SOFTWARE TRIGGER command");
        host->SoftwareTrigger(id, ArgumentText(data).c_str());
        break;
    case ControlRegisterCommandData::SetUserData:
        Vor::LogInfo("Processing SET USER DATA command");
        WriteUserData(data);
        OperationCompleted(yOK);
        break;
    default:
        Vor::LogError("Command Id %d is an invalid command", static_cast<int>(data.commandId));
        OperationCompleted(yERROR_COMMAND);
    }
}

void ProtocolBase::WriteUserData(const ControlRegisterCommandData& data) {
    if (data.commandArgsSize > data.commandArgs.size()) {
        Vor::Throw(yERROR_PARAMETER);
    }
    Vor::UserData::UdiCache::GetInstance().Write(data.commandArgs.data(), 0, data.commandArgsSize);
}

bool ProtocolBase::IsDuplicateCommand(const ControlRegisterCommandData& last,
                                      const ControlRegisterCommandData& current) {
    if (last.commandId != current.commandId) {
        return false;
    }
    switch (current.commandId) {
    case ControlRegisterCommandData::Align:
    case ControlRegisterCommandData::ClearAlign:
    case ControlRegisterCommandData::LoadJob:
    case ControlRegisterCommandData::SoftwareTrigger:
        return yStrEquals(ArgumentText(last).c_str(), ArgumentText(current).c_str());
    default:
        return true;
    }
}

std::uint8_t ProtocolBase::GetCommandStatus() const {
    return OperationInProgress() ? CommandInProgress : CompletedOperationStatus();
}

std::uint8_t ProtocolBase::CompletedOperationStatus() const {
    return completedOperationStatus.load(std::memory_order_relaxed);
}

std::uint64_t ProtocolBase::BeginOfLastTrigger() const {
    return host->BeginOfLastTrigger(id);
}

void ProtocolBase::OpEndEventHandler(int status) {
    OperationCompleted(status);
}

void ProtocolBase::OperationCompleted(int status) {
    completedOperationStatus.store(status == yOK ? CommandSucceeded : CommandFailed, std::memory_order_relaxed);
    SetOperationInProgress(false);
    OperationEndEventImpl(status);
}

void ProtocolBase::OperationEndEventImpl(int /*status*/) {}

void ProtocolBase::CheckControlDrops(const char* text) {
    if (metrics == nullptr) {
        return;
    }
    problemsTracker.Begin();
    std::uint64_t base = LastDropCount();
    const std::uint64_t dropCount = DropCount();
    if (dropCount > base) {
        if (auto* const problems = host->ProblemsManager()) {
            const char* const title = "VorControl";
            problemsTracker.Register(
                text != nullptr
                    ? problems->Add(0, title, "%s", text)
                    : problems->Add(0, title,
                                    Translate("beApp.ctrl", "%1$s detected message drops. Try reducing the scan rate "
                                                            "of the device to avoid message drops."),
                                    displayName));
        }
    }
    problemsTracker.End();
    if (dropCount < base) {
        // A scan that starts meanwhile sets its own base, which stays.
        lastDropCount.compare_exchange_strong(base, dropCount, std::memory_order_relaxed);
    }
}

void ProtocolBase::ClearAllProblems() {
    problemsTracker.Begin();
    problemsTracker.End();
}

} // namespace VorControl::ControlProtocol
