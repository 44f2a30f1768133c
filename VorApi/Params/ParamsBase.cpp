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
    owner.RegisterSchema(TitleKey(), title);
    owner.RegisterSchema(SortOrderKey(), sortOrder);
}

ParamsBase::~ParamsBase() = default;

Properties::Value<bool>& ParamsBase::ReadOnlyNode() {
    if (!readOnly) {
        readOnly = std::make_unique<Properties::Value<bool>>(false);
    }
    return *readOnly;
}

Properties::Value<bool>& ParamsBase::UsedNode() {
    if (!used) {
        used = std::make_unique<Properties::Value<bool>>(true);
    }
    return *used;
}

void ParamsBase::EnableReadOnly() {
    owner.RegisterSchema(ReadOnlyKey(), ReadOnlyNode(), false);
    readOnlyEnabled = true;
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
    title.ConditionalSet(other.title.Get());
    sortOrder.ConditionalSet(other.sortOrder.Get());
    if (readOnly || other.readOnly) {
        SetReadOnly(other.GetReadOnly());
    }
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
        owner.RegisterSchema(ReadOnlyKey(), ReadOnlyNode(), false);
    } else {
        owner.DeregisterSchema(ReadOnlyKey());
    }
    if (!usedEnabled) {
        owner.DeregisterSchema("used");
        return;
    }
    if (visibilityEnabled) {
        Throw(yERROR_PARAMETER, "Visibility is already enabled, cannot enable used.");
    }
    owner.RegisterSchema("used", UsedNode(), false);
}

} // namespace Vor::Params
