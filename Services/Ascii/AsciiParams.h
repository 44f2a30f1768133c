#pragma once

#include "Services/Ascii/LineFormat.h"
#include "Services/Ascii/SymbolParam.h"
#include "Services/Common/TcpServerParams.h"
#include "Services/Common/TriggerTimeoutParam.h"
#include "VorApi/Params/Enum.h"
#include "VorApi/Params/Value.h"

#include <cstdint>

namespace Services::Ascii {

enum class DecimalSeparator : std::int32_t { Point = 0, Comma = 1 };

class AsciiParams : public Common::TcpServerParams {
public:
    AsciiParams();

    void Reset() override;
    Net::TcpServerSettings Settings() override;
    LineFormat Format() const;

    SymbolParam delimiter;
    SymbolParam terminator;
    Vor::Params::Enum<DecimalSeparator> decimalSeparator;
    Vor::Params::Enum<Notation> numberFormat;
    Vor::Params::Value<unsigned short> decimals;
    SymbolParam invalidText;
    Common::TriggerTimeoutParam triggerTimeout;
    Vor::Params::Value<bool> allowRead;
};

} // namespace Services::Ascii
