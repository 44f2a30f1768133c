#pragma once

#include "Sensor/Scan/Recording.h"
#include "Sensor/Scan/Scanner.h"

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace VorControl {
class IControlInstance;
class IControlManager;
} // namespace VorControl

namespace Sensor {

/// Prints what the sensor does for the user, and flushes each line. Control characters, which the texts of a job may
/// contain, are printed escaped.
class StartReport {
public:
    explicit StartReport(std::ostream& out);

    void PrintLine(const std::string& text);

    /// Prints frames, rows and frame rate of the input, whose name is `name`.
    void PrintInput(const std::string& name, const Scan::Recording& recording, const Scan::Scanner::Settings& scan);

    /// Prints a line for each service: its status, its address, and why it failed. The reason is the service's property
    /// `failure`, or else that of its last start.
    void PrintServices(VorControl::IControlManager& manager);
    void PrintService(VorControl::IControlInstance& instance);

    /// Prints a table for each register assembly of the enabled services, and a line for each of its data sources that
    /// isn't in `dataSources`.
    void PrintMaps(VorControl::IControlManager& manager, const std::vector<std::string>& dataSources);
    /// As PrintMaps, without the tables.
    void PrintMissingSources(VorControl::IControlManager& manager, const std::vector<std::string>& dataSources);

private:
    struct Row {
        std::string addresses;
        std::string type;
        std::string dataSource;
        std::string displayName;
    };

    /// Prints the rows of a register assembly.
    using RowsFunction = std::function<void(VorControl::IControlInstance& instance, const std::string& assembly,
                                            const std::vector<Row>& rows)>;

    static std::vector<Row> Rows(VorControl::IControlInstance& instance, const std::string& assembly);
    void ForEachMap(VorControl::IControlManager& manager, const RowsFunction& print);
    void PrintTable(VorControl::IControlInstance& instance, const std::string& assembly, const std::vector<Row>& rows);
    void PrintMissing(const std::vector<Row>& rows, const std::vector<std::string>& dataSources);

    std::ostream& out;
};

} // namespace Sensor
