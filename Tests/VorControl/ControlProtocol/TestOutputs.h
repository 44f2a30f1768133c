#pragma once

#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "VorControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include <string>
#include <utility>
#include <vector>

namespace Tests {

inline constexpr const char* NotAllAdded =
    "One or more sources could not be added to the connection map. Logs may have additional information.";

/// An output map with requests made of plain values.
template <class Map, class ItemArgs, class OutputsArgs, class RemoveArgs>
class TestOutputs : public Map {
public:
    using Id = typename Map::Id;
    using Entry = std::pair<Id, std::string>;
    using Entries = std::vector<Entry>;

    using Map::Map;

    void AddOne(const Id& id, const std::string& source, bool autoShift = false) {
        ItemArgs args;
        args.outputId = id;
        args.source = source;
        args.autoShift = autoShift;
        this->Add(args);
    }

    /// In this order. Each of them must succeed.
    void AddEach(const Entries& entries) {
        for (const auto& [id, source] : entries) {
            AddOne(id, source);
        }
    }

    static void Fill(OutputsArgs& args, const Entries& entries) {
        for (const auto& [id, source] : entries) {
            auto& item = args.map.Emplace();
            item.outputId = id;
            item.source = source;
        }
    }

    void RemoveOne(const Id& id) {
        RemoveArgs args;
        args.outputId = id;
        this->Remove(args);
    }
    void RemoveMany(const std::vector<Id>& ids) {
        RemoveArgs args;
        args.outputIdList = ids;
        this->Remove(args);
    }

    void Update(const Id& from, const Id& to, bool autoShift = false) {
        OutputsArgs args;
        Fill(args, {{from, ""}, {to, ""}});
        if constexpr (requires { args.autoShift; }) {
            args.autoShift = autoShift;
        }
        this->UpdateId(args);
    }

    Entries List() const {
        Entries entries;
        for (unsigned long i = 0; i < this->Count(); ++i) {
            entries.emplace_back(this->At(i).outputId.Get(), this->At(i).source.Get());
        }
        return entries;
    }
};

using NumericOutputs =
    TestOutputs<VorControl::ControlProtocol::StandardProtocolOutputMap,
                VorControl::ControlProtocol::StandardOutputItemArgs, VorControl::ControlProtocol::StandardOutputsArgs,
                VorControl::ControlProtocol::StandardOutputRemoveArgs>;
using TextOutputs = TestOutputs<VorControl::ControlProtocol::TextIdStandardProtocolOutputMap,
                                VorControl::ControlProtocol::TextIdStandardOutputItemArgs,
                                VorControl::ControlProtocol::TextIdStandardOutputsArgs,
                                VorControl::ControlProtocol::TextIdStandardOutputRemoveArgs>;

/// The entries of the log as lines such as "user error VorControl: text" or "error: text".
inline std::vector<std::string> Lines(const Vor::LogCapture& log) {
    std::vector<std::string> lines;
    for (const auto& record : log.Records()) {
        const bool isUser = (record.level & Vor::LevelUserFlag) != 0;
        const auto level = record.level & ~Vor::LevelUserFlag;
        const std::string word = level == Vor::LevelError ? "error" : level == Vor::LevelWarning ? "warning" : "other";
        lines.push_back(isUser ? "user " + word + " " + record.title + ": " + record.text : word + ": " + record.text);
    }
    return lines;
}

} // namespace Tests
