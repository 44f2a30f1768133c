#include "Services/Common/TcpServerParams.h"

#include "Services/Common/Translate.h"
#include "Vor/Exception.h"

namespace Services::Common {

TcpServerParams::TcpServerParams()
    : Group("") {}

void TcpServerParams::RegisterPlace() {
    Register("address", address, Translate("Address"), 100);
    Register("port", port, Translate("Port"), 100);
    address.EnableDescription(true);
    Describe(address, "IPv4 or IPv6 address to listen on. 127.0.0.1 is reached from this device only, 0.0.0.0 and :: "
                      "from everywhere.");
    port.EnableDescription(true);
    Describe(port, "TCP port to listen on. 0 takes any free port.");
}

void TcpServerParams::RegisterLimits(const char* idleDescription, const char* writeDescription) {
    Register("maxConnections", maxConnections, Translate("Maximum Connections"), 100);
    Register("maxConnectionsPerAddress", maxConnectionsPerAddress, Translate("Maximum Connections of an Address"), 100);
    Register("idleTimeout", idleTimeout, Translate("Idle Time-out"), 100);
    Register("readNetworks", readNetworks, Translate("Networks That May Read"), 100);
    Register("writeNetworks", writeNetworks, Translate("Networks That May Write"), 100);
    maxConnections.EnableDescription(true);
    Describe(maxConnections, "Clients that may be connected at a time. One more is closed at once.");
    maxConnections.SetMinimum(1);
    maxConnections.EnableMaximum(true);
    maxConnections.SetMaximum(256);
    maxConnectionsPerAddress.EnableDescription(true);
    Describe(maxConnectionsPerAddress, "Clients of one address that may be connected at a time. 0: as many as of all "
                                       "addresses. Clients on this device aren't counted.");
    maxConnectionsPerAddress.EnableMaximum(true);
    maxConnectionsPerAddress.SetMaximum(256);
    idleTimeout.EnableDescription(true);
    Describe(idleTimeout, idleDescription);
    idleTimeout.EnableUnits(true);
    idleTimeout.SetUnits("s");
    idleTimeout.EnableMaximum(true);
    idleTimeout.SetMaximum(86400);
    readNetworks.EnableDescription(true);
    Describe(readNetworks,
             "Networks such as 192.168.1.0/24 or fd00::/8, or single addresses, whose clients are served. "
             "A client from elsewhere is closed at once.");
    writeNetworks.EnableDescription(true);
    Describe(writeNetworks, writeDescription);
}

void TcpServerParams::ResetPlace(unsigned short defaultPort) {
    address = "127.0.0.1";
    port = defaultPort;
}

void TcpServerParams::ResetLimits(unsigned int defaultIdleTimeout) {
    maxConnections = 32;
    maxConnectionsPerAddress = 16;
    idleTimeout = defaultIdleTimeout;
    readNetworks = {"0.0.0.0/0", "::/0"};
    writeNetworks = {"127.0.0.0/8", "::1/128"};
}

Net::TcpServerSettings TcpServerParams::Settings() {
    std::vector<std::string> errors;
    CheckValidationAndCollect(errors, 0);
    if (!errors.empty()) {
        Vor::Throw(yERROR_PARAMETER, "%s", errors.front());
    }
    return {.address = address.Get(),
            .port = port.Get(),
            .maxConnections = maxConnections.Get(),
            .maxConnectionsPerAddress = maxConnectionsPerAddress.Get(),
            .idleTimeOut = std::chrono::seconds(idleTimeout.Get()),
            .readers = Net::ParseNetworks(readNetworks.Get()),
            .writers = Net::ParseNetworks(writeNetworks.Get())};
}

void TcpServerParams::Describe(Vor::Params::ParamsBase& parameter, const char* description) {
    parameter.SetDescription(Translate(description));
}

} // namespace Services::Common
