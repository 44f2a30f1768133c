#pragma once

#include "Services/Common/TcpServerParams.h"
#include "Services/Modbus/ModbusServer.h"
#include "VorApi/Params/Enum.h"
#include "VorApi/Params/Value.h"

#include <cstdint>

namespace Services::Modbus {

/// Of values of more than one register: which of their registers comes first.
enum class ByteOrder : std::int32_t { Big = 0, Little = 1 };

class ModbusParams : public Common::TcpServerParams {
public:
    ModbusParams();

    /// Puts every value back to its default.
    void Reset();

    /// The values for the server. Throws yERROR_PARAMETER with the text of the first value that is outside its limits
    /// or no network.
    ServerSettings Settings();

    bool IsBigEndian() const { return byteOrder.Get() == ByteOrder::Big; }

    Vor::Params::Value<unsigned short> unitId;
    Vor::Params::Enum<ByteOrder> byteOrder;
};

} // namespace Services::Modbus
