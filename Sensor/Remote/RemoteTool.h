#pragma once

#include "Sensor/Remote/HttpClient.h"
#include "Sensor/Remote/RemoteCommand.h"

#include <ostream>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace Sensor::Remote {

/// Runs commands on a running sensor, over HTTP.
class RemoteTool {
public:
    RemoteTool(HttpClient client, std::ostream& out);

    /// Prints the result. Throws a RemoteError when the sensor doesn't answer or refuses it, and a StartError when it
    /// can't be asked for.
    void Run(const RemoteCommand& command);

private:
    /// A document with its tag.
    struct Tagged;

    void PrintStatusOf(const RemoteCommand& command);
    void Get(const RemoteCommand& command);
    void Set(const RemoteCommand& command);

    /// Throws a RemoteError for what isn't a success with a document.
    Tagged Ask(const HttpQuestion& question);
    nlohmann::json Document(const std::string& path);

    const HttpClient client;
    std::ostream& out;
};

} // namespace Sensor::Remote
