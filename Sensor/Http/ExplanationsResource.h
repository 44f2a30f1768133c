#pragma once

#include "VorApi/DocumentResourceBase.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Vor::Params {
class Group;
}

namespace Sensor::Http {

/// Documents that never change, each at an id, with their list.
class ExplanationsResource : public VorApi::DocumentResourceBase {
public:
    struct Explanation {
        std::string id;
        std::shared_ptr<const Vor::Params::Group> document;
    };

    /// `route` ends with a parameter, which is the id.
    ExplanationsResource(std::string route, std::vector<Explanation> explanations);

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;

private:
    const std::string route;
    const std::string key;
    const std::vector<Explanation> explanations;
};

inline constexpr const char* ProblemsRoute = "/problems/:problem";
inline constexpr const char* RelationsRoute = "/rels/:rel";

/// The kinds of refusals of the HTTP server.
std::vector<ExplanationsResource::Explanation> ExplainProblems();
/// The relations whose names begin with "vor:", which the id lacks.
std::vector<ExplanationsResource::Explanation> ExplainRelations();

} // namespace Sensor::Http
