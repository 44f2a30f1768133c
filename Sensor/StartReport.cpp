#include "Sensor/StartReport.h"

#include "Sensor/PrintableText.h"
#include "Sensor/ServiceState.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Control/IControlManager.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"

#include <algorithm>
#include <exception>
#include <sstream>

namespace Sensor {

using VorControl::IControlInstance;
using VorControl::ControlProtocol::AssemblyLock;

StartReport::StartReport(std::ostream& out)
    : out(out) {}

void StartReport::PrintLine(const std::string& text) {
    out << PrintableText(text) << std::endl;
}

void StartReport::PrintInput(const std::string& name, const Scan::Recording& recording,
                             const Scan::Scanner::Settings& scan) {
    std::ostringstream text;
    text << "Input: " << name << ", " << Counted(recording.frames.size(), "frame") << ", "
         << Counted(recording.RowCount(), recording.kind == Scan::RecordingKind::Profiles ? "point" : "value") << ", ";
    if (scan.trigger == Scan::TriggerMode::Software) {
        text << "a frame a trigger";
    } else {
        text << scan.frameRate << (scan.frameRate == 1 ? " frame" : " frames") << " a second";
    }
    text << ", " << (scan.once ? "once" : "over and over");
    PrintLine(text.str());
}

void StartReport::PrintServices(VorControl::IControlManager& manager) {
    const std::vector<std::string> serviceIds = manager.List();
    if (serviceIds.empty()) {
        PrintLine("Services: none");
    }
    for (const std::string& serviceId : serviceIds) {
        PrintService(manager.GetInstance(serviceId));
    }
}

void StartReport::PrintService(VorControl::IControlInstance& instance) {
    std::string text = "Service " + instance.Id() + " (" + instance.DisplayName() + "): ";
    try {
        const ServiceState state = ServiceState::Of(instance);
        text += state.status;
        if (!state.address.empty()) {
            text += " at " + state.address;
        }
        if (!state.failure.empty()) {
            text += ": " + state.failure;
        }
    } catch (const std::exception& e) {
        text += std::string("its state can't be read (") + e.what() + ")";
    }
    PrintLine(text);
}

void StartReport::PrintMaps(VorControl::IControlManager& manager, const std::vector<std::string>& dataSources) {
    ForEachMap(manager, [&](IControlInstance& instance, const std::string& assembly, const std::vector<Row>& rows) {
        PrintTable(instance, assembly, rows);
        PrintMissing(rows, dataSources);
    });
}

void StartReport::PrintMissingSources(VorControl::IControlManager& manager,
                                      const std::vector<std::string>& dataSources) {
    ForEachMap(manager, [&](IControlInstance&, const std::string&, const std::vector<Row>& rows) {
        PrintMissing(rows, dataSources);
    });
}

void StartReport::ForEachMap(VorControl::IControlManager& manager, const RowsFunction& print) {
    for (const std::string& serviceId : manager.List()) {
        IControlInstance& instance = manager.GetInstance(serviceId);
        try {
            if (!instance.IsEnabled() || !instance.HasRegisterAssemblyGroup()) {
                continue;
            }
            for (const std::string& assembly : instance.RegisterAssemblyList()) {
                print(instance, assembly, Rows(instance, assembly));
            }
        } catch (const std::exception& e) {
            PrintLine("Map of " + serviceId + ": can't be read (" + e.what() + ")");
        }
    }
}

std::vector<StartReport::Row> StartReport::Rows(VorControl::IControlInstance& instance, const std::string& assembly) {
    const auto registers = instance.RegisterAssembly(assembly.c_str());
    const AssemblyLock lock(*registers);
    std::vector<Row> rows;
    for (const auto& block : registers->AddedRegisterBlocks()) {
        std::string addresses = std::to_string(block->OutputId());
        if (block->EndAddress() != block->OutputId()) {
            addresses += "-" + std::to_string(block->EndAddress());
        }
        rows.push_back({addresses, block->Type(), block->HasDataSource() ? block->DataSource() : std::string(),
                        block->DisplayName()});
    }
    return rows;
}

void StartReport::PrintTable(VorControl::IControlInstance& instance, const std::string& assembly,
                             const std::vector<Row>& rows) {
    if (rows.empty()) {
        PrintLine("Map of " + instance.Id() + ", " + assembly + ": empty");
        return;
    }
    PrintLine("Map of " + instance.Id() + ", " + assembly + ":");
    const Row titles{"Address", "Type", "Data source", "Name"};
    std::size_t addresses = TextWidth(titles.addresses);
    std::size_t types = TextWidth(titles.type);
    std::size_t sources = TextWidth(titles.dataSource);
    for (const Row& row : rows) {
        addresses = std::max(addresses, TextWidth(row.addresses));
        types = std::max(types, TextWidth(row.type));
        sources = std::max(sources, TextWidth(row.dataSource));
    }
    const auto print = [&](const Row& row) {
        PrintLine("  " + PaddedText(row.addresses, addresses) + "  " + PaddedText(row.type, types) + "  " +
                  PaddedText(row.dataSource, sources) + "  " + row.displayName);
    };
    print(titles);
    std::for_each(rows.begin(), rows.end(), print);
}

void StartReport::PrintMissing(const std::vector<Row>& rows, const std::vector<std::string>& dataSources) {
    for (const Row& row : rows) {
        if (!row.dataSource.empty() &&
            std::find(dataSources.begin(), dataSources.end(), row.dataSource) == dataSources.end()) {
            PrintLine("Warning: the input has no data source " + row.dataSource + ": the registers at " +
                      row.addresses + " won't get a value.");
        }
    }
}

} // namespace Sensor
