#include "VorApi/ResponseInfoEx.h"

#include "Vor/Exception.h"

#include <utility>

namespace VorApi {

ResponseInfoEx::ResponseInfoEx(std::function<Completion()> makeCompletion)
    : makeCompletion(std::move(makeCompletion)) {}

void ResponseInfoEx::Embed(const std::string& relation, const std::string& path, bool asArray,
                           const VorDataTree& properties) {
    relations.push_back({Relation::Kind::Embed, relation, path, asArray, properties});
}

void ResponseInfoEx::Link(const std::string& relation, const std::string& path, bool asArray,
                          const VorDataTree& properties) {
    relations.push_back({Relation::Kind::Link, relation, path, asArray, properties});
}

void ResponseInfoEx::Accept(std::string path) {
    acceptedPath = std::move(path);
}

Completion ResponseInfoEx::Defer() {
    if (!makeCompletion) {
        Vor::Throw(yERROR_STATE, "This request has to be answered at once.");
    }
    if (deferred) {
        Vor::Throw(yERROR_STATE, "The answer of this request was taken already.");
    }
    Completion completion = makeCompletion();
    deferred = true;
    return completion;
}

} // namespace VorApi
