#include "VorApi/Params/Group.h"

namespace Vor::Params {

StructBase::StructBase(const std::string& extendedType)
    : Structure(true)
    , ParamsBase(static_cast<Properties::Node&>(*this)) {
    if (!extendedType.empty()) {
        this->extendedType = std::make_unique<Properties::Value<std::string>>(extendedType);
        RegisterSchema("extendedType", *this->extendedType);
    }
}

StructBase::~StructBase() = default;

void StructBase::CopyValues(const Properties::Node& other) {
    Structure::CopyValues(other);
    if (const auto* const source = dynamic_cast<const StructBase*>(&other)) {
        ParamsBase::CopyValues(*source);
        RegisterCopied();
        if (!extendedType && source->extendedType) {
            extendedType = std::make_unique<Properties::Value<std::string>>();
        }
        if (extendedType) {
            extendedType->ConditionalSet(source->extendedType ? source->extendedType->Get() : std::string());
        }
        nextSortOrder = source->nextSortOrder;
    }
}

unsigned int StructBase::NextSortOrder(unsigned int step) {
    const unsigned int order = nextSortOrder;
    nextSortOrder += step;
    return order;
}

Group::Group(const std::string& extendedType)
    : StructBase(extendedType) {}

Group::~Group() = default;

void Group::CopyValues(const Properties::Node& other) {
    StructBase::CopyValues(other);
}

} // namespace Vor::Params
