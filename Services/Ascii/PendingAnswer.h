#pragma once

#include "yApi/yStatus.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace Services::Ascii {

/// A request whose answer comes later. Whoever processes it writes the members, then calls End; after that they belong
/// to the session of the request.
struct PendingAnswer {
    enum class Kind { Command, State, Job, Document };

    explicit PendingAnswer(Kind kind)
        : kind(kind) {}

    void End(yStatus endStatus) {
        status = endStatus;
        hasEnded.store(true, std::memory_order_release);
    }
    bool HasEnded() const { return hasEnded.load(std::memory_order_acquire); }

    const Kind kind;
    yStatus status = yERROR;
    const char* failure = nullptr; ///< text for a command that fails with yERROR
    std::string reason;            ///< text of a failure; empty for the one that its status has

    /// The answer of the kinds State and Job.
    bool isScanning = false;
    std::uint8_t alignment = 0; ///< 0 not aligned, 1 aligned, 2 aligning
    bool isBusy = false;
    std::string job;

    std::string document; ///< the answer of the kind Document, JSON in one line of ASCII

private:
    std::atomic<bool> hasEnded{false};
};

} // namespace Services::Ascii
