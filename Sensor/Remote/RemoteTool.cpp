#include "Sensor/Remote/RemoteTool.h"

#include "Sensor/PrintableText.h"
#include "Sensor/Remote/DocumentText.h"
#include "Sensor/Remote/MemberSetting.h"
#include "Sensor/Remote/RemoteError.h"
#include "Sensor/Remote/StatusText.h"
#include "Sensor/StartError.h"
#include "Vor/Exception.h"
#include "Vor/JsonText.h"

#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace Sensor::Remote {

using nlohmann::json;

struct RemoteTool::Tagged {
    json document;
    std::string tag;
};

namespace {

constexpr int Indent = 4;
constexpr std::size_t MaxText = 2000; ///< bytes of a text of a refusal that are printed
constexpr std::size_t MaxPlaces = 100;
constexpr unsigned PreconditionFailed = 412;

/// A text in a problem document; empty when there is none.
std::string TextOf(const json& object, const char* name) {
    const auto found = object.is_object() ? object.find(name) : object.end();
    return found == object.end() || !found->is_string() ? "" : AbridgedText(found->get<std::string>(), MaxText);
}

bool IsJson(const HttpReply& reply) {
    return reply.contentType.find("json") != std::string::npos;
}

[[noreturn]] void ThrowRefusal(const HttpQuestion& question, const HttpReply& reply) {
    json problem;
    try {
        problem = IsJson(reply) ? Vor::ParseJson(reply.body) : json();
    } catch (const Vor::Exception&) { // NOLINT(bugprone-empty-catch): the status says enough
    }
    const std::string title = TextOf(problem, "title");
    const std::string detail = TextOf(problem, "detail");
    std::vector<std::string> places;
    const auto errors = problem.is_object() ? problem.find("errors") : problem.end();
    if (errors != problem.end() && errors->is_array()) {
        for (const json& error : *errors) {
            if (places.size() < MaxPlaces) {
                places.push_back(TextOf(error, "pointer") + ": " + TextOf(error, "text"));
            }
        }
    }
    if (reply.status == PreconditionFailed) {
        places.emplace_back("Somebody else has changed it meanwhile, and nothing was set. Try again.");
    }
    const bool isRefused = reply.status >= 400 && reply.status < 500;
    throw RemoteError(isRefused ? RemoteError::Refused : RemoteError::NoAnswer,
                      question.target + ": " + (title.empty() ? "The answer is a failure" : title) + " (" +
                          std::to_string(reply.status) + ")" + (detail.empty() ? "." : ": " + detail),
                      std::move(places));
}

void CheckPath(const std::string& path) {
    if (!path.starts_with('/')) {
        throw StartError(path + ": expected the path of a resource, such as /controls/modbus.");
    }
}

} // namespace

RemoteTool::RemoteTool(HttpClient client, std::ostream& out)
    : client(std::move(client))
    , out(out) {}

void RemoteTool::Run(const RemoteCommand& command) {
    switch (command.action) {
    case RemoteCommand::Action::Status:
        return PrintStatusOf(command);
    case RemoteCommand::Action::Get:
        return Get(command);
    case RemoteCommand::Action::Set:
        return Set(command);
    }
}

RemoteTool::Tagged RemoteTool::Ask(const HttpQuestion& question) {
    const HttpReply reply = client.Ask(question);
    if (reply.status < 200 || reply.status >= 300) {
        ThrowRefusal(question, reply);
    }
    if (!IsJson(reply)) {
        throw RemoteError(RemoteError::Refused, question.target + ": it isn't a document in JSON, but of the type \"" +
                                                    reply.contentType + "\"; curl can get that.");
    }
    try {
        return {Vor::ParseJson(reply.body), reply.tag};
    } catch (const Vor::Exception& e) {
        throw RemoteError(RemoteError::NoAnswer, question.target + ": the answer of " + client.Server().Url() +
                                                     " isn't JSON (" + e.what() + ").");
    }
}

json RemoteTool::Document(const std::string& path) {
    return Ask({.target = path}).document;
}

void RemoteTool::PrintStatusOf(const RemoteCommand& command) {
    const json sensor = Document("/sensor");
    if (command.json) {
        out << PrintableJson(sensor, Indent) << '\n';
    } else {
        PrintStatus(out, sensor, Document("/sensor/problems"));
    }
}

void RemoteTool::Get(const RemoteCommand& command) {
    CheckPath(command.path);
    const json document = Document(command.path);
    out << PrintableJson(command.withLinks ? document : WithoutLinks(document), Indent) << '\n';
}

void RemoteTool::Set(const RemoteCommand& command) {
    CheckPath(command.path);
    if (command.path.find('?') != std::string::npos) {
        throw StartError(command.path + ": expected the path of a resource without a query.");
    }
    std::vector<MemberSetting> settings;
    settings.reserve(command.settings.size());
    for (const std::string& text : command.settings) {
        settings.push_back(MemberSetting::Parse(text));
    }
    const Tagged present = Ask({.target = command.path + "?schema=1"});
    const json schema = present.document.is_object() ? present.document.value("_schema", json()) : json();
    if (!schema.is_object()) {
        throw RemoteError(RemoteError::Refused, command.path + ": it has no schema, so nothing in it can be set.");
    }
    const Tagged changed = Ask({.method = "PATCH",
                                .target = command.path,
                                .body = PatchOf(settings, schema).dump(),
                                .contentType = "application/merge-patch+json",
                                .ifMatch = present.tag});
    for (const MemberSetting& setting : settings) {
        if (const json* const value = setting.FindIn(changed.document)) {
            out << PrintableText(setting.Member()) << '=' << PrintableJson(*value, -1) << '\n';
        }
    }
}

} // namespace Sensor::Remote
