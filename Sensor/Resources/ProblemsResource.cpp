#include "Sensor/Resources/ProblemsResource.h"

#include "Sensor/Resources/DocumentMembers.h"
#include "Sensor/Resources/ListedProblemProperties.h"
#include "Sensor/Resources/ProblemList.h"
#include "VorApi/Params/Array.h"

#include <cstddef>
#include <set>
#include <string>
#include <vector>

namespace Sensor::Resources {

namespace {

class ListedProblemsProperties : public Vor::Params::Group {
public:
    ListedProblemsProperties() { RegisterReadOnly(*this, "items", items, "Problems"); }

    Vor::Params::Array<ListedProblemProperties> items;
};

} // namespace

void ProblemsResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                VorApi::VorDataTree& data) {
    const std::vector<ListedProblem>& problems = list.Update();
    ListedProblemsProperties document;
    document.items.Resize(problems.size());
    std::set<std::string> services;
    for (std::size_t i = 0; i < problems.size(); ++i) {
        document.items.At(i).Populate(problems[i]);
        if (!problems[i].source.empty()) {
            services.insert(problems[i].source);
        }
    }
    NodeToVorDataTree(document, request, data, true);
    for (const std::string& path : services) {
        response.Link("vor:service", path, true, VorApi::VorDataTree());
    }
}

} // namespace Sensor::Resources
