#include "Services/Modbus/ModbusParams.h"

#include "Services/Common/Translate.h"

namespace Services::Modbus {

using Common::Translate;

namespace {

constexpr unsigned short DefaultPort = 502;
constexpr unsigned int DefaultIdleTimeout = 60; ///< seconds

} // namespace

ModbusParams::ModbusParams() {
    RegisterPlace();
    Register("unitId", unitId, Translate("Unit Identifier"), 100);
    Register("byteOrder", byteOrder, Translate("Byte Order"), 100);
    Register("firstRequest", firstRequest, Translate("First Request Word"), 100);
    RegisterLimits("A client that makes no whole request in this time is closed. 0 leaves it open.",
                   "Networks or single addresses whose clients may write, too: run commands. To other clients "
                   "the writing functions are unknown (exception 1).");
    triggerTimeout.RegisterIn(*this);
    unitId.EnableDescription(true);
    Describe(unitId, "The unit identifier that is answered; any other gets exception 11. 0 answers all.");
    unitId.EnableMaximum(true);
    unitId.SetMaximum(255);
    byteOrder.EnableDescription(true);
    Describe(byteOrder, "Which register of a value of several registers comes first.");
    byteOrder.AddOption(ByteOrder::Big, Translate("High Word First"));
    byteOrder.AddOption(ByteOrder::Little, Translate("Low Word First"));
    firstRequest.EnableDescription(true);
    Describe(firstRequest,
             "What the first request word that a client writes after the start of the sensor does. Choose "
             "the base for clients that write all their registers again and again.");
    firstRequest.AddOption(FirstRequestRuns, Translate("Runs Its Command"));
    firstRequest.AddOption(FirstRequestIsBase, Translate("Is the Base of Later Changes"));
    Reset();
}

void ModbusParams::Reset() {
    ResetPlace(DefaultPort);
    unitId = 0;
    byteOrder = ByteOrder::Big;
    firstRequest = FirstRequestRuns;
    ResetLimits(DefaultIdleTimeout);
    triggerTimeout.Reset();
}

} // namespace Services::Modbus
