#pragma once

#include "Sensor/Resources/OperationRunner.h"
#include "VorApi/DocumentResourceBase.h"
#include "VorApi/ICallableResource.h"

#include <memory>
#include <string>
#include <vector>

namespace Vor::Params {
class Group;
}

namespace Sensor::Resources {

/// What resources of commands have in common: their list, a document of each with its parameters, and their call with
/// arguments. The last parameter of the path is "command".
class CommandResourceBase : public VorApi::DocumentResourceBase, public VorApi::ICallableResource {
public:
    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) final;
    VorApi::VorDataTree Invoke(const VorApi::RequestInfoEx& request, const VorApi::VorDataTree& data) final;
    VorApi::VorDataTree Invoke(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                               const VorApi::VorDataTree& data) final;

protected:
    using Group = Vor::Params::Group;

    /// Throws for a path at which there are none.
    virtual std::vector<std::string> Commands(const VorApi::RequestInfo& request) = 0;
    /// The path of one of them.
    virtual std::string PathOf(const VorApi::RequestInfo& request, const std::string& command) = 0;
    /// A new group with the defaults of one of them.
    virtual std::shared_ptr<Group> Parameters(const std::string& command) = 0;
    /// Runs one of them, with a group of its parameters that are valid.
    virtual VorApi::VorDataTree Run(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                    const std::string& command, const Group& parameters) = 0;

    /// Runs an operation on the sensor. The answer is its document: at its end, or at once if the client prefers that
    /// or `answersFirst`. An operation that fails is answered with its failure.
    static VorApi::VorDataTree RunOperation(OperationRunner& operations, const OperationRunner::Request& operation,
                                            bool answersFirst, const VorApi::RequestInfoEx& request,
                                            VorApi::ResponseInfoEx& response);

private:
    /// The command of the path. Throws for one that doesn't exist.
    const std::string& RequiredCommand(const VorApi::RequestInfo& request);
};

} // namespace Sensor::Resources
