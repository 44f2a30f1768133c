#pragma once

#include "Sensor/Resources/CommandResourceBase.h"
#include "Sensor/Resources/JobsEnviron.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Sensor::Resources {

/// The commands of each job. Those that save are commands of the loaded one. A load is an operation on the sensor; the
/// others are answered with the job that they have made or changed.
class JobCommandResource : public CommandResourceBase {
public:
    explicit JobCommandResource(const JobsEnviron& environ)
        : environ(environ) {}

protected:
    std::vector<std::string> Commands(const VorApi::RequestInfo& request) override;
    std::string PathOf(const VorApi::RequestInfo& request, const std::string& command) override;
    std::shared_ptr<Group> Parameters(const std::string& command) override;
    VorApi::VorDataTree Run(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                            const std::string& command, const Group& parameters) override;

private:
    /// Answers with the job of that name once `work` has been done on the persistence thread. `ended` is called before,
    /// also if the work has failed, which may have been half done.
    template <class Work>
    void AnswerWithJob(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response, const std::string& name,
                       Work work, std::function<void()> ended);

    const JobsEnviron environ;
};

} // namespace Sensor::Resources
