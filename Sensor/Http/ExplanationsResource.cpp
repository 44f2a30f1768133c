#include "Sensor/Http/ExplanationsResource.h"

#include "Sensor/Http/ProblemTypes.h"
#include "Vor/Exception.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorApi/Path.h"

#include <algorithm>
#include <utility>

namespace Sensor::Http {

using VorApi::Path;

namespace {

class ProblemProperties : public Vor::Params::Group {
public:
    explicit ProblemProperties(const ProblemType& problem) {
        Register("type", type, "Type");
        Register("title", title, "Title");
        Register("status", status, "HTTP Status");
        Register("description", description, "Description");
        type = Path::Format(ProblemsRoute, {problem.slug});
        title = problem.title;
        status = static_cast<unsigned short>(problem.status);
        description = problem.explanation;
    }

    Vor::Params::Value<std::string> type;
    Vor::Params::Value<std::string> title;
    Vor::Params::Value<unsigned short> status;
    Vor::Params::Value<std::string> description;
};

struct RelationText {
    const char* name;
    const char* description;
};

class RelationProperties : public Vor::Params::Group {
public:
    explicit RelationProperties(const RelationText& text) {
        Register("relation", relation, "Relation");
        Register("description", description, "Description");
        relation = std::string("vor:") + text.name;
        description = text.description;
    }

    Vor::Params::Value<std::string> relation;
    Vor::Params::Value<std::string> description;
};

constexpr RelationText RelationExplanations[] = {
    {"availableIoDevices", "The devices with digital outputs that a service may use."},
    {"controls", "The list of the services."},
    {"controlTypes", "The types of service that there are."},
    {"events", "The topics of events. With 'Accept: text/event-stream' they are a stream of what happens."},
    {"ioDevices", "The devices with digital outputs that a service uses. POST selects one of the available devices."},
    {"healthz", "Whether the sensor answers."},
    {"io", "The devices with digital outputs: what each port was asked for and what its line did. With 'Accept: "
           "text/event-stream' they are a stream."},
    {"problems", "The kinds of refusals, each with an explanation."},
    {"rels", "The relations whose names begin with 'vor:', each with an explanation."},
    {"scan", "The last frame of the scan. With 'Accept: text/event-stream' it is a stream of frames."},
    {"scanHistory", "The values of the latest frames of the scan, in columns."},
    {"sensor", "The sensor itself: its state, its job and its services."},
    {"sensorProblems", "What is wrong with the sensor and its services at present."},
    {"service", "A service."},
    {"sources", "The data sources of the scan, with their units."},
    {"tool", "A tool of the sensor: a measurement with the limits by which its values are decided."},
    {"tools", "The list of the tools."},
    {"command", "A command. GET returns its parameters, POST invokes it with values for them."},
    {"commands", "The list of the commands."},
    {"datasources", "The output map of a service: which data sources of the scan have which ids or names there."},
    {"log", "The entries of the user's log, the latest first."},
    {"metrics", "The figures of a service. With 'Accept: text/event-stream' they are a stream with an event each "
                "second. Those of the entry are the figures of the sensor and all services, as text for Prometheus."},
    {"changes", "What differs between the loaded job and its file."},
    {"file", "The file of a job, as bytes: an SQLite Archive, which 'vorsensor jobs import' accepts."},
    {"job", "A job, which is a file with the settings of the services."},
    {"jobs", "The list of the jobs."},
    {"operation", "An operation on the sensor that a command has started: whether it has ended, and how."},
    {"operations", "The last operations that commands of the sensor and its jobs have started."},
    {"registerAssembly", "A register assembly of a service: the blocks in its address space."},
};

} // namespace

ExplanationsResource::ExplanationsResource(std::string route, std::vector<Explanation> explanations)
    : route(std::move(route))
    , key(Path::Split(this->route).back().substr(1))
    , explanations(std::move(explanations)) {}

void ExplanationsResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                    VorApi::VorDataTree& data) {
    const std::string* const id = request.FindKey(key);
    if (id == nullptr) {
        for (const Explanation& explanation : explanations) {
            response.Embed("item", Path::Format(route, {explanation.id}), true, VorApi::VorDataTree());
        }
        return;
    }
    const auto found = std::ranges::find(explanations, *id, &Explanation::id);
    if (found == explanations.end()) {
        Vor::Throw(yERROR_NOT_FOUND, "There is no explanation of '%s'.", *id);
    }
    NodeToVorDataTree(*found->document, request, data, true);
}

std::vector<ExplanationsResource::Explanation> ExplainProblems() {
    std::vector<ExplanationsResource::Explanation> explanations;
    for (const ProblemType& problem : ProblemTypes()) {
        explanations.push_back({problem.slug, std::make_shared<ProblemProperties>(problem)});
    }
    return explanations;
}

std::vector<ExplanationsResource::Explanation> ExplainRelations() {
    std::vector<ExplanationsResource::Explanation> explanations;
    for (const RelationText& relation : RelationExplanations) {
        explanations.push_back({relation.name, std::make_shared<RelationProperties>(relation)});
    }
    return explanations;
}

} // namespace Sensor::Http
