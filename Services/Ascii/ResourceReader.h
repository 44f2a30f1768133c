#pragma once

#include "Services/Ascii/PendingAnswer.h"
#include "Vor/AsyncRunner.h"
#include "VorApi/Threads/NamedThread.h"
#include "yApi/yStatus.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace Services::Ascii {

/// What a client reads.
struct ReadTarget {
    std::string path;
    std::string pointer; ///< of a member of the document, a JSON pointer (RFC 6901); empty for the whole document

    /// Parses "PATH[#/MEMBER]". Throws a Vor::Exception with a text for the client when there is no path, when it leads
    /// to what clients of this service don't read, or when the member isn't a pointer.
    static ReadTarget Parse(const std::string& text);
};

/// Reads documents of the sensor's resources for clients, one after the other, on a thread of its own. A document is
/// read on the main loop. The thread waits for that, but no longer than until Stop: so the main loop may stop the
/// reader while reads wait for the main loop.
class ResourceReader {
public:
    static constexpr std::size_t MaxWaiting = 8; ///< reads that wait beside the one that is read
    /// The longest answer, and the longest document of which a member is read, in bytes.
    static constexpr std::size_t MaxAnswerSize = std::size_t{64} * 1024;
    static constexpr std::size_t MaxDocumentSize = std::size_t{1024} * 1024;
    static constexpr std::chrono::milliseconds DefaultTimeLimit{1000};

    /// Returns the document of a resource as JSON, or throws a Vor::Exception. Called on the main loop.
    using Read = std::function<std::string(const std::string& path)>;

    /// `ended` is called after the end of each read, on the thread of the reads. `timeLimit` is for one read, without
    /// its wait for the reads before it.
    ResourceReader(Read read, std::function<void()> ended, std::chrono::milliseconds timeLimit = DefaultTimeLimit);
    /// As Stop.
    ~ResourceReader();
    ResourceReader(const ResourceReader&) = delete;
    ResourceReader& operator=(const ResourceReader&) = delete;

    /// Reads the target into `answer`, and ends that; but not if the caller has dropped the answer before its turn.
    /// Returns false, and reads nothing, when MaxWaiting reads wait already. It doesn't wait. Throws a Vor::Exception
    /// when the system has no more threads. Not while Stop runs.
    bool Add(ReadTarget target, const std::shared_ptr<PendingAnswer>& answer);

    /// Drops the reads that wait, and ends the thread. It doesn't wait for the main loop. The next Add starts anew.
    void Stop();

private:
    struct Waiting {
        ReadTarget target;
        std::weak_ptr<PendingAnswer> answer; ///< its session owns it
    };
    struct Document;

    yStatus Run();
    void Serve(const ReadTarget& target, PendingAnswer& answer);
    std::string DocumentOf(const std::string& path);
    void ReadOnMainLoop(const std::string& path, Document& document);

    const Read read;
    const std::function<void()> ended;
    const std::chrono::milliseconds timeLimit;
    /// Guards the members below it up to `thread`, and the content of a Document. No other lock is acquired under it.
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Waiting> waiting;
    bool isReading = false;
    bool isStopping = false;
    Vor::NamedThread thread; ///< from the first Add until Stop
    Vor::AsyncRunner mainLoop;
};

} // namespace Services::Ascii
