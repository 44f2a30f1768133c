#include "VorRest/RequestProcessor.h"

#include "Vor/AsyncRunner.h"
#include "Vor/AsyncTimer.h"
#include "Vor/Exception.h"
#include "VorApi/DocumentResourceBase.h"
#include "VorApi/ICallableResource.h"
#include "VorApi/IParentResource.h"
#include "VorApi/LogThrown.h"
#include "VorApi/ResourceRouter.h"
#include "VorApi/StreamResourceBase.h"

#include <cstdint>
#include <map>
#include <utility>

#include <nlohmann/json.hpp>

namespace VorRest {

using VorApi::RequestInfoEx;
using VorApi::ResourceRouter;
using VorApi::ResponseInfoEx;
using VorApi::VorDataTree;

namespace {

ResourceRouter::Match FindResource(const ResourceRouter& router, const std::string& path) {
    auto match = router.Find(path);
    if (!match) {
        Vor::Throw(yERROR_NOT_FOUND, "There is no resource at %s.", path);
    }
    return *std::move(match);
}

/// The resource as one of a kind that it needs for the request.
template <class Kind>
Kind& As(VorApi::IResource& resource) {
    auto* const kind = dynamic_cast<Kind*>(&resource);
    if (kind == nullptr) {
        Vor::Throw(yERROR_UNIMPLEMENTED);
    }
    return *kind;
}

/// Runs a request up to its answer, or until the resource has taken the answer over. `answer.document` is then the
/// document that the resource may still fill.
void Run(const ResourceRouter& router, const Request& request, ResponseInfoEx& response, Answer& answer) {
    auto match = FindResource(router, request.path);
    const RequestInfoEx info(std::move(match.keys), request.wantsSchema, request.query, request.prefersAsync);
    switch (request.verb) {
    case Verb::Read:
        answer.document.MakeObject();
        As<VorApi::DocumentResourceBase>(match.resource).Document(info, response, answer.document);
        break;
    case Verb::Update:
        As<VorApi::DocumentResourceBase>(match.resource).UpdateDocument(info, request.body.ToJson());
        break;
    case Verb::Create: {
        auto created = As<VorApi::IParentResource>(match.resource).Create(info, request.body.ToJson());
        answer.id = std::move(created.id);
        answer.path = std::move(created.path);
        break;
    }
    case Verb::Delete:
        As<VorApi::IParentResource>(match.resource).Delete(info, response);
        break;
    case Verb::Invoke:
        answer.document = As<VorApi::ICallableResource>(match.resource).Invoke(info, response, request.body);
        break;
    }
    answer.relations = response.Relations();
    if (!response.AcceptedPath().empty()) {
        answer.isAccepted = true;
        answer.path = response.AcceptedPath();
    }
}

class OpenedStream : public RequestProcessor::Stream {
public:
    OpenedStream(const ResourceRouter& router, const VorApi::IResource& resource, VorApi::StreamResourceBase& streams,
                 unsigned int id)
        : router(router)
        , resource(&resource)
        , streams(&streams)
        , id(id) {}
    OpenedStream(const OpenedStream&) = delete;
    OpenedStream& operator=(const OpenedStream&) = delete;

    // A resource that is deregistered may be gone, and its streams with it.
    ~OpenedStream() override {
        if (router.Has(*resource)) {
            Vor::CleanUp([this] { streams->StopStream(id); });
        }
    }

private:
    const ResourceRouter& router;
    const VorApi::IResource* resource; ///< the one at the path, which `streams` belongs to
    VorApi::StreamResourceBase* streams;
    unsigned int id;
};

} // namespace

/// The requests that aren't answered yet. Main loop only, `runner` aside.
class RequestProcessor::Requests : public std::enable_shared_from_this<RequestProcessor::Requests> {
public:
    Requests(const ResourceRouter& router, unsigned long long timeLimit)
        : router(router)
        , timeLimit(timeLimit) {}

    void Post(std::function<void()> call) { runner.Run(std::move(call)); }

    void Run(const Request& request, const Answered& answered) {
        const std::uint64_t id = ++lastId;
        ResponseInfoEx response([this, id, &answered] { return Defer(id, answered); });
        Answer answer;
        try {
            VorRest::Run(router, request, response, answer);
        } catch (...) {
            answer.failure = std::current_exception();
        }
        if (!response.IsDeferred()) {
            answered(std::move(answer));
            return;
        }
        Later& later = laters.at(id);
        later.answer = std::move(answer);
        if (later.answer.failure != nullptr) {
            later.completion.Fail(later.answer.failure);
        }
    }

private:
    /// A request that is answered later.
    struct Later {
        Answered answered;
        VorApi::Completion completion;
        std::unique_ptr<Vor::AsyncTimer> limit;
        Answer answer = {};
    };

    VorApi::Completion Defer(std::uint64_t id, const Answered& answered) {
        VorApi::Completion completion(
            [weak = weak_from_this(), id](const std::exception_ptr& failure, const VorDataTree& document) {
                if (const auto self = weak.lock()) {
                    self->Post([weak, id, failure, document] {
                        if (const auto requests = weak.lock()) {
                            requests->Finish(id, failure, document);
                        }
                    });
                }
            });
        auto limit = std::make_unique<Vor::AsyncTimer>([completion](Vor::AsyncTimer&) {
            completion.Fail(std::make_exception_ptr(Vor::Exception(
                __LINE__, __FILE__, yERROR_TIMEOUT, "RequestProcessor", "The resource gave no answer in time.")));
        });
        limit->Start(timeLimit, true);
        laters.emplace(id, Later{answered, completion, std::move(limit)});
        return completion;
    }

    void Finish(std::uint64_t id, const std::exception_ptr& failure, const VorDataTree& document) {
        const auto later = laters.extract(id);
        Answer answer = std::move(later.mapped().answer);
        answer.failure = failure;
        answer.document = document;
        later.mapped().answered(std::move(answer));
    }

    const ResourceRouter& router;
    const unsigned long long timeLimit;
    std::map<std::uint64_t, Later> laters;
    std::uint64_t lastId = 0;
    Vor::AsyncRunner runner;
};

RequestProcessor::RequestProcessor(ResourceRouter& router, unsigned long long timeLimit)
    : router(router)
    , requests(std::make_shared<Requests>(router, timeLimit)) {}

RequestProcessor::~RequestProcessor() = default;

VorDataTree RequestProcessor::Read(const std::string& path, const VorDataTree& arguments, const std::string& body) {
    if (!body.empty()) {
        Vor::Throw(yERROR_PARAMETER, "A read of %s has a body, and none was expected.", path);
    }
    Request request;
    request.path = path;
    request.wantsSchema = arguments.Contains("schema") && arguments["schema"].AsBool();
    ResponseInfoEx response;
    Answer answer;
    VorRest::Run(router, request, response, answer);
    return answer.document;
}

void RequestProcessor::Process(Request request, Answered answered) {
    requests->Post([weak = std::weak_ptr(requests), request = std::move(request), answered = std::move(answered)] {
        if (const auto self = weak.lock()) {
            self->Run(request, answered);
        }
    });
}

void RequestProcessor::Run(const Request& request, const Answered& answered) {
    requests->Run(request, answered);
}

std::unique_ptr<RequestProcessor::Stream> RequestProcessor::OpenStream(const std::string& path,
                                                                       VorApi::IStreamReceiver& receiver,
                                                                       VorApi::RequestInfoEx::Query query) {
    auto match = FindResource(router, path);
    VorApi::StreamResourceBase* const streams = As<VorApi::StreamResourceBase>(match.resource).StreamableProvider();
    if (streams == nullptr) {
        Vor::Throw(yERROR_UNIMPLEMENTED);
    }
    const unsigned int id =
        streams->StartStream(RequestInfoEx(std::move(match.keys), false, std::move(query)), receiver);
    return std::make_unique<OpenedStream>(router, match.resource, *streams, id);
}

} // namespace VorRest
