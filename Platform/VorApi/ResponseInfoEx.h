#pragma once

#include "VorApi/Completion.h"
#include "VorApi/VorDataTree.h"

#include <functional>
#include <string>
#include <vector>

namespace VorApi {

/// What a resource adds to its document: relations to other resources and, instead of an answer at once, a later one.
class ResponseInfoEx {
public:
    struct Relation {
        enum class Kind {
            /// A resource that is part of this one.
            Embed,
            Link
        };
        Kind kind;
        std::string name;
        std::string path;
        bool asArray; ///< one of a list, however many there are
        VorDataTree properties;
    };

    /// A response that has to be given at once.
    ResponseInfoEx() = default;
    /// `makeCompletion` is called by the first Defer.
    explicit ResponseInfoEx(std::function<Completion()> makeCompletion);

    void Embed(const std::string& relation, const std::string& path, bool asArray, const VorDataTree& properties);
    void Link(const std::string& relation, const std::string& path, bool asArray, const VorDataTree& properties);
    /// In the order of the calls.
    const std::vector<Relation>& Relations() const { return relations; }

    /// Takes the answer over: what the resource returns or writes by then is no answer. Throws `yERROR_STATE` when it
    /// was taken already, or when this response has to be given at once.
    Completion Defer();
    bool IsDeferred() const { return deferred; }

    /// What the request asks for has begun, and goes on after the answer. The answer is the document of the path, which
    /// says how far it is.
    void Accept(std::string path);
    /// Empty unless Accept was called.
    const std::string& AcceptedPath() const { return acceptedPath; }

private:
    std::vector<Relation> relations;
    std::string acceptedPath;
    std::function<Completion()> makeCompletion;
    bool deferred = false;
};

} // namespace VorApi
