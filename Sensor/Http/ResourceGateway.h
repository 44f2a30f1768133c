#pragma once

#include "Net/NetThread.h"
#include "Sensor/Http/Budget.h"
#include "Sensor/Http/ExplanationsResource.h"
#include "Sensor/Http/HostRules.h"
#include "Sensor/Http/IHttpHandler.h"
#include "Sensor/Http/IUploadResource.h"
#include "Sensor/Http/LargeDocuments.h"
#include "Sensor/Http/ResourceMap.h"
#include "Vor/AsyncRunner.h"
#include "VorApi/RoutedResource.h"
#include "VorRest/RequestProcessor.h"

#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace VorApi {
class ResourceRouter;
}

namespace Sensor::Http {

class IEventStreams;
class IRevisions;

/// The resources of a router over HTTP: methods become the verbs of resources, documents hypertext, failures problem
/// documents. Resources run on the main loop; bodies are parsed on the network thread, and documents become text on
/// threads of this.
///
/// It is built and destroyed on the main loop's thread, where the loop need not run any more. Who calls it, the server,
/// is destroyed before.
class ResourceGateway : public IHttpHandler {
public:
    struct Settings {
        std::vector<std::string> hosts = {};                      ///< further names by which clients call this host
        std::size_t memoryLimit = std::size_t{256} * 1024 * 1024; ///< bytes, of documents until they are sent
    };

    /// The most documents that "?expand=" fills.
    static constexpr std::size_t MaxExpanded = 1000;

    /// Registers "/problems" and "/rels". All arguments outlive this. Throws what ResourceRouter::Register throws.
    ResourceGateway(const Settings& settings, VorApi::ResourceRouter& router, VorRest::RequestProcessor& requests,
                    const IRevisions& revisions, IEventStreams& streams);
    ~ResourceGateway() override;
    ResourceGateway(const ResourceGateway&) = delete;
    ResourceGateway& operator=(const ResourceGateway&) = delete;

    std::optional<HttpResponse> CheckHeader(const HttpRequest& request) override;
    void Handle(HttpRequest request, Responder responder) override;
    /// The body of each PUT is.
    bool IsInPieces(const HttpRequest& request) const override;
    std::shared_ptr<IBodyReceiver> Receive(HttpRequest request, Responder responder) override;

private:
    class UploadReceiver;
    struct Call;
    using CallPointer = std::shared_ptr<Call>;
    using Then = std::function<void(VorRest::Answer)>;

    CallPointer MakeCall(HttpRequest request, Responder responder) const;
    /// The refusal of a request whose query can't be used.
    static std::optional<HttpResponse> ReadQuery(Call& call);
    /// The refusal of a request whose body can't be used. Network thread.
    std::optional<HttpResponse> ParseBody(Call& call) const;

    // Main loop.
    void Process(const CallPointer& call);
    void ProcessVerb(const CallPointer& call, VorRest::Verb verb);
    /// The answer is the document of what goes on at the path.
    static void Accept(Call& call, const std::string& path);
    void OpenStream(Call& call);
    void BeginUpload(const CallPointer& call, UploadReceiver& receiver);
    void EndUpload(const CallPointer& call, const UploadOutcome& outcome);
    /// The refusal of a body that isn't a whole content, or mustn't become one since there is another one, or none.
    std::optional<HttpResponse> CheckUpload(const Call& call) const;
    /// The refusal of a change to a configuration that isn't the one that the client has read.
    std::optional<HttpResponse> CheckPrecondition(const Call& call) const;
    /// Runs a request at once. `then` gets the answer, perhaps later.
    void Ask(const CallPointer& call, const VorRest::Request& request, Then then);
    /// As Ask, but `then` gets only the answer of a success. A failure is the client's answer.
    void Run(const CallPointer& call, const VorRest::Request& request, Then then);
    void Fail(const Call& call, const std::exception_ptr& failure, VorRest::Verb verb) const;

    void Read(const CallPointer& call);
    void MakeDocument(const CallPointer& call);
    /// Fills what is to be expanded, from one part on.
    void Expand(const CallPointer& call, const std::shared_ptr<HalDocument>& document, std::size_t part);
    /// Makes text of it and responds.
    void Send(const CallPointer& call, const std::shared_ptr<HalDocument>& document);
    /// Responds with a document that is nothing but bytes.
    void SendBytes(const Call& call, const VorApi::VorDataTree& document) const;
    /// The document of an answer, which is in use until the text is sent.
    std::shared_ptr<HalDocument> Document(Call& call, const std::string& path, VorRest::Answer answer);

    const HostRules hostRules;
    VorRest::RequestProcessor& requests;
    const IRevisions& revisions;
    IEventStreams& streams;
    const ResourceMap map;
    VorApi::RoutedResource<ExplanationsResource> problems;
    VorApi::RoutedResource<ExplanationsResource> relations;

    const std::shared_ptr<const bool> alive = std::make_shared<bool>(true);
    const std::shared_ptr<Budget> budget;
    Vor::AsyncRunner runner;
    LargeDocuments large{*budget, runner};
    Net::NetThread textThread{"HttpText"};
    Net::NetThread largeTextThread{"HttpLargeText"};
};

} // namespace Sensor::Http
