#pragma once

#include "VorApi/RequestInfoEx.h"
#include "VorApi/ResponseInfoEx.h"
#include "VorApi/VorDataTree.h"

#include <exception>
#include <string>
#include <vector>

namespace VorRest {

enum class Verb { Read, Update, Create, Delete, Invoke };

/// What a client asks of a resource.
struct Request {
    Verb verb = Verb::Read;
    std::string path;
    /// The document of an update or a creation, or the arguments of a command; null when there is none. Not to be
    /// changed any more.
    VorApi::VorDataTree body = {};
    bool wantsSchema = false;
    /// Resources ignore what they don't know.
    VorApi::RequestInfoEx::Query query = {};
    /// See RequestInfoEx::PrefersAsync.
    bool prefersAsync = false;
};

/// The answer to a request.
struct Answer {
    std::exception_ptr failure; ///< null for a success, and then the rest is valid
    VorApi::VorDataTree document;
    std::vector<VorApi::ResponseInfoEx::Relation> relations;
    /// Of what was created.
    std::string id = std::string();
    /// Of what was created, or of what goes on; see ResponseInfoEx::Accept.
    std::string path = std::string();
    bool isAccepted = false; ///< what was asked for goes on after this answer
};

} // namespace VorRest
