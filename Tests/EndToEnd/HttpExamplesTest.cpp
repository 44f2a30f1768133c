#include "Tests/EndToEnd/HttpClient.h"
#include "Tests/Support/BuildFolders.h"

#include <sstream>
#include <string>
#include <vector>

namespace Tests {
namespace {

constexpr const char* Address = "http://127.0.0.1:8080";

/// A command of a page with what it prints.
struct Example {
    std::string command;
    std::vector<std::string> lines;
};

/// The examples of a page: indented lines that begin with a prompt, which a backslash continues, and what follows.
std::vector<Example> ExamplesOf(const std::string& page) {
    std::vector<Example> examples;
    std::istringstream text(ReadWholeFile(SourceFile(page)));
    bool inside = false;
    for (std::string line; std::getline(text, line);) {
        inside = line.starts_with("    ") && (inside || line.starts_with("    $ "));
        if (!inside) {
            continue;
        }
        line.erase(0, 4);
        if (line.starts_with("$ ")) {
            examples.push_back({line.substr(2), {}});
        } else if (examples.back().command.ends_with("\\")) {
            examples.back().command += '\n' + line;
        } else {
            examples.back().lines.push_back(line);
        }
    }
    return examples;
}

/// Whether the output has these lines one after the other; "..." is for any lines.
bool Has(const std::string& output, const std::vector<std::string>& expected) {
    std::vector<std::string> lines;
    std::istringstream stream(output);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    std::size_t at = 0;
    bool anywhere = false;
    for (const std::string& line : expected) {
        if (line == "...") {
            anywhere = true;
            continue;
        }
        while (anywhere && at < lines.size() && lines[at] != line) {
            ++at;
        }
        if (at == lines.size() || lines[at] != line) {
            return false;
        }
        ++at;
        anywhere = false;
    }
    return anywhere || at == lines.size();
}

TEST(HttpExamples, DoWhatThePageSays) {
    VirtualSensor sensor;
    const std::string line = sensor.Process().WaitForLine("HTTP: http://").value_or("HTTP: none/");
    const std::string address = line.substr(6, line.size() - 7);
    ASSERT_TRUE(sensor.Process().WaitForLine("Scanning."));
    const std::vector<Example> examples = ExamplesOf("Docs/http.md");
    EXPECT_GE(examples.size(), 10U);
    for (const Example& example : examples) {
        std::string command = example.command;
        for (auto at = command.find(Address); at != std::string::npos; at = command.find(Address, at + 1)) {
            command.replace(at, std::string(Address).size(), address);
        }
        const Answer answer = RunToEnd({"sh", "-c", command});
        EXPECT_EQ(answer.status, 0) << example.command << '\n' << answer.errors;
        EXPECT_TRUE(Has(answer.output, example.lines)) << example.command << '\n' << answer.output;
    }
}

} // namespace
} // namespace Tests
