#include "VorControl/Persistence/RegisterAssemblyDocument.h"

#include "Vor/JsonSerializer.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/Persistence/PersistFields.h"

#include <nlohmann/json.hpp>

namespace VorControl::Persistence {

using nlohmann::json;
using Vor::Properties::JsonSerializer;

json SerializeRegisterAssembly(ControlProtocol::IProtocolRegisterAssembly& assembly) {
    json entry;
    entry[PERSISTENCE_FIELD_NAME_ATTRIBUTES] = JsonSerializer::Serialize(assembly.Attributes());
    entry[PERSISTENCE_FIELD_NAME_PROPERTIES] = JsonSerializer::Serialize(assembly.Properties());
    json& blocks = entry[PERSISTENCE_FIELD_NAME_BLOCKS] = json::array();
    for (const auto& block : assembly.AddedRegisterBlocks()) {
        blocks.push_back(JsonSerializer::Serialize(*block));
    }
    return entry;
}

} // namespace VorControl::Persistence
