#include "Services/Common/PluginEntry.h"
#include "Vor/Exception.h"

void Services::Common::FillPlugin(VorControl::ControlPlugin&) {
    Vor::Throw(yERROR_CONFLICT, "there is no place for it");
}
