#pragma once

#include "VorControl/ControlProtocol/ProtocolOutputBase.h"

namespace VorControl::ControlProtocol {

/// A map whose ids are numbers: it numbers what is added at its end, closes gaps, and makes room for an id that is
/// taken by moving up the entries that follow it without a gap.
template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
class NumericIdProtocolOutputBase : public ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs> {
    using Base = ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>;

public:
    using Base::Base;

    void AddAll(Vor::Params::Group& args) override { AddAll(args, this->firstOutputId); }
    /// Numbers from `firstId` in an empty map, and else behind the last entry. The ids of the request are ignored.
    void AddAll(Vor::Params::Group& args, unsigned short firstId);
    void CompactId() override;
    void UpdateId(Vor::Params::Group& args) override { this->UpdateId_Helper(args, false); }
    void OverlapInsert(unsigned long index, const Item& item) override;
    bool IsDataShiftSupported() override { return true; }

private:
    /// Writes the id into the entry of a request; gives why it can't be added, or yOK.
    static yStatus Refusal(Item& item, unsigned short id, const typename Base::Sources& sources);
    static const char* Text(const char* text) { return Translate("beApp.ctrl", text); }
};

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void NumericIdProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::AddAll(Vor::Params::Group& args,
                                                                                           unsigned short firstId) {
    auto& request = dynamic_cast<OutputsArgs&>(args);
    const Vor::Locker locker(this->lock.get());
    unsigned long count = this->Count();
    auto nextId = count == 0 ? firstId : static_cast<unsigned short>(this->At(count - 1).outputId.Get() + 1);
    auto sources = this->AllSources();
    yStatus status = yOK;
    for (unsigned long i = 0; i < request.map.Count(); ++i) {
        auto& item = request.map.At(i);
        if (count >= this->maxCount) {
            Vor::Throw(yERROR_FULL, Text("Connection map is full. All data source(s) from %1$s are not added."),
                       item.source.Get());
        }
        if (const yStatus refusal = Refusal(item, nextId, sources); refusal != yOK) {
            status = refusal;
            continue;
        }
        this->Assign(this->outputs.map.Emplace(), item);
        sources.insert(item.source.Get());
        ++nextId;
        ++count;
    }
    if (status != yOK) {
        Vor::Throw(status, Text("One or more sources could not be added to the connection map. Logs may have "
                                "additional information."));
    }
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
yStatus NumericIdProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::Refusal(
    Item& item, unsigned short id, const typename Base::Sources& sources) {
    item.outputId = id;
    const std::string& source = item.source.Get();
    if (source.empty()) {
        Vor::LogUser(Vor::UserError, "VorControl",
                     Text("Data source %1$s in the list of sources to add is invalid. Please correct the data source "
                          "and try again."),
                     source);
        Vor::LogError("Data source %s in the list of sources to add is invalid. Please correct the data source and try "
                      "again.",
                      source);
        return yERROR_PARAMETER;
    }
    if (id == Item::NullId) {
        Vor::LogUser(Vor::UserError, "VorControl",
                     Text("Data source %1$s in the list of sources to add has invalid output identifier (%2$u). Please "
                          "correct the output id and try again."),
                     source, id);
        Vor::LogError("Data source %s in the list of sources to add has invalid output identifier (%u). Please correct "
                      "the output id and try again.",
                      source, id);
        return yERROR_PARAMETER;
    }
    if (sources.contains(source)) {
        Vor::LogUser(Vor::UserWarning, "VorControl", Text("Data source %1$s already exists."), source);
        Vor::LogWarning("Data source %s already exists", source);
        return yERROR_ALREADY_EXISTS;
    }
    return yOK;
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void NumericIdProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::CompactId() {
    const Vor::Locker locker(this->lock.get());
    unsigned short id = this->firstOutputId;
    for (unsigned long i = 0; i < this->Count(); ++i) {
        this->outputs.map.At(i).outputId = id++;
    }
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void NumericIdProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::OverlapInsert(unsigned long index,
                                                                                                  const Item& item) {
    const Vor::Locker locker(this->lock.get());
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

} // namespace VorControl::ControlProtocol
