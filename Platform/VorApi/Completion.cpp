#include "VorApi/Completion.h"

#include <atomic>
#include <utility>

namespace VorApi {

struct Completion::State {
    explicit State(Deliver deliver)
        : deliver(std::move(deliver)) {}

    const Deliver deliver;
    std::atomic<bool> answered = false;
};

Completion::Completion(Deliver deliver)
    : state(std::make_shared<State>(std::move(deliver))) {}

bool Completion::Complete(VorDataTree document) const {
    return Answer(nullptr, std::move(document));
}

bool Completion::Fail(std::exception_ptr failure) const {
    return Answer(std::move(failure), VorDataTree());
}

bool Completion::Answer(std::exception_ptr failure, VorDataTree document) const {
    if (state->answered.exchange(true)) {
        return false;
    }
    state->deliver(std::move(failure), std::move(document));
    return true;
}

} // namespace VorApi
