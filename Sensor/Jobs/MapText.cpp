#include "Sensor/Jobs/MapText.h"

#include "Sensor/PrintableText.h"
#include "Vor/JsonSerializer.h"
#include "VorControl/Control/InstanceLocks.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"

#include <algorithm>
#include <vector>

namespace Sensor::Jobs {

namespace {

using nlohmann::json;
using Cells = std::vector<std::string>;

const Cells BlockKeys = {"outputId", "registerCount", "type", "dataSource", "displayName"};
const Cells OutputKeys = {"outputId", "source", "itemType"};

std::string CellOf(const json& row, const std::string& key) {
    const auto found = row.find(key);
    if (found == row.end() || found->is_null()) {
        return "";
    }
    return found->is_string() ? found->get<std::string>() : found->dump();
}

Cells CellsOf(const json& row, const Cells& keys) {
    Cells cells;
    for (const std::string& key : keys) {
        cells.push_back(CellOf(row, key));
    }
    return cells;
}

/// The columns for which at least one row has a value.
Cells KeysOf(const json& rows, const Cells& keys) {
    Cells present;
    for (const std::string& key : keys) {
        if (rows.empty() || std::any_of(rows.begin(), rows.end(), [&](const json& row) { return row.contains(key); })) {
            present.push_back(key);
        }
    }
    return present;
}

std::string CsvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    }
    return quoted + "\"";
}

void PrintCsvLine(std::ostream& out, const Cells& cells) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
        out << (i == 0 ? "" : ",") << CsvField(cells[i]);
    }
    out << "\r\n";
}

void PrintColumns(std::ostream& out, const Cells& titles, const std::vector<Cells>& rows) {
    std::vector<std::size_t> widths;
    for (const std::string& title : titles) {
        widths.push_back(TextWidth(title));
    }
    for (const Cells& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], TextWidth(row[i]));
        }
    }
    const auto print = [&](const Cells& row) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += PaddedText(row[i], widths[i]) + "  ";
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << "\n";
    };
    print(titles);
    for (const Cells& row : rows) {
        print(row);
    }
}

void PrintTableOf(std::ostream& out, const json& rows, const Cells& keys, const Cells& titles) {
    if (rows.empty()) {
        out << "  (empty)\n";
        return;
    }
    std::vector<Cells> table;
    for (const json& row : rows) {
        Cells cells = CellsOf(row, keys);
        std::transform(cells.begin(), cells.end(), cells.begin(), PrintableText);
        table.push_back(std::move(cells));
    }
    PrintColumns(out, titles, table);
}

json BlocksOf(const VorControl::ControlProtocol::IProtocolRegisterAssembly& assembly) {
    json blocks = json::array();
    const VorControl::ControlProtocol::AssemblyLock lock(assembly);
    for (const auto& block : assembly.AddedRegisterBlocks()) {
        blocks.push_back(Vor::Properties::JsonSerializer::Serialize(*block));
    }
    return blocks;
}

} // namespace

MapText::MapText(JobService& job, const JobService::Selection& selection)
    : serviceId(job.Instance().Id()) {
    VorControl::IControlInstance& instance = job.Instance();
    const bool onlyOutputs = job.IsOutputs(selection);
    if (!onlyOutputs) {
        for (const std::string& id : job.Assemblies(selection)) {
            auto& assembly = *instance.RegisterAssembly(id.c_str());
            assemblies.push_back({{"id", id},
                                  {"displayName", assembly.DisplayName()},
                                  {"attributes", Vor::Properties::JsonSerializer::Serialize(assembly.Attributes())},
                                  {"blocks", BlocksOf(assembly)}});
        }
    }
    if (onlyOutputs || (selection.assembly.empty() && instance.HasProtocolOutput())) {
        const VorControl::InstanceOutputsMapLock lock(instance);
        outputs = Vor::Properties::JsonSerializer::Serialize(instance.OutputsMap()).at("map");
    }
}

void MapText::PrintTable(std::ostream& out) const {
    for (const json& assembly : assemblies) {
        const bool isGlobal = assembly.at("attributes").at("isGlobalAddressSpaceUsed").get<bool>();
        out << PrintableText(assembly.at("displayName").get<std::string>() + " (" +
                             assembly.at("id").get<std::string>() + ")")
            << "\n";
        PrintTableOf(out, assembly.at("blocks"), BlockKeys,
                     {isGlobal ? "Address" : "Number", "Registers", "Type", "Data Source", "Name"});
    }
    if (!outputs.is_null()) {
        const Cells keys = KeysOf(outputs, OutputKeys);
        Cells titles = {"Id", "Data Source", "Type"};
        titles.resize(keys.size());
        out << "Outputs\n";
        PrintTableOf(out, outputs, keys, titles);
    }
    out << std::flush;
}

void MapText::PrintCsv(std::ostream& out) const {
    if (assemblies.empty() && !outputs.is_null()) {
        const Cells keys = KeysOf(outputs, OutputKeys);
        PrintCsvLine(out, keys);
        for (const json& row : outputs) {
            PrintCsvLine(out, CellsOf(row, keys));
        }
    } else {
        Cells titles = BlockKeys;
        titles.insert(titles.begin(), "assembly");
        PrintCsvLine(out, titles);
        for (const json& assembly : assemblies) {
            for (const json& block : assembly.at("blocks")) {
                Cells cells = CellsOf(block, BlockKeys);
                cells.insert(cells.begin(), assembly.at("id").get<std::string>());
                PrintCsvLine(out, cells);
            }
        }
    }
    out << std::flush;
}

void MapText::PrintJson(std::ostream& out) const {
    json document = {{"service", serviceId}, {"assemblies", assemblies}};
    if (!outputs.is_null()) {
        document["outputs"] = outputs;
    }
    out << document.dump(2, ' ', false, json::error_handler_t::replace) << std::endl;
}

} // namespace Sensor::Jobs
