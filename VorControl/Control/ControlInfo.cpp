#include "VorControl/Control/ControlInfo.h"

#include "Vor/Exception.h"
#include "yApi/yStatus.h"

#include <algorithm>

namespace VorControl {

namespace {

const char* TextOrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

} // namespace

ControlInfo& ControlInfo::SetTypeName(const char* text) {
    typeName = TextOrEmpty(text);
    return *this;
}

ControlInfo& ControlInfo::SetDisplayName(const char* text) {
    displayName = TextOrEmpty(text);
    return *this;
}

ControlInfo& ControlInfo::SetDescription(const char* text) {
    description = TextOrEmpty(text);
    return *this;
}

ControlInfo& ControlInfo::SetHelpHtml(const char* text) {
    helpHtml = TextOrEmpty(text);
    return *this;
}

ControlInfo& ControlInfo::SetHelpUrl(const char* text) {
    helpUrl = TextOrEmpty(text);
    return *this;
}

ControlInfo& ControlInfo::SetIcon(const char* name, const std::vector<unsigned char>& bytes) {
    icon = {TextOrEmpty(name), bytes};
    return *this;
}

ControlInfo& ControlInfo::AddCategory(const char* text) {
    const std::string category = TextOrEmpty(text);
    if (std::find(categories.begin(), categories.end(), category) != categories.end()) {
        Vor::Throw(yERROR_ALREADY_EXISTS, "Category %s already added", category);
    }
    categories.push_back(category);
    return *this;
}

void ControlInfo::SetFactory(IControlFactory& newFactory) {
    factory = &newFactory;
}

void ControlInfo::SetSupportedEnvironment(const SupportedEnvironmentList& list) {
    environments = list;
}

const std::string& ControlInfo::CategoryAt(std::size_t index) const {
    if (index >= categories.size()) {
        Vor::Throw(yERROR_PARAMETER, "Index %zu into the categories is out of bounds", index);
    }
    return categories[index];
}

IControlFactory& ControlInfo::Factory() const {
    if (factory == nullptr) {
        Vor::Throw(yERROR_STATE);
    }
    return *factory;
}

} // namespace VorControl
