#include "VorApi/Params/ParamsBase.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "Vor/VorGetText.h"

#include <atomic>

namespace Vor::Params {

namespace {

using Properties::Internal::Name;

Name TitleKey() {
    static const Name Key("title");
    return Key;
}

Name SortOrderKey() {
    static const Name Key("sortOrder");
    return Key;
}

Name ReadOnlyKey() {
    static const Name Key("readOnly");
    return Key;
}

std::atomic<unsigned long long> actualSwitches{0};

} // namespace

ParamsBase::ParamsBase(Properties::Node& owner)
    : owner(owner) {
    owner.SetKeywordSource(*this);
}

ParamsBase::~ParamsBase() = default;

ParamsBase::Nodes::Nodes(const ParamsBase& values) {
    title = values.title;
    sortOrder = values.sortOrder;
    readOnly = values.readOnly;
}

void ParamsBase::RegisterKeywords() {
    nodes = std::make_unique<Nodes>(*this);
    owner.RegisterSchema(TitleKey(), nodes->title);
    owner.RegisterSchema(SortOrderKey(), nodes->sortOrder);
    RegisterMinimum();
    if (readOnlyEnabled) {
        owner.RegisterSchema(ReadOnlyKey(), nodes->readOnly, false);
    }
}

void ParamsBase::VisitKeywords(
    const std::function<void(Properties::Internal::Name, const Properties::Node&)>& visit) const {
    const Nodes visited(*this);
    visit(TitleKey(), visited.title);
    visit(SortOrderKey(), visited.sortOrder);
    VisitMinimum(visit);
    if (readOnlyEnabled) {
        visit(ReadOnlyKey(), visited.readOnly);
    }
}

void ParamsBase::SetTitle(const std::string& text) {
    if (nodes) {
        nodes->title.ConditionalSet(text);
    } else {
        title = text;
    }
}

void ParamsBase::SetSortOrder(unsigned int order) {
    if (nodes) {
        nodes->sortOrder.ConditionalSet(order);
    } else {
        sortOrder = order;
    }
}

void ParamsBase::SetReadOnly(bool value) {
    if (nodes) {
        nodes->readOnly.ConditionalSet(value);
    } else {
        readOnly = value;
    }
}

Properties::Value<bool>& ParamsBase::UsedNode() {
    if (!used) {
        used = std::make_unique<Properties::Value<bool>>(true);
    }
    return *used;
}

void ParamsBase::EnableReadOnly() {
    readOnlyEnabled = true;
    if (nodes) {
        owner.RegisterSchema(ReadOnlyKey(), nodes->readOnly, false);
    }
}

void ParamsBase::EnableUsed() {
    if (visibilityEnabled) {
        Throw(yERROR_PARAMETER, "Visibility is already enabled, cannot enable used.");
    }
    owner.RegisterSchema("used", UsedNode(), false);
    usedEnabled = true;
}

void ParamsBase::EnableVisibility(bool enable) {
    if (enable && usedEnabled && !visibility) {
        Throw(yERROR_PARAMETER, "Used is already enabled, cannot enable visibility.");
    }
    Enable(visibility, "visibility", enable);
    visibilityEnabled = enable;
}

void ParamsBase::EnableMeta(bool enable) {
    Enable(meta, "x-meta", enable);
    if (enable) {
        meta->ConditionalSet(std::string());
    }
    metaEnabled = enable;
}

void ParamsBase::EnableDescription(bool enable) {
    Enable(description, "description", enable);
    descriptionEnabled = enable;
}

unsigned long long ParamsBase::ActualSwitches() {
    return actualSwitches.load(std::memory_order_relaxed);
}

void ParamsBase::CountActualSwitch() {
    actualSwitches.fetch_add(1, std::memory_order_relaxed);
}

void ParamsBase::CheckValidation(bool log) const {
    readOnlyPending = readOnlyEnabled && GetReadOnly();
    if (readOnlyPending && log) {
        LogWarning("%s is read-only and will not fail validation.", GetTitle());
    }
}

void ParamsBase::FailValidation(bool log, const char* text) const {
    VorGetText& texts = VorGetText::GetInstance();
    const char* const translated = texts.DPGetText("BE", "beApp", text);
    const std::string shown = GetTitle().empty() ? "<unnamed>" : GetTitle();
    if (log) {
        LogUser(UserError, texts.DPGetText("BE", "beApp", "Params validation"), translated, shown);
    }
    Throw(yERROR_PARAMETER, translated, shown);
}

void ParamsBase::CollectFailure(const Exception& failure, std::vector<std::string>& errors) {
    if (failure.Status() == yERROR_PARAMETER) {
        errors.emplace_back(failure.what());
    } else {
        LogError("Non-yERROR_PARAMETER exception '%s' caught during validation.", failure.what());
    }
}

void ParamsBase::ThrowNotEnabled(const char* text) {
    Throw(yERROR_PARAMETER, text);
}

void ParamsBase::CopyValues(const ParamsBase& other) {
    SetTitle(other.GetTitle());
    SetSortOrder(other.GetSortOrder());
    SetReadOnly(other.GetReadOnly());
    if (used || other.used) {
        SetUsed(other.GetUsed());
    }
    EnableVisibility(other.visibilityEnabled);
    if (visibilityEnabled) {
        SetVisibility(other.GetVisibility());
    }
    readOnlyEnabled = other.readOnlyEnabled;
    usedEnabled = other.usedEnabled;
    EnableMeta(other.metaEnabled);
    if (metaEnabled) {
        SetMeta(other.GetMeta());
    }
    EnableDescription(other.descriptionEnabled);
    if (descriptionEnabled) {
        SetDescription(other.GetDescription());
    }
}

void ParamsBase::RegisterCopied() {
    if (readOnlyEnabled) {
        EnableReadOnly();
    } else if (nodes) {
        owner.DeregisterSchema(ReadOnlyKey());
    }
    if (!usedEnabled) {
        if (nodes) {
            owner.DeregisterSchema("used");
        }
        return;
    }
    if (visibilityEnabled) {
        Throw(yERROR_PARAMETER, "Visibility is already enabled, cannot enable used.");
    }
    owner.RegisterSchema("used", UsedNode(), false);
}

} // namespace Vor::Params
