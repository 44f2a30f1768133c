#pragma once

#include "VorApi/Params/ParamsBase.h"
#include "VorApi/Params/PropertyArray.h"

#include <memory>
#include <string>
#include <utility>

namespace Vor::Params {

/// An array with the keywords of a parameter. "minItems" and "maxItems" are limits for clients; the array doesn't
/// enforce them.
template <class T>
class Array : public Properties::Array<T>, public ParamsBase {
    using Base = Properties::Array<T>;

public:
    explicit Array(const std::string& extendedType = std::string(),
                   typename Base::Factory factory = Base::DefaultFactory)
        : Base(std::move(factory))
        , ParamsBase(static_cast<Properties::Node&>(*this))
        , extendedType(extendedType) {
        if (!extendedType.empty()) {
            this->RegisterSchema("extendedType", this->extendedType);
        }
    }
    ~Array() override = default;

    void CopyValues(const Properties::Node& other) override {
        Base::CopyValues(other);
        if (const auto* const source = dynamic_cast<const Array<T>*>(&other)) {
            ParamsBase::CopyValues(*source);
            RegisterCopied();
            extendedType.ConditionalSet(source->extendedType.Get());
            CopyKeyword(minItems, "minItems", source->minItems);
            CopyKeyword(maxItems, "maxItems", source->maxItems);
        }
    }

    /// Starts at 0.
    void EnableMinItems(bool enable) { Enable(minItems, "minItems", enable); }
    bool IsMinItemsEnabled() const { return minItems != nullptr; }
    unsigned int GetMinItems() const { return Present(minItems, "Must enable 'minItems' before using it.").Get(); }
    void SetMinItems(unsigned int count) {
        Present(minItems, "Must enable 'minItems' before setting the value.") = count;
    }

    /// Starts at 4294967295.
    void EnableMaxItems(bool enable) {
        const bool fresh = enable && !maxItems;
        Enable(maxItems, "maxItems", enable);
        if (fresh) {
            maxItems->Modify() = 4294967295U;
        }
    }
    bool IsMaxItemsEnabled() const { return maxItems != nullptr; }
    unsigned int GetMaxItems() const { return Present(maxItems, "Must enable 'maxItems' before using it.").Get(); }
    void SetMaxItems(unsigned int count) {
        Present(maxItems, "Must enable 'maxItems' before setting the value.") = count;
    }

private:
    Properties::Value<std::string> extendedType;
    std::unique_ptr<Properties::Value<unsigned int>> minItems;
    std::unique_ptr<Properties::Value<unsigned int>> maxItems;
};

} // namespace Vor::Params
