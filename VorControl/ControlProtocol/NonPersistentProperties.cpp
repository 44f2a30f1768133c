#include "VorControl/ControlProtocol/NonPersistentProperties.h"

#include "Vor/VorGetText.h"

#include <utility>

namespace VorControl::ControlProtocol {

NonPersistentProperties::NonPersistentProperties() {
    Register("status", status, "Status", 200);
    status.SetSortOrder(100);
    for (const auto& [value, text] :
         {std::pair(ProtocolStatus::Running, "Running"), std::pair(ProtocolStatus::Stopped, "Stopped"),
          std::pair(ProtocolStatus::Starting, "Starting"), std::pair(ProtocolStatus::Stopping, "Stopping"),
          std::pair(ProtocolStatus::FailedToStart, "Failed To Start"),
          std::pair(ProtocolStatus::FailedToStop, "Failed To Stop")}) {
        status.AddOption(value, VorGetText::GetInstance().DPGetText("BE", "com.vorlab.ctrl", text));
    }
    status = ProtocolStatus::Stopped;
    status.EnableReadOnly();
    status.SetReadOnly(true);
}

} // namespace VorControl::ControlProtocol
