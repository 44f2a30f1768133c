#include "Sensor/Resources/CommandResourceBase.h"

#include "Sensor/Resources/OperationProperties.h"
#include "Vor/DocumentErrors.h"
#include "Vor/DocumentValidation.h"
#include "Vor/Exception.h"
#include "VorApi/Completion.h"
#include "VorApi/Params/Group.h"
#include "VorControl/Protocol/CommandProperties.h"

#include <algorithm>
#include <exception>

#include <nlohmann/json.hpp>

namespace Sensor::Resources {

using VorApi::VorDataTree;

const std::string& CommandResourceBase::RequiredCommand(const VorApi::RequestInfo& request) {
    const std::string* const command = request.FindKey("command");
    if (command == nullptr) {
        Vor::Throw(yERROR_PARAMETER, "The path names no command.");
    }
    const std::vector<std::string> commands = Commands(request);
    if (std::ranges::find(commands, *command) == commands.end()) {
        Vor::Throw(yERROR_NOT_FOUND, "There is no command '%s' here.", *command);
    }
    return *command;
}

void CommandResourceBase::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                   VorDataTree& data) {
    if (request.FindKey("command") == nullptr) {
        for (const std::string& command : Commands(request)) {
            response.Embed("item", PathOf(request, command), true, VorDataTree());
        }
        return;
    }
    const std::string& command = RequiredCommand(request);
    const std::shared_ptr<Group> parameters = Parameters(command);
    VorControl::Protocol::CommandProperties document;
    document.id = command;
    document.Register("parameters", *parameters);
    NodeToVorDataTree(document, request, data, true);
}

VorDataTree CommandResourceBase::Invoke(const VorApi::RequestInfoEx& request, const VorDataTree& data) {
    VorApi::ResponseInfoEx response;
    return Invoke(request, response, data);
}

VorDataTree CommandResourceBase::Invoke(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                        const VorDataTree& data) {
    const std::string& command = RequiredCommand(request);
    const std::shared_ptr<Group> parameters = Parameters(command);
    if (!data.IsNull()) {
        const nlohmann::json arguments = data.ToJson();
        if (!arguments.is_object()) {
            Vor::Throw(yERROR_PARAMETER, "The arguments of the command '%s' aren't an object.", command);
        }
        NodeFromJsonAndValidate(*parameters, arguments);
        if (const auto members = arguments.find("parameters"); members != arguments.end()) {
            Vor::DocumentErrors errors;
            Vor::Properties::ValidateDocument(*parameters, *members, errors, "/parameters");
            errors.ThrowIfAny();
            NodeFromJson(*parameters, *members);
        }
    }
    return Run(request, response, command, *parameters);
}

VorDataTree CommandResourceBase::RunOperation(OperationRunner& operations, const OperationRunner::Request& operation,
                                              bool answersFirst, const VorApi::RequestInfoEx& request,
                                              VorApi::ResponseInfoEx& response) {
    const auto documentOf = [request](const Operation& described) {
        VorDataTree document;
        document.MakeObject();
        NodeToVorDataTree(OperationProperties(described), request, document, true);
        return document;
    };
    if (answersFirst || request.PrefersAsync()) {
        const Operation& started = operations.Run(operation, {});
        response.Accept(OperationProperties::PathOf(started));
        return documentOf(started);
    }
    const VorApi::Completion completion = response.Defer();
    const Operation& started = operations.Run(operation, [completion, documentOf](const Operation& ended) {
        if (ended.state == Operation::State::Succeeded) {
            completion.Complete(documentOf(ended));
        } else {
            completion.Fail(std::make_exception_ptr(
                Vor::Exception(__LINE__, __FILE__, ended.status, "Operation", "%s", ended.text)));
        }
    });
    response.Link("vor:operation", OperationProperties::PathOf(started), false, VorDataTree());
    return {};
}

} // namespace Sensor::Resources
