#pragma once

#include "VorApi/VorDataTree.h"
#include "VorRest/Request.h"

#include <functional>
#include <memory>
#include <string>

namespace VorApi {
class IStreamReceiver;
class ResourceRouter;
} // namespace VorApi

namespace VorRest {

/// Hands requests to the resources of a router. Every request runs on the main loop, one after the other. It is built
/// and destroyed there; requests that aren't answered by then are dropped.
class RequestProcessor {
public:
    static constexpr unsigned long long DefaultTimeLimit = 30'000'000;

    /// The router outlives it. `timeLimit`: microseconds that a resource may take for an answer that it gives later.
    explicit RequestProcessor(VorApi::ResourceRouter& router, unsigned long long timeLimit = DefaultTimeLimit);
    ~RequestProcessor();
    RequestProcessor(const RequestProcessor&) = delete;
    RequestProcessor& operator=(const RequestProcessor&) = delete;

    /// Returns the document of a resource, without its relations. Main loop only. `arguments` may have the member
    /// "schema", a boolean: whether the document includes its schema. `body` is empty, since a read has none. Throws
    /// what the resource throws; `yERROR_NOT_FOUND` when there is none at the path, `yERROR_UNIMPLEMENTED` when it has
    /// no document, `yERROR_STATE` when it would answer later.
    VorApi::VorDataTree Read(const std::string& path, const VorApi::VorDataTree& arguments, const std::string& body);

    using Answered = std::function<void(Answer)>;

    /// Runs the request later. `answered` is called exactly once, on the main loop, with what Read would return or
    /// throw; with `yERROR_TIMEOUT` when a resource that answers later doesn't do so in time. From any thread.
    void Process(Request request, Answered answered);
    /// As Process, but runs the request at once. `answered` is called inside this call unless the resource answers
    /// later. Main loop only.
    void Run(const Request& request, const Answered& answered);

    /// An open stream, which its destruction stops. Main loop only.
    class Stream {
    public:
        virtual ~Stream() = default;
    };
    /// Opens a stream of the resource at the path. Throws as Read does. Main loop only. The receiver outlives the
    /// stream.
    std::unique_ptr<Stream> OpenStream(const std::string& path, VorApi::IStreamReceiver& receiver,
                                       VorApi::RequestInfoEx::Query query = {});

private:
    class Requests;

    VorApi::ResourceRouter& router;
    std::shared_ptr<Requests> requests;
};

} // namespace VorRest
