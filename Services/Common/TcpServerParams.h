#pragma once

#include "Services/Common/TcpServer.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>
#include <vector>

namespace Services::Common {

/// The parameters of a service that has a TcpServer.
class TcpServerParams : public Vor::Params::Group {
public:
    Vor::Params::Value<std::string> address;
    Vor::Params::Value<unsigned short> port;
    Vor::Params::Value<unsigned int> maxConnections;
    Vor::Params::Value<unsigned int> idleTimeout;
    /// Lists of networks, see Network::Parse.
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

    /// Throws yERROR_PARAMETER with the text of the first value of the whole group that is outside its limits.
    void CheckLimits();
    /// Throws yERROR_PARAMETER with a text that names the entry that isn't a network.
    TcpServerSettings TcpSettings() const;

    static void Describe(Vor::Params::ParamsBase& parameter, const char* description);
};

} // namespace Services::Common
