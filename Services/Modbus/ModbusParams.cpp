#include "Services/Modbus/ModbusParams.h"

#include <vector>

#include "Services/Common/Translate.h"
#include "Vor/Exception.h"

namespace Services::Modbus {

using Common::Translate;

namespace {

void Describe(Vor::Params::ParamsBase& parameter, const char* description) {
    parameter.SetDescription(Translate(description));
}

} // namespace

ModbusParams::ModbusParams()
    : Group("") {
    Register("address", address, Translate("Address"), 100);
    Register("port", port, Translate("Port"), 100);
    Register("unitId", unitId, Translate("Unit Identifier"), 100);
    Register("byteOrder", byteOrder, Translate("Byte Order"), 100);
    Register("maxConnections", maxConnections, Translate("Maximum Connections"), 100);
    Register("idleTimeout", idleTimeout, Translate("Idle Time-out"), 100);
    Register("readNetworks", readNetworks, Translate("Networks That May Read"), 100);
    Register("writeNetworks", writeNetworks, Translate("Networks That May Write"), 100);

    address.EnableDescription(true);
    Describe(address, "IPv4 or IPv6 address to listen on. 127.0.0.1 is reached from this device only, 0.0.0.0 and :: "
                      "from everywhere.");
    port.EnableDescription(true);
    Describe(port, "TCP port to listen on. 0 takes any free port.");
    unitId.EnableDescription(true);
    Describe(unitId, "The unit identifier that is answered; any other gets exception 11. 0 answers all.");
    unitId.EnableMaximum(true);
    unitId.SetMaximum(255);
    byteOrder.EnableDescription(true);
    Describe(byteOrder, "Which register of a value of several registers comes first.");
    byteOrder.AddOption(ByteOrder::Big, Translate("High Word First"));
    byteOrder.AddOption(ByteOrder::Little, Translate("Low Word First"));
    maxConnections.EnableDescription(true);
    Describe(maxConnections, "Clients that may be connected at a time. One more is closed at once.");
    maxConnections.SetMinimum(1);
    maxConnections.EnableMaximum(true);
    maxConnections.SetMaximum(256);
    idleTimeout.EnableDescription(true);
    Describe(idleTimeout, "A client that makes no whole request in this time is closed. 0 leaves it open.");
    idleTimeout.EnableUnits(true);
    idleTimeout.SetUnits("s");
    idleTimeout.EnableMaximum(true);
    idleTimeout.SetMaximum(86400);
    readNetworks.EnableDescription(true);
    Describe(readNetworks,
             "Networks such as 192.168.1.0/24 or fd00::/8, or single addresses, whose clients are served. "
             "A client from elsewhere is closed at once.");
    writeNetworks.EnableDescription(true);
    Describe(writeNetworks, "Networks or single addresses whose clients may write, too: run commands. To other clients "
                            "the writing functions are unknown (exception 1).");
    Reset();
}

void ModbusParams::Reset() {
    address = "127.0.0.1";
    port = 502;
    unitId = 0;
    byteOrder = ByteOrder::Big;
    maxConnections = 32;
    idleTimeout = 60;
    readNetworks = {"0.0.0.0/0", "::/0"};
    writeNetworks = {"127.0.0.0/8", "::1/128"};
}

ServerSettings ModbusParams::Settings() {
    std::vector<std::string> errors;
    CheckValidationAndCollect(errors, 0);
    if (!errors.empty()) {
        Vor::Throw(yERROR_PARAMETER, "%s", errors.front());
    }
    return {.address = address.Get(),
            .port = port.Get(),
            .unit = static_cast<unsigned char>(unitId.Get()),
            .maxConnections = maxConnections.Get(),
            .idleTimeOut = std::chrono::seconds(idleTimeout.Get()),
            .readers = ParseNetworks(readNetworks.Get()),
            .writers = ParseNetworks(writeNetworks.Get())};
}

} // namespace Services::Modbus
