#include "Sensor/Resources/OperationsResource.h"

#include "Sensor/Resources/OperationProperties.h"
#include "Vor/Exception.h"
#include "VorApi/Path.h"

namespace Sensor::Resources {

void OperationsResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                  VorApi::VorDataTree& data) {
    const std::string* const id = request.FindKey("operation");
    if (id == nullptr) {
        for (const std::string& kept : operations.Ids()) {
            response.Embed("item", VorApi::Path::Format("/sensor/operations/:operation", {kept}), true,
                           VorApi::VorDataTree());
        }
        return;
    }
    const Operation* const operation = operations.Find(*id);
    if (operation == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND, "There is no operation '%s' among the last %d.", *id,
                   static_cast<int>(OperationRunner::MaxKept));
    }
    NodeToVorDataTree(OperationProperties(*operation), request, data, true);
}

} // namespace Sensor::Resources
