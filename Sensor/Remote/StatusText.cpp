#include "Sensor/Remote/StatusText.h"

#include "Sensor/PrintableText.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace Sensor::Remote {

using nlohmann::json;

namespace {

using Row = std::array<std::string, 5>;

/// The member as one printable text; empty when there is none.
std::string Text(const json& object, const char* name) {
    const auto found = object.is_object() ? object.find(name) : object.end();
    if (found == object.end() || found->is_null()) {
        return "";
    }
    return PrintableText(found->is_string() ? found->get<std::string>()
                                            : found->dump(-1, ' ', false, json::error_handler_t::replace));
}

bool IsTrue(const json& object, const char* name) {
    return Text(object, name) == "true";
}

/// The elements of a list; none when it isn't one.
const json& List(const json& object, const char* name) {
    static const json None = json::array();
    const auto found = object.is_object() ? object.find(name) : object.end();
    return found == object.end() || !found->is_array() ? None : *found;
}

void PrintServices(std::ostream& out, const json& services) {
    std::vector<Row> rows = {{"Service", "Enabled", "Status", "Address", "Failure"}};
    for (const json& service : services) {
        rows.push_back({Text(service, "id"), IsTrue(service, "enabled") ? "yes" : "no", Text(service, "status"),
                        Text(service, "address"), Text(service, "failure")});
    }
    std::array<std::size_t, std::tuple_size_v<Row>> widths{};
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], TextWidth(row[i]));
        }
    }
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += PaddedText(row[i], widths[i]) + "  ";
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
}

void PrintProblems(std::ostream& out, const json& problems) {
    if (problems.empty()) {
        out << "No problems.\n";
        return;
    }
    for (const json& problem : problems) {
        const std::string source = Text(problem, "source");
        out << Text(problem, "severity") << ": " << Text(problem, "title")
            << (source.empty() ? "" : " (" + source + ")") << "\n  " << Text(problem, "text") << '\n';
        if (const std::string help = Text(problem, "help"); !help.empty()) {
            out << "  " << help << '\n';
        }
    }
}

} // namespace

void PrintStatus(std::ostream& out, const json& sensor, const json& problems) {
    out << Text(sensor, "name") << ' ' << Text(sensor, "version") << '\n';
    out << "State: " << Text(sensor, "runState") << ", frame " << Text(sensor, "frame") << ", "
        << Text(sensor, "alignment") << '\n';
    out << "Job:   " << Text(sensor, "job")
        << (IsTrue(sensor, "jobModified") ? ", modified: it has changes that aren't saved" : "") << "\n\n";
    PrintServices(out, List(sensor, "services"));
    out << '\n';
    PrintProblems(out, List(problems, "items"));
}

} // namespace Sensor::Remote
