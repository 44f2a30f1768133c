#include "Sensor/Resources/ProblemList.h"

#include "Sensor/Resources/ListedProblemProperties.h"
#include "Sensor/UtcText.h"
#include "Vor/JsonSerializer.h"
#include "VorApi/Path.h"
#include "VorCommon/ProblemsManager.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <nlohmann/json.hpp>

namespace Sensor::Resources {

namespace {

constexpr const char* HelpForFailure = "Change the parameters of the service, or make available what it needs, then "
                                       "set its member 'enabled' to true. While "
                                       "only its port or its address is missing, the sensor starts it again by itself.";
constexpr const char* HelpForWarning = "Lower the frame rate, or the number of the service's clients.";

ListedProblem Described(const VorCommon::ProblemsManager::Problem& problem) {
    const bool isOfService = !problem.owner.empty();
    const bool isWarning = problem.severity == 0;
    const char* const help = isWarning ? HelpForWarning : HelpForFailure;
    return {.severity = isWarning ? "warning" : "failure",
            .source = isOfService ? VorApi::Path::Format("/controls/:protocol", {problem.owner}) : "",
            .title = problem.title,
            .text = problem.text,
            .help = isOfService ? help : ""};
}

} // namespace

bool ListedProblem::IsLike(const ListedProblem& other) const {
    return severity == other.severity && source == other.source && title == other.title && text == other.text;
}

ProblemList::ProblemList(const VorCommon::ProblemsManager& manager,
                         std::function<void(const nlohmann::json& change)> changed)
    : manager(manager)
    , changed(std::move(changed))
    , timer([this](Vor::AsyncTimer&) { Update(); }) {
    timer.Start(Period, false);
}

const std::vector<ListedProblem>& ProblemList::Update() {
    std::vector<ListedProblem> before = std::exchange(problems, {});
    std::vector<ListedProblem> fresh;
    for (const VorCommon::ProblemsManager::Problem& listed : manager.List()) {
        ListedProblem problem = Described(listed);
        const auto same =
            std::ranges::find_if(before, [&](const ListedProblem& earlier) { return problem.IsLike(earlier); });
        if (same == before.end()) {
            fresh.push_back(std::move(problem));
        } else {
            problems.push_back(std::move(*same));
            before.erase(same);
        }
    }
    std::ranges::sort(problems, {}, &ListedProblem::id);
    for (ListedProblem& problem : fresh) {
        problem.id = ++lastId;
        problem.since = UtcText(std::chrono::system_clock::now());
        problems.push_back(problem);
    }
    for (const ListedProblem& problem : before) {
        changed({{"op", "cleared"}, {"id", problem.id}});
    }
    for (const ListedProblem& problem : fresh) {
        ListedProblemProperties properties;
        properties.Populate(problem);
        nlohmann::json change = Vor::Properties::JsonSerializer::Serialize(properties);
        change["op"] = "raised";
        changed(change);
    }
    return problems;
}

} // namespace Sensor::Resources
