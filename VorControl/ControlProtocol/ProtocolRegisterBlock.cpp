#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/NoneGiven.h"
#include "VorControl/ControlProtocol/Translate.h"
#include "VorMsg/VvMeasureMsg.h"
#include "yApi/yString.h"

#include <cstring>

namespace VorControl::ControlProtocol {

ProtocolRegisterBlock::ProtocolRegisterBlock(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info)
    : Group("")
    , info(info)
    , type(info.Type())
    , displayName(params.displayName.Get())
    , outputId(params.outputId.Get()) {
    if (info.IsGlobalAddressSpaceUsed() && outputId.Get() == NoneGiven) {
        Vor::Throw(yERROR_PARAMETER, Translate("beApp.ctrl", "An output id must be specified."));
    }
    Register("version", version, Translate("beApp.ctrl", "Version"), 100);
    Register("type", type, Translate("beApp.ctrl", "Type"), 100);
    Register("displayName", displayName, Translate("beApp.ctrl", "Display Name"), 100);
    Register("registerCount", registerCount, Translate("beApp.ctrl", "Number of Registers"), 100);
    Register("outputId", outputId, Translate("beApp.ctrl", "Output Id"), 100);

    version.EnableReadOnly();
    version.SetReadOnly(true);
    version.Set("1.2");
    type.EnableReadOnly();
    type.SetReadOnly(true);
    registerCount.EnableReadOnly();
    registerCount.SetReadOnly(!IsRegisterCountConfigurable());

    const unsigned short count = params.registerCount.Get();
    registerCount.Set(IsRegisterCountConfigurable() && count != NoneGiven ? count : info.DefaultRegisterCount());
    outputId.EnableReadOnly();
    outputId.SetReadOnly(false);
}

ProtocolRegisterBlock::~ProtocolRegisterBlock() = default;

void ProtocolRegisterBlock::Serialize(void*, unsigned long long, const void*, unsigned long long) {
    Vor::Throw(yERROR_UNIMPLEMENTED);
}

void ProtocolRegisterBlock::Deserialize(void*, unsigned long long, const void*, unsigned long long) {
    Vor::Throw(yERROR_UNIMPLEMENTED);
}

void ProtocolRegisterBlock::SetDataSource(const std::string&) {
    Vor::Throw(yERROR_UNIMPLEMENTED, Translate("beApp.ctrl", "Register block type %1$s does not support a data source"),
               Type());
}

const std::string& ProtocolRegisterBlock::DataSource() const {
    Vor::Throw(yERROR_UNIMPLEMENTED, Translate("beApp.ctrl", "Register block type %1$s does not have a data source"),
               Type());
}

const std::string& ProtocolRegisterBlock::DisplayName() const {
    return displayName.Get();
}

const std::string& ProtocolRegisterBlock::Type() const {
    return type.Get();
}

void ProtocolRegisterBlock::SetDisplayName(const std::string& name) {
    displayName.Set(name);
}

void ProtocolRegisterBlock::SetOutputId(unsigned short id) {
    outputId.Set(id);
}

void ProtocolRegisterBlock::SetRegisterCount(unsigned short count) {
    registerCount.Set(count);
}

bool ProtocolRegisterBlock::IsOutputIdConfigurable() const {
    return !outputId.GetReadOnly();
}

unsigned short ProtocolRegisterBlock::EndAddress() const {
    if (!info.IsGlobalAddressSpaceUsed()) {
        return OutputId();
    }
    return static_cast<unsigned short>(OutputId() + RegisterCount() - 1);
}

void ProtocolRegisterBlock::SerializeString(unsigned char* buffer, unsigned long long offset, const char* text,
                                            unsigned long long textLength, unsigned long long fieldLength) const {
    RequireRegisterWidth("SerializeString", "control");
    const auto length = std::min(textLength, fieldLength);
    std::fill(std::copy_n(text, length, buffer + offset), buffer + offset + fieldLength, static_cast<unsigned char>(0));
}

void ProtocolRegisterBlock::SerializeInvalidValue(unsigned char* buffer, unsigned long long offset,
                                                  unsigned long long numOfBytes, bool isSigned) const {
    RequireRegisterWidth("SerializeInvalidValue");
    const auto store = [&]<class Unsigned>(Unsigned allOnes) {
        const auto value = isSigned ? static_cast<Unsigned>(allOnes ^ (allOnes >> 1)) : allOnes;
        if (IsProtocolBigEndian()) {
            Serialize_BE(buffer, offset, value);
        } else {
            Serialize_LE(buffer, offset, value);
        }
    };
    switch (numOfBytes) {
    case 1:
        return store(static_cast<unsigned char>(~0U));
    case 2:
        return store(static_cast<unsigned short>(~0U));
    case 4:
        return store(~0U);
    case 8:
        return store(~0ULL);
    default:
        Vor_Log(__LINE__, __FILE__, Vor::LevelWarning, "SerializeInvalidValue",
                "BytesPerRegister (%u) specified is not valid", static_cast<unsigned int>(BytesPerRegister()));
    }
}

void ProtocolRegisterBlock::Deserialize16(unsigned short& value, const unsigned char* buffer,
                                          unsigned long long offset) const {
    RequireRegisterWidth("Deserialize16");
    if (IsProtocolBigEndian()) {
        Deserialize16_BE(value, buffer, offset);
    } else {
        Deserialize16_LE(value, buffer, offset);
    }
}

void ProtocolRegisterBlock::Deserialize16_BE(unsigned short& value, const unsigned char* buffer,
                                             unsigned long long offset) const {
    RequireRegisterWidth("Deserialize16_BE");
    value = static_cast<unsigned short>(buffer[offset] << 8 | buffer[offset + 1]);
}

void ProtocolRegisterBlock::Deserialize16_LE(unsigned short& value, const unsigned char* buffer,
                                             unsigned long long offset) const {
    RequireRegisterWidth("Deserialize16_LE");
    value = static_cast<unsigned short>(buffer[offset + 1] << 8 | buffer[offset]);
}

void ProtocolRegisterBlock::Convert64fTo32s(double value, double scale, int& result, int& firstFlag, int& secondFlag) {
    result = VvMeasureMsg_Convert64fTo32s(value, scale, firstFlag, secondFlag);
}

void ProtocolRegisterBlock::FormatFullJobFileName(char* fileName, unsigned long long capacity) {
    constexpr const char* Extension = ".vrjob";
    if (*fileName == '\0') {
        Vor::Throw(yERROR_PARAMETER);
    }
    const char* const found = yStrFindFirst(fileName, Extension);
    if (found != nullptr && std::strlen(found) == std::strlen(Extension)) {
        return;
    }
    Vor::ThrowIfFailed(yStrCat(fileName, capacity, Extension));
}

void ProtocolRegisterBlock::ThrowRegisterWidth(const char* function, const char* catalogue) const {
    throw Vor::Exception(__LINE__, __FILE__, yERROR_PARAMETER, function,
                         Translate(catalogue, "Invalid bytes per register found (%1$u)"),
                         static_cast<unsigned int>(BytesPerRegister()));
}

void ProtocolRegisterBlock::LogValueSize(unsigned long long numOfBytes) {
    Vor_Log(__LINE__, __FILE__, Vor::LevelWarning, "SerializeValue", "numOfBytes (%u) specified is not valid",
            numOfBytes);
}

} // namespace VorControl::ControlProtocol
