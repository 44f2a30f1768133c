#pragma once

#include "VorControl/ControlProtocol/ProtocolOutputBase.h"

namespace VorControl::ControlProtocol {

/// A map whose ids are numbers. It numbers what is added at its end and closes gaps. When a new entry has the id of
/// another, that one and those that follow it without a gap move one id up.
template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
class NumericIdProtocolOutputBase : public ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs> {
    using Base = ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>;

public:
    using Base::Base;

    void AddAll(Vor::Params::Group& args) override { AddAll(args, this->firstOutputId); }

    /// Numbers from `firstId` on in an empty map, otherwise from the id after the last one. The ids of the request are
    /// ignored.
    void AddAll(Vor::Params::Group& args, unsigned short firstId) {
        auto& request = dynamic_cast<OutputsArgs&>(args);
        const Vor::Locker locker(this->lock.Get());
        unsigned long count = this->Count();
        auto nextId = count == 0 ? firstId : static_cast<unsigned short>(this->At(count - 1).outputId.Get() + 1);
        auto sources = this->AllSources();
        yStatus status = yOK;
        for (unsigned long i = 0; i < request.map.Count(); ++i) {
            auto& item = request.map.At(i);
            if (count >= this->maxCount) {
                Vor::Throw(yERROR_FULL,
                           Translate("beApp.ctrl", "Connection map is full. All data source(s) from %1$s are not "
                                                   "added."),
                           item.source.Get());
            }
            item.outputId = nextId;
            if (const yStatus refusal = Check(item, sources); refusal != yOK) {
                status = refusal;
                continue;
            }
            this->Assign(this->outputs.map.Emplace(), item);
            sources.insert(item.source.Get());
            ++nextId;
            ++count;
        }
        if (status != yOK) {
            Vor::Throw(status, Translate("beApp.ctrl", "One or more sources could not be added to the connection map. "
                                                       "Logs may have additional information."));
        }
    }

    void CompactId() override {
        const Vor::Locker locker(this->lock.Get());
        unsigned short id = this->firstOutputId;
        for (unsigned long i = 0; i < this->Count(); ++i) {
            this->outputs.map.At(i).outputId = id++;
        }
    }

    void UpdateId(Vor::Params::Group& args) override { this->UpdateId_Helper(args, false); }

    void OverlapInsert(unsigned long index, const Item& item) override {
        const Vor::Locker locker(this->lock.Get());
        this->ShiftOutputMap(index);
        auto& map = this->outputs.map;
        this->Assign(map.At(index), item);
        unsigned long i = index + 1;
        unsigned short id = 0;
        do {
            id = static_cast<unsigned short>(map.At(i).outputId.Get() + 1);
            map.At(i).outputId = id;
            ++i;
        } while (i < map.Count() && map.At(i).outputId.Get() == id);
    }

    bool IsDataShiftSupported() override { return true; }

private:
    /// Whether an entry of AddAll can be added: yOK, or the status of the failure, which is logged.
    static yStatus Check(const Item& item, const typename Base::Sources& sources) {
        const std::string& source = item.source.Get();
        if (source.empty()) {
            Vor::LogUser(Vor::UserError, "VorControl",
                         Translate("beApp.ctrl", "Data source %1$s in the list of sources to add is invalid. Please "
                                                 "correct the data source and try again."),
                         source);
            Vor::LogError("Data source %s in the list of sources to add is invalid. Please correct the data source and "
                          "try again.",
                          source);
            return yERROR_PARAMETER;
        }
        const unsigned short id = item.outputId.Get();
        if (id == Item::NullId) {
            Vor::LogUser(Vor::UserError, "VorControl",
                         Translate("beApp.ctrl", "Data source %1$s in the list of sources to add has invalid output "
                                                 "identifier (%2$u). Please correct the output id and try again."),
                         source, id);
            Vor::LogError("Data source %s in the list of sources to add has invalid output identifier (%u). Please "
                          "correct the output id and try again.",
                          source, id);
            return yERROR_PARAMETER;
        }
        if (sources.contains(source)) {
            Vor::LogUser(Vor::UserWarning, "VorControl", Translate("beApp.ctrl", "Data source %1$s already exists."),
                         source);
            Vor::LogWarning("Data source %s already exists", source);
            return yERROR_ALREADY_EXISTS;
        }
        return yOK;
    }
};

} // namespace VorControl::ControlProtocol
