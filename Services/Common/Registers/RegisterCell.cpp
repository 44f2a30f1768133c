#include "Services/Common/Registers/RegisterCell.h"

#include "VorControl/ControlProtocol/RegisterBlockParams.h"

#include <utility>

namespace Services::Common {

RegisterCell::RegisterCell(BlockType made, const RegisterFormat& format)
    : type(std::move(made))
    , block(type->ConstructBlock(VorControl::ControlProtocol::RegisterBlockParams()))
    , format(format)
    , bytes(block->SerializedOutputSize(), 0) {}

void RegisterCell::SetIsBigEndian(bool value) {
    type->SetIsProtocolBigEndian(value);
    Serialize();
}

RegisterImage::Part RegisterCell::Part() const {
    return place ? RegisterImage::Part{*place, bytes} : RegisterImage::Part{};
}

void RegisterCell::Serialize() {
    if (!record.empty()) {
        block->Serialize(bytes.data(), bytes.size(), record.data(), record.size());
        format.Order(bytes);
    }
}

} // namespace Services::Common
