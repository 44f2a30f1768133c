#pragma once

#include "Services/Common/TcpServerParams.h"
#include "Services/Modbus/ModbusServer.h"
#include "VorApi/Params/Enum.h"
#include "VorApi/Params/Value.h"

#include <cstdint>

namespace Services::Modbus {

/// Whether the high or the low register of a value of several registers comes first.
enum class ByteOrder : std::int32_t { Big = 0, Little = 1 };

class ModbusParams : public Common::TcpServerParams {
public:
    ModbusParams();

    /// Sets every value to its default.
    void Reset();

    /// The values for the server. Throws yERROR_PARAMETER with a text for the user when a value is outside its limits
    /// or isn't a network.
    ServerSettings Settings();

    bool IsBigEndian() const { return byteOrder.Get() == ByteOrder::Big; }

    Vor::Params::Value<unsigned short> unitId;
    Vor::Params::Enum<ByteOrder> byteOrder;
};

} // namespace Services::Modbus
