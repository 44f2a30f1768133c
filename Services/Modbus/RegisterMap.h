#pragma once

#include "Services/Common/Registers/CommandCells.h"
#include "Services/Common/Registers/RegisterFormat.h"
#include "Services/Common/Registers/RegisterImage.h"
#include "Services/Modbus/IRegisterMap.h"

namespace Services::Modbus {

/// Registers of two bytes, the high byte first.
Common::RegisterFormat MakeRegisterFormat();

/// The blocks without data source in such registers.
Common::CellTypes MakeCellTypes();

/// The registers of the service as requests name them.
class RegisterMap : public IRegisterMap {
public:
    /// Both must outlive this object.
    RegisterMap(const Common::RegisterImage& image, Common::CommandCells& cells)
        : image(image)
        , cells(cells) {}

    bool Read(std::uint16_t address, std::uint16_t count, unsigned char* destination) const override;
    /// Runs the command, if the write changes the request word, before it returns.
    unsigned char Write(const RegisterWrite& write) override;

private:
    const Common::RegisterImage& image;
    Common::CommandCells& cells;
};

} // namespace Services::Modbus
