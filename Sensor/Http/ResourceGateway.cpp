#include "Sensor/Http/ResourceGateway.h"

#include "Sensor/Http/EntityTags.h"
#include "Sensor/Http/FailureResponse.h"
#include "Sensor/Http/FieldList.h"
#include "Sensor/Http/IEventStreams.h"
#include "Sensor/Http/IRevisions.h"
#include "Sensor/Http/MediaTypes.h"
#include "Sensor/Http/Problem.h"
#include "Sensor/Http/RequestTarget.h"
#include "Vor/ByteVector.h"
#include "Vor/DocumentErrors.h"
#include "Vor/Exception.h"
#include "Vor/JsonText.h"
#include "VorApi/ResourceRouter.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include <nlohmann/json.hpp>

namespace Sensor::Http {

using VorApi::VorDataTree;
using VorRest::Answer;
using VorRest::Verb;

namespace {

/// A body of JSON occupies at most about that many bytes for each of its own while it is parsed.
constexpr std::size_t BytesPerBodyByte = 48;

/// The value of "schema" in a query for JSON Schema instead of the tree's own.
constexpr const char* JsonSchemaVersion = "2020-12";

HttpResponse TooMuch() {
    return ProblemResponse({503, "The documents that are being made and sent occupy all the memory that they may."});
}

HttpResponse NotFound(const std::string& path) {
    return ProblemResponse({404, "There is no resource at " + path + ".", yERROR_NOT_FOUND});
}

/// Whether it is a question about the server as a whole (RFC 9110, 9.3.7).
bool IsAboutServer(const HttpRequest& request) {
    return request.method == "OPTIONS" && request.target == "*";
}

bool HasBody(const HttpRequest& request) {
    return !request.body.empty() || request.fields.Count("Transfer-Encoding") > 0 ||
           request.fields.Find("Content-Length").value_or("0") != "0";
}

/// Collects the members of a patch that are null: a merge patch removes these (RFC 7396), and no member of a resource
/// can be removed.
class NullCollector {
public:
    void Collect(const nlohmann::json& patch) {
        for (auto member = patch.begin(); member != patch.end() && !IsFull(); ++member) {
            place.push_back(&member.key());
            if (member->is_null()) {
                Add(Pointer());
            } else if (member->is_object()) {
                Collect(*member);
            }
            place.pop_back();
        }
    }
    void ThrowIfAny() const { errors.ThrowIfAny(); }

private:
    /// Bytes. A patch may have one long name in the places of many members.
    static constexpr std::size_t MaxPointersSize = 65536;

    bool IsFull() const { return errors.IsFull() || pointersSize >= MaxPointersSize; }
    void Add(const std::string& pointer) {
        pointersSize += pointer.size();
        errors.Add(pointer, Vor::Exception(__LINE__, __FILE__, yERROR_PARAMETER, __func__,
                                           "null would remove %s, and members can't be removed.", pointer));
    }
    std::string Pointer() const {
        nlohmann::json::json_pointer pointer;
        for (const std::string* const name : place) {
            pointer.push_back(*name);
        }
        return pointer.to_string();
    }

    std::vector<const std::string*> place; ///< the names that lead to what is looked at
    std::size_t pointersSize = 0;
    Vor::DocumentErrors errors;
};

/// Whether the client would rather not wait (RFC 7240, 4.1).
bool PrefersAsync(const HttpFields& fields) {
    const std::string prefer = fields.Find("Prefer").value_or("");
    return std::ranges::any_of(SplitList(prefer, ','), [](std::string_view preference) {
        return LowerCase(Trim(preference.substr(0, preference.find(';')))) == "respond-async";
    });
}

void RequirePatch(const nlohmann::json& patch) {
    if (!patch.is_object()) {
        Vor::Throw(yERROR_PARAMETER, "The document of a PATCH is an object with the members to be changed.");
    }
    NullCollector nulls;
    nulls.Collect(patch);
    nulls.ThrowIfAny();
}

} // namespace

/// A request until it is answered.
struct ResourceGateway::Call {
    HttpRequest request;
    Responder responder;
    RequestTarget target = {};
    VorDataTree body = {};
    bool wantsSchema = false;
    bool wantsJsonSchema = false;           ///< and that as JSON Schema
    std::vector<std::string> expanded = {}; ///< relations
    /// Of the answer.
    unsigned status = 200;
    HttpFields fields = {};
    bool hasChanged = false; ///< what it was to change; what is left to do is a document for the client

    std::size_t treeSize = 0; ///< bytes
    std::shared_ptr<Budget::Share> share;
    LargeDocuments::Turn turn = nullptr;

    /// Of the document among the large ones.
    std::string Name() const {
        return target.path +
               (wantsJsonSchema ? "?jsonSchema"
                : wantsSchema   ? "?schema"
                                : "") +
               (expanded.empty() ? "" : "?expand");
    }
};

/// The way of a body from the network thread to an upload that begins on the main loop.
class ResourceGateway::UploadReceiver : public IBodyReceiver {
public:
    /// Once.
    void Open(std::unique_ptr<IUpload> opened) {
        upload = std::move(opened);
        isOpen = true;
    }

    bool HasRoom() const override { return isOpen && upload->HasRoom(); }
    void Take(std::string piece) override { upload->Take(std::move(piece)); }
    void End() override { upload->End(); }

private:
    std::atomic<bool> isOpen = false;
    std::unique_ptr<IUpload> upload; ///< doesn't change any more when that is true
};

ResourceGateway::ResourceGateway(const Settings& settings, VorApi::ResourceRouter& router,
                                 VorRest::RequestProcessor& requests, const IRevisions& revisions,
                                 IEventStreams& streams)
    : hostRules(settings.hosts)
    , requests(requests)
    , revisions(revisions)
    , streams(streams)
    , map(router)
    , problems(router, ProblemsRoute, ProblemsRoute, ExplainProblems())
    , relations(router, RelationsRoute, RelationsRoute, ExplainRelations())
    , budget(std::make_shared<Budget>(settings.memoryLimit)) {}

ResourceGateway::~ResourceGateway() = default;

std::optional<HttpResponse> ResourceGateway::CheckHeader(const HttpRequest& request) {
    const auto target = RequestTarget::Parse(IsAboutServer(request) ? "/" : request.target);
    if (!target) {
        return ProblemResponse({400, "The target '" + request.target +
                                         "' isn't a path that begins with a slash, of characters and percent codes in "
                                         "UTF-8."});
    }
    if (auto refusal = hostRules.Check(request, target->authority)) {
        return refusal;
    }
    const bool isPatch = request.method == "PATCH";
    if (!(isPatch || request.method == "POST") || !HasBody(request)) {
        return std::nullopt;
    }
    const bool isJson = isPatch ? IsContentType(request.fields, {"application/json", "application/merge-patch+json"})
                                : IsContentType(request.fields, {"application/json"});
    if (isJson) {
        return std::nullopt;
    }
    const std::string types(isPatch ? MergePatchTypes : "application/json");
    HttpResponse refusal = ProblemResponse({415, "The body is '" + request.fields.Find("Content-Type").value_or("") +
                                                     "', and one of these types, in UTF-8, was expected: " + types});
    refusal.fields.Add(isPatch ? "Accept-Patch" : "Accept", types);
    return refusal;
}

void ResourceGateway::Handle(HttpRequest request, Responder responder) {
    if (auto refusal = CheckHeader(request)) {
        responder.Respond(*std::move(refusal));
        return;
    }
    if (IsAboutServer(request)) {
        responder.Respond({.status = 204});
        return;
    }
    const CallPointer call = MakeCall(std::move(request), std::move(responder));
    auto refusal = ReadQuery(*call);
    if (!refusal) {
        refusal = ParseBody(*call);
    }
    if (refusal) {
        call->responder.Respond(*std::move(refusal));
        return;
    }
    runner.Run([this, call] { Process(call); });
}

bool ResourceGateway::IsInPieces(const HttpRequest& request) const {
    return request.method == "PUT" && HasBody(request);
}

std::shared_ptr<IBodyReceiver> ResourceGateway::Receive(HttpRequest request, Responder responder) {
    const CallPointer call = MakeCall(std::move(request), std::move(responder));
    auto receiver = std::make_shared<UploadReceiver>();
    if (auto refusal = ReadQuery(*call)) {
        call->responder.Respond(*std::move(refusal));
    } else {
        runner.Run([this, call, weak = std::weak_ptr(receiver)] {
            if (const auto waiting = weak.lock()) { // the client hasn't gone
                BeginUpload(call, *waiting);
            }
        });
    }
    return receiver;
}

ResourceGateway::CallPointer ResourceGateway::MakeCall(HttpRequest request, Responder responder) const {
    auto call = std::make_shared<Call>(Call{.request = std::move(request),
                                            .responder = std::move(responder),
                                            .share = std::make_shared<Budget::Share>(budget)});
    call->target = *RequestTarget::Parse(call->request.target);
    call->target.path = ResourceMap::Canonical(call->target.path);
    return call;
}

std::optional<HttpResponse> ResourceGateway::ReadQuery(Call& call) {
    if (const std::string* const schema = call.target.FindQuery("schema")) {
        call.wantsJsonSchema = *schema == JsonSchemaVersion;
        call.wantsSchema = *schema == "1" || call.wantsJsonSchema;
        if (!call.wantsSchema && *schema != "0") {
            return ProblemResponse(
                {400, "The query has schema=" + *schema + ", and 0, 1 or " + JsonSchemaVersion + " was expected."});
        }
    }
    if (const std::string* const expand = call.target.FindQuery("expand")) {
        for (const std::string_view relation : SplitList(*expand, ',')) {
            call.expanded.emplace_back(relation);
        }
    }
    return std::nullopt;
}

std::optional<HttpResponse> ResourceGateway::ParseBody(Call& call) const {
    const std::string body = std::exchange(call.request.body, "");
    const bool isPatch = call.request.method == "PATCH";
    if (!isPatch && (call.request.method != "POST" || body.empty())) {
        return std::nullopt;
    }
    if (!budget->HasRoom(body.size() * BytesPerBodyByte)) {
        return TooMuch();
    }
    call.share->Change(body.size() * BytesPerBodyByte);
    nlohmann::json json;
    try {
        json = Vor::ParseJson(body);
    } catch (const Vor::Exception& e) {
        return ProblemResponse(
            {400, std::string("The body isn't the JSON that was expected. ") + e.what(), e.Status()});
    }
    if (isPatch) {
        try {
            RequirePatch(json);
        } catch (const Vor::Exception&) {
            return FailureResponse(std::current_exception(), Verb::Update, {.patch = true});
        }
    }
    call.body = VorDataTree::FromJson(json);
    return std::nullopt;
}

void ResourceGateway::Process(const CallPointer& call) {
    const std::string& method = call->request.method;
    const std::string& path = call->target.path;
    if (method == "GET" && AcceptsExplicitly(call->request.fields, EventStream)) {
        OpenStream(*call);
        return;
    }
    if (const auto verb = map.VerbOf(method, path)) {
        ProcessVerb(call, *verb);
        return;
    }
    const Methods methods = map.MethodsOf(path);
    HttpResponse response{.status = 204};
    if (!methods.Any()) {
        response = NotFound(path);
    } else if (method == "PUT" && methods.put) {
        response = ProblemResponse({422, "The request has no body, and the content of " + path + " was expected."});
    } else if (method != "OPTIONS") {
        response = ProblemResponse({405, path + " doesn't have the method " + method + "."});
    }
    if (methods.Any()) {
        methods.AddTo(response.fields);
    }
    call->responder.Respond(std::move(response));
}

void ResourceGateway::ProcessVerb(const CallPointer& call, Verb verb) {
    if (verb == Verb::Read) {
        Read(call);
        return;
    }
    if (auto refusal = CheckPrecondition(*call)) {
        call->responder.Respond(*std::move(refusal));
        return;
    }
    const VorRest::Request request{.verb = verb,
                                   .path = call->target.path,
                                   .body = std::exchange(call->body, {}),
                                   .wantsSchema = call->wantsSchema,
                                   .query = call->target.query,
                                   .prefersAsync = PrefersAsync(call->request.fields)};
    Run(call, request, [this, call, verb](Answer answer) {
        call->hasChanged = true;
        switch (verb) {
        case Verb::Create:
            call->status = 201;
            call->fields.Add("Location", answer.path);
            call->target.path = answer.path;
            MakeDocument(call);
            break;
        case Verb::Delete:
            call->responder.Respond({.status = 204});
            break;
        case Verb::Invoke:
            if (answer.isAccepted) {
                Accept(*call, answer.path);
            }
            Send(call, Document(*call, call->target.path, std::move(answer)));
            break;
        default:
            MakeDocument(call);
        }
    });
}

void ResourceGateway::Accept(Call& call, const std::string& path) {
    call.status = 202;
    call.fields.Add("Location", path);
    if (PrefersAsync(call.request.fields)) {
        call.fields.Add("Preference-Applied", "respond-async");
    }
    call.target.path = path;
}

void ResourceGateway::OpenStream(Call& call) {
    try {
        call.responder.Respond(streams.Open(call.target, call.request, call.responder));
    } catch (const Vor::Exception& e) {
        if (e.Status() == yERROR_UNIMPLEMENTED) {
            call.responder.Respond(ProblemResponse({406, call.target.path + " isn't a stream of events.", e.Status()}));
        } else {
            Fail(call, std::current_exception(), Verb::Read);
        }
    } catch (...) {
        Fail(call, std::current_exception(), Verb::Read);
    }
}

void ResourceGateway::BeginUpload(const CallPointer& call, UploadReceiver& receiver) {
    const auto upload = map.UploadOf(call->target.path);
    if (!upload) {
        Process(call); // which refuses it
        return;
    }
    if (auto refusal = CheckUpload(*call)) {
        call->responder.Respond(*std::move(refusal));
        return;
    }
    try {
        receiver.Open(upload->resource.BeginUpload(
            upload->request, {.onlyNew = call->request.fields.Find("If-None-Match") == "*",
                              .wake = [responder = call->responder] { responder.Wake(); },
                              .ended =
                                  [this, token = std::weak_ptr(alive), call](const UploadOutcome& outcome) {
                                      if (!token.expired()) {
                                          EndUpload(call, outcome);
                                      }
                                  }}));
        call->responder.Wake();
    } catch (...) {
        Fail(*call, std::current_exception(), Verb::Update);
    }
}

void ResourceGateway::EndUpload(const CallPointer& call, const UploadOutcome& outcome) {
    if (outcome.refusal) {
        call->responder.Respond(ProblemResponse(*outcome.refusal));
        return;
    }
    call->hasChanged = true;
    call->target.path = outcome.path;
    if (outcome.isNew) {
        call->status = 201;
        call->fields.Add("Location", outcome.path);
    }
    try {
        MakeDocument(call);
    } catch (...) {
        Fail(*call, std::current_exception(), Verb::Update);
    }
}

std::optional<HttpResponse> ResourceGateway::CheckUpload(const Call& call) const {
    const HttpFields& fields = call.request.fields;
    if (fields.Count("Content-Type") > 0 && !IsContentType(fields, {OctetStream})) {
        HttpResponse refusal = ProblemResponse({415, "The body is '" + fields.Find("Content-Type").value_or("") +
                                                         "', and '" + std::string(OctetStream) + "' was expected."});
        refusal.fields.Add("Accept", std::string(OctetStream));
        return refusal;
    }
    if (fields.Count("Content-Encoding") > 0) {
        return ProblemResponse({415, "The body is encoded as '" + fields.Find("Content-Encoding").value_or("") +
                                         "', and a body without Content-Encoding was expected."});
    }
    if (fields.Count("Content-Range") > 0) {
        return ProblemResponse({400, "The body is a part of a content (Content-Range), and a whole one was expected."});
    }
    const std::string& path = call.target.path;
    const bool exists = map.MethodsOf(path).get;
    if (exists && fields.Find("If-None-Match") == "*") {
        return ProblemResponse({412, "There is something at " + path + ", and the field If-None-Match is *."});
    }
    if (!exists && fields.Find("If-Match") == "*") {
        return ProblemResponse({412, "There is nothing at " + path + ", and the field If-Match is *."});
    }
    return CheckPrecondition(call);
}

std::optional<HttpResponse> ResourceGateway::CheckPrecondition(const Call& call) const {
    const auto ifMatch = call.request.fields.Find("If-Match");
    if (!ifMatch) {
        return std::nullopt;
    }
    const auto tag = revisions.TagOf(call.target.path);
    if (IfMatchAdmits(*ifMatch, tag)) {
        return std::nullopt;
    }
    if (!map.MethodsOf(call.target.path).Any()) {
        return NotFound(call.target.path);
    }
    HttpResponse refusal = ProblemResponse({412, "The configuration has the tag " + tag.value_or("(none)") +
                                                     ", and the field If-Match is " + *ifMatch + "."});
    if (tag) {
        refusal.fields.Add("ETag", *tag);
    }
    return refusal;
}

void ResourceGateway::Ask(const CallPointer& call, const VorRest::Request& request, Then then) {
    const Verb verb = request.verb;
    requests.Run(request, [this, token = std::weak_ptr(alive), call, verb, then = std::move(then)](Answer answer) {
        if (token.expired()) {
            return;
        }
        try {
            then(std::move(answer));
        } catch (...) {
            Fail(*call, std::current_exception(), verb);
        }
    });
}

void ResourceGateway::Run(const CallPointer& call, const VorRest::Request& request, Then then) {
    Ask(call, request, [this, call, verb = request.verb, then = std::move(then)](Answer answer) {
        if (answer.failure != nullptr) {
            Fail(*call, answer.failure, verb);
        } else {
            then(std::move(answer));
        }
    });
}

void ResourceGateway::Fail(const Call& call, const std::exception_ptr& failure, Verb verb) const {
    if (call.hasChanged) {
        call.responder.Respond({.status = call.status == 201 ? 201U : 204U, .fields = call.fields});
        return;
    }
    call.responder.Respond(FailureResponse(failure, verb, map.MethodsOf(call.target.path)));
}

void ResourceGateway::Read(const CallPointer& call) {
    const std::string name = call->Name();
    if (!large.IsLarge(name)) {
        if (budget->HasRoom(0)) {
            MakeDocument(call);
        } else {
            call->responder.Respond(TooMuch());
        }
        return;
    }
    const bool waits = large.Wait({
        .name = name,
        .isWanted = [call] { return call->responder.IsWanted(); },
        .start =
            [this, call](LargeDocuments::Turn turn) {
                call->turn = std::move(turn);
                MakeDocument(call);
            },
        .drop =
            [call] {
                call->responder.Respond(ProblemResponse(
                    {503, "The sensor was busy with other large documents for too long to make this one."}));
            },
    });
    if (!waits) {
        call->responder.Respond(ProblemResponse({503, "Too many requests wait for large documents."}));
    }
}

void ResourceGateway::MakeDocument(const CallPointer& call) {
    const std::string& path = call->target.path;
    Run(call, {Verb::Read, path, {}, call->wantsSchema, call->target.query}, [this, call](Answer answer) {
        if (answer.document.GetKind() == VorDataTree::Kind::Binary) {
            SendBytes(*call, answer.document);
            return;
        }
        const auto document = Document(*call, call->target.path, std::move(answer));
        const auto isExpanded = [&](const HalDocument::Embedded& part) {
            return std::ranges::find(call->expanded, part.link.relation) != call->expanded.end();
        };
        if (std::ranges::count_if(document->embedded, isExpanded) > static_cast<std::ptrdiff_t>(MaxExpanded)) {
            Vor::Throw(yERROR_SIZE, "The query asks for more than the %s documents that it may.",
                       std::to_string(MaxExpanded));
        }
        Expand(call, document, 0);
    });
}

void ResourceGateway::Expand(const CallPointer& call, const std::shared_ptr<HalDocument>& document, std::size_t part) {
    const auto isExpanded = [&](std::size_t index) {
        return std::ranges::find(call->expanded, document->embedded[index].link.relation) != call->expanded.end();
    };
    while (part < document->embedded.size() && !isExpanded(part)) {
        ++part;
    }
    if (part == document->embedded.size()) {
        Send(call, document);
        return;
    }
    const std::string path = document->embedded[part].link.href;
    Ask(call, {Verb::Read, path, {}, call->wantsSchema}, [this, call, document, part, path](Answer answer) {
        std::size_t next = part;
        if (answer.failure != nullptr) {
            document->embedded.erase(document->embedded.begin() + static_cast<std::ptrdiff_t>(part));
        } else {
            document->embedded[part].document = Document(*call, path, std::move(answer));
            ++next;
        }
        // What else the main loop has to do may go first.
        runner.Run([this, call, document, next] { Expand(call, document, next); });
    });
}

void ResourceGateway::Send(const CallPointer& call, const std::shared_ptr<HalDocument>& document) {
    const std::string path = call->target.path;
    call->fields.Add("Content-Type", std::string(HalJson));
    call->fields.Add("Cache-Control", "no-store");
    if (const auto tag = revisions.TagOf(path)) {
        call->fields.Add("ETag", *tag);
    }
    Net::NetThread& thread = call->turn != nullptr ? largeTextThread : textThread;
    const std::size_t lastSize = large.TextSize(call->Name());
    thread.Post([this, call, document, lastSize] {
        std::string text = document->Text(lastSize + lastSize / 16);
        *document = {};
        if (const std::size_t size = text.size(); call->turn != nullptr || size > LargeDocuments::LargeSize) {
            runner.Run([this, name = call->Name(), size] { large.Note(name, size); });
        }
        call->responder.Respond({.status = call->status,
                                 .fields = std::move(call->fields),
                                 .body = Budget::Hold(std::move(text), std::move(call->share))});
    });
}

void ResourceGateway::SendBytes(const Call& call, const VorDataTree& document) const {
    const Vor::Properties::ByteVector bytes = document.AsBinary();
    if (!budget->HasRoom(bytes.Size())) {
        call.responder.Respond(TooMuch());
        return;
    }
    call.share->Change(bytes.Size());
    call.responder.Respond(
        {.fields = {{"Content-Type", std::string(map.MediaTypeOf(call.target.path))}, {"Cache-Control", "no-store"}},
         .body = Budget::Hold({reinterpret_cast<const char*>(bytes.Data()), bytes.Size()}, call.share)});
}

std::shared_ptr<HalDocument> ResourceGateway::Document(Call& call, const std::string& path, Answer answer) {
    auto document = std::make_shared<HalDocument>(map.Describe(path, std::move(answer)));
    document->hasJsonSchema = call.wantsJsonSchema;
    call.treeSize += document->members.Size();
    call.share->Change(call.treeSize);
    if (call.treeSize > LargeDocuments::LargeSize && call.turn == nullptr) {
        call.turn = large.BeginTurn();
        large.NoteTree(call.Name(), call.treeSize);
    }
    return document;
}

} // namespace Sensor::Http
