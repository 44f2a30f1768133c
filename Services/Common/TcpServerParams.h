#pragma once

#include "Net/TcpServer.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>
#include <vector>

namespace Services::Common {

/// The parameters of a service that has a Net::TcpServer.
class TcpServerParams : public Vor::Params::Group {
public:
    /// Sets every value to its default.
    virtual void Reset() = 0;

    /// The values for the server. Throws yERROR_PARAMETER with a text for the user when a value of the whole group is
    /// outside its limits, when an entry isn't a network, or when values don't go together.
    virtual Net::TcpServerSettings Settings();

    Vor::Params::Value<std::string> address;
    Vor::Params::Value<unsigned short> port;
    Vor::Params::Value<unsigned int> maxConnections;
    Vor::Params::Value<unsigned int> maxConnectionsPerAddress;
    Vor::Params::Value<unsigned int> idleTimeout;
    /// Lists of networks, see Net::Network::Parse.
    Vor::Params::Value<std::vector<std::string>> readNetworks;
    Vor::Params::Value<std::vector<std::string>> writeNetworks;

protected:
    TcpServerParams();

    /// Register address and port, and the rest. Each is called once, at its place among the service's own parameters.
    void RegisterPlace();
    void RegisterLimits(const char* idleDescription, const char* writeDescription);

    /// Put the values back to their defaults.
    void ResetPlace(unsigned short defaultPort);
    void ResetLimits(unsigned int defaultIdleTimeout);

    static void Describe(Vor::Params::ParamsBase& parameter, const char* description);
};

} // namespace Services::Common
