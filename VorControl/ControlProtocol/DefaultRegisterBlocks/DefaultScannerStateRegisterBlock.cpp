#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlock.h"

#include "Vor/Exception.h"

namespace VorControl::ControlProtocol {

DefaultScannerStateRegisterBlock::DefaultScannerStateRegisterBlock(const RegisterBlockParams& params,
                                                                   ProtocolRegisterBlockInfo& info)
    : DefaultScannerStateRegisterBlock(params, info, Offsets()) {}

DefaultScannerStateRegisterBlock::DefaultScannerStateRegisterBlock(const RegisterBlockParams& params,
                                                                   ProtocolRegisterBlockInfo& info,
                                                                   const Offsets& offsets)
    : ProtocolRegisterBlock(params, info)
    , offsets(offsets) {}

void DefaultScannerStateRegisterBlock::Serialize(void* destination, unsigned long long destinationSize,
                                                 const void* source, unsigned long long sourceSize) {
    if (sourceSize != sizeof(DefaultScannerStateData)) {
        Vor::Throw(yERROR_SIZE, "Insufficient source buffer size available for data serialization.");
    }
    if (destinationSize != SerializedOutputSize()) {
        Vor::Throw(yERROR_SIZE, "Insufficient destination buffer sizes available for data serialization output.");
    }
    SerializeScannerStateData(static_cast<unsigned char*>(destination),
                              static_cast<const DefaultScannerStateData*>(source));
}

void DefaultScannerStateRegisterBlock::SerializeScannerStateData(unsigned char* buffer,
                                                                 const DefaultScannerStateData* data) const {
    SerializeValue<unsigned char>(buffer, offsets.firstScannerByte, data->firstScannerByte, false);
    SerializeValue<long long>(buffer, offsets.signedScannerValue, data->signedScannerValue, true);
    SerializeValue<unsigned long long>(buffer, offsets.unsignedScannerValue, data->unsignedScannerValue, false);
    SerializeValue<unsigned char>(buffer, offsets.secondScannerByte, data->secondScannerByte, false);
}

} // namespace VorControl::ControlProtocol
