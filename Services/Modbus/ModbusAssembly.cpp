#include "Services/Modbus/ModbusAssembly.h"

#include "Services/Common/Translate.h"
#include "Services/Modbus/BlockTypes.h"
#include "Vor/Exception.h"
#include "VorControl/ControlProtocol/NoneGiven.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "yApi/yStatus.h"

#include <string_view>

namespace Services::Modbus {

using namespace VorControl::ControlProtocol;

namespace {

constexpr unsigned short FirstRegister = 0;
constexpr unsigned short LastRegister = 65534;
constexpr std::string_view TextType = "String";

void RequireTextRegisters(unsigned short count) {
    if (count != NoneGiven && (count == 0 || count > ModbusAssembly::MaxTextRegisters)) {
        Vor::Throw(
            yERROR_PARAMETER,
            Common::Translate("A block of the type String has 1 to %1$u registers, as many as one request reads, "
                              "but %2$u were given."),
            static_cast<unsigned>(ModbusAssembly::MaxTextRegisters), static_cast<unsigned>(count));
    }
}

} // namespace

ModbusAssembly::ModbusAssembly()
    : ProtocolRegisterAssemblyBase(true, FirstRegister, LastRegister, "registerAssembly-0",
                                   DEFAULT_REGISTER_ASSEMBLY_DISPLAY_NAME) {
    AddScanBlockTypes(*this);
    AddControlBlockTypes(*this);
}

std::uint32_t ModbusAssembly::Add(Vor::Params::Group& group) {
    auto& blocks = dynamic_cast<AddBlockParams&>(group).blocks;
    for (unsigned long i = 0; i < blocks.Count(); ++i) {
        if (blocks.At(i).type.Get() == TextType) {
            RequireTextRegisters(blocks.At(i).registerCount.Get());
        }
    }
    return ProtocolRegisterAssemblyBase::Add(group);
}

std::uint32_t ModbusAssembly::Update(const Vor::Params::Group& group) {
    const auto& request = dynamic_cast<const UpdateBlockParams&>(group);
    {
        const AssemblyLock lock(*this);
        for (const auto& block : AddedRegisterBlocks()) {
            if (block->OutputId() == request.outputId.Get() && block->Type() == TextType) {
                RequireTextRegisters(request.newParams.registerCount.Get());
            }
        }
    }
    return ProtocolRegisterAssemblyBase::Update(group);
}

} // namespace Services::Modbus
