#include "Sensor/Resources/ListedProblemProperties.h"

#include "Sensor/Resources/DocumentMembers.h"
#include "Sensor/Resources/ProblemList.h"

namespace Sensor::Resources {

ListedProblemProperties::ListedProblemProperties() {
    RegisterReadOnly(*this, "id", id, "Id");
    RegisterReadOnly(*this, "since", since, "Since when there is the problem, UTC");
    RegisterReadOnly(*this, "severity", severity, "Severity, failure or warning");
    RegisterReadOnly(*this, "source", source, "Path of what has the problem");
    RegisterReadOnly(*this, "title", title, "Title");
    RegisterReadOnly(*this, "text", text, "Text");
    RegisterReadOnly(*this, "help", help, "What to do");
}

void ListedProblemProperties::Populate(const ListedProblem& problem) {
    id = problem.id;
    since = problem.since;
    severity = problem.severity;
    source = problem.source;
    title = problem.title;
    text = problem.text;
    help = problem.help;
}

} // namespace Sensor::Resources
