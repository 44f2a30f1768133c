#pragma once

#include "Services/Ascii/LineFormat.h"
#include "Services/Ascii/SymbolParam.h"
#include "Services/Common/TcpServerParams.h"
#include "VorApi/Params/Enum.h"
#include "VorApi/Params/Value.h"

#include <cstdint>

namespace Services::Ascii {

enum class DecimalSeparator : std::int32_t { Point = 0, Comma = 1 };

/// The parameters as the server uses them.
struct AsciiSettings {
    Common::TcpServerSettings tcp;
    LineFormat format;
};

class AsciiParams : public Common::TcpServerParams {
public:
    AsciiParams();

    /// Sets every value to its default.
    void Reset();

    /// Throws yERROR_PARAMETER with a text for the user when a value is outside its limits, or when two values don't go
    /// together.
    AsciiSettings Settings();

    SymbolParam delimiter;
    SymbolParam terminator;
    Vor::Params::Enum<DecimalSeparator> decimalSeparator;
    Vor::Params::Enum<Notation> numberFormat;
    Vor::Params::Value<unsigned short> decimals;
    SymbolParam invalidText;
};

} // namespace Services::Ascii
