#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace Sensor::Remote {

/// A command of the user for a sensor that runs.
struct RemoteCommand {
    enum class Action { Status, Get, Set };

    Action action = Action::Status;
    std::string url = "http://127.0.0.1:8080";
    bool json = false;      ///< of a status: the document instead of a table
    std::string path = {};  ///< of a resource
    bool withLinks = false; ///< of a get
    /// What is set: "MEMBER=VALUE".
    std::vector<std::string> settings = {};

    /// Adds "status", "get" and "set" to the command line, and returns them. Parsing one of them sets `command`, which
    /// must outlive `app`.
    static std::vector<const CLI::App*> Define(CLI::App& app, RemoteCommand& command);
};

} // namespace Sensor::Remote
