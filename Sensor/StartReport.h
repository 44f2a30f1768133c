#pragma once

#include "Sensor/Scan/Recording.h"
#include "Sensor/Scan/Scanner.h"

#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace VorControl {
class IControlInstance;
class IControlManager;
} // namespace VorControl

namespace Sensor {

/// Tells the user at start what the sensor does, a line at a time, each flushed. Control characters, which a job's
/// texts may hold, are printed as question marks.
class StartReport {
public:
    explicit StartReport(std::ostream& out);

    void PrintLine(const std::string& text);

    /// Frames, rows and pace of the input, which `name` names.
    void PrintInput(const std::string& name, const Scan::Recording& recording, const Scan::Scanner::Settings& scan);

    /// A line for each service: its state, where it is found, and why it failed, by its own words or else by those of
    /// `startFailures`, which holds reasons by id.
    void PrintServices(VorControl::IControlManager& manager, const std::map<std::string, std::string>& startFailures);

    /// A table for each register assembly of an enabled service, then a line for each of its data sources that isn't
    /// among `dataSources`.
    void PrintMaps(VorControl::IControlManager& manager, const std::vector<std::string>& dataSources);
    /// As Maps, without the tables.
    void PrintMissingSources(VorControl::IControlManager& manager, const std::vector<std::string>& dataSources);

private:
    struct Row {
        std::string addresses;
        std::string type;
        std::string dataSource;
        std::string displayName;
    };

    /// The rows of a register assembly of an instance.
    using RowsFunction = std::function<void(VorControl::IControlInstance& instance, const std::string& assembly,
                                            const std::vector<Row>& rows)>;

    static std::vector<Row> Rows(VorControl::IControlInstance& instance, const std::string& assembly);
    void PrintService(VorControl::IControlInstance& instance, const std::string& startFailure);
    void ForEachMap(VorControl::IControlManager& manager, const RowsFunction& print);
    void PrintTable(VorControl::IControlInstance& instance, const std::string& assembly, const std::vector<Row>& rows);
    void PrintMissing(const std::vector<Row>& rows, const std::vector<std::string>& dataSources);

    std::ostream& out;
};

} // namespace Sensor
