#include "Sensor/Http/LargeDocuments.h"

#include "Vor/AsyncRunner.h"
#include "VorApi/LogThrown.h"

#include <utility>

namespace Sensor::Http {

namespace {

/// A document's tree occupies about that many bytes for each byte of the text.
constexpr std::size_t TreeBytesPerTextByte = 5;

} // namespace

LargeDocuments::LargeDocuments(Budget& budget, Vor::AsyncRunner& runner)
    : budget(budget)
    , runner(runner) {}

LargeDocuments::~LargeDocuments() {
    budget.StopWaiting();
}

void LargeDocuments::Note(const std::string& path, std::size_t textSize) {
    if (textSize > LargeSize) {
        textSizes[path] = textSize;
    } else {
        textSizes.erase(path);
    }
}

void LargeDocuments::NoteTree(const std::string& path, std::size_t treeSize) {
    Note(path, treeSize / TreeBytesPerTextByte);
}

bool LargeDocuments::Wait(const std::string& path, std::function<bool()> isWanted, std::function<void(Turn)> start) {
    if (waiting.size() >= MaxWaiting) {
        std::erase_if(waiting, [](const Waiting& other) { return !other.isWanted(); });
    }
    if (waiting.size() >= MaxWaiting) {
        return false;
    }
    waiting.push_back({path, std::move(isWanted), std::move(start)});
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
        const auto size = textSizes.find(waiting.front().path);
        const std::size_t expected = size == textSizes.end() ? 0 : size->second * (TreeBytesPerTextByte + 1);
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
