#include "Sensor/Http/LargeDocuments.h"

#include "Vor/AsyncRunner.h"
#include "VorApi/LogThrown.h"

#include <utility>

namespace Sensor::Http {

namespace {

/// A document's tree occupies about that many bytes for each byte of the text: 3.1 for a register assembly of 60,000
/// blocks with its schema, 2.4 without, as malloc counts them (bench-tree).
constexpr std::size_t TreeBytesPerTextByte = 3;

} // namespace

LargeDocuments::LargeDocuments(Budget& budget, Vor::AsyncRunner& runner)
    : budget(budget)
    , runner(runner) {}

LargeDocuments::~LargeDocuments() {
    budget.StopWaiting();
}

std::size_t LargeDocuments::TextSize(const std::string& name) const {
    const auto size = textSizes.find(name);
    return size == textSizes.end() ? 0 : size->second;
}

void LargeDocuments::Note(const std::string& name, std::size_t textSize) {
    if (textSize > LargeSize) {
        textSizes[name] = textSize;
    } else {
        textSizes.erase(name);
    }
}

void LargeDocuments::NoteTree(const std::string& name, std::size_t treeSize) {
    Note(name, treeSize / TreeBytesPerTextByte);
}

bool LargeDocuments::Wait(Request request) {
    if (waiting.size() >= MaxWaiting) {
        DropUnwanted();
    }
    if (waiting.size() >= MaxWaiting) {
        return false;
    }
    const auto place = waiting.insert(waiting.end(), {std::move(request), nullptr});
    place->timer = std::make_unique<Vor::AsyncTimer>([this, place](Vor::AsyncTimer&) { Drop(place); });
    place->timer->Start(static_cast<unsigned long long>(std::chrono::microseconds(MaxWaitTime).count()), true);
    StartLater();
    return true;
}

LargeDocuments::Request LargeDocuments::Extract(WaitingList::iterator place) {
    Request request = std::move(place->request);
    waiting.erase(place);
    return request;
}

// There may be room for what waits behind it.
void LargeDocuments::Drop(WaitingList::iterator place) {
    Extract(place).drop();
    StartLater();
}

void LargeDocuments::DropUnwanted() {
    for (auto next = waiting.begin(); next != waiting.end();) {
        const auto place = next++;
        if (!place->request.isWanted()) {
            Drop(place);
        }
    }
}

LargeDocuments::Turn LargeDocuments::BeginTurn() {
    ++turns;
    return {static_cast<void*>(this), [this, token = std::weak_ptr(alive)](void*) {
                if (!token.expired()) {
                    Vor::CleanUp([this] {
                        runner.Run([this] {
                            --turns;
                            StartNext();
                        });
                    });
                }
            }};
}

// What the main loop has to do already goes first.
void LargeDocuments::StartLater() {
    runner.Run([this] { StartNext(); });
}

void LargeDocuments::StartNext() {
    while (turns == 0 && !waiting.empty()) {
        const auto first = waiting.begin();
        const std::size_t expected = TextSize(first->request.name) * (TreeBytesPerTextByte + 1);
        if (!first->request.isWanted()) {
            Drop(first);
        } else if (budget.HasRoom(expected, [this] { StartLater(); })) {
            Extract(first).start(BeginTurn());
        } else {
            return;
        }
    }
}

} // namespace Sensor::Http
