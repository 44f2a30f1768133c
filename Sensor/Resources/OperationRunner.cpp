#include "Sensor/Resources/OperationRunner.h"

#include "Sensor/PrintableText.h"
#include "Sensor/VirtualSensor.h"
#include "Vor/Exception.h"
#include "VorApi/LogThrown.h"
#include "VorControl/Control/ControlModule.h"
#include "VorMsg/ResultItem.h"
#include "VorMsg/ResultSet.h"
#include "yApi/yMsgInfo.h"

#include <algorithm>
#include <utility>

namespace Sensor::Resources {

namespace {

constexpr std::size_t MaxTexts = 100;

/// What is kept of the notes of a load: a damaged job may cause one for each of its elements, and determine its length.
std::vector<VorControl::ServiceLoadNotes> KeptNotes(std::vector<VorControl::ServiceLoadNotes> notes) {
    for (VorControl::ServiceLoadNotes& ofService : notes) {
        ofService.texts.resize(std::min(ofService.texts.size(), MaxTexts));
        std::ranges::transform(ofService.texts, ofService.texts.begin(), &LoggedText);
    }
    return notes;
}

} // namespace

OperationRunner::OperationRunner(const SensorEnviron& environ)
    : environ(environ)
    , endHandler(environ.module.Operations().AddOpEndEventHandler(
          ClientId,
          [this](int status) {
              mainLoop.Run([this, status, failure = this->environ.module.Operations().LastFailure(ClientId)] {
                  OnEnd(status, failure);
              });
          }))
    , resultHandler(environ.sensor.Hub().AddResultHandler([this](void* resultSet) { OnResults(resultSet); })) {}

OperationRunner::~OperationRunner() {
    Vor::CleanUp([this] { environ.sensor.Hub().RemoveResultHandler(resultHandler); });
    Vor::CleanUp([this] { environ.module.Operations().RemoveOpEndEventHandler(ClientId, endHandler); });
}

const Operation& OperationRunner::Run(const Request& request, Ended ended) {
    const auto forgotten = EntryToForget();
    framesWanted += request.waitsForFrame ? 1 : 0;
    try {
        request.start(environ.module.Operations(), ClientId);
    } catch (...) {
        framesWanted -= request.waitsForFrame ? 1 : 0;
        throw;
    }
    if (forgotten != entries.end()) {
        entries.erase(forgotten);
    }
    entries.push_back(
        {.operation = {.id = std::to_string(++lastId), .command = request.command, .argument = request.argument},
         .ended = std::move(ended),
         .waitsForFrame = request.waitsForFrame,
         .loadsJob = request.loadsJob,
         .begin = environ.module.Operations().BeginOfLastTrigger(ClientId)});
    return entries.back().operation;
}

std::list<OperationRunner::Entry>::iterator OperationRunner::EntryToForget() {
    if (entries.size() < MaxKept) {
        return entries.end();
    }
    const auto oldest = std::ranges::find_if(
        entries, [](const Entry& entry) { return entry.operation.state != Operation::State::Running; });
    if (oldest == entries.end()) {
        Vor::Throw(yERROR_BUSY, "%d operations wait for their ends, and one more isn't started.",
                   static_cast<int>(MaxKept));
    }
    return oldest;
}

std::vector<std::string> OperationRunner::Ids() const {
    std::vector<std::string> ids;
    for (const Entry& entry : entries) {
        ids.push_back(entry.operation.id);
    }
    return ids;
}

const Operation* OperationRunner::Find(const std::string& id) const {
    const auto found = std::ranges::find_if(entries, [&](const Entry& entry) { return entry.operation.id == id; });
    return found == entries.end() ? nullptr : &found->operation;
}

// On the thread of the hub.
void OperationRunner::OnResults(void* resultSet) {
    if (framesWanted.load(std::memory_order_relaxed) > 0 && ResultSet_Count(resultSet) > 0) {
        const std::uint64_t published = yMsgInfo_Published(ResultItem_MsgInfo(ResultSet_At(resultSet, 0)));
        mainLoop.Run([this, published] { OnFrame(published); });
    }
}

void OperationRunner::OnFrame(std::uint64_t published) {
    lastPublished = std::max(lastPublished, published);
    for (Entry& entry : entries) {
        if (entry.operation.state == Operation::State::Running && entry.isDone && entry.begin <= lastPublished) {
            Finish(entry, {});
        }
    }
}

// Operations end in the order of their start.
void OperationRunner::OnEnd(int status, const Failure& failure) {
    const auto entry = std::ranges::find_if(
        entries, [](const Entry& one) { return one.operation.state == Operation::State::Running && !one.isDone; });
    if (entry == entries.end()) {
        return;
    }
    entry->isDone = true;
    if (status != yOK) {
        const bool hasReason = failure.status != yOK;
        Finish(*entry, hasReason ? failure
                                 : Failure{.status = yERROR_STATE,
                                           .text = "The sensor has reported a failure. Its log says why."});
    } else if (entry->waitsForFrame && lastPublished < entry->begin) {
        WaitForFrame(*entry);
    } else {
        Finish(*entry, {});
    }
}

void OperationRunner::WaitForFrame(Entry& entry) {
    entry.limit = std::make_unique<Vor::AsyncTimer>([this, id = entry.operation.id](Vor::AsyncTimer&) {
        const auto late = std::ranges::find_if(entries, [&](const Entry& one) { return one.operation.id == id; });
        if (late != entries.end() && late->operation.state == Operation::State::Running) {
            Finish(*late, {.status = yERROR_TIMEOUT, .text = "The frame of the trigger didn't come within a second."});
        }
    });
    entry.limit->Start(static_cast<unsigned long long>(FrameTimeout.count()), true);
}

void OperationRunner::Finish(Entry& entry, const Failure& failure) {
    Operation& operation = entry.operation;
    operation.state = failure.status == yOK ? Operation::State::Succeeded : Operation::State::Failed;
    operation.status = failure.status;
    operation.text = LoggedText(failure.text);
    framesWanted -= entry.waitsForFrame ? 1 : 0;
    if (entry.loadsJob && operation.state == Operation::State::Succeeded) {
        operation.notes = KeptNotes(environ.module.NotesOfLastLoad());
    }
    const Ended ended = std::exchange(entry.ended, nullptr);
    const Operation copy = operation;
    endedEvent.Raise(copy);
    if (ended) {
        ended(copy);
    }
}

} // namespace Sensor::Resources
