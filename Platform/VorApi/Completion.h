#pragma once

#include "VorApi/VorDataTree.h"

#include <exception>
#include <functional>
#include <memory>

namespace VorApi {

/// The right to answer one request later. Copies are the same right, of which the first use counts; using it when the
/// client has gone, or when the request was answered for taking too long, does nothing. From any thread.
class Completion {
public:
    /// Gets the failure, null for a success, and the document.
    using Deliver = std::function<void(std::exception_ptr, VorDataTree)>;

    /// `deliver` is called at most once, on the thread that answers.
    explicit Completion(Deliver deliver);

    /// Both return whether this was the answer.
    bool Complete(VorDataTree document) const;
    bool Fail(std::exception_ptr failure) const;

private:
    struct State;

    bool Answer(std::exception_ptr failure, VorDataTree document) const;

    std::shared_ptr<State> state;
};

} // namespace VorApi
