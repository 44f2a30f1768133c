#pragma once

#include "Sensor/Http/Budget.h"
#include "Vor/AsyncTimer.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>

namespace Vor {
class AsyncRunner;
}

namespace Sensor::Http {

/// Ensures that large documents are made one at a time, when the budget has room, and after what else the main loop
/// has to do. A document is large when its text was, the last time. Main loop only.
class LargeDocuments {
public:
    static constexpr std::size_t LargeSize = std::size_t{1024} * 1024; ///< bytes
    static constexpr std::size_t MaxWaiting = 16;
    static constexpr std::chrono::seconds MaxWaitTime{30};

    /// The right to make a large document, until its last copy goes. It may go on any thread.
    using Turn = std::shared_ptr<void>;

    /// A request for a document. One of `start` and `drop` is called on the main loop, unless this is destroyed before.
    struct Request {
        std::string name;
        std::function<bool()> isWanted;
        std::function<void(Turn)> start; ///< it is this document's turn
        std::function<void()> drop;      ///< it isn't wanted any more, or has waited for MaxWaitTime
    };

    /// Both must outlive this, and no turn may end on another thread while this is destroyed.
    LargeDocuments(Budget& budget, Vor::AsyncRunner& runner);
    ~LargeDocuments();
    LargeDocuments(const LargeDocuments&) = delete;
    LargeDocuments& operator=(const LargeDocuments&) = delete;

    /// Documents are named by their path, and by what else their size depends on.
    bool IsLarge(const std::string& name) const { return TextSize(name) > 0; }
    /// What a large document's text had the last time; 0 for one that isn't large.
    std::size_t TextSize(const std::string& name) const;
    /// The document's text had that size.
    void Note(const std::string& name, std::size_t textSize);
    /// As Note, from the bytes that the document's tree occupies, before there is a text.
    void NoteTree(const std::string& name, std::size_t treeSize);

    /// Calls back later; false, without that, when too many wait.
    bool Wait(Request request);
    /// For a document that proved to be large while it was made.
    Turn BeginTurn();

private:
    struct Waiting {
        Request request;
        std::unique_ptr<Vor::AsyncTimer> timer;
    };
    using WaitingList = std::list<Waiting>;

    void StartLater();
    void StartNext();
    /// Removes it from those that wait.
    Request Extract(WaitingList::iterator place);
    void Drop(WaitingList::iterator place);
    void DropUnwanted();

    Budget& budget;
    Vor::AsyncRunner& runner;
    const std::shared_ptr<const bool> alive = std::make_shared<bool>(true);
    std::map<std::string, std::size_t> textSizes; ///< of large documents, by name
    WaitingList waiting;
    std::size_t turns = 0; ///< that haven't ended
};

} // namespace Sensor::Http
