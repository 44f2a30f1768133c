#pragma once

#include "Services/Common/TcpServerParams.h"
#include "Services/Common/TriggerTimeoutParam.h"
#include "VorApi/Params/Enum.h"
#include "VorApi/Params/Value.h"

#include <cstdint>
#include <string>

namespace Services::Modbus {

/// Whether the high or the low register of a value of several registers comes first.
enum class ByteOrder : std::int32_t { Big = 0, Little = 1 };

class ModbusParams : public Common::TcpServerParams {
public:
    ModbusParams();

    void Reset() override;

    bool IsBigEndian() const { return byteOrder.Get() == ByteOrder::Big; }

    /// The unit identifier to serve; 0 serves all.
    unsigned char Unit() const { return static_cast<unsigned char>(unitId.Get()); }

    static constexpr const char* FirstRequestRuns = "run";
    static constexpr const char* FirstRequestIsBase = "base";

    Vor::Params::Value<unsigned short> unitId;
    Vor::Params::Enum<ByteOrder> byteOrder;
    Vor::Params::Enum<std::string> firstRequest; ///< FirstRequestRuns or FirstRequestIsBase
    Common::TriggerTimeoutParam triggerTimeout;
};

} // namespace Services::Modbus
