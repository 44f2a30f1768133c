#include "Sensor/Resources/SensorResource.h"

#include "Sensor/VirtualSensor.h"
#include "VorControl/Control/IControlManager.h"

#include <chrono>
#include <utility>

namespace Sensor::Resources {

namespace {

/// Parameters can't have a number with a fraction.
void AddFrameRate(const VirtualSensor& sensor, const VorApi::RequestInfoEx& request, VorApi::VorDataTree& data) {
    data["frameRate"].Set(sensor.TriggerMode() == Scan::TriggerMode::Time ? sensor.FrameRate() : 0);
    if (request.WantsSchema()) {
        VorApi::VorDataTree schema = data["_schema"]["properties"]["frameRate"];
        schema["type"].Set("number");
        schema["title"].Set("Frames a second by time");
        schema["readOnly"].Set(true);
        schema["units"].Set("1/s");
    }
}

} // namespace

SensorResource::SensorResource(const SensorEnviron& environ)
    : environ(environ)
    , start(Vor::LoopCore::Instance().Now()) {}

void SensorResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                              VorApi::VorDataTree& data) {
    SensorProperties document;
    document.Populate(environ,
                      std::chrono::duration_cast<std::chrono::seconds>(Vor::LoopCore::Instance().Now() - start));
    NodeToVorDataTree(document, request, data, true);
    AddFrameRate(environ.sensor, request, data);
    for (unsigned long i = 0; i < document.services.Count(); ++i) {
        response.Link("vor:service", document.services.At(i).path.Get(), true, VorApi::VorDataTree());
    }
    for (const auto& [relation, path] :
         {std::pair("vor:operations", "/sensor/operations"), std::pair("vor:jobs", "/sensor/jobs"),
          std::pair("vor:sensorProblems", "/sensor/problems"), std::pair("vor:log", "/sensor/log"),
          std::pair("vor:scan", "/sensor/scan"), std::pair("vor:sources", "/sensor/sources"),
          std::pair("vor:io", "/sensor/io"), std::pair("vor:tools", "/sensor/tools")}) {
        response.Link(relation, path, false, VorApi::VorDataTree());
    }
}

} // namespace Sensor::Resources
