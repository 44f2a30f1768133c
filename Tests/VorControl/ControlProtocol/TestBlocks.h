#pragma once

#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "VorControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/// Block types for tests.
namespace Tests {

using namespace VorControl::ControlProtocol;

/// A block whose primitives can be called.
class OpenBlock : public ProtocolRegisterBlock {
public:
    using ProtocolRegisterBlock::Convert64fTo32s;
    using ProtocolRegisterBlock::Deserialize16;
    using ProtocolRegisterBlock::Deserialize16_BE;
    using ProtocolRegisterBlock::Deserialize16_LE;
    using ProtocolRegisterBlock::FormatFullJobFileName;
    using ProtocolRegisterBlock::ProtocolRegisterBlock;
    using ProtocolRegisterBlock::Serialize_BE;
    using ProtocolRegisterBlock::Serialize_LE;
    using ProtocolRegisterBlock::SerializeInvalidValue;
    using ProtocolRegisterBlock::SerializeString;
    using ProtocolRegisterBlock::SerializeValue;
};

/// A scan block that overrides no writer.
class BareScanBlock : public ProtocolScanOutputRegisterBlock {
public:
    using ProtocolScanOutputRegisterBlock::ProtocolScanOutputRegisterBlock;

    void Serialize(void* destination, unsigned long long destinationSize, const void* source,
                   unsigned long long sourceSize) override {
        SerializeScanData(destination, destinationSize, source, sourceSize);
    }
};

/// A type with registers of one byte and any number of blocks.
template <class Block = OpenBlock>
RegisterBlockInfoParams TypeParams(const std::string& type, unsigned short registers = 1) {
    RegisterBlockInfoParams params;
    params.type = type;
    params.displayName = type + " name";
    params.defaultRegisterCount = registers;
    params.maxInstanceCount = 65534;
    params.factory = std::make_shared<ProtocolRegisterBlockFactory<Block>>();
    return params;
}

template <class Block = OpenBlock>
RegisterBlockInfoParams ScanTypeParams(const std::string& type, unsigned short registers = 1) {
    auto params = TypeParams<Block>(type, registers);
    params.hasDataSource = true;
    return params;
}

/// Bytes that no block writes, to find those that a block doesn't change.
inline std::vector<unsigned char> Canary(std::size_t size) {
    return std::vector<unsigned char>(size, 0xA5);
}

using Bytes = std::vector<unsigned char>;

} // namespace Tests
