#pragma once

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/Params/ParamsBase.h"
#include "VorApi/Params/PropertyValue.h"
#include "VorApi/Params/ScaleOption.h"

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Vor::Params {

/// A value with the keywords of a parameter and the validation built on them. An unsigned integer has a "minimum" of 0
/// from the start. Getters and setters of a keyword throw `yERROR_PARAMETER` while it isn't enabled.
template <class T>
class Value : public Properties::Value<T>, public ParamsBase {
    using Base = Properties::Value<T>;

public:
    Value()
        : Value(T()) {}
    explicit Value(const T& initial)
        : Base(initial)
        , ParamsBase(static_cast<Properties::Node&>(*this)) {
        if constexpr (std::is_unsigned_v<T> && !std::is_same_v<T, bool>) {
            zeroMinimum = true;
        }
    }

    /// Appends the message of a failed validation of `Get()`. `yERROR_PARAMETER` only; another failure is logged.
    void CheckValidationAndCollect(std::vector<std::string>& errors, unsigned long context) override;

    void CopyValues(const Properties::Node& other) override;

    Value& operator=(const T& value) override {
        this->ConditionalSet(value);
        return *this;
    }

    /// Ignores the value that was validated while the parameter was read-only.
    void ReadValue(Properties::IValueReader& reader, Vor::Event<>& updateEnd) override;

    /// Applies the limits also to a read-only value.
    void CheckValidation(const T& value, bool log) const override;

    /// The value of "actual" if that is enabled, otherwise the stored one.
    const T& Get() const override { return actual ? actual->Get() : this->GetStored(); }
    operator const T&() const override { return Get(); }

    void EnableUnits(bool enable) { Enable(units, "units", enable); }
    bool IsUnitsEnabled() const { return units != nullptr; }
    const std::string& GetUnits() const { return Present(units, "Must enable 'units' before using it.").Get(); }
    void SetUnits(const std::string& text) { Present(units, "Must enable 'units' before setting the value.") = text; }

    void EnableActual(bool enable) {
        Enable(actual, "actual", enable);
        CountActualSwitch();
    }
    bool IsActualEnabled() const { return actual != nullptr; }
    const T& GetActual() const { return Present(actual, "Must enable 'actual' before using it.").Get(); }
    void SetActual(const T& value) { Present(actual, "Must enable 'actual' before setting the value.") = value; }

    void EnableMinimum(bool enable);
    bool IsMinimumEnabled() const { return zeroMinimum || minimum != nullptr; }
    const T& GetMinimum() const;
    void SetMinimum(const T& value);

    void EnableMaximum(bool enable) { Enable(maximum, "maximum", enable); }
    bool IsMaximumEnabled() const { return maximum != nullptr; }
    const T& GetMaximum() const { return Present(maximum, "Must enable 'maximum' before using it.").Get(); }
    void SetMaximum(const T& value) { Present(maximum, "Must enable 'maximum' before setting the value.") = value; }

    void EnableExclusiveMinimum(bool enable) { Enable(exclusiveMinimum, "exclusiveMinimum", enable); }
    bool IsExclusiveMinimumEnabled() const { return exclusiveMinimum != nullptr; }
    const T& GetExclusiveMinimum() const {
        return Present(exclusiveMinimum, "Must enable 'exclusiveMinimum' before using it.").Get();
    }
    void SetExclusiveMinimum(const T& value) {
        Present(exclusiveMinimum, "Must enable 'exclusiveMinimum' before setting the value.") = value;
    }

    void EnableExclusiveMaximum(bool enable) { Enable(exclusiveMaximum, "exclusiveMaximum", enable); }
    bool IsExclusiveMaximumEnabled() const { return exclusiveMaximum != nullptr; }
    const T& GetExclusiveMaximum() const {
        return Present(exclusiveMaximum, "Must enable 'exclusiveMaximum' before using it.").Get();
    }
    void SetExclusiveMaximum(const T& value) {
        Present(exclusiveMaximum, "Must enable 'exclusiveMaximum' before setting the value.") = value;
    }

    void EnableScale(bool enable);
    bool IsScaleEnabled() const { return scale != nullptr; }
    ScaleOption GetScale() const { return Present(scale, "Must enable 'scale' before using it.").Get(); }
    void SetScale(ScaleOption value) { Present(scale, "Must enable 'scale' before setting the value.") = value; }

    /// The empty text removes the keyword.
    void SetExtendedType(const std::string& text);
    bool IsExtendedTypeEnabled() const { return extendedType != nullptr; }

    void EnableFormat(bool enable) { Enable(format, "format", enable); }
    bool IsFormatEnabled() const { return format != nullptr; }
    const std::string& GetFormat() const { return Present(format, "Must enable 'format' before using it.").Get(); }
    void SetFormat(const std::string& text) {
        Present(format, "Must enable 'format' before setting the value.") = text;
    }

    /// A parameter that skips copies keeps its value and its keywords in `CopyValues`.
    void SetSkipCopy(bool skip) { skipCopy = skip; }

private:
    void RegisterMinimum() override;
    void
    VisitMinimum(const std::function<void(Properties::Internal::Name, const Properties::Node&)>& visit) const override;

    mutable T pendingValue = T();
    std::unique_ptr<Properties::Value<std::string>> units;
    std::unique_ptr<Properties::Value<T>> actual;
    std::unique_ptr<Properties::Value<T>> minimum;
    std::unique_ptr<Properties::Value<T>> maximum;
    std::unique_ptr<Properties::Value<T>> exclusiveMinimum;
    std::unique_ptr<Properties::Value<T>> exclusiveMaximum;
    std::unique_ptr<Properties::Value<ScaleOption>> scale;
    std::unique_ptr<Properties::Value<std::string>> extendedType;
    std::unique_ptr<Properties::Value<std::string>> format;
    bool skipCopy = false;
    bool zeroMinimum = false; ///< there is a "minimum" of 0, which has no node yet
};

template <class T>
void Value<T>::CheckValidationAndCollect(std::vector<std::string>& errors, unsigned long) {
    try {
        CheckValidation(Get(), false);
    } catch (const Exception& e) {
        CollectFailure(e, errors);
    }
}

template <class T>
void Value<T>::CopyValues(const Properties::Node& other) {
    if (skipCopy) {
        return;
    }
    Base::CopyValues(other);
    const auto* const source = dynamic_cast<const Value<T>*>(&other);
    if (!source) {
        return;
    }
    ParamsBase::CopyValues(*source);
    RegisterCopied();
    CopyKeyword(units, "units", source->units);
    const bool switches = IsActualEnabled() != source->IsActualEnabled();
    CopyKeyword(actual, "actual", source->actual);
    if (switches) {
        CountActualSwitch();
    }
    if (!source->IsMinimumEnabled()) {
        EnableMinimum(false);
    } else if (!zeroMinimum || !source->zeroMinimum) {
        EnableMinimum(true);
        SetMinimum(source->GetMinimum());
    }
    CopyKeyword(maximum, "maximum", source->maximum);
    CopyKeyword(exclusiveMinimum, "exclusiveMinimum", source->exclusiveMinimum);
    CopyKeyword(exclusiveMaximum, "exclusiveMaximum", source->exclusiveMaximum);
    CopyKeyword(scale, "scale", source->scale);
    CopyKeyword(format, "format", source->format);
    CopyKeyword(extendedType, "extendedType", source->extendedType);
}

template <class T>
void Value<T>::ReadValue(Properties::IValueReader& reader, Vor::Event<>& updateEnd) {
    const bool pending = ClearReadOnlyPending();
    const T& incoming = Properties::Internal::ValueKind<T>::Read(reader);
    if (!pending || !(incoming == pendingValue)) {
        this->Assign(incoming, updateEnd);
    }
}

template <class T>
void Value<T>::CheckValidation(const T& value, bool log) const {
    ParamsBase::CheckValidation(log);
    if (ReadOnlyPending()) {
        pendingValue = value;
    }
    if (minimum && value < minimum->Get()) {
        FailValidation(log, "%1$s is set to be less than its minimum.");
    }
    if (maximum && value > maximum->Get()) {
        FailValidation(log, "%1$s is set to be greater than its maximum.");
    }
    if (exclusiveMinimum && value <= exclusiveMinimum->Get()) {
        FailValidation(log, "%1$s is set to be less than or equal to its exclusive minimum.");
    }
    if (exclusiveMaximum && value >= exclusiveMaximum->Get()) {
        FailValidation(log, "%1$s is set to be greater than or equal to its exclusive maximum.");
    }
}

template <class T>
void Value<T>::EnableMinimum(bool enable) {
    if (!enable) {
        zeroMinimum = false;
    }
    if (!zeroMinimum) {
        Enable(minimum, "minimum", enable);
    }
}

template <class T>
const T& Value<T>::GetMinimum() const {
    static const T Zero = T();
    return zeroMinimum ? Zero : Present(minimum, "Must enable 'minimum' before using it.").Get();
}

template <class T>
void Value<T>::SetMinimum(const T& value) {
    if (zeroMinimum) {
        this->Schema(); // makes the node
    }
    Present(minimum, "Must enable 'minimum' before setting the value.") = value;
}

template <class T>
void Value<T>::RegisterMinimum() {
    if (std::exchange(zeroMinimum, false)) {
        EnableMinimum(true);
    }
}

template <class T>
void Value<T>::VisitMinimum(
    const std::function<void(Properties::Internal::Name, const Properties::Node&)>& visit) const {
    if (zeroMinimum) {
        visit("minimum", Properties::Value<T>());
    }
}

template <class T>
void Value<T>::EnableScale(bool enable) {
    const bool fresh = enable && !scale;
    Enable(scale, "scale", enable);
    if (fresh) {
        scale->Modify() = ScaleOption::Default;
    }
}

template <class T>
void Value<T>::SetExtendedType(const std::string& text) {
    Enable(extendedType, "extendedType", !text.empty());
    if (extendedType) {
        *extendedType = text;
    }
}

// The common ones are compiled once, in Value.cpp.
extern template class Value<bool>;
extern template class Value<unsigned short>;
extern template class Value<unsigned int>;
extern template class Value<unsigned long long>;
extern template class Value<long long>;
extern template class Value<std::string>;
extern template class Value<std::vector<std::string>>;
extern template class Value<std::vector<unsigned short>>;

} // namespace Vor::Params

namespace Vor::Properties {

extern template class Internal::ValueWrapper<Params::ScaleOption>;
extern template class Value<Params::ScaleOption>;

} // namespace Vor::Properties
