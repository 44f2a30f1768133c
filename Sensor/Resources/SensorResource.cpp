#include "Sensor/Resources/SensorResource.h"

#include "VorControl/Control/IControlManager.h"

#include <chrono>
#include <utility>

namespace Sensor::Resources {

SensorResource::SensorResource(const SensorEnviron& environ)
    : environ(environ)
    , start(Vor::LoopCore::Instance().Now()) {}

void SensorResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                              VorApi::VorDataTree& data) {
    SensorProperties document;
    document.Populate(environ,
                      std::chrono::duration_cast<std::chrono::seconds>(Vor::LoopCore::Instance().Now() - start));
    NodeToVorDataTree(document, request, data, true);
    for (unsigned long i = 0; i < document.services.Count(); ++i) {
        response.Link("vor:service", document.services.At(i).path.Get(), true, VorApi::VorDataTree());
    }
    for (const auto& [relation, path] :
         {std::pair("vor:sensorProblems", "/sensor/problems"), std::pair("vor:log", "/sensor/log"),
          std::pair("vor:scan", "/sensor/scan"), std::pair("vor:sources", "/sensor/sources")}) {
        response.Link(relation, path, false, VorApi::VorDataTree());
    }
}

} // namespace Sensor::Resources
