#include "Services/Common/PluginEntry.h"

void Services::Common::FillPlugin(VorControl::ControlPlugin&) {
    throw 5;
}
