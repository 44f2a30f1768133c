#include "Services/Common/TriggerTimeoutParam.h"

#include "Services/Common/SensorCommands.h"
#include "Services/Common/Translate.h"

namespace Services::Common {

TriggerTimeoutParam::TriggerTimeoutParam() {
    EnableDescription(true);
    SetDescription(Translate("A software trigger has failed when its frame doesn't come in this time. 0: a trigger is "
                             "done without waiting for its frame."));
    EnableUnits(true);
    SetUnits("ms");
    EnableMaximum(true);
    SetMaximum(static_cast<unsigned int>(SensorCommands::MaxTriggerTimeout.count()));
    Reset();
}

void TriggerTimeoutParam::RegisterIn(Vor::Params::Group& params) {
    params.Register("triggerTimeout", *this, Translate("Trigger Time-out"), 100);
}

void TriggerTimeoutParam::Reset() {
    Value::operator=(static_cast<unsigned int>(SensorCommands::DefaultTriggerTimeout.count()));
}

} // namespace Services::Common
