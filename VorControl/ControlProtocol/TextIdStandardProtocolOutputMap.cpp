#include "VorControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include "VorApi/LogThrown.h"

#include <typeinfo>
#include <utility>

namespace VorControl::ControlProtocol {

template class ProtocolOutputBase<TextIdStandardOutputs, TextIdStandardOutputItem, TextIdStandardOutputsArgs,
                                  TextIdStandardOutputItemArgs, TextIdStandardOutputRemoveArgs>;

namespace {

/// Whether the steps by which an entry gets its new value make a difference.
template <class Value>
bool IsObserved(const Value& value) {
    return value.HasChangeHandlers() || value.IsActualEnabled();
}

} // namespace

void TextIdStandardProtocolOutputMap::AddAll(Vor::Params::Group& args) {
    auto& request = dynamic_cast<TextIdStandardOutputsArgs&>(args);
    if (request.map.Count() == 0) {
        return;
    }
    const Vor::Locker locker(lock.Get());
    auto sources = AllSources();
    const bool merges = CanMerge(request);
    NewEntries added;
    yStatus status = yOK;
    const auto logFailure = [&](const std::exception& exception, const std::string& source, yStatus failure) {
        Vor::LogThrown(exception, "Error adding data source <%s>", source);
        status = status == yOK ? failure : status;
    };
    for (unsigned long i = 0; i < request.map.Count(); ++i) {
        auto& item = request.map.At(i);
        if (item.outputId.Get().empty()) {
            item.outputId = item.source.Get();
        }
        try {
            if (merges) {
                Collect(item, sources, added);
            } else {
                Add_Helper(item, false, &sources);
            }
        } catch (const Vor::Exception& exception) {
            logFailure(exception, item.source.Get(), exception.Status());
        } catch (const std::exception& exception) {
            logFailure(exception, item.source.Get(), yERROR_PARAMETER);
        }
    }
    Merge(std::move(added));
    if (status != yOK) {
        Vor::Throw(status, Translate("beApp.ctrl", "One or more sources could not be added to the connection map. Logs "
                                                   "may have additional information."));
    }
}

bool TextIdStandardProtocolOutputMap::CanMerge(const TextIdStandardOutputsArgs& request) const {
    // A derived class may have checks of its own, which see the map.
    if (typeid(*this) != typeid(TextIdStandardProtocolOutputMap) || outputs.map.HasItemAddedHandlers()) {
        return false;
    }
    for (unsigned long i = 0; i < request.map.Count(); ++i) {
        if (request.map.At(i).outputId.HasChangeHandlers()) {
            return false;
        }
    }
    for (unsigned long i = 0; i < Count(); ++i) {
        const auto& item = At(i);
        if (IsObserved(item.outputId) || IsObserved(item.source)) {
            return false;
        }
    }
    return IsInOrder(AllIds());
}

void TextIdStandardProtocolOutputMap::Collect(const TextIdStandardOutputItem& item, Sources& sources,
                                              NewEntries& added) {
    RequireIdAndSource(item);
    const std::string& id = item.outputId.Get();
    const std::string& source = item.source.Get();
    const unsigned long index = BSearchForInsert(id);
    const auto next = added.lower_bound(id);
    const bool isNew = next != added.end() && next->first == id;
    const bool overlaps = isNew || GetOverlappingState(item);
    const bool isEntry = overlaps && (isNew ? next->second : At(index).source.Get()) == source;
    RequireNewSource(source, isEntry, sources.contains(source));
    if (overlaps) {
        OverlapInsert(index, item);
    }
    if (Count() + added.size() == maxCount) {
        Vor::Throw(yERROR_FULL);
    }
    added.emplace_hint(next, id, source);
    sources.insert(source);
}

void TextIdStandardProtocolOutputMap::Merge(NewEntries&& added) {
    if (added.empty()) {
        return;
    }
    // Entries before the first new one don't move.
    unsigned long place = BSearchForInsert(added.begin()->first);
    for (unsigned long i = place; i < Count(); ++i) {
        added.emplace_hint(added.end(), At(i).outputId.Get(), At(i).source.Get());
    }
    for (const auto& [id, source] : added) {
        Assign(place < Count() ? outputs.map.At(place) : outputs.map.Emplace(), id, source);
        ++place;
    }
}

} // namespace VorControl::ControlProtocol
