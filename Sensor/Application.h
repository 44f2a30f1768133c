#pragma once

#include "Sensor/CommandLine.h"

namespace Sensor {

class Application {
public:
    explicit Application(const CommandLine& commandLine);
    void Run();
};

} // namespace Sensor
