#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"

#include "Vor/Exception.h"
#include "VorApi/Threads/Locker.h"
#include "VorControl/ControlProtocol/Translate.h"

#include <string_view>
#include <unordered_set>
#include <utility>

namespace VorControl::ControlProtocol {

namespace {

/// Keeps the first of equal texts, in their order.
void RemoveDuplicates(std::vector<std::string>& texts) {
    std::unordered_set<std::string_view> seen;
    seen.reserve(texts.size());
    std::vector<std::string> kept;
    kept.reserve(texts.size());
    for (const std::string& text : texts) {
        if (seen.insert(text).second) {
            kept.push_back(text);
        }
    }
    texts = std::move(kept);
}

} // namespace

ProtocolRegisterAssemblyGroup::ProtocolRegisterAssemblyGroup() {
    Vor::ThrowIfFailed(yLock_Construct(lock.Out()));
}

void ProtocolRegisterAssemblyGroup::Add(std::shared_ptr<IProtocolRegisterAssembly> assembly) {
    const Vor::Locker locker(lock.Get());
    const std::string id = assembly->Id();
    if (!assemblies.emplace(id, std::move(assembly)).second) {
        Vor::Throw(yERROR_PARAMETER,
                   Translate("com.vorlab.ctrl", "Failed to insert register assembly %1$s. Check if it is a duplicate"),
                   id);
    }
}

bool ProtocolRegisterAssemblyGroup::Empty() const {
    return assemblies.empty();
}

std::vector<std::string> ProtocolRegisterAssemblyGroup::List() const {
    std::vector<std::string> ids;
    if (Empty()) {
        return ids;
    }
    const Vor::Locker locker(lock.Get());
    for (const auto& [id, assembly] : assemblies) {
        ids.push_back(id);
    }
    return ids;
}

bool ProtocolRegisterAssemblyGroup::HasRegisterAssembly(const char* id) const {
    if (id == nullptr || Empty()) {
        return false;
    }
    const Vor::Locker locker(lock.Get());
    return assemblies.contains(id);
}

std::shared_ptr<IProtocolRegisterAssembly> ProtocolRegisterAssemblyGroup::RegisterAssembly(const char* id) const {
    return FindRegisterAssembly(id);
}

VorCommon::ICommandTarget& ProtocolRegisterAssemblyGroup::CommandTarget(const char* id) const {
    return FindRegisterAssembly(id)->CommandTarget();
}

std::vector<std::string> ProtocolRegisterAssemblyGroup::DataSourceList() const {
    std::vector<std::string> sources;
    if (Empty()) {
        return sources;
    }
    std::vector<std::shared_ptr<IProtocolRegisterAssembly>> all;
    {
        const Vor::Locker locker(lock.Get());
        for (const auto& [id, assembly] : assemblies) {
            all.push_back(assembly);
        }
    }
    for (const auto& assembly : all) {
        auto own = assembly->DataSourceList();
        sources.insert(sources.end(), std::make_move_iterator(own.begin()), std::make_move_iterator(own.end()));
    }
    RemoveDuplicates(sources);
    return sources;
}

const char* ProtocolRegisterAssemblyGroup::DisplayName(const char* id) const {
    const auto found = assemblies.find(id);
    return found == assemblies.end() ? "" : found->second->DisplayName();
}

std::shared_ptr<IProtocolRegisterAssembly> ProtocolRegisterAssemblyGroup::FindRegisterAssembly(const char* id) const {
    if (id == nullptr) {
        Vor::Throw(yERROR_PARAMETER, Translate("com.vorlab.ctrl", "No register assembly identifier provided"));
    }
    if (Empty()) {
        Vor::Throw(yERROR_NOT_FOUND, Translate("com.vorlab.ctrl", "No register assembly has been added to the register "
                                                                  "assembly group"));
    }
    const Vor::Locker locker(lock.Get());
    const auto found = assemblies.find(id);
    if (found == assemblies.end()) {
        Vor::Throw(yERROR_NOT_FOUND,
                   Translate("com.vorlab.ctrl", "No register assembly with identifier %1$s was found"), id);
    }
    return found->second;
}

} // namespace VorControl::ControlProtocol
