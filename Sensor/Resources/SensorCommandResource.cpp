#include "Sensor/Resources/SensorCommandResource.h"

#include "Vor/Exception.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorApi/Path.h"

#include <algorithm>

namespace Sensor::Resources {

using VorControl::ControlProtocolOperations;

namespace {

constexpr std::size_t MaxScannerSize = 255;

class NoParameters : public Vor::Params::Group {};

class ScannerParameters : public Vor::Params::Group {
public:
    ScannerParameters() { Register("scanner", scanner, "Id of the scanner, empty for the first one"); }

    Vor::Params::Value<std::string> scanner;
};

class LedParameters : public Vor::Params::Group {
public:
    LedParameters() {
        Register("system", system, "Blink the LED of the system, whatever the others are");
        Register("blinks", blinks, "The scanner's LED blinks");
        Register("on", on, "The scanner's LED is on");
    }

    Vor::Params::Value<bool> system{true};
    Vor::Params::Value<bool> blinks;
    Vor::Params::Value<bool> on;
};

using Start = void (*)(ControlProtocolOperations& operations, const std::string& clientId,
                       const Vor::Params::Group& parameters);

struct Command {
    const char* id;
    std::shared_ptr<Vor::Params::Group> (*makeParameters)();
    Start start;
    bool waitsForFrame = false;
    bool answersFirst = false; ///< clients may not be able to read an answer afterwards
};

template <class Parameters>
std::shared_ptr<Vor::Params::Group> Make() {
    return std::make_shared<Parameters>();
}

const std::string& ScannerOf(const Vor::Params::Group& parameters) {
    return dynamic_cast<const ScannerParameters&>(parameters).scanner.Get();
}

constexpr Command CommandTable[] = {
    {"start", Make<NoParameters>,
     [](ControlProtocolOperations& operations, const std::string& clientId, const Vor::Params::Group&) {
         operations.StartScan(clientId);
     }},
    {"stop", Make<NoParameters>,
     [](ControlProtocolOperations& operations, const std::string& clientId, const Vor::Params::Group&) {
         operations.StopScan(clientId);
     }},
    {.id = "trigger",
     .makeParameters = Make<ScannerParameters>,
     .start =
         [](ControlProtocolOperations& operations, const std::string& clientId, const Vor::Params::Group& parameters) {
             operations.SoftwareTrigger(clientId, ScannerOf(parameters).c_str());
         },
     .waitsForFrame = true},
    {"align", Make<ScannerParameters>,
     [](ControlProtocolOperations& operations, const std::string& clientId, const Vor::Params::Group& parameters) {
         operations.Alignment(clientId, ScannerOf(parameters).c_str());
     }},
    {"clearAlign", Make<ScannerParameters>,
     [](ControlProtocolOperations& operations, const std::string& clientId, const Vor::Params::Group& parameters) {
         operations.ClearAlignment(clientId, ScannerOf(parameters).c_str());
     }},
    {"blinkLed", Make<LedParameters>,
     [](ControlProtocolOperations& operations, const std::string& clientId, const Vor::Params::Group& parameters) {
         const auto& led = dynamic_cast<const LedParameters&>(parameters);
         operations.BlinkLed(clientId, led.system, led.blinks, led.on);
     }},
    {.id = "factoryRestore",
     .makeParameters = Make<NoParameters>,
     .start = [](ControlProtocolOperations& operations, const std::string& clientId,
                 const Vor::Params::Group&) { operations.FactoryRestore(clientId); },
     .answersFirst = true},
    {.id = "restart",
     .makeParameters = Make<NoParameters>,
     .start = [](ControlProtocolOperations& operations, const std::string& clientId,
                 const Vor::Params::Group&) { operations.Restart(clientId); },
     .answersFirst = true},
};

const Command& CommandOf(const std::string& id) {
    return *std::ranges::find(CommandTable, id, &Command::id);
}

/// The id of the scanner that a command is for; empty for a command that is for no scanner.
std::string CheckedScanner(const Vor::Params::Group& parameters) {
    const auto* const ofScanner = dynamic_cast<const ScannerParameters*>(&parameters);
    if (ofScanner == nullptr) {
        return "";
    }
    const std::string& scanner = ofScanner->scanner.Get();
    if (scanner.size() > MaxScannerSize || scanner.find('\0') != std::string::npos) {
        Vor::Throw(yERROR_PARAMETER, "The id of a scanner has at most %d bytes, none of which is zero.",
                   static_cast<int>(MaxScannerSize));
    }
    return scanner;
}

} // namespace

std::vector<std::string> SensorCommandResource::Commands(const VorApi::RequestInfo&) {
    std::vector<std::string> ids;
    for (const Command& command : CommandTable) {
        ids.emplace_back(command.id);
    }
    return ids;
}

std::string SensorCommandResource::PathOf(const VorApi::RequestInfo&, const std::string& command) {
    return VorApi::Path::Format("/sensor/commands/:command", {command});
}

std::shared_ptr<CommandResourceBase::Group> SensorCommandResource::Parameters(const std::string& command) {
    return CommandOf(command).makeParameters();
}

VorApi::VorDataTree SensorCommandResource::Run(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                               const std::string& command, const Group& parameters) {
    const Command& run = CommandOf(command);
    return RunOperation(operations,
                        {.command = command,
                         .argument = CheckedScanner(parameters),
                         .start = [&](ControlProtocolOperations& target,
                                      const std::string& clientId) { run.start(target, clientId, parameters); },
                         .waitsForFrame = run.waitsForFrame},
                        run.answersFirst, request, response);
}

} // namespace Sensor::Resources
