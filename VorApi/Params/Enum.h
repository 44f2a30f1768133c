#pragma once

#include "VorApi/Params/Value.h"

#include <algorithm>
#include <string>
#include <vector>

namespace Vor::Params {

/// A value that is one of a list of options, each with a text. Without options any value is accepted.
template <class T>
class Enum : public Value<T> {
public:
    Enum()
        : Enum(T()) {}
    explicit Enum(const T& initial)
        : Value<T>(initial) {
        this->RegisterSchema("enum", options);
        this->RegisterSchema("enumText", optionTexts);
    }

    Enum& operator=(const T& value) override {
        this->ConditionalSet(value);
        return *this;
    }

    void CheckValidation(const T& value, bool log) const override {
        Value<T>::CheckValidation(value, log);
        const std::vector<T>& list = options.Get();
        if (!list.empty() && std::find(list.begin(), list.end(), value) == list.end()) {
            this->FailValidation(log, "%1$s is set to a value outside of the enum.");
        }
    }

    /// Throws `std::bad_cast` if `other` isn't an `Enum<T>`.
    void CopyValues(const Properties::Node& other) override {
        Value<T>::CopyValues(other);
        const auto& source = dynamic_cast<const Enum<T>&>(other);
        options.Set(source.options.Get());
        optionTexts.Set(source.optionTexts.Get());
    }

    void AddOption(const T& value, const std::string& text) {
        std::vector<T> values = options.Get();
        values.push_back(value);
        options = values;
        std::vector<std::string> texts = optionTexts.Get();
        texts.push_back(text);
        optionTexts = texts;
    }

    const std::vector<T>& Options() const { return options.Get(); }
    const std::vector<std::string>& OptionTexts() const { return optionTexts.Get(); }

private:
    Properties::Value<std::vector<T>> options;
    Properties::Value<std::vector<std::string>> optionTexts;
};

} // namespace Vor::Params
