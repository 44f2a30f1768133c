#include "Services/Modbus/DiagnosticsBlock.h"

#include "Vor/Exception.h"

namespace Services::Modbus {

void DiagnosticsBlock::Serialize(void* destination, unsigned long long destinationSize, const void* source,
                                 unsigned long long sourceSize) {
    if (sourceSize != sizeof(Diagnostics)) {
        Vor::Throw(yERROR_SIZE, "Insufficient source buffer size available for data serialization.");
    }
    if (destinationSize != SerializedOutputSize()) {
        Vor::Throw(yERROR_SIZE, "Insufficient destination buffer size available for data serialization output.");
    }
    const auto& counts = *static_cast<const Diagnostics*>(source);
    auto* const bytes = static_cast<unsigned char*>(destination);
    unsigned long long offset = 0;
    for (const std::uint32_t count :
         {counts.clients, counts.refused, counts.requests, counts.exceptions, counts.dropCount, counts.uptime}) {
        SerializeValue(bytes, offset, count, false);
        offset += sizeof count;
    }
}

} // namespace Services::Modbus
