#include "Sensor/Jobs/ServiceSetting.h"

#include "Sensor/StartError.h"

namespace Sensor::Jobs {

ServiceSetting ServiceSetting::Parse(const std::string& text) {
    const std::size_t equals = text.find('=');
    const std::size_t dot = text.find('.');
    if (equals == std::string::npos || dot >= equals || dot == 0 || dot + 1 == equals) {
        throw StartError("--set " + text + ": expected SERVICE.PARAMETER=VALUE.");
    }
    return {"--set " + text, text.substr(0, dot), text.substr(dot + 1, equals - dot - 1), text.substr(equals + 1)};
}

} // namespace Sensor::Jobs
