#include "Sensor/Resources/OperationProperties.h"

#include "Sensor/Resources/DocumentMembers.h"
#include "VorApi/Path.h"

#include <cstddef>

namespace Sensor::Resources {

namespace {

const char* TextOf(Operation::State state) {
    switch (state) {
    case Operation::State::Running:
        return "running";
    case Operation::State::Succeeded:
        return "succeeded";
    case Operation::State::Failed:
        break;
    }
    return "failed";
}

const char* TextOf(VorControl::Persistence::PersistLoadResult result) {
    using VorControl::Persistence::PersistLoadResult;
    switch (result) {
    case PersistLoadResult::None:
        return "complete";
    case PersistLoadResult::Upgraded:
        return "upgraded";
    case PersistLoadResult::UnsupportedUpgrade:
        return "unsupportedUpgrade";
    case PersistLoadResult::PartMissing:
    case PersistLoadResult::AssemblyInPart:
        return "partial";
    case PersistLoadResult::Failed:
        break;
    }
    return "failed";
}

} // namespace

LoadNotesProperties::LoadNotesProperties() {
    RegisterReadOnly(*this, "service", service, "Service");
    RegisterReadOnly(*this, "result", result, "Result of the load");
    RegisterReadOnly(*this, "texts", texts, "What the load has reported");
}

void LoadNotesProperties::Populate(const VorControl::ServiceLoadNotes& notes) {
    service = notes.serviceId;
    result = TextOf(notes.result);
    texts = notes.texts;
}

OperationProperties::OperationProperties(const Operation& operation) {
    RegisterReadOnly(*this, "id", id, "Id");
    RegisterReadOnly(*this, "command", command, "Command");
    RegisterReadOnly(*this, "argument", argument, "Job or scanner");
    RegisterReadOnly(*this, "state", state, "State, running, succeeded or failed");
    RegisterReadOnly(*this, "code", code, "Status");
    RegisterReadOnly(*this, "text", text, "Why it has failed");
    RegisterReadOnly(*this, "notes", notes, "What the load of each service has reported");
    id = operation.id;
    command = operation.command;
    argument = operation.argument;
    state = TextOf(operation.state);
    code = operation.status;
    text = operation.text;
    notes.Resize(operation.notes.size());
    for (std::size_t i = 0; i < operation.notes.size(); ++i) {
        notes.At(i).Populate(operation.notes[i]);
    }
}

std::string OperationProperties::PathOf(const Operation& operation) {
    return VorApi::Path::Format("/sensor/operations/:operation", {operation.id});
}

} // namespace Sensor::Resources
