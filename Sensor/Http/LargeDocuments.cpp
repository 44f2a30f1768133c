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

bool LargeDocuments::Wait(const std::string& name, std::function<bool()> isWanted, std::function<void(Turn)> start) {
    if (waiting.size() >= MaxWaiting) {
        std::erase_if(waiting, [](const Waiting& other) { return !other.isWanted(); });
    }
    if (waiting.size() >= MaxWaiting) {
        return false;
    }
    waiting.push_back({name, std::move(isWanted), std::move(start)});
    StartLater();
    return true;
}

LargeDocuments::Turn LargeDocuments::TakeTurn() {
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
        const std::size_t expected = TextSize(waiting.front().name) * (TreeBytesPerTextByte + 1);
        if (!waiting.front().isWanted()) {
            waiting.pop_front();
        } else if (budget.HasRoom(expected, [this] { StartLater(); })) {
            const Waiting next = std::move(waiting.front());
            waiting.pop_front();
            next.start(TakeTurn());
        } else {
            return;
        }
    }
}

} // namespace Sensor::Http
