#pragma once

#include "Vor/LogOutput.h"

#include <cstdlib>
#include <vector>

#include <rapidcheck.h>

namespace Tests {

/// A property is checked with a hundred lists of requests, whose mean length is half of the longest: more than 10,000
/// steps, or 100,000 in a long run.
template <class Request>
rc::Gen<std::vector<Request>> RequestListGen(const rc::Gen<Request>& request) {
    const int longest = std::getenv("VOR_LONG_TESTS") == nullptr ? 240 : 2400;
    return rc::gen::resize(longest, rc::gen::container<std::vector<Request>>(request));
}

/// Keeps the entries of the user's log for refused requests out of the output of the test.
class SilentLog {
public:
    SilentLog() {
        Vor::LogOutput::Set([](const Vor::LogRecord&) {});
    }
    ~SilentLog() { Vor::LogOutput::Set({}); }
    SilentLog(const SilentLog&) = delete;
    SilentLog& operator=(const SilentLog&) = delete;
};

} // namespace Tests
