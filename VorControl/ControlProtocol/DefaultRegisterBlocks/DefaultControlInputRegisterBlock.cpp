#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputRegisterBlock.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/Translate.h"
#include "yApi/yMemory.h"

#include <algorithm>

namespace VorControl::ControlProtocol {

namespace {

constexpr unsigned long long JobNameSize = 63; ///< with its terminator

void RequireSourceSize(unsigned long long sourceSize, unsigned long long needed) {
    if (sourceSize < needed) {
        Vor::Throw(yERROR_SIZE, "Insufficient source buffer size available for data deserialization.");
    }
}

} // namespace

DefaultControlInputRegisterBlock::DefaultControlInputRegisterBlock(const RegisterBlockParams& params,
                                                                   ProtocolRegisterBlockInfo& info)
    : DefaultControlInputRegisterBlock(params, info, 63) {}

DefaultControlInputRegisterBlock::DefaultControlInputRegisterBlock(const RegisterBlockParams& params,
                                                                   ProtocolRegisterBlockInfo& info,
                                                                   unsigned long long userDataSize)
    : ProtocolRegisterBlock(params, info)
    , userDataSize(userDataSize) {}

void DefaultControlInputRegisterBlock::Deserialize(void* destination, unsigned long long destinationSize,
                                                   const void* source, unsigned long long sourceSize) {
    RequireSourceSize(sourceSize, DeserializedInputSize());
    if (destinationSize != sizeof(ControlRegisterCommandData)) {
        Vor::Throw(yERROR_SIZE, "Insufficient destination buffer available for data deserialization output.");
    }
    Vor::ThrowIfFailed(yMemSet(destination, 0, sizeof(ControlRegisterCommandData)));
    DeserializeControlRegisterCommandData(static_cast<ControlRegisterCommandData*>(destination),
                                          static_cast<const unsigned char*>(source), sourceSize);
}

void DefaultControlInputRegisterBlock::DeserializeControlRegisterCommandData(ControlRegisterCommandData* data,
                                                                             const unsigned char* source,
                                                                             unsigned long long sourceSize) const {
    RequireSourceSize(sourceSize, commandArgsOffset);
    Deserialize16(data->requestWord, source, requestWordOffset);
    if (BytesPerRegister() == 2) {
        unsigned short commandId = 0;
        Deserialize16(commandId, source, commandIdOffset);
        data->commandId = static_cast<std::uint8_t>(commandId & 0xFF);
    } else {
        data->commandId = source[commandIdOffset];
    }
    if (data->commandId == ControlRegisterCommandData::LoadJob) {
        DeserializeJobName(data, source, sourceSize);
        if (data->commandArgs[0] == '\0') {
            Vor::LogUser(Vor::UserError, "Jobs",
                         Translate("beApp.ctrl", "Unable to load job file because no job file name was given."));
            Vor::Throw(yERROR_PARAMETER);
        }
    }
    if (data->commandId == ControlRegisterCommandData::SetUserData) {
        DeserializeUserDataInputBuffer(data, source, sourceSize);
    }
}

void DefaultControlInputRegisterBlock::DeserializeJobName(ControlRegisterCommandData* data, const unsigned char* source,
                                                          unsigned long long sourceSize) const {
    const unsigned long long width = BytesPerRegister() == 2 ? 2 : 1;
    const unsigned long long size = std::min(JobNameSize, (sourceSize - commandArgsOffset) / width);
    for (unsigned long long i = 0; i < size; ++i) {
        unsigned short character = 0;
        if (width == 2) {
            Deserialize16(character, source, commandArgsOffset + width * i);
        } else {
            character = source[commandArgsOffset + i];
        }
        data->commandArgs[i] = static_cast<char>(character & 0xFF);
        if (data->commandArgs[i] == '\0') {
            break;
        }
    }
    data->commandArgs[JobNameSize - 1] = '\0';
}

void DefaultControlInputRegisterBlock::DeserializeUserDataInputBuffer(ControlRegisterCommandData* data,
                                                                      const unsigned char* source,
                                                                      unsigned long long sourceSize) const {
    if (BytesPerRegister() != 1) {
        Vor::Throw(yERROR_CONFLICT, "This block only supports 1 byte per register.");
    }
    RequireSourceSize(sourceSize, commandArgsOffset + userDataSize);
    data->SetCommandArgsSize(userDataSize);
    Vor::ThrowIfFailed(yMemCopy(data->commandArgs.data(), source + commandArgsOffset, userDataSize));
}

} // namespace VorControl::ControlProtocol
