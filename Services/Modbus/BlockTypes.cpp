#include "Services/Modbus/BlockTypes.h"

#include "Services/Common/Translate.h"
#include "Services/Modbus/ControlInputBlock.h"
#include "Services/Modbus/ControlOutputBlock.h"
#include "Services/Modbus/DiagnosticsBlock.h"
#include "Services/Modbus/ScannerBlock.h"
#include "Services/Modbus/StampRegisterBlock.h"
#include "Services/Modbus/SystemBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueAndDecisionRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStringRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

namespace Services::Modbus {

using Common::Translate;

namespace {

using namespace VorControl::ControlProtocol;

constexpr unsigned short MaxInstances = 65534;

template <class Block>
void AddType(IProtocolRegisterAssembly& assembly, const char* type, const char* displayName,
             RegisterBlockCategory category, unsigned short registers) {
    RegisterBlockInfoParams params;
    params.type = type;
    params.displayName = Translate(displayName);
    params.category = category;
    params.defaultRegisterCount = registers;
    params.bytesPerRegister = 2;
    params.maxInstanceCount = MaxInstances;
    params.hasDataSource = true;
    params.factory = std::make_shared<ProtocolRegisterBlockFactory<Block>>();
    assembly.AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(params));
}

/// A type of block without data source. A map contains at most one block of it.
template <class Block>
BlockType MakeControlType(const char* type, const char* displayName, RegisterBlockCategory category,
                          unsigned short inputSize = 0) {
    RegisterBlockInfoParams params;
    params.type = type;
    params.displayName = Translate(displayName);
    params.category = category;
    params.deserializedInputSize = inputSize;
    params.defaultRegisterCount = Block::Registers;
    params.bytesPerRegister = 2;
    params.maxInstanceCount = 1;
    params.factory = std::make_shared<ProtocolRegisterBlockFactory<Block>>();
    return std::make_unique<ProtocolRegisterBlockInfo>(params);
}

} // namespace

void AddScanBlockTypes(IProtocolRegisterAssembly& assembly) {
    using enum RegisterBlockCategory;
    AddType<DefaultMeasurementValueAndDecisionRegisterBlock>(assembly, "Measurement", "Measurement and Decision",
                                                             Measurement, 3);
    AddType<DefaultMeasurementValueRegisterBlock>(assembly, "MeasurementValue", "Measurement", Measurement, 2);
    AddType<DefaultMeasurementDecisionRegisterBlock>(assembly, "MeasurementDecision", "Decision", Measurement, 1);
    AddType<StampRegisterBlock>(assembly, "Stamp", "Stamp", Stamp, 18);
    assembly.AddSupportedBlockType(std::make_unique<DefaultStringRegisterBlockInfo>(2));
}

void AddControlBlockTypes(IProtocolRegisterAssembly& assembly) {
    assembly.AddSupportedBlockType(MakeControlInputType());
    assembly.AddSupportedBlockType(MakeControlOutputType());
    assembly.AddSupportedBlockType(MakeSystemType());
    assembly.AddSupportedBlockType(MakeScannerType());
    assembly.AddSupportedBlockType(MakeDiagnosticsType());
}

BlockType MakeControlInputType() {
    return MakeControlType<ControlInputBlock>("ControlInput", "Command Input", RegisterBlockCategory::ControlInput,
                                              ControlInputBlock::InputSize);
}

BlockType MakeControlOutputType() {
    return MakeControlType<ControlOutputBlock>("ControlOutput", "Command Output", RegisterBlockCategory::ControlOutput);
}

BlockType MakeSystemType() {
    return MakeControlType<SystemBlock>("System", "System State", RegisterBlockCategory::System);
}

BlockType MakeScannerType() {
    return MakeControlType<ScannerBlock>(ScannerType, "Sensor Group State", RegisterBlockCategory::Scanner);
}

BlockType MakeDiagnosticsType() {
    return MakeControlType<DiagnosticsBlock>(DiagnosticsType, "Diagnostics", RegisterBlockCategory::System);
}

} // namespace Services::Modbus
